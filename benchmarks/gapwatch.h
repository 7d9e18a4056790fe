#pragma once

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>

#include <algorithm>

/// The longest time for which the event loop came to nothing else.
class GapWatch : public QObject
{
public:
    GapWatch()
    {
        m_clock.start();
        startTimer(1, Qt::PreciseTimer);
    }
    /// Milliseconds.
    double longest() const { return double(m_longest) / 1e6; }
    void restart()
    {
        m_longest = 0;
        m_clock.restart();
    }

protected:
    void timerEvent(QTimerEvent*) override
    {
        m_longest = std::max(m_longest, m_clock.nsecsElapsed());
        m_clock.restart();
    }

private:
    QElapsedTimer m_clock;
    qint64 m_longest = 0;
};

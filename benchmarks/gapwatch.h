#pragma once

#include <QtCore/QEventLoop>
#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <algorithm>
#include <chrono>
#include <ctime>

/// Runs the event loop for some milliseconds. QTest::qWait() looks around every few of them, and
/// sleeps for up to 10 between two looks, in which nothing is handled.
inline void runEvents(int time)
{
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
}

inline double wallMilliseconds()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(now).count();
}

/// Of the processor's time that this thread takes: what else the machine does makes no difference.
inline double threadMilliseconds()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return 1e3 * double(time.tv_sec) + 1e-6 * double(time.tv_nsec);
}

/// The longest time for which the event loop came to nothing else, by one of these clocks.
class GapWatch : public QObject
{
public:
    using Clock = double (*)();

    explicit GapWatch(Clock clock = wallMilliseconds) : m_clock(clock)
    {
        restart();
        startTimer(1, Qt::PreciseTimer);
    }
    /// Milliseconds.
    double longest() const { return m_longest; }
    void restart()
    {
        m_longest = 0;
        m_last = m_clock();
    }

protected:
    void timerEvent(QTimerEvent*) override
    {
        const double now = m_clock();
        m_longest = std::max(m_longest, now - m_last);
        m_last = now;
    }

private:
    const Clock m_clock;
    double m_longest = 0;
    double m_last = 0;
};

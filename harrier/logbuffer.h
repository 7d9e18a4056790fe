#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QList>
#include <QtCore/QMutex>
#include <QtCore/QObject>

/// One line of the log.
struct LogLine
{
    QDateTime time;
    QString text;
    bool failure = false;
};

/// Log lines on their way from any thread to the user interface.
///
/// Lines wait here until the view takes them all at once. The buffer is bounded: when more than
/// MaxLines wait, the oldest are dropped and counted.
class LogBuffer : public QObject
{
    Q_OBJECT
public:
    static constexpr int MaxLines = 5000;
    static constexpr int MaxLength = 1000; ///< characters a line

    /// Any thread.
    void append(const QString& text);
    void appendFailure(const QString& text);
    /// The waiting lines, oldest first, and in `dropped` how many got lost before them.
    QList<LogLine> take(int* dropped);

    /// Whether `text` is how the library reports a failure.
    static bool isFailure(const QString& text);

Q_SIGNALS:
    /// Lines wait where none did before. Comes on the buffer's own thread.
    void linesWaiting();

private:
    void append(const QString& text, bool failure);

    QMutex m_mutex;
    QList<LogLine> m_lines;
    int m_dropped = 0;
};

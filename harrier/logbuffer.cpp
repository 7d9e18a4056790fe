#include "logbuffer.h"

#include "plainline.h"

#include <QtCore/QMutexLocker>

#include <utility>

void LogBuffer::append(const QString& text)
{
    append(text, isFailure(text));
}

void LogBuffer::appendFailure(const QString& text)
{
    append(text, true);
}

void LogBuffer::append(const QString& text, bool failure)
{
    const LogLine line{QDateTime::currentDateTime(), plainLine(text, MaxLength), failure};
    const QMutexLocker lock(&m_mutex);
    const bool first = m_lines.isEmpty();
    if (m_lines.size() == MaxLines) {
        m_lines.removeFirst();
        ++m_dropped;
    }
    m_lines.append(line);
    if (first)
        QMetaObject::invokeMethod(this, &LogBuffer::linesWaiting, Qt::QueuedConnection);
}

QList<LogLine> LogBuffer::take(int* dropped)
{
    const QMutexLocker lock(&m_mutex);
    *dropped = std::exchange(m_dropped, 0);
    return std::exchange(m_lines, {});
}

bool LogBuffer::isFailure(const QString& text)
{
    // These two prefixes are followed by names that a server chose; they are never translated.
    if (text.startsWith(QLatin1String("Adding ")) || text.startsWith(QLatin1String("Discarding ")))
        return false;
    return text.contains(QLatin1String("failed"));
}

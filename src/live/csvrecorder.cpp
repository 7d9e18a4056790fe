#include "csvrecorder_p.h"

#include "base/csvfield_p.h"
#include "platform/types/uaexpandednodeid.h"
#include "platform/types/uavariant.h"
#include "session/subscription.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace {

constexpr qint64 mostWaiting = 256 * 1024 * 1024;
constexpr qsizetype mostBuffered = 1024 * 1024;
constexpr auto longestWait = std::chrono::seconds(30);

QByteArray field(QByteArray text)
{
    if (!text.isValidUtf8())
        text = UaString(text).toQString().toUtf8();
    return csvField(text);
}

// All of the value: the text of an array would leave elements out.
QByteArray valueText(const UaVariant& value)
{
    return value.arrayType() == OpcUa_VariantArrayType_Scalar
               ? value.toFullString().bytes()
               : value.toJson(UaJsonForm::NonReversible);
}

QByteArray timeText(UaDateTime time)
{
    return time.isNull() ? QByteArray() : time.toString().bytes();
}

void appendTo(QByteArray& text, const CsvRecorder::Line& line)
{
    const UaDataValue& value = line.value;
    text += timeText(value.sourceTimestamp()) + ',' + timeText(value.serverTimestamp()) + ',';
    if (line.origin.isEmpty()) {
        text += ",,,,";
        text += line.missing ? "gap: " + QByteArray::number(line.missing) + " messages are missing"
                             : QByteArray("gap: nobody knows how many messages are missing");
    } else {
        text += line.origin + ',' + value.status().toString().bytes() + ',' +
                field(valueText(value.value())) + ',';
        if (QvelDataChange{0, value}.hasOverflow())
            text += "overflow: values before this one are missing";
    }
    text += "\r\n";
}

// About what a value holds in memory.
qint64 sizeOf(const UaVariant& value)
{
    constexpr qint64 each = 200;
    const OpcUa_Variant* stack = value;
    if (stack->ArrayType != OpcUa_VariantArrayType_Scalar)
        return each + 16 * qint64(value.arraySize());
    const bool isText = stack->Datatype == OpcUaType_String ||
                        stack->Datatype == OpcUaType_ByteString ||
                        stack->Datatype == OpcUaType_XmlElement;
    return each + (isText ? value.toFullString().size() : 0);
}

} // namespace

struct CsvRecorder::Shared
{
    std::mutex mutex;
    std::condition_variable changed;
    // Under the mutex:
    QList<Line> waiting;
    qint64 waitingSize = 0; // with what is being written
    bool stops = false;
    bool isDone = false;
    bool isTooSlow = false;
    QString error; // of the file
    bool hasFailed() const { return isTooSlow || !error.isEmpty(); }
    quint64 lines = 0;
};

QByteArray CsvRecorder::origin(const QString& name, const UaExpandedNodeId& id)
{
    return field(name.toUtf8()) + ',' + field(id.toFullString().bytes());
}

CsvRecorder::CsvRecorder(const QString& fileName)
    : m_fileName(fileName), m_shared(std::make_shared<Shared>())
{
    // On its own from here on: a disk that does not answer must not hold back the program's end.
    std::thread(run, m_shared, fileName).detach();
}

CsvRecorder::~CsvRecorder()
{
    stop();
    std::unique_lock lock(m_shared->mutex);
    m_shared->changed.wait_for(lock, longestWait, [this] { return m_shared->isDone; });
}

void CsvRecorder::append(const QList<Line>& lines)
{
    qint64 size = 0;
    for (const Line& line : lines)
        size += sizeOf(line.value.value());
    const std::lock_guard lock(m_shared->mutex);
    if (m_shared->stops || m_shared->hasFailed())
        return;
    if (m_shared->waitingSize + size > mostWaiting) {
        m_shared->isTooSlow = true;
        m_shared->stops = true;
    } else {
        m_shared->waiting += lines;
        m_shared->waitingSize += size;
    }
    m_shared->changed.notify_all();
}

void CsvRecorder::stop()
{
    const std::lock_guard lock(m_shared->mutex);
    m_shared->stops = true;
    m_shared->changed.notify_all();
}

bool CsvRecorder::isDone() const
{
    const std::lock_guard lock(m_shared->mutex);
    return m_shared->isDone;
}

QString CsvRecorder::error() const
{
    const std::lock_guard lock(m_shared->mutex);
    return m_shared->isTooSlow
               ? QCoreApplication::translate("QvelDataViewModel",
                                             "The disk does not keep up with the values")
               : m_shared->error;
}

quint64 CsvRecorder::lines() const
{
    const std::lock_guard lock(m_shared->mutex);
    return m_shared->lines;
}

void CsvRecorder::run(const std::shared_ptr<Shared>& shared, const QString& fileName)
{
    QFile file(fileName);
    bool ok = file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered);
    QByteArray buffer("SourceTimestamp,ServerTimestamp,Name,NodeId,Status,Value,Remark\r\n");
    const auto write = [&] {
        for (qsizetype done = 0; ok && done < buffer.size();) {
            const qint64 written = file.write(buffer.constData() + done, buffer.size() - done);
            ok = written > 0;
            done += written;
        }
        buffer.clear();
    };
    write();

    std::unique_lock lock(shared->mutex);
    while (ok) {
        shared->changed.wait(lock, [&] { return shared->stops || !shared->waiting.isEmpty(); });
        if (shared->waiting.isEmpty())
            break;
        const QList<Line> lines = std::exchange(shared->waiting, {});
        const qint64 size = shared->waitingSize;
        lock.unlock();
        quint64 count = 0, written = 0;
        for (const Line& line : lines) {
            appendTo(buffer, line);
            ++count;
            if (buffer.size() < mostBuffered && count < quint64(lines.size()))
                continue;
            write();
            if (!ok)
                break;
            written = count;
        }
        lock.lock();
        shared->lines += written;
        shared->waitingSize -= size;
    }
    if (!ok && !shared->isTooSlow)
        shared->error = file.errorString();
    shared->waiting.clear();
    file.close();
    shared->isDone = true;
    shared->changed.notify_all();
}

#pragma once

#include "platform/types/uadatavalue.h"

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>

#include <memory>

class UaExpandedNodeId;

/// Writes values to a CSV file (RFC 4180, UTF-8, numbers in the C locale), in the order in which
/// they come, on a thread of its own: whoever hands them over never waits for the disk.
///
/// What waits for the disk is held in memory, up to 256 MB; a disk that is slower than that ends
/// the recording with an error, as one that is full does. Nothing is left out silently: what came
/// before the error is in the file, as far as the disk took it.
class CsvRecorder
{
public:
    struct Line
    {
        QByteArray origin;        ///< of origin(); empty for a gap
        UaDataValue value;        ///< of a gap: its time
        OpcUa_UInt32 missing = 0; ///< of a gap: how many notifications, 0 for nobody knows
    };
    /// Name and NodeId, as the fields of a line.
    static QByteArray origin(const QString& name, const UaExpandedNodeId& id);

    /// Replaces the file. Whether that succeeds is told by error().
    explicit CsvRecorder(const QString& fileName);
    /// Stops, and waits up to 30 s for the disk.
    ~CsvRecorder();
    Q_DISABLE_COPY_MOVE(CsvRecorder)

    const QString& fileName() const { return m_fileName; }
    void append(const QList<Line>& lines);
    /// What has been handed over goes to the file; nothing more comes.
    void stop();
    /// Whether all is done, after stop() or an error.
    bool isDone() const;
    /// Why the recording ended by itself; empty for no reason.
    QString error() const;
    /// Lines in the file, beside the one with the names of the columns.
    quint64 lines() const;

private:
    struct Shared;
    static void run(const std::shared_ptr<Shared>& shared, const QString& fileName);

    const QString m_fileName;
    const std::shared_ptr<Shared> m_shared;
};

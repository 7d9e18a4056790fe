#pragma once

#include "../kestrelexport.h"
#include "../nodes/nodelink.h"

#include <QtCore/QAbstractTableModel>
#include <QtCore/QJsonObject>

#include <memory>

class QvelSession;

/// A list of variables with their present values: a row each, monitored in the session's
/// subscriptions, one of them for each publishing interval. User-interface thread only.
///
/// Rows are kept by the URI of their namespace and outlive the session, which the model does not
/// own: it may be replaced, disconnected or deleted at any time. While it is not connected, the
/// rows show what was there last in the colour of disabled text; once it is back, they go on.
/// What is wrong with a row stands in its Status, and in its tool tip in words.
///
/// Values are taken as they come and shown, a dataChanged() for each block of rows, at most 20
/// times a second. The columns Value, SamplingInterval, PublishingInterval and QueueSize can be
/// edited, Value where the server lets the user write. Only the value is sent; the server's answer
/// stands in WriteResult until the next one.
///
/// Roles beside Qt's: those of QvelModelDelegate, DataValueRole and NodeIdRole.
class KESTREL_EXPORT QvelDataViewModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column {
        Name,
        NodeId,
        Value,
        DataType,
        SourceTimestamp,
        ServerTimestamp,
        Status,
        SamplingInterval,          ///< milliseconds; -1 for the publishing interval, 0 for the best
        RevisedSamplingInterval,   ///< what the server made of it
        PublishingInterval,        ///< milliseconds
        RevisedPublishingInterval, ///< what the server made of it
        QueueSize,                 ///< values that the server keeps between two notifications
        RevisedQueueSize,          ///< what the server made of it
        Overflows,                 ///< how often that queue was too short
        Gaps,                      ///< how often notifications were lost on the way
        WriteResult,
        ColumnCount
    };
    Q_ENUM(Column)
    enum Role {
        ValueRole = Qt::UserRole,
        EnumInfoRole = Qt::UserRole + 1,
        DataValueRole = Qt::UserRole + 10, ///< a UaDataValue: what the row shows
        NodeIdRole                         ///< a UaExpandedNodeId; null for a text that is none
    };
    /// The most rows of a list.
    static constexpr int mostRows = 100'000;

    explicit QvelDataViewModel(QObject* parent = nullptr);
    ~QvelDataViewModel() override;

    /// Null for none. With another session the model is reset: what is being edited is not sent to
    /// that.
    void setSession(QvelSession* session);
    QvelSession* session() const;

    /// A name for the list.
    QString name() const;
    void setName(const QString& name);

    /// Adds nodes at the end, or before a row, and gives how many those were: a node that is in the
    /// list is not added again, nor one that finds no room.
    int addNodes(const QList<QvelNodeLink>& nodes);
    int insertNodes(int before, const QList<QvelNodeLink>& nodes);
    /// Moves rows, in their order, before another one, or to the end.
    void moveRowsTo(QList<int> rows, int before);
    bool removeRows(int row, int count, const QModelIndex& parent = {}) override;
    /// The nodes of rows, for a drag or the clipboard.
    QList<QvelNodeLink> nodeLinks(QList<int> rows) const;
    /// Gives rows another SamplingInterval, PublishingInterval or QueueSize. False, with nothing
    /// changed, for a value that is none.
    bool setParameter(const QList<int>& rows, Column column, double value);

    /// What nodes that are added from now on get; a value that is none changes nothing.
    void setInitialParameter(Column column, double value);
    /// 0 for another column.
    double initialParameter(Column column) const;

    /// While paused, what is shown stands still; recording goes on.
    void setPaused(bool paused);
    bool isPaused() const;

    /// Begins to write each notification to a CSV file (RFC 4180, UTF-8, numbers in the C locale)
    /// in the order in which they come: both times, name, NodeId, status, value, and a remark on
    /// what is missing. The file is replaced, and written on a thread of its own. A disk that is
    /// full, or too slow for the values, ends the recording; recordingError() then says why.
    void startRecording(const QString& fileName);
    void stopRecording();
    bool isRecording() const;
    /// Of the present or the last recording; empty for none.
    QString recordingFile() const;
    QString recordingError() const;
    /// Values and gaps in that file.
    quint64 recordedLines() const;

    /// The list with its name, ids by namespace URI. fromJson() replaces the rows, and keeps what
    /// it cannot read for the next toJson(): entries that are no rows, or beyond mostRows, and
    /// parts that it does not know. An id that is none becomes a row that says so. False, with
    /// nothing changed, for an object that is no list.
    QJsonObject toJson() const;
    bool fromJson(const QJsonObject& json);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    bool canDropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    bool dropMimeData(const QMimeData* data, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;
    Qt::DropActions supportedDropActions() const override;

Q_SIGNALS:
    /// Recording began, went on or ended; several times a second at most.
    void recordingChanged();
    /// What was typed is not taken, by the row or by the server, and why.
    void inputRejected(const QString& reason);

private:
    class Private;
    const std::unique_ptr<Private> d;
};

#pragma once

#include "../platform/types/uaexpandednodeid.h"

#include <QtCore/QAbstractTableModel>

#include <memory>

class QvelSession;

/// The attributes of one node, a row each, and below Value its times and, where the variable has
/// them, its unit and range. Attributes that the node does not have are left out.
///
/// They are read when the node is set, when the session is connected again, and by refresh(); Value
/// is also kept up to date while the model is live. While there is no connection, the rows stay as
/// they are, in the colour of what is disabled.
///
/// The value column is edited by a QvelModelDelegate, whose roles it offers, where the user may
/// write: by UserAccessLevel for Value, else by UserWriteMask. What is sent is the bare value, in
/// the node's DataType and ValueRank; a value of another type is shown as what it is, which its
/// status tells, and not sent as that. The result stays in the row until the next edit; what could
/// not be written stays as the beginning of the next edit. User-interface thread only.
class KESTREL_EXPORT QvelAttributesModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { AttributeColumn, ValueColumn, StatusColumn, ResultColumn, ColumnCount };
    enum Role {
        AttributeIdRole = Qt::UserRole + 16, ///< QvelAttribute::Id; 0 where the row is none
        CopyRole                             ///< the value as text: all of it, whatever its size
    };

    explicit QvelAttributesModel(QObject* parent = nullptr);
    ~QvelAttributesModel() override;

    /// Not owned; may be null, and may be deleted at any time. With another session the model is
    /// reset: what is being edited is not sent to that.
    void setSession(QvelSession* session);
    QvelSession* session() const;
    /// A null NodeId for none.
    void setNode(const UaExpandedNodeId& node);
    UaExpandedNodeId node() const;
    /// Whether a subscription keeps Value up to date, as long as there is a connection. Off by
    /// default.
    void setLive(bool live);
    bool isLive() const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    /// Sends a value to the server. False where there is nothing to send.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

public Q_SLOTS:
    /// Reads everything again.
    void refresh();

private:
    class Private;
    const std::unique_ptr<Private> d;
};

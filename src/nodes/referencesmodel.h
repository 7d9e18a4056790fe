#pragma once

#include "../session/sessiontypes.h"
#include "nodelink.h"

#include <QtCore/QAbstractTableModel>

#include <memory>

class QvelSession;

/// All references of one node, in both directions, a row each: the type of the reference, by its
/// inverse name where it comes from the other node, and the other node.
///
/// They are read when the node is set, and by refresh(). A failure is a last row, for which
/// nodeId() is null. While the session is not connected, what is there stays and looks disabled;
/// it is read again once the session is connected again.
///
/// The model does not own the session, which may be deleted at any time. User-interface thread
/// only.
class KESTREL_EXPORT QvelReferencesModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { ReferenceType, Target, NodeId, NodeClass, TypeDefinition, ColumnCount };
    Q_ENUM(Column)
    enum Role {
        NodeIdRole = Qt::UserRole, ///< UaExpandedNodeId
        NodeClassRole,             ///< unsigned number of OPC 10000-3, 5.2; 0 where there is none
        FailureRole,               ///< bool: a row that tells a failure
        IsForwardRole              ///< bool
    };

    explicit QvelReferencesModel(QObject* parent = nullptr);
    ~QvelReferencesModel() override;

    /// Null for none. Keeps the node.
    void setSession(QvelSession* session);
    QvelSession* session() const;
    UaExpandedNodeId node() const;
    bool isStale() const;

    UaExpandedNodeId nodeId(const QModelIndex& index) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;

public Q_SLOTS:
    /// Null for none.
    void setNode(const UaExpandedNodeId& id);
    /// Reads again; rows that are as they were stay.
    void refresh();

private:
    class Private;
    const std::unique_ptr<Private> d;
};

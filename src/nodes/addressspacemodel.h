#pragma once

#include "../session/sessiontypes.h"
#include "nodelink.h"

#include <QtCore/QAbstractItemModel>

#include <memory>

class QvelSession;

/// The address space of a server as a tree along hierarchical references, in the order in which
/// the server tells them. Nodes are browsed when their children are asked for (fetchMore()); what
/// comes is put in piece by piece, so that a hundred thousand children do not stop the application.
///
/// What cannot be had is said where it was to be: a last row under the node gives the status by
/// name and in words, below what came before the failure. nodeId() is null for such a row.
///
/// Nodes are kept with the URIs of their namespaces. While the session is not connected, what is
/// there stays and looks disabled; once it is connected again, all that had been browsed is browsed
/// again (refresh()), and rows that are still there stay the same rows.
///
/// A node that is its own ancestor is shown again below itself, and browsed when it is opened.
///
/// The model does not own the session, which may be deleted at any time. User-interface thread
/// only.
class KESTREL_EXPORT QvelAddressSpaceModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    enum Column { DisplayName, BrowseName, NodeId, NodeClass, TypeDefinition, ColumnCount };
    Q_ENUM(Column)
    enum Role {
        NodeIdRole = Qt::UserRole, ///< UaExpandedNodeId
        NodeClassRole,             ///< unsigned number of OPC 10000-3, 5.2; 0 where there is none
        FailureRole                ///< bool: a row that tells a failure, a node that is gone
    };

    explicit QvelAddressSpaceModel(QObject* parent = nullptr);
    ~QvelAddressSpaceModel() override;

    /// Null for none. Begins anew.
    void setSession(QvelSession* session);
    QvelSession* session() const;
    /// The one row at the top, Root (i=84) until this is called. Begins anew.
    void setRootNode(const UaExpandedNodeId& id);
    UaExpandedNodeId rootNode() const;
    /// Whether what is shown is of the past, since the session is not connected.
    bool isStale() const;

    UaExpandedNodeId nodeId(const QModelIndex& index) const;
    QvelNodeLink nodeLink(const QModelIndex& index) const;
    OpcUa_UInt32 nodeClass(const QModelIndex& index) const;
    /// By namespace index where the server has the namespace, such as `ns=2;s=Pump`.
    QString nodeIdText(const QModelIndex& index) const;
    /// From the root node, such as `/Objects/2:Plant`, with OPC 10000-4, A.2's "&" before the
    /// characters that mean something there; for locateText().
    QString browsePath(const QModelIndex& index) const;
    /// The nodes from the root node to this one, for locatePath().
    QList<UaExpandedNodeId> path(const QModelIndex& index) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    using QObject::parent;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;

public Q_SLOTS:
    /// Browses again what has been browsed at and below a node, or everything.
    void refresh(const QModelIndex& index = {});
    /// Finds a node and browses what is needed to show it: where it is not in the tree yet, the way
    /// to the root node is looked for by inverse references. The answer is located() or
    /// locateFailed(), perhaps before the call returns; an earlier search is given up without one.
    void locate(const UaExpandedNodeId& id);
    /// Goes down along these nodes, the first of which is the root node.
    void locatePath(const QList<UaExpandedNodeId>& path);
    /// A NodeId as qvelParseNodeId() reads it, or a browse path as browsePath() gives it: "/" along
    /// hierarchical references, "." along aggregates.
    void locateText(const QString& text);

Q_SIGNALS:
    void located(const QModelIndex& index);
    /// Why, in a sentence.
    void locateFailed(const QString& reason);
    void staleChanged(bool isStale);

private:
    class Private;
    const std::unique_ptr<Private> d;
};

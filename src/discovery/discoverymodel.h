#pragma once

#include "../kestrelexport.h"
#include "discoverynodes.h"
#include "discoverywidget.h"

#include <QtCore/QAbstractItemModel>

#include <memory>

class QvelDiscoveryCBInterface;

/// The tree of places where OPC servers are found and of what they offer; one column.
///
/// The model owns its nodes. It asks the network in the background when a view fetches a node, and
/// shows a busy cursor as long as it does. The user's additions are read from the callback's
/// settings store at construction and written back at destruction. User-interface thread only, but
/// for nodeDeleted() and opcType().
class KESTREL_EXPORT QvelDiscoveryModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    /// `callback` is mandatory and must outlive the model. `timeout` is the milliseconds that each
    /// service call may take; `sessionName` goes into every configuration that is found.
    QvelDiscoveryModel(QvelDiscoveryWidget::OpcType opcType, QvelDiscoveryCBInterface* callback,
                       int timeout, const QString& sessionName, QObject* parent = nullptr);
    /// Writes the settings and ends running requests at once.
    ~QvelDiscoveryModel() override;

    /// At the top level, a row beyond rowCount() gives an index without a node, for which every
    /// operation of the model does nothing.
    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    /// A node whose children are not known yet has some, to be fetched.
    bool hasChildren(const QModelIndex& parent = {}) const override;
    bool canFetchMore(const QModelIndex& parent) const override;
    /// Drops the children of the node and asks the network for them again.
    void fetchMore(const QModelIndex& parent) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    /// Texts are shown as they are, markup included; control characters are replaced and the
    /// length is bounded.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    virtual QModelIndex indexOf(QvelDiscoveryNode* node) const;

    /// "Local": this computer. Null for an OPC type that is none.
    QvelDiscoveryNodeDiscovery* getLocalNode() const;
    /// The entry that stands for adding one. Null for an OPC type that is none.
    QvelDiscoveryNode* getAddServerNode() const;
    /// "Recently Used".
    QvelDiscoveryNode* getRecentNode() const;
    QvelDiscoveryWidget::OpcType opcType() const;
    /// Whether the tool tip of an entry whose last request failed says why, below what it says
    /// anyway; see QvelDiscoveryNode::lastFailure(). Off by default.
    void setFailuresInToolTips(bool on);
    bool hasFailuresInToolTips() const;

    /// Adds a discovery URL of the user's; for OPC Classic, a host name. A URL that does not begin
    /// with "opc.tcp:" is ignored for OPC UA.
    void addRemoteServer(const QString& url);
    /// Changes the URL of a discovery node and asks there.
    void editUrl(const QModelIndex& index, const QString& url);
    /// Removes what the user may remove: a discovery node other than "Local", or an entry of
    /// "Recently Used". Nothing happens for other nodes.
    void remove(const QModelIndex& index);
    /// Files a configuration under "Recently Used": in the current entry if that is one of them,
    /// in the entries of the same name if the user agrees to overwrite them, or in a new one.
    /// Gives the entry that was changed or added. `accepted` is false after the user declined.
    QModelIndex updateEndpointConfiguration(const QvelDiscoverySetting& setting,
                                            const QModelIndex& current, bool& accepted);
    /// Called by a node that is being deleted, on any thread: nothing is delivered to it any more.
    void nodeDeleted(QvelDiscoveryNode* node);

public Q_SLOTS:
    /// Takes what a job found for the node `parent`: appends it, or deletes it when the node does
    /// not wait for it any more.
    void sltAddChildren(QModelIndex parent, QList<QvelDiscoveryNode*> lstChildren);

private:
    friend class QvelDiscoveryJob;  // files its result
    friend class QvelDiscoveryNode; // shares the model's images

    void readSettings();
    void writeSettings();
    void append(QvelDiscoveryNode* parent, const QList<QvelDiscoveryNode*>& nodes);
    void fileResult(quint64 request, const QList<QvelDiscoveryNode*>& children,
                    const QStringList& failure);
    QIcon image(const char* path) const;

    class Private;
    std::unique_ptr<Private> d;
};

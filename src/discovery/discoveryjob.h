#pragma once

#include "../kestrelexport.h"
#include "../platform/threads/uathreadpool.h"
#include "discoverynodes.h"

#include <QtCore/QModelIndex>
#include <QtCore/QObject>

class QvelDiscoveryCBInterface;
class QvelDiscoveryModel;
class UaNetworkBrowser;

/// Asks the network for the children of one node of the discovery tree.
///
/// Made on the user-interface thread, where it notes what it has to know of its node; executed once
/// on a thread of a pool, where it never touches that node. The nodes that it builds are handed to
/// the model, whose they are from then on.
class KESTREL_EXPORT QvelDiscoveryJob : public QObject, public UaThreadPoolJob
{
    Q_OBJECT
public:
    /// `parent` is the index of the node to browse in `model`. `timeout` is the milliseconds that
    /// each service call may take; `sessionName` goes into every configuration that is found. What
    /// the pointers name must outlive the job.
    QvelDiscoveryJob(QvelDiscoveryModel* model, QvelDiscoveryCBInterface* callback,
                     const QModelIndex& parent, UaNetworkBrowser* networkBrowser, int timeout,
                     const QString& sessionName);
    ~QvelDiscoveryJob() override;

    /// Blocks while it asks. Failures go to the log; newChildren() is emitted whatever happens.
    void execute() override;

Q_SIGNALS:
    /// The work is done. The receiver, which is the model, takes over the nodes.
    void newChildren(QModelIndex parent, QList<QvelDiscoveryNode*> lstChildren);

private:
    friend class QvelDiscoveryModel; // tells its jobs which request they answer

    OpcUa_StatusCode callFindServers(const QString& discoveryUrl);
    OpcUa_StatusCode callGetEndpoints(const QString& url, bool wrapInServerNode);
    OpcUa_StatusCode callBrowseNetwork(const QString& name);
    OpcUa_StatusCode callEnum(const QString& host);
    void addEndpoint(QvelDiscoverySetting&& setting);
    void noteFailure(const UaStatus& status);
    void logServiceFailure(const QString& text, const QString& url, const UaStatus& status);

    QvelDiscoveryModel* m_model;
    QvelDiscoveryCBInterface* m_callback;
    QModelIndex m_parent;
    UaNetworkBrowser* m_networkBrowser;
    QList<QvelDiscoveryNode*> m_children; // until they are delivered
    int m_timeout;
    QString m_sessionName;
    QvelDiscoveryNode::QvelDiscoveryNodeType m_type = QvelDiscoveryNode::TypeGeneric;
    QStringList m_failure; // of all that was asked: a text to be translated, and its arguments
    QString m_target;      // a URL, or the name of a host or network
    quint64 m_request = 0;
};

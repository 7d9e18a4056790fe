#pragma once

#include "../kestrelexport.h"
#include "../platform/network/uanetworkbrowser.h"
#include "discoverysetting.h"

#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtGui/QIcon>

class QvelDiscoveryModel;

/// One row of the discovery tree.
///
/// A node owns its children. It may be built on any thread; it then lives on the thread of its
/// model, and everything else happens there. Changes of a node that is in the tree are made by the
/// model, which announces them to its views.
class KESTREL_EXPORT QvelDiscoveryNode : public QObject
{
    Q_OBJECT
public:
    enum QvelDiscoveryNodeType {
        TypeGeneric = 0,   ///< a fixed entry
        TypeDiscovery = 1, ///< a computer or a discovery server: QvelDiscoveryNodeDiscovery
        TypeServer = 2,    ///< a server: QvelDiscoveryNodeServer
        TypeEndpoint = 3,  ///< an endpoint of a server: QvelDiscoveryNodeEndpoint
        TypeNetwork = 4    ///< a network or domain: QvelDiscoveryNodeNetwork
    };

    /// `model` must outlive the node and must not be null.
    QvelDiscoveryNode(const QString& displayName, QvelDiscoveryModel* model);
    /// Tells the model, then deletes the children. Does not take the node off its parent's list:
    /// use remove() of the parent.
    ~QvelDiscoveryNode() override;

    virtual QvelDiscoveryNodeType type();
    virtual QIcon icon();
    virtual Qt::ItemFlags flags();
    /// Changes nothing and gives false; there is nothing to edit in place.
    virtual bool setData(const QVariant& value, int role);

    QvelDiscoveryModel* model() const { return m_model; }
    QString displayName() const { return m_displayName; }
    /// Without notification of the views.
    void setDisplayName(const QString& name) { m_displayName = name; }
    /// Null for the root and for a node that is not in the tree.
    QvelDiscoveryNode* parent() const { return m_parent; }
    /// The children are known, or there are none to look for.
    bool isBrowsed() const { return m_browsed; }
    void setBrowsed(bool browsed) { m_browsed = browsed; }
    /// A job is looking for the children.
    bool isBrowsing() const { return m_browsing; }
    void setBrowsing(bool browsing) { m_browsing = browsing; }
    /// Why the last request for the children failed, in plain words on one line; empty where it did
    /// not, or nobody has asked yet.
    QString lastFailure() const;

    int childrenCount() const { return int(m_children.size()); }
    bool hasChildren() const { return !m_children.isEmpty(); }
    /// Null when there is no child at that position.
    QvelDiscoveryNode* at(int position) const { return m_children.value(position); }
    /// Position under the parent, in constant time; 0 without a parent, -1 when the parent does not
    /// list this node.
    int row() const;
    QList<QvelDiscoveryNode*> children() const { return m_children; }
    /// Appends `node`, which must not have a parent yet, and takes it over.
    void add(QvelDiscoveryNode* node);
    /// Deletes a child. A node that is no child is left alone.
    void remove(QvelDiscoveryNode* node);
    /// Deletes all children.
    void removeAll();

protected:
    /// A resource, loaded once for all nodes of the model.
    QIcon image(const char* path) const;

private:
    friend class QvelDiscoveryModel; // notes the failure

    QvelDiscoveryModel* m_model;
    QList<QvelDiscoveryNode*> m_children;
    QvelDiscoveryNode* m_parent = nullptr;
    QString m_displayName;
    QStringList m_lastFailure; // the text before its translation, and its arguments
    bool m_browsed = false;
    bool m_browsing = false;
    int m_row = 0; // where the parent listed it last
};

/// A place that can be asked for servers: the URL of a discovery server or, for OPC Classic, a
/// host name.
class KESTREL_EXPORT QvelDiscoveryNodeDiscovery : public QvelDiscoveryNode
{
    Q_OBJECT
public:
    /// `url` is the display name, too.
    QvelDiscoveryNodeDiscovery(const QString& url, QvelDiscoveryModel* model);
    QvelDiscoveryNodeType type() override;
    QIcon icon() override;

    QString discoveryUrl() const { return m_discoveryUrl; }
    void setDiscoveryUrl(const QString& url) { m_discoveryUrl = url; }

private:
    QString m_discoveryUrl;
};

/// A server that can be asked for its endpoints.
class KESTREL_EXPORT QvelDiscoveryNodeServer : public QvelDiscoveryNode
{
    Q_OBJECT
public:
    QvelDiscoveryNodeServer(const QString& name, const QString& discoveryUrl,
                            QvelDiscoveryModel* model);
    QvelDiscoveryNodeType type() override;
    QIcon icon() override;

    QString serverDiscoveryUrl() const { return m_serverDiscoveryUrl; }

private:
    QString m_serverDiscoveryUrl;
};

/// An endpoint of a server, or an OPC Classic server: a leaf with the configuration to connect to
/// it.
class KESTREL_EXPORT QvelDiscoveryNodeEndpoint : public QvelDiscoveryNode
{
    Q_OBJECT
public:
    QvelDiscoveryNodeEndpoint(const QString& name, QvelDiscoveryModel* model);
    QvelDiscoveryNodeType type() override;
    /// Tells secure from insecure endpoints; for OPC Classic, the kind of server.
    QIcon icon() override;

    /// A deep copy.
    QvelDiscoverySetting configuration() const { return m_configuration; }
    /// Takes over the display name of `configuration`, too.
    void setConfiguration(const QvelDiscoverySetting& configuration);
    void setConfiguration(QvelDiscoverySetting&& configuration);
    QString shortName() const { return m_configuration.shortName(); }

private:
    friend class QvelDiscoveryModel; // reads the configuration without copying it
    QvelDiscoverySetting m_configuration;
};

/// A network or domain that can be browsed.
class KESTREL_EXPORT QvelDiscoveryNodeNetwork : public QvelDiscoveryNode
{
    Q_OBJECT
public:
    QvelDiscoveryNodeNetwork(const QString& name, QvelDiscoveryModel* model,
                             UaNetworkBrowseResult::NetworkNodeType type);
    /// The kind of node.
    QvelDiscoveryNodeType type() override;
    /// The kind of network: what a call on a const node gives.
    UaNetworkBrowseResult::NetworkNodeType type() const { return m_networkType; }
    QIcon icon() override;

private:
    UaNetworkBrowseResult::NetworkNodeType m_networkType;
};

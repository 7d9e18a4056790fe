#include "discoverynodes.h"

#include "discovery/discoveryjob.h"
#include "discovery/discoverymodel.h"
#include "platform/stack/securitypolicies_p.h"

#include <QtCore/QThread>

#include <utility>

QvelDiscoveryNode::QvelDiscoveryNode(const QString& displayName, QvelDiscoveryModel* model)
    : m_model(model), m_displayName(displayName)
{
    if (thread() != model->thread())
        moveToThread(model->thread());
}

QvelDiscoveryNode::~QvelDiscoveryNode()
{
    m_model->nodeDeleted(this);
    removeAll();
}

QvelDiscoveryNode::QvelDiscoveryNodeType QvelDiscoveryNode::type()
{
    return TypeGeneric;
}

QIcon QvelDiscoveryNode::icon()
{
    return image(":/kestrel/images/closetab.png");
}

QIcon QvelDiscoveryNode::image(const char* path) const
{
    return m_model->image(path);
}

Qt::ItemFlags QvelDiscoveryNode::flags()
{
    return Qt::ItemIsSelectable | Qt::ItemIsEnabled;
}

bool QvelDiscoveryNode::setData(const QVariant&, int)
{
    return false;
}

QString QvelDiscoveryNode::lastFailure() const
{
    if (m_lastFailure.isEmpty())
        return QString();
    const QString text = QvelDiscoveryJob::tr(m_lastFailure.first().toUtf8().constData());
    // At once: an argument may look like a place for the next.
    switch (m_lastFailure.size()) {
    case 1:
        return text;
    case 2:
        return text.arg(m_lastFailure.at(1));
    default:
        return text.arg(m_lastFailure.at(1), m_lastFailure.at(2));
    }
}

int QvelDiscoveryNode::row() const
{
    if (!m_parent)
        return 0;
    if (m_parent->at(m_row) == this)
        return m_row;
    return int(m_parent->m_children.indexOf(this));
}

void QvelDiscoveryNode::add(QvelDiscoveryNode* node)
{
    node->m_parent = this;
    node->m_row = childrenCount();
    m_children.append(node);
}

void QvelDiscoveryNode::remove(QvelDiscoveryNode* node)
{
    if (!m_children.removeAll(node))
        return;
    for (int row = 0; row < childrenCount(); ++row)
        m_children[row]->m_row = row;
    delete node;
}

void QvelDiscoveryNode::removeAll()
{
    qDeleteAll(std::exchange(m_children, {}));
}

QvelDiscoveryNodeDiscovery::QvelDiscoveryNodeDiscovery(const QString& url,
                                                       QvelDiscoveryModel* model)
    : QvelDiscoveryNode(url, model), m_discoveryUrl(url)
{
}

QvelDiscoveryNode::QvelDiscoveryNodeType QvelDiscoveryNodeDiscovery::type()
{
    return TypeDiscovery;
}

QIcon QvelDiscoveryNodeDiscovery::icon()
{
    return image(":/kestrel/images/view.png");
}

QvelDiscoveryNodeServer::QvelDiscoveryNodeServer(const QString& name, const QString& discoveryUrl,
                                                 QvelDiscoveryModel* model)
    : QvelDiscoveryNode(name, model), m_serverDiscoveryUrl(discoveryUrl)
{
}

QvelDiscoveryNode::QvelDiscoveryNodeType QvelDiscoveryNodeServer::type()
{
    return TypeServer;
}

QIcon QvelDiscoveryNodeServer::icon()
{
    return image(":/kestrel/images/server.png");
}

QvelDiscoveryNodeEndpoint::QvelDiscoveryNodeEndpoint(const QString& name, QvelDiscoveryModel* model)
    : QvelDiscoveryNode(name, model)
{
    setBrowsed(true);
}

QvelDiscoveryNode::QvelDiscoveryNodeType QvelDiscoveryNodeEndpoint::type()
{
    return TypeEndpoint;
}

QIcon QvelDiscoveryNodeEndpoint::icon()
{
    switch (model()->opcType()) {
    case QvelDiscoveryWidget::OpcUa:
        return image(m_configuration.securityPolicy() == securityPolicyNone
                         ? ":/kestrel/images/unencrypted.png"
                         : ":/kestrel/images/encrypted.png");
    case QvelDiscoveryWidget::ComDa:
        return image(":/kestrel/images/comDaServer.png");
    case QvelDiscoveryWidget::ComAe:
        return image(":/kestrel/images/comAeServer.png");
    }
    return QIcon();
}

void QvelDiscoveryNodeEndpoint::setConfiguration(const QvelDiscoverySetting& configuration)
{
    m_configuration = configuration;
    setDisplayName(m_configuration.displayName());
}

void QvelDiscoveryNodeEndpoint::setConfiguration(QvelDiscoverySetting&& configuration)
{
    m_configuration = std::move(configuration);
    setDisplayName(m_configuration.displayName());
}

QvelDiscoveryNodeNetwork::QvelDiscoveryNodeNetwork(const QString& name, QvelDiscoveryModel* model,
                                                   UaNetworkBrowseResult::NetworkNodeType type)
    : QvelDiscoveryNode(name, model), m_networkType(type)
{
}

QvelDiscoveryNode::QvelDiscoveryNodeType QvelDiscoveryNodeNetwork::type()
{
    return TypeNetwork;
}

QIcon QvelDiscoveryNodeNetwork::icon()
{
    switch (m_networkType) {
    case UaNetworkBrowseResult::Domain:
        return image(":/kestrel/images/domain.png");
    case UaNetworkBrowseResult::Computer:
        return image(":/kestrel/images/server.png");
    default:
        return image(":/kestrel/images/network.png");
    }
}

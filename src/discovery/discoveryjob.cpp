#include "discoveryjob.h"

#include "base/showntext_p.h"
#include "discovery/discoverycbinterface.h"
#include "discovery/discoverymodel.h"
#include "discovery/discoverynodes_p.h"
#include "discovery/stacktext_p.h"
#include "platform/client/uadiscovery.h"
#include "platform/com/comserverlist_p.h"
#include "platform/stack/opcuastatuscodes.h"

#include <QtCore/QSet>
#include <QtCore/QThread>

#include <utility>

static const QLatin1String opcTcp("opc.tcp:");

// The model is going: what is still asked for fails by that, and interests nobody.
static bool isInterrupted()
{
    return QThread::currentThread()->isInterruptionRequested();
}

static UaClientSdk::ServiceSettings serviceSettings(int timeout)
{
    UaClientSdk::ServiceSettings settings;
    settings.callTimeout = timeout;
    return settings;
}

namespace {

struct FailureText
{
    OpcUa_StatusCode status;
    const char* text; // context "QvelDiscoveryJob"
};

// What the user can do something about; %1 is the URL or the host.
constexpr FailureText failureTexts[] = {
    {OpcUa_BadTcpEndpointUrlInvalid,
     QT_TRANSLATE_NOOP("QvelDiscoveryJob", "%1 is no URL of the form opc.tcp://host:port.")},
    {OpcUa_BadCommunicationError,
     QT_TRANSLATE_NOOP("QvelDiscoveryJob", "No computer answers at %1. Check the name, and the "
                                           "network.")},
    {OpcUa_BadConnectionRejected,
     QT_TRANSLATE_NOOP("QvelDiscoveryJob", "No server listens at %1. Check that it runs, and its "
                                           "port.")},
    {OpcUa_BadConnectionClosed,
     QT_TRANSLATE_NOOP("QvelDiscoveryJob", "The server at %1 closed the connection.")},
    {OpcUa_BadTimeout,
     QT_TRANSLATE_NOOP("QvelDiscoveryJob", "%1 did not answer in time. Check that the server can "
                                           "be reached and is not overloaded.")},
};

} // namespace

QvelDiscoveryJob::QvelDiscoveryJob(QvelDiscoveryModel* model, QvelDiscoveryCBInterface* callback,
                                   const QModelIndex& parent, UaNetworkBrowser* networkBrowser,
                                   int timeout, const QString& sessionName)
    : m_model(model), m_callback(callback), m_parent(parent), m_networkBrowser(networkBrowser),
      m_timeout(timeout), m_sessionName(sessionName)
{
    qRegisterMetaType<QList<QvelDiscoveryNode*>>("QList<QvelDiscoveryNode*>");
    QvelDiscoveryNode* node = nodeAt(parent);
    if (!node)
        return;
    m_type = node->type();
    if (QvelDiscoveryNodeDiscovery* discovery = toDiscovery(node))
        m_target = discovery->discoveryUrl();
    else if (m_type == QvelDiscoveryNode::TypeServer)
        m_target = static_cast<QvelDiscoveryNodeServer*>(node)->serverDiscoveryUrl();
    else
        m_target = node->displayName();
}

QvelDiscoveryJob::~QvelDiscoveryJob()
{
    qDeleteAll(m_children);
}

void QvelDiscoveryJob::execute()
{
    switch (m_type) {
    case QvelDiscoveryNode::TypeDiscovery:
        if (m_model->opcType() != QvelDiscoveryWidget::OpcUa)
            callEnum(m_target);
        else if (OpcUa_IsNotGood(callFindServers(m_target)))
            callGetEndpoints(m_target, true); // the URL may be that of a plain server
        break;
    case QvelDiscoveryNode::TypeServer:
        callGetEndpoints(m_target, false);
        break;
    case QvelDiscoveryNode::TypeNetwork:
        callBrowseNetwork(m_target);
        break;
    default:
        break;
    }
    connect(this, &QvelDiscoveryJob::newChildren, m_model, &QvelDiscoveryModel::sltAddChildren,
            Qt::QueuedConnection);
    const QList<QvelDiscoveryNode*> children = std::exchange(m_children, {});
    m_model->fileResult(m_request, children, m_failure);
    Q_EMIT newChildren(m_parent, children);
}

void QvelDiscoveryJob::logServiceFailure(const QString& text, const QString& url,
                                         const UaStatus& status)
{
    if (!isInterrupted())
        m_callback->logMessage(text.arg(shownText(url), status.toString().toQString()));
}

OpcUa_StatusCode QvelDiscoveryJob::callFindServers(const QString& discoveryUrl)
{
    if (discoveryUrl.isEmpty())
        return OpcUa_Bad;
    UaStackTypeArray<OpcUa_ApplicationDescription> servers;
    const UaStatus status =
        UaClientSdk::UaDiscovery::findServers(serviceSettings(m_timeout), UaString(discoveryUrl),
                                              UaClientSdk::SessionSecurityInfo(), servers);
    if (status.isNotGood()) {
        logServiceFailure(tr("Discovery FindServers on %1 failed (%2)"), discoveryUrl, status);
        return status.code();
    }
    for (const OpcUa_ApplicationDescription& server : servers) {
        const QString name = toQString(server.ApplicationName.Text);
        for (OpcUa_Int32 i = 0; server.DiscoveryUrls && i < server.NoOfDiscoveryUrls; ++i) {
            const QString url = toQString(server.DiscoveryUrls[i]);
            const bool add = url.startsWith(opcTcp) &&
                             server.ApplicationType != OpcUa_ApplicationType_DiscoveryServer;
            m_callback->logMessage(
                QString(add ? "Adding Server %1 with URL %2" : "Discarding Server %1 with URL %2")
                    .arg(shownText(name), shownText(url)));
            if (add)
                m_children.append(new QvelDiscoveryNodeServer(name, url, m_model));
        }
    }
    return status.code();
}

OpcUa_StatusCode QvelDiscoveryJob::callGetEndpoints(const QString& url, bool wrapInServerNode)
{
    if (url.isEmpty())
        return OpcUa_Bad;
    UaStackTypeArray<OpcUa_EndpointDescription> endpoints;
    const UaStatus status = UaClientSdk::UaDiscovery::getEndpoints(
        serviceSettings(m_timeout), UaString(url), UaClientSdk::SessionSecurityInfo(), endpoints);
    if (status.isNotGood()) {
        logServiceFailure(tr("Discovery GetEndpoints on %1 failed (%2)"), url, status);
        noteFailure(status);
        return status.code();
    }
    const QString name =
        endpoints.length() > 0 ? toQString(endpoints[0].Server.ApplicationName.Text) : QString();
    for (OpcUa_EndpointDescription& endpoint : endpoints) {
        const QString endpointUrl = toQString(endpoint.EndpointUrl);
        const bool add = endpointUrl.startsWith(opcTcp);
        m_callback->logMessage(
            QString(add ? "Adding Url %1" : "Discarding Url %1").arg(shownText(endpointUrl)));
        if (!add)
            continue;
        QvelDiscoverySetting setting;
        setting.takeEndpointDescription(endpoint);
        addEndpoint(std::move(setting));
    }
    if (wrapInServerNode && !m_children.isEmpty()) {
        auto* server = new QvelDiscoveryNodeServer(name, url, m_model);
        server->setBrowsed(true);
        for (QvelDiscoveryNode* endpoint : std::as_const(m_children))
            server->add(endpoint);
        m_children = {server};
    }
    return status.code();
}

OpcUa_StatusCode QvelDiscoveryJob::callBrowseNetwork(const QString& name)
{
    if (name.isEmpty())
        return OpcUa_Bad;
    QList<UaNetworkBrowseResult> results;
    if (const UaStatus status = m_networkBrowser->browse(UaString(name), results);
        status.isNotGood()) {
        if (status.code() == OpcUa_BadConnectionRejected)
            m_failure = {QT_TR_NOOP("The network cannot be searched: the service for that, Avahi, "
                                    "does not run on this computer.")};
        else
            m_failure = {QT_TR_NOOP("The network could not be searched (%1)."),
                         status.toString().toQString()};
        return OpcUa_Bad;
    }
    QSet<QString> hosts;
    const auto addDiscovery = [this](const QString& url) {
        m_children.append(new QvelDiscoveryNodeDiscovery(url, m_model));
    };
    for (const UaNetworkBrowseResult& result : std::as_const(results)) {
        const QString found = result.name().toQString();
        if (result.type() != UaNetworkBrowseResult::Computer) {
            m_children.append(new QvelDiscoveryNodeNetwork(found, m_model, result.type()));
            continue;
        }
        // A server's port is part of its URL, but not of a computer's name.
        const QString host = found.section(':', 0, 0);
        const bool isNew = !hosts.contains(host);
        hosts.insert(host);
        switch (m_model->opcType()) {
        case QvelDiscoveryWidget::OpcUa:
            addDiscovery(tr("opc.tcp://%1").arg(found));
            break;
        case QvelDiscoveryWidget::ComDa:
        case QvelDiscoveryWidget::ComAe:
            if (isNew)
                addDiscovery(tr("%1").arg(host));
            break;
        }
    }
    return OpcUa_Good;
}

OpcUa_StatusCode QvelDiscoveryJob::callEnum(const QString& host)
{
    using namespace comsurface;
    OpcUa_StatusCode status = OpcUa_Good;
    const auto logFailure = [this, &status, &host](ComCall call, std::uint32_t result) {
        const QString code = QString("%1").arg(result, 8, 16, QChar('0'));
        switch (call) {
        case ComCall::CoInitializeEx:
            m_callback->logMessage(tr("CoInitializeEx failed (0x%1)").arg(code));
            break;
        case ComCall::CoCreateInstanceEx:
            m_callback->logMessage(tr("CoCreateInstanceEx failed (0x%1)").arg(code));
            break;
        case ComCall::EnumClassesOfCategories:
            m_callback->logMessage(tr("EnumClassesOfCategories failed (0x%1)").arg(code));
            break;
        case ComCall::GetClassDetails:
            m_callback->logMessage(tr("GetClassDetails failed (0x%1)").arg(code));
            return; // the other servers are still there
        }
        status = OpcUa_Bad;
        if (host.isEmpty())
            m_failure = {
                QT_TR_NOOP("The OPC Classic servers of this computer cannot be listed (0x%1)."),
                code};
        else
            m_failure = {QT_TR_NOOP("The OPC Classic servers of %1 cannot be listed (0x%2)."),
                         shownText(host), code};
    };
    const ComServerKind kind = m_model->opcType() == QvelDiscoveryWidget::ComDa
                                   ? ComServerKind::DataAccess
                                   : ComServerKind::AlarmsAndEvents;
    for (const ComServer& server :
         enumerateComServers(host.toStdU16String(), kind, logFailure, isInterrupted)) {
        const QString progId = QString::fromStdU16String(server.progId);
        QvelDiscoverySetting setting;
        setting.setEndpointUrl(host);
        setting.setServerName(progId);
        setting.setDisplayName(host.isEmpty() ? progId : host + tr("/") + progId);
        addEndpoint(std::move(setting));
    }
    return status;
}

// FindServers fails on a plain server; what counts is how the attempts ended.
void QvelDiscoveryJob::noteFailure(const UaStatus& status)
{
    const QString target = shownText(m_target);
    for (const FailureText& each : failureTexts)
        if (each.status == status.code()) {
            m_failure = {each.text, target};
            return;
        }
    m_failure = {QT_TR_NOOP("%1 does not tell its endpoints (%2)."), target,
                 status.toString().toQString()};
}

void QvelDiscoveryJob::addEndpoint(QvelDiscoverySetting&& setting)
{
    setting.setSessionName(m_sessionName);
    auto* node = new QvelDiscoveryNodeEndpoint(QString(), m_model);
    node->setConfiguration(std::move(setting));
    m_children.append(node);
}

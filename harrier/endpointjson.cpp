#include "endpointjson.h"

#include <Kestrel/QvelDiscoveryModel>
#include <Kestrel/QvelDiscoveryNode>
#include <Kestrel/QvelDiscoveryNodeDiscovery>
#include <Kestrel/QvelDiscoveryNodeEndpoint>
#include <Kestrel/QvelDiscoveryNodeServer>
#include <Kestrel/QvelDiscoverySetting>
#include <Kestrel/UaString>

#include <QtCore/QJsonArray>

namespace {

QString text(const OpcUa_String& value)
{
    return UaString(&value).toQString();
}

QString key(const char* name)
{
    return QString::fromLatin1(name);
}

QString typeName(QvelDiscoveryNode::QvelDiscoveryNodeType type)
{
    switch (type) {
    case QvelDiscoveryNode::TypeDiscovery:
        return QStringLiteral("discovery");
    case QvelDiscoveryNode::TypeServer:
        return QStringLiteral("server");
    case QvelDiscoveryNode::TypeEndpoint:
        return QStringLiteral("endpoint");
    case QvelDiscoveryNode::TypeNetwork:
        return QStringLiteral("network");
    case QvelDiscoveryNode::TypeGeneric:
        break;
    }
    return QStringLiteral("group");
}

QJsonObject applicationToJson(const OpcUa_ApplicationDescription& server)
{
    QJsonArray urls;
    for (int i = 0; i < server.NoOfDiscoveryUrls; ++i)
        urls.append(text(server.DiscoveryUrls[i]));
    return {{key("applicationUri"), text(server.ApplicationUri)},
            {key("productUri"), text(server.ProductUri)},
            {key("applicationName"), text(server.ApplicationName.Text)},
            {key("applicationType"), qint64(server.ApplicationType)},
            {key("gatewayServerUri"), text(server.GatewayServerUri)},
            {key("discoveryProfileUri"), text(server.DiscoveryProfileUri)},
            {key("discoveryUrls"), urls}};
}

QJsonObject tokenToJson(const OpcUa_UserTokenPolicy& token)
{
    return {{key("policyId"), text(token.PolicyId)},
            {key("tokenType"), qint64(token.TokenType)},
            {key("issuedTokenType"), text(token.IssuedTokenType)},
            {key("issuerEndpointUrl"), text(token.IssuerEndpointUrl)},
            {key("securityPolicyUri"), text(token.SecurityPolicyUri)}};
}

} // namespace

QJsonObject endpointToJson(const OpcUa_EndpointDescription& endpoint)
{
    QJsonArray tokens;
    for (int i = 0; i < endpoint.NoOfUserIdentityTokens; ++i)
        tokens.append(tokenToJson(endpoint.UserIdentityTokens[i]));
    const auto certificate = QByteArray::fromRawData(
        reinterpret_cast<const char*>(endpoint.ServerCertificate.Data),
        endpoint.ServerCertificate.Data ? endpoint.ServerCertificate.Length : 0);
    return {{key("endpointUrl"), text(endpoint.EndpointUrl)},
            {key("securityPolicyUri"), text(endpoint.SecurityPolicyUri)},
            {key("securityMode"), qint64(endpoint.SecurityMode)},
            {key("securityLevel"), int(endpoint.SecurityLevel)},
            {key("transportProfileUri"), text(endpoint.TransportProfileUri)},
            {key("serverCertificate"), QString::fromLatin1(certificate.toHex())},
            {key("userIdentityTokens"), tokens},
            {key("server"), applicationToJson(endpoint.Server)}};
}

QJsonObject nodeToJson(QvelDiscoveryModel& model, QvelDiscoveryNode* node)
{
    const QString type = typeName(node->type());
    QJsonObject json;
    if (const auto* endpoint = dynamic_cast<QvelDiscoveryNodeEndpoint*>(node))
        json = endpointToJson(*endpoint->configuration().endpointDescription());
    else if (const auto* server = dynamic_cast<QvelDiscoveryNodeServer*>(node))
        json.insert(key("url"), server->serverDiscoveryUrl());
    else if (const auto* discovery = dynamic_cast<QvelDiscoveryNodeDiscovery*>(node))
        json.insert(key("url"), discovery->discoveryUrl());
    json.insert(key("type"), type);
    json.insert(key("name"), model.indexOf(node).data().toString());
    QJsonArray children;
    const auto nodes = node->children();
    for (QvelDiscoveryNode* child : nodes)
        children.append(nodeToJson(model, child));
    json.insert(key("children"), children);
    return json;
}

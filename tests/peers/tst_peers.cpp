// Our client and a foreign client read the same servers: foreign ones, which puts our decoder to
// the test, and our demo server, whose encoder the foreign client puts to the test.

#include "support/peerprocess.h"
#include "support/warnings.h"

#include <Kestrel/UaDiscovery>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

using namespace UaClientSdk;

namespace {

constexpr int clientTimeout = 60000; // ms

QString script(const char* name)
{
    return QStringLiteral(PEERS "/") + name;
}

// The null String is not the empty one.
QJsonValue text(const OpcUa_String& value)
{
    if (!value.Data)
        return QJsonValue::Null;
    return QString::fromUtf8(value.Data, value.Length);
}

QJsonObject toJson(const OpcUa_ApplicationDescription& value)
{
    QJsonArray urls;
    for (int i = 0; i < value.NoOfDiscoveryUrls; ++i)
        urls.append(text(value.DiscoveryUrls[i]));
    return {{"applicationUri", text(value.ApplicationUri)},
            {"productUri", text(value.ProductUri)},
            {"applicationName", QJsonObject{{"locale", text(value.ApplicationName.Locale)},
                                            {"text", text(value.ApplicationName.Text)}}},
            {"applicationType", int(value.ApplicationType)},
            {"gatewayServerUri", text(value.GatewayServerUri)},
            {"discoveryProfileUri", text(value.DiscoveryProfileUri)},
            {"discoveryUrls", urls}};
}

QJsonObject toJson(const OpcUa_EndpointDescription& value)
{
    QJsonArray tokens;
    for (int i = 0; i < value.NoOfUserIdentityTokens; ++i) {
        const OpcUa_UserTokenPolicy& token = value.UserIdentityTokens[i];
        tokens.append(QJsonObject{{"policyId", text(token.PolicyId)},
                                  {"tokenType", int(token.TokenType)},
                                  {"issuedTokenType", text(token.IssuedTokenType)},
                                  {"issuerEndpointUrl", text(token.IssuerEndpointUrl)},
                                  {"securityPolicyUri", text(token.SecurityPolicyUri)}});
    }
    QJsonValue certificate;
    if (value.ServerCertificate.Data)
        certificate = QString::fromLatin1(
            QByteArray(reinterpret_cast<const char*>(value.ServerCertificate.Data),
                       value.ServerCertificate.Length)
                .toHex());
    return {{"endpointUrl", text(value.EndpointUrl)},
            {"server", toJson(value.Server)},
            {"serverCertificate", certificate},
            {"securityMode", int(value.SecurityMode)},
            {"securityPolicyUri", text(value.SecurityPolicyUri)},
            {"userIdentityTokens", tokens},
            {"transportProfileUri", text(value.TransportProfileUri)},
            {"securityLevel", int(value.SecurityLevel)}};
}

template <class T>
QJsonArray toJson(const UaStackTypeArray<T>& values)
{
    QJsonArray array;
    for (const T& value : values)
        array.append(toJson(value));
    return array;
}

/// For comparisons that name the first line that differs.
QStringList lines(const QJsonArray& array)
{
    return QString::fromUtf8(QJsonDocument(array).toJson()).split('\n');
}

/// What the foreign client prints, an array a URL; empty after a failure.
QJsonArray foreignClient(const QStringList& arguments)
{
    QProcess client;
    client.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    client.start(NODE, QStringList{script("client.mjs")} + arguments);
    if (!client.waitForFinished(clientTimeout) || client.exitStatus() != QProcess::NormalExit ||
        client.exitCode() != 0) {
        qWarning() << "client.mjs failed:" << arguments << client.errorString();
        return {};
    }
    QJsonArray results;
    while (client.canReadLine())
        results.append(QJsonDocument::fromJson(client.readLine()).array());
    return results;
}

/// Our client's FindServers, compared with the foreign one's.
void readServers(const QString& url, QJsonArray* servers)
{
    UaStackTypeArray<OpcUa_ApplicationDescription> found;
    const UaStatus status = UaDiscovery().findServers({}, url.toUtf8().constData(), {}, found);
    QCOMPARE(status.toString().toUtf8(), "Good");
    *servers = toJson(found);
    QCOMPARE(lines(QJsonArray{*servers}), lines(foreignClient({"--find-servers", url})));
}

/// The endpoints of each server, read and compared likewise.
void readEndpoints(const QStringList& urls, QJsonArray* endpoints)
{
    for (const QString& url : urls) {
        UaStackTypeArray<OpcUa_EndpointDescription> found;
        const UaStatus status = UaDiscovery().getEndpoints({}, url.toUtf8().constData(), {}, found);
        QCOMPARE(status.toString().toUtf8(), "Good");
        endpoints->append(toJson(found));
    }
    QCOMPARE(lines(*endpoints), lines(foreignClient(urls)));
}

QStringList discoveryUrls(const QJsonArray& servers)
{
    QStringList list;
    for (const QJsonValue& server : servers)
        for (const QJsonValue& url : server["discoveryUrls"].toArray())
            list.append(url.toString());
    return list;
}

QStringList names(const QJsonArray& servers)
{
    QStringList list;
    for (const QJsonValue& server : servers)
        list.append(server["applicationName"]["text"].toString());
    return list;
}

} // namespace

class tst_Peers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnWarnings(); }
    void foreignServer();
    void foreignDiscoveryServer();
#ifdef DEMO_SERVER
    void demoServer();
#endif
};

void tst_Peers::foreignServer()
{
    PeerProcess server;
    const QString url = server.start(NODE, {script("server.mjs")});
    QVERIFY(!url.isEmpty());

    QJsonArray servers;
    readServers(url, &servers);
    QCOMPARE(discoveryUrls(servers), QStringList{url});

    QJsonArray all;
    readEndpoints({url}, &all);
    const QJsonArray endpoints = all[0].toArray();
    QCOMPARE(endpoints.size(), 7);
    QSet<QPair<QString, int>> kinds;
    for (const QJsonValue& endpoint : endpoints) {
        kinds.insert({endpoint["securityPolicyUri"].toString(), endpoint["securityMode"].toInt()});
        QVERIFY(!endpoint["serverCertificate"].toString().isEmpty());
        QVERIFY(!endpoint["userIdentityTokens"].toArray().isEmpty());
    }
    QCOMPARE(kinds.size(), 7);
    QVERIFY(server.stop());
}

void tst_Peers::foreignDiscoveryServer()
{
    PeerProcess server;
    const QString url = server.start(NODE, {script("discovery-server.mjs")});
    QVERIFY(!url.isEmpty());

    QJsonArray servers;
    readServers(url, &servers);
    QCOMPARE(names(servers),
             QStringList({"Discovery", "Boiler house", "Bottling line", "Water treatment"}));
    const QStringList urls = discoveryUrls(servers);
    QCOMPARE(urls.size(), 4);
    QJsonArray endpoints;
    readEndpoints(urls, &endpoints);
    for (int i = 0; i < urls.size(); ++i)
        QCOMPARE(endpoints[i].toArray().size(), 7);
    QVERIFY(server.stop());
}

#ifdef DEMO_SERVER
void tst_Peers::demoServer()
{
    PeerProcess server;
    const QString url = server.start(DEMO_SERVER, {"--port", "0", "--until-eof"});
    QVERIFY(!url.isEmpty());

    QJsonArray servers;
    readServers(url, &servers);
    QCOMPARE(names(servers), QStringList({"Plant discovery", "Boiler house",
                                          QString::fromUtf8("Bottling line K\xc3\xb6ln"),
                                          "Water treatment", "Historian"}));
    const QStringList urls = discoveryUrls(servers);
    QCOMPARE(urls.size(), servers.size());
    QJsonArray all;
    readEndpoints(urls, &all);
    for (int i = 0; i < urls.size(); ++i) {
        const QJsonArray endpoints = all[i].toArray();
        QVERIFY(!endpoints.isEmpty());
        for (const QJsonValue& endpoint : endpoints) {
            QCOMPARE(endpoint["endpointUrl"].toString(), urls[i]);
            QCOMPARE(endpoint.toObject()["server"], servers[i]);
        }
    }
    QVERIFY(server.stop());
}
#endif

QTEST_GUILESS_MAIN(tst_Peers)
#include "tst_peers.moc"

#include "discovercommand.h"
#include "endpointjson.h"
#include "support/warnings.h"

#include <Kestrel/QvelDiscoveryCBInterface>
#include <Kestrel/QvelDiscoveryModel>
#include <Kestrel/QvelDiscoveryNodeDiscovery>
#include <Kestrel/QvelDiscoveryNodeEndpoint>
#include <Kestrel/QvelDiscoveryNodeServer>
#include <Kestrel/QvelDiscoverySetting>

#include <QtTest/QtTest>

namespace {

// Nothing listens on port 1.
const QString deadUrl = QStringLiteral("opc.tcp://127.0.0.1:1");

// Every field of a description, with single quotes.
const char endpointShapeJson[] =
    "{ "
    "'endpointUrl': 'opc.tcp://plant:4840', 'securityPolicyUri': 'urn:policy', "
    "'securityMode': 2, 'securityLevel': 255, 'transportProfileUri': 'urn:transport', "
    "'serverCertificate': '00abff', "
    "'userIdentityTokens': [{'policyId': 'login', 'tokenType': 4294967295, "
    "'issuedTokenType': 'urn:issued', 'issuerEndpointUrl': 'urn:issuer', "
    "'securityPolicyUri': 'urn:token'}], "
    "'server': {'applicationUri': 'urn:app', 'productUri': 'urn:product', "
    "'applicationName': 'P\\u00fcmp <1>', 'applicationType': 2, "
    "'gatewayServerUri': 'urn:gateway', 'discoveryProfileUri': 'urn:profile', "
    "'discoveryUrls': ['opc.tcp://plant:4840']}} ";

struct Callback : QvelDiscoveryCBInterface
{
    void* openSettings() override { return this; }
    void closeSettings(void*) override {}
    QVariant readSetting(void*, const QString&) override { return {}; }
    void writeSetting(void*, const QString&, const QVariant&) override {}
    void logMessage(const QString& text) override
    {
        const QMutexLocker lock(&mutex);
        log.append(text);
    }
    QMutex mutex;
    QStringList log;
};

} // namespace

class DiscoverCommandTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { failOnWarnings(); }

    void endpointShape()
    {
        OpcUa_EndpointDescription endpoint;
        OpcUa_EndpointDescription_Initialize(&endpoint);
        const auto set = [](OpcUa_String& target, const char* utf8) {
            OpcUa_String_Assign(&target, utf8, OpcUa_Int32(qstrlen(utf8)));
        };
        set(endpoint.EndpointUrl, "opc.tcp://plant:4840");
        set(endpoint.SecurityPolicyUri, "urn:policy");
        set(endpoint.TransportProfileUri, "urn:transport");
        endpoint.SecurityMode = OpcUa_MessageSecurityMode_Sign;
        endpoint.SecurityLevel = 255;
        OpcUa_ByteString_Assign(&endpoint.ServerCertificate, "\x00\xAB\xFF", 3);
        set(endpoint.Server.ApplicationUri, "urn:app");
        set(endpoint.Server.ProductUri, "urn:product");
        set(endpoint.Server.ApplicationName.Text, "P\xc3\xbcmp <1>");
        endpoint.Server.ApplicationType = OpcUa_ApplicationType_ClientAndServer;
        set(endpoint.Server.GatewayServerUri, "urn:gateway");
        set(endpoint.Server.DiscoveryProfileUri, "urn:profile");
        endpoint.Server.NoOfDiscoveryUrls = 1;
        endpoint.Server.DiscoveryUrls =
            static_cast<OpcUa_String*>(OpcUa_Memory_Alloc(sizeof(OpcUa_String)));
        OpcUa_String_Initialize(endpoint.Server.DiscoveryUrls);
        set(endpoint.Server.DiscoveryUrls[0], "opc.tcp://plant:4840");
        endpoint.NoOfUserIdentityTokens = 1;
        endpoint.UserIdentityTokens =
            static_cast<OpcUa_UserTokenPolicy*>(OpcUa_Memory_Alloc(sizeof(OpcUa_UserTokenPolicy)));
        OpcUa_UserTokenPolicy_Initialize(endpoint.UserIdentityTokens);
        set(endpoint.UserIdentityTokens[0].PolicyId, "login");
        endpoint.UserIdentityTokens[0].TokenType = OpcUa_UserTokenType(4294967295u);
        set(endpoint.UserIdentityTokens[0].IssuedTokenType, "urn:issued");
        set(endpoint.UserIdentityTokens[0].IssuerEndpointUrl, "urn:issuer");
        set(endpoint.UserIdentityTokens[0].SecurityPolicyUri, "urn:token");

        const QJsonObject expected =
            QJsonDocument::fromJson(QByteArray(endpointShapeJson).replace('\'', '"')).object();
        QVERIFY(!expected.isEmpty());
        QCOMPARE(endpointToJson(endpoint), expected);
        OpcUa_EndpointDescription_Clear(&endpoint);
    }

    void treeShape()
    {
        Callback callback;
        QvelDiscoveryModel model(QvelDiscoveryWidget::OpcUa, &callback, 100, "test");
        model.addRemoteServer("opc.tcp://plant");
        QvelDiscoveryNode* place = model.getAddServerNode()->parent()->at(1);
        auto* server = new QvelDiscoveryNodeServer("Pump", "opc.tcp://plant:4841", &model);
        auto* endpoint = new QvelDiscoveryNodeEndpoint({}, &model);
        QvelDiscoverySetting setting;
        setting.setSecurityPolicy("urn:policy#None");
        setting.setMessageSecurityMode(OpcUa_MessageSecurityMode_None);
        endpoint->setConfiguration(setting);
        place->add(server);
        server->add(endpoint);

        const QJsonObject json = nodeToJson(model, place);
        QCOMPARE(json["type"], QJsonValue("discovery"));
        QCOMPARE(json["name"], QJsonValue("opc.tcp://plant"));
        QCOMPARE(json["url"], QJsonValue("opc.tcp://plant"));
        const QJsonObject child = json["children"][0].toObject();
        QCOMPARE(child["type"], QJsonValue("server"));
        QCOMPARE(child["name"], QJsonValue("Pump"));
        QCOMPARE(child["url"], QJsonValue("opc.tcp://plant:4841"));
        const QJsonObject leaf = child["children"][0].toObject();
        QCOMPARE(leaf["type"], QJsonValue("endpoint"));
        QCOMPARE(leaf["name"], QJsonValue("None - None"));
        QCOMPARE(leaf["securityPolicyUri"], QJsonValue("urn:policy#None"));
        QCOMPARE(leaf["children"], QJsonValue(QJsonArray()));
        QCOMPARE(nodeToJson(model, model.getRecentNode())["type"], QJsonValue("group"));
    }

    void unreachable()
    {
        Callback callback;
        QBuffer out;
        out.open(QIODevice::WriteOnly);
        QCOMPARE(discover({deadUrl, deadUrl}, 1000, callback, out), ExitFailure);
        const QJsonArray nodes = QJsonDocument::fromJson(out.data()).object()["nodes"].toArray();
        QCOMPARE(nodes.size(), 2);
        QCOMPARE(nodes[0]["url"], QJsonValue(deadUrl));
        QCOMPARE(nodes[0]["children"], QJsonValue(QJsonArray()));
        QVERIFY(!callback.log.filter("GetEndpoints on " + deadUrl + " failed").isEmpty());
        QVERIFY(QGuiApplication::overrideCursor() == nullptr);
    }

    void unwritableOutput()
    {
        Callback callback;
        QBuffer out; // not open
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("device not open"));
        QCOMPARE(discover({deadUrl}, 1000, callback, out), ExitFailure);
    }

    void program_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("error");
        QTest::newRow("unreachable") << QStringList{"--discover", deadUrl} << 1 << "failed";
        QTest::newRow("no URL") << QStringList{"--discover"} << 2 << "needs a URL";
        QTest::newRow("other scheme")
            << QStringList{"--discover", "http://plant"} << 2 << "not an opc.tcp URL";
        QTest::newRow("unknown option") << QStringList{"--discovr", deadUrl} << 2 << "discovr";
        QTest::newRow("stray argument") << QStringList{deadUrl} << 2 << deadUrl;
        QTest::newRow("window without a display") << QStringList{} << 2 << "no display";
        for (const char* timeout : {"0", "-1", "soon", "99999999999"})
            QTest::addRow("timeout %s", timeout)
                << QStringList{"--discover", "--timeout=" + QString(timeout), deadUrl} << 2
                << "--timeout";
        QTest::newRow("two commands")
            << QStringList{"--discover", deadUrl, "--render", "x"} << 2 << "exclude";
        QTest::newRow("terminal control")
            << QStringList{"--discover", "\x1b[2J"} << 2 << QStringLiteral("\ufffd[2J");
    }
    // As users start it, without any display.
    void program()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, code);
        QFETCH(QString, error);
        QTemporaryDir home;
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"})
            environment.remove(name);
        environment.insert("XDG_CONFIG_HOME", home.path());
        process.setProcessEnvironment(environment);
        process.start(HARRIER, arguments);
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), code);
        const QString errors = QString::fromUtf8(process.readAllStandardError());
        QVERIFY2(errors.contains(error), qPrintable(errors));
        const QByteArray output = process.readAllStandardOutput();
        QCOMPARE(!QJsonDocument::fromJson(output).isNull(), code == 1);
        QVERIFY(code == 1 || output.isEmpty());
        // The user's own settings were left alone.
        QVERIFY(QDir(home.path()).isEmpty());
    }

    void programKeepsSettingsWhereTold()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath("kept.ini");
        QCOMPARE(QProcess::execute(HARRIER, {"--discover", "--settings", file, deadUrl}), 1);
        QSettings settings(file, QSettings::IniFormat);
        QCOMPARE(settings.value("Discovery.OpcUa/DiscoveryServer0").toString(), deadUrl);
    }
};

QTEST_MAIN(DiscoverCommandTest)
#include "tst_discovercommand.moc"

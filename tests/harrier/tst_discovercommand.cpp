#include "discovercommand.h"
#include "discovery/endpoints.h"
#include "endpointjson.h"
#include "support/memorysettings.h"
#include "support/warnings.h"

#include <QtTest/QtTest>

namespace {

// Nothing listens on port 1.
const QString deadUrl = QStringLiteral("opc.tcp://127.0.0.1:1");

} // namespace

class DiscoverCommandTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { failOnWarnings(); }

    // The fields that no foreign server fills, too.
    void everyFieldIsPrinted()
    {
        const QvelDiscoverySetting setting = fullSetting(1, {OpcUa_UserTokenType_IssuedToken});
        const QString json =
            QString::fromUtf8(QJsonDocument(endpointToJson(*setting.endpointDescription()))
                                  .toJson(QJsonDocument::Compact))
                .remove('"');
        QCOMPARE(
            json,
            "{endpointUrl:opc.tcp://plant7:4840,securityLevel:200,securityMode:3,"
            "securityPolicyUri:http://opcfoundation.org/UA/SecurityPolicy#Basic256,"
            "server:{applicationName:Pumpe Süd,applicationType:2,applicationUri:urn:plant7:pump,"
            "discoveryProfileUri:urn:profile,discoveryUrls:[opc.tcp://plant7:4840],"
            "gatewayServerUri:urn:gateway,productUri:urn:pump},serverCertificate:3000ff,"
            "transportProfileUri:urn:transport,userIdentityTokens:[{"
            "issuedTokenType:issued0,issuerEndpointUrl:issuer0,policyId:policy0,"
            "securityPolicyUri:uri0,tokenType:3}]}");
    }

    void unreachable()
    {
        MemorySettings callback;
        QBuffer out;
        out.open(QIODevice::WriteOnly);
        QCOMPARE(discover({deadUrl, deadUrl}, 1000, callback, out), ExitFailure);
        const QJsonArray nodes = QJsonDocument::fromJson(out.data()).object()["nodes"].toArray();
        QCOMPARE(nodes.size(), 2);
        QCOMPARE(nodes[0]["url"], QJsonValue(deadUrl));
        QCOMPARE(nodes[0]["children"], QJsonValue(QJsonArray()));
        QVERIFY(!callback.log().filter("GetEndpoints on " + deadUrl + " failed").isEmpty());
        QVERIFY(QGuiApplication::overrideCursor() == nullptr);
        out.close();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("device not open"));
        QCOMPARE(discover({deadUrl}, 1000, callback, out), ExitFailure);
    }

    void program_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("error");
        const auto row = [](int code, const QString& error, const QStringList& arguments) {
            QTest::newRow(qPrintable(arguments.join(' '))) << arguments << code << error;
        };
        row(1, "failed", {"--discover", deadUrl});
        row(2, "needs a URL", {"--discover"});
        row(2, "not an opc.tcp URL", {"--discover", "http://plant"});
        row(2, "\ufffd[2J", {"--discover", "\x1b[2J"});
        row(2, "discovr", {"--discovr", deadUrl});
        row(2, deadUrl, {deadUrl});
        row(2, "no display", {});
        row(2, "exclude", {"--discover", deadUrl, "--render", "x"});
        for (const char* timeout : {"0", "-1", "soon", "99999999999"})
            row(2, "--timeout", {"--discover", "--timeout=" + QString(timeout), deadUrl});
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

// Software of another make agrees with ours: its client with what harrier prints of its servers,
// its server with a certificate that we made.

#include "support/peerprocess.h"
#include "support/warnings.h"

#include <Kestrel/UaPkiCertificate>
#include <Kestrel/UaPkiRsaKeyPair>

#include <QtNetwork/QtNetwork>

namespace {

constexpr int timeout = 120'000; // ms

// What a program prints.
QByteArray outputOf(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program, arguments);
    if (!process.waitForFinished(timeout) || process.exitCode() != 0)
        qWarning() << program << arguments << "failed";
    return process.readAllStandardOutput();
}

} // namespace

class tst_Peers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnWarnings(); }
    void discovery();
    void secureSession_data();
    void secureSession();
};

void tst_Peers::discovery()
{
    PeerProcess server;
    const QString url =
        server.start(NODE, {PLANT, "--port", "0", "--until-eof"}).section(' ', 0, 0);
    for (const QHostAddress& address : QNetworkInterface::allAddresses()) {
        QTcpSocket socket; // they are there for this machine only
        socket.connectToHost(address, quint16(QUrl(url).port()));
        QVERIFY(!socket.waitForConnected(1000) || address.isLoopback());
    }
    const QJsonArray expected =
        QJsonDocument::fromJson(outputOf(NODE, {PEERS, "discover", url})).array();
    QCOMPARE(expected.size(), 3);
    const QByteArray json = outputOf(HARRIER, {"--discover", url});
    QJsonArray printed;
    for (QJsonValue node : QJsonDocument::fromJson(json)["nodes"][0]["children"].toArray()) {
        QJsonArray endpoints;
        for (const QJsonValue& endpoint : node["children"].toArray()) {
            QJsonObject fields = endpoint.toObject();
            for (const char* added : {"type", "name", "children"}) // for the tree
                fields.remove(QLatin1String(added));
            endpoints.append(fields);
        }
        QVERIFY(endpoints.size() >= 4);
        QJsonObject object = node.toObject();
        object["children"] = endpoints;
        printed.append(object);
    }
    QCOMPARE(QJsonDocument(printed).toJson().split('\n'),
             QJsonDocument(expected).toJson().split('\n'));
    QVERIFY(server.stop());
}

void tst_Peers::secureSession_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<QString>("failure");
    QTest::newRow("2048 bits") << 2048 << "";
    QTest::newRow("4096 bits") << 4096 << "";
    QTest::newRow("not trusted") << 2048 << "Bad";
}

void tst_Peers::secureSession()
{
    QFETCH(int, bits);
    QFETCH(QString, failure);
    const QTemporaryDir directory;
    UaPkiIdentity identity;
    identity.commonName = "Pumpenw\xc3\xa4rter";
    identity.country = "DE";
    UaPkiCertificateInfo info;
    info.applicationUri = "urn:localhost:plant:PumpStation";
    info.dnsName = "localhost";
    const UaPkiRsaKeyPair pair(bits);
    const UaPkiCertificate own(info, identity, pair.publicKey(), identity, pair.privateKey());
    const QStringList files = {directory.filePath("own.der"), directory.filePath("own.pem")};
    QVERIFY(own.toDERFile(files[0].toUtf8()) && pair.toPEMFile(files[1].toUtf8()));
    const QString uri = QString::fromUtf8(info.applicationUri.toUtf8());
    const QByteArray output = outputOf(
        NODE, {PEERS, "session", files[0], files[1], uri, failure.isEmpty() ? "trusted" : ""});
    QJsonObject seen = QJsonDocument::fromJson(output).object();
    QVERIFY2(seen.take("failure").toString().contains(failure), output);
    const QJsonObject expected{
        {"applicationUri", uri},
        {"thumbprint", QString::fromLatin1(own.thumbprint().bytes().toHex())},
        {"securityMode", "SignAndEncrypt"},
        {"securityPolicy", "http://opcfoundation.org/UA/SecurityPolicy#Basic256Sha256"},
        {"serverState", 0}, // Running
    };
    QVERIFY2(seen == (failure.isEmpty() ? expected : QJsonObject()), output);
}

QTEST_GUILESS_MAIN(tst_Peers)
#include "tst_peers.moc"

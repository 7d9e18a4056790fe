// A foreign client is let in by a foreign server with a certificate and a key that we made.

#include "support/warnings.h"

#include <Kestrel/UaPkiCertificate>
#include <Kestrel/UaPkiRsaKeyPair>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

constexpr int timeout = 120'000; // ms

class tst_SecureSession : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnWarnings(); }
    void session_data();
    void session();

private:
    const QTemporaryDir m_peers; // the keys of the peers take long to make
};

void tst_SecureSession::session_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<bool>("trusted");
    QTest::newRow("2048 bits") << 2048 << true;
    QTest::newRow("3072 bits") << 3072 << true;
    QTest::newRow("4096 bits") << 4096 << true;
    QTest::newRow("not trusted") << 2048 << false;
}

void tst_SecureSession::session()
{
    QFETCH(int, bits);
    QFETCH(bool, trusted);
    const QTemporaryDir directory;
    const QString certificateFile = directory.filePath("own.der");
    const QString keyFile = directory.filePath("own.pem");
    const QString uri = QStringLiteral("urn:localhost:plant:Pump station");

    UaPkiIdentity identity;
    identity.commonName = "Pumpenw\xc3\xa4rter";
    identity.organization = "Works";
    identity.locality = "K\xc3\xb6ln";
    identity.state = "NRW";
    identity.country = "DE";
    UaPkiCertificateInfo info;
    info.applicationUri = UaString(uri.toUtf8());
    info.dnsName = "localhost";
    const UaPkiRsaKeyPair pair(bits);
    const UaPkiCertificate certificate(info, identity, pair.publicKey(), identity,
                                       pair.privateKey());
    QVERIFY(certificate.toDERFile(QFile::encodeName(certificateFile)));
    QVERIFY(pair.toPEMFile(QFile::encodeName(keyFile)));

    QStringList arguments = {
        PEERS "/secure-session.mjs", "--pki", m_peers.path(), certificateFile, keyFile, uri};
    if (!trusted)
        arguments.append("--untrusted");
    QProcess peer;
    peer.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    peer.start(NODE, arguments);
    QVERIFY(peer.waitForFinished(timeout));
    QCOMPARE(peer.exitCode(), 0);
    const QByteArray output = peer.readAllStandardOutput();
    const QJsonObject seen = QJsonDocument::fromJson(output).object();
    if (!trusted) {
        QVERIFY2(seen["failure"].toString().contains("BadCertificateUntrusted") ||
                     seen["failure"].toString().contains("BadSecurityChecksFailed"),
                 output);
        QVERIFY(!seen.contains("thumbprint"));
        return;
    }
    const QJsonObject expected{
        {"applicationUri", uri},
        {"thumbprint", QString::fromLatin1(certificate.thumbprint().bytes().toHex())},
        {"securityMode", "SignAndEncrypt"},
        {"securityPolicy", "http://opcfoundation.org/UA/SecurityPolicy#Basic256Sha256"},
        {"serverState", 0}, // Running
        {"failure", QJsonValue::Null},
    };
    QVERIFY2(seen == expected, output);
}

QTEST_GUILESS_MAIN(tst_SecureSession)
#include "tst_securesession.moc"

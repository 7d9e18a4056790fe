// The demo server and clients that misbehave; the certificates that it makes.

#include "platform/wire/messagechunks_p.h"
#include "platform/client/uadiscovery.h"
#include "platform/types/uabytestring.h"
#include "support/peerprocess.h"
#include "support/warnings.h"

#include <QtCore/QStandardPaths>
#include <QtCore/QUrl>
#include <QtNetwork/QNetworkInterface>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>

using namespace UaClientSdk;
using namespace UaWire;

namespace {

constexpr int timeout = 10000; // ms
constexpr OpcUa_StatusCode badSecurityModeRejected = 0x80540000u;

QByteArray hello(OpcUa_UInt32 bufferSize = 65536, OpcUa_UInt32 maxMessageSize = 0)
{
    Hello hello;
    hello.receiveBufferSize = bufferSize;
    hello.sendBufferSize = bufferSize;
    hello.maxMessageSize = maxMessageSize;
    return encodeConnectionMessage(MessageType::Hello, hello);
}

// The messages of a client; its channel and token are the first of its connection.
struct Client
{
    QByteArray open(OpcUa_MessageSecurityMode mode = OpcUa_MessageSecurityMode_None)
    {
        OpenSecureChannelRequest request;
        request.requestedLifetime = 60000;
        request.securityMode = mode;
        const QByteArray bytes =
            writer.chunks(MessageType::OpenSecureChannel, 1, encodeMessage(request));
        writer.channelId = writer.tokenId = 1;
        return bytes;
    }
    template <class Request = GetEndpointsRequest>
    QByteArray ask(MessageType type = MessageType::Message)
    {
        return writer.chunks(type, 2, encodeMessage(Request()));
    }
    template <class Request = GetEndpointsRequest>
    QByteArray askAndClose()
    {
        const QByteArray bytes = ask<Request>();
        return bytes + ask<CloseSecureChannelRequest>(MessageType::CloseSecureChannel);
    }

    MessageWriter writer;
};

UaStackTypeArray<OpcUa_ApplicationDescription> findServers(const QString& url)
{
    UaStackTypeArray<OpcUa_ApplicationDescription> servers;
    UaDiscovery().findServers({}, url.toUtf8().constData(), {}, servers);
    return servers;
}

UaStackTypeArray<OpcUa_EndpointDescription> getEndpoints(const QString& url)
{
    UaStackTypeArray<OpcUa_EndpointDescription> endpoints;
    UaDiscovery().getEndpoints({}, url.toUtf8().constData(), {}, endpoints);
    return endpoints;
}

} // namespace

class tst_DemoServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { failOnWarnings(); }
    void refuses_data();
    void refuses();
    void onlyLoopback();
    void takenPort();
    void certificates();
    void cleanupTestCase() { QVERIFY(m_server.stop()); }

private:
    PeerProcess m_server;
    QString m_url; // of the discovery server
};

void tst_DemoServer::initTestCase()
{
    m_url = m_server.start(DEMO_SERVER, {"--port", "0", "--until-eof"});
    QVERIFY(!m_url.isEmpty());
}

void tst_DemoServer::refuses_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<OpcUa_StatusCode>("reason"); // of the last message: an Error, or a fault
    const auto row = [](const char* name, OpcUa_StatusCode reason, const QByteArray& bytes) {
        QTest::newRow(name) << bytes << reason;
    };
    row("no message type", OpcUa_BadTcpMessageTypeInvalid, "GET / HTTP/1.1\r\n\r\n");
    row("huge chunk", OpcUa_BadTcpMessageTooLarge, QByteArray("HELF\xff\xff\xff\x7f", 8));
    row("short Hello", OpcUa_BadDecodingError, QByteArray("HELF\x0c\0\0\0\0\0\0\0", 12));
    row("small buffers", OpcUa_BadConnectionRejected, hello(minimumBufferSize - 1));
    row("no Hello", OpcUa_BadTcpMessageTypeInvalid, Client().open());
    row("no channel", OpcUa_BadTcpSecureChannelUnknown, hello() + Client().ask());
    row("security mode", badSecurityModeRejected,
        hello() + Client().open(OpcUa_MessageSecurityMode_Sign));
    QByteArray secured;
    BinaryEncoder encoder(secured);
    encoder(OpcUa_UInt32(0));
    encoder(AsymmetricSecurityHeader{"http://opcfoundation.org/UA/SecurityPolicy#Basic256Sha256",
                                     "certificate", "print"});
    encoder(SequenceHeader{1, 1});
    row("security policy", OpcUa_BadSecurityPolicyRejected,
        hello() + encodeChunk(MessageType::OpenSecureChannel, 'F', secured));

    Client client;
    const QByteArray opened = hello() + client.open();
    row("second Hello", OpcUa_BadTcpMessageTypeInvalid, opened + hello());
    row("endless message", OpcUa_BadResponseTooLarge,
        opened + Client(client).writer.chunks(MessageType::Message, 9, QByteArray(200000, 'x')));
    Client stranger = client;
    stranger.writer.channelId = 7;
    row("foreign channel", OpcUa_BadTcpSecureChannelUnknown, opened + stranger.ask());
    Client other = client;
    row("other service", OpcUa_BadServiceUnsupported,
        opened + other.askAndClose<FindServersOnNetworkRequest>());
    row("answer beyond the client's limit", OpcUa_BadResponseTooLarge,
        hello(65536, 1000) + Client().open() + client.askAndClose());
}

void tst_DemoServer::refuses()
{
    QFETCH(QByteArray, bytes);
    QFETCH(OpcUa_StatusCode, reason);
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, quint16(QUrl(m_url).port()));
    QVERIFY(socket.waitForConnected(timeout));
    socket.write(bytes);
    QVERIFY(socket.waitForDisconnected(timeout));
    MessageReader reader;
    reader.append(socket.readAll());
    Message last;
    while (const std::optional<Message> message = reader.next())
        last = *message;

    Error error;
    if (last.type == MessageType::Error) {
        QCOMPARE(decodeFields(last.body, error), OpcUa_Good);
    } else {
        QByteArrayView fields(last.body);
        ServiceFault fault;
        QCOMPARE(takeTypeId(fields), ServiceFault::encodingId);
        QCOMPARE(decodeFields(fields, fault), OpcUa_Good);
        error.error = fault.header.serviceResult;
    }
    QCOMPARE(UaStatusCode(error.error).toString().bytes(), UaStatusCode(reason).toString().bytes());
    QCOMPARE(findServers(m_url).length(), 5u); // it goes on
}

void tst_DemoServer::onlyLoopback()
{
    const quint16 port = quint16(QUrl(m_url).port());
    const auto addresses = QNetworkInterface::allAddresses();
    for (const QHostAddress& address : addresses) {
        QTcpSocket socket;
        socket.connectToHost(address, port);
        QCOMPARE(socket.waitForConnected(timeout),
                 address == QHostAddress::LocalHost || address == QHostAddress::LocalHostIPv6);
    }
}

void tst_DemoServer::takenPort()
{
    QTcpServer other;
    QVERIFY(other.listen(QHostAddress::LocalHost));
    QProcess server;
    server.start(DEMO_SERVER, {"--port", QString::number(other.serverPort())});
    QVERIFY(server.waitForFinished(timeout));
    QCOMPARE(server.exitStatus(), QProcess::NormalExit);
    QCOMPARE(server.exitCode(), 1);
    QVERIFY(server.readAllStandardError().contains("cannot listen on port " +
                                                   QByteArray::number(other.serverPort())));
}

void tst_DemoServer::certificates()
{
    const QString openssl = QStandardPaths::findExecutable("openssl");
    QVERIFY2(!openssl.isEmpty(), "there is no openssl program: run scripts/install-packages");
    const auto servers = findServers(m_url);
    QSet<QByteArray> different;
    for (const OpcUa_ApplicationDescription& server : servers) {
        const auto endpoints = getEndpoints(OpcUa_String_GetRawString(&server.DiscoveryUrls[0]));
        QVERIFY(endpoints.length() > 0);
        const QByteArray der = UaByteString(&endpoints[0].ServerCertificate).bytes();
        for (const OpcUa_EndpointDescription& endpoint : endpoints)
            QCOMPARE(UaByteString(&endpoint.ServerCertificate).bytes(), der);
        different.insert(der);

        QProcess process;
        process.start(openssl, {"x509", "-inform", "DER", "-noout", "-text", "-checkend", "86400"});
        QVERIFY(process.waitForStarted());
        process.write(der);
        process.closeWriteChannel();
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitCode(), 0);
        const QString text = QString::fromUtf8(process.readAllStandardOutput()).simplified();
        for (const char* line :
             {"Version: 3 (0x2)", "Signature Algorithm: sha256WithRSAEncryption",
              "Public-Key: (2048 bit)", "Basic Constraints: critical CA:FALSE",
              "Key Usage: critical Digital Signature, Non Repudiation, Key Encipherment, "
              "Data Encipherment, Certificate Sign",
              "Extended Key Usage: TLS Web Server Authentication, TLS Web Client Authentication"})
            QVERIFY2(text.contains(line), line);
        const QString names = QString("Subject Alternative Name: URI:%1, DNS:localhost, "
                                      "IP Address:127.0.0.1")
                                  .arg(OpcUa_String_GetRawString(&server.ApplicationUri));
        QVERIFY2(text.contains(names), qPrintable(text));
    }
    QCOMPARE(different.size(), 5);
}

QTEST_GUILESS_MAIN(tst_DemoServer)
#include "tst_demoserver.moc"

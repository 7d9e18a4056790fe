// The demo server and clients that misbehave; the certificates that it makes.

#include "platform/client/messagechunks_p.h"
#include "platform/client/uadiscovery.h"
#include "platform/types/uabytestring.h"
#include "support/peerprocess.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QStandardPaths>
#include <QtCore/QUrl>
#include <QtNetwork/QNetworkInterface>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>
#include <QtTest/QtTest>

using namespace UaClientSdk;
using namespace UaWire;

namespace {

constexpr int timeout = 10000; // ms
constexpr OpcUa_UInt32 bufferSize = 65536;
constexpr OpcUa_UInt32 readRequestId = 631; // ReadRequest, OPC 10000-6, annex A
constexpr OpcUa_StatusCode badSecurityModeRejected = 0x80540000u;
const QStringList freePorts = {"--port", "0", "--until-eof"};

Hello hello()
{
    Hello hello;
    hello.receiveBufferSize = bufferSize;
    hello.sendBufferSize = bufferSize;
    return hello;
}

OpenSecureChannelRequest
openRequest(SecurityTokenRequestType type = SecurityTokenRequestType::Issue)
{
    OpenSecureChannelRequest request;
    request.requestType = type;
    request.requestedLifetime = 60000;
    return request;
}

GetEndpointsRequest endpointsRequest()
{
    GetEndpointsRequest request;
    request.header.requestHandle = 7;
    return request;
}

/// A client that sends whatever a test wants.
class RawClient
{
public:
    explicit RawClient(const QString& url)
    {
        m_socket.connectToHost(QHostAddress::LocalHost, quint16(QUrl(url).port()));
        m_socket.waitForConnected(timeout);
    }

    void sendBytes(const QByteArray& bytes)
    {
        m_socket.write(bytes);
        m_socket.flush();
    }
    void sendHello(const Hello& message = hello())
    {
        sendBytes(encodeConnectionMessage(MessageType::Hello, message));
    }
    template <class Request>
    void send(const Request& request, MessageType type = MessageType::Message)
    {
        sendBytes(writer.chunks(type, ++m_requestId, encodeMessage(request)));
    }

    /// The next message, or none in time or after the end of the connection.
    std::optional<Message> receive()
    {
        for (;;) {
            if (std::optional<Message> message = m_reader.next())
                return message;
            if (m_socket.bytesAvailable() == 0 && !m_socket.waitForReadyRead(timeout))
                return {};
            received.append(m_socket.readAll());
            m_reader.append(QByteArrayView(received).sliced(m_taken));
            m_taken = received.size();
        }
    }
    /// Says hello and opens a channel.
    bool open(const Hello& message = hello())
    {
        sendHello(message);
        if (!receive())
            return false;
        send(openRequest(), MessageType::OpenSecureChannel);
        return receiveToken() != 0;
    }
    /// The token id of the OpenSecureChannelResponse that comes next, which is used from now on.
    OpcUa_UInt32 receiveToken()
    {
        OpenSecureChannelResponse response;
        if (!receive(response))
            return 0;
        writer.channelId = response.securityToken.channelId;
        writer.tokenId = response.securityToken.tokenId;
        return writer.tokenId;
    }
    /// Whether a message of this kind comes next and answers the newest request.
    template <class Response>
    bool receive(Response& response)
    {
        const std::optional<Message> message = receive();
        if (!message || message->requestId != m_requestId)
            return false;
        QByteArrayView fields(message->body);
        return takeTypeId(fields) == Response::encodingId &&
               OpcUa_IsGood(decodeFields(fields, response));
    }
    /// The code of the Error message that comes next, Good if something else comes.
    OpcUa_StatusCode receiveError()
    {
        Error error;
        const std::optional<Message> message = receive();
        if (!message || message->type != MessageType::Error ||
            OpcUa_IsBad(decodeFields(message->body, error)))
            return OpcUa_Good;
        return error.error;
    }
    bool waitForEnd()
    {
        return m_socket.state() == QAbstractSocket::UnconnectedState ||
               m_socket.waitForDisconnected(timeout);
    }

    MessageWriter writer;
    QByteArray received;

private:
    QTcpSocket m_socket;
    MessageReader m_reader;
    qsizetype m_taken = 0;
    OpcUa_UInt32 m_requestId = 0;
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

using Misbehave = std::function<void(RawClient&)>;

} // namespace

Q_DECLARE_METATYPE(Misbehave)

class tst_DemoServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { QTest::failOnWarning(QRegularExpression(".?")); }
    void badClientsAreRefused_data();
    void badClientsAreRefused();
    void otherServicesAreFaults();
    void largeAnswersComeInChunks();
    void answersKeepToTheClientsLimits();
    void filters();
    void renewedToken();
    void closesChannels();
    void connectionsAreLimited();
    void unreadAnswersAreBounded();
    void onlyLoopback();
    void takenPort();
    void certificates();
    void cleanupTestCase();

private:
    PeerProcess m_server;
    QString m_url;          // of the discovery server
    QString m_historianUrl; // of the server with the longest list of endpoints
};

void tst_DemoServer::initTestCase()
{
    m_url = m_server.start(DEMO_SERVER, freePorts);
    QVERIFY(!m_url.isEmpty());
    const auto servers = findServers(m_url);
    QCOMPARE(servers.length(), 5u);
    m_historianUrl = OpcUa_String_GetRawString(&servers[4].DiscoveryUrls[0]);
}

void tst_DemoServer::cleanupTestCase()
{
    QVERIFY(m_server.stop());
}

void tst_DemoServer::badClientsAreRefused_data()
{
    QTest::addColumn<Misbehave>("misbehave");
    QTest::addColumn<OpcUa_StatusCode>("reason");
    const auto row = [](const char* name, OpcUa_StatusCode reason, Misbehave misbehave) {
        QTest::newRow(name) << misbehave << reason;
    };
    row("no message type", OpcUa_BadTcpMessageTypeInvalid,
        [](RawClient& client) { client.sendBytes("GET / HTTP/1.1\r\n\r\n"); });
    row("huge chunk", OpcUa_BadTcpMessageTooLarge,
        [](RawClient& client) { client.sendBytes(QByteArray("HELF\xff\xff\xff\x7f", 8)); });
    row("chunk shorter than its header", OpcUa_BadDecodingError,
        [](RawClient& client) { client.sendBytes(QByteArray("HELF\x07\x00\x00\x00", 8)); });
    row("short Hello", OpcUa_BadDecodingError, [](RawClient& client) {
        client.sendBytes(QByteArray("HELF\x0c\x00\x00\x00\x00\x00\x00\x00", 12));
    });
    row("small buffers", OpcUa_BadConnectionRejected, [](RawClient& client) {
        Hello message = hello();
        message.receiveBufferSize = minimumBufferSize - 1;
        client.sendHello(message);
    });
    row("endless URL", OpcUa_BadTcpEndpointUrlInvalid, [](RawClient& client) {
        Hello message = hello();
        message.endpointUrl = UaString(QByteArray(4097, 'x'));
        client.sendHello(message);
    });
    row("no Hello", OpcUa_BadTcpMessageTypeInvalid,
        [](RawClient& client) { client.send(openRequest(), MessageType::OpenSecureChannel); });
    row("second Hello", OpcUa_BadTcpMessageTypeInvalid, [](RawClient& client) {
        QVERIFY(client.open());
        client.sendHello();
    });
    row("message of a server", OpcUa_BadTcpMessageTypeInvalid, [](RawClient& client) {
        QVERIFY(client.open());
        client.sendBytes(encodeConnectionMessage(MessageType::Acknowledge, Acknowledge{}));
    });
    row("no channel", OpcUa_BadTcpSecureChannelUnknown, [](RawClient& client) {
        client.sendHello();
        QVERIFY(client.receive());
        client.send(endpointsRequest());
    });
    row("security policy", OpcUa_BadSecurityPolicyRejected, [](RawClient& client) {
        client.sendHello();
        QVERIFY(client.receive());
        QByteArray rest;
        BinaryEncoder encoder(rest);
        encoder(OpcUa_UInt32(0));
        encoder(AsymmetricSecurityHeader{
            "http://opcfoundation.org/UA/SecurityPolicy#Basic256Sha256", "certificate", "print"});
        encoder(SequenceHeader{1, 1});
        client.sendBytes(encodeChunk(MessageType::OpenSecureChannel, 'F', rest));
    });
    row("security mode", badSecurityModeRejected, [](RawClient& client) {
        client.sendHello();
        QVERIFY(client.receive());
        OpenSecureChannelRequest request = openRequest();
        request.securityMode = OpcUa_MessageSecurityMode_Sign;
        client.send(request, MessageType::OpenSecureChannel);
    });
    row("another request in place of OpenSecureChannel", OpcUa_BadDecodingError,
        [](RawClient& client) {
            client.sendHello();
            QVERIFY(client.receive());
            client.send(endpointsRequest(), MessageType::OpenSecureChannel);
        });
    row("renewal of nothing", OpcUa_BadSecureChannelIdInvalid, [](RawClient& client) {
        client.sendHello();
        QVERIFY(client.receive());
        client.send(openRequest(SecurityTokenRequestType::Renew), MessageType::OpenSecureChannel);
    });
    row("second channel", OpcUa_BadSecureChannelIdInvalid, [](RawClient& client) {
        QVERIFY(client.open());
        client.send(openRequest(), MessageType::OpenSecureChannel);
    });
    row("foreign channel", OpcUa_BadTcpSecureChannelUnknown, [](RawClient& client) {
        QVERIFY(client.open());
        client.writer.channelId += 1;
        client.send(endpointsRequest());
    });
    row("token to come", OpcUa_BadSecureChannelTokenUnknown, [](RawClient& client) {
        QVERIFY(client.open());
        client.writer.tokenId += 1;
        client.send(endpointsRequest());
    });
    row("outdated token", OpcUa_BadSecureChannelTokenUnknown, [](RawClient& client) {
        QVERIFY(client.open());
        const OpcUa_UInt32 first = client.writer.tokenId;
        for (int i = 0; i < 2; ++i) {
            client.send(openRequest(SecurityTokenRequestType::Renew),
                        MessageType::OpenSecureChannel);
            QVERIFY(client.receiveToken() != 0);
        }
        client.writer.tokenId = first;
        client.send(endpointsRequest());
    });
    row("sequence number", OpcUa_BadSequenceNumberInvalid, [](RawClient& client) {
        QVERIFY(client.open());
        MessageWriter fresh;
        fresh.channelId = client.writer.channelId;
        fresh.tokenId = client.writer.tokenId;
        client.sendBytes(fresh.chunks(MessageType::Message, 9, encodeMessage(endpointsRequest())));
    });
    row("endless message", OpcUa_BadResponseTooLarge, [](RawClient& client) {
        QVERIFY(client.open());
        client.sendBytes(client.writer.chunks(MessageType::Message, 9, QByteArray(200000, 'x')));
    });
    row("request without a header", OpcUa_BadDecodingError, [](RawClient& client) {
        QVERIFY(client.open());
        QByteArray body;
        BinaryEncoder{body}.typeId(GetEndpointsRequest::encodingId);
        client.sendBytes(client.writer.chunks(MessageType::Message, 9, body));
    });
}

void tst_DemoServer::badClientsAreRefused()
{
    QFETCH(Misbehave, misbehave);
    QFETCH(OpcUa_StatusCode, reason);
    RawClient client(m_url);
    misbehave(client);
    QVERIFY(!QTest::currentTestFailed());
    QCOMPARE(UaStatusCode(client.receiveError()).toString().toUtf8(),
             UaStatusCode(reason).toString().toUtf8());
    QVERIFY(client.waitForEnd());
    QCOMPARE(findServers(m_url).length(), 5u);
}

void tst_DemoServer::otherServicesAreFaults()
{
    RawClient client(m_url);
    QVERIFY(client.open());
    RequestHeader header;
    header.requestHandle = 4711;
    QByteArray body;
    BinaryEncoder encoder(body);
    encoder.typeId(readRequestId);
    encoder(header);
    client.sendBytes(client.writer.chunks(MessageType::Message, 99, body));
    const std::optional<Message> message = client.receive();
    QVERIFY(message);
    QCOMPARE(message->requestId, 99u);
    QByteArrayView fields(message->body);
    QCOMPARE(takeTypeId(fields), ServiceFault::encodingId);
    ServiceFault fault;
    QCOMPARE(decodeFields(fields, fault), OpcUa_Good);
    QCOMPARE(fault.header.serviceResult, OpcUa_BadServiceUnsupported);
    QCOMPARE(fault.header.requestHandle, 4711u);

    FindServersOnNetworkRequest network;
    client.send(network);
    QVERIFY(client.receive(fault));
    QCOMPARE(fault.header.serviceResult, OpcUa_BadServiceUnsupported);
}

void tst_DemoServer::largeAnswersComeInChunks()
{
    Hello message = hello();
    message.receiveBufferSize = minimumBufferSize;
    RawClient client(m_historianUrl);
    QVERIFY(client.open(message));
    const qsizetype begin = client.received.size();
    client.send(endpointsRequest());
    GetEndpointsResponse response;
    QVERIFY(client.receive(response));
    QCOMPARE(response.endpoints.length(), 7u);
    QCOMPARE(response.header.requestHandle, 7u);

    int chunkCount = 0;
    QByteArrayView rest = QByteArrayView(client.received).sliced(begin);
    while (!rest.isEmpty()) {
        ChunkHeader header;
        QCOMPARE(decodeFields(rest, header), OpcUa_Good);
        QVERIFY(header.size <= minimumBufferSize);
        rest = rest.sliced(header.size);
        ++chunkCount;
    }
    QVERIFY2(chunkCount > 1, "the answer fits one chunk");
}

void tst_DemoServer::answersKeepToTheClientsLimits()
{
    Hello smallMessages = hello();
    smallMessages.maxMessageSize = 1000;
    Hello fewChunks = hello();
    fewChunks.receiveBufferSize = minimumBufferSize;
    fewChunks.maxChunkCount = 1;
    for (const Hello& message : {smallMessages, fewChunks}) {
        RawClient client(m_historianUrl);
        QVERIFY(client.open(message));
        client.send(endpointsRequest());
        ServiceFault fault;
        QVERIFY(client.receive(fault));
        QCOMPARE(fault.header.serviceResult, OpcUa_BadResponseTooLarge);
        QCOMPARE(fault.header.requestHandle, 7u);
    }
}

void tst_DemoServer::filters()
{
    RawClient client(m_url);
    QVERIFY(client.open());
    const auto list = [](std::initializer_list<const char*> texts) {
        UaStackTypeArray<OpcUa_String> array;
        for (const char* text : texts) {
            array.resize(array.length() + 1);
            UaString(text).copyTo(&array[array.length() - 1]);
        }
        return array;
    };

    FindServersRequest servers;
    servers.serverUris =
        list({"urn:localhost:kestrel-demo:historian", "urn:x", "urn:localhost:kestrel-demo:"});
    client.send(servers);
    FindServersResponse found;
    QVERIFY(client.receive(found));
    QCOMPARE(found.servers.length(), 1u);
    QCOMPARE(OpcUa_String_GetRawString(&found.servers[0].ApplicationName.Text), "Historian");

    GetEndpointsRequest endpoints = endpointsRequest();
    endpoints.profileUris = list({"http://opcfoundation.org/UA-Profile/Transport/https-uabinary"});
    client.send(endpoints);
    GetEndpointsResponse none;
    QVERIFY(client.receive(none));
    QCOMPARE(none.endpoints.length(), 0u);
    endpoints.profileUris =
        list({"http://opcfoundation.org/UA-Profile/Transport/uatcp-uasc-uabinary"});
    client.send(endpoints);
    GetEndpointsResponse one;
    QVERIFY(client.receive(one));
    QCOMPARE(one.endpoints.length(), 1u);
}

void tst_DemoServer::renewedToken()
{
    RawClient client(m_url);
    QVERIFY(client.open());
    const OpcUa_UInt32 first = client.writer.tokenId;
    client.send(openRequest(SecurityTokenRequestType::Renew), MessageType::OpenSecureChannel);
    const OpcUa_UInt32 second = client.receiveToken();
    QVERIFY(second != 0 && second != first);
    for (const OpcUa_UInt32 token : {first, second}) {
        client.writer.tokenId = token;
        client.send(endpointsRequest());
        GetEndpointsResponse response;
        QVERIFY(client.receive(response));
        QCOMPARE(response.endpoints.length(), 1u);
    }
}

void tst_DemoServer::closesChannels()
{
    RawClient client(m_url);
    QVERIFY(client.open());
    client.send(CloseSecureChannelRequest(), MessageType::CloseSecureChannel);
    QVERIFY(!client.receive());
    QVERIFY(client.waitForEnd());
}

void tst_DemoServer::connectionsAreLimited()
{
    PeerProcess server;
    const QString url = server.start(DEMO_SERVER, freePorts);
    std::vector<std::unique_ptr<RawClient>> clients;
    for (int i = 0; i < 50; ++i) {
        clients.push_back(std::make_unique<RawClient>(url));
        QVERIFY(clients.back()->open());
    }
    RawClient excess(url);
    QVERIFY(!excess.open());
    QVERIFY(excess.waitForEnd());
    clients.pop_back();
    QTRY_COMPARE(findServers(url).length(), 5u);
    QVERIFY(server.stop());
}

void tst_DemoServer::unreadAnswersAreBounded()
{
    // A client that asks and asks and never reads: the server must stop taking its requests.
    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, quint16(QUrl(m_historianUrl).port()));
    QVERIFY(client.waitForConnected(timeout));
    client.setReadBufferSize(1);
    client.write(encodeConnectionMessage(MessageType::Hello, hello()));
    MessageWriter writer;
    client.write(writer.chunks(MessageType::OpenSecureChannel, 1, encodeMessage(openRequest())));
    writer.channelId = 1;
    writer.tokenId = 1;
    const QByteArray body = encodeMessage(endpointsRequest());
    constexpr int requestCount = 300000; // 20 MB of requests, 2 GB of answers
    QByteArray requests;
    for (int i = 0; i < requestCount; ++i)
        requests.append(writer.chunks(MessageType::Message, OpcUa_UInt32(i + 2), body));
    client.write(requests);
    // Until nothing moves any more.
    while (client.bytesToWrite() > 0 && client.waitForBytesWritten(1000)) {
    }
    QVERIFY2(client.bytesToWrite() > requests.size() / 2, "the server took all requests");
    QCOMPARE(findServers(m_url).length(), 5u);
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

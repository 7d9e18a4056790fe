#include "platform/client/endpointurl_p.h"
#include "platform/client/messagechunks_p.h"
#include "platform/types/uastatuscode.h"
#include "samples.h"
#include "support/warnings.h"

#include <QtTest/QtTest>

#include <functional>

using namespace UaWire;

namespace {

template <class T>
QByteArray encoded(const T& value)
{
    QByteArray out;
    BinaryEncoder{out}(value);
    return out;
}

template <class T>
void number(QByteArray& out, T value)
{
    BinaryEncoder{out}(value);
}

// A type of message behind the test's table: its sample, and decoding it for a second encoding.
struct Codec
{
    QByteArray sample;
    std::function<OpcUa_StatusCode(QByteArrayView, QByteArray* again)> decode;
};

template <class T>
Codec codecOf(const T& sample)
{
    return {encoded(sample), [](QByteArrayView bytes, QByteArray* again) {
                T value;
                const OpcUa_StatusCode status = decodeFields(bytes, value);
                if (again)
                    *again = encoded(value);
                return status;
            }};
}

template <class Request>
Request request()
{
    Request value;
    value.header.timestamp = 0x0102030405060708;
    value.header.requestHandle = 42;
    value.header.returnDiagnostics = 0x3ff;
    value.header.auditEntryId = UaString("audit");
    value.header.timeoutHint = 5000;
    return value;
}

template <class Response>
Response response()
{
    Response value;
    value.header.timestamp = 0x0102030405060708;
    value.header.requestHandle = 42;
    value.header.serviceResult = 0x800b0000;
    value.header.stringTable.resize(1);
    Samples::assign(value.header.stringTable[0], "diagnosis");
    return value;
}

// The sample of every message, by name.
QMap<QByteArray, Codec> codecs()
{
    QMap<QByteArray, Codec> codecs;
    codecs["Hello"] = codecOf(Hello{0, 65536, 65537, 1 << 24, 7, UaString("opc.tcp://plant")});
    codecs["Acknowledge"] = codecOf(Acknowledge{0, 65536, 65537, 1 << 24, 7});
    codecs["Error"] = codecOf(Error{0x80800000, UaString("too large")});
    codecs["ServiceFault"] = codecOf(response<ServiceFault>());
    auto open = request<OpenSecureChannelRequest>();
    open.requestType = SecurityTokenRequestType::Renew;
    open.clientNonce = QByteArray("\0\1\2", 3);
    open.requestedLifetime = 60000;
    codecs["OpenSecureChannelRequest"] = codecOf(open);
    auto opened = response<OpenSecureChannelResponse>();
    opened.securityToken = {17, 4711, 0x0102030405060708, 60000};
    opened.serverNonce = "";
    codecs["OpenSecureChannelResponse"] = codecOf(opened);
    codecs["CloseSecureChannelRequest"] = codecOf(request<CloseSecureChannelRequest>());
    auto findServers = request<FindServersRequest>();
    findServers.endpointUrl = UaString("opc.tcp://plant");
    findServers.localeIds.resize(1);
    Samples::assign(findServers.localeIds[0], "en");
    codecs["FindServersRequest"] = codecOf(findServers);
    auto servers = response<FindServersResponse>();
    servers.servers = Samples::array<OpcUa_ApplicationDescription>(2);
    codecs["FindServersResponse"] = codecOf(servers);
    auto getEndpoints = request<GetEndpointsRequest>();
    getEndpoints.endpointUrl = UaString("opc.tcp://plant");
    getEndpoints.profileUris.resize(2);
    codecs["GetEndpointsRequest"] = codecOf(getEndpoints);
    auto endpoints = response<GetEndpointsResponse>();
    endpoints.endpoints = Samples::array<OpcUa_EndpointDescription>(2);
    codecs["GetEndpointsResponse"] = codecOf(endpoints);
    auto onNetwork = request<FindServersOnNetworkRequest>();
    onNetwork.startingRecordId = 1;
    onNetwork.maxRecordsToReturn = 2;
    codecs["FindServersOnNetworkRequest"] = codecOf(onNetwork);
    auto network = response<FindServersOnNetworkResponse>();
    network.lastCounterResetTime = -1;
    network.servers = Samples::array<OpcUa_ServerOnNetwork>(2);
    codecs["FindServersOnNetworkResponse"] = codecOf(network);
    return codecs;
}

QByteArray bytesOf(const OpcUa_String& text)
{
    return UaString(&text).bytes();
}

} // namespace

class TestWireFormat : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnWarnings(); }
    void bytesOfTheStandard();
    void roundTrip_data();
    void roundTrip();
    void decodedFields();
    void limits_data();
    void limits();
    void ignoredValues_data();
    void ignoredValues();
    void chunks();
    void badChunks_data();
    void badChunks();
    void sequenceNumbersStartAgain();
    void endpointUrls_data();
    void endpointUrls();
};

// Written down from OPC 10000-6, not made by the encoder.
void TestWireFormat::bytesOfTheStandard()
{
    GetEndpointsRequest request;
    request.header.timestamp = 0x01d0000000000000;
    request.header.requestHandle = 1;
    request.header.timeoutHint = 1000;
    request.endpointUrl = UaString("opc.tcp://a");
    MessageWriter writer;
    writer.channelId = 0x11223344;
    writer.tokenId = 5;
    const QByteArray message = "4d534746"
                               "50000000" // MSGF, size
                               "44332211"
                               "05000000" // channel, token
                               "01000000"
                               "07000000"         // sequence number, request id
                               "0100ac01"         // type: i=428
                               "0000"             // authentication token: i=0
                               "000000000000d001" // timestamp
                               "01000000"
                               "00000000"                       // handle, diagnostics
                               "ffffffff"                       // audit entry id: null
                               "e8030000"                       // time-out
                               "000000"                         // additional header: none
                               "0b0000006f70632e7463703a2f2f61" // URL
                               "ffffffff"
                               "ffffffff"; // locales, profiles: null
    QCOMPARE(writer.chunks(MessageType::Message, 7, encodeMessage(request)).toHex(), message);

    MessageWriter opening;
    QByteArray open = "4f504e46"
                      "51000000"
                      "00000000"
                      "2f000000";
    open += QByteArray("http://opcfoundation.org/UA/SecurityPolicy#None").toHex();
    open += "ffffffff"
            "ffffffff"
            "01000000"
            "01000000"
            "aabb";
    QCOMPARE(opening.chunks(MessageType::OpenSecureChannel, 1, "\xaa\xbb").toHex(), open);

    const QByteArray hello = "48454c46"
                             "28000000"
                             "00000000"
                             "00000100"
                             "00000200"
                             "00000300"
                             "04000000"
                             "08000000"
                             "6f70632e7463703a";
    QCOMPARE(encodeConnectionMessage(MessageType::Hello,
                                     Hello{0, 0x10000, 0x20000, 0x30000, 4, UaString("opc.tcp:")})
                 .toHex(),
             hello);

    OpcUa_LocalizedText text = {};
    QCOMPARE(encoded(text).toHex(), QByteArray("00"));
    Samples::assign(text.Text, "");
    QCOMPARE(encoded(text).toHex(), QByteArray("0200000000"));
    Samples::assign(text.Locale, "en");
    QCOMPARE(encoded(text).toHex(), QByteArray("0302000000656e00000000"));
    OpcUa_LocalizedText_Clear(&text);

    // i=12209 and i=397 in other forms than the shortest
    for (const char* hex : {"0100b12f", "020000b12f0000"}) {
        const QByteArray bytes = QByteArray::fromHex(hex);
        QByteArrayView body = bytes;
        QCOMPARE(takeTypeId(body), FindServersOnNetworkResponse::encodingId);
    }
    // of another namespace, or not numeric
    for (const char* hex : {"01018d01", "0201008d010000", "0300000100000061", "0500000100000061",
                            "04000000112233445566778899aabbccddeeff", ""}) {
        const QByteArray bytes = QByteArray::fromHex(hex);
        QByteArrayView body = bytes;
        QCOMPARE(takeTypeId(body), 0u);
        QVERIFY(body.isEmpty());
    }
}

void TestWireFormat::roundTrip_data()
{
    QTest::addColumn<QByteArray>("name");
    const auto all = codecs();
    for (auto it = all.begin(); it != all.end(); ++it)
        QTest::newRow(it.key()) << it.key();
}

void TestWireFormat::roundTrip()
{
    QFETCH(QByteArray, name);
    const Codec codec = codecs()[name];
    QByteArray again;
    QCOMPARE(codec.decode(codec.sample, &again), OpcUa_Good);
    QCOMPARE(again.toHex(), codec.sample.toHex());
    // Bytes of a later version of the message do not matter.
    QCOMPARE(codec.decode(codec.sample + "later", &again), OpcUa_Good);
    QCOMPARE(again.toHex(), codec.sample.toHex());

    for (qsizetype size = 0; size < codec.sample.size(); ++size) {
        // A block of its own, so that a sanitizer sees what reads beyond it.
        const auto cut = std::make_unique<char[]>(size_t(size));
        std::copy_n(codec.sample.data(), size, cut.get());
        QCOMPARE(codec.decode(QByteArrayView(cut.get(), size), nullptr), OpcUa_BadDecodingError);
    }
}

void TestWireFormat::decodedFields()
{
    GetEndpointsResponse sent;
    sent.endpoints = Samples::array<OpcUa_EndpointDescription>(3);
    GetEndpointsResponse received;
    QCOMPARE(decodeFields(encoded(sent), received), OpcUa_Good);
    QCOMPARE(received.endpoints.length(), 3u);
    for (OpcUa_UInt32 i = 0; i < 3; ++i)
        QVERIFY(OpcUa_EndpointDescription_Equal(&sent.endpoints[i], &received.endpoints[i]));
    const OpcUa_EndpointDescription& endpoint = received.endpoints[2];
    QCOMPARE(bytesOf(endpoint.SecurityPolicyUri), QByteArray("nul\0 and invalid \xff\xfe", 18));
    QCOMPARE(bytesOf(endpoint.UserIdentityTokens[1].PolicyId), QByteArray("name"));
    QVERIFY(!endpoint.UserIdentityTokens[1].IssuedTokenType.Data);
    QVERIFY(endpoint.Server.GatewayServerUri.Data);
    QCOMPARE(bytesOf(endpoint.Server.DiscoveryUrls[2]), QByteArray("opc.https://plant"));
}

void TestWireFormat::limits_data()
{
    QTest::addColumn<QByteArray>("bytes"); // of an array of String
    QTest::addColumn<OpcUa_StatusCode>("status");

    const auto array = [](OpcUa_Int32 count, const QByteArray& rest) {
        QByteArray bytes;
        number(bytes, count);
        return bytes + rest;
    };
    const auto text = [](OpcUa_Int32 length, qsizetype size) {
        QByteArray bytes;
        number(bytes, OpcUa_Int32(1));
        number(bytes, length);
        return bytes + QByteArray(size, 'x');
    };
    const DecoderLimits limits;
    const QByteArray nulls(4 * (limits.arrayLength + 1), '\xff');
    QTest::newRow("null array") << array(-1, "") << OpcUa_Good;
    QTest::newRow("empty array") << array(0, "") << OpcUa_Good;
    QTest::newRow("negative array") << array(-2, nulls) << OpcUa_BadDecodingError;
    QTest::newRow("least array") << array(INT32_MIN, nulls) << OpcUa_BadDecodingError;
    QTest::newRow("more elements than bytes") << array(INT32_MAX, nulls) << OpcUa_BadDecodingError;
    QTest::newRow("largest array") << array(limits.arrayLength, nulls) << OpcUa_Good;
    QTest::newRow("too large array")
        << array(limits.arrayLength + 1, nulls) << OpcUa_BadEncodingLimitsExceeded;
    QTest::newRow("negative text") << text(-2, 100) << OpcUa_BadDecodingError;
    QTest::newRow("text beyond the message") << text(101, 100) << OpcUa_BadDecodingError;
    QTest::newRow("endless text") << text(INT32_MAX, 100) << OpcUa_BadDecodingError;
    QTest::newRow("longest text") << text(limits.stringLength, limits.stringLength) << OpcUa_Good;
    QTest::newRow("too long text") << text(limits.stringLength + 1, limits.stringLength + 1)
                                   << OpcUa_BadEncodingLimitsExceeded;
    QTest::newRow("more memory than allowed")
        << array(25, QByteArray("\0\0\x10\0", 4).append(QByteArray(1 << 20, 'x')).repeated(25))
        << OpcUa_BadEncodingLimitsExceeded;
}

void TestWireFormat::limits()
{
    QFETCH(QByteArray, bytes);
    QFETCH(OpcUa_StatusCode, status);
    UaStackTypeArray<OpcUa_String> array;
    QCOMPARE(UaStatusCode(decodeFields(bytes, array)).toString().bytes(),
             UaStatusCode(status).toString().bytes());
}

void TestWireFormat::ignoredValues_data()
{
    QTest::addColumn<QByteArray>("diagnostics");
    QTest::addColumn<QByteArray>("additionalHeader");
    QTest::addColumn<OpcUa_StatusCode>("status");
    const QByteArray none = "000000";
    const QByteArray inner = "40";
    QTest::newRow("null") << QByteArray("00") << none << OpcUa_Good;
    QTest::newRow("all diagnostics") << QByteArray("7f"
                                                   "01000000"
                                                   "02000000"
                                                   "03000000"
                                                   "04000000"
                                                   "02000000"
                                                   "6869"
                                                   "00000180"
                                                   "01"
                                                   "05000000")
                                     << none << OpcUa_Good;
    QTest::newRow("deepest diagnostics")
        << inner.repeated(DecoderLimits().nestingDepth - 1) + "00" << none << OpcUa_Good;
    QTest::newRow("too deep diagnostics") << inner.repeated(DecoderLimits().nestingDepth) + "00"
                                          << none << OpcUa_BadEncodingLimitsExceeded;
    QTest::newRow("endless diagnostics")
        << inner.repeated(1000000) << none << OpcUa_BadEncodingLimitsExceeded;
    QTest::newRow("bytes") << QByteArray("00")
                           << QByteArray("01000102"
                                         "01"
                                         "02000000"
                                         "abcd")
                           << OpcUa_Good;
    QTest::newRow("XML") << QByteArray("00")
                         << QByteArray("0300000100000061"
                                       "02"
                                       "ffffffff")
                         << OpcUa_Good;
    QTest::newRow("bytes beyond the message") << QByteArray("00")
                                              << QByteArray("01000102"
                                                            "01"
                                                            "ff000000"
                                                            "abcd")
                                              << OpcUa_BadDecodingError;
    QTest::newRow("unknown body") << QByteArray("00") << QByteArray("000003")
                                  << OpcUa_BadDecodingError;
    QTest::newRow("unknown NodeId")
        << QByteArray("00") << QByteArray("060000") << OpcUa_BadDecodingError;
}

void TestWireFormat::ignoredValues()
{
    QFETCH(QByteArray, diagnostics);
    QFETCH(QByteArray, additionalHeader);
    QFETCH(OpcUa_StatusCode, status);
    QByteArray bytes(16, '\1');
    bytes += QByteArray::fromHex(diagnostics) + QByteArray("\0\0\0\0", 4) +
             QByteArray::fromHex(additionalHeader) + "*";
    struct
    {
        ResponseHeader header;
        OpcUa_Byte after = 0;
    } value;
    BinaryDecoder decoder(bytes);
    decoder(value.header);
    decoder(value.after);
    QCOMPARE(decoder.status(), status);
    QCOMPARE(value.after, OpcUa_IsGood(status) ? OpcUa_Byte('*') : OpcUa_Byte(0));
}

void TestWireFormat::chunks()
{
    QByteArray body;
    for (int i = 0; i < 30000; ++i)
        body += char(i * 7);
    MessageWriter writer;
    writer.channelId = 3;
    writer.tokenId = 4;
    QByteArray stream = writer.chunks(MessageType::OpenSecureChannel, 1, body.first(10));
    stream += writer.chunks(MessageType::Message, 2, body);
    stream += encodeConnectionMessage(MessageType::Error, Error{0x80010000, UaString("e")});
    stream += writer.chunks(MessageType::CloseSecureChannel, 3, {});

    for (const qsizetype step : {qsizetype(1), qsizetype(4096), stream.size()}) {
        MessageReader reader;
        QList<Message> messages;
        for (qsizetype i = 0; i < stream.size(); i += step) {
            reader.append(QByteArrayView(stream).sliced(i, std::min(step, stream.size() - i)));
            while (const std::optional<Message> message = reader.next())
                messages += *message;
        }
        QCOMPARE(reader.status(), OpcUa_Good);
        QCOMPARE(messages.size(), 4);
        QCOMPARE(messages[0].type, MessageType::OpenSecureChannel);
        QCOMPARE(messages[0].body, body.first(10));
        QCOMPARE(messages[1].type, MessageType::Message);
        QCOMPARE(messages[1].channelId, 3u);
        QCOMPARE(messages[1].tokenId, 4u);
        QCOMPARE(messages[1].requestId, 2u);
        QCOMPARE(messages[1].body, body);
        QCOMPARE(messages[2].type, MessageType::Error);
        QCOMPARE(messages[3].type, MessageType::CloseSecureChannel);
    }
}

void TestWireFormat::badChunks_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<OpcUa_StatusCode>("status");

    const auto chunk = [](const char* head, OpcUa_UInt32 channel, OpcUa_UInt32 token,
                          OpcUa_UInt32 sequence, OpcUa_UInt32 request, const QByteArray& body) {
        QByteArray rest;
        for (OpcUa_UInt32 word : {channel, token, sequence, request})
            number(rest, word);
        rest += body;
        QByteArray bytes(head, 4);
        number(bytes, OpcUa_UInt32(8 + rest.size()));
        return bytes + rest;
    };
    const auto sized = [](const char* head, OpcUa_UInt32 size) {
        QByteArray bytes(head, 4);
        number(bytes, size);
        return bytes + QByteArray(40, '\0');
    };
    const QByteArray first = chunk("MSGC", 1, 1, 1, 1, "a");
    const auto after = [&](const QByteArray& second) { return first + second; };
    QTest::newRow("good") << after(chunk("MSGF", 1, 1, 2, 1, "b")) << OpcUa_Good;
    QTest::newRow("unknown type") << chunk("GETF", 1, 1, 1, 1, "")
                                  << OpcUa_BadTcpMessageTypeInvalid;
    QTest::newRow("unknown letter")
        << chunk("MSGX", 1, 1, 1, 1, "") << OpcUa_BadTcpMessageTypeInvalid;
    QTest::newRow("Hello in chunks")
        << chunk("HELC", 1, 1, 1, 1, "") << OpcUa_BadTcpMessageTypeInvalid;
    for (OpcUa_UInt32 size : {0u, 7u})
        QTest::addRow("size %u", size) << sized("MSGF", size) << OpcUa_BadDecodingError;
    for (OpcUa_UInt32 size : {8u, 23u})
        QTest::addRow("size %u", size) << sized("MSGF", size) << OpcUa_BadDecodingError;
    for (OpcUa_UInt32 size : {65537u, 0x7fffffffu, 0x80000000u, 0xffffffffu})
        QTest::addRow("size %u", size) << sized("MSGF", size) << OpcUa_BadTcpMessageTooLarge;
    QTest::newRow("other channel")
        << after(chunk("MSGF", 2, 1, 2, 1, "")) << OpcUa_BadUnknownResponse;
    QTest::newRow("other token") << after(chunk("MSGF", 1, 2, 2, 1, ""))
                                 << OpcUa_BadUnknownResponse;
    QTest::newRow("other request")
        << after(chunk("MSGF", 1, 1, 2, 2, "")) << OpcUa_BadUnknownResponse;
    QTest::newRow("other type") << after(chunk("CLOF", 1, 1, 2, 1, "")) << OpcUa_BadUnknownResponse;
    QTest::newRow("sequence number again")
        << after(chunk("MSGF", 1, 1, 1, 1, "")) << OpcUa_BadSequenceNumberInvalid;
    QTest::newRow("sequence number left out")
        << after(chunk("MSGF", 1, 1, 3, 1, "")) << OpcUa_BadSequenceNumberInvalid;
    QTest::newRow("abort without a code")
        << after(chunk("MSGA", 1, 1, 2, 1, "x")) << OpcUa_BadDecodingError;
    const QByteArray opening = chunk("OPNF", 1, 3, 0, 0, QByteArray(20, '\0'));
    QTest::newRow("other policy") << QByteArray(opening).replace(16, 3, "abc")
                                  << OpcUa_BadSecurityPolicyRejected;
    QByteArray many;
    for (OpcUa_UInt32 i = 0; i <= ChunkLimits().chunkCount; ++i)
        many += chunk("MSGC", 1, 1, i, 1, "");
    QTest::newRow("too many chunks") << many << OpcUa_BadResponseTooLarge;
    many.clear();
    for (OpcUa_UInt32 i = 0; i < 260; ++i)
        many += chunk("MSGC", 1, 1, i, 1, QByteArray(65536 - 24, 'x'));
    QTest::newRow("too large message") << many << OpcUa_BadResponseTooLarge;
}

void TestWireFormat::badChunks()
{
    QFETCH(QByteArray, bytes);
    QFETCH(OpcUa_StatusCode, status);
    MessageReader reader;
    reader.append(bytes);
    QCOMPARE(reader.next().has_value(), OpcUa_IsGood(status));
    QCOMPARE(UaStatusCode(reader.status()).toString().bytes(),
             UaStatusCode(status).toString().bytes());
    reader.append(encodeConnectionMessage(MessageType::Acknowledge, Acknowledge()));
    QCOMPARE(reader.next().has_value(), OpcUa_IsGood(status));
}

// OPC 10000-6, 6.7.2.4: not before 4294966271, and below 1024.
void TestWireFormat::sequenceNumbersStartAgain()
{
    const auto goes = [](OpcUa_UInt32 from, OpcUa_UInt32 to) {
        MessageReader reader;
        for (OpcUa_UInt32 sequence : {from, to}) {
            QByteArray rest;
            for (OpcUa_UInt32 word : {1u, 1u, sequence, 1u})
                number(rest, word);
            reader.append(encodeChunk(MessageType::Message, 'F', rest));
            reader.next();
        }
        return reader.status() == OpcUa_Good;
    };
    QVERIFY(goes(4294966272u, 0));
    QVERIFY(goes(4294966272u, 1023));
    QVERIFY(goes(4294967295u, 0));
    QVERIFY(goes(4294966271u, 4294966272u));
    QVERIFY(!goes(4294966271u, 0));
    QVERIFY(!goes(4294966272u, 1024));
}

void TestWireFormat::endpointUrls_data()
{
    QTest::addColumn<QByteArray>("url");
    QTest::addColumn<QString>("host"); // null if the URL is bad
    QTest::addColumn<int>("port");
    const auto row = [](const QByteArray& url, const QString& host = {}, int port = 0) {
        QTest::newRow(url.left(40).toPercentEncoding(" /:.[]")) << url << host << port;
    };
    row("opc.tcp://plant", "plant", 4840);
    row("OPC.tcp://plant:1", "plant", 1);
    row("opc.tcp://plant.example:65535/UA/Path?q#f", "plant.example", 65535);
    row("opc.tcp://127.0.0.1:48400/", "127.0.0.1", 48400);
    row("opc.tcp://[::1]", "::1", 4840);
    row("opc.tcp://[fe80::1%25eth0]:4841/a", "fe80::1%eth0", 4841);
    row("opc.tcp://k\xc3\xbchlung_1", QString::fromUtf8("k\xc3\xbchlung_1"), 4840);
    row("");
    row("plant");
    row("opc.tcp:plant");
    row("opc.tcp://");
    row("opc.tcp://:4840");
    row("opc.tcp:///path");
    row("opc.https://plant");
    row(" opc.tcp://plant");
    row("opc.tcp://plant ");
    row("opc.tcp://pl ant");
    row("opc.tcp://plant:");
    row("opc.tcp://plant:0");
    row("opc.tcp://plant:65536");
    row("opc.tcp://plant:-1");
    row("opc.tcp://plant:4840x");
    row("opc.tcp://plant:48:40");
    row("opc.tcp://user@plant");
    row("opc.tcp://::1");
    row("opc.tcp://[::1");
    row("opc.tcp://[]");
    row("opc.tcp://[127.0.0.1]");
    row("opc.tcp://[1:2:3]");
    row("opc.tcp://plant\n");
    row("opc.tcp://pl\xff"
        "ant");
    row(QByteArray("opc.tcp://plant\0.example", 23));
    row("opc.tcp://plant/" + QByteArray(5000, 'x'));
}

void TestWireFormat::endpointUrls()
{
    QFETCH(QByteArray, url);
    QFETCH(QString, host);
    QFETCH(int, port);
    const std::optional<EndpointAddress> address = parseEndpointUrl(url);
    QCOMPARE(address.has_value(), !host.isNull());
    if (address) {
        QCOMPARE(address->host, host);
        QCOMPARE(int(address->port), port);
    }
}

QTEST_GUILESS_MAIN(TestWireFormat)
#include "tst_wireformat.moc"

#include "platform/types/uastatuscode.h"
#include "platform/wire/endpointurl_p.h"
#include "platform/wire/messagechunks_p.h"
#include "platform/wire/samples.h"
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
    auto open = request<OpenSecureChannelRequest>();
    open.requestType = SecurityTokenRequestType::Renew;
    open.clientNonce = QByteArray("\0\1\2", 3);
    open.requestedLifetime = 60000;
    auto opened = response<OpenSecureChannelResponse>();
    opened.securityToken = {17, 4711, 0x0102030405060708, 60000};
    opened.serverNonce = "";
    auto findServers = request<FindServersRequest>();
    findServers.endpointUrl = UaString("opc.tcp://plant");
    findServers.localeIds.resize(1);
    Samples::assign(findServers.localeIds[0], "en");
    auto servers = response<FindServersResponse>();
    servers.servers = Samples::array<OpcUa_ApplicationDescription>(2);
    auto getEndpoints = request<GetEndpointsRequest>();
    getEndpoints.endpointUrl = UaString("opc.tcp://plant");
    getEndpoints.profileUris.resize(2);
    auto endpoints = response<GetEndpointsResponse>();
    endpoints.endpoints = Samples::array<OpcUa_EndpointDescription>(2);
    auto onNetwork = request<FindServersOnNetworkRequest>();
    onNetwork.startingRecordId = 1;
    onNetwork.maxRecordsToReturn = 2;
    auto network = response<FindServersOnNetworkResponse>();
    network.lastCounterResetTime = -1;
    network.servers = Samples::array<OpcUa_ServerOnNetwork>(2);
    return {
        {"Hello", codecOf(Hello{0, 65536, 65537, 1 << 24, 7, UaString("opc.tcp://plant")})},
        {"Acknowledge", codecOf(Acknowledge{0, 65536, 65537, 1 << 24, 7})},
        {"Error", codecOf(Error{0x80800000, UaString("too large")})},
        {"ServiceFault", codecOf(response<ServiceFault>())},
        {"OpenSecureChannelRequest", codecOf(open)},
        {"OpenSecureChannelResponse", codecOf(opened)},
        {"CloseSecureChannelRequest", codecOf(request<CloseSecureChannelRequest>())},
        {"FindServersRequest", codecOf(findServers)},
        {"FindServersResponse", codecOf(servers)},
        {"GetEndpointsRequest", codecOf(getEndpoints)},
        {"GetEndpointsResponse", codecOf(endpoints)},
        {"FindServersOnNetworkRequest", codecOf(onNetwork)},
        {"FindServersOnNetworkResponse", codecOf(network)},
    };
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
    const auto hex = [](const char* digits) { return QByteArray::fromHex(digits); };
    GetEndpointsRequest request;
    request.header.timestamp = 0x01d0000000000000;
    request.header.requestHandle = 1;
    request.header.timeoutHint = 1000;
    request.endpointUrl = UaString("opc.tcp://a");
    MessageWriter writer;
    writer.channelId = 0x11223344;
    writer.tokenId = 5;
    // Type i=428, no authentication token, 24 bytes of header up to the null audit entry, time-out,
    // no additional header, the URL, no locales nor profiles.
    QCOMPARE(writer.chunks(MessageType::Message, 7, encodeMessage(request)),
             hex("4d534746 50000000 44332211 05000000 01000000 07000000 0100ac01"
                 "0000 000000000000d001 01000000 00000000 ffffffff e8030000"
                 "000000 0b0000006f70632e7463703a2f2f61 ffffffff ffffffff"));
    QCOMPARE(MessageWriter().chunks(MessageType::OpenSecureChannel, 1, "\xaa\xbb"),
             hex("4f504e46 51000000 00000000 2f000000") +
                 "http://opcfoundation.org/UA/SecurityPolicy#None" +
                 hex("ffffffff ffffffff 01000000 01000000 aabb"));
    QCOMPARE(encodeConnectionMessage(MessageType::Hello,
                                     Hello{0, 0x10000, 0x20000, 0x30000, 4, UaString("opc.tcp:")}),
             hex("48454c46 28000000 00000000 00000100 00000200 00000300 04000000 08000000") +
                 "opc.tcp:");

    OpcUa_LocalizedText text = {};
    QCOMPARE(encoded(text).toHex(), QByteArray("00"));
    Samples::assign(text.Text, "");
    QCOMPARE(encoded(text).toHex(), QByteArray("0200000000"));
    Samples::assign(text.Locale, "en");
    QCOMPARE(encoded(text).toHex(), QByteArray("0302000000656e00000000"));
    OpcUa_LocalizedText_Clear(&text);

    // i=12209 in other forms than the shortest; then of another namespace, or not numeric
    const QList<QPair<const char*, OpcUa_UInt32>> types = {
        {"0100b12f", FindServersOnNetworkResponse::encodingId},
        {"020000b12f0000", FindServersOnNetworkResponse::encodingId},
        {"01018d01", 0},
        {"0201008d010000", 0},
        {"0300000100000061", 0},
        {"0500000100000061", 0},
        {"04000000112233445566778899aabbccddeeff", 0},
        {"", 0}};
    for (const auto& [digits, id] : types) {
        const QByteArray bytes = hex(digits);
        QByteArrayView body = bytes;
        QCOMPARE(takeTypeId(body), id);
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

void TestWireFormat::limits_data()
{
    QTest::addColumn<QByteArray>("bytes"); // of an array of String
    QTest::addColumn<OpcUa_StatusCode>("status");
    const auto row = [](const char* name, OpcUa_StatusCode status, OpcUa_Int32 count,
                        const QByteArray& rest) {
        QTest::newRow(name) << encoded(count) + rest << status;
    };
    const auto text = [](OpcUa_Int32 length) { return encoded(length) + QByteArray(length, 'x'); };
    // Counts and lengths beyond what is there are tested with the client.
    const DecoderLimits limits;
    const QByteArray nulls(4 * (limits.arrayLength + 1), '\xff');
    row("null array", OpcUa_Good, -1, "");
    row("empty array", OpcUa_Good, 0, "");
    row("largest array", OpcUa_Good, limits.arrayLength, nulls);
    row("too large array", OpcUa_BadEncodingLimitsExceeded, limits.arrayLength + 1, nulls);
    row("longest text", OpcUa_Good, 1, text(limits.stringLength));
    row("too long text", OpcUa_BadEncodingLimitsExceeded, 1, text(limits.stringLength + 1));
    row("more memory than allowed", OpcUa_BadEncodingLimitsExceeded, 25,
        text(1 << 20).repeated(25));
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
    const auto row = [](const char* name, const QByteArray& diagnostics,
                        const QByteArray& additional, OpcUa_StatusCode status = OpcUa_Good) {
        QTest::newRow(name) << diagnostics << additional << status;
    };
    const QByteArray none = "000000";
    const QByteArray inner = "40";
    const int depth = DecoderLimits().nestingDepth;
    row("null", "00", none);
    row("all diagnostics",
        "7f 01000000 02000000 03000000 04000000 02000000 6869 00000180 01 05000000", none);
    row("deepest diagnostics", inner.repeated(depth - 1) + "00", none);
    row("too deep", inner.repeated(depth) + "00", none, OpcUa_BadEncodingLimitsExceeded);
    row("endless", inner.repeated(1000000), none, OpcUa_BadEncodingLimitsExceeded);
    row("bytes", "00", "01000102 01 02000000 abcd");
    row("XML", "00", "0300000100000061 02 ffffffff");
    row("bytes beyond the message", "00", "01000102 01 ff000000 abcd", OpcUa_BadDecodingError);
    row("unknown body", "00", "000003", OpcUa_BadDecodingError);
    row("unknown NodeId", "00", "060000", OpcUa_BadDecodingError);
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
    const QByteArray first = chunk("MSGC", 1, 1, 1, 1, "a");
    const auto row = [](const char* name, OpcUa_StatusCode status, const QByteArray& bytes) {
        QTest::newRow(name) << bytes << status;
    };
    const QByteArray opening = chunk("OPNF", 1, 3, 0, 0, QByteArray(20, '\0'));
    // What is wrong in a single chunk is tested with the client.
    row("good", OpcUa_Good, first + chunk("MSGF", 1, 1, 2, 1, "b"));
    row("unknown letter", OpcUa_BadTcpMessageTypeInvalid, chunk("MSGX", 1, 1, 1, 1, ""));
    row("Hello in chunks", OpcUa_BadTcpMessageTypeInvalid, chunk("HELC", 1, 1, 1, 1, ""));
    row("other channel", OpcUa_BadUnknownResponse, first + chunk("MSGF", 2, 1, 2, 1, ""));
    row("other token", OpcUa_BadUnknownResponse, first + chunk("MSGF", 1, 2, 2, 1, ""));
    row("other request", OpcUa_BadUnknownResponse, first + chunk("MSGF", 1, 1, 2, 2, ""));
    row("other type", OpcUa_BadUnknownResponse, first + chunk("CLOF", 1, 1, 2, 1, ""));
    row("number again", OpcUa_BadSequenceNumberInvalid, first + chunk("MSGF", 1, 1, 1, 1, ""));
    row("number left out", OpcUa_BadSequenceNumberInvalid, first + chunk("MSGF", 1, 1, 3, 1, ""));
    row("abort without a code", OpcUa_BadDecodingError, first + chunk("MSGA", 1, 1, 2, 1, "x"));
    row("other policy", OpcUa_BadSecurityPolicyRejected, QByteArray(opening).replace(16, 3, "abc"));
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
    for (const char* bad : {"",
                            "plant",
                            "opc.tcp:plant",
                            "opc.tcp://",
                            "opc.tcp://:4840",
                            "opc.tcp:///path",
                            "opc.https://plant",
                            " opc.tcp://plant",
                            "opc.tcp://plant ",
                            "opc.tcp://pl ant",
                            "opc.tcp://plant:",
                            "opc.tcp://plant:0",
                            "opc.tcp://plant:65536",
                            "opc.tcp://plant:-1",
                            "opc.tcp://plant:4840x",
                            "opc.tcp://plant:48:40",
                            "opc.tcp://user@plant",
                            "opc.tcp://::1",
                            "opc.tcp://[::1",
                            "opc.tcp://[]",
                            "opc.tcp://[127.0.0.1]",
                            "opc.tcp://[1:2:3]",
                            "opc.tcp://plant\n"})
        row(bad);
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

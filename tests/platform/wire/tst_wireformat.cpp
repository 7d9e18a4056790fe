#include "platform/wire/endpointurl_p.h"
#include "platform/wire/messagechunks_p.h"
#include "platform/wire/samples.h"
#include "support/values.h"
#include "support/warnings.h"

using namespace UaWire;

namespace {

template <class T>
QByteArray encoded(const T& value)
{
    QByteArray out;
    BinaryEncoder{out}(value);
    return out;
}

QByteArray words(std::initializer_list<OpcUa_UInt32> values)
{
    QByteArray out;
    for (OpcUa_UInt32 value : values)
        out += encoded(value);
    return out;
}

QByteArray hex(const char* digits)
{
    return QByteArray::fromHex(digits);
}

QByteArray chunk(const char* head, OpcUa_UInt32 channel, OpcUa_UInt32 token, OpcUa_UInt32 sequence,
                 OpcUa_UInt32 request, const QByteArray& body = {})
{
    const QByteArray rest = words({channel, token, sequence, request}) + body;
    return head + words({OpcUa_UInt32(8 + rest.size())}) + rest;
}

/// The bytes after decoding and encoding, or why they cannot be decoded.
template <class T, class Bytes>
QByteArray again(const Bytes& bytes)
{
    T value;
    const OpcUa_StatusCode status = decodeFields(bytes, value);
    return OpcUa_IsGood(status) ? encoded(value) : name(status);
}

/// Random values that do not come back, or that come back from less; spoilt ones that are unsound.
template <class T>
QByteArray faults()
{
    QByteArray faults;
    for (quint32 seed = 0; seed < 20 && faults.isEmpty(); ++seed) {
        Filler filler{QRandomGenerator(seed)};
        T sample;
        filler(sample);
        const QByteArray bytes = encoded(sample);
        if (again<T>(bytes) != bytes || again<T>(bytes + QByteArray("of a later version")) != bytes)
            faults += QByteArray("differs ") + typeid(T).name();
        // In blocks of their own, so that a sanitizer sees what reads beyond.
        for (qsizetype size = 0; size < bytes.size(); ++size)
            if (again<T>(std::vector<char>(bytes.begin(), bytes.begin() + size)) !=
                "BadDecodingError")
                faults += QByteArray("takes less ") + typeid(T).name();
        for (int i = 0; i < 100; ++i) {
            QByteArray spoilt = bytes;
            spoilt[filler.random.bounded(int(bytes.size()))] = char(filler.random.generate());
            const QByteArray once = again<T>(spoilt);
            if (!once.startsWith("Bad") && again<T>(once) != once)
                faults += QByteArray("unsound ") + typeid(T).name();
        }
    }
    return faults;
}

template <class... T>
QByteArray faultsOf()
{
    return (faults<T>() + ...);
}

/// What a reader makes of bytes that come in pieces.
QByteArrayList read(const QByteArray& stream, qsizetype piece)
{
    MessageReader reader;
    QByteArrayList messages;
    for (qsizetype i = 0; i < stream.size(); i += piece) {
        reader.append(stream.mid(i, piece));
        while (const std::optional<Message> message = reader.next())
            messages += words({OpcUa_UInt32(message->type), message->channelId, message->tokenId,
                               message->requestId, message->abortCode}) +
                        message->body;
    }
    return messages << name(reader.status());
}

} // namespace

class TestWireFormat : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnWarnings(); }

    // Written down from OPC 10000-6, not made by the encoder.
    void bytesOfTheStandard()
    {
        GetEndpointsRequest request;
        request.header.timestamp = 0x01d0000000000000;
        request.header.requestHandle = 1;
        request.header.timeoutHint = 1000;
        request.endpointUrl = UaString("opc.tcp://a");
        MessageWriter writer;
        writer.channelId = 0x11223344;
        writer.tokenId = 5;
        // Type i=428, no authentication token, 24 bytes of header up to the null audit entry,
        // time-out, no additional header, the URL, no locales nor profiles.
        QCOMPARE(writer.chunks(MessageType::Message, 7, encodeMessage(request)),
                 hex("4d534746 50000000 44332211 05000000 01000000 07000000 0100ac01"
                     "0000 000000000000d001 01000000 00000000 ffffffff e8030000"
                     "000000 0b0000006f70632e7463703a2f2f61 ffffffff ffffffff"));
        QCOMPARE(MessageWriter().chunks(MessageType::OpenSecureChannel, 1, "\xaa\xbb"),
                 hex("4f504e46 51000000 00000000 2f000000") +
                     "http://opcfoundation.org/UA/SecurityPolicy#None" +
                     hex("ffffffff ffffffff 01000000 01000000 aabb"));
        const Hello hello{0, 0x10000, 0x20000, 0x30000, 4, UaString("opc.tcp:")};
        QCOMPARE(encodeConnectionMessage(MessageType::Hello, hello),
                 hex("48454c46 28000000 00000000 00000100 00000200 00000300 04000000 08000000") +
                     "opc.tcp:");
        OpcUa_LocalizedText text = {};
        QCOMPARE(OpcUa_String_Assign(&text.Text, "", 0), OpcUa_Good);
        QCOMPARE(encoded(text).toHex(), "0200000000");
        QCOMPARE(OpcUa_String_Assign(&text.Locale, "en", 2), OpcUa_Good);
        QCOMPARE(encoded(text).toHex(), "0302000000656e00000000");
        OpcUa_LocalizedText_Clear(&text);

        // i=12209 in other forms than the shortest; then of another namespace, or not numeric
        for (const char* digits : {"0100b12f", "020000b12f0000", "01018d01", "0300000100000061", "",
                                   "0500000100000061", "04000000112233445566778899aabbccddeeff"}) {
            const QByteArray bytes = hex(digits);
            QByteArrayView body = bytes;
            QCOMPARE(takeTypeId(body), bytes.contains("\xb1\x2f") ? 12209u : 0u);
            QVERIFY(body.isEmpty());
        }
    }

    void everyMessageComesBack()
    {
        const QByteArray faults =
            faultsOf<Hello, Acknowledge, Error, ServiceFault, OpenSecureChannelRequest,
                     OpenSecureChannelResponse, CloseSecureChannelRequest, FindServersRequest,
                     FindServersResponse, GetEndpointsRequest, GetEndpointsResponse,
                     FindServersOnNetworkRequest, FindServersOnNetworkResponse>();
        QCOMPARE(faults, "");
    }

    void limits()
    {
        DecoderLimits limits;
        limits.arrayLength = 1000;
        limits.stringLength = 5000;
        limits.memory = 120000;
        // The parts of a response header from the 17th byte on.
        const auto row = [&](const char* what, OpcUa_StatusCode status,
                             const QByteArray& diagnostics, const QByteArray& texts = words({0}),
                             const char* additional = "000000") {
            const QByteArray all =
                QByteArray(16, '\1') + diagnostics + texts + hex(additional) + "*";
            BinaryDecoder decoder(all, limits);
            ResponseHeader header;
            OpcUa_Byte after = 0;
            decoder(header);
            decoder(after);
            QVERIFY2(decoder.status() == status, what + name(decoder.status()));
            QVERIFY2(after == (OpcUa_IsGood(status) ? '*' : 0), what);
        };
        const auto text = [](quint32 length) {
            return words({length}) + QByteArray(int(length), 'x');
        };
        const OpcUa_StatusCode tooMuch = OpcUa_BadEncodingLimitsExceeded;
        const QByteArray none(1, '\0'), null(4, '\xff'), inner("\x40");
        row("null array", OpcUa_Good, none, null);
        row("largest array", OpcUa_Good, none, words({1000}) + null.repeated(1000));
        row("too large array", tooMuch, none, words({1001}) + null.repeated(1001));
        row("longest text", OpcUa_Good, none, words({1}) + text(5000));
        row("too long text", tooMuch, none, words({1}) + text(5001));
        row("more than the memory", tooMuch, none, words({25}) + text(5000).repeated(25));
        for (const OpcUa_UInt32 count : {0xfffffffeu, 0x80000000u, 0x7fffffffu, 0x1000000u}) {
            row("no number", OpcUa_BadDecodingError, none, words({count}) + null.repeated(2000));
            row("no length", OpcUa_BadDecodingError, none, words({1, count}) + text(4000));
        }
        row("all diagnostics", OpcUa_Good,
            hex("7f 01000000 02000000 03000000 04000000 02000000 6869 00000180 00"));
        row("deepest", OpcUa_Good, inner.repeated(99) + none); // OPC 10000-6, 5.2.2.12
        row("too deep", tooMuch, inner.repeated(100) + none);
        row("endless", tooMuch, inner.repeated(1000000));
        row("body", OpcUa_Good, none, null, "01000102 01 02000000 abcd");
        row("XML", OpcUa_Good, none, null, "0300000100000061 02 ffffffff");
        row("body beyond", OpcUa_BadDecodingError, none, null, "01000102 01 ff000000 abcd");
        row("unknown body", OpcUa_BadDecodingError, none, null, "000003");
        row("unknown NodeId", OpcUa_BadDecodingError, none, null, "060000");
    }

    // Bytes mean the same however they are cut, even when they are spoilt.
    void streams()
    {
        QRandomGenerator random(1);
        QByteArray body(30000, Qt::Uninitialized);
        for (char& byte : body)
            byte = char(random.generate());
        MessageWriter writer;
        writer.channelId = 3;
        writer.tokenId = 4;
        QByteArray stream = writer.chunks(MessageType::OpenSecureChannel, 1, body.first(10));
        stream += writer.chunks(MessageType::Message, 2, body);
        stream += encodeConnectionMessage(MessageType::Error, Error{0x80010000, {}});
        stream += writer.chunks(MessageType::CloseSecureChannel, 3, {});
        const QByteArrayList right = {QByteArray("OPN\0", 4) + words({3, 0, 1, 0}) + body.first(10),
                                      QByteArray("MSG\0", 4) + words({3, 4, 2, 0}) + body,
                                      QByteArray("ERR\0", 4) +
                                          words({0, 0, 0, 0, 0x80010000, 0xffffffff}),
                                      QByteArray("CLO\0", 4) + words({3, 4, 3, 0}), "Good"};
        for (const qsizetype piece : {qsizetype(1), qsizetype(4096), stream.size()})
            QCOMPARE(read(stream, piece), right);
        for (int i = 0; i < 200; ++i) {
            QByteArray spoilt = stream;
            const int start = random.bounded(2) * 91; // the first chunks' headers
            spoilt[start + random.bounded(24)] = char(random.generate());
            const QByteArrayList whole = read(spoilt, spoilt.size());
            QCOMPARE(read(spoilt, 1 + random.bounded(5000)), whole);
            QVERIFY(whole.size() <= right.size());
        }
    }

    void badChunks()
    {
        const auto row = [](const char* what, OpcUa_StatusCode status, const QByteArray& bytes) {
            MessageReader reader;
            reader.append(bytes);
            QVERIFY2(reader.next().has_value() == OpcUa_IsGood(status), what);
            QVERIFY2(reader.status() == status, what + name(reader.status()));
            reader.append(encodeConnectionMessage(MessageType::Acknowledge, Acknowledge()));
            QVERIFY2(reader.next().has_value() == OpcUa_IsGood(status), what);
        };
        const QByteArray first = chunk("MSGC", 1, 1, 1, 1, "a");
        row("good", OpcUa_Good, first + chunk("MSGF", 1, 1, 2, 1, "b"));
        row("letter", OpcUa_BadTcpMessageTypeInvalid, chunk("MSGX", 1, 1, 1, 1));
        row("Hello in chunks", OpcUa_BadTcpMessageTypeInvalid, chunk("HELC", 1, 1, 1, 1));
        row("type", OpcUa_BadTcpMessageTypeInvalid, "HTTP/1.1 400 Bad Request");
        row("other channel", OpcUa_BadUnknownResponse, first + chunk("MSGF", 2, 1, 2, 1));
        row("other token", OpcUa_BadUnknownResponse, first + chunk("MSGF", 1, 2, 2, 1));
        row("other request", OpcUa_BadUnknownResponse, first + chunk("MSGF", 1, 1, 2, 2));
        row("other type", OpcUa_BadUnknownResponse, first + chunk("CLOF", 1, 1, 2, 1));
        row("abort without a code", OpcUa_BadDecodingError, first + chunk("MSGA", 1, 1, 2, 1, "x"));
        row("other policy", OpcUa_BadSecurityPolicyRejected,
            chunk("OPNF", 1, 3, 0, 0, QByteArray(20, '\0')).replace(16, 3, "abc"));
        for (const OpcUa_UInt32 size : {0u, 7u, 23u, 65537u, 0x7fffffffu, 0xffffffffu})
            row("size", size < 65536 ? OpcUa_BadDecodingError : OpcUa_BadTcpMessageTooLarge,
                chunk("MSGF", 1, 1, 1, 1, "b").replace(4, 4, words({size})));
        QByteArray many, large;
        for (OpcUa_UInt32 i = 0; i < 4097; ++i)
            many += chunk("MSGC", 1, 1, i, 1);
        for (OpcUa_UInt32 i = 0; i < 280; ++i)
            large += chunk("MSGC", 1, 1, i, 1, QByteArray(60000, 'x'));
        row("too many", OpcUa_BadResponseTooLarge, many);
        row("too large", OpcUa_BadResponseTooLarge, large);
        // Starts again not before 4294966271, and below 1024 (OPC 10000-6, 6.7.2.4).
        const OpcUa_UInt32 numbers[][3] = {
            {1, 1, 0},          {1, 3, 0},          {4294966272, 0, 1},   {4294966272, 1023, 1},
            {4294967295, 0, 1}, {4294966271, 0, 0}, {4294966272, 1024, 0}};
        for (const auto& [from, to, good] : numbers)
            row("sequence number", good ? OpcUa_Good : OpcUa_BadSequenceNumberInvalid,
                chunk("MSGC", 1, 1, from, 1) + chunk("MSGF", 1, 1, to, 1));
    }

    void endpointUrls()
    {
        const auto address = [](const QByteArray& url) {
            const std::optional<EndpointAddress> parsed = parseEndpointUrl(url);
            return parsed ? parsed->host.toUtf8() + ' ' + QByteArray::number(parsed->port) : "bad";
        };
        QCOMPARE(address("opc.tcp://plant"), "plant 4840");
        QCOMPARE(address("OPC.tcp://plant:1"), "plant 1");
        QCOMPARE(address("opc.tcp://plant.a:65535/UA/Path?q#f"), "plant.a 65535");
        QCOMPARE(address("opc.tcp://[::1]"), "::1 4840");
        QCOMPARE(address("opc.tcp://[fe80::1%25eth0]:4841/a"), "fe80::1%eth0 4841");
        QCOMPARE(address("opc.tcp://k\xc3\xbchlung_1"), "k\xc3\xbchlung_1 4840");
        const QByteArray bad(
            "|/|:4840|/path|pl ant|plant:|plant:0|plant:65536|plant:-1|plant:48:40|"
            "user@plant|::1|[::1|[127.0.0.1]|[1:2:3]|a\nb|pl\xff!|a\0.example",
            129);
        const QByteArrayList rests = bad.split('|') << "plant/" + QByteArray(5000, 'x');
        for (const QByteArray& rest : rests)
            QCOMPARE(address("opc.tcp://" + rest) + rest.left(20), "bad" + rest.left(20));
        for (const char* url : {"", "plant", "opc.tcp:plant", "opc.https://plant"})
            QCOMPARE(address(url), "bad");
    }
};

QTEST_GUILESS_MAIN(TestWireFormat)
#include "tst_wireformat.moc"

#include "platform/types/uastatuscode.h"
#include "platform/wire/endpointurl_p.h"
#include "platform/wire/messagechunks_p.h"
#include "platform/wire/samples.h"
#include "support/warnings.h"

#include <QtTest/QtTest>

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

QByteArray name(OpcUa_StatusCode status)
{
    return UaStatusCode(status).toString().bytes();
}

/// What was wrong with decoding and encoding again, whole or cut, or nothing.
template <class T>
const char* roundTrip()
{
    T sample;
    Filler()(sample);
    const QByteArray bytes = encoded(sample);
    for (const char* later : {"", "bytes of a later version"}) {
        T value;
        if (OpcUa_IsNotGood(decodeFields(bytes + later, value)) || encoded(value) != bytes)
            return "differs";
    }
    for (qsizetype size = 0; size < bytes.size(); ++size) {
        // A block of its own, so that a sanitizer sees what reads beyond it.
        const auto cut = std::make_unique<char[]>(size_t(size));
        std::copy_n(bytes.data(), size, cut.get());
        T value;
        if (decodeFields(QByteArrayView(cut.get(), size), value) != OpcUa_BadDecodingError)
            return "takes less";
    }
    return nullptr;
}

template <class... T>
QList<const char*> roundTrips()
{
    return {roundTrip<T>()...};
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
        const auto hex = [](const char* digits) { return QByteArray::fromHex(digits); };
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
        QCOMPARE(encodeConnectionMessage(MessageType::Hello, Hello{0, 0x10000, 0x20000, 0x30000, 4,
                                                                   UaString("opc.tcp:")}),
                 hex("48454c46 28000000 00000000 00000100 00000200 00000300 04000000 08000000") +
                     "opc.tcp:");
        OpcUa_LocalizedText text = {};
        QCOMPARE(encoded(text).toHex(), "00");
        QCOMPARE(OpcUa_String_Assign(&text.Text, "", 0), OpcUa_Good);
        QCOMPARE(encoded(text).toHex(), "0200000000");
        QCOMPARE(OpcUa_String_Assign(&text.Locale, "en", 2), OpcUa_Good);
        QCOMPARE(encoded(text).toHex(), "0302000000656e00000000");
        OpcUa_LocalizedText_Clear(&text);

        // i=12209 in other forms than the shortest; then of another namespace, or not numeric
        const QList<QPair<const char*, OpcUa_UInt32>> types = {
            {"0100b12f", FindServersOnNetworkResponse::encodingId},
            {"020000b12f0000", FindServersOnNetworkResponse::encodingId},
            {"01018d01", 0},
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

    void everyMessageComesBack()
    {
        const auto results =
            roundTrips<Hello, Acknowledge, Error, ServiceFault, OpenSecureChannelRequest,
                       OpenSecureChannelResponse, CloseSecureChannelRequest, FindServersRequest,
                       FindServersResponse, GetEndpointsRequest, GetEndpointsResponse,
                       FindServersOnNetworkRequest, FindServersOnNetworkResponse>();
        QCOMPARE(results, QList<const char*>(results.size(), nullptr));
    }

    void limits_data()
    {
        QTest::addColumn<QByteArray>("bytes"); // of a response header; 16 bytes are put before them
        QTest::addColumn<OpcUa_StatusCode>("status");
        const auto row = [](const char* name, OpcUa_StatusCode status,
                            const QByteArray& diagnostics,
                            const QByteArray& texts = QByteArray(4, '\0'),
                            const QByteArray& additional = "000000") {
            QTest::newRow(name) << diagnostics + texts + QByteArray::fromHex(additional) << status;
        };
        const QByteArray none(1, '\0'), null(4, '\xff');
        const auto text = [](int length) {
            return words({quint32(length)}) + QByteArray(length, 'x');
        };
        row("null array", OpcUa_Good, none, null);
        row("largest array", OpcUa_Good, none, words({1000}) + null.repeated(1000));
        row("too large array", OpcUa_BadEncodingLimitsExceeded, none,
            words({1001}) + null.repeated(1001));
        row("longest text", OpcUa_Good, none, words({1}) + text(5000));
        row("too long text", OpcUa_BadEncodingLimitsExceeded, none, words({1}) + text(5001));
        row("more memory than allowed", OpcUa_BadEncodingLimitsExceeded, none,
            words({25}) + text(5000).repeated(25));
        for (const OpcUa_UInt32 count : {0xfffffffeu, 0x80000000u, 0x7fffffffu, 0x1000000u}) {
            row("no such number", OpcUa_BadDecodingError, none,
                words({count}) + null.repeated(2000));
            row("no such length", OpcUa_BadDecodingError, none, words({1, count}) + text(4000));
        }
        const int depth = 100; // OPC 10000-6, 5.2.2.12
        const QByteArray inner("\x40");
        row("all diagnostics", OpcUa_Good,
            QByteArray::fromHex(
                "7f 01000000 02000000 03000000 04000000 02000000 6869 00000180 00"));
        row("deepest diagnostics", OpcUa_Good, inner.repeated(depth - 1) + none);
        row("too deep", OpcUa_BadEncodingLimitsExceeded, inner.repeated(depth) + none);
        row("endless", OpcUa_BadEncodingLimitsExceeded, inner.repeated(1000000));
        row("body", OpcUa_Good, none, null, "01000102 01 02000000 abcd");
        row("XML", OpcUa_Good, none, null, "0300000100000061 02 ffffffff");
        row("body beyond the message", OpcUa_BadDecodingError, none, null,
            "01000102 01 ff000000 abcd");
        row("unknown body", OpcUa_BadDecodingError, none, null, "000003");
        row("unknown NodeId", OpcUa_BadDecodingError, none, null, "060000");
    }

    void limits()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(OpcUa_StatusCode, status);
        DecoderLimits limits;
        limits.arrayLength = 1000;
        limits.stringLength = 5000;
        limits.memory = 120000;
        const QByteArray all = QByteArray(16, '\1') + bytes + "*";
        BinaryDecoder decoder(all, limits);
        ResponseHeader header;
        OpcUa_Byte after = 0;
        decoder(header);
        decoder(after);
        QCOMPARE(name(decoder.status()), name(status));
        QCOMPARE(after, OpcUa_IsGood(status) ? OpcUa_Byte('*') : OpcUa_Byte(0));
    }

    void chunks()
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
            QCOMPARE(encoded(messages[1].channelId) + encoded(messages[1].tokenId) +
                         encoded(messages[1].requestId),
                     words({3, 4, 2}));
            QCOMPARE(messages[1].body, body);
            QCOMPARE(messages[2].type, MessageType::Error);
            QCOMPARE(messages[3].type, MessageType::CloseSecureChannel);
        }
    }

    void badChunks_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<OpcUa_StatusCode>("status");
        const auto chunk = [](const char* head, OpcUa_UInt32 channel, OpcUa_UInt32 token,
                              OpcUa_UInt32 sequence, OpcUa_UInt32 request, const QByteArray& body) {
            const QByteArray rest = words({channel, token, sequence, request}) + body;
            return head + words({OpcUa_UInt32(8 + rest.size())}) + rest;
        };
        const auto row = [](const char* name, OpcUa_StatusCode status, const QByteArray& bytes) {
            QTest::newRow(name) << bytes << status;
        };
        const QByteArray first = chunk("MSGC", 1, 1, 1, 1, "a");
        row("good", OpcUa_Good, first + chunk("MSGF", 1, 1, 2, 1, "b"));
        row("unknown letter", OpcUa_BadTcpMessageTypeInvalid, chunk("MSGX", 1, 1, 1, 1, ""));
        row("Hello in chunks", OpcUa_BadTcpMessageTypeInvalid, chunk("HELC", 1, 1, 1, 1, ""));
        row("unknown type", OpcUa_BadTcpMessageTypeInvalid, "HTTP/1.1 400 Bad Request");
        row("other channel", OpcUa_BadUnknownResponse, first + chunk("MSGF", 2, 1, 2, 1, ""));
        row("other token", OpcUa_BadUnknownResponse, first + chunk("MSGF", 1, 2, 2, 1, ""));
        row("other request", OpcUa_BadUnknownResponse, first + chunk("MSGF", 1, 1, 2, 2, ""));
        row("other type", OpcUa_BadUnknownResponse, first + chunk("CLOF", 1, 1, 2, 1, ""));
        row("number again", OpcUa_BadSequenceNumberInvalid, first + chunk("MSGF", 1, 1, 1, 1, ""));
        row("number left out", OpcUa_BadSequenceNumberInvalid,
            first + chunk("MSGF", 1, 1, 3, 1, ""));
        row("abort without a code", OpcUa_BadDecodingError, first + chunk("MSGA", 1, 1, 2, 1, "x"));
        row("other policy", OpcUa_BadSecurityPolicyRejected,
            chunk("OPNF", 1, 3, 0, 0, QByteArray(20, '\0')).replace(16, 3, "abc"));
        for (const OpcUa_UInt32 size : {0u, 7u, 23u, 65537u, 0x7fffffffu, 0xffffffffu})
            row("size", size < 65536 ? OpcUa_BadDecodingError : OpcUa_BadTcpMessageTooLarge,
                chunk("MSGF", 1, 1, 1, 1, "b").replace(4, 4, words({size})));
        const auto endless = [&](OpcUa_UInt32 count, const QByteArray& body) {
            QByteArray bytes;
            for (OpcUa_UInt32 i = 0; i < count; ++i)
                bytes += chunk("MSGC", 1, 1, i, 1, body);
            return bytes;
        };
        row("too many chunks", OpcUa_BadResponseTooLarge, endless(4097, ""));
        row("too large message", OpcUa_BadResponseTooLarge, endless(280, QByteArray(60000, 'x')));
    }

    void badChunks()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(OpcUa_StatusCode, status);
        MessageReader reader;
        reader.append(bytes);
        QCOMPARE(reader.next().has_value(), OpcUa_IsGood(status));
        QCOMPARE(name(reader.status()), name(status));
        reader.append(encodeConnectionMessage(MessageType::Acknowledge, Acknowledge()));
        QCOMPARE(reader.next().has_value(), OpcUa_IsGood(status));
    }

    // OPC 10000-6, 6.7.2.4: not before 4294966271, and below 1024.
    void sequenceNumbersStartAgain()
    {
        const auto goes = [](OpcUa_UInt32 from, OpcUa_UInt32 to) {
            MessageReader reader;
            for (OpcUa_UInt32 sequence : {from, to}) {
                reader.append(encodeChunk(MessageType::Message, 'F', words({1, 1, sequence, 1})));
                reader.next();
            }
            return reader.status() == OpcUa_Good;
        };
        QVERIFY(goes(4294966272u, 0));
        QVERIFY(goes(4294966272u, 1023));
        QVERIFY(goes(4294967295u, 0));
        QVERIFY(!goes(4294966271u, 0));
        QVERIFY(!goes(4294966272u, 1024));
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
        const QByteArrayList bad = {"plant",
                                    "opc.tcp:plant",
                                    "opc.tcp://",
                                    "opc.tcp://:4840",
                                    "opc.tcp:///path",
                                    "opc.https://plant",
                                    "opc.tcp://pl ant",
                                    "opc.tcp://plant:",
                                    "opc.tcp://plant:0",
                                    "opc.tcp://plant:65536",
                                    "opc.tcp://plant:-1",
                                    "opc.tcp://plant:48:40",
                                    "opc.tcp://user@plant",
                                    "opc.tcp://::1",
                                    "opc.tcp://[::1",
                                    "opc.tcp://[127.0.0.1]",
                                    "opc.tcp://[1:2:3]",
                                    "opc.tcp://a\nb",
                                    "opc.tcp://pl\xff"
                                    "ant",
                                    QByteArray("opc.tcp://a\0.example", 19),
                                    "opc.tcp://plant/" + QByteArray(5000, 'x')};
        for (const QByteArray& url : bad)
            QVERIFY2(address(url) == "bad", url.left(50));
    }
};

QTEST_GUILESS_MAIN(TestWireFormat)
#include "tst_wireformat.moc"

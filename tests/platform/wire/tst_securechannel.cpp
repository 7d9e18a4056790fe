// Both ends of a secure channel, in memory and by a clock that is a number.

#include "platform/wire/securechannel_p.h"
#include "support/identity.h"
#include "support/values.h"
#include "support/warnings.h"

using namespace UaWire;

namespace {

using State = SecureChannel::State;
constexpr OpcUa_UInt32 lifetime = 60000;
constexpr char usualPolicy[] = "http://opcfoundation.org/UA/SecurityPolicy#Basic256Sha256";
constexpr auto signing = OpcUa_MessageSecurityMode_Sign;
constexpr auto encrypting = OpcUa_MessageSecurityMode_SignAndEncrypt;

/// One for each size, and another for the same size below 0; made when it is asked for.
const Identity& identity(int bits)
{
    static std::map<int, Identity> all;
    Identity& one = all[bits];
    if (!one.key)
        one = makeIdentity(std::abs(bits));
    return one;
}

/// A client and a server that are connected; the time is what the test says.
struct Ends
{
    explicit Ends(OpcUa_MessageSecurityMode mode = encrypting, const char* uri = usualPolicy,
                  int clientBits = 2048, int serverBits = 2048)
        : policy(*securityPolicy(uri)),
          security(policy, mode, identity(serverBits).certificate, identity(serverBits).key,
                   identity(clientBits).certificate),
          client({{},
                  &policy,
                  mode,
                  identity(clientBits).certificate,
                  identity(clientBits).key,
                  identity(serverBits).certificate,
                  {}}),
          reader({}, &security), writer(&security)
    {
        client.start(0);
        client.takeOutput();
        client.receive(
            encodeConnectionMessage(MessageType::Acknowledge, Acknowledge{0, 65536, 65536, 0, 0}),
            0);
        writer.chunkSize = 65536;
        writer.channelId = 17;
    }

    /// What the client has sent.
    std::vector<Message> taken()
    {
        reader.append(client.takeOutput());
        std::vector<Message> messages;
        while (std::optional<Message> message = reader.next())
            messages.push_back(std::move(*message));
        return messages;
    }
    /// The answer to a request for a token, which the server then has.
    QByteArray token(const Message& request, OpcUa_UInt32 id, OpcUa_UInt32 time = lifetime)
    {
        OpenSecureChannelRequest asked;
        decodeFields(QByteArrayView(request.body).sliced(4), asked);
        OpenSecureChannelResponse response;
        response.header.requestHandle = asked.header.requestHandle;
        response.securityToken = {17, id, 0, time};
        response.serverNonce = QByteArray(policy.nonceLength, 's');
        security.addToken(id, response.serverNonce, asked.clientNonce);
        return writer.chunks(MessageType::OpenSecureChannel, request.requestId,
                             encodeMessage(response));
    }
    void open(OpcUa_UInt32 id = 1, OpcUa_UInt32 time = lifetime)
    {
        client.receive(token(taken().at(0), id, time), 0);
        writer.tokenId = id;
    }
    /// An answer under a token, at a time.
    OpcUa_StatusCode answer(OpcUa_UInt32 tokenId, qint64 now, const QByteArray& body = "answer")
    {
        writer.tokenId = tokenId;
        client.tick(now);
        client.receive(writer.chunks(MessageType::Message, 2, body), now);
        const std::optional<Message> message = client.next();
        return message && message->body == body ? OpcUa_Good : client.status();
    }

    const SecurityPolicy& policy;
    ChannelSecurity security;
    SecureChannel client;
    MessageReader reader;
    MessageWriter writer;
};

/// Whose client has asked for its second token.
struct RenewingEnds : Ends
{
    explicit RenewingEnds(OpcUa_UInt32 first = 1)
    {
        open(first);
        client.tick(45000);
    }
};

} // namespace

class tst_SecureChannel : public QObject
{
    Q_OBJECT

    static void converse(const char* policy, int mode, int clientBits, int serverBits)
    {
        const Case here(QByteArray(policy) + " with " + QByteArray::number(clientBits) + " to " +
                        QByteArray::number(serverBits) + " bits in mode " +
                        QByteArray::number(mode));
        Ends ends(OpcUa_MessageSecurityMode(mode), policy, clientBits, serverBits);
        ends.open();
        for (OpcUa_UInt32 id : {1, 2}) {
            QCOMPARE(name(ends.client.status()), name(OpcUa_Good));
            QCOMPARE(ends.client.state(), State::Open);
            for (int size = 0; size < 320'000; size += size < 40 ? 1 : 39'967) {
                const QByteArray body(size, 'x');
                const OpcUa_UInt32 request = ends.client.send(body);
                const QByteArray sent = ends.client.takeOutput();
                QVERIFY(size < 20 || sent.contains(QByteArray(20, 'x')) == (mode != 3));
                ends.reader.append(sent);
                const std::optional<Message> message = ends.reader.next();
                QVERIFY(message && message->requestId == request && message->tokenId == id);
                QVERIFY(message->body == body);
                QCOMPARE(name(ends.answer(id, 0, body)), name(OpcUa_Good));
            }
            ends.client.tick(lifetime * 3 / 4);
            if (id == 1)
                ends.client.receive(ends.token(ends.taken().at(0), 2), lifetime * 3 / 4);
        }
    }

private Q_SLOTS:
    void init() { failOnWarnings(); }

    // Messages of all lengths of padding, of one chunk and of many, both ways; then once more.
    void policies()
    {
        for (const SecurityPolicy* policy : securityPolicies()) {
            const int small = std::max(policy->smallestKey, 1024);
            const int large = std::max(policy->largestKey, 1024);
            for (int mode : {1, 2, 3}) {
                if (policy->isSecure == (mode == 1))
                    continue;
                for (const auto& [a, b] : {std::pair(small, large), {large, small}, {small, small}})
                    converse(policy->uri, mode, a, b);
            }
        }
    }

    // Every byte of a message counts, and so do those of an answer that opens the channel.
    void changedBytes()
    {
        for (const auto& [mode, isOpening] :
             {std::pair(signing, false), {encrypting, false}, {encrypting, true}}) {
            for (qsizetype at = 0, size = 1; at < size; at += isOpening ? 7 : 1) {
                Ends ends(mode);
                if (!isOpening)
                    ends.open();
                QByteArray bytes = isOpening
                                       ? ends.token(ends.taken().at(0), 1)
                                       : ends.writer.chunks(MessageType::Message, 2, "answer");
                size = bytes.size();
                bytes[at] ^= 1;
                // One that is larger now waits for more bytes.
                ends.client.receive(bytes + QByteArray(300, 'x'), 0);
                QVERIFY2(ends.client.state() == State::Failed && !ends.client.next(),
                         QByteArray::number(at));
            }
        }
    }

    // Whoever has the client's certificate can encrypt for it, but not sign.
    void otherSender()
    {
        const Identity* const server = &identity(2048);
        const Identity* const other = &identity(-2048);
        for (const auto& [sender, key] : {std::pair(server, other), {other, server}}) {
            Ends ends;
            ChannelSecurity security(ends.policy, encrypting, sender->certificate, key->key,
                                     server->certificate);
            const std::vector<Message> asked = ends.taken();
            ends.writer = MessageWriter(&security);
            ends.writer.channelId = 17;
            ends.client.receive(ends.token(asked.at(0), 1), 0);
            QCOMPARE(name(ends.client.status()), name(OpcUa_BadSecurityChecksFailed));
        }
    }

    // Two bytes for a key of more than 2048 bits (OPC 10000-6, 6.7.2.5).
    void lengthOfPadding()
    {
        for (int bits : {2048, 4096}) {
            Ends ends(signing, usualPolicy, 2048, bits);
            const QByteArray opening = ends.client.takeOutput();
            const qsizetype head = 12 + 4 + qsizetype(qstrlen(ends.policy.uri)) + 4 +
                                   identity(2048).certificate.size() + 4 + 20;
            QByteArray plain =
                decrypt(ends.policy, identity(bits).key.get(), opening.mid(head)).chopped(256);
            const bool isLong = bits > 2048;
            const auto byte = [&plain](qsizetype at) {
                return OpcUa_Byte(plain[plain.size() - at]);
            };
            const int length = isLong ? byte(2) | byte(1) << 8 : byte(1);
            plain.chop(isLong ? 2 : 1);
            QVERIFY(plain.size() > length + 8);
            QCOMPARE(plain.last(length), QByteArray(length, char(length)));
        }
    }

    // Requests are under way while the token is renewed, and each end changes over by itself.
    void renewal()
    {
        Ends ends;
        ends.open();
        QCOMPARE(ends.client.nextTick(), 45000);
        ends.client.tick(44999);
        QVERIFY(ends.taken().empty());
        ends.client.send("under way");
        ends.client.tick(45000);
        ends.client.tick(45001); // asks once
        std::vector<Message> taken = ends.taken();
        QCOMPARE(taken.size(), 2u);
        QCOMPARE(taken[1].type, MessageType::OpenSecureChannel);
        QCOMPARE(name(ends.answer(1, 46000)), name(OpcUa_Good));
        ends.client.receive(ends.token(taken[1], 2), 50000);
        QCOMPARE(ends.client.renewals(), 1u);
        ends.client.send("with the new one");
        QCOMPARE(ends.taken().at(0).tokenId, 2u);
        QCOMPARE(name(ends.answer(1, 74999)), name(OpcUa_Good)); // a quarter longer
        QCOMPARE(ends.client.nextTick(), 75000);
        QCOMPARE(name(ends.answer(2, 74999)), name(OpcUa_Good));
        QCOMPARE(name(ends.answer(1, 74999)), name(OpcUa_Good)); // to an earlier request
        QCOMPARE(name(ends.answer(1, 75000)), name(OpcUa_BadSecureChannelTokenUnknown));
    }
    void tokensThatEnd()
    {
        for (OpcUa_UInt32 first : {0, 1}) { // that is no longer used, whatever its number
            RenewingEnds ends(first);
            ends.client.receive(ends.token(ends.taken().at(0), 2), 45000);
            QCOMPARE(name(ends.answer(first, 75000)), name(OpcUa_BadSecureChannelTokenUnknown));
        }
        RenewingEnds same;
        same.client.receive(same.token(same.taken().at(0), 1), 45000);
        QCOMPARE(name(same.client.status()), name(OpcUa_BadSecureChannelTokenUnknown));

        RenewingEnds none;
        QCOMPARE(none.client.nextTick(), 60000);
        QCOMPARE(name(none.answer(1, 59999)), name(OpcUa_Good));
        QCOMPARE(name(none.answer(1, 60000)), name(OpcUa_BadSecureChannelTokenUnknown));

        Ends brief(signing);
        brief.open(1, 0);
        QVERIFY(brief.client.nextTick() >= 100); // not renewed without a pause
    }
};

QTEST_GUILESS_MAIN(tst_SecureChannel)
#include "tst_securechannel.moc"

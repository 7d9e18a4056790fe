#pragma once

/// \file
/// Messages in chunks, as they travel over a connection (OPC 10000-6, 6.7.2 and 7.1.2), secured
/// where a ChannelSecurity is given. Both ends of a connection use it.

#include "platform/stack/securitypolicies_p.h"
#include "platform/wire/messages_p.h"
#include "platform/wire/securitypolicy_p.h"

#include <map>
#include <optional>

namespace UaWire {

/// The three letters of a message type as they stand in the first bytes.
constexpr OpcUa_UInt32 messageTag(const char (&letters)[4])
{
    return OpcUa_UInt32(letters[0]) | OpcUa_UInt32(letters[1]) << 8 |
           OpcUa_UInt32(letters[2]) << 16;
}

enum class MessageType : OpcUa_UInt32 {
    Hello = messageTag("HEL"),
    Acknowledge = messageTag("ACK"),
    Error = messageTag("ERR"),
    OpenSecureChannel = messageTag("OPN"),
    CloseSecureChannel = messageTag("CLO"),
    Message = messageTag("MSG")
};

/// What every chunk begins with: message type, chunk letter ('F' final, 'C' intermediate,
/// 'A' abort) and the size of the whole chunk in bytes.
struct ChunkHeader
{
    OpcUa_UInt32 tagAndLetter = 0;
    OpcUa_UInt32 size = 0;

    MessageType type() const { return MessageType(tagAndLetter & 0xffffffu); }
    char letter() const { return char(tagAndLetter >> 24); }
};

/// Follows the channel id in an OpenSecureChannel chunk.
struct AsymmetricSecurityHeader
{
    UaString securityPolicyUri;
    QByteArray senderCertificate;
    QByteArray receiverCertificateThumbprint;
};

struct SequenceHeader
{
    OpcUa_UInt32 sequenceNumber = 0;
    OpcUa_UInt32 requestId = 0;
};

/// The smallest buffer that a peer may have (OPC 10000-6, 7.1.2.3).
inline constexpr OpcUa_UInt32 minimumBufferSize = 8192;

struct ChunkLimits
{
    OpcUa_UInt32 chunkSize = 65536;       ///< bytes, headers included
    OpcUa_UInt32 messageSize = 16u << 20; ///< bytes of the joined bodies
    OpcUa_UInt32 chunkCount = 4096;
};

/// A whole message, or the abort of one.
struct Message
{
    MessageType type = MessageType::Message;
    OpcUa_UInt32 channelId = 0;
    OpcUa_UInt32 tokenId = 0; ///< 0 for OpenSecureChannel
    OpcUa_UInt32 requestId = 0;
    /// Why the sender aborted the message; Good for a message that is whole.
    OpcUa_StatusCode abortCode = OpcUa_Good;
    QByteArray body;
};

/// What secures the chunks of one channel: the certificates for its opening, and the keys of each
/// token for its messages. Shared by the reader and the writer of one end.
class ChannelSecurity
{
public:
    /// Without security: only the tokens are known.
    ChannelSecurity();
    /// `ownCertificate` may be a chain, of which the first is the own one. The keys must be of a
    /// size that the policy allows (isKeyAllowed()).
    ChannelSecurity(const SecurityPolicy& policy, OpcUa_MessageSecurityMode mode,
                    const QByteArray& ownCertificate, SharedKey ownKey,
                    const QByteArray& peerCertificate);

    const SecurityPolicy& policy() const { return *m_policy; }
    OpcUa_MessageSecurityMode mode() const { return m_mode; }

    /// Keys for the messages under a token. False when OpenSSL fails.
    bool addToken(OpcUa_UInt32 tokenId, QByteArrayView ownNonce, QByteArrayView peerNonce);
    /// Forgets all tokens but one.
    void keepToken(OpcUa_UInt32 tokenId);
    bool hasToken(OpcUa_UInt32 tokenId) const { return m_tokens.count(tokenId) > 0; }

    /// Of the chunks that open a channel, and a check of those that came.
    AsymmetricSecurityHeader openingHeader() const;
    OpcUa_StatusCode checkOpeningHeader(const AsymmetricSecurityHeader& header) const;

    /// The most bytes behind the security header, from the sequence header on, that fit into a
    /// chunk with `space` bytes there.
    qsizetype room(MessageType type, qsizetype space) const;
    /// Pads, signs and encrypts a chunk that stands from `begin` on in `bytes`, with its security
    /// header up to `plain`. Writes its size.
    OpcUa_StatusCode seal(MessageType type, OpcUa_UInt32 tokenId, QByteArray& bytes,
                          qsizetype begin, qsizetype plain);
    /// Decrypts and checks a chunk in place, whose security header ends at `plain`. `end` becomes
    /// where the padding begins.
    OpcUa_StatusCode open(MessageType type, OpcUa_UInt32 tokenId, char* chunk, qsizetype size,
                          qsizetype plain, qsizetype& end);

private:
    struct Token
    {
        std::unique_ptr<MessageKeys> out;
        std::unique_ptr<MessageKeys> in;
    };
    struct Shape;
    Shape shape(MessageType type, bool outgoing) const;

    const SecurityPolicy* m_policy;
    OpcUa_MessageSecurityMode m_mode;
    QByteArray m_ownCertificate;
    QByteArray m_ownThumbprint;
    QByteArray m_peerCertificate; // without its chain
    QByteArray m_peerThumbprint;
    SharedKey m_ownKey;
    SharedKey m_peerKey;
    std::map<OpcUa_UInt32, Token> m_tokens;
};

/// Puts messages together from the bytes that arrive.
class MessageReader
{
public:
    /// Without `security`, which must outlive the reader, any token will do.
    explicit MessageReader(const ChunkLimits& limits = {}, ChannelSecurity* security = nullptr)
        : m_limits(limits), m_security(security)
    {
    }

    /// What was agreed with the peer.
    void setChunkSize(OpcUa_UInt32 size) { m_limits.chunkSize = size; }
    void append(QByteArrayView bytes) { m_bytes.append(bytes); }
    /// The next whole message. None if more bytes are needed, or after an error: see status().
    std::optional<Message> next();
    /// Good, or what was wrong with the bytes. No message comes after an error.
    OpcUa_StatusCode status() const { return m_status; }

private:
    OpcUa_StatusCode takeChunk(ChunkHeader header, char* chunk, bool& whole);
    OpcUa_StatusCode addToMessage(QByteArrayView body);
    bool followsSequence(OpcUa_UInt32 number);

    ChunkLimits m_limits;
    ChannelSecurity* m_security;
    OpcUa_StatusCode m_status = OpcUa_Good;
    QByteArray m_bytes; // not yet taken
    Message m_message;  // so far
    OpcUa_UInt32 m_chunkCount = 0;
    std::optional<OpcUa_UInt32> m_sequenceNumber; // the last one
};

/// Splits messages into chunks, with the sequence numbers of one direction of a connection.
class MessageWriter
{
public:
    /// `security` must outlive the writer.
    explicit MessageWriter(ChannelSecurity* security = nullptr) : m_security(security) {}

    /// Of the peer's receive buffer, headers included; minimumBufferSize at least.
    OpcUa_UInt32 chunkSize = minimumBufferSize;
    OpcUa_UInt32 channelId = 0;
    OpcUa_UInt32 tokenId = 0;

    /// The bytes of one or more chunks. `type` is OpenSecureChannel, Message or CloseSecureChannel.
    /// Empty when OpenSSL fails, or a message to open the channel is too large for one chunk.
    QByteArray chunks(MessageType type, OpcUa_UInt32 requestId, QByteArrayView body);
    /// Bytes of a Message's body that one chunk takes.
    qsizetype bodyRoom() const;

private:
    ChannelSecurity* m_security;
    OpcUa_UInt32 m_sequenceNumber = 0;
};

/// The bytes of a Hello, Acknowledge or Error.
template <class T>
QByteArray encodeConnectionMessage(MessageType type, const T& value);

} // namespace UaWire

KESTREL_STACK_FIELDS(UaWire::ChunkHeader, v(s.tagAndLetter...); v(s.size...);)
KESTREL_STACK_FIELDS(UaWire::AsymmetricSecurityHeader, v(s.securityPolicyUri...);
                     v(s.senderCertificate...); v(s.receiverCertificateThumbprint...);)
KESTREL_STACK_FIELDS(UaWire::SequenceHeader, v(s.sequenceNumber...); v(s.requestId...);)

namespace UaWire {

inline constexpr OpcUa_UInt32 chunkHeaderSize = 8;

inline QByteArray encodeChunk(MessageType type, char letter, QByteArrayView rest)
{
    QByteArray out;
    BinaryEncoder{out}(ChunkHeader{OpcUa_UInt32(type) | OpcUa_UInt32(letter) << 24,
                                   chunkHeaderSize + OpcUa_UInt32(rest.size())});
    return out.append(rest);
}

template <class T>
QByteArray encodeConnectionMessage(MessageType type, const T& value)
{
    QByteArray fields;
    BinaryEncoder{fields}(value);
    return encodeChunk(type, 'F', fields);
}

} // namespace UaWire

// Padding, signatures and encryption of chunks (OPC 10000-6, 6.7.2).

#include "platform/wire/messagechunks_p.h"

namespace UaWire {

namespace {

// Keys of more bits need a second byte for the length of the padding.
constexpr int largestKeyWithShortPadding = 2048 / 8;

} // namespace

// What the security of one kind of chunk takes.
struct ChannelSecurity::Shape
{
    bool isAsymmetric = false;
    bool encrypts = false;
    qsizetype signature = 0;
    qsizetype plainBlock = 1;
    qsizetype cipherBlock = 1;
    qsizetype paddingLengthBytes = 0;
};

ChannelSecurity::ChannelSecurity()
    : m_policy(securityPolicy(securityPolicyNone)), m_mode(OpcUa_MessageSecurityMode_None)
{
}

ChannelSecurity::ChannelSecurity(const SecurityPolicy& policy, OpcUa_MessageSecurityMode mode,
                                 const QByteArray& ownCertificate, SharedKey ownKey,
                                 const QByteArray& peerCertificate)
    : m_policy(&policy), m_mode(mode)
{
    if (!policy.isSecure)
        return;
    m_ownCertificate = ownCertificate;
    m_ownThumbprint = thumbprintOf(leafCertificate(ownCertificate));
    m_ownKey = std::move(ownKey);
    m_peerCertificate = leafCertificate(peerCertificate);
    m_peerThumbprint = thumbprintOf(m_peerCertificate);
    m_peerKey = publicKeyOf(m_peerCertificate);
}

bool ChannelSecurity::addToken(OpcUa_UInt32 tokenId, QByteArrayView ownNonce,
                               QByteArrayView peerNonce)
{
    Token token;
    if (m_policy->isSecure) {
        token.out = MessageKeys::derive(*m_policy, peerNonce, ownNonce, true);
        token.in = MessageKeys::derive(*m_policy, ownNonce, peerNonce, false);
        if (!token.out || !token.in)
            return false;
    }
    m_tokens[tokenId] = std::move(token);
    return true;
}

void ChannelSecurity::keepToken(OpcUa_UInt32 tokenId)
{
    for (auto it = m_tokens.begin(); it != m_tokens.end();)
        it = it->first == tokenId ? std::next(it) : m_tokens.erase(it);
}

AsymmetricSecurityHeader ChannelSecurity::openingHeader() const
{
    return {UaString(m_policy->uri), m_ownCertificate, m_peerThumbprint};
}

OpcUa_StatusCode ChannelSecurity::checkOpeningHeader(const AsymmetricSecurityHeader& header) const
{
    if (header.securityPolicyUri != UaString(m_policy->uri))
        return OpcUa_BadSecurityPolicyRejected;
    if (!m_policy->isSecure)
        return OpcUa_Good;
    return header.receiverCertificateThumbprint == m_ownThumbprint &&
                   leafCertificate(header.senderCertificate) == m_peerCertificate
               ? OpcUa_Good
               : OpcUa_BadSecurityChecksFailed;
}

ChannelSecurity::Shape ChannelSecurity::shape(MessageType type, bool outgoing) const
{
    Shape shape;
    if (!m_policy->isSecure)
        return shape;
    shape.isAsymmetric = type == MessageType::OpenSecureChannel;
    shape.encrypts = shape.isAsymmetric || m_mode == OpcUa_MessageSecurityMode_SignAndEncrypt;
    shape.signature = m_policy->macLength;
    shape.plainBlock = shape.cipherBlock = shape.encrypts ? MessageKeys::blockLength : 1;
    shape.paddingLengthBytes = shape.encrypts ? 1 : 0;
    if (shape.isAsymmetric) {
        const int encryptionKey = keyLength((outgoing ? m_peerKey : m_ownKey).get());
        shape.signature = keyLength((outgoing ? m_ownKey : m_peerKey).get());
        shape.plainBlock = encryptionKey - m_policy->encryptionOverhead;
        shape.cipherBlock = encryptionKey;
        shape.paddingLengthBytes = encryptionKey > largestKeyWithShortPadding ? 2 : 1;
    }
    return shape;
}

qsizetype ChannelSecurity::room(MessageType type, qsizetype space) const
{
    const Shape s = shape(type, true);
    return space / s.cipherBlock * s.plainBlock - s.signature - s.paddingLengthBytes;
}

OpcUa_StatusCode ChannelSecurity::seal(MessageType type, OpcUa_UInt32 tokenId, QByteArray& bytes,
                                       qsizetype begin, qsizetype plain)
{
    const Shape s = shape(type, true);
    if (s.signature == 0)
        return OpcUa_Good;
    const auto token = m_tokens.find(tokenId);
    if (!s.isAsymmetric && token == m_tokens.end())
        return OpcUa_BadSecureChannelTokenUnknown;
    if (s.encrypts) {
        const qsizetype used = bytes.size() - plain + s.paddingLengthBytes + s.signature;
        const qsizetype padding = (s.plainBlock - used % s.plainBlock) % s.plainBlock;
        bytes.append(padding + 1, char(padding));
        if (s.paddingLengthBytes > 1)
            bytes.append(char(padding >> 8));
    }
    const qsizetype sealed =
        (bytes.size() - plain + s.signature) / s.plainBlock * s.cipherBlock + (plain - begin);
    qToLittleEndian(OpcUa_UInt32(sealed), bytes.data() + begin + sizeof(OpcUa_UInt32));
    if (!s.isAsymmetric) {
        MessageKeys& keys = *token->second.out;
        return keys.sign(bytes, begin) &&
                       (!s.encrypts || keys.encrypt(bytes.data() + plain, bytes.size() - plain))
                   ? OpcUa_Good
                   : OpcUa_BadInternalError;
    }
    bytes.append(sign(*m_policy, m_ownKey.get(), QByteArrayView(bytes).sliced(begin)));
    const QByteArray cipherText =
        encrypt(*m_policy, m_peerKey.get(), QByteArrayView(bytes).sliced(plain));
    bytes.replace(plain, bytes.size() - plain, cipherText);
    return bytes.size() - begin == sealed ? OpcUa_Good : OpcUa_BadInternalError;
}

// All failures look alike to the peer, who must not learn from them.
OpcUa_StatusCode ChannelSecurity::open(MessageType type, OpcUa_UInt32 tokenId, char* chunk,
                                       qsizetype size, qsizetype plain, qsizetype& end)
{
    const Shape s = shape(type, false);
    const auto token = m_tokens.find(tokenId);
    if (type != MessageType::OpenSecureChannel && token == m_tokens.end())
        return OpcUa_BadSecureChannelTokenUnknown;
    end = size;
    if (s.signature == 0)
        return OpcUa_Good;
    if (s.encrypts) {
        if ((size - plain) % s.cipherBlock != 0)
            return OpcUa_BadSecurityChecksFailed;
        if (s.isAsymmetric) {
            const QByteArray text =
                decrypt(*m_policy, m_ownKey.get(), QByteArrayView(chunk + plain, size - plain));
            std::copy(text.begin(), text.end(), chunk + plain);
            end = plain + text.size();
        } else if (!token->second.in->decrypt(chunk + plain, size - plain)) {
            return OpcUa_BadSecurityChecksFailed;
        }
    }
    end -= s.signature;
    if (end < plain + s.paddingLengthBytes)
        return OpcUa_BadSecurityChecksFailed;
    const QByteArrayView data(chunk, end);
    const QByteArrayView signature(chunk + end, s.signature);
    const bool ok = s.isAsymmetric ? verify(*m_policy, m_peerKey.get(), data, signature)
                                   : token->second.in->verify(data, signature);
    if (!ok)
        return OpcUa_BadSecurityChecksFailed;
    if (s.paddingLengthBytes > 0) {
        qsizetype padding = OpcUa_Byte(chunk[end - s.paddingLengthBytes]);
        if (s.paddingLengthBytes > 1)
            padding |= qsizetype(OpcUa_Byte(chunk[end - 1])) << 8;
        end -= padding + s.paddingLengthBytes;
        if (end < plain)
            return OpcUa_BadSecurityChecksFailed;
    }
    return OpcUa_Good;
}

} // namespace UaWire

// Chunks of a channel that signs and encrypts. The input is their plain text, which is protected
// with the right keys, so that what is wrong gets behind the signature. It is a row of chunks: a
// byte that says how, two for the length, and as many bytes from the sequence header on.

#include "platform/pki/openssl_p.h"
#include "platform/pki/uapkicertificate.h"
#include "platform/pki/uapkikeys.h"
#include "platform/wire/messagechunks_p.h"

#include <cstdint>
#include <cstdlib>

using namespace UaWire;

namespace {

constexpr OpcUa_UInt32 channelId = 17;
constexpr OpcUa_UInt32 tokens[] = {1, 2};

struct Keys
{
    Keys(const char* uri, OpcUa_MessageSecurityMode mode) : policy(*securityPolicy(uri))
    {
        const UaPkiRsaKeyPair pair(2048);
        UaPkiIdentity identity;
        identity.commonName = "fuzzer";
        UaPkiCertificateInfo info;
        info.applicationUri = "urn:fuzzer";
        const UaPkiCertificate certificate(info, identity, pair.publicKey(), identity,
                                           pair.privateKey());
        const QByteArray der = certificate.toDER().bytes();
        security = std::make_unique<ChannelSecurity>(
            policy, mode, der, UaPkiKeyAccess::shared(pair.privateKey()), der);
        for (OpcUa_UInt32 token : tokens) {
            const QByteArray client(policy.nonceLength, 'c');
            const QByteArray server(policy.nonceLength, char(token));
            if (!security->addToken(token, client, server))
                std::abort();
            senders.push_back(MessageKeys::derive(policy, client, server, true));
        }
    }
    const SecurityPolicy& policy;
    std::unique_ptr<ChannelSecurity> security;
    std::vector<std::unique_ptr<MessageKeys>> senders;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
#define POLICY(Name) "http://opcfoundation.org/UA/SecurityPolicy#" Name
    static Keys all[] = {
        {POLICY("Basic256Sha256"), OpcUa_MessageSecurityMode_SignAndEncrypt},
        {POLICY("Basic128Rsa15"), OpcUa_MessageSecurityMode_SignAndEncrypt},
        {POLICY("Aes128_Sha256_RsaOaep"), OpcUa_MessageSecurityMode_Sign},
    };
#undef POLICY
    if (size == 0)
        return 0;
    Keys& keys = all[*data % std::size(all)];
    const bool encrypts = keys.security->mode() == OpcUa_MessageSecurityMode_SignAndEncrypt;
    QByteArrayView input(data + 1, qsizetype(size - 1));
    ChunkLimits limits;
    limits.messageSize = 1 << 12;
    limits.chunkCount = 16;
    MessageReader reader(limits, keys.security.get());

    enum Flag { IsRaw = 1, IsIntermediate = 2, IsAbort = 4, IsSecondToken = 8, IsSpoilt = 16 };
    while (input.size() >= 3 && OpcUa_IsGood(reader.status())) {
        const int flags = OpcUa_Byte(input[0]);
        const qsizetype length =
            std::min<qsizetype>(qFromLittleEndian<quint16>(input.data() + 1), input.size() - 3);
        QByteArray plain = input.sliced(3, length).toByteArray();
        input = input.sliced(3 + length);
        const std::size_t token = flags & IsSecondToken ? 1 : 0;
        const qsizetype signature = keys.policy.macLength;
        if (encrypts) {
            // Whole blocks, of which the last byte is the length of the padding.
            const qsizetype rest = (plain.size() + signature) % MessageKeys::blockLength;
            if (rest > plain.size())
                continue;
            plain.chop(rest);
        }
        const char letter = flags & IsAbort ? 'A' : flags & IsIntermediate ? 'C' : 'F';
        QByteArray chunk;
        BinaryEncoder encoder(chunk);
        constexpr qsizetype head = chunkHeaderSize + sizeof channelId + sizeof tokens[0];
        encoder(ChunkHeader{OpcUa_UInt32(MessageType::Message) | OpcUa_UInt32(letter) << 24,
                            OpcUa_UInt32(head + plain.size() + signature)});
        encoder(channelId);
        encoder(tokens[token]);
        chunk += plain;
        MessageKeys& sender = *keys.senders[token];
        if (!sender.sign(chunk, 0) ||
            (encrypts && !sender.encrypt(chunk.data() + head, chunk.size() - head)))
            std::abort();
        if (flags & IsSpoilt)
            chunk[head] = char(chunk[head] ^ 1);
        reader.append(flags & IsRaw ? plain : chunk);
        while (const std::optional<Message> message = reader.next()) {
            if ((flags & (IsSpoilt | IsRaw)) == IsSpoilt ||
                message->body.size() > qsizetype(limits.messageSize))
                std::abort();
        }
    }
    return 0;
}

#pragma once

/// \file
/// The security policies of OPC 10000-7, 6.6, each a row of a table, and what their algorithms do
/// to bytes (OPC 10000-6, 6.7). Nobody else knows a policy by its name.

#include "platform/pki/openssl_p.h"
#include "platform/stack/securitypolicies_p.h"

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>

#include <optional>

namespace UaWire {

struct SecurityPolicy
{
    const char* uri;
    bool isSecure; ///< false for None, all else of which is empty
    bool isOld;    ///< offered for devices that have nothing else, never preferred

    // For the certificates' keys. The URIs name the algorithms in messages.
    const char* signatureUri;
    const EVP_MD* (*signatureDigest)();
    int signaturePadding; ///< of OpenSSL
    const char* encryptionUri;
    int encryptionPadding;
    const EVP_MD* (*encryptionDigest)(); ///< of OAEP, else null
    int encryptionOverhead;              ///< bytes that a block of cipher text has more than plain
    int smallestKey;                     ///< bits of RSA
    int largestKey;

    // For messages.
    const char* macDigest;
    int macLength;
    int macKeyLength;
    const EVP_CIPHER* (*cipher)();
    int cipherKeyLength;
    int nonceLength;
};

/// The row of a policy, null for one that is not known.
const SecurityPolicy* securityPolicy(QByteArrayView uri);
/// All of them, the most secure one first, None last.
const QList<const SecurityPolicy*>& securityPolicies();

/// Shares an RSA key.
using SharedKey = std::shared_ptr<EVP_PKEY>;

/// The public key of the first certificate in `der`, if it is RSA; else null.
SharedKey publicKeyOf(QByteArrayView der);
/// The first certificate in `der` alone, and its SHA-1 digest; empty for none.
QByteArray leafCertificate(QByteArrayView der);
QByteArray thumbprintOf(QByteArrayView leaf);
/// Bytes of the modulus.
int keyLength(const EVP_PKEY* key);
bool isKeyAllowed(const SecurityPolicy& policy, const EVP_PKEY* key);

// Each is empty, or false, when it fails.
QByteArray sign(const SecurityPolicy& policy, EVP_PKEY* key, QByteArrayView data);
bool verify(const SecurityPolicy& policy, EVP_PKEY* key, QByteArrayView data,
            QByteArrayView signature);
/// The plain text may be of any length, that of the cipher text is a multiple of the key's.
QByteArray encrypt(const SecurityPolicy& policy, EVP_PKEY* key, QByteArrayView plain);
QByteArray decrypt(const SecurityPolicy& policy, EVP_PKEY* key, QByteArrayView cipherText);
QByteArray randomBytes(int length);
bool equalInConstantTime(QByteArrayView a, QByteArrayView b);

/// The keys of one direction of a channel under one token (6.7.5). Holds on to the contexts of
/// OpenSSL, which cost more to make than a message to secure.
class MessageKeys
{
public:
    /// Null when OpenSSL fails. `secret` and `seed` are nonces.
    static std::unique_ptr<MessageKeys> derive(const SecurityPolicy& policy, QByteArrayView secret,
                                               QByteArrayView seed, bool encrypting);

    /// Appends the signature of all bytes from `begin` on.
    bool sign(QByteArray& bytes, qsizetype begin);
    bool verify(QByteArrayView data, QByteArrayView signature);
    /// In place; the length is a multiple of the cipher's block.
    bool encrypt(char* data, qsizetype length) { return crypt(data, length, 1); }
    bool decrypt(char* data, qsizetype length) { return crypt(data, length, 0); }

    static constexpr int blockLength = 16; // of AES

private:
    bool mac(QByteArrayView data, unsigned char* result);
    bool crypt(char* data, qsizetype length, int encrypting);

    OpenSslPtr<EVP_MAC_CTX, EVP_MAC_CTX_free> m_mac;
    OpenSslPtr<EVP_CIPHER_CTX, EVP_CIPHER_CTX_free> m_cipher;
    unsigned char m_initialVector[blockLength] = {};
    std::size_t m_macLength = 0;
};

} // namespace UaWire

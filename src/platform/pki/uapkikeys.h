#pragma once

#include "../../kestrelexport.h"
#include "../stack/opcuatypes.h"

#include <QtCore/QByteArray>

#include <memory>

class QString;
struct UaPkiKeyData;

/// The public half of a key pair, or the key in a certificate. Copies share the key.
class KESTREL_EXPORT UaPkiPublicKey
{
public:
    /// The null key.
    UaPkiPublicKey() = default;

    bool isNull() const { return !m_key; }
    /// Bits of the RSA modulus or of the curve's field; 0 for the null key.
    int keySize() const;

private:
    friend struct UaPkiKeyAccess;
    std::shared_ptr<const UaPkiKeyData> m_key;
};

/// The private half of a key pair. Copies share the key; the last one wipes it.
class KESTREL_EXPORT UaPkiPrivateKey
{
public:
    /// The null key.
    UaPkiPrivateKey() = default;

    /// Reads a key file in PEM (PKCS #8 or traditional) or DER. `status` is Good,
    /// BadIdentityTokenRejected for one that is encrypted and that `password` (local 8-bit) does
    /// not open, BadNotFound where there is no such file, else BadDecodingError; it may be null.
    static UaPkiPrivateKey fromFile(const QString& path, const QByteArray& password = {},
                                    OpcUa_StatusCode* status = nullptr);
    /// Whether the key's other half is in the certificate.
    bool matches(const UaPkiPublicKey& key) const;

    bool isNull() const { return !m_key; }

private:
    friend struct UaPkiKeyAccess;
    std::shared_ptr<const UaPkiKeyData> m_key;
};

/// An RSA key pair. Copies share it; the last one wipes it.
class KESTREL_EXPORT UaPkiRsaKeyPair
{
public:
    static constexpr int smallestKeySize = 1024;
    static constexpr int largestKeySize = 4096;

    /// The null pair.
    UaPkiRsaKeyPair() = default;
    /// Generates a key of `bits`, which takes from milliseconds to seconds; null for a size outside
    /// the bounds above, or when the random generator fails.
    explicit UaPkiRsaKeyPair(int bits);

    bool isNull() const { return m_privateKey.isNull(); }
    const UaPkiPublicKey& publicKey() const { return m_publicKey; }
    const UaPkiPrivateKey& privateKey() const { return m_privateKey; }

    /// Writes the private key as PKCS #8 PEM to a file that its owner alone may access, encrypted
    /// with AES-256 if there is a password that is not empty. Path and password are in the local
    /// 8-bit encoding. The file is there as a whole or, after a false, as it was before.
    bool toPEMFile(const char* path, const char* password = nullptr) const;

private:
    UaPkiPublicKey m_publicKey;
    UaPkiPrivateKey m_privateKey;
};

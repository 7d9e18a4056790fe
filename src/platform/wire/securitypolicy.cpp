#include "securitypolicy_p.h"

#include <QtCore/QList>

#include <openssl/core_names.h>
#include <openssl/crypto.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace UaWire {

namespace {

#define KESTREL_POLICY(Name) "http://opcfoundation.org/UA/SecurityPolicy#" Name
constexpr char rsaSha1[] = "http://www.w3.org/2000/09/xmldsig#rsa-sha1";
constexpr char rsaSha256[] = "http://www.w3.org/2001/04/xmldsig-more#rsa-sha256";
constexpr char rsaPss[] = "http://opcfoundation.org/UA/security/rsa-pss-sha2-256";
constexpr char rsa15[] = "http://www.w3.org/2001/04/xmlenc#rsa-1_5";
constexpr char rsaOaep[] = "http://www.w3.org/2001/04/xmlenc#rsa-oaep";
constexpr char rsaOaepSha256[] = "http://opcfoundation.org/UA/security/rsa-oaep-sha2-256";

// What the paddings take of a block (RFC 8017, 7.1.1 and 7.2.1).
constexpr int overheadOfPkcs1 = 11;
constexpr int overheadOfOaep = 42;
constexpr int overheadOfOaepSha256 = 66;

// The most secure one first.
constexpr SecurityPolicy policies[] = {
    {KESTREL_POLICY("Aes256_Sha256_RsaPss"), true, false, rsaPss, EVP_sha256, RSA_PKCS1_PSS_PADDING,
     rsaOaepSha256, RSA_PKCS1_OAEP_PADDING, EVP_sha256, overheadOfOaepSha256, 2048, 4096, "SHA256",
     32, 32, EVP_aes_256_cbc, 32, 32},
    {KESTREL_POLICY("Basic256Sha256"), true, false, rsaSha256, EVP_sha256, RSA_PKCS1_PADDING,
     rsaOaep, RSA_PKCS1_OAEP_PADDING, EVP_sha1, overheadOfOaep, 2048, 4096, "SHA256", 32, 32,
     EVP_aes_256_cbc, 32, 32},
    {KESTREL_POLICY("Aes128_Sha256_RsaOaep"), true, false, rsaSha256, EVP_sha256, RSA_PKCS1_PADDING,
     rsaOaep, RSA_PKCS1_OAEP_PADDING, EVP_sha1, overheadOfOaep, 2048, 4096, "SHA256", 32, 32,
     EVP_aes_128_cbc, 16, 32},
    {KESTREL_POLICY("Basic256"), true, true, rsaSha1, EVP_sha1, RSA_PKCS1_PADDING, rsaOaep,
     RSA_PKCS1_OAEP_PADDING, EVP_sha1, overheadOfOaep, 1024, 2048, "SHA1", 20, 24, EVP_aes_256_cbc,
     32, 32},
    {KESTREL_POLICY("Basic128Rsa15"), true, true, rsaSha1, EVP_sha1, RSA_PKCS1_PADDING, rsa15,
     RSA_PKCS1_PADDING, nullptr, overheadOfPkcs1, 1024, 2048, "SHA1", 20, 16, EVP_aes_128_cbc, 16,
     16},
    {securityPolicyNone, false, false, "", nullptr, 0, "", 0, nullptr, 0, 0, 0, "", 0, 0, nullptr,
     0, 0},
};
#undef KESTREL_POLICY

using KeyContext = OpenSslPtr<EVP_PKEY_CTX, EVP_PKEY_CTX_free>;
using DigestContext = OpenSslPtr<EVP_MD_CTX, EVP_MD_CTX_free>;

const unsigned char* bytesOf(QByteArrayView view)
{
    return reinterpret_cast<const unsigned char*>(view.data());
}

unsigned char* bytesOf(QByteArray& array)
{
    return reinterpret_cast<unsigned char*>(array.data());
}

bool setSignaturePadding(const SecurityPolicy& policy, EVP_PKEY_CTX* context)
{
    return EVP_PKEY_CTX_set_rsa_padding(context, policy.signaturePadding) > 0 &&
           (policy.signaturePadding != RSA_PKCS1_PSS_PADDING ||
            EVP_PKEY_CTX_set_rsa_pss_saltlen(context, RSA_PSS_SALTLEN_DIGEST) > 0);
}

bool setEncryptionPadding(const SecurityPolicy& policy, EVP_PKEY_CTX* context)
{
    return EVP_PKEY_CTX_set_rsa_padding(context, policy.encryptionPadding) > 0 &&
           (!policy.encryptionDigest ||
            (EVP_PKEY_CTX_set_rsa_oaep_md(context, policy.encryptionDigest()) > 0 &&
             EVP_PKEY_CTX_set_rsa_mgf1_md(context, policy.encryptionDigest()) > 0));
}

OpenSslPtr<EVP_MAC_CTX, EVP_MAC_CTX_free> hmac(const char* digest, const unsigned char* key,
                                               std::size_t keyLength)
{
    const OpenSslPtr<EVP_MAC, EVP_MAC_free> algorithm(EVP_MAC_fetch(nullptr, "HMAC", nullptr));
    OpenSslPtr<EVP_MAC_CTX, EVP_MAC_CTX_free> context(algorithm ? EVP_MAC_CTX_new(algorithm.get())
                                                                : nullptr);
    OSSL_PARAM parameters[] = {
        OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, const_cast<char*>(digest), 0),
        OSSL_PARAM_construct_end()};
    if (context && EVP_MAC_init(context.get(), key, keyLength, parameters) != 1)
        context.reset();
    return context;
}

// P_hash of RFC 5246, 5, with the policy's digest. Empty when OpenSSL fails.
QByteArray pHash(const SecurityPolicy& policy, QByteArrayView secret, QByteArrayView seed,
                 qsizetype length)
{
    const auto context =
        hmac(policy.macDigest, bytesOf(secret), static_cast<std::size_t>(secret.size()));
    const auto macOf = [&](QByteArrayView first, QByteArrayView second) {
        QByteArray result(policy.macLength, Qt::Uninitialized);
        std::size_t size = 0;
        const bool ok =
            EVP_MAC_init(context.get(), nullptr, 0, nullptr) == 1 &&
            EVP_MAC_update(context.get(), bytesOf(first), std::size_t(first.size())) == 1 &&
            EVP_MAC_update(context.get(), bytesOf(second), std::size_t(second.size())) == 1 &&
            EVP_MAC_final(context.get(), bytesOf(result), &size, std::size_t(result.size())) == 1;
        return ok ? result : QByteArray();
    };
    QByteArray out;
    QByteArray a = seed.toByteArray();
    while (context && out.size() < length) {
        a = macOf(a, {});
        const QByteArray block = macOf(a, seed);
        if (block.isEmpty())
            return {};
        out += block;
    }
    return out.left(length);
}

} // namespace

const SecurityPolicy* securityPolicy(QByteArrayView uri)
{
    const auto found = std::find_if(std::begin(policies), std::end(policies),
                                    [uri](const SecurityPolicy& p) { return uri == p.uri; });
    return found == std::end(policies) ? nullptr : found;
}

const QList<const SecurityPolicy*>& securityPolicies()
{
    static const QList<const SecurityPolicy*> all = [] {
        QList<const SecurityPolicy*> list;
        for (const SecurityPolicy& policy : policies)
            list.append(&policy);
        return list;
    }();
    return all;
}

static X509Ptr firstCertificate(QByteArrayView der)
{
    const ErrorQueueGuard guard;
    const unsigned char* next = bytesOf(der);
    return X509Ptr(d2i_X509(nullptr, &next, long(der.size())));
}

SharedKey publicKeyOf(QByteArrayView der)
{
    const ErrorQueueGuard guard;
    const X509Ptr certificate = firstCertificate(der);
    KeyPtr key(certificate ? X509_get_pubkey(certificate.get()) : nullptr);
    return key && EVP_PKEY_is_a(key.get(), "RSA") ? SharedKey(std::move(key)) : nullptr;
}

QByteArray leafCertificate(QByteArrayView der)
{
    const ErrorQueueGuard guard;
    const unsigned char* next = bytesOf(der);
    const X509Ptr certificate(d2i_X509(nullptr, &next, long(der.size())));
    return certificate ? der.first(next - bytesOf(der)).toByteArray() : QByteArray();
}

QByteArray thumbprintOf(QByteArrayView leaf)
{
    QByteArray digest(EVP_MD_get_size(EVP_sha1()), Qt::Uninitialized);
    return EVP_Digest(leaf.data(), std::size_t(leaf.size()), bytesOf(digest), nullptr, EVP_sha1(),
                      nullptr) == 1
               ? digest
               : QByteArray();
}

int keyLength(const EVP_PKEY* key)
{
    return EVP_PKEY_get_size(key);
}

bool isKeyAllowed(const SecurityPolicy& policy, const EVP_PKEY* key)
{
    const int bits = EVP_PKEY_get_bits(key);
    return bits >= policy.smallestKey && bits <= policy.largestKey;
}

QByteArray sign(const SecurityPolicy& policy, EVP_PKEY* key, QByteArrayView data)
{
    const ErrorQueueGuard guard;
    const DigestContext context(EVP_MD_CTX_new());
    EVP_PKEY_CTX* keyContext = nullptr; // of the context
    std::size_t length = std::size_t(keyLength(key));
    QByteArray signature(qsizetype(length), Qt::Uninitialized);
    const bool ok = context &&
                    EVP_DigestSignInit(context.get(), &keyContext, policy.signatureDigest(),
                                       nullptr, key) == 1 &&
                    setSignaturePadding(policy, keyContext) &&
                    EVP_DigestSign(context.get(), bytesOf(signature), &length, bytesOf(data),
                                   std::size_t(data.size())) == 1;
    return ok ? signature.left(qsizetype(length)) : QByteArray();
}

bool verify(const SecurityPolicy& policy, EVP_PKEY* key, QByteArrayView data,
            QByteArrayView signature)
{
    const ErrorQueueGuard guard;
    const DigestContext context(EVP_MD_CTX_new());
    EVP_PKEY_CTX* keyContext = nullptr;
    return context &&
           EVP_DigestVerifyInit(context.get(), &keyContext, policy.signatureDigest(), nullptr,
                                key) == 1 &&
           setSignaturePadding(policy, keyContext) &&
           EVP_DigestVerify(context.get(), bytesOf(signature), std::size_t(signature.size()),
                            bytesOf(data), std::size_t(data.size())) == 1;
}

QByteArray encrypt(const SecurityPolicy& policy, EVP_PKEY* key, QByteArrayView plain)
{
    const ErrorQueueGuard guard;
    const KeyContext context(EVP_PKEY_CTX_new(key, nullptr));
    if (!context || EVP_PKEY_encrypt_init(context.get()) != 1 ||
        !setEncryptionPadding(policy, context.get()))
        return {};
    const qsizetype block = keyLength(key) - policy.encryptionOverhead;
    QByteArray out;
    QByteArray cipherText(keyLength(key), Qt::Uninitialized);
    while (!plain.isEmpty()) {
        const QByteArrayView part = plain.first(std::min(block, plain.size()));
        plain = plain.sliced(part.size());
        std::size_t length = std::size_t(cipherText.size());
        if (EVP_PKEY_encrypt(context.get(), bytesOf(cipherText), &length, bytesOf(part),
                             std::size_t(part.size())) != 1)
            return {};
        out.append(cipherText.constData(), qsizetype(length));
    }
    return out;
}

QByteArray decrypt(const SecurityPolicy& policy, EVP_PKEY* key, QByteArrayView cipherText)
{
    const ErrorQueueGuard guard;
    const KeyContext context(EVP_PKEY_CTX_new(key, nullptr));
    const qsizetype block = keyLength(key);
    if (!context || cipherText.size() % block != 0 || EVP_PKEY_decrypt_init(context.get()) != 1 ||
        !setEncryptionPadding(policy, context.get()))
        return {};
    QByteArray out;
    QByteArray plain(block, Qt::Uninitialized);
    for (; !cipherText.isEmpty(); cipherText = cipherText.sliced(block)) {
        std::size_t length = std::size_t(plain.size());
        if (EVP_PKEY_decrypt(context.get(), bytesOf(plain), &length, bytesOf(cipherText),
                             std::size_t(block)) != 1)
            return {};
        out.append(plain.constData(), qsizetype(length));
    }
    OPENSSL_cleanse(plain.data(), std::size_t(plain.size()));
    return out;
}

QByteArray randomBytes(int length)
{
    QByteArray bytes(length, Qt::Uninitialized);
    return RAND_bytes(bytesOf(bytes), length) == 1 ? bytes : QByteArray();
}

bool equalInConstantTime(QByteArrayView a, QByteArrayView b)
{
    return a.size() == b.size() && CRYPTO_memcmp(a.data(), b.data(), std::size_t(a.size())) == 0;
}

std::unique_ptr<MessageKeys> MessageKeys::derive(const SecurityPolicy& policy,
                                                 QByteArrayView secret, QByteArrayView seed,
                                                 bool encrypting)
{
    const ErrorQueueGuard guard;
    QByteArray material =
        pHash(policy, secret, seed, policy.macKeyLength + policy.cipherKeyLength + blockLength);
    if (material.isEmpty())
        return nullptr;
    const unsigned char* macKey = bytesOf(QByteArrayView(material));
    const unsigned char* cipherKey = macKey + policy.macKeyLength;
    auto keys = std::make_unique<MessageKeys>();
    std::memcpy(keys->m_initialVector, cipherKey + policy.cipherKeyLength, blockLength);
    keys->m_macLength = std::size_t(policy.macLength);
    keys->m_mac = hmac(policy.macDigest, macKey, std::size_t(policy.macKeyLength));
    keys->m_cipher.reset(EVP_CIPHER_CTX_new());
    const bool ok = keys->m_mac && keys->m_cipher &&
                    EVP_CipherInit_ex(keys->m_cipher.get(), policy.cipher(), nullptr, cipherKey,
                                      keys->m_initialVector, encrypting) == 1 &&
                    EVP_CIPHER_CTX_set_padding(keys->m_cipher.get(), 0) == 1;
    OPENSSL_cleanse(material.data(), std::size_t(material.size()));
    return ok ? std::move(keys) : nullptr;
}

bool MessageKeys::mac(QByteArrayView data, unsigned char* result)
{
    std::size_t length = 0;
    // Without a key, the context begins again with the one that it has.
    return EVP_MAC_init(m_mac.get(), nullptr, 0, nullptr) == 1 &&
           EVP_MAC_update(m_mac.get(), bytesOf(data), std::size_t(data.size())) == 1 &&
           EVP_MAC_final(m_mac.get(), result, &length, m_macLength) == 1;
}

bool MessageKeys::sign(QByteArray& bytes, qsizetype begin)
{
    unsigned char result[EVP_MAX_MD_SIZE];
    if (!mac(QByteArrayView(bytes).sliced(begin), result))
        return false;
    bytes.append(reinterpret_cast<const char*>(result), qsizetype(m_macLength));
    return true;
}

bool MessageKeys::verify(QByteArrayView data, QByteArrayView signature)
{
    unsigned char result[EVP_MAX_MD_SIZE];
    return mac(data, result) &&
           equalInConstantTime(
               QByteArrayView(reinterpret_cast<const char*>(result), qsizetype(m_macLength)),
               signature);
}

bool MessageKeys::crypt(char* data, qsizetype length, int encrypting)
{
    auto* bytes = reinterpret_cast<unsigned char*>(data);
    int written = 0;
    return EVP_CipherInit_ex(m_cipher.get(), nullptr, nullptr, nullptr, m_initialVector,
                             encrypting) == 1 &&
           EVP_CipherUpdate(m_cipher.get(), bytes, &written, bytes, int(length)) == 1 &&
           written == length;
}

} // namespace UaWire

#include "uapkikeys.h"

#include "platform/pki/filewriter_p.h"
#include "platform/pki/openssl_p.h"
#include "platform/pki/pairfiles_p.h"
#include "platform/pki/uapkicertificate.h"
#include "platform/stack/opcuastatuscodes.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <openssl/pem.h>
#include <openssl/pkcs12.h>

#include <algorithm>
#include <cstring>

namespace {

// What a guess of the password costs: about a tenth of a second.
constexpr int passwordIterations = 200'000;

/// A copy of the public half, which does not keep the private one alive.
KeyPtr publicHalf(const EVP_PKEY* key)
{
    unsigned char* der = nullptr;
    const int size = i2d_PUBKEY(key, &der);
    if (size <= 0)
        return nullptr;
    const unsigned char* next = der;
    KeyPtr half(d2i_PUBKEY(nullptr, &next, size));
    OPENSSL_free(der);
    return half;
}

bool writePem(BIO* bio, const EVP_PKEY* key, const char* password)
{
    const OpenSslPtr<PKCS8_PRIV_KEY_INFO, PKCS8_PRIV_KEY_INFO_free> info(EVP_PKEY2PKCS8(key));
    if (!info)
        return false;
    if (!password || !*password)
        return PEM_write_bio_PKCS8_PRIV_KEY_INFO(bio, info.get()) == 1;
    X509_ALGOR* algorithm = PKCS5_pbe2_set_iv(EVP_aes_256_cbc(), passwordIterations, nullptr, 0,
                                              nullptr, NID_hmacWithSHA256);
    if (!algorithm)
        return false;
    const OpenSslPtr<X509_SIG, X509_SIG_free> encrypted(
        PKCS8_set0_pbe(password, int(std::strlen(password)), info.get(), algorithm));
    if (!encrypted) {
        X509_ALGOR_free(algorithm);
        return false;
    }
    return PEM_write_bio_PKCS8(bio, encrypted.get()) == 1;
}

struct PasswordRequest
{
    const QByteArray& password;
    mutable bool isAsked = false;
};

/// What a key's file holds, in memory that is wiped.
class Pem
{
public:
    Pem(const UaPkiPrivateKey& key, const char* password) : m_bio(BIO_new(BIO_s_mem()))
    {
        const ErrorQueueGuard guard;
        if (m_bio && !key.isNull() && writePem(m_bio.get(), UaPkiKeyAccess::get(key), password))
            m_size = BIO_get_mem_data(m_bio.get(), &m_data);
    }
    bool isNull() const { return !m_data; }
    const char* data() const { return m_data; }
    long size() const { return m_size; }

private:
    BioPtr m_bio;
    char* m_data = nullptr;
    long m_size = 0;
};

} // namespace

int UaPkiPublicKey::keySize() const
{
    return m_key ? EVP_PKEY_get_bits(UaPkiKeyAccess::get(*this)) : 0;
}

// Gives the password, or notes that one was asked for.
static int givePassword(char* buffer, int size, int, void* data)
{
    const auto& request = *static_cast<PasswordRequest*>(data);
    request.isAsked = true;
    const qsizetype length = std::min<qsizetype>(size, request.password.size());
    std::memcpy(buffer, request.password.constData(), std::size_t(length));
    return int(length);
}

UaPkiPrivateKey UaPkiPrivateKey::fromFile(const QString& path, const QByteArray& password,
                                          OpcUa_StatusCode* status)
{
    const ErrorQueueGuard guard;
    const auto finish = [status](OpcUa_StatusCode code) {
        if (status)
            *status = code;
        return UaPkiPrivateKey();
    };
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return finish(OpcUa_BadNotFound);
    constexpr qint64 maxFileSize = 1 << 20;
    QByteArray bytes = file.read(maxFileSize);
    const BioPtr bio(BIO_new_mem_buf(bytes.constData(), int(bytes.size())));
    PasswordRequest request{password};
    KeyPtr key(bio ? PEM_read_bio_PrivateKey(bio.get(), nullptr, givePassword, &request) : nullptr);
    if (!key && bio && !request.isAsked) {
        BIO_reset(bio.get());
        key.reset(d2i_PrivateKey_bio(bio.get(), nullptr));
    }
    OPENSSL_cleanse(bytes.data(), std::size_t(bytes.size()));
    if (!key)
        return finish(request.isAsked ? OpcUa_BadIdentityTokenRejected : OpcUa_BadDecodingError);
    finish(OpcUa_Good);
    return UaPkiKeyAccess::make<UaPkiPrivateKey>(std::move(key));
}

bool UaPkiPrivateKey::matches(const UaPkiPublicKey& key) const
{
    const ErrorQueueGuard guard;
    return m_key && !key.isNull() && EVP_PKEY_eq(m_key->key.get(), UaPkiKeyAccess::get(key)) == 1;
}

UaPkiRsaKeyPair::UaPkiRsaKeyPair(int bits)
{
    if (bits < smallestKeySize || bits > largestKeySize)
        return;
    const ErrorQueueGuard guard;
    const OpenSslPtr<EVP_PKEY_CTX, EVP_PKEY_CTX_free> context(
        EVP_PKEY_CTX_new_from_name(nullptr, "RSA", nullptr));
    EVP_PKEY* made = nullptr;
    if (!context || EVP_PKEY_keygen_init(context.get()) != 1 ||
        EVP_PKEY_CTX_set_rsa_keygen_bits(context.get(), bits) != 1 ||
        EVP_PKEY_generate(context.get(), &made) != 1)
        return;
    KeyPtr key(made);
    KeyPtr half = publicHalf(key.get());
    if (!half)
        return;
    m_publicKey = UaPkiKeyAccess::make<UaPkiPublicKey>(std::move(half));
    m_privateKey = UaPkiKeyAccess::make<UaPkiPrivateKey>(std::move(key));
}

bool UaPkiRsaKeyPair::toPEMFile(const char* path, const char* password) const
{
    const Pem pem(m_privateKey, password);
    return !pem.isNull() && replaceFile(QFile::decodeName(path), pem.data(), pem.size(),
                                        FileReplacement::Access::OwnerOnly);
}

std::optional<FileFailure> replacePair(const UaPkiCertificate& certificate,
                                       const QString& certificateFile,
                                       const UaPkiRsaKeyPair& keyPair, const QString& keyFile,
                                       const char* password)
{
    using Access = FileReplacement::Access;
    const UaByteString der = certificate.toDER();
    const Pem pem(keyPair.privateKey(), password);
    if (der.isNull() || pem.isNull())
        return FileFailure{der.isNull() ? certificateFile : keyFile, {}};
    FileReplacement files;
    if (files.write(certificateFile, der.bytes().constData(), der.length(), Access::Usual) &&
        files.write(keyFile, pem.data(), pem.size(), Access::OwnerOnly) && files.commit())
        return {};
    return FileFailure{files.failedPath(), files.reason()};
}

#include "selfsignedcertificate.h"

#include <openssl/evp.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>

#include <memory>

namespace {

template <auto Free>
struct Deleter
{
    template <class T>
    void operator()(T* object) const
    {
        Free(object);
    }
};
using Key = std::unique_ptr<EVP_PKEY, Deleter<EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Deleter<X509_free>>;
using Extension = std::unique_ptr<X509_EXTENSION, Deleter<X509_EXTENSION_free>>;

constexpr int serialNumberSize = 16; // bytes
constexpr long validity = 365 * 24 * 60 * 60L;

bool setSerialNumber(X509* certificate)
{
    unsigned char random[serialNumberSize];
    if (RAND_bytes(random, sizeof random) != 1)
        return false;
    random[0] = (random[0] & 0x7f) | 0x40; // positive and of full length
    std::unique_ptr<BIGNUM, Deleter<BN_free>> number(BN_bin2bn(random, sizeof random, nullptr));
    return number && BN_to_ASN1_INTEGER(number.get(), X509_get_serialNumber(certificate));
}

bool setNames(X509* certificate, const QByteArray& commonName)
{
    const auto add = [name = X509_get_subject_name(certificate)](const char* field,
                                                                 const QByteArray& text) {
        return X509_NAME_add_entry_by_txt(name, field, MBSTRING_UTF8,
                                          reinterpret_cast<const unsigned char*>(text.constData()),
                                          int(text.size()), -1, 0) == 1;
    };
    return add("O", "Kestrel demo plant") && add("CN", commonName) &&
           X509_set_issuer_name(certificate, X509_get_subject_name(certificate));
}

bool addExtension(X509* certificate, int nid, const QByteArray& value)
{
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
    const Extension extension(X509V3_EXT_conf_nid(nullptr, &context, nid, value.constData()));
    return extension && X509_add_ext(certificate, extension.get(), -1);
}

} // namespace

QByteArray makeSelfSignedCertificate(const QByteArray& applicationName,
                                     const QByteArray& applicationUri)
{
    const Key key(EVP_RSA_gen(2048));
    const Certificate certificate(X509_new());
    X509* x509 = certificate.get();
    const bool made =
        key && x509 && X509_set_version(x509, X509_VERSION_3) && setSerialNumber(x509) &&
        X509_gmtime_adj(X509_getm_notBefore(x509), 0) &&
        X509_gmtime_adj(X509_getm_notAfter(x509), validity) && setNames(x509, applicationName) &&
        X509_set_pubkey(x509, key.get()) &&
        addExtension(x509, NID_subject_key_identifier, "hash") &&
        addExtension(x509, NID_authority_key_identifier, "keyid:always") &&
        addExtension(x509, NID_basic_constraints, "critical,CA:FALSE") &&
        addExtension(x509, NID_key_usage,
                     "critical,digitalSignature,nonRepudiation,keyEncipherment,dataEncipherment,"
                     "keyCertSign") &&
        addExtension(x509, NID_ext_key_usage, "serverAuth,clientAuth") &&
        addExtension(x509, NID_subject_alt_name,
                     "URI:" + applicationUri + ",DNS:localhost,IP:127.0.0.1,IP:::1") &&
        X509_sign(x509, key.get(), EVP_sha256()) > 0;
    if (!made)
        return {};
    QByteArray der(i2d_X509(x509, nullptr), Qt::Uninitialized);
    auto* out = reinterpret_cast<unsigned char*>(der.data());
    i2d_X509(x509, &out);
    return der;
}

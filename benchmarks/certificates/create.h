#pragma once

#include "figure.h"

#include <Kestrel/UaPkiCertificate>
#include <Kestrel/UaPkiRsaKeyPair>

#include <QtCore/QtGlobal>

#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>

#include <random>

/// Random numbers that are the same ones after each restart(), for everything that OpenSSL does in
/// this thread: how long it takes to find the primes of a key is a matter of luck, which both sides
/// of a comparison are to share.
class RepeatedRandom
{
public:
    RepeatedRandom() : m_context(OSSL_LIB_CTX_new())
    {
        if (!m_context || !RAND_set_DRBG_type(m_context, "TEST-RAND", nullptr, nullptr, nullptr))
            qFatal("OpenSSL has no test generator");
        m_before = OSSL_LIB_CTX_set0_default(m_context);
    }
    ~RepeatedRandom()
    {
        OSSL_LIB_CTX_set0_default(m_before);
        OSSL_LIB_CTX_free(m_context);
    }
    Q_DISABLE_COPY_MOVE(RepeatedRandom)

    void restart(unsigned seed)
    {
        std::mt19937 engine(seed);
        for (auto& word : m_entropy)
            word = engine();
        for (EVP_RAND_CTX* generator :
             {RAND_get0_public(m_context), RAND_get0_private(m_context)}) {
            unsigned int strength = 256;
            const OSSL_PARAM parameters[] = {
                OSSL_PARAM_construct_uint(OSSL_RAND_PARAM_STRENGTH, &strength),
                OSSL_PARAM_construct_octet_string(OSSL_RAND_PARAM_TEST_ENTROPY, m_entropy.data(),
                                                  m_entropy.size() * sizeof(m_entropy[0])),
                OSSL_PARAM_construct_end()};
            EVP_RAND_uninstantiate(generator);
            if (!EVP_RAND_instantiate(generator, strength, 0, nullptr, 0, parameters))
                qFatal("OpenSSL's test generator does not start");
        }
    }

private:
    OSSL_LIB_CTX* m_context;
    OSSL_LIB_CTX* m_before = nullptr;
    std::vector<std::uint32_t> m_entropy = std::vector<std::uint32_t>(1 << 18); // more than enough
};

/// How much longer it takes to create a key of 2048 bits and a certificate for it than to create
/// the key and a signature alone: the median over keys, each made by both from the same numbers.
inline double createRatio()
{
    constexpr int keys = 21;
    constexpr int bits = 2048;
    constexpr size_t certificateSize = 1000;
    RepeatedRandom random;
    std::vector<double> ratios;
    for (unsigned seed = 0; seed <= keys; ++seed) {
        random.restart(seed);
        std::vector<unsigned char> theirModulus(bits / 8);
        const double bare = cpuMilliseconds([&] {
            EVP_PKEY* key = EVP_RSA_gen(bits);
            EVP_MD_CTX* digest = EVP_MD_CTX_new();
            const std::vector<unsigned char> text(certificateSize);
            std::vector<unsigned char> signature(bits / 8);
            size_t size = signature.size();
            if (!key || EVP_DigestSignInit(digest, nullptr, EVP_sha256(), nullptr, key) != 1 ||
                EVP_DigestSign(digest, signature.data(), &size, text.data(), text.size()) != 1)
                qFatal("OpenSSL does not sign");
            EVP_MD_CTX_free(digest);
            BIGNUM* modulus = nullptr;
            EVP_PKEY_get_bn_param(key, OSSL_PKEY_PARAM_RSA_N, &modulus);
            BN_bn2binpad(modulus, theirModulus.data(), int(theirModulus.size()));
            BN_free(modulus);
            EVP_PKEY_free(key);
        });

        random.restart(seed);
        UaPkiCertificate certificate;
        const double ours = cpuMilliseconds([&] {
            const UaPkiIdentity identity = {"Client", "Organization", "Unit",
                                            "Town",   "Shire",        "GB"};
            const UaPkiCertificateInfo info = {"urn:host:bench:client", {}, "host.example"};
            const UaPkiRsaKeyPair pair(bits);
            certificate =
                UaPkiCertificate(info, identity, pair.publicKey(), identity, pair.privateKey());
        });
        // The comparison is one only if both have found the same key.
        const QByteArray modulus(reinterpret_cast<const char*>(theirModulus.data()), bits / 8);
        if (!certificate.toDER().bytes().contains(modulus))
            qFatal("the keys differ");
        if (seed > 0) // the first one also loads what OpenSSL needs
            ratios.push_back(ours / bare);
    }
    return median(std::move(ratios));
}

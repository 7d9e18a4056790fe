#pragma once

#include "platform/pki/uapkikeys.h"

#include <QtCore/QtGlobal>

#include <memory>

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

/// Frees an OpenSSL object by its own function.
template <auto free>
struct OpenSslFree
{
    template <class T>
    void operator()(T* object) const
    {
        free(object);
    }
};
template <class T, auto free>
using OpenSslPtr = std::unique_ptr<T, OpenSslFree<free>>;

using BioPtr = OpenSslPtr<BIO, BIO_free_all>;
using GeneralNamesPtr = OpenSslPtr<GENERAL_NAMES, GENERAL_NAMES_free>;
using KeyPtr = OpenSslPtr<EVP_PKEY, EVP_PKEY_free>;
using X509Ptr = OpenSslPtr<X509, X509_free>;

/// Leaves the thread's error queue as it was: it belongs to the host.
class ErrorQueueGuard
{
public:
    ErrorQueueGuard() { ERR_set_mark(); }
    ~ErrorQueueGuard() { ERR_pop_to_mark(); }
    Q_DISABLE_COPY_MOVE(ErrorQueueGuard)
};

struct UaPkiKeyData
{
    explicit UaPkiKeyData(KeyPtr k) : key(std::move(k)) {}
    KeyPtr key;
};

/// What is behind UaPkiPublicKey and UaPkiPrivateKey.
struct UaPkiKeyAccess
{
    /// Null for the null key.
    template <class Key>
    static EVP_PKEY* get(const Key& key)
    {
        return key.m_key ? key.m_key->key.get() : nullptr;
    }
    /// Shares the life of the key; null for the null key.
    static std::shared_ptr<EVP_PKEY> shared(const UaPkiPrivateKey& key)
    {
        return key.m_key ? std::shared_ptr<EVP_PKEY>(key.m_key, get(key)) : nullptr;
    }
    template <class Key>
    static Key make(KeyPtr key)
    {
        Key result;
        if (key)
            result.m_key = std::make_shared<UaPkiKeyData>(std::move(key));
        return result;
    }
};

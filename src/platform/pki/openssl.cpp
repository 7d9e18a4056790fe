// What the library calls of OpenSSL, each function by its own name: libcrypto is loaded with the
// first call, not with the library. Loading it is a third of what the library adds to the start of
// a program, most of which have no certificate to show yet.

#include "openssl_p.h"

#include <QtCore/QtGlobal>

#include <atomic>
#include <cstddef>
#include <tuple>

#include <dlfcn.h>
#include <openssl/crypto.h>
#include <openssl/pem.h>
#include <openssl/pkcs12.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>

namespace {

template <class Function>
struct Signature;
template <class Return, class... Arguments>
struct Signature<Return(Arguments...)>
{
    using Result = Return;
    template <std::size_t index>
    using Argument = std::tuple_element_t<index, std::tuple<Arguments...>>;
};

std::atomic<bool> isLoaded = false;

// What the linker would do, and as it does: there is no way on without the function.
void* find(const char* name)
{
    static void* const library =
        dlopen("libcrypto.so." QT_STRINGIFY(OPENSSL_SHLIB_VERSION), RTLD_NOW | RTLD_LOCAL);
    isLoaded = true;
    void* const function = library ? dlsym(library, name) : nullptr;
    if (!function)
        qFatal("kestrel: %s", dlerror());
    return function;
}

} // namespace

#define FORWARD(name, parameters, arguments)                                                       \
    extern "C" Signature<decltype(name)>::Result name parameters                                   \
    {                                                                                              \
        static const auto function = reinterpret_cast<decltype(&name)>(find(#name));               \
        return function arguments;                                                                 \
    }
#define ARGUMENT(name, index) Signature<decltype(name)>::Argument<index> a##index
#define ARGUMENTS1(name) ARGUMENT(name, 0)
#define ARGUMENTS2(name) ARGUMENTS1(name), ARGUMENT(name, 1)
#define ARGUMENTS3(name) ARGUMENTS2(name), ARGUMENT(name, 2)
#define ARGUMENTS4(name) ARGUMENTS3(name), ARGUMENT(name, 3)
#define ARGUMENTS5(name) ARGUMENTS4(name), ARGUMENT(name, 4)
#define ARGUMENTS6(name) ARGUMENTS5(name), ARGUMENT(name, 5)
#define ARGUMENTS7(name) ARGUMENTS6(name), ARGUMENT(name, 6)
#define FORWARD0(name) FORWARD(name, (), ())
#define FORWARD1(name) FORWARD(name, (ARGUMENTS1(name)), (a0))
#define FORWARD2(name) FORWARD(name, (ARGUMENTS2(name)), (a0, a1))
#define FORWARD3(name) FORWARD(name, (ARGUMENTS3(name)), (a0, a1, a2))
#define FORWARD4(name) FORWARD(name, (ARGUMENTS4(name)), (a0, a1, a2, a3))
#define FORWARD5(name) FORWARD(name, (ARGUMENTS5(name)), (a0, a1, a2, a3, a4))
#define FORWARD6(name) FORWARD(name, (ARGUMENTS6(name)), (a0, a1, a2, a3, a4, a5))
#define FORWARD7(name) FORWARD(name, (ARGUMENTS7(name)), (a0, a1, a2, a3, a4, a5, a6))

// By the number of their arguments. What is missing here, the linker misses.
// clang-format off
FORWARD1(ASN1_OCTET_STRING_free)
FORWARD0(ASN1_OCTET_STRING_new)
FORWARD3(ASN1_OCTET_STRING_set)
FORWARD1(ASN1_STRING_free)
FORWARD1(ASN1_STRING_get0_data)
FORWARD1(ASN1_STRING_length)
FORWARD3(ASN1_STRING_set)
FORWARD2(ASN1_STRING_to_UTF8)
FORWARD1(ASN1_STRING_type_new)
FORWARD2(ASN1_TIME_to_tm)
FORWARD1(AUTHORITY_KEYID_free)
FORWARD0(AUTHORITY_KEYID_new)
FORWARD4(BIO_ctrl)
FORWARD1(BIO_free_all)
FORWARD1(BIO_new)
FORWARD2(BIO_new_mem_buf)
FORWARD0(BIO_s_mem)
FORWARD1(BN_free)
FORWARD0(BN_new)
FORWARD4(BN_rand)
FORWARD2(BN_to_ASN1_INTEGER)
FORWARD3(CRYPTO_free)
FORWARD3(CRYPTO_memcmp)
FORWARD0(ERR_pop_to_mark)
FORWARD0(ERR_set_mark)
FORWARD1(EVP_CIPHER_CTX_free)
FORWARD0(EVP_CIPHER_CTX_new)
FORWARD2(EVP_CIPHER_CTX_set_padding)
FORWARD6(EVP_CipherInit_ex)
FORWARD5(EVP_CipherUpdate)
FORWARD6(EVP_Digest)
FORWARD5(EVP_DigestSign)
FORWARD5(EVP_DigestSignInit)
FORWARD5(EVP_DigestVerify)
FORWARD5(EVP_DigestVerifyInit)
FORWARD1(EVP_MAC_CTX_free)
FORWARD1(EVP_MAC_CTX_new)
FORWARD3(EVP_MAC_fetch)
FORWARD4(EVP_MAC_final)
FORWARD1(EVP_MAC_free)
FORWARD4(EVP_MAC_init)
FORWARD3(EVP_MAC_update)
FORWARD1(EVP_MD_CTX_free)
FORWARD0(EVP_MD_CTX_new)
FORWARD1(EVP_MD_get_size)
FORWARD1(EVP_PKEY2PKCS8)
FORWARD1(EVP_PKEY_CTX_free)
FORWARD2(EVP_PKEY_CTX_new)
FORWARD3(EVP_PKEY_CTX_new_from_name)
FORWARD2(EVP_PKEY_CTX_set_rsa_keygen_bits)
FORWARD2(EVP_PKEY_CTX_set_rsa_mgf1_md)
FORWARD2(EVP_PKEY_CTX_set_rsa_oaep_md)
FORWARD2(EVP_PKEY_CTX_set_rsa_padding)
FORWARD2(EVP_PKEY_CTX_set_rsa_pss_saltlen)
FORWARD5(EVP_PKEY_decrypt)
FORWARD1(EVP_PKEY_decrypt_init)
FORWARD5(EVP_PKEY_encrypt)
FORWARD1(EVP_PKEY_encrypt_init)
FORWARD2(EVP_PKEY_eq)
FORWARD1(EVP_PKEY_free)
FORWARD2(EVP_PKEY_generate)
FORWARD1(EVP_PKEY_get_base_id)
FORWARD1(EVP_PKEY_get_bits)
FORWARD1(EVP_PKEY_get_size)
FORWARD2(EVP_PKEY_is_a)
FORWARD1(EVP_PKEY_keygen_init)
FORWARD0(EVP_aes_128_cbc)
FORWARD0(EVP_aes_256_cbc)
FORWARD0(EVP_sha1)
FORWARD0(EVP_sha256)
FORWARD1(GENERAL_NAMES_free)
FORWARD0(GENERAL_NAMES_new)
FORWARD1(GENERAL_NAME_free)
FORWARD0(GENERAL_NAME_new)
FORWARD3(GENERAL_NAME_set0_value)
FORWARD3(OBJ_find_sigid_algs)
FORWARD1(OBJ_nid2sn)
FORWARD1(OBJ_obj2nid)
FORWARD4(OBJ_obj2txt)
FORWARD2(OPENSSL_cleanse)
FORWARD1(OPENSSL_sk_num)
FORWARD2(OPENSSL_sk_push)
FORWARD2(OPENSSL_sk_value)
FORWARD0(OSSL_PARAM_construct_end)
FORWARD3(OSSL_PARAM_construct_utf8_string)
FORWARD4(PEM_read_bio_PrivateKey)
FORWARD4(PEM_read_bio_X509)
FORWARD4(PEM_read_bio_X509_CRL)
FORWARD2(PEM_write_bio_PKCS8)
FORWARD2(PEM_write_bio_PKCS8_PRIV_KEY_INFO)
FORWARD6(PKCS5_pbe2_set_iv)
FORWARD1(PKCS8_PRIV_KEY_INFO_free)
FORWARD4(PKCS8_set0_pbe)
FORWARD2(RAND_bytes)
FORWARD4(X509V3_EXT_conf_nid)
FORWARD1(X509_ALGOR_free)
FORWARD1(X509_CRL_free)
FORWARD3(X509_CRL_get0_by_cert)
FORWARD1(X509_CRL_get0_nextUpdate)
FORWARD1(X509_CRL_get_issuer)
FORWARD2(X509_CRL_verify)
FORWARD1(X509_EXTENSION_free)
FORWARD1(X509_NAME_ENTRY_get_data)
FORWARD1(X509_NAME_ENTRY_get_object)
FORWARD7(X509_NAME_add_entry_by_NID)
FORWARD2(X509_NAME_cmp)
FORWARD1(X509_NAME_entry_count)
FORWARD1(X509_NAME_free)
FORWARD2(X509_NAME_get_entry)
FORWARD4(X509_NAME_get_text_by_NID)
FORWARD0(X509_NAME_new)
FORWARD1(X509_PUBKEY_free)
FORWARD5(X509_PUBKEY_get0_param)
FORWARD2(X509_PUBKEY_set)
FORWARD1(X509_SIG_free)
FORWARD5(X509_add1_ext_i2d)
FORWARD3(X509_add_ext)
FORWARD1(X509_check_ca)
FORWARD2(X509_cmp)
FORWARD2(X509_cmp_time)
FORWARD4(X509_digest)
FORWARD1(X509_free)
FORWARD1(X509_get0_notAfter)
FORWARD1(X509_get0_notBefore)
FORWARD1(X509_get0_pubkey)
FORWARD1(X509_get0_serialNumber)
FORWARD3(X509_get0_signature)
FORWARD4(X509_get_ext_d2i)
FORWARD1(X509_get_extended_key_usage)
FORWARD1(X509_get_issuer_name)
FORWARD1(X509_get_key_usage)
FORWARD1(X509_get_pathlen)
FORWARD1(X509_get_pubkey)
FORWARD1(X509_get_serialNumber)
FORWARD1(X509_get_signature_nid)
FORWARD1(X509_get_subject_name)
FORWARD1(X509_getm_notAfter)
FORWARD1(X509_getm_notBefore)
FORWARD0(X509_new)
FORWARD2(X509_set_pubkey)
FORWARD2(X509_set_version)
FORWARD3(X509_sign)
FORWARD4(X509_time_adj_ex)
FORWARD2(X509_verify)
FORWARD3(d2i_PUBKEY)
FORWARD2(d2i_PrivateKey_bio)
FORWARD3(d2i_X509)
FORWARD3(d2i_X509_CRL)
FORWARD2(i2d_PUBKEY)
FORWARD2(i2d_X509)
// clang-format on

// A thread that ends needs no library that was never used.
extern "C" void OPENSSL_thread_stop()
{
    if (isLoaded)
        reinterpret_cast<decltype(&OPENSSL_thread_stop)>(find("OPENSSL_thread_stop"))();
}

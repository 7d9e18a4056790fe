#pragma once

#include "platform/pki/openssl_p.h"
#include "platform/pki/uapkicertificate.h"

/// A certificate that signs itself, for an end of a secure channel, and its key.
struct Identity
{
    QByteArray certificate;
    std::shared_ptr<EVP_PKEY> key;
};

inline Identity makeIdentity(int bits)
{
    UaPkiIdentity name;
    name.commonName = "plant";
    UaPkiCertificateInfo info;
    info.applicationUri = "urn:plant";
    info.ipAddress = "127.0.0.1";
    const UaPkiRsaKeyPair pair(bits);
    const UaPkiCertificate certificate(info, name, pair.publicKey(), name, pair.privateKey());
    return {certificate.toDER().bytes(), UaPkiKeyAccess::shared(pair.privateKey())};
}

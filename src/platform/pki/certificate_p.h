#pragma once

#include "platform/pki/certificatetexts_p.h"
#include "platform/pki/openssl_p.h"
#include "platform/pki/uapkicertificate.h"

struct NamePart
{
    int nid;
    UaString UaPkiIdentity::*text;
    CertificateText which;
};
/// The parts of a distinguished name, in the order of X.500.
inline constexpr NamePart nameParts[] = {
    {NID_countryName, &UaPkiIdentity::country, CertificateText::Country},
    {NID_stateOrProvinceName, &UaPkiIdentity::state, CertificateText::State},
    {NID_localityName, &UaPkiIdentity::locality, CertificateText::Locality},
    {NID_organizationName, &UaPkiIdentity::organization, CertificateText::Organization},
    {NID_organizationalUnitName, &UaPkiIdentity::organizationUnit,
     CertificateText::OrganizationUnit},
    {NID_commonName, &UaPkiIdentity::commonName, CertificateText::CommonName},
};

inline constexpr OpcUa_Int64 ticksPerSecond = 10'000'000;

// --- Reading -------------------------------------------------------------------------------------

UaPkiIdentity identityOf(const X509_NAME* name);
/// All parts, the common name first.
UaString nameText(const X509_NAME* name);
/// All but the validity.
UaPkiCertificateInfo infoOf(const X509* x509);
/// Null for a time that is none.
UaDateTime timeOf(const ASN1_TIME* time);

// --- Writing -------------------------------------------------------------------------------------

/// A signed certificate as UaPkiCertificate's constructor describes it; null if it cannot be made.
X509Ptr writeCertificate(const UaPkiCertificateInfo& info, const UaPkiIdentity& subject,
                         EVP_PKEY* subjectKey, const UaPkiIdentity& issuer, EVP_PKEY* issuerKey);

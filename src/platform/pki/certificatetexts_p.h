#pragma once

#include <QtCore/QByteArray>

struct UaPkiCertificateInfo;
struct UaPkiIdentity;

/// The texts of a certificate, in the order in which users are asked for them.
enum class CertificateText {
    CommonName,
    Organization,
    OrganizationUnit,
    Locality,
    State,
    Country,
    ApplicationUri,
    DnsName,
    IpAddress,
    None
};

/// The first text that no certificate can hold.
CertificateText faultyText(const UaPkiCertificateInfo& info, const UaPkiIdentity& subject);

/// The text as a URI: what RFC 3986 does not let stand for itself is percent-encoded as UTF-8. A
/// URI stays as it is.
QByteArray toUri(const QByteArray& text);

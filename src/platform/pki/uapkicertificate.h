#pragma once

#include "../../kestrelexport.h"
#include "../types/uabytestring.h"
#include "../types/uadatetime.h"
#include "../types/uastring.h"
#include "uapkikeys.h"

#include <memory>

/// A distinguished name: the subject or the issuer of a certificate. Parts that it lacks are empty;
/// a part that a certificate has several times is read as their texts with ", " between them.
struct UaPkiIdentity
{
    UaString commonName;
    UaString organization;
    UaString organizationUnit;
    UaString locality;
    UaString state;
    /// Two letters (ISO 3166-1 alpha-2).
    UaString country;
};

/// What an application instance certificate tells beside its subject (OPC 10000-6, 6.2.2). Several
/// addresses or names have ", " between them.
struct UaPkiCertificateInfo
{
    UaString applicationUri;
    UaString ipAddress;
    UaString dnsName;
    /// Seconds from the start of validity to its end, or from now to its end for a certificate that
    /// is to be created; one year of 365 days by default.
    OpcUa_Int64 validitySeconds = 365 * 24 * 60 * 60;
    /// How many seconds before now the validity of a certificate starts that is to be created, for
    /// peers whose clocks are slow. 0 for one that was read.
    OpcUa_Int64 clockToleranceSeconds = 0;
};

/// An X.509 certificate, as OPC UA applications have one (OPC 10000-6, 6.2.2). Copies share their
/// storage. What is read has been decoded, and nothing more: no signature is checked.
class KESTREL_EXPORT UaPkiCertificate
{
public:
    /// A file that is larger is not read. Bytes.
    static constexpr OpcUa_Int64 maxFileSize = 1 << 20;

    /// The null certificate.
    UaPkiCertificate();
    /// Creates a certificate for `subjectKey`, valid from now on, and signs it by SHA-256 with the
    /// issuer's key; the same identity and the key's other half make it self-signed, with the key
    /// usage for signing certificates besides. Empty parts of an identity are left out. The result
    /// is null when the certificate cannot be made:
    /// - a key is null, or there is no application URI or no common name of the subject,
    /// - a country is not two ASCII letters, or a part of an identity is longer than RFC 5280,
    ///   appendix A.1 allows (64 characters, 128 for locality and state),
    /// - an IP address does not parse, a domain name holds what cannot be in one, or one of the two
    ///   lists has blanks and commas only,
    /// - the validity is not positive or ends after the year 9999, or the clock tolerance is
    ///   negative.
    /// Domain names that are not ASCII are converted (RFC 3490). What RFC 3986 does not allow in a
    /// URI is percent-encoded as UTF-8 in the application URI.
    UaPkiCertificate(const UaPkiCertificateInfo& info, const UaPkiIdentity& subject,
                     const UaPkiPublicKey& subjectKey, const UaPkiIdentity& issuer,
                     const UaPkiPrivateKey& issuerKey);
    UaPkiCertificate(const UaPkiCertificate&);
    UaPkiCertificate& operator=(const UaPkiCertificate&);
    ~UaPkiCertificate();

    /// Reads the first certificate of a file; what follows it, such as its chain, is ignored. The
    /// path is in the local 8-bit encoding. Null for what is no regular file, cannot be read, is
    /// larger than maxFileSize or does not decode.
    static UaPkiCertificate fromDERFile(const char* path);
    /// As fromDERFile(). Other PEM blocks before the first certificate are skipped.
    static UaPkiCertificate fromPEMFile(const char* path);
    /// Decodes the first certificate of `der`; null when it does not decode.
    static UaPkiCertificate fromDER(const UaByteString& der);

    bool isNull() const { return !m_data; }
    /// Whether `time` lies in the validity period, both ends included.
    bool isValid(const UaDateTime& time = UaDateTime::now()) const;
    /// Null for a null certificate or a time that is none.
    UaDateTime validFrom() const;
    UaDateTime validTo() const;
    UaString commonName() const { return subject().commonName; }
    const UaPkiIdentity& subject() const;
    const UaPkiIdentity& issuer() const;
    /// All parts of the name, the common name first, as in "CN=Pump, O=Plant, DC=plc17"; an
    /// identity holds the usual ones only.
    UaString subjectText() const;
    UaString issuerText() const;
    const UaPkiCertificateInfo& info() const;
    /// The serial number's magnitude, most significant byte first.
    UaByteString serialNumber() const;
    /// The SHA-1 digest of the certificate, by which OPC UA names it.
    UaByteString thumbprint() const;
    /// Null for an algorithm that is not known.
    UaPkiPublicKey publicKey() const;
    /// The algorithm of its signature by name, such as "sha256WithRSAEncryption", or by the OID of
    /// one that is not known.
    UaString signatureAlgorithm() const;

    /// Null for a null certificate.
    UaByteString toDER() const;
    /// The path is in the local 8-bit encoding. The file is there as a whole or, after a false, as
    /// it was before.
    bool toDERFile(const char* path) const;

private:
    struct Data;
    explicit UaPkiCertificate(std::shared_ptr<const Data> data);
    std::shared_ptr<const Data> m_data;
};

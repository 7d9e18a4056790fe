#pragma once

#include "../../kestrelexport.h"
#include "../types/uabytestring.h"
#include "../types/uadatetime.h"
#include "../types/uastatuscode.h"
#include "uapkicertificate.h"

#include <QtCore/QList>
#include <QtCore/QString>

/// One thing that speaks against the certificate of a peer (OPC 10000-4, 6.1.3).
struct KESTREL_EXPORT UaPkiFinding
{
    /// BadCertificate..., as the standard names the failed step.
    UaStatusCode status;
    /// Whom it concerns: the common name of the peer or of an issuer in its chain; may be empty.
    QString subject;
    /// What was found beside what was expected, such as the host names in the certificate.
    QString detail;

    /// A sentence for the user, in the language of the user interface; plain text of one line.
    QString text() const;
};

/// What a peer is expected to be.
struct UaPkiExpectation
{
    /// The host of the URL that is connected to, a name or an address; empty: not looked at.
    QString hostName;
    /// The URI that the server's description announces; empty: not looked at.
    QString applicationUri;
    /// Bits of the RSA key that the security policy allows (OPC 10000-7, 6.6).
    int minKeySize = 2048;
    int maxKeySize = 4096;
    /// Whether SHA-1 signatures are let through, as the old policies do.
    bool isSha1Allowed = false;
    UaDateTime time = UaDateTime::now();
};

/// A peer's certificate, and what its check found.
struct UaPkiVerdict
{
    /// Null when it does not decode.
    UaPkiCertificate certificate;
    /// All findings, in the order of the standard's steps; none: the certificate is trusted.
    QList<UaPkiFinding> findings;

    bool isTrusted() const { return findings.isEmpty(); }
};

/// The certificates of an application's store on disk, as the peers of its sessions are checked
/// against them.
///
/// Files named *.der, *.cer and *.crt, DER or PEM, are certificates, those named *.crl are
/// revocation lists. They are read at each check; a file that is larger than
/// UaPkiCertificate::maxFileSize, or that is none of these, is passed over. Any thread.
class KESTREL_EXPORT UaPkiTrustStore
{
public:
    /// Folders; an empty one holds nothing, and none need be there.
    struct Folders
    {
        QString trusted;    ///< certificates of peers, and of issuers whose peers are all trusted
        QString trustedCrl; ///< revocation lists of trusted issuers
        QString issuers;    ///< certificates that complete a chain, and are not trusted for that
        QString issuersCrl; ///< their revocation lists
        QString rejected;   ///< where the certificates of rejected peers are filed
    };
    /// The most certificates in a chain.
    static constexpr int maxChain = 10;

    UaPkiTrustStore() = default;
    explicit UaPkiTrustStore(const Folders& folders) : m_folders(folders) {}

    const Folders& folders() const { return m_folders; }

    /// Checks `peer`, the DER of a certificate, which its issuers may follow (OPC 10000-6, 6.2.6).
    UaPkiVerdict check(const UaByteString& peer, const UaPkiExpectation& expected) const;

    /// Files a certificate, named by its common name and thumbprint, among the trusted or the
    /// rejected ones, and removes it from the others. False when it could not be written; then
    /// `reason`, which may be null, tells why.
    bool trust(const UaPkiCertificate& certificate, QString* reason = nullptr) const;
    bool reject(const UaPkiCertificate& certificate, QString* reason = nullptr) const;

private:
    Folders m_folders;
};

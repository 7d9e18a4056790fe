#include "uapkitruststore.h"

#include "platform/pki/filewriter_p.h"
#include "platform/pki/openssl_p.h"
#include "platform/stack/opcuastatuscodes.h"
#include "platform/types/utf8text_p.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QUrl>
#include <QtNetwork/QHostAddress>

#include <openssl/pem.h>

#include <algorithm>
#include <vector>

namespace {

using CrlPtr = OpenSslPtr<X509_CRL, X509_CRL_free>;

// --- Texts ---------------------------------------------------------------------------------------

struct FindingText
{
    OpcUa_StatusCode status;
    const char* text; // context "UaPkiFinding"; %1 is the detail
};

constexpr FindingText findingTexts[] = {
    {OpcUa_BadCertificateInvalid,
     QT_TRANSLATE_NOOP("UaPkiFinding", "The certificate is damaged or its signature is wrong. %1")},
    {OpcUa_BadCertificateChainIncomplete,
     QT_TRANSLATE_NOOP("UaPkiFinding",
                       "The certificate of an issuer is missing, so its origin is unproven. %1")},
    {OpcUa_BadCertificatePolicyCheckFailed,
     QT_TRANSLATE_NOOP("UaPkiFinding", "The security policy does not allow the certificate. %1")},
    {OpcUa_BadCertificateUntrusted,
     QT_TRANSLATE_NOOP("UaPkiFinding", "Neither the certificate nor an issuer is trusted yet. %1")},
    {OpcUa_BadCertificateTimeInvalid,
     QT_TRANSLATE_NOOP("UaPkiFinding", "The certificate is not valid at this time. %1")},
    {OpcUa_BadCertificateIssuerTimeInvalid,
     QT_TRANSLATE_NOOP("UaPkiFinding", "An issuer's certificate is not valid at this time. %1")},
    {OpcUa_BadCertificateHostNameInvalid,
     QT_TRANSLATE_NOOP("UaPkiFinding", "The certificate was made for another computer. %1")},
    {OpcUa_BadCertificateUriInvalid,
     QT_TRANSLATE_NOOP("UaPkiFinding", "The certificate was made for another application. %1")},
    {OpcUa_BadCertificateUseNotAllowed,
     QT_TRANSLATE_NOOP("UaPkiFinding", "The certificate was not made for this use. %1")},
    {OpcUa_BadCertificateIssuerUseNotAllowed,
     QT_TRANSLATE_NOOP("UaPkiFinding", "An issuer may not issue certificates. %1")},
    {OpcUa_BadCertificateRevocationUnknown,
     QT_TRANSLATE_NOOP("UaPkiFinding", "Whether the certificate was revoked is not known. %1")},
    {OpcUa_BadCertificateIssuerRevocationUnknown,
     QT_TRANSLATE_NOOP("UaPkiFinding",
                       "Whether an issuer's certificate was revoked is not known. %1")},
    {OpcUa_BadCertificateRevoked,
     QT_TRANSLATE_NOOP("UaPkiFinding", "The certificate was revoked. %1")},
    {OpcUa_BadCertificateIssuerRevoked,
     QT_TRANSLATE_NOOP("UaPkiFinding", "The certificate of an issuer was revoked. %1")},
};

class Texts
{
    Q_DECLARE_TR_FUNCTIONS(UaPkiFinding)
};

// One line of bounded length, whatever a certificate holds.
QString shown(const QString& text)
{
    constexpr qsizetype maxLength = 200;
    QString line = text.left(maxLength).simplified();
    line.removeIf([](QChar c) { return !c.isPrint(); });
    return text.size() > maxLength ? line + QChar(0x2026) : line;
}

QString texts(const UaString& list)
{
    return shown(list.toQString());
}

// --- Files ---------------------------------------------------------------------------------------

QStringList certificateNames()
{
    return {"*.der", "*.cer", "*.crt"};
}

QStringList crlNames()
{
    return {"*.crl"};
}

// Hands the content of each file to `take`, until that gives false.
template <class Take>
void eachFile(const QString& folder, const QStringList& names, Take take)
{
    if (folder.isEmpty())
        return;
    QDirIterator files(folder, names, QDir::Files);
    while (files.hasNext()) {
        QFile file(files.next());
        if (file.size() > UaPkiCertificate::maxFileSize ||
            !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            continue;
        if (!take(file.read(UaPkiCertificate::maxFileSize), file.fileName()))
            return;
    }
}

// An object in DER or PEM.
template <auto fromDer, auto fromPem, class Pointer>
Pointer decode(const QByteArray& bytes)
{
    const auto* der = reinterpret_cast<const unsigned char*>(bytes.constData());
    if (Pointer object{fromDer(nullptr, &der, long(bytes.size()))})
        return object;
    const BioPtr bio(BIO_new_mem_buf(bytes.constData(), int(bytes.size())));
    return Pointer(bio ? fromPem(bio.get(), nullptr, nullptr, nullptr) : nullptr);
}

X509Ptr decodeCertificate(const QByteArray& bytes)
{
    return decode<d2i_X509, PEM_read_bio_X509, X509Ptr>(bytes);
}

CrlPtr decodeCrl(const QByteArray& bytes)
{
    return decode<d2i_X509_CRL, PEM_read_bio_X509_CRL, CrlPtr>(bytes);
}

// --- The chain -----------------------------------------------------------------------------------

bool isSelfIssued(X509* certificate)
{
    return X509_NAME_cmp(X509_get_subject_name(certificate), X509_get_issuer_name(certificate)) ==
           0;
}

bool isSignedBy(X509* certificate, X509* issuer)
{
    EVP_PKEY* key = X509_get0_pubkey(issuer);
    return key && X509_verify(certificate, key) == 1;
}

bool isNamedIssuer(X509* certificate, X509* issuer)
{
    return X509_NAME_cmp(X509_get_issuer_name(certificate), X509_get_subject_name(issuer)) == 0;
}

QString commonName(X509* certificate)
{
    char name[256] = "";
    X509_NAME_get_text_by_NID(X509_get_subject_name(certificate), NID_commonName, name,
                              sizeof name);
    return shown(textFromUtf8(name));
}

// A peer's certificate and its issuers, as far as they are known.
class Chain
{
public:
    Chain(std::vector<X509Ptr> sent, const UaPkiTrustStore::Folders& folders) : m_folders(folders)
    {
        m_certificates.push_back(std::move(sent.front()));
        sent.erase(sent.begin());
        while (int(m_certificates.size()) < UaPkiTrustStore::maxChain && !isRoot(last())) {
            X509Ptr issuer = findIssuer(sent);
            if (!issuer)
                return;
            m_certificates.push_back(std::move(issuer));
        }
        m_isComplete = isRoot(last());
    }

    const std::vector<X509Ptr>& certificates() const { return m_certificates; }
    bool isComplete() const { return m_isComplete; }
    /// An issuer of the right name was there, but it has not signed.
    bool isForged() const { return m_isForged; }
    bool hasTrusted() const
    {
        bool found = false;
        eachFile(
            m_folders.trusted, certificateNames(), [&](const QByteArray& bytes, const QString&) {
                const X509Ptr trusted = decodeCertificate(bytes);
                found = trusted && std::any_of(m_certificates.begin(), m_certificates.end(),
                                               [&](const X509Ptr& each) {
                                                   return X509_cmp(each.get(), trusted.get()) == 0;
                                               });
                return !found;
            });
        return found;
    }

private:
    X509* last() const { return m_certificates.back().get(); }
    bool isRoot(X509* certificate)
    {
        if (!isSelfIssued(certificate))
            return false;
        m_isForged = m_isForged || !isSignedBy(certificate, certificate);
        return true;
    }
    X509Ptr findIssuer(std::vector<X509Ptr>& sent)
    {
        X509Ptr issuer;
        const auto fits = [&](X509* candidate) {
            if (!isNamedIssuer(last(), candidate))
                return false;
            const bool signedBy = isSignedBy(last(), candidate);
            m_sawNamed = m_sawNamed || !signedBy;
            return signedBy;
        };
        m_sawNamed = false;
        const auto found = std::find_if(sent.begin(), sent.end(),
                                        [&](const X509Ptr& each) { return fits(each.get()); });
        if (found != sent.end()) {
            issuer = std::move(*found);
            sent.erase(found);
        }
        for (const QString& folder : {m_folders.trusted, m_folders.issuers}) {
            if (issuer)
                break;
            eachFile(folder, certificateNames(), [&](const QByteArray& bytes, const QString&) {
                X509Ptr candidate = decodeCertificate(bytes);
                if (candidate && fits(candidate.get()))
                    issuer = std::move(candidate);
                return !issuer;
            });
        }
        m_isForged = m_isForged || (!issuer && m_sawNamed);
        return issuer;
    }

    const UaPkiTrustStore::Folders& m_folders;
    std::vector<X509Ptr> m_certificates;
    bool m_isComplete = false;
    bool m_isForged = false;
    bool m_sawNamed = false;
};

// All certificates of a DER sequence; none when one does not decode.
std::vector<X509Ptr> decodeChain(const UaByteString& der)
{
    std::vector<X509Ptr> chain;
    const unsigned char* next = der.data();
    const unsigned char* const end = next + der.length();
    while (next < end && chain.size() < std::size_t(UaPkiTrustStore::maxChain)) {
        X509Ptr certificate(d2i_X509(nullptr, &next, end - next));
        if (!certificate)
            return {};
        chain.push_back(std::move(certificate));
    }
    return chain;
}

// --- Steps ---------------------------------------------------------------------------------------

enum class Revocation { NoList, Good, Revoked, Unknown };

// What the store's lists of the issuer tell; a list that is out of date tells nothing.
Revocation revocation(const UaPkiTrustStore::Folders& folders, X509* certificate, X509* issuer,
                      time_t time)
{
    Revocation result = Revocation::NoList;
    const auto take = [&](const QByteArray& bytes, const QString&) {
        const CrlPtr list = decodeCrl(bytes);
        if (!list ||
            X509_NAME_cmp(X509_CRL_get_issuer(list.get()), X509_get_subject_name(issuer)) != 0)
            return true;
        EVP_PKEY* key = X509_get0_pubkey(issuer);
        if (!key || X509_CRL_verify(list.get(), key) != 1)
            return true;
        X509_REVOKED* entry = nullptr;
        if (X509_CRL_get0_by_cert(list.get(), &entry, certificate) == 1) {
            result = Revocation::Revoked;
            return false;
        }
        const ASN1_TIME* next = X509_CRL_get0_nextUpdate(list.get());
        if (next && X509_cmp_time(next, &time) < 0) {
            if (result == Revocation::NoList)
                result = Revocation::Unknown;
        } else {
            result = Revocation::Good;
        }
        return true;
    };
    eachFile(folders.trustedCrl, crlNames(), take);
    if (result != Revocation::Revoked)
        eachFile(folders.issuersCrl, crlNames(), take);
    return result;
}

bool isSha1Signed(X509* certificate)
{
    int digest = 0;
    return OBJ_find_sigid_algs(X509_get_signature_nid(certificate), &digest, nullptr) == 1 &&
           (digest == NID_sha1 || digest == NID_md5);
}

QString keyFinding(X509* certificate, const UaPkiExpectation& expected)
{
    EVP_PKEY* key = X509_get0_pubkey(certificate);
    if (!key || EVP_PKEY_get_base_id(key) != EVP_PKEY_RSA)
        return Texts::tr("It has no RSA key.");
    const int bits = EVP_PKEY_get_bits(key);
    if (bits < expected.minKeySize || bits > expected.maxKeySize)
        return Texts::tr("Its key has %1 bits, the policy asks for %2 to %3.")
            .arg(bits)
            .arg(expected.minKeySize)
            .arg(expected.maxKeySize);
    if (!expected.isSha1Allowed && isSha1Signed(certificate))
        return Texts::tr("It is signed by an algorithm that is out of date.");
    return {};
}

QString timeFinding(const UaPkiCertificate& certificate, const UaDateTime& time)
{
    if (certificate.isValid(time))
        return {};
    return Texts::tr("It is valid from %1 to %2.")
        .arg(texts(certificate.validFrom().toString()), texts(certificate.validTo().toString()));
}

// As they are compared: addresses in one form, names in their ASCII form, without case.
QString comparable(QString name)
{
    if (name.startsWith(u'[') && name.endsWith(u']'))
        name = name.mid(1, name.size() - 2);
    const QHostAddress address(name);
    if (!address.isNull())
        return address.toString();
    if (name.endsWith(u'.'))
        name.chop(1);
    const QByteArray ascii = QUrl::toAce(name);
    return ascii.isEmpty() ? name.toLower() : QString::fromLatin1(ascii).toLower();
}

bool namesHost(const UaPkiCertificateInfo& info, const QString& host)
{
    const QString wanted = comparable(host);
    for (const UaString& list : {info.dnsName, info.ipAddress}) {
        const QStringList names = list.toQString().split(", ", Qt::SkipEmptyParts);
        for (const QString& name : names)
            if (comparable(name) == wanted)
                return true;
    }
    return false;
}

QString usageFinding(X509* certificate)
{
    struct Usage
    {
        std::uint32_t bit;
        const char* name;
    };
    static constexpr Usage needed[] = {{X509v3_KU_DIGITAL_SIGNATURE, "digitalSignature"},
                                       {X509v3_KU_KEY_ENCIPHERMENT, "keyEncipherment"},
                                       {X509v3_KU_DATA_ENCIPHERMENT, "dataEncipherment"}};
    QStringList missing;
    const std::uint32_t usage = X509_get_key_usage(certificate);
    for (const Usage& each : needed)
        if (!(usage & each.bit))
            missing.append(each.name);
    const std::uint32_t extended = X509_get_extended_key_usage(certificate);
    if (!(extended & XKU_SSL_SERVER))
        missing.append("serverAuth");
    return missing.isEmpty() ? QString() : Texts::tr("It lacks %1.").arg(missing.join(", "));
}

// Whether it may stand above so many other issuers.
bool mayIssue(X509* issuer, long issuersBelow)
{
    const long bound = X509_get_pathlen(issuer);
    return X509_check_ca(issuer) != 0 && (X509_get_key_usage(issuer) & X509v3_KU_KEY_CERT_SIGN) &&
           (bound < 0 || issuersBelow <= bound);
}

QByteArray derOf(X509* certificate)
{
    unsigned char* der = nullptr;
    const int size = i2d_X509(certificate, &der);
    const QByteArray bytes(reinterpret_cast<const char*>(der), std::max(size, 0));
    OPENSSL_free(der);
    return bytes;
}

// --- Filing --------------------------------------------------------------------------------------

QString fileName(const UaPkiCertificate& certificate)
{
    constexpr qsizetype maxName = 64;
    QString name = texts(certificate.commonName()).left(maxName);
    for (QChar& c : name)
        if (!c.isLetterOrNumber() && c != u'-' && c != u' ')
            c = u'_';
    return QString("%1 [%2].der")
        .arg(name.trimmed(),
             QString::fromLatin1(certificate.thumbprint().bytes().toHex().toUpper()));
}

bool file(const UaPkiCertificate& certificate, const QString& to, const QString& from,
          QString* reason)
{
    const auto fail = [&](const QString& why) {
        if (reason)
            *reason = why;
        return false;
    };
    const QByteArray der = certificate.toDER().bytes();
    if (der.isEmpty() || to.isEmpty())
        return fail(Texts::tr("There is no folder for it."));
    if (!QDir().mkpath(to))
        return fail(Texts::tr("The folder %1 cannot be made.").arg(to));
    const QString path = QDir(to).filePath(fileName(certificate));
    if (!replaceFile(path, der.constData(), der.size(), FileReplacement::Access::Usual))
        return fail(Texts::tr("The file %1 cannot be written.").arg(path));
    // Whatever its file is called there.
    eachFile(from, certificateNames(), [&](const QByteArray& bytes, const QString& other) {
        const X509Ptr each = decodeCertificate(bytes);
        if (each && derOf(each.get()) == der)
            QFile::remove(other);
        return true;
    });
    return true;
}

} // namespace

QString UaPkiFinding::text() const
{
    const auto* found =
        std::find_if(std::begin(findingTexts), std::end(findingTexts),
                     [this](const FindingText& each) { return each.status == status.code(); });
    const QString more = subject.isEmpty() ? detail : QString("%1 (%2)").arg(detail, subject);
    if (found == std::end(findingTexts))
        return QString("%1 %2").arg(status.toString().toQString(), more).trimmed();
    return Texts::tr(found->text).arg(more).trimmed();
}

UaPkiVerdict UaPkiTrustStore::check(const UaByteString& peer,
                                    const UaPkiExpectation& expected) const
{
    const ErrorQueueGuard guard;
    UaPkiVerdict verdict;
    std::vector<X509Ptr> sent = decodeChain(peer);
    if (sent.empty()) {
        verdict.findings.append(
            {OpcUa_BadCertificateInvalid, {}, Texts::tr("It cannot be decoded.")});
        return verdict;
    }
    X509* const leaf = sent.front().get();
    verdict.certificate = UaPkiCertificate::fromDER(UaByteString(derOf(leaf)));
    const auto add = [&](OpcUa_StatusCode status, X509* subject, const QString& detail) {
        verdict.findings.append({status, commonName(subject), detail});
    };

    const Chain chain(std::move(sent), m_folders);
    const std::vector<X509Ptr>& all = chain.certificates();
    if (chain.isForged())
        add(OpcUa_BadCertificateInvalid, all.back().get(),
            Texts::tr("Its signature is not that of the issuer."));
    else if (!chain.isComplete())
        add(OpcUa_BadCertificateChainIncomplete, all.back().get(), {});
    if (const QString key = keyFinding(leaf, expected); !key.isEmpty())
        add(OpcUa_BadCertificatePolicyCheckFailed, leaf, key);
    if (!chain.hasTrusted())
        add(OpcUa_BadCertificateUntrusted, leaf, {});
    for (std::size_t i = 0; i < all.size(); ++i) {
        const QString time = timeFinding(
            UaPkiCertificate::fromDER(UaByteString(derOf(all[i].get()))), expected.time);
        if (!time.isEmpty())
            add(i == 0 ? OpcUa_BadCertificateTimeInvalid : OpcUa_BadCertificateIssuerTimeInvalid,
                all[i].get(), time);
    }
    const UaPkiCertificateInfo& info = verdict.certificate.info();
    if (!expected.hostName.isEmpty() && !namesHost(info, expected.hostName)) {
        QStringList names{texts(info.dnsName), texts(info.ipAddress)};
        names.removeAll(QString());
        add(OpcUa_BadCertificateHostNameInvalid, leaf,
            Texts::tr("It names %1, not %2.")
                .arg(names.isEmpty() ? Texts::tr("no computer") : names.join(", "),
                     shown(expected.hostName)));
    }
    if (!expected.applicationUri.isEmpty() &&
        info.applicationUri != UaString(expected.applicationUri.toUtf8()))
        add(OpcUa_BadCertificateUriInvalid, leaf,
            Texts::tr("It holds \"%1\", the server announces \"%2\".")
                .arg(texts(info.applicationUri), shown(expected.applicationUri)));
    if (const QString usage = usageFinding(leaf); !usage.isEmpty())
        add(OpcUa_BadCertificateUseNotAllowed, leaf, usage);
    for (std::size_t i = 1; i < all.size(); ++i)
        if (!mayIssue(all[i].get(), long(i) - 1))
            add(OpcUa_BadCertificateIssuerUseNotAllowed, all[i].get(), {});
    for (std::size_t i = 0; i + 1 < all.size(); ++i) {
        const Revocation state = revocation(m_folders, all[i].get(), all[i + 1].get(),
                                            time_t(expected.time.toQDateTime().toSecsSinceEpoch()));
        if (state == Revocation::Unknown)
            add(i == 0 ? OpcUa_BadCertificateRevocationUnknown
                       : OpcUa_BadCertificateIssuerRevocationUnknown,
                all[i].get(), Texts::tr("The issuer's list is out of date."));
        else if (state == Revocation::Revoked)
            add(i == 0 ? OpcUa_BadCertificateRevoked : OpcUa_BadCertificateIssuerRevoked,
                all[i].get(), {});
    }
    return verdict;
}

bool UaPkiTrustStore::trust(const UaPkiCertificate& certificate, QString* reason) const
{
    return file(certificate, m_folders.trusted, m_folders.rejected, reason);
}

bool UaPkiTrustStore::reject(const UaPkiCertificate& certificate, QString* reason) const
{
    return file(certificate, m_folders.rejected, m_folders.trusted, reason);
}

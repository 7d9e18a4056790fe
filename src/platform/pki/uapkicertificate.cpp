#include "uapkicertificate.h"

#include "filewriter_p.h"
#include "openssl_p.h"

#include <QtCore/QDate>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QUrl>
#include <QtNetwork/QHostAddress>

#include <openssl/pem.h>

#include <algorithm>
#include <cstring>
#include <ctime>

namespace {

constexpr int serialNumberBits = 127; // fixed, the first bit set, in 16 bytes with a zero sign bit
constexpr qint64 secondsPerDay = 86'400;
constexpr qint64 ticksPerSecond = 10'000'000;

// --- Reading -------------------------------------------------------------------------------------

/// A text as UTF-8, without characters that would end it early.
QByteArray textOf(const ASN1_STRING* value)
{
    unsigned char* utf8 = nullptr;
    const int size = ASN1_STRING_to_UTF8(&utf8, value);
    const bool converted = size >= 0;
    const auto* data = converted ? utf8 : ASN1_STRING_get0_data(value);
    QByteArray text(reinterpret_cast<const char*>(data),
                    converted ? size : ASN1_STRING_length(value));
    OPENSSL_free(utf8);
    if (!converted)
        text = QString::fromUtf8(text).toUtf8();
    return text.contains('\0') ? text.replace('\0', "\xef\xbf\xbd") : text;
}

void append(UaString& list, const QByteArray& text)
{
    if (!text.isEmpty())
        list = UaString(list.isEmpty() ? text : list.bytes() + ", " + text);
}

UaPkiIdentity identityOf(const X509_NAME* name)
{
    UaPkiIdentity identity;
    for (int i = 0; i < X509_NAME_entry_count(name); ++i) {
        const X509_NAME_ENTRY* entry = X509_NAME_get_entry(name, i);
        UaString* part = nullptr;
        switch (OBJ_obj2nid(X509_NAME_ENTRY_get_object(entry))) {
        case NID_commonName:
            part = &identity.commonName;
            break;
        case NID_organizationName:
            part = &identity.organization;
            break;
        case NID_organizationalUnitName:
            part = &identity.organizationUnit;
            break;
        case NID_localityName:
            part = &identity.locality;
            break;
        case NID_stateOrProvinceName:
            part = &identity.state;
            break;
        case NID_countryName:
            part = &identity.country;
            break;
        default:
            continue;
        }
        append(*part, textOf(X509_NAME_ENTRY_get_data(entry)));
    }
    return identity;
}

QByteArray addressText(const ASN1_OCTET_STRING* address)
{
    const unsigned char* bytes = ASN1_STRING_get0_data(address);
    switch (ASN1_STRING_length(address)) {
    case 4:
        return QHostAddress(quint32(bytes[0]) << 24 | quint32(bytes[1]) << 16 |
                            quint32(bytes[2]) << 8 | bytes[3])
            .toString()
            .toLatin1();
    case 16:
        return QHostAddress(bytes).toString().toLatin1();
    default:
        return {};
    }
}

UaPkiCertificateInfo infoOf(const X509* x509)
{
    UaPkiCertificateInfo info;
    const OpenSslPtr<GENERAL_NAMES, GENERAL_NAMES_free> names(static_cast<GENERAL_NAMES*>(
        X509_get_ext_d2i(x509, NID_subject_alt_name, nullptr, nullptr)));
    for (int i = 0; i < sk_GENERAL_NAME_num(names.get()); ++i) {
        const GENERAL_NAME* name = sk_GENERAL_NAME_value(names.get(), i);
        if (name->type == GEN_URI && info.applicationUri.isEmpty())
            info.applicationUri = UaString(textOf(name->d.uniformResourceIdentifier));
        else if (name->type == GEN_DNS)
            append(info.dnsName, textOf(name->d.dNSName));
        else if (name->type == GEN_IPADD)
            append(info.ipAddress, addressText(name->d.iPAddress));
    }
    return info;
}

UaDateTime timeOf(const ASN1_TIME* time)
{
    std::tm parts{};
    if (!time || !ASN1_TIME_to_tm(time, &parts))
        return {};
    static const qint64 origin = QDate(1601, 1, 1).toJulianDay();
    const QDate date(parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday);
    if (!date.isValid())
        return {};
    const qint64 seconds = (date.toJulianDay() - origin) * secondsPerDay + parts.tm_hour * 3600 +
                           parts.tm_min * 60 + parts.tm_sec;
    return UaDateTime(seconds * ticksPerSecond);
}

/// The content of a regular file that is not too large.
QByteArray contentOf(const char* localPath)
{
    const QString path = QFile::decodeName(localPath);
    QFile file(path);
    // What is no file, such as a pipe, may keep the caller waiting when it is opened.
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) ||
        file.size() > UaPkiCertificate::maxFileSize)
        return {};
    return file.read(UaPkiCertificate::maxFileSize);
}

// --- Creating ------------------------------------------------------------------------------------

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isCountry(const QByteArray& text)
{
    return text.size() == 2 && isLetter(text[0]) && isLetter(text[1]);
}

bool setName(X509_NAME* name, const UaPkiIdentity& identity)
{
    const std::pair<int, const UaString&> parts[] = {
        {NID_countryName, identity.country},
        {NID_stateOrProvinceName, identity.state},
        {NID_localityName, identity.locality},
        {NID_organizationName, identity.organization},
        {NID_organizationalUnitName, identity.organizationUnit},
        {NID_commonName, identity.commonName},
    };
    for (const auto& [nid, text] : parts) {
        if (text.isEmpty())
            continue;
        if (text.bytes().contains('\0') || (nid == NID_countryName && !isCountry(text.bytes())) ||
            !X509_NAME_add_entry_by_NID(name, nid, MBSTRING_UTF8,
                                        reinterpret_cast<const unsigned char*>(text.toUtf8()),
                                        text.size(), -1, 0))
            return false;
    }
    return X509_NAME_entry_count(name) > 0;
}

/// The URI in the characters that a certificate can hold; empty if it has some that no URI can.
QByteArray asciiUri(const UaString& uri)
{
    QByteArray ascii;
    for (const char c : uri.bytes()) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < ' ' || byte == 0x7f)
            return {};
        if (byte > 0x7f)
            ascii += '%' + QByteArray(1, c).toHex().toUpper();
        else
            ascii += c;
    }
    return ascii;
}

/// The name in the characters that a certificate can hold; empty if it is no domain name.
QByteArray asciiDomain(const QByteArray& name)
{
    const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    const QByteArray domain = std::all_of(name.begin(), name.end(), isAscii)
                                  ? name
                                  : QUrl::toAce(QString::fromUtf8(name));
    for (const char c : domain)
        if (!isLetter(c) && !(c >= '0' && c <= '9') && !std::strchr("-._*", c))
            return {};
    return domain;
}

/// The bytes of an address that is written in full; empty if it is none.
QByteArray addressBytes(const QByteArray& text)
{
    const QHostAddress address(QString::fromUtf8(text));
    if (address.protocol() == QAbstractSocket::IPv4Protocol) {
        const quint32 value = address.toIPv4Address();
        const char bytes[] = {char(value >> 24), char(value >> 16), char(value >> 8), char(value)};
        // Neither "127.1" nor octal numbers.
        const bool inFull = address.toString().toLatin1() == text;
        return inFull ? QByteArray(bytes, sizeof(bytes)) : QByteArray();
    }
    if (address.protocol() != QAbstractSocket::IPv6Protocol || !address.scopeId().isEmpty())
        return {};
    const Q_IPV6ADDR value = address.toIPv6Address();
    return QByteArray(reinterpret_cast<const char*>(value.c), sizeof(value.c));
}

class ExtensionWriter
{
public:
    explicit ExtensionWriter(X509* x509) : m_x509(x509) {}

    bool add(int nid, const char* value)
    {
        const OpenSslPtr<X509_EXTENSION, X509_EXTENSION_free> extension(
            X509V3_EXT_conf_nid(nullptr, nullptr, nid, value));
        return extension && X509_add_ext(m_x509, extension.get(), -1) == 1;
    }

    bool addAlternativeNames(const UaPkiCertificateInfo& info)
    {
        const OpenSslPtr<GENERAL_NAMES, GENERAL_NAMES_free> names(GENERAL_NAMES_new());
        if (!names || !append(names.get(), GEN_URI, asciiUri(info.applicationUri)))
            return false;
        for (const QByteArray& name : info.dnsName.bytes().split(','))
            if (!name.trimmed().isEmpty() &&
                !append(names.get(), GEN_DNS, asciiDomain(name.trimmed())))
                return false;
        for (const QByteArray& address : info.ipAddress.bytes().split(','))
            if (!address.trimmed().isEmpty() &&
                !append(names.get(), GEN_IPADD, addressBytes(address.trimmed())))
                return false;
        return addDer(NID_subject_alt_name, names.get());
    }

    /// By the SHA-1 digests of the keys, RFC 5280, 4.2.1.2 (1).
    bool addKeyIdentifiers(EVP_PKEY* subjectKey, EVP_PKEY* issuerKey)
    {
        const OpenSslPtr<ASN1_OCTET_STRING, ASN1_OCTET_STRING_free> subject(digest(subjectKey));
        const OpenSslPtr<AUTHORITY_KEYID, AUTHORITY_KEYID_free> authority(AUTHORITY_KEYID_new());
        if (!subject || !authority)
            return false;
        authority->keyid = digest(issuerKey);
        return authority->keyid && addDer(NID_subject_key_identifier, subject.get()) &&
               addDer(NID_authority_key_identifier, authority.get());
    }

private:
    static bool append(GENERAL_NAMES* names, int type, const QByteArray& bytes)
    {
        if (bytes.isEmpty())
            return false;
        OpenSslPtr<GENERAL_NAME, GENERAL_NAME_free> name(GENERAL_NAME_new());
        OpenSslPtr<ASN1_STRING, ASN1_STRING_free> value(
            ASN1_STRING_type_new(type == GEN_IPADD ? V_ASN1_OCTET_STRING : V_ASN1_IA5STRING));
        if (!name || !value || !ASN1_STRING_set(value.get(), bytes.constData(), int(bytes.size())))
            return false;
        GENERAL_NAME_set0_value(name.get(), type, value.release());
        if (!sk_GENERAL_NAME_push(names, name.get()))
            return false;
        name.release();
        return true;
    }

    static ASN1_OCTET_STRING* digest(EVP_PKEY* key)
    {
        X509_PUBKEY* encoded = nullptr;
        if (!X509_PUBKEY_set(&encoded, key))
            return nullptr;
        const OpenSslPtr<X509_PUBKEY, X509_PUBKEY_free> owner(encoded);
        const unsigned char* bits = nullptr;
        int size = 0;
        unsigned char sha1[EVP_MAX_MD_SIZE];
        unsigned int length = 0;
        OpenSslPtr<ASN1_OCTET_STRING, ASN1_OCTET_STRING_free> value(ASN1_OCTET_STRING_new());
        if (!value || !X509_PUBKEY_get0_param(nullptr, &bits, &size, nullptr, encoded) ||
            !EVP_Digest(bits, size_t(size), sha1, &length, EVP_sha1(), nullptr) ||
            !ASN1_OCTET_STRING_set(value.get(), sha1, int(length)))
            return nullptr;
        return value.release();
    }

    bool addDer(int nid, void* value)
    {
        return X509_add1_ext_i2d(m_x509, nid, value, 0, X509V3_ADD_DEFAULT) == 1;
    }

    X509* m_x509;
};

bool setSerialNumber(X509* x509)
{
    const OpenSslPtr<BIGNUM, BN_free> number(BN_new());
    return number && BN_rand(number.get(), serialNumberBits, BN_RAND_TOP_ONE, BN_RAND_BOTTOM_ANY) &&
           BN_to_ASN1_INTEGER(number.get(), X509_get_serialNumber(x509));
}

bool setValidity(X509* x509, OpcUa_Int64 seconds)
{
    constexpr OpcUa_Int64 longest = 10000 * 366 * secondsPerDay;
    if (seconds <= 0 || seconds > longest)
        return false;
    std::time_t now = std::time(nullptr);
    return X509_time_adj_ex(X509_getm_notBefore(x509), 0, 0, &now) &&
           X509_time_adj_ex(X509_getm_notAfter(x509), int(seconds / secondsPerDay),
                            long(seconds % secondsPerDay), &now);
}

// What OPC 10000-6, 6.2.2 asks of an application instance certificate.
X509Ptr create(const UaPkiCertificateInfo& info, const UaPkiIdentity& subject, EVP_PKEY* subjectKey,
               const UaPkiIdentity& issuer, EVP_PKEY* issuerKey)
{
    X509Ptr x509(X509_new());
    if (!x509)
        return nullptr;
    ExtensionWriter extensions(x509.get());
    const bool done =
        X509_set_version(x509.get(), X509_VERSION_3) && setSerialNumber(x509.get()) &&
        !subject.commonName.isEmpty() && setName(X509_get_subject_name(x509.get()), subject) &&
        setName(X509_get_issuer_name(x509.get()), issuer) &&
        setValidity(x509.get(), info.validitySeconds) && X509_set_pubkey(x509.get(), subjectKey) &&
        extensions.addAlternativeNames(info) &&
        extensions.add(NID_basic_constraints, "critical,CA:FALSE") &&
        extensions.add(NID_key_usage, "critical,digitalSignature,nonRepudiation,keyEncipherment,"
                                      "dataEncipherment") &&
        extensions.add(NID_ext_key_usage, "serverAuth,clientAuth") &&
        extensions.addKeyIdentifiers(subjectKey, issuerKey) &&
        X509_sign(x509.get(), issuerKey, EVP_sha256()) > 0;
    return done ? std::move(x509) : nullptr;
}

} // namespace

struct UaPkiCertificate::Data
{
    explicit Data(X509Ptr certificate)
        : x509(std::move(certificate)), subject(identityOf(X509_get_subject_name(x509.get()))),
          issuer(identityOf(X509_get_issuer_name(x509.get()))), info(infoOf(x509.get())),
          validFrom(timeOf(X509_get0_notBefore(x509.get()))),
          validTo(timeOf(X509_get0_notAfter(x509.get())))
    {
        info.validitySeconds = (validTo.ticks() - validFrom.ticks()) / ticksPerSecond;
    }

    static std::shared_ptr<const Data> fromDER(const QByteArray& der)
    {
        const auto* next = reinterpret_cast<const unsigned char*>(der.constData());
        X509Ptr x509(d2i_X509(nullptr, &next, long(der.size())));
        return x509 ? std::make_shared<Data>(std::move(x509)) : nullptr;
    }

    X509Ptr x509;
    UaPkiIdentity subject;
    UaPkiIdentity issuer;
    UaPkiCertificateInfo info;
    UaDateTime validFrom;
    UaDateTime validTo;
};

UaPkiCertificate::UaPkiCertificate() = default;
UaPkiCertificate::UaPkiCertificate(const UaPkiCertificate&) = default;
UaPkiCertificate& UaPkiCertificate::operator=(const UaPkiCertificate&) = default;
UaPkiCertificate::~UaPkiCertificate() = default;

UaPkiCertificate::UaPkiCertificate(std::shared_ptr<const Data> data) : m_data(std::move(data)) {}

UaPkiCertificate::UaPkiCertificate(const UaPkiCertificateInfo& info, const UaPkiIdentity& subject,
                                   const UaPkiPublicKey& subjectKey, const UaPkiIdentity& issuer,
                                   const UaPkiPrivateKey& issuerKey)
{
    if (subjectKey.isNull() || issuerKey.isNull())
        return;
    const ErrorQueueGuard guard;
    X509Ptr x509 =
        create(info, subject, subjectKey.m_key->key.get(), issuer, issuerKey.m_key->key.get());
    if (x509)
        m_data = std::make_shared<Data>(std::move(x509));
}

UaPkiCertificate UaPkiCertificate::fromDERFile(const char* path)
{
    const ErrorQueueGuard guard;
    return UaPkiCertificate(Data::fromDER(contentOf(path)));
}

UaPkiCertificate UaPkiCertificate::fromPEMFile(const char* path)
{
    const ErrorQueueGuard guard;
    const QByteArray pem = contentOf(path);
    const BioPtr bio(BIO_new_mem_buf(pem.constData(), int(pem.size())));
    // Without a function of its own, OpenSSL would ask for a password at the terminal.
    const auto noPassword = [](char*, int, int, void*) { return -1; };
    X509Ptr x509(bio ? PEM_read_bio_X509(bio.get(), nullptr, noPassword, nullptr) : nullptr);
    return UaPkiCertificate(x509 ? std::make_shared<Data>(std::move(x509)) : nullptr);
}

UaPkiCertificate UaPkiCertificate::fromDER(const UaByteString& der)
{
    const ErrorQueueGuard guard;
    return UaPkiCertificate(Data::fromDER(der.bytes()));
}

bool UaPkiCertificate::isValid(const UaDateTime& time) const
{
    return !validFrom().isNull() && !validTo().isNull() && validFrom() <= time && time <= validTo();
}

UaDateTime UaPkiCertificate::validFrom() const
{
    return m_data ? m_data->validFrom : UaDateTime();
}

UaDateTime UaPkiCertificate::validTo() const
{
    return m_data ? m_data->validTo : UaDateTime();
}

const UaPkiIdentity& UaPkiCertificate::subject() const
{
    static const UaPkiIdentity none;
    return m_data ? m_data->subject : none;
}

const UaPkiIdentity& UaPkiCertificate::issuer() const
{
    static const UaPkiIdentity none;
    return m_data ? m_data->issuer : none;
}

const UaPkiCertificateInfo& UaPkiCertificate::info() const
{
    static const UaPkiCertificateInfo none;
    return m_data ? m_data->info : none;
}

UaByteString UaPkiCertificate::serialNumber() const
{
    if (!m_data)
        return {};
    const ASN1_INTEGER* number = X509_get0_serialNumber(m_data->x509.get());
    return UaByteString(ASN1_STRING_length(number), ASN1_STRING_get0_data(number));
}

UaByteString UaPkiCertificate::thumbprint() const
{
    unsigned char sha1[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    if (!m_data || !X509_digest(m_data->x509.get(), EVP_sha1(), sha1, &size))
        return {};
    return UaByteString(OpcUa_Int32(size), sha1);
}

UaPkiPublicKey UaPkiCertificate::publicKey() const
{
    const ErrorQueueGuard guard;
    UaPkiPublicKey result;
    if (KeyPtr key{m_data ? X509_get_pubkey(m_data->x509.get()) : nullptr})
        result.m_key = std::make_shared<UaPkiKeyData>(std::move(key));
    return result;
}

UaByteString UaPkiCertificate::toDER() const
{
    unsigned char* der = nullptr;
    const int size = m_data ? i2d_X509(m_data->x509.get(), &der) : 0;
    const UaByteString bytes(size, der);
    OPENSSL_free(der);
    return bytes;
}

bool UaPkiCertificate::toDERFile(const char* path) const
{
    const UaByteString der = toDER();
    return !der.isNull() && replaceFile(QFile::decodeName(path), der.bytes());
}

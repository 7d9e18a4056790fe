#include "platform/pki/certificate_p.h"
#include "platform/types/utf8text_p.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QUrl>
#include <QtNetwork/QHostAddress>

#include <algorithm>
#include <cctype>
#include <ctime>
#include <optional>

namespace {

constexpr int serialNumberBits = 127; // fixed, the first bit set, in 16 bytes with a zero sign bit
constexpr qint64 secondsPerDay = 86'400;

bool isLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isCountry(const QByteArray& text)
{
    return text.size() == 2 && isLetter(text[0]) && isLetter(text[1]);
}

bool addPart(X509_NAME* name, const NamePart& part, const UaString& text)
{
    return text.isEmpty() ||
           (!text.bytes().contains('\0') &&
            (part.nid != NID_countryName || isCountry(text.bytes())) &&
            X509_NAME_add_entry_by_NID(name, part.nid, MBSTRING_UTF8,
                                       reinterpret_cast<const unsigned char*>(text.toUtf8()),
                                       text.size(), -1, 0));
}

bool setName(X509_NAME* name, const UaPkiIdentity& identity)
{
    for (const NamePart& part : nameParts)
        if (!addPart(name, part, identity.*part.text))
            return false;
    return X509_NAME_entry_count(name) > 0;
}

/// The name in the characters that a certificate can hold; empty if it is no domain name.
QByteArray asciiDomain(const QByteArray& name)
{
    const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    const QByteArray domain =
        std::all_of(name.begin(), name.end(), isAscii) ? name : QUrl::toAce(textFromUtf8(name));
    for (const char c : domain)
        if (!isLetter(c) && !isDigit(c) && !QByteArrayView("-._*").contains(c))
            return {};
    return domain;
}

/// The bytes of an address that is written in full; empty if it is none.
QByteArray addressBytes(const QByteArray& text)
{
    const QHostAddress address(textFromUtf8(text));
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

/// The items of a list, each encoded; nothing if one cannot be, or if there is no item in the text.
std::optional<QByteArrayList> encodedItems(const UaString& list,
                                           QByteArray (*encode)(const QByteArray&))
{
    QByteArrayList items;
    for (const QByteArray& item : list.bytes().split(',')) {
        if (item.trimmed().isEmpty())
            continue;
        items.append(encode(item.trimmed()));
        if (items.last().isEmpty())
            return {};
    }
    if (items.isEmpty() && !list.isEmpty())
        return {};
    return items;
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
        const std::optional<QByteArrayList> domains = encodedItems(info.dnsName, asciiDomain);
        const std::optional<QByteArrayList> addresses = encodedItems(info.ipAddress, addressBytes);
        const GeneralNamesPtr names(GENERAL_NAMES_new());
        if (!names || !domains || !addresses ||
            !append(names.get(), GEN_URI, toUri(info.applicationUri.bytes())))
            return false;
        for (const QByteArray& domain : *domains)
            if (!append(names.get(), GEN_DNS, domain))
                return false;
        for (const QByteArray& address : *addresses)
            if (!append(names.get(), GEN_IPADD, address))
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
        static_cast<void>(name.release());
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

bool setValidity(X509* x509, const UaPkiCertificateInfo& info)
{
    constexpr OpcUa_Int64 longest = 10000 * 366 * secondsPerDay;
    const OpcUa_Int64 tolerance = info.clockToleranceSeconds;
    const OpcUa_Int64 validity = info.validitySeconds;
    if (tolerance < 0 || tolerance > longest || validity <= 0 || validity > longest)
        return false;
    std::time_t now = std::time(nullptr);
    const auto set = [&now](ASN1_TIME* time, OpcUa_Int64 seconds) {
        return X509_time_adj_ex(time, int(seconds / secondsPerDay), long(seconds % secondsPerDay),
                                &now);
    };
    return set(X509_getm_notBefore(x509), -tolerance) && set(X509_getm_notAfter(x509), validity);
}

} // namespace

QByteArray toUri(const QByteArray& text)
{
    constexpr QByteArrayView plain = "-._~!$&'()*+,;=:@/?";
    // Only an address in the authority has brackets.
    static const QRegularExpression authority("^[A-Za-z][A-Za-z0-9+.-]*://[^/?#]*");
    const auto isHex = [&text](qsizetype i) {
        return i < text.size() && std::isxdigit(static_cast<unsigned char>(text.at(i)));
    };
    const qsizetype authorityEnd = authority.match(QString::fromLatin1(text)).capturedEnd();
    QByteArray uri;
    bool inFragment = false;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char c = text.at(i);
        const bool startsFragment = c == '#' && !inFragment;
        if (isLetter(c) || isDigit(c) || plain.contains(c) || startsFragment ||
            (c == '%' && isHex(i + 1) && isHex(i + 2)) ||
            ((c == '[' || c == ']') && i < authorityEnd))
            uri += c;
        else
            uri += '%' + QByteArray(1, c).toHex().toUpper();
        inFragment |= startsFragment;
    }
    return uri;
}

CertificateText faultyText(const UaPkiCertificateInfo& info, const UaPkiIdentity& subject)
{
    const ErrorQueueGuard guard;
    CertificateText first = CertificateText::None;
    const auto check = [&first](CertificateText text, bool good) {
        if (!good)
            first = std::min(first, text);
    };
    const OpenSslPtr<X509_NAME, X509_NAME_free> name(X509_NAME_new());
    for (const NamePart& part : nameParts)
        check(part.which, addPart(name.get(), part, subject.*part.text));
    check(CertificateText::CommonName, !subject.commonName.isEmpty());
    check(CertificateText::ApplicationUri, !info.applicationUri.isEmpty());
    check(CertificateText::DnsName, encodedItems(info.dnsName, asciiDomain).has_value());
    check(CertificateText::IpAddress, encodedItems(info.ipAddress, addressBytes).has_value());
    return first;
}

X509Ptr writeCertificate(const UaPkiCertificateInfo& info, const UaPkiIdentity& subject,
                         EVP_PKEY* subjectKey, const UaPkiIdentity& issuer, EVP_PKEY* issuerKey)
{
    X509Ptr x509(X509_new());
    if (!x509)
        return nullptr;
    // What OPC 10000-6, 6.2.2 asks of an application instance certificate.
    QByteArray usages = "critical,digitalSignature,nonRepudiation,keyEncipherment,dataEncipherment";
    if (EVP_PKEY_eq(subjectKey, issuerKey) == 1) // self-signed
        usages += ",keyCertSign";
    ExtensionWriter extensions(x509.get());
    const bool done =
        X509_set_version(x509.get(), X509_VERSION_3) && setSerialNumber(x509.get()) &&
        !subject.commonName.isEmpty() && setName(X509_get_subject_name(x509.get()), subject) &&
        setName(X509_get_issuer_name(x509.get()), issuer) && setValidity(x509.get(), info) &&
        X509_set_pubkey(x509.get(), subjectKey) && extensions.addAlternativeNames(info) &&
        extensions.add(NID_basic_constraints, "critical,CA:FALSE") &&
        extensions.add(NID_key_usage, usages.constData()) &&
        extensions.add(NID_ext_key_usage, "serverAuth,clientAuth") &&
        extensions.addKeyIdentifiers(subjectKey, issuerKey) &&
        X509_sign(x509.get(), issuerKey, EVP_sha256()) > 0;
    return done ? std::move(x509) : nullptr;
}

#include "platform/pki/certificate_p.h"
#include "platform/types/utf8text_p.h"

#include <QtCore/QDateTime>
#include <QtNetwork/QHostAddress>

#include <ctime>

namespace {

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
        text = textFromUtf8(text).toUtf8();
    return text.contains('\0') ? text.replace('\0', "\xef\xbf\xbd") : text;
}

void append(UaString& list, const QByteArray& text)
{
    if (!text.isEmpty())
        list = UaString(list.isEmpty() ? text : list.bytes() + ", " + text);
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

} // namespace

UaPkiIdentity identityOf(const X509_NAME* name)
{
    UaPkiIdentity identity;
    for (int i = 0; i < X509_NAME_entry_count(name); ++i) {
        const X509_NAME_ENTRY* entry = X509_NAME_get_entry(name, i);
        const int nid = OBJ_obj2nid(X509_NAME_ENTRY_get_object(entry));
        for (const NamePart& part : nameParts)
            if (part.nid == nid)
                append(identity.*part.text, textOf(X509_NAME_ENTRY_get_data(entry)));
    }
    return identity;
}

UaString nameText(const X509_NAME* name)
{
    QByteArrayList parts;
    for (int i = 0; i < X509_NAME_entry_count(name); ++i) {
        const X509_NAME_ENTRY* entry = X509_NAME_get_entry(name, i);
        const ASN1_OBJECT* object = X509_NAME_ENTRY_get_object(entry);
        const int nid = OBJ_obj2nid(object);
        char oid[128]; // OpenSSL ends what is longer
        OBJ_obj2txt(oid, sizeof(oid), object, 1);
        const QByteArray label = nid == NID_undef ? oid : OBJ_nid2sn(nid);
        parts.insert(nid == NID_commonName ? 0 : parts.size(),
                     label + '=' + textOf(X509_NAME_ENTRY_get_data(entry)));
    }
    return UaString(parts.join(", "));
}

UaPkiCertificateInfo infoOf(const X509* x509)
{
    UaPkiCertificateInfo info;
    const GeneralNamesPtr names(static_cast<GENERAL_NAMES*>(
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
    const QDate date(parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday);
    const QTime clock(parts.tm_hour, parts.tm_min, parts.tm_sec);
    return UaDateTime(QDateTime(date, clock, Qt::UTC));
}

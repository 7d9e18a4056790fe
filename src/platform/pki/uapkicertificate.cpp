#include "uapkicertificate.h"

#include "platform/pki/certificate_p.h"
#include "platform/pki/filewriter_p.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <openssl/pem.h>

namespace {

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
    X509Ptr x509 = writeCertificate(info, subject, UaPkiKeyAccess::get(subjectKey), issuer,
                                    UaPkiKeyAccess::get(issuerKey));
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
    if (der.length() <= 0) // as of most endpoints without security: nothing to load OpenSSL for
        return {};
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

UaString UaPkiCertificate::subjectText() const
{
    return m_data ? nameText(X509_get_subject_name(m_data->x509.get())) : UaString();
}

UaString UaPkiCertificate::issuerText() const
{
    return m_data ? nameText(X509_get_issuer_name(m_data->x509.get())) : UaString();
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
    return UaPkiKeyAccess::make<UaPkiPublicKey>(
        KeyPtr(m_data ? X509_get_pubkey(m_data->x509.get()) : nullptr));
}

UaString UaPkiCertificate::signatureAlgorithm() const
{
    if (!m_data)
        return {};
    const X509_ALGOR* algorithm = nullptr;
    X509_get0_signature(nullptr, &algorithm, m_data->x509.get());
    char name[128]; // OpenSSL ends what is longer
    const int length = OBJ_obj2txt(name, sizeof(name), algorithm->algorithm, 0);
    return length > 0 ? UaString(name) : UaString();
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
    return !der.isNull() && replaceFile(QFile::decodeName(path), der.bytes().constData(),
                                        der.length(), FileReplacement::Access::Usual);
}

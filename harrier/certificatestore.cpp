#include "certificatestore.h"

#include <Kestrel/UaPkiCertificate>
#include <Kestrel/UaPkiRsaKeyPair>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QSysInfo>

namespace {

} // namespace

CertificateStore::CertificateStore(const QString& path)
    : folder(QDir(path).absolutePath() + QLatin1Char('/')),
      trusted(folder + QStringLiteral("trusted/")), issuers(folder + QStringLiteral("issuers/")),
      rejected(folder + QStringLiteral("rejected/")), keys(folder + QStringLiteral("private/")),
      certificate(trusted + QStringLiteral("harrier.der")),
      key(keys + QStringLiteral("harrier.pem"))
{
}

void CertificateStore::makeFolders(const std::function<void(const QString&)>& log) const
{
    for (const QString& path : {trusted, issuers, rejected, keys})
        if (!QDir().mkpath(path))
            log(QCoreApplication::translate("CertificateStore", "The folder %1 cannot be created")
                    .arg(path));
    QFile::setPermissions(keys, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

bool CertificateStore::makeOwnCertificate(const std::function<void(const QString&)>& log) const
{
    constexpr int bits = 2048; // the most that every policy takes
    constexpr OpcUa_Int64 day = 24 * 60 * 60;
    const QByteArray file = QFile::encodeName(certificate);
    const UaPkiCertificate old = UaPkiCertificate::fromDERFile(file);
    if (!old.isNull() && !old.isValid())
        log(QCoreApplication::translate(
                "CertificateStore",
                "The certificate %1 is not valid today; without it and its key, a new one is made")
                .arg(certificate));
    if (QFile::exists(certificate) || QFile::exists(key))
        return false;
    const UaPkiRsaKeyPair pair(bits);
    UaPkiIdentity identity;
    identity.commonName = "harrier";
    UaPkiCertificateInfo info;
    info.validitySeconds = 5 * 365 * day;
    info.clockToleranceSeconds = 5 * 60;
    UaPkiCertificate made;
    for (const QString& host : {QSysInfo::machineHostName(), QStringLiteral("localhost")}) {
        if (!made.isNull())
            break;
        info.dnsName = UaString(host);
        info.applicationUri = UaString(QStringLiteral("urn:%1:kestrel:harrier").arg(host));
        made = UaPkiCertificate(info, identity, pair.publicKey(), identity, pair.privateKey());
    }
    const bool isMade = pair.toPEMFile(QFile::encodeName(key)) && made.toDERFile(file);
    log((isMade
             ? QCoreApplication::translate("CertificateStore",
                                           "Made the certificate %1, which the server has to trust")
             : QCoreApplication::translate("CertificateStore", "The certificate %1 cannot be made"))
            .arg(certificate));
    return isMade;
}

QvelSessionOptions CertificateStore::sessionOptions() const
{
    QvelSessionOptions options;
    options.applicationName = QCoreApplication::applicationName();
    options.productUri = QStringLiteral("urn:kestrel:harrier");
    options.trust.trusted = options.trust.trustedCrl = trusted;
    options.trust.issuers = options.trust.issuersCrl = issuers;
    options.trust.rejected = rejected;
    options.certificateFile = certificate;
    options.privateKeyFile = key;
    return options;
}

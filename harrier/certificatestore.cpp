#include "certificatestore.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>

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

#pragma once

#include "certificates/certificateclock_p.h"

#include <QtTest/QtTest>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

/// The bytes of a file; they end the program if it cannot be read.
inline QByteArray contentOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s cannot be read", qPrintable(path));
    return file.readAll();
}

inline QByteArray fixture(const char* name)
{
    return contentOf(QString(FIXTURES "/%1").arg(name));
}

/// A DER certificate as PEM.
inline QByteArray toPem(const QByteArray& der)
{
    return "-----BEGIN CERTIFICATE-----\n" + der.toBase64() + "\n-----END CERTIFICATE-----\n";
}

/// A store on disk: its directory strings end with a separator.
class Store
{
public:
    Store()
    {
        for (const QString& path : {trusted(), rejected(), own(), QString(root() + "elsewhere/")})
            QDir().mkpath(path);
        setOpen(dir.path(), false);
    }
    QString root() const { return dir.path() + '/'; }
    QString trusted() const { return root() + "trusted/"; }
    QString rejected() const { return root() + "rejected/"; }
    QString own() const { return root() + "own/"; }
    QString ownCertificate() const { return trusted() + "own.der"; }
    QString ownKey() const { return own() + "own.pem"; }

    static void put(const QString& path, const QByteArray& content)
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("%s cannot be written", qPrintable(path));
    }
    /// Lets everybody in, for Unprivileged, and the owner write or nobody.
    static void setOpen(const QString& path, bool readOnly)
    {
        QFile::Permissions all = QFile::ReadOwner | QFile::ExeOwner | QFile::ReadGroup |
                                 QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther;
        QFile::setPermissions(path, readOnly ? all : all | QFile::WriteOwner);
    }
    /// All that is in the store, as "directory/name", in alphabetical order.
    QStringList files() const
    {
        QStringList names;
        QDirIterator each(dir.path(), QDir::Files | QDir::Hidden | QDir::System,
                          QDirIterator::Subdirectories);
        while (each.hasNext())
            names.append(QDir(dir.path()).relativeFilePath(each.next()));
        names.sort();
        return names;
    }

    QTemporaryDir dir;
};

/// Gives up the rights by which root reads and writes all files, as long as it lives.
class Unprivileged
{
public:
#ifdef Q_OS_UNIX
    Unprivileged() : m_user(geteuid())
    {
        if (m_user == 0 && seteuid(65534) != 0)
            qFatal("cannot become nobody");
    }
    ~Unprivileged()
    {
        if (seteuid(m_user) != 0)
            qFatal("cannot become root again");
    }

private:
    uid_t m_user;
#endif
};

inline OpcUa_DateTime storeTime = 0;

/// Sets the clock of validity to an ISO 8601 time.
inline void setTime(const char* time)
{
    bool ok = false;
    storeTime = UaDateTime::fromString(time, &ok).ticks();
    if (!ok)
        qFatal("%s is no time", time);
    setCertificateClock([] { return UaDateTime(storeTime); });
}

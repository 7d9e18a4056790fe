#pragma once

#include <QtTest/QtTest>

#include <sys/stat.h>
#include <unistd.h>

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

/// A store on disk, to which everybody has access.
class Store
{
public:
    Store()
    {
        setOpen(dir.path(), true);
        for (const char* name : {"trusted", "rejected", "own"})
            QDir(dir.path()).mkdir(name);
    }
    /// For "trusted/a.der", say; a directory string of the model ends with a separator.
    QString path(const QString& name) const { return dir.path() + '/' + name; }
    void put(const QString& name, const QByteArray& content) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("%s cannot be written", qPrintable(name));
    }
    /// Lets the owner write, or nobody.
    static void setOpen(const QString& path, bool writable)
    {
        const QFile::Permissions read = QFile::ReadOwner | QFile::ExeOwner | QFile::ReadOther |
                                        QFile::ExeOther | QFile::ReadGroup | QFile::ExeGroup;
        QFile::setPermissions(path, writable ? read | QFile::WriteOwner : read);
    }
    /// All that is in the store, in alphabetical order.
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
};

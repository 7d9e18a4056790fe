#pragma once

#include <QtTest/QtTest>

#include <sys/stat.h>

/// A folder for files, and for a store of certificates.
struct Store
{
    Store()
    {
        for (const char* name : {"trusted", "rejected", "own"})
            QDir(dir.path()).mkdir(name);
    }
    /// For "trusted/a.der", say; a directory string of the model ends with a separator.
    QString path(const QString& name) const { return dir.path() + '/' + name; }
    QString put(const QString& name, const QByteArray& content) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("%s cannot be written", qPrintable(name));
        return file.fileName();
    }
    QByteArray content(const QString& name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : "unreadable";
    }
    /// All that is in the store, in alphabetical order.
    QStringList files() const
    {
        QStringList names;
        QDirIterator each(dir.path(), QDir::Files | QDir::Hidden | QDir::System,
                          QDirIterator::Subdirectories);
        while (each.hasNext())
            names.append(each.next().mid(dir.path().size() + 1));
        names.sort();
        return names;
    }

    QTemporaryDir dir;
};

#include "filewriter_p.h"

#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>
#include <QtCore/QTemporaryFile>

#include <filesystem>
#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace {

bool isReplaceable(const QString& path)
{
    const QFileInfo info(path);
    return !path.isEmpty() && (!info.exists() || info.isFile());
}

bool syncToDisk(QFile& file)
{
#ifdef Q_OS_UNIX
    return fsync(file.handle()) == 0;
#else
    return file.flush();
#endif
}

} // namespace

bool replaceFile(const QString& path, const QByteArray& bytes)
{
    QSaveFile file(path);
    // Not buffered: commit() does not tell when the last of a buffer did not fit on the disk.
    return isReplaceable(path) && file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
           file.write(bytes) == bytes.size() && file.commit();
}

bool replaceSecretFile(const QString& path, const char* bytes, long long size)
{
    if (!isReplaceable(path))
        return false;
    // A link stays one; the file that it names is the one to replace.
    const QString existing = QFileInfo(path).canonicalFilePath();
    const QString target = existing.isEmpty() ? path : existing;
    // Temporary files are their owner's alone from the start.
    QTemporaryFile temporary(target + QStringLiteral(".XXXXXX"));
    QFile& file = temporary;
    if (!file.open(QIODevice::ReadWrite | QIODevice::Unbuffered) ||
        file.write(bytes, size) != size || !syncToDisk(file))
        return false;
    file.close();
    std::error_code error;
    std::filesystem::rename(QFileInfo(file).filesystemAbsoluteFilePath(),
                            QFileInfo(target).filesystemAbsoluteFilePath(), error);
    temporary.setAutoRemove(bool(error));
    return !error;
}

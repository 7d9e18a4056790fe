#include "filewriter_p.h"

#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>
#include <QtCore/QTemporaryFile>
#include <QtCore/QUuid>

#include <cerrno>
#include <filesystem>
#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace {

using Path = std::filesystem::path;

Path toPath(const QString& name)
{
    return QFileInfo(name).filesystemAbsoluteFilePath();
}

std::error_code syncToDisk(const QFileDevice& file)
{
#ifdef Q_OS_UNIX
    if (fsync(file.handle()) != 0)
        return {errno, std::generic_category()};
#else
    Q_UNUSED(file)
#endif
    return {};
}

/// A second name of a file, or a second file.
std::error_code keep(const Path& file, const Path& other)
{
    std::error_code error;
    std::filesystem::create_hard_link(file, other, error);
    if (error)
        std::filesystem::copy_file(file, other, error);
    return error;
}

} // namespace

struct FileReplacement::File
{
    QString path;   // as it was given
    QString target; // what it names
    std::unique_ptr<QFileDevice> written = {};
    Path before = {}; // what was there, under a name of its own
    bool replaced = false;

    QString replace()
    {
        if (auto* save = qobject_cast<QSaveFile*>(written.get())) {
            replaced = save->commit();
            return save->errorString();
        }
        auto& temporary = static_cast<QTemporaryFile&>(*written);
        temporary.close();
        std::error_code error;
        std::filesystem::rename(toPath(temporary.fileName()), toPath(target), error);
        replaced = !error;
        temporary.setAutoRemove(!replaced);
        return QString::fromStdString(error.message());
    }

    /// Gives back what was there before, if it was replaced.
    void undo()
    {
        std::error_code ignored;
        if (replaced && before.empty())
            std::filesystem::remove(toPath(target), ignored);
        else if (replaced)
            std::filesystem::rename(before, toPath(target), ignored);
        else
            forget();
    }
    void forget()
    {
        std::error_code ignored;
        if (!before.empty())
            std::filesystem::remove(before, ignored);
    }
};

FileReplacement::FileReplacement() = default;
FileReplacement::~FileReplacement() = default;

bool FileReplacement::fail(const QString& path, const QString& reason)
{
    m_failedPath = path;
    m_reason = reason;
    return false;
}

bool FileReplacement::fail(const QString& path, std::error_code reason)
{
    return fail(path, QString::fromStdString(reason.message()));
}

bool FileReplacement::write(const QString& path, const char* bytes, long long size, Access access)
{
    const QFileInfo info(path);
    if (path.isEmpty())
        return fail(path, std::make_error_code(std::errc::no_such_file_or_directory));
    if (info.exists() && !info.isFile())
        return fail(path, std::make_error_code(info.isDir() ? std::errc::is_a_directory
                                                            : std::errc::not_supported));
    // A link stays one; the file that it names is the one to replace.
    const QString target = info.exists() ? info.canonicalFilePath() : path;
    File file{path, target};
    // Not buffered: the last of a buffer might not fit on the disk, which is told to nobody.
    QIODevice::OpenMode mode = QIODevice::WriteOnly | QIODevice::Unbuffered;
    if (access == Access::OwnerOnly) { // as temporary files are from the start
        file.written = std::make_unique<QTemporaryFile>(target + QStringLiteral(".XXXXXX"));
        mode |= QIODevice::ReadOnly;
    } else {
        file.written = std::make_unique<QSaveFile>(target);
    }
    if (!file.written->open(mode) || file.written->write(bytes, size) != size)
        return fail(path, file.written->errorString());
    if (const std::error_code error = syncToDisk(*file.written))
        return fail(path, error);
    m_files.push_back(std::move(file));
    return true;
}

bool FileReplacement::commit()
{
    for (File& file : m_files) {
        std::error_code error;
        if (&file != &m_files.back() && QFileInfo::exists(file.target)) {
            file.before = toPath(file.target + u'.' + QUuid::createUuid().toString(QUuid::Id128));
            error = keep(toPath(file.target), file.before);
        }
        const QString reason = error ? QString::fromStdString(error.message()) : file.replace();
        if (!file.replaced) {
            for (File& each : m_files)
                each.undo();
            return fail(file.path, reason);
        }
    }
    for (File& file : m_files)
        file.forget();
    return true;
}

bool replaceFile(const QString& path, const char* bytes, long long size,
                 FileReplacement::Access access)
{
    FileReplacement replacement;
    return replacement.write(path, bytes, size, access) && replacement.commit();
}

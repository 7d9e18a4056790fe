#pragma once

#include <QtCore/QString>

#include <memory>
#include <system_error>
#include <vector>

class QFileDevice;

/// Files that are first written beside those that they replace, and then replace them, all or none.
class FileReplacement
{
public:
    enum class Access {
        Usual,
        OwnerOnly ///< at any time, also while it is written
    };

    FileReplacement();
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// Writes what `path` is to hold beside it; the bytes are not copied on their way. False, too,
    /// if `path` is there and no regular file.
    bool write(const QString& path, const char* bytes, long long size, Access access);
    /// Replaces the files. After a false, here or from write(), those that were there are there.
    bool commit();

    /// What failed, and why.
    const QString& failedPath() const { return m_failedPath; }
    const QString& reason() const { return m_reason; }

private:
    struct File;
    bool fail(const QString& path, const QString& reason);
    bool fail(const QString& path, std::error_code reason);

    std::vector<File> m_files;
    QString m_failedPath;
    QString m_reason;
};

/// One file alone.
bool replaceFile(const QString& path, const char* bytes, long long size,
                 FileReplacement::Access access);

#pragma once

class QByteArray;
class QString;

/// Writes a new file beside `path` and gives it that name, so that the file is there as a whole or
/// stays as it was. False, too, if `path` is there and no regular file.
bool replaceFile(const QString& path, const QByteArray& bytes);

/// As replaceFile(), with a file that nobody but its owner may access at any time. The bytes are
/// not copied on their way.
bool replaceSecretFile(const QString& path, const char* bytes, long long size);

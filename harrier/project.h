#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QString>

class QvelDiscoverySetting;

/// A project file: the servers that are open, and what is shown of each. JSON with a line for each
/// value, keys in alphabetical order, so that two of them can be compared. Nodes are named by the
/// URI of their namespace. Passwords are never in it.
namespace Project {

/// Of the format that is written. A file of a later one is not opened.
inline constexpr int version = 1;

/// False, with a sentence for the user in `error`, where the file cannot be read or is no project;
/// then `content` is as it was.
bool read(const QString& file, QJsonObject* content, QString* error);
/// The file is there as a whole or, after a false with a sentence in `error`, as it was before.
bool write(const QString& file, const QJsonObject& content, QString* error);

/// How to connect to a server. `json` keeps what else is in it.
void put(QJsonObject& json, const QvelDiscoverySetting& setting);
/// False where the text does not tell; then `error` does.
bool get(const QJsonObject& json, QvelDiscoverySetting* setting, QString* error);

} // namespace Project

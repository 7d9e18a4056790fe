#pragma once

#include <QtCore/QSettings>
#include <QtCore/QVariantMap>

#include <memory>

/// harrier's settings: a file of its own, or memory only.
///
/// A file that cannot be read as settings is left alone: what is written then stays in memory, so
/// that nothing of the file's content is lost.
class SettingsStore
{
public:
    /// In memory.
    SettingsStore() = default;
    explicit SettingsStore(const QString& file);
    /// Where harrier keeps its settings unless told otherwise.
    static QString defaultFile();

    /// The stored value, or an invalid QVariant.
    QVariant value(const QString& key) const;
    void setValue(const QString& key, const QVariant& value);
    /// Writes everything to the file. False with a text for the user if that failed, or if the file
    /// could not be used from the start.
    bool save(QString* error);
    /// What is wrong with the file; empty if nothing.
    QString error() const { return m_error; }

private:
    std::unique_ptr<QSettings> m_file;
    QVariantMap m_memory;
    QString m_error;
};

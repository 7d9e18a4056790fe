#include "settingsstore.h"

#include <QtCore/QCoreApplication>

namespace {

QString describe(QSettings::Status status, const QString& file)
{
    if (status == QSettings::FormatError)
        return QCoreApplication::translate("SettingsStore",
                                           "The settings file %1 is not a settings file. It is "
                                           "left as it is; settings of this run are not kept.")
            .arg(file);
    return QCoreApplication::translate("SettingsStore",
                                       "The settings file %1 cannot be read and written. "
                                       "Settings of this run are not kept.")
        .arg(file);
}

} // namespace

SettingsStore::SettingsStore(const QString& file)
    : m_file(std::make_unique<QSettings>(file, QSettings::IniFormat))
{
    const QStringList keys = m_file->allKeys(); // parses the whole file, which is lazy otherwise
    QSettings::Status status = m_file->status();
    if (status == QSettings::NoError && !m_file->isWritable())
        status = QSettings::AccessError;
    if (status == QSettings::NoError)
        return;
    m_error = describe(status, file);
    for (const QString& key : keys)
        m_memory.insert(key, m_file->value(key));
    m_file.reset();
}

QString SettingsStore::defaultFile()
{
    return QSettings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("kestrel"),
                     QStringLiteral("harrier"))
        .fileName();
}

QVariant SettingsStore::value(const QString& key) const
{
    return m_file ? m_file->value(key) : m_memory.value(key);
}

void SettingsStore::setValue(const QString& key, const QVariant& value)
{
    if (m_file)
        m_file->setValue(key, value);
    else
        m_memory.insert(key, value);
}

bool SettingsStore::save(QString* error)
{
    if (m_file) {
        m_file->sync();
        if (m_file->status() != QSettings::NoError)
            m_error = describe(m_file->status(), m_file->fileName());
    }
    *error = m_error;
    return m_error.isEmpty();
}

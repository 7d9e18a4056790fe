#pragma once

#include <Kestrel/QvelDiscoveryCBInterface>
#include <Kestrel/QvelSettingsCBInterface>

#include <QtCore/QtCore>

/// A host's settings store in memory. Notes the keys in the order of their writing. A use outside
/// of the open/close bracket ends the program.
template <class Interface>
class MemoryStore : public Interface
{
public:
    void* openSettings() override
    {
        if (m_open)
            qFatal("settings opened twice");
        m_open = true;
        return this;
    }
    void closeSettings(void* handle) override
    {
        check(handle);
        m_open = false;
    }
    QVariant readSetting(void* handle, const QString& key) override
    {
        check(handle);
        ++reads;
        return values.value(key, fallback);
    }
    void writeSetting(void* handle, const QString& key, const QVariant& value) override
    {
        check(handle);
        written.append(key);
        values.insert(key, value);
    }
    bool isOpen() const { return m_open; }

    QHash<QString, QVariant> values;
    QVariant fallback; ///< what an absent key reads as
    QStringList written;
    int reads = 0;

private:
    void check(void* handle) const
    {
        if (!m_open || handle != this)
            qFatal("settings used without having been opened");
    }

    bool m_open = false;
};

/// With the log of what was discovered.
class MemorySettings : public MemoryStore<QvelDiscoveryCBInterface>
{
public:
    void logMessage(const QString& text) override
    {
        const QMutexLocker lock(&m_mutex);
        m_log.append(text);
    }
    QStringList log() const
    {
        const QMutexLocker lock(&m_mutex);
        return m_log;
    }

private:
    mutable QMutex m_mutex;
    QStringList m_log;
};

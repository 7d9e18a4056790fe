#pragma once

#include "settingsstore.h"

#include <Kestrel/QvelDiscoveryCBInterface>
#include <Kestrel/QvelSettingsCBInterface>

#include <functional>
#include <utility>

/// The settings operations that both callback interfaces share, over one group of a store.
template <class Interface>
class StoreCallback : public Interface
{
public:
    /// `store` must outlive this object.
    StoreCallback(SettingsStore& store, const QString& group)
        : m_store(store), m_prefix(group + QLatin1Char('/'))
    {
    }

    void* openSettings() override { return &m_store; }
    void closeSettings(void*) override {}
    QVariant readSetting(void* handle, const QString& key) override
    {
        return static_cast<SettingsStore*>(handle)->value(m_prefix + key);
    }
    void writeSetting(void* handle, const QString& key, const QVariant& value) override
    {
        static_cast<SettingsStore*>(handle)->setValue(m_prefix + key, value);
    }

private:
    SettingsStore& m_store;
    QString m_prefix;
};

/// The host's side of the edit fields that load and save files. It tells which file was named.
class EditorCallback : public StoreCallback<QvelSettingsCBInterface>
{
public:
    using FileNamed = std::function<void(const QString& key, const QString& file)>;

    EditorCallback(SettingsStore& store, const QString& group, FileNamed fileNamed = {})
        : StoreCallback(store, group), m_fileNamed(std::move(fileNamed))
    {
    }

    void writeSetting(void* handle, const QString& key, const QVariant& value) override
    {
        StoreCallback::writeSetting(handle, key, value);
        if (m_fileNamed)
            m_fileNamed(key, value.toString());
    }

private:
    FileNamed m_fileNamed;
};

/// The host's side of discovery: a group of the store, and a log that takes lines on any thread.
class DiscoveryCallback : public StoreCallback<QvelDiscoveryCBInterface>
{
public:
    using Log = std::function<void(const QString&)>;

    DiscoveryCallback(SettingsStore& store, const QString& group, Log log)
        : StoreCallback(store, group), m_log(std::move(log))
    {
    }

    void logMessage(const QString& text) override { m_log(text); }

private:
    Log m_log;
};

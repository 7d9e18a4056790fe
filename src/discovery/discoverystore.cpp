#include "discoverystore_p.h"

#include "discovery/discoverycbinterface.h"

static QString recordPrefix(int index)
{
    return QString("RecentServer%1.").arg(index);
}

static QString urlKey(int index)
{
    return QString("DiscoveryServer%1").arg(index);
}

DiscoveryStore::DiscoveryStore(QvelDiscoveryCBInterface* callback)
    : m_callback(callback), m_handle(callback->openSettings())
{
}

DiscoveryStore::~DiscoveryStore()
{
    m_callback->closeSettings(m_handle);
}

QVariant DiscoveryStore::get(const QString& key)
{
    return m_callback->readSetting(m_handle, key);
}

void DiscoveryStore::put(const QString& key, const QVariant& value)
{
    m_callback->writeSetting(m_handle, key, value);
}

bool DiscoveryStore::isThere(int index, const QvelDiscoverySetting*)
{
    return QvelDiscoverySetting::isStored(m_callback, m_handle, recordPrefix(index));
}

bool DiscoveryStore::isThere(int index, const QString*)
{
    return get(urlKey(index)).isValid();
}

void DiscoveryStore::get(int index, QvelDiscoverySetting& record)
{
    record = QvelDiscoverySetting::fromSetting(m_callback, m_handle, recordPrefix(index), budget);
}

void DiscoveryStore::get(int index, QString& url)
{
    url = get(urlKey(index)).toString();
}

void DiscoveryStore::put(int index, const QvelDiscoverySetting& record)
{
    record.storeSettings(m_callback, m_handle, recordPrefix(index));
}

void DiscoveryStore::put(int index, const QString& url)
{
    put(urlKey(index), url);
}

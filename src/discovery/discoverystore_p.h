#pragma once

#include "discovery/discoverysetting.h"
#include "discovery/storedentries_p.h"

#include <QtCore/QList>
#include <QtCore/QVariant>

#include <limits>
#include <utility>

class QvelDiscoveryCBInterface;

/// The host's settings store, open as long as this lives.
class DiscoveryStore
{
public:
    explicit DiscoveryStore(QvelDiscoveryCBInterface* callback);
    ~DiscoveryStore();
    DiscoveryStore(const DiscoveryStore&) = delete;
    DiscoveryStore& operator=(const DiscoveryStore&) = delete;

    QVariant get(const QString& key);
    void put(const QString& key, const QVariant& value);
    bool isThere(int index, const QvelDiscoverySetting*);
    bool isThere(int index, const QString*);
    void get(int index, QvelDiscoverySetting& record);
    void get(int index, QString& url);
    void put(int index, const QvelDiscoverySetting& record);
    void put(int index, const QString& url);

    StoredEntries budget;

private:
    QvelDiscoveryCBInterface* m_callback;
    void* m_handle;
};

/// Whether the store has nothing there. (Some hosts answer with an empty text then.)
inline bool isAbsent(const QVariant& value)
{
    return !value.isValid() || (value.userType() == QMetaType::QString && value == QString());
}

/// A list in the store that is read once and written once. What was there but could not be read
/// is not lost by that: it is looked for again before the list is written.
template <class Entry>
class StoredList
{
public:
    explicit StoredList(const char* countKey) : m_countKey(countKey) {}

    /// What the list holds; an entry without any key in the store is empty.
    QList<Entry> read(DiscoveryStore& store)
    {
        bool known = false;
        const int count = store.get(m_countKey).toInt(&known);
        const QList<Entry> entries = readFrom(0, count, store);
        m_read = int(entries.size());
        for (int index = 0; index < m_read; ++index) {
            if (!isThere(index, store))
                m_blank.append(index);
        }
        m_complete = known && m_read >= count;
        return entries;
    }
    /// What read() missed, to be called before anything is written.
    QList<Entry> readMissed(DiscoveryStore& store)
    {
        if (m_tooLong)
            return {};
        QList<Entry> entries;
        if (!m_complete) {
            const QVariant value = store.get(m_countKey);
            bool known = false;
            int count = value.toInt(&known);
            if (!known && !isAbsent(value))
                count = std::numeric_limits<int>::max(); // damaged: the entries have to tell
            entries = readFrom(m_read, count, store);
        }
        for (const int index : std::as_const(m_blank)) {
            if (isThere(index, store))
                store.get(index, entries.emplaceBack());
        }
        return entries;
    }
    /// More than can be read: the list is to be left as it is.
    bool isTooLong() const { return m_tooLong; }
    void writeCount(DiscoveryStore& store, int count) const { store.put(m_countKey, count); }

private:
    static bool isThere(int index, DiscoveryStore& store)
    {
        return store.isThere(index, static_cast<const Entry*>(nullptr));
    }
    QList<Entry> readFrom(int first, int count, DiscoveryStore& store)
    {
        const int length =
            entriesToRead(count, store.budget, [&](int index) { return isThere(index, store); });
        m_tooLong = length < 0;
        QList<Entry> entries;
        for (int index = first; index < length; ++index)
            store.get(index, entries.emplaceBack());
        return entries;
    }

    const char* m_countKey;
    int m_read = 0;
    QList<int> m_blank; // read without any key
    bool m_complete = false;
    bool m_tooLong = false;
};

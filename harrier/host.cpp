#include "host.h"

Host::Host(SettingsStore& store, int timeout, const QString& dataFolder)
    : m_store(store), m_editorCallback(store, QStringLiteral("Editors"),
                                       [this](const QString& key, const QString& file) {
                                           Q_EMIT editorFileNamed(key, file);
                                       }),
      m_timeout(timeout), m_dataFolder(dataFolder)
{
    if (dataFolder.isEmpty()) {
        m_temporaryFolder = std::make_unique<QTemporaryDir>();
        m_dataFolder = m_temporaryFolder->path();
    }
    if (!store.error().isEmpty())
        m_log.appendFailure(store.error());
}

bool Host::hasEndpoint() const
{
    return m_endpoint != QvelDiscoverySetting();
}

void Host::setEndpoint(const QvelDiscoverySetting& endpoint)
{
    // Goes through a copy: the record empties its description when it is assigned to itself.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const QvelDiscoverySetting copy(endpoint);
    m_endpoint = copy;
    Q_EMIT endpointChanged(m_endpoint);
}

#include "host.h"

#include "language.h"

Host::Host(SettingsStore& store, int timeout, const QString& dataFolder)
    : m_store(store), m_editorCallback(store, QStringLiteral("Editors"),
                                       [this](const QString& key, const QString& file) {
                                           Q_EMIT editorFileNamed(key, file);
                                       }),
      m_timeout(timeout), m_dataFolder(dataFolder)
{
    Language::install(store.value(Language::key).toString());
    if (dataFolder.isEmpty()) {
        m_temporaryFolder = std::make_unique<QTemporaryDir>();
        m_dataFolder = m_temporaryFolder->path();
    }
    m_certificates =
        std::make_unique<CertificateStore>(m_dataFolder + QStringLiteral("/certificates"));
    if (!store.error().isEmpty())
        m_log.appendFailure(store.error());
}

void Host::needCertificate()
{
    const auto log = [this](const QString& text) { m_log.append(text); };
    m_certificates->makeFolders([this](const QString& text) { m_log.appendFailure(text); });
    if (m_certificates->makeOwnCertificate(log))
        Q_EMIT certificatesChanged();
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

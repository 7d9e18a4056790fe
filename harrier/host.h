#pragma once

#include "callbacks.h"
#include "certificatestore.h"
#include "logbuffer.h"

#include <Kestrel/QvelDiscoverySetting>

#include <QtCore/QObject>
#include <QtCore/QTemporaryDir>

#include <memory>

/// What the window and its pages share. It outlives all of them, and so do the callback interfaces
/// that the library's widgets were handed.
class Host : public QObject
{
    Q_OBJECT
public:
    /// `timeout` is in milliseconds a service call. Without a data folder, it is a temporary one.
    Host(SettingsStore& store, int timeout, const QString& dataFolder = {});

    SettingsStore& store() { return m_store; }
    LogBuffer& log() { return m_log; }
    EditorCallback& editorCallback() { return m_editorCallback; }
    int timeout() const { return m_timeout; }
    /// Where files of harrier's own are kept; absolute, and perhaps not there yet.
    QString dataFolder() const { return m_dataFolder; }
    const CertificateStore& certificates() const { return *m_certificates; }
    /// Makes harrier's own certificate if there is none, for a connection that needs one.
    void needCertificate();

    /// The endpoint that is current in the discovery tree; a default record if none is.
    const QvelDiscoverySetting& endpoint() const { return m_endpoint; }
    bool hasEndpoint() const;
    void setEndpoint(const QvelDiscoverySetting& endpoint);

Q_SIGNALS:
    /// The window has been painted for the first time.
    void started();
    void endpointChanged(const QvelDiscoverySetting& endpoint);
    /// The user wants to work with the current endpoint.
    void useEndpointRequested();
    /// The user wants to work with a connection that has settings of its own.
    void useConnectionRequested(const QvelDiscoverySetting& connection);
    /// The user wants a session with the current endpoint, or with these settings.
    void connectRequested();
    void connectionRequested(const QvelDiscoverySetting& connection);
    /// harrier made itself a certificate, or the store changed in another way.
    void certificatesChanged();
    /// An edit field remembered the name of a file that it loads or saved.
    void editorFileNamed(const QString& key, const QString& file);
    /// Something for the status line.
    void message(const QString& text);

private:
    SettingsStore& m_store;
    LogBuffer m_log;
    EditorCallback m_editorCallback;
    int m_timeout;
    std::unique_ptr<QTemporaryDir> m_temporaryFolder;
    QString m_dataFolder;
    std::unique_ptr<CertificateStore> m_certificates;
    QvelDiscoverySetting m_endpoint;
};

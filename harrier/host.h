#pragma once

#include "callbacks.h"
#include "logbuffer.h"

#include <Kestrel/QvelDiscoverySetting>

#include <QtCore/QObject>

/// What the window and its pages share. It outlives all of them, and so do the callback interfaces
/// that the library's widgets were handed.
class Host : public QObject
{
    Q_OBJECT
public:
    /// `timeout` is in milliseconds a service call.
    Host(SettingsStore& store, int timeout);

    SettingsStore& store() { return m_store; }
    LogBuffer& log() { return m_log; }
    EditorCallback& editorCallback() { return m_editorCallback; }
    int timeout() const { return m_timeout; }

    /// The endpoint that is current in the discovery tree; a default record if none is.
    const QvelDiscoverySetting& endpoint() const { return m_endpoint; }
    bool hasEndpoint() const;
    void setEndpoint(const QvelDiscoverySetting& endpoint);

Q_SIGNALS:
    void endpointChanged(const QvelDiscoverySetting& endpoint);
    /// The user wants to work with the current endpoint.
    void useEndpointRequested();
    /// The user wants to work with a connection that has settings of its own.
    void useConnectionRequested(const QvelDiscoverySetting& connection);
    /// An edit field remembered the name of a file that it loads or saved.
    void editorFileNamed(const QString& key, const QString& file);
    /// Something for the status line.
    void message(const QString& text);

private:
    SettingsStore& m_store;
    LogBuffer m_log;
    EditorCallback m_editorCallback;
    int m_timeout;
    QvelDiscoverySetting m_endpoint;
};

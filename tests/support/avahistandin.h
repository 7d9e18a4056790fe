#pragma once

#include <QtCore/QList>
#include <QtCore/QProcess>
#include <QtCore/QString>
#include <QtCore/QTemporaryDir>
#include <QtCore/QThread>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusVirtualObject>

#include <atomic>

/// A message bus of the test's own, the system bus of this process for as long as it lives.
class PrivateSystemBus
{
public:
    PrivateSystemBus();
    ~PrivateSystemBus();
    /// False when dbus-daemon could not be started.
    bool isRunning() const { return m_running; }
    QString address() const { return QStringLiteral("unix:path=") + m_dir.filePath("bus"); }

private:
    QTemporaryDir m_dir;
    QProcess m_daemon;
    QByteArray m_oldAddress;
    bool m_running = false;
};

/// What the stand-in for avahi-daemon does when it is asked.
struct AvahiScript
{
    struct Service
    {
        QString name;
        QString host; ///< empty: the service cannot be resolved
        ushort port = 4840;
        QString domain = QStringLiteral("local");
        bool silent = false; ///< its resolution is never answered
    };
    QList<Service> services;
    int copies = 1; ///< announcements of each service, one for each interface
    enum Fault {
        None,
        Refuses,   ///< ServiceBrowserNew fails
        Silent,    ///< ServiceBrowserNew is never answered
        Fails,     ///< the browser announces, then says Failure
        NeverDone, ///< the browser never says AllForNow
        Early      ///< signals go out before ServiceBrowserNew is answered
    } fault = None;
};

/// Owns org.freedesktop.Avahi on a bus, answering on a thread of its own.
class AvahiStandIn : public QDBusVirtualObject
{
public:
    AvahiStandIn(const QString& busAddress, const AvahiScript& script);
    ~AvahiStandIn() override;
    bool isRunning() const { return m_running; }
    /// Calls of ServiceBrowserNew and of ResolveService so far.
    int browserCalls() const { return m_browserCalls; }
    int resolveCalls() const { return m_resolveCalls; }

    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override;

private:
    void refuse(const QDBusMessage& message);
    void browse(const QDBusMessage& message);
    void announce(const QString& path, const QString& client);
    void resolve(const QDBusMessage& message);

    const AvahiScript m_script;
    QDBusConnection m_bus;
    std::atomic<int> m_browserCalls = 0;
    std::atomic<int> m_resolveCalls = 0;
    QThread m_thread;
    bool m_running = false;
};

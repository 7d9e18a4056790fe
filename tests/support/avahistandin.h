#pragma once

#include <QtDBus/QtDBus>

#include <atomic>

/// A message bus of the test's own, the system bus of this process, which has none once it has
/// gone.
class PrivateSystemBus
{
public:
    PrivateSystemBus()
    {
        m_daemon.start("dbus-daemon",
                       {"--session", "--nofork", "--print-address", "--address=" + address()});
        m_daemon.waitForReadyRead(); // it prints its address once it listens
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", address().toUtf8());
    }
    ~PrivateSystemBus()
    {
        m_daemon.kill();
        m_daemon.waitForFinished();
    }
    /// False when dbus-daemon could not be started.
    bool isRunning() const { return m_daemon.state() == QProcess::Running; }
    QString address() const { return QStringLiteral("unix:path=") + m_dir.filePath("bus"); }

private:
    QTemporaryDir m_dir;
    QProcess m_daemon;
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
    /// Refuses: ServiceBrowserNew fails; Silent: it is never answered; Fails: the browser
    /// announces, then says Failure; NeverDone: it never says AllForNow; Early: signals go out
    /// before ServiceBrowserNew is answered.
    enum Fault { None, Refuses, Silent, Fails, NeverDone, Early } fault = None;
};

/// Owns org.freedesktop.Avahi on a bus, answering on a thread of its own.
class AvahiStandIn : private QDBusVirtualObject
{
public:
    AvahiStandIn(const QString& busAddress, const AvahiScript& script)
        : m_script(script),
          m_bus(QDBusConnection::connectToBus(busAddress, "avahi-stand-in-" + busAddress))
    {
        qDBusRegisterMetaType<QList<QByteArray>>();
        m_running = m_bus.registerVirtualObject("/", this, QDBusConnection::SubPath) &&
                    m_bus.registerService(m_service);
        moveToThread(&m_thread);
        m_thread.start();
    }
    ~AvahiStandIn() override
    {
        m_thread.quit();
        m_thread.wait();
        m_bus.unregisterObject("/", QDBusConnection::UnregisterTree);
        QDBusConnection::disconnectFromBus(m_bus.name());
    }
    bool isRunning() const { return m_running; }

    std::atomic<int> browserCalls = 0; ///< of ServiceBrowserNew
    std::atomic<int> resolveCalls = 0; ///< of ResolveService

private:
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override
    {
        message.setDelayedReply(true);
        message.member() == u"ServiceBrowserNew" ? browse(message) : resolve(message);
        return true;
    }
    void refuse(const QDBusMessage& message)
    {
        m_bus.send(message.createErrorReply(m_service + ".TimeoutError", "Timeout reached"));
    }

    void browse(const QDBusMessage& message)
    {
        const QString path = QString("/Client/ServiceBrowser%1").arg(++browserCalls);
        const bool isRight = message.signature() == u"iissu" && message.arguments().at(2) == m_type;
        if (m_script.fault == AvahiScript::Early) {
            announce(path, message.service());
            QThread::msleep(100); // so that the client sees the signals by themselves
        }
        if (m_script.fault == AvahiScript::Refuses || !isRight)
            refuse(message);
        else if (m_script.fault != AvahiScript::Silent)
            m_bus.send(message.createReply(QVariant::fromValue(QDBusObjectPath(path))));
        if (m_script.fault != AvahiScript::Early)
            announce(path, message.service());
    }
    void announce(const QString& path, const QString& client)
    {
        const auto tell = [&](const QString& from, const QString& name, const QVariantList& what) {
            QDBusMessage signal = QDBusMessage::createTargetedSignal(
                client, from, m_service + ".ServiceBrowser", name);
            signal.setArguments(what);
            m_bus.send(signal);
        };
        for (const AvahiScript::Service& service : m_script.services)
            for (int interface = 0; interface < m_script.copies; ++interface)
                tell(path, "ItemNew", {interface, 0, service.name, m_type, service.domain, 0u});
        // What another browser of the same client finds is none of this one's business.
        tell(path + "0", "Failure", {"Not yours"});
        if (m_script.fault == AvahiScript::Fails)
            tell(path, "Failure", {"Timeout reached"});
        if (m_script.fault != AvahiScript::NeverDone)
            tell(path, "AllForNow", {});
    }
    void resolve(const QDBusMessage& message)
    {
        ++resolveCalls;
        const QVariantList asked = message.arguments();
        for (const AvahiScript::Service& service : m_script.services) {
            if (asked.value(2) != service.name || asked.value(4) != service.domain)
                continue;
            if (service.host.isEmpty())
                break;
            if (!service.silent)
                m_bus.send(message.createReply({2, 0, service.name, asked.value(3), service.domain,
                                                service.host, 0, QString(),
                                                QVariant::fromValue(service.port),
                                                QVariant::fromValue(QList<QByteArray>()), 0u}));
            return;
        }
        refuse(message);
    }

    const QString m_service = QStringLiteral("org.freedesktop.Avahi");
    const QString m_type = QStringLiteral("_opcua-tcp._tcp");
    const AvahiScript m_script;
    QDBusConnection m_bus;
    QThread m_thread;
    bool m_running = false;
};

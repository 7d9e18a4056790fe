#include "support/avahistandin.h"

#include <QtCore/QFile>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusMetaType>
#include <QtDBus/QDBusObjectPath>
#include <QtDBus/QDBusVirtualObject>

#include <atomic>

namespace {

const QByteArray systemBusVariable = "DBUS_SYSTEM_BUS_ADDRESS";
const QString serviceName = QStringLiteral("org.freedesktop.Avahi");

QByteArray busConfiguration(const QString& address)
{
    return "<busconfig><type>system</type><listen>" + address.toUtf8() +
           "</listen><auth>EXTERNAL</auth><policy context=\"default\"><allow user=\"*\"/>"
           "<allow own=\"*\"/><allow send_destination=\"*\" eavesdrop=\"true\"/>"
           "<allow receive_sender=\"*\" eavesdrop=\"true\"/></policy></busconfig>";
}

} // namespace

PrivateSystemBus::PrivateSystemBus() : m_oldAddress(qgetenv(systemBusVariable.constData()))
{
    const QString configuration = m_dir.filePath(QStringLiteral("bus.conf"));
    QFile file(configuration);
    if (!file.open(QIODevice::WriteOnly))
        return;
    file.write(busConfiguration(address()));
    file.close();
    m_daemon.start(QStringLiteral("dbus-daemon"),
                   {QStringLiteral("--nofork"), QStringLiteral("--print-address"),
                    QStringLiteral("--config-file=") + configuration});
    m_running = m_daemon.waitForReadyRead(); // it prints its address once it listens
    qputenv(systemBusVariable.constData(), address().toUtf8());
}

PrivateSystemBus::~PrivateSystemBus()
{
    if (m_oldAddress.isNull())
        qunsetenv(systemBusVariable.constData());
    else
        qputenv(systemBusVariable.constData(), m_oldAddress);
    m_daemon.kill();
    m_daemon.waitForFinished();
}

QString PrivateSystemBus::address() const
{
    return QStringLiteral("unix:path=") + m_dir.filePath(QStringLiteral("bus"));
}

class AvahiStandIn::Daemon : public QDBusVirtualObject
{
public:
    Daemon(const AvahiScript& script, const QString& busAddress)
        : m_script(script), m_name(QStringLiteral("avahi-stand-in-%1").arg(++instances)),
          m_bus(QDBusConnection::connectToBus(busAddress, m_name))
    {
    }
    ~Daemon() override
    {
        m_bus.unregisterObject(QStringLiteral("/"), QDBusConnection::UnregisterTree);
        QDBusConnection::disconnectFromBus(m_name);
    }

    bool enter()
    {
        qDBusRegisterMetaType<QList<QByteArray>>();
        return m_bus.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath) &&
               m_bus.registerService(serviceName);
    }
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override
    {
        if (message.interface() != serviceName + QStringLiteral(".Server"))
            return false;
        message.setDelayedReply(true);
        if (message.member() == QStringLiteral("ServiceBrowserNew"))
            browse(message, bus);
        else if (message.member() == QStringLiteral("ResolveService"))
            resolve(message, bus);
        else
            return false;
        return true;
    }

    std::atomic<int> browserCalls = 0;
    std::atomic<int> resolveCalls = 0;

private:
    void browse(const QDBusMessage& message, const QDBusConnection& bus)
    {
        const int number = ++browserCalls;
        if (m_script.silent)
            return;
        const bool asksForOpcUa = message.signature() == QStringLiteral("iissu") &&
                                  message.arguments().at(2) == QStringLiteral("_opcua-tcp._tcp");
        if (m_script.refuses || !asksForOpcUa) {
            bus.send(message.createErrorReply(serviceName + QStringLiteral(".TooManyObjectsError"),
                                              QStringLiteral("Too many objects")));
            return;
        }
        const QString path = QStringLiteral("/Client/ServiceBrowser%1").arg(number);
        const QDBusMessage reply = message.createReply(QVariant::fromValue(QDBusObjectPath(path)));
        if (!m_script.early)
            bus.send(reply);
        announce(path, message.service(), bus);
        if (m_script.early) {
            QThread::msleep(100); // so that the client sees the signals by themselves
            bus.send(reply);
        }
    }

    void announce(const QString& path, const QString& client, const QDBusConnection& bus)
    {
        const auto emitSignal = [&](const QString& from, const char* name,
                                    const QVariantList& arguments) {
            QDBusMessage signal = QDBusMessage::createTargetedSignal(
                client, from, serviceName + QStringLiteral(".ServiceBrowser"), QLatin1String(name));
            signal.setArguments(arguments);
            bus.send(signal);
        };
        const auto item = [](int interface, const QString& name, const QString& domain) {
            return QVariantList{interface, 0, name, QStringLiteral("_opcua-tcp._tcp"), domain, 0u};
        };
        for (int i = 0; i < m_script.services.size(); ++i) {
            for (int copy = 0; copy < m_script.copies; ++copy)
                emitSignal(
                    path, "ItemNew",
                    item(copy, m_script.services.at(i).name, m_script.services.at(i).domain));
        }
        // What another browser of the same client finds is none of this one's business.
        emitSignal(path + QStringLiteral("0"), "Failure", {QStringLiteral("Not yours")});
        if (m_script.fails)
            emitSignal(path, "Failure", {QStringLiteral("Timeout reached")});
        if (!m_script.neverDone)
            emitSignal(path, "AllForNow", {});
    }

    void resolve(const QDBusMessage& message, const QDBusConnection& bus)
    {
        ++resolveCalls;
        const QVariantList asked = message.arguments();
        for (const AvahiScript::Service& service : m_script.services) {
            if (asked.value(2) != service.name || asked.value(4) != service.domain)
                continue;
            if (service.silent)
                return;
            if (service.host.isEmpty())
                break;
            QDBusMessage reply = message.createReply();
            reply.setArguments({2, 0, service.name, asked.value(3), service.domain, service.host, 0,
                                QString(), QVariant::fromValue(ushort(4840)),
                                QVariant::fromValue(QList<QByteArray>()), 0u});
            bus.send(reply);
            return;
        }
        bus.send(message.createErrorReply(serviceName + QStringLiteral(".TimeoutError"),
                                          QStringLiteral("Timeout reached")));
    }

    static inline std::atomic<int> instances = 0;
    const AvahiScript m_script;
    const QString m_name;
    QDBusConnection m_bus;
};

AvahiStandIn::AvahiStandIn(const QString& busAddress, const AvahiScript& script)
    : m_daemon(std::make_unique<Daemon>(script, busAddress))
{
    m_running = m_daemon->enter();
    m_daemon->moveToThread(&m_thread);
    m_thread.start();
}

AvahiStandIn::~AvahiStandIn()
{
    m_thread.quit();
    m_thread.wait();
}

int AvahiStandIn::browserCalls() const
{
    return m_daemon->browserCalls;
}

int AvahiStandIn::resolveCalls() const
{
    return m_daemon->resolveCalls;
}

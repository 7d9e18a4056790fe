#include "support/avahistandin.h"

#include <QtCore/QFile>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusMetaType>
#include <QtDBus/QDBusObjectPath>

namespace {

constexpr char busVariable[] = "DBUS_SYSTEM_BUS_ADDRESS";
const QString serviceName = QStringLiteral("org.freedesktop.Avahi");
const QString serviceType = QStringLiteral("_opcua-tcp._tcp");

} // namespace

PrivateSystemBus::PrivateSystemBus() : m_oldAddress(qgetenv(busVariable))
{
    QFile file(m_dir.filePath("bus.conf"));
    if (!file.open(QIODevice::WriteOnly))
        return;
    file.write("<busconfig><type>system</type><listen>" + address().toUtf8() +
               "</listen><auth>EXTERNAL</auth><policy context=\"default\"><allow user=\"*\"/>"
               "<allow own=\"*\"/><allow send_destination=\"*\" eavesdrop=\"true\"/>"
               "<allow receive_sender=\"*\" eavesdrop=\"true\"/></policy></busconfig>");
    file.close();
    m_daemon.start("dbus-daemon",
                   {"--nofork", "--print-address", "--config-file=" + file.fileName()});
    m_running = m_daemon.waitForReadyRead(); // it prints its address once it listens
    qputenv(busVariable, address().toUtf8());
}

PrivateSystemBus::~PrivateSystemBus()
{
    m_oldAddress.isNull() ? qunsetenv(busVariable) : qputenv(busVariable, m_oldAddress);
    m_daemon.kill();
    m_daemon.waitForFinished();
}

AvahiStandIn::AvahiStandIn(const QString& busAddress, const AvahiScript& script)
    : m_script(script),
      m_bus(QDBusConnection::connectToBus(busAddress, "avahi-stand-in-" + busAddress))
{
    qDBusRegisterMetaType<QList<QByteArray>>();
    m_running = m_bus.registerVirtualObject("/", this, QDBusConnection::SubPath) &&
                m_bus.registerService(serviceName);
    moveToThread(&m_thread);
    m_thread.start();
}

AvahiStandIn::~AvahiStandIn()
{
    m_thread.quit();
    m_thread.wait();
    m_bus.unregisterObject("/", QDBusConnection::UnregisterTree);
    QDBusConnection::disconnectFromBus(m_bus.name());
}

bool AvahiStandIn::handleMessage(const QDBusMessage& message, const QDBusConnection&)
{
    message.setDelayedReply(true);
    if (message.member() == QLatin1String("ServiceBrowserNew"))
        browse(message);
    else if (message.member() == QLatin1String("ResolveService"))
        resolve(message);
    return true;
}

void AvahiStandIn::refuse(const QDBusMessage& message)
{
    m_bus.send(message.createErrorReply(serviceName + ".TimeoutError", "Timeout reached"));
}

void AvahiStandIn::browse(const QDBusMessage& message)
{
    const QString path = QString("/Client/ServiceBrowser%1").arg(++m_browserCalls);
    if (m_script.fault == AvahiScript::Silent)
        return;
    const bool isRight =
        message.signature() == QLatin1String("iissu") && message.arguments().at(2) == serviceType;
    if (m_script.fault == AvahiScript::Refuses || !isRight) {
        refuse(message);
        return;
    }
    const QDBusMessage reply = message.createReply(QVariant::fromValue(QDBusObjectPath(path)));
    if (m_script.fault != AvahiScript::Early)
        m_bus.send(reply);
    announce(path, message.service());
    if (m_script.fault == AvahiScript::Early) {
        QThread::msleep(100); // so that the client sees the signals by themselves
        m_bus.send(reply);
    }
}

void AvahiStandIn::announce(const QString& path, const QString& client)
{
    const auto tell = [&](const QString& from, const char* name, const QVariantList& what) {
        QDBusMessage signal = QDBusMessage::createTargetedSignal(
            client, from, serviceName + ".ServiceBrowser", QLatin1String(name));
        signal.setArguments(what);
        m_bus.send(signal);
    };
    for (const AvahiScript::Service& service : m_script.services)
        for (int interface = 0; interface < m_script.copies; ++interface)
            tell(path, "ItemNew", {interface, 0, service.name, serviceType, service.domain, 0u});
    // What another browser of the same client finds is none of this one's business.
    tell(path + "0", "Failure", {"Not yours"});
    if (m_script.fault == AvahiScript::Fails)
        tell(path, "Failure", {"Timeout reached"});
    if (m_script.fault != AvahiScript::NeverDone)
        tell(path, "AllForNow", {});
}

void AvahiStandIn::resolve(const QDBusMessage& message)
{
    ++m_resolveCalls;
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
                            QString(), QVariant::fromValue(service.port),
                            QVariant::fromValue(QList<QByteArray>()), 0u});
        m_bus.send(reply);
        return;
    }
    refuse(message);
}

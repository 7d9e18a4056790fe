#include "platform/network/uanetworkbrowser.h"

#include "platform/stack/opcuastatuscodes.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QMap>
#include <QtCore/QObject>
#include <QtCore/QScopeGuard>
#include <QtCore/QSet>
#include <QtCore/QThread>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusObjectPath>
#include <QtDBus/QDBusPendingReply>

#include <algorithm>
#include <atomic>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

// The interfaces of avahi-daemon, org.freedesktop.Avahi.Server and .ServiceBrowser.
constexpr int anyInterface = -1;
constexpr int anyProtocol = -1;
constexpr uint lookupNoText = 4;
constexpr uint lookupNoAddress = 8;

constexpr int pollInterval = 10; // milliseconds
constexpr int maxWaitingSignals = 16 * UaNetworkBrowser::maxServices;
constexpr int maxResolving = 50;     // calls at once; a system bus takes 128 from a connection
constexpr ushort defaultPort = 4840; // of opc.tcp (OPC 10000-6, 7.2)
constexpr int maxNameLength = 253;   // octets of a domain name (RFC 1035, 2.3.4)

QString avahi(const char* name = "")
{
    return QLatin1String("org.freedesktop.Avahi") + QLatin1String(name);
}

/// Whether a name from the network can stand in a URL.
bool isHostName(const QString& name)
{
    return !name.isEmpty() && name.toUtf8().size() <= maxNameLength &&
           name.front().isLetterOrNumber() && std::all_of(name.begin(), name.end(), [](QChar c) {
               return c.isLetterOrNumber() || c == u'-' || c == u'_' || c == u'.';
           });
}

bool isInterrupted()
{
    return QThread::currentThread()->isInterruptionRequested();
}

/// The environment is asked each time; libdbus would remember what it was at first.
QString busAddress()
{
    return qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS",
                                QStringLiteral("unix:path=/var/run/dbus/system_bus_socket"));
}

/// Whether a bus answers at `address`. libdbus waits without limit for one that is there but
/// silent, so it is asked for its authentication mechanisms first. Addresses of another form than
/// that of a system bus count as answering.
UaStatus greetBus(const QString& address, const QDeadlineTimer& deadline)
{
    const QLatin1String prefix("unix:path=");
    const QByteArray path = QByteArray::fromPercentEncoding(
        address.mid(prefix.size()).section(u',', 0, 0).section(u';', 0, 0).toUtf8());
    sockaddr_un peer = {};
    peer.sun_family = AF_UNIX;
    if (!address.startsWith(prefix) || std::size_t(path.size()) >= sizeof(peer.sun_path))
        return OpcUa_Good;
    std::copy(path.begin(), path.end(), peer.sun_path);

    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const auto closer = qScopeGuard([fd] { close(fd); });
    const QByteArray greeting("\0AUTH\r\n", 7);
    if (connect(fd, reinterpret_cast<const sockaddr*>(&peer), sizeof(peer)) != 0 ||
        send(fd, greeting.constData(), greeting.size(), MSG_NOSIGNAL) != greeting.size())
        return OpcUa_BadConnectionRejected;
    pollfd answer = {fd, POLLIN, 0};
    while (poll(&answer, 1, pollInterval) <= 0) {
        if (isInterrupted())
            return OpcUa_BadShutdown;
        if (deadline.hasExpired())
            return OpcUa_BadTimeout;
    }
    return OpcUa_Good;
}

/// A connection to a bus that is this object's own: closing it ends all that the daemon
/// does for it.
class PrivateBus
{
public:
    explicit PrivateBus(const QString& address)
        : m_name(uniqueName()), m_bus(QDBusConnection::connectToBus(address, m_name))
    {
    }
    ~PrivateBus() { QDBusConnection::disconnectFromBus(m_name); }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;
    const QDBusConnection& bus() const { return m_bus; }

private:
    static QString uniqueName()
    {
        static std::atomic<quint64> count = 0;
        return QStringLiteral("kestrel-network-browser-%1").arg(++count);
    }

    const QString m_name;
    QDBusConnection m_bus;
};

/// One question to the daemon. The calling thread polls, as it may have no event loop, and running
/// one would let foreign events in.
class Inquiry : public QObject
{
    Q_OBJECT
public:
    explicit Inquiry(const QDBusConnection& bus) : m_bus(bus) {}

    UaStatus run(const QDeadlineTimer& deadline);
    QList<UaNetworkBrowseResult> results() const;

private Q_SLOTS:
    void signalArrived(const QDBusMessage& message);

private:
    QDBusPendingCall call(const QString& method, const QVariantList& arguments);
    UaStatus takeBrowser(const QDBusPendingReply<QDBusObjectPath>& reply);
    void takeSignals();
    void takeItem(const QVariantList& item);
    void takeComputers();

    QDBusConnection m_bus;
    QString m_browser;                // object path; empty until the daemon has answered
    QList<QDBusMessage> m_signals;    // that have yet to be looked at
    QSet<QStringList> m_services;     // name and domain
    QList<QVariantList> m_unresolved; // arguments of ResolveService
    QList<QDBusPendingCall> m_resolving;
    QMap<std::pair<QString, ushort>, QString> m_computers; // by lower-case host name and port
    bool m_allForNow = false;
    bool m_failed = false;
};

UaStatus Inquiry::run(const QDeadlineTimer& deadline)
{
    // The daemon may announce before it answers the call, so its signals are subscribed first.
    for (const char* signal : {"ItemNew", "AllForNow", "Failure"})
        m_bus.connect(avahi(), {}, avahi(".ServiceBrowser"), QLatin1String(signal), this,
                      SLOT(signalArrived(QDBusMessage)));
    const QDBusPendingReply<QDBusObjectPath> created =
        call(QStringLiteral("ServiceBrowserNew"),
             {anyInterface, anyProtocol, QStringLiteral("_opcua-tcp._tcp"), QString(), 0u});

    while (!deadline.hasExpired()) {
        if (isInterrupted())
            return OpcUa_BadShutdown;
        QCoreApplication::sendPostedEvents(this);
        if (m_browser.isEmpty() && created.isFinished()) {
            const UaStatus status = takeBrowser(created);
            if (status.isBad())
                return status;
        }
        if (!m_browser.isEmpty())
            takeSignals();
        takeComputers();
        if (m_failed)
            return OpcUa_BadCommunicationError;
        if (m_allForNow && m_resolving.isEmpty())
            return OpcUa_Good;
        QThread::msleep(pollInterval);
    }
    return m_allForNow || !m_computers.isEmpty() ? OpcUa_Good : OpcUa_BadTimeout;
}

QList<UaNetworkBrowseResult> Inquiry::results() const
{
    QList<UaNetworkBrowseResult> results;
    for (const QString& computer : m_computers)
        results.append({UaString(computer), UaNetworkBrowseResult::Computer});
    return results;
}

void Inquiry::signalArrived(const QDBusMessage& message)
{
    if (m_signals.size() < maxWaitingSignals)
        m_signals.append(message);
}

QDBusPendingCall Inquiry::call(const QString& method, const QVariantList& arguments)
{
    QDBusMessage message =
        QDBusMessage::createMethodCall(avahi(), QStringLiteral("/"), avahi(".Server"), method);
    message.setArguments(arguments);
    return m_bus.asyncCall(message);
}

UaStatus Inquiry::takeBrowser(const QDBusPendingReply<QDBusObjectPath>& reply)
{
    if (!reply.isError()) {
        m_browser = reply.value().path();
        return OpcUa_Good;
    }
    return reply.error().type() == QDBusError::ServiceUnknown ? OpcUa_BadConnectionRejected
                                                              : OpcUa_BadCommunicationError;
}

void Inquiry::takeSignals()
{
    for (const QDBusMessage& message : std::as_const(m_signals)) {
        if (message.path() != m_browser)
            continue;
        if (message.member() == u"ItemNew")
            takeItem(message.arguments());
        else if (message.member() == u"AllForNow")
            m_allForNow = true;
        else
            m_failed = true;
    }
    m_signals.clear();
}

/// Notes a service to be asked for its host and port, once although the daemon tells of it once for
/// each interface and protocol.
void Inquiry::takeItem(const QVariantList& item)
{
    const QString name = item.value(2).toString();
    const QString type = item.value(3).toString();
    const QString domain = item.value(4).toString();
    if (m_services.size() == UaNetworkBrowser::maxServices || name.size() > maxNameLength ||
        type.size() > maxNameLength || domain.size() > maxNameLength ||
        m_services.contains({name, domain}))
        return;
    m_services.insert({name, domain});
    m_unresolved.append(QVariantList{anyInterface, anyProtocol, name, type, domain, anyProtocol,
                                     lookupNoText | lookupNoAddress});
}

/// A service that cannot be resolved has gone; that is no failure of the inquiry.
void Inquiry::takeComputers()
{
    const auto take = [this](const QDBusPendingCall& call) {
        if (!call.isFinished())
            return false;
        const QVariantList resolved = call.reply().arguments();
        QString host = resolved.value(5).toString();
        const ushort port = resolved.value(8).value<ushort>();
        if (host.endsWith(u'.'))
            host.chop(1);
        if (!call.isError() && isHostName(host) && port != 0)
            m_computers.insert({host.toLower(), port},
                               port == defaultPort ? host : host + u':' + QString::number(port));
        return true;
    };
    m_resolving.removeIf(take);
    while (!m_unresolved.isEmpty() && m_resolving.size() < maxResolving)
        m_resolving.append(call(QStringLiteral("ResolveService"), m_unresolved.takeFirst()));
}

} // namespace

UaStatus UaNetworkBrowser::browse(const UaString&, QList<UaNetworkBrowseResult>& results)
{
    results.clear();
    const QDeadlineTimer deadline(browseTimeout);
    const QString address = busAddress();
    const UaStatus greeting = greetBus(address, deadline);
    if (greeting.isBad())
        return greeting;
    const PrivateBus bus(address);
    if (!bus.bus().isConnected())
        return OpcUa_BadConnectionRejected;
    Inquiry inquiry(bus.bus());
    const UaStatus status = inquiry.run(deadline);
    if (status.isGood())
        results = inquiry.results();
    return status;
}

#include "uanetworkbrowser_linux.moc"

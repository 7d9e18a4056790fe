#include "connector_p.h"

#include <QtCore/QDeadlineTimer>
#include <QtNetwork/QNetworkProxy>

#include <algorithm>
#include <climits>

namespace UaWire {

namespace {

// The families by turns, that of the first address first; in each the order stays.
QList<QHostAddress> interleaved(const QList<QHostAddress>& addresses)
{
    QList<QHostAddress> families[2];
    for (const QHostAddress& address : addresses)
        families[address.protocol() != addresses.first().protocol()].append(address);
    QList<QHostAddress> result;
    for (qsizetype i = 0; result.size() < addresses.size(); ++i)
        for (const QList<QHostAddress>& family : families)
            if (i < family.size())
                result.append(family[i]);
    return result;
}

// How much the failure of one address tells about the host.
int weight(OpcUa_StatusCode status)
{
    constexpr OpcUa_StatusCode byWeight[] = {OpcUa_BadTimeout, OpcUa_BadConnectionRejected};
    const auto found = std::find(std::begin(byWeight), std::end(byWeight), status);
    return found == std::end(byWeight) ? 0 : int(found - byWeight) + 1;
}

} // namespace

OpcUa_StatusCode socketStatus(QAbstractSocket::SocketError error)
{
    switch (error) {
    case QAbstractSocket::ConnectionRefusedError:
        return OpcUa_BadConnectionRejected;
    case QAbstractSocket::RemoteHostClosedError:
        return OpcUa_BadConnectionClosed;
    case QAbstractSocket::SocketTimeoutError:
        return OpcUa_BadTimeout;
    default: // no route to the host, ...
        return OpcUa_BadCommunicationError;
    }
}

Connector::Connector(HostResolver& resolver, QObject* parent)
    : QObject(parent), m_resolver(resolver), m_timeout(this), m_next(this)
{
    m_timeout.setSingleShot(true);
    m_timeout.setTimerType(Qt::PreciseTimer);
    connect(&m_timeout, &QTimer::timeout, this, [this] { finish(OpcUa_BadTimeout); });
    m_next.setSingleShot(true);
    connect(&m_next, &QTimer::timeout, this, &Connector::tryNext);
}

Connector::~Connector()
{
    for (const std::unique_ptr<QTcpSocket>& socket : m_attempts)
        socket->disconnect(this);
}

void Connector::start(const QString& host, quint16 port, const QDeadlineTimer& deadline,
                      QIODevice::OpenMode mode)
{
    m_port = port;
    m_mode = mode;
    if (!deadline.isForever())
        m_timeout.start(int(std::min<qint64>(deadline.remainingTime(), INT_MAX)));
    m_lookup = std::make_unique<HostLookup>(host, m_resolver);
    connect(m_lookup.get(), &HostLookup::finished, this, &Connector::takeAddresses);
}

void Connector::takeAddresses()
{
    const HostAddresses result = m_lookup->result();
    if (m_finished)
        return;
    if (OpcUa_IsNotGood(result.status) || result.addresses.isEmpty()) {
        finish(OpcUa_IsGood(result.status) ? m_status : result.status);
        return;
    }
    m_addresses = interleaved(result.addresses);
    m_next.start(0);
    Q_EMIT hostFound();
}

void Connector::tryNext()
{
    const QHostAddress address = m_addresses.takeFirst();
    if (!m_addresses.isEmpty())
        m_next.start(attemptDelay);
    QTcpSocket* const socket = m_attempts.emplace_back(std::make_unique<QTcpSocket>()).get();
    socket->setProxy(QNetworkProxy::NoProxy);
    connect(socket, &QTcpSocket::connected, this, [this, socket] {
        const auto winner = std::find_if(m_attempts.begin(), m_attempts.end(),
                                         [&](const auto& each) { return each.get() == socket; });
        m_socket = std::move(*winner);
        m_attempts.erase(winner);
        m_socket->disconnect(this);
        finish(OpcUa_Good);
    });
    connect(socket, &QTcpSocket::errorOccurred, this, [this, socket] { attemptFailed(*socket); });
    socket->connectToHost(address, m_port, m_mode);
}

void Connector::attemptFailed(QTcpSocket& socket)
{
    socket.disconnect(this);
    const OpcUa_StatusCode status = socketStatus(socket.error());
    if (weight(status) >= weight(m_status))
        m_status = status;
    ++m_failed;
    if (!m_addresses.isEmpty())
        m_next.start(0);
    else if (m_failed == m_attempts.size())
        finish(m_status);
}

void Connector::finish(OpcUa_StatusCode status)
{
    m_finished = true;
    m_status = status;
    m_timeout.stop();
    m_next.stop();
    // Their sockets go with this object, as one of them may be the caller.
    for (const std::unique_ptr<QTcpSocket>& attempt : m_attempts) {
        attempt->disconnect(this);
        attempt->abort();
    }
    Q_EMIT finished();
}

} // namespace UaWire

#include "sessionconnection_p.h"

#include "platform/wire/connector_p.h"
#include "platform/wire/endpointurl_p.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QPointer>
#include <QtCore/QThread>
#include <QtNetwork/QTcpSocket>

#include <algorithm>
#include <limits>

namespace UaWire {

namespace {

constexpr qsizetype readSize = 256 * 1024;
constexpr qint64 longestPause = 1000; // us

} // namespace

SessionConnection::SessionConnection(QObject* parent)
    : QObject(parent), m_timer(this), m_buffer(readSize, Qt::Uninitialized)
{
    m_clock.start();
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &SessionConnection::checkTime);
}

SessionConnection::~SessionConnection()
{
    if (!m_socket)
        return;
    m_socket->disconnect(this);
    if (isOpen() && m_socket->state() == QAbstractSocket::ConnectedState) {
        m_channel->close();
        flush();
        m_socket->disconnectFromHost();
    }
    m_socket->abort();
}

void SessionConnection::open(const QByteArray& url, const SecureChannel::Settings& settings,
                             int timeout)
{
    m_openDeadline = m_clock.elapsed() + timeout;
    const std::optional<EndpointAddress> address = parseEndpointUrl(url);
    if (!address) {
        QMetaObject::invokeMethod(
            this, [this] { close(OpcUa_BadTcpEndpointUrlInvalid); }, Qt::QueuedConnection);
        return;
    }
    m_connector = std::make_unique<Connector>();
    connect(m_connector.get(), &Connector::hostFound, this, &SessionConnection::hostFound);
    connect(m_connector.get(), &Connector::finished, this,
            [this, settings] { socketConnected(settings); });
    // What is read and written is in pieces of its own size: another buffer between, and the
    // notifiers that serve it, would cost more than the socket itself.
    m_connector->start(address->host, address->port, QDeadlineTimer(timeout),
                       QIODevice::ReadWrite | QIODevice::Unbuffered);
    arm();
}

void SessionConnection::socketConnected(const SecureChannel::Settings& settings)
{
    const OpcUa_StatusCode status = m_connector->status();
    m_socket = m_connector->takeSocket();
    m_connector.release()->deleteLater(); // it is signalling
    if (!m_socket)
        return close(status);
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    connect(m_socket.get(), &QTcpSocket::readyRead, this, &SessionConnection::readSocket);
    connect(m_socket.get(), &QTcpSocket::disconnected, this, [this] {
        readSocket(); // what came before
        close(socketStatus(m_socket->error()));
    });
    const QPointer<SessionConnection> self(this);
    Q_EMIT connected();
    if (!self)
        return;
    m_channel = std::make_unique<SecureChannel>(settings);
    m_channel->start(m_clock.elapsed());
    flush();
    readSocket(); // a notice of what is there already came too early
}

// What the answers of one read call for leaves together, after the last one.
void SessionConnection::readSocket()
{
    const QPointer<SessionConnection> self(this);
    if (m_answersAtATime > 1 && m_pause > 0)
        QThread::usleep(static_cast<unsigned long>(m_pause));
    m_isReading = true;
    m_answers = 0;
    readMessages();
    if (!self)
        return;
    m_isReading = false;
    const qint64 now = m_clock.nsecsElapsed() / 1000;
    const qint64 passed = now - std::exchange(m_lastRead, now);
    m_pause = std::min(longestPause, passed * m_answersAtATime / std::max(m_answers, 1));
    arm();
    Q_EMIT allAnswered();
}

void SessionConnection::readMessages()
{
    const QPointer<SessionConnection> self(this);
    qint64 size = m_buffer.size();
    while (m_channel && !m_closed && !m_isBroken && size == m_buffer.size()) {
        const bool wasOpen = isOpen();
        size = m_socket->read(m_buffer.data(), m_buffer.size());
        if (size < 0)
            return close(socketStatus(m_socket->error()));
        m_received += quint64(size);
        m_channel->receive(QByteArrayView(m_buffer).first(size), m_clock.elapsed());
        if (!wasOpen && isOpen()) {
            m_openDeadline = 0;
            Q_EMIT opened();
            if (!self)
                return;
        }
        while (const std::optional<Message> message = m_channel->next()) {
            m_lastMessage = SecureChannel::wallClock();
            const auto found = m_pending.find(message->requestId);
            if (found == m_pending.end())
                continue; // its caller has given it up
            const Done done = std::move(found->second.done);
            m_pending.erase(found);
            ++m_answers;
            done(message->abortCode, message->body);
            if (!self || m_closed)
                return;
        }
        if (m_channel->state() == SecureChannel::State::Failed)
            return close(m_channel->status(), m_channel->reason());
        flush();
    }
}

QByteArray SessionConnection::send(const QByteArray& body, int timeout, bool isSecret, Done done)
{
    OpcUa_StatusCode status = OpcUa_BadConnectionClosed;
    if (isOpen()) {
        const OpcUa_UInt32 id = m_channel->send(body);
        status = m_channel->sendStatus();
        if (id != 0) {
            ++m_requests;
            m_pending[id] = {m_clock.elapsed() + timeout, std::move(done)};
            if (m_isReading && !isSecret)
                return {};
            const QByteArray sent = flush();
            arm();
            return sent;
        }
    }
    // Later, as always.
    QMetaObject::invokeMethod(
        this, [status, done = std::move(done)] { done(status, {}); }, Qt::QueuedConnection);
    return {};
}

QByteArray SessionConnection::flush()
{
    const QByteArray bytes = m_channel ? m_channel->takeOutput() : QByteArray();
    if (bytes.isEmpty() || m_isBroken || !m_socket->isOpen()) // its end is told in a moment
        return {};
    m_sent += quint64(bytes.size());
    if (m_socket->write(bytes) < 0) {
        // Without a buffer, the socket is closed by that, and tells nothing any more.
        m_isBroken = true;
        const OpcUa_StatusCode status = socketStatus(m_socket->error());
        QMetaObject::invokeMethod(
            this, [this, status] { close(status); }, Qt::QueuedConnection);
        return {};
    }
    m_socket->flush();
    return m_socket->bytesToWrite() == 0 ? bytes : QByteArray();
}

void SessionConnection::checkTime()
{
    const qint64 now = m_clock.elapsed();
    if (m_openDeadline != 0 && now >= m_openDeadline)
        return close(OpcUa_BadTimeout);
    if (m_channel) {
        m_channel->tick(now);
        if (m_channel->state() == SecureChannel::State::Failed)
            return close(m_channel->status(), m_channel->reason());
        flush();
    }
    std::vector<Done> late;
    for (auto it = m_pending.begin(); it != m_pending.end();) {
        if (now >= it->second.deadline) {
            late.push_back(std::move(it->second.done));
            it = m_pending.erase(it);
        } else {
            ++it;
        }
    }
    const QPointer<SessionConnection> self(this);
    for (const Done& done : late) {
        done(OpcUa_BadTimeout, {});
        if (!self)
            return;
    }
    arm();
}

void SessionConnection::arm()
{
    if (m_closed)
        return;
    // A timer that is due early enough stays: most answers come long before their deadline.
    qint64 next = m_channel ? m_channel->nextTick() : std::numeric_limits<qint64>::max();
    if (m_openDeadline != 0)
        next = std::min(next, m_openDeadline);
    for (const auto& [id, pending] : m_pending)
        next = std::min(next, pending.deadline);
    if (next == std::numeric_limits<qint64>::max())
        return;
    const qint64 now = m_clock.elapsed();
    constexpr qint64 longest = 3'600'000;
    const auto delay = int(std::clamp<qint64>(next - now, 0, longest));
    if (!m_timer.isActive() || m_timer.remainingTime() > delay)
        m_timer.start(delay);
}

void SessionConnection::close(OpcUa_StatusCode status, const UaString& reason)
{
    if (m_closed)
        return;
    m_closed = true;
    m_timer.stop();
    m_connector.reset();
    if (m_socket) {
        m_socket->disconnect(this);
        m_socket->abort();
    }
    const QPointer<SessionConnection> self(this);
    abandon(OpcUa_BadConnectionClosed);
    if (self)
        Q_EMIT closed(status, reason);
}

void SessionConnection::abandon(OpcUa_StatusCode status)
{
    const auto pending = std::exchange(m_pending, {});
    for (const auto& entry : pending)
        entry.second.done(status, {});
}

} // namespace UaWire

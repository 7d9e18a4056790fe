#include "serviceconnection_p.h"

#include "platform/wire/connector_p.h"
#include "platform/wire/endpointurl_p.h"

#include <QtCore/QEventLoop>
#include <QtCore/QThread>

#include <algorithm>
#include <chrono>

namespace UaWire {

namespace {

// How often the thread's interruption and the deadline are looked at.
constexpr std::chrono::milliseconds pollInterval{20};
// The channel is closed after one call; the server need not keep it longer than this if it is not.
constexpr OpcUa_UInt32 channelLifetime = 600000; // ms
constexpr ChunkLimits chunkLimits;

} // namespace

// Discovery asks whoever answers, and needs little.
DecoderLimits ServiceConnection::decoderLimits()
{
    DecoderLimits limits;
    limits.stringLength = 1 << 20;
    limits.arrayLength = 1 << 16;
    limits.memory = 24u << 20;
    return limits;
}

ServiceConnection::ServiceConnection(int timeout) : m_deadline(timeout, Qt::PreciseTimer)
{
    m_clock.start();
}

ServiceConnection::~ServiceConnection()
{
    if (!m_socket)
        return;
    if (m_channel && m_socket->state() == QAbstractSocket::ConnectedState) {
        m_channel->close();
        flush();
        m_socket->disconnectFromHost();
    }
    m_socket->abort();
}

OpcUa_StatusCode ServiceConnection::open(const QByteArray& url)
{
    OpcUa_StatusCode status = checkTime();
    if (OpcUa_IsGood(status))
        status = connectToHost(url);
    if (OpcUa_IsNotGood(status))
        return status;
    SecureChannel::Settings settings;
    settings.endpointUrl = url;
    settings.limits = chunkLimits;
    settings.requestedLifetime = channelLifetime;
    m_channel = std::make_unique<SecureChannel>(settings);
    m_channel->start(m_clock.elapsed());
    while (OpcUa_IsGood(status) && m_channel->state() != SecureChannel::State::Open)
        status = receive();
    return status;
}

OpcUa_StatusCode ServiceConnection::connectToHost(const QByteArray& url)
{
    const std::optional<EndpointAddress> address = parseEndpointUrl(url);
    if (!address)
        return OpcUa_BadTcpEndpointUrlInvalid;
    QEventLoop loop; // before the connector, which needs the thread's dispatcher
    Connector connector;
    QTimer poll; // wakes the loop up while nothing happens
    poll.start(pollInterval);
    connector.start(address->host, address->port, m_deadline);
    while (!connector.isFinished()) {
        const OpcUa_StatusCode status = checkTime();
        if (OpcUa_IsNotGood(status))
            return status;
        loop.processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::ExcludeUserInputEvents);
    }
    m_socket = connector.takeSocket();
    if (m_socket)
        m_socket->setReadBufferSize(chunkLimits.chunkSize);
    return connector.status();
}

OpcUa_StatusCode ServiceConnection::exchange(const QByteArray& body, Message& response)
{
    const OpcUa_UInt32 request = m_channel->send(body);
    OpcUa_StatusCode status = m_channel->sendStatus();
    while (OpcUa_IsGood(status)) {
        if (std::optional<Message> message = m_channel->next()) {
            response = std::move(*message);
            return response.requestId == request ? response.abortCode : OpcUa_BadUnknownResponse;
        }
        status = receive();
    }
    return status;
}

// Without waiting for the event loop to come round.
void ServiceConnection::flush()
{
    const QByteArray bytes = m_channel->takeOutput();
    if (!bytes.isEmpty()) {
        m_socket->write(bytes);
        m_socket->flush();
    }
}

/// Sends what there is to send and hands the channel what comes next.
OpcUa_StatusCode ServiceConnection::receive()
{
    flush();
    for (;;) {
        const OpcUa_StatusCode status = checkTime();
        if (OpcUa_IsNotGood(status))
            return status;
        if (m_socket->bytesAvailable() > 0)
            break;
        if (m_socket->state() != QAbstractSocket::ConnectedState)
            return socketStatus(m_socket->error());
        m_socket->waitForReadyRead(
            int(std::min<qint64>(pollInterval.count(), m_deadline.remainingTime())));
    }
    m_channel->receive(m_socket->read(chunkLimits.chunkSize), m_clock.elapsed());
    return m_channel->status();
}

/// Whether to go on.
OpcUa_StatusCode ServiceConnection::checkTime() const
{
    if (QThread::currentThread()->isInterruptionRequested())
        return OpcUa_BadShutdown;
    return m_deadline.hasExpired() ? OpcUa_BadTimeout : OpcUa_Good;
}

} // namespace UaWire

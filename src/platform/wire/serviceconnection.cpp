#include "endpointurl_p.h"
#include "serviceconnection_p.h"

#include <QtCore/QDateTime>
#include <QtCore/QThread>
#include <QtNetwork/QNetworkProxy>

#include <algorithm>
#include <chrono>

namespace UaWire {

namespace {

// How often the thread's interruption and the deadline are looked at.
constexpr std::chrono::milliseconds pollInterval{20};
// The channel is closed after one call; the server need not keep it longer than this if it is not.
constexpr OpcUa_UInt32 channelLifetime = 600000; // ms
constexpr ChunkLimits chunkLimits;

OpcUa_DateTime now()
{
    constexpr OpcUa_DateTime unixEpoch = 116444736000000000; // in ticks since 1601
    constexpr OpcUa_DateTime ticksPerMillisecond = 10000;
    return unixEpoch + QDateTime::currentMSecsSinceEpoch() * ticksPerMillisecond;
}

} // namespace

ServiceConnection::ServiceConnection(int timeout)
    : m_deadline(timeout, Qt::PreciseTimer), m_reader(chunkLimits)
{
    m_socket.setProxy(QNetworkProxy::NoProxy);
    m_socket.setReadBufferSize(chunkLimits.chunkSize);
    // Its events are what waitUntil() wakes up for when the peer is silent.
    m_poll.setTimerType(Qt::PreciseTimer);
    m_poll.start(pollInterval);
}

ServiceConnection::~ServiceConnection()
{
    if (m_writer.channelId != 0 && m_socket.state() == QAbstractSocket::ConnectedState) {
        CloseSecureChannelRequest request;
        fill(request.header);
        m_socket.write(
            m_writer.chunks(MessageType::CloseSecureChannel, m_requestId, encodeMessage(request)));
        m_socket.flush();
        m_socket.disconnectFromHost();
    }
    m_socket.abort();
}

OpcUa_StatusCode ServiceConnection::open(const QByteArray& url)
{
    OpcUa_StatusCode status = connectToHost(url);
    if (OpcUa_IsGood(status))
        status = sayHello(url);
    if (OpcUa_IsGood(status))
        status = openChannel();
    return status;
}

OpcUa_StatusCode ServiceConnection::connectToHost(const QByteArray& url)
{
    const std::optional<EndpointAddress> address = parseEndpointUrl(url);
    if (!address)
        return OpcUa_BadTcpEndpointUrlInvalid;
    m_socket.connectToHost(address->host, address->port);
    return waitUntil([this] { return m_socket.state() == QAbstractSocket::ConnectedState; });
}

OpcUa_StatusCode ServiceConnection::sayHello(const QByteArray& url)
{
    Hello hello;
    hello.receiveBufferSize = chunkLimits.chunkSize;
    hello.sendBufferSize = chunkLimits.chunkSize;
    hello.maxMessageSize = chunkLimits.messageSize;
    hello.maxChunkCount = chunkLimits.chunkCount;
    hello.endpointUrl = UaString(url);
    send(encodeConnectionMessage(MessageType::Hello, hello));

    Message message;
    OpcUa_StatusCode status = receive(MessageType::Acknowledge, message);
    Acknowledge acknowledge;
    if (OpcUa_IsGood(status))
        status = decodeFields(message.body, acknowledge);
    if (OpcUa_IsNotGood(status))
        return status;
    // The server may lower what was offered, to the smallest size that the standard allows.
    if (acknowledge.receiveBufferSize < minimumBufferSize ||
        acknowledge.sendBufferSize < minimumBufferSize)
        return OpcUa_BadCommunicationError;
    m_writer.chunkSize = std::min(acknowledge.receiveBufferSize, hello.sendBufferSize);
    m_reader.setChunkSize(std::min(acknowledge.sendBufferSize, hello.receiveBufferSize));
    m_maxMessageSize = acknowledge.maxMessageSize;
    m_maxChunkCount = acknowledge.maxChunkCount;
    return OpcUa_Good;
}

OpcUa_StatusCode ServiceConnection::openChannel()
{
    OpenSecureChannelRequest request;
    request.requestedLifetime = channelLifetime;
    OpenSecureChannelResponse response;
    const OpcUa_StatusCode status = call(MessageType::OpenSecureChannel, request, response);
    if (OpcUa_IsNotGood(status))
        return status;
    m_writer.tokenId = response.securityToken.tokenId;
    if (response.securityToken.channelId == 0 ||
        response.securityToken.channelId != m_writer.channelId)
        return OpcUa_BadTcpSecureChannelUnknown;
    return OpcUa_Good;
}

void ServiceConnection::fill(RequestHeader& header)
{
    header.timestamp = now();
    header.requestHandle = ++m_requestId;
    header.timeoutHint = OpcUa_UInt32(m_deadline.remainingTime());
}

OpcUa_StatusCode ServiceConnection::exchange(MessageType type, const QByteArray& body,
                                             Message& response)
{
    const QByteArray chunks = m_writer.chunks(type, m_requestId, body);
    const qsizetype chunkCount = (chunks.size() + m_writer.chunkSize - 1) / m_writer.chunkSize;
    if ((m_maxMessageSize != 0 && body.size() > qsizetype(m_maxMessageSize)) ||
        (m_maxChunkCount != 0 && chunkCount > qsizetype(m_maxChunkCount)))
        return OpcUa_BadRequestTooLarge;
    send(chunks);

    const OpcUa_StatusCode status = receive(type, response);
    if (OpcUa_IsNotGood(status))
        return status;
    if (type == MessageType::OpenSecureChannel)
        m_writer.channelId = response.channelId; // not known before
    else if (response.channelId != m_writer.channelId)
        return OpcUa_BadTcpSecureChannelUnknown;
    else if (response.tokenId != m_writer.tokenId)
        return OpcUa_BadSecureChannelTokenUnknown;
    if (response.requestId != m_requestId)
        return OpcUa_BadUnknownResponse;
    return response.abortCode;
}

// Without waiting for the event loop to come round.
void ServiceConnection::send(const QByteArray& bytes)
{
    m_socket.write(bytes);
    m_socket.flush();
}

OpcUa_StatusCode ServiceConnection::receive(MessageType type, Message& message)
{
    for (;;) {
        if (std::optional<Message> next = m_reader.next()) {
            message = std::move(*next);
            break;
        }
        if (OpcUa_IsNotGood(m_reader.status()))
            return m_reader.status();
        const OpcUa_StatusCode status = waitUntil([this] { return m_socket.bytesAvailable() > 0; });
        if (OpcUa_IsNotGood(status))
            return status;
        m_reader.append(m_socket.read(chunkLimits.chunkSize));
    }
    if (message.type == MessageType::Error) {
        Error error;
        const OpcUa_StatusCode status = decodeFields(message.body, error);
        return OpcUa_IsGood(status) ? asBad(error.error) : status;
    }
    return message.type == type ? OpcUa_Good : OpcUa_BadTcpMessageTypeInvalid;
}

template <class Condition>
OpcUa_StatusCode ServiceConnection::waitUntil(Condition condition)
{
    for (;;) {
        if (QThread::currentThread()->isInterruptionRequested())
            return OpcUa_BadShutdown;
        if (m_deadline.hasExpired())
            return OpcUa_BadTimeout;
        if (condition())
            return OpcUa_Good;
        if (m_socket.state() == QAbstractSocket::UnconnectedState)
            return socketStatus();
        // A look-up comes back by an event; data comes sooner without the event loop.
        if (m_socket.state() == QAbstractSocket::ConnectedState)
            m_socket.waitForReadyRead(
                int(std::min<qint64>(pollInterval.count(), m_deadline.remainingTime())));
        else
            m_loop.processEvents(QEventLoop::WaitForMoreEvents |
                                 QEventLoop::ExcludeUserInputEvents);
    }
}

OpcUa_StatusCode ServiceConnection::socketStatus() const
{
    switch (m_socket.error()) {
    case QAbstractSocket::ConnectionRefusedError:
        return OpcUa_BadConnectionRejected;
    case QAbstractSocket::RemoteHostClosedError:
        return OpcUa_BadConnectionClosed;
    case QAbstractSocket::SocketTimeoutError:
        return OpcUa_BadTimeout;
    default: // no such host, no route to it, ...
        return OpcUa_BadCommunicationError;
    }
}

} // namespace UaWire

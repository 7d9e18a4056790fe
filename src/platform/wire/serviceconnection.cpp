#include "serviceconnection_p.h"

#include "platform/types/uadatetime.h"
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

ServiceConnection::ServiceConnection(int timeout)
    : m_deadline(timeout, Qt::PreciseTimer), m_reader(chunkLimits)
{
}

ServiceConnection::~ServiceConnection()
{
    if (!m_socket)
        return;
    if (m_writer.channelId != 0 && m_socket->state() == QAbstractSocket::ConnectedState) {
        CloseSecureChannelRequest request;
        fill(request.header);
        send(m_writer.chunks(MessageType::CloseSecureChannel, m_requestId, encodeMessage(request)));
        m_socket->disconnectFromHost();
    }
    m_socket->abort();
}

OpcUa_StatusCode ServiceConnection::open(const QByteArray& url)
{
    OpcUa_StatusCode status = checkTime();
    if (OpcUa_IsGood(status))
        status = connectToHost(url);
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
    header.timestamp = UaDateTime::now().ticks();
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
    m_socket->write(bytes);
    m_socket->flush();
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
        const OpcUa_StatusCode status = waitForBytes();
        if (OpcUa_IsNotGood(status))
            return status;
        m_reader.append(m_socket->read(chunkLimits.chunkSize));
    }
    if (message.type == MessageType::Error) {
        Error error;
        const OpcUa_StatusCode status = decodeFields(message.body, error);
        return OpcUa_IsGood(status) ? asFailure(error.error) : status;
    }
    return message.type == type ? OpcUa_Good : OpcUa_BadTcpMessageTypeInvalid;
}

OpcUa_StatusCode ServiceConnection::waitForBytes()
{
    for (;;) {
        const OpcUa_StatusCode status = checkTime();
        if (OpcUa_IsNotGood(status))
            return status;
        if (m_socket->bytesAvailable() > 0)
            return OpcUa_Good;
        if (m_socket->state() != QAbstractSocket::ConnectedState)
            return socketStatus(m_socket->error());
        m_socket->waitForReadyRead(
            int(std::min<qint64>(pollInterval.count(), m_deadline.remainingTime())));
    }
}

/// Whether to go on.
OpcUa_StatusCode ServiceConnection::checkTime() const
{
    if (QThread::currentThread()->isInterruptionRequested())
        return OpcUa_BadShutdown;
    return m_deadline.hasExpired() ? OpcUa_BadTimeout : OpcUa_Good;
}

} // namespace UaWire

#include "connection.h"

#include "platform/types/uadatetime.h"

#include <QtNetwork/QTcpSocket>

#include <algorithm>
#include <chrono>

using namespace UaWire;

namespace {

// What a client may send. Requests for discovery are short.
constexpr ChunkLimits requestLimits{65536, 65536, 16};
// Bytes that may wait for a client that does not read; nothing more is answered until they went.
constexpr qint64 maximumPendingBytes = 256 * 1024;
// A client must come up with one whole message in this time, or read what waits for it.
constexpr std::chrono::seconds maximumSilence{30};
// What is left to be written must be gone in this time when a connection is closed.
constexpr std::chrono::seconds closeTimeout{2};
constexpr qsizetype maximumUrlLength = 4096;             // OPC 10000-6, 7.1.2.3
constexpr OpcUa_UInt32 channelId = 1;                    // a connection has one channel
constexpr OpcUa_UInt32 maximumLifetime = 60 * 60 * 1000; // ms
constexpr OpcUa_StatusCode badSecurityModeRejected = 0x80540000u;

ResponseHeader responseHeader(const RequestHeader& request, OpcUa_StatusCode result = OpcUa_Good)
{
    ResponseHeader header;
    header.timestamp = UaDateTime::now().ticks();
    header.requestHandle = request.requestHandle;
    header.serviceResult = result;
    return header;
}

QByteArray fault(const RequestHeader& request, OpcUa_StatusCode reason)
{
    ServiceFault fault;
    fault.header = responseHeader(request, reason);
    return encodeMessage(fault);
}

bool isListed(const UaStackTypeArray<OpcUa_String>& list, const OpcUa_String& text)
{
    return std::any_of(list.begin(), list.end(), [&](const OpcUa_String& entry) {
        return OpcUa_String_Equal(&entry, &text);
    });
}

/// Copies of the elements whose `key` is in the filter; of all for an empty filter.
template <class T>
UaStackTypeArray<T> filtered(const UaStackTypeArray<T>& all, OpcUa_String T::*key,
                             const UaStackTypeArray<OpcUa_String>& filter,
                             OpcUa_StatusCode (*copyTo)(const T*, T*))
{
    UaStackTypeArray<T> out;
    for (const T& element : all) {
        if (filter.length() > 0 && !isListed(filter, element.*key))
            continue;
        if (!out.resize(out.length() + 1) ||
            OpcUa_IsBad(copyTo(&element, &out[out.length() - 1]))) {
            qWarning("No memory for an answer");
            return {};
        }
    }
    return out;
}

} // namespace

Connection::Connection(QTcpSocket* socket, const ServerFacts& facts, QObject* parent)
    : QObject(parent), m_socket(socket), m_facts(facts), m_reader(requestLimits)
{
    socket->setParent(this);
    socket->setReadBufferSize(requestLimits.chunkSize);
    connect(socket, &QTcpSocket::readyRead, this, &Connection::readMessages);
    connect(socket, &QTcpSocket::bytesWritten, this, &Connection::readMessages);
    connect(socket, &QTcpSocket::disconnected, this, &QObject::deleteLater);
    m_silence.setSingleShot(true);
    connect(&m_silence, &QTimer::timeout, socket, &QTcpSocket::abort);
    m_silence.start(maximumSilence);
    if (socket->state() != QAbstractSocket::ConnectedState)
        deleteLater();
    else
        QMetaObject::invokeMethod(this, &Connection::readMessages, Qt::QueuedConnection);
}

void Connection::readMessages()
{
    while (!m_closing && m_socket->bytesToWrite() <= maximumPendingBytes) {
        if (const std::optional<Message> message = m_reader.next()) {
            m_silence.start();
            const OpcUa_StatusCode status = handle(*message);
            if (OpcUa_IsBad(status))
                refuse(status);
        } else if (OpcUa_IsBad(m_reader.status())) {
            refuse(m_reader.status());
        } else {
            const QByteArray bytes = m_socket->read(requestLimits.chunkSize);
            if (bytes.isEmpty())
                return;
            m_reader.append(bytes);
        }
    }
}

OpcUa_StatusCode Connection::handle(const Message& message)
{
    if (message.type == MessageType::Hello)
        return m_greeted ? OpcUa_BadTcpMessageTypeInvalid : sayHello(message.body);
    if (!m_greeted)
        return OpcUa_BadTcpMessageTypeInvalid;
    if (message.type == MessageType::OpenSecureChannel)
        return openChannel(message);
    if (message.type != MessageType::Message && message.type != MessageType::CloseSecureChannel)
        return OpcUa_BadTcpMessageTypeInvalid;
    if (m_tokenId == 0 || message.channelId != channelId)
        return OpcUa_BadTcpSecureChannelUnknown;
    // The token before the newest one stays good until the client has seen the newest.
    if (message.tokenId != m_tokenId && message.tokenId + 1 != m_tokenId)
        return OpcUa_BadSecureChannelTokenUnknown;
    m_writer.tokenId = message.tokenId;
    if (message.type == MessageType::CloseSecureChannel) {
        close();
        return OpcUa_Good;
    }
    return OpcUa_IsBad(message.abortCode) ? OpcUa_Good : answer(message);
}

OpcUa_StatusCode Connection::sayHello(QByteArrayView fields)
{
    const OpcUa_StatusCode status = decodeFields(fields, m_hello);
    if (OpcUa_IsBad(status))
        return status;
    if (m_hello.endpointUrl.size() > maximumUrlLength)
        return OpcUa_BadTcpEndpointUrlInvalid;
    if (m_hello.receiveBufferSize < minimumBufferSize || m_hello.sendBufferSize < minimumBufferSize)
        return OpcUa_BadConnectionRejected;
    m_greeted = true;
    m_writer.chunkSize = std::min(m_hello.receiveBufferSize, requestLimits.chunkSize);
    m_writer.channelId = channelId;
    const Acknowledge acknowledge{0, std::min(m_hello.sendBufferSize, requestLimits.chunkSize),
                                  m_writer.chunkSize, requestLimits.messageSize,
                                  requestLimits.chunkCount};
    m_socket->write(encodeConnectionMessage(MessageType::Acknowledge, acknowledge));
    return OpcUa_Good;
}

OpcUa_StatusCode Connection::openChannel(const Message& message)
{
    QByteArrayView fields(message.body);
    if (takeTypeId(fields) != OpenSecureChannelRequest::encodingId)
        return OpcUa_BadDecodingError;
    OpenSecureChannelRequest request;
    const OpcUa_StatusCode status = decodeFields(fields, request);
    if (OpcUa_IsBad(status))
        return status;
    if (request.securityMode != OpcUa_MessageSecurityMode_None)
        return badSecurityModeRejected;
    const bool renew = request.requestType == SecurityTokenRequestType::Renew;
    if (renew != (m_tokenId != 0) || (renew && message.channelId != channelId))
        return OpcUa_BadSecureChannelIdInvalid;

    OpenSecureChannelResponse response;
    response.header = responseHeader(request.header);
    response.securityToken.channelId = channelId;
    response.securityToken.tokenId = ++m_tokenId;
    response.securityToken.createdAt = UaDateTime::now().ticks();
    response.securityToken.revisedLifetime =
        request.requestedLifetime == 0 ? maximumLifetime
                                       : std::min(request.requestedLifetime, maximumLifetime);
    m_socket->write(m_writer.chunks(MessageType::OpenSecureChannel, message.requestId,
                                    encodeMessage(response)));
    return OpcUa_Good;
}

OpcUa_StatusCode Connection::answer(const Message& message)
{
    QByteArrayView fields(message.body);
    const OpcUa_UInt32 encodingId = takeTypeId(fields);
    RequestHeader header; // every request begins with it
    const OpcUa_StatusCode status = decodeFields(fields, header);
    if (OpcUa_IsBad(status))
        return status;
    QByteArray body = answerTo(encodingId, fields, header);
    if (!fits(body))
        body = fault(header, OpcUa_BadResponseTooLarge);
    m_socket->write(m_writer.chunks(MessageType::Message, message.requestId, body));
    return OpcUa_Good;
}

QByteArray Connection::answerTo(OpcUa_UInt32 encodingId, QByteArrayView fields,
                                const RequestHeader& header) const
{
    if (encodingId == FindServersRequest::encodingId) {
        FindServersRequest request;
        const OpcUa_StatusCode status = decodeFields(fields, request);
        if (OpcUa_IsBad(status))
            return fault(header, status);
        FindServersResponse response;
        response.header = responseHeader(header);
        response.servers = filtered(m_facts.servers, &OpcUa_ApplicationDescription::ApplicationUri,
                                    request.serverUris, OpcUa_ApplicationDescription_CopyTo);
        return encodeMessage(response);
    }
    if (encodingId == GetEndpointsRequest::encodingId) {
        GetEndpointsRequest request;
        const OpcUa_StatusCode status = decodeFields(fields, request);
        if (OpcUa_IsBad(status))
            return fault(header, status);
        GetEndpointsResponse response;
        response.header = responseHeader(header);
        response.endpoints =
            filtered(m_facts.endpoints, &OpcUa_EndpointDescription::TransportProfileUri,
                     request.profileUris, OpcUa_EndpointDescription_CopyTo);
        return encodeMessage(response);
    }
    return fault(header, OpcUa_BadServiceUnsupported);
}

bool Connection::fits(const QByteArray& body) const
{
    constexpr qsizetype headersOfChunk = 24; // OPC 10000-6, 6.7.2
    const qsizetype room = qsizetype(m_writer.chunkSize) - headersOfChunk;
    const qsizetype chunkCount = (body.size() + room - 1) / room;
    return (m_hello.maxMessageSize == 0 || body.size() <= qsizetype(m_hello.maxMessageSize)) &&
           (m_hello.maxChunkCount == 0 || chunkCount <= qsizetype(m_hello.maxChunkCount));
}

void Connection::refuse(OpcUa_StatusCode reason)
{
    m_socket->write(encodeConnectionMessage(MessageType::Error, Error{reason, {}}));
    close();
}

void Connection::close()
{
    m_closing = true;
    m_silence.start(closeTimeout);
    m_socket->disconnectFromHost();
}

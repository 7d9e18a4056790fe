#include "securechannel_p.h"

#include "platform/types/uadatetime.h"

#include <algorithm>
#include <limits>

namespace UaWire {

namespace {

constexpr qint64 never = std::numeric_limits<qint64>::max();
// A server that gives no lifetime, or next to none, would have the client do nothing but renew.
constexpr OpcUa_UInt32 shortestLifetime = 1000; // ms

} // namespace

OpcUa_DateTime SecureChannel::wallClock()
{
    return UaDateTime::now().ticks();
}

SecureChannel::SecureChannel(const Settings& settings)
    : m_settings(settings), m_security(*settings.policy, settings.mode, settings.ownCertificate,
                                       settings.ownKey, settings.peerCertificate),
      m_reader(settings.limits, &m_security), m_writer(&m_security), m_nextTick(never)
{
}

void SecureChannel::start(qint64)
{
    const ChunkLimits& limits = m_settings.limits;
    Hello hello;
    hello.receiveBufferSize = limits.chunkSize;
    hello.sendBufferSize = limits.chunkSize;
    hello.maxMessageSize = limits.messageSize;
    hello.maxChunkCount = limits.chunkCount;
    hello.endpointUrl = UaString(m_settings.endpointUrl);
    m_output += encodeConnectionMessage(MessageType::Hello, hello);
    m_state = State::Greeting;
}

void SecureChannel::receive(QByteArrayView bytes, qint64 now)
{
    m_reader.append(bytes);
    while (m_state != State::Failed) {
        std::optional<Message> message = m_reader.next();
        if (message)
            take(std::move(*message), now);
        else if (OpcUa_IsNotGood(m_reader.status()))
            fail(m_reader.status());
        else
            break;
    }
}

void SecureChannel::take(Message&& message, qint64 now)
{
    switch (message.type) {
    case MessageType::Error: {
        Error error;
        const OpcUa_StatusCode status = decodeFields(message.body, error);
        return fail(OpcUa_IsGood(status) ? asFailure(error.error) : status, error.reason);
    }
    case MessageType::Acknowledge:
        if (m_state == State::Greeting)
            return takeAcknowledge(message.body, now);
        break;
    case MessageType::OpenSecureChannel:
        if (m_openRequest != 0)
            return takeToken(message, now);
        break;
    case MessageType::Message:
        if (m_state != State::Open)
            break;
        if (message.channelId != m_writer.channelId)
            return fail(OpcUa_BadTcpSecureChannelUnknown);
        m_messages.push_back(std::move(message));
        return;
    default:
        break;
    }
    fail(OpcUa_BadTcpMessageTypeInvalid);
}

void SecureChannel::takeAcknowledge(QByteArrayView body, qint64 now)
{
    Acknowledge acknowledge;
    const OpcUa_StatusCode status = decodeFields(body, acknowledge);
    if (OpcUa_IsNotGood(status))
        return fail(status);
    // The server may lower what was offered, to the smallest size that the standard allows.
    if (acknowledge.receiveBufferSize < minimumBufferSize ||
        acknowledge.sendBufferSize < minimumBufferSize)
        return fail(OpcUa_BadCommunicationError);
    const OpcUa_UInt32 own = m_settings.limits.chunkSize;
    m_writer.chunkSize = std::min(acknowledge.receiveBufferSize, own);
    m_reader.setChunkSize(std::min(acknowledge.sendBufferSize, own));
    m_maxMessageSize = acknowledge.maxMessageSize;
    m_maxChunkCount = acknowledge.maxChunkCount;
    m_state = State::Opening;
    requestToken(SecurityTokenRequestType::Issue, now);
}

void SecureChannel::requestToken(SecurityTokenRequestType type, qint64)
{
    m_nonce =
        m_settings.policy->isSecure ? randomBytes(m_settings.policy->nonceLength) : QByteArray();
    OpenSecureChannelRequest request;
    request.header.timestamp = wallClock();
    request.header.requestHandle = m_openRequest = ++m_requestId;
    request.requestType = type;
    request.securityMode = m_settings.mode;
    request.clientNonce = m_nonce;
    request.requestedLifetime = m_settings.requestedLifetime;
    const QByteArray chunks =
        m_writer.chunks(MessageType::OpenSecureChannel, m_openRequest, encodeMessage(request));
    if (chunks.isEmpty() || (m_settings.policy->isSecure && m_nonce.isEmpty()))
        return fail(OpcUa_BadInternalError);
    m_output += chunks;
}

void SecureChannel::takeToken(const Message& message, qint64 now)
{
    OpenSecureChannelResponse response;
    const OpcUa_StatusCode status = decodeResponse(message.body, m_openRequest, response);
    if (message.requestId != m_openRequest)
        return fail(OpcUa_BadUnknownResponse);
    if (OpcUa_IsBad(status))
        return fail(status, reasonOf(response.header));
    const ChannelSecurityToken& token = response.securityToken;
    const bool isFirst = m_state == State::Opening;
    if (token.channelId == 0 || token.channelId != message.channelId ||
        (!isFirst && token.channelId != m_writer.channelId))
        return fail(OpcUa_BadTcpSecureChannelUnknown);
    if (response.serverNonce.size() < m_settings.policy->nonceLength)
        return fail(OpcUa_BadNonceInvalid);
    if (!isFirst && m_security.hasToken(token.tokenId))
        return fail(OpcUa_BadSecureChannelTokenUnknown); // no new one
    if (!m_security.addToken(token.tokenId, m_nonce, response.serverNonce))
        return fail(OpcUa_BadInternalError);

    const qint64 lifetime = std::max(token.revisedLifetime, shortestLifetime);
    if (!isFirst) {
        // The server may use the old token until it has seen the new one (OPC 10000-4, 5.5.2.1);
        // some answer with that of the request, so that old and new ones come in turn.
        m_hasOldToken = true;
        m_oldTokenExpires = std::max(now, m_expires) + (m_expires - m_renewAt);
        ++m_renewals;
    }
    m_writer.channelId = token.channelId;
    m_writer.tokenId = token.tokenId;
    m_openRequest = 0;
    m_renewAt = now + lifetime * 3 / 4;
    m_expires = now + lifetime;
    m_nextTick = m_hasOldToken ? std::min(m_renewAt, m_oldTokenExpires) : m_renewAt;
    m_state = State::Open;
}

void SecureChannel::tick(qint64 now)
{
    if (m_state != State::Open)
        return;
    if (now >= m_oldTokenExpires && std::exchange(m_hasOldToken, false))
        m_security.keepToken(m_writer.tokenId);
    if (m_openRequest != 0 && now >= m_expires)
        return fail(OpcUa_BadSecureChannelTokenUnknown); // the server never renewed it
    if (m_openRequest == 0 && now >= m_renewAt)
        requestToken(SecurityTokenRequestType::Renew, now);
    m_nextTick = m_openRequest != 0 ? m_expires : m_renewAt;
    if (m_hasOldToken)
        m_nextTick = std::min(m_nextTick, m_oldTokenExpires);
}

OpcUa_UInt32 SecureChannel::send(QByteArrayView body)
{
    const OpcUa_UInt32 id = ++m_requestId == 0 ? ++m_requestId : m_requestId;
    const qsizetype begin = m_output.size();
    m_sendStatus = m_maxMessageSize != 0 && body.size() > qsizetype(m_maxMessageSize)
                       ? OpcUa_BadRequestTooLarge
                       : OpcUa_Good;
    const qsizetype perChunk = m_writer.bodyRoom();
    if (m_maxChunkCount != 0 && body.size() > perChunk * qsizetype(m_maxChunkCount))
        m_sendStatus = OpcUa_BadRequestTooLarge;
    if (OpcUa_IsNotGood(m_sendStatus))
        return 0;
    const QByteArray chunks = m_writer.chunks(MessageType::Message, id, body);
    if (begin == 0)
        m_output = chunks; // without a copy
    else
        m_output += chunks;
    if (chunks.isEmpty())
        m_sendStatus = OpcUa_BadInternalError;
    return chunks.isEmpty() ? 0 : id;
}

void SecureChannel::close()
{
    if (m_state != State::Open)
        return;
    CloseSecureChannelRequest request;
    request.header.timestamp = wallClock();
    request.header.requestHandle = ++m_requestId;
    m_output +=
        m_writer.chunks(MessageType::CloseSecureChannel, m_requestId, encodeMessage(request));
    m_state = State::Failed;
    m_status = OpcUa_BadSecureChannelClosed;
}

UaString reasonOf(const ResponseHeader& header)
{
    const OpcUa_DiagnosticInfo& info = header.serviceDiagnostics.value;
    if (info.AdditionalInfo.Data)
        return UaString(&info.AdditionalInfo);
    const bool isEmpty = !info.LocalizedText && !info.SymbolicId && !info.NamespaceUri;
    for (OpcUa_Int32 index : {info.LocalizedText, info.SymbolicId}) {
        if (!isEmpty && index >= 0 && OpcUa_UInt32(index) < header.stringTable.length())
            return UaString(&header.stringTable[OpcUa_UInt32(index)]);
    }
    return {};
}

std::optional<Message> SecureChannel::next()
{
    if (m_messages.empty())
        return {};
    std::optional<Message> message = std::move(m_messages.front());
    m_messages.pop_front();
    return message;
}

void SecureChannel::fail(OpcUa_StatusCode status, const UaString& reason)
{
    m_state = State::Failed;
    m_status = status;
    m_reason = reason;
    m_nextTick = never;
}

} // namespace UaWire

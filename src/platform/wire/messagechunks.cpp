#include "messagechunks_p.h"

#include <algorithm>

namespace UaWire {

namespace {

// A sequence number may start again below this one (OPC 10000-6, 6.7.2.4) ...
constexpr OpcUa_UInt32 sequenceRestartsBelow = 1024;
// ... after one above this.
constexpr OpcUa_UInt32 sequenceWrapsAbove = 0xffffffffu - 1024;

bool isConnectionMessage(MessageType type)
{
    return type == MessageType::Hello || type == MessageType::Acknowledge ||
           type == MessageType::Error;
}

bool isChannelMessage(MessageType type)
{
    return type == MessageType::OpenSecureChannel || type == MessageType::CloseSecureChannel ||
           type == MessageType::Message;
}

} // namespace

std::optional<Message> MessageReader::next()
{
    qsizetype taken = 0;
    std::optional<Message> message;
    while (OpcUa_IsGood(m_status) && !message) {
        const QByteArrayView rest = QByteArrayView(m_bytes).sliced(taken);
        if (rest.size() < qsizetype(chunkHeaderSize))
            break;
        ChunkHeader header;
        decodeFields(rest, header);
        if (!isConnectionMessage(header.type()) && !isChannelMessage(header.type())) {
            m_status = OpcUa_BadTcpMessageTypeInvalid;
        } else if (header.size < chunkHeaderSize) {
            m_status = OpcUa_BadDecodingError;
        } else if (header.size > m_limits.chunkSize) {
            m_status = OpcUa_BadTcpMessageTooLarge;
        } else if (rest.size() < qsizetype(header.size)) {
            break;
        } else {
            bool whole = false;
            m_status = takeChunk(
                header, rest.sliced(chunkHeaderSize, header.size - chunkHeaderSize), whole);
            taken += header.size;
            if (OpcUa_IsGood(m_status) && whole) {
                message = std::move(m_message);
                m_message = {};
                m_chunkCount = 0;
            }
        }
    }
    m_bytes.remove(0, taken);
    return message;
}

OpcUa_StatusCode MessageReader::takeChunk(ChunkHeader header, QByteArrayView rest, bool& whole)
{
    const MessageType type = header.type();
    const char letter = header.letter();
    whole = letter != 'C';
    if (letter != 'F' && (type != MessageType::Message || (letter != 'C' && letter != 'A')))
        return OpcUa_BadTcpMessageTypeInvalid;
    if (isConnectionMessage(type)) {
        // An Error may come between the chunks of a message and ends it.
        m_message = {};
        m_message.type = type;
        return addToMessage(rest);
    }

    BinaryDecoder decoder(rest);
    OpcUa_UInt32 channelId = 0;
    OpcUa_UInt32 tokenId = 0;
    decoder(channelId);
    if (type == MessageType::OpenSecureChannel) {
        AsymmetricSecurityHeader security;
        decoder(security);
        if (OpcUa_IsGood(decoder.status()) && security.securityPolicyUri != securityPolicyNone)
            return OpcUa_BadSecurityPolicyRejected;
    } else {
        decoder(tokenId);
    }
    SequenceHeader sequence;
    decoder(sequence);
    if (OpcUa_IsNotGood(decoder.status()))
        return decoder.status();
    if (!followsSequence(sequence.sequenceNumber))
        return OpcUa_BadSequenceNumberInvalid;

    if (m_chunkCount == 0) {
        m_message = {type, channelId, tokenId, sequence.requestId, OpcUa_Good, {}};
    } else if (type != m_message.type || channelId != m_message.channelId ||
               tokenId != m_message.tokenId || sequence.requestId != m_message.requestId) {
        return OpcUa_BadUnknownResponse;
    }
    if (letter == 'A') {
        Error error;
        const OpcUa_StatusCode status = decodeFields(decoder.rest(), error);
        m_message.abortCode = asFailure(error.error);
        m_message.body.clear();
        return status;
    }
    return addToMessage(decoder.rest());
}

OpcUa_StatusCode MessageReader::addToMessage(QByteArrayView body)
{
    const qsizetype size = m_message.body.size() + body.size();
    if (++m_chunkCount > m_limits.chunkCount || size > qsizetype(m_limits.messageSize))
        return OpcUa_BadResponseTooLarge;
    // Grows by halves of what came, and not beyond the limit.
    if (size > m_message.body.capacity())
        m_message.body.reserve(std::min(size + size / 2, qsizetype(m_limits.messageSize)));
    m_message.body.append(body);
    return OpcUa_Good;
}

bool MessageReader::followsSequence(OpcUa_UInt32 number)
{
    const bool follows = !m_sequenceNumber || number == *m_sequenceNumber + 1 ||
                         (*m_sequenceNumber > sequenceWrapsAbove && number < sequenceRestartsBelow);
    m_sequenceNumber = number;
    return follows;
}

QByteArray MessageWriter::chunks(MessageType type, OpcUa_UInt32 requestId, QByteArrayView body)
{
    QByteArray out;
    do {
        QByteArray rest;
        BinaryEncoder encoder(rest);
        encoder(channelId);
        if (type == MessageType::OpenSecureChannel)
            encoder(AsymmetricSecurityHeader{UaString(securityPolicyNone), {}, {}});
        else
            encoder(tokenId);
        encoder(SequenceHeader{++m_sequenceNumber, requestId});
        const qsizetype room = qsizetype(chunkSize) - qsizetype(chunkHeaderSize) - rest.size();
        const QByteArrayView part = body.first(std::min(room, body.size()));
        body = body.sliced(part.size());
        rest.append(part);
        out.append(encodeChunk(type, body.isEmpty() ? 'F' : 'C', rest));
    } while (!body.isEmpty());
    return out;
}

} // namespace UaWire

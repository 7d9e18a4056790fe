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
            m_status = takeChunk(header, m_bytes.data() + taken, whole);
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

OpcUa_StatusCode MessageReader::takeChunk(ChunkHeader header, char* chunk, bool& whole)
{
    const MessageType type = header.type();
    const char letter = header.letter();
    const QByteArrayView rest(chunk + chunkHeaderSize, header.size - chunkHeaderSize);
    whole = letter != 'C';
    if (letter != 'F' && (type != MessageType::Message || (letter != 'C' && letter != 'A')))
        return OpcUa_BadTcpMessageTypeInvalid;
    if (isConnectionMessage(type)) {
        // An Error may come between the chunks of a message and ends it.
        m_message = {};
        m_message.type = type;
        return addToMessage(rest);
    }

    BinaryDecoder head(rest);
    OpcUa_UInt32 channelId = 0;
    OpcUa_UInt32 tokenId = 0;
    head(channelId);
    AsymmetricSecurityHeader opening;
    if (type == MessageType::OpenSecureChannel)
        head(opening);
    else
        head(tokenId);
    if (OpcUa_IsNotGood(head.status()))
        return head.status();
    QByteArrayView plain = head.rest();
    if (m_security) {
        OpcUa_StatusCode status = OpcUa_Good;
        if (type == MessageType::OpenSecureChannel)
            status = m_security->checkOpeningHeader(opening);
        const qsizetype begin = plain.data() - chunk;
        qsizetype end = header.size;
        if (OpcUa_IsGood(status))
            status = m_security->open(type, tokenId, chunk, header.size, begin, end);
        if (OpcUa_IsNotGood(status))
            return status;
        plain = QByteArrayView(chunk + begin, end - begin);
    } else if (type == MessageType::OpenSecureChannel &&
               opening.securityPolicyUri != securityPolicyNone) {
        return OpcUa_BadSecurityPolicyRejected;
    }
    BinaryDecoder decoder(plain);
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

qsizetype MessageWriter::bodyRoom() const
{
    constexpr qsizetype sequenceHeader = sizeof(SequenceHeader);
    const qsizetype space =
        qsizetype(chunkSize) - qsizetype(chunkHeaderSize) - sizeof channelId - sizeof tokenId;
    return (m_security ? m_security->room(MessageType::Message, space) : space) - sequenceHeader;
}

QByteArray MessageWriter::chunks(MessageType type, OpcUa_UInt32 requestId, QByteArrayView body)
{
    QByteArray out;
    out.reserve(body.size() + body.size() / 64 + 256);
    BinaryEncoder encoder(out);
    do {
        const qsizetype begin = out.size();
        encoder(ChunkHeader{});
        encoder(channelId);
        if (type != MessageType::OpenSecureChannel)
            encoder(tokenId);
        else if (m_security)
            encoder(m_security->openingHeader());
        else
            encoder(AsymmetricSecurityHeader{UaString(securityPolicyNone), {}, {}});
        const qsizetype plain = out.size();
        encoder(SequenceHeader{++m_sequenceNumber, requestId});
        qsizetype room = qsizetype(chunkSize) - (plain - begin);
        if (m_security)
            room = m_security->room(type, room);
        room -= out.size() - plain;
        const QByteArrayView part = body.first(std::min(room, body.size()));
        body = body.sliced(part.size());
        if (room <= 0 || (type == MessageType::OpenSecureChannel && !body.isEmpty()))
            return {};
        out.append(part);
        const auto tag = OpcUa_UInt32(type) | OpcUa_UInt32(body.isEmpty() ? 'F' : 'C') << 24;
        qToLittleEndian(tag, out.data() + begin);
        qToLittleEndian(OpcUa_UInt32(out.size() - begin), out.data() + begin + sizeof tag);
        if (m_security && OpcUa_IsNotGood(m_security->seal(type, tokenId, out, begin, plain)))
            return {};
    } while (!body.isEmpty());
    return out;
}

} // namespace UaWire

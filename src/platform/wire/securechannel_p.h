#pragma once

#include "platform/wire/messagechunks_p.h"

#include <deque>

namespace UaWire {

/// The client's end of a secure channel (OPC 10000-6, 6.7 and 7.1), without a socket and without a
/// clock: bytes go in, messages come out; requests go in, bytes come out. A connection that blocks
/// and one that lives on a thread with an event loop drive the same code.
///
/// After start(), the caller hands in what arrives, sends what takeOutput() gives, and calls tick()
/// when nextTick() is due. After a failure the channel is of no more use.
class SecureChannel
{
public:
    struct Settings
    {
        QByteArray endpointUrl; ///< as the server announces it
        const SecurityPolicy* policy = securityPolicy(securityPolicyNone);
        OpcUa_MessageSecurityMode mode = OpcUa_MessageSecurityMode_None;
        QByteArray ownCertificate; ///< DER, or a chain whose first one is the own
        SharedKey ownKey;
        QByteArray peerCertificate;
        ChunkLimits limits;
        OpcUa_UInt32 requestedLifetime = 3600000; ///< of a token, milliseconds
    };
    enum class State {
        Idle,
        Greeting, ///< Hello is under way
        Opening,  ///< the first token is under way
        Open,
        Failed
    };

    explicit SecureChannel(const Settings& settings);
    SecureChannel(const SecureChannel&) = delete;

    // Times are milliseconds of any clock that only goes forward.
    void start(qint64 now);
    void receive(QByteArrayView bytes, qint64 now);
    /// Renews the token when three quarters of its lifetime are over, and drops what has expired.
    void tick(qint64 now);
    /// When tick() is to be called next.
    qint64 nextTick() const { return m_nextTick; }

    /// The number by which the answer will be known. 0, and BadRequestTooLarge in sendStatus(),
    /// for what the server does not take; BadInternalError when OpenSSL fails.
    OpcUa_UInt32 send(QByteArrayView body);
    OpcUa_StatusCode sendStatus() const { return m_sendStatus; }
    /// Says farewell, without an answer.
    void close();
    /// The bytes that are to be sent.
    QByteArray takeOutput() { return std::exchange(m_output, {}); }
    /// The next answer: a message that is whole, or the abort of one.
    std::optional<Message> next();

    State state() const { return m_state; }
    /// Good, or why the channel failed, and in the server's own words if it said so.
    OpcUa_StatusCode status() const { return m_status; }
    const UaString& reason() const { return m_reason; }
    OpcUa_UInt32 channelId() const { return m_writer.channelId; }
    OpcUa_UInt32 renewals() const { return m_renewals; }

    static OpcUa_DateTime wallClock();

private:
    void take(Message&& message, qint64 now);
    void takeAcknowledge(QByteArrayView body, qint64 now);
    void takeToken(const Message& message, qint64 now);
    void requestToken(SecurityTokenRequestType type, qint64 now);
    void fail(OpcUa_StatusCode status, const UaString& reason = {});

    const Settings m_settings;
    ChannelSecurity m_security;
    MessageReader m_reader;
    MessageWriter m_writer;
    State m_state = State::Idle;
    OpcUa_StatusCode m_status = OpcUa_Good;
    OpcUa_StatusCode m_sendStatus = OpcUa_Good;
    UaString m_reason;
    QByteArray m_output;
    std::deque<Message> m_messages;
    OpcUa_UInt32 m_requestId = 0;
    OpcUa_UInt32 m_maxMessageSize = 0; // of the server, 0 for none
    OpcUa_UInt32 m_maxChunkCount = 0;
    OpcUa_UInt32 m_renewals = 0;

    OpcUa_UInt32 m_openRequest = 0; // the one for a token that is under way, else 0
    QByteArray m_nonce;             // that went with it
    qint64 m_renewAt = 0;
    qint64 m_expires = 0;       // the token itself
    bool m_hasOldToken = false; // its number may be 0
    qint64 m_oldTokenExpires = 0;
    qint64 m_nextTick = 0;
};

} // namespace UaWire

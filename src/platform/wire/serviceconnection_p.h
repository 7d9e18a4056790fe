#pragma once

#include "platform/wire/securechannel_p.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QElapsedTimer>
#include <QtNetwork/QTcpSocket>

#include <memory>

namespace UaWire {

/// A connection with a secure channel without security that blocks its thread.
///
/// All operations together end when the time is up (BadTimeout) or when the thread is interrupted
/// (BadShutdown). The thread needs no event loop; until the connection stands, they run one of
/// their own, without user input. After a failure the connection is of no more use. The destructor
/// closes channel and connection and does not wait for the peer.
class ServiceConnection
{
public:
    /// `timeout` in milliseconds, from now on.
    explicit ServiceConnection(int timeout);
    ~ServiceConnection();

    /// Looks up the host, connects, agrees on the sizes and opens the channel.
    OpcUa_StatusCode open(const QByteArray& url);

    /// Sends a request and fills its fresh response. Not Bad only if the response is decoded and
    /// answers this request; then it is the service result, or what a fault tells.
    template <class Request, class Response>
    OpcUa_StatusCode call(Request& request, Response& response)
    {
        request.header.timestamp = SecureChannel::wallClock();
        request.header.requestHandle = ++m_requestHandle;
        request.header.timeoutHint = OpcUa_UInt32(m_deadline.remainingTime());
        Message message;
        const OpcUa_StatusCode status = exchange(encodeMessage(request), message);
        return OpcUa_IsGood(status)
                   ? decodeResponse(message.body, m_requestHandle, response, decoderLimits())
                   : status;
    }

private:
    static DecoderLimits decoderLimits();
    OpcUa_StatusCode connectToHost(const QByteArray& url);
    OpcUa_StatusCode exchange(const QByteArray& body, Message& response);
    void flush();
    OpcUa_StatusCode receive();
    OpcUa_StatusCode checkTime() const;

    QDeadlineTimer m_deadline;
    QElapsedTimer m_clock;
    std::unique_ptr<QTcpSocket> m_socket; // connected by open()
    std::unique_ptr<SecureChannel> m_channel;
    OpcUa_UInt32 m_requestHandle = 0;
};

} // namespace UaWire

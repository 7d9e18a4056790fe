#pragma once

#include "platform/wire/messagechunks_p.h"

#include <QtCore/QDeadlineTimer>
#include <QtNetwork/QTcpSocket>

#include <memory>

namespace UaWire {

/// A connection with a secure channel without security, for one thread.
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
        return call(MessageType::Message, request, response);
    }

private:
    template <class Request, class Response>
    OpcUa_StatusCode call(MessageType type, Request& request, Response& response);
    template <class Response>
    OpcUa_StatusCode decodeResponse(QByteArrayView body, Response& response) const;
    OpcUa_StatusCode connectToHost(const QByteArray& url);
    OpcUa_StatusCode sayHello(const QByteArray& url);
    OpcUa_StatusCode openChannel();
    OpcUa_StatusCode exchange(MessageType type, const QByteArray& body, Message& response);
    void send(const QByteArray& bytes);
    OpcUa_StatusCode receive(MessageType type, Message& message);
    OpcUa_StatusCode waitForBytes();
    OpcUa_StatusCode checkTime() const;
    void fill(RequestHeader& header);

    QDeadlineTimer m_deadline;
    std::unique_ptr<QTcpSocket> m_socket; // connected by open()
    MessageReader m_reader;
    MessageWriter m_writer;
    OpcUa_UInt32 m_requestId = 0; // of the last request, and its handle
    OpcUa_UInt32 m_maxMessageSize = 0;
    OpcUa_UInt32 m_maxChunkCount = 0;
};

template <class Request, class Response>
OpcUa_StatusCode ServiceConnection::call(MessageType type, Request& request, Response& response)
{
    fill(request.header);
    Message message;
    const OpcUa_StatusCode status = exchange(type, encodeMessage(request), message);
    return OpcUa_IsGood(status) ? decodeResponse(message.body, response) : status;
}

template <class Response>
OpcUa_StatusCode ServiceConnection::decodeResponse(QByteArrayView body, Response& response) const
{
    switch (takeTypeId(body)) {
    case Response::encodingId: {
        const OpcUa_StatusCode status = decodeFields(body, response);
        if (OpcUa_IsBad(response.header.serviceResult))
            return response.header.serviceResult;
        if (OpcUa_IsNotGood(status))
            return status;
        if (response.header.requestHandle != m_requestId)
            return OpcUa_BadUnknownResponse;
        return response.header.serviceResult;
    }
    case ServiceFault::encodingId: {
        ServiceFault fault;
        const OpcUa_StatusCode status = decodeFields(body, fault);
        return OpcUa_IsGood(status) ? asFailure(fault.header.serviceResult) : status;
    }
    default:
        return OpcUa_BadUnknownResponse;
    }
}

} // namespace UaWire

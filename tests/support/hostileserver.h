#pragma once

#include "platform/wire/messagechunks_p.h"

#include <QtNetwork/QtNetwork>

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <thread>

/// The fields of a message that has a type.
template <class Fields>
Fields decoded(const UaWire::Message& message)
{
    QByteArrayView body = message.body;
    UaWire::takeTypeId(body);
    Fields fields;
    UaWire::decodeFields(body, fields);
    return fields;
}

/// Something that happens once, for any number of threads that wait. Of the standard library, so
/// that a thread sanitizer sees it.
class OneTimeEvent
{
public:
    void happen() { m_promise.set_value(); }
    void wait() { m_future.wait(); }
    /// Whether it has happened when the time is over.
    bool waitFor(std::chrono::milliseconds time)
    {
        return m_future.wait_for(time) == std::future_status::ready;
    }

private:
    std::promise<void> m_promise;
    const std::shared_future<void> m_future = m_promise.get_future();
};

/// The server's end of one connection, in the hands of a script. Every operation returns at once
/// when the client is gone or the server is to stop.
class ServerPeer
{
public:
    ServerPeer(QTcpSocket& socket, OneTimeEvent& stop) : m_socket(socket), m_stop(stop) {}

    /// The next message of the client.
    std::optional<UaWire::Message> receive()
    {
        std::optional<UaWire::Message> message;
        while (!(message = m_reader.next()) && OpcUa_IsGood(m_reader.status()) &&
               (m_socket.bytesAvailable() > 0 || goesOn()))
            if (m_socket.bytesAvailable() > 0 || m_socket.waitForReadyRead(5))
                m_reader.append(m_socket.readAll());
        return message;
    }
    void send(const QByteArray& bytes)
    {
        m_socket.write(bytes);
        while (m_socket.bytesToWrite() > 0 && goesOn())
            m_socket.waitForBytesWritten(5);
    }
    /// Neither reads nor writes until the server is to stop.
    void stall() { m_stop.wait(); }
    /// The client is there and the server is not to stop.
    bool goesOn()
    {
        return m_socket.state() == QAbstractSocket::ConnectedState && !m_stop.waitFor({});
    }

    // What a good server does. Each gives false, or no message, once the connection is of no use.
    bool acknowledge()
    {
        const std::optional<UaWire::Message> message = receive();
        UaWire::Hello hello;
        if (!message || message->type != UaWire::MessageType::Hello ||
            OpcUa_IsNotGood(UaWire::decodeFields(message->body, hello)))
            return false;
        writer.chunkSize = hello.receiveBufferSize;
        send(encodeConnectionMessage(
            UaWire::MessageType::Acknowledge,
            UaWire::Acknowledge{0, hello.sendBufferSize, hello.receiveBufferSize, 0, 0}));
        return true;
    }
    bool openChannel()
    {
        const std::optional<UaWire::Message> message = receive();
        if (!message || message->type != UaWire::MessageType::OpenSecureChannel)
            return false;
        giveToken(*message);
        return true;
    }
    /// Answers a request that opens the channel or renews its token. The first token is 4711.
    void giveToken(const UaWire::Message& request, OpcUa_UInt32 lifetime = 60000)
    {
        const auto asked = decoded<UaWire::OpenSecureChannelRequest>(request);
        UaWire::OpenSecureChannelResponse response;
        response.securityToken = {writer.channelId = 17, m_nextToken++, 0, lifetime};
        response.serverNonce = QByteArray(asked.clientNonce.size(), 's');
        answer(request, response);
        writer.tokenId = response.securityToken.tokenId;
        if (m_security)
            m_security->addToken(writer.tokenId, response.serverNonce, asked.clientNonce);
    }
    /// The channel is secured; before anything has come. `security` must outlive the peer.
    void secure(UaWire::ChannelSecurity& security)
    {
        m_security = &security;
        m_reader = UaWire::MessageReader({}, m_security);
        writer = UaWire::MessageWriter(m_security);
    }
    /// The next service request of an open channel, its channel opened before if need be.
    std::optional<UaWire::Message> takeRequest()
    {
        return writer.channelId != 0 || (acknowledge() && openChannel()) ? receive() : std::nullopt;
    }
    /// The bytes of an answer to a request, in chunks.
    template <class Response>
    QByteArray chunksOf(const UaWire::Message& request, Response& response)
    {
        response.header.requestHandle = decoded<UaWire::RequestHeader>(request).requestHandle;
        return writer.chunks(request.type, request.requestId, UaWire::encodeMessage(response));
    }
    template <class Response>
    void answer(const UaWire::Message& request, Response& response)
    {
        send(chunksOf(request, response));
    }

    UaWire::MessageWriter writer; ///< of channel 17 with token 4711 once the channel is open

private:
    QTcpSocket& m_socket;
    OneTimeEvent& m_stop;
    UaWire::MessageReader m_reader;
    UaWire::ChannelSecurity* m_security = nullptr;
    OpcUa_UInt32 m_nextToken = 4711;
};

/// A server on the loopback interface that treats each client, one after the other, as its script
/// says, on a thread of its own, and closes the connection after that. Listens once it is there.
class HostileServer
{
public:
    using Script = std::function<void(ServerPeer&)>;

    explicit HostileServer(const Script& script) : m_thread([this, script] { run(script); }) {}
    ~HostileServer()
    {
        m_stop.happen();
        m_thread.join();
    }

    /// With a path that the server does not look at.
    QByteArray url() const
    {
        return "opc.tcp://127.0.0.1:" + QByteArray::number(m_port.get()) + "/UA/Test";
    }

private:
    void run(const Script& script)
    {
        QTcpServer server;
        if (!server.listen(QHostAddress::LocalHost))
            qFatal("no port to listen on");
        m_listening.set_value(server.serverPort());
        while (!m_stop.waitFor({})) {
            if (!server.waitForNewConnection(5))
                continue;
            const std::unique_ptr<QTcpSocket> socket(server.nextPendingConnection());
            ServerPeer peer(*socket, m_stop);
            script(peer);
            socket->disconnectFromHost();
        }
    }

    OneTimeEvent m_stop;
    std::promise<quint16> m_listening;
    const std::shared_future<quint16> m_port = m_listening.get_future();
    std::thread m_thread;
};

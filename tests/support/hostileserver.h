#pragma once

#include "platform/wire/messagechunks_p.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <future>
#include <mutex>
#include <thread>

class QTcpSocket;

/// Something that happens once, for any number of threads that wait. Of the standard library, so
/// that a thread sanitizer sees it.
class OneTimeEvent
{
public:
    void happen();
    void wait();
    /// Whether it has happened when the time is over.
    bool waitFor(std::chrono::milliseconds time);
    bool hasHappened() { return waitFor({}); }

private:
    std::mutex m_mutex;
    std::condition_variable m_condition;
    bool m_happened = false;
};

/// The server's end of one connection, in the hands of a script. Every operation returns at once
/// when the client is gone or the server is to stop.
class ServerPeer
{
public:
    ServerPeer(QTcpSocket& socket, OneTimeEvent& stop) : m_socket(socket), m_stop(stop) {}

    /// The next message of the client.
    std::optional<UaWire::Message> receive();
    void send(QByteArrayView bytes);
    void sendSlowly(QByteArrayView bytes, std::chrono::milliseconds perByte);
    /// Neither reads nor writes until the server is to stop.
    void stall();
    /// The client is there and the server is not to stop.
    bool goesOn();

    // What a good server does. Each gives false, or no message, once the connection is of no use.
    bool acknowledge();
    bool openChannel();
    /// The next service request of an open channel, its channel opened before if need be.
    std::optional<UaWire::Message> takeRequest();
    /// The bytes of an answer to a request, in chunks.
    template <class Response>
    QByteArray chunksOf(const UaWire::Message& request, Response& response)
    {
        response.header.requestHandle = requestHandle(request);
        return writer.chunks(request.type, request.requestId, UaWire::encodeMessage(response));
    }
    template <class Response>
    void answer(const UaWire::Message& request, Response& response)
    {
        send(chunksOf(request, response));
    }
    static OpcUa_UInt32 requestHandle(const UaWire::Message& request);

    UaWire::MessageWriter writer; ///< of channel 17 with token 4711 once the channel is open

private:
    QTcpSocket& m_socket;
    OneTimeEvent& m_stop;
    UaWire::MessageReader m_reader;
};

/// A server on the loopback interface that treats each client, one after the other, as its script
/// says, and closes the connection after that.
class HostileServer
{
public:
    using Script = std::function<void(ServerPeer&)>;

    /// Listens when it returns. The script runs on a thread of the server.
    explicit HostileServer(Script script);
    ~HostileServer();
    HostileServer(const HostileServer&) = delete;
    HostileServer& operator=(const HostileServer&) = delete;

    /// With a path that the server does not look at.
    QByteArray url() const;

private:
    void run();

    Script m_script;
    OneTimeEvent m_stop;
    std::promise<quint16> m_listening;
    std::thread m_thread;
    quint16 m_port = 0;
};

#include "hostileserver.h"

#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>

#include <algorithm>
#include <memory>

using namespace UaWire;

namespace {

constexpr int poll = 5; // ms

} // namespace

void OneTimeEvent::happen()
{
    const std::lock_guard lock(m_mutex);
    m_happened = true;
    m_condition.notify_all();
}

void OneTimeEvent::wait()
{
    std::unique_lock lock(m_mutex);
    m_condition.wait(lock, [this] { return m_happened; });
}

bool OneTimeEvent::waitFor(std::chrono::milliseconds time)
{
    // By the system's clock: the other way of waiting is one that thread sanitizers do not know.
    std::unique_lock lock(m_mutex);
    return m_condition.wait_until(lock, std::chrono::system_clock::now() + time,
                                  [this] { return m_happened; });
}

bool ServerPeer::goesOn()
{
    return m_socket.state() == QAbstractSocket::ConnectedState && !m_stop.hasHappened();
}

std::optional<Message> ServerPeer::receive()
{
    for (;;) {
        if (std::optional<Message> message = m_reader.next())
            return message;
        if (OpcUa_IsNotGood(m_reader.status()))
            return {};
        while (m_socket.bytesAvailable() == 0) {
            if (!goesOn())
                return {};
            m_socket.waitForReadyRead(poll);
        }
        m_reader.append(m_socket.readAll());
    }
}

void ServerPeer::send(QByteArrayView bytes)
{
    constexpr qsizetype piece = 1 << 18;
    while (!bytes.isEmpty() && goesOn()) {
        const qsizetype size = std::min(piece, bytes.size());
        m_socket.write(bytes.data(), size);
        bytes = bytes.sliced(size);
        while (m_socket.bytesToWrite() > 0 && goesOn())
            m_socket.waitForBytesWritten(poll);
    }
}

void ServerPeer::sendSlowly(QByteArrayView bytes, std::chrono::milliseconds perByte)
{
    for (qsizetype i = 0; i < bytes.size() && goesOn(); ++i) {
        send(bytes.sliced(i, 1));
        m_stop.waitFor(perByte);
    }
}

void ServerPeer::stall()
{
    m_stop.wait();
}

bool ServerPeer::acknowledge()
{
    const std::optional<Message> message = receive();
    Hello hello;
    if (!message || message->type != MessageType::Hello ||
        OpcUa_IsNotGood(decodeFields(message->body, hello)))
        return false;
    Acknowledge acknowledge;
    acknowledge.receiveBufferSize = hello.sendBufferSize;
    acknowledge.sendBufferSize = hello.receiveBufferSize;
    writer.chunkSize = hello.receiveBufferSize;
    send(encodeConnectionMessage(MessageType::Acknowledge, acknowledge));
    return true;
}

bool ServerPeer::openChannel()
{
    const std::optional<Message> message = receive();
    if (!message || message->type != MessageType::OpenSecureChannel)
        return false;
    writer.channelId = 17;
    OpenSecureChannelResponse response;
    response.securityToken.channelId = writer.channelId;
    response.securityToken.tokenId = 4711;
    response.securityToken.revisedLifetime = 60000;
    answer(*message, response);
    writer.tokenId = response.securityToken.tokenId;
    return true;
}

std::optional<Message> ServerPeer::takeRequest()
{
    if (writer.channelId == 0 && !(acknowledge() && openChannel()))
        return {};
    return receive();
}

OpcUa_UInt32 ServerPeer::requestHandle(const Message& request)
{
    QByteArrayView body = request.body;
    takeTypeId(body);
    RequestHeader header;
    decodeFields(body, header);
    return header.requestHandle;
}

HostileServer::HostileServer(Script script) : m_script(std::move(script))
{
    m_thread = std::thread([this] { run(); });
    m_port = m_listening.get_future().get();
}

HostileServer::~HostileServer()
{
    m_stop.happen();
    m_thread.join();
}

QByteArray HostileServer::url() const
{
    return "opc.tcp://127.0.0.1:" + QByteArray::number(m_port) + "/UA/Test";
}

void HostileServer::run()
{
    QTcpServer server;
    if (!server.listen(QHostAddress::LocalHost))
        qFatal("no port to listen on");
    m_listening.set_value(server.serverPort());
    while (!m_stop.hasHappened()) {
        if (!server.waitForNewConnection(poll))
            continue;
        const std::unique_ptr<QTcpSocket> socket(server.nextPendingConnection());
        ServerPeer peer(*socket, m_stop);
        m_script(peer);
        socket->disconnectFromHost();
    }
}

#include "server.h"

#include "connection.h"

#include <QtNetwork/QTcpSocket>

namespace {

constexpr int maximumConnections = 50; // of one server
constexpr int freePortAttempts = 20;

} // namespace

QString Server::listen(quint16 port)
{
    for (int attempt = 0;; ++attempt) {
        if (!m_ipv4.listen(QHostAddress::LocalHost, port))
            return m_ipv4.errorString();
        if (m_ipv6.listen(QHostAddress::LocalHostIPv6, m_ipv4.serverPort()) ||
            m_ipv6.serverError() != QAbstractSocket::AddressInUseError)
            return {};
        m_ipv4.close();
        if (port != 0 || attempt == freePortAttempts)
            return m_ipv6.errorString();
    }
}

void Server::serve(const ServerFacts& facts)
{
    m_facts = &facts;
    for (QTcpServer* listener : {&m_ipv4, &m_ipv6}) {
        connect(listener, &QTcpServer::newConnection, this,
                [this, listener] { takeConnections(*listener); });
        takeConnections(*listener);
    }
}

void Server::takeConnections(QTcpServer& listener)
{
    while (QTcpSocket* socket = listener.nextPendingConnection()) {
        if (m_connections == maximumConnections) {
            delete socket;
            continue;
        }
        ++m_connections;
        auto* connection = new Connection(socket, *m_facts, this);
        connect(connection, &QObject::destroyed, this, [this] { --m_connections; });
    }
}

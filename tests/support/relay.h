#pragma once

#include <QtNetwork/QtNetwork>

/// A cable between a client and a server that can be pulled. Lives on a thread with an event loop.
class Relay : public QObject
{
public:
    explicit Relay(quint16 serverPort) : m_serverPort(serverPort)
    {
        m_listener.listen(QHostAddress::LocalHost);
        m_port = m_listener.serverPort();
        connect(&m_listener, &QTcpServer::newConnection, this, &Relay::accept);
    }

    ~Relay() { cut(); }

    quint16 port() const { return m_port; }
    QString url() const { return QStringLiteral("opc.tcp://127.0.0.1:%1").arg(m_port); }
    int connections() const { return m_connections; }
    /// New connections are to another server.
    void setServer(quint16 port) { m_serverPort = port; }

    /// What is connected falls silent: nothing is passed on, and nobody is told. New connections
    /// are silent, too.
    void pull() { m_silent = true; }
    /// All connections are reset, those that fell silent too.
    void cut()
    {
        const QList<QTcpSocket*> ends = m_listener.findChildren<QTcpSocket*>();
        for (QTcpSocket* end : ends) {
            end->disconnect(this);
            end->abort();
            end->deleteLater();
        }
    }
    /// New connections are refused.
    void refuse() { m_listener.close(); }
    void mend()
    {
        m_silent = false;
        if (!m_listener.isListening())
            m_listener.listen(QHostAddress::LocalHost, m_port);
    }

private:
    void accept()
    {
        while (QTcpSocket* client = m_listener.nextPendingConnection()) {
            ++m_connections;
            auto* server = new QTcpSocket(&m_listener);
            server->connectToHost(QHostAddress::LocalHost, m_serverPort);
            pass(client, server);
            pass(server, client);
        }
    }
    void pass(QTcpSocket* from, QTcpSocket* to)
    {
        connect(from, &QTcpSocket::readyRead, this, [this, from, to] {
            const QByteArray bytes = from->readAll();
            if (!m_silent && to->isOpen())
                to->write(bytes);
        });
        connect(from, &QTcpSocket::disconnected, this, [this, to] {
            if (!m_silent)
                to->disconnectFromHost();
        });
    }

    QTcpServer m_listener;
    quint16 m_serverPort;
    quint16 m_port = 0;
    bool m_silent = false;
    int m_connections = 0;
};

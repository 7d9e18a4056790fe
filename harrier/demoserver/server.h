#pragma once

#include "plant.h"

#include <QtCore/QObject>
#include <QtNetwork/QTcpServer>

/// One OPC UA server, on the loopback interface only. It answers the discovery services and nothing
/// else, over SecurityPolicy None.
class Server : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    /// Listens on 127.0.0.1, and on ::1 where there is IPv6; 0 takes a free port. Empty, or what
    /// went wrong.
    QString listen(quint16 port);
    quint16 port() const { return m_ipv4.serverPort(); }
    /// Clients that connected are served from now on. `facts` must outlive this object.
    void serve(const ServerFacts& facts);

private:
    void takeConnections(QTcpServer& listener);

    QTcpServer m_ipv4;
    QTcpServer m_ipv6;
    const ServerFacts* m_facts = nullptr;
    int m_connections = 0;
};

#pragma once

#include "platform/wire/hostlookup_p.h"

#include <QtCore/QTimer>
#include <QtNetwork/QTcpSocket>

#include <chrono>
#include <memory>
#include <vector>

class QDeadlineTimer;

namespace UaWire {

/// Connects to a host by that of its addresses that answers first (RFC 8305).
///
/// The addresses are tried in the system's order, IPv6 and IPv4 by turns: the next one as soon as
/// one fails, and after `attemptDelay` while the ones before are silent. The first connection
/// counts, the other attempts are given up. Asynchronous: lives on one thread, whose event loop
/// must run. Deleting it abandons what is under way and waits for nothing.
class Connector : public QObject
{
    Q_OBJECT
public:
    static constexpr std::chrono::milliseconds attemptDelay{250};

    explicit Connector(HostResolver& resolver = HostResolver::system(), QObject* parent = nullptr);
    ~Connector() override;

    /// To be called once. Looks up and connects without a proxy, until `deadline` at most. `mode`
    /// is that of the socket.
    void start(const QString& host, quint16 port, const QDeadlineTimer& deadline,
               QIODevice::OpenMode mode = QIODevice::ReadWrite);

    bool isFinished() const { return m_finished; }
    /// Once finished: Good, BadTimeout when the time is up; else the failure that tells most:
    /// BadConnectionRejected (an address is there, but nobody listens), BadTimeout (the system
    /// gave all up), BadCommunicationError (no such host, no way to it), BadResourceUnavailable
    /// (too many look-ups are stuck).
    OpcUa_StatusCode status() const { return m_status; }
    /// The connected socket, once, and no one's child; null unless Good.
    std::unique_ptr<QTcpSocket> takeSocket() { return std::move(m_socket); }

Q_SIGNALS:
    /// The addresses are known; connecting begins.
    void hostFound();
    /// Once, not before start() has returned. Receivers delete the connector by deleteLater().
    void finished();

private:
    void takeAddresses();
    void tryNext();
    void attemptFailed(QTcpSocket& socket);
    void finish(OpcUa_StatusCode status);

    HostResolver& m_resolver;
    std::unique_ptr<HostLookup> m_lookup;
    quint16 m_port = 0;
    QIODevice::OpenMode m_mode;
    QTimer m_timeout;
    QTimer m_next;
    QList<QHostAddress> m_addresses; // that have yet to be tried
    std::vector<std::unique_ptr<QTcpSocket>> m_attempts;
    std::size_t m_failed = 0; // attempts
    OpcUa_StatusCode m_status = OpcUa_BadCommunicationError;
    std::unique_ptr<QTcpSocket> m_socket;
    bool m_finished = false;
};

/// Why a socket has failed or was closed.
OpcUa_StatusCode socketStatus(QAbstractSocket::SocketError error);

} // namespace UaWire

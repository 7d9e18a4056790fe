#pragma once

#include "plant.h"
#include "platform/wire/messagechunks_p.h"

#include <QtCore/QTimer>

class QTcpSocket;

/// Serves one client until it closes the connection, is silent for too long or breaks the protocol.
/// Deletes itself then.
class Connection : public QObject
{
    Q_OBJECT
public:
    /// Takes over `socket`; `facts` must outlive this object.
    Connection(QTcpSocket* socket, const ServerFacts& facts, QObject* parent);

private:
    void readMessages();
    /// Good, or why the connection is to be closed.
    OpcUa_StatusCode handle(const UaWire::Message& message);
    OpcUa_StatusCode sayHello(QByteArrayView fields);
    OpcUa_StatusCode openChannel(const UaWire::Message& message);
    OpcUa_StatusCode answer(const UaWire::Message& message);
    QByteArray answerTo(OpcUa_UInt32 encodingId, QByteArrayView fields,
                        const UaWire::RequestHeader& header) const;
    /// Whether the client takes a message with this body.
    bool fits(const QByteArray& body) const;
    void refuse(OpcUa_StatusCode reason);
    /// Once all is written.
    void close();

    QTcpSocket* const m_socket;
    const ServerFacts& m_facts;
    QTimer m_silence;
    UaWire::MessageReader m_reader;
    UaWire::MessageWriter m_writer;
    UaWire::Hello m_hello;
    bool m_greeted = false;
    OpcUa_UInt32 m_tokenId = 0; // of the newest security token, 0 before the channel is open
    bool m_closing = false;
};

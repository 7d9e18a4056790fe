#pragma once

#include "platform/pki/secret_p.h"
#include "platform/wire/securechannel_p.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <functional>
#include <memory>
#include <unordered_map>

class QTcpSocket;

namespace UaWire {

class Connector;

/// The room for a request that holds a secret: more than enough; 0 for any other.
template <class Request>
qsizetype secretRoom(const Request&)
{
    return 0;
}

/// A connection with a secure channel on a thread with an event loop. Requests are answered in any
/// order. For one use: after a failure it only tells, once, that it is closed.
class SessionConnection : public QObject
{
    Q_OBJECT
public:
    explicit SessionConnection(QObject* parent = nullptr);
    /// Says farewell where the channel is open, and waits for nothing. No answer comes any more.
    ~SessionConnection() override;

    /// Where it connects to, and how; `timeout` in milliseconds for all steps together.
    void open(const QByteArray& url, const SecureChannel::Settings& settings, int timeout);

    /// Ends all requests with a status, now.
    void abandon(OpcUa_StatusCode status);

    bool isClosed() const { return m_closed; }
    /// While there is much to do, answers are not read one by one: each time some are waited for,
    /// as long as they are about to take, and no longer than a millisecond.
    void setAnswersAtATime(int count) { m_answersAtATime = count; }
    /// Answers that came together are being handed out; allAnswered() comes after the last one.
    bool isAnswering() const { return m_isReading; }
    bool isOpen() const { return m_channel && m_channel->state() == SecureChannel::State::Open; }
    OpcUa_UInt32 renewals() const { return m_channel ? m_channel->renewals() : 0; }
    quint64 requests() const { return m_requests; }
    quint64 bytesSent() const { return m_sent; }
    quint64 bytesReceived() const { return m_received; }
    OpcUa_DateTime lastMessage() const { return m_lastMessage; } // 0 for none

    /// Sends a request; `done(status, response)` is called once, later, unless the connection is
    /// deleted before. It may delete the connection.
    template <class Response, class Request, class Done>
    void call(Request& request, int timeout, const DecoderLimits& limits, Done done)
    {
        request.header.timestamp = SecureChannel::wallClock();
        request.header.requestHandle = ++m_requestHandle;
        request.header.timeoutHint = OpcUa_UInt32(timeout);
        const OpcUa_UInt32 handle = m_requestHandle;
        const qsizetype room = secretRoom(request);
        QByteArray message = encodeMessage(request, room);
        QByteArray sent = send(message, timeout, room > 0,
                               [handle, limits, done = std::move(done)](OpcUa_StatusCode status,
                                                                        const QByteArray& body) {
                                   Response response;
                                   if (OpcUa_IsGood(status))
                                       status = decodeResponse(body, handle, response, limits);
                                   done(status, response);
                               });
        if (room > 0) {
            wipe(message);
            wipe(sent);
        }
    }

Q_SIGNALS:
    void hostFound();
    void connected();
    /// The channel is open.
    void opened();
    void allAnswered();
    /// Once: it failed, or the server closed it. All requests have been answered before.
    void closed(OpcUa_StatusCode status, const UaString& reason);

private:
    using Done = std::function<void(OpcUa_StatusCode, const QByteArray&)>;
    struct Pending
    {
        qint64 deadline;
        Done done;
    };

    /// Returns the bytes that have left; none where they, or some of them, leave later.
    QByteArray send(const QByteArray& body, int timeout, bool isSecret, Done done);
    void socketConnected(const SecureChannel::Settings& settings);
    void readSocket();
    void readMessages();
    QByteArray flush();
    void checkTime();
    void arm();
    void close(OpcUa_StatusCode status, const UaString& reason = {});

    QElapsedTimer m_clock;
    QTimer m_timer; // of deadlines, and of the channel
    std::unique_ptr<Connector> m_connector;
    std::unique_ptr<QTcpSocket> m_socket;
    std::unique_ptr<SecureChannel> m_channel;
    QByteArray m_buffer;
    std::unordered_map<OpcUa_UInt32, Pending> m_pending;
    qint64 m_openDeadline = 0; // until the channel is open
    OpcUa_UInt32 m_requestHandle = 0;
    quint64 m_requests = 0;
    quint64 m_sent = 0;
    quint64 m_received = 0;
    OpcUa_DateTime m_lastMessage = 0;
    bool m_isReading = false;
    bool m_isBroken = false; // as a write has found; closed() is to come
    int m_answersAtATime = 1;
    int m_answers = 0;     // of this time
    qint64 m_lastRead = 0; // us
    qint64 m_pause = 0;    // us, before the next time
    bool m_closed = false;
};

} // namespace UaWire

#pragma once

#include "platform/pki/secret_p.h"
#include "session/completions_p.h"
#include "session/mailbox_p.h"
#include "session/session.h"
#include "session/sessionconnection_p.h"
#include "session/sessionmessages_p.h"

#include <QtCore/QHash>
#include <QtCore/QPromise>
#include <QtCore/QSet>
#include <QtCore/QTimer>

#include <atomic>
#include <deque>
#include <functional>
#include <map>
#include <memory>

/// What a server allows in one call; 0 for no limit (OPC 10000-5, 6.3.11).
struct OperationLimits
{
    OpcUa_UInt32 read = 0;
    OpcUa_UInt32 write = 0;
    OpcUa_UInt32 historyRead = 0;
    OpcUa_UInt32 call = 0;
    OpcUa_UInt32 browse = 0;
    OpcUa_UInt32 registerNodes = 0;
    OpcUa_UInt32 translate = 0;
    OpcUa_UInt32 monitoredItems = 0;
};

/// The same identifier in another namespace.
UaNodeId withNamespace(const UaNodeId& id, OpcUa_UInt16 index);

/// A text that is translated when somebody reads it. `text` is in the context "QvelSession".
struct SessionText
{
    const char* text = nullptr;
    QStringList arguments = {};

    QString said() const;
};

/// A QvelSessionError that is in no language yet.
struct SessionFailure
{
    SessionText step;
    UaStatusCode status;
    UaString reason;
    SessionText advice;

    QvelSessionError said() const;
};

class SessionSubscriptions;

/// The half of a session that lives on the thread of its own: the connection, its life, and the
/// calls. Nothing here is touched by another thread, but by way of this thread's event loop.
class SessionWorker : public QObject
{
    Q_OBJECT
public:
    /// Works for a session, on the thread of which `host` is; both are there as long as this is.
    SessionWorker(QvelSession& session, Mailbox& host);
    /// Ends the session without waiting for the server; all calls end with BadShutdown.
    ~SessionWorker() override;

    void connectToServer(const QvelDiscoverySetting& setting, const Secret& password,
                         const QvelSessionOptions& options);
    void disconnectFromServer();
    void reconnectNow();
    /// `question` is the number of the one that is answered: a late answer counts for no other.
    void answerCertificate(quint32 question, QvelCertificateAnswer answer);
    void answerPassword(quint32 question, const Secret& password, bool given);

    /// A service that answers each item of a list: read, write, ...
    template <class Item, class Result>
    void perform(const QList<Item>& items, std::shared_ptr<QPromise<Result>> promise);
    void browse(const QList<QvelBrowseItem>& items,
                std::shared_ptr<QPromise<QvelBrowseResult>> promise);
    void historyRead(const QList<QvelHistoryItem>& items, const QvelHistoryDetails& details,
                     std::shared_ptr<QPromise<QvelHistoryResult>> promise);

    SessionSubscriptions& subscriptions() { return *m_subscriptions; }
    /// Of functions that are to run here.
    Mailbox& mailbox() { return m_mailbox; }

    // For the services and the subscriptions.

    bool isConnected() const { return m_state == QvelSession::Connected && m_connection; }
    const OperationLimits& limits() const { return m_limits; }
    const QvelSessionOptions& options() const { return m_options; }
    const QStringList& namespaces() const { return m_namespaces; }
    /// Runs a function on the host's thread, later.
    void post(std::function<void(QvelSession&)> function) const
    {
        m_host.post([&session = m_session, function = std::move(function)] { function(session); });
    }
    /// Completes a call of the host's, soon: those whose answers came together, or, as long as
    /// more calls wait for room, some of them, at a time.
    void complete(std::function<void()> function);
    void log(const QString& text) const;
    /// Sends a request of the session. Without a connection, `done` comes with BadSessionClosed.
    template <class Response, class Request, class Done>
    void request(Request& r, int timeout, Done done)
    {
        send<Response>(isConnected() ? m_connection.get() : nullptr, r, timeout, std::move(done));
    }
    template <class Response, class Request, class Done>
    void request(Request& r, Done done)
    {
        request<Response>(r, m_options.callTimeout, std::move(done));
    }
    /// Runs a function when there is room for one more request. It sends one, and calls release()
    /// once that is answered.
    void whenRoom(std::function<void()> function);
    void release();
    /// The connection is of no use although it stands.
    void connectionLost(OpcUa_StatusCode status);

private:
    using State = QvelSession::State;
    struct BrowseOperation;
    void browseNodes(const std::shared_ptr<BrowseOperation>& operation,
                     const QList<qsizetype>& nodes);
    template <class Response>
    void takeBrowsePage(const std::shared_ptr<BrowseOperation>& operation,
                        const QList<qsizetype>& nodes, OpcUa_StatusCode status, Response& response);
    void browsePageDone(const std::shared_ptr<BrowseOperation>& operation);
    struct HistoryOperation;
    static UaWire::HistoryReadRequest historyRequest(const HistoryOperation& operation,
                                                     const QList<qsizetype>& nodes);
    void readHistoryPage(const std::shared_ptr<HistoryOperation>& operation,
                         const QList<qsizetype>& nodes);
    bool takeHistory(HistoryOperation& operation, qsizetype index, UaWire::HistoryReadResult& page);

    template <class Response, class Request, class Done>
    void send(UaWire::SessionConnection* connection, Request& request, int timeout, Done done);
    // A request of the connection's own life: an answer that comes after the connection has been
    // given up does not count, and one that it lost is told by closed().
    template <class Response, class Request, class Done>
    void step(Request& request, int timeout, Done done);
    void begin();
    void askEndpoints();
    void takeEndpoints(UaStackTypeArray<OpcUa_EndpointDescription>& endpoints);
    bool loadApplicationIdentity();
    bool loadUserIdentity();
    void checkServer();
    void openChannel();
    void createSession();
    void takeSession(UaWire::CreateSessionResponse& response);
    void activate();
    bool makeUserToken(UaWire::ActivateSessionRequest& request);
    void readServerTables();
    void becomeConnected();
    void useConnection(const QByteArray& url, const UaWire::SecureChannel::Settings& settings);
    void keepAlive();
    void setState(State state);
    void fail(OpcUa_StatusCode status, const UaString& reason = {}, const SessionText& advice = {},
              bool final = false);
    void waitToReconnect();
    void stop(OpcUa_StatusCode status = OpcUa_BadConnectionClosed);
    void tellStatistics();
    // What was dropped; where it is kept, it belongs to the worker.
    UaWire::SessionConnection* dropConnection(bool isKept = false);
    bool hasSession() const;
    void closeSession(OpcUa_StatusCode status);
    void abandonCalls(OpcUa_StatusCode status);
    void handOut();
    const UaWire::SecurityPolicy* policy() const;
    const OpcUa_EndpointDescription& endpoint() const { return *m_setting.endpointDescription(); }
    int timeLeft() const; // to connect, in milliseconds

    QvelSession& m_session; // on another thread
    Mailbox& m_host;
    Mailbox m_mailbox;
    Completions m_completions;
    const std::unique_ptr<SessionSubscriptions> m_subscriptions;
    QvelSessionOptions m_options;
    QvelDiscoverySetting m_wanted;  // as the host gave it
    QvelDiscoverySetting m_setting; // with the endpoint that was found
    Secret m_password;
    Secret m_keyPassword;
    bool m_keyPasswordGiven = false;

    State m_state = State::Disconnected;
    const char* m_step = nullptr; // instead of the state's, where nothing is sent
    bool m_lasted = false;        // was Connected since connectToServer()
    bool m_endpointKnown = false;
    QSet<QByteArray> m_announced; // kinds of security; none where the server was not asked
    QByteArray m_usedUrl;
    std::unique_ptr<UaWire::SessionConnection> m_connection;
    UaWire::SessionConnection* m_closing = nullptr; // makes Disconnected once it is answered
    QElapsedTimer m_connectClock;
    QTimer m_reconnectTimer;
    int m_attempts = 0; // to reconnect, in a row
    QTimer m_keepAliveTimer;
    QTimer m_questionTimer;
    QTimer m_statisticsTimer;
    QvelSessionStatistics m_statistics; // of the connections before

    QByteArray m_ownCertificate;
    UaWire::SharedKey m_ownKey;
    QByteArray m_userCertificate;
    UaWire::SharedKey m_userKey;
    quint32 m_question = 0; // the last one
    bool m_asksPassword = false;
    bool m_asksCertificate = false;
    bool m_isFiledTrusted = false;    // the certificate that is asked about
    QByteArray m_acceptedCertificate; // once

    UaNodeId m_sessionId;
    UaNodeId m_authenticationToken; // null without a session
    QByteArray m_clientNonce;
    QByteArray m_serverNonce;
    bool m_isNewSession = false;
    OperationLimits m_limits;
    QStringList m_namespaces;
    QStringList m_servers;

    std::deque<std::function<void()>> m_waiting;
    int m_underWay = 0;
    bool m_isReleasing = false;
};

template <class Response, class Request, class Done>
void SessionWorker::send(UaWire::SessionConnection* connection, Request& request, int timeout,
                         Done done)
{
    request.header.authenticationToken = m_authenticationToken;
    if (!connection) {
        QMetaObject::invokeMethod(
            this,
            [done = std::move(done)] {
                Response response;
                done(OpcUa_BadSessionClosed, response);
            },
            Qt::QueuedConnection);
        return;
    }
    connection->call<Response>(request, timeout, m_options.limits, std::move(done));
}

template <class Response, class Request, class Done>
void SessionWorker::step(Request& r, int timeout, Done done)
{
    const UaWire::SessionConnection* connection = m_connection.get();
    send<Response>(
        m_connection.get(), r, timeout,
        [this, connection, done = std::move(done)](OpcUa_StatusCode status, Response& response) {
            if (m_connection.get() == connection && !m_connection->isClosed())
                done(status, response);
        });
}

/// What the worker tells the session on the host's thread.
struct SessionHost
{
    struct Connection
    {
        QString announcedUrl;
        QString usedUrl;
        UaByteString serverCertificate;
        QStringList namespaces;
        QStringList servers;
    };
    static void tellState(const SessionWorker& worker, QvelSession::State state);
    static void tellError(const SessionWorker& worker, const SessionFailure& failure);
    template <class Question>
    static void ask(const SessionWorker& worker, quint32 number, const Question& question,
                    void (QvelSession::*signal)(const Question&));
    static void tellConnection(const SessionWorker& worker, const Connection& connection);
    static void tellStatistics(const SessionWorker& worker, const QvelSessionStatistics& figures);
    static void tellSubscription(const SessionWorker& worker, quint32 id,
                                 std::function<void(QvelSubscription&)> function);
    static void tellSubscriptionState(const SessionWorker& worker, quint32 id,
                                      const QvelSubscriptionParameters& revised,
                                      OpcUa_UInt32 serverId, OpcUa_StatusCode status);
};

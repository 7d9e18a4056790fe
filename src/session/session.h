#pragma once

#include "../discovery/discoverysetting.h"
#include "../platform/pki/uapkitruststore.h"
#include "../platform/types/uaencodinglimits.h"
#include "sessiontypes.h"
#include "subscription.h"

#include <QtCore/QFuture>
#include <QtCore/QObject>
#include <QtCore/QStringList>

#include <memory>

/// How an application presents itself, and what it allows. The same for all its sessions.
struct QvelSessionOptions
{
    QString applicationName;
    QString applicationUri; ///< as in the certificate; taken from it where this is empty
    QString productUri;
    QString certificateFile; ///< of the application, DER; needed for every policy but None
    QString privateKeyFile;  ///< PEM
    UaPkiTrustStore::Folders trust;
    QStringList locales;            ///< wanted of the server, the best first
    UaEncodingLimits limits;        ///< of what the server may send
    int connectTimeout = 15'000;    ///< for all steps up to the session, milliseconds
    int questionTimeout = 600'000;  ///< for the answer to a question; these count for no other
    int callTimeout = 30'000;       ///< for one request
    int sessionTimeout = 120'000;   ///< that the server is asked to keep a silent session
    int keepAliveInterval = 10'000; ///< between looks at the server's state where all is silent
    int channelLifetime = 3'600'000;
    bool reconnects = true; ///< after a connection that stood was lost
    /// To send a password in clear text, where the server asks for that.
    bool allowsPlainPassword = false;
    /// To connect to the URL that answered where the server announces another one.
    bool allowsOtherUrl = true;
    int maximumPendingRequests = 8; ///< under way at a time, Publish not counted
};

/// Why a step failed, in parts and in words.
struct KESTREL_EXPORT QvelSessionError
{
    QString step; ///< "Looking up the host", "Connecting", ...
    UaStatusCode status;
    UaString reason; ///< the server's own words, mostly none
    QString advice;  ///< a sentence that says what to do
    bool isNull() const { return step.isEmpty(); }
    /// All of it on one line.
    QString toString() const;
};

/// The certificate of a server that is not trusted, and everything that is wrong with it.
struct QvelCertificateQuestion
{
    UaPkiCertificate certificate; ///< null where it does not decode
    QList<UaPkiFinding> findings;
};
enum class QvelCertificateAnswer { Reject, AcceptOnce, AcceptAndTrust };

/// Where the password of the user's private key is missing.
struct QvelPasswordQuestion
{
    QString file;            ///< the key file
    bool isRepeated = false; ///< the last answer did not fit
};

/// Figures of the wire since connectToServer().
struct QvelSessionStatistics
{
    quint64 requests = 0;
    quint64 bytesSent = 0;
    quint64 bytesReceived = 0;
    quint32 tokenRenewals = 0;
    quint32 reconnects = 0;
    UaDateTime lastAnswer; ///< null for none
};

/// A session with an OPC UA server: the one object that a host holds.
///
/// It lives on the host's thread, which needs an event loop, and never blocks it: sockets,
/// cryptography and decoding live on a thread of the session's own. All its functions are to be
/// called on its thread; all signals come there. It may be deleted in any slot; calls that are
/// under way then end with BadShutdown.
///
/// Each service is a call that returns a future of a plain result, which outlives the session. Go
/// on with a QFutureWatcher, or with `.then(context, ...)` where the context stays until the result
/// is there: Qt 6.4 does not bear one that is deleted before. Cancelling a future abandons the
/// call; nothing throws. The caller asks for what it means: calls are cut by the server's limits,
/// several at a time, and put together again in order. They end after callTimeout for each request
/// that they need.
///
/// A connection that is lost comes back by itself: a new channel under the same session, else a new
/// session to which the subscriptions are transferred, else all made anew. Calls that were under
/// way end with BadConnectionClosed, since nobody knows whether the server has carried them out.
class KESTREL_EXPORT QvelSession : public QObject
{
    Q_OBJECT
public:
    enum State {
        Disconnected,
        LookingUp,
        Connecting,
        OpeningChannel,
        Creating,
        Activating,
        Connected,
        WaitingToReconnect
    };
    Q_ENUM(State)

    explicit QvelSession(const QvelSessionOptions& options = {}, QObject* parent = nullptr);
    /// Tells the server that the session ends, where it is connected, and does not wait for it.
    ~QvelSession() override;

    /// For the next connection.
    void setOptions(const QvelSessionOptions& options);
    QvelSessionOptions options() const;

    /// Connects, also where only URL, policy and mode of the endpoint are known: then the server is
    /// asked for its endpoints first. An empty policy stands for the best one. Ends a connection
    /// that stands. The answer comes by stateChanged() and failed().
    void connectToServer(const QvelDiscoverySetting& setting);
    /// Closes the session, deletes its subscriptions on the server and goes on to Disconnected,
    /// once the server has answered, or after a second.
    void disconnectFromServer();
    /// Tries again at once, where it waits to.
    void reconnectNow();

    State state() const;
    /// Of the last failure, null after a success.
    QvelSessionError lastError() const;
    QvelDiscoverySetting setting() const;
    /// Of the endpoint in use, once Connected.
    QString announcedUrl() const;
    QString usedUrl() const;
    UaByteString serverCertificate() const;
    QStringList namespaceArray() const;
    QStringList serverArray() const;
    QvelSessionStatistics statistics() const;

    /// A node by its namespace URI, and back by the table of the server that is connected. A
    /// namespace that is not in the table gives the null NodeId, an index that is not there stays.
    UaNodeId toNodeId(const UaExpandedNodeId& id) const;
    UaExpandedNodeId toExpandedNodeId(const UaNodeId& id) const;

    /// The answers to the questions below; ignored where nobody asked.
    void answerCertificate(QvelCertificateAnswer answer);
    void answerPassword(const QString& password);
    void cancelPassword();

    QFuture<QvelReadResult> read(const QList<QvelReadItem>& items);
    QFuture<QvelWriteResult> write(const QList<QvelWriteItem>& items);
    QFuture<QvelBrowseResult> browse(const QList<QvelBrowseItem>& items);
    QFuture<QvelTranslateResult> translateBrowsePaths(const QList<QvelBrowsePath>& paths);
    QFuture<QvelCallResult> call(const QList<QvelCallItem>& items);
    QFuture<QvelHistoryResult> historyRead(const QList<QvelHistoryItem>& items,
                                           const QvelHistoryDetails& details);
    QFuture<QvelRegisterResult> registerNodes(const QList<UaNodeId>& nodeIds);
    QFuture<QvelServiceResult> unregisterNodes(const QList<UaNodeId>& nodeIds);

    /// A subscription, which is the session's child and may be deleted to end it.
    QvelSubscription* createSubscription(const QvelSubscriptionParameters& parameters = {});

Q_SIGNALS:
    void stateChanged(QvelSession::State state);
    /// A step failed. State says whether the session tries again.
    void failed(const QvelSessionError& error);
    /// Nothing goes on until answerCertificate() is called, or the time to connect is over. Reject
    /// files the certificate under the rejected ones, except where it is trusted and something else
    /// was found, as another host name: then only this connection is refused.
    void certificateQuestion(const QvelCertificateQuestion& question);
    /// Nothing goes on until answerPassword() or cancelPassword() is called.
    void passwordQuestion(const QvelPasswordQuestion& question);
    /// The server's table of namespaces is another one than at the last connection.
    void namespacesChanged();
    /// Lines for a log: no secrets, no more than one for each step.
    void logMessage(const QString& text);

private:
    friend class QvelSubscription;
    friend struct SessionHost;
    class Private;
    const std::unique_ptr<Private> d;
};

Q_DECLARE_METATYPE(QvelSessionError)
Q_DECLARE_METATYPE(QvelCertificateQuestion)
Q_DECLARE_METATYPE(QvelPasswordQuestion)

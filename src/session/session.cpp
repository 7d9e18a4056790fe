#include "session.h"

#include "session_p.h"

#include <QtCore/QPointer>

#include <openssl/crypto.h>

#include <algorithm>

void SessionHost::tellState(const SessionWorker& worker, QvelSession::State state)
{
    worker.post([state](QvelSession& session) {
        session.d->state = state;
        if (state == QvelSession::Connected)
            session.d->failure = {};
        Q_EMIT session.stateChanged(state);
    });
}

void SessionHost::tellError(const SessionWorker& worker, const SessionFailure& failure)
{
    worker.post([failure](QvelSession& session) {
        session.d->failure = failure;
        const QvelSessionError error = failure.said();
        const QPointer<QvelSession> self(&session);
        Q_EMIT session.logMessage(error.toString());
        if (self)
            Q_EMIT session.failed(error);
    });
}

void SessionHost::tellConnection(const SessionWorker& worker, const Connection& connection)
{
    worker.post([connection](QvelSession& session) {
        const bool isOther = session.d->connection.namespaces != connection.namespaces;
        session.d->connection = connection;
        if (isOther)
            Q_EMIT session.namespacesChanged();
    });
}

void SessionHost::tellStatistics(const SessionWorker& worker, const QvelSessionStatistics& figures)
{
    worker.post([figures](QvelSession& session) { session.d->statistics = figures; });
}

void SessionHost::tellSubscription(const SessionWorker& worker, quint32 id,
                                   std::function<void(QvelSubscription&)> function)
{
    worker.post([id, function = std::move(function)](QvelSession& session) {
        if (QvelSubscription* subscription = session.d->subscriptions.value(id))
            function(*subscription);
    });
}

void SessionHost::tellSubscriptionState(const SessionWorker& worker, quint32 id,
                                        const QvelSubscriptionParameters& revised,
                                        OpcUa_UInt32 serverId, OpcUa_StatusCode status)
{
    tellSubscription(worker, id, [=](QvelSubscription& subscription) {
        subscription.d->revised = revised;
        subscription.d->serverId = serverId;
        Q_EMIT subscription.changed(status);
    });
}

QString SessionText::said() const
{
    QString said = text ? QvelSession::tr(text) : QString();
    for (const QString& argument : arguments)
        said = said.arg(argument);
    return said;
}

QvelSessionError SessionFailure::said() const
{
    return {step.said(), status, reason, advice.said()};
}

QString QvelSessionError::toString() const
{
    if (isNull())
        return QString();
    QString text = step + QLatin1String(": ") + status.toString().toQString();
    if (!reason.isEmpty())
        text += QLatin1String(" (") + reason.toQString() + QLatin1Char(')');
    return advice.isEmpty() ? text : text + QLatin1String(". ") + advice;
}

// Whoever waits for a QThread does not wait for what its libraries put away after it: at the end of
// the process that could be too late.
void SessionThread::run()
{
    exec();
    delete worker;
    OPENSSL_thread_stop();
}

QvelSession::QvelSession(const QvelSessionOptions& options, QObject* parent)
    : QObject(parent), d(std::make_unique<Private>())
{
    d->options = options;
    d->mailbox.setParent(this); // to be on its thread, wherever that is
    // Runs only while this object is there: the destructor waits for the thread.
    d->thread.worker = new SessionWorker(*this, d->mailbox);
    d->thread.worker->moveToThread(&d->thread);
    d->thread.setObjectName(QStringLiteral("QvelSession"));
    d->thread.start();
}

QvelSession::~QvelSession()
{
    // In a slot of a subscription, it is still on the stack: QObject deletes it as a child.
    for (QvelSubscription* subscription : std::as_const(d->subscriptions))
        subscription->d->session = nullptr;
    d->subscriptions.clear();
    d->thread.quit();
    d->thread.wait();
}

void QvelSession::setOptions(const QvelSessionOptions& options)
{
    d->options = options;
}

QvelSessionOptions QvelSession::options() const
{
    return d->options;
}

void QvelSession::connectToServer(const QvelDiscoverySetting& setting)
{
    // The password travels by itself, so that it can be wiped.
    Secret password(setting.password().toUtf8());
    d->setting = setting;
    d->setting.setPassword(QString());
    d->failure = {};
    d->run([plain = d->setting, password, options = d->options](SessionWorker& worker) {
        worker.connectToServer(plain, password, options);
    });
}

void QvelSession::disconnectFromServer()
{
    d->run([](SessionWorker& worker) { worker.disconnectFromServer(); });
}

void QvelSession::reconnectNow()
{
    d->run([](SessionWorker& worker) { worker.reconnectNow(); });
}

QvelSession::State QvelSession::state() const
{
    return d->state;
}

QvelSessionError QvelSession::lastError() const
{
    return d->failure.said();
}

QvelDiscoverySetting QvelSession::setting() const
{
    return d->setting;
}

QString QvelSession::announcedUrl() const
{
    return d->connection.announcedUrl;
}

QString QvelSession::usedUrl() const
{
    return d->connection.usedUrl;
}

UaByteString QvelSession::serverCertificate() const
{
    return d->connection.serverCertificate;
}

QStringList QvelSession::namespaceArray() const
{
    return d->connection.namespaces;
}

QStringList QvelSession::serverArray() const
{
    return d->connection.servers;
}

QvelSessionStatistics QvelSession::statistics() const
{
    return d->statistics;
}

UaNodeId withNamespace(const UaNodeId& id, OpcUa_UInt16 index)
{
    UaWire::Owned<OpcUa_NodeId> stack;
    static_cast<void>(id.copyTo(&stack.value));
    stack.value.NamespaceIndex = index;
    return UaNodeId(stack.value);
}

UaNodeId QvelSession::toNodeId(const UaExpandedNodeId& id) const
{
    if (id.namespaceUri().isEmpty())
        return id.nodeId();
    const qsizetype index = d->connection.namespaces.indexOf(id.namespaceUri().toQString());
    return index < 0 ? UaNodeId() : withNamespace(id.nodeId(), OpcUa_UInt16(index));
}

UaExpandedNodeId QvelSession::toExpandedNodeId(const UaNodeId& id) const
{
    const QString uri = d->connection.namespaces.value(id.namespaceIndex());
    if (id.namespaceIndex() == 0 || uri.isEmpty())
        return UaExpandedNodeId(id, UaString(), 0);
    return UaExpandedNodeId(withNamespace(id, 0), UaString(uri.toUtf8()), 0);
}

void QvelSession::answerCertificate(QvelCertificateAnswer answer)
{
    d->run([number = d->question, answer](SessionWorker& worker) {
        worker.answerCertificate(number, answer);
    });
}

void QvelSession::answerPassword(const QString& password)
{
    d->run([number = d->question, secret = Secret(password.toLocal8Bit())](SessionWorker& worker) {
        worker.answerPassword(number, secret, true);
    });
}

void QvelSession::cancelPassword()
{
    d->run([number = d->question](SessionWorker& worker) {
        worker.answerPassword(number, {}, false);
    });
}

QFuture<QvelReadResult> QvelSession::read(const QList<QvelReadItem>& items)
{
    return d->perform<QvelReadResult>(items);
}

QFuture<QvelWriteResult> QvelSession::write(const QList<QvelWriteItem>& items)
{
    return d->perform<QvelWriteResult>(items);
}

QFuture<QvelBrowseResult> QvelSession::browse(const QList<QvelBrowseItem>& items)
{
    return d->start<QvelBrowseResult>(
        [items](SessionWorker& worker, auto& promise) { worker.browse(items, promise); });
}

QFuture<QvelTranslateResult> QvelSession::translateBrowsePaths(const QList<QvelBrowsePath>& paths)
{
    return d->perform<QvelTranslateResult>(paths);
}

QFuture<QvelCallResult> QvelSession::call(const QList<QvelCallItem>& items)
{
    return d->perform<QvelCallResult>(items);
}

QFuture<QvelHistoryResult> QvelSession::historyRead(const QList<QvelHistoryItem>& items,
                                                    const QvelHistoryDetails& details)
{
    return d->start<QvelHistoryResult>([items, details](SessionWorker& worker, auto& promise) {
        worker.historyRead(items, details, promise);
    });
}

QFuture<QvelRegisterResult> QvelSession::registerNodes(const QList<UaNodeId>& nodeIds)
{
    return d->perform<QvelRegisterResult>(nodeIds);
}

QFuture<QvelServiceResult> QvelSession::unregisterNodes(const QList<UaNodeId>& nodeIds)
{
    return d->perform<QvelServiceResult>(nodeIds);
}

QvelSubscription* QvelSession::createSubscription(const QvelSubscriptionParameters& parameters)
{
    auto* subscription = new QvelSubscription(this, parameters);
    subscription->d->id = ++d->lastSubscription;
    d->subscriptions.insert(subscription->d->id, subscription);
    d->run([id = subscription->d->id, parameters](SessionWorker& worker) {
        worker.subscriptions().create(id, parameters);
    });
    return subscription;
}

namespace {

// By their number.
constexpr const char* attributeNames[] = {"",
                                          "NodeId",
                                          "NodeClass",
                                          "BrowseName",
                                          "DisplayName",
                                          "Description",
                                          "WriteMask",
                                          "UserWriteMask",
                                          "IsAbstract",
                                          "Symmetric",
                                          "InverseName",
                                          "ContainsNoLoops",
                                          "EventNotifier",
                                          "Value",
                                          "DataType",
                                          "ValueRank",
                                          "ArrayDimensions",
                                          "AccessLevel",
                                          "UserAccessLevel",
                                          "MinimumSamplingInterval",
                                          "Historizing",
                                          "Executable",
                                          "UserExecutable",
                                          "DataTypeDefinition",
                                          "RolePermissions",
                                          "UserRolePermissions",
                                          "AccessRestrictions",
                                          "AccessLevelEx"};
static_assert(std::size(attributeNames) == QvelAttribute::AccessLevelEx + 1);

} // namespace

const char* QvelAttribute::name(OpcUa_UInt32 id)
{
    return id > 0 && id < std::size(attributeNames) ? attributeNames[id] : nullptr;
}

OpcUa_UInt32 QvelAttribute::fromName(const QString& name)
{
    const auto found = std::find(std::begin(attributeNames) + 1, std::end(attributeNames), name);
    return found == std::end(attributeNames)
               ? 0
               : OpcUa_UInt32(std::distance(std::begin(attributeNames), found));
}

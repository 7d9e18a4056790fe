#pragma once

#include "session/session.h"
#include "session/sessionsubscriptions_p.h"
#include "session/sessionworker_p.h"

#include <QtCore/QHash>
#include <QtCore/QThread>

class QvelSubscription::Private
{
public:
    QvelSession* session = nullptr;
    quint32 id = 0;
    QvelSubscriptionParameters parameters;
    QvelSubscriptionParameters revised;
    OpcUa_UInt32 serverId = 0;
    QList<OpcUa_UInt32> items;
};

/// Runs a worker, and ends with it.
class SessionThread : public QThread
{
public:
    SessionWorker* worker = nullptr;

protected:
    void run() override;
};

class QvelSession::Private
{
public:
    QvelSessionOptions options;
    QvelDiscoverySetting setting;
    QvelSession::State state = QvelSession::Disconnected;
    SessionFailure failure;
    SessionHost::Connection connection;
    QvelSessionStatistics statistics;
    Mailbox mailbox;
    SessionThread thread;
    QHash<quint32, QvelSubscription*> subscriptions;
    quint32 lastSubscription = 0;
    quint32 question = 0; // the worker's last one that was told
    OpcUa_UInt32 lastHandle = 0;

    // Runs a function of the worker on its thread.
    template <class Function>
    void run(Function function)
    {
        thread.worker->mailbox().post(
            [target = thread.worker, function = std::move(function)]() mutable {
                function(*target);
            });
    }
    template <class Result, class Function>
    QFuture<Result> start(Function function)
    {
        // Whoever drops the promise without an answer did so because the session is gone.
        auto promise =
            std::shared_ptr<QPromise<Result>>(new QPromise<Result>, [](QPromise<Result>* p) {
                if (!p->future().isFinished()) {
                    Result result;
                    result.status = OpcUa_BadShutdown;
                    p->addResult(result);
                    p->finish();
                }
                delete p;
            });
        promise->start();
        QFuture<Result> future = promise->future();
        run([function = std::move(function), promise = std::move(promise)](SessionWorker& w) {
            function(w, promise);
        });
        return future;
    }
    template <class Result, class Item>
    QFuture<Result> perform(const QList<Item>& items)
    {
        return start<Result>(
            [items](SessionWorker& w, auto& promise) { w.perform(items, promise); });
    }
};

template <class Question>
void SessionHost::ask(const SessionWorker& worker, quint32 number, const Question& question,
                      void (QvelSession::*signal)(const Question&))
{
    worker.post([=](QvelSession& session) {
        session.d->question = number;
        Q_EMIT(session.*signal)(question);
    });
}

#include "subscription.h"

#include "session/session_p.h"

#include <QtCore/QSet>

QvelSubscription::QvelSubscription(QvelSession* session,
                                   const QvelSubscriptionParameters& parameters)
    : QObject(session), d(std::make_unique<Private>())
{
    d->session = session;
    d->parameters = d->revised = parameters;
}

QvelSubscription::~QvelSubscription()
{
    if (!d->session)
        return;
    d->session->d->subscriptions.remove(d->id);
    d->session->d->run([id = d->id](SessionWorker& worker) { worker.subscriptions().remove(id); });
}

QvelSubscriptionParameters QvelSubscription::parameters() const
{
    return d->parameters;
}

QvelSubscriptionParameters QvelSubscription::revisedParameters() const
{
    return d->revised;
}

OpcUa_UInt32 QvelSubscription::subscriptionId() const
{
    return d->serverId;
}

void QvelSubscription::setParameters(const QvelSubscriptionParameters& parameters)
{
    d->parameters = parameters;
    d->session->d->run([id = d->id, parameters](SessionWorker& worker) {
        worker.subscriptions().setParameters(id, parameters);
    });
}

void QvelSubscription::setPublishingEnabled(bool enabled)
{
    QvelSubscriptionParameters parameters = d->parameters;
    parameters.publishingEnabled = enabled;
    setParameters(parameters);
}

QList<OpcUa_UInt32> QvelSubscription::addItems(const QList<QvelMonitoredItem>& items)
{
    OpcUa_UInt32& last = d->session->d->lastHandle;
    const OpcUa_UInt32 first = last + 1;
    QList<OpcUa_UInt32> handles;
    for (qsizetype i = 0; i < items.size(); ++i)
        handles.append(++last);
    d->items += handles;
    d->session->d->run([id = d->id, first, items,
                        namespaces = d->session->namespaceArray()](SessionWorker& worker) {
        worker.subscriptions().addItems(id, first, items, namespaces);
    });
    return handles;
}

void QvelSubscription::modifyItem(OpcUa_UInt32 handle, const QvelMonitoredItem& item)
{
    d->session->d->run([id = d->id, handle, item](SessionWorker& worker) {
        worker.subscriptions().modifyItem(id, handle, item);
    });
}

void QvelSubscription::setMonitoringMode(const QList<OpcUa_UInt32>& handles,
                                         QvelMonitoringMode mode)
{
    d->session->d->run([id = d->id, handles, mode](SessionWorker& worker) {
        worker.subscriptions().setMode(id, handles, mode);
    });
}

void QvelSubscription::removeItems(const QList<OpcUa_UInt32>& handles)
{
    const QSet<OpcUa_UInt32> gone(handles.begin(), handles.end());
    d->items.removeIf([&gone](OpcUa_UInt32 handle) { return gone.contains(handle); });
    d->session->d->run([id = d->id, handles](SessionWorker& worker) {
        worker.subscriptions().removeItems(id, handles);
    });
}

QList<OpcUa_UInt32> QvelSubscription::items() const
{
    return d->items;
}

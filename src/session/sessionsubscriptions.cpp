#include "sessionsubscriptions_p.h"

#include <algorithm>

using namespace UaWire;

namespace {

constexpr OpcUa_UInt32 baseEventType = 2041;
constexpr qsizetype mostItemsAtATime = 1000;
// Bytes of notifications that wait for the host's thread, and what one takes beside its own;
// beyond, they are dropped and told as a gap.
constexpr qint64 mostInFlight = 512 * 1024 * 1024;
constexpr qint64 notificationSize = 200;
// Bytes of messages that came before one that is missing.
constexpr qint64 mostHeld = 64 * 1024 * 1024;
// Missing messages that are asked for; servers keep no more.
constexpr OpcUa_UInt32 mostRepublished = 1000;
constexpr int silenceInterval = 1000;   // ms
constexpr qint64 repeatWindow = 30'000; // ms
constexpr qsizetype mostAcknowledgements = 1000;

OpcUa_UInt32 after(OpcUa_UInt32 sequence)
{
    return sequence == 0xffffffffu ? 1 : sequence + 1; // 0 is no sequence number
}

// How far `sequence` lies ahead of `last`; more than half of all numbers is behind.
OpcUa_UInt32 ahead(OpcUa_UInt32 sequence, OpcUa_UInt32 last)
{
    return sequence - last;
}
constexpr OpcUa_UInt32 isBehind = 0x80000000u;

// The answer went with the connection.
bool isLost(OpcUa_StatusCode status)
{
    return status == OpcUa_BadConnectionClosed || status == OpcUa_BadSessionClosed ||
           status == OpcUa_BadShutdown;
}

} // namespace

SessionSubscriptions::SessionSubscriptions(SessionWorker& worker)
    : QObject(&worker), m_worker(worker), m_silenceTimer(this),
      m_inFlight(std::make_shared<std::atomic<qint64>>(0))
{
    m_clock.start();
    connect(&m_silenceTimer, &QTimer::timeout, this, &SessionSubscriptions::checkSilence);
}

SessionSubscriptions::~SessionSubscriptions() = default;

void SessionSubscriptions::tell(quint32 id, std::function<void(QvelSubscription&)> function) const
{
    SessionHost::tellSubscription(m_worker, id, std::move(function));
}

SessionSubscriptions::Subscription* SessionSubscriptions::find(quint32 id)
{
    const auto found = m_subscriptions.find(id);
    return found == m_subscriptions.end() ? nullptr : &found->second;
}

SessionSubscriptions::Subscriptions::iterator
SessionSubscriptions::findServerId(OpcUa_UInt32 serverId)
{
    return std::find_if(m_subscriptions.begin(), m_subscriptions.end(),
                        [serverId](const auto& s) { return s.second.serverId == serverId; });
}

void SessionSubscriptions::create(quint32 id, const QvelSubscriptionParameters& parameters)
{
    m_subscriptions[id].wanted = m_subscriptions[id].revised = parameters;
    sync(id);
}

void SessionSubscriptions::remove(quint32 id)
{
    const auto found = m_subscriptions.find(id);
    if (found == m_subscriptions.end())
        return;
    const OpcUa_UInt32 serverId = found->second.serverId;
    m_subscriptions.erase(found);
    if (serverId != 0 && m_worker.isConnected())
        deleteSubscription(serverId);
}

void SessionSubscriptions::deleteSubscription(OpcUa_UInt32 serverId)
{
    DeleteSubscriptionsRequest request;
    request.items = {serverId};
    m_worker.request<DeleteSubscriptionsResponse>(
        request, [](OpcUa_StatusCode, DeleteSubscriptionsResponse&) {});
}

void SessionSubscriptions::setParameters(quint32 id, const QvelSubscriptionParameters& parameters)
{
    Subscription* s = find(id);
    if (!s)
        return;
    s->isModeChanged |= s->wanted.publishingEnabled != parameters.publishingEnabled;
    s->isChanged = true;
    s->failed = false;
    s->wanted = parameters;
    sync(id);
}

void SessionSubscriptions::addItems(quint32 id, OpcUa_UInt32 firstHandle,
                                    const QList<QvelMonitoredItem>& items,
                                    const QStringList& namespaces)
{
    Subscription* s = find(id);
    if (!s)
        return;
    for (const QvelMonitoredItem& wanted : items) {
        s->last.push_back({firstHandle, {}});
        Item& item = s->items[firstHandle++];
        item.wanted = wanted;
        item.namespaceUri = namespaces.value(wanted.nodeId.namespaceIndex());
    }
    sync(id);
}

void SessionSubscriptions::modifyItem(quint32 id, OpcUa_UInt32 handle,
                                      const QvelMonitoredItem& wanted)
{
    Subscription* s = find(id);
    const auto found = s ? s->items.find(handle) : decltype(s->items.end()){};
    if (!s || found == s->items.end())
        return;
    Item& item = found->second;
    const UaNodeId node = item.wanted.nodeId;
    item.isModeChanged |= item.wanted.mode != wanted.mode;
    item.isChanged = true;
    item.failed = false;
    item.wanted = wanted;
    item.wanted.nodeId = node;
    sync(id);
}

void SessionSubscriptions::setMode(quint32 id, const QList<OpcUa_UInt32>& handles,
                                   QvelMonitoringMode mode)
{
    Subscription* s = find(id);
    if (!s)
        return;
    for (OpcUa_UInt32 handle : handles) {
        const auto found = s->items.find(handle);
        if (found == s->items.end() || found->second.wanted.mode == mode)
            continue;
        found->second.wanted.mode = mode;
        found->second.isModeChanged = true;
    }
    sync(id);
}

void SessionSubscriptions::removeItems(quint32 id, const QList<OpcUa_UInt32>& handles)
{
    Subscription* s = find(id);
    if (!s)
        return;
    QList<OpcUa_UInt32> gone;
    for (OpcUa_UInt32 handle : handles) {
        const auto found = s->items.find(handle);
        if (found == s->items.end())
            continue;
        if (found->second.serverId != 0)
            s->toDelete.append(found->second.serverId);
        s->items.erase(found);
        gone.append(handle);
    }
    // All at once: one by one, those behind would move up as often.
    std::sort(gone.begin(), gone.end());
    const auto isGone = [&gone](const Last& each) {
        return std::binary_search(gone.cbegin(), gone.cend(), each.handle);
    };
    s->last.erase(std::remove_if(s->last.begin(), s->last.end(), isGone), s->last.end());
    sync(id);
}

std::vector<SessionSubscriptions::Last>::iterator
SessionSubscriptions::Subscription::findLast(OpcUa_UInt32 handle)
{
    const auto found =
        std::lower_bound(last.begin(), last.end(), handle,
                         [](const Last& each, OpcUa_UInt32 h) { return each.handle < h; });
    return found != last.end() && found->handle == handle ? found : last.end();
}

// The server has nothing any more: all is made anew, and nobody knows what was missed.
void SessionSubscriptions::lose(Subscription& s)
{
    if (s.serverId != 0) {
        s.wasLost = true;
        m_worker.log(QvelSession::tr("Subscription %1 is lost, and made anew").arg(s.serverId));
    }
    clear(s);
}

void SessionSubscriptions::clear(Subscription& s)
{
    s.serverId = 0;
    s.lastSequence = 0;
    s.held.clear();
    s.heldBytes = 0;
    s.toDelete.clear();
    s.isRepublishing = s.probes = s.hasUnknownItems = false;
    for (auto& [handle, item] : s.items)
        item.serverId = 0;
}

void SessionSubscriptions::forget()
{
    for (auto& [id, s] : m_subscriptions) {
        s.wasLost |= s.serverId != 0;
        clear(s);
    }
}

void SessionSubscriptions::disconnected()
{
    ++m_generation;
    m_publishing = 0;
    m_silenceTimer.stop();
    m_acknowledgements.clear();
    for (auto& [id, s] : m_subscriptions) {
        if (s.isBusy)
            makeUncertain(s);
        s.isBusy = s.makesItems = s.isRepublishing = false;
        s.failed = false;
        s.held.clear();
        s.heldBytes = 0;
        for (auto& [handle, item] : s.items)
            item.failed = false;
    }
}

void SessionSubscriptions::connected(bool isNewSession)
{
    m_mostPublishing = 10;
    m_repeatsUntil = m_clock.elapsed() + repeatWindow;
    m_silenceTimer.start(silenceInterval);
    for (auto& [id, s] : m_subscriptions) {
        s.heard = m_clock.elapsed();
        // Items that only the server knows would speak twice.
        if (std::exchange(s.hasUnknownItems, false) && s.serverId != 0) {
            deleteSubscription(s.serverId);
            lose(s);
        }
        for (auto& [handle, item] : s.items) {
            if (item.namespaceUri.isEmpty())
                item.namespaceUri =
                    m_worker.namespaces().value(item.wanted.nodeId.namespaceIndex());
        }
    }
    if (isNewSession)
        return transfer();
    for (auto& [id, s] : m_subscriptions) {
        s.probes = s.serverId != 0;
        if (s.probes)
            republish(id, s);
        sync(id);
    }
}

// Takes the subscriptions along into a new session (OPC 10000-4, 5.13.7). Their items stay, and
// what was not delivered is asked for again.
void SessionSubscriptions::transfer()
{
    TransferSubscriptionsRequest request;
    request.sendInitialValues = false;
    QList<quint32> ids;
    for (const auto& [id, s] : m_subscriptions) {
        if (s.serverId == 0)
            continue;
        ids.append(id);
        request.subscriptionIds.append(s.serverId);
    }
    const auto syncAll = [this] {
        for (const auto& entry : m_subscriptions)
            sync(entry.first);
    };
    if (ids.isEmpty())
        return syncAll();
    for (quint32 id : std::as_const(ids))
        m_subscriptions[id].isBusy = true;
    m_worker.request<TransferSubscriptionsResponse>(
        request, [this, ids, syncAll, generation = m_generation](
                     OpcUa_StatusCode status, TransferSubscriptionsResponse& response) {
            if (generation != m_generation)
                return;
            const bool ok = !OpcUa_IsBad(status) && response.results.size() == ids.size();
            for (qsizetype i = 0; i < ids.size(); ++i) {
                Subscription* s = find(ids[i]);
                if (!s)
                    continue;
                s->isBusy = false;
                if (!ok || response.results[i].statusCode.isBad()) {
                    lose(*s);
                } else {
                    s->probes = true;
                    republish(ids[i], *s);
                }
            }
            syncAll();
        });
}

// The answer to a request is lost: the server may have carried it out, or not.
void SessionSubscriptions::makeUncertain(Subscription& s)
{
    s.hasUnknownItems |= s.makesItems;
    s.isChanged = s.isModeChanged = true;
    for (auto& [handle, item] : s.items)
        item.isChanged = item.isModeChanged = true;
}

template <class Response, class Request, class Done>
void SessionSubscriptions::change(quint32 id, Request& request, Done done)
{
    find(id)->isBusy = true;
    m_worker.request<Response>(
        request, [this, id, generation = m_generation,
                  done = std::move(done)](OpcUa_StatusCode status, Response& response) {
            if (generation != m_generation)
                return;
            Subscription* s = find(id);
            if constexpr (std::is_same_v<Response, CreateSubscriptionResponse>) {
                if (!s && !OpcUa_IsBad(status)) // removed before it was there
                    deleteSubscription(response.subscriptionId);
            }
            if (!s || isLost(status))
                return; // disconnected() comes next
            s->hasUnknownItems |= s->makesItems && status == OpcUa_BadTimeout;
            s->isBusy = s->makesItems = false;
            if (status == OpcUa_BadSubscriptionIdInvalid)
                lose(*s);
            else
                done(*s, status, response);
            sync(id);
        });
}

void SessionSubscriptions::sync(quint32 id)
{
    Subscription* s = find(id);
    if (!s || s->isBusy || s->failed || !m_worker.isConnected())
        return;
    static_cast<void>(syncSubscription(id, *s) || deleteItems(id, *s) || createItems(id, *s) ||
                      modifyItems(id, *s) || setModes(id, *s));
    publish();
}

bool SessionSubscriptions::syncSubscription(quint32 id, Subscription& s)
{
    if (s.serverId == 0) {
        CreateSubscriptionRequest request;
        request.parameters = s.wanted;
        s.isChanged = s.isModeChanged = false;
        change<CreateSubscriptionResponse>(
            id, request,
            [this, id](Subscription& sub, OpcUa_StatusCode status,
                       CreateSubscriptionResponse& response) {
                sub.failed = OpcUa_IsBad(status);
                if (!sub.failed) {
                    sub.serverId = response.subscriptionId;
                    sub.revised = sub.wanted;
                    sub.revised.publishingInterval = response.revisedPublishingInterval;
                    sub.revised.lifetimeCount = response.revisedLifetimeCount;
                    sub.revised.maxKeepAliveCount = response.revisedMaxKeepAliveCount;
                    sub.heard = m_clock.elapsed();
                    if (std::exchange(sub.wasLost, false))
                        tell(id, [](QvelSubscription& host) { Q_EMIT host.gap(0); });
                }
                tellChanged(id, sub, status);
            });
        return true;
    }
    if (s.isChanged) {
        s.isChanged = false;
        ModifySubscriptionRequest request;
        request.subscriptionId = s.serverId;
        request.parameters = s.wanted;
        change<ModifySubscriptionResponse>(
            id, request,
            [this, id](Subscription& sub, OpcUa_StatusCode status,
                       ModifySubscriptionResponse& response) {
                if (!OpcUa_IsBad(status)) {
                    sub.revised = sub.wanted;
                    sub.revised.publishingInterval = response.revisedPublishingInterval;
                    sub.revised.lifetimeCount = response.revisedLifetimeCount;
                    sub.revised.maxKeepAliveCount = response.revisedMaxKeepAliveCount;
                }
                tellChanged(id, sub, status);
            });
        return true;
    }
    if (s.isModeChanged) {
        s.isModeChanged = false;
        SetPublishingModeRequest request;
        request.publishingEnabled = s.wanted.publishingEnabled;
        request.subscriptionIds = {s.serverId};
        change<SetPublishingModeResponse>(id, request,
                                          [this, id](Subscription& sub, OpcUa_StatusCode status,
                                                     SetPublishingModeResponse& response) {
                                              if (!OpcUa_IsBad(status) &&
                                                  !response.results.isEmpty())
                                                  status = response.results.first().code();
                                              tellChanged(id, sub, status);
                                          });
        return true;
    }
    return false;
}

bool SessionSubscriptions::resolve(Item& item, UaNodeId& node) const
{
    // The namespace may have another index than when the host named the node.
    node = item.wanted.nodeId;
    const QStringList& namespaces = m_worker.namespaces();
    if (item.namespaceUri.isEmpty() || node.namespaceIndex() == 0 ||
        namespaces.value(node.namespaceIndex()) == item.namespaceUri)
        return true;
    const qsizetype index = namespaces.indexOf(item.namespaceUri);
    if (index < 0)
        return false;
    node = withNamespace(node, OpcUa_UInt16(index));
    return true;
}

MonitoringParameters SessionSubscriptions::parametersOf(OpcUa_UInt32 handle, const Item& item) const
{
    const QvelMonitoredItem& wanted = item.wanted;
    MonitoringParameters parameters;
    parameters.clientHandle = handle;
    parameters.samplingInterval = wanted.samplingInterval;
    parameters.queueSize = wanted.queueSize;
    parameters.discardOldest = wanted.discardOldest;
    if (wanted.attributeId == QvelAttribute::EventNotifier) {
        EventFilterHead filter;
        for (const QList<UaQualifiedName>& path : wanted.eventFields)
            filter.selectClauses.append({UaNodeId(baseEventType), path, QvelAttribute::Value, {}});
        QByteArray where = wanted.whereClause.body().bytes();
        if (where.isEmpty())
            BinaryEncoder{where}(OpcUa_Int32(0)); // no conditions
        parameters.filter = encodeExtension(filter, where);
    } else if (wanted.deadbandType != QvelDeadbandType::None ||
               wanted.trigger != QvelDataChangeTrigger::StatusValue) {
        parameters.filter = encodeExtension(
            DataChangeFilter{wanted.trigger, wanted.deadbandType, wanted.deadbandValue});
    }
    return parameters;
}

static qsizetype itemsAtATime(const SessionWorker& worker)
{
    const OpcUa_UInt32 limit = worker.limits().monitoredItems;
    return limit > 0 ? std::min<qsizetype>(limit, mostItemsAtATime) : mostItemsAtATime;
}

bool SessionSubscriptions::createItems(quint32 id, Subscription& s)
{
    CreateMonitoredItemsRequest request;
    request.subscriptionId = s.serverId;
    QList<OpcUa_UInt32> handles;
    QList<QvelItemState> unknown;
    for (auto& [handle, item] : s.items) {
        if (item.serverId != 0 || item.failed)
            continue;
        UaNodeId node;
        if (!resolve(item, node)) {
            item.failed = true;
            unknown.append({handle, OpcUa_BadNodeIdUnknown, 0, 0});
            continue;
        }
        item.isChanged = item.isModeChanged = false;
        handles.append(handle);
        request.itemsToCreate.append({{node, item.wanted.attributeId, item.wanted.indexRange, {}},
                                      item.wanted.mode,
                                      parametersOf(handle, item)});
        if (handles.size() == itemsAtATime(m_worker))
            break;
    }
    if (!unknown.isEmpty())
        tell(id, [unknown](QvelSubscription& host) { Q_EMIT host.itemsChanged(unknown); });
    if (handles.isEmpty())
        return false;
    s.makesItems = true;
    change<CreateMonitoredItemsResponse>(
        id, request,
        [this, id, handles](Subscription& sub, OpcUa_StatusCode status,
                            CreateMonitoredItemsResponse& response) {
            if (!OpcUa_IsBad(status) && response.results.size() != handles.size())
                status = OpcUa_BadUnknownResponse;
            QList<QvelItemState> states;
            for (qsizetype i = 0; i < handles.size(); ++i) {
                QvelItemState state{handles[i], status, 0, 0};
                OpcUa_UInt32 serverId = 0;
                if (!OpcUa_IsBad(status)) {
                    const MonitoredItemCreateResult& result = response.results[i];
                    state = {handles[i], result.statusCode, result.revisedSamplingInterval,
                             result.revisedQueueSize};
                    serverId = result.statusCode.isBad() ? 0 : result.monitoredItemId;
                }
                const auto found = sub.items.find(handles[i]);
                if (found == sub.items.end()) { // removed meanwhile
                    if (serverId != 0)
                        sub.toDelete.append(serverId);
                    continue;
                }
                found->second.serverId = serverId;
                found->second.failed = serverId == 0;
                states.append(state);
            }
            tell(id, [states](QvelSubscription& host) { Q_EMIT host.itemsChanged(states); });
        });
    return true;
}

bool SessionSubscriptions::modifyItems(quint32 id, Subscription& s)
{
    ModifyMonitoredItemsRequest request;
    request.subscriptionId = s.serverId;
    QList<OpcUa_UInt32> handles;
    for (auto& [handle, item] : s.items) {
        if (!item.isChanged || item.serverId == 0)
            continue;
        item.isChanged = false;
        handles.append(handle);
        request.itemsToModify.append({item.serverId, parametersOf(handle, item)});
        if (handles.size() == itemsAtATime(m_worker))
            break;
    }
    if (handles.isEmpty())
        return false;
    change<ModifyMonitoredItemsResponse>(
        id, request,
        [this, id, handles](Subscription&, OpcUa_StatusCode status,
                            ModifyMonitoredItemsResponse& response) {
            if (!OpcUa_IsBad(status) && response.results.size() != handles.size())
                status = OpcUa_BadUnknownResponse;
            QList<QvelItemState> states;
            for (qsizetype i = 0; i < handles.size(); ++i) {
                QvelItemState state{handles[i], status, 0, 0};
                if (!OpcUa_IsBad(status))
                    state = {handles[i], response.results[i].statusCode,
                             response.results[i].revisedSamplingInterval,
                             response.results[i].revisedQueueSize};
                states.append(state);
            }
            tell(id, [states](QvelSubscription& host) { Q_EMIT host.itemsChanged(states); });
        });
    return true;
}

bool SessionSubscriptions::setModes(quint32 id, Subscription& s)
{
    SetMonitoringModeRequest request;
    request.subscriptionId = s.serverId;
    QList<OpcUa_UInt32> handles;
    for (auto& [handle, item] : s.items) {
        if (!item.isModeChanged || item.serverId == 0 ||
            (!handles.isEmpty() && item.wanted.mode != request.monitoringMode))
            continue;
        item.isModeChanged = false;
        request.monitoringMode = item.wanted.mode;
        request.monitoredItemIds.append(item.serverId);
        handles.append(handle);
        if (handles.size() == itemsAtATime(m_worker))
            break;
    }
    if (handles.isEmpty())
        return false;
    change<SetMonitoringModeResponse>(
        id, request,
        [this, id, handles](Subscription&, OpcUa_StatusCode status,
                            SetMonitoringModeResponse& response) {
            QList<QvelItemState> states;
            for (qsizetype i = 0; i < handles.size(); ++i) {
                const bool ok = !OpcUa_IsBad(status) && i < response.results.size();
                if (!ok || response.results[i].isBad())
                    states.append(
                        {handles[i], ok ? response.results[i] : UaStatusCode(status), 0, 0});
            }
            if (!states.isEmpty())
                tell(id, [states](QvelSubscription& host) { Q_EMIT host.itemsChanged(states); });
        });
    return true;
}

bool SessionSubscriptions::deleteItems(quint32 id, Subscription& s)
{
    if (s.toDelete.isEmpty())
        return false;
    DeleteMonitoredItemsRequest request;
    request.subscriptionId = s.serverId;
    request.monitoredItemIds = s.toDelete.mid(0, itemsAtATime(m_worker));
    change<DeleteMonitoredItemsResponse>(
        id, request,
        [count = request.monitoredItemIds.size()](Subscription& sub, OpcUa_StatusCode,
                                                  DeleteMonitoredItemsResponse&) {
            sub.toDelete.remove(0, std::min(count, sub.toDelete.size()));
        });
    return true;
}

void SessionSubscriptions::tellChanged(quint32 id, const Subscription& s,
                                       OpcUa_StatusCode status) const
{
    SessionHost::tellSubscriptionState(m_worker, id, s.revised, s.serverId, status);
}

// As many requests as let each subscription speak twice in a row.
void SessionSubscriptions::publish()
{
    if (!m_worker.isConnected())
        return;
    int subscriptions = 0;
    double longest = 0;
    for (const auto& [id, s] : m_subscriptions) {
        subscriptions += s.serverId != 0;
        longest = std::max(longest, s.revised.publishingInterval * s.revised.maxKeepAliveCount);
    }
    const int wanted = std::min(subscriptions > 0 ? subscriptions + 2 : 0, m_mostPublishing);
    while (m_publishing < wanted) {
        ++m_publishing;
        PublishRequest request;
        request.acknowledgements = std::exchange(m_acknowledgements, {});
        // It stays with the server until there is something to tell; silence is watched elsewhere.
        constexpr double longestWait = 24 * 3600e3;
        const auto timeout =
            int(std::min(longestWait, longest * (wanted + 1) * 2 + m_worker.options().callTimeout));
        m_worker.request<PublishResponse>(
            request, timeout,
            [this, generation = m_generation](OpcUa_StatusCode status, PublishResponse& response) {
                if (generation != m_generation)
                    return;
                --m_publishing;
                takePublish(status, response);
            });
    }
}

void SessionSubscriptions::takePublish(OpcUa_StatusCode status, PublishResponse& response)
{
    if (status == OpcUa_BadTooManyPublishRequests) {
        m_mostPublishing = std::max(1, m_publishing);
        return;
    }
    if (status == OpcUa_BadNoSubscription) {
        for (auto& [id, s] : m_subscriptions) {
            if (s.serverId == 0 || s.isBusy)
                continue;
            lose(s);
            sync(id);
        }
        return;
    }
    if (OpcUa_IsBad(status)) {
        // The silence is noticed where it lasts; asking again at once would only spin.
        if (status == OpcUa_BadSessionIdInvalid || status == OpcUa_BadSessionClosed)
            m_worker.connectionLost(status);
        return;
    }
    const auto found = findServerId(response.subscriptionId);
    if (found != m_subscriptions.end()) {
        found->second.heard = m_clock.elapsed();
        takeMessage(found->first, found->second, std::move(response.notificationMessage));
    } else if (std::none_of(m_subscriptions.begin(), m_subscriptions.end(),
                            [](const auto& s) { return s.second.isBusy; })) {
        // Made by a request whose answer was lost.
        deleteSubscription(response.subscriptionId);
    }
    publish();
}

void SessionSubscriptions::takeMessage(quint32 id, Subscription& s, NotificationMessage&& message)
{
    const bool isKeepAlive = message.notificationData.isEmpty();
    const OpcUa_UInt32 sequence = message.sequenceNumber;
    if (sequence == 0)
        return;
    // A keep-alive carries the number of the message that comes next.
    const OpcUa_UInt32 distance = ahead(sequence, s.lastSequence);
    if (isKeepAlive) {
        if (s.lastSequence != 0 && distance > 1 && distance < isBehind)
            republish(id, s);
        else if (s.lastSequence == 0)
            s.lastSequence = sequence - 1;
        if (distance > 1 && distance < isBehind && s.held.size() < mostRepublished)
            s.held.try_emplace(sequence); // all before it
        return;
    }
    if (distance == 0 || distance >= isBehind)
        return acknowledge(s, sequence); // it has been delivered
    hold(s, std::move(message));
    deliverHeld(id, s);
}

static qint64 sizeOf(const NotificationMessage& message)
{
    qint64 size = 0;
    for (const UaExtensionObject& data : message.notificationData)
        size += data.body().length();
    return size;
}

// One that finds no room is not acknowledged: it can be asked for when its turn comes.
void SessionSubscriptions::hold(Subscription& s, NotificationMessage&& message)
{
    const qint64 size = sizeOf(message);
    const bool isNext = message.sequenceNumber == after(s.lastSequence);
    if (!isNext && (s.held.size() >= mostRepublished || s.heldBytes + size > mostHeld))
        return;
    NotificationMessage& place = s.held[message.sequenceNumber];
    s.heldBytes += size - sizeOf(place);
    place = std::move(message);
}

// Not before it is delivered: until then the server keeps it, also for another connection.
void SessionSubscriptions::acknowledge(const Subscription& s, OpcUa_UInt32 sequence)
{
    if (m_acknowledgements.size() < mostAcknowledgements)
        m_acknowledgements.append({s.serverId, sequence});
}

void SessionSubscriptions::deliverHeld(quint32 id, Subscription& s)
{
    while (!s.held.empty()) {
        auto next = s.held.find(after(s.lastSequence));
        if (next == s.held.end())
            break;
        const NotificationMessage message = std::move(next->second);
        s.held.erase(next);
        s.heldBytes -= sizeOf(message);
        if (message.notificationData.isEmpty())
            continue; // the place of a keep-alive, which the message itself takes next
        s.lastSequence = message.sequenceNumber;
        acknowledge(s, s.lastSequence);
        tellGap(id, s);
        deliver(id, s, message);
    }
    if (!s.held.empty())
        republish(id, s);
}

// Asks for the message that comes next, until nothing is missing.
void SessionSubscriptions::republish(quint32 id, Subscription& s)
{
    if (s.isRepublishing || s.serverId == 0)
        return;
    const OpcUa_UInt32 next = after(s.lastSequence);
    s.isRepublishing = true;
    const bool isMissing = !s.held.empty(); // rather than not sent yet
    RepublishRequest request;
    request.subscriptionId = s.serverId;
    request.retransmitSequenceNumber = next;
    m_worker.request<RepublishResponse>(
        request, [this, id, next, isMissing,
                  generation = m_generation](OpcUa_StatusCode status, RepublishResponse& response) {
            Subscription* sub = find(id);
            if (!sub || generation != m_generation || !sub->isRepublishing)
                return;
            sub->isRepublishing = false;
            if (status == OpcUa_BadSubscriptionIdInvalid) {
                lose(*sub);
                return sync(id);
            }
            if (isLost(status))
                return; // begins again with the next connection
            // One that is another, or has nothing to tell, is none.
            const NotificationMessage& message = response.notificationMessage;
            if (OpcUa_IsBad(status) || message.sequenceNumber != next ||
                message.notificationData.isEmpty()) {
                sub->probes = false;
                if (sub->held.empty())
                    return; // nothing was missing
                if (!isMissing)
                    return republish(id, *sub); // it may be there by now
                // The server has dropped it; the oldest one that there is comes next.
                const OpcUa_UInt32 first =
                    std::min_element(sub->held.begin(), sub->held.end(),
                                     [&](const auto& a, const auto& b) {
                                         return ahead(a.first, sub->lastSequence) <
                                                ahead(b.first, sub->lastSequence);
                                     })
                        ->first;
                addGap(*sub, ahead(first, sub->lastSequence) - 1);
                sub->lastSequence = first - 1;
                tellGap(id, *sub);
                return deliverHeld(id, *sub);
            }
            takeMessage(id, *sub, std::move(response.notificationMessage));
            if (sub->probes)
                republish(id, *sub);
        });
}

void SessionSubscriptions::addGap(Subscription& s, OpcUa_UInt32 count)
{
    s.gap += count;
    if (std::exchange(s.hasGap, true))
        return; // the host is to hear of it already
    m_worker.log(QvelSession::tr("Subscription %1: %2 messages are missing after number %3")
                     .arg(s.serverId)
                     .arg(count)
                     .arg(s.lastSequence));
}

void SessionSubscriptions::tellGap(quint32 id, Subscription& s)
{
    // A host that takes nothing hears of it when it does.
    if (!s.hasGap || m_inFlight->load() > mostInFlight / 2)
        return;
    s.hasGap = false;
    const OpcUa_UInt32 count = std::exchange(s.gap, 0);
    tell(id, [count](QvelSubscription& host) { Q_EMIT host.gap(count); });
}

// Some servers send the present value of each item again to a session that came back.
void SessionSubscriptions::removeRepeated(Subscription& s, QList<QvelDataChange>& changes)
{
    const bool mayRepeat = m_clock.elapsed() < m_repeatsUntil;
    // Most servers tell of the items in the order in which they were made.
    auto next = s.last.begin();
    const auto isRepeated = [&](const QvelDataChange& change) {
        if (next == s.last.end() || next->handle != change.handle)
            next = s.findLast(change.handle);
        if (next == s.last.end())
            return true; // the host has removed it
        UaDataValue& last = (next++)->value;
        const bool repeated = mayRepeat && !last.sourceTimestamp().isNull() &&
                              last.sourceTimestamp() == change.value.sourceTimestamp() &&
                              last.sourcePicoseconds() == change.value.sourcePicoseconds() &&
                              last.status() == change.value.status() &&
                              last.value() == change.value.value();
        last = change.value;
        return repeated;
    };
    changes.removeIf(isRepeated);
}

void SessionSubscriptions::deliver(quint32 id, Subscription& s, const NotificationMessage& message)
{
    for (const UaExtensionObject& data : message.notificationData) {
        const QByteArray body = data.body().bytes();
        const DecoderLimits& limits = m_worker.options().limits;
        if (isExtension<StatusChangeNotification>(data)) {
            StatusChangeNotification change;
            if (OpcUa_IsBad(decodeFields(body, change, limits)))
                continue;
            if (change.status.isBad()) { // timed out, or taken by another session
                lose(s);
                tellChanged(id, s, change.status.code());
                return sync(id);
            }
            continue;
        }
        qint64 size = body.size();
        std::function<void(QvelSubscription&)> emitter;
        if (isExtension<DataChangeNotification>(data)) {
            DataChangeNotification change;
            if (OpcUa_IsBad(decodeFields(body, change, limits))) {
                addGap(s, 1);
                continue;
            }
            removeRepeated(s, change.monitoredItems);
            if (change.monitoredItems.isEmpty())
                continue;
            size += change.monitoredItems.size() * notificationSize;
            emitter = [changes = change.monitoredItems](QvelSubscription& host) {
                Q_EMIT host.dataChanged(changes);
            };
        } else if (isExtension<EventNotificationList>(data)) {
            EventNotificationList list;
            if (OpcUa_IsBad(decodeFields(body, list, limits))) {
                addGap(s, 1);
                continue;
            }
            list.events.removeIf(
                [&s](const QvelEvent& event) { return s.items.count(event.handle) == 0; });
            if (list.events.isEmpty())
                continue;
            size += list.events.size() * notificationSize;
            emitter = [events = list.events](QvelSubscription& host) {
                Q_EMIT host.eventsReceived(events);
            };
        } else {
            continue;
        }
        if (m_inFlight->load() + size > mostInFlight) {
            addGap(s, 1);
            continue;
        }
        m_inFlight->fetch_add(size);
        // Counted until the host has taken it, or has dropped it unseen.
        const std::shared_ptr<void> taken(
            nullptr, [size, inFlight = m_inFlight](void*) { inFlight->fetch_sub(size); });
        tell(id, [emitter, taken](QvelSubscription& host) { emitter(host); });
    }
    tellGap(id, s);
}

// A subscription that sends not even a keep-alive is not there any more.
void SessionSubscriptions::checkSilence()
{
    publish(); // also where the server once refused one
    const qint64 now = m_clock.elapsed();
    for (auto& [id, s] : m_subscriptions) {
        tellGap(id, s);
        const double longest =
            s.revised.publishingInterval * (s.revised.maxKeepAliveCount + 2) * 1.5;
        if (s.serverId == 0 || s.isBusy ||
            double(now - s.heard) < longest + m_worker.options().callTimeout)
            continue;
        const OpcUa_UInt32 serverId = s.serverId;
        lose(s);
        s.heard = now;
        tellChanged(id, s, OpcUa_BadTimeout);
        deleteSubscription(serverId);
        sync(id);
    }
}

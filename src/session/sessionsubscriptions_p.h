#pragma once

#include "session/sessionworker_p.h"

#include <map>
#include <set>
#include <vector>

/// The subscriptions of a session on its thread. Each is what the host wants and what the server
/// has; whatever differs is brought in line, one request after the other, also after a connection
/// was lost.
class SessionSubscriptions : public QObject
{
    Q_OBJECT
public:
    explicit SessionSubscriptions(SessionWorker& worker);
    ~SessionSubscriptions() override;

    // What the host asks for. `id` is the host's own number of a subscription.
    void create(quint32 id, const QvelSubscriptionParameters& parameters);
    void remove(quint32 id);
    void setParameters(quint32 id, const QvelSubscriptionParameters& parameters);
    /// `namespaces` is the table by which the host named the nodes; empty before the first
    /// connection.
    void addItems(quint32 id, OpcUa_UInt32 firstHandle, const QList<QvelMonitoredItem>& items,
                  const QStringList& namespaces);
    void modifyItem(quint32 id, OpcUa_UInt32 handle, const QvelMonitoredItem& item);
    void setMode(quint32 id, const QList<OpcUa_UInt32>& handles, QvelMonitoringMode mode);
    void removeItems(quint32 id, const QList<OpcUa_UInt32>& handles);

    void connected(bool isNewSession);
    void disconnected();
    /// The server has none of them any more: the session was closed.
    void forget();

private:
    struct Item
    {
        QvelMonitoredItem wanted;
        QString namespaceUri;      // of the node, once it is known
        OpcUa_UInt32 serverId = 0; // 0 where the server has none
        bool failed = false;       // not asked for again before the next connection
        bool isChanged = false;
        bool isModeChanged = false;
    };
    struct Last
    {
        OpcUa_UInt32 handle;
        UaDataValue value;
    };
    struct Subscription
    {
        QvelSubscriptionParameters wanted;
        QvelSubscriptionParameters revised;
        OpcUa_UInt32 serverId = 0;
        bool failed = false;
        bool isChanged = false;
        bool isModeChanged = false;
        bool isBusy = false;     // a request that brings it in line is under way
        bool makesItems = false; // it is one that makes items
        bool wasLost = false;
        bool hasUnknownItems = false; // made by a request whose answer was lost
        std::map<OpcUa_UInt32, Item> items;
        // What was delivered last of each item, by handle. Not among the items: it is looked up for
        // each value that comes, and an item is large.
        std::vector<Last> last;
        std::vector<Last>::iterator findLast(OpcUa_UInt32 handle);
        QList<OpcUa_UInt32> toDelete; // numbers of the server

        OpcUa_UInt32 lastSequence = 0;
        std::map<OpcUa_UInt32, UaWire::NotificationMessage> held; // until what is missing has come
        qint64 heldBytes = 0;
        bool isRepublishing = false;
        bool probes = false; // asks for what comes next, until there is none
        qint64 heard = 0;    // when a message came last
        OpcUa_UInt32 gap = 0;
        bool hasGap = false;
    };
    using Subscriptions = std::map<quint32, Subscription>;

    Subscription* find(quint32 id);
    Subscriptions::iterator findServerId(OpcUa_UInt32 serverId);
    /// Does what comes next to bring a subscription in line.
    void sync(quint32 id);
    bool syncSubscription(quint32 id, Subscription& s);
    bool createItems(quint32 id, Subscription& s);
    bool modifyItems(quint32 id, Subscription& s);
    bool setModes(quint32 id, Subscription& s);
    bool deleteItems(quint32 id, Subscription& s);
    template <class Response, class Request, class Done>
    void change(quint32 id, Request& request, Done done);
    bool resolve(Item& item, UaNodeId& node) const;
    UaWire::MonitoringParameters parametersOf(OpcUa_UInt32 handle, const Item& item) const;
    void transfer();
    void lose(Subscription& s);
    void makeUncertain(Subscription& s);
    void clear(Subscription& s);
    void deleteSubscription(OpcUa_UInt32 serverId);

    void publish();
    void takePublish(OpcUa_StatusCode status, UaWire::PublishResponse& response);
    void takeMessage(quint32 id, Subscription& s, UaWire::NotificationMessage&& message);
    void deliverHeld(quint32 id, Subscription& s);
    void deliver(quint32 id, Subscription& s, const UaWire::NotificationMessage& message);
    void acknowledge(const Subscription& s, OpcUa_UInt32 sequence);
    void hold(Subscription& s, UaWire::NotificationMessage&& message);
    void removeRepeated(Subscription& s, QList<QvelDataChange>& changes);
    void republish(quint32 id, Subscription& s);
    void addGap(Subscription& s, OpcUa_UInt32 count);
    void tellGap(quint32 id, Subscription& s);
    void checkSilence();
    void tell(quint32 id, std::function<void(QvelSubscription&)> function) const;
    void tellChanged(quint32 id, const Subscription& s, OpcUa_StatusCode status) const;

    SessionWorker& m_worker;
    Subscriptions m_subscriptions;
    QList<UaWire::SubscriptionAcknowledgement> m_acknowledgements;
    int m_publishing = 0;      // requests under way
    int m_mostPublishing = 10; // that the server takes
    quint64 m_generation = 0;  // of the connection
    QElapsedTimer m_clock;
    qint64 m_repeatsUntil = 0;
    QTimer m_silenceTimer;
    std::shared_ptr<std::atomic<qint64>> m_inFlight; // bytes that the host has yet to take
};

#pragma once

#include "sessiontypes.h"

#include <QtCore/QObject>

#include <memory>

class QvelSession;

enum class QvelMonitoringMode : OpcUa_UInt32 { Disabled = 0, Sampling = 1, Reporting = 2 };
enum class QvelDataChangeTrigger : OpcUa_UInt32 {
    Status = 0,
    StatusValue = 1,
    StatusValueTimestamp = 2
};
enum class QvelDeadbandType : OpcUa_UInt32 { None = 0, Absolute = 1, Percent = 2 };

/// The parameters of a subscription (OPC 10000-4, 5.13.2). Times are milliseconds.
struct QvelSubscriptionParameters
{
    double publishingInterval = 500;
    OpcUa_UInt32 lifetimeCount = 1200; ///< at least three times the keep-alive count
    OpcUa_UInt32 maxKeepAliveCount = 10;
    OpcUa_UInt32 maxNotificationsPerPublish = 0; ///< 0 for no limit
    bool publishingEnabled = true;
    OpcUa_Byte priority = 0;
};

/// What to monitor (OPC 10000-4, 5.12.1.3): the value of an attribute, or the events of a node.
struct QvelMonitoredItem
{
    UaNodeId nodeId;
    OpcUa_UInt32 attributeId = QvelAttribute::Value; ///< EventNotifier for events
    UaString indexRange;
    QvelMonitoringMode mode = QvelMonitoringMode::Reporting;
    double samplingInterval = -1; ///< milliseconds; -1 for the publishing interval, 0 for the best
    OpcUa_UInt32 queueSize = 1;
    bool discardOldest = true;
    QvelDataChangeTrigger trigger = QvelDataChangeTrigger::StatusValue;
    QvelDeadbandType deadbandType = QvelDeadbandType::None;
    double deadbandValue = 0;
    /// For events: the fields, each a path of browse names from BaseEventType, and the conditions
    /// as an encoded ContentFilter (none by default).
    QList<QList<UaQualifiedName>> eventFields;
    UaExtensionObject whereClause;
};

/// What a server made of an item, or of a change to it.
struct QvelItemState
{
    OpcUa_UInt32 handle = 0;
    UaStatusCode status; ///< of the last call that dealt with the item
    double revisedSamplingInterval = 0;
    OpcUa_UInt32 revisedQueueSize = 0;
};

/// A notification for one item. An overflow of the server's queue stands in the value's status
/// (hasOverflow()).
struct QvelDataChange
{
    OpcUa_UInt32 handle = 0;
    UaDataValue value;
    /// Values between this one and the last were dropped by the server (OPC 10000-4, 7.39.1).
    bool hasOverflow() const { return (value.status().code() & 0x480u) == 0x480u; }
};
/// An event of a monitored item with eventFields.
struct QvelEvent
{
    OpcUa_UInt32 handle = 0;
    QList<UaVariant> fields; ///< as the item's eventFields
};

/// A subscription of a session: items that are monitored at one publishing interval. Made by
/// QvelSession::createSubscription(), belongs to the session; lives on the session's thread.
///
/// It may be filled before the session is connected, and stays through every reconnect: items are
/// known by the handle that addItems() gives at once, and by the namespace URI of their node. What
/// was missed while the connection was away and cannot be had again is told by gap().
class KESTREL_EXPORT QvelSubscription : public QObject
{
    Q_OBJECT
public:
    ~QvelSubscription() override;

    QvelSubscriptionParameters parameters() const;
    /// What the server made of them; those asked for until it has.
    QvelSubscriptionParameters revisedParameters() const;
    /// The server's number; 0 while it has none.
    OpcUa_UInt32 subscriptionId() const;
    void setParameters(const QvelSubscriptionParameters& parameters);
    void setPublishingEnabled(bool enabled);

    /// Handles, one an item, above 0 and unique in the session. The server's answer comes by
    /// itemsChanged().
    QList<OpcUa_UInt32> addItems(const QList<QvelMonitoredItem>& items);
    /// Changes sampling, queue and filter of an item; its node and attribute stay.
    void modifyItem(OpcUa_UInt32 handle, const QvelMonitoredItem& item);
    void setMonitoringMode(const QList<OpcUa_UInt32>& handles, QvelMonitoringMode mode);
    void removeItems(const QList<OpcUa_UInt32>& handles);
    QList<OpcUa_UInt32> items() const;

Q_SIGNALS:
    /// In the order in which the server sent them. Many at a time, so that a view paints once.
    void dataChanged(const QList<QvelDataChange>& changes);
    void eventsReceived(const QList<QvelEvent>& events);
    /// The server's answers to what was asked of items.
    void itemsChanged(const QList<QvelItemState>& items);
    /// The subscription itself was created, modified or failed: `status` of the last such call.
    void changed(UaStatusCode status);
    /// Notifications are missing: `count` of them, or 0 where nobody knows how many.
    void gap(OpcUa_UInt32 count);

private:
    friend class QvelSession;
    friend struct SessionHost;
    class Private;
    QvelSubscription(QvelSession* session, const QvelSubscriptionParameters& parameters);
    const std::unique_ptr<Private> d;
};

Q_DECLARE_METATYPE(QvelDataChange)
Q_DECLARE_METATYPE(QvelEvent)
Q_DECLARE_METATYPE(QvelItemState)

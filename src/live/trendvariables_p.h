#pragma once

#include "live/trendpicture_p.h"
#include "nodes/datatypes_p.h"
#include "session/session.h"

#include <QtCore/QHash>
#include <QtCore/QMap>
#include <QtCore/QObject>
#include <QtCore/QPointer>
#include <QtCore/QTimer>

/// The variables of a trend on a session: one subscription for all of them, what the server says
/// about each, and their history. They are known by numbers that the trend gives.
class TrendVariables : public QObject
{
    Q_OBJECT
public:
    struct Description
    {
        QString name;
        QString unit;
        std::optional<TrendRange> range;
        QMap<int, QString> names; ///< of the values of a discrete variable
        bool isDiscrete = false;
        bool hasHistory = false;
    };

    explicit TrendVariables(QObject* parent);
    ~TrendVariables() override;

    void setSession(QvelSession* session);
    QvelSession* session() const { return m_session; }
    bool isConnected() const;
    void add(int id, const UaExpandedNodeId& node);
    void remove(int id);

    double samplingInterval() const { return m_samplingInterval; }
    OpcUa_UInt32 queueSize() const { return m_queueSize; }
    void setSampling(double interval, OpcUa_UInt32 queueSize);
    double publishingInterval() const { return m_publishingInterval; }
    void setPublishingInterval(double interval);

    void loadHistory(const QList<int>& ids, UaDateTime from, UaDateTime to, qsizetype most);

Q_SIGNALS:
    /// Another connection, or none.
    void connectionChanged();
    void described(int id, const TrendVariables::Description& description);
    /// Values are monitored, or why they are not.
    void monitored(int id, UaStatusCode status);
    void valuesCame(int id, const QList<UaDataValue>& values);
    /// Values are missing before the next ones.
    void gapCame();
    void historyCame(int id, UaStatusCode status, const QList<UaDataValue>& values);

private:
    struct Variable
    {
        Variable() = default;
        explicit Variable(const UaExpandedNodeId& id) : node(id) {}

        UaExpandedNodeId node;
        OpcUa_UInt32 handle = 0;
        bool isAsked = false; // what the server says about it, at this connection
        Description description;
    };
    void connectionCame();
    void forgetItems();
    void monitorNew();
    void describeNew();
    void takeAttributes(const QList<int>& ids, const QList<UaDataValue>& values);
    void takeProperties(const QList<int>& ids, const QList<ValueProperties>& found);
    void tell(const QList<int>& ids);
    template <class Result, class Use>
    void whenThere(QFuture<Result> future, Use use);
    QvelMonitoredItem itemOf(const UaNodeId& node) const;
    void dataChanged(const QList<QvelDataChange>& changes);

    QPointer<QvelSession> m_session;
    QPointer<QvelSubscription> m_subscription;
    QMap<int, Variable> m_variables;
    QHash<OpcUa_UInt32, int> m_ids; // by handle
    double m_publishingInterval = 250;
    double m_samplingInterval = 250;
    OpcUa_UInt32 m_queueSize = 10;
    quint32 m_generation = 0; // answers for an earlier one are dropped
    quint32 m_sessionNumber = 0;
    QTimer m_soon;
};

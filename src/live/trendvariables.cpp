#include "trendvariables_p.h"

#include "live/lastingsubscription_p.h"
#include "nodes/structures.h"
#include "platform/stack/opcuastatuscodes.h"
#include "session/whendone_p.h"

#include <cmath>

namespace {

constexpr OpcUa_UInt32 booleanType = 1;
constexpr OpcUa_Byte canReadHistory = 0x04; // OPC 10000-3, 8.57

// What is asked of a node.
constexpr OpcUa_UInt32 attributes[] = {QvelAttribute::DisplayName, QvelAttribute::DataType,
                                       QvelAttribute::UserAccessLevel};
constexpr qsizetype attributeCount = std::size(attributes);

using Description = TrendVariables::Description;
struct Property
{
    const char* name;
    void (*take)(Description&, const UaVariant&);
};

void takeUnit(Description& description, const UaVariant& value)
{
    if (const auto unit = QvelEngineeringUnits::fromVariant(value))
        description.unit = unit->displayName.text().toQString();
}

void takeRange(Description& description, const UaVariant& value)
{
    const auto range = QvelRange::fromVariant(value);
    if (range && std::isfinite(range->high - range->low) && range->low < range->high)
        description.range = {range->low, range->high};
}

// OPC 10000-8, 5.3.3.2.
void takeState(Description& description, const UaVariant& value, int number)
{
    description.names.insert(number, value.toLocalizedText().text().toQString());
}

constexpr Property properties[] = {
    {"EngineeringUnits", takeUnit},
    {"EURange", takeRange},
    {"FalseState", [](Description& d, const UaVariant& v) { takeState(d, v, 0); }},
    {"TrueState", [](Description& d, const UaVariant& v) { takeState(d, v, 1); }},
};

} // namespace

TrendVariables::TrendVariables(QObject* parent) : QObject(parent)
{
    m_soon.setSingleShot(true);
    m_soon.setInterval(0);
    // Many are mostly added at a time, and asked for together.
    connect(&m_soon, &QTimer::timeout, this, [this] {
        if (!isConnected())
            return;
        monitorNew();
        describeNew();
    });
}

TrendVariables::~TrendVariables()
{
    delete m_subscription;
}

bool TrendVariables::isConnected() const
{
    return m_session && m_session->state() == QvelSession::Connected;
}

void TrendVariables::forgetItems()
{
    ++m_generation;
    ++m_sessionNumber;
    m_ids.clear();
    for (Variable& variable : m_variables)
        variable = Variable(variable.node);
}

void TrendVariables::setSession(QvelSession* session)
{
    if (session == m_session)
        return;
    if (m_session)
        m_session->disconnect(this);
    delete m_subscription;
    forgetItems();
    m_session = session;
    if (session) {
        connect(session, &QvelSession::stateChanged, this, &TrendVariables::connectionCame);
        connect(session, &QObject::destroyed, this, [this] {
            forgetItems();
            Q_EMIT connectionChanged();
        });
    }
    connectionCame();
}

void TrendVariables::connectionCame()
{
    ++m_generation;
    if (isConnected()) {
        for (Variable& variable : m_variables)
            variable.isAsked = false;
        m_soon.start();
    }
    Q_EMIT connectionChanged();
}

void TrendVariables::add(int id, const UaExpandedNodeId& node)
{
    m_variables.insert(id, Variable(node));
    if (isConnected())
        m_soon.start();
}

void TrendVariables::remove(int id)
{
    const Variable variable = m_variables.take(id);
    if (!variable.handle)
        return;
    m_ids.remove(variable.handle);
    if (m_subscription)
        m_subscription->removeItems({variable.handle});
}

QvelMonitoredItem TrendVariables::itemOf(const UaNodeId& node) const
{
    QvelMonitoredItem item;
    item.nodeId = node;
    item.samplingInterval = m_samplingInterval;
    item.queueSize = m_queueSize;
    return item;
}

void TrendVariables::setSampling(double interval, OpcUa_UInt32 queueSize)
{
    m_samplingInterval = interval;
    m_queueSize = queueSize;
    if (!m_subscription || !isConnected())
        return;
    for (const Variable& variable : std::as_const(m_variables))
        if (variable.handle)
            m_subscription->modifyItem(variable.handle, itemOf(m_session->toNodeId(variable.node)));
}

void TrendVariables::setPublishingInterval(double interval)
{
    m_publishingInterval = interval;
    if (m_subscription)
        m_subscription->setParameters(lastingSubscription(interval));
}

void TrendVariables::monitorNew()
{
    QList<QvelMonitoredItem> items;
    QList<int> ids, missing;
    for (auto it = m_variables.cbegin(); it != m_variables.cend(); ++it) {
        if (it->handle)
            continue;
        const UaNodeId node = m_session->toNodeId(it->node);
        if (node.isNull()) { // its namespace is not there
            missing.append(it.key());
            continue;
        }
        items.append(itemOf(node));
        ids.append(it.key());
    }
    for (const int id : std::as_const(missing))
        Q_EMIT monitored(id, OpcUa_BadNodeIdUnknown);
    if (items.isEmpty())
        return;
    if (!m_subscription) {
        m_subscription = m_session->createSubscription(lastingSubscription(m_publishingInterval));
        connect(m_subscription, &QvelSubscription::dataChanged, this, &TrendVariables::dataChanged);
        connect(m_subscription, &QvelSubscription::gap, this, &TrendVariables::gapCame);
        connect(m_subscription, &QvelSubscription::itemsChanged, this,
                [this](const QList<QvelItemState>& states) {
                    for (const QvelItemState& state : states)
                        if (const int id = m_ids.value(state.handle))
                            Q_EMIT monitored(id, state.status);
                });
    }
    const auto handles = m_subscription->addItems(items);
    for (qsizetype i = 0; i < ids.size(); ++i) {
        m_variables[ids[i]].handle = handles[i];
        m_ids.insert(handles[i], ids[i]);
    }
}

void TrendVariables::dataChanged(const QList<QvelDataChange>& changes)
{
    // Those of a variable come together.
    QMap<int, QList<UaDataValue>> values;
    for (const QvelDataChange& change : changes)
        if (const int id = m_ids.value(change.handle))
            values[id].append(change.value);
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        Q_EMIT valuesCame(it.key(), it.value());
}

// Answers for an earlier connection are dropped.
template <class Result, class Use>
void TrendVariables::whenThere(QFuture<Result> future, Use use)
{
    whenDone(future, this, [this, use, generation = m_generation](const Result& result) {
        if (generation == m_generation)
            use(result);
    });
}

void TrendVariables::tell(const QList<int>& ids)
{
    // A host may delete the trend, or give it another session.
    const QPointer<TrendVariables> alive(this);
    const quint32 generation = m_generation;
    for (qsizetype i = 0; alive && generation == m_generation && i < ids.size(); ++i)
        if (m_variables.contains(ids[i]))
            Q_EMIT described(ids[i], m_variables.value(ids[i]).description);
}

void TrendVariables::describeNew()
{
    QList<int> ids;
    QList<UaNodeId> nodes;
    QList<QvelReadItem> items;
    for (auto it = m_variables.begin(); it != m_variables.end(); ++it) {
        const UaNodeId node = m_session->toNodeId(it->node);
        if (std::exchange(it->isAsked, true) || node.isNull())
            continue;
        ids.append(it.key());
        nodes.append(node);
        for (const OpcUa_UInt32 attribute : attributes)
            items.append({node, attribute, {}, {}});
    }
    if (ids.isEmpty())
        return;
    whenThere(m_session->read(items), [=](const QvelReadResult& read) {
        if (read.values.size() != items.size())
            return;
        whenThere(DataTypes::of(m_session)->readProperties(nodes),
                  [=](const QList<ValueProperties>& found) { takeProperties(ids, found); });
        takeAttributes(ids, read.values);
    });
}

void TrendVariables::takeAttributes(const QList<int>& ids, const QList<UaDataValue>& values)
{
    for (qsizetype i = 0; i < ids.size(); ++i) {
        const auto variable = m_variables.find(ids[i]);
        if (variable == m_variables.end())
            continue;
        const UaDataValue* read = &values[i * attributeCount];
        const UaNodeId dataType = read[1].value().toNodeId();
        Description description;
        description.name = read[0].value().toLocalizedText().text().toQString();
        description.isDiscrete = dataType == UaNodeId(booleanType);
        description.hasHistory = read[2].value().toByte() & canReadHistory;
        variable->description = description;
        if (dataType.isNull())
            continue;
        whenThere(DataTypes::of(m_session)->find(dataType), [this, id = ids[i]](
                                                                const DataTypeInfo& info) {
            const auto found = m_variables.find(id);
            if (found == m_variables.end() || info.enumInfo.kind != QvelEnumInfo::Enumeration ||
                !found->description.names.isEmpty()) // its own
                return;
            found->description.names = info.enumInfo.values;
            found->description.isDiscrete = true;
            tell({id});
        });
    }
    tell(ids);
}

void TrendVariables::takeProperties(const QList<int>& ids, const QList<ValueProperties>& found)
{
    for (qsizetype i = 0; i < ids.size(); ++i) {
        const auto variable = m_variables.find(ids[i]);
        if (variable == m_variables.end())
            continue;
        Description& description = variable->description;
        for (const Property& property : properties)
            if (const UaDataValue read = found[i].value(property.name);
                !read.value().isEmpty() && !read.status().isBad())
                property.take(description, read.value());
        if (const QvelEnumInfo names = namesOf(found[i]); !names.values.isEmpty()) {
            description.names = names.values;
            description.isDiscrete = true;
        }
    }
    tell(ids);
}

void TrendVariables::loadHistory(const QList<int>& ids, UaDateTime from, UaDateTime to,
                                 qsizetype most)
{
    if (!isConnected())
        return;
    QList<QvelHistoryItem> items;
    for (const int id : ids)
        items.append({m_session->toNodeId(m_variables.value(id).node), {}});
    QvelHistoryDetails details;
    details.from = from;
    details.to = to;
    details.maximum = OpcUa_UInt32(std::min<qsizetype>(most, details.maximum));
    const auto future = m_session->historyRead(items, details);
    whenDone(future, this, [this, ids, number = m_sessionNumber](const QvelHistoryResult& result) {
        if (number != m_sessionNumber)
            return; // it is another server's
        for (qsizetype i = 0; i < ids.size(); ++i) {
            const QvelHistoryNodeResult node = result.results.value(i, {result.status, {}});
            if (m_variables.contains(ids[i]))
                Q_EMIT historyCame(ids[i], node.status, node.values);
        }
    });
}

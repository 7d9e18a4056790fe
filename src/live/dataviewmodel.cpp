#include "dataviewmodel.h"

#include "base/retranslate_p.h"
#include "base/showntext_p.h"
#include "live/csvrecorder_p.h"
#include "live/lastingsubscription_p.h"
#include "nodes/datatypes_p.h"
#include "nodes/statustext_p.h"
#include "nodes/valuecell_p.h"
#include "platform/stack/opcuastatuscodes.h"
#include "session/session.h"
#include "session/whendone_p.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QHash>
#include <QtCore/QJsonArray>
#include <QtCore/QMimeData>
#include <QtCore/QPointer>
#include <QtCore/QSet>
#include <QtCore/QTimer>
#include <QtGui/QIcon>
#include <QtWidgets/QApplication>
#include <QtWidgets/QStyle>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <vector>

namespace {

constexpr int emptyInterval = 2000; // ms, before a subscription without rows goes
constexpr int flushInterval = 50;   // ms
// A window that has them all in sight takes long to paint: rows are shown in so many parts at most,
// with some milliseconds for others between two of them.
constexpr size_t mostParts = 12;
constexpr size_t smallestPart = 64;
constexpr int breath = 3;
constexpr int recordInterval = 250;                 // ms, between looks at the recorder
constexpr size_t mostBlocks = 32;                   // of rows, each a signal of its own
constexpr double longest = 1e10;                    // ms
constexpr OpcUa_StatusCode idInvalid = 0x80330000u; // BadNodeIdInvalid
constexpr OpcUa_Byte canWrite = 0x2;                // of UserAccessLevel

constexpr QLatin1String idKey("nodeId");
constexpr QLatin1String nameKey("name");
constexpr QLatin1String rowsKey("items");

// What changes with each notification.
struct Sample
{
    UaDataValue value;
    bool isThere = false;
    quint32 overflows = 0;
    quint32 gaps = 0;
};

enum class Writing { Never, Waits, Done };

struct Row
{
    UaExpandedNodeId id;
    QString idText;
    bool isNode = false; ///< else the text is no NodeId
    QString name;
    double publishing = 500;
    double sampling = -1;
    double queueSize = 10;
    QJsonObject saved;              ///< as it was read
    QSet<QLatin1String> unreadKeys; ///< parts of that which are no parameters

    int position = 0;
    OpcUa_UInt32 handle = 0; ///< 0 while it is not monitored
    UaStatusCode itemStatus;
    double revisedSampling = -1; ///< -1 while it is not known
    double revisedQueueSize = -1;
    Sample latest;
    Sample shown;
    bool isDirty = false; ///< latest is not yet shown
    ValueCell cell;       ///< of what is shown
    QString typeName;
    OpcUa_Byte access = 0;
    QByteArray origin; ///< for the recorder; empty until it is needed

    Writing writing = Writing::Never;
    quint32 writes = 0; ///< a number for each
    UaStatusCode writeStatus;
    QString writeReason; ///< beside what the status says
    bool wasSent = false;
};
using RowPointer = std::shared_ptr<Row>;

// The parameters of a row, as columns and as keys of its JSON.
struct Parameter
{
    QvelDataViewModel::Column column;
    QvelDataViewModel::Column revised;
    QLatin1String key;
    double Row::*member;
    bool (*isValid)(double value);
};
constexpr Parameter parameters[] = {
    {QvelDataViewModel::PublishingInterval, QvelDataViewModel::RevisedPublishingInterval,
     QLatin1String("publishingInterval"), &Row::publishing,
     [](double value) { return value >= 0 && value <= longest; }},
    {QvelDataViewModel::SamplingInterval, QvelDataViewModel::RevisedSamplingInterval,
     QLatin1String("samplingInterval"), &Row::sampling,
     [](double value) { return value == -1 || (value >= 0 && value <= longest); }},
    {QvelDataViewModel::QueueSize, QvelDataViewModel::RevisedQueueSize, QLatin1String("queueSize"),
     &Row::queueSize,
     [](double value) { return value >= 0 && value <= 0xffffffffu && value == std::floor(value); }},
};
const Parameter* parameterOf(int column)
{
    const auto* found = std::find_if(std::begin(parameters), std::end(parameters),
                                     [column](const Parameter& p) { return p.column == column; });
    return found == std::end(parameters) ? nullptr : found;
}

QIcon iconOf(UaStatusCode status)
{
    if (!status.isNotGood())
        return {};
    return QApplication::style()->standardIcon(status.isBad() ? QStyle::SP_MessageBoxCritical
                                                              : QStyle::SP_MessageBoxWarning);
}

constexpr OpcUa_DateTime ticksPerDay = 864'000'000'000;

// Integers, and numbers of any kind, of which the variable may know more than their DataType.
bool mayHaveNames(const DataTypeInfo& type)
{
    const auto isOf = [](OpcUa_BuiltInType found, OpcUa_BuiltInType last) {
        return found >= OpcUaType_SByte && found <= last;
    };
    return type.enumInfo.kind == QvelEnumInfo::NoEnumeration &&
           (isOf(type.builtInType, OpcUaType_UInt64) ||
            (type.builtInType == OpcUaType_Null && isOf(type.emptyType, OpcUaType_Double)));
}

QString numberText(double number)
{
    return QString::number(number, 'g', 15);
}

} // namespace

class QvelDataViewModel::Private
{
public:
    // The rows of one publishing interval.
    struct Group
    {
        QPointer<QvelSubscription> subscription;
        int rows = 0;
        UaStatusCode status;
    };

    explicit Private(QvelDataViewModel* model) : q(model)
    {
        flushTimer.setSingleShot(true);
        flushTimer.setTimerType(Qt::PreciseTimer);
        recordTimer.setInterval(recordInterval);
        emptyTimer.setSingleShot(true);
        emptyTimer.setInterval(emptyInterval);
        emptyTimer.callOnTimeout(q, [this] { removeEmptyGroups(); });
        flushTimer.callOnTimeout(q, [this] { flush(); });
        recordTimer.callOnTimeout(q, [this] { lookAtRecorder(); });
    }

    bool isConnected() const { return session && session->state() == QvelSession::Connected; }

    void setId(Row& row, const UaExpandedNodeId& id) const
    {
        row.id = id;
        row.idText = qvelNodeIdText(id);
        row.isNode = true;
        row.origin.clear();
    }
    // By the namespace's URI, where the server has told it.
    UaExpandedNodeId expanded(const UaExpandedNodeId& id) const
    {
        return session && id.namespaceUri().isEmpty() && id.serverIndex() == 0
                   ? session->toExpandedNodeId(id.nodeId())
                   : id;
    }
    UaNodeId nodeIdOf(const Row& row) const
    {
        return row.id.serverIndex() == 0 ? session->toNodeId(row.id) : UaNodeId();
    }

    void insert(int before, const QList<RowPointer>& added);
    void renumber(int from);
    void emitRows(const QList<Row*>& changed, Column first, Column last);
    void emitAll();
    void forgetRights();

    void subscribe(const QList<RowPointer>& candidates);
    void unsubscribe(const QList<Row*>& gone);
    void removeEmptyGroups();
    void readAttributes(const QList<RowPointer>& wanted);
    Group& groupOf(double interval);
    QvelMonitoredItem itemOf(const Row& row) const;

    void take(const QList<QvelDataChange>& changes);
    void takeStates(const QList<QvelItemState>& states);
    void takeGap(double interval, OpcUa_UInt32 count);
    void markDirty(Row& row)
    {
        if (!std::exchange(row.isDirty, true))
            dirty.push_back(&row);
    }
    void startFlush()
    {
        if (isPaused || flushTimer.isActive() || (dirty.empty() && flushed.empty()))
            return;
        const bool goesOn = !flushed.empty() || !cycle.isValid();
        flushTimer.start(
            goesOn ? breath
                   : std::max(breath, flushInterval -
                                          int(std::min<qint64>(cycle.elapsed(), flushInterval))));
    }
    void flush();
    void lookAtRecorder();

    bool write(const RowPointer& row, const QVariant& input, int role);
    void finishWrite(Row& row, UaStatusCode status, const QString& reason, bool isSent);

    UaStatusCode statusOf(const Row& row) const
    {
        if (!row.isNode)
            return idInvalid;
        if (row.itemStatus.isBad())
            return row.itemStatus;
        const auto group = groups.find(row.publishing);
        if (row.handle != 0 && group != groups.end() && group->second.status.isBad())
            return group->second.status;
        return row.shown.value.status();
    }
    QString statusText(const Row& row) const
    {
        const UaStatusCode status = statusOf(row);
        return row.shown.isThere || status.isBad() ? status.toString().toQString() : QString();
    }
    QString text(const Row& row, int column) const;
    QString toolTip(const Row& row, int column) const;
    static QString writeText(const Row& row);
    static UaDateTime timeOf(const Row& row, int column)
    {
        const UaDataValue& value = row.shown.value;
        return column == SourceTimestamp ? value.sourceTimestamp() : value.serverTimestamp();
    }
    QString timeText(UaDateTime time) const;
    QVariant value(const Row& row, int column) const;
    double revised(const Row& row, int column) const;
    // Why the value is not edited; empty where it is, or nothing is known of it.
    QString refusal(const Row& row) const
    {
        if (!isConnected() || row.typeName.isEmpty() || isWritable(row))
            return {};
        return refusalText(row.access & canWrite, QvelAttribute::UserAccessLevel);
    }
    bool isWritable(const Row& row) const
    {
        return isConnected() && (row.access & canWrite) && row.cell.isEditable();
    }
    void findType(const UaNodeId& dataType, const QList<std::weak_ptr<Row>>& members);
    void findNames(const QList<std::weak_ptr<Row>>& members);

    QvelDataViewModel* const q;
    QPointer<QvelSession> session;
    int generation = 0; // of the session
    QString name;
    std::vector<RowPointer> rows;
    Row initial; ///< the parameters of those that come
    QHash<OpcUa_UInt32, Row*> byHandle;
    std::map<double, Group> groups;
    std::vector<Row*> dirty;   // each once
    std::vector<Row*> flushed; // before them; the last ones first
    size_t part = 0;           // of these
    OpcUa_DateTime today = 0;  // days since 1601, UTC
    QElapsedTimer cycle;       // since their beginning
    QTimer emptyTimer;
    QTimer flushTimer;
    bool isPaused = false;
    QJsonArray unread; // entries that are no rows
    QJsonObject saved;

    std::unique_ptr<CsvRecorder> recorder;
    bool isRecording = false;
    QTimer recordTimer;
    quint64 toldLines = 0;
};

// --- Rows ----------------------------------------------------------------------------------------

void QvelDataViewModel::Private::renumber(int from)
{
    for (size_t i = size_t(from); i < rows.size(); ++i)
        rows[i]->position = int(i);
}

void QvelDataViewModel::Private::insert(int before, const QList<RowPointer>& added)
{
    if (added.isEmpty())
        return;
    q->beginInsertRows({}, before, before + int(added.size()) - 1);
    rows.insert(rows.begin() + before, added.begin(), added.end());
    renumber(before);
    q->endInsertRows();
    subscribe(added);
}

// One signal for each block of rows, but not hundreds of them.
void QvelDataViewModel::Private::emitRows(const QList<Row*>& changed, Column first, Column last)
{
    if (changed.isEmpty())
        return;
    std::vector<int> positions;
    positions.reserve(size_t(changed.size()));
    for (const Row* row : changed)
        positions.push_back(row->position);
    std::sort(positions.begin(), positions.end());
    std::vector<std::pair<int, int>> blocks;
    for (int position : positions) {
        if (!blocks.empty() && position <= blocks.back().second + 1)
            blocks.back().second = position;
        else
            blocks.emplace_back(position, position);
    }
    if (blocks.size() > mostBlocks)
        blocks = {{positions.front(), positions.back()}};
    for (const auto& [top, bottom] : blocks)
        Q_EMIT q->dataChanged(q->index(top, first), q->index(bottom, last));
}

void QvelDataViewModel::Private::emitAll()
{
    if (!rows.empty())
        Q_EMIT q->dataChanged(q->index(0, 0), q->index(int(rows.size()) - 1, ColumnCount - 1));
}

// What another server allowed and answered is not this one's. Nor is what an editor holds: by the
// reset the views close theirs.
void QvelDataViewModel::Private::forgetRights()
{
    q->beginResetModel();
    for (const RowPointer& row : rows) {
        row->access = 0;
        row->writing = Writing::Never;
        ++row->writes;
    }
    q->endResetModel();
}

// --- Subscriptions -------------------------------------------------------------------------------

QvelDataViewModel::Private::Group& QvelDataViewModel::Private::groupOf(double interval)
{
    Group& group = groups[interval];
    if (group.rows == 0 && group.status.isBad())
        delete group.subscription.data(); // one more try
    if (group.subscription)
        return group;
    group.status = {};
    group.subscription = session->createSubscription(lastingSubscription(interval));
    const QvelSubscription* subscription = group.subscription;
    connect(subscription, &QvelSubscription::dataChanged, q,
            [this](const QList<QvelDataChange>& changes) { take(changes); });
    connect(subscription, &QvelSubscription::itemsChanged, q,
            [this](const QList<QvelItemState>& states) { takeStates(states); });
    connect(subscription, &QvelSubscription::gap, q,
            [this, interval](OpcUa_UInt32 count) { takeGap(interval, count); });
    connect(subscription, &QvelSubscription::changed, q, [this, interval](UaStatusCode status) {
        if (const auto found = groups.find(interval); found != groups.end())
            found->second.status = status;
        emitAll();
    });
    return group;
}

QvelMonitoredItem QvelDataViewModel::Private::itemOf(const Row& row) const
{
    QvelMonitoredItem item;
    item.nodeId = nodeIdOf(row);
    item.samplingInterval = row.sampling;
    item.queueSize = OpcUa_UInt32(row.queueSize);
    return item;
}

void QvelDataViewModel::Private::subscribe(const QList<RowPointer>& candidates)
{
    if (!isConnected())
        return;
    std::map<double, QList<Row*>> wanted;
    QList<RowPointer> known;
    for (const RowPointer& row : candidates) {
        if (!row->isNode)
            continue;
        setId(*row, expanded(row->id));
        const bool isUnknown = row->id.serverIndex() != 0 || (!row->id.namespaceUri().isEmpty() &&
                                                              session->toNodeId(row->id).isNull());
        row->itemStatus = isUnknown ? UaStatusCode(OpcUa_BadNodeIdUnknown) : UaStatusCode();
        if (isUnknown)
            continue;
        known.append(row);
        if (row->handle == 0)
            wanted[row->publishing].append(row.get());
    }
    for (const auto& [interval, members] : wanted) {
        Group& group = groupOf(interval);
        QList<QvelMonitoredItem> items;
        for (const Row* row : members)
            items.append(itemOf(*row));
        const QList<OpcUa_UInt32> handles = group.subscription->addItems(items);
        for (qsizetype i = 0; i < handles.size(); ++i) {
            members[i]->handle = handles[i];
            byHandle.insert(handles[i], members[i]);
        }
        group.rows += int(members.size());
    }
    readAttributes(known);
    emitAll();
}

void QvelDataViewModel::Private::unsubscribe(const QList<Row*>& gone)
{
    std::map<double, QList<OpcUa_UInt32>> handles;
    for (Row* row : gone) {
        if (row->handle == 0)
            continue;
        byHandle.remove(row->handle);
        handles[row->publishing].append(std::exchange(row->handle, 0));
        row->revisedSampling = row->revisedQueueSize = -1;
    }
    for (const auto& [interval, items] : handles) {
        const auto group = groups.find(interval);
        if (group == groups.end())
            continue;
        group->second.rows -= int(items.size());
        if (group->second.subscription)
            group->second.subscription->removeItems(items);
        // Without rows, it is kept for a while: servers have few of them, and rows come back.
        if (group->second.rows == 0)
            emptyTimer.start();
    }
}

void QvelDataViewModel::Private::removeEmptyGroups()
{
    for (auto group = groups.begin(); group != groups.end();) {
        if (group->second.rows > 0) {
            ++group;
            continue;
        }
        delete group->second.subscription.data();
        group = groups.erase(group);
    }
}

void QvelDataViewModel::Private::readAttributes(const QList<RowPointer>& wanted)
{
    if (wanted.isEmpty())
        return;
    constexpr OpcUa_UInt32 attributes[] = {QvelAttribute::DisplayName, QvelAttribute::DataType,
                                           QvelAttribute::ValueRank, QvelAttribute::ArrayDimensions,
                                           QvelAttribute::UserAccessLevel};
    constexpr qsizetype count = std::size(attributes);
    QList<QvelReadItem> items;
    QList<std::weak_ptr<Row>> asked;
    for (const RowPointer& row : wanted) {
        asked.append(row);
        for (OpcUa_UInt32 attribute : attributes)
            items.append({nodeIdOf(*row), attribute, {}, {}});
    }
    const auto take = [this, asked, generation = generation](const QvelReadResult& result) {
        if (generation != this->generation || result.values.size() != count * asked.size())
            return;
        std::map<QByteArray, std::pair<UaNodeId, QList<std::weak_ptr<Row>>>> types;
        for (qsizetype i = 0; i < asked.size(); ++i) {
            const RowPointer row = asked[i].lock();
            if (!row)
                continue;
            const UaDataValue* values = &result.values[count * i];
            if (row->name.isEmpty() && !values[0].value().isEmpty()) {
                row->name = values[0].value().toLocalizedText().text().toQString();
                row->origin.clear();
            }
            const UaNodeId dataType = values[1].value().toNodeId();
            ValueType type;
            if (!values[2].value().isEmpty())
                type.valueRank = values[2].value().toInt32();
            type.dimensions = values[3].value().toUInt32Array();
            row->cell.setType(type);
            row->access = values[4].value().toByte();
            auto& members = types[dataType.toFullString().bytes()];
            members.first = dataType;
            members.second.append(row);
        }
        emitAll();
        for (const auto& entry : types)
            findType(entry.second.first, entry.second.second);
    };
    whenDone(session->read(items), q, take);
}

void QvelDataViewModel::Private::findType(const UaNodeId& dataType,
                                          const QList<std::weak_ptr<Row>>& members)
{
    const auto take = [this, members, generation = generation](const DataTypeInfo& info) {
        if (generation != this->generation)
            return;
        for (const std::weak_ptr<Row>& member : members) {
            const RowPointer row = member.lock();
            if (!row)
                continue;
            const ValueType& type = row->cell.type();
            row->typeName = info.name;
            row->cell.setType({info, type.valueRank, type.dimensions});
        }
        emitAll();
        if (mayHaveNames(info))
            findNames(members);
    };
    whenDone(DataTypes::of(session)->find(dataType), q, take);
}

// The names that a variable itself has for its numbers.
void QvelDataViewModel::Private::findNames(const QList<std::weak_ptr<Row>>& members)
{
    QList<UaNodeId> nodes;
    QList<std::weak_ptr<Row>> asked;
    for (const std::weak_ptr<Row>& member : members) {
        if (const RowPointer row = member.lock()) {
            nodes.append(nodeIdOf(*row));
            asked.append(member);
        }
    }
    const auto take = [this, asked, asking = generation](const QList<ValueProperties>& found) {
        QList<Row*> named;
        for (qsizetype i = 0; asking == generation && i < asked.size(); ++i) {
            const RowPointer row = asked[i].lock();
            const QvelEnumInfo names = namesOf(found[i]);
            if (!row || names.kind == QvelEnumInfo::NoEnumeration)
                continue;
            ValueType type = row->cell.type();
            type.enumInfo = names;
            row->cell.setType(type);
            named.append(row.get());
        }
        emitRows(named, Column(0), Column(ColumnCount - 1));
    };
    whenDone(DataTypes::of(session)->readProperties(nodes), q, take);
}

// --- What the server sends -----------------------------------------------------------------------

void QvelDataViewModel::Private::take(const QList<QvelDataChange>& changes)
{
    QList<CsvRecorder::Line> lines;
    if (isRecording)
        lines.reserve(changes.size());
    for (const QvelDataChange& change : changes) {
        Row* row = byHandle.value(change.handle);
        if (!row)
            continue; // removed meanwhile
        row->latest.value = change.value;
        row->latest.isThere = true;
        row->latest.overflows += change.hasOverflow();
        markDirty(*row);
        if (!isRecording)
            continue;
        if (row->origin.isEmpty())
            row->origin = CsvRecorder::origin(row->name, row->id);
        lines.append({row->origin, change.value, 0});
    }
    if (isRecording)
        recorder->append(lines);
    startFlush();
}

void QvelDataViewModel::Private::takeStates(const QList<QvelItemState>& states)
{
    QList<Row*> changed;
    for (const QvelItemState& state : states) {
        Row* row = byHandle.value(state.handle);
        if (!row)
            continue;
        row->itemStatus = state.status;
        if (!state.status.isBad()) {
            row->revisedSampling = state.revisedSamplingInterval;
            row->revisedQueueSize = state.revisedQueueSize;
        }
        changed.append(row);
    }
    emitRows(changed, Status, RevisedQueueSize);
}

void QvelDataViewModel::Private::takeGap(double interval, OpcUa_UInt32 count)
{
    for (const RowPointer& row : rows) {
        if (row->handle == 0 || row->publishing != interval)
            continue;
        ++row->latest.gaps;
        markDirty(*row);
    }
    if (isRecording)
        recorder->append({{{}, UaDataValue({}, {}, {}, UaDateTime::now()), count}});
    startFlush();
}

void QvelDataViewModel::Private::flush()
{
    if (flushed.empty()) {
        flushed.swap(dirty);
        std::sort(flushed.begin(), flushed.end(),
                  [](const Row* a, const Row* b) { return a->position > b->position; });
        part = std::max(smallestPart, (flushed.size() + mostParts - 1) / mostParts);
        cycle.start();
        today = UaDateTime::now().ticks() / ticksPerDay;
    }
    const auto first = flushed.end() - std::ptrdiff_t(std::min(part, flushed.size()));
    const QList<Row*> changed(first, flushed.end());
    flushed.erase(first, flushed.end());
    Column last = ServerTimestamp;
    bool isLost = false;
    for (Row* row : changed) {
        row->isDirty = false;
        if (row->shown.value.status() != row->latest.value.status() || !row->shown.isThere)
            last = Status;
        isLost |=
            row->shown.overflows != row->latest.overflows || row->shown.gaps != row->latest.gaps;
        row->shown = row->latest;
        row->cell.setValue(row->shown.value.value());
    }
    // What seldom changes is not painted again with each value.
    emitRows(changed, Value, Value);
    emitRows(changed, SourceTimestamp, last);
    if (isLost)
        emitRows(changed, Overflows, Gaps);
    startFlush();
}

void QvelDataViewModel::Private::lookAtRecorder()
{
    const quint64 lines = recorder->lines();
    const bool failed = isRecording && !recorder->error().isEmpty();
    if (failed)
        isRecording = false;
    const bool isDone = recorder->isDone();
    if (isDone)
        recordTimer.stop();
    if (std::exchange(toldLines, lines) != lines || failed || isDone)
        Q_EMIT q->recordingChanged();
}

// --- Writing -------------------------------------------------------------------------------------

bool QvelDataViewModel::Private::write(const RowPointer& row, const QVariant& input, int role)
{
    UaVariant value;
    const UaStatusCode status = row->cell.take(input, role, &value);
    if (status.isNotGood()) {
        finishWrite(*row, status, {}, false);
        return false;
    }
    if (!isConnected()) {
        finishWrite(*row, OpcUa_BadSessionClosed, {}, false);
        return false;
    }
    row->writing = Writing::Waits;
    const quint32 number = ++row->writes;
    emitRows({row.get()}, WriteResult, WriteResult);
    whenDone(session->write({{nodeIdOf(*row), UaDataValue(value), QvelAttribute::Value, {}}}), q,
             [this, number, weak = std::weak_ptr(row)](const QvelWriteResult& result) {
                 const RowPointer written = weak.lock();
                 if (written && written->writes == number)
                     finishWrite(*written, result.results.value(0, result.status),
                                 result.reason.toQString(), true);
             });
    return true;
}

void QvelDataViewModel::Private::finishWrite(Row& row, UaStatusCode status, const QString& reason,
                                             bool isSent)
{
    row.writing = Writing::Done;
    row.writeStatus = status;
    row.writeReason = reason;
    row.wasSent = isSent;
    if (status.isGood())
        row.cell.clearAttempt();
    emitRows({&row}, WriteResult, WriteResult);
    if (status.isBad()) // which may be out of sight
        Q_EMIT q->inputRejected(shownText(row.name) + QStringLiteral(": ") + writeText(row));
}

// --- What is shown -------------------------------------------------------------------------------

double QvelDataViewModel::Private::revised(const Row& row, int column) const
{
    if (column == RevisedSamplingInterval)
        return row.revisedSampling;
    if (column == RevisedQueueSize)
        return row.revisedQueueSize;
    const auto group = groups.find(row.publishing);
    return row.handle == 0 || group == groups.end() || !group->second.subscription ||
                   group->second.subscription->subscriptionId() == 0
               ? -1
               : group->second.subscription->revisedParameters().publishingInterval;
}

// Down to a millisecond, and without the date where that is today's. Most of what is painted again
// and again are times: the shorter, the faster.
QString QvelDataViewModel::Private::timeText(UaDateTime time) const
{
    if (time.isNull())
        return {};
    if (time.ticks() / ticksPerDay != today)
        return time.toQDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
    auto rest = int(time.ticks() % ticksPerDay / 10'000);
    char text[] = "00:00:00.000";
    for (int i = 11; i >= 0; --i) {
        if (i == 2 || i == 5 || i == 8)
            continue;
        const int base = i == 3 || i == 6 ? 6 : 10;
        text[i] = char('0' + rest % base);
        rest /= base;
    }
    return QString::fromLatin1(text, 12);
}

QString QvelDataViewModel::Private::text(const Row& row, int column) const
{
    switch (column) {
    case Name:
        return shownText(row.name);
    case NodeId:
        return shownText(row.idText);
    case Value:
        return row.cell.data(Qt::DisplayRole).toString();
    case DataType:
        return row.typeName;
    case SourceTimestamp:
    case ServerTimestamp:
        return timeText(timeOf(row, column));
    case Status:
        return statusText(row);
    case SamplingInterval:
    case PublishingInterval:
    case QueueSize:
        return numberText(row.*parameterOf(column)->member);
    case RevisedSamplingInterval:
    case RevisedPublishingInterval:
    case RevisedQueueSize: {
        const double number = revised(row, column);
        return number < 0 ? QString() : numberText(number);
    }
    case Overflows:
        return row.shown.overflows ? QString::number(row.shown.overflows) : QString();
    case Gaps:
        return row.shown.gaps ? QString::number(row.shown.gaps) : QString();
    case WriteResult:
        if (row.writing == Writing::Waits)
            return tr("Writing...");
        return row.writing == Writing::Done ? row.writeStatus.toString().toQString() : QString();
    }
    return {};
}

QString QvelDataViewModel::Private::writeText(const Row& row)
{
    const QString text = statusInWords(row.writeStatus);
    const QString reason = row.wasSent ? row.writeReason : tr("Nothing was sent.");
    return reason.isEmpty() ? text : text + QLatin1Char(' ') + reason;
}

QString QvelDataViewModel::Private::toolTip(const Row& row, int column) const
{
    QString tip = text(row, column);
    if (column == SourceTimestamp || column == ServerTimestamp) {
        const UaDateTime time = timeOf(row, column);
        tip = time.isNull() ? QString() : time.toString().toQString();
    }
    if (column == Value)
        if (const QString reason = refusal(row); !reason.isEmpty())
            tip = tip.isEmpty() ? reason : tip + QStringLiteral(" - ") + reason;
    if (column == Status && !tip.isEmpty())
        tip = statusInWords(statusOf(row));
    if (column == WriteResult && row.writing == Writing::Done) {
        tip = writeText(row);
    }
    if (isConnected())
        return shownToolTip(tip);
    const QString stale = staleSentence();
    return tip.isEmpty() ? stale : shownToolTip(tip + QStringLiteral(" - ") + stale);
}

// As QvelModelDelegate edits it.
QVariant QvelDataViewModel::Private::value(const Row& row, int column) const
{
    if (column == Value)
        return row.cell.data(ValueRole);
    const Parameter* parameter = parameterOf(column);
    return parameter ? QVariant::fromValue(UaVariant(OpcUa_Double(row.*parameter->member)))
                     : QVariant();
}

namespace {

struct ColumnTitle
{
    const char* title;
    const char* toolTip;
    bool isNumber = false;
    const char* refusal = nullptr; ///< of what is typed
};
// In the order of the columns.
constexpr ColumnTitle titles[] = {
    {QT_TRANSLATE_NOOP("QvelDataViewModel", "Name"), nullptr},
    {QT_TRANSLATE_NOOP("QvelDataViewModel", "NodeId"), nullptr},
    {QT_TRANSLATE_NOOP("QvelDataViewModel", "Value"), nullptr},
    {QT_TRANSLATE_NOOP("QvelDataViewModel", "Data type"), nullptr},
    {QT_TRANSLATE_NOOP("QvelDataViewModel", "Source time (UTC)"),
     QT_TRANSLATE_NOOP("QvelDataViewModel",
                       "When the source took the value; the date is left out where it is today")},
    {QT_TRANSLATE_NOOP("QvelDataViewModel", "Server time (UTC)"),
     QT_TRANSLATE_NOOP("QvelDataViewModel",
                       "When the server got the value; the date is left out where it is today")},
    {QT_TRANSLATE_NOOP("QvelDataViewModel", "Status"), nullptr},
    {QT_TRANSLATE_NOOP("QvelDataViewModel", "Sampling"),
     QT_TRANSLATE_NOOP("QvelDataViewModel", "Milliseconds between two looks of the server at the "
                                            "variable; -1 for the publishing interval, 0 for as "
                                            "fast as it can"),
     true, QT_TRANSLATE_NOOP("QvelDataViewModel", "\"%1\" is no sampling.")},
    {QT_TRANSLATE_NOOP("QvelDataViewModel", "Revised sampling"),
     QT_TRANSLATE_NOOP("QvelDataViewModel", "The sampling interval that the server keeps"), true},
    {QT_TRANSLATE_NOOP("QvelDataViewModel", "Publishing"),
     QT_TRANSLATE_NOOP("QvelDataViewModel", "Milliseconds between two notifications"), true,
     QT_TRANSLATE_NOOP("QvelDataViewModel", "\"%1\" is no publishing.")},
    {QT_TRANSLATE_NOOP("QvelDataViewModel", "Revised publishing"),
     QT_TRANSLATE_NOOP("QvelDataViewModel", "The publishing interval that the server keeps"), true},
    {QT_TRANSLATE_NOOP("QvelDataViewModel", "Queue size"),
     QT_TRANSLATE_NOOP("QvelDataViewModel", "Values that the server keeps for a notification"),
     true, QT_TRANSLATE_NOOP("QvelDataViewModel", "\"%1\" is no queue size.")},
    {QT_TRANSLATE_NOOP("QvelDataViewModel", "Revised queue"),
     QT_TRANSLATE_NOOP("QvelDataViewModel", "The queue size that the server has"), true},
    {QT_TRANSLATE_NOOP("QvelDataViewModel", "Overflows"),
     QT_TRANSLATE_NOOP("QvelDataViewModel",
                       "How often the server dropped values because its queue was too short"),
     true},
    {QT_TRANSLATE_NOOP("QvelDataViewModel", "Gaps"),
     QT_TRANSLATE_NOOP("QvelDataViewModel",
                       "How often notifications were lost, such as with the connection"),
     true},
    {QT_TRANSLATE_NOOP("QvelDataViewModel", "Last write"),
     QT_TRANSLATE_NOOP("QvelDataViewModel", "The server's answer to the last value written")},
};
static_assert(std::size(titles) == QvelDataViewModel::ColumnCount);

} // namespace

// --- The model -----------------------------------------------------------------------------------

QvelDataViewModel::QvelDataViewModel(QObject* parent)
    : QAbstractTableModel(parent), d(std::make_unique<Private>(this))
{
    whenLanguageChanges(this, [this] {
        d->emitAll();
        Q_EMIT headerDataChanged(Qt::Horizontal, 0, ColumnCount - 1);
    });
}

QvelDataViewModel::~QvelDataViewModel()
{
    setSession(nullptr);
}

void QvelDataViewModel::setSession(QvelSession* session)
{
    if (session == d->session)
        return;
    if (d->session)
        disconnect(d->session, nullptr, this, nullptr);
    ++d->generation;
    QList<Row*> all;
    for (const RowPointer& row : d->rows)
        all.append(row.get());
    d->unsubscribe(all);
    for (const auto& [interval, group] : d->groups) {
        if (group.subscription)
            group.subscription->deleteLater(); // maybe in one of its signals
    }
    d->groups.clear();
    d->session = session;
    if (session) {
        d->forgetRights();
        connect(session, &QvelSession::stateChanged, this, [this](QvelSession::State state) {
            if (state == QvelSession::Connected)
                d->subscribe({d->rows.begin(), d->rows.end()});
            else
                d->emitAll();
        });
        connect(session, &QvelSession::namespacesChanged, this, [this] {
            d->subscribe({d->rows.begin(), d->rows.end()});
        });
        connect(session, &QObject::destroyed, this, [this] {
            ++d->generation;
            d->groups.clear();
            d->byHandle.clear();
            for (const RowPointer& row : d->rows)
                row->handle = 0;
            d->emitAll();
        });
        d->subscribe({d->rows.begin(), d->rows.end()});
    }
    d->emitAll();
}

QvelSession* QvelDataViewModel::session() const
{
    return d->session;
}

QString QvelDataViewModel::name() const
{
    return d->name;
}

void QvelDataViewModel::setName(const QString& name)
{
    d->name = name;
}

int QvelDataViewModel::addNodes(const QList<QvelNodeLink>& nodes)
{
    return insertNodes(rowCount(), nodes);
}

int QvelDataViewModel::insertNodes(int before, const QList<QvelNodeLink>& nodes)
{
    QSet<QString> present;
    for (const RowPointer& row : d->rows)
        present.insert(row->idText);
    QList<RowPointer> added;
    qsizetype doubles = 0;
    for (const QvelNodeLink& node : nodes) {
        auto row = std::make_shared<Row>();
        for (const Parameter& parameter : parameters)
            (*row).*parameter.member = d->initial.*parameter.member;
        d->setId(*row, d->expanded(node.nodeId));
        row->name = node.displayName;
        const qsizetype count = present.size();
        present.insert(row->idText);
        if (present.size() == count)
            ++doubles;
        else if (rowCount() + added.size() < mostRows)
            added.append(row);
    }
    d->insert(std::clamp(before, 0, rowCount()), added);
    const qsizetype left = nodes.size() - doubles - added.size();
    if (left > 0)
        Q_EMIT inputRejected(
            tr("%1 nodes were not added: a list holds %2.").arg(left).arg(mostRows));
    else if (added.isEmpty() && doubles > 0)
        Q_EMIT inputRejected(tr("This is in the list already."));
    return int(added.size());
}

static void sortUnique(QList<int>& rows, int count)
{
    rows.removeIf([count](int row) { return row < 0 || row >= count; });
    std::sort(rows.begin(), rows.end());
    rows.resize(std::unique(rows.begin(), rows.end()) - rows.begin());
}

void QvelDataViewModel::moveRowsTo(QList<int> moved, int before)
{
    sortUnique(moved, rowCount());
    if (moved.isEmpty())
        return;
    before = std::clamp(before, 0, rowCount());
    Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
    const QModelIndexList old = persistentIndexList();
    QList<RowPointer> oldRows;
    for (const QModelIndex& index : old)
        oldRows.append(d->rows[size_t(index.row())]);

    const auto isMoved = [&moved](const RowPointer& row) {
        return std::binary_search(moved.begin(), moved.end(), row->position);
    };
    const auto middle = d->rows.begin() + before;
    std::stable_partition(d->rows.begin(), middle, std::not_fn(isMoved));
    std::stable_partition(middle, d->rows.end(), isMoved);
    d->renumber(0);

    QModelIndexList now;
    for (qsizetype i = 0; i < old.size(); ++i)
        now.append(index(oldRows[i]->position, old[i].column()));
    changePersistentIndexList(old, now);
    Q_EMIT layoutChanged({}, VerticalSortHint);
}

bool QvelDataViewModel::removeRows(int row, int count, const QModelIndex& parent)
{
    if (parent.isValid() || row < 0 || count <= 0 || row + count > rowCount())
        return false;
    beginRemoveRows({}, row, row + count - 1);
    const auto first = d->rows.begin() + row;
    QList<Row*> gone;
    for (auto each = first; each != first + count; ++each) {
        gone.append(each->get());
        (*each)->position = -1;
    }
    for (std::vector<Row*>* list : {&d->dirty, &d->flushed}) {
        const auto isGone = [](const Row* each) { return each->position < 0; };
        list->erase(std::remove_if(list->begin(), list->end(), isGone), list->end());
    }
    d->unsubscribe(gone);
    d->rows.erase(first, first + count);
    d->renumber(row);
    endRemoveRows();
    return true;
}

QList<QvelNodeLink> QvelDataViewModel::nodeLinks(QList<int> rows) const
{
    sortUnique(rows, rowCount());
    QList<QvelNodeLink> links;
    for (int row : std::as_const(rows)) {
        if (const RowPointer& each = d->rows[size_t(row)]; each->isNode)
            links.append({each->id, each->name});
    }
    return links;
}

bool QvelDataViewModel::setParameter(const QList<int>& rows, Column column, double value)
{
    const Parameter* parameter = parameterOf(column);
    if (!parameter || !parameter->isValid(value))
        return false;
    QList<Row*> changed;
    QList<RowPointer> moved;
    for (int row : rows) {
        if (row < 0 || row >= rowCount())
            continue;
        const RowPointer& each = d->rows[size_t(row)];
        each->unreadKeys.remove(parameter->key);
        if ((*each).*parameter->member == value)
            continue;
        changed.append(each.get());
        if (column == PublishingInterval) {
            moved.append(each);
            continue;
        }
        (*each).*parameter->member = value;
        const auto group = d->groups.find(each->publishing);
        if (each->handle != 0 && group != d->groups.end() && group->second.subscription)
            group->second.subscription->modifyItem(each->handle, d->itemOf(*each));
    }
    if (column == PublishingInterval) {
        d->unsubscribe(changed);
        for (Row* row : std::as_const(changed))
            row->publishing = value;
        d->subscribe(moved);
    }
    d->emitRows(changed, SamplingInterval, RevisedQueueSize);
    return true;
}

void QvelDataViewModel::setInitialParameter(Column column, double value)
{
    const Parameter* parameter = parameterOf(column);
    if (parameter && parameter->isValid(value))
        d->initial.*parameter->member = value;
}

double QvelDataViewModel::initialParameter(Column column) const
{
    const Parameter* parameter = parameterOf(column);
    return parameter ? d->initial.*parameter->member : 0;
}

void QvelDataViewModel::setPaused(bool paused)
{
    d->isPaused = paused;
    if (paused)
        d->flushTimer.stop();
    d->startFlush();
}

bool QvelDataViewModel::isPaused() const
{
    return d->isPaused;
}

void QvelDataViewModel::startRecording(const QString& fileName)
{
    d->recorder = nullptr; // all of the last one is in its file first
    d->recorder = std::make_unique<CsvRecorder>(fileName);
    d->isRecording = true;
    d->toldLines = 0;
    d->recordTimer.start();
    Q_EMIT recordingChanged();
}

void QvelDataViewModel::stopRecording()
{
    if (!d->isRecording)
        return;
    d->isRecording = false;
    d->recorder->stop();
    Q_EMIT recordingChanged();
}

bool QvelDataViewModel::isRecording() const
{
    return d->isRecording;
}

QString QvelDataViewModel::recordingFile() const
{
    return d->recorder ? d->recorder->fileName() : QString();
}

QString QvelDataViewModel::recordingError() const
{
    return d->recorder ? d->recorder->error() : QString();
}

quint64 QvelDataViewModel::recordedLines() const
{
    return d->recorder ? d->recorder->lines() : 0;
}

QJsonObject QvelDataViewModel::toJson() const
{
    QJsonArray items;
    for (const RowPointer& row : d->rows) {
        QJsonObject item = row->saved;
        item.insert(idKey, row->idText);
        if (!row->name.isEmpty())
            item.insert(nameKey, row->name);
        for (const Parameter& parameter : parameters) {
            if (!row->unreadKeys.contains(parameter.key))
                item.insert(parameter.key, (*row).*parameter.member);
        }
        items.append(item);
    }
    for (const QJsonValue entry : std::as_const(d->unread))
        items.append(entry);
    QJsonObject json = d->saved;
    json.insert(nameKey, d->name);
    json.insert(rowsKey, items);
    return json;
}

bool QvelDataViewModel::fromJson(const QJsonObject& json)
{
    if (!json.value(rowsKey).isArray())
        return false;
    removeRows(0, rowCount());
    d->saved = json;
    d->name = json.value(nameKey).toString();
    d->unread = {};
    QList<RowPointer> added;
    const QJsonArray items = json.value(rowsKey).toArray();
    for (const QJsonValue entry : items) {
        const QJsonObject item = entry.toObject();
        if (!item.value(idKey).isString() || added.size() == mostRows) {
            d->unread.append(entry);
            continue;
        }
        auto row = std::make_shared<Row>();
        row->saved = item;
        row->name = item.value(nameKey).toString();
        row->idText = item.value(idKey).toString();
        if (const auto id = qvelParseNodeId(row->idText))
            d->setId(*row, d->expanded(*id));
        for (const Parameter& parameter : parameters) {
            const QJsonValue number = item.value(parameter.key);
            if (number.isDouble() && parameter.isValid(number.toDouble()))
                (*row).*parameter.member = number.toDouble();
            else if (!number.isUndefined())
                row->unreadKeys.insert(parameter.key);
        }
        added.append(row);
    }
    d->insert(0, added);
    return true;
}

int QvelDataViewModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(d->rows.size());
}

int QvelDataViewModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant QvelDataViewModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Row& row = *d->rows[size_t(index.row())];
    const int column = index.column();
    switch (role) {
    case Qt::DisplayRole:
        return d->text(row, column);
    case Qt::EditRole:
        return column == Value ? row.cell.data(role) : QVariant(d->text(row, column));
    case Qt::ToolTipRole:
        return d->toolTip(row, column);
    case Qt::ForegroundRole:
        return staleForeground(!d->isConnected());
    case Qt::TextAlignmentRole:
        return int((titles[column].isNumber ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    case Qt::DecorationRole:
        if (column == Status)
            return iconOf(d->statusOf(row));
        if (column == WriteResult && row.writing == Writing::Done)
            return iconOf(row.writeStatus);
        return {};
    case ValueRole:
        return d->value(row, column);
    case EnumInfoRole:
        return column == Value ? row.cell.data(role) : QVariant();
    case ValueReadOnlyRole:
        return column == Value && !d->isWritable(row);
    case ValueRetryRole:
        return column == Value ? row.cell.data(role) : QVariant();
    case DataValueRole:
        return QVariant::fromValue(row.shown.value);
    case NodeIdRole:
        return QVariant::fromValue(row.id);
    default:
        return {};
    }
}

bool QvelDataViewModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return false;
    if (role == ValueRefusalRole && index.column() == Value)
        if (const QString text = d->refusal(*d->rows[size_t(index.row())]); !text.isEmpty())
            Q_EMIT inputRejected(text);
    if (role != Qt::EditRole && role != ValueRole)
        return false;
    if (index.column() == Value)
        return d->write(d->rows[size_t(index.row())], value, role);
    if (!parameterOf(index.column()))
        return false;
    const QString text = value.userType() == qMetaTypeId<UaVariant>()
                             ? value.value<UaVariant>().toString().toQString()
                             : value.toString();
    bool ok = false;
    const double number = text.toDouble(&ok);
    ok = ok && setParameter({index.row()}, Column(index.column()), number);
    if (!ok)
        Q_EMIT inputRejected(tr(titles[index.column()].refusal).arg(shownText(text)));
    return ok;
}

Qt::ItemFlags QvelDataViewModel::flags(const QModelIndex& index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled; // between the rows
    const Row& row = *d->rows[size_t(index.row())];
    Qt::ItemFlags flags =
        Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemNeverHasChildren;
    // An array opens to be looked at, too.
    flags.setFlag(Qt::ItemIsEditable, index.column() == Value
                                          ? d->isWritable(row) || row.cell.isArray()
                                          : parameterOf(index.column()) != nullptr);
    return flags;
}

QVariant QvelDataViewModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Vertical || section < 0 || section >= ColumnCount)
        return QAbstractTableModel::headerData(section, orientation, role);
    const ColumnTitle& column = titles[section];
    if (role == Qt::DisplayRole)
        return tr(column.title);
    if (role == Qt::ToolTipRole && column.toolTip)
        return tr(column.toolTip);
    return {};
}

QStringList QvelDataViewModel::mimeTypes() const
{
    const std::unique_ptr<QMimeData> data(qvelNodeMimeData({}));
    return data->formats();
}

QMimeData* QvelDataViewModel::mimeData(const QModelIndexList& indexes) const
{
    QList<int> rows;
    for (const QModelIndex& index : indexes)
        rows.append(index.row());
    return qvelNodeMimeData(nodeLinks(rows));
}

bool QvelDataViewModel::canDropMimeData(const QMimeData* data, Qt::DropAction /*action*/,
                                        int /*row*/, int /*column*/,
                                        const QModelIndex& /*parent*/) const
{
    return qvelHasNodeLinks(data);
}

bool QvelDataViewModel::dropMimeData(const QMimeData* data, Qt::DropAction action, int row,
                                     int /*column*/, const QModelIndex& parent)
{
    if (action == Qt::IgnoreAction)
        return true;
    const QList<QvelNodeLink> links = qvelNodeLinks(data);
    if (links.isEmpty())
        return false;
    const int before = row >= 0 ? row : parent.isValid() ? parent.row() : rowCount();
    return insertNodes(before, links) > 0;
}

Qt::DropActions QvelDataViewModel::supportedDropActions() const
{
    return Qt::CopyAction | Qt::MoveAction;
}

#include "attributesmodel.h"

#include "base/retranslate_p.h"
#include "base/showntext_p.h"
#include "base/words_p.h"
#include "nodes/nodetable_p.h"
#include "nodes/statustext_p.h"
#include "nodes/structures.h"
#include "nodes/valuecell_p.h"
#include "platform/stack/opcuastatuscodes.h"
#include "platform/stack/opcuatypetable_p.h"
#include "session/session.h"
#include "session/whendone_p.h"
#include "values/maskeditors.h"

#include <QtCore/QPointer>

#include <algorithm>
#include <iterator>
#include <vector>

namespace {

constexpr OpcUa_StatusCode badAttributeIdInvalid = 0x80350000u; // such a node does not have it

constexpr const char* rankNames[] = {"ScalarOrOneDimension", "Any",          "Scalar",
                                     "OneOrMoreDimensions",  "OneDimension", "TwoDimensions",
                                     "ThreeDimensions"};
constexpr const char* accessNames[] = {
    "CurrentRead",    "CurrentWrite",   "HistoryRead",        "HistoryWrite",
    "SemanticChange", "StatusWrite",    "TimestampWrite",     nullptr,
    "NonatomicRead",  "NonatomicWrite", "WriteFullArrayOnly", "NoSubDataTypes"};
constexpr const char* eventNames[] = {"SubscribeToEvents", nullptr, "HistoryRead", "HistoryWrite"};
constexpr const char* restrictionNames[] = {"SigningRequired", "EncryptionRequired",
                                            "SessionRequired", "ApplyRestrictionsToBrowse"};
constexpr const char* writeNames[] = {"AccessLevel",
                                      "ArrayDimensions",
                                      "BrowseName",
                                      "ContainsNoLoops",
                                      "DataType",
                                      "Description",
                                      "DisplayName",
                                      "EventNotifier",
                                      "Executable",
                                      "Historizing",
                                      "InverseName",
                                      "IsAbstract",
                                      "MinimumSamplingInterval",
                                      "NodeClass",
                                      "NodeId",
                                      "Symmetric",
                                      "UserAccessLevel",
                                      "UserExecutable",
                                      "UserWriteMask",
                                      "ValueRank",
                                      "WriteMask",
                                      "ValueForVariableType",
                                      "DataTypeDefinition",
                                      "RolePermissions",
                                      "AccessRestrictions",
                                      "AccessLevelEx"};

// The names of an attribute's numbers.
using Names = QvelEnumInfo();

template <const auto& names, int count = int(std::size(names))>
QvelEnumInfo bits()
{
    QvelEnumInfo info;
    info.kind = QvelEnumInfo::EnumerationFlags;
    for (int i = 0; i < count; ++i)
        if (names[i])
            info.values.insert(int(1u << i), QString::fromLatin1(names[i]));
    return info;
}
QvelEnumInfo ranks()
{
    QvelEnumInfo info;
    info.kind = QvelEnumInfo::Enumeration;
    for (int i = 0; i < int(std::size(rankNames)); ++i)
        info.values.insert(i - 3, QString::fromLatin1(rankNames[i]));
    return info;
}
QvelEnumInfo nodeClasses()
{
    QvelEnumInfo info;
    info.kind = QvelEnumInfo::Enumeration;
    for (OpcUa_UInt32 each = 1; !nodeClassName(each).isEmpty(); each *= 2)
        info.values.insert(int(each), nodeClassName(each));
    return info;
}
constexpr Names* accessLevels = bits<accessNames, 7>;

constexpr OpcUa_UInt32 noBit = 0;

// An attribute, its type, and the bit of UserWriteMask that allows to write it.
struct Attribute
{
    OpcUa_UInt32 id;
    OpcUa_BuiltInType type;
    OpcUa_Int32 rank;
    OpcUa_UInt32 writeBit;
    Names* names = nullptr;
};
using Mask = QvelAttributeWriteMask;
constexpr Attribute attributes[] = {
    {QvelAttribute::NodeId, OpcUaType_NodeId, -1, Mask::NodeId},
    {QvelAttribute::NodeClass, OpcUaType_Int32, -1, Mask::NodeClass, nodeClasses},
    {QvelAttribute::BrowseName, OpcUaType_QualifiedName, -1, Mask::BrowseName},
    {QvelAttribute::DisplayName, OpcUaType_LocalizedText, -1, Mask::DisplayName},
    {QvelAttribute::Description, OpcUaType_LocalizedText, -1, Mask::Description},
    {QvelAttribute::WriteMask, OpcUaType_UInt32, -1, Mask::WriteMask, bits<writeNames>},
    {QvelAttribute::UserWriteMask, OpcUaType_UInt32, -1, Mask::UserWriteMask, bits<writeNames>},
    {QvelAttribute::IsAbstract, OpcUaType_Boolean, -1, Mask::IsAbstract},
    {QvelAttribute::Symmetric, OpcUaType_Boolean, -1, Mask::Symmetric},
    {QvelAttribute::InverseName, OpcUaType_LocalizedText, -1, Mask::InverseName},
    {QvelAttribute::ContainsNoLoops, OpcUaType_Boolean, -1, Mask::ContainsNoLoops},
    {QvelAttribute::EventNotifier, OpcUaType_Byte, -1, Mask::EventNotifier, bits<eventNames>},
    {QvelAttribute::Value, OpcUaType_Null, -2, Mask::ValueForVariableType},
    {QvelAttribute::DataType, OpcUaType_NodeId, -1, Mask::DataType},
    {QvelAttribute::ValueRank, OpcUaType_Int32, -1, Mask::ValueRank, ranks},
    {QvelAttribute::ArrayDimensions, OpcUaType_UInt32, 1, Mask::ArrayDimensions},
    {QvelAttribute::AccessLevel, OpcUaType_Byte, -1, Mask::AccessLevel, accessLevels},
    {QvelAttribute::UserAccessLevel, OpcUaType_Byte, -1, Mask::UserAccessLevel, accessLevels},
    {QvelAttribute::MinimumSamplingInterval, OpcUaType_Double, -1, Mask::MinimumSamplingInterval},
    {QvelAttribute::Historizing, OpcUaType_Boolean, -1, Mask::Historizing},
    {QvelAttribute::Executable, OpcUaType_Boolean, -1, Mask::Executable},
    {QvelAttribute::UserExecutable, OpcUaType_Boolean, -1, Mask::UserExecutable},
    {QvelAttribute::DataTypeDefinition, OpcUaType_ExtensionObject, -1, 0x400000},
    {QvelAttribute::RolePermissions, OpcUaType_ExtensionObject, 1, 0x800000},
    {QvelAttribute::UserRolePermissions, OpcUaType_ExtensionObject, 1, noBit},
    {QvelAttribute::AccessRestrictions, OpcUaType_UInt16, -1, 0x1000000, bits<restrictionNames>},
    {QvelAttribute::AccessLevelEx, OpcUaType_UInt32, -1, 0x2000000, bits<accessNames>},
};

ValueType typeOf(const Attribute& attribute)
{
    ValueType type;
    type.builtInType = type.emptyType = attribute.type;
    if (const OpcUaTypeInfo* info = opcUaTypeInfo(OpcUa_Byte(attribute.type)))
        type.name = QString::fromLatin1(info->name);
    type.valueRank = attribute.rank;
    if (attribute.names)
        type.enumInfo = attribute.names();
    return type;
}

// The rows that belong to Value, after its own.
enum Detail { Itself, SourceTimestamp, ServerTimestamp, EngineeringUnits, EURange };
constexpr const char* detailNames[] = {"", "SourceTimestamp", "ServerTimestamp", "EngineeringUnits",
                                       "EURange"};

// Rows are in the order of this number.
constexpr int place(OpcUa_UInt32 attributeId, Detail detail = Itself)
{
    constexpr int details = 10;
    return int(attributeId) * details + detail;
}

UaVariant textVariant(const QString& text)
{
    return UaVariant(UaString(text));
}

QString unitsText(const UaVariant& value)
{
    const auto units = QvelEngineeringUnits::fromVariant(value);
    if (!units)
        return shownValue(value);
    const QString name = units->displayName.text().toQString();
    const QString description = units->description.text().toQString();
    return description.isEmpty() || description == name
               ? name
               : QStringLiteral("%1 (%2)").arg(name, description);
}

QString rangeText(const UaVariant& value)
{
    const auto range = QvelRange::fromVariant(value);
    return range ? QvelAttributesModel::tr("%1 to %2")
                       .arg(shownValue(UaVariant(range->low)), shownValue(UaVariant(range->high)))
                 : shownValue(value);
}

// The names of a definition's fields, as far as a line takes them.
QString definitionText(const UaVariant& value)
{
    QStringList names;
    if (const auto structure = QvelStructureDefinition::fromVariant(value)) {
        for (const QvelStructureField& field : structure->fields.mid(0, maxShownCharacters))
            names.append(field.name.toQString());
    } else if (const auto members = QvelEnumDefinition::fromVariant(value)) {
        for (const QvelEnumField& field : members->fields.mid(0, maxShownCharacters))
            names.append(QStringLiteral("%1 (%2)").arg(
                QString::number(qlonglong(field.value)),
                (field.displayName.text().isEmpty() ? field.name : field.displayName.text())
                    .toQString()));
    }
    return shownText(names.join(QStringLiteral(", ")));
}

} // namespace

class QvelAttributesModel::Private
{
public:
    struct Row
    {
        int place = 0;
        OpcUa_UInt32 attributeId = 0; // 0 for a detail of Value
        QString name;
        ValueCell cell;
        QString text; // shown instead of the cell's, where it is not null
        UaStatusCode status;
        Words result;
        int writes = 0; // of which only the last one counts
    };

    explicit Private(QvelAttributesModel* model) : q(model) {}

    bool isConnected() const { return session && session->state() == QvelSession::Connected; }
    const Row* find(int place) const;
    Row& row(int place);
    void remove(int place);
    void changed(const Row& row);
    void allChanged();
    UaVariant valueOf(OpcUa_UInt32 attributeId) const;
    bool mayWrite(const Row& row) const;
    bool mayEdit(const Row& row) const
    {
        return isConnected() && mayWrite(row) && row.cell.isEditable();
    }
    // Why the value is not edited; empty where it is.
    QString refusal(const Row& row) const
    {
        if (!isConnected() || row.attributeId == 0 || mayEdit(row))
            return {};
        return refusalText(mayWrite(row), row.attributeId == QvelAttribute::Value
                                              ? QvelAttribute::UserAccessLevel
                                              : QvelAttribute::UserWriteMask);
    }
    QString otherType(const Row& row) const;

    void clear();
    void unsubscribe();
    void load();
    void fail(UaStatusCode status);
    void takeAttributes(const QvelReadResult& result);
    void takeAttribute(const Attribute& attribute, const UaDataValue& value);
    void takeValue(const UaDataValue& value);
    void setDetail(Detail detail, const QString& text);
    void takeProperties(const ValueProperties& properties);
    void applyType();
    void followValue();
    void write(Row& row, const UaVariant& value);
    void reread(OpcUa_UInt32 attributeId);

    QvelAttributesModel* const q;
    QPointer<QvelSession> session;
    UaExpandedNodeId node;
    UaNodeId nodeId; // on the server that is connected
    std::vector<Row> rows;
    DataTypeInfo dataType;
    UaVariant euRange;
    QvelEnumInfo ownNames; // of the variable, which count before those of its DataType
    QPointer<QvelSubscription> subscription;
    bool isLive = false;
    quint64 question = 0; // answers to an earlier one are dropped
    quint64 subject = 0;  // counts nodes and sessions
    quint64 told = 0;     // that of which the attributes have come
};

const QvelAttributesModel::Private::Row* QvelAttributesModel::Private::find(int place) const
{
    const auto found = std::lower_bound(rows.begin(), rows.end(), place,
                                        [](const Row& row, int p) { return row.place < p; });
    return found != rows.end() && found->place == place ? &*found : nullptr;
}

// The row of a place, which is made where there is none. Valid until the next one is made.
QvelAttributesModel::Private::Row& QvelAttributesModel::Private::row(int place)
{
    if (const Row* known = find(place))
        return rows[std::size_t(known - rows.data())];
    const auto next = std::lower_bound(rows.begin(), rows.end(), place,
                                       [](const Row& row, int p) { return row.place < p; });
    Row fresh;
    fresh.place = place;
    for (const Attribute& attribute : attributes) {
        if (::place(attribute.id) == place) {
            fresh.attributeId = attribute.id;
            fresh.name = QString::fromLatin1(QvelAttribute::name(attribute.id));
            fresh.cell.setType(typeOf(attribute));
        }
    }
    if (fresh.attributeId == 0)
        fresh.name = QString::fromLatin1(detailNames[place - ::place(QvelAttribute::Value)]);
    const int at = int(next - rows.begin());
    q->beginInsertRows({}, at, at);
    const auto made = rows.insert(next, fresh);
    q->endInsertRows();
    return *made;
}

void QvelAttributesModel::Private::remove(int place)
{
    const Row* known = find(place);
    if (!known)
        return;
    const auto at = known - rows.data();
    q->beginRemoveRows({}, int(at), int(at));
    rows.erase(rows.begin() + at);
    q->endRemoveRows();
}

void QvelAttributesModel::Private::changed(const Row& row)
{
    const int at = int(&row - rows.data());
    Q_EMIT q->dataChanged(q->index(at, 0), q->index(at, ColumnCount - 1));
}

void QvelAttributesModel::Private::allChanged()
{
    if (!rows.empty())
        Q_EMIT q->dataChanged(q->index(0, 0), q->index(int(rows.size()) - 1, ColumnCount - 1));
}

UaVariant QvelAttributesModel::Private::valueOf(OpcUa_UInt32 attributeId) const
{
    const Row* row = find(place(attributeId));
    return row ? row->cell.value() : UaVariant();
}

// As it was when there was a connection last, of this session.
bool QvelAttributesModel::Private::mayWrite(const Row& row) const
{
    constexpr OpcUa_Int32 variableType = 16;
    if (told != subject)
        return false;
    if (row.attributeId == QvelAttribute::Value &&
        valueOf(QvelAttribute::NodeClass).toInt32() != variableType)
        return valueOf(QvelAttribute::UserAccessLevel).toByte() & QvelAccessLevelMask::CurrentWrite;
    const OpcUa_UInt32 mask = valueOf(QvelAttribute::UserWriteMask).toUInt32();
    return std::any_of(std::begin(attributes), std::end(attributes), [&](const Attribute& a) {
        return a.id == row.attributeId && (a.writeBit & mask) != 0;
    });
}

// A sentence about a value of another type than is declared; empty for all others.
QString QvelAttributesModel::Private::otherType(const Row& row) const
{
    const QString other = row.cell.otherType(), declared = row.cell.type().text();
    if (other.isEmpty() || row.status.isBad())
        return {};
    const QString text = tr("The value is %1, but %2 is declared.").arg(other, declared);
    return mayEdit(row) ? text + u' ' + tr("An edit sends %1.").arg(declared) : text;
}

void QvelAttributesModel::Private::unsubscribe()
{
    if (!subscription)
        return;
    subscription->disconnect(q);
    subscription->deleteLater(); // it may be telling of a change just now
    subscription = nullptr;
}

void QvelAttributesModel::Private::clear()
{
    ++subject;
    ++question;
    unsubscribe();
    dataType = {};
    ownNames = {};
}

void QvelAttributesModel::Private::load()
{
    const quint64 number = ++question;
    if (!isConnected() || node == UaExpandedNodeId())
        return;
    nodeId = session->toNodeId(node);
    if (nodeId.isNull()) {
        fail(OpcUa_BadNodeIdUnknown); // its namespace is not there
        return;
    }
    QList<QvelReadItem> items;
    for (const Attribute& attribute : attributes)
        if (attribute.id != QvelAttribute::Value)
            items.append({nodeId, attribute.id, {}, {}});
    whenDone(session->read(items), q, [this, number](const QvelReadResult& result) {
        if (number == question)
            takeAttributes(result);
    });
}

// The node, or the server, does not answer: what is there stays, as what it was.
void QvelAttributesModel::Private::fail(UaStatusCode status)
{
    if (rows.empty()) {
        Row& only = row(place(QvelAttribute::NodeId));
        only.cell.setValue(UaVariant(node));
    }
    for (Row& each : rows)
        each.status = status;
    allChanged();
}

void QvelAttributesModel::Private::takeAttributes(const QvelReadResult& result)
{
    const UaStatusCode status =
        result.status.isBad() ? result.status : result.values.value(0).status();
    if (status.isBad()) {
        fail(status);
        return;
    }
    told = subject;
    qsizetype next = 0;
    for (const Attribute& attribute : attributes)
        if (attribute.id != QvelAttribute::Value)
            takeAttribute(attribute, result.values.value(next++));
    const quint64 number = question;
    const Row* type = find(place(QvelAttribute::DataType));
    if (!type) {
        for (Detail detail : {Itself, SourceTimestamp, ServerTimestamp, EngineeringUnits, EURange})
            remove(place(QvelAttribute::Value, detail));
        return;
    }
    // A large value comes by itself, and does not keep the rest waiting.
    reread(QvelAttribute::Value);
    DataTypes* types = DataTypes::of(session);
    whenDone(types->find(type->cell.value().toNodeId()), q,
             [this, number](const DataTypeInfo& info) {
                 if (number != question)
                     return;
                 dataType = info;
                 applyType();
             });
    types->forgetProperties(nodeId); // what is looked at is what there is now
    whenDone(types->readProperties({nodeId}), q,
             [this, number](const QList<ValueProperties>& found) {
                 if (number == question)
                     takeProperties(found.first());
             });
    followValue();
}

void QvelAttributesModel::Private::takeAttribute(const Attribute& attribute,
                                                 const UaDataValue& value)
{
    if (value.status() == UaStatusCode(badAttributeIdInvalid)) {
        remove(place(attribute.id));
        return;
    }
    Row& taken = row(place(attribute.id));
    taken.status = value.status();
    if (taken.status.isBad() && value.value().isEmpty() && !taken.cell.value().isEmpty()) {
        changed(taken); // what it was stays
        return;
    }
    taken.cell.setValue(value.value());
    if (attribute.id == QvelAttribute::DataTypeDefinition)
        taken.text = definitionText(value.value());
    changed(taken);
}

void QvelAttributesModel::Private::takeValue(const UaDataValue& value)
{
    if (value.status() == UaStatusCode(badAttributeIdInvalid))
        return;
    const bool isNew = !find(place(QvelAttribute::Value));
    Row& taken = row(place(QvelAttribute::Value));
    taken.status = value.status();
    taken.cell.setValue(value.value());
    changed(taken);
    if (isNew)
        applyType();
    const auto text = [](UaDateTime time) {
        return time.isNull() ? QString() : time.toString().toQString();
    };
    setDetail(SourceTimestamp, text(value.sourceTimestamp()));
    setDetail(ServerTimestamp, text(value.serverTimestamp()));
}

void QvelAttributesModel::Private::setDetail(Detail detail, const QString& text)
{
    Row& taken = row(place(QvelAttribute::Value, detail));
    taken.cell.setValue(textVariant(text));
    changed(taken);
}

void QvelAttributesModel::Private::takeProperties(const ValueProperties& properties)
{
    const auto set = [this, &properties](Detail detail, auto textOf) {
        const auto found = properties.constFind(detailNames[detail]);
        if (found == properties.cend())
            remove(place(QvelAttribute::Value, detail));
        else
            setDetail(detail, textOf(found->value()));
    };
    set(EngineeringUnits, unitsText);
    euRange = properties.value(detailNames[EURange]).value();
    set(EURange, rangeText);
    ownNames = namesOf(properties);
    applyType();
}

// How Value is shown and edited, once that is known.
void QvelAttributesModel::Private::applyType()
{
    if (dataType.name.isEmpty() || !find(place(QvelAttribute::Value)))
        return;
    const UaVariant rank = valueOf(QvelAttribute::ValueRank);
    const UaVariant dimensions = valueOf(QvelAttribute::ArrayDimensions);
    ValueType type(dataType,
                   rank.type() == OpcUaType_Int32 ? rank.toInt32() : ValueType().valueRank,
                   dimensions.toUInt32Array());
    if (ownNames.kind != QvelEnumInfo::NoEnumeration)
        type.enumInfo = ownNames;
    Row& value = row(place(QvelAttribute::Value));
    value.cell.setType(type);
    changed(value);
    Row& named = row(place(QvelAttribute::DataType));
    const QString id = shownValue(named.cell.value());
    named.text = dataType.name == id ? id : QStringLiteral("%1 (%2)").arg(dataType.name, id);
    changed(named);
}

// A subscription of one item exists as long as somebody looks and there is a connection, or one
// that comes back.
void QvelAttributesModel::Private::followValue()
{
    const bool isThere = isConnected() && find(place(QvelAttribute::DataType));
    const bool isLost = !session || session->state() == QvelSession::Disconnected;
    if (!isLive || isLost)
        unsubscribe();
    if (subscription || !isLive || !isThere)
        return;
    constexpr double interval = 250; // ms
    QvelSubscriptionParameters parameters;
    parameters.publishingInterval = interval;
    subscription = session->createSubscription(parameters);
    QObject::connect(
        subscription, &QvelSubscription::dataChanged, q,
        [this](const QList<QvelDataChange>& changes) { takeValue(changes.last().value); });
    QObject::connect(subscription, &QvelSubscription::itemsChanged, q,
                     [this](const QList<QvelItemState>& items) {
                         const Row* value = find(place(QvelAttribute::Value));
                         if (!value || !items.last().status.isBad())
                             return;
                         row(value->place).status = items.last().status;
                         changed(*value);
                     });
    QvelMonitoredItem item;
    item.nodeId = nodeId;
    subscription->addItems({item});
}

void QvelAttributesModel::Private::write(Row& row, const UaVariant& value)
{
    row.result = [] { return tr("Writing ..."); };
    changed(row);
    const auto finished = [this, at = row.place, turn = ++row.writes,
                           number = subject](const QvelWriteResult& result) {
        const Row* known = find(at);
        if (number != subject || !known || known->writes != turn)
            return;
        Row& written = this->row(at);
        const UaStatusCode status = result.results.value(0, result.status);
        written.result = [status] {
            return status == UaStatusCode() ? tr("Good: The server has taken the value.")
                                            : statusInWords(status);
        };
        if (!status.isBad())
            written.cell.clearAttempt();
        changed(written);
        if (!status.isBad())
            reread(written.attributeId);
    };
    if (!isConnected()) {
        QvelWriteResult result;
        result.status = OpcUa_BadSessionClosed;
        finished(result);
        return;
    }
    whenDone(session->write({{nodeId, UaDataValue(value), row.attributeId, {}}}), q, finished);
}

void QvelAttributesModel::Private::reread(OpcUa_UInt32 attributeId)
{
    if (!isConnected())
        return;
    whenDone(session->read({{nodeId, attributeId, {}, {}}}), q,
             [this, attributeId, number = question](const QvelReadResult& result) {
                 if (number != question)
                     return;
                 const UaDataValue value = result.values.value(0, UaDataValue({}, result.status));
                 if (attributeId == QvelAttribute::Value) {
                     const Row* known = find(place(QvelAttribute::Value));
                     if (known && result.status.isBad()) { // nobody has answered
                         row(known->place).status = result.status;
                         changed(*known);
                     } else {
                         takeValue(value);
                     }
                     return;
                 }
                 for (const Attribute& attribute : attributes)
                     if (attribute.id == attributeId)
                         takeAttribute(attribute, value);
                 applyType();
             });
}

QvelAttributesModel::QvelAttributesModel(QObject* parent)
    : QAbstractTableModel(parent), d(new Private(this))
{
    whenLanguageChanges(this, [this] {
        if (d->find(place(QvelAttribute::Value, EURange)))
            d->setDetail(EURange, rangeText(d->euRange));
        d->allChanged();
        Q_EMIT headerDataChanged(Qt::Horizontal, 0, ColumnCount - 1);
    });
}

QvelAttributesModel::~QvelAttributesModel()
{
    d->clear();
}

void QvelAttributesModel::setSession(QvelSession* session)
{
    if (session == d->session)
        return;
    if (d->session)
        d->session->disconnect(this);
    d->clear();
    d->session = session;
    if (session) {
        beginResetModel(); // which closes the editors
        for (Private::Row& row : d->rows)
            row.result = {};
        endResetModel();
        const auto look = [this] {
            d->load();
            d->followValue();
            d->allChanged();
        };
        connect(session, &QvelSession::stateChanged, this, look);
        connect(session, &QObject::destroyed, this, look);
    }
    d->load();
    d->allChanged();
}

QvelSession* QvelAttributesModel::session() const
{
    return d->session;
}

void QvelAttributesModel::setNode(const UaExpandedNodeId& node)
{
    if (node != d->node) {
        beginResetModel();
        d->clear();
        d->rows.clear();
        d->node = node;
        endResetModel();
    }
    d->load();
}

UaExpandedNodeId QvelAttributesModel::node() const
{
    return d->node;
}

void QvelAttributesModel::setLive(bool live)
{
    d->isLive = live;
    d->followValue();
}

bool QvelAttributesModel::isLive() const
{
    return d->isLive;
}

void QvelAttributesModel::refresh()
{
    d->load();
}

int QvelAttributesModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(d->rows.size());
}

int QvelAttributesModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(ColumnCount);
}

QVariant QvelAttributesModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    const Private::Row& row = d->rows[std::size_t(index.row())];
    if (role == AttributeIdRole)
        return row.attributeId;
    if (role == Qt::ForegroundRole)
        return staleForeground(!d->isConnected());
    if (role == CopyRole)
        return copiedValue(row.cell.value());
    QString text;
    switch (index.column()) {
    case AttributeColumn:
        text = row.name;
        break;
    case StatusColumn:
        if (row.attributeId == 0)
            break;
        text = row.status.toString().toQString();
        if (!d->otherType(row).isEmpty())
            text = tr("%1, but %2").arg(text, row.cell.otherType());
        if (role == Qt::ToolTipRole)
            text = statusInWords(row.status);
        break;
    case ResultColumn:
        text = said(row.result);
        break;
    default: {
        const bool isReadOnly = !d->mayEdit(row);
        if (role == ValueReadOnlyRole)
            return isReadOnly;
        if (role == ElementValueRole && isReadOnly)
            return QVariant::fromValue(row.cell.value());
        if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
            return row.cell.data(role);
        text = row.text.isEmpty() ? row.cell.data(Qt::DisplayRole).toString() : row.text;
    }
    }
    if (role == Qt::DisplayRole)
        return text;
    if (role != Qt::ToolTipRole || text.isEmpty())
        return QVariant();
    if (const QString other = d->otherType(row); !other.isEmpty())
        text += QLatin1Char('\n') + other;
    if (index.column() == ValueColumn && row.attributeId == QvelAttribute::Value)
        if (const QString refusal = d->refusal(row); !refusal.isEmpty())
            text += QLatin1Char('\n') + refusal;
    if (!d->isConnected())
        text += QLatin1Char('\n') + staleSentence();
    return plainToolTip(text);
}

bool QvelAttributesModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || index.column() != ValueColumn ||
        (role != Qt::EditRole && role != ElementValueRole && role != ValueRefusalRole))
        return false;
    Private::Row& row = d->rows[std::size_t(index.row())];
    if (role == ValueRefusalRole) {
        if (const QString text = d->refusal(row); !text.isEmpty()) { // else the last result stays
            row.result = [text] { return text; };
            d->changed(row);
        }
        return false;
    }
    // A connection that was lost while an editor was open is told in the row.
    if (row.attributeId == 0 || !d->mayWrite(row) || !row.cell.isEditable())
        return false;
    UaVariant sent;
    const UaStatusCode status = row.cell.take(value, role, &sent);
    if (status.isBad()) {
        row.result = [status] { return tr("Not sent. %1").arg(statusInWords(status)); };
        d->changed(row);
        return false;
    }
    d->write(row, sent);
    return true;
}

QVariant QvelAttributesModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 ||
        section >= ColumnCount)
        return QAbstractTableModel::headerData(section, orientation, role);
    const QString titles[] = {tr("Attribute"), tr("Value"), tr("Status"), tr("Last Write")};
    return titles[section];
}

Qt::ItemFlags QvelAttributesModel::flags(const QModelIndex& index) const
{
    Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    if (!index.isValid() || index.column() != ValueColumn)
        return flags;
    const Private::Row& row = d->rows[std::size_t(index.row())];
    // An array opens in its dialog also to be looked at.
    flags.setFlag(Qt::ItemIsEditable,
                  row.attributeId != 0 && (d->mayEdit(row) || row.cell.isArray()));
    return flags;
}

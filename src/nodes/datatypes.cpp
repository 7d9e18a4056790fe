#include "datatypes_p.h"

#include "base/showntext_p.h"
#include "nodes/structures.h"
#include "platform/stack/opcuastatuscodes.h"
#include "platform/stack/opcuatypetable_p.h"
#include "session/session.h"
#include "session/whendone_p.h"

#include <QtCore/QPromise>

#include <algorithm>
#include <vector>

namespace {

constexpr OpcUa_UInt32 hasSubtype = 45;
constexpr OpcUa_UInt32 hasProperty = 46;
// The DataTypes of namespace 0 that are built in or stand above them (OPC 10000-6, 5.1.2).
constexpr OpcUa_UInt32 baseDataType = 24;
constexpr OpcUa_UInt32 number = 26;
constexpr OpcUa_UInt32 integer = 27;
constexpr OpcUa_UInt32 uInteger = 28;
constexpr OpcUa_UInt32 enumeration = 29;

constexpr const char* propertyNames[] = {"EngineeringUnits", "EURange",     "FalseState",
                                         "TrueState",        "EnumStrings", "EnumValues",
                                         "OptionSetValues"};
constexpr int mostPlaces = 20'000;

struct AbstractType
{
    OpcUa_UInt32 id;
    const char* name;
    OpcUa_BuiltInType builtInType;
    OpcUa_BuiltInType emptyType;
};
constexpr AbstractType abstractTypes[] = {
    {baseDataType, "BaseDataType", OpcUaType_Null, OpcUaType_Null},
    {number, "Number", OpcUaType_Null, OpcUaType_Double},
    {integer, "Integer", OpcUaType_Null, OpcUaType_Int64},
    {uInteger, "UInteger", OpcUaType_Null, OpcUaType_UInt64},
    {enumeration, "Enumeration", OpcUaType_Int32, OpcUaType_Int32},
};

// The number of a type that need not be asked for, else 0.
OpcUa_UInt32 standardId(const UaNodeId& dataType)
{
    for (OpcUa_UInt32 id = 1; id <= enumeration; ++id)
        if (dataType == UaNodeId(id))
            return id;
    return 0;
}

DataTypeInfo standardType(OpcUa_UInt32 id)
{
    for (const AbstractType& type : abstractTypes)
        if (type.id == id)
            return {QString::fromLatin1(type.name), type.builtInType, type.emptyType, {}, {}};
    const OpcUaTypeInfo* type = opcUaTypeInfo(OpcUa_Byte(id));
    const OpcUa_BuiltInType builtIn = type ? type->type : OpcUaType_Null;
    // The one structure that all others are made of has another name as a DataType.
    QString name = id == OpcUaType_ExtensionObject ? QStringLiteral("Structure")
                   : type                          ? QString::fromLatin1(type->name)
                                                   : QString();
    return {name, builtIn, builtIn, {}, {}};
}

QByteArray keyOf(const UaNodeId& node)
{
    return node.toFullString().bytes();
}

bool isUnsigned(OpcUa_BuiltInType type)
{
    return type == OpcUaType_Byte || type == OpcUaType_UInt16 || type == OpcUaType_UInt32 ||
           type == OpcUaType_UInt64;
}

} // namespace

QvelEnumInfo namesOf(const UaVariant& value, QvelEnumInfo::Kind kind)
{
    constexpr qsizetype most = 10'000;
    QvelEnumInfo info;
    const auto add = [&info, kind](OpcUa_Int64 place, const UaString& name) {
        const bool isFlag = kind == QvelEnumInfo::EnumerationFlags;
        if (isFlag ? place >= 0 && place < 32 : place == OpcUa_Int64(int(place)))
            info.values.insert(isFlag ? int(1u << place) : int(place), shownText(name.toQString()));
    };
    if (value.arraySize() > most)
        return info;
    const QList<UaLocalizedText> strings = value.toLocalizedTextArray();
    for (qsizetype i = 0; i < strings.size(); ++i)
        if (!strings[i].text().isEmpty()) // a bit that is not used
            add(i, strings[i].text());
    const QList<QvelEnumValue> members =
        QvelEnumValue::listFromVariant(value).value_or(QList<QvelEnumValue>());
    for (const QvelEnumValue& member : members)
        add(member.value, member.displayName.text());
    const QvelEnumDefinition definition =
        QvelEnumDefinition::fromVariant(value).value_or(QvelEnumDefinition());
    if (definition.fields.size() > most)
        return info;
    for (const QvelEnumField& field : definition.fields)
        add(field.value,
            field.displayName.text().isEmpty() ? field.name : field.displayName.text());
    if (!info.values.isEmpty())
        info.kind = kind;
    return info;
}

QvelEnumInfo namesOf(const ValueProperties& properties, QvelEnumInfo::Kind kind)
{
    QvelEnumInfo info;
    for (const char* name : {"EnumStrings", "EnumValues", "OptionSetValues"}) {
        const bool isOfBits = qstrcmp(name, "OptionSetValues") == 0;
        if (info.values.isEmpty() && (!isOfBits || kind == QvelEnumInfo::EnumerationFlags))
            info = namesOf(properties.value(name).value(), kind);
    }
    return info;
}

struct DataTypes::Search
{
    UaNodeId dataType;
    UaNodeId ancestor; // as far as it is known
    DataTypeInfo info;
    UaVariant definition;
    ValueProperties properties; // where there is no definition
    int depth = 0;
    int underWay = 1; // answers that are still to come
    quint32 connection = 0;
    std::vector<QPromise<DataTypeInfo>> waiting;
};

// The nodes of all that has been asked for at a time.
struct DataTypes::Batch
{
    struct Question
    {
        qsizetype count;
        QPromise<QList<ValueProperties>> promise;
    };
    std::vector<Question> questions;
    QList<UaNodeId> nodes;
    QList<Places> places; // of each node
};

DataTypes::DataTypes(QvelSession* session)
    : QObject(session), m_session(session), m_places(mostPlaces)
{
    connect(session, &QvelSession::stateChanged, this, [this] {
        ++m_connection; // it may be another server, or another user
        m_known.clear();
        m_places.clear();
    });
}

DataTypes* DataTypes::of(QvelSession* session)
{
    auto* types = session->findChild<DataTypes*>(QString(), Qt::FindDirectChildrenOnly);
    return types ? types : new DataTypes(session);
}

QFuture<DataTypeInfo> DataTypes::find(const UaNodeId& dataType)
{
    QPromise<DataTypeInfo> promise;
    promise.start();
    QFuture<DataTypeInfo> future = promise.future();
    const QByteArray key = keyOf(dataType);
    const auto known = m_known.constFind(key);
    const OpcUa_UInt32 id = standardId(dataType);
    if (id != 0 || dataType.isNull() || known != m_known.cend()) {
        promise.addResult(id != 0                   ? standardType(id)
                          : known != m_known.cend() ? *known
                                                    : DataTypeInfo());
        promise.finish();
        return future;
    }
    SearchPtr& search = m_searches[key];
    const bool isNew = !search;
    if (isNew)
        search = std::make_shared<Search>();
    search->waiting.push_back(std::move(promise));
    if (isNew) {
        search->dataType = search->ancestor = dataType;
        search->connection = m_connection;
        search->info.name = shownText(dataType.toFullString().toQString());
        readType(SearchPtr(search));
    }
    return future;
}

void DataTypes::readType(const SearchPtr& search)
{
    whenDone(m_session->read({{search->dataType, QvelAttribute::BrowseName, {}, {}},
                              {search->dataType, QvelAttribute::DataTypeDefinition, {}, {}}}),
             this, [this, search](const QvelReadResult& result) {
                 const UaDataValue name = result.values.value(0, UaDataValue({}, result.status));
                 search->info.status = name.status();
                 if (name.status().isBad()) {
                     finish(search);
                     return;
                 }
                 search->info.name = shownText(name.value().toQualifiedName().name().toQString());
                 search->definition = result.values.value(1).value();
                 climb(search);
                 if (!search->definition.isEmpty())
                     return;
                 ++search->underWay;
                 whenDone(readProperties({search->dataType}), this,
                          [this, search](const QList<ValueProperties>& found) {
                              search->properties = found.first();
                              finish(search);
                          });
             });
}

// One type up.
void DataTypes::climb(const SearchPtr& search)
{
    QvelBrowseItem up;
    up.nodeId = search->ancestor;
    up.direction = QvelBrowseDirection::Inverse;
    up.referenceTypeId = UaNodeId(hasSubtype);
    whenDone(m_session->browse({up}), this, [this, search](const QvelBrowseResult& result) {
        constexpr int deepest = 100;
        const QList<QvelReference> supertypes = result.results.value(0).references;
        if (supertypes.isEmpty()) {
            search->info.status = result.status.isBad() ? result.status : OpcUa_BadTypeMismatch;
            finish(search);
            return;
        }
        search->ancestor = m_session->toNodeId(supertypes.first().nodeId);
        const OpcUa_UInt32 id = standardId(search->ancestor);
        if (id == 0 && ++search->depth < deepest) {
            climb(search);
            return;
        }
        const DataTypeInfo type = standardType(id);
        search->info.builtInType = type.builtInType;
        search->info.emptyType = type.emptyType;
        finish(search);
    });
}

void DataTypes::finish(const SearchPtr& search)
{
    if (--search->underWay > 0)
        return;
    const QByteArray key = keyOf(search->dataType);
    DataTypeInfo& info = search->info;
    const auto kind =
        isUnsigned(info.builtInType) ? QvelEnumInfo::EnumerationFlags : QvelEnumInfo::Enumeration;
    info.enumInfo = search->definition.isEmpty() ? namesOf(search->properties, kind)
                                                 : namesOf(search->definition, kind);
    m_searches.remove(key);
    if (info.status.isGood() && search->connection == m_connection)
        m_known.insert(key, info);
    for (QPromise<DataTypeInfo>& promise : search->waiting) {
        promise.addResult(info);
        promise.finish();
    }
}

QFuture<QList<ValueProperties>> DataTypes::readProperties(const QList<UaNodeId>& nodes)
{
    if (!m_next) {
        m_next = std::make_shared<Batch>();
        QMetaObject::invokeMethod(this, &DataTypes::browseProperties, Qt::QueuedConnection);
    }
    m_next->nodes += nodes;
    m_next->questions.push_back({nodes.size(), {}});
    m_next->questions.back().promise.start();
    return m_next->questions.back().promise.future();
}

void DataTypes::forgetProperties(const UaNodeId& node)
{
    m_places.remove(keyOf(node));
}

void DataTypes::browseProperties()
{
    const BatchPtr batch = std::exchange(m_next, {});
    batch->places.resize(batch->nodes.size());
    QList<QvelBrowseItem> items;
    QList<qsizetype> asked;
    for (qsizetype i = 0; i < batch->nodes.size(); ++i) {
        if (const Places* known = m_places.object(keyOf(batch->nodes[i]))) {
            batch->places[i] = *known;
            continue;
        }
        QvelBrowseItem item;
        item.nodeId = batch->nodes[i];
        item.referenceTypeId = UaNodeId(hasProperty);
        items.append(item);
        asked.append(i);
    }
    const auto take = [=, connection = m_connection](const QvelBrowseResult& result) {
        for (qsizetype i = 0; i < std::min(asked.size(), result.results.size()); ++i) {
            Places& places = batch->places[asked[i]];
            for (const QvelReference& reference : result.results[i].references)
                for (const char* name : propertyNames)
                    if (reference.browseName == UaQualifiedName(UaString(name), 0))
                        places.insert(name, m_session->toNodeId(reference.nodeId));
            if (connection == m_connection && result.results[i].status.isGood())
                m_places.insert(keyOf(batch->nodes[asked[i]]), new Places(places));
        }
        readValues(batch);
    };
    items.isEmpty() ? readValues(batch) : whenDone(m_session->browse(items), this, take);
}

void DataTypes::readValues(const BatchPtr& batch)
{
    QList<QvelReadItem> items;
    for (const Places& places : std::as_const(batch->places))
        for (const UaNodeId& property : places)
            items.append({property, QvelAttribute::Value, {}, {}});
    const auto answer = [batch](const QvelReadResult& result) {
        auto places = batch->places.cbegin();
        qsizetype next = 0;
        for (Batch::Question& question : batch->questions) {
            QList<ValueProperties> found(question.count);
            for (ValueProperties& properties : found) {
                for (auto name = places->keyBegin(); name != places->keyEnd(); ++name, ++next)
                    if (next < result.values.size())
                        properties.insert(*name, result.values[next]);
                ++places;
            }
            question.promise.addResult(found);
            question.promise.finish();
        }
    };
    items.isEmpty() ? answer({}) : whenDone(m_session->read(items), this, answer);
}

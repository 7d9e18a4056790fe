#include "datatypes_p.h"

#include "base/showntext_p.h"
#include "nodes/structures.h"
#include "platform/stack/opcuastatuscodes.h"
#include "platform/stack/opcuatypetable_p.h"
#include "session/session.h"
#include "session/whendone_p.h"

#include <QtCore/QPromise>

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

struct DataTypes::Search
{
    UaNodeId dataType;
    UaNodeId ancestor; // as far as it is known
    DataTypeInfo info;
    UaVariant names;
    int depth = 0;
    bool isComplete = false; // but for the names
    std::vector<QPromise<DataTypeInfo>> waiting;
};

DataTypes::DataTypes(QvelSession* session) : QObject(session), m_session(session)
{
    connect(session, &QvelSession::stateChanged, this, [this](QvelSession::State state) {
        if (state == QvelSession::Connected)
            m_known.clear(); // it may be another server
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
    const QByteArray key = dataType.toFullString().bytes();
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
                 search->names = result.values.value(1).value();
                 climb(search);
             });
}

// One type up; and for the type itself its properties, one of which may hold names.
void DataTypes::climb(const SearchPtr& search)
{
    QvelBrowseItem up;
    up.nodeId = search->ancestor;
    up.direction = QvelBrowseDirection::Inverse;
    up.referenceTypeId = UaNodeId(hasSubtype);
    QvelBrowseItem properties;
    properties.nodeId = search->dataType;
    properties.referenceTypeId = UaNodeId(hasProperty);
    QList<QvelBrowseItem> items{up};
    if (search->depth == 0)
        items.append(properties);
    whenDone(m_session->browse(items), this, [this, search](const QvelBrowseResult& result) {
        constexpr int deepest = 100;
        UaNodeId property;
        for (const QvelReference& reference : result.results.value(1).references)
            for (const char* name : {"EnumStrings", "EnumValues", "OptionSetValues"})
                if (reference.browseName == UaQualifiedName(UaString(name), 0))
                    property = m_session->toNodeId(reference.nodeId);
        const QList<QvelReference> supertypes = result.results.value(0).references;
        if (supertypes.isEmpty()) {
            search->info.status = result.status.isBad() ? result.status : OpcUa_BadTypeMismatch;
            finish(search);
            return;
        }
        search->ancestor = m_session->toNodeId(supertypes.first().nodeId);
        if (const OpcUa_UInt32 id = standardId(search->ancestor)) {
            const DataTypeInfo type = standardType(id);
            search->info.builtInType = type.builtInType;
            search->info.emptyType = type.emptyType;
            search->isComplete = true;
        }
        search->isComplete = search->isComplete || ++search->depth >= deepest;
        if (!property.isNull() && search->names.isEmpty())
            readNames(search, property);
        else
            search->isComplete ? finish(search) : climb(search);
    });
}

void DataTypes::readNames(const SearchPtr& search, const UaNodeId& property)
{
    whenDone(m_session->read({{property, QvelAttribute::Value, {}, {}}}), this,
             [this, search](const QvelReadResult& result) {
                 search->names = result.values.value(0).value();
                 search->isComplete ? finish(search) : climb(search);
             });
}

void DataTypes::finish(const SearchPtr& search)
{
    const QByteArray key = search->dataType.toFullString().bytes();
    DataTypeInfo& info = search->info;
    info.enumInfo =
        namesOf(search->names, isUnsigned(info.builtInType) ? QvelEnumInfo::EnumerationFlags
                                                            : QvelEnumInfo::Enumeration);
    m_searches.remove(key);
    if (info.status.isGood())
        m_known.insert(key, info);
    for (QPromise<DataTypeInfo>& promise : search->waiting) {
        promise.addResult(info);
        promise.finish();
    }
}

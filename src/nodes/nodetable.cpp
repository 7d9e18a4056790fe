#include "nodetable_p.h"

#include "base/showntext_p.h"
#include "images/images_p.h"
#include "platform/wire/binarycodec_p.h"
#include "session/whendone_p.h"

#include <QtGui/QGuiApplication>

#include <array>

// The types that have an icon of their own, and references to properties.
static constexpr OpcUa_UInt32 folderType = 61;
static constexpr OpcUa_UInt32 propertyType = 68;
static constexpr OpcUa_UInt32 hasProperty = 46;

static constexpr char standardUri[] = "http://opcfoundation.org/UA/";
static constexpr qsizetype keyHead = sizeof(quint32) + 1; // number of the namespace, kind

// The key of an identifier in a namespace.
static QByteArray keyOf(quint32 space, const UaNodeId& id)
{
    QByteArray bytes(keyHead, Qt::Uninitialized);
    memcpy(bytes.data(), &space, sizeof space);
    bytes[qsizetype(sizeof space)] = char(id.identifierType());
    if (id.identifierType() == OpcUa_IdentifierType_String)
        return bytes + id.toString().bytes();
    UaWire::Owned<OpcUa_NodeId> stack;
    if (OpcUa_IsBad(id.copyTo(&stack.value)))
        return bytes;
    const auto& identifier = stack.value.Identifier;
    const auto append = [&bytes](const void* data, qsizetype size) {
        bytes.append(static_cast<const char*>(data), size);
    };
    if (id.identifierType() == OpcUa_IdentifierType_Numeric)
        append(&identifier.Numeric, sizeof identifier.Numeric);
    else if (id.identifierType() == OpcUa_IdentifierType_Guid)
        append(&identifier.Guid, sizeof identifier.Guid);
    else if (identifier.ByteString.Length > 0)
        append(identifier.ByteString.Data, identifier.ByteString.Length);
    return bytes;
}

static quint32 spaceOfKey(QByteArrayView key)
{
    quint32 space = 0;
    memcpy(&space, key.data(), sizeof space);
    return space;
}

// Which of the types that count for the icons it is; 0 for none.
static OpcUa_UInt32 standardNumber(const QByteArray& key)
{
    for (const OpcUa_UInt32 number : {folderType, propertyType, hasProperty})
        if (key == keyOf(0, UaNodeId(number)))
            return number;
    return 0;
}

static UaNodeId idOfKey(QByteArrayView key, OpcUa_UInt16 index)
{
    const QByteArrayView bytes = key.sliced(keyHead);
    switch (key[qsizetype(sizeof(quint32))]) {
    case OpcUa_IdentifierType_String:
        return UaNodeId(UaString(bytes.toByteArray()), index);
    case OpcUa_IdentifierType_Guid: {
        OpcUa_Guid guid = {};
        memcpy(&guid, bytes.data(), std::min(qsizetype(sizeof guid), bytes.size()));
        return UaNodeId(UaGuid(guid), index);
    }
    case OpcUa_IdentifierType_Opaque:
        return UaNodeId(UaByteString(bytes.toByteArray()), index);
    default:
        OpcUa_UInt32 number = 0;
        memcpy(&number, bytes.data(), std::min(qsizetype(sizeof number), bytes.size()));
        return UaNodeId(number, index);
    }
}

void NodeTable::setSession(QvelSession* session)
{
    if (m_session)
        m_session->disconnect(this);
    m_session = session;
    m_reading = 0;
    m_wasConnected = false;
    if (!session)
        return;
    const auto look = [this] {
        if (isConnected()) {
            takeNamespaces();
            m_wasConnected = true;
            readNames();
            Q_EMIT connected();
        } else if (std::exchange(m_wasConnected, false)) {
            m_reading = 0;
            Q_EMIT lost();
        }
    };
    connect(session, &QvelSession::stateChanged, this, look);
    connect(session, &QvelSession::namespacesChanged, this, &NodeTable::takeNamespaces);
    connect(session, &QObject::destroyed, this, [this] {
        m_wasConnected = false;
        Q_EMIT lost();
    });
    look();
}

bool NodeTable::isConnected() const
{
    return m_session && m_session->state() == QvelSession::Connected;
}

void NodeTable::takeNamespaces()
{
    m_namespaces = m_session->namespaceArray();
    m_local = {0};
    for (Space& space : m_spaces)
        space.isThere = space.uri.isEmpty() && space.server == 0;
    for (qsizetype i = 1; i < m_namespaces.size() && i <= 0xffff; ++i) {
        const OpcUa_UInt16 index = OpcUa_UInt16(i);
        const UaString uri(m_namespaces[i]);
        m_local.append(space(uri, 0, uri.isEmpty() ? index : OpcUa_UInt16(0)));
        Space& known = m_spaces[m_local.last()];
        if (!known.isThere) {
            known.index = index;
            known.isThere = true;
        }
    }
}

quint32 NodeTable::space(const UaString& uri, OpcUa_UInt32 server, OpcUa_UInt16 index)
{
    if (server == 0 && index == 0 && (uri.isEmpty() || uri == UaString(standardUri)))
        return 0;
    const QByteArray name =
        QByteArray::number(server) + ' ' + QByteArray::number(index) + ' ' + uri.bytes();
    const auto known = m_spaceOf.constFind(name);
    if (known != m_spaceOf.cend())
        return *known;
    const quint32 number = quint32(m_spaces.size());
    m_spaces.append({uri, server, index, uri.isEmpty() && server == 0});
    m_spaceOf.insert(name, number);
    return number;
}

quint32 NodeTable::space(OpcUa_UInt16 namespaceIndex)
{
    if (namespaceIndex < m_local.size())
        return m_local[namespaceIndex];
    auto known = m_beyond.find(namespaceIndex);
    if (known == m_beyond.end())
        known = m_beyond.insert(namespaceIndex, space(UaString(), 0, namespaceIndex));
    return *known;
}

QByteArray NodeTable::key(const UaNodeId& id)
{
    return keyOf(space(id.namespaceIndex()), id);
}

QByteArray NodeTable::key(const UaExpandedNodeId& id)
{
    if (id.serverIndex() == 0 && id.namespaceUri().isEmpty())
        return key(id.nodeId());
    const OpcUa_UInt16 index = id.namespaceUri().isEmpty() ? id.nodeId().namespaceIndex() : 0;
    return keyOf(space(id.namespaceUri(), id.serverIndex(), index), id.nodeId());
}

UaExpandedNodeId NodeTable::id(QByteArrayView key) const
{
    if (key.size() < keyHead)
        return {};
    const Space& space = m_spaces[spaceOfKey(key)];
    return UaExpandedNodeId(idOfKey(key, space.uri.isEmpty() ? space.index : OpcUa_UInt16(0)),
                            space.uri, space.server);
}

UaNodeId NodeTable::nodeId(QByteArrayView key) const
{
    if (key.size() < keyHead)
        return {};
    const Space& space = m_spaces[spaceOfKey(key)];
    return space.isThere ? idOfKey(key, space.index) : UaNodeId();
}

QString NodeTable::idText(QByteArrayView key) const
{
    const UaNodeId local = nodeId(key);
    return (local.isNull() ? id(key).toFullString() : local.toFullString()).toQString();
}

QString NodeTable::nameText(quint32 space, const QString& name) const
{
    const Space& known = m_spaces[space];
    if (!known.isThere)
        return known.uri.toQString() + u':' + name;
    return known.index == 0 ? name : QString::number(known.index) + u':' + name;
}

quint32 NodeTable::type(const QByteArray& key, bool isReferenceType)
{
    const auto known = m_typeOf.constFind(key);
    if (known != m_typeOf.cend())
        return *known;
    if (id(key).nodeId().isNull())
        return m_typeOf[key] = 0;
    const quint32 number = quint32(m_types.size());
    m_types.append({key, {}, {}, standardNumber(key), isReferenceType});
    m_typeOf.insert(key, number);
    m_unnamed.append(number);
    // Those that come with it go with it, and those that could not be read before.
    QMetaObject::invokeMethod(this, &NodeTable::readNames, Qt::QueuedConnection);
    return number;
}

QString NodeTable::typeName(quint32 type) const
{
    const Type& known = m_types[type];
    return known.name.isEmpty() && type != 0 ? shownText(idText(known.key)) : known.name;
}

QString NodeTable::inverseName(quint32 type) const
{
    return m_types[type].inverseName;
}

void NodeTable::readNames()
{
    if (m_unnamed.isEmpty() || m_reading != 0 || !isConnected())
        return;
    QList<QvelReadItem> items;
    for (const quint32 type : std::as_const(m_unnamed))
        for (const auto attribute : {QvelAttribute::DisplayName, QvelAttribute::InverseName})
            if (attribute == QvelAttribute::DisplayName || m_types[type].isReferenceType)
                items.append({nodeId(m_types[type].key), attribute, {}, {}});
    m_reading = ++m_lastReading;
    const auto take = [this, number = m_reading, asked = m_unnamed](const QvelReadResult& result) {
        if (number != m_reading) // the answer of an earlier connection
            return;
        m_reading = 0;
        if (result.status.isBad())
            return; // asked again after the next connection
        m_unnamed.remove(0, asked.size());
        qsizetype place = 0;
        const auto next = [&] {
            return shownText(
                result.values.value(place++).value().toLocalizedText().text().toQString());
        };
        for (const quint32 type : asked) {
            m_types[type].name = next();
            if (m_types[type].isReferenceType)
                m_types[type].inverseName = next();
        }
        Q_EMIT typeNamesChanged();
        readNames();
    };
    whenDone(m_session->read(items), this, take);
}

CompactNode::CompactNode(NodeTable& table, const QvelReference& reference)
    : browseSpace(table.space(reference.browseName.namespaceIndex())),
      typeDefinition(table.type(table.key(reference.typeDefinition))),
      referenceType(table.type(table.key(reference.referenceTypeId), true)),
      nodeClass(quint8(reference.nodeClass)), flags(reference.isForward ? 0 : Inverse)
{
    setTexts(table.key(reference.nodeId), reference.browseName.name().bytes(),
             reference.displayName.text().bytes());
}

CompactNode::CompactNode(const QString& message, bool isFailure)
    : flags(isFailure ? Message | Failed : Message)
{
    setMessage(message);
}

void CompactNode::setTexts(QByteArrayView key, QByteArrayView browseName,
                           QByteArrayView displayName)
{
    if (displayName == browseName)
        displayName = {};
    std::unique_ptr<char[]> text(
        new char[std::size_t(key.size() + browseName.size() + displayName.size())]);
    char* end = text.get();
    for (const QByteArrayView piece : {key, browseName, displayName})
        end = std::copy(piece.begin(), piece.end(), end);
    m_keySize = quint32(key.size());
    m_browseSize = quint32(browseName.size());
    m_displaySize = quint32(displayName.size());
    m_text = std::move(text);
}

void CompactNode::setNames(const UaQualifiedName& browseName, const UaLocalizedText& displayName,
                           NodeTable& table)
{
    browseSpace = table.space(browseName.namespaceIndex());
    setTexts(key(), browseName.name().bytes(), displayName.text().bytes());
}

bool CompactNode::update(CompactNode& newer)
{
    const auto all = [](const CompactNode& n) {
        return std::tuple(n.browseSpace, n.typeDefinition, n.nodeClass, n.flags, n.m_keySize,
                          n.m_browseSize, n.m_displaySize);
    };
    const std::size_t size = std::size_t(m_keySize) + m_browseSize + m_displaySize;
    if (all(*this) == all(newer) && memcmp(m_text.get(), newer.m_text.get(), size) == 0)
        return false;
    *this = std::move(newer);
    return true;
}

QString CompactNode::browseName() const
{
    return QString::fromUtf8(browseBytes());
}

QString CompactNode::displayName() const
{
    return QString::fromUtf8(displayBytes());
}

QString CompactNode::shown(QByteArrayView text)
{
    constexpr qsizetype enough = 4 * maxShownCharacters + 4; // bytes of UTF-8
    return shownText(QString::fromUtf8(text.first(std::min(enough, text.size()))));
}

namespace {

struct NodeClass
{
    OpcUa_UInt32 value;
    const char* name;
    const char* icon;
};
constexpr NodeClass nodeClasses[] = {
    {1, QT_TRANSLATE_NOOP("QvelAddressSpaceModel", "Object"), "nodeObject"},
    {2, QT_TRANSLATE_NOOP("QvelAddressSpaceModel", "Variable"), "nodeVariable"},
    {4, QT_TRANSLATE_NOOP("QvelAddressSpaceModel", "Method"), "nodeMethod"},
    {8, QT_TRANSLATE_NOOP("QvelAddressSpaceModel", "ObjectType"), "nodeObjectType"},
    {16, QT_TRANSLATE_NOOP("QvelAddressSpaceModel", "VariableType"), "nodeVariableType"},
    {32, QT_TRANSLATE_NOOP("QvelAddressSpaceModel", "ReferenceType"), "nodeReferenceType"},
    {64, QT_TRANSLATE_NOOP("QvelAddressSpaceModel", "DataType"), "nodeDataType"},
    {128, QT_TRANSLATE_NOOP("QvelAddressSpaceModel", "View"), "nodeView"},
};
constexpr NodeClass failureLook = {0, "", "overlay_error"};
constexpr NodeClass folderLook = {0, "", "nodeFolder"};
constexpr NodeClass propertyLook = {0, "", "nodeProperty"};

const NodeClass* findNodeClass(OpcUa_UInt32 nodeClass)
{
    const auto* found = std::find_if(std::begin(nodeClasses), std::end(nodeClasses),
                                     [&](const NodeClass& c) { return c.value == nodeClass; });
    return found == std::end(nodeClasses) ? nullptr : found;
}

} // namespace

QString leftToRight(const QString& text)
{
    constexpr QChar mark(0x200E);
    return QGuiApplication::isRightToLeft() && !text.isEmpty() ? mark + text : text;
}

QString nodeClassName(OpcUa_UInt32 nodeClass)
{
    const NodeClass* found = findNodeClass(nodeClass);
    return found ? QCoreApplication::translate("QvelAddressSpaceModel", found->name) : QString();
}

QIcon NodeTable::icon(const CompactNode& node)
{
    const NodeClass* look = findNodeClass(node.nodeClass);
    if ((node.flags & CompactNode::Failed) != 0)
        look = &failureLook;
    else if (look == &nodeClasses[0] && m_types[node.typeDefinition].number == folderType)
        look = &folderLook;
    else if (look == &nodeClasses[1] && (m_types[node.typeDefinition].number == propertyType ||
                                         m_types[node.referenceType].number == hasProperty))
        look = &propertyLook;
    if (!look)
        return {};
    QIcon& icon = m_icons[look];
    if (icon.isNull())
        icon =
            paletteIcon(QStringLiteral(":/kestrel/images/%1.png").arg(QLatin1String(look->icon)));
    return icon;
}

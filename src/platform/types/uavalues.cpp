// The scalar value classes are thin: most of each is its text form.

#include "platform/stack/opcuastatuscodes.h"
#include "platform/types/uabytestring.h"
#include "platform/types/uaexpandednodeid.h"
#include "platform/types/uaextensionobject.h"
#include "platform/types/uaguid.h"
#include "platform/types/uanames.h"
#include "platform/types/uanodeid.h"
#include "platform/types/uastatuscode.h"
#include "platform/types/uastring.h"
#include "platform/types/utf8text_p.h"

#include <algorithm>
#include <cstring>
#include <iterator>

// QByteArray keeps null and empty apart, as String and ByteString do.
static QByteArray copyOf(const void* data, qsizetype length)
{
    if (!data || length < 0)
        return QByteArray();
    return length ? QByteArray(static_cast<const char*>(data), length) : QByteArray("");
}

UaString::UaString(const char* utf8) : m_utf8(copyOf(utf8, utf8 ? qsizetype(qstrlen(utf8)) : 0)) {}

UaString::UaString(const QByteArray& utf8) : m_utf8(utf8) {}

UaString::UaString(const QString& text)
    : m_utf8(text.isNull()    ? QByteArray()
             : text.isEmpty() ? QByteArray("")
                              : text.toUtf8())
{
}

QString UaString::toQString() const
{
    return textFromUtf8(m_utf8);
}

UaString::UaString(const OpcUa_String* value)
    : m_utf8(value ? copyOf(value->Data, value->Length) : QByteArray())
{
}

OpcUa_StatusCode UaString::copyTo(OpcUa_String* target) const
{
    return OpcUa_String_Assign(target, isNull() ? nullptr : m_utf8.constData(), size());
}

UaByteString::UaByteString(OpcUa_Int32 length, const OpcUa_Byte* data)
    : m_bytes(copyOf(data, length))
{
}

UaByteString::UaByteString(const QByteArray& bytes) : m_bytes(bytes) {}

UaByteString::UaByteString(const OpcUa_ByteString* value)
    : m_bytes(value ? copyOf(value->Data, value->Length) : QByteArray())
{
}

UaString UaByteString::toString() const
{
    return UaString(m_bytes.toHex());
}

OpcUa_StatusCode UaByteString::copyTo(OpcUa_ByteString* target) const
{
    return OpcUa_ByteString_Assign(target, isNull() ? nullptr : m_bytes.constData(), length());
}

OpcUa_StatusCode UaGuid::fromString(const UaString& text)
{
    QByteArray bare = text.bytes();
    if (bare.startsWith('{') && bare.endsWith('}'))
        bare = bare.mid(1, bare.size() - 2);
    constexpr qsizetype size = 36;
    if (bare.size() != size)
        return OpcUa_BadTypeMismatch;
    for (qsizetype i = 0; i < size; ++i) {
        const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
        if (dash ? bare[i] != '-' : !std::isxdigit(static_cast<unsigned char>(bare[i])))
            return OpcUa_BadTypeMismatch;
    }
    *this = UaGuid(QUuid::fromString(QLatin1String(bare)));
    return OpcUa_Good;
}

UaGuid::UaGuid(const QUuid& uuid)
{
    m_guid.Data1 = uuid.data1;
    m_guid.Data2 = uuid.data2;
    m_guid.Data3 = uuid.data3;
    std::copy(std::begin(uuid.data4), std::end(uuid.data4), m_guid.Data4);
}

QUuid UaGuid::toQUuid() const
{
    const OpcUa_Byte* b = m_guid.Data4;
    return QUuid(m_guid.Data1, m_guid.Data2, m_guid.Data3, b[0], b[1], b[2], b[3], b[4], b[5], b[6],
                 b[7]);
}

UaString UaGuid::toString() const
{
    return UaString(toQUuid().toByteArray(QUuid::WithBraces));
}

bool operator==(const UaGuid& a, const UaGuid& b)
{
    return !std::memcmp(&a.m_guid, &b.m_guid, sizeof a.m_guid);
}

UaNodeId::UaNodeId(OpcUa_UInt32 id, OpcUa_UInt16 namespaceIndex)
    : m_namespaceIndex(namespaceIndex), m_numeric(id)
{
}

UaNodeId::UaNodeId(const UaString& id, OpcUa_UInt16 namespaceIndex)
    : m_type(OpcUa_IdentifierType_String), m_namespaceIndex(namespaceIndex), m_bytes(id.bytes())
{
}

UaNodeId::UaNodeId(const UaGuid& id, OpcUa_UInt16 namespaceIndex)
    : m_type(OpcUa_IdentifierType_Guid), m_namespaceIndex(namespaceIndex), m_guid(id)
{
}

UaNodeId::UaNodeId(const UaByteString& id, OpcUa_UInt16 namespaceIndex)
    : m_type(OpcUa_IdentifierType_Opaque), m_namespaceIndex(namespaceIndex), m_bytes(id.bytes())
{
}

UaNodeId::UaNodeId(const OpcUa_NodeId& value)
    : m_type(OpcUa_IdentifierType(value.IdentifierType)), m_namespaceIndex(value.NamespaceIndex)
{
    const auto& id = value.Identifier;
    switch (value.IdentifierType) {
    case OpcUa_IdentifierType_String:
        m_bytes = copyOf(id.String.Data, id.String.Length);
        break;
    case OpcUa_IdentifierType_Guid:
        m_guid = UaGuid(id.Guid);
        break;
    case OpcUa_IdentifierType_Opaque:
        m_bytes = copyOf(id.ByteString.Data, id.ByteString.Length);
        break;
    default:
        m_type = OpcUa_IdentifierType_Numeric;
        m_numeric = id.Numeric;
    }
}

bool UaNodeId::isNull() const
{
    return m_namespaceIndex == 0 && m_numeric == 0 && m_guid.isNull() && m_bytes.isEmpty();
}

UaString UaNodeId::toString() const
{
    switch (m_type) {
    case OpcUa_IdentifierType_String:
        return UaString(m_bytes);
    case OpcUa_IdentifierType_Guid:
        return m_guid.toString();
    case OpcUa_IdentifierType_Opaque:
        return UaString(m_bytes.toHex());
    default:
        return UaString(QByteArray::number(m_numeric));
    }
}

// The identifier with its type's letter.
static QByteArray identifierText(const UaNodeId& id)
{
    const QByteArray bare = id.toString().bytes();
    switch (id.identifierType()) {
    case OpcUa_IdentifierType_String:
        return "s=" + bare;
    case OpcUa_IdentifierType_Guid:
        return "g=" + bare.mid(1, 36);
    case OpcUa_IdentifierType_Opaque:
        return "b=" + QByteArray::fromHex(bare).toBase64();
    default:
        return "i=" + bare;
    }
}

static QByteArray namespaceText(const UaNodeId& id)
{
    return id.namespaceIndex() ? "ns=" + QByteArray::number(id.namespaceIndex()) + ';'
                               : QByteArray();
}

UaString UaNodeId::toFullString() const
{
    return UaString(namespaceText(*this) + identifierText(*this));
}

OpcUa_StatusCode UaNodeId::copyTo(OpcUa_NodeId* target) const
{
    OpcUa_NodeId_Clear(target);
    target->IdentifierType = OpcUa_UInt16(m_type);
    target->NamespaceIndex = m_namespaceIndex;
    switch (m_type) {
    case OpcUa_IdentifierType_String:
        return UaString(m_bytes).copyTo(&target->Identifier.String);
    case OpcUa_IdentifierType_Guid:
        target->Identifier.Guid = m_guid;
        break;
    case OpcUa_IdentifierType_Opaque:
        return UaByteString(m_bytes).copyTo(&target->Identifier.ByteString);
    default:
        target->Identifier.Numeric = m_numeric;
    }
    return OpcUa_Good;
}

bool operator==(const UaNodeId& a, const UaNodeId& b)
{
    return a.m_type == b.m_type && a.m_namespaceIndex == b.m_namespaceIndex &&
           a.m_numeric == b.m_numeric && a.m_guid == b.m_guid && a.m_bytes == b.m_bytes;
}

UaExpandedNodeId::UaExpandedNodeId(const UaNodeId& nodeId, const UaString& namespaceUri,
                                   OpcUa_UInt32 serverIndex)
    : m_nodeId(nodeId), m_namespaceUri(namespaceUri), m_serverIndex(serverIndex)
{
}

UaExpandedNodeId::UaExpandedNodeId(const OpcUa_ExpandedNodeId& value)
    : UaExpandedNodeId(UaNodeId(value.NodeId), UaString(&value.NamespaceUri), value.ServerIndex)
{
}

UaString UaExpandedNodeId::toFullString() const
{
    QByteArray text;
    if (m_serverIndex)
        text = "svr=" + QByteArray::number(m_serverIndex) + ';';
    if (m_namespaceUri.isEmpty()) {
        text += namespaceText(m_nodeId);
    } else {
        QByteArray uri = m_namespaceUri.bytes();
        uri.replace('%', "%25").replace(';', "%3B");
        text += "nsu=" + uri + ';';
    }
    return UaString(text + identifierText(m_nodeId));
}

OpcUa_StatusCode UaExpandedNodeId::copyTo(OpcUa_ExpandedNodeId* target) const
{
    target->ServerIndex = m_serverIndex;
    const OpcUa_StatusCode status = m_nodeId.copyTo(&target->NodeId);
    return OpcUa_IsGood(status) ? m_namespaceUri.copyTo(&target->NamespaceUri) : status;
}

UaQualifiedName::UaQualifiedName(const UaString& name, OpcUa_UInt16 namespaceIndex)
    : m_name(name), m_namespaceIndex(namespaceIndex)
{
}

UaQualifiedName::UaQualifiedName(const OpcUa_QualifiedName& value)
    : UaQualifiedName(UaString(&value.Name), value.NamespaceIndex)
{
}

UaString UaQualifiedName::toString() const
{
    if (!m_namespaceIndex)
        return m_name;
    return UaString(QByteArray::number(m_namespaceIndex) + ':' + m_name.bytes());
}

OpcUa_StatusCode UaQualifiedName::copyTo(OpcUa_QualifiedName* target) const
{
    target->NamespaceIndex = m_namespaceIndex;
    return m_name.copyTo(&target->Name);
}

UaLocalizedText::UaLocalizedText(const UaString& locale, const UaString& text)
    : m_locale(locale), m_text(text)
{
}

UaLocalizedText::UaLocalizedText(const OpcUa_LocalizedText& value)
    : UaLocalizedText(UaString(&value.Locale), UaString(&value.Text))
{
}

OpcUa_StatusCode UaLocalizedText::copyTo(OpcUa_LocalizedText* target) const
{
    const OpcUa_StatusCode status = m_locale.copyTo(&target->Locale);
    return OpcUa_IsGood(status) ? m_text.copyTo(&target->Text) : status;
}

UaExtensionObject::UaExtensionObject(const UaExpandedNodeId& typeId, const UaByteString& body,
                                     OpcUa_Byte encoding)
    : m_typeId(typeId), m_body(body), m_encoding(encoding)
{
}

UaExtensionObject::UaExtensionObject(const OpcUa_ExtensionObject& value)
    : m_typeId(value.TypeId), m_body(&value.Body), m_encoding(value.Encoding)
{
}

UaString UaExtensionObject::toString() const
{
    return UaString(m_typeId.toFullString().bytes() + " (" + QByteArray::number(m_body.length()) +
                    " bytes)");
}

OpcUa_StatusCode UaExtensionObject::copyTo(OpcUa_ExtensionObject* target) const
{
    target->Encoding = m_encoding;
    const OpcUa_StatusCode status = m_typeId.copyTo(&target->TypeId);
    return OpcUa_IsGood(status) ? m_body.copyTo(&target->Body) : status;
}

UaString UaStatusCode::toString() const
{
    struct Name
    {
        OpcUa_StatusCode code;
        const char* name;
    };
    static constexpr Name names[] = {
        {OpcUa_Good, "Good"},
#include "platform/types/statuscodenames_p.inc"
    };
    const OpcUa_StatusCode bare = m_code & 0xffff0000u;
    const auto found =
        std::lower_bound(std::begin(names), std::end(names), bare,
                         [](const Name& n, OpcUa_StatusCode c) { return n.code < c; });
    if (found != std::end(names) && found->code == bare)
        return UaString(found->name);
    return UaString("0x" + QByteArray::number(m_code, 16).rightJustified(8, '0'));
}

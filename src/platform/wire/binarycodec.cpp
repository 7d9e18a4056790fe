#include "binarycodec_p.h"

#include "platform/stack/opcuatypetable_p.h"
#include "platform/types/uabytestring.h"
#include "platform/types/uadatavalue.h"
#include "platform/types/uadatetime.h"
#include "platform/types/uaexpandednodeid.h"
#include "platform/types/uaextensionobject.h"
#include "platform/types/uaguid.h"
#include "platform/types/uanames.h"
#include "platform/types/uanodeid.h"
#include "platform/types/uastatuscode.h"
#include "platform/types/uavariant.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <limits>

/// A NodeId as the encoder takes it, without a copy of its identifier.
struct UaNodeIdAccess
{
    static OpcUa_NodeId borrow(const UaNodeId& id)
    {
        OpcUa_NodeId node = {};
        node.IdentifierType = OpcUa_UInt16(id.m_type);
        node.NamespaceIndex = id.m_namespaceIndex;
        const auto length = OpcUa_Int32(id.m_bytes.size());
        char* const bytes = id.m_bytes.isNull() ? nullptr : const_cast<char*>(id.m_bytes.data());
        switch (id.m_type) {
        case OpcUa_IdentifierType_String:
            node.Identifier.String = {length, bytes};
            break;
        case OpcUa_IdentifierType_Guid:
            node.Identifier.Guid = id.m_guid;
            break;
        case OpcUa_IdentifierType_Opaque:
            node.Identifier.ByteString = {length, reinterpret_cast<OpcUa_Byte*>(bytes)};
            break;
        default:
            node.Identifier.Numeric = id.m_numeric;
        }
        return node;
    }
};

namespace UaWire {

namespace {

// First bytes of a NodeId (OPC 10000-6, 5.2.2.9) ...
enum NodeIdEncoding : OpcUa_Byte {
    TwoByte = 0,
    FourByte = 1,
    Numeric = 2,
    String = 3,
    Guid = 4,
    Opaque = 5
};
// ... and what an ExpandedNodeId adds (5.2.2.10).
enum ExpandedNodeIdMask : OpcUa_Byte { HasUri = 0x80, HasServerIndex = 0x40 };

// OPC 10000-6, 5.2.2.14.
enum LocalizedTextMask : OpcUa_Byte { HasLocale = 0x01, HasText = 0x02 };

// OPC 10000-6, 5.2.2.12.
enum DiagnosticInfoMask : OpcUa_Byte {
    HasSymbolicId = 0x01,
    HasNamespaceUri = 0x02,
    HasLocalizedText = 0x04,
    HasLocaleIndex = 0x08,
    HasAdditionalInfo = 0x10,
    HasInnerStatusCode = 0x20,
    HasInnerDiagnosticInfo = 0x40
};

// OPC 10000-6, 5.2.2.15.
enum ExtensionObjectBody : OpcUa_Byte { NoBody = 0, ByteStringBody = 1, XmlBody = 2 };

// OPC 10000-6, 5.2.2.16: the built-in type and ...
enum VariantEncoding : OpcUa_Byte { TypeMask = 0x3f, HasDimensions = 0x40, IsArray = 0x80 };
// ... the numbers after the last one that are read as ByteString.
constexpr OpcUa_Byte lastReservedType = 31;

// OPC 10000-6, 5.2.2.17.
enum DataValueMask : OpcUa_Byte {
    HasValue = 0x01,
    HasStatus = 0x02,
    HasSourceTimestamp = 0x04,
    HasServerTimestamp = 0x08,
    HasSourcePicoseconds = 0x10,
    HasServerPicoseconds = 0x20
};

// 9999-12-31 23:59:59 UTC: what lies later is sent as the largest number.
constexpr OpcUa_DateTime latestDateTime = 2650467743990000000;
// What an allocation takes besides its bytes.
constexpr std::size_t allocationOverhead = 32;

struct ElementCodec
{
    void (*encode)(BinaryEncoder&, const void* elements, std::size_t count);
    void* (*decode)(BinaryDecoder&, std::size_t count, OpcUa_Int32& decoded);
    void (*decodeOne)(BinaryDecoder&, void* element);
    std::size_t (*minimalSize)();
    std::size_t size;
};

template <class T>
constexpr ElementCodec elementCodec()
{
    return {[](BinaryEncoder& encoder, const void* elements, std::size_t count) {
                encoder.appendAll(static_cast<const T*>(elements), count);
            },
            [](BinaryDecoder& decoder, std::size_t count, OpcUa_Int32& decoded) -> void* {
                return decoder.takeElements<T>(count, decoded);
            },
            [](BinaryDecoder& decoder, void* element) { decoder(*static_cast<T*>(element)); },
            minimalEncodedSize<T>, sizeof(T)};
}

constexpr ElementCodec dateTimeCodec()
{
    ElementCodec codec = elementCodec<OpcUa_DateTime>();
    codec.encode = [](BinaryEncoder& encoder, const void* elements, std::size_t count) {
        const auto* times = static_cast<const OpcUa_DateTime*>(elements);
        std::for_each(times, times + count, [&](OpcUa_DateTime time) { encoder.dateTime(time); });
    };
    return codec;
}

// Indexed by the type's number.
constexpr ElementCodec codecs[] = {
    {},
    elementCodec<OpcUa_Boolean>(),
    elementCodec<OpcUa_SByte>(),
    elementCodec<OpcUa_Byte>(),
    elementCodec<OpcUa_Int16>(),
    elementCodec<OpcUa_UInt16>(),
    elementCodec<OpcUa_Int32>(),
    elementCodec<OpcUa_UInt32>(),
    elementCodec<OpcUa_Int64>(),
    elementCodec<OpcUa_UInt64>(),
    elementCodec<OpcUa_Float>(),
    elementCodec<OpcUa_Double>(),
    elementCodec<OpcUa_String>(),
    dateTimeCodec(),
    elementCodec<OpcUa_Guid>(),
    elementCodec<OpcUa_ByteString>(),
    elementCodec<OpcUa_XmlElement>(),
    elementCodec<OpcUa_NodeId>(),
    elementCodec<OpcUa_ExpandedNodeId>(),
    elementCodec<OpcUa_StatusCode>(),
    elementCodec<OpcUa_QualifiedName>(),
    elementCodec<OpcUa_LocalizedText>(),
    elementCodec<OpcUa_ExtensionObject>(),
    elementCodec<OpcUa_DataValue>(),
    elementCodec<OpcUa_Variant>(),
    elementCodec<OpcUa_DiagnosticInfo>(),
};
static_assert(std::size(codecs) == OpcUaType_DiagnosticInfo + 1);

// Bytes of a scalar whose encoding is that of memory, by its number; 0 for others.
constexpr std::array<OpcUa_Byte, 256> plainScalarSizes = [] {
    std::array<OpcUa_Byte, 256> sizes = {};
    for (int type : {OpcUaType_SByte, OpcUaType_Byte, OpcUaType_Int16, OpcUaType_UInt16,
                     OpcUaType_Int32, OpcUaType_UInt32, OpcUaType_Int64, OpcUaType_UInt64,
                     OpcUaType_Float, OpcUaType_Double, OpcUaType_DateTime, OpcUaType_StatusCode})
        sizes[std::size_t(type)] = OpcUa_Byte(codecs[type].size);
    return sizes;
}();

// Takes a DataValue with a number, which most are, from bytes that suffice for the largest one.
// Null for others.
const char* takePlainDataValue(const char* at, OpcUa_DataValue& value)
{
    const auto load = [&at](auto& field) {
        std::memcpy(&field, at, sizeof field);
        at += sizeof field;
    };
    const auto mask = OpcUa_Byte(*at++);
    if (mask & HasValue) {
        const auto type = OpcUa_Byte(*at++);
        const std::size_t size = plainScalarSizes[type];
        if (size == 0)
            return nullptr;
        OpcUa_UInt64 number = 0;
        std::memcpy(&number, at, sizeof number);
        at += size;
        value.Value.Datatype = type;
        value.Value.Value.UInt64 = number & (~OpcUa_UInt64(0) >> (64 - 8 * size));
    }
    if (mask & HasStatus)
        load(value.Status);
    if (mask & HasSourceTimestamp)
        load(value.SourceTimestamp);
    if (mask & HasSourcePicoseconds)
        load(value.SourcePicoseconds);
    if (mask & HasServerTimestamp)
        load(value.ServerTimestamp);
    if (mask & HasServerPicoseconds)
        load(value.ServerPicoseconds);
    return at;
}
constexpr std::ptrdiff_t largestPlainDataValue = 2 + 8 + 4 + 8 + 2 + 8 + 2;

} // namespace

void BinaryEncoder::bytes(const char* data, OpcUa_Int32 length)
{
    number(data ? length : OpcUa_Int32(-1));
    if (data)
        append(data, std::size_t(length));
}

void BinaryEncoder::dateTime(OpcUa_DateTime value)
{
    number(value >= latestDateTime ? std::numeric_limits<OpcUa_DateTime>::max()
                                   : std::max<OpcUa_DateTime>(value, 0));
}

void BinaryEncoder::operator()(const OpcUa_Guid& value)
{
    number(value.Data1);
    number(value.Data2);
    number(value.Data3);
    append(value.Data4, sizeof value.Data4);
}

void BinaryEncoder::numericId(OpcUa_UInt16 namespaceIndex, OpcUa_UInt32 id, OpcUa_Byte flags)
{
    if (namespaceIndex == 0 && id <= 0xff) {
        number(OpcUa_Byte(TwoByte | flags));
        number(OpcUa_Byte(id));
    } else if (namespaceIndex <= 0xff && id <= 0xffff) {
        number(OpcUa_Byte(FourByte | flags));
        number(OpcUa_Byte(namespaceIndex));
        number(OpcUa_UInt16(id));
    } else {
        number(OpcUa_Byte(Numeric | flags));
        number(namespaceIndex);
        number(id);
    }
}

void BinaryEncoder::nodeId(const OpcUa_NodeId& value, OpcUa_Byte flags)
{
    const auto begin = [&](OpcUa_Byte encoding) {
        number(OpcUa_Byte(encoding | flags));
        number(value.NamespaceIndex);
    };
    switch (value.IdentifierType) {
    case OpcUa_IdentifierType_String:
        begin(String);
        return (*this)(value.Identifier.String);
    case OpcUa_IdentifierType_Guid:
        begin(Guid);
        return (*this)(value.Identifier.Guid);
    case OpcUa_IdentifierType_Opaque:
        begin(Opaque);
        return (*this)(value.Identifier.ByteString);
    default:
        numericId(value.NamespaceIndex, value.Identifier.Numeric, flags);
    }
}

void BinaryEncoder::operator()(const OpcUa_ExpandedNodeId& value)
{
    nodeId(value.NodeId, OpcUa_Byte((value.NamespaceUri.Data ? HasUri : 0) |
                                    (value.ServerIndex ? HasServerIndex : 0)));
    if (value.NamespaceUri.Data)
        (*this)(value.NamespaceUri);
    if (value.ServerIndex)
        number(value.ServerIndex);
}

void BinaryEncoder::operator()(const OpcUa_LocalizedText& value)
{
    number(OpcUa_Byte((value.Locale.Data ? HasLocale : 0) | (value.Text.Data ? HasText : 0)));
    if (value.Locale.Data)
        (*this)(value.Locale);
    if (value.Text.Data)
        (*this)(value.Text);
}

void BinaryEncoder::operator()(const OpcUa_ExtensionObject& value)
{
    nodeId(value.TypeId.NodeId, 0);
    number(value.Encoding);
    if (value.Encoding != NoBody)
        (*this)(value.Body);
}

void BinaryEncoder::operator()(const OpcUa_Variant& value)
{
    if (!opcUaTypeInfo(value.Datatype))
        return number(OpcUa_Byte(OpcUaType_Null));
    const ElementCodec& codec = codecs[value.Datatype];
    const OpcUaElements elements = opcUaElements(value);
    if (value.ArrayType == OpcUa_VariantArrayType_Scalar) {
        static constexpr OpcUa_DataValue nothing = {}; // the largest of the boxed types
        number(value.Datatype);
        return codec.encode(*this, elements.data ? elements.data : &nothing, 1);
    }
    const auto& matrix = value.Value.Matrix;
    const bool isMatrix = value.ArrayType == OpcUa_VariantArrayType_Matrix && matrix.Dimensions &&
                          matrix.NoOfDimensions > 0;
    number(OpcUa_Byte(value.Datatype | IsArray | (isMatrix ? HasDimensions : 0)));
    const bool isNull =
        value.ArrayType == OpcUa_VariantArrayType_Array && value.Value.Array.Length < 0;
    number(isNull ? OpcUa_Int32(-1) : OpcUa_Int32(elements.count));
    codec.encode(*this, elements.data, elements.count);
    if (isMatrix)
        this->elements(matrix.Dimensions, matrix.NoOfDimensions);
}

void BinaryEncoder::operator()(const OpcUa_DataValue& value)
{
    const bool source = value.SourceTimestamp != 0;
    const bool server = value.ServerTimestamp != 0;
    number(OpcUa_Byte((value.Value.Datatype ? HasValue : 0) | (value.Status ? HasStatus : 0) |
                      (source ? HasSourceTimestamp : 0) | (server ? HasServerTimestamp : 0) |
                      (value.SourcePicoseconds && source ? HasSourcePicoseconds : 0) |
                      (value.ServerPicoseconds && server ? HasServerPicoseconds : 0)));
    if (value.Value.Datatype)
        (*this)(value.Value);
    if (value.Status)
        number(value.Status);
    if (source)
        dateTime(value.SourceTimestamp);
    if (value.SourcePicoseconds && source)
        number(value.SourcePicoseconds);
    if (server)
        dateTime(value.ServerTimestamp);
    if (value.ServerPicoseconds && server)
        number(value.ServerPicoseconds);
}

void BinaryEncoder::operator()(const OpcUa_DiagnosticInfo& value)
{
    const bool inner = value.NoOfInnerDiagnosticInfos > 0 && value.InnerDiagnosticInfos;
    if (!(value.SymbolicId || value.NamespaceUri || value.Locale || value.LocalizedText ||
          value.AdditionalInfo.Data || value.InnerStatusCode || inner))
        return number(OpcUa_Byte(0)); // the empty structure
    number(OpcUa_Byte((value.SymbolicId >= 0 ? HasSymbolicId : 0) |
                      (value.NamespaceUri >= 0 ? HasNamespaceUri : 0) |
                      (value.LocalizedText >= 0 ? HasLocalizedText : 0) |
                      (value.Locale >= 0 ? HasLocaleIndex : 0) |
                      (value.AdditionalInfo.Data ? HasAdditionalInfo : 0) |
                      (value.InnerStatusCode ? HasInnerStatusCode : 0) |
                      (inner ? HasInnerDiagnosticInfo : 0)));
    for (OpcUa_Int32 index :
         {value.SymbolicId, value.NamespaceUri, value.Locale, value.LocalizedText}) {
        if (index >= 0)
            number(index);
    }
    if (value.AdditionalInfo.Data)
        (*this)(value.AdditionalInfo);
    if (value.InnerStatusCode)
        number(value.InnerStatusCode);
    if (inner)
        (*this)(value.InnerDiagnosticInfos[0]);
}

void BinaryEncoder::operator()(const UaByteString& value)
{
    (*this)(value.bytes());
}

void BinaryEncoder::operator()(const UaStatusCode& value)
{
    number(value.code());
}

void BinaryEncoder::operator()(const UaNodeId& value)
{
    (*this)(UaNodeIdAccess::borrow(value));
}

void BinaryEncoder::operator()(const UaExpandedNodeId& value)
{
    const QByteArray& uri = value.namespaceUri().bytes();
    (*this)(OpcUa_ExpandedNodeId{
        UaNodeIdAccess::borrow(value.nodeId()),
        {OpcUa_Int32(uri.size()), uri.isNull() ? nullptr : const_cast<char*>(uri.constData())},
        value.serverIndex()});
}

void BinaryEncoder::operator()(const UaQualifiedName& value)
{
    number(value.namespaceIndex());
    (*this)(value.name());
}

void BinaryEncoder::operator()(const UaLocalizedText& value)
{
    number(OpcUa_Byte((value.locale().isNull() ? 0 : HasLocale) |
                      (value.text().isNull() ? 0 : HasText)));
    if (!value.locale().isNull())
        (*this)(value.locale());
    if (!value.text().isNull())
        (*this)(value.text());
}

void BinaryEncoder::operator()(const UaExtensionObject& value)
{
    (*this)(value.typeId().nodeId());
    number(value.encoding());
    if (value.encoding() != NoBody)
        (*this)(value.body());
}

void BinaryEncoder::operator()(const UaVariant& value)
{
    (*this)(*static_cast<const OpcUa_Variant*>(value));
}

void BinaryEncoder::operator()(const UaDataValue& value)
{
    // The variant is only looked at.
    OpcUa_DataValue stack = {};
    stack.Value = *static_cast<const OpcUa_Variant*>(value.value());
    stack.Status = value.status().code();
    stack.SourceTimestamp = value.sourceTimestamp().ticks();
    stack.SourcePicoseconds = value.sourcePicoseconds();
    stack.ServerTimestamp = value.serverTimestamp().ticks();
    stack.ServerPicoseconds = value.serverPicoseconds();
    (*this)(stack);
}

void BinaryDecoder::fail(OpcUa_StatusCode status)
{
    if (OpcUa_IsGood(m_status))
        m_status = status;
    m_at = m_end;
}

bool BinaryDecoder::account(std::size_t bytes)
{
    if (bytes + allocationOverhead > m_limits.memory) {
        fail(OpcUa_BadEncodingLimitsExceeded);
        return false;
    }
    m_limits.memory -= bytes + allocationOverhead;
    return true;
}

bool BinaryDecoder::enter()
{
    if (m_limits.nestingDepth <= 0)
        fail(OpcUa_BadEncodingLimitsExceeded);
    --m_limits.nestingDepth;
    return OpcUa_IsGood(m_status);
}

QByteArrayView BinaryDecoder::takeString()
{
    const auto length = number<OpcUa_Int32>();
    if (length == -1 || OpcUa_IsNotGood(m_status))
        return {};
    if (length < 0 || length > m_end - m_at) {
        fail(OpcUa_BadDecodingError);
    } else if (length > m_limits.stringLength) {
        fail(OpcUa_BadEncodingLimitsExceeded);
    } else if (account(std::size_t(length))) {
        m_at += length;
        return {m_at - length, length};
    }
    return {};
}

OpcUa_Int32 BinaryDecoder::arrayLength(std::size_t encodedSize, std::size_t decodedSize)
{
    const auto length = number<OpcUa_Int32>();
    if (OpcUa_IsNotGood(m_status) || length == -1)
        return -1;
    if (length < 0 || std::size_t(length) > std::size_t(m_end - m_at) / encodedSize)
        fail(OpcUa_BadDecodingError);
    else if (length > m_limits.arrayLength)
        fail(OpcUa_BadEncodingLimitsExceeded);
    else if (account(std::size_t(length) * decodedSize))
        return length;
    return -1;
}

void BinaryDecoder::operator()(OpcUa_String& value)
{
    const QByteArrayView bytes = takeString();
    if (!bytes.isNull() &&
        OpcUa_IsNotGood(OpcUa_String_Assign(&value, bytes.data(), OpcUa_Int32(bytes.size()))))
        fail(OpcUa_BadOutOfMemory);
}

void BinaryDecoder::operator()(OpcUa_ByteString& value)
{
    const QByteArrayView bytes = takeString();
    if (!bytes.isNull() &&
        OpcUa_IsNotGood(OpcUa_ByteString_Assign(&value, bytes.data(), OpcUa_Int32(bytes.size()))))
        fail(OpcUa_BadOutOfMemory);
}

void BinaryDecoder::operator()(QByteArray& value)
{
    const QByteArrayView bytes = takeString();
    // Null and empty stay apart.
    value = bytes.isNull() ? QByteArray() : QByteArray(bytes.data(), bytes.size());
}

void BinaryDecoder::operator()(UaString& value)
{
    QByteArray bytes;
    (*this)(bytes);
    value = UaString(bytes);
}

void BinaryDecoder::operator()(UaByteString& value)
{
    QByteArray bytes;
    (*this)(bytes);
    value = UaByteString(bytes);
}

void BinaryDecoder::operator()(UaStatusCode& value)
{
    value = number<OpcUa_StatusCode>();
}

void BinaryDecoder::operator()(OpcUa_Guid& value)
{
    value.Data1 = number<OpcUa_UInt32>();
    value.Data2 = number<OpcUa_UInt16>();
    value.Data3 = number<OpcUa_UInt16>();
    for (OpcUa_Byte& byte : value.Data4)
        byte = number<OpcUa_Byte>();
}

struct BinaryDecoder::NodeIdParts
{
    OpcUa_Byte flags = 0;
    OpcUa_IdentifierType type = OpcUa_IdentifierType_Numeric;
    OpcUa_UInt16 namespaceIndex = 0;
    OpcUa_UInt32 numeric = 0;
    OpcUa_Guid guid = {};
    QByteArrayView bytes; // of a string or an opaque identifier
};

BinaryDecoder::NodeIdParts BinaryDecoder::takeNodeId()
{
    NodeIdParts id;
    const auto first = number<OpcUa_Byte>();
    id.flags = first & (HasUri | HasServerIndex);
    switch (first & ~(HasUri | HasServerIndex)) {
    case TwoByte:
        id.numeric = number<OpcUa_Byte>();
        break;
    case FourByte:
        id.namespaceIndex = number<OpcUa_Byte>();
        id.numeric = number<OpcUa_UInt16>();
        break;
    case Numeric:
        id.namespaceIndex = number<OpcUa_UInt16>();
        id.numeric = number<OpcUa_UInt32>();
        break;
    case String:
        id.type = OpcUa_IdentifierType_String;
        id.namespaceIndex = number<OpcUa_UInt16>();
        id.bytes = takeString();
        break;
    case Guid:
        id.type = OpcUa_IdentifierType_Guid;
        id.namespaceIndex = number<OpcUa_UInt16>();
        (*this)(id.guid);
        break;
    case Opaque:
        id.type = OpcUa_IdentifierType_Opaque;
        id.namespaceIndex = number<OpcUa_UInt16>();
        id.bytes = takeString();
        break;
    default:
        fail(OpcUa_BadDecodingError);
    }
    return id;
}

OpcUa_StatusCode BinaryDecoder::assign(const NodeIdParts& id, OpcUa_NodeId& value)
{
    value.IdentifierType = OpcUa_UInt16(id.type);
    value.NamespaceIndex = id.namespaceIndex;
    const auto length = OpcUa_Int32(id.bytes.size());
    switch (id.type) {
    case OpcUa_IdentifierType_String:
        return OpcUa_String_Assign(&value.Identifier.String, id.bytes.data(), length);
    case OpcUa_IdentifierType_Guid:
        value.Identifier.Guid = id.guid;
        break;
    case OpcUa_IdentifierType_Opaque:
        return OpcUa_ByteString_Assign(&value.Identifier.ByteString, id.bytes.data(), length);
    default:
        value.Identifier.Numeric = id.numeric;
    }
    return OpcUa_Good;
}

UaNodeId BinaryDecoder::nodeIdOf(const NodeIdParts& id)
{
    // Null and empty stay apart.
    const QByteArray bytes =
        id.bytes.isNull() ? QByteArray() : QByteArray(id.bytes.data(), id.bytes.size());
    switch (id.type) {
    case OpcUa_IdentifierType_String:
        return UaNodeId(UaString(bytes), id.namespaceIndex);
    case OpcUa_IdentifierType_Guid:
        return UaNodeId(UaGuid(id.guid), id.namespaceIndex);
    case OpcUa_IdentifierType_Opaque:
        return UaNodeId(UaByteString(bytes), id.namespaceIndex);
    default:
        return UaNodeId(id.numeric, id.namespaceIndex);
    }
}

BinaryDecoder::NodeIdParts BinaryDecoder::takePlainNodeId()
{
    const NodeIdParts id = takeNodeId();
    if (id.flags)
        fail(OpcUa_BadDecodingError);
    return id;
}

void BinaryDecoder::operator()(OpcUa_NodeId& value)
{
    const OpcUa_StatusCode status = assign(takePlainNodeId(), value);
    if (OpcUa_IsNotGood(status))
        fail(status);
}

void BinaryDecoder::operator()(UaNodeId& value)
{
    value = nodeIdOf(takePlainNodeId());
}

void BinaryDecoder::operator()(OpcUa_ExpandedNodeId& value)
{
    const NodeIdParts id = takeNodeId();
    const OpcUa_StatusCode status = assign(id, value.NodeId);
    if (OpcUa_IsNotGood(status))
        return fail(status);
    if (id.flags & HasUri)
        (*this)(value.NamespaceUri);
    if (id.flags & HasServerIndex)
        value.ServerIndex = number<OpcUa_UInt32>();
}

void BinaryDecoder::operator()(UaExpandedNodeId& value)
{
    const NodeIdParts id = takeNodeId();
    const UaNodeId nodeId = nodeIdOf(id);
    UaString uri;
    if (id.flags & HasUri)
        (*this)(uri);
    const auto server = id.flags & HasServerIndex ? number<OpcUa_UInt32>() : OpcUa_UInt32(0);
    value = UaExpandedNodeId(nodeId, uri, server);
}

OpcUa_UInt32 BinaryDecoder::typeId()
{
    const NodeIdParts id = takePlainNodeId();
    return id.namespaceIndex == 0 ? id.numeric : 0;
}

void BinaryDecoder::operator()(UaQualifiedName& value)
{
    const auto namespaceIndex = number<OpcUa_UInt16>();
    UaString name;
    (*this)(name);
    value = UaQualifiedName(name, namespaceIndex);
}

OpcUa_Byte BinaryDecoder::localizedTextMask()
{
    const auto mask = number<OpcUa_Byte>();
    if (mask & ~(HasLocale | HasText))
        fail(OpcUa_BadDecodingError);
    return mask;
}

void BinaryDecoder::operator()(OpcUa_LocalizedText& value)
{
    const OpcUa_Byte mask = localizedTextMask();
    if (mask & HasLocale)
        (*this)(value.Locale);
    if (mask & HasText)
        (*this)(value.Text);
}

void BinaryDecoder::operator()(UaLocalizedText& value)
{
    const OpcUa_Byte mask = localizedTextMask();
    UaString locale;
    UaString text;
    if (mask & HasLocale)
        (*this)(locale);
    if (mask & HasText)
        (*this)(text);
    value = UaLocalizedText(locale, text);
}

void BinaryDecoder::operator()(OpcUa_ExtensionObject& value)
{
    (*this)(value.TypeId.NodeId);
    value.Encoding = number<OpcUa_Byte>();
    if (value.Encoding > XmlBody)
        fail(OpcUa_BadDecodingError);
    else if (value.Encoding != NoBody)
        (*this)(value.Body);
}

void BinaryDecoder::operator()(UaExtensionObject& value)
{
    UaNodeId typeId;
    (*this)(typeId);
    const auto encoding = number<OpcUa_Byte>();
    UaByteString body;
    if (encoding > XmlBody)
        fail(OpcUa_BadDecodingError);
    else if (encoding != NoBody)
        (*this)(body);
    value = UaExtensionObject(UaExpandedNodeId(typeId, UaString(), 0), body, encoding);
}

void BinaryDecoder::operator()(OpcUa_Variant& value)
{
    const auto encoding = number<OpcUa_Byte>();
    OpcUa_Byte type = encoding & TypeMask;
    if (type > OpcUaType_DiagnosticInfo && type <= lastReservedType)
        type = OpcUaType_ByteString;
    const bool isArray = encoding & IsArray;
    const bool hasDimensions = encoding & HasDimensions;
    if (type >= std::size(codecs) || (hasDimensions && !isArray) || (!type && encoding))
        return fail(OpcUa_BadDecodingError);
    if (type == OpcUaType_Null || !enter())
        return;

    const ElementCodec& codec = codecs[type];
    value.Datatype = type;
    if (!isArray) {
        void* element = &value.Value;
        if (opcUaTypeInfo(type)->boxed) {
            element = account(codec.size) ? OpcUa_Memory_Alloc(codec.size) : nullptr;
            if (!element)
                return fail(OpcUa_BadOutOfMemory); // unless there is an error already
            std::memset(element, 0, codec.size);
            value.Value.Boxed = element;
        }
        codec.decodeOne(*this, element);
        return leave();
    }
    value.ArrayType = OpcUa_VariantArrayType_Array;
    auto& array = value.Value.Array;
    array.Length = arrayLength(codec.minimalSize(), codec.size);
    if (array.Length >= 0)
        array.Elements = codec.decode(*this, std::size_t(array.Length), array.Length);
    if (hasDimensions)
        takeDimensions(value);
    leave();
}

// An array becomes a matrix only with dimensions that it fills. One without elements may come
// without dimensions, too, as some servers send a matrix that was never filled.
void BinaryDecoder::takeDimensions(OpcUa_Variant& value)
{
    const auto count = std::size_t(std::max(value.Value.Array.Length, 0));
    void* const elements = value.Value.Array.Elements;
    UaStackTypeArray<OpcUa_UInt32> dimensions;
    (*this)(dimensions);
    if (OpcUa_IsNotGood(m_status) || (dimensions.length() == 0 && count == 0))
        return;
    std::size_t product = 1;
    bool fits = dimensions.length() > 0;
    for (OpcUa_UInt32 length : dimensions) // none more than there are elements, so no overflow
        fits = fits && length <= count && (product *= length) <= count;
    // A matrix with a length of 0 has no elements, whatever its other lengths are.
    const bool empty = std::find(dimensions.begin(), dimensions.end(), 0u) != dimensions.end();
    if (!(fits && product == count) && !(empty && count == 0))
        return fail(OpcUa_BadDecodingError);
    value.ArrayType = OpcUa_VariantArrayType_Matrix;
    auto& matrix = value.Value.Matrix;
    matrix.Elements = elements;
    matrix.NoOfDimensions = OpcUa_Int32(dimensions.length());
    matrix.Dimensions = dimensions.detach();
}

void BinaryDecoder::operator()(UaVariant& value)
{
    OpcUa_Variant stack = {};
    (*this)(stack);
    value.attach(&stack);
}

void BinaryDecoder::operator()(OpcUa_DataValue& value)
{
    if (Q_BYTE_ORDER == Q_LITTLE_ENDIAN && m_end - m_at >= largestPlainDataValue) {
        if (const char* next = takePlainDataValue(m_at, value)) {
            m_at = next;
            return;
        }
        value = {};
    }
    if (!enter())
        return;
    const auto mask = number<OpcUa_Byte>();
    if (mask & HasValue)
        (*this)(value.Value);
    if (mask & HasStatus)
        value.Status = number<OpcUa_StatusCode>();
    if (mask & HasSourceTimestamp)
        value.SourceTimestamp = number<OpcUa_DateTime>();
    if (mask & HasSourcePicoseconds)
        value.SourcePicoseconds = number<OpcUa_UInt16>();
    if (mask & HasServerTimestamp)
        value.ServerTimestamp = number<OpcUa_DateTime>();
    if (mask & HasServerPicoseconds)
        value.ServerPicoseconds = number<OpcUa_UInt16>();
    leave();
}

void BinaryDecoder::operator()(UaDataValue& value)
{
    OpcUa_DataValue stack = {};
    (*this)(stack);
    value.attach(&stack);
}

void BinaryDecoder::operator()(OpcUa_DiagnosticInfo& value)
{
    if (!enter())
        return;
    const auto mask = number<OpcUa_Byte>();
    if (mask == 0)
        return leave(); // the empty structure
    const auto index = [&](int bit) {
        return mask & bit ? number<OpcUa_Int32>() : OpcUa_Int32(-1);
    };
    value.SymbolicId = index(HasSymbolicId);
    value.NamespaceUri = index(HasNamespaceUri);
    value.Locale = index(HasLocaleIndex);
    value.LocalizedText = index(HasLocalizedText);
    if (mask & HasAdditionalInfo)
        (*this)(value.AdditionalInfo);
    if (mask & HasInnerStatusCode)
        value.InnerStatusCode = number<OpcUa_StatusCode>();
    if (mask & HasInnerDiagnosticInfo && account(sizeof value))
        value.InnerDiagnosticInfos =
            takeElements<OpcUa_DiagnosticInfo>(1, value.NoOfInnerDiagnosticInfos);
    leave();
}

} // namespace UaWire

// The JSON encoding of OPC 10000-6, 5.4. Written as text, since a large array would take many times
// its size as a tree; read by way of Qt's parser.

#include "platform/types/uavariant.h"

#include "platform/stack/opcuastatuscodes.h"
#include "platform/stack/opcuatypetable_p.h"
#include "platform/types/uabytestring.h"
#include "platform/types/uadatetime.h"
#include "platform/types/uaguid.h"
#include "platform/types/uastacktypearray.h"
#include "platform/types/uastatuscode.h"
#include "platform/types/uastring.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

// What JSON can tell of a time (5.4.2.6).
constexpr char earliestTime[] = "0001-01-01T00:00:00Z";
constexpr OpcUa_DateTime earliestTicks = -504911232000000000;
constexpr char latestTime[] = "9999-12-31T23:59:59Z";
constexpr OpcUa_DateTime latestTicks = 2650467743990000000;

class Writer
{
public:
    explicit Writer(UaJsonForm form) : m_reversible(form == UaJsonForm::Reversible) {}

    QByteArray out;

    void variant(const OpcUa_Variant& value);

    // One for each built-in type; an alias of another one has a name of its own.
    void write(OpcUa_Boolean value) { out += value ? "true" : "false"; }
    template <class T>
    std::enable_if_t<std::is_integral_v<T>> write(T value)
    {
        if constexpr (sizeof(T) == sizeof(OpcUa_Int64))
            out += '"' + integerText(value) + '"';
        else
            out += integerText(value);
    }
    template <class T>
    std::enable_if_t<std::is_floating_point_v<T>> write(T value)
    {
        if (!std::isfinite(value)) {
            out += std::isnan(value) ? "\"NaN\"" : value > 0 ? "\"Infinity\"" : "\"-Infinity\"";
            return;
        }
        char buffer[32];
        const auto end = std::to_chars(buffer, buffer + sizeof buffer, value).ptr;
        out.append(buffer, end - buffer);
    }
    void write(const OpcUa_String& value) { text(value.Data, value.Length); }
    void dateTime(OpcUa_DateTime value)
    {
        out += '"';
        out += value <= earliestTicks ? QByteArray(earliestTime)
               : value >= latestTicks ? QByteArray(latestTime)
                                      : UaDateTime(value).toString().bytes();
        out += '"';
    }
    void write(const OpcUa_Guid& value)
    {
        out += '"' + UaGuid(value).toString().bytes().mid(1, 36) + '"';
    }
    void write(const OpcUa_ByteString& value)
    {
        if (!value.Data)
            return null();
        out += '"' +
               QByteArray::fromRawData(reinterpret_cast<const char*>(value.Data), value.Length)
                   .toBase64() +
               '"';
    }
    void xmlElement(const OpcUa_XmlElement& value)
    {
        text(reinterpret_cast<const char*>(value.Data), value.Length);
    }
    void write(const OpcUa_NodeId& value)
    {
        begin();
        identifier(value);
        namespaceIndex("Namespace", value.NamespaceIndex);
        end();
    }
    void write(const OpcUa_ExpandedNodeId& value)
    {
        begin();
        identifier(value.NodeId);
        if (value.NamespaceUri.Data)
            field("Namespace", value.NamespaceUri);
        else
            namespaceIndex("Namespace", value.NodeId.NamespaceIndex);
        if (value.ServerIndex)
            field("ServerUri", value.ServerIndex);
        end();
    }
    void statusCode(OpcUa_StatusCode value)
    {
        if (value == OpcUa_Good)
            return null();
        if (m_reversible)
            return write(value);
        begin();
        field("Code", value);
        key("Symbol");
        const UaString name = UaStatusCode(value).toString();
        text(name.toUtf8(), name.size());
        end();
    }
    void write(const OpcUa_QualifiedName& value)
    {
        begin();
        if (value.Name.Data)
            field("Name", value.Name);
        namespaceIndex("Uri", value.NamespaceIndex);
        end();
    }
    void write(const OpcUa_LocalizedText& value)
    {
        if (!m_reversible)
            return write(value.Text);
        begin();
        if (value.Locale.Data)
            field("Locale", value.Locale);
        if (value.Text.Data)
            field("Text", value.Text);
        end();
    }
    void write(const OpcUa_ExtensionObject& value)
    {
        constexpr OpcUa_Byte xml = 2;
        const auto body = [&] {
            value.Encoding == xml ? xmlElement(value.Body) : write(value.Body);
        };
        if (!m_reversible)
            return body();
        begin();
        key("TypeId");
        write(value.TypeId.NodeId);
        if (value.Encoding) {
            field("Encoding", value.Encoding);
            key("Body");
            body();
        }
        end();
    }
    void write(const OpcUa_DataValue& value)
    {
        begin();
        if (value.Value.Datatype) {
            key("Value");
            variant(value.Value);
        }
        if (value.Status) {
            key("Status");
            statusCode(value.Status);
        }
        time("SourceTimestamp", value.SourceTimestamp, "SourcePicoseconds",
             value.SourcePicoseconds);
        time("ServerTimestamp", value.ServerTimestamp, "ServerPicoseconds",
             value.ServerPicoseconds);
        end();
    }
    void write(const OpcUa_Variant& value) { variant(value); }
    void write(const OpcUa_DiagnosticInfo& value);

private:
    template <class T>
    static QByteArray integerText(T value)
    {
        if constexpr (std::is_signed_v<T>)
            return QByteArray::number(qlonglong(value));
        else
            return QByteArray::number(qulonglong(value));
    }
    void null() { out += "null"; }
    void begin()
    {
        out += '{';
        m_first = true;
    }
    void end()
    {
        out += '}';
        m_first = false;
    }
    void key(const char* name)
    {
        if (!m_first)
            out += ',';
        m_first = false;
        out += '"';
        out += name;
        out += "\":";
    }
    template <class T>
    void field(const char* name, const T& value)
    {
        key(name);
        write(value);
    }
    void time(const char* name, OpcUa_DateTime value, const char* rest, OpcUa_UInt16 picoseconds)
    {
        if (!value)
            return;
        key(name);
        dateTime(value);
        if (picoseconds)
            field(rest, picoseconds);
    }
    void namespaceIndex(const char* name, OpcUa_UInt16 index)
    {
        if (index)
            field(name, index);
    }
    void identifier(const OpcUa_NodeId& value)
    {
        const auto& id = value.Identifier;
        if (value.IdentifierType != OpcUa_IdentifierType_Numeric)
            field("IdType", value.IdentifierType);
        switch (value.IdentifierType) {
        case OpcUa_IdentifierType_String:
            return field("Id", id.String);
        case OpcUa_IdentifierType_Guid:
            return field("Id", id.Guid);
        case OpcUa_IdentifierType_Opaque:
            return field("Id", id.ByteString);
        default:
            return field("Id", id.Numeric);
        }
    }
    void text(const char* utf8, OpcUa_Int32 length);
    void elements(const OpcUa_Variant& value, const char*& next, const OpcUa_UInt32* lengths,
                  OpcUa_Int32 levels);

    const bool m_reversible;
    bool m_first = true; // the next field is the first of its object
};

// Escapes what JSON cannot hold, and replaces what is no UTF-8.
void Writer::text(const char* utf8, OpcUa_Int32 length)
{
    if (!utf8)
        return null();
    out += '"';
    const QByteArray valid = QString::fromUtf8(utf8, length).toUtf8();
    for (const char c : valid) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (uchar(c) < 0x20) {
            constexpr char digits[] = "0123456789abcdef";
            out += "\\u00";
            out += digits[uchar(c) >> 4];
            out += digits[uchar(c) & 15];
        } else {
            out += c;
        }
    }
    out += '"';
}

void Writer::write(const OpcUa_DiagnosticInfo& value)
{
    begin();
    const bool isNull =
        !(value.SymbolicId || value.NamespaceUri || value.Locale || value.LocalizedText);
    const auto index = [&](const char* name, OpcUa_Int32 number) {
        if (number >= 0 && !isNull)
            field(name, number);
    };
    index("SymbolicId", value.SymbolicId);
    index("NamespaceUri", value.NamespaceUri);
    index("Locale", value.Locale);
    index("LocalizedText", value.LocalizedText);
    if (value.AdditionalInfo.Data)
        field("AdditionalInfo", value.AdditionalInfo);
    if (value.InnerStatusCode) {
        key("InnerStatusCode");
        statusCode(value.InnerStatusCode);
    }
    if (value.NoOfInnerDiagnosticInfos > 0 && value.InnerDiagnosticInfos)
        field("InnerDiagnosticInfo", value.InnerDiagnosticInfos[0]);
    end();
}

// The number of a type of JSON that has no alias: what fits, fits.
template <class T>
OpcUa_StatusCode readInteger(const QJsonValue& json, T& value)
{
    if (json.isString()) {
        const QByteArray text = json.toString().toLatin1();
        const auto [stop, error] = std::from_chars(text.begin(), text.end(), value);
        if (error == std::errc::result_out_of_range)
            return OpcUa_BadOutOfRange;
        return error == std::errc() && stop == text.end() && !text.isEmpty()
                   ? OpcUa_Good
                   : OpcUa_BadDecodingError;
    }
    if (!json.isDouble())
        return OpcUa_BadDecodingError;
    const double number = json.toDouble();
    if (number != std::floor(number))
        return OpcUa_BadDecodingError;
    // One above the largest number is exact in a double, which the number itself may not be.
    const double above = std::ldexp(1., std::numeric_limits<T>::digits);
    if (number < double(std::numeric_limits<T>::min()) || number >= above)
        return OpcUa_BadOutOfRange;
    // Qt keeps integers of 64 bits apart from doubles.
    value = std::is_signed_v<T> || number < std::ldexp(1., 63) ? T(json.toInteger()) : T(number);
    return OpcUa_Good;
}

OpcUa_StatusCode readBytes(const QJsonValue& json, QByteArray& bytes)
{
    if (json.isNull() || json.isUndefined()) {
        bytes = QByteArray();
        return OpcUa_Good;
    }
    const auto decoded = QByteArray::fromBase64Encoding(json.toString().toLatin1(),
                                                        QByteArray::AbortOnBase64DecodingErrors);
    if (!json.isString() || !decoded)
        return OpcUa_BadDecodingError;
    bytes = *decoded;
    return OpcUa_Good;
}

OpcUa_StatusCode readVariant(const QJsonValue& json, OpcUa_Variant& value, int depth);

OpcUa_StatusCode read(const QJsonValue& json, OpcUa_NodeId& value, int depth);
OpcUa_StatusCode read(const QJsonValue& json, OpcUa_Variant& value, int depth);

// One for each stack type; those that are an alias of another one have a name of their own.
OpcUa_StatusCode read(const QJsonValue& json, OpcUa_Boolean& value, int)
{
    value = json.toBool();
    return json.isBool() ? OpcUa_Good : OpcUa_BadDecodingError;
}

template <class T>
std::enable_if_t<std::is_integral_v<T>, OpcUa_StatusCode> read(const QJsonValue& json, T& value,
                                                               int)
{
    return readInteger(json, value);
}

template <class T>
std::enable_if_t<std::is_floating_point_v<T>, OpcUa_StatusCode> read(const QJsonValue& json,
                                                                     T& value, int)
{
    constexpr T infinity = std::numeric_limits<T>::infinity();
    if (json.isDouble()) {
        value = T(json.toDouble());
        return std::isfinite(value) ? OpcUa_Good : OpcUa_BadOutOfRange;
    }
    const QString word = json.toString();
    value = word == u"NaN"         ? std::numeric_limits<T>::quiet_NaN()
            : word == u"-Infinity" ? -infinity
                                   : infinity;
    return word == u"NaN" || word == u"Infinity" || word == u"-Infinity" ? OpcUa_Good
                                                                         : OpcUa_BadDecodingError;
}

OpcUa_StatusCode read(const QJsonValue& json, OpcUa_String& value, int)
{
    if (json.isNull() || json.isUndefined())
        return OpcUa_Good;
    const QByteArray text = json.toString().toUtf8();
    if (!json.isString())
        return OpcUa_BadDecodingError;
    return OpcUa_String_Assign(&value, text.constData(), OpcUa_Int32(text.size()));
}

OpcUa_StatusCode readDateTime(const QJsonValue& json, OpcUa_DateTime& value)
{
    const QString text = json.toString();
    bool ok = false;
    value = UaDateTime::fromString(UaString(text.toUtf8()), &ok).ticks();
    if (value <= earliestTicks)
        value = 0;
    else if (value >= latestTicks)
        value = std::numeric_limits<OpcUa_DateTime>::max();
    return ok ? OpcUa_Good : OpcUa_BadDecodingError;
}

OpcUa_StatusCode read(const QJsonValue& json, OpcUa_Guid& value, int)
{
    UaGuid guid;
    if (OpcUa_IsNotGood(guid.fromString(UaString(json.toString().toUtf8()))))
        return OpcUa_BadDecodingError;
    value = guid;
    return OpcUa_Good;
}

OpcUa_StatusCode read(const QJsonValue& json, OpcUa_ByteString& value, int)
{
    QByteArray bytes;
    const OpcUa_StatusCode status = readBytes(json, bytes);
    if (OpcUa_IsNotGood(status) || bytes.isNull())
        return status;
    return OpcUa_ByteString_Assign(&value, bytes.constData(), OpcUa_Int32(bytes.size()));
}

OpcUa_StatusCode readXmlElement(const QJsonValue& json, OpcUa_XmlElement& value)
{
    const QByteArray text = json.toString().toUtf8();
    if (json.isNull() || json.isUndefined())
        return OpcUa_Good;
    if (!json.isString())
        return OpcUa_BadDecodingError;
    return OpcUa_ByteString_Assign(&value, text.constData(), OpcUa_Int32(text.size()));
}

// Reads the fields of an object, each if it is there.
class ObjectReader
{
public:
    explicit ObjectReader(const QJsonValue& json, int depth)
        : m_object(json.toObject()), m_depth(depth),
          m_status(json.isObject() || json.isNull() || json.isUndefined() ? OpcUa_Good
                                                                          : OpcUa_BadDecodingError)
    {
    }

    OpcUa_StatusCode status() const { return m_status; }
    QJsonValue operator[](const char* name) const { return m_object.value(QLatin1String(name)); }
    template <class T>
    void operator()(const char* name, T& field)
    {
        with(name, [&](const QJsonValue& json) { return read(json, field, m_depth); });
    }
    template <class Function>
    void with(const char* name, Function function)
    {
        const QJsonValue json = (*this)[name];
        if (OpcUa_IsGood(m_status) && !json.isUndefined() && !json.isNull())
            m_status = function(json);
    }

private:
    const QJsonObject m_object;
    const int m_depth;
    OpcUa_StatusCode m_status;
};

void readIdentifier(ObjectReader& object, OpcUa_NodeId& value)
{
    object("IdType", value.IdentifierType);
    switch (value.IdentifierType) {
    case OpcUa_IdentifierType_Numeric:
        return object("Id", value.Identifier.Numeric);
    case OpcUa_IdentifierType_String:
        return object("Id", value.Identifier.String);
    case OpcUa_IdentifierType_Guid:
        return object("Id", value.Identifier.Guid);
    case OpcUa_IdentifierType_Opaque:
        return object("Id", value.Identifier.ByteString);
    default:
        value.IdentifierType = OpcUa_IdentifierType_Numeric;
        object.with("IdType", [](const QJsonValue&) { return OpcUa_BadDecodingError; });
    }
}

OpcUa_StatusCode read(const QJsonValue& json, OpcUa_NodeId& value, int depth)
{
    ObjectReader object(json, depth);
    readIdentifier(object, value);
    object("Namespace", value.NamespaceIndex);
    return object.status();
}

OpcUa_StatusCode read(const QJsonValue& json, OpcUa_ExpandedNodeId& value, int depth)
{
    ObjectReader object(json, depth);
    readIdentifier(object, value.NodeId);
    if (object["Namespace"].isString())
        object("Namespace", value.NamespaceUri);
    else
        object("Namespace", value.NodeId.NamespaceIndex);
    object("ServerUri", value.ServerIndex);
    return object.status();
}

OpcUa_StatusCode readStatusCode(const QJsonValue& json, OpcUa_StatusCode& value)
{
    if (json.isNull() || json.isUndefined())
        return OpcUa_Good;
    return readInteger(json, value);
}

OpcUa_StatusCode read(const QJsonValue& json, OpcUa_QualifiedName& value, int depth)
{
    ObjectReader object(json, depth);
    object("Name", value.Name);
    object("Uri", value.NamespaceIndex);
    return object.status();
}

OpcUa_StatusCode read(const QJsonValue& json, OpcUa_LocalizedText& value, int depth)
{
    ObjectReader object(json, depth);
    object("Locale", value.Locale);
    object("Text", value.Text);
    return object.status();
}

OpcUa_StatusCode read(const QJsonValue& json, OpcUa_ExtensionObject& value, int depth)
{
    constexpr OpcUa_Byte binary = 1;
    constexpr OpcUa_Byte xml = 2;
    ObjectReader object(json, depth);
    object("TypeId", value.TypeId.NodeId);
    object("Encoding", value.Encoding);
    object.with("Body", [&](const QJsonValue& body) -> OpcUa_StatusCode {
        if (value.Encoding == xml)
            return readXmlElement(body, value.Body);
        // A structure in JSON needs its type's description.
        return value.Encoding == binary ? read(body, value.Body, depth) : OpcUa_BadDecodingError;
    });
    return value.Encoding > xml ? OpcUa_BadDecodingError : object.status();
}

OpcUa_StatusCode read(const QJsonValue& json, OpcUa_Variant& value, int depth)
{
    return readVariant(json, value, depth - 1);
}

OpcUa_StatusCode read(const QJsonValue& json, OpcUa_DataValue& value, int depth)
{
    ObjectReader object(json, depth);
    object("Value", value.Value);
    object.with("Status", [&](const QJsonValue& v) { return readStatusCode(v, value.Status); });
    object.with("SourceTimestamp",
                [&](const QJsonValue& v) { return readDateTime(v, value.SourceTimestamp); });
    object("SourcePicoseconds", value.SourcePicoseconds);
    object.with("ServerTimestamp",
                [&](const QJsonValue& v) { return readDateTime(v, value.ServerTimestamp); });
    object("ServerPicoseconds", value.ServerPicoseconds);
    return object.status();
}

OpcUa_StatusCode read(const QJsonValue& json, OpcUa_DiagnosticInfo& value, int depth)
{
    if (json.toObject().isEmpty())
        return json.isObject() || json.isNull() ? OpcUa_Good : OpcUa_BadDecodingError;
    value.SymbolicId = value.NamespaceUri = value.Locale = value.LocalizedText = -1;
    ObjectReader object(json, depth);
    object("SymbolicId", value.SymbolicId);
    object("NamespaceUri", value.NamespaceUri);
    object("Locale", value.Locale);
    object("LocalizedText", value.LocalizedText);
    object("AdditionalInfo", value.AdditionalInfo);
    object.with("InnerStatusCode",
                [&](const QJsonValue& v) { return readStatusCode(v, value.InnerStatusCode); });
    object.with("InnerDiagnosticInfo", [&](const QJsonValue& v) -> OpcUa_StatusCode {
        if (depth <= 0)
            return OpcUa_BadEncodingLimitsExceeded;
        void* inner = OpcUa_Memory_Alloc(sizeof value);
        if (!inner)
            return OpcUa_BadOutOfMemory;
        std::memset(inner, 0, sizeof value);
        value.InnerDiagnosticInfos = static_cast<OpcUa_DiagnosticInfo*>(inner);
        value.NoOfInnerDiagnosticInfos = 1;
        return read(v, value.InnerDiagnosticInfos[0], depth - 1);
    });
    return object.status();
}

struct ElementJson
{
    void (*write)(Writer&, const void* element);
    OpcUa_StatusCode (*read)(const QJsonValue&, void* element, int depth);
};

template <class T>
constexpr ElementJson elementJson()
{
    return {
        [](Writer& writer, const void* element) { writer.write(*static_cast<const T*>(element)); },
        [](const QJsonValue& json, void* element, int depth) {
            return read(json, *static_cast<T*>(element), depth);
        }};
}

template <class T, void (Writer::*write)(T),
          OpcUa_StatusCode (*read)(const QJsonValue&, std::decay_t<T>&)>
constexpr ElementJson aliasJson()
{
    return {[](Writer& writer, const void* element) {
                (writer.*write)(*static_cast<const std::decay_t<T>*>(element));
            },
            [](const QJsonValue& json, void* element, int) {
                return read(json, *static_cast<std::decay_t<T>*>(element));
            }};
}

// Indexed by the type's number.
constexpr ElementJson types[] = {
    {},
    elementJson<OpcUa_Boolean>(),
    elementJson<OpcUa_SByte>(),
    elementJson<OpcUa_Byte>(),
    elementJson<OpcUa_Int16>(),
    elementJson<OpcUa_UInt16>(),
    elementJson<OpcUa_Int32>(),
    elementJson<OpcUa_UInt32>(),
    elementJson<OpcUa_Int64>(),
    elementJson<OpcUa_UInt64>(),
    elementJson<OpcUa_Float>(),
    elementJson<OpcUa_Double>(),
    elementJson<OpcUa_String>(),
    aliasJson<OpcUa_DateTime, &Writer::dateTime, readDateTime>(),
    elementJson<OpcUa_Guid>(),
    elementJson<OpcUa_ByteString>(),
    aliasJson<const OpcUa_XmlElement&, &Writer::xmlElement, readXmlElement>(),
    elementJson<OpcUa_NodeId>(),
    elementJson<OpcUa_ExpandedNodeId>(),
    aliasJson<OpcUa_StatusCode, &Writer::statusCode, readStatusCode>(),
    elementJson<OpcUa_QualifiedName>(),
    elementJson<OpcUa_LocalizedText>(),
    elementJson<OpcUa_ExtensionObject>(),
    elementJson<OpcUa_DataValue>(),
    elementJson<OpcUa_Variant>(),
    elementJson<OpcUa_DiagnosticInfo>(),
};
static_assert(std::size(types) == OpcUaType_DiagnosticInfo + 1);

void Writer::elements(const OpcUa_Variant& value, const char*& next, const OpcUa_UInt32* lengths,
                      OpcUa_Int32 levels)
{
    out += '[';
    for (OpcUa_UInt32 i = 0; i < *lengths; ++i) {
        if (i > 0)
            out += ',';
        if (levels > 1) {
            elements(value, next, lengths + 1, levels - 1);
        } else {
            types[value.Datatype].write(*this, next);
            next += opcUaTypeInfo(value.Datatype)->size;
        }
    }
    out += ']';
}

void Writer::variant(const OpcUa_Variant& value)
{
    const OpcUaTypeInfo* info = opcUaTypeInfo(value.Datatype);
    if (!info)
        return null();
    const OpcUaElements elements = opcUaElements(value);
    const auto& matrix = value.Value.Matrix;
    const bool isMatrix = value.ArrayType == OpcUa_VariantArrayType_Matrix && matrix.Dimensions &&
                          matrix.NoOfDimensions > 0;
    if (m_reversible) {
        begin();
        field("Type", value.Datatype);
        // A Good status is not written (5.4.2.12).
        if (value.Datatype == OpcUaType_StatusCode &&
            value.ArrayType == OpcUa_VariantArrayType_Scalar &&
            value.Value.StatusCode == OpcUa_Good)
            return end();
        key("Body");
    }
    if (value.ArrayType == OpcUa_VariantArrayType_Scalar) {
        if (elements.data)
            types[value.Datatype].write(*this, elements.data);
        else
            null();
    } else {
        const auto* next = static_cast<const char*>(elements.data);
        const auto count = OpcUa_UInt32(elements.count);
        // Without elements, a list of large lengths would only write brackets.
        if (isMatrix && !m_reversible && count > 0)
            this->elements(value, next, matrix.Dimensions, matrix.NoOfDimensions);
        else
            this->elements(value, next, &count, 1);
    }
    if (!m_reversible)
        return;
    if (isMatrix) {
        key("Dimensions");
        out += '[';
        for (OpcUa_Int32 i = 0; i < matrix.NoOfDimensions; ++i) {
            if (i > 0)
                out += ',';
            write(matrix.Dimensions[i]);
        }
        out += ']';
    }
    end();
}

OpcUa_StatusCode readDimensions(const QJsonArray& json, OpcUa_Variant& value)
{
    const auto count = std::size_t(value.Value.Array.Length);
    UaStackTypeArray<OpcUa_UInt32> dimensions;
    if (json.isEmpty() || !dimensions.resize(OpcUa_UInt32(json.size())))
        return json.isEmpty() ? OpcUa_BadDecodingError : OpcUa_BadOutOfMemory;
    std::size_t product = 1;
    bool fits = true;
    bool empty = false;
    for (qsizetype i = 0; i < json.size(); ++i) {
        OpcUa_UInt32& length = dimensions[OpcUa_UInt32(i)];
        const OpcUa_StatusCode status = readInteger(json[i], length);
        if (OpcUa_IsNotGood(status))
            return status;
        fits = fits && length <= count && (product *= length) <= count;
        empty = empty || length == 0;
    }
    if (!(fits && product == count) && !(empty && count == 0))
        return OpcUa_BadDecodingError;
    void* const elements = value.Value.Array.Elements;
    value.ArrayType = OpcUa_VariantArrayType_Matrix;
    value.Value.Matrix.Elements = elements;
    value.Value.Matrix.NoOfDimensions = OpcUa_Int32(dimensions.length());
    value.Value.Matrix.Dimensions = dimensions.detach();
    return OpcUa_Good;
}

OpcUa_StatusCode readVariant(const QJsonValue& json, OpcUa_Variant& value, int depth)
{
    if (json.isNull())
        return OpcUa_Good;
    if (depth < 0)
        return OpcUa_BadEncodingLimitsExceeded;
    if (!json.isObject())
        return OpcUa_BadDecodingError;
    const QJsonObject object = json.toObject();
    const QJsonValue body = object.value(QLatin1String("Body"));
    const QJsonValue dimensions = object.value(QLatin1String("Dimensions"));
    OpcUa_Byte type = 0;
    if (OpcUa_IsNotGood(readInteger(object.value(QLatin1String("Type")), type)) ||
        type >= std::size(types))
        return OpcUa_BadDecodingError;
    if (type == OpcUaType_Null)
        return OpcUa_Good;

    const OpcUaTypeInfo& info = *opcUaTypeInfo(type);
    value.Datatype = type;
    if (!body.isArray()) {
        void* element = &value.Value;
        if (info.boxed) {
            element = value.Value.Boxed = OpcUa_Memory_Alloc(info.size);
            if (!element)
                return OpcUa_BadOutOfMemory;
            std::memset(element, 0, info.size);
        }
        return dimensions.isUndefined() ? types[type].read(body, element, depth)
                                        : OpcUa_BadDecodingError;
    }
    const QJsonArray array = body.toArray();
    value.ArrayType = OpcUa_VariantArrayType_Array;
    auto* elements = static_cast<char*>(OpcUa_Memory_Alloc(std::size_t(array.size()) * info.size));
    if (!elements)
        return OpcUa_BadOutOfMemory;
    value.Value.Array.Elements = elements;
    for (const auto& element : array) {
        void* target = elements + std::size_t(value.Value.Array.Length) * info.size;
        std::memset(target, 0, info.size);
        ++value.Value.Array.Length;
        const OpcUa_StatusCode status = types[type].read(element, target, depth);
        if (OpcUa_IsNotGood(status))
            return status;
    }
    return dimensions.isUndefined() ? OpcUa_Good : readDimensions(dimensions.toArray(), value);
}

} // namespace

QByteArray UaVariant::toJson(UaJsonForm form) const
{
    Writer writer(form);
    writer.variant(**this);
    return writer.out;
}

OpcUa_StatusCode UaVariant::fromJson(QByteArrayView json, const UaEncodingLimits& limits)
{
    if (json.size() > qsizetype(limits.messageSize))
        return OpcUa_BadEncodingLimitsExceeded;
    // Qt reads objects and arrays only; "null" is a value, too.
    const QJsonDocument document = QJsonDocument::fromJson('[' + json.toByteArray() + ']');
    const QJsonArray array = document.array();
    if (array.size() != 1)
        return OpcUa_BadDecodingError;
    UaVariant value;
    OpcUa_Variant stack = {};
    const OpcUa_StatusCode status = readVariant(array.first(), stack, limits.nestingDepth);
    value.attach(&stack);
    if (OpcUa_IsGood(status))
        *this = value;
    return status;
}

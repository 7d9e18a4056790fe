#include "structures.h"

#include "platform/types/uaextensionobject.h"
#include "platform/types/uavariant.h"
#include "platform/wire/binarycodec_p.h"

KESTREL_STACK_FIELDS(QvelArgument, v(s.name...); v(s.dataType...); v(s.valueRank...);
                     v(s.arrayDimensions...); v(s.description...);)
KESTREL_STACK_FIELDS(QvelEnumValue, v(s.value...); v(s.displayName...); v(s.description...);)
KESTREL_STACK_FIELDS(QvelEngineeringUnits, v(s.namespaceUri...); v(s.unitId...);
                     v(s.displayName...); v(s.description...);)
KESTREL_STACK_FIELDS(QvelRange, v(s.low...); v(s.high...);)
KESTREL_STACK_FIELDS(QvelEnumField, v(s.value...); v(s.displayName...); v(s.description...);
                     v(s.name...);)
KESTREL_STACK_FIELDS(QvelEnumDefinition, v(s.fields...);)
KESTREL_STACK_FIELDS(QvelStructureField, v(s.name...); v(s.description...); v(s.dataType...);
                     v(s.valueRank...); v(s.arrayDimensions...); v(s.maxStringLength...);
                     v(s.isOptional...);)
KESTREL_STACK_FIELDS(QvelStructureDefinition, v(s.defaultEncodingId...); v(s.baseDataType...);
                     v(s.structureType...); v(s.fields...);)

namespace {

// The NodeId of the binary encoding (OPC 10000-6, A.3).
template <class T>
constexpr OpcUa_UInt32 encodingId = 0;
template <>
constexpr OpcUa_UInt32 encodingId<QvelArgument> = 298;
template <>
constexpr OpcUa_UInt32 encodingId<QvelEnumValue> = 8251;
template <>
constexpr OpcUa_UInt32 encodingId<QvelEngineeringUnits> = 889;
template <>
constexpr OpcUa_UInt32 encodingId<QvelRange> = 886;
template <>
constexpr OpcUa_UInt32 encodingId<QvelEnumDefinition> = 123;
template <>
constexpr OpcUa_UInt32 encodingId<QvelStructureDefinition> = 122;

template <class T>
std::optional<T> decoded(const UaExtensionObject& object)
{
    constexpr OpcUa_Byte binary = 1;
    const UaExpandedNodeId& type = object.typeId();
    if (object.encoding() != binary || type.nodeId() != UaNodeId(encodingId<T>) ||
        (!type.namespaceUri().isEmpty() && type.namespaceUri() != "http://opcfoundation.org/UA/"))
        return {};
    const QByteArray& body = object.body().bytes();
    UaWire::BinaryDecoder decoder(body);
    T value;
    decoder(value);
    if (OpcUa_IsNotGood(decoder.status()) || !decoder.rest().isEmpty())
        return {};
    return value;
}

template <class T>
std::optional<QList<T>> decodedList(const UaVariant& value)
{
    QList<T> list;
    const QList<UaExtensionObject> objects = value.toExtensionObjectArray();
    if (objects.isEmpty() && !value.isEmpty() &&
        (value.arrayType() != OpcUa_VariantArrayType_Array ||
         value.type() != OpcUaType_ExtensionObject))
        return {};
    for (const UaExtensionObject& object : objects) {
        const std::optional<T> element = decoded<T>(object);
        if (!element)
            return {};
        list.append(*element);
    }
    return list;
}

} // namespace

#define KESTREL_DECODE(Type)                                                                       \
    std::optional<Type> Type::fromVariant(const UaVariant& value)                                  \
    {                                                                                              \
        return decoded<Type>(value.toExtensionObject());                                           \
    }
#define KESTREL_DECODE_LIST(Type)                                                                  \
    std::optional<QList<Type>> Type::listFromVariant(const UaVariant& value)                       \
    {                                                                                              \
        return decodedList<Type>(value);                                                           \
    }
KESTREL_DECODE(QvelArgument)
KESTREL_DECODE(QvelEnumValue)
KESTREL_DECODE(QvelEngineeringUnits)
KESTREL_DECODE(QvelRange)
KESTREL_DECODE(QvelEnumDefinition)
KESTREL_DECODE(QvelStructureDefinition)
KESTREL_DECODE_LIST(QvelArgument)
KESTREL_DECODE_LIST(QvelEnumValue)

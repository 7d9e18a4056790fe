#include "uavariant.h"

#include "platform/stack/opcuastatuscodes.h"
#include "platform/stack/opcuatypetable_p.h"
#include "platform/types/uabytestring.h"
#include "platform/types/uadatetime.h"
#include "platform/types/uaexpandednodeid.h"
#include "platform/types/uaextensionobject.h"
#include "platform/types/uaguid.h"
#include "platform/types/uanames.h"
#include "platform/types/uanodeid.h"
#include "platform/types/uastacktypearray.h"
#include "platform/types/uastatuscode.h"
#include "platform/types/uastring.h"
#include "platform/types/valueparse_p.h"
#include "platform/types/valuetext_p.h"

#include <QtCore/QSharedData>

#include <algorithm>
#include <limits>
#include <type_traits>
#include <utility>

class UaVariant::Data : public QSharedData
{
public:
    Data() { OpcUa_Variant_Initialize(&variant); }
    ~Data()
    {
        if (bytes.isNull())
            OpcUa_Variant_Clear(&variant);
    }
    Q_DISABLE_COPY_MOVE(Data)

    OpcUa_Variant variant;
    // A scalar of bytes or text shares the storage of the value that it was set from; the variant
    // then only points into it.
    QByteArray bytes;
};

UaVariant::UaVariant() = default;
UaVariant::UaVariant(const UaVariant& other) = default;
UaVariant::UaVariant(UaVariant&& other) noexcept = default;
UaVariant& UaVariant::operator=(const UaVariant& other) = default;
UaVariant& UaVariant::operator=(UaVariant&& other) noexcept = default;
UaVariant::~UaVariant() = default;

UaVariant::UaVariant(const OpcUa_Variant& value)
{
    if (!assign(value))
        clear();
}

bool UaVariant::assign(const OpcUa_Variant& value)
{
    QExplicitlySharedDataPointer<Data> fresh;
    if (value.Datatype != OpcUaType_Null) {
        fresh = new Data;
        if (OpcUa_IsNotGood(OpcUa_Variant_CopyTo(&value, &fresh->variant)))
            return false;
    }
    d = fresh;
    return true;
}

void UaVariant::attach(OpcUa_Variant* value)
{
    d.reset();
    if (value->Datatype != OpcUaType_Null) {
        d = new Data;
        std::swap(d->variant, *value);
    }
}

OpcUa_BuiltInType UaVariant::type() const
{
    return d ? OpcUa_BuiltInType(d->variant.Datatype) : OpcUaType_Null;
}

OpcUa_VariantArrayType UaVariant::arrayType() const
{
    return d ? OpcUa_VariantArrayType(d->variant.ArrayType) : OpcUa_VariantArrayType_Scalar;
}

void UaVariant::clear()
{
    d.reset();
}

UaVariant::operator const OpcUa_Variant*() const
{
    static const OpcUa_Variant empty = {};
    return d ? &d->variant : &empty;
}

OpcUa_Variant* UaVariant::detach()
{
    if (!d || d->ref.loadRelaxed() != 1 || !d->bytes.isNull()) {
        QExplicitlySharedDataPointer<Data> copy(new Data);
        if (d && OpcUa_IsNotGood(OpcUa_Variant_CopyTo(&d->variant, &copy->variant)))
            return nullptr;
        d = copy;
    }
    return &d->variant;
}

OpcUa_VariantValue& UaVariant::reset(OpcUa_BuiltInType type)
{
    d = new Data;
    d->variant.Datatype = OpcUa_Byte(type);
    return d->variant.Value;
}

// The value of a scalar of one type, and all zeros, the null value of every type, otherwise.
const OpcUa_VariantValue& UaVariant::scalar(OpcUa_BuiltInType type) const
{
    static const OpcUa_VariantValue null = {};
    const OpcUa_Variant& v = **this;
    return v.Datatype == type && v.ArrayType == OpcUa_VariantArrayType_Scalar ? v.Value : null;
}

namespace {

// How a value gets into the stack's structure, and comes out of it.
template <class Value, class Stack>
OpcUa_StatusCode store(const Value& value, Stack* target)
{
    if constexpr (std::is_same_v<Value, UaVariant>)
        return OpcUa_Variant_CopyTo(value, target);
    else if constexpr (std::is_same_v<Value, UaDateTime>)
        *target = value.ticks();
    else if constexpr (std::is_same_v<Value, UaStatusCode>)
        *target = value.code();
    else if constexpr (std::is_convertible_v<Value, Stack>)
        *target = value;
    else
        return value.copyTo(target);
    return OpcUa_Good;
}

template <class Value, class Stack>
Value load(const Stack& stack)
{
    if constexpr (std::is_constructible_v<Value, const Stack*> && !std::is_arithmetic_v<Value> &&
                  !std::is_same_v<Value, UaVariant>)
        return Value(&stack);
    else
        return Value(stack);
}

} // namespace

template <class Value, class Stack>
bool UaVariant::setScalar(OpcUa_BuiltInType type, const Value& value,
                          Stack OpcUa_VariantValue::*member)
{
    QExplicitlySharedDataPointer<Data> fresh(new Data);
    fresh->variant.Datatype = OpcUa_Byte(type);
    if (OpcUa_IsNotGood(store(value, &(fresh->variant.Value.*member))))
        return false;
    d = fresh;
    return true;
}

#define KESTREL_VARIANT_SCALAR(Name, Type, Class, Argument, Result)                                \
    UaVariant::UaVariant(Argument value)                                                           \
    {                                                                                              \
        set##Name(value);                                                                          \
    }                                                                                              \
    Result UaVariant::set##Name(Argument value)                                                    \
    {                                                                                              \
        return Result(setScalar(OpcUaType_##Type, value, &OpcUa_VariantValue::Type));              \
    }                                                                                              \
    Class UaVariant::to##Name() const                                                              \
    {                                                                                              \
        return load<Class>(scalar(OpcUaType_##Type).Type);                                         \
    }
#define KESTREL_VARIANT_NUMBER(Name, Type, Stack)                                                  \
    KESTREL_VARIANT_SCALAR(Name, Type, Stack, Stack, void)

KESTREL_VARIANT_NUMBER(Bool, Boolean, OpcUa_Boolean)
KESTREL_VARIANT_NUMBER(SByte, SByte, OpcUa_SByte)
KESTREL_VARIANT_NUMBER(Byte, Byte, OpcUa_Byte)
KESTREL_VARIANT_NUMBER(Int16, Int16, OpcUa_Int16)
KESTREL_VARIANT_NUMBER(UInt16, UInt16, OpcUa_UInt16)
KESTREL_VARIANT_NUMBER(Int32, Int32, OpcUa_Int32)
KESTREL_VARIANT_NUMBER(UInt32, UInt32, OpcUa_UInt32)
KESTREL_VARIANT_NUMBER(Int64, Int64, OpcUa_Int64)
KESTREL_VARIANT_NUMBER(UInt64, UInt64, OpcUa_UInt64)
KESTREL_VARIANT_NUMBER(Float, Float, OpcUa_Float)
KESTREL_VARIANT_NUMBER(Double, Double, OpcUa_Double)
KESTREL_VARIANT_SCALAR(DateTime, DateTime, UaDateTime, const UaDateTime&, void)
KESTREL_VARIANT_SCALAR(Guid, Guid, UaGuid, const UaGuid&, void)
KESTREL_VARIANT_SCALAR(StatusCode, StatusCode, UaStatusCode, const UaStatusCode&, void)
KESTREL_VARIANT_SCALAR(NodeId, NodeId, UaNodeId, const UaNodeId&, bool)
KESTREL_VARIANT_SCALAR(ExpandedNodeId, ExpandedNodeId, UaExpandedNodeId, const UaExpandedNodeId&,
                       bool)
KESTREL_VARIANT_SCALAR(QualifiedName, QualifiedName, UaQualifiedName, const UaQualifiedName&, bool)
KESTREL_VARIANT_SCALAR(LocalizedText, LocalizedText, UaLocalizedText, const UaLocalizedText&, bool)
#undef KESTREL_VARIANT_NUMBER
#undef KESTREL_VARIANT_SCALAR

template <class Value, class Stack>
bool UaVariant::setElements(OpcUa_BuiltInType type, const UaArrayView<Value, Stack>& elements,
                            const Dimensions* dimensions)
{
    const std::size_t count = elements.size();
    if (count > std::size_t(std::numeric_limits<OpcUa_Int32>::max()) / sizeof(Stack))
        return false;
    UaVariant fresh;
    if (dimensions) {
        if (!dimensions->size() || elementCount(*dimensions) != OpcUa_Int32(count))
            return false;
        fresh.setEmptyMatrix(type);
        if (!fresh.setDimensions(*dimensions))
            return false;
    } else {
        fresh.setEmptyArray(type);
        if (!fresh.resize(count))
            return false;
    }
    const OpcUaNesting nesting; // that of the elements in this value
    auto* target = static_cast<Stack*>(opcUaElements(*fresh).data);
    if constexpr (std::is_arithmetic_v<Stack> && std::is_same_v<Value, Stack>) {
        OpcUa_Memory_MemCpy(target, elements.stack(), count * sizeof(Stack));
    } else {
        const OpcUaTypeInfo& info = *opcUaTypeInfo(OpcUa_Byte(type));
        for (std::size_t i = 0; i < count; ++i) {
            OpcUa_StatusCode status = OpcUa_Good;
            if (elements.stack())
                status = info.copy(elements.stack() + i, target + i);
            else if constexpr (!std::is_same_v<Value, Stack>)
                status = store(elements.values()[i], target + i);
            if (OpcUa_IsNotGood(status))
                return false;
        }
    }
    *this = std::move(fresh);
    return true;
}

template <class Value, class Stack>
QList<Value> UaVariant::elements(OpcUa_BuiltInType type, OpcUa_VariantArrayType shape) const
{
    QList<Value> result;
    if (this->type() != type || arrayType() != shape)
        return result;
    const OpcUaElements all = opcUaElements(**this);
    const auto* source = static_cast<const Stack*>(all.data);
    result.reserve(qsizetype(all.count));
    for (std::size_t i = 0; i < all.count; ++i)
        result.append(load<Value>(source[i]));
    return result;
}

#define KESTREL_VARIANT_SETTERS(Name, Type, Value, Stack)                                          \
    bool UaVariant::set##Name##Array(const UaArrayView<Value, Stack>& elements)                    \
    {                                                                                              \
        return setElements(OpcUaType_##Type, elements);                                            \
    }                                                                                              \
    bool UaVariant::set##Name##Matrix(const UaArrayView<Value, Stack>& elements,                   \
                                      const Dimensions& dimensions)                                \
    {                                                                                              \
        return setElements(OpcUaType_##Type, elements, &dimensions);                               \
    }
#define KESTREL_VARIANT_GETTERS(Name, Type, Value, Stack)                                          \
    QList<Value> UaVariant::to##Name##Array() const                                                \
    {                                                                                              \
        return elements<Value, Stack>(OpcUaType_##Type, OpcUa_VariantArrayType_Array);             \
    }                                                                                              \
    QList<Value> UaVariant::to##Name##Matrix() const                                               \
    {                                                                                              \
        return elements<Value, Stack>(OpcUaType_##Type, OpcUa_VariantArrayType_Matrix);            \
    }
KESTREL_VARIANT_TYPES(KESTREL_VARIANT_SETTERS)
KESTREL_VARIANT_TYPES(KESTREL_VARIANT_GETTERS)
KESTREL_VARIANT_SETTERS(DataValue, DataValue, OpcUa_DataValue, OpcUa_DataValue)
KESTREL_VARIANT_SETTERS(DiagnosticInfo, DiagnosticInfo, OpcUa_DiagnosticInfo, OpcUa_DiagnosticInfo)
#undef KESTREL_VARIANT_SETTERS
#undef KESTREL_VARIANT_GETTERS

UaVariant::UaVariant(const UaString& value)
{
    setString(value);
}

UaVariant::UaVariant(const char* utf8) : UaVariant(UaString(utf8)) {}

UaVariant::UaVariant(const UaByteString& value)
{
    setByteString(value);
}

UaVariant::UaVariant(const UaExtensionObject& value)
{
    setExtensionObject(value);
}

void UaVariant::setString(const UaString& value)
{
    setBytes(OpcUaType_String, value.bytes());
}

// By value: what it is given may belong to what this variant holds.
void UaVariant::setBytes(OpcUa_BuiltInType type, QByteArray shared)
{
    OpcUa_VariantValue& target = reset(type);
    d->bytes = shared;
    if (shared.isNull())
        return;
    char* data = const_cast<char*>(d->bytes.constData());
    if (type == OpcUaType_String)
        target.String = {OpcUa_Int32(shared.size()), data};
    else
        target.ByteString = {OpcUa_Int32(shared.size()), reinterpret_cast<OpcUa_Byte*>(data)};
}

UaByteString UaVariant::bytes(OpcUa_BuiltInType type) const
{
    const OpcUa_ByteString& value = scalar(type).ByteString;
    return value.Data && !d->bytes.isNull() ? UaByteString(d->bytes) : UaByteString(&value);
}

void UaVariant::setByteString(const UaByteString& value)
{
    setBytes(OpcUaType_ByteString, value.bytes());
}

UaByteString UaVariant::toByteString() const
{
    return bytes(OpcUaType_ByteString);
}

void UaVariant::setXmlElement(const UaByteString& value)
{
    setBytes(OpcUaType_XmlElement, value.bytes());
}

UaByteString UaVariant::toXmlElement() const
{
    return bytes(OpcUaType_XmlElement);
}

bool UaVariant::setExtensionObject(const UaExtensionObject& value)
{
    UaVariant fresh;
    auto* object =
        static_cast<OpcUa_ExtensionObject*>(OpcUa_Memory_Alloc(sizeof(OpcUa_ExtensionObject)));
    if (!object)
        return false;
    OpcUa_ExtensionObject_Initialize(object);
    fresh.reset(OpcUaType_ExtensionObject).Boxed = object;
    if (OpcUa_IsNotGood(value.copyTo(object)))
        return false;
    *this = std::move(fresh);
    return true;
}

UaExtensionObject UaVariant::toExtensionObject() const
{
    const void* object = scalar(OpcUaType_ExtensionObject).Boxed;
    return object ? UaExtensionObject(*static_cast<const OpcUa_ExtensionObject*>(object))
                  : UaExtensionObject();
}

void UaVariant::setEmptyArray(OpcUa_BuiltInType type)
{
    clear();
    if (!opcUaTypeInfo(OpcUa_Byte(type)))
        return;
    reset(type);
    d->variant.ArrayType = OpcUa_VariantArrayType_Array;
}

void UaVariant::setEmptyMatrix(OpcUa_BuiltInType type)
{
    clear();
    auto* dimensions = static_cast<OpcUa_UInt32*>(OpcUa_Memory_Alloc(sizeof(OpcUa_UInt32)));
    if (!opcUaTypeInfo(OpcUa_Byte(type)) || !dimensions)
        return OpcUa_Memory_Free(dimensions);
    *dimensions = 0;
    auto& matrix = reset(type).Matrix;
    d->variant.ArrayType = OpcUa_VariantArrayType_Matrix;
    matrix.NoOfDimensions = 1;
    matrix.Dimensions = dimensions;
}

OpcUa_StatusCode UaVariant::changeType(OpcUa_BuiltInType type, bool toArray)
{
    if (arrayType() != OpcUa_VariantArrayType_Scalar || isEmpty())
        return OpcUa_BadTypeMismatch;
    UaVariant converted = *this;
    if (type != this->type()) {
        const OpcUa_StatusCode status = parseValue(type, toString(), converted);
        if (OpcUa_IsNotGood(status))
            return status;
    }
    if (toArray) {
        UaVariant array;
        array.setEmptyArray(type);
        if (!array.resize(1) || !array.setElement(0, converted))
            return OpcUa_BadOutOfMemory;
        converted = array;
    }
    *this = converted;
    return OpcUa_Good;
}

OpcUa_Int32 UaVariant::arraySize() const
{
    return arrayType() == OpcUa_VariantArrayType_Scalar ? 0
                                                        : OpcUa_Int32(opcUaElements(**this).count);
}

void UaVariant::arrayDimensions(UaStackTypeArray<OpcUa_UInt32>& dimensions) const
{
    dimensions.clear();
    const OpcUa_Variant& v = **this;
    const auto& matrix = v.Value.Matrix;
    if (v.ArrayType == OpcUa_VariantArrayType_Matrix && matrix.Dimensions &&
        matrix.NoOfDimensions > 0 && dimensions.resize(OpcUa_UInt32(matrix.NoOfDimensions)))
        std::copy_n(matrix.Dimensions, matrix.NoOfDimensions, dimensions.begin());
}

UaString UaVariant::toString() const
{
    return UaString(variantText(**this, ValueText::Bare));
}

UaString UaVariant::toFullString() const
{
    return UaString(variantText(**this, ValueText::Full));
}

bool operator==(const UaVariant& a, const UaVariant& b)
{
    return a.d == b.d || OpcUa_Variant_Equal(a, b);
}

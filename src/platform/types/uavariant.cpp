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
#include "platform/types/variantelements_p.h"

#include <QtCore/QSharedData>

#include <algorithm>
#include <cstring>

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
    if (value.Datatype == OpcUaType_Null)
        return;
    d = new Data;
    if (OpcUa_IsNotGood(OpcUa_Variant_CopyTo(&value, &d->variant)))
        d.reset();
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

#define KESTREL_VARIANT_NUMBER(Name, Type, Stack)                                                  \
    void UaVariant::set##Name(Stack value)                                                         \
    {                                                                                              \
        reset(OpcUaType_##Type).Type = value;                                                      \
    }                                                                                              \
    Stack UaVariant::to##Name() const                                                              \
    {                                                                                              \
        return scalar(OpcUaType_##Type).Type;                                                      \
    }

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
#undef KESTREL_VARIANT_NUMBER

// A value class copies itself into the stack and is built of what the stack holds.
#define KESTREL_VARIANT_CLASS(Type, Class)                                                         \
    void UaVariant::set##Type(const Class& value)                                                  \
    {                                                                                              \
        value.copyTo(&reset(OpcUaType_##Type).Type);                                               \
    }                                                                                              \
    Class UaVariant::to##Type() const                                                              \
    {                                                                                              \
        return Class(scalar(OpcUaType_##Type).Type);                                               \
    }

KESTREL_VARIANT_CLASS(NodeId, UaNodeId)
KESTREL_VARIANT_CLASS(ExpandedNodeId, UaExpandedNodeId)
KESTREL_VARIANT_CLASS(QualifiedName, UaQualifiedName)
KESTREL_VARIANT_CLASS(LocalizedText, UaLocalizedText)
#undef KESTREL_VARIANT_CLASS

void UaVariant::setString(const UaString& value)
{
    OpcUa_String& target = reset(OpcUaType_String).String;
    d->bytes = value.bytes();
    if (!value.isNull())
        target = {value.size(), const_cast<char*>(d->bytes.constData())};
}

void UaVariant::setBytes(OpcUa_BuiltInType type, const UaByteString& value)
{
    OpcUa_ByteString& target = reset(type).ByteString;
    d->bytes = value.bytes();
    if (!value.isNull())
        target = {value.length(),
                  reinterpret_cast<OpcUa_Byte*>(const_cast<char*>(d->bytes.constData()))};
}

UaByteString UaVariant::bytes(OpcUa_BuiltInType type) const
{
    const OpcUa_ByteString& value = scalar(type).ByteString;
    return value.Data && !d->bytes.isNull() ? UaByteString(d->bytes) : UaByteString(&value);
}

void UaVariant::setByteString(const UaByteString& value)
{
    setBytes(OpcUaType_ByteString, value);
}

UaByteString UaVariant::toByteString() const
{
    return bytes(OpcUaType_ByteString);
}

void UaVariant::setXmlElement(const UaByteString& value)
{
    setBytes(OpcUaType_XmlElement, value);
}

UaByteString UaVariant::toXmlElement() const
{
    return bytes(OpcUaType_XmlElement);
}

void UaVariant::setDateTime(const UaDateTime& value)
{
    reset(OpcUaType_DateTime).DateTime = value.ticks();
}

UaDateTime UaVariant::toDateTime() const
{
    return UaDateTime(scalar(OpcUaType_DateTime).DateTime);
}

void UaVariant::setGuid(const UaGuid& value)
{
    reset(OpcUaType_Guid).Guid = value;
}

UaGuid UaVariant::toGuid() const
{
    return UaGuid(scalar(OpcUaType_Guid).Guid);
}

void UaVariant::setStatusCode(const UaStatusCode& value)
{
    reset(OpcUaType_StatusCode).StatusCode = value.code();
}

UaStatusCode UaVariant::toStatusCode() const
{
    return UaStatusCode(scalar(OpcUaType_StatusCode).StatusCode);
}

void UaVariant::setExtensionObject(const UaExtensionObject& value)
{
    OpcUa_VariantValue& target = reset(OpcUaType_ExtensionObject);
    auto* object =
        static_cast<OpcUa_ExtensionObject*>(OpcUa_Memory_Alloc(sizeof(OpcUa_ExtensionObject)));
    if (!object)
        return clear();
    OpcUa_ExtensionObject_Initialize(object);
    target.Boxed = object;
    value.copyTo(object);
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

UaVariant UaVariant::elementAt(OpcUa_Int32 index) const
{
    const OpcUa_Variant& v = **this;
    const OpcUaElements elements = opcUaElements(v);
    if (v.ArrayType == OpcUa_VariantArrayType_Scalar || index < 0 ||
        std::size_t(index) >= elements.count)
        return UaVariant();
    const OpcUaTypeInfo& info = *opcUaTypeInfo(v.Datatype);
    const void* element = static_cast<char*>(elements.data) + std::size_t(index) * info.size;
    if (v.Datatype == OpcUaType_Variant)
        return UaVariant(*static_cast<const OpcUa_Variant*>(element));
    UaVariant result;
    OpcUa_VariantValue& target = result.reset(OpcUa_BuiltInType(v.Datatype));
    void* copy = &target;
    if (info.boxed) {
        copy = target.Boxed = OpcUa_Memory_Alloc(info.size);
        if (!copy)
            return UaVariant();
        std::memset(copy, 0, info.size);
    }
    if (OpcUa_IsNotGood(info.copy(element, copy)))
        return UaVariant();
    return result;
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
        if (!resizeElements(array, 1) || !setElement(array, 0, converted))
            return OpcUa_BadOutOfMemory;
        converted = array;
    }
    *this = converted;
    return OpcUa_Good;
}

UaVariant::UaVariant(OpcUa_Boolean value)
{
    setBool(value);
}

UaVariant::UaVariant(OpcUa_Byte value)
{
    setByte(value);
}

UaVariant::UaVariant(OpcUa_Int32 value)
{
    setInt32(value);
}

UaVariant::UaVariant(OpcUa_UInt32 value)
{
    setUInt32(value);
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

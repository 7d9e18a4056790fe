#include "uavariant.h"

#include "../stack/opcuastatuscodes.h"
#include "uanodeid.h"
#include "uastring.h"

#include <QtCore/QSharedData>

class UaVariant::Data : public QSharedData
{
public:
    Data() { OpcUa_Variant_Initialize(&variant); }
    ~Data() { OpcUa_Variant_Clear(&variant); }
    Q_DISABLE_COPY_MOVE(Data)

    OpcUa_Variant variant;
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
    if (!d || d->ref.loadRelaxed() != 1) {
        QExplicitlySharedDataPointer<Data> copy(new Data);
        if (d && OpcUa_IsNotGood(OpcUa_Variant_CopyTo(&d->variant, &copy->variant)))
            return nullptr;
        d = copy;
    }
    return &d->variant;
}

OpcUa_Variant* UaVariant::reset(OpcUa_BuiltInType type)
{
    d = new Data;
    d->variant.Datatype = OpcUa_Byte(type);
    return &d->variant;
}

void UaVariant::setNodeId(const UaNodeId& value)
{
    value.copyTo(&reset(OpcUaType_NodeId)->Value.NodeId);
}

void UaVariant::setString(const UaString& value)
{
    value.copyTo(&reset(OpcUaType_String)->Value.String);
}

static bool holdsScalar(const OpcUa_Variant& variant, OpcUa_BuiltInType type)
{
    return variant.Datatype == type && variant.ArrayType == OpcUa_VariantArrayType_Scalar;
}

UaNodeId UaVariant::toNodeId() const
{
    const OpcUa_Variant& v = **this;
    return holdsScalar(v, OpcUaType_NodeId) ? UaNodeId(v.Value.NodeId) : UaNodeId();
}

UaString UaVariant::toString() const
{
    const OpcUa_Variant& v = **this;
    return holdsScalar(v, OpcUaType_String) ? UaString(&v.Value.String) : UaString();
}

bool operator==(const UaVariant& a, const UaVariant& b)
{
    return a.d == b.d || OpcUa_Variant_Equal(a, b);
}

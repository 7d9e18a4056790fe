#pragma once

#include "../../kestrelexport.h"
#include "../stack/opcuatypes.h"

#include <QtCore/QMetaType>
#include <QtCore/QSharedDataPointer>

class UaNodeId;
class UaString;

/// A value of any built-in type: a scalar, an array or a matrix (OPC 10000-6, 5.1.6).
///
/// Copies share their storage, whatever its size; a copy costs nothing until someone writes.
/// A value is read on any thread; one object may only be used by one thread at a time.
class KESTREL_EXPORT UaVariant
{
public:
    /// The empty (null) value.
    UaVariant();
    UaVariant(const UaVariant& other);
    UaVariant(UaVariant&& other) noexcept;
    UaVariant& operator=(const UaVariant& other);
    UaVariant& operator=(UaVariant&& other) noexcept;
    ~UaVariant();
    /// A deep copy; the empty value when there is no memory for it.
    explicit UaVariant(const OpcUa_Variant& value);

    OpcUa_BuiltInType type() const;
    OpcUa_VariantArrayType arrayType() const;
    bool isEmpty() const { return type() == OpcUaType_Null; }
    void clear();

    /// For reading; valid until this object changes.
    operator const OpcUa_Variant*() const;
    /// The one door to editing in place: detaches from every other holder first, and gives null,
    /// with nothing changed, when there is no memory for that.
    OpcUa_Variant* detach();

    void setNodeId(const UaNodeId& value);
    void setString(const UaString& value);
    /// The value of a scalar of just this type; a null value for anything else.
    UaNodeId toNodeId() const;
    UaString toString() const;

    /// Equal type, shape and elements.
    friend KESTREL_EXPORT bool operator==(const UaVariant& a, const UaVariant& b);
    friend bool operator!=(const UaVariant& a, const UaVariant& b) { return !(a == b); }

private:
    class Data;
    OpcUa_Variant* reset(OpcUa_BuiltInType type);
    QExplicitlySharedDataPointer<Data> d;
};

Q_DECLARE_METATYPE(UaVariant)

#pragma once

#include "../../kestrelexport.h"
#include "../stack/opcuatypes.h"

#include <QtCore/QMetaType>
#include <QtCore/QSharedDataPointer>

class UaByteString;
class UaDateTime;
class UaExpandedNodeId;
class UaExtensionObject;
class UaGuid;
class UaLocalizedText;
class UaNodeId;
class UaQualifiedName;
class UaStatusCode;
class UaString;
template <class T>
class UaStackTypeArray;

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
    explicit UaVariant(OpcUa_Boolean value);
    explicit UaVariant(OpcUa_Byte value);
    explicit UaVariant(OpcUa_Int32 value);
    explicit UaVariant(OpcUa_UInt32 value);
    UaVariant(const void*) = delete; // a pointer is not a Boolean

    OpcUa_BuiltInType type() const;
    OpcUa_VariantArrayType arrayType() const;
    bool isEmpty() const { return type() == OpcUaType_Null; }
    /// Number of elements of an array or matrix, as far as storage backs it; 0 for a scalar.
    OpcUa_Int32 arraySize() const;
    /// The lengths of a matrix; none for anything else.
    void arrayDimensions(UaStackTypeArray<OpcUa_UInt32>& dimensions) const;
    void clear();

    /// For reading; valid until this object changes.
    operator const OpcUa_Variant*() const;
    /// The one door to editing in place: detaches from every other holder first, and gives null,
    /// with nothing changed, when there is no memory for that.
    OpcUa_Variant* detach();

    /// Each replaces the value by a scalar.
    void setBool(OpcUa_Boolean value);
    void setSByte(OpcUa_SByte value);
    void setByte(OpcUa_Byte value);
    void setInt16(OpcUa_Int16 value);
    void setUInt16(OpcUa_UInt16 value);
    void setInt32(OpcUa_Int32 value);
    void setUInt32(OpcUa_UInt32 value);
    void setInt64(OpcUa_Int64 value);
    void setUInt64(OpcUa_UInt64 value);
    void setFloat(OpcUa_Float value);
    void setDouble(OpcUa_Double value);
    void setString(const UaString& value);
    void setDateTime(const UaDateTime& value);
    void setGuid(const UaGuid& value);
    void setByteString(const UaByteString& value);
    /// The bytes are the element's text in UTF-8.
    void setXmlElement(const UaByteString& value);
    void setNodeId(const UaNodeId& value);
    void setExpandedNodeId(const UaExpandedNodeId& value);
    void setStatusCode(const UaStatusCode& value);
    void setQualifiedName(const UaQualifiedName& value);
    void setLocalizedText(const UaLocalizedText& value);
    void setExtensionObject(const UaExtensionObject& value);
    /// An array of a type, without elements. A type that has none gives the empty value.
    void setEmptyArray(OpcUa_BuiltInType type);
    /// A matrix of a type, with one dimension of length 0.
    void setEmptyMatrix(OpcUa_BuiltInType type);

    /// Each gives the value of a scalar of just that type, and a null value for anything else.
    OpcUa_Boolean toBool() const;
    OpcUa_SByte toSByte() const;
    OpcUa_Byte toByte() const;
    OpcUa_Int16 toInt16() const;
    OpcUa_UInt16 toUInt16() const;
    OpcUa_Int32 toInt32() const;
    OpcUa_UInt32 toUInt32() const;
    OpcUa_Int64 toInt64() const;
    OpcUa_UInt64 toUInt64() const;
    OpcUa_Float toFloat() const;
    OpcUa_Double toDouble() const;
    UaDateTime toDateTime() const;
    UaGuid toGuid() const;
    UaByteString toByteString() const;
    UaByteString toXmlElement() const;
    UaNodeId toNodeId() const;
    UaExpandedNodeId toExpandedNodeId() const;
    UaStatusCode toStatusCode() const;
    UaQualifiedName toQualifiedName() const;
    UaLocalizedText toLocalizedText() const;
    UaExtensionObject toExtensionObject() const;
    /// One element of an array or matrix as a value of its own; for an array of Variants, what the
    /// Variant holds. The empty value for an index that no element backs.
    UaVariant elementAt(OpcUa_Int32 index) const;

    /// Converts a scalar by way of its text: into a Boolean, number, String, DateTime, Guid or
    /// ByteString. The whole text must be of that type, in the C locale, and in its range. With
    /// `toArray`, the scalar becomes an array of one. Good, BadTypeMismatch or BadOutOfRange; this
    /// value is unchanged unless Good.
    OpcUa_StatusCode changeType(OpcUa_BuiltInType type, bool toArray = false);

    /// The text of the value, of any type and shape. A String is its own text, whole; numbers are
    /// in the C locale. Arrays read "{1, 2, 3}" and matrices nest them; past what fits a line,
    /// elements are counted instead: "{0, 1, ... 999998 more}".
    UaString toString() const;
    /// As toString(), with NodeIds, ExpandedNodeIds and LocalizedTexts in their full form.
    UaString toFullString() const;

    /// Equal type, shape and elements.
    friend KESTREL_EXPORT bool operator==(const UaVariant& a, const UaVariant& b);
    friend bool operator!=(const UaVariant& a, const UaVariant& b) { return !(a == b); }

private:
    class Data;
    void setBytes(OpcUa_BuiltInType type, const UaByteString& value);
    UaByteString bytes(OpcUa_BuiltInType type) const;
    OpcUa_VariantValue& reset(OpcUa_BuiltInType type);
    const OpcUa_VariantValue& scalar(OpcUa_BuiltInType type) const;
    QExplicitlySharedDataPointer<Data> d;
};

Q_DECLARE_METATYPE(UaVariant)

#pragma once

#include "../../kestrelexport.h"
#include "../stack/opcuatypes.h"
#include "uaarrayview.h"
#include "uaencodinglimits.h"

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QList>
#include <QtCore/QMetaType>
#include <QtCore/QSharedDataPointer>

class QVariant;
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

/// The two forms of OPC 10000-6, 5.4.1.
enum class UaJsonForm { Reversible, NonReversible };

/// The types of which there are arrays and matrices that hosts build of values: the name in the
/// functions of UaVariant, the class of a value, and the stack's structure.
#define KESTREL_VARIANT_TYPES(X)                                                                   \
    X(Bool, Boolean, OpcUa_Boolean, OpcUa_Boolean)                                                 \
    X(SByte, SByte, OpcUa_SByte, OpcUa_SByte)                                                      \
    X(Byte, Byte, OpcUa_Byte, OpcUa_Byte)                                                          \
    X(Int16, Int16, OpcUa_Int16, OpcUa_Int16)                                                      \
    X(UInt16, UInt16, OpcUa_UInt16, OpcUa_UInt16)                                                  \
    X(Int32, Int32, OpcUa_Int32, OpcUa_Int32)                                                      \
    X(UInt32, UInt32, OpcUa_UInt32, OpcUa_UInt32)                                                  \
    X(Int64, Int64, OpcUa_Int64, OpcUa_Int64)                                                      \
    X(UInt64, UInt64, OpcUa_UInt64, OpcUa_UInt64)                                                  \
    X(Float, Float, OpcUa_Float, OpcUa_Float)                                                      \
    X(Double, Double, OpcUa_Double, OpcUa_Double)                                                  \
    X(String, String, UaString, OpcUa_String)                                                      \
    X(DateTime, DateTime, UaDateTime, OpcUa_DateTime)                                              \
    X(Guid, Guid, UaGuid, OpcUa_Guid)                                                              \
    X(ByteString, ByteString, UaByteString, OpcUa_ByteString)                                      \
    X(XmlElement, XmlElement, UaByteString, OpcUa_XmlElement)                                      \
    X(NodeId, NodeId, UaNodeId, OpcUa_NodeId)                                                      \
    X(ExpandedNodeId, ExpandedNodeId, UaExpandedNodeId, OpcUa_ExpandedNodeId)                      \
    X(StatusCode, StatusCode, UaStatusCode, OpcUa_StatusCode)                                      \
    X(QualifiedName, QualifiedName, UaQualifiedName, OpcUa_QualifiedName)                          \
    X(LocalizedText, LocalizedText, UaLocalizedText, OpcUa_LocalizedText)                          \
    X(ExtensionObject, ExtensionObject, UaExtensionObject, OpcUa_ExtensionObject)                  \
    X(Variant, Variant, UaVariant, OpcUa_Variant)

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
    /// A deep copy; the empty value when there is no memory for it, which assign() tells.
    explicit UaVariant(const OpcUa_Variant& value);
    /// Each makes a scalar, of the type of just that name. XmlElements come by setXmlElement().
    explicit UaVariant(OpcUa_Boolean value);
    explicit UaVariant(OpcUa_SByte value);
    explicit UaVariant(OpcUa_Byte value);
    explicit UaVariant(OpcUa_Int16 value);
    explicit UaVariant(OpcUa_UInt16 value);
    explicit UaVariant(OpcUa_Int32 value);
    explicit UaVariant(OpcUa_UInt32 value);
    explicit UaVariant(OpcUa_Int64 value);
    explicit UaVariant(OpcUa_UInt64 value);
    explicit UaVariant(OpcUa_Float value);
    explicit UaVariant(OpcUa_Double value);
    explicit UaVariant(const UaString& value);
    explicit UaVariant(const char* utf8);
    explicit UaVariant(const UaDateTime& value);
    explicit UaVariant(const UaGuid& value);
    explicit UaVariant(const UaByteString& value);
    explicit UaVariant(const UaNodeId& value);
    explicit UaVariant(const UaExpandedNodeId& value);
    explicit UaVariant(const UaStatusCode& value);
    explicit UaVariant(const UaQualifiedName& value);
    explicit UaVariant(const UaLocalizedText& value);
    explicit UaVariant(const UaExtensionObject& value);
    /// The 64 bits of qint64 and quint64, where the stack's are of another type.
    template <class T,
              typename = std::enable_if_t<std::is_same_v<T, qint64> || std::is_same_v<T, quint64>>>
    explicit UaVariant(T value)
        : UaVariant(std::conditional_t<std::is_signed_v<T>, OpcUa_Int64, OpcUa_UInt64>(value))
    {
    }
    UaVariant(const void*) = delete; // a pointer is not a Boolean

    /// Takes over what `value` holds, which is empty thereafter.
    void attach(OpcUa_Variant* value);

    OpcUa_BuiltInType type() const;
    OpcUa_VariantArrayType arrayType() const;
    bool isEmpty() const { return type() == OpcUaType_Null; }
    /// Number of elements of an array or matrix, as far as storage backs it; 0 for a scalar.
    OpcUa_Int32 arraySize() const;
    /// The lengths of a matrix; none for anything else.
    void arrayDimensions(UaStackTypeArray<OpcUa_UInt32>& dimensions) const;
    void clear();
    /// Replaces the value by a deep copy. False, with this value unchanged, when there is no
    /// memory.
    [[nodiscard]] bool assign(const OpcUa_Variant& value);

    /// A variant is no Boolean; isEmpty() tells whether it holds something.
    operator bool() const = delete;
    /// For reading; valid until this object changes.
    operator const OpcUa_Variant*() const;
    /// The one door to editing in place: detaches from every other holder first, and gives null,
    /// with nothing changed, when there is no memory for that.
    OpcUa_Variant* detach();

    /// Each replaces the value by a scalar; those that may fail are false, with the value
    /// unchanged, when there is no memory.
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
    bool setNodeId(const UaNodeId& value);
    bool setExpandedNodeId(const UaExpandedNodeId& value);
    void setStatusCode(const UaStatusCode& value);
    bool setQualifiedName(const UaQualifiedName& value);
    bool setLocalizedText(const UaLocalizedText& value);
    bool setExtensionObject(const UaExtensionObject& value);
    /// An array of a type, without elements. A type that has none gives the empty value.
    void setEmptyArray(OpcUa_BuiltInType type);
    /// A matrix of a type, with one dimension of length 0.
    void setEmptyMatrix(OpcUa_BuiltInType type);

    /// The lengths of a matrix; signed ones may not be negative.
    using Dimensions = UaArrayView<OpcUa_UInt32, OpcUa_Int32>;
    /// For each type, such as Int32:
    ///
    /// setInt32Array() replaces the value by an array, and setInt32Matrix() by a matrix whose
    /// elements come in row-major order. False, with the value unchanged, when there is no memory
    /// (more than 1 GiB of elements is never had), when Variants
    /// are nested deeper than 100, or when the product of the dimensions is not
    /// the number of elements; there must be one dimension at least.
    ///
    /// toInt32Array() gives the elements of an array of just that type, toInt32Matrix() those of a
    /// matrix, and none for anything else; arrayDimensions() gives its lengths.
#define KESTREL_VARIANT_SETTERS(Name, Type, Value, Stack)                                          \
    bool set##Name##Array(const UaArrayView<Value, Stack>& elements);                              \
    [[nodiscard]] bool set##Name##Matrix(const UaArrayView<Value, Stack>& elements,                \
                                         const Dimensions& dimensions);
#define KESTREL_VARIANT_GETTERS(Name, Type, Value, Stack)                                          \
    QList<Value> to##Name##Array() const;                                                          \
    QList<Value> to##Name##Matrix() const;
    KESTREL_VARIANT_TYPES(KESTREL_VARIANT_SETTERS)
    KESTREL_VARIANT_TYPES(KESTREL_VARIANT_GETTERS)
    KESTREL_VARIANT_SETTERS(DataValue, DataValue, OpcUa_DataValue, OpcUa_DataValue)
    KESTREL_VARIANT_SETTERS(DiagnosticInfo, DiagnosticInfo, OpcUa_DiagnosticInfo,
                            OpcUa_DiagnosticInfo)
#undef KESTREL_VARIANT_SETTERS
#undef KESTREL_VARIANT_GETTERS

    /// Makes an array `count` elements long: clears what falls away, and adds null values. False,
    /// with nothing changed, when the value is no array, or when there is no memory.
    [[nodiscard]] bool resize(std::size_t count);
    /// Gives a matrix new lengths. Elements keep their places in row-major order. False, with
    /// nothing changed, when the value is no matrix, when elementCount() is out of bounds, or when
    /// there is no memory.
    [[nodiscard]] bool setDimensions(const Dimensions& dimensions);
    /// The product of the lengths of a matrix, 1 for none; -1 when it is out of bounds.
    static OpcUa_Int32 elementCount(const Dimensions& dimensions);
    /// Replaces one element of an array or matrix by a scalar of the same type; in an array of
    /// Variants, by any value. False, with nothing changed, for anything else, when Variants are
    /// nested deeper than 100, or when there is no memory.
    [[nodiscard]] bool setElement(OpcUa_Int32 index, const UaVariant& value);

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
    [[nodiscard]] OpcUa_StatusCode changeType(OpcUa_BuiltInType type, bool toArray = false);

    /// The text of the value, of any type and shape. A String is its own text, whole; numbers are
    /// in the C locale. Arrays read "{1, 2, 3}" and matrices nest them; past what fits a line,
    /// elements are counted instead: "{0, 1, ... 999998 more}".
    UaString toString() const;
    /// As toString(), with NodeIds, ExpandedNodeIds and LocalizedTexts in their full form.
    UaString toFullString() const;

    /// The binary encoding (OPC 10000-6, 5.2.2.16), in which a value travels to any other stack.
    QByteArray toBinary() const;
    /// Reads a binary encoding, all of it. Good, BadDecodingError, BadEncodingLimitsExceeded or
    /// BadOutOfMemory; this value is unchanged unless Good.
    OpcUa_StatusCode fromBinary(QByteArrayView bytes, const UaEncodingLimits& limits = {});

    /// The JSON encoding (OPC 10000-6, 5.4.2.17) in UTF-8, on one line. The reversible form names
    /// the type and can be read again; the other is the bare value, for people and for other
    /// programs: matrices nest, statuses have a name, a LocalizedText is its text. Texts that are
    /// no UTF-8 lose what is wrong.
    QByteArray toJson(UaJsonForm form = UaJsonForm::Reversible) const;
    /// Reads the reversible form. Good, BadDecodingError (no JSON, or not that of a value),
    /// BadOutOfRange (a number that its type does not have), BadEncodingLimitsExceeded or
    /// BadOutOfMemory; this value is unchanged unless Good.
    OpcUa_StatusCode fromJson(QByteArrayView json, const UaEncodingLimits& limits = {});

    /// As a value of Qt: bool, qint8 to quint64, float, double, QString, QDateTime (UTC, down to a
    /// millisecond), QUuid and QByteArray; a value of another type is its value class, such as
    /// UaNodeId. An array is a QList of these, a matrix a QVariantList of its rows. XmlElements,
    /// DataValues, Variants and DiagnosticInfos stay a UaVariant. The empty value is the invalid
    /// QVariant.
    QVariant toQVariant() const;
    /// Takes what toQVariant() gives, and lists of one kind of value in a QVariantList; lists of
    /// equally long lists become a matrix, other mixtures an array of Variants. Good, or
    /// BadTypeMismatch with this value unchanged.
    OpcUa_StatusCode fromQVariant(const QVariant& value);

    /// Equal type, shape and elements.
    friend KESTREL_EXPORT bool operator==(const UaVariant& a, const UaVariant& b);
    friend bool operator!=(const UaVariant& a, const UaVariant& b)
    {
        return !(a == b);
    }

private:
    class Data;
    template <class Value, class Stack>
    bool setScalar(OpcUa_BuiltInType type, const Value& value, Stack OpcUa_VariantValue::*member);
    template <class Value, class Stack>
    bool setElements(OpcUa_BuiltInType type, const UaArrayView<Value, Stack>& elements,
                     const Dimensions* dimensions = nullptr);
    template <class Value, class Stack>
    QList<Value> elements(OpcUa_BuiltInType type, OpcUa_VariantArrayType shape) const;
    void setBytes(OpcUa_BuiltInType type, QByteArray shared);
    UaByteString bytes(OpcUa_BuiltInType type) const;
    OpcUa_VariantValue& reset(OpcUa_BuiltInType type);
    const OpcUa_VariantValue& scalar(OpcUa_BuiltInType type) const;
    QExplicitlySharedDataPointer<Data> d;
};

Q_DECLARE_METATYPE(UaVariant)

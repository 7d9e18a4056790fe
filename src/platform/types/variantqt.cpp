// A UaVariant as a value of Qt, and back.

#include "platform/types/uavariant.h"

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

#include <QtCore/QDateTime>
#include <QtCore/QUuid>
#include <QtCore/QVariant>

#include <cstring>
#include <map>
#include <vector>

namespace {

// How one value looks on each side. A type of Qt that stands for itself needs no entry.
template <class Qt, class Stack>
Qt toQt(const Stack& value)
{
    if constexpr (std::is_same_v<Qt, QString>)
        return value.Data ? QString::fromUtf8(value.Data, value.Length) : QString();
    else if constexpr (std::is_same_v<Qt, QDateTime>)
        return QDateTime(QDate(1601, 1, 1), QTime(0, 0), ::Qt::UTC).addMSecs(value / 10'000);
    else if constexpr (std::is_same_v<Qt, QUuid>)
        return QUuid(value.Data1, value.Data2, value.Data3, value.Data4[0], value.Data4[1],
                     value.Data4[2], value.Data4[3], value.Data4[4], value.Data4[5], value.Data4[6],
                     value.Data4[7]);
    else if constexpr (std::is_same_v<Qt, QByteArray>)
        return UaByteString(&value).bytes();
    else
        return Qt(value);
}

OpcUa_StatusCode toStack(const QString& value, OpcUa_String& stack)
{
    return UaString(value.isNull() ? QByteArray() : value.toUtf8()).copyTo(&stack);
}

OpcUa_StatusCode toStack(const QDateTime& value, OpcUa_DateTime& stack)
{
    const QDateTime origin(QDate(1601, 1, 1), QTime(0, 0), Qt::UTC);
    qint64 ticks = 0;
    if (value.isValid() && qMulOverflow(origin.msecsTo(value), qint64(10'000), &ticks))
        return OpcUa_BadTypeMismatch;
    stack = ticks;
    return OpcUa_Good;
}

OpcUa_StatusCode toStack(const QUuid& value, OpcUa_Guid& stack)
{
    stack = {value.data1, value.data2, value.data3, {}};
    std::memcpy(stack.Data4, value.data4, sizeof stack.Data4);
    return OpcUa_Good;
}

OpcUa_StatusCode toStack(const QByteArray& value, OpcUa_ByteString& stack)
{
    return UaByteString(value).copyTo(&stack);
}

OpcUa_StatusCode toStack(const UaStatusCode& value, OpcUa_StatusCode& stack)
{
    stack = value.code();
    return OpcUa_Good;
}

template <class Qt, class Stack>
std::enable_if_t<std::is_arithmetic_v<Stack>, OpcUa_StatusCode> toStack(Qt value, Stack& stack)
{
    stack = value;
    return OpcUa_Good;
}

template <class Class, class Stack>
auto toStack(const Class& value, Stack& stack) -> decltype(value.copyTo(&stack))
{
    return value.copyTo(&stack);
}

struct QtType
{
    QMetaType scalar;
    QMetaType list;
    QVariant (*toQt)(const OpcUa_Variant& value, std::size_t first, std::size_t count, bool list);
    OpcUa_StatusCode (*fromScalar)(const QVariant&, void* element);
    OpcUa_StatusCode (*fromList)(const QVariant&, UaVariant& array);
};

OpcUa_StatusCode setCount(UaVariant& array, OpcUa_BuiltInType type, qsizetype count)
{
    array.setEmptyArray(type);
    return array.resize(std::size_t(count)) ? OpcUa_Good : OpcUa_BadOutOfMemory;
}

template <OpcUa_BuiltInType type, class Qt, class Stack>
QtType qtType()
{
    return {QMetaType::fromType<Qt>(), QMetaType::fromType<QList<Qt>>(),
            [](const OpcUa_Variant& value, std::size_t first, std::size_t count, bool isList) {
                const auto* elements = static_cast<const Stack*>(opcUaElements(value).data);
                if (!isList)
                    return QVariant::fromValue(elements ? toQt<Qt>(elements[first]) : Qt());
                QList<Qt> list;
                list.reserve(qsizetype(count));
                for (std::size_t i = first; i < first + count; ++i)
                    list.append(toQt<Qt>(elements[i]));
                return QVariant::fromValue(list);
            },
            [](const QVariant& value, void* element) {
                return toStack(*static_cast<const Qt*>(value.constData()),
                               *static_cast<Stack*>(element));
            },
            [](const QVariant& value, UaVariant& array) {
                const auto& list = *static_cast<const QList<Qt>*>(value.constData());
                OpcUa_StatusCode status = setCount(array, type, list.size());
                OpcUa_Variant* target = OpcUa_IsGood(status) ? array.detach() : nullptr;
                if (!target)
                    return OpcUa_StatusCode(OpcUa_BadOutOfMemory);
                auto* element = static_cast<Stack*>(opcUaElements(*target).data);
                for (auto it = list.begin(); it != list.end() && OpcUa_IsGood(status); ++it)
                    status = toStack(*it, *element++);
                return status;
            }};
}

template <OpcUa_BuiltInType type, class Qt, class Stack>
std::pair<const OpcUa_BuiltInType, QtType> entry()
{
    return {type, qtType<type, Qt, Stack>()};
}

// The types that Qt has a type for, or that have a value class. Others travel as UaVariant.
const std::map<OpcUa_BuiltInType, QtType>& qtTypes()
{
    static const std::map<OpcUa_BuiltInType, QtType> types = {
        entry<OpcUaType_Boolean, bool, OpcUa_Boolean>(),
        entry<OpcUaType_SByte, qint8, OpcUa_SByte>(),
        entry<OpcUaType_Byte, quint8, OpcUa_Byte>(),
        entry<OpcUaType_Int16, qint16, OpcUa_Int16>(),
        entry<OpcUaType_UInt16, quint16, OpcUa_UInt16>(),
        entry<OpcUaType_Int32, qint32, OpcUa_Int32>(),
        entry<OpcUaType_UInt32, quint32, OpcUa_UInt32>(),
        entry<OpcUaType_Int64, qint64, OpcUa_Int64>(),
        entry<OpcUaType_UInt64, quint64, OpcUa_UInt64>(),
        entry<OpcUaType_Float, float, OpcUa_Float>(),
        entry<OpcUaType_Double, double, OpcUa_Double>(),
        entry<OpcUaType_String, QString, OpcUa_String>(),
        entry<OpcUaType_DateTime, QDateTime, OpcUa_DateTime>(),
        entry<OpcUaType_Guid, QUuid, OpcUa_Guid>(),
        entry<OpcUaType_ByteString, QByteArray, OpcUa_ByteString>(),
        entry<OpcUaType_NodeId, UaNodeId, OpcUa_NodeId>(),
        entry<OpcUaType_ExpandedNodeId, UaExpandedNodeId, OpcUa_ExpandedNodeId>(),
        entry<OpcUaType_StatusCode, UaStatusCode, OpcUa_StatusCode>(),
        entry<OpcUaType_QualifiedName, UaQualifiedName, OpcUa_QualifiedName>(),
        entry<OpcUaType_LocalizedText, UaLocalizedText, OpcUa_LocalizedText>(),
        entry<OpcUaType_ExtensionObject, UaExtensionObject, OpcUa_ExtensionObject>(),
    };
    return types;
}

QVariant rows(const OpcUa_Variant& value, const QtType& type, std::size_t& next,
              const OpcUa_UInt32* lengths, OpcUa_Int32 levels)
{
    if (levels == 1) {
        next += *lengths;
        return type.toQt(value, next - *lengths, *lengths, true);
    }
    QVariantList list;
    for (OpcUa_UInt32 i = 0; i < *lengths; ++i)
        list.append(rows(value, type, next, lengths + 1, levels - 1));
    return list;
}

std::vector<OpcUa_UInt32> lengthsOf(const UaVariant& value)
{
    if (value.arrayType() == OpcUa_VariantArrayType_Array)
        return {OpcUa_UInt32(value.arraySize())};
    UaStackTypeArray<OpcUa_UInt32> dimensions;
    value.arrayDimensions(dimensions);
    return {dimensions.begin(), dimensions.end()};
}

// One array out of elements, one matrix out of equal rows.
OpcUa_StatusCode join(const std::vector<UaVariant>& parts, UaVariant& result)
{
    const UaVariant& first = parts.front();
    const OpcUaTypeInfo& info = *opcUaTypeInfo(OpcUa_Byte(first.type()));
    const std::size_t each = opcUaElements(*first).count;
    std::vector<OpcUa_UInt32> lengths = {OpcUa_UInt32(parts.size())};
    if (first.arrayType() == OpcUa_VariantArrayType_Scalar) {
        const OpcUa_StatusCode status = setCount(result, first.type(), qsizetype(parts.size()));
        if (OpcUa_IsNotGood(status))
            return status;
    } else {
        const std::vector<OpcUa_UInt32> inner = lengthsOf(first);
        lengths.insert(lengths.end(), inner.begin(), inner.end());
        result.setEmptyMatrix(first.type());
        if (!result.setDimensions(lengths))
            return OpcUa_BadOutOfMemory;
    }
    OpcUa_Variant* target = result.detach();
    if (!target)
        return OpcUa_BadOutOfMemory;
    auto* to = static_cast<char*>(opcUaElements(*target).data);
    for (const UaVariant& part : parts) {
        const auto* from = static_cast<const char*>(opcUaElements(*part).data);
        for (std::size_t i = 0; i < each; ++i, from += info.size, to += info.size) {
            const OpcUa_StatusCode status = info.copy(from, to);
            if (OpcUa_IsNotGood(status))
                return status;
        }
    }
    return OpcUa_Good;
}

OpcUa_StatusCode fromList(const QVariantList& list, UaVariant& result)
{
    std::vector<UaVariant> parts(std::size_t(list.size()));
    bool alike = !parts.empty();
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const OpcUa_StatusCode status = parts[i].fromQVariant(list[qsizetype(i)]);
        if (OpcUa_IsNotGood(status))
            return status;
        alike = alike && !parts[i].isEmpty() && parts[i].type() == parts[0].type() &&
                parts[i].arrayType() == parts[0].arrayType() &&
                lengthsOf(parts[i]) == lengthsOf(parts[0]);
    }
    if (alike)
        return join(parts, result);
    const OpcUa_StatusCode status = setCount(result, OpcUaType_Variant, qsizetype(parts.size()));
    OpcUa_Variant* target = OpcUa_IsGood(status) ? result.detach() : nullptr;
    if (!target)
        return OpcUa_BadOutOfMemory;
    auto* element = static_cast<OpcUa_Variant*>(opcUaElements(*target).data);
    for (const UaVariant& part : parts) {
        if (OpcUa_IsNotGood(OpcUa_Variant_CopyTo(part, element++)))
            return OpcUa_BadOutOfMemory;
    }
    return OpcUa_Good;
}

OpcUa_StatusCode convert(const QVariant& value, UaVariant& result)
{
    const QMetaType meta = value.metaType();
    if (meta == QMetaType::fromType<UaVariant>()) {
        result = value.value<UaVariant>();
        return OpcUa_Good;
    }
    if (meta == QMetaType::fromType<QVariantList>())
        return fromList(value.toList(), result);
    if (meta == QMetaType::fromType<long>())
        return convert(QVariant::fromValue(qint64(value.value<long>())), result);
    if (meta == QMetaType::fromType<unsigned long>())
        return convert(QVariant::fromValue(quint64(value.value<unsigned long>())), result);
    for (const auto& [type, qt] : qtTypes()) {
        if (meta == qt.list)
            return qt.fromList(value, result);
        if (meta != qt.scalar)
            continue;
        // By way of an array, whose elements are in one place whether boxed or not.
        UaVariant array;
        OpcUa_StatusCode status = setCount(array, type, 1);
        OpcUa_Variant* target = OpcUa_IsGood(status) ? array.detach() : nullptr;
        if (!target)
            return OpcUa_BadOutOfMemory;
        status = qt.fromScalar(value, opcUaElements(*target).data);
        result = array.elementAt(0);
        return status;
    }
    return OpcUa_BadTypeMismatch;
}

} // namespace

QVariant UaVariant::toQVariant() const
{
    const OpcUa_Variant& value = **this;
    const auto found = qtTypes().find(type());
    if (isEmpty())
        return QVariant();
    if (found == qtTypes().end())
        return QVariant::fromValue(*this);
    std::size_t count = opcUaElements(value).count;
    const auto& matrix = value.Value.Matrix;
    if (value.ArrayType == OpcUa_VariantArrayType_Matrix && matrix.Dimensions && count > 0) {
        std::size_t next = 0;
        return rows(value, found->second, next, matrix.Dimensions, matrix.NoOfDimensions);
    }
    return found->second.toQt(value, 0, count, value.ArrayType != OpcUa_VariantArrayType_Scalar);
}

OpcUa_StatusCode UaVariant::fromQVariant(const QVariant& value)
{
    UaVariant result;
    const OpcUa_StatusCode status = value.isValid() ? convert(value, result) : OpcUa_Good;
    if (OpcUa_IsGood(status))
        *this = result;
    return status;
}

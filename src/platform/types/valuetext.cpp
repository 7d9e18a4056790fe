#include "valuetext_p.h"

#include "platform/stack/opcuatypetable_p.h"
#include "platform/types/uabytestring.h"
#include "platform/types/uadatetime.h"
#include "platform/types/uaexpandednodeid.h"
#include "platform/types/uaextensionobject.h"
#include "platform/types/uaguid.h"
#include "platform/types/uanames.h"
#include "platform/types/uanodeid.h"
#include "platform/types/uastatuscode.h"

#include <algorithm>
#include <charconv>
#include <type_traits>

namespace {

// The longest text of an array, in bytes: about a line.
constexpr qsizetype maxArrayText = 200;
// The most dimensions of a matrix that braces tell; the last of them stands for all the rest.
constexpr OpcUa_Int32 maxBraces = 32;

template <class T>
QByteArray numberText(const void* element, ValueText)
{
    const T number = *static_cast<const T*>(element);
    if constexpr (std::is_same_v<T, bool>)
        return number ? "true" : "false";
    else if constexpr (std::is_floating_point_v<T>) {
        // The shortest text that reads back as the same number.
        char buffer[32];
        const auto end = std::to_chars(buffer, buffer + sizeof buffer, number).ptr;
        return QByteArray(buffer, end - buffer);
    } else if constexpr (std::is_signed_v<T>)
        return QByteArray::number(qlonglong(number));
    else
        return QByteArray::number(qulonglong(number));
}

// Class is built of Stack and knows its own text; the stack's strings come by pointer.
template <class Class, class Stack>
QByteArray classText(const void* element, ValueText form)
{
    const auto* stack = static_cast<const Stack*>(element);
    const Class value = [stack] {
        if constexpr (std::is_constructible_v<Class, const Stack*>)
            return Class(stack);
        else
            return Class(*stack);
    }();
    if constexpr (std::is_same_v<Class, UaNodeId> || std::is_same_v<Class, UaExpandedNodeId>) {
        if (form == ValueText::Full)
            return value.toFullString().bytes();
    }
    if constexpr (std::is_same_v<Class, UaLocalizedText>) {
        if (form == ValueText::Full && !value.locale().isEmpty())
            return value.locale().bytes() + ':' + value.text().bytes();
    }
    return value.toString().bytes();
}

template <class Stack>
QByteArray bytesText(const void* element, ValueText)
{
    const auto* bytes = static_cast<const Stack*>(element);
    return bytes->Data ? QByteArray(reinterpret_cast<const char*>(bytes->Data), bytes->Length)
                       : QByteArray();
}

QByteArray nestedText(const void* element, ValueText form)
{
    return variantText(*static_cast<const OpcUa_Variant*>(element), form);
}

QByteArray dataValueText(const void* element, ValueText form)
{
    const auto* value = static_cast<const OpcUa_DataValue*>(element);
    const QByteArray text = variantText(value->Value, form);
    if (OpcUa_IsGood(value->Status))
        return text;
    return text + " (" + UaStatusCode(value->Status).toString().bytes() + ')';
}

QByteArray diagnosticText(const void* element, ValueText form)
{
    return bytesText<OpcUa_String>(
        &static_cast<const OpcUa_DiagnosticInfo*>(element)->AdditionalInfo, form);
}

struct ElementText
{
    OpcUa_BuiltInType type;
    QByteArray (*text)(const void*, ValueText);
};

constexpr ElementText texts[] = {
    {OpcUaType_Null, nullptr},
    {OpcUaType_Boolean, numberText<OpcUa_Boolean>},
    {OpcUaType_SByte, numberText<OpcUa_SByte>},
    {OpcUaType_Byte, numberText<OpcUa_Byte>},
    {OpcUaType_Int16, numberText<OpcUa_Int16>},
    {OpcUaType_UInt16, numberText<OpcUa_UInt16>},
    {OpcUaType_Int32, numberText<OpcUa_Int32>},
    {OpcUaType_UInt32, numberText<OpcUa_UInt32>},
    {OpcUaType_Int64, numberText<OpcUa_Int64>},
    {OpcUaType_UInt64, numberText<OpcUa_UInt64>},
    {OpcUaType_Float, numberText<OpcUa_Float>},
    {OpcUaType_Double, numberText<OpcUa_Double>},
    {OpcUaType_String, bytesText<OpcUa_String>},
    {OpcUaType_DateTime, classText<UaDateTime, OpcUa_DateTime>},
    {OpcUaType_Guid, classText<UaGuid, OpcUa_Guid>},
    {OpcUaType_ByteString, classText<UaByteString, OpcUa_ByteString>},
    {OpcUaType_XmlElement, bytesText<OpcUa_XmlElement>},
    {OpcUaType_NodeId, classText<UaNodeId, OpcUa_NodeId>},
    {OpcUaType_ExpandedNodeId, classText<UaExpandedNodeId, OpcUa_ExpandedNodeId>},
    {OpcUaType_StatusCode, classText<UaStatusCode, OpcUa_StatusCode>},
    {OpcUaType_QualifiedName, classText<UaQualifiedName, OpcUa_QualifiedName>},
    {OpcUaType_LocalizedText, classText<UaLocalizedText, OpcUa_LocalizedText>},
    {OpcUaType_ExtensionObject, classText<UaExtensionObject, OpcUa_ExtensionObject>},
    {OpcUaType_DataValue, dataValueText},
    {OpcUaType_Variant, nestedText},
    {OpcUaType_DiagnosticInfo, diagnosticText},
};
static_assert(isTableOfTypes(texts));

// Cuts a text to a number of bytes, not inside a UTF-8 sequence.
QByteArray bounded(const QByteArray& text, qsizetype length)
{
    if (text.size() <= length)
        return text;
    while (length > 0 && (uchar(text[length]) & 0xc0) == 0x80)
        --length;
    return text.left(length) + "...";
}

class ArrayText
{
public:
    ArrayText(const OpcUa_Variant& variant, ValueText form)
        : m_type(variant.Datatype), m_form(form), m_elements(opcUaElements(variant)),
          m_size(opcUaTypeInfo(m_type)->size)
    {
    }

    // One level of braces for each length, as far as it goes; the elements come in row-major order.
    QByteArray text(const OpcUa_UInt32* lengths, OpcUa_Int32 levels)
    {
        m_text.clear();
        m_next = 0;
        m_innermost = 1;
        for (; levels > maxBraces; --levels)
            m_innermost = std::min(m_innermost * lengths[levels - 1], m_elements.count);
        m_innermost = std::min(m_innermost * lengths[levels - 1], m_elements.count);
        appendLevel(lengths, levels);
        return m_text;
    }

    std::size_t count() const { return m_elements.count; }

private:
    // False once the line is full and the rest has been counted.
    bool appendLevel(const OpcUa_UInt32* lengths, OpcUa_Int32 levels)
    {
        m_text += '{';
        bool more = true;
        const std::size_t length = levels > 1 ? *lengths : m_innermost;
        for (std::size_t i = 0; more && i < length && m_next < m_elements.count; ++i) {
            if (i > 0)
                m_text += ", ";
            more = levels > 1 ? appendLevel(lengths + 1, levels - 1) : appendElement();
        }
        m_text += '}';
        return more;
    }

    bool appendElement()
    {
        const auto* element = static_cast<const char*>(m_elements.data) + m_next * m_size;
        if (m_text.size() >= maxArrayText && m_next > 0) {
            const auto rest = qulonglong(m_elements.count - m_next);
            m_text += "... " + QByteArray::number(rest) + " more";
            return false;
        }
        m_text += bounded(elementText(m_type, element, m_form), maxArrayText);
        ++m_next;
        return true;
    }

    const OpcUa_Byte m_type;
    const ValueText m_form;
    const OpcUaElements m_elements;
    const std::size_t m_size;
    QByteArray m_text;
    std::size_t m_innermost = 0; // elements in the innermost braces
    std::size_t m_next = 0;
};

} // namespace

QByteArray elementText(OpcUa_Byte builtInType, const void* element, ValueText form)
{
    return opcUaTypeInfo(builtInType) && element ? texts[builtInType].text(element, form)
                                                 : QByteArray();
}

QByteArray variantText(const OpcUa_Variant& variant, ValueText form)
{
    if (!opcUaTypeInfo(variant.Datatype))
        return QByteArray();
    if (variant.ArrayType == OpcUa_VariantArrayType_Scalar)
        return elementText(variant.Datatype, opcUaElements(variant).data, form);
    ArrayText array(variant, form);
    const auto& matrix = variant.Value.Matrix;
    if (variant.ArrayType == OpcUa_VariantArrayType_Matrix && matrix.Dimensions &&
        matrix.NoOfDimensions > 0)
        return array.text(matrix.Dimensions, matrix.NoOfDimensions);
    const auto length = OpcUa_UInt32(array.count());
    return array.text(&length, 1);
}

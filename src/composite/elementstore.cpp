#include "elementstore_p.h"

#include "base/editorhelpers_p.h"
#include "composite/typeeditors_p.h"
#include "platform/stack/opcuatypetable_p.h"
#include "platform/types/uabytearray.h"
#include "platform/types/uastatuscode.h"
#include "platform/types/uastring.h"
#include "platform/types/valuetext_p.h"

#include <QtCore/QAbstractTableModel>

#include <cstring>
#include <iterator>
#include <type_traits>

namespace {

// How the elements of one type are shown and edited.
struct ElementType
{
    OpcUa_BuiltInType type;
    QString (*text)(const void* element, int role);
    int (*number)(const void* element);
};

template <class T>
QString numberText(const void* element, int)
{
    const T number = *static_cast<const T*>(element);
    if constexpr (std::is_same_v<T, OpcUa_Float>)
        return QString::number(double(number), 'g', 6);
    else if constexpr (std::is_same_v<T, OpcUa_Double>)
        return QString::number(number, 'g', 12);
    else if constexpr (std::is_signed_v<T>)
        return QString::number(qlonglong(number));
    else
        return QString::number(qulonglong(number));
}

QString booleanText(const void* element, int)
{
    return *static_cast<const OpcUa_Boolean*>(element) ? QStringLiteral("true")
                                                       : QStringLiteral("false");
}

// String and XmlElement.
template <class T>
QString utf8Text(const void* element, int)
{
    const auto* text = static_cast<const T*>(element);
    if (!text->Data || text->Length <= 0)
        return QString();
    return textFromUtf8(
        QByteArray::fromRawData(reinterpret_cast<const char*>(text->Data), text->Length));
}

QString byteStringText(const void* element, int role)
{
    const auto* bytes = static_cast<const OpcUa_ByteString*>(element);
    const UaByteArray array(reinterpret_cast<const char*>(bytes->Data), bytes->Length);
    return QString::fromLatin1(array.toHex(role == Qt::DisplayRole));
}

QString statusCodeText(const void* element, int role)
{
    const auto code = *static_cast<const OpcUa_StatusCode*>(element);
    if (role == Qt::EditRole)
        return QStringLiteral("0x%1").arg(code, 8, 16, QLatin1Char('0'));
    return UaStatusCode(code).toString().toQString();
}

// A type that knows its own text.
template <OpcUa_BuiltInType type>
QString ownText(const void* element, int)
{
    return textFromUtf8(elementText(type, element, ValueText::Bare));
}

QString noText(const void*, int)
{
    return QAbstractTableModel::tr("Type cannot be displayed");
}

template <class T>
int number(const void* element)
{
    if constexpr (std::is_integral_v<T>) {
        return int(*static_cast<const T*>(element));
    } else {
        static_assert(sizeof(T) >= sizeof(int));
        int bits = 0;
        std::memcpy(&bits, element, sizeof bits);
        return bits;
    }
}

int noNumber(const void*)
{
    return 0;
}

template <class T, OpcUa_BuiltInType type>
constexpr ElementType numberType = {type, numberText<T>, number<T>};

template <class T, OpcUa_BuiltInType type>
constexpr ElementType classType = {type, ownText<type>, number<T>};

constexpr ElementType types[] = {
    {OpcUaType_Null, noText, noNumber},
    {OpcUaType_Boolean, booleanText, number<OpcUa_Boolean>},
    numberType<OpcUa_SByte, OpcUaType_SByte>,
    numberType<OpcUa_Byte, OpcUaType_Byte>,
    numberType<OpcUa_Int16, OpcUaType_Int16>,
    numberType<OpcUa_UInt16, OpcUaType_UInt16>,
    numberType<OpcUa_Int32, OpcUaType_Int32>,
    numberType<OpcUa_UInt32, OpcUaType_UInt32>,
    numberType<OpcUa_Int64, OpcUaType_Int64>,
    numberType<OpcUa_UInt64, OpcUaType_UInt64>,
    numberType<OpcUa_Float, OpcUaType_Float>,
    numberType<OpcUa_Double, OpcUaType_Double>,
    {OpcUaType_String, utf8Text<OpcUa_String>, number<OpcUa_String>},
    classType<OpcUa_DateTime, OpcUaType_DateTime>,
    classType<OpcUa_Guid, OpcUaType_Guid>,
    {OpcUaType_ByteString, byteStringText, number<OpcUa_ByteString>},
    {OpcUaType_XmlElement, utf8Text<OpcUa_XmlElement>, number<OpcUa_XmlElement>},
    classType<OpcUa_NodeId, OpcUaType_NodeId>,
    classType<OpcUa_ExpandedNodeId, OpcUaType_ExpandedNodeId>,
    {OpcUaType_StatusCode, statusCodeText, number<OpcUa_StatusCode>},
    classType<OpcUa_QualifiedName, OpcUaType_QualifiedName>,
    classType<OpcUa_LocalizedText, OpcUaType_LocalizedText>,
    classType<OpcUa_ExtensionObject, OpcUaType_ExtensionObject>,
    {OpcUaType_DataValue, noText, number<OpcUa_DataValue>},
    {OpcUaType_Variant, noText, number<OpcUa_Variant>},
    {OpcUaType_DiagnosticInfo, noText, number<OpcUa_DiagnosticInfo>},
};
static_assert(isTableOfTypes(types));

const ElementType& elementType(OpcUa_BuiltInType type)
{
    return std::size_t(type) < std::size(types) ? types[type] : types[OpcUaType_Null];
}

} // namespace

bool isEditableType(OpcUa_BuiltInType type)
{
    return type < OpcUaType_ExtensionObject;
}

int enumNumber(const UaVariant& scalar)
{
    const OpcUaElements elements = opcUaElements(*scalar);
    return elements.count ? elementType(scalar.type()).number(elements.data) : 0;
}

OpcUa_StatusCode scalarOfText(const QVariant& edited, OpcUa_BuiltInType type, bool isNamed,
                              UaVariant* scalar)
{
    QString text = edited.toString();
    // An enumeration is edited as a signed number; an unsigned element takes its bits.
    if (isNamed && edited.userType() == QMetaType::Long &&
        (type == OpcUaType_UInt32 || type == OpcUaType_UInt64))
        text = QString::number(quint32(edited.toInt()));
    UaVariant converted;
    converted.setString(UaString(text));
    const OpcUa_StatusCode status = converted.changeType(type);
    if (OpcUa_IsGood(status))
        *scalar = converted;
    return status;
}

ElementStore::ElementStore(UaVariant* value, bool readOnly) : m_value(value), m_readOnly(readOnly)
{
}

// The address of a cell's element, or null.
const void* ElementStore::element(const QModelIndex& index) const
{
    const OpcUa_Variant& variant = **m_value;
    if (!index.isValid() || index.column() != 0 ||
        variant.ArrayType == OpcUa_VariantArrayType_Scalar)
        return nullptr;
    const OpcUaElements elements = opcUaElements(variant);
    if (std::size_t(index.row()) >= elements.count)
        return nullptr;
    return static_cast<const char*>(elements.data) +
           std::size_t(index.row()) * opcUaTypeInfo(variant.Datatype)->size;
}

QVariant ElementStore::data(const QModelIndex& index, int role) const
{
    const void* shown = element(index);
    if (!shown)
        return QVariant();
    const ElementType& type = elementType(m_value->type());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        if (m_enumInfo.kind != QvelEnumInfo::NoEnumeration)
            return m_enumInfo.toString(type.number(shown));
        return type.text(shown, role);
    case ElementValueRole:
        return QVariant::fromValue(m_value->type() <= OpcUaType_ExtensionObject
                                       ? m_value->elementAt(index.row())
                                       : UaVariant());
    case ElementEnumInfoRole:
        return QVariant::fromValue(m_enumInfo);
    default:
        return QVariant();
    }
}

bool ElementStore::setData(const QModelIndex& index, const QVariant& value, int role)
{
    const bool isText = role == Qt::DisplayRole || role == Qt::EditRole;
    if (!element(index) || (!isText && role != ElementValueRole))
        return false;
    if (typeEditor(m_value->type()).takesText)
        return isText && setText(index, value);
    if (!isEditable() || value.userType() != qMetaTypeId<UaVariant>())
        return false;
    auto scalar = value.value<UaVariant>();
    if (scalar.type() != m_value->type() && OpcUa_IsNotGood(scalar.changeType(m_value->type())))
        return false;
    return isShownAs(index, scalar) || m_value->setElement(index.row(), scalar);
}

// Whether a cell's text, where that is the whole value, shows the new one already: what it does not
// tell, such as a null String or a broken character, then stays.
bool ElementStore::isShownAs(const QModelIndex& index, const UaVariant& scalar) const
{
    const OpcUa_BuiltInType type = m_value->type();
    if (scalar.arrayType() != OpcUa_VariantArrayType_Scalar ||
        (type != OpcUaType_ByteString && type != OpcUaType_XmlElement))
        return false;
    const OpcUaElements given = opcUaElements(*scalar);
    const auto text = elementType(type).text;
    return given.count && text(given.data, Qt::EditRole) == text(element(index), Qt::EditRole);
}

bool ElementStore::setText(const QModelIndex& index, const QVariant& value)
{
    const OpcUa_BuiltInType type = m_value->type();
    // What the text shown does not tell of the element stays: digits, a null String.
    if (value.toString() == elementType(type).text(element(index), Qt::EditRole))
        return true;
    UaVariant scalar;
    const bool isNamed = m_enumInfo.kind != QvelEnumInfo::NoEnumeration;
    return OpcUa_IsGood(scalarOfText(value, type, isNamed, &scalar)) &&
           m_value->setElement(index.row(), scalar);
}

bool ElementStore::resize(std::size_t count)
{
    return m_value->resize(count);
}

bool ElementStore::reshape(const std::vector<OpcUa_UInt32>& lengths)
{
    return m_value->setDimensions(lengths);
}

Qt::ItemFlags ElementStore::flags(const QModelIndex& index, int rows) const
{
    Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsEnabled;
    const bool isCell = index.isValid() && index.column() == 0 && index.row() < rows;
    if (isCell && (m_readOnly || !isEditable()))
        flags.setFlag(Qt::ItemIsEditable, false);
    return flags;
}

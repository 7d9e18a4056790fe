#include "valuecell_p.h"

#include "base/showntext_p.h"
#include "platform/stack/opcuastatuscodes.h"
#include "platform/stack/opcuatypetable_p.h"
#include "platform/types/uastacktypearray.h"
#include "platform/types/uastring.h"
#include "session/sessiontypes.h"

#include <QtCore/QCoreApplication>

#include <algorithm>
#include <limits>
#include <vector>

namespace {

constexpr OpcUa_Int32 scalarOrOneDimension = -3;

// A matrix in the lengths that are declared for it, as far as that is not too much to begin with.
void shape(UaVariant& matrix, OpcUa_Int32 rank, const QList<OpcUa_UInt32>& dimensions)
{
    constexpr OpcUa_Int32 mostElements = 100'000;
    std::vector<OpcUa_UInt32> lengths(dimensions.cbegin(), dimensions.cend());
    const OpcUa_Int32 count = UaVariant::elementCount(lengths);
    constexpr OpcUa_Int32 mostDimensions = 32;
    if (OpcUa_Int32(lengths.size()) != rank || count < 0 || count > mostElements)
        lengths.assign(std::size_t(std::min(rank, mostDimensions)), 0);
    if (!matrix.setDimensions(lengths))
        matrix.setEmptyMatrix(matrix.type());
}

} // namespace

UaVariant ValueType::emptyValue() const
{
    UaVariant value;
    if (emptyType == OpcUaType_Null)
        return value;
    if (valueRank > 1) {
        value.setEmptyMatrix(emptyType);
        shape(value, valueRank, dimensions);
        return value;
    }
    value.setEmptyArray(emptyType);
    return valueRank >= 0 || !value.resize(1) ? value : value.elementAt(0);
}

bool ValueType::takes(const UaVariant& value) const
{
    if (value.isEmpty() || (builtInType != OpcUaType_Null && value.type() != builtInType))
        return false;
    switch (value.arrayType()) {
    case OpcUa_VariantArrayType_Scalar:
        return valueRank < 0;
    case OpcUa_VariantArrayType_Array:
        return valueRank == scalarOrOneDimension || valueRank == -2 || valueRank == 0 ||
               valueRank == 1;
    case OpcUa_VariantArrayType_Matrix:
        return valueRank == -2 || valueRank == 0 || valueRank > 1;
    }
    return false;
}

QString ValueType::text() const
{
    constexpr OpcUa_Int32 most = 8; // brackets
    if (valueRank == 0)
        return name + QStringLiteral("[...]");
    QString text = name;
    for (OpcUa_Int32 i = 0; i < std::min(valueRank, most); ++i) {
        const OpcUa_UInt32 length = dimensions.value(i);
        text += length > 0 ? QStringLiteral("[%1]").arg(length) : QStringLiteral("[]");
    }
    return text;
}

QString editedText(const UaVariant& value)
{
    if (value.arrayType() == OpcUa_VariantArrayType_Scalar) {
        const double number = value.toDouble();
        if (const QString text =
                QString::number(number, 'g', std::numeric_limits<double>::digits10);
            value.type() == OpcUaType_Double && text.toDouble() == number)
            return text;
        const float real = value.toFloat();
        if (const QString text =
                QString::number(double(real), 'g', std::numeric_limits<float>::digits10);
            value.type() == OpcUaType_Float && text.toFloat() == real)
            return text;
    }
    return value.toString().toQString();
}

QString shownValue(const UaVariant& value, const QvelEnumInfo& enumInfo)
{
    if (value.type() == OpcUaType_Double || value.type() == OpcUaType_Float)
        if (value.arrayType() == OpcUa_VariantArrayType_Scalar)
            return editedText(value);
    // As many bytes as the characters that are shown may take, and one more to see that it goes on.
    const QByteArray text = value.toFullString().bytes().left(4 * (maxShownCharacters + 1));
    QString shown = shownText(QString::fromUtf8(text));
    if (enumInfo.kind == QvelEnumInfo::NoEnumeration || value.isEmpty() ||
        value.arrayType() != OpcUa_VariantArrayType_Scalar)
        return shown;
    // The names, after the number in its own type.
    const int number = enumNumber(value);
    return shown + enumInfo.toString(number).mid(QString::number(number).size());
}

QString refusalText(bool isAllowed, OpcUa_UInt32 attributeId)
{
    return isAllowed ? QCoreApplication::translate("QvelAttributesModel",
                                                   "Values of this type cannot be edited.")
                     : QCoreApplication::translate("QvelAttributesModel",
                                                   "Not writable for this user (%1).")
                           .arg(QString::fromLatin1(QvelAttribute::name(attributeId)));
}

QString copiedValue(const UaVariant& value)
{
    return value.arrayType() == OpcUa_VariantArrayType_Scalar
               ? value.toFullString().toQString()
               : QString::fromUtf8(value.toJson(UaJsonForm::NonReversible));
}

void ValueCell::setType(const ValueType& type)
{
    m_type = type;
    m_shown.clear();
}

void ValueCell::setValue(const UaVariant& value)
{
    m_value = value;
    m_shown.clear();
}

QString ValueCell::otherType() const
{
    const OpcUaTypeInfo* info = opcUaTypeInfo(OpcUa_Byte(m_value.type()));
    if (!info || m_type.name.isEmpty() || m_value.isEmpty() || m_type.takes(m_value))
        return {};
    ValueType actual;
    actual.name = QString::fromLatin1(info->name);
    if (m_value.arrayType() == OpcUa_VariantArrayType_Array)
        actual.valueRank = 1;
    UaStackTypeArray<OpcUa_UInt32> lengths;
    m_value.arrayDimensions(lengths);
    if (lengths.length() > 0)
        actual.valueRank = OpcUa_Int32(lengths.length());
    return actual.text();
}

QString ValueCell::attemptText() const
{
    if (!m_attempt)
        return {};
    return m_attempt->text.isNull() ? shownValue(m_attempt->value, m_type.enumInfo)
                                    : shownText(m_attempt->text);
}

// What an editor begins with.
UaVariant ValueCell::edited() const
{
    if (m_attempt && !m_attempt->value.isEmpty())
        return m_attempt->value;
    if (m_type.takes(m_value))
        return m_value;
    UaVariant converted = m_value;
    const bool isScalar = m_type.valueRank < 0 && !m_value.isEmpty();
    return isScalar && OpcUa_IsGood(converted.changeType(m_type.builtInType)) ? converted
                                                                              : m_type.emptyValue();
}

QVariant ValueCell::data(int role) const
{
    switch (role) {
    case Qt::DisplayRole:
        if (m_shown.isNull()) {
            m_shown = shownValue(m_value, m_type.enumInfo);
            if (m_shown.isNull())
                m_shown = QLatin1String("");
        }
        return m_shown;
    case Qt::EditRole:
        if (m_attempt && !m_attempt->text.isNull())
            return m_attempt->text;
        return editedText(edited());
    case ElementValueRole:
        return QVariant::fromValue(edited());
    case ElementEnumInfoRole:
        return QVariant::fromValue(m_type.enumInfo);
    case ValueRetryRole:
        return m_attempt.has_value();
    default:
        return QVariant();
    }
}

OpcUa_StatusCode ValueCell::take(const QVariant& written, int role, UaVariant* value)
{
    const OpcUa_BuiltInType type = edited().type();
    Attempt attempt;
    OpcUa_StatusCode status = OpcUa_Good;
    if (role == ElementValueRole) {
        attempt.value = written.value<UaVariant>();
        if (m_type.builtInType != OpcUaType_Null && attempt.value.type() != m_type.builtInType)
            status = attempt.value.changeType(m_type.builtInType);
    } else {
        const bool isNamed = m_type.enumInfo.kind != QvelEnumInfo::NoEnumeration;
        status = scalarOfText(written, type, isNamed, &attempt.value);
        if (written.userType() == QMetaType::QString)
            attempt.text = written.toString();
    }
    *value = attempt.value;
    m_attempt = attempt;
    return status;
}

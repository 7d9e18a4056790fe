#include "valuejson.h"

#include <Kestrel/OpcUaStatusCodes>
#include <Kestrel/UaStackTypeArray>
#include <Kestrel/UaString>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <cmath>
#include <limits>

namespace {

QString key(const char* name)
{
    return QString::fromLatin1(name);
}

bool isMatrix(const QJsonValue& json)
{
    return json[key("Body")].isArray() && json[key("Dimensions")].isArray();
}

// OPC 10000-3, 5.6.2.
bool hasRank(const UaVariant& value, OpcUa_Int32 valueRank)
{
    constexpr OpcUa_Int32 any = -2;
    constexpr OpcUa_Int32 scalarOrOneDimension = -3;
    UaStackTypeArray<OpcUa_UInt32> dimensions;
    value.arrayDimensions(dimensions);
    const OpcUa_Int32 rank = value.arrayType() == OpcUa_VariantArrayType_Scalar ? 0
                             : value.arrayType() == OpcUa_VariantArrayType_Array
                                 ? 1
                                 : OpcUa_Int32(dimensions.length());
    if (valueRank > 0)
        return rank == valueRank;
    if (valueRank == scalarOrOneDimension)
        return rank <= 1;
    return valueRank == any || (valueRank == 0 ? rank > 0 : rank == 0);
}

} // namespace

std::optional<QJsonValue> parseJson(const QByteArray& text)
{
    // Qt reads objects and arrays only.
    const QJsonArray array = QJsonDocument::fromJson('[' + text + ']').array();
    if (array.size() != 1)
        return {};
    return array.first();
}

bool namesType(const QJsonValue& json)
{
    return json[key("Type")].isDouble() && json[key("Body")] != QJsonValue(QJsonValue::Undefined);
}

OpcUa_BuiltInType suggestedType(const QJsonValue& json)
{
    if (isMatrix(json))
        return suggestedType(json[key("Body")]);
    if (json.isBool())
        return OpcUaType_Boolean;
    if (json.isString())
        return OpcUaType_String;
    if (json.isDouble()) {
        const double number = json.toDouble();
        if (number != std::floor(number) || std::abs(number) >= std::ldexp(1., 63))
            return OpcUaType_Double;
        const qint64 integer = json.toInteger();
        return integer == qint32(integer) ? OpcUaType_Int32 : OpcUaType_Int64;
    }
    // Of mixed numbers the widest one, which has the highest number as well.
    OpcUa_BuiltInType type = OpcUaType_Null;
    const QJsonArray elements = json.toArray();
    for (const auto& element : elements) {
        const OpcUa_BuiltInType other = element.isArray() ? OpcUaType_Null : suggestedType(element);
        const bool isMixed = type != OpcUaType_Null && type != other &&
                             !(element.isDouble() && elements.first().isDouble());
        if (other == OpcUaType_Null || isMixed)
            return OpcUaType_Null;
        type = std::max(type, other);
    }
    return type;
}

OpcUa_StatusCode valueFromJson(const QJsonValue& json, OpcUa_BuiltInType type,
                               OpcUa_Int32 valueRank, UaVariant& value)
{
    QJsonObject object;
    if (type == OpcUaType_Null)
        object = json.toObject();
    else if (isMatrix(json))
        object = {{key("Body"), json[key("Body")]}, {key("Dimensions"), json[key("Dimensions")]}};
    else
        object.insert(key("Body"), json);
    if (type != OpcUaType_Null)
        object.insert(key("Type"), int(type));
    UaVariant read;
    const OpcUa_StatusCode status =
        read.fromJson(QJsonDocument(object).toJson(QJsonDocument::Compact));
    if (status == OpcUa_BadDecodingError || (OpcUa_IsGood(status) && !hasRank(read, valueRank)))
        return OpcUa_BadTypeMismatch;
    if (OpcUa_IsGood(status))
        value = read;
    return status;
}

JsonLine::JsonLine(const char* service)
{
    m_text = "{\"service\":\"" + QByteArray(service) + '"';
}

QByteArray JsonLine::quoted(const UaString& text)
{
    return UaVariant(text).toJson(UaJsonForm::NonReversible);
}

JsonLine& JsonLine::addRaw(const char* key, const QByteArray& json)
{
    m_text += ",\"" + QByteArray(key) + "\":" + json;
    return *this;
}

JsonLine& JsonLine::add(const char* key, const UaString& text)
{
    return addRaw(key, quoted(text));
}

JsonLine& JsonLine::add(const char* key, const UaDateTime& time)
{
    return addRaw(key, time.isNull() ? QByteArray("null") : quoted(time.toString()));
}

JsonLine& JsonLine::add(const char* key, const QByteArrayList& values)
{
    return addRaw(key, values.isEmpty() ? QByteArray("null") : '[' + values.join(',') + ']');
}

#include "valueparse_p.h"

#include "platform/stack/opcuastatuscodes.h"
#include "platform/stack/opcuatypetable_p.h"
#include "platform/types/uabytestring.h"
#include "platform/types/uadatetime.h"
#include "platform/types/uaguid.h"
#include "platform/types/uastring.h"
#include "platform/types/uavariant.h"

#include <charconv>
#include <iterator>

namespace {

struct Parser
{
    OpcUa_BuiltInType type;
    OpcUa_StatusCode (*parse)(const UaString&, UaVariant&);
};

// std::from_chars knows neither a plus sign nor, for floating point, a locale.
template <class T, void (UaVariant::*set)(T)>
OpcUa_StatusCode parseNumber(const UaString& text, UaVariant& result)
{
    const char* begin = text.toUtf8();
    const char* const end = begin + text.size();
    if (end - begin > 1 && *begin == '+' && begin[1] != '-')
        ++begin;
    T number = {};
    const auto [stop, error] = std::from_chars(begin, end, number);
    if (error == std::errc::invalid_argument || stop != end)
        return OpcUa_BadTypeMismatch;
    if (error == std::errc::result_out_of_range)
        return OpcUa_BadOutOfRange;
    (result.*set)(number);
    return OpcUa_Good;
}

OpcUa_StatusCode parseBoolean(const UaString& text, UaVariant& result)
{
    const QByteArray word = text.bytes().toLower();
    if (word != "true" && word != "false" && word != "1" && word != "0")
        return OpcUa_BadTypeMismatch;
    result.setBool(word == "true" || word == "1");
    return OpcUa_Good;
}

OpcUa_StatusCode parseString(const UaString& text, UaVariant& result)
{
    result.setString(text);
    return OpcUa_Good;
}

OpcUa_StatusCode parseDateTime(const UaString& text, UaVariant& result)
{
    bool ok = false;
    const UaDateTime time = UaDateTime::fromString(text, &ok);
    if (!ok)
        return OpcUa_BadTypeMismatch;
    result.setDateTime(time);
    return OpcUa_Good;
}

OpcUa_StatusCode parseGuid(const UaString& text, UaVariant& result)
{
    UaGuid guid;
    const OpcUa_StatusCode status = guid.fromString(text);
    if (OpcUa_IsGood(status))
        result.setGuid(guid);
    return status;
}

OpcUa_StatusCode parseByteString(const UaString& text, UaVariant& result)
{
    const QByteArray bytes = QByteArray::fromHex(text.bytes());
    if (bytes.toHex() != text.bytes().toLower())
        return OpcUa_BadTypeMismatch;
    result.setByteString(UaByteString(bytes));
    return OpcUa_Good;
}

constexpr Parser parsers[] = {
    {OpcUaType_Null, nullptr},
    {OpcUaType_Boolean, parseBoolean},
    {OpcUaType_SByte, parseNumber<OpcUa_SByte, &UaVariant::setSByte>},
    {OpcUaType_Byte, parseNumber<OpcUa_Byte, &UaVariant::setByte>},
    {OpcUaType_Int16, parseNumber<OpcUa_Int16, &UaVariant::setInt16>},
    {OpcUaType_UInt16, parseNumber<OpcUa_UInt16, &UaVariant::setUInt16>},
    {OpcUaType_Int32, parseNumber<OpcUa_Int32, &UaVariant::setInt32>},
    {OpcUaType_UInt32, parseNumber<OpcUa_UInt32, &UaVariant::setUInt32>},
    {OpcUaType_Int64, parseNumber<OpcUa_Int64, &UaVariant::setInt64>},
    {OpcUaType_UInt64, parseNumber<OpcUa_UInt64, &UaVariant::setUInt64>},
    {OpcUaType_Float, parseNumber<OpcUa_Float, &UaVariant::setFloat>},
    {OpcUaType_Double, parseNumber<OpcUa_Double, &UaVariant::setDouble>},
    {OpcUaType_String, parseString},
    {OpcUaType_DateTime, parseDateTime},
    {OpcUaType_Guid, parseGuid},
    {OpcUaType_ByteString, parseByteString},
};
static_assert(isTableOfTypes(parsers, OpcUaType_ByteString));

} // namespace

OpcUa_StatusCode parseValue(OpcUa_BuiltInType type, const UaString& text, UaVariant& result)
{
    if (type <= OpcUaType_Null || std::size_t(type) >= std::size(parsers))
        return OpcUa_BadTypeMismatch;
    return parsers[type].parse(text, result);
}

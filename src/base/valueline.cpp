#include "valueline_p.h"

#include "platform/types/nodeidtext_p.h"
#include "platform/types/uaexpandednodeid.h"
#include "platform/types/uanames.h"
#include "platform/types/uastatuscode.h"
#include "platform/types/uastring.h"
#include "platform/types/uavariant.h"
#include "platform/types/valueparse_p.h"

#include <algorithm>
#include <iterator>

namespace {

using Parsed = std::optional<UaVariant>;

QString fullText(const UaVariant& value)
{
    return value.toFullString().toQString();
}

Parsed parseXml(const QString& line)
{
    UaVariant value;
    value.setXmlElement(UaByteString(line.toUtf8()));
    return value;
}

Parsed parseNodeId(const QString& line)
{
    const auto id = nodeIdOfText(line);
    if (!id || id->serverIndex() != 0 || !id->namespaceUri().isEmpty())
        return {};
    return UaVariant(id->nodeId());
}

Parsed parseExpandedNodeId(const QString& line)
{
    const auto id = nodeIdOfText(line);
    return id ? Parsed(UaVariant(*id)) : Parsed();
}

QString statusText(const UaVariant& value)
{
    return QStringLiteral("0x%1").arg(value.toStatusCode().code(), 8, 16, QLatin1Char('0'));
}

Parsed parseStatus(const QString& line)
{
    bool ok = false;
    const auto code = OpcUa_StatusCode(line.toUInt(&ok, 16));
    return ok ? Parsed(UaVariant(UaStatusCode(code))) : Parsed();
}

Parsed parseName(const QString& line)
{
    const qsizetype colon = line.indexOf(u':');
    bool ok = false;
    const OpcUa_UInt16 index = QStringView(line).left(qMax(colon, qsizetype(0))).toUShort(&ok);
    if (colon < 0 || !ok)
        return UaVariant(UaQualifiedName(UaString(line), 0));
    return UaVariant(UaQualifiedName(UaString(line.mid(colon + 1)), index));
}

QString nameText(const UaVariant& value)
{
    const QString text = fullText(value);
    const UaQualifiedName name = value.toQualifiedName();
    const bool isPlain =
        name.namespaceIndex() != 0 || parseName(text)->toQualifiedName() == UaQualifiedName(name);
    return isPlain ? text : QLatin1String("0:") + text;
}

QString localizedText(const UaVariant& value)
{
    const QString text = fullText(value);
    const bool isPlain = !value.toLocalizedText().locale().isEmpty() || !text.contains(u':');
    return isPlain ? text : u':' + text;
}

Parsed parseLocalized(const QString& line)
{
    const qsizetype colon = line.indexOf(u':');
    const QString locale = colon < 0 ? QString() : line.left(colon);
    return UaVariant(UaLocalizedText(UaString(locale), UaString(line.mid(colon + 1))));
}

struct LineForm
{
    OpcUa_BuiltInType type;
    QString (*text)(const UaVariant&);
    Parsed (*parse)(const QString&);
};

// Those that parseValue() does not read.
constexpr LineForm forms[] = {
    {OpcUaType_XmlElement, fullText, parseXml},
    {OpcUaType_NodeId, fullText, parseNodeId},
    {OpcUaType_ExpandedNodeId, fullText, parseExpandedNodeId},
    {OpcUaType_StatusCode, statusText, parseStatus},
    {OpcUaType_QualifiedName, nameText, parseName},
    {OpcUaType_LocalizedText, localizedText, parseLocalized},
};

const LineForm* formOf(OpcUa_BuiltInType type)
{
    const auto* form = std::find_if(std::begin(forms), std::end(forms),
                                    [type](const LineForm& each) { return each.type == type; });
    return form == std::end(forms) ? nullptr : form;
}

UaVariant nullOf(OpcUa_BuiltInType type)
{
    OpcUa_Variant null = {};
    null.Datatype = OpcUa_Byte(type);
    return UaVariant(null);
}

} // namespace

QString valueLine(const UaVariant& scalar)
{
    const LineForm* form = formOf(scalar.type());
    return form ? form->text(scalar) : fullText(scalar);
}

std::optional<UaVariant> valueOfLine(OpcUa_BuiltInType type, const QString& line)
{
    if (line.isEmpty())
        return nullOf(type);
    if (const LineForm* form = formOf(type))
        return form->parse(line);
    UaVariant value;
    const bool isGood = OpcUa_IsGood(parseValue(type, UaString(line), value));
    return isGood ? Parsed(value) : Parsed();
}

QString jsonLine(const UaVariant& value)
{
    return value.isEmpty() ? QString() : QString::fromUtf8(value.toJson());
}

std::optional<UaVariant> valueOfJsonLine(const QString& line)
{
    UaVariant value;
    const bool isGood = line.isEmpty() || OpcUa_IsGood(value.fromJson(line.toUtf8()));
    return isGood ? Parsed(value) : Parsed();
}

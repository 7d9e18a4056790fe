#include "nodeidtext.h"

#include <QtCore/QRegularExpression>

std::optional<UaExpandedNodeId> parseNodeId(const QString& text)
{
    static const QRegularExpression form(
        QStringLiteral("^(?:ns=([0-9]+);|nsu=([^;]+);)?([isgb])=(.*)$"),
        QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return {};
    bool ok = true;
    const OpcUa_UInt16 index = match.captured(1).isEmpty() ? 0 : match.captured(1).toUShort(&ok);
    const QByteArray identifier = match.captured(4).toUtf8();
    UaNodeId nodeId;
    UaGuid guid;
    switch (match.captured(3).front().toLatin1()) {
    case 'i':
        ok = ok && !identifier.isEmpty() && identifier.front() != '+';
        nodeId = UaNodeId(ok ? identifier.toUInt(&ok) : 0, index);
        break;
    case 's':
        nodeId = UaNodeId(UaString(identifier), index);
        break;
    case 'g':
        ok = ok && OpcUa_IsGood(guid.fromString(UaString(identifier)));
        nodeId = UaNodeId(guid, index);
        break;
    default:
        const auto bytes =
            QByteArray::fromBase64Encoding(identifier, QByteArray::AbortOnBase64DecodingErrors);
        ok = ok && bytes;
        nodeId = UaNodeId(UaByteString(*bytes), index);
    }
    if (!ok)
        return {};
    const QByteArray uri = QByteArray::fromPercentEncoding(match.captured(2).toUtf8());
    return UaExpandedNodeId(nodeId, UaString(uri), 0);
}

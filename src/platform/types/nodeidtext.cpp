#include "nodeidtext_p.h"

#include "platform/types/uabytestring.h"
#include "platform/types/uaguid.h"

#include <QtCore/QRegularExpression>

std::optional<UaExpandedNodeId> nodeIdOfText(const QString& text)
{
    static const QRegularExpression form(
        QStringLiteral("^(?:svr=([0-9]+);)?(?:ns=([0-9]+);|nsu=([^;]+);)?([isgb])=(.*)$"),
        QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return {};
    bool isServer = true;
    bool ok = true;
    const OpcUa_UInt32 server =
        match.captured(1).isEmpty() ? 0 : match.captured(1).toUInt(&isServer);
    const OpcUa_UInt16 index = match.captured(2).isEmpty() ? 0 : match.captured(2).toUShort(&ok);
    const QByteArray identifier = match.captured(5).toUtf8();
    UaNodeId nodeId;
    UaGuid guid;
    switch (match.captured(4).front().toLatin1()) {
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
    if (!ok || !isServer)
        return {};
    const QByteArray uri = QByteArray::fromPercentEncoding(match.captured(3).toUtf8());
    return UaExpandedNodeId(nodeId, UaString(uri), server);
}

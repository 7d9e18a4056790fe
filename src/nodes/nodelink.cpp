#include "nodelink.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QMimeData>
#include <QtCore/QRegularExpression>

static QString nodesType()
{
    return QStringLiteral("application/x-opcua-nodes");
}

QMimeData* qvelNodeMimeData(const QList<QvelNodeLink>& nodes)
{
    QJsonArray array;
    QStringList lines;
    for (const QvelNodeLink& node : nodes) {
        lines.append(qvelNodeIdText(node.nodeId));
        array.append(QJsonObject{{"id", lines.last()}, {"name", node.displayName}});
    }
    auto* data = new QMimeData;
    data->setData(nodesType(), QJsonDocument(array).toJson(QJsonDocument::Compact));
    data->setText(lines.join(u'\n'));
    return data;
}

bool qvelHasNodeLinks(const QMimeData* data)
{
    return data && (data->hasFormat(nodesType()) || data->hasText());
}

QList<QvelNodeLink> qvelNodeLinks(const QMimeData* data)
{
    QList<QvelNodeLink> nodes;
    const auto add = [&nodes](const QString& text, const QString& name) {
        if (const auto id = qvelParseNodeId(text))
            nodes.append({*id, name});
    };
    if (!data)
        return nodes;
    if (data->hasFormat(nodesType())) {
        const QJsonArray array = QJsonDocument::fromJson(data->data(nodesType())).array();
        for (const auto& node : array)
            add(node.toObject()["id"].toString(), node.toObject()["name"].toString());
    } else if (data->hasText()) {
        const QStringList lines = data->text().split(u'\n');
        for (const QString& line : lines)
            add(line.trimmed(), QString());
    }
    return nodes;
}

std::optional<UaExpandedNodeId> qvelParseNodeId(const QString& text)
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

QString qvelNodeIdText(const UaExpandedNodeId& id)
{
    return id.toFullString().toQString();
}

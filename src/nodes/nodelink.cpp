#include "nodelink.h"

#include "platform/types/nodeidtext_p.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QMimeData>

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
    return nodeIdOfText(text);
}

QString qvelNodeIdText(const UaExpandedNodeId& id)
{
    return id.toFullString().toQString();
}

#include "discovercommand.h"

#include "endpointjson.h"
#include "english.h"
#include "treeexpander.h"

#include <Kestrel/QvelDiscoveryCBInterface>
#include <Kestrel/QvelDiscoveryModel>
#include <Kestrel/QvelDiscoveryNode>

#include <QtCore/QCoreApplication>
#include <QtCore/QIODevice>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include <algorithm>

namespace {

bool hasEndpoint(QvelDiscoveryNode* node)
{
    if (node->type() == QvelDiscoveryNode::TypeEndpoint)
        return true;
    const auto children = node->children();
    return std::any_of(children.begin(), children.end(), hasEndpoint);
}

} // namespace

ExitCode discover(const QStringList& urls, int timeout, QvelDiscoveryCBInterface& callback,
                  QIODevice& out)
{
    // No view: that would browse the local network at once.
    QvelDiscoveryModel model(QvelDiscoveryWidget::OpcUa, &callback, timeout,
                             QCoreApplication::applicationName(), nullptr);
    QvelDiscoveryNode* custom = model.getAddServerNode()->parent();
    QList<QvelDiscoveryNode*> nodes;
    for (const QString& url : urls) {
        const int before = custom->childrenCount();
        model.addRemoteServer(url);
        if (custom->childrenCount() == before) {
            callback.logMessage(english("%1 is not an opc.tcp URL").arg(url));
            return ExitUsage;
        }
        nodes.append(custom->at(before));
    }

    TreeExpander expander(model);
    for (QvelDiscoveryNode* node : std::as_const(nodes))
        expander.expand(node);
    expander.wait();

    QJsonArray json;
    for (QvelDiscoveryNode* node : std::as_const(nodes))
        json.append(nodeToJson(model, node));
    const QByteArray text = QJsonDocument(QJsonObject{{QStringLiteral("nodes"), json}}).toJson();
    if (out.write(text) != text.size())
        return ExitFailure;
    return std::any_of(nodes.cbegin(), nodes.cend(), hasEndpoint) ? ExitFound : ExitFailure;
}

#pragma once

#include "discovery/discoverynodes.h"

#include <QtCore/QModelIndex>

/// The node of an index; null for an invalid index and for one without a node.
inline QvelDiscoveryNode* nodeAt(const QModelIndex& index)
{
    return static_cast<QvelDiscoveryNode*>(index.internalPointer());
}

/// The node, if it is one of that kind; else null.
inline QvelDiscoveryNodeEndpoint* toEndpoint(QvelDiscoveryNode* node)
{
    return node && node->type() == QvelDiscoveryNode::TypeEndpoint
               ? static_cast<QvelDiscoveryNodeEndpoint*>(node)
               : nullptr;
}
inline QvelDiscoveryNodeDiscovery* toDiscovery(QvelDiscoveryNode* node)
{
    return node && node->type() == QvelDiscoveryNode::TypeDiscovery
               ? static_cast<QvelDiscoveryNodeDiscovery*>(node)
               : nullptr;
}

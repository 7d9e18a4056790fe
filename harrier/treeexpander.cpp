#include "treeexpander.h"

#include <Kestrel/QvelDiscoveryModel>
#include <Kestrel/QvelDiscoveryNode>

#include <QtCore/QTimer>

TreeExpander::TreeExpander(QvelDiscoveryModel& model) : m_model(model)
{
    connect(&m_model, &QAbstractItemModel::dataChanged, this, &TreeExpander::dataChanged);
}

void TreeExpander::expand(QvelDiscoveryNode* node)
{
    if (!node->isBrowsed())
        m_model.fetchMore(m_model.indexOf(node));
    if (node->isBrowsing()) {
        m_waiting.insert(node);
        return;
    }
    const auto children = node->children();
    for (QvelDiscoveryNode* child : children)
        expand(child);
}

bool TreeExpander::wait(int maxMs)
{
    if (!m_waiting.isEmpty()) {
        if (maxMs >= 0)
            QTimer::singleShot(maxMs, &m_loop, &QEventLoop::quit);
        m_loop.exec();
    }
    return m_waiting.isEmpty();
}

void TreeExpander::dataChanged(const QModelIndex& index)
{
    auto* node = static_cast<QvelDiscoveryNode*>(index.internalPointer());
    if (node->isBrowsing() || !m_waiting.remove(node))
        return;
    expand(node);
    if (m_waiting.isEmpty())
        m_loop.quit();
}

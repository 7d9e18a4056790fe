#pragma once

#include <QtCore/QEventLoop>
#include <QtCore/QObject>
#include <QtCore/QSet>

class QModelIndex;
class QvelDiscoveryModel;
class QvelDiscoveryNode;

/// Fetches everything below some nodes of a discovery tree.
class TreeExpander : public QObject
{
    Q_OBJECT
public:
    explicit TreeExpander(QvelDiscoveryModel& model);

    void expand(QvelDiscoveryNode* node);
    /// Runs an event loop until nothing is left to fetch, or for `maxMs` milliseconds if that is
    /// not negative. True when nothing is left.
    bool wait(int maxMs = -1);

private:
    void dataChanged(const QModelIndex& index);

    QvelDiscoveryModel& m_model;
    QSet<QvelDiscoveryNode*> m_waiting;
    QEventLoop m_loop;
};

#pragma once

#include "base/words_p.h"
#include "nodes/nodetable_p.h"

#include <QtCore/QSet>
#include <QtCore/QTimer>

/// Looks for nodes by a piece of their display or browse name, the nearest to the root first. Each
/// node is visited once, whatever the number of ways to it.
class NodeSearch : public QObject
{
    Q_OBJECT
public:
    explicit NodeSearch(QObject* parent);

    /// Gives an earlier one up.
    void start(QvelSession* session, const UaExpandedNodeId& root, const QString& text);
    /// Keeps what was found.
    void cancel();
    /// Forgets what was found, too.
    void clear();

    bool isRunning() const
    {
        return !m_frontier.isEmpty() || m_underWay > 0 || !m_intakes.isEmpty();
    }
    QString text() const { return m_text; }
    qsizetype visited() const { return m_nodes.size(); }
    qsizetype count() const { return m_hits.size(); }
    /// The nodes that lead to a hit, from the root node.
    QList<UaExpandedNodeId> path(qsizetype hit) const;
    /// Why it ended early, in words.
    QString failure() const { return said(m_failure); }

Q_SIGNALS:
    /// It got on, or has ended.
    void changed();

private:
    struct Visited
    {
        QByteArray key;
        quint32 parent = 0;
    };
    struct Intake
    {
        quint32 parent = 0;
        ReferenceIntake references;
    };
    void browseMore();
    void answer(const QList<quint32>& nodes, QvelBrowseResult result);
    void takeSome();
    void take(quint32 parent, const QvelReference& reference);
    void end(const Words& failure);

    NodeTable m_table;
    QString m_text;
    QList<Visited> m_nodes; // the first is the root node
    QSet<QByteArray> m_keys;
    QList<quint32> m_frontier; // not browsed yet
    QList<quint32> m_hits;
    QList<Intake> m_intakes;
    QTimer m_timer;
    Words m_failure;
    int m_underWay = 0;
    quint32 m_search = 0; // answers to an earlier one are dropped
};

#include "nodesearch_p.h"

#include "nodes/statustext_p.h"
#include "platform/stack/opcuastatuscodes.h"
#include "session/whendone_p.h"

#include <algorithm>

constexpr qsizetype nodesAtATime = 100;
constexpr int mostUnderWay = 4;
// About a gigabyte.
constexpr qsizetype mostNodes = 5'000'000;
constexpr qsizetype mostHits = 10'000;

NodeSearch::NodeSearch(QObject* parent) : QObject(parent), m_table(nullptr)
{
    m_timer.callOnTimeout(this, &NodeSearch::takeSome);
    connect(&m_table, &NodeTable::lost, this, [this] {
        if (isRunning())
            end([] { return statusInWords(OpcUa_BadConnectionClosed); });
    });
}

void NodeSearch::start(QvelSession* session, const UaExpandedNodeId& root, const QString& text)
{
    clear();
    m_table.setSession(session);
    m_text = text;
    m_nodes = {{m_table.key(root), 0}};
    m_keys = {m_nodes[0].key};
    m_frontier = {0};
    if (m_table.isConnected())
        browseMore();
    else
        end([] { return statusInWords(OpcUa_BadSessionClosed); });
}

void NodeSearch::cancel()
{
    if (isRunning())
        end([] { return tr("Cancelled."); });
}

void NodeSearch::clear()
{
    ++m_search;
    m_text.clear();
    m_nodes.clear();
    m_keys.clear();
    m_frontier.clear();
    m_intakes.clear();
    m_hits.clear();
    m_failure = nullptr;
    m_underWay = 0;
    m_timer.stop();
}

QList<UaExpandedNodeId> NodeSearch::path(qsizetype hit) const
{
    QList<UaExpandedNodeId> path;
    for (quint32 node = m_hits[hit]; node != 0; node = m_nodes[node].parent)
        path.prepend(m_table.id(m_nodes[node].key));
    path.prepend(m_table.id(m_nodes[0].key));
    return path;
}

void NodeSearch::end(const Words& failure)
{
    ++m_search;
    m_failure = failure;
    m_keys.clear();
    m_frontier.clear();
    m_intakes.clear();
    m_underWay = 0;
    m_timer.stop();
    Q_EMIT changed();
}

void NodeSearch::browseMore()
{
    while (m_underWay < mostUnderWay && !m_frontier.isEmpty() && m_intakes.isEmpty()) {
        const qsizetype count = std::min(nodesAtATime, m_frontier.size());
        const QList<quint32> nodes = m_frontier.first(count);
        m_frontier.remove(0, count);
        QList<QvelBrowseItem> items;
        for (const quint32 node : nodes)
            items.append({m_table.nodeId(m_nodes[node].key)});
        ++m_underWay;
        takeWhenDone(m_table.session()->browse(items), this,
                     [this, nodes, search = m_search](QvelBrowseResult result) {
                         if (search == m_search)
                             answer(nodes, std::move(result));
                     });
    }
}

void NodeSearch::answer(const QList<quint32>& nodes, QvelBrowseResult result)
{
    --m_underWay;
    if (result.status.isBad())
        return end([status = result.status] { return statusInWords(status); });
    // A node that cannot be browsed has no children here; the tree tells why where it is opened.
    for (qsizetype i = 0; i < std::min(nodes.size(), result.results.size()); ++i)
        if (!result.results[i].references.isEmpty())
            m_intakes.append({nodes[i], ReferenceIntake(std::move(result.results[i].references))});
    m_timer.start(0);
}

void NodeSearch::takeSome()
{
    QElapsedTimer clock;
    clock.start();
    qsizetype done = 0;
    while (done < m_intakes.size() && !clock.hasExpired(ReferenceIntake::milliseconds)) {
        Intake& intake = m_intakes[done];
        intake.references.take(clock, [&](const QvelReference& r) { take(intake.parent, r); });
        done += intake.references.isDone();
    }
    m_intakes.remove(0, done);
    if (m_intakes.isEmpty())
        m_timer.stop();
    if (m_nodes.size() > mostNodes || m_hits.size() >= mostHits)
        return end([] { return tr("That is enough: there may be more."); });
    browseMore();
    Q_EMIT changed();
}

void NodeSearch::take(quint32 parent, const QvelReference& reference)
{
    const QByteArray key = m_table.key(reference.nodeId);
    const qsizetype before = m_keys.size();
    m_keys.insert(key);
    if (m_keys.size() == before || !reference.isForward)
        return;
    const quint32 number = quint32(m_nodes.size());
    m_nodes.append({key, parent});
    if (!m_table.nodeId(key).isNull())
        m_frontier.append(number);
    const auto matches = [this](const UaString& name) {
        return name.toQString().contains(m_text, Qt::CaseInsensitive);
    };
    if (matches(reference.displayName.text()) || matches(reference.browseName.name()))
        m_hits.append(number);
}

#include "benchmarks/gapwatch.h"
#include "benchmarks/live/areas.h"
#include "session/sessionuser.h"

#include <Kestrel/QvelAddressSpaceModel>
#include <Kestrel/QvelAddressSpaceWidget>

#include <QtTest/QtTest>
#include <QtWidgets/QTreeView>

#include <malloc.h>

namespace {

constexpr int runs = 7;
UaNodeId folder()
{
    return UaNodeId(UaString("Many"), 1);
}

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "%s\n", what);
    std::exit(2);
}

/// A server with a folder of many children, and a session with it.
struct Connection
{
    explicit Connection(int children)
    {
        QvelDiscoverySetting setting;
        setting.setEndpointUrl(server.start(NODE, {PEERS "/sessionserver.mjs", "--items=0",
                                                   QString("--children=%1").arg(children)}));
        setting.setSecurityPolicy(
            QStringLiteral("http://opcfoundation.org/UA/SecurityPolicy#None"));
        setting.setMessageSecurityMode(OpcUa_MessageSecurityMode_None);
        if (setting.endpointUrl().isEmpty() || !connectSession(session, setting).isNull())
            fail("no session with the server of the benchmark");
    }
    PeerProcess server;
    QvelSession session;
};

/// A tree in which the folder is the current node, still closed.
class Tree : public QObject
{
public:
    explicit Tree(QvelSession& session)
    {
        m_widget.resize(800, 600);
        m_widget.setSession(&session);
        m_widget.show();
        m_widget.goTo(session.toExpandedNodeId(folder()));
        if (!QTest::qWaitFor(
                [this] { return model().nodeLink(index()).displayName == QLatin1String("Many"); },
                30'000))
            fail("the folder is not in the tree");
        m_widget.view()->viewport()->installEventFilter(this);
    }
    QvelAddressSpaceModel& model() const { return *m_widget.model(); }
    QModelIndex index() const { return m_widget.view()->currentIndex().siblingAtColumn(0); }
    /// Opens the folder, until all its children are there and painted.
    void open(int children)
    {
        const QPersistentModelIndex parent = index();
        QTest::keyClick(m_widget.view(), Qt::Key_Right);
        const QDeadlineTimer deadline(120'000);
        while (m_painted < children) {
            if (deadline.hasExpired())
                fail("the children do not come");
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }

private:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            m_painted = model().rowCount(index());
        return QObject::eventFilter(watched, event);
    }

    QvelAddressSpaceWidget m_widget;
    int m_painted = 0;
};

double heapBytes()
{
    QTest::qWait(1000); // what was for the way only is gone then
    malloc_trim(0);
    const auto info = mallinfo2();
    return double(info.uordblks) + double(info.hblkhd);
}

struct Cost
{
    double bytes; // that a row takes, view and all, but for the texts of its node
    double gap;
};

Cost costOfOpening(int children)
{
    Connection connection(children);
    Tree tree(connection.session);
    const double before = heapBytes();
    GapWatch gap(threadMilliseconds);
    tree.open(children);
    const double after = heapBytes();
    double texts = 0;
    for (int row = 0; row < children; ++row) {
        const QvelAddressSpaceModel& model = tree.model();
        for (auto column : {QvelAddressSpaceModel::DisplayName, QvelAddressSpaceModel::BrowseName,
                            QvelAddressSpaceModel::NodeId})
            texts += double(model.index(row, column, tree.index()).data().toString().size());
    }
    return {(after - before - texts) / children, gap.longest()};
}

} // namespace

void benchAddressSpace(Figures& figures)
{
    constexpr int children = 10'000;
    Connection connection(children);
    QvelBrowseItem item;
    item.nodeId = folder();
    const auto [tree, plain] = medians(
        runs,
        [&] {
            Tree fresh(connection.session);
            return milliseconds([&] { fresh.open(children); });
        },
        [&] {
            return milliseconds([&] {
                const auto result = resultOf(connection.session.browse({item}));
                if (result.results.value(0).references.size() != children)
                    fail("a wrong number of children");
            });
        });
    figures.report("address space: 10,000 children from key to painted, of their browse",
                   tree / plain, 1.3);
    const Cost many = costOfOpening(100'000);
    figures.report("address space: memory of 100,000 nodes over their texts, each", many.bytes, 300,
                   " bytes");
    figures.report("address space: longest gap at 100,000 children", many.gap, 16, " ms");
}

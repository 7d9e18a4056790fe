// The address space as a tree, beside the bare answers of the session.

#include "benchmarks/figure.h"
#include "session/sessionscript.h"

#include "nodes/addressspacemodel.h"
#include "nodes/addressspacewidget.h"

#include <QtCore/QAbstractEventDispatcher>
#include <QtWidgets/QApplication>
#include <QtWidgets/QTreeView>

#include <malloc.h>

namespace {

constexpr int runs = 15;
constexpr int pageSize = 10'000;

QByteArray nameOf(OpcUa_UInt32 number)
{
    return "Line 4 Station " + QByteArray::number(number);
}
// Of all texts that a node keeps.
constexpr double textSize = 2 * 21;

/// A server on which node N has N children: one that costs less than any real one.
class Tags
{
public:
    Tags() : m_identity(makeIdentity(2048)), m_server([this](ServerPeer& peer) { serve(peer); }) {}
    QByteArray url() const { return m_server.url(); }

private:
    void serve(ServerPeer& peer)
    {
        const auto browse = [](Server& s, const Message& m, OpcUa_UInt32 type) {
            OpcUa_UInt32 next = 0;
            OpcUa_UInt32 end = 0;
            if (type == BrowseRequest::encodingId) {
                const QvelBrowseItem node = decoded<BrowseRequest>(m).nodesToBrowse[0];
                if (node.referenceTypeId == UaNodeId(33)) // its children
                    end = node.nodeId.toString().bytes().toUInt();
            } else if (type == BrowseNextRequest::encodingId) {
                const auto point = decoded<BrowseNextRequest>(m).continuationPoints[0].split(' ');
                next = point[0].toUInt();
                end = point[1].toUInt();
            } else {
                return false;
            }
            BrowseResult page;
            for (int i = 0; i < pageSize && next < end; ++i, ++next) {
                QvelReference reference;
                reference.referenceTypeId = UaNodeId(35);
                const UaString name(nameOf(100'000 + next));
                reference.nodeId = UaExpandedNodeId(UaNodeId(name, 1), UaString(), 0);
                reference.browseName = UaQualifiedName(name, 1);
                reference.displayName = UaLocalizedText(UaString(), name);
                reference.nodeClass = 2;
                reference.typeDefinition = UaExpandedNodeId(UaNodeId(63), UaString(), 0);
                page.references.append(reference);
            }
            if (next < end)
                page.continuationPoint = QByteArray::number(next) + ' ' + QByteArray::number(end);
            if (type == BrowseRequest::encodingId)
                s.reply(m, BrowseResponse{{}, {page}, {}});
            else
                s.reply(m, BrowseNextResponse{{}, {page}, {}});
            return true;
        };
        if (peer.acknowledge())
            Server(peer, m_identity, 0, browse).serve();
    }

    const Identity m_identity;
    HostileServer m_server;
};

double threadMilliseconds()
{
    timespec time = {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return 1e3 * double(time.tv_sec) + 1e-6 * double(time.tv_nsec);
}

/// The longest piece of work between two looks at the events, in time of this thread's processor:
/// what else the machine does makes no difference.
class Gaps : public QObject
{
public:
    Gaps()
    {
        auto* dispatcher = QAbstractEventDispatcher::instance();
        connect(dispatcher, &QAbstractEventDispatcher::awake, this, [this] { note(); });
        connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this, [this] { note(); });
    }
    void note()
    {
        const double now = threadMilliseconds();
        longest = std::max(longest, now - m_last);
        m_last = now;
    }
    double longest = 0;

private:
    double m_last = threadMilliseconds();
};

/// A tree, from the session that it gets to the children of its root node.
class TreeUser
{
public:
    TreeUser(const UaExpandedNodeId& root, OpcUa_UInt32 children) : m_children(int(children))
    {
        widget.model()->setRootNode(root);
        widget.resize(600, 800);
        widget.show();
        QTest::qWait(100);
    }
    /// Until all children are there and painted.
    void open(QvelSession& session)
    {
        widget.setSession(&session);
        const QModelIndex root = widget.model()->index(0, 0);
        while (widget.model()->rowCount(root) < m_children)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        while (!widget.view()->visualRect(widget.model()->index(5, 0, root)).isValid())
            QApplication::processEvents();
        QApplication::processEvents();
    }
    QvelAddressSpaceWidget widget;

private:
    const int m_children;
};

void connectTo(QvelSession& session, const QString& url)
{
    QvelDiscoverySetting setting;
    setting.setEndpointUrl(url);
    setting.setSecurityPolicy(securityPolicyNone);
    setting.setMessageSecurityMode(OpcUa_MessageSecurityMode_None);
    const QvelSessionError error = connectSession(session, setting);
    if (!error.isNull())
        qFatal("%s", qPrintable(error.toString()));
}

double bytesInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return double(info.uordblks) + double(info.hblkhd);
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    Figures figures("nodes");
    SessionUser user;
    user.options.limits.memory = std::size_t(1) << 30;
    {
        PeerProcess server;
        QvelSession session(user.options);
        connectTo(session, server.start(NODE, {PEERS "/sessionserver.mjs"}));
        const UaNodeId many(UaString("Many"), 1);
        const auto [plain, painted] = medians(
            runs, [&] { return milliseconds([&] { resultOf(session.browse({{many}})); }); },
            [&] {
                TreeUser tree(UaExpandedNodeId(many, UaString(), 0), 10'000);
                return milliseconds([&] { tree.open(session); });
            });
        std::printf("10,000 children: browsed in %.1f ms, painted after %.1f ms\n", plain, painted);
        figures.report("10,000 children until painted, to browse", painted / plain, 1.3);
    }
    Tags tags;
    QvelSession session(user.options);
    connectTo(session, tags.url());
    constexpr OpcUa_UInt32 most = 100'000;
    TreeUser tree(UaExpandedNodeId(UaNodeId(most), UaString(), 0), most);
    malloc_trim(0);
    const double before = bytesInUse();
    Gaps gaps;
    tree.open(session);
    figures.report("longest gap at 100,000 children", gaps.longest, 16, " ms");
    const double used = (bytesInUse() - before) / most - textSize;
    figures.report("memory of a node over its texts, with the view", used, 300, " bytes");
    return figures.result();
}

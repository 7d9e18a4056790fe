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

constexpr int runs = 5;
constexpr int pageSize = 10'000;

QByteArray nameOf(OpcUa_UInt32 number)
{
    return "Line 4 Station " + QByteArray::number(number);
}
// Of all texts that a node keeps.
constexpr double textSize = 2 * 21;

/// A server on which node N has N children.
class Tags
{
public:
    Tags() : m_identity(makeIdentity(2048)), m_server([this](ServerPeer& peer) { serve(peer); }) {}
    QByteArray url() const { return m_server.url(); }

private:
    void serve(ServerPeer& peer)
    {
        const auto browse = [this](Server& s, const Message& m, OpcUa_UInt32 type) {
            if (type == BrowseRequest::encodingId) {
                const auto request = decoded<BrowseRequest>(m);
                m_next = 0;
                m_end = request.nodesToBrowse[0].nodeId.toString().bytes().toUInt();
                if (m_end == 84)
                    m_end = 0;
            } else if (type != BrowseNextRequest::encodingId) {
                return false;
            }
            BrowseResult page;
            for (int i = 0; i < pageSize && m_next < m_end; ++i, ++m_next) {
                QvelReference reference;
                reference.referenceTypeId = UaNodeId(35);
                const UaString name(nameOf(100'000 + m_next));
                reference.nodeId = UaExpandedNodeId(UaNodeId(name, 1), UaString(), 0);
                reference.browseName = UaQualifiedName(name, 1);
                reference.displayName = UaLocalizedText(UaString(), name);
                reference.nodeClass = 2;
                reference.typeDefinition = UaExpandedNodeId(UaNodeId(63), UaString(), 0);
                page.references.append(reference);
            }
            if (m_next < m_end)
                page.continuationPoint = "more";
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
    OpcUa_UInt32 m_next = 0;
    OpcUa_UInt32 m_end = 0;
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

class TreeUser
{
public:
    TreeUser(QvelSession& session, OpcUa_UInt32 children) : m_children(int(children))
    {
        widget.model()->setRootNode(UaExpandedNodeId(UaNodeId(children), UaString(), 0));
        widget.resize(600, 800);
        widget.show();
        QApplication::processEvents();
        widget.setSession(&session);
    }
    /// Until all rows are there and painted.
    void wait()
    {
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
    Tags tags;
    SessionUser user;
    user.options.limits.memory = std::size_t(1) << 30;
    QvelSession session(user.options);
    QvelDiscoverySetting setting;
    setting.setEndpointUrl(tags.url());
    setting.setSecurityPolicy(securityPolicyNone);
    setting.setMessageSecurityMode(OpcUa_MessageSecurityMode_None);
    connectSession(session, setting);

    constexpr OpcUa_UInt32 many = 10'000;
    const auto [plain, painted] = medians(
        runs, [&] { return milliseconds([&] { resultOf(session.browse({{UaNodeId(many)}})); }); },
        [&] { return milliseconds([&] { TreeUser(session, many).wait(); }); });
    std::printf("%u children: browsed in %.1f ms, painted after %.1f ms\n", many, plain, painted);
    figures.report("10,000 children to browse", painted / plain, 1.3);

    constexpr OpcUa_UInt32 most = 100'000;
    {
        TreeUser warm(session, many);
        warm.wait();
    }
    malloc_trim(0);
    const double before = bytesInUse();
    TreeUser tree(session, most);
    Gaps gaps;
    tree.wait();
    figures.report("longest gap at 100,000 children", gaps.longest, 16, " ms");
    const double used = (bytesInUse() - before) / most - textSize;
    figures.report("memory of a node over its texts, with the view", used, 300, " bytes");
    return figures.result();
}

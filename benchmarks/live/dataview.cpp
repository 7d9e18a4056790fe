#include "benchmarks/gapwatch.h"
#include "benchmarks/live/areas.h"
#include "session/sessionuser.h"

#include <Kestrel/QvelDataViewModel>
#include <Kestrel/QvelDataViewWidget>
#include <Kestrel/QvelSubscription>

#include <QtWidgets/QTableView>

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace {

constexpr int items = 1000;
constexpr int seconds = 5;
constexpr int runs = 3;
constexpr double interval = 100; // ms, in which each item changes once

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "live: %s\n", what);
    std::exit(2);
}

UaNodeId nodeOf(int number)
{
    return UaNodeId(UaString("Item" + QByteArray::number(number)), 1);
}

// The processor's milliseconds for some seconds of 10,000 values each.
double measure(GapWatch* gap)
{
    runEvents(2000);
    gap->restart();
    return cpuMilliseconds([] { runEvents(seconds * 1000); });
}

double ownCost(QvelSession& session)
{
    QvelSubscriptionParameters parameters;
    parameters.publishingInterval = interval;
    const std::unique_ptr<QvelSubscription> subscription(session.createSubscription(parameters));
    QList<QvelMonitoredItem> wanted(items);
    for (int i = 0; i < items; ++i) {
        wanted[i].nodeId = nodeOf(i);
        wanted[i].samplingInterval = 0;
        wanted[i].queueSize = 10;
    }
    subscription->addItems(wanted);
    qsizetype count = 0;
    QObject::connect(subscription.get(), &QvelSubscription::dataChanged, subscription.get(),
                     [&](const QList<QvelDataChange>& changes) { count += changes.size(); });
    GapWatch gap;
    const double cpu = measure(&gap);
    if (count < seconds * 9000)
        fail("too few values");
    return cpu;
}

struct Cost
{
    double cpu;
    double gap;
};

// Of all rows in sight, whatever the size of the screen.
Cost viewCost(QvelSession& session)
{
    using Model = QvelDataViewModel;
    QvelDataViewWidget widget;
    widget.setSession(&session);
    QList<QvelNodeLink> nodes;
    for (int i = 0; i < items; ++i)
        nodes.append({session.toExpandedNodeId(nodeOf(i)), {}});
    widget.addNodes(nodes);
    QList<int> rows(items);
    std::iota(rows.begin(), rows.end(), 0);
    Model* model = widget.model();
    model->setParameter(rows, Model::PublishingInterval, interval);
    model->setParameter(rows, Model::SamplingInterval, 0);
    auto* table = qobject_cast<QTableView*>(model->parent());
    widget.resize(1920, items * table->rowHeight(0) + 200);
    widget.show();
    const auto last = [&] { return model->index(items - 1, Model::Value).data().toDouble(); };
    if (!QTest::qWaitFor([&] { return last() > 0; }, 20'000))
        fail("no values");
    if (table->rowAt(table->viewport()->height() - 1) >= 0)
        fail("not all rows are in sight");
    GapWatch gap;
    const double before = last();
    const double cpu = measure(&gap);
    if (last() - before < seconds * 9)
        fail("too few values are shown");
    return {cpu, gap.longest()};
}

} // namespace

void benchDataView(Figures& figures)
{
    PeerProcess server;
    QvelDiscoverySetting setting;
    setting.setEndpointUrl(
        server.start(NODE, {PEERS "/sessionserver.mjs", "--children=0", "--operations=1000"}));
    setting.setSecurityPolicy(QStringLiteral("http://opcfoundation.org/UA/SecurityPolicy#None"));
    setting.setMessageSecurityMode(OpcUa_MessageSecurityMode_None);
    const SessionUser user;
    QvelSession session(user.options);
    if (setting.endpointUrl().isEmpty() || !connectSession(session, setting).isNull())
        fail("no session");
    double gap = 0;
    const auto [view, own] = medians(
        runs,
        [&] {
            const Cost cost = viewCost(session);
            gap = std::max(gap, cost.gap);
            return cost.cpu;
        },
        [&] { return ownCost(session); });
    std::fprintf(stderr, "# data view: %.0f ms in %d s, the session alone %.0f ms\n", view, seconds,
                 own);
    figures.report("data-view-10000-a-second-1000-rows", (view - own) / (10. * seconds), 15,
                   " % of a core");
    figures.report("data-view-event-loop-gap", gap, 16, " ms");
}

#include "discovery/endpoints.h"
#include "figure.h"
#include "platform/stack/checkmemory_p.h"
#include "support/memorysettings.h"
#include "support/peerprocess.h"

#include <Kestrel/QvelDiscoveryModel>
#include <Kestrel/QvelDiscoveryWidget>
#include <Kestrel/UaDiscovery>

#include <QtCore/QElapsedTimer>
#include <QtCore/QJsonDocument>
#include <QtCore/QThread>
#include <QtCore/QTimer>
#include <QtGui/QStandardItemModel>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>
#include <QtWidgets/QApplication>
#include <QtWidgets/QTreeView>

namespace {

constexpr int callTimeout = 60000; // ms
constexpr int manyNodes = 10000;
constexpr int jobs = 30;

QString nameOf(int i)
{
    return QString("Server %1").arg(i);
}

QString urlOf(const QTcpServer& server)
{
    return QString("opc.tcp://127.0.0.1:%1").arg(server.serverPort());
}

void showView(QTreeView& view)
{
    view.resize(400, 600);
    view.show();
    QApplication::processEvents();
}

// Notes when a view is painted.
class PaintWatch : public QObject
{
public:
    explicit PaintWatch(QTreeView& view) { view.viewport()->installEventFilter(this); }
    // Until what was inserted is on the screen.
    void waitForPaint()
    {
        for (m_painted = false; !m_painted;)
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

private:
    bool eventFilter(QObject*, QEvent* event) override
    {
        m_painted = m_painted || event->type() == QEvent::Paint;
        return false;
    }
    bool m_painted = false;
};

std::unique_ptr<QvelDiscoveryWidget> makeView(MemorySettings& settings)
{
    return std::make_unique<QvelDiscoveryWidget>(QvelDiscoveryWidget::OpcUa, &settings, callTimeout,
                                                 "session");
}

// From the delivery of built nodes until the expanded view shows them. The job that the nodes are
// said to come from waits for a silent server.
double mergeNodes(int count)
{
    QTcpServer silent;
    silent.listen(QHostAddress::LocalHost);
    MemorySettings settings;
    settings.values.insert("LocalDiscoveryUrl", urlOf(silent));
    const std::unique_ptr<QvelDiscoveryWidget> view = makeView(settings);
    showView(*view);
    while (QApplication::overrideCursor()) // the network is browsed
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    auto* model = static_cast<QvelDiscoveryModel*>(view->model());
    const QModelIndex local = model->index(0, 0);
    view->expand(local);
    while (!silent.hasPendingConnections())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QList<QvelDiscoveryNode*> nodes;
    for (int i = 0; i < count; ++i)
        nodes.append(new QvelDiscoveryNodeServer(nameOf(i), "opc.tcp://h", model));
    PaintWatch watch(*view);
    return cpuMilliseconds([&] {
        model->sltAddChildren(local, nodes);
        watch.waitForPaint();
    });
}

// The same rows, as built items, for Qt's own model and view.
double insertItems(int count)
{
    QStandardItemModel model;
    QTreeView view;
    view.setModel(&model);
    view.setHeaderHidden(true);
    auto* parent = new QStandardItem("Local");
    model.appendRow(parent);
    view.expand(parent->index());
    showView(view);
    QList<QStandardItem*> items;
    const QIcon icon(":/kestrel/images/server.png");
    for (int i = 0; i < count; ++i)
        items.append(new QStandardItem(icon, nameOf(i)));
    PaintWatch watch(view);
    return cpuMilliseconds([&] {
        parent->appendRows(items);
        view.expand(parent->index());
        watch.waitForPaint();
    });
}

// A record with the certificate and the token policies of a usual server.
QvelDiscoverySetting usualRecord()
{
    QvelDiscoverySetting record =
        fullSetting(3, {OpcUa_UserTokenType_Anonymous, OpcUa_UserTokenType_UserName,
                        OpcUa_UserTokenType_Certificate});
    auto* endpoint = const_cast<OpcUa_EndpointDescription*>(record.endpointDescription());
    const QByteArray certificate(1200, 'c');
    checkMemory(OpcUa_ByteString_Assign(&endpoint->ServerCertificate, certificate.constData(),
                                        OpcUa_Int32(certificate.size())));
    return record;
}

constexpr int copies = 20000;

double copyRecords(const QvelDiscoverySetting& record)
{
    return cpuMilliseconds([&record] {
        for (int i = 0; i < copies; ++i)
            const QvelDiscoverySetting copy(record);
    });
}

// What the copy of a record comes to: each of its byte sequences by itself, and its shared texts.
double copyFields(const QvelDiscoverySetting& record)
{
    const OpcUa_EndpointDescription& e = *record.endpointDescription();
    std::vector<std::pair<const void*, std::size_t>> fields;
    const auto add = [&fields](const OpcUa_String& text) {
        fields.push_back({text.Data, std::size_t(text.Length) + 1});
    };
    for (const OpcUa_String* text :
         {&e.EndpointUrl, &e.Server.ApplicationUri, &e.Server.ProductUri,
          &e.Server.ApplicationName.Locale, &e.Server.ApplicationName.Text,
          &e.Server.GatewayServerUri, &e.Server.DiscoveryProfileUri, &e.SecurityPolicyUri,
          &e.TransportProfileUri})
        add(*text);
    for (int i = 0; i < e.Server.NoOfDiscoveryUrls; ++i)
        add(e.Server.DiscoveryUrls[i]);
    for (int j = 0; j < e.NoOfUserIdentityTokens; ++j) {
        const OpcUa_UserTokenPolicy& policy = e.UserIdentityTokens[j];
        for (const OpcUa_String* text : {&policy.PolicyId, &policy.IssuedTokenType,
                                         &policy.IssuerEndpointUrl, &policy.SecurityPolicyUri})
            add(*text);
    }
    fields.push_back({e.ServerCertificate.Data, std::size_t(e.ServerCertificate.Length)});
    fields.push_back(
        {e.Server.DiscoveryUrls, std::size_t(e.Server.NoOfDiscoveryUrls) * sizeof(OpcUa_String)});
    fields.push_back({e.UserIdentityTokens,
                      std::size_t(e.NoOfUserIdentityTokens) * sizeof(OpcUa_UserTokenPolicy)});
    const QString texts[] = {record.displayName(),     record.sessionName(),
                             record.userName(),        record.password(),
                             record.certificateFile(), record.privateKeyFile()};

    std::vector<void*> blocks(fields.size());
    return cpuMilliseconds([&] {
        for (int i = 0; i < copies; ++i) {
            for (std::size_t k = 0; k < fields.size(); ++k) {
                blocks[k] = OpcUa_Memory_Alloc(fields[k].second);
                OpcUa_Memory_MemCpy(blocks[k], fields[k].first, fields[k].second);
            }
            const QString copied[] = {texts[0], texts[1], texts[2], texts[3], texts[4], texts[5]};
            for (void* block : blocks)
                OpcUa_Memory_Free(block);
        }
    });
}

// The longest time in which the event loop did not come round while jobs wait for servers that are
// silent, and the time that closing the view takes then.
std::pair<double, double> waitForSilentServers()
{
    QTcpServer server;
    server.setListenBacklogSize(2 * jobs);
    server.listen(QHostAddress::LocalHost);
    int connected = 0;
    QObject::connect(&server, &QTcpServer::newConnection, [&] {
        while (server.nextPendingConnection())
            ++connected;
    });
    MemorySettings settings;
    const QString url = urlOf(server);
    settings.values.insert("LocalDiscoveryUrl", url);
    settings.values.insert("NoOfDiscoveryServers", jobs);
    for (int i = 0; i < jobs; ++i)
        settings.values.insert(QString("DiscoveryServer%1").arg(i), url);
    std::unique_ptr<QvelDiscoveryWidget> view = makeView(settings);
    showView(*view);
    QAbstractItemModel* model = view->model();
    const QModelIndex custom = model->index(2, 0);

    QElapsedTimer sinceTick;
    qint64 longest = 0;
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout, [&] {
        longest = std::max(longest, sinceTick.nsecsElapsed()), sinceTick.start();
    });
    sinceTick.start();
    tick.start(0);
    for (int row = 1; row <= jobs; ++row) {
        view->expand(model->index(row, 0, custom));
        QApplication::processEvents();
    }
    QElapsedTimer watch;
    watch.start();
    while (connected < jobs && watch.elapsed() < 10000)
        QApplication::processEvents();
    while (watch.elapsed() < 2000)
        QApplication::processEvents();
    tick.stop();
    if (connected < jobs) {
        std::fprintf(stderr, "only %d of %d jobs reached their server\n", connected, jobs);
        std::exit(2);
    }
    const double closing = milliseconds([&view] { view.reset(); });
    return {double(longest) / 1e6, closing};
}

// GetEndpoints on a foreign server, connect and close included: our client and the server's own.
double getEndpointsAgainstNode()
{
    PeerProcess server;
    const QString url =
        server.start(NODE, {PLANT, "--port", "0", "--until-eof"}).section(' ', 0, 0);
    if (url.isEmpty()) {
        std::fprintf(stderr, "the server of the benchmark does not start\n");
        std::exit(2);
    }
    constexpr int rounds = 100;
    const auto ours = [&url] {
        std::vector<double> times;
        for (int i = 0; i < rounds; ++i) {
            times.push_back(milliseconds([&url] {
                UaStackTypeArray<OpcUa_EndpointDescription> endpoints;
                const UaStatus status = UaClientSdk::UaDiscovery::getEndpoints(
                    UaClientSdk::ServiceSettings(), UaString(url.toUtf8()),
                    UaClientSdk::SessionSecurityInfo(), endpoints);
                if (status.isNotGood() || endpoints.length() == 0) {
                    std::fprintf(stderr, "GetEndpoints: %s\n", status.toString().toUtf8());
                    std::exit(2);
                }
            }));
        }
        return median(std::move(times));
    };
    const auto nodes = [&url] {
        QProcess client;
        client.start(NODE, {PEERS, "time", url, QString::number(rounds)});
        client.waitForFinished(-1);
        const auto result = QJsonDocument::fromJson(client.readAllStandardOutput());
        const double figure = result["medianMs"].toDouble();
        if (figure <= 0) {
            std::fprintf(stderr, "the client of the benchmark failed: %s\n",
                         client.readAllStandardError().constData());
            std::exit(2);
        }
        return figure;
    };
    // As the discovery jobs do, on a thread of its own.
    const auto onThread = [&ours] {
        double figure = 0;
        const std::unique_ptr<QThread> thread(QThread::create([&] { figure = ours(); }));
        thread->start();
        thread->wait();
        return figure;
    };
    const auto [our, theirs] = medians(3, onThread, nodes);
    return our / theirs;
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    Figures figures("discovery");

    {
        const auto [ours, qts] = medians(
            15, [] { return mergeNodes(manyNodes); }, [] { return insertItems(manyNodes); });
        figures.report("merge-10000-nodes-vs-standard-model", ours / qts, 2);
    }
    {
        const auto [many, few] = medians(
            15, [] { return mergeNodes(manyNodes); }, [] { return mergeNodes(manyNodes / 10); });
        figures.report("merge-ten-times-the-nodes", many / few, 12);
    }
    {
        const QvelDiscoverySetting record = usualRecord();
        const auto [ours, plain] = medians(
            9, [&] { return copyRecords(record); }, [&] { return copyFields(record); });
        figures.report("copy-record-vs-plain-deep-copy", ours / plain, 1.5);
    }
    figures.report("getendpoints-vs-node-opcua", getEndpointsAgainstNode(), 0.2);
    const auto [gap, closing] = waitForSilentServers();
    figures.report("event-loop-gap-while-30-jobs-wait", gap, 50, " ms");
    figures.report("close-view-while-30-jobs-wait", closing, 200, " ms");
    return figures.result();
}

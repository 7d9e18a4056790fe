#include "discoveryserver.h"
#include "support/avahistandin.h"
#include "support/comstandin.h"
#include "support/memorysettings.h"
#include "support/warnings.h"

#include <Kestrel/QvelDiscoveryJob>
#include <Kestrel/QvelDiscoveryModel>

#include <QtCore/QPointer>
#include <QtTest/QtTest>
#include <QtWidgets/QApplication>

#include <optional>

class DiscoveryJobTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void findsServers();
    void fallsBackToEndpoints();
    void asksServerForEndpoints();
    void logsBothFailures();
    void boundsWhatItLogs();
    void isSilentAboutEmptyTargets_data();
    void isSilentAboutEmptyTargets();
    void browsesNetwork_data();
    void browsesNetwork();
    void enumeratesComServers_data();
    void enumeratesComServers();
    void logsComFailures();
    void ignoresChangesOfItsNode();
    void dropsResultsOfNodeAtSameAddress();
    void leaksNothingWithModel();

private:
    std::unique_ptr<QvelDiscoveryModel>
    makeModel(QvelDiscoveryWidget::OpcType type = QvelDiscoveryWidget::OpcUa);
    QModelIndex addNode(QvelDiscoveryModel& model, const QString& url);
    QvelDiscoveryNode* browse(QvelDiscoveryModel& model, const QString& url);

    std::unique_ptr<MemorySettings> m_settings;
};

void DiscoveryJobTest::init()
{
    failOnWarnings();
    m_settings = std::make_unique<MemorySettings>();
}

void DiscoveryJobTest::cleanup()
{
    QVERIFY(!QApplication::overrideCursor());
    comsurface::clearComTable();
}

std::unique_ptr<QvelDiscoveryModel> DiscoveryJobTest::makeModel(QvelDiscoveryWidget::OpcType type)
{
    return std::make_unique<QvelDiscoveryModel>(type, m_settings.get(), 20000, "my session");
}

QModelIndex DiscoveryJobTest::addNode(QvelDiscoveryModel& model, const QString& url)
{
    model.addRemoteServer(url);
    const QModelIndex custom = model.index(2, 0);
    return model.index(model.rowCount(custom) - 1, 0, custom);
}

// Waits for what is found there.
QvelDiscoveryNode* DiscoveryJobTest::browse(QvelDiscoveryModel& model, const QString& url)
{
    const QModelIndex index = addNode(model, url);
    model.fetchMore(index);
    [] { QTRY_VERIFY(!QApplication::overrideCursor()); }();
    return static_cast<QvelDiscoveryNode*>(index.internalPointer());
}

void DiscoveryJobTest::findsServers()
{
    const DiscoveryServer server([](auto& servers) {
        addServer(servers, "LDS", OpcUa_ApplicationType_DiscoveryServer, {"opc.tcp://h:4840"});
        addServer(servers, "Pump %2", OpcUa_ApplicationType_Server,
                  {"opc.tcp://h:1", "https://h:2", "OPC.TCP://h:3", "opc.tcp://h:4"});
        addServer(servers, "Client", OpcUa_ApplicationType_Client, {"opc.tcp://h:5"});
    });
    const auto model = makeModel();
    const QvelDiscoveryNode* node = browse(*model, server.url());
    QStringList found;
    for (QvelDiscoveryNode* child : node->children()) {
        QCOMPARE(child->type(), QvelDiscoveryNode::TypeServer);
        QCOMPARE(child->thread(), thread());
        QVERIFY(!child->isBrowsed());
        found.append(child->displayName() + " " +
                     static_cast<QvelDiscoveryNodeServer*>(child)->serverDiscoveryUrl());
    }
    QCOMPARE(found, QStringList({"Pump %2 opc.tcp://h:1", "Pump %2 opc.tcp://h:4",
                                 "Client opc.tcp://h:5"}));
    QCOMPARE(m_settings->log(), QStringList({
                                    "Discarding Server LDS with URL opc.tcp://h:4840",
                                    "Adding Server Pump %2 with URL opc.tcp://h:1",
                                    "Discarding Server Pump %2 with URL https://h:2",
                                    "Discarding Server Pump %2 with URL OPC.TCP://h:3",
                                    "Adding Server Pump %2 with URL opc.tcp://h:4",
                                    "Adding Server Client with URL opc.tcp://h:5",
                                }));
}

void DiscoveryJobTest::fallsBackToEndpoints()
{
    const DiscoveryServer server({}, [](auto& endpoints) {
        addEndpoint(endpoints, "Other name", "https://h:1");
        addEndpoint(endpoints, "Pump", "opc.tcp://h:2");
        addEndpoint(endpoints, "Pump", "opc.tcp://h:3");
    });
    const auto model = makeModel();
    const QvelDiscoveryNode* node = browse(*model, server.url());
    QCOMPARE(
        m_settings->log(),
        QStringList({"Discovery FindServers on " + server.url() + " failed (BadServiceUnsupported)",
                     "Discarding Url https://h:1", "Adding Url opc.tcp://h:2",
                     "Adding Url opc.tcp://h:3"}));
    QCOMPARE(node->childrenCount(), 1);
    QvelDiscoveryNode* wrapper = node->at(0);
    QCOMPARE(wrapper->type(), QvelDiscoveryNode::TypeServer);
    QCOMPARE(wrapper->displayName(), "Other name"); // of the first description
    QCOMPARE(static_cast<QvelDiscoveryNodeServer*>(wrapper)->serverDiscoveryUrl(), server.url());
    QVERIFY(wrapper->isBrowsed());
    QCOMPARE(wrapper->childrenCount(), 2);
    QCOMPARE(wrapper->at(1)->parent(), wrapper);
    QCOMPARE(wrapper->at(1)->row(), 1);
    QCOMPARE(wrapper->at(1)->thread(), thread());
}

void DiscoveryJobTest::asksServerForEndpoints()
{
    QString url;
    const DiscoveryServer server(
        [&](auto& servers) {
            addServer(servers, "Pump", OpcUa_ApplicationType_Server, {url.toUtf8()});
        },
        [](auto& endpoints) { addEndpoint(endpoints, "Pump", "opc.tcp://h:2"); });
    url = server.url();
    const auto model = makeModel();
    QvelDiscoveryNode* node = browse(*model, url)->at(0);
    const QModelIndex index = model->indexOf(node);
    model->fetchMore(index);
    QTRY_VERIFY(!QApplication::overrideCursor());
    QCOMPARE(node->childrenCount(), 1);
    QCOMPARE(node->at(0)->type(), QvelDiscoveryNode::TypeEndpoint);
    auto* endpoint = static_cast<QvelDiscoveryNodeEndpoint*>(node->at(0));
    QVERIFY(endpoint->isBrowsed());
    QCOMPARE(endpoint->displayName(), "Pump - Basic256 - Sign");
    QCOMPARE(model->index(0, 0, index).data().toString(), "Basic256 - Sign");
    QCOMPARE(endpoint->configuration().sessionName(), "my session");
    QCOMPARE(endpoint->configuration().endpointUrl(), "opc.tcp://h:2");
}

// The node's name is not the URL that is asked.
void DiscoveryJobTest::logsBothFailures()
{
    const DiscoveryServer server({});
    m_settings->values.insert("LocalDiscoveryUrl", server.url());
    const auto model = makeModel();
    model->fetchMore(model->index(0, 0));
    QTRY_VERIFY(!QApplication::overrideCursor());
    const QvelDiscoveryNode* node = model->getLocalNode();
    QVERIFY(!node->hasChildren() && node->isBrowsed() && !node->isBrowsing());
    const QString end = server.url() + " failed (BadServiceUnsupported)";
    QCOMPARE(m_settings->log(),
             QStringList({"Discovery FindServers on " + end, "Discovery GetEndpoints on " + end}));
}

void DiscoveryJobTest::boundsWhatItLogs()
{
    const DiscoveryServer server([](auto& servers) {
        addServer(servers, QByteArray(1 << 19, 'n') + "\nforged line", OpcUa_ApplicationType_Server,
                  {"opc.tcp://h\nforged line"});
    });
    const auto model = makeModel();
    const QvelDiscoveryNode* node = browse(*model, server.url());
    QCOMPARE(node->at(0)->displayName().size(), (1 << 19) + 12);
    QCOMPARE(m_settings->log().size(), 1);
    QVERIFY(m_settings->log().constFirst().size() < 2100);
    QVERIFY(!m_settings->log().constFirst().contains('\n'));
}

void DiscoveryJobTest::isSilentAboutEmptyTargets_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("discovery") << 0;
    QTest::newRow("server") << 1;
    QTest::newRow("network") << 2;
}

void DiscoveryJobTest::isSilentAboutEmptyTargets()
{
    QFETCH(int, kind);
    const auto model = makeModel();
    UaNetworkBrowser browser;
    QvelDiscoveryNodeDiscovery discovery(QString(), model.get());
    QvelDiscoveryNodeServer server("name", QString(), model.get());
    QvelDiscoveryNodeNetwork network(QString(), model.get(), UaNetworkBrowseResult::Domain);
    QvelDiscoveryNode* nodes[] = {&discovery, &server, &network};
    QvelDiscoveryJob job(model.get(), m_settings.get(), model->indexOf(nodes[kind]), &browser, 1000,
                         "s");
    QSignalSpy spy(&job, &QvelDiscoveryJob::newChildren);
    job.execute();
    QCOMPARE(spy.size(), 1);
    QVERIFY(spy[0][1].value<QList<QvelDiscoveryNode*>>().isEmpty());
    QCOMPARE(m_settings->log(), QStringList());
}

void DiscoveryJobTest::browsesNetwork_data()
{
    QTest::addColumn<QvelDiscoveryWidget::OpcType>("type");
    QTest::addColumn<QStringList>("urls");
    QTest::newRow("UA") << QvelDiscoveryWidget::OpcUa << QStringList("opc.tcp://PLANT7.local");
    QTest::newRow("DA") << QvelDiscoveryWidget::ComDa << QStringList("PLANT7.local");
    QTest::newRow("AE") << QvelDiscoveryWidget::ComAe << QStringList("PLANT7.local");
    QTest::newRow("no daemon") << QvelDiscoveryWidget::OpcUa << QStringList();
}

void DiscoveryJobTest::browsesNetwork()
{
    QFETCH(QvelDiscoveryWidget::OpcType, type);
    QFETCH(QStringList, urls);
    const PrivateSystemBus bus;
    QVERIFY2(bus.isRunning(), "dbus-daemon is needed");
    AvahiScript script;
    script.services = {{"Pump", "PLANT7.local"}};
    std::optional<AvahiStandIn> avahi;
    if (!urls.isEmpty())
        QVERIFY(avahi.emplace(bus.address(), script).isRunning());
    const auto model = makeModel(type);
    const QModelIndex network = model->index(1, 0);
    model->fetchMore(network);
    QTRY_VERIFY_WITH_TIMEOUT(!QApplication::overrideCursor(), 20000);
    QStringList found;
    for (auto* node : static_cast<QvelDiscoveryNode*>(network.internalPointer())->children()) {
        QCOMPARE(node->type(), QvelDiscoveryNode::TypeDiscovery);
        QCOMPARE(static_cast<QvelDiscoveryNodeDiscovery*>(node)->discoveryUrl(),
                 node->displayName());
        found.append(node->displayName());
    }
    QCOMPARE(found, urls);
    QCOMPARE(m_settings->log(), QStringList());
}

void DiscoveryJobTest::enumeratesComServers_data()
{
    QTest::addColumn<QvelDiscoveryWidget::OpcType>("type");
    QTest::addColumn<QString>("host");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("DA") << QvelDiscoveryWidget::ComDa << ""
                        << QStringList({"Vendor.One", "Vendor.Two", "Vendor.Three"});
    QTest::newRow("AE, remote") << QvelDiscoveryWidget::ComAe << "plant7"
                                << QStringList("plant7/Vendor.Alarms");
}

void DiscoveryJobTest::enumeratesComServers()
{
    QFETCH(QvelDiscoveryWidget::OpcType, type);
    QFETCH(QString, host);
    QFETCH(QStringList, names);
    comstandin::Computer computer;
    computer.servers = {
        {comstandin::dataAccess1, u"Vendor.One"},
        {comstandin::alarms, u"Vendor.Alarms"},
        {comstandin::dataAccess2, u"Vendor.Two"},
        {comstandin::dataAccess3, u"Vendor.Broken", comstandin::HRESULT(0x80004005)},
        {comstandin::dataAccess3, u"Vendor.Three"}};
    comstandin::install(computer, host.toStdU16String());
    const auto model = makeModel(type);
    QvelDiscoveryNode* node = browse(*model, host);
    QStringList found;
    for (QvelDiscoveryNode* child : node->children()) {
        QCOMPARE(child->type(), QvelDiscoveryNode::TypeEndpoint);
        QVERIFY(child->isBrowsed());
        found.append(child->displayName());
        const auto configuration = static_cast<QvelDiscoveryNodeEndpoint*>(child)->configuration();
        QCOMPARE(configuration.endpointUrl(), host);
        QCOMPARE(configuration.serverName(), child->displayName().section('/', -1));
        QCOMPARE(configuration.sessionName(), "my session");
    }
    QCOMPARE(found, names);
    QCOMPARE(model->index(0, 0, model->indexOf(node)).data(Qt::ToolTipRole).toString(),
             host.isEmpty() ? "localhost/" + names[0] : names[0]);
    const bool da = type == QvelDiscoveryWidget::ComDa;
    QCOMPARE(m_settings->log(),
             da ? QStringList("GetClassDetails failed (0x80004005)") : QStringList());
    QCOMPARE(comsurface::comUsage().initialized, 0);
    QCOMPARE(comsurface::comUsage().taskBlocks, 0);
    QCOMPARE(computer.objects.load(), 0);
}

void DiscoveryJobTest::logsComFailures()
{
    using comstandin::HRESULT;
    comstandin::Computer computer;
    comstandin::install(computer);
    comsurface::ComAnswers initialize, create;
    initialize.coInitializeEx = HRESULT(0x80010106);
    create.coCreateInstanceEx = HRESULT(0x80070005);
    const auto model = makeModel(QvelDiscoveryWidget::ComDa);
    const auto browseWith = [&](const comsurface::ComAnswers& answers, const QString& host) {
        comsurface::setComAnswers(answers);
        QVERIFY(!browse(*model, host)->hasChildren());
    };
    browseWith(initialize, {});
    browseWith(create, {});
    browseWith({}, "plant7"); // where no class is registered
    computer.enumeration = HRESULT(0x8000FFFF);
    browseWith({}, {});
    QCOMPARE(m_settings->log(), QStringList({"CoInitializeEx failed (0x80010106)",
                                             "CoCreateInstanceEx failed (0x80070005)",
                                             "CoCreateInstanceEx failed (0x80040154)",
                                             "EnumClassesOfCategories failed (0x8000ffff)"}));
}

// A job knows its node by what it was when the job was made.
void DiscoveryJobTest::ignoresChangesOfItsNode()
{
    const DiscoveryServer server([](auto& servers) {
        addServer(servers, "Pump", OpcUa_ApplicationType_Server, {"opc.tcp://h:1"});
    });
    const auto model = makeModel();
    UaNetworkBrowser browser;
    auto node = std::make_unique<QvelDiscoveryNodeDiscovery>(server.url(), model.get());
    QvelDiscoveryJob job(model.get(), m_settings.get(), model->indexOf(node.get()), &browser, 20000,
                         "s");
    node->setDiscoveryUrl("opc.tcp://127.0.0.1:1");
    node.reset();
    job.execute();
    QCOMPARE(m_settings->log(), QStringList("Adding Server Pump with URL opc.tcp://h:1"));
}

void DiscoveryJobTest::dropsResultsOfNodeAtSameAddress()
{
    const auto model = makeModel();
    const QModelIndex custom = model->index(2, 0);
    const DiscoveryServer silent({}, {}, true);
    for (int round = 0; round < 50; ++round) {
        DiscoveryServer server(
            [](auto& servers) {
                addServer(servers, "Of the old node", OpcUa_ApplicationType_Server,
                          {"opc.tcp://h:1"});
            },
            {}, true);
        const QModelIndex old = addNode(*model, server.url());
        model->fetchMore(old);
        QTRY_VERIFY(server.isAsked());
        const void* address = old.internalPointer();
        model->remove(old);
        const QModelIndex index = addNode(*model, silent.url());
        if (index.internalPointer() == address) {
            model->fetchMore(index);
            const int lines = m_settings->log().size();
            server.release();
            QTRY_COMPARE(m_settings->log().size(), lines + 1);
            QTest::qWait(20);
            QCOMPARE(model->rowCount(index), 0);
            QVERIFY(QApplication::overrideCursor());
            return; // with the model, the job that still waits goes
        }
        model->remove(index);
        server.release();
        QTRY_VERIFY(!QApplication::overrideCursor());
        QCOMPARE(model->rowCount(custom), 1);
    }
    QSKIP("no address was used again, as with a memory checker");
}

void DiscoveryJobTest::leaksNothingWithModel()
{
    const DiscoveryServer server([](auto& servers) {
        addServer(servers, "Pump", OpcUa_ApplicationType_Server,
                  {"opc.tcp://h:1", "opc.tcp://h:2"});
    });
    auto model = makeModel();
    UaNetworkBrowser browser;
    QvelDiscoveryJob job(model.get(), m_settings.get(), addNode(*model, server.url()), &browser,
                         20000, "s");
    QSignalSpy spy(&job, &QvelDiscoveryJob::newChildren);
    job.execute();
    const auto children = spy[0][1].value<QList<QvelDiscoveryNode*>>();
    QCOMPARE(children.size(), 2);
    const QList<QPointer<QObject>> watched(children.begin(), children.end());
    model.reset(); // the message to it has not been delivered
    QVERIFY(!watched[0] && !watched[1]);
}

QTEST_MAIN(DiscoveryJobTest)
#include "tst_discoveryjob.moc"

#include "discoveryserver.h"
#include "support/avahistandin.h"
#include "support/comstandin.h"
#include "support/memorysettings.h"
#include "support/warnings.h"

#include <Kestrel/QvelDiscoveryJob>
#include <Kestrel/QvelDiscoveryModel>

#include <QtNetwork/QTcpServer>
#include <QtTest/QtTest>
#include <QtWidgets/QApplication>

#include <random>

// "kind name address", the endpoints of a server in brackets behind it.
static QString told(const QList<QvelDiscoveryNode*>& nodes)
{
    QStringList list;
    for (QvelDiscoveryNode* node : nodes) {
        QString text = node->displayName();
        if (node->type() == QvelDiscoveryNode::TypeServer)
            text += " at " + static_cast<QvelDiscoveryNodeServer*>(node)->serverDiscoveryUrl();
        if (node->type() == QvelDiscoveryNode::TypeDiscovery)
            text = "ask " + static_cast<QvelDiscoveryNodeDiscovery*>(node)->discoveryUrl();
        if (node->type() == QvelDiscoveryNode::TypeEndpoint) {
            const auto setting = static_cast<QvelDiscoveryNodeEndpoint*>(node)->configuration();
            text += QString(" at %1, %2").arg(setting.endpointUrl(), setting.sessionName());
        }
        if (node->thread() != qApp->thread())
            text += " of another thread";
        if (node->isBrowsed())
            text += " [" + told(node->children()) + "]";
        list.append(text);
    }
    return list.join("; ");
}

class DiscoveryJobTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void asksServers_data();
    void asksServers();
    void browsesNetwork();
    void enumeratesComServers();
    void knowsNodeByWhatItWas();
    void dropsResultsOfNodeAtSameAddress();
    void endsWithoutWord();
    void survivesUsers();

private:
    QvelDiscoveryModel& start(QvelDiscoveryWidget::OpcType type = QvelDiscoveryWidget::OpcUa)
    {
        m_model = std::make_unique<QvelDiscoveryModel>(type, m_settings.get(), 20000, "me");
        return *m_model;
    }
    QModelIndex add(const QString& url) const
    {
        m_model->addRemoteServer(url);
        const QModelIndex custom = m_model->index(2, 0);
        return m_model->index(m_model->rowCount(custom) - 1, 0, custom);
    }
    // What is found there.
    QString browse(const QModelIndex& index) const
    {
        m_model->fetchMore(index);
        [] { QTRY_VERIFY_WITH_TIMEOUT(!QApplication::overrideCursor(), 20000); }();
        return told(static_cast<QvelDiscoveryNode*>(index.internalPointer())->children());
    }

    std::unique_ptr<MemorySettings> m_settings;
    std::unique_ptr<QvelDiscoveryModel> m_model;
};

void DiscoveryJobTest::init()
{
    failOnWarnings();
    m_settings = std::make_unique<MemorySettings>();
}

void DiscoveryJobTest::cleanup()
{
    m_model.reset();
    QVERIFY(!QApplication::overrideCursor());
    comstandin::clear();
}

using Servers = DiscoveryServer::Servers;
using Endpoints = DiscoveryServer::Endpoints;
Q_DECLARE_METATYPE(Servers)
Q_DECLARE_METATYPE(Endpoints)

// "%u" stands for the server's own URL.
void DiscoveryJobTest::asksServers_data()
{
    QTest::addColumn<Servers>("servers");
    QTest::addColumn<Endpoints>("endpoints");
    QTest::addColumn<QString>("found");
    QTest::addColumn<QString>("log");
    const Servers pumps = [](auto& servers) {
        addServer(servers, "LDS", OpcUa_ApplicationType_DiscoveryServer, {"opc.tcp://h:4840"});
        addServer(servers, "Pump %2", OpcUa_ApplicationType_Server,
                  {"opc.tcp://h:1", "https://h:2", "OPC.TCP://h:3", "opc.tcp://h:4"});
        addServer(servers, "Client", OpcUa_ApplicationType_Client, {"opc.tcp://h:5\nforged"});
    };
    QTest::newRow("servers")
        << pumps << Endpoints()
        << "Pump %2 at opc.tcp://h:1; Pump %2 at opc.tcp://h:4; Client at opc.tcp://h:5\nforged"
        << "Discarding Server LDS with URL opc.tcp://h:4840\n"
           "Adding Server Pump %2 with URL opc.tcp://h:1\n"
           "Discarding Server Pump %2 with URL https://h:2\n"
           "Discarding Server Pump %2 with URL OPC.TCP://h:3\n"
           "Adding Server Pump %2 with URL opc.tcp://h:4\n"
           "Adding Server Client with URL opc.tcp://h:5\ufffdforged";
    const Endpoints endpoints = [](auto& list) {
        addEndpoint(list, "First", "https://h:1");
        addEndpoint(list, "Pump", "opc.tcp://h:2");
        addEndpoint(list, "Pump", "opc.tcp://h:3");
    };
    const QString failed = "Discovery %1 on %u failed (BadServiceUnsupported)";
    QTest::newRow("plain server") << Servers() << endpoints
                                  << "First at %u [Pump - Basic256 - Sign at opc.tcp://h:2, me []; "
                                     "Pump - Basic256 - Sign at opc.tcp://h:3, me []]"
                                  << failed.arg("FindServers") +
                                         "\nDiscarding Url https://h:1\n"
                                         "Adding Url opc.tcp://h:2\nAdding Url opc.tcp://h:3";
    QTest::newRow("neither") << Servers() << Endpoints() << ""
                             << failed.arg("FindServers") + "\n" + failed.arg("GetEndpoints");
}

void DiscoveryJobTest::asksServers()
{
    QFETCH(Servers, servers);
    QFETCH(Endpoints, endpoints);
    QFETCH(QString, found);
    QFETCH(QString, log);
    const DiscoveryServer server(servers, endpoints);
    m_settings->values.insert("LocalDiscoveryUrl", server.url()); // which is not what it is called
    start();
    QCOMPARE(browse(m_model->index(0, 0)), found.replace("%u", server.url()));
    QCOMPARE(m_settings->log().join('\n'), log.replace("%u", server.url()));
    if (!endpoints)
        return;
    // The same of a server node, without another around it.
    const QModelIndex plain = m_model->index(0, 0, m_model->index(0, 0));
    QCOMPARE(browse(plain), found.section('[', 1).chopped(1));
    QCOMPARE(m_model->index(0, 0, plain).data().toString(), "Basic256 - Sign");
}

void DiscoveryJobTest::browsesNetwork()
{
    const PrivateSystemBus bus;
    QVERIFY2(bus.isRunning(), "dbus-daemon is needed");
    start();
    QCOMPARE(browse(m_model->index(1, 0)), ""); // no daemon
    AvahiScript script;
    script.services = {{"Pump", "PLANT7.local"}, {"Valve", "PLANT7.local"}};
    script.services[1].port = 48010;
    const AvahiStandIn avahi(bus.address(), script);
    QVERIFY(avahi.isRunning());
    QCOMPARE(browse(m_model->index(1, 0)),
             "ask opc.tcp://PLANT7.local; ask opc.tcp://PLANT7.local:48010");
    for (const auto type : {QvelDiscoveryWidget::ComDa, QvelDiscoveryWidget::ComAe}) {
        start(type);
        QCOMPARE(browse(m_model->index(1, 0)), "ask PLANT7.local");
    }
    QCOMPARE(m_settings->log(), QStringList());
}

void DiscoveryJobTest::enumeratesComServers()
{
    using comstandin::HRESULT;
    comstandin::Computer computer;
    computer.servers = {{comstandin::dataAccess1, u"V.One"},
                        {comstandin::alarms, u"V.Alarms"},
                        {comstandin::dataAccess2, u"V.Two"},
                        {comstandin::dataAccess3, u"V.Broken", HRESULT(0x80004005)},
                        {comstandin::dataAccess3, u"V.Three"}};
    comstandin::computers = {{u"", &computer}, {u"plant7", &computer}};
    start(QvelDiscoveryWidget::ComDa);
    QCOMPARE(browse(m_model->index(0, 0)),
             "V.One at , me []; V.Two at , me []; V.Three at , me []");
    QCOMPARE(m_model->index(0, 0, m_model->index(0, 0)).data(Qt::ToolTipRole).toString(),
             "localhost/V.One");
    comstandin::Answers initialize, create;
    initialize.coInitializeEx = HRESULT(0x80010106);
    create.coCreateInstanceEx = HRESULT(0x80070005);
    for (const auto& answers : {initialize, create, comstandin::Answers()}) {
        comstandin::answers = answers;
        QCOMPARE(browse(add("elsewhere")), ""); // where no class is registered
    }
    computer.enumeration = HRESULT(0x8000FFFF);
    QCOMPARE(browse(add({})), "");
    QCOMPARE(m_settings->log(), QStringList({"GetClassDetails failed (0x80004005)",
                                             "CoInitializeEx failed (0x80010106)",
                                             "CoCreateInstanceEx failed (0x80070005)",
                                             "CoCreateInstanceEx failed (0x80040154)",
                                             "EnumClassesOfCategories failed (0x8000ffff)"}));
    computer.enumeration = comstandin::S_OK;
    start(QvelDiscoveryWidget::ComAe);
    const QModelIndex remote = add("plant7");
    QCOMPARE(browse(remote), "plant7/V.Alarms at plant7, me []");
    QCOMPARE(m_model->index(0, 0, remote).data(Qt::ToolTipRole), "plant7/V.Alarms");
    QCOMPARE(comstandin::initialized + comstandin::taskBlocks, 0);
    QCOMPARE(computer.objects.load(), 0);
}

// A job knows its node by what it was, which may be nothing to ask; its result goes with the model.
void DiscoveryJobTest::knowsNodeByWhatItWas()
{
    const DiscoveryServer server([](auto& servers) {
        addServer(servers, "Pump", OpcUa_ApplicationType_Server, {"opc.tcp://h:1"});
    });
    UaNetworkBrowser browser;
    auto* model = &start();
    QvelDiscoveryNode* const nodes[] = {
        new QvelDiscoveryNodeDiscovery(server.url(), model),
        new QvelDiscoveryNodeDiscovery(QString(), model),
        new QvelDiscoveryNodeServer("name", QString(), model),
        new QvelDiscoveryNodeNetwork(QString(), model, UaNetworkBrowseResult::Domain)};
    QList<QPointer<QObject>> found;
    for (QvelDiscoveryNode* node : nodes) {
        QvelDiscoveryJob job(model, m_settings.get(), model->indexOf(node), &browser, 20000, "me");
        delete node;
        QSignalSpy spy(&job, &QvelDiscoveryJob::newChildren);
        job.execute();
        QCOMPARE(spy.size(), 1);
        for (QvelDiscoveryNode* child : spy[0][1].value<QList<QvelDiscoveryNode*>>())
            found.append(child);
    }
    QCOMPARE(found.size(), 1);
    QCOMPARE(m_settings->log(), QStringList("Adding Server Pump with URL opc.tcp://h:1"));
    m_model.reset(); // nothing has been delivered to it
    QVERIFY(!found[0]);
}

void DiscoveryJobTest::dropsResultsOfNodeAtSameAddress()
{
    const DiscoveryServer silent({}, {}, true);
    start();
    for (int round = 0; round < 50; ++round) {
        DiscoveryServer server(
            [](auto& list) { addServer(list, "Old", OpcUa_ApplicationType_Server, {"opc.tcp:"}); },
            {}, true);
        const QModelIndex old = add(server.url());
        m_model->fetchMore(old);
        QTRY_VERIFY(server.isAsked());
        m_model->remove(old);
        const QModelIndex index = add(silent.url());
        const bool same = index.internalPointer() == old.internalPointer();
        if (same)
            m_model->fetchMore(index);
        const auto lines = m_settings->log().size();
        server.release();
        QTRY_COMPARE(m_settings->log().size(), lines + 1);
        QTest::qWait(20);
        QCOMPARE(m_model->rowCount(index), 0);
        QCOMPARE(QApplication::overrideCursor() != nullptr, same);
        if (same)
            return; // the job that still waits goes with the model
        m_model->remove(index);
    }
    QSKIP("no address was used again, as with a memory checker");
}

// More jobs than threads wait when the model goes: neither a line nor another connection.
void DiscoveryJobTest::endsWithoutWord()
{
    QTcpServer silent;
    QVERIFY(silent.listen(QHostAddress::LocalHost));
    start();
    const QModelIndex index = add(QString("opc.tcp://127.0.0.1:%1").arg(silent.serverPort()));
    for (int i = 0; i < 100; ++i)
        m_model->fetchMore(index);
    for (int i = 0; i < 30; ++i) {
        QTRY_VERIFY(silent.hasPendingConnections());
        silent.nextPendingConnection();
    }
    m_model.reset();
    QCOMPARE(m_settings->log(), QStringList());
    QTest::qWait(50);
    QVERIFY(!silent.hasPendingConnections());
}

// Views that come and go while jobs run. It is meant for the builds with sanitizers, too.
void DiscoveryJobTest::survivesUsers()
{
    constexpr unsigned seed = 20240611;
    qInfo("seed %u", seed);
    std::mt19937 random(seed);
    const auto below = [&random](int bound) {
        return std::uniform_int_distribution<int>(0, bound - 1)(random);
    };
    const auto pumps = [](int count) {
        return [count](auto& servers) {
            for (int i = 0; i < count; ++i)
                addServer(servers, "Pump", OpcUa_ApplicationType_Server, {"opc.tcp://127.0.0.1:1"});
        };
    };
    const DiscoveryServer quick(pumps(3)), large(pumps(300));
    const DiscoveryServer plain(
        {}, [](auto& endpoints) { addEndpoint(endpoints, "Plain", "opc.tcp://127.0.0.1:1"); });
    QTcpServer silent;
    QVERIFY(silent.listen(QHostAddress::LocalHost));
    const QStringList urls = {quick.url(), large.url(), plain.url(), "opc.tcp://127.0.0.1:1",
                              QString("opc.tcp://127.0.0.1:%1").arg(silent.serverPort())};
    m_settings->values.insert("LocalDiscoveryUrl", quick.url());
    int deliveries = 0;
    for (int round = 0; round < 200; ++round) {
        m_settings->values.insert("NoOfDiscoveryServers", 0);
        QvelDiscoveryWidget view(QvelDiscoveryWidget::OpcUa, m_settings.get(), 20000, "me");
        view.show();
        auto* model = static_cast<QvelDiscoveryModel*>(view.model());
        connect(model, &QAbstractItemModel::rowsInserted, this, [&] { ++deliveries; });
        const QModelIndex custom = model->index(2, 0);
        for (int step = below(30); step > 0; --step) {
            const QModelIndex node = model->index(below(model->rowCount(custom)), 0, custom);
            const int operation = below(6);
            if (operation == 2 || operation == 3)
                view.setCurrentIndex(node);
            if (operation == 0)
                model->addRemoteServer(urls[below(int(urls.size()))]);
            else if (operation == 1)
                view.expand(node);
            else if (operation == 2)
                QMetaObject::invokeMethod(&view, "sltRebrowse");
            else if (operation == 3)
                QTest::keyClick(&view, Qt::Key_Delete);
            else if (operation == 5)
                QTest::qWait(below(15));
            else if (const int servers = model->rowCount(node)) // one that a job has found
                view.expand(model->index(below(servers), 0, node));
        }
        if (below(4) == 0)
            QThread::msleep(below(20)); // results wait for delivery
    }
    QVERIFY(deliveries > 200); // or nothing was tried
}

QTEST_MAIN(DiscoveryJobTest)
#include "tst_discoveryjob.moc"

#include "endpoints.h"
#include "platform/stack/checkmemory_p.h"
#include "support/avahistandin.h"
#include "support/comstandin.h"
#include "support/hostileserver.h"
#include "support/warnings.h"

#include <Kestrel/QvelDiscoveryJob>
#include <Kestrel/QvelDiscoveryModel>
#include <Kestrel/UaStackTypeArray>

#include <QtGui/QtGui>

#include <optional>

namespace {

// What a server tells of itself, or of an endpoint at the first of the URLs.
QvelDiscoverySetting server(const char* name, const QStringList& urls,
                            int type = OpcUa_ApplicationType_Server)
{
    MemorySettings store;
    store.values = {{"P.Server.ApplicationNameText", name},
                    {"P.Server.ApplicationType", type},
                    {"P.Server.NoOfDiscoveryUrls", urls.size()},
                    {"P.ServerUrl", urls[0]},
                    {"P.SecurityPolicy", "http://opcfoundation.org/UA/SecurityPolicy#Basic256"},
                    {"P.MessageSecurityMode", 2}};
    for (int i = 0; i < urls.size(); ++i)
        store.values.insert(QString("P.Server.DiscoveryUrl%1").arg(i), urls[i]);
    return readRecord(store);
}
using Served = QList<QvelDiscoverySetting>;

/// A server with both discovery services. A service without an answer gives a fault.
class DiscoveryServer
{
public:
    DiscoveryServer(const Served& servers, const Served& endpoints)
    {
        UaStackTypeArray<OpcUa_EndpointDescription> copies;
        copy(servers, copies);
        m_servers.servers.resize(copies.length());
        for (OpcUa_UInt32 i = 0; i < copies.length(); ++i)
            std::swap(m_servers.servers[i], copies[i].Server);
        copy(endpoints, m_endpoints.endpoints);
        m_server.emplace([this](ServerPeer& peer) { serve(peer); });
    }
    QString url() const { return QString::fromLatin1(m_server->url()); }

private:
    static void copy(const Served& records, UaStackTypeArray<OpcUa_EndpointDescription>& list)
    {
        list.resize(OpcUa_UInt32(records.size()));
        for (OpcUa_UInt32 i = 0; i < list.length(); ++i)
            checkMemory(
                OpcUa_EndpointDescription_CopyTo(records[i].endpointDescription(), &list[i]));
    }
    void serve(ServerPeer& peer)
    {
        const std::optional<UaWire::Message> request = peer.takeRequest();
        if (!request)
            return;
        QByteArrayView body = request->body;
        const OpcUa_UInt32 type = UaWire::takeTypeId(body);
        UaWire::ServiceFault fault;
        fault.header.serviceResult = OpcUa_BadServiceUnsupported;
        const bool finds = type == UaWire::FindServersRequest::encodingId;
        if (finds && m_servers.servers.length() > 0)
            peer.answer(*request, m_servers);
        else if (!finds && m_endpoints.endpoints.length() > 0)
            peer.answer(*request, m_endpoints);
        else
            peer.answer(*request, fault);
        peer.receive(); // the client closes
    }

    UaWire::FindServersResponse m_servers;
    UaWire::GetEndpointsResponse m_endpoints;
    std::optional<HostileServer> m_server;
};

// "name at address", what is below it in brackets.
QString told(const QModelIndex& parent)
{
    QStringList list;
    const QAbstractItemModel* model = parent.model();
    for (int row = 0; row < model->rowCount(parent); ++row) {
        const QModelIndex index = model->index(row, 0, parent);
        const QString text = index.data().toString(), tip = index.data(Qt::ToolTipRole).toString();
        const QString below = told(index);
        list.append(text + (tip == text ? "" : " at " + tip) +
                    (below.isEmpty() ? below : " [" + below + "]"));
    }
    return list.join("; ");
}

} // namespace

class DiscoveryModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        failOnWarnings();
        m_settings = std::make_unique<MemorySettings>();
        QVERIFY(m_silent.isListening() || m_silent.listen(QHostAddress::LocalHost));
    }
    void cleanup()
    {
        m_model.reset();
        QVERIFY(!QApplication::overrideCursor() && !m_settings->isOpen());
        comstandin::clear();
    }
    // "%u" stands for the server's own URL.
    void asksServers()
    {
        const QString failed = "Discovery %1 on %u failed (BadServiceUnsupported)\n";
        const std::tuple<Served, Served, QString, QString> rows[] = {
            {{server("LDS", {"opc.tcp://h:4840"}, OpcUa_ApplicationType_DiscoveryServer),
              server("Pump %2", {"opc.tcp://h:1", "https://h:2", "OPC.TCP://h:3", "opc.tcp://h:4"}),
              server("Client", {"opc.tcp://h:5\nforged"}, OpcUa_ApplicationType_Client)},
             {},
             "Pump %2 at opc.tcp://h:1; Pump %2 at opc.tcp://h:4; Client at "
             "opc.tcp://h:5\ufffdforged",
             "Discarding Server LDS with URL opc.tcp://h:4840\n"
             "Adding Server Pump %2 with URL opc.tcp://h:1\n"
             "Discarding Server Pump %2 with URL https://h:2\n"
             "Discarding Server Pump %2 with URL OPC.TCP://h:3\n"
             "Adding Server Pump %2 with URL opc.tcp://h:4\n"
             "Adding Server Client with URL opc.tcp://h:5\ufffdforged\n"},
            {{},
             {server("First", {"https://h:1"}), server("Pump", {"opc.tcp://h:2"}),
              server("Pump", {"opc.tcp://h:3"})},
             "First at %u [Basic256 - Sign at opc.tcp://h:2; Basic256 - Sign at opc.tcp://h:3]",
             failed.arg("FindServers") + "Discarding Url https://h:1\nAdding Url opc.tcp://h:2\n"
                                         "Adding Url opc.tcp://h:3\n"},
            {{}, {}, "", failed.arg("FindServers") + failed.arg("GetEndpoints")}};
        for (auto [servers, endpoints, found, log] : rows) {
            init();
            const DiscoveryServer peer(servers, endpoints);
            m_settings->values.insert("LocalDiscoveryUrl", peer.url());
            start();
            QCOMPARE(browse(m_model->index(0, 0)), found.replace("%u", peer.url()));
            QCOMPARE(m_settings->log().join('\n') + '\n', log.replace("%u", peer.url()));
            QCOMPARE(m_model->getLocalNode()->lastFailure(),
                     found.isEmpty()
                         ? peer.url() + " does not tell its endpoints (BadServiceUnsupported)."
                         : "");
            if (!endpoints.isEmpty()) { // the same of a server, without another around it
                const QModelIndex plain = m_model->index(0, 0, m_model->index(0, 0));
                QCOMPARE(browse(plain), found.section('[', 1).chopped(1));
                auto* last = static_cast<QvelDiscoveryNodeEndpoint*>(
                    m_model->index(1, 0, plain).internalPointer());
                QCOMPARE(last->configuration().sessionName() + last->configuration().serverName(),
                         "mePump");
            }
            m_model.reset();
        }
    }
    void browsesNetwork()
    {
        const PrivateSystemBus bus;
        QVERIFY2(bus.isRunning(), "dbus-daemon is needed");
        start();
        QCOMPARE(browse(m_model->index(1, 0)), ""); // no daemon
        const auto toolTip = [&] { return m_model->index(1, 0).data(Qt::ToolTipRole).toString(); };
        QCOMPARE(toolTip(), "Local Network");
        m_model->setFailuresInToolTips(true);
        QVERIFY2(toolTip().contains("Avahi, does not run"), qPrintable(toolTip()));
        AvahiScript script;
        script.services = {{"Pump", "PLANT7.local"}, {"Valve", "PLANT7.local", 48010}};
        const AvahiStandIn avahi(bus.address(), script);
        QVERIFY(avahi.isRunning());
        const QString servers = "opc.tcp://PLANT7.local; opc.tcp://PLANT7.local:48010";
        for (const int type : {0, 1, 2}) {
            start(type);
            QCOMPARE(browse(m_model->index(1, 0)),
                     type == QvelDiscoveryWidget::OpcUa ? servers : "PLANT7.local");
        }
        QCOMPARE(m_settings->log(), QStringList());
    }
    void enumeratesComServers()
    {
        using comstandin::HRESULT;
        comstandin::Computer computer;
        computer.servers = {{comstandin::dataAccess1, u"V.One"},
                            {comstandin::alarms, u"V.Alarms"},
                            {comstandin::dataAccess3, u"V.Broken", HRESULT(0x80004005)},
                            {comstandin::dataAccess3, u"V.Three"}};
        comstandin::computers = {{u"", &computer}, {u"plant7", &computer}};
        start(QvelDiscoveryWidget::ComDa);
        QCOMPARE(browse(m_model->index(0, 0)),
                 "V.One at localhost/V.One; V.Three at localhost/V.Three");
        for (const HRESULT result : {HRESULT(0x80010106), comstandin::S_OK}) {
            comstandin::answers.coInitializeEx = result;
            QCOMPARE(browse(add("elsewhere")), ""); // where no class is registered
        }
        computer.enumeration = HRESULT(0x8000FFFF);
        QCOMPARE(browse(add("plant7")), "");
        QCOMPARE(m_settings->log(), QStringList({"GetClassDetails failed (0x80004005)",
                                                 "CoInitializeEx failed (0x80010106)",
                                                 "CoCreateInstanceEx failed (0x80040154)",
                                                 "EnumClassesOfCategories failed (0x8000ffff)"}));
        computer.enumeration = comstandin::S_OK;
        start(QvelDiscoveryWidget::ComAe);
        QCOMPARE(browse(add("plant7")), "plant7/V.Alarms");
    }
    // A job knows its node by what it was, which may be nothing to ask; its result goes with the
    // model.
    void knowsNodeByWhatItWas()
    {
        const DiscoveryServer peer({server("Pump", {"opc.tcp://h:1"})}, {});
        UaNetworkBrowser browser;
        auto* model = start();
        QvelDiscoveryNode* const nodes[] = {
            new QvelDiscoveryNodeDiscovery(peer.url(), model),
            new QvelDiscoveryNodeDiscovery(QString(), model),
            new QvelDiscoveryNodeServer("name", QString(), model),
            new QvelDiscoveryNodeNetwork(QString(), model, UaNetworkBrowseResult::Domain)};
        QList<QPointer<QObject>> found;
        for (QvelDiscoveryNode* node : nodes) {
            QvelDiscoveryJob job(model, m_settings.get(), model->indexOf(node), &browser, 20000,
                                 "me");
            delete node;
            connect(&job, &QvelDiscoveryJob::newChildren, this,
                    [&](const QModelIndex&, const QList<QvelDiscoveryNode*>& children) {
                        found.append({children.begin(), children.end()});
                    });
            job.execute();
        }
        QCOMPARE(found.size(), 1);
        QCOMPARE(m_settings->log(), QStringList("Adding Server Pump with URL opc.tcp://h:1"));
        m_model.reset(); // nothing has been delivered to it
        QVERIFY(!found[0]);
    }
    // Against what the rows have to be, with requests that never end by themselves.
    void mergesAtRandom()
    {
        struct Expected
        {
            QString url;
            int waiting = 0;
            bool browsing = false;
            QStringList children = {};
        };
        constexpr quint32 seed = 20240615;
        qInfo("seed %u", seed);
        QRandomGenerator random(seed);
        for (int run = 0; run < 4; ++run) {
            init();
            m_settings->values.insert("LocalDiscoveryUrl", "opc.tcp://127.0.0.1:1");
            QvelDiscoveryModel* const model = start();
            QAbstractItemModelTester tester(model);
            QTRY_VERIFY(!QApplication::overrideCursor()); // it has fetched what can be fetched
            tester.setUseFetchMore(false);
            QApplication::setOverrideCursor(Qt::CrossCursor); // a host's
            const auto failures = m_settings->log().size();   // of the local URL
            const QModelIndex custom = model->index(2, 0);
            QList<Expected> rows;
            int jobs = 0;
            for (int step = 0; step < 150; ++step) {
                const int row = int(random.bounded(qMax(qsizetype(1), rows.size())));
                const QModelIndex index = model->index(row + 1, 0, custom);
                const int operation = rows.isEmpty() ? 0 : int(random.bounded(6));
                if (operation == 0) {
                    rows.append({silentUrl() + QString("/%1").arg(step)});
                    model->addRemoteServer(rows.last().url);
                } else if (operation <= 2) { // ask, of an edited URL or the same
                    operation == 1 ? model->fetchMore(index)
                                   : model->editUrl(index, rows[row].url += "/e");
                    rows[row] = {rows[row].url, rows[row].waiting + 1, true};
                    ++jobs;
                } else if (operation <= 4) { // something is delivered
                    QList<QvelDiscoveryNode*> nodes;
                    QStringList names;
                    for (int i = random.bounded(3); i > 0; --i) {
                        names.append(QString("%1.%2").arg(step).arg(i));
                        nodes.append(
                            new QvelDiscoveryNodeServer(names.last(), names.last(), model));
                    }
                    const QList<QPointer<QObject>> watched(nodes.begin(), nodes.end());
                    const bool wanted = rows[row].waiting > 0;
                    if (wanted)
                        rows[row].children += names, --rows[row].waiting, --jobs;
                    else
                        QApplication::setOverrideCursor(Qt::BusyCursor);
                    rows[row].browsing = rows[row].browsing && !wanted;
                    model->sltAddChildren(index, nodes);
                    for (const auto& node : watched)
                        QCOMPARE(bool(node), wanted);
                } else {
                    model->remove(index);
                    rows.removeAt(row);
                }
                QCOMPARE(model->rowCount(custom), rows.size() + 1);
                for (int i = 0; i < rows.size(); ++i) {
                    const QModelIndex child = model->index(i + 1, 0, custom);
                    auto* node = static_cast<QvelDiscoveryNode*>(child.internalPointer());
                    QCOMPARE(child.data(), rows[i].url);
                    QCOMPARE(told(child), rows[i].children.join("; "));
                    QCOMPARE(node->isBrowsing(), rows[i].browsing);
                }
                QCOMPARE(QApplication::overrideCursor()->shape(),
                         jobs > 0 ? Qt::BusyCursor : Qt::CrossCursor);
            }
            m_model.reset(); // those that wait end without a word
            QCOMPARE(QApplication::overrideCursor()->shape(), Qt::CrossCursor);
            QApplication::restoreOverrideCursor();
            QCOMPARE(m_settings->log().size(), failures);
        }
    }
    void standsOddIndexes()
    {
        auto* model = start();
        QVERIFY(!model->index(0, 1).isValid());
        QVERIFY(model->index(99, 0).isValid());
        bool accepted = false;
        for (const QModelIndex& index : {model->index(99, 0), QModelIndex()}) {
            for (int role = Qt::DisplayRole; role <= Qt::ForegroundRole; ++role)
                QVERIFY(!model->data(index, role).isValid());
            QVERIFY(!model->parent(index).isValid() && !model->canFetchMore(index));
            QCOMPARE(model->flags(index), Qt::NoItemFlags);
            model->fetchMore(index);
            model->remove(index);
            model->editUrl(index, "opc.tcp://h");
            model->updateEndpointConfiguration(fullSetting(), index, accepted);
            const QPointer<QvelDiscoveryNode> node = new QvelDiscoveryNodeServer("", "", model);
            QApplication::setOverrideCursor(Qt::BusyCursor);
            model->sltAddChildren(index, {node});
            QVERIFY(!node && !QApplication::overrideCursor());
        }
        QCOMPARE(model->rowCount(), 4);
        // Of a kind that there is none of, only the entries of the user's are left.
        start(7)->addRemoteServer("opc.tcp://h");
        QCOMPARE(m_model->rowCount(), 1);
    }
    void showsTexts()
    {
        const std::pair<QString, QString> rows[] = {
            {"a\nb\u202e <img src='file:///x'>", "a\ufffdb\ufffd <img src='file:///x'>"},
            {"<b>" + QString(1 << 20, 'x'), "<b>" + QString(996, 'x') + "\u2026"}};
        start(QvelDiscoveryWidget::ComDa);
        for (const auto& [text, shown] : rows) {
            const QModelIndex index = add(text);
            QCOMPARE(index.data(), shown);
            QString toolTip = index.data(Qt::ToolTipRole).toString();
            if (Qt::mightBeRichText(toolTip)) { // as QToolTip decides; it then shows this:
                QTextDocument document;
                document.setHtml(toolTip);
                toolTip = document.toPlainText();
            }
            QCOMPARE(toolTip, shown);
        }
    }

private:
    QvelDiscoveryModel* start(int type = QvelDiscoveryWidget::OpcUa)
    {
        m_model = std::make_unique<QvelDiscoveryModel>(QvelDiscoveryWidget::OpcType(type),
                                                       m_settings.get(), 60000, "me");
        return m_model.get();
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
        return told(index);
    }
    QString silentUrl() const
    {
        return QString("opc.tcp://127.0.0.1:%1").arg(m_silent.serverPort());
    }

    std::unique_ptr<MemorySettings> m_settings;
    std::unique_ptr<QvelDiscoveryModel> m_model;
    QTcpServer m_silent; // accepts connections, but never says anything
};

QTEST_MAIN(DiscoveryModelTest)
#include "tst_discoverymodel.moc"

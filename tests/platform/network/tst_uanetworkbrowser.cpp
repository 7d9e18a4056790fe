#include "platform/network/uanetworkbrowser.h"
#include "platform/stack/opcuastatuscodes.h"
#include "support/avahistandin.h"
#include "support/warnings.h"

#include <QtCore/QThread>
#include <QtNetwork/QLocalServer>

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

Q_DECLARE_METATYPE(AvahiScript)

namespace {

struct Answer
{
    UaStatus status;
    QStringList hosts;
};

Answer browse()
{
    // What a caller left in the list does not come back.
    QList<UaNetworkBrowseResult> results = {{UaString("stale"), UaNetworkBrowseResult::Domain}};
    Answer answer;
    answer.status = UaNetworkBrowser().browse(UaString("Local Network"), results);
    for (const UaNetworkBrowseResult& result : std::as_const(results)) {
        if (result.type() == UaNetworkBrowseResult::Computer)
            answer.hosts.append(QString::fromUtf8(result.name().bytes()));
        else
            answer.hosts.append(QStringLiteral("not a computer"));
    }
    return answer;
}

/// Like a job of a pool: a thread without an event loop.
class BrowseThread
{
public:
    BrowseThread() : m_thread(QThread::create([this] { m_answer = browse(); }))
    {
        m_thread->start();
    }
    Answer answer()
    {
        m_thread->wait();
        return m_answer;
    }
    void interrupt() { m_thread->requestInterruption(); }

private:
    Answer m_answer;
    const std::unique_ptr<QThread> m_thread;
};

void useBus(const QString& address)
{
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", address.toUtf8());
}

AvahiScript script(const QList<AvahiScript::Service>& services)
{
    AvahiScript script;
    script.services = services;
    return script;
}

} // namespace

class TestUaNetworkBrowser : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        m_bus = std::make_unique<PrivateSystemBus>();
        QVERIFY2(m_bus->isRunning(), "dbus-daemon is needed");
    }
    void init() { failOnWarnings(); }

    void results_data()
    {
        QTest::addColumn<AvahiScript>("script");
        QTest::addColumn<QStringList>("hosts");

        QTest::newRow("none") << script({}) << QStringList();
        AvahiScript plant = script({{"Press 2", "plant7.local"}, {"Press 1", "Anna.local"}});
        QTest::newRow("two, sorted") << plant << QStringList({"Anna.local", "plant7.local"});
        plant.early = true;
        QTest::newRow("signals before the answer")
            << plant << QStringList({"Anna.local", "plant7.local"});
        QTest::newRow("two servers of one host")
            << script({{"A", "plant7.local"}, {"B", "PLANT7.local."}})
            << QStringList({"PLANT7.local"});
        QTest::newRow("one name in two domains")
            << script({{"A", "a.local"}, {"A", "a.example.org", "example.org"}})
            << QStringList({"a.example.org", "a.local"});
        QTest::newRow("one that has gone")
            << script({{"Gone", ""}, {"Here", "here.local"}}) << QStringList({"here.local"});
        QTest::newRow("beyond ASCII") << script({{"Mühle", QString::fromUtf8("mühle.local")}})
                                      << QStringList(QString::fromUtf8("mühle.local"));
        plant.copies = 4;
        QTest::newRow("on four interfaces") << plant << QStringList({"Anna.local", "plant7.local"});
        AvahiScript crowd;
        QStringList first;
        for (int i = 0; i < UaNetworkBrowser::maxServices + 200; ++i) {
            const QString host = QString("host%1.local").arg(i);
            crowd.services.append({QString::number(i), host});
            if (i < UaNetworkBrowser::maxServices)
                first.append(host);
        }
        first.sort();
        QTest::newRow("a crowd") << crowd << first;
        QTest::newRow("names that are none") << script({{"1", "."},
                                                        {"2", "a/b"},
                                                        {"3", "a b"},
                                                        {"4", "a:4840/?x=#y"},
                                                        {"5", "user@host"},
                                                        {"6", "line\nbreak"},
                                                        {"7", QString(254, 'x')},
                                                        {"8", "-dash"},
                                                        {"9", "%41"},
                                                        {"10", QString(1000000, 'x')},
                                                        {QString(1000, 'n'), "long.local"},
                                                        {"11", QString(253, 'x')}})
                                             << QStringList(QString(253, 'x'));
    }
    void results()
    {
        QFETCH(AvahiScript, script);
        QFETCH(QStringList, hosts);
        AvahiStandIn avahi(m_bus->address(), script);
        QVERIFY(avahi.isRunning());
        const Answer answer = BrowseThread().answer();
        QCOMPARE(answer.status.code(), OpcUa_Good);
        QCOMPARE(answer.hosts, hosts);
        QVERIFY(avahi.resolveCalls() <=
                std::min(int(script.services.size()), UaNetworkBrowser::maxServices));
    }

    void failures_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<AvahiScript>("script");
        QTest::addColumn<uint>("status");
        AvahiScript refusing, failing = script({{"A", "a.local"}});
        refusing.refuses = true;
        failing.fails = true;
        const QString bus = m_bus->address();
        QTest::newRow("no browser") << bus << refusing << OpcUa_BadCommunicationError;
        QTest::newRow("failing browser") << bus << failing << OpcUa_BadCommunicationError;
        QTest::newRow("no daemon") << bus << AvahiScript() << OpcUa_BadConnectionRejected;
        for (const char* address :
             {"unix:path=/nonexistent/bus", "tcp:host=127.0.0.1,port=1", "nonsense"})
            QTest::newRow(address)
                << QString(address) << AvahiScript() << OpcUa_BadConnectionRejected;
        QTest::newRow("long address") << QString("unix:path=/").leftJustified(5000, 'x')
                                      << AvahiScript() << OpcUa_BadConnectionRejected;
    }
    void failures()
    {
        QFETCH(QString, address);
        QFETCH(AvahiScript, script);
        QFETCH(uint, status);
        std::optional<AvahiStandIn> avahi;
        if (script.refuses || script.fails)
            avahi.emplace(m_bus->address(), script);
        useBus(address);
        const Answer answer = BrowseThread().answer();
        useBus(m_bus->address());
        QCOMPARE(answer.status.code(), status);
        QCOMPARE(answer.hosts, QStringList());
    }

    /// The bus or the daemon leaves something open for ever; the time limit ends it. Each of the
    /// cases has a bus of its own, so that they wait at the same time.
    void timeLimit()
    {
        QLocalServer silentBus;
        const QTemporaryDir dir;
        QVERIFY(silentBus.listen(dir.filePath("bus")));
        useBus("unix:path=" + silentBus.fullServerName());
        BrowseThread withoutBus;
        QVERIFY(silentBus.waitForNewConnection(5000));

        AvahiScript silent, endless;
        silent.silent = true;
        endless.neverDone = true;
        const AvahiScript scripts[] = {silent, endless,
                                       script({{"A", "a.local"}, {"B", "b.local", "local", true}})};
        std::vector<std::unique_ptr<PrivateSystemBus>> buses;
        std::vector<std::unique_ptr<AvahiStandIn>> daemons;
        std::vector<std::unique_ptr<BrowseThread>> threads;
        for (const AvahiScript& script : scripts) {
            buses.push_back(std::make_unique<PrivateSystemBus>());
            daemons.push_back(std::make_unique<AvahiStandIn>(buses.back()->address(), script));
            threads.push_back(std::make_unique<BrowseThread>());
            QTRY_COMPARE(daemons.back()->browserCalls(), 1);
        }
        useBus(m_bus->address());
        QCOMPARE(withoutBus.answer().status.code(), OpcUa_BadTimeout);
        for (int i : {0, 1}) {
            QCOMPARE(threads[i]->answer().status.code(), OpcUa_BadTimeout);
            QCOMPARE(threads[i]->answer().hosts, QStringList());
        }
        QCOMPARE(threads[2]->answer().status.code(), OpcUa_Good);
        QCOMPARE(threads[2]->answer().hosts, QStringList("a.local"));
        buses.clear();
        useBus(m_bus->address());
    }

    /// Of waiting for the bus, and for the daemon.
    void interruption()
    {
        const QTemporaryDir dir;
        QLocalServer silentBus;
        QVERIFY(silentBus.listen(dir.filePath("bus")));
        useBus("unix:path=" + silentBus.fullServerName());
        BrowseThread withoutBus;
        QVERIFY(silentBus.waitForNewConnection(5000));
        withoutBus.interrupt();
        QCOMPARE(withoutBus.answer().status.code(), OpcUa_BadShutdown); // not BadTimeout
        useBus(m_bus->address());

        AvahiScript silent;
        silent.silent = true;
        AvahiStandIn avahi(m_bus->address(), silent);
        BrowseThread thread;
        QTRY_COMPARE(avahi.browserCalls(), 1);
        thread.interrupt();
        QCOMPARE(thread.answer().status.code(), OpcUa_BadShutdown);
        QCOMPARE(thread.answer().hosts, QStringList());
    }

    void severalAtOnce()
    {
        AvahiStandIn avahi(m_bus->address(), script({{"A", "a.local"}, {"B", "b.local"}}));
        std::vector<std::unique_ptr<BrowseThread>> threads;
        for (int i = 0; i < 12; ++i)
            threads.push_back(std::make_unique<BrowseThread>());
        for (const auto& thread : threads) {
            const Answer answer = thread->answer();
            QCOMPARE(answer.status.code(), OpcUa_Good);
            QCOMPARE(answer.hosts, QStringList({"a.local", "b.local"}));
        }
    }

    void onTheMainThread()
    {
        AvahiStandIn avahi(m_bus->address(), script({{"A", "a.local"}}));
        bool foreignEvent = false;
        QMetaObject::invokeMethod(
            this, [&foreignEvent] { foreignEvent = true; }, Qt::QueuedConnection);
        QCOMPARE(browse().hosts, QStringList("a.local"));
        QVERIFY(!foreignEvent);
        QCoreApplication::sendPostedEvents(this);
        QVERIFY(foreignEvent);
    }

private:
    std::unique_ptr<PrivateSystemBus> m_bus;
};

QTEST_GUILESS_MAIN(TestUaNetworkBrowser)
#include "tst_uanetworkbrowser.moc"

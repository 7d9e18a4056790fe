#include "platform/network/uanetworkbrowser.h"
#include "platform/stack/opcuastatuscodes.h"
#include "support/avahistandin.h"
#include "support/warnings.h"

#include <QtCore/QThread>
#include <QtNetwork/QLocalServer>

#include <memory>

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
    }

    void eachServiceIsResolvedOnce()
    {
        AvahiScript plant = script({{"A", "a.local"}, {"B", "b.local"}});
        plant.copies = 4;
        AvahiStandIn avahi(m_bus->address(), plant);
        QCOMPARE(BrowseThread().answer().hosts, QStringList({"a.local", "b.local"}));
        QCOMPARE(avahi.resolveCalls(), 2);
    }

    void numberOfServicesIsBounded()
    {
        AvahiScript crowd;
        for (int i = 0; i < UaNetworkBrowser::maxServices + 200; ++i)
            crowd.services.append({QString::number(i), QStringLiteral("host%1.local").arg(i)});
        AvahiStandIn avahi(m_bus->address(), crowd);
        const Answer answer = BrowseThread().answer();
        QCOMPARE(answer.status.code(), OpcUa_Good);
        QCOMPARE(answer.hosts.size(), UaNetworkBrowser::maxServices);
        QCOMPARE(avahi.resolveCalls(), UaNetworkBrowser::maxServices);
    }

    void failures_data()
    {
        QTest::addColumn<AvahiScript>("script");
        AvahiScript plant = script({{"A", "a.local"}});
        plant.refuses = true;
        QTest::newRow("no browser") << plant;
        plant.refuses = false;
        plant.fails = true;
        QTest::newRow("failing browser") << plant;
    }
    void failures()
    {
        QFETCH(AvahiScript, script);
        AvahiStandIn avahi(m_bus->address(), script);
        const Answer answer = BrowseThread().answer();
        QCOMPARE(answer.status.code(), OpcUa_BadCommunicationError);
        QCOMPARE(answer.hosts, QStringList());
    }

    void noDaemon()
    {
        const Answer answer = BrowseThread().answer();
        QCOMPARE(answer.status.code(), OpcUa_BadConnectionRejected);
        QCOMPARE(answer.hosts, QStringList());
    }

    void noBus_data()
    {
        QTest::addColumn<QString>("address");
        QTest::newRow("no socket") << "unix:path=/nonexistent/bus";
        QTest::newRow("other transport") << "tcp:host=127.0.0.1,port=1";
        QTest::newRow("no address") << "nonsense";
        QTest::newRow("a long one") << QString("unix:path=/").leftJustified(5000, 'x');
    }
    void noBus()
    {
        QFETCH(QString, address);
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", address.toUtf8());
        const Answer answer = BrowseThread().answer();
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_bus->address().toUtf8());
        QCOMPARE(answer.status.code(), OpcUa_BadConnectionRejected);
        QCOMPARE(answer.hosts, QStringList());
    }

    /// Something listens there but never says a word.
    void silentBus_data()
    {
        QTest::addColumn<bool>("interrupted");
        QTest::addColumn<uint>("status");
        QTest::newRow("until the time is up") << false << OpcUa_BadTimeout;
        QTest::newRow("until the interruption") << true << OpcUa_BadShutdown;
    }
    void silentBus()
    {
        QFETCH(bool, interrupted);
        QFETCH(uint, status);
        const QTemporaryDir dir;
        QLocalServer silent;
        QVERIFY(silent.listen(dir.filePath("bus")));
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + silent.fullServerName().toUtf8());
        BrowseThread thread;
        if (interrupted)
            thread.interrupt();
        const Answer answer = thread.answer();
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_bus->address().toUtf8());
        QCOMPARE(answer.status.code(), status);
    }

    /// The daemon leaves something open for ever; the time limit ends it.
    void timeLimit_data()
    {
        QTest::addColumn<AvahiScript>("script");
        QTest::addColumn<uint>("status");
        QTest::addColumn<QStringList>("hosts");
        AvahiScript silent;
        silent.silent = true;
        QTest::newRow("no answer") << silent << OpcUa_BadTimeout << QStringList();
        AvahiScript nothing;
        nothing.neverDone = true;
        QTest::newRow("no announcement, no end") << nothing << OpcUa_BadTimeout << QStringList();
        AvahiScript partly = script({{"A", "a.local"}, {"B", "b.local", "local", true}});
        QTest::newRow("one host missing") << partly << OpcUa_Good << QStringList("a.local");
    }
    void timeLimit()
    {
        QFETCH(AvahiScript, script);
        QFETCH(uint, status);
        QFETCH(QStringList, hosts);
        AvahiStandIn avahi(m_bus->address(), script);
        const Answer answer = BrowseThread().answer();
        QCOMPARE(answer.status.code(), status);
        QCOMPARE(answer.hosts, hosts);
    }

    void interruption()
    {
        AvahiScript silent;
        silent.silent = true;
        AvahiStandIn avahi(m_bus->address(), silent);
        BrowseThread thread;
        QTRY_COMPARE(avahi.browserCalls(), 1);
        thread.interrupt();
        const Answer answer = thread.answer();
        QCOMPARE(answer.status.code(), OpcUa_BadShutdown); // not BadTimeout
        QCOMPARE(answer.hosts, QStringList());
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

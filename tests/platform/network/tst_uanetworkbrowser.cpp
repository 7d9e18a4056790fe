#include "platform/network/uanetworkbrowser.h"
#include "platform/stack/opcuastatuscodes.h"
#include "support/avahistandin.h"
#include "support/warnings.h"

#include <QtNetwork/QtNetwork>

#include <memory>

namespace {

/// A job of a pool: a thread without an event loop.
class BrowseThread
{
public:
    BrowseThread() { m_thread->start(); }
    /// The hosts or the status, once the thread has ended.
    QString answer()
    {
        m_thread->wait();
        QByteArrayList names;
        for (const UaNetworkBrowseResult& result : std::as_const(m_results))
            names += result.type() == UaNetworkBrowseResult::Computer ? result.name().bytes() : "?";
        return (m_status.isGood() ? "" : m_status.toString().bytes()) + names.join(' ');
    }
    void interrupt() { m_thread->requestInterruption(); }

private:
    // What a caller left in the list does not come back.
    QList<UaNetworkBrowseResult> m_results = {{UaString("stale"), UaNetworkBrowseResult::Domain}};
    UaStatus m_status;
    const std::unique_ptr<QThread> m_thread{QThread::create(
        [this] { m_status = UaNetworkBrowser().browse(UaString("Local Network"), m_results); })};
};

void useBus(const QString& address)
{
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", address.toUtf8());
}

using Services = QList<AvahiScript::Service>;

} // namespace

class TestUaNetworkBrowser : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QVERIFY2(m_bus.isRunning(), "dbus-daemon is needed"); }
    void init()
    {
        failOnWarnings();
        useBus(m_bus.address());
    }

    void answers()
    {
        const auto row = [this](const char* name, const Services& services, const QString& expected,
                                AvahiScript::Fault fault = AvahiScript::None, int copies = 1) {
            const Case here(name);
            AvahiStandIn avahi(m_bus.address(), {services, copies, fault});
            QVERIFY(avahi.isRunning());
            QCOMPARE(BrowseThread().answer(), expected);
            QVERIFY(avahi.resolveCalls <=
                    std::min(int(services.size()), UaNetworkBrowser::maxServices));
        };
        const Services plant = {{"Press 2", "plant7.local"}, {"Press 1", "Anna.local"}};
        row("signals before the answer", plant, "Anna.local plant7.local", AvahiScript::Early);
        row("on four interfaces", plant, "Anna.local plant7.local", AvahiScript::None, 4);
        const QString beyondAscii = QString::fromUtf8("mühle.local");
        Services mixed = {{"A", "b.local", 10000}, {"B", "B.local.", 10000}, {"C", "b.local", 4841},
                          {"D", "b.local"},        {"E", "a.local", 62541},  {"F", "c.local", 0}};
        mixed << AvahiScript::Service{"G", ""} << AvahiScript::Service{"Mühle", beyondAscii}
              << AvahiScript::Service{"D", "a.example.org", 4840, "example.org"};
        row("mixture", mixed,
            "a.example.org a.local:62541 b.local b.local:4841 B.local:10000 " + beyondAscii);
        Services crowd;
        QStringList first;
        for (int i = 0; i < UaNetworkBrowser::maxServices + 200; ++i) {
            crowd.append({QString::number(i), QString("host%1.local").arg(i)});
            if (i < UaNetworkBrowser::maxServices)
                first.append(crowd.last().host);
        }
        first.sort();
        row("a crowd", crowd, first.join(u' '));
        Services bad = {{"A", QString(253, 'x')}, {QString(1000, 'n'), "long.local"}};
        for (const QString& name : QString(". a/b a:4840/?x=#y user@host a\nb -dash %41 a\t " +
                                           QString(254, 'x') + ' ' + QString(1000000, 'x'))
                                       .split(' '))
            bad.append({QString::number(bad.size()), name});
        row("names that are none", bad, QString(253, 'x'));
        row("no browser", {}, "BadCommunicationError", AvahiScript::Refuses);
        row("failing browser", plant, "BadCommunicationError", AvahiScript::Fails);
    }
    void nobodyToAsk()
    {
        for (const QString& address :
             QStringList{m_bus.address(), "unix:path=/nonexistent/bus", "tcp:host=127.0.0.1,port=1",
                         "nonsense", QString("unix:path=/").leftJustified(5000, 'x')}) {
            useBus(address);
            QCOMPARE(BrowseThread().answer(), "BadConnectionRejected");
        }
    }

    /// The bus or the daemon leaves something open for ever; the time limit ends it, or an
    /// interruption. Each case has a bus of its own, so that they wait at the same time.
    void timeLimitAndInterruption()
    {
        const std::pair<AvahiScript, const char*> cases[] = {
            {{{}, 1, AvahiScript::Silent}, "BadTimeout"},
            {{{}, 1, AvahiScript::NeverDone}, "BadTimeout"},
            {{{{"A", "a.local"}, {"B", "b.local", 4840, "local", true}}}, "a.local"},
            {{{}, 1, AvahiScript::Silent}, "BadShutdown"}};
        const QTemporaryDir dir;
        QLocalServer silentBus;
        QVERIFY(silentBus.listen(dir.filePath("bus")));
        useBus("unix:path=" + silentBus.fullServerName());
        BrowseThread withoutBus;
        QVERIFY(silentBus.waitForNewConnection(5000) && silentBus.nextPendingConnection());
        BrowseThread interrupted;
        QVERIFY(silentBus.waitForNewConnection(5000));
        interrupted.interrupt();

        std::vector<std::unique_ptr<PrivateSystemBus>> buses;
        std::vector<std::unique_ptr<AvahiStandIn>> daemons;
        std::vector<std::unique_ptr<BrowseThread>> threads;
        for (const auto& [script, expected] : cases) {
            buses.push_back(std::make_unique<PrivateSystemBus>());
            daemons.push_back(std::make_unique<AvahiStandIn>(buses.back()->address(), script));
            threads.push_back(std::make_unique<BrowseThread>());
            QTRY_COMPARE(daemons.back()->browserCalls, 1);
        }
        threads.back()->interrupt();
        QCOMPARE(interrupted.answer(), "BadShutdown"); // not BadTimeout
        for (std::size_t i = threads.size(); i-- > 0;)
            QCOMPARE(threads[i]->answer(), cases[i].second);
        QCOMPARE(withoutBus.answer(), "BadTimeout");
    }

    void onTheMainThread()
    {
        AvahiStandIn avahi(m_bus.address(), {{{"A", "a.local"}}});
        bool foreignEvent = false;
        QMetaObject::invokeMethod(
            this, [&foreignEvent] { foreignEvent = true; }, Qt::QueuedConnection);
        QList<UaNetworkBrowseResult> results;
        QVERIFY(UaNetworkBrowser().browse({}, results).isGood());
        QCOMPARE(results.size(), 1);
        QVERIFY(!foreignEvent);
        QCoreApplication::sendPostedEvents(this);
        QVERIFY(foreignEvent);
    }

private:
    const PrivateSystemBus m_bus;
};

QTEST_GUILESS_MAIN(TestUaNetworkBrowser)
#include "tst_uanetworkbrowser.moc"

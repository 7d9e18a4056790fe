#include "platform/wire/connector_p.h"
#include "support/hostileserver.h"
#include "support/warnings.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QProcess>
#include <QtNetwork/QTcpServer>
#include <QtTest/QtTest>

using namespace UaWire;

namespace {

QHostAddress loopback(int last)
{
    return QHostAddress(0x7f000000u + quint32(last));
}

const QHostAddress ipv6(QHostAddress::LocalHostIPv6);
const QHostAddress noRoute(QHostAddress::Broadcast); // refused by the system itself

HostResolver::Function giving(const QList<QHostAddress>& addresses)
{
    return [addresses](const QString&) { return HostAddresses{OpcUa_Good, addresses}; };
}

HostResolver::Function blockedBy(const std::shared_ptr<OneTimeEvent>& event)
{
    return [event](const QString& name) {
        if (name.startsWith(u"stalled"))
            event->wait();
        return HostAddresses{OpcUa_Good, {loopback(1)}};
    };
}

template <class T>
bool finishes(T& object)
{
    QSignalSpy finished(&object, &T::finished);
    return finished.wait(10000);
}

} // namespace

class TestConnector : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(m_good.listen(loopback(1)));
        if (!m_good6.listen(ipv6, m_good.serverPort()))
            QSKIP("no IPv6 on this system");
        m_silent.setListenBacklogSize(0);
        QVERIFY(m_silent.listen(loopback(2), m_good.serverPort()));
        m_silent.pauseAccepting();
        do { // until the queue of those that wait to be accepted is full
            QVERIFY(m_fillers.size() < 20);
            m_fillers.push_back(std::make_unique<QTcpSocket>());
            m_fillers.back()->connectToHost(loopback(2), m_good.serverPort());
        } while (m_fillers.back()->waitForConnected(100));
    }

    void init() { failOnWarnings(); }
    void connects_data()
    {
        QTest::addColumn<QList<QHostAddress>>("addresses");
        QTest::addColumn<OpcUa_StatusCode>("status");
        QTest::addColumn<QHostAddress>("peer");
        const QHostAddress good = loopback(1), silent = loopback(2), refusing = loopback(3);
        const auto row = [](const char* name, const QList<QHostAddress>& addresses,
                            OpcUa_StatusCode status, const QHostAddress& peer = {}) {
            QTest::newRow(name) << addresses << status << peer;
        };
        row("first", {good, ipv6}, OpcUa_Good, good);
        row("silent first", {silent, good}, OpcUa_Good, good);
        row("unreachable first", {noRoute, good}, OpcUa_Good, good);
        row("by turns", QList<QHostAddress>(30, silent) << ipv6, OpcUa_Good, ipv6);
        row("at once after a failure", QList<QHostAddress>(30, refusing) << good, OpcUa_Good, good);
        row("no address", {}, OpcUa_BadCommunicationError);
        row("unreachable", {noRoute, noRoute}, OpcUa_BadCommunicationError);
        row("refused tells more", {noRoute, refusing, noRoute}, OpcUa_BadConnectionRejected);
        row("silent", {refusing, silent}, OpcUa_BadTimeout);
    }

    void connects()
    {
        QFETCH(QList<QHostAddress>, addresses);
        QFETCH(QHostAddress, peer);
        HostResolver resolver(giving(addresses));
        Connector connector(resolver);
        QSignalSpy found(&connector, &Connector::hostFound);
        QSignalSpy finished(&connector, &Connector::finished);
        connector.start("plant.test", m_good.serverPort(), QDeadlineTimer(3000));
        QVERIFY(!connector.isFinished());
        QVERIFY(finished.wait(10000));
        QTEST(connector.status(), "status");
        QCOMPARE(found.size(), addresses.isEmpty() ? 0 : 1);
        const std::unique_ptr<QTcpSocket> socket = connector.takeSocket();
        QCOMPARE(socket ? socket->peerAddress() : QHostAddress(), peer);
        QVERIFY(!socket || socket->state() == QAbstractSocket::ConnectedState);
        // Nothing goes on.
        QTest::qWait(2 * int(Connector::attemptDelay.count()));
        QCOMPARE(finished.size(), 1);
        QVERIFY(peer == ipv6 || !m_good6.hasPendingConnections());
        delete m_good6.nextPendingConnection();
    }

    void lookUps()
    {
        const auto event = std::make_shared<OneTimeEvent>();
        std::atomic<int> calls = 0;
        HostResolver resolver([&, blocked = blockedBy(event)](const QString& name) {
            ++calls;
            HostAddresses result = blocked(name);
            if (name == QLatin1String("stalled.xn--bcher-kva.test"))
                result.addresses = {loopback(7)};
            return result;
        });
        std::vector<std::unique_ptr<HostLookup>> stalled;
        for (int i = 0; i < 24; ++i)
            stalled.push_back(std::make_unique<HostLookup>(QString("stalled%1").arg(i), resolver));
        HostLookup healthy("healthy", resolver);
        QVERIFY(finishes(healthy));
        QCOMPARE(healthy.result().addresses, QList<QHostAddress>{loopback(1)});

        HostLookup first(QString::fromUtf8("stalled.bücher.test"), resolver);
        HostLookup second(QString::fromUtf8("Stalled.BÜCHER.test"), resolver);
        QSignalSpy secondFinished(&second, &HostLookup::finished);
        stalled.clear();
        event->happen();
        QVERIFY(finishes(first) && (!secondFinished.isEmpty() || secondFinished.wait(10000)));
        QCOMPARE(first.result().addresses, QList<QHostAddress>{loopback(7)});
        QCOMPARE(second.result().addresses, first.result().addresses);
        QCOMPARE(calls, 26); // the last two shared theirs
        HostLookup again("healthy", resolver);
        QVERIFY(finishes(again));
        QCOMPARE(calls, 27);
    }

    void needsNoLookUp()
    {
        HostResolver resolver([](const QString& name) -> HostAddresses {
            qFatal("looked up: %s", qPrintable(name));
        });
        const QPair<QString, QList<QHostAddress>> hosts[] = {
            {"127.0.0.1", {loopback(1)}},         {"::1", {ipv6}},
            {"LocalHost", {ipv6, loopback(1)}},   {"localhost.", {ipv6, loopback(1)}},
            {QString::fromLatin1("a\0b", 3), {}}, {"", {}}};
        for (const auto& [host, addresses] : hosts) {
            HostLookup lookup(host, resolver);
            QVERIFY(finishes(lookup));
            QCOMPARE(lookup.result().addresses, addresses);
            QCOMPARE(OpcUa_IsGood(lookup.result().status), !addresses.isEmpty());
        }
    }

    void tooManyLookUps()
    {
        const auto event = std::make_shared<OneTimeEvent>();
        HostResolver resolver(blockedBy(event), 2);
        HostLookup stalled1("stalled1", resolver), stalled2("stalled2", resolver);
        const auto connectTo = [&](const QString& host, const QDeadlineTimer& deadline) {
            Connector connector(resolver);
            connector.start(host, m_good.serverPort(), deadline);
            return finishes(connector) ? connector.status() : OpcUa_Bad;
        };
        QCOMPARE(connectTo("healthy", QDeadlineTimer(60000)), OpcUa_BadResourceUnavailable);
        QCOMPARE(connectTo("stalled1", QDeadlineTimer(100)), OpcUa_BadTimeout);
        event->happen();
        QVERIFY(finishes(stalled2));
        QCOMPARE(connectTo("healthy", QDeadlineTimer(QDeadlineTimer::Forever)), OpcUa_Good);
    }

    // At any step, and the resolver before its look-ups.
    void abandoned()
    {
        const auto event = std::make_shared<OneTimeEvent>();
        for (const bool stalls : {true, false}) {
            auto resolver = std::make_unique<HostResolver>(
                stalls ? blockedBy(event) : giving({loopback(2), loopback(3)}));
            for (int step = 0; step < 5; ++step) {
                Connector connector(*resolver);
                connector.start("stalled", m_good.serverPort(), QDeadlineTimer(60000));
                if (step == 4)
                    resolver.reset();
                for (int i = 0; i < step; ++i)
                    QTest::qWait(10);
            }
        }
        event->happen();
    }

    // The child ends while two look-ups are stuck.
    void endOfTheProcess()
    {
        QProcess child;
        child.start(QCoreApplication::applicationFilePath(), {"stuck"});
        QVERIFY(child.waitForFinished(10000));
        QCOMPARE(child.exitStatus(), QProcess::NormalExit);
        QCOMPARE(child.exitCode(), 42);
    }

private:
    // On one port: 127.0.0.1 and ::1 answer, 127.0.0.2 swallows packets, 127.0.0.3 refuses.
    QTcpServer m_good;
    QTcpServer m_good6;
    QTcpServer m_silent;
    std::vector<std::unique_ptr<QTcpSocket>> m_fillers;
};

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (argc == 2 && qstrcmp(argv[1], "stuck") == 0) {
        HostResolver resolver(blockedBy(std::make_shared<OneTimeEvent>()));
        Connector connector(resolver);
        HostLookup lookup("stalled1", resolver);
        connector.start("stalled2", 1, QDeadlineTimer(50));
        return QTest::qWaitFor([&] { return connector.isFinished(); }) ? 42 : 1;
    }
    TestConnector test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_connector.moc"

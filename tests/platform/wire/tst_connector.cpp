#include "platform/wire/connector_p.h"
#include "support/hostileserver.h"
#include "support/warnings.h"

using namespace UaWire;

namespace {

QHostAddress loopback(int last)
{
    return QHostAddress(0x7f000000u + quint32(last));
}

/// Gives 127.0.0.1, or 127.0.0.7 for a name beyond ASCII; for "stalled..." once the event happens.
HostResolver::Function blockedBy(const std::shared_ptr<OneTimeEvent>& event)
{
    return [event](const QString& name) {
        if (name.startsWith(u"stalled"))
            event->wait();
        return HostAddresses{OpcUa_Good,
                             {loopback(name.startsWith(u"silent") ? 2
                                       : name.contains(u"xn--")   ? 7
                                                                  : 1)}};
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
        m_port = m_good.serverPort();
        if (!m_good6.listen(m_ipv6, m_port))
            QSKIP("no IPv6 on this system");
        m_silent.setListenBacklogSize(0);
        QVERIFY(m_silent.listen(loopback(2), m_port));
        m_silent.pauseAccepting();
        do { // until the queue of those that wait to be accepted is full
            QVERIFY(m_fillers.size() < 20);
            m_fillers.push_back(std::make_unique<QTcpSocket>());
            m_fillers.back()->connectToHost(loopback(2), m_port);
        } while (m_fillers.back()->waitForConnected(100));
    }

    void init() { failOnWarnings(); }

    void connects()
    {
        const QHostAddress good = loopback(1), silent = loopback(2), refusing = loopback(3);
        const QHostAddress noRoute(QHostAddress::Broadcast); // refused by the system itself
        const auto row = [this](const char* name, const QList<QHostAddress>& addresses,
                                OpcUa_StatusCode status, const QHostAddress& peer = {}) {
            const Case here(name);
            HostResolver resolver([addresses](const QString&) {
                return HostAddresses{OpcUa_Good, addresses};
            });
            Connector connector(resolver);
            QSignalSpy found(&connector, &Connector::hostFound);
            QSignalSpy finished(&connector, &Connector::finished);
            connector.start("plant.test", m_port, QDeadlineTimer(3000));
            QVERIFY(!connector.isFinished());
            QVERIFY(finished.wait(10000));
            QCOMPARE(connector.status(), status);
            QCOMPARE(found.size(), addresses.isEmpty() ? 0 : 1);
            const std::unique_ptr<QTcpSocket> socket = connector.takeSocket();
            QCOMPARE(socket ? socket->peerAddress() : QHostAddress(), peer);
            QVERIFY(!socket || socket->state() == QAbstractSocket::ConnectedState);
            QTest::qWait(2 * int(Connector::attemptDelay.count())); // Nothing goes on.
            QCOMPARE(finished.size(), 1);
            QVERIFY(peer == m_ipv6 || !m_good6.hasPendingConnections());
            delete m_good6.nextPendingConnection();
        };
        row("first", {good, m_ipv6}, OpcUa_Good, good);
        row("unreachable first", {noRoute, good}, OpcUa_Good, good);
        row("by turns", QList<QHostAddress>(30, silent) << m_ipv6, OpcUa_Good, m_ipv6);
        row("at once after a failure", QList<QHostAddress>(30, refusing) << good, OpcUa_Good, good);
        row("no address", {}, OpcUa_BadCommunicationError);
        row("unreachable", {noRoute, noRoute}, OpcUa_BadCommunicationError);
        row("refused tells more", {noRoute, refusing, noRoute}, OpcUa_BadConnectionRejected);
        row("silent", {refusing, silent}, OpcUa_BadTimeout);
    }

    void lookUps()
    {
        const auto event = std::make_shared<OneTimeEvent>();
        std::atomic<int> calls = 0;
        HostResolver resolver(
            [&calls, lookUp = blockedBy(event)](const QString& name) {
                ++calls;
                return lookUp(name);
            },
            27);
        std::vector<std::unique_ptr<HostLookup>> stalled;
        for (int i = 0; i < 24; ++i)
            stalled.push_back(std::make_unique<HostLookup>(QString("stalled%1").arg(i), resolver));
        const auto connectTo = [&](const QString& host, const QDeadlineTimer& deadline) {
            Connector connector(resolver);
            connector.start(host, m_port, deadline);
            return finishes(connector) ? connector.status() : OpcUa_Bad;
        };
        QCOMPARE(connectTo("healthy", QDeadlineTimer::Forever), OpcUa_Good);
        QCOMPARE(connectTo("stalled1", QDeadlineTimer(100)), OpcUa_BadTimeout);
        HostLookup first(QString::fromUtf8("stalled.bücher.test"), resolver);
        HostLookup second(QString::fromUtf8("Stalled.BÜCHER.test"), resolver);
        HostLookup third("stalled", resolver), fourth("STALLED", resolver);
        HostLookup last("stalled.last", resolver);
        QCOMPARE(connectTo("healthy", QDeadlineTimer(60000)), OpcUa_BadResourceUnavailable);
        stalled.clear();
        event->happen();
        QTRY_COMPARE(second.result().addresses, QList<QHostAddress>{loopback(7)});
        QTRY_COMPARE(fourth.result().addresses, QList<QHostAddress>{loopback(1)});
        QCOMPARE(first.result().addresses, second.result().addresses);
        QTRY_VERIFY(OpcUa_IsGood(last.result().status));
        QCOMPARE(calls, 28); // pairs have shared theirs
        QCOMPARE(connectTo("healthy", QDeadlineTimer(60000)), OpcUa_Good);
        QCOMPARE(calls, 29);
    }

    void needsNoLookUp()
    {
        HostResolver resolver([](const QString&) -> HostAddresses { qFatal("looked up"); });
        const QList<QHostAddress> ipv4 = {loopback(1)}, both = {m_ipv6, loopback(1)};
        const std::pair<QString, QList<QHostAddress>> hosts[] = {
            {"127.0.0.1", ipv4},  {"::1", {m_ipv6}}, {"LocalHost", both},
            {"localhost.", both}, {"", {}},          {QString::fromLatin1("a\0b", 3), {}}};
        for (const auto& [host, addresses] : hosts) {
            HostLookup lookup(host, resolver);
            QVERIFY(finishes(lookup));
            QCOMPARE(lookup.result().addresses, addresses);
            QCOMPARE(OpcUa_IsGood(lookup.result().status), !addresses.isEmpty());
        }
    }

    // At any step, and the resolver before its look-ups. Two of them are stuck for ever, which
    // does not keep this program from its end.
    void abandoned()
    {
        for (const QString host : {"stalled", "silent"}) {
            auto resolver =
                std::make_unique<HostResolver>(blockedBy(std::make_shared<OneTimeEvent>()));
            for (int step = 0; step < 5; ++step) {
                Connector connector(*resolver);
                connector.start(host, m_port, QDeadlineTimer(60000));
                if (step == 4)
                    resolver.reset();
                QTest::qWait(10 * step);
            }
        }
    }

private:
    // On one port: 127.0.0.1 and ::1 answer, 127.0.0.2 swallows packets, 127.0.0.3 refuses.
    const QHostAddress m_ipv6{QHostAddress::LocalHostIPv6};
    quint16 m_port = 0;
    QTcpServer m_good, m_good6, m_silent;
    std::vector<std::unique_ptr<QTcpSocket>> m_fillers;
};

QTEST_GUILESS_MAIN(TestConnector)
#include "tst_connector.moc"

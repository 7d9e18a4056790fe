// Sessions whose connection is lost, and whose server goes and comes back.

#include "session/sessionuser.h"
#include "support/relay.h"

#include <Kestrel/OpcUaStatusCodes>

#include <QtCore/QRandomGenerator>
#include <QtCore/QThread>
#include <QtCore/QUrl>

class tst_SessionInterruption : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void interruptions();
    void restart();
    void blockedHost();
    void deletedInSlots();

private:
    void monitor(QvelSubscription* subscription, int count);

    SessionUser m_user;
    PeerProcess m_server;
    quint16 m_port = 0;
    QHash<quint32, double> m_last;
    int m_twice = 0;
    int m_skipped = 0; // values that are missing without a gap having been told
    int m_gaps = 0;
};

static QvelDiscoverySetting settingOf(const QString& url)
{
    QvelDiscoverySetting setting;
    setting.setEndpointUrl(url);
    setting.setSecurityPolicy("http://opcfoundation.org/UA/SecurityPolicy#Basic256Sha256");
    setting.setMessageSecurityMode(OpcUa_MessageSecurityMode_SignAndEncrypt);
    return setting;
}

// That the system gives, and that a server which is started anew takes again.
static int freePort()
{
    QTcpServer probe;
    return probe.listen(QHostAddress::LocalHost) ? probe.serverPort() : 0;
}

void tst_SessionInterruption::initTestCase()
{
    const QString url = m_server.start(NODE, {PEERS "/sessionserver.mjs", "--children", "10",
                                              "--items", "50", "--pki", m_user.folder.path()});
    QVERIFY(!url.isEmpty());
    m_port = quint16(QUrl(url).port());
    m_user.options.keepAliveInterval = 500;
}

void tst_SessionInterruption::monitor(QvelSubscription* subscription, int count)
{
    m_last.clear();
    m_twice = m_skipped = m_gaps = 0;
    QList<QvelMonitoredItem> items;
    for (int i = 0; i < count; ++i) {
        QvelMonitoredItem item;
        item.nodeId = UaNodeId(UaString("Item" + QByteArray::number(i)), 1);
        item.samplingInterval = 0;
        item.queueSize = 1000;
        items.append(item);
    }
    subscription->addItems(items);
    connect(subscription, &QvelSubscription::gap, this, [this] {
        ++m_gaps;
        m_last.clear();
    });
    connect(subscription, &QvelSubscription::dataChanged, this,
            [this](const QList<QvelDataChange>& changes) {
                for (const QvelDataChange& change : changes) {
                    const double value = change.value.value().toDouble();
                    const auto known = m_last.constFind(change.handle);
                    if (known != m_last.constEnd()) {
                        m_twice += value <= *known;
                        m_skipped += value > *known + 1 && !change.hasOverflow();
                    }
                    m_last[change.handle] = value;
                }
            });
}

void tst_SessionInterruption::interruptions()
{
    const quint32 seed = QRandomGenerator::global()->generate();
    qInfo("seed %u", seed);
    QRandomGenerator random(seed);
    Relay relay(m_port);
    QvelSession session(m_user.options);
    QvelSubscriptionParameters parameters;
    parameters.publishingInterval = 100;
    QvelSubscription* subscription = session.createSubscription(parameters);
    monitor(subscription, 50);
    const QvelSessionError error = connectSession(session, settingOf(relay.url()));
    QVERIFY2(session.state() == QvelSession::Connected, error.toString().toUtf8());
    QTRY_COMPARE_WITH_TIMEOUT(m_last.size(), 50, 10000);

    for (int round = 0; round < ROUNDS; ++round) {
        const int gaps = m_gaps;
        const int kind = int(random.bounded(3));
        if (kind == 0)
            relay.pull();
        else if (kind == 1)
            relay.refuse();
        if (kind != 0)
            relay.cut();
        QTest::qWait(int(random.bounded(1500)));
        relay.cut();
        relay.mend();
        // In whatever state the session is, all items deliver again.
        const QHash<quint32, double> before = std::exchange(m_last, {});
        QTRY_COMPARE_WITH_TIMEOUT(m_last.size(), 50, 30000);
        for (auto it = m_last.cbegin(); it != m_last.cend(); ++it)
            m_twice +=
                m_gaps == gaps && before.contains(it.key()) && it.value() <= before[it.key()];
        QVERIFY2(m_twice == 0 && m_skipped == 0,
                 qPrintable(QStringLiteral("round %1, kind %2: %3 twice, %4 skipped")
                                .arg(round)
                                .arg(kind)
                                .arg(m_twice)
                                .arg(m_skipped)));
    }
    QVERIFY(session.statistics().reconnects > 0);
    qInfo("%u reconnects, %d gaps", session.statistics().reconnects, m_gaps);
}

void tst_SessionInterruption::restart()
{
    PeerProcess server;
    const QTemporaryDir pki;
    const auto start = [&](PeerProcess& process, int port, const char* namespaces) {
        return process.start(NODE, {PEERS "/sessionserver.mjs", "--children", "10", "--items", "10",
                                    "--pki", pki.path(), "--port", QString::number(port),
                                    "--namespaces", namespaces});
    };
    const int port = freePort();
    const QString url = start(server, port, "urn:first,urn:second");
    QVERIFY(!url.isEmpty());
    QvelSession session(m_user.options);
    QvelSubscription* subscription = session.createSubscription();
    monitor(subscription, 10);
    // A node that another one takes the place of.
    QvelMonitoredItem further;
    further.nodeId = UaNodeId(UaString("Further"), 2);
    further.attributeId = QvelAttribute::BrowseName;
    const OpcUa_UInt32 handle = subscription->addItems({further}).value(0);
    QStringList names;
    connect(subscription, &QvelSubscription::dataChanged, this,
            [&](const QList<QvelDataChange>& changes) {
                for (const QvelDataChange& change : changes) {
                    if (change.handle == handle)
                        names.append(QString::fromUtf8(
                            change.value.value().toQualifiedName().name().bytes()));
                }
            });
    const QvelSessionError error = connectSession(session, settingOf(url));
    QVERIFY2(session.state() == QvelSession::Connected, error.toString().toUtf8());
    QTRY_COMPARE_WITH_TIMEOUT(m_last.size(), 11, 10000);
    const UaExpandedNodeId known = session.toExpandedNodeId(further.nodeId);
    QSignalSpy namespaces(&session, &QvelSession::namespacesChanged);
    server.kill();
    QTRY_VERIFY_WITH_TIMEOUT(session.state() != QvelSession::Connected, 10000);
    PeerProcess again;
    QVERIFY(!start(again, port, "urn:second,urn:first").isEmpty());
    connect(&session, &QvelSession::certificateQuestion, this,
            [&] { session.answerCertificate(QvelCertificateAnswer::AcceptAndTrust); });
    m_last.clear();
    QTRY_COMPARE_WITH_TIMEOUT(m_last.size(), 11, 60000);
    QVERIFY(m_gaps > 0);
    QCOMPARE(session.state(), QvelSession::Connected);
    QCOMPARE(namespaces.size(), 1);
    QCOMPARE(session.toNodeId(known), UaNodeId(UaString("Further"), 3));
    QCOMPARE(names, QStringList({"urn:first", "urn:first"}));
}

void tst_SessionInterruption::blockedHost()
{
    QvelSession session(m_user.options);
    QvelSubscription* subscription = session.createSubscription();
    monitor(subscription, 50);
    const QString url = QStringLiteral("opc.tcp://127.0.0.1:%1").arg(m_port);
    const QvelSessionError error = connectSession(session, settingOf(url));
    QVERIFY2(session.state() == QvelSession::Connected, error.toString().toUtf8());
    QTRY_COMPARE_WITH_TIMEOUT(m_last.size(), 50, 10000);
    QThread::msleep(BLOCKED);
    QTest::qWait(2000);
    QCOMPARE(m_gaps, 0);
    QCOMPARE(m_twice + m_skipped, 0);
    QCOMPARE(session.statistics().reconnects, 0u);
}

// The host deletes the session in any slot; its calls end.
void tst_SessionInterruption::deletedInSlots()
{
    using Kill = std::function<void()>;
    using Connect = std::function<void(QvelSession*, QvelSubscription*, const Kill&)>;
    QList<Connect> slotsToTry;
    for (int state = QvelSession::LookingUp; state <= QvelSession::Connected; ++state)
        slotsToTry.append([state](QvelSession* session, QvelSubscription*, const Kill& kill) {
            connect(session, &QvelSession::stateChanged, session, [state, kill](auto now) {
                if (now == state)
                    kill();
            });
        });
    const auto inSession = [&slotsToTry](auto signal) {
        slotsToTry.append([signal](QvelSession* session, QvelSubscription*, const Kill& kill) {
            connect(session, signal, session, kill);
        });
    };
    const auto inSubscription = [&slotsToTry](auto signal) {
        slotsToTry.append([signal](QvelSession*, QvelSubscription* subscription, const Kill& kill) {
            connect(subscription, signal, subscription, kill);
        });
    };
    inSession(&QvelSession::passwordQuestion);
    inSession(&QvelSession::certificateQuestion);
    inSession(&QvelSession::namespacesChanged);
    inSubscription(&QvelSubscription::changed);
    inSubscription(&QvelSubscription::itemsChanged);
    inSubscription(&QvelSubscription::dataChanged);
    inSubscription(&QvelSubscription::eventsReceived);
    const qsizetype refused = slotsToTry.size();
    inSession(&QvelSession::logMessage);
    inSession(&QvelSession::failed);

    SessionUser person;
    QvelDiscoverySetting setting = settingOf(QStringLiteral("opc.tcp://127.0.0.1:%1").arg(m_port));
    setting.setUserTokenType(OpcUa_UserTokenType_Certificate);
    setting.setCertificateFile(person.options.certificateFile);
    setting.setPrivateKeyFile(person.options.privateKeyFile);
    QVERIFY(person.pair.toPEMFile(QFile::encodeName(setting.privateKeyFile()), "almond"));
    for (qsizetype i = 0; i < slotsToTry.size(); ++i) {
        QPointer<QvelSession> session = new QvelSession(m_user.options);
        QvelSubscription* subscription = session->createSubscription();
        QvelMonitoredItem item, event;
        item.nodeId = UaNodeId(2258);
        event.nodeId = UaNodeId(2253);
        event.attributeId = QvelAttribute::EventNotifier;
        event.eventFields = {{UaQualifiedName("Message", 0)}};
        subscription->addItems({item, event});
        QFuture<QvelReadResult> pending;
        slotsToTry[i](session, subscription, [&] {
            pending = session->read({{UaNodeId(2258), 13, {}, {}}});
            delete session;
        });
        connect(session, &QvelSession::passwordQuestion, this, [&] {
            if (session)
                session->answerPassword("almond");
        });
        connect(session, &QvelSession::certificateQuestion, this, [&] {
            if (session)
                session->answerCertificate(i < refused ? QvelCertificateAnswer::AcceptOnce
                                                       : QvelCertificateAnswer::Reject);
        });
        session->connectToServer(setting);
        QTRY_VERIFY2_WITH_TIMEOUT(!session, QByteArray::number(i), 10000);
        QVERIFY2(pending.isFinished() && pending.resultCount() == 1, QByteArray::number(i));
        // The answer may just have come.
        const QvelReadResult result = resultOf(pending);
        QVERIFY(result.status.isBad() != (result.values.size() == 1));
    }
}

QTEST_GUILESS_MAIN(tst_SessionInterruption)
#include "tst_sessioninterruption.moc"

// Sessions whose connection is lost, and whose server goes and comes back.

#include "session/sessionuser.h"
#include "support/relay.h"

#include <Kestrel/OpcUaStatusCodes>

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

class tst_SessionInterruption : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void kill()
    {
        m_pending = m_doomed->read({{UaNodeId(2258), 13, {}, {}}});
        delete m_doomed;
    }

private Q_SLOTS:
    void initTestCase()
    {
        const QString url = m_server.start(NODE, {PEERS "/sessionserver.mjs", "--children", "10",
                                                  "--items", "400", "--pki", m_user.folder.path()});
        QVERIFY(!url.isEmpty());
        m_port = quint16(QUrl(url).port());
        m_user.options.keepAliveInterval = 500;
    }

    void interruptions()
    {
        const quint32 seed = QRandomGenerator::global()->generate();
        qInfo("seed %u", seed);
        QRandomGenerator random(seed);
        constexpr int count = 400; // more than the server takes in one call
        Relay relay(m_port);
        QvelSession session(m_user.options);
        QvelSubscriptionParameters parameters;
        parameters.publishingInterval = 100;
        QvelSubscription* subscription = session.createSubscription(parameters);
        monitor(subscription, count);
        QCOMPARE(connectSession(session, settingOf(relay.url())).toString(), "");
        QTRY_COMPARE_WITH_TIMEOUT(m_last.size(), count, 30000);

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
            QTRY_COMPARE_WITH_TIMEOUT(m_last.size(), count, 30000);
            for (auto it = m_last.cbegin(); it != m_last.cend(); ++it)
                m_twice +=
                    m_gaps == gaps && before.contains(it.key()) && it.value() <= before[it.key()];
            QVERIFY2(m_twice == 0 && m_skipped == 0,
                     qPrintable(QString("kind %1: %2 twice, %3 skipped")
                                    .arg(kind)
                                    .arg(m_twice)
                                    .arg(m_skipped)));
        }
        QVERIFY(session.statistics().reconnects > 0);
        qInfo("%u reconnects, %d gaps", session.statistics().reconnects, m_gaps);
    }

    void restart()
    {
        PeerProcess server;
        const QTemporaryDir pki;
        const auto start = [&](PeerProcess& process, int port, const char* namespaces) {
            return process.start(NODE, {PEERS "/sessionserver.mjs", "--children", "10", "--items",
                                        "10", "--pki", pki.path(), "--port", QString::number(port),
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
        QCOMPARE(connectSession(session, settingOf(url)).toString(), "");
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

    void blockedHost()
    {
        QvelSession session(m_user.options);
        QvelSubscription* subscription = session.createSubscription();
        monitor(subscription, 50);
        const QString url = QStringLiteral("opc.tcp://127.0.0.1:%1").arg(m_port);
        QCOMPARE(connectSession(session, settingOf(url)).toString(), "");
        QTRY_COMPARE_WITH_TIMEOUT(m_last.size(), 50, 10000);
        QThread::msleep(BLOCKED);
        QTest::qWait(2000);
        QCOMPARE(m_gaps, 0);
        QCOMPARE(m_twice + m_skipped, 0);
        QCOMPARE(session.statistics().reconnects, 0u);
        delete subscription; // while it has something to tell
        QTest::qWait(100);
        QCOMPARE(session.state(), QvelSession::Connected);
    }

    // The host deletes the session in any slot; its calls end.
    void deletedInSlots()
    {
        SessionUser person;
        QvelDiscoverySetting setting =
            settingOf(QStringLiteral("opc.tcp://127.0.0.1:%1").arg(m_port));
        setting.setUserTokenType(OpcUa_UserTokenType_Certificate);
        setting.setCertificateFile(person.options.certificateFile);
        setting.setPrivateKeyFile(person.options.privateKeyFile);
        QVERIFY(person.pair.toPEMFile(QFile::encodeName(setting.privateKeyFile()), "almond"));
        QByteArrayList moments = {"passwordQuestion", "certificateQuestion", "namespacesChanged",
                                  "changed",          "itemsChanged",        "dataChanged",
                                  "eventsReceived",   "logMessage",          "failed"};
        for (int state = QvelSession::LookingUp; state <= QvelSession::Connected; ++state)
            moments.append(QByteArray::number(state));
        for (const QByteArray& moment : std::as_const(moments)) {
            m_doomed = new QvelSession(m_user.options);
            QvelSubscription* subscription = m_doomed->createSubscription();
            QvelMonitoredItem item, event;
            item.nodeId = UaNodeId(2258);
            event.nodeId = UaNodeId(2253);
            event.attributeId = QvelAttribute::EventNotifier;
            event.eventFields = {{UaQualifiedName("Message", 0)}};
            subscription->addItems({item, event});
            const QMetaMethod slot = metaObject()->method(metaObject()->indexOfSlot("kill()"));
            for (const QObject* sender : QObjectList{m_doomed, subscription})
                for (int i = 0; i < sender->metaObject()->methodCount(); ++i)
                    if (sender->metaObject()->method(i).name() == moment)
                        connect(sender, sender->metaObject()->method(i), this, slot);
            connect(m_doomed, &QvelSession::stateChanged, this, [this, moment](auto state) {
                if (moment == QByteArray::number(state))
                    kill();
            });
            connect(m_doomed, &QvelSession::passwordQuestion, this, [this] {
                if (m_doomed)
                    m_doomed->answerPassword("almond");
            });
            connect(m_doomed, &QvelSession::certificateQuestion, this, [this, moment] {
                const bool refuses = moment == "logMessage" || moment == "failed";
                if (m_doomed)
                    m_doomed->answerCertificate(refuses ? QvelCertificateAnswer::Reject
                                                        : QvelCertificateAnswer::AcceptOnce);
            });
            m_pending = {};
            m_doomed->connectToServer(setting);
            QTRY_VERIFY2_WITH_TIMEOUT(!m_doomed, moment, 10000);
            QVERIFY2(m_pending.isFinished() && m_pending.resultCount() == 1, moment);
            // The answer may just have come.
            const QvelReadResult result = resultOf(m_pending);
            QVERIFY(result.status.isBad() != (result.values.size() == 1));
        }
    }

private:
    void monitor(QvelSubscription* subscription, int count)
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

    SessionUser m_user;
    PeerProcess m_server;
    QPointer<QvelSession> m_doomed;
    QFuture<QvelReadResult> m_pending; // when it was deleted
    quint16 m_port = 0;
    QHash<quint32, double> m_last;
    int m_twice = 0;
    int m_skipped = 0; // values that are missing without a gap having been told
    int m_gaps = 0;
};

QTEST_GUILESS_MAIN(tst_SessionInterruption)
#include "tst_sessioninterruption.moc"

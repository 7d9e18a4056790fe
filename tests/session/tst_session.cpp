// A session with a foreign server.

#include "session/sessionuser.h"

#include <Kestrel/OpcUaStatusCodes>

class tst_Session : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void policies_data();
    void policies();
    void services();
    void subscription();

private:
    QvelDiscoverySetting setting(const char* policy = "None", int mode = 1) const;

    PeerProcess m_server;
    QString m_url;
    SessionUser m_user;
};

void tst_Session::initTestCase()
{
    m_url = m_server.start(NODE, {"--security-revert=CVE-2023-46809", PEERS "/sessionserver.mjs"});
    QVERIFY(!m_url.isEmpty());
}

QvelDiscoverySetting tst_Session::setting(const char* policy, int mode) const
{
    QvelDiscoverySetting setting;
    setting.setEndpointUrl(m_url);
    setting.setSecurityPolicy(QString("http://opcfoundation.org/UA/SecurityPolicy#") + policy);
    setting.setMessageSecurityMode(OpcUa_MessageSecurityMode(mode));
    setting.setSessionName("test");
    return setting;
}

void tst_Session::policies_data()
{
    QTest::addColumn<QByteArray>("policy");
    QTest::addColumn<int>("mode");
    QTest::newRow("None") << QByteArray("None") << 1;
    for (const char* policy : {"Basic128Rsa15", "Basic256", "Basic256Sha256",
                               "Aes128_Sha256_RsaOaep", "Aes256_Sha256_RsaPss"}) {
        QTest::addRow("%s Sign", policy) << QByteArray(policy) << 2;
        QTest::addRow("%s SignAndEncrypt", policy) << QByteArray(policy) << 3;
    }
}

void tst_Session::policies()
{
    QFETCH(QByteArray, policy);
    QFETCH(int, mode);
    for (const bool named : {false, true}) {
        QvelSession session(m_user.options);
        QvelDiscoverySetting s = setting(policy, mode);
        if (named) {
            s.setUserTokenType(OpcUa_UserTokenType_UserName);
            s.setUserName("operator");
            s.setPassword("walnut");
        }
        const QvelSessionError error = connectSession(session, s);
        QVERIFY2(session.state() == QvelSession::Connected, error.toString().toUtf8());
        const QvelReadResult result =
            resultOf(session.read({{UaNodeId(UaString("ScalarInt32"), 1), 13, {}, {}}}));
        QCOMPARE(result.status.code(), OpcUa_Good);
        QCOMPARE(result.values.value(0).value().toInt32(), INT32_MIN);
        session.disconnectFromServer();
        QTRY_COMPARE(session.state(), QvelSession::Disconnected);
    }
}

void tst_Session::services()
{
    QvelSession session(m_user.options);
    const QvelSessionError error = connectSession(session, setting());
    QVERIFY2(session.state() == QvelSession::Connected, error.toString().toUtf8());
    const UaNodeId many(UaString("Many"), 1);

    const QvelBrowseResult children = resultOf(session.browse({{many}, {UaNodeId(85)}}));
    QCOMPARE(children.status.code(), OpcUa_Good);
    QCOMPARE(children.results.size(), 2);
    QCOMPARE(children.results[0].references.size(), 10000);

    QList<QvelReadItem> items;
    for (const QvelReference& reference : children.results[0].references)
        items.append({reference.nodeId.nodeId(), 13, {}, {}});
    const QvelReadResult values = resultOf(session.read(items));
    QCOMPARE(values.status.code(), OpcUa_Good);
    QCOMPARE(values.values.size(), 10000);
    for (qsizetype i = 0; i < values.values.size(); ++i)
        QCOMPARE(values.values[i].value().toDouble(), double(i));

    UaVariant number;
    number.setInt32(77);
    const UaNodeId target(UaString("ScalarInt32"), 1);
    const QvelWriteResult written =
        resultOf(session.write({{target, UaDataValue(number), 13, {}}, {UaNodeId(1), {}, 13, {}}}));
    QCOMPARE(written.results.value(0).code(), OpcUa_Good);
    QVERIFY(written.results.value(1).isBad());
    QCOMPARE(resultOf(session.read({{target, 13, {}, {}}})).values.value(0).value().toInt32(), 77);

    UaVariant a, b;
    a.setDouble(1.5);
    b.setDouble(2);
    const QvelCallResult sum = resultOf(
        session.call({{UaNodeId(UaString("Machine"), 1), UaNodeId(UaString("Add"), 1), {a, b}}}));
    QCOMPARE(sum.status.code(), OpcUa_Good);
    QCOMPARE(sum.results.value(0).status.code(), OpcUa_Good);
    QCOMPARE(sum.results.value(0).outputArguments.value(0).toDouble(), 3.5);

    const QvelTranslateResult path = resultOf(session.translateBrowsePaths(
        {{UaNodeId(85), {{UaQualifiedName("Machine", 1), UaNodeId(33), false, true}}}}));
    QCOMPARE(path.results.value(0).targets.value(0).nodeId.nodeId(),
             UaNodeId(UaString("Machine"), 1));

    QvelHistoryDetails details;
    details.from = UaDateTime::fromString("2024-01-01T00:00:00Z");
    details.to = UaDateTime::fromString("2024-01-02T00:00:00Z");
    details.valuesPerNode = 700;
    const QvelHistoryResult history =
        resultOf(session.historyRead({{UaNodeId(UaString("Historic"), 1), {}}}, details));
    QCOMPARE(history.status.code(), OpcUa_Good);
    QCOMPARE(history.results.value(0).status.code(), OpcUa_Good);
    QCOMPARE(history.results.value(0).values.size(), 3000);
}

void tst_Session::subscription()
{
    QvelSession session(m_user.options);
    QvelSubscriptionParameters parameters;
    parameters.publishingInterval = 100;
    QvelSubscription* subscription = session.createSubscription(parameters);
    QList<QvelMonitoredItem> items;
    for (int i = 0; i < 1000; ++i) {
        QvelMonitoredItem item;
        item.nodeId = UaNodeId(UaString("Item" + QByteArray::number(i)), 1);
        item.samplingInterval = 0;
        item.queueSize = 10;
        items.append(item);
    }
    subscription->addItems(items);
    QHash<quint32, double> last;
    int wrong = 0;
    connect(subscription, &QvelSubscription::dataChanged, this,
            [&](const QList<QvelDataChange>& changes) {
                for (const QvelDataChange& change : changes) {
                    const double value = change.value.value().toDouble();
                    const auto known = last.constFind(change.handle);
                    wrong += known != last.constEnd() && value != *known + 1;
                    last[change.handle] = value;
                }
            });
    connect(subscription, &QvelSubscription::itemsChanged, this,
            [&](const QList<QvelItemState>& states) {
                for (const QvelItemState& state : states)
                    wrong += state.status.isBad();
            });
    const QvelSessionError error = connectSession(session, setting("Basic256Sha256", 3));
    QVERIFY2(session.state() == QvelSession::Connected, error.toString().toUtf8());
    QTRY_COMPARE_WITH_TIMEOUT(last.size(), 1000, 10000);
    QTest::qWait(2000);
    QCOMPARE(wrong, 0);
    delete subscription;
    QTest::qWait(100);
}

QTEST_GUILESS_MAIN(tst_Session)
#include "tst_session.moc"

// A session with a foreign server.

#include "session/sessionuser.h"
#include "support/relay.h"

#include <Kestrel/OpcUaStatusCodes>

#include <QtCore/QCryptographicHash>
#include <QtCore/QSettings>

class tst_Session : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void policies_data();
    void policies();
    void identities_data();
    void identities();
    void secrets_data();
    void secrets();
    void certificates_data();
    void certificates();
    void otherUrl_data();
    void otherUrl();
    void services();
    void renewal();
    void silence();
    void subscription();
    void monitoring();

private:
    QvelDiscoverySetting setting(const char* policy = "None", int mode = 1) const;

    PeerProcess m_server;
    QString m_url;
    SessionUser m_user;
    SessionUser m_person; // with a certificate of its own
};

static UaNodeId node(const char* name)
{
    return UaNodeId(UaString(name), 1);
}

void tst_Session::initTestCase()
{
    m_url = m_server.start(NODE, {"--security-revert=CVE-2023-46809", PEERS "/sessionserver.mjs"});
    QVERIFY(!m_url.isEmpty());
    const QString locked = m_person.folder.filePath("locked.pem");
    QVERIFY(m_person.pair.toPEMFile(QFile::encodeName(locked), "almond"));
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
        const QvelReadResult result = resultOf(session.read({{node("ScalarInt32"), 13, {}, {}}}));
        QCOMPARE(result.status.code(), OpcUa_Good);
        QCOMPARE(result.values.value(0).value().toInt32(), INT32_MIN);
        session.disconnectFromServer();
        QTRY_COMPARE(session.state(), QvelSession::Disconnected);
    }
}

void tst_Session::identities_data()
{
    QTest::addColumn<QByteArray>("policy");
    QTest::addColumn<QString>("password"); // of the user name, or none
    QTest::addColumn<QString>("key");      // of the certificate
    QTest::addColumn<QStringList>("answers");
    QTest::addColumn<bool>("isPlain");
    QTest::addColumn<QString>("step"); // that fails; none where it connects
    QTest::addColumn<QString>("error");
    const QByteArray none("None"), good("Basic256Sha256");
    const QString own("own.pem"), locked("locked.pem"), before("Preparing the identity");
    using L = QStringList;
    QTest::newRow("certificate") << good << QString() << own << L() << false << QString()
                                 << QString();
    QTest::newRow("certificate without a secure channel")
        << none << QString() << own << L() << false << QString() << QString();
    QTest::newRow("locked key") << good << QString() << locked << L{"wrong", "almond"} << false
                                << QString() << QString();
    QTest::newRow("locked key, no password")
        << good << QString() << locked << L{"wrong"} << false << before
        << "BadIdentityTokenRejected.*password of the private key";
    QTest::newRow("another's key") << good << QString() << m_user.options.privateKeyFile << L()
                                   << false << before << "BadIdentityTokenInvalid.*do not match";
    QTest::newRow("no key") << good << QString() << "none.pem" << L() << false << before
                            << "BadIdentityTokenInvalid.*none.pem, cannot be read";
    QTest::newRow("wrong password")
        << good << "cedar" << QString() << L() << false << "Activating the session"
        << "(BadUserAccessDenied|BadIdentityTokenRejected).*Check user name";
    QTest::newRow("password in clear text")
        << none << "walnut" << QString() << L() << true << "Activating the session"
        << "BadSecurityPolicyRejected.*clear text";
    QTest::newRow("password in clear text, allowed")
        << none << "walnut" << QString() << L{"plain"} << true << QString() << QString();
}

// An endpoint that takes a password in clear text only.
static void allowClearText(QvelDiscoverySetting& setting)
{
    OpcUa_UserTokenPolicy token;
    OpcUa_UserTokenPolicy_Initialize(&token);
    QCOMPARE(UaString("username_unsecure").copyTo(&token.PolicyId), OpcUa_Good);
    token.TokenType = OpcUa_UserTokenType_UserName;
    const QvelDiscoverySetting other = setting; // owns what the description points to
    OpcUa_EndpointDescription endpoint = *other.endpointDescription();
    endpoint.NoOfUserIdentityTokens = 1;
    endpoint.UserIdentityTokens = &token;
    setting.setEndpointDescription(&endpoint);
    OpcUa_UserTokenPolicy_Clear(&token);
}

void tst_Session::identities()
{
    QFETCH(QByteArray, policy);
    QFETCH(QString, password);
    QFETCH(QString, key);
    QFETCH(QStringList, answers);
    QFETCH(bool, isPlain);
    QFETCH(QString, step);
    QFETCH(QString, error);
    Relay relay(quint16(QUrl(m_url).port()));
    QvelDiscoverySetting s = setting(policy, policy == "None" ? 1 : 3);
    if (isPlain)
        allowClearText(s);
    s.setEndpointUrl(relay.url());
    s.setUserTokenType(key.isEmpty() ? OpcUa_UserTokenType_UserName
                                     : OpcUa_UserTokenType_Certificate);
    s.setUserName("operator");
    s.setPassword(password);
    s.setCertificateFile(m_person.options.certificateFile);
    s.setPrivateKeyFile(QDir(m_person.folder.path()).filePath(key));
    QvelSessionOptions options = m_user.options;
    options.allowsPlainPassword = answers == QStringList("plain");
    QvelSession session(options);
    QList<bool> repeated;
    connect(&session, &QvelSession::passwordQuestion, this,
            [&](const QvelPasswordQuestion& question) {
                QCOMPARE(question.file, s.privateKeyFile());
                const QString answer = answers.value(repeated.size());
                repeated.append(question.isRepeated);
                answer.isNull() ? session.cancelPassword() : session.answerPassword(answer);
            });
    const QvelSessionError told = connectSession(session, s);
    QVERIFY2(told.step == step, told.toString().toUtf8());
    QVERIFY2(QRegularExpression(error).match(told.toString()).hasMatch(), told.toString().toUtf8());
    QCOMPARE(session.state(), step.isEmpty() ? QvelSession::Connected : QvelSession::Disconnected);
    QCOMPARE(repeated, key == "locked.pem" ? QList<bool>({false, true}) : QList<bool>());
    QCOMPARE(relay.connections() == 0, step == "Preparing the identity"); // nothing was sent
    session.disconnectFromServer();
    QvelSession other(m_user.options); // the only one that the server still knows
    connectSession(other, setting());
    const UaNodeId sessionCount(2277);
    QTRY_COMPARE(
        resultOf(other.read({{sessionCount, 13, {}, {}}})).values.value(0).value().toUInt32(), 1u);
}

void tst_Session::secrets_data()
{
    QTest::addColumn<QByteArray>("policy");
    QTest::addColumn<QString>("user");
    QTest::newRow("encrypted") << QByteArray("Basic256Sha256") << "keeper";
    QTest::newRow("refused") << QByteArray("Basic256Sha256") << "stranger";
    QTest::newRow("in clear text") << QByteArray("None") << "keeper";
}

// Gives the middle of the password, masked: here, it must not stand in memory either.
static QByteArray setPassword(QvelDiscoverySetting& setting)
{
    QByteArray text =
        QCryptographicHash::hash(setting.userName().toUtf8(), QCryptographicHash::Sha256).toHex();
    setting.setPassword(QString::fromLatin1(text));
    QByteArray masked = text.mid(24, 16);
    for (char& c : masked)
        c = char(c ^ 0x55);
    text.fill(0);
    return masked;
}

static bool holds(const QByteArray& bytes, const QByteArray& masked)
{
    QByteArray wide;
    for (char c : masked)
        wide.append(c).append(0x55);
    const auto isSame = [](char a, char b) { return char(a ^ 0x55) == b; };
    for (const QByteArray& needle : {masked, wide}) {
        if (std::search(bytes.begin(), bytes.end(), needle.begin(), needle.end(), isSame) !=
            bytes.end())
            return true;
    }
    return false;
}

// Whether it is anywhere in the memory of this process.
static bool isInMemory(const QByteArray& masked)
{
    QFile maps("/proc/self/maps"), memory("/proc/self/mem");
    if (!maps.open(QIODevice::ReadOnly) ||
        !memory.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return false;
    const QList<QByteArray> regions = maps.readAll().split('\n');
    constexpr qsizetype block = 1 << 20;
    QByteArray bytes(block, 0);
    for (const QByteArray& region : regions) {
        const QList<QByteArray> bounds = region.left(region.indexOf(' ')).split('-');
        const qint64 begin = bounds.value(0).toLongLong(nullptr, 16);
        const qint64 end = bounds.value(1).toLongLong(nullptr, 16);
        if (!region.contains(" r") || end - begin > (qint64(1) << 32)) // a sanitizer's own
            continue;
        for (qint64 at = begin; at < end; at += block - 64) {
            if (!memory.seek(at) || memory.read(bytes.data(), qMin(block, end - at)) <= 0)
                break;
            const bool isThere = holds(bytes, masked);
            bytes.fill(0); // else it stands here as well
            if (isThere)
                return true;
        }
    }
    return false;
}

void tst_Session::secrets()
{
    QFETCH(QByteArray, policy);
    QFETCH(QString, user);
    QByteArray masked;
    QByteArray written;
    {
        QvelDiscoverySetting s = setting(policy, policy == "None" ? 1 : 3);
        if (policy == "None")
            allowClearText(s);
        s.setUserTokenType(OpcUa_UserTokenType_UserName);
        s.setUserName(user);
        masked = setPassword(s);
        QvelSessionOptions options = m_user.options;
        options.allowsPlainPassword = true;
        QvelSession session(options);
        connect(&session, &QvelSession::logMessage, this,
                [&written](const QString& text) { written += text.toUtf8(); });
        written += connectSession(session, s).toString().toUtf8();
        QCOMPARE(session.state() == QvelSession::Connected, user == "keeper");
        session.disconnectFromServer();
        QTRY_COMPARE(session.state(), QvelSession::Disconnected);
        const QString path = m_user.folder.filePath("settings.ini");
        QSettings settings(path, QSettings::IniFormat);
        s.storeSettings(settings, "entry");
        settings.sync();
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        written += file.readAll();
        QVERIFY(written.contains(user.toUtf8()));
#ifdef Q_OS_LINUX
        QVERIFY(isInMemory(masked));
#endif
    }
    QVERIFY(!holds(written, masked));
    QVERIFY(!isInMemory(masked));
}

void tst_Session::certificates_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<int>("trusted");
    QTest::addColumn<int>("rejected");
    QTest::addColumn<int>("asked"); // at two attempts
    QTest::newRow("none") << -1 << 0 << 0 << 2;
    QTest::newRow("reject") << int(QvelCertificateAnswer::Reject) << 0 << 1 << 2;
    QTest::newRow("once") << int(QvelCertificateAnswer::AcceptOnce) << 0 << 0 << 2;
    QTest::newRow("trust") << int(QvelCertificateAnswer::AcceptAndTrust) << 1 << 0 << 1;
}

void tst_Session::certificates()
{
    QFETCH(int, answer);
    SessionUser user;
    user.options.connectTimeout = answer < 0 ? 1000 : 15000;
    QvelSession session(user.options);
    int asked = 0;
    connect(&session, &QvelSession::certificateQuestion, this, [&](const auto& question) {
        ++asked;
        QCOMPARE(question.findings.value(0).status.code(), OpcUa_BadCertificateUntrusted);
        if (answer >= 0)
            session.answerCertificate(QvelCertificateAnswer(answer));
    });
    for (int attempt = 0; attempt < 2; ++attempt) {
        QvelDiscoverySetting s = setting("Basic256Sha256", 3);
        s.setEndpointUrl(QString(m_url).replace("127.0.0.1", "localhost")); // as the certificate
        session.connectToServer(s);
        QTRY_VERIFY_WITH_TIMEOUT(
            session.state() == QvelSession::Connected || !session.lastError().isNull(), 20000);
        QCOMPARE(session.state() == QvelSession::Connected, answer > 0);
        if (answer <= 0)
            QCOMPARE(session.lastError().status.code(),
                     answer < 0 ? OpcUa_BadTimeout : OpcUa_BadCertificateUntrusted);
        session.disconnectFromServer();
        QTRY_COMPARE(session.state(), QvelSession::Disconnected);
    }
    QTEST(asked, "asked");
    QTEST(int(QDir(user.options.trust.trusted).entryList(QDir::Files).size()), "trusted");
    QTEST(int(QDir(user.options.trust.rejected).entryList(QDir::Files).size()), "rejected");
    if (answer <= 0)
        return;
    // Under another name, the question comes again; to refuse takes no trust back.
    session.disconnect(this);
    connect(&session, &QvelSession::certificateQuestion, this,
            [&] { session.answerCertificate(QvelCertificateAnswer::Reject); });
    session.connectToServer(setting("Basic256Sha256", 3));
    QTRY_VERIFY(!session.lastError().isNull());
    QTEST(int(QDir(user.options.trust.trusted).entryList(QDir::Files).size()), "trusted");
}

void tst_Session::otherUrl_data()
{
    QTest::addColumn<bool>("allowed");
    QTest::newRow("allowed") << true;
    QTest::newRow("not allowed") << false;
}

// A server announces itself under a name that nobody knows here.
void tst_Session::otherUrl()
{
    QFETCH(bool, allowed);
    PeerProcess server;
    const QString url = server.start(NODE, {PEERS "/sessionserver.mjs", "--hostname",
                                            "plant.invalid", "--children", "1", "--items", "1"});
    QvelDiscoverySetting s = setting();
    s.setEndpointUrl(QString(url).replace("plant.invalid", "127.0.0.1"));
    QvelSessionOptions options = m_user.options;
    options.allowsOtherUrl = allowed;
    QvelSession session(options);
    const QvelSessionError error = connectSession(session, s);
    QCOMPARE(session.state() == QvelSession::Connected, allowed);
    if (allowed) {
        QCOMPARE(session.announcedUrl(), url);
        QCOMPARE(session.usedUrl(), s.endpointUrl());
    } else {
        QCOMPARE(error.step, "Looking up the host");
    }
}

void tst_Session::services()
{
    QvelSession session(m_user.options);
    const QvelSessionError error = connectSession(session, setting());
    QVERIFY2(session.state() == QvelSession::Connected, error.toString().toUtf8());

    const QvelBrowseResult children = resultOf(session.browse({{node("Many")}, {UaNodeId(85)}}));
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
    const QvelCallResult sum = resultOf(session.call({{node("Machine"), node("Add"), {a, b}}}));
    QCOMPARE(sum.status.code(), OpcUa_Good);
    QCOMPARE(sum.results.value(0).status.code(), OpcUa_Good);
    QCOMPARE(sum.results.value(0).outputArguments.value(0).toDouble(), 3.5);

    const auto pathTo = [](const char* name) {
        return QvelBrowsePath{UaNodeId(85),
                              {{UaQualifiedName(name, 1), UaNodeId(33), false, true}}};
    };
    const QvelTranslateResult path = resultOf(
        session.translateBrowsePaths({pathTo("Machine"), pathTo("Nothing"), pathTo("Many")}));
    QCOMPARE(path.results.size(), 3);
    QCOMPARE(path.results[0].targets.value(0).nodeId.nodeId(), node("Machine"));
    QCOMPARE(path.results[1].status.toString(), UaString("BadNoMatch"));
    QCOMPARE(path.results[2].targets.value(0).nodeId.nodeId(), node("Many"));

    const QvelRegisterResult registered =
        resultOf(session.registerNodes({node("Machine"), node("Add")}));
    QCOMPARE(registered.nodeIds.size(), 2);
    QCOMPARE(resultOf(session.read({{registered.nodeIds[1], QvelAttribute::NodeClass, {}, {}}}))
                 .values.value(0)
                 .value()
                 .toInt32(),
             4);
    QCOMPARE(resultOf(session.unregisterNodes(registered.nodeIds)).status.code(), OpcUa_Good);

    QvelHistoryDetails details;
    details.from = UaDateTime::fromString("2024-01-01T00:00:00Z");
    details.to = UaDateTime::fromString("2024-01-02T00:00:00Z");
    details.valuesPerNode = 700;
    const QvelHistoryResult history =
        resultOf(session.historyRead({{node("Historic"), {}}}, details));
    QCOMPARE(history.status.code(), OpcUa_Good);
    QCOMPARE(history.results.value(0).status.code(), OpcUa_Good);
    QCOMPARE(history.results.value(0).values.size(), 3000);
    details.to = UaDateTime::fromString("2024-01-01T00:10:00Z");
    details.aggregateType = UaNodeId(2342); // Average
    details.processingInterval = 60000;
    const QvelHistoryResult processed =
        resultOf(session.historyRead({{node("Historic"), {}}}, details));
    QCOMPARE(processed.results.value(0).values.size(), 10);
    for (int i = 0; i < 10; ++i)
        QCOMPARE(processed.results[0].values[i].value().toDouble(), 29.5 + 60 * i);
}

// The channel's token is renewed with requests under way.
void tst_Session::renewal()
{
    QvelSessionOptions options = m_user.options;
    options.channelLifetime = 2000;
    QvelSession session(options);
    const QvelSessionError error = connectSession(session, setting("Basic256Sha256", 3));
    QVERIFY2(session.state() == QvelSession::Connected, error.toString().toUtf8());
    const QList<QvelReadItem> items(50, {node("ScalarInt32"), 13, {}, {}});
    for (int calls = 0; session.statistics().tokenRenewals < 3; calls += 8) {
        QList<QFuture<QvelReadResult>> pending;
        for (int i = 0; i < 8; ++i)
            pending.append(session.read(items));
        for (const auto& future : std::as_const(pending))
            QCOMPARE(resultOf(future).values.size(), 50);
        QVERIFY(calls < 100'000);
    }
    QVERIFY(session.statistics().requests > 8);
    QVERIFY(!session.statistics().lastAnswer.isNull());
    QCOMPARE(session.state(), QvelSession::Connected);
    QCOMPARE(session.statistics().reconnects, 0u);
}

// A server that falls silent is noticed without a subscription.
void tst_Session::silence()
{
    Relay relay(quint16(QUrl(m_url).port()));
    QvelSessionOptions options = m_user.options;
    options.keepAliveInterval = 200;
    options.reconnects = false;
    QvelSession session(options);
    QvelDiscoverySetting s = setting();
    s.setEndpointUrl(relay.url());
    connectSession(session, s);
    QTest::qWait(1000);
    QCOMPARE(session.state(), QvelSession::Connected);
    QFuture<QvelReadResult> pending;
    relay.pull();
    pending = session.read({{UaNodeId(2258), 13, {}, {}}});
    QCOMPARE(resultOf(pending).status.code(), OpcUa_BadConnectionClosed);
    QTRY_COMPARE(session.state(), QvelSession::Disconnected);
    QCOMPARE(session.lastError().status.code(), OpcUa_BadTimeout);
    QCOMPARE(session.lastError().step, "Being connected");
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

// Filters, modes and queues, and what the server makes of them.
void tst_Session::monitoring()
{
    QvelSession session(m_user.options);
    QvelSubscriptionParameters parameters;
    parameters.publishingInterval = 50;
    QvelSubscription* subscription = session.createSubscription(parameters);
    connectSession(session, setting());
    QHash<quint32, QList<double>> values;
    QHash<quint32, QList<UaVariant>> events;
    QHash<quint32, QvelItemState> states;
    int overflows = 0;
    connect(subscription, &QvelSubscription::dataChanged, this, [&](const auto& changes) {
        for (const QvelDataChange& change : changes) {
            values[change.handle].append(change.value.value().toDouble());
            overflows += change.hasOverflow();
        }
    });
    connect(subscription, &QvelSubscription::eventsReceived, this, [&](const auto& list) {
        for (const QvelEvent& event : list)
            events[event.handle] = event.fields;
    });
    connect(subscription, &QvelSubscription::itemsChanged, this, [&](const auto& list) {
        for (const QvelItemState& state : list)
            states[state.handle] = state;
    });

    QvelMonitoredItem item;
    item.nodeId = node("ScalarDouble");
    item.samplingInterval = 0;
    item.queueSize = 100;
    QvelMonitoredItem stamped = item, coarse = item, fast = item, event = item;
    stamped.trigger = QvelDataChangeTrigger::StatusValueTimestamp;
    coarse.deadbandType = QvelDeadbandType::Absolute;
    coarse.deadbandValue = 5;
    fast.nodeId = node("Item0");
    fast.queueSize = 2;
    event.nodeId = UaNodeId(2253);
    event.attributeId = QvelAttribute::EventNotifier;
    event.eventFields = {{UaQualifiedName("Message", 0)}, {UaQualifiedName("Severity", 0)}};
    // OfType SystemEventType, which none is, and BaseEventType.
    const auto ofType = [](const char* type) {
        return UaExtensionObject(
            UaExpandedNodeId(UaNodeId(588), UaString(), 0),
            UaByteString(QByteArray::fromHex("010000000e00000001000000010055020105000000110100" +
                                             QByteArray(type))));
    };
    QvelMonitoredItem no = event, yes = event, wrong = item;
    no.whereClause = ofType("5208");
    yes.whereClause = ofType("f907");
    wrong.nodeId = node("Nothing");
    const QList<OpcUa_UInt32> h =
        subscription->addItems({item, stamped, coarse, fast, event, no, yes, wrong});
    QTRY_COMPARE(states.size(), 8);
    for (int i = 0; i < 8; ++i)
        QCOMPARE(states[h[i]].status.code(), i < 7 ? OpcUa_Good : OpcUa_BadNodeIdUnknown);
    QCOMPARE(states[h[3]].revisedQueueSize, 2u);
    QTRY_VERIFY(events.contains(h[4]) && events.contains(h[6]));
    QCOMPARE(events[h[4]].size(), 2);
    QCOMPARE(events[h[6]].value(1).toUInt16(), OpcUa_UInt16(100));
    QVERIFY(!events.contains(h[5]));

    const auto write = [&](double number) {
        UaVariant value;
        value.setDouble(number);
        const qsizetype before = values[h[1]].size();
        resultOf(session.write({{item.nodeId, UaDataValue(value), 13, {}}}));
        return QTest::qWaitFor([&] { return values[h[1]].size() > before; });
    };
    QTRY_COMPARE(values[h[2]].size(), 1);
    for (double number : {100., 102., 102., 110.})
        QVERIFY2(write(number), QByteArray::number(number));
    QTRY_COMPARE(values[h[2]].mid(1), QList<double>({100, 110}));
    QCOMPARE(values[h[0]].mid(1), QList<double>({100, 102, 110}));
    QCOMPARE(values[h[1]].mid(1), QList<double>({100, 102, 102, 110}));

    QvelMonitoredItem slower = item;
    slower.samplingInterval = 700;
    slower.queueSize = 7;
    subscription->modifyItem(h[2], slower);
    QTRY_COMPARE(states[h[2]].revisedQueueSize, 7u);
    QCOMPARE(states[h[2]].revisedSamplingInterval, 700.);
    subscription->setMonitoringMode({h[0]}, QvelMonitoringMode::Disabled);
    subscription->removeItems({h[2]});
    QCOMPARE(subscription->items().size(), 7);
    QTest::qWait(200);
    const qsizetype removed = values[h[2]].size();
    QVERIFY(write(200));
    subscription->setMonitoringMode({h[0]}, QvelMonitoringMode::Reporting);
    QTRY_COMPARE(values[h[0]].mid(4), QList<double>({200}));

    QSignalSpy changed(subscription, &QvelSubscription::changed);
    parameters.publishingInterval = 500;
    subscription->setParameters(parameters);
    QTRY_COMPARE(changed.size(), 1);
    QCOMPARE(subscription->revisedParameters().publishingInterval, 500.);
    QTRY_VERIFY(overflows > 0); // five values in an interval, and room for two
    subscription->setPublishingEnabled(false);
    QTRY_COMPARE(changed.size(), 3);
    QTest::qWait(200);
    const qsizetype paused = values[h[3]].size();
    QTest::qWait(1500);
    QCOMPARE(values[h[3]].size(), paused);
    subscription->setPublishingEnabled(true);
    QTRY_VERIFY(values[h[3]].size() > paused);
    QCOMPARE(values[h[2]].size(), removed);
}

QTEST_GUILESS_MAIN(tst_Session)
#include "tst_session.moc"

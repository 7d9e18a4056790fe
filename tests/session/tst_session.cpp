// A session with a foreign server, whose connection is lost, and which goes and comes back.

#include "session/sessionuser.h"
#include "support/relay.h"

#include <Kestrel/OpcUaStatusCodes>

static UaNodeId node(const char* name)
{
    return UaNodeId(UaString(name), 1);
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
    for (const QByteArray& needle : {masked, wide})
        if (std::search(bytes.begin(), bytes.end(), needle.begin(), needle.end(), isSame) !=
            bytes.end())
            return true;
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

// That the system gives, and that a server which is started anew takes again.
static int freePort()
{
    QTcpServer probe;
    return probe.listen(QHostAddress::LocalHost) ? probe.serverPort() : 0;
}

class tst_Session : public QObject
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
        m_url = m_server.start(NODE, {"--security-revert=CVE-2023-46809",
                                      PEERS "/sessionserver.mjs", "--items", "400"});
        QVERIFY(!m_url.isEmpty());
        m_port = quint16(QUrl(m_url).port());
        m_user.options.keepAliveInterval = 500;
        const QString locked = m_person.folder.filePath("locked.pem");
        QVERIFY(m_person.pair.toPEMFile(QFile::encodeName(locked), "almond"));
    }

    void identities()
    {
        struct Row
        {
            const char* policy;
            QString password; // of the user name, or none
            QString key;      // of the certificate
            QString step;     // that fails; none where it connects
            QString error;
            QStringList answers = {}; // to the questions for the key's password
        };
        const char *const none = "None", *const good = "Basic256Sha256";
        const QString before = "Preparing the identity", after = "Activating the session";
        for (const Row& row :
             {Row{good, {}, "own.pem", {}, {}},
              {none, {}, "own.pem", {}, {}},
              {good, {}, "locked.pem", {}, {}, {"wrong", "almond"}},
              {good, {}, "locked.pem", before, "Rejected.*password of the private key", {"wrong"}},
              {good, {}, m_user.options.privateKeyFile, before, "Invalid.*do not match"},
              {good, {}, "none.pem", before, "Invalid.*none.pem, cannot be read"},
              {good, "cedar", {}, after, "Bad(UserAccessDenied|.*Rejected).*Check user name"},
              {none, "walnut", {}, after, "BadSecurityPolicyRejected.*clear text"},
              {none, "walnut", {}, {}, {}, {"plain"}}}) {
            Relay relay(m_port);
            QvelDiscoverySetting s = setting(row.policy, row.policy == none ? 1 : 3);
            if (row.password == "walnut")
                allowClearText(s);
            s.setEndpointUrl(relay.url());
            s.setUserTokenType(row.key.isEmpty() ? OpcUa_UserTokenType_UserName
                                                 : OpcUa_UserTokenType_Certificate);
            s.setUserName("operator");
            s.setPassword(row.password);
            s.setCertificateFile(m_person.options.certificateFile);
            s.setPrivateKeyFile(QDir(m_person.folder.path()).filePath(row.key));
            QvelSessionOptions options = m_user.options;
            options.allowsPlainPassword = !row.answers.isEmpty();
            QvelSession session(options);
            QList<bool> repeated;
            connect(&session, &QvelSession::passwordQuestion, this, [&](const auto& question) {
                QCOMPARE(question.file, s.privateKeyFile());
                const QString answer = row.answers.value(repeated.size());
                repeated.append(question.isRepeated);
                answer.isNull() ? session.cancelPassword() : session.answerPassword(answer);
            });
            const QvelSessionError told = connectSession(session, s);
            const QString text = told.toString();
            QVERIFY2(told.step == row.step, text.toUtf8());
            QVERIFY2(QRegularExpression(row.error).match(text).hasMatch(), text.toUtf8());
            QCOMPARE(session.state() == QvelSession::Connected, row.step.isEmpty());
            QCOMPARE(repeated,
                     row.key == "locked.pem" ? QList<bool>({false, true}) : QList<bool>());
            QCOMPARE(relay.connections() == 0, row.step == before); // nothing was sent
            session.disconnectFromServer();
            QvelSession other(m_user.options); // the only one that the server still knows
            connectSession(other, setting());
            const QvelReadItem sessionCount{UaNodeId(2277), 13, {}, {}};
            QTRY_COMPARE(resultOf(other.read({sessionCount})).values.value(0).value().toUInt32(),
                         1u);
        }
    }

    void secrets()
    {
        // Encrypted, refused, and in clear text.
        for (const auto& [policy, user] : {std::pair("Basic256Sha256", "keeper"),
                                           {"Basic256Sha256", "stranger"},
                                           {"None", "keeper"}}) {
            const bool isPlain = qstrcmp(policy, "None") == 0;
            QByteArray masked, written;
            {
                QvelDiscoverySetting s = setting(policy, isPlain ? 1 : 3);
                if (isPlain)
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
                QCOMPARE(session.state() == QvelSession::Connected, s.userName() == "keeper");
                session.disconnectFromServer();
                QTRY_COMPARE(session.state(), QvelSession::Disconnected);
                QFile file(m_user.folder.filePath("settings.ini"));
                QSettings settings(file.fileName(), QSettings::IniFormat);
                s.storeSettings(settings, "entry");
                settings.sync();
                QVERIFY(file.open(QIODevice::ReadOnly));
                written += file.readAll();
                QVERIFY(written.contains(user));
#ifdef Q_OS_LINUX
                QVERIFY(isInMemory(masked));
#endif
            }
            QVERIFY(!holds(written, masked));
            QVERIFY(!isInMemory(masked));
        }
    }

    void certificates()
    {
        // The answer, if any, the files then, and how often it was asked at two attempts.
        const std::tuple<int, int, int, int> rows[] = {
            {-1, 0, 0, 2},
            {int(QvelCertificateAnswer::Reject), 0, 1, 2},
            {int(QvelCertificateAnswer::AcceptOnce), 0, 0, 2},
            {int(QvelCertificateAnswer::AcceptAndTrust), 1, 0, 1}};
        for (const auto& [given, trusted, rejected, questions] : rows) {
            SessionUser user;
            user.options.questionTimeout = given < 0 ? 1000 : 60000;
            QvelSession session(user.options);
            int asked = 0, answer = given;
            OpcUa_StatusCode finding = OpcUa_BadCertificateUntrusted;
            connect(&session, &QvelSession::certificateQuestion, this, [&](const auto& question) {
                ++asked;
                QCOMPARE(question.findings.value(0).status.code(), finding);
                if (answer >= 0)
                    session.answerCertificate(QvelCertificateAnswer(answer));
            });
            const auto count = [](const QString& folder) {
                return QDir(folder).entryList(QDir::Files).size();
            };
            QvelDiscoverySetting s = setting("Basic256Sha256", 3);
            s.setEndpointUrl(s.endpointUrl().replace("127.0.0.1", "localhost")); // as it is named
            for (int attempt = 0; attempt < 2; ++attempt) {
                session.connectToServer(s);
                QTRY_VERIFY_WITH_TIMEOUT(session.state() == QvelSession::Connected ||
                                             !session.lastError().isNull(),
                                         20000);
                QCOMPARE(session.state() == QvelSession::Connected, answer > 0);
                if (answer <= 0)
                    QCOMPARE(session.lastError().status.code(),
                             answer < 0 ? OpcUa_BadTimeout : OpcUa_BadCertificateUntrusted);
                session.disconnectFromServer();
                QTRY_COMPARE(session.state(), QvelSession::Disconnected);
            }
            QCOMPARE(asked, questions);
            QCOMPARE(count(user.options.trust.trusted), trusted);
            QCOMPARE(count(user.options.trust.rejected), rejected);
            if (std::exchange(answer, int(QvelCertificateAnswer::Reject)) <= 0)
                continue;
            // Under another name, the question comes again; to refuse takes no trust back.
            if (trusted > 0)
                finding = OpcUa_BadCertificateHostNameInvalid;
            session.connectToServer(setting("Basic256Sha256", 3));
            QTRY_VERIFY(!session.lastError().isNull());
            QCOMPARE(count(user.options.trust.trusted), trusted);
        }
    }

    // A server announces itself under a name that nobody knows here.
    void otherUrl()
    {
        PeerProcess server;
        const QString url =
            server.start(NODE, {PEERS "/sessionserver.mjs", "--hostname", "plant.invalid",
                                "--children", "1", "--items", "1"});
        QvelDiscoverySetting s = setting();
        s.setEndpointUrl(QString(url).replace("plant.invalid", "127.0.0.1"));
        for (const bool allowed : {false, true}) {
            QvelSessionOptions options = m_user.options;
            options.allowsOtherUrl = allowed;
            QvelSession session(options);
            QCOMPARE(connectSession(session, s).step, allowed ? "" : "Looking up the host");
            QCOMPARE(session.state() == QvelSession::Connected, allowed);
            QCOMPARE(session.announcedUrl() == url, allowed);
            QVERIFY(!allowed || session.usedUrl() == s.endpointUrl());
        }
    }

    void services()
    {
        QvelSession session(m_user.options);
        QCOMPARE(connectSession(session, setting()).toString(), "");
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
        const QvelReadItem kind{registered.nodeIds[1], QvelAttribute::NodeClass, {}, {}};
        QCOMPARE(resultOf(session.read({kind})).values.value(0).value().toInt32(), 4);
        QCOMPARE(resultOf(session.unregisterNodes(registered.nodeIds)).status.code(), OpcUa_Good);

        QvelHistoryDetails details;
        details.from = UaDateTime::fromString("2024-01-01T00:00:00Z");
        details.to = UaDateTime::fromString("2024-01-01T00:10:00Z");
        details.valuesPerNode = 70;
        const auto history = [&] {
            return resultOf(session.historyRead({{node("Historic"), {}}}, details));
        };
        QCOMPARE(history().results.value(0).values.size(), 601); // both ends
        details.aggregateType = UaNodeId(2342);                  // Average
        details.processingInterval = 60000;
        const QvelHistoryResult processed = history();
        QCOMPARE(processed.results.value(0).values.size(), 10);
        for (int i = 0; i < 10; ++i)
            QCOMPARE(processed.results[0].values[i].value().toDouble(), 29.5 + 60 * i);
    }

    // The channel's token is renewed with requests under way.
    void renewal()
    {
        QvelSessionOptions options = m_user.options;
        options.channelLifetime = 2000;
        QvelSession session(options);
        QCOMPARE(connectSession(session, setting("Basic256Sha256", 3)).toString(), "");
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

    // Filters, modes and queues, and what the server makes of them.
    void monitoring()
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
                UaByteString(QByteArray::fromHex(
                    "010000000e00000001000000010055020105000000110100" + QByteArray(type))));
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

        // One that goes before the server has made it does not stay there, where ten find room.
        for (int i = 0; i < 20; ++i) {
            delete session.createSubscription(parameters);
            resultOf(session.read({{item.nodeId, 13, {}, {}}}));
        }
        subscription = session.createSubscription(parameters);
        QTRY_VERIFY(subscription->subscriptionId() != 0);
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
        QCOMPARE(connectSession(session, setting("Basic256Sha256", 3, relay.url())).toString(), "");
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
        QCOMPARE(connectSession(session, setting("Basic256Sha256", 3, url)).toString(), "");
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
        QCOMPARE(connectSession(session, setting("Basic256Sha256", 3)).toString(), "");
        QTRY_COMPARE_WITH_TIMEOUT(m_last.size(), 50, 10000);
        // Also one that waits for a call, or within the answer to another one.
        const QList<QvelReadItem> time = {{UaNodeId(2258), QvelAttribute::Value, {}, {}}};
        QFuture<QvelReadResult> waited = session.read(time);
        waited.waitForFinished();
        QCOMPARE(waited.result().values.size(), 1);
        qsizetype within = 0;
        resultOf(session.read(time).then(&session, [&](const QvelReadResult&) {
            within = resultOf(session.read(time)).values.size();
            return within;
        }));
        QCOMPARE(within, 1);
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
        QvelDiscoverySetting s = setting("Basic256Sha256", 3);
        s.setUserTokenType(OpcUa_UserTokenType_Certificate);
        s.setCertificateFile(m_person.options.certificateFile);
        s.setPrivateKeyFile(m_person.folder.filePath("locked.pem"));
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
            m_doomed->connectToServer(s);
            QTRY_VERIFY2_WITH_TIMEOUT(!m_doomed, moment, 10000);
            QVERIFY2(m_pending.isFinished() && m_pending.resultCount() == 1, moment);
            // The answer may just have come.
            const QvelReadResult result = resultOf(m_pending);
            QVERIFY(result.status.isBad() != (result.values.size() == 1));
        }
    }

private:
    QvelDiscoverySetting setting(const char* policy = "None", int mode = 1,
                                 const QString& url = {}) const
    {
        QvelDiscoverySetting setting;
        setting.setEndpointUrl(url.isEmpty() ? m_url : url);
        setting.setSecurityPolicy(QString("http://opcfoundation.org/UA/SecurityPolicy#") + policy);
        setting.setMessageSecurityMode(OpcUa_MessageSecurityMode(mode));
        setting.setSessionName("test");
        return setting;
    }

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

    QPointer<QvelSession> m_doomed;
    QFuture<QvelReadResult> m_pending; // when it was deleted

    PeerProcess m_server;
    QString m_url;
    quint16 m_port = 0;
    QHash<quint32, double> m_last;
    int m_twice = 0;
    int m_skipped = 0; // values that are missing without a gap having been told
    int m_gaps = 0;
    SessionUser m_user;
    SessionUser m_person; // with a certificate of its own
};

QTEST_GUILESS_MAIN(tst_Session)
#include "tst_session.moc"

// Sessions with a server that does all right but one thing.

#include "session/sessionscript.h"

namespace {

const UaNodeId anyNode(2258);
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr qint64 mostMemory = 1000 << 20; // with what the sanitizer keeps
#else
constexpr qint64 mostMemory = 150 << 20;
#endif

// What the host does once it is connected, and how that ends.

OpcUa_StatusCode readOne(QvelSession& session)
{
    const QvelReadResult result = resultOf(session.read({{anyNode, 13, {}, {}}}));
    return result.status.isBad() || result.values.value(0).value().toUInt32() == 13
               ? result.status.code()
               : OpcUa_BadUnexpectedError;
}
OpcUa_StatusCode readMany(QvelSession& session)
{
    return resultOf(session.read(QList<QvelReadItem>(100'000, {anyNode, 13, {}, {}})))
        .status.code();
}
OpcUa_StatusCode cancelOne(QvelSession& session)
{
    QFuture<QvelReadResult> cancelled = session.read({{anyNode, 12, {}, {}}});
    QTest::qWait(100); // until it is under way
    cancelled.cancel();
    return readOne(session);
}
// What ends early gives its continuation point back.
template <class Result>
OpcUa_StatusCode statusOf(const Result& result)
{
    if (!QTest::qWaitFor([] { return released > 0; }, 20000))
        return OpcUa_BadUnexpectedError;
    return result.status.isBad() ? result.status.code() : result.results.value(0).status.code();
}
OpcUa_StatusCode browse(QvelSession& session)
{
    return statusOf(resultOf(session.browse({{UaNodeId(85)}})));
}
OpcUa_StatusCode browseOnce(QvelSession& session)
{
    const QvelBrowseResult result = resultOf(session.browse({{UaNodeId(85)}}));
    return result.results.value(0).references.size() == 10'001 ? statusOf(result)
                                                               : OpcUa_BadUnexpectedError;
}
OpcUa_StatusCode history(QvelSession& session)
{
    QvelHistoryDetails details;
    details.maximum = 1000;
    return statusOf(resultOf(session.historyRead({{anyNode, {}}}, details)));
}
OpcUa_StatusCode comeBack(QvelSession& session)
{
    session.read({{anyNode, 13, {}, {}}}); // the server hangs up
    for (const bool isThere : {false, true})
        static_cast<void>(QTest::qWaitFor(
            [&] { return (session.state() == QvelSession::Connected) == isThere; }, 20000));
    return readOne(session);
}
OpcUa_StatusCode waitForEnd(QvelSession& session)
{
    session.read({{anyNode, 13, {}, {}}});
    static_cast<void>(
        QTest::qWaitFor([&] { return session.state() == QvelSession::Disconnected; }, 20000));
    return session.lastError().status.code();
}
// What a subscription delivers until number 6 has come, or until it fails.
OpcUa_StatusCode subscribe(QvelSession& session, const char* expected)
{
    QvelSubscriptionParameters parameters;
    parameters.publishingInterval = 20;
    QvelSubscription* subscription = session.createSubscription(parameters);
    QvelMonitoredItem item;
    item.nodeId = anyNode;
    subscription->addItems({item});
    QByteArray told;
    OpcUa_StatusCode status = OpcUa_BadTimeout;
    QEventLoop loop;
    const auto end = [&] { // what comes after does not count
        subscription->disconnect(&loop);
        loop.quit();
    };
    QObject::connect(subscription, &QvelSubscription::changed, &loop, [&](UaStatusCode s) {
        status = s.code();
        if (s.isBad())
            end();
    });
    QObject::connect(subscription, &QvelSubscription::gap, &loop,
                     [&](OpcUa_UInt32 count) { told += '-' + QByteArray::number(count) + ' '; });
    QObject::connect(subscription, &QvelSubscription::dataChanged, &loop, [&](const auto& changes) {
        for (const QvelDataChange& change : changes)
            told += QByteArray::number(change.value.value().toUInt32()) + ' ';
        if (told.endsWith("6 "))
            end();
    });
    QTimer::singleShot(20000, &loop, [&] { loop.exit(-1); });
    if (loop.exec() == -1)
        return OpcUa_BadUnexpectedError;
    if (told != expected)
        qWarning("%s instead of %s", told.constData(), expected);
    return told == expected ? status : OpcUa_BadUnexpectedError;
}
struct Row
{
    QByteArray name;
    bool isSecure;
    OpcUa_StatusCode status; ///< of the connection that fails, or else of the call
    Server::Fault fault;
    OpcUa_StatusCode (*call)(QvelSession&) = nullptr;
    bool isConnected = false;   ///< in the end
    int timeout = 20000;        ///< of steps and calls, milliseconds
    OpcUa_UInt32 limit = 0;     ///< of the server
    const char* told = nullptr; ///< by a subscription, which is the call then
};

// In place of an answer to one of the steps that lead to a session.
template <class Request>
void addStepRows(QList<Row>& rows, const char* step, bool isSecure)
{
    const auto add = [&](const char* what, OpcUa_StatusCode status, auto fault, int time = 20000) {
        rows.append({QByteArray(step) + ": " + what, isSecure, status, on<Request>(fault), nullptr,
                     false, time});
    };
    add("closed", OpcUa_BadConnectionClosed, [](auto& s, auto&, auto&) { s.ends = true; });
    add(
        "silence", OpcUa_BadTimeout, [](auto&...) {}, 500);
    add("fault", OpcUa_BadTooManySessions, refusal(OpcUa_BadTooManySessions));
    add("other message", OpcUa_BadUnknownResponse,
        [](auto& s, auto& m, auto&) { s.reply(m, CloseSessionResponse()); });
    add("no message", OpcUa_BadTcpMessageTypeInvalid, [](auto& s, auto&, auto&) {
        s.peer.send(encodeConnectionMessage(MessageType::Acknowledge, Acknowledge()));
    });
}

void addSecurityRows(QList<Row>& rows)
{
    const auto created = [&](const char* name, OpcUa_StatusCode status, auto change) {
        rows.append({name, true, status, altered<CreateSessionRequest>(change)});
    };
    constexpr OpcUa_StatusCode badSignature = OpcUa_BadApplicationSignatureInvalid;
    created("wrong signature", badSignature, [](auto& r) { r.serverSignature.signature[7] ^= 1; });
    created("no signature", badSignature, [](auto& r) { r.serverSignature.signature.clear(); });
    created("signature of another kind", badSignature,
            [](auto& r) { r.serverSignature.algorithm = UaString("rsa"); });
    created("another certificate", OpcUa_BadCertificateInvalid,
            [](auto& r) { r.serverCertificate = makeIdentity(2048).certificate; });
    created("no token", OpcUa_BadUnknownResponse,
            [](auto& r) { r.authenticationToken = UaNodeId(); });
    created("other endpoints", OpcUa_BadSecurityChecksFailed,
            [](auto& r) { static_cast<void>(r.serverEndpoints.resize(1)); });
    created("hidden endpoint", OpcUa_BadSecurityChecksFailed, [](auto& r) {
        r.serverEndpoints[0].SecurityMode = OpcUa_MessageSecurityMode_Sign;
        assign(r.serverEndpoints[0].SecurityPolicyUri, policyUri);
    });
    for (int length : {0, 31, 129}) {
        const auto change = [=](auto& response) { response.serverNonce = QByteArray(length, 'n'); };
        const QByteArray name = "nonce of " + QByteArray::number(length);
        created(name + ", created", OpcUa_BadNonceInvalid, change);
        rows.append({name + ", activated", true, OpcUa_BadNonceInvalid,
                     altered<ActivateSessionRequest>(change)});
    }
}

void addSizeRows(QList<Row>& rows)
{
    // An answer with these bytes instead of results.
    const auto told = [&](const char* name, OpcUa_StatusCode status, const QByteArray& results,
                          bool isConnected = true) {
        rows.append({name, false, status, onCall([results](auto& s, auto& m, auto& request) {
                         ReadResponse good;
                         good.header.requestHandle = request.header.requestHandle;
                         QByteArray body = encodeMessage(good);
                         body.chop(2 * sizeof(OpcUa_Int32)); // the two empty lists
                         s.peer.send(s.peer.writer.chunks(m.type, m.requestId, body + results));
                     }),
                     readOne, isConnected});
    };
    const auto hex = [](const char* digits) { return QByteArray::fromHex(digits); };
    told("string of 1 GB", OpcUa_BadDecodingError, hex("01000000 010c 00000040"));
    told("small bytes of large values", OpcUa_BadEncodingLimitsExceeded,
         hex("00002000") + QByteArray(1 << 21, '\0'));
    told("message too large", OpcUa_BadConnectionClosed, QByteArray(8 << 20, '\0'), false);
    told("too few results", OpcUa_BadUnknownResponse, hex("00000000 00000000"));
    rows.append({"chunk of 1 GB", false, OpcUa_BadTcpMessageTooLarge,
                 onCall([](auto& s, auto&, auto&) {
                     s.peer.send("MSGF" + QByteArray::fromHex("00000040"));
                 }),
                 waitForEnd});
}

void addCallRows(QList<Row>& rows)
{
    // With a limit of one and a fault; with none, and as many as are taken nevertheless.
    const auto limited = [&](const char* name, OpcUa_UInt32 limit, qsizetype most,
                             OpcUa_StatusCode fault, OpcUa_StatusCode status) {
        rows.append({name, false, status, onCall([=](auto& s, auto& m, auto& request) {
                         request.items.size() > most ? refusal(fault)(s, m, request)
                                                     : s.reply(m, s.good(request));
                     }),
                     readMany, true});
        rows.last().limit = limit;
    };
    limited("one at a time and a fault", 1, 0, OpcUa_BadTooManySessions, OpcUa_BadTooManySessions);
    limited("always too much", 1, 0, OpcUa_BadTooManyOperations, OpcUa_BadTooManyOperations);
    limited("as many as it takes", 1000, 1000, OpcUa_BadTooManySessions, OpcUa_Good);
    limited("too much at a time", 0, 100, OpcUa_BadTooManyOperations, OpcUa_Good);
    rows.append({"silence", false, OpcUa_BadTimeout, onCall([](auto&...) {}), waitForEnd});
    rows.append({"back into the same session", true, OpcUa_Good,
                 [lost = std::make_shared<bool>()](Server& s, const Message& m, auto type) {
                     if (*lost && type == CreateSessionRequest::encodingId)
                         s.reply(m, Server::faultOf(OpcUa_BadIdentityTokenRejected));
                     else if (!*lost && type == ReadRequest::encodingId)
                         s.ends = *lost = decoded<ReadRequest>(m).items.size() == 1;
                     return s.ends || (*lost && type == CreateSessionRequest::encodingId);
                 },
                 comeBack, true});
    rows.append(
        {"no answer", false, OpcUa_BadTimeout, onCall([](auto&...) {}), readOne, true, 500});
    rows.append({"answers to nobody", true, OpcUa_Good, onCall([](auto& s, auto& m, auto& request) {
                     s.kept.push_back(m);
                     if (request.items[0].attributeId == 12)
                         return; // the one that is cancelled
                     Message unknown = m;
                     unknown.requestId = 4711;
                     for (const Message& other : {unknown, s.kept[0], s.kept[0], m, m})
                         s.reply(other, s.good(decoded<ReadRequest>(other)));
                 }),
                 cancelOne, true});
    const auto add = [&](const char* name, OpcUa_StatusCode status, const Server::Fault& fault,
                         OpcUa_StatusCode (*call)(QvelSession&)) {
        rows.append({name, false, status, fault, call, true});
    };
    add("references for ever", OpcUa_BadEncodingLimitsExceeded, nullptr, browse);
    add("same references for ever", OpcUa_BadContinuationPointInvalid,
        on<BrowseNextRequest>([](auto& s, auto& m, auto&) {
            BrowseResult page;
            page.continuationPoint = QByteArray::number(++s.count);
            page.references.resize(3);
            s.reply(m, BrowseNextResponse{{}, {page}, {}});
        }),
        browseOnce);
    add("history for ever", OpcUa_BadEncodingLimitsExceeded, nullptr, history);
    add("same history for ever", OpcUa_BadContinuationPointInvalid,
        altered<HistoryReadRequest>([](auto& r) { r.results[0].continuationPoint = "again"; }),
        history);
    add("empty history for ever", OpcUa_BadContinuationPointInvalid,
        altered<HistoryReadRequest>([](auto& r) { r.results[0].historyData = {}; }), history);
}

void addSubscriptionRows(QList<Row>& rows)
{
    const char *const silence = "", *const inOrder = "1 2 3 4 5 6 ", *const withGap = "1 -3 5 6 ";
    const auto add = [&](const char* name, const char* told, auto fault) {
        rows.append({name, false, *told ? OpcUa_Good : OpcUa_StatusCode(OpcUa_BadTimeout),
                     on<PublishRequest>(fault), nullptr, true, *told ? 20000 : 500, 0, told});
    };
    add("never published", silence, [](auto&...) {});
    add("published for nobody", silence, [](auto& s, auto& m, auto&) {
        PublishResponse response = s.notification(++s.count);
        response.subscriptionId = 4711;
        s.peer.answer(m, response);
    });
    add("published twice", inOrder, [](auto& s, auto& m, auto& request) {
        s.acknowledged += request.acknowledgements.size();
        if (s.count > 8 && s.acknowledged == 0)
            return;
        PublishResponse response = s.notification(++s.count / 2 + 1); // each number twice
        for (int i = 0; i < 2 && s.count <= 11; ++i)                  // and each request
            s.peer.answer(m, response);
    });
    // These numbers, and what Republish tells. The promise of 5 before it has no data.
    const auto addMissing = [&](const char* name, const char* told,
                                const QList<OpcUa_UInt32>& numbers, auto republish) {
        add(name, told, [numbers](auto& s, auto& m, auto&) {
            if (s.count < OpcUa_UInt32(numbers.size())) {
                const bool isPromise = numbers.value(++s.count) == 5 && numbers[s.count - 1] == 5;
                s.reply(m, s.notification(numbers[s.count - 1], !isPromise));
            }
        });
        rows.last().fault =
            [publish = rows.last().fault, missing = on<RepublishRequest>(republish)](
                auto& s, auto& m, auto type) { return publish(s, m, type) || missing(s, m, type); };
    };
    const auto again = [](bool hasValue) {
        return [hasValue](auto& s, auto& m, auto& request) {
            const auto number = request.retransmitSequenceNumber;
            s.reply(m, RepublishResponse{{}, s.notification(number, hasValue).notificationMessage});
        };
    };
    addMissing("dropped by the server", withGap, {1, 5, 5, 6},
               refusal(OpcUa_BadMessageNotAvailable));
    addMissing("published again without data", withGap, {1, 5, 5, 6}, again(false));
    addMissing("published again", inOrder, {1, 3, 6}, again(true));
}

QList<Row> allRows()
{
    QList<Row> rows;
    addStepRows<OpenSecureChannelRequest>(rows, "open", true);
    addStepRows<GetEndpointsRequest>(rows, "endpoints", true);
    addStepRows<CreateSessionRequest>(rows, "create", true);
    addStepRows<ActivateSessionRequest>(rows, "activate", false);
    addStepRows<ReadRequest>(rows, "tables", true);
    addSecurityRows(rows);
    addSizeRows(rows);
    addCallRows(rows);
    addSubscriptionRows(rows);
    return rows;
}

/// Bytes of a line of the process's status.
qint64 memory(const QByteArray& field)
{
    QFile file("/proc/self/status");
    const QByteArray status = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    const qsizetype at = status.indexOf(field) + field.size();
    return status.mid(at, status.indexOf("kB", at) - at).trimmed().toLongLong() << 10;
}

} // namespace

class tst_HostileSession : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void endsInANamedState_data()
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < m_rows.size(); ++i)
            QTest::addRow("%s%s", m_rows[i].name.constData(), m_rows[i].isSecure ? ", secure" : "")
                << i;
    }

    void endsInANamedState()
    {
        QFETCH(int, index);
        const Row& row = m_rows[index];
        QFile certificate(m_user.options.certificateFile);
        QVERIFY(certificate.open(QIODevice::ReadOnly));
        const QByteArray client = certificate.readAll();
        int connections = 0;
        HostileServer server([&](ServerPeer& peer) {
            ChannelSecurity security(*securityPolicy(policyUri),
                                     OpcUa_MessageSecurityMode_SignAndEncrypt,
                                     m_identity.certificate, m_identity.key, client);
            // The first connection asks for the endpoints.
            const bool isFirst = ++connections == 1;
            if (!isFirst && row.isSecure)
                peer.secure(security);
            if (peer.acknowledge())
                Server(peer, m_identity, row.limit,
                       isFirst && !row.name.startsWith("endpoints") ? nullptr : row.fault)
                    .serve();
        });

        QvelSessionOptions options = m_user.options;
        options.connectTimeout = options.callTimeout = row.timeout;
        options.keepAliveInterval = row.call == waitForEnd ? 1000 : 60000;
        options.reconnects = row.call == comeBack;
        options.limits.messageSize = 4 << 20;
        options.limits.memory = 32 << 20;
        QvelDiscoverySetting setting;
        setting.setEndpointUrl(server.url());
        setting.setSecurityPolicy(row.isSecure ? policyUri : securityPolicyNone);
        setting.setMessageSecurityMode(row.isSecure ? OpcUa_MessageSecurityMode_SignAndEncrypt
                                                    : OpcUa_MessageSecurityMode_None);
        released = 0;
        QFile peak("/proc/self/clear_refs");
        QVERIFY(peak.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && peak.write("5") == 1);
        const qint64 before = memory("VmRSS:");
        QvelSession session(options);
        OpcUa_StatusCode status = connectSession(session, setting).status.code();
        if (row.call || row.told) {
            QCOMPARE(session.state(), QvelSession::Connected);
            status = row.told ? subscribe(session, row.told) : row.call(session);
        }
        QCOMPARE(UaStatusCode(status).toString().bytes(),
                 UaStatusCode(row.status).toString().bytes());
        if (!row.isConnected)
            QTRY_COMPARE(session.state(), QvelSession::Disconnected);
        QCOMPARE(session.state() == QvelSession::Connected, row.isConnected);
        QVERIFY(memory("VmHWM:") - before < mostMemory);
    }

private:
    const QList<Row> m_rows = allRows();
    const Identity m_identity = makeIdentity(2048);
    SessionUser m_user;
};

QTEST_GUILESS_MAIN(tst_HostileSession)
#include "tst_hostilesession.moc"

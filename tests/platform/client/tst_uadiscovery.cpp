#include "platform/client/uadiscovery.h"
#include "platform/stack/opcuastatuscodes.h"
#include "platform/wire/samples.h"
#include "support/hostileserver.h"
#include "support/warnings.h"

#include <QtNetwork/QTcpServer>
#include <QtTest/QtTest>

#include <memory>
#include <thread>

using namespace UaClientSdk;
using namespace UaWire;

Q_DECLARE_METATYPE(HostileServer::Script)
Q_DECLARE_METATYPE(Acknowledge)

namespace {

constexpr OpcUa_StatusCode anyBad = OpcUa_Bad;

QByteArray name(UaStatus status)
{
    return status.toString().bytes();
}

/// The status of a call, and the number of endpoints that it gave.
QByteArray getEndpoints(const QByteArray& url, int timeout)
{
    ServiceSettings settings;
    settings.callTimeout = timeout;
    UaStackTypeArray<OpcUa_EndpointDescription> endpoints;
    endpoints.resize(1); // a call that fails leaves nothing in here
    const UaStatus status = UaDiscovery().getEndpoints(settings, UaString(url), {}, endpoints);
    return name(status) + ' ' + QByteArray::number(endpoints.length());
}

// On a thread that has no event loop.
template <class Function>
void onThread(Function function)
{
    std::thread(function).join();
}

GetEndpointsResponse goodAnswer(OpcUa_UInt32 count = 2)
{
    GetEndpointsResponse response;
    response.endpoints = filledArray<OpcUa_EndpointDescription>(count);
    return response;
}

struct Stage
{
    const char* name;
    std::function<bool(ServerPeer&)> reach;
};

const Stage stages[] = {
    {"connect", [](ServerPeer&) { return true; }},
    {"Hello", [](ServerPeer& peer) { return peer.receive().has_value(); }},
    {"Acknowledge", [](ServerPeer& peer) { return peer.acknowledge(); }},
    {"opening", [](ServerPeer& peer) { return peer.acknowledge() && peer.receive(); }},
    {"request", [](ServerPeer& peer) { return peer.takeRequest().has_value(); }},
    {"half of the answer",
     [](ServerPeer& peer) {
         const auto request = peer.takeRequest();
         GetEndpointsResponse response = goodAnswer();
         const QByteArray bytes = request ? peer.chunksOf(*request, response) : QByteArray();
         peer.send(bytes.first(bytes.size() / 2));
         return request.has_value();
     }},
};

} // namespace

class TestUaDiscovery : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnWarnings(); }
    void goodServer();
    void limitsOfTheServer_data();
    void limitsOfTheServer();
    void hostileServer_data();
    void hostileServer();
    void badCalls();
    void interruption();
};

void TestUaDiscovery::goodServer()
{
    QSemaphore closed; // by a message
    HostileServer server([&](ServerPeer& peer) {
        const auto request = peer.takeRequest();
        if (!request)
            return;
        QByteArrayView body = request->body;
        const auto answer = [&](auto asked, auto response, auto member, auto isRight) {
            QByteArrayView fields = body;
            if (takeTypeId(fields) != asked.encodingId)
                return;
            decodeFields(fields, asked);
            response.*member =
                filledArray<std::remove_reference_t<decltype((response.*member)[0])>>(3);
            if (isRight(asked))
                peer.answer(*request, response);
        };
        const auto rightUrl = [&](const auto& asked) {
            const OpcUa_UInt32 hint = asked.header.timeoutHint;
            return asked.endpointUrl.bytes() == server.url() && hint > 0 && hint <= 5000;
        };
        answer(GetEndpointsRequest(), GetEndpointsResponse(), &GetEndpointsResponse::endpoints,
               rightUrl);
        answer(FindServersRequest(), FindServersResponse(), &FindServersResponse::servers,
               rightUrl);
        answer(FindServersOnNetworkRequest(), FindServersOnNetworkResponse(),
               &FindServersOnNetworkResponse::servers, [](const auto& asked) {
                   return asked.startingRecordId == 0 && asked.maxRecordsToReturn == 0;
               });
        const auto close = peer.receive();
        if (close && close->type == MessageType::CloseSecureChannel &&
            close->channelId == peer.writer.channelId && close->tokenId == peer.writer.tokenId)
            closed.release();
    });
    ServiceSettings settings;
    settings.callTimeout = 5000;
    const UaString url(" \t" + server.url() + "\r\n"); // blanks are not sent
    const auto test = [&] {
        UaStackTypeArray<OpcUa_EndpointDescription> endpoints;
        UaStackTypeArray<OpcUa_ApplicationDescription> servers;
        UaStackTypeArray<OpcUa_ServerOnNetwork> onNetwork;
        QCOMPARE(name(UaDiscovery().getEndpoints(settings, url, {}, endpoints)), "Good");
        QCOMPARE(name(UaDiscovery().findServers(settings, url, {}, servers)), "Good");
        QCOMPARE(name(UaDiscovery().findServersOnNetwork(settings, url, {}, onNetwork)), "Good");
        QCOMPARE(endpoints.length() + servers.length() + onNetwork.length(), 9u);
        QVERIFY(OpcUa_EndpointDescription_Equal(&endpoints[2],
                                                &filledArray<OpcUa_EndpointDescription>(1)[0]));
        QVERIFY(OpcUa_ApplicationDescription_Equal(
            &servers[2], &filledArray<OpcUa_ApplicationDescription>(1)[0]));
        QCOMPARE(onNetwork[2].RecordId, filledArray<OpcUa_ServerOnNetwork>(1)[0].RecordId);
        QVERIFY(closed.tryAcquire(3, 5000));
    };
    test(); // on the main thread
    onThread(test);
}

void TestUaDiscovery::limitsOfTheServer_data()
{
    QTest::addColumn<Acknowledge>("limits");
    QTest::addColumn<QByteArray>("outcome");
    const auto row = [](const Acknowledge& limits, const char* outcome) {
        QTest::newRow(outcome) << limits << QByteArray(outcome);
    };
    row({0, 8192, 8192, 0, 0}, "Good 1000");
    row({0, 0xffffffff, 0xffffffff, 0, 0}, "Good 1000");
    row({0, 8191, 65536, 0, 0}, "BadCommunicationError 0");
    row({0, 65536, 8191, 0, 0}, "BadCommunicationError 0");
    row({0, 8192, 8192, 4000, 0}, "BadRequestTooLarge 0");
}

// The answer does not fit into one of the smallest chunks. Nobody takes note of the channel's end.
void TestUaDiscovery::limitsOfTheServer()
{
    QFETCH(Acknowledge, limits);
    HostileServer server([&](ServerPeer& peer) {
        if (!peer.receive())
            return;
        peer.send(encodeConnectionMessage(MessageType::Acknowledge, limits));
        if (!peer.openChannel())
            return;
        if (const auto request = peer.receive()) {
            GetEndpointsResponse response = goodAnswer(1000);
            peer.writer.chunkSize = 8192;
            peer.answer(*request, response);
            peer.stall();
        }
    });
    QTEST(getEndpoints(server.url() + '/' + QByteArray(4000, 'x'), 5000), "outcome");
}

void TestUaDiscovery::hostileServer_data()
{
    QTest::addColumn<HostileServer::Script>("script");
    QTest::addColumn<OpcUa_StatusCode>("status");
    QTest::addColumn<int>("count");
    const auto row = [](const QByteArray& name, OpcUa_StatusCode status,
                        HostileServer::Script script, int count = 0) {
        QTest::newRow(name.constData()) << script << status << count;
    };
    const auto sends = [](const Stage& stage, const QByteArray& bytes) {
        return [reach = stage.reach, bytes](ServerPeer& peer) {
            if (reach(peer)) {
                peer.send(bytes);
                peer.stall();
            }
        };
    };
    for (const Stage& stage : stages) {
        const QByteArray after = QByteArray(" after ") + stage.name;
        row("silent" + after, OpcUa_BadTimeout, sends(stage, {}));
        row("closes" + after, OpcUa_BadConnectionClosed,
            [reach = stage.reach](ServerPeer& peer) { reach(peer); });
        row("garbage" + after, anyBad, sends(stage, QByteArray(5000, '\xa5')));
    }
    for (const OpcUa_StatusCode code : {0x807d0000u, 0x40920000u, 0x00000000u}) {
        const OpcUa_StatusCode told = code == 0 ? OpcUa_BadUnexpectedError : code;
        const QByteArray error = encodeConnectionMessage(MessageType::Error, Error{code, {}});
        for (const std::size_t stage : {1, 3, 4})
            row("Error " + name(code) + " after " + stages[stage].name, told,
                sends(stages[stage], error));
        row("fault " + name(code), told, [code](ServerPeer& peer) {
            ServiceFault fault;
            fault.header.serviceResult = code;
            if (const auto request = peer.takeRequest())
                peer.answer(*request, fault);
        });
        row("abort " + name(code), told, [code](ServerPeer& peer) {
            if (const auto request = peer.takeRequest()) {
                GetEndpointsResponse response = goodAnswer(100);
                // The first chunk becomes an intermediate one.
                peer.send(peer.chunksOf(*request, response).replace(3, 1, "C"));
                QByteArray rest;
                BinaryEncoder encoder(rest);
                for (OpcUa_UInt32 word : {17u, 4711u, 3u, request->requestId})
                    encoder(word);
                encoder(Error{code, {}});
                peer.send(encodeChunk(MessageType::Message, 'A', rest));
                peer.stall();
            }
        });
        row(
            "result " + name(code), code,
            [code](ServerPeer& peer) {
                GetEndpointsResponse response = goodAnswer();
                response.header.serviceResult = code;
                if (const auto request = peer.takeRequest())
                    peer.answer(*request, response);
            },
            OpcUa_IsBad(code) ? 0 : 2);
    }
    row("channel refused", 0x80540000u, [](ServerPeer& peer) {
        ServiceFault fault;
        fault.header.serviceResult = 0x80540000u;
        if (const auto request = peer.acknowledge() ? peer.receive() : std::nullopt)
            peer.answer(*request, fault);
    });
    row("another channel opened", OpcUa_BadTcpSecureChannelUnknown, [](ServerPeer& peer) {
        OpenSecureChannelResponse response;
        response.securityToken.channelId = 18;
        peer.writer.channelId = 17;
        if (const auto request = peer.acknowledge() ? peer.receive() : std::nullopt)
            peer.answer(*request, response);
    });
    row("in drops", OpcUa_BadTimeout, [](ServerPeer& peer) {
        GetEndpointsResponse response = goodAnswer();
        if (const auto request = peer.takeRequest())
            peer.sendSlowly(peer.chunksOf(*request, response), std::chrono::milliseconds(10));
    });
    row("endless stream", OpcUa_BadResponseTooLarge, [](ServerPeer& peer) {
        const auto request = peer.takeRequest();
        const QByteArray body(60000, 'x');
        for (OpcUa_UInt32 sequence = 2; request && peer.goesOn(); ++sequence) {
            QByteArray rest;
            BinaryEncoder encoder(rest);
            for (OpcUa_UInt32 word : {17u, 4711u, sequence, request->requestId})
                encoder(word);
            peer.send(encodeChunk(MessageType::Message, 'C', rest + body));
        }
    });
    const auto changedAt = [](qsizetype offset) {
        return [offset](ServerPeer& peer) {
            if (const auto request = peer.takeRequest()) {
                GetEndpointsResponse response = goodAnswer();
                QByteArray bytes = peer.chunksOf(*request, response);
                ++bytes.data()[offset];
                peer.send(bytes);
                peer.stall();
            }
        };
    };
    row("other channel", OpcUa_BadTcpSecureChannelUnknown, changedAt(8));
    row("other token", OpcUa_BadSecureChannelTokenUnknown, changedAt(12));
    row("other request id", OpcUa_BadUnknownResponse, changedAt(20));
    row("other answer", OpcUa_BadUnknownResponse, changedAt(24 + 2));
    row("other request handle", OpcUa_BadUnknownResponse, changedAt(24 + 4 + 8));
    row("Acknowledge as the answer", OpcUa_BadTcpMessageTypeInvalid,
        sends(stages[4], encodeConnectionMessage(MessageType::Acknowledge, Acknowledge())));
}

void TestUaDiscovery::hostileServer()
{
    QFETCH(HostileServer::Script, script);
    QFETCH(OpcUa_StatusCode, status);
    QFETCH(int, count);
    HostileServer server(script);
    QByteArray outcome;
    // What is wrong with megabytes takes a while to tell on a slow machine.
    const int timeout = status == OpcUa_BadTimeout || status == anyBad ? 300 : 10000;
    onThread([&] { outcome = getEndpoints(server.url(), timeout); });
    if (status == anyBad)
        QVERIFY2(outcome.startsWith("Bad") && outcome.endsWith(" 0"), outcome);
    else
        QCOMPARE(outcome, name(status) + ' ' + QByteArray::number(count));
}

void TestUaDiscovery::badCalls()
{
    // No one may listen on this port.
    for (const char* url : {"opc.tcp://127.0.0.1:1", "opc.tcp://localhost:1"})
        QCOMPARE(getEndpoints(url, 5000), "BadConnectionRejected 0");
    for (const char* url : {"", "  ", "http://127.0.0.1/"})
        QCOMPARE(getEndpoints(url, 5000), "BadTcpEndpointUrlInvalid 0");
    for (const int timeout : {0, -1, INT_MIN})
        QCOMPARE(getEndpoints("opc.tcp://127.0.0.1", timeout), "BadInvalidArgument 0");
}

void TestUaDiscovery::interruption()
{
    // i < 0: before the call, which then does not connect.
    for (int i = -1; i < int(std::size(stages)); ++i) {
        OneTimeEvent reached;
        HostileServer server([&](ServerPeer& peer) {
            if (i < 0 || stages[i].reach(peer)) {
                reached.happen();
                peer.stall();
            }
        });
        QByteArray outcome;
        const std::unique_ptr<QThread> thread(QThread::create([&] {
            if (i < 0)
                QThread::currentThread()->requestInterruption();
            outcome = getEndpoints(server.url(), 60000);
        }));
        thread->start();
        if (i >= 0) {
            QVERIFY(reached.waitFor(std::chrono::seconds(10)));
            thread->requestInterruption();
        }
        QVERIFY(thread->wait(10000));
        QCOMPARE(outcome, "BadShutdown 0");
        QCOMPARE(reached.waitFor(std::chrono::milliseconds(i < 0 ? 50 : 0)), i >= 0);
    }
}

QTEST_GUILESS_MAIN(TestUaDiscovery)
#include "tst_uadiscovery.moc"

#include "platform/client/uadiscovery.h"
#include "platform/stack/opcuastatuscodes.h"
#include "platform/wire/samples.h"
#include "support/hostileserver.h"
#include "support/warnings.h"

#include <QtTest/QtTest>

#include <memory>
#include <thread>

using namespace UaClientSdk;
using namespace UaWire;

Q_DECLARE_METATYPE(HostileServer::Script)

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
    const UaStatus status = UaDiscovery::getEndpoints(settings, UaString(url), {}, endpoints);
    return name(status) + ' ' + QByteArray::number(endpoints.length());
}

GetEndpointsResponse goodAnswer(OpcUa_UInt32 count = 2)
{
    GetEndpointsResponse response;
    response.endpoints = filledArray<OpcUa_EndpointDescription>(count);
    return response;
}

template <class Response>
Response withResult(Response response, OpcUa_StatusCode code)
{
    response.header.serviceResult = code;
    return response;
}

/// A chunk of the second message of the server.
QByteArray chunk(char letter, OpcUa_UInt32 sequence, const Message& request, const QByteArray& body)
{
    QByteArray rest;
    for (OpcUa_UInt32 word : {17u, 4711u, sequence, request.requestId})
        BinaryEncoder{rest}(word);
    return encodeChunk(MessageType::Message, letter, rest + body);
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

HostileServer::Script sends(const Stage& stage, const QByteArray& bytes)
{
    return [reach = stage.reach, bytes](ServerPeer& peer) {
        if (reach(peer)) {
            peer.send(bytes);
            peer.stall();
        }
    };
}

HostileServer::Script onRequest(std::function<void(ServerPeer&, const Message&)> act)
{
    return [act](ServerPeer& peer) {
        if (const auto request = peer.takeRequest()) {
            act(peer, *request);
            peer.stall();
        }
    };
}

template <class Response>
HostileServer::Script answering(const std::function<Response()>& make)
{
    return onRequest([make](ServerPeer& peer, const Message& request) {
        Response response = make();
        peer.answer(request, response);
    });
}

// Sends an answer in small chunks once it has agreed on limits.
HostileServer::Script limitedTo(const Acknowledge& limits)
{
    return [limits](ServerPeer& peer) {
        peer.receive();
        peer.send(encodeConnectionMessage(MessageType::Acknowledge, limits));
        if (!peer.openChannel())
            return;
        GetEndpointsResponse response = goodAnswer(1000);
        peer.writer.chunkSize = 8192;
        if (const auto request = peer.receive())
            peer.answer(*request, response);
        peer.stall();
    };
}

} // namespace

class TestUaDiscovery : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnWarnings(); }

    void goodServer()
    {
        QSemaphore closed; // by a message
        HostileServer server([&](ServerPeer& peer) {
            const auto request = peer.takeRequest();
            if (!request)
                return;
            const auto answer = [&](auto asked, auto response, auto member, auto isRight) {
                QByteArrayView fields = request->body;
                if (takeTypeId(fields) != asked.encodingId)
                    return;
                decodeFields(fields, asked);
                response.*member = filledArray<std::decay_t<decltype((response.*member)[0])>>(3);
                const OpcUa_UInt32 hint = asked.header.timeoutHint;
                if (isRight(asked) && hint > 0 && hint <= 5000)
                    peer.answer(*request, response);
            };
            const auto rightUrl = [&](const auto& asked) {
                return asked.endpointUrl.bytes() == server.url();
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
            UaStackTypeArray<OpcUa_ServerOnNetwork> found;
            QCOMPARE(name(UaDiscovery::getEndpoints(settings, url, {}, endpoints)), "Good");
            QCOMPARE(name(UaDiscovery::findServers(settings, url, {}, servers)), "Good");
            QCOMPARE(name(UaDiscovery::findServersOnNetwork(settings, url, {}, found)), "Good");
            QCOMPARE(endpoints.length() + servers.length() + found.length(), 9u);
            const auto endpoint = filledArray<OpcUa_EndpointDescription>(1);
            const auto server = filledArray<OpcUa_ApplicationDescription>(1);
            QVERIFY(OpcUa_EndpointDescription_Equal(&endpoints[2], &endpoint[0]));
            QVERIFY(OpcUa_ApplicationDescription_Equal(&servers[2], &server[0]));
            QCOMPARE(found[2].RecordId, 1u);
            QVERIFY(closed.tryAcquire(3, 5000));
        };
        test();                   // on the main thread
        std::thread(test).join(); // without an event loop
    }

    void hostileServer_data()
    {
        QTest::addColumn<HostileServer::Script>("script");
        QTest::addColumn<OpcUa_StatusCode>("status");
        QTest::addColumn<int>("count");
        const auto row = [](const QByteArray& name, OpcUa_StatusCode status,
                            HostileServer::Script script, int count = 0) {
            QTest::newRow(name.constData()) << script << status << count;
        };
        row("smallest chunks", OpcUa_Good, limitedTo({0, 8192, 8192, 0, 0}), 1000);
        row("largest chunks", OpcUa_Good, limitedTo({0, 0xffffffff, 0xffffffff, 0, 0}), 1000);
        row("receives less", OpcUa_BadCommunicationError, limitedTo({0, 8191, 65536, 0, 0}));
        row("sends less", OpcUa_BadCommunicationError, limitedTo({0, 65536, 8191, 0, 0}));
        row("small message", OpcUa_BadRequestTooLarge, limitedTo({0, 8192, 8192, 4000, 0}));
        for (const Stage& stage : stages) {
            const QByteArray after = QByteArray(" after ") + stage.name;
            row("silent" + after, OpcUa_BadTimeout, sends(stage, {}));
            row("closes" + after, OpcUa_BadConnectionClosed,
                [reach = stage.reach](ServerPeer& peer) { reach(peer); });
            row("garbage" + after, anyBad, sends(stage, QByteArray(5000, '\xa5')));
        }
        for (const OpcUa_StatusCode code : {0x807d0000u, 0x40920000u, 0x00000000u}) {
            const OpcUa_StatusCode told = code == 0 ? OpcUa_BadUnexpectedError : code;
            const QByteArray text = ' ' + name(code);
            for (const Stage* stage : {&stages[1], &stages[3], &stages[4]})
                row("Error" + text + " after " + stage->name, told,
                    sends(*stage, encodeConnectionMessage(MessageType::Error, Error{code, {}})));
            row("fault" + text, told,
                answering<ServiceFault>([code] { return withResult(ServiceFault(), code); }));
            row("result" + text, code,
                answering<GetEndpointsResponse>([code] { return withResult(goodAnswer(), code); }),
                OpcUa_IsBad(code) ? 0 : 2);
            row("abort" + text, told, onRequest([code](ServerPeer& peer, const Message& request) {
                    QByteArray reason;
                    BinaryEncoder{reason}(Error{code, {}});
                    peer.send(chunk('C', 2, request, "x") + chunk('A', 3, request, reason));
                }));
        }
        row("channel refused", 0x80540000u, [](ServerPeer& peer) {
            ServiceFault fault = withResult(ServiceFault(), 0x80540000u);
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
        row("in drops", OpcUa_BadTimeout, onRequest([](ServerPeer& peer, const Message& request) {
                GetEndpointsResponse response = goodAnswer();
                peer.sendSlowly(peer.chunksOf(request, response), std::chrono::milliseconds(10));
            }));
        const auto changedAt = [](qsizetype offset) {
            return onRequest([offset](ServerPeer& peer, const Message& request) {
                GetEndpointsResponse response = goodAnswer();
                QByteArray bytes = peer.chunksOf(request, response);
                ++bytes.data()[offset];
                peer.send(bytes);
            });
        };
        row("other channel", OpcUa_BadTcpSecureChannelUnknown, changedAt(8));
        row("other token", OpcUa_BadSecureChannelTokenUnknown, changedAt(12));
        row("other request id", OpcUa_BadUnknownResponse, changedAt(20));
        row("other answer", OpcUa_BadUnknownResponse, changedAt(24 + 2));
        row("other request handle", OpcUa_BadUnknownResponse, changedAt(24 + 4 + 8));
        row("Acknowledge as the answer", OpcUa_BadTcpMessageTypeInvalid,
            sends(stages[4], encodeConnectionMessage(MessageType::Acknowledge, Acknowledge())));
    }
    void hostileServer()
    {
        QFETCH(HostileServer::Script, script);
        QFETCH(OpcUa_StatusCode, status);
        QFETCH(int, count);
        HostileServer server(script);
        const int timeout = status == OpcUa_BadTimeout || status == anyBad ? 300 : 10000;
        const QByteArray url = server.url() + QByteArray(4000, 'x');
        const QByteArray outcome = getEndpoints(url, timeout);
        if (status == anyBad)
            QVERIFY2(outcome.startsWith("Bad") && outcome.endsWith(" 0"), outcome);
        else
            QCOMPARE(outcome, name(status) + ' ' + QByteArray::number(count));
    }

    void badCalls()
    {
        for (const char* url : {"opc.tcp://127.0.0.1:1", "opc.tcp://localhost:1"}) // unused port
            QCOMPARE(getEndpoints(url, 5000), "BadConnectionRejected 0");
        for (const char* url : {"", "  ", "http://127.0.0.1/"})
            QCOMPARE(getEndpoints(url, 5000), "BadTcpEndpointUrlInvalid 0");
        for (const int timeout : {0, INT_MIN})
            QCOMPARE(getEndpoints("opc.tcp://127.0.0.1", timeout), "BadInvalidArgument 0");
    }

    void interruption()
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
};

QTEST_GUILESS_MAIN(TestUaDiscovery)
#include "tst_uadiscovery.moc"

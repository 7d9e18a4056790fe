#include "platform/client/uadiscovery.h"
#include "platform/stack/opcuastatuscodes.h"
#include "platform/wire/samples.h"
#include "support/hostileserver.h"
#include "support/values.h"
#include "support/warnings.h"

using namespace UaClientSdk;
using namespace UaWire;

using Script = HostileServer::Script;

namespace {

/// The status of a call, and the number of endpoints that it gave.
QByteArray getEndpoints(const QByteArray& url, int timeout)
{
    ServiceSettings settings;
    settings.callTimeout = timeout;
    auto endpoints = filledArray<OpcUa_EndpointDescription>(1); // a call that fails leaves none
    const UaStatus status = UaDiscovery::getEndpoints(settings, UaString(url), {}, endpoints);
    return name(status) + ' ' + QByteArray::number(endpoints.length());
}

/// Sends what `make` gives for the client's request, and nothing more.
Script answering(std::function<QByteArray(ServerPeer&, const Message&)> make)
{
    return [make](ServerPeer& peer) {
        if (const auto request = peer.takeRequest()) {
            peer.send(make(peer, *request));
            peer.stall();
        }
    };
}

template <class Response>
QByteArray answer(ServerPeer& peer, const Message& request, OpcUa_StatusCode code = OpcUa_Good)
{
    Response response;
    if constexpr (std::is_same_v<Response, GetEndpointsResponse>)
        response.endpoints = filledArray<OpcUa_EndpointDescription>(100);
    response.header.serviceResult = code;
    return peer.chunksOf(request, response);
}

template <class Response>
Script answering(OpcUa_StatusCode code)
{
    return answering([code](ServerPeer& peer, const Message& request) {
        return answer<Response>(peer, request, code);
    });
}

// How far a server goes along with a client.
using Stage = std::pair<const char*, std::function<bool(ServerPeer&)>>;
const Stage stages[] = {
    {" after connecting", [](ServerPeer&) { return true; }},
    {" after Hello", [](ServerPeer& peer) { return peer.receive().has_value(); }},
    {" after Acknowledge", [](ServerPeer& peer) { return peer.acknowledge(); }},
    {" after opening", [](ServerPeer& peer) { return peer.acknowledge() && peer.receive(); }},
    {" after the request", [](ServerPeer& peer) { return peer.takeRequest().has_value(); }},
    {" after half of the answer", [](ServerPeer& peer) {
         const auto request = peer.takeRequest();
         if (request)
             peer.send(answer<GetEndpointsResponse>(peer, *request).chopped(100));
         return request.has_value();
     }}};

Script after(const Stage& stage, const QByteArray& bytes)
{
    return [reach = stage.second, bytes](ServerPeer& peer) {
        if (reach(peer)) {
            peer.send(bytes);
            peer.stall();
        }
    };
}

// Sends an answer in small chunks once it has agreed on limits.
Script limitedTo(const Acknowledge& limits)
{
    return [limits](ServerPeer& peer) {
        peer.receive();
        peer.send(encodeConnectionMessage(MessageType::Acknowledge, limits));
        if (peer.openChannel())
            answering<GetEndpointsResponse>(OpcUa_Good)(peer);
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
            const auto serve = [&](auto asked, auto response, auto member) {
                QByteArrayView fields = request->body;
                if (takeTypeId(fields) != asked.encodingId)
                    return;
                asked = decoded<decltype(asked)>(*request);
                response.*member = filledArray<std::decay_t<decltype((response.*member)[0])>>(3);
                bool good = asked.header.timeoutHint > 0 && asked.header.timeoutHint <= 5000;
                if constexpr (std::is_same_v<decltype(asked), FindServersOnNetworkRequest>)
                    good &= asked.startingRecordId == 0 && asked.maxRecordsToReturn == 0;
                else
                    good &= asked.endpointUrl.bytes() == server.url();
                if (good)
                    peer.answer(*request, response);
            };
            serve(GetEndpointsRequest(), GetEndpointsResponse(), &GetEndpointsResponse::endpoints);
            serve(FindServersRequest(), FindServersResponse(), &FindServersResponse::servers);
            serve(FindServersOnNetworkRequest(), FindServersOnNetworkResponse(),
                  &FindServersOnNetworkResponse::servers);
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
            QVERIFY(OpcUa_EndpointDescription_Equal(&endpoints[2], &endpoint[0]));
            QCOMPARE(found[2].RecordId, filledArray<OpcUa_ServerOnNetwork>(1)[0].RecordId);
            QVERIFY(closed.tryAcquire(3, 5000));
        };
        test();                   // on the main thread
        std::thread(test).join(); // without an event loop
    }

    void hostileServer()
    {
        const auto row = [](const QByteArray& what, OpcUa_StatusCode status, const Script& script,
                            int count = 0) {
            const Case here(what);
            HostileServer server(script);
            const int timeout = status == OpcUa_BadTimeout || status == OpcUa_Bad ? 300 : 10000;
            const QByteArray outcome = getEndpoints(server.url() + QByteArray(4000, 'x'), timeout);
            if (status == OpcUa_Bad) // any
                QVERIFY2(outcome.startsWith("Bad") && outcome.endsWith(" 0"), outcome);
            else
                QCOMPARE(outcome, name(status) + ' ' + QByteArray::number(count));
        };
        row("smallest chunks", OpcUa_Good, limitedTo({0, 8192, 8192, 0, 0}), 100);
        row("largest chunks", OpcUa_Good, limitedTo({0, 0xffffffff, 0xffffffff, 0, 0}), 100);
        row("receives less", OpcUa_BadCommunicationError, limitedTo({0, 8191, 65536, 0, 0}));
        row("sends less", OpcUa_BadCommunicationError, limitedTo({0, 65536, 8191, 0, 0}));
        row("small message", OpcUa_BadRequestTooLarge, limitedTo({0, 8192, 8192, 4000, 0}));
        for (const Stage& stage : stages) {
            row(QByteArray("silent") + stage.first, OpcUa_BadTimeout, after(stage, {}));
            row(QByteArray("closes") + stage.first, OpcUa_BadConnectionClosed, stage.second);
            row(QByteArray("garbage") + stage.first, OpcUa_Bad, after(stage, {5000, '\xa5'}));
        }
        for (const OpcUa_StatusCode code : {0x807d0000u, 0x40920000u, 0x00000000u}) {
            const OpcUa_StatusCode told = code == 0 ? OpcUa_BadUnexpectedError : code;
            const QByteArray text = ' ' + name(code);
            const Error error{code, {}};
            for (const int stage : {1, 3, 4})
                row("Error" + text + stages[stage].first, told,
                    after(stages[stage], encodeConnectionMessage(MessageType::Error, error)));
            row("fault" + text, told, answering<ServiceFault>(code));
            row("result" + text, code, answering<GetEndpointsResponse>(code),
                OpcUa_IsBad(code) ? 0 : 100);
            row("abort" + text, told, answering([error](ServerPeer& peer, const Message& request) {
                    QByteArray rest =
                        peer.writer.chunks(MessageType::Message, request.requestId, {});
                    rest.remove(0, 8);
                    BinaryEncoder{rest}(error);
                    return encodeChunk(MessageType::Message, 'A', rest);
                }));
        }
        row("another channel opened", OpcUa_BadTcpSecureChannelUnknown, [](ServerPeer& peer) {
            peer.writer.channelId = 18;
            OpenSecureChannelResponse response;
            response.securityToken.channelId = 17;
            if (const auto request = peer.acknowledge() ? peer.receive() : std::nullopt)
                peer.answer(*request, response);
        });
        row("in drops", OpcUa_BadTimeout, [](ServerPeer& peer) {
            if (const auto request = peer.takeRequest())
                for (const char byte : answer<GetEndpointsResponse>(peer, *request)) {
                    peer.send({1, byte});
                    QThread::msleep(peer.goesOn() ? 10 : 0);
                }
        });
        const std::pair<int, OpcUa_StatusCode> offsets[] = {
            {8, OpcUa_BadTcpSecureChannelUnknown}, // channel, token
            {12, OpcUa_BadSecureChannelTokenUnknown},
            {20, OpcUa_BadUnknownResponse}, // request, type, request handle
            {26, OpcUa_BadUnknownResponse},
            {36, OpcUa_BadUnknownResponse}};
        for (const auto& [offset, status] : offsets)
            row("changed at " + QByteArray::number(offset), status,
                answering([at = offset](ServerPeer& peer, const Message& request) {
                    QByteArray bytes = answer<GetEndpointsResponse>(peer, request);
                    ++bytes.data()[at];
                    return bytes;
                }));
        row("Acknowledge as the answer", OpcUa_BadTcpMessageTypeInvalid,
            after(stages[4], encodeConnectionMessage(MessageType::Acknowledge, Acknowledge())));
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
                if (i < 0 || stages[i].second(peer)) {
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

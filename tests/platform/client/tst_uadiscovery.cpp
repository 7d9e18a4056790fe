#include "platform/client/uadiscovery.h"
#include "platform/stack/opcuastatuscodes.h"
#include "samples.h"
#include "support/hostileserver.h"
#include "support/warnings.h"

#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>
#include <QtTest/QtTest>

#include <limits>
#include <memory>
#include <thread>
#ifdef __GLIBC__
#include <malloc.h>
#endif

using namespace UaClientSdk;
using namespace UaWire;

Q_DECLARE_METATYPE(HostileServer::Script)

namespace {

constexpr int timeout = 400;            // ms
constexpr int grace = 250;              // ms that a call may take beyond its time-out
constexpr long memoryBound = 64 * 1024; // KiB that a call may take
constexpr OpcUa_StatusCode anyBad = OpcUa_Bad;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool memoryIsMeasurable = false; // a sanitizer keeps what is freed
#else
constexpr bool memoryIsMeasurable = true;
#endif

// A number of KiB out of /proc/self/status.
long memory(const QByteArray& name)
{
    QFile file("/proc/self/status");
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.startsWith(name + ':'))
            return line.mid(name.size() + 1).simplified().split(' ').first().toLong();
    }
    return -1;
}

// Growth of this process's memory from start() on, in KiB. The server in the same process starts
// it again once it has made what it sends.
class MemoryGrowth
{
public:
    bool start()
    {
#ifdef __GLIBC__
        malloc_trim(0); // or what was freed before would be taken without growth
#endif
        QFile file("/proc/self/clear_refs"); // "5" makes VmHWM begin anew
        const bool ok = file.open(QIODevice::WriteOnly) && file.write("5") == 1;
        m_start = memory("VmRSS");
        return ok;
    }
    long value() const
    {
        return memory("VmHWM") - m_start;
    }

private:
    std::atomic<long> m_start = 0;
};
MemoryGrowth memoryGrowth;

struct Outcome
{
    UaStatus status;
    OpcUa_UInt32 count = 0;
    qint64 elapsed = 0; // ms
};

Outcome getEndpoints(const QByteArray& url, int callTimeout = timeout)
{
    Outcome outcome;
    ServiceSettings settings;
    settings.callTimeout = callTimeout;
    UaStackTypeArray<OpcUa_EndpointDescription> endpoints;
    endpoints.resize(1); // a call that fails leaves nothing in here
    QElapsedTimer timer;
    timer.start();
    outcome.status = UaDiscovery().getEndpoints(settings, UaString(url), {}, endpoints);
    outcome.elapsed = timer.elapsed();
    outcome.count = endpoints.length();
    return outcome;
}

// On a thread that has no event loop.
template <class Function>
void onThread(Function function)
{
    std::thread(function).join();
}

QByteArray name(UaStatus status)
{
    return status.toString().bytes();
}

QByteArray word(OpcUa_UInt32 value)
{
    QByteArray bytes;
    BinaryEncoder{bytes}(value);
    return bytes;
}

GetEndpointsResponse goodAnswer(OpcUa_UInt32 count = 2)
{
    GetEndpointsResponse response;
    response.endpoints = Samples::array<OpcUa_EndpointDescription>(count);
    return response;
}

// The body of an answer up to the number of its endpoints.
QByteArray answerHead(const Message& request)
{
    GetEndpointsResponse response;
    response.header.requestHandle = ServerPeer::requestHandle(request);
    QByteArray body = encodeMessage(response);
    body.chop(4);
    return body;
}

// Waits for a request and answers it by a body.
HostileServer::Script answering(std::function<QByteArray(const Message&)> body)
{
    return [body](ServerPeer& peer) {
        if (const auto request = peer.takeRequest()) {
            const QByteArray chunks =
                peer.writer.chunks(MessageType::Message, request->requestId, body(*request));
            memoryGrowth.start();
            peer.send(chunks);
            peer.stall();
        }
    };
}

// Waits for a request and sends the chunks of a good answer, changed.
HostileServer::Script sending(std::function<QByteArray(QByteArray)> change)
{
    return [change](ServerPeer& peer) {
        if (const auto request = peer.takeRequest()) {
            GetEndpointsResponse response = goodAnswer();
            peer.send(change(peer.chunksOf(*request, response)));
            peer.stall();
        }
    };
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
    {"opening the channel",
     [](ServerPeer& peer) { return peer.acknowledge() && peer.receive().has_value(); }},
    {"the request", [](ServerPeer& peer) { return peer.takeRequest().has_value(); }},
    {"half of the answer",
     [](ServerPeer& peer) {
         const auto request = peer.takeRequest();
         if (request) {
             GetEndpointsResponse response = goodAnswer();
             const QByteArray bytes = peer.chunksOf(*request, response);
             peer.send(bytes.first(bytes.size() / 2));
         }
         return request.has_value();
     }},
};

} // namespace

class TestUaDiscovery : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { failOnWarnings(); }
    void goodServer();
    void answerInChunks();
    void serverStopsReading();
    void requestThatNeedsChunks();
    void smallBuffers_data();
    void smallBuffers();
    void serverReportsFailure_data();
    void serverReportsFailure();
    void hostileServer_data();
    void hostileServer();
    void connectThatNeverEnds();
    void noServer();
    void badArguments();
    void interruption();
    void cleanupTestCase();

private:
    qint64 m_latest = std::numeric_limits<qint64>::min(); // ms
    QByteArray m_latestName;
    long m_largest = 0;
    QByteArray m_largestName;
};

void TestUaDiscovery::initTestCase()
{
#ifdef __GLIBC__
    // Large blocks go back to the system when they are freed, and show up when they are taken.
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);
#endif
}

void TestUaDiscovery::goodServer()
{
    QSemaphore closed; // by a message
    std::atomic<int> badRequests = 0;
    HostileServer server([&](ServerPeer& peer) {
        const auto request = peer.takeRequest();
        if (!request)
            return;
        QByteArrayView body = request->body;
        switch (takeTypeId(body)) {
        case GetEndpointsRequest::encodingId: {
            GetEndpointsRequest decoded;
            if (OpcUa_IsNotGood(decodeFields(body, decoded)) ||
                decoded.endpointUrl.bytes() != server.url() || decoded.header.timeoutHint == 0 ||
                decoded.header.timeoutHint > 5000)
                ++badRequests;
            GetEndpointsResponse response = goodAnswer(3);
            peer.answer(*request, response);
            break;
        }
        case FindServersRequest::encodingId: {
            FindServersRequest decoded;
            if (OpcUa_IsNotGood(decodeFields(body, decoded)) ||
                decoded.endpointUrl.bytes() != server.url())
                ++badRequests;
            FindServersResponse response;
            response.servers = Samples::array<OpcUa_ApplicationDescription>(2);
            peer.answer(*request, response);
            break;
        }
        case FindServersOnNetworkRequest::encodingId: {
            FindServersOnNetworkRequest decoded;
            if (OpcUa_IsNotGood(decodeFields(body, decoded)) || decoded.startingRecordId != 0 ||
                decoded.maxRecordsToReturn != 0)
                ++badRequests;
            FindServersOnNetworkResponse response;
            response.servers = Samples::array<OpcUa_ServerOnNetwork>(1);
            peer.answer(*request, response);
            break;
        }
        default:
            ++badRequests;
        }
        const auto close = peer.receive();
        if (close && close->type == MessageType::CloseSecureChannel &&
            close->channelId == peer.writer.channelId && close->tokenId == peer.writer.tokenId)
            closed.release();
    });
    ServiceSettings settings;
    settings.callTimeout = 5000;
    const UaString url(server.url());
    const auto test = [&] {
        UaDiscovery discovery;
        const auto sample = Samples::array<OpcUa_EndpointDescription>(1);
        const OpcUa_EndpointDescription& endpoint = sample[0];
        UaStackTypeArray<OpcUa_EndpointDescription> endpoints;
        QCOMPARE(name(discovery.getEndpoints(settings, url, {}, endpoints)), "Good");
        QCOMPARE(endpoints.length(), 3u);
        QVERIFY(OpcUa_EndpointDescription_Equal(&endpoints[2], &endpoint));
        QVERIFY(closed.tryAcquire(1, 5000));

        UaStackTypeArray<OpcUa_ApplicationDescription> servers;
        QCOMPARE(name(discovery.findServers(settings, url, {}, servers)), "Good");
        QCOMPARE(servers.length(), 2u);
        QVERIFY(OpcUa_ApplicationDescription_Equal(&servers[1], &endpoint.Server));
        QVERIFY(closed.tryAcquire(1, 5000));

        UaStackTypeArray<OpcUa_ServerOnNetwork> onNetwork;
        QCOMPARE(name(discovery.findServersOnNetwork(settings, url, {}, onNetwork)), "Good");
        QCOMPARE(onNetwork.length(), 1u);
        QCOMPARE(onNetwork[0].RecordId, 0xfffffffeu);
        QVERIFY(closed.tryAcquire(1, 5000));
    };
    test(); // on the main thread
    onThread(test);
    QCOMPARE(badRequests.load(), 0);
}

void TestUaDiscovery::answerInChunks()
{
    HostileServer server([](ServerPeer& peer) {
        if (const auto request = peer.takeRequest()) {
            GetEndpointsResponse response = goodAnswer(1000);
            peer.writer.chunkSize = 8192;
            peer.answer(*request, response);
            peer.receive();
        }
    });
    const Outcome outcome = getEndpoints(server.url(), 5000);
    QCOMPARE(name(outcome.status), "Good");
    QCOMPARE(outcome.count, 1000u);
}

// Nobody takes note of the end of the channel.
void TestUaDiscovery::serverStopsReading()
{
    HostileServer server([](ServerPeer& peer) {
        if (const auto request = peer.takeRequest()) {
            GetEndpointsResponse response = goodAnswer();
            peer.answer(*request, response);
            peer.stall();
        }
    });
    const Outcome outcome = getEndpoints(server.url());
    QCOMPARE(name(outcome.status), "Good");
    QVERIFY2(outcome.elapsed <= timeout + grace, QByteArray::number(outcome.elapsed));
}

// The server's buffer is the smallest that there is; the request does not fit into it.
void TestUaDiscovery::requestThatNeedsChunks()
{
    QByteArray urlOfRequest;
    QByteArray expectedUrl;
    const auto serve = [&](OpcUa_UInt32 maxChunkCount, OpcUa_UInt32 maxMessageSize) {
        return [&urlOfRequest, maxChunkCount, maxMessageSize](ServerPeer& peer) {
            if (!peer.receive())
                return;
            peer.send(
                encodeConnectionMessage(MessageType::Acknowledge,
                                        Acknowledge{0, 8192, 8192, maxMessageSize, maxChunkCount}));
            if (!peer.openChannel())
                return;
            if (const auto request = peer.receive()) {
                QByteArrayView body = request->body;
                takeTypeId(body);
                GetEndpointsRequest decoded;
                decodeFields(body, decoded);
                urlOfRequest = decoded.endpointUrl.bytes();
                GetEndpointsResponse response = goodAnswer();
                peer.answer(*request, response);
                peer.receive();
            }
        };
    };
    const QByteArray path = '/' + QByteArray(4000, 'x');
    {
        HostileServer server(serve(0, 0));
        expectedUrl = server.url() + path;
        QCOMPARE(name(getEndpoints(expectedUrl, 5000).status), "Good");
    }
    QCOMPARE(urlOfRequest, expectedUrl);
    HostileServer server(serve(0, 4000));
    QCOMPARE(name(getEndpoints(server.url() + path, 5000).status), "BadRequestTooLarge");
}

void TestUaDiscovery::smallBuffers_data()
{
    QTest::addColumn<OpcUa_UInt32>("receive");
    QTest::addColumn<OpcUa_UInt32>("send");
    QTest::addColumn<QByteArray>("status");
    QTest::newRow("smallest") << 8192u << 8192u << QByteArray("Good");
    QTest::newRow("more than asked for") << 0xffffffffu << 0xffffffffu << QByteArray("Good");
    QTest::newRow("receives too little") << 8191u << 65536u << QByteArray("BadCommunicationError");
    QTest::newRow("sends too little") << 65536u << 8191u << QByteArray("BadCommunicationError");
    QTest::newRow("nothing") << 0u << 0u << QByteArray("BadCommunicationError");
}

void TestUaDiscovery::smallBuffers()
{
    QFETCH(OpcUa_UInt32, receive);
    QFETCH(OpcUa_UInt32, send);
    QFETCH(QByteArray, status);
    HostileServer server([&](ServerPeer& peer) {
        if (!peer.receive())
            return;
        peer.send(
            encodeConnectionMessage(MessageType::Acknowledge, Acknowledge{0, receive, send, 0, 0}));
        if (!peer.openChannel())
            return;
        if (const auto request = peer.receive()) {
            GetEndpointsResponse response = goodAnswer(100);
            peer.answer(*request, response);
            peer.receive();
        }
    });
    QCOMPARE(name(getEndpoints(server.url(), 5000).status), status);
}

void TestUaDiscovery::serverReportsFailure_data()
{
    QTest::addColumn<HostileServer::Script>("script");
    QTest::addColumn<QByteArray>("status");

    const auto errorAt = [](size_t stage, OpcUa_StatusCode code) -> HostileServer::Script {
        return [stage, code](ServerPeer& peer) {
            if (stages[stage].reach(peer))
                peer.send(encodeConnectionMessage(MessageType::Error, Error{code, UaString("no")}));
        };
    };
    QTest::newRow("Error for Hello") << errorAt(1, 0x807d0000) << QByteArray("BadTcpServerTooBusy");
    QTest::newRow("Error for the channel")
        << errorAt(3, 0x80550000) << QByteArray("BadSecurityPolicyRejected");
    QTest::newRow("Error for the request")
        << errorAt(4, 0x80860000) << QByteArray("BadSecureChannelClosed");
    QTest::newRow("Error without a reason to fail")
        << errorAt(4, 0) << QByteArray("BadUnexpectedError");
    QTest::newRow("uncertain Error") << errorAt(4, 0x40000000) << QByteArray("BadUnexpectedError");

    const auto fault = [](OpcUa_StatusCode code) {
        return answering([code](const Message& request) {
            ServiceFault fault;
            fault.header.requestHandle = ServerPeer::requestHandle(request);
            fault.header.serviceResult = code;
            return encodeMessage(fault);
        });
    };
    QTest::newRow("fault") << fault(0x800b0000) << QByteArray("BadServiceUnsupported");
    QTest::newRow("unknown fault") << fault(0x8abc0000) << QByteArray("0x8abc0000");
    QTest::newRow("good fault") << fault(0) << QByteArray("BadUnexpectedError");
    const auto result = [](OpcUa_StatusCode code) {
        return answering([code](const Message& request) {
            GetEndpointsResponse response = goodAnswer();
            response.header.requestHandle = ServerPeer::requestHandle(request);
            response.header.serviceResult = code;
            return encodeMessage(response);
        });
    };
    QTest::newRow("bad result") << result(0x80100000) << QByteArray("BadTooManyOperations");
    QTest::newRow("uncertain result") << result(0x40000000) << QByteArray("BadUnexpectedError");
    QTest::newRow("channel refused") << HostileServer::Script([](ServerPeer& peer) {
        if (!peer.acknowledge())
            return;
        if (const auto request = peer.receive()) {
            ServiceFault fault;
            fault.header.serviceResult = 0x80540000;
            peer.answer(*request, fault);
        }
    }) << QByteArray("BadSecurityModeRejected");
    QTest::newRow("aborted answer") << HostileServer::Script([](ServerPeer& peer) {
        if (const auto request = peer.takeRequest()) {
            GetEndpointsResponse response = goodAnswer(100);
            const QByteArray chunks = peer.chunksOf(*request, response);
            Error error{0x80b90000, UaString("too large")};
            QByteArray rest = word(17) + word(4711) + word(3) + word(request->requestId);
            BinaryEncoder{rest}(error);
            // The first chunk becomes an intermediate one.
            peer.send(QByteArray(chunks).replace(3, 1, "C"));
            peer.send(encodeChunk(MessageType::Message, 'A', rest));
            peer.stall();
        }
    }) << QByteArray("BadResponseTooLarge");
}

void TestUaDiscovery::serverReportsFailure()
{
    QFETCH(HostileServer::Script, script);
    QFETCH(QByteArray, status);
    HostileServer server(script);
    const Outcome outcome = getEndpoints(server.url(), 5000);
    QCOMPARE(name(outcome.status), status);
    QCOMPARE(outcome.count, 0u);
}

void TestUaDiscovery::hostileServer_data()
{
    QTest::addColumn<HostileServer::Script>("script");
    QTest::addColumn<OpcUa_StatusCode>("status");

    for (const Stage& stage : stages) {
        const auto reach = stage.reach;
        QTest::addRow("silent after %s", stage.name)
            << HostileServer::Script([reach](ServerPeer& peer) {
                   if (reach(peer))
                       peer.stall();
               })
            << OpcUa_BadTimeout;
        QTest::addRow("closes after %s", stage.name)
            << HostileServer::Script([reach](ServerPeer& peer) { reach(peer); })
            << OpcUa_BadConnectionClosed;
        QTest::addRow("garbage after %s", stage.name)
            << HostileServer::Script([reach](ServerPeer& peer) {
                   QRandomGenerator random(4840);
                   QByteArray garbage(100000, '\0');
                   std::generate(garbage.begin(), garbage.end(),
                                 [&] { return char(random.generate()); });
                   if (reach(peer)) {
                       peer.send(garbage);
                       peer.stall();
                   }
               })
            << anyBad;
        QTest::addRow("HTTP after %s", stage.name)
            << HostileServer::Script([reach](ServerPeer& peer) {
                   if (reach(peer)) {
                       peer.send("HTTP/1.1 400 Bad Request\r\nConnection: close\r\n\r\n");
                       peer.stall();
                   }
               })
            << anyBad;
    }
    QTest::newRow("a byte a second") << HostileServer::Script([](ServerPeer& peer) {
        peer.receive();
        peer.sendSlowly(encodeConnectionMessage(MessageType::Acknowledge, Acknowledge()),
                        std::chrono::seconds(1));
    }) << OpcUa_BadTimeout;
    QTest::newRow("an answer in drops") << HostileServer::Script([](ServerPeer& peer) {
        if (const auto request = peer.takeRequest()) {
            GetEndpointsResponse response = goodAnswer();
            peer.sendSlowly(peer.chunksOf(*request, response), std::chrono::milliseconds(10));
        }
    }) << OpcUa_BadTimeout;
    QTest::newRow("endless chunks") << HostileServer::Script([](ServerPeer& peer) {
        if (const auto request = peer.takeRequest()) {
            for (OpcUa_UInt32 sequence = 2; peer.goesOn(); ++sequence) {
                peer.send(encodeChunk(MessageType::Message, 'C',
                                      word(17) + word(4711) + word(sequence) +
                                          word(request->requestId) + QByteArray(65512, 'x')));
            }
        }
    }) << OpcUa_BadResponseTooLarge;
    QTest::newRow("endless empty chunks") << HostileServer::Script([](ServerPeer& peer) {
        if (const auto request = peer.takeRequest()) {
            for (OpcUa_UInt32 sequence = 2; peer.goesOn(); ++sequence) {
                peer.send(
                    encodeChunk(MessageType::Message, 'C',
                                word(17) + word(4711) + word(sequence) + word(request->requestId)));
            }
        }
    }) << OpcUa_BadResponseTooLarge;
    QTest::newRow("endless stream") << HostileServer::Script([](ServerPeer& peer) {
        const QByteArray zeros(1 << 20, '\0');
        while (peer.goesOn())
            peer.send(zeros);
    }) << OpcUa_BadTcpMessageTypeInvalid;

    for (const OpcUa_UInt32 size : {0u, 7u, 8u, 23u, 0x7fffffffu, 0x80000000u, 0xffffffffu}) {
        QTest::addRow("answer of size %u", size)
            << sending([size](QByteArray bytes) { return bytes.replace(4, 4, word(size)); })
            << (size < 0x10000 ? OpcUa_BadDecodingError : OpcUa_BadTcpMessageTooLarge);
        QTest::addRow("Acknowledge of size %u", size)
            << HostileServer::Script([size](ServerPeer& peer) {
                   peer.receive();
                   QByteArray bytes =
                       encodeConnectionMessage(MessageType::Acknowledge, Acknowledge());
                   peer.send(bytes.replace(4, 4, word(size)));
                   peer.stall();
               })
            << (size < 0x10000 ? OpcUa_BadDecodingError : OpcUa_BadTcpMessageTooLarge);
    }
    for (const int cut : {1, 4, 10, 300}) {
        QTest::addRow("answer without its last %d bytes", cut) << sending([cut](QByteArray bytes) {
            bytes.chop(cut);
            return bytes.replace(4, 4, word(OpcUa_UInt32(bytes.size())));
        }) << OpcUa_BadDecodingError;
    }
    const auto changedAt = [](qsizetype offset) {
        return sending([offset](QByteArray bytes) {
            bytes[offset] = char(bytes[offset] + 1);
            return bytes;
        });
    };
    QTest::newRow("other channel") << changedAt(8) << OpcUa_BadTcpSecureChannelUnknown;
    QTest::newRow("other token") << changedAt(12) << OpcUa_BadSecureChannelTokenUnknown;
    QTest::newRow("other sequence number") << changedAt(16) << OpcUa_BadSequenceNumberInvalid;
    QTest::newRow("other request id") << changedAt(20) << OpcUa_BadUnknownResponse;
    QTest::newRow("other message type")
        << sending([](QByteArray bytes) { return bytes.replace(0, 3, "CLO"); })
        << OpcUa_BadTcpMessageTypeInvalid;
    QTest::newRow("other request handle") << changedAt(24 + 4 + 8) << OpcUa_BadUnknownResponse;
    QTest::newRow("answer to another request") << answering([](const Message& request) {
        FindServersResponse response;
        response.header.requestHandle = ServerPeer::requestHandle(request);
        return encodeMessage(response);
    }) << OpcUa_BadUnknownResponse;
    QTest::newRow("the request itself")
        << answering([](const Message& request) { return request.body; })
        << OpcUa_BadUnknownResponse;
    QTest::newRow("answer of no type")
        << answering([](const Message&) { return QByteArray(); }) << OpcUa_BadUnknownResponse;
    QTest::newRow("Acknowledge as the answer") << HostileServer::Script([](ServerPeer& peer) {
        if (peer.takeRequest()) {
            peer.send(encodeConnectionMessage(MessageType::Acknowledge, Acknowledge()));
            peer.stall();
        }
    }) << OpcUa_BadTcpMessageTypeInvalid;
    QTest::newRow("another channel opened") << HostileServer::Script([](ServerPeer& peer) {
        if (!peer.acknowledge())
            return;
        if (const auto request = peer.receive()) {
            OpenSecureChannelResponse response;
            response.securityToken.channelId = 18;
            peer.writer.channelId = 17;
            peer.answer(*request, response);
            peer.stall();
        }
    }) << OpcUa_BadTcpSecureChannelUnknown;

    for (const OpcUa_Int32 count : {-2, INT32_MIN, INT32_MAX, 0x1000000}) {
        QTest::addRow("%d endpoints", count) << answering([count](const Message& request) {
            return answerHead(request) + word(OpcUa_UInt32(count)) + QByteArray(100000, '\0');
        }) << OpcUa_BadDecodingError;
        QTest::addRow("URL of %d bytes", count) << answering([count](const Message& request) {
            return answerHead(request) + word(1) + word(OpcUa_UInt32(count)) +
                   QByteArray(100000, '\0');
        }) << OpcUa_BadDecodingError;
    }
    QTest::newRow("many empty endpoints") << answering([](const Message& request) {
        QByteArray endpoint;
        BinaryEncoder{endpoint}(OpcUa_EndpointDescription{});
        return answerHead(request) + word(300000) + endpoint.repeated(300000);
    }) << OpcUa_BadEncodingLimitsExceeded;
    // What takes most memory for its bytes: texts of one byte each.
    QTest::newRow("many short texts") << answering([](const Message& request) {
        QByteArray endpoint;
        OpcUa_EndpointDescription empty = {};
        BinaryEncoder{endpoint}(empty);
        const qsizetype discoveryUrls = 4 + 4 + 4 + 1 + 4 + 4 + 4;
        QByteArray texts = word(60000) + QByteArray("\1\0\0\0x", 5).repeated(60000);
        endpoint.replace(discoveryUrls, 4, texts);
        return answerHead(request) + word(50) + endpoint.repeated(50);
    }) << OpcUa_BadEncodingLimitsExceeded;
    QTest::newRow("long texts") << answering([](const Message& request) {
        const QByteArray text(1 << 20, 'x');
        return answerHead(request) + word(100) + (word(1 << 20) + text).repeated(15);
    }) << OpcUa_BadDecodingError;
    QTest::newRow("deep diagnostics") << answering([](const Message& request) {
        QByteArray body = answerHead(request).first(4 + 8 + 4 + 4);
        return body + QByteArray(15 << 20, '\x40');
    }) << OpcUa_BadEncodingLimitsExceeded;
}

void TestUaDiscovery::hostileServer()
{
    QFETCH(HostileServer::Script, script);
    QFETCH(OpcUa_StatusCode, status);
    HostileServer server(script);
    // Megabytes take a while on a slow machine, and are to end by what is wrong with them.
    const int callTimeout = status == OpcUa_BadTimeout || status == anyBad ? timeout : 20 * timeout;

    Outcome outcome;
    const bool measured = memoryIsMeasurable && memoryGrowth.start();
    onThread([&] { outcome = getEndpoints(server.url(), callTimeout); });
    const long growth = memoryGrowth.value();

    if (status == anyBad)
        QVERIFY2(outcome.status.isBad(), name(outcome.status));
    else
        QCOMPARE(name(outcome.status), name(status));
    QCOMPARE(outcome.count, 0u);
    QVERIFY2(outcome.elapsed <= callTimeout + grace, QByteArray::number(outcome.elapsed));
    if (outcome.elapsed - callTimeout > m_latest) {
        m_latest = outcome.elapsed - callTimeout;
        m_latestName = QTest::currentDataTag();
    }
    if (measured) {
        QVERIFY2(growth < memoryBound, QByteArray::number(qlonglong(growth)));
        if (growth > m_largest) {
            m_largest = growth;
            m_largestName = QTest::currentDataTag();
        }
    }
}

// The queue of connections that wait is full: the system leaves the next one without an answer.
void TestUaDiscovery::connectThatNeverEnds()
{
    QTcpServer server;
    server.setListenBacklogSize(0);
    QVERIFY(server.listen(QHostAddress::LocalHost));
    server.pauseAccepting();
    std::vector<std::unique_ptr<QTcpSocket>> fillers;
    bool full = false;
    while (!full && fillers.size() < 20) {
        fillers.push_back(std::make_unique<QTcpSocket>());
        fillers.back()->connectToHost(QHostAddress::LocalHost, server.serverPort());
        full = !fillers.back()->waitForConnected(100);
    }
    if (!full)
        QSKIP("the system takes every connection");
    Outcome outcome;
    onThread([&] {
        outcome = getEndpoints("opc.tcp://127.0.0.1:" + QByteArray::number(server.serverPort()));
    });
    QCOMPARE(name(outcome.status), "BadTimeout");
    QVERIFY2(outcome.elapsed <= timeout + grace, QByteArray::number(outcome.elapsed));
}

void TestUaDiscovery::noServer()
{
    quint16 port = 0;
    {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        port = server.serverPort();
    }
    const QByteArray suffix = ':' + QByteArray::number(port);
    QCOMPARE(name(getEndpoints("opc.tcp://127.0.0.1" + suffix, 5000).status),
             "BadConnectionRejected");
    QCOMPARE(name(getEndpoints("opc.tcp://localhost" + suffix, 5000).status),
             "BadConnectionRejected");
    // A name that is reserved for having no address (RFC 6761).
    Outcome outcome;
    onThread([&] { outcome = getEndpoints("opc.tcp://plant.invalid" + suffix, 5000); });
    QCOMPARE(name(outcome.status), "BadCommunicationError");
    QCOMPARE(outcome.count, 0u);
}

void TestUaDiscovery::badArguments()
{
    QCOMPARE(name(getEndpoints("").status), "BadTcpEndpointUrlInvalid");
    QCOMPARE(name(getEndpoints("http://127.0.0.1/").status), "BadTcpEndpointUrlInvalid");
    for (int badTimeout : {0, -1, INT32_MIN})
        QCOMPARE(name(getEndpoints("opc.tcp://127.0.0.1", badTimeout).status),
                 "BadInvalidArgument");
}

void TestUaDiscovery::interruption()
{
    for (const Stage& stage : stages) {
        OneTimeEvent reached;
        HostileServer server([&](ServerPeer& peer) {
            if (stage.reach(peer)) {
                reached.happen();
                peer.stall();
            }
        });
        Outcome outcome;
        const std::unique_ptr<QThread> thread(
            QThread::create([&] { outcome = getEndpoints(server.url(), 60000); }));
        thread->start();
        QVERIFY(reached.waitFor(std::chrono::seconds(10)));
        QElapsedTimer timer;
        timer.start();
        thread->requestInterruption();
        QVERIFY(thread->wait(10000));
        QVERIFY2(timer.elapsed() <= grace, QByteArray::number(timer.elapsed()));
        QCOMPARE(name(outcome.status), "BadShutdown");
    }
}

void TestUaDiscovery::cleanupTestCase()
{
    qInfo("latest end: %lld ms after the time-out (%s)", m_latest, m_latestName.constData());
    if (memoryIsMeasurable)
        qInfo("largest growth of memory: %ld KiB (%s)", m_largest, m_largestName.constData());
}

QTEST_GUILESS_MAIN(TestUaDiscovery)
#include "tst_uadiscovery.moc"

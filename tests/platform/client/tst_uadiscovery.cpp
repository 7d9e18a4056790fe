#include "platform/client/uadiscovery.h"
#include "platform/stack/opcuastatuscodes.h"
#include "platform/wire/samples.h"
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
    void limitsOfTheServer_data();
    void limitsOfTheServer();
    void hostileServer_data();
    void hostileServer();
    void connectThatNeverEnds();
    void badUrls_data();
    void badUrls();
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
    HostileServer server([&](ServerPeer& peer) {
        const auto request = peer.takeRequest();
        if (!request)
            return;
        QByteArrayView body = request->body;
        const OpcUa_UInt32 type = takeTypeId(body);
        if (type == GetEndpointsRequest::encodingId) {
            GetEndpointsRequest decoded;
            decodeFields(body, decoded);
            const OpcUa_UInt32 hint = decoded.header.timeoutHint;
            GetEndpointsResponse response = goodAnswer(3);
            if (decoded.endpointUrl.bytes() == server.url() && hint > 0 && hint <= 5000)
                peer.answer(*request, response);
        } else if (type == FindServersRequest::encodingId) {
            FindServersRequest decoded;
            decodeFields(body, decoded);
            FindServersResponse response;
            response.servers = Samples::array<OpcUa_ApplicationDescription>(2);
            if (decoded.endpointUrl.bytes() == server.url())
                peer.answer(*request, response);
        } else if (type == FindServersOnNetworkRequest::encodingId) {
            FindServersOnNetworkRequest decoded;
            decodeFields(body, decoded);
            FindServersOnNetworkResponse response;
            response.servers = Samples::array<OpcUa_ServerOnNetwork>(1);
            if (decoded.startingRecordId == 0 && decoded.maxRecordsToReturn == 0)
                peer.answer(*request, response);
        }
        const auto close = peer.receive();
        if (close && close->type == MessageType::CloseSecureChannel &&
            close->channelId == peer.writer.channelId && close->tokenId == peer.writer.tokenId)
            closed.release();
    });
    ServiceSettings settings;
    settings.callTimeout = 5000;
    const UaString url(" \t" + server.url() + "\r\n"); // blanks are not sent
    const auto test = [&] {
        UaDiscovery discovery;
        const auto sample = Samples::array<OpcUa_EndpointDescription>(1);
        UaStackTypeArray<OpcUa_EndpointDescription> endpoints;
        QCOMPARE(name(discovery.getEndpoints(settings, url, {}, endpoints)), "Good");
        QCOMPARE(endpoints.length(), 3u);
        QVERIFY(OpcUa_EndpointDescription_Equal(&endpoints[2], &sample[0]));
        UaStackTypeArray<OpcUa_ApplicationDescription> servers;
        QCOMPARE(name(discovery.findServers(settings, url, {}, servers)), "Good");
        QCOMPARE(servers.length(), 2u);
        QVERIFY(OpcUa_ApplicationDescription_Equal(&servers[1], &sample[0].Server));
        UaStackTypeArray<OpcUa_ServerOnNetwork> onNetwork;
        QCOMPARE(name(discovery.findServersOnNetwork(settings, url, {}, onNetwork)), "Good");
        QCOMPARE(onNetwork.length(), 1u);
        QCOMPARE(onNetwork[0].RecordId, 0xfffffffeu);
        QVERIFY(closed.tryAcquire(3, 5000));
    };
    test(); // on the main thread
    onThread(test);
}

void TestUaDiscovery::limitsOfTheServer_data()
{
    QTest::addColumn<OpcUa_UInt32>("receive");
    QTest::addColumn<OpcUa_UInt32>("send");
    QTest::addColumn<OpcUa_UInt32>("maxMessageSize");
    QTest::addColumn<QByteArray>("status");
    const auto row = [](const char* name, OpcUa_UInt32 receive, OpcUa_UInt32 send,
                        OpcUa_UInt32 maxMessageSize, const char* status) {
        QTest::newRow(name) << receive << send << maxMessageSize << QByteArray(status);
    };
    row("smallest", 8192, 8192, 0, "Good");
    row("more than asked for", 0xffffffff, 0xffffffff, 0, "Good");
    row("receives too little", 8191, 65536, 0, "BadCommunicationError");
    row("sends too little", 65536, 8191, 0, "BadCommunicationError");
    row("small messages", 8192, 8192, 4000, "BadRequestTooLarge");
}

// The answer does not fit into one of the smallest chunks. Nobody takes note of the channel's end.
void TestUaDiscovery::limitsOfTheServer()
{
    QFETCH(OpcUa_UInt32, receive);
    QFETCH(OpcUa_UInt32, send);
    QFETCH(OpcUa_UInt32, maxMessageSize);
    QFETCH(QByteArray, status);
    QByteArray expectedUrl;
    HostileServer server([&](ServerPeer& peer) {
        if (!peer.receive())
            return;
        peer.send(encodeConnectionMessage(MessageType::Acknowledge,
                                          Acknowledge{0, receive, send, maxMessageSize, 0}));
        if (!peer.openChannel())
            return;
        if (const auto request = peer.receive()) {
            QByteArrayView body = request->body;
            takeTypeId(body);
            GetEndpointsRequest decoded;
            decodeFields(body, decoded);
            if (decoded.endpointUrl.bytes() != expectedUrl)
                return;
            GetEndpointsResponse response = goodAnswer(1000);
            peer.writer.chunkSize = 8192;
            peer.answer(*request, response);
            peer.stall();
        }
    });
    expectedUrl = server.url() + '/' + QByteArray(4000, 'x');
    const Outcome outcome = getEndpoints(expectedUrl, 5000);
    QCOMPARE(name(outcome.status), status);
    QCOMPARE(outcome.count, status == "Good" ? 1000u : 0u);
    QVERIFY2(outcome.elapsed <= 5000 + grace, QByteArray::number(outcome.elapsed));
}

void TestUaDiscovery::hostileServer_data()
{
    QTest::addColumn<HostileServer::Script>("script");
    QTest::addColumn<OpcUa_StatusCode>("status");
    QTest::addColumn<OpcUa_UInt32>("count");

    const auto row = [](const QByteArray& name, OpcUa_StatusCode status,
                        HostileServer::Script script, OpcUa_UInt32 count = 0) {
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
    QRandomGenerator random(4840);
    QByteArray garbage(100000, '\0');
    std::generate(garbage.begin(), garbage.end(), [&] { return char(random.generate()); });
    for (const Stage& stage : stages) {
        const QByteArray after = QByteArray(" after ") + stage.name;
        row("silent" + after, OpcUa_BadTimeout, sends(stage, {}));
        row("closes" + after, OpcUa_BadConnectionClosed,
            [reach = stage.reach](ServerPeer& peer) { reach(peer); });
        row("garbage" + after, anyBad, sends(stage, garbage));
        row("HTTP" + after, anyBad,
            sends(stage, "HTTP/1.1 400 Bad Request\r\nConnection: close\r\n\r\n"));
    }
    const auto error = [sends](size_t stage, OpcUa_StatusCode code) {
        return sends(stages[stage],
                     encodeConnectionMessage(MessageType::Error, Error{code, UaString("no")}));
    };
    row("Error for Hello", 0x807d0000u, error(1, 0x807d0000u));
    row("Error for the channel", 0x80550000u, error(3, 0x80550000u));
    row("Error for the request", 0x80860000u, error(4, 0x80860000u));
    row("good Error", OpcUa_BadUnexpectedError, error(4, 0));
    row("uncertain Error", 0x40920000u, error(4, 0x40920000u));
    const auto result = [](auto answer, OpcUa_StatusCode code) {
        return answering([answer, code](const Message& request) {
            auto response = answer();
            response.header.requestHandle = ServerPeer::requestHandle(request);
            response.header.serviceResult = code;
            return encodeMessage(response);
        });
    };
    const auto fault = [] { return ServiceFault(); };
    const auto answer = [] { return goodAnswer(); };
    row("fault", 0x800b0000u, result(fault, 0x800b0000u));
    row("unknown fault", 0x8abc0000u, result(fault, 0x8abc0000u));
    row("good fault", OpcUa_BadUnexpectedError, result(fault, 0));
    row("bad result", 0x80100000u, result(answer, 0x80100000u));
    row("uncertain result", 0x40a40000u, result(answer, 0x40a40000u), 2);
    row("uncertain fault", 0x40920000u, result(fault, 0x40920000u));
    row("channel refused", 0x80540000u, [](ServerPeer& peer) {
        const auto request = peer.acknowledge() ? peer.receive() : std::nullopt;
        ServiceFault fault;
        fault.header.serviceResult = 0x80540000u;
        if (request)
            peer.answer(*request, fault);
    });
    row("aborted answer", 0x80b90000u, [](ServerPeer& peer) {
        if (const auto request = peer.takeRequest()) {
            GetEndpointsResponse response = goodAnswer(100);
            // The first chunk becomes an intermediate one.
            peer.send(peer.chunksOf(*request, response).replace(3, 1, "C"));
            QByteArray rest = word(17) + word(4711) + word(3) + word(request->requestId);
            BinaryEncoder{rest}(Error{0x80b90000u, UaString("too large")});
            peer.send(encodeChunk(MessageType::Message, 'A', rest));
            peer.stall();
        }
    });
    row("a byte a second", OpcUa_BadTimeout, [](ServerPeer& peer) {
        peer.receive();
        peer.sendSlowly(encodeConnectionMessage(MessageType::Acknowledge, Acknowledge()),
                        std::chrono::seconds(1));
    });
    row("an answer in drops", OpcUa_BadTimeout, [](ServerPeer& peer) {
        if (const auto request = peer.takeRequest()) {
            GetEndpointsResponse response = goodAnswer();
            peer.sendSlowly(peer.chunksOf(*request, response), std::chrono::milliseconds(10));
        }
    });
    for (const int size : {0, 65512}) {
        row("endless chunks of " + QByteArray::number(size) + " bytes", OpcUa_BadResponseTooLarge,
            [size](ServerPeer& peer) {
                const auto request = peer.takeRequest();
                for (OpcUa_UInt32 sequence = 2; request && peer.goesOn(); ++sequence)
                    peer.send(encodeChunk(MessageType::Message, 'C',
                                          word(17) + word(4711) + word(sequence) +
                                              word(request->requestId) + QByteArray(size, 'x')));
            });
    }
    row("endless stream", OpcUa_BadTcpMessageTypeInvalid, [](ServerPeer& peer) {
        while (peer.goesOn())
            peer.send(QByteArray(1 << 20, '\0'));
    });
    for (const OpcUa_UInt32 size : {0u, 7u, 23u, 0x7fffffffu, 0x80000000u, 0xffffffffu}) {
        const auto status = size < 0x10000 ? OpcUa_BadDecodingError : OpcUa_BadTcpMessageTooLarge;
        const auto resize = [size](QByteArray bytes) { return bytes.replace(4, 4, word(size)); };
        const QByteArray acknowledge =
            encodeConnectionMessage(MessageType::Acknowledge, Acknowledge());
        row("answer of size " + QByteArray::number(size), status, sending(resize));
        row("Acknowledge of size " + QByteArray::number(size), status,
            sends(stages[1], resize(acknowledge)));
    }
    for (const int cut : {1, 4, 10, 300})
        row("answer without its last bytes: " + QByteArray::number(cut), OpcUa_BadDecodingError,
            sending([cut](QByteArray bytes) {
                bytes.chop(cut);
                return bytes.replace(4, 4, word(OpcUa_UInt32(bytes.size())));
            }));
    const auto changedAt = [](qsizetype offset) {
        return sending([offset](QByteArray bytes) {
            bytes[offset] = char(bytes[offset] + 1);
            return bytes;
        });
    };
    row("other channel", OpcUa_BadTcpSecureChannelUnknown, changedAt(8));
    row("other token", OpcUa_BadSecureChannelTokenUnknown, changedAt(12));
    row("other sequence number", OpcUa_BadSequenceNumberInvalid, changedAt(16));
    row("other request id", OpcUa_BadUnknownResponse, changedAt(20));
    row("other message type", OpcUa_BadTcpMessageTypeInvalid,
        sending([](QByteArray bytes) { return bytes.replace(0, 3, "CLO"); }));
    row("other request handle", OpcUa_BadUnknownResponse, changedAt(24 + 4 + 8));
    row("answer to another request", OpcUa_BadUnknownResponse,
        result([] { return FindServersResponse(); }, OpcUa_Good));
    row("the request itself", OpcUa_BadUnknownResponse,
        answering([](const Message& request) { return request.body; }));
    row("answer of no type", OpcUa_BadUnknownResponse,
        answering([](const Message&) { return QByteArray(); }));
    row("Acknowledge as the answer", OpcUa_BadTcpMessageTypeInvalid,
        sends(stages[4], encodeConnectionMessage(MessageType::Acknowledge, Acknowledge())));
    row("another channel opened", OpcUa_BadTcpSecureChannelUnknown, [](ServerPeer& peer) {
        if (!peer.acknowledge())
            return;
        if (const auto request = peer.receive()) {
            OpenSecureChannelResponse response;
            response.securityToken.channelId = 18;
            peer.writer.channelId = 17;
            peer.answer(*request, response);
            peer.stall();
        }
    });

    const auto endpoints = [](OpcUa_UInt32 count, const std::function<QByteArray()>& rest) {
        return answering([count, rest](const Message& request) {
            return answerHead(request) + word(count) + rest();
        });
    };
    const auto zeros = [] { return QByteArray(100000, '\0'); };
    for (const OpcUa_Int32 count : {-2, INT32_MIN, INT32_MAX, 0x1000000}) {
        const QByteArray number = QByteArray::number(count);
        row(number + " endpoints", OpcUa_BadDecodingError, endpoints(OpcUa_UInt32(count), zeros));
        row("URL of " + number + " bytes", OpcUa_BadDecodingError,
            endpoints(1, [=] { return word(OpcUa_UInt32(count)) + zeros(); }));
    }
    const QByteArray empty = [] {
        QByteArray endpoint;
        BinaryEncoder{endpoint}(OpcUa_EndpointDescription{});
        return endpoint;
    }();
    row("many empty endpoints", OpcUa_BadEncodingLimitsExceeded,
        endpoints(300000, [=] { return empty.repeated(300000); }));
    // What takes most memory for its bytes: texts of one byte each.
    row("many short texts", OpcUa_BadEncodingLimitsExceeded, endpoints(50, [=] {
            const qsizetype discoveryUrls = 4 + 4 + 4 + 1 + 4 + 4 + 4;
            const QByteArray texts = word(60000) + QByteArray("\1\0\0\0x", 5).repeated(60000);
            return QByteArray(empty).replace(discoveryUrls, 4, texts).repeated(50);
        }));
    row("long texts", OpcUa_BadDecodingError,
        endpoints(100, [] { return (word(1 << 20) + QByteArray(1 << 20, 'x')).repeated(15); }));
    row("deep diagnostics", OpcUa_BadEncodingLimitsExceeded, answering([](const Message& request) {
            return answerHead(request).first(4 + 8 + 4 + 4) + QByteArray(15 << 20, '\x40');
        }));
}

void TestUaDiscovery::hostileServer()
{
    QFETCH(HostileServer::Script, script);
    QFETCH(OpcUa_StatusCode, status);
    QFETCH(OpcUa_UInt32, count);
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
    QCOMPARE(outcome.count, count);
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

void TestUaDiscovery::badUrls_data()
{
    QTest::addColumn<QByteArray>("url");
    QTest::addColumn<int>("timeout");
    QTest::addColumn<QByteArray>("status");
    const auto row = [](const QByteArray& url, int timeout, const char* status) {
        QTest::addRow("%s, %d ms", url.constData(), timeout)
            << url << timeout << QByteArray(status);
    };
    // No one may listen on this port; the name is reserved for having no address (RFC 6761).
    row("opc.tcp://127.0.0.1:1", 5000, "BadConnectionRejected");
    row("opc.tcp://localhost:1", 5000, "BadConnectionRejected");
    row("opc.tcp://plant.invalid:1", 5000, "BadCommunicationError");
    row(" \topc.tcp://127.0.0.1:1\r\n ", 5000, "BadConnectionRejected");
    row("", timeout, "BadTcpEndpointUrlInvalid");
    row("http://127.0.0.1/", timeout, "BadTcpEndpointUrlInvalid");
    for (int badTimeout : {0, -1, INT32_MIN})
        row("opc.tcp://127.0.0.1", badTimeout, "BadInvalidArgument");
}

void TestUaDiscovery::badUrls()
{
    QFETCH(QByteArray, url);
    QFETCH(int, timeout);
    QFETCH(QByteArray, status);
    Outcome outcome;
    onThread([&] { outcome = getEndpoints(url, timeout); });
    QCOMPARE(name(outcome.status), status);
    QCOMPARE(outcome.count, 0u);
}

void TestUaDiscovery::interruption()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    Outcome outcome;
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        QThread::currentThread()->requestInterruption();
        outcome = getEndpoints("opc.tcp://127.0.0.1:" + QByteArray::number(server.serverPort()));
    }));
    thread->start();
    QVERIFY(thread->wait(10000));
    QCOMPARE(name(outcome.status), "BadShutdown");
    QVERIFY(!server.waitForNewConnection(100));
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

// What a session costs: decoding over the memcpy of the same bytes, and the services beside
// node-opcua's client, on the same server.

#include "benchmarks/figure.h"
#include "benchmarks/gapwatch.h"
#include "platform/types/uavariant.h"
#include "platform/wire/binarycodec_p.h"
#include "session/sessionuser.h"

#include <cstdlib>
#include <cstring>
#include <map>

using namespace UaWire;

namespace {

constexpr int runs = 51;
constexpr int processes = 3;

double copyMilliseconds(const QByteArray& bytes)
{
    void* block = nullptr;
    const double time = milliseconds([&] {
        block = std::malloc(size_t(bytes.size()));
        std::memcpy(block, bytes.constData(), size_t(bytes.size()));
        __asm__ volatile("" : : "r"(block) : "memory"); // is not left out
    });
    std::free(block);
    return time;
}

template <class T>
double ratio(const QByteArray& bytes)
{
    const auto [decode, copy] = medians(
        runs,
        [&] {
            T value; // freed outside the measure
            return milliseconds([&] {
                BinaryDecoder decoder(bytes);
                decoder(value);
                if (OpcUa_IsNotGood(decoder.status()))
                    std::abort();
            });
        },
        [&] { return copyMilliseconds(bytes); });
    return decode / copy;
}

void reportDecoding(Figures& figures)
{
    QByteArray bytes;
    BinaryEncoder encoder(bytes);
    constexpr OpcUa_Int32 numbers = 1'000'000;
    encoder(OpcUa_Byte(0x80 | OpcUaType_Int32));
    encoder(numbers);
    for (OpcUa_Int32 i = 0; i < numbers; ++i)
        encoder(i);
    figures.report("decode-1M-Int32", ratio<UaVariant>(bytes), 2);

    bytes.clear();
    constexpr OpcUa_Int32 values = 100'000;
    encoder(values);
    for (OpcUa_Int32 i = 0; i < values; ++i) {
        OpcUa_DataValue value = {};
        value.Value.Datatype = OpcUaType_Double;
        value.Value.Value.Double = i;
        value.SourceTimestamp = value.ServerTimestamp = 133'000'000'000'000'000 + i;
        encoder(value);
    }
    figures.report("decode-100k-DataValue", ratio<UaStackTypeArray<OpcUa_DataValue>>(bytes), 6);
}

// --- Services ------------------------------------------------------------------------------------

struct Way
{
    const char* name;
    const char* policy;
    int mode;
    const char* modeName;
};
constexpr Way open = {"none", "None", 1, "None"};
constexpr Way encrypted = {"encrypted", "Basic256Sha256", 3, "SignAndEncrypt"};

[[noreturn]] void fail(const QString& what)
{
    std::fprintf(stderr, "session: %s\n", qPrintable(what));
    std::exit(2);
}

UaNodeId nodeOf(const char* name, int number)
{
    return UaNodeId(UaString(name + QByteArray::number(number)), 1);
}

class Services
{
public:
    Services(const QString& url, const SessionUser& user) : m_url(url), m_options(user.options)
    {
        for (int i = 0; i < 1000; ++i)
            m_tags.append({nodeOf("Tag", i), QvelAttribute::Value, {}, {}});
        m_options.keepAliveInterval = 60'000; // no part of what is measured
    }

    void connectTo(const Way& way)
    {
        QvelDiscoverySetting setting;
        setting.setEndpointUrl(m_url);
        setting.setSecurityPolicy(QStringLiteral("http://opcfoundation.org/UA/SecurityPolicy#") +
                                  way.policy);
        setting.setMessageSecurityMode(OpcUa_MessageSecurityMode(way.mode));
        m_session = std::make_unique<QvelSession>(m_options);
        const QvelSessionError error = connectSession(*m_session, setting);
        if (m_session->state() != QvelSession::Connected)
            fail(error.toString());
    }
    void close()
    {
        m_session->disconnectFromServer();
        while (m_session->state() != QvelSession::Disconnected)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    void read()
    {
        const QvelReadResult result = resultOf(m_session->read(m_tags));
        if (result.values.size() != 1000 || result.values[999].value().toDouble() != 999)
            fail("wrong values");
    }
    // A call for each value: all asked for at once, or each when the one before is there.
    void readEach()
    {
        QEventLoop loop;
        qsizetype missing = m_tags.size();
        for (int i = 0; i < m_tags.size(); ++i)
            readOne(i, loop, [&] {
                if (--missing == 0)
                    loop.quit();
            });
        loop.exec();
    }
    void readOneByOne()
    {
        QEventLoop loop;
        readFrom(0, loop);
        loop.exec();
    }
    void browse()
    {
        const QvelBrowseResult result =
            resultOf(m_session->browse({{UaNodeId(UaString("Many"), 1)}}));
        if (result.results.value(0).references.size() != 10'000)
            fail("wrong children");
    }
    void connectAndRead(const Way& way)
    {
        connectTo(way);
        if (resultOf(m_session->read({m_tags[7]})).values.value(0).value().toDouble() != 7)
            fail("a wrong value");
        close();
    }

    // The processor's milliseconds for some seconds of 10,000 values each.
    double watch(int seconds)
    {
        QvelSubscriptionParameters parameters;
        parameters.publishingInterval = 100;
        const std::unique_ptr<QvelSubscription> subscription(
            m_session->createSubscription(parameters));
        QList<QvelMonitoredItem> items(1000);
        for (int i = 0; i < items.size(); ++i) {
            items[i].nodeId = nodeOf("Item", i);
            items[i].samplingInterval = 0;
            items[i].queueSize = 10;
        }
        subscription->addItems(items);
        qsizetype count = 0;
        double last = 0;
        QObject::connect(subscription.get(), &QvelSubscription::dataChanged, subscription.get(),
                         [&](const QList<QvelDataChange>& changes) {
                             count += changes.size();
                             for (const QvelDataChange& change : changes)
                                 last = change.value.value().toDouble();
                         });
        runEvents(2000);
        count = 0;
        const double cpu = cpuMilliseconds([&] { runEvents(seconds * 1000); });
        if (count < seconds * 9000 || last == 0)
            fail(QStringLiteral("%1 values").arg(count));
        return cpu;
    }

    // The processor's milliseconds for rounds of some work, after one to warm up.
    double work(const Way& way, const QString& scenario, int rounds)
    {
        if (scenario != QLatin1String("connect"))
            connectTo(way);
        if (scenario == QLatin1String("watch"))
            return watch(rounds);
        const std::map<QString, std::function<void()>> scenarios = {
            {"read", [this] { read(); }},
            {"browse", [this] { browse(); }},
            {"one", [this] { readEach(); }},
            {"sequence", [this] { readOneByOne(); }},
            {"connect", [&] { connectAndRead(way); }},
        };
        const std::function<void()>& once = scenarios.at(scenario);
        once();
        return cpuMilliseconds([&] {
            for (int i = 0; i < rounds; ++i)
                once();
        });
    }

    // Bytes above those in use before, for each byte of an array of 64 MB.
    double peak()
    {
        connectTo(open);
        const double before = memory("VmRSS:");
        const QvelReadResult result = resultOf(
            m_session->read({{UaNodeId(UaString("Huge"), 1), QvelAttribute::Value, {}, {}}}));
        constexpr OpcUa_Int32 count = 8'000'000;
        if (result.values.value(0).value().arraySize() != count)
            fail("a wrong array: " + result.values.value(0).status().toString().toQString());
        return (memory("VmHWM:") - before) * 1024 / (count * sizeof(double));
    }

private:
    template <class Done>
    void readOne(int i, QObject& context, Done done)
    {
        m_session->read({m_tags[i]}).then(&context, [i, done](const QvelReadResult& result) {
            if (result.values.value(0).value().toDouble() != i)
                fail("a wrong value");
            done();
        });
    }
    void readFrom(int i, QEventLoop& loop)
    {
        if (i == m_tags.size())
            return loop.quit();
        readOne(i, loop, [this, i, &loop] { readFrom(i + 1, loop); });
    }
    // Kilobytes of this process.
    static double memory(const char* key)
    {
        QFile status(QStringLiteral("/proc/self/status"));
        if (status.open(QIODevice::ReadOnly))
            for (const QByteArray& line : status.readAll().split('\n'))
                if (line.startsWith(key))
                    return line.mid(qsizetype(std::strlen(key)))
                        .simplified()
                        .split(' ')
                        .first()
                        .toDouble();
        fail("the memory in use is not known");
    }

    const QString m_url;
    QvelSessionOptions m_options;
    QList<QvelReadItem> m_tags;
    std::unique_ptr<QvelSession> m_session;
};

struct Scenario
{
    const char* name;
    const char* figure;
    double bound;
    int rounds; // seconds of "watch"
};
constexpr Scenario scenarios[] = {
    {"read", "read-1000", 0.05, 100},          {"browse", "browse-10000", 0.3, 5},
    {"one", "one-value-a-call", 0.1, 3},       {"sequence", "one-value-after-another", 0.3, 3},
    {"watch", "watch-10000-a-second", 0.2, 5}, {"connect", "connect-and-read", 0.3, 10},
};

// What a process prints as {"cpu": milliseconds}.
double millisecondsOf(const QString& program, const QStringList& arguments)
{
    QProcess client;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("PEERS", PEERS);
    client.setProcessEnvironment(environment);
    client.start(program, arguments);
    client.waitForFinished(-1);
    const double cpu = QJsonDocument::fromJson(client.readAllStandardOutput())["cpu"].toDouble();
    if (cpu <= 0)
        fail(program + " failed: " + client.readAllStandardError());
    return cpu;
}

// One round of ours over one of node-opcua's client, each in a process of its own, in turn: what a
// process takes differs by half from one to the next.
void report(Figures& figures, const QString& self, const QString& url, const Way& way,
            const Scenario& scenario)
{
    const QString rounds = QString::number(scenario.rounds);
    const auto [ours, nodes] = medians(
        processes,
        [&] {
            return millisecondsOf(self, {"--work", url, way.name, scenario.name, rounds});
        },
        [&] {
            return millisecondsOf(
                NODE, {NODE_CLIENT, url, way.policy, way.modeName, scenario.name, rounds});
        });
    std::fprintf(stderr, "# %s-%s: %.2f ms, node-opcua %.2f ms\n", scenario.figure, way.name,
                 ours / scenario.rounds, nodes / scenario.rounds);
    figures.report(qPrintable(QStringLiteral("%1-%2").arg(scenario.figure, way.name)), ours / nodes,
                   scenario.bound);
}

// The client's side of a scenario: URL WAY SCENARIO ROUNDS.
int measureWork(const QStringList& arguments)
{
    const SessionUser user;
    const Way& way = arguments.value(1) == QLatin1String(open.name) ? open : encrypted;
    Services services(arguments.value(0), user);
    std::printf("{\"cpu\": %.3f}\n",
                services.work(way, arguments.value(2), arguments.value(3).toInt()));
    return 0;
}

void reportServices(Figures& figures, const QString& self)
{
    const SessionUser user;
    PeerProcess server;
    const QString url = server.start(NODE, {"--security-revert=CVE-2023-46809",
                                            PEERS "/sessionserver.mjs", "--operations=1000"});
    if (url.isEmpty())
        fail("the server does not come up");
    for (const Way& way : {open, encrypted})
        for (const Scenario& scenario : scenarios)
            report(figures, self, url, way, scenario);

    double gap = 0;
    for (const Way& way : {open, encrypted}) {
        Services services(url, user);
        GapWatch watch;
        services.connectTo(way);
        for (int i = 0; i < 10; ++i)
            services.read();
        services.browse();
        services.watch(3);
        services.close();
        gap = std::max(gap, watch.longest());
    }
    figures.report("event-loop-gap", gap, 16, " ms");
    server.stop();

    // Above what a process of its own takes before.
    QProcess process;
    process.start(self, {"--peak"});
    process.waitForFinished(-1);
    const double peak = process.readAllStandardOutput().toDouble();
    if (peak <= 0)
        fail("the peak: " + process.readAllStandardError());
    figures.report("peak-64MB-array", peak, 3.2);
}

int measurePeak()
{
    const SessionUser user;
    PeerProcess server;
    const QString url =
        server.start(NODE, {PEERS "/sessionserver.mjs", "--huge", "--children=0", "--items=0"});
    if (url.isEmpty())
        fail("the server does not come up");
    std::printf("%.2f\n", Services(url, user).peak());
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    if (app.arguments().value(1) == QLatin1String("--peak"))
        return measurePeak();
    if (app.arguments().value(1) == QLatin1String("--work"))
        return measureWork(app.arguments().mid(2));
    Figures figures("session");
    reportDecoding(figures);
    reportServices(figures, app.applicationFilePath());
    return figures.result();
}

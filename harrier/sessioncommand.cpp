#include "sessioncommand.h"

#include "certificatestore.h"
#include "discovercommand.h"
#include "english.h"
#include "valuejson.h"

#include <Kestrel/OpcUaStatusCodes>
#include <Kestrel/QvelSession>

#include <QtCore/QCoreApplication>
#include <QtCore/QEventLoop>
#include <QtCore/QFile>
#include <QtCore/QFileDevice>
#include <QtCore/QFutureWatcher>
#include <QtCore/QMap>
#include <QtCore/QTimer>

#include <algorithm>
#include <csignal>
#include <memory>

namespace {

constexpr OpcUa_StatusCode badNoMatch = 0x806f0000u;
constexpr OpcUa_StatusCode badTooManyArguments = 0x80e50000u;
constexpr OpcUa_UInt32 baseDataType = 24;
constexpr OpcUa_Int32 anyRank = -2;

volatile std::sig_atomic_t interruption = 0;

// Once; the second time ends the program.
void interrupt(int number)
{
    interruption = 1;
    std::signal(number, SIG_DFL);
}

void wipe(QString& text)
{
    text.fill(QChar(0));
    text.clear();
}

const char* nodeClassName(OpcUa_UInt32 nodeClass)
{
    static constexpr const char* names[] = {"Object",     "Variable",     "Method",
                                            "ObjectType", "VariableType", "ReferenceType",
                                            "DataType",   "View"};
    for (std::size_t bit = 0; bit < std::size(names); ++bit)
        if (nodeClass == 1u << bit)
            return names[bit];
    return nullptr;
}

// The fields of an Argument that count here (OPC 10000-3, 8.6), in its binary encoding.
struct Argument
{
    UaNodeId dataType = UaNodeId(baseDataType);
    OpcUa_Int32 valueRank = anyRank;
};

std::optional<Argument> decodeArgument(const QByteArray& body)
{
    const auto int32 = [&body](qsizetype at) {
        UaVariant value;
        static_cast<void>(value.fromBinary(char(OpcUaType_Int32) + body.mid(at, 4)));
        return value.toInt32();
    };
    const qsizetype begin = 4 + std::max(0, int32(0)); // after the name
    if (begin >= body.size())
        return {};
    // The forms of a NodeId (OPC 10000-6, 5.2.2.9): two bytes, four, numeric, text, Guid, opaque.
    const qsizetype lengths[] = {2, 4, 7, 7, 19, 7};
    const auto form = std::size_t(uchar(body.at(begin)));
    if (form >= std::size(lengths))
        return {};
    const bool isLong = lengths[form] == 7 && form != 2;
    const qsizetype length = lengths[form] + (isLong ? std::max(0, int32(begin + 3)) : 0);
    UaVariant dataType;
    if (body.size() < begin + length + 4 ||
        OpcUa_IsNotGood(dataType.fromBinary(char(OpcUaType_NodeId) + body.mid(begin, length))))
        return {};
    return Argument{dataType.toNodeId(), int32(begin + length)};
}

class SessionRunner
{
public:
    using Log = std::function<void(const QString&)>;

    SessionRunner(const SessionArguments& arguments, QFileDevice& out, const Log& log)
        : m_arguments(arguments), m_out(out), m_log(log)
    {
    }
    int run(const QString& storeFolder);

private:
    bool readPassword();
    bool connectSession();
    bool waitForSession(int milliseconds = -1);
    void closeSession();

    void browse(const SessionCommand& command);
    void read(const SessionCommand& command);
    void write(const SessionCommand& command);
    void call(const SessionCommand& command);
    void watch(const SessionCommand& command);
    void history(const SessionCommand& command);

    UaNodeId nodeId(const SessionCommand::Node& node) const;
    OpcUa_UInt32 builtInType(UaNodeId dataType);
    OpcUa_StatusCode convert(const QJsonValue& json, const Argument& type, const UaNodeId& replaced,
                             UaVariant& value);
    OpcUa_StatusCode convertArguments(const SessionCommand& command, QvelCallItem& item,
                                      QList<UaStatusCode>& results);

    void execute(QEventLoop& loop, int milliseconds = -1) const;
    template <class T>
    T await(QFuture<T> future);
    UaString name(UaStatusCode status);
    void report(const QvelServiceResult& result) const;
    void flush();
    void stopWriting();
    void print(const JsonLine& line);
    void printValue(const char* service, const SessionCommand::Node& node,
                    const UaDataValue& value);

    const SessionArguments& m_arguments;
    QFileDevice& m_out;
    const Log& m_log;
    QvelSession m_session;
    QString m_password;
    QMap<QByteArray, OpcUa_UInt32> m_builtInTypes; // by the text of the DataType
    bool m_allGood = true;
    bool m_isStopped = false; // since nothing can be written any more
};

// The first line of the file, without its end.
bool SessionRunner::readPassword()
{
    if (m_arguments.passwordFile.isEmpty())
        return true;
    constexpr qint64 maxSize = 64 * 1024;
    QFile file(m_arguments.passwordFile);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        m_log(english("Reading the password: %1: %2").arg(file.fileName(), file.errorString()));
        return false;
    }
    QByteArray bytes(maxSize, 0);
    bytes.truncate(std::max<qint64>(0, file.read(bytes.data(), maxSize)));
    qsizetype length = bytes.indexOf('\n');
    length = length < 0 ? bytes.size() : length;
    if (length > 0 && bytes.at(length - 1) == '\r')
        --length;
    m_password = QString::fromUtf8(bytes.constData(), length);
    bytes.fill(0);
    return true;
}

bool SessionRunner::connectSession()
{
    QvelDiscoverySetting setting;
    setting.setEndpointUrl(m_arguments.url);
    setting.setSecurityPolicy(m_arguments.policyUri);
    setting.setMessageSecurityMode(m_arguments.mode);
    setting.setSessionName(QStringLiteral("harrier"));
    if (!m_arguments.user.isEmpty()) {
        setting.setUserTokenType(OpcUa_UserTokenType_UserName);
        setting.setUserName(m_arguments.user);
        setting.setPassword(m_password);
    } else if (!m_arguments.certificateFile.isEmpty()) {
        setting.setUserTokenType(OpcUa_UserTokenType_Certificate);
        setting.setCertificateFile(m_arguments.certificateFile);
        setting.setPrivateKeyFile(m_arguments.keyFile);
    }
    QObject::connect(&m_session, &QvelSession::logMessage, m_log);
    QObject::connect(&m_session, &QvelSession::passwordQuestion, &m_session,
                     [this](const QvelPasswordQuestion& question) {
                         question.isRepeated || m_arguments.passwordFile.isEmpty()
                             ? m_session.cancelPassword()
                             : m_session.answerPassword(m_password);
                     });
    QObject::connect(
        &m_session, &QvelSession::certificateQuestion, &m_session,
        [this](const QvelCertificateQuestion& question) {
            constexpr QvelCertificateAnswer answers[] = {QvelCertificateAnswer::Reject,
                                                         QvelCertificateAnswer::AcceptOnce,
                                                         QvelCertificateAnswer::AcceptAndTrust};
            for (const UaPkiFinding& finding : question.findings)
                m_log(english("The server's certificate: %1").arg(finding.text()));
            if (m_arguments.trust == SessionArguments::Reject)
                m_log(english("It was not accepted; --trust once or always would do so"));
            m_session.answerCertificate(answers[m_arguments.trust]);
        });
    m_session.connectToServer(setting);
    setting.setPassword(QString());
    const bool isConnected = waitForSession();
    wipe(m_password);
    return isConnected;
}

bool SessionRunner::waitForSession(int milliseconds)
{
    QEventLoop loop;
    QObject::connect(&m_session, &QvelSession::stateChanged, &loop, [&loop](QvelSession::State s) {
        if (s == QvelSession::Connected || s == QvelSession::Disconnected)
            loop.quit();
    });
    execute(loop, milliseconds);
    return m_session.state() == QvelSession::Connected;
}

int SessionRunner::run(const QString& storeFolder)
{
    std::signal(SIGINT, interrupt);
    std::signal(SIGTERM, interrupt);
    const CertificateStore store(m_arguments.pki.isEmpty() ? storeFolder : m_arguments.pki);
    store.makeFolders(m_log);
    store.makeOwnCertificate(m_log);
    QvelSessionOptions options = store.sessionOptions();
    if (m_arguments.timeout > 0)
        options.connectTimeout = options.callTimeout = m_arguments.timeout;
    m_session.setOptions(options);
    if (!readPassword() || !connectSession())
        return ExitNoSession;

    static constexpr void (SessionRunner::*functions[])(const SessionCommand&) = {
        &SessionRunner::browse, &SessionRunner::read,  &SessionRunner::write,
        &SessionRunner::call,   &SessionRunner::watch, &SessionRunner::history};
    qsizetype left = m_arguments.commands.size();
    for (const SessionCommand& command : m_arguments.commands) {
        if (m_isStopped || interruption)
            break;
        // It may be coming back just now.
        if (m_session.state() == QvelSession::WaitingToReconnect)
            waitForSession(options.connectTimeout);
        (this->*functions[command.kind])(command);
        flush();
        --left;
    }
    if (left > 0)
        m_log(english("Ended early; commands that were not run: %1").arg(left));
    closeSession();
    return m_allGood && !m_isStopped && left == 0 ? ExitFound : ExitFailure;
}

// Until the server has answered, even after an interruption.
void SessionRunner::closeSession()
{
    constexpr int longest = 2000; // ms
    if (m_session.state() == QvelSession::Disconnected)
        return;
    QEventLoop loop;
    QObject::connect(&m_session, &QvelSession::stateChanged, &loop, &QEventLoop::quit);
    QTimer::singleShot(longest, &loop, &QEventLoop::quit);
    m_session.disconnectFromServer();
    loop.exec();
}

// Runs until somebody quits the loop, the user interrupts, or the time is over.
void SessionRunner::execute(QEventLoop& loop, int milliseconds) const
{
    constexpr int interval = 50;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &loop, [&loop, this] {
        if (interruption || m_isStopped)
            loop.quit();
    });
    look.start(interval);
    if (milliseconds >= 0)
        QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

template <class T>
T SessionRunner::await(QFuture<T> future)
{
    QEventLoop loop;
    QFutureWatcher<T> watcher;
    QObject::connect(&watcher, &QFutureWatcherBase::finished, &loop, &QEventLoop::quit);
    watcher.setFuture(future);
    execute(loop);
    if (future.isFinished() && future.resultCount() > 0)
        return future.result();
    future.cancel();
    T none;
    none.status = OpcUa_BadShutdown;
    return none;
}

// Every status that is told counts for the exit status.
UaString SessionRunner::name(UaStatusCode status)
{
    m_allGood = m_allGood && status.isGood();
    return status.toString();
}

void SessionRunner::print(const JsonLine& line)
{
    const QByteArray text = line.text();
    if (!m_isStopped && m_out.write(text) != text.size())
        stopWriting();
}

void SessionRunner::flush()
{
    if (!m_isStopped && !m_out.flush())
        stopWriting();
}

void SessionRunner::stopWriting()
{
    m_isStopped = true;
    m_log(english("The result cannot be written: %1").arg(m_out.errorString()));
}

void SessionRunner::printValue(const char* service, const SessionCommand::Node& node,
                               const UaDataValue& value)
{
    print(JsonLine(service)
              .add("nodeId", node.text)
              .add("attribute", QLatin1String(QvelAttribute::name(node.attributeId)))
              .add("status", name(value.status()))
              .add("value", value.value())
              .add("sourceTimestamp", value.sourceTimestamp())
              .add("serverTimestamp", value.serverTimestamp()));
}

UaNodeId SessionRunner::nodeId(const SessionCommand::Node& node) const
{
    const UaNodeId id = m_session.toNodeId(node.id);
    if (id.isNull() && !node.id.namespaceUri().isEmpty())
        m_log(english("The server has no namespace %1").arg(node.id.namespaceUri().toQString()));
    return id;
}

// The server's own words about a call that failed as a whole, and so for each of its parts.
void SessionRunner::report(const QvelServiceResult& result) const
{
    if (result.status.isBad() && !result.reason.isEmpty())
        m_log(result.reason.toQString());
}

void SessionRunner::browse(const SessionCommand& command)
{
    const SessionCommand::Node& node = command.nodes.first();
    QvelBrowseItem item;
    item.nodeId = nodeId(node);
    const QvelBrowseResult result = await(m_session.browse({item}));
    const QvelBrowseNodeResult children = result.results.value(0);
    for (const QvelReference& reference : children.references) {
        const auto text = [](const UaExpandedNodeId& id) {
            return id == UaExpandedNodeId() ? UaString() : id.toFullString();
        };
        print(JsonLine("browse")
                  .add("nodeId", node.text)
                  .add("referenceTypeId", reference.referenceTypeId.toFullString())
                  .add("isForward", reference.isForward)
                  .add("target", text(reference.nodeId))
                  .add("nodeClass", UaString(nodeClassName(reference.nodeClass)))
                  .add("browseName", reference.browseName.toString())
                  .add("displayName", reference.displayName.text())
                  .add("typeDefinition", text(reference.typeDefinition)));
    }
    // Its lines have no place for a status.
    const UaStatusCode status = result.status.isBad() ? result.status : children.status;
    if (const UaString text = name(status); status.isNotGood())
        m_log(english("Browsing %1: %2 %3")
                  .arg(node.text, text.toQString(), result.reason.toQString()));
}

void SessionRunner::read(const SessionCommand& command)
{
    QList<QvelReadItem> items;
    for (const SessionCommand::Node& node : command.nodes)
        items.append({nodeId(node), node.attributeId, {}, {}});
    const QvelReadResult result = await(m_session.read(items));
    report(result);
    for (qsizetype i = 0; i < items.size(); ++i)
        printValue("read", command.nodes[i],
                   result.values.value(i, UaDataValue({}, result.status)));
}

// The number of the built-in type that a DataType is made of (OPC 10000-6, 5.1.2), or that of an
// abstract one.
OpcUa_UInt32 SessionRunner::builtInType(UaNodeId dataType)
{
    constexpr OpcUa_UInt32 enumeration = 29;
    constexpr OpcUa_UInt32 hasSubtype = 45;
    constexpr int deepest = 100;
    OpcUa_UInt32& known = m_builtInTypes[dataType.toFullString().bytes()];
    for (int depth = 0; known == 0 && depth < deepest; ++depth) {
        for (OpcUa_UInt32 id = 1; id < enumeration; ++id)
            if (dataType == UaNodeId(id))
                known = id;
        if (dataType == UaNodeId(enumeration))
            known = OpcUaType_Int32;
        if (known != 0)
            break;
        QvelBrowseItem item;
        item.nodeId = dataType;
        item.direction = QvelBrowseDirection::Inverse;
        item.referenceTypeId = UaNodeId(hasSubtype);
        const QvelBrowseResult result = await(m_session.browse({item}));
        const auto references = result.results.value(0).references;
        if (references.isEmpty())
            break;
        dataType = m_session.toNodeId(references.first().nodeId);
    }
    if (known == 0)
        known = baseDataType; // the server does not tell
    return known;
}

// Where a type is abstract, JSON names its own, or it is that of the value that is replaced.
OpcUa_StatusCode SessionRunner::convert(const QJsonValue& json, const Argument& type,
                                        const UaNodeId& replaced, UaVariant& value)
{
    const OpcUa_UInt32 number = builtInType(type.dataType);
    auto builtIn = OpcUa_BuiltInType(number);
    if (number == baseDataType || number > OpcUaType_DiagnosticInfo) {
        builtIn = OpcUaType_Null;
        if (!namesType(json)) {
            if (!replaced.isNull())
                builtIn = await(m_session.read({{replaced, QvelAttribute::Value, {}, {}}}))
                              .values.value(0)
                              .value()
                              .type();
            if (builtIn == OpcUaType_Null)
                builtIn = suggestedType(json);
            if (builtIn == OpcUaType_Null)
                return OpcUa_BadTypeMismatch;
        }
    }
    return valueFromJson(json, builtIn, type.valueRank, value);
}

void SessionRunner::write(const SessionCommand& command)
{
    const SessionCommand::Node& node = command.nodes.first();
    const UaNodeId id = nodeId(node);
    const QvelReadResult types = await(m_session.read(
        {{id, QvelAttribute::DataType, {}, {}}, {id, QvelAttribute::ValueRank, {}, {}}}));
    UaStatusCode status = types.status;
    for (const UaDataValue& value : types.values)
        status = status.isBad() ? status : value.status();
    UaVariant value;
    if (status.isGood()) {
        const Argument type{types.values[0].value().toNodeId(), types.values[1].value().toInt32()};
        status = convert(command.values.first(), type, id, value);
        if (status.isBad())
            m_log(english("The value does not fit the node's DataType %1 and ValueRank %2")
                      .arg(type.dataType.toFullString().toQString())
                      .arg(type.valueRank));
    }
    if (status.isGood()) {
        const QvelWriteResult result =
            await(m_session.write({{id, UaDataValue(value), QvelAttribute::Value, {}}}));
        report(result);
        status = result.results.value(0, result.status);
    }
    print(JsonLine("write").add("nodeId", node.text).add("status", name(status)));
}

// Each argument in its own type, as the method declares it.
OpcUa_StatusCode SessionRunner::convertArguments(const SessionCommand& command, QvelCallItem& item,
                                                 QList<UaStatusCode>& results)
{
    constexpr OpcUa_UInt32 hasProperty = 46;
    if (command.values.isEmpty())
        return OpcUa_Good; // the server knows what is missing
    const UaQualifiedName property(UaString("InputArguments"), 0);
    const QvelTranslateResult path = await(m_session.translateBrowsePaths(
        {{item.methodId, {{property, UaNodeId(hasProperty), false, true}}}}));
    const QvelTranslatedPath found = path.results.value(0);
    UaStatusCode status = path.status.isBad() ? path.status : found.status;
    QList<UaExtensionObject> declared;
    if (!found.targets.isEmpty()) {
        const UaNodeId id = m_session.toNodeId(found.targets.first().nodeId);
        const QvelReadResult read = await(m_session.read({{id, QvelAttribute::Value, {}, {}}}));
        const UaDataValue value = read.values.value(0);
        status = read.status.isBad() ? read.status : value.status();
        declared = value.value().toExtensionObjectArray();
    }
    if (status.isBad() && status != badNoMatch)
        return status.code();
    if (command.values.size() > declared.size())
        return badTooManyArguments;
    for (qsizetype i = 0; i < command.values.size(); ++i) {
        UaVariant value;
        const Argument type = decodeArgument(declared[i].body().bytes()).value_or(Argument());
        results.append(convert(command.values[i], type, UaNodeId(), value));
        item.inputArguments.append(value);
    }
    const bool areGood = std::all_of(results.cbegin(), results.cend(),
                                     [](UaStatusCode result) { return result.isGood(); });
    return areGood ? OpcUa_Good : OpcUa_BadInvalidArgument;
}

void SessionRunner::call(const SessionCommand& command)
{
    QvelCallItem item;
    item.objectId = nodeId(command.nodes[0]);
    item.methodId = nodeId(command.nodes[1]);
    QvelMethodResult result;
    result.status = convertArguments(command, item, result.inputArgumentResults);
    if (result.status.isGood()) {
        const QvelCallResult answer = await(m_session.call({item}));
        report(answer);
        result.status = answer.status;
        result = answer.results.value(0, result);
    }
    QByteArrayList inputs;
    for (const UaStatusCode input : std::as_const(result.inputArgumentResults))
        inputs.append(JsonLine::quoted(name(input)));
    QByteArrayList outputs;
    for (const UaVariant& output : std::as_const(result.outputArguments))
        outputs.append(output.toJson());
    print(JsonLine("call")
              .add("objectId", command.nodes[0].text)
              .add("methodId", command.nodes[1].text)
              .add("status", name(result.status))
              .add("inputArgumentResults", inputs)
              .add("outputArguments", outputs));
}

void SessionRunner::watch(const SessionCommand& command)
{
    QvelSubscriptionParameters parameters;
    parameters.publishingInterval = command.interval;
    const std::unique_ptr<QvelSubscription> subscription(m_session.createSubscription(parameters));
    QMap<OpcUa_UInt32, SessionCommand::Node> nodes;
    const auto lost = [this](const QString& what) {
        m_allGood = false;
        m_log(what);
    };
    QObject::connect(
        subscription.get(), &QvelSubscription::dataChanged, subscription.get(),
        [&](const QList<QvelDataChange>& changes) {
            for (const QvelDataChange& change : changes) {
                if (change.hasOverflow())
                    lost(english("The server dropped values of %1").arg(nodes[change.handle].text));
                printValue("watch", nodes[change.handle], change.value);
            }
            flush();
        });
    QObject::connect(subscription.get(), &QvelSubscription::itemsChanged, subscription.get(),
                     [&](const QList<QvelItemState>& items) {
                         for (const QvelItemState& item : items)
                             if (item.status.isBad())
                                 printValue("watch", nodes[item.handle],
                                            UaDataValue({}, item.status));
                         flush();
                     });
    QObject::connect(subscription.get(), &QvelSubscription::changed, [&](UaStatusCode status) {
        if (status.isBad())
            lost(english("Subscribing: %1").arg(status.toString().toQString()));
    });
    QObject::connect(subscription.get(), &QvelSubscription::gap, [&](OpcUa_UInt32 count) {
        lost(count > 0 ? english("%1 notifications are missing").arg(count)
                       : english("Notifications are missing"));
    });
    constexpr OpcUa_UInt32 queueSize = 100; // for publishing that comes late
    QList<QvelMonitoredItem> items;
    for (const SessionCommand::Node& node : command.nodes) {
        QvelMonitoredItem item;
        item.nodeId = nodeId(node);
        item.samplingInterval = command.interval;
        item.queueSize = queueSize;
        items.append(item);
    }
    const QList<OpcUa_UInt32> handles = subscription->addItems(items);
    for (qsizetype i = 0; i < handles.size(); ++i)
        nodes[handles[i]] = command.nodes[i];
    QEventLoop loop;
    execute(loop, command.duration);
}

void SessionRunner::history(const SessionCommand& command)
{
    const SessionCommand::Node& node = command.nodes.first();
    QvelHistoryDetails details;
    details.from = command.from;
    details.to = command.to;
    const QvelHistoryResult result = await(m_session.historyRead({{nodeId(node), {}}}, details));
    report(result);
    const QvelHistoryNodeResult values =
        result.results.value(0, QvelHistoryNodeResult{result.status, {}});
    for (const UaDataValue& value : values.values)
        printValue("history", node, value);
    if (values.status.isNotGood())
        printValue("history", node, UaDataValue({}, values.status));
}

} // namespace

int runSession(const SessionArguments& arguments, const QString& storeFolder, QFileDevice& out,
               const std::function<void(const QString&)>& log)
{
    return SessionRunner(arguments, out, log).run(storeFolder);
}

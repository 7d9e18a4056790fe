// The services of a session, without a window: browses a folder, reads what is in it, and tells
// what went wrong.
//
//     services opc.tcp://localhost:4850 "ns=1;s=Boilers"

#include <Kestrel/QvelDiscoverySetting>
#include <Kestrel/QvelNodeLink>
#include <Kestrel/QvelSession>
#include <Kestrel/QvelSessionTypes>
#include <Kestrel/QvelSubscription>

#include <QCoreApplication>
#include <QFuture>
#include <QTextStream>

static void fail(const QString& what, const QString& why)
{
    QTextStream(stderr) << what << ": " << why << "\n";
    QCoreApplication::exit(1);
}

static QString wordsOf(const QvelServiceResult& result)
{
    const QString reason = result.reason.toQString();
    return result.status.toString().toQString() + (reason.isEmpty() ? "" : ", " + reason);
}

// `session` is the context: it outlives the result.
static void readNames(QvelSession* session, const QList<QvelReference>& references)
{
    QList<QvelReadItem> items;
    for (const QvelReference& reference : references)
        items.append({session->toNodeId(reference.nodeId), QvelAttribute::DisplayName, {}, {}});
    session->read(items).then(session, [](const QvelReadResult& result) {
        if (result.status.isBad()) // the call as a whole
            return fail("Read", wordsOf(result));
        QTextStream out(stdout);
        for (const UaDataValue& name : result.values) // each item on its own
            out << name.status().toString().toQString() << " "
                << name.value().toString().toQString() << "\n";
        QCoreApplication::exit(0);
    });
}

static void browse(QvelSession* session, const UaNodeId& folder)
{
    QvelBrowseItem children; // by default of hierarchical references, forward
    children.nodeId = folder;
    session->browse({children}).then(session, [session](const QvelBrowseResult& result) {
        if (result.status.isBad())
            return fail("Browse", wordsOf(result));
        if (result.results[0].status.isBad())
            return fail("Browse", result.results[0].status.toString().toQString());
        readNames(session, result.results[0].references);
    });
}

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const auto folder = qvelParseNodeId(arguments.value(2, "i=85"));
    if (!folder) {
        fail(arguments.value(2), "not a NodeId");
        return 2;
    }

    QvelSessionOptions options;
    options.reconnects = false; // a program that ends has no use for it
    QvelSession session(options);
    QObject::connect(&session, &QvelSession::failed, &session, [](const QvelSessionError& error) {
        fail("Session", error.toString()); // step, status, the server's reason, and advice
    });
    QObject::connect(&session, &QvelSession::stateChanged, &session, [&](QvelSession::State state) {
        if (state == QvelSession::Connected)
            browse(&session, session.toNodeId(*folder));
    });

    QvelDiscoverySetting server;
    server.setEndpointUrl(arguments.value(1, "opc.tcp://localhost:4850"));
    server.setSecurityPolicy("http://opcfoundation.org/UA/SecurityPolicy#None");
    server.setMessageSecurityMode(OpcUa_MessageSecurityMode_None);
    session.connectToServer(server);
    return QCoreApplication::exec();
}

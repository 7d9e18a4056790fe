#include "server.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QSocketNotifier>

#include <csignal>
#include <cstdio>
#include <memory>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int discoveryPort = 4840;
constexpr int firstServerDistance = 10; // the servers listen 10, 11, ... ports above discovery

int signalSockets[2];

void passSignalOn(int)
{
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = write(signalSockets[0], &byte, sizeof byte);
}

/// Ends the application on SIGTERM or SIGINT.
bool quitOnSignals(QCoreApplication& application)
{
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, signalSockets) != 0)
        return false;
    auto* notifier = new QSocketNotifier(signalSockets[1], QSocketNotifier::Read, &application);
    QObject::connect(notifier, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    return std::signal(SIGTERM, passSignalOn) != SIG_ERR &&
           std::signal(SIGINT, passSignalOn) != SIG_ERR;
}

void quitOnEndOfInput(QCoreApplication& application)
{
    auto* notifier = new QSocketNotifier(STDIN_FILENO, QSocketNotifier::Read, &application);
    QObject::connect(notifier, &QSocketNotifier::activated, &application, [notifier] {
        char ignored[4096];
        if (read(STDIN_FILENO, ignored, sizeof ignored) <= 0) {
            notifier->setEnabled(false);
            QCoreApplication::quit();
        }
    });
}

int fail(const QString& message)
{
    std::fprintf(stderr, "kestrel-demo-server: %s\n", qPrintable(message));
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName("kestrel-demo-server");
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "A small plant of OPC UA servers on this computer's loopback interface: a discovery server "
        "and the servers that it lists. They answer FindServers and GetEndpoints.");
    parser.addHelpOption();
    const QCommandLineOption portOption(
        "port",
        QString("Port of the discovery server (default %1). The servers take the ports %2 and more "
                "above it. 0 takes free ports for all.")
            .arg(discoveryPort)
            .arg(firstServerDistance),
        "port", QString::number(discoveryPort));
    const QCommandLineOption untilEofOption("until-eof", "End when standard input ends.");
    parser.addOptions({portOption, untilEofOption});
    parser.process(application);
    if (!parser.positionalArguments().isEmpty())
        return fail("unknown argument " + parser.positionalArguments().constFirst());
    bool ok = false;
    const int firstPort = parser.value(portOption).toInt(&ok);
    const int lastPort = firstPort + firstServerDistance + plantSize() - 2;
    if (!ok || firstPort < 0 || lastPort > 0xffff)
        return fail("not a usable port: " + parser.value(portOption));

    std::vector<std::unique_ptr<Server>> servers;
    std::vector<quint16> ports;
    for (int i = 0; i < plantSize(); ++i) {
        const int distance = i == 0 ? 0 : firstServerDistance + i - 1;
        const int port = firstPort == 0 ? 0 : firstPort + distance;
        servers.push_back(std::make_unique<Server>());
        const QString error = servers.back()->listen(quint16(port));
        if (!error.isEmpty())
            return fail(QString("%1 cannot listen on port %2: %3")
                            .arg(QString::fromUtf8(plantServerName(i)))
                            .arg(port)
                            .arg(error));
        ports.push_back(servers.back()->port());
    }
    const std::vector<ServerFacts> facts = describePlant(ports);
    if (facts.empty())
        return fail("OpenSSL could not make a certificate");
    for (std::size_t i = 0; i < servers.size(); ++i)
        servers[i]->serve(facts[i]);

    if (!quitOnSignals(application))
        return fail("cannot handle signals");
    if (parser.isSet(untilEofOption))
        quitOnEndOfInput(application);
    std::printf("READY opc.tcp://localhost:%u\n", unsigned(ports.front()));
    std::fflush(stdout);
    const int result = application.exec();
    servers.clear();
    return result;
}

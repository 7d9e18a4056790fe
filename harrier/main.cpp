#include "darkpalette.h"
#include "discovercommand.h"
#include "english.h"
#include "exitsignals.h"
#include "host.h"
#include "language.h"
#include "mainwindow.h"
#include "plainline.h"
#include "projectcontrol.h"
#include "rendercommand.h"
#include "sessioncommand.h"
#include "sessionpage.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QEvent>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QStandardPaths>
#include <QtCore/QTimer>
#include <QtGui/QScreen>
#include <QtGui/QSessionManager>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QStyleFactory>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <utility>

namespace {

constexpr int DefaultTimeoutMs = 5000;
constexpr int MaxTimeoutMs = 3600 * 1000;

/// Any thread. The text may hold terminal control sequences that a server sent.
void printError(const QString& text)
{
    std::fprintf(stderr, "%s\n", qPrintable(plainLine(text, LogBuffer::MaxLength)));
}

/// Before there is a QApplication, which ends the program when it finds no display: goes on without
/// one. False when nobody could see a window.
bool findDisplay(int argc, char** argv)
{
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        return true;
    const bool discovering = std::any_of(argv, argv + argc, [](const char* argument) {
        return std::strcmp(argument, "--discover") == 0;
    });
#if defined(Q_OS_UNIX) && !defined(Q_OS_DARWIN)
    const bool display =
        qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
#else
    const bool display = true;
#endif
    if (discovering || !display)
        qputenv("QT_QPA_PLATFORM", "offscreen");
    return display;
}

int usageError(const QString& text)
{
    printError(text);
    printError(english("Try 'harrier --help'."));
    return ExitUsage;
}

/// Does something as soon as the user has the window before him: nothing else is to delay that.
class OncePainted : public QObject
{
public:
    OncePainted(QWidget& window, std::function<void()> action) : m_action(std::move(action))
    {
        window.installEventFilter(this);
    }
    bool eventFilter(QObject* window, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            window->removeEventFilter(this);
            QTimer::singleShot(0, this, m_action);
        }
        return false;
    }

private:
    const std::function<void()> m_action;
};

// Needs no display at all.
int connectCommand(int argc, char** argv)
{
    const QCoreApplication app(argc, argv);
#ifdef SIGPIPE
    std::signal(SIGPIPE, SIG_IGN); // so that the session is closed where nobody reads on
#endif
    SessionArguments arguments;
    const QString error = arguments.parse(QCoreApplication::arguments().mid(1));
    if (!error.isEmpty()) {
        printError(error);
        printError(english("Try 'harrier --connect --help'."));
        return ExitUsage;
    }
    QFile out;
    if (!out.open(stdout, QIODevice::WriteOnly)) {
        printError(out.errorString());
        return ExitFailure;
    }
    if (arguments.help)
        return out.write(SessionArguments::helpText().toUtf8()) > 0 ? ExitFound : ExitFailure;
    const QString data = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    return runSession(arguments, data + QStringLiteral("/certificates"), out, printError);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication::setApplicationName(QStringLiteral("harrier"));
    QCoreApplication::setApplicationVersion(QStringLiteral(HARRIER_VERSION));
    if (SessionArguments::ask(argc, argv))
        return connectCommand(argc, argv);
    const bool display = findDisplay(argc, argv);
    QApplication app(argc, argv);

    QCommandLineParser parser;
    parser.setApplicationDescription(english("Finds OPC UA servers and edits OPC UA values."));
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  english("Show this help."));
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption settings(
        QStringLiteral("settings"),
        english("Keep the settings in <file> and other data in <file>.data."), english("file"));
    const QCommandLineOption timeout(QStringLiteral("timeout"),
                                     english("Milliseconds that each service call may take."),
                                     english("ms"), QString::number(DefaultTimeoutMs));
    const QCommandLineOption discovery(
        QStringLiteral("discover"),
        english("Print all that is found under the given URLs as JSON, without a window."));
    const QCommandLineOption connecting(
        QStringLiteral("connect"),
        english("Run commands over a session with a server; see 'harrier --connect --help'."),
        english("url"));
    const QCommandLineOption rendering(QStringLiteral("render"),
                                       english("Draw each page into a PNG file in <folder>."),
                                       english("folder"));
    const QCommandLineOption opening(
        QStringLiteral("open"),
        english("Connect to <url>: with the best security that needs no question, or with none."),
        english("url"));
    const QCommandLineOption dark(QStringLiteral("dark"), english("Use dark colours."));
    const QCommandLineOption language(QStringLiteral("language"),
                                      english("Speak <language> in this run: en or de."),
                                      english("language"));
    parser.addOptions(
        {help, settings, timeout, discovery, connecting, opening, rendering, dark, language});
    parser.addPositionalArgument(QStringLiteral("project"), english("A project file to open."),
                                 QStringLiteral("[project]"));
    parser.addPositionalArgument(
        QStringLiteral("urls"),
        english("With --discover: URLs to look under, as opc.tcp://host:4840."),
        QStringLiteral("[url...]"));
    if (!parser.parse(QCoreApplication::arguments()))
        return usageError(parser.errorText());
    if (parser.isSet(help))
        parser.showHelp();
    if (parser.isSet(version))
        parser.showVersion();

    bool isNumber = false;
    const int timeoutMs = parser.value(timeout).toInt(&isNumber);
    if (!isNumber || timeoutMs < 1 || timeoutMs > MaxTimeoutMs)
        return usageError(english("--timeout takes a number from 1 to %1").arg(MaxTimeoutMs));
    const QStringList urls = parser.positionalArguments();
    const bool discovering = parser.isSet(discovery);
    if (discovering && urls.isEmpty())
        return usageError(english("--discover needs a URL"));
    if (!discovering && urls.size() > 1)
        return usageError(english("Unexpected argument: %1").arg(urls.at(1)));
    if (!discovering && !urls.isEmpty() && !QFile::exists(urls.first()))
        return usageError(english("There is no project file %1").arg(urls.first()));
    for (const QCommandLineOption& other : {rendering, opening})
        if (discovering && parser.isSet(other))
            return usageError(
                english("--discover and --%1 exclude each other").arg(other.names().constFirst()));

    if (parser.isSet(language) && !Language::isKnown(parser.value(language)))
        return usageError(english("--language takes en or de"));
    if (!discovering && !parser.isSet(rendering) && !display)
        return usageError(
            english("There is no display; without one, use --discover, --connect or --render"));

    // The commands leave the user's own settings and data alone.
    std::unique_ptr<SettingsStore> store;
    QString dataFolder;
    if (parser.isSet(settings)) {
        store = std::make_unique<SettingsStore>(parser.value(settings));
        dataFolder = QFileInfo(parser.value(settings)).absoluteFilePath() + QStringLiteral(".data");
    } else if (discovering || parser.isSet(rendering)) {
        store = std::make_unique<SettingsStore>();
    } else {
        store = std::make_unique<SettingsStore>(SettingsStore::defaultFile());
        dataFolder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    }

    int result = ExitFound;
    if (discovering) {
        DiscoveryCallback callback(*store, QStringLiteral("Discovery.OpcUa"), printError);
        QFile out;
        if (!out.open(stdout, QIODevice::WriteOnly)) {
            printError(out.errorString());
            return ExitFailure;
        }
        result = discover(urls, timeoutMs, callback, out);
        if (!out.flush()) {
            printError(english("The result cannot be written: %1").arg(out.errorString()));
            result = ExitFailure;
        }
    } else {
        if (parser.isSet(dark)) {
            QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
            QApplication::setPalette(darkPalette());
        }
        Host host(*store, timeoutMs, dataFolder);
        if (parser.isSet(language))
            Language::install(parser.value(language));
        MainWindow window(host);
        if (!urls.isEmpty())
            window.project().open(urls.first());
        if (parser.isSet(opening)) {
            QvelDiscoverySetting setting;
            setting.setEndpointUrl(parser.value(opening));
            window.addSession(setting)->connectQuietly();
        }
        if (parser.isSet(rendering)) {
            QString error;
            if (!render(window, parser.value(rendering), &error)) {
                printError(error);
                result = ExitFailure;
            }
        } else {
            window.resize(window.size().boundedTo(window.screen()->availableSize()));
            window.show();
            QTimer::singleShot(0, &window, [&window] { window.project().recover(); });
            const OncePainted started(window, [&host] { Q_EMIT host.started(); });
            const ExitSignals signals;
            QObject::connect(&signals, &ExitSignals::received, &window, &MainWindow::end);
            QObject::connect(&app, &QGuiApplication::commitDataRequest, &window,
                             [&window] { window.project().saveForRecovery(); });
            result = QApplication::exec();
        }
        window.closeSessions();
    }

    const bool known = !store->error().isEmpty(); // then the log said so
    QString error;
    if (!store->save(&error)) {
        printError(error);
        if (!known && !discovering && !parser.isSet(rendering))
            QMessageBox::warning(nullptr, QStringLiteral("harrier"), error);
    }
    return result;
}

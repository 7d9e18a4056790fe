// All widgets, a tab each:
//
//     widgets [URL]                  with the plant at this URL
//     widgets --render FOLDER [URL]  draws each to FOLDER/CLASS.png and ends

#include "widgets.h"

#include <Kestrel/QvelDiscoverySetting>
#include <Kestrel/QvelSession>

#include <QtCore/QDir>
#include <QtCore/QTimer>
#include <QtWidgets/QApplication>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QVBoxLayout>

namespace {

constexpr int ConnectMs = 20'000;
constexpr int FillMs = 5'000; // until values have come

void showInTabs(const QList<std::pair<QString, QWidget*>>& widgets)
{
    auto* tabs = new QTabWidget;
    tabs->setTabPosition(QTabWidget::West);
    tabs->setAttribute(Qt::WA_DeleteOnClose);
    for (const auto& [name, widget] : widgets) {
        auto* page = new QWidget;
        auto* layout = new QVBoxLayout(page);
        if (widget->isWindow() && widget->windowType() == Qt::Dialog) {
            widget->setParent(page, widget->windowFlags());
            auto* open = new QPushButton(QObject::tr("Open..."));
            QObject::connect(open, &QPushButton::clicked, widget, &QWidget::show);
            layout->addWidget(open);
            layout->addStretch();
        } else {
            layout->addWidget(widget);
            if (widget->sizePolicy().verticalPolicy() == QSizePolicy::Fixed)
                layout->addStretch();
        }
        tabs->addTab(page, name);
    }
    tabs->resize(1000, 700);
    tabs->show();
}

// In the size that an example gives its widget; else in the size that the widget wants.
void render(const QList<std::pair<QString, QWidget*>>& widgets, const QDir& folder)
{
    for (const auto& entry : widgets) {
        QWidget* widget = entry.second;
        if (!widget->testAttribute(Qt::WA_Resized))
            widget->resize(widget->sizeHint().expandedTo(QSize(360, 0)));
        widget->show();
    }
    QTimer::singleShot(FillMs, qApp, [=] {
        for (const auto& [name, widget] : widgets) {
            const QString file = folder.filePath(name + ".png");
            if (!widget->grab().save(file)) {
                qWarning("%s cannot be written", qPrintable(file));
                return QCoreApplication::exit(1);
            }
        }
        QCoreApplication::exit(0);
    });
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName("kestrel-widgets");
    QStringList arguments = QApplication::arguments().mid(1);
    QString folder;
    if (arguments.value(0) == "--render") {
        folder = arguments.value(1);
        arguments = arguments.mid(2);
        QApplication::setStyle("Fusion"); // the same pictures everywhere
    }

    QvelSession session;
    QList<std::pair<QString, QWidget*>> widgets;
    const auto start = [&] {
        for (const auto& examples :
             {valueExamples(), compositeExamples(), connectionExamples(), liveExamples()})
            for (const WidgetExample& example : examples)
                widgets.append({example.className,
                                example.offline ? example.offline() : example.online(&session)});
        if (folder.isEmpty())
            showInTabs(widgets);
        else
            render(widgets, QDir(folder));
    };
    QObject::connect(&session, &QvelSession::stateChanged, &session, [&](QvelSession::State state) {
        if (state == QvelSession::Connected && widgets.isEmpty())
            start();
    });
    // The plant is on this computer; connect.cpp asks the user.
    QObject::connect(&session, &QvelSession::certificateQuestion, &session,
                     [&] { session.answerCertificate(QvelCertificateAnswer::AcceptOnce); });
    QTimer::singleShot(ConnectMs, &session, [&] {
        if (!widgets.isEmpty())
            return;
        qWarning("There is no session: %s", qPrintable(session.lastError().toString()));
        if (folder.isEmpty())
            start();
        else
            QApplication::exit(1);
    });

    QvelDiscoverySetting server;
    server.setEndpointUrl(arguments.value(0, "opc.tcp://localhost:4850"));
    server.setSecurityPolicy("http://opcfoundation.org/UA/SecurityPolicy#None");
    server.setMessageSecurityMode(OpcUa_MessageSecurityMode_None);
    server.setUserTokenType(OpcUa_UserTokenType_UserName);
    server.setUserName("operator"); // of the plant
    server.setPassword("kettle");
    session.connectToServer(server);
    const int result = QApplication::exec();
    for (const auto& entry : widgets)
        if (!entry.second->parent())
            delete entry.second;
    return result;
}

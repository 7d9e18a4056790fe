#include "rendercommand.h"

#include "english.h"
#include "gallery.h"
#include "mainwindow.h"
#include "pages.h"
#include "sessionpage.h"
#include "treeexpander.h"

#include <Kestrel/QvelDiscoveryModel>
#include <Kestrel/QvelDiscoveryNodeDiscovery>
#include <Kestrel/QvelToolBox>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QTimer>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QToolButton>

namespace {

constexpr int MaxWaitMs = 10000;
constexpr int SettleMs = 200; // lets the log and the layouts catch up
constexpr int ConnectMs = 20000;
constexpr int FillMs = 3000; // until the values of a server have come

QModelIndex firstEndpoint(const QvelDiscoveryModel& model, QvelDiscoveryNode* node)
{
    if (node->type() == QvelDiscoveryNode::TypeEndpoint)
        return const_cast<QvelDiscoveryModel&>(model).indexOf(node);
    const auto children = node->children();
    for (QvelDiscoveryNode* child : children) {
        const QModelIndex found = firstEndpoint(model, child);
        if (found.isValid())
            return found;
    }
    return {};
}

void selectLocalEndpoint(QvelDiscoveryWidget& view)
{
    auto& model = *qobject_cast<QvelDiscoveryModel*>(view.model());
    QvelDiscoveryNode* local = model.getLocalNode();
    TreeExpander expander(model);
    expander.expand(local);
    expander.wait(MaxWaitMs);
    view.expandRecursively(model.indexOf(local));
    const QModelIndex endpoint = firstEndpoint(model, local);
    view.setCurrentIndex(endpoint.isValid() ? endpoint : model.indexOf(local));
}

void settle(int milliseconds = SettleMs)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

void waitForSession(SessionPage& page)
{
    QEventLoop loop;
    const auto look = [&] {
        if (page.session()->state() == QvelSession::Connected)
            loop.quit();
    };
    QObject::connect(&page, &SessionPage::changed, &loop, look);
    QTimer::singleShot(0, &loop, look);
    QTimer::singleShot(ConnectMs, &loop, &QEventLoop::quit);
    loop.exec();
    settle(FillMs);
}

} // namespace

bool render(MainWindow& window, const QString& folder, QString* error)
{
    const QDir dir(folder);
    const auto save = [&](QWidget* widget, const QString& name) {
        settle();
        const QString file = dir.filePath(name + QStringLiteral(".png"));
        if (widget->grab().save(file))
            return true;
        *error = english("%1 cannot be written").arg(file);
        return false;
    };
    if (!dir.mkpath(QStringLiteral("."))) {
        *error = english("%1 cannot be created").arg(folder);
        return false;
    }

    window.show();
    const auto sessions = window.sessions();
    for (int i = 0; i < sessions.size(); ++i) {
        SessionPage& page = *sessions.at(i);
        window.serverTabs()->setCurrentWidget(&page);
        waitForSession(page);
        const QString name =
            QStringLiteral("session") + (i > 0 ? QString::number(i + 1) : QString());
        if (!save(&window, name))
            return false;
        const auto docks = page.docks();
        for (QDockWidget* dock : docks) {
            dock->show();
            dock->raise();
            if (!save(dock, name + QLatin1Char('-') + dock->objectName()))
                return false;
        }
    }
    window.serverTabs()->setCurrentIndex(0);
    selectLocalEndpoint(*window.currentView());
    for (int i = 0; i < window.pageTabs()->count(); ++i) {
        window.pageTabs()->setCurrentIndex(i);
        if (!save(&window, QLatin1String(pages().at(i).name)))
            return false;
    }
    Gallery& gallery = window.gallery();
    gallery.show();
    for (int i = 0; i < gallery.tabs()->count(); ++i) {
        gallery.tabs()->setCurrentIndex(i);
        if (!save(&gallery, QLatin1String(galleryPages().at(i).name)))
            return false;
    }
    gallery.close();
    const QStringList trees = {QStringLiteral("discovery-opcua"), QStringLiteral("discovery-comda"),
                               QStringLiteral("discovery-comae")};
    QvelToolBox* box = window.discoveryBox();
    for (int i = 0; i < box->count(); ++i) {
        window.discoveryToggle(i)->setChecked(true);
        if (!save(box->widget(i), trees.at(i)))
            return false;
    }
    return save(box, QStringLiteral("toolbox"));
}

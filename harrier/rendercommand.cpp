#include "rendercommand.h"

#include "mainwindow.h"
#include "pages.h"
#include "treeexpander.h"

#include <Kestrel/QvelDiscoveryModel>
#include <Kestrel/QvelDiscoveryNodeDiscovery>
#include <Kestrel/QvelToolBox>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QTimer>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QToolButton>

namespace {

constexpr int MaxWaitMs = 10000;
constexpr int SettleMs = 200; // lets the log and the layouts catch up

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

void settle()
{
    QEventLoop loop;
    QTimer::singleShot(SettleMs, &loop, &QEventLoop::quit);
    loop.exec();
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
        *error = QCoreApplication::translate("render", "%1 cannot be written").arg(file);
        return false;
    };
    if (!dir.mkpath(QStringLiteral("."))) {
        *error = QCoreApplication::translate("render", "%1 cannot be created").arg(folder);
        return false;
    }

    window.show();
    selectLocalEndpoint(*window.currentView());
    for (int i = 0; i < window.pageTabs()->count(); ++i) {
        window.pageTabs()->setCurrentIndex(i);
        if (!save(&window, QLatin1String(pages().at(i).name)))
            return false;
    }
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

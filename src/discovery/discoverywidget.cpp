#include "discoverywidget.h"

#include "discovery/discoverycbinterface.h"
#include "discovery/discoverymodel.h"
#include "discovery/discoverynodes_p.h"

#include <QtCore/QPointer>
#include <QtGui/QAction>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QInputDialog>
#include <QtWidgets/QMenu>

// The column is fitted to these many rows in and around the visible part. More would cost more
// than the insertion of thousands of rows.
constexpr int rowsToFit = 300;

static QString lastUsedNodeKey()
{
    return QStringLiteral("LastUsedNode");
}

class QvelDiscoveryWidget::Private
{
public:
    QvelDiscoveryCBInterface* callback;
    OpcType opcType;
    QvelDiscoveryModel* model = nullptr;
    QAction* rebrowse = nullptr;
    QAction* remove = nullptr;
    QAction* edit = nullptr;
    QMenu* menu = nullptr;
};

QvelDiscoveryWidget::QvelDiscoveryWidget(OpcType opcType, QvelDiscoveryCBInterface* callback,
                                         int timeout, const QString& sessionName, QWidget* parent)
    : QTreeView(parent), d(new Private{callback, opcType})
{
    d->model = new QvelDiscoveryModel(opcType, callback, timeout, sessionName, this);
    setModel(d->model);
    setHeaderHidden(true);
    header()->setResizeContentsPrecision(rowsToFit);
    setUniformRowHeights(true); // every text is one line
    setContextMenuPolicy(Qt::CustomContextMenu);
    for (int row = 1; row <= 3; ++row)
        expand(d->model->index(row, 0));

    d->rebrowse = new QAction(QIcon(":/kestrel/images/rebrowse.png"), tr("Rebrowse"), this);
    d->remove = new QAction(QIcon(":/kestrel/images/clearlog.png"), tr("Remove"), this);
    d->edit = new QAction(QIcon(":/kestrel/images/settingsconfigure.png"), tr("Edit Discovery URL"),
                          this);
    d->menu = new QMenu(this);

    connect(d->remove, &QAction::triggered, this, &QvelDiscoveryWidget::sltRemove);
    connect(d->rebrowse, &QAction::triggered, this, &QvelDiscoveryWidget::sltRebrowse);
    connect(d->edit, &QAction::triggered, this, &QvelDiscoveryWidget::sltEditUrl);
    connect(this, &QWidget::customContextMenuRequested, this, &QvelDiscoveryWidget::sltContextMenu);
    connect(selectionModel(), &QItemSelectionModel::currentChanged, this,
            &QvelDiscoveryWidget::sltCurrentChanged);
    connect(this, &QAbstractItemView::activated, this, &QvelDiscoveryWidget::sltActivated);

    resizeColumnToContents(0);
    readSettings();
}

QvelDiscoveryWidget::~QvelDiscoveryWidget()
{
    writeSettings();
}

QvelDiscoverySetting QvelDiscoveryWidget::currentConfiguration() const
{
    QvelDiscoveryNodeEndpoint* endpoint = toEndpoint(nodeAt(currentIndex()));
    return endpoint ? endpoint->configuration() : QvelDiscoverySetting();
}

bool QvelDiscoveryWidget::updateEndpointConfiguration(const QvelDiscoverySetting& setting)
{
    const QPointer<QvelDiscoveryWidget> self(this); // the model may ask the user
    bool accepted = false;
    const QModelIndex index =
        d->model->updateEndpointConfiguration(setting, currentIndex(), accepted);
    if (self && index.isValid())
        selectionModel()->setCurrentIndex(index, QItemSelectionModel::Select);
    return accepted;
}

int QvelDiscoveryWidget::noOfRecentNodes() const
{
    return d->model->getRecentNode()->childrenCount();
}

void QvelDiscoveryWidget::rowsInserted(const QModelIndex& parent, int start, int end)
{
    QTreeView::rowsInserted(parent, start, end);
    resizeColumnToContents(0);
}

void QvelDiscoveryWidget::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Delete)) {
        sltRemove();
        event->accept();
    } else {
        event->ignore();
    }
    QTreeView::keyPressEvent(event);
}

void QvelDiscoveryWidget::sltContextMenu(const QPoint& pos)
{
    QvelDiscoveryNode* node = nodeAt(indexAt(pos));
    if (!node)
        return;
    QList<QAction*> actions;
    switch (node->type()) {
    case QvelDiscoveryNode::TypeDiscovery:
        actions = {d->edit, d->rebrowse};
        if (node != d->model->getLocalNode())
            actions.append(d->remove);
        break;
    case QvelDiscoveryNode::TypeServer:
    case QvelDiscoveryNode::TypeNetwork:
        actions = {d->rebrowse};
        break;
    case QvelDiscoveryNode::TypeEndpoint:
        if (node->parent() == d->model->getRecentNode())
            actions = {d->remove};
        break;
    case QvelDiscoveryNode::TypeGeneric:
        break;
    }
    if (actions.isEmpty())
        return;
    d->menu->clear();
    d->menu->addActions(actions);
    d->menu->popup(viewport()->mapToGlobal(pos));
}

void QvelDiscoveryWidget::sltEditUrl()
{
    const QPersistentModelIndex index = currentIndex();
    QvelDiscoveryNodeDiscovery* node = toDiscovery(nodeAt(index));
    if (!node)
        return;
    const QPointer<QvelDiscoveryWidget> self(this);
    bool ok = false;
    const QString url =
        QInputDialog::getText(this, tr("Edit Discovery Url"), tr("Enter the new Discovery Url:"),
                              QLineEdit::Normal, node->discoveryUrl(), &ok);
    if (self && ok)
        d->model->editUrl(index, url);
}

void QvelDiscoveryWidget::sltRebrowse()
{
    // A fixed entry holds what the user put there, and nothing could be found to replace it.
    QvelDiscoveryNode* node = nodeAt(currentIndex());
    if (node && node->type() != QvelDiscoveryNode::TypeGeneric)
        d->model->fetchMore(currentIndex());
}

void QvelDiscoveryWidget::sltRemove()
{
    d->model->remove(currentIndex());
}

void QvelDiscoveryWidget::sltCurrentChanged(const QModelIndex& index)
{
    QvelDiscoveryNodeEndpoint* endpoint = toEndpoint(nodeAt(index));
    if (!endpoint)
        return;
    if (d->opcType == OpcUa)
        Q_EMIT endpointSelected(endpoint->configuration());
    else
        Q_EMIT comServerSelected(endpoint->configuration());
}

void QvelDiscoveryWidget::sltActivated(const QModelIndex& index)
{
    QvelDiscoveryNode* node = nodeAt(index);
    if (!node)
        return;
    if (node == d->model->getAddServerNode()) {
        const QPointer<QvelDiscoveryWidget> self(this);
        bool ok = false;
        const QString url = QInputDialog::getText(
            this, tr("Enter Url"),
            tr("Enter the Url of a computer with discovery service running:"), QLineEdit::Normal,
            d->opcType == OpcUa ? "opc.tcp://" : "localhost", &ok);
        if (self && ok)
            d->model->addRemoteServer(url);
    } else if (QvelDiscoveryNodeEndpoint* endpoint = toEndpoint(node)) {
        if (d->opcType == OpcUa)
            Q_EMIT endpointActivated(endpoint->configuration());
        else
            Q_EMIT comServerActivated(endpoint->configuration());
    }
}

void QvelDiscoveryWidget::readSettings()
{
    void* handle = d->callback->openSettings();
    const QString last = d->callback->readSetting(handle, lastUsedNodeKey()).toString();
    const QvelDiscoveryNode* recent = d->model->getRecentNode();
    for (int row = 0; row < recent->childrenCount(); ++row) {
        const QModelIndex index = d->model->indexOf(recent->at(row));
        if (index.data().toString() == last) {
            selectionModel()->setCurrentIndex(index, QItemSelectionModel::Select);
            break;
        }
    }
    d->callback->closeSettings(handle);
}

void QvelDiscoveryWidget::writeSettings()
{
    void* handle = d->callback->openSettings();
    const QModelIndex current = currentIndex();
    if (current.isValid())
        d->callback->writeSetting(handle, lastUsedNodeKey(), current.data().toString());
    d->callback->closeSettings(handle);
}

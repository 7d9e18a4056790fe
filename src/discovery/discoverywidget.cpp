#include "discoverywidget.h"

#include "base/retranslate_p.h"
#include "discovery/discoverycbinterface.h"
#include "discovery/discoverymodel.h"
#include "discovery/discoverynodes_p.h"
#include "images/images_p.h"

#include <QtCore/QPointer>
#include <QtGui/QAction>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QInputDialog>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenu>
#include <QtWidgets/QVBoxLayout>

#include <optional>
#include <utility>

// The column is fitted to these many rows in and around the visible part. More would cost more
// than the insertion of thousands of rows.
constexpr int rowsToFit = 300;

static QString lastUsedNodeKey()
{
    return QStringLiteral("LastUsedNode");
}

namespace {

/// Asks for a URL as QInputDialog::getText() does, and may be deleted meanwhile.
class UrlDialog : public QInputDialog
{
public:
    /// `setTexts` gives it its title and its label.
    UrlDialog(QWidget* parent, void (*setTexts)(QInputDialog*), const QString& url)
        : QInputDialog(parent)
    {
        retranslated(this, [this, setTexts] { setTexts(this); });
        setTextValue(url);
    }
    /// The text is to be completed, and told to need `scheme` as long as it does not begin so.
    void completes(const QString& scheme)
    {
        m_hint = new QLabel(this);
        retranslated(m_hint, [this, scheme] {
            m_hint->setText(QvelDiscoveryWidget::tr("Only a URL that begins with \"%1\" is added.")
                                .arg(scheme));
        });
        m_hint->setTextFormat(Qt::PlainText);
        m_hint->setVisible(false);
        const auto check = [this, scheme](const QString& text) {
            m_hint->setVisible(!text.trimmed().startsWith(scheme));
        };
        connect(this, &QInputDialog::textValueChanged, this, check);
    }
    void setVisible(bool visible) override
    {
        QInputDialog::setVisible(visible); // selects the text
        if (!visible || !m_hint)
            return;
        if (auto* box = qobject_cast<QVBoxLayout*>(layout()); box && box->indexOf(m_hint) < 0)
            box->insertWidget(box->count() - 1, m_hint);
        if (auto* line = findChild<QLineEdit*>())
            line->end(false);
    }

private:
    QLabel* m_hint = nullptr;
};

/// What the user enters, without blanks around it; nothing if the user cancels, or the dialog goes
/// with its parent. Deletes the dialog.
std::optional<QString> ask(UrlDialog* dialog)
{
    const QPointer<UrlDialog> guard(dialog);
    std::optional<QString> url;
    if (dialog->exec() == QDialog::Accepted && guard)
        url = dialog->textValue().trimmed();
    delete guard;
    return url;
}

} // namespace

class QvelDiscoveryWidget::Private
{
public:
    /// Null while there is no model, or only one of someone else's.
    QvelDiscoveryNode* node(const QModelIndex& index) const
    {
        return model && index.model() == model ? nodeAt(index) : nullptr;
    }

    QvelDiscoveryCBInterface* callback = nullptr;
    OpcType opcType = OpcUa;
    int timeout = 10000;
    QString sessionName;
    QvelDiscoveryModel* model = nullptr;
    QAction* rebrowse = nullptr;
    QAction* remove = nullptr;
    QAction* edit = nullptr;
    QMenu* menu = nullptr;
    bool asking = false;
    bool inViewportEvent = false;
    QPersistentModelIndex activated; // during that event
};

QvelDiscoveryWidget::QvelDiscoveryWidget(OpcType opcType, QvelDiscoveryCBInterface* callback,
                                         int timeout, const QString& sessionName, QWidget* parent)
    : QvelDiscoveryWidget(parent)
{
    d->opcType = opcType;
    d->timeout = timeout;
    d->sessionName = sessionName;
    start(callback);
}

QvelDiscoveryWidget::QvelDiscoveryWidget(QWidget* parent) : QTreeView(parent), d(new Private)
{
    initKestrelImages();
    setHeaderHidden(true);
    retranslated(this, [this] { setOwnText(this, "accessibleName", tr("Servers")); });
    header()->setResizeContentsPrecision(rowsToFit);
    setUniformRowHeights(true); // every text is one line
    setContextMenuPolicy(Qt::CustomContextMenu);

    d->rebrowse = new QAction(paletteIcon(":/kestrel/images/rebrowse.png"), QString(), this);
    d->remove = new QAction(paletteIcon(":/kestrel/images/clearlog.png"), QString(), this);
    d->edit = new QAction(paletteIcon(":/kestrel/images/settingsconfigure.png"), QString(), this);
    retranslated(this, [this] {
        d->rebrowse->setText(tr("Rebrowse"));
        d->remove->setText(tr("Remove"));
        d->edit->setText(tr("Edit Discovery URL"));
    });
    d->menu = new QMenu(this);

    connect(d->remove, &QAction::triggered, this, &QvelDiscoveryWidget::sltRemove);
    connect(d->rebrowse, &QAction::triggered, this, &QvelDiscoveryWidget::sltRebrowse);
    connect(d->edit, &QAction::triggered, this, &QvelDiscoveryWidget::sltEditUrl);
    connect(this, &QWidget::customContextMenuRequested, this, &QvelDiscoveryWidget::sltContextMenu);
    connect(this, &QAbstractItemView::activated, this, &QvelDiscoveryWidget::sltActivated);
}

QvelDiscoveryWidget::~QvelDiscoveryWidget()
{
    if (d->asking) { // by an entry of the menu, perhaps, which still has to return
        d->menu->setParent(nullptr);
        d->menu->deleteLater();
    }
    writeSettings();
}

void QvelDiscoveryWidget::start(QvelDiscoveryCBInterface* callback)
{
    writeSettings();
    delete std::exchange(d->model, nullptr);
    d->callback = callback;
    d->model = new QvelDiscoveryModel(d->opcType, callback, d->timeout, d->sessionName, this);
    delete selectionModel(); // it would go with the view only
    setModel(d->model);
    for (int row = 1; row <= 3; ++row)
        expand(d->model->index(row, 0));
    connect(selectionModel(), &QItemSelectionModel::currentChanged, this,
            &QvelDiscoveryWidget::sltCurrentChanged);
    resizeColumnToContents(0);
    readSettings();
}

QvelDiscoveryWidget::OpcType QvelDiscoveryWidget::opcType() const
{
    return d->opcType;
}

void QvelDiscoveryWidget::setOpcType(OpcType type)
{
    d->opcType = type;
}

int QvelDiscoveryWidget::timeout() const
{
    return d->timeout;
}

void QvelDiscoveryWidget::setTimeout(int timeout)
{
    d->timeout = timeout;
}

QString QvelDiscoveryWidget::sessionName() const
{
    return d->sessionName;
}

void QvelDiscoveryWidget::setSessionName(const QString& name)
{
    d->sessionName = name;
}

QvelDiscoverySetting QvelDiscoveryWidget::currentConfiguration() const
{
    QvelDiscoveryNodeEndpoint* endpoint = toEndpoint(d->node(currentIndex()));
    return endpoint ? endpoint->configuration() : QvelDiscoverySetting();
}

bool QvelDiscoveryWidget::updateEndpointConfiguration(const QvelDiscoverySetting& setting)
{
    if (!d->model)
        return false;
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
    return d->model ? d->model->getRecentNode()->childrenCount() : 0;
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
    QvelDiscoveryNode* node = d->node(indexAt(pos));
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
    QvelDiscoveryNodeDiscovery* node = toDiscovery(d->node(index));
    if (!node)
        return;
    const QPointer<QvelDiscoveryWidget> self(this);
    d->asking = true;
    const auto setTexts = [](QInputDialog* dialog) {
        dialog->setWindowTitle(tr("Edit Discovery Url"));
        dialog->setLabelText(tr("Enter the new Discovery Url:"));
    };
    const std::optional<QString> url = ask(new UrlDialog(this, setTexts, node->discoveryUrl()));
    if (!self)
        return;
    d->asking = false;
    if (url)
        d->model->editUrl(index, *url);
}

void QvelDiscoveryWidget::sltRebrowse()
{
    // A fixed entry holds what the user put there, and nothing could be found to replace it.
    QvelDiscoveryNode* node = d->node(currentIndex());
    if (node && node->type() != QvelDiscoveryNode::TypeGeneric)
        d->model->fetchMore(currentIndex());
}

void QvelDiscoveryWidget::sltRemove()
{
    if (d->node(currentIndex()))
        d->model->remove(currentIndex());
}

void QvelDiscoveryWidget::sltCurrentChanged(const QModelIndex& index)
{
    QvelDiscoveryNodeEndpoint* endpoint = toEndpoint(d->node(index));
    if (!endpoint)
        return;
    if (d->opcType == OpcUa)
        Q_EMIT endpointSelected(endpoint->configuration());
    else
        Q_EMIT comServerSelected(endpoint->configuration());
}

// The tree goes on with the event after it told of an activation, but the view may not outlive what
// the user and the host do then.
bool QvelDiscoveryWidget::viewportEvent(QEvent* event)
{
    const bool mayActivate =
        event->type() == QEvent::MouseButtonDblClick || event->type() == QEvent::MouseButtonRelease;
    if (!mayActivate || d->inViewportEvent)
        return QTreeView::viewportEvent(event);
    const QPointer<QvelDiscoveryWidget> self(this);
    d->inViewportEvent = true;
    const bool handled = QTreeView::viewportEvent(event);
    if (!self)
        return true;
    d->inViewportEvent = false;
    if (d->activated.isValid())
        sltActivated(QPersistentModelIndex(std::exchange(d->activated, {})));
    return handled;
}

void QvelDiscoveryWidget::sltActivated(const QModelIndex& index)
{
    QvelDiscoveryNode* node = d->node(index);
    if (!node)
        return;
    if (d->inViewportEvent) {
        d->activated = index;
    } else if (node == d->model->getAddServerNode()) {
        const auto setTexts = [](QInputDialog* dialog) {
            dialog->setWindowTitle(tr("Enter Url"));
            dialog->setLabelText(tr("Enter the Url of a computer with discovery service running:"));
        };
        auto* dialog =
            new UrlDialog(this, setTexts, d->opcType == OpcUa ? "opc.tcp://" : "localhost");
        if (d->opcType == OpcUa)
            dialog->completes("opc.tcp:");
        const QPointer<QvelDiscoveryWidget> self(this);
        const std::optional<QString> url = ask(dialog);
        if (self && url)
            d->model->addRemoteServer(*url);
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
    if (!d->callback)
        return;
    void* handle = d->callback->openSettings();
    const QModelIndex current = currentIndex();
    if (current.isValid())
        d->callback->writeSetting(handle, lastUsedNodeKey(), current.data().toString());
    d->callback->closeSettings(handle);
}

#include "referenceswidget.h"

#include "base/retranslate_p.h"
#include "base/viewhint_p.h"
#include "images/images_p.h"
#include "nodes/nodelink.h"
#include "nodes/referencesmodel.h"
#include "nodes/statustext_p.h"
#include "session/session.h"

#include <QtCore/QMimeData>
#include <QtGui/QAction>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QTableView>
#include <QtWidgets/QVBoxLayout>

class QvelReferencesWidget::Private
{
public:
    explicit Private(QvelReferencesWidget* q)
        : model(new QvelReferencesModel(q)), table(new HintedView<QTableView>(q))
    {
    }
    void copy() const
    {
        const QModelIndexList rows = table->selectionModel()->selectedRows();
        QModelIndexList targets;
        QStringList lines;
        for (const QModelIndex& row : rows) {
            targets.append(row.siblingAtColumn(QvelReferencesModel::Target));
            const QModelIndex id = row.siblingAtColumn(QvelReferencesModel::NodeId);
            const bool isFailure = row.data(QvelReferencesModel::FailureRole).toBool();
            lines.append((isFailure ? row : id).data().toString());
        }
        if (rows.isEmpty())
            return;
        QMimeData* data = model->mimeData(targets);
        if (!data)
            data = new QMimeData;
        data->setText(lines.join(u'\n'));
        QGuiApplication::clipboard()->setMimeData(data);
    }

    QvelReferencesModel* const model;
    QTableView* const table;
};

static void tellWhyEmpty(QAbstractItemView* view, const QvelReferencesModel* model)
{
    setViewHint(view, model->node() == UaExpandedNodeId()
                          ? QvelReferencesWidget::tr("Select a node to see its references.")
                          : waitingSentence(model->session()));
}

QvelReferencesWidget::QvelReferencesWidget(QWidget* parent)
    : QWidget(parent), d(std::make_unique<Private>(this))
{
    initKestrelImages();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(d->table);
    setFocusProxy(d->table);

    d->table->setModel(d->model);
    d->table->setSelectionBehavior(QAbstractItemView::SelectRows);
    d->table->setDragDropMode(QAbstractItemView::DragOnly);
    d->table->setShowGrid(false);
    d->table->setWordWrap(false);
    d->table->setTabKeyNavigation(false);
    d->table->setContextMenuPolicy(Qt::ActionsContextMenu);
    d->table->verticalHeader()->hide();
    d->table->verticalHeader()->setDefaultSectionSize(
        d->table->verticalHeader()->minimumSectionSize());
    QHeaderView* header = d->table->horizontalHeader();
    header->setStretchLastSection(true);
    header->setHighlightSections(false);
    header->setDefaultAlignment(Qt::AlignLeading | Qt::AlignVCenter);
    header->setDefaultSectionSize(150);

    const auto add = [this](const QKeySequence& shortcut, auto function) {
        auto* action = new QAction(d->table);
        action->setShortcut(shortcut);
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        connect(action, &QAction::triggered, this, function);
        d->table->addAction(action);
        return action;
    };
    QAction* copy = add(QKeySequence::Copy, [this] { d->copy(); });
    QAction* refresh = add(QKeySequence(Qt::Key_F5), [this] { d->model->refresh(); });
    retranslated(this, [=] {
        d->table->setAccessibleName(tr("References"));
        tellWhyEmpty(d->table, d->model);
        copy->setText(tr("Copy NodeId"));
        refresh->setText(tr("Refresh"));
    });
    connect(d->table, &QAbstractItemView::activated, this, [this](const QModelIndex& index) {
        if (d->model->flags(index).testFlag(Qt::ItemIsDragEnabled))
            QMetaObject::invokeMethod(
                this, [this, id = d->model->nodeId(index)] { Q_EMIT nodeActivated(id); },
                Qt::QueuedConnection);
    });
}

QvelReferencesWidget::~QvelReferencesWidget() = default;

void QvelReferencesWidget::setSession(QvelSession* session)
{
    if (QvelSession* before = d->model->session())
        before->disconnect(this);
    d->model->setSession(session);
    if (session)
        connect(session, &QvelSession::stateChanged, this,
                [this] { tellWhyEmpty(d->table, d->model); });
    tellWhyEmpty(d->table, d->model);
}

QvelSession* QvelReferencesWidget::session() const
{
    return d->model->session();
}

QvelReferencesModel* QvelReferencesWidget::model() const
{
    return d->model;
}

QTableView* QvelReferencesWidget::view() const
{
    return d->table;
}

QString QvelReferencesWidget::nodeId() const
{
    return qvelNodeIdText(model()->node());
}

void QvelReferencesWidget::setNodeId(const QString& text)
{
    setNode(qvelParseNodeId(text).value_or(UaExpandedNodeId()));
}

void QvelReferencesWidget::setNode(const UaExpandedNodeId& id)
{
    d->model->setNode(id);
    tellWhyEmpty(d->table, d->model);
}

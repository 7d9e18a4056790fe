#include "addressspacewidget.h"

#include "base/focus_p.h"
#include "base/linehints_p.h"
#include "base/retranslate_p.h"
#include "base/showntext_p.h"
#include "base/viewhint_p.h"
#include "base/words_p.h"
#include "images/images_p.h"
#include "nodes/addressspacemodel.h"
#include "nodes/nodelink.h"
#include "nodes/nodesearch_p.h"
#include "nodes/statustext_p.h"

#include <QtCore/QLocale>
#include <QtCore/QMimeData>
#include <QtGui/QAction>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenu>
#include <QtWidgets/QToolButton>
#include <QtWidgets/QTreeView>
#include <QtWidgets/QVBoxLayout>

#include <functional>

constexpr qsizetype mostPlaces = 100; // of the way back
constexpr int updateInterval = 50;    // milliseconds, of what is told about a search

namespace {

/// A tree that knows when the current row moves by the keyboard.
class NodeTree : public HintedView<QTreeView>
{
public:
    using HintedView::HintedView;
    bool isMovedByKey = false;

protected:
    void keyPressEvent(QKeyEvent* event) override
    {
        if (event->modifiers().testFlag(Qt::AltModifier))
            return event->ignore(); // the way back, even where it is at its end
        isMovedByKey = true;
        QTreeView::keyPressEvent(event);
        isMovedByKey = false;
    }
    // The line below comes and goes, and does not cover the row that it speaks of.
    void resizeEvent(QResizeEvent* event) override
    {
        const QRect row = visualRect(currentIndex());
        const bool isShown = row.isValid() && row.bottom() < event->oldSize().height();
        QTreeView::resizeEvent(event);
        if (isShown)
            scrollTo(currentIndex());
    }
};

} // namespace

class QvelAddressSpaceWidget::Private
{
public:
    explicit Private(QvelAddressSpaceWidget* widget);

    QAction* addAction(const QKeySequence& shortcut, const std::function<void()>& function);
    QToolButton* addButton(QLayout* layout, QAction* action);
    void turnArrows();
    void show(const QModelIndex& index);
    void retranslate();
    void say(const Words& words);
    void sayOnce(const QString& text);
    void remember(const QModelIndex& index);
    void travel(qsizetype steps);
    void enterField();
    void goToHit(qsizetype hit);
    void nextHit();
    void previousHit();
    void tellSearch();
    QString searchText() const;
    QModelIndexList selection() const;
    void copy(QString (Private::*text)(const QModelIndex&) const);
    QString nodeIdText(const QModelIndex& index) const { return model->nodeIdText(index); }
    QString uriText(const QModelIndex& index) const { return qvelNodeIdText(model->nodeId(index)); }
    QString pathText(const QModelIndex& index) const { return model->browsePath(index); }
    QString nameText(const QModelIndex& index) const { return model->nodeLink(index).displayName; }
    void fillColumns(QMenu* menu);
    void popUp(const QPoint& position);

    QvelAddressSpaceWidget* const q;
    QvelAddressSpaceModel* const model;
    NodeSearch* const search;
    QWidget* const body;
    NodeTree* const tree;
    QLineEdit* const field;
    QWidget* const status;
    QLabel* const statusText;
    QMenu* const menu;
    QMenu* const columns;
    QAction* back = nullptr;
    QAction* forward = nullptr;
    QAction* refresh = nullptr;
    QAction* cancel = nullptr;
    QAction* find = nullptr;
    QAction* next = nullptr;
    QAction* previous = nullptr;
    QList<QAction*> copies;
    QToolButton* backButton = nullptr;
    QToolButton* forwardButton = nullptr;
    QToolButton* cancelButton = nullptr;
    QList<QWidget*> hitButtons;
    Words told; // in the line below the tree
    bool isToldOnce = false;
    QTimer searchTimer;

    QList<QList<UaExpandedNodeId>> places; // that were visited
    qsizetype place = -1;
    bool isTravelling = false; // on the way to a place
    bool isRecording = true;
    qsizetype hit = -1;
    bool wantsHit = false; // the next one is gone to when it is found
};

QvelAddressSpaceWidget::Private::Private(QvelAddressSpaceWidget* widget)
    : q(widget), model(new QvelAddressSpaceModel(widget)), search(new NodeSearch(widget)),
      body(new QWidget(widget)), tree(new NodeTree(body)), field(new QLineEdit(body)),
      status(new QWidget(body)), statusText(new QLabel(status)), menu(new QMenu(widget)),
      columns(new QMenu(menu))
{
    back = addAction(QKeySequence(Qt::ALT | Qt::Key_Left), [this] { travel(-1); });
    forward = addAction(QKeySequence(Qt::ALT | Qt::Key_Right), [this] { travel(1); });
    refresh = addAction(QKeySequence(Qt::Key_F5), [this] { model->refresh(); });
    refresh->setIcon(paletteIcon(QStringLiteral(":/kestrel/images/rebrowse.png")));
    next = addAction(QKeySequence(Qt::Key_F3), [this] { nextHit(); });
    previous = addAction(QKeySequence(Qt::SHIFT | Qt::Key_F3), [this] { previousHit(); });
    cancel = addAction(QKeySequence(Qt::Key_Escape), [this] { search->cancel(); });
    cancel->setEnabled(false); // Escape is for others
    find = addAction(QKeySequence::Find, [this] {
        field->setFocus();
        field->selectAll();
    });
    copies = {
        addAction(QKeySequence::Copy, [this] { copy(&Private::nodeIdText); }),
        addAction({}, [this] { copy(&Private::uriText); }),
        addAction({}, [this] { copy(&Private::pathText); }),
        addAction({}, [this] { copy(&Private::nameText); }),
    };

    auto* top = new QHBoxLayout;
    backButton = addButton(top, back);
    forwardButton = addButton(top, forward);
    QToolButton* refreshButton = addButton(top, refresh);
    top->addWidget(field);
    field->setClearButtonEnabled(true);
    top->setSpacing(2);

    auto* bottom = new QHBoxLayout(status);
    bottom->setContentsMargins({});
    bottom->addWidget(statusText, 1);
    statusText->setTextFormat(Qt::PlainText);
    statusText->setWordWrap(true);
    statusText->setMargin(2);
    statusText->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    statusText->setTextInteractionFlags(Qt::TextSelectableByMouse);
    QToolButton* up = addButton(bottom, previous);
    up->setArrowType(Qt::UpArrow);
    QToolButton* down = addButton(bottom, next);
    down->setArrowType(Qt::DownArrow);
    hitButtons = {up, down};
    cancelButton = addButton(bottom, cancel);
    cancelButton->setToolButtonStyle(Qt::ToolButtonTextOnly);
    status->hide();

    auto* all = new QVBoxLayout(q);
    all->setContentsMargins({});
    all->addWidget(body);
    auto* layout = new QVBoxLayout(body);
    layout->setContentsMargins({});
    layout->setSpacing(2);
    layout->addLayout(top);
    layout->addWidget(tree);
    layout->addWidget(status);

    tree->setModel(model);
    tree->setUniformRowHeights(true); // every text is one line
    tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    tree->setDragDropMode(QAbstractItemView::DragOnly);
    tree->setContextMenuPolicy(Qt::CustomContextMenu);
    QHeaderView* header = tree->header();
    header->setContextMenuPolicy(Qt::CustomContextMenu);
    header->setDefaultSectionSize(150);
    header->resizeSection(0, 260);
    for (const int column : {QvelAddressSpaceModel::BrowseName, QvelAddressSpaceModel::NodeClass,
                             QvelAddressSpaceModel::TypeDefinition})
        header->hideSection(column);
    turnArrows();
    tellSearch();
    QWidget* last = backButton;
    for (QWidget* each : std::initializer_list<QWidget*>{forwardButton, refreshButton, field, tree,
                                                         up, down, cancelButton})
        QWidget::setTabOrder(std::exchange(last, each), each);
    retranslated(q, [this] { retranslate(); });
}

void QvelAddressSpaceWidget::Private::retranslate()
{
    const std::pair<QAction*, QString> texts[] = {
        {back, tr("Back")},
        {forward, tr("Forward")},
        {refresh, tr("Refresh")},
        {next, tr("Next Hit")},
        {previous, tr("Previous Hit")},
        {cancel, tr("Cancel")},
        {find, tr("Find")},
        {copies[0], tr("Copy NodeId")},
        {copies[1], tr("Copy NodeId with Namespace URI")},
        {copies[2], tr("Copy Browse Path")},
        {copies[3], tr("Copy Name")},
    };
    for (const auto& [action, text] : texts)
        action->setText(text);
    const auto buttons = body->findChildren<QToolButton*>();
    for (QToolButton* button : buttons)
        if (button->defaultAction())
            button->setAccessibleName(button->defaultAction()->text());
    columns->setTitle(tr("Columns"));
    field->setPlaceholderText(tr("Find a name, or go to a NodeId or browse path"));
    field->setAccessibleName(tr("Find or go to"));
    field->setToolTip(field->placeholderText());
    tree->setAccessibleName(tr("Address space"));
    setViewHint(tree, tr("Not connected to a server."));
    say(isToldOnce ? Words() : Words(told));
}

QAction* QvelAddressSpaceWidget::Private::addAction(const QKeySequence& shortcut,
                                                    const std::function<void()>& function)
{
    auto* action = new QAction(body);
    action->setShortcut(shortcut);
    action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    body->addAction(action); // the actions of the widget itself are the host's
    QObject::connect(action, &QAction::triggered, q, function);
    return action;
}

QToolButton* QvelAddressSpaceWidget::Private::addButton(QLayout* layout, QAction* action)
{
    auto* button = new QToolButton(body);
    button->setDefaultAction(action);
    button->setAutoRaise(true);
    layout->addWidget(button);
    return button;
}

void QvelAddressSpaceWidget::Private::turnArrows()
{
    const bool isLeftToRight = q->layoutDirection() == Qt::LeftToRight;
    backButton->setArrowType(isLeftToRight ? Qt::LeftArrow : Qt::RightArrow);
    forwardButton->setArrowType(isLeftToRight ? Qt::RightArrow : Qt::LeftArrow);
}

void QvelAddressSpaceWidget::Private::show(const QModelIndex& index)
{
    for (QModelIndex above = index.parent(); above.isValid(); above = above.parent())
        tree->expand(above);
    isRecording = !std::exchange(isTravelling, false);
    tree->setCurrentIndex(index);
    tree->scrollTo(index);
    isRecording = true;
}

void QvelAddressSpaceWidget::Private::say(const Words& words)
{
    told = words;
    isToldOnce = false;
    const QString text = said(told);
    announce(statusText, shownText(text));
    statusText->setToolTip(shownToolTip(text));
    status->setVisible(!text.isEmpty());
}

// What cannot be said in another language.
void QvelAddressSpaceWidget::Private::sayOnce(const QString& text)
{
    say([text] { return text; });
    isToldOnce = true;
}

void QvelAddressSpaceWidget::Private::remember(const QModelIndex& index)
{
    if (isRecording && index.isValid() && model->flags(index).testFlag(Qt::ItemIsDragEnabled)) {
        // Rows that the keyboard goes over are not places to come back to.
        if (!tree->isMovedByKey || place < 0) {
            places.resize(++place);
            places.append(QList<UaExpandedNodeId>());
            if (places.size() > mostPlaces) {
                places.removeFirst();
                --place;
            }
        }
        places[place] = model->path(index);
    }
    back->setEnabled(place > 0);
    forward->setEnabled(place + 1 < places.size());
}

void QvelAddressSpaceWidget::Private::travel(qsizetype steps)
{
    if (place + steps < 0 || place + steps >= places.size())
        return;
    place += steps;
    isTravelling = true;
    say({});
    model->locatePath(QList(places[place]));
    remember({});
}

void QvelAddressSpaceWidget::Private::enterField()
{
    const QString text = field->text().trimmed();
    if (text.isEmpty())
        return;
    if (text.startsWith(u'/') || qvelParseNodeId(text))
        q->goToText(text);
    else if (text == search->text() && search->failure().isEmpty())
        nextHit();
    else
        q->find(text);
}

void QvelAddressSpaceWidget::Private::goToHit(qsizetype number)
{
    hit = number;
    wantsHit = false;
    isTravelling = false;
    tellSearch();
    model->locatePath(search->path(hit));
}

void QvelAddressSpaceWidget::Private::nextHit()
{
    if (hit + 1 < search->count())
        goToHit(hit + 1);
    else if (search->isRunning())
        wantsHit = true;
    else if (search->count() > 0)
        goToHit(0);
    else
        enterField();
}

void QvelAddressSpaceWidget::Private::previousHit()
{
    if (search->count() > 0)
        goToHit((std::max<qsizetype>(hit, 0) + search->count() - 1) % search->count());
}

void QvelAddressSpaceWidget::Private::tellSearch()
{
    cancel->setEnabled(search->isRunning());
    cancelButton->setVisible(search->isRunning());
    for (QWidget* button : std::as_const(hitButtons))
        button->setVisible(search->count() > 0);
    say([this] { return searchText(); });
}

QString QvelAddressSpaceWidget::Private::searchText() const
{
    const QLocale locale;
    const auto number = [&locale](qsizetype n) { return locale.toString(n); };
    if (search->text().isEmpty())
        return {};
    QString text;
    if (search->isRunning())
        text =
            tr("Looking for \"%1\" in %2 nodes: %3 found", "2 and 3 are numbers")
                .arg(shownText(search->text()), number(search->visited()), number(search->count()));
    else if (search->count() == 0)
        text = tr("\"%1\" was not found in %2 nodes")
                   .arg(shownText(search->text()), number(search->visited()));
    else
        text = tr("\"%1\": %2 of %3 hits in %4 nodes")
                   .arg(shownText(search->text()), number(hit + 1), number(search->count()),
                        number(search->visited()));
    if (!search->failure().isEmpty())
        text += QStringLiteral(". ") + search->failure();
    return text;
}

QModelIndexList QvelAddressSpaceWidget::Private::selection() const
{
    QModelIndexList rows = tree->selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end(), [this](const QModelIndex& a, const QModelIndex& b) {
        return tree->visualRect(a).top() < tree->visualRect(b).top();
    });
    return rows;
}

void QvelAddressSpaceWidget::Private::copy(QString (Private::*text)(const QModelIndex&) const)
{
    const QModelIndexList rows = selection();
    if (rows.isEmpty())
        return;
    QStringList lines;
    for (const QModelIndex& row : rows) {
        const bool isNode = model->flags(row).testFlag(Qt::ItemIsDragEnabled);
        lines.append((this->*(isNode ? text : &Private::nameText))(row));
    }
    QMimeData* data = model->mimeData(rows); // for other views, besides the text
    if (!data)
        data = new QMimeData;
    data->setText(lines.join(u'\n'));
    QGuiApplication::clipboard()->setMimeData(data);
}

void QvelAddressSpaceWidget::Private::fillColumns(QMenu* target)
{
    target->clear();
    for (int column = 1; column < QvelAddressSpaceModel::ColumnCount; ++column) {
        QAction* action = target->addAction(model->headerData(column, Qt::Horizontal).toString());
        action->setCheckable(true);
        action->setChecked(!tree->isColumnHidden(column));
        QObject::connect(action, &QAction::toggled, tree,
                         [this, column](bool on) { tree->setColumnHidden(column, !on); });
    }
}

void QvelAddressSpaceWidget::Private::popUp(const QPoint& position)
{
    menu->clear();
    menu->addActions(copies);
    menu->addSeparator();
    menu->addAction(refresh);
    fillColumns(columns);
    menu->addMenu(columns);
    if (!q->actions().isEmpty()) {
        menu->addSeparator();
        menu->addActions(q->actions());
    }
    menu->popup(tree->viewport()->mapToGlobal(position));
}

QvelAddressSpaceWidget::QvelAddressSpaceWidget(QWidget* parent)
    : QWidget(parent), d(std::make_unique<Private>(this))
{
    passFocusOn(this, d->tree);
    connect(d->field, &QLineEdit::returnPressed, this, [this] { d->enterField(); });
    connect(d->model, &QvelAddressSpaceModel::located, this,
            [this](const QModelIndex& index) { d->show(index); });
    connect(d->model, &QvelAddressSpaceModel::locateFailed, this, [this](const QString& reason) {
        d->isTravelling = false;
        d->sayOnce(reason);
    });
    connect(d->model, &QvelAddressSpaceModel::staleChanged, this,
            [this](bool isStale) { d->say(isStale ? Words(staleSentence) : Words()); });
    connect(d->model, &QAbstractItemModel::rowsInserted, this, [this](const QModelIndex& parent) {
        if (!parent.isValid())
            d->tree->expand(d->model->index(0, 0));
    });
    connect(d->tree->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& index) {
                d->remember(index);
                Q_EMIT currentNodeChanged(d->model->nodeId(index));
            });
    connect(d->tree, &QAbstractItemView::activated, this, [this](const QModelIndex& index) {
        if (d->model->flags(index).testFlag(Qt::ItemIsDragEnabled))
            QMetaObject::invokeMethod(
                this, [this, id = d->model->nodeId(index)] { Q_EMIT nodeActivated(id); },
                Qt::QueuedConnection);
    });
    connect(d->tree, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& position) { d->popUp(position); });
    connect(d->tree->header(), &QWidget::customContextMenuRequested, this,
            [this](const QPoint& position) {
                d->fillColumns(d->columns);
                d->columns->popup(d->tree->header()->mapToGlobal(position));
            });
    d->searchTimer.setSingleShot(true);
    d->searchTimer.setInterval(updateInterval);
    d->searchTimer.callOnTimeout(this, [this] { d->tellSearch(); });
    connect(d->search, &NodeSearch::changed, this, [this] {
        if (d->wantsHit && d->hit + 1 < d->search->count())
            d->goToHit(d->hit + 1);
        if (!d->search->isRunning())
            d->tellSearch();
        else if (!d->searchTimer.isActive())
            d->searchTimer.start();
    });
    d->remember({});
}

QvelAddressSpaceWidget::~QvelAddressSpaceWidget()
{
    d->tree->selectionModel()->disconnect(this); // rows go while the widget goes
}

void QvelAddressSpaceWidget::setSession(QvelSession* session)
{
    d->search->clear();
    d->tellSearch();
    d->places.clear();
    d->place = -1;
    d->model->setSession(session);
    d->remember({});
}

QvelSession* QvelAddressSpaceWidget::session() const
{
    return d->model->session();
}

QString QvelAddressSpaceWidget::rootNodeId() const
{
    return qvelNodeIdText(model()->rootNode());
}

void QvelAddressSpaceWidget::setRootNodeId(const QString& text)
{
    model()->setRootNode(qvelParseNodeId(text).value_or(UaExpandedNodeId()));
}

QvelAddressSpaceModel* QvelAddressSpaceWidget::model() const
{
    return d->model;
}

QTreeView* QvelAddressSpaceWidget::view() const
{
    return d->tree;
}

UaExpandedNodeId QvelAddressSpaceWidget::currentNode() const
{
    return d->model->nodeId(d->tree->currentIndex());
}

void QvelAddressSpaceWidget::goTo(const UaExpandedNodeId& id)
{
    d->isTravelling = false;
    d->say({});
    d->model->locate(id);
}

void QvelAddressSpaceWidget::goToText(const QString& text)
{
    d->isTravelling = false;
    d->say({});
    d->model->locateText(text);
}

void QvelAddressSpaceWidget::find(const QString& text)
{
    d->hit = -1;
    d->wantsHit = true;
    d->search->start(session(), d->model->rootNode(), text);
    d->tellSearch();
}

void QvelAddressSpaceWidget::goBack()
{
    d->travel(-1);
}

void QvelAddressSpaceWidget::goForward()
{
    d->travel(1);
}

void QvelAddressSpaceWidget::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange)
        d->turnArrows();
}

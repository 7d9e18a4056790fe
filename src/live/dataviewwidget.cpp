#include "dataviewwidget.h"

#include "base/linehints_p.h"
#include "base/retranslate_p.h"
#include "base/settingscbinterface.h"
#include "base/showntext_p.h"
#include "live/dataviewmodel.h"
#include "live/dataviewtable_p.h"
#include "session/session.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QMetaEnum>
#include <QtCore/QPointer>
#include <QtCore/QSet>
#include <QtGui/QAction>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QBoxLayout>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenu>
#include <QtWidgets/QTabBar>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QToolButton>

#include <map>
#include <utility>

namespace {

constexpr int version = 1;
constexpr qsizetype mostClosed = 10;
constexpr qsizetype mostStored = 64 * 1024 * 1024; // characters
constexpr int mostAside = 9;

constexpr QLatin1String versionKey("version");
constexpr QLatin1String currentKey("current");
constexpr QLatin1String listsKey("lists");
constexpr QLatin1String hiddenKey("hiddenColumns");

// A line of text that does not ask for room.
constexpr int mostLines = 3; // of a message

QLabel* createLine(QWidget* parent)
{
    auto* label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setMaximumHeight(mostLines * label->fontMetrics().lineSpacing());
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

void setLine(QLabel* label, const QString& text)
{
    announce(label, shownText(text));
    label->setToolTip(shownToolTip(text));
    label->setVisible(!text.isEmpty());
}

QMetaEnum columnNames()
{
    return QMetaEnum::fromType<QvelDataViewModel::Column>();
}

// The settings store, as long as this is there.
class OpenSettings
{
public:
    explicit OpenSettings(QvelSettingsCBInterface* settings)
        : m_settings(settings), m_handle(settings->openSettings())
    {
    }
    ~OpenSettings() { m_settings->closeSettings(m_handle); }
    Q_DISABLE_COPY_MOVE(OpenSettings)
    QVariant read(const QString& key) const { return m_settings->readSetting(m_handle, key); }
    void write(const QString& key, const QVariant& value) const
    {
        m_settings->writeSetting(m_handle, key, value);
    }

private:
    QvelSettingsCBInterface* const m_settings;
    void* const m_handle;
};

bool isReadable(const QJsonObject& json)
{
    const double written = json.value(versionKey).toDouble(-1);
    return json.value(listsKey).isArray() && written >= 1 && written <= version;
}

// Empty for what is no state.
QJsonObject storedState(const QVariant& stored)
{
    const bool isText =
        stored.userType() == QMetaType::QString || stored.userType() == QMetaType::QByteArray;
    const QString text = isText ? stored.toString() : QString();
    return text.size() > mostStored ? QJsonObject()
                                    : QJsonDocument::fromJson(text.toUtf8()).object();
}

QString stateKey(const QString& group)
{
    return group + QStringLiteral("/DataView");
}

} // namespace

class QvelDataViewWidget::Private : public QObject
{
    Q_DECLARE_TR_FUNCTIONS(QvelDataViewWidget)
public:
    explicit Private(QvelDataViewWidget* widget);

    DataViewTable* table(int index) const
    {
        return static_cast<DataViewTable*>(tabs->widget(index));
    }
    DataViewTable* current() const { return table(tabs->currentIndex()); }
    DataViewTable* insertList(const QString& name);
    void setInitial(QvelDataViewModel::Column column, double value);
    void showName(int index);
    void editName(int index);
    void closeList(int index);
    void reopenList();
    void addTyped();
    void record();
    void retranslate();
    void update();
    void tabMenu(const QPoint& position);
    void tableMenu(const QPoint& position);
    void fillColumns(QMenu* menu);
    void columnMenu(const QPoint& position);
    void hideColumn(int column, bool hidden);
    QString recordingText() const;
    bool eventFilter(QObject* watched, QEvent* event) override;

    QvelDataViewWidget* const q;
    QPointer<QvelSession> session;
    QTabWidget* tabs;
    QLineEdit* nodeId;
    QLabel* message;
    QLabel* recording;
    QAction* add;
    QAction* pause;
    QAction* recordAction;
    QAction* remove;
    QAction* copy;
    QAction* paste;
    QAction* newList;
    QToolButton* plus;
    QList<QJsonObject> closed; // the last one at the end
    QSet<int> hiddenColumns;
    std::map<QvelDataViewModel::Column, double> initial; // of the lists

    QJsonObject saved; // as it was read
    QJsonArray unreadLists;
    QJsonArray unreadColumns;
};

QvelDataViewWidget::Private::Private(QvelDataViewWidget* widget) : q(widget)
{
    nodeId = new QLineEdit(q);
    nodeId->setObjectName(QStringLiteral("nodeId"));
    nodeId->setClearButtonEnabled(true);
    auto* bar = new QHBoxLayout;
    bar->addWidget(nodeId, 1);
    const auto addAction = [&](const QString& name) {
        auto* action = new QAction(q);
        action->setObjectName(name);
        auto* button = new QToolButton(q);
        button->setDefaultAction(action);
        button->setFocusPolicy(Qt::StrongFocus);
        button->setObjectName(name + QStringLiteral("Button"));
        bar->addWidget(button);
        return action;
    };
    add = addAction(QStringLiteral("add"));
    pause = addAction(QStringLiteral("pause"));
    pause->setCheckable(true);
    recordAction = addAction(QStringLiteral("record"));
    recordAction->setCheckable(true);
    remove = addAction(QStringLiteral("remove"));
    copy = new QAction(q);
    paste = new QAction(q);

    tabs = new QTabWidget(q);
    tabs->setDocumentMode(true);
    tabs->setMovable(true);
    tabs->setTabsClosable(true);
    tabs->setElideMode(Qt::ElideRight);
    tabs->tabBar()->setContextMenuPolicy(Qt::CustomContextMenu);
    tabs->tabBar()->installEventFilter(this);
    newList = new QAction(QStringLiteral("+"), q);
    plus = new QToolButton(tabs);
    plus->setDefaultAction(newList);
    plus->setAutoRaise(true);
    plus->setFocusPolicy(Qt::StrongFocus);
    plus->setObjectName(QStringLiteral("newListButton"));
    tabs->setCornerWidget(plus);

    message = createLine(q);
    message->setObjectName(QStringLiteral("message"));
    recording = createLine(q);
    recording->setObjectName(QStringLiteral("recording"));
    auto* layout = new QVBoxLayout(q);
    layout->setContentsMargins({});
    layout->addLayout(bar);
    layout->addWidget(tabs, 1);
    layout->addWidget(message);
    layout->addWidget(recording);

    connect(nodeId, &QLineEdit::returnPressed, this, &Private::addTyped);
    connect(nodeId, &QLineEdit::textChanged, this, [this] {
        setLine(message, {});
        update();
    });
    connect(add, &QAction::triggered, this, &Private::addTyped);
    connect(pause, &QAction::triggered, this,
            [this](bool paused) { current()->list()->setPaused(paused); });
    connect(recordAction, &QAction::triggered, this, &Private::record);
    connect(remove, &QAction::triggered, this, [this] { current()->removeSelected(); });
    connect(copy, &QAction::triggered, this, [this] { current()->copySelected(); });
    connect(paste, &QAction::triggered, this, [this] { current()->paste(); });
    connect(newList, &QAction::triggered, this, [this] { q->addList(); });
    connect(tabs, &QTabWidget::currentChanged, this, [this] {
        setLine(message, {});
        update();
    });
    connect(tabs, &QTabWidget::tabCloseRequested, this, &Private::closeList);
    connect(tabs, &QTabWidget::tabBarDoubleClicked, this, &Private::editName);
    connect(tabs->tabBar(), &QWidget::customContextMenuRequested, this, &Private::tabMenu);
}

void QvelDataViewWidget::Private::retranslate()
{
    nodeId->setPlaceholderText(tr("NodeId, such as nsu=urn:plant;s=Pump"));
    nodeId->setAccessibleName(tr("NodeId of a variable to add"));
    add->setText(tr("Add"));
    add->setToolTip(tr("Add this variable to the list"));
    pause->setText(tr("Pause"));
    pause->setToolTip(tr("Let what is shown stand still; a recording goes on"));
    recordAction->setToolTip(tr("Write each value to a CSV file as it comes"));
    remove->setText(tr("Remove"));
    remove->setToolTip(tr("Remove the selected rows from the list (Del)"));
    copy->setText(tr("Copy"));
    paste->setText(tr("Paste"));
    tabs->tabBar()->setAccessibleName(tr("Lists"));
    newList->setToolTip(tr("New list"));
    plus->setAccessibleName(newList->toolTip());
    for (int i = 0; i < tabs->count(); ++i)
        showName(i);
    setLine(message, {}); // it was said in the language before
    update();
}

DataViewTable* QvelDataViewWidget::Private::insertList(const QString& name)
{
    auto* model = new QvelDataViewModel;
    auto* view = new DataViewTable(model, tabs);
    model->setSession(session);
    for (const auto& [column, value] : initial)
        model->setInitialParameter(column, value);
    QString text = name;
    for (int number = 1; text.isEmpty(); ++number) {
        text = tr("List %1").arg(number);
        for (const QvelDataViewModel* each : q->models()) {
            if (each->name() == text)
                text.clear();
        }
    }
    model->setName(text);
    for (int column : std::as_const(hiddenColumns))
        view->setColumnHidden(column, true);
    connect(view, &DataViewTable::messageChanged, this,
            [this](const QString& words) { setLine(message, words); });
    connect(model, &QvelDataViewModel::inputRejected, this,
            [this](const QString& words) { setLine(message, words); });
    connect(model, &QvelDataViewModel::recordingChanged, this, &Private::update);
    const auto activate = [this](const QModelIndex& index) {
        const auto id = index.data(QvelDataViewModel::NodeIdRole).value<UaExpandedNodeId>();
        if (!id.nodeId().isNull()) // once the table is done with it: the host may delete it
            QMetaObject::invokeMethod(
                q, [this, id] { Q_EMIT q->variableActivated(id); }, Qt::QueuedConnection);
    };
    connect(view, &QAbstractItemView::activated, this, activate);
    connect(view->selectionModel(), &QItemSelectionModel::currentRowChanged, this, activate);
    connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, this, &Private::update);
    connect(view, &QWidget::customContextMenuRequested, this, &Private::tableMenu);
    connect(view->horizontalHeader(), &QWidget::customContextMenuRequested, this,
            &Private::columnMenu);
    const int index = tabs->addTab(view, QString());
    showName(index);
    return view;
}

void QvelDataViewWidget::Private::showName(int index)
{
    const QString name = table(index)->list()->name();
    tabs->setTabText(index, shownText(name).replace(QLatin1Char('&'), QLatin1String("&&")));
    tabs->setTabToolTip(index, shownToolTip(name));
    table(index)->setAccessibleName(tr("Values of %1").arg(shownText(name)));
}

// In the place of the tab.
void QvelDataViewWidget::Private::editName(int index)
{
    if (index < 0)
        return;
    auto* edit = new QLineEdit(table(index)->list()->name(), tabs->tabBar());
    edit->setObjectName(QStringLiteral("listName"));
    edit->setAccessibleName(tr("Name of the list"));
    const QRect place = tabs->tabBar()->tabRect(index);
    edit->setGeometry(place.x(), place.y(),
                      std::max(place.width(), 12 * edit->fontMetrics().averageCharWidth()),
                      place.height());
    edit->selectAll();
    edit->installEventFilter(this);
    const QPointer<DataViewTable> renamed(table(index));
    connect(edit, &QLineEdit::editingFinished, this, [this, edit, renamed] {
        edit->disconnect(this);
        if (renamed && !edit->text().isEmpty())
            q->renameList(tabs->indexOf(renamed), edit->text());
        edit->deleteLater();
        if (edit->hasFocus())
            current()->setFocus();
    });
    edit->show();
    edit->setFocus();
}

bool QvelDataViewWidget::Private::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress)
        return false;
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (watched == tabs->tabBar() && key == Qt::Key_F2) {
        editName(tabs->currentIndex());
        return true;
    }
    if (watched != tabs->tabBar() && key == Qt::Key_Escape) { // a name that is edited
        watched->disconnect(this);
        watched->deleteLater();
        current()->setFocus();
        return true;
    }
    return false;
}

void QvelDataViewWidget::Private::closeList(int index)
{
    if (index < 0 || index >= tabs->count())
        return;
    DataViewTable* view = table(index);
    if (view->list()->rowCount() > 0)
        closed.append(view->list()->toJson());
    if (closed.size() > mostClosed)
        closed.removeFirst();
    if (tabs->count() == 1)
        insertList({});
    tabs->removeTab(index);
    view->list()->stopRecording();
    view->deleteLater();
    update();
}

void QvelDataViewWidget::Private::reopenList()
{
    if (closed.isEmpty() || tabs->count() >= mostLists)
        return;
    DataViewTable* view = insertList({});
    view->list()->fromJson(closed.takeLast());
    showName(tabs->indexOf(view));
    tabs->setCurrentWidget(view);
}

void QvelDataViewWidget::Private::addTyped()
{
    const QString text = nodeId->text().trimmed();
    if (text.isEmpty())
        return;
    const auto id = qvelParseNodeId(text);
    if (!id)
        return setLine(message, tr("\"%1\" is no NodeId. Examples: i=2258, ns=2;s=Pump, "
                                   "nsu=urn:plant;s=Pump")
                                    .arg(text));
    nodeId->clear();
    current()->list()->addNodes({{*id, QString()}});
}

void QvelDataViewWidget::Private::record()
{
    const QPointer<QvelDataViewModel> model = current()->list();
    update(); // the button follows what is
    if (model->isRecording())
        return model->stopRecording();
    auto* dialog = new QFileDialog(q, tr("Record to a CSV file"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setNameFilters({tr("CSV files (*.csv)"), tr("All files (*)")});
    dialog->setDefaultSuffix(QStringLiteral("csv"));
    connect(dialog, &QFileDialog::fileSelected, this, [model](const QString& file) {
        if (model)
            model->startRecording(file);
    });
    dialog->open();
}

QString QvelDataViewWidget::Private::recordingText() const
{
    const QvelDataViewModel* model = current()->list();
    const QString file = model->recordingFile();
    const QString lines = QLocale().toString(model->recordedLines());
    if (file.isEmpty())
        return {};
    if (!model->recordingError().isEmpty())
        return tr("Recording stopped: %1. %2 lines are in %3")
            .arg(model->recordingError(), lines, file);
    return (model->isRecording() ? tr("Recording: %1 lines in %2") : tr("Recorded: %1 lines in %2"))
        .arg(lines, file);
}

void QvelDataViewWidget::Private::update()
{
    if (!current())
        return; // while it is built
    const QvelDataViewModel* model = current()->list();
    pause->setChecked(model->isPaused());
    recordAction->setChecked(model->isRecording());
    recordAction->setText(model->isRecording() ? tr("Stop recording") : tr("Record..."));
    add->setEnabled(!nodeId->text().trimmed().isEmpty());
    remove->setEnabled(current()->selectionModel()->hasSelection());
    copy->setEnabled(remove->isEnabled());
    setLine(recording, recordingText());
}

void QvelDataViewWidget::Private::tabMenu(const QPoint& position)
{
    const int at = tabs->tabBar()->tabAt(position);
    const int index = at < 0 ? tabs->currentIndex() : at;
    auto* menu = new QMenu(q);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(tr("New list"), newList, &QAction::trigger);
    menu->addAction(tr("Rename"), this, [this, index] { editName(index); });
    menu->addAction(tr("Close"), this, [this, index] { closeList(index); });
    menu->addAction(tr("Reopen closed list"), this, &Private::reopenList)
        ->setEnabled(!closed.isEmpty());
    menu->popup(tabs->tabBar()->mapToGlobal(position));
}

void QvelDataViewWidget::Private::tableMenu(const QPoint& position)
{
    auto* menu = new QMenu(q);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addActions({copy, paste, remove});
    menu->addSeparator();
    menu->addActions({pause, recordAction});
    menu->addSeparator();
    fillColumns(menu->addMenu(tr("Columns")));
    menu->popup(current()->viewport()->mapToGlobal(position));
}

void QvelDataViewWidget::Private::columnMenu(const QPoint& position)
{
    auto* menu = new QMenu(q);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    fillColumns(menu);
    menu->popup(current()->horizontalHeader()->mapToGlobal(position));
}

void QvelDataViewWidget::Private::fillColumns(QMenu* menu)
{
    for (int column = 0; column < QvelDataViewModel::ColumnCount; ++column) {
        QAction* action =
            menu->addAction(current()->list()->headerData(column, Qt::Horizontal).toString());
        action->setCheckable(true);
        action->setChecked(!hiddenColumns.contains(column));
        action->setEnabled(column != QvelDataViewModel::Name);
        connect(action, &QAction::triggered, this,
                [this, column](bool shown) { hideColumn(column, !shown); });
    }
}

void QvelDataViewWidget::Private::hideColumn(int column, bool hidden)
{
    if (hidden)
        hiddenColumns.insert(column);
    else
        hiddenColumns.remove(column);
    for (int i = 0; i < tabs->count(); ++i)
        table(i)->setColumnHidden(column, hidden);
}

// --- The widget ----------------------------------------------------------------------------------

QvelDataViewWidget::QvelDataViewWidget(QWidget* parent)
    : QWidget(parent), d(std::make_unique<Private>(this))
{
    d->insertList({});
    retranslated(this, [this] { d->retranslate(); });
}

QvelDataViewWidget::~QvelDataViewWidget() = default;

void QvelDataViewWidget::setSession(QvelSession* session)
{
    d->session = session;
    for (QvelDataViewModel* model : models())
        model->setSession(session);
}

QvelSession* QvelDataViewWidget::session() const
{
    return d->session;
}

QvelDataViewModel* QvelDataViewWidget::model() const
{
    return d->current()->list();
}

QList<QvelDataViewModel*> QvelDataViewWidget::models() const
{
    QList<QvelDataViewModel*> all;
    for (int i = 0; i < d->tabs->count(); ++i)
        all.append(d->table(i)->list());
    return all;
}

QvelDataViewModel* QvelDataViewWidget::addList(const QString& name)
{
    if (d->tabs->count() >= mostLists) {
        setLine(d->message, tr("There are %1 lists, and no room for more.").arg(mostLists));
        return nullptr;
    }
    DataViewTable* view = d->insertList(name);
    d->tabs->setCurrentWidget(view);
    return view->list();
}

void QvelDataViewWidget::closeList(int index)
{
    d->closeList(index);
}

void QvelDataViewWidget::renameList(int index, const QString& name)
{
    if (index < 0 || index >= d->tabs->count())
        return;
    d->table(index)->list()->setName(name);
    d->showName(index);
}

void QvelDataViewWidget::Private::setInitial(QvelDataViewModel::Column column, double value)
{
    for (QvelDataViewModel* each : q->models())
        each->setInitialParameter(column, value);
    initial[column] = q->model()->initialParameter(column);
}

double QvelDataViewWidget::samplingInterval() const
{
    return model()->initialParameter(QvelDataViewModel::SamplingInterval);
}

void QvelDataViewWidget::setSamplingInterval(double interval)
{
    d->setInitial(QvelDataViewModel::SamplingInterval, interval);
}

double QvelDataViewWidget::publishingInterval() const
{
    return model()->initialParameter(QvelDataViewModel::PublishingInterval);
}

void QvelDataViewWidget::setPublishingInterval(double interval)
{
    d->setInitial(QvelDataViewModel::PublishingInterval, interval);
}

quint32 QvelDataViewWidget::queueSize() const
{
    return quint32(model()->initialParameter(QvelDataViewModel::QueueSize));
}

void QvelDataViewWidget::setQueueSize(quint32 size)
{
    d->setInitial(QvelDataViewModel::QueueSize, size);
}

void QvelDataViewWidget::addNodes(const QList<QvelNodeLink>& nodes)
{
    model()->addNodes(nodes);
}

QJsonObject QvelDataViewWidget::toJson() const
{
    QJsonArray lists;
    for (const QvelDataViewModel* model : models())
        lists.append(model->toJson());
    for (const QJsonValue list : std::as_const(d->unreadLists))
        lists.append(list);
    QJsonArray hidden = d->unreadColumns;
    for (int column = 0; column < QvelDataViewModel::ColumnCount; ++column) {
        if (d->hiddenColumns.contains(column))
            hidden.append(QLatin1String(columnNames().valueToKey(column)));
    }
    QJsonObject json = d->saved;
    json.insert(versionKey, version);
    json.insert(currentKey, d->tabs->currentIndex());
    json.insert(hiddenKey, hidden);
    json.insert(listsKey, lists);
    return json;
}

bool QvelDataViewWidget::fromJson(const QJsonObject& json)
{
    if (!isReadable(json))
        return false;
    while (d->tabs->count() > 0) {
        DataViewTable* view = d->table(0);
        d->tabs->removeTab(0);
        delete view;
    }
    d->saved = json;
    d->unreadLists = d->unreadColumns = {};
    d->hiddenColumns.clear();
    const QJsonArray hidden = json.value(hiddenKey).toArray();
    for (const QJsonValue name : hidden) {
        bool ok = false;
        const int column = columnNames().keyToValue(name.toString().toLatin1(), &ok);
        if (ok && column > QvelDataViewModel::Name && column < QvelDataViewModel::ColumnCount)
            d->hiddenColumns.insert(column);
        else
            d->unreadColumns.append(name);
    }
    const QJsonArray lists = json.value(listsKey).toArray();
    for (const QJsonValue list : lists) {
        DataViewTable* view = d->tabs->count() < mostLists ? d->insertList({}) : nullptr;
        if (view && view->list()->fromJson(list.toObject())) {
            d->showName(d->tabs->indexOf(view));
            continue;
        }
        delete view;
        d->unreadLists.append(list);
    }
    if (d->tabs->count() == 0)
        d->insertList({});
    d->tabs->setCurrentIndex(json.value(currentKey).toInt());
    d->update();
    return true;
}

bool QvelDataViewWidget::saveState(QvelSettingsCBInterface* settings, const QString& group)
{
    const OpenSettings store(settings);
    const QVariant before = store.read(stateKey(group));
    if (before.isValid() && !isReadable(storedState(before))) {
        int number = 1;
        const auto aside = [&] { return group + QStringLiteral("/DataViewUnread%1").arg(number); };
        while (number <= mostAside && store.read(aside()).isValid())
            ++number;
        if (number > mostAside)
            return false;
        store.write(aside(), before);
    }
    store.write(stateKey(group),
                QString::fromUtf8(QJsonDocument(toJson()).toJson(QJsonDocument::Compact)));
    return true;
}

bool QvelDataViewWidget::restoreState(QvelSettingsCBInterface* settings, const QString& group)
{
    const QVariant stored = OpenSettings(settings).read(stateKey(group));
    if (!stored.isValid() || fromJson(storedState(stored)))
        return true;
    setLine(d->message, tr("The stored lists cannot be read; they are kept."));
    return false;
}

#include "callwidget.h"

#include "base/focus_p.h"
#include "base/linehints_p.h"
#include "base/retranslate_p.h"
#include "base/showntext_p.h"
#include "base/viewhint_p.h"
#include "base/words_p.h"
#include "live/argumentsmodel_p.h"
#include "nodes/nodelink.h"
#include "nodes/statustext_p.h"
#include "nodes/valuedelegate_p.h"
#include "platform/stack/opcuastatuscodes.h"
#include "session/session.h"
#include "session/whendone_p.h"

#include <QtCore/QPointer>
#include <QtCore/QTime>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

namespace {

constexpr OpcUa_UInt32 hasProperty = 46;

struct PastCall
{
    QString text;
    QList<UaVariant> inputs;
};

// The calls of a session, the last one first.
class CallHistory : public QObject
{
    Q_OBJECT
public:
    static CallHistory* of(QvelSession* session)
    {
        auto* history = session->findChild<CallHistory*>(QString(), Qt::FindDirectChildrenOnly);
        return history ? history : new CallHistory(session);
    }
    QList<PastCall> calls(const QString& method) const { return m_calls.value(method); }
    void add(const QString& method, const PastCall& call)
    {
        constexpr qsizetype most = 20;
        QList<PastCall>& calls = m_calls[method];
        calls.removeIf([&call](const PastCall& past) { return past.inputs == call.inputs; });
        calls.prepend(call);
        calls = calls.mid(0, most);
    }

private:
    explicit CallHistory(QObject* session) : QObject(session) {}
    QHash<QString, QList<PastCall>> m_calls;
};

QLabel* plainLabel(bool wraps)
{
    auto* label = new QLabel;
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(wraps);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

} // namespace

class QvelCallWidget::Private
{
public:
    explicit Private(QvelCallWidget* widget);

    bool isConnected() const { return session && session->state() == QvelSession::Connected; }
    QString methodKey() const { return qvelNodeIdText(object) + '\n' + qvelNodeIdText(method); }
    static ValueList* makeList(ArgumentsModel* model);
    void forget();
    void load();
    void takeMethod(const QvelReadResult& result);
    void takeProperties(const QvelBrowseResult& result);
    void takeArguments(ArgumentsModel* model, UaVariant* known, const UaVariant& value);
    void findTypes(ArgumentsModel* model, const QList<QvelArgument>& arguments);
    void finish(const QvelCallResult& result, const QList<UaVariant>& arguments);
    void showHistory();
    QString pastTitle() const;
    void update();
    void tell(const Words& words);
    void retranslate();

    QvelCallWidget* const q;
    QPointer<QvelSession> session;
    UaExpandedNodeId object;
    UaExpandedNodeId method;
    ArgumentsModel* const inputs;
    ArgumentsModel* const outputs;
    UaVariant knownInputs; // InputArguments, as the server sent it
    UaVariant knownOutputs;
    QList<PastCall> history; // as the box shows it
    Words message;           // what became of the last call
    QFuture<QvelCallResult> pending;
    bool isKnown = false; // whether the server has told the arguments
    bool isAllowed = true;
    bool isCalling = false;
    quint64 question = 0; // answers to an earlier one are dropped
    quint64 turn = 0;     // of calls

    QLabel* const name;
    QLabel* const description;
    QLabel* const pastLabel;
    QComboBox* const past;
    QLabel* const inputLabel;
    ValueList* const inputList;
    QLabel* const outputLabel;
    ValueList* const outputList;
    QPushButton* const callButton;
    QPushButton* const cancelButton;
    QLabel* const status;
};

QvelCallWidget::Private::Private(QvelCallWidget* widget)
    : q(widget), inputs(new ArgumentsModel(ArgumentsModel::Input, widget)),
      outputs(new ArgumentsModel(ArgumentsModel::Output, widget)), name(plainLabel(false)),
      description(plainLabel(true)), pastLabel(new QLabel), past(new QComboBox),
      inputLabel(new QLabel), inputList(makeList(inputs)), outputLabel(new QLabel),
      outputList(makeList(outputs)), callButton(new QPushButton), cancelButton(new QPushButton),
      status(plainLabel(true))
{
    QFont bold = name->font();
    bold.setBold(true);
    name->setFont(bold);
    past->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    // Enter in an argument's editor is not to call the method.
    callButton->setAutoDefault(false);
    cancelButton->setAutoDefault(false);

    auto* row = new QHBoxLayout;
    row->addWidget(callButton);
    row->addWidget(cancelButton);
    row->addWidget(status, 1);
    inputLabel->setBuddy(inputList);
    pastLabel->setBuddy(past);
    auto* pastRow = new QHBoxLayout;
    pastRow->addWidget(pastLabel);
    pastRow->addWidget(past, 1);
    outputLabel->setBuddy(outputList);
    auto* layout = new QVBoxLayout(q);
    layout->addWidget(name);
    layout->addWidget(description);
    layout->addLayout(pastRow);
    layout->addWidget(inputLabel);
    layout->addWidget(inputList, 1);
    layout->addLayout(row);
    layout->addWidget(outputLabel);
    layout->addWidget(outputList, 1);
    passFocusOn(q, inputList);

    QObject::connect(callButton, &QPushButton::clicked, q, &QvelCallWidget::call);
    QObject::connect(cancelButton, &QPushButton::clicked, q, &QvelCallWidget::cancel);
    QObject::connect(past, &QComboBox::activated, q, [this](int index) {
        if (index > 0 && index <= history.size())
            inputs->setValues(history[index - 1].inputs);
    });
}

void QvelCallWidget::Private::retranslate()
{
    past->setAccessibleName(tr("Earlier calls"));
    status->setAccessibleName(tr("Result"));
    inputList->setAccessibleName(tr("Input arguments"));
    outputList->setAccessibleName(tr("Output arguments"));
    inputLabel->setText(tr("&Input arguments:"));
    pastLabel->setText(tr("&Earlier calls:"));
    outputLabel->setText(tr("&Output arguments:"));
    callButton->setText(tr("C&all"));
    callButton->setShortcut(Qt::CTRL | Qt::Key_Return); // a new text takes the old one away
    callButton->setToolTip(
        tr("Call the method (%1)").arg(callButton->shortcut().toString(QKeySequence::NativeText)));
    cancelButton->setText(tr("Ca&ncel Call"));
    if (past->count() > 0)
        past->setItemText(0, pastTitle());
    update();
}

QString QvelCallWidget::Private::pastTitle() const
{
    return history.isEmpty() ? tr("None yet") : tr("Choose one to fill in its arguments");
}

ValueList* QvelCallWidget::Private::makeList(ArgumentsModel* model)
{
    auto* list = new ValueList(ArgumentsModel::ValueColumn);
    constexpr int nameWidth = 18; // average characters
    constexpr int typeWidth = 16;
    constexpr int valueWidth = 30;
    list->setModel(model);
    const int average = list->fontMetrics().averageCharWidth();
    int column = 0;
    for (int width : {nameWidth, typeWidth, valueWidth})
        list->header()->resizeSection(column++, width * average);
    return list;
}

// Nothing is known of the method any more.
void QvelCallWidget::Private::forget()
{
    ++question;
    q->cancel();
    isKnown = false;
    isAllowed = true;
    knownInputs.clear();
    knownOutputs.clear();
    inputs->setArguments({});
    outputs->setArguments({});
    tell(nullptr);
    name->setText(method == UaExpandedNodeId() ? QString() : shownText(qvelNodeIdText(method)));
    description->clear();
}

void QvelCallWidget::Private::load()
{
    const quint64 number = ++question;
    showHistory();
    update();
    if (!isConnected() || method == UaExpandedNodeId())
        return;
    const UaNodeId id = session->toNodeId(method);
    QList<QvelReadItem> items;
    for (OpcUa_UInt32 attribute : {QvelAttribute::DisplayName, QvelAttribute::Description,
                                   QvelAttribute::Executable, QvelAttribute::UserExecutable})
        items.append({id, attribute, {}, {}});
    whenDone(session->read(items), q, [this, number](const QvelReadResult& result) {
        if (number == question)
            takeMethod(result);
    });
    QvelBrowseItem properties;
    properties.nodeId = id;
    properties.referenceTypeId = UaNodeId(hasProperty);
    whenDone(session->browse({properties}), q, [this, number](const QvelBrowseResult& result) {
        if (number == question)
            takeProperties(result);
    });
}

void QvelCallWidget::Private::takeMethod(const QvelReadResult& result)
{
    const UaDataValue named = result.values.value(0, UaDataValue({}, result.status));
    if (named.status().isBad()) {
        tell([status = named.status()] { return statusInWords(status); });
        return;
    }
    const QString text = shownText(named.value().toLocalizedText().text().toQString());
    name->setText(text);
    description->setText(
        shownText(result.values.value(1).value().toLocalizedText().text().toQString()));
    const auto isFalse = [&result](qsizetype at) {
        const UaVariant value = result.values.value(at).value();
        return value.type() == OpcUaType_Boolean && !value.toBool();
    };
    isAllowed = !isFalse(2) && !isFalse(3);
    if (isFalse(2))
        tell([] { return tr("The method cannot be called now."); });
    else if (isFalse(3))
        tell([] { return tr("This user may not call the method."); });
    update();
    Q_EMIT q->methodNameChanged(text);
}

void QvelCallWidget::Private::takeProperties(const QvelBrowseResult& result)
{
    const QvelBrowseNodeResult found = result.results.value(0);
    const UaStatusCode failure = result.status.isBad() ? result.status : found.status;
    if (failure.isBad()) {
        tell([failure] { return statusInWords(failure); });
        return;
    }
    QList<QvelReadItem> items;
    QList<std::pair<ArgumentsModel*, UaVariant*>> targets;
    const std::pair<const char*, std::pair<ArgumentsModel*, UaVariant*>> properties[] = {
        {"InputArguments", {inputs, &knownInputs}}, {"OutputArguments", {outputs, &knownOutputs}}};
    for (const auto& [property, target] : properties) {
        for (const QvelReference& reference : found.references) {
            if (reference.browseName != UaQualifiedName(UaString(property), 0))
                continue;
            items.append({session->toNodeId(reference.nodeId), QvelAttribute::Value, {}, {}});
            targets.append(target);
            break;
        }
        if (targets.isEmpty() || targets.last() != target)
            takeArguments(target.first, target.second, UaVariant());
    }
    const auto take = [this, targets](const QvelReadResult& read) {
        for (qsizetype i = 0; i < targets.size(); ++i) {
            const UaDataValue value = read.values.value(i, UaDataValue({}, read.status));
            if (value.status().isBad()) {
                tell([status = value.status()] {
                    return tr("The arguments cannot be read. %1").arg(statusInWords(status));
                });
                return;
            }
            takeArguments(targets[i].first, targets[i].second, value.value());
        }
        isKnown = true;
        update();
    };
    if (items.isEmpty()) {
        take({});
        return;
    }
    whenDone(session->read(items), q, [this, take, number = question](const QvelReadResult& read) {
        if (number == question)
            take(read);
    });
}

// After a reconnect the arguments are mostly the same, and what was typed stays.
void QvelCallWidget::Private::takeArguments(ArgumentsModel* model, UaVariant* known,
                                            const UaVariant& value)
{
    const auto arguments = QvelArgument::listFromVariant(value);
    if (!arguments) {
        tell([] { return tr("The server's description of the arguments cannot be read."); });
        isAllowed = false;
        return;
    }
    if (value != *known) {
        *known = value;
        model->setArguments(*arguments);
    }
    findTypes(model, *arguments);
}

void QvelCallWidget::Private::findTypes(ArgumentsModel* model, const QList<QvelArgument>& arguments)
{
    for (int row = 0; row < int(arguments.size()); ++row) {
        whenDone(DataTypes::of(session)->find(arguments[row].dataType), q,
                 [this, model, row, number = question](const DataTypeInfo& info) {
                     if (number == question)
                         model->setDataType(row, info);
                 });
    }
}

void QvelCallWidget::Private::finish(const QvelCallResult& result,
                                     const QList<UaVariant>& arguments)
{
    isCalling = false;
    const QvelMethodResult answer =
        result.results.value(0, QvelMethodResult{result.status, {}, {}});
    inputs->setStatuses(answer.inputArgumentResults);
    if (answer.status == UaStatusCode() && answer.outputArguments.isEmpty())
        tell([] { return tr("Good, no outputs"); });
    else
        tell([status = answer.status, reason = result.reason] {
            return statusInWords(status) +
                   (reason.isEmpty() ? QString()
                                     : QStringLiteral(" ") + shownText(reason.toQString()));
        });
    if (!answer.status.isBad())
        outputs->setValues(answer.outputArguments);
    QStringList texts;
    constexpr qsizetype mostCharacters = 40;
    for (const UaVariant& argument : arguments) {
        const QString text = shownValue(argument);
        texts.append(text.size() > mostCharacters ? text.left(mostCharacters) + QChar(0x2026)
                                                  : text);
    }
    if (session && !arguments.isEmpty()) {
        const QString time = QTime::currentTime().toString(QStringLiteral("HH:mm:ss"));
        CallHistory::of(session)->add(
            methodKey(),
            {QStringLiteral("%1 %2: %3")
                 .arg(time, answer.status.toString().toQString(), texts.join(QStringLiteral(", "))),
             arguments});
    }
    showHistory();
}

void QvelCallWidget::Private::showHistory()
{
    history = session ? CallHistory::of(session)->calls(methodKey()) : QList<PastCall>();
    past->clear();
    past->addItem(pastTitle());
    for (const PastCall& call : std::as_const(history))
        past->addItem(call.text);
    past->setDisabled(history.isEmpty());
}

void QvelCallWidget::Private::update()
{
    callButton->setEnabled(isConnected() && isKnown && isAllowed && !isCalling);
    cancelButton->setEnabled(isCalling);
    QString text = said(message);
    if (isKnown && !isConnected())
        text += QLatin1Char(' ') + tr("There is no connection to the server.");
    announce(status, text.trimmed());
    for (QLabel* line : {name, description})
        line->setHidden(line->text().isEmpty());
    const QString hint = method == UaExpandedNodeId() ? tr("Select a method.")
                         : isConnected()              ? tr("Reading the arguments ...")
                                                      : tr("There is no connection to the server.");
    setViewHint(inputList, isKnown ? tr("This method takes no arguments.") : hint);
    setViewHint(outputList, isKnown ? tr("This method gives nothing back.") : hint);
}

void QvelCallWidget::Private::tell(const Words& words)
{
    message = words;
    update();
}

QvelCallWidget::QvelCallWidget(QWidget* parent) : QWidget(parent), d(new Private(this))
{
    d->showHistory();
    retranslated(this, [this] { d->retranslate(); });
}

QvelCallWidget::~QvelCallWidget() = default;

void QvelCallWidget::setSession(QvelSession* session)
{
    if (session == d->session)
        return;
    if (d->session)
        d->session->disconnect(this);
    d->forget();
    d->session = session;
    if (session) {
        const auto look = [this] { d->load(); };
        connect(session, &QvelSession::stateChanged, this, look);
        connect(session, &QObject::destroyed, this, look);
    }
    d->load();
}

QvelSession* QvelCallWidget::session() const
{
    return d->session;
}

void QvelCallWidget::setMethod(const UaExpandedNodeId& object, const UaExpandedNodeId& method)
{
    d->object = object;
    d->method = method;
    d->forget();
    d->load();
}

QString QvelCallWidget::objectId() const
{
    return qvelNodeIdText(d->object);
}

void QvelCallWidget::setObjectId(const QString& text)
{
    setMethod(qvelParseNodeId(text).value_or(UaExpandedNodeId()), d->method);
}

QString QvelCallWidget::methodId() const
{
    return qvelNodeIdText(d->method);
}

void QvelCallWidget::setMethodId(const QString& text)
{
    setMethod(d->object, qvelParseNodeId(text).value_or(UaExpandedNodeId()));
}

UaExpandedNodeId QvelCallWidget::object() const
{
    return d->object;
}

UaExpandedNodeId QvelCallWidget::method() const
{
    return d->method;
}

bool QvelCallWidget::isCalling() const
{
    return d->isCalling;
}

QAbstractItemModel* QvelCallWidget::inputModel() const
{
    return d->inputs;
}

QAbstractItemModel* QvelCallWidget::outputModel() const
{
    return d->outputs;
}

void QvelCallWidget::call()
{
    d->inputList->finishEdit();
    if (!d->callButton->isEnabled())
        return;
    if (d->inputs->hasInvalidInput()) {
        d->tell([] { return tr("Not called: an argument is not valid, see there."); });
        return;
    }
    const QList<UaVariant> arguments = d->inputs->values();
    d->inputs->setStatuses({});
    d->outputs->setValues({});
    d->tell([] { return tr("Calling ..."); });
    d->isCalling = true;
    d->update();
    d->pending = d->session->call(
        {{d->session->toNodeId(d->object), d->session->toNodeId(d->method), arguments}});
    whenDone(d->pending, this, [this, arguments, turn = ++d->turn](const QvelCallResult& result) {
        if (turn == d->turn)
            d->finish(result, arguments);
    });
}

void QvelCallWidget::cancel()
{
    if (!d->isCalling)
        return;
    ++d->turn;
    d->isCalling = false;
    d->pending.cancel();
    d->tell([] { return tr("Cancelled. Whether the server has carried it out is not known."); });
    d->update();
}

QvelCallDialog::QvelCallDialog(QWidget* parent) : QDialog(parent), m_widget(new QvelCallWidget)
{
    constexpr QSize room(640, 480);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    buttons->button(QDialogButtonBox::Close)->setAutoDefault(false);
    auto* layout = new QVBoxLayout(this);
    m_widget->layout()->setContentsMargins(0, 0, 0, 0); // those of the dialog are enough
    layout->addWidget(m_widget);
    layout->addWidget(buttons);
    m_widget->setFocus();
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    const auto showTitle = [this] {
        setOwnText(this, "windowTitle",
                   m_methodName.isEmpty() ? tr("Call") : tr("Call %1").arg(m_methodName));
    };
    connect(m_widget, &QvelCallWidget::methodNameChanged, this,
            [this, showTitle](const QString& name) {
                m_methodName = name;
                showTitle();
            });
    retranslated(this, showTitle);
    resize(room);
}

QvelCallDialog::~QvelCallDialog() = default;

void QvelCallDialog::setSession(QvelSession* session)
{
    m_widget->setSession(session);
}

QvelSession* QvelCallDialog::session() const
{
    return m_widget->session();
}

void QvelCallDialog::setMethod(const UaExpandedNodeId& object, const UaExpandedNodeId& method)
{
    m_widget->setMethod(object, method);
}

#include "callwidget.moc"

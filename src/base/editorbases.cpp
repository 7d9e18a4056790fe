#include "editorbases.h"

#include "base/editorhelpers_p.h"
#include "base/retranslate_p.h"
#include "base/valueline_p.h"
#include "base/windowplace_p.h"

#include <QtCore/QCoreApplication>
#include <QtGui/QShowEvent>
#include <QtWidgets/QAbstractSpinBox>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

QvelWidgetBase::QvelWidgetBase(QvelWidgetFlags flags, QWidget* parent, Qt::WindowFlags windowFlags)
    : QWidget(parent, windowFlags), m_flags(flags)
{
}

QvelWidgetBase::~QvelWidgetBase() = default;

bool QvelWidgetBase::eventFilter(QObject* /*watched*/, QEvent* event)
{
    if (event->type() == QEvent::FocusOut)
        QCoreApplication::sendEvent(this, event);
    return false;
}

QvelDialogWidgetBase::QvelDialogWidgetBase(QvelDialogWidgetFlags flags, QWidget* parent,
                                           Qt::WindowFlags windowFlags)
    : QDialog(parent, windowFlags), m_flags(flags)
{
    setWindowFlags(Qt::Window | Qt::CustomizeWindowHint);
    m_layout = new QVBoxLayout;
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_buttonBox =
        new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, Qt::Horizontal, this);
    retranslated(m_buttonBox,
                 [this] { m_buttonBox->button(QDialogButtonBox::Ok)->setText(tr("Write")); });
    m_layout->addWidget(m_buttonBox);
    setLayout(m_layout);
    connect(m_buttonBox, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

QvelDialogWidgetBase::~QvelDialogWidgetBase() = default;

void QvelDialogWidgetBase::accept()
{
    setResult(QDialog::Accepted);
    QDialog::accept();
}

void QvelDialogWidgetBase::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (event->spontaneous())
        return;
    keepOnScreen(this);

    // The controls came after the buttons, but stand before them. From the last button on, since
    // the chain is closed: the first one follows the last control as it is.
    QWidget* last = previousInFocusChain();
    while (m_buttonBox->isAncestorOf(last))
        last = last->previousInFocusChain();
    const auto buttons = m_buttonBox->buttons();
    for (auto it = buttons.crbegin(); it != buttons.crend(); ++it)
        setTabOrder(last, *it);
    m_buttonBox->setFocusProxy(nullptr); // Tab would come back to the buttons over the box
    for (QWidget* w = nextInFocusChain(); w != this; w = w->nextInFocusChain()) {
        if (!(w->focusPolicy() & Qt::TabFocus) || !w->isEnabledTo(this) || !w->isVisibleTo(this))
            continue;
        w->setFocus(Qt::OtherFocusReason);
        if (auto* spin = qobject_cast<QAbstractSpinBox*>(w))
            spin->selectAll();
        break;
    }
}

QvelEditWidgetBase::QvelEditWidgetBase(QvelEditWidgetFlags flags, QWidget* parent,
                                       Qt::WindowFlags windowFlags)
    : QWidget(parent, windowFlags), m_flags(flags)
{
}

QvelEditWidgetBase::~QvelEditWidgetBase() = default;

void QvelEditWidgetBase::connectDialog(const QAbstractButton* button, const QDialog* dialog)
{
    connect(button, &QAbstractButton::clicked, this, &QvelEditWidgetBase::sltShowDialogWidget);
    connect(dialog, &QDialog::accepted, this, &QvelEditWidgetBase::sltDialogWidgetAccepted);
    connect(dialog, &QDialog::rejected, this, &QvelEditWidgetBase::sltDialogWidgetRejected);
}

template <class Editor>
static UaVariant validValueOf(const Editor& editor)
{
    bool ok = false;
    const UaVariant value = editor.value(&ok);
    return ok ? value : UaVariant();
}

UaVariant QvelWidgetBase::validValue() const
{
    return validValueOf(*this);
}

UaVariant QvelDialogWidgetBase::validValue() const
{
    return validValueOf(*this);
}

UaVariant QvelEditWidgetBase::validValue() const
{
    return validValueOf(*this);
}

// Tells what `visit` needs of each control: its class.
template <class Visit>
static void visitControls(const QWidget* editor, Visit visit)
{
    const auto children = editor->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget* child : children) {
        if (auto* line = qobject_cast<QLineEdit*>(child))
            visit(line);
        else if (auto* spin = qobject_cast<QAbstractSpinBox*>(child))
            visit(spin);
        else if (auto* combo = qobject_cast<QComboBox*>(child))
            visit(combo);
    }
}

void QvelWidgetBase::updateControls()
{
    visitControls(this, [this](auto* control) { showFlags(control, m_flags); });
}

void QvelDialogWidgetBase::updateControls()
{
    visitControls(this,
                  [this](auto* control) { lockControl(control, m_flags.testFlag(ReadOnly)); });
}

void QvelEditWidgetBase::updateControls() {}

// The two shapes that stand on forms share what they say of their value.
template <class Editor>
static QString valueTextOf(const Editor& editor)
{
    bool ok = false;
    const UaVariant value = editor.value(&ok);
    return ok ? valueLine(value) : QString();
}

template <class Editor>
static void setValueTextOf(Editor& editor, const QString& text)
{
    // Without `ok`, also invalid input has the editor's type.
    if (const auto value = valueOfLine(editor.value().type(), text))
        editor.setValue(*value);
}

// clazy:excludeall=incorrect-emit -- it does not see Q_EMIT in a macro
#define KESTREL_EDITOR_BASE_FLAGS(Base, Flags)                                                     \
    void Base::setFlags(Flags flags)                                                               \
    {                                                                                              \
        if (m_flags == flags)                                                                      \
            return;                                                                                \
        m_flags = flags;                                                                           \
        updateControls();                                                                          \
        Q_EMIT flagsChanged();                                                                     \
    }
#define KESTREL_EDITOR_BASE_TEXT(Base)                                                             \
    QString Base::valueText() const                                                                \
    {                                                                                              \
        return valueTextOf(*this);                                                                 \
    }                                                                                              \
    void Base::setValueText(const QString& text)                                                   \
    {                                                                                              \
        setValueTextOf(*this, text);                                                               \
    }

KESTREL_EDITOR_BASE_FLAGS(QvelWidgetBase, QvelWidgetFlags)
KESTREL_EDITOR_BASE_TEXT(QvelWidgetBase)
KESTREL_EDITOR_BASE_FLAGS(QvelDialogWidgetBase, QvelDialogWidgetFlags)
KESTREL_EDITOR_BASE_FLAGS(QvelEditWidgetBase, QvelEditWidgetFlags)
KESTREL_EDITOR_BASE_TEXT(QvelEditWidgetBase)

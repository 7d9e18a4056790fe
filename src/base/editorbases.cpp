#include "editorbases.h"

#include "base/retranslate_p.h"
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

#include "displaydialog.h"

#include "base/focus_p.h"
#include "base/retranslate_p.h"
#include "base/windowplace_p.h"

#include <QtGui/QShowEvent>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTextEdit>
#include <QtWidgets/QVBoxLayout>

QvelDisplayDialog::QvelDisplayDialog(QvelDisplayDialogFlags flags, QWidget* parent,
                                     Qt::WindowFlags windowFlags)
    : QDialog(parent, windowFlags), m_textEdit(new QTextEdit),
      m_buttons(new QDialogButtonBox(Qt::Horizontal))
{
    setWindowFlags(Qt::Window | Qt::CustomizeWindowHint);

    m_textEdit->setTabChangesFocus(true);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_textEdit);
    layout->addWidget(m_buttons);
    setFlags(flags);
    retranslated(m_buttons, [this] { setTexts(); });

    connect(m_buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_textEdit, &QTextEdit::textChanged, this, &QvelDisplayDialog::textChanged);
}

QvelDisplayDialog::~QvelDisplayDialog() = default;

void QvelDisplayDialog::setFlags(QvelDisplayDialogFlags flags)
{
    m_flags = flags;
    const bool readOnly = flags.testFlag(ReadOnly);
    setTextReadOnly(m_textEdit, readOnly);
    const bool wraps = flags.testFlag(WrapAnywhere);
    m_textEdit->setLineWrapMode(wraps ? QTextEdit::WidgetWidth : QTextEdit::NoWrap);
    m_textEdit->setWordWrapMode(wraps ? QTextOption::WrapAnywhere
                                      : QTextOption::WrapAtWordBoundaryOrAnywhere);
    m_buttons->setStandardButtons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel); // as new
    m_buttons->button(QDialogButtonBox::Ok)->setVisible(!readOnly);
    m_buttons->setFocusProxy(nullptr); // Tab would come back to the buttons over the box
    if (readOnly)                      // the hidden button would stop Tab
        setTabOrder(m_textEdit, m_buttons->button(QDialogButtonBox::Cancel));
    setTexts();
}

void QvelDisplayDialog::setTexts()
{
    m_textEdit->setAccessibleName(tr("Text"));
    if (m_flags.testFlag(ReadOnly))
        m_buttons->button(QDialogButtonBox::Cancel)->setText(tr("Close"));
    else
        m_buttons->button(QDialogButtonBox::Ok)->setText(tr("Write"));
}

void QvelDisplayDialog::setText(const QString& text)
{
    m_textEdit->setText(text);
}

QString QvelDisplayDialog::text() const
{
    return m_textEdit->toPlainText();
}

void QvelDisplayDialog::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (!event->spontaneous()) {
        keepOnScreen(this);
        m_textEdit->setFocus(Qt::OtherFocusReason);
    }
}

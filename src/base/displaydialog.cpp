#include "displaydialog.h"

#include "base/retranslate_p.h"
#include "base/windowplace_p.h"

#include <QtGui/QShowEvent>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTextEdit>
#include <QtWidgets/QVBoxLayout>

QvelDisplayDialog::QvelDisplayDialog(QvelDisplayDialogFlags flags, QWidget* parent,
                                     Qt::WindowFlags windowFlags)
    : QDialog(parent, windowFlags), m_textEdit(new QTextEdit), m_flags(flags)
{
    setWindowFlags(Qt::Window | Qt::CustomizeWindowHint);

    m_textEdit->setTabChangesFocus(true);
    m_textEdit->setReadOnly(m_flags.testFlag(ReadOnly));
    if (m_flags.testFlag(WrapAnywhere))
        m_textEdit->setWordWrapMode(QTextOption::WrapAnywhere);
    else
        m_textEdit->setLineWrapMode(QTextEdit::NoWrap);

    auto* buttons =
        new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, Qt::Horizontal);
    if (m_flags.testFlag(ReadOnly))
        buttons->button(QDialogButtonBox::Ok)->hide();
    retranslated(buttons, [this, buttons] {
        m_textEdit->setAccessibleName(tr("Text"));
        if (m_flags.testFlag(ReadOnly))
            buttons->button(QDialogButtonBox::Cancel)->setText(tr("Close"));
        else
            buttons->button(QDialogButtonBox::Ok)->setText(tr("Write"));
    });

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_textEdit);
    layout->addWidget(buttons);
    if (m_flags.testFlag(ReadOnly)) // the hidden button would stop Tab
        setTabOrder(m_textEdit, buttons->button(QDialogButtonBox::Cancel));

    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_textEdit, &QTextEdit::textChanged, this, &QvelDisplayDialog::textChanged);
}

QvelDisplayDialog::~QvelDisplayDialog() = default;

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

#include "editorbases.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtGui/QScreen>
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
    m_buttonBox->button(QDialogButtonBox::Ok)->setText(tr("Write"));
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
    const QRect available = screen()->availableGeometry();
    QRect frame = frameGeometry();
    // Right and bottom come last, and so win over left and top.
    if (frame.left() < available.left())
        frame.translate(available.left() - frame.left(), 0);
    if (frame.right() > available.right())
        frame.translate(available.right() - frame.right(), 0);
    if (frame.top() < available.top())
        frame.translate(0, available.top() - frame.top());
    if (frame.bottom() > available.bottom())
        frame.translate(0, available.bottom() - frame.bottom());
    move(frame.topLeft());
}

QvelEditWidgetBase::QvelEditWidgetBase(QvelEditWidgetFlags flags, QWidget* parent,
                                       Qt::WindowFlags windowFlags)
    : QWidget(parent, windowFlags), m_flags(flags)
{
}

QvelEditWidgetBase::~QvelEditWidgetBase() = default;

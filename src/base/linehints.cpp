#include "linehints_p.h"

#include "base/showntext_p.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QLocale>
#include <QtGui/QAccessible>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QSpinBox>
#include <QtWidgets/QToolTip>

void tellWhenCut(QLineEdit* edit)
{
    const auto tell = [edit] {
        if (!edit->inputMask().isEmpty() || edit->text().size() < edit->maxLength())
            return;
        const QString told =
            QCoreApplication::translate("QvelWidgetBase",
                                        "The text was cut: this line takes %1 characters.")
                .arg(QLocale().toString(edit->maxLength()));
        QToolTip::showText(edit->mapToGlobal(QPoint(0, edit->height() / 2)), told, edit);
        QAccessibleEvent alert(edit, QAccessible::Alert);
        QAccessible::updateAccessibility(&alert);
    };
    // Queued, since a validator may still refuse all of it.
    QObject::connect(edit, &QLineEdit::inputRejected, edit, tell, Qt::QueuedConnection);
}

void announce(QLabel* label, const QString& text)
{
    if (label->text() == text)
        return;
    label->setText(text);
    if (!label->accessibleName().isEmpty()) // which stands for the text
        label->setAccessibleDescription(text);
    if (text.isEmpty())
        return;
    QAccessibleEvent alert(label, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

template <class Control, class Changed>
static void followInToolTip(Control* control, Changed changed)
{
    const auto follow = [control] { control->setToolTip(shownToolTip(control->text())); };
    QObject::connect(control, changed, control, follow);
    follow();
}

void showInToolTip(QLineEdit* edit)
{
    followInToolTip(edit, &QLineEdit::textChanged);
}

void showInToolTip(QSpinBox* spin)
{
    followInToolTip(spin, &QSpinBox::textChanged);
}

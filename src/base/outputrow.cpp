#include "outputrow_p.h"

#include "base/showntext_p.h"

#include <QtWidgets/QFormLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>

QLineEdit* addOutputRow(QFormLayout* form, const QString& label, const char* objectName)
{
    auto* line = new QLineEdit;
    line->setObjectName(QLatin1String(objectName));
    line->setReadOnly(true);
    line->setFrame(false);
    line->setFocusPolicy(Qt::NoFocus);
    QPalette palette; // no field to type into; all other colours stay those of the parent
    palette.setBrush(QPalette::Base, Qt::transparent);
    line->setPalette(palette);
    form->addRow(QString(QLatin1Char(':')), line);
    nameOutputRow(form, line, label);
    return line;
}

void nameOutputRow(QFormLayout* form, QLineEdit* line, const QString& label)
{
    line->setAccessibleName(label);
    qobject_cast<QLabel*>(form->labelForField(line))->setText(label + QLatin1Char(':'));
}

void showOutput(QLineEdit* line, const QString& text)
{
    const QString shown = shownText(text);
    if (shown == line->text())
        return; // a selection stays
    line->setText(shown);
    line->setCursorPosition(0);
    line->setFocusPolicy(shown.isEmpty() ? Qt::NoFocus : Qt::StrongFocus); // nothing to read
    line->setToolTip(plainToolTip(shown));
}

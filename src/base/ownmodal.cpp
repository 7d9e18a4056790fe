#include "ownmodal_p.h"

#include <QtCore/QPointer>
#include <QtWidgets/QFileDialog>

QMessageBox::StandardButton runMessageBox(QWidget* parent, QMessageBox::Icon icon,
                                          const QString& title, const QString& text,
                                          QMessageBox::StandardButtons buttons)
{
    const QPointer<QMessageBox> box = new QMessageBox(icon, title, text, buttons, parent);
    box->setTextFormat(Qt::PlainText);
    const int answer = box->exec();
    delete box;
    return QMessageBox::StandardButton(answer);
}

QString runFileDialog(QFileDialog* dialog)
{
    const QPointer<QFileDialog> guard = dialog;
    const bool accepted = dialog->exec() == QDialog::Accepted;
    const QString file = accepted && guard ? dialog->selectedFiles().value(0) : QString();
    delete guard;
    return file;
}

#pragma once

#include <QtWidgets/QMessageBox>

class QFileDialog;

/// \file
/// Modal dialogs on the heap. Those of Qt's static functions are on the stack, and freed twice when
/// their parent is deleted while they run.

/// Shows a message box as QMessageBox's static functions do, its text as plain text, and waits for
/// the answer. NoButton if `parent` was deleted meanwhile, and the box with it.
QMessageBox::StandardButton runMessageBox(QWidget* parent, QMessageBox::Icon icon,
                                          const QString& title, const QString& text,
                                          QMessageBox::StandardButtons buttons = QMessageBox::Ok);

/// Runs `dialog`, which was made by new, and deletes it. The chosen file; empty if there is none or
/// the dialog's parent was deleted meanwhile, and the dialog with it.
QString runFileDialog(QFileDialog* dialog);

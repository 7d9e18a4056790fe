#pragma once

#include <QtCore/QPointer>
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

/// The widget, such as a clicked button, in whose signal a modal dialog runs. Whoever deletes the
/// widget's owner meanwhile must not delete the widget, to which the signal returns.
class SignallingWidget
{
public:
    SignallingWidget() = default;
    ~SignallingWidget()
    {
        if (m_widget)
            m_widget->setParent(nullptr);
    }
    Q_DISABLE_COPY_MOVE(SignallingWidget)

    /// `widget` may be null. This object may be gone when `work` returns.
    template <class Work>
    void run(QWidget* widget, Work work)
    {
        const QPointer<QWidget> signalling = m_widget = widget;
        work();
        if (signalling && signalling->parent())
            m_widget = nullptr;
        else if (signalling)
            signalling->deleteLater();
    }

private:
    QPointer<QWidget> m_widget;
};

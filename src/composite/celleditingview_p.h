#pragma once

#include "base/viewhint_p.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QPointer>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QAbstractItemDelegate>
#include <QtWidgets/QAbstractItemView>

/// A view whose delegate is a QvelModelDelegate: what dialogs at a cell, and editors with controls
/// inside, need of a view. Paints its hint (setViewHint()).
template <class View>
class CellEditingView : public HintedView<View>
{
public:
    using HintedView<View>::HintedView;

protected:
    using View::edit;
    bool edit(const QModelIndex& index, QAbstractItemView::EditTrigger trigger,
              QEvent* event) override
    {
        if (!View::edit(index, trigger, event))
            return false;
        if (QWidget* editor = this->indexWidget(index)) {
            m_editor = editor;
            if (editor->isWindow())
                focusDialog(editor);
            else if (editor->focusProxy())
                editor->focusProxy()->installEventFilter(this);
        }
        return true;
    }

    // Enter in a dialog is told twice: by the dialog, which it closes, and then by the delegate.
    void commitData(QWidget* editor) override
    {
        if (editor == m_editor)
            View::commitData(editor);
    }

    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override
    {
        if (!editor || editor != m_editor)
            return;
        m_editor = nullptr;
        const QWidget* focus = this->window()->focusWidget();
        const bool hadFocus = focus && (focus == editor || editor->isAncestorOf(focus));
        View::closeEditor(editor, hint);
        if ((editor->isWindow() || hadFocus) && !m_editor) // else Tab has opened the next one
            takeFocusFrom(editor);
    }

    // The delegate watches the keys of an editor, not those of the control inside it.
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::KeyPress) {
            const int key = static_cast<QKeyEvent*>(event)->key();
            auto* editor = qobject_cast<QWidget*>(watched);
            while (editor && editor->parentWidget() != this->viewport())
                editor = editor->parentWidget();
            if (editor && (key == Qt::Key_Tab || key == Qt::Key_Backtab))
                return QCoreApplication::sendEvent(editor, event);
        }
        return View::eventFilter(watched, event);
    }

    // A dialog at a cell is a window of its own, and would stay. A window that is only minimised,
    // or on another desktop, keeps its edit.
    void hideEvent(QHideEvent* event) override
    {
        if (m_editor && !event->spontaneous())
            closeEditor(m_editor, QAbstractItemDelegate::RevertModelCache);
        View::hideEvent(event);
    }

    // As long as there is the window of a dialog, it may take the activation with it.
    void takeFocusFrom(QWidget* editor)
    {
        if (editor->isWindow())
            QObject::connect(editor, &QObject::destroyed, this, &QWidget::activateWindow);
        this->setFocus();
    }

    QPointer<QWidget> m_editor; // the cell editor; hidden once the view has released it

private:
    // Gives the focus to the first control of a dialog that is not one of its buttons.
    static void focusDialog(QWidget* dialog)
    {
        dialog->raise();
        dialog->activateWindow();
        for (QWidget* w = dialog->nextInFocusChain(); w != dialog; w = w->nextInFocusChain()) {
            if (w->window() == dialog && w->isVisible() && w->isEnabled() &&
                w->focusPolicy() & Qt::TabFocus && !qobject_cast<QAbstractButton*>(w)) {
                w->setFocus(Qt::ActiveWindowFocusReason);
                return;
            }
        }
    }
};

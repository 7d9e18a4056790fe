#pragma once

#include <QtTest/QtTest>
#include <QtWidgets/QtWidgets>

/// A button by its text.
inline QAbstractButton* buttonOf(const QWidget* parent, const QString& text)
{
    for (auto* button : parent->findChildren<QAbstractButton*>())
        if (button->text().remove('&') == text)
            return button;
    return nullptr;
}

/// The control of an open cell that takes the keys, ready to be typed over; none where the cell is
/// not open or its dialog does not become active.
inline QWidget* typedControl(QWidget* editor)
{
    if (!editor || (editor->isWindow() && !QTest::qWaitForWindowActive(editor)))
        return nullptr;
    const auto edits = editor->findChildren<QLineEdit*>(QString(), Qt::FindDirectChildrenOnly);
    QWidget* control = edits.isEmpty() ? editor : edits.last();
    if (!control->isWindow())
        control->setFocus();
    if (auto* edit = qobject_cast<QLineEdit*>(control)) {
        edit->selectAll();
        if (!edit->inputMask().isEmpty())
            QTest::keyClick(edit, Qt::Key_Home);
    }
    return control;
}

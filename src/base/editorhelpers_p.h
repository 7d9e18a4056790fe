#pragma once

#include "base/editorbases.h"
#include "base/linehints_p.h"
#include "base/retranslate_p.h"
#include "platform/types/utf8text_p.h"

#include <QtCore/QMetaType>
#include <QtWidgets/QAbstractSpinBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QToolButton>
#include <QtWidgets/QVBoxLayout>

#include <functional>
#include <type_traits>

/// Shows the text of a value whole: the limit of a line edit is one for typing and pasting. The
/// limit of an input mask stays. What may not fit is shown from its beginning; after a short text
/// typing goes on at its end.
inline void showWhole(QLineEdit* edit, const QString& text)
{
    if (text.size() > edit->maxLength())
        edit->setMaxLength(int(text.size()));
    edit->setText(text);
    constexpr qsizetype fitting = 17; // the letters that a line edit asks room for
    if (text.size() > fitting)
        edit->setCursorPosition(0);
}

/// Makes the value classes known to the meta-type system under their own names.
template <class... T>
void registerValueTypes()
{
    (qRegisterMetaType<T>(), ...);
}

inline void lockControl(QLineEdit* control, bool readOnly)
{
    control->setReadOnly(readOnly);
}
inline void lockControl(QAbstractSpinBox* control, bool readOnly)
{
    control->setReadOnly(readOnly);
}
inline void lockControl(QComboBox* control, bool readOnly)
{
    control->setDisabled(readOnly);
}

/// Shows an inline editor's flags in one of its controls. The frame goes only when the flags are
/// HideFrame and nothing else.
template <class Control>
void showFlags(Control* control, QvelWidgetBase::QvelWidgetFlags flags)
{
    lockControl(control, flags.testFlag(QvelWidgetBase::ReadOnly));
    control->setFrame(flags != QvelWidgetBase::HideFrame);
}

/// An edit field's flags as those of its dialog.
inline QvelDialogWidgetBase::QvelDialogWidgetFlags
dialogFlags(QvelEditWidgetBase::QvelEditWidgetFlags flags)
{
    QvelDialogWidgetBase::QvelDialogWidgetFlags translated;
    translated.setFlag(QvelDialogWidgetBase::ReadOnly,
                       flags.testFlag(QvelEditWidgetBase::ReadOnly));
    translated.setFlag(QvelDialogWidgetBase::NoResize,
                       flags.testFlag(QvelEditWidgetBase::NoResize));
    return translated;
}

inline void tellWhenCut(const QWidget* /*control*/) {} // no line, or one within a spin box

/// Makes a control one of an inline editor's.
template <class Control>
void applyFlags(Control* control, QvelWidgetBase::QvelWidgetFlags flags)
{
    showFlags(control, flags);
    tellWhenCut(control);
}

/// Selects the entry whose item data is `number`, and none if there is no such entry.
inline void selectNumber(QComboBox* combo, int number)
{
    int index = combo->count() - 1;
    while (index >= 0 && combo->itemData(index).toInt() != number)
        --index;
    combo->setCurrentIndex(index);
}

/// The row of controls that is an inline editor's layout.
template <class... Control>
void layOutInline(QvelWidgetBase* editor, int spacing, Control*... controls)
{
    auto* layout = new QHBoxLayout(editor);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(spacing);
    (layout->addWidget(controls), ...);
}

/// Appends a row of label and control to a dialog editor's grid and applies the dialog's flags.
/// `text` gives the label's text in the language of the moment.
template <class Control>
void addDialogRow(QGridLayout* grid, const std::function<QString()>& text, Control* control,
                  QvelDialogWidgetBase::QvelDialogWidgetFlags flags)
{
    auto* label = new QLabel;
    retranslated(label, [label, text] { label->setText(text()); });
    label->setBuddy(control);
    lockControl(control, flags.testFlag(QvelDialogWidgetBase::ReadOnly));
    tellWhenCut(control);
    const int row = grid->count() == 0 ? 0 : grid->rowCount();
    grid->addWidget(label, row, 0);
    grid->addWidget(control, row, 1);
}

/// The value contract's `value(ok)`, over an editor's typed getter and the variant's setter.
template <class Editor, class T, class Result, class Argument>
UaVariant editorValue(const Editor* editor, T (Editor::*getter)(bool*) const,
                      Result (UaVariant::*setter)(Argument), bool* ok)
{
    if (ok)
        *ok = false;
    const T typed = (editor->*getter)(ok);
    UaVariant value;
    if (!ok || *ok)
        (value.*setter)(typed);
    return value;
}

/// True for a scalar of the editor's own type, the only value that `setValue` shows.
inline bool isScalarOf(const UaVariant& value, OpcUa_BuiltInType type)
{
    return value.type() == type && value.arrayType() == OpcUa_VariantArrayType_Scalar;
}

/// What an editor tells of each change: its text, the value, then the typed value.
template <class Editor, class T, class Signal>
void emitChanged(Editor* editor, T (Editor::*getter)(bool*) const, void (Editor::*changed)(Signal))
{
    if constexpr (!std::is_base_of_v<QvelDialogWidgetBase, Editor>)
        Q_EMIT editor->valueTextChanged();
    Q_EMIT editor->valueChanged(editor->value(nullptr));
    Q_EMIT(editor->*changed)((editor->*getter)(nullptr));
}

/// The grid of rows above a dialog editor's buttons.
inline QGridLayout* insertDialogGrid(QVBoxLayout* mainLayout)
{
    auto* grid = new QGridLayout;
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setVerticalSpacing(2);
    mainLayout->insertLayout(0, grid);
    return grid;
}

/// Makes `control` the whole of an inline editor: its flags, its layout and its focus.
template <class Control>
void setSingleControl(QvelWidgetBase* editor, Control* control)
{
    applyFlags(control, editor->flags());
    layOutInline(editor, 0, control);
    editor->setFocusProxy(control);
    control->installEventFilter(editor);
}

/// The line edit of an edit field and the button that opens its dialog.
struct EditFieldControls
{
    QLineEdit* edit;
    QToolButton* button;
};

/// The row of an edit field; its line edit is read-only. Further buttons follow in the layout.
inline EditFieldControls layOutEditField(QvelEditWidgetBase* field)
{
    const EditFieldControls controls = {new QLineEdit, new QToolButton};
    controls.edit->setReadOnly(true);
    controls.button->setText(QStringLiteral("..."));
    retranslated(field, [controls] {
        controls.edit->setAccessibleName(QvelEditWidgetBase::tr("Value"));
        controls.button->setAccessibleName(QvelEditWidgetBase::tr("Edit value"));
    });
    auto* layout = new QHBoxLayout(field);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(controls.edit);
    layout->addWidget(controls.button);
    return controls;
}

/// Opens an edit field's dialog, modelessly, over its line edit.
inline void showDialogAt(QDialog* dialog, const QLineEdit* edit)
{
    dialog->move(edit->mapToGlobal(QPoint(0, 0)));
    dialog->show();
}

/// The part of the value contract that is the same for every scalar editor: `Type` is the
/// standard's name of the built-in type, `name` and `Name` the editor's name for its value.
#define KESTREL_EDITOR_VALUE(Editor, Type, name, Name)                                             \
    UaVariant Editor::value(bool* ok) const                                                        \
    {                                                                                              \
        return editorValue(this, &Editor::name, &UaVariant::set##Type, ok);                        \
    }                                                                                              \
    void Editor::setValue(const UaVariant& value)                                                  \
    {                                                                                              \
        if (isScalarOf(value, OpcUaType_##Type))                                                   \
            set##Name(value.to##Type());                                                           \
    }

/// An editor whose value is named after the built-in type has the same change slot, too.
#define KESTREL_SCALAR_EDITOR(Editor, Type, name)                                                  \
    KESTREL_EDITOR_VALUE(Editor, Type, name, Type)                                                 \
    void Editor::slt##Type##Changed()                                                              \
    {                                                                                              \
        emitChanged(this, &Editor::name, &Editor::name##Changed);                                  \
    }

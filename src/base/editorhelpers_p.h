#pragma once

#include "editorbases.h"

#include <QtCore/QMetaType>
#include <QtWidgets/QAbstractSpinBox>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>

/// Makes the value classes known to the meta-type system under their own names.
template <class... T>
void registerValueTypes()
{
    (qRegisterMetaType<T>(), ...);
}

inline void setControlReadOnly(QLineEdit* control, bool readOnly)
{
    control->setReadOnly(readOnly);
}
inline void setControlReadOnly(QAbstractSpinBox* control, bool readOnly)
{
    control->setReadOnly(readOnly);
}
inline void setControlReadOnly(QComboBox* control, bool readOnly)
{
    control->setDisabled(readOnly);
}

/// Applies an inline editor's flags to one of its controls. The frame goes only when the flags are
/// HideFrame and nothing else.
template <class Control>
void applyFlags(Control* control, QvelWidgetBase::QvelWidgetFlags flags)
{
    setControlReadOnly(control, flags.testFlag(QvelWidgetBase::ReadOnly));
    control->setFrame(flags != QvelWidgetBase::HideFrame);
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
template <class Control>
void addDialogRow(QGridLayout* grid, const QString& text, Control* control,
                  QvelDialogWidgetBase::QvelDialogWidgetFlags flags)
{
    auto* label = new QLabel(text);
    label->setBuddy(control);
    setControlReadOnly(control, flags.testFlag(QvelDialogWidgetBase::ReadOnly));
    const int row = grid->count() == 0 ? 0 : grid->rowCount();
    grid->addWidget(label, row, 0);
    grid->addWidget(control, row, 1);
}

/// The value contract's `value(ok)`, over an editor's typed getter and the variant's setter.
template <class Editor, class T>
UaVariant editorValue(const Editor* editor, T (Editor::*getter)(bool*) const,
                      void (UaVariant::*setter)(const T&), bool* ok)
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

#pragma once

#include "base/editorhelpers_p.h"
#include "base/enuminfo.h"
#include "elementtable_p.h"
#include "platform/types/uastring.h"

#include <QtWidgets/QAbstractButton>

class QAbstractItemModel;
class QDialogButtonBox;

/// What the dialogs of arrays and matrices have in common: the value, its table, and the row of
/// buttons below.
class ElementDialog
{
public:
    explicit ElementDialog(QvelDialogWidgetBase* dialog);
    ~ElementDialog();
    Q_DISABLE_COPY_MOVE(ElementDialog)

    UaVariant value;
    ElementTable* const table;

    bool isReadOnly() const { return m_dialog->flags().testFlag(QvelDialogWidgetBase::ReadOnly); }
    /// Fills the dialog's layout. `buttons` change the number of elements.
    void layOut(QVBoxLayout* layout, QDialogButtonBox* box, QAbstractItemModel* model,
                const QList<QAbstractButton*>& buttons, const QString& unsupported);
    /// Whether the elements are named, and so shown in words.
    void setNamed(bool isNamed);
    /// Follows a change of the value's type, before the model does. A type that cannot be written
    /// disables "Write", and does so for good.
    void applyType();

private:
    QvelDialogWidgetBase* const m_dialog;
    QList<QAbstractButton*> m_buttons;
    QLabel* m_unsupported = nullptr;
    QAbstractButton* m_ok = nullptr;
    bool m_isNamed = false;
};

/// The edit field over one of these dialogs: the last accepted value, and its text.
template <class Dialog>
class ElementField
{
public:
    explicit ElementField(QvelEditWidgetBase* field)
        : m_field(field), m_edit(nullptr),
          m_dialog(new Dialog(UaVariant(), dialogFlags(field->flags()), field))
    {
        const EditFieldControls controls = layOutEditField(field);
        m_edit = controls.edit;
        m_button = controls.button;
    }

    Dialog* dialog() const { return m_dialog; }
    QToolButton* button() const { return m_button; }

    /// Makes the dialog's value the last accepted one.
    void take()
    {
        m_value = m_dialog->value(nullptr);
        if (!m_showsEnum)
            showWhole(m_edit, textFromUtf8(m_value.toFullString().bytes()));
    }
    /// Gives the last accepted value back to the dialog.
    void restore() { m_dialog->setValue(m_value); }

    /// From an enumeration on, the field shows `text` instead of values.
    void setEnumInfo(const QvelEnumInfo& info, const QString& text)
    {
        m_dialog->setEnumInfo(info);
        if (info.kind == QvelEnumInfo::NoEnumeration)
            return;
        m_edit->setText(text);
        m_showsEnum = true;
    }
    void run()
    {
        m_dialog->move(m_field->mapToGlobal(m_edit->pos()));
        m_dialog->exec();
    }

private:
    static QvelDialogWidgetBase::QvelDialogWidgetFlags
    dialogFlags(QvelEditWidgetBase::QvelEditWidgetFlags flags)
    {
        QvelDialogWidgetBase::QvelDialogWidgetFlags translated;
        translated.setFlag(QvelDialogWidgetBase::ReadOnly,
                           flags.testFlag(QvelEditWidgetBase::ReadOnly));
        translated.setFlag(QvelDialogWidgetBase::NoResize,
                           flags.testFlag(QvelEditWidgetBase::NoResize));
        return translated;
    }

    QvelEditWidgetBase* const m_field;
    QLineEdit* m_edit;
    QToolButton* m_button;
    Dialog* const m_dialog;
    UaVariant m_value;
    bool m_showsEnum = false;
};

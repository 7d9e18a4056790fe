#pragma once

#include "base/editorhelpers_p.h"
#include "base/enuminfo.h"
#include "base/ownmodal_p.h"
#include "composite/elementtable_p.h"
#include "platform/types/uastring.h"

#include <QtWidgets/QAbstractButton>

#include <utility>

class QDialogButtonBox;
class QvelElementModel;
class QvelModelDelegate;

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
    SignallingWidget clicked;

    bool isReadOnly() const { return m_dialog->flags().testFlag(QvelDialogWidgetBase::ReadOnly); }
    /// Fills the dialog's layout. `buttons` change the number of elements; `unsupported` tells that
    /// there is nothing to edit.
    void layOut(QVBoxLayout* layout, QDialogButtonBox* box, QvelElementModel* model,
                const QList<QAbstractButton*>& buttons, QLabel* unsupported);
    /// Connects the model to the dialog's slots.
    template <class Dialog>
    void watch(Dialog* dialog, void (Dialog::*resize)(), void (Dialog::*changed)())
    {
        const QAbstractItemModel* model = table->model();
        QObject::connect(model, &QAbstractItemModel::rowsInserted, dialog, resize);
        QObject::connect(model, &QAbstractItemModel::rowsRemoved, dialog, resize);
        QObject::connect(model, &QAbstractItemModel::headerDataChanged, dialog, resize);
        QObject::connect(model, &QAbstractItemModel::modelReset, dialog, resize);
        QObject::connect(model, &QAbstractItemModel::dataChanged, dialog, changed);
    }
    /// Follows the dialog's flags.
    void updateFlags();
    /// Takes a value, before the model does. A type that cannot be written disables "Write", and
    /// does so for good.
    void take(const UaVariant& taken);
    /// Names for the elements, which are then shown in words.
    void setEnumInfo(const QvelEnumInfo& info);
    void setWritesOnlyChanges(bool onlyChanges);

private:
    void applyUnbroken();

    QvelDialogWidgetBase* const m_dialog;
    QvelElementModel* m_model = nullptr;
    QvelModelDelegate* m_delegate = nullptr;
    QList<QAbstractButton*> m_buttons;
    QLabel* m_unsupported = nullptr;
    QAbstractButton* m_ok = nullptr;
    bool m_isNamed = false;
    bool m_isRefused = false; // a value that cannot be written was here
};

/// The edit field over one of these dialogs: the last accepted value, and its text.
template <class Dialog>
class ElementField
{
public:
    template <class Field>
    ElementField(Field* field, void (Field::*accepted)(), void (Field::*rejected)(),
                 void (Field::*show)())
        : m_field(field), m_edit(nullptr),
          m_dialog(new Dialog(UaVariant(), dialogFlags(field->flags()), field))
    {
        const EditFieldControls controls = layOutEditField(field);
        m_edit = controls.edit;
        m_button = controls.button;
        QObject::connect(m_dialog, &QDialog::accepted, field, accepted);
        QObject::connect(m_dialog, &QDialog::rejected, field, rejected);
        QObject::connect(m_dialog, &Dialog::valueChanged, field, &Field::valueChanged);
        QObject::connect(m_button, &QToolButton::clicked, field, show);
    }

    Dialog* dialog() const { return m_dialog; }
    void updateFlags() { m_dialog->setFlags(dialogFlags(m_field->flags())); }

    UaVariant value(bool* ok) const
    {
        if (ok)
            *ok = false;
        return m_dialog->value(ok);
    }
    void setValue(const UaVariant& value, OpcUa_VariantArrayType arrayType)
    {
        if (value.arrayType() != arrayType)
            return;
        m_dialog->setValue(value);
        take();
    }
    /// Makes the dialog's value the last accepted one.
    void take()
    {
        m_value = m_dialog->value();
        Q_EMIT m_field->valueTextChanged();
        if (m_showsEnum)
            return;
        showWhole(m_edit, m_value.toFullString().toQString());
        m_edit->setCursorPosition(0);
    }
    /// Gives the last accepted value back to the dialog.
    void restore() { m_dialog->setValue(m_value); }

    /// From an enumeration on, the field shows `text` instead of values.
    void setEnumInfo(const QvelEnumInfo& info, const std::function<QString()>& text)
    {
        m_dialog->setEnumInfo(info);
        if (info.kind == QvelEnumInfo::NoEnumeration || std::exchange(m_showsEnum, true))
            return;
        retranslated(m_field, [this, text] { m_edit->setText(text()); });
    }
    /// The field may be gone when this returns.
    void run()
    {
        m_dialog->move(m_field->mapToGlobal(m_edit->pos()));
        m_clicked.run(m_button, [dialog = m_dialog] { dialog->exec(); });
    }

private:
    QvelEditWidgetBase* const m_field;
    QLineEdit* m_edit;
    QToolButton* m_button;
    Dialog* const m_dialog;
    SignallingWidget m_clicked;
    UaVariant m_value;
    bool m_showsEnum = false;
};

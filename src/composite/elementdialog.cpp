#include "elementdialog_p.h"

#include "composite/elementmodel.h"
#include "composite/elementstore_p.h"
#include "composite/modeldelegate.h"

#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QPushButton>

ElementDialog::ElementDialog(QvelDialogWidgetBase* dialog)
    : table(new ElementTable), m_dialog(dialog)
{
    registerValueTypes<UaVariant>();
}

// Nothing may ask the model once the value is gone.
ElementDialog::~ElementDialog()
{
    table->hide();
    delete table;
}

void ElementDialog::layOut(QVBoxLayout* layout, QDialogButtonBox* box, QvelElementModel* model,
                           const QList<QAbstractButton*>& buttons, QLabel* unsupported)
{
    m_model = model;
    m_buttons = buttons;
    m_unsupported = unsupported;
    m_ok = box->button(QDialogButtonBox::Ok);
    m_delegate = new QvelModelDelegate(m_dialog);
    table->setModel(model);
    table->setItemDelegate(m_delegate);

    auto* row = new QHBoxLayout;
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(m_unsupported);
    for (QAbstractButton* button : m_buttons)
        row->addWidget(button);
    row->addStretch();
    layout->removeWidget(box);
    row->addWidget(box);
    layout->insertWidget(0, table);
    layout->addLayout(row);
    QWidget* last = table;
    for (QAbstractButton* next : m_buttons + box->buttons()) {
        QWidget::setTabOrder(last, next);
        last = next;
    }

    updateFlags();
}

void ElementDialog::updateFlags()
{
    const bool isFixed = isReadOnly() || m_dialog->flags().testFlag(QvelDialogWidgetBase::NoResize);
    for (QAbstractButton* button : m_buttons)
        button->setDisabled(isFixed);
    m_ok->setEnabled(!isReadOnly() && !m_isRefused);
    m_model->setReadOnly(isReadOnly());
}

void ElementDialog::take(const UaVariant& taken)
{
    value = taken;
    const bool isEditable = isEditableType(value.type());
    m_isRefused = m_isRefused || !isEditable;
    if (m_isRefused)
        m_ok->setEnabled(false);
    m_unsupported->setVisible(!isEditable);
    for (QAbstractButton* button : m_buttons)
        button->setVisible(isEditable);
    applyUnbroken();
}

void ElementDialog::setEnumInfo(const QvelEnumInfo& info)
{
    m_model->setEnumInfo(info);
    m_isNamed = info.kind != QvelEnumInfo::NoEnumeration;
    applyUnbroken();
    table->fitContents();
}

void ElementDialog::setWritesOnlyChanges(bool onlyChanges)
{
    m_delegate->setWritesOnlyChanges(onlyChanges);
}

void ElementDialog::applyUnbroken()
{
    table->setUnbroken(!m_isNamed && isUnbrokenText(value.type()));
}

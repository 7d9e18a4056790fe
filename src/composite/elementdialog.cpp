#include "elementdialog_p.h"

#include "elementstore_p.h"
#include "modeldelegate.h"

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

void ElementDialog::layOut(QVBoxLayout* layout, QDialogButtonBox* box, QAbstractItemModel* model,
                           const QList<QAbstractButton*>& buttons, const QString& unsupported)
{
    m_buttons = buttons;
    m_unsupported = new QLabel(unsupported);
    m_ok = box->button(QDialogButtonBox::Ok);
    table->setModel(model);
    table->setItemDelegate(new QvelModelDelegate(m_dialog));

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

    const auto flags = m_dialog->flags();
    for (QAbstractButton* button : m_buttons)
        button->setDisabled(flags.testFlag(QvelDialogWidgetBase::ReadOnly) ||
                            flags.testFlag(QvelDialogWidgetBase::NoResize));
    if (isReadOnly())
        m_ok->setEnabled(false);
}

void ElementDialog::applyType()
{
    const bool isEditable = isEditableType(value.type());
    if (!isEditable)
        m_ok->setEnabled(false);
    m_unsupported->setVisible(!isEditable);
    for (QAbstractButton* button : m_buttons)
        button->setVisible(isEditable);
    table->setUnbroken(!m_isNamed && isUnbrokenText(value.type()));
}

void ElementDialog::setNamed(bool isNamed)
{
    m_isNamed = isNamed;
    table->setUnbroken(!m_isNamed && isUnbrokenText(value.type()));
    table->fitContents();
}

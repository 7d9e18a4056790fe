#include "valuedelegate_p.h"

#include "composite/arrayeditors.h"
#include "composite/celleditor_p.h"
#include "composite/matrixeditors.h"
#include "composite/varianteditor.h"
#include "nodes/valuecell_p.h"

#include <QtWidgets/QLineEdit>
#include <QtWidgets/QVBoxLayout>

namespace {

// The editor of a value of any type, as a dialog at a cell.
class VariantDialog : public QvelDialogWidgetBase
{
public:
    explicit VariantDialog(QWidget* parent)
        : QvelDialogWidgetBase(NoFlags, parent), m_editor(new QvelWidgetVariant)
    {
        constexpr int margin = 6;
        m_editor->setContentsMargins(margin, margin, margin, 0);
        mainLayout()->insertWidget(0, m_editor);
    }
    UaVariant value(bool* ok) const override { return m_editor->value(ok); }
    void setValue(const UaVariant& value) override { m_editor->setValue(value); }

private:
    QvelWidgetVariant* const m_editor;
};

QvelDialogWidgetBase* createViewer(const UaVariant& value, QWidget* parent,
                                   const QvelEnumInfo& enumInfo)
{
    const auto create = [&](auto* dialog) {
        dialog->setEnumInfo(enumInfo);
        return static_cast<QvelDialogWidgetBase*>(dialog);
    };
    constexpr auto readOnly = QvelDialogWidgetBase::ReadOnly;
    return value.arrayType() == OpcUa_VariantArrayType_Matrix
               ? create(new QvelDialogWidgetMatrix(value, readOnly, parent))
               : create(new QvelDialogWidgetArray(value, readOnly, parent));
}

} // namespace

ValueDelegate::ValueDelegate(QObject* parent) : QvelModelDelegate(parent)
{
    setWritesOnlyChanges(true);
}

QWidget* ValueDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                     const QModelIndex& index) const
{
    const Cell cell(index);
    if (index.data(ValueReadOnlyRole).toBool())
        return createViewer(cell.value, parent, cell.enumInfo);
    if (!cell.value.isEmpty())
        return QvelModelDelegate::createEditor(parent, option, index);
    auto* dialog = new VariantDialog(parent);
    dialog->adjustSize();
    dialog->move(parent->mapToGlobal(option.rect.topLeft()));
    return dialog;
}

void ValueDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                 const QModelIndex& index) const
{
    const auto* dialog = qobject_cast<QDialog*>(editor);
    if (dialog && dialog->result() != QDialog::Accepted)
        return;
    if (const auto* variant = dynamic_cast<const VariantDialog*>(editor)) {
        bool ok = false;
        const UaVariant value = variant->value(&ok);
        if (ok)
            model->setData(index, QVariant::fromValue(value), ElementValueRole);
        return;
    }
    if (!index.data(ValueRetryRole).toBool() || !isUnchanged(editor, index)) {
        QvelModelDelegate::setModelData(editor, model, index);
        return;
    }
    const bool isText = qobject_cast<QLineEdit*>(editor);
    const int role = isText ? int(Qt::EditRole) : int(ElementValueRole);
    model->setData(index, index.data(role), role);
}

// Whether it ends in an exponent, without which it would be taken for another number.
static bool hasExponent(const QString& text)
{
    qsizetype at = text.size();
    while (at > 0 && text[at - 1].isDigit())
        --at;
    if (at == text.size() || at == 0)
        return false;
    if (text[at - 1] == QLatin1Char('+') || text[at - 1] == QLatin1Char('-'))
        --at;
    return at > 1 && text[at - 1] == QLatin1Char('e') && text[at - 2].isDigit();
}

void ValueDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QvelModelDelegate::initStyleOption(option, index);
    if (hasExponent(option->text))
        option->textElideMode = Qt::ElideMiddle;
}

void tellRefusal(const QModelIndex& index, QAbstractItemView::EditTrigger trigger)
{
    const bool isWanted =
        trigger == QAbstractItemView::DoubleClicked || trigger == QAbstractItemView::EditKeyPressed;
    if (isWanted && index.isValid())
        const_cast<QAbstractItemModel*>(index.model())->setData(index, {}, ValueRefusalRole);
}

ValueList::ValueList(int valueColumn, QWidget* parent)
    : CellEditingView(parent), m_valueColumn(valueColumn)
{
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setAlternatingRowColors(true);
    setAllColumnsShowFocus(true);
    setItemDelegate(new ValueDelegate(this));
}

bool ValueList::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event)
{
    const QModelIndex value = index.siblingAtColumn(m_valueColumn);
    const bool isOpen = CellEditingView::edit(value, trigger, event);
    if (!isOpen)
        tellRefusal(value, trigger);
    return isOpen;
}

void ValueList::finishEdit()
{
    QWidget* editor = m_editor;
    if (!editor || editor->isWindow())
        return;
    commitData(editor);
    closeEditor(editor, QAbstractItemDelegate::NoHint);
}

#include "modeldelegate.h"

#include "arrayeditors.h"
#include "base/editorhelpers_p.h"
#include "base/enuminfo.h"
#include "elementstore_p.h"
#include "matrixeditors.h"
#include "values/enumeditors.h"
#include "values/expandednodeideditors.h"
#include "values/longvalueeditors.h"
#include "values/maskededitors.h"
#include "values/nameeditors.h"
#include "values/nodeideditors.h"

#include <QtWidgets/QCheckBox>

#include <iterator>

namespace {

struct Cell
{
    explicit Cell(const QModelIndex& cell)
        : index(cell), value(cell.data(ElementValueRole).value<UaVariant>()),
          enumInfo(cell.data(ElementEnumInfoRole).value<QvelEnumInfo>())
    {
    }

    const QModelIndex index;
    const UaVariant value;
    const QvelEnumInfo enumInfo;
};

// One way to edit a cell: makes and fills the editor, and writes back what it holds.
struct CellEditor
{
    QWidget* (*create)(QWidget* parent, const QPoint& corner, const Cell& cell);
    void (*store)(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index);
};

QWidget* createLineEdit(QWidget* parent, const QPoint&, const Cell& cell)
{
    auto* edit = new QLineEdit(parent);
    edit->setFrame(false);
    showWhole(edit, cell.index.data(Qt::EditRole).toString());
    return edit;
}

void storeText(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index)
{
    if (auto* edit = qobject_cast<QLineEdit*>(editor))
        model->setData(index, edit->text(), Qt::EditRole);
}

QWidget* createCheckBox(QWidget* parent, const QPoint&, const Cell& cell)
{
    auto* box = new QCheckBox(parent);
    box->setAutoFillBackground(true);
    box->setChecked(cell.value.toBool());
    return box;
}

void storeBoolean(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index)
{
    if (auto* box = qobject_cast<QCheckBox*>(editor))
        model->setData(index, QVariant::fromValue(UaVariant(OpcUa_Boolean(box->isChecked()))),
                       ElementValueRole);
}

template <class Editor>
QWidget* createInline(QWidget* parent, const QPoint&, const Cell& cell)
{
    auto* editor = new Editor(QvelWidgetBase::HideFrame, parent);
    editor->setValue(cell.value);
    return editor;
}

template <class Editor>
QWidget* createDialog(QWidget* parent, const QPoint& corner, const Cell& cell)
{
    auto* dialog = new Editor(QvelDialogWidgetBase::NoFlags, parent);
    dialog->setValue(cell.value);
    dialog->move(corner);
    return dialog;
}

template <class Editor>
QWidget* createNested(QWidget* parent, const QPoint&, const Cell& cell)
{
    auto* dialog = new Editor(cell.value, QvelDialogWidgetBase::NoFlags, parent);
    dialog->setEnumInfo(cell.enumInfo);
    return dialog;
}

// A dialog counts only when it was accepted.
template <class Editor>
void storeValue(QWidget* widget, QAbstractItemModel* model, const QModelIndex& index)
{
    auto* editor = qobject_cast<Editor*>(widget);
    if (!editor)
        return;
    if constexpr (std::is_base_of_v<QDialog, Editor>) {
        if (editor->result() != QDialog::Accepted)
            return;
    }
    bool ok = false;
    const UaVariant value = editor->value(&ok);
    if (ok)
        model->setData(index, QVariant::fromValue(value), ElementValueRole);
}

template <class Editor>
QWidget* createEnum(QWidget* parent, const QPoint&, const Cell& cell)
{
    auto* editor = new Editor(cell.enumInfo.values, QvelWidgetBase::HideFrame, parent);
    editor->setValue(UaVariant(OpcUa_Int32(enumNumber(cell.value))));
    return editor;
}

template <class Editor>
void storeEnum(QWidget* widget, QAbstractItemModel* model, const QModelIndex& index)
{
    auto* editor = qobject_cast<Editor*>(widget);
    bool ok = false;
    const OpcUa_Int32 value = editor ? editor->enumValue(&ok) : 0;
    if (ok)
        model->setData(index, QVariant::fromValue(long(value)), Qt::EditRole);
}

template <class Editor>
constexpr CellEditor inlineEditor = {createInline<Editor>, storeValue<Editor>};
template <class Editor>
constexpr CellEditor dialogEditor = {createDialog<Editor>, storeValue<Editor>};
template <class Editor>
constexpr CellEditor nestedEditor = {createNested<Editor>, storeValue<Editor>};
template <class Editor>
constexpr CellEditor enumEditor = {createEnum<Editor>, storeEnum<Editor>};
constexpr CellEditor textEditor = {createLineEdit, storeText};

// From Guid on; what is not listed is edited as text.
constexpr CellEditor structuredEditors[] = {
    inlineEditor<QvelWidgetGuid>,
    inlineEditor<QvelWidgetByteString>,
    inlineEditor<QvelWidgetXmlElement>,
    dialogEditor<QvelDialogWidgetNodeId>,
    dialogEditor<QvelDialogWidgetExpandedNodeId>,
    inlineEditor<QvelWidgetStatusCode>,
    dialogEditor<QvelDialogWidgetQualifiedName>,
    dialogEditor<QvelDialogWidgetLocalizedText>,
};

CellEditor scalarEditor(OpcUa_BuiltInType type)
{
    const int structured = type - OpcUaType_Guid;
    if (structured >= 0 && structured < int(std::size(structuredEditors)))
        return structuredEditors[structured];
    if (type == OpcUaType_Boolean)
        return {createCheckBox, storeBoolean};
    return textEditor;
}

// Null functions for a shape that has no editor.
CellEditor editorOf(const Cell& cell)
{
    switch (cell.value.arrayType()) {
    case OpcUa_VariantArrayType_Scalar:
        if (cell.enumInfo.kind == QvelEnumInfo::Enumeration)
            return enumEditor<QvelWidgetEnum>;
        if (cell.enumInfo.kind == QvelEnumInfo::EnumerationFlags)
            return enumEditor<QvelWidgetEnumFlags>;
        return scalarEditor(cell.value.type());
    case OpcUa_VariantArrayType_Array:
        return nestedEditor<QvelDialogWidgetArray>;
    case OpcUa_VariantArrayType_Matrix:
        return nestedEditor<QvelDialogWidgetMatrix>;
    }
    return {};
}

} // namespace

QvelModelDelegate::QvelModelDelegate(QObject* parent) : QStyledItemDelegate(parent) {}

QvelModelDelegate::~QvelModelDelegate() = default;

QWidget* QvelModelDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                         const QModelIndex& index) const
{
    const Cell cell(index);
    const CellEditor editor = editorOf(cell);
    if (!editor.create)
        return nullptr;
    const QPoint corner = option.rect.topLeft();
    return editor.create(parent, parent ? parent->mapToGlobal(corner) : corner, cell);
}

// The editor has had its value since it was created.
void QvelModelDelegate::setEditorData(QWidget* /*editor*/, const QModelIndex& /*index*/) const {}

void QvelModelDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                     const QModelIndex& index) const
{
    const CellEditor kind = editorOf(Cell(index));
    if (kind.store)
        kind.store(editor, model, index);
}

void QvelModelDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                             const QModelIndex& /*index*/) const
{
    const bool inCell = qobject_cast<QLineEdit*>(editor) || qobject_cast<QvelWidgetBase*>(editor) ||
                        qobject_cast<QCheckBox*>(editor);
    const QPoint corner = option.rect.topLeft();
    if (inCell)
        editor->setGeometry(option.rect);
    else
        editor->move(editor->parentWidget() ? editor->parentWidget()->mapToGlobal(corner) : corner);
}

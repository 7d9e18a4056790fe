#include "modeldelegate.h"

#include "composite/arrayeditors.h"
#include "composite/celleditor_p.h"
#include "composite/matrixeditors.h"
#include "platform/stack/opcuatypetable_p.h"
#include "platform/types/uastring.h"
#include "values/enumeditors.h"

#include <QtCore/QEvent>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QLineEdit>

namespace {

// What is measured and painted of a text.
constexpr qsizetype shownCharacters = 2000;
constexpr int shownLines = 40;

template <class Editor>
QWidget* createNested(QWidget* parent, const Cell& cell)
{
    auto* dialog = new Editor(cell.value, QvelDialogWidgetBase::NoFlags, parent);
    dialog->setEnumInfo(cell.enumInfo);
    return dialog;
}

template <class Editor>
QWidget* createEnum(QWidget* parent, const Cell& cell)
{
    auto* editor = new Editor(cell.enumInfo.values, QvelWidgetBase::HideFrame, parent);
    editor->setValue(UaVariant(OpcUa_Int32(enumNumber(cell.value))));
    return editor;
}

template <class Editor>
QVariant readEnum(const QWidget* widget)
{
    const auto* editor = qobject_cast<const Editor*>(widget);
    bool ok = false;
    const OpcUa_Int32 value = editor ? editor->enumValue(&ok) : 0;
    return ok ? QVariant::fromValue(long(value)) : QVariant();
}

template <class Editor>
constexpr CellEditor nestedCell = {createNested<Editor>, editedValue<Editor>, ElementValueRole};
template <class Editor>
constexpr CellEditor enumCell = {createEnum<Editor>, readEnum<Editor>, Qt::EditRole};

// Null functions for a shape that has no editor.
CellEditor editorOf(const Cell& cell)
{
    switch (cell.value.arrayType()) {
    case OpcUa_VariantArrayType_Scalar:
        if (cell.enumInfo.kind == QvelEnumInfo::Enumeration)
            return enumCell<QvelWidgetEnum>;
        if (cell.enumInfo.kind == QvelEnumInfo::EnumerationFlags)
            return enumCell<QvelWidgetEnumFlags>;
        return typeEditor(cell.value.type()).cell;
    case OpcUa_VariantArrayType_Array:
        return nestedCell<QvelDialogWidgetArray>;
    case OpcUa_VariantArrayType_Matrix:
        return nestedCell<QvelDialogWidgetMatrix>;
    }
    return {};
}

// As CellEditor::read, but nothing from a list of names in which none is chosen.
QVariant contents(const CellEditor& kind, const QWidget* editor)
{
    const auto* names = qobject_cast<const QvelWidgetEnum*>(editor);
    const auto* box = names ? names->findChild<QComboBox*>() : nullptr;
    return box && box->currentIndex() < 0 ? QVariant() : kind.read(editor);
}

// The flags of an element after those that were shown have become others; those without a name,
// and those beyond 32 bits, stay.
QVariant withFlags(const UaVariant& element, quint32 shown, quint32 chosen)
{
    const OpcUa_BuiltInType type = element.type();
    if (type < OpcUaType_SByte || type > OpcUaType_UInt64)
        return QVariant::fromValue(long(OpcUa_Int32(chosen)));
    const bool isSigned = type % 2 == 0;
    const QByteArray text = element.toString().bytes();
    quint64 bits = isSigned ? quint64(text.toLongLong()) : text.toULongLong();
    bits = (bits | (chosen & ~shown)) & ~quint64(shown & ~chosen);
    const int unused = 64 - 8 * int(opcUaTypeInfo(OpcUa_Byte(type))->size);
    bits <<= unused;
    return isSigned ? QVariant(qlonglong(bits) >> unused) : QVariant(qulonglong(bits >> unused));
}

// How an editor was opened, for one that writes only changes: a live cell may have become one for
// another editor since, and what was typed is still to be written.
struct Opened
{
    CellEditor kind;
    QVariant contents;
};
constexpr const char* openedProperty = "kestrelOpened";

Opened openedAs(const QWidget* editor, const Cell& cell)
{
    const QVariant opened = editor->property(openedProperty);
    return opened.isValid() ? opened.value<Opened>() : Opened{editorOf(cell), {}};
}

} // namespace

bool isUnchanged(const QWidget* editor, const QModelIndex& index)
{
    const Opened opened = openedAs(editor, Cell(index));
    return opened.kind.read && contents(opened.kind, editor) == opened.contents;
}

QvelModelDelegate::QvelModelDelegate(QObject* parent) : QStyledItemDelegate(parent) {}

QvelModelDelegate::~QvelModelDelegate() = default;

QWidget* QvelModelDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                         const QModelIndex& index) const
{
    const Cell cell(index);
    const CellEditor kind = editorOf(cell);
    if (!kind.create)
        return nullptr;
    QWidget* editor = kind.create(parent, cell);
    if (auto* array = qobject_cast<QvelDialogWidgetArray*>(editor)) {
        array->setWritesOnlyChanges(m_writesOnlyChanges);
    } else if (auto* matrix = qobject_cast<QvelDialogWidgetMatrix*>(editor)) {
        matrix->setWritesOnlyChanges(m_writesOnlyChanges);
    } else if (qobject_cast<QDialog*>(editor)) {
        // A window that gets its size only when it is shown may not stay where it is moved.
        editor->adjustSize();
        const QPoint corner = option.rect.topLeft();
        editor->move(parent ? parent->mapToGlobal(corner) : corner);
    }
    if (m_writesOnlyChanges)
        editor->setProperty(openedProperty,
                            QVariant::fromValue(Opened{kind, contents(kind, editor)}));
    return editor;
}

// The editor has had its value since it was created.
void QvelModelDelegate::setEditorData(QWidget* /*editor*/, const QModelIndex& /*index*/) const {}

void QvelModelDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                     const QModelIndex& index) const
{
    const Cell cell(index);
    const auto [kind, before] = openedAs(editor, cell);
    const auto* dialog = qobject_cast<QDialog*>(editor);
    if (!kind.read || (dialog && dialog->result() != QDialog::Accepted))
        return;
    QVariant value = kind.read(editor);
    if (m_writesOnlyChanges) {
        if (contents(kind, editor) == before)
            return;
        if (value.isValid() && qobject_cast<QvelWidgetEnumFlags*>(editor))
            value = withFlags(cell.value, quint32(before.toInt()), quint32(value.toInt()));
    }
    if (value.isValid())
        model->setData(index, value, kind.role);
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

// Beyond its first lines, a text costs time that nobody sees.
QString QvelModelDelegate::displayText(const QVariant& value, const QLocale& locale) const
{
    if (value.userType() != QMetaType::QString)
        return QStyledItemDelegate::displayText(value, locale);
    const QString text = value.toString();
    qsizetype length = std::min(text.size(), shownCharacters);
    qsizetype end = -1;
    for (int line = 0; line < shownLines && (line == 0 || end >= 0); ++line)
        end = text.indexOf(QLatin1Char('\n'), end + 1);
    if (end >= 0)
        length = std::min(length, end);
    if (length == text.size())
        return QStyledItemDelegate::displayText(value, locale);
    return QStyledItemDelegate::displayText(QString(text.left(length) + QChar(0x2026)), locale);
}

void QvelModelDelegate::initStyleOption(QStyleOptionViewItem* option,
                                        const QModelIndex& index) const
{
    constexpr QChar firstStrongIsolate(0x2068), popDirectionalIsolate(0x2069);
    QStyledItemDelegate::initStyleOption(option, index);
    if (option->direction == Qt::RightToLeft && !option->text.isEmpty())
        option->text = firstStrongIsolate + option->text + popDirectionalIsolate;
}

// A dialog at a cell that is only minimised with its window has not been closed.
bool QvelModelDelegate::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Hide && event->spontaneous())
        return false;
    return QStyledItemDelegate::eventFilter(watched, event);
}

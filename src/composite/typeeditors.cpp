#include "typeeditors_p.h"

#include "base/editorhelpers_p.h"
#include "composite/celleditor_p.h"
#include "platform/stack/opcuatypetable_p.h"
#include "platform/types/uadatetime.h"
#include "platform/types/uastring.h"
#include "values/expandednodeideditors.h"
#include "values/longvalueeditors.h"
#include "values/nameeditors.h"
#include "values/nodeideditors.h"
#include "values/statuscodeguideditors.h"

#include <QtCore/QCoreApplication>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QDoubleSpinBox>

#include <limits>

namespace {

// A line edit lays its text out whole: of a longer one it shows the beginning and keeps the rest.
constexpr qsizetype maxEditedText = 200'000;
constexpr const char* wholeText = "kestrelWholeText";

template <class Widget>
QWidget* create()
{
    return new Widget;
}

template <class Widget, class... Arguments>
Widget* widgetOf(QWidget* widget, void (Widget::*)(Arguments...))
{
    return static_cast<Widget*>(widget);
}

template <auto signal>
void watch(QWidget* widget, QObject* context, const std::function<void()>& changed)
{
    QObject::connect(widgetOf(widget, signal), signal, context, changed);
}

template <class Number>
QWidget* createSpinBox()
{
    auto* box = new QDoubleSpinBox;
    box->setRange(double(std::numeric_limits<Number>::min()),
                  double(std::numeric_limits<Number>::max()));
    return box;
}

UaVariant checkedValue(const QWidget* widget, bool* ok)
{
    const auto* box = qobject_cast<const QCheckBox*>(widget);
    if (box && ok)
        *ok = true;
    return box ? UaVariant(OpcUa_Boolean(box->isChecked())) : UaVariant();
}

void setChecked(QWidget* widget, const UaVariant& value)
{
    if (auto* box = qobject_cast<QCheckBox*>(widget))
        box->setChecked(value.toBool());
}

// An integer is narrowed as it is, whatever its range.
template <class Number, auto convert, auto set>
UaVariant integerValue(const QWidget* widget, bool* ok)
{
    const auto* edit = qobject_cast<const QLineEdit*>(widget);
    UaVariant value;
    if (edit)
        (value.*set)(Number((edit->text().*convert)(ok, 10)));
    return value;
}

template <class Number, auto set>
UaVariant spinBoxValue(const QWidget* widget, bool* ok)
{
    const auto* box = qobject_cast<const QDoubleSpinBox*>(widget);
    UaVariant value;
    if (!box)
        return value;
    if (ok)
        *ok = true;
    (value.*set)(Number(box->value()));
    return value;
}

template <auto get>
void setSpinBoxValue(QWidget* widget, const UaVariant& value)
{
    if (auto* box = qobject_cast<QDoubleSpinBox*>(widget))
        box->setValue(double((value.*get)()));
}

UaVariant stringValue(const QString& text)
{
    UaVariant value;
    value.setString(UaString(text));
    return value;
}

// A text that is no DateTime counts as the null DateTime.
UaVariant dateTimeValue(const QString& text)
{
    UaVariant value;
    value.setDateTime(UaDateTime::fromString(UaString(text)));
    return value;
}

template <auto convert>
UaVariant textValue(const QWidget* widget, bool* ok)
{
    const auto* edit = qobject_cast<const QLineEdit*>(widget);
    if (edit && ok)
        *ok = true;
    return edit ? convert(edit->text()) : UaVariant();
}

void setText(QWidget* widget, const UaVariant& value)
{
    if (auto* edit = qobject_cast<QLineEdit*>(widget))
        showWhole(edit, value.toString().toQString());
}

template <class Editor>
UaVariant childValue(const QWidget* widget, bool* ok)
{
    const auto* editor = qobject_cast<const Editor*>(widget);
    return editor ? editor->value(ok) : UaVariant();
}

template <class Editor>
void setChildValue(QWidget* widget, const UaVariant& value)
{
    if (auto* editor = qobject_cast<Editor*>(widget))
        editor->setValue(value);
}

QWidget* createCellText(QWidget* parent, const Cell& cell)
{
    auto* edit = new QLineEdit(parent);
    edit->setFrame(false);
    const QString text = cell.index.data(Qt::EditRole).toString();
    showWhole(edit, text.left(maxEditedText));
    if (text.size() > maxEditedText) {
        edit->setReadOnly(true);
        retranslated(edit, [edit] {
            edit->setToolTip(
                QCoreApplication::translate("ElementTable", "This text is too long to be edited."));
        });
        edit->setProperty(wholeText, text);
    }
    return edit;
}

QVariant cellText(const QWidget* editor)
{
    const auto* edit = qobject_cast<const QLineEdit*>(editor);
    const QVariant whole = editor->property(wholeText);
    return !edit || whole.isValid() ? whole : edit->text();
}

QWidget* createCellBox(QWidget* parent, const Cell& cell)
{
    auto* box = new QCheckBox(parent);
    box->setAutoFillBackground(true);
    box->setChecked(cell.value.toBool());
    return box;
}

QVariant cellChecked(const QWidget* editor)
{
    bool ok = false;
    const UaVariant value = checkedValue(editor, &ok);
    return ok ? QVariant::fromValue(value) : QVariant();
}

// Inline editors and dialogs, each with the flags that it has in a cell.
template <class Editor>
QWidget* createCellEditor(QWidget* parent, const Cell& cell)
{
    Editor* editor = nullptr;
    if constexpr (std::is_base_of_v<QDialog, Editor>)
        editor = new Editor(QvelDialogWidgetBase::NoFlags, parent);
    else
        editor = new Editor(QvelWidgetBase::HideFrame, parent);
    editor->setValue(cell.value);
    return editor;
}

template <class Number, auto convert, auto set>
constexpr ValueEditor integerEditor = {create<QLineEdit>, watch<&QLineEdit::textChanged>,
                                       integerValue<Number, convert, set>, setText};
template <class Number, auto set, auto get>
constexpr ValueEditor spinBoxEditor = {createSpinBox<Number>, watch<&QDoubleSpinBox::valueChanged>,
                                       spinBoxValue<Number, set>, setSpinBoxValue<get>};
template <auto convert>
constexpr ValueEditor textEditor = {create<QLineEdit>, watch<&QLineEdit::textChanged>,
                                    textValue<convert>, setText};
template <class Editor>
constexpr ValueEditor childEditor = {create<Editor>, watch<&Editor::valueChanged>,
                                     childValue<Editor>, setChildValue<Editor>};
constexpr CellEditor textCell = {createCellText, cellText, Qt::EditRole};
template <class Editor>
constexpr CellEditor valueCell = {createCellEditor<Editor>, editedValue<Editor>, ElementValueRole};

#define KESTREL_INTEGER(Type, name, convert)                                                       \
    {                                                                                              \
        OpcUaType_##Type, name,                                                                    \
            integerEditor<OpcUa_##Type, &QString::convert, &UaVariant::set##Type>, textCell, true  \
    }
#define KESTREL_REAL(Type, name)                                                                   \
    {                                                                                              \
        OpcUaType_##Type, name,                                                                    \
            spinBoxEditor<OpcUa_##Type, &UaVariant::set##Type, &UaVariant::to##Type>, textCell,    \
            true                                                                                   \
    }
#define KESTREL_CLASS(Type, name, Editor, Cell)                                                    \
    {                                                                                              \
        OpcUaType_##Type, name, childEditor<Editor>, valueCell<Cell>, false                        \
    }

constexpr TypeEditor types[] = {
    {OpcUaType_Null, QT_TRANSLATE_NOOP("QvelWidgetVariant", "Null"), {}, textCell, false},
    {OpcUaType_Boolean,
     QT_TRANSLATE_NOOP("QvelWidgetVariant", "Boolean"),
     {create<QCheckBox>, watch<&QCheckBox::toggled>, checkedValue, setChecked},
     {createCellBox, cellChecked, ElementValueRole},
     false},
    KESTREL_INTEGER(SByte, QT_TRANSLATE_NOOP("QvelWidgetVariant", "SByte"), toInt),
    KESTREL_INTEGER(Byte, QT_TRANSLATE_NOOP("QvelWidgetVariant", "Byte"), toUInt),
    KESTREL_INTEGER(Int16, QT_TRANSLATE_NOOP("QvelWidgetVariant", "Int16"), toInt),
    KESTREL_INTEGER(UInt16, QT_TRANSLATE_NOOP("QvelWidgetVariant", "UInt16"), toUInt),
    KESTREL_INTEGER(Int32, QT_TRANSLATE_NOOP("QvelWidgetVariant", "Int32"), toInt),
    KESTREL_INTEGER(UInt32, QT_TRANSLATE_NOOP("QvelWidgetVariant", "UInt32"), toUInt),
    KESTREL_INTEGER(Int64, QT_TRANSLATE_NOOP("QvelWidgetVariant", "Int64"), toLongLong),
    KESTREL_INTEGER(UInt64, QT_TRANSLATE_NOOP("QvelWidgetVariant", "UInt64"), toULongLong),
    KESTREL_REAL(Float, QT_TRANSLATE_NOOP("QvelWidgetVariant", "Float")),
    KESTREL_REAL(Double, QT_TRANSLATE_NOOP("QvelWidgetVariant", "Double")),
    {OpcUaType_String, QT_TRANSLATE_NOOP("QvelWidgetVariant", "String"), textEditor<stringValue>,
     textCell, true},
    {OpcUaType_DateTime, QT_TRANSLATE_NOOP("QvelWidgetVariant", "DateTime"),
     textEditor<dateTimeValue>, textCell, true},
    KESTREL_CLASS(Guid, QT_TRANSLATE_NOOP("QvelWidgetVariant", "Guid"), QvelWidgetGuid,
                  QvelWidgetGuid),
    KESTREL_CLASS(ByteString, QT_TRANSLATE_NOOP("QvelWidgetVariant", "ByteString"),
                  QvelWidgetByteString, QvelWidgetByteString),
    KESTREL_CLASS(XmlElement, QT_TRANSLATE_NOOP("QvelWidgetVariant", "XmlElement"),
                  QvelWidgetXmlElement, QvelWidgetXmlElement),
    KESTREL_CLASS(NodeId, QT_TRANSLATE_NOOP("QvelWidgetVariant", "NodeId"), QvelWidgetNodeId,
                  QvelDialogWidgetNodeId),
    KESTREL_CLASS(ExpandedNodeId, QT_TRANSLATE_NOOP("QvelWidgetVariant", "ExpandedNodeId"),
                  QvelEditWidgetExpandedNodeId, QvelDialogWidgetExpandedNodeId),
    KESTREL_CLASS(StatusCode, QT_TRANSLATE_NOOP("QvelWidgetVariant", "StatusCode"),
                  QvelWidgetStatusCode, QvelWidgetStatusCode),
    KESTREL_CLASS(QualifiedName, QT_TRANSLATE_NOOP("QvelWidgetVariant", "QualifiedName"),
                  QvelWidgetQualifiedName, QvelDialogWidgetQualifiedName),
    KESTREL_CLASS(LocalizedText, QT_TRANSLATE_NOOP("QvelWidgetVariant", "LocalizedText"),
                  QvelWidgetLocalizedText, QvelDialogWidgetLocalizedText),
    {OpcUaType_ExtensionObject, nullptr, {}, textCell, false},
    {OpcUaType_DataValue, nullptr, {}, textCell, false},
    {OpcUaType_Variant, nullptr, {}, textCell, false},
    {OpcUaType_DiagnosticInfo, nullptr, {}, textCell, false},
};
static_assert(isTableOfTypes(types));

} // namespace

const TypeEditor& typeEditor(int type)
{
    return types[type >= 0 && type <= OpcUaType_DiagnosticInfo ? type : OpcUaType_Null];
}

#include "varianteditor.h"

#include "arrayeditors.h"
#include "base/editorhelpers_p.h"
#include "matrixeditors.h"
#include "platform/types/uadatetime.h"
#include "values/expandednodeideditors.h"
#include "values/longvalueeditors.h"
#include "values/maskededitors.h"
#include "values/nameeditors.h"
#include "values/nodeideditors.h"

#include <QtWidgets/QCheckBox>
#include <QtWidgets/QDoubleSpinBox>

#include <functional>
#include <iterator>
#include <limits>

namespace {

// One way to edit a value. Null functions: it is shown, but there is nothing to edit.
struct ValueEditor
{
    QWidget* (*create)();
    void (*watch)(QWidget* widget, QObject* context, const std::function<void()>& changed);
    UaVariant (*value)(const QWidget* widget, bool* ok);
    void (*setValue)(QWidget* widget, const UaVariant& value);
};

struct DataType
{
    const char* name;
    ValueEditor editor;
};

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
    UaVariant value;
    if (!box)
        return value;
    if (ok)
        *ok = true;
    value.setBool(box->isChecked());
    return value;
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
    value.setString(UaString(text.toUtf8()));
    return value;
}

// A text that is no DateTime counts as the null DateTime.
UaVariant dateTimeValue(const QString& text)
{
    UaVariant value;
    value.setDateTime(UaDateTime::fromString(UaString(text.toUtf8())));
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
        showWhole(edit, textFromUtf8(value.toString().bytes()));
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

// Indexed by the type's number.
constexpr DataType dataTypes[] = {
    {QT_TRANSLATE_NOOP("QvelWidgetVariant", "Null"), {}},
    {QT_TRANSLATE_NOOP("QvelWidgetVariant", "Boolean"),
     {create<QCheckBox>, watch<&QCheckBox::toggled>, checkedValue, setChecked}},
    {QT_TRANSLATE_NOOP("QvelWidgetVariant", "SByte"),
     integerEditor<OpcUa_SByte, &QString::toInt, &UaVariant::setSByte>},
    {QT_TRANSLATE_NOOP("QvelWidgetVariant", "Byte"),
     integerEditor<OpcUa_Byte, &QString::toUInt, &UaVariant::setByte>},
    {QT_TRANSLATE_NOOP("QvelWidgetVariant", "Int16"),
     integerEditor<OpcUa_Int16, &QString::toInt, &UaVariant::setInt16>},
    {QT_TRANSLATE_NOOP("QvelWidgetVariant", "UInt16"),
     integerEditor<OpcUa_UInt16, &QString::toUInt, &UaVariant::setUInt16>},
    {QT_TRANSLATE_NOOP("QvelWidgetVariant", "Int32"),
     integerEditor<OpcUa_Int32, &QString::toInt, &UaVariant::setInt32>},
    {QT_TRANSLATE_NOOP("QvelWidgetVariant", "UInt32"),
     integerEditor<OpcUa_UInt32, &QString::toUInt, &UaVariant::setUInt32>},
    {QT_TRANSLATE_NOOP("QvelWidgetVariant", "Int64"),
     integerEditor<OpcUa_Int64, &QString::toLongLong, &UaVariant::setInt64>},
    {QT_TRANSLATE_NOOP("QvelWidgetVariant", "UInt64"),
     integerEditor<OpcUa_UInt64, &QString::toULongLong, &UaVariant::setUInt64>},
    {QT_TRANSLATE_NOOP("QvelWidgetVariant", "Float"),
     spinBoxEditor<OpcUa_Float, &UaVariant::setFloat, &UaVariant::toFloat>},
    {QT_TRANSLATE_NOOP("QvelWidgetVariant", "Double"),
     spinBoxEditor<OpcUa_Double, &UaVariant::setDouble, &UaVariant::toDouble>},
    {QT_TRANSLATE_NOOP("QvelWidgetVariant", "String"), textEditor<stringValue>},
    {QT_TRANSLATE_NOOP("QvelWidgetVariant", "DateTime"), textEditor<dateTimeValue>},
    {QT_TRANSLATE_NOOP("QvelWidgetVariant", "Guid"), childEditor<QvelWidgetGuid>},
    {QT_TRANSLATE_NOOP("QvelWidgetVariant", "ByteString"), childEditor<QvelWidgetByteString>},
    {QT_TRANSLATE_NOOP("QvelWidgetVariant", "XmlElement"), childEditor<QvelWidgetXmlElement>},
    {QT_TRANSLATE_NOOP("QvelWidgetVariant", "NodeId"), childEditor<QvelWidgetNodeId>},
    {QT_TRANSLATE_NOOP("QvelWidgetVariant", "ExpandedNodeId"),
     childEditor<QvelEditWidgetExpandedNodeId>},
    {QT_TRANSLATE_NOOP("QvelWidgetVariant", "StatusCode"), childEditor<QvelWidgetStatusCode>},
    {QT_TRANSLATE_NOOP("QvelWidgetVariant", "QualifiedName"), childEditor<QvelWidgetQualifiedName>},
    {QT_TRANSLATE_NOOP("QvelWidgetVariant", "LocalizedText"), childEditor<QvelWidgetLocalizedText>},
};

// The editor for a pair of numbers; one of Null functions for a pair that has none.
const ValueEditor& editorOf(int arrayType, int dataType)
{
    static constexpr ValueEditor none = {};
    static constexpr ValueEditor array = childEditor<QvelEditWidgetArray>;
    static constexpr ValueEditor matrix = childEditor<QvelEditWidgetMatrix>;
    switch (arrayType) {
    case OpcUa_VariantArrayType_Scalar:
        return dataType >= 0 && dataType < int(std::size(dataTypes)) ? dataTypes[dataType].editor
                                                                     : none;
    case OpcUa_VariantArrayType_Array:
        return array;
    case OpcUa_VariantArrayType_Matrix:
        return matrix;
    default:
        return none;
    }
}

constexpr int valueRow = 2;
constexpr int valueColumn = 1;

} // namespace

QvelWidgetVariant::QvelWidgetVariant(QvelWidgetFlags flags, QWidget* parent,
                                     Qt::WindowFlags windowFlags)
    : QvelWidgetBase(flags, parent, windowFlags), m_grid(new QGridLayout(this)),
      m_valueLabel(new QLabel(tr("Value:"))), m_dataType(new QComboBox), m_arrayType(new QComboBox)
{
    registerValueTypes<UaVariant>();
    for (int i = 0; i < int(std::size(dataTypes)); ++i)
        m_dataType->addItem(tr(dataTypes[i].name), i);
    m_arrayType->addItem(tr("Scalar"), int(OpcUa_VariantArrayType_Scalar));
    m_arrayType->addItem(tr("Array"), int(OpcUa_VariantArrayType_Array));
    m_arrayType->addItem(tr("Matrix"), int(OpcUa_VariantArrayType_Matrix));

    m_grid->setContentsMargins(0, 0, 0, 0);
    m_grid->setVerticalSpacing(2);
    auto* dataTypeLabel = new QLabel(tr("DataType:"));
    auto* arrayTypeLabel = new QLabel(tr("ArrayType:"));
    m_grid->addWidget(dataTypeLabel, 0, 0);
    m_grid->addWidget(m_dataType, 0, 1);
    m_grid->addWidget(arrayTypeLabel, 1, 0);
    m_grid->addWidget(m_arrayType, 1, 1);
    m_grid->addWidget(m_valueLabel, valueRow, 0);
    dataTypeLabel->setBuddy(m_dataType);
    arrayTypeLabel->setBuddy(m_arrayType);
    for (QComboBox* box : {m_dataType, m_arrayType}) {
        box->setSizePolicy(QSizePolicy::MinimumExpanding, QSizePolicy::Fixed);
        box->setDisabled(flags.testFlag(ReadOnly));
    }
    updateValueWidget();

    connect(m_dataType, &QComboBox::currentIndexChanged, this,
            &QvelWidgetVariant::sltDataTypeChanged);
    connect(m_arrayType, &QComboBox::currentIndexChanged, this,
            &QvelWidgetVariant::sltArrayTypeChanged);
    for (QComboBox* box : {m_dataType, m_arrayType})
        connect(box, &QComboBox::currentIndexChanged, this, &QvelWidgetVariant::sltValueChanged);
}

QvelWidgetVariant::~QvelWidgetVariant() = default;

QWidget* QvelWidgetVariant::valueWidget() const
{
    const QLayoutItem* item = m_grid->itemAtPosition(valueRow, valueColumn);
    return item ? item->widget() : nullptr;
}

void QvelWidgetVariant::updateValueWidget()
{
    if (QWidget* old = valueWidget()) {
        // It may be telling of a change just now, to a host that answers with setValue().
        m_grid->removeWidget(old);
        old->disconnect(this);
        old->setParent(nullptr);
        old->deleteLater();
    }
    const int arrayType = m_arrayType->currentData().toInt();
    const auto dataType = OpcUa_BuiltInType(m_dataType->currentData().toInt());
    const ValueEditor& editor = editorOf(arrayType, dataType);
    QWidget* widget = editor.create ? editor.create() : new QLabel(tr("Null"));
    // An empty array, or matrix, tells its editor the type.
    UaVariant empty;
    if (arrayType == OpcUa_VariantArrayType_Array)
        empty.setEmptyArray(dataType);
    else if (arrayType == OpcUa_VariantArrayType_Matrix)
        empty.setEmptyMatrix(dataType);
    if (!empty.isEmpty())
        editor.setValue(widget, empty);
    if (editor.watch)
        editor.watch(widget, this, [this] { sltValueChanged(); });
    widget->setAccessibleName(tr("Value"));
    m_grid->addWidget(widget, valueRow, valueColumn);
    m_valueLabel->setBuddy(widget);
    setTabOrder(m_arrayType, widget);
}

UaVariant QvelWidgetVariant::value(bool* ok) const
{
    if (ok)
        *ok = false;
    const ValueEditor& editor = editorOf(m_arrayType->currentIndex(), m_dataType->currentIndex());
    return editor.value ? editor.value(valueWidget(), ok) : UaVariant();
}

void QvelWidgetVariant::setValue(const UaVariant& value)
{
    m_arrayType->setCurrentIndex(value.arrayType());
    m_dataType->setCurrentIndex(value.type());
    const ValueEditor& editor = editorOf(m_arrayType->itemData(value.arrayType()).toInt(),
                                         m_dataType->itemData(value.type()).toInt());
    if (editor.setValue)
        editor.setValue(valueWidget(), value);
}

void QvelWidgetVariant::showEvent(QShowEvent* event)
{
    QvelWidgetBase::showEvent(event);
    m_valueLabel->setMinimumHeight(m_arrayType->height());
}

void QvelWidgetVariant::sltDataTypeChanged(int /*iIndex*/)
{
    updateValueWidget();
}

void QvelWidgetVariant::sltArrayTypeChanged(int /*iIndex*/)
{
    updateValueWidget();
}

void QvelWidgetVariant::sltValueChanged()
{
    Q_EMIT valueChanged(value(nullptr));
}

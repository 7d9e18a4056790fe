#include "varianteditor.h"

#include "base/editorhelpers_p.h"
#include "base/valueline_p.h"
#include "composite/arrayeditors.h"
#include "composite/matrixeditors.h"
#include "composite/typeeditors_p.h"
#include "platform/types/uavariant.h"

namespace {

template <class Field>
constexpr ValueEditor fieldEditor = {
    [] { return static_cast<QWidget*>(new Field); },
    [](QWidget* widget, QObject* context, const std::function<void()>& changed) {
        QObject::connect(static_cast<Field*>(widget), &Field::valueChanged, context, changed);
    },
    [](const QWidget* widget, bool* ok) {
        const auto* field = qobject_cast<const Field*>(widget);
        return field ? field->value(ok) : UaVariant();
    },
    [](QWidget* widget, const UaVariant& value) {
        if (auto* field = qobject_cast<Field*>(widget))
            field->setValue(value);
    }};

// The editor for a pair of numbers; one of null functions for a pair that has none.
ValueEditor editorOf(int arrayType, int dataType)
{
    switch (arrayType) {
    case OpcUa_VariantArrayType_Scalar:
        return typeEditor(dataType).value;
    case OpcUa_VariantArrayType_Array:
        return fieldEditor<QvelEditWidgetArray>;
    case OpcUa_VariantArrayType_Matrix:
        return fieldEditor<QvelEditWidgetMatrix>;
    default:
        return {};
    }
}

constexpr int valueRow = 2;
constexpr int valueColumn = 1;

} // namespace

QvelWidgetVariant::QvelWidgetVariant(QvelWidgetFlags flags, QWidget* parent,
                                     Qt::WindowFlags windowFlags)
    : QvelWidgetBase(flags, parent, windowFlags), m_grid(new QGridLayout(this)),
      m_valueLabel(new QLabel), m_dataType(new QComboBox), m_arrayType(new QComboBox)
{
    registerValueTypes<UaVariant>();
    for (int i = 0; typeEditor(i).name && i <= OpcUaType_LocalizedText; ++i)
        m_dataType->addItem(QString(), i);
    for (int i = OpcUa_VariantArrayType_Scalar; i <= OpcUa_VariantArrayType_Matrix; ++i)
        m_arrayType->addItem(QString(), i);

    m_grid->setContentsMargins(0, 0, 0, 0);
    m_grid->setVerticalSpacing(2);
    auto* dataTypeLabel = new QLabel;
    auto* arrayTypeLabel = new QLabel;
    retranslated(this, [this, dataTypeLabel, arrayTypeLabel] {
        for (int i = 0; i < m_dataType->count(); ++i)
            m_dataType->setItemText(i, tr(typeEditor(i).name));
        const QString arrayTypes[] = {tr("Scalar"), tr("Array"), tr("Matrix")};
        for (int i = 0; i < m_arrayType->count(); ++i)
            m_arrayType->setItemText(i, arrayTypes[i]);
        dataTypeLabel->setText(tr("DataType:"));
        arrayTypeLabel->setText(tr("ArrayType:"));
        m_valueLabel->setText(tr("Value:"));
    });
    m_grid->addWidget(dataTypeLabel, 0, 0);
    m_grid->addWidget(m_dataType, 0, 1);
    m_grid->addWidget(arrayTypeLabel, 1, 0);
    m_grid->addWidget(m_arrayType, 1, 1);
    m_grid->addWidget(m_valueLabel, valueRow, 0);
    dataTypeLabel->setBuddy(m_dataType);
    arrayTypeLabel->setBuddy(m_arrayType);
    for (QComboBox* box : {m_dataType, m_arrayType}) {
        box->setSizePolicy(QSizePolicy::MinimumExpanding, QSizePolicy::Fixed);
    }
    QvelWidgetVariant::updateControls();
    updateValueWidget();

    connect(m_dataType, &QComboBox::currentIndexChanged, this,
            &QvelWidgetVariant::sltDataTypeChanged);
    connect(m_arrayType, &QComboBox::currentIndexChanged, this,
            &QvelWidgetVariant::sltArrayTypeChanged);
    for (QComboBox* box : {m_dataType, m_arrayType})
        connect(box, &QComboBox::currentIndexChanged, this, &QvelWidgetVariant::sltValueChanged);
}

QvelWidgetVariant::~QvelWidgetVariant() = default;

void QvelWidgetVariant::updateControls()
{
    for (QComboBox* box : {m_dataType, m_arrayType})
        lockControl(box, flags().testFlag(ReadOnly));
}

QWidget* QvelWidgetVariant::valueWidget() const
{
    const QLayoutItem* item = m_grid->itemAtPosition(valueRow, valueColumn);
    return item ? item->widget() : nullptr;
}

void QvelWidgetVariant::updateValueWidget()
{
    bool hadFocus = false;
    if (QWidget* old = valueWidget()) {
        const QWidget* focus = focusWidget();
        hadFocus = focus && (focus == old || old->isAncestorOf(focus));
        // It may be telling of a change just now, to a host that answers with setValue(). Hidden,
        // it does not appear as a window when the layout is late to show it.
        m_grid->removeWidget(old);
        old->disconnect(this);
        old->hide();
        old->setParent(nullptr);
        old->deleteLater();
    }
    const int arrayType = m_arrayType->currentData().toInt();
    const auto dataType = OpcUa_BuiltInType(m_dataType->currentData().toInt());
    const ValueEditor editor = editorOf(arrayType, dataType);
    QWidget* widget = editor.create ? editor.create() : new QLabel;
    // An empty array, or matrix, tells its editor the type.
    UaVariant empty;
    if (arrayType == OpcUa_VariantArrayType_Array)
        empty.setEmptyArray(dataType);
    else if (arrayType == OpcUa_VariantArrayType_Matrix)
        empty.setEmptyMatrix(dataType);
    if (editor.setValue && !empty.isEmpty())
        editor.setValue(widget, empty);
    if (editor.watch)
        editor.watch(widget, this, [this] { sltValueChanged(); });
    retranslated(widget, [widget, isNull = !editor.create] {
        if (isNull)
            static_cast<QLabel*>(widget)->setText(tr("Null"));
        else
            widget->setAccessibleName(tr("Value"));
    });
    m_grid->addWidget(widget, valueRow, valueColumn);
    m_valueLabel->setBuddy(widget);
    setTabOrder(m_arrayType, widget);
    if (!hadFocus)
        return;
    widget->show();
    QList<QWidget*> controls = widget->findChildren<QWidget*>();
    controls.prepend(widget);
    controls.append(m_dataType);
    for (QWidget* control : std::as_const(controls)) {
        if (control->window() == window() && control->focusPolicy() & Qt::TabFocus) {
            control->setFocus();
            return;
        }
    }
}

UaVariant QvelWidgetVariant::value(bool* ok) const
{
    if (ok)
        *ok = false;
    const ValueEditor editor = editorOf(m_arrayType->currentIndex(), m_dataType->currentIndex());
    return editor.value ? editor.value(valueWidget(), ok) : UaVariant();
}

void QvelWidgetVariant::setValue(const UaVariant& value)
{
    m_arrayType->setCurrentIndex(value.arrayType());
    m_dataType->setCurrentIndex(value.type());
    const ValueEditor editor = editorOf(m_arrayType->itemData(value.arrayType()).toInt(),
                                        m_dataType->itemData(value.type()).toInt());
    if (editor.setValue)
        editor.setValue(valueWidget(), value);
}

QString QvelWidgetVariant::valueText() const
{
    bool ok = false;
    const UaVariant shown = value(&ok);
    return ok ? jsonLine(shown) : QString();
}

void QvelWidgetVariant::setValueText(const QString& text)
{
    if (const auto value = valueOfJsonLine(text))
        setValue(*value);
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
    Q_EMIT valueTextChanged();
    Q_EMIT valueChanged(value());
}

#include "writevaluepage.h"

#include "language.h"

#include <Kestrel/QvelEditWidgetArray>
#include <Kestrel/QvelEnumInfo>
#include <Kestrel/QvelWidgetVariant>
#include <Kestrel/UaString>
#include <Kestrel/UaVariant>

#include <QtWidgets/QFormLayout>
#include <QtWidgets/QGroupBox>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QVBoxLayout>

namespace {

constexpr int maxText = 100'000; // characters that are shown of a value
constexpr int million = 1'000'000;

struct Example
{
    const char* title; // context "WriteValuePage"
    UaVariant (*create)();
    QvelEnumInfo (*enumInfo)();
};

QvelEnumInfo noNames()
{
    return QvelEnumInfo();
}

UaVariant integers(OpcUa_Int32 length)
{
    QList<OpcUa_Int32> numbers(length);
    for (OpcUa_Int32 i = 0; i < length; ++i)
        numbers[i] = i % 4;
    UaVariant value;
    value.setInt32Array(numbers);
    return value;
}

UaVariant texts()
{
    UaVariant value;
    value.setStringArray({"Pump", "Valve", "Boiler\nhouse 3"});
    return value;
}

UaVariant matrix()
{
    UaVariant value;
    return value.setDoubleMatrix({0, 1.5, 3, 4.5, 6, 7.5}, {2, 3}) ? value : UaVariant();
}

// A number, and an array in an element.
UaVariant nested()
{
    UaVariant value;
    value.setVariantArray({UaVariant(OpcUa_Int32(7)), integers(3)});
    return value;
}

UaVariant dataValues()
{
    const UaVariant number(OpcUa_Int32(7));
    OpcUa_DataValue known = {};
    known.Value = *number;
    UaVariant value;
    value.setDataValueArray({known, {}});
    return value;
}

UaVariant scalar()
{
    return UaVariant("Water treatment, line 3");
}

QvelEnumInfo valveStates()
{
    QvelEnumInfo info;
    info.kind = QvelEnumInfo::Enumeration;
    info.values = {{0, "Closed"}, {1, "Opening"}, {2, "Open"}, {3, "Stuck"}};
    return info;
}

QvelEnumInfo permissions()
{
    QvelEnumInfo info;
    info.kind = QvelEnumInfo::EnumerationFlags;
    info.values = {{0, "None"}, {1, "Read"}, {2, "Write"}, {4, "Execute"}};
    return info;
}

const Example examples[] = {
    {QT_TRANSLATE_NOOP("WriteValuePage", "Text"), scalar, noNames},
    {QT_TRANSLATE_NOOP("WriteValuePage", "Array of Int32"), [] { return integers(5); }, noNames},
    {QT_TRANSLATE_NOOP("WriteValuePage", "Array of String"), texts, noNames},
    {QT_TRANSLATE_NOOP("WriteValuePage", "Matrix of Double, 2 by 3"), matrix, noNames},
    {QT_TRANSLATE_NOOP("WriteValuePage", "Array of an enumeration"), [] { return integers(5); },
     valveStates},
    {QT_TRANSLATE_NOOP("WriteValuePage", "Array of flags"), [] { return integers(5); },
     permissions},
    {QT_TRANSLATE_NOOP("WriteValuePage", "Array of 1,000,000 Int32"),
     [] { return integers(million); }, noNames},
    {QT_TRANSLATE_NOOP("WriteValuePage", "Nested: an array in an array"), nested, noNames},
    {QT_TRANSLATE_NOOP("WriteValuePage", "Unsupported: array of DataValue"), dataValues, noNames},
};

QString shapeName(OpcUa_VariantArrayType shape)
{
    switch (shape) {
    case OpcUa_VariantArrayType_Array:
        return WriteValuePage::tr("array");
    case OpcUa_VariantArrayType_Matrix:
        return WriteValuePage::tr("matrix");
    default:
        return WriteValuePage::tr("scalar");
    }
}

} // namespace

WriteValuePage::WriteValuePage(QWidget* parent)
    : QWidget(parent), m_examples(new QListWidget), m_place(new QWidget),
      m_variant(new QvelWidgetVariant), m_type(new QLabel), m_ok(new QLabel),
      m_text(new QPlainTextEdit)
{
    for (std::size_t i = 0; i < std::size(examples); ++i)
        m_examples->addItem(QString());
    m_text->setReadOnly(true);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);

    auto* placeLayout = new QVBoxLayout(m_place);
    placeLayout->setContentsMargins({});
    placeLayout->addWidget(m_variant);

    auto* editor = new QGroupBox;
    (new QVBoxLayout(editor))->addWidget(m_place);
    auto* result = new QGroupBox;
    auto* form = new QFormLayout(result);
    const std::pair<const char*, QWidget*> rows[] = {
        {QT_TR_NOOP("Type:"), m_type}, {QT_TR_NOOP("Valid:"), m_ok}, {QT_TR_NOOP("Text:"), m_text}};
    for (const auto& [text, field] : rows) {
        auto* label = new QLabel;
        label->setBuddy(field);
        Language::follow(label, [label, title = text] { label->setText(tr(title)); });
        form->addRow(label, field);
    }

    auto* right = new QVBoxLayout;
    right->addWidget(editor);
    right->addWidget(result, 1);
    auto* layout = new QHBoxLayout(this);
    layout->addWidget(m_examples, 1);
    layout->addLayout(right, 2);

    connect(m_variant, &QvelWidgetVariant::valueChanged, this, &WriteValuePage::showValue);
    connect(m_examples, &QListWidget::currentRowChanged, this, &WriteValuePage::showExample);
    m_examples->setCurrentRow(0);
    Language::follow(this, [=] {
        m_examples->setAccessibleName(tr("Examples"));
        for (int i = 0; i < m_examples->count(); ++i)
            m_examples->item(i)->setText(tr(examples[i].title));
        m_text->setAccessibleName(tr("Full text"));
        m_ok->setAccessibleName(tr("Validity"));
        editor->setTitle(tr("Value to write"));
        result->setTitle(tr("Result"));
        showValue();
    });
}

void WriteValuePage::showExample(int index)
{
    if (index < 0)
        return;
    const Example& example = examples[index];
    const QvelEnumInfo info = example.enumInfo();
    delete m_named;
    m_named = nullptr;
    // The variant editor knows no names; its array editor does.
    m_variant->setVisible(info.kind == QvelEnumInfo::NoEnumeration);
    if (info.kind == QvelEnumInfo::NoEnumeration) {
        m_variant->setValue(example.create());
    } else {
        auto* field = new QvelEditWidgetArray;
        field->setWritesOnlyChanges(true);
        field->setEnumInfo(info);
        field->setValue(example.create());
        connect(field, &QvelEditWidgetArray::valueChanged, this, &WriteValuePage::showValue);
        m_named = field;
        m_place->layout()->addWidget(field);
    }
    showValue();
}

void WriteValuePage::showValue()
{
    bool ok = false;
    const UaVariant value = m_named ? m_named->value(&ok) : m_variant->value(&ok);
    QString type = tr("type %1, %2").arg(int(value.type())).arg(shapeName(value.arrayType()));
    if (value.arrayType() != OpcUa_VariantArrayType_Scalar)
        type = tr("%1 of %n element(s)", nullptr, value.arraySize()).arg(type);
    m_type->setText(type);
    m_ok->setText(ok ? tr("ok") : tr("not valid"));
    m_ok->setAccessibleDescription(m_ok->text());
    m_text->setPlainText(value.toFullString().toQString().left(maxText));
}

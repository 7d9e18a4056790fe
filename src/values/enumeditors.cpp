#include "enumeditors.h"

#include "base/editorhelpers_p.h"

QvelWidgetEnum::QvelWidgetEnum(const QMap<int, QString>& values, QvelWidgetFlags flags,
                               QWidget* parent, Qt::WindowFlags windowFlags)
    : QvelWidgetBase(flags, parent, windowFlags), m_combo(new QComboBox)
{
    registerValueTypes<UaVariant>();
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        m_combo->addItem(QStringLiteral("%1 (%2)").arg(QString::number(it.key()), it.value()),
                         it.key());
    m_combo->setAccessibleName(tr("Value"));
    setSingleControl(this, m_combo);
    connect(m_combo, &QComboBox::currentIndexChanged, this, &QvelWidgetEnum::sltEnumValueChanged);
}

QvelWidgetEnum::~QvelWidgetEnum() = default;

OpcUa_Int32 QvelWidgetEnum::enumValue(bool* ok) const
{
    if (ok)
        *ok = true;
    return m_combo->currentData().toInt();
}

void QvelWidgetEnum::setEnumValue(OpcUa_Int32 value)
{
    selectNumber(m_combo, value);
}

QvelEnumFlagsDelegate::QvelEnumFlagsDelegate(QObject* parent) : QvelFlagsDelegate(parent) {}

QvelEnumFlagsDelegate::~QvelEnumFlagsDelegate() = default;

QvelEnumFlagsComboBox::QvelEnumFlagsComboBox(const QMap<int, QString>& values, QWidget* parent)
    : QvelFlagsComboBoxBase(new QvelEnumFlagsDelegate, parent)
{
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        addFlag(it.value(), uint(it.key()));
    sltUpdateDisplayText();
}

QvelEnumFlagsComboBox::~QvelEnumFlagsComboBox() = default;

int QvelEnumFlagsComboBox::flags() const
{
    return int(checkedBits());
}

void QvelEnumFlagsComboBox::setFlags(int value)
{
    checkBits(uint(value));
}

QvelWidgetEnumFlags::QvelWidgetEnumFlags(const QMap<int, QString>& values, QvelWidgetFlags flags,
                                         QWidget* parent, Qt::WindowFlags windowFlags)
    : QvelWidgetBase(flags, parent, windowFlags), m_combo(new QvelEnumFlagsComboBox(values))
{
    registerValueTypes<UaVariant>();
    m_combo->setAccessibleName(tr("Flags"));
    setSingleControl(this, m_combo);
    connect(m_combo, &QvelEnumFlagsComboBox::flagsChanged, this,
            &QvelWidgetEnumFlags::sltEnumValueChanged);
}

QvelWidgetEnumFlags::~QvelWidgetEnumFlags() = default;

OpcUa_Int32 QvelWidgetEnumFlags::enumValue(bool* ok) const
{
    if (ok)
        *ok = true;
    return m_combo->flags();
}

void QvelWidgetEnumFlags::setEnumValue(OpcUa_Int32 value)
{
    m_combo->setFlags(value);
}

KESTREL_EDITOR_VALUE(QvelWidgetEnum, Int32, enumValue, EnumValue)
KESTREL_EDITOR_VALUE(QvelWidgetEnumFlags, Int32, enumValue, EnumValue)

void QvelWidgetEnum::sltEnumValueChanged()
{
    emitChanged(this, &QvelWidgetEnum::enumValue, &QvelWidgetEnum::enumValueChanged);
}

void QvelWidgetEnumFlags::sltEnumValueChanged()
{
    emitChanged(this, &QvelWidgetEnumFlags::enumValue, &QvelWidgetEnumFlags::enumValueChanged);
}

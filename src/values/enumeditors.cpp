#include "enumeditors.h"

#include "base/editorhelpers_p.h"

#include <QtCore/QPointer>
#include <QtCore/QSignalBlocker>

namespace {

QStringList namesOf(const QMap<int, QString>& values)
{
    QStringList names;
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        names.append(QStringLiteral("%1=%2").arg(QString::number(it.key()), it.value()));
    return names;
}

int nextNumber(int number)
{
    return int(uint(number) + 1);
}

int nextBit(int bits)
{
    return bits == 0 ? 1 : int(uint(bits) << 1);
}

QMap<int, QString> valuesOf(const QStringList& names, int first, int (*next)(int))
{
    QMap<int, QString> values;
    int number = first;
    for (const QString& name : names) {
        const qsizetype sign = name.indexOf(u'=');
        bool ok = false;
        const int told = int(name.left(sign).toLongLong(&ok, 0)); // of a mask, all 32 bits
        const bool isNumbered = sign > 0 && ok;
        number = isNumbered ? told : number;
        values.insert(number, isNumbered ? name.mid(sign + 1) : name);
        number = next(number);
    }
    return values;
}

} // namespace

QvelWidgetEnum::QvelWidgetEnum(const QMap<int, QString>& values, QvelWidgetFlags flags,
                               QWidget* parent, Qt::WindowFlags windowFlags)
    : QvelWidgetBase(flags, parent, windowFlags), m_combo(new QComboBox)
{
    registerValueTypes<UaVariant>();
    QvelWidgetEnum::setValues(values);
    retranslated(this, [this] { m_combo->setAccessibleName(tr("Value")); });
    setSingleControl(this, m_combo);
    connect(m_combo, &QComboBox::currentIndexChanged, this, &QvelWidgetEnum::sltEnumValueChanged);
}

QvelWidgetEnum::~QvelWidgetEnum() = default;

void QvelWidgetEnum::setValues(const QMap<int, QString>& values)
{
    const OpcUa_Int32 before = enumValue();
    {
        const QSignalBlocker blocker(m_combo);
        m_combo->clear();
        for (auto it = values.cbegin(); it != values.cend(); ++it)
            m_combo->addItem(QStringLiteral("%1 (%2)").arg(QString::number(it.key()), it.value()),
                             it.key());
        if (m_wanted)
            selectNumber(m_combo, *m_wanted);
    }
    m_values = values;
    const QPointer<QvelWidgetEnum> self(this);
    Q_EMIT valueNamesChanged();
    if (self && enumValue() != before)
        tellChange();
}

OpcUa_Int32 QvelWidgetEnum::enumValue(bool* ok) const
{
    if (ok)
        *ok = true;
    return m_combo->currentData().toInt();
}

void QvelWidgetEnum::setEnumValue(OpcUa_Int32 value)
{
    selectNumber(m_combo, value);
    m_wanted = value;
}

QvelEnumFlagsDelegate::QvelEnumFlagsDelegate(QObject* parent) : QvelFlagsDelegate(parent) {}

QvelEnumFlagsDelegate::~QvelEnumFlagsDelegate() = default;

QvelEnumFlagsComboBox::QvelEnumFlagsComboBox(const QMap<int, QString>& values, QWidget* parent)
    : QvelFlagsComboBoxBase(new QvelEnumFlagsDelegate, parent)
{
    setValues(values);
}

QvelEnumFlagsComboBox::~QvelEnumFlagsComboBox() = default;

void QvelEnumFlagsComboBox::setValues(const QMap<int, QString>& values)
{
    const QSignalBlocker blocker(this);
    clear();
    addFlag(QString(), 0);
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        addFlag(it.value(), uint(it.key()));
    sltUpdateDisplayText();
}

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
    : QvelWidgetBase(flags, parent, windowFlags), m_combo(new QvelEnumFlagsComboBox(values)),
      m_values(values)
{
    registerValueTypes<UaVariant>();
    retranslated(this, [this] { m_combo->setAccessibleName(tr("Flags")); });
    setSingleControl(this, m_combo);
    connect(m_combo, &QvelEnumFlagsComboBox::flagsChanged, this,
            &QvelWidgetEnumFlags::sltEnumValueChanged);
}

QvelWidgetEnumFlags::~QvelWidgetEnumFlags() = default;

void QvelWidgetEnumFlags::setValues(const QMap<int, QString>& values)
{
    const OpcUa_Int32 before = enumValue();
    {
        const QSignalBlocker blocker(m_combo);
        m_combo->setValues(values);
        m_combo->setFlags(m_wanted.value_or(0));
    }
    m_values = values;
    const QPointer<QvelWidgetEnumFlags> self(this);
    Q_EMIT valueNamesChanged();
    if (self && enumValue() != before)
        tellChange();
}

OpcUa_Int32 QvelWidgetEnumFlags::enumValue(bool* ok) const
{
    if (ok)
        *ok = true;
    return m_combo->flags();
}

void QvelWidgetEnumFlags::setEnumValue(OpcUa_Int32 value)
{
    m_combo->setFlags(value);
    m_wanted = value;
}

KESTREL_EDITOR_VALUE(QvelWidgetEnum, Int32, enumValue, EnumValue)
KESTREL_EDITOR_VALUE(QvelWidgetEnumFlags, Int32, enumValue, EnumValue)

// What the two have in common beside their controls.
#define KESTREL_ENUM_EDITOR(Editor, first, next)                                                   \
    QStringList Editor::valueNames() const                                                         \
    {                                                                                              \
        return namesOf(m_values);                                                                  \
    }                                                                                              \
    void Editor::setValueNames(const QStringList& names)                                           \
    {                                                                                              \
        setValues(valuesOf(names, first, next));                                                   \
    }                                                                                              \
    void Editor::tellChange()                                                                      \
    {                                                                                              \
        emitChanged(this, &Editor::enumValue, &Editor::enumValueChanged);                          \
    }                                                                                              \
    void Editor::sltEnumValueChanged()                                                             \
    {                                                                                              \
        m_wanted = enumValue();                                                                    \
        tellChange();                                                                              \
    }

KESTREL_ENUM_EDITOR(QvelWidgetEnum, 0, nextNumber)
KESTREL_ENUM_EDITOR(QvelWidgetEnumFlags, 1, nextBit)

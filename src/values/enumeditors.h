#pragma once

#include "../base/editorbases.h"
#include "flagscombobox.h"

#include <QtCore/QMap>
#include <QtCore/QStringList>

#include <optional>

/// \file
/// Inline editors of Int32 values that are named: members of an enumeration, or sets of flags. The
/// names come as a map from value, or bit mask, to name. Every input is valid.
///
/// In a form the names are a list of texts: "2=Running", or without its number "Running", which
/// then is the next one, or the next bit. Other names leave the value as it is where they name it;
/// a value that was set before there were names is shown once they come.

/// Picks one value of an enumeration. A value that has no name cannot be shown: nothing is
/// selected then, and the value is 0.
class KESTREL_EXPORT QvelWidgetEnum : public QvelWidgetBase
{
    Q_OBJECT
    Q_PROPERTY(QStringList valueNames READ valueNames WRITE setValueNames NOTIFY valueNamesChanged)
    Q_PROPERTY(int enumValue READ enumValue WRITE setEnumValue NOTIFY enumValueChanged)
public:
    explicit QvelWidgetEnum(const QMap<int, QString>& values, QvelWidgetFlags flags = {},
                            QWidget* parent = nullptr, Qt::WindowFlags windowFlags = {});
    explicit QvelWidgetEnum(QWidget* parent = nullptr)
        : QvelWidgetEnum(QMap<int, QString>(), {}, parent)
    {
    }
    ~QvelWidgetEnum() override;

    QMap<int, QString> values() const { return m_values; }
    void setValues(const QMap<int, QString>& values);
    QStringList valueNames() const;
    void setValueNames(const QStringList& names);

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    OpcUa_Int32 enumValue(bool* ok = nullptr) const;
    void setEnumValue(OpcUa_Int32 value);

Q_SIGNALS:
    void valueChanged(UaVariant value);
    void enumValueChanged(OpcUa_Int32);
    void valueNamesChanged();

private Q_SLOTS:
    void sltEnumValueChanged();

private:
    void tellChange();

    QComboBox* m_combo;
    QMap<int, QString> m_values;
    std::optional<OpcUa_Int32> m_wanted; // as it was set or chosen
};

/// The delegate of the list of a QvelEnumFlagsComboBox.
class KESTREL_EXPORT QvelEnumFlagsDelegate : public QvelFlagsDelegate
{
    Q_OBJECT
public:
    explicit QvelEnumFlagsDelegate(QObject* parent = nullptr);
    ~QvelEnumFlagsDelegate() override;
};

/// A check-box list over a map of names. The name of 0 is shown when nothing is checked.
class KESTREL_EXPORT QvelEnumFlagsComboBox : public QvelFlagsComboBoxBase
{
    Q_OBJECT
public:
    explicit QvelEnumFlagsComboBox(const QMap<int, QString>& values, QWidget* parent = nullptr);
    ~QvelEnumFlagsComboBox() override;

    /// Other entries, with nothing checked.
    void setValues(const QMap<int, QString>& values);

    /// All bits of the checked entries.
    int flags() const;
    /// Checks the entries that have a bit in common with `value`, and no others.
    void setFlags(int value);
};

/// Sets any combination of flags. Bits without a name are dropped.
class KESTREL_EXPORT QvelWidgetEnumFlags : public QvelWidgetBase
{
    Q_OBJECT
    Q_PROPERTY(QStringList valueNames READ valueNames WRITE setValueNames NOTIFY valueNamesChanged)
    Q_PROPERTY(int enumValue READ enumValue WRITE setEnumValue NOTIFY enumValueChanged)
public:
    explicit QvelWidgetEnumFlags(const QMap<int, QString>& values, QvelWidgetFlags flags = {},
                                 QWidget* parent = nullptr, Qt::WindowFlags windowFlags = {});
    explicit QvelWidgetEnumFlags(QWidget* parent = nullptr)
        : QvelWidgetEnumFlags(QMap<int, QString>(), {}, parent)
    {
    }
    ~QvelWidgetEnumFlags() override;

    QMap<int, QString> values() const { return m_values; }
    void setValues(const QMap<int, QString>& values);
    QStringList valueNames() const;
    void setValueNames(const QStringList& names);

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    OpcUa_Int32 enumValue(bool* ok = nullptr) const;
    void setEnumValue(OpcUa_Int32 value);

Q_SIGNALS:
    void valueChanged(UaVariant value);
    void enumValueChanged(OpcUa_Int32);
    void valueNamesChanged();

private Q_SLOTS:
    void sltEnumValueChanged();

private:
    void tellChange();

    QvelEnumFlagsComboBox* m_combo;
    QMap<int, QString> m_values;
    std::optional<OpcUa_Int32> m_wanted; // as it was set or chosen
};

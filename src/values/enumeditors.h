#pragma once

#include "../base/editorbases.h"
#include "flagscombobox.h"

#include <QtCore/QMap>

/// \file
/// Inline editors of Int32 values that are named: members of an enumeration, or sets of flags. The
/// names come as a map from value, or bit mask, to name. Every input is valid.

/// Picks one value of an enumeration. A value that has no name cannot be shown: nothing is
/// selected then, and the value is 0.
class KESTREL_EXPORT QvelWidgetEnum : public QvelWidgetBase
{
    Q_OBJECT
public:
    explicit QvelWidgetEnum(const QMap<int, QString>& values, QvelWidgetFlags flags = {},
                            QWidget* parent = nullptr, Qt::WindowFlags windowFlags = {});
    ~QvelWidgetEnum() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    OpcUa_Int32 enumValue(bool* ok = nullptr) const;
    void setEnumValue(OpcUa_Int32 value);

Q_SIGNALS:
    void valueChanged(UaVariant value);
    void enumValueChanged(OpcUa_Int32);

private Q_SLOTS:
    void sltEnumValueChanged();

private:
    QComboBox* m_combo;
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

    /// All bits of the checked entries.
    int flags() const;
    /// Checks the entries that have a bit in common with `value`, and no others.
    void setFlags(int value);
};

/// Sets any combination of flags. Bits without a name are dropped.
class KESTREL_EXPORT QvelWidgetEnumFlags : public QvelWidgetBase
{
    Q_OBJECT
public:
    explicit QvelWidgetEnumFlags(const QMap<int, QString>& values, QvelWidgetFlags flags = {},
                                 QWidget* parent = nullptr, Qt::WindowFlags windowFlags = {});
    ~QvelWidgetEnumFlags() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    OpcUa_Int32 enumValue(bool* ok = nullptr) const;
    void setEnumValue(OpcUa_Int32 value);

Q_SIGNALS:
    void valueChanged(UaVariant value);
    void enumValueChanged(OpcUa_Int32);

private Q_SLOTS:
    void sltEnumValueChanged();

private:
    QvelEnumFlagsComboBox* m_combo;
};

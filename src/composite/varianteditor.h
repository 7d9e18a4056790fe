#pragma once

#include "../base/editorbases.h"

class QComboBox;
class QGridLayout;
class QLabel;

/// Inline editor of a value of any built-in type and shape. The user chooses data type and array
/// type, and gets the editor that fits; each choice starts from an empty value.
///
/// Integers are narrowed to their type without a range check, Float and Double have two decimals
/// and no negative numbers, and a DateTime that cannot be read is the null DateTime; only an
/// integer that is none is invalid, besides the invalid input of the structured types. ReadOnly
/// locks the two choices, not the value. A Null value is never valid.
class KESTREL_EXPORT QvelWidgetVariant : public QvelWidgetBase
{
    Q_OBJECT
public:
    explicit QvelWidgetVariant(QvelWidgetFlags flags = {}, QWidget* parent = nullptr,
                               Qt::WindowFlags windowFlags = {});
    explicit QvelWidgetVariant(QWidget* parent) : QvelWidgetVariant(QvelWidgetFlags(), parent) {}
    ~QvelWidgetVariant() override;

    UaVariant value(bool* ok = nullptr) const override;
    /// Chooses the value's types and shows it. A type that is not offered leaves no choice.
    void setValue(const UaVariant& value) override;
    QString valueText() const override;
    void setValueText(const QString& text) override;

Q_SIGNALS:
    void valueChanged(UaVariant value);

protected:
    void showEvent(QShowEvent* event) override;
    void updateControls() override;

private Q_SLOTS:
    void sltDataTypeChanged(int iIndex);
    void sltArrayTypeChanged(int iIndex);
    void sltValueChanged();

private:
    QWidget* valueWidget() const;
    void updateValueWidget();

    QGridLayout* m_grid;
    QLabel* m_valueLabel;
    QComboBox* m_dataType;
    QComboBox* m_arrayType;
};

#pragma once

#include "../base/editorbases.h"

class QComboBox;

/// Inline editor of the ValueRank attribute (OPC 10000-3, 5.6.2): one of the six values that the
/// standard names. Any other value cannot be shown: nothing is selected then, and the value is 0.
class KESTREL_EXPORT QvelWidgetValueRank : public QvelWidgetBase
{
    Q_OBJECT
    Q_PROPERTY(int valueRank READ valueRank WRITE setValueRank NOTIFY valueRankChanged)
public:
    explicit QvelWidgetValueRank(QvelWidgetFlags flags = {}, QWidget* parent = nullptr,
                                 Qt::WindowFlags windowFlags = {});
    explicit QvelWidgetValueRank(QWidget* parent) : QvelWidgetValueRank(QvelWidgetFlags(), parent)
    {
    }
    ~QvelWidgetValueRank() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    OpcUa_Int32 valueRank(bool* ok = nullptr) const;
    void setValueRank(OpcUa_Int32 valueRank);

Q_SIGNALS:
    void valueChanged(UaVariant value);
    void valueRankChanged(OpcUa_Int32 valueRank);

private Q_SLOTS:
    void sltValueRankChanged();

private:
    QComboBox* m_combo;
};

#pragma once

#include "../base/editorbases.h"
#include "../platform/types/uaguid.h"
#include "../platform/types/uastatuscode.h"

class QLineEdit;

/// \file
/// Inline editors with one masked line edit.

/// Inline editor of a StatusCode (OPC 10000-4, 7.39): "0x" and eight hexadecimal digits. Fewer
/// digits are a smaller number; none are invalid and count as code 0.
class KESTREL_EXPORT QvelWidgetStatusCode : public QvelWidgetBase
{
    Q_OBJECT
public:
    explicit QvelWidgetStatusCode(QvelWidgetFlags flags = {}, QWidget* parent = nullptr,
                                  Qt::WindowFlags windowFlags = {});
    explicit QvelWidgetStatusCode(QWidget* parent) : QvelWidgetStatusCode(QvelWidgetFlags(), parent)
    {
    }
    ~QvelWidgetStatusCode() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    UaStatusCode statusCode(bool* ok = nullptr) const;
    void setStatusCode(const UaStatusCode& statusCode);

Q_SIGNALS:
    void valueChanged(UaVariant value);
    void statusCodeChanged(UaStatusCode statusCode);

private Q_SLOTS:
    void sltStatusCodeChanged();

private:
    QLineEdit* m_edit;
};

/// Inline editor of a Guid: 8-4-4-4-12 hexadecimal digits in braces, every one of them required.
class KESTREL_EXPORT QvelWidgetGuid : public QvelWidgetBase
{
    Q_OBJECT
public:
    explicit QvelWidgetGuid(QvelWidgetFlags flags = {}, QWidget* parent = nullptr,
                            Qt::WindowFlags windowFlags = {});
    explicit QvelWidgetGuid(QWidget* parent) : QvelWidgetGuid(QvelWidgetFlags(), parent) {}
    ~QvelWidgetGuid() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    UaGuid guid(bool* ok = nullptr) const;
    void setGuid(const UaGuid& guid);

Q_SIGNALS:
    void valueChanged(UaVariant value);
    void guidChanged(UaGuid guid);

private Q_SLOTS:
    void sltGuidChanged();

private:
    QLineEdit* m_edit;
};

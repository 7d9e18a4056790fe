#pragma once

#include "../base/editorbases.h"
#include "../platform/types/uanames.h"

class QLineEdit;
class QSpinBox;

/// \file
/// Editors of the two types that pair a qualifier with a text (OPC 10000-3, 8.3 and 8.5). Every
/// input is valid; texts are kept as typed, empty ones included.

/// Inline editor of a QualifiedName.
class KESTREL_EXPORT QvelWidgetQualifiedName : public QvelWidgetBase
{
    Q_OBJECT
public:
    explicit QvelWidgetQualifiedName(QvelWidgetFlags flags = {}, QWidget* parent = nullptr,
                                     Qt::WindowFlags windowFlags = {});
    explicit QvelWidgetQualifiedName(QWidget* parent)
        : QvelWidgetQualifiedName(QvelWidgetFlags(), parent)
    {
    }
    ~QvelWidgetQualifiedName() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    UaQualifiedName qualifiedName(bool* ok = nullptr) const;
    void setQualifiedName(const UaQualifiedName& qualifiedName);
    void setNamespaceIndex(OpcUa_UInt16 namespaceIndex);
    void setName(const QString& name);

Q_SIGNALS:
    void valueChanged(UaVariant value);
    void qualifiedNameChanged(UaQualifiedName qualifiedName);

private Q_SLOTS:
    void sltQualifiedNameChanged();

private:
    QSpinBox* m_namespaceIndex;
    QLineEdit* m_name;
};

/// Dialog editor of a QualifiedName.
class KESTREL_EXPORT QvelDialogWidgetQualifiedName : public QvelDialogWidgetBase
{
    Q_OBJECT
public:
    explicit QvelDialogWidgetQualifiedName(QvelDialogWidgetFlags flags = {},
                                           QWidget* parent = nullptr,
                                           Qt::WindowFlags windowFlags = {});
    ~QvelDialogWidgetQualifiedName() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    UaQualifiedName qualifiedName(bool* ok = nullptr) const;
    void setQualifiedName(const UaQualifiedName& qualifiedName);
    void setNamespaceIndex(OpcUa_UInt16 namespaceIndex);
    void setName(const QString& name);

Q_SIGNALS:
    void valueChanged(UaVariant value);
    void qualifiedNameChanged(UaQualifiedName qualifiedName);

private Q_SLOTS:
    void sltQualifiedNameChanged();

private:
    QSpinBox* m_namespaceIndex;
    QLineEdit* m_name;
};

/// Inline editor of a LocalizedText.
class KESTREL_EXPORT QvelWidgetLocalizedText : public QvelWidgetBase
{
    Q_OBJECT
public:
    explicit QvelWidgetLocalizedText(QvelWidgetFlags flags = {}, QWidget* parent = nullptr,
                                     Qt::WindowFlags windowFlags = {});
    explicit QvelWidgetLocalizedText(QWidget* parent)
        : QvelWidgetLocalizedText(QvelWidgetFlags(), parent)
    {
    }
    ~QvelWidgetLocalizedText() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    UaLocalizedText localizedText(bool* ok = nullptr) const;
    void setLocalizedText(const UaLocalizedText& localizedText);
    void setLocale(const QString& locale);
    void setText(const QString& text);

Q_SIGNALS:
    void valueChanged(UaVariant value);
    void localizedTextChanged(UaLocalizedText localizedText);

private Q_SLOTS:
    void sltLocalizedTextChanged();

private:
    QLineEdit* m_locale;
    QLineEdit* m_text;
};

/// Dialog editor of a LocalizedText.
class KESTREL_EXPORT QvelDialogWidgetLocalizedText : public QvelDialogWidgetBase
{
    Q_OBJECT
public:
    explicit QvelDialogWidgetLocalizedText(QvelDialogWidgetFlags flags = {},
                                           QWidget* parent = nullptr,
                                           Qt::WindowFlags windowFlags = {});
    ~QvelDialogWidgetLocalizedText() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    UaLocalizedText localizedText(bool* ok = nullptr) const;
    void setLocalizedText(const UaLocalizedText& localizedText);
    void setLocale(const QString& locale);
    void setText(const QString& text);

Q_SIGNALS:
    void valueChanged(UaVariant value);
    void localizedTextChanged(UaLocalizedText localizedText);

private Q_SLOTS:
    void sltLocalizedTextChanged();

private:
    QLineEdit* m_locale;
    QLineEdit* m_text;
};

#pragma once

#include "../base/editorbases.h"
#include "../platform/types/uabytestring.h"
#include "../platform/types/uastring.h"

#include <memory>

class FileField;
class QLineEdit;
class QvelSettingsCBInterface;

/// \file
/// Editors of the types whose values can be long: ByteString, XmlElement and String.
///
/// An edit field shows one line and opens a dialog for the whole. It can also take its value from a
/// file, which is then read afresh on every request, or, when it is read-only, save it to one. A
/// file that cannot be read, is no regular file or is larger than 512 MiB gives an empty value and
/// a false `ok`.

/// Inline editor of a ByteString: hexadecimal digits, an even number of them, with or without "0x".
class KESTREL_EXPORT QvelWidgetByteString : public QvelWidgetBase
{
    Q_OBJECT
public:
    explicit QvelWidgetByteString(QvelWidgetFlags flags = {}, QWidget* parent = nullptr,
                                  Qt::WindowFlags windowFlags = {});
    explicit QvelWidgetByteString(QWidget* parent) : QvelWidgetByteString(QvelWidgetFlags(), parent)
    {
    }
    ~QvelWidgetByteString() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    UaByteString byteString(bool* ok = nullptr) const;
    void setByteString(const UaByteString& byteString);

Q_SIGNALS:
    void valueChanged(UaVariant value);
    void byteStringChanged(UaByteString byteString);

private Q_SLOTS:
    void sltByteStringChanged();

private:
    QLineEdit* m_edit;
};

/// Inline editor of an XmlElement, as text. The XML is not checked.
class KESTREL_EXPORT QvelWidgetXmlElement : public QvelWidgetBase
{
    Q_OBJECT
public:
    explicit QvelWidgetXmlElement(QvelWidgetFlags flags = {}, QWidget* parent = nullptr,
                                  Qt::WindowFlags windowFlags = {});
    explicit QvelWidgetXmlElement(QWidget* parent) : QvelWidgetXmlElement(QvelWidgetFlags(), parent)
    {
    }
    ~QvelWidgetXmlElement() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    UaByteString xmlElement(bool* ok = nullptr) const;
    void setXmlElement(const UaByteString& xmlElement);

Q_SIGNALS:
    void valueChanged(UaVariant value);
    void xmlElementChanged(UaByteString xmlElement);

private Q_SLOTS:
    void sltXmlElementChanged();

private:
    QLineEdit* m_edit;
};

/// Edit field of a ByteString; its line is a summary of length and first bytes.
class KESTREL_EXPORT QvelEditWidgetByteString : public QvelEditWidgetBase
{
    Q_OBJECT
public:
    explicit QvelEditWidgetByteString(QvelEditWidgetFlags flags = {}, QWidget* parent = nullptr,
                                      Qt::WindowFlags windowFlags = {});
    explicit QvelEditWidgetByteString(QWidget* parent)
        : QvelEditWidgetByteString(QvelEditWidgetFlags(), parent)
    {
    }
    ~QvelEditWidgetByteString() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    UaByteString byteString(bool* ok = nullptr) const;
    void setByteString(const UaByteString& byteString);
    /// Where the last file names are kept; not owned, may be null.
    void setSettingsCBInterface(QvelSettingsCBInterface* settings);

Q_SIGNALS:
    void valueChanged(UaVariant value);
    void byteStringChanged(UaByteString byteString);

private Q_SLOTS:
    void sltDialogWidgetAccepted() override;
    void sltDialogWidgetRejected() override;
    void sltShowDialogWidget() override;
    void sltLoadSave(bool bChecked);
    void sltByteStringChanged();

private:
    void updateControls() override;

    const std::unique_ptr<FileField> d;
    UaByteString m_stored;
};

/// Edit field of an XmlElement; its line is a summary of length and beginning. The XML is not
/// checked.
class KESTREL_EXPORT QvelEditWidgetXmlElement : public QvelEditWidgetBase
{
    Q_OBJECT
public:
    explicit QvelEditWidgetXmlElement(QvelEditWidgetFlags flags = {}, QWidget* parent = nullptr,
                                      Qt::WindowFlags windowFlags = {});
    explicit QvelEditWidgetXmlElement(QWidget* parent)
        : QvelEditWidgetXmlElement(QvelEditWidgetFlags(), parent)
    {
    }
    ~QvelEditWidgetXmlElement() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    UaByteString xmlElement(bool* ok = nullptr) const;
    void setXmlElement(const UaByteString& xmlElement);
    /// Where the last file names are kept; not owned, may be null.
    void setSettingsCBInterface(QvelSettingsCBInterface* settings);

Q_SIGNALS:
    void valueChanged(UaVariant value);
    void xmlElementChanged(UaByteString xmlElement);

private Q_SLOTS:
    void sltDialogWidgetAccepted() override;
    void sltDialogWidgetRejected() override;
    void sltShowDialogWidget() override;
    void sltLoadSave(bool bChecked);
    void sltXmlElementChanged();

private:
    void updateControls() override;

    const std::unique_ptr<FileField> d;
    UaByteString m_stored;
};

/// Edit field of a String; its line is the value itself. A value from a file is the file without
/// its last byte, up to the first NUL. Any variant can be set: its text is shown.
class KESTREL_EXPORT QvelEditWidgetString : public QvelEditWidgetBase
{
    Q_OBJECT
public:
    explicit QvelEditWidgetString(QvelEditWidgetFlags flags = {}, QWidget* parent = nullptr,
                                  Qt::WindowFlags windowFlags = {});
    explicit QvelEditWidgetString(QWidget* parent)
        : QvelEditWidgetString(QvelEditWidgetFlags(), parent)
    {
    }
    ~QvelEditWidgetString() override;

    UaVariant value(bool* ok = nullptr) const override;
    void setValue(const UaVariant& value) override;
    UaString string(bool* ok = nullptr) const;
    void setString(const UaString& string);
    /// Where the last file names are kept; not owned, may be null.
    void setSettingsCBInterface(QvelSettingsCBInterface* settings);

Q_SIGNALS:
    void valueChanged(UaVariant value);
    void stringChanged(UaString string);

private Q_SLOTS:
    void sltDialogWidgetAccepted() override;
    void sltDialogWidgetRejected() override;
    void sltShowDialogWidget() override;
    void sltLoadSave(bool bChecked);
    void sltStringChanged();

private:
    void updateControls() override;

    const std::unique_ptr<FileField> d;
};

#include "longvalueeditors.h"

#include "base/editorhelpers_p.h"
#include "values/filefield_p.h"
#include "values/hexadecimal_p.h"

#include <QtGui/QRegularExpressionValidator>
#include <QtWidgets/QMessageBox>

namespace {

// The bytes from which on a summary shows the first of them only.
constexpr OpcUa_Int32 summarisedLength = 100;

QString hexadecimal(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.toHex());
}

QString utf8(const QByteArray& bytes)
{
    return textFromUtf8(bytes);
}

QString summary(const UaByteString& value, QString (*text)(const QByteArray&))
{
    const QString pattern = value.length() >= summarisedLength
                                ? QStringLiteral("Length=%1, Content=%2...")
                                : QStringLiteral("Length=%1, Content=%2");
    return pattern.arg(QString::number(value.length()), text(value.bytes().left(summarisedLength)));
}

// The value of a field of bytes: what its file holds, or what it stores.
UaByteString bytesOf(const FileField& field, const UaByteString& stored, bool* ok)
{
    UaByteString value = stored;
    bool valid = true;
    if (field.isFromFile()) {
        const auto file = field.readFile();
        valid = file.has_value();
        value = UaByteString(file.value_or(QByteArray()));
    }
    if (ok)
        *ok = valid;
    return value;
}

} // namespace

QvelWidgetByteString::QvelWidgetByteString(QvelWidgetFlags flags, QWidget* parent,
                                           Qt::WindowFlags windowFlags)
    : QvelWidgetBase(flags, parent, windowFlags), m_edit(new QLineEdit)
{
    registerValueTypes<UaVariant, UaByteString>();
    static const QRegularExpression digits(QStringLiteral("(0x)?[\\da-fA-F]*"),
                                           QRegularExpression::CaseInsensitiveOption);
    m_edit->setValidator(new QRegularExpressionValidator(digits, m_edit));
    m_edit->setAccessibleName(tr("Hexadecimal bytes"));
    setSingleControl(this, m_edit);
    connect(m_edit, &QLineEdit::textChanged, this, &QvelWidgetByteString::sltByteStringChanged);
}

QvelWidgetByteString::~QvelWidgetByteString() = default;

KESTREL_SCALAR_EDITOR(QvelWidgetByteString, ByteString, byteString)

UaByteString QvelWidgetByteString::byteString(bool* ok) const
{
    const auto bytes = bytesFromPrefixedHex(m_edit->text());
    if (ok)
        *ok = bytes.has_value();
    return UaByteString(bytes.value_or(QByteArray("")));
}

void QvelWidgetByteString::setByteString(const UaByteString& byteString)
{
    showWhole(m_edit, hexadecimal(byteString.bytes()));
}

QvelWidgetXmlElement::QvelWidgetXmlElement(QvelWidgetFlags flags, QWidget* parent,
                                           Qt::WindowFlags windowFlags)
    : QvelWidgetBase(flags, parent, windowFlags), m_edit(new QLineEdit)
{
    registerValueTypes<UaVariant, UaByteString>();
    m_edit->setAccessibleName(tr("XML element"));
    setSingleControl(this, m_edit);
    connect(m_edit, &QLineEdit::textChanged, this, &QvelWidgetXmlElement::sltXmlElementChanged);
}

QvelWidgetXmlElement::~QvelWidgetXmlElement() = default;

KESTREL_SCALAR_EDITOR(QvelWidgetXmlElement, XmlElement, xmlElement)

UaByteString QvelWidgetXmlElement::xmlElement(bool* ok) const
{
    if (ok)
        *ok = true;
    return UaByteString(m_edit->text().toUtf8());
}

void QvelWidgetXmlElement::setXmlElement(const UaByteString& xmlElement)
{
    showWhole(m_edit, utf8(xmlElement.bytes()));
}

// What the three edit fields have in common; moc needs the slots in each class.
#define KESTREL_FILE_FIELD(Field, isTextEditable, dialogFlags, Value, changedSlot)                 \
    Field::Field(QvelEditWidgetFlags flags, QWidget* parent, Qt::WindowFlags windowFlags)          \
        : QvelEditWidgetBase(flags, parent, windowFlags),                                          \
          d(new FileField(this, {#Field, isTextEditable, dialogFlags}))                            \
    {                                                                                              \
        registerValueTypes<UaVariant, Value>();                                                    \
        d->connectTo(this, &Field::sltDialogWidgetAccepted, &Field::sltDialogWidgetRejected,       \
                     &Field::sltShowDialogWidget, &Field::sltLoadSave, &Field::changedSlot);       \
    }                                                                                              \
    Field::~Field() = default;                                                                     \
    void Field::setSettingsCBInterface(QvelSettingsCBInterface* settings)                          \
    {                                                                                              \
        d->setSettings(settings);                                                                  \
    }                                                                                              \
    void Field::sltDialogWidgetRejected() {} // the dialog is filled afresh on every opening

KESTREL_FILE_FIELD(QvelEditWidgetByteString, false, QvelDisplayDialog::WrapAnywhere, UaByteString,
                   sltByteStringChanged)
KESTREL_SCALAR_EDITOR(QvelEditWidgetByteString, ByteString, byteString)

UaByteString QvelEditWidgetByteString::byteString(bool* ok) const
{
    return bytesOf(*d, m_stored, ok);
}

void QvelEditWidgetByteString::setByteString(const UaByteString& byteString)
{
    m_stored = byteString;
    d->setText(summary(byteString, hexadecimal));
}

void QvelEditWidgetByteString::sltShowDialogWidget()
{
    d->showDialog(hexadecimal(m_stored.bytes()));
}

void QvelEditWidgetByteString::sltDialogWidgetAccepted()
{
    if (const auto bytes = bytesFromPrefixedHex(d->dialogText()))
        setByteString(UaByteString(*bytes));
    else
        QMessageBox::warning(this, tr("Conversion Error"),
                             tr("The ByteString entered was not valid!"), QMessageBox::Ok);
}

void QvelEditWidgetByteString::sltLoadSave(bool bChecked)
{
    d->loadOrSave(bChecked, m_stored.bytes());
}

KESTREL_FILE_FIELD(QvelEditWidgetXmlElement, false, QvelDisplayDialog::NoFlags, UaByteString,
                   sltXmlElementChanged)
KESTREL_SCALAR_EDITOR(QvelEditWidgetXmlElement, XmlElement, xmlElement)

UaByteString QvelEditWidgetXmlElement::xmlElement(bool* ok) const
{
    return bytesOf(*d, m_stored, ok);
}

void QvelEditWidgetXmlElement::setXmlElement(const UaByteString& xmlElement)
{
    m_stored = xmlElement;
    d->setText(summary(xmlElement, utf8));
}

void QvelEditWidgetXmlElement::sltShowDialogWidget()
{
    d->showDialog(utf8(m_stored.bytes()));
}

void QvelEditWidgetXmlElement::sltDialogWidgetAccepted()
{
    setXmlElement(UaByteString(d->dialogText().toUtf8()));
}

void QvelEditWidgetXmlElement::sltLoadSave(bool bChecked)
{
    d->loadOrSave(bChecked, m_stored.bytes());
}

KESTREL_FILE_FIELD(QvelEditWidgetString, true, QvelDisplayDialog::NoFlags, UaString,
                   sltStringChanged)

UaVariant QvelEditWidgetString::value(bool* ok) const
{
    return editorValue(this, &QvelEditWidgetString::string, &UaVariant::setString, ok);
}

void QvelEditWidgetString::setValue(const UaVariant& value)
{
    setString(value.toString());
}

UaString QvelEditWidgetString::string(bool* ok) const
{
    if (!d->isFromFile()) {
        if (ok)
            *ok = true;
        return UaString(d->text().toUtf8());
    }
    const auto file = d->readFile();
    if (ok)
        *ok = file.has_value();
    // The last byte makes room for the NUL that ends the text.
    return file ? UaString(file->left(file->size() - 1).constData()) : UaString();
}

void QvelEditWidgetString::setString(const UaString& string)
{
    d->setText(utf8(string.bytes()));
}

void QvelEditWidgetString::sltShowDialogWidget()
{
    d->showDialog(d->text());
}

void QvelEditWidgetString::sltDialogWidgetAccepted()
{
    setString(UaString(d->dialogText().toUtf8()));
}

void QvelEditWidgetString::sltLoadSave(bool bChecked)
{
    d->loadOrSave(bChecked, d->text().toUtf8());
}

void QvelEditWidgetString::sltStringChanged()
{
    emitChanged(this, &QvelEditWidgetString::string, &QvelEditWidgetString::stringChanged);
}

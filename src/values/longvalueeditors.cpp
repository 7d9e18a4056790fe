#include "longvalueeditors.h"

#include "base/editorhelpers_p.h"
#include "values/filefield_p.h"
#include "values/hexadecimal_p.h"

#include <QtGui/QRegularExpressionValidator>

namespace {

// The bytes from which on a summary shows the first of them only.
constexpr OpcUa_Int32 summarisedLength = 100;

QString hexadecimal(QByteArrayView bytes)
{
    return QString::fromLatin1(bytes.toByteArray().toHex());
}

QString summary(const UaByteString& value, QString (*text)(QByteArrayView))
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

const FileField::Facts byteStringFacts = {
    "QvelEditWidgetByteString",
    QT_TRANSLATE_NOOP("QvelEditWidgetByteString", "Save"),
    QT_TRANSLATE_NOOP("QvelEditWidgetByteString", "Load"),
    QT_TRANSLATE_NOOP("QvelEditWidgetByteString", "Click again to enter value manually"),
    false,
    QvelDisplayDialog::WrapAnywhere};

const FileField::Facts xmlElementFacts = {
    "QvelEditWidgetXmlElement",
    QT_TRANSLATE_NOOP("QvelEditWidgetXmlElement", "Save"),
    QT_TRANSLATE_NOOP("QvelEditWidgetXmlElement", "Load"),
    QT_TRANSLATE_NOOP("QvelEditWidgetXmlElement", "Click again to enter value manually"),
    false,
    QvelDisplayDialog::NoFlags};

const FileField::Facts stringFacts = {
    "QvelEditWidgetString",
    QT_TRANSLATE_NOOP("QvelEditWidgetString", "Save"),
    QT_TRANSLATE_NOOP("QvelEditWidgetString", "Load"),
    QT_TRANSLATE_NOOP("QvelEditWidgetString", "Click again to enter value manually"),
    true,
    QvelDisplayDialog::NoFlags};

} // namespace

QvelWidgetByteString::QvelWidgetByteString(QvelWidgetFlags flags, QWidget* parent,
                                           Qt::WindowFlags windowFlags)
    : QvelWidgetBase(flags, parent, windowFlags), m_edit(new QLineEdit)
{
    registerValueTypes<UaVariant, UaByteString>();
    static const QRegularExpression digits(QStringLiteral("(0x)?[\\da-fA-F]*"),
                                           QRegularExpression::CaseInsensitiveOption);
    m_edit->setValidator(new QRegularExpressionValidator(digits, m_edit));
    retranslated(this, [this] { m_edit->setAccessibleName(tr("Hexadecimal bytes")); });
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
    retranslated(this, [this] { m_edit->setAccessibleName(tr("XML element")); });
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
    showWhole(m_edit, textFromUtf8(xmlElement.bytes()));
}

// What the three edit fields have in common; moc needs the slots in each class.
#define KESTREL_FILE_FIELD(Field, facts, Value, changedSlot)                                       \
    Field::Field(QvelEditWidgetFlags flags, QWidget* parent, Qt::WindowFlags windowFlags)          \
        : QvelEditWidgetBase(flags, parent, windowFlags), d(new FileField(this, facts))            \
    {                                                                                              \
        registerValueTypes<UaVariant, Value>();                                                    \
        connectDialog(d->showButton(), d->dialog());                                               \
        connect(d->loadSaveButton(), &QToolButton::clicked, this, &Field::sltLoadSave);            \
        connect(d->edit(), &QLineEdit::textChanged, this, &Field::changedSlot);                    \
    }                                                                                              \
    Field::~Field() = default;                                                                     \
    void Field::updateControls()                                                                   \
    {                                                                                              \
        d->updateFlags();                                                                          \
    }                                                                                              \
    void Field::setSettingsCBInterface(QvelSettingsCBInterface* settings)                          \
    {                                                                                              \
        d->setSettings(settings);                                                                  \
    }                                                                                              \
    void Field::sltDialogWidgetRejected() {} // the dialog is filled afresh on every opening

KESTREL_FILE_FIELD(QvelEditWidgetByteString, byteStringFacts, UaByteString, sltByteStringChanged)
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
    d->showDialog(2 * m_stored.bytes().size(), [this] { return hexadecimal(m_stored.bytes()); });
}

void QvelEditWidgetByteString::sltDialogWidgetAccepted()
{
    const auto text = d->dialogText();
    if (!text)
        return;
    if (const auto bytes = bytesFromPrefixedHex(*text))
        setByteString(UaByteString(*bytes));
    else
        d->warn(tr("Conversion Error"), tr("The ByteString entered was not valid!"));
}

void QvelEditWidgetByteString::sltLoadSave(bool bChecked)
{
    d->loadOrSave(bChecked, m_stored.bytes());
}

KESTREL_FILE_FIELD(QvelEditWidgetXmlElement, xmlElementFacts, UaByteString, sltXmlElementChanged)
KESTREL_SCALAR_EDITOR(QvelEditWidgetXmlElement, XmlElement, xmlElement)

UaByteString QvelEditWidgetXmlElement::xmlElement(bool* ok) const
{
    return bytesOf(*d, m_stored, ok);
}

void QvelEditWidgetXmlElement::setXmlElement(const UaByteString& xmlElement)
{
    m_stored = xmlElement;
    d->setText(summary(xmlElement, textFromUtf8));
}

void QvelEditWidgetXmlElement::sltShowDialogWidget()
{
    // A character takes three bytes at most.
    d->showDialog(m_stored.bytes().size() / 3, [this] { return textFromUtf8(m_stored.bytes()); });
}

void QvelEditWidgetXmlElement::sltDialogWidgetAccepted()
{
    if (const auto text = d->dialogText())
        setXmlElement(UaByteString(text->toUtf8()));
}

void QvelEditWidgetXmlElement::sltLoadSave(bool bChecked)
{
    d->loadOrSave(bChecked, m_stored.bytes());
}

KESTREL_FILE_FIELD(QvelEditWidgetString, stringFacts, UaString, sltStringChanged)

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
        return UaString(d->text());
    }
    const auto file = d->readFile();
    if (ok)
        *ok = file.has_value();
    // The last byte makes room for the NUL that ends the text.
    return file ? UaString(file->left(file->size() - 1).constData()) : UaString();
}

void QvelEditWidgetString::setString(const UaString& string)
{
    d->setText(string.toQString());
}

void QvelEditWidgetString::sltShowDialogWidget()
{
    const QString text = d->text();
    d->showDialog(text.size(), [text] { return text; });
}

void QvelEditWidgetString::sltDialogWidgetAccepted()
{
    if (const auto text = d->dialogText())
        setString(UaString(*text));
}

void QvelEditWidgetString::sltLoadSave(bool bChecked)
{
    d->loadOrSave(bChecked, d->text().toUtf8());
}

void QvelEditWidgetString::sltStringChanged()
{
    emitChanged(this, &QvelEditWidgetString::string, &QvelEditWidgetString::stringChanged);
}

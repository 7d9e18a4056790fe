#include "nodeidcontrols_p.h"

#include "base/editorhelpers_p.h"
#include "values/hexadecimal_p.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QUuid>
#include <QtGui/QIntValidator>
#include <QtGui/QRegularExpressionValidator>

#include <algorithm>
#include <iterator>
#include <limits>

namespace {

void prepareNumeric(QLineEdit* edit)
{
    edit->setValidator(new QIntValidator(edit));
    edit->setText(QStringLiteral("0"));
}

void prepareString(QLineEdit* edit)
{
    edit->clear();
}

void prepareGuid(QLineEdit* edit)
{
    edit->setInputMask(QStringLiteral("\\{HHHHHHHH-HHHH-HHHH-HHHH-HHHHHHHHHHHH\\}"));
    showWhole(edit, QUuid().toString());
}

void prepareOpaque(QLineEdit* edit)
{
    static const QRegularExpression hexadecimal(QStringLiteral("0x[\\da-fA-F]*"),
                                                QRegularExpression::CaseInsensitiveOption);
    edit->setValidator(new QRegularExpressionValidator(hexadecimal, edit));
    edit->setText(QStringLiteral("0x0"));
}

// Text that is no number counts as 0.
bool numericFrom(const QString& text, OpcUa_UInt16 index, UaNodeId& id)
{
    bool valid = false;
    id = UaNodeId(OpcUa_UInt32(text.toUInt(&valid, 10)), index);
    return valid;
}

bool stringFrom(const QString& text, OpcUa_UInt16 index, UaNodeId& id)
{
    id = UaNodeId(UaString(text), index);
    return true;
}

bool guidFrom(const QString& text, OpcUa_UInt16 index, UaNodeId& id)
{
    UaGuid guid;
    const bool valid = OpcUa_IsGood(guid.fromString(UaString(text)));
    if (valid)
        id = UaNodeId(guid, index);
    return valid;
}

bool opaqueFrom(const QString& text, OpcUa_UInt16 index, UaNodeId& id)
{
    QString digits = text;
    digits.remove(QLatin1String("0x"), Qt::CaseInsensitive);
    const auto bytes = bytesFromHex(digits);
    if (bytes)
        id = UaNodeId(UaByteString(*bytes), index);
    return bytes.has_value();
}

struct IdentifierKind
{
    int type;
    void (*prepare)(QLineEdit* edit); // which has neither validator nor mask
    // False for an invalid text, for which `id` is what counts all the same.
    bool (*from)(const QString& text, OpcUa_UInt16 index, UaNodeId& id);
};

constexpr IdentifierKind kinds[] = {
    {OpcUa_IdentifierType_Numeric, prepareNumeric, numericFrom},
    {OpcUa_IdentifierType_String, prepareString, stringFrom},
    {OpcUa_IdentifierType_Guid, prepareGuid, guidFrom},
    {OpcUa_IdentifierType_Opaque, prepareOpaque, opaqueFrom},
};

constexpr bool areInOrder()
{
    int type = 0;
    for (const IdentifierKind& kind : kinds) {
        if (kind.type != type++)
            return false;
    }
    return true;
}
static_assert(areInOrder(), "a kind stands at the index of its type");

const IdentifierKind* kindOf(int type)
{
    return type >= 0 && type < int(std::size(kinds)) ? &kinds[type] : nullptr;
}

// Has room for any Guid.
class WideEdit : public QLineEdit
{
public:
    QSize sizeHint() const override
    {
        const QFontMetrics font = fontMetrics();
        int digit = 0;
        for (const QChar c : QStringView(u"0123456789abcdefABCDEF"))
            digit = std::max(digit, font.horizontalAdvance(c));
        const int wide = 32 * digit + font.horizontalAdvance(QStringLiteral("{----}"));
        QSize size = QLineEdit::sizeHint(); // made for 17 letters x
        size.rwidth() += std::max(0, wide - 17 * font.horizontalAdvance(QLatin1Char('x')));
        return size;
    }
};

} // namespace

NodeIdControls::NodeIdControls(Room room)
    : namespaceIndex(new QSpinBox), type(new QComboBox),
      identifier(room == Room::ForGuid ? new WideEdit : new QLineEdit)
{
    namespaceIndex->setMaximum(std::numeric_limits<OpcUa_UInt16>::max());
    setIdentifierType(OpcUa_IdentifierType_Numeric);
    showInToolTip(namespaceIndex);
    showInToolTip(identifier);
}

void NodeIdControls::setTypeNames(const QStringList& names)
{
    if (type->count() == 0)
        type->addItems(names);
    for (int i = 0; i < names.size(); ++i)
        type->setItemText(i, names.at(i));
}

void NodeIdControls::setIdentifierType(int identifierType)
{
    const IdentifierKind* kind = kindOf(identifierType);
    delete identifier->validator();
    identifier->setInputMask(QString());
    if (kind)
        kind->prepare(identifier);
}

UaNodeId NodeIdControls::nodeId(bool* ok) const
{
    UaNodeId id;
    const IdentifierKind* kind = kindOf(type->currentIndex());
    const auto index = OpcUa_UInt16(namespaceIndex->value());
    const bool valid = kind && kind->from(identifier->text(), index, id);
    if (ok)
        *ok = valid;
    return ok && !valid ? UaNodeId() : id;
}

void NodeIdControls::setNodeId(const UaNodeId& id)
{
    namespaceIndex->setValue(id.namespaceIndex());
    type->setCurrentIndex(id.identifierType());
    showWhole(identifier, id.toString().toQString());
}

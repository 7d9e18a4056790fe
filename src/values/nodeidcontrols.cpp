#include "nodeidcontrols_p.h"

#include "base/editorhelpers_p.h"
#include "values/hexadecimal_p.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QUuid>
#include <QtGui/QIntValidator>
#include <QtGui/QRegularExpressionValidator>

#include <limits>

NodeIdControls::NodeIdControls(const QStringList& typeNames)
    : namespaceIndex(new QSpinBox), type(new QComboBox), identifier(new QLineEdit)
{
    namespaceIndex->setMaximum(std::numeric_limits<OpcUa_UInt16>::max());
    type->addItems(typeNames);
    setIdentifierType(OpcUa_IdentifierType_Numeric);
}

void NodeIdControls::setIdentifierType(int identifierType)
{
    delete identifier->validator();
    identifier->setInputMask(QString());
    switch (identifierType) {
    case OpcUa_IdentifierType_Numeric:
        identifier->setValidator(new QIntValidator(std::numeric_limits<int>::min(),
                                                   std::numeric_limits<int>::max(), identifier));
        identifier->setText(QStringLiteral("0"));
        break;
    case OpcUa_IdentifierType_String:
        identifier->clear();
        break;
    case OpcUa_IdentifierType_Guid:
        identifier->setInputMask(QStringLiteral("\\{HHHHHHHH-HHHH-HHHH-HHHH-HHHHHHHHHHHH\\}"));
        identifier->setText(QUuid().toString());
        break;
    case OpcUa_IdentifierType_Opaque: {
        static const QRegularExpression hexadecimal(QStringLiteral("0x[\\da-fA-F]*"),
                                                    QRegularExpression::CaseInsensitiveOption);
        identifier->setValidator(new QRegularExpressionValidator(hexadecimal, identifier));
        identifier->setText(QStringLiteral("0x0"));
        break;
    }
    default:
        break;
    }
}

UaNodeId NodeIdControls::nodeId(bool* ok) const
{
    bool ignored;
    bool& valid = ok ? *ok : ignored;
    valid = false;
    const auto index = OpcUa_UInt16(namespaceIndex->value());
    const QString text = identifier->text();
    switch (type->currentIndex()) {
    case OpcUa_IdentifierType_Numeric: {
        const OpcUa_UInt32 number = text.toUInt(&valid, 10);
        return ok && !valid ? UaNodeId() : UaNodeId(number, index);
    }
    case OpcUa_IdentifierType_String:
        valid = true;
        return UaNodeId(UaString(text.toUtf8()), index);
    case OpcUa_IdentifierType_Guid: {
        UaGuid guid;
        valid = OpcUa_IsGood(guid.fromString(UaString(text.toUtf8())));
        return valid ? UaNodeId(guid, index) : UaNodeId();
    }
    case OpcUa_IdentifierType_Opaque: {
        QString digits = text;
        digits.remove(QLatin1String("0x"), Qt::CaseInsensitive);
        const auto bytes = bytesFromHex(digits);
        valid = bytes.has_value();
        return valid ? UaNodeId(UaByteString(*bytes), index) : UaNodeId();
    }
    default:
        return UaNodeId();
    }
}

void NodeIdControls::setNodeId(const UaNodeId& id)
{
    namespaceIndex->setValue(id.namespaceIndex());
    type->setCurrentIndex(id.identifierType());
    showWhole(identifier, textFromUtf8(id.toString().bytes()));
}

// Editors of single values.

#include "widgets.h"

#include <Kestrel/QvelDialogWidgetExpandedNodeId>
#include <Kestrel/QvelDialogWidgetLocalizedText>
#include <Kestrel/QvelDialogWidgetNodeId>
#include <Kestrel/QvelDialogWidgetQualifiedName>
#include <Kestrel/QvelDisplayDialog>
#include <Kestrel/QvelEditWidgetByteString>
#include <Kestrel/QvelEditWidgetExpandedNodeId>
#include <Kestrel/QvelEditWidgetString>
#include <Kestrel/QvelEditWidgetXmlElement>
#include <Kestrel/QvelEnumFlagsComboBox>
#include <Kestrel/QvelFlagsComboBox>
#include <Kestrel/QvelSettingsCBInterface>
#include <Kestrel/QvelWidgetAccessLevelMask>
#include <Kestrel/QvelWidgetBrowseResultMask>
#include <Kestrel/QvelWidgetByteString>
#include <Kestrel/QvelWidgetDiagnosticsMask>
#include <Kestrel/QvelWidgetEnum>
#include <Kestrel/QvelWidgetEnumFlags>
#include <Kestrel/QvelWidgetEventNotifierMask>
#include <Kestrel/QvelWidgetGuid>
#include <Kestrel/QvelWidgetLocalizedText>
#include <Kestrel/QvelWidgetNodeId>
#include <Kestrel/QvelWidgetQualifiedName>
#include <Kestrel/QvelWidgetStatusCode>
#include <Kestrel/QvelWidgetValueRank>
#include <Kestrel/QvelWidgetWriteMask>
#include <Kestrel/QvelWidgetXmlElement>
#include <Kestrel/UaByteString>
#include <Kestrel/UaExpandedNodeId>
#include <Kestrel/UaGuid>
#include <Kestrel/UaLocalizedText>
#include <Kestrel/UaNodeId>
#include <Kestrel/UaQualifiedName>
#include <Kestrel/UaStatusCode>
#include <Kestrel/UaString>
#include <Kestrel/UaVariant>

#include <QtCore/QDebug>
#include <QtCore/QFileInfo>
#include <QtCore/QSettings>
#include <QtCore/QUuid>

namespace {

//! [QvelWidgetNodeId]
QWidget* nodeId()
{
    auto* editor = new QvelWidgetNodeId;
    editor->setNodeId(UaNodeId(UaString("Boiler 1.Pressure"), 2));
    QObject::connect(editor, &QvelWidgetNodeId::nodeIdChanged, editor, [editor] {
        bool ok = false;
        const UaNodeId id = editor->nodeId(&ok);
        if (ok) // what was typed is a NodeId
            qInfo() << id.toFullString().toQString();
    });
    return editor;
}
//! [QvelWidgetNodeId]

//! [QvelDialogWidgetNodeId]
QWidget* nodeIdDialog()
{
    auto* dialog = new QvelDialogWidgetNodeId;
    dialog->setWindowTitle("Start at");
    dialog->setNodeId(UaNodeId(85)); // Objects
    QObject::connect(dialog, &QDialog::accepted, dialog, [dialog] {
        bool ok = false;
        const UaNodeId id = dialog->nodeId(&ok); // "Write" accepts whatever was typed
        if (ok)
            qInfo() << id.toFullString().toQString();
    });
    return dialog; // shown by open()
}
//! [QvelDialogWidgetNodeId]

//! [QvelDialogWidgetExpandedNodeId]
QWidget* expandedNodeIdDialog()
{
    auto* dialog = new QvelDialogWidgetExpandedNodeId;
    dialog->setWindowTitle("Node of another server");
    dialog->setExpandedNodeId(
        UaExpandedNodeId(UaNodeId(UaString("Boiler 1"), 0), "urn:plant:boilerhouse", 1));
    QObject::connect(dialog, &QDialog::accepted, dialog,
                     [dialog] { qInfo() << dialog->expandedNodeId().toFullString().toQString(); });
    return dialog;
}
//! [QvelDialogWidgetExpandedNodeId]

//! [QvelEditWidgetExpandedNodeId]
QWidget* expandedNodeIdField()
{
    auto* field = new QvelEditWidgetExpandedNodeId; // its "..." opens the dialog
    field->setExpandedNodeId(
        UaExpandedNodeId(UaNodeId(UaString("Boiler 1"), 0), "urn:plant:boilerhouse", 1));
    QObject::connect(field, &QvelEditWidgetExpandedNodeId::expandedNodeIdChanged, field,
                     [](const UaExpandedNodeId& id) { qInfo() << id.toFullString().toQString(); });
    return field;
}
//! [QvelEditWidgetExpandedNodeId]

//! [QvelWidgetQualifiedName]
QWidget* qualifiedName()
{
    auto* editor = new QvelWidgetQualifiedName;
    editor->setQualifiedName(UaQualifiedName("Pressure", 2));
    QObject::connect(editor, &QvelWidgetQualifiedName::qualifiedNameChanged, editor,
                     [](const UaQualifiedName& name) {
                         qInfo() << name.toString().toQString(); // 2:Pressure
                     });
    return editor;
}
//! [QvelWidgetQualifiedName]

//! [QvelDialogWidgetQualifiedName]
QWidget* qualifiedNameDialog()
{
    auto* dialog = new QvelDialogWidgetQualifiedName;
    dialog->setWindowTitle("Browse name");
    dialog->setNamespaceIndex(2);
    dialog->setName("Pressure");
    QObject::connect(dialog, &QDialog::accepted, dialog,
                     [dialog] { qInfo() << dialog->qualifiedName().toString().toQString(); });
    return dialog;
}
//! [QvelDialogWidgetQualifiedName]

//! [QvelWidgetLocalizedText]
QWidget* localizedText()
{
    auto* editor = new QvelWidgetLocalizedText;
    editor->setLocalizedText(UaLocalizedText("de", "Speisepumpe"));
    QObject::connect(editor, &QvelWidgetLocalizedText::localizedTextChanged, editor,
                     [](const UaLocalizedText& text) { qInfo() << text.toString().toQString(); });
    return editor;
}
//! [QvelWidgetLocalizedText]

//! [QvelDialogWidgetLocalizedText]
QWidget* localizedTextDialog()
{
    auto* dialog = new QvelDialogWidgetLocalizedText(QvelDialogWidgetBase::NoResize);
    dialog->setWindowTitle("Display name");
    dialog->setLocale("de");
    dialog->setText("Speisepumpe");
    QObject::connect(dialog, &QDialog::accepted, dialog,
                     [dialog] { qInfo() << dialog->localizedText().toString().toQString(); });
    return dialog;
}
//! [QvelDialogWidgetLocalizedText]

//! [QvelWidgetByteString]
QWidget* byteString()
{
    auto* editor = new QvelWidgetByteString;
    editor->setByteString(UaByteString(QByteArray::fromHex("00c0ffee")));
    QObject::connect(editor, &QvelWidgetByteString::byteStringChanged, editor, [editor] {
        bool ok = false;
        const UaByteString bytes = editor->byteString(&ok);
        if (ok) // an even number of hexadecimal digits
            qInfo() << bytes.length() << "bytes";
    });
    return editor;
}
//! [QvelWidgetByteString]

//! [QvelWidgetXmlElement]
QWidget* xmlElement()
{
    auto* editor = new QvelWidgetXmlElement;
    editor->setXmlElement(UaByteString(QByteArray("<limit unit=\"bar\">12</limit>")));
    QObject::connect(editor, &QvelWidgetXmlElement::xmlElementChanged, editor,
                     [](const UaByteString& xml) { qInfo() << xml.length() << "bytes"; });
    return editor;
}
//! [QvelWidgetXmlElement]

//! [QvelSettingsCBInterface]
// The last file names of the fields that load and save are kept in the host's settings.
class Settings : public QvelSettingsCBInterface
{
    void* openSettings() override { return new QSettings("Plant", "Editors"); }
    void closeSettings(void* handle) override { delete static_cast<QSettings*>(handle); }
    QVariant readSetting(void* handle, const QString& key) override
    {
        return static_cast<QSettings*>(handle)->value(key);
    }
    void writeSetting(void* handle, const QString& key, const QVariant& value) override
    {
        static_cast<QSettings*>(handle)->setValue(key, value);
    }
};
//! [QvelSettingsCBInterface]

QvelSettingsCBInterface* settings()
{
    static Settings settings;
    return &settings;
}

//! [QvelEditWidgetByteString]
QWidget* byteStringField()
{
    auto* field = new QvelEditWidgetByteString;
    field->setSettingsCBInterface(settings()); // a QvelSettingsCBInterface of the host
    field->setByteString(UaByteString(QByteArray(2000, '\x5a')));
    QObject::connect(field, &QvelEditWidgetByteString::byteStringChanged, field, [field] {
        bool ok = false;
        const UaByteString bytes = field->byteString(&ok); // from a file: reads it now
        qInfo() << (ok ? bytes.length() : -1);
    });
    return field;
}
//! [QvelEditWidgetByteString]

//! [QvelEditWidgetXmlElement]
QWidget* xmlElementField()
{
    auto* field = new QvelEditWidgetXmlElement;
    field->setSettingsCBInterface(settings()); // a QvelSettingsCBInterface of the host
    field->setXmlElement(UaByteString(QByteArray("<limits><low>2</low><high>12</high></limits>")));
    QObject::connect(field, &QvelEditWidgetXmlElement::xmlElementChanged, field,
                     [](const UaByteString& xml) { qInfo() << xml.length() << "bytes"; });
    return field;
}
//! [QvelEditWidgetXmlElement]

//! [QvelEditWidgetString]
QWidget* stringField()
{
    auto* field = new QvelEditWidgetString;
    field->setSettingsCBInterface(settings()); // a QvelSettingsCBInterface of the host
    field->setString("Water treatment, line 3");
    QObject::connect(field, &QvelEditWidgetString::stringChanged, field,
                     [](const UaString& text) { qInfo() << text.toQString(); });
    return field;
}
//! [QvelEditWidgetString]

//! [QvelWidgetStatusCode]
QWidget* statusCode()
{
    auto* editor = new QvelWidgetStatusCode;
    editor->setStatusCode(UaStatusCode(0x800a0000)); // BadTimeout
    QObject::connect(editor, &QvelWidgetStatusCode::statusCodeChanged, editor,
                     [](const UaStatusCode& code) { qInfo() << code.toString().toQString(); });
    return editor;
}
//! [QvelWidgetStatusCode]

//! [QvelWidgetGuid]
QWidget* guid()
{
    auto* editor = new QvelWidgetGuid;
    editor->setGuid(UaGuid(QUuid("{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}")));
    QObject::connect(editor, &QvelWidgetGuid::guidChanged, editor, [editor] {
        bool ok = false;
        const UaGuid id = editor->guid(&ok);
        if (ok) // all 32 digits are there
            qInfo() << id.toString().toQString();
    });
    return editor;
}
//! [QvelWidgetGuid]

//! [QvelWidgetEnum]
QWidget* enumeration()
{
    const QMap<int, QString> states = {{0, "Closed"}, {1, "Opening"}, {2, "Open"}};
    auto* editor = new QvelWidgetEnum(states);
    editor->setEnumValue(2);
    QObject::connect(editor, &QvelWidgetEnum::enumValueChanged, editor,
                     [states](int state) { qInfo() << states.value(state); });
    return editor;
}
//! [QvelWidgetEnum]

//! [QvelWidgetEnumFlags]
QWidget* enumerationFlags()
{
    const QMap<int, QString> rights = {{0, "None"}, {1, "Read"}, {2, "Write"}, {4, "Execute"}};
    auto* editor = new QvelWidgetEnumFlags(rights);
    editor->setEnumValue(1 | 4);
    QObject::connect(editor, &QvelWidgetEnumFlags::enumValueChanged, editor,
                     [](int bits) { qInfo() << "may write:" << bool(bits & 2); });
    return editor;
}
//! [QvelWidgetEnumFlags]

//! [QvelEnumFlagsComboBox]
QWidget* enumerationFlagsBox()
{
    // The box of QvelWidgetEnumFlags, without the contract of a value editor.
    auto* box = new QvelEnumFlagsComboBox({{0, "None"}, {1, "Oil"}, {2, "Gas"}, {4, "Coal"}});
    box->setFlags(1 | 2);
    QObject::connect(box, &QvelEnumFlagsComboBox::flagsChanged, box,
                     [box] { qInfo() << "fuels:" << box->flags(); });
    return box;
}
//! [QvelEnumFlagsComboBox]

//! [QvelFlagsComboBox]
QWidget* flagsBox()
{
    // The names are the keys of an enumeration that is known to Qt's meta-object system.
    using Mask = QvelAccessLevelMask;
    auto* box = new QvelFlagsComboBox<Mask, Mask::AccessLevelMask>;
    box->setFlags(Mask::AccessLevelMask(Mask::CurrentRead) | Mask::CurrentWrite);
    QObject::connect(box, &QvelFlagsComboBoxBase::flagsChanged, box, [box] {
        qInfo() << "may write:" << box->flags().testFlag(Mask::CurrentWrite);
    });
    return box;
}
//! [QvelFlagsComboBox]

//! [QvelWidgetWriteMask]
QWidget* writeMask()
{
    auto* editor = new QvelWidgetWriteMask;
    editor->setAttributeWriteMask(QvelAttributeWriteMask::Description |
                                  QvelAttributeWriteMask::BrowseName);
    QObject::connect(editor, &QvelWidgetWriteMask::attributeWriteMaskChanged, editor,
                     [](OpcUa_UInt32 mask) { qInfo() << mask; });
    return editor;
}
//! [QvelWidgetWriteMask]

//! [QvelWidgetBrowseResultMask]
QWidget* browseResultMask()
{
    auto* editor = new QvelWidgetBrowseResultMask;
    editor->setBrowseResultMask(QvelBrowseResultMask::BrowseName |
                                QvelBrowseResultMask::DisplayName);
    QObject::connect(editor, &QvelWidgetBrowseResultMask::browseResultMaskChanged, editor,
                     [](OpcUa_UInt32 mask) { qInfo() << mask; });
    return editor;
}
//! [QvelWidgetBrowseResultMask]

//! [QvelWidgetDiagnosticsMask]
QWidget* diagnosticsMask()
{
    auto* editor = new QvelWidgetDiagnosticsMask;
    editor->setDiagnosticsMask(QvelDiagnosticsMask::ServiceSymbolicId |
                               QvelDiagnosticsMask::OperationSymbolicId);
    QObject::connect(editor, &QvelWidgetDiagnosticsMask::diagnosticsMaskChanged, editor,
                     [](OpcUa_UInt32 mask) { qInfo() << mask; });
    return editor;
}
//! [QvelWidgetDiagnosticsMask]

//! [QvelWidgetEventNotifierMask]
QWidget* eventNotifierMask()
{
    auto* editor = new QvelWidgetEventNotifierMask;
    editor->setEventNotifierMask(QvelEventNotifierMask::SubscribeToEvents);
    QObject::connect(editor, &QvelWidgetEventNotifierMask::eventNotifierMaskChanged, editor,
                     [](OpcUa_Byte mask) { qInfo() << mask; });
    return editor;
}
//! [QvelWidgetEventNotifierMask]

//! [QvelWidgetAccessLevelMask]
QWidget* accessLevelMask()
{
    auto* editor = new QvelWidgetAccessLevelMask(QvelWidgetBase::ReadOnly);
    editor->setAccessLevelMask(QvelAccessLevelMask::CurrentRead | QvelAccessLevelMask::HistoryRead);
    return editor;
}
//! [QvelWidgetAccessLevelMask]

//! [QvelWidgetValueRank]
QWidget* valueRank()
{
    auto* editor = new QvelWidgetValueRank;
    editor->setValueRank(1); // one dimension
    QObject::connect(editor, &QvelWidgetValueRank::valueRankChanged, editor,
                     [](OpcUa_Int32 rank) { qInfo() << rank; });
    return editor;
}
//! [QvelWidgetValueRank]

//! [QvelDisplayDialog]
QWidget* displayDialog()
{
    auto* dialog = new QvelDisplayDialog(QvelDisplayDialog::ReadOnly);
    dialog->setWindowTitle("Release notes");
    dialog->setText("Boiler 1: new burner, limits raised to 14 bar.\n"
                    "Boiler 2: out of service until the inspection.");
    dialog->resize(480, 200);
    return dialog;
}
//! [QvelDisplayDialog]

} // namespace

QList<WidgetExample> valueExamples()
{
    return {
        {"QvelWidgetNodeId", nodeId},
        {"QvelDialogWidgetNodeId", nodeIdDialog},
        {"QvelDialogWidgetExpandedNodeId", expandedNodeIdDialog},
        {"QvelEditWidgetExpandedNodeId", expandedNodeIdField},
        {"QvelWidgetQualifiedName", qualifiedName},
        {"QvelDialogWidgetQualifiedName", qualifiedNameDialog},
        {"QvelWidgetLocalizedText", localizedText},
        {"QvelDialogWidgetLocalizedText", localizedTextDialog},
        {"QvelWidgetByteString", byteString},
        {"QvelWidgetXmlElement", xmlElement},
        {"QvelEditWidgetByteString", byteStringField},
        {"QvelEditWidgetXmlElement", xmlElementField},
        {"QvelEditWidgetString", stringField},
        {"QvelWidgetStatusCode", statusCode},
        {"QvelWidgetGuid", guid},
        {"QvelWidgetEnum", enumeration},
        {"QvelWidgetEnumFlags", enumerationFlags},
        {"QvelEnumFlagsComboBox", enumerationFlagsBox},
        {"QvelFlagsComboBox", flagsBox},
        {"QvelWidgetWriteMask", writeMask},
        {"QvelWidgetBrowseResultMask", browseResultMask},
        {"QvelWidgetDiagnosticsMask", diagnosticsMask},
        {"QvelWidgetEventNotifierMask", eventNotifierMask},
        {"QvelWidgetAccessLevelMask", accessLevelMask},
        {"QvelWidgetValueRank", valueRank},
        {"QvelDisplayDialog", displayDialog},
    };
}

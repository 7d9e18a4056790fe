#include "toolboxpages.h"

#include <Kestrel/QvelAddressSpaceWidget>
#include <Kestrel/QvelAttributesWidget>
#include <Kestrel/QvelCallWidget>
#include <Kestrel/QvelCertificateManager>
#include <Kestrel/QvelCertificateView>
#include <Kestrel/QvelDataViewWidget>
#include <Kestrel/QvelDiscoveryModel>
#include <Kestrel/QvelEditWidgetArray>
#include <Kestrel/QvelEditWidgetExpandedNodeId>
#include <Kestrel/QvelEditWidgetMatrix>
#include <Kestrel/QvelEndpointSettingsWidget>
#include <Kestrel/QvelReferencesWidget>
#include <Kestrel/QvelSessionWidget>
#include <Kestrel/QvelToolBox>
#include <Kestrel/QvelTrendWidget>
#include <Kestrel/QvelWidgetByteString>
#include <Kestrel/QvelWidgetEnum>
#include <Kestrel/QvelWidgetNodeId>
#include <Kestrel/QvelWidgetQualifiedName>
#include <Kestrel/QvelWidgetStatusCode>
#include <Kestrel/QvelWidgetValueRank>
#include <Kestrel/QvelWidgetVariant>
#include <Kestrel/QvelWidgetWriteMask>

#include <QtCore/QMetaProperty>
#include <QtCore/QXmlStreamWriter>
#include <QtDesigner/QDesignerFormEditorInterface>
#include <QtGui/QIcon>
#include <QtGui/QStandardItemModel>
#include <QtUiPlugin/QDesignerCustomWidgetCollectionInterface>

#include <memory>
#include <vector>

namespace {

constexpr const char* values = "Kestrel Values";
constexpr const char* connection = "Kestrel Connection";
constexpr const char* live = "Kestrel Live";

struct Entry
{
    const QMetaObject* meta;
    QWidget* (*create)(QWidget* parent);
    const char* group;
    const char* icon; // of the library's images
    const char* toolTip;
    bool isContainer = false;
};

template <class Widget>
constexpr Entry entry(const char* group, const char* icon, const char* toolTip)
{
    return {&Widget::staticMetaObject,
            [](QWidget* parent) -> QWidget* { return new Widget(parent); }, group, icon, toolTip};
}

// The view asks nobody on a form: it shows what it will begin with.
QWidget* createDiscovery(QWidget* parent)
{
    auto* view = new QvelDiscoveryWidget(parent);
    auto* model = new QStandardItemModel(view);
    const std::pair<const char*, const char*> rows[] = {
        {"view", "Recently Used"}, {"server", "Local"}, {"network", "Local Network"}};
    for (const auto& [icon, text] : rows)
        model->appendRow(
            new QStandardItem(QIcon(QStringLiteral(":/kestrel/images/%1.png").arg(icon)),
                              QvelDiscoveryModel::tr(text)));
    auto* custom = new QStandardItem(QvelDiscoveryModel::tr("Custom Discovery"));
    custom->appendRow(new QStandardItem("< Double click to Add Server... >"));
    model->appendRow(custom);
    view->setModel(model);
    view->expandAll();
    return view;
}

QWidget* createToolBox(QWidget* parent)
{
    return new QvelToolBox(parent);
}

// A widget is registered by one line.
const Entry entries[] = {
    entry<QvelWidgetVariant>(values, "nodeVariable", "Edits a value of any type and shape"),
    entry<QvelWidgetNodeId>(values, "nodeObject", "Edits a NodeId"),
    entry<QvelEditWidgetExpandedNodeId>(values, "nodeObject",
                                        "Edits an ExpandedNodeId in a dialog"),
    entry<QvelWidgetQualifiedName>(values, "nodeProperty", "Edits a QualifiedName"),
    entry<QvelWidgetLocalizedText>(values, "nodeProperty", "Edits a LocalizedText"),
    entry<QvelEditWidgetString>(values, "nodeProperty", "Edits a String, or loads it from a file"),
    entry<QvelWidgetByteString>(values, "nodeProperty", "Edits a ByteString in a line"),
    entry<QvelEditWidgetByteString>(values, "nodeProperty",
                                    "Edits a ByteString in a dialog, or loads it from a file"),
    entry<QvelWidgetXmlElement>(values, "nodeProperty", "Edits an XmlElement in a line"),
    entry<QvelEditWidgetXmlElement>(values, "nodeProperty",
                                    "Edits an XmlElement in a dialog, or loads it from a file"),
    entry<QvelWidgetStatusCode>(values, "overlay_warning", "Edits a StatusCode"),
    entry<QvelWidgetGuid>(values, "nodeProperty", "Edits a Guid"),
    entry<QvelWidgetEnum>(values, "nodeDataType", "Chooses a value of an enumeration"),
    entry<QvelWidgetEnumFlags>(values, "nodeDataType", "Sets named bits of an integer"),
    entry<QvelWidgetValueRank>(values, "nodeVariableType", "Chooses a ValueRank"),
    entry<QvelWidgetAccessLevelMask>(values, "nodeVariableType", "Edits an AccessLevel"),
    entry<QvelWidgetEventNotifierMask>(values, "nodeView", "Edits an EventNotifier"),
    entry<QvelWidgetWriteMask>(values, "nodeObjectType", "Edits a WriteMask"),
    entry<QvelWidgetBrowseResultMask>(values, "nodeReferenceType",
                                      "Edits the result mask of the Browse service"),
    entry<QvelWidgetDiagnosticsMask>(values, "nodeObjectType",
                                     "Edits the diagnostics mask of a request"),
    entry<QvelEditWidgetArray>(values, "nodeVariable", "Edits an array in a dialog"),
    entry<QvelEditWidgetMatrix>(values, "nodeVariable", "Edits a matrix in a dialog"),
    {&QvelDiscoveryWidget::staticMetaObject, createDiscovery, connection, "network",
     "A tree in which the user finds a server"},
    entry<QvelEndpointSettingsWidget>(
        connection, "settingsconfigure",
        "A form of one connection: endpoint, security, user, session"),
    entry<QvelSessionWidget>(connection, "server", "How a session stands"),
    entry<QvelCertificateManager>(connection, "encrypted",
                                  "The certificates that an application trusts, and its own"),
    entry<QvelCertificateView>(connection, "encrypted", "What one certificate says"),
    entry<QvelAddressSpaceWidget>(live, "nodeFolder", "The address space of a server as a tree"),
    entry<QvelReferencesWidget>(live, "nodeReferenceType", "The references of a node"),
    entry<QvelAttributesWidget>(live, "nodeProperty", "The attributes of a node"),
    entry<QvelDataViewWidget>(live, "view", "Variables and their present values"),
    entry<QvelTrendWidget>(live, "nodeVariable", "Values over time as curves"),
    entry<QvelCallWidget>(live, "nodeMethod", "Calls a method"),
    {&QvelToolBox::staticMetaObject, createToolBox, live, "showGroup",
     "A column of pages that open and close", true},
};

// These are words for the user; what else is text must not be translated.
bool isTranslated(const char* property)
{
    return qstrcmp(property, "itemTexts") == 0 || qstrcmp(property, "currentItemText") == 0;
}

class CustomWidget : public QDesignerCustomWidgetInterface
{
public:
    explicit CustomWidget(const Entry& entry) : m_entry(entry) {}

    QString name() const override { return QString::fromLatin1(m_entry.meta->className()); }
    QString group() const override { return QString::fromLatin1(m_entry.group); }
    QString toolTip() const override { return QString::fromLatin1(m_entry.toolTip); }
    QString whatsThis() const override { return toolTip(); }
    QString includeFile() const override { return QStringLiteral("<Kestrel/%1>").arg(name()); }
    QString codeTemplate() const override { return {}; }
    QIcon icon() const override
    {
        return QIcon(QStringLiteral(":/kestrel/images/%1.png").arg(m_entry.icon));
    }
    bool isContainer() const override { return m_entry.isContainer; }
    QWidget* createWidget(QWidget* parent) override { return m_entry.create(parent); }
    bool isInitialized() const override { return m_isInitialized; }
    void initialize(QDesignerFormEditorInterface* core) override
    {
        if (m_entry.isContainer && !m_isInitialized)
            new ToolBoxExtensions(core);
        m_isInitialized = true;
    }
    QString domXml() const override;

private:
    const Entry& m_entry;
    bool m_isInitialized = false;
};

QString CustomWidget::domXml() const
{
    const QMetaObject* base = m_entry.meta;
    QStringList texts;
    for (; qstrncmp(base->className(), "Qvel", 4) == 0; base = base->superClass()) {
        for (int i = base->propertyOffset(); i < base->propertyCount(); ++i) {
            const QMetaProperty property = base->property(i);
            if (property.typeId() == QMetaType::QString && !isTranslated(property.name()))
                texts.append(QString::fromLatin1(property.name()));
        }
    }
    const QString shortName = name().mid(4);

    QString text;
    QXmlStreamWriter xml(&text);
    xml.writeStartElement("ui");
    xml.writeAttribute("language", "c++");
    xml.writeAttribute("displayname", shortName);
    xml.writeStartElement("widget");
    xml.writeAttribute("class", name());
    xml.writeAttribute("name", shortName.front().toLower() + shortName.mid(1));
    for (int page = 1; m_entry.isContainer && page <= 2; ++page) {
        xml.writeEmptyElement("widget");
        xml.writeAttribute("class", "QWidget");
        xml.writeAttribute("name", QStringLiteral("page_%1").arg(page));
    }
    xml.writeEndElement();
    xml.writeStartElement("customwidgets");
    xml.writeStartElement("customwidget");
    xml.writeTextElement("class", name());
    xml.writeTextElement("extends", QString::fromLatin1(base->className()));
    if (m_entry.isContainer)
        xml.writeTextElement("addpagemethod", "addPage");
    xml.writeStartElement("propertyspecifications");
    for (const QString& property : std::as_const(texts)) {
        xml.writeEmptyElement("stringpropertyspecification");
        xml.writeAttribute("name", property);
        xml.writeAttribute("notr", "true");
        xml.writeAttribute("type", "singleline");
    }
    xml.writeEndDocument();
    return text;
}

} // namespace

class KestrelDesigner : public QObject, public QDesignerCustomWidgetCollectionInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QDesignerCustomWidgetCollectionInterface_iid)
    Q_INTERFACES(QDesignerCustomWidgetCollectionInterface)
public:
    KestrelDesigner()
    {
        for (const Entry& entry : entries)
            m_widgets.push_back(std::make_unique<CustomWidget>(entry));
    }

    QList<QDesignerCustomWidgetInterface*> customWidgets() const override
    {
        QList<QDesignerCustomWidgetInterface*> widgets;
        for (const auto& widget : m_widgets)
            widgets.append(widget.get());
        return widgets;
    }

private:
    std::vector<std::unique_ptr<CustomWidget>> m_widgets;
};

#include "plugin.moc"

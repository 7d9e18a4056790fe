#include "valuespage.h"

#include "host.h"
#include "language.h"
#include "outputfield.h"

#include <Kestrel/QvelDialogWidgetExpandedNodeId>
#include <Kestrel/QvelDialogWidgetLocalizedText>
#include <Kestrel/QvelDialogWidgetNodeId>
#include <Kestrel/QvelDialogWidgetQualifiedName>
#include <Kestrel/QvelEditWidgetByteString>
#include <Kestrel/QvelEditWidgetExpandedNodeId>
#include <Kestrel/QvelEditWidgetString>
#include <Kestrel/QvelEditWidgetXmlElement>
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

#include <QtCore/QFile>
#include <QtCore/QMetaMethod>
#include <QtCore/QTimer>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollArea>
#include <QtWidgets/QVBoxLayout>

#include <type_traits>

namespace {

enum class Shape { Normal, ReadOnly, Frameless };

struct Entry
{
    const char* className;
    EditorHandle (*create)(Shape shape, Host& host, QWidget* parent);
    UaVariant example;
};

template <class Editor>
EditorHandle handleOf(Editor* editor)
{
    return {editor, editor, [editor](bool* ok) { return editor->value(ok); },
            [editor](const UaVariant& value) { editor->setValue(value); }};
}

const QMap<int, QString>& valveStates()
{
    static const QMap<int, QString> names = {{0, "Closed"}, {1, "Opening"}, {2, "Open"}};
    return names;
}

const QMap<int, QString>& permissions()
{
    static const QMap<int, QString> names = {
        {0, "None"}, {1, "Read"}, {2, "Write"}, {4, "Execute"}};
    return names;
}

template <class Editor>
EditorHandle createInline(Shape shape, Host&, QWidget*)
{
    QvelWidgetBase::QvelWidgetFlags flags;
    flags.setFlag(QvelWidgetBase::ReadOnly, shape == Shape::ReadOnly);
    flags.setFlag(QvelWidgetBase::HideFrame, shape == Shape::Frameless);
    if constexpr (std::is_same_v<Editor, QvelWidgetEnum>)
        return handleOf(new Editor(valveStates(), flags));
    else if constexpr (std::is_same_v<Editor, QvelWidgetEnumFlags>)
        return handleOf(new Editor(permissions(), flags));
    else
        return handleOf(new Editor(flags));
}

QPushButton* openButton()
{
    auto* open = new QPushButton;
    Language::follow(open, [open] { open->setText(ValuesPage::tr("Open...")); });
    return open;
}

// Dialogs and edit fields have no frame to hide.
template <class Editor>
EditorHandle createDialog(Shape shape, Host&, QWidget* parent)
{
    if (shape == Shape::Frameless)
        return {};
    EditorHandle handle = handleOf(new Editor(
        shape == Shape::ReadOnly ? QvelDialogWidgetBase::ReadOnly : QvelDialogWidgetBase::NoFlags,
        parent));
    auto* dialog = static_cast<Editor*>(handle.editor);
    auto* open = openButton();
    QObject::connect(open, &QPushButton::clicked, dialog, [open, dialog] {
        dialog->move(open->mapToGlobal(QPoint(0, open->height())));
        dialog->show();
        dialog->activateWindow();
    });
    handle.shown = open;
    return handle;
}

template <class Editor>
EditorHandle createField(Shape shape, Host& host, QWidget*)
{
    if (shape == Shape::Frameless)
        return {};
    auto* field = new Editor(shape == Shape::ReadOnly ? QvelEditWidgetBase::ReadOnly
                                                      : QvelEditWidgetBase::NoFlags);
    if constexpr (!std::is_same_v<Editor, QvelEditWidgetExpandedNodeId>)
        field->setSettingsCBInterface(&host.editorCallback());
    return handleOf(field);
}

template <class Setter, class Value>
UaVariant variantOf(Setter setter, const Value& value)
{
    UaVariant variant;
    (variant.*setter)(value);
    return variant;
}

template <class Editor>
Entry entry(EditorHandle (*create)(Shape, Host&, QWidget*), const UaVariant& example)
{
    return {Editor::staticMetaObject.className(), create, example};
}

QList<Entry> entries()
{
    const UaNodeId pump(UaString("Pump.Speed"), 2);
    const UaGuid guid(QUuid("{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}"));
    const UaVariant nodeId = variantOf(&UaVariant::setNodeId, pump);
    const UaVariant expanded =
        variantOf(&UaVariant::setExpandedNodeId,
                  UaExpandedNodeId(pump, UaString("urn:plant:boiler-house"), 1));
    const UaVariant name =
        variantOf(&UaVariant::setQualifiedName, UaQualifiedName(UaString("Pump"), 2));
    const UaVariant text = variantOf(&UaVariant::setLocalizedText,
                                     UaLocalizedText(UaString("de"), UaString("K\xc3\xbchlung")));
    const UaVariant bytes =
        variantOf(&UaVariant::setByteString, UaByteString(QByteArray::fromHex("00c0ffee")));
    const UaVariant xml =
        variantOf(&UaVariant::setXmlElement, UaByteString(QByteArray("<limit unit=\"bar\"/>")));
    const UaVariant badTimeout(variantOf(&UaVariant::setStatusCode, UaStatusCode(0x800a0000u)));
    return {
        entry<QvelWidgetNodeId>(createInline<QvelWidgetNodeId>, nodeId),
        entry<QvelDialogWidgetNodeId>(createDialog<QvelDialogWidgetNodeId>, nodeId),
        entry<QvelDialogWidgetExpandedNodeId>(createDialog<QvelDialogWidgetExpandedNodeId>,
                                              expanded),
        entry<QvelEditWidgetExpandedNodeId>(createField<QvelEditWidgetExpandedNodeId>, expanded),
        entry<QvelWidgetQualifiedName>(createInline<QvelWidgetQualifiedName>, name),
        entry<QvelDialogWidgetQualifiedName>(createDialog<QvelDialogWidgetQualifiedName>, name),
        entry<QvelWidgetLocalizedText>(createInline<QvelWidgetLocalizedText>, text),
        entry<QvelDialogWidgetLocalizedText>(createDialog<QvelDialogWidgetLocalizedText>, text),
        entry<QvelWidgetStatusCode>(createInline<QvelWidgetStatusCode>, badTimeout),
        entry<QvelWidgetGuid>(createInline<QvelWidgetGuid>, variantOf(&UaVariant::setGuid, guid)),
        entry<QvelWidgetByteString>(createInline<QvelWidgetByteString>, bytes),
        entry<QvelEditWidgetByteString>(createField<QvelEditWidgetByteString>, bytes),
        entry<QvelWidgetXmlElement>(createInline<QvelWidgetXmlElement>, xml),
        entry<QvelEditWidgetXmlElement>(createField<QvelEditWidgetXmlElement>, xml),
        entry<QvelEditWidgetString>(
            createField<QvelEditWidgetString>,
            variantOf(&UaVariant::setString, UaString("Water treatment, line 3"))),
        entry<QvelWidgetEnum>(createInline<QvelWidgetEnum>, UaVariant(OpcUa_Int32(2))),
        entry<QvelWidgetEnumFlags>(createInline<QvelWidgetEnumFlags>, UaVariant(OpcUa_Int32(5))),
        entry<QvelWidgetWriteMask>(createInline<QvelWidgetWriteMask>,
                                   UaVariant(OpcUa_UInt32(0x24))),
        entry<QvelWidgetBrowseResultMask>(createInline<QvelWidgetBrowseResultMask>,
                                          UaVariant(OpcUa_UInt32(0x3f))),
        entry<QvelWidgetDiagnosticsMask>(createInline<QvelWidgetDiagnosticsMask>,
                                         UaVariant(OpcUa_UInt32(0))),
        entry<QvelWidgetEventNotifierMask>(createInline<QvelWidgetEventNotifierMask>,
                                           UaVariant(OpcUa_Byte(1))),
        entry<QvelWidgetAccessLevelMask>(createInline<QvelWidgetAccessLevelMask>,
                                         UaVariant(OpcUa_Byte(3))),
        entry<QvelWidgetValueRank>(createInline<QvelWidgetValueRank>, UaVariant(OpcUa_Int32(-1))),
    };
}

QString shapeName(Shape shape)
{
    switch (shape) {
    case Shape::ReadOnly:
        return ValuesPage::tr("read-only");
    case Shape::Frameless:
        return ValuesPage::tr("no frame");
    default:
        return ValuesPage::tr("normal");
    }
}

} // namespace

EditorWatch::EditorWatch(const EditorHandle& handle, const std::function<QString()>& name,
                         QGridLayout* grid, int row, int column, QObject* parent)
    : QObject(parent), m_handle(handle), m_value(new OutputField), m_ok(new QLabel),
      m_signals(new OutputField)
{
    grid->addWidget(m_value, row, column);
    grid->addWidget(m_ok, row, column + 1);
    grid->addWidget(m_signals, row, column + 2);

    // All signals that the editor's own class declares.
    const QMetaObject* meta = handle.editor->metaObject();
    const QMetaMethod slot = staticMetaObject.method(staticMetaObject.indexOfSlot("signalled()"));
    for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
        if (meta->method(i).methodType() == QMetaMethod::Signal)
            connect(handle.editor, meta->method(i), this, slot);
    }
    Language::follow(handle.shown, [this, name] {
        m_handle.shown->setAccessibleName(name());
        m_value->setAccessibleName(tr("%1: value").arg(name()));
        m_ok->setAccessibleName(tr("%1: validity").arg(name()));
        m_signals->setAccessibleName(tr("%1: last signals").arg(name()));
        refresh();
    });
}

void EditorWatch::refresh()
{
    bool valid = false;
    const UaVariant value = m_handle.value(&valid);
    m_value->showText(value.toFullString().toQString());
    m_ok->setText(valid ? tr("ok") : tr("not valid"));
    m_ok->setAccessibleDescription(m_ok->text());
}

void EditorWatch::signalled()
{
    // Signals that come in one go are shown together.
    if (m_names.isEmpty()) {
        QTimer::singleShot(0, this, [this] {
            m_signals->showText(m_names.join(QLatin1String(", ")));
            m_names.clear();
            refresh();
            Q_EMIT changed();
        });
    }
    m_names << QString::fromLatin1(sender()->metaObject()->method(senderSignalIndex()).name());
}

ValuesPage::ValuesPage(Host& host, QWidget* parent)
    : QWidget(parent), m_host(host), m_grid(new QGridLayout)
{
    enum Column { ShapeColumn, EditorColumn, ValueColumn, OkColumn, SignalsColumn, ColumnCount };
    const std::pair<Column, const char*> titles[] = {{EditorColumn, QT_TR_NOOP("Editor")},
                                                     {ValueColumn, QT_TR_NOOP("Value")},
                                                     {SignalsColumn, QT_TR_NOOP("Last signals")}};
    for (const auto& [column, text] : titles)
        addLabel(0, column, [title = text] { return tr(title); });
    m_grid->setColumnStretch(EditorColumn, 3);
    m_grid->setColumnStretch(ValueColumn, 2);
    m_grid->setColumnStretch(SignalsColumn, 2);

    for (const Entry& entry : entries()) {
        const QString className = QLatin1String(entry.className);
        const QString name = className.mid(int(qstrlen("Qvel")));
        auto* heading = new QLabel(QStringLiteral("<b>%1</b>").arg(name));
        m_grid->addWidget(heading, m_grid->rowCount(), 0, 1, ColumnCount);
        EditorHandle first;
        QList<EditorHandle> followers;
        EditorWatch* firstWatch = nullptr;
        for (Shape shape : {Shape::Normal, Shape::ReadOnly, Shape::Frameless}) {
            const EditorHandle handle = entry.create(shape, host, this);
            if (!handle.editor)
                continue;
            const int row = m_grid->rowCount();
            const auto title = [name, shape] { return tr("%1, %2").arg(name, shapeName(shape)); };
            handle.setValue(entry.example);
            addLabel(row, ShapeColumn, [shape] { return shapeName(shape); });
            m_grid->addWidget(handle.shown, row, EditorColumn);
            auto* watch = new EditorWatch(handle, title, m_grid, row, ValueColumn, this);
            if (shape == Shape::Normal) {
                first = handle;
                firstWatch = watch;
            } else {
                followers << handle;
            }
            if (shape == Shape::ReadOnly)
                m_savedBy.insert(className, handle.value);
        }
        connect(firstWatch, &EditorWatch::changed, this, [first, followers] {
            bool valid = false;
            const UaVariant value = first.value(&valid);
            for (const EditorHandle& follower : followers) {
                if (valid)
                    follower.setValue(value);
            }
        });
    }
    connect(&host, &Host::editorFileNamed, this, &ValuesPage::checkSavedFile);

    auto* content = new QWidget;
    auto* contentLayout = new QVBoxLayout(content);
    contentLayout->addLayout(m_grid);
    contentLayout->addStretch();
    auto* scroll = new QScrollArea;
    scroll->setWidget(content);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setFocusPolicy(Qt::NoFocus);
    Language::follow(scroll, [scroll] { scroll->setAccessibleName(tr("Value editors")); });
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(scroll);
}

void ValuesPage::addLabel(int row, int column, const std::function<QString()>& text)
{
    auto* label = new QLabel;
    Language::follow(label, [label, text] { label->setText(text()); });
    m_grid->addWidget(label, row, column);
}

// A field remembers the name of a file whether or not it could write it, so we look.
void ValuesPage::checkSavedFile(const QString& key, const QString& file)
{
    const QStringList parts = key.split(QLatin1Char('.'));
    if (parts.value(1) != QLatin1String("LastSaveFilename") || !m_savedBy.contains(parts.at(0)))
        return;
    const UaVariant value = m_savedBy.value(parts.at(0))(nullptr);
    QByteArray bytes = value.toByteString().bytes();
    if (value.type() == OpcUaType_XmlElement)
        bytes = value.toXmlElement().bytes();
    else if (value.type() == OpcUaType_String)
        bytes = value.toString().bytes();
    QFile written(file);
    const bool good = written.open(QIODevice::ReadOnly) && written.size() == bytes.size() &&
                      written.readAll() == bytes;
    Q_EMIT m_host.message(good ? tr("Saved %1").arg(file)
                               : tr("%1 could not be written").arg(file));
}

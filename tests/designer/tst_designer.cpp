// The Designer plugin: what it offers, the properties of its widgets, and forms made with it.

#include "ui_twelvewidgets.h"

#include <QtDesigner/QDesignerComponents>
#include <QtDesigner/QtDesigner>
#include <QtTest/QtTest>
#include <QtUiPlugin/QDesignerCustomWidgetCollectionInterface>

namespace {

// The properties that kestrel adds to forms, of the base classes last.
QList<QMetaProperty> ownProperties(const QObject* object)
{
    QList<QMetaProperty> properties;
    const QMetaObject* meta = object->metaObject();
    for (; qstrncmp(meta->className(), "Qvel", 4) == 0; meta = meta->superClass()) {
        for (int i = meta->propertyOffset(); i < meta->propertyCount(); ++i) {
            if (meta->property(i).isDesignable())
                properties.append(meta->property(i));
        }
    }
    return properties;
}

// Values that mean something, by class and property or by property.
const QMap<QByteArray, QVariant> others = {
    {"QvelWidgetVariant.valueText", R"({"Type":1,"Body":true})"},
    {"QvelEditWidgetArray.valueText", R"({"Type":6,"Body":[1,2]})"},
    {"QvelEditWidgetMatrix.valueText", R"({"Type":6,"Body":[1,2],"Dimensions":[1,2]})"},
    {"QvelWidgetNodeId.valueText", "ns=2;s=Pump"},
    {"QvelEditWidgetExpandedNodeId.valueText", "svr=1;nsu=urn:plant;i=7"},
    {"QvelWidgetQualifiedName.valueText", "0:2:Pump"},
    {"QvelWidgetLocalizedText.valueText", ":a: b"},
    {"QvelWidgetStatusCode.valueText", "0x80340000"},
    {"QvelWidgetGuid.valueText", "{72962b91-fa75-4ae6-8d28-b404dc7daf63}"},
    {"QvelWidgetValueRank.valueText", "1"},
    {"QvelWidgetEventNotifierMask.valueText", "8"},
    {"valueText", "10"},
    {"policyNames", "None|Basic256Sha256"},
    {"policyName", "Basic256Sha256"},
    {"valueNames", QStringList{"1=One", "4=Four", "10=Ten"}},
    {"enumValue", 4},
    {"nodeId", "nsu=urn:plant;s=Pump"},
    {"rootNodeId", "i=85"},
    {"objectId", "ns=2;s=Pump"},
    {"methodId", "ns=2;s=Pump.Start"},
    {"currentIndex", 0},
    {"following", 30.0}};

QVariant otherValue(const QObject* object, const QMetaProperty& property)
{
    const QByteArray whole = QByteArray(object->metaObject()->className()) + '.' + property.name();
    const QVariant other = others.value(whole, others.value(property.name()));
    const QVariant value = property.read(object);
    if (other.isValid())
        return other;
    if (property.isEnumType())
        return property.isFlagType() ? value.toInt() ^ 1 : property.enumerator().value(1);
    if (property.typeId() == QMetaType::QString)
        return value.toString() + "other";
    return property.typeId() == QMetaType::Bool ? QVariant(!value.toBool()) : value.toInt() + 1;
}

// Sockets, and threads but for those that Qt paints with.
qsizetype openThings()
{
    qsizetype things = 0;
    for (const QFileInfo& open : QDir("/proc/self/fd").entryInfoList(QDir::System))
        things += open.symLinkTarget().contains("socket:");
    for (const QString& thread : QDir("/proc/self/task").entryList()) {
        QFile name("/proc/self/task/" + thread + "/comm");
        things += name.open(QIODevice::ReadOnly) && !name.readAll().startsWith("Thread (pooled)");
    }
    return things;
}

} // namespace

class tst_Designer : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void widgets_data()
    {
        QTest::addColumn<QDesignerCustomWidgetInterface*>("entry");
        QPluginLoader loader(KESTREL_PLUGIN);
        auto* plugin = qobject_cast<QDesignerCustomWidgetCollectionInterface*>(loader.instance());
        QVERIFY2(plugin, qPrintable(loader.errorString()));
        for (QDesignerCustomWidgetInterface* entry : plugin->customWidgets())
            QTest::newRow(qPrintable(entry->name())) << entry;
    }

    void widgets()
    {
        QFETCH(QDesignerCustomWidgetInterface*, entry);
        QCOMPARE(entry->includeFile(), QStringLiteral("<Kestrel/%1>").arg(entry->name()));
        QVERIFY(entry->group().startsWith("Kestrel ") && !entry->toolTip().isEmpty());
        QVERIFY(!entry->icon().availableSizes().isEmpty());
        QDomDocument xml;
        QVERIFY(xml.setContent(entry->domXml()));
        QCOMPARE(xml.elementsByTagName("widget").at(0).toElement().attribute("class"),
                 entry->name());

        // It touches neither disk nor network, and starts nothing.
        const QTemporaryDir folder;
        QVERIFY(QDir::setCurrent(folder.path()));
        const qsizetype before = openThings();
        const std::unique_ptr<QWidget> widget(entry->createWidget(nullptr));
        QCOMPARE(widget->metaObject()->className(), entry->name());
        widget->show();
        QVERIFY(QTest::qWaitForWindowExposed(widget.get()));
        QCOMPARE(openThings(), before);
        QVERIFY(QDir(folder.path()).isEmpty());

        for (int page = 0; entry->isContainer() && page < 2; ++page)
            QMetaObject::invokeMethod(widget.get(), "addPage", Q_ARG(QWidget*, new QWidget));
        QMap<QByteArray, QVariant> defaults;
        for (const QMetaProperty& property : ownProperties(widget.get())) {
            const QVariant value = otherValue(widget.get(), property);
            const QVariant old = defaults[property.name()] = property.read(widget.get());
            const QSignalSpy spy(widget.get(), property.hasNotifySignal()
                                                   ? property.notifySignal()
                                                   : QMetaMethod::fromSignal(&QObject::destroyed));
            QVERIFY2(property.write(widget.get(), value), property.name());
            QVariant now = property.read(widget.get());
            QVERIFY2(now != old, property.name());
            if (property.isEnumType())
                now = now.toInt();
            QCOMPARE(now, value);
            QVERIFY2(!property.hasNotifySignal() || spy.count() > 0, property.name());
        }
        for (const QMetaProperty& property : ownProperties(widget.get())) {
            if (property.isResettable() && property.reset(widget.get()))
                QCOMPARE(property.read(widget.get()), defaults[property.name()]);
        }
    }

    // As uic has compiled it, and as Designer's preview builds it.
    void form()
    {
        QWidget compiled;
        Ui::TwelveWidgets ui;
        ui.setupUi(&compiled);
        QFile file(KESTREL_FORM);
        QFormBuilder builder;
        builder.setPluginPath({QFileInfo(KESTREL_PLUGIN).path()});
        QVERIFY(file.open(QIODevice::ReadOnly));
        const std::unique_ptr<QWidget> built(builder.load(&file));
        QVERIFY2(built, qPrintable(builder.errorString()));
        const auto widgets = compiled.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
        QCOMPARE(widgets.size(), 12);
        for (const QWidget* widget : widgets) {
            const auto* twin = built->findChild<QWidget*>(widget->objectName());
            QVERIFY2(twin, qPrintable(widget->objectName()));
            for (const QMetaProperty& property : ownProperties(widget))
                QVERIFY2(property.read(twin) == property.read(widget), property.name());
        }
        QCOMPARE(ui.samples->valueText(), R"({"Type":11,"Body":[1.5,2.5]})");
        QCOMPARE(ui.mode->enumValue(), 2); // set before its names, which are translated
        QCOMPARE(ui.endpoint->securityMode(), OpcUa_MessageSecurityMode_Sign);
        QCOMPARE(ui.toolBox->widget(1), ui.valvePage);
    }

    // Pages come, move and go with their titles, and back by undo.
    void toolBoxPages()
    {
        QCoreApplication::addLibraryPath(KESTREL_PLUGINS);
        QDesignerComponents::initializeResources();
        auto* core = QDesignerComponents::createFormEditor(this);
        new QDesignerIntegration(core, this);
        QDesignerComponents::initializePlugins(core);
        QFile file(KESTREL_FORM);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QDesignerFormWindowInterface* form = core->formWindowManager()->createFormWindow();
        QVERIFY(form->setContents(&file));
        core->formWindowManager()->setActiveFormWindow(form);
        auto* box = form->findChild<QvelToolBox*>();
        auto* pages = qt_extension<QDesignerContainerExtension*>(core->extensionManager(), box);
        auto* menu = qt_extension<QDesignerTaskMenuExtension*>(core->extensionManager(), box);
        QVERIFY(pages && menu);
        QTest::mouseClick(box->widget(0), Qt::LeftButton); // makes it the current one
        QVERIFY(!menu->taskActions()[0]->isEnabled());
        menu->taskActions()[1]->trigger(); // down
        QCOMPARE(box->getItemTexts(), "Valve|Motor");
        QCOMPARE(box->widget(1)->objectName(), "motorPage");
        QCOMPARE(pages->currentIndex(), 1);
        auto* third = new QWidget(form);
        pages->insertWidget(1, third);
        QVERIFY(form->contents().contains("<string>Valve|Page_3|Motor</string>"));
        pages->remove(1);
        delete third;
        form->commandHistory()->undo();
        QCOMPARE(box->getItemTexts(), "Motor|Valve");
        QCOMPARE(box->widget(0)->objectName(), "motorPage");
    }
};

QTEST_MAIN(tst_Designer)

#include "tst_designer.moc"

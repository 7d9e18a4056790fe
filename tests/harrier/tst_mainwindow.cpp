#include "host.h"
#include "mainwindow.h"
#include "pages.h"
#include "rendercommand.h"
#include "support/warnings.h"

#include <Kestrel/QvelDiscoveryModel>
#include <Kestrel/QvelToolBox>

#include <QtGui/QAccessible>
#include <QtGui/QAction>
#include <QtTest/QtTest>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QTabBar>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QToolButton>

class MainWindowTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { failOnWarnings(); }

    // This program links the library without harrier's own resources.
    void imagesOfTheLibrary_data()
    {
        QTest::addColumn<bool>("held");
        for (const char* name :
             {"view", "server", "network", "domain", "encrypted", "unencrypted", "comDaServer",
              "comAeServer", "rebrowse", "clearlog", "settingsconfigure", "showGroup", "hideGroup",
              "on", "refresh", "overlay_warning", "overlay_error"})
            QTest::addRow(":/kestrel/images/%s.png", name) << true;
        // Left to the host.
        QTest::newRow(":/kestrel/images/closetab.png") << false;
        for (const char* name : {"globe", "clock", "sandglass", "serveradd"})
            QTest::addRow(":/images/%s.png", name) << false;
    }
    void imagesOfTheLibrary()
    {
        QFETCH(bool, held);
        SettingsStore store;
        Host host(store, 100);
        const MainWindow window(host); // whose trees use them
        const QString path = QString::fromLatin1(QTest::currentDataTag());
        const QImage image(path);
        QCOMPARE(!image.isNull(), held);
        if (held) // for screens of twice the density
            QCOMPARE(QImage(QString(path).replace(".png", "@2x.png")).size(), 2 * image.size());
    }

    void usedEndpointIsKept()
    {
        SettingsStore store;
        QvelDiscoverySetting record;
        record.setEndpointUrl("opc.tcp://plant:4840");
        record.setDisplayName("Pump - None - None");
        {
            Host host(store, 100);
            MainWindow window(host);
            QSignalSpy spy(&host, &Host::endpointChanged);
            QVERIFY(!host.hasEndpoint());
            QVERIFY(window.currentView()->updateEndpointConfiguration(record));
            QCOMPARE(spy.size(), 1);
            QVERIFY(host.endpoint() == record);
        }
        // The next run selects it again, before anyone could connect to the view.
        Host host(store, 100);
        MainWindow window(host);
        QCOMPARE(window.currentView()->noOfRecentNodes(), 1);
        QVERIFY(host.endpoint() == record);
        // The other kinds have stores of their own.
        window.discoveryBox()->setCurrentIndex(1);
        QCOMPARE(window.currentView()->noOfRecentNodes(), 0);
        QVERIFY(!host.hasEndpoint());
    }

    void usingAnEndpointFilesIt()
    {
        SettingsStore store;
        Host host(store, 100);
        MainWindow window(host);
        window.show();
        QAction* use = action(window, "Ctrl+U");
        QVERIFY(!use->isEnabled());
        QvelDiscoverySetting record;
        record.setEndpointUrl("opc.tcp://plant:4840");
        record.setDisplayName("Pump - None - None");
        Q_EMIT window.currentView()->endpointActivated(record); // as a double click does
        QCOMPARE(window.currentView()->noOfRecentNodes(), 1);
        QVERIFY(use->isEnabled());
        use->trigger(); // the entry is current: it is filed in place
        QCOMPARE(window.currentView()->noOfRecentNodes(), 1);
    }

    void endpointIsGoneWithItsNode()
    {
        SettingsStore store;
        Host host(store, 100);
        MainWindow window(host);
        QvelDiscoverySetting record;
        record.setEndpointUrl("opc.tcp://plant:4840");
        record.setDisplayName("Pump - None - None");
        QVERIFY(window.currentView()->updateEndpointConfiguration(record));
        auto* model = qobject_cast<QvelDiscoveryModel*>(window.currentView()->model());
        window.currentView()->setCurrentIndex(model->indexOf(model->getLocalNode()));
        QVERIFY(!host.hasEndpoint());
    }

    void failuresReachTheLog()
    {
        SettingsStore store;
        Host host(store, 1000);
        MainWindow window(host);
        auto* model = qobject_cast<QvelDiscoveryModel*>(window.currentView()->model());
        model->addRemoteServer("opc.tcp://127.0.0.1:1"); // nothing listens there
        QvelDiscoveryNode* custom = model->getAddServerNode()->parent();
        window.currentView()->expand(model->indexOf(custom->at(custom->childrenCount() - 1)));
        QPlainTextEdit* log = nullptr;
        for (auto* edit : window.findChildren<QPlainTextEdit*>()) {
            if (edit->accessibleName() == "Log")
                log = edit;
        }
        QVERIFY(log);
        QTRY_VERIFY(log->toPlainText().contains(
            QStringLiteral("\u26a0 Discovery GetEndpoints on opc.tcp://127.0.0.1:1 failed")));
    }

    void geometryIsKept()
    {
        SettingsStore store;
        {
            Host host(store, 100);
            MainWindow window(host);
            window.show();
            window.resize(900, 610);
            window.pageTabs()->setCurrentIndex(1);
            QVERIFY(!window.discoveryToggle(1)->isChecked());
            window.discoveryToggle(0)->click();
            window.discoveryToggle(2)->click();
        }
        Host host(store, 100);
        MainWindow window(host);
        window.show();
        QCOMPARE(window.size(), QSize(900, 610));
        QCOMPARE(window.pageTabs()->currentIndex(), 1);
        QVERIFY(!window.discoveryToggle(0)->isChecked());
        QVERIFY(window.discoveryToggle(2)->isChecked());
    }

    void treeWithTheFocusIsTheCurrentOne()
    {
        SettingsStore store;
        Host host(store, 100);
        MainWindow window(host);
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        // The open tree fills the panel from the start.
        const QWidget* box = window.discoveryBox();
        QTRY_COMPARE(window.discoveryToggle(2)->parentWidget()->geometry().bottom(),
                     box->rect().bottom());
        window.discoveryToggle(2)->click();
        QTest::mouseClick(
            static_cast<QvelDiscoveryWidget*>(window.discoveryBox()->widget(2))->viewport(),
            Qt::LeftButton);
        QCOMPARE(window.currentView(), window.discoveryBox()->widget(2));
        window.pageTabs()->setFocus(); // the pages work with it
        QCOMPARE(window.currentView(), window.discoveryBox()->widget(2));
    }

    void spoiltGeometryDoesNoHarm()
    {
        SettingsStore store;
        store.setValue("Window/Geometry", QByteArray("\x01\xd9\xd0\xcbgarbage"));
        store.setValue("Window/State", "garbage");
        store.setValue("Window/Page", 4711);
        Host host(store, 100);
        MainWindow window(host);
        window.show();
        QVERIFY(window.pageTabs()->currentIndex() >= 0);
        QVERIFY(window.size().width() > 200);
    }

    void everyActionHasAMnemonicAndNoShortcutTwice()
    {
        SettingsStore store;
        Host host(store, 100);
        MainWindow window(host);
        QSet<QKeySequence> shortcuts;
        for (const QAction* top : window.menuBar()->actions()) {
            QVERIFY(top->text().contains('&'));
            for (const QAction* action : top->menu()->actions()) {
                if (action->isSeparator())
                    continue;
                QVERIFY2(action->text().contains('&'), qPrintable(action->text()));
                if (action->shortcut().isEmpty())
                    continue;
                QVERIFY2(!shortcuts.contains(action->shortcut()), qPrintable(action->text()));
                shortcuts.insert(action->shortcut());
            }
        }
    }

    void tabKeyGoesInReadingOrder()
    {
        SettingsStore store;
        Host host(store, 100);
        MainWindow window(host);
        QvelDiscoverySetting record;
        record.setEndpointUrl("opc.tcp://plant:4840");
        host.setEndpoint(record); // enables the page's button
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        for (int page = 0; page < window.pageTabs()->count(); ++page) {
            window.pageTabs()->setCurrentIndex(page);
            QWidget* const first = window.currentView();
            first->setFocus();
            QStringList areas{areaOf(first)};
            for (int i = 0; i < 1000; ++i) {
                QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
                QWidget* widget = window.focusWidget();
                if (widget == first)
                    break;
                if (areaOf(widget) != areas.last())
                    areas += areaOf(widget);
                QVERIFY2(hasName(widget), widget->metaObject()->className());
            }
            QCOMPARE(window.focusWidget(), first);
            // The header of the tree stands before it and so closes the round.
            QCOMPARE(areas, QStringList({"discovery", "pages", "log", "discovery"}));
        }
    }

    void rendersEveryPage()
    {
        SettingsStore store;
        Host host(store, 100);
        MainWindow window(host);
        QTemporaryDir dir;
        QString error;
        const QString folder = dir.filePath("new/pages");
        QVERIFY2(render(window, folder, &error), qPrintable(error));
        for (const Page& page : pages())
            QVERIFY(!QImage(folder + '/' + page.name + ".png").isNull());
        for (const char* name :
             {"discovery-opcua", "discovery-comda", "discovery-comae", "toolbox"})
            QVERIFY(!QImage(folder + '/' + name + ".png").isNull());

        QFile file(dir.filePath("plain"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(!render(window, file.fileName(), &error));
        QVERIFY(error.contains("plain"));
    }

private:
    static QString areaOf(const QWidget* widget)
    {
        for (; widget; widget = widget->parentWidget()) {
            if (qobject_cast<const QDockWidget*>(widget))
                return widget->objectName();
        }
        return "pages";
    }
    // What a screen reader would say.
    static bool hasName(QWidget* widget)
    {
        const QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(widget);
        return accessible && (!accessible->text(QAccessible::Name).isEmpty() ||
                              qobject_cast<QTabBar*>(widget)); // its tabs have names
    }
    static QAction* action(const MainWindow& window, const QString& shortcut)
    {
        for (auto* action : window.findChildren<QAction*>()) {
            if (action->shortcut() == QKeySequence(shortcut))
                return action;
        }
        qFatal("no action for %s", qPrintable(shortcut));
    }
};

QTEST_MAIN(MainWindowTest)
#include "tst_mainwindow.moc"

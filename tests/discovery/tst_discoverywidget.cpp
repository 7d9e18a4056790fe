#include "endpoints.h"
#include "support/memorysettings.h"
#include "support/warnings.h"

#include <Kestrel/QvelDiscoveryModel>
#include <Kestrel/QvelDiscoveryWidget>

#include <QtCore/QElapsedTimer>
#include <QtCore/QPointer>
#include <QtCore/QTimer>
#include <QtNetwork/QTcpServer>
#include <QtTest/QtTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QInputDialog>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>

using OpcType = QvelDiscoveryWidget::OpcType;

// Fills in the next modal dialog, as a user would.
class DialogUser
{
public:
    // `text` replaces what stands in an input dialog; a null one leaves it.
    DialogUser(bool accept, const QString& text = QString())
    {
        QObject::connect(&m_timer, &QTimer::timeout, [=] {
            QWidget* dialog = QApplication::activeModalWidget();
            if (!dialog)
                return;
            m_timer.stop();
            title = dialog->windowTitle();
            if (auto* input = qobject_cast<QInputDialog*>(dialog)) {
                label = input->labelText();
                shown = input->textValue();
                if (!text.isNull()) {
                    auto* line = dialog->findChild<QLineEdit*>();
                    line->selectAll();
                    QTest::keyClicks(line, text);
                }
            }
            QTest::keyClick(dialog, accept ? Qt::Key_Return : Qt::Key_Escape);
        });
        m_timer.start(1);
    }
    QString title;
    QString label;
    QString shown;

private:
    QTimer m_timer;
};

class DiscoveryWidgetTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void opensFixedEntries_data() { opcTypes(); }
    void opensFixedEntries();
    void offersMenus_data();
    void offersMenus();
    void addsServerByDoubleClick_data();
    void addsServerByDoubleClick();
    void editsUrlByMenu();
    void rebrowsesByMenu();
    void sparesUserEntriesOnRebrowse();
    void tellsEndpoints_data() { opcTypes(); }
    void tellsEndpoints();
    void remembersRecentEntry_data();
    void remembersRecentEntry();
    void makesUpdatedEntryCurrent();
    void returnsFalseWhenDeclined();
    void fitsColumnToNewRows();
    void closesUnderDialog();
    void closesWithManyJobs();

private:
    void opcTypes();
    void makeView(OpcType type = QvelDiscoveryWidget::OpcUa);
    QAbstractItemModel& model() const { return *m_view->model(); }
    QModelIndex node(int row, int child) const;
    QModelIndex at(int row, int child) const
    {
        return child < 0 ? model().index(row, 0) : node(row, child);
    }
    QStringList menuAt(const QModelIndex& index);
    void triggerAt(const QModelIndex& index, const QString& entry);
    void doubleClick(const QModelIndex& index);
    void deliver(const QModelIndex& parent, const QList<QvelDiscoveryNode*>& nodes);
    QvelDiscoveryModel* discoveryModel() const
    {
        return static_cast<QvelDiscoveryModel*>(m_view->model());
    }
    QString silentUrl() const
    {
        return QString("opc.tcp://127.0.0.1:%1").arg(m_silent->serverPort());
    }

    std::unique_ptr<MemorySettings> m_settings;
    std::unique_ptr<QTcpServer> m_silent; // accepts connections, but never says anything
    std::unique_ptr<QvelDiscoveryWidget> m_view;
};

void DiscoveryWidgetTest::init()
{
    failOnWarnings();
    m_settings = std::make_unique<MemorySettings>();
    m_silent = std::make_unique<QTcpServer>();
    QVERIFY(m_silent->listen(QHostAddress::LocalHost));
    // One entry of each kind that the user may have.
    QvelDiscoverySetting recent = fullSetting();
    recent.setDisplayName("recent");
    void* handle = m_settings->openSettings();
    recent.storeSettings(m_settings.get(), handle, "RecentServer0.");
    m_settings->closeSettings(handle);
    m_settings->values.insert("NoOfRecentServers", 1);
    m_settings->values.insert("NoOfDiscoveryServers", 1);
    m_settings->values.insert("DiscoveryServer0", silentUrl());
    m_settings->written.clear();
}

void DiscoveryWidgetTest::cleanup()
{
    m_view.reset();
    QVERIFY(!QApplication::overrideCursor());
    QVERIFY(!m_settings->isOpen());
}

void DiscoveryWidgetTest::opcTypes()
{
    QTest::addColumn<OpcType>("type");
    QTest::newRow("UA") << QvelDiscoveryWidget::OpcUa;
    QTest::newRow("DA") << QvelDiscoveryWidget::ComDa;
    QTest::newRow("AE") << QvelDiscoveryWidget::ComAe;
}

void DiscoveryWidgetTest::makeView(OpcType type)
{
    m_view = std::make_unique<QvelDiscoveryWidget>(type, m_settings.get(), 60000, "session");
    m_view->resize(400, 400);
    m_view->show();
    m_view->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_view.get()));
}

QModelIndex DiscoveryWidgetTest::node(int row, int child) const
{
    return model().index(child, 0, model().index(row, 0));
}

// The entries of the menu that a right click brings up; empty for none.
QStringList DiscoveryWidgetTest::menuAt(const QModelIndex& index)
{
    const QPoint pos = m_view->visualRect(index).center();
    QTest::mouseClick(m_view->viewport(), Qt::RightButton, {}, pos);
    QContextMenuEvent event(QContextMenuEvent::Mouse, pos, m_view->viewport()->mapToGlobal(pos));
    QApplication::sendEvent(m_view->viewport(), &event);
    QStringList entries;
    if (auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) {
        for (QAction* action : menu->actions())
            entries.append(action->text());
    }
    return entries;
}

void DiscoveryWidgetTest::triggerAt(const QModelIndex& index, const QString& entry)
{
    QVERIFY(menuAt(index).contains(entry));
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    for (QAction* action : menu->actions()) {
        if (action->text() == entry)
            return QTest::mouseClick(menu, Qt::LeftButton, {},
                                     menu->actionGeometry(action).center());
    }
}

void DiscoveryWidgetTest::doubleClick(const QModelIndex& index)
{
    const QPoint pos = m_view->visualRect(index).center();
    QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, pos);
    QTest::mouseDClick(m_view->viewport(), Qt::LeftButton, {}, pos);
}

void DiscoveryWidgetTest::deliver(const QModelIndex& parent, const QList<QvelDiscoveryNode*>& nodes)
{
    model().fetchMore(parent);
    discoveryModel()->sltAddChildren(parent, nodes);
    m_view->expand(parent);
}

void DiscoveryWidgetTest::opensFixedEntries()
{
    QFETCH(OpcType, type);
    m_view = std::make_unique<QvelDiscoveryWidget>(type, m_settings.get(), 60000, "session");
    // The network is browsed at once.
    QVERIFY(!model().canFetchMore(model().index(1, 0)));
    QVERIFY(model().canFetchMore(model().index(0, 0)));
    for (int row = 0; row < 4; ++row)
        QCOMPARE(m_view->isExpanded(model().index(row, 0)), row > 0);
    QVERIFY(m_view->isHeaderHidden());
    QVERIFY(!m_view->currentIndex().isValid());
    QCOMPARE(m_view->noOfRecentNodes(), 1);
    QCOMPARE(m_view->currentConfiguration(), QvelDiscoverySetting());
}

void DiscoveryWidgetTest::offersMenus_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("child");
    QTest::addColumn<QStringList>("entries");
    const QString edit = "Edit Discovery URL", rebrowse = "Rebrowse", remove = "Remove";
    QTest::newRow("local") << 0 << -1 << QStringList({edit, rebrowse});
    QTest::newRow("network") << 1 << -1 << QStringList(rebrowse);
    QTest::newRow("custom") << 2 << -1 << QStringList();
    QTest::newRow("add server") << 2 << 0 << QStringList();
    QTest::newRow("added") << 2 << 1 << QStringList({edit, rebrowse, remove});
    QTest::newRow("recently used") << 3 << -1 << QStringList();
    QTest::newRow("recent entry") << 3 << 0 << QStringList(remove);
    QTest::newRow("server") << 0 << 0 << QStringList(rebrowse);
    QTest::newRow("endpoint") << 0 << 1 << QStringList();
    QTest::newRow("nothing") << 9 << 9 << QStringList();
}

// The Delete key removes what the menu offers to remove, and nothing else.
void DiscoveryWidgetTest::offersMenus()
{
    QFETCH(int, row);
    QFETCH(int, child);
    QFETCH(QStringList, entries);
    makeView();
    deliver(model().index(0, 0), {new QvelDiscoveryNodeServer("s", "opc.tcp://s", discoveryModel()),
                                  new QvelDiscoveryNodeEndpoint("e", discoveryModel())});
    if (row == 9) {
        const QPoint below(20, m_view->viewport()->height() - 2);
        QVERIFY(!m_view->indexAt(below).isValid());
        Q_EMIT m_view->customContextMenuRequested(below);
        QVERIFY(!QApplication::activePopupWidget());
        return;
    }
    QCOMPARE(menuAt(at(row, child)), entries);
    if (QWidget* popup = QApplication::activePopupWidget())
        popup->close();
    QCOMPARE(m_view->currentIndex(), at(row, child));
    QSignalSpy removed(&model(), &QAbstractItemModel::rowsRemoved);
    QTest::keyClick(m_view.get(), Qt::Key_Delete);
    QCOMPARE(removed.size(), entries.contains("Remove") ? 1 : 0);
}

void DiscoveryWidgetTest::addsServerByDoubleClick_data()
{
    QTest::addColumn<OpcType>("type");
    QTest::addColumn<QString>("typed"); // null: what stands there is left
    QTest::addColumn<QString>("added"); // null: nothing
    const auto row = [](const char* name, OpcType type, const QString& typed,
                        const QString& added) { QTest::newRow(name) << type << typed << added; };
    row("as it is", QvelDiscoveryWidget::OpcUa, {}, "opc.tcp://");
    row("url", QvelDiscoveryWidget::OpcUa, "opc.tcp://h", "opc.tcp://h");
    row("scheme alone", QvelDiscoveryWidget::OpcUa, "opc.tcp:", "opc.tcp:");
    row("other case", QvelDiscoveryWidget::OpcUa, "OPC.TCP://h", {});
    row("host and port", QvelDiscoveryWidget::OpcUa, "h:4840", {});
    row("https", QvelDiscoveryWidget::OpcUa, "https://h", {});
    row("DA", QvelDiscoveryWidget::ComDa, {}, "localhost");
    row("AE", QvelDiscoveryWidget::ComAe, "plant7", "plant7");
}

void DiscoveryWidgetTest::addsServerByDoubleClick()
{
    QFETCH(OpcType, type);
    QFETCH(QString, typed);
    QFETCH(QString, added);
    makeView(type);
    for (bool accept : {false, true}) {
        const DialogUser user(accept, typed);
        doubleClick(node(2, 0));
        QCOMPARE(user.title, "Enter Url");
        QCOMPARE(user.label, "Enter the Url of a computer with discovery service running:");
        QCOMPARE(user.shown, type == QvelDiscoveryWidget::OpcUa ? "opc.tcp://" : "localhost");
        QCOMPARE(model().rowCount(model().index(2, 0)), accept && !added.isNull() ? 3 : 2);
    }
    QCOMPARE(node(2, 2).data().toString(), added);
}

void DiscoveryWidgetTest::editsUrlByMenu()
{
    makeView();
    const QString before = silentUrl(), after = "opc.tcp://127.0.0.1:1";
    for (bool accept : {false, true}) {
        const DialogUser user(accept, after);
        triggerAt(node(2, 1), "Edit Discovery URL");
        QCOMPARE(user.title, "Edit Discovery Url");
        QCOMPARE(user.label, "Enter the new Discovery Url:");
        QCOMPARE(user.shown, before);
        QCOMPARE(node(2, 1).data().toString(), accept ? after : before);
    }
    QVERIFY(!model().canFetchMore(node(2, 1)));
    // The fixed node keeps its name, and for another kind of node no dialog comes.
    {
        const DialogUser user(true, after);
        triggerAt(model().index(0, 0), "Edit Discovery URL");
    }
    QCOMPARE(model().index(0, 0).data().toString(), "Local");
    QCOMPARE(discoveryModel()->getLocalNode()->discoveryUrl(), after);
    m_view->setCurrentIndex(node(3, 0));
    QVERIFY(QMetaObject::invokeMethod(m_view.get(), "sltEditUrl"));
    triggerAt(node(2, 1), "Remove");
    QCOMPARE(model().rowCount(model().index(2, 0)), 1);
}

void DiscoveryWidgetTest::rebrowsesByMenu()
{
    makeView();
    const QModelIndex local = model().index(0, 0);
    deliver(local, {new QvelDiscoveryNodeServer("s", silentUrl(), discoveryModel())});
    const QModelIndex server = node(0, 0);
    deliver(server, {new QvelDiscoveryNodeEndpoint("e", discoveryModel())});
    QCOMPARE(model().rowCount(server), 1);
    triggerAt(server, "Rebrowse");
    triggerAt(server, "Rebrowse");
    QCOMPARE(model().rowCount(server), 0);
    // Two jobs wait, and both are listened to.
    for (int i = 0; i < 3; ++i)
        discoveryModel()->sltAddChildren(server,
                                         {new QvelDiscoveryNodeEndpoint("e", discoveryModel())});
    QCOMPARE(model().rowCount(server), 2);
}

// The action works on the current node, which need not be the one under the menu.
void DiscoveryWidgetTest::sparesUserEntriesOnRebrowse()
{
    makeView();
    for (int row : {2, 3}) {
        m_view->setCurrentIndex(model().index(row, 0));
        const int count = model().rowCount(model().index(row, 0));
        QVERIFY(QMetaObject::invokeMethod(m_view.get(), "sltRebrowse"));
        QCOMPARE(model().rowCount(model().index(row, 0)), count);
    }
}

void DiscoveryWidgetTest::tellsEndpoints()
{
    QFETCH(OpcType, type);
    makeView(type);
    const bool ua = type == QvelDiscoveryWidget::OpcUa;
    QSignalSpy selected(m_view.get(), ua ? &QvelDiscoveryWidget::endpointSelected
                                         : &QvelDiscoveryWidget::comServerSelected);
    QSignalSpy activated(m_view.get(), ua ? &QvelDiscoveryWidget::endpointActivated
                                          : &QvelDiscoveryWidget::comServerActivated);
    QSignalSpy other(m_view.get(), ua ? &QvelDiscoveryWidget::comServerSelected
                                      : &QvelDiscoveryWidget::endpointSelected);
    QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {},
                      m_view->visualRect(model().index(3, 0)).center());
    QCOMPARE(selected.size(), 0);
    QTest::keyClick(m_view.get(), Qt::Key_Down);
    QCOMPARE(selected.size(), 1);
    QCOMPARE(selected[0][0].value<QvelDiscoverySetting>().displayName(), "recent");
    QCOMPARE(m_view->currentConfiguration().displayName(), "recent");
    QTest::keyClick(m_view.get(), Qt::Key_Return);
    QCOMPARE(activated.size(), 1);
    doubleClick(node(3, 0));
    QCOMPARE(activated.size(), 2);
    QCOMPARE(activated[1][0].value<QvelDiscoverySetting>(), m_view->currentConfiguration());
    QCOMPARE(other.size(), 0);
    QCOMPARE(selected.size(), 1);
}

void DiscoveryWidgetTest::remembersRecentEntry_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("child");
    QTest::addColumn<QVariant>("written");
    QTest::newRow("recent entry") << 3 << 0 << QVariant("recent");
    QTest::newRow("another") << 0 << -1 << QVariant("Local");
    QTest::newRow("none") << 9 << -1 << QVariant();
}

void DiscoveryWidgetTest::remembersRecentEntry()
{
    QFETCH(int, row);
    QFETCH(int, child);
    makeView();
    m_view->setCurrentIndex(row == 9 ? QModelIndex() : at(row, child));
    m_view.reset();
    // The view writes first, then its model.
    QTEST(m_settings->values.value("LastUsedNode"), "written");
    QCOMPARE(m_settings->written.first(), row == 9 ? "NoOfRecentServers" : "LastUsedNode");
    m_view = std::make_unique<QvelDiscoveryWidget>(QvelDiscoveryWidget::OpcUa, m_settings.get(),
                                                   60000, "session");
    QCOMPARE(m_view->currentIndex(), child < 0 ? QModelIndex() : at(row, child));
    QCOMPARE(m_view->selectionModel()->hasSelection(), child >= 0);
}

void DiscoveryWidgetTest::makesUpdatedEntryCurrent()
{
    makeView();
    QVERIFY(m_view->updateEndpointConfiguration(fullSetting()));
    QCOMPARE(m_view->noOfRecentNodes(), 2);
    QCOMPARE(m_view->currentIndex(), node(3, 1));
    QCOMPARE(m_view->currentConfiguration(), fullSetting());
    // That entry is current now and takes whatever comes.
    QvelDiscoverySetting renamed = fullSetting();
    renamed.setDisplayName("renamed");
    QVERIFY(m_view->updateEndpointConfiguration(renamed));
    QCOMPARE(m_view->noOfRecentNodes(), 2);
    QCOMPARE(node(3, 1).data().toString(), "renamed");
}

void DiscoveryWidgetTest::returnsFalseWhenDeclined()
{
    makeView();
    const QvelDiscoverySetting before =
        static_cast<QvelDiscoveryNodeEndpoint*>(node(3, 0).internalPointer())->configuration();
    QvelDiscoverySetting other = fullSetting(0);
    other.setDisplayName("recent");
    m_view->setCurrentIndex(model().index(0, 0));
    const DialogUser user(false);
    QVERIFY(!m_view->updateEndpointConfiguration(other));
    QCOMPARE(user.title, "Configuration already existing");
    QCOMPARE(m_view->currentIndex(), model().index(0, 0));
    QCOMPARE(static_cast<QvelDiscoveryNodeEndpoint*>(node(3, 0).internalPointer())->configuration(),
             before);
}

void DiscoveryWidgetTest::fitsColumnToNewRows()
{
    makeView();
    const int width = m_view->columnWidth(0);
    discoveryModel()->addRemoteServer("opc.tcp://" + QString(200, 'w'));
    QVERIFY(m_view->columnWidth(0) > 2 * width);
}

// The host may close its window while the view asks the user.
void DiscoveryWidgetTest::closesUnderDialog()
{
    for (const char* slot : {"edit", "add", "overwrite"}) {
        makeView();
        QTimer::singleShot(20, this, [this] { m_view.reset(); });
        if (!qstrcmp(slot, "edit")) {
            m_view->setCurrentIndex(node(2, 1));
            QMetaObject::invokeMethod(m_view.get(), "sltEditUrl");
        } else if (!qstrcmp(slot, "add")) {
            Q_EMIT m_view->activated(node(2, 0)); // the mouse event would not survive it in Qt
        } else {
            QvelDiscoverySetting other = fullSetting(0);
            other.setDisplayName("recent");
            QTimer::singleShot(40, this, [] {
                if (QWidget* box = QApplication::activeModalWidget())
                    box->close();
            });
            m_view->updateEndpointConfiguration(other);
        }
        QVERIFY(!m_view);
    }
}

void DiscoveryWidgetTest::closesWithManyJobs()
{
    makeView();
    const QModelIndex added = node(2, 1);
    for (int i = 0; i < 1030; ++i)
        model().fetchMore(added);
    for (int accepted = 0; accepted < 30; ++accepted) {
        QTRY_VERIFY(m_silent->hasPendingConnections());
        m_silent->nextPendingConnection();
    }
    QElapsedTimer timer;
    timer.start();
    m_view.reset();
    QVERIFY(timer.elapsed() < 10000); // each of them would have waited a minute
    QVERIFY(!QApplication::overrideCursor());
}

QTEST_MAIN(DiscoveryWidgetTest)
#include "tst_discoverywidget.moc"

#include "endpoints.h"
#include "support/memorysettings.h"
#include "support/modaluser.h"
#include "support/warnings.h"

#include <Kestrel/QvelDiscoveryModel>
#include <Kestrel/QvelDiscoveryWidget>

#include <QtNetwork/QTcpServer>
#include <QtWidgets/QInputDialog>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenu>

using View = QvelDiscoveryWidget;

class DiscoveryWidgetTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup()
    {
        m_view.reset();
        QVERIFY(!QApplication::overrideCursor() && !m_settings->isOpen());
    }
    void offersMenus();
    void addsServerByDoubleClick();
    void editsByMenu();
    void tellsAndRemembersEndpoints();
    void filesConfigurations();
    void mayGoWhileItAsks();

private:
    void makeView(View::OpcType type = View::OpcUa)
    {
        m_view.reset();
        m_view = std::make_unique<View>(type, m_settings.get(), 60000, "session");
        m_view->resize(400, 400);
        m_view->show();
        m_view->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_view.get()));
    }
    QvelDiscoveryModel& model() const { return *static_cast<QvelDiscoveryModel*>(m_view->model()); }
    QModelIndex at(int row, int child = -1) const
    {
        const QModelIndex top = model().index(row, 0);
        return child < 0 ? top : model().index(child, 0, top);
    }
    QString menuAt(const QModelIndex& index, const QString& trigger = QString());
    void doubleClick(const QModelIndex& index)
    {
        const QPoint pos = m_view->visualRect(index).center();
        QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, pos);
        QTest::mouseDClick(m_view->viewport(), Qt::LeftButton, {}, pos);
    }

    std::unique_ptr<MemorySettings> m_settings;
    std::unique_ptr<View> m_view;
};

// One entry of each kind that the user may have.
void DiscoveryWidgetTest::init()
{
    failOnWarnings();
    m_settings = std::make_unique<MemorySettings>();
    m_settings->values = {{"NoOfRecentServers", 1},
                          {"RecentServer0.DisplayName", "recent"},
                          {"NoOfDiscoveryServers", 1},
                          {"DiscoveryServer0", "opc.tcp://127.0.0.1:1"}};
}

// The entries of the menu that a right click brings up, one of them to be clicked.
QString DiscoveryWidgetTest::menuAt(const QModelIndex& index, const QString& trigger)
{
    const QPoint pos = m_view->visualRect(index).center();
    QTest::mouseClick(m_view->viewport(), Qt::RightButton, {}, pos);
    QContextMenuEvent event(QContextMenuEvent::Mouse, pos, m_view->viewport()->mapToGlobal(pos));
    QApplication::sendEvent(m_view->viewport(), &event);
    const QPointer<QMenu> menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    QStringList entries;
    QPoint entry;
    const QList<QAction*> actions = menu ? menu->actions() : QList<QAction*>();
    for (QAction* action : actions) {
        entries.append(action->text());
        if (action->text() == trigger)
            entry = menu->actionGeometry(action).center();
    }
    if (!entry.isNull())
        QTest::mouseClick(menu, Qt::LeftButton, {}, entry);
    if (menu)
        menu->close();
    return entries.join('|');
}

// The Delete key removes what the menu offers to remove, and nothing else.
void DiscoveryWidgetTest::offersMenus()
{
    const QString all = "Edit Discovery URL|Rebrowse|Remove";
    const std::tuple<int, int, QString> rows[] = {{0, -1, "Edit Discovery URL|Rebrowse"},
                                                  {1, -1, "Rebrowse"},
                                                  {2, -1, ""},
                                                  {3, -1, ""},
                                                  {2, 0, ""},
                                                  {2, 1, all},
                                                  {3, 0, "Remove"},
                                                  {0, 0, "Rebrowse"},
                                                  {0, 1, ""}};
    for (const auto& [row, child, entries] : rows) {
        makeView();
        for (int top = 0; top < 4; ++top)
            QCOMPARE(m_view->isExpanded(at(top)), top > 0);
        QVERIFY(!model().canFetchMore(at(1)) && model().canFetchMore(at(0)));
        QVERIFY(m_view->isHeaderHidden());
        model().fetchMore(at(0));
        model().sltAddChildren(at(0),
                               {new QvelDiscoveryNodeServer("s", "opc.tcp://127.0.0.1:1", &model()),
                                new QvelDiscoveryNodeEndpoint("e", &model())});
        m_view->expand(at(0));
        const QModelIndex index = at(row, child);
        QCOMPARE(menuAt(index), entries);
        QCOMPARE(m_view->currentIndex(), index);
        const int children = model().rowCount(index);
        QSignalSpy removed(&model(), &QAbstractItemModel::rowsRemoved);
        if (!entries.contains("Rebrowse")) { // the action works on the current node all the same
            QVERIFY(QMetaObject::invokeMethod(m_view.get(), "sltRebrowse"));
            QCOMPARE(model().rowCount(index), index.data() == "e" ? 0 : children);
        }
        removed.clear();
        QTest::keyClick(m_view.get(), Qt::Key_Delete);
        QCOMPARE(removed.size(), entries.contains("Remove") ? 1 : 0);
    }
    Q_EMIT m_view->customContextMenuRequested({20, m_view->viewport()->height() - 2});
    QVERIFY(!QApplication::activePopupWidget());
}

void DiscoveryWidgetTest::addsServerByDoubleClick()
{
    struct Row
    {
        View::OpcType type;
        bool replaces;
        QString typed, added;
    };
    const Row rows[] = {{View::OpcUa, false, "", "opc.tcp://"},
                        {View::OpcUa, false, "h:4840", "opc.tcp://h:4840"},
                        {View::OpcUa, false, "h ", "opc.tcp://h"},
                        {View::OpcUa, true, "  opc.tcp:", "opc.tcp:"},
                        {View::OpcUa, true, "OPC.TCP://h", {}},
                        {View::OpcUa, true, "h:4840", {}},
                        {View::ComDa, false, "", "localhost"},
                        {View::ComAe, true, "plant7", "plant7"}};
    for (const Row& row : rows) {
        cleanup();
        init();
        makeView(row.type);
        for (const bool accept : {false, true}) {
            bool told = false;
            const ModalUser user([&](QDialog* dialog) {
                auto* line = dialog->findChild<QLineEdit*>();
                QCOMPARE(line->text(), row.type == View::OpcUa ? "opc.tcp://" : "localhost");
                QCOMPARE(static_cast<QInputDialog*>(dialog)->labelText(),
                         "Enter the Url of a computer with discovery service running:");
                if (row.replaces)
                    line->selectAll();
                QTest::keyClicks(line, row.typed);
                for (const QLabel* label : dialog->findChildren<QLabel*>())
                    told = told || (label->isVisible() && label->text().contains("opc.tcp:"));
                QTest::keyClick(dialog, accept ? Qt::Key_Return : Qt::Key_Escape);
            });
            doubleClick(at(2, 0));
            QCOMPARE(user.seen, QStringList("QInputDialog|Enter Url"));
            QCOMPARE(told, row.added.isNull()); // not dropped in silence
            QCOMPARE(model().rowCount(at(2)), accept && !row.added.isNull() ? 3 : 2);
        }
        QCOMPARE(at(2, 2).data().toString(), row.added);
    }
    const int width = m_view->columnWidth(0); // fitted to new rows
    model().addRemoteServer(QString(200, 'w'));
    QVERIFY(m_view->columnWidth(0) > 2 * width);
}

void DiscoveryWidgetTest::editsByMenu()
{
    makeView();
    for (const auto& [row, child] : {std::pair(2, 1), std::pair(0, -1)}) {
        for (const bool accept : {false, true}) {
            const ModalUser user([&](QDialog* dialog) {
                QCOMPARE(static_cast<QInputDialog*>(dialog)->labelText(),
                         "Enter the new Discovery Url:");
                QTest::keyClicks(dialog->findChild<QLineEdit*>(), "opc.tcp://127.0.0.1:2");
                QTest::keyClick(dialog, accept ? Qt::Key_Return : Qt::Key_Escape);
            });
            menuAt(at(row, child), "Edit Discovery URL");
            QCOMPARE(user.seen, QStringList("QInputDialog|Edit Discovery Url"));
            auto* node = static_cast<QvelDiscoveryNodeDiscovery*>(at(row, child).internalPointer());
            QCOMPARE(node->discoveryUrl() == "opc.tcp://127.0.0.1:2", accept);
            QCOMPARE(node->isBrowsed(), accept);
        }
    }
    QCOMPARE(at(0).data(), "Local"); // its name stays
    m_view->setCurrentIndex(at(3, 0));
    QVERIFY(QMetaObject::invokeMethod(m_view.get(), "sltEditUrl")); // no dialog for another kind
    menuAt(at(2, 1), "Rebrowse");
    QVERIFY(static_cast<QvelDiscoveryNode*>(at(2, 1).internalPointer())->isBrowsing());
    menuAt(at(2, 1), "Remove");
    QCOMPARE(model().rowCount(at(2)), 1);
}

void DiscoveryWidgetTest::tellsAndRemembersEndpoints()
{
    for (const View::OpcType type : {View::OpcUa, View::ComDa, View::ComAe}) {
        makeView(type);
        QCOMPARE(m_view->selectionModel()->isSelected(at(3, 0)), type != View::OpcUa);
        const bool ua = type == View::OpcUa;
        QSignalSpy selected(m_view.get(), ua ? &View::endpointSelected : &View::comServerSelected);
        QSignalSpy activated(m_view.get(),
                             ua ? &View::endpointActivated : &View::comServerActivated);
        QSignalSpy other(m_view.get(), ua ? &View::comServerSelected : &View::endpointSelected);
        QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {},
                          m_view->visualRect(at(3)).center());
        QCOMPARE(m_view->currentConfiguration(), QvelDiscoverySetting());
        QTest::keyClick(m_view.get(), Qt::Key_Down);
        QCOMPARE(selected.size(), 1);
        QCOMPARE(m_view->currentConfiguration().displayName(), "recent");
        QTest::keyClick(m_view.get(), Qt::Key_Return);
        doubleClick(at(3, 0));
        QCOMPARE(activated.size(), 2);
        QCOMPARE(activated[1][0].value<QvelDiscoverySetting>(), m_view->currentConfiguration());
        QCOMPARE(other.size() + selected.size(), 1);
        m_settings->written.clear();
        m_view.reset();
        QCOMPARE(m_settings->written.first(), "LastUsedNode"); // before the model writes
        QCOMPARE(m_settings->values["LastUsedNode"], "recent");
    }
    makeView();
    QVERIFY(m_view->selectionModel()->isSelected(at(3, 0)));
    m_view->setCurrentIndex(at(0));
    m_view.reset();
    QCOMPARE(m_settings->values["LastUsedNode"], "Local");
    makeView(); // which is no entry that was used
    QVERIFY(!m_view->selectionModel()->hasSelection());
    m_view.reset();
    QCOMPARE(m_settings->values["LastUsedNode"], "Local");
}

void DiscoveryWidgetTest::filesConfigurations()
{
    makeView();
    QVERIFY(m_view->updateEndpointConfiguration(fullSetting()));
    QCOMPARE(m_view->noOfRecentNodes(), 2);
    QCOMPARE(m_view->currentIndex(), at(3, 1));
    QCOMPARE(m_view->currentConfiguration(), fullSetting());
    QvelDiscoverySetting recent = fullSetting();
    recent.setDisplayName("recent");
    m_view->setCurrentIndex(at(0));
    ModalUser user;
    user.button = QMessageBox::Cancel;
    QVERIFY(!m_view->updateEndpointConfiguration(recent));
    QCOMPARE(user.seen.size(), 1);
    QCOMPARE(m_view->currentIndex(), at(0));
}

// The host may close its window while the view asks the user.
void DiscoveryWidgetTest::mayGoWhileItAsks()
{
    const std::function<void()> ways[] = {
        [this] { doubleClick(at(2, 0)); },
        [this] {
            m_view->setCurrentIndex(at(2, 0));
            QTest::keyClick(m_view.get(), Qt::Key_Return);
        },
        [this] { menuAt(at(2, 1), "Edit Discovery URL"); },
        [this] {
            QvelDiscoverySetting other = fullSetting(0);
            other.setDisplayName("recent");
            m_view->updateEndpointConfiguration(other);
        },
        [this] { // no question, but a host that goes on with what was activated
            connect(m_view.get(), &View::endpointActivated, this, [this] { m_view.reset(); });
            doubleClick(at(3, 0));
        },
    };
    for (const auto& way : ways) {
        makeView();
        QTimer::singleShot(20, this, [this] { m_view.reset(); });
        const StuckDialog stuck; // fails what would hang
        way();
        QVERIFY(!m_view);
        QVERIFY(!QApplication::activeModalWidget());
    }
}

QTEST_MAIN(DiscoveryWidgetTest)
#include "tst_discoverywidget.moc"

#include "endpoints.h"
#include "support/memorysettings.h"
#include "support/modaluser.h"
#include "support/warnings.h"

#include <Kestrel/QvelDiscoveryModel>
#include <Kestrel/QvelDiscoveryWidget>

#include <QtNetwork/QtNetwork>

using View = QvelDiscoveryWidget;

class DiscoveryWidgetTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() // one entry of each kind that the user may have
    {
        failOnWarnings();
        m_settings = std::make_unique<MemorySettings>();
        m_settings->values = {{"NoOfRecentServers", 1},
                              {"RecentServer0.DisplayName", "recent"},
                              {"NoOfDiscoveryServers", 1},
                              {"DiscoveryServer0", "opc.tcp://127.0.0.1:1"}};
    }
    void cleanup()
    {
        m_view.reset();
        QVERIFY(!QApplication::overrideCursor() && !m_settings->isOpen());
    }
    // The Delete key removes what the menu offers to remove, and nothing else.
    void offersMenus()
    {
        const QString edit = "Edit Discovery URL|Rebrowse", all = edit + "|Remove", none = "";
        const QString menus[][3] = {{edit, "Rebrowse", none}, // of the entry and two below it
                                    {"Rebrowse", {}, {}},
                                    {none, none, all},
                                    {none, "Remove", {}}};
        for (int i = 0; i < 12; ++i) {
            const QString entries = menus[i / 3][i % 3];
            if (entries.isNull())
                continue;
            makeView();
            for (int top = 0; top < 4; ++top)
                QCOMPARE(m_view->isExpanded(at(top)), top > 0);
            QVERIFY(!model().canFetchMore(at(1)) && model().canFetchMore(at(0)));
            model().fetchMore(at(0));
            model().sltAddChildren(
                at(0), {new QvelDiscoveryNodeServer("s", "opc.tcp://127.0.0.1:1", &model()),
                        new QvelDiscoveryNodeEndpoint("e", &model())});
            m_view->expand(at(0));
            const QModelIndex index = at(i / 3, i % 3 - 1);
            QCOMPARE(menuAt(index), entries);
            QCOMPARE(m_view->currentIndex(), index);
            const int children = model().rowCount(index);
            // The action works on the current node all the same.
            if (!entries.contains("Rebrowse")) {
                QVERIFY(QMetaObject::invokeMethod(m_view.get(), "sltRebrowse"));
                QCOMPARE(model().rowCount(index), children);
            }
            QSignalSpy removed(&model(), &QAbstractItemModel::rowsRemoved);
            QTest::keyClick(m_view.get(), Qt::Key_Delete);
            QCOMPARE(removed.size(), entries.contains("Remove") ? 1 : 0);
        }
        const int width = m_view->columnWidth(0); // fitted to new rows
        model().addRemoteServer("opc.tcp://" + QString(200, 'w'));
        QVERIFY(m_view->columnWidth(0) > 2 * width);
    }
    void asksForUrls()
    {
        // An entry to be double-clicked or "Local" or another to be edited; typed instead of the
        // URL or behind it; the URL then, or none.
        const QString edit = "Edit Discovery URL";
        const std::tuple<int, int, int, bool, QString, QString> rows[] = {
            {0, 2, 0, false, "", "opc.tcp://"},
            {0, 2, 0, false, "h:4840 ", "opc.tcp://h:4840"},
            {0, 2, 0, true, "  opc.tcp:", "opc.tcp:"},
            {0, 2, 0, true, "OPC.TCP://h", {}},
            {0, 2, 0, true, "h:4840", {}},
            {1, 2, 0, false, "", "localhost"},
            {2, 2, 0, true, "plant7", "plant7"},
            {0, 2, 1, true, "opc.tcp://127.0.0.1:2", "opc.tcp://127.0.0.1:2"},
            {0, 0, -1, true, "opc.tcp://127.0.0.1:2 ", "opc.tcp://127.0.0.1:2"}};
        for (const auto& [type, row, child, replaces, typed, url] : rows) {
            const bool adds = child == 0;
            cleanup();
            init();
            makeView(type);
            for (const bool accept : {false, true}) {
                bool told = false;
                const ModalUser user([&, &all = replaces, &text = typed](QDialog* dialog) {
                    auto* line = dialog->findChild<QLineEdit*>();
                    QCOMPARE(static_cast<QInputDialog*>(dialog)->labelText(),
                             adds ? "Enter the Url of a computer with discovery service running:"
                                  : "Enter the new Discovery Url:");
                    if (all)
                        line->selectAll();
                    QTest::keyClicks(line, text);
                    for (const QLabel* label : dialog->findChildren<QLabel*>())
                        told = told || (label->isVisible() && label->text().contains("opc.tcp:"));
                    QTest::keyClick(dialog, accept ? Qt::Key_Return : Qt::Key_Escape);
                });
                adds ? doubleClick(at(row, child)) : void(menuAt(at(row, child), edit));
                QCOMPARE(user.seen, QStringList(adds ? "QInputDialog|Enter Url"
                                                     : "QInputDialog|Edit Discovery Url"));
                QCOMPARE(told, url.isNull()); // not dropped in silence
                QCOMPARE(model().rowCount(at(2)), adds && accept && !url.isNull() ? 3 : 2);
                const auto* node = qobject_cast<QvelDiscoveryNodeDiscovery*>(
                    static_cast<QvelDiscoveryNode*>(at(row, adds ? 2 : child).internalPointer()));
                QCOMPARE(accept && node ? node->discoveryUrl() : url, url);
                QVERIFY(adds || node->isBrowsed() == accept);
            }
        }
        QCOMPARE(at(0).data(), "Local"); // its name stays
        m_view->setCurrentIndex(at(3, 0));
        // No dialog for another kind.
        QVERIFY(QMetaObject::invokeMethod(m_view.get(), "sltEditUrl"));
        menuAt(at(2, 1), "Rebrowse");
        QVERIFY(static_cast<QvelDiscoveryNode*>(at(2, 1).internalPointer())->isBrowsing());
        menuAt(at(2, 1), "Remove");
        QCOMPARE(model().rowCount(at(2)), 1);
    }
    void tellsAndRemembersEndpoints()
    {
        for (const View::OpcType type : {View::OpcUa, View::ComDa, View::ComAe}) {
            makeView(type);
            QCOMPARE(m_view->selectionModel()->isSelected(at(3, 0)), type != View::OpcUa);
            const bool ua = type == View::OpcUa;
            QSignalSpy selected(m_view.get(),
                                ua ? &View::endpointSelected : &View::comServerSelected);
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
    void filesConfigurations()
    {
        const StuckDialog stuck; // fails what would hang
        makeView();
        QCOMPARE(file(1, "a", at(0)), "yes 0 1, 1");
        QCOMPARE(file(1, "a", at(0)), "yes 0 1, 0"); // the same once more
        QCOMPARE(file(2, "b", at(2)), "yes 0 1 2, 2");
        QCOMPARE(file(2, "a", at(3, 2)), "yes 0 1 2, 2"); // the current one is overwritten unasked
        QCOMPARE(m_view->noOfRecentNodes(), 3);
        ModalUser user;
        user.button = QMessageBox::Cancel;
        QCOMPARE(file(3, "a", at(1)), "no 0 1 2, 1"); // asked twice, of two of that name
        user.button = QMessageBox::Ok;
        QCOMPARE(file(3, "a", at(1)), "yes 0 3 3, 2");
        QCOMPARE(user.seen.size(), 4);
        QCOMPARE(
            user.seen.last(),
            "?|Configuration already existing|The 'Recently Used' list already contains a server "
            "configuration with this name that differs from the current one. Do you want to "
            "overwrite it?|OK,Cancel");
    }
    // The host may close its window while the view asks the user.
    void mayGoWhileItAsks()
    {
        const std::function<void()> ways[] = {
            [this] { doubleClick(at(2, 0)); },
            [this] { menuAt(at(2, 1), "Edit Discovery URL"); },
            [this] { file(3, "recent", at(0)); },
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

private:
    void makeView(int type = View::OpcUa)
    {
        m_view.reset();
        m_view = std::make_unique<View>(View::OpcType(type), m_settings.get(), 60000, "session");
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
    // The entries of the menu that a right click brings up, one of them to be clicked.
    QString menuAt(const QModelIndex& index, const QString& trigger = QString())
    {
        const QPoint pos = m_view->visualRect(index).center();
        QTest::mouseClick(m_view->viewport(), Qt::RightButton, {}, pos);
        QContextMenuEvent event(QContextMenuEvent::Mouse, pos,
                                m_view->viewport()->mapToGlobal(pos));
        QApplication::sendEvent(m_view->viewport(), &event);
        const QPointer<QWidget> menu = QApplication::activePopupWidget();
        if (!menu)
            return QString();
        QStringList entries;
        const QList<QAction*> actions = menu->actions();
        for (QAction* action : actions)
            entries.append(action->text());
        const auto clicked = entries.indexOf(trigger);
        if (clicked >= 0)
            QTest::mouseClick(
                menu, Qt::LeftButton, {},
                static_cast<QMenu*>(menu.data())->actionGeometry(actions[clicked]).center());
        if (menu)
            menu->close();
        return entries.join('|');
    }
    // Whether it was accepted, what the entries then hold and which is the current one.
    QString file(int urls, const char* name, const QModelIndex& current)
    {
        m_view->setCurrentIndex(current);
        QvelDiscoverySetting setting = fullSetting(urls);
        setting.setDisplayName(name);
        QString text = m_view->updateEndpointConfiguration(setting) ? "yes" : "no";
        if (!m_view)
            return QString();
        for (QvelDiscoveryNode* node : model().getRecentNode()->children()) {
            setting = static_cast<QvelDiscoveryNodeEndpoint*>(node)->configuration();
            text += QString(" %1").arg(setting.endpointDescription()->Server.NoOfDiscoveryUrls);
        }
        return text + QString(", %1").arg(m_view->currentIndex().row());
    }
    void doubleClick(const QModelIndex& index)
    {
        const QPoint pos = m_view->visualRect(index).center();
        QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, pos);
        QTest::mouseDClick(m_view->viewport(), Qt::LeftButton, {}, pos);
    }

    std::unique_ptr<MemorySettings> m_settings;
    std::unique_ptr<View> m_view;
};

QTEST_MAIN(DiscoveryWidgetTest)
#include "tst_discoverywidget.moc"

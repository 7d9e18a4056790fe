#include "endpoints.h"
#include "support/memorysettings.h"
#include "support/warnings.h"

#include <Kestrel/QvelDiscoveryModel>

#include <QtCore/QPointer>
#include <QtCore/QTimer>
#include <QtGui/QTextDocument>
#include <QtNetwork/QTcpServer>
#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QtTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>

using OpcType = QvelDiscoveryWidget::OpcType;

static QList<QvelDiscoveryNode*> servers(QvelDiscoveryModel& model, const QStringList& names)
{
    QList<QvelDiscoveryNode*> nodes;
    for (const QString& name : names)
        nodes.append(new QvelDiscoveryNodeServer(name, "opc.tcp://" + name, &model));
    return nodes;
}

static QStringList texts(const QAbstractItemModel& model, const QModelIndex& parent = {})
{
    QStringList list;
    for (int row = 0; row < model.rowCount(parent); ++row)
        list.append(model.index(row, 0, parent).data().toString());
    return list;
}

class DiscoveryModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void buildsFixedTree_data() { opcTypes(); }
    void buildsFixedTree();
    void passesModelTester_data() { opcTypes(); }
    void passesModelTester();
    void standsOddIndexes();
    void keepsAdditions_data() { opcTypes(); }
    void keepsAdditions();
    void readsHostileStore_data();
    void readsHostileStore();
    void showsTexts_data();
    void showsTexts();
    void choosesIcons();
    void mergesBothDeliveries();
    void deletesUnwantedDelivery();
    void balancesCursor();
    void filesNewConfiguration();
    void asksBeforeOverwriting();

private:
    void opcTypes();
    QModelIndex custom(const QvelDiscoveryModel& model) const { return model.index(2, 0); }
    QModelIndex waitingNode(QvelDiscoveryModel& model);

    std::unique_ptr<MemorySettings> m_settings;
    std::unique_ptr<QTcpServer> m_silent; // accepts connections, but never says anything
};

void DiscoveryModelTest::init()
{
    failOnWarnings();
    m_settings = std::make_unique<MemorySettings>();
    m_settings->values.insert("LocalDiscoveryUrl", "opc.tcp://127.0.0.1:1");
    m_silent = std::make_unique<QTcpServer>();
    QVERIFY(m_silent->listen(QHostAddress::LocalHost));
}

void DiscoveryModelTest::cleanup()
{
    QVERIFY(!QApplication::overrideCursor());
    QVERIFY(!m_settings->isOpen());
}

void DiscoveryModelTest::opcTypes()
{
    QTest::addColumn<OpcType>("type");
    QTest::newRow("UA") << QvelDiscoveryWidget::OpcUa;
    QTest::newRow("DA") << QvelDiscoveryWidget::ComDa;
    QTest::newRow("AE") << QvelDiscoveryWidget::ComAe;
}

// A discovery node of the user's that has been asked for its children and gets no answer.
QModelIndex DiscoveryModelTest::waitingNode(QvelDiscoveryModel& model)
{
    model.addRemoteServer(QString("opc.tcp://127.0.0.1:%1").arg(m_silent->serverPort()));
    const QModelIndex index = model.index(model.rowCount(custom(model)) - 1, 0, custom(model));
    model.fetchMore(index);
    return index;
}

void DiscoveryModelTest::buildsFixedTree()
{
    QFETCH(OpcType, type);
    MemorySettings empty;
    QvelDiscoveryModel model(type, &empty, 1000, "session");
    const bool ua = type == QvelDiscoveryWidget::OpcUa;
    QCOMPARE(texts(model), QStringList({"Local", "Local Network",
                                        ua ? "Custom Discovery" : "Custom Enum", "Recently Used"}));
    QCOMPARE(texts(model, custom(model)), QStringList("< Double click to Add Server... >"));
    QCOMPARE(model.getLocalNode()->discoveryUrl(), ua ? "opc.tcp://localhost:4840" : "");
    for (int row = 0; row < 4; ++row) {
        const QModelIndex index = model.index(row, 0);
        QCOMPARE(model.canFetchMore(index), row < 2);
        QCOMPARE(model.hasChildren(index), row < 3);
        QCOMPARE(model.flags(index), Qt::ItemIsSelectable | Qt::ItemIsEnabled);
        QVERIFY(!model.data(index, Qt::ForegroundRole).isValid());
    }
    QCOMPARE(model.index(0, 0, custom(model)).data(Qt::ForegroundRole).value<QColor>(),
             QApplication::palette().color(QPalette::Current, QPalette::Link));
    QCOMPARE(model.headerData(0, Qt::Horizontal), QVariant("Item"));
    QCOMPARE(model.headerData(1, Qt::Horizontal), QVariant());
    QCOMPARE(model.headerData(0, Qt::Vertical), QVariant());
}

// The tester takes all of the tree's oddities: that a node not yet fetched has children but no
// rows, and that a top-level row out of range gives an index, which it asks for in a column out of
// range only. The row too many that reading the settings announces happens before it can look.
void DiscoveryModelTest::passesModelTester()
{
    QFETCH(OpcType, type);
    if (type != QvelDiscoveryWidget::OpcUa)
        m_settings->values.insert("LocalDiscoveryUrl", "127.0.0.1");
    m_settings->values.insert("NoOfRecentServers", 3);
    m_settings->values.insert("NoOfDiscoveryServers", 1);
    QvelDiscoveryModel model(type, m_settings.get(), 1000, "session");
    QAbstractItemModelTester tester(&model);
    QTRY_VERIFY(!QApplication::overrideCursor()); // it fetches what can be fetched
    tester.setUseFetchMore(false);                // from here on, the test does

    const QModelIndex waiting = waitingNode(model);
    model.sltAddChildren(waiting, servers(model, {"a", "b"}));
    model.sltAddChildren(waiting, servers(model, {"c"}));
    QCOMPARE(texts(model, waiting), QStringList({"a", "b"}));
    model.fetchMore(waiting);
    bool accepted = false;
    const QModelIndex recent =
        model.updateEndpointConfiguration(fullSetting(), QModelIndex(), accepted);
    model.remove(model.index(1, 0, recent.parent()));
    model.editUrl(waiting, "opc.tcp://127.0.0.1:1");
    model.remove(waiting);
    QCOMPARE(model.rowCount(custom(model)), 2);
    QCOMPARE(model.rowCount(recent.parent()), 3);
    m_silent->close();
    QTRY_VERIFY(!QApplication::overrideCursor());
}

void DiscoveryModelTest::standsOddIndexes()
{
    QvelDiscoveryModel model(QvelDiscoveryWidget::OpcUa, m_settings.get(), 1000, "session");
    QVERIFY(!model.index(0, 1).isValid());
    QVERIFY(!model.index(1, 0, custom(model)).isValid());
    QVERIFY(!model.index(-1, 0, custom(model)).isValid());

    const QModelIndex beyond = model.index(99, 0);
    QVERIFY(beyond.isValid());
    QVERIFY(!beyond.internalPointer());
    bool accepted = false;
    for (const QModelIndex& index : {beyond, QModelIndex()}) {
        for (int role : {Qt::DisplayRole, Qt::DecorationRole, Qt::ToolTipRole, Qt::ForegroundRole})
            QVERIFY(!model.data(index, role).isValid());
        QVERIFY(!model.parent(index).isValid());
        QVERIFY(!model.canFetchMore(index));
        QVERIFY(!model.setData(index, 1));
        QCOMPARE(model.flags(index), Qt::NoItemFlags);
        model.fetchMore(index);
        model.remove(index);
        model.editUrl(index, "opc.tcp://h");
        model.updateEndpointConfiguration(fullSetting(), index, accepted);
    }
    QCOMPARE(model.rowCount(beyond), 0);
    QCOMPARE(model.rowCount(), 4);
    // Of a kind that there is none of, only the entries of the user's are left.
    QvelDiscoveryModel other(OpcType(7), m_settings.get(), 1000, "session");
    other.addRemoteServer("opc.tcp://h");
    QCOMPARE(texts(other), QStringList("Recently Used"));
}

void DiscoveryModelTest::keepsAdditions()
{
    QFETCH(OpcType, type);
    const QStringList urls = {"opc.tcp://one", "opc.tcp://two"};
    bool accepted = false;
    {
        QvelDiscoveryModel model(type, m_settings.get(), 1000, "session");
        for (const QString& url : urls)
            model.addRemoteServer(url);
        for (int i = 0; i < 3; ++i) {
            QvelDiscoverySetting setting = fullSetting(i);
            setting.setDisplayName(QString("entry %1").arg(i));
            model.updateEndpointConfiguration(setting, QModelIndex(), accepted);
        }
        model.editUrl(model.index(0, 0), "opc.tcp://127.0.0.1:2");
        QVERIFY(m_settings->written.isEmpty());
    }
    QCOMPARE(m_settings->written.first(), "NoOfRecentServers");
    QCOMPARE(m_settings->written.mid(m_settings->written.size() - 4),
             QStringList({"NoOfDiscoveryServers", "DiscoveryServer0", "DiscoveryServer1",
                          "LocalDiscoveryUrl"}));

    const QvelDiscoveryModel model(type, m_settings.get(), 1000, "session");
    QCOMPARE(texts(model, model.index(3, 0)), QStringList({"entry 0", "entry 1", "entry 2"}));
    QCOMPARE(texts(model, custom(model)).mid(1), urls);
    QCOMPARE(model.index(0, 0).data(), QVariant("Local"));
    QCOMPARE(model.getLocalNode()->discoveryUrl(), "opc.tcp://127.0.0.1:2");
    auto* last = static_cast<QvelDiscoveryNodeEndpoint*>(model.getRecentNode()->at(2));
    QvelDiscoverySetting expected = fullSetting(2);
    expected.setDisplayName("entry 2");
    expected.setPassword(QString());
    expected.setStorePassword(false);
    QCOMPARE(last->configuration(), expected);
}

void DiscoveryModelTest::readsHostileStore_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("rows");
    QTest::newRow("negative") << QVariant(-1) << 0;
    QTest::newRow("one too many") << QVariant(1001) << 0;
    QTest::newRow("huge") << QVariant(INT_MAX) << 0;
    QTest::newRow("words") << QVariant("many") << 0;
    QTest::newRow("list") << QVariant(QVariantList{1}) << 0;
    QTest::newRow("counts without entries") << QVariant() << 1000;
}

void DiscoveryModelTest::readsHostileStore()
{
    QFETCH(QVariant, value);
    QFETCH(int, rows);
    MemorySettings store;
    store.fallback = value;
    if (!value.isValid()) {
        store.values.insert("NoOfRecentServers", 1000);
        store.values.insert("NoOfDiscoveryServers", 1000);
    }
    const QvelDiscoveryModel model(QvelDiscoveryWidget::OpcUa, &store, 1000, "session");
    QCOMPARE(model.rowCount(model.index(3, 0)), rows);
    QCOMPARE(model.rowCount(custom(model)), rows + 1);
}

void DiscoveryModelTest::showsTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    const auto row = [](const char* name, const QString& text, const QString& shown) {
        QTest::newRow(name) << text << shown;
    };
    for (const char* text :
         {"Pumpe 7 < 8 & é", "<b>bold</b>", "a <img src='file:///x'>", "<i>&amp;"})
        row(text, text, text);
    row("line breaks", "a\nb\tc", "a\ufffdb\ufffdc");
    row("direction", "a\u202eb", "a\ufffdb");
    row("invalid UTF-8", QString::fromUtf8("a\xff"), "a\ufffd");
    row("long markup", "<b>" + QString(1 << 20, 'x'), "<b>" + QString(996, 'x') + "\u2026");
    row("cut pair", QString(998, 'x') + "😀😀", QString(998, 'x') + "\u2026");
}

void DiscoveryModelTest::showsTexts()
{
    QFETCH(QString, text);
    QFETCH(QString, shown);
    QvelDiscoveryModel model(QvelDiscoveryWidget::OpcUa, m_settings.get(), 1000, "session");
    const QModelIndex parent = waitingNode(model);
    auto* endpoint = new QvelDiscoveryNodeEndpoint(QString(), &model);
    QvelDiscoverySetting setting;
    setting.setEndpointUrl(text);
    endpoint->setConfiguration(setting);
    model.sltAddChildren(
        parent, {new QvelDiscoveryNodeServer(text, text, &model), endpoint,
                 new QvelDiscoveryNodeNetwork(text, &model, UaNetworkBrowseResult::Domain)});
    QCOMPARE(texts(model, parent), QStringList({shown, " - Invalid", shown}));
    for (int row = 0; row < 3; ++row) {
        QString toolTip = model.index(row, 0, parent).data(Qt::ToolTipRole).toString();
        if (Qt::mightBeRichText(toolTip)) { // as QToolTip decides; it then shows this:
            QTextDocument document;
            document.setHtml(toolTip);
            toolTip = document.toPlainText();
        }
        QCOMPARE(toolTip, shown);
    }
    QCOMPARE(endpoint->configuration().endpointUrl(), text);
}

static QImage imageOf(const QIcon& icon)
{
    return icon.pixmap(16).toImage();
}

void DiscoveryModelTest::choosesIcons()
{
    QvelDiscoveryModel model(QvelDiscoveryWidget::OpcUa, m_settings.get(), 1000, "session");
    const auto image = [](const char* name) {
        return imageOf(QIcon(QString(":/kestrel/images/%1.png").arg(name)));
    };
    QvelDiscoveryNodeEndpoint endpoint("e", &model);
    QCOMPARE(imageOf(endpoint.icon()), image("encrypted"));
    QvelDiscoverySetting setting;
    setting.setSecurityPolicy("http://opcfoundation.org/UA/SecurityPolicy#None");
    endpoint.setConfiguration(setting);
    QCOMPARE(imageOf(endpoint.icon()), image("unencrypted"));
    QVERIFY(image("unencrypted") != image("encrypted"));
    const QList<QPair<int, const char*>> networks = {
        {0, "network"}, {1, "domain"}, {2, "server"}, {3, "network"}};
    for (const auto& [type, name] : networks) {
        QvelDiscoveryNodeNetwork node("n", &model, UaNetworkBrowseResult::NetworkNodeType(type));
        QCOMPARE(imageOf(node.icon()), image(name));
    }
    QCOMPARE(imageOf(qvariant_cast<QIcon>(model.index(0, 0).data(Qt::DecorationRole))),
             image("view"));
    // The host has none of these here: no picture, and no warning.
    for (int row = 1; row < 4; ++row) {
        const QVariant icon = model.index(row, 0).data(Qt::DecorationRole);
        QVERIFY(qvariant_cast<QIcon>(icon).pixmap(16).isNull());
    }
}

// What waits is found again though the rows before it went.
void DiscoveryModelTest::mergesBothDeliveries()
{
    QvelDiscoveryModel model(QvelDiscoveryWidget::OpcUa, m_settings.get(), 60000, "session");
    model.addRemoteServer("opc.tcp://first");
    const QModelIndex before = waitingNode(model);
    model.fetchMore(before);
    auto* node = static_cast<QvelDiscoveryNode*>(before.internalPointer());
    QVERIFY(node->isBrowsing() && !model.canFetchMore(before) && !model.hasChildren(before));
    QCOMPARE(QApplication::overrideCursor()->shape(), Qt::BusyCursor);
    model.remove(model.index(1, 0, custom(model)));
    const QModelIndex index = model.index(1, 0, custom(model));
    QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    model.sltAddChildren(before, servers(model, {"a"}));
    QCOMPARE(inserted[0][0].toModelIndex(), index);
    QCOMPARE(changed[0][0].toModelIndex(), index);
    QVERIFY(!node->isBrowsing() && QApplication::overrideCursor());
    model.sltAddChildren(index, servers(model, {"b", "c"}));
    QVERIFY(!QApplication::overrideCursor());
    model.sltAddChildren(index, servers(model, {"unwanted"}));
    QCOMPARE(texts(model, index), QStringList({"a", "b", "c"}));
}

void DiscoveryModelTest::deletesUnwantedDelivery()
{
    QvelDiscoveryModel model(QvelDiscoveryWidget::OpcUa, m_settings.get(), 60000, "session");
    for (const QModelIndex& index : {QModelIndex(), model.index(0, 0), model.index(99, 0)}) {
        const QPointer<QvelDiscoveryNode> node = servers(model, {"a"}).constFirst();
        QApplication::setOverrideCursor(Qt::BusyCursor);
        model.sltAddChildren(index, {node});
        QVERIFY(!node && !QApplication::overrideCursor());
    }
}

// Whether its node goes, or a delivery from elsewhere forestalls the job, or the model goes.
void DiscoveryModelTest::balancesCursor()
{
    QApplication::setOverrideCursor(Qt::CrossCursor);
    {
        QvelDiscoveryModel model(QvelDiscoveryWidget::OpcUa, m_settings.get(), 60000, "session");
        const QModelIndex forestalled = waitingNode(model);
        model.sltAddChildren(forestalled, servers(model, {"a"}));
        QCOMPARE(QApplication::overrideCursor()->shape(), Qt::CrossCursor);
        QTRY_VERIFY(m_silent->hasPendingConnections());
        m_silent->close();
        QTRY_COMPARE(m_settings->log().size(), 2);
        QTest::qWait(10);
        QCOMPARE(texts(model, forestalled), QStringList("a"));
        QCOMPARE(QApplication::overrideCursor()->shape(), Qt::CrossCursor);
        QVERIFY(m_silent->listen(QHostAddress::LocalHost));
        waitingNode(model);
        model.remove(waitingNode(model));
        QCOMPARE(QApplication::overrideCursor()->shape(), Qt::BusyCursor);
    }
    QCOMPARE(QApplication::overrideCursor()->shape(), Qt::CrossCursor);
    QApplication::restoreOverrideCursor();
}

void DiscoveryModelTest::filesNewConfiguration()
{
    QvelDiscoveryModel model(QvelDiscoveryWidget::OpcUa, m_settings.get(), 1000, "session");
    bool accepted = false;
    const QModelIndex entry =
        model.updateEndpointConfiguration(fullSetting(), model.index(0, 0), accepted);
    QVERIFY(accepted);
    QCOMPARE(entry.parent(), model.index(3, 0));
    // Here the whole name, below a server the short one.
    QCOMPARE(entry.data().toString(), "Pumpe Süd - Basic256 - Sign & Encrypt");
    // Once more the same: nothing to ask, nothing to change.
    QVERIFY(!model.updateEndpointConfiguration(fullSetting(), QModelIndex(), accepted).isValid());
    QVERIFY(accepted);
    QCOMPARE(model.rowCount(entry.parent()), 1);
}

void DiscoveryModelTest::asksBeforeOverwriting()
{
    QvelDiscoveryModel model(QvelDiscoveryWidget::OpcUa, m_settings.get(), 1000, "session");
    bool accepted = false;
    // Two entries of one name, as renaming makes them; a current one is overwritten unasked.
    model.updateEndpointConfiguration(fullSetting(0), QModelIndex(), accepted);
    QvelDiscoverySetting second = fullSetting(1);
    second.setDisplayName("second");
    const QModelIndex index = model.updateEndpointConfiguration(second, QModelIndex(), accepted);
    QCOMPARE(model.updateEndpointConfiguration(fullSetting(1), index, accepted), index);

    QStringList titles;
    QTimer answerer;
    connect(&answerer, &QTimer::timeout, [&titles] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            titles.append(box->windowTitle());
            QTest::mouseClick(box->button(QMessageBox::Ok), Qt::LeftButton);
        }
    });
    answerer.start(1);
    QCOMPARE(model.updateEndpointConfiguration(fullSetting(2), QModelIndex(), accepted), index);
    QVERIFY(accepted);
    QCOMPARE(titles,
             QStringList({"Configuration already existing", "Configuration already existing"}));
    for (int row = 0; row < 2; ++row) {
        auto* node = static_cast<QvelDiscoveryNodeEndpoint*>(model.getRecentNode()->at(row));
        QCOMPARE(node->configuration(), fullSetting(2));
    }
}

QTEST_MAIN(DiscoveryModelTest)
#include "tst_discoverymodel.moc"

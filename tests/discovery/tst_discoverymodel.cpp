#include "endpoints.h"
#include "support/memorysettings.h"
#include "support/modaluser.h"
#include "support/warnings.h"

#include <Kestrel/QvelDiscoveryModel>

#include <QtCore/QRandomGenerator>
#include <QtGui/QTextDocument>
#include <QtNetwork/QTcpServer>
#include <QtTest/QAbstractItemModelTester>

using OpcType = QvelDiscoveryWidget::OpcType;

static QStringList texts(const QAbstractItemModel& model, const QModelIndex& parent = {})
{
    QStringList list;
    for (int row = 0; row < model.rowCount(parent); ++row)
        list.append(model.index(row, 0, parent).data().toString());
    return list;
}

static QvelDiscoverySetting named(const QString& name)
{
    QvelDiscoverySetting setting = fullSetting();
    setting.setDisplayName(name);
    return setting;
}

// A store in which some keys cannot be read for the moment.
class MoodyStore : public MemorySettings
{
public:
    QVariant readSetting(void* handle, const QString& key) override
    {
        const QVariant value = MemorySettings::readSetting(handle, key);
        return key.contains(hidden) ? QVariant() : value;
    }
    QRegularExpression hidden{"^$"};
};

class DiscoveryModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { QVERIFY(!QApplication::overrideCursor() && !m_settings->isOpen()); }
    void keepsAdditions_data()
    {
        QTest::addColumn<OpcType>("type");
        for (int type = 0; type < 3; ++type)
            QTest::addRow("%d", type) << OpcType(type);
    }
    void keepsAdditions();
    void losesNothingOfStore_data();
    void losesNothingOfStore();
    void leavesEndlessStoreAlone();
    void mergesAtRandom();
    void standsOddIndexes();
    void showsTexts();
    void choosesIcons();
    void forestallsJob();
    void filesConfigurations();

private:
    std::unique_ptr<QvelDiscoveryModel> makeModel(OpcType type = QvelDiscoveryWidget::OpcUa) const
    {
        return std::make_unique<QvelDiscoveryModel>(type, m_settings.get(), 60000, "session");
    }
    QString silentUrl() const
    {
        return QString("opc.tcp://127.0.0.1:%1").arg(m_silent->serverPort());
    }
    QModelIndex waitingNode(QvelDiscoveryModel& model) const;

    std::unique_ptr<MoodyStore> m_settings;
    std::unique_ptr<QTcpServer> m_silent; // accepts connections, but never says anything
};

void DiscoveryModelTest::init()
{
    failOnWarnings();
    m_settings = std::make_unique<MoodyStore>();
    m_silent = std::make_unique<QTcpServer>();
    QVERIFY(m_silent->listen(QHostAddress::LocalHost));
}

// A discovery node of the user's that has been asked for its children and gets no answer.
QModelIndex DiscoveryModelTest::waitingNode(QvelDiscoveryModel& model) const
{
    model.addRemoteServer(silentUrl());
    const QModelIndex custom = model.index(2, 0);
    const QModelIndex index = model.index(model.rowCount(custom) - 1, 0, custom);
    model.fetchMore(index);
    return index;
}

void DiscoveryModelTest::keepsAdditions()
{
    QFETCH(OpcType, type);
    const bool ua = type == QvelDiscoveryWidget::OpcUa;
    auto model = makeModel(type);
    QCOMPARE(texts(*model),
             QStringList({"Local", "Local Network", ua ? "Custom Discovery" : "Custom Enum",
                          "Recently Used"}));
    QCOMPARE(texts(*model, model->index(2, 0)), QStringList("< Double click to Add Server... >"));
    QCOMPARE(model->getLocalNode()->discoveryUrl(), ua ? "opc.tcp://localhost:4840" : "");
    for (int row = 0; row < 4; ++row) {
        const QModelIndex index = model->index(row, 0);
        QCOMPARE(model->canFetchMore(index), row < 2);
        QCOMPARE(model->hasChildren(index), row < 3);
        QCOMPARE(model->flags(index), Qt::ItemIsSelectable | Qt::ItemIsEnabled);
        QVERIFY(!model->data(index, Qt::ForegroundRole).isValid());
    }
    QCOMPARE(model->index(0, 0, model->index(2, 0)).data(Qt::ForegroundRole).value<QColor>(),
             QApplication::palette().color(QPalette::Current, QPalette::Link));
    QCOMPARE(model->headerData(0, Qt::Horizontal), QVariant("Item"));

    bool accepted = false;
    for (const char* url : {"opc.tcp://one", "https://two", "OPC.TCP://three"})
        model->addRemoteServer(url);
    for (int i = 0; i < 3; ++i)
        model->updateEndpointConfiguration(named(QString("entry %1").arg(i)), {}, accepted);
    model->editUrl(model->index(0, 0), "opc.tcp://127.0.0.1:2");
    QVERIFY(m_settings->written.isEmpty());
    model.reset();
    QCOMPARE(m_settings->written.filter(QRegularExpression("^[^.]+$")).join(' '),
             QString("NoOfRecentServers NoOfDiscoveryServers DiscoveryServer0 %1LocalDiscoveryUrl")
                 .arg(ua ? "" : "DiscoveryServer1 DiscoveryServer2 "));
    model = makeModel(type);
    QCOMPARE(texts(*model, model->index(3, 0)), QStringList({"entry 0", "entry 1", "entry 2"}));
    QCOMPARE(model->rowCount(model->index(2, 0)), ua ? 2 : 4);
    QCOMPARE(texts(*model, model->index(2, 0))[1], "opc.tcp://one");
    QCOMPARE(texts(*model)[0], "Local");
    QCOMPARE(model->getLocalNode()->discoveryUrl(), "opc.tcp://127.0.0.1:2");
    QvelDiscoverySetting expected = named("entry 2");
    expected.setPassword(QString());
    expected.setStorePassword(false);
    QCOMPARE(
        static_cast<QvelDiscoveryNodeEndpoint*>(model->getRecentNode()->at(2))->configuration(),
        expected);
}

void DiscoveryModelTest::losesNothingOfStore_data()
{
    QTest::addColumn<QVariant>("count");
    QTest::addColumn<int>("there");
    QTest::addColumn<QString>("hidden");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("after"); // one entry more
    const auto row = [](const char* name, const QVariant& count, int there, const char* hidden,
                        int rows, int after) {
        QTest::newRow(name) << count << there << QString(hidden) << rows << after;
    };
    row("1001", 1001, 1001, "^$", 1001, 1002);
    row("4000", 4000, 4000, "^$", 4000, 4001);
    row("huge, of three", INT_MAX, 3, "^$", 3, 4);
    row("huge, of none", INT_MAX, 0, "^$", 0, 1);
    row("1000 of none", 1000, 0, "^$", 1000, 1001);
    row("negative", -1, 0, "^$", 0, 1);
    row("words", "many", 2, "^$", 0, 3);
    row("unreadable", 3, 3, ".", 0, 4);
    row("unreadable count", 3, 3, "^NoOf", 0, 4);
    row("unreadable entries", 3, 3, "^(Recent|Discovery)Server[12]", 3, 6); // two of them blank
    row("unreadable entries of many", 2000, 2000, "^(Recent|Discovery)Server", 0, 2001);
}

void DiscoveryModelTest::losesNothingOfStore()
{
    QFETCH(int, there);
    QFETCH(int, rows);
    QFETCH(int, after);
    QFETCH(QVariant, count);
    QFETCH(QString, hidden);
    m_settings->values = {{"NoOfRecentServers", count}, {"NoOfDiscoveryServers", count}};
    m_settings->values.insert("LocalDiscoveryUrl", "opc.tcp://mine");
    QStringList expected;
    for (int k = 0; k < there; ++k) {
        expected.append(QString("opc.tcp://%1").arg(k));
        m_settings->values.insert(QString("DiscoveryServer%1").arg(k), expected.last());
        m_settings->values.insert(QString("RecentServer%1.DisplayName").arg(k), expected.last());
    }
    m_settings->hidden.setPattern(hidden);
    auto model = makeModel();
    QCOMPARE(model->rowCount(model->index(3, 0)), rows);
    QCOMPARE(model->rowCount(model->index(2, 0)), rows + 1);
    bool accepted = false;
    model->updateEndpointConfiguration(named("opc.tcp://new"), {}, accepted);
    model->addRemoteServer("opc.tcp://new");
    m_settings->hidden.setPattern("^$"); // what could not be read can be at the end
    model.reset();
    model = makeModel();
    const QStringList records = texts(*model, model->index(3, 0));
    const QStringList urls = texts(*model, model->index(2, 0)).mid(1);
    QCOMPARE(records.size(), after);
    QCOMPARE(urls.size(), after);
    for (const QString& each : expected)
        QVERIFY2(records.contains(each) && urls.contains(each), qPrintable(each));
    QVERIFY(records.contains("opc.tcp://new") && urls.contains("opc.tcp://new"));
    QCOMPARE(model->getLocalNode()->discoveryUrl(), "opc.tcp://mine");
    QVERIFY(m_settings->log().isEmpty());
}

void DiscoveryModelTest::leavesEndlessStoreAlone()
{
    m_settings->fallback = INT_MAX;
    makeModel().reset();
    QCOMPARE(m_settings->values.keys(), QStringList("LocalDiscoveryUrl"));
    QCOMPARE(m_settings->log().size(), 1);
}

// Against what the rows have to be, with requests that never end by themselves.
void DiscoveryModelTest::mergesAtRandom()
{
    struct Expected
    {
        QString url;
        int waiting = 0;
        bool browsing = false;
        QStringList children = {};
    };
    constexpr quint32 seed = 20240615;
    qInfo("seed %u", seed);
    QRandomGenerator random(seed);
    m_settings->values.insert("LocalDiscoveryUrl", "opc.tcp://127.0.0.1:1");
    for (int run = 0; run < 4; ++run) {
        m_settings->values.insert("NoOfDiscoveryServers", 0);
        auto model = makeModel();
        QAbstractItemModelTester tester(model.get());
        QTRY_VERIFY(!QApplication::overrideCursor()); // it has fetched what can be fetched
        tester.setUseFetchMore(false);
        const int failures = int(m_settings->log().size()); // of the local URL
        const QModelIndex custom = model->index(2, 0);
        QList<Expected> rows;
        int jobs = 0;
        for (int step = 0; step < 150; ++step) {
            const int row = int(random.bounded(qMax(qsizetype(1), rows.size())));
            const QModelIndex index = model->index(row + 1, 0, custom);
            const int operation = rows.isEmpty() ? 0 : int(random.bounded(6));
            if (operation == 0) {
                rows.append({silentUrl() + QString("/%1").arg(step)});
                model->addRemoteServer(rows.last().url);
            } else if (operation <= 2) { // ask, of an edited URL or the same
                if (operation == 1)
                    model->fetchMore(index);
                else
                    model->editUrl(index, rows[row].url += "/e");
                rows[row] = {rows[row].url, rows[row].waiting + 1, true};
                ++jobs;
            } else if (operation <= 4) { // something is delivered
                QList<QvelDiscoveryNode*> nodes;
                QStringList names;
                for (int i = random.bounded(3); i > 0; --i) {
                    names.append(QString::number(step * 10 + i));
                    nodes.append(new QvelDiscoveryNodeServer(names.last(), "u", model.get()));
                }
                const QList<QPointer<QObject>> watched(nodes.begin(), nodes.end());
                const bool wanted = rows[row].waiting > 0;
                if (wanted)
                    rows[row].children += names, --rows[row].waiting, --jobs;
                else
                    QApplication::setOverrideCursor(Qt::BusyCursor);
                rows[row].browsing = rows[row].browsing && !wanted;
                model->sltAddChildren(index, nodes);
                for (const auto& node : watched)
                    QCOMPARE(bool(node), wanted);
            } else {
                model->remove(index);
                rows.removeAt(row);
            }
            QCOMPARE(model->rowCount(custom), rows.size() + 1);
            for (int i = 0; i < rows.size(); ++i) {
                const QModelIndex child = model->index(i + 1, 0, custom);
                const auto* node = static_cast<QvelDiscoveryNode*>(child.internalPointer());
                QCOMPARE(child.data().toString(), rows[i].url);
                QCOMPARE(texts(*model, child), rows[i].children);
                QCOMPARE(node->isBrowsing(), rows[i].browsing);
                QCOMPARE(model->parent(child), custom);
            }
            QCOMPARE(QApplication::overrideCursor() != nullptr, jobs > 0);
        }
        model.reset(); // those that wait end without a word
        QVERIFY(!QApplication::overrideCursor());
        QCOMPARE(m_settings->log().size(), failures);
    }
}

void DiscoveryModelTest::standsOddIndexes()
{
    const auto model = makeModel();
    QVERIFY(!model->index(0, 1).isValid());
    QVERIFY(!model->index(-1, 0, model->index(2, 0)).isValid());
    const QModelIndex beyond = model->index(99, 0);
    QVERIFY(beyond.isValid() && !beyond.internalPointer());
    bool accepted = false;
    for (const QModelIndex& index : {beyond, QModelIndex()}) {
        for (int role : {Qt::DisplayRole, Qt::DecorationRole, Qt::ToolTipRole, Qt::ForegroundRole})
            QVERIFY(!model->data(index, role).isValid());
        QVERIFY(!model->parent(index).isValid() && !model->canFetchMore(index));
        QCOMPARE(model->flags(index), Qt::NoItemFlags);
        model->fetchMore(index);
        model->remove(index);
        model->editUrl(index, "opc.tcp://h");
        model->updateEndpointConfiguration(fullSetting(), index, accepted);
        const QPointer<QvelDiscoveryNode> node = new QvelDiscoveryNodeServer("", "", model.get());
        QApplication::setOverrideCursor(Qt::BusyCursor);
        model->sltAddChildren(index, {node});
        QVERIFY(!node && !QApplication::overrideCursor());
    }
    QCOMPARE(model->rowCount(), 4);
    // Of a kind that there is none of, only the entries of the user's are left.
    const auto other = makeModel(OpcType(7));
    other->addRemoteServer("opc.tcp://h");
    QCOMPARE(texts(*other), QStringList("Recently Used"));
}

void DiscoveryModelTest::showsTexts()
{
    const std::pair<QString, QString> rows[] = {
        {"Pumpe 7 < 8 & é", {}},
        {"a <img src='file:///x'>", {}},
        {"a\nb\u202ec", "a\ufffdb\ufffdc"},
        {"<b>" + QString(1 << 20, 'x'), "<b>" + QString(996, 'x') + "\u2026"}};
    const auto model = makeModel();
    for (const auto& [text, other] : rows) {
        const QString shown = other.isNull() ? text : other;
        const QModelIndex parent = waitingNode(*model);
        auto* endpoint = new QvelDiscoveryNodeEndpoint(QString(), model.get());
        QvelDiscoverySetting setting;
        setting.setEndpointUrl(text);
        endpoint->setConfiguration(setting);
        model->sltAddChildren(parent,
                              {new QvelDiscoveryNodeServer(text, text, model.get()), endpoint});
        QCOMPARE(texts(*model, parent), QStringList({shown, " - Invalid"}));
        for (int row = 0; row < 2; ++row) {
            QString toolTip = model->index(row, 0, parent).data(Qt::ToolTipRole).toString();
            if (Qt::mightBeRichText(toolTip)) { // as QToolTip decides; it then shows this:
                QTextDocument document;
                document.setHtml(toolTip);
                toolTip = document.toPlainText();
            }
            QCOMPARE(toolTip, shown);
        }
    }
}

void DiscoveryModelTest::choosesIcons()
{
    const auto model = makeModel();
    const auto is = [](const QIcon& icon, const char* name) {
        const QIcon expected(QString(":/kestrel/images/%1.png").arg(name));
        return icon.pixmap(16).toImage() == expected.pixmap(16).toImage();
    };
    QvelDiscoveryNodeEndpoint endpoint("e", model.get());
    QVERIFY(is(endpoint.icon(), "encrypted") && !is(endpoint.icon(), "unencrypted"));
    QvelDiscoverySetting setting;
    setting.setSecurityPolicy("http://opcfoundation.org/UA/SecurityPolicy#None");
    endpoint.setConfiguration(setting);
    QVERIFY(is(endpoint.icon(), "unencrypted"));
}

// A delivery from elsewhere takes the place, and the cursor, of a job's.
void DiscoveryModelTest::forestallsJob()
{
    const auto model = makeModel();
    const QModelIndex index = waitingNode(*model);
    const auto deliver = [&](const char* name) {
        model->sltAddChildren(index, {new QvelDiscoveryNodeServer(name, "u", model.get())});
    };
    QCOMPARE(QApplication::overrideCursor()->shape(), Qt::BusyCursor);
    deliver("a");
    QVERIFY(!QApplication::overrideCursor());
    QTRY_VERIFY(m_silent->hasPendingConnections());
    QApplication::setOverrideCursor(Qt::CrossCursor);
    m_silent->close();
    QTRY_COMPARE(m_settings->log().size(), 2);
    QTest::qWait(10);
    QCOMPARE(texts(*model, index), QStringList("a"));
    QCOMPARE(QApplication::overrideCursor()->shape(), Qt::CrossCursor);
    QApplication::restoreOverrideCursor();
}

void DiscoveryModelTest::filesConfigurations()
{
    const StuckDialog stuck; // fails what would hang
    auto model = makeModel();
    bool accepted = false;
    const auto update = [&](int urls, const char* name, const QModelIndex& current) {
        QvelDiscoverySetting setting = fullSetting(urls);
        setting.setDisplayName(name);
        return model->updateEndpointConfiguration(setting, current, accepted);
    };
    const QModelIndex first = update(0, "first", model->index(0, 0));
    QVERIFY(accepted && first.parent() == model->index(3, 0));
    QVERIFY(!update(0, "first", {}).isValid() && accepted); // the same once more
    // Two entries of one name, as renaming makes them; a current one is overwritten unasked.
    const QModelIndex second = update(1, "second", {});
    QCOMPARE(update(1, "first", second), second);
    const auto state = [&] {
        QStringList list;
        for (QvelDiscoveryNode* node : model->getRecentNode()->children())
            list += QString::number(static_cast<QvelDiscoveryNodeEndpoint*>(node)
                                        ->configuration()
                                        .endpointDescription()
                                        ->Server.NoOfDiscoveryUrls);
        return list.join(' ');
    };
    QCOMPARE(state(), "0 1");
    {
        ModalUser user;
        user.button = QMessageBox::Cancel;
        QVERIFY(!update(2, "first", {}).isValid() && !accepted);
        QCOMPARE(state(), "0 1");
        user.button = QMessageBox::Ok;
        QCOMPARE(update(2, "first", {}), second);
        QVERIFY(accepted);
        QCOMPARE(state(), "2 2");
        QCOMPARE(user.seen.size(), 4);
        QCOMPARE(user.seen.last(),
                 "?|Configuration already existing|The 'Recently Used' list already contains a "
                 "server configuration with this name that differs from the current one. Do you "
                 "want to overwrite it?|OK,Cancel");
    }
    QTimer::singleShot(20, this, [&] { model.reset(); }); // the question goes with it
    QVERIFY(!update(3, "first", {}).isValid());
    QVERIFY(!model);
}

QTEST_MAIN(DiscoveryModelTest)
#include "tst_discoverymodel.moc"

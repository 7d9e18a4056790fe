// The address space and the references of a node, on a foreign server.

#include "session/sessionscript.h"
#include "support/relay.h"
#include "support/warnings.h"

#include <Kestrel/QvelAddressSpaceModel>
#include <Kestrel/QvelAddressSpaceWidget>
#include <Kestrel/QvelLanguage>
#include <Kestrel/QvelReferencesModel>
#include <Kestrel/QvelReferencesWidget>

#include <QtTest/QAbstractItemModelTester>
#include <QtWidgets/QtWidgets>

using Model = QvelAddressSpaceModel;

namespace {

constexpr int patience = 30000;

QString rowText(const QModelIndex& index)
{
    QStringList texts;
    for (int column = 0; column < Model::ColumnCount; ++column)
        texts.append(index.siblingAtColumn(column).data().toString());
    return texts.join('|');
}

/// A tree with all that a user does to it.
struct Tree
{
    explicit Tree(QvelSession* session) : tester(widget.model())
    {
        tester.setUseFetchMore(false); // all the server's nodes
        widget.resize(700, 500);
        widget.show();
        widget.activateWindow();
        widget.setSession(session);
    }
    QvelAddressSpaceModel* model() const { return widget.model(); }
    QTreeView* view() const { return widget.view(); }
    QLineEdit* field() const { return widget.findChild<QLineEdit*>(); }
    QString said() const { return widget.findChild<QLabel*>()->text(); }
    QString current() const { return model()->browsePath(view()->currentIndex()); }
    void press(int key, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::keyClick(view(), Qt::Key(key), modifiers);
    }
    void enter(const QString& text)
    {
        field()->setText(text);
        QTest::keyClick(field(), Qt::Key_Return);
    }
    bool goTo(const QString& text)
    {
        QSignalSpy located(model(), &Model::located);
        enter(text);
        return QTest::qWaitFor([&] { return !located.isEmpty() || !said().isEmpty(); }, patience) &&
               !located.isEmpty();
    }
    int childCount() const { return model()->rowCount(view()->currentIndex()); }

    QvelAddressSpaceWidget widget;
    QAbstractItemModelTester tester;
};

} // namespace

class tst_AddressSpace : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { failOnWarnings(); }
    void links();
    void tree();
    void goTo();
    void find();
    void wayBack();
    void copies();
    void references();
    void comesBack();
    void hostile();
    void lateNames();

private:
    PeerProcess m_server;
    QString m_url;
    SessionUser m_user;
    std::unique_ptr<QvelSession> m_session;
};

void tst_AddressSpace::initTestCase()
{
    m_url = m_server.start(NODE, {PEERS "/sessionserver.mjs", "--children", "3000"});
    QVERIFY(!m_url.isEmpty());
    m_session = std::make_unique<QvelSession>(m_user.options);
    const QvelSessionError error = connectSession(*m_session, settingOf(m_url));
    QVERIFY2(m_session->state() == QvelSession::Connected, error.toString().toUtf8());
}

void tst_AddressSpace::links()
{
    for (const char* text : {"", "i=", "i=+1", "i=4294967296", "ns=65536;i=1", "ns=-1;i=1", "g=1",
                             "b=A*", "x=1", "svr=4294967296;i=1", "nsu=;i=1", "/Objects", " i=1"})
        QVERIFY2(!qvelParseNodeId(text), text);
    QCOMPARE(qvelNodeIdText(*qvelParseNodeId("ns=0;i=85")), "i=85");
    for (const QString text : {"i=85", "ns=2;s=Pump;1=a", "nsu=urn:a%3Bb%25;b=AQI=", "ns=1;s=",
                               "svr=3;nsu=urn:x;g=72962b91-fa75-4ae6-8d28-b404dc7daf63"}) {
        const auto id = qvelParseNodeId(text);
        QCOMPARE(id ? qvelNodeIdText(*id) : "-", text);
        const std::unique_ptr<QMimeData> data(qvelNodeMimeData({{*id, "a\nb"}, {*id, {}}}));
        QMimeData plain;
        plain.setText(data->text() + "\r\n  words\n");
        QCOMPARE(qvelNodeLinks(data.get()).value(0).displayName, QString("a\nb"));
        for (const QMimeData* each :
             {static_cast<const QMimeData*>(data.get()), &std::as_const(plain)})
            QVERIFY(qvelNodeLinks(each).size() == 2 && qvelNodeLinks(each)[1].nodeId == *id);
    }
}

void tst_AddressSpace::tree()
{
    Tree tree(m_session.get());
    QTRY_COMPARE_WITH_TIMEOUT(tree.model()->rowCount(tree.model()->index(0, 0)), 3, patience);
    tree.view()->setCurrentIndex(tree.model()->index(0, 0));
    tree.press(Qt::Key_Down);
    tree.press(Qt::Key_Right);
    const QModelIndex objects = tree.view()->currentIndex();
    const QList<QvelReference> expected =
        resultOf(m_session->browse({{UaNodeId(85)}})).results.value(0).references;
    QTRY_COMPARE_WITH_TIMEOUT(tree.childCount(), int(expected.size()), patience);
    for (int row = 0; row < expected.size(); ++row)
        QCOMPARE(tree.model()->index(row, 0, objects).data().toString(),
                 expected[row].displayName.text().toQString());
    QTRY_COMPARE_WITH_TIMEOUT(rowText(tree.model()->index(0, 0)),
                              QString("Root|Root|i=84|Object|FolderType"), patience);

    // All come, in the server's order.
    QVERIFY(tree.goTo("ns=1;s=Many"));
    QTRY_COMPARE_WITH_TIMEOUT(rowText(tree.view()->currentIndex()),
                              QString("Many|1:Many|ns=1;s=Many|Object|FolderType"), patience);
    tree.press(Qt::Key_Right);
    QTRY_COMPARE_WITH_TIMEOUT(tree.childCount(), 3000, patience);
    const QModelIndex last = tree.model()->index(2999, 0, tree.view()->currentIndex());
    QTRY_COMPARE_WITH_TIMEOUT(
        rowText(last), QString("Tag2999|1:Tag2999|ns=1;s=Tag2999|Variable|BaseDataVariableType"),
        patience);
    QVERIFY(tree.model()->hasChildren(last)); // for all that is known
    tree.view()->expand(last);
    QTRY_VERIFY_WITH_TIMEOUT(!tree.model()->hasChildren(last), patience);

    // Columns are chosen, and icons tell kinds apart.
    QHeaderView* header = tree.view()->header();
    QVERIFY(tree.view()->isColumnHidden(Model::NodeClass));
    Q_EMIT header->customContextMenuRequested({});
    QMenu* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    QVERIFY(menu);
    menu->actions().value(Model::NodeClass - 1)->trigger();
    menu->close();
    QVERIFY(!tree.view()->isColumnHidden(Model::NodeClass));
    QSet<qint64> icons;
    for (const char* id : {"i=85", "i=2253", "i=2256", "i=2255", "i=11492", "i=58", "i=62", "i=24",
                           "i=33", "i=87"}) {
        QVERIFY2(tree.goTo(id), qPrintable(tree.said()));
        icons.insert(
            tree.view()->currentIndex().data(Qt::DecorationRole).value<QIcon>().cacheKey());
    }
    QCOMPARE(icons.size(), 9); // i=87 is a folder, as i=85 is
}

void tst_AddressSpace::goTo()
{
    // And the path of the node that is then the current one, or what is said.
    const std::pair<const char*, QString> places[] = {
        {"i=2256", "/Objects/Server/ServerStatus"},
        {" i=84 ", "/"},
        {"nsu=urn:first;s=Further", "/Objects/1:Moving/2:urn&:first"},
        {"/Objects/Server.ServerStatus/CurrentTime", "/Objects/Server/ServerStatus/CurrentTime"},
        {"/Objects/1:Moving/2:urn&:first", "/Objects/1:Moving/2:urn&:first"},
        {"/", "/"},
        {"i=4711", "BadNodeIdUnknown"},
        {"nsu=urn:none;s=x", "BadNodeIdUnknown"},
        {"/Objects/None", "BadNoMatch"},
        {"/Objects//x", "no browse path"},
        {"/<HasComponent>x", "no browse path"}};
    for (const auto& [text, path] : places) {
        const Case each(text);
        Tree tree(m_session.get());
        QSignalSpy changed(&tree.widget, &QvelAddressSpaceWidget::currentNodeChanged);
        tree.view()->setCurrentIndex({});
        QVERIFY2(tree.goTo(text) == path.startsWith('/'), qPrintable(tree.said()));
        if (path.startsWith('/')) {
            QCOMPARE(tree.current(), path);
            QCOMPARE(changed.last()[0].value<UaExpandedNodeId>(), tree.widget.currentNode());
            QVERIFY(tree.view()->visualRect(tree.view()->currentIndex()).isValid());
        } else {
            QVERIFY2(tree.said().contains(path), qPrintable(tree.said()));
        }
    }
}

void tst_AddressSpace::find()
{
    Tree tree(m_session.get());
    QTRY_VERIFY_WITH_TIMEOUT(tree.model()->rowCount() == 1, patience);
    tree.enter("serverSTATUS");
    QTRY_COMPARE_WITH_TIMEOUT(tree.current(), QString("/Objects/Server/ServerStatus"), patience);
    QTRY_VERIFY_WITH_TIMEOUT(tree.said().contains(" of "), patience); // through all nodes
    tree.press(Qt::Key_F3);
    QTRY_VERIFY_WITH_TIMEOUT(tree.current().contains("/Types/"), patience);
    const QString second = tree.current();
    tree.press(Qt::Key_F3, Qt::ShiftModifier);
    QTRY_COMPARE_WITH_TIMEOUT(tree.current(), QString("/Objects/Server/ServerStatus"), patience);
    QTest::keyClick(tree.field(), Qt::Key_Return);
    QTRY_COMPARE_WITH_TIMEOUT(tree.current(), second, patience);

    tree.enter("nowhere");
    QTRY_VERIFY_WITH_TIMEOUT(tree.said().contains("Looking for"), patience);
    QTest::keyClick(tree.field(), Qt::Key_Escape);
    QTRY_VERIFY_WITH_TIMEOUT(tree.said().contains("Cancelled"), patience);
    tree.model()->setRootNode(UaExpandedNodeId(UaNodeId(2253), {}, 0));
    QTRY_VERIFY_WITH_TIMEOUT(tree.model()->index(0, 0).data() == "Server", patience);
    tree.enter("nowhere");
    QTRY_VERIFY_WITH_TIMEOUT(tree.said().contains("was not found"), patience);
}

void tst_AddressSpace::wayBack()
{
    Tree tree(m_session.get());
    QVERIFY(tree.goTo("i=2256"));
    QVERIFY(tree.goTo("i=58"));
    const QString types = tree.current();
    tree.press(Qt::Key_Up); // takes the place of the last one
    const QString above = tree.current();
    QVERIFY(above != types);
    tree.press(Qt::Key_Left, Qt::AltModifier);
    QTRY_COMPARE_WITH_TIMEOUT(tree.current(), QString("/Objects/Server/ServerStatus"), patience);
    tree.press(Qt::Key_Right, Qt::AltModifier);
    QTRY_COMPARE_WITH_TIMEOUT(tree.current(), above, patience);
    tree.widget.goBack();
    QTRY_COMPARE_WITH_TIMEOUT(tree.current(), QString("/Objects/Server/ServerStatus"), patience);
    QVERIFY(tree.goTo("i=85"));
    tree.widget.goForward(); // there is nothing more
    QCOMPARE(tree.current(), QString("/Objects"));
}

void tst_AddressSpace::copies()
{
    Tree tree(m_session.get());
    QVERIFY(tree.goTo("nsu=urn:second;s=Further"));
    tree.view()->setFocus();
    tree.press(Qt::Key_C, Qt::ControlModifier);
    const QMimeData* data = QApplication::clipboard()->mimeData();
    QCOMPARE(data->text(), QString("ns=3;s=Further"));
    QCOMPARE(qvelNodeLinks(data).value(0).nodeId, tree.widget.currentNode());
    const std::unique_ptr<QMimeData> dragged(
        tree.model()->mimeData(tree.view()->selectionModel()->selectedIndexes()));
    QCOMPARE(qvelNodeLinks(dragged.get()).size(), 1);
    QCOMPARE(dragged->text(), QString("nsu=urn:second;s=Further"));
    QAction own("Own");
    tree.widget.addAction(&own);
    QStringList texts;
    for (int i = 0; i < 4; ++i) {
        Q_EMIT tree.view()->customContextMenuRequested({});
        QMenu* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        QVERIFY(menu && menu->actions().last() == &own);
        menu->actions().value(i)->trigger();
        menu->close();
        texts.append(QApplication::clipboard()->text());
    }
    QCOMPARE(texts, QStringList({"ns=3;s=Further", "nsu=urn:second;s=Further",
                                 "/Objects/1:Moving/3:urn&:second", "urn:second"}));
}

void tst_AddressSpace::references()
{
    QvelReferencesWidget widget;
    QAbstractItemModelTester tester(widget.model());
    widget.resize(700, 300);
    widget.show();
    widget.setSession(m_session.get());
    widget.setNode(UaExpandedNodeId(UaNodeId(2256), {}, 0));
    QvelBrowseItem item;
    item.nodeId = UaNodeId(2256);
    item.direction = QvelBrowseDirection::Both;
    item.referenceTypeId = UaNodeId();
    const auto expected = resultOf(m_session->browse({item})).results.value(0).references;
    QTRY_COMPARE_WITH_TIMEOUT(widget.model()->rowCount(), int(expected.size()), patience);
    QStringList rows;
    const auto read = [&] {
        rows.clear();
        for (int row = 0; row < widget.model()->rowCount(); ++row)
            rows.append(rowText(widget.model()->index(row, 0)));
        return rows.contains("ComponentOf|Server|i=2253|Object|ServerType");
    };
    QTRY_VERIFY2_WITH_TIMEOUT(read(), qPrintable(rows.join('\n')), patience);
    QVERIFY(rows.contains("HasTypeDefinition|ServerStatusType|i=2138|VariableType|"));
    QVERIFY(rows.contains("HasComponent|CurrentTime|i=2258|Variable|BaseDataVariableType"));

    QSignalSpy activated(&widget, &QvelReferencesWidget::nodeActivated);
    const int row = int(rows.indexOf("ComponentOf|Server|i=2253|Object|ServerType"));
    const QPoint place = widget.view()->visualRect(widget.model()->index(row, 1)).center();
    QTest::mouseClick(widget.view()->viewport(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(widget.view()->viewport(), Qt::LeftButton, {}, place);
    QTRY_COMPARE_WITH_TIMEOUT(activated.size(), 1, patience);
    QCOMPARE(activated[0][0].value<UaExpandedNodeId>().nodeId(), UaNodeId(2253));
    widget.view()->setFocus();
    QTest::keyClick(widget.view(), Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QApplication::clipboard()->text(), QString("i=2253"));
    QTest::keyClick(widget.view(), Qt::Key_F5);
    QTest::qWait(200);
    QCOMPARE(widget.view()->currentIndex().row(), row);
    widget.setNode(UaExpandedNodeId(UaNodeId(4711), {}, 0));
    QTRY_VERIFY_WITH_TIMEOUT(
        widget.model()->index(0, 0).data().toString().contains("BadNodeIdUnknown"), patience);
    QVERIFY(widget.model()->index(0, 0).data(QvelReferencesModel::FailureRole).toBool());
    QVERIFY(qvelInstallLanguage(QLocale::German));
    QTRY_VERIFY(widget.model()->index(0, 0).data().toString().endsWith("oder nicht mehr."));
    QVERIFY(qvelInstallLanguage(QLocale::English));
}

// With other namespaces, to the same rows.
void tst_AddressSpace::comesBack()
{
    PeerProcess servers[2];
    const auto start = [&](int number, const char* namespaces) {
        const QString url =
            servers[number].start(NODE, {PEERS "/sessionserver.mjs", "--children", "10", "--items",
                                         "10", "--namespaces", namespaces});
        return quint16(QUrl(url).port());
    };
    Relay relay(start(0, "urn:first,urn:second"));
    QvelSession session(m_user.options);
    Tree tree(&session);
    connectSession(session, settingOf(relay.url()));
    QVERIFY2(tree.goTo("nsu=urn:first;s=Further"), qPrintable(tree.said()));
    const QPersistentModelIndex current = tree.view()->currentIndex();
    const int siblings = tree.model()->rowCount(current.parent());
    relay.refuse();
    relay.cut();
    QTRY_VERIFY_WITH_TIMEOUT(tree.model()->isStale(), patience);
    QVERIFY(tree.said().contains("Not connected"));
    QVERIFY(!tree.goTo("i=4711"));
    QVERIFY(tree.said().contains("not connected"));
    relay.setServer(start(1, "urn:third,urn:second,urn:first"));
    relay.mend();
    session.reconnectNow();
    QTRY_VERIFY_WITH_TIMEOUT(tree.model()->rowCount(current.parent()) == siblings + 1, 60000);
    QCOMPARE(rowText(current),
             QString("urn:first|4:urn:first|ns=4;s=Further|Variable|BaseDataVariableType"));
    QCOMPARE(QModelIndex(current), tree.view()->currentIndex());
    QVERIFY(tree.view()->isExpanded(current.parent()));
    QCOMPARE(current.row(), 12); // as the server has it now
}

// What nodes answer, by their number.
static std::optional<BrowseResult> answerOf(OpcUa_UInt32 number, int healed)
{
    BrowseResult result;
    const auto add = [&result](OpcUa_UInt32 id, const QByteArray& name, OpcUa_UInt32 server = 0) {
        QvelReference reference;
        reference.referenceTypeId = UaNodeId(35);
        reference.nodeId = UaExpandedNodeId(UaNodeId(id), UaString(), server);
        reference.displayName = UaLocalizedText(UaString(), UaString(name));
        reference.nodeClass = 1;
        result.references.append(reference);
    };
    switch (number) {
    case 84:
        add(1, QByteArray(1 << 20, 'x'));
        add(2, QByteArray("<b>b</b>\n\0c\u202e\xff", 15));
        add(84, "cycle");
        add(4, "gone");
        add(5, "many");
        add(6, "late");
        add(7, "remote", 1);
        break;
    case 4:
        if (healed > 0)
            add(41, "here");
        else
            result.status = OpcUa_BadNodeIdUnknown;
        break;
    case 5:
        if (healed > 1) {
            add(1001, "child");
            break;
        }
        result.continuationPoint = "more";
        static OpcUa_UInt32 last = 1000;
        for (int i = 0; i < 10000; ++i)
            add(++last, "child");
        break;
    case 6:
        return {};
    default:
        break;
    }
    return result;
}

void tst_AddressSpace::hostile()
{
    const Identity identity = makeIdentity(2048);
    std::atomic<int> healed{0};
    const Server::Fault browse = [&](Server& s, const Message& m, OpcUa_UInt32 type) {
        if (type != BrowseRequest::encodingId && type != BrowseNextRequest::encodingId)
            return false;
        OpcUa_UInt32 number = 5;
        if (type == BrowseRequest::encodingId)
            number =
                decoded<BrowseRequest>(m).nodesToBrowse.value(0).nodeId.toString().bytes().toUInt();
        const auto result = answerOf(number, healed);
        if (result && type == BrowseRequest::encodingId)
            s.reply(m, BrowseResponse{{}, {*result}, {}});
        else if (result)
            s.reply(m, BrowseNextResponse{{}, {*result}, {}});
        return true;
    };
    HostileServer server([&](ServerPeer& peer) {
        if (peer.acknowledge())
            Server(peer, identity, 0, browse).serve();
    });
    QvelSessionOptions options = m_user.options;
    options.callTimeout = 2000;
    options.limits.memory = 16 << 20;
    QvelSession session(options);
    Tree tree(&session);
    connectSession(session, settingOf(server.url()));
    const auto at = [&](int row, const QModelIndex& parent = {}) {
        return tree.model()->index(row, 0, parent.isValid() ? parent : tree.model()->index(0, 0));
    };
    QTRY_COMPARE_WITH_TIMEOUT(tree.model()->rowCount(at(0).parent()), 7, patience);
    QVERIFY(at(0).data().toString().size() <= 1000);
    QCOMPARE(tree.model()->nodeLink(at(0)).displayName.size(), 1 << 20);
    QCOMPARE(at(1).data().toString().toUtf8(), QByteArray("<b>b</b>\uFFFD\uFFFDc\uFFFD\uFFFD"));
    QVERIFY(at(1).data(Qt::ToolTipRole).toString().contains("&lt;b"));
    const auto open = [&](int row) {
        tree.view()->expand(at(row));
        return at(row);
    };
    const auto lastText = [&](const QModelIndex& parent) {
        return at(tree.model()->rowCount(parent) - 1, parent).data().toString();
    };
    open(2);
    QTRY_COMPARE_WITH_TIMEOUT(tree.model()->rowCount(at(2)), 7, patience);
    QVERIFY(tree.model()->canFetchMore(at(2, at(2)))); // and nobody has
    const QPersistentModelIndex gone = open(3);
    QTRY_VERIFY_WITH_TIMEOUT(lastText(gone).contains("BadNodeIdUnknown"), patience);
    QVERIFY(at(3).data(Model::FailureRole).toBool() &&
            at(0, gone).data(Model::FailureRole).toBool());
    QVERIFY(tree.model()->nodeId(at(0, gone)) == UaExpandedNodeId());
    QVERIFY(qvelInstallLanguage(QLocale::German));
    QTRY_VERIFY(lastText(gone).contains("BadNodeIdUnknown: Der Server hat keinen"));
    QVERIFY(qvelInstallLanguage(QLocale::English));
    QTRY_VERIFY(lastText(gone).contains("BadNodeIdUnknown: The server has no"));
    healed = 1;
    tree.press(Qt::Key_F5);
    QTRY_COMPARE_WITH_TIMEOUT(lastText(gone), QString("here"), patience);
    QCOMPARE(tree.model()->rowCount(gone), 1);
    QVERIFY(!QModelIndex(gone).data(Model::FailureRole).toBool());
    open(4);
    QTRY_VERIFY2_WITH_TIMEOUT(lastText(at(4)).contains("BadEncodingLimitsExceeded"),
                              qPrintable(lastText(at(4))), patience);
    QVERIFY(tree.model()->rowCount(at(4)) > 10000);
    healed = 2;
    tree.press(Qt::Key_F5);
    QTRY_COMPARE_WITH_TIMEOUT(lastText(at(4)), QString("child"), patience);
    QTRY_VERIFY_WITH_TIMEOUT(lastText(open(6)).contains("another server"), patience);
    open(5);
    QTRY_COMPARE_WITH_TIMEOUT(lastText(at(5)), QString("Loading..."), patience);
    QTRY_VERIFY_WITH_TIMEOUT(lastText(at(5)).contains("BadTimeout"), patience);
}

// Names of types that the server before tells late are not taken for those that this one owes.
void tst_AddressSpace::lateNames()
{
    const Identity identity = makeIdentity(2048);
    // Node 3 has three references, each of a type of its own, and node 1 one of another type. Names
    // are told when a description is read.
    const Server::Fault fault = [](Server& s, const Message& m, OpcUa_UInt32 type) {
        if (type == BrowseRequest::encodingId) {
            const UaNodeId node = decoded<BrowseRequest>(m).nodesToBrowse.value(0).nodeId;
            const auto count = node.toString().bytes().toUInt();
            BrowseResult result;
            for (OpcUa_UInt32 i = 0; i < count; ++i) {
                result.references.emplaceBack();
                result.references.last().referenceTypeId = UaNodeId(1000 * count + i);
                result.references.last().nodeId = UaExpandedNodeId(UaNodeId(i), UaString(), 0);
            }
            s.reply(m, BrowseResponse{{}, {result}, {}});
            return true;
        }
        if (type != ReadRequest::encodingId)
            return false;
        const auto attribute = decoded<ReadRequest>(m).items.value(0).attributeId;
        if (attribute == QvelAttribute::Description) {
            for (const Message& names : std::exchange(s.kept, {}))
                s.reply(names, s.good(decoded<ReadRequest>(names)));
            return false;
        }
        if (attribute == QvelAttribute::DisplayName)
            s.kept.push_back(m);
        return attribute == QvelAttribute::DisplayName;
    };
    const auto script = [&](ServerPeer& peer) {
        if (peer.acknowledge())
            Server(peer, identity, 0, fault).serve();
    };
    HostileServer servers[] = {HostileServer(script), HostileServer(script)};
    QvelSession before(m_user.options), now(m_user.options);
    connectSession(before, settingOf(servers[0].url()));
    connectSession(now, settingOf(servers[1].url()));
    QvelReferencesModel model;
    QSignalSpy named(&model, &QAbstractItemModel::dataChanged);
    const auto show = [&](int node) {
        model.setNode(UaExpandedNodeId(UaNodeId(OpcUa_UInt32(node)), UaString(), 0));
        QTRY_COMPARE(model.rowCount(), node);
        QTest::qWait(50); // the names are asked for
    };
    const auto tellNames = [](QvelSession& session) {
        return resultOf(session.read({{UaNodeId(1), QvelAttribute::Description, {}, {}}}));
    };
    model.setSession(&before);
    show(3);
    model.setSession(&now);
    show(3);
    tellNames(before);
    show(1);
    named.clear();
    tellNames(now);
    QTRY_VERIFY(!named.isEmpty());
}

QTEST_MAIN(tst_AddressSpace)
#include "tst_addressspace.moc"

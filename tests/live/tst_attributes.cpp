// The attributes of nodes and the calls of methods, as a user sees, edits and makes them, on a
// server of another make.

#include "session/sessionuser.h"
#include "support/cells.h"
#include "support/relay.h"
#include "support/warnings.h"

#include <Kestrel/QvelAttributesModel>
#include <Kestrel/QvelAttributesWidget>
#include <Kestrel/QvelCallWidget>
#include <Kestrel/QvelLanguage>
#include <Kestrel/QvelNodeLink>

#include <QtTest/QAbstractItemModelTester>
#include <QtWidgets/QtWidgets>

namespace {

using V = UaVariant;
using Model = QvelAttributesModel;
constexpr int timeout = 20'000; // ms

struct TypeCase
{
    const char* type;
    QString keys; // to type over the first of the server's samples
    V value;      // that they give
};

const QList<TypeCase>& typeCases()
{
    V xml;
    xml.setXmlElement(UaByteString(QByteArray("<c/>")));
    const QString guid = "{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}";
    static const QList<TypeCase> cases = {
        {"Boolean", " ", V(false)},
        {"SByte", "-5", V(OpcUa_SByte(-5))},
        {"Byte", "255", V(OpcUa_Byte(255))},
        {"Int16", "-6", V(OpcUa_Int16(-6))},
        {"UInt16", "65535", V(OpcUa_UInt16(65535))},
        {"Int32", "-7", V(-7)},
        {"UInt32", "4294967295", V(4294967295u)},
        {"Int64", "-9223372036854775807", V(-9223372036854775807)},
        {"UInt64", "18446744073709551614", V(18446744073709551614u)},
        {"Float", "1.5", V(1.5f)},
        {"Double", "-1e300", V(-1e300)},
        {"String", "Pump 1", V("Pump 1")},
        {"DateTime", "2024-01-02T03:04:05Z", V(UaDateTime::fromString("2024-01-02T03:04:05Z"))},
        {"Guid", "0f1e2d3c4b5a69788796a5b4c3d2e1f0", V(UaGuid(QUuid(guid)))},
        {"ByteString", "0x0AFF00", V(UaByteString(QByteArray::fromHex("0aff00")))},
        {"XmlElement", "<c/>", xml},
        {"NodeId", "pump", V(UaNodeId("pump", 1))},
        {"ExpandedNodeId", "86", V(UaExpandedNodeId(UaNodeId(86), "urn:x", 0))},
        {"StatusCode", "80350000", V(UaStatusCode(0x80350000u))},
        {"QualifiedName", "Pump", V(UaQualifiedName("Pump", 1))},
        {"LocalizedText", "Pump", V(UaLocalizedText("de", "Pump"))}};
    return cases;
}

// Opens a cell by a double click, and gives the control that takes the keys.
QWidget* open(QAbstractItemView* view, const QModelIndex& index)
{
    view->setFocus();
    view->scrollTo(index);
    const QPoint center = view->visualRect(index).center();
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, center);
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, center);
    return typedControl(view->indexWidget(index));
}

// ...types into it and ends it; in the dialog of an array, into its first cell.
bool type(QAbstractItemView* view, const QModelIndex& index, const QString& keys)
{
    QWidget* control = open(view, index);
    const QPointer<QWidget> editor = view->indexWidget(index);
    if (!control)
        return false;
    if (auto* table = editor->findChild<QTableView*>()) {
        if (!type(table, table->model()->index(0, 0), keys))
            return false;
        QTest::mouseClick(buttonOf(editor, "Write"), Qt::LeftButton);
    } else {
        QTest::keyClicks(control, keys);
        QTest::keyClick(control, Qt::Key_Return);
    }
    return QTest::qWaitFor([&] { return !editor; }, timeout);
}

} // namespace

class tst_Attributes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_url = m_server.start(NODE, {PEERS "/sessionserver.mjs", "--conformance", "--long"});
        QVERIFY(!m_url.isEmpty());
        m_client.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_client.start(NODE, {PEERS "/sessionclient.mjs", m_url});
        while (!m_client.canReadLine())
            QVERIFY(m_client.waitForReadyRead(timeout));
        QVERIFY(m_client.readLine().startsWith("READY"));
    }
    void cleanupTestCase()
    {
        m_client.closeWriteChannel();
        QVERIFY(m_client.waitForFinished(timeout));
    }
    void init()
    {
        failOnWarnings();
        m_session = std::make_unique<QvelSession>(m_user.options);
        connectSession();
        m_widget = std::make_unique<QvelAttributesWidget>();
        m_call = std::make_unique<QvelCallWidget>();
        for (QAbstractItemModel* model : {static_cast<QAbstractItemModel*>(m_widget->model()),
                                          m_call->inputModel(), m_call->outputModel()})
            new QAbstractItemModelTester(model, model);
        m_widget->setSession(m_session.get());
        m_call->setSession(m_session.get());
        for (auto* label : m_call->findChildren<QLabel*>())
            QVERIFY(label->text() != "i=0");
        m_widget->resize(900, 700);
        m_call->resize(900, 700);
    }
    void cleanup()
    {
        m_widget.reset();
        m_call.reset();
        m_session.reset();
    }
    void written_data()
    {
        QTest::addColumn<int>("number");
        QTest::addColumn<QString>("shape");
        for (int number = 0; number < typeCases().size(); ++number)
            for (const char* shape : {"Scalar", "Array", "Matrix"})
                QTest::addRow("%s%s", shape, typeCases()[number].type) << number << QString(shape);
    }
    // Every type and shape, edited in place, arrives at the other client.
    void written()
    {
        QFETCH(int, number);
        const TypeCase& c = typeCases()[number];
        const QString id = "ns=1;s=" + QString(QTest::currentDataTag());
        V expected = readBack(id);
        QVERIFY(expected.type() == c.value.type());
        const bool isExpanded = c.value.type() == OpcUaType_ExpandedNodeId;
        // A URI does not stay in this make's.
        if (expected.arrayType() == OpcUa_VariantArrayType_Scalar)
            expected = isExpanded ? V(UaExpandedNodeId(UaNodeId(86), {}, 0)) : c.value;
        else
            QVERIFY(expected.setElement(0, c.value));
        QVERIFY(expected != readBack(id));

        show(id, !isExpanded); // nor, in arrays, in its notifications
        QVERIFY(text("DataType").startsWith(c.type));
        QVERIFY(type(m_widget->view(), cell("Value"), c.keys));
        QTRY_VERIFY_WITH_TIMEOUT(text("Value", Model::ResultColumn).startsWith("Good"), timeout);
        QCOMPARE(readBack(id).toJson(), expected.toJson());
        QTRY_COMPARE_WITH_TIMEOUT(text("Value"), expected.toFullString().toQString(), timeout);
    }
    void shown()
    {
        const struct
        {
            QString id;
            QStringList rows; // "attribute=value"
            bool isEditable;
        } nodes[] = {{"DoubleAnalogDataItem",
                      {"NodeClass=2 (Variable)", "DataType=Double (i=11)", "ValueRank=-1 (Scalar)",
                       "EURange=-200 to 200", "AccessLevel=3 (CurrentRead | CurrentWrite)",
                       QString("EngineeringUnits=\u00b0C (degree Celsius)")},
                      true},
                     {"MultiStateDiscrete001", {"Value=1 (Orange)"}, true},
                     {"Int16MultiStateValueDiscrete", {"Value=0 (Zero)"}, true},
                     {"i=2259",
                      {"Value=0 (Running)", "DataType=ServerState (i=852)", "BrowseName=State",
                       "WriteMask=0"},
                      false},
                     {"AccessLevel_CurrentWrite_NotUser",
                      {"UserAccessLevel=1 (CurrentRead)", "Value=36"},
                      false},
                     {"ns=1;s=Big", {"ArrayDimensions={0}", "DataType=Double (i=11)"}, true}};
        for (const auto& each : nodes) {
            const Case named(each.id.toUtf8());
            show(each.id.contains('=') ? each.id : "nsu=urn://node-opcua-simulator;s=" + each.id);
            for (const QString& row : each.rows)
                QTRY_COMPARE_WITH_TIMEOUT(
                    row.section('=', 0, 0) + '=' + text(row.section('=', 0, 0)), row, timeout);
            for (const char* attribute : {"SourceTimestamp", "ServerTimestamp"})
                QVERIFY(text(attribute).startsWith("20"));
            QCOMPARE(cell("Value").flags().testFlag(Qt::ItemIsEditable), each.isEditable);
            QCOMPARE(text("Value", Model::StatusColumn), "Good");
            QVERIFY(!cell("InverseName").isValid()); // of reference types only
            // An array opens also where it cannot be written, a scalar does not.
            QCOMPARE(open(m_widget->view(), cell("Value")) != nullptr, each.isEditable);
        }
    }
    void live()
    {
        show("ns=1;s=Item0");
        const QString before = text("Value");
        QTRY_VERIFY_WITH_TIMEOUT(text("Value") != before, timeout);
        QCOMPARE(m_session->findChildren<QvelSubscription*>().size(), 1);
        m_widget->hide();
        QTRY_VERIFY_WITH_TIMEOUT(m_session->findChildren<QvelSubscription*>().isEmpty(), timeout);
    }
    // What cannot be written stays to be corrected, with the reason beside it.
    void refused()
    {
        show("ns=1;s=ScalarByte");
        QVERIFY(type(m_widget->view(), cell("Value"), "300"));
        QVERIFY(text("Value", Model::ResultColumn).startsWith("Not sent. BadOutOfRange: "));
        auto* edit = qobject_cast<QLineEdit*>(open(m_widget->view(), cell("Value")));
        QVERIFY(edit && edit->text() == "300");
        QTest::keyClicks(edit, "30");
        QTest::keyClick(edit, Qt::Key_Return);
        QTRY_VERIFY_WITH_TIMEOUT(text("Value", Model::ResultColumn).startsWith("Good"), timeout);
        QCOMPARE(readBack("ns=1;s=ScalarByte"), V(OpcUa_Byte(30)));

        show("nsu=urn://node-opcua-simulator;s=DoubleAnalogDataItem");
        QVERIFY(type(m_widget->view(), cell("Value"), "1000"));
        QTRY_VERIFY_WITH_TIMEOUT(text("Value", Model::ResultColumn).startsWith("BadOutOfRange: "),
                                 timeout);
        // By name: two down from "Orange" is the last one.
        show("nsu=urn://node-opcua-simulator;s=MultiStateDiscrete001");
        QTRY_COMPARE_WITH_TIMEOUT(text("Value"), "1 (Orange)", timeout); // the names come last
        QWidget* names = open(m_widget->view(), cell("Value"));
        QVERIFY(names);
        QTest::keyClick(names->focusProxy() ? names->focusProxy() : names, Qt::Key_Down);
        QTest::keyClick(names, Qt::Key_Return);
        QTRY_COMPARE_WITH_TIMEOUT(text("Value"), "2 (Green)", timeout);
    }
    // What is not of the declared type is shown as what it is, and edited in the declared one.
    void otherType()
    {
        show("ns=1;s=Odd");
        QTRY_COMPARE_WITH_TIMEOUT(text("Value", Model::StatusColumn), "Good, but String", timeout);
        QCOMPARE(text("Value"), "forty");
        QVERIFY(
            cell("Value")
                .data(Qt::ToolTipRole)
                .toString()
                .endsWith("The value is String, but Double is declared. An edit sends Double."));
        QVERIFY(type(m_widget->view(), cell("Value"), "")); // nothing was changed
        QCOMPARE(text("Value", Model::ResultColumn), QString());
        QVERIFY(type(m_widget->view(), cell("Value"), "-1.5"));
        QTRY_VERIFY_WITH_TIMEOUT(text("Value", Model::ResultColumn).startsWith("BadTypeMismatch"),
                                 timeout);
        QCOMPARE(text("Value"), "forty");
        auto* edit = qobject_cast<QLineEdit*>(open(m_widget->view(), cell("Value")));
        QVERIFY(edit && edit->text() == "-1.5");
    }
    void otherAttributes()
    {
        show("ns=1;s=Named");
        QCOMPARE(text("UserWriteMask"), "96 (Description | DisplayName)");
        QVERIFY(type(m_widget->view(), cell("DisplayName"), "Pump"));
        QTRY_VERIFY_WITH_TIMEOUT(text("DisplayName", Model::ResultColumn).startsWith("Good"),
                                 timeout);
        QTRY_COMPARE_WITH_TIMEOUT(text("DisplayName"), "Pump", timeout);
        QVERIFY(type(m_widget->view(), cell("Description"), "of water"));
        QTRY_VERIFY_WITH_TIMEOUT(
            text("Description", Model::ResultColumn).startsWith("BadNotWritable: "), timeout);
        QCOMPARE(cell("Description").data(Qt::UserRole).value<V>().toLocalizedText().text(),
                 UaString("of water")); // to be tried again
        QVERIFY(!open(m_widget->view(), cell("BrowseName")));
    }
    // Ten million elements are shown in part, and opened.
    void longArray()
    {
        show("ns=1;s=Long", false);
        QTRY_VERIFY_WITH_TIMEOUT(text("Value").startsWith("{0, 0, "), timeout);
        QVERIFY(text("Value").size() < 300);
        QVERIFY(open(m_widget->view(), cell("Value")));
        const QPointer<QWidget> array = m_widget->view()->indexWidget(cell("Value"));
        auto* table = array->findChild<QTableView*>();
        QCOMPARE(table->model()->rowCount(), 10'000'000);
        QVERIFY(type(table, table->model()->index(9'999'999, 0), "-7"));
        QTest::keyClick(array, Qt::Key_Escape);
        QTRY_VERIFY(!array);
    }
    // A sign stands before its number.
    void rightToLeft()
    {
        m_widget->setLayoutDirection(Qt::RightToLeft);
        show("ns=1;s=Odd");
        const QRect rect = m_widget->view()->visualRect(cell("ValueRank")); // -1 (Scalar)
        const QImage image = m_widget->view()->viewport()->grab(rect).toImage();
        int left = image.width(), height = 0;
        for (int x = 0; x < image.width() && height == 0; ++x)
            for (int y = 0; y < image.height(); ++y)
                if (image.pixelColor(x, y).lightness() < 128) {
                    left = x;
                    ++height;
                }
        QVERIFY(left < image.width() - 20);
        QVERIFY2(height <= 3, QByteArray::number(height));
        // The longest name has room.
        const QModelIndex longest = cell("MinimumSamplingInterval", 0);
        QVERIFY(m_widget->view()->sizeHintForIndex(longest).width() <=
                m_widget->view()->visualRect(longest).width());
    }
    void dropped()
    {
        Relay relay(quint16(QUrl(m_url).port()));
        m_session->disconnectFromServer();
        QTRY_COMPARE_WITH_TIMEOUT(m_session->state(), QvelSession::Disconnected, timeout);
        ::connectSession(*m_session, settingOf(relay.url()));
        show("ns=1;s=ScalarString");
        QVERIFY(!open(m_widget->view(), cell("NodeId")));
        QCOMPARE(text("NodeId", Model::ResultColumn),
                 "Not writable for this user (UserWriteMask).");
        QWidget* edit = open(m_widget->view(), cell("Value"));
        QVERIFY(edit);
        QTest::keyClicks(edit, "typed while the cable was pulled");
        relay.refuse();
        relay.cut();
        QTRY_VERIFY_WITH_TIMEOUT(m_session->state() != QvelSession::Connected, timeout);
        QTest::keyClick(edit, Qt::Key_Return);
        QTRY_COMPARE_WITH_TIMEOUT(text("Value", Model::ResultColumn),
                                  "BadSessionClosed: There is no connection to the server.",
                                  timeout);
        QVERIFY(qvelInstallLanguage(QLocale::German));
        QCOMPARE(text("Value", Model::ResultColumn),
                 "BadSessionClosed: Es besteht keine Verbindung zum Server.");
        QVERIFY(qvelInstallLanguage(QLocale::English));
        relay.mend();
        m_session->reconnectNow();
        QTRY_VERIFY_WITH_TIMEOUT(cell("Value").flags() & Qt::ItemIsEditable, 3 * timeout);
        // Enter alone sends it.
        QVERIFY(type(m_widget->view(), cell("Value"), ""));
        QTRY_VERIFY_WITH_TIMEOUT(text("Value", Model::ResultColumn).startsWith("Good"), timeout);
        QTRY_COMPARE_WITH_TIMEOUT(text("Value"), "typed while the cable was pulled", timeout);
    }
    void called()
    {
        setMethod("ns=1;s=Add");
        QVERIFY(type(arguments(), argument(0, 2), "1.5"));
        QVERIFY(type(arguments(), argument(1, 2), "x"));
        QVERIFY(argument(1, 3).data().toString().startsWith("Not taken. BadTypeMismatch: "));
        QCOMPARE(argument(1, 2).data().toString(), "x"); // to be corrected
        QTest::mouseClick(buttonOf(m_call.get(), "Call"), Qt::LeftButton);
        QVERIFY(result().startsWith("Not called"));
        QVERIFY(type(arguments(), argument(1, 2), "2"));
        QTest::mouseClick(buttonOf(m_call.get(), "Call"), Qt::LeftButton);
        QTRY_COMPARE_WITH_TIMEOUT(result(), "Good", timeout);
        QCOMPARE(m_call->outputModel()->index(0, 2).data().toString(), "3.5");

        // An array, a name, a number, and a value whose type is to be chosen.
        setMethod("ns=1;s=Sort");
        QCOMPARE(argument(0, 1).data().toString(), "Int32[]");
        QTRY_COMPARE(argument(1, 1).data().toString(), "ServerState"); // which closes an editor
        QCOMPARE(argument(0, 0).data(Qt::ToolTipRole).toString(), "numbers\nin any order");
        QVERIFY(open(arguments(), argument(0, 2)));
        const QPointer<QWidget> array = arguments()->indexWidget(argument(0, 2));
        auto* table = array->findChild<QTableView*>();
        for (const char* keys : {"7", "-7"}) {
            QTest::mouseClick(buttonOf(array, "+"), Qt::LeftButton);
            QVERIFY(type(table, table->model()->index(table->model()->rowCount() - 1, 0), keys));
        }
        QTest::mouseClick(buttonOf(array, "Write"), Qt::LeftButton);
        QTRY_VERIFY(!array);
        QWidget* names = open(arguments(), argument(1, 2));
        QVERIFY(names);
        QTest::keyClick(names->focusProxy(), Qt::Key_Down);
        QTest::keyClick(names, Qt::Key_Return);
        QTRY_COMPARE(argument(1, 2).data().toString(), "1 (Failed)");
        QVERIFY(open(arguments(), argument(3, 2)));
        const QPointer<QWidget> any = arguments()->indexWidget(argument(3, 2));
        any->findChild<QComboBox*>()->setCurrentIndex(OpcUaType_String);
        QTest::keyClicks(any->findChild<QLineEdit*>(), "of any type");
        QTest::mouseClick(buttonOf(any, "Write"), Qt::LeftButton);
        QTRY_VERIFY(!any);
        QTest::keyClick(m_call.get(), Qt::Key_Return, Qt::ControlModifier);
        QTRY_COMPARE_WITH_TIMEOUT(result(), "Good", timeout);
        const auto output = [this](int row) {
            return m_call->outputModel()->index(row, 2).data().toString();
        };
        QCOMPARE(output(0) + output(1) + output(2), "{-7, 7}1 (Failed)of any type");
        QCOMPARE(m_call->outputModel()->columnCount(), 3);

        // What the server says about each of them stands beside what was typed, which stays.
        QVERIFY(type(arguments(), argument(2, 2), "-1"));
        QTest::keyClick(m_call.get(), Qt::Key_Return, Qt::ControlModifier);
        QTRY_VERIFY_WITH_TIMEOUT(result().startsWith("BadInvalidArgument: "), timeout);
        QVERIFY(argument(2, 3).data().toString().startsWith("BadOutOfRange: "));
        QCOMPARE(argument(1, 3).data().toString() + argument(2, 2).data().toString(), "Good-1");
        // ...but for what is typed while it answers.
        QVERIFY(type(arguments(), argument(2, 2), "2000"));
        QCOMPARE(argument(2, 2).data().toString() + argument(2, 3).data().toString(), "2000");
        QTest::mouseClick(buttonOf(m_call.get(), "Call"), Qt::LeftButton);
        QVERIFY(type(arguments(), argument(2, 2), "y"));
        QVERIFY2(m_call->isCalling(), qPrintable(result() + argument(2, 2).data().toString()));
        QTRY_COMPARE_WITH_TIMEOUT(result(), "Good", timeout);
        QVERIFY(argument(2, 3).data().toString().startsWith("Not taken."));

        // Calls of before can be had again.
        setMethod("ns=1;s=Add");
        QCOMPARE(argument(0, 2).data().toString(), "0");
        auto* past = m_call->findChild<QComboBox*>();
        QCOMPARE(past->count(), 2);
        past->setFocus();
        QTest::keyClick(past, Qt::Key_Down);
        QCOMPARE(argument(0, 2).data().toString() + argument(1, 2).data().toString(), "1.52");

        m_call->setMethod(*qvelParseNodeId("nsu=urn://node-opcua-simulator;s=ObjectWithMethods"),
                          *qvelParseNodeId("nsu=urn://node-opcua-simulator;s=MethodNoArgs"));
        QTRY_VERIFY_WITH_TIMEOUT(buttonOf(m_call.get(), "Call")->isEnabled(), timeout);
        QTest::mouseClick(buttonOf(m_call.get(), "Call"), Qt::LeftButton);
        QTRY_COMPARE_WITH_TIMEOUT(result(), "Good, no outputs", timeout);
    }
    void cancelled()
    {
        setMethod("ns=1;s=Sort");
        QVERIFY(type(arguments(), argument(2, 2), "600000"));
        QTest::mouseClick(buttonOf(m_call.get(), "Call"), Qt::LeftButton);
        QVERIFY(m_call->isCalling() && !buttonOf(m_call.get(), "Call")->isEnabled());
        QTest::mouseClick(buttonOf(m_call.get(), "Cancel Call"), Qt::LeftButton);
        QVERIFY(!m_call->isCalling() && result().startsWith("Cancelled."));
        // The end of the session ends a call, too; what was typed stays.
        QTest::mouseClick(buttonOf(m_call.get(), "Call"), Qt::LeftButton);
        m_session->disconnectFromServer();
        QTRY_VERIFY_WITH_TIMEOUT(!m_call->isCalling(), timeout);
        QVERIFY2(result().startsWith("Bad"), qPrintable(result()));
        connectSession();
        QTRY_VERIFY_WITH_TIMEOUT(buttonOf(m_call.get(), "Call")->isEnabled(), timeout);
        QCOMPARE(argument(2, 2).data().toString(), "600000");
    }
    // The session may go while an editor is open and a call is under way.
    void ended()
    {
        setMethod("ns=1;s=Sort");
        QVERIFY(type(arguments(), argument(2, 2), "600000"));
        QTest::mouseClick(buttonOf(m_call.get(), "Call"), Qt::LeftButton);
        show("ns=1;s=ArrayInt32");
        QVERIFY(open(m_widget->view(), cell("Value")));
        const QPointer<QWidget> array = m_widget->view()->indexWidget(cell("Value"));
        auto* table = array->findChild<QTableView*>();
        QVERIFY(type(table, table->model()->index(0, 0), "99"));
        m_session.reset();
        QTRY_VERIFY_WITH_TIMEOUT(!m_call->isCalling(), timeout);
        QTest::mouseClick(buttonOf(array, "Write"), Qt::LeftButton);
        QTRY_VERIFY(!array);
        QVERIFY(text("Value", Model::ResultColumn).startsWith("BadSessionClosed"));
        QVERIFY(m_widget->session() == nullptr && !text("Value").isEmpty());
        m_session = std::make_unique<QvelSession>(m_user.options); // and a new one takes its place
        m_widget->setSession(m_session.get());
        connectSession();
        QTRY_VERIFY_WITH_TIMEOUT(!cell("Value").data(Qt::UserRole + 2).toBool(), timeout);
        QVERIFY(!cell("Value").data(Qt::ForegroundRole).isValid());
        QVERIFY(cell("Value").data(Qt::UserRole).value<V>().elementAt(0) == V(99)); // not lost
        // What is edited when a session takes the place is not sent to that.
        QVERIFY(open(m_widget->view(), cell("Value")));
        const QPointer<QWidget> next = m_widget->view()->indexWidget(cell("Value"));
        QVERIFY(next);
        QvelSession other(m_user.options);
        ::connectSession(other, settingOf(m_url));
        m_widget->setSession(&other);
        if (next->isVisible())
            QTest::mouseClick(buttonOf(next, "Write"), Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(!next, timeout);
        QCOMPARE(text("Value", Model::ResultColumn), "");
        other.disconnectFromServer();
        QTRY_COMPARE_WITH_TIMEOUT(other.state(), QvelSession::Disconnected, timeout);
        m_widget->setNode(*qvelParseNodeId("i=85")); // and nothing is there to be waited for
        QCOMPARE(m_widget->view()->accessibleDescription(),
                 "There is no connection to the server.");
    }

private:
    void connectSession()
    {
        const QvelSessionError error = ::connectSession(*m_session, settingOf(m_url));
        QVERIFY2(error.isNull(), qPrintable(error.toString()));
    }
    // Shows a node and waits for what comes last.
    void show(const QString& id, bool live = true)
    {
        m_widget->show();
        QVERIFY(QTest::qWaitForWindowActive(m_widget.get()));
        m_widget->model()->setLive(live);
        const UaExpandedNodeId node = *qvelParseNodeId(id);
        m_widget->setNode(node.namespaceUri().isEmpty() ? m_session->toExpandedNodeId(node.nodeId())
                                                        : node);
        QTRY_VERIFY_WITH_TIMEOUT(text("DataType").contains('('), timeout);
        QTRY_VERIFY_WITH_TIMEOUT(!text("Value", Model::StatusColumn).isEmpty(), timeout);
    }
    void setMethod(const QString& id) const
    {
        m_call->show();
        QVERIFY(QTest::qWaitForWindowActive(m_call.get()));
        const auto node = [this](const QString& text) {
            return m_session->toExpandedNodeId(qvelParseNodeId(text)->nodeId());
        };
        m_call->setMethod(node("ns=1;s=Machine"), node(id));
        QTRY_VERIFY_WITH_TIMEOUT(buttonOf(m_call.get(), "Call")->isEnabled(), timeout);
        const int last = m_call->inputModel()->rowCount() - 1;
        QTRY_VERIFY_WITH_TIMEOUT(!argument(last, 1).data().toString().isEmpty(), timeout);
    }
    QModelIndex cell(const QString& attribute, int column = Model::ValueColumn) const
    {
        const QAbstractItemModel* model = m_widget->model();
        for (int row = 0; row < model->rowCount(); ++row)
            if (model->index(row, 0).data() == attribute)
                return model->index(row, column);
        return {};
    }
    QString text(const QString& attribute, int column = Model::ValueColumn) const
    {
        return cell(attribute, column).data().toString();
    }
    QModelIndex argument(int row, int column) const
    {
        return m_call->inputModel()->index(row, column);
    }
    QTreeView* arguments() const { return m_call->findChild<QTreeView*>(); }
    QString result() const
    {
        for (auto* label : m_call->findChildren<QLabel*>())
            if (label->accessibleName() == "Result")
                return label->text();
        return {};
    }
    // The value as the other client reads it.
    V readBack(const QString& id)
    {
        m_client.write(QJsonDocument(QJsonArray{"read", id}).toJson(QJsonDocument::Compact) + '\n');
        QByteArray output;
        while (!output.endsWith("END\n") &&
               (m_client.bytesAvailable() || m_client.waitForReadyRead(timeout)))
            output += m_client.readAll();
        const auto line = QJsonDocument::fromJson(output.left(output.indexOf('\n'))).object();
        V value;
        value.fromJson(QJsonDocument(line["value"].toObject()).toJson());
        return value;
    }

    SessionUser m_user;
    PeerProcess m_server;
    QProcess m_client;
    QString m_url;
    std::unique_ptr<QvelSession> m_session;
    std::unique_ptr<QvelAttributesWidget> m_widget;
    std::unique_ptr<QvelCallWidget> m_call;
};

QTEST_MAIN(tst_Attributes)
#include "tst_attributes.moc"

// The data view on a foreign server, driven by mouse and keys.

#include "session/sessionuser.h"
#include "support/memorysettings.h"
#include "support/modaluser.h"
#include "support/warnings.h"

#include <Kestrel/QvelDataViewModel>
#include <Kestrel/QvelDataViewWidget>
#include <Kestrel/QvelSubscription>

#include <QtTest/QAbstractItemModelTester>
#include <QtWidgets/QtWidgets>

using Model = QvelDataViewModel;

// A widget on the screen, and what a user does to the list in front.
struct View
{
    explicit View(QvelSession* session = nullptr)
    {
        widget.resize(1900, 500);
        widget.setSession(session);
        widget.show();
        tester = std::make_unique<QAbstractItemModelTester>(
            widget.model(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    }
    Model* model() const { return widget.model(); }
    QTableView* table() const { return qobject_cast<QTableView*>(model()->parent()); }
    QString text(int row, Model::Column column, int role = Qt::DisplayRole) const
    {
        return model()->index(row, column).data(role).toString();
    }
    QStringList column(Model::Column column) const
    {
        QStringList texts;
        for (int row = 0; row < model()->rowCount(); ++row)
            texts.append(text(row, column));
        return texts;
    }
    template <class T>
    T* part(const char* name) const
    {
        return widget.findChild<T*>(QLatin1String(name));
    }
    void click(const char* button) { QTest::mouseClick(part<QToolButton>(button), Qt::LeftButton); }
    void type(const QString& id)
    {
        auto* edit = part<QLineEdit>("nodeId");
        edit->clear();
        QTest::keyClicks(edit, id);
        QTest::keyClick(edit, Qt::Key_Return);
    }
    QPoint at(int row, Model::Column column) const
    {
        const QModelIndex index = model()->index(row, column);
        table()->scrollTo(index);
        return table()->visualRect(index).center();
    }
    void click(int row, Model::Column column, Qt::KeyboardModifiers keys = {})
    {
        QTest::mouseClick(table()->viewport(), Qt::LeftButton, keys, at(row, column));
    }
    // The editor of the current cell, once F2 has opened it.
    QLineEdit* open(int column)
    {
        table()->setFocus();
        table()->selectionModel()->setCurrentIndex(
            model()->index(table()->currentIndex().row(), column), QItemSelectionModel::NoUpdate);
        QTest::keyClick(table(), Qt::Key_F2);
        return table()->viewport()->findChild<QLineEdit*>();
    }
    bool enter(int column, const QString& text)
    {
        QLineEdit* editor = open(column);
        if (!editor)
            return false;
        editor->selectAll();
        QTest::keyClicks(editor, text);
        QTest::keyClick(editor, Qt::Key_Return);
        return QTest::qWaitFor([this] { return !table()->viewport()->findChild<QLineEdit*>(); });
    }
    // The row, and those that are selected with it, into the lower half of another one.
    void drag(int row, int onto)
    {
        QWindow* window = widget.windowHandle();
        const auto inWindow = [this](const QPoint& point) {
            return table()->viewport()->mapTo(&widget, point);
        };
        const QPoint from = inWindow(at(row, Model::Name));
        const QPoint to = inWindow(at(onto, Model::Name) + QPoint(0, 5));
        QTimer::singleShot(100, window, [window, to] { // while the drag runs
            QTest::mouseMove(window, to - QPoint(0, 1));
            QTest::mouseMove(window, to);
            QTest::mouseRelease(window, Qt::LeftButton, {}, to);
        });
        QTest::mousePress(window, Qt::LeftButton, {}, from);
        QTest::mouseMove(window, from + QPoint(30, 0));
        QTest::mouseMove(window, from + QPoint(40, 0));
    }
    void drop(QMimeData* data, const QPoint& at)
    {
        QDragEnterEvent enter(at, Qt::CopyAction, data, Qt::LeftButton, {});
        QDropEvent event(at, Qt::CopyAction, data, Qt::LeftButton, {});
        QApplication::sendEvent(table()->viewport(), &enter);
        QApplication::sendEvent(table()->viewport(), &event);
        delete data;
    }

    QvelDataViewWidget widget;
    std::unique_ptr<QAbstractItemModelTester> tester;
};

class tst_DataView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_setting = settingOf(m_server.start(NODE, {PEERS "/sessionserver.mjs", "--children=10"}));
        QVERIFY(!m_setting.endpointUrl().isEmpty());
    }
    void init()
    {
        failOnWarnings();
        m_session = std::make_unique<QvelSession>(m_user.options);
        const QvelSessionError error = connectSession(*m_session, m_setting);
        QVERIFY2(m_session->state() == QvelSession::Connected, error.toString().toUtf8());
        m_uri = m_session->namespaceArray().value(1);
    }
    void fill()
    {
        View view(m_session.get());
        QSignalSpy activated(&view.widget, &QvelDataViewWidget::variableActivated);
        view.type("ns=1;s=Item0");
        view.type("ns=1;s=Nothing");
        view.type("i=85");
        view.type(id("Item0")); // is there
        QVERIFY(!view.part<QLabel>("message")->text().isEmpty());
        view.type("Item0");
        QVERIFY(view.part<QLabel>("message")->text().contains("\"Item0\" is no NodeId"));
        QCOMPARE(view.part<QLineEdit>("nodeId")->text(), "Item0");
        QTRY_VERIFY(view.text(0, Model::Value).toDouble() > 0);
        QTRY_COMPARE(view.column(Model::Status),
                     QStringList({"Good", "BadNodeIdUnknown", "BadAttributeIdInvalid"}));
        QTRY_COMPARE(view.text(0, Model::Name), "Item0");
        QCOMPARE(view.text(0, Model::NodeId), id("Item0"));
        QTRY_COMPARE(view.text(0, Model::DataType), "Double");
        QCOMPARE(view.text(0, Model::RevisedPublishingInterval), "500");
        const QString stamp = view.text(0, Model::SourceTimestamp);
        QVERIFY2(QRegularExpression("^\\d\\d:\\d\\d:\\d\\d\\.\\d{3}$").match(stamp).hasMatch(),
                 stamp.toUtf8());
        const QTime now = QDateTime::currentDateTimeUtc().time();
        QVERIFY(qAbs(QTime::fromString(stamp, "HH:mm:ss.zzz").secsTo(now)) < 60);
        QVERIFY(
            view.text(0, Model::SourceTimestamp, Qt::ToolTipRole).contains('T' + stamp.left(11)));

        QApplication::clipboard()->setText(id("Item1") + "\nno id\n  " + id("Item2"));
        view.table()->setFocus();
        QTest::keyClick(view.table(), Qt::Key_V, Qt::ControlModifier);
        auto* text = new QMimeData;
        text->setText("ns=1;s=ScalarString");
        view.drop(text, view.at(1, Model::Name) - QPoint(0, 5));
        view.drop(qvelNodeMimeData({{*qvelParseNodeId(id("ArrayInt16")), "Mine"}}), {5, 400});
        QTRY_COMPARE(view.column(Model::Name), QStringList({"Item0", "ScalarString", "", "Objects",
                                                            "Item1", "Item2", "Mine"}));
        QTRY_COMPARE(view.text(6, Model::Value), "{-32768, 32767, -32768}");

        view.click(4, Model::Name);
        QTRY_COMPARE(qvelNodeIdText(
                         activated.value(activated.size() - 1).value(0).value<UaExpandedNodeId>()),
                     id("Item1"));
        view.click(0, Model::Name, Qt::ControlModifier);
        QTest::keyClick(view.table(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QApplication::clipboard()->text(), id("Item0") + '\n' + id("Item1"));
        QTest::keyClick(view.table(), Qt::Key_Down, Qt::AltModifier);
        QCOMPARE(view.column(Model::Name),
                 QStringList({"ScalarString", "", "Objects", "Item2", "Item0", "Item1", "Mine"}));
        QTest::keyClick(view.table(), Qt::Key_Delete);
        QCOMPARE(view.column(Model::Name),
                 QStringList({"ScalarString", "", "Objects", "Item2", "Mine"}));
        for (const char* sheet :
             {"", "QTableView { background: #102030 }"}) { // beside the rows, too
            view.widget.setStyleSheet(sheet);
            const QImage image = view.table()->viewport()->grab().toImage();
            const QColor base =
                *sheet ? QColor("#102030") : view.table()->palette().color(QPalette::Base);
            for (const QPoint& point : {QPoint(1, 1), QPoint(5, image.height() - 5)})
                QCOMPARE(image.pixelColor(point), base);
        }
        // The cells without the style look as they do with it, selected or too narrow, too.
        view.widget.setStyleSheet({});
        view.model()->setPaused(true);
        view.widget.addNodes(
            {{*qvelParseNodeId(id("Item9")), QString::fromUtf8("AVTo office, Behälter")}});
        view.table()->selectRow(1);
        view.table()->hideRow(2);
        for (int width : {view.table()->columnWidth(Model::Value), 40, 9}) {
            for (int column = 0; column < Model::ColumnCount; column += width == 40 ? 1 : 2)
                view.table()->setColumnWidth(column, width);
            const QImage image = view.table()->viewport()->grab().toImage();
            for (int row = 0; row < view.model()->rowCount(); ++row)
                view.table()->setItemDelegateForRow(row, view.table()->itemDelegate());
            const QImage styled = view.table()->viewport()->grab().toImage();
            for (int row = 0; row < view.model()->rowCount(); ++row)
                view.table()->setItemDelegateForRow(row, nullptr);
            QCOMPARE(image, styled);
        }
        view.table()->showRow(2);
        view.model()->setPaused(false);
        // A number's exponent stays in sight.
        view.type("ns=1;s=ScalarDouble");
        const int row = view.model()->rowCount() - 1;
        view.table()->setColumnWidth(Model::Value, 70);
        QImage last;
        for (double number : {1.2345678e-200, 1.2345678e+300}) {
            resultOf(m_session->write({{UaNodeId(UaString("ScalarDouble"), 1),
                                        UaDataValue(UaVariant(number)),
                                        QvelAttribute::Value,
                                        {}}}));
            QTRY_COMPARE(view.text(row, Model::Value).toDouble(), number);
            const QPixmap cell = view.table()->viewport()->grab(
                view.table()->visualRect(view.model()->index(row, Model::Value)));
            QVERIFY(last != cell.toImage());
            last = cell.toImage();
        }
        // While it waits, a row may go, and come again.
        for (int i = 0; i < 20; ++i) {
            view.model()->removeRows(0, view.model()->rowCount());
            view.widget.addNodes(items(50));
            QTest::qWait(i);
        }
        QTRY_VERIFY(!view.column(Model::Value).contains(QString()));
    }
    void drag()
    {
        if (QGuiApplication::platformName() == "offscreen")
            QSKIP("There are no drags without a display.");
        View view(m_session.get());
        view.widget.addNodes(items(5));
        QTRY_COMPARE(view.text(4, Model::Name), "Item4");
        view.click(0, Model::Name);
        view.click(4, Model::Name, Qt::ControlModifier);
        view.drag(4, 1);
        QTRY_COMPARE(view.column(Model::Name),
                     QStringList({"Item1", "Item0", "Item4", "Item2", "Item3"}));
        QCOMPARE(view.table()->selectionModel()->selectedRows().size(), 2);
    }
    void edit()
    {
        View view(m_session.get());
        for (const char* name : {"ScalarInt16", "ScalarString", "ScalarBoolean"})
            view.type(id(name));
        view.type("i=2258"); // nobody may write the time
        view.type(id("Mode"));
        QTRY_COMPARE(view.text(4, Model::Value), "1 (Manual)"); // the variable's own names
        QTRY_VERIFY(!view.column(Model::Value).contains(QString()));
        QTRY_VERIFY(view.model()->index(0, Model::Value).flags() & Qt::ItemIsEditable);
        QTRY_COMPARE(view.text(3, Model::DataType), "UtcTime");
        QVERIFY(!(view.model()->index(3, Model::Value).flags() & Qt::ItemIsEditable));
        view.click(3, Model::Value);
        QTest::mouseDClick(view.table()->viewport(), Qt::LeftButton, {}, view.at(3, Model::Value));
        const QString reason = "Not writable for this user (UserAccessLevel).";
        QCOMPARE(view.part<QLabel>("message")->text(), reason);
        QVERIFY(view.text(3, Model::Value, Qt::ToolTipRole).endsWith(reason));
        view.click(0, Model::Value);
        QVERIFY(view.enter(Model::Value, "-123"));
        QTRY_COMPARE(view.text(0, Model::WriteResult), "Good");
        QTRY_COMPARE(view.text(0, Model::Value), "-123");
        QCOMPARE(view.text(0, Model::Value, Qt::ToolTipRole), "-123");
        QVERIFY(view.enter(Model::Value, "40000"));
        QTRY_COMPARE(view.text(0, Model::WriteResult), "BadOutOfRange");
        QVERIFY(view.text(0, Model::WriteResult, Qt::ToolTipRole).contains("Nothing was sent"));
        QVERIFY(view.part<QLabel>("message")->text().startsWith("ScalarInt16: BadOutOfRange"));
        view.click(1, Model::Value);
        QVERIFY(view.enter(Model::Value, "<b>new</b>"));
        QTRY_COMPARE(view.text(1, Model::Value), "<b>new</b>");
        const auto read = [this](const char* name) {
            const UaNodeId node(UaString(name), 1);
            return resultOf(m_session->read({{node, QvelAttribute::Value, {}, {}}}))
                .values.value(0);
        };
        QCOMPARE(read("ScalarInt16").value().toInt16(), -123);
        QCOMPARE(read("ScalarString").value().toString().toQString(), "<b>new</b>");
        QVERIFY(!view.text(1, Model::Value, Qt::ToolTipRole).startsWith("<b>"));
    }
    void parameters()
    {
        View view(m_session.get());
        view.widget.addNodes(items(3));
        const auto subscriptions = [this] { return m_session->findChildren<QvelSubscription*>(); };
        QTRY_COMPARE(view.column(Model::RevisedPublishingInterval).count("500"), 3);
        view.click(0, Model::Name);
        view.click(2, Model::Name, Qt::ControlModifier);
        QVERIFY(view.enter(Model::PublishingInterval, "200"));
        QTRY_COMPARE(view.column(Model::RevisedPublishingInterval),
                     QStringList({"200", "500", "200"}));
        QCOMPARE(subscriptions().size(), 2);
        QVERIFY(view.enter(Model::SamplingInterval, "100"));
        QVERIFY(view.enter(Model::QueueSize, "1"));
        QTRY_COMPARE(view.column(Model::RevisedSamplingInterval)[2], "100");
        QTRY_COMPARE(view.column(Model::RevisedQueueSize), QStringList({"1", "10", "1"}));
        QTRY_VERIFY(view.text(2, Model::Overflows).toInt() == 0); // a queue of one never tells
        QVERIFY(view.enter(Model::QueueSize, "2"));
        QVERIFY(view.enter(Model::PublishingInterval, "1000"));
        const QTemporaryDir folder;
        const QString name = folder.filePath("values.csv");
        view.model()->startRecording(name);
        QTRY_VERIFY(view.text(2, Model::Overflows).toInt() > 0);
        Q_EMIT subscriptions().constFirst()->gap(3); // of the row in the middle
        QTRY_COMPARE(view.column(Model::Gaps), QStringList({"", "1", ""}));
        view.model()->stopRecording();
        QTRY_VERIFY(view.part<QLabel>("recording")->text().startsWith("Recorded: "));
        QFile file(name);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray lines = file.readAll();
        QVERIFY2(lines.contains(",,,,gap: 3 messages are missing\r\n"), lines);
        QVERIFY2(lines.contains(",overflow: values before this one are missing\r\n"), lines);
        QVERIFY(view.enter(Model::SamplingInterval, "-2"));
        QCOMPARE(view.part<QLabel>("message")->text(), "\"-2\" is no sampling.");
        QCOMPARE(view.column(Model::SamplingInterval), QStringList({"100", "-1", "100"}));
        view.table()->selectAll();
        view.click("removeButton");
        QTRY_COMPARE(subscriptions().size(), 0);
    }
    // The server counts, ten times a second: in the file no number is missing, and none is twice.
    void record()
    {
        const QTemporaryDir folder; // goes after what records into it
        View view(m_session.get());
        QList<QvelNodeLink> nodes = items(300);
        nodes[7].displayName = "a,\"b\"\nc";
        view.widget.addNodes(nodes);
        QList<int> rows;
        for (int i = 0; i < 300; ++i)
            rows.append(i);
        view.model()->setParameter(rows, Model::PublishingInterval, 200);
        view.model()->setParameter(rows, Model::SamplingInterval, 0);
        QTRY_COMPARE(view.column(Model::RevisedSamplingInterval).count("50"), 300);
        const QString name = folder.filePath("values.csv");
        ModalUser user([&](QDialog* dialog) {
            auto* line = dialog->findChild<QLineEdit*>("fileNameEdit");
            line->setText(name);
            QTest::keyClick(line, Qt::Key_Return);
        });
        view.click("recordButton");
        QTRY_VERIFY(view.model()->isRecording());
        QTRY_VERIFY(view.model()->recordedLines() > 3000);
        view.click("pauseButton");
        const QStringList still = view.column(Model::Value);
        QTRY_VERIFY(view.model()->recordedLines() > 6000);
        QCOMPARE(view.column(Model::Value), still);
        view.click("pauseButton");
        QTRY_VERIFY(view.column(Model::Value) != still);
        view.click("recordButton");
        QVERIFY(!view.model()->isRecording());
        QTRY_VERIFY(view.part<QLabel>("recording")->text().startsWith("Recorded: "));
        view.model()->startRecording(
            folder.filePath("next.csv")); // the last one is complete by then

        QFile file(name);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QByteArray text = file.readAll();
        QVERIFY(text.contains(",\"a,\"\"b\"\"\nc\"," + id("Item7").toUtf8() + ",Good,"));
        text.replace("\"a,\"\"b\"\"\nc\"", "Item7");
        QList<QByteArray> lines = text.split('\n');
        QCOMPARE(lines.takeFirst(),
                 "SourceTimestamp,ServerTimestamp,Name,NodeId,Status,Value,Remark\r");
        QCOMPARE(lines.takeLast(), "");
        QHash<QByteArray, int> last;
        for (const QByteArray& line : std::as_const(lines)) {
            const QList<QByteArray> fields = line.chopped(1).split(',');
            QCOMPARE(fields.size(), 7);
            int& before = last[fields[3]];
            QVERIFY2(before == 0 || fields[5].toInt() == before + 1, line);
            before = fields[5].toInt();
        }
        QCOMPARE(last.size(), 300);
    }
    void full()
    {
        View view(m_session.get());
        view.widget.addNodes(items(10));
        for (const char* name : {"/dev/full", "/nowhere/values.csv"}) {
            view.model()->startRecording(name);
            QTRY_VERIFY(!view.model()->isRecording());
            const QString text = view.part<QLabel>("recording")->text();
            QVERIFY2(text.startsWith("Recording stopped: ") && text.contains(name), text.toUtf8());
            QVERIFY(!view.part<QToolButton>("recordButton")->isChecked());
        }
    }
    void lists()
    {
        View view(m_session.get());
        auto* bar = view.widget.findChild<QTabBar*>();
        view.widget.addNodes(items(2));
        view.click("newListButton");
        QCOMPARE(bar->count(), 2);
        view.type(id("Item5"));
        QTest::mouseDClick(bar, Qt::LeftButton, {}, bar->tabRect(1).center());
        auto* edit = view.part<QLineEdit>("listName");
        QVERIFY(edit);
        QTest::keyClicks(edit, "A & B");
        QTest::keyClick(edit, Qt::Key_Return);
        QCOMPARE(view.model()->name(), "A & B");
        QCOMPARE(bar->tabText(1), "A && B");
        const QJsonObject before = view.widget.toJson();
        view.widget.closeList(0);
        QCOMPARE(view.model()->name(), "A & B");
        view.widget.closeList(0);
        QCOMPARE(bar->count(), 1);
        QCOMPARE(view.model()->rowCount(), 0);
        QVERIFY(view.widget.fromJson(before));
        QCOMPARE(view.widget.toJson(), before);
        QTRY_VERIFY(view.text(0, Model::Value).toDouble() > 0);
    }
    // The session is replaced, and deleted, under an open editor.
    void interruption()
    {
        QvelSession other(m_user.options);
        connectSession(other, m_setting);
        View view(&other);
        view.type(id("ScalarInt32"));
        const QModelIndex value = view.model()->index(0, Model::Value);
        QString before;
        for (const bool isReplaced : {true, false}) {
            QTRY_VERIFY(value.flags() & Qt::ItemIsEditable);
            QTRY_VERIFY(!value.data().toString().isEmpty());
            before = isReplaced ? value.data().toString() : before;
            view.click(0, Model::Value);
            const QPointer<QLineEdit> editor = view.open(Model::Value);
            QVERIFY(editor);
            QTest::keyClicks(editor, "7");
            if (isReplaced)
                view.widget.setSession(m_session.get());
            else
                m_session = nullptr;
            if (editor)
                QTest::keyClick(editor, Qt::Key_Return);
            QTRY_VERIFY(!editor);
            QTRY_COMPARE(view.text(0, Model::WriteResult), isReplaced ? "" : "BadSessionClosed");
            QCOMPARE(value.data().toString(), before);
        }
    }
    void state()
    {
        const QStringList none;
        const struct
        {
            QVariant stored;
            QStringList ids; // of the first list
            bool isKept;     // under the same key, all of it
        } rows[] = {{{}, none, true},
                    {7, none, false},
                    {"{\"lists\":[", none, false},
                    {R"({"version":2,"lists":[]})", none, false},
                    {R"({"version":1,"lists":[{"items":[{"nodeId":"i=85"},)"
                     R"({"nodeId":"ns=x","queueSize":-1,"new":[1]},5]},)"
                     R"({"item":[]},7],"hiddenColumns":["Gaps","Later"]})",
                     {"i=85", "ns=x"},
                     true}};
        for (const auto& [stored, ids, isKept] : rows) {
            const Case each(stored.toByteArray());
            MemoryStore<QvelSettingsCBInterface> settings;
            if (stored.isValid())
                settings.values["g/DataView"] = stored;
            View view;
            view.tester = nullptr;
            QCOMPARE(view.widget.restoreState(&settings, "g"), isKept);
            QCOMPARE(view.column(Model::NodeId), ids);
            if (ids.size() > 1)
                QCOMPARE(view.text(1, Model::Status), "BadNodeIdInvalid");
            QVERIFY(view.widget.saveState(&settings, "g"));
            QCOMPARE(settings.values.value("g/DataViewUnread1"), isKept ? QVariant() : stored);
            const QString written = settings.values["g/DataView"].toString();
            if (!ids.isEmpty()) {
                for (const char* part : {"\"queueSize\":-1", "\"new\":[1]", "},5]",
                                         "{\"item\":[]},7]", "\"Gaps\"", "\"Later\""})
                    QVERIFY2(written.contains(part), written.toUtf8());
                QVERIFY(view.table()->isColumnHidden(Model::Gaps));
            }
            View second;
            second.tester = nullptr;
            QVERIFY(second.widget.restoreState(&settings, "g"));
            QCOMPARE(second.widget.toJson(), view.widget.toJson());
        }
    }

private:
    QString id(const char* name) const { return "nsu=" + m_uri + ";s=" + name; }
    QList<QvelNodeLink> items(int count) const
    {
        QList<QvelNodeLink> nodes;
        for (int i = 0; i < count; ++i)
            nodes.append({*qvelParseNodeId(id("Item") + QString::number(i)), {}});
        return nodes;
    }

    PeerProcess m_server;
    QvelDiscoverySetting m_setting;
    SessionUser m_user;
    std::unique_ptr<QvelSession> m_session;
    QString m_uri;
};

QTEST_MAIN(tst_DataView)
#include "tst_dataview.moc"

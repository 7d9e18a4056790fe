// Check-box lists as a person uses them, and the texts of the editors that offer choices.

#include "editorcases.h"
#include "support/warnings.h"

#include <QtGui/QAccessible>
#include <QtTest/QtTest>
#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QApplication>
#include <QtWidgets/QCheckBox>

namespace {

// A list of four flags in a window, open on demand.
struct Box
{
    Box() : changed(&editor, &QvelWidgetAccessLevelMask::accessLevelMaskChanged)
    {
        editor.show();
        (void)QTest::qWaitForWindowActive(&editor);
    }

    bool isOpen() const { return combo->view()->isVisible(); }

    // To wherever the window system would send the key.
    void press(Qt::Key key)
    {
        const QWidget* popup = QApplication::activePopupWidget();
        QTest::keyClick((popup ? popup : &editor)->windowHandle(), key);
    }

    void click(int row)
    {
        QAbstractItemView* view = combo->view();
        const QPoint place = view->visualRect(view->model()->index(row, 0)).center();
        QTest::mouseMove(view->viewport(), place);
        QWidget* child = view->viewport()->childAt(place);
        if (child)
            QTest::mouseClick(child, Qt::LeftButton, {}, QPoint(10, child->height() / 2));
        else
            QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, place);
    }

    QvelWidgetAccessLevelMask editor;
    QComboBox* combo = editor.findChild<QComboBox*>();
    QSignalSpy changed;
};

QImage plainBox(const QString& text, QSize size)
{
    QComboBox box;
    box.addItem(text);
    box.resize(size);
    return box.grab().toImage();
}

} // namespace

class FlagsEditorsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { failOnWarnings(); }

    void clicksKeepTheListOpen()
    {
        Box box;
        QTest::mouseClick(box.combo, Qt::LeftButton);
        OpcUa_Byte expected = 0;
        int clicks = 0;
        for (int row : {0, 2, 3, 0, 1, 1, 1}) { // also twice on the same entry
            box.click(row);
            expected ^= OpcUa_Byte(1 << row);
            QVERIFY(box.isOpen());
            QCOMPARE(box.changed.count(), ++clicks);
            QCOMPARE(box.editor.accessLevelMask(), expected);
            QCOMPARE(box.changed.constLast().constFirst().value<OpcUa_Byte>(), expected);
        }
        QCOMPARE(box.combo->toolTip(), QString("CurrentWrite | HistoryRead | HistoryWrite"));
        // Opened again, any entry can be clicked without moving the mouse, as by touch.
        box.press(Qt::Key_Escape);
        for (int row : {1, 0}) {
            QVERIFY(!box.isOpen());
            box.combo->showPopup();
            box.click(row);
            QCOMPARE(box.changed.count(), ++clicks);
            box.press(Qt::Key_Escape);
        }
        // Beside the name, too; but not when the mouse was pressed elsewhere, or another button.
        box.combo->showPopup();
        QWidget* list = box.combo->view()->viewport();
        const QPoint end(list->width() - 2, 5);
        QTest::mouseClick(list->childAt(end), Qt::LeftButton, {}, end);
        QCOMPARE(box.changed.count(), ++clicks);
        QTest::mouseClick(list, Qt::RightButton, {}, end);
        QTest::mouseRelease(list, Qt::LeftButton, {}, end);
        QCOMPARE(box.changed.count(), clicks);
        QVERIFY(box.isOpen());
    }

    // A click on the only entry counts, and a list of none does not open.
    void shortLists()
    {
        QvelWidgetEnumFlags none({{0, "None"}}), one({{8, "Only"}});
        for (auto* editor : {&none, &one}) {
            editor->show();
            auto* combo = editor->findChild<QComboBox*>();
            QCOMPARE(combo->toolTip(), QString(editor == &none ? "None" : ""));
            combo->showPopup();
            QCOMPARE(combo->view()->isVisible(), editor == &one);
        }
        auto* check = one.findChild<QComboBox*>()->view()->findChild<QCheckBox*>();
        QTest::mouseClick(check, Qt::LeftButton, {}, QPoint(10, check->height() / 2));
        QCOMPARE(one.enumValue(), 8);
        // Any bit that a name has in common with the value counts.
        QvelWidgetEnumFlags flags({{3, "Both"}, {4, "Other"}});
        flags.setEnumValue(1);
        QCOMPARE(flags.enumValue(), 3);
    }

    void keys()
    {
        Box box;
        box.combo->setFocus();
        box.press(Qt::Key_F4);
        box.press(Qt::Key_Space); // on the first entry at once
        QCOMPARE(box.editor.accessLevelMask(), OpcUa_Byte(1));
        for (Qt::Key key : {Qt::Key_Down, Qt::Key_Up, Qt::Key_End, Qt::Key_Home, Qt::Key_Down})
            box.press(key);
        QCOMPARE(box.changed.count(), 1); // moving changes nothing
        for (Qt::Key key : {Qt::Key_Space, Qt::Key_Space, Qt::Key_Down, Qt::Key_Space})
            box.press(key);
        QCOMPARE(box.editor.accessLevelMask(), OpcUa_Byte(5));
        QCOMPARE(box.changed.count(), 4);
        for (Qt::Key key : {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Enter}) {
            box.combo->showPopup();
            QVERIFY(box.isOpen());
            box.press(key);
            QVERIFY(!box.isOpen());
        }
        QCOMPARE(box.changed.count(), 4);
        // The host's value reaches a list that is open, and is told once for each entry.
        box.combo->showPopup();
        box.editor.setAccessLevelMask(3);
        QCOMPARE(box.changed.count(), 6);
        box.press(Qt::Key_Home);
        box.press(Qt::Key_Space);
        QCOMPARE(box.editor.accessLevelMask(), OpcUa_Byte(2));
        // The current entry has the colours of a selection.
        auto* current = box.combo->view()->viewport()->findChild<QCheckBox*>();
        const QColor colour = current->grab().toImage().pixelColor(current->width() - 2, 2);
        QCOMPARE(colour, box.combo->palette().color(QPalette::Highlight));
    }

    void choices()
    {
        QvelWidgetEnum named({{0, "None"}, {4, "Execute"}});
        auto* combo = named.findChild<QComboBox*>();
        named.setEnumValue(4);
        QCOMPARE(combo->currentText(), QString("4 (Execute)"));
        QvelWidgetValueRank rank;
        QCOMPARE(rank.valueRank(), -3);
        combo = rank.findChild<QComboBox*>();
        QStringList texts;
        for (int i = 0; i < combo->count(); ++i)
            texts << combo->itemText(i);
        QCOMPARE(texts.join(", "),
                 QString("ScalarOrOneDimension (-3), Any (-2), Scalar (-1), "
                         "OneOrMoreDimensions (0), OneDimension (1), TwoDimensions (2)"));
    }

    // Each bit under its name, and none without one.
    void bits_data()
    {
        QTest::addColumn<QByteArray>("editor");
        QTest::addColumn<QString>("names"); // from the lowest bit on
        const auto row = [](const char* editor, const char* names) {
            QTest::newRow(editor) << QByteArray(editor) << QString(names);
        };
        row("QvelWidgetWriteMask",
            "AccessLevel ArrayDimensions BrowseName ContainsNoLoops DataType Description "
            "DisplayName EventNotifier Executable Historizing InverseName IsAbstract "
            "MinimumSamplingInterval NodeClass NodeId Symmetric UserAccessLevel UserExecutable "
            "UserWriteMask ValueRank WriteMask ValueForVariableType");
        row("QvelWidgetBrowseResultMask",
            "ReferenceTypeId IsForward NodeClass BrowseName DisplayName TypeDefinition");
        row("QvelWidgetDiagnosticsMask",
            "ServiceSymbolicId ServiceLocalizedText ServiceAdditionalInfo ServiceInnerStatusCode "
            "ServiceInnerDiagnostics OperationSymbolicId OperationLocalizedText "
            "OperationAdditionalInfo OperationInnerStatusCode OperationInnerDiagnostics");
        row("QvelWidgetEventNotifierMask", "SubscribeToEvents None HistoryRead HistoryWrite");
        row("QvelWidgetAccessLevelMask", "CurrentRead CurrentWrite HistoryRead HistoryWrite");
    }
    void bits()
    {
        QFETCH(QByteArray, editor);
        QFETCH(QString, names);
        Editor e(createNamed(editor));
        const bool isByte = e.value().type() == OpcUaType_Byte;
        for (int bit = 0; bit < (isByte ? 8 : 32); ++bit) {
            const OpcUa_UInt32 mask = 1u << bit;
            const V value = isByte ? V(OpcUa_Byte(mask)) : V(mask);
            e.setValue(value);
            const QString name = names.split(' ').value(bit, "None");
            QCOMPARE(e.widget->findChild<QComboBox*>()->toolTip(), name);
            QCOMPARE(e.value() == value, name != "None");
        }
    }

    // To the eye, in the tool tip, and to assistive technology.
    void closedBoxTellsTheNames()
    {
        QvelEnumFlagsComboBox box({{0, "None"}, {1, "Read"}, {2, "Write"}, {4, "Execute"}});
        const QSize wide(400, box.sizeHint().height()), narrow(100, wide.height());
        auto* accessible = QAccessible::queryAccessibleInterface(&box);
        const QList<QPair<int, QString>> states = {{0, "None"}, {7, "Read | Write | Execute"}};
        for (const auto& [flags, text] : states) {
            box.setFlags(flags);
            box.resize(wide);
            QCOMPARE(box.toolTip(), text);
            QCOMPARE(accessible->text(QAccessible::Value), text);
            QVERIFY(box.grab().toImage() == plainBox(text, wide));
        }
        box.resize(narrow);
        bool elided = false;
        for (int length = 1; length < states[1].second.size(); ++length)
            elided |= box.grab().toImage() ==
                      plainBox(states[1].second.left(length) + QChar(0x2026), narrow);
        QVERIFY(elided);
        QvelEnumFlagsComboBox markup({{1, "<b>A</b>"}});
        markup.setFlags(1);
        QCOMPARE(markup.toolTip(), QString("<span>&lt;b&gt;A&lt;/b&gt;</span>"));
        accessible = QAccessible::queryAccessibleInterface(&markup);
        QCOMPARE(accessible->text(QAccessible::Value), QString("<b>A</b>"));
    }
};

QTEST_MAIN(FlagsEditorsTest)
#include "tst_flagseditors.moc"

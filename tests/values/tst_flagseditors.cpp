// Check-box lists as a person uses them, and the texts of the editors that offer choices.

#include "editorcases.h"
#include "support/warnings.h"

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

class PaintCounter : public QObject
{
public:
    int count = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::Paint;
        return false;
    }
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
        QVERIFY(box.isOpen());
        OpcUa_Byte expected = 0;
        int clicks = 0;
        for (int row : {0, 2, 3, 0, 1, 1, 1}) { // also twice on the same entry
            box.click(row);
            expected ^= OpcUa_Byte(1 << row);
            QVERIFY(box.isOpen());
            QCOMPARE(box.changed.count(), ++clicks);
            QCOMPARE(box.editor.accessLevelMask(nullptr), expected);
            QCOMPARE(box.changed.constLast().constFirst().value<OpcUa_Byte>(), expected);
        }
        QCOMPARE(box.combo->toolTip(), QString("CurrentWrite | HistoryRead | HistoryWrite"));
        // Opened again, any entry can be clicked without moving the mouse, as by touch.
        box.press(Qt::Key_Escape);
        QVERIFY(!box.isOpen());
        for (int row : {1, 0}) {
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
        QVERIFY(check);
        QTest::mouseClick(check, Qt::LeftButton, {}, QPoint(10, check->height() / 2));
        QCOMPARE(one.enumValue(nullptr), 8);
    }

    void keys()
    {
        Box box;
        box.combo->setFocus();
        box.press(Qt::Key_F4);
        QVERIFY(box.isOpen());
        box.press(Qt::Key_Space); // on the first entry at once
        QCOMPARE(box.editor.accessLevelMask(nullptr), OpcUa_Byte(1));
        for (Qt::Key key : {Qt::Key_Down, Qt::Key_Up, Qt::Key_End, Qt::Key_Home, Qt::Key_Down})
            box.press(key);
        QCOMPARE(box.changed.count(), 1); // moving changes nothing
        box.press(Qt::Key_Space);
        QCOMPARE(box.editor.accessLevelMask(nullptr), OpcUa_Byte(3));
        box.press(Qt::Key_Space);
        box.press(Qt::Key_Down);
        box.press(Qt::Key_Space);
        QCOMPARE(box.editor.accessLevelMask(nullptr), OpcUa_Byte(5));
        QCOMPARE(box.changed.count(), 4);
        QVERIFY(box.isOpen());
        for (Qt::Key key : {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Enter}) {
            box.combo->showPopup();
            QVERIFY(box.isOpen());
            box.press(key);
            QVERIFY(!box.isOpen());
        }
        QCOMPARE(box.editor.accessLevelMask(nullptr), OpcUa_Byte(5));
        QCOMPARE(box.changed.count(), 4);
        // The host's value reaches a list that is open, and is told once for each entry.
        box.combo->showPopup();
        box.editor.setAccessLevelMask(3);
        QCOMPARE(box.changed.count(), 6);
        box.press(Qt::Key_Home);
        box.press(Qt::Key_Space);
        QCOMPARE(box.editor.accessLevelMask(nullptr), OpcUa_Byte(2));
    }

    void choices()
    {
        QvelWidgetEnum named(flagNames());
        auto* combo = named.findChild<QComboBox*>();
        named.setEnumValue(4);
        QCOMPARE(combo->currentText(), QString("4 (Execute)"));
        named.setEnumValue(7);
        QCOMPARE(combo->currentIndex(), -1);
        QvelWidgetValueRank rank;
        QCOMPARE(rank.valueRank(nullptr), -3);
        QStringList texts;
        combo = rank.findChild<QComboBox*>();
        for (int i = 0; i < combo->count(); ++i)
            texts << combo->itemText(i);
        QCOMPARE(texts.join(", "),
                 QString("ScalarOrOneDimension (-3), Any (-2), Scalar (-1), "
                         "OneOrMoreDimensions (0), OneDimension (1), TwoDimensions (2)"));
    }

    // The editors read the first enumeration: "None", then single bits in their order.
    void declaredBits()
    {
        const QList<QPair<const QMetaObject*, int>> masks = {
            {&QvelAttributeWriteMask::staticMetaObject, 0x3fffff},
            {&QvelBrowseResultMask::staticMetaObject, 0x3f},
            {&QvelDiagnosticsMask::staticMetaObject, 0x3ff},
            {&QvelEventNotifierMask::staticMetaObject, 0xd},
            {&QvelAccessLevelMask::staticMetaObject, 0xf}};
        for (const auto& [mask, bits] : masks) {
            const QMetaEnum single = mask->enumerator(0);
            QCOMPARE(QByteArray(mask->enumerator(1).name()),
                     single.enumName() + QByteArray("Mask"));
            QVERIFY(single.isFlag() && mask->enumerator(1).isFlag());
            QCOMPARE(single.keyToValue("None"), 0);
            int seen = 0;
            for (int i = 1; i < single.keyCount(); ++i) {
                QCOMPARE(qPopulationCount(uint(single.value(i))), 1u);
                QVERIFY(single.value(i) > seen);
                seen |= single.value(i);
            }
            QCOMPARE(seen, bits);
        }
    }

    void closedBoxShowsTheNames()
    {
        QvelEnumFlagsComboBox box(flagNames());
        const QSize wide(400, box.sizeHint().height());
        box.resize(wide);
        QCOMPARE(box.toolTip(), QString("None"));
        QVERIFY(box.grab().toImage() == plainBox("None", wide));
        box.setFlags(7 | std::numeric_limits<int>::min());
        const QString text = "Highest | Read | Write | Execute";
        QCOMPARE(box.toolTip(), text);
        QVERIFY(box.grab().toImage() == plainBox(text, wide));

        const QSize narrow(100, wide.height());
        box.resize(narrow);
        const QImage image = box.grab().toImage();
        bool elided = false;
        for (int length = 1; length < text.size(); ++length)
            elided |= image == plainBox(text.left(length) + QChar(0x2026), narrow);
        QVERIFY(elided);
    }

    void allBitsPaintOnce()
    {
        QvelWidgetWriteMask editor;
        auto* combo = editor.findChild<QvelFlagsComboBoxBase*>();
        editor.show();
        QVERIFY(QTest::qWaitForWindowExposed(&editor));
        QCoreApplication::processEvents();
        PaintCounter paints;
        combo->installEventFilter(&paints);
        QSignalSpy changed(combo, &QvelFlagsComboBoxBase::flagsChanged);
        editor.setAttributeWriteMask(0x3fffff);
        QCOMPARE(changed.count(), 22);
        QCoreApplication::processEvents();
        QCOMPARE(paints.count, 1);
        editor.setAttributeWriteMask(0x3ffffe);
        QCOMPARE(changed.count(), 23);
        editor.setAttributeWriteMask(0x3ffffe);
        QCOMPARE(changed.count(), 23);
    }
};

QTEST_MAIN(FlagsEditorsTest)
#include "tst_flagseditors.moc"

// Where a window manager puts the dialogs of arrays, and what it does to them.

#include "elementcases.h"

class ElementWindowsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // A dialog stays where it was opened, and a cell's dialog at its cell.
    void stayInPlace()
    {
        for (OpcUa_UInt32 rows : {5, 15, 25, 35}) {
            QvelEditWidgetArray field;
            field.setInitialValue(OpcUaType_NodeId, rows);
            field.setGeometry(300, 200, 400, 80);
            field.show();
            QVERIFY(QTest::qWaitForWindowActive(&field));
            QTest::qWait(100);
            const QPoint place = field.mapToGlobal(field.findChild<QLineEdit*>()->pos());
            QVERIFY(inDialog(&field, [&](const Parts& parts) {
                const QSize size = parts.dialog->size();
                QTest::qWait(300);
                QCOMPARE(parts.dialog->frameGeometry().topLeft(), place);
                QCOMPARE(parts.dialog->size(), size);
                QVERIFY(parts.open(3));
                const QPoint cell = parts.table->viewport()->mapToGlobal(
                    parts.table->visualRect(parts.cell(3)).topLeft());
                QTest::qWait(300);
                QCOMPARE(parts.editor(3)->frameGeometry().topLeft(), cell);
                QVERIFY(parts.editor(3)->isActiveWindow());
                QTest::keyClick(parts.editor(3), Qt::Key_Escape);
                QVERIFY(QTest::qWaitFor([&] { return parts.table->hasFocus(); }));
            }));
        }
    }

    // An edit, and a size that the user gave, outlive being minimised, and so does a cell's dialog.
    void areMinimised()
    {
        for (auto [type, keys] :
             {std::pair(OpcUaType_ByteString, "0aff"), {OpcUaType_NodeId, "85"}}) {
            QvelDialogWidgetArray dialog(zeros(type, 30));
            dialog.show();
            QVERIFY(QTest::qWaitForWindowActive(&dialog));
            const Parts parts(&dialog);
            dialog.resize(dialog.width(), 200);
            QTest::keyClicks(parts.open(1), keys);
            const QPointer<QWidget> editor = parts.editor(1);
            QWidget* window = editor->isWindow() ? editor.data() : &dialog;
            window->showMinimized();
            QTest::qWait(300);
            QVERIFY(editor || window == &dialog); // Qt writes what is in a cell that is left
            window->showNormal();
            QTest::qWait(300);
            QCOMPARE(dialog.height(), 200);
            if (editor)
                QTest::keyClick(editor->focusWidget(), Qt::Key_Return);
            QTRY_COMPARE(parts.text(1).remove(' '), QString(keys));
        }
    }
};

QTEST_MAIN(ElementWindowsTest)
#include "tst_elementwindows.moc"

// Where a window manager puts the dialogs of arrays, and what it does to them.

#include "elementcases.h"

#include <QtWidgets/QVBoxLayout>

class ElementWindowsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // A dialog stays where it was opened, and a cell's dialog at its cell.
    void stayInPlace()
    {
        for (int round = 0; round < 4; ++round) {
            QWidget host;
            auto* layout = new QVBoxLayout(&host);
            QvelEditWidgetArray field;
            layout->addWidget(&field);
            field.setInitialValue(OpcUaType_NodeId, OpcUa_UInt32(5 + 10 * round));
            host.setGeometry(300, 200, 400, 80);
            host.show();
            QVERIFY(QTest::qWaitForWindowActive(&host));
            QTest::qWait(100);
            auto* line = field.findChild<QLineEdit*>();
            const QPoint place = field.mapToGlobal(line->pos());
            inDialog(&field, [&](const Parts& parts) {
                const QSize size = parts.dialog->size();
                QTest::qWait(300);
                QCOMPARE(parts.dialog->frameGeometry().topLeft(), place);
                QCOMPARE(parts.dialog->size(), size);
                QVERIFY(parts.open(3));
                const QPointer<QWidget> editor = parts.editor(3);
                const QPoint cell = parts.table->viewport()->mapToGlobal(
                    parts.table->visualRect(parts.cell(3)).topLeft());
                QTest::qWait(300);
                QCOMPARE(editor->frameGeometry().topLeft(), cell);
                QVERIFY(editor->isActiveWindow());
                QTest::keyClick(editor, Qt::Key_Escape);
                QVERIFY(QTest::qWaitFor([&] { return parts.table->hasFocus(); }));
            });
        }
    }

    // An edit, and a size that the user gave, outlive being minimised.
    void areMinimised()
    {
        QvelDialogWidgetArray dialog(zeros(OpcUaType_ByteString, 30));
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        const Parts parts(&dialog);
        dialog.resize(dialog.width(), 200);
        QTest::keyClicks(parts.open(1), "0aff");
        dialog.showMinimized();
        QTest::qWait(300);
        dialog.showNormal();
        QTest::qWait(300);
        QCOMPARE(dialog.height(), 200);
        QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : parts.table,
                        Qt::Key_Return);
        QTRY_COMPARE(parts.text(1), QString("0a ff"));
    }
};

QTEST_MAIN(ElementWindowsTest)
#include "tst_elementwindows.moc"

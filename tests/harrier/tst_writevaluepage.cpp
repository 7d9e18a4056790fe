#include "support/warnings.h"
#include "writevaluepage.h"

#include <Kestrel/QvelWidgetVariant>

#include <QtTest/QtTest>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QPlainTextEdit>

class WriteValuePageTest : public QObject
{
    Q_OBJECT

    static QString shown(const WriteValuePage& page)
    {
        return page.findChild<QPlainTextEdit*>()->toPlainText();
    }

private Q_SLOTS:
    void init() { failOnWarnings(); }

    void everyExampleIsShown()
    {
        WriteValuePage page;
        page.show();
        auto* examples = page.findChild<QListWidget*>();
        const QStringList parts = {"Water treatment", "{0, 1, 2", "{Pump, ",
                                   "{{0, 1.5",        "{0, 1, 2", "{0, 1, 2",
                                   " more}",          "{7, {0, ", "{7, "};
        QCOMPARE(examples->count(), parts.size());
        for (int row = 0; row < examples->count(); ++row) {
            QTest::keyClick(examples, row == 0 ? Qt::Key_Home : Qt::Key_Down);
            QCOMPARE(examples->currentRow(), row);
            QVERIFY2(shown(page).contains(parts[row]), qPrintable(shown(page)));
        }
    }

    void typedValueIsShown()
    {
        WriteValuePage page;
        page.show();
        auto* editor = page.findChild<QvelWidgetVariant*>();
        UaVariant seven;
        seven.setInt16(7);
        editor->setValue(seven);
        QCOMPARE(shown(page), "7");
        QLineEdit* line = nullptr;
        for (auto* edit : editor->findChildren<QLineEdit*>()) {
            if (edit->text() == "7")
                line = edit;
        }
        QVERIFY(line);
        QTest::keyClicks(line, "x");
        QCOMPARE(shown(page), "0"); // what text that is no number counts as
        bool isMarked = false;
        for (auto* label : page.findChildren<QLabel*>())
            isMarked |= label->text() == "not valid";
        QVERIFY(isMarked);
    }
};

QTEST_MAIN(WriteValuePageTest)
#include "tst_writevaluepage.moc"

#include <Kestrel/QvelDialogWidgetBase>
#include <Kestrel/QvelDisplayDialog>
#include <Kestrel/QvelEnumInfo>

#include "support/warnings.h"

#include <QtGui/QScreen>
#include <QtTest/QtTest>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QTextEdit>

using Names = QMap<int, QString>;

namespace {

class Dialog : public QvelDialogWidgetBase
{
public:
    using QvelDialogWidgetBase::QvelDialogWidgetBase;
    UaVariant value(bool*) const override { return {}; }
    void setValue(const UaVariant&) override {}
};

} // namespace

class EditorBasesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { failOnWarnings(); }

    void dialogStaysOnScreen_data()
    {
        const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
        QTest::addColumn<QPoint>("position");
        QTest::addColumn<QSize>("size");
        // What the frame is flush with: a corner of the area, or the position itself.
        QTest::addColumn<QString>("corner");
        const QSize size(200, 150);
        const QPoint end = area.bottomRight();
        QTest::newRow("inside") << QPoint(50, 60) << size << "";
        QTest::newRow("left, above") << QPoint(-80, -20) << size << "top left";
        QTest::newRow("right, below") << end - QPoint(10, 10) << size << "bottom right";
        QTest::newRow("too large")
            << QPoint(0, 0) << area.size() + QSize(100, 50) << "bottom right";
    }
    void dialogStaysOnScreen()
    {
        QFETCH(QPoint, position);
        QFETCH(QSize, size);
        QFETCH(QString, corner);
        Dialog dialog;
        dialog.resize(size);
        dialog.move(position);
        dialog.show();
        QVERIFY(dialog.windowFlags().testFlag(Qt::CustomizeWindowHint));
        QVERIFY(!dialog.windowFlags().testFlag(Qt::WindowCloseButtonHint));
        const QRect area = dialog.screen()->availableGeometry();
        const QRect frame = dialog.frameGeometry();
        if (corner == "bottom right")
            QCOMPARE(frame.bottomRight(), area.bottomRight());
        else
            QCOMPARE(frame.topLeft(), corner.isEmpty() ? position : area.topLeft());
    }

    void displayDialog_data()
    {
        QTest::addColumn<int>("flags");
        QTest::addColumn<QStringList>("buttons");
        QTest::newRow("editable") << 0 << QStringList{"Write", "Cancel"};
        QTest::newRow("read-only") << 1 << QStringList{"Close"};
        QTest::newRow("editable, wrapped") << 2 << QStringList{"Write", "Cancel"};
        QTest::newRow("read-only, wrapped") << 3 << QStringList{"Close"};
    }
    void displayDialog()
    {
        QFETCH(int, flags);
        QFETCH(QStringList, buttons);
        QvelDisplayDialog dialog{QvelDisplayDialog::QvelDisplayDialogFlags(flags)};
        QSignalSpy changed(&dialog, &QvelDisplayDialog::textChanged);
        auto* edit = dialog.findChild<QTextEdit*>();
        dialog.setText(QString(2000, 'x'));
        QCOMPARE(changed.count(), 1);
        dialog.resize(200, 200);
        dialog.show();

        QStringList visible;
        for (auto* button : dialog.findChildren<QPushButton*>()) {
            if (button->isVisible())
                visible << button->text().remove('&');
        }
        visible.sort();
        buttons.sort();
        QCOMPARE(visible, buttons);
        QCOMPARE(edit->horizontalScrollBar()->maximum() > 0, !(flags & 2));

        QTest::keyClicks(edit, "y");
        QCOMPARE(dialog.text().size(), flags & 1 ? 2000 : 2001);
    }

    void enumTexts_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<Names>("names");
        QTest::addColumn<int>("value");
        QTest::addColumn<QString>("text");
        const auto row = [](int kind, const Names& names, int value, const char* text) {
            QTest::addRow("%d, %d names, %s", kind, int(names.size()), text)
                << kind << names << value << QString(text);
        };
        const Names flags = {{0, "None"}, {1, "A"}, {2, "B"}, {4, "C"}};
        row(0, {}, 7, "7");
        row(0, flags, 1, "1");
        row(3, flags, 1, "1"); // a kind that there is none of
        row(1, {{1, "A"}}, 1, "1 (A)");
        row(1, {{1, "A"}}, 2, "2");
        row(1, {{-3, "%1 low"}}, -3, "-3 (%1 low)");
        row(2, flags, 5, "5 (A | C)");
        row(2, flags, 0, "0 (None)");
        row(2, flags, 8, "8"); // a bit without a name is not "None"
        row(2, flags, -1, "-1 (A | B | C)");
        row(2, {{1, "A"}}, 0, "0");
        row(2, {{1, "A"}}, 8, "8");
        row(2, {{3, "AB"}}, 1, "1 (AB)"); // any common bit
        row(2, {{INT_MIN, "H"}, {1, "A"}}, INT_MIN, "-2147483648 (H)");
    }
    void enumTexts()
    {
        QFETCH(int, kind);
        QFETCH(Names, names);
        QvelEnumInfo info;
        info.kind = kind;
        info.values = names;
        QFETCH(int, value);
        QTEST(info.toString(value), "text");
    }
};

QTEST_MAIN(EditorBasesTest)
#include "tst_editorbases.moc"

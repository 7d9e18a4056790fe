#include <Kestrel/QvelDialogWidgetBase>
#include <Kestrel/QvelDisplayDialog>

#include "support/warnings.h"

#include <QtGui/QScreen>
#include <QtTest/QtTest>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QTextEdit>

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
};

QTEST_MAIN(EditorBasesTest)
#include "tst_editorbases.moc"

// Typing into the masked lines of a StatusCode and a Guid.

#include <Kestrel/QvelWidgetGuid>
#include <Kestrel/QvelWidgetStatusCode>
#include <Kestrel/UaVariant>

#include "support/warnings.h"

#include <QtTest/QtTest>
#include <QtWidgets/QLineEdit>

class MaskedEditorsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { failOnWarnings(); }

    void typed_data()
    {
        QTest::addColumn<bool>("isGuid");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        const QString digits = "0F1e2d3c4b5a69788796a5b4c3d2e1f0";
        const QString guid = "{0F1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}";
        QTest::newRow("guid, digits") << true << digits << guid << true;
        QTest::newRow("guid, whole") << true << guid << guid << true;
        QTest::newRow("guid, no digits between") << true << "zz" + digits << guid << true;
        QTest::newRow("guid, too long") << true << digits + "77" << guid << true;
        QTest::newRow("guid, digit missing")
            << true << digits.chopped(1) << guid.chopped(2) + "}" << false;
        QTest::newRow("guid, nothing") << true << ""
                                       << "{----}" << false;
        QTest::newRow("status code") << false << "80340000"
                                     << "0x80340000" << true;
        QTest::newRow("status code, upper case") << false << "80AB0000"
                                                 << "0x80AB0000" << true;
        QTest::newRow("status code, few digits") << false << "8"
                                                 << "0x8" << true;
        QTest::newRow("status code, nothing") << false << ""
                                              << "0x" << false;
    }
    void typed()
    {
        QFETCH(bool, isGuid);
        QFETCH(QString, keys);
        QFETCH(QString, text);
        QFETCH(bool, valid);
        std::unique_ptr<QvelWidgetBase> editor;
        if (isGuid)
            editor.reset(new QvelWidgetGuid);
        else
            editor.reset(new QvelWidgetStatusCode);
        editor->show();
        auto* edit = editor->findChild<QLineEdit*>();
        edit->home(false);
        QTest::keyClicks(edit, keys);
        QCOMPARE(edit->text(), text);
        bool ok = !valid;
        const UaVariant value = editor->value(&ok);
        QCOMPARE(ok, valid);
        QCOMPARE(value.isEmpty(), !valid);
        if (!valid)
            return;
        const QString shown = QString::number(value.toStatusCode().code(), 16);
        QCOMPARE(isGuid ? QString(value.toString().toUtf8()) : "0x" + shown, text.toLower());
    }

    void statusCodeIsPadded()
    {
        QvelWidgetStatusCode editor;
        auto* edit = editor.findChild<QLineEdit*>();
        editor.setStatusCode(0x80000000u);
        QCOMPARE(edit->text(), QString("0x80000000"));
        editor.setStatusCode(0x00ba0000u);
        QCOMPARE(edit->text(), QString("0x00ba0000"));
        editor.setStatusCode(0);
        QCOMPARE(edit->text(), QString("0x00000000"));
    }
};

QTEST_MAIN(MaskedEditorsTest)
#include "tst_maskededitors.moc"

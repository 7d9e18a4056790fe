// What a person types into the lines of a NodeId, a Guid and a StatusCode.

#include "editorcases.h"
#include "support/warnings.h"

#include <QtTest/QtTest>
#include <QtWidgets/QSpinBox>

class TypedTextsTest : public QObject
{
    Q_OBJECT

    static UaByteString bytes(const char* hex) { return UaByteString(QByteArray::fromHex(hex)); }

private Q_SLOTS:
    void init() { failOnWarnings(); }

    void identifiers_data()
    {
        QTest::addColumn<QByteArray>("editor");
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<UaNodeId>("expected");
        const auto row = [](int type, const char* text, bool valid, const UaNodeId& id) {
            for (const char* editor : {"QvelWidgetNodeId", "QvelDialogWidgetNodeId"})
                QTest::addRow("%s, %d, %s", editor, type, text)
                    << QByteArray(editor) << type << QString(text) << valid << id;
        };
        row(0, "85", true, UaNodeId(85, 3));
        row(0, "2147483647", true, UaNodeId(2147483647, 3));
        row(0, "21474836470", true, UaNodeId(2147483647, 3)); // the validator takes no more
        row(0, "-1", false, UaNodeId(0, 3));
        row(0, "", false, UaNodeId(0, 3));
        row(1, "Pump <b>1</b>", true, UaNodeId(UaString("Pump <b>1</b>"), 3));
        row(1, "", true, UaNodeId(UaString(""), 3));
        row(2, "{0F1E2D3C-4b5a-6978-8796-a5b4c3d2e1f0}", true,
            UaNodeId(guidOf("0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0"), 3));
        row(2, "{0F1E", false, UaNodeId());
        row(3, "0xAbCd", true, UaNodeId(bytes("abcd"), 3));
        row(3, "0XabCD", true, UaNodeId(bytes("abcd"), 3));
        row(3, "0x", true, UaNodeId(bytes(""), 3));
        row(3, "0xABC", false, UaNodeId());
        row(3, "0xGG", true, UaNodeId(bytes(""), 3));
    }
    void identifiers()
    {
        QFETCH(QByteArray, editor);
        QFETCH(int, type);
        QFETCH(QString, text);
        QFETCH(bool, valid);
        QFETCH(UaNodeId, expected);
        const Editor e = editorNamed(editor);
        e.widget->show();
        e.widget->findChild<QSpinBox*>()->setValue(3);
        e.widget->findChild<QComboBox*>()->setCurrentIndex(type);
        auto* line = controls<QLineEdit>(e.widget.get()).constLast();
        line->setFocus();
        line->selectAll();
        QTest::keyClick(line, Qt::Key_Delete);
        if (type == 2)
            line->home(false);
        QTest::keyClicks(line, text);

        const UaVariant id = variantOf(&UaVariant::setNodeId, expected);
        bool ok = !valid;
        QVERIFY(e.value(&ok) == (valid ? id : UaVariant()));
        QCOMPARE(ok, valid);
        // Without a flag the fallback comes through, and the signals carry it.
        QVERIFY(e.typed(nullptr) == id);
        for (const Told& told : e.told->mid(e.told->size() - 2))
            QVERIFY(told.value == id);
    }

    // Texts that no key lets in, but that a host can set.
    void identifiersOfTheHost()
    {
        QvelWidgetNodeId editor;
        auto* combo = editor.findChild<QComboBox*>();
        auto* line = controls<QLineEdit>(&editor).constLast();
        combo->setCurrentIndex(OpcUa_IdentifierType_Opaque);
        bool ok = false;
        for (const char* text : {"0x0x1F", "1F", "0X1F", "10xF", "0x1f"}) {
            line->setText(text);
            QVERIFY2(editor.nodeId(&ok) == UaNodeId(bytes("1f"), 0) && ok, text);
        }
        line->setText("0x1F\n");
        QVERIFY(editor.nodeId(&ok).isNull() && !ok);
        // Control characters, half a surrogate pair and NUL are a String, and nothing else.
        const QString odd = QString("a\u202e\u0001z") + QChar(0xd800) + QChar(0);
        for (int type = 0; type < 4; ++type) {
            combo->setCurrentIndex(type);
            line->setText(odd);
            editor.value(&ok);
            QCOMPARE(ok, type == OpcUa_IdentifierType_String);
        }
    }

    void typeChangesTheDefaultText()
    {
        QvelWidgetNodeId editor;
        auto* combo = editor.findChild<QComboBox*>();
        auto* line = controls<QLineEdit>(&editor).constLast();
        QCOMPARE(line->text(), QString("0"));
        const QStringList texts = {"0", "", "{00000000-0000-0000-0000-000000000000}", "0x0"};
        const QStringList names = {"Numeric", "String", "Guid", "Opaque"};
        for (int type : {1, 2, 3, 0}) {
            QTest::keyClick(combo, type ? Qt::Key_Down : Qt::Key_Home);
            QCOMPARE(combo->currentText(), names[type]);
            QCOMPARE(line->text(), texts[type]);
        }
        combo->setCurrentIndex(3);
        bool ok = true;
        QVERIFY(editor.value(&ok).isEmpty() && !ok); // "0x0" is an odd number of digits
    }

    void masks_data()
    {
        QTest::addColumn<QByteArray>("editor");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        const QString digits = "0F1e2d3c4b5a69788796a5b4c3d2e1f0";
        const QString guid = "{0F1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}";
        const auto row = [](const char* editor, const QString& keys, const QString& text,
                            bool valid) {
            QTest::addRow("%s, %s", editor, qPrintable(keys))
                << QByteArray(editor) << keys << text << valid;
        };
        row("QvelWidgetGuid", digits, guid, true);
        row("QvelWidgetGuid", guid, guid, true);
        row("QvelWidgetGuid", "zz" + digits, guid, true);
        row("QvelWidgetGuid", digits + "77", guid, true);
        row("QvelWidgetGuid", digits.chopped(1), guid.chopped(2) + "}", false);
        row("QvelWidgetGuid", "", "{----}", false);
        row("QvelWidgetStatusCode", "80340000", "0x80340000", true);
        row("QvelWidgetStatusCode", "80AB0000", "0x80AB0000", true);
        row("QvelWidgetStatusCode", "8", "0x8", true);
        row("QvelWidgetStatusCode", "", "0x", false);
    }
    void masks()
    {
        QFETCH(QByteArray, editor);
        QFETCH(QString, keys);
        QFETCH(QString, text);
        QFETCH(bool, valid);
        const Editor e = editorNamed(editor);
        e.widget->show();
        auto* line = e.widget->findChild<QLineEdit*>();
        line->home(false);
        QTest::keyClicks(line, keys);
        QCOMPARE(line->text(), text);
        bool ok = !valid;
        const UaVariant value = e.value(&ok);
        QCOMPARE(ok, valid);
        QCOMPARE(value.isEmpty(), !valid);
        if (value.type() == OpcUaType_Guid)
            QCOMPARE(QString(value.toString().toUtf8()), text.toLower());
        else if (valid)
            QCOMPARE(value.toStatusCode().code(), text.toUInt(nullptr, 16));
    }

    void statusCodeIsPadded()
    {
        QvelWidgetStatusCode editor;
        for (OpcUa_StatusCode code : {0x80000000u, 0x00ba0000u, 0u}) {
            editor.setStatusCode(code);
            QCOMPARE(editor.findChild<QLineEdit*>()->text(),
                     "0x" + QString::number(code, 16).rightJustified(8, '0'));
        }
    }
};

QTEST_MAIN(TypedTextsTest)
#include "tst_typedtexts.moc"

// Values that go into an editor come out again, but for the losses that are named here.

#include "editorcases.h"
#include "support/warnings.h"

#include <QtTest/QtTest>

class ValueRoundTripTest : public QObject
{
    Q_OBJECT

    static constexpr quint32 seed = 20240229;
    static constexpr int valuesPerEditor = 2000;

private Q_SLOTS:
    void initTestCase() { qInfo("seed %u, %d values for each editor", seed, valuesPerEditor); }
    void init()
    {
        // A font that lacks the script of a random text warns.
        if (qstrcmp(QTest::currentTestFunction(), "randomValues") != 0)
            failOnWarnings();
    }

    void randomValues_data()
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < editorCases().size(); ++i)
            QTest::newRow(editorCases().at(i).name) << i;
    }
    void randomValues()
    {
        QFETCH(int, index);
        const EditorCase& c = editorCases().at(index);
        QRandomGenerator random(seed);
        const Editor editor = c.create(0);
        for (int i = 0; i < valuesPerEditor; ++i) {
            const UaVariant value = c.random(random);
            editor.told->clear();
            editor.setValue(value);
            bool ok = false;
            const UaVariant back = editor.value(&ok);
            QVERIFY2(ok && back == value, QByteArray::number(i) + ": " +
                                              value.toFullString().toUtf8() + " became " +
                                              back.toFullString().toUtf8());
            if (!editor.told->isEmpty())
                QVERIFY(editor.told->constLast().value == value);
        }
    }

    void losses_data()
    {
        using V = UaVariant;
        QTest::addColumn<QByteArray>("editor");
        QTest::addColumn<UaVariant>("given");
        QTest::addColumn<UaVariant>("kept");
        const auto expanded = [](OpcUa_UInt32 server) {
            return variantOf(&V::setExpandedNodeId, UaExpandedNodeId(UaNodeId(1), "", server));
        };
        for (const char* editor :
             {"QvelDialogWidgetExpandedNodeId", "QvelEditWidgetExpandedNodeId"})
            QTest::addRow("server index past 2147483647, %s", editor)
                << QByteArray(editor) << expanded(0x80000000u) << expanded(0);
        QTest::newRow("value without a name")
            << QByteArray("QvelWidgetEnum") << V(OpcUa_Int32(7)) << V(OpcUa_Int32(0));
        QTest::newRow("bit without a name")
            << QByteArray("QvelWidgetEnumFlags") << V(OpcUa_Int32(9)) << V(OpcUa_Int32(1));
        QTest::newRow("three dimensions")
            << QByteArray("QvelWidgetValueRank") << V(OpcUa_Int32(3)) << V(OpcUa_Int32(0));
        QTest::newRow("event notifier without a name")
            << QByteArray("QvelWidgetEventNotifierMask") << V(OpcUa_Byte(3)) << V(OpcUa_Byte(1));
        QTest::newRow("access level without a name") << QByteArray("QvelWidgetAccessLevelMask")
                                                     << V(OpcUa_Byte(0xff)) << V(OpcUa_Byte(0x0f));
        QTest::newRow("attributes without a name")
            << QByteArray("QvelWidgetWriteMask") << V(OpcUa_UInt32(0xffffffff))
            << V(OpcUa_UInt32(0x3fffff));
        QTest::newRow("bytes that are no UTF-8")
            << QByteArray("QvelEditWidgetString") << variantOf(&V::setString, "a\xff\xc3")
            << variantOf(&V::setString, "a\xef\xbf\xbd\xef\xbf\xbd");
        QTest::newRow("any type, as its text")
            << QByteArray("QvelEditWidgetString") << V(OpcUa_Int32(-7))
            << variantOf(&V::setString, "-7");
    }
    void losses()
    {
        QFETCH(QByteArray, editor);
        QFETCH(UaVariant, given);
        QFETCH(UaVariant, kept);
        for (const EditorCase& c : editorCases()) {
            if (c.name != editor)
                continue;
            const Editor lossy = c.create(0);
            lossy.setValue(given);
            bool ok = false;
            QVERIFY(lossy.value(&ok) == kept);
            QVERIFY(ok);
            return;
        }
        QFAIL("no such editor");
    }

    void combinedFlagIsCheckedByAnyOfItsBits()
    {
        QvelWidgetEnumFlags flags({{3, "Both"}, {4, "Other"}});
        flags.setEnumValue(1);
        QCOMPARE(flags.enumValue(nullptr), 3);
    }

    // The value stays, its spelling does not.
    void spellingIsNormalised()
    {
        QvelWidgetByteString bytes;
        auto* edit = bytes.findChild<QLineEdit*>();
        QTest::keyClicks(edit, "0x0A0b");
        bytes.setValue(bytes.value(nullptr));
        QCOMPARE(edit->text(), QString("0a0b"));
        for (const char* empty : {"", "0x", "0X"}) {
            edit->setText(empty);
            bool ok = false;
            QVERIFY(bytes.byteString(&ok).length() == 0 && ok);
        }
        QvelWidgetGuid guid;
        edit = guid.findChild<QLineEdit*>();
        edit->setText("{0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0}");
        guid.setValue(guid.value(nullptr));
        QCOMPARE(edit->text(), QString("{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}"));
    }

    void typedHalfOfASurrogatePair()
    {
        QvelWidgetXmlElement xml;
        xml.findChild<QLineEdit*>()->setText(QString("a") + QChar(0xd800) + "b");
        QCOMPARE(xml.xmlElement(nullptr).bytes(), QByteArray("a?b"));
    }
};

QTEST_MAIN(ValueRoundTripTest)
#include "tst_valueroundtrip.moc"

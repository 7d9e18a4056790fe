// The texts of values, and the storage that values share.

#include "platform/stack/opcuastatuscodes.h"
#include "platform/types/uabytestring.h"
#include "platform/types/uadatetime.h"
#include "platform/types/uaexpandednodeid.h"
#include "platform/types/uaguid.h"
#include "platform/types/uanames.h"
#include "platform/types/uastacktypearray.h"
#include "platform/types/uastatuscode.h"
#include "platform/types/uavariant.h"
#include "support/warnings.h"

#include <QtCore/QDateTime>
#include <QtCore/QRandomGenerator>
#include <QtTest/QtTest>

#include <cstring>
#include <limits>

namespace {

constexpr quint32 seed = 20240229;
constexpr qint64 ticksPerSecond = 10'000'000;

template <class Setter, class T>
UaVariant variantOf(Setter setter, const T& value)
{
    UaVariant v;
    (v.*setter)(value);
    return v;
}

// An array, or a matrix, of stack elements.
template <class T>
UaVariant arrayOf(OpcUa_BuiltInType type, QList<T> elements, QList<OpcUa_UInt32> dimensions = {})
{
    OpcUa_Variant v = {};
    v.Datatype = OpcUa_Byte(type);
    if (dimensions.isEmpty()) {
        v.ArrayType = OpcUa_VariantArrayType_Array;
        v.Value.Array.Length = OpcUa_Int32(elements.size());
        v.Value.Array.Elements = elements.data();
    } else {
        v.ArrayType = OpcUa_VariantArrayType_Matrix;
        v.Value.Matrix.NoOfDimensions = OpcUa_Int32(dimensions.size());
        v.Value.Matrix.Dimensions = dimensions.data();
        v.Value.Matrix.Elements = elements.data();
    }
    return UaVariant(v);
}

QList<OpcUa_Int32> upTo(int count)
{
    QList<OpcUa_Int32> numbers;
    for (int i = 0; i < count; ++i)
        numbers << i;
    return numbers;
}

} // namespace

class ValuesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { failOnWarnings(); }

    void dateTimeRoundTrip()
    {
        QRandomGenerator random(seed);
        QList<qint64> ticks = {0,
                               1,
                               -1,
                               std::numeric_limits<qint64>::min(),
                               std::numeric_limits<qint64>::max(),
                               std::numeric_limits<qint64>::min() + 1,
                               -ticksPerSecond};
        for (int i = 0; i < 10'000; ++i) {
            const auto any = qint64(random.generate64());
            // Every magnitude, and whole seconds as well.
            ticks << any << (any >> random.bounded(64)) << any / ticksPerSecond * ticksPerSecond;
        }
        qInfo("seed %u, %d times", seed, int(ticks.size()));
        for (qint64 t : ticks) {
            const UaString text = UaDateTime(t).toString();
            bool ok = false;
            QCOMPARE(UaDateTime::fromString(text, &ok).ticks(), t);
            QVERIFY2(ok, text.toUtf8());
        }
    }

    // Against an implementation that knows nothing of ours.
    void dateTimeAgreesWithQt()
    {
        QRandomGenerator random(seed);
        const QDateTime origin(QDate(1601, 1, 1), QTime(0, 0), Qt::UTC);
        for (int i = 0; i < 2000; ++i) {
            const qint64 seconds = qint64(random.bounded(265'000'000'000.0)); // to the year 9998
            QCOMPARE(QString(UaDateTime(seconds * ticksPerSecond).toString().toUtf8()),
                     origin.addSecs(seconds).toString(Qt::ISODate));
        }
    }

    void dateTimeTexts_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("read"); // null when it is none
        const auto row = [](const char* text, const char* read) {
            QTest::newRow(text) << QByteArray(text) << QByteArray(read);
        };
        row("2024-02-29T13:14:15.1234567Z", "2024-02-29T13:14:15.1234567Z");
        row("2024-02-29", "2024-02-29T00:00:00Z");
        row(" 2024-02-29 13:14 ", "2024-02-29T13:14:00Z");
        row("2024-02-29t13:14:15.50z", "2024-02-29T13:14:15.5Z");
        row("2024-02-29T13:14:15,12345678Z", "2024-02-29T13:14:15.1234567Z");
        row("2024-02-29T00:30:00+01:00", "2024-02-28T23:30:00Z");
        row("2024-02-29T00:30:00-0100", "2024-02-29T01:30:00Z");
        row("-27627-04-19T00:00:00Z", "-27627-04-19T00:00:00Z");
        row("30828-09-14T02:48:05.4775807Z", "30828-09-14T02:48:05.4775807Z");
        for (const char* bad :
             {"", "x", "2023-02-29", "2024-13-01", "2024-02-29T24:00:00Z", "2024-02-29T13:60:00Z",
              "2024-02-29T13:14:60Z", "2024-02-29T13:14:15.Z", "2024-02-29T13:14:15Zz",
              "2024-02-29T00:00:00+24:00", "2024-02-29T00:00:00+01:60", "0000-01-01",
              "30828-09-14T02:48:05.4775808Z", "99999-01-01", "-99999-01-01",
              "\xd9\xa2\xd9\xa0\xd9\xa2\xd9\xa4-02-29"})
            row(bad, nullptr);
        QTest::newRow("long") << QByteArray(10'000'000, '1') << QByteArray();
        QTest::newRow("NUL") << QByteArray("2024-02-29\0", 11) << QByteArray();
    }
    void dateTimeTexts()
    {
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, read);
        bool ok = read.isNull();
        const UaDateTime time = UaDateTime::fromString(UaString(text), &ok);
        QCOMPARE(ok, !read.isNull());
        if (ok)
            QCOMPARE(time.toString().bytes(), read);
        else
            QVERIFY(time.isNull());
    }

    void daysBetween()
    {
        const auto time = [](const char* text) { return UaDateTime::fromString(text); };
        QCOMPARE(time("2024-02-28").daysTo(time("2024-03-01")), 2);
        QCOMPARE(time("2024-03-01").daysTo(time("2024-02-28")), -2);
        QCOMPARE(time("2024-02-28T12:00").daysTo(time("2024-02-29T11:59")), 0);
        QCOMPARE(time("1600-12-31T12:00").daysTo(time("1601-01-01T11:00")), 0);
        const UaDateTime first(std::numeric_limits<qint64>::min());
        const UaDateTime last(std::numeric_limits<qint64>::max());
        QCOMPARE(first.daysTo(last), 21350398);
        QCOMPARE(last.daysTo(first), -21350398);
    }

    void texts_data()
    {
        using V = UaVariant;
        QTest::addColumn<UaVariant>("value");
        QTest::addColumn<QByteArray>("bare");
        QTest::addColumn<QByteArray>("full"); // null when it is the same
        const auto row = [](const char* tag, const V& value, const char* bare,
                            const char* full = nullptr) {
            QTest::newRow(tag) << value << QByteArray(bare) << QByteArray(full ? full : bare);
        };
        const auto expanded = [](const UaNodeId& id, const char* uri, OpcUa_UInt32 server) {
            return variantOf(&V::setExpandedNodeId, UaExpandedNodeId(id, uri, server));
        };
        row("empty", V(), "");
        row("boolean", V(OpcUa_Boolean(true)), "true");
        row("sbyte", variantOf(&V::setSByte, OpcUa_SByte(-128)), "-128");
        row("byte", V(OpcUa_Byte(255)), "255");
        row("int64", variantOf(&V::setInt64, std::numeric_limits<qint64>::min()),
            "-9223372036854775808");
        row("uint64", variantOf(&V::setUInt64, std::numeric_limits<quint64>::max()),
            "18446744073709551615");
        row("float", variantOf(&V::setFloat, 0.1f), "0.1");
        row("double", variantOf(&V::setDouble, -1e300), "-1e+300");
        row("no number", variantOf(&V::setDouble, std::numeric_limits<double>::quiet_NaN()), "nan");
        row("string", variantOf(&V::setString, "a\nb"), "a\nb");
        row("time", variantOf(&V::setDateTime, UaDateTime(15'000'000)), "1601-01-01T00:00:01.5Z");
        row("bytes", variantOf(&V::setByteString, UaByteString(QByteArray("\x0A\xFF"))), "0aff");
        row("xml", variantOf(&V::setXmlElement, UaByteString(QByteArray("<a/>"))), "<a/>");
        row("status", variantOf(&V::setStatusCode, 0x80340000u), "BadNodeIdUnknown");
        row("node", variantOf(&V::setNodeId, UaNodeId("Pump", 2)), "Pump", "ns=2;s=Pump");
        row("null node", variantOf(&V::setNodeId, UaNodeId()), "0", "i=0");
        row("numeric node", variantOf(&V::setNodeId, UaNodeId(4294967295u, 1)), "4294967295",
            "ns=1;i=4294967295");
        UaGuid guid;
        guid.fromString("0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0");
        row("guid node", variantOf(&V::setNodeId, UaNodeId(guid, 3)),
            "{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}",
            "ns=3;g=0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0");
        row("opaque node",
            variantOf(&V::setNodeId, UaNodeId(UaByteString(QByteArray("\0\xff", 2)), 0)), "00ff",
            "b=AP8=");
        row("expanded, local", expanded(UaNodeId(85), "", 0), "85", "i=85");
        row("expanded, index", expanded(UaNodeId(85, 3), "", 1), "85", "svr=1;ns=3;i=85");
        row("expanded, URI before index", expanded(UaNodeId("x", 3), "urn:a", 0), "x",
            "nsu=urn:a;s=x");
        row("expanded, all", expanded(UaNodeId("s;%", 0), "urn:a;b%3Bc", 4294967295u), "s;%",
            "svr=4294967295;nsu=urn:a%3Bb%253Bc;s=s;%");
        row("name", variantOf(&V::setQualifiedName, UaQualifiedName("Pump", 2)), "2:Pump");
        row("name in namespace 0", variantOf(&V::setQualifiedName, UaQualifiedName("a:b", 0)),
            "a:b");
        row("text", variantOf(&V::setLocalizedText, UaLocalizedText("de", "Tor")), "Tor", "de:Tor");
        row("text without a locale", variantOf(&V::setLocalizedText, UaLocalizedText("", "Tor")),
            "Tor");
        row("array", arrayOf(OpcUaType_Int32, upTo(3)), "{0, 1, 2}");
        row("empty array", arrayOf(OpcUaType_Int32, upTo(0)), "{}");
        row("matrix", arrayOf(OpcUaType_Int32, upTo(6), {2, 3}), "{{0, 1, 2}, {3, 4, 5}}");
        row("matrix without elements", arrayOf(OpcUaType_Int32, upTo(0), {0, 3}), "{}");
        row("cube", arrayOf(OpcUaType_Int32, upTo(4), {2, 1, 2}), "{{{0, 1}}, {{2, 3}}}");
    }
    void texts()
    {
        QFETCH(UaVariant, value);
        QTEST(value.toString().bytes(), "bare");
        QTEST(value.toFullString().bytes(), "full");
    }

    void longArraysAreCounted()
    {
        constexpr int count = 1'000'000;
        const QList<QList<OpcUa_UInt32>> shapes = {{}, {1000, 1000}, {count, 1}, {1, count}};
        for (const auto& shape : shapes) {
            const QByteArray text = arrayOf(OpcUaType_Int32, upTo(count), shape).toString().bytes();
            static const QRegularExpression pattern("^\\{+0\\}?, \\{?1.*, \\{?(\\d+)\\}?, \\{?"
                                                    "\\.\\.\\. (\\d+) more\\}+$");
            const auto match = pattern.match(text);
            QVERIFY2(match.hasMatch() && text.size() < 260, text);
            QCOMPARE(match.captured(1).toInt() + 1 + match.captured(2).toInt(), count);
            QCOMPARE(text.count('{'), text.count('}'));
        }
        // An element alone can be longer than a line; it is not cut inside a character.
        QByteArray element = "x" + QByteArray("\xe6\xb0\xb4").repeated(1'000'000);
        const OpcUa_String stack = {OpcUa_Int32(element.size()), element.data()};
        const QString text =
            arrayOf<OpcUa_String>(OpcUaType_String, {stack, stack}).toString().toUtf8();
        QVERIFY(text.size() < 260 && text.endsWith("... 1 more}"));
        QVERIFY(!text.contains(QChar::ReplacementCharacter));
    }

    void bytesAreShared()
    {
        const UaByteString bytes(QByteArray(1000, 'x'));
        for (bool isXml : {false, true}) {
            UaVariant value;
            isXml ? value.setXmlElement(bytes) : value.setByteString(bytes);
            const auto stack = [&value] { return (*value).Value.ByteString.Data; };
            QCOMPARE(static_cast<const OpcUa_Byte*>(stack()), bytes.data());
            const UaByteString back = isXml ? value.toXmlElement() : value.toByteString();
            QCOMPARE(back.data(), bytes.data());
            // Of another type it has none.
            QVERIFY((isXml ? value.toByteString() : value.toXmlElement()).isNull());
            // Writing detaches, even from the only other holder.
            OpcUa_Variant* own = value.detach();
            QVERIFY(own->Value.ByteString.Data != bytes.data());
            own->Value.ByteString.Data[0] = 'y';
            QCOMPARE(bytes.bytes().at(0), 'x');
            QCOMPARE(back.bytes().at(0), 'x');
            QCOMPARE((isXml ? value.toXmlElement() : value.toByteString()).bytes().at(0), 'y');
        }
        // The variant keeps the bytes alive.
        UaVariant last;
        {
            const UaByteString inner(QByteArray(1000, 'z'));
            last.setByteString(inner);
        }
        QCOMPARE(last.toByteString().bytes(), QByteArray(1000, 'z'));
    }

    void guidTexts_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<bool>("good");
        const auto row = [](const QByteArray& text, bool good) {
            QTest::newRow(text) << text << good;
        };
        const QByteArray bare = "0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0";
        row('{' + bare + '}', true);
        row(bare, true);
        row('{' + bare.toUpper() + '}', true);
        row('{' + bare, false);
        row(bare.chopped(1), false);
        row(bare + '0', false);
        row(QByteArray(bare).replace('f', 'g'), false);
        row(QByteArray(bare).replace("4b5a-", "4b5-a"), false);
        row("", false);
    }
    void guidTexts()
    {
        QFETCH(QByteArray, text);
        QFETCH(bool, good);
        UaGuid guid;
        QCOMPARE(OpcUa_IsGood(guid.fromString(UaString(text))), good);
        QCOMPARE(guid.isNull(), !good);
        if (good)
            QCOMPARE(guid.toString().bytes(), QByteArray("{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}"));
    }

    void statusCodeNames()
    {
        QCOMPARE(UaStatusCode().toString().toUtf8(), "Good");
        QCOMPARE(UaStatusCode(0x80340000u).toString().toUtf8(), "BadNodeIdUnknown");
        QCOMPARE(UaStatusCode(0x80340480u).toString().toUtf8(), "BadNodeIdUnknown"); // info bits
        QCOMPARE(UaStatusCode(0x002d0000u).toString().toUtf8(), "GoodSubscriptionTransferred");
        QCOMPARE(UaStatusCode(0x8fff0000u).toString().toUtf8(), "0x8fff0000");
        QCOMPARE(UaStatusCode(0x00010000u).toString().toUtf8(), "0x00010000");
        QVERIFY(UaStatusCode(0x40000000u).isNotGood() && !UaStatusCode(0x40000000u).isBad());
    }

    void stringsKeepNullAndEmptyApart()
    {
        OpcUa_String stack = {};
        QCOMPARE(UaString("").copyTo(&stack), OpcUa_Good);
        QVERIFY(stack.Data && stack.Length == 0 && *stack.Data == '\0');
        QVERIFY(!UaString(&stack).isNull());
        QCOMPARE(UaString().copyTo(&stack), OpcUa_Good);
        QVERIFY(!stack.Data);
        QVERIFY(UaString(&stack).isNull() && UaString() == UaString(""));
        OpcUa_String_Clear(&stack);
    }

    void stringComparison()
    {
        OpcUa_String a = {}, b = {};
        const auto compare = [&](const char* x, const char* y, OpcUa_Int32 length,
                                 bool ignoreCase) {
            UaString(x).copyTo(&a);
            UaString(y).copyTo(&b);
            return OpcUa_String_StrnCmp(&a, &b, length, ignoreCase);
        };
        QCOMPARE(compare("abc", "abc", -1, false), 0);
        QVERIFY(compare("abc", "abd", -1, false) < 0);
        QVERIFY(compare("abc", "ab", -1, false) > 0);
        QCOMPARE(compare("abc", "abd", 2, false), 0);
        QVERIFY(compare("aBc", "abC", -1, false) != 0);
        QCOMPARE(compare("aBc", "abC", -1, true), 0);
        OpcUa_String_Clear(&a);
        QCOMPARE(OpcUa_String_StrnCmp(&a, &a, -1, false), 0);
        OpcUa_String_Clear(&b);
    }

    void variantSharesUntilWritten()
    {
        const UaVariant original = arrayOf(OpcUaType_Int32, upTo(3));
        UaVariant copy = original;
        const auto elements = [](const UaVariant& v) {
            return static_cast<OpcUa_Int32*>((*v).Value.Array.Elements);
        };
        QCOMPARE(elements(copy), elements(original));
        static_cast<OpcUa_Int32*>(copy.detach()->Value.Array.Elements)[1] = 77;
        QCOMPARE(elements(original)[1], 1);
        QCOMPARE(elements(copy)[1], 77);
        QVERIFY(copy != original);
        const auto* before = elements(copy);
        copy.detach();
        QCOMPARE(elements(copy), before); // the only holder keeps its storage
    }

    void unsoundVariantsAreCopiedAsFarAsTheyAreSound()
    {
        OpcUa_Variant counted = {};
        counted.Datatype = OpcUaType_String;
        counted.ArrayType = OpcUa_VariantArrayType_Array;
        counted.Value.Array.Length = 1000;
        const UaVariant array(counted);
        QCOMPARE(array.type(), OpcUaType_String);
        QCOMPARE((*array).Value.Array.Length, 0);

        const UaVariant matrix = arrayOf(OpcUaType_Int32, upTo(4), {65536, 65536, 65536, 65536});
        QCOMPARE(matrix.arrayType(), OpcUa_VariantArrayType_Matrix);
        QCOMPARE((*matrix).Value.Matrix.NoOfDimensions, 4);

        OpcUa_Variant unbacked = {};
        unbacked.Datatype = OpcUaType_Int32;
        unbacked.ArrayType = OpcUa_VariantArrayType_Matrix;
        unbacked.Value.Matrix.NoOfDimensions = 3;
        QVERIFY(OpcUa_Variant_Equal(&unbacked, &unbacked));

        const UaVariant sound = arrayOf(OpcUaType_Int32, upTo(6), {2, 3});
        QVERIFY(sound == arrayOf(OpcUaType_Int32, upTo(6), {2, 3}));
        QVERIFY(sound != arrayOf(OpcUaType_Int32, upTo(6), {3, 2}));
    }

    void stackTypeArray()
    {
        UaStackTypeArray<OpcUa_String> texts;
        QVERIFY(texts.resize(3));
        UaString("a").copyTo(&texts[0]);
        UaString("b").copyTo(&texts[2]);
        QVERIFY(texts.resize(1)); // the leak checker sees what this drops
        QVERIFY(texts.resize(4));
        QVERIFY(UaString(&texts[0]) == UaString("a") && !texts[3].Data);
        QVERIFY(!texts.resize(0x7fffffffu));
        QCOMPARE(texts.length(), 4u);
        UaStackTypeArray<OpcUa_String> other = std::move(texts);
        QCOMPARE(other.length(), 4u);
        QVERIFY(other.resize(0) && other.length() == 0);
    }
};

QTEST_GUILESS_MAIN(ValuesTest)
#include "tst_values.moc"

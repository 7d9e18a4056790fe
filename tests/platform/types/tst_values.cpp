#include "platform/stack/opcuastatuscodes.h"
#include "platform/types/uaguid.h"
#include "platform/types/uastacktypearray.h"
#include "platform/types/uastatuscode.h"
#include "platform/types/uavariant.h"
#include "support/warnings.h"

#include <QtTest/QtTest>

#include <cstring>

namespace {

// An Int32 array or matrix over malloc'ed memory, 0, 1, 2, ...
OpcUa_Variant numbers(OpcUa_Int32 count, std::initializer_list<OpcUa_UInt32> dimensions = {})
{
    OpcUa_Variant v = {};
    v.Datatype = OpcUaType_Int32;
    auto* elements = static_cast<OpcUa_Int32*>(OpcUa_Memory_Alloc(size_t(count) * 4));
    for (OpcUa_Int32 i = 0; i < count; ++i)
        elements[i] = i;
    if (dimensions.size()) {
        v.ArrayType = OpcUa_VariantArrayType_Matrix;
        const size_t bytes = dimensions.size() * sizeof(OpcUa_UInt32);
        v.Value.Matrix.NoOfDimensions = OpcUa_Int32(dimensions.size());
        v.Value.Matrix.Dimensions = static_cast<OpcUa_UInt32*>(OpcUa_Memory_Alloc(bytes));
        std::memcpy(v.Value.Matrix.Dimensions, dimensions.begin(), bytes);
        v.Value.Matrix.Elements = elements;
    } else {
        v.ArrayType = OpcUa_VariantArrayType_Array;
        v.Value.Array.Length = count;
        v.Value.Array.Elements = elements;
    }
    return v;
}

} // namespace

class ValuesTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { failOnWarnings(); }

    void guidTexts_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<bool>("good");
        const QByteArray bare = "0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0";
        QTest::newRow("braced") << '{' + bare + '}' << true;
        QTest::newRow("bare") << bare << true;
        QTest::newRow("upper case") << '{' + bare.toUpper() + '}' << true;
        QTest::newRow("half braced") << '{' + bare << false;
        QTest::newRow("short") << bare.chopped(1) << false;
        QTest::newRow("long") << bare + '0' << false;
        QTest::newRow("no hexadecimal") << QByteArray(bare).replace('f', 'g') << false;
        QTest::newRow("dash astray") << QByteArray(bare).replace("4b5a-", "4b5-a") << false;
        QTest::newRow("empty") << QByteArray("") << false;
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

    // An array that was counted but never allocated.
    void countWithoutEntries()
    {
        OpcUa_EndpointDescription broken = {}, copy = {};
        broken.NoOfUserIdentityTokens = 5;
        broken.Server.NoOfDiscoveryUrls = 1 << 30;
        QCOMPARE(OpcUa_EndpointDescription_CopyTo(&broken, &copy), OpcUa_Good);
        QCOMPARE(copy.NoOfUserIdentityTokens, 5);
        QVERIFY(!copy.UserIdentityTokens);
        QVERIFY(OpcUa_EndpointDescription_Equal(&broken, &copy));
        copy.NoOfUserIdentityTokens = 4;
        QVERIFY(!OpcUa_EndpointDescription_Equal(&broken, &copy));
        OpcUa_EndpointDescription_Clear(&copy);
        QCOMPARE(copy.Server.NoOfDiscoveryUrls, 0);
        OpcUa_EndpointDescription_Clear(&broken);
    }

    void variantSharesUntilWritten()
    {
        OpcUa_Variant stack = numbers(3);
        const UaVariant original(stack);
        OpcUa_Variant_Clear(&stack);
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

        OpcUa_Variant huge = numbers(4, {65536, 65536, 65536, 65536});
        const UaVariant matrix(huge);
        QCOMPARE(matrix.arrayType(), OpcUa_VariantArrayType_Matrix);
        QCOMPARE((*matrix).Value.Matrix.NoOfDimensions, 4);
        OpcUa_Variant_Clear(&huge);

        OpcUa_Variant sound = numbers(6, {2, 3});
        QVERIFY(UaVariant(sound) == UaVariant(sound));
        OpcUa_Variant reshaped = numbers(6, {3, 2});
        QVERIFY(UaVariant(sound) != UaVariant(reshaped));
        OpcUa_Variant_Clear(&sound);
        OpcUa_Variant_Clear(&reshaped);
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

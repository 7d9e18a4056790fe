#include "platform/stack/opcuastatuscodes.h"
#include "platform/types/uaextensionobject.h"
#include "platform/types/uastacktypearray.h"
#include "platform/types/uavariant.h"
#include "support/warnings.h"

#include <QtTest/QtTest>

#include <cmath>
#include <cstring>

Q_DECLARE_METATYPE(OpcUa_BuiltInType)

namespace {

UaVariant text(const char* utf8)
{
    UaVariant v;
    v.setString(UaString(utf8));
    return v;
}

UaVariant arrayOf(std::initializer_list<OpcUa_Int32> numbers)
{
    UaVariant array;
    array.setInt32Array(numbers);
    return array;
}

} // namespace

class VariantElementsTest : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { failOnWarnings(); }

    void conversion_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<OpcUa_BuiltInType>("type");
        QTest::addColumn<OpcUa_StatusCode>("status");
        QTest::addColumn<QByteArray>("result");
        const auto row = [](const char* text, OpcUa_BuiltInType type, OpcUa_StatusCode status,
                            const char* result = "") {
            QTest::addRow("%d from '%s'", type, text)
                << QByteArray(text) << type << status << QByteArray(result);
        };
        row("127", OpcUaType_SByte, OpcUa_Good, "127");
        row("128", OpcUaType_SByte, OpcUa_BadOutOfRange);
        row("-128", OpcUaType_SByte, OpcUa_Good, "-128");
        row("+7", OpcUaType_Byte, OpcUa_Good, "7");
        row("-1", OpcUaType_Byte, OpcUa_BadTypeMismatch);
        row("256", OpcUaType_Byte, OpcUa_BadOutOfRange);
        row("12 ", OpcUaType_Int32, OpcUa_BadTypeMismatch);
        row("+-1", OpcUaType_Int32, OpcUa_BadTypeMismatch);
        row("0x10", OpcUaType_Int32, OpcUa_BadTypeMismatch);
        row("", OpcUaType_Int32, OpcUa_BadTypeMismatch);
        row("18446744073709551615", OpcUaType_UInt64, OpcUa_Good, "18446744073709551615");
        row("18446744073709551616", OpcUaType_UInt64, OpcUa_BadOutOfRange);
        row("0.1", OpcUaType_Float, OpcUa_Good, "0.1");
        row("1e39", OpcUaType_Float, OpcUa_BadOutOfRange);
        row("0,1", OpcUaType_Double, OpcUa_BadTypeMismatch);
        row("-1.5e300", OpcUaType_Double, OpcUa_Good, "-1.5e+300");
        row("TRUE", OpcUaType_Boolean, OpcUa_Good, "true");
        row("yes", OpcUaType_Boolean, OpcUa_BadTypeMismatch);
        row("2024-02-29 12:00", OpcUaType_DateTime, OpcUa_Good, "2024-02-29T12:00:00Z");
        row("2023-02-29", OpcUaType_DateTime, OpcUa_BadTypeMismatch);
        row("00fF", OpcUaType_ByteString, OpcUa_Good, "00ff");
        row("00 ff", OpcUaType_ByteString, OpcUa_BadTypeMismatch);
        row("{0F1E2D3C-4b5a-6978-8796-a5b4c3d2e1f0}", OpcUaType_Guid, OpcUa_Good,
            "{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}");
        row("i=85", OpcUaType_NodeId, OpcUa_BadTypeMismatch);
    }
    void conversion()
    {
        QFETCH(QByteArray, text);
        QFETCH(OpcUa_BuiltInType, type);
        QFETCH(OpcUa_StatusCode, status);
        QFETCH(QByteArray, result);
        UaVariant value = ::text(text);
        const UaVariant before = value;
        QCOMPARE(value.changeType(type), status);
        if (OpcUa_IsGood(status)) {
            QCOMPARE(value.type(), type);
            QCOMPARE(value.toString().bytes(), result);
        } else {
            QVERIFY(value == before);
        }
    }

    void toArrayOfOne()
    {
        UaVariant value = text("5");
        QCOMPARE(value.changeType(OpcUaType_Int32, true), OpcUa_Good);
        QVERIFY(value == arrayOf({5}));
        QCOMPARE(value.changeType(OpcUaType_Int16), OpcUa_BadTypeMismatch); // no scalar any more
    }

    void growAndShrink()
    {
        UaVariant array = arrayOf({1, 2, 3});
        const UaVariant copy = array;
        QVERIFY(array.resize(5));
        QVERIFY(array == arrayOf({1, 2, 3, 0, 0}));
        QVERIFY(array.resize(1) && array == arrayOf({1}));
        QVERIFY(array.resize(0) && array.arraySize() == 0);
        QVERIFY(copy == arrayOf({1, 2, 3}));
        QVERIFY(!array.resize((std::size_t(1) << 28) + 1));
        UaVariant scalar(OpcUa_Int32(1));
        QVERIFY(!scalar.resize(2));
    }

    void reshape()
    {
        UaVariant matrix;
        matrix.setEmptyMatrix(OpcUaType_String);
        QVERIFY(matrix.setDimensions({2, 3}));
        QVERIFY(matrix.setElement(5, text("last")));
        const UaVariant before = matrix;
        for (const std::vector<OpcUa_UInt32>& bad :
             {std::vector<OpcUa_UInt32>{65536, 65536}, {0x80000000u}, {1u << 30}}) {
            QVERIFY(!matrix.setDimensions(bad));
            QVERIFY(matrix == before);
        }
        QVERIFY(matrix.setDimensions({3, 2}));
        QCOMPARE(matrix.elementAt(5).toString().toUtf8(), "last");
        QCOMPARE(matrix.toString().toUtf8(), "{{, }, {, }, {, last}}");
        QVERIFY(matrix.setDimensions({0xffffffffu, 0, 0xffffffffu}));
        QCOMPARE(matrix.arraySize(), 0);
        QVERIFY(matrix.setDimensions({}));
        QCOMPARE(matrix.arraySize(), 1);
        QCOMPARE(UaVariant::elementCount({3, 0x7fffffffu}), -1);
    }

    void setElementKeepsTypes()
    {
        UaVariant array = arrayOf({1, 2});
        const UaVariant copy = array;
        QVERIFY(!array.setElement(2, UaVariant(OpcUa_Int32(9))));
        QVERIFY(!array.setElement(0, UaVariant(OpcUa_UInt32(9))));
        QVERIFY(!array.setElement(0, arrayOf({9})));
        QVERIFY(array == copy);
        QVERIFY(array.setElement(0, UaVariant(OpcUa_Int32(9))));
        QVERIFY(array == arrayOf({9, 2}) && copy == arrayOf({1, 2}));
    }

    // The types that nobody edits are held, copied, compared and told all the same.
    void boxedTypes()
    {
        OpcUa_ExtensionObject stack = {};
        stack.TypeId.NodeId.Identifier.Numeric = 42;
        OpcUa_ByteString_Assign(&stack.Body, "abc", 3);
        UaVariant object;
        object.setExtensionObject(UaExtensionObject(stack));
        OpcUa_ExtensionObject_Clear(&stack);
        QCOMPARE(object.toString().toUtf8(), "i=42 (3 bytes)");
        UaVariant objects;
        objects.setEmptyArray(OpcUaType_ExtensionObject);
        QVERIFY(objects.resize(2) && objects.setElement(1, object));
        QVERIFY(objects.elementAt(1) == object);
        QVERIFY(UaVariant(*objects) == objects);

        // A Variant within an array is what elementAt() gives.
        UaVariant nested;
        nested.setEmptyArray(OpcUaType_Variant);
        QVERIFY(nested.resize(1));
        auto* element = static_cast<OpcUa_Variant*>(nested.detach()->Value.Array.Elements);
        OpcUa_Variant_CopyTo(arrayOf({1, 2}), element);
        QVERIFY(nested.elementAt(0) == arrayOf({1, 2}));
        QCOMPARE(nested.toString().toUtf8(), "{{1, 2}}");
        const UaVariant copy = nested;
        QVERIFY(nested.resize(0) && copy.arraySize() == 1);

        UaVariant values;
        values.setEmptyArray(OpcUaType_DataValue);
        QVERIFY(values.resize(1));
        auto* dataValue = static_cast<OpcUa_DataValue*>(values.detach()->Value.Array.Elements);
        OpcUa_Variant_CopyTo(UaVariant(OpcUa_Int32(3)), &dataValue->Value);
        dataValue->Status = OpcUa_BadTimeout;
        QCOMPARE(values.toString().toUtf8(), "{3 (BadTimeout)}");
        QVERIFY(UaVariant(*values) == values);
    }
};

QTEST_GUILESS_MAIN(VariantElementsTest)
#include "tst_variantelements.moc"

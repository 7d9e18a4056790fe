#include "elementcases.h"
#include "support/warnings.h"

#include <Kestrel/QvelWidgetVariant>

#include <QtTest/QtTest>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QDoubleSpinBox>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QLabel>

namespace {

struct Parts
{
    explicit Parts(QvelWidgetVariant& e)
        : editor(e), grid(qobject_cast<QGridLayout*>(e.layout())), dataType(at<QComboBox>(0)),
          arrayType(at<QComboBox>(1)), changed(&e, &QvelWidgetVariant::valueChanged)
    {
    }

    template <class Widget>
    Widget* at(int row) const
    {
        return qobject_cast<Widget*>(grid->itemAtPosition(row, 1)->widget());
    }
    QByteArray valueClass() const { return at<QWidget>(2)->metaObject()->className(); }
    UaVariant told(int i) const { return changed.at(i).at(0).value<UaVariant>(); }

    QvelWidgetVariant& editor;
    QGridLayout* grid;
    QComboBox* dataType;
    QComboBox* arrayType;
    QSignalSpy changed;
};

QByteArray scalarClass(int type)
{
    static const QList<QByteArray> structured = {
        "QvelWidgetGuid",          "QvelWidgetByteString",         "QvelWidgetXmlElement",
        "QvelWidgetNodeId",        "QvelEditWidgetExpandedNodeId", "QvelWidgetStatusCode",
        "QvelWidgetQualifiedName", "QvelWidgetLocalizedText"};
    if (type == OpcUaType_Null)
        return "QLabel";
    if (type == OpcUaType_Boolean)
        return "QCheckBox";
    if (type == OpcUaType_Float || type == OpcUaType_Double)
        return "QDoubleSpinBox";
    return structured.value(type - OpcUaType_Guid, "QLineEdit");
}

// The example of a type, but for the numbers that a spin box cannot show.
UaVariant example(int type)
{
    if (type == OpcUaType_Double)
        return variantOf(&UaVariant::setDouble, 1.25);
    return type == OpcUaType_Null ? UaVariant() : elementCases().at(type - 1).value;
}

} // namespace

class VariantEditorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnWarnings(); }

    void form()
    {
        QvelWidgetVariant editor;
        const Parts parts(editor);
        QStringList names = {"Null"};
        for (const ElementCase& c : elementCases())
            names << c.name;
        QCOMPARE(parts.dataType->count(), 22);
        for (int i = 0; i < 22; ++i) {
            QCOMPARE(parts.dataType->itemText(i), names.at(i));
            QCOMPARE(parts.dataType->itemData(i).toInt(), i);
        }
        QCOMPARE(parts.arrayType->itemText(2), QString("Matrix"));
        QCOMPARE(parts.valueClass(), QByteArray("QLabel"));
        QCOMPARE(parts.at<QLabel>(2)->text(), QString("Null"));
        const QStringList labels = {"DataType:", "ArrayType:", "Value:"};
        for (int row = 0; row < 3; ++row)
            QCOMPARE(qobject_cast<QLabel*>(parts.grid->itemAtPosition(row, 0)->widget())->text(),
                     labels.at(row));
        editor.show();
        QCOMPARE(parts.grid->itemAtPosition(2, 0)->widget()->minimumHeight(),
                 parts.arrayType->height());
    }

    void choices_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("arrayType");
        for (int type = 0; type < 22; ++type) {
            for (int arrayType = 0; arrayType < 3; ++arrayType)
                QTest::addRow("%d %d", type, arrayType) << type << arrayType;
        }
    }
    void choices()
    {
        QFETCH(int, type);
        QFETCH(int, arrayType);
        QvelWidgetVariant editor;
        const Parts parts(editor);
        bool ok = true;

        // By choice: each box tells once, of the empty value of the new widget.
        parts.dataType->setCurrentIndex(type);
        parts.arrayType->setCurrentIndex(arrayType);
        QCOMPARE(parts.changed.size(), (type != 0) + (arrayType != 0));
        const QByteArray expected = arrayType == 0   ? scalarClass(type)
                                    : arrayType == 1 ? QByteArray("QvelEditWidgetArray")
                                                     : QByteArray("QvelEditWidgetMatrix");
        QCOMPARE(parts.valueClass(), expected);
        const UaVariant empty = editor.value(&ok);
        const bool isInteger = type >= OpcUaType_SByte && type <= OpcUaType_UInt64;
        const bool needsInput = isInteger || type == OpcUaType_Guid || type == OpcUaType_StatusCode;
        if (arrayType != 0) {
            QVERIFY(ok);
            QVERIFY(empty ==
                    (type ? emptyOf(OpcUa_BuiltInType(type), arrayType == 2) : UaVariant()));
        } else if (type != OpcUaType_NodeId && type != OpcUaType_ExpandedNodeId) {
            QCOMPARE(ok, type != 0 && !needsInput);
        }

        // By value: what goes in comes out.
        UaVariant value = example(type);
        if (arrayType == 1 && type != 0) {
            value.changeType(value.type(), true);
        } else if (arrayType == 2 && type != 0) {
            value = emptyOf(OpcUa_BuiltInType(type), true);
        }
        QvelWidgetVariant second;
        const Parts shown(second);
        second.setValue(value);
        QCOMPARE(shown.dataType->currentIndex(), int(value.type()));
        QCOMPARE(shown.arrayType->currentIndex(), int(value.arrayType()));
        QVERIFY(second.value(&ok) == value);
        QCOMPARE(ok, type != 0);
        const int boxes = (value.type() != 0) + (value.arrayType() != 0);
        QVERIFY(shown.changed.size() >= boxes);
        if (!shown.changed.isEmpty())
            QVERIFY(shown.told(shown.changed.size() - 1) == (arrayType == 0 ? value : empty));
        if (arrayType != 0)
            QCOMPARE(shown.changed.size(), boxes);
        else if (type != 0 && type < OpcUaType_NodeId)
            QCOMPARE(shown.changed.size(), 2); // the box, then the text
    }

    void losses_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("input");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QString>("result");
        QTest::newRow("SByte 300") << 2 << "300" << true << "44";
        QTest::newRow("Byte 257") << 3 << "257" << true << "1";
        QTest::newRow("Byte -1") << 3 << "-1" << false << "0";
        QTest::newRow("Int16 65535") << 4 << "65535" << true << "-1";
        QTest::newRow("UInt16 65536") << 5 << "65536" << true << "0";
        QTest::newRow("Int32 too large") << 6 << "2147483648" << false << "0";
        QTest::newRow("SByte abc") << 2 << "abc" << false << "0";
        QTest::newRow("UInt64") << 9 << "18446744073709551615" << true << "18446744073709551615";
        QTest::newRow("DateTime") << 13 << "soon" << true << "1601-01-01T00:00:00Z";
        QTest::newRow("String") << 12 << "  a " << true << "  a ";
    }
    void losses()
    {
        QFETCH(int, type);
        QFETCH(QString, input);
        QFETCH(bool, ok);
        QFETCH(QString, result);
        QvelWidgetVariant editor;
        const Parts parts(editor);
        parts.dataType->setCurrentIndex(type);
        QTest::keyClicks(parts.at<QLineEdit>(2), input);
        QCOMPARE(parts.changed.size(), 1 + input.size());
        bool valid = !ok;
        const UaVariant value = editor.value(&valid);
        QCOMPARE(valid, ok);
        QCOMPARE(int(value.type()), type);
        QCOMPARE(QString::fromUtf8(value.toString().toUtf8()), result);
        QVERIFY(parts.told(parts.changed.size() - 1) == value);
    }

    void spinBoxes()
    {
        QvelWidgetVariant editor;
        const Parts parts(editor);
        editor.setValue(variantOf(&UaVariant::setDouble, -1.5));
        QCOMPARE(editor.value(nullptr).toDouble(), 0.);
        editor.setValue(variantOf(&UaVariant::setDouble, 1.2345));
        QCOMPARE(editor.value(nullptr).toDouble(), 1.23);
        editor.setValue(variantOf(&UaVariant::setFloat, 1.2345f));
        QCOMPARE(editor.value(nullptr).toFloat(), 1.23f);
        QCOMPARE(parts.at<QDoubleSpinBox>(2)->decimals(), 2);
        parts.at<QDoubleSpinBox>(2)->clear();
        QTest::keyClicks(parts.at<QDoubleSpinBox>(2), "-3");
        QVERIFY(editor.value(nullptr).toFloat() >= 0);
    }

    void typesWithoutEntry()
    {
        QvelWidgetVariant editor;
        const Parts parts(editor);
        editor.setValue(UaVariant(OpcUa_Int32(3)));
        editor.setValue(nullOf(OpcUaType_DataValue));
        QCOMPARE(parts.dataType->currentIndex(), -1);
        QCOMPARE(parts.valueClass(), QByteArray("QLabel"));
        bool ok = true;
        QVERIFY(editor.value(&ok).isEmpty());
        QVERIFY(!ok);
        // An array of such a type is shown, and given back.
        const UaVariant array = emptyOf(OpcUaType_Variant, false);
        editor.setValue(array);
        QCOMPARE(parts.valueClass(), QByteArray("QvelEditWidgetArray"));
        QVERIFY(editor.value(&ok) == array);
    }

    void readOnlyLocksTheChoice()
    {
        QvelWidgetVariant editor(QvelWidgetBase::ReadOnly);
        const Parts parts(editor);
        QVERIFY(!parts.dataType->isEnabled());
        QVERIFY(!parts.arrayType->isEnabled());
        editor.setValue(variantOf(&UaVariant::setString, "a"));
        QTest::keyClicks(parts.at<QLineEdit>(2), "b");
        QCOMPARE(editor.value(nullptr).toString(), UaString("ab"));
    }

    // A host may answer a change with another value.
    void changeWithinAChange()
    {
        QvelWidgetVariant editor;
        const Parts parts(editor);
        editor.setValue(variantOf(&UaVariant::setString, ""));
        connect(&editor, &QvelWidgetVariant::valueChanged, &editor, [&](const UaVariant& value) {
            if (value.toString() == UaString("x"))
                editor.setValue(UaVariant(OpcUa_Int32(5)));
        });
        QTest::keyClick(parts.at<QLineEdit>(2), Qt::Key_X);
        QCOMPARE(editor.value(nullptr).toInt32(), OpcUa_Int32(5));
    }
};

QTEST_MAIN(VariantEditorTest)
#include "tst_varianteditor.moc"

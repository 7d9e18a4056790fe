#include "elementcases.h"

#include <Kestrel/QvelWidgetVariant>

#include <QtWidgets/QComboBox>
#include <QtWidgets/QDoubleSpinBox>
#include <QtWidgets/QGridLayout>

namespace {

// The windows that are shown while it lives.
class WindowWatch : public QObject
{
public:
    WindowWatch() { qApp->installEventFilter(this); }
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        auto* widget = qobject_cast<QWidget*>(watched);
        if (widget && widget->isWindow() && event->type() == QEvent::Show)
            shown << widget->metaObject()->className();
        return false;
    }
    QStringList shown;
};

struct Form
{
    template <class Widget = QWidget>
    Widget* at(int row) const
    {
        return qobject_cast<Widget*>(
            static_cast<QGridLayout*>(editor.layout())->itemAtPosition(row, 1)->widget());
    }
    UaVariant told(int i) const { return changed.at(i).at(0).value<UaVariant>(); }

    QvelWidgetVariant editor;
    QComboBox* dataType = at<QComboBox>(0);
    QComboBox* arrayType = at<QComboBox>(1);
    QSignalSpy changed{&editor, &QvelWidgetVariant::valueChanged};
};

} // namespace

class VariantEditorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnWarnings(); }

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
        static const QList<QByteArray> structured = {
            "QvelWidgetGuid",          "QvelWidgetByteString",         "QvelWidgetXmlElement",
            "QvelWidgetNodeId",        "QvelEditWidgetExpandedNodeId", "QvelWidgetStatusCode",
            "QvelWidgetQualifiedName", "QvelWidgetLocalizedText"};
        QByteArray widget = structured.value(type - OpcUaType_Guid, "QLineEdit");
        if (type <= OpcUaType_Boolean)
            widget = type ? "QCheckBox" : "QLabel";
        if (type == OpcUaType_Float || type == OpcUaType_Double)
            widget = "QDoubleSpinBox";
        if (arrayType)
            widget = arrayType == 1 ? "QvelEditWidgetArray" : "QvelEditWidgetMatrix";

        // By choice: each box tells once, of the empty value of the new widget.
        Form form;
        QCOMPARE(form.dataType->itemText(type),
                 QString(type ? elementCases().at(type - 1).name : "Null"));
        QCOMPARE(form.dataType->itemData(type).toInt(), type);
        form.dataType->setCurrentIndex(type);
        form.arrayType->setCurrentIndex(arrayType);
        QCOMPARE(form.changed.size(), (type != 0) + (arrayType != 0));
        QCOMPARE(QByteArray(form.at(2)->metaObject()->className()), widget);
        bool ok = false;
        const UaVariant empty = form.editor.value(&ok);
        const bool needsInput = (type >= OpcUaType_SByte && type <= OpcUaType_UInt64) ||
                                type == OpcUaType_Guid || type == OpcUaType_StatusCode;
        if (arrayType != 0) {
            QVERIFY(ok);
            QVERIFY(empty ==
                    (type ? emptyOf(OpcUa_BuiltInType(type), arrayType == 2) : UaVariant()));
        } else if (type != OpcUaType_NodeId && type != OpcUaType_ExpandedNodeId) {
            QCOMPARE(ok, type != 0 && !needsInput);
        }

        // By value: what goes in comes out.
        UaVariant value;
        if (type != 0)
            value = type == OpcUaType_Double ? variantOf(&UaVariant::setDouble, 1.25)
                                             : elementCases().at(type - 1).value;
        if (type != 0 && arrayType == 1)
            value.changeType(value.type(), true);
        else if (type != 0 && arrayType == 2)
            value = zeros(OpcUa_BuiltInType(type), 2, true);
        Form shown;
        shown.editor.setValue(value);
        QCOMPARE(shown.dataType->currentIndex(), int(value.type()));
        QCOMPARE(shown.arrayType->currentIndex(), int(value.arrayType()));
        QVERIFY(shown.editor.value(&ok) == value);
        QCOMPARE(ok, type != 0);
        const int boxes = (value.type() != 0) + (value.arrayType() != 0);
        if (arrayType != 0)
            QCOMPARE(shown.changed.size(), boxes);
        else if (type != 0 && type < OpcUaType_NodeId)
            QCOMPARE(shown.changed.size(), 2); // the box, then the text
        if (!shown.changed.isEmpty() && arrayType == 0)
            QVERIFY(shown.told(int(shown.changed.size()) - 1) == value);
    }

    void typing_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("keys");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QString>("result");
        QTest::newRow("SByte 300") << 2 << "300" << true << "44";
        QTest::newRow("Byte -1") << 3 << "-1" << false << "0";
        QTest::newRow("Int16 65535") << 4 << "65535" << true << "-1";
        QTest::newRow("UInt16 65536") << 5 << "65536" << true << "0";
        QTest::newRow("Int32 too large") << 6 << "2147483648" << false << "0";
        QTest::newRow("SByte abc") << 2 << "abc" << false << "0";
        QTest::newRow("UInt64") << 9 << "18446744073709551615" << true << "18446744073709551615";
        QTest::newRow("DateTime") << 13 << "soon" << true << "1601-01-01T00:00:00Z";
        QTest::newRow("String") << 12 << "  a " << true << "  a ";
    }
    void typing()
    {
        QFETCH(int, type);
        QFETCH(QString, keys);
        QFETCH(bool, ok);
        QFETCH(QString, result);
        Form form;
        form.dataType->setCurrentIndex(type);
        QTest::keyClicks(form.at(2), keys);
        QCOMPARE(form.changed.size(), 1 + keys.size());
        bool valid = !ok;
        const UaVariant value = form.editor.value(&valid);
        QCOMPARE(valid, ok);
        QCOMPARE(int(value.type()), type);
        QCOMPARE(QString::fromUtf8(value.toString().toUtf8()), result);
        QVERIFY(form.told(int(form.changed.size()) - 1) == value);
    }

    void spinBoxes()
    {
        Form form;
        form.editor.setValue(variantOf(&UaVariant::setDouble, -1.5));
        QCOMPARE(form.editor.value(nullptr).toDouble(), 0.);
        form.editor.setValue(variantOf(&UaVariant::setFloat, 1.2345f));
        QCOMPARE(form.editor.value(nullptr).toFloat(), 1.23f);
        form.at<QDoubleSpinBox>(2)->clear();
        QTest::keyClicks(form.at(2), "-3");
        QVERIFY(form.editor.value(nullptr).toFloat() >= 0);
    }

    void typesWithoutEntry()
    {
        Form form;
        form.editor.setValue(UaVariant(OpcUa_Int32(3)));
        form.editor.setValue(nullOf(OpcUaType_DataValue));
        QCOMPARE(form.dataType->currentIndex(), -1);
        QVERIFY(form.at<QLabel>(2));
        bool ok = true;
        QVERIFY(form.editor.value(&ok).isEmpty());
        QVERIFY(!ok);
        const UaVariant array = emptyOf(OpcUaType_Variant, false);
        form.editor.setValue(array);
        QVERIFY(form.editor.value(&ok) == array);
    }

    void readOnlyLocksTheChoice()
    {
        QvelWidgetVariant editor(QvelWidgetBase::ReadOnly);
        const auto boxes = editor.findChildren<QComboBox*>();
        QVERIFY(boxes.size() == 2 && !boxes.at(0)->isEnabled() && !boxes.at(1)->isEnabled());
        editor.setValue(variantOf(&UaVariant::setString, UaString("a")));
        QTest::keyClicks(editor.findChild<QLineEdit*>(), "b");
        QVERIFY(editor.value(nullptr).toString() == UaString("ab"));
    }

    // A host may answer a change with another value, while the old widget is still telling of it.
    void changeWithinAChange()
    {
        Form form;
        QLineEdit other;
        form.editor.show();
        other.show();
        form.editor.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&form.editor));
        form.editor.setValue(variantOf(&UaVariant::setString, UaString("")));
        const QPointer<QLineEdit> old = form.at<QLineEdit>(2);
        QCoreApplication::processEvents(); // the layout is late to show it
        old->setFocus();
        const UaVariant array = zeros(OpcUaType_Int32, 2);
        WindowWatch windows;
        connect(&form.editor, &QvelWidgetVariant::valueChanged, &form.editor,
                [&](const UaVariant& value) {
                    if (value.toString() == UaString("x"))
                        form.editor.setValue(array);
                });
        QTest::keyClick(old, Qt::Key_X);
        QVERIFY(form.editor.value(nullptr) == array);
        QVERIFY(form.at(2)->isAncestorOf(QApplication::focusWidget()) || form.at(2)->hasFocus());
        form.changed.clear();
        QVERIFY(old);
        old->setText("7");
        QCOMPARE(form.changed.size(), 0);
        QTest::qWait(10);
        QVERIFY(!old);
        QCOMPARE(windows.shown, QStringList());
    }
};

QTEST_MAIN(VariantEditorTest)
#include "tst_varianteditor.moc"

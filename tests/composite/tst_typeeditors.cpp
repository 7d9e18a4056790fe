// The editor for each type: in a cell by the delegate, and in the variant editor.

#include "elementcases.h"

#include <Kestrel/QvelModelDelegate>
#include <Kestrel/QvelWidgetVariant>

#include <QtGui/QStandardItemModel>
#include <QtWidgets/QDoubleSpinBox>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QLabel>

namespace {

class CountingModel : public QStandardItemModel
{
public:
    using QStandardItemModel::QStandardItemModel;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override
    {
        ++count;
        return QStandardItemModel::setData(index, value, role);
    }
    int count = 0;
};

// A cell with a text and a value, and its editor.
struct Table
{
    explicit Table(const UaVariant& value, const QvelEnumInfo& info = {}, bool onlyChanges = false)
    {
        delegate.setWritesOnlyChanges(onlyChanges);
        model.setData(cell, "text", Qt::EditRole);
        model.setData(cell, QVariant::fromValue(value), Qt::UserRole);
        model.setData(cell, QVariant::fromValue(info), Qt::UserRole + 1);
        model.count = 0;
        viewport.show();
        option.rect = QRect(3, 5, 120, 25);
        editor = delegate.createEditor(&viewport, option, cell);
    }
    void write() { delegate.setModelData(editor, &model, cell); }

    CountingModel model{1, 1};
    QModelIndex cell = model.index(0, 0);
    QvelModelDelegate delegate;
    QWidget viewport;
    QStyleOptionViewItem option;
    QWidget* editor;
};

struct Form
{
    template <class Widget = QWidget>
    Widget* at(int row) const
    {
        return qobject_cast<Widget*>(
            static_cast<QGridLayout*>(editor.layout())->itemAtPosition(row, 1)->widget());
    }

    QvelWidgetVariant editor;
    QSignalSpy changed{&editor, &QvelWidgetVariant::valueChanged};
};

// The classes of the editors in a cell and in the variant editor.
std::pair<QByteArray, QByteArray> editorsOf(int type)
{
    if (type == OpcUaType_Boolean)
        return {"QCheckBox", "QCheckBox"};
    if (type == OpcUaType_Float || type == OpcUaType_Double)
        return {"QLineEdit", "QDoubleSpinBox"};
    if (type < OpcUaType_Guid || type > OpcUaType_LocalizedText)
        return {"QLineEdit", type == OpcUaType_Null ? "QLabel" : "QLineEdit"};
    static const QList<int> inDialogs = {OpcUaType_NodeId, OpcUaType_ExpandedNodeId,
                                         OpcUaType_QualifiedName, OpcUaType_LocalizedText};
    const QByteArray name = elementCases().at(type - 1).name;
    return {(inDialogs.contains(type) ? "QvelDialogWidget" : "QvelWidget") + name,
            (type == OpcUaType_ExpandedNodeId ? "QvelEditWidget" : "QvelWidget") + name};
}

UaVariant valueOf(int type)
{
    return type < 1 || type > elementCases().size() ? nullOf(type)
                                                    : elementCases().at(type - 1).value;
}

} // namespace

class TypeEditorsTest : public QObject
{
    Q_OBJECT

    void choose(int type, int arrayType)
    {
        const QList<QByteArray> widgets = {editorsOf(type).second, "QvelEditWidgetArray",
                                           "QvelEditWidgetMatrix"};
        // By choice: each box tells once, of the empty value of the new widget.
        Form form;
        auto* box = form.at<QComboBox>(0);
        QCOMPARE(box->itemText(type), QString(type ? elementCases().at(type - 1).name : "Null"));
        QCOMPARE(box->itemData(type).toInt(), type);
        box->setCurrentIndex(type);
        form.at<QComboBox>(1)->setCurrentIndex(arrayType);
        QCOMPARE(form.changed.size(), (type != 0) + (arrayType != 0));
        QCOMPARE(QByteArray(form.at(2)->metaObject()->className()), widgets.at(arrayType));
        bool ok = false;
        const UaVariant empty = form.editor.value(&ok);
        const bool needsInput = (type >= OpcUaType_SByte && type <= OpcUaType_UInt64) ||
                                type == OpcUaType_Guid || type == OpcUaType_StatusCode;
        if (arrayType)
            QVERIFY(ok && empty == (type ? zeros(type, 0, arrayType == 2) : UaVariant()));
        else if (type != OpcUaType_NodeId && type != OpcUaType_ExpandedNodeId)
            QCOMPARE(ok, type && !needsInput);

        // By value: what goes in comes out.
        UaVariant value = arrayType && type ? zeros(type, 2, arrayType == 2) : valueOf(type);
        if (type == OpcUaType_Double && !arrayType)
            value.setDouble(1.25);
        Form shown;
        shown.editor.setValue(value);
        QVERIFY(shown.editor.value(&ok) == value);
        QCOMPARE(ok, type != 0);
        if (value.arrayType() || (type && type < OpcUaType_NodeId))
            QCOMPARE(shown.changed.size(), 2); // the boxes, or one and the text
        if (!shown.changed.isEmpty() && !arrayType)
            QVERIFY(shown.changed.last().at(0).value<UaVariant>() == value);
    }

private Q_SLOTS:
    void init() { failOnWarnings(); }

    void cells_data()
    {
        QTest::addColumn<UaVariant>("value");
        QTest::addColumn<QByteArray>("editor");
        for (int type = OpcUaType_Null; type <= OpcUaType_DiagnosticInfo; ++type)
            QTest::addRow("%d", type) << valueOf(type) << editorsOf(type).first;
        QTest::newRow("array") << zeros(1, 2) << QByteArray("QvelDialogWidgetArray");
        QTest::newRow("matrix") << zeros(1, 2, true) << QByteArray("QvelDialogWidgetMatrix");
    }
    void cells()
    {
        QFETCH(UaVariant, value);
        QFETCH(QByteArray, editor);
        for (bool onlyChanges : {false, true}) {
            Table table(value, {}, onlyChanges);
            QCOMPARE(QByteArray(table.editor->metaObject()->className()), editor);
            auto* dialog = qobject_cast<QDialog*>(table.editor);
            const QPoint corner = table.viewport.mapToGlobal(table.option.rect.topLeft());
            if (dialog && value.arrayType() == OpcUa_VariantArrayType_Scalar)
                QCOMPARE(dialog->pos(), corner);
            const QSize size = table.editor->size();
            table.delegate.updateEditorGeometry(table.editor, table.option, table.cell);
            QCOMPARE(table.editor->geometry(), dialog ? QRect(corner, size) : table.option.rect);
            if (auto* inner = qobject_cast<QvelWidgetBase*>(table.editor))
                QCOMPARE(inner->flags(), QvelWidgetBase::HideFrame);

            // Untouched, then changed. A dialog writes nothing before it is accepted.
            table.write();
            QCOMPARE(table.model.count, dialog || onlyChanges ? 0 : 1);
            QCOMPARE(table.cell.data(Qt::EditRole).toString(), QString("text"));
            if (auto* line = qobject_cast<QLineEdit*>(table.editor))
                line->setText("other");
            if (auto* parts = table.editor->findChild<QTableView*>())
                parts->model()->setData(parts->model()->index(1, 0),
                                        QVariant::fromValue(UaVariant(true)), Qt::UserRole);
            table.write();
            QVERIFY(table.cell.data(Qt::UserRole).value<UaVariant>() == value);
            if (dialog) {
                dialog->accept();
                table.write();
                const bool isNested = table.editor->findChild<QTableView*>();
                QCOMPARE(table.model.count, isNested || !onlyChanges ? 1 : 0);
                const auto written = table.cell.data(Qt::UserRole).value<UaVariant>();
                QCOMPARE(written.elementAt(1).toBool() != 0, isNested);
            } else if (editor == "QLineEdit") {
                QCOMPARE(table.cell.data(Qt::EditRole).toString(), QString("other"));
            }
        }
    }

    void enumerations_data()
    {
        QTest::addColumn<QString>("always");
        QTest::addColumn<int>("kind");
        QTest::addColumn<UaVariant>("value");
        QTest::addColumn<int>("choice"); // an entry of the list; -1 for none
        QTest::addColumn<QString>("onlyChanges");
        const auto uint64 = [](quint64 value) { return variantOf(&UaVariant::setUInt64, value); };
        const auto int32 = [](qint64 value) { return UaVariant(OpcUa_Int32(value)); };
        QTest::newRow("named") << "2" << 1 << int32(2) << -1 << "text";
        QTest::newRow("unnamed") << "0" << 1 << int32(7) << -1 << "text";
        QTest::newRow("unnamed to 0") << "0" << 1 << int32(7) << 0 << "0";
        QTest::newRow("64 bits") << "0" << 1 << uint64(1ull << 40) << -1 << "text";
        QTest::newRow("unnamed bit") << "2" << 2 << int32(0x42) << -1 << "text";
        QTest::newRow("bit stays") << "3" << 2 << int32(0x80000042) << 0 << "-2147483581";
        QTest::newRow("64 bits stay")
            << "3" << 2 << uint64(0xf000000000000002) << 0 << "17293822569102704643";
        QTest::newRow("half") << "0" << 2 << UaVariant(OpcUa_Byte(0x44)) << 2 << "64";
        QTest::newRow("no names") << "text" << 7 << int32(2) << -1 << "text";
    }
    void enumerations()
    {
        QFETCH(int, kind);
        QFETCH(UaVariant, value);
        QFETCH(int, choice);
        QvelEnumInfo info;
        info.kind = kind;
        info.values = {{0, "None"}, {1, "A"}, {2, "B"}, {12, "C"}};
        for (bool onlyChanges : {false, true}) {
            Table table(value, info, onlyChanges);
            auto* box = table.editor->findChild<QComboBox*>();
            if (choice >= 0 && kind == 1)
                box->setCurrentIndex(choice);
            for (int i = 0; choice >= 0 && kind == 2 && i < box->count(); ++i) {
                const bool isChecked = box->itemData(i, Qt::CheckStateRole).toInt();
                if (box->itemText(i).contains(QChar('A' + choice)))
                    box->setItemData(i, isChecked ? Qt::Unchecked : Qt::Checked,
                                     Qt::CheckStateRole);
            }
            table.write();
            const QVariant written = table.cell.data(Qt::EditRole);
            QTEST(written.toString(), onlyChanges ? "onlyChanges" : "always");
            if (!onlyChanges && kind != 7)
                QCOMPARE(written.userType(), int(QMetaType::Long));
        }
    }

    void choices()
    {
        for (int type = 0; type < 22; ++type) {
            for (int arrayType = 0; arrayType < 3; ++arrayType)
                choose(type, arrayType);
            if (QTest::currentTestFailed())
                QFAIL(QByteArray::number(type));
        }
    }

    void typing_data()
    {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("result"); // none for an invalid one
        QTest::newRow("SByte") << "300" << 2 << "44";
        QTest::newRow("Byte") << "-1" << 3 << "";
        QTest::newRow("Int16") << "65535" << 4 << "-1";
        QTest::newRow("UInt16") << "65536" << 5 << "0";
        QTest::newRow("Int32") << "2147483648" << 6 << "";
        QTest::newRow("UInt64") << "18446744073709551615" << 9 << "18446744073709551615";
        QTest::newRow("DateTime") << "soon" << 13 << "1601-01-01T00:00:00Z";
        QTest::newRow("String") << "  a " << 12 << "  a ";
    }
    // ReadOnly locks the choices alone.
    void typing()
    {
        QFETCH(int, type);
        QFETCH(QString, keys);
        QFETCH(QString, result);
        QvelWidgetVariant editor(QvelWidgetBase::ReadOnly);
        editor.setValue(nullOf(type));
        for (const auto* box : editor.findChildren<QComboBox*>())
            QVERIFY(!box->isEnabled());
        auto* line = editor.findChild<QLineEdit*>();
        line->clear();
        QSignalSpy changed(&editor, &QvelWidgetVariant::valueChanged);
        QTest::keyClicks(line, keys);
        bool ok = false;
        const UaVariant value = editor.value(&ok);
        QCOMPARE(ok, !result.isEmpty());
        QCOMPARE(int(value.type()), type);
        if (ok)
            QCOMPARE(QString::fromUtf8(value.toString().toUtf8()), result);
        QVERIFY(changed.last().at(0).value<UaVariant>() == value);
    }

    void typesWithoutEntry()
    {
        Form form;
        form.editor.setValue(variantOf(&UaVariant::setDouble, -1.5));
        QCOMPARE(form.editor.value().toDouble(), 0.);
        form.editor.setValue(variantOf(&UaVariant::setFloat, 1.2345f));
        QCOMPARE(form.editor.value().toFloat(), 1.23f);
        form.at<QDoubleSpinBox>(2)->clear();
        QTest::keyClicks(form.at(2), "-3");
        QVERIFY(form.editor.value().toFloat() >= 0);
        form.editor.setValue(nullOf(OpcUaType_DataValue));
        QCOMPARE(form.at<QComboBox>(0)->currentIndex(), -1);
        bool ok = true;
        QVERIFY(form.at<QLabel>(2) && form.editor.value(&ok).isEmpty() && !ok);
        const UaVariant array = zeros(OpcUaType_Variant, 0);
        form.editor.setValue(array);
        QVERIFY(form.editor.value(&ok) == array);
    }

    // A host may answer a change with another value, while the old widget is still telling of it.
    void changeWithinAChange()
    {
        Form form;
        form.editor.show();
        QVERIFY(QTest::qWaitForWindowActive(&form.editor));
        form.editor.setValue(variantOf(&UaVariant::setString, UaString("")));
        const QPointer<QLineEdit> old = form.at<QLineEdit>(2);
        QCoreApplication::processEvents(); // the layout is late to show it
        old->setFocus();
        const UaVariant array = zeros(OpcUaType_Int32, 2);
        connect(&form.editor, &QvelWidgetVariant::valueChanged, old, [&](const UaVariant& value) {
            if (value.toString() == UaString("x"))
                form.editor.setValue(array);
        });
        QTest::keyClick(old, Qt::Key_X);
        QVERIFY(form.editor.value() == array);
        QVERIFY(form.at(2)->isAncestorOf(QApplication::focusWidget()));
        form.changed.clear();
        QVERIFY(old);
        old->setText("7");
        QVERIFY(form.changed.isEmpty());
        // Nor does one come back that the layout has yet to show.
        form.editor.setValue(variantOf(&UaVariant::setString, UaString("")));
        const QPointer<QWidget> unshown = form.at(2);
        form.editor.setValue(array);
        QCoreApplication::processEvents();
        QVERIFY(!unshown || !unshown->isVisible());
        QTest::qWait(10);
        QVERIFY(!old && !unshown);
    }
};

QTEST_MAIN(TypeEditorsTest)
#include "tst_typeeditors.moc"

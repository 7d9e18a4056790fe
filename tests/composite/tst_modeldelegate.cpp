// The delegate in a plain table over a plain model.

#include "elementcases.h"
#include "support/warnings.h"

#include <Kestrel/QvelDialogWidgetArray>
#include <Kestrel/QvelDialogWidgetMatrix>
#include <Kestrel/QvelEnumInfo>
#include <Kestrel/QvelModelDelegate>
#include <Kestrel/UaStackTypeArray>

#include <QtGui/QStandardItemModel>
#include <QtTest/QtTest>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QTableView>
#include <QtWidgets/QToolButton>

namespace {

class CountingModel : public QStandardItemModel
{
public:
    bool setData(const QModelIndex& index, const QVariant& value, int role) override
    {
        ++count;
        return QStandardItemModel::setData(index, value, role);
    }
    int count = 0;
};

struct Table
{
    Table(const UaVariant& value, const QvelEnumInfo& info = {})
    {
        model.setItem(0, 0, new QStandardItem("text"));
        cell = model.index(0, 0);
        model.setData(cell, QVariant::fromValue(value), Qt::UserRole);
        model.setData(cell, QVariant::fromValue(info), Qt::UserRole + 1);
        view.setModel(&model);
        view.setItemDelegate(&delegate);
        view.show();
        option.rect = QRect(3, 5, 120, 25);
    }

    QWidget* createEditor()
    {
        QWidget* editor = delegate.createEditor(view.viewport(), option, cell);
        return editor;
    }
    UaVariant value() const { return cell.data(Qt::UserRole).value<UaVariant>(); }

    CountingModel model;
    QvelModelDelegate delegate;
    QTableView view;
    QModelIndex cell;
    QStyleOptionViewItem option;
};

QByteArray className(const QWidget* widget)
{
    return widget ? widget->metaObject()->className() : "";
}

} // namespace

class ModelDelegateTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { failOnWarnings(); }

    void editors_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QByteArray>("editor");
        QTest::addColumn<bool>("isDialog");
        const QList<QByteArray> structured = {"QvelWidgetGuid",
                                              "QvelWidgetByteString",
                                              "QvelWidgetXmlElement",
                                              "QvelDialogWidgetNodeId",
                                              "QvelDialogWidgetExpandedNodeId",
                                              "QvelWidgetStatusCode",
                                              "QvelDialogWidgetQualifiedName",
                                              "QvelDialogWidgetLocalizedText"};
        for (int type = OpcUaType_Null; type <= OpcUaType_DiagnosticInfo; ++type) {
            QByteArray editor = structured.value(type - OpcUaType_Guid, "QLineEdit");
            if (type == OpcUaType_Boolean)
                editor = "QCheckBox";
            QTest::addRow("%d", type) << type << editor << editor.contains("Dialog");
        }
    }
    void editors()
    {
        QFETCH(int, type);
        QFETCH(QByteArray, editor);
        QFETCH(bool, isDialog);
        UaVariant value = nullOf(OpcUa_BuiltInType(type));
        for (const ElementCase& c : elementCases()) {
            if (c.type == type)
                value = c.value;
        }
        Table table(value);
        const std::unique_ptr<QWidget> widget(table.createEditor());
        QCOMPARE(className(widget.get()), editor);
        QCOMPARE(widget->parentWidget(), table.view.viewport());
        const QPoint corner = table.view.viewport()->mapToGlobal(table.option.rect.topLeft());
        if (isDialog)
            QCOMPARE(widget->pos(), corner);
        if (auto* line = qobject_cast<QLineEdit*>(widget.get())) {
            QVERIFY(!line->hasFrame());
            QCOMPARE(line->text(), QString("text"));
        }
        if (auto* inner = qobject_cast<QvelWidgetBase*>(widget.get()))
            QCOMPARE(inner->flags(), QvelWidgetBase::HideFrame);
        const QSize size = widget->size();
        table.delegate.updateEditorGeometry(widget.get(), table.option, table.cell);
        QCOMPARE(widget->geometry(), isDialog ? QRect(corner, size) : table.option.rect);

        // What is written back: a dialog that was not accepted writes nothing.
        int& written = table.model.count;
        written = 0;
        table.delegate.setModelData(widget.get(), &table.model, table.cell);
        QCOMPARE(written, isDialog ? 0 : 1);
        if (auto* dialog = qobject_cast<QDialog*>(widget.get())) {
            dialog->accept();
            table.delegate.setModelData(dialog, &table.model, table.cell);
            QCOMPARE(written, 1);
        }
        QVERIFY(table.value() == value);
        if (auto* line = qobject_cast<QLineEdit*>(widget.get())) {
            line->setText("typed");
            table.delegate.setModelData(widget.get(), &table.model, table.cell);
            QCOMPARE(table.cell.data(Qt::EditRole).toString(), QString("typed"));
        }
        // The model no longer reaches the editor, and another editor does not reach the model.
        table.model.setData(table.cell, QVariant::fromValue(UaVariant(true)), Qt::UserRole);
        table.delegate.setEditorData(widget.get(), table.cell);
        QWidget other;
        written = 0;
        table.delegate.setModelData(&other, &table.model, table.cell);
        QCOMPARE(written, 0);
    }

    void invalidInput()
    {
        Table table(variantOf(&UaVariant::setGuid, guidOf("0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0")));
        const UaVariant before = table.value();
        const std::unique_ptr<QWidget> widget(table.createEditor());
        widget->findChild<QLineEdit*>()->clear();
        table.delegate.setModelData(widget.get(), &table.model, table.cell);
        QVERIFY(table.value() == before);
    }

    void enumerations_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QByteArray>("editor");
        QTest::newRow("members") << int(QvelEnumInfo::Enumeration) << QByteArray("QvelWidgetEnum");
        QTest::newRow("flags") << int(QvelEnumInfo::EnumerationFlags)
                               << QByteArray("QvelWidgetEnumFlags");
        QTest::newRow("none") << int(QvelEnumInfo::NoEnumeration) << QByteArray("QLineEdit");
        QTest::newRow("unknown") << 7 << QByteArray("QLineEdit");
    }
    void enumerations()
    {
        QFETCH(int, kind);
        QFETCH(QByteArray, editor);
        QvelEnumInfo info;
        info.kind = kind;
        info.values = flagNames();
        for (const UaVariant& value : {UaVariant(OpcUa_Int32(2)), UaVariant(OpcUa_Byte(2))}) {
            Table table(value, info);
            const std::unique_ptr<QWidget> widget(table.createEditor());
            QCOMPARE(className(widget.get()), editor);
            table.delegate.setModelData(widget.get(), &table.model, table.cell);
            const QVariant written = table.cell.data(Qt::EditRole);
            if (editor == "QLineEdit")
                QCOMPARE(written.toString(), QString("text"));
            else
                QCOMPARE(written, QVariant::fromValue(2l));
        }
    }

    void nestedValues_data()
    {
        QTest::addColumn<bool>("isMatrix");
        QTest::newRow("array") << false;
        QTest::newRow("matrix") << true;
    }
    void nestedValues()
    {
        QFETCH(bool, isMatrix);
        UaVariant nested;
        if (isMatrix) {
            QvelDialogWidgetMatrix maker((UaVariant()));
            UaStackTypeArray<OpcUa_UInt32> lengths;
            lengths.resize(1);
            lengths[0] = 2;
            maker.setInitialValue(OpcUaType_Int32, lengths);
            nested = maker.value(nullptr);
        } else {
            QvelDialogWidgetArray maker((UaVariant()));
            maker.setInitialValue(OpcUaType_Int32, 2);
            nested = maker.value(nullptr);
        }
        Table table(nested);
        QVERIFY(QTest::qWaitForWindowActive(&table.view));
        // Through the view: cancelled, then accepted.
        for (bool accept : {false, true}) {
            table.view.edit(table.cell);
            QPointer<QDialog> dialog = qobject_cast<QDialog*>(table.view.indexWidget(table.cell));
            QVERIFY(dialog);
            QCOMPARE(className(dialog),
                     QByteArray(isMatrix ? "QvelDialogWidgetMatrix" : "QvelDialogWidgetArray"));
            QVERIFY(QTest::qWaitForWindowActive(dialog));
            auto* inner = dialog->findChild<QTableView*>()->model();
            QVERIFY(inner->setData(inner->index(1, 0), "7"));
            accept ? dialog->accept() : dialog->reject();
            QTRY_VERIFY(!dialog);
            QCOMPARE(table.value().elementAt(1).toInt32(), OpcUa_Int32(accept ? 7 : 0));
        }
        QCOMPARE(nested.elementAt(1).toInt32(), OpcUa_Int32(0));
    }
};

QTEST_MAIN(ModelDelegateTest)
#include "tst_modeldelegate.moc"

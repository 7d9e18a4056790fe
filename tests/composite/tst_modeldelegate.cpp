// The delegate in a plain table over a plain model.

#include "elementcases.h"

#include <Kestrel/QvelModelDelegate>

#include <QtGui/QStandardItemModel>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QComboBox>

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
    explicit Table(const UaVariant& value, const QvelEnumInfo& info = {}, bool onlyChanges = false)
    {
        delegate.setWritesOnlyChanges(onlyChanges);
        model.setItem(0, 0, new QStandardItem("text"));
        cell = model.index(0, 0);
        model.setData(cell, QVariant::fromValue(value), Qt::UserRole);
        model.setData(cell, QVariant::fromValue(info), Qt::UserRole + 1);
        model.count = 0;
        view.setModel(&model);
        view.setItemDelegate(&delegate);
        view.show();
        option.rect = QRect(3, 5, 120, 25);
        editor.reset(delegate.createEditor(view.viewport(), option, cell));
        className = editor->metaObject()->className();
    }
    UaVariant value() const { return cell.data(Qt::UserRole).value<UaVariant>(); }
    void write() { delegate.setModelData(editor.get(), &model, cell); }

    CountingModel model;
    QvelModelDelegate delegate;
    QTableView view;
    QModelIndex cell;
    QStyleOptionViewItem option;
    std::unique_ptr<QWidget> editor;
    QByteArray className;
};

QvelEnumInfo names(int kind)
{
    QvelEnumInfo info;
    info.kind = kind;
    info.values = {{0, "None"}, {1, "A"}, {2, "B"}, {12, "C"}};
    return info;
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
        const QList<QByteArray> structured = {"QvelWidgetGuid",
                                              "QvelWidgetByteString",
                                              "QvelWidgetXmlElement",
                                              "QvelDialogWidgetNodeId",
                                              "QvelDialogWidgetExpandedNodeId",
                                              "QvelWidgetStatusCode",
                                              "QvelDialogWidgetQualifiedName",
                                              "QvelDialogWidgetLocalizedText"};
        for (int type = OpcUaType_Null; type <= OpcUaType_DiagnosticInfo; ++type) {
            QTest::addRow("%d", type)
                << type
                << (type == OpcUaType_Boolean
                        ? "QCheckBox"
                        : structured.value(type - OpcUaType_Guid, "QLineEdit"));
        }
    }
    void editors()
    {
        QFETCH(int, type);
        QFETCH(QByteArray, editor);
        const bool isDialog = editor.contains("Dialog");
        UaVariant value = nullOf(OpcUa_BuiltInType(type));
        for (const ElementCase& c : elementCases()) {
            if (c.type == type)
                value = c.value;
        }
        for (bool onlyChanges : {false, true}) {
            Table table(value, {}, onlyChanges);
            QCOMPARE(table.className, editor);
            const QPoint corner = table.view.viewport()->mapToGlobal(table.option.rect.topLeft());
            if (isDialog)
                QCOMPARE(table.editor->pos(), corner);
            if (auto* line = qobject_cast<QLineEdit*>(table.editor.get()))
                QVERIFY(!line->hasFrame() && line->text() == "text");
            if (auto* inner = qobject_cast<QvelWidgetBase*>(table.editor.get()))
                QCOMPARE(inner->flags(), QvelWidgetBase::HideFrame);
            const QSize size = table.editor->size();
            table.delegate.updateEditorGeometry(table.editor.get(), table.option, table.cell);
            QCOMPARE(table.editor->geometry(), isDialog ? QRect(corner, size) : table.option.rect);

            // What is written back: a dialog that was not accepted writes nothing.
            table.write();
            QCOMPARE(table.model.count, isDialog || onlyChanges ? 0 : 1);
            if (auto* dialog = qobject_cast<QDialog*>(table.editor.get())) {
                dialog->accept();
                table.write();
                QCOMPARE(table.model.count, onlyChanges ? 0 : 1);
            }
            QVERIFY(table.value() == value);
        }
    }

    void enumerations_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<UaVariant>("value");
        QTest::addColumn<int>("choice"); // an entry of the list; -1 for none
        QTest::addColumn<QString>("always");
        QTest::addColumn<QString>("onlyChanges");
        const auto uint64 = [](quint64 value) { return variantOf(&UaVariant::setUInt64, value); };
        const QString untouched = "text";
        const int one = QvelEnumInfo::Enumeration;
        const int flags = QvelEnumInfo::EnumerationFlags;
        QTest::newRow("named") << one << UaVariant(OpcUa_Int32(2)) << -1 << "2" << untouched;
        QTest::newRow("unnamed") << one << UaVariant(OpcUa_Int32(7)) << -1 << "0" << untouched;
        QTest::newRow("unnamed to 0") << one << UaVariant(OpcUa_Int32(7)) << 0 << "0"
                                      << "0";
        QTest::newRow("64 bits") << one << uint64(1ull << 40) << -1 << "0" << untouched;
        QTest::newRow("flags") << flags << UaVariant(OpcUa_Byte(2)) << -1 << "2" << untouched;
        QTest::newRow("unnamed bit")
            << flags << UaVariant(OpcUa_Int32(0x42)) << -1 << "2" << untouched;
        QTest::newRow("unnamed bit stays")
            << flags << UaVariant(OpcUa_Int32(int(0x80000042))) << 1 << "3"
            << "-2147483581";
        QTest::newRow("64 bits stay") << flags << uint64(0xf000000000000002) << 1 << "3"
                                      << "17293822569102704643";
        QTest::newRow("half of a name") << flags << UaVariant(OpcUa_Byte(0x44)) << 3 << "0"
                                        << "64";
        QTest::newRow("no names") << 7 << UaVariant(OpcUa_Int32(2)) << -1 << "text" << untouched;
    }
    void enumerations()
    {
        QFETCH(int, kind);
        QFETCH(UaVariant, value);
        QFETCH(int, choice);
        for (bool onlyChanges : {false, true}) {
            Table table(value, names(kind), onlyChanges);
            QCOMPARE(table.className, QByteArray(kind == 1   ? "QvelWidgetEnum"
                                                 : kind == 2 ? "QvelWidgetEnumFlags"
                                                             : "QLineEdit"));
            auto* box = table.editor->findChild<QComboBox*>();
            if (choice >= 0 && kind == 1)
                box->setCurrentIndex(choice);
            for (int i = 0; choice >= 0 && kind == 2 && i < box->count(); ++i) {
                // Without an entry for the name of 0, the others move up.
                if (box->itemText(i).contains(names(kind).values.values().at(choice)))
                    box->setItemData(i,
                                     box->itemData(i, Qt::CheckStateRole).toInt() ? Qt::Unchecked
                                                                                  : Qt::Checked,
                                     Qt::CheckStateRole);
            }
            table.write();
            const QVariant written = table.cell.data(Qt::EditRole);
            QTEST(written.toString(), onlyChanges ? "onlyChanges" : "always");
            if (!onlyChanges && kind != 7)
                QCOMPARE(written.userType(), int(QMetaType::Long));
        }
    }

    void nestedValues()
    {
        for (bool isMatrix : {false, true}) {
            const UaVariant nested = zeros(OpcUaType_Int32, 2, isMatrix);
            Table table(nested);
            table.editor.reset();
            QVERIFY(QTest::qWaitForWindowActive(&table.view));
            // Through the view: cancelled, then accepted.
            for (bool accept : {false, true}) {
                table.view.edit(table.cell);
                QPointer<QDialog> dialog =
                    qobject_cast<QDialog*>(table.view.indexWidget(table.cell));
                QVERIFY(dialog);
                QCOMPARE(dialog->inherits("QvelDialogWidgetMatrix"), isMatrix);
                QVERIFY(QTest::qWaitForWindowActive(dialog));
                const Parts parts(dialog);
                QVERIFY(parts.model->setData(parts.cell(1), "7"));
                accept ? dialog->accept() : dialog->reject();
                QTRY_VERIFY(!dialog);
                QCOMPARE(table.value().elementAt(1).toInt32(), OpcUa_Int32(accept ? 7 : 0));
            }
        }
    }
};

QTEST_MAIN(ModelDelegateTest)
#include "tst_modeldelegate.moc"

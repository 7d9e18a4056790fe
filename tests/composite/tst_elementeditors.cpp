// The array and matrix editors, as a person meets them.

#include "elementcases.h"
#include "support/warnings.h"

#include <Kestrel/QvelArrayModel>
#include <Kestrel/QvelDialogWidgetArray>
#include <Kestrel/QvelDialogWidgetMatrix>
#include <Kestrel/QvelEditWidgetArray>
#include <Kestrel/QvelEditWidgetMatrix>
#include <Kestrel/QvelEnumInfo>
#include <Kestrel/QvelMatrixModel>
#include <Kestrel/UaStackTypeArray>

#include <QtCore/QTimer>
#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QtTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QInputDialog>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QTableView>
#include <QtWidgets/QToolButton>

namespace {

constexpr int ValueRole = Qt::UserRole;
constexpr int EnumInfoRole = Qt::UserRole + 1;

QString text(const QModelIndex& index, int role = Qt::DisplayRole)
{
    return index.data(role).toString();
}

UaStackTypeArray<OpcUa_UInt32> dimensions(std::initializer_list<OpcUa_UInt32> lengths)
{
    UaStackTypeArray<OpcUa_UInt32> array;
    array.resize(OpcUa_UInt32(lengths.size()));
    std::copy(lengths.begin(), lengths.end(), array.begin());
    return array;
}

// A dialog with what a person sees of it.
struct Parts
{
    explicit Parts(QDialog* d)
        : dialog(d), table(d->findChild<QTableView*>()),
          write(d->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)),
          label(d->findChild<QLabel*>())
    {
        for (auto* button : d->findChildren<QAbstractButton*>()) {
            if (button->text() == "+")
                add = button;
            else if (button->text() == "-")
                remove = button;
            else if (button->text() == "Set Dimensions")
                shape = button;
        }
    }

    QModelIndex cell(int row) const { return table->model()->index(row, 0); }
    int rows() const { return table->model()->rowCount(); }
    UaVariant element(int row) const { return cell(row).data(ValueRole).value<UaVariant>(); }

    // Makes it so many elements long.
    void resize(int count) const
    {
        if (shape) {
            setDimensions(QString::number(count));
            return;
        }
        while (rows() < count)
            QTest::mouseClick(add, Qt::LeftButton);
        while (rows() > count)
            QTest::mouseClick(remove, Qt::LeftButton);
    }

    // Gives the list to the dialog that asks for it, and returns the text of the message that
    // follows, if one does.
    QString setDimensions(const QString& list, QString* suggestion = nullptr) const
    {
        QString message;
        QTimer::singleShot(0, dialog, [&] {
            auto* input = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
            if (suggestion)
                *suggestion = input->textValue();
            input->setTextValue(list);
            QTimer::singleShot(0, dialog, [&] {
                if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                    message = box->windowTitle() + ": " + box->text();
                    box->accept();
                }
            });
            input->accept();
        });
        QTest::mouseClick(shape, Qt::LeftButton);
        dialog->activateWindow(); // what a window manager does
        return message;
    }

    QDialog* dialog;
    QTableView* table;
    QAbstractButton* write;
    QLabel* label;
    QAbstractButton* add = nullptr;
    QAbstractButton* remove = nullptr;
    QAbstractButton* shape = nullptr;
};

// Opens a cell's editor by F2, types into its last line and presses Enter.
void typeInto(const Parts& parts, int row, const QString& keys)
{
    parts.table->setFocus();
    parts.table->setCurrentIndex(parts.cell(row));
    QTest::keyClick(parts.table, Qt::Key_F2);
    QPointer<QWidget> editor = parts.table->indexWidget(parts.cell(row));
    QVERIFY(editor);
    QWidget* line = editor;
    if (!editor->inherits("QLineEdit") && !editor->inherits("QCheckBox"))
        line = controls<QLineEdit>(editor).constLast();
    if (auto* edit = qobject_cast<QLineEdit*>(line)) {
        edit->setFocus();
        edit->selectAll();
        if (!edit->inputMask().isEmpty())
            QTest::keyClick(edit, Qt::Key_Home);
    }
    QTest::keyClicks(line, keys);
    QTest::keyClick(line, Qt::Key_Return);
    QTRY_VERIFY(!editor);
}

std::unique_ptr<QvelEditWidgetBase> createField(bool isMatrix, int flags = 0)
{
    const QvelEditWidgetBase::QvelEditWidgetFlags f(flags);
    if (isMatrix)
        return std::make_unique<QvelEditWidgetMatrix>(f);
    return std::make_unique<QvelEditWidgetArray>(f);
}

std::unique_ptr<QvelDialogWidgetBase> createDialog(bool isMatrix, const UaVariant& value,
                                                   int flags = 0)
{
    const QvelDialogWidgetBase::QvelDialogWidgetFlags f(flags);
    if (isMatrix)
        return std::make_unique<QvelDialogWidgetMatrix>(value, f);
    return std::make_unique<QvelDialogWidgetArray>(value, f);
}

// Runs `work` in the dialog that the "..." button opens.
template <class Work>
void inDialog(QvelEditWidgetBase* field, Work work)
{
    QTimer::singleShot(0, field, [field, work] {
        const Parts parts(field->findChild<QvelDialogWidgetBase*>());
        QVERIFY(QTest::qWaitForWindowActive(parts.dialog));
        work(parts);
        if (parts.dialog->isVisible())
            parts.dialog->reject();
    });
    QTest::mouseClick(field->findChild<QToolButton*>(QString(), Qt::FindDirectChildrenOnly),
                      Qt::LeftButton);
}

// An array of so many elements that are all zero bytes.
UaVariant zeros(OpcUa_BuiltInType type, int count, bool isMatrix = false)
{
    UaVariant value = emptyOf(type, isMatrix);
    if (type < OpcUaType_ExtensionObject) {
        QvelArrayModel array(&value, false);
        for (int i = 0; !isMatrix && i < count; ++i)
            array.addElement();
        QvelMatrixModel(&value, false).setDimensions(dimensions({OpcUa_UInt32(count)}));
        return value;
    }
    // What the models do not make.
    OpcUa_Variant* v = value.detach();
    void* block = std::calloc(size_t(count), 128);
    if (isMatrix) {
        OpcUa_Memory_Free(v->Value.Matrix.Elements);
        v->Value.Matrix.Elements = block;
        v->Value.Matrix.Dimensions[0] = OpcUa_UInt32(count);
    } else {
        OpcUa_Memory_Free(v->Value.Array.Elements);
        v->Value.Array.Elements = block;
        v->Value.Array.Length = count;
    }
    return value;
}

UaVariant stringsOf(const QStringList& texts)
{
    UaVariant value = zeros(OpcUaType_String, int(texts.size()));
    auto* strings = static_cast<OpcUa_String*>(value.detach()->Value.Array.Elements);
    for (int i = 0; i < texts.size(); ++i)
        UaString(texts.at(i).toUtf8()).copyTo(strings + i);
    return value;
}

// The tester does not accept flags for no cell at all, which these models have.
template <class Model>
class Tested : public Model
{
public:
    explicit Tested(UaVariant* value) : Model(value, false) {}
    Qt::ItemFlags flags(const QModelIndex& index) const override
    {
        return index.isValid() ? Model::flags(index) : Qt::ItemFlags();
    }
    const QAbstractItemModelTester tester{this,
                                          QAbstractItemModelTester::FailureReportingMode::QtTest};
};

} // namespace

class ElementEditorsTest : public QObject
{
    Q_OBJECT

    static void addTypes()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<bool>("isMatrix");
        for (int i = 0; i < elementCases().size(); ++i) {
            QTest::addRow("%s array", elementCases().at(i).name) << i << false;
            QTest::addRow("%s matrix", elementCases().at(i).name) << i << true;
        }
    }
    static void addShapes()
    {
        QTest::addColumn<bool>("isMatrix");
        QTest::newRow("array") << false;
        QTest::newRow("matrix") << true;
    }

private Q_SLOTS:
    void init() { failOnWarnings(); }

    void edits_data() { addTypes(); }
    void edits()
    {
        QFETCH(int, index);
        QFETCH(bool, isMatrix);
        const ElementCase& c = elementCases().at(index);
        const auto field = createField(isMatrix);
        QSignalSpy told(field.get(), SIGNAL(valueChanged(UaVariant)));
        field->show();
        field->setValue(emptyOf(c.type, isMatrix));
        const UaVariant empty = field->value(nullptr);
        QCOMPARE(empty.type(), c.type);
        QVERIFY(told.isEmpty());

        inDialog(field.get(), [&](const Parts& parts) {
            QVERIFY(parts.label->isHidden());
            QVERIFY(parts.write->isEnabled());
            QCOMPARE(parts.rows(), 0);
            parts.resize(3);
            QCOMPARE(parts.rows(), 3);
            for (int row = 0; row < 3; ++row) {
                QVERIFY(parts.element(row) == nullOf(c.type));
                QCOMPARE(parts.table->model()->headerData(row, Qt::Vertical).toString(),
                         QString(isMatrix ? "[%1]" : "%1").arg(row));
            }
            typeInto(parts, 1, QString::fromUtf8(c.keys));
            QVERIFY(parts.element(1) == c.value);
            QCOMPARE(text(parts.cell(1)), QString::fromUtf8(c.display));
            QCOMPARE(text(parts.cell(1), Qt::EditRole), QString::fromUtf8(c.edit));
            // Enter moves on, and the table has the focus back.
            QTRY_COMPARE(parts.table->currentIndex().row(), 2);
            QTRY_VERIFY(parts.table->hasFocus());
            // Escape leaves the cell as it was.
            QTest::keyClick(parts.table, Qt::Key_F2);
            QPointer<QWidget> editor = parts.table->indexWidget(parts.cell(2));
            QVERIFY(editor);
            if (editor->isWindow())
                QTRY_COMPARE(QApplication::activeWindow(), editor.data());
            QTest::keyClick(editor->isWindow() ? QApplication::focusWidget() : editor.data(),
                            Qt::Key_Escape);
            QTRY_VERIFY(!editor);
            QTRY_VERIFY(parts.table->hasFocus());
            QVERIFY(parts.element(2) == nullOf(c.type));
            QVERIFY(parts.dialog->isVisible());
            QTest::mouseClick(parts.write, Qt::LeftButton);
        });
        QCOMPARE(told.size(), 1);
        bool ok = false;
        const UaVariant accepted = field->value(&ok);
        QVERIFY(ok);
        QVERIFY(told.last().at(0).value<UaVariant>() == accepted);
        QCOMPARE(accepted.arraySize(), 3);
        QVERIFY(accepted.elementAt(0) == nullOf(c.type));
        QVERIFY(accepted.elementAt(1) == c.value);
        QCOMPARE(empty.arraySize(), 0);
        QCOMPARE(field->findChild<QLineEdit*>()->text(),
                 QString::fromUtf8(accepted.toFullString().toUtf8()));

        inDialog(field.get(), [&](const Parts& parts) {
            QCOMPARE(parts.rows(), 3);
            typeInto(parts, 0, QString::fromUtf8(c.keys));
            QVERIFY(parts.element(0) == c.value);
            parts.resize(1);
            QVERIFY(field->value(nullptr) != accepted);
            QTest::keyClick(parts.table, Qt::Key_Escape);
        });
        QVERIFY(field->value(nullptr) == accepted);
        QVERIFY(accepted.elementAt(0) == nullOf(c.type));

        inDialog(field.get(), [&](const Parts& parts) {
            QCOMPARE(parts.rows(), 3);
            QVERIFY(parts.element(1) == c.value);
        });
        QCOMPARE(told.size(), 1);
    }

    void badEdits_data() { addTypes(); }
    void badEdits()
    {
        QFETCH(int, index);
        QFETCH(bool, isMatrix);
        const ElementCase& c = elementCases().at(index);
        const auto dialog = createDialog(isMatrix, zeros(c.type, 2, isMatrix));
        QAbstractItemModel* model = Parts(dialog.get()).table->model();
        QSignalSpy changed(model, &QAbstractItemModel::dataChanged);
        const QModelIndex cell = model->index(1, 0);
        const bool isText = c.type == OpcUaType_String;
        QCOMPARE(model->setData(cell, "@", Qt::EditRole), isText);
        QCOMPARE(model->setData(cell, QVariant::fromValue(zeros(c.type, 1)), Qt::UserRole), false);
        QCOMPARE(model->setData(cell, "1", Qt::CheckStateRole), false);
        QCOMPARE(model->setData(model->index(0, 0).siblingAtRow(7), "1"), false);
        const bool takesText = c.type != OpcUaType_Boolean && c.type <= OpcUaType_DateTime;
        const QVariant whole = QVariant::fromValue(c.value);
        QCOMPARE(model->setData(cell, whole, Qt::UserRole), !takesText);
        if (!isText) {
            QCOMPARE(cell.data(ValueRole).value<UaVariant>() == nullOf(c.type), takesText);
        }
        QVERIFY(!model->data(QModelIndex()).isValid());
        QVERIFY(!cell.data(Qt::DecorationRole).isValid());
        QCOMPARE(model->flags(QModelIndex()),
                 Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsEnabled);
        QVERIFY(changed.isEmpty());
    }

    void numbersOutOfRange_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("input");
        QTest::newRow("SByte") << int(OpcUaType_SByte) << "128";
        QTest::newRow("Byte") << int(OpcUaType_Byte) << "-1";
        QTest::newRow("Int16") << int(OpcUaType_Int16) << "32768";
        QTest::newRow("UInt32") << int(OpcUaType_UInt32) << "4294967296";
        QTest::newRow("UInt64") << int(OpcUaType_UInt64) << "18446744073709551616";
        QTest::newRow("Int32 text") << int(OpcUaType_Int32) << "abc";
        QTest::newRow("Int32 tail") << int(OpcUaType_Int32) << "12x";
        QTest::newRow("Double") << int(OpcUaType_Double) << "1,5";
        QTest::newRow("DateTime") << int(OpcUaType_DateTime) << "yesterday";
    }
    void numbersOutOfRange()
    {
        QFETCH(int, type);
        QFETCH(QString, input);
        UaVariant value = zeros(OpcUa_BuiltInType(type), 1);
        Tested<QvelArrayModel> model(&value);
        QVERIFY(!model.setData(model.index(0, 0), input));
        QVERIFY(value.elementAt(0) == nullOf(OpcUa_BuiltInType(type)));
    }

    void precision()
    {
        UaVariant value = zeros(OpcUaType_Float, 1);
        static_cast<float*>(value.detach()->Value.Array.Elements)[0] = 1.2345678f;
        QCOMPARE(text(Tested<QvelArrayModel>(&value).index(0, 0)), QString("1.23457"));
        value = zeros(OpcUaType_Double, 1);
        static_cast<double*>(value.detach()->Value.Array.Elements)[0] = 1.23456789012345;
        QCOMPARE(text(Tested<QvelArrayModel>(&value).index(0, 0)), QString("1.23456789012"));
    }

    void unsupportedTypes_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<bool>("isMatrix");
        for (int type = OpcUaType_ExtensionObject; type <= OpcUaType_DiagnosticInfo; ++type) {
            QTest::addRow("%d array", type) << type << false;
            QTest::addRow("%d matrix", type) << type << true;
        }
    }
    void unsupportedTypes()
    {
        QFETCH(int, type);
        QFETCH(bool, isMatrix);
        const auto dialog = createDialog(isMatrix, zeros(OpcUa_BuiltInType(type), 2, isMatrix));
        dialog->show();
        const Parts parts(dialog.get());
        QCOMPARE(parts.rows(), 2);
        if (type != OpcUaType_ExtensionObject) {
            QCOMPARE(text(parts.cell(0)), QString("Type cannot be displayed"));
            QVERIFY(parts.element(0).isEmpty());
        }
        QVERIFY(!(parts.cell(0).flags() & Qt::ItemIsEditable));
        QVERIFY(!parts.table->model()->setData(parts.cell(0), "1"));
        QCOMPARE(parts.label->text(),
                 QString("Writing values of this type\nis currently not supported."));
        QVERIFY(parts.label->isVisible());
        QVERIFY(!parts.write->isEnabled());
        for (auto* button : {parts.add, parts.remove, parts.shape})
            QVERIFY(!button || button->isHidden());
        if (isMatrix) {
            QVERIFY(!static_cast<QvelMatrixModel*>(parts.table->model())
                         ->setDimensions(dimensions({5})));
        } else {
            QVERIFY(!static_cast<QvelArrayModel*>(parts.table->model())->addElement());
            QVERIFY(!static_cast<QvelArrayModel*>(parts.table->model())->removeElement());
        }
        QCOMPARE(parts.rows(), 2);
        // "Write" stays disabled for good.
        dialog->setValue(zeros(OpcUaType_Int32, 1, isMatrix));
        QVERIFY(parts.label->isHidden());
        QVERIFY(!parts.write->isEnabled());
        QVERIFY((isMatrix ? parts.shape : parts.add)->isVisible());
    }

    void otherShapesAreIgnored_data() { addShapes(); }
    void otherShapesAreIgnored()
    {
        QFETCH(bool, isMatrix);
        const auto field = createField(isMatrix);
        const UaVariant value = zeros(OpcUaType_Int32, 2, isMatrix);
        field->setValue(value);
        for (const UaVariant& other :
             {UaVariant(), UaVariant(OpcUa_Int32(1)), zeros(OpcUaType_Int32, 3, !isMatrix)}) {
            field->setValue(other);
            QVERIFY(field->value(nullptr) == value);
        }
    }

    void flags_data()
    {
        QTest::addColumn<int>("flags");
        QTest::addColumn<bool>("isMatrix");
        for (int flags = 0; flags < 4; ++flags) {
            QTest::addRow("array %d", flags) << flags << false;
            QTest::addRow("matrix %d", flags) << flags << true;
        }
    }
    void flags()
    {
        QFETCH(int, flags);
        QFETCH(bool, isMatrix);
        const auto field = createField(isMatrix, flags);
        auto* dialog = field->findChild<QvelDialogWidgetBase*>();
        QCOMPARE(int(dialog->flags()), flags);
        field->setValue(zeros(OpcUaType_Int32, 1, isMatrix));
        const Parts parts(dialog);
        const bool readOnly = flags & QvelEditWidgetBase::ReadOnly;
        QCOMPARE(parts.write->isEnabled(), !readOnly);
        QCOMPARE((isMatrix ? parts.shape : parts.add)->isEnabled(), flags == 0);
        QCOMPARE(parts.cell(0).flags().testFlag(Qt::ItemIsEditable), !readOnly);
    }

    void enumerations_data() { addTypes(); }
    void enumerations()
    {
        QFETCH(int, index);
        QFETCH(bool, isMatrix);
        const ElementCase& c = elementCases().at(index);
        UaVariant value = zeros(c.type, 2, isMatrix);
        QvelEnumInfo info;
        info.kind = QvelEnumInfo::Enumeration;
        info.values = {{-1, "All"}, {0, "None"}, {255, "Byte"}, {65535, "Word"}};
        const auto dialog = createDialog(isMatrix, value);
        if (isMatrix)
            static_cast<QvelDialogWidgetMatrix*>(dialog.get())->setEnumInfo(info);
        else
            static_cast<QvelDialogWidgetArray*>(dialog.get())->setEnumInfo(info);
        const Parts parts(dialog.get());
        QCOMPARE(text(parts.cell(1)), QString("0 (None)"));
        QCOMPARE(parts.cell(1).data(EnumInfoRole).value<QvelEnumInfo>(), info);
        if (c.type < OpcUaType_SByte || c.type > OpcUaType_UInt64)
            return;
        // Widened by its sign, and edited as a number.
        const bool isUnsigned = c.type % 2 == 1;
        const int width = 8 << ((c.type - OpcUaType_SByte) / 2);
        const int all = isUnsigned && width < 32 ? (1 << width) - 1 : -1;
        QVERIFY(parts.table->model()->setData(parts.cell(1), QVariant::fromValue(long(all)),
                                              Qt::EditRole));
        QCOMPARE(text(parts.cell(1)), info.toString(all));
    }

    void enumeratedCells_data() { addShapes(); }
    void enumeratedCells()
    {
        QFETCH(bool, isMatrix);
        for (int kind : {QvelEnumInfo::Enumeration, QvelEnumInfo::EnumerationFlags}) {
            const auto field = createField(isMatrix);
            field->show();
            field->setValue(zeros(OpcUaType_Byte, 2, isMatrix));
            QvelEnumInfo info;
            info.kind = kind;
            info.values = {{0, "Off"}, {1, "On"}, {2, "Locked"}};
            auto* line = field->findChild<QLineEdit*>();
            QString refusal = "This array type cannot be displayed";
            if (isMatrix) {
                static_cast<QvelEditWidgetMatrix*>(field.get())->setEnumInfo(info);
                refusal.replace("array", "matrix");
            } else {
                static_cast<QvelEditWidgetArray*>(field.get())->setEnumInfo(info);
            }
            QCOMPARE(line->text(), refusal);
            inDialog(field.get(), [&](const Parts& parts) {
                QCOMPARE(text(parts.cell(0)), QString("0 (Off)"));
                parts.table->setCurrentIndex(parts.cell(0));
                QTest::keyClick(parts.table, Qt::Key_F2);
                QWidget* editor = parts.table->indexWidget(parts.cell(0));
                QVERIFY(editor);
                auto* combo = editor->findChild<QComboBox*>();
                if (kind == QvelEnumInfo::Enumeration)
                    QTest::keyClick(combo, Qt::Key_Down);
                else
                    combo->setItemData(0, Qt::Checked, Qt::CheckStateRole);
                QTest::keyClick(combo, Qt::Key_Return);
                QTRY_COMPARE(text(parts.cell(0)), QString("1 (On)"));
                QTest::mouseClick(parts.write, Qt::LeftButton);
            });
            QCOMPARE(field->value(nullptr).elementAt(0).toByte(), OpcUa_Byte(1));
            QCOMPARE(line->text(), refusal);
            field->setValue(zeros(OpcUaType_Byte, 1, isMatrix));
            QCOMPARE(line->text(), refusal);
        }
    }

    // As in a spreadsheet.
    void keys()
    {
        QvelDialogWidgetArray dialog(zeros(OpcUaType_Guid, 3));
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        const Parts parts(&dialog);
        parts.table->setFocus();
        parts.table->setCurrentIndex(parts.cell(0));
        QTest::keyClick(parts.table, Qt::Key_Return);
        QCOMPARE(parts.table->currentIndex().row(), 1);
        QTest::keyClick(parts.table, Qt::Key_Tab);
        QCOMPARE(parts.table->currentIndex().row(), 2);
        QTest::keyClick(parts.table, Qt::Key_Return);
        QCOMPARE(parts.table->currentIndex().row(), 2);
        QVERIFY(dialog.isVisible());
        QTest::keyClick(parts.table, Qt::Key_Tab);
        QVERIFY(!parts.table->hasFocus());
        parts.table->setFocus();
        // Tab in a cell opens the next one, whatever control is inside.
        parts.table->setCurrentIndex(parts.cell(0));
        QTest::keyClick(parts.table, Qt::Key_F2);
        auto* line = parts.table->indexWidget(parts.cell(0))->findChild<QLineEdit*>();
        QTest::keyClick(line, Qt::Key_Home);
        QTest::keyClicks(line, "0f1e2d3c4b5a69788796a5b4c3d2e1f0");
        QTest::keyClick(line, Qt::Key_Tab);
        QCOMPARE(text(parts.cell(0)), QString("{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}"));
        QVERIFY(parts.table->indexWidget(parts.cell(1)));
        QTest::mouseClick(parts.table->viewport(), Qt::LeftButton, {},
                          parts.table->visualRect(parts.cell(2)).center());
        QTRY_VERIFY(!parts.table->indexWidget(parts.cell(1)));
        QTest::mouseDClick(parts.table->viewport(), Qt::LeftButton, {},
                           parts.table->visualRect(parts.cell(2)).center());
        QTRY_VERIFY(parts.table->indexWidget(parts.cell(2)));
    }

    void dimensionLists_data()
    {
        QTest::addColumn<QString>("list");
        QTest::addColumn<QStringList>("labels");
        QTest::addColumn<QString>("message");
        const QStringList old = {"[0][0]", "[0][1]", "[1][0]", "[1][1]"};
        const QString bad = "Format Error: The list of dimensions entered was not valid.";
        const QString large = "Set Matrix Dimensions: The matrix would have too many elements, or "
                              "there is not enough memory for it. It was not changed.";
        QTest::newRow("matrix") << "2,3" << QStringList{"[0][0]", "[0][1]", "[0][2]",
                                                        "[1][0]", "[1][1]", "[1][2]"}
                                << "";
        QTest::newRow("cube") << "1,2,1" << QStringList{"[0][0][0]", "[0][1][0]"} << "";
        QTest::newRow("one") << "4" << QStringList{"[0]", "[1]", "[2]", "[3]"} << "";
        QTest::newRow("none") << "0" << QStringList{} << "";
        QTest::newRow("none of many") << "65536,65536,65536,65536,0" << QStringList{} << "";
        QTest::newRow("gap") << "2,,3" << old << bad;
        QTest::newRow("semicolon") << "2;3" << old << bad;
        QTest::newRow("word") << "abc" << old << bad;
        QTest::newRow("empty") << "" << old << bad;
        QTest::newRow("negative") << "-2" << old << bad;
        QTest::newRow("overflow to 0") << "65536,65536" << old << large;
        QTest::newRow("overflow to 4") << "1073741825,4" << old << large;
        QTest::newRow("memory") << "2147483647" << old << large;
    }
    void dimensionLists()
    {
        QFETCH(QString, list);
        QFETCH(QStringList, labels);
        QFETCH(QString, message);
        QvelDialogWidgetMatrix dialog((UaVariant()));
        dialog.setInitialValue(OpcUaType_Int32, dimensions({2, 2}));
        dialog.show();
        const Parts parts(&dialog);
        for (int row = 0; row < 4; ++row)
            QVERIFY(parts.table->model()->setData(parts.cell(row), row + 1));
        QString suggestion;
        QCOMPARE(parts.setDimensions(list, &suggestion), message);
        QCOMPARE(suggestion, QString("2,2"));
        QCOMPARE(parts.rows(), labels.size());
        QCOMPARE(dialog.value(nullptr).arraySize(), labels.size());
        for (int row = 0; row < labels.size(); ++row) {
            QCOMPARE(parts.table->model()->headerData(row, Qt::Vertical).toString(),
                     labels.at(row));
            QCOMPARE(text(parts.cell(row)).toInt(), row < 4 ? row + 1 : 0);
        }
    }

    void initialValues()
    {
        QvelEditWidgetArray field;
        field.setInitialValue(OpcUaType_Null, 3);
        QVERIFY(field.value(nullptr).isEmpty());
        field.setInitialValue(OpcUaType_LocalizedText, 3);
        QCOMPARE(field.value(nullptr).arraySize(), 3);
        field.setInitialValue(OpcUaType_LocalizedText, 0xffffffff);
        QCOMPARE(field.value(nullptr).arraySize(), 3);
        QvelEditWidgetMatrix matrix;
        matrix.setInitialValue(OpcUaType_String, dimensions({}));
        QCOMPARE(matrix.value(nullptr).arraySize(), 1);
        matrix.setInitialValue(OpcUaType_String, dimensions({2, 3}));
        QCOMPARE(matrix.value(nullptr).arraySize(), 6);
    }

    // Values that contradict themselves are shown as far as they are sound.
    void unsoundValues()
    {
        UaVariant array = emptyOf(OpcUaType_Int32, false);
        OpcUa_Memory_Free(array.detach()->Value.Array.Elements);
        array.detach()->Value.Array.Elements = nullptr;
        array.detach()->Value.Array.Length = 5;
        Tested<QvelArrayModel> arrayModel(&array);
        QCOMPARE(arrayModel.rowCount(), 0);
        QVERIFY(arrayModel.addElement());
        QCOMPARE(text(arrayModel.index(0, 0)), QString("0"));

        UaVariant matrix = zeros(OpcUaType_Int32, 2, true);
        QvelMatrixModel matrixModel(&matrix, false);
        QCOMPARE(matrixModel.rowCount(), 2);
        // Without a list of dimensions the model keeps its count, but reads what there is.
        auto& storage = matrix.detach()->Value.Matrix;
        OpcUa_Memory_Free(storage.Dimensions);
        storage.Dimensions = nullptr;
        storage.NoOfDimensions = 0;
        matrixModel.refresh();
        QCOMPARE(matrixModel.rowCount(), 2);
        QVERIFY(!matrixModel.index(1, 0).data().isValid());
        UaVariant none;
        QCOMPARE(QvelMatrixModel(&none, false).rowCount(), -1);
        // As a window, too.
        QvelDialogWidgetMatrix dialog(none);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    }

    // What is seen has the height that a full measurement gives it.
    void rowHeights_data()
    {
        QTest::addColumn<bool>("breaks");
        QTest::newRow("plain") << false;
        QTest::newRow("several lines") << true;
    }
    void rowHeights()
    {
        QFETCH(bool, breaks);
        QStringList texts;
        for (int i = 0; i < 500; ++i)
            texts << (breaks && i % 3 ? QString("a\nb\nc").repeated(i % 5) : QString::number(i));
        QvelDialogWidgetArray dialog(stringsOf(texts));
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        const Parts parts(&dialog);
        const auto compare = [&] {
            QCoreApplication::processEvents();
            const int first = parts.table->rowAt(0);
            QMap<int, int> seen;
            for (int row = first; row < 500 && parts.table->rowViewportPosition(row) <
                                                   parts.table->viewport()->height();
                 ++row)
                seen.insert(row, parts.table->rowHeight(row));
            QVERIFY(!seen.isEmpty());
            QTableView reference;
            reference.setModel(parts.table->model());
            reference.horizontalHeader()->hide();
            reference.horizontalHeader()->setStretchLastSection(true);
            reference.resize(parts.table->size());
            reference.show();
            reference.resizeRowsToContents();
            for (int row : seen.keys())
                QCOMPARE(seen.value(row), reference.rowHeight(row));
        };
        compare();
        parts.table->verticalScrollBar()->setValue(200);
        compare();
        dialog.resize(dialog.width() / 2, dialog.height());
        compare();
        QTest::mouseClick(parts.add, Qt::LeftButton);
        QCOMPARE(parts.table->currentIndex().row(), 500);
        QCoreApplication::processEvents();
        QVERIFY(parts.table->viewport()->rect().contains(parts.table->visualRect(parts.cell(500))));
    }

    void thirtyTwoRowsFit()
    {
        QvelDialogWidgetArray dialog(zeros(OpcUaType_Int32, 32));
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        QTableView* table = Parts(&dialog).table;
        const int needed = 32 * table->rowHeight(0);
        if (needed > dialog.screen()->availableGeometry().height() - 80)
            QSKIP("The screen has no room");
        QTRY_VERIFY(!table->verticalScrollBar()->isVisible());
    }
};

QTEST_MAIN(ElementEditorsTest)
#include "tst_elementeditors.moc"

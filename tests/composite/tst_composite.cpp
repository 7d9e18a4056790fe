// The editors of arrays, matrices and single elements, as a person meets them.

#include "support/cells.h"
#include "support/modaluser.h"
#include "support/values.h"
#include "support/warnings.h"

#include <Kestrel/QvelEditWidgetArray>
#include <Kestrel/QvelEditWidgetMatrix>
#include <Kestrel/QvelEnumInfo>
#include <Kestrel/QvelModelDelegate>
#include <Kestrel/QvelWidgetVariant>

namespace {

struct ElementCase
{
    V value;
    QString display;
    QString edit = display;
    QString keys = edit; // what a person types to get the value; a space checks a box
};

// By type, from Boolean on.
const QList<ElementCase>& elementCases()
{
    const QString guid = "{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}";
    static const QList<ElementCase> cases = {
        {V(true), "true", "true", " "},
        {V(OpcUa_SByte(-128)), "-128"},
        {V(OpcUa_Byte(255)), "255"},
        {V(OpcUa_Int16(-32768)), "-32768"},
        {V(OpcUa_UInt16(65535)), "65535"},
        {V(-2147483647), "-2147483647"},
        {V(4294967295u), "4294967295"},
        {V(-9223372036854775807), "-9223372036854775807"},
        {V(18446744073709551615u), "18446744073709551615"},
        {V(1.5f), "1.5"},
        {V(-1e300), "-1e+300"},
        {V("Pump 1"), "Pump 1"},
        {V(UaDateTime::fromString("2024-02-29T13:14:15Z")), "2024-02-29T13:14:15Z"},
        {V(UaGuid(QUuid(guid))), guid, guid, "0f1e2d3c4b5a69788796a5b4c3d2e1f0"},
        {V(UaByteString(QByteArray::fromHex("0aff00"))), "0a ff 00", "0aff00", "0x0AFF00"},
        {xmlElement("<a/>"), "<a/>"},
        {V(UaNodeId(85, 0)), "85"},
        {V(UaExpandedNodeId(UaNodeId(85, 0), UaString(), 0)), "85"},
        {V(UaStatusCode(0x80340000u)), "BadNodeIdUnknown", "0x80340000", "80340000"},
        {V(UaQualifiedName("Pump", 0)), "Pump"},
        {V(UaLocalizedText("", "Pump")), "Pump"}};
    return cases;
}

// An element of zero bytes, the null value of every type.
V nullOf(int type)
{
    OpcUa_Variant null = {};
    null.Datatype = OpcUa_Byte(type);
    return V(null);
}

// So many null values.
V zeros(int type, OpcUa_UInt32 count, bool isMatrix = false)
{
    QvelEditWidgetArray array;
    array.setInitialValue(OpcUa_Byte(type), count);
    QvelEditWidgetMatrix matrix;
    matrix.setInitialValue(OpcUa_Byte(type), {count});
    return isMatrix ? matrix.value() : array.value();
}

// A dialog as a person meets it.
struct Parts
{
    explicit Parts(QWidget* d)
        : dialog(d), table(d->findChild<QTableView*>()), model(table->model())
    {
    }

    QAbstractButton* button(const QString& text) const { return buttonOf(dialog, text); }
    QModelIndex cell(int row) const { return model->index(row, 0); }
    QString text(int row) const { return cell(row).data().toString(); }
    V element(int row) const { return cell(row).data(Qt::UserRole).value<V>(); }
    QWidget* editor(int row) const { return table->indexWidget(cell(row)); }
    int current() const { return table->currentIndex().row(); }

    // Gives the list to the dialog that asks for it, and returns what was asked and told.
    QStringList setDimensions(const QString& list, QString* suggestion = nullptr) const
    {
        ModalUser user([&](QDialog* asked) {
            auto* input = qobject_cast<QInputDialog*>(asked);
            if (suggestion)
                *suggestion = input->textValue();
            input->setTextValue(list);
            input->accept();
        });
        QTest::mouseClick(button("Set Dimensions"), Qt::LeftButton);
        dialog->activateWindow(); // what a window manager does
        return user.seen;
    }
    void resize(int count) const
    {
        if (button("Set Dimensions"))
            setDimensions(QString::number(count));
        else
            for (int step = count - model->rowCount(); step; step += step < 0 ? 1 : -1)
                QTest::mouseClick(button(step < 0 ? "-" : "+"), Qt::LeftButton);
    }
    // Opens a cell's editor by F2 and gives the control that takes the keys.
    QWidget* open(int row) const
    {
        table->setFocus();
        table->setCurrentIndex(cell(row));
        QTest::keyClick(table, Qt::Key_F2);
        return typedControl(editor(row));
    }
    // ...types into it and ends it. False if that does not close it, and it alone.
    bool type(int row, const QString& keys, Qt::Key end = Qt::Key_Return) const
    {
        QWidget* control = open(row);
        const QPointer<QWidget> open = editor(row);
        if (!control)
            return false;
        QTest::keyClicks(control, keys);
        QTest::keyClick(control, end);
        return QTest::qWaitFor([&] { return !open && dialog->isVisible() && table->hasFocus(); },
                               1000);
    }

    QWidget* dialog;
    QTableView* table;
    QAbstractItemModel* model;
};

// Runs `work` in the dialog that the "..." button opens. False if that did not come to its end.
template <class Work>
bool inDialog(QWidget* field, Work work)
{
    bool isDone = false;
    ModalUser user([&](QDialog* dialog) {
        user.stop();
        const QPointer<QDialog> open = dialog;
        if (QTest::qWaitForWindowActive(dialog)) {
            work(Parts(dialog));
            isDone = !QTest::currentTestFailed();
        }
        if (open)
            open->reject();
    });
    QTest::mouseClick(field->findChild<QToolButton*>(QString(), Qt::FindDirectChildrenOnly),
                      Qt::LeftButton);
    return isDone;
}

struct Arrays
{
    using Model = QvelArrayModel;
    using Dialog = QvelDialogWidgetArray;
    using Field = QvelEditWidgetArray;
    static constexpr bool isMatrix = false;
};

struct Matrices
{
    using Model = QvelMatrixModel;
    using Dialog = QvelDialogWidgetMatrix;
    using Field = QvelEditWidgetMatrix;
    static constexpr bool isMatrix = true;
};

// A model under the tester, which does not accept flags for no cell at all as these models have.
template <class Model>
class Tested : public Model
{
public:
    explicit Tested(V* value) : Model(value, false) {}
    Qt::ItemFlags flags(const QModelIndex& index) const override
    {
        return index.isValid() ? Model::flags(index) : Qt::ItemFlags();
    }
    const QAbstractItemModelTester tester{this,
                                          QAbstractItemModelTester::FailureReportingMode::QtTest};
};

bool holds(const V& value, const QList<V>& elements)
{
    bool equal = value.arraySize() == elements.size();
    for (int i = 0; equal && i < elements.size(); ++i)
        equal = value.elementAt(i) == elements.at(i);
    return equal;
}

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
    explicit Table(const V& value, const QvelEnumInfo& info = {}, bool onlyChanges = false)
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
    const QByteArray name = typeName(type).toLatin1();
    return {(inDialogs.contains(type) ? "QvelDialogWidget" : "QvelWidget") + name,
            (type == OpcUaType_ExpandedNodeId ? "QvelEditWidget" : "QvelWidget") + name};
}

V valueOf(int type)
{
    return type < 1 || type > elementCases().size() ? nullOf(type)
                                                    : elementCases().at(type - 1).value;
}

} // namespace

class CompositeTest : public QObject
{
    Q_OBJECT

    template <class Shape>
    void edit(const ElementCase& c)
    {
        const V null = nullOf(c.value.type());
        const V empty = zeros(c.value.type(), 0, Shape::isMatrix);
        QStandardItemModel host(1, 1);
        host.setData(host.index(0, 0), QVariant::fromValue(empty), Qt::EditRole);
        typename Shape::Field field;
        QSignalSpy told(&field, &Shape::Field::valueChanged);
        QDataWidgetMapper mapper;
        mapper.setSubmitPolicy(QDataWidgetMapper::ManualSubmit);
        mapper.setModel(&host);
        mapper.addMapping(&field, 0);
        mapper.toFirst();
        field.setValue(V(OpcUa_Int32(1)));
        field.setValue(zeros(OpcUaType_Int32, 3, !Shape::isMatrix));
        QVERIFY(field.value() == empty && told.isEmpty());
        field.resize(80, 30);
        field.show();
        QVERIFY(inDialog(&field, [&](const Parts& parts) {
            QVERIFY(parts.table->hasFocus()); // not "Write"
            parts.resize(3);
            QVERIFY(holds(field.value(), {null, null, null}));
            QCOMPARE(parts.model->headerData(2, Qt::Vertical).toString(),
                     QString(Shape::isMatrix ? "[2]" : "2"));
            // Enter closes the editor, not the dialog, and moves on; Escape changes nothing.
            QVERIFY(parts.type(1, c.keys));
            QCOMPARE(parts.current(), 2);
            QCOMPARE(parts.text(1), QString(c.display));
            QCOMPARE(parts.cell(1).data(Qt::EditRole).toString(), QString(c.edit));
            QVERIFY(parts.type(2, c.keys, Qt::Key_Escape));
            QVERIFY(parts.element(1) == c.value && parts.element(2) == null);
            QTest::mouseClick(parts.button("Write"), Qt::LeftButton);
        }));
        bool ok = false;
        const V accepted = field.value(&ok);
        QVERIFY(ok && told.size() == 1 && told.at(0).at(0).template value<V>() == accepted);
        QVERIFY(holds(accepted, {null, c.value, null}));
        QVERIFY(mapper.submit() && host.item(0)->text().isEmpty());
        QVERIFY(host.index(0, 0).data().template value<V>() == accepted);
        auto* line = field.template findChild<QLineEdit*>();
        QCOMPARE(line->text(), QString::fromUtf8(accepted.toFullString().toUtf8()));
        QCOMPARE(line->cursorPosition(), 0);
        QVERIFY(inDialog(&field, [&](const Parts& parts) {
            QVERIFY(parts.type(0, c.keys));
            parts.resize(1);
            QVERIFY(holds(field.value(), {c.value}));
            QTest::keyClick(parts.table, Qt::Key_Escape);
        }));
        QVERIFY(field.value() == accepted && told.size() == 1);
    }

    // Random operations beside a plain list.
    template <class Shape>
    void operate(const ElementCase& c, quint32 seed)
    {
        static const QHash<int, QString> outOfRange = {
            {OpcUaType_SByte, "128"},   {OpcUaType_Byte, "-1"},
            {OpcUaType_Int16, "32768"}, {OpcUaType_UInt32, "4294967296"},
            {OpcUaType_Int32, "12x"},   {OpcUaType_UInt64, "18446744073709551616"},
            {OpcUaType_Double, "1,5"},  {OpcUaType_DateTime, "yesterday"}};
        const V null = nullOf(c.value.type());
        const V array = zeros(c.value.type(), 1);
        const bool takesText =
            c.value.type() != OpcUaType_Boolean && c.value.type() <= OpcUaType_DateTime;
        const bool isString = c.value.type() == OpcUaType_String;
        QRandomGenerator random(seed);
        V value = zeros(c.value.type(), 0, Shape::isMatrix);
        QList<V> oracle;
        QList<std::pair<V, QList<V>>> copies;
        Tested<typename Shape::Model> model(&value);
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        for (int i = 0; i < 300; ++i) {
            const int row = random.bounded(int(oracle.size()) + 1); // the last is none
            const QModelIndex cell = model.index(row, 0);
            const int operation = random.bounded(9);
            if (operation < 3) {
                const V element = operation == 0 && !isString ? null : c.value;
                const QVariant text = QString::fromUtf8(element.toString().toUtf8());
                QCOMPARE(model.setData(cell, takesText ? text : QVariant::fromValue(element),
                                       takesText ? Qt::EditRole : Qt::UserRole),
                         cell.isValid());
                if (cell.isValid())
                    oracle[row] = element;
            } else if (operation == 3) {
                QVERIFY(isString || !model.setData(cell, outOfRange.value(c.value.type(), "@")));
                QVERIFY(!model.setData(cell, QVariant::fromValue(array), Qt::UserRole));
                QVERIFY(!takesText ||
                        !model.setData(cell, QVariant::fromValue(c.value), Qt::UserRole));
            } else if (operation == 7) {
                copies.append({value, oracle});
            } else if (operation == 8 && !copies.isEmpty()) {
                std::tie(value, oracle) = copies.at(random.bounded(int(copies.size())));
                model.refresh();
            } else if constexpr (Shape::isMatrix) {
                // More rows than dimensions, or the tester rejects the header change.
                const OpcUa_UInt32 a = 2 + random.bounded(5u), b = 2 + random.bounded(5u);
                const bool isList = random.bounded(2);
                QVERIFY(isList ? model.setDimensions({a}) : model.setDimensions({a, b}));
                oracle.resize(int(isList ? a : a * b), null);
            } else if (operation < 6) {
                QVERIFY(model.addElement());
                oracle.append(null);
            } else {
                QVERIFY(model.removeElement());
                oracle.resize(std::max(0, int(oracle.size()) - 1));
            }
            QCOMPARE(model.rowCount(), int(oracle.size()));
            QVERIFY(holds(value, oracle));
        }
        for (const auto& [kept, elements] : std::as_const(copies))
            QVERIFY(holds(kept, elements));
        QVERIFY(changed.isEmpty());
    }

    // What cannot be changed, by its type or by the flags of the field.
    template <class Shape>
    void lock(int type, int flags)
    {
        const QString resizer = Shape::isMatrix ? "Set Dimensions" : "-";
        const bool isEditable = type < OpcUaType_ExtensionObject;
        const bool readOnly = flags & QvelEditWidgetBase::ReadOnly;
        using Flags = QvelEditWidgetBase::QvelEditWidgetFlags;
        typename Shape::Field field{Flags(flags % 2 ? flags : 3 - flags)};
        field.setFlags(Flags(flags)); // or from the beginning
        field.setValue(zeros(type, 2, Shape::isMatrix));
        auto* dialog = field.template findChild<typename Shape::Dialog*>();
        dialog->show();
        const Parts parts(dialog);
        QCOMPARE(parts.text(0) == "Type cannot be displayed", type > OpcUaType_ExtensionObject);
        QCOMPARE(parts.element(1).isEmpty(), type > OpcUaType_ExtensionObject);
        QCOMPARE(bool(parts.cell(0).flags() & Qt::ItemIsEditable), isEditable && !readOnly);
        QCOMPARE(parts.button("Write")->isEnabled(), isEditable && !readOnly);
        QCOMPARE(dialog->template findChild<QLabel*>()->isVisible(), !isEditable);
        QCOMPARE(parts.button(resizer)->isVisible(), isEditable);
        QCOMPARE(parts.button(resizer)->isEnabled(), !flags);
        if (!isEditable) {
            QVERIFY(!parts.model->setData(parts.cell(0), "1"));
            ModalUser told; // nothing but the question of a matrix
            parts.button(resizer)->click();
            QCOMPARE(told.seen.size(), Shape::isMatrix && !flags ? 1 : 0);
            auto* model = static_cast<typename Shape::Model*>(parts.model);
            if constexpr (Shape::isMatrix)
                QVERIFY(!model->setDimensions({5}));
            else
                QVERIFY(!model->addElement() && !model->removeElement());
            // "Write" stays disabled for good.
            dialog->setValue(zeros(OpcUaType_Int32, 1, Shape::isMatrix));
            QVERIFY(!parts.button("Write")->isEnabled() && parts.button(resizer)->isVisible());
        }
        dialog->hide();
    }

    void leave(bool isMatrix, char what, char when)
    {
        const QPointer<QvelWidgetVariant> host = new QvelWidgetVariant;
        host->setValue(zeros(OpcUaType_Int32, 3, isMatrix));
        host->show();
        QVERIFY(QTest::qWaitForWindowActive(host));
        const QPointer<QvelEditWidgetBase> field = host->findChild<QvelEditWidgetBase*>();
        const QPointer<QWidget> button = field->findChild<QToolButton*>();
        const auto go = [&] {
            const QWidget* modal = QApplication::activeModalWidget();
            QCOMPARE(bool(qobject_cast<const QMessageBox*>(modal)), when == 'm');
            if (what == 't')
                host->setValue(V(OpcUa_Int32(1)));
            else
                delete (what == 'h' ? static_cast<QWidget*>(host) : field.data());
        };
        ModalUser user([&](QDialog* dialog) {
            if (when == 'o' || when == 'k')
                return go();
            const QPointer<QWidget> shape = Parts(dialog).button("Set Dimensions");
            ModalUser inner([&](QDialog* asked) {
                if (when == 'a')
                    return go();
                static_cast<QInputDialog*>(asked)->setTextValue("x");
                QTimer::singleShot(0, this, go);
                static_cast<QInputDialog*>(asked)->accept();
            });
            QTest::mouseClick(shape, Qt::LeftButton);
            QVERIFY(shape); // to which the click returns
        });
        if (when == 'k')
            QTest::keyClick(button, Qt::Key_Space);
        else
            QTest::mouseClick(button, Qt::LeftButton);
        QVERIFY(button);
        QTest::qWait(0);
        QVERIFY(!field && !button);
        delete host;
    }

    // By a line, inside an editor, in a dialog.
    void changeUnderAnEdit(int type, const QByteArray& change)
    {
        const Case here(change + " under " + typeName(type).toLatin1());
        const ElementCase& c = elementCases().at(type - 1);
        const bool isKept = change == "longer";
        QvelDialogWidgetArray dialog(zeros(c.value.type(), 4));
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        const Parts parts(&dialog);
        QTest::keyClicks(parts.open(2), c.keys);
        QToolTip::hideText();
        if (change == "removed")
            parts.resize(2);
        else if (change == "type")
            dialog.setValue(zeros(OpcUaType_Boolean, 4));
        else
            dialog.setValue(zeros(c.value.type(), isKept ? 6 : 2));
        QTest::qWait(10);
        QCOMPARE(bool(parts.editor(2)), isKept);
        const auto isTold = [] { return !QToolTip::text().isEmpty(); };
        if (!isKept && change != "removed")
            QVERIFY(QTest::qWaitFor(isTold, 2000));
        else
            QVERIFY(!isTold());
        if (isKept) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
            QTRY_VERIFY(!parts.editor(2));
            QVERIFY(parts.element(2) == c.value);
        }
        QTRY_VERIFY(parts.table->hasFocus());
    }

    void useCell(const QByteArray& editor, const V& value, bool onlyChanges)
    {
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
        auto* parts = table.editor->findChild<QTableView*>();
        if (parts)
            parts->model()->setData(parts->model()->index(1, 0), QVariant::fromValue(V(true)),
                                    Qt::UserRole);
        table.write();
        QVERIFY(table.cell.data(Qt::UserRole).value<V>() == value);
        if (dialog) {
            dialog->accept();
            table.write();
            QCOMPARE(table.model.count, parts || !onlyChanges ? 1 : 0);
            const auto written = table.cell.data(Qt::UserRole).value<V>();
            QCOMPARE(written.elementAt(1).toBool() != 0, bool(parts));
        } else if (editor == "QLineEdit") {
            QCOMPARE(table.cell.data(Qt::EditRole).toString(), QString("other"));
        }
    }

    void choose(int type, int arrayType)
    {
        const QList<QByteArray> widgets = {editorsOf(type).second, "QvelEditWidgetArray",
                                           "QvelEditWidgetMatrix"};
        // By choice: each box tells once, of the empty value of the new widget.
        Form form;
        auto* box = form.at<QComboBox>(0);
        QCOMPARE(box->itemText(type), typeName(type));
        QCOMPARE(box->itemData(type).toInt(), type);
        box->setCurrentIndex(type);
        form.at<QComboBox>(1)->setCurrentIndex(arrayType);
        QCOMPARE(form.changed.size(), (type != 0) + (arrayType != 0));
        QCOMPARE(QByteArray(form.at(2)->metaObject()->className()), widgets.at(arrayType));
        bool ok = false;
        const V empty = form.editor.value(&ok);
        const bool needsInput = (type >= OpcUaType_SByte && type <= OpcUaType_UInt64) ||
                                type == OpcUaType_Guid || type == OpcUaType_StatusCode;
        if (arrayType)
            QVERIFY(ok && empty == (type ? zeros(type, 0, arrayType == 2) : V()));
        else if (type != OpcUaType_NodeId && type != OpcUaType_ExpandedNodeId)
            QCOMPARE(ok, type && !needsInput);

        // By value: what goes in comes out.
        V value = arrayType && type ? zeros(type, 2, arrayType == 2) : valueOf(type);
        if (type == OpcUaType_Double && !arrayType)
            value.setDouble(1.25);
        Form shown;
        shown.editor.setValue(value);
        QVERIFY(shown.editor.value(&ok) == value);
        QCOMPARE(ok, type != 0);
        if (value.arrayType() || (type && type < OpcUaType_NodeId))
            QCOMPARE(shown.changed.size(), 2); // the boxes, or one and the text
        if (!shown.changed.isEmpty() && !arrayType)
            QVERIFY(shown.changed.last().at(0).value<V>() == value);
    }

private Q_SLOTS:
    void init() { failOnWarnings(); }

    void types_data()
    {
        QTest::addColumn<int>("type");
        for (int type = OpcUaType_Boolean; type <= OpcUaType_LocalizedText; ++type)
            QTest::newRow(qPrintable(typeName(type))) << type;
    }
    void types()
    {
        QFETCH(int, type);
        const ElementCase& c = elementCases().at(type - 1);
        edit<Arrays>(c);
        edit<Matrices>(c);
        operate<Arrays>(c, 20240301 + type);
        operate<Matrices>(c, 20240229 + type);
    }

    void locks()
    {
        for (int type = OpcUaType_ExtensionObject; type <= OpcUaType_DiagnosticInfo; ++type) {
            lock<Arrays>(type, 0);
            lock<Matrices>(type, 0);
        }
        for (int flags = 0; flags < 4; ++flags) {
            lock<Arrays>(OpcUaType_Byte, flags);
            lock<Matrices>(OpcUaType_Byte, flags);
        }
    }

    // Named elements are widened by their sign, and edited as numbers.
    void names()
    {
        QvelEnumInfo info;
        info.kind = QvelEnumInfo::Enumeration;
        info.values = {{-1, "All"}, {0, "Off"}, {255, "Byte"}, {65535, "Word"}};
        for (int type = OpcUaType_SByte; type <= OpcUaType_UInt64; ++type) {
            V value = zeros(type, 1);
            QvelArrayModel model(&value, false);
            model.setEnumInfo(info);
            const int width = 8 << ((type - OpcUaType_SByte) / 2);
            const int all = type % 2 == 1 && width < 32 ? (1 << width) - 1 : -1;
            QVERIFY(model.setData(model.index(0, 0), QVariant::fromValue(long(all))));
            QCOMPARE(model.index(0, 0).data().toString(), info.toString(all));
        }
    }

    // As in a spreadsheet.
    void keys()
    {
        QvelDialogWidgetArray dialog(zeros(OpcUaType_Guid, 3));
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        const Parts parts(&dialog);
        parts.table->setCurrentIndex(parts.cell(0));
        for (int row : {1, 2, 2}) {
            QTest::keyClick(parts.table, Qt::Key_Return);
            QVERIFY(parts.current() == row && dialog.isVisible());
        }
        QTest::keyClick(parts.table, Qt::Key_Tab);
        QVERIFY(parts.button("+")->hasFocus());
        // Tab in a cell opens the next one, whatever control is inside.
        QWidget* line = parts.open(0);
        QTest::keyClicks(line, "0f1e2d3c4b5a69788796a5b4c3d2e1f0");
        QTest::keyClick(line, Qt::Key_Tab);
        QCOMPARE(parts.text(0), QString("{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}"));
        QVERIFY(parts.editor(1));
    }

    void dimensionLists()
    {
        const QString bad = "W|Format Error|The list of dimensions entered was not valid.|OK";
        const QString large = "W|Set Matrix Dimensions|The matrix would have too many elements, or "
                              "there is not enough memory for it. It was not changed.|OK";
        const QString before = "[0][0] [0][1] [1][0] [1][1]";
        const std::tuple<const char*, QString, QString> rows[] = {
            {"2,3", "[0][0] [0][1] [0][2] [1][0] [1][1] [1][2]", {}},
            {"1,2,1", "[0][0][0] [0][1][0]", {}},
            {"65536,65536,65536,65536,0", "", {}},
            {"2,,3", before, bad},
            {"-2", before, bad},
            {"65536,65536", before, large},
            {"1073741825,4", before, large},
            {"1000000,200", before, large}};
        for (const auto& [list, labels, message] : rows) {
            QvelDialogWidgetMatrix dialog((V()));
            dialog.setInitialValue(OpcUaType_Byte, {2, 2});
            dialog.show();
            const Parts parts(&dialog);
            for (int row = 0; row < 4; ++row)
                QVERIFY(parts.model->setData(parts.cell(row), row + 1));
            QCOMPARE(parts.setDimensions(list).value(1), message);
            QStringList seen;
            for (int row = 0; row < parts.model->rowCount(); ++row) {
                seen << parts.model->headerData(row, Qt::Vertical).toString();
                QCOMPARE(parts.text(row).toInt(), row < 4 ? row + 1 : 0);
            }
            QCOMPARE(seen.join(' '), labels);
            QCOMPARE(dialog.value().arraySize(), seen.size());
        }
    }

    // The text and the labels have a bound, and the rows the one that the font leaves them.
    void largeMatrices()
    {
        QvelEditWidgetMatrix field;
        UaStackTypeArray<OpcUa_UInt32> lengths;
        lengths.resize(65536);
        std::fill(lengths.begin(), lengths.end(), 1);
        field.setInitialValue(OpcUaType_Int32, lengths);
        const QString text = field.findChild<QLineEdit*>()->text();
        QVERIFY(text.size() < 200 && text.contains("{0}"));
        const Parts parts(field.findChild<QvelDialogWidgetMatrix*>());
        QVERIFY(parts.model->headerData(0, Qt::Vertical).toString().size() < 200);
        QString suggestion;
        QCOMPARE(parts.setDimensions("34000000", &suggestion).size(), 1);
        QCOMPARE(suggestion.count(','), 65535);
        QCOMPARE(parts.model->rowCount(), 34000000);
        QFont large = parts.table->font();
        large.setPixelSize(200);
        parts.table->setFont(large);
        QCOMPARE(parts.setDimensions("33000000").size(), 2);
    }

    // Values that contradict themselves are shown as far as they are sound.
    void unsoundValues()
    {
        V value = zeros(OpcUaType_Int32, 0);
        OpcUa_Memory_Free(value.detach()->Value.Array.Elements);
        value.detach()->Value.Array.Elements = nullptr;
        value.detach()->Value.Array.Length = 5;
        Tested<QvelArrayModel> arrays(&value);
        QCOMPARE(arrays.rowCount(), 0);
        QVERIFY(arrays.addElement());
        // Without a list of dimensions the model keeps its count, but reads what there is.
        value = zeros(OpcUaType_Int32, 2, true);
        QvelMatrixModel matrices(&value, false);
        OpcUa_Memory_Free(value.detach()->Value.Matrix.Dimensions);
        value.detach()->Value.Matrix.Dimensions = nullptr;
        value.detach()->Value.Matrix.NoOfDimensions = 0;
        matrices.refresh();
        QCOMPARE(matrices.rowCount(), 2);
        QVERIFY(!matrices.index(1, 0).data().isValid());
    }

    // What is seen has the height that a full measurement gives it, and a long text has a bound.
    void rowHeights()
    {
        QvelDialogWidgetArray dialog(zeros(OpcUaType_String, 500));
        const Parts parts(&dialog);
        const QString text = QString("line\n").repeated(20000);
        for (int row = 0; row < 500; ++row)
            parts.model->setData(parts.cell(row), row == 1 ? text
                                                  : row == 2
                                                      ? QString("word ").repeated(20000)
                                                      : QString("a\nb\nc").repeated(row % 5));
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        QVERIFY(parts.table->rowHeight(1) < 2000 && parts.table->rowHeight(2) < 2000);
        QCOMPARE(parts.text(1), text);
        QCOMPARE(qobject_cast<QLineEdit*>(parts.open(1))->text(), text);
        parts.table->verticalScrollBar()->setValue(200);
        QCoreApplication::processEvents();
        const auto* view = static_cast<QAbstractItemView*>(parts.table);
        for (int row = 200; row < 205; ++row)
            QVERIFY(parts.table->rowHeight(row) >= view->sizeHintForRow(row));
        QTest::mouseClick(parts.button("+"), Qt::LeftButton);
        QCoreApplication::processEvents();
        QCOMPARE(parts.current(), 500);
        QVERIFY(parts.table->viewport()->rect().contains(parts.table->visualRect(parts.cell(500))));
    }

    // A value that is changed under an open cell.
    void changesUnderAnEdit()
    {
        for (int type : {OpcUaType_Int32, OpcUaType_Guid, OpcUaType_NodeId})
            for (const char* change : {"longer", "removed", "shorter", "type"})
                changeUnderAnEdit(type, change);
    }

    // Fields and their hosts that go while something of them runs.
    void gone()
    {
        for (const char* what : {"field", "host", "type"}) {
            leave(false, what[0], 'o');
            for (const char* when : {"open", "key", "asking", "message"})
                leave(true, what[0], when[0]);
            if (QTest::currentTestFailed())
                QFAIL(what);
        }
    }

    // Leaving a cell without typing keeps what its text does not tell.
    void untouched()
    {
        const QList<V> values = {V(0.1234567890123456789),
                                 V(1.2345678f),
                                 nullOf(OpcUaType_String),
                                 V(UaString("\xff x")),
                                 V(UaDateTime(OpcUa_DateTime(133537832551234567))),
                                 nullOf(OpcUaType_ByteString),
                                 xmlElement("<\xff>")};
        for (const V& before : values) {
            V value = before;
            QCOMPARE(value.changeType(value.type(), true), OpcUa_StatusCode(0));
            QvelDialogWidgetArray dialog(value);
            dialog.show();
            QVERIFY(QTest::qWaitForWindowActive(&dialog));
            QVERIFY(Parts(&dialog).type(0, ""));
            QVERIFY(dialog.value().elementAt(0) == before);
        }
    }

    void cells()
    {
        QList<std::pair<QByteArray, V>> rows = {{"QvelDialogWidgetArray", zeros(1, 2)},
                                                {"QvelDialogWidgetMatrix", zeros(1, 2, true)}};
        for (int type = OpcUaType_Null; type <= OpcUaType_DiagnosticInfo; ++type)
            rows.append({editorsOf(type).first, valueOf(type)});
        for (const auto& [editor, value] : rows) {
            for (bool onlyChanges : {false, true})
                useCell(editor, value, onlyChanges);
            if (QTest::currentTestFailed())
                QFAIL(editor);
        }
    }

    void enumerations()
    {
        struct Row
        {
            int kind;
            V value;
            int choice; // an entry of the list; -1 for none
            const char* always;
            const char* onlyChanges = "text";
        };
        QvelEnumInfo info;
        info.values = {{0, "None"}, {1, "A"}, {2, "B"}, {12, "C"}};
        for (const Row& row : {Row{1, V(2), -1, "2"},
                               {1, V(7), -1, "0"}, // without a name
                               {1, V(7), 0, "0", "0"},
                               {1, V(quint64(1) << 40), -1, "0"},
                               {2, V(0x42), -1, "2"},
                               {2, V(int(0x80000042)), 0, "3", "-2147483581"},
                               {2, V(0xf000000000000002), 0, "3", "17293822569102704643"},
                               {2, V(OpcUa_Byte(0x44)), 2, "0", "64"}, // half of C
                               {7, V(2), -1, "text"}}) {
            info.kind = row.kind;
            for (bool onlyChanges : {false, true}) {
                Table table(row.value, info, onlyChanges);
                auto* box = table.editor->findChild<QComboBox*>();
                if (row.choice >= 0 && row.kind == 1)
                    box->setCurrentIndex(row.choice);
                for (int i = 0; row.choice >= 0 && row.kind == 2 && i < box->count(); ++i) {
                    const bool isChecked = box->itemData(i, Qt::CheckStateRole).toInt();
                    if (box->itemText(i).contains(QChar('A' + row.choice)))
                        box->setItemData(i, isChecked ? Qt::Unchecked : Qt::Checked,
                                         Qt::CheckStateRole);
                }
                table.write();
                const QVariant written = table.cell.data(Qt::EditRole);
                QCOMPARE(written.toString(), onlyChanges ? row.onlyChanges : row.always);
                if (!onlyChanges && row.kind != 7)
                    QCOMPARE(written.userType(), int(QMetaType::Long));
            }
        }
        // Names that come while somebody types do not take away what was typed.
        Table late(V(2), {}, true);
        qobject_cast<QLineEdit*>(late.editor)->setText("12");
        info.kind = QvelEnumInfo::Enumeration;
        late.model.setData(late.cell, QVariant::fromValue(info), Qt::UserRole + 1);
        late.write();
        QCOMPARE(late.cell.data(Qt::EditRole).toString(), QString("12"));
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

    // ReadOnly locks the choices alone.
    void typing()
    {
        const std::tuple<int, QString, QString> rows[] = {
            // the result of an invalid text is none
            {OpcUaType_SByte, "300", "44"},
            {OpcUaType_Byte, "-1", ""},
            {OpcUaType_Int16, "65535", "-1"},
            {OpcUaType_UInt16, "65536", "0"},
            {OpcUaType_Int32, "2147483648", ""},
            {OpcUaType_UInt64, "18446744073709551615", "18446744073709551615"},
            {OpcUaType_DateTime, "soon", "1601-01-01T00:00:00Z"},
            {OpcUaType_String, "  a ", "  a "}};
        for (const auto& [type, keys, result] : rows) {
            QvelWidgetVariant editor(QvelWidgetBase::ReadOnly);
            editor.setValue(nullOf(type));
            for (const auto* box : editor.findChildren<QComboBox*>())
                QVERIFY(!box->isEnabled());
            auto* line = editor.findChild<QLineEdit*>();
            line->clear();
            QSignalSpy changed(&editor, &QvelWidgetVariant::valueChanged);
            QTest::keyClicks(line, keys);
            bool ok = false;
            const V value = editor.value(&ok);
            QCOMPARE(int(value.type()), type);
            QCOMPARE(ok ? value.toString().toQString() : "", result);
            QVERIFY(changed.last().at(0).value<V>() == value);
        }
    }

    void typesWithoutEntry()
    {
        Form form;
        form.editor.setValue(V(-1.5));
        QCOMPARE(form.editor.value().toDouble(), 0.);
        form.editor.setValue(V(1.2345f));
        QCOMPARE(form.editor.value().toFloat(), 1.23f);
        form.at<QDoubleSpinBox>(2)->clear();
        QTest::keyClicks(form.at(2), "-3");
        QVERIFY(form.editor.value().toFloat() >= 0);
        form.editor.setValue(nullOf(OpcUaType_DataValue));
        QCOMPARE(form.at<QComboBox>(0)->currentIndex(), -1);
        bool ok = true;
        QVERIFY(form.at<QLabel>(2) && form.editor.value(&ok).isEmpty() && !ok);
        const V array = zeros(OpcUaType_Variant, 0);
        form.editor.setValue(array);
        QVERIFY(form.editor.value(&ok) == array);
    }

    // A host may answer a change with another value, while the old widget is still telling of it.
    void changeWithinAChange()
    {
        Form form;
        form.editor.show();
        QVERIFY(QTest::qWaitForWindowActive(&form.editor));
        form.editor.setValue(V(""));
        const QPointer<QLineEdit> old = form.at<QLineEdit>(2);
        QCoreApplication::processEvents(); // the layout is late to show it
        old->setFocus();
        const V array = zeros(OpcUaType_Int32, 2);
        connect(&form.editor, &QvelWidgetVariant::valueChanged, old, [&](const V& value) {
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
        form.editor.setValue(V(""));
        const QPointer<QWidget> unshown = form.at(2);
        form.editor.setValue(array);
        QCoreApplication::processEvents();
        QVERIFY(!unshown || !unshown->isVisible());
        QTest::qWait(10);
        QVERIFY(!old && !unshown);
    }

    // A dialog stays where it was opened, and a cell's dialog at its cell.
    void stayInPlace()
    {
        if (QGuiApplication::platformName() == "offscreen")
            QSKIP("needs a window manager");
        for (OpcUa_UInt32 rows : {5, 15, 25, 35}) {
            QvelEditWidgetArray field;
            field.setInitialValue(OpcUaType_NodeId, rows);
            field.setGeometry(300, 200, 400, 80);
            field.show();
            QVERIFY(QTest::qWaitForWindowActive(&field));
            QTest::qWait(100);
            const QPoint place = field.mapToGlobal(field.findChild<QLineEdit*>()->pos());
            QVERIFY(inDialog(&field, [&](const Parts& parts) {
                const QSize size = parts.dialog->size();
                QTest::qWait(300);
                QCOMPARE(parts.dialog->frameGeometry().topLeft(), place);
                QCOMPARE(parts.dialog->size(), size);
                QVERIFY(parts.open(3));
                const QPoint cell = parts.table->viewport()->mapToGlobal(
                    parts.table->visualRect(parts.cell(3)).topLeft());
                QTest::qWait(300);
                QCOMPARE(parts.editor(3)->frameGeometry().topLeft(), cell);
                QVERIFY(parts.editor(3)->isActiveWindow());
                QTest::keyClick(parts.editor(3), Qt::Key_Escape);
                QVERIFY(QTest::qWaitFor([&] { return parts.table->hasFocus(); }));
            }));
        }
    }

    // An edit, and a size that the user gave, outlive being minimised, and so does a cell's dialog.
    void areMinimised()
    {
        if (QGuiApplication::platformName() == "offscreen")
            QSKIP("needs a window manager");
        for (auto [type, keys] :
             {std::pair(OpcUaType_ByteString, "0aff"), {OpcUaType_NodeId, "85"}}) {
            QvelDialogWidgetArray dialog(zeros(type, 30));
            dialog.show();
            QVERIFY(QTest::qWaitForWindowActive(&dialog));
            const Parts parts(&dialog);
            dialog.resize(dialog.width(), 200);
            QTest::keyClicks(parts.open(1), keys);
            const QPointer<QWidget> editor = parts.editor(1);
            QWidget* window = editor->isWindow() ? editor.data() : &dialog;
            window->showMinimized();
            QTest::qWait(300);
            QVERIFY(editor || window == &dialog); // Qt writes what is in a cell that is left
            window->showNormal();
            QTest::qWait(300);
            QCOMPARE(dialog.height(), 200);
            if (editor)
                QTest::keyClick(editor->focusWidget(), Qt::Key_Return);
            QTRY_COMPARE(parts.text(1).remove(' '), QString(keys));
        }
    }
};

QTEST_MAIN(CompositeTest)
#include "tst_composite.moc"

// The array and matrix editors, as a person meets them.

#include "elementcases.h"

#include <Kestrel/QvelWidgetVariant>

#include <QtGui/QStandardItemModel>
#include <QtTest/QAbstractItemModelTester>
#include <QtWidgets/QDataWidgetMapper>
#include <QtWidgets/QLabel>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QToolTip>

namespace {

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
    explicit Tested(UaVariant* value) : Model(value, false) {}
    Qt::ItemFlags flags(const QModelIndex& index) const override
    {
        return index.isValid() ? Model::flags(index) : Qt::ItemFlags();
    }
    const QAbstractItemModelTester tester{this,
                                          QAbstractItemModelTester::FailureReportingMode::QtTest};
};

bool holds(const UaVariant& value, const QList<UaVariant>& elements)
{
    bool equal = value.arraySize() == elements.size();
    for (int i = 0; equal && i < elements.size(); ++i)
        equal = value.elementAt(i) == elements.at(i);
    return equal;
}

} // namespace

class ElementEditorsTest : public QObject
{
    Q_OBJECT

    template <class Shape>
    void edit(const ElementCase& c)
    {
        const UaVariant null = nullOf(c.type);
        const UaVariant empty = zeros(c.type, 0, Shape::isMatrix);
        QStandardItemModel host(1, 1);
        host.setData(host.index(0, 0), QVariant::fromValue(empty), Qt::EditRole);
        typename Shape::Field field;
        QSignalSpy told(&field, &Shape::Field::valueChanged);
        QDataWidgetMapper mapper;
        mapper.setSubmitPolicy(QDataWidgetMapper::ManualSubmit);
        mapper.setModel(&host);
        mapper.addMapping(&field, 0);
        mapper.toFirst();
        field.setValue(UaVariant(OpcUa_Int32(1)));
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
        const UaVariant accepted = field.value(&ok);
        QVERIFY(ok && told.size() == 1 && told.at(0).at(0).template value<UaVariant>() == accepted);
        QVERIFY(holds(accepted, {null, c.value, null}));
        QVERIFY(mapper.submit() && host.item(0)->text().isEmpty());
        QVERIFY(host.index(0, 0).data().template value<UaVariant>() == accepted);
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
        const UaVariant null = nullOf(c.type);
        const UaVariant array = zeros(c.type, 1);
        const bool takesText = c.type != OpcUaType_Boolean && c.type <= OpcUaType_DateTime;
        const bool isString = c.type == OpcUaType_String;
        QRandomGenerator random(seed);
        UaVariant value = zeros(c.type, 0, Shape::isMatrix);
        QList<UaVariant> oracle;
        QList<std::pair<UaVariant, QList<UaVariant>>> copies;
        Tested<typename Shape::Model> model(&value);
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        for (int i = 0; i < 300; ++i) {
            const int row = random.bounded(int(oracle.size()) + 1); // the last is none
            const QModelIndex cell = model.index(row, 0);
            const int operation = random.bounded(9);
            if (operation < 3) {
                const UaVariant element = operation == 0 && !isString ? null : c.value;
                const QVariant text = QString::fromUtf8(element.toString().toUtf8());
                QCOMPARE(model.setData(cell, takesText ? text : QVariant::fromValue(element),
                                       takesText ? Qt::EditRole : Qt::UserRole),
                         cell.isValid());
                if (cell.isValid())
                    oracle[row] = element;
            } else if (operation == 3) {
                QVERIFY(isString || !model.setData(cell, outOfRange.value(c.type, "@")));
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
                std::vector<OpcUa_UInt32> lengths(size_t(1 + random.bounded(2)));
                OpcUa_UInt32 count = 1;
                for (OpcUa_UInt32& length : lengths)
                    count *= length = OpcUa_UInt32(2 + random.bounded(5));
                QVERIFY(model.setDimensions(dimensions(lengths)));
                oracle = oracle.mid(0, count);
                oracle.resize(int(count), null);
            } else if (operation < 6) {
                QVERIFY(model.addElement());
                oracle.append(null);
            } else {
                QVERIFY(model.removeElement());
                oracle = oracle.mid(0, oracle.size() - 1);
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
        typename Shape::Field field{QvelEditWidgetBase::QvelEditWidgetFlags(flags)};
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
            auto* model = static_cast<typename Shape::Model*>(parts.model);
            if constexpr (Shape::isMatrix)
                QVERIFY(!model->setDimensions(dimensions({5})));
            else
                QVERIFY(!model->addElement() && !model->removeElement());
            // "Write" stays disabled for good.
            dialog->setValue(zeros(OpcUaType_Int32, 1, Shape::isMatrix));
            QVERIFY(!parts.button("Write")->isEnabled() && parts.button(resizer)->isVisible());
        }
        dialog->hide();
    }

    void changeUnderEdit(const ElementCase& c, const QString& change)
    {
        const bool isKept = change == "longer";
        QvelDialogWidgetArray dialog(zeros(c.type, 4));
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
            dialog.setValue(zeros(c.type, isKept ? 6 : 2));
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
                host->setValue(UaVariant(OpcUa_Int32(1)));
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

private Q_SLOTS:
    void init() { failOnWarnings(); }

    void types_data()
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < elementCases().size(); ++i)
            QTest::newRow(elementCases().at(i).name) << i;
    }
    void types()
    {
        QFETCH(int, index);
        const ElementCase& c = elementCases().at(index);
        edit<Arrays>(c);
        edit<Matrices>(c);
        operate<Arrays>(c, 20240301 + index);
        operate<Matrices>(c, 20240229 + index);
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
            UaVariant value = zeros(type, 1);
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

    void dimensionLists_data()
    {
        QTest::addColumn<QString>("labels"); // or the message
        const QString bad = "Format Error|The list of dimensions entered was not valid.";
        const QString large = "Set Matrix Dimensions|The matrix would have too many elements, or "
                              "there is not enough memory for it. It was not changed.";
        QTest::newRow("2,3") << "[0][0] [0][1] [0][2] [1][0] [1][1] [1][2]";
        QTest::newRow("1,2,1") << "[0][0][0] [0][1][0]";
        QTest::newRow("65536,65536,65536,65536,0") << "";
        QTest::newRow("2,,3") << bad;
        QTest::newRow("-2") << bad;
        QTest::newRow("65536,65536") << large;
        QTest::newRow("1073741825,4") << large;
        QTest::newRow("1000000,200") << large;
    }
    void dimensionLists()
    {
        QFETCH(QString, labels);
        QvelDialogWidgetMatrix dialog((UaVariant()));
        dialog.setInitialValue(OpcUaType_Byte, dimensions({2, 2}));
        dialog.show();
        const Parts parts(&dialog);
        for (int row = 0; row < 4; ++row)
            QVERIFY(parts.model->setData(parts.cell(row), row + 1));
        const QString message = parts.setDimensions(QTest::currentDataTag()).value(1);
        if (labels.contains('|')) {
            QCOMPARE(message, "W|" + labels + "|OK");
            labels = "[0][0] [0][1] [1][0] [1][1]";
        }
        QStringList seen;
        for (int row = 0; row < parts.model->rowCount(); ++row) {
            seen << parts.model->headerData(row, Qt::Vertical).toString();
            QCOMPARE(parts.text(row).toInt(), row < 4 ? row + 1 : 0);
        }
        QCOMPARE(seen.join(' '), labels);
        QCOMPARE(dialog.value().arraySize(), seen.size());
    }

    // The text and the labels have a bound, and the rows the one that the font leaves them.
    void largeMatrices()
    {
        QvelEditWidgetMatrix field;
        std::vector<OpcUa_UInt32> lengths(65536, 1);
        field.setInitialValue(OpcUaType_Int32, dimensions(lengths));
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
        UaVariant value = zeros(OpcUaType_Int32, 0);
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
        for (int index : {5, 13, 16}) { // typed in a line, inside an editor, in a dialog
            for (const char* change : {"longer", "removed", "shorter", "type"})
                changeUnderEdit(elementCases().at(index), change);
            if (QTest::currentTestFailed())
                QFAIL(elementCases().at(index).name);
        }
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
        using V = UaVariant;
        const QList<UaVariant> values = {
            variantOf(&V::setDouble, 0.1234567890123456789),
            variantOf(&V::setFloat, 1.2345678f),
            nullOf(OpcUaType_String),
            variantOf(&V::setString, UaString("\xff x")),
            variantOf(&V::setDateTime, UaDateTime(OpcUa_DateTime(133537832551234567))),
            nullOf(OpcUaType_ByteString),
            variantOf(&V::setXmlElement, UaByteString(QByteArray("<\xff>")))};
        for (const UaVariant& before : values) {
            UaVariant value = before;
            QCOMPARE(value.changeType(value.type(), true), OpcUa_StatusCode(0));
            QvelDialogWidgetArray dialog(value);
            dialog.show();
            QVERIFY(QTest::qWaitForWindowActive(&dialog));
            QVERIFY(Parts(&dialog).type(0, ""));
            QVERIFY(dialog.value().elementAt(0) == before);
        }
    }
};

QTEST_MAIN(ElementEditorsTest)
#include "tst_elementeditors.moc"

// The array and matrix editors, as a person meets them.

#include "elementcases.h"

#include <Kestrel/QvelWidgetVariant>

#include <QtTest/qtestspontaneevent.h>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QToolTip>

namespace {

bool holds(const UaVariant& value, const QList<UaVariant>& elements)
{
    bool equal = value.arraySize() == elements.size();
    for (int i = 0; equal && i < elements.size(); ++i)
        equal = value.elementAt(i) == elements.at(i);
    return equal;
}

UaVariant stringsOf(const QStringList& texts)
{
    UaVariant value = zeros(OpcUaType_String, OpcUa_UInt32(texts.size()));
    QvelArrayModel model(&value, false);
    for (int i = 0; i < texts.size(); ++i)
        model.setData(model.index(i, 0), texts.at(i));
    return value;
}

// A window system tells of a window that it hides and shows again.
void minimise(QWidget* widget)
{
    for (QEvent* event :
         {static_cast<QEvent*>(new QHideEvent), static_cast<QEvent*>(new QShowEvent)}) {
        QSpontaneKeyEvent::setSpontaneous(event);
        qApp->notify(widget, event);
        delete event;
    }
}

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

private Q_SLOTS:
    void init() { failOnWarnings(); }

    void edits_data() { addTypes(); }
    void edits()
    {
        QFETCH(int, index);
        QFETCH(bool, isMatrix);
        const ElementCase& c = elementCases().at(index);
        const UaVariant null = nullOf(c.type);
        const auto field = createField(isMatrix);
        auto* line = field->findChild<QLineEdit*>();
        QSignalSpy told(field.get(), SIGNAL(valueChanged(UaVariant)));
        field->resize(80, 30);
        field->show();
        field->setValue(emptyOf(c.type, isMatrix));
        field->setValue(UaVariant(OpcUa_Int32(1)));
        field->setValue(zeros(OpcUaType_Int32, 3, !isMatrix));
        QVERIFY(field->value(nullptr) == emptyOf(c.type, isMatrix));
        QVERIFY(told.isEmpty());

        bool done = false;
        inDialog(field.get(), [&](const Parts& parts) {
            QVERIFY(parts.label->isHidden() && parts.write->isEnabled());
            QVERIFY(parts.table->hasFocus()); // not "Write"
            parts.resize(3);
            QCOMPARE(parts.model->rowCount(), 3);
            for (int row = 0; row < 3; ++row) {
                QVERIFY(parts.element(row) == null);
                QCOMPARE(parts.model->headerData(row, Qt::Vertical).toString(),
                         QString(isMatrix ? "[%1]" : "%1").arg(row));
            }
            // Enter closes the editor, not the dialog, and moves on.
            QVERIFY(parts.type(1, c.keys));
            QVERIFY(parts.element(1) == c.value);
            QCOMPARE(parts.text(1), QString(c.display));
            QCOMPARE(parts.text(1, Qt::EditRole), QString(c.edit));
            QVERIFY(QTest::qWaitFor([&] { return parts.table->hasFocus(); }, 500));
            QCOMPARE(parts.table->currentIndex().row(), 2);
            // Escape leaves the cell as it was.
            QWidget* control = parts.open(2);
            const QPointer<QWidget> editor = parts.editor(2);
            QVERIFY(control);
            if (editor->isWindow())
                QVERIFY(QTest::qWaitForWindowActive(editor));
            QTest::keyClicks(control, c.keys);
            QTest::keyClick(control, Qt::Key_Escape);
            QVERIFY(QTest::qWaitFor([&] { return !editor && parts.table->hasFocus(); }, 500));
            QVERIFY(parts.element(2) == null && parts.dialog->isVisible());
            QTest::mouseClick(parts.write, Qt::LeftButton);
            done = true;
        });
        QVERIFY(done);
        QCOMPARE(told.size(), 1);
        bool ok = false;
        const UaVariant accepted = field->value(&ok);
        QVERIFY(ok && told.last().at(0).value<UaVariant>() == accepted);
        QVERIFY(holds(accepted, {null, c.value, null}));
        QCOMPARE(line->text(), QString::fromUtf8(accepted.toFullString().toUtf8()));
        QCOMPARE(line->cursorPosition(), 0);

        inDialog(field.get(), [&](const Parts& parts) {
            QVERIFY(parts.type(0, c.keys));
            QVERIFY(parts.element(0) == c.value);
            parts.resize(1);
            QVERIFY(field->value(nullptr) != accepted);
            QTest::keyClick(parts.table, Qt::Key_Escape);
        });
        QVERIFY(field->value(nullptr) == accepted);
        QCOMPARE(told.size(), 1);
    }

    // Random operations beside a plain list.
    void operations_data() { addTypes(); }
    void operations()
    {
        QFETCH(int, index);
        QFETCH(bool, isMatrix);
        const ElementCase& c = elementCases().at(index);
        QRandomGenerator random(quint32(20240229 + 2 * index + isMatrix));
        UaVariant value = emptyOf(c.type, isMatrix);
        QList<UaVariant> oracle;
        QList<std::pair<UaVariant, QList<UaVariant>>> snapshots;
        std::unique_ptr<Tested<QvelArrayModel>> array;
        std::unique_ptr<Tested<QvelMatrixModel>> matrix;
        isMatrix ? void(matrix = std::make_unique<Tested<QvelMatrixModel>>(&value))
                 : void(array = std::make_unique<Tested<QvelArrayModel>>(&value));
        QAbstractItemModel* model =
            isMatrix ? static_cast<QAbstractItemModel*>(matrix.get()) : array.get();
        QSignalSpy changed(model, &QAbstractItemModel::dataChanged);
        const bool takesText = c.type != OpcUaType_Boolean && c.type <= OpcUaType_DateTime;
        for (int i = 0; i < 300; ++i) {
            const int operation = random.bounded(10);
            if (operation < 4 && !oracle.isEmpty()) {
                const int row = random.bounded(int(oracle.size()));
                const bool isNull = operation == 0 && c.type != OpcUaType_String;
                const UaVariant element = isNull ? nullOf(c.type) : c.value;
                const QVariant text = QString::fromUtf8(element.toString().toUtf8());
                const QModelIndex cell = model->index(row, 0);
                QVERIFY(model->setData(cell, takesText ? text : QVariant::fromValue(element),
                                       takesText ? Qt::EditRole : Qt::UserRole));
                if (isNull && (c.type == OpcUaType_ByteString || c.type == OpcUaType_XmlElement))
                    QVERIFY(cell.data(Qt::EditRole).toString().isEmpty());
                oracle[row] = element;
            } else if (operation < 7 && isMatrix) {
                // More rows than dimensions, or the tester rejects the header change.
                std::vector<OpcUa_UInt32> lengths(size_t(1 + random.bounded(2)));
                OpcUa_UInt32 count = 1;
                for (OpcUa_UInt32& length : lengths)
                    count *= length = OpcUa_UInt32(2 + random.bounded(5));
                QVERIFY(matrix->setDimensions(dimensions(lengths)));
                while (oracle.size() > count)
                    oracle.removeLast();
                oracle.resize(int(count), nullOf(c.type));
            } else if (operation < 6 && !isMatrix) {
                QVERIFY(array->addElement());
                oracle.append(nullOf(c.type));
            } else if (operation == 6) {
                QVERIFY(array->removeElement());
                oracle = oracle.mid(0, oracle.size() - 1);
            } else if (operation == 7) {
                snapshots.append({value, oracle});
            } else if (operation == 8 && !snapshots.isEmpty()) {
                std::tie(value, oracle) = snapshots.at(random.bounded(int(snapshots.size())));
                isMatrix ? matrix->refresh() : array->refresh();
            }
            QCOMPARE(model->rowCount(), int(oracle.size()));
            QVERIFY(holds(value, oracle));
        }
        for (const auto& [kept, elements] : std::as_const(snapshots))
            QVERIFY(holds(kept, elements));
        QVERIFY(changed.isEmpty());
    }

    void refusals_data() { addTypes(); }
    void refusals()
    {
        QFETCH(int, index);
        QFETCH(bool, isMatrix);
        const ElementCase& c = elementCases().at(index);
        const auto dialog = createDialog(isMatrix, zeros(c.type, 2, isMatrix));
        const Parts parts(dialog.get());
        const QModelIndex cell = parts.cell(1);
        static const QHash<int, QString> outOfRange = {
            {OpcUaType_SByte, "128"},   {OpcUaType_Byte, "-1"},
            {OpcUaType_Int16, "32768"}, {OpcUaType_UInt32, "4294967296"},
            {OpcUaType_Int32, "12x"},   {OpcUaType_UInt64, "18446744073709551616"},
            {OpcUaType_Double, "1,5"},  {OpcUaType_DateTime, "yesterday"}};
        const bool takesText = c.type != OpcUaType_Boolean && c.type <= OpcUaType_DateTime;
        const bool isString = c.type == OpcUaType_String;
        QCOMPARE(parts.model->setData(cell, outOfRange.value(c.type, "@")), isString);
        QVERIFY(!parts.model->setData(cell, QVariant::fromValue(zeros(c.type, 1)), Qt::UserRole));
        QVERIFY(!parts.model->setData(cell, c.edit, Qt::CheckStateRole));
        QVERIFY(!parts.model->setData(QModelIndex(), "1"));
        QCOMPARE(parts.model->setData(cell, QVariant::fromValue(c.value), Qt::UserRole),
                 !takesText);
        if (!isString)
            QVERIFY(parts.element(1) == (takesText ? nullOf(c.type) : c.value));
        QVERIFY(!cell.data(Qt::DecorationRole).isValid());
        QCOMPARE(parts.model->flags(QModelIndex()),
                 Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemIsEnabled);

        // Named elements: widened by their sign, and edited as numbers.
        QvelEnumInfo info;
        info.kind = QvelEnumInfo::Enumeration;
        info.values = {{-1, "All"}, {0, "None"}, {255, "Byte"}, {65535, "Word"}};
        dialog->setValue(zeros(c.type, 2, isMatrix));
        isMatrix ? static_cast<QvelDialogWidgetMatrix*>(dialog.get())->setEnumInfo(info)
                 : static_cast<QvelDialogWidgetArray*>(dialog.get())->setEnumInfo(info);
        QCOMPARE(parts.text(1), QString("0 (None)"));
        QCOMPARE(parts.cell(1).data(Qt::UserRole + 1).value<QvelEnumInfo>(), info);
        if (c.type < OpcUaType_SByte || c.type > OpcUaType_UInt64)
            return;
        const int width = 8 << ((c.type - OpcUaType_SByte) / 2);
        const int all = c.type % 2 == 1 && width < 32 ? (1 << width) - 1 : -1;
        QVERIFY(parts.model->setData(parts.cell(1), QVariant::fromValue(long(all)), Qt::EditRole));
        QCOMPARE(parts.text(1), info.toString(all));
    }

    void unsupportedTypes()
    {
        for (int type = OpcUaType_ExtensionObject; type <= OpcUaType_DiagnosticInfo; ++type) {
            for (bool isMatrix : {false, true}) {
                const auto dialog =
                    createDialog(isMatrix, zeros(OpcUa_BuiltInType(type), 2, isMatrix));
                dialog->show();
                const Parts parts(dialog.get());
                QCOMPARE(parts.model->rowCount(), 2);
                QCOMPARE(parts.text(0) == "Type cannot be displayed",
                         type != OpcUaType_ExtensionObject);
                QCOMPARE(parts.element(0).isEmpty(), type != OpcUaType_ExtensionObject);
                QVERIFY(!(parts.cell(0).flags() & Qt::ItemIsEditable));
                QVERIFY(!parts.model->setData(parts.cell(0), "1"));
                QVERIFY(parts.label->isVisible() && !parts.write->isEnabled());
                for (auto* button : {parts.add, parts.remove, parts.shape})
                    QVERIFY(!button || button->isHidden());
                if (isMatrix) {
                    QVERIFY(!static_cast<QvelMatrixModel*>(parts.model)
                                 ->setDimensions(dimensions({5})));
                } else {
                    QVERIFY(!static_cast<QvelArrayModel*>(parts.model)->addElement());
                    QVERIFY(!static_cast<QvelArrayModel*>(parts.model)->removeElement());
                }
                // "Write" stays disabled for good.
                dialog->setValue(zeros(OpcUaType_Int32, 1, isMatrix));
                QVERIFY(parts.label->isHidden() && !parts.write->isEnabled());
                QVERIFY((isMatrix ? parts.shape : parts.add)->isVisible());
            }
        }
    }

    void flagsAndNames()
    {
        for (int flags = 0; flags < 8; ++flags) {
            const bool isMatrix = flags & 4;
            const auto field = createField(isMatrix, flags & 3);
            field->setValue(zeros(OpcUaType_Byte, 2, isMatrix));
            field->show();
            const Parts parts(field->findChild<QvelDialogWidgetBase*>());
            const bool readOnly = flags & QvelEditWidgetBase::ReadOnly;
            QCOMPARE(parts.write->isEnabled(), !readOnly);
            QCOMPARE((isMatrix ? parts.shape : parts.add)->isEnabled(), (flags & 3) == 0);
            QCOMPARE(parts.cell(0).flags().testFlag(Qt::ItemIsEditable), !readOnly);

            QvelEnumInfo info;
            info.kind = flags & 1 ? QvelEnumInfo::EnumerationFlags : QvelEnumInfo::Enumeration;
            info.values = {{0, "Off"}, {1, "On"}, {2, "Locked"}};
            isMatrix ? static_cast<QvelEditWidgetMatrix*>(field.get())->setEnumInfo(info)
                     : static_cast<QvelEditWidgetArray*>(field.get())->setEnumInfo(info);
            if (!readOnly) {
                inDialog(field.get(), [&](const Parts& dialog) {
                    dialog.open(0);
                    auto* combo = dialog.editor(0)->findChild<QComboBox*>();
                    QTest::keyClick(combo, Qt::Key_Down);
                    QTest::keyClick(combo, Qt::Key_Return);
                    QTRY_COMPARE(dialog.text(0), QString("1 (On)"));
                    QTest::mouseClick(dialog.write, Qt::LeftButton);
                });
                QCOMPARE(field->value(nullptr).elementAt(0).toByte(), OpcUa_Byte(1));
            }
            field->setValue(zeros(OpcUaType_Byte, 1, isMatrix));
            QCOMPARE(
                field->findChild<QLineEdit*>()->text(),
                QString("This %1 type cannot be displayed").arg(isMatrix ? "matrix" : "array"));
        }
    }

    // As in a spreadsheet.
    void keys()
    {
        QvelDialogWidgetArray dialog(zeros(OpcUaType_Guid, 3));
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        const Parts parts(&dialog);
        const auto current = [&] { return parts.table->currentIndex().row(); };
        parts.table->setCurrentIndex(parts.cell(0));
        QTest::keyClick(parts.table, Qt::Key_Return);
        QCOMPARE(current(), 1);
        QTest::keyClick(parts.table, Qt::Key_Tab);
        QCOMPARE(current(), 2);
        QTest::keyClick(parts.table, Qt::Key_Return);
        QVERIFY(current() == 2 && dialog.isVisible());
        QTest::keyClick(parts.table, Qt::Key_Tab);
        QVERIFY(parts.add->hasFocus());
        // Tab in a cell opens the next one, whatever control is inside.
        QWidget* line = parts.open(0);
        QTest::keyClicks(line, "0f1e2d3c4b5a69788796a5b4c3d2e1f0");
        QTest::keyClick(line, Qt::Key_Tab);
        QCOMPARE(parts.text(0), QString("{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}"));
        QVERIFY(parts.editor(1));
        const QPoint last = parts.table->visualRect(parts.cell(2)).center();
        QTest::mouseClick(parts.table->viewport(), Qt::LeftButton, {}, last);
        QTRY_VERIFY(!parts.editor(1));
        QTest::mouseDClick(parts.table->viewport(), Qt::LeftButton, {}, last);
        QTRY_VERIFY(parts.editor(2));
    }

    void dimensionLists_data()
    {
        QTest::addColumn<QString>("list");
        QTest::addColumn<QStringList>("labels");
        QTest::addColumn<QString>("message");
        const QStringList old = {"[0][0]", "[0][1]", "[1][0]", "[1][1]"};
        const QString bad = "W|Format Error|The list of dimensions entered was not valid.|OK";
        const QString large = "W|Set Matrix Dimensions|The matrix would have too many elements, or "
                              "there is not enough memory for it. It was not changed.|OK";
        QTest::newRow("matrix") << "2,3" << QStringList{"[0][0]", "[0][1]", "[0][2]",
                                                        "[1][0]", "[1][1]", "[1][2]"}
                                << "";
        QTest::newRow("cube") << "1,2,1" << QStringList{"[0][0][0]", "[0][1][0]"} << "";
        QTest::newRow("none") << "0" << QStringList{} << "";
        QTest::newRow("none of many") << "65536,65536,65536,65536,0" << QStringList{} << "";
        QTest::newRow("gap") << "2,,3" << old << bad;
        QTest::newRow("word") << "abc" << old << bad;
        QTest::newRow("negative") << "-2" << old << bad;
        QTest::newRow("overflow to 0") << "65536,65536" << old << large;
        QTest::newRow("overflow to 4") << "1073741825,4" << old << large;
        QTest::newRow("heights") << "1000000,200" << old << large;
    }
    void dimensionLists()
    {
        QFETCH(QString, list);
        QFETCH(QStringList, labels);
        QFETCH(QString, message);
        QvelDialogWidgetMatrix dialog((UaVariant()));
        dialog.setInitialValue(OpcUaType_Byte, dimensions({2, 2}));
        dialog.show();
        const Parts parts(&dialog);
        for (int row = 0; row < 4; ++row)
            QVERIFY(parts.model->setData(parts.cell(row), row + 1));
        QString suggestion;
        QCOMPARE(parts.setDimensions(list, &suggestion).mid(1).join(' '), message);
        QCOMPARE(suggestion, QString("2,2"));
        QCOMPARE(parts.model->rowCount(), labels.size());
        QCOMPARE(dialog.value(nullptr).arraySize(), labels.size());
        for (int row = 0; row < labels.size(); ++row) {
            QCOMPARE(parts.model->headerData(row, Qt::Vertical).toString(), labels.at(row));
            QCOMPARE(parts.text(row).toInt(), row < 4 ? row + 1 : 0);
        }
    }

    // The heights that a table can hold depend on the font.
    void roomForRows()
    {
        QvelDialogWidgetMatrix dialog(zeros(OpcUaType_Byte, 1, true));
        const Parts parts(&dialog);
        QCOMPARE(parts.setDimensions("34000000").size(), 1);
        QCOMPARE(parts.model->rowCount(), 34000000);
        QFont large = parts.table->font();
        large.setPixelSize(200);
        parts.table->setFont(large);
        QCOMPARE(parts.setDimensions("33000000").size(), 2);
    }

    void manyDimensions()
    {
        QvelEditWidgetMatrix field;
        field.setInitialValue(OpcUaType_Int32, dimensions(std::vector<OpcUa_UInt32>(65536, 1)));
        const QString text = field.findChild<QLineEdit*>()->text();
        QVERIFY(text.size() < 200 && text.contains("{0}"));
        inDialog(&field, [&](const Parts& parts) {
            QVERIFY(parts.model->headerData(0, Qt::Vertical).toString().size() < 200);
            QString suggestion;
            parts.setDimensions("1", &suggestion);
            QCOMPARE(suggestion.count(','), 65535);
        });
        std::vector<OpcUa_UInt32> lengths(40, 1);
        lengths.front() = lengths.back() = 2;
        field.setInitialValue(OpcUaType_Byte, dimensions(lengths));
        QVERIFY(field.findChild<QLineEdit*>()->text().contains("{0, 0}}"));
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
        UaVariant matrix = zeros(OpcUaType_Int32, 2, true);
        QvelMatrixModel model(&matrix, false);
        // Without a list of dimensions the model keeps its count, but reads what there is.
        OpcUa_Memory_Free(matrix.detach()->Value.Matrix.Dimensions);
        matrix.detach()->Value.Matrix.Dimensions = nullptr;
        matrix.detach()->Value.Matrix.NoOfDimensions = 0;
        model.refresh();
        QCOMPARE(model.rowCount(), 2);
        QVERIFY(!model.index(1, 0).data().isValid());
        UaVariant none;
        QCOMPARE(QvelMatrixModel(&none, false).rowCount(), -1);
        QvelDialogWidgetMatrix dialog(none);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    }

    // What is seen has the height that a full measurement gives it, and a long text has a bound.
    void rowHeights()
    {
        QStringList texts;
        for (int i = 0; i < 500; ++i)
            texts << (i % 3 ? QString("a\nb\nc").repeated(i % 5) : QString::number(i));
        texts[1] = QString("line\n").repeated(20000);
        texts[2] = QString("word ").repeated(20000);
        QvelDialogWidgetArray dialog(stringsOf(texts));
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        const Parts parts(&dialog);
        QVERIFY(parts.table->rowHeight(1) < 2000 && parts.table->rowHeight(2) < 2000);
        QCOMPARE(parts.text(1), texts.at(1));
        QCOMPARE(qobject_cast<QLineEdit*>(parts.open(1))->text(), texts.at(1));
        parts.table->verticalScrollBar()->setValue(200);
        QCoreApplication::processEvents();
        const auto* view = static_cast<QAbstractItemView*>(parts.table);
        for (int row = 200; row < 205; ++row)
            QVERIFY(parts.table->rowHeight(row) >= view->sizeHintForRow(row));
        QTest::mouseClick(parts.add, Qt::LeftButton);
        QCoreApplication::processEvents();
        QCOMPARE(parts.table->currentIndex().row(), 500);
        QVERIFY(parts.table->viewport()->rect().contains(parts.table->visualRect(parts.cell(500))));
    }

    // A value that is changed under an open cell.
    void changesUnderAnEdit_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("change");
        QTest::addColumn<bool>("isKept");
        for (int index : {5, 13, 16}) { // typed in a line, inside an editor, in a dialog
            for (const char* change : {"same", "longer", "removed", "shorter", "other type"})
                QTest::addRow("%s %s", elementCases().at(index).name, change)
                    << index << change << (change[0] == 's' ? change[1] == 'a' : change[0] == 'l');
        }
    }
    void changesUnderAnEdit()
    {
        QFETCH(int, index);
        QFETCH(QString, change);
        QFETCH(bool, isKept);
        const ElementCase& c = elementCases().at(index);
        for (bool isMatrix : {false, true}) {
            auto dialog = createDialog(isMatrix, zeros(c.type, 4, isMatrix));
            dialog->show();
            QVERIFY(QTest::qWaitForWindowActive(dialog.get()));
            const Parts parts(dialog.get());
            QTest::keyClicks(parts.open(2), c.keys);
            QToolTip::hideText();
            if (change == "removed" && isMatrix)
                static_cast<QvelMatrixModel*>(parts.model)->setDimensions(dimensions({2}));
            else if (change == "removed")
                parts.resize(2);
            else if (change == "other type")
                dialog->setValue(zeros(OpcUaType_Boolean, 4, isMatrix));
            else
                dialog->setValue(zeros(c.type, change == "same" ? 4 : isKept ? 6 : 2, isMatrix));
            QTest::qWait(10);
            QCOMPARE(bool(parts.editor(2)), isKept);
            const bool isTold = !isKept && change != "removed";
            QCOMPARE(QTest::qWaitFor([] { return !QToolTip::text().isEmpty(); }, isTold ? 2000 : 0),
                     isTold);
            if (isKept) {
                QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
                QTRY_VERIFY(!parts.editor(2));
                QVERIFY(parts.element(2) == c.value);
            }
            QTRY_VERIFY(parts.table->hasFocus());
            dialog->reject();
        }
    }

    void minimised()
    {
        QvelDialogWidgetArray dialog((UaVariant()));
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        dialog.resize(dialog.width(), 150);
        const Parts parts(&dialog);
        for (auto type : {OpcUaType_Int32, OpcUaType_NodeId}) {
            dialog.setValue(zeros(type, 30));
            QWidget* control = parts.open(1);
            QTest::keyClicks(control, "85");
            const QPointer<QWidget> editor = parts.editor(1);
            minimise(parts.table);
            if (editor->isWindow())
                minimise(editor);
            QTest::qWait(10);
            QVERIFY(editor && parts.editor(1) == editor);
            QCOMPARE(dialog.height(), 150);
            QTest::keyClick(control, Qt::Key_Return);
            QTRY_COMPARE(parts.text(1), QString("85"));
        }
    }

    // Fields and dialogs that go while something of them runs.
    void gone_data()
    {
        QTest::addColumn<bool>("isMatrix");
        QTest::addColumn<QString>("how");
        for (const char* how : {"deleted", "other type", "by key"}) {
            QTest::addRow("array %s", how) << false << how;
            QTest::addRow("matrix %s", how) << true << how;
        }
        QTest::newRow("asking") << true << "asking";
        QTest::newRow("message") << true << "message";
    }
    void gone()
    {
        QFETCH(bool, isMatrix);
        QFETCH(QString, how);
        QvelWidgetVariant editor;
        editor.setValue(zeros(OpcUaType_Int32, 3, isMatrix));
        editor.show();
        QVERIFY(QTest::qWaitForWindowActive(&editor));
        const QPointer<QvelEditWidgetBase> field = editor.findChild<QvelEditWidgetBase*>();
        const QPointer<QWidget> button =
            field->findChild<QToolButton*>(QString(), Qt::FindDirectChildrenOnly);
        const auto go = [&] {
            if (how == "other type")
                editor.setValue(UaVariant(OpcUa_Int32(1)));
            else
                delete field.data();
        };
        const bool isNested = how == "asking" || how == "message";
        ModalUser user([&](QDialog* dialog) {
            if (!isNested)
                return go();
            const QPointer<QWidget> shape = Parts(dialog).shape;
            ModalUser inner([&](QDialog* asked) {
                if (how == "asking")
                    return go();
                static_cast<QInputDialog*>(asked)->setTextValue("x");
                QTimer::singleShot(0, this, go);
                static_cast<QInputDialog*>(asked)->accept();
            });
            QTest::mouseClick(shape, Qt::LeftButton);
            QVERIFY(shape); // to which the click returns
        });
        if (how == "by key")
            QTest::keyClick(button, Qt::Key_Space);
        else
            QTest::mouseClick(button, Qt::LeftButton);
        QVERIFY(button);
        QTest::qWait(0);
        QVERIFY(!field && !button);
    }

    void untouched_data()
    {
        using V = UaVariant;
        QTest::addColumn<UaVariant>("value");
        QTest::newRow("Double") << variantOf(&V::setDouble, 0.1234567890123456789);
        QTest::newRow("Float") << variantOf(&V::setFloat, 1.2345678f);
        QTest::newRow("null String") << nullOf(OpcUaType_String);
        QTest::newRow("String") << variantOf(&V::setString, UaString("\xff x"));
        QTest::newRow("DateTime") << variantOf(&V::setDateTime,
                                               UaDateTime(OpcUa_DateTime(133537832551234567)));
        QTest::newRow("null ByteString") << nullOf(OpcUaType_ByteString);
        QTest::newRow("null XmlElement") << nullOf(OpcUaType_XmlElement);
        QTest::newRow("XmlElement")
            << variantOf(&V::setXmlElement, UaByteString(QByteArray("<\xff>")));
    }
    void untouched()
    {
        QFETCH(UaVariant, value);
        QCOMPARE(value.changeType(value.type(), true), OpcUa_StatusCode(0));
        QvelDialogWidgetArray dialog(value);
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        const Parts parts(&dialog);
        const UaVariant before = parts.element(0);
        QVERIFY(parts.type(0, ""));
        QVERIFY(parts.element(0) == before);
    }
};

QTEST_MAIN(ElementEditorsTest)
#include "tst_elementeditors.moc"

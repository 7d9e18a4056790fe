// Editors of arrays, matrices and values of any type.

#include "widgets.h"

#include <Kestrel/QvelDialogWidgetArray>
#include <Kestrel/QvelDialogWidgetMatrix>
#include <Kestrel/QvelEditWidgetArray>
#include <Kestrel/QvelEditWidgetMatrix>
#include <Kestrel/QvelEnumInfo>
#include <Kestrel/QvelModelDelegate>
#include <Kestrel/QvelWidgetVariant>
#include <Kestrel/UaByteString>
#include <Kestrel/UaGuid>
#include <Kestrel/UaLocalizedText>
#include <Kestrel/UaNodeId>
#include <Kestrel/UaString>
#include <Kestrel/UaVariant>

#include <QtCore/QDebug>
#include <QtGui/QStandardItemModel>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QTableView>

namespace {

//! [QvelDialogWidgetArray]
QWidget* arrayDialog()
{
    UaVariant setPoints;
    setPoints.setDoubleArray({12.5, 13, 13.25, 12.75});
    auto* dialog = new QvelDialogWidgetArray(setPoints);
    dialog->setWindowTitle("Set points");
    QObject::connect(dialog, &QDialog::accepted, dialog, [dialog] {
        const QList<double> edited = dialog->value().toDoubleArray();
        qInfo() << edited.size() << "set points";
    });
    dialog->resize(360, 260);
    return dialog;
}
//! [QvelDialogWidgetArray]

//! [QvelEditWidgetArray]
QWidget* arrayField()
{
    UaVariant tags;
    tags.setStringArray({"P-101", "P-102", "V-7"});
    auto* field = new QvelEditWidgetArray;
    field->setValue(tags);
    QObject::connect(field, &QvelEditWidgetArray::valueChanged, field,
                     [](const UaVariant& value) { qInfo() << value.toString().toQString(); });
    return field;
}
//! [QvelEditWidgetArray]

//! [QvelDialogWidgetMatrix]
QWidget* matrixDialog()
{
    UaVariant curve;
    if (!curve.setDoubleMatrix({0, 1.5, 3, 4.5, 6, 7.5}, {2, 3}))
        return nullptr; // the dimensions are not those of six elements
    auto* dialog = new QvelDialogWidgetMatrix(curve);
    dialog->setWindowTitle("Heating curve");
    QObject::connect(dialog, &QDialog::accepted, dialog,
                     [dialog] { qInfo() << dialog->value().toString().toQString(); });
    dialog->resize(360, 300);
    return dialog;
}
//! [QvelDialogWidgetMatrix]

//! [QvelEditWidgetMatrix]
QWidget* matrixField()
{
    UaVariant curve;
    if (!curve.setInt32Matrix({1, 2, 3, 4}, {2, 2}))
        return nullptr;
    auto* field = new QvelEditWidgetMatrix(QvelEditWidgetBase::ReadOnly);
    field->setValue(curve); // its dialog shows the elements, and their number cannot be changed
    return field;
}
//! [QvelEditWidgetMatrix]

//! [QvelWidgetVariant]
QWidget* variant()
{
    auto* editor = new QvelWidgetVariant;
    editor->setValue(UaVariant(UaLocalizedText("en", "Feed pump")));
    QObject::connect(editor, &QvelWidgetVariant::valueChanged, editor, [editor] {
        bool ok = false;
        const UaVariant value = editor->value(&ok); // of the type that the user chose
        if (ok)
            qInfo() << value.type() << value.toString().toQString();
    });
    return editor;
}
//! [QvelWidgetVariant]

//! [QvelModelDelegate]
QWidget* delegate()
{
    const QvelEnumInfo states = [] {
        QvelEnumInfo info;
        info.kind = QvelEnumInfo::Enumeration;
        info.values = {{0, "Closed"}, {1, "Opening"}, {2, "Open"}};
        return info;
    }();
    const QList<UaVariant> values = {UaVariant(true), UaVariant(12.5), UaVariant("P-101"),
                                     UaVariant(UaNodeId(85)), UaVariant(OpcUa_Int32(2))};
    auto* model = new QStandardItemModel(int(values.size()), 1);
    for (int row = 0; row < values.size(); ++row) {
        const QModelIndex cell = model->index(row, 0);
        model->setData(cell, values[row].toString().toQString(), Qt::EditRole);
        model->setData(cell, QVariant::fromValue(values[row]), Qt::UserRole);
    }
    model->setData(model->index(4, 0), QVariant::fromValue(states), Qt::UserRole + 1);
    model->setVerticalHeaderLabels({"Running", "Pressure", "Tag", "Node", "State"});
    model->setHorizontalHeaderLabels({"Value"});

    auto* table = new QTableView; // with an editor that fits the value of each cell
    model->setParent(table);
    table->setModel(model);
    table->setItemDelegate(new QvelModelDelegate(table));
    table->horizontalHeader()->setStretchLastSection(true);
    return table;
}
//! [QvelModelDelegate]

} // namespace

QList<WidgetExample> compositeExamples()
{
    return {
        {"QvelDialogWidgetArray", arrayDialog},   {"QvelEditWidgetArray", arrayField},
        {"QvelDialogWidgetMatrix", matrixDialog}, {"QvelEditWidgetMatrix", matrixField},
        {"QvelWidgetVariant", variant},           {"QvelModelDelegate", delegate},
    };
}

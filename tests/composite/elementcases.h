#pragma once

/// \file
/// A value of each built-in type that can be edited, with its texts, and the dialogs over them as a
/// person meets them.

#include "support/modaluser.h"
#include "support/warnings.h"

#include <Kestrel/QvelEditWidgetArray>
#include <Kestrel/QvelEditWidgetMatrix>
#include <Kestrel/QvelEnumInfo>
#include <Kestrel/UaByteString>
#include <Kestrel/UaDateTime>
#include <Kestrel/UaExpandedNodeId>
#include <Kestrel/UaGuid>
#include <Kestrel/UaLocalizedText>
#include <Kestrel/UaNodeId>
#include <Kestrel/UaQualifiedName>
#include <Kestrel/UaStackTypeArray>
#include <Kestrel/UaStatusCode>
#include <Kestrel/UaString>

#include <QtWidgets/QComboBox>
#include <QtWidgets/QInputDialog>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QTableView>
#include <QtWidgets/QToolButton>

template <class Setter, class T>
UaVariant variantOf(Setter setter, const T& value)
{
    UaVariant variant;
    (variant.*setter)(value);
    return variant;
}

struct ElementCase
{
    const char* name;
    OpcUa_BuiltInType type;
    UaVariant value;
    const char* display;
    const char* edit;
    const char* keys; ///< what a person types to get the value; a space checks a box
};

/// By type, from Boolean on.
inline const QList<ElementCase>& elementCases()
{
    OpcUa_Guid guid = {
        0x0f1e2d3c, 0x4b5a, 0x6978, {0x87, 0x96, 0xa5, 0xb4, 0xc3, 0xd2, 0xe1, 0xf0}};
    const char* guidText = "{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}";
#define KESTREL_ELEMENT(Type, value, ...)                                                          \
    {                                                                                              \
#Type, OpcUaType_##Type, variantOf(&UaVariant::set##Type, value), __VA_ARGS__              \
    }
#define KESTREL_SAME(Type, value, text) KESTREL_ELEMENT(Type, value, text, text, text)
    static const QList<ElementCase> cases = {
        {"Boolean", OpcUaType_Boolean, UaVariant(true), "true", "true", " "},
        KESTREL_SAME(SByte, OpcUa_SByte(-128), "-128"),
        KESTREL_SAME(Byte, OpcUa_Byte(255), "255"),
        KESTREL_SAME(Int16, OpcUa_Int16(-32768), "-32768"),
        KESTREL_SAME(UInt16, OpcUa_UInt16(65535), "65535"),
        KESTREL_SAME(Int32, -2147483647, "-2147483647"),
        KESTREL_SAME(UInt32, 4294967295u, "4294967295"),
        KESTREL_SAME(Int64, -9223372036854775807, "-9223372036854775807"),
        KESTREL_SAME(UInt64, 18446744073709551615u, "18446744073709551615"),
        KESTREL_SAME(Float, 1.5f, "1.5"),
        KESTREL_SAME(Double, -1e300, "-1e+300"),
        KESTREL_SAME(String, UaString("Pump 1"), "Pump 1"),
        KESTREL_SAME(DateTime, UaDateTime::fromString(UaString("2024-02-29T13:14:15Z")),
                     "2024-02-29T13:14:15Z"),
        KESTREL_ELEMENT(Guid, UaGuid(guid), guidText, guidText, "0f1e2d3c4b5a69788796a5b4c3d2e1f0"),
        KESTREL_ELEMENT(ByteString, UaByteString(QByteArray::fromHex("0aff00")), "0a ff 00",
                        "0aff00", "0x0AFF00"),
        KESTREL_SAME(XmlElement, UaByteString(QByteArray("<a/>")), "<a/>"),
        KESTREL_SAME(NodeId, UaNodeId(85, 0), "85"),
        KESTREL_SAME(ExpandedNodeId, UaExpandedNodeId(UaNodeId(85, 0), UaString(), 0), "85"),
        KESTREL_ELEMENT(StatusCode, UaStatusCode(0x80340000u), "BadNodeIdUnknown", "0x80340000",
                        "80340000"),
        KESTREL_SAME(QualifiedName, UaQualifiedName("Pump", 0), "Pump"),
        KESTREL_SAME(LocalizedText, UaLocalizedText("", "Pump"), "Pump"),
    };
#undef KESTREL_ELEMENT
#undef KESTREL_SAME
    return cases;
}

/// An element of zero bytes, the null value of every type.
inline UaVariant nullOf(int type)
{
    OpcUa_Variant null = {};
    null.Datatype = OpcUa_Byte(type);
    return UaVariant(null);
}

inline UaStackTypeArray<OpcUa_UInt32> dimensions(const std::vector<OpcUa_UInt32>& lengths)
{
    UaStackTypeArray<OpcUa_UInt32> array;
    array.resize(OpcUa_UInt32(lengths.size()));
    std::copy(lengths.begin(), lengths.end(), array.begin());
    return array;
}

/// So many null values.
inline UaVariant zeros(int type, OpcUa_UInt32 count, bool isMatrix = false)
{
    QvelEditWidgetArray array;
    array.setInitialValue(OpcUa_Byte(type), count);
    QvelEditWidgetMatrix matrix;
    matrix.setInitialValue(OpcUa_Byte(type), dimensions({count}));
    return isMatrix ? matrix.value() : array.value();
}

/// A dialog as a person meets it.
struct Parts
{
    explicit Parts(QWidget* d)
        : dialog(d), table(d->findChild<QTableView*>()), model(table->model())
    {
    }

    QAbstractButton* button(const QString& text) const
    {
        for (auto* button : dialog->findChildren<QAbstractButton*>()) {
            if (button->text() == text)
                return button;
        }
        return nullptr;
    }
    QModelIndex cell(int row) const { return model->index(row, 0); }
    QString text(int row) const { return cell(row).data().toString(); }
    UaVariant element(int row) const { return cell(row).data(Qt::UserRole).value<UaVariant>(); }
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
        QWidget* control = editor(row);
        if (!control || (control->isWindow() && !QTest::qWaitForWindowActive(control)))
            return nullptr;
        const auto edits = control->findChildren<QLineEdit*>(QString(), Qt::FindDirectChildrenOnly);
        control = edits.isEmpty() ? control : edits.last();
        control->setFocus();
        if (auto* edit = qobject_cast<QLineEdit*>(control)) {
            edit->selectAll();
            if (!edit->inputMask().isEmpty())
                QTest::keyClick(edit, Qt::Key_Home);
        }
        return control;
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

/// Runs `work` in the dialog that the "..." button opens. False if that did not come to its end.
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

#pragma once

/// \file
/// A value of each built-in type that can be edited, with its texts, and the dialogs over them as a
/// person meets them.

#include "support/modaluser.h"
#include "support/warnings.h"

#include <Kestrel/QvelArrayModel>
#include <Kestrel/QvelDialogWidgetArray>
#include <Kestrel/QvelDialogWidgetMatrix>
#include <Kestrel/QvelEditWidgetArray>
#include <Kestrel/QvelEditWidgetMatrix>
#include <Kestrel/QvelEnumInfo>
#include <Kestrel/QvelMatrixModel>
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
#include <Kestrel/UaVariant>

#include <QtTest/QAbstractItemModelTester>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QInputDialog>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
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

inline const QList<ElementCase>& elementCases()
{
    using V = UaVariant;
    OpcUa_Guid guid = {
        0x0f1e2d3c, 0x4b5a, 0x6978, {0x87, 0x96, 0xa5, 0xb4, 0xc3, 0xd2, 0xe1, 0xf0}};
#define KESTREL_ELEMENT(Type, value, ...)                                                          \
    {                                                                                              \
#Type, OpcUaType_##Type, variantOf(&V::set##Type, value), __VA_ARGS__                      \
    }
#define KESTREL_NUMBER(Type, number, text)                                                         \
    KESTREL_ELEMENT(Type, OpcUa_##Type(number), text, text, text)
    static const QList<ElementCase> cases = {
        {"Boolean", OpcUaType_Boolean, V(true), "true", "true", " "},
        KESTREL_NUMBER(SByte, -128, "-128"),
        KESTREL_NUMBER(Byte, 255, "255"),
        KESTREL_NUMBER(Int16, -32768, "-32768"),
        KESTREL_NUMBER(UInt16, 65535, "65535"),
        KESTREL_NUMBER(Int32, -2147483647, "-2147483647"),
        KESTREL_NUMBER(UInt32, 4294967295u, "4294967295"),
        KESTREL_NUMBER(Int64, -9223372036854775807, "-9223372036854775807"),
        KESTREL_NUMBER(UInt64, 18446744073709551615u, "18446744073709551615"),
        KESTREL_NUMBER(Float, 1.5, "1.5"),
        KESTREL_NUMBER(Double, -1e300, "-1e+300"),
        KESTREL_ELEMENT(String, UaString("Pump 1"), "Pump 1", "Pump 1", "Pump 1"),
        KESTREL_ELEMENT(DateTime, UaDateTime::fromString(UaString("2024-02-29T13:14:15Z")),
                        "2024-02-29T13:14:15Z", "2024-02-29T13:14:15Z", "2024-02-29T13:14:15Z"),
        KESTREL_ELEMENT(Guid, UaGuid(guid), "{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}",
                        "{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}",
                        "0f1e2d3c4b5a69788796a5b4c3d2e1f0"),
        KESTREL_ELEMENT(ByteString, UaByteString(QByteArray::fromHex("0aff00")), "0a ff 00",
                        "0aff00", "0x0AFF00"),
        KESTREL_ELEMENT(XmlElement, UaByteString(QByteArray("<a/>")), "<a/>", "<a/>", "<a/>"),
        KESTREL_ELEMENT(NodeId, UaNodeId(85, 0), "85", "85", "85"),
        KESTREL_ELEMENT(ExpandedNodeId, UaExpandedNodeId(UaNodeId(85, 0), UaString(), 0), "85",
                        "85", "85"),
        KESTREL_ELEMENT(StatusCode, UaStatusCode(0x80340000u), "BadNodeIdUnknown", "0x80340000",
                        "80340000"),
        KESTREL_ELEMENT(QualifiedName, UaQualifiedName("Pump", 0), "Pump", "Pump", "Pump"),
        KESTREL_ELEMENT(LocalizedText, UaLocalizedText("", "Pump"), "Pump", "Pump", "Pump"),
    };
#undef KESTREL_ELEMENT
#undef KESTREL_NUMBER
    return cases;
}

/// An empty array or matrix of a type.
inline UaVariant emptyOf(OpcUa_BuiltInType type, bool isMatrix)
{
    UaVariant value;
    isMatrix ? value.setEmptyMatrix(type) : value.setEmptyArray(type);
    return value;
}

/// An element of zero bytes, the null value of every type.
inline UaVariant nullOf(OpcUa_BuiltInType type)
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

inline std::unique_ptr<QvelDialogWidgetBase> createDialog(bool isMatrix, const UaVariant& value)
{
    if (isMatrix)
        return std::make_unique<QvelDialogWidgetMatrix>(value);
    return std::make_unique<QvelDialogWidgetArray>(value);
}

inline std::unique_ptr<QvelEditWidgetBase> createField(bool isMatrix, int flags = 0)
{
    const QvelEditWidgetBase::QvelEditWidgetFlags f(flags);
    if (isMatrix)
        return std::make_unique<QvelEditWidgetMatrix>(f);
    return std::make_unique<QvelEditWidgetArray>(f);
}

/// So many null values, also of the types that cannot be edited.
inline UaVariant zeros(OpcUa_BuiltInType type, OpcUa_UInt32 count, bool isMatrix = false)
{
    const auto field = createField(isMatrix);
    if (auto* matrix = qobject_cast<QvelEditWidgetMatrix*>(field.get()))
        matrix->setInitialValue(OpcUa_Byte(type), dimensions({count}));
    else
        static_cast<QvelEditWidgetArray*>(field.get())->setInitialValue(OpcUa_Byte(type), count);
    return field->value(nullptr);
}

/// A dialog with what a person sees of it.
struct Parts
{
    explicit Parts(QWidget* d)
        : dialog(static_cast<QvelDialogWidgetBase*>(d)), table(d->findChild<QTableView*>()),
          model(table->model()),
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

    QModelIndex cell(int row) const { return model->index(row, 0); }
    QString text(int row, int role = Qt::DisplayRole) const
    {
        return cell(row).data(role).toString();
    }
    UaVariant element(int row) const { return cell(row).data(Qt::UserRole).value<UaVariant>(); }
    QWidget* editor(int row) const { return table->indexWidget(cell(row)); }

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
        QTest::mouseClick(shape, Qt::LeftButton);
        dialog->activateWindow(); // what a window manager does
        return user.seen;
    }
    void resize(int count) const
    {
        while (!shape && model->rowCount() != count)
            QTest::mouseClick(model->rowCount() < count ? add : remove, Qt::LeftButton);
        if (shape)
            setDimensions(QString::number(count));
    }
    // Opens a cell's editor by F2 and gives the control that takes the keys.
    QWidget* open(int row) const
    {
        table->setFocus();
        table->setCurrentIndex(cell(row));
        QTest::keyClick(table, Qt::Key_F2);
        QWidget* control = editor(row);
        if (!control)
            return nullptr;
        const auto edits = control->findChildren<QLineEdit*>(QString(), Qt::FindDirectChildrenOnly);
        if (!edits.isEmpty())
            control = edits.last();
        if (auto* edit = qobject_cast<QLineEdit*>(control)) {
            edit->setFocus();
            edit->selectAll();
            if (!edit->inputMask().isEmpty())
                QTest::keyClick(edit, Qt::Key_Home);
        }
        return control;
    }
    // ...types into it and presses Enter. False if that does not close it.
    bool type(int row, const QString& keys) const
    {
        QWidget* control = open(row);
        const QPointer<QWidget> open = editor(row);
        if (!control)
            return false;
        QTest::keyClicks(control, keys);
        QTest::keyClick(control, Qt::Key_Return);
        return QTest::qWaitFor([&] { return !open && dialog->isVisible(); }, 500);
    }

    QvelDialogWidgetBase* dialog;
    QTableView* table;
    QAbstractItemModel* model;
    QAbstractButton* write;
    QLabel* label;
    QAbstractButton* add = nullptr;
    QAbstractButton* remove = nullptr;
    QAbstractButton* shape = nullptr;
};

/// Runs `work` in the dialog that the "..." button opens.
template <class Work>
void inDialog(QWidget* field, Work work)
{
    ModalUser user([&](QDialog* dialog) {
        user.stop();
        const QPointer<QDialog> open = dialog;
        if (QTest::qWaitForWindowActive(dialog))
            work(Parts(dialog));
        if (open)
            open->reject();
    });
    QTest::mouseClick(field->findChild<QToolButton*>(QString(), Qt::FindDirectChildrenOnly),
                      Qt::LeftButton);
}

/// A model under the tester, which does not accept flags for no cell at all as these models have.
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

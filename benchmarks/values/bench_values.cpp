#include "figure.h"

#include <Kestrel/QvelDialogWidgetExpandedNodeId>
#include <Kestrel/QvelDialogWidgetNodeId>
#include <Kestrel/QvelDialogWidgetQualifiedName>
#include <Kestrel/QvelDisplayDialog>
#include <Kestrel/QvelEditWidgetByteString>
#include <Kestrel/QvelEditWidgetExpandedNodeId>
#include <Kestrel/QvelWidgetEnum>
#include <Kestrel/QvelWidgetStatusCode>
#include <Kestrel/QvelWidgetValueRank>
#include <Kestrel/QvelWidgetWriteMask>

#include <QtGui/QIntValidator>
#include <QtGui/QRegularExpressionValidator>
#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QApplication>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSpinBox>
#include <QtWidgets/QStyledItemDelegate>
#include <QtWidgets/QTextEdit>
#include <QtWidgets/QToolButton>

#include <functional>
#include <memory>
#include <string>

namespace {

constexpr int created = 1000;
constexpr int settings = 2000;
constexpr int runs = 5;

// The controls of an editor without the editor.
struct Bare
{
    std::unique_ptr<QWidget> widget;
    std::vector<QSpinBox*> spins;
    std::vector<QComboBox*> combos;
    std::vector<QLineEdit*> lines;
};

// Which controls an editor is made of.
struct Parts
{
    int spins = 0;
    int lines = 0;
    QStringList items; // of its combo box, if it has one
    bool validated = false;
    QString mask;
};

void addControls(Bare& bare, const Parts& parts, const std::function<void(QWidget*)>& add)
{
    for (int i = 0; i < parts.spins; ++i) {
        bare.spins.push_back(new QSpinBox);
        bare.spins.back()->setMaximum(65535);
        add(bare.spins.back());
    }
    if (!parts.items.isEmpty()) {
        auto* combo = new QComboBox;
        for (int i = 0; i < parts.items.size(); ++i)
            combo->addItem(parts.items[i], i);
        bare.combos.push_back(combo);
        add(combo);
    }
    for (int i = 0; i < parts.lines; ++i) {
        auto* line = new QLineEdit;
        line->setInputMask(parts.mask);
        if (parts.validated && i + 1 == parts.lines)
            line->setValidator(new QIntValidator(line));
        bare.lines.push_back(line);
        add(line);
    }
}

Bare bareInline(const Parts& parts)
{
    Bare bare;
    bare.widget = std::make_unique<QWidget>();
    auto* layout = new QHBoxLayout(bare.widget.get());
    layout->setContentsMargins(0, 0, 0, 0);
    addControls(bare, parts, [layout](QWidget* control) { layout->addWidget(control); });
    return bare;
}

Bare bareDialog(const Parts& parts, QWidget* parent = nullptr)
{
    Bare bare;
    auto* dialog = new QDialog(parent);
    bare.widget.reset(dialog);
    auto* layout = new QVBoxLayout(dialog);
    auto* grid = new QGridLayout;
    layout->addLayout(grid);
    layout->addWidget(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel));
    addControls(bare, parts, [grid](QWidget* control) {
        const int row = grid->rowCount();
        auto* label = new QLabel("Label:");
        label->setBuddy(control);
        grid->addWidget(label, row, 0);
        grid->addWidget(control, row, 1);
    });
    return bare;
}

// A line, buttons, and the dialog that `dialog` adds to the field.
Bare bareField(int buttons, const std::function<void(QWidget*)>& dialog)
{
    Bare bare;
    bare.widget = std::make_unique<QWidget>();
    auto* layout = new QHBoxLayout(bare.widget.get());
    bare.lines.push_back(new QLineEdit);
    layout->addWidget(bare.lines.back());
    for (int i = 0; i < buttons; ++i) {
        auto* button = new QToolButton;
        button->setText("...");
        layout->addWidget(button);
    }
    dialog(bare.widget.get());
    return bare;
}

// A combo box whose list is set up for check boxes, as far as Qt itself goes.
Bare bareFlags(const QStringList& names)
{
    Bare bare = bareInline({0, 0, names, false, {}});
    QComboBox* combo = bare.combos.front();
    combo->view()->setItemDelegate(new QStyledItemDelegate(combo));
    combo->view()->setAlternatingRowColors(true);
    for (int i = 0; i < combo->count(); ++i)
        combo->setItemData(i, Qt::Unchecked, Qt::CheckStateRole);
    return bare;
}

// Constructs many of both in turn.
template <class MakeOurs, class MakeBare>
void reportConstruction(Figures& figures, const std::string& name, MakeOurs makeOurs,
                        MakeBare makeBare)
{
    const auto [ours, bare] = medians(
        runs,
        [&] {
            return milliseconds([&] {
                for (int i = 0; i < created; ++i)
                    makeOurs();
            });
        },
        [&] {
            return milliseconds([&] {
                for (int i = 0; i < created; ++i)
                    makeBare();
            });
        });
    figures.report(("construct-" + name).c_str(), ours / bare, 2);
}

// Sets two values in turn, on an editor and on bare controls with one slot each.
template <class Editor, class Set>
void reportSetting(Figures& figures, const std::string& name, Editor& editor, const UaVariant& a,
                   const UaVariant& b, Bare& bare, Set setBare)
{
    int told = 0;
    QObject::connect(&editor, &Editor::valueChanged, [&told](const UaVariant&) { ++told; });
    for (QSpinBox* spin : bare.spins)
        QObject::connect(spin, &QSpinBox::valueChanged, [&told] { ++told; });
    for (QComboBox* combo : bare.combos)
        QObject::connect(combo, &QComboBox::currentIndexChanged, [&told] { ++told; });
    for (QLineEdit* line : bare.lines)
        QObject::connect(line, &QLineEdit::textChanged, [&told] { ++told; });
    const auto [ours, theirs] = medians(
        runs,
        [&] {
            return milliseconds([&] {
                for (int i = 0; i < settings; ++i)
                    editor.setValue(i % 2 ? a : b);
            });
        },
        [&] {
            return milliseconds([&] {
                for (int i = 0; i < settings; ++i)
                    setBare(i % 2);
            });
        });
    figures.report(("set-" + name).c_str(), ours / theirs, 3);
}

template <class Setter, class Value>
UaVariant variantOf(Setter setter, const Value& value)
{
    UaVariant variant;
    (variant.*setter)(value);
    return variant;
}

const QStringList identifierTypes = {"Numeric", "String", "Guid", "Opaque"};

QStringList maskNames()
{
    QStringList names;
    const QMetaEnum keys = QvelAttributeWriteMask::staticMetaObject.enumerator(0);
    for (int i = 1; i < keys.keyCount(); ++i)
        names << keys.key(i);
    return names;
}

void reportConstructions(Figures& figures)
{
    const Parts nodeId = {1, 1, identifierTypes, true, {}};
    reportConstruction(
        figures, "nodeid", [] { QvelWidgetNodeId w; }, [&] { bareInline(nodeId); });
    reportConstruction(
        figures, "nodeid-dialog", [] { QvelDialogWidgetNodeId w; }, [&] { bareDialog(nodeId); });
    const Parts expanded = {2, 2, identifierTypes, true, {}};
    reportConstruction(
        figures, "expandednodeid-dialog", [] { QvelDialogWidgetExpandedNodeId w; },
        [&] { bareDialog(expanded); });
    reportConstruction(
        figures, "expandednodeid-field", [] { QvelEditWidgetExpandedNodeId w; },
        [&] {
            bareField(1, [&](QWidget* field) { bareDialog(expanded, field).widget.release(); });
        });
    reportConstruction(
        figures, "qualifiedname", [] { QvelWidgetQualifiedName w; },
        [] {
            bareInline({1, 1, {}, false, {}});
        });
    reportConstruction(
        figures, "qualifiedname-dialog", [] { QvelDialogWidgetQualifiedName w; },
        [] {
            bareDialog({1, 1, {}, false, {}});
        });
    reportConstruction(
        figures, "localizedtext", [] { QvelWidgetLocalizedText w; },
        [] {
            bareInline({0, 2, {}, false, {}});
        });
    reportConstruction(
        figures, "localizedtext-dialog", [] { QvelDialogWidgetLocalizedText w; },
        [] {
            bareDialog({0, 2, {}, false, {}});
        });
    reportConstruction(
        figures, "statuscode", [] { QvelWidgetStatusCode w; },
        [] {
            bareInline({0, 1, {}, false, "\\0\\xHHHHHHHH"});
        });
    reportConstruction(
        figures, "guid", [] { QvelWidgetGuid w; },
        [] {
            bareInline({0, 1, {}, false, "\\{HHHHHHHH-HHHH-HHHH-HHHH-HHHHHHHHHHHH\\}"});
        });
    reportConstruction(
        figures, "bytestring", [] { QvelWidgetByteString w; },
        [] {
            bareInline({0, 1, {}, true, {}});
        });
    reportConstruction(
        figures, "xmlelement", [] { QvelWidgetXmlElement w; },
        [] {
            bareInline({0, 1, {}, false, {}});
        });
    const auto textField = [] {
        bareField(2, [](QWidget* field) {
            auto* dialog = new QDialog(field);
            auto* layout = new QVBoxLayout(dialog);
            layout->addWidget(new QTextEdit);
            layout->addWidget(
                new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel));
        });
    };
    reportConstruction(
        figures, "bytestring-field", [] { QvelEditWidgetByteString w; }, textField);
    reportConstruction(
        figures, "xmlelement-field", [] { QvelEditWidgetXmlElement w; }, textField);
    reportConstruction(
        figures, "string-field", [] { QvelEditWidgetString w; }, textField);

    const QMap<int, QString> names = {{1, "Read"}, {2, "Write"}, {4, "Execute"}};
    reportConstruction(
        figures, "enum", [&] { QvelWidgetEnum w(names); },
        [&] {
            bareInline({0, 0, names.values(), false, {}});
        });
    reportConstruction(
        figures, "enumflags", [&] { QvelWidgetEnumFlags w(names); },
        [&] { bareFlags(names.values()); });
    reportConstruction(
        figures, "writemask", [] { QvelWidgetWriteMask w; },
        [names = maskNames()] { bareFlags(names); });
    reportConstruction(
        figures, "accesslevelmask", [] { QvelWidgetAccessLevelMask w; },
        [] {
            bareFlags({"CurrentRead", "CurrentWrite", "HistoryRead", "HistoryWrite"});
        });
    reportConstruction(
        figures, "valuerank", [] { QvelWidgetValueRank w; },
        [] {
            bareInline(
                {0, 0, {"A (-3)", "B (-2)", "C (-1)", "D (0)", "E (1)", "F (2)"}, false, {}});
        });
}

void reportSettings(Figures& figures)
{
    {
        QvelWidgetNodeId editor;
        Bare bare = bareInline({1, 1, identifierTypes, true, {}});
        bare.lines[0]->setValidator(nullptr);
        bare.combos[0]->setCurrentIndex(1);
        reportSetting(figures, "nodeid", editor,
                      variantOf(&UaVariant::setNodeId, UaNodeId(UaString("Pump.Speed"), 2)),
                      variantOf(&UaVariant::setNodeId, UaNodeId(UaString("Valve.State"), 3)), bare,
                      [&bare](bool odd) {
                          bare.spins[0]->setValue(odd ? 2 : 3);
                          bare.combos[0]->setCurrentIndex(1);
                          bare.lines[0]->setText(odd ? "Pump.Speed" : "Valve.State");
                      });
    }
    {
        QvelWidgetQualifiedName editor;
        Bare bare = bareInline({1, 1, {}, false, {}});
        reportSetting(
            figures, "qualifiedname", editor,
            variantOf(&UaVariant::setQualifiedName, UaQualifiedName(UaString("Pump"), 2)),
            variantOf(&UaVariant::setQualifiedName, UaQualifiedName(UaString("Valve"), 3)), bare,
            [&bare](bool odd) {
                bare.lines[0]->setText(odd ? "Pump" : "Valve");
                bare.spins[0]->setValue(odd ? 2 : 3);
            });
    }
    {
        QvelWidgetGuid editor;
        Bare bare = bareInline({0, 1, {}, false, "\\{HHHHHHHH-HHHH-HHHH-HHHH-HHHHHHHHHHHH\\}"});
        const char* texts[] = {"{0f1e2d3c-4b5a-6978-8796-a5b4c3d2e1f0}",
                               "{11111111-4b5a-6978-8796-a5b4c3d2e1f0}"};
        UaGuid guids[2];
        for (int i = 0; i < 2; ++i)
            guids[i] = UaGuid(QUuid(texts[i]));
        reportSetting(figures, "guid", editor, variantOf(&UaVariant::setGuid, guids[0]),
                      variantOf(&UaVariant::setGuid, guids[1]), bare,
                      [&bare, &texts](bool odd) { bare.lines[0]->setText(texts[odd ? 0 : 1]); });
    }
    {
        QvelWidgetByteString editor;
        Bare bare = bareInline({0, 1, {}, false, {}});
        static const QRegularExpression digits("(0x)?[\\da-fA-F]*");
        bare.lines[0]->setValidator(new QRegularExpressionValidator(digits, bare.lines[0]));
        reportSetting(figures, "bytestring", editor,
                      variantOf(&UaVariant::setByteString, UaByteString(QByteArray("0123456789"))),
                      variantOf(&UaVariant::setByteString, UaByteString(QByteArray("abcdefghij"))),
                      bare, [&bare](bool odd) {
                          bare.lines[0]->setText(odd ? "30313233343536373839"
                                                     : "6162636465666768696a");
                      });
    }
    {
        QvelWidgetValueRank editor;
        Bare bare = bareInline({0, 0, {"A", "B", "C", "D", "E", "F"}, false, {}});
        reportSetting(figures, "valuerank", editor, UaVariant(OpcUa_Int32(-1)),
                      UaVariant(OpcUa_Int32(1)), bare,
                      [&bare](bool odd) { bare.combos[0]->setCurrentIndex(odd ? 2 : 4); });
    }
    {
        QvelWidgetEnumFlags editor({{1, "Read"}, {2, "Write"}, {4, "Execute"}});
        Bare bare = bareFlags({"Read", "Write", "Execute"});
        QComboBox* combo = bare.combos[0];
        QObject::connect(combo->model(), &QAbstractItemModel::dataChanged, combo, [combo] {
            combo->setToolTip(combo->itemText(0));
            combo->update();
        });
        reportSetting(figures, "enumflags", editor, UaVariant(OpcUa_Int32(1)),
                      UaVariant(OpcUa_Int32(6)), bare, [combo](bool odd) {
                          for (int i = 0; i < 3; ++i)
                              combo->setItemData(i, (i == 0) == odd ? Qt::Checked : Qt::Unchecked,
                                                 Qt::CheckStateRole);
                      });
    }
}

// A large value costs no more to show than a small one.
void reportLargeByteString(Figures& figures)
{
    const auto show = [](qsizetype size) {
        const UaVariant value =
            variantOf(&UaVariant::setByteString, UaByteString(QByteArray(size, 'x')));
        QvelEditWidgetByteString field;
        field.show();
        int told = 0;
        QObject::connect(&field, &QvelEditWidgetByteString::valueChanged,
                         [&told](const UaVariant&) { ++told; });
        return milliseconds([&] {
            field.setValue(value);
            QApplication::processEvents();
        });
    };
    const auto [large, small] = medians(
        runs, [&] { return show(100'000'000); }, [&] { return show(1000); });
    figures.report("bytestring-100MB-over-1kB", large - small, 2, " ms");
}

// Counts what reaches the closed box of a mask editor when all its bits are set.
class PaintCounter : public QObject
{
public:
    int paints = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        paints += event->type() == QEvent::Paint;
        return false;
    }
};

void reportWholeMask(Figures& figures)
{
    constexpr OpcUa_UInt32 allBits = 0x3fffff;
    QvelWidgetWriteMask editor;
    editor.show();
    QApplication::processEvents();
    PaintCounter counter;
    editor.findChild<QComboBox*>()->installEventFilter(&counter);
    int told = 0;
    QObject::connect(&editor, &QvelWidgetWriteMask::attributeWriteMaskChanged, [&told] { ++told; });
    editor.setAttributeWriteMask(allBits);
    QApplication::processEvents();
    figures.report("set-22-bits-repaints", counter.paints, 1);
    figures.report("set-22-bits-signals", told, 22);
}

} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    Figures figures("values");
    reportConstructions(figures);
    reportSettings(figures);
    reportLargeByteString(figures);
    reportWholeMask(figures);
    return figures.result();
}

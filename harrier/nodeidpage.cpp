#include "nodeidpage.h"

#include "language.h"
#include "outputfield.h"
#include "plainline.h"

#include <Kestrel/QvelDialogWidgetNodeId>
#include <Kestrel/QvelWidgetNodeId>

#include <QtWidgets/QGridLayout>
#include <QtWidgets/QGroupBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

namespace {

constexpr int MaxText = 200;
constexpr int MaxSignals = 200;

QString text(const UaNodeId& nodeId)
{
    return plainLine(nodeId.toFullString().toQString(), MaxText);
}

QString validity(bool valid)
{
    return valid ? NodeIdPage::tr("ok") : NodeIdPage::tr("not valid");
}

} // namespace

// The texts of a row, of which `show` shows the value.
static void follow(const char* title, QWidget* shown, QLabel* label, OutputField* value, QLabel* ok,
                   const std::function<void()>& show)
{
    Language::follow(shown, [=] {
        const QString shownTitle = NodeIdPage::tr(title);
        label->setText(shownTitle + QLatin1Char(':'));
        value->setAccessibleName(NodeIdPage::tr("%1: value").arg(shownTitle));
        ok->setAccessibleName(NodeIdPage::tr("%1: validity").arg(shownTitle));
        shown->setAccessibleName(shownTitle);
        show();
    });
}

template <class Editor>
void NodeIdPage::addRow(QGridLayout* grid, const char* title, QWidget* shown, Editor* editor)
{
    const int row = grid->rowCount();
    auto* label = new QLabel;
    auto* value = new OutputField;
    auto* ok = new QLabel;
    grid->addWidget(label, row, 0);
    grid->addWidget(shown, row, 1);
    grid->addWidget(value, row, 2);
    grid->addWidget(ok, row, 3);

    const auto show = [editor, value, ok] {
        bool valid = false;
        const UaNodeId nodeId = editor->nodeId(&valid);
        value->showText(valid ? text(nodeId) : QString(), MaxText);
        ok->setText(validity(valid));
        ok->setAccessibleDescription(ok->text());
    };
    follow(title, shown, label, value, ok, show);
    connect(editor, &Editor::valueChanged, this, [this, title](const UaVariant&) {
        addSignal(tr(title) + QStringLiteral(": valueChanged"));
    });
    connect(editor, &Editor::nodeIdChanged, this, [this, title, show](const UaNodeId& nodeId) {
        addSignal(QStringLiteral("%1: nodeIdChanged(%2)").arg(tr(title), text(nodeId)));
        show();
    });
}

NodeIdPage::NodeIdPage(QWidget* parent) : QWidget(parent), m_signals(new QPlainTextEdit)
{
    auto* normal = new QvelWidgetNodeId;
    auto* readOnly = new QvelWidgetNodeId(QvelWidgetBase::ReadOnly);
    auto* frameless = new QvelWidgetNodeId(QvelWidgetBase::HideFrame);
    auto* dialog = new QvelDialogWidgetNodeId({}, this);
    auto* open = new QPushButton;

    auto* editors = new QGroupBox;
    auto* grid = new QGridLayout(editors);
    grid->setColumnStretch(1, 3);
    grid->setColumnStretch(2, 2);
    addRow(grid, QT_TR_NOOP("Inline"), normal, normal);
    addRow(grid, QT_TR_NOOP("Read-only copy"), readOnly, readOnly);
    addRow(grid, QT_TR_NOOP("Without frame"), frameless, frameless);
    addRow(grid, QT_TR_NOOP("Dialog"), open, dialog);

    connect(normal, &QvelWidgetNodeId::nodeIdChanged, this, [normal, readOnly] {
        bool valid = false;
        const UaNodeId nodeId = normal->nodeId(&valid);
        if (valid)
            readOnly->setNodeId(nodeId);
    });
    // The dialog stays open beside the window; cancelled, it goes back to the last accepted value.
    connect(open, &QPushButton::clicked, dialog, [dialog, open] {
        dialog->move(open->mapToGlobal(QPoint(0, open->height())));
        dialog->show();
        dialog->activateWindow();
    });
    connect(dialog, &QDialog::accepted, this,
            [this, dialog] { m_accepted = dialog->nodeId(nullptr); });
    connect(dialog, &QDialog::rejected, this, [this, dialog] { dialog->setNodeId(m_accepted); });
    normal->setNodeId(UaNodeId(UaString("Pump.Speed"), 2));

    m_signals->setReadOnly(true);
    m_signals->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_signals->setTabChangesFocus(true);
    m_signals->setMaximumBlockCount(MaxSignals);
    m_signals->setObjectName(QStringLiteral("signals"));
    m_signals->clear();

    auto* last = new QGroupBox;
    (new QVBoxLayout(last))->addWidget(m_signals);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(editors);
    layout->addWidget(last);
    Language::follow(this, [=] {
        open->setText(tr("Edit in &Dialog..."));
        editors->setTitle(tr("Editors"));
        m_signals->setAccessibleName(tr("Signals"));
        m_signals->setPlaceholderText(tr("Edit a NodeId to see its signals."));
        last->setTitle(tr("Last signals"));
    });
}

void NodeIdPage::addSignal(const QString& line)
{
    m_signals->appendPlainText(line);
}

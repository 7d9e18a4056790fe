#include "flagscombobox.h"

#include "base/showntext_p.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtGui/QAccessible>
#include <QtGui/QKeyEvent>
#include <QtGui/QMouseEvent>
#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QAccessibleWidget>
#include <QtWidgets/QApplication>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QStyle>
#include <QtWidgets/QStylePainter>

namespace {

bool isChecked(const QModelIndex& index)
{
    return index.data(Qt::CheckStateRole).toInt() == Qt::Checked;
}

// Qt's own would tell the current entry, which means nothing here.
class AccessibleFlags : public QAccessibleWidget
{
public:
    AccessibleFlags(QvelFlagsComboBoxBase* combo, const QString& value)
        : QAccessibleWidget(combo, QAccessible::ComboBox), m_combo(combo), m_value(value)
    {
    }

    QString text(QAccessible::Text type) const override
    {
        if (type == QAccessible::Value)
            return m_value;
        return type == QAccessible::Description ? QString() : QAccessibleWidget::text(type);
    }
    int childCount() const override { return 1; }
    QAccessibleInterface* child(int index) const override
    {
        return index == 0 ? QAccessible::queryAccessibleInterface(m_combo->view()) : nullptr;
    }
    int indexOfChild(const QAccessibleInterface* child) const override
    {
        return child->object() == m_combo->view() ? 0 : -1;
    }
    QStringList actionNames() const override { return {showMenuAction(), pressAction()}; }
    void doAction(const QString& name) override
    {
        if (name == showMenuAction() || name == pressAction())
            m_combo->view()->isVisible() ? m_combo->hidePopup() : m_combo->showPopup();
    }

private:
    QvelFlagsComboBoxBase* const m_combo;
    const QString& m_value;
};

} // namespace

QvelFlagsDelegate::QvelFlagsDelegate(QObject* parent) : QStyledItemDelegate(parent) {}

QvelFlagsDelegate::~QvelFlagsDelegate() = default;

void QvelFlagsDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const
{
    QStyleOptionButton box;
    box.rect = option.rect;
    box.palette = option.palette;
    box.fontMetrics = option.fontMetrics;
    box.direction = option.direction;
    box.text = index.data(Qt::DisplayRole).toString();
    box.state = QStyle::State_Enabled | (isChecked(index) ? QStyle::State_On : QStyle::State_Off);
    QApplication::style()->drawControl(QStyle::CE_CheckBox, &box, painter);
}

QWidget* QvelFlagsDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& /*option*/,
                                         const QModelIndex& /*index*/) const
{
    auto* box = new QCheckBox(parent);
    // The list shows a box only for its current entry.
    box->setAutoFillBackground(true);
    box->setBackgroundRole(QPalette::Highlight);
    QPalette colours = box->palette();
    colours.setBrush(QPalette::WindowText, colours.highlightedText());
    box->setPalette(colours);
    connect(box, &QCheckBox::stateChanged, this, &QvelFlagsDelegate::sltCheckStateChanged);
    return box;
}

void QvelFlagsDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const
{
    auto* box = static_cast<QCheckBox*>(editor);
    const QSignalBlocker blocker(box); // what the model tells is no click
    box->setText(index.data(Qt::DisplayRole).toString());
    box->setChecked(isChecked(index));
}

void QvelFlagsDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                     const QModelIndex& index) const
{
    const auto* box = static_cast<QCheckBox*>(editor);
    model->setItemData(index, {{Qt::DisplayRole, box->text()},
                               {Qt::CheckStateRole, box->checkState()},
                               {Qt::UserRole, index.data(Qt::UserRole)}});
}

void QvelFlagsDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                             const QModelIndex& /*index*/) const
{
    editor->setGeometry(option.rect);
}

void QvelFlagsDelegate::sltCheckStateChanged()
{
    if (auto* box = qobject_cast<QCheckBox*>(sender()))
        Q_EMIT commitData(box);
}

bool QvelFlagsDelegate::eventFilter(QObject* editor, QEvent* event)
{
    if (event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride) {
        switch (static_cast<QKeyEvent*>(event)->key()) {
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_Home:
        case Qt::Key_End:
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Escape:
            // The editor is a child of the list's viewport.
            QCoreApplication::sendEvent(editor->parent()->parent(), event);
            return true;
        default:
            break;
        }
    }
    return QStyledItemDelegate::eventFilter(editor, event);
}

QvelFlagsComboBoxBase::QvelFlagsComboBoxBase(QWidget* parent)
    : QvelFlagsComboBoxBase(new QvelFlagsDelegate, parent)
{
}

QvelFlagsComboBoxBase::QvelFlagsComboBoxBase(QvelFlagsDelegate* delegate, QWidget* parent)
    : QComboBox(parent)
{
    QAccessible::installFactory(createAccessible);
    delegate->setParent(this);
    view()->setItemDelegate(delegate);
    view()->setEditTriggers(QAbstractItemView::CurrentChanged);
    view()->viewport()->installEventFilter(this);
    view()->setAlternatingRowColors(true);
    connect(model(), &QAbstractItemModel::dataChanged, this, &QvelFlagsComboBoxBase::flagsChanged);
    connect(model(), &QAbstractItemModel::dataChanged, this,
            &QvelFlagsComboBoxBase::sltUpdateDisplayText);
}

QvelFlagsComboBoxBase::~QvelFlagsComboBoxBase() = default;

QAccessibleInterface* QvelFlagsComboBoxBase::createAccessible(const QString&, QObject* object)
{
    auto* combo = qobject_cast<QvelFlagsComboBoxBase*>(object);
    return combo ? new AccessibleFlags(combo, combo->m_displayText) : nullptr;
}

void QvelFlagsComboBoxBase::addFlag(const QString& name, uint bits)
{
    if (bits == 0) {
        m_emptyText = name;
        return;
    }
    addItem(name);
    // All at once and in the order of the delegate: the model takes another order for a change.
    model()->setItemData(
        model()->index(count() - 1, modelColumn(), rootModelIndex()),
        {{Qt::DisplayRole, name}, {Qt::CheckStateRole, Qt::Unchecked}, {Qt::UserRole, int(bits)}});
}

template <class Visit>
void QvelFlagsComboBoxBase::forEachChecked(Visit visit) const
{
    const QAbstractItemModel* entries = model();
    const int rows = entries->rowCount();
    for (int row = 0; row < rows; ++row) {
        const QModelIndex entry = entries->index(row, 0);
        if (isChecked(entry))
            visit(entry);
    }
}

uint QvelFlagsComboBoxBase::checkedBits() const
{
    uint bits = 0;
    forEachChecked(
        [&bits](const QModelIndex& entry) { bits |= entry.data(Qt::UserRole).toUInt(); });
    return bits;
}

void QvelFlagsComboBoxBase::checkBits(uint bits)
{
    for (int i = 0; i < count(); ++i) {
        const bool overlaps = (itemData(i).toUInt() & bits) != 0;
        setItemData(i, overlaps ? Qt::Checked : Qt::Unchecked, Qt::CheckStateRole);
    }
}

void QvelFlagsComboBoxBase::showPopup()
{
    QComboBox::showPopup();
    // The view opens a check box where the current entry changes, and it has not changed.
    const QModelIndex current = view()->currentIndex();
    if (view()->isVisible() && !view()->indexWidget(current))
        view()->edit(current);
}

void QvelFlagsComboBoxBase::sltUpdateDisplayText()
{
    QString names;
    forEachChecked([&names](const QModelIndex& entry) {
        if (!names.isEmpty())
            names += QLatin1String(" | ");
        names += entry.data(Qt::DisplayRole).toString();
    });
    m_displayText = names.isEmpty() ? m_emptyText : names;
    setToolTip(plainToolTip(m_displayText));
    update();
    QAccessibleValueChangeEvent told(this, m_displayText);
    QAccessible::updateAccessibility(&told);
}

bool QvelFlagsComboBoxBase::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != view()->viewport())
        return QComboBox::eventFilter(watched, event);
    const auto indexAt = [this, event] {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        return mouse->button() == Qt::LeftButton ? view()->indexAt(mouse->position().toPoint())
                                                 : QModelIndex();
    };
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        m_pressed = indexAt();
        return QComboBox::eventFilter(watched, event);
    case QEvent::MouseButtonRelease: {
        const QModelIndex released = indexAt();
        auto* box = qobject_cast<QCheckBox*>(view()->indexWidget(released));
        if (box && released == m_pressed)
            box->toggle();
        m_pressed = QModelIndex();
        return true;
    }
    default:
        return QComboBox::eventFilter(watched, event);
    }
}

void QvelFlagsComboBoxBase::paintEvent(QPaintEvent* /*event*/)
{
    QStylePainter painter(this);
    painter.setPen(palette().color(QPalette::Text));
    QStyleOptionComboBox option;
    initStyleOption(&option);
    const QRect field =
        style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    option.currentText = fontMetrics().elidedText(m_displayText, Qt::ElideRight, field.width() - 2);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

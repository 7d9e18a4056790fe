#include "elementtable_p.h"

#include "base/retranslate_p.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QScopedValueRollback>
#include <QtCore/QTimer>
#include <QtGui/QKeyEvent>
#include <QtGui/QPainter>
#include <QtGui/QScreen>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLayout>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QToolTip>

#include <algorithm>
#include <limits>
#include <vector>

namespace {

// The rows and characters that the table makes room for.
constexpr int fewestRows = 8;
constexpr int mostRows = 32;
constexpr int textWidth = 60;
// All heights add up to an int, with some left for the rows that have been seen to be higher.
constexpr int mostHeight = std::numeric_limits<int>::max() - (1 << 24);

// A header that follows its model only while it is seen, since its items cost time and memory by
// the row.
class RowHeader : public QHeaderView
{
public:
    explicit RowHeader(QWidget* parent) : QHeaderView(Qt::Vertical, parent)
    {
        setSectionsClickable(true);
        setHighlightSections(true);
    }

    void reset() override
    {
        m_isStale = !isVisible();
        if (!m_isStale)
            QHeaderView::reset();
    }

    // To be called once it is visible. New rows are of the given height.
    void follow(int rowHeight)
    {
        if (defaultSectionSize() != rowHeight)
            setDefaultSectionSize(rowHeight);
        if (m_isStale)
            reset();
    }

    int bounded(int height) const
    {
        return std::clamp(height, minimumSectionSize(), maximumSectionSize());
    }
    int labelHeight(int row) const { return sectionSizeFromContents(row).height(); }

    // The last label is the widest: it has the most digits. Qt measures two hundred of them.
    QSize sizeHint() const override
    {
        const int last = model() ? model()->rowCount() - 1 : -1;
        return last < 0 ? QHeaderView::sizeHint()
                        : sectionSizeFromContents(0).expandedTo(sectionSizeFromContents(last));
    }

protected:
    // Else [0][1] would be shown as [1][0] where one reads from right to left.
    void paintSection(QPainter* painter, const QRect& rect, int row) const override
    {
        painter->setLayoutDirection(Qt::LeftToRight);
        QHeaderView::paintSection(painter, rect, row);
    }

private:
    bool m_isStale = true;
};

RowHeader* rowHeader(const QTableView* table)
{
    return static_cast<RowHeader*>(table->verticalHeader());
}

// An editor and what is inside it, in the same order for editors of one class.
QList<QWidget*> controlsOf(QWidget* editor)
{
    QList<QWidget*> controls = editor->findChildren<QWidget*>();
    controls.prepend(editor);
    return controls;
}

// Gives the controls of an editor what a person has put into those of another. A choice may change
// what can be typed, so it comes first.
void copyInput(const QList<QWidget*>& from, const QList<QWidget*>& to)
{
    const qsizetype count = std::min(from.size(), to.size());
    for (qsizetype i = 0; i < count; ++i) {
        const auto* source = qobject_cast<QComboBox*>(from.at(i));
        if (auto* target = qobject_cast<QComboBox*>(to.at(i)); source && target) {
            target->setCurrentIndex(source->currentIndex());
            for (int item = 0; item < std::min(source->count(), target->count()); ++item)
                target->setItemData(item, source->itemData(item, Qt::CheckStateRole),
                                    Qt::CheckStateRole);
        }
    }
    for (qsizetype i = 0; i < count; ++i) {
        const auto* sourceButton = qobject_cast<QAbstractButton*>(from.at(i));
        if (auto* target = qobject_cast<QAbstractButton*>(to.at(i)); sourceButton && target)
            target->setChecked(sourceButton->isChecked());
        const auto* source = qobject_cast<QLineEdit*>(from.at(i));
        if (auto* target = qobject_cast<QLineEdit*>(to.at(i)); source && target) {
            target->setMaxLength(source->maxLength());
            target->setText(source->text());
            target->setCursorPosition(source->cursorPosition());
        }
    }
}

} // namespace

ElementTable::ElementTable(QWidget* parent) : CellEditingView(parent)
{
    setVerticalHeader(new RowHeader(this));
    horizontalHeader()->hide();
    horizontalHeader()->setStretchLastSection(true);
    setShowGrid(true);
    retranslated(this, [this] {
        setAccessibleName(QCoreApplication::translate("ElementTable", "Elements"));
    });
}

// The height of a row of one plain line of text.
int ElementTable::lineHeight() const
{
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    option.text = QStringLiteral("0");
    option.features |= QStyleOptionViewItem::HasDisplay;
    const int text = style()->sizeFromContents(QStyle::CT_ItemViewItem, &option, {}, this).height();
    const RowHeader* header = rowHeader(this);
    return header->bounded(std::max(text + 1, header->labelHeight(0))); // 1 for the grid
}

bool ElementTable::hasRoomFor(std::size_t rows) const
{
    return rows <= std::size_t(mostHeight / lineHeight());
}

// What resizeRowsToContents() would give the row.
int ElementTable::contentHeight(int row) const
{
    const RowHeader* header = rowHeader(this);
    return header->bounded(std::max(sizeHintForRow(row), header->labelHeight(row)));
}

// From `row` on, up or down, as far as the rows fill the table.
void ElementTable::fitRows(int row, int step)
{
    if (m_isFitting || !isVisible())
        return;
    const QScopedValueRollback<bool> guard(m_isFitting, true);
    // A header that learns of a new height finds the places of all its rows again when it is next
    // asked for one, so all is measured before anything is changed.
    std::vector<std::pair<int, int>> changes;
    const int count = rows();
    const int common = m_isUnbroken && row >= 0 && row < count ? contentHeight(row) : 0;
    for (int y = 0; row >= 0 && row < count && y < viewport()->height(); row += step) {
        const int height = m_isUnbroken ? common : contentHeight(row);
        if (height != rowHeight(row))
            changes.emplace_back(row, height);
        y += height;
    }
    if (changes.empty())
        return;
    verticalHeader()->setUpdatesEnabled(false);
    for (const auto& [changed, height] : changes)
        verticalHeader()->resizeSection(changed, height);
    verticalHeader()->setUpdatesEnabled(true);
}

void ElementTable::fitVisibleRows()
{
    fitRows(rowAt(0), 1);
}

// The column needs no care: it is the last section, and stretched.
void ElementTable::fitContents()
{
    if (!isVisible()) {
        updateGeometry(); // the hint is for opening only
        return;
    }
    rowHeader(this)->follow(std::min(lineHeight(), mostHeight / std::max(rows(), 1)));
    fitVisibleRows();
    {
        // For the width of new labels. What the column tells would have all painted again.
        const QSignalBlocker blocker(horizontalHeader());
        updateGeometries();
        horizontalHeader()->length(); // lays it out
    }
    executeDelayedItemsLayout(); // now, and not after a first paint
    verticalHeader()->viewport()->update();
}

void ElementTable::showLastRow()
{
    const QModelIndex last = model()->index(rows() - 1, 0);
    if (!last.isValid())
        return;
    fitRows(last.row(), -1);
    setCurrentIndex(last);
    scrollTo(last);
    // The rows that come into view with it may be higher than they were taken for.
    updateGeometries();
    scrollTo(last);
}

QSize ElementTable::sizeHint() const
{
    const int shown = std::min(rows(), mostRows);
    int height = std::max(fewestRows - shown, 0) * lineHeight();
    for (int row = 0; row < shown; ++row)
        height += contentHeight(row);
    const int width = verticalHeader()->sizeHint().width() +
                      verticalScrollBar()->sizeHint().width() +
                      textWidth * fontMetrics().averageCharWidth();
    return QSize(width, height) + QSize(2 * frameWidth(), 2 * frameWidth());
}

void ElementTable::makeRoom()
{
    QWidget* dialog = window();
    const QSize frame = dialog->frameGeometry().size() - dialog->size();
    const QSize available = screen()->availableGeometry().size() - frame;
    if (QLayout* layout = dialog->layout())
        dialog->resize(layout->totalSizeHint().boundedTo(available).expandedTo(dialog->size()));
}

void ElementTable::moveOn()
{
    const QModelIndex next = currentIndex().siblingAtRow(currentIndex().row() + 1);
    if (next.isValid())
        setCurrentIndex(next);
}

bool ElementTable::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event)
{
    if (!CellEditingView::edit(index, trigger, event))
        return false;
    if (indexWidget(index))
        m_editedRow = index.row();
    return true;
}

void ElementTable::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint)
{
    const bool isOpen = editor && editor == m_editor;
    CellEditingView::closeEditor(editor, hint);
    if (isOpen) {
        // The model does not tell of an edit.
        viewport()->update();
        fitVisibleRows();
    }
    if (hint == QAbstractItemDelegate::SubmitModelCache) // Enter
        moveOn();
}

void ElementTable::rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last)
{
    const bool isDropped = m_editor && m_editedRow >= first && m_editedRow <= last;
    QTableView::rowsAboutToBeRemoved(parent, first, last);
    if (isDropped)
        takeFocusFrom(m_editor);
}

void ElementTable::reset()
{
    const QPointer<QWidget> open = m_editor && !m_editor->isHidden() ? m_editor : nullptr;
    const qsizetype focused = open ? controlsOf(open).indexOf(open->focusWidget()) : -1;
    QTableView::reset(); // hides the editor, and has it deleted later
    m_editor = nullptr;
    if (open)
        reopen(open, focused);
}

void ElementTable::reopen(QWidget* old, qsizetype focused)
{
    const QModelIndex cell = model()->index(m_editedRow, 0);
    setCurrentIndex(cell);
    setFocus();
    if (cell.isValid())
        QTableView::edit(cell);
    if (m_editor && m_editor->metaObject() == old->metaObject()) {
        copyInput(controlsOf(old), controlsOf(m_editor));
        if (QWidget* control = controlsOf(m_editor).value(focused))
            control->setFocus();
        return;
    }
    if (m_editor)
        closeEditor(m_editor, QAbstractItemDelegate::RevertModelCache);
    takeFocusFrom(old);
    // A change of the active window hides tool tips, so it comes after that.
    QTimer::singleShot(100, this, [this] {
        QToolTip::showText(viewport()->mapToGlobal(QPoint()),
                           QCoreApplication::translate("ElementTable",
                                                       "The value was replaced while one of its "
                                                       "elements was edited. The edit was "
                                                       "dropped."),
                           viewport());
    });
}

void ElementTable::keyPressEvent(QKeyEvent* event)
{
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isEnter && !(event->modifiers() & Qt::ControlModifier) && state() != EditingState)
        moveOn();
    else
        QTableView::keyPressEvent(event);
}

// Beyond the first and the last element, Tab leaves the table.
bool ElementTable::focusNextPrevChild(bool next)
{
    const int row = currentIndex().row();
    const bool isAtEnd = next ? row + 1 >= rows() : row <= 0;
    // NOLINTNEXTLINE(bugprone-parent-virtual-call): not the views' own way, on which Tab stays
    return isAtEnd ? QAbstractScrollArea::focusNextPrevChild(next)
                   : QTableView::focusNextPrevChild(next);
}

QModelIndex ElementTable::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
{
    const int row = currentIndex().row();
    if ((action == MoveNext && row + 1 >= rows()) || (action == MovePrevious && row <= 0))
        return QModelIndex();
    return QTableView::moveCursor(action, modifiers);
}

void ElementTable::showEvent(QShowEvent* event)
{
    QTableView::showEvent(event);
    fitContents();
}

void ElementTable::resizeEvent(QResizeEvent* event)
{
    QTableView::resizeEvent(event);
    fitVisibleRows();
}

void ElementTable::scrollContentsBy(int dx, int dy)
{
    QTableView::scrollContentsBy(dx, dy);
    fitVisibleRows();
}

void ElementTable::changeEvent(QEvent* event)
{
    QTableView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        fitContents();
}

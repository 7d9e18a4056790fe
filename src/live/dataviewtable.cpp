#include "dataviewtable_p.h"

#include "base/retranslate_p.h"
#include "base/viewhint_p.h"
#include "nodes/valuedelegate_p.h"
#include "platform/types/uavariant.h"

#include <QtGui/QAccessible>
#include <QtGui/QClipboard>
#include <QtGui/QDrag>
#include <QtGui/QDropEvent>
#include <QtGui/QGlyphRun>
#include <QtGui/QGuiApplication>
#include <QtGui/QPainter>
#include <QtGui/QRawFont>
#include <QtWidgets/QHeaderView>

#include <algorithm>
#include <array>

namespace {

using Model = QvelDataViewModel;

constexpr int rowsAtOnce = 16; // painted

// As wide as this text.
struct ColumnWidth
{
    Model::Column column;
    const char* text;
};
constexpr ColumnWidth widths[] = {
    {Model::Name, "A name of common length"},
    {Model::NodeId, "nsu=urn:plant:boiler;s=Temperature"},
    {Model::Value, "-1234567.12345"},
    {Model::DataType, "LocalizedText"},
    {Model::SourceTimestamp, "20:28:38.888"},
    {Model::ServerTimestamp, "20:28:38.888"},
    {Model::Status, "BadAttributeIdInvalid OO"},
    {Model::WriteResult, "BadOutOfRange"},
};

bool isParameter(int column)
{
    return column == Model::SamplingInterval || column == Model::PublishingInterval ||
           column == Model::QueueSize;
}

// Numbers and times.
bool isPlain(int column)
{
    return column == Model::Value || column == Model::SourceTimestamp ||
           column == Model::ServerTimestamp ||
           (column >= Model::SamplingInterval && column != Model::WriteResult);
}

class Delegate : public ValueDelegate
{
public:
    explicit Delegate(DataViewTable* table) : ValueDelegate(table), m_table(table) {}

    // A parameter goes to all selected rows.
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override
    {
        const QList<int> rows = m_table->selectedRowNumbers();
        const int column = index.column();
        const auto parameter = [&index] { return index.data(Model::ValueRole).value<UaVariant>(); };
        const UaVariant before = parameter();
        ValueDelegate::setModelData(editor, model, index);
        if (isParameter(column) && rows.contains(index.row()) && parameter() != before)
            m_table->list()->setParameter(rows, Model::Column(column), parameter().toDouble());
    }

protected:
    // Ids differ at their end.
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
    {
        ValueDelegate::initStyleOption(option, index);
        if (index.column() == Model::NodeId)
            option->textElideMode = Qt::ElideMiddle;
    }

private:
    DataViewTable* const m_table;
};

} // namespace

DataViewTable::DataViewTable(QvelDataViewModel* model, QWidget* parent)
    : QTableView(parent), m_list(model), m_delegate(new Delegate(this))
{
    model->setParent(this);
    setModel(model);
    setItemDelegate(m_delegate);
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(DoubleClicked | EditKeyPressed);
    setDragDropMode(DragDrop);
    setDragDropOverwriteMode(false);
    setDefaultDropAction(Qt::CopyAction);
    setWordWrap(false);
    setTabKeyNavigation(false);
    setHorizontalScrollMode(ScrollPerPixel);
    setShowGrid(false);
    setContextMenuPolicy(Qt::CustomContextMenu);
    verticalHeader()->hide();
    verticalHeader()->setMinimumSectionSize(1);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    horizontalHeader()->setSectionsMovable(true);
    horizontalHeader()->setHighlightSections(false);
    // What changes all the time stands together: one rectangle is painted faster than two. Behind
    // it comes what became of an edit, before what is looked at more seldom.
    horizontalHeader()->moveSection(Model::DataType, Model::Status);
    horizontalHeader()->moveSection(Model::WriteResult, Model::ServerTimestamp);
    horizontalHeader()->setContextMenuPolicy(Qt::CustomContextMenu);
    retranslated(this, [this] {
        setViewHint(this, tr("Drop variables here, paste NodeIds, or type one above."));
    });
    for (int column = 0; column < Model::ColumnCount; ++column)
        setColumnWidth(column, horizontalHeader()->sectionSizeHint(column));
    const int margins = 2 * style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) + 4;
    for (const auto& [column, text] : widths)
        setColumnWidth(column,
                       std::max(columnWidth(column),
                                fontMetrics().horizontalAdvance(QLatin1String(text)) + margins));
}

QList<int> DataViewTable::selectedRowNumbers() const
{
    QList<int> rows;
    const QModelIndexList selected = selectionModel()->selectedRows();
    for (const QModelIndex& index : selected)
        rows.append(index.row());
    return rows;
}

void DataViewTable::copySelected() const
{
    if (const QList<int> rows = selectedRowNumbers(); !rows.isEmpty())
        QGuiApplication::clipboard()->setMimeData(qvelNodeMimeData(m_list->nodeLinks(rows)));
}

void DataViewTable::paste()
{
    const QList<QvelNodeLink> links = qvelNodeLinks(QGuiApplication::clipboard()->mimeData());
    if (links.isEmpty())
        Q_EMIT messageChanged(tr("The clipboard holds no NodeIds."));
    else
        m_list->addNodes(links);
}

void DataViewTable::removeSelected()
{
    QList<int> rows = selectedRowNumbers();
    std::sort(rows.begin(), rows.end());
    while (!rows.isEmpty()) {
        const int last = rows.takeLast();
        int first = last;
        while (!rows.isEmpty() && rows.last() == first - 1)
            first = rows.takeLast();
        m_list->removeRows(first, last - first + 1);
    }
}

// Up or down by one row.
void DataViewTable::moveSelected(int step)
{
    const QList<int> rows = selectedRowNumbers();
    if (rows.isEmpty())
        return;
    const auto [first, last] = std::minmax_element(rows.begin(), rows.end());
    const int before = step < 0 ? *first - 1 : *last + 2;
    if (before >= 0 && before <= m_list->rowCount())
        m_list->moveRowsTo(rows, before);
    scrollTo(currentIndex());
}

static bool isOwnKey(const QKeyEvent* event)
{
    return event->matches(QKeySequence::Copy) || event->matches(QKeySequence::Paste) ||
           event->matches(QKeySequence::Delete);
}

// Not the host's shortcuts while the table has the focus.
bool DataViewTable::event(QEvent* event)
{
    if (event->type() == QEvent::Polish)
        findBackground();
    if (event->type() == QEvent::ShortcutOverride && isOwnKey(static_cast<QKeyEvent*>(event))) {
        event->accept();
        return true;
    }
    return QTableView::event(event);
}

// By the events after which the view itself has its cell painted as one under the mouse.
bool DataViewTable::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::HoverEnter || event->type() == QEvent::HoverMove)
        m_hovered = indexAt(static_cast<QHoverEvent*>(event)->position().toPoint());
    else if (event->type() == QEvent::HoverLeave)
        m_hovered = QModelIndex();
    return QTableView::viewportEvent(event);
}

bool DataViewTable::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event)
{
    const bool isOpen = QTableView::edit(index, trigger, event);
    if (isOpen)
        Q_EMIT messageChanged({}); // what was said of an earlier one
    else
        tellRefusal(index, trigger);
    return isOpen;
}

// Names only: what is typed at a value that cannot be edited is not meant for another row.
void DataViewTable::keyboardSearch(const QString& search)
{
    if (currentIndex().column() == Model::Name)
        QTableView::keyboardSearch(search);
}

void DataViewTable::keyPressEvent(QKeyEvent* event)
{
    const bool isArrow = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down;
    if (event->matches(QKeySequence::Copy))
        copySelected();
    else if (event->matches(QKeySequence::Paste))
        paste();
    else if (event->matches(QKeySequence::Delete))
        removeSelected();
    else if (isArrow && event->modifiers() == Qt::AltModifier)
        moveSelected(event->key() == Qt::Key_Up ? -1 : 1);
    else
        QTableView::keyPressEvent(event);
}

// Whether all of the viewport is painted here: its background, too, where that is one colour.
void DataViewTable::findBackground()
{
    const QBrush& brush = viewport()->palette().brush(viewport()->backgroundRole());
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent, viewport()->autoFillBackground() &&
                                                          brush.style() == Qt::SolidPattern &&
                                                          brush.isOpaque());
}

void DataViewTable::changeEvent(QEvent* event)
{
    QTableView::changeEvent(event);
    if (event->type() == QEvent::StyleChange || event->type() == QEvent::PaletteChange)
        findBackground();
}

// Some rows after the other, each with its background: a thousand of them at once would be out of
// the processor's cache before their texts are painted, which then takes twice the time.
void DataViewTable::paintEvent(QPaintEvent* event)
{
    const QRect all = event->rect();
    const int height = rowsAtOnce * verticalHeader()->defaultSectionSize();
    const bool isOpaque = viewport()->testAttribute(Qt::WA_OpaquePaintEvent);
    for (int top = all.top(), end = 0; top <= all.bottom(); top = end) {
        const int last = rowAt(top + height);
        end = last < 0 ? all.bottom() + 1 : rowViewportPosition(last) + rowHeight(last);
        QRegion part = event->region() & QRect(all.left(), top, all.width(), end - top);
        QPainter painter(viewport());
        if (isOpaque) {
            for (const QRect& rect : part)
                painter.fillRect(rect, viewport()->palette().brush(viewport()->backgroundRole()));
        }
        part -= paintTexts(&painter, part);
        painter.end();
        if (!part.isEmpty()) {
            QPaintEvent partEvent(part);
            QTableView::paintEvent(&partEvent);
        }
    }
    paintViewHint(this);
}

// Whether the cells are what they seem to be without the host's delegates, grid or style sheet.
bool DataViewTable::hasPlainCells() const
{
    return isLeftToRight() && !showGrid() && !alternatingRowColors() && state() != DraggingState &&
           itemDelegate() == m_delegate && textElideMode() == Qt::ElideRight &&
           !style()->inherits("QStyleSheetStyle");
}

// Most of what changes are numbers and times, thousands of them a second: these are painted without
// the detour over delegate and style. Returns where; the rest is the view's.
QRegion DataViewTable::paintTexts(QPainter* painter, const QRegion& region)
{
    const QRect all = region.boundingRect();
    const int first = rowAt(all.top());
    if (first < 0 || !hasPlainCells())
        return {};
    const int end = rowAt(all.bottom()) < 0 ? m_list->rowCount() : rowAt(all.bottom()) + 1;

    struct Column
    {
        int index, left, width;
        bool isRight;
    };
    QVarLengthArray<Column, Model::ColumnCount> columns;
    for (int i = 0; i < Model::ColumnCount; ++i) {
        const int left = columnViewportPosition(i), width = columnWidth(i);
        if (!isPlain(i) || isColumnHidden(i) || itemDelegateForColumn(i) ||
            !region.intersects(QRect(left, all.top(), width, all.height())))
            continue;
        const int alignment = m_list->index(first, i).data(Qt::TextAlignmentRole).toInt();
        columns.append({i, left, width, (alignment & Qt::AlignRight) != 0});
    }

    const QVariant brush = m_list->index(first, Model::Value).data(Qt::ForegroundRole);
    painter->setPen(brush.isValid() ? brush.value<QBrush>().color()
                                    : palette().color(QPalette::Text));
    m_texts.setFont(font());
    const int margin = style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, this) + 1;
    const QItemSelection selection = selectionModel()->selection();
    const int current = hasFocus() ? currentIndex().row() : -1;
    const auto isSpecial = [&](int row) {
        return row == current || row == m_hovered.row() || itemDelegateForRow(row) ||
               std::any_of(selection.begin(), selection.end(), [row](const auto& rows) {
                   return rows.top() <= row && row <= rows.bottom();
               });
    };

    QRegion others;
    for (int row = first; row < end; ++row) {
        const int top = rowViewportPosition(row), height = rowHeight(row);
        if (height == 0) // hidden
            continue;
        if (isSpecial(row)) {
            others += QRect(all.left(), top, all.width(), height);
            continue;
        }
        for (const Column& column : columns) {
            const QRect room(column.left + margin, top, column.width - 2 * margin, height);
            const QString text = m_list->index(row, column.index).data().toString();
            if (!m_texts.add(text, room, column.isRight))
                others += QRect(column.left, top, column.width, height);
        }
    }
    m_texts.paint(painter);

    const int bottom = rowViewportPosition(end - 1) + rowHeight(end - 1);
    QRegion painted;
    for (const Column& column : columns)
        painted += QRect(column.left, all.top(), column.width, bottom - all.top());
    return painted - others;
}

void DataViewTable::dropEvent(QDropEvent* event)
{
    // Before the row in whose upper half it is, else behind it.
    const QPoint position = event->position().toPoint();
    const QModelIndex at = indexAt(position);
    const int before = !at.isValid()
                           ? m_list->rowCount()
                           : at.row() + (position.y() > visualRect(at).center().y() ? 1 : 0);
    if (event->source() == this)
        m_list->moveRowsTo(selectedRowNumbers(), before);
    else if (!m_list->dropMimeData(event->mimeData(), Qt::CopyAction, before, 0, {}))
        Q_EMIT messageChanged(tr("Nothing was added."));
    event->setDropAction(Qt::CopyAction);
    event->accept();
    stopAutoScroll();
    setState(NoState);
    viewport()->update();
}

// Rows that are dropped elsewhere stay.
void DataViewTable::startDrag(Qt::DropActions /*actions*/)
{
    QMimeData* data = m_list->mimeData(selectionModel()->selectedRows());
    auto* drag = new QDrag(this);
    drag->setMimeData(data);
    drag->exec(Qt::CopyAction);
}

// Only the cells that changed are painted, rather than all that are seen.
void DataViewTable::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                                const QList<int>& roles)
{
    if (topLeft == bottomRight || QAccessible::isActive())
        return QTableView::dataChanged(topLeft, bottomRight, roles);
    const int top = rowViewportPosition(topLeft.row());
    const int bottom = rowViewportPosition(bottomRight.row()) + rowHeight(bottomRight.row());
    QRegion region;
    for (int column = topLeft.column(); column <= bottomRight.column(); ++column) {
        if (!isColumnHidden(column))
            region += QRect(columnViewportPosition(column), top, columnWidth(column), bottom - top);
    }
    viewport()->update(region & viewport()->rect());
}

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
    {Model::Value, "-1234567.123456789"},
    {Model::DataType, "LocalizedText"},
    {Model::SourceTimestamp, "20:28:38.888"},
    {Model::ServerTimestamp, "20:28:38.888"},
    {Model::Status, "BadAttributeIdInvalid OO"},
    {Model::WriteResult, "BadUserAccessDenied OO"},
};

bool isParameter(int column)
{
    return column == Model::SamplingInterval || column == Model::PublishingInterval ||
           column == Model::QueueSize;
}

// Paints ASCII texts, which need no layout, by the glyphs of their font; those that are too long
// end in an ellipsis.
class PlainText
{
public:
    // False where it is no such text: then nothing has been painted.
    bool paint(QPainter* painter, const QStyleOptionViewItem& option, const QRect& room,
               bool isRight, const QString& text)
    {
        if (!m_isSet || m_font != option.font)
            setFont(option.font);
        if (!m_isComplete)
            return false;
        std::array<quint32, longest> glyphs;
        std::array<QPointF, longest> positions;
        double width = 0;
        size_t length = 0, fitting = 0; // the latter with an ellipsis
        for (; length < size_t(text.size()) && length < longest - 1; ++length) {
            const int c = text[qsizetype(length)].unicode() - first;
            if (c < 0 || c >= ellipsis)
                return false;
            if (width + m_advances[ellipsis] <= room.width())
                fitting = length;
            glyphs[length] = m_glyphs[size_t(c)];
            positions[length] = QPointF(width, 0);
            width += m_advances[size_t(c)];
            if (width > room.width())
                break;
        }
        if (length < size_t(text.size())) {
            length = fitting + 1;
            glyphs[fitting] = m_glyphs[ellipsis];
            isRight = false;
        }
        m_run.setRawData(glyphs.data(), positions.data(), int(length));
        const int top = room.top() + (room.height() - option.fontMetrics.height()) / 2;
        painter->drawGlyphRun({isRight ? room.right() + 1 - width : double(room.left()),
                               double(top + option.fontMetrics.ascent())},
                              m_run);
        return true;
    }

private:
    static constexpr size_t longest = 256;
    static constexpr int first = 0x20;
    static constexpr int ellipsis = 0x7f - first; // in the tables, behind the others

    void setFont(const QFont& font)
    {
        m_isSet = true;
        m_font = font;
        const QRawFont raw = QRawFont::fromFont(font);
        QString characters;
        for (int c = 0; c < ellipsis; ++c)
            characters += QChar(first + c);
        characters += QChar(0x2026);
        const QList<quint32> glyphs = raw.glyphIndexesForString(characters);
        const QList<QPointF> advances = raw.advancesForGlyphIndexes(glyphs);
        m_isComplete = glyphs.size() == ellipsis + 1 && advances.size() == glyphs.size() &&
                       !glyphs.contains(0) && !font.underline() && !font.strikeOut() &&
                       !font.overline() && font.letterSpacing() == 0 && font.wordSpacing() == 0;
        for (qsizetype i = 0; m_isComplete && i < glyphs.size(); ++i) {
            m_glyphs[size_t(i)] = glyphs[i];
            m_advances[size_t(i)] = advances[i].x();
        }
        m_run.setRawFont(raw);
    }

    bool m_isSet = false;
    bool m_isComplete = false;
    QFont m_font;
    QGlyphRun m_run;
    std::array<quint32, ellipsis + 1> m_glyphs = {};
    std::array<double, ellipsis + 1> m_advances = {};
};

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

    // Most cells are bare text, thousands of them a second: these are painted without the detour
    // over the style.
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override
    {
        constexpr QStyle::State special =
            QStyle::State_Selected | QStyle::State_HasFocus | QStyle::State_MouseOver;
        const int column = index.column();
        const bool isPlain =
            column != Model::Status && column != Model::WriteResult && column != Model::NodeId;
        if ((option.state & special) || !isPlain || option.direction == Qt::RightToLeft)
            return ValueDelegate::paint(painter, option, index);
        const QString text = index.data(Qt::DisplayRole).toString();
        if (text.isEmpty())
            return;
        const QVariant brush = index.data(Qt::ForegroundRole);
        const QPalette::ColorGroup group =
            !(option.state & QStyle::State_Enabled) ? QPalette::Disabled
            : option.state & QStyle::State_Active   ? QPalette::Active
                                                    : QPalette::Inactive;
        painter->setPen(brush.isValid() ? brush.value<QBrush>().color()
                                        : option.palette.color(group, QPalette::Text));
        const int margin =
            m_table->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, m_table) + 1;
        const QRect room = option.rect.adjusted(margin, 0, -margin, 0);
        const int alignment = index.data(Qt::TextAlignmentRole).toInt();
        if (m_text.paint(painter, option, room, alignment & Qt::AlignRight, text))
            return;
        painter->drawText(room, alignment | Qt::TextSingleLine,
                          option.fontMetrics.elidedText(text, Qt::ElideRight, room.width()));
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
    mutable PlainText m_text;
};

} // namespace

DataViewTable::DataViewTable(QvelDataViewModel* model, QWidget* parent)
    : QTableView(parent), m_list(model)
{
    model->setParent(this);
    setModel(model);
    setItemDelegate(new Delegate(this));
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
    // What changes all the time stands together: one rectangle is painted faster than two.
    horizontalHeader()->moveSection(Model::DataType, Model::Value);
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

bool DataViewTable::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event)
{
    const bool isOpen = QTableView::edit(index, trigger, event);
    if (isOpen)
        Q_EMIT messageChanged({}); // what was said of an earlier one
    else
        tellRefusal(index, trigger);
    return isOpen;
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
    for (int top = all.top(), end = 0; top <= all.bottom(); top = end) {
        const int last = rowAt(top + height);
        end = last < 0 ? all.bottom() + 1 : rowViewportPosition(last) + rowHeight(last);
        const QRegion part = event->region() & QRect(all.left(), top, all.width(), end - top);
        if (viewport()->testAttribute(Qt::WA_OpaquePaintEvent)) {
            QPainter painter(viewport());
            for (const QRect& rect : part)
                painter.fillRect(rect, viewport()->palette().brush(viewport()->backgroundRole()));
        }
        QPaintEvent partEvent(part);
        QTableView::paintEvent(&partEvent);
    }
    paintViewHint(this);
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

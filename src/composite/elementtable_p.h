#pragma once

#include "composite/celleditingview_p.h"

#include <QtWidgets/QTableView>

/// The table of an array or matrix: one column of elements, edited as in a spreadsheet.
///
/// It copes with any number of rows. While it is hidden it does not follow the model, and the
/// heights of rows are measured as they come into view.
class ElementTable : public CellEditingView<QTableView>
{
public:
    explicit ElementTable(QWidget* parent = nullptr);

    /// Whether no text is ever broken into lines, so that one measurement serves all rows.
    void setUnbroken(bool unbroken) { m_isUnbroken = unbroken; }
    /// Gives every row that can be seen the height of its contents; once the table is shown, if it
    /// is not.
    void fitContents();
    /// Whether the heights of so many rows add up to no more than the table can hold.
    bool hasRoomFor(std::size_t rows) const;
    /// Lets the window grow into the room that the screen has for the rows.
    void makeRoom();
    /// Makes the last row current and visible.
    void showLastRow();

    /// Room for the rows, up to a bound.
    QSize sizeHint() const override;

    /// An open cell stays open with what was typed if its row still takes the same editor, else the
    /// user is told that it was dropped.
    void reset() override;

protected:
    void rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) override;
    using CellEditingView::edit;
    bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void changeEvent(QEvent* event) override;

private:
    int rows() const { return model() ? model()->rowCount() : 0; }
    int lineHeight() const;
    int contentHeight(int row) const;
    void fitRows(int row, int step);
    void fitVisibleRows();
    void moveOn();
    void reopen(QWidget* old, qsizetype focused);

    int m_editedRow = -1;
    bool m_isUnbroken = false;
    bool m_isFitting = false;
};

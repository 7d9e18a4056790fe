#pragma once

#include "live/dataviewmodel.h"
#include "live/plaintexts_p.h"

#include <QtWidgets/QTableView>

/// The table of one list: edits in place, also several rows at once, takes nodes that are dropped
/// or pasted, and lets rows be moved by drag or by Alt and the arrow keys.
class DataViewTable : public QTableView
{
    Q_OBJECT
public:
    /// The model becomes the table's child.
    explicit DataViewTable(QvelDataViewModel* model, QWidget* parent = nullptr);

    QvelDataViewModel* list() const { return m_list; }
    void keyboardSearch(const QString& search) override;
    QList<int> selectedRowNumbers() const;

    void copySelected() const;
    void paste();
    void removeSelected();

Q_SIGNALS:
    void messageChanged(const QString& text);

protected:
    bool event(QEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void startDrag(Qt::DropActions actions) override;
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QList<int>& roles) override;

private:
    void findBackground();
    bool hasPlainCells() const;
    QRegion paintTexts(QPainter* painter, const QRegion& region);
    void moveSelected(int step);

    QvelDataViewModel* const m_list;
    QAbstractItemDelegate* const m_delegate;
    PlainTexts m_texts;
    QPersistentModelIndex m_hovered;
};

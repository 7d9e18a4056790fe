#pragma once

#include "composite/celleditingview_p.h"
#include "composite/modeldelegate.h"

#include <QtWidgets/QTreeView>

/// The delegate of cells that a ValueCell stands behind. It writes only changes; an edit that could
/// not be written is written again as it is. An array that is read-only opens to be looked at, and
/// a value without a type asks for the type, too.
class ValueDelegate : public QvelModelDelegate
{
public:
    explicit ValueDelegate(QObject* parent = nullptr);

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
};

/// After an edit that the view refused.
void tellRefusal(const QModelIndex& index, QAbstractItemView::EditTrigger trigger);

/// A list of rows with one column of such cells, in which a row is edited, wherever it is clicked.
class ValueList : public CellEditingView<QTreeView>
{
public:
    explicit ValueList(int valueColumn, QWidget* parent = nullptr);

    using CellEditingView::edit;
    /// Takes what is typed in an open cell, as if it were left.
    void finishEdit();

protected:
    bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;

private:
    const int m_valueColumn;
};

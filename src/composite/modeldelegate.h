#pragma once

#include "../kestrelexport.h"

#include <QtWidgets/QStyledItemDelegate>

/// Opens, in a cell of a table of OPC UA values, the editor that fits the cell's value: a check
/// box, a line edit, an inline editor, or a dialog at the cell.
///
/// It works with any model that offers these roles:
/// - `Qt::UserRole`: the value as a UaVariant; a scalar, or a nested array or matrix;
/// - `Qt::UserRole + 1`: a QvelEnumInfo, if the numbers of the column are named;
/// - `Qt::EditRole`: the text of Null, numbers, String and DateTime.
/// Texts and enumerations (as a number of type `long`) are written to `Qt::EditRole`, all other
/// values as a UaVariant to `Qt::UserRole`; invalid input and a dialog that was not accepted write
/// nothing. An editor takes its value when it is created, and later changes do not reach it.
/// Of a text, the first lines are shown; one of more than 200,000 characters is not edited, but
/// written as it was. User-interface thread only.
class KESTREL_EXPORT QvelModelDelegate : public QStyledItemDelegate
{
public:
    explicit QvelModelDelegate(QObject* parent = nullptr);
    ~QvelModelDelegate() override;

    /// Whether an editor that still holds what it was filled with writes nothing, and one of flags
    /// changes no others than the user did: a value or a bit without a name stays, and so does
    /// what is beyond 32 bits, which is then written as a 64-bit number. Off by default: every
    /// editor writes what it holds. It counts for the editors that are created from then on.
    void setWritesOnlyChanges(bool onlyChanges) { m_writesOnlyChanges = onlyChanges; }
    bool writesOnlyChanges() const { return m_writesOnlyChanges; }

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model,
                      const QModelIndex& index) const override;
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;
    QString displayText(const QVariant& value, const QLocale& locale) const override;

protected:
    /// A text reads in its own direction, also in a window of the other one: "-1", not "1-".
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool m_writesOnlyChanges = false;
};

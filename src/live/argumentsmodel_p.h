#pragma once

#include "base/words_p.h"
#include "nodes/structures.h"
#include "nodes/valuecell_p.h"

#include <QtCore/QAbstractTableModel>

#include <vector>

/// The arguments of a method, a row each: what goes in is edited, what came out is looked at and
/// has no status.
class ArgumentsModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { NameColumn, TypeColumn, ValueColumn, StatusColumn, ColumnCount };
    enum Direction { Input, Output };

    ArgumentsModel(Direction direction, QObject* parent);

    /// Replaces all rows.
    void setArguments(const QList<QvelArgument>& arguments);
    /// What a row's DataType is, once that is known. An empty value becomes one of the type.
    void setDataType(int row, const DataTypeInfo& info);

    QList<UaVariant> values() const;
    /// Values beyond the arguments get rows of their own; what is missing becomes empty.
    void setValues(const QList<UaVariant>& values);
    /// What the server says about each; none where all are well.
    void setStatuses(const QList<UaStatusCode>& statuses);
    /// Whether something was typed that is no value of its argument.
    bool hasInvalidInput() const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    struct Row
    {
        QvelArgument argument;
        ValueCell cell;
        Words status;
        bool isInvalid = false;
    };
    void changed(int first, int last);

    const Direction m_direction;
    std::vector<Row> m_rows;
};

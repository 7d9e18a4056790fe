#include "argumentsmodel_p.h"

#include "base/retranslate_p.h"
#include "base/showntext_p.h"
#include "nodes/statustext_p.h"
#include "platform/stack/opcuatypetable_p.h"

#include <algorithm>

ArgumentsModel::ArgumentsModel(Direction direction, QObject* parent)
    : QAbstractTableModel(parent), m_direction(direction)
{
    whenLanguageChanges(this, [this] {
        changed(0, rowCount() - 1);
        Q_EMIT headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
    });
}

void ArgumentsModel::changed(int first, int last)
{
    if (last >= first)
        Q_EMIT dataChanged(index(first, 0), index(last, columnCount() - 1));
}

void ArgumentsModel::setArguments(const QList<QvelArgument>& arguments)
{
    beginResetModel();
    m_rows.clear();
    for (const QvelArgument& argument : arguments) {
        Row row;
        row.argument = argument;
        m_rows.push_back(row);
    }
    endResetModel();
}

void ArgumentsModel::setDataType(int row, const DataTypeInfo& info)
{
    if (row < 0 || row >= rowCount())
        return;
    Row& known = m_rows[std::size_t(row)];
    const ValueType type(info, known.argument.valueRank, known.argument.arrayDimensions);
    known.cell.setType(type);
    if (known.cell.value().isEmpty() && m_direction == Input)
        known.cell.setValue(type.emptyValue());
    changed(row, row);
}

QList<UaVariant> ArgumentsModel::values() const
{
    QList<UaVariant> values;
    for (const Row& row : m_rows)
        values.append(row.cell.value());
    return values;
}

void ArgumentsModel::setValues(const QList<UaVariant>& values)
{
    const int missing = int(values.size()) - rowCount();
    if (missing > 0 && m_direction == Output) {
        beginInsertRows({}, rowCount(), int(values.size()) - 1);
        m_rows.resize(std::size_t(values.size()));
        endInsertRows();
    }
    for (int i = 0; i < rowCount(); ++i) {
        Row& row = m_rows[std::size_t(i)];
        row.cell.setValue(values.value(i));
        row.cell.clearAttempt();
        row.isInvalid = false;
        row.status = nullptr;
    }
    changed(0, rowCount() - 1);
}

void ArgumentsModel::setStatuses(const QList<UaStatusCode>& statuses)
{
    for (int i = 0; i < rowCount(); ++i) {
        Row& row = m_rows[std::size_t(i)];
        if (row.isInvalid) // it was typed since
            continue;
        row.status = nullptr;
        if (i < statuses.size())
            row.status = [code = statuses[i]] { return statusInWords(code); };
    }
    changed(0, rowCount() - 1);
}

bool ArgumentsModel::hasInvalidInput() const
{
    return std::any_of(m_rows.begin(), m_rows.end(), [](const Row& row) { return row.isInvalid; });
}

int ArgumentsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int ArgumentsModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_direction == Output ? int(StatusColumn) : int(ColumnCount);
}

QVariant ArgumentsModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return QVariant();
    const Row& row = m_rows[std::size_t(index.row())];
    const bool isReadOnly = m_direction == Output || !row.cell.isEditable();
    QString text;
    switch (index.column()) {
    case NameColumn:
        text = shownText(row.argument.name.toQString());
        if (text.isEmpty())
            text = tr("Argument %1").arg(index.row() + 1);
        break;
    case TypeColumn:
        text = row.cell.type().text();
        if (const OpcUaTypeInfo* type = opcUaTypeInfo(OpcUa_Byte(row.cell.value().type()));
            text.isEmpty() && type)
            text = QString::fromLatin1(type->name);
        if (const QString other = row.cell.otherType(); !other.isEmpty())
            text = tr("%1, not %2").arg(other, text);
        break;
    case StatusColumn:
        text = said(row.status);
        break;
    default:
        if (role == ValueReadOnlyRole)
            return isReadOnly;
        if (role == ElementValueRole && isReadOnly)
            return QVariant::fromValue(row.cell.value());
        if (role != Qt::ToolTipRole && role != Qt::DisplayRole)
            return row.cell.data(role);
        text = row.isInvalid ? row.cell.attemptText() : row.cell.data(Qt::DisplayRole).toString();
    }
    if (role == Qt::DisplayRole)
        return text;
    if (role != Qt::ToolTipRole)
        return QVariant();
    const QString description = shownText(row.argument.description.text().toQString());
    if (index.column() != StatusColumn && !description.isEmpty())
        text += QLatin1Char('\n') + description;
    return plainToolTip(text);
}

bool ArgumentsModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || index.column() != ValueColumn ||
        (role != Qt::EditRole && role != ElementValueRole))
        return false;
    Row& row = m_rows[std::size_t(index.row())];
    if (m_direction == Output || !row.cell.isEditable())
        return false;
    UaVariant taken;
    const UaStatusCode status = row.cell.take(value, role, &taken);
    row.isInvalid = status.isBad();
    row.status = nullptr;
    if (row.isInvalid)
        row.status = [status] { return tr("Not taken. %1").arg(statusInWords(status)); };
    if (!row.isInvalid) {
        row.cell.setValue(taken);
        row.cell.clearAttempt();
    }
    changed(index.row(), index.row());
    return !row.isInvalid;
}

QVariant ArgumentsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 ||
        section >= columnCount())
        return QAbstractTableModel::headerData(section, orientation, role);
    const QString titles[] = {tr("Argument"), tr("Data Type"), tr("Value"), tr("Status")};
    return titles[section];
}

Qt::ItemFlags ArgumentsModel::flags(const QModelIndex& index) const
{
    Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    if (!index.isValid() || index.column() != ValueColumn)
        return flags;
    const ValueCell& cell = m_rows[std::size_t(index.row())].cell;
    const bool mayEdit = m_direction == Input && cell.isEditable();
    flags.setFlag(Qt::ItemIsEditable, mayEdit || cell.isArray());
    return flags;
}

#include "elementmodel.h"

#include "composite/elementstore_p.h"

QvelElementModel::QvelElementModel(UaVariant* value, bool readOnly, QObject* parent)
    : QAbstractTableModel(parent), d(new ElementStore(value, readOnly))
{
}

QvelElementModel::~QvelElementModel() = default;

int QvelElementModel::columnCount(const QModelIndex& /*parent*/) const
{
    return 1;
}

QVariant QvelElementModel::data(const QModelIndex& index, int role) const
{
    return d->data(index, role);
}

bool QvelElementModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    return d->setData(index, value, role);
}

Qt::ItemFlags QvelElementModel::flags(const QModelIndex& index) const
{
    return d->flags(index, rowCount());
}

void QvelElementModel::setEnumInfo(const QvelEnumInfo& info)
{
    d->setEnumInfo(info);
}

void QvelElementModel::setReadOnly(bool readOnly)
{
    d->setReadOnly(readOnly);
}

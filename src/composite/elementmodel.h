#pragma once

#include "../platform/types/uavariant.h"

#include <QtCore/QAbstractTableModel>

#include <memory>

class ElementStore;
class QvelEnumInfo;

/// What the models of arrays and matrices have in common: the elements as one column, edited in
/// place. User-interface thread only.
///
/// An edit emits no dataChanged(): the value is taken from the dialog when it is accepted. A text
/// that equals the text of an element leaves it as it is, with all that its text does not tell.
class KESTREL_EXPORT QvelElementModel : public QAbstractTableModel
{
public:
    ~QvelElementModel() override;

    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    void setEnumInfo(const QvelEnumInfo& info);
    void setReadOnly(bool readOnly);

protected:
    /// `value` is not owned and must outlive the model. It is detached from its copies before it
    /// is changed. Whoever replaces it calls the model's refresh().
    QvelElementModel(UaVariant* value, bool readOnly, QObject* parent);

    const std::unique_ptr<ElementStore> d;
};

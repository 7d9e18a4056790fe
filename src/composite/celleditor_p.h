#pragma once

#include "base/enuminfo.h"
#include "composite/elementstore_p.h"
#include "composite/typeeditors_p.h"

#include <QtWidgets/QWidget>

/// What there is to edit in a cell of a table.
struct Cell
{
    explicit Cell(const QModelIndex& cell)
        : index(cell), value(cell.data(ElementValueRole).value<UaVariant>()),
          enumInfo(cell.data(ElementEnumInfoRole).value<QvelEnumInfo>())
    {
    }

    const QModelIndex index;
    const UaVariant value;
    const QvelEnumInfo enumInfo;
};

/// As a cell's value travels in a model, if it is valid.
template <class Editor>
QVariant editedValue(const QWidget* widget)
{
    const auto* editor = qobject_cast<const Editor*>(widget);
    bool ok = false;
    const UaVariant value = editor ? editor->value(&ok) : UaVariant();
    return ok ? QVariant::fromValue(value) : QVariant();
}

/// Whether an editor that a delegate made, one that writes only changes, holds what it was filled
/// with.
bool isUnchanged(const QWidget* editor, const QModelIndex& index);

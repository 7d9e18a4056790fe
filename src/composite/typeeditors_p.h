#pragma once

#include "platform/stack/opcuatypes.h"

#include <QtCore/QVariant>

#include <cstddef>
#include <functional>

class QWidget;
class UaVariant;
struct Cell;

/// \file
/// How the built-in types are edited: one line of a table for each.

/// A way to edit a value of its own. Null functions: it is shown, but there is nothing to edit.
struct ValueEditor
{
    QWidget* (*create)() = nullptr;
    void (*watch)(QWidget* widget, QObject* context,
                  const std::function<void()>& changed) = nullptr;
    UaVariant (*value)(const QWidget* widget, bool* ok) = nullptr;
    void (*setValue)(QWidget* widget, const UaVariant& value) = nullptr;
};

/// A way to edit a cell of a table: makes and fills the editor, and reads what is to be written to
/// `role`, an invalid QVariant for nothing.
struct CellEditor
{
    QWidget* (*create)(QWidget* parent, const Cell& cell) = nullptr;
    QVariant (*read)(const QWidget* editor) = nullptr;
    int role = Qt::EditRole;
};

struct TypeEditor
{
    OpcUa_BuiltInType type;
    const char* name; ///< to be translated in the context QvelWidgetVariant; null if not offered
    ValueEditor value;
    CellEditor cell;
    bool takesText; ///< an element is written as text, else as a whole value
};

/// The entry of a type, or that of Null for a number that is no type.
const TypeEditor& typeEditor(int type);

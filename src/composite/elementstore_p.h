#pragma once

#include "base/enuminfo.h"
#include "platform/types/uavariant.h"

#include <QtCore/QModelIndex>
#include <QtCore/QVariant>

#include <vector>

/// The roles in which a model of elements offers more than text.
enum ElementRole {
    ElementValueRole = Qt::UserRole,       ///< the element as a UaVariant
    ElementEnumInfoRole = Qt::UserRole + 1 ///< the column's QvelEnumInfo
};

/// False for the types whose arrays are shown but not changed: ExtensionObject and after.
bool isEditableType(OpcUa_BuiltInType type);

/// True for the types whose text has nowhere to break into lines.
inline bool isUnbrokenText(OpcUa_BuiltInType type)
{
    return type <= OpcUaType_Double || type == OpcUaType_DateTime || type == OpcUaType_StatusCode;
}

/// A scalar as enumeration metadata reads it: as a 32-bit integer, widened if it is narrower.
int enumNumber(const UaVariant& scalar);

/// A scalar of a type out of what a cell's editor wrote as text: a text, or, where numbers are
/// named, a number of type `long`, of which an unsigned type takes the bits. Good, or what
/// UaVariant::changeType() tells.
OpcUa_StatusCode scalarOfText(const QVariant& edited, OpcUa_BuiltInType type, bool isNamed,
                              UaVariant* scalar);

/// The elements of an array or a matrix, which a table model shows and edits in place. The variant
/// belongs to someone else and may be replaced at any time.
class ElementStore
{
public:
    ElementStore(UaVariant* value, bool readOnly);

    UaVariant& value() { return *m_value; }
    const UaVariant& value() const { return *m_value; }
    bool isArray() const { return m_value->arrayType() == OpcUa_VariantArrayType_Array; }
    bool isMatrix() const { return m_value->arrayType() == OpcUa_VariantArrayType_Matrix; }
    bool isEditable() const { return isEditableType(m_value->type()); }
    void setReadOnly(bool readOnly) { m_readOnly = readOnly; }
    void setEnumInfo(const QvelEnumInfo& info) { m_enumInfo = info; }

    /// What a model answers for one of its cells; an invalid QVariant, or false, for an element
    /// that no storage backs.
    QVariant data(const QModelIndex& index, int role) const;
    bool setData(const QModelIndex& index, const QVariant& value, int role);
    /// Each does all of it or nothing; false when there is no memory.
    bool resize(std::size_t count);
    bool reshape(const std::vector<OpcUa_UInt32>& lengths);
    /// Of a model with so many rows.
    Qt::ItemFlags flags(const QModelIndex& index, int rows) const;

private:
    const void* element(const QModelIndex& index) const;
    bool setText(const QModelIndex& index, const QVariant& value);
    bool isShownAs(const QModelIndex& index, const UaVariant& scalar) const;

    UaVariant* const m_value;
    bool m_readOnly;
    QvelEnumInfo m_enumInfo;
};

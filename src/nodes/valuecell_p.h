#pragma once

#include "composite/elementstore_p.h"
#include "nodes/datatypes_p.h"

#include <optional>

/// What a ValueDelegate asks of a cell, beside the roles of a QvelModelDelegate.
enum ValueCellRole {
    ValueReadOnlyRole = Qt::UserRole + 2, ///< true where an array is only to be looked at
    ValueRetryRole = Qt::UserRole + 3,    ///< true while the cell holds what could not be written
    /// Set without a value where the user has tried to edit in vain: the model tells why.
    ValueRefusalRole = Qt::UserRole + 4
};

/// What values a variable or an argument takes.
struct ValueType
{
    ValueType() = default;
    ValueType(const DataTypeInfo& info, OpcUa_Int32 rank, const QList<OpcUa_UInt32>& lengths = {})
        : name(info.name), builtInType(info.builtInType), emptyType(info.emptyType),
          valueRank(rank), dimensions(lengths), enumInfo(info.enumInfo)
    {
    }

    /// The value where there is none to begin with.
    UaVariant emptyValue() const;
    bool takes(const UaVariant& value) const;
    /// The name with the rank, such as "Int32[3][]".
    QString text() const;

    QString name;                                   ///< empty as long as it is not known
    OpcUa_BuiltInType builtInType = OpcUaType_Null; ///< Null for any
    OpcUa_BuiltInType emptyType = OpcUaType_Null;
    OpcUa_Int32 valueRank = -2; ///< OPC 10000-3, 5.6.2
    QList<OpcUa_UInt32> dimensions;
    QvelEnumInfo enumInfo;
};

/// The text of a value as it is edited. Real numbers are told in full where that is short.
QString editedText(const UaVariant& value);
/// A value on one line of bounded length, with the names of its numbers.
QString shownValue(const UaVariant& value, const QvelEnumInfo& enumInfo = {});
/// Why a value is not edited: its type, or what the server allows to this user in an attribute.
QString refusalText(bool isAllowed, OpcUa_UInt32 attributeId);
/// A value as it is copied: a scalar as its text, an array or matrix in JSON; all of it.
QString copiedValue(const UaVariant& value);

/// A value in a table: what is shown of it, and how it is edited in the type that is declared for
/// it. A value of another type is shown as what it is. Texts are made when they are asked for.
class ValueCell
{
public:
    const ValueType& type() const { return m_type; }
    void setType(const ValueType& type);
    const UaVariant& value() const { return m_value; }
    void setValue(const UaVariant& value);

    /// What the value is, such as "String[]", where that is not what is declared; else empty.
    QString otherType() const;
    /// False for structures and the like.
    bool isEditable() const { return isEditableType(edited().type()); }
    /// True for what opens in a dialog of its own, also when it may not be edited.
    bool isArray() const { return m_value.arrayType() != OpcUa_VariantArrayType_Scalar; }

    /// For Qt::DisplayRole, Qt::EditRole, ElementValueRole, ElementEnumInfoRole and ValueRetryRole.
    QVariant data(int role) const;
    /// The value that a delegate wrote, in the declared type. Good, BadTypeMismatch or
    /// BadOutOfRange. What was typed is kept as the next edit's beginning until clearAttempt().
    OpcUa_StatusCode take(const QVariant& written, int role, UaVariant* value);
    void clearAttempt() { m_attempt.reset(); }
    /// That, as it is shown.
    QString attemptText() const;

private:
    struct Attempt
    {
        UaVariant value; // empty where the text is none of the type
        QString text;    // where it was typed as one
    };
    UaVariant edited() const;

    ValueType m_type;
    UaVariant m_value;
    std::optional<Attempt> m_attempt;
    mutable QString m_shown; // null until it is asked for
};

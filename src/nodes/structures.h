#pragma once

/// \file
/// The standard's small structures that tell how a variable or a method is to be shown and edited:
/// plain values, decoded from the UaExtensionObject that a server sends.
///
/// fromVariant() takes a scalar, listFromVariant() an array; the empty value is an empty list. None
/// for another structure, one in XML, and one that does not decode.

#include "../kestrelexport.h"
#include "../platform/types/uanames.h"
#include "../platform/types/uanodeid.h"
#include "../platform/types/uastring.h"

#include <QtCore/QList>

#include <optional>

class UaVariant;

/// An argument of a method (OPC 10000-3, 8.6).
struct KESTREL_EXPORT QvelArgument
{
    UaString name;
    UaNodeId dataType = UaNodeId(24); ///< BaseDataType
    OpcUa_Int32 valueRank = -2;       ///< any
    QList<OpcUa_UInt32> arrayDimensions;
    UaLocalizedText description;

    static std::optional<QvelArgument> fromVariant(const UaVariant& value);
    static std::optional<QList<QvelArgument>> listFromVariant(const UaVariant& value);
};

/// A member of an enumeration (OPC 10000-3, 8.40).
struct KESTREL_EXPORT QvelEnumValue
{
    OpcUa_Int64 value = 0;
    UaLocalizedText displayName;
    UaLocalizedText description;

    static std::optional<QvelEnumValue> fromVariant(const UaVariant& value);
    static std::optional<QList<QvelEnumValue>> listFromVariant(const UaVariant& value);
};

/// The unit of a measured value (OPC 10000-8, 5.6.4.3).
struct KESTREL_EXPORT QvelEngineeringUnits
{
    UaString namespaceUri;
    OpcUa_Int32 unitId = -1; ///< -1 for none
    UaLocalizedText displayName;
    UaLocalizedText description;

    static std::optional<QvelEngineeringUnits> fromVariant(const UaVariant& value);
};

/// A range of values (OPC 10000-8, 5.6.2).
struct KESTREL_EXPORT QvelRange
{
    double low = 0;
    double high = 0;

    static std::optional<QvelRange> fromVariant(const UaVariant& value);
};

/// A field of an EnumDefinition: a member of an enumeration, or the number of a bit.
struct QvelEnumField : QvelEnumValue
{
    UaString name;
};
/// The members of an enumeration, or the bits of an option set (OPC 10000-3, 8.50).
struct KESTREL_EXPORT QvelEnumDefinition
{
    QList<QvelEnumField> fields;

    static std::optional<QvelEnumDefinition> fromVariant(const UaVariant& value);
};

/// A field of a StructureDefinition.
struct QvelStructureField
{
    UaString name;
    UaLocalizedText description;
    UaNodeId dataType;
    OpcUa_Int32 valueRank = -1;
    QList<OpcUa_UInt32> arrayDimensions;
    OpcUa_UInt32 maxStringLength = 0;
    bool isOptional = false;
};
/// The fields of a structure (OPC 10000-3, 8.48).
struct KESTREL_EXPORT QvelStructureDefinition
{
    UaNodeId defaultEncodingId;
    UaNodeId baseDataType;
    OpcUa_Int32 structureType = 0; ///< a structure, one with optional fields, or a union
    QList<QvelStructureField> fields;

    static std::optional<QvelStructureDefinition> fromVariant(const UaVariant& value);
};

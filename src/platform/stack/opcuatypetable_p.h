#pragma once

#include "platform/stack/opcuatypes.h"

/// What there is to know about the elements of one built-in type.
struct OpcUaTypeInfo
{
    const char* name; ///< as the standard spells it
    std::size_t size; ///< of one element in an array or matrix
    bool boxed;       ///< a scalar stands in a block of its own
    void (*clear)(void* element);
    OpcUa_StatusCode (*copy)(const void* from, void* to);
    bool (*equal)(const void* a, const void* b);
};

/// The entry of a built-in type whose values a Variant can hold here, else null.
const OpcUaTypeInfo* opcUaTypeInfo(OpcUa_Byte builtInType);

/// Address of the elements of a Variant and their number, whatever its shape. A count that the
/// storage does not back (no elements, or dimensions that overflow) is 0.
struct OpcUaElements
{
    void* data;
    std::size_t count;
};
OpcUaElements opcUaElements(const OpcUa_Variant& variant);

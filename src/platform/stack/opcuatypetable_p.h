#pragma once

#include "platform/stack/opcuatypes.h"

#include <QtCore/QtGlobal>

/// One level of a copy in progress on this thread. A Variant may hold Variants, and a
/// DiagnosticInfo another one; what is nested deeper than any decoder need read (OPC
/// 10000-6, 5.2.2.16) is not copied, and so never comes to exhaust the stack later on.
class OpcUaNesting
{
public:
    OpcUaNesting() { ++depth; }
    ~OpcUaNesting() { --depth; }
    Q_DISABLE_COPY_MOVE(OpcUaNesting)
    bool isTooDeep() const { return depth > most; }

private:
    static constexpr int most = 100;
    static inline thread_local int depth = 0;
};

/// Whether a table has an entry for each built-in type up to the last, in their order.
template <class Entry, std::size_t size>
constexpr bool isTableOfTypes(const Entry (&entries)[size],
                              OpcUa_BuiltInType last = OpcUaType_DiagnosticInfo)
{
    for (std::size_t i = 0; i < size; ++i) {
        if (entries[i].type != OpcUa_BuiltInType(i))
            return false;
    }
    return size == std::size_t(last) + 1;
}

/// What there is to know about the elements of one built-in type.
struct OpcUaTypeInfo
{
    OpcUa_BuiltInType type;
    const char* name; ///< as the standard spells it
    std::size_t size; ///< of one element in an array or matrix
    bool boxed;       ///< a scalar stands in a block of its own
    bool plain;       ///< owns nothing: its bytes are its value
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

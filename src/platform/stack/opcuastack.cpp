#include "platform/stack/opcuafields_p.h"
#include "platform/stack/opcuastatuscodes.h"
#include "platform/stack/opcuatypes.h"
#include "platform/stack/opcuatypetable_p.h"

#include <QtCore/QtNumeric>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>

void* OpcUa_Memory_Alloc(std::size_t length)
{
    return std::malloc(length ? length : 1);
}

void* OpcUa_Memory_ReAlloc(void* block, std::size_t length)
{
    return std::realloc(block, length ? length : 1);
}

void OpcUa_Memory_Free(void* block)
{
    std::free(block);
}

void OpcUa_Memory_MemCpy(void* to, const void* from, std::size_t length)
{
    if (length)
        std::memcpy(to, from, length);
}

namespace {

void* allocZeroed(std::size_t count, std::size_t size)
{
    return std::calloc(count ? count : 1, size);
}

// Into an empty target. Strings and byte strings differ by the terminating NUL only.
template <class T>
OpcUa_StatusCode fillBytes(T* target, const void* data, OpcUa_Int32 length)
{
    constexpr std::size_t terminator = std::is_same_v<T, OpcUa_String> ? 1 : 0;
    if (!data || length < 0)
        return OpcUa_Good;
    void* copy = OpcUa_Memory_Alloc(std::size_t(length) + terminator);
    if (!copy)
        return OpcUa_BadOutOfMemory;
    OpcUa_Memory_MemCpy(copy, data, std::size_t(length));
    if (terminator)
        static_cast<char*>(copy)[length] = '\0';
    target->Length = length;
    target->Data = static_cast<decltype(target->Data)>(copy);
    return OpcUa_Good;
}

template <class T>
OpcUa_StatusCode assignBytes(T* target, const void* data, OpcUa_Int32 length)
{
    OpcUa_Memory_Free(target->Data);
    *target = {};
    return fillBytes(target, data, length);
}

template <class T>
bool equalBytes(const T& a, const T& b)
{
    const OpcUa_Int32 lengthA = a.Data ? a.Length : 0;
    const OpcUa_Int32 lengthB = b.Data ? b.Length : 0;
    return lengthA == lengthB && (lengthA == 0 || !std::memcmp(a.Data, b.Data, size_t(lengthA)));
}

template <class T>
constexpr bool isBytes = std::is_same_v<T, OpcUa_String> || std::is_same_v<T, OpcUa_ByteString>;

template <class T>
void clearValue(T& value);
template <class T>
OpcUa_StatusCode fillValue(const T& from, T& to);
template <class T>
bool equalValue(const T& a, const T& b);

struct Clearer
{
    template <class T>
    void operator()(T& field)
    {
        clearValue(field);
    }
    template <class N, class P>
    void operator()(StackArray<N, P> array)
    {
        if (array.elements) {
            for (OpcUa_Int32 i = 0; i < array.count; ++i)
                clearValue(array.elements[i]);
            OpcUa_Memory_Free(array.elements);
        }
    }
};

struct Copier
{
    OpcUa_StatusCode status = OpcUa_Good;
    template <class T>
    void operator()(const T& from, T& to)
    {
        if (OpcUa_IsGood(status))
            status = fillValue(from, to);
    }
    template <class N, class P, class N2, class P2>
    void operator()(StackArray<N, P> from, StackArray<N2, P2> to)
    {
        if (OpcUa_IsNotGood(status) || from.count <= 0)
            return;
        to.count = from.count;
        if (!from.elements) // counted, but never allocated
            return;
        using Element = std::remove_reference_t<decltype(*to.elements)>;
        void* block = allocZeroed(std::size_t(from.count), sizeof(Element));
        if (!block) {
            status = OpcUa_BadOutOfMemory;
            return;
        }
        to.elements = static_cast<Element*>(block);
        for (OpcUa_Int32 i = 0; i < from.count; ++i)
            (*this)(from.elements[i], to.elements[i]);
    }
};

struct Comparer
{
    bool equal = true;
    template <class T>
    void operator()(const T& a, const T& b)
    {
        equal = equal && equalValue(a, b);
    }
    template <class N, class P>
    void operator()(StackArray<N, P> a, StackArray<N, P> b)
    {
        equal = equal && a.count == b.count && !a.elements == !b.elements;
        for (OpcUa_Int32 i = 0; equal && a.elements && i < a.count; ++i)
            equal = equalValue(a.elements[i], b.elements[i]);
    }
};

template <class T>
void clearValue(T& value)
{
    if constexpr (isBytes<T>) {
        OpcUa_Memory_Free(value.Data);
    } else if constexpr (std::is_same_v<T, OpcUa_Variant>) {
        OpcUa_Variant_Clear(&value);
    } else if constexpr (std::is_same_v<T, OpcUa_NodeId>) {
        if (value.IdentifierType == OpcUa_IdentifierType_String)
            OpcUa_Memory_Free(value.Identifier.String.Data);
        else if (value.IdentifierType == OpcUa_IdentifierType_Opaque)
            OpcUa_Memory_Free(value.Identifier.ByteString.Data);
    } else if constexpr (!std::is_arithmetic_v<T> && !std::is_enum_v<T> &&
                         !std::is_same_v<T, OpcUa_Guid>) {
        StackFields<T>::visit(Clearer{}, value);
    }
    std::memset(&value, 0, sizeof value);
}

// Structures that may hold one of their kind again, at any depth.
template <class T>
constexpr bool mayNest =
    std::is_same_v<T, OpcUa_DataValue> || std::is_same_v<T, OpcUa_DiagnosticInfo>;

// Into an empty target, as all parts of a copy are.
template <class T>
OpcUa_StatusCode fillValue(const T& from, T& to)
{
    if constexpr (isBytes<T>) {
        return fillBytes(&to, from.Data, from.Length);
    } else if constexpr (std::is_same_v<T, OpcUa_Variant>) {
        return OpcUa_Variant_CopyTo(&from, &to);
    } else if constexpr (std::is_same_v<T, OpcUa_NodeId>) {
        to.IdentifierType = from.IdentifierType;
        to.NamespaceIndex = from.NamespaceIndex;
        if (from.IdentifierType == OpcUa_IdentifierType_String)
            return fillValue(from.Identifier.String, to.Identifier.String);
        if (from.IdentifierType == OpcUa_IdentifierType_Opaque)
            return fillValue(from.Identifier.ByteString, to.Identifier.ByteString);
        to.Identifier = from.Identifier;
    } else if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T> ||
                         std::is_same_v<T, OpcUa_Guid>) {
        to = from;
    } else {
        Copier copier;
        if constexpr (mayNest<T>) {
            const OpcUaNesting nesting;
            if (nesting.isTooDeep())
                return OpcUa_BadEncodingLimitsExceeded;
            StackFields<T>::visit(copier, from, to);
        } else {
            StackFields<T>::visit(copier, from, to);
        }
        return copier.status;
    }
    return OpcUa_Good;
}

template <class T>
OpcUa_StatusCode copyValue(const T& from, T& to)
{
    clearValue(to);
    const OpcUa_StatusCode status = fillValue(from, to);
    if (OpcUa_IsNotGood(status))
        clearValue(to);
    return status;
}

template <class T>
bool equalValue(const T& a, const T& b)
{
    if constexpr (isBytes<T>) {
        return equalBytes(a, b);
    } else if constexpr (std::is_same_v<T, OpcUa_Variant>) {
        return OpcUa_Variant_Equal(&a, &b);
    } else if constexpr (std::is_same_v<T, OpcUa_Guid>) {
        return !std::memcmp(&a, &b, sizeof a);
    } else if constexpr (std::is_same_v<T, OpcUa_NodeId>) {
        if (a.IdentifierType != b.IdentifierType || a.NamespaceIndex != b.NamespaceIndex)
            return false;
        switch (a.IdentifierType) {
        case OpcUa_IdentifierType_String:
            return equalBytes(a.Identifier.String, b.Identifier.String);
        case OpcUa_IdentifierType_Opaque:
            return equalBytes(a.Identifier.ByteString, b.Identifier.ByteString);
        case OpcUa_IdentifierType_Guid:
            return equalValue(a.Identifier.Guid, b.Identifier.Guid);
        default:
            return a.Identifier.Numeric == b.Identifier.Numeric;
        }
    } else if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>) {
        return a == b;
    } else {
        Comparer comparer;
        StackFields<T>::visit(comparer, a, b);
        return comparer.equal;
    }
}

template <class T>
constexpr OpcUaTypeInfo typeInfo(OpcUa_BuiltInType type, const char* name, bool boxed = false)
{
    return {type,
            name,
            sizeof(T),
            boxed,
            std::is_arithmetic_v<T> || std::is_same_v<T, OpcUa_Guid>,
            [](void* element) { clearValue(*static_cast<T*>(element)); },
            [](const void* from, void* to) {
                return copyValue(*static_cast<const T*>(from), *static_cast<T*>(to));
            },
            [](const void* a, const void* b) {
                return equalValue(*static_cast<const T*>(a), *static_cast<const T*>(b));
            }};
}

constexpr OpcUaTypeInfo typeTable[] = {
    {OpcUaType_Null, "Null", 0, false, true, nullptr, nullptr, nullptr},
    typeInfo<OpcUa_Boolean>(OpcUaType_Boolean, "Boolean"),
    typeInfo<OpcUa_SByte>(OpcUaType_SByte, "SByte"),
    typeInfo<OpcUa_Byte>(OpcUaType_Byte, "Byte"),
    typeInfo<OpcUa_Int16>(OpcUaType_Int16, "Int16"),
    typeInfo<OpcUa_UInt16>(OpcUaType_UInt16, "UInt16"),
    typeInfo<OpcUa_Int32>(OpcUaType_Int32, "Int32"),
    typeInfo<OpcUa_UInt32>(OpcUaType_UInt32, "UInt32"),
    typeInfo<OpcUa_Int64>(OpcUaType_Int64, "Int64"),
    typeInfo<OpcUa_UInt64>(OpcUaType_UInt64, "UInt64"),
    typeInfo<OpcUa_Float>(OpcUaType_Float, "Float"),
    typeInfo<OpcUa_Double>(OpcUaType_Double, "Double"),
    typeInfo<OpcUa_String>(OpcUaType_String, "String"),
    typeInfo<OpcUa_DateTime>(OpcUaType_DateTime, "DateTime"),
    typeInfo<OpcUa_Guid>(OpcUaType_Guid, "Guid"),
    typeInfo<OpcUa_ByteString>(OpcUaType_ByteString, "ByteString"),
    typeInfo<OpcUa_XmlElement>(OpcUaType_XmlElement, "XmlElement"),
    typeInfo<OpcUa_NodeId>(OpcUaType_NodeId, "NodeId"),
    typeInfo<OpcUa_ExpandedNodeId>(OpcUaType_ExpandedNodeId, "ExpandedNodeId"),
    typeInfo<OpcUa_StatusCode>(OpcUaType_StatusCode, "StatusCode"),
    typeInfo<OpcUa_QualifiedName>(OpcUaType_QualifiedName, "QualifiedName"),
    typeInfo<OpcUa_LocalizedText>(OpcUaType_LocalizedText, "LocalizedText"),
    typeInfo<OpcUa_ExtensionObject>(OpcUaType_ExtensionObject, "ExtensionObject", true),
    typeInfo<OpcUa_DataValue>(OpcUaType_DataValue, "DataValue", true),
    typeInfo<OpcUa_Variant>(OpcUaType_Variant, "Variant", true),
    typeInfo<OpcUa_DiagnosticInfo>(OpcUaType_DiagnosticInfo, "DiagnosticInfo", true),
};
static_assert(isTableOfTypes(typeTable));

} // namespace

const OpcUaTypeInfo* opcUaTypeInfo(OpcUa_Byte builtInType)
{
    const bool known = builtInType > OpcUaType_Null && builtInType < std::size(typeTable);
    return known ? &typeTable[builtInType] : nullptr;
}

OpcUaElements opcUaElements(const OpcUa_Variant& variant)
{
    const OpcUaTypeInfo* info = opcUaTypeInfo(variant.Datatype);
    if (!info)
        return {nullptr, 0};
    switch (variant.ArrayType) {
    case OpcUa_VariantArrayType_Scalar:
        if (info->boxed)
            return {variant.Value.Boxed, variant.Value.Boxed ? std::size_t(1) : 0};
        return {const_cast<OpcUa_VariantValue*>(&variant.Value), 1};
    case OpcUa_VariantArrayType_Array: {
        const auto& array = variant.Value.Array;
        return {array.Elements, array.Elements && array.Length > 0 ? size_t(array.Length) : 0};
    }
    case OpcUa_VariantArrayType_Matrix: {
        const auto& matrix = variant.Value.Matrix;
        std::size_t count = 1;
        for (OpcUa_Int32 i = 0; matrix.Dimensions && i < matrix.NoOfDimensions; ++i) {
            if (qMulOverflow(count, std::size_t(matrix.Dimensions[i]), &count) ||
                count > std::size_t(INT32_MAX))
                return {matrix.Elements, 0};
        }
        return {matrix.Elements, matrix.Elements ? count : 0};
    }
    default:
        return {nullptr, 0};
    }
}

// A Variant is the one structure whose fields depend on its contents.

void OpcUa_Variant_Initialize(OpcUa_Variant* value)
{
    std::memset(value, 0, sizeof *value);
}

void OpcUa_Variant_Clear(OpcUa_Variant* value)
{
    const OpcUaTypeInfo* info = opcUaTypeInfo(value->Datatype);
    if (value->ArrayType == OpcUa_VariantArrayType_Scalar && (!info || info->plain))
        return OpcUa_Variant_Initialize(value);
    const OpcUaElements elements = opcUaElements(*value);
    for (std::size_t i = 0; i < elements.count && !info->plain; ++i)
        info->clear(static_cast<char*>(elements.data) + i * info->size);
    if (value->ArrayType != OpcUa_VariantArrayType_Scalar || (info && info->boxed))
        OpcUa_Memory_Free(elements.data);
    if (value->ArrayType == OpcUa_VariantArrayType_Matrix)
        OpcUa_Memory_Free(value->Value.Matrix.Dimensions);
    OpcUa_Variant_Initialize(value);
}

OpcUa_StatusCode OpcUa_Variant_CopyTo(const OpcUa_Variant* from, OpcUa_Variant* to)
{
    OpcUa_Variant_Clear(to);
    const OpcUaNesting nesting;
    if (nesting.isTooDeep())
        return OpcUa_BadEncodingLimitsExceeded;
    const OpcUaTypeInfo* info = opcUaTypeInfo(from->Datatype);
    if (!info)
        return OpcUa_Good;
    const OpcUaElements source = opcUaElements(*from);
    to->Datatype = from->Datatype;
    to->ArrayType = from->ArrayType;
    void* target = &to->Value;
    if (from->ArrayType == OpcUa_VariantArrayType_Scalar && info->boxed) {
        target = to->Value.Boxed = source.data ? allocZeroed(1, info->size) : nullptr;
        if (source.data && !target) {
            OpcUa_Variant_Clear(to);
            return OpcUa_BadOutOfMemory;
        }
    } else if (from->ArrayType != OpcUa_VariantArrayType_Scalar) {
        const auto& matrix = from->Value.Matrix;
        if (from->ArrayType == OpcUa_VariantArrayType_Matrix && matrix.Dimensions) {
            const std::size_t bytes = std::size_t(matrix.NoOfDimensions) * sizeof(OpcUa_UInt32);
            void* dimensions = OpcUa_Memory_Alloc(bytes);
            if (dimensions) {
                OpcUa_Memory_MemCpy(dimensions, matrix.Dimensions, bytes);
                to->Value.Matrix.Dimensions = static_cast<OpcUa_UInt32*>(dimensions);
                to->Value.Matrix.NoOfDimensions = matrix.NoOfDimensions;
            }
        }
        target = source.data ? allocZeroed(source.count, info->size) : nullptr;
        if (from->ArrayType == OpcUa_VariantArrayType_Array) {
            to->Value.Array.Elements = target;
            to->Value.Array.Length = OpcUa_Int32(source.count);
        } else {
            to->Value.Matrix.Elements = target;
        }
        const bool lacksDimensions = from->ArrayType == OpcUa_VariantArrayType_Matrix &&
                                     matrix.Dimensions && !to->Value.Matrix.Dimensions;
        if ((source.data && !target) || lacksDimensions) {
            if (!target && from->ArrayType == OpcUa_VariantArrayType_Array)
                to->Value.Array.Length = 0;
            OpcUa_Variant_Clear(to);
            return OpcUa_BadOutOfMemory;
        }
    }
    if (!source.data)
        return OpcUa_Good;
    if (info->plain) {
        OpcUa_Memory_MemCpy(target, source.data, source.count * info->size);
        return OpcUa_Good;
    }
    for (std::size_t i = 0; i < source.count; ++i) {
        const std::size_t offset = i * info->size;
        const OpcUa_StatusCode status = info->copy(static_cast<const char*>(source.data) + offset,
                                                   static_cast<char*>(target) + offset);
        if (OpcUa_IsNotGood(status)) {
            OpcUa_Variant_Clear(to);
            return status;
        }
    }
    return OpcUa_Good;
}

bool OpcUa_Variant_Equal(const OpcUa_Variant* a, const OpcUa_Variant* b)
{
    if (a->Datatype != b->Datatype || a->ArrayType != b->ArrayType)
        return false;
    const OpcUaTypeInfo* info = opcUaTypeInfo(a->Datatype);
    if (!info)
        return true;
    if (a->ArrayType == OpcUa_VariantArrayType_Matrix) {
        const auto& ma = a->Value.Matrix;
        const auto& mb = b->Value.Matrix;
        // A count that no list backs is compared by the elements alone.
        if (ma.NoOfDimensions != mb.NoOfDimensions || !ma.Dimensions != !mb.Dimensions ||
            (ma.Dimensions && ma.NoOfDimensions > 0 &&
             std::memcmp(ma.Dimensions, mb.Dimensions,
                         std::size_t(ma.NoOfDimensions) * sizeof(OpcUa_UInt32)) != 0))
            return false;
    }
    const OpcUaElements ea = opcUaElements(*a);
    const OpcUaElements eb = opcUaElements(*b);
    if (ea.count != eb.count)
        return false;
    for (std::size_t i = 0; i < ea.count; ++i) {
        const std::size_t offset = i * info->size;
        if (!info->equal(static_cast<char*>(ea.data) + offset,
                         static_cast<char*>(eb.data) + offset))
            return false;
    }
    return true;
}

#define KESTREL_DEFINE_STACK_TYPE(Type)                                                            \
    void Type##_Initialize(Type* value)                                                            \
    {                                                                                              \
        std::memset(value, 0, sizeof *value);                                                      \
    }                                                                                              \
    void Type##_Clear(Type* value)                                                                 \
    {                                                                                              \
        clearValue(*value);                                                                        \
    }                                                                                              \
    OpcUa_StatusCode Type##_CopyTo(const Type* from, Type* to)                                     \
    {                                                                                              \
        return copyValue(*from, *to);                                                              \
    }                                                                                              \
    bool Type##_Equal(const Type* a, const Type* b)                                                \
    {                                                                                              \
        return equalValue(*a, *b);                                                                 \
    }

KESTREL_DEFINE_STACK_TYPE(OpcUa_String)
KESTREL_DEFINE_STACK_TYPE(OpcUa_ByteString)
KESTREL_DEFINE_STACK_TYPE(OpcUa_NodeId)
KESTREL_DEFINE_STACK_TYPE(OpcUa_ExpandedNodeId)
KESTREL_DEFINE_STACK_TYPE(OpcUa_QualifiedName)
KESTREL_DEFINE_STACK_TYPE(OpcUa_LocalizedText)
KESTREL_DEFINE_STACK_TYPE(OpcUa_ExtensionObject)
KESTREL_DEFINE_STACK_TYPE(OpcUa_DataValue)
KESTREL_DEFINE_STACK_TYPE(OpcUa_DiagnosticInfo)
KESTREL_DEFINE_STACK_TYPE(OpcUa_ApplicationDescription)
KESTREL_DEFINE_STACK_TYPE(OpcUa_UserTokenPolicy)
KESTREL_DEFINE_STACK_TYPE(OpcUa_EndpointDescription)
KESTREL_DEFINE_STACK_TYPE(OpcUa_ServerOnNetwork)

const char* OpcUa_String_GetRawString(const OpcUa_String* value)
{
    return value->Data ? value->Data : "";
}

OpcUa_UInt32 OpcUa_String_StrSize(const OpcUa_String* value)
{
    return value->Data && value->Length > 0 ? OpcUa_UInt32(value->Length) : 0;
}

OpcUa_Int32 OpcUa_String_StrnCmp(const OpcUa_String* a, const OpcUa_String* b, OpcUa_Int32 length,
                                 bool ignoreCase)
{
    const auto fold = [ignoreCase](char c) {
        const int u = static_cast<unsigned char>(c);
        return ignoreCase && u >= 'A' && u <= 'Z' ? u + ('a' - 'A') : u;
    };
    std::size_t sizeA = OpcUa_String_StrSize(a);
    std::size_t sizeB = OpcUa_String_StrSize(b);
    if (length >= 0) {
        sizeA = std::min(sizeA, std::size_t(length));
        sizeB = std::min(sizeB, std::size_t(length));
    }
    for (std::size_t i = 0; i < std::min(sizeA, sizeB); ++i) {
        const int difference = fold(a->Data[i]) - fold(b->Data[i]);
        if (difference)
            return difference;
    }
    return sizeA == sizeB ? 0 : sizeA < sizeB ? -1 : 1;
}

OpcUa_StatusCode OpcUa_String_Assign(OpcUa_String* target, const char* utf8, OpcUa_Int32 length)
{
    return assignBytes(target, utf8, length);
}

OpcUa_StatusCode OpcUa_ByteString_Assign(OpcUa_ByteString* target, const void* data,
                                         OpcUa_Int32 length)
{
    return assignBytes(target, data, length);
}

#include "variantelements_p.h"

#include "platform/stack/opcuastatuscodes.h"
#include "platform/stack/opcuatypetable_p.h"
#include "platform/types/uavariant.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace {

bool fits(std::size_t count, const OpcUaTypeInfo& info)
{
    return count <= std::size_t(std::numeric_limits<OpcUa_Int32>::max()) &&
           count <= maxElementBytes / info.size;
}

// Grows or shrinks a block of elements. False, with the block as it was, when there is no memory.
bool resizeBlock(void*& elements, std::size_t from, std::size_t to, const OpcUaTypeInfo& info)
{
    const auto at = [&](std::size_t i) { return static_cast<char*>(elements) + i * info.size; };
    if (to > from || !elements) {
        void* block = OpcUa_Memory_ReAlloc(elements, to * info.size);
        if (!block)
            return false;
        elements = block;
        if (to > from)
            std::memset(at(from), 0, (to - from) * info.size);
        return true;
    }
    for (std::size_t i = to; i < from; ++i)
        info.clear(at(i));
    if (void* block = OpcUa_Memory_ReAlloc(elements, to * info.size))
        elements = block; // otherwise the block is just larger than need be
    return true;
}

bool isOf(const UaVariant& variant, OpcUa_VariantArrayType arrayType)
{
    return opcUaTypeInfo(OpcUa_Byte(variant.type())) && variant.arrayType() == arrayType;
}

} // namespace

bool resizeElements(UaVariant& array, std::size_t count)
{
    if (!isOf(array, OpcUa_VariantArrayType_Array))
        return false;
    const OpcUaTypeInfo& info = *opcUaTypeInfo(OpcUa_Byte(array.type()));
    OpcUa_Variant* variant = fits(count, info) ? array.detach() : nullptr;
    if (!variant)
        return false;
    auto& storage = variant->Value.Array;
    if (!resizeBlock(storage.Elements, opcUaElements(*variant).count, count, info))
        return false;
    storage.Length = OpcUa_Int32(count);
    return true;
}

OpcUa_Int32 elementCount(const std::vector<OpcUa_UInt32>& lengths)
{
    constexpr auto most = std::size_t(std::numeric_limits<OpcUa_Int32>::max());
    // A length of 0 makes the product 0, however large the others are.
    if (std::find(lengths.begin(), lengths.end(), 0u) != lengths.end())
        return 0;
    std::size_t count = 1;
    for (OpcUa_UInt32 length : lengths) {
        if (length > most / count)
            return -1;
        count *= length;
    }
    return OpcUa_Int32(count);
}

bool reshapeElements(UaVariant& matrix, const std::vector<OpcUa_UInt32>& lengths)
{
    if (!isOf(matrix, OpcUa_VariantArrayType_Matrix))
        return false;
    const OpcUaTypeInfo& info = *opcUaTypeInfo(OpcUa_Byte(matrix.type()));
    const OpcUa_Int32 count = elementCount(lengths);
    if (count < 0 || !fits(std::size_t(count), info))
        return false;
    const std::size_t bytes = lengths.size() * sizeof(OpcUa_UInt32);
    auto* dimensions = static_cast<OpcUa_UInt32*>(OpcUa_Memory_Alloc(bytes));
    OpcUa_Variant* variant = dimensions ? matrix.detach() : nullptr;
    if (!variant || !resizeBlock(variant->Value.Matrix.Elements, opcUaElements(*variant).count,
                                 std::size_t(count), info)) {
        OpcUa_Memory_Free(dimensions);
        return false;
    }
    OpcUa_Memory_MemCpy(dimensions, lengths.data(), bytes);
    auto& storage = variant->Value.Matrix;
    OpcUa_Memory_Free(storage.Dimensions);
    storage.Dimensions = dimensions;
    storage.NoOfDimensions = OpcUa_Int32(lengths.size());
    return true;
}

bool setElement(UaVariant& variant, std::size_t index, const UaVariant& scalar)
{
    if (scalar.type() != variant.type() || scalar.arrayType() != OpcUa_VariantArrayType_Scalar ||
        variant.arrayType() == OpcUa_VariantArrayType_Scalar ||
        index >= opcUaElements(*variant).count)
        return false;
    const OpcUaTypeInfo& info = *opcUaTypeInfo(OpcUa_Byte(variant.type()));
    const OpcUaElements source = opcUaElements(*scalar);
    OpcUa_Variant* target = source.count ? variant.detach() : nullptr;
    if (!target)
        return false;
    void* element = static_cast<char*>(opcUaElements(*target).data) + index * info.size;
    return OpcUa_IsGood(info.copy(source.data, element));
}

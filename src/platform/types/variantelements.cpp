#include "platform/types/uavariant.h"

#include "platform/stack/opcuastatuscodes.h"
#include "platform/stack/opcuatypetable_p.h"

#include <QtCore/QtNumeric>

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

// Editing in place: each operation detaches the variant from its other holders first, and either
// does all that it is asked or changes nothing.

namespace {

// The most that the elements of one variant may take.
constexpr std::size_t maxElementBytes = std::size_t(1) << 30;

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

// Room for one element of any type.
union AnyElement
{
    OpcUa_VariantValue inlined;
    OpcUa_ExtensionObject extensionObject;
    OpcUa_DataValue dataValue;
    OpcUa_Variant variant;
    OpcUa_DiagnosticInfo diagnosticInfo;
};

std::vector<OpcUa_UInt32> lengthsOf(const UaVariant::Dimensions& dimensions)
{
    std::vector<OpcUa_UInt32> lengths(dimensions.size());
    if (dimensions.values())
        std::copy_n(dimensions.values(), lengths.size(), lengths.begin());
    else // a negative length becomes one that is out of bounds
        std::copy_n(dimensions.stack(), lengths.size(), lengths.begin());
    return lengths;
}

bool isOf(const UaVariant& variant, OpcUa_VariantArrayType arrayType)
{
    return opcUaTypeInfo(OpcUa_Byte(variant.type())) && variant.arrayType() == arrayType;
}

} // namespace

bool UaVariant::resize(std::size_t count)
{
    if (!isOf(*this, OpcUa_VariantArrayType_Array))
        return false;
    const OpcUaTypeInfo& info = *opcUaTypeInfo(OpcUa_Byte(type()));
    OpcUa_Variant* variant = fits(count, info) ? detach() : nullptr;
    if (!variant)
        return false;
    auto& storage = variant->Value.Array;
    if (!resizeBlock(storage.Elements, opcUaElements(*variant).count, count, info))
        return false;
    storage.Length = OpcUa_Int32(count);
    return true;
}

OpcUa_Int32 UaVariant::elementCount(const Dimensions& dimensions)
{
    const std::vector<OpcUa_UInt32> lengths = lengthsOf(dimensions);
    // A length of 0 makes the product 0, however large the others are.
    if (std::find(lengths.begin(), lengths.end(), 0u) != lengths.end())
        return 0;
    OpcUa_Int32 count = 1;
    for (OpcUa_UInt32 length : lengths) {
        if (length > OpcUa_UInt32(std::numeric_limits<OpcUa_Int32>::max()) ||
            qMulOverflow(count, OpcUa_Int32(length), &count))
            return -1;
    }
    return count;
}

bool UaVariant::setDimensions(const Dimensions& dimensions)
{
    if (!isOf(*this, OpcUa_VariantArrayType_Matrix))
        return false;
    const OpcUaTypeInfo& info = *opcUaTypeInfo(OpcUa_Byte(type()));
    const OpcUa_Int32 count = elementCount(dimensions);
    if (count < 0 || !fits(std::size_t(count), info))
        return false;
    const std::vector<OpcUa_UInt32> lengths = lengthsOf(dimensions);
    const std::size_t bytes = lengths.size() * sizeof(OpcUa_UInt32);
    auto* copy = static_cast<OpcUa_UInt32*>(OpcUa_Memory_Alloc(bytes));
    OpcUa_Variant* variant = copy ? detach() : nullptr;
    if (!variant || !resizeBlock(variant->Value.Matrix.Elements, opcUaElements(*variant).count,
                                 std::size_t(count), info)) {
        OpcUa_Memory_Free(copy);
        return false;
    }
    OpcUa_Memory_MemCpy(copy, lengths.data(), bytes);
    auto& storage = variant->Value.Matrix;
    OpcUa_Memory_Free(storage.Dimensions);
    storage.Dimensions = copy;
    storage.NoOfDimensions = OpcUa_Int32(lengths.size());
    return true;
}

UaVariant UaVariant::elementAt(OpcUa_Int32 index) const
{
    const OpcUa_Variant& v = **this;
    const OpcUaElements elements = opcUaElements(v);
    if (v.ArrayType == OpcUa_VariantArrayType_Scalar || index < 0 ||
        std::size_t(index) >= elements.count)
        return UaVariant();
    const OpcUaTypeInfo& info = *opcUaTypeInfo(v.Datatype);
    const void* element = static_cast<char*>(elements.data) + std::size_t(index) * info.size;
    if (v.Datatype == OpcUaType_Variant)
        return UaVariant(*static_cast<const OpcUa_Variant*>(element));
    UaVariant result;
    OpcUa_VariantValue& target = result.reset(OpcUa_BuiltInType(v.Datatype));
    void* copy = &target;
    if (info.boxed) {
        copy = target.Boxed = OpcUa_Memory_Alloc(info.size);
        if (!copy)
            return UaVariant();
        std::memset(copy, 0, info.size);
    }
    if (OpcUa_IsNotGood(info.copy(element, copy)))
        return UaVariant();
    return result;
}

bool UaVariant::setElement(OpcUa_Int32 index, const UaVariant& value)
{
    const bool any = type() == OpcUaType_Variant; // such an element takes a value whole
    if ((!any && (value.type() != type() || value.arrayType() != OpcUa_VariantArrayType_Scalar)) ||
        arrayType() == OpcUa_VariantArrayType_Scalar || index < 0 || index >= arraySize())
        return false;
    const OpcUaTypeInfo& info = *opcUaTypeInfo(OpcUa_Byte(type()));
    const void* source =
        any ? static_cast<const OpcUa_Variant*>(value) : opcUaElements(*value).data;
    // Copied aside, and moved into its place, so that a copy that fails leaves the old element.
    const OpcUaNesting nesting;
    AnyElement copy;
    std::memset(&copy, 0, sizeof copy);
    if (!source || OpcUa_IsNotGood(info.copy(source, &copy)))
        return false;
    OpcUa_Variant* target = detach();
    if (!target) {
        info.clear(&copy);
        return false;
    }
    void* element =
        static_cast<char*>(opcUaElements(*target).data) + std::size_t(index) * info.size;
    info.clear(element);
    std::memcpy(element, &copy, info.size);
    return true;
}

#pragma once

#include "platform/stack/opcuatypes.h"

#include <cstddef>
#include <vector>

class UaVariant;

/// \file
/// Editing the elements of an array or matrix in place. Each operation detaches the variant from
/// its other holders first, and either does all that it is asked or changes nothing.

/// The most that the elements of one variant may take.
inline constexpr std::size_t maxElementBytes = std::size_t(1) << 30;

/// Makes an array `count` elements long: clears what falls away, and adds null values. False when
/// the value is no array, or when there is no memory.
bool resizeElements(UaVariant& array, std::size_t count);

/// Gives a matrix new lengths. Elements keep their places in row-major order. False when the value
/// is no matrix, when the product of the lengths is out of bounds, or when there is no memory.
bool reshapeElements(UaVariant& matrix, const std::vector<OpcUa_UInt32>& lengths);

/// The product of the lengths of a matrix, 1 for none; -1 when it is out of bounds.
OpcUa_Int32 elementCount(const std::vector<OpcUa_UInt32>& lengths);

/// Replaces one element by a scalar of the same type. False for anything else.
bool setElement(UaVariant& variant, std::size_t index, const UaVariant& scalar);

#pragma once

#include <cstddef>
#include <cstdint>

/// What is taken from a peer, or out of bytes that somebody hands in. What goes beyond is refused
/// with BadEncodingLimitsExceeded or, for a whole message, BadResponseTooLarge. The defaults let a
/// value of 64 MB through.
struct UaEncodingLimits
{
    std::uint32_t messageSize = 72u << 20; ///< bytes of one message
    std::int32_t stringLength = 72 << 20;  ///< bytes of a String or ByteString
    std::int32_t arrayLength = 72 << 20;   ///< elements
    /// Of Variants in Variants and of DiagnosticInfos (OPC 10000-6, 5.1.6 and 5.2.2.12).
    int nestingDepth = 100;
    /// Bytes that all values of one message may take together once they are decoded.
    std::size_t memory = std::size_t(256) << 20;
};

#pragma once

// The rounding words of the whole system, named once: clamp is to 0..255, trunc is toward zero,
// round-half adds 0.5 and truncates.

#include <cstdint>
#include <limits>

namespace velloran {

/// Limits to 0..255.
constexpr std::uint8_t ClampToByte(std::int64_t value) {
    return static_cast<std::uint8_t>(value < 0 ? 0 : (value > 255 ? 255 : value));
}

/// Converts toward zero. Values that the target cannot hold, and NaN, become the nearest limit
/// (NaN becomes 0), where a plain cast would be undefined.
constexpr std::int32_t TruncToInt(double value) {
    if (value != value)
        return 0;
    if (value <= static_cast<double>(std::numeric_limits<std::int32_t>::min()))
        return std::numeric_limits<std::int32_t>::min();
    if (value >= static_cast<double>(std::numeric_limits<std::int32_t>::max()))
        return std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(value);
}

/// Adds 0.5 and truncates toward zero: -3.2 gives -2.
constexpr std::int32_t RoundHalf(double value) {
    return TruncToInt(value + 0.5);
}

/// Grey of a colour with the weights of automatic contrast, palettes and fills, truncated.
constexpr std::uint8_t LumaOf(std::uint32_t blue, std::uint32_t green, std::uint32_t red) {
    return static_cast<std::uint8_t>((601 * green + 306 * red + 117 * blue) >> 10);
}

}  // namespace velloran

#pragma once

// A nearly vertical line over a page in one 32-bit value: its x in the top row in the low half, in
// the bottom row in the high half, both signed. 0 is a line that is not set.

#include <algorithm>
#include <cstdint>
#include <vector>

namespace velloran {

struct PageLine {
    int top = 0, bottom = 0;  // x in the top row and in the bottom row
    bool operator==(const PageLine&) const = default;
};

constexpr PageLine UnpackLine(std::int32_t packed) {
    const auto bits = static_cast<std::uint32_t>(packed);
    return {static_cast<std::int16_t>(bits), static_cast<std::int16_t>(bits >> 16)};
}

/// Coordinates beyond 16 bits are limited to what they hold.
constexpr std::int32_t PackLine(const PageLine& line) {
    const auto half = [](int x) {
        return static_cast<std::uint32_t>(std::clamp(x, -32768, 32767)) & 0xFFFFU;
    };
    return static_cast<std::int32_t>(half(line.bottom) << 16 | half(line.top));
}

/// Fills the table with an x for each stored row, the bottom row first: an integer walk (J.
/// Bresenham, "Algorithm for Computer Control of a Digital Plotter", 1965) from `x1` in the top row
/// to `x2` in the bottom row, each limited to 0..width - 1. Throws std::bad_alloc.
void lineTable(std::vector<int>& table, int x1, int x2, int width, int height);

}  // namespace velloran

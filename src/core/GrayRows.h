#pragma once

// The grey of rows of colours.

#include <cstdint>

namespace velloran {

/// (114 blue + 587 green + 299 red + 500) / 1000, truncated, of so many pixels of three bytes each.
/// (The luma of Recommendation ITU-R BT.601.)
void GrayOfColors(const std::uint8_t* pixels, int count, std::uint8_t* gray);

}  // namespace velloran

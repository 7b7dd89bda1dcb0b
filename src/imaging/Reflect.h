#pragma once

// Rows and pixels beyond the edge: the reflection that repeats the edge.

#include <cstdint>
#include <span>
#include <vector>

#include "imaging/TapGroups.h"

namespace velloran {

/// Row or column -1 - i is i, folded again while it lies outside. `size` > 0.
int Reflect(int index, int size);

/// Widens a run of whole pixels of a row that may begin and end outside.
void WidenReflected(std::span<const std::uint8_t> row, int channels, int firstPixel, int pixels,
                    std::uint16_t* samples);

/// The taps of one direction, `step` samples apart.
std::vector<Tap> TapsAt(std::span<const std::int32_t> weights, std::int32_t step);

}  // namespace velloran

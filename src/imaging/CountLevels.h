#pragma once

// Histograms.

#include <array>
#include <cstdint>

#include "core/PlaneView.h"

namespace velloran {

using LevelCounts = std::array<std::uint32_t, 256>;

/// Counts of every sample of one channel (0 is blue; 0 for a plane of 1 channel). Rows in
/// parallel.
LevelCounts CountLevels(ConstPlaneView pixels, int channel = 0);

}  // namespace velloran

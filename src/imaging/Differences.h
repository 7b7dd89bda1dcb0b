#pragma once

// How two pictures of one size differ, sample by sample.

#include <array>
#include <cstdint>

#include "core/PlaneView.h"

namespace velloran {

struct DifferenceCounts {
    /// Per channel, of the absolute differences 0 to 255 of all pixels.
    std::array<std::array<std::uint64_t, 256>, 3> levels{};
    std::uint64_t differentPixels = 0;  // in any of their channels
};

/// Counts over two views of equal width, height and channels. Throws std::bad_alloc; polls the
/// token of the work under way, and counts on from there nothing more.
DifferenceCounts CountDifferences(ConstPlaneView a, ConstPlaneView b);

/// |a - b| of every sample.
void WriteDifferences(ConstPlaneView a, ConstPlaneView b, PlaneView out);

}  // namespace velloran

#pragma once

// The quick way of a separable filter with few taps: both directions in one walk over the page, in
// place. Each thread works down a band of rows and holds the rows that it still needs in its cache.

#include <cstddef>
#include <cstdint>
#include <span>

#include "core/PlaneView.h"
#include "imaging/Separable.h"

namespace velloran {

/// Whether the rows that a filter of so many taps needs at once stay in a cache.
bool FitsInBands(ConstPlaneView pixels, std::size_t taps);

/// FilterInPlace by bands.
void FilterInBands(PlaneView pixels, std::span<const std::int32_t> taps, std::int32_t divisor,
                   const MixSamples& mix);

}  // namespace velloran

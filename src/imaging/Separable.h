#pragma once

// Separable filters with integer taps: an odd count, the anchor in the middle. Samples beyond the
// edge are the reflection that repeats the edge sample (row -1 - i is row i), folded again where
// the plane is smaller than the taps. Each sum is divided by `divisor` (> 0), rounded to nearest
// (halves away from zero) and saturated to 8 bits. Rows run in parallel; results are the same for
// any number of threads.

#include <cstdint>
#include <functional>
#include <span>

#include "core/PlaneView.h"

namespace velloran {

/// One pass along the columns or along the rows. `source` and `target` have equal sizes and must
/// not overlap. Throws std::bad_alloc.
void FilterColumns(ConstPlaneView source, std::span<const std::int32_t> taps, std::int32_t divisor,
                   PlaneView target);
void FilterRows(ConstPlaneView source, std::span<const std::int32_t> taps, std::int32_t divisor,
                PlaneView target);

/// Makes the new samples of a target from filtered ones and from those that it holds.
using MixSamples =
    std::function<void(const std::uint8_t* filtered, int count, std::uint8_t* target)>;

/// Columns, then rows, in place. With `mix`, its results stand instead of the filtered samples; it
/// is called for parts of rows, from several threads. Throws std::bad_alloc before any pixel has
/// changed.
void FilterInPlace(PlaneView pixels, std::span<const std::int32_t> taps, std::int32_t divisor,
                   const MixSamples& mix = {});

}  // namespace velloran

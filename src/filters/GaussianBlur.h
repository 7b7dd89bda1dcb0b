#pragma once

// Gaussian blur with integer taps. Samples beyond the edge are the reflection that repeats the
// edge sample; the result of the vertical pass is 8 bits.

#include <cstdint>
#include <vector>

#include "core/PlaneView.h"
#include "imaging/Separable.h"

namespace velloran {

struct GaussianKernel {
    std::vector<std::int32_t> taps;  // an odd count, at most 801
    std::int32_t sum = 0;            // the divisor
};

/// Taps in thousandths, scaled by the centre and one side only (so they add up to about 2000),
/// up to where they fall below one thousandth. Sigma is positive. Throws std::bad_alloc.
GaussianKernel MakeGaussianKernel(float sigma);

/// Five taps in thousandths of the whole.
GaussianKernel MakeFiveTaps(float sigma);

/// Columns, then rows, in place. With `mix` the new samples are made by it from the filtered ones
/// and the old. 0, pixels unchanged, without memory.
int SeparableFilter(PlaneView pixels, const GaussianKernel& kernel, const MixSamples& mix = {});

int GaussianBlurInPlace(PlaneView pixels, float sigma, const MixSamples& mix = {});

}  // namespace velloran

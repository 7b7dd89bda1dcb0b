#pragma once

// Convolutions with small kernels. Rows run in parallel; results are the same for any number of
// threads. The kernel is laid on the picture as stored: row-major, not mirrored.

#include <cstdint>
#include <memory>
#include <span>

#include "core/PlaneView.h"

namespace velloran {

/// Integer weights, each sum divided by `divisor` (> 0), rounded to nearest (halves away from
/// zero) and saturated. `source` is the bordered copy of `target` with size / 2 pixels of border;
/// `size` is odd, `weights` has size * size entries.
void ConvolveInt(ConstPlaneView source, std::span<const std::int32_t> weights, int size,
                 std::int32_t divisor, PlaneView target);

/// Float weights, summed in 32-bit floats, rounded to nearest (halves away from zero) and
/// saturated.
void ConvolveFloat(ConstPlaneView source, std::span<const float> weights, int size,
                   PlaneView target);

/// ConvolveFloat for several planes of equal channels: all memory is taken at the start.
class FloatConvolver {
 public:
    /// Throws std::bad_alloc.
    FloatConvolver(std::span<const float> weights, int size, int channels);
    ~FloatConvolver();

    void Run(ConstPlaneView source, PlaneView target);

 private:
    struct Form;  // weights and scratch as the loops want them
    std::unique_ptr<Form> form_;
};

}  // namespace velloran

#pragma once

// Convolutions with small kernels. Rows run in parallel; results are the same for any number of
// threads. The kernel is laid on the picture as stored: row-major, not mirrored.

#include <cstdint>
#include <functional>
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

/// One pass of a separable filter with integer taps (an odd count, anchor in the middle), along
/// the columns or along the rows; samples beyond the edge are the reflection that repeats the edge
/// sample (row -1 - i is row i), folded again where the plane is smaller than the taps. Each sum
/// is divided by `divisor`, rounded to nearest and saturated to 8 bits. `source` and `target` have
/// equal sizes and must not overlap.
void FilterColumns(ConstPlaneView source, std::span<const std::int32_t> taps, std::int32_t divisor,
                   PlaneView target);
void FilterRows(ConstPlaneView source, std::span<const std::int32_t> taps, std::int32_t divisor,
                PlaneView target);

/// Makes the new samples of a target from filtered ones and from those that it holds.
using MixSamples =
    std::function<void(const std::uint8_t* filtered, int count, std::uint8_t* target)>;

/// FilterRows with `mix` in place of storing; called for parts of rows, from several threads.
void FilterRowsMixed(ConstPlaneView source, std::span<const std::int32_t> taps,
                     std::int32_t divisor, PlaneView target, const MixSamples& mix);

}  // namespace velloran

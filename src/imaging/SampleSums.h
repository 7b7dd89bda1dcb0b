#pragma once

// Weighted sums of widened samples, whatever the size of their weights.

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "imaging/TapGroups.h"

namespace velloran {

/// Bytes as the sums want them.
void Widen(const std::uint8_t* samples, int count, std::uint16_t* out);
void Widen(const std::uint8_t* samples, int count, float* out);

class SampleSums {
 public:
    /// `divisor` > 0. Throws std::bad_alloc.
    SampleSums(std::span<const Tap> taps, std::int32_t divisor);

    /// out[i] = the sum at samples + i divided, rounded to nearest (halves away from zero) and
    /// limited to 0..255. `samples` is readable, at every offset, up to the next multiple of
    /// kSumBlock.
    void Row(const std::uint16_t* samples, int count, std::uint8_t* out) const;

 private:
    std::vector<Tap> taps_;
    std::int64_t divisor_;
    std::optional<TapGroups> groups_;  // for weights that it can hold
};

}  // namespace velloran

#pragma once

// Weighted sums of small integers, the heart of the integer convolutions. Samples that share a
// weight are added first and multiplied once: kernels of pictures have few different weights.

#include <cstdint>
#include <span>
#include <vector>

namespace velloran {

/// One sample that enters a sum: how far it lies from the place of the sum, and its weight.
struct Tap {
    std::int32_t offset = 0;
    std::int32_t weight = 0;
};

/// A sum of `kFirst` samples and one of `kSecond`, each with its own weight.
template <int kFirst, int kSecond>
struct TapStep {
    std::int32_t first[kFirst], second[kSecond];  // offsets
    std::int16_t firstWeight, secondWeight;
};

class TapGroups {
 public:
    /// Weights of 16 bits whose sums stay small enough for the quick division below.
    static bool CanHold(std::span<const Tap> taps, std::int32_t divisor);

    /// `divisor` is positive and the taps pass CanHold. Throws std::bad_alloc.
    TapGroups(std::span<const Tap> taps, std::int32_t divisor);

    /// The sum in parts: samples that share their weight by fours and by twos, those that do not,
    /// and a two beside a one where both are left over.
    std::span<const TapStep<4, 4>> Fours() const { return fours_; }
    std::span<const TapStep<2, 2>> Twos() const { return twos_; }
    std::span<const TapStep<2, 1>> TwoAndOne() const { return twoAndOne_; }
    std::span<const TapStep<1, 1>> Ones() const { return ones_; }

    // Quotients rounded to nearest as truncated floats: (sum + Offset) * Step. The quarter in the
    // offset keeps exact quotients on the right side of the truncation; the next quotient below is
    // half a step away.
    float Step() const { return step_; }
    float Offset() const { return offset_; }

 private:
    std::vector<TapStep<4, 4>> fours_;
    std::vector<TapStep<2, 2>> twos_;
    std::vector<TapStep<2, 1>> twoAndOne_;
    std::vector<TapStep<1, 1>> ones_;
    float step_, offset_;
};

/// Samples that are summed at once. `samples` must be readable, at every offset, up
/// to the next multiple of it.
inline constexpr int kSumBlock = 64;

/// out[i] = the sum at samples + i divided, rounded to nearest and limited to 0..255. Samples are
/// 0..255.
void SumTaps(const TapGroups& taps, const std::uint16_t* samples, int count, std::uint8_t* out);

}  // namespace velloran

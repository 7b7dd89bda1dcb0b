#pragma once

// The one rule by which samples of any depth become 8 bits: above 8 bits the 8 highest stay, as
// they are; below 8 bits the levels are spread evenly, so that the highest becomes 255. Samples of
// 16 bits thus keep their high byte, which gives back what was widened from 8 bits, whether by
// repeating the byte or by zeros. Internal to the codecs.

#include <algorithm>
#include <cstdint>

namespace velloran {

class SampleDepth {
 public:
    /// `bits` from 1 to 62.
    explicit SampleDepth(int bits) : bits_(bits), most_((std::int64_t{1} << bits) - 1) {}

    /// Samples outside of their depth are limited first.
    std::uint8_t To8Bits(std::int64_t sample) const {
        const std::int64_t limited = std::clamp<std::int64_t>(sample, 0, most_);
        if (bits_ >= 8)
            return static_cast<std::uint8_t>(limited >> (bits_ - 8));
        return static_cast<std::uint8_t>((limited * 255 + most_ / 2) / most_);
    }

 private:
    int bits_;
    std::int64_t most_;
};

}  // namespace velloran

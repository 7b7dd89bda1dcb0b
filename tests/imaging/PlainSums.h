#pragma once

// What tests of weighted sums share: planes of sizes at which something may go wrong, and the
// rounding by its definition.

#include <algorithm>
#include <cstdint>
#include <vector>

#include "imaging/SamplePlane.h"

namespace velloran::test {

using Weights = std::vector<std::int32_t>;

inline constexpr int kSides[] = {1, 2, 3, 7, 16, 17};
inline constexpr int kLargeWidth = 1111, kLargeHeight = 150;  // several tiles

/// Halves away from zero, limited.
inline std::uint8_t RoundedQuotient(std::int64_t sum, std::int64_t divisor) {
    const std::int64_t twice = sum < 0 ? 0 : (2 * sum + divisor) / (2 * divisor);
    return static_cast<std::uint8_t>(std::min<std::int64_t>(twice, 255));
}

/// Calls `trial` with a plane of each kind and size.
template <typename Trial>
void ForManyPlanes(Trial&& trial) {
    for (const int channels : {1, 3}) {
        for (const Content content : kContents)
            for (const int width : kSides)
                for (const int height : kSides)
                    trial(MakeSamples(width, height, channels, content));
        trial(MakeSamples(kLargeWidth, kLargeHeight, channels, Content::kNoise));
        trial(MakeSamples(kLargeWidth, kLargeHeight, channels, Content::kBlackAndWhite));
    }
}

}  // namespace velloran::test

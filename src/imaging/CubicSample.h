#pragma once

// One sample between others by cubic convolution.

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "core/PlaneView.h"
#include "imaging/CubicWeights.h"

namespace velloran {

/// The pixel at (xSteps, ySteps), in 1/kCubicSteps of a pixel, borders replicated. Sums of products
/// are kept to 31 bits: 3 of the 24 fraction bits go between the two directions.
template <int kChannels>
inline void CubicSample(ConstPlaneView source, std::int64_t xSteps, std::int64_t ySteps,
                        std::uint8_t* out) {
    constexpr int kBetween = 3, kShift = 21;
    static_assert(kCubicSteps == 256 && kCubicOne == 1 << 12);
    const int left = static_cast<int>(xSteps >> 8) - 1, top = static_cast<int>(ySteps >> 8) - 1;
    const std::int16_t* across = kCubicWeights[static_cast<std::size_t>(xSteps & 255)].data();
    const std::int16_t* down = kCubicWeights[static_cast<std::size_t>(ySteps & 255)].data();
    const std::uint8_t* rows[4];
    std::ptrdiff_t columns[4];
    for (int i = 0; i < 4; ++i) {
        rows[i] = source.first + std::clamp(top + i, 0, source.height - 1) * source.stride;
        columns[i] = std::ptrdiff_t{std::clamp(left + i, 0, source.width - 1)} * kChannels;
    }
    for (int c = 0; c < kChannels; ++c) {
        std::int32_t sum = 1 << (kShift - 1);
        for (int j = 0; j < 4; ++j) {
            const std::uint8_t* row = rows[j] + c;
            const std::int32_t line = across[0] * row[columns[0]] + across[1] * row[columns[1]] +
                                      across[2] * row[columns[2]] + across[3] * row[columns[3]];
            sum += down[j] * (line >> kBetween);
        }
        out[c] = static_cast<std::uint8_t>(std::clamp(sum >> kShift, 0, 255));
    }
}

}  // namespace velloran

#pragma once

// Weights of the cubic convolution kernel, as integers.

#include <array>
#include <cstdint>

namespace velloran {

/// Fractions are counted in 1/256 of a pixel, weights in 1/4096.
inline constexpr int kCubicSteps = 256, kCubicOne = 4096;

/// Four weights a fraction, for the samples at -1, 0, 1 and 2; they add up to kCubicOne.
using CubicWeights = std::array<std::array<std::int16_t, 4>, kCubicSteps>;

/// The kernel with a = -1/2 (R. Keys, 1981), rounded; what rounding leaves over goes to the nearer
/// middle sample.
constexpr CubicWeights MakeCubicWeights() {
    CubicWeights table{};
    for (int step = 0; step < kCubicSteps; ++step) {
        const double t = static_cast<double>(step) / kCubicSteps;
        const double exact[4] = {((-0.5 * t + 1.0) * t - 0.5) * t, (1.5 * t - 2.5) * t * t + 1.0,
                                 ((-1.5 * t + 2.0) * t + 0.5) * t, (0.5 * t - 0.5) * t * t};
        int sum = 0;
        for (int i = 0; i < 4; ++i) {
            const double scaled = exact[i] * kCubicOne;
            const int rounded = static_cast<int>(scaled < 0 ? scaled - 0.5 : scaled + 0.5);
            table[static_cast<std::size_t>(step)][static_cast<std::size_t>(i)] =
                static_cast<std::int16_t>(rounded);
            sum += rounded;
        }
        auto& nearer = table[static_cast<std::size_t>(step)][step < kCubicSteps / 2 ? 1 : 2];
        nearer = static_cast<std::int16_t>(nearer + kCubicOne - sum);
    }
    return table;
}
inline constexpr CubicWeights kCubicWeights = MakeCubicWeights();

}  // namespace velloran

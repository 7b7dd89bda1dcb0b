#pragma once

// The recursive smoothing of a line, done for many lines side by side.

#include <cstdint>

namespace velloran {

/// Lines that are smoothed at a time: sample i of all of them, then sample i + 1.
inline constexpr int kSmoothedLines = 32;

/// Forth and back over `length` samples: in each step a state of 9.7 bits moves by `alpha` (0 to
/// 65535) / 65536 of its distance to the sample, rounded down. `kept` is scratch of the same size.
void SmoothLines(std::uint8_t* samples, int length, int alpha, std::int16_t* kept);

}  // namespace velloran

#pragma once

// Small convolutions over the working image, borders replicated, sums rounded to nearest and
// limited to 0..255.

#include <array>
#include <span>

namespace velloran {

class CDibImage;

/// Corners `a`, edge neighbours `b`, centre `c`; sums divided by `divisor`, which is positive.
/// Refuses sides below 6 and depths below 8; 0, image unchanged, then and without memory.
int Filter3x3(CDibImage& image, int a, int b, int c, int divisor);

using Kernel5x5 = std::array<int, 25>;

/// Weights as floats without a divisor. Refuses sides of 5 and less; normalises the depth first.
int Filter5x5(CDibImage& image, const Kernel5x5& kernel);

/// The general form: `size` x `size` weights, size odd. The depth must be 8 or 24 bits.
int FilterSquare(CDibImage& image, std::span<const float> kernel, int size);

}  // namespace velloran

#pragma once

// Automatic levels, contrast, brightness and bleach: twelve ways to stretch the tone range of a
// page from its own histogram.

#include <array>
#include <cstdint>

#include "tone/PixelMap.h"

namespace velloran {

class CDibImage;

using Histogram = std::array<std::uint32_t, 256>;

/// Modes 1 to 12 as listed for PARA_AUTO_LEVELS. 0 for an image below 2 x 2 (untouched) and, after
/// the depth was normalised, for a mode out of range; bleach also wants 3 x 3 and 10 pixels.
int AutoLevels(CDibImage& image, int mode);

/// The two points where the count from each end comes nearest to its share of the total.
void ClipPoints(const Histogram& histogram, double lowFraction, double highFraction, int& low,
                int& high);

/// Linear stretch of low..high to 0..255, rounded; the identity when low = high or 0..255.
void StretchTable(PixelMap& table, int low, int high);

}  // namespace velloran

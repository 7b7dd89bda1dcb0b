#pragma once

// From the histogram of a page to the table that stretches its tones.

#include <array>
#include <cstdint>

#include "tone/PixelMap.h"

namespace velloran {

/// Pixels of each level; a page has fewer than 2^31.
using Histogram = std::array<std::uint32_t, 256>;

/// The two points where the count from each end comes nearest to its share of the total. The point
/// told is the level beyond the one at which the count stopped, at both ends; 0 and 255 where it
/// never stops. low <= high.
void ClipPoints(const Histogram& histogram, double lowFraction, double highFraction, int& low,
                int& high);

/// Linear stretch of the levels between the two points (0..255, in either order) to 0..255,
/// rounded; the identity when low = high or 0..255.
void StretchTable(PixelMap& table, int low, int high);

/// Half a stretch, the clip points moved half way to black and white, and a slight gamma above it.
PixelMap BrightnessTable(const Histogram& histogram, double fraction);

/// Dark and light point of a page that is to be bleached.
struct BleachPoints {
    int low = 255, high = 255;
};

/// Shares of the dark and of the light levels that lie beyond the points.
struct BleachShares {
    double dark, light;
};

/// The dark point from the levels 5 to 126, the light point from 127 to 253; 255 where a search
/// ends without one. `firstSummed` is the first of the 122 levels whose pixels are the whole of
/// which the dark share is taken.
BleachPoints FindBleachPoints(const Histogram& histogram, BleachShares shares, int firstSummed);

}  // namespace velloran

#pragma once

// Manual levels: each channel between a black and a white input point, then all channels between
// the master points. A point is one byte of a packed value: red, green, blue, master from the low
// byte up.

#include <array>
#include <cstdint>

#include "tone/PixelMap.h"

namespace velloran {

class CDibImage;

/// 0, image unchanged, for an invalid image, sides below 2, equal values and the neutral pair
/// (0, 0xFFFFFFFF). An 8-bit image knows only the master points; its indices are mapped.
int ApplyLevels(CDibImage& image, std::uint32_t shadow, std::uint32_t light);

/// Linear between the two points, whichever is lower; the identity where they are equal or 0 and
/// 255.
PixelMap LevelTable(int shadow, int light);

/// The input point that cuts `percent` of the tonal mass (level * count): counted from black up or
/// from white down. From below 256 where none does, from above 0.
int LevelsPoint(const std::array<std::uint32_t, 256>& histogram, double percent, bool fromLow);

}  // namespace velloran

#pragma once

// Fills what lies outside the page: places that a rotation or a warp left without pixels.

#include <cstdint>

namespace velloran {

class CDibImage;

/// Gives `color` (0x00BBGGRR) to every pixel that has a 0 of the 8-bit `mask` at or next to it; the
/// pixel's width more hides the seam of an interpolation. Images of 8 bits take the colour's grey
/// as their index, those below the palette entry nearest to that grey. 0, image unchanged, when the
/// sizes differ or a side is below 10 pixels.
int FillOutsideMask(CDibImage& image, const CDibImage& mask, std::uint32_t color);

}  // namespace velloran

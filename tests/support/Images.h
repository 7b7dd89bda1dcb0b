#pragma once

// Builders of small images, and the comparison that names the first pixels that differ.

#include <cstdint>
#include <vector>

#include "core/DibImage.h"

namespace velloran::test {

/// All pixel bytes `value`; row padding 0. 1, 4 and 8 bits take the grey palette.
CDibImage Filled(int width, int height, int bpp, std::uint8_t value);

/// Every pixel byte from a fixed pseudo-random sequence; padding 0; grey palette.
CDibImage Noise(int width, int height, int bpp, std::uint32_t seed = 1);

/// 8-bit grey, or 24-bit when channels is 3, from rows told top row first; colour samples in the
/// order red, green, blue.
CDibImage FromRows(const std::vector<std::vector<int>>& rows, int channels = 1);

/// One pixel as red, green, blue, through the palette where there is one; row 0 is the top row.
struct Rgb {
    int red = 0, green = 0, blue = 0;
    bool operator==(const Rgb&) const = default;
};
Rgb PixelAt(const CBaseImage& image, int x, int y);
/// Palette index at 1, 4 and 8 bits; row 0 is the top row.
int IndexAt(const CBaseImage& image, int x, int y);
void SetIndex(CBaseImage& image, int x, int y, int index);
void SetPixel(CBaseImage& image, int x, int y, Rgb color);  // 24 bits
void SetPalette(CBaseImage& image, const std::vector<Rgb>& entries);

/// Equal size, depth, palette and pixel bytes (not padding); names the first five differing pixels.
void ExpectSamePixels(const CBaseImage& actual, const CBaseImage& expected);

}  // namespace velloran::test

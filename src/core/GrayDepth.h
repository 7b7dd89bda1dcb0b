#pragma once

// Changes of depth that every floor needs: to the two forms that tone and filters handle, to grey,
// and what writers ask for.

#include <cstdint>

namespace velloran {

class CDibImage;
class CBaseImage;

/// Brings any image to 24 bits, or to 8 bits with the identity grey ramp where every palette entry
/// that a pixel uses is grey within 5 levels (differences below 5). Pure black-and-white 1-bit
/// images become 8-bit grey of 0 and 255. Source record, DPI, planes and fields stay. Returns
/// non-zero when the image is valid afterwards; 0, image unchanged, when empty or without memory.
/// A transparent index goes to the grey of its entry, or is dropped where another used entry
/// shares that grey and where the palette goes; the transparent colour then tells it.
int EnsureGrayOrRgb(CDibImage& image);

/// To 8 bits with the identity grey ramp. Palettes by (601 G + 306 R + 117 B) >> 10; 24-bit pixels
/// by (299 R + 587 G + 114 B + 500) / 1000. 0, image unchanged, when refused.
int ConvertToGray(CDibImage& image);

/// To 24 bits through the palette, keeping source record and fields. 0 when refused.
int ConvertToRgb(CDibImage& image);

/// True when the pixels use no palette entry of which two channels differ by `tolerance` or more.
/// Only for images with a palette; indices past the palette's end count as grey.
bool UsesOnlyGrayEntries(const CBaseImage& image, int tolerance);

}  // namespace velloran

#pragma once

// TIFF pages of rarer kinds, through libtiff's own conversion to red, green, blue and alpha.

#include <cstdint>

#include "codecs/TiffFormat.h"

namespace velloran {

class CDibImage;

/// Bytes of scratch that ReadTiffRgba takes; 0 when the page's strips or tiles are out of range.
std::int64_t TiffRgbaScratch(TIFF* tiff, const TiffFormat& format);

/// Decodes into a 24-bit page of the stored size, as stored (not turned upright). Returns the
/// count of whole rows from the top.
int ReadTiffRgba(TIFF* tiff, const TiffFormat& format, CDibImage& page);

}  // namespace velloran

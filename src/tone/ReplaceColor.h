#pragma once

// Replacement of a colour: of pixels near a sample, or of pixels in which one channel stands out.

#include <cstdint>

namespace velloran {

class CDibImage;

/// Types 1 to 8 as listed for PARA_REPLACE_COLOR_TYPE; colours 0x00BBGGRR. Type 1 has a soft edge
/// one Lab unit wide. Palettes are replaced in their entries. `threshold` is limited to 0..255;
/// 0 does nothing (0) for types 3 to 8. 0 for other types and an invalid image.
int ReplaceColor(int type, CDibImage& image, std::uint32_t from, std::uint32_t to, int threshold);

}  // namespace velloran

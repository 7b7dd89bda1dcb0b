#pragma once

// Which colours an image uses.

#include <array>
#include <cstdint>
#include <optional>

#include "core/DibImage.h"
#include "reduce/Palette.h"

namespace velloran {

/// Distinct colours at 24 bits, distinct palette indices below. 0 for an empty image and where
/// the 2 MiB set cannot be allocated.
int CountColors(const CDibImage& image);

/// Which indices an image of 1, 4 or 8 bits uses.
std::array<bool, 256> UsedIndices(const CDibImage& image);

struct ExactPalette {
    Palette palette;            // empty where there are more colours than wanted
    bool reservedFound = true;  // false: the reserved colour is none of the image's
};

/// All colours of a 24-bit image in ascending 0xRRGGBB order, or all levels of an 8-bit grey one,
/// where they are at most `count`; a reserved colour (0x00BBGGRR, 0xFFFFFFFF for none) that the
/// image lacks counts as one more and is listed too. Other images have no exact palette.
ExactPalette CollectExactPalette(const CDibImage& image, int count, std::uint32_t reservedColor);

}  // namespace velloran

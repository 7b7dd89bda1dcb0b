#pragma once

// What packing is made of, for steps that want the result's memory before they touch the image.

#include <array>
#include <cstdint>

#include "core/DibImage.h"
#include "reduce/Palette.h"

namespace velloran {

/// An image of the same size at `bits` depth (1, 4 or 8) with the palette, pixels not set; empty
/// when refused.
CDibImage MakePackTarget(const CDibImage& image, int bits, const Palette& palette);

/// Byte 0 of each pixel of an 8-bit or 24-bit image becomes the index in a target of its size.
void PackIndicesInto(const CDibImage& indices, CDibImage& target);

/// Levels of an 8-bit image become indices at `bits` depth; 0 when refused.
int PackLevels(CDibImage& image, int bits, const Palette& palette,
               const std::array<std::uint8_t, 256>& indexOfLevel);

}  // namespace velloran

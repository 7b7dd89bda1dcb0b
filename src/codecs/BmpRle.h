#pragma once

// Run-length coded BMP pixels. Internal to the codecs.

#include <cstdint>
#include <span>

namespace velloran {

class CDibImage;
struct BmpHead;

/// Decodes 4, 8 and 24 bits into an image of the head's size, rows cleared before. Runs that leave
/// the picture are cut. Pixels that the codes skip stay as they are. Returns how many rows, in the
/// file's order, were told before the codes ended: all of them behind an end code.
int DecodeBmpRle(std::span<const std::uint8_t> codes, const BmpHead& head, CDibImage& image);

}  // namespace velloran

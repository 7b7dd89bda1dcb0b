#pragma once

// A page of one colour, for steps to draw on.

#include <cstdint>

namespace velloran {

class CDibImage;

/// Gives every pixel of an 8-bit or 24-bit image the colour (0x00BBGGRR); at 8 bits its grey, by
/// (117 B + 601 G + 306 R) >> 10.
void FillWithColor(CDibImage& page, std::uint32_t color);

}  // namespace velloran

#pragma once

// Printing inks to screen colours. Internal to the codecs.

#include <cstdint>

namespace velloran {

/// Turns `width` pixels of four bytes (cyan, magenta, yellow, black; 255 is full ink, with `invert`
/// no ink) into blue, green, red. The colour is the multilinear blend of the sixteen corners of
/// the ink cube, truncated; the arithmetic is exact.
void ConvertCmykRow(const std::uint8_t* cmyk, std::uint8_t* bgr, int width, bool invert);

}  // namespace velloran

#pragma once

// Rows of palette indices: packed as images hold them, and one byte a pixel.

#include <cstdint>

namespace velloran {

/// Packs one index a byte into a row of 1, 4 or 8 bits a pixel; an index that the depth cannot
/// hold becomes 0.
void PackIndexRow(const std::uint8_t* indices, int width, int bpp, std::uint8_t* row);

/// The reverse, for 1, 2, 4 and 8 bits.
void UnpackIndexRow(const std::uint8_t* row, int width, int bpp, std::uint8_t* indices);

}  // namespace velloran

#pragma once

// Rows become columns: the kernel under the quarter turns.

#include <cstddef>
#include <cstdint>

namespace velloran {

/// Rows of packed pixels; a negative stride turns the rows upside down.
struct PackedRows {
    const std::uint8_t* first = nullptr;
    int width = 0, height = 0;  // in pixels
    std::ptrdiff_t stride = 0;  // bytes from a row to the next
};

/// Pixel (x, y) of `source` becomes pixel (y, x) of the target, whose rows are source.height pixels
/// wide. 1, 4, 8 or 24 bits a pixel. Target bytes behind the last pixel of a row stay, but the
/// unused bits of its last byte become 0.
void TransposePixels(const PackedRows& source, int bpp, std::uint8_t* target,
                     std::ptrdiff_t targetStride);

}  // namespace velloran

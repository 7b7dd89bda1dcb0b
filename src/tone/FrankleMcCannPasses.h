#pragma once

// The passes of the Frankle-McCann retinex over one channel: every pixel meets the one `shift`
// pixels before it, along the rows and then down the columns.

#include <cstdint>

namespace velloran {

/// Logarithms and the running result, `width` values a row, rows from the top; values 0..32767 and
/// no result below its logarithm.
struct RetinexPlanes {
    const std::uint16_t* logs = nullptr;
    std::uint16_t* result = nullptr;
    int width = 0, height = 0;
};

inline constexpr int kRetinexWhite = 32767;

/// result = (result + 1 + min(white, log - log of the neighbour + result of the neighbour)) / 2,
/// in ascending order: with a positive shift the neighbour lies before the pixel and has its new
/// result, with a negative one it lies behind.
void MeetAlongRows(const RetinexPlanes& planes, int shift);
void MeetDownColumns(const RetinexPlanes& planes, int shift);

}  // namespace velloran

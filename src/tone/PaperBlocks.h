#pragma once

// What square blocks of a page tell of its paper: mean and contrast of each, the black level of the
// whole, and the stretch of a sample between that black and the paper around it.

#include <array>
#include <cstdint>
#include <vector>

#include "core/PlaneView.h"
#include "tone/PixelMap.h"

namespace velloran {

/// Side of a block: a three-hundredth of the longer side of the page, rounded up, 7 to 12.
int PaperBlockSide(int width, int height);

struct BlockSums {
    std::uint32_t sum = 0, squares = 0;
};

/// Whole blocks only, counted from the first row and column; what is left over belongs to none.
struct PaperBlocks {
    int side = 0, columns = 0, rows = 0;
    std::vector<BlockSums> sums;  // rows one behind the other

    int PixelsPerBlock() const { return side * side; }
};

/// One channel. No blocks where a side of the plane is shorter than a block. Throws std::bad_alloc.
PaperBlocks SumPaperBlocks(ConstPlaneView plane);

/// First level at which the pixels of the whole blocks, counted from black, reach `share` of all of
/// them; at least 7.
int PaperBlackLevel(ConstPlaneView plane, const PaperBlocks& blocks, double share);

/// Sample by background level, then by the page's sample.
using PaperTable = std::array<PixelMap, 256>;

/// White from the paper's tone on, which is the background less `magnitude`; below it a linear
/// stretch from `black`. Where both are the same the sample stays.
void MakePaperTable(int black, int magnitude, PaperTable& table);

/// Samples of a row through the table, in place.
void MapPaperRow(const PaperTable& table, const std::uint8_t* background, int count,
                 std::uint8_t* samples);

}  // namespace velloran

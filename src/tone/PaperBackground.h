#pragma once

// The tone of the paper behind each pixel of a page: one sample a block, smoothed and seen at full
// size.

#include <cstdint>
#include <vector>

#include "imaging/FloatView.h"
#include "tone/EnlargedRows.h"

namespace velloran {

class PaperBackground {
 public:
    /// `samples` holds `columns` times `rows` samples, one at least; they are smoothed by
    /// SmoothPlane's rule, which leaves sides of 3 and less alone. Throws std::bad_alloc.
    PaperBackground(std::vector<std::uint8_t> samples, int columns, int rows, double smoothRadius,
                    int width, int height);

    /// Samples of row y, rounded to nearest, in memory of the calling thread: the next call of the
    /// same thread overwrites them.
    const std::uint8_t* Row(int y);

 private:
    struct RowScratch {
        std::vector<float> blended, row;
        std::vector<std::uint8_t> samples;
    };

    FloatPlane small_;
    int width_;
    EnlargedRows enlarged_;
    std::vector<RowScratch> perThread_;
};

}  // namespace velloran

#pragma once

// A small picture seen at a larger size, row by row, by linear interpolation: steps that need a
// smooth map of the page once do not hold it in full size.

#include <cstddef>
#include <vector>

#include "imaging/FloatView.h"
#include "imaging/ResampleAxis.h"

namespace velloran {

class EnlargedRows {
 public:
    /// `small` must outlive the object and have at least one pixel. Throws std::bad_alloc.
    EnlargedRows(ConstFloatView small, int width, int height);

    /// Floats that Row wants for itself.
    std::size_t ScratchSize() const {
        return static_cast<std::size_t>(small_.width) * static_cast<std::size_t>(small_.channels);
    }

    /// width * channels samples of row y.
    void Row(int y, float* scratch, float* row) const;

 private:
    /// Pixels of a row that lie between the same two of the small picture.
    struct Segment {
        int begin, end, first;
    };

    ConstFloatView small_;
    ResampleAxis down_;
    std::vector<Segment> segments_;  // where they are long enough to be worth it
    std::vector<int> first_;         // by pixel of a row
    std::vector<float> weights_, otherWeights_;
};

}  // namespace velloran

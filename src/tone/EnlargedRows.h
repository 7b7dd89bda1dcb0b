#pragma once

// A small picture seen at a larger size, row by row, by linear interpolation: steps that need a
// smooth map of the page once do not hold it in full size.

#include <cstddef>

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
    ConstFloatView small_;
    int width_;
    ResampleAxis across_, down_;
};

}  // namespace velloran

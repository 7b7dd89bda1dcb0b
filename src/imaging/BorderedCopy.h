#pragma once

// A copy of a plane with its edge pixels repeated outward, as the neighbourhood filters read it.

#include "core/PixelMemory.h"
#include "core/PlaneView.h"

namespace velloran {

/// Pixels of border on each side.
struct BorderWidths {
    int left = 0, top = 0, right = 0, bottom = 0;
};

class BorderedCopy {
 public:
    /// `border` pixels on each side. Throws std::bad_alloc.
    BorderedCopy(ConstPlaneView source, int border)
        : BorderedCopy(source, BorderWidths{border, border, border, border}) {}
    BorderedCopy(ConstPlaneView source, BorderWidths border);

    /// Takes another plane of the same shape in place of the first; nothing is allocated.
    void Fill(ConstPlaneView source);

    /// The whole copy; the source's pixel (x, y) lies at (x + left, y + top).
    ConstPlaneView View() const { return view_; }

 private:
    BorderWidths border_;
    PixelBuffer memory_;
    PlaneView view_;
};

}  // namespace velloran

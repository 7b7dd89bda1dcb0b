#pragma once

// Minimum and maximum over a rectangular window, per channel.

#include "core/PlaneView.h"

namespace velloran {

/// At most kMostWindowSide pixels a side.
struct Window {
    int width = 1, height = 1;
    int anchorX = 0, anchorY = 0;  // position of the output sample in the window
};
inline constexpr int kMostWindowSide = 64;

/// Beyond the edges lies the nearest sample. `source` and `target` have equal sizes and must not
/// overlap. Rows in parallel. Throw std::bad_alloc.
void MinFilter(ConstPlaneView source, Window window, PlaneView target);
void MaxFilter(ConstPlaneView source, Window window, PlaneView target);

}  // namespace velloran

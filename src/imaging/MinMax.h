#pragma once

// Minimum and maximum over a rectangular window, per channel.

#include "core/PlaneView.h"

namespace velloran {

struct Window {
    int width = 1, height = 1;
    int anchorX = 0, anchorY = 0;  // position of the output sample in the window
};

/// `source` is the bordered copy of `target` with anchorX pixels on the left, anchorY rows before
/// the first, and width - 1 - anchorX, height - 1 - anchorY at the other sides (or more: `source`
/// starts at the window's corner of the target's first pixel). Rows in parallel.
void MinFilter(ConstPlaneView source, Window window, PlaneView target);
void MaxFilter(ConstPlaneView source, Window window, PlaneView target);

}  // namespace velloran

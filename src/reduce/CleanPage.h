#pragma once

// Cleaning of a page of levels 0 and 255: ragged edges, specks, blocks, what touches the edge.

#include "core/DibImage.h"
#include "core/QtTypes.h"

namespace velloran {

/// Six hit-or-miss patterns, each in four turns, remove bumps of one to three pixels and fill such
/// notches. An 8-bit image; sides below 10 pixels leave it alone.
int SmoothEdges(CDibImage& image);

struct CleanRequest {
    bool deBlack = false;  // remove what touches the edge
    int blockWidth = 0, blockHeight = 0;
    int blockWidthCondition = 0, blockHeightCondition = 0;  // 0 larger, 1 smaller
    int despeckleSize = 0;  // a component goes when both max - min are at most this
    bool apply = true;      // repaint the image with what remains
    bool growBox = false;   // the box grows by the speck size
};

/// Connected regions of black (below 255, 8-connected) by runs. `outBox` (may be null) receives
/// left, top, right, bottom of what remains, inclusive, y from the top. Non-zero when the work
/// ran.
int CleanComponents(CDibImage& image, QT::QRect* outBox, const CleanRequest& request);

}  // namespace velloran

#pragma once

// Pages of text made black on white: the paper is found in blocks as for shadows, and the ink by
// its share of the page.

#include "core/PlaneView.h"

namespace velloran {

class CDibImage;

/// Grey, or each channel by itself, which keeps the red of a seal. 0 for an invalid image, sides
/// below 8 and without memory; the depth may be changed.
int BlackWhiteText(CDibImage& image, bool keepColor);

/// One channel, rows from the top, in place. 0, plane unchanged, where a side is shorter than a
/// block. Throws std::bad_alloc before its first change.
int BlackWhitePlane(PlaneView plane);

}  // namespace velloran

#pragma once

// How much darker what a threshold made black is than what it made white. Text stands a hundred
// levels from its paper; grain of empty paper, which a local threshold makes as black as text, a
// few.

#include "core/DibImage.h"
#include "page/Margins.h"

namespace velloran {

/// In grey levels of a small copy of the image; 0 where all is black or all is white, for pictures
/// too thin for a small copy, and without memory. `blackWhite` (8 bits, black is 0) shows the part
/// of the image, at any size.
double inkContrast(const CDibImage& image, const PageBox& part, const CDibImage& blackWhite);

/// What such a contrast is worth for the trust in a finding, 0 to 1.
double trustInContrast(double levels);

}  // namespace velloran

#pragma once

// The small grey copy on which the lines and corners of a page are searched, and its upright edges.

#include "core/DibImage.h"

namespace velloran {

/// At most 700 pixels a side; empty without memory.
CDibImage smallGray(const CDibImage& image);

/// What stands out from left to right and runs from top to bottom becomes bright: the darkest of
/// seven samples above each other less the darkest of seven beside each other, joined over gaps.
/// Throws std::bad_alloc.
void edgeImage(CDibImage& gray);

}  // namespace velloran

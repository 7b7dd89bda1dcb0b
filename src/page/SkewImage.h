#pragma once

// The black-and-white copy of a page on which its skew is measured: small, without specks, what
// touches the edge, and long rules, which would outweigh the text.

#include "core/DibImage.h"
#include "page/Deskew.h"
#include "page/Margins.h"

namespace velloran {

/// What of the page is looked at.
PageBox partForSkew(const CDibImage& image, const SkewRegion& region);

/// 8 bits, 0 and 255, sides of at most 1600 pixels. False without memory.
bool prepareSkewImage(const CDibImage& image, const SkewRegion& region, CDibImage& page);

}  // namespace velloran

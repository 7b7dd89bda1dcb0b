#pragma once

// The small grey copy on which the lines and corners of a page are searched, and its upright edges.

#include "core/DibImage.h"

namespace velloran {

/// At most 700 pixels a side; empty without memory.
CDibImage smallGray(const CDibImage& image);

/// How far edgeImage looks across an edge. The band along the side of a sheet is half as wide, the
/// one between two lines of text as wide as their gap: with 7 the dark line of a gutter stands out
/// most, with 13 the side of a sheet does, also beside dense text.
enum EdgeReach : int { kGutterReach = 7, kSideReach = 13 };

/// What stands out from left to right and runs from top to bottom becomes bright: the darkest of
/// seven samples above each other less the darkest of `reach` beside each other, joined over gaps.
/// Throws std::bad_alloc.
void edgeImage(CDibImage& gray, EdgeReach reach);

}  // namespace velloran

#pragma once

// Paper tone and shadows taken off a page: the paper around each pixel is found in blocks, and what
// is as light as the paper becomes white. (J. Sauvola, M. Pietikäinen, "Adaptive Document Image
// Binarization", 2000, for the threshold of a block.)

#include "core/PlaneView.h"

namespace velloran {

class CDibImage;

/// The magnitude 1..50 is the strength; negative keeps colour, positive makes the page grey. 0
/// for strength 0, an invalid image, sides below 8 and without memory; the depth may be changed.
int Unshadow(CDibImage& image, int strength);

/// One channel, rows from the top, in place. 0, plane unchanged, where a side is shorter than a
/// block. Throws std::bad_alloc before its first change.
int UnshadowPlane(PlaneView plane, int magnitude);

}  // namespace velloran

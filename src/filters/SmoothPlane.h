#pragma once

// Recursive exponential smoothing, forward and backward, along the rows and then along the columns
// from the top of the picture.

#include "core/PlaneView.h"

namespace velloran {

class CDibImage;

/// Refuses sides of 3 and less; normalises the depth. A radius that rounds to 0 does nothing.
int SmoothPlane(CDibImage& image, double radius);

/// The smoothing itself, in place, rows from the top. Samples carry 7 fractional bits; the forward
/// result keeps them and the backward pass runs over it. Throws std::bad_alloc.
void SmoothRowsAndColumns(PlaneView topDown, double radius);

}  // namespace velloran

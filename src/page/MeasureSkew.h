#pragma once

// The skew of a page with a judgement of it: the search is asked again on the halves of the page
// and by finer steps, and what it found is as sure as the answers agree. Strength alone tells how
// much text there is, not whether its angle is right.

#include "page/Deskew.h"

namespace velloran {

struct SkewFinding {
    Skew skew;        // as findSkew gives it
    double sure = 0;  // 0 to 1
};

/// findSkew with its judgement; refuses and returns as that does. A page without lines to see, or
/// below 100 pixels in a direction, is 0 sure.
int measureSkew(const CDibImage& image, const SkewRegion& region, int mode, SkewFinding& finding);

}  // namespace velloran

#pragma once

// The lines of a split with a judgement of the gutter: how far the best line stands above the next
// one, and whether the upper and the lower half of the page see it by themselves.

#include "page/PageLines.h"

namespace velloran {

struct SplitFinding {
    UprightLines lines;  // as findPageLines gives them; mid was seen where seesMid is true
    double sure = 0;     // of the gutter, 0 to 1; 0 where none was seen
};

/// 0 for sides below 10 pixels and without memory, else 1. The image stays as it is.
int measureSplit(const CDibImage& image, SplitFinding& finding);

}  // namespace velloran

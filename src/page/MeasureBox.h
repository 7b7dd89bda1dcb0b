#pragma once

// The content box of a page with a judgement of it: how much ink the cut would lose, and whether
// searches that take other things for dirt find the same sides.

#include "page/ContentBox.h"

namespace velloran {

struct BoxFinding {
    PageBox box;         // as findContentBox gives it
    bool found = false;  // there is content; without it the box is the search rectangle
    /// Share of the page's ink that lies outside the box, 0 to 1. Ink is what is black within the
    /// search rectangle but for shadows, what touches the edge, and single pixels.
    double inkLost = 0;
    double sure = 0;  // 0 to 1; 0 for a page without content
};

/// findContentBox with its judgement; refuses and returns as that does.
int measureContentBox(const CDibImage& image, const ContentBoxRequest& request,
                      BoxFinding& finding);

}  // namespace velloran

#pragma once

// How the pages of a kind lie in the picture.

#include <optional>
#include <vector>

#include "samples/PageKinds.h"
#include "samples/Random.h"
#include "samples/Sheet.h"

namespace velloran::samples {

struct Frame {
    int width = 0, height = 0, dpi = 300;
};

/// Where the pages lie, and what of the picture is paper.
struct PagePlaces {
    std::vector<SheetPlace> pages;
    /// The same with left and right of each page changed, for the reverse side.
    std::vector<SheetPlace> reversed;
    /// Paper that is seen, pages with words on them or not; empty: all of the picture.
    Path paper;
    std::optional<GutterTruth> gutter;
    double angleDegrees = 0;
};

PagePlaces PlacePages(const PageRecipe& recipe, const Frame& frame, double angleDegrees,
                      Random& random);

}  // namespace velloran::samples

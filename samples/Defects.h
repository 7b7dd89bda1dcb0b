#pragma once

// What scanning and time add to a page: specks, black edges, shadows, tired paper.

#include <vector>

#include "samples/PagePlaces.h"
#include "samples/PageScan.h"

namespace velloran::samples {

/// Dark round specks over the picture, noted in the truth.
void AddSpecks(Scene& scene, Truth& truth, Random& random);
/// Black bars along two or three edges of the picture, whole pixels wide.
void AddBlackEdges(Scene& scene, Truth& truth, Random& random);
Light MakeLight(const PageRecipe& recipe, const PagePlaces& places, const Frame& frame,
                Random& random);
PaperStock MakeStock(StockKind kind);

}  // namespace velloran::samples

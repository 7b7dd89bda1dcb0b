#pragma once

// What a reduction to a palette is going to do: the list of colour depths, and the palette with the
// depth that holds it.

#include <cstdint>

#include "core/DibImage.h"
#include "core/Pipeline.h"
#include "reduce/Palette.h"

namespace velloran {

/// Positions in the list of colour depths that the steps name.
enum ColorDepth : int {
    kRgb24 = 0,
    kGray256 = 1,
    kAsSource = 2,
    kColors256 = 3,
    kGray16 = 4,
    kGray8 = 5,
    kGray4 = 6,
    kBlackWhite = 7,
    kColors128 = 8,
    kColors64 = 9,
    kColors32 = 10,
    kColors16 = 11,
    kColors8 = 12,
    kColors4 = 13,
    kColors2 = 14,
    kGray128 = 15,
    kGray64 = 16,
    kGray32 = 17,
    kHigh565 = 18,
    kHigh555 = 19,
};

struct DepthRow {
    int colors, bits;
    bool gray;
    int onGrayImage;  // what the position means for an 8-bit image
};

/// Whether the list has the position.
bool IsColorDepth(int color);
/// `color` must be in the list.
const DepthRow& DepthRowOf(int color);
/// Positions of greys, black and white among them; false for what the list does not hold.
bool IsGrayDepth(int color);

struct ReducePlan {
    Palette palette;           // empty: none is needed, or none could be made
    bool needsPalette = true;  // false: a threshold decides
    bool exact = false;        // the palette holds all colours of the image
    int bits = 8;
};

/// All colours of the image where they are few enough, else what the palette maker finds, with the
/// reserved colour last. `request.color` is a position with a palette, settled for this image;
/// `reservedColor` is grey for grey targets. Throws std::bad_alloc.
ReducePlan MakeReducePlan(const CDibImage& image, const DecreaseBppRequest& request);

}  // namespace velloran

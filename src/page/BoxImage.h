#pragma once

// The black-and-white copy of a page in which its content is searched.

#include "core/DibImage.h"
#include "page/ContentBox.h"

namespace velloran {

struct BoxImage {
    CDibImage page;                 // 8 bits, 0 and 255
    double scaleX = 1, scaleY = 1;  // pixels of the image that one of the copy stands for
    int speckle = 0;                // diameter in pixels of the copy
};

/// The part of the page within the search rectangle in grey, reduced to at most 2400 pixels a side
/// (1500 for a plain search) and thresholded by its surroundings. False without memory, and for a
/// rectangle without pixels.
bool prepareBoxImage(const CDibImage& image, const ContentBoxRequest& request, BoxImage& copy);

}  // namespace velloran

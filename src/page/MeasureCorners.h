#pragma once

// The corners of a page with a judgement of them: along each side that they span, how much of it
// shows a step from page to surroundings.

#include <cstdint>

#include "page/Corners.h"

namespace velloran {

class CDibImage;

struct CornersFinding {
    bool found = false;
    TrueCorners corners{};  // left top, right top, right bottom, left bottom, in the picture
    double sure = 0;        // 0 to 1; 0 where none were found
};

/// findCorners of the page in the picture, between two packed lines (0 for none). 0 for an empty
/// image and without memory, else 1. The image stays as it is.
int measureCorners(const CDibImage& image, std::int32_t leftLine, std::int32_t rightLine,
                   CornersFinding& finding);

}  // namespace velloran

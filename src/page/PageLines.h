#pragma once

// The lines that bound the pages of a scan: its left and right edge, and the gutter of a spread.

#include <cstdint>

#include "page/PackedLine.h"

namespace velloran {

class CDibImage;

/// What findPageLines is asked for.
enum PageLinesMode : int {
    kLeftAndRight = 1,
    kLeftRightMid = 2,
    kFourCorners = 3,
};

/// Packed lines (PackedLine.h): out[0] left, out[1] right, with kLeftRightMid out[2] mid; lines
/// that are not seen stand at the edges and in the middle. With kFourCorners the packed corners
/// left top, right top, right bottom, left bottom, x low: the right ones relative to width - 1, the
/// bottom ones to height - 1, and 0 where lines do not cross. The limits are packed lines between
/// which is searched, 0 for none. 0, `out` unchanged, for sides below 10 pixels and without memory.
int findPageLines(const CDibImage& image, int mode, std::int32_t* out, std::int32_t leftLimit,
                  std::int32_t rightLimit);

/// Left edge, right edge and gutter of a page. A line that was not seen stands at the edge of the
/// picture, the gutter in its middle.
struct UprightLines {
    PageLine left, right, mid;
    bool seesLeft = false, seesRight = false, seesMid = false;
};

/// The search of findPageLines with kLeftRightMid and no limits on an image of edges (EdgeImage.h)
/// of a page of that size; the image may be mirrored on the way. Throws std::bad_alloc.
UprightLines findSpreadLines(CDibImage& edges, int pageWidth, int pageHeight);

}  // namespace velloran

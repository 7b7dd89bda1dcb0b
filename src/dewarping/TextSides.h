#pragma once

// Where the straight lines run down a page: its lines of text begin under each other and end under
// each other. On a page that is seen from one side, or turned, these two edges of the text are not
// upright.

#include <optional>
#include <vector>

#include "core/QtTypes.h"
#include "dewarping/LineTracks.h"

namespace velloran::dewarping {

struct PageSides {
    QT::QLineF left, right;  // from row 0 to the last, within the picture
};

/// The sides of a picture of that size, as far out as they run like the edges of the text. Nothing
/// where the lines do not have two straight edges over much of the page, or these are upright.
std::optional<PageSides> sidesOfText(const std::vector<LineTrack>& lines, double linePitch,
                                     int width, int height);

}  // namespace velloran::dewarping

#pragma once

// Nearly upright lines in an image of edges, by voting. (R. Duda, P. Hart, "Use of the Hough
// Transformation to Detect Lines and Curves in Pictures", 1972.)

#include <cstdint>
#include <vector>

#include "core/DibImage.h"
#include "core/QtTypes.h"

namespace velloran {

struct HoughLine {
    QT::QPointF p1, p2;  // crossings with the top edge and the bottom edge, the smaller x first
    int votes = 0;
};

/// Limits of the search, as packed lines of the small image; 0 for none.
struct LineLimits {
    std::int32_t left = 0, right = 0;
};

/// Lines within 7 degrees of upright that four fifths of the rows vote for, best first, each once.
/// Samples above 1 vote, bright ones more; three columns at either side do not, nor does what lies
/// beyond the limits or within 3 pixels of them. Coordinates are multiplied by `scale`; y counts
/// from the top. Throws std::bad_alloc.
std::vector<HoughLine> houghLines(const CDibImage& edges, const LineLimits& limits, double scale);

/// The crossing of two lines, truncated to whole pixels. 0 for parallel lines, 2 when it lies
/// within both segments, 1 when it lies outside.
int crossLines(QT::QPointF a1, QT::QPointF a2, QT::QPointF b1, QT::QPointF b2, int& x, int& y);

}  // namespace velloran

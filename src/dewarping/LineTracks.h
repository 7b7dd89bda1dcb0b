#pragma once

// Follows lines of text over a page of ink, however they bend.

#include <vector>

#include "core/QtTypes.h"
#include "dewarping/TraceImage.h"

namespace velloran::dewarping {

/// The middle of a line's body at even steps from left to right; steps may be missing.
struct LineTrack {
    std::vector<QT::QPointF> points;

    double length() const { return points.back().x - points.front().x; }
};

/// The tracks of lines within the area (inclusive), those that are too short for a line left out.
/// Throws std::bad_alloc.
std::vector<LineTrack> traceLines(const InkPage& page, const QT::QRect& area);

/// The distance of neighbouring lines that is usual on the page; `fallback` where no two tracks lie
/// over each other.
double linePitchOf(const std::vector<LineTrack>& tracks, double fallback);

}  // namespace velloran::dewarping

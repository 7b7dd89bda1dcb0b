#pragma once

// The shape found between two lines of text goes on over the whole page, so that flattening it
// cuts nothing off above the first line and below the last.

#include <optional>

#include "dewarping/DistortionModel.h"
#include "dewarping/LineTracks.h"

namespace velloran::dewarping {

struct PageCurves {
    std::vector<QT::QPointF> top, bottom;
};

/// What must stay on the page: lines of text, with `margin` pixels above and below them. Short ones
/// do not count where there are longer ones: they may be anything.
struct PageContent {
    std::vector<LineTrack> lines;
    double left = 0, right = 0;  // ends of the text
    double margin = 0;
};

/// Curves of the model's surface as far up, down and aside as they stay on a picture of that size.
/// Where the page rises so steeply that its first line would leave the picture beyond the text, the
/// curves end before that. Nothing where the content itself cannot be covered. Throws
/// std::runtime_error where the model makes no surface.
std::optional<PageCurves> coverPage(const DistortionModel& model, const PageContent& content,
                                    int width, int height);

}  // namespace velloran::dewarping

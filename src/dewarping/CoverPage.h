#pragma once

// The shape found between two lines of text goes on over the whole page, so that flattening it
// cuts nothing off above the first line and below the last.

#include "dewarping/DistortionModel.h"

namespace velloran::dewarping {

struct PageCurves {
    std::vector<QT::QPointF> top, bottom;
};

/// Curves of the model's surface as far up and down as they stay on a picture of that size. Throws
/// std::runtime_error where the model makes no surface.
PageCurves coverPage(const DistortionModel& model, int width, int height);

}  // namespace velloran::dewarping

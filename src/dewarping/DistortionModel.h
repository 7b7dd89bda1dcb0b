#pragma once

// The shape of a curved page: the curve of a line near its top and of one near its bottom.

#include <vector>

#include "core/QtTypes.h"
#include "spfit/XSpline.h"

namespace velloran::dewarping {

/// Whether the corners, in this order around the figure, turn the same way everywhere, by more than
/// nothing.
bool isConvexFigure(const QT::QPointF& a, const QT::QPointF& b, const QT::QPointF& c,
                    const QT::QPointF& d);

struct ModelCurve {
    XSpline spline;
    std::vector<QT::QPointF> polyline;  // samples of the spline

    /// It has a length.
    bool isValid() const { return polyline.size() > 1 && polyline.front() != polyline.back(); }
};

struct DistortionModel {
    ModelCurve top, bottom;

    /// Both curves are there and their ends make a convex figure.
    bool isValid() const;
};

}  // namespace velloran::dewarping

#pragma once

// The loop that fits a spline to a shape: the force against bending fades while the curve settles.

#include <vector>

#include "spfit/FittableSpline.h"
#include "spfit/ModelShape.h"

namespace velloran::spfit {

/// How a fit goes: from the first balance of the internal force to the last in even steps, ended
/// early by a step that makes the distances less than `leastPercent` smaller.
struct FitSchedule {
    double firstBalance = 0.8, lastBalance = 0.1;
    int iterations = 60;
    double leastPercent = 0.5;
    SamplingParams sampling{};
};

/// Draws the spline to the shape. Its ends may be held at places of their own. Throws
/// std::runtime_error where the forces do not hold the control points.
struct HeldEnds {
    QT::QPointF first, last;
    double weight = 0;  // 0: free
};
void fitSplineToShape(FittableSpline& spline, const ModelShape& shape,
                      const FitSchedule& schedule = {}, const HeldEnds& ends = {});

/// The same for a polyline; one of fewer than two vertices throws std::invalid_argument.
void fitSplineToPolyline(FittableSpline& spline, const std::vector<QT::QPointF>& polyline);

}  // namespace velloran::spfit

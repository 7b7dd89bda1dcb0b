#pragma once

// What a spline is drawn to.

#include "core/QtTypes.h"
#include "spfit/FittableSpline.h"

namespace velloran::spfit {

/// The squared distance of points around one from a shape, nearly: across * ((p - foot) . normal)^2
/// + along * ((p - foot) . tangent)^2. (H. Pottmann, S. Leopoldseder, "A Concept for Parametric
/// Surface Fitting which Avoids the Parametrization Problem", 2003.)
struct SquaredDistance {
    QT::QPointF foot;
    QT::QPointF normal{0, 1};  // of length 1
    double across = 1, along = 1;

    double at(const QT::QPointF& point) const {
        const double x = point.x - foot.x, y = point.y - foot.y;
        const double n = x * normal.x + y * normal.y, t = x * normal.y - y * normal.x;
        return across * n * n + along * t * t;
    }
};

class ModelShape {
 public:
    virtual ~ModelShape() = default;
    /// Around a point of the spline, which is a sample of that kind.
    virtual SquaredDistance distanceFrom(const QT::QPointF& point, SampleFlags kind) const = 0;
};

}  // namespace velloran::spfit

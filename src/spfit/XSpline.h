#pragma once

// X-splines: curves whose control points each say how closely the curve keeps to them. (C. Blanc,
// C. Schlick, "X-Splines: A Spline Model Designed for the End-User", 1995.)

#include <vector>

#include "spfit/FittableSpline.h"

namespace velloran {

class XSpline : public spfit::FittableSpline {
 public:
    /// The curve approximates a point of positive tension and goes through one of 0 (with a corner)
    /// or less (smoothly); -1 to 1, others are limited.
    void appendControlPoint(const QT::QPointF& position, double tension);
    void setControlPointTension(int index, double tension);
    double controlPointTension(int index) const;

    int numControlPoints() const override { return static_cast<int>(points_.size()); }
    QT::QPointF controlPointPosition(int index) const override;
    void moveControlPoint(int index, const QT::QPointF& position) override;
    spfit::LinearCombination linearCombinationAt(double t) const override;
    void sample(Sink& sink, const spfit::SamplingParams& params, double fromT = 0,
                double toT = 1) const override;

    /// The point at t, limited to 0..1, over all segments. The curve has control points; a single
    /// one is the whole curve.
    QT::QPointF eval(double t) const;

    std::vector<QT::QPointF> toPolyline(const spfit::SamplingParams& params = {}, double fromT = 0,
                                        double toT = 1) const;

    /// The nearest point of the curve, and its t: each segment is searched from the nearest point
    /// of its chord in steps that are halved until they are below `accuracy` (of t).
    struct Nearest {
        QT::QPointF point;
        double t = 0;
    };
    Nearest pointClosestTo(const QT::QPointF& target, double accuracy = 1e-4) const;

 private:
    struct ControlPoint {
        QT::QPointF position;
        double tension = 0;
    };
    int numSegments() const { return static_cast<int>(points_.size()) - 1; }

    std::vector<ControlPoint> points_;
};

}  // namespace velloran

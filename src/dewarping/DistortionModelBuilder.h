#pragma once

// From curves across a page to its shape: of pairs of curves, that one whose surface explains all
// the others best.

#include <deque>
#include <vector>

#include "core/QtTypes.h"
#include "dewarping/DistortionModel.h"
#include "dewarping/ExtendedSpline.h"

namespace velloran::dewarping {

/// What a search for the best pair tells of itself.
struct DewarpingDebug {
    struct Pair {
        int top = 0, bottom = 0;  // in the order down the page
        double error = 0;
    };
    std::vector<Pair> tried;  // those that make a convex figure and a surface
    int fittedCurves = 0;
};

class DistortionModelBuilder {
 public:
    using BadCurve = dewarping::BadCurve;

    /// The direction in which lines follow each other down the page.
    explicit DistortionModelBuilder(const QT::QPointF& downDirection);

    /// Curves are trimmed and drawn out to these sides of the page.
    void setVerticalBounds(const QT::QLineF& left, const QT::QLineF& right);
    const QT::QLineF& leftBound() const { return left_; }
    const QT::QLineF& rightBound() const { return right_; }

    /// A polyline along a line of text or an edge, from either end.
    void addHorizontalCurve(std::vector<QT::QPointF> polyline);
    const std::deque<std::vector<QT::QPointF>>& curves() const { return curves_; }
    std::deque<std::vector<QT::QPointF>>& curves() { return curves_; }

    /// Every point p of curves and bounds becomes p * scale + offset.
    void transform(const QT::QPointF& scale, const QT::QPointF& offset);

    /// The best pair of curves; a model that is not valid with fewer than two curves, bounds
    /// without length, and where no pair makes a page. The same for any number of threads and in
    /// every run. Curves that cannot be fitted are dropped. Throws std::bad_alloc.
    DistortionModel tryBuildModel(DewarpingDebug* dewarpingDebug = nullptr) const;

 private:
    QT::QPointF down_;
    QT::QLineF left_, right_;
    std::deque<std::vector<QT::QPointF>> curves_;
};

}  // namespace velloran::dewarping

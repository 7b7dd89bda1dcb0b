#include "dewarping/ExtendedSpline.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <utility>

#include "spfit/FitPolyline.h"
#include "spfit/PolylineModelShape.h"

namespace velloran::dewarping {
namespace {

using QT::QLineF;
using QT::QPointF;

constexpr int kControlPoints = 8;

/// Positive on one side of the line, negative on the other.
double sideOf(const QLineF& line, const QPointF& point) {
    return (line.p2.x - line.p1.x) * (point.y - line.p1.y) -
           (line.p2.y - line.p1.y) * (point.x - line.p1.x);
}

double distanceTo(const QLineF& line, const QPointF& point) {
    const double dx = line.p2.x - line.p1.x, dy = line.p2.y - line.p1.y;
    return std::fabs(sideOf(line, point)) / std::sqrt(dx * dx + dy * dy);
}

/// Where the straight line through two points meets the bound.
QPointF crossing(const QPointF& from, const QPointF& to, const QLineF& bound) {
    const double a = sideOf(bound, from), b = sideOf(bound, to);
    const double t = a / (a - b);
    const QPointF at{from.x + t * (to.x - from.x), from.y + t * (to.y - from.y)};
    if (!std::isfinite(at.x) || !std::isfinite(at.y))
        throw BadCurve();
    return at;
}

/// Trims or draws out the end of the polyline to the bound; the page lies on the side where
/// `inside` times the side is positive.
void endAt(std::vector<QPointF>& polyline, const QLineF& bound, double inside) {
    const auto isOutside = [&](const QPointF& point) { return sideOf(bound, point) * inside < 0; };
    while (polyline.size() >= 2 && isOutside(polyline.back()) &&
           isOutside(polyline[polyline.size() - 2]))
        polyline.pop_back();
    if (polyline.size() < 2)
        throw BadCurve();
    const QPointF last = polyline.back(), before = polyline[polyline.size() - 2];
    const QPointF end = crossing(before, last, bound);
    if (isOutside(last))
        polyline.back() = end;
    else if (end != last)
        polyline.push_back(end);
}

/// Samples beyond the ends of what was traced hang on it more loosely.
class ModelShape : public spfit::PolylineModelShape {
 public:
    ModelShape(const std::vector<QPointF>& extended, const std::vector<QPointF>& trimmed)
        : PolylineModelShape(extended),
          left_(std::min(trimmed.front().x, trimmed.back().x)),
          right_(std::max(trimmed.front().x, trimmed.back().x)) {}

    spfit::SquaredDistance distanceFrom(const QPointF& point,
                                        spfit::SampleFlags kind) const override {
        constexpr double kBeyond = 0.25;
        spfit::SquaredDistance distance = PolylineModelShape::distanceFrom(point, kind);
        if (point.x < left_ || point.x > right_) {
            distance.across *= kBeyond;
            distance.along *= kBeyond;
        }
        return distance;
    }

 private:
    double left_, right_;
};

}  // namespace

std::vector<QPointF> extendToBounds(const std::vector<QPointF>& polyline, const QLineF& left,
                                    const QLineF& right) {
    if (polyline.size() < 2 || !std::all_of(polyline.begin(), polyline.end(), [](const QPointF& p) {
            return std::isfinite(p.x) && std::isfinite(p.y);
        }))
        throw BadCurve();
    std::vector<QPointF> extended = polyline;
    const QPointF first = polyline.front(), last = polyline.back();
    if (distanceTo(left, first) + distanceTo(right, last) >
        distanceTo(left, last) + distanceTo(right, first))
        std::reverse(extended.begin(), extended.end());
    // The page lies on that side of a bound on which the other one's middle does.
    const auto insideOf = [](const QLineF& bound, const QLineF& other) {
        return sideOf(bound, {(other.p1.x + other.p2.x) / 2, (other.p1.y + other.p2.y) / 2});
    };
    for (const auto& [bound, inside] :
         {std::pair(left, insideOf(left, right)), std::pair(right, insideOf(right, left))})
        if (std::all_of(extended.begin(), extended.end(),
                        [&](const QPointF& point) { return sideOf(bound, point) * inside < 0; }))
            throw BadCurve();
    endAt(extended, right, insideOf(right, left));
    std::reverse(extended.begin(), extended.end());
    endAt(extended, left, insideOf(left, right));
    std::reverse(extended.begin(), extended.end());
    if (extended.front() == extended.back())
        throw BadCurve();
    return extended;
}

XSpline fitExtendedSpline(const std::vector<QPointF>& extended,
                          const std::vector<QPointF>& trimmed) {
    constexpr double kEndWeight = 1000;
    const QPointF first = extended.front(), last = extended.back();
    XSpline spline;
    for (int i = 0; i < kControlPoints; ++i) {
        const double share = static_cast<double>(i) / (kControlPoints - 1);
        const bool isEnd = i == 0 || i == kControlPoints - 1;
        spline.appendControlPoint(
            {first.x + share * (last.x - first.x), first.y + share * (last.y - first.y)},
            isEnd ? 0 : 1);
    }
    try {
        spfit::fitSplineToShape(spline, ModelShape(extended, trimmed),
                                {0.8, 0.1, 60, 0.25, {0.25, 180}}, {first, last, kEndWeight});
    } catch (const std::runtime_error&) {
        throw BadCurve();
    }
    return spline;
}

}  // namespace velloran::dewarping

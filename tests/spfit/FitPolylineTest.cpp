#include "spfit/FitPolyline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "spfit/PolylineModelShape.h"
#include "spfit/XSpline.h"

namespace velloran::test {
namespace {

using QT::QPointF;

XSpline StraightBetween(const QPointF& first, const QPointF& last, int points) {
    XSpline spline;
    for (int i = 0; i < points; ++i) {
        const double share = i / (points - 1.0);
        spline.appendControlPoint(
            {first.x + share * (last.x - first.x), first.y + share * (last.y - first.y)},
            i == 0 || i == points - 1 ? 0 : 1);
    }
    return spline;
}

/// A page's curl: a steep rise, then a long fall.
double Curl(double x) {
    const double s = x / 1000;
    return 60 * 6.75 * s * (1 - s) * (1 - s);
}

TEST(FitPolyline, TheCurveOfAPageIsFollowedWithinOneAndAHalfPixels) {
    std::vector<QPointF> polyline;
    for (int x = 0; x <= 1000; x += 20)
        polyline.push_back({double(x), 200 - Curl(x)});
    XSpline spline = StraightBetween(polyline.front(), polyline.back(), 8);
    spfit::fitSplineToPolyline(spline, polyline);
    for (const QPointF& point : spline.toPolyline())
        EXPECT_NEAR(point.y, 200 - Curl(point.x), 1.5) << point.x;
    EXPECT_NEAR(spline.eval(0).x, 0, 0.5);
    EXPECT_NEAR(spline.eval(0).y, 200, 0.5);
    EXPECT_NEAR(spline.eval(1).x, 1000, 0.5);
    EXPECT_NEAR(spline.eval(1).y, 200, 0.5);
}

TEST(FitPolyline, SteepAndTurnedShapesAreFollowed) {
    // A quarter of a circle, from its top to its right end.
    std::vector<QPointF> polyline;
    for (int i = 0; i <= 60; ++i) {
        const double angle = i / 60.0 * std::numbers::pi / 2;
        polyline.push_back({300 * std::sin(angle), 300 - 300 * std::cos(angle)});
    }
    XSpline spline = StraightBetween(polyline.front(), polyline.back(), 8);
    spfit::fitSplineToPolyline(spline, polyline);
    for (const QPointF& point : spline.toPolyline())
        EXPECT_NEAR(std::hypot(point.x, point.y - 300), 300, 1);
}

TEST(FitPolyline, HeldEndsStay) {
    std::vector<QPointF> polyline;
    for (int x = 0; x <= 1000; x += 20)
        polyline.push_back({double(x), 200 - Curl(x)});
    XSpline spline = StraightBetween(polyline.front(), polyline.back(), 8);
    spfit::fitSplineToShape(spline, spfit::PolylineModelShape(polyline), {},
                            {{0, 210}, {1000, 190}, 1e5});
    EXPECT_NEAR(spline.eval(0).y, 210, 0.1);
    EXPECT_NEAR(spline.eval(1).y, 190, 0.1);
}

TEST(FitPolyline, AFitEndsWhereItNoLongerGains) {
    // Already in place: the curve stays.
    const std::vector<QPointF> polyline = {{0, 5}, {35, 5}, {70, 5}};
    XSpline spline = StraightBetween({0, 5}, {70, 5}, 8);
    spfit::fitSplineToPolyline(spline, polyline);
    for (int i = 0; i < 8; ++i) {
        EXPECT_NEAR(spline.controlPointPosition(i).x, 10 * i, 1e-6);
        EXPECT_NEAR(spline.controlPointPosition(i).y, 5, 1e-6);
    }
}

TEST(FitPolyline, OnePointIsRefusedAndEqualPointsEnd) {
    XSpline spline = StraightBetween({0, 0}, {10, 0}, 8);
    EXPECT_THROW(spfit::fitSplineToPolyline(spline, {{1, 1}}), std::invalid_argument);
    spfit::fitSplineToPolyline(spline, {{5, 5}, {5, 5}});
    for (int i = 0; i < 8; ++i)
        EXPECT_TRUE(std::isfinite(spline.controlPointPosition(i).x));
}

}  // namespace
}  // namespace velloran::test

#include "dewarping/ExtendedSpline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace velloran::test {
namespace {

using namespace dewarping;
using QT::QLineF;
using QT::QPointF;
using Polyline = std::vector<QPointF>;

constexpr QLineF kLeft{{0, 0}, {0, 100}}, kRight{{100, 0}, {100, 100}};

TEST(ExtendToBounds, DrawsAShortCurveOutAlongItsEnds) {
    const Polyline extended =
        extendToBounds({{20, 50}, {40, 40}, {60, 40}, {80, 50}}, kLeft, kRight);
    EXPECT_EQ(extended.front(), (QPointF{0, 60}));
    EXPECT_EQ(extended.back(), (QPointF{100, 60}));
    EXPECT_EQ(extended.size(), 6U);
}

TEST(ExtendToBounds, CutsWhatLiesBehindABound) {
    const Polyline extended = extendToBounds(
        {{-50, 7}, {-30, 9}, {-10, 0}, {10, 20}, {90, 20}, {110, 40}, {150, 3}}, kLeft, kRight);
    EXPECT_EQ(extended, (Polyline{{0, 10}, {10, 20}, {90, 20}, {100, 30}}));
}

TEST(ExtendToBounds, RunsFromLeftToRightHoweverItWasTraced) {
    Polyline curve = {{20, 50}, {40, 40}, {80, 50}};
    const Polyline expected = extendToBounds(curve, kLeft, kRight);
    std::reverse(curve.begin(), curve.end());
    EXPECT_EQ(extendToBounds(curve, kLeft, kRight), expected);
    // Bounds may be told from either end, too.
    EXPECT_EQ(extendToBounds(curve, {kLeft.p2, kLeft.p1}, {kRight.p2, kRight.p1}), expected);
}

TEST(ExtendToBounds, SlantedBoundsAreMetWhereTheyAre) {
    const QLineF slanted{{0, 0}, {50, 100}};
    const Polyline extended = extendToBounds({{40, 40}, {90, 40}}, slanted, kRight);
    EXPECT_NEAR(extended.front().x, 20, 1e-12);
    EXPECT_NEAR(extended.front().y, 40, 1e-12);
}

TEST(ExtendToBounds, OfABadCurveThrows) {
    const auto extend = [](const Polyline& curve) { extendToBounds(curve, kLeft, kRight); };
    EXPECT_THROW(extend({}), BadCurve);
    EXPECT_THROW(extend({{5, 5}}), BadCurve);
    EXPECT_THROW(extend({{-50, 5}, {-20, 5}}), BadCurve) << "wholly outside";
    EXPECT_THROW(extend({{5, 5}, {std::nan(""), 5}}), BadCurve);
    EXPECT_THROW(extend({{50, 5}, {50, 25}}), BadCurve) << "never meets a bound";
    EXPECT_STREQ(BadCurve().what(), "Bad curve");
}

TEST(FitExtendedSpline, FollowsTheCurveAndKeepsItsEndsOnTheBounds) {
    Polyline curve;
    for (int i = 0; i <= 50; ++i)
        curve.push_back({20.0 * i, 100 + 30 * std::sin(i / 12.0)});
    const XSpline spline = fitExtendedSpline(curve, curve);
    EXPECT_NEAR(spline.eval(0).x, 0, 0.1);
    EXPECT_NEAR(spline.eval(1).x, 1000, 0.1);
    for (const QPointF& at : spline.toPolyline())
        EXPECT_NEAR(at.y, 100 + 30 * std::sin(at.x / 240), 1);
}

}  // namespace
}  // namespace velloran::test

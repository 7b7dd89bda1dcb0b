#include "spfit/XSpline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace velloran::test {
namespace {

using QT::QPointF;
using spfit::LinearCombination;
using spfit::SampleFlags;

double Distance(const QPointF& a, const QPointF& b) {
    return std::hypot(a.x - b.x, a.y - b.y);
}

/// Five points up and down, of one tension but for the ends, which are gone through.
XSpline Waves(double tension) {
    XSpline spline;
    const QPointF points[] = {{0, 0}, {10, 8}, {20, -4}, {30, 6}, {40, 0}};
    for (int i = 0; i < 5; ++i)
        spline.appendControlPoint(points[i], i == 0 || i == 4 ? 0 : tension);
    return spline;
}

TEST(XSpline, GoesThroughItsEndsWithTensionZero) {
    for (const double tension : {-1.0, 0.0, 0.5, 1.0}) {
        const XSpline spline = Waves(tension);
        EXPECT_LT(Distance(spline.eval(0), {0, 0}), 1e-12) << tension;
        EXPECT_LT(Distance(spline.eval(1), {40, 0}), 1e-12) << tension;
    }
}

TEST(XSpline, GoesThroughPointsOfTensionZeroOrLessAndKeepsOffOthers) {
    for (int i = 1; i < 4; ++i) {
        const double t = i / 4.0;
        for (const double tension : {-1.0, -0.3, 0.0}) {
            const XSpline spline = Waves(tension);
            EXPECT_LT(Distance(spline.eval(t), spline.controlPointPosition(i)), 1e-12) << tension;
        }
        const XSpline loose = Waves(1);
        EXPECT_GT(Distance(loose.eval(t), loose.controlPointPosition(i)), 1);
    }
}

TEST(XSpline, WithTensionOneKnotsBlendAsThoseOfACubicBSpline) {
    // At a knot between points of tension 1 the shares are 1/6, 2/3, 1/6.
    XSpline spline;
    for (int i = 0; i < 7; ++i)
        spline.appendControlPoint({double(i), double(i * i)}, 1);
    const LinearCombination shares = spline.linearCombinationAt(3 / 6.0);
    double at[7] = {};
    for (const auto& term : shares)
        at[term.controlPoint] += term.share;
    EXPECT_NEAR(at[2], 1 / 6.0, 1e-12);
    EXPECT_NEAR(at[3], 2 / 3.0, 1e-12);
    EXPECT_NEAR(at[4], 1 / 6.0, 1e-12);
}

TEST(XSpline, SharesAddUpToOneAndGiveThePoint) {
    for (const double tension : {-1.0, -0.4, 0.0, 0.7, 1.0}) {
        const XSpline spline = Waves(tension);
        for (int i = 0; i <= 40; ++i) {
            const LinearCombination shares = spline.linearCombinationAt(i / 40.0);
            double sum = 0;
            QPointF point;
            for (const auto& term : shares) {
                sum += term.share;
                point.x += term.share * spline.controlPointPosition(term.controlPoint).x;
                point.y += term.share * spline.controlPointPosition(term.controlPoint).y;
            }
            EXPECT_LE(shares.count, 4);
            EXPECT_NEAR(sum, 1, 1e-12);
            EXPECT_LT(Distance(point, spline.eval(i / 40.0)), 1e-12);
        }
    }
}

TEST(XSpline, IsSmoothWhereSegmentsMeet) {
    for (const double tension : {-0.5, 0.4, 1.0}) {
        const XSpline spline = Waves(tension);
        for (int i = 1; i < 4; ++i) {
            const double t = i / 4.0, step = 1e-6;
            const QPointF before = spline.eval(t - step), at = spline.eval(t),
                          behind = spline.eval(t + step);
            // The same velocity on both sides.
            EXPECT_NEAR((at.x - before.x) / step, (behind.x - at.x) / step, 1e-2);
            EXPECT_NEAR((at.y - before.y) / step, (behind.y - at.y) / step, 1e-2);
        }
    }
}

TEST(XSpline, PointsInARowMakeAStraightLine) {
    XSpline spline;
    for (int i = 0; i < 6; ++i)
        spline.appendControlPoint({i * 5.0, i * 2.0}, i == 0 || i == 5 ? 0 : 1);
    for (int i = 0; i <= 100; ++i) {
        const QPointF point = spline.eval(i / 100.0);
        EXPECT_NEAR(point.y * 5, point.x * 2, 1e-9);
    }
}

TEST(XSpline, PolylinesKeepToTheirLimits) {
    XSpline spline = Waves(1);
    for (int i = 1; i < 4; ++i)
        spline.moveControlPoint(
            i, {spline.controlPointPosition(i).x, spline.controlPointPosition(i).y * 10});
    for (const double limit : {2.0, 0.2, 0.02}) {
        const auto polyline = spline.toPolyline({limit, 180});
        EXPECT_LT(Distance(polyline.front(), spline.eval(0)), 1e-12);
        EXPECT_LT(Distance(polyline.back(), spline.eval(1)), 1e-12);
        for (int i = 0; i <= 1000; ++i) {
            const QPointF point = spline.eval(i / 1000.0);
            double nearest = std::numeric_limits<double>::max();
            for (std::size_t k = 0; k + 1 < polyline.size(); ++k) {
                const QPointF &a = polyline[k], &b = polyline[k + 1];
                const double length = Distance(a, b);
                const double along =
                    std::clamp(((point.x - a.x) * (b.x - a.x) + (point.y - a.y) * (b.y - a.y)) /
                                   (length * length),
                               0.0, 1.0);
                nearest = std::min(nearest, Distance(point, {a.x + along * (b.x - a.x),
                                                             a.y + along * (b.y - a.y)}));
            }
            EXPECT_LT(nearest, 1.3 * limit);
        }
    }
    EXPECT_GT(spline.toPolyline({100, 3}).size(), spline.toPolyline({100, 30}).size());
}

TEST(XSpline, SamplesTellTheirKind) {
    const XSpline spline = Waves(1);
    int heads = 0, tails = 0, junctions = 0;
    double last = -1;
    const auto count = [&](const QPointF& point, double t, SampleFlags kind) {
        EXPECT_LT(Distance(point, spline.eval(t)), 1e-12);
        EXPECT_GT(t, last);
        last = t;
        heads += kind == spfit::kHeadSample ? 1 : 0;
        tails += kind == spfit::kTailSample ? 1 : 0;
        if (kind == spfit::kJunctionSample) {
            ++junctions;
            EXPECT_DOUBLE_EQ(t * 4, std::round(t * 4));
        }
    };
    ProxyFunction3<decltype(count), void, const QPointF&, double, SampleFlags> sink(count);
    spline.sample(sink, {0.1, 180});
    EXPECT_EQ(heads, 1);
    EXPECT_EQ(tails, 1);
    EXPECT_EQ(junctions, 3);
    // A part has no ends of the curve.
    heads = tails = junctions = 0;
    last = -1;
    spline.sample(sink, {0.1, 180}, 0.3, 0.6);
    EXPECT_EQ(heads + tails, 0);
    EXPECT_EQ(junctions, 1);
}

TEST(XSpline, TheClosestPointIsClosestOfMany) {
    const XSpline spline = Waves(1);
    for (const QPointF target : {QPointF{5, 9}, {18, 0}, {31, -7}, {-4, -1}, {50, 3}}) {
        const XSpline::Nearest nearest = spline.pointClosestTo(target, 1e-6);
        EXPECT_LT(Distance(nearest.point, spline.eval(nearest.t)), 1e-9);
        double least = std::numeric_limits<double>::max();
        for (int i = 0; i <= 20000; ++i)
            least = std::min(least, Distance(spline.eval(i / 20000.0), target));
        EXPECT_NEAR(Distance(nearest.point, target), least, 1e-3);
    }
}

TEST(XSpline, OnePointIsTheWholeCurve) {
    XSpline spline;
    spline.appendControlPoint({3, 4}, 1);
    EXPECT_EQ(spline.eval(0.7), (QPointF{3, 4}));
    EXPECT_EQ(spline.pointClosestTo({0, 0}).point, (QPointF{3, 4}));
    EXPECT_FALSE(spline.toPolyline().empty());
    EXPECT_TRUE(XSpline().toPolyline().empty());
}

TEST(XSpline, TensionsAreLimited) {
    XSpline spline;
    spline.appendControlPoint({0, 0}, 7);
    EXPECT_EQ(spline.controlPointTension(0), 1);
    spline.setControlPointTension(0, -3);
    EXPECT_EQ(spline.controlPointTension(0), -1);
}

}  // namespace
}  // namespace velloran::test

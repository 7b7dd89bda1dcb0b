#include "dewarping/CurvePoints.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace velloran::test {
namespace {

using namespace dewarping;
using QT::QPointF;

constexpr int kPoints = 8;
using Points = std::array<std::int32_t, kPoints>;

Points All(std::int32_t value) {
    Points points;
    points.fill(value);
    return points;
}

std::int32_t Packed(int x, int y) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(y) << 16 |
                                     static_cast<std::uint32_t>(x));
}

Points Row(int y, int left = 0, int step = 100) {
    Points points;
    for (int i = 0; i < kPoints; ++i)
        points[static_cast<std::size_t>(i)] = Packed(left + i * step, y);
    return points;
}

TEST(CurvePoints, HoldXLowAndYHighWithoutSign) {
    EXPECT_EQ(packPoint({3, 5}), 0x50003);
    EXPECT_EQ(unpackPoint(0x50003), (QPointF{3, 5}));
    EXPECT_EQ(unpackPoint(-1), (QPointF{65535, 65535}));
    EXPECT_EQ(packPoint({40000, 50000}), Packed(40000, 50000));
}

TEST(CurvePoints, AreRoundedByAddingAHalfAndLimited) {
    EXPECT_EQ(packPoint({2.5, 2.49}), Packed(3, 2));
    EXPECT_EQ(packPoint({-7, 1e9}), Packed(0, 65535));
    EXPECT_EQ(packPoint({std::nan(""), 1}), Packed(0, 1));
}

TEST(CurveState, TellsUnsetUnknownFlatAndCurved) {
    const auto state = [](const Points& top, const Points& bottom) {
        return classifyCurves(top.data(), bottom.data(), kPoints);
    };
    EXPECT_EQ(state(All(0), All(0)), kNoCurves);
    EXPECT_EQ(state(All(-1), All(-1)), kUnknownCurves);
    EXPECT_EQ(state(All(0), All(-1)), kCurved);
    EXPECT_EQ(state(Row(5), Row(600)), kFlatCurves);
    Points bent = Row(5);
    bent[3] = Packed(300, 6);
    EXPECT_EQ(state(bent, Row(600)), kCurved);
    EXPECT_EQ(state(Row(5), bent), kCurved);
    EXPECT_EQ(state(Row(5), Row(600, 1)), kCurved) << "the first points stand apart";
    EXPECT_EQ(state(Row(5), Row(600, 0, 101)), kCurved) << "and here the last ones";
    // Only the outer points must agree.
    Points shifted = Row(600);
    shifted[2] = Packed(222, 600);
    EXPECT_EQ(state(Row(5), shifted), kFlatCurves);
}

TEST(ResetCurves, MakeAFlatGrid) {
    Points top, bottom;
    resetCurves(1001, 701, top.data(), bottom.data(), kPoints);
    for (int i = 0; i < kPoints; ++i) {
        const int x = static_cast<int>(i * 1001 / 8.0 + 0.5);
        EXPECT_EQ(top[static_cast<std::size_t>(i)], Packed(x, 0)) << i;
        EXPECT_EQ(bottom[static_cast<std::size_t>(i)], Packed(x, 700)) << i;
    }
    EXPECT_EQ(classifyCurves(top.data(), bottom.data(), kPoints), kFlatCurves);
}

TEST(CurveOf, PassesItsEndsAndEndsAtAZeroPoint) {
    Points points = Row(50, 10);
    points[0] = 0;  // the first may be the corner of the picture
    XSpline curve = curveOf(points.data(), kPoints);
    EXPECT_EQ(curve.numControlPoints(), kPoints);
    EXPECT_NEAR(curve.eval(1).x, 710, 1e-9);
    points[5] = 0;
    curve = curveOf(points.data(), kPoints);
    EXPECT_EQ(curve.numControlPoints(), 5);
    EXPECT_EQ(curve.controlPointTension(4), 0);
    EXPECT_EQ(curve.controlPointTension(3), 1);
    EXPECT_NEAR(curve.eval(1).x, 410, 1e-9);
}

TEST(PackCurve, ItsPointsGiveTheCurveBack) {
    std::vector<QPointF> polyline;
    for (int x = 0; x <= 1000; x += 25) {
        const double s = x / 1000.0;
        polyline.push_back({double(x), 300 - 270 * s * (1 - s) * (1 - s)});
    }
    Points points;
    packCurve(polyline, points.data(), kPoints);
    EXPECT_EQ(points[0], Packed(0, 300));
    EXPECT_EQ(points[7], Packed(1000, 300));
    for (const QPointF& at : curveOf(points.data(), kPoints).toPolyline()) {
        const double s = at.x / 1000.0;
        EXPECT_NEAR(at.y, 300 - 270 * s * (1 - s) * (1 - s), 1.5) << at.x;
    }
}

}  // namespace
}  // namespace velloran::test

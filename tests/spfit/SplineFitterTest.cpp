#include "spfit/SplineFitter.h"

#include <gtest/gtest.h>

#include <cmath>

#include "spfit/PolylineModelShape.h"
#include "spfit/XSpline.h"

namespace velloran::test {
namespace {

using QT::QPointF;
using spfit::SplineFitter;
using spfit::SquaredDistance;

XSpline Row(int points) {
    XSpline spline;
    for (int i = 0; i < points; ++i)
        spline.appendControlPoint({i * 10.0, 0}, i == 0 || i == points - 1 ? 0 : 1);
    return spline;
}

TEST(SquaredDistance, CountsAcrossAndAlongApart) {
    const SquaredDistance distance{{1, 2}, {0, 1}, 3, 0.5};
    EXPECT_DOUBLE_EQ(distance.at({1, 2}), 0);
    EXPECT_DOUBLE_EQ(distance.at({1, 4}), 3 * 4);     // across
    EXPECT_DOUBLE_EQ(distance.at({5, 2}), 0.5 * 16);  // along
}

TEST(SplineFitter, ForcesOnTheWholeCurveCarryItThere) {
    XSpline spline = Row(5);
    SplineFitter fitter(spline);
    // Everything is drawn 7 down and 3 to the right of where it is.
    for (int i = 0; i <= 20; ++i) {
        const QPointF point = spline.eval(i / 20.0);
        fitter.addAttractionForce(i / 20.0, {{point.x + 3, point.y + 7}, {0, 1}, 1, 1}, 1);
    }
    EXPECT_NEAR(fitter.attractionError(), 21 * (9 + 49), 1e-9);
    fitter.optimize(0);
    for (int i = 0; i < 5; ++i) {
        EXPECT_NEAR(spline.controlPointPosition(i).x, 10 * i + 3, 1e-3);
        EXPECT_NEAR(spline.controlPointPosition(i).y, 7, 1e-3);
    }
    fitter.undoLastStep();
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(spline.controlPointPosition(i), (QPointF{i * 10.0, 0}));
}

TEST(SplineFitter, ThePlaceOfAHeldPointIsThatOfTheForces) {
    // One point between two places: it goes to their weighed mean.
    XSpline spline = Row(1);
    SplineFitter fitter(spline);
    fitter.addExternalForce(0, {8, 0}, 3);
    fitter.addExternalForce(0, {0, 4}, 1);
    fitter.optimize(0);
    EXPECT_NEAR(spline.controlPointPosition(0).x, 6, 1e-5);
    EXPECT_NEAR(spline.controlPointPosition(0).y, 1, 1e-5);
}

TEST(SplineFitter, TheInternalForceWeighsWhatTheAttractionTells) {
    XSpline spline = Row(3);
    spline.moveControlPoint(1, {10, 2});
    SplineFitter fitter(spline);
    fitter.setLinearForceBalance(0.5);
    fitter.addAttractionForce(0, {{0, 6}, {0, 1}, 1, 1}, 1);
    EXPECT_EQ(fitter.internalForceWeight(), 0) << "nothing resists yet";
    fitter.addInternalForce();
    // The polygon's only second difference is (0, -4).
    EXPECT_DOUBLE_EQ(fitter.internalError(), 16);
    EXPECT_DOUBLE_EQ(fitter.internalForceWeight(), 36 * 0.5 / 16);
}

TEST(SplineFitter, AStrongInternalForceStraightensThePolygon) {
    XSpline spline = Row(5);
    spline.moveControlPoint(2, {20, 30});
    SplineFitter fitter(spline);
    fitter.addExternalForce(0, {0, 0}, 1);
    fitter.addExternalForce(4, {40, 0}, 1);
    fitter.addInternalForce();
    fitter.optimize(1e4);
    for (int i = 0; i < 5; ++i)
        EXPECT_NEAR(spline.controlPointPosition(i).y, 0, 0.1) << i;
}

TEST(PolylineModelShape, DrawsEndsToEndsAndTheRestAcross) {
    const spfit::PolylineModelShape shape({{0, 0}, {10, 0}, {20, 0}});
    const SquaredDistance head = shape.distanceFrom({5, 5}, spfit::kHeadSample);
    EXPECT_EQ(head.foot, (QPointF{0, 0}));
    EXPECT_EQ(head.along, 1);
    EXPECT_EQ(shape.distanceFrom({5, 5}, spfit::kTailSample).foot, (QPointF{20, 0}));
    const SquaredDistance inner = shape.distanceFrom({5, 5}, spfit::kPlainSample);
    EXPECT_EQ(inner.foot, (QPointF{5, 0}));
    EXPECT_NEAR(std::fabs(inner.normal.y), 1, 1e-12);
    EXPECT_LT(inner.along, 0.1);
    // Beyond an end there is no sliding.
    EXPECT_EQ(shape.distanceFrom({25, 5}, spfit::kPlainSample).along, 1);
}

TEST(PolylineModelShape, OfOneVertexIsRefused) {
    try {
        const spfit::PolylineModelShape shape({{0, 0}});
        FAIL();
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "PolylineModelShape: polyline must have at least 2 vertices");
    }
}

}  // namespace
}  // namespace velloran::test

#include "dewarping/DistortionModelBuilder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "support/Threads.h"

namespace velloran::test {
namespace {

using namespace dewarping;
using QT::QPointF;

/// A line of a bent page of 1000 x 1400 pixels.
std::vector<QPointF> Line(double y, double wander = 0, unsigned seed = 1) {
    std::mt19937 random(seed);
    std::vector<QPointF> line;
    for (int x = 0; x <= 1000; x += 25) {
        const double s = x / 1000.0, noise = (random() % 201 / 100.0 - 1) * wander;
        line.push_back({double(x), y - 400 * s * (1 - s) * (1 - s) + noise});
    }
    return line;
}

DistortionModelBuilder Builder() {
    DistortionModelBuilder builder({0, 1});
    builder.setVerticalBounds({{0, 0}, {0, 1400}}, {{1000, 0}, {1000, 1400}});
    return builder;
}

TEST(ConvexFigure, TurnsOneWayByMoreThanNothing) {
    EXPECT_TRUE(isConvexFigure({0, 0}, {10, 0}, {10, 10}, {0, 10}));
    EXPECT_TRUE(isConvexFigure({0, 10}, {10, 10}, {10, 0}, {0, 0})) << "the other way round";
    EXPECT_FALSE(isConvexFigure({0, 0}, {10, 0}, {3, 3}, {0, 10}));
    EXPECT_FALSE(isConvexFigure({0, 0}, {10, 0}, {0, 10}, {10, 10})) << "crossed";
    EXPECT_FALSE(isConvexFigure({0, 0}, {10, 0}, {20, 0}, {30, 0}));
    EXPECT_FALSE(isConvexFigure({0, 0}, {0.05, 0}, {0.05, 0.05}, {0, 0.05}))
        << "too small to be one";
}

TEST(BuildModel, TakesTwoCurvesAndBoundsOfLength) {
    DistortionModelBuilder none = Builder();
    EXPECT_FALSE(none.tryBuildModel().isValid());
    none.addHorizontalCurve(Line(200));
    EXPECT_FALSE(none.tryBuildModel().isValid());
    none.addHorizontalCurve(Line(1200));
    EXPECT_TRUE(none.tryBuildModel().isValid());
    DistortionModelBuilder unbound({0, 1});
    unbound.addHorizontalCurve(Line(200));
    unbound.addHorizontalCurve(Line(1200));
    EXPECT_FALSE(unbound.tryBuildModel().isValid());
}

TEST(BuildModel, TheUpperCurveIsTheTopWhateverCameFirst) {
    DistortionModelBuilder builder = Builder();
    builder.addHorizontalCurve(Line(1200));
    builder.addHorizontalCurve(Line(200));
    const DistortionModel model = builder.tryBuildModel();
    ASSERT_TRUE(model.isValid());
    EXPECT_NEAR(model.top.polyline.front().y, 200, 1);
    EXPECT_NEAR(model.bottom.polyline.back().y, 1200, 1);
}

TEST(BuildModel, ABadCurveIsDroppedAlone) {
    DistortionModelBuilder builder = Builder();
    builder.addHorizontalCurve({{400, 3}, {400, 900}});
    builder.addHorizontalCurve(Line(200));
    builder.addHorizontalCurve({{7, 7}});
    builder.addHorizontalCurve(Line(1200));
    DewarpingDebug debug;
    EXPECT_TRUE(builder.tryBuildModel(&debug).isValid());
    EXPECT_EQ(debug.fittedCurves, 2);
}

TEST(BuildModel, ThePairThatExplainsTheOthersWins) {
    // Two of the curves wander; a pair with one of them explains the rest worse.
    DistortionModelBuilder builder = Builder();
    builder.addHorizontalCurve(Line(150, 60, 3));
    for (const double y : {300.0, 500.0, 700.0, 900.0, 1100.0})
        builder.addHorizontalCurve(Line(y));
    builder.addHorizontalCurve(Line(1250, 60, 4));
    DewarpingDebug debug;
    const DistortionModel model = builder.tryBuildModel(&debug);
    ASSERT_TRUE(model.isValid());
    EXPECT_GT(model.top.polyline.front().y, 250);
    EXPECT_LT(model.bottom.polyline.front().y, 1150);
    double least = 1e9;
    for (const DewarpingDebug::Pair& pair : debug.tried)
        least = std::min(least, pair.error);
    for (const DewarpingDebug::Pair& pair : debug.tried)
        if (pair.error == least) {
            EXPECT_TRUE(pair.top >= 1 && pair.bottom <= 5);
        }
}

TEST(BuildModel, UpToFiveCurvesAreTriedInAllPairs) {
    DistortionModelBuilder builder = Builder();
    for (int i = 0; i < 5; ++i)
        builder.addHorizontalCurve(Line(200 + 200 * i));
    DewarpingDebug debug;
    builder.tryBuildModel(&debug);
    EXPECT_EQ(debug.tried.size(), 10U);
}

TEST(BuildModel, WithSixCurvesTheRandomPairsAreTheSameInEachRun) {
    DistortionModelBuilder builder = Builder();
    for (int i = 0; i < 6; ++i)
        builder.addHorizontalCurve(Line(200 + 180 * i, 3, static_cast<unsigned>(i)));
    DewarpingDebug first;
    builder.tryBuildModel(&first);
    // 15 pairs of the outer curves, then up to 25 at random.
    EXPECT_GT(first.tried.size(), 30U);
    EXPECT_LE(first.tried.size(), 40U);
    for (const int count : {1, 2, 7}) {
        const Threads threads(count);
        DewarpingDebug again;
        builder.tryBuildModel(&again);
        ASSERT_EQ(again.tried.size(), first.tried.size());
        for (std::size_t i = 0; i < first.tried.size(); ++i) {
            EXPECT_EQ(again.tried[i].top, first.tried[i].top);
            EXPECT_EQ(again.tried[i].bottom, first.tried[i].bottom);
            EXPECT_EQ(again.tried[i].error, first.tried[i].error);
        }
    }
}

TEST(Builder, TransformMovesCurvesAndBounds) {
    DistortionModelBuilder builder = Builder();
    builder.addHorizontalCurve({{1, 2}, {3, 4}});
    builder.transform({2, 3}, {10, 20});
    EXPECT_EQ(builder.curves()[0], (std::vector<QPointF>{{12, 26}, {16, 32}}));
    EXPECT_EQ(builder.leftBound(), (QT::QLineF{{10, 20}, {10, 4220}}));
    EXPECT_EQ(builder.rightBound().p1, (QPointF{2010, 20}));
}

}  // namespace
}  // namespace velloran::test

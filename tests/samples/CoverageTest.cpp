#include "samples/Coverage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "samples/Random.h"

namespace velloran::samples {
namespace {

double Total(const Coverage& coverage) {
    double sum = 0;
    for (int y = coverage.Pixels().top; y < coverage.Pixels().bottom; ++y)
        for (int x = 0; x < coverage.Pixels().Width(); ++x)
            sum += coverage.Row(y)[x];
    return sum;
}

double Area(const Contour& contour) {
    double doubled = 0;
    for (std::size_t i = 0; i < contour.size(); ++i) {
        const Point a = contour[i], b = contour[(i + 1) % contour.size()];
        doubled += a.x * b.y - b.x * a.y;
    }
    return std::abs(doubled) / 2;
}

TEST(SampleCoverage, RectangleGivesTheShareOfEachPixel) {
    Coverage coverage;
    coverage.Fill({{RectangleContour({1.25, 2.5, 3.5, 4})}}, {0, 0, 6, 6});
    EXPECT_FLOAT_EQ(coverage.Row(2)[1], 0.75F * 0.5F);
    EXPECT_FLOAT_EQ(coverage.Row(2)[2], 0.5F);
    EXPECT_FLOAT_EQ(coverage.Row(2)[3], 0.25F);
    EXPECT_FLOAT_EQ(coverage.Row(3)[1], 0.75F);
    EXPECT_FLOAT_EQ(coverage.Row(3)[2], 1);
    EXPECT_FLOAT_EQ(coverage.Row(3)[4], 0);
    EXPECT_FLOAT_EQ(coverage.Row(1)[2], 0);
    EXPECT_FLOAT_EQ(coverage.Row(4)[2], 0);
}

TEST(SampleCoverage, FlatTriangleIsExactInEveryPixelOfItsRow) {
    // Below the line from (0, 0) to (4, 1): pixel x holds 1 - (2 x + 1) / 8 of its area.
    Coverage coverage;
    coverage.Fill({{{{0, 0}, {4, 1}, {0, 1}}}}, {0, 0, 4, 1});
    for (int x = 0; x < 4; ++x)
        EXPECT_NEAR(coverage.Row(0)[x], 1 - (2 * x + 1) / 8.0, 1e-6);
}

TEST(SampleCoverage, AnyTriangleKeepsItsArea) {
    Random random(9);
    for (int i = 0; i < 200; ++i) {
        const auto place = [&] { return Point{random.Between(0, 40), random.Between(0, 30)}; };
        const Contour triangle = {place(), place(), place()};
        Coverage coverage;
        coverage.Fill({{triangle}}, {0, 0, 40, 30});
        EXPECT_NEAR(Total(coverage), Area(triangle), 1e-3);
    }
}

TEST(SampleCoverage, PartsOutsideAreCutOff) {
    Coverage coverage;
    coverage.Fill({{{{-50, -50}, {70, -50}, {70, 60}, {-50, 60}}}}, {10, 10, 20, 15});
    EXPECT_FLOAT_EQ(static_cast<float>(Total(coverage)), 50);
    // A diagonal through the middle of a square that is far smaller than the shape.
    coverage.Fill({{{{-90, -90}, {110, 110}, {-90, 110}}}}, {0, 0, 10, 10});
    EXPECT_NEAR(Total(coverage), 50, 1e-3);
    EXPECT_FLOAT_EQ(coverage.Row(9)[0], 1);
    EXPECT_FLOAT_EQ(coverage.Row(0)[9], 0);
}

TEST(SampleCoverage, OverlapsCountOnce) {
    Path path;
    path.Add(RectangleContour({0, 0, 6, 4}));
    path.Add(RectangleContour({3, 0, 8, 4}));
    Coverage coverage;
    coverage.Fill(path, {0, 0, 10, 4});
    EXPECT_NEAR(Total(coverage), 32, 1e-4);
}

TEST(SampleShapes, CircleHasItsAreaAndStrokesTheirWidth) {
    Coverage coverage;
    coverage.Fill(CirclePath({20.3, 19.8}, 15), {0, 0, 40, 40});
    EXPECT_NEAR(Total(coverage), std::numbers::pi * 225, 4);
    // 20 long, 3 wide, a half circle at each end.
    coverage.Fill(StrokePath({{10, 20}, {30, 20}}, 3), {0, 0, 40, 40});
    EXPECT_NEAR(Total(coverage), 60 + std::numbers::pi * 2.25, 0.3);
    // The rim of a square, round at its corners.
    const Contour square = RectangleContour({10, 10, 30, 30});
    coverage.Fill(StrokePath(square, 4, /*closed=*/true), {0, 0, 40, 40});
    EXPECT_NEAR(Total(coverage), 24 * 24 - 16 * 16 - (4 - std::numbers::pi) * 4, 0.5);
}

TEST(SampleShapes, ClippingToAConvexShapeKeepsTheCommonArea) {
    const Contour diamond = {{10, 0}, {20, 10}, {10, 20}, {0, 10}};
    const Path clipped = ClipToConvex({{RectangleContour({10, 0, 40, 40})}}, diamond);
    Coverage coverage;
    coverage.Fill(clipped, {0, 0, 40, 40});
    EXPECT_NEAR(Total(coverage), 100, 1e-3);
    EXPECT_TRUE(ClipToConvex({{RectangleContour({30, 30, 40, 40})}}, diamond).contours.empty());
}

}  // namespace
}  // namespace velloran::samples

#include "samples/Warp.h"

#include <gtest/gtest.h>

namespace velloran::samples {
namespace {

void ExpectAt(Point actual, Point expected, double tolerance = 1e-9) {
    EXPECT_NEAR(actual.x, expected.x, tolerance);
    EXPECT_NEAR(actual.y, expected.y, tolerance);
}

TEST(SampleWarp, PositiveTurnIsClockwiseAsSeen) {
    Warp warp;
    warp.Turn(90, {10, 10});
    ExpectAt(warp({20, 10}), {10, 20});  // from the right of the centre to below it
    ExpectAt(warp({10, 10}), {10, 10});
}

TEST(SampleWarp, StepsFollowEachOther) {
    Warp warp;
    warp.Mirror(100).Move(5, 7);
    ExpectAt(warp({30, 2}), {75, 9});
}

TEST(SampleWarp, ProjectionBringsCornersHomeAndKeepsLinesStraight) {
    const std::array<Point, 4> corners = {{{12, 8}, {90, 15}, {97, 130}, {3, 121}}};
    Warp warp;
    warp.Project(200, 300, corners);
    ExpectAt(warp({0, 0}), corners[0], 1e-6);
    ExpectAt(warp({200, 0}), corners[1], 1e-6);
    ExpectAt(warp({200, 300}), corners[2], 1e-6);
    ExpectAt(warp({0, 300}), corners[3], 1e-6);
    const Point a = warp({0, 40}), b = warp({70, 110}), c = warp({160, 200});
    EXPECT_NEAR((b.x - a.x) * (c.y - a.y), (c.x - a.x) * (b.y - a.y), 1e-6);
}

TEST(SampleWarp, CurlRaisesTheEdgesAndKeepsColumnsStraight) {
    const PageCurl curl{300, 400, 20, -10, 0.2, /*spineAtLeft=*/true};
    Warp warp;
    warp.Curl(curl);
    ExpectAt(warp({0, 0}), {0, 0});
    ExpectAt(warp({300, 400}), {300, 400});
    // At a third of the width the bump is at its peak, and 0.2 / 3 * 4 / 9 of the width narrower.
    const double x = 300 * (1.0 / 3 - 0.2 * 4 / 27);
    ExpectAt(warp({100, 0}), {x, -20});
    ExpectAt(warp({100, 400}), {x, 410});
    ExpectAt(warp({100, 200}), {x, 195});
}

TEST(SampleWarp, SpineAtTheRightIsTheMirrorImage) {
    PageCurl curl{300, 400, 20, 10, 0.2, true};
    Warp left, right;
    left.Curl(curl);
    curl.spineAtLeft = false;
    right.Curl(curl);
    for (const double x : {0.0, 40.0, 210.0, 300.0}) {
        const Point a = left({x, 50}), b = right({300 - x, 50});
        ExpectAt(b, {300 - a.x, a.y});
    }
}

TEST(SampleWarp, LongLinesBendOnACurledPage) {
    Warp warp;
    warp.Curl({300, 400, 20, 0, 0, true});
    const Path warped = warp(Path{{RectangleContour({0, 0, 300, 400})}});
    EXPECT_NEAR(warped.GetBounds().Get().top, -20, 0.05);
}

}  // namespace
}  // namespace velloran::samples

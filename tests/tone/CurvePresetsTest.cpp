#include "tone/CurvePresets.h"

#include <gtest/gtest.h>

#include <limits>

#include "tone/PixelMap.h"

namespace velloran {
namespace {

TEST(CurvePresets, HaveTheirPoints) {
    EXPECT_EQ(PointsOfPreset(CurvePreset::kUnchanged), (CurvePoints{0, 0, 255, 255}));
    EXPECT_EQ(PointsOfPreset(CurvePreset::kBusyBackground), (CurvePoints{150, 0, 110, 255}));
    EXPECT_EQ(PointsOfPreset(CurvePreset::kTooLight), (CurvePoints{120, 10, 245, 135}));
    EXPECT_EQ(PointsOfPreset(CurvePreset::kTooDark), (CurvePoints{10, 120, 135, 245}));
}

TEST(CurvePresets, ABusyBackgroundGetsASteepRisingCurveThoughItsPointsCross) {
    const CurvePoints p = PointsOfPreset(CurvePreset::kBusyBackground);
    PixelMap map = IdentityPixelMap();
    ASSERT_EQ(MapBezierCurve(p.x1, p.y1, p.x2, p.y2, map), 1);
    for (std::size_t i = 1; i < map.size(); ++i)
        EXPECT_GE(map[i], map[i - 1]) << i;
    EXPECT_LT(map[80], 40);
    EXPECT_GT(map[180], 215);
}

TEST(CurvePresets, AllZeroPointsStandForTheUnchangedCurve) {
    EXPECT_EQ(NormalizedCurve({0, 0, 0, 0}), (CurvePoints{0, 0, 255, 255}));
    EXPECT_EQ(NormalizedCurve({0, 0, 0, 1}), (CurvePoints{0, 0, 0, 1}));
    EXPECT_EQ(NormalizedCurve({1, 2, 3, 4}), (CurvePoints{1, 2, 3, 4}));
}

TEST(SCurve, MirrorsItsPointsAndTruncatesTheSixth) {
    EXPECT_EQ(SCurvePoints(0), (CurvePoints{0, 0, 255, 255}));
    EXPECT_EQ(SCurvePoints(5), (CurvePoints{5, 0, 250, 255}));
    EXPECT_EQ(SCurvePoints(6), (CurvePoints{6, -1, 249, 256}));
    EXPECT_EQ(SCurvePoints(100), (CurvePoints{100, -16, 155, 271}));
    EXPECT_EQ(SCurvePoints(270), (CurvePoints{270, -45, -15, 300}));
    EXPECT_EQ(SCurvePoints(-1), SCurvePoints(0));
    EXPECT_EQ(SCurvePoints(std::numeric_limits<int>::max()), SCurvePoints(270));
}

TEST(SCurve, ShowsEveryValueThatItStored) {
    for (int value = 0; value <= 270; ++value)
        EXPECT_EQ(SCurveValue(SCurvePoints(value)), value);
}

TEST(SCurve, TheFirstPresetIsItsZero) {
    EXPECT_EQ(SCurveValue(PointsOfPreset(CurvePreset::kUnchanged)), 0);
    EXPECT_EQ(SCurvePoints(0), PointsOfPreset(CurvePreset::kUnchanged));
}

TEST(SCurve, ShowsZeroForPointsThatAreNone) {
    constexpr int kLowest = std::numeric_limits<int>::min();
    constexpr int kHighest = std::numeric_limits<int>::max();
    EXPECT_EQ(SCurveValue({100, -16, 155, 270}), 0);
    EXPECT_EQ(SCurveValue({100, -15, 155, 270}), 0);
    EXPECT_EQ(SCurveValue({100, -16, 156, 271}), 0);
    EXPECT_EQ(SCurveValue({276, -46, -21, 301}), 0);  // beyond the slider
    EXPECT_EQ(SCurveValue(PointsOfPreset(CurvePreset::kTooDark)), 0);
    EXPECT_EQ(SCurveValue({kLowest, kLowest, kHighest, kHighest}), 0);
    EXPECT_EQ(SCurveValue({kHighest, kHighest, kLowest, kLowest}), 0);
}

TEST(OverflowPoints, AreWhereTheParabolaMeetsWhiteAndBlack) {
    // sqrt(255 * 255); sqrt(355 * 155) = 234.57; sqrt(100 * 155) = 124.49
    EXPECT_EQ(FindOverflowPoints(0, 0).white, 255);
    EXPECT_EQ(FindOverflowPoints(0, 0).black, 0);
    EXPECT_EQ(FindOverflowPoints(100, 100).white, 234);
    EXPECT_EQ(FindOverflowPoints(100, 100).black, 124);
    EXPECT_EQ(FindOverflowPoints(255, 255).white, 0);
    EXPECT_EQ(FindOverflowPoints(255, 255).black, 0);
    EXPECT_EQ(FindOverflowPoints(0, 255).white, 360);
}

TEST(OverflowPoints, ThatDoNotExistAreZero) {
    EXPECT_EQ(FindOverflowPoints(0, -10).black, 0);
    EXPECT_EQ(FindOverflowPoints(300, 10).white, 0);
    constexpr int kLowest = std::numeric_limits<int>::min();
    EXPECT_EQ(FindOverflowPoints(kLowest, kLowest).white, 0);
    EXPECT_EQ(FindOverflowPoints(kLowest, std::numeric_limits<int>::max()).black, 2147483647);
}

}  // namespace
}  // namespace velloran

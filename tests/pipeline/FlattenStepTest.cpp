// The correction step on curved pages: given curves, searched ones, and those that are none.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

#include "core/DibImage.h"
#include "dewarping/CurvePoints.h"
#include "dewarping/Dewarp.h"
#include "dewarping/FindCurves.h"
#include "dewarping/ResampleFlat.h"
#include "page/DarkLevel.h"
#include "pipeline/GeometrySteps.h"
#include "pipeline/Run.h"
#include "pipeline/RunState.h"
#include "support/EachForm.h"
#include "support/Images.h"

namespace velloran {
namespace {

using dewarping::kCurvePoints;
using Group = std::array<std::int32_t, 2 * kCurvePoints>;

Settings SettingsWith(const Group& points) {
    Settings settings;
    settings.Set(PARA_CRT_TYPE, 3);
    for (std::size_t i = 0; i < points.size(); ++i)
        settings.Set(static_cast<ParaIndex>(PARA_CRT_DEWARPING_TOP_1 + i), points[i]);
    return settings;
}

struct Outcome {
    CDibImage image;
    RunReport report;
};

Outcome RunWith(const Settings& settings, const CDibImage& page, int stop = kStopWhole) {
    Outcome outcome;
    outcome.image = page;
    RunRequest request;
    request.image = &outcome.image;
    request.settings = settings;
    request.stop = stop;
    outcome.report = Run(request);
    EXPECT_TRUE(outcome.report.IsWhole());
    return outcome;
}

Group All(std::int32_t value) {
    Group points;
    points.fill(value);
    return points;
}

double Bend(double x) {
    const double s = x / 900;
    return -45 * 6.75 * s * (1 - s) * (1 - s);
}

/// Rows of words along bent lines, 900 x 1100.
CDibImage BentPage(int bpp = 8) {
    CDibImage page = test::Filled(900, 1100, bpp, 235);
    const int bytes = bpp / 8;
    for (int y = 150; y < 1000; y += 40)
        for (int x = 80; x < 820; ++x)
            for (int j = 0; j < 12 && x % 11 < 8; ++j)
                std::fill_n(page.GetBits(1099 - (y + j + static_cast<int>(Bend(x)))) + x * bytes,
                            bytes, std::uint8_t{30});
    return page;
}

Group GivenCurves() {
    Group points;
    for (int i = 0; i < kCurvePoints; ++i) {
        const double x = 40 + 820 * i / 7.0;
        points[static_cast<std::size_t>(i)] = dewarping::packPoint({x, 120 + Bend(x)});
        points[static_cast<std::size_t>(i + kCurvePoints)] =
            dewarping::packPoint({x, 1050 + Bend(x)});
    }
    return points;
}

CDibImage Flattened(CDibImage page, const Group& points, int mode) {
    const auto fill = static_cast<std::uint32_t>(findDarkLevel(page)) * 0x010101U;
    EXPECT_EQ(dewarping::dewarp(mode, page, points.data(), points.data() + kCurvePoints,
                                kCurvePoints, fill),
              1);
    return page;
}

TEST(FlattenStep, GivenCurvesMakeThePageFlat) {
    for (const int bpp : {8, 24}) {
        const CDibImage page = BentPage(bpp);
        const Group points = GivenCurves();
        const Settings settings = SettingsWith(points);
        const Outcome whole = RunWith(settings, page);
        test::ExpectSamePixels(whole.image, Flattened(page, points, dewarping::kCubic));
        EXPECT_FALSE(whole.report.found.curvePoints) << "nothing was searched";
        for (const int stop : {int{kStopPageCorrectionFast}, int{kStopPageCorrection}})
            test::ExpectSamePixels(RunWith(settings, page, stop).image,
                                   Flattened(page, points, dewarping::kNearestPixel));
    }
}

TEST(FlattenStep, UnsetCurvesAreSearchedAndReported) {
    const CDibImage page = BentPage();
    for (const std::int32_t unset : {0, -1}) {
        Group expected = All(unset);
        ASSERT_EQ(dewarping::findCurves(0, page, expected.data(), expected.data() + kCurvePoints,
                                        kCurvePoints, 1),
                  1);
        const Outcome outcome = RunWith(SettingsWith(All(unset)), page);
        ASSERT_TRUE(outcome.report.found.curvePoints);
        EXPECT_EQ(*outcome.report.found.curvePoints, expected);
        test::ExpectSamePixels(outcome.image, Flattened(page, expected, dewarping::kCubic));
        // The words stand in straight rows now: there are rows of paper alone between them.
        int blankRows = 0;
        for (int y = 0; y < outcome.image.GetHeight(); ++y) {
            int dark = 0;
            for (int x = 100; x < 800; ++x)
                dark += test::IndexAt(outcome.image, x, y) < 128 ? 1 : 0;
            blankRows += dark == 0 ? 1 : 0;
        }
        EXPECT_GT(blankRows, 300);
    }
}

TEST(FlattenStep, MakesTheSameBytesInEachForm) {
    for (const int bpp : {8, 24}) {
        const CDibImage page = BentPage(bpp);
        Outcome expected;
        test::InEachForm([&](const std::string&) {
            Outcome outcome = RunWith(SettingsWith(All(-1)), page);
            if (expected.image.IsValid()) {
                EXPECT_EQ(outcome.report.found.curvePoints, expected.report.found.curvePoints);
                test::ExpectSamePixels(outcome.image, expected.image);
            } else {
                expected = std::move(outcome);
            }
        });
    }
}

TEST(FlattenStep, APageWithoutTextStaysAndKeepsTheGrid) {
    const CDibImage page = test::Filled(400, 500, 24, 240);
    const Outcome outcome = RunWith(SettingsWith(All(-1)), page);
    test::ExpectSamePixels(outcome.image, page);
    ASSERT_TRUE(outcome.report.found.curvePoints);
    Group grid;
    dewarping::resetCurves(400, 500, grid.data(), grid.data() + kCurvePoints, kCurvePoints);
    EXPECT_EQ(*outcome.report.found.curvePoints, grid);
}

TEST(FlattenStep, FlatCurvesChangeNothing) {
    const CDibImage page = BentPage();
    Group grid;
    dewarping::resetCurves(900, 1100, grid.data(), grid.data() + kCurvePoints, kCurvePoints);
    test::ExpectSamePixels(RunWith(SettingsWith(grid), page).image, page);
}

TEST(FlattenStep, ARunWithTheCurvesOfAnEarlierRunGivesTheSameBytes) {
    const CDibImage page = BentPage();
    Settings settings = SettingsWith(All(-1));
    const Outcome first = RunWith(settings, page);
    first.report.found.ApplyTo(settings.values);
    const Outcome again = RunWith(settings, page);
    EXPECT_TRUE(again.report.found.IsEmpty());
    test::ExpectSamePixels(again.image, first.image);
}

TEST(FlattenStep, WhatLiesOutsideThePictureIsMarkedAndFilled) {
    Group points = GivenCurves();
    for (std::size_t i = kCurvePoints; i < points.size(); ++i)  // below the picture
        points[i] = dewarping::packPoint(
            {dewarping::unpackPoint(points[i]).x, dewarping::unpackPoint(points[i]).y + 150});
    CDibImage image = BentPage();
    RunState state{.image = &image, .values = SettingsWith(points).values};
    CorrectPage(state);
    ASSERT_TRUE(state.mask.IsValid());
    EXPECT_EQ(state.mask.GetWidth(), image.GetWidth());
    EXPECT_EQ(state.mask.GetHeight(), image.GetHeight());
    EXPECT_EQ(test::IndexAt(state.mask, 400, image.GetHeight() - 5), 0);
    EXPECT_EQ(test::IndexAt(state.mask, 400, 500), 255);
    // A cut behind it brings the fill.
    Settings settings = SettingsWith(points);
    settings.Set(PARA_CROPPING_P_LEFT, 20);
    settings.Set(PARA_FILL_BLANK_COLOR, 0xC8C8C8);
    const Outcome outcome = RunWith(settings, BentPage());
    EXPECT_EQ(test::IndexAt(outcome.image, 400, outcome.image.GetHeight() - 5), 0xC8);
}

}  // namespace
}  // namespace velloran

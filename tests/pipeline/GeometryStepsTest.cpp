// What the steps that find, cut, turn and place the page do in a run: each as its operation does,
// called by itself.

#include <gtest/gtest.h>

#include "core/DibImage.h"
#include "page/ContentBox.h"
#include "page/DarkLevel.h"
#include "page/Deskew.h"
#include "page/PackedLine.h"
#include "page/PageLayout.h"
#include "page/PageLines.h"
#include "page/PageSplit.h"
#include "page/Trapezoid.h"
#include "params/Settings.h"
#include "pipeline/Run.h"
#include "pipeline/RunRecord.h"
#include "pipeline/Split.h"
#include "support/Images.h"

namespace velloran {
namespace {

using test::Values;

Settings SettingsWith(const Values& values) {
    Settings settings;
    for (const auto& [index, value] : values)
        settings.Set(index, value);
    return settings;
}

struct Outcome {
    CDibImage image;
    RunReport report;
};

Outcome RunWith(const Values& values, const CDibImage& page, int stop = kStopWhole,
                std::int32_t edge = 0) {
    Outcome outcome;
    outcome.image = page;
    RunRequest request;
    request.image = &outcome.image;
    request.settings = SettingsWith(values);
    request.stop = stop;
    request.deskewEdge = edge;
    outcome.report = Run(request);
    EXPECT_TRUE(outcome.report.IsWhole());
    return outcome;
}

std::uint32_t DarkFill(const CDibImage& page) {
    return static_cast<std::uint32_t>(findDarkLevel(page)) * 0x010101U;
}

/// Rows of words that fall by `slope` of their length, on 1000 x 800 pixels of paper.
CDibImage TextPage(double slope) {
    CDibImage page = test::Filled(1000, 800, 8, 235);
    for (int y = 80; y < 720; ++y)
        for (int x = 100; x < 900; ++x) {
            const int line = y - static_cast<int>(x * slope) + 1000;
            if (line % 30 < 12 && (x / 17) % 5 != 4 && (x + line / 30 * 7) % 9 < 6)
                page.GetBits(799 - y)[x] = 25;
        }
    return page;
}

/// A spread: a dark gutter from x 480 at the top to 520 at the bottom.
CDibImage Spread() {
    CDibImage page = test::Filled(1000, 700, 8, 230);
    std::vector<int> gutter;
    lineTable(gutter, 480, 520, 1000, 700);
    for (int y = 0; y < 700; ++y)
        std::fill_n(page.GetBits(y) + gutter[static_cast<std::size_t>(y)] - 6, 13,
                    std::uint8_t{60});
    return page;
}

const Values kOneCut = {{PARA_PAGE_SPLIT_LEFT, PackLine({20, 30})},
                        {PARA_PAGE_SPLIT_RIGHT, PackLine({950, 960})},
                        {PARA_PAGE_SPLIT_MID, PackLine({480, 520})}};

Values With(Values values, const Values& more) {
    values.insert(values.end(), more.begin(), more.end());
    return values;
}

TEST(SplitStep, KeepsThePageThatTheTypeNames) {
    const CDibImage spread = Spread();
    const std::int32_t left = PackLine({20, 30}), right = PackLine({950, 960}),
                       mid = PackLine({480, 520});
    const struct {
        std::int32_t type, first, second;
    } kCases[] = {{1, left, right}, {2, left, mid}, {2 | 0x100, mid, right}, {3, left, mid}};
    for (const auto& c : kCases) {
        CDibImage expected = spread;
        ASSERT_EQ(keepBetweenLines(expected, c.first, c.second, DarkFill(spread)), 1);
        const Outcome outcome =
            RunWith(With(kOneCut, {{PARA_PAGE_SPLIT_TYPE, c.type}}), spread, kStopSplit);
        test::ExpectSamePixels(outcome.image, expected);
        EXPECT_TRUE(outcome.report.found.IsEmpty());
    }
}

TEST(SplitStep, LinesThatAreNotSetAreFoundOnceAndReported) {
    const CDibImage spread = Spread();
    std::int32_t lines[3] = {};
    ASSERT_EQ(findPageLines(spread, kLeftRightMid, lines, 0, 0), 1);
    const Outcome first = RunWith({{PARA_PAGE_SPLIT_TYPE, 2}}, spread, kStopSplit);
    ASSERT_TRUE(first.report.found.splitLines);
    EXPECT_EQ((*first.report.found.splitLines)[2], lines[2]);
    CParaBlock block;
    block.SetPara(PARA_PAGE_SPLIT_TYPE, 2);
    CDibImage page = spread;
    test::RunRecord record;
    test::Run(block, &page, kStopSplit, record);
    EXPECT_EQ(block.GetPara(PARA_PAGE_SPLIT_MID), lines[2]);
    test::ExpectSamePixels(page, first.image);
    // A later run takes them from the block, also on a page without a gutter.
    CDibImage blank = test::Filled(1000, 700, 8, 230);
    test::Run(block, &blank, kStopSplit, record);
    EXPECT_EQ(block.GetPara(PARA_PAGE_SPLIT_MID), lines[2]);
    EXPECT_EQ(blank.GetWidth(), page.GetWidth());
}

TEST(SplitStep, ADrawnSplitShadesTheRest) {
    const CDibImage spread = Spread();
    CDibImage expected = spread;
    ASSERT_EQ(shadeOutsideLines(expected, PackLine({20, 30}), PackLine({480, 520})), 1);
    const Outcome outcome =
        RunWith(With(kOneCut, {{PARA_PAGE_SPLIT_TYPE, 2}}), spread, kStopSplitDrawn);
    test::ExpectSamePixels(outcome.image, expected);
}

TEST(SplitStep, WhatLiesOutsideTheLinesIsFilledOnceThePageIsCut) {
    // The left line leans by 10 pixels: its corner lies outside of the page.
    const Outcome outcome = RunWith(With(kOneCut, {{PARA_PAGE_SPLIT_TYPE, 1},
                                                   {PARA_CROPPING_P_BOTTOM, 10},
                                                   {PARA_PAGE_SIZE, 1},
                                                   {PARA_FILL_BLANK_COLOR, 0xFFFFFF}}),
                                    Spread());
    EXPECT_EQ(test::IndexAt(outcome.image, 0, 690), 255);
    EXPECT_EQ(test::IndexAt(outcome.image, 15, 690), 230);
    EXPECT_EQ(test::IndexAt(outcome.image, 2, 0), 230);
}

TEST(CorrectionStep, TheCornersOfThePageBecomeARectangle) {
    const CDibImage page = test::Noise(300, 200, 24);
    const PackedCorners corners =
        PackCorners({{{20, 10}, {280, 30}, {270, 190}, {10, 170}}}, 300, 200);
    const Values values = {{PARA_CRT_TYPE, 2},
                           {PARA_CRT_PT_LT, corners[0]},
                           {PARA_CRT_PT_RT, corners[1]},
                           {PARA_CRT_PT_RB, corners[2]},
                           {PARA_CRT_PT_LB, corners[3]}};
    CDibImage quick = page, careful = page;
    ASSERT_EQ(warpToRectangle(quick, corners, 1, 0, 0, DarkFill(page)), 1);
    ASSERT_EQ(warpToRectangle(careful, corners, 0, 0, 0, DarkFill(page)), 1);
    for (const int stop : {int{kStopPageCorrectionFast}, int{kStopPageCorrection}})
        test::ExpectSamePixels(RunWith(values, page, stop).image, quick);
    test::ExpectSamePixels(RunWith(values, page).image, careful);
}

TEST(CorrectionStep, UnknownCornersAreFoundAndReported) {
    CDibImage desk = test::Filled(800, 1000, 8, 40);
    for (int y = 150; y < 880; ++y)
        std::fill_n(desk.GetBits(999 - y) + 100, 590 - y / 50, std::uint8_t{240});
    PackedCorners corners = kUnknownCorners;
    ASSERT_EQ(findCorners(1, desk, corners, 0, 0), 1);
    const Outcome outcome = RunWith({{PARA_CRT_TYPE, 2},
                                     {PARA_CRT_PT_LT, -1},
                                     {PARA_CRT_PT_RT, -1},
                                     {PARA_CRT_PT_RB, -1},
                                     {PARA_CRT_PT_LB, -1}},
                                    desk);
    ASSERT_TRUE(outcome.report.found.corners);
    EXPECT_EQ(*outcome.report.found.corners, corners);
    EXPECT_LT(outcome.image.GetWidth(), 640);
}

TEST(DeskewStep, APageOfTextTurnsStraight) {
    const CDibImage page = TextPage(0.04);
    double angle = 0, confidence = 0;
    ASSERT_EQ(findSkew(page, angle, confidence, {}, kDeskewRows), 1);
    ASSERT_GE(confidence, 2.0);
    CDibImage expected = page;
    const int hundredths = static_cast<int>(angle * 100);
    EXPECT_NEAR(hundredths, 229, 10);  // atan(0.04)
    ASSERT_EQ(rotateKeepSize(expected, -(hundredths / 100.0), 0, kExtendEdge, 0xFFFFFF), 1);
    const Outcome outcome = RunWith({{PARA_DESKEW, 1}}, page, kStopDeskew, /*edge=*/kExtendEdge);
    test::ExpectSamePixels(outcome.image, expected);
}

TEST(DeskewStep, APageThatIsNotSurelyCrookedStays) {
    const CDibImage blank = test::Filled(400, 400, 8, 230);
    for (const int mode : {1, 2, 3}) {
        const Outcome outcome = RunWith({{PARA_DESKEW, mode}}, blank);
        test::ExpectSamePixels(outcome.image, blank);
    }
}

TEST(DeskewStep, AManualAngleTurnsWithoutATest) {
    const CDibImage page = test::Noise(200, 150, 24);
    CDibImage expected = page;
    ASSERT_EQ(rotateKeepSize(expected, -1.5, 0, kFillEdge, 0x2040FF), 1);
    const Outcome outcome =
        RunWith({{PARA_DESKEW, 4}, {PARA_DESKEW_ANGLE, 150}, {PARA_FILL_BLANK_COLOR, 0x2040FF}},
                page, kStopDeskew, /*edge=*/kFillEdge);
    test::ExpectSamePixels(outcome.image, expected);
    test::ExpectSamePixels(RunWith({{PARA_DESKEW, 4}, {PARA_DESKEW_ANGLE, 0}}, page).image, page);
}

TEST(DeskewStep, WithBlackEdgesToRemoveThePageTurnsOnceBehindTheSearch) {
    const CDibImage page = TextPage(0.03);
    const Values values = {
        {PARA_DESKEW, 4}, {PARA_DESKEW_ANGLE, 170}, {PARA_FIND_CNT_BOX, 1}, {PARA_PAGE_SIZE, 1}};
    CDibImage searched = page, expected = page;
    ASSERT_EQ(rotateKeepSize(searched, -1.7, 1, kFillEdge, DarkFill(page)), 1);
    ContentBoxRequest request;
    request.searchRect = {0, 0, 1000, 800};
    PageBox box;
    ASSERT_EQ(findContentBox(searched, request, box), 1);
    ASSERT_EQ(rotateKeepSize(expected, -1.7, 0, kFillEdge, DarkFill(page)), 1);
    ASSERT_EQ(trimImage(expected, box.left, box.top, 1000 - box.right, 800 - box.bottom), 1);
    test::ExpectSamePixels(RunWith(values, page).image, expected);
}

TEST(CropStep, WithTheSearchSetThePageIsCutToItsContent) {
    const CDibImage page = TextPage(0);
    ContentBoxRequest request;
    request.searchRect = {100, 80, 1000, 800};
    PageBox box;
    ASSERT_EQ(findContentBox(page, request, box), 1);
    CDibImage expected = page;
    ASSERT_EQ(trimImage(expected, box.left, box.top, 1000 - box.right, 800 - box.bottom), 1);
    test::ExpectSamePixels(RunWith({{PARA_FIND_CNT_BOX, 1},
                                    {PARA_CROPPING_P_LEFT, 100},
                                    {PARA_CROPPING_P_TOP, 100},
                                    {PARA_PAGE_SIZE, 1}},
                                   page)
                               .image,
                           expected);
}

TEST(LayoutStep, ACutPageKeepsItsSizeAndIsBlankWhereItWasCut) {
    const CDibImage page = test::Noise(60, 50, 24);
    const Outcome outcome = RunWith(
        {{PARA_CROPPING_P_LEFT, 100}, {PARA_FILL_BLANK_COLOR, 0x0000FF}, {PARA_ALIGN_H, 0}}, page);
    ASSERT_EQ(outcome.image.GetWidth(), 60);
    EXPECT_EQ(test::PixelAt(outcome.image, 5, 20), (test::Rgb{255, 0, 0}));
    EXPECT_EQ(test::PixelAt(outcome.image, 6, 20), test::PixelAt(page, 6, 20));
}

TEST(LayoutStep, ContentGrowsToItsPage) {
    const Outcome outcome = RunWith({{PARA_PAGE_SIZE, 5},
                                     {PARA_PAGE_SIZE_UNIT, 1},
                                     {PARA_PAGE_WIDTH, 300},
                                     {PARA_PAGE_HEIGHT, 400},
                                     {PARA_MARGIN_LEFT, 20},
                                     {PARA_MARGIN_RIGHT, 20}},
                                    test::Filled(130, 100, 8, 90));
    ASSERT_EQ(outcome.image.GetWidth(), 300);
    ASSERT_EQ(outcome.image.GetHeight(), 400);
    // 260 x 200 at the left margin, as far from the top as it was: not at all.
    EXPECT_EQ(test::IndexAt(outcome.image, 19, 100), 255);
    EXPECT_EQ(test::IndexAt(outcome.image, 20, 100), 90);
    EXPECT_EQ(test::IndexAt(outcome.image, 279, 199), 90);
    EXPECT_EQ(test::IndexAt(outcome.image, 280, 199), 255);
    EXPECT_EQ(test::IndexAt(outcome.image, 100, 200), 255);
}

TEST(LayoutStep, APageAboveTheLimitsLeavesThePageAsItWas) {
    const CDibImage page = test::Noise(60, 50, 24);
    const Outcome outcome = RunWith({{PARA_PAGE_SIZE, 5},
                                     {PARA_PAGE_SIZE_UNIT, 1},
                                     {PARA_PAGE_WIDTH, 2000000000},
                                     {PARA_PAGE_HEIGHT, 2000000000},
                                     {PARA_SMALL_CNT_BOX, 0}},
                                    page);
    test::ExpectSamePixels(outcome.image, page);
}

TEST(LayoutStep, ARunThatEndsWithTheBoxHasItsLayoutAndNoneOfTheTones) {
    const CDibImage page = TextPage(0);
    const Values values = {{PARA_CROPPING_P_LEFT, 50},
                           {PARA_PAGE_SIZE, 2},
                           {PARA_PAGE_SIZE_UNIT, 1},
                           {PARA_MARGIN_TOP, 30},
                           {PARA_NEGATE, 1}};
    for (const int stop : {int{kStopContentBox}, int{kStopContentBoxLayout}}) {
        const Outcome outcome = RunWith(values, page, stop);
        EXPECT_EQ(outcome.image.GetWidth(), 950);
        EXPECT_EQ(outcome.image.GetHeight(), 830);
        EXPECT_EQ(test::IndexAt(outcome.image, 10, 10), 255);
        EXPECT_EQ(test::IndexAt(outcome.image, 10, 40), 235);
    }
}

TEST(GeometrySteps, ARunWithWhatAnEarlierRunFoundGivesTheSameBytes) {
    const CDibImage spread = Spread();
    const Values values = {{PARA_PAGE_SPLIT_TYPE, 3}, {PARA_CRT_TYPE, 2},   {PARA_CRT_PT_LT, -1},
                           {PARA_CRT_PT_RT, -1},      {PARA_CRT_PT_RB, -1}, {PARA_CRT_PT_LB, -1}};
    const Outcome first = RunWith(values, spread);
    Settings settings = SettingsWith(values);
    first.report.found.ApplyTo(settings.values);
    CDibImage again = spread;
    RunRequest request;
    request.image = &again;
    request.settings = settings;
    EXPECT_TRUE(velloran::Run(request).found.IsEmpty());
    test::ExpectSamePixels(again, first.image);
}

}  // namespace
}  // namespace velloran

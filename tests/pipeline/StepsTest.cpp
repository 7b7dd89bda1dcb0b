// What the steps do to a page in a run.

#include <gtest/gtest.h>

#include <vector>

#include "core/DibImage.h"
#include "params/ParaBlock.h"
#include "pipeline/RunRecord.h"
#include "pipeline/RunState.h"
#include "pipeline/StepTable.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"
#include "tone/AutoLevels.h"

namespace velloran {
namespace {

CParaBlock With(std::initializer_list<std::pair<ParaIndex, std::int32_t>> values) {
    CParaBlock block;
    for (const auto& [index, value] : values)
        block.SetPara(index, value);
    return block;
}

CDibImage After(CParaBlock block, const CDibImage& before) {
    CDibImage image = before;
    test::Run(block, image);
    return image;
}

/// The state at the end of a run of the steps up to `last`.
void TakeSteps(RunState& state, int last) {
    for (const Step& step : Steps().first(static_cast<std::size_t>(last))) {
        if (step.before != nullptr)
            step.before(state);
        if (step.runs(state.Known()))
            step.run(state);
    }
}

TEST(RotateStep, TurnsAndMirrorsWithAllElseAtItsDefault) {
    const CDibImage page = test::FromRows({{1, 2, 3}, {4, 5, 6}});
    const CDibImage expected[] = {
        test::FromRows({{3, 6}, {2, 5}, {1, 4}}),  // to the left
        test::FromRows({{4, 1}, {5, 2}, {6, 3}}),  // to the right
        test::FromRows({{6, 5, 4}, {3, 2, 1}}),    // half a turn
        test::FromRows({{3, 2, 1}, {6, 5, 4}}),    // mirrored
        test::FromRows({{4, 5, 6}, {1, 2, 3}}),    // flipped
    };
    for (int value = 1; value <= 5; ++value)
        test::ExpectSamePixels(After(With({{PARA_ROATE, value}}), page), expected[value - 1]);
    for (const int value : {-1, 0, 6})
        test::ExpectSamePixels(After(With({{PARA_ROATE, value}}), page), page);
}

TEST(RotateStep, WithoutMemoryThePageIsKeptAndTheRunGoesOn) {
    const CDibImage page = test::Filled(30, 20, 24, 100);
    CParaBlock block = With({{PARA_ROATE, 1}, {PARA_BRIGHTNESS, 50}});
    bool failed = true;
    for (long n = 1; failed; ++n) {
        CDibImage image = page;
        {
            const test::FailAllocation failure(n);
            test::Run(block, image);
            failed = failure.Happened();
        }
        EXPECT_TRUE(failed || n > 1);
        EXPECT_EQ(image.GetWidth(), failed ? 30 : 20);
        EXPECT_EQ(test::PixelAt(image, 0, 0), (test::Rgb{50, 50, 50}));
    }
}

TEST(CropStep, CutsTheFourMargins) {
    // Of 50 by 40 pixels: 5 left, 4 at the top, 10 right, 20 at the bottom.
    const CDibImage page = test::Noise(50, 40, 24);
    const CDibImage image = After(With({{PARA_CROPPING_P_LEFT, 100},
                                        {PARA_CROPPING_P_TOP, 100},
                                        {PARA_CROPPING_P_RIGHT, 200},
                                        {PARA_CROPPING_P_BOTTOM, 500},
                                        {PARA_PAGE_SIZE, 1}}),
                                  page);
    ASSERT_EQ(image.GetWidth(), 35);
    ASSERT_EQ(image.GetHeight(), 16);
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 35; ++x)
            ASSERT_EQ(test::PixelAt(image, x, y), test::PixelAt(page, x + 5, y + 4));
}

TEST(CropStep, MarginsBelowThreePixelsAreDropped) {
    // 60 per mille of 50 are 3 pixels, 40 are 2.
    const CDibImage page = test::Noise(50, 50, 8);
    EXPECT_EQ(After(With({{PARA_CROPPING_P_LEFT, 60}, {PARA_PAGE_SIZE, 1}}), page).GetWidth(), 47);
    EXPECT_EQ(After(With({{PARA_CROPPING_P_LEFT, 40}, {PARA_PAGE_SIZE, 1}}), page).GetWidth(), 50);
}

TEST(CropStep, KeepsInTheLayoutWhatWasCut) {
    CParaBlock block = With({{PARA_CROPPING_P_LEFT, 100},
                             {PARA_CROPPING_P_TOP, 100},
                             {PARA_CROPPING_P_RIGHT, 200},
                             {PARA_CROPPING_P_BOTTOM, 500}});
    CDibImage image = test::Noise(50, 40, 24);
    RunState state{.image = &image, .values = block.GetValues()};
    TakeSteps(state, 5);
    EXPECT_EQ(state.layout.cutLeft, 5);
    EXPECT_EQ(state.layout.cutTop, 4);
    EXPECT_EQ(state.layout.cutRight, 10);
    EXPECT_EQ(state.layout.cutBottom, 20);
    EXPECT_EQ(state.layout.imageWidth, 50);
    EXPECT_EQ(state.layout.imageHeight, 40);
}

TEST(CropStep, ACutThatWouldLeaveNothingIsRefusedAndNotKept) {
    CParaBlock block = With({{PARA_CROPPING_P_LEFT, 600}, {PARA_CROPPING_P_RIGHT, 600}});
    const CDibImage before = test::Noise(50, 40, 24);
    CDibImage image = before;
    RunState state{.image = &image, .values = block.GetValues()};
    TakeSteps(state, 5);
    test::ExpectSamePixels(image, before);
    EXPECT_EQ(state.layout.cutLeft, 0);
    EXPECT_EQ(state.layout.cutRight, 0);
}

TEST(CropStep, CutsTheMaskWithThePageAndFillsWhatItMarks) {
    CParaBlock block = With({{PARA_CROPPING_P_LEFT, 100}, {PARA_FILL_BLANK_COLOR, 0x0000FF}});
    CDibImage image = test::Filled(50, 40, 24, 10);
    RunState state{.image = &image, .values = block.GetValues()};
    state.mask = test::Filled(50, 40, 8, 255);
    test::SetIndex(state.mask, 20, 30, 0);
    TakeSteps(state, 5);
    EXPECT_EQ(state.mask.GetWidth(), 45);
    EXPECT_EQ(test::PixelAt(image, 15, 30), (test::Rgb{255, 0, 0}));
    EXPECT_EQ(test::PixelAt(image, 14, 29), (test::Rgb{255, 0, 0}));
    EXPECT_EQ(test::PixelAt(image, 13, 30), (test::Rgb{10, 10, 10}));
}

TEST(CropStep, WithoutAMaskNothingIsFilled) {
    const CDibImage page = test::Filled(50, 40, 24, 10);
    const CDibImage image = After(
        With({{PARA_CROPPING_P_LEFT, 100}, {PARA_FILL_BLANK_COLOR, 0x0000FF}, {PARA_PAGE_SIZE, 1}}),
        page);
    test::ExpectSamePixels(image, test::Filled(45, 40, 24, 10));
}

TEST(CropStep, WithoutACropAMaskIsNotFilled) {
    CParaBlock block = With({{PARA_FILL_BLANK_COLOR, 0x0000FF}});
    CDibImage image = test::Filled(50, 40, 24, 10);
    RunState state{.image = &image, .values = block.GetValues()};
    state.mask = test::Filled(50, 40, 8, 0);
    TakeSteps(state, 30);
    test::ExpectSamePixels(image, test::Filled(50, 40, 24, 10));
}

TEST(LevelsStep, RunsTheModeOnceBeforeAndOnceBehindTheMapping) {
    const CDibImage page = test::Noise(30, 20, 24);
    for (int mode = 1; mode <= 12; ++mode) {
        CDibImage expected = page;
        AutoLevels(expected, mode);
        test::ExpectSamePixels(After(With({{PARA_AUTO_LEVELS, mode}}), page), expected);
        test::ExpectSamePixels(After(With({{PARA_AUTO_LEVELS_POST, mode}}), page), expected);
    }
}

TEST(LevelsStep, OnlyThePostLevelsSeeTheMapping) {
    // All tones between 100 and 119, then brightened to white from 64 on.
    CDibImage page = test::Filled(20, 20, 8, 100);
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 20; ++x)
            test::SetIndex(page, x, y, 100 + x);
    const CDibImage before = After(With({{PARA_AUTO_LEVELS, 1}, {PARA_BRIGHTNESS, 400}}), page);
    const CDibImage behind =
        After(With({{PARA_AUTO_LEVELS_POST, 1}, {PARA_BRIGHTNESS, 400}}), page);
    EXPECT_EQ(test::IndexAt(before, 0, 0), 0);    // stretched, so the darkest is black
    EXPECT_EQ(test::IndexAt(behind, 0, 0), 255);  // all were white by then
}

TEST(PixelMappingStep, RunsAllStagesInTheirOrderInOneTable) {
    CParaBlock block = With({{PARA_HIGHLIGHT, 120},
                             {PARA_THRESHOLD, 150},
                             {PARA_BRIGHTNESS, 50},
                             {PARA_CURVE_DIV, 155},
                             {PARA_CURVE_OFFSET, 4},
                             {PARA_CONTRAST, 200},
                             {PARA_GAMMA, 0}});
    // 200: highlight 240, brightness 120, curve tuning 144 - 4, contrast 152.
    // 100: below the threshold, 50, 25 - 4 = 21, contrast 128 - 214 is 0.
    block.SetPara(PARA_GAMMA, 100);
    const CDibImage image = After(block, test::FromRows({{200, 100}}));
    EXPECT_EQ(test::IndexAt(image, 0, 0), 152);
    EXPECT_EQ(test::IndexAt(image, 1, 0), 0);
    block.SetPara(PARA_GAMMA, 0);  // last of all: white, black included
    test::ExpectSamePixels(After(block, test::FromRows({{200, 100}})),
                           test::FromRows({{255, 255}}));
}

TEST(PixelMappingStep, TheCurveRunsBetweenContrastAndGamma) {
    // The curve makes all but black and white dark: it must see the contrast's white.
    CParaBlock block = With({{PARA_CONTRAST, 1000}, {PARA_CURVE_2, 255}, {PARA_CURVE_3, 0}});
    const CDibImage image = After(block, test::FromRows({{150, 128, 100}}));
    test::ExpectSamePixels(image, test::FromRows({{255, 32, 0}}));
}

TEST(PixelMappingStep, PureBlackAndWhiteStaysUnderAnyValue) {
    const CDibImage page = test::Noise(30, 20, 1);
    test::ExpectSamePixels(After(With({{PARA_GAMMA, 0}, {PARA_BRIGHTNESS, 0}}), page), page);
}

TEST(PixelMappingStep, NeutralValuesReachNoPixelBuffer) {
    // An offset without a divisor, and a curve that is not set.
    const CDibImage page = test::Noise(30, 20, 8);
    const CDibImage image =
        After(With({{PARA_CURVE_OFFSET, 90}, {PARA_CURVE_2, 0}, {PARA_CURVE_3, 0}}), page);
    test::ExpectSamePixels(image, page);
}

TEST(ReductionStep, AGrayPageWithAColoredFillAndACropProtectsAGray) {
    CParaBlock block = With({{PARA_CROPPING_P_LEFT, 100}, {PARA_FILL_BLANK_COLOR, 0x0000FF}});
    CDibImage image = test::Noise(50, 40, 8);
    RunState state{.image = &image, .values = block.GetValues()};
    TakeSteps(state, 30);
    EXPECT_EQ(state.reduce.reservedColor, 0x4C4C4CU);  // 306 * 255 / 1024
    EXPECT_EQ(state.layout.fillColor, 0x4C4C4CU);
}

}  // namespace
}  // namespace velloran

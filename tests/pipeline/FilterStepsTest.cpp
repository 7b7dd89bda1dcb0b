// What the steps that resize, blur, sharpen and thicken do to a page in a run.

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <limits>
#include <utility>

#include "core/DibImage.h"
#include "filters/LevelFilters.h"
#include "filters/Morphology.h"
#include "filters/Resample.h"
#include "filters/UnsharpMask.h"
#include "page/PageLayout.h"
#include "params/ParaBlock.h"
#include "pipeline/Layout.h"
#include "pipeline/RunRecord.h"
#include "pipeline/RunState.h"
#include "pipeline/StepTable.h"
#include "support/Images.h"

namespace velloran {
namespace {

using Values = std::initializer_list<std::pair<ParaIndex, std::int32_t>>;

CParaBlock With(Values values) {
    CParaBlock block;
    for (const auto& [index, value] : values)
        block.SetPara(index, value);
    return block;
}

CDibImage After(Values values, const CDibImage& before, int stop = kStopWhole) {
    CParaBlock block = With(values);
    CDibImage image = before;
    block.RunPipeline(&image, nullptr, nullptr, nullptr, stop, nullptr);
    return image;
}

bool Tells(Values values, const CDibImage& page, const char16_t* label) {
    CParaBlock block = With(values);
    CDibImage image = page;
    test::RunRecord record;
    test::Run(block, &image, kStopWhole, record);
    const auto labels = record.Labels();
    return std::count(labels.begin(), labels.end(), label) != 0;
}

TEST(ResizeStep, AtAHundredPercentNoStepRunsAndNoLabelIsTold) {
    const CDibImage page = test::Noise(40, 30, 24);
    test::ExpectSamePixels(After({{PARA_RESIZE, 100}}, page), page);
    EXPECT_FALSE(Tells({{PARA_RESIZE, 100}}, page, u"放大"));
    EXPECT_FALSE(Tells({{PARA_RESIZE, 100}}, page, u"缩小"));
}

TEST(ResizeStep, MorePercentEnlargeAndLessReduce) {
    const CDibImage page = test::Noise(40, 31, 24);
    CDibImage larger = page, smaller = page;
    ResizeTo(larger, 60, 46);  // 46.5, truncated
    ResizeTo(smaller, 25, 19);
    test::ExpectSamePixels(After({{PARA_RESIZE, 150}}, page), larger);
    test::ExpectSamePixels(After({{PARA_RESIZE, 63}}, page), smaller);
    EXPECT_TRUE(Tells({{PARA_RESIZE, 150}}, page, u"放大"));
    EXPECT_FALSE(Tells({{PARA_RESIZE, 150}}, page, u"缩小"));
    EXPECT_TRUE(Tells({{PARA_RESIZE, 63}}, page, u"缩小"));
    EXPECT_FALSE(Tells({{PARA_RESIZE, 63}}, page, u"放大"));
}

TEST(ResizeStep, CountsFromWhatTheCutLeaves) {
    const CDibImage page = test::Noise(50, 40, 24);
    const CDibImage image = After({{PARA_CROPPING_P_LEFT, 200},
                                   {PARA_CROPPING_P_BOTTOM, 500},
                                   {PARA_RESIZE, 200},
                                   {PARA_PAGE_SIZE, 1}},
                                  page);
    EXPECT_EQ(image.GetWidth(), 80);
    EXPECT_EQ(image.GetHeight(), 40);
}

TEST(ResizeStep, EnlargesBeforeTheBlurAndReducesAfterIt) {
    const CDibImage page = test::Noise(40, 30, 24);
    CDibImage larger = page, smaller = page;
    ResizeTo(larger, 80, 60);
    BlurLevel(larger, 3);
    BlurLevel(smaller, 3);
    ResizeTo(smaller, 20, 15);
    SharpenLevel(smaller, 4);
    test::ExpectSamePixels(After({{PARA_RESIZE, 200}, {PARA_BLUR, 3}}, page), larger);
    test::ExpectSamePixels(After({{PARA_RESIZE, 50}, {PARA_BLUR, 3}, {PARA_SHARPEN, 4}}, page),
                           smaller);
}

TEST(ResizeStep, AContentLargerOneWayAndSmallerTheOtherRunsNeither) {
    CParaBlock block;
    CDibImage image = test::Noise(40, 30, 24);
    for (const auto& [width, height] : {std::pair{80, 15}, {20, 60}, {40, 60}, {20, 30}}) {
        RunState state{.image = &image, .values = block.GetValues()};
        state.layout.contentWidth = width;
        state.layout.contentHeight = height;
        for (const int number : {13, 25})
            EXPECT_FALSE(Steps()[static_cast<std::size_t>(number - 1)].runs(state.Known()))
                << width << " x " << height;
    }
}

TEST(ResizeStep, ExtremePercentsLeaveThePage) {
    const CDibImage page = test::Noise(40, 30, 24);
    for (const int percent :
         {std::numeric_limits<int>::min(), -100, 0, std::numeric_limits<int>::max()})
        test::ExpectSamePixels(After({{PARA_RESIZE, percent}}, page), page);
}

TEST(ResizeStep, AStopAfterTheContentBoxShowsTheContentInItsSize) {
    const CDibImage page = test::Noise(40, 30, 24);
    CDibImage larger = page;
    ResizeTo(larger, 80, 60);
    for (const int stop : {int{kStopContentBox}, int{kStopContentBoxLayout}})
        test::ExpectSamePixels(After({{PARA_RESIZE, 200}, {PARA_BLUR, 3}}, page, stop), larger);
}

TEST(ContentOfAFreePage, IsThePercentOfWhatWasNotCutTruncated) {
    LayoutRequest request;
    request.imageWidth = 101;
    request.imageHeight = 57;
    request.cutLeft = 10;
    request.cutRight = 2;
    request.cutTop = 7;
    request.resizePercent = 33;
    computeContentSize(request);
    EXPECT_EQ(request.contentWidth, 29);   // 29.37
    EXPECT_EQ(request.contentHeight, 16);  // 16.5
    request.imageWidth = 0;
    computeContentSize(request);
    EXPECT_EQ(request.contentWidth, 0);
    EXPECT_EQ(request.contentHeight, 0);
}

TEST(ContentOfAFreePage, IsLimitedToWhatAnIntHolds) {
    LayoutRequest request;
    request.imageWidth = 2000000000;
    request.imageHeight = 10;
    request.resizePercent = std::numeric_limits<int>::max();
    computeContentSize(request);
    EXPECT_EQ(request.contentWidth, std::numeric_limits<int>::max());
    request.resizePercent = std::numeric_limits<int>::min();
    computeContentSize(request);
    EXPECT_EQ(request.contentWidth, std::numeric_limits<int>::min());
    EXPECT_EQ(request.contentHeight, std::numeric_limits<int>::min() / 10);
}

TEST(StrokeStep, EveryValueMakesItsCalls) {
    const CDibImage page = test::Noise(40, 30, 24);
    for (int value = 1; value <= 16; ++value) {
        const int strength = (value - 1) % 4 + 1, group = (value - 1) / 4;
        CDibImage expected = page;
        if (group == 0 || group == 3)
            Darken(expected, strength);
        if (group == 1 || group == 2 || group == 3)
            Lighten(expected, strength);
        if (group == 2)
            Darken(expected, strength);
        SCOPED_TRACE(value);
        test::ExpectSamePixels(After({{PARA_ERODE, value}}, page), expected);
    }
    for (const int value : {-1, 0, 17})
        test::ExpectSamePixels(After({{PARA_ERODE, value}}, page), page);
}

TEST(StrokeStep, NineOpensWithTheFirstStrength) {
    const CDibImage page = test::Noise(40, 30, 8);
    CDibImage expected = page;
    Lighten(expected, 1);
    Darken(expected, 1);
    test::ExpectSamePixels(After({{PARA_ERODE, 9}}, page), expected);
}

TEST(BlurSteps, TakeTheirValues) {
    const CDibImage page = test::Noise(40, 30, 24);
    for (int level = 1; level <= 10; ++level) {
        CDibImage expected = page;
        BlurLevel(expected, level);
        test::ExpectSamePixels(After({{PARA_BLUR, level}}, page), expected);
    }
    for (const int tenths : {1, 13, 400, -5, 100000}) {
        CDibImage expected = page;
        UnsharpMask(expected, 1, static_cast<float>(tenths / 10.0), 1, 1, /*blurOnly=*/true);
        test::ExpectSamePixels(After({{PARA_ADJUST_BLUR_RADIUS, tenths}}, page), expected);
    }
}

TEST(SharpenSteps, TakeTheirValues) {
    const CDibImage page = test::Noise(40, 30, 24);
    for (int level = 1; level <= 12; ++level) {
        CDibImage expected = page;
        SharpenLevel(expected, level);
        test::ExpectSamePixels(After({{PARA_SHARPEN, level}}, page), expected);
    }
    CDibImage expected = page;
    UnsharpMask(expected, 170, 2.3F, 9, 2, /*blurOnly=*/false);
    test::ExpectSamePixels(After({{PARA_USM_TIMES, 2},
                                  {PARA_USM_AMOUNT, 170},
                                  {PARA_USM_RADIUS, 23},
                                  {PARA_USM_THRESHOLD, 9}},
                                 page),
                           expected);
    test::ExpectSamePixels(After({{PARA_USM_TIMES, -1}}, page), page);
}

}  // namespace
}  // namespace velloran

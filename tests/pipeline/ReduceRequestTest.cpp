#include "pipeline/ReduceRequest.h"

#include <gtest/gtest.h>

#include <limits>

#include "core/DibImage.h"
#include "support/Images.h"

namespace velloran {
namespace {

constexpr std::uint32_t kNone = 0xFFFFFFFF;

LayoutRequest CutAtTop() {
    LayoutRequest layout;
    layout.cutTop = 7;
    layout.fillColor = 0xABCDEF;
    return layout;
}

/// The protected colour of a page that was cut at its top.
std::uint32_t Reserved(int bpp, int color, std::int32_t fill, LayoutRequest layout = CutAtTop()) {
    CParaBlock block;
    block.SetPara(PARA_COLOR, color);
    block.SetPara(PARA_FILL_BLANK_COLOR, fill);
    return MakeReduceRequest(block.GetValues(), test::Filled(4, 4, bpp, 0), layout).reservedColor;
}

TEST(ReduceRequest, TakesEachFieldFromItsParameter) {
    CParaBlock block;
    int value = 100;
    for (const ParaIndex index :
         {PARA_COLOR, PARA_DECREASE_BPP_DITHER, PARA_DECREASE_BPP_QUANTIZE,
          PARA_DECREASE_TRANSPARENT, PARA_DECREASE_THRESHOLD_METHOD, PARA_DECREASE_WINDOW_SIZE,
          PARA_DECREASE_DESPECKLE_SIZE, PARA_DECREASE_BW_DITHER_METHOD, PARA_DECREASE_BLOCK_WIDTH,
          PARA_DECREASE_BLOCK_HEIGHT, PARA_DECREASE_BLOCK_WIDTH_CONDITION,
          PARA_DECREASE_BLOCK_HEIGHT_CONDITION, PARA_DECREASE_DE_BLACK, PARA_DECREASE_DE_SMOOTH})
        block.SetPara(index, value++);
    CDibImage image = test::Filled(4, 4, 24, 0);
    image.Source().sourceColours = 8;
    LayoutRequest layout;
    const DecreaseBppRequest request = MakeReduceRequest(block.GetValues(), image, layout);
    EXPECT_EQ(request.color, 100);
    EXPECT_EQ(request.sourceBpp, 8);
    EXPECT_EQ(request.dither, 101);
    EXPECT_EQ(request.quantize, 102);
    EXPECT_EQ(request.transparent, 103);
    EXPECT_EQ(request.thresholdMethod, 104);
    EXPECT_EQ(request.windowSize, 1060);  // position 105
    EXPECT_EQ(request.balance, 0.5F);
    EXPECT_EQ(request.despeckleSize, 106);
    EXPECT_EQ(request.bwDitherMethod, 107);
    EXPECT_EQ(request.blockWidth, 108);
    EXPECT_EQ(request.blockHeight, 109);
    EXPECT_EQ(request.blockWidthCondition, 110);
    EXPECT_EQ(request.blockHeightCondition, 111);
    EXPECT_EQ(request.deBlack, 112);
    EXPECT_EQ(request.deSmooth, 113);
    EXPECT_EQ(request.reservedColor, kNone);
}

TEST(ReduceRequest, TheWindowOfADefaultBlockIs50PixelsAndNoneOverflows) {
    LayoutRequest layout;
    const CDibImage image = test::Filled(4, 4, 24, 0);
    CParaBlock block;
    EXPECT_EQ(MakeReduceRequest(block.GetValues(), image, layout).windowSize, 50);
    block.SetPara(PARA_DECREASE_WINDOW_SIZE, std::numeric_limits<int>::max());
    EXPECT_EQ(MakeReduceRequest(block.GetValues(), image, layout).windowSize,
              std::numeric_limits<int>::max());
    block.SetPara(PARA_DECREASE_WINDOW_SIZE, std::numeric_limits<int>::min());
    EXPECT_EQ(MakeReduceRequest(block.GetValues(), image, layout).windowSize,
              std::numeric_limits<int>::min());
}

TEST(ReduceRequest, WithoutACutNoColorIsProtected) {
    EXPECT_EQ(Reserved(8, 7, 0x0000FF, LayoutRequest{}), kNone);
}

TEST(ReduceRequest, ACutOnAnySideProtectsTheFill) {
    for (std::int32_t LayoutRequest::*side : {&LayoutRequest::cutLeft, &LayoutRequest::cutRight,
                                              &LayoutRequest::cutTop, &LayoutRequest::cutBottom}) {
        LayoutRequest layout;
        layout.*side = 3;
        EXPECT_EQ(Reserved(24, 3, 0x0000FF, layout), 0x0000FFU);
    }
}

TEST(ReduceRequest, AGrayFillStaysAsItIs) {
    for (const int bpp : {8, 24})
        for (const int color : {1, 3, 7})
            for (const int fill : {0x000000, 0x808080, 0xFFFFFF})
                EXPECT_EQ(Reserved(bpp, color, fill), static_cast<std::uint32_t>(fill));
}

TEST(ReduceRequest, AColoredFillBecomesGrayForGrayTargetsAndGrayPages) {
    // Blue, green and red of 255 weigh 117, 601 and 306 of 1024: 29, 149 and 76.
    for (const int color : {1, 4, 5, 6, 7, 15, 16, 17}) {
        EXPECT_EQ(Reserved(24, color, 0xFF0000), 0x1D1D1DU) << color;
        EXPECT_EQ(Reserved(24, color, 0x00FF00), 0x959595U) << color;
        EXPECT_EQ(Reserved(24, color, 0x0000FF), 0x4C4C4CU) << color;
    }
    for (const int color : {0, 2, 3, 8, 9, 10, 11, 12, 13, 14, 18, 19, -1, 20}) {
        EXPECT_EQ(Reserved(8, color, 0x0000FF), 0x4C4C4CU) << color;
        EXPECT_EQ(Reserved(24, color, 0x0000FF), 0x0000FFU) << color;
        EXPECT_EQ(Reserved(4, color, 0x0000FF), 0x0000FFU) << color;
    }
}

TEST(ReduceRequest, OnlyAReplacedFillAlsoBecomesTheFillOfTheLayout) {
    const CDibImage gray = test::Filled(4, 4, 8, 0), colored = test::Filled(4, 4, 24, 0);
    CParaBlock block;
    block.SetPara(PARA_FILL_BLANK_COLOR, 0x0000FF);
    LayoutRequest layout = CutAtTop();
    MakeReduceRequest(block.GetValues(), colored, layout);
    EXPECT_EQ(layout.fillColor, 0xABCDEFU);
    MakeReduceRequest(block.GetValues(), gray, layout);
    EXPECT_EQ(layout.fillColor, 0x4C4C4CU);
}

}  // namespace
}  // namespace velloran

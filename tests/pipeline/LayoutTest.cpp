#include "pipeline/Layout.h"

#include <gtest/gtest.h>

namespace velloran {
namespace {

TEST(LayoutRequest, TakesEachFieldFromItsParameter) {
    CParaBlock block;
    int value = 1000;
    for (const ParaIndex index :
         {PARA_PAGE_SIZE, PARA_PAGE_SIZE_UNIT, PARA_DPI, PARA_PAGE_WIDTH, PARA_PAGE_HEIGHT,
          PARA_MARGIN_LEFT, PARA_MARGIN_RIGHT, PARA_MARGIN_TOP, PARA_MARGIN_BOTTOM,
          PARA_SMALL_CNT_BOX, PARA_BIG_CNT_BOX, PARA_RESIZE, PARA_ALIGN_H, PARA_ALIGN_V})
        block.SetPara(index, value++);
    block.SetPara(PARA_FILL_BLANK_COLOR, 0x123456);
    const LayoutRequest request = MakeLayoutRequest(block.GetValues(), 640, 480);
    EXPECT_EQ(request.pageSize, 1000);
    EXPECT_EQ(request.unit, 1001);
    EXPECT_EQ(request.dpi, 1002);
    EXPECT_EQ(request.pageWidth, 1003);
    EXPECT_EQ(request.pageHeight, 1004);
    EXPECT_EQ(request.marginLeft, 1005);
    EXPECT_EQ(request.marginRight, 1006);
    EXPECT_EQ(request.marginTop, 1007);
    EXPECT_EQ(request.marginBottom, 1008);
    EXPECT_EQ(request.smallRule, 1009);
    EXPECT_EQ(request.bigRule, 1010);
    EXPECT_EQ(request.resizePercent, 1011);
    EXPECT_EQ(request.alignH, 1012);
    EXPECT_EQ(request.alignV, 1013);
    EXPECT_EQ(request.fillColor, 0x123456U);
    EXPECT_EQ(request.imageWidth, 640);
    EXPECT_EQ(request.imageHeight, 480);
    EXPECT_EQ(request.cutLeft, 0);
    EXPECT_EQ(request.cutRight, 0);
    EXPECT_EQ(request.cutTop, 0);
    EXPECT_EQ(request.cutBottom, 0);
    EXPECT_EQ(request.contentWidth, 0);
    EXPECT_EQ(request.contentHeight, 0);
}

}  // namespace
}  // namespace velloran

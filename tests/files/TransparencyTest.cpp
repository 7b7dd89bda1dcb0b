#include "files/Transparency.h"

#include <gtest/gtest.h>

#include "core/DibImage.h"
#include "support/Images.h"

namespace velloran::test {
namespace {

constexpr PaletteEntry kPaper{200, 220, 240, 0};  // blue, green, red

CDibImage WithAlpha(CDibImage image, int x, std::uint8_t alpha) {
    EXPECT_TRUE(image.CreateAlpha());
    image.GetAlpha()[x] = alpha;
    return image;
}

TEST(Transparency, AnOpaquePageHasNone) {
    EXPECT_FALSE(HasTransparency(CDibImage()));
    EXPECT_FALSE(HasTransparency(Filled(5, 2, 24, 10)));
    EXPECT_FALSE(HasTransparency(WithAlpha(Filled(5, 2, 24, 10), 1, 255)));
    CDibImage unused = Filled(5, 2, 8, 10);
    unused.Fields().backgroundIndex = 11;
    EXPECT_FALSE(HasTransparency(unused)) << "no pixel has that index";
}

TEST(Transparency, PixelsBlendWithTheColourByTheirAlpha) {
    CDibImage page = WithAlpha(Filled(5, 2, 24, 10), 1, 0);
    page.GetAlpha()[2] = 128;
    EXPECT_TRUE(HasTransparency(page));
    ASSERT_NE(LayOnColor(page, kPaper), 0);
    EXPECT_EQ(page.GetAlpha(), nullptr);
    const std::uint8_t* row = page.GetBits(0);
    EXPECT_EQ(row[0], 10);
    EXPECT_EQ(row[3], 200);
    EXPECT_EQ(row[4], 220);
    EXPECT_EQ(row[5], 240);
    EXPECT_EQ(row[6], 105);  // (10 * 128 + 200 * 127) / 255 = 104.6
    EXPECT_EQ(row[8], 125);  // (10 * 128 + 240 * 127) / 255 = 124.5, half up
}

TEST(Transparency, AGrayPageStaysGrayOnGrayAndTakesColourOnColour) {
    CDibImage gray = WithAlpha(Filled(3, 1, 8, 10), 1, 0);
    CDibImage color = gray;
    ASSERT_NE(LayOnColor(gray, {90, 90, 90, 0}), 0);
    EXPECT_EQ(gray.GetBpp(), 8);
    EXPECT_EQ(gray.GetBits(0)[1], 90);
    ASSERT_NE(LayOnColor(color, kPaper), 0);
    EXPECT_EQ(color.GetBpp(), 24);
    EXPECT_EQ(color.GetBits(0)[3], 200);
    EXPECT_EQ(color.GetBits(0)[0], 10);
}

TEST(Transparency, ATransparentIndexOfEveryDepthBecomesAPlane) {
    for (const int bpp : {1, 4, 8}) {
        CDibImage page;
        ASSERT_NE(page.Create(9, 1, bpp), nullptr);
        std::fill_n(page.GetBits(0), page.GetEffWidth(), std::uint8_t{0});
        page.GetBits(0)[0] = bpp == 1 ? 0x40 : (bpp == 4 ? 0x01 : 0);
        if (bpp == 8)
            page.GetBits(0)[1] = 1;
        page.Fields().backgroundIndex = 1;
        EXPECT_TRUE(HasTransparency(page)) << bpp;
        ASSERT_NE(MoveTransparencyToPlane(page), 0);
        EXPECT_EQ(page.Fields().backgroundIndex, -1);
        for (int x = 0; x < 9; ++x)
            EXPECT_EQ(page.GetAlpha()[x], x == 1 ? 0 : 255) << bpp << " " << x;
    }
}

TEST(Transparency, PaletteAlphaCounts) {
    CDibImage page = Filled(4, 1, 8, 3);
    page.GetBits(0)[2] = 7;
    page.GetPalette()[7].reserved = 50;
    page.GetPalette()[3].reserved = 255;
    page.Fields().alphaPaletteEnabled = 1;
    ASSERT_NE(MoveTransparencyToPlane(page), 0);
    EXPECT_EQ(page.GetAlpha()[2], 50);
    EXPECT_EQ(page.GetAlpha()[1], 255);
}

}  // namespace
}  // namespace velloran::test

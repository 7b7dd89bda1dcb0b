#include "pipeline/MaskFill.h"

#include <gtest/gtest.h>

#include "core/DibImage.h"
#include "support/Images.h"

namespace velloran {
namespace {

constexpr std::uint32_t kRed = 0x0000FF;

CDibImage MaskWithHole(int width, int height, int x, int y) {
    CDibImage mask = test::Filled(width, height, 8, 255);
    test::SetIndex(mask, x, y, 0);
    return mask;
}

bool IsNextToHole(const CDibImage& mask, int x, int y) {
    for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx)
            if (x + dx >= 0 && x + dx < mask.GetWidth() && y + dy >= 0 &&
                y + dy < mask.GetHeight() && test::IndexAt(mask, x + dx, y + dy) == 0)
                return true;
    return false;
}

TEST(MaskFill, FillsWhereTheMaskHasAHoleOrItsNeighbourHas) {
    for (int width = 10; width <= 17; ++width)
        for (const int height : {10, 13}) {
            CDibImage mask = test::Noise(width, height, 8);
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x)
                    test::SetIndex(mask, x, y, test::IndexAt(mask, x, y) < 25 ? 0 : 255);
            const CDibImage before = test::Noise(width, height, 24);
            CDibImage image = before;
            EXPECT_EQ(FillOutsideMask(image, mask, kRed), 1);
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x)
                    ASSERT_EQ(test::PixelAt(image, x, y), IsNextToHole(mask, x, y)
                                                              ? (test::Rgb{255, 0, 0})
                                                              : test::PixelAt(before, x, y));
        }
}

TEST(MaskFill, AFullMaskFillsNothing) {
    const CDibImage before = test::Noise(12, 12, 24);
    CDibImage image = before;
    EXPECT_EQ(FillOutsideMask(image, test::Filled(12, 12, 8, 255), kRed), 1);
    test::ExpectSamePixels(image, before);
}

TEST(MaskFill, AGrayPageTakesTheGrayOfTheColor) {
    CDibImage image = test::Filled(12, 12, 8, 9);
    EXPECT_EQ(FillOutsideMask(image, MaskWithHole(12, 12, 5, 5), kRed), 1);
    EXPECT_EQ(test::IndexAt(image, 5, 5), 76);  // 306 * 255 / 1024
    EXPECT_EQ(test::IndexAt(image, 4, 6), 76);
    EXPECT_EQ(test::IndexAt(image, 3, 5), 9);
}

TEST(MaskFill, Below8BitsTheNearestEntryIsTaken) {
    for (const int bpp : {1, 4}) {
        CDibImage image = test::Filled(13, 12, bpp, 0);  // entry 0 is black
        EXPECT_EQ(FillOutsideMask(image, MaskWithHole(13, 12, 12, 0), 0xFFFFFF), 1);
        EXPECT_EQ(test::PixelAt(image, 12, 0), (test::Rgb{255, 255, 255}));
        EXPECT_EQ(test::PixelAt(image, 11, 1), (test::Rgb{255, 255, 255}));
        EXPECT_EQ(test::PixelAt(image, 10, 0), (test::Rgb{0, 0, 0}));
    }
}

TEST(MaskFill, ASizeThatDiffersOrASmallSideIsRefused) {
    const auto refuses = [](int width, int height, int maskWidth, int maskHeight) {
        const CDibImage before = test::Noise(width, height, 24);
        CDibImage image = before;
        const int ran = FillOutsideMask(image, test::Filled(maskWidth, maskHeight, 8, 0), kRed);
        test::ExpectSamePixels(image, before);
        return ran == 0;
    };
    EXPECT_TRUE(refuses(12, 12, 13, 12));
    EXPECT_TRUE(refuses(12, 12, 12, 11));
    EXPECT_TRUE(refuses(9, 12, 9, 12));
    EXPECT_TRUE(refuses(12, 9, 12, 9));
    CDibImage image = test::Noise(12, 12, 24);
    EXPECT_EQ(FillOutsideMask(image, CDibImage(), kRed), 0);
    EXPECT_EQ(FillOutsideMask(image, test::Filled(12, 12, 24, 0), kRed), 0);
}

}  // namespace
}  // namespace velloran

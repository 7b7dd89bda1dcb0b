#include "reduce/CountColors.h"

#include <gtest/gtest.h>

#include <set>
#include <tuple>

#include "core/PixelMemory.h"
#include "reduce/AllColors.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"

namespace velloran {
namespace {

TEST(CountColors, AnEmptyImageHasNone) {
    EXPECT_EQ(CountColors(CDibImage()), 0);
}

TEST(CountColors, DistinctPixelsAreCountedOnce) {
    for (int width = 1; width <= 17; ++width) {
        const CDibImage image = test::Noise(width, 7, 24, static_cast<std::uint32_t>(width));
        std::set<std::tuple<int, int, int>> colors;
        for (int y = 0; y < 7; ++y)
            for (int x = 0; x < width; ++x) {
                const test::Rgb c = test::PixelAt(image, x, y);
                colors.insert({c.red, c.green, c.blue});
            }
        EXPECT_EQ(CountColors(image), static_cast<int>(colors.size()));
    }
}

TEST(CountColors, IndicesCountAndNotTheColorsBehindThem) {
    for (const int bpp : {1, 4, 8})
        for (int width = 1; width <= 17; ++width) {
            CDibImage image = test::Noise(width, 3, bpp, static_cast<std::uint32_t>(width));
            for (int i = 0; i < image.GetPaletteCount(); ++i)
                image.GetPalette()[i] = {7, 7, 7, 0};
            std::set<int> indices;
            for (int y = 0; y < 3; ++y)
                for (int x = 0; x < width; ++x)
                    indices.insert(test::IndexAt(image, x, y));
            EXPECT_EQ(CountColors(image), static_cast<int>(indices.size()));
        }
}

TEST(CountColors, PaddingIsNotRead) {
    for (const int bpp : {1, 4, 8, 24}) {
        CDibImage image = test::Filled(1, 2, bpp, 0);
        for (int y = 0; y < 2; ++y) {
            std::uint8_t* row = image.GetBits(y);
            if (bpp < 8)
                row[0] = bpp == 1 ? 0x7F : 0x0F;
            for (std::uint32_t i = bpp == 24 ? 3 : 1; i < image.GetEffWidth(); ++i)
                row[i] = static_cast<std::uint8_t>(0x5A + y);
        }
        EXPECT_EQ(CountColors(image), 1) << bpp;
    }
}

TEST(CountColors, All16777216ColorsAreFound) {
    const CDibImage image = test::AllColors();
    EXPECT_EQ(CountColors(image), 1 << 24);
    EXPECT_TRUE(CollectExactPalette(image, 256, 0xFFFFFFFF).palette.empty());
}

TEST(CountColors, WithoutMemoryForTheSetThereIsNoCountAndNoExactPalette) {
    const CDibImage image = test::Noise(4, 4, 24);
    int count = -1;
    ExactPalette exact;
    ReleaseKeptPixels();  // else the set may lie in a block that is there already
    {
        const test::FailAllocation fail(1);
        count = CountColors(image);
        exact = CollectExactPalette(image, 256, 0x123456);
    }
    EXPECT_EQ(count, 0);
    EXPECT_TRUE(exact.palette.empty());
    EXPECT_TRUE(exact.reservedFound);
}

TEST(ExactPalette, ListsColorsInAscendingOrder) {
    const CDibImage image =
        test::FromRows({{9, 0, 0, 0, 9, 0, 0, 0, 9}, {9, 0, 0, 0, 8, 255, 0, 0, 9}}, 3);
    const Palette expected{{9, 0, 0, 0}, {255, 8, 0, 0}, {0, 9, 0, 0}, {0, 0, 9, 0}};
    EXPECT_EQ(CollectExactPalette(image, 4, 0xFFFFFFFF).palette, expected);
    EXPECT_TRUE(CollectExactPalette(image, 3, 0xFFFFFFFF).palette.empty());
}

TEST(ExactPalette, AnAbsentReservedColorCountsAndIsListed) {
    const CDibImage image = test::FromRows({{9, 0, 0, 0, 9, 0}}, 3);
    const ExactPalette exact = CollectExactPalette(image, 3, 0x010009);  // red 9, blue 1
    EXPECT_EQ(exact.palette, (Palette{{0, 9, 0, 0}, {0, 0, 9, 0}, {1, 0, 9, 0}}));
    EXPECT_FALSE(exact.reservedFound);
    EXPECT_TRUE(CollectExactPalette(image, 2, 0x010009).palette.empty());
    EXPECT_TRUE(CollectExactPalette(image, 2, 0x000009).reservedFound);
}

TEST(ExactPalette, LevelsOfAGrayPageAndTheLowByteOfTheReservedColor) {
    const CDibImage image = test::FromRows({{200, 3, 200}});
    const ExactPalette exact = CollectExactPalette(image, 3, 0x505050);
    EXPECT_EQ(exact.palette, (Palette{{3, 3, 3, 0}, {0x50, 0x50, 0x50, 0}, {200, 200, 200, 0}}));
    EXPECT_FALSE(exact.reservedFound);
    EXPECT_FALSE(CollectExactPalette(image, 2, 0x505050).reservedFound);
    EXPECT_TRUE(CollectExactPalette(image, 2, 0x030303).reservedFound);
}

TEST(ExactPalette, AColoredPaletteHasNone) {
    CDibImage image = test::FromRows({{0, 1, 0}});
    test::SetPalette(image, {{1, 2, 3}, {4, 5, 6}});
    EXPECT_TRUE(CollectExactPalette(image, 256, 0xFFFFFFFF).palette.empty());
}

}  // namespace
}  // namespace velloran

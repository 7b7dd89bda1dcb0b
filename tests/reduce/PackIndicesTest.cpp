#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

#include "reduce/ApplyPalette.h"
#include "support/Images.h"

namespace velloran {
namespace {

using test::Rgb;

Palette Entries(int count) {
    Palette palette;
    for (int i = 0; i < count; ++i)
        palette.push_back({static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(255 - i),
                           static_cast<std::uint8_t>(i * 5), 0});
    return palette;
}

CDibImage IndexPage(int width, int height, int bpp, int count) {
    CDibImage image = test::Filled(width, height, bpp, 0);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int index = (x * 7 + y * 3) % count;
            if (bpp == 24)
                test::SetPixel(image, x, y, {99, 98, index});
            else
                test::SetIndex(image, x, y, index);
        }
    return image;
}

TEST(PackIndices, EveryWidthIsPackedFromTheHighEndAndPaddingStaysClear) {
    for (const int bits : {1, 4, 8})
        for (const int bpp : {8, 24})
            for (int width = 1; width <= 17; ++width) {
                const int count = 1 << bits;
                const CDibImage page = IndexPage(width, 3, bpp, count);
                CDibImage image(page);
                ASSERT_TRUE(PackIndices(image, bits, Entries(count)));
                ASSERT_EQ(image.GetBpp(), bits);
                ASSERT_EQ(image.GetPaletteCount(), count);
                for (int y = 0; y < 3; ++y) {
                    for (int x = 0; x < width; ++x)
                        ASSERT_EQ(test::IndexAt(image, x, y), (x * 7 + y * 3) % count);
                    const std::uint8_t* row = image.GetBits(y);
                    int rest = width * bits;
                    for (std::uint32_t i = 0; i < image.GetEffWidth(); ++i, rest -= 8)
                        ASSERT_EQ(row[i] & (rest >= 8 ? 0 : 0xFF >> std::max(rest, 0)), 0);
                }
            }
}

TEST(PackIndices, PaddingOfTheSourceIsNotRead) {
    for (const int bits : {1, 4})
        for (int width = 1; width <= 17; ++width) {
            CDibImage image = IndexPage(width, 2, 8, 2);
            CDibImage dirty(image);
            for (int y = 0; y < 2; ++y)
                std::fill(dirty.GetBits(y) + width, dirty.GetBits(y) + dirty.GetEffWidth(), 0xFF);
            ASSERT_TRUE(PackIndices(image, bits, Entries(2)));
            ASSERT_TRUE(PackIndices(dirty, bits, Entries(2)));
            for (int y = 0; y < 2; ++y)
                ASSERT_TRUE(std::equal(image.GetBits(y), image.GetBits(y) + image.GetEffWidth(),
                                       dirty.GetBits(y)));
        }
}

TEST(PackIndices, UnusedEntriesOfThePaletteAreZero) {
    CDibImage image = IndexPage(5, 5, 24, 3);
    ASSERT_TRUE(PackIndices(image, 4, Entries(3)));
    ASSERT_EQ(image.GetPaletteCount(), 16);
    for (int i = 3; i < 16; ++i)
        EXPECT_EQ(image.GetPalette()[i], PaletteEntry{});
}

TEST(PackIndices, IndicesBeyondThePaletteKeepWithinTheDepth) {
    for (const int bits : {1, 4, 8}) {
        CDibImage image = test::Noise(17, 5, 8);
        const CDibImage before(image);
        ASSERT_TRUE(PackIndices(image, bits, Entries(1)));
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < 17; ++x)
                ASSERT_EQ(test::IndexAt(image, x, y),
                          test::IndexAt(before, x, y) & ((1 << bits) - 1));
    }
}

TEST(PackIndices, AnotherDepthChangesNothing) {
    for (const int bits : {INT32_MIN, -1, 0, 2, 3, 5, 16, 24, 32}) {
        CDibImage image = test::Noise(5, 5, 24);
        const CDibImage before(image);
        EXPECT_FALSE(PackIndices(image, bits, Entries(2)));
        EXPECT_FALSE(PackNearest(image, bits, Entries(2)));
        test::ExpectSamePixels(image, before);
    }
    CDibImage empty, small = test::Noise(5, 5, 4);
    EXPECT_FALSE(PackIndices(empty, 8, Entries(2)));
    EXPECT_FALSE(PackIndices(small, 8, Entries(2)));
    EXPECT_FALSE(PackNearest(empty, 8, Entries(2)));
    EXPECT_FALSE(PackNearest(small, 8, Entries(2)));
}

TEST(PackNearest, AColorPageTakesTheNearestEntry) {
    const Palette palette{{0, 0, 0, 0}, {0, 0, 255, 0}, {0, 255, 0, 0}, {255, 0, 0, 0}};
    CDibImage image =
        test::FromRows({{10, 9, 8, 200, 40, 30, 20, 250, 9, 1, 2, 222, 127, 0, 0, 128, 0, 0}}, 3);
    ASSERT_TRUE(PackNearest(image, 4, palette));
    constexpr int kExpected[] = {0, 1, 2, 3, 0, 1};
    for (int x = 0; x < 6; ++x)
        EXPECT_EQ(test::IndexAt(image, x, 0), kExpected[x]) << x;
}

TEST(PackNearest, AGrayPageTakesTheNearestBlueAndTheLowerIndexOnTies) {
    const Palette palette{{100, 0, 0, 0}, {0, 200, 200, 0}, {200, 0, 0, 0}, {100, 9, 9, 0}};
    CDibImage image = test::FromRows({{0, 49, 50, 51, 100, 149, 150, 151, 255}});
    ASSERT_TRUE(PackNearest(image, 8, palette));
    constexpr int kExpected[] = {1, 1, 0, 0, 0, 0, 0, 2, 2};
    for (int x = 0; x < 9; ++x)
        EXPECT_EQ(test::IndexAt(image, x, 0), kExpected[x]) << x;
}

}  // namespace
}  // namespace velloran

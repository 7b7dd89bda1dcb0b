// What no scan looks like: no pixels, all colors there are, palettes shorter than their indices,
// rows that end inside a byte.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <tuple>

#include "reduce/AllColors.h"
#include "reduce/DecreaseBpp.h"
#include "reduce/PaletteMakers.h"
#include "support/Images.h"

namespace velloran {
namespace {

constexpr int kMakers = 5, kColorKinds = 20;

DecreaseBppRequest Request(int color, int maker, int dither) {
    DecreaseBppRequest request;
    request.color = color;
    request.sourceBpp = 24;
    request.quantize = maker;
    request.dither = dither;
    request.windowSize = 10;
    return request;
}

std::tuple<int, int, int> AsTuple(const PaletteEntry& entry) {
    return {entry.red, entry.green, entry.blue};
}

TEST(BadInput, WithoutPixelsEveryMakerGivesNoPalette) {
    const CDibImage empty;
    for (int maker = 0; maker < kMakers; ++maker)
        for (const int count : {1, 2, 16, 256})
            EXPECT_TRUE(MakePalette(empty, maker, count, 8).empty()) << maker << ' ' << count;
}

TEST(BadInput, WithoutPixelsEveryKindIsRefused) {
    for (int color = 0; color < kColorKinds; ++color)
        for (int maker = 0; maker < kMakers; ++maker)
            for (const int dither : {0, 1})
                for (const bool previewing : {false, true}) {
                    CDibImage empty;
                    EXPECT_FALSE(DecreaseBpp(empty, previewing, Request(color, maker, dither)));
                    EXPECT_FALSE(empty.IsValid());
                }
}

TEST(BadInput, AllColorsAreCutIntoTheEightOctantsOfTheCube) {
    const CDibImage image = test::AllColors();
    std::set<std::tuple<int, int, int>> octants;  // the means 63.5 and 191.5 lose their halves
    for (const int red : {63, 191})
        for (const int green : {63, 191})
            for (const int blue : {63, 191})
                octants.emplace(red, green, blue);
    for (const int maker : {kMedianCut, kXiaolinWu}) {
        std::set<std::tuple<int, int, int>> made;
        for (const PaletteEntry& entry : MakePalette(image, maker, 8, 4))
            made.insert(AsTuple(entry));
        EXPECT_EQ(made, octants) << maker;
    }
}

TEST(BadInput, AllColorsKeepTheOctreeWithinItsLeaves) {
    const Palette palette = MakePalette(test::AllColors(), kOctree, 256, 8);
    EXPECT_LE(palette.size(), 256u);
    EXPECT_GT(palette.size(), 128u);
}

/// Entries behind the first `used` are zero, as a file with a short palette leaves them.
CDibImage WithShortPalette(int bpp, int used) {
    CDibImage image = test::Noise(9, 7, bpp);
    std::fill_n(image.GetPalette(), image.GetPaletteCount(), PaletteEntry{});
    test::SetPalette(image, std::vector<test::Rgb>(used, {250, 120, 3}));
    return image;
}

TEST(BadInput, IndicesBehindAShortPaletteAreBlack) {
    for (const int bpp : {1, 4})
        for (const int used : {1, 2}) {
            const CDibImage page = WithShortPalette(bpp, used);
            for (const int color : {3, 8, 9, 10, 11, 12, 13, 14}) {
                CDibImage image(page);
                EXPECT_TRUE(DecreaseBpp(image, false, Request(color, kOctree, 0)));
                for (int y = 0; y < image.GetHeight(); ++y)
                    for (int x = 0; x < image.GetWidth(); ++x)
                        ASSERT_EQ(test::PixelAt(image, x, y), test::PixelAt(page, x, y)) << color;
            }
        }
}

TEST(BadInput, AShortPaletteHurtsNoKindAndNoMaker) {
    for (const int bpp : {1, 4, 8})
        for (int color = 1; color < kColorKinds; ++color)
            for (int maker = 0; maker < kMakers; ++maker)
                for (const int dither : {0, 1})
                    for (const bool previewing : {false, true}) {
                        CDibImage image = WithShortPalette(bpp, 1);
                        EXPECT_TRUE(DecreaseBpp(image, previewing, Request(color, maker, dither)));
                        EXPECT_EQ(image.GetWidth(), 9);
                        EXPECT_EQ(image.GetHeight(), 7);
                    }
}

int PixelBytes(const CDibImage& image) {
    return (image.GetWidth() * image.GetBpp() + 7) / 8;
}

/// The same pixels, with all bits behind them set.
CDibImage WithFullPadding(const CDibImage& image) {
    CDibImage dirty(image);
    const int bytes = PixelBytes(image), rest = image.GetWidth() * image.GetBpp() % 8;
    for (int y = 0; y < image.GetHeight(); ++y) {
        std::uint8_t* row = dirty.GetBits(y);
        if (rest != 0)
            row[bytes - 1] |= static_cast<std::uint8_t>(0xFF >> rest);
        std::memset(row + bytes, 0xFF, dirty.GetEffWidth() - static_cast<std::size_t>(bytes));
    }
    return dirty;
}

void ExpectClearPadding(const CDibImage& image) {
    const int bytes = PixelBytes(image), rest = image.GetWidth() * image.GetBpp() % 8;
    for (int y = 0; y < image.GetHeight(); ++y) {
        const std::uint8_t* row = image.GetBits(y);
        if (rest != 0) {
            EXPECT_EQ(row[bytes - 1] & 0xFF >> rest, 0);
        }
        EXPECT_TRUE(std::all_of(row + bytes, row + image.GetEffWidth(),
                                [](std::uint8_t byte) { return byte == 0; }));
    }
}

TEST(BadInput, PaddingIsNeitherReadNorHandedOnAtAnyWidth) {
    for (const int bpp : {1, 4, 8, 24})
        for (int width = 1; width <= 17; ++width) {
            const CDibImage page = test::Noise(width, 5, bpp), dirty = WithFullPadding(page);
            for (const int color : {4, 7, 11, 14})  // those that end at 1 and 4 bits
                for (int maker = 0; maker < kMakers; ++maker)
                    for (const int dither : {0, 1}) {
                        SCOPED_TRACE(testing::Message()
                                     << "bpp " << bpp << " width " << width << " color " << color
                                     << " maker " << maker << " dither " << dither);
                        CDibImage one(page), other(dirty);
                        EXPECT_TRUE(DecreaseBpp(one, false, Request(color, maker, dither)));
                        EXPECT_TRUE(DecreaseBpp(other, false, Request(color, maker, dither)));
                        test::ExpectSamePixels(other, one);
                        if (other.GetBpp() != bpp && other.GetBpp() < 8)
                            ExpectClearPadding(other);
                    }
        }
}

}  // namespace
}  // namespace velloran

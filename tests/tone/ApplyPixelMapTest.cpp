// How a pixel map reaches the pixels of each depth.

#include <gtest/gtest.h>

#include <vector>

#include "core/DibImage.h"
#include "support/Images.h"
#include "tone/PixelMap.h"

namespace velloran {
namespace {

/// Turns tones over, so that applied twice it is the identity and once it changes every sample.
PixelMap Negative() {
    PixelMap map{};
    for (int i = 0; i < 256; ++i)
        map[i] = static_cast<std::uint8_t>(255 - i);
    return map;
}

test::Rgb Mapped(const PixelMap& map, test::Rgb color) {
    return {map[color.red], map[color.green], map[color.blue]};
}

/// The stored bytes of all rows with their padding.
std::vector<std::uint8_t> StoredBytes(const CDibImage& image) {
    return {image.GetBits(0),
            image.GetBits(0) + std::size_t{image.GetEffWidth()} * image.GetHeight()};
}

TEST(ApplyPixelMap, MapsEveryPixelAtEverySmallSizeAndDepth) {
    PixelMap map{};
    for (int i = 0; i < 256; ++i)
        map[i] = static_cast<std::uint8_t>(i * 7 + 13);
    for (const int bpp : {4, 8, 24})
        for (int width = 1; width <= 17; ++width)
            for (int height = 1; height <= 17; ++height) {
                const CDibImage before = test::Noise(width, height, bpp);
                CDibImage image = before;
                ASSERT_NE(ApplyPixelMap(map, image), 0);
                for (int y = 0; y < height; ++y)
                    for (int x = 0; x < width; ++x)
                        ASSERT_TRUE(test::PixelAt(image, x, y) ==
                                    Mapped(map, test::PixelAt(before, x, y)))
                            << bpp << " bits, " << width << " x " << height << " at " << x << ", "
                            << y;
            }
}

TEST(ApplyPixelMap, RowPaddingIsNotTouched) {
    for (const int bpp : {8, 24}) {
        CDibImage image = test::Filled(5, 2, bpp, 10);  // 3 or 1 bytes of padding
        PixelMap white{};
        white.fill(255);
        EXPECT_NE(ApplyPixelMap(white, image), 0);
        const int used = 5 * bpp / 8;
        EXPECT_EQ(image.GetBits(0)[used - 1], 255);
        EXPECT_EQ(image.GetBits(0)[used], 0);
    }
}

TEST(ApplyPixelMap, PureBlackAndWhiteStaysInEitherOrder) {
    for (const bool whiteFirst : {false, true}) {
        CDibImage image = test::Noise(9, 3, 1);
        test::SetPalette(image, whiteFirst ? std::vector<test::Rgb>{{255, 255, 255}, {0, 0, 0}}
                                           : std::vector<test::Rgb>{{0, 0, 0}, {255, 255, 255}});
        const CDibImage before = image;
        EXPECT_NE(ApplyPixelMap(Negative(), image), 0);
        test::ExpectSamePixels(image, before);
    }
}

TEST(ApplyPixelMap, OneBitOfOtherColorsHasItsPaletteMapped) {
    CDibImage image = test::Noise(9, 3, 1);
    test::SetPalette(image, {{255, 0, 0}, {255, 255, 255}});
    const std::vector<std::uint8_t> bytes = StoredBytes(image);
    EXPECT_NE(ApplyPixelMap(Negative(), image), 0);
    EXPECT_EQ(StoredBytes(image), bytes);
    EXPECT_EQ(image.GetPalette()[0], (PaletteEntry{255, 255, 0, 0}));
    EXPECT_EQ(image.GetPalette()[1], (PaletteEntry{0, 0, 0, 0}));
}

TEST(ApplyPixelMap, ColorPalettesChangeAndTheirIndexesStay) {
    for (const int bpp : {4, 8}) {
        CDibImage image = test::Noise(7, 5, bpp);
        test::SetPalette(image, {{10, 20, 30}, {200, 100, 0}});
        const std::vector<std::uint8_t> bytes = StoredBytes(image);
        EXPECT_NE(ApplyPixelMap(Negative(), image), 0);
        EXPECT_EQ(StoredBytes(image), bytes);
        EXPECT_EQ(image.GetPalette()[0], (PaletteEntry{225, 235, 245, 0}));
        EXPECT_EQ(image.GetPalette()[1], (PaletteEntry{255, 155, 55, 0}));
    }
}

TEST(ApplyPixelMap, AGrayPaletteInAnotherOrderIsAPalette) {
    CDibImage image = test::Noise(7, 5, 8);
    for (int i = 0; i < 256; ++i) {
        const auto gray = static_cast<std::uint8_t>(255 - i);
        image.GetPalette()[i] = {gray, gray, gray, 0};
    }
    const std::vector<std::uint8_t> bytes = StoredBytes(image);
    EXPECT_NE(ApplyPixelMap(Negative(), image), 0);
    EXPECT_EQ(StoredBytes(image), bytes);
    EXPECT_EQ(image.GetPalette()[40].green, 40);
}

TEST(ApplyPixelMap, TheGrayRampIsKeptAndItsPixelsMapped) {
    CDibImage image = test::Filled(6, 6, 8, 30);
    EXPECT_NE(ApplyPixelMap(Negative(), image), 0);
    EXPECT_TRUE(image.IsGrayScale());
    EXPECT_EQ(test::IndexAt(image, 5, 5), 225);
}

TEST(ApplyPixelMap, AnEmptyImageIsRefusedSilently) {
    CDibImage image;
    EXPECT_EQ(ApplyPixelMap(Negative(), image), 0);
}

}  // namespace
}  // namespace velloran

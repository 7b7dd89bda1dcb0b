#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

#include "reduce/ApplyPalette.h"
#include "support/Images.h"

namespace velloran {
namespace {

using test::Rgb;

int& Channel(Rgb& c, std::size_t channel) {
    return channel == 0 ? c.blue : channel == 1 ? c.green : c.red;
}

/// All errors of the page in one plane, bottom row first; `keep` gives what a triple becomes.
template <typename Keep>
CDibImage PlainDiffusion(const CDibImage& image, Keep&& keep) {
    const int width = image.GetWidth(), height = image.GetHeight();
    std::vector<std::vector<std::array<int, 3>>> sixteenths(
        static_cast<std::size_t>(height),
        std::vector<std::array<int, 3>>(static_cast<std::size_t>(width)));
    const auto at = [&](int x, int y) -> std::array<int, 3>& {
        return sixteenths[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)];
    };
    CDibImage result(image);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            Rgb c = test::PixelAt(image, x, height - 1 - y);
            for (std::size_t i = 0; i < 3; ++i) {
                const int value = Channel(c, i) * 16 + at(x, y)[i];
                Channel(c, i) = value < 0 ? 0 : std::min(value / 16, 255);
            }
            Rgb kept = keep(c);
            test::SetPixel(result, x, height - 1 - y, kept);
            for (std::size_t i = 0; i < 3; ++i) {
                const int error = Channel(c, i) - Channel(kept, i);
                const auto add = [&](int dx, int dy, int weight) {
                    if (x + dx >= 0 && x + dx < width && y + dy < height)
                        at(x + dx, y + dy)[i] += weight * error;
                };
                add(1, 0, 7);
                add(0, 1, 5);
                add(-1, 1, 3);
                add(1, 1, 1);
            }
        }
    return result;
}

Rgb Nearest(const Palette& palette, const Rgb& c) {
    int least = 1 << 30;
    Rgb best;
    for (const PaletteEntry& e : palette) {
        const int b = e.blue - c.blue, g = e.green - c.green, r = e.red - c.red;
        if (b * b + g * g + r * r < least) {
            least = b * b + g * g + r * r;
            best = {e.red, e.green, e.blue};
        }
    }
    return best;
}

const Palette kSix{{0, 0, 0, 0},     {255, 255, 255, 0}, {200, 30, 40, 0},
                   {20, 220, 60, 0}, {30, 60, 250, 0},   {128, 128, 128, 0}};

TEST(DiffusePalette, EqualsAPlainDiffusionOnEveryWidth) {
    for (int width = 1; width <= 17; ++width)
        for (const int height : {2, 3, 9}) {
            CDibImage image = test::Noise(width, height, 24, static_cast<std::uint32_t>(width));
            const CDibImage expected =
                PlainDiffusion(image, [](const Rgb& c) { return Nearest(kSix, c); });
            ASSERT_TRUE(DiffusePalette(image, kSix, /*keepDepth=*/true));
            test::ExpectSamePixels(image, expected);
        }
}

TEST(DiffusePalette, WithoutKeptDepthThePixelsHoldTheIndices) {
    const CDibImage page = test::Noise(40, 30, 24);
    CDibImage colors(page), indices(page);
    ASSERT_TRUE(DiffusePalette(colors, kSix, /*keepDepth=*/true));
    ASSERT_TRUE(DiffusePalette(indices, kSix, /*keepDepth=*/false));
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x) {
            const Rgb index = test::PixelAt(indices, x, y);
            ASSERT_EQ(index.red, index.blue);
            ASSERT_EQ(index.green, index.blue);
            const PaletteEntry& entry = kSix[static_cast<std::size_t>(index.blue)];
            ASSERT_EQ(test::PixelAt(colors, x, y), (Rgb{entry.red, entry.green, entry.blue}));
        }
}

TEST(DiffusePalette, ASingleRowStaysAsItIs) {
    for (const bool keepDepth : {true, false}) {
        CDibImage image = test::Noise(20, 1, 24);
        const CDibImage before(image);
        EXPECT_TRUE(DiffusePalette(image, kSix, keepDepth));
        test::ExpectSamePixels(image, before);
    }
}

TEST(DiffusePalette, TheErrorOfTheFirstStoredPixelSpreadsBySevenSixteenths) {
    // Bottom row first, left to right. 100 turns black: the next pixel takes 7 * 100 / 16 = 43.75
    // more (143, white, error -112), the one above 5 * 100 - 3 * 112 sixteenths: 100 + 10 is black.
    CDibImage image = test::FromRows({{100, 100, 100, 0, 0, 0}, {100, 100, 100, 100, 100, 100}}, 3);
    const Palette blackWhite{{0, 0, 0, 0}, {255, 255, 255, 0}};
    ASSERT_TRUE(DiffusePalette(image, blackWhite, /*keepDepth=*/true));
    EXPECT_EQ(test::PixelAt(image, 0, 1).red, 0);
    EXPECT_EQ(test::PixelAt(image, 1, 1).red, 255);
    EXPECT_EQ(test::PixelAt(image, 0, 0).red, 0);
}

TEST(DiffusePalette, PaddingIsNotTouched) {
    for (int width = 1; width <= 17; ++width) {
        CDibImage image = test::Noise(width, 3, 24);
        const auto used = static_cast<std::uint32_t>(3 * width);
        for (int y = 0; y < 3; ++y)
            std::fill(image.GetBits(y) + used, image.GetBits(y) + image.GetEffWidth(), 0xA5);
        ASSERT_TRUE(DiffusePalette(image, kSix, /*keepDepth=*/true));
        for (int y = 0; y < 3; ++y)
            for (std::uint32_t i = used; i < image.GetEffWidth(); ++i)
                ASSERT_EQ(image.GetBits(y)[i], 0xA5);
    }
}

TEST(DiffusePalette, AHighPageOfOneColumnNeitherOverflowsNorDrifts) {
    CDibImage image = test::Filled(1, 200000, 24, 128);
    const Palette blackWhite{{0, 0, 0, 0}, {255, 255, 255, 0}};
    ASSERT_TRUE(DiffusePalette(image, blackWhite, /*keepDepth=*/true));
    for (int y = 0; y < 200000; ++y)
        ASSERT_EQ(image.GetBits(y)[0] % 255, 0);
}

TEST(DiffusePalette, OtherDepthsAndAnEmptyPaletteAreRefused) {
    for (const int bpp : {1, 4, 8}) {
        CDibImage image = test::Noise(5, 5, bpp);
        const CDibImage before(image);
        EXPECT_FALSE(DiffusePalette(image, kSix, true));
        test::ExpectSamePixels(image, before);
    }
    CDibImage image = test::Noise(5, 5, 24), empty;
    EXPECT_FALSE(DiffusePalette(image, {}, true));
    EXPECT_FALSE(DiffusePalette(empty, kSix, true));
}

TEST(Reduce16, PureWhiteKeepsOnlyItsHighBits) {
    CDibImage fives = test::Filled(3, 2, 24, 255), sixes(fives);
    EXPECT_TRUE(Reduce16(fives, /*dither=*/false, /*is565=*/false));
    EXPECT_EQ(test::PixelAt(fives, 0, 0), (Rgb{248, 248, 248}));
    EXPECT_TRUE(Reduce16(sixes, /*dither=*/false, /*is565=*/true));
    EXPECT_EQ(test::PixelAt(sixes, 0, 0), (Rgb{248, 252, 248}));
}

TEST(Reduce16, AFlatGrayDithersToTwoValuesAroundIt) {
    CDibImage image = test::Filled(64, 64, 24, 100);
    EXPECT_TRUE(Reduce16(image, /*dither=*/true, /*is565=*/true));
    double red = 0, green = 0;
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x) {
            const Rgb c = test::PixelAt(image, x, y);
            ASSERT_TRUE(c.red == 96 || c.red == 104) << c.red;
            ASSERT_EQ(c.green, 100);  // a multiple of 4 needs no second value
            ASSERT_EQ(c.blue, c.red);
            red += c.red;
            green += c.green;
        }
    EXPECT_NEAR(red / 4096, 100, 1);  // sixteenths are dropped
    EXPECT_EQ(green / 4096, 100);
}

TEST(Reduce16, EqualsAPlainDiffusionOnASingleRowToo) {
    for (int width = 1; width <= 17; ++width)
        for (const int height : {1, 2, 5})
            for (const bool is565 : {false, true}) {
                CDibImage image = test::Noise(width, height, 24, static_cast<std::uint32_t>(width));
                const int green = is565 ? 4 : 8;
                const CDibImage expected = PlainDiffusion(image, [green](const Rgb& c) {
                    return Rgb{c.red / 8 * 8, c.green / green * green, c.blue / 8 * 8};
                });
                EXPECT_TRUE(Reduce16(image, /*dither=*/true, is565));
                test::ExpectSamePixels(image, expected);
            }
}

TEST(Reduce16, OnlyColorPagesAreReduced) {
    for (const int bpp : {1, 4, 8}) {
        CDibImage image = test::Noise(5, 5, bpp);
        EXPECT_FALSE(Reduce16(image, false, true));
    }
    CDibImage empty;
    EXPECT_FALSE(Reduce16(empty, true, true));
}

TEST(ApplyPalette, EveryPixelTakesItsNearestEntryAt24Bits) {
    for (const int bpp : {1, 4, 8, 24}) {
        CDibImage image = test::Noise(19, 7, bpp);
        const CDibImage before(image);
        EXPECT_TRUE(ApplyPalette(image, kSix));
        ASSERT_EQ(image.GetBpp(), 24);
        for (int y = 0; y < 7; ++y)
            for (int x = 0; x < 19; ++x)
                ASSERT_EQ(test::PixelAt(image, x, y), Nearest(kSix, test::PixelAt(before, x, y)));
    }
}

TEST(ApplyPalette, NoPaletteAndNoPixelsAreRefused) {
    CDibImage image = test::Noise(5, 5, 24), empty;
    const CDibImage before(image);
    EXPECT_FALSE(ApplyPalette(image, {}));
    test::ExpectSamePixels(image, before);
    EXPECT_FALSE(ApplyPalette(empty, kSix));
}

}  // namespace
}  // namespace velloran

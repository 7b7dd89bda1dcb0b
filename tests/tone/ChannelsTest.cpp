#include "tone/Channels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "core/DibImage.h"
#include "support/Images.h"
#include "support/Threads.h"
#include "tone/ColorSpaces.h"
#include "tone/RefusalSweep.h"

namespace velloran {
namespace {

using test::Rgb;

CDibImage Colored(int bpp) {
    CDibImage image = test::Noise(20, 10, bpp);
    if (bpp < 24)
        test::SetPalette(image, {{10, 120, 230}, {255, 40, 0}});
    return image;
}

Rgb Swapped(const Rgb& c, int which) {
    return which == 1   ? Rgb{c.blue, c.green, c.red}
           : which == 2 ? Rgb{c.green, c.red, c.blue}
                        : Rgb{c.red, c.blue, c.green};
}

TEST(SwapChannels, ExchangesTwoOfEveryPixelOrPaletteEntry) {
    for (const int bpp : {1, 4, 8, 24})
        for (int which = 1; which <= 3; ++which) {
            const CDibImage before = Colored(bpp);
            CDibImage image = before;
            ASSERT_EQ(SwapChannels(image, which), 1);
            ASSERT_EQ(image.GetBpp(), bpp);
            for (int y = 0; y < 10; ++y)
                for (int x = 0; x < 20; ++x)
                    ASSERT_EQ(test::PixelAt(image, x, y),
                              Swapped(test::PixelAt(before, x, y), which));
        }
}

TEST(SwapChannels, GrayImagesSucceedUnchangedAndOddValuesAreToldApart) {
    CDibImage gray = test::Noise(9, 9, 8), empty;
    const CDibImage before = gray;
    EXPECT_EQ(SwapChannels(gray, 2), 1);
    EXPECT_EQ(SwapChannels(gray, 0), 1);
    EXPECT_EQ(SwapChannels(gray, std::numeric_limits<int>::min()), 1);
    EXPECT_EQ(SwapChannels(gray, 4), 0);
    test::ExpectSamePixels(gray, before);
    EXPECT_EQ(SwapChannels(empty, 1), 0);
}

TEST(Negate, InvertsPixelsOfColorAndGrayAndEntriesOfPalettes) {
    for (const int bpp : {1, 4, 8, 24}) {
        const CDibImage before = Colored(bpp);
        CDibImage image = before;
        ASSERT_EQ(Negate(image), 1);
        for (int y = 0; y < 10; ++y)
            for (int x = 0; x < 20; ++x) {
                const Rgb c = test::PixelAt(before, x, y);
                ASSERT_EQ(test::PixelAt(image, x, y),
                          (Rgb{255 - c.red, 255 - c.green, 255 - c.blue}));
                if (bpp < 24) {
                    ASSERT_EQ(test::IndexAt(image, x, y), test::IndexAt(before, x, y));
                }
            }
    }
    CDibImage gray = test::FromRows({{0, 100, 255}});
    ASSERT_EQ(Negate(gray), 1);
    EXPECT_TRUE(gray.IsGrayScale());
    EXPECT_EQ(test::IndexAt(gray, 1, 0), 155);
}

TEST(Negate, ABlackAndWhitePictureEndsWithBlackAsIndexZero) {
    for (const bool blackFirst : {false, true}) {
        CDibImage image = test::Noise(21, 6, 1);
        test::SetPalette(image, blackFirst ? std::vector<Rgb>{{0, 0, 0}, {255, 255, 255}}
                                           : std::vector<Rgb>{{255, 255, 255}, {0, 0, 0}});
        const CDibImage before = image;
        ASSERT_EQ(Negate(image), 1);
        EXPECT_EQ(image.GetPalette()[0].red, 0);
        EXPECT_EQ(image.GetPalette()[1].red, 255);
        for (int y = 0; y < 6; ++y)
            for (int x = 0; x < 21; ++x)
                ASSERT_EQ(test::PixelAt(image, x, y).red, 255 - test::PixelAt(before, x, y).red);
    }
    CDibImage empty;
    EXPECT_EQ(Negate(empty), 0);
}

TEST(RgbToHls, KnownColors) {
    const auto isHls = [](const Hls& h, int hue, int lightness, int saturation) {
        return h.hue == hue && h.lightness == lightness && h.saturation == saturation;
    };
    EXPECT_TRUE(isHls(RgbToHls(255, 0, 0), 0, 120, 240));
    EXPECT_TRUE(isHls(RgbToHls(0, 255, 0), 80, 120, 240));
    EXPECT_TRUE(isHls(RgbToHls(0, 0, 255), 160, 120, 240));
    EXPECT_TRUE(isHls(RgbToHls(128, 128, 128), 160, 120, 0));
    // d 245: db 10, dg 40 (both ((255 - v) * 40 + 122) / 245): -30 is 226 in a byte and stays.
    EXPECT_EQ(RgbToHls(255, 10, 195).hue, 226);
    // d 255: db 39, dg 40: -1 is 255, above 240; 16 more is 15.
    EXPECT_EQ(RgbToHls(255, 0, 7).hue, 15);
    // Sum 300 of 510: (300 * 240 + 255) / 510 = 141; (100 * 240 + 105) / 210 = 114.
    EXPECT_TRUE(isHls(RgbToHls(200, 150, 100), 20, 141, 114));
}

TEST(RgbToHls, StaysWithinItsRange) {
    for (int r = 0; r < 256; r += 5)
        for (int g = 0; g < 256; g += 5)
            for (int b = 0; b < 256; b += 5) {
                const Hls h = RgbToHls(r, g, b);
                ASSERT_LE(h.hue, 240);
                ASSERT_LE(h.lightness, 240);
                ASSERT_LE(h.saturation, 240);
            }
}

TEST(RgbToLab, KnownColors) {
    const Lab white = RgbToLab(255, 255, 255), black = RgbToLab(0, 0, 0);
    EXPECT_NEAR(white.l, 100, 1e-9);
    EXPECT_NEAR(white.a, 0, 0.01);
    EXPECT_NEAR(white.b, 0, 0.02);
    EXPECT_NEAR(black.l, 0, 1e-9);
    // Red: Y is 0.2126, X 0.4124 / 0.9505, Z 0.0193 / 1.089.
    const Lab red = RgbToLab(255, 0, 0);
    EXPECT_NEAR(red.l, 116 * std::cbrt(0.2126) - 16, 1e-9);
    EXPECT_NEAR(red.a, 500 * (std::cbrt(0.4124 / 0.9505) - std::cbrt(0.2126)), 1e-9);
    EXPECT_NEAR(red.b, 200 * (std::cbrt(0.2126) - std::cbrt(0.0193 / 1.089)), 1e-9);
    // The exponent is 2.2: mid grey has a luminance of ((128 / 255 + 0.055) / 1.055) ^ 2.2.
    const double y = std::pow((128 / 255.0 + 0.055) / 1.055, 2.2);
    EXPECT_NEAR(RgbToLab(128, 128, 128).l, 116 * std::cbrt(y) - 16, 1e-9);
    EXPECT_NEAR(RgbToLab(10, 10, 10).l,
                116 * (7.787 * (10 / 255.0 / 12.92) + 0.137931034482759) - 16, 1e-9);
}

/// Of a pixel; the two weighted means to within one level.
double PlainMix(int mode, const Rgb& c) {
    const Hls h = RgbToHls(c.red, c.green, c.blue);
    switch (mode) {
        case 1:
            return c.red;
        case 2:
            return c.green;
        case 3:
            return c.blue;
        case 4:
            return (c.blue + c.red + 1) / 2;
        case 5:
            return (c.green + c.red + 1) / 2;
        case 6:
            return (c.blue + c.green + 1) / 2;
        case 7:
            return h.hue;
        case 8:
            return h.saturation;
        case 9:
            return h.lightness;
        case 11:
            return 0.2126 * c.red + 0.7152 * c.green + 0.0722 * c.blue;
        case 12:
            return (c.red + c.green + c.blue) / 3.0;
        default:  // sepia at full strength, in grey
            return std::min(c.red * (0.393 * 0.2126 + 0.349 * 0.7152 + 0.272 * 0.0722) +
                                c.green * (0.769 * 0.2126 + 0.686 * 0.7152 + 0.534 * 0.0722) +
                                c.blue * (0.189 * 0.2126 + 0.168 * 0.7152 + 0.131 * 0.0722),
                            255.5) -
                   0.5;
    }
}

TEST(CombineChannels, EveryModeIsItsMix) {
    for (const int bpp : {4, 8, 24})
        for (const int mode : {1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 12, 13}) {
            if (mode == 13 && bpp == 8)
                continue;  // below
            const CDibImage before = Colored(bpp);
            CDibImage image = before;
            ASSERT_EQ(CombineChannels(image, mode), 1);
            ASSERT_TRUE(image.IsGrayScale());
            const double tolerance = mode > 10 ? 0.502 : 0;
            for (int y = 0; y < 10; ++y)
                for (int x = 0; x < 20; ++x)
                    ASSERT_NEAR(test::IndexAt(image, x, y),
                                PlainMix(mode, test::PixelAt(before, x, y)), tolerance)
                        << "mode " << mode << ", bits " << bpp;
        }
}

TEST(CombineChannels, EveryModeHasItsGrayForAnOrange) {
    // Of red 200, green 100, blue 50. Hue: d is 150, 40 * 150 / 150 - (40 * 100 + 75) / 150 = 13;
    // lightness (250 * 240 + 255) / 510; saturation (150 * 240 + 125) / 250; the weighted ones
    // 117.65 and 116.67, rounded; sepia 0.3528 * 200 + 0.6927 * 100 + 0.1698 * 50 = 148.3.
    constexpr int kGrays[] = {200, 100, 50, 125, 150, 75, 13, 144, 118, -1, 118, 117, 148};
    for (int mode = 1; mode <= 13; ++mode) {
        if (mode == 10)
            continue;  // chosen by the contrast of the picture
        CDibImage image = test::FromRows({{200, 100, 50}}, 3), palette = test::Filled(1, 1, 4, 0);
        test::SetPalette(palette, {{200, 100, 50}});
        ASSERT_EQ(CombineChannels(image, mode), 1);
        ASSERT_EQ(CombineChannels(palette, mode), 1);
        EXPECT_EQ(test::IndexAt(image, 0, 0), kGrays[mode - 1]) << mode;
        EXPECT_EQ(test::IndexAt(palette, 0, 0), kGrays[mode - 1]) << mode;
    }
}

TEST(CombineChannels, AOneBitImageIsBlackAndWhiteWhateverItsColorsAndTheMode) {
    for (const int mode : {1, 7, 11, 12}) {
        const CDibImage before = Colored(1);
        CDibImage image = before;
        ASSERT_EQ(CombineChannels(image, mode), 1);
        ASSERT_TRUE(image.IsGrayScale());
        for (int y = 0; y < 10; ++y)
            for (int x = 0; x < 20; ++x)
                ASSERT_EQ(test::IndexAt(image, x, y), 255 * test::IndexAt(before, x, y));
    }
}

TEST(CombineChannels, GrayStaysExceptForSepiaWhichTakesTheByte) {
    const CDibImage before = test::FromRows({{0, 100, 255}});
    for (int mode = 1; mode <= 12; ++mode) {
        CDibImage image = before;
        EXPECT_EQ(CombineChannels(image, mode), 1);
        test::ExpectSamePixels(image, before);
    }
    CDibImage image = before;
    ASSERT_EQ(CombineChannels(image, 13), 1);
    // The nine weights add up to 1.1349: 100 gives 113 and 255 is limited.
    const double sum = 1.351 * 0.2126 + 1.203 * 0.7152 + 0.937 * 0.0722;
    EXPECT_EQ(test::IndexAt(image, 0, 0), 0);
    EXPECT_EQ(test::IndexAt(image, 1, 0), static_cast<int>(100 * sum));
    EXPECT_EQ(test::IndexAt(image, 2, 0), 255);
}

TEST(CombineChannels, CarriesAlphaOverAndTellsOddModesApart) {
    CDibImage image = Colored(24), empty;
    ASSERT_TRUE(image.CreateAlpha());
    image.GetAlpha()[7] = 33;
    EXPECT_EQ(CombineChannels(image, 0), 1);
    EXPECT_EQ(CombineChannels(image, std::numeric_limits<int>::min()), 1);
    EXPECT_EQ(CombineChannels(image, 14), 0);
    EXPECT_EQ(image.GetBpp(), 24);
    ASSERT_EQ(CombineChannels(image, 11), 1);
    ASSERT_NE(image.GetAlpha(), nullptr);
    EXPECT_EQ(image.GetAlpha()[7], 33);
    EXPECT_EQ(CombineChannels(empty, 5), 0);
}

TEST(CombineChannels, WithoutMemoryThePixelsStay) {
    for (const int mode : {4, 11, 13})
        EXPECT_GT(test::SweepRefusals(
                      Colored(24), [&](CDibImage& image) { return CombineChannels(image, mode); }),
                  0);
}

TEST(Sepia, InColorTheRowsMakeRedGreenAndBlue) {
    CDibImage image = test::Filled(2, 1, 24, 0);
    test::SetPixel(image, 0, 0, {100, 150, 50});
    test::SetPixel(image, 1, 0, {255, 255, 255});
    CDibImage none = image;
    ASSERT_EQ(Sepia(image, 1.0, false), 1);
    // 39.3 + 115.35 + 9.45; 34.9 + 102.9 + 8.4; 27.2 + 80.1 + 6.55; each truncated.
    EXPECT_EQ(test::PixelAt(image, 0, 0), (Rgb{164, 146, 113}));
    EXPECT_EQ(test::PixelAt(image, 1, 0), (Rgb{255, 255, 238}));
    ASSERT_EQ(Sepia(none, 0.0, false), 1);
    EXPECT_EQ(test::PixelAt(none, 0, 0), (Rgb{100, 150, 50}));
}

TEST(ContrastGray, KeepsColorsApartThatHaveTheSameLuma) {
    // Two greens and reds whose usual luma is the same 76.
    CDibImage image = test::Filled(64, 64, 24, 0);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x)
            test::SetPixel(image, x, y, (x / 8 + y / 8) % 2 != 0 ? Rgb{255, 0, 0} : Rgb{0, 130, 0});
    ASSERT_EQ(ContrastGray(image), 1);
    ASSERT_TRUE(image.IsGrayScale());
    EXPECT_GT(std::abs(test::IndexAt(image, 0, 0) - test::IndexAt(image, 8, 0)), 60);
}

/// The mix by tenths that keeps the difference of two colors best: the one whose own difference
/// is nearest to the scaled distance. All pairs of a picture of two colors have this difference, or
/// a share of it, which orders the mixes in the same way.
Rgb PlainWeights(const Rgb& a, const Rgb& b) {
    const double r = (a.red - b.red) / 255.0, g = (a.green - b.green) / 255.0;
    const double blue = (a.blue - b.blue) / 255.0;
    const double delta = std::sqrt(r * r + g * g + blue * blue) / 1.41;
    Rgb best;
    double bestGap = 9;
    for (int wr = 0; wr <= 10; ++wr)
        for (int wg = 0; wg <= 10 - wr; ++wg) {
            const int wb = 10 - wr - wg;
            const double gap = std::fabs(std::fabs(wr * r + wg * g + wb * blue) / 10 - delta);
            if (gap < bestGap - 1e-12) {
                best = {wr, wg, wb};
                bestGap = gap;
            }
        }
    return best;
}

TEST(ContrastGray, TakesTheMixThatKeepsTheDistanceOfTwoColors) {
    const std::pair<Rgb, Rgb> kPairs[] = {{{200, 40, 40}, {30, 150, 90}},
                                          {{250, 230, 20}, {40, 60, 200}},
                                          {{90, 10, 130}, {20, 120, 30}},
                                          {{120, 100, 100}, {100, 130, 110}},  // a small distance
                                          {{255, 255, 255}, {230, 0, 0}}};
    for (const auto& [a, b] : kPairs) {
        CDibImage image = test::Filled(64, 64, 24, 0);
        for (int y = 0; y < 64; ++y)
            for (int x = 0; x < 64; ++x)
                test::SetPixel(image, x, y, x < 32 ? a : b);
        const Rgb w = PlainWeights(a, b);
        ASSERT_EQ(ContrastGray(image), 1);
        const auto mixed = [&](const Rgb& c) {
            return (w.red * c.red + w.green * c.green + w.blue * c.blue) / 10.0;
        };
        EXPECT_NEAR(test::IndexAt(image, 3, 9), mixed(a), 0.501);
        EXPECT_NEAR(test::IndexAt(image, 60, 9), mixed(b), 0.501);
    }
}

TEST(ContrastGray, DistancesBelowATwentiethDoNotCount) {
    CDibImage image = test::Filled(64, 64, 24, 100);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 32; ++x)
            test::SetPixel(image, x, y, {116, 100, 100});  // 16 / 255 / 1.41 is 0.0445
    ASSERT_EQ(ContrastGray(image), 1);
    EXPECT_EQ(test::IndexAt(image, 3, 9), 100);  // no mix is better than the first, all blue
}

TEST(ContrastGray, APictureWithoutDifferencesTakesTheFirstMix) {
    CDibImage image = test::FromRows({{200, 100, 50}}, 3);  // no red, no green: all blue
    ASSERT_EQ(ContrastGray(image), 1);
    EXPECT_EQ(test::IndexAt(image, 0, 0), 50);
}

TEST(ContrastGray, IsAMixByTenthsOnEveryPixelAndTheSameOnEveryRun) {
    const CDibImage before = test::Noise(70, 50, 24, 6);
    CDibImage image = before, again = before;
    ASSERT_EQ(CombineChannels(image, 10), 1);
    ASSERT_EQ(CombineChannels(again, 10), 1);
    test::ExpectSamePixels(again, image);
    int fitting = 0;
    for (int red = 0; red <= 10; ++red)
        for (int green = 0; green <= 10 - red; ++green) {
            bool fits = true;
            for (int y = 0; y < 50 && fits; ++y)
                for (int x = 0; x < 70 && fits; ++x) {
                    const Rgb c = test::PixelAt(before, x, y);
                    const double mix =
                        (red * c.red + green * c.green + (10 - red - green) * c.blue) / 10.0;
                    fits = std::fabs(test::IndexAt(image, x, y) - mix) < 0.501;
                }
            fitting += fits ? 1 : 0;
        }
    EXPECT_EQ(fitting, 1);
}

TEST(ContrastGray, AnySizeAndDepthIsTakenAndAOneBitPictureExpands) {
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 90}, {90, 1}, {2, 2}, {3000, 2}})
        for (const int bpp : {1, 4, 24}) {
            CDibImage image = test::Noise(width, height, bpp);
            ASSERT_EQ(ContrastGray(image), 1) << width << " x " << height;
            ASSERT_TRUE(image.IsGrayScale());
        }
    CDibImage bits = test::Filled(30, 30, 1, 255);
    ASSERT_EQ(CombineChannels(bits, 10), 1);
    EXPECT_EQ(test::IndexAt(bits, 4, 4), 255);
}

TEST(Channels, ThreadsChangeNothing) {
    std::vector<CDibImage> first;
    for (const int count : {1, 2, 7}) {
        const test::Threads threads(count);
        for (std::size_t mode = 1; mode <= 13; ++mode) {
            CDibImage image = test::Noise(400, 70, 24);
            ASSERT_EQ(SwapChannels(image, 1), 1);
            ASSERT_EQ(Negate(image), 1);
            ASSERT_EQ(CombineChannels(image, static_cast<int>(mode)), 1);
            if (count == 1)
                first.push_back(image);
            test::ExpectSamePixels(image, first[mode - 1]);
        }
    }
}

}  // namespace
}  // namespace velloran

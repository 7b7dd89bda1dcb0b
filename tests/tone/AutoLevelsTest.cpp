#include "tone/AutoLevels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

#include "core/DibImage.h"
#include "support/Images.h"
#include "support/Threads.h"

namespace velloran {
namespace {

// The twelve modes once more, pixel by pixel and without a thought for speed.

using Counts = std::vector<long>;
using Table = std::vector<int>;
using Pixel = std::vector<int>;  // samples, blue first

int Trunc(double value) {
    return static_cast<int>(std::trunc(value));
}

struct PlainPage {
    int width = 0, height = 0, channels = 0;
    std::vector<Pixel> pixels;
};

PlainPage PlainOf(const CDibImage& image) {
    PlainPage page{image.GetWidth(), image.GetHeight(), image.GetBpp() == 24 ? 3 : 1, {}};
    for (int y = 0; y < page.height; ++y)
        for (int x = 0; x < page.width; ++x) {
            const test::Rgb c = test::PixelAt(image, x, y);
            page.pixels.push_back(page.channels == 3 ? Pixel{c.blue, c.green, c.red}
                                                     : Pixel{c.green});
        }
    return page;
}

int PlainLuma(const Pixel& p) {
    return p.size() == 1 ? p[0] : (601 * p[1] + 306 * p[2] + 117 * p[0]) / 1024;
}

Counts CountOf(const PlainPage& page, int channel) {  // -1 is luma
    Counts counts(256, 0);
    for (const Pixel& p : page.pixels)
        ++counts[static_cast<std::size_t>(channel < 0 ? PlainLuma(p)
                                                      : p[static_cast<std::size_t>(channel)])];
    return counts;
}

long SumOf(const Counts& counts, int first, int last) {
    long sum = 0;
    for (int i = first; i <= last; ++i)
        sum += counts[static_cast<std::size_t>(i)];
    return sum;
}

/// First level from `start` in direction `step`, `end` excluded, whose count is nearer to the
/// target than the count with the next level; the next level, or `none`.
int Nearest(const Counts& counts, int start, int end, int step, long target, int none) {
    long sum = 0;
    for (int i = start; i != end; i += step) {
        sum += counts[static_cast<std::size_t>(i)];
        const long next = sum + counts[static_cast<std::size_t>(i + step)];
        if (std::labs(sum - target) < std::labs(next - target))
            return i + step;
    }
    return none;
}

struct PlainPoints {
    int low, high;
};

PlainPoints PlainClip(const Counts& counts, double fraction) {
    const long target = Trunc(static_cast<double>(SumOf(counts, 0, 255)) * fraction + 0.5);
    const int low = Nearest(counts, 0, 255, 1, target, 0);
    const int high = Nearest(counts, 255, 0, -1, target, 255);
    return {std::min(low, high), std::max(low, high)};
}

Table PlainStretch(int a, int b) {
    const int low = std::min(a, b), high = std::max(a, b);
    Table table;
    for (int i = 0; i < 256; ++i)
        table.push_back(low == high ? i
                        : i < low   ? 0
                        : i > high  ? 255
                                    : ((i - low) * 255 + (high - low) / 2) / (high - low));
    return table;
}

Table PlainBrightness(const Counts& counts, double fraction) {
    const double exponent = std::pow(1.0199198592936658, 2.0);
    const PlainPoints clip = PlainClip(counts, fraction);
    const int low = clip.low / 2, high = clip.high + (255 - clip.high) / 2;
    Table table;
    for (int i = 0; i < 256; ++i) {
        const double scale = high == low ? 1.0 : 255.0 / (high - low);
        const int half = i < low    ? 0
                         : i > high ? 255
                                    : std::clamp(Trunc((i - low) * scale + 0.5), 0, 255);
        table.push_back(Trunc(std::pow(half / 255.0, exponent) * 255.0 + 0.5));
    }
    return table;
}

PlainPoints PlainBleach(const Counts& counts, double dark, double light, bool color) {
    const long darkSum = color ? SumOf(counts, 0, 121) : SumOf(counts, 5, 126);
    Counts lights(256, 0);
    std::copy(counts.begin() + 127, counts.begin() + 254, lights.begin() + 127);
    return {Nearest(counts, 5, 127, 1, Trunc(static_cast<double>(darkSum) * dark + 0.5), 255),
            Nearest(lights, 255, 0, -1,
                    Trunc(static_cast<double>(SumOf(lights, 0, 255)) * light + 0.5), 255)};
}

void MapAll(PlainPage& page, const Table& table, int channel = -1) {
    for (Pixel& p : page.pixels)
        for (int c = 0; c < page.channels; ++c)
            if (channel < 0 || channel == c) {
                int& sample = p[static_cast<std::size_t>(c)];
                sample = table[static_cast<std::size_t>(sample)];
            }
}

void PlainBleachPage(PlainPage& page, int number) {
    constexpr double kDark[] = {0.9, 0.7, 0.6, 0.5}, kLight[] = {0.96, 0.9, 0.8, 0.75};
    std::vector<int> low, high;
    for (int c = 0; c < page.channels; ++c) {
        const PlainPoints p = PlainBleach(CountOf(page, c), kDark[number - 1], kLight[number - 1],
                                          page.channels == 3);
        low.push_back(p.low);
        high.push_back(p.high);
    }
    const auto middle = [](const std::vector<int>& v) {
        return (*std::max_element(v.begin(), v.end()) + *std::min_element(v.begin(), v.end()) + 1) /
               2;
    };
    MapAll(page, page.channels == 3 ? PlainStretch(middle(low), middle(high))
                                    : PlainStretch(low[0], high[0]));
}

void PlainAutoLevels(PlainPage& page, int mode) {
    constexpr double kFraction[] = {0,       0.006, 0.001,  0.006,  0.0001,
                                    0.00001, 0.005, 0.0001, 0.00001};
    const PlainPage before = page;
    const auto stretch = [&](int channel) {
        const PlainPoints p = PlainClip(CountOf(before, channel), kFraction[mode]);
        return PlainStretch(p.low, p.high);
    };
    if (mode <= 2) {
        for (int c = 0; c < page.channels; ++c)
            MapAll(page, stretch(c), c);
    } else if (mode <= 5) {
        MapAll(page, stretch(-1));
    } else if (mode <= 8) {
        for (int c = 0; c < page.channels; ++c)
            MapAll(page, PlainBrightness(CountOf(before, c), kFraction[mode]), c);
        MapAll(page, PlainBrightness(CountOf(before, -1), kFraction[mode]));
    } else {
        PlainBleachPage(page, mode - 8);
    }
}

void ExpectIsPage(const CDibImage& actual, const PlainPage& expected, const std::string& what) {
    const PlainPage page = PlainOf(actual);
    ASSERT_EQ(page.channels, expected.channels) << what;
    for (std::size_t i = 0; i < page.pixels.size(); ++i)
        ASSERT_EQ(page.pixels[i], expected.pixels[i])
            << what << ", pixel " << i << " of a page " << page.width << " wide";
}

void ExpectPlainResult(const CDibImage& before, int mode) {
    PlainPage expected = PlainOf(before);
    PlainAutoLevels(expected, mode);
    CDibImage image = before;
    ASSERT_EQ(AutoLevels(image, mode), 1);
    ExpectIsPage(image, expected, "mode " + std::to_string(mode));
}

/// Paper and ink with soft borders: levels from dark to light, channels apart.
CDibImage Smooth(int width, int height, int bpp, int darkest, int lightest) {
    CDibImage image = test::Filled(width, height, bpp, 0);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const double wave = 0.5 + 0.5 * std::sin(x * 0.21) * std::cos(y * 0.17);
            const int level = darkest + Trunc((lightest - darkest) * wave);
            if (bpp == 24)
                test::SetPixel(image, x, y, {level, level * 9 / 10, level * 7 / 10 + 5});
            else
                test::SetIndex(image, x, y, level);
        }
    return image;
}

constexpr int kModes = 12;

TEST(AutoLevels, EveryModeIsItsFormulaOnNoise) {
    for (int mode = 1; mode <= kModes; ++mode)
        for (const int bpp : {8, 24})
            ExpectPlainResult(test::Noise(61, 43, bpp), mode);
}

TEST(AutoLevels, EveryModeIsItsFormulaOnSmoothPages) {
    for (int mode = 1; mode <= kModes; ++mode)
        for (const int bpp : {8, 24}) {
            ExpectPlainResult(Smooth(211, 151, bpp, 0, 255), mode);
            ExpectPlainResult(Smooth(211, 151, bpp, 40, 215), mode);
            ExpectPlainResult(Smooth(211, 151, bpp, 3, 100), mode);
            ExpectPlainResult(Smooth(211, 151, bpp, 150, 250), mode);
        }
}

TEST(AutoLevels, EveryModeIsItsFormulaAtEverySmallSize) {
    for (int mode = 1; mode <= kModes; ++mode)
        for (const int bpp : {8, 24})
            for (int width = 2; width <= 17; ++width)
                for (int height = 2; height <= 17; ++height) {
                    if (mode > 8 && (width < 3 || height < 3 || width * height < 10))
                        continue;
                    ExpectPlainResult(test::Noise(width, height, bpp), mode);
                }
}

TEST(AutoLevels, TheResultIsTheSameWithAnyNumberOfThreads) {
    for (int mode = 1; mode <= kModes; ++mode)
        for (const int bpp : {8, 24}) {
            const CDibImage before = Smooth(297, 331, bpp, 20, 230);
            CDibImage one = before;
            {
                const test::Threads threads(1);
                AutoLevels(one, mode);
            }
            for (const int count : {2, 7}) {
                const test::Threads threads(count);
                CDibImage image = before;
                AutoLevels(image, mode);
                test::ExpectSamePixels(image, one);
            }
        }
}

TEST(AutoLevels, AnImageOnePixelWideOrHighIsUntouchedAndKeepsItsDepth) {
    for (int mode = 0; mode <= kModes + 1; ++mode)
        for (const int bpp : {1, 4, 8, 24})
            for (const bool wide : {false, true}) {
                const CDibImage before = wide ? test::Noise(9, 1, bpp) : test::Noise(1, 9, bpp);
                CDibImage image = before;
                EXPECT_EQ(AutoLevels(image, mode), 0);
                test::ExpectSamePixels(image, before);
            }
}

TEST(AutoLevels, AnEmptyImageIsRefused) {
    CDibImage image;
    EXPECT_EQ(AutoLevels(image, 1), 0);
}

TEST(AutoLevels, APaletteImageIsNormalisedEvenIfTheModeIsRejected) {
    for (const int mode : {0, -1, 13, std::numeric_limits<int>::min()}) {
        CDibImage image = test::Filled(4, 4, 8, 3);
        test::SetPalette(image, {{0, 0, 0}, {1, 1, 1}, {2, 2, 2}, {90, 90, 90}});
        image.GetPalette()[200] = {1, 2, 200, 0};  // no pixel uses it
        EXPECT_EQ(AutoLevels(image, mode), 0);
        EXPECT_TRUE(image.IsGrayScale());
        EXPECT_EQ(test::IndexAt(image, 2, 2), 90);
    }
}

TEST(AutoLevels, AUniformGrayPageKeepsItsGray) {
    for (const int mode : {1, 2, 3, 4, 5})
        for (const int bpp : {8, 24}) {
            const CDibImage before = test::Filled(20, 20, bpp, 128);
            CDibImage image = before;
            EXPECT_EQ(AutoLevels(image, mode), 1);
            test::ExpectSamePixels(image, before);
        }
}

TEST(AutoLevels, LevelsTakeAColorCastAwayAndContrastKeepsIt) {
    CDibImage levels = test::Filled(10, 10, 24, 0), contrast;
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 10; ++x) {
            const int step = x < 5 ? 0 : 100;
            test::SetPixel(levels, x, y, {80 + step, 60 + step, 20 + step});
        }
    contrast = levels;
    AutoLevels(levels, 1);
    EXPECT_EQ(test::PixelAt(levels, 0, 0), (test::Rgb{0, 0, 0}));
    EXPECT_EQ(test::PixelAt(levels, 9, 0), (test::Rgb{255, 255, 255}));
    AutoLevels(contrast, 3);
    const test::Rgb light = test::PixelAt(contrast, 9, 0);
    EXPECT_GT(light.red, light.green);
    EXPECT_GT(light.green, light.blue);
}

TEST(AutoLevels, GrayBrightnessPassesTheTableTwice) {
    // Half the page at 60, half at 200: the table moves its ends to 30 and 227.
    CDibImage image = test::Filled(10, 10, 8, 60);
    for (int y = 0; y < 10; ++y)
        for (int x = 5; x < 10; ++x)
            test::SetIndex(image, x, y, 200);
    EXPECT_EQ(AutoLevels(image, 6), 1);
    // 60: 30 * 255 / 197 is 38.8, so 39, lifted 36.2, so 36; once more 6 * 255 / 197 is 7.8, so 8,
    // lifted 7.0, so 7.
    EXPECT_EQ(test::IndexAt(image, 0, 0), 7);
}

TEST(AutoLevelsBleach, WantsThreeByThreeAndTenPixels) {
    const auto result = [](int width, int height) {
        CDibImage image = test::Noise(width, height, 4);
        const int ran = AutoLevels(image, 9);
        EXPECT_GE(image.GetBpp(), 8);  // normalised all the same
        return ran;
    };
    EXPECT_EQ(result(2, 40), 0);
    EXPECT_EQ(result(40, 2), 0);
    EXPECT_EQ(result(3, 3), 0);
    EXPECT_EQ(result(3, 4), 1);
}

TEST(AutoLevelsBleach, AnAllLightGrayPageDarkens) {
    // 60 pixels at 240, 40 at 200. No dark point, so 255; of 100 light pixels 75 are nearest at 60,
    // behind 240, and the light point is 200. Swapped, 200..255 is stretched to 0..255.
    CDibImage image = test::Filled(10, 10, 8, 240);
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 4; ++x)
            test::SetIndex(image, x, y, 200);
    EXPECT_EQ(AutoLevels(image, 12), 1);
    EXPECT_EQ(test::IndexAt(image, 0, 0), 0);
    EXPECT_EQ(test::IndexAt(image, 9, 0), 185);  // (40 * 255 + 27) / 55
}

TEST(AutoLevelsBleach, AnAllDarkGrayPageKeepsWhiteAsItsLightPoint) {
    // Half at 50, half at 100: the dark point is 100, the light point stays 255.
    CDibImage image = test::Filled(10, 10, 8, 50);
    for (int y = 0; y < 10; ++y)
        for (int x = 5; x < 10; ++x)
            test::SetIndex(image, x, y, 100);
    for (int y = 0; y < 10; ++y)
        test::SetIndex(image, 9, y, 110);
    // 50, 40 and 10 pixels; the target 50 is met behind 50, and the next level used is 100.
    EXPECT_EQ(AutoLevels(image, 12), 1);
    EXPECT_EQ(test::IndexAt(image, 0, 0), 0);
    EXPECT_EQ(test::IndexAt(image, 6, 0), 0);
    EXPECT_EQ(test::IndexAt(image, 9, 0), 16);  // (10 * 255 + 77) / 155
}

TEST(AutoLevelsBleach, TheRowPaddingOfAGrayPageIsMappedAndThatOfAColorPageIsNot) {
    for (const int bpp : {8, 24}) {
        CDibImage image = test::Filled(5, 8, bpp, 240);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 2; ++x) {
                if (bpp == 8)
                    test::SetIndex(image, x, y, 200);
                else
                    test::SetPixel(image, x, y, {200, 200, 200});
            }
        const std::size_t used = static_cast<std::size_t>(5) * bpp / 8;
        for (int y = 0; y < 8; ++y)
            image.GetBits(y)[used] = 200;
        EXPECT_EQ(AutoLevels(image, 12), 1);
        EXPECT_EQ(test::PixelAt(image, 0, 0).green, 0);  // 200 became black
        EXPECT_EQ(image.GetBits(3)[used], bpp == 8 ? 0 : 200);
    }
}

TEST(AutoLevels, ABlackAndWhitePageBecomesItsGrayExpansion) {
    for (int mode = 1; mode <= 8; ++mode) {
        CDibImage image = test::Noise(19, 12, 1);
        PlainPage expected = PlainOf(image);  // through the palette: 0 and 255
        PlainAutoLevels(expected, mode);
        EXPECT_EQ(AutoLevels(image, mode), 1);
        EXPECT_EQ(image.GetBpp(), 8);
        ExpectIsPage(image, expected, "mode " + std::to_string(mode));
    }
}

TEST(AutoLevels, AColorPaletteBecomes24Bits) {
    CDibImage image = test::Noise(19, 12, 4);
    test::SetPalette(image, {{250, 10, 10}, {10, 240, 10}});
    PlainPage expected = PlainOf(image);
    expected.channels = 3;
    for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 19; ++x) {
            const test::Rgb c = test::PixelAt(image, x, y);
            expected.pixels[static_cast<std::size_t>(y * 19 + x)] = {c.blue, c.green, c.red};
        }
    PlainAutoLevels(expected, 1);
    EXPECT_EQ(AutoLevels(image, 1), 1);
    EXPECT_EQ(image.GetBpp(), 24);
    ExpectIsPage(image, expected, "mode 1");
}

}  // namespace
}  // namespace velloran

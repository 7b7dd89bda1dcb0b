#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "core/Threads.h"
#include "reduce/Binarize.h"
#include "support/Images.h"
#include "support/Threads.h"

namespace velloran {
namespace {

DecreaseBppRequest Method(int method) {
    DecreaseBppRequest request;
    request.color = 7;
    request.thresholdMethod = method;
    return request;
}

Palette Grays(const std::vector<int>& levels) {
    Palette palette;
    for (const int level : levels) {
        const auto gray = static_cast<std::uint8_t>(level);
        palette.push_back({gray, gray, gray, 0});
    }
    return palette;
}

/// Variance between the classes from the pixels themselves, for each threshold; the first of the
/// largest. Exact, in whole numbers: (n1 s0 - n0 s1)^2 / (n0 n1).
int PlainOtsu(const CDibImage& image) {
    int best = 0;
    long double most = 0;
    for (int t = 0; t < 256; ++t) {
        long double n[2] = {0, 0}, sum[2] = {0, 0};
        for (int y = 0; y < image.GetHeight(); ++y)
            for (int x = 0; x < image.GetWidth(); ++x) {
                const int level = test::IndexAt(image, x, y);
                n[level > t] += 1;
                sum[level > t] += level;
            }
        if (n[0] == 0 || n[1] == 0)
            continue;
        const long double distance = n[1] * sum[0] - n[0] * sum[1];
        const long double variance = distance * distance / (n[0] * n[1]);
        if (variance > most * (1 + 1e-12L)) {
            most = variance;
            best = t;
        }
    }
    return best;
}

TEST(Otsu, EqualsAPlainSearchOfTheLargestVariance) {
    for (std::uint32_t seed = 1; seed <= 12; ++seed) {
        CDibImage image = test::Noise(23, 17, 8, seed);
        for (int i = 0; seed % 3 != 0 && i < 23 * 17; ++i)  // two hills
            test::SetIndex(
                image, i % 23, i / 23,
                static_cast<int>(i % 5 < 2 ? 30 + i * 7 % (10 * seed) : 150 + i * 11 % (8 * seed)));
        EXPECT_EQ(OtsuThreshold(image), PlainOtsu(image)) << seed;
    }
}

TEST(Otsu, TheLowestOfEqualThresholdsIsTaken) {
    EXPECT_EQ(OtsuThreshold(test::FromRows({{20, 200}})), 20);
    EXPECT_EQ(OtsuThreshold(test::FromRows({{0, 255, 255}})), 0);
}

TEST(Otsu, ABlankPageTurnsWhiteAndABlackOneStaysBlack) {
    for (const int level : {0, 1, 100, 255}) {
        CDibImage image = test::Filled(9, 9, 8, static_cast<std::uint8_t>(level));
        EXPECT_TRUE(Threshold(image, nullptr, Method(1)));
        test::ExpectSamePixels(
            image, test::Filled(9, 9, 8, static_cast<std::uint8_t>(level == 0 ? 0 : 255)));
    }
}

TEST(Otsu, AnEmptyHistogramHasNoThreshold) {
    EXPECT_EQ(OtsuThreshold(CDibImage()), -1);
}

TEST(Threshold, OtsuTurnsLevelsAboveTheThresholdWhite) {
    CDibImage image = test::FromRows({{10, 20, 200, 210}, {20, 10, 210, 200}});
    EXPECT_TRUE(Threshold(image, nullptr, Method(1)));
    test::ExpectSamePixels(image, test::FromRows({{0, 0, 255, 255}, {0, 0, 255, 255}}));
}

TEST(Threshold, AnUnknownMethodIsOtsu) {
    CDibImage image = test::FromRows({{10, 20, 200, 210}});
    EXPECT_TRUE(Threshold(image, nullptr, Method(77)));
    test::ExpectSamePixels(image, test::FromRows({{0, 0, 255, 255}}));
}

struct MidpointCase {
    PaletteEntry first, second;
    int threshold;
};

TEST(Threshold, TwoEntriesDecideByTheMidpointOfTheirSixBytesAndOne) {
    const MidpointCase cases[] = {
        {{0, 0, 0, 0}, {255, 255, 255, 0}, 128},        // 765 / 6 = 127
        {{10, 20, 30, 0}, {40, 50, 60, 0}, 36},         // 210 / 6 = 35
        {{0, 0, 0, 9}, {0, 0, 5, 9}, 1},                // 5 / 6 = 0, reserved bytes do not count
        {{255, 255, 255, 0}, {255, 255, 254, 0}, 255},  // 1529 / 6 = 254
        {{255, 255, 255, 0}, {255, 255, 255, 0}, 255},  // 255 stays
    };
    for (const MidpointCase& c : cases) {
        CDibImage image = test::Filled(256, 1, 8, 0);
        for (int x = 0; x < 256; ++x)
            test::SetIndex(image, x, 0, x);
        const Palette palette{c.first, c.second};
        EXPECT_TRUE(Threshold(image, &palette, Method(0)));
        for (int x = 0; x < 256; ++x)
            ASSERT_EQ(test::IndexAt(image, x, 0), x > c.threshold ? 255 : 0) << c.threshold;
    }
}

TEST(Threshold, MoreEntriesMapEachLevelToTheNearestOne) {
    CDibImage image = test::FromRows({{0, 49, 50, 51, 100, 149, 150, 151, 255}});
    const Palette palette = Grays({200, 0, 100});
    EXPECT_TRUE(Threshold(image, &palette, Method(0)));
    // Ties go to the entry that stands first: 50 to level 0, 150 to level 200.
    test::ExpectSamePixels(image, test::FromRows({{0, 0, 0, 100, 100, 100, 200, 200, 200}}));
}

TEST(Threshold, ASingleEntryMakesThePageThatLevel) {
    CDibImage image = test::Noise(5, 5, 8);
    const Palette palette = Grays({77});
    EXPECT_TRUE(Threshold(image, &palette, Method(0)));
    test::ExpectSamePixels(image, test::Filled(5, 5, 8, 77));
}

TEST(Threshold, EveryDepthTurnsGrayFirst) {
    for (const int bpp : {1, 4, 24})
        for (int width = 1; width <= 17; ++width) {
            CDibImage image = test::Noise(width, 3, bpp, static_cast<std::uint32_t>(width));
            EXPECT_TRUE(Threshold(image, nullptr, Method(1)));
            EXPECT_TRUE(image.IsGrayScale());
            for (int x = 0; x < width; ++x)
                EXPECT_EQ(test::IndexAt(image, x, 0) % 255, 0);
        }
}

TEST(Threshold, WithoutPixelsOrEntriesNothingHappens) {
    CDibImage empty, image = test::Noise(5, 5, 24);
    const CDibImage before(image);
    const Palette none;
    EXPECT_FALSE(Threshold(empty, nullptr, Method(1)));
    EXPECT_FALSE(Threshold(image, &none, Method(0)));
    test::ExpectSamePixels(image, before);
}

/// Every window summed anew.
CDibImage PlainWolf(const CDibImage& image, int windowWidth, int windowHeight, int low, int high) {
    const int width = image.GetWidth(), height = image.GetHeight();
    const int reachX = (windowWidth | 1) / 2, reachY = (windowHeight | 1) / 2;
    std::vector<double> mean, deviation;
    double largest = 0;
    int darkest = 255;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            std::int64_t sum = 0, squares = 0, count = 0;
            for (int wy = std::max(0, y - reachY); wy <= std::min(height - 1, y + reachY); ++wy)
                for (int wx = std::max(0, x - reachX); wx <= std::min(width - 1, x + reachX);
                     ++wx) {
                    const int level = test::IndexAt(image, wx, wy);
                    sum += level;
                    squares += level * level;
                    ++count;
                }
            const double n = static_cast<double>(count), m = static_cast<double>(sum) / n;
            mean.push_back(m);
            deviation.push_back(std::sqrt(std::fabs(static_cast<double>(squares) / n - m * m)));
            largest = std::max(largest, deviation.back());
            darkest = std::min(darkest, test::IndexAt(image, x, y));
        }
    CDibImage result(image);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const std::size_t i = static_cast<std::size_t>(y) * width + x;
            const int p = test::IndexAt(image, x, y);
            const float m = static_cast<float>(mean[i]);
            const float f = largest < 0.0001 ? 1.0F
                                             : 1.0F - static_cast<float>(deviation[i]) /
                                                          static_cast<float>(largest);
            const float t = m - (m - static_cast<float>(darkest)) * (0.3F * f) + 0.5F;
            const bool black = p < low || (p <= high && p < static_cast<int>(t));
            test::SetIndex(result, x, y, black ? 0 : 255);
        }
    return result;
}

TEST(WolfThreshold, EqualsWindowsSummedAnew) {
    for (int width = 1; width <= 17; ++width)
        for (const int height : {1, 2, 13})
            for (const int window : {3, 4, 7, 10, 500}) {
                CDibImage image = test::Noise(width, height, 8, static_cast<std::uint32_t>(width));
                const CDibImage expected = PlainWolf(image, window, window, 50, 254);
                ASSERT_TRUE(WolfThreshold(image, window, window, 50, 254, /*keepDepth=*/true));
                test::ExpectSamePixels(image, expected);
            }
}

TEST(WolfThreshold, SidesOfAWindowMayDiffer) {
    CDibImage image = test::Noise(40, 30, 8);
    const CDibImage expected = PlainWolf(image, 3, 21, 20, 240);
    ASSERT_TRUE(WolfThreshold(image, 3, 21, 20, 240, /*keepDepth=*/true));
    test::ExpectSamePixels(image, expected);
}

TEST(WolfThreshold, InkBelow50IsBlackAndPaperAt255WhiteWhateverLiesAround) {
    for (const int around : {0, 10, 49, 50, 200, 255}) {
        CDibImage image = test::Filled(40, 40, 8, static_cast<std::uint8_t>(around));
        test::SetIndex(image, 10, 10, 49);
        test::SetIndex(image, 30, 30, 255);
        ASSERT_TRUE(WolfThreshold(image, 10, 10, 50, 254, /*keepDepth=*/true));
        EXPECT_EQ(test::IndexAt(image, 10, 10), 0) << around;
        EXPECT_EQ(test::IndexAt(image, 30, 30), 255) << around;
    }
}

TEST(WolfThreshold, AUniformPageHasNoDeviationAndTurnsWhiteFrom50On) {
    // f is 1 and M is the level itself: T is level + 0.5, truncated the level, and p is not below.
    for (int level = 0; level < 256; ++level) {
        CDibImage image = test::Filled(37, 23, 8, static_cast<std::uint8_t>(level));
        ASSERT_TRUE(WolfThreshold(image, 10, 10, 50, 254, /*keepDepth=*/true));
        test::ExpectSamePixels(
            image, test::Filled(37, 23, 8, static_cast<std::uint8_t>(level < 50 ? 0 : 255)));
    }
}

TEST(WolfThreshold, WithoutKeptDepthThePageIsOneBit) {
    CDibImage image = test::Noise(33, 9, 8), kept(image);
    ASSERT_TRUE(WolfThreshold(image, 10, 10, 50, 254, /*keepDepth=*/false));
    ASSERT_TRUE(WolfThreshold(kept, 10, 10, 50, 254, /*keepDepth=*/true));
    ASSERT_TRUE(image.IsBW());
    for (int y = 0; y < 9; ++y)
        for (int x = 0; x < 33; ++x)
            ASSERT_EQ(test::PixelAt(image, x, y), test::PixelAt(kept, x, y));
}

TEST(WolfThreshold, BlackAndWhitePagesStayAndNarrowWindowsAreRefused) {
    CDibImage blackWhite = test::Noise(9, 9, 1), image = test::Noise(9, 9, 8), empty;
    const CDibImage before(blackWhite), page(image);
    EXPECT_TRUE(WolfThreshold(blackWhite, 10, 10, 50, 254, true));
    test::ExpectSamePixels(blackWhite, before);
    for (const int side : {INT32_MIN, -1, 0, 2}) {
        EXPECT_FALSE(WolfThreshold(image, side, 10, 50, 254, true));
        EXPECT_FALSE(WolfThreshold(image, 10, side, 50, 254, true));
    }
    test::ExpectSamePixels(image, page);
    EXPECT_FALSE(WolfThreshold(empty, 10, 10, 50, 254, true));
}

TEST(WolfThreshold, AnyWindowThatAnIntHoldsIsTheWholePage) {
    CDibImage image = test::Noise(19, 11, 8);
    const CDibImage expected = PlainWolf(image, 99, 99, 50, 254);
    ASSERT_TRUE(WolfThreshold(image, INT32_MAX, INT32_MAX, 50, 254, true));
    test::ExpectSamePixels(image, expected);
}

TEST(WolfThreshold, ThreadsDoNotChangeAPixel) {
    const CDibImage page = test::Noise(331, 211, 8);
    ASSERT_TRUE(IsWorthThreads(ViewOf(page)));
    CDibImage one(page), four(page);
    {
        const test::Threads threads(1);
        ASSERT_TRUE(WolfThreshold(one, 11, 11, 50, 254, true));
    }
    {
        const test::Threads threads(4);
        ASSERT_TRUE(WolfThreshold(four, 11, 11, 50, 254, true));
    }
    test::ExpectSamePixels(one, four);
}

TEST(BlockThreshold, TheFirstBlockIsAColumnShort) {
    // Blocks of 8: the left one splits at 0 and 100, the right one at 100 and 200, so that 100 is
    // white on the left and black on the right; balance 0 leaves each block its own value.
    CDibImage image = test::Filled(16, 8, 8, 100);
    for (int y = 0; y < 8; ++y) {
        test::SetIndex(image, 0, y, 0);
        test::SetIndex(image, 15, y, 200);
    }
    ASSERT_TRUE(BlockThreshold(image, /*keepDepth=*/true, 8, 0));
    EXPECT_EQ(test::IndexAt(image, 0, 0), 0);
    EXPECT_EQ(test::IndexAt(image, 6, 0), 255);
    EXPECT_EQ(test::IndexAt(image, 7, 0), 0);
    EXPECT_EQ(test::IndexAt(image, 14, 0), 0);
    EXPECT_EQ(test::IndexAt(image, 15, 0), 255);
}

TEST(BlockThreshold, AFullBalanceIsTheThresholdOfThePage) {
    CDibImage image = test::Noise(40, 30, 8), whole(image);
    ASSERT_TRUE(BlockThreshold(image, true, 8, 7));
    ASSERT_TRUE(Threshold(whole, nullptr, Method(1)));
    test::ExpectSamePixels(image, whole);
}

TEST(BlockThreshold, APageWithoutABlockIsSplitAsAWhole) {
    for (const int blockSize : {41, INT32_MAX}) {
        CDibImage image = test::Noise(40, 30, 8), whole(image);
        ASSERT_TRUE(BlockThreshold(image, true, blockSize, 0));
        ASSERT_TRUE(Threshold(whole, nullptr, Method(1)));
        test::ExpectSamePixels(image, whole);
    }
}

TEST(BlockThreshold, AnyNumbersAndSmallPagesGiveTwoLevels) {
    for (const int blockSize : {INT32_MIN, 0, 8, 9, INT32_MAX})
        for (const float balance : {-1e30F, 0.5F, NAN, 1e30F})
            for (const int size : {1, 8, 17}) {
                CDibImage image = test::Noise(size, size, 8);
                ASSERT_TRUE(BlockThreshold(image, true, blockSize, balance));
                for (int x = 0; x < size; ++x)
                    ASSERT_EQ(test::IndexAt(image, x, 0) % 255, 0);
            }
}

TEST(PackBilevel, LevelsBelow128AreBlackOnEveryWidth) {
    for (int width = 1; width <= 17; ++width) {
        CDibImage image = test::Noise(width, 3, 8, static_cast<std::uint32_t>(width));
        test::SetIndex(image, 0, 0, 127);
        test::SetIndex(image, 0, 1, 128);
        const CDibImage before(image);
        ASSERT_TRUE(PackBilevel(image));
        ASSERT_TRUE(image.IsBW());
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < width; ++x)
                ASSERT_EQ(test::PixelAt(image, x, y).red,
                          test::IndexAt(before, x, y) < 128 ? 0 : 255);
    }
}

}  // namespace
}  // namespace velloran

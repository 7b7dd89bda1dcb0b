#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <set>
#include <vector>

#include "reduce/ApplyPalette.h"
#include "support/Images.h"

namespace velloran {
namespace {

Palette Ramp(int levels) {
    Palette palette;
    for (int i = 0; i < levels; ++i) {
        const auto gray = static_cast<std::uint8_t>(std::lround(i * 255.0 / (levels - 1)));
        palette.push_back({gray, gray, gray, 0});
    }
    return palette;
}

/// A matrix of weights with the present pixel in the middle of its first row.
using Weights = std::vector<std::vector<int>>;
const Weights kFloyd{{0, 0, 7}, {3, 5, 1}};
const Weights kJarvis{{0, 0, 0, 7, 5}, {3, 5, 7, 5, 3}, {1, 3, 5, 3, 1}};

/// Top row first, errors of the whole page in one plane.
std::vector<std::vector<int>> PlainDiffusion(const CDibImage& image, const Weights& weights,
                                             int levels) {
    const int width = image.GetWidth(), height = image.GetHeight();
    int sum = 0;
    for (const auto& row : weights)
        sum += std::accumulate(row.begin(), row.end(), 0);
    std::vector<std::vector<int>> errors(static_cast<std::size_t>(height),
                                         std::vector<int>(static_cast<std::size_t>(width)));
    auto out = errors;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const auto row = static_cast<std::size_t>(y), column = static_cast<std::size_t>(x);
            const int value =
                std::clamp(test::IndexAt(image, x, y) + errors[row][column] / sum, 0, 255);
            const double step = 255.0 / (levels - 1);
            const int kept = static_cast<int>(std::lround(std::lround(value / step) * step));
            out[row][column] = kept;
            for (std::size_t dy = 0; dy < weights.size(); ++dy)
                for (std::size_t i = 0; i < weights[dy].size(); ++i) {
                    const int tx = x + static_cast<int>(i) -
                                   static_cast<int>(weights[dy].size() / 2),
                              ty = y + static_cast<int>(dy);
                    if (tx >= 0 && tx < width && ty < height)
                        errors[static_cast<std::size_t>(ty)][static_cast<std::size_t>(tx)] +=
                            weights[dy][i] * (value - kept);
                }
        }
    return out;
}

void ExpectLevels(const CDibImage& image, const std::vector<std::vector<int>>& expected) {
    for (int y = 0; y < image.GetHeight(); ++y)
        for (int x = 0; x < image.GetWidth(); ++x)
            ASSERT_EQ(test::IndexAt(image, x, y),
                      expected[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)])
                << x << ' ' << y;
}

TEST(ReduceLevels, FloydSteinbergEqualsAPlainDiffusionOnEveryWidth) {
    for (int width = 1; width <= 17; ++width)
        for (const int levels : {2, 4, 16}) {
            CDibImage image = test::Noise(width, 9, 8, static_cast<std::uint32_t>(width));
            const auto expected = PlainDiffusion(image, kFloyd, levels);
            ASSERT_TRUE(ReduceLevels(image, Ramp(levels), /*keepDepth=*/true, kFloydSteinberg));
            ExpectLevels(image, expected);
        }
}

TEST(ReduceLevels, JarvisJudiceNinkeEqualsAPlainDiffusionOnEveryWidth) {
    for (int width = 1; width <= 17; ++width)
        for (const int height : {1, 2, 3, 9}) {
            CDibImage image = test::Noise(width, height, 8, static_cast<std::uint32_t>(width));
            const auto expected = PlainDiffusion(image, kJarvis, 2);
            ASSERT_TRUE(ReduceLevels(image, Ramp(2), /*keepDepth=*/true, kJarvisJudiceNinke));
            ExpectLevels(image, expected);
        }
}

TEST(ReduceLevels, MoreThanTwoLevelsAlwaysDiffuseByFloydSteinberg) {
    const CDibImage page = test::Noise(33, 17, 8);
    for (const int method : {-1, 0, 1, 2, 3}) {
        CDibImage image(page);
        ASSERT_TRUE(ReduceLevels(image, Ramp(3), /*keepDepth=*/true, method));
        ExpectLevels(image, PlainDiffusion(page, kFloyd, 3));
    }
}

TEST(ReduceLevels, BayerTurnsTheShareOfPlacesWhiteThatALevelIsOf64) {
    for (int level = 0; level < 256; ++level) {
        CDibImage image = test::Filled(16, 16, 8, static_cast<std::uint8_t>(level));
        ASSERT_TRUE(ReduceLevels(image, Ramp(2), /*keepDepth=*/true, kBayer));
        int white = 0;
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 16; ++x)
                white += test::IndexAt(image, x, y) == 255;
        EXPECT_EQ(white % 4, 0);  // the pattern repeats after 8
        EXPECT_NEAR(white / 4.0, level / 4.0, 0.51) << level;
    }
}

TEST(ReduceLevels, BayerFollowsThePublishedMatrix) {
    // Ranks of the first four places of the first two rows of the 8 x 8 matrix: 0 32 8 40 and
    // 48 16 56 24. A level of 4 * rank + 2 is the first that turns a place white.
    constexpr int kRanks[2][4] = {{0, 32, 8, 40}, {48, 16, 56, 24}};
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x)
            for (const int below : {1, 0}) {
                CDibImage image =
                    test::Filled(8, 8, 8, static_cast<std::uint8_t>(4 * kRanks[y][x] + 2 - below));
                ASSERT_TRUE(ReduceLevels(image, Ramp(2), /*keepDepth=*/true, kBayer));
                EXPECT_EQ(test::IndexAt(image, x, y), below != 0 ? 0 : 255) << x << ' ' << y;
            }
}

TEST(ReduceLevels, LevelsAreEvenlySpacedAndTheMeanStays) {
    for (const int method : {kJarvisJudiceNinke, kFloydSteinberg, kBayer})
        for (const int levels : {2, 3, 5, 8, 16}) {
            CDibImage image = test::Filled(64, 64, 8, 90);
            ASSERT_TRUE(ReduceLevels(image, Ramp(levels), /*keepDepth=*/true, method));
            double sum = 0;
            for (int y = 0; y < 64; ++y)
                for (int x = 0; x < 64; ++x) {
                    const int value = test::IndexAt(image, x, y);
                    const double place = value * (levels - 1) / 255.0;
                    ASSERT_NEAR(place, std::round(place), 0.04);
                    sum += value;
                }
            EXPECT_NEAR(sum / 4096, 90, 2.5) << method << ' ' << levels;
        }
}

TEST(ReduceLevels, WithoutKeptDepthLevelsBecomeTheNearestIndex) {
    // The palette stands upside down, so that indices and levels differ.
    const Palette palette{{250, 0, 0, 0}, {170, 0, 0, 0}, {90, 0, 0, 0}, {5, 0, 0, 0}};
    CDibImage levels = test::Noise(20, 20, 8), indices(levels);
    ASSERT_TRUE(ReduceLevels(levels, palette, /*keepDepth=*/true, 0));
    ASSERT_TRUE(ReduceLevels(indices, palette, /*keepDepth=*/false, 0));
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 20; ++x)
            ASSERT_EQ(test::IndexAt(indices, x, y), 3 - test::IndexAt(levels, x, y) / 85);
}

TEST(ReduceLevels, ASingleEntryStillDithersToTwoLevels) {
    CDibImage image = test::Filled(8, 8, 8, 100);
    ASSERT_TRUE(ReduceLevels(image, {{7, 7, 7, 0}}, /*keepDepth=*/true, 1));
    std::set<int> used;
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            used.insert(test::IndexAt(image, x, y));
    EXPECT_EQ(used, (std::set<int>{0, 255}));
}

TEST(ReduceLevels, AGrayishPaletteIsNormalisedFirst) {
    CDibImage image = test::Filled(16, 16, 8, 0);
    test::SetPalette(image, {{100, 102, 104}});
    ASSERT_TRUE(ReduceLevels(image, Ramp(4), /*keepDepth=*/true, 0));
    EXPECT_TRUE(image.IsGrayScale());
    double sum = 0;
    for (int y = 0; y < 16; ++y)
        for (int x = 0; x < 16; ++x)
            sum += test::IndexAt(image, x, y);
    EXPECT_NEAR(sum / 256, 101, 4);
}

TEST(ReduceLevels, AColoredPaletteTurnsIntoItsGrays) {
    CDibImage image = test::FromRows({{0, 1}, {1, 0}});
    test::SetPalette(image, {{255, 0, 0}, {255, 255, 255}});
    ASSERT_TRUE(ReduceLevels(image, Ramp(256), /*keepDepth=*/true, 0));
    EXPECT_TRUE(image.IsGrayScale());
    EXPECT_EQ(test::IndexAt(image, 0, 0), 76);
    EXPECT_EQ(test::IndexAt(image, 1, 0), 255);
}

TEST(ReduceLevels, ColorPagesAndEmptyPalettesAreRefused) {
    CDibImage color = test::Noise(5, 5, 24), gray = test::Noise(5, 5, 8), empty;
    const CDibImage before(gray);
    EXPECT_FALSE(ReduceLevels(color, Ramp(2), true, 0));
    EXPECT_FALSE(ReduceLevels(gray, {}, true, 0));
    test::ExpectSamePixels(gray, before);
    EXPECT_FALSE(ReduceLevels(empty, Ramp(2), true, 0));
}

}  // namespace
}  // namespace velloran

#include "tone/MultiScaleRetinex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "core/DibImage.h"
#include "support/Images.h"
#include "support/Threads.h"
#include "tone/RefusalSweep.h"
#include "tone/ToneSteps.h"

namespace velloran {
namespace {

using Plane = std::vector<std::vector<double>>;  // by row, then column

std::vector<double> PlainLine(const std::vector<double>& line, double sigma) {
    const int reach = static_cast<int>(std::ceil(5 * sigma));
    std::vector<double> kernel, out;
    double total = 0;
    for (int k = -reach; k <= reach; ++k) {
        kernel.push_back(std::exp(-0.5 * k * k / (sigma * sigma)));
        total += kernel.back();
    }
    for (int i = 0; i < static_cast<int>(line.size()); ++i) {
        double sum = 0;
        for (int k = -reach; k <= reach; ++k)
            sum += kernel[static_cast<std::size_t>(k + reach)] *
                   line[static_cast<std::size_t>(
                       std::clamp(i + k, 0, static_cast<int>(line.size()) - 1))];
        out.push_back(sum / total);
    }
    return out;
}

Plane PlainBlur(Plane plane, double sigma) {
    for (auto& row : plane)
        row = PlainLine(row, sigma);
    for (std::size_t x = 0; x < plane.front().size(); ++x) {
        std::vector<double> column;
        for (const auto& row : plane)
            column.push_back(row[x]);
        column = PlainLine(column, sigma);
        for (std::size_t y = 0; y < plane.size(); ++y)
            plane[y][x] = column[y];
    }
    return plane;
}

/// Mean and deviation run over all channels, the rest is done for each.
std::vector<Plane> PlainRetinex(const CDibImage& image, double range) {
    std::vector<Plane> all;
    double sum = 0, squares = 0, count = 0;
    for (int c = 0; c < (image.GetBpp() == 24 ? 3 : 1); ++c) {
        Plane plane(static_cast<std::size_t>(image.GetHeight()));
        for (int y = 0; y < image.GetHeight(); ++y)
            for (int x = 0; x < image.GetWidth(); ++x) {
                const test::Rgb p = test::PixelAt(image, x, y);
                plane[static_cast<std::size_t>(y)].push_back(
                    1.0 + (c == 0 ? p.blue : (c == 1 ? p.green : p.red)));
            }
        Plane difference = plane;
        for (auto& row : difference)
            for (double& value : row)
                value = 3 * std::log(value);
        for (const double sigma : {2.0, 72.0, 142.0}) {
            const Plane blurred = PlainBlur(plane, sigma);
            for (std::size_t y = 0; y < plane.size(); ++y)
                for (std::size_t x = 0; x < plane[y].size(); ++x)
                    difference[y][x] -= std::log(blurred[y][x]);
        }
        for (const auto& row : difference)
            for (const double value : row) {
                sum += value;
                squares += value * value;
                ++count;
            }
        all.push_back(difference);
    }
    const double mean = sum / count, deviation = std::sqrt(squares / count - mean * mean);
    for (Plane& plane : all)
        for (auto& row : plane)
            for (double& value : row)
                value =
                    std::clamp((value - (mean - range * deviation)) * 255 / (2 * range * deviation),
                               0.0, 255.0);
    return all;
}

int Sample(const CDibImage& image, int channel, int x, int y) {
    const test::Rgb p = test::PixelAt(image, x, y);
    return channel == 0 ? p.blue : (channel == 1 ? p.green : p.red);
}

TEST(MultiScaleRetinex, IsTheSampleBesideItsSurroundingsAtThreeSizes) {
    for (const int bpp : {8, 24}) {
        const CDibImage before = test::Noise(60, 40, bpp, 21);
        const std::vector<Plane> expected = PlainRetinex(before, 4.0);
        CDibImage image = before;
        ASSERT_EQ(MultiScaleRetinex(image, false), 1);
        for (std::size_t c = 0; c < expected.size(); ++c)
            for (int y = 0; y < 40; ++y)
                for (int x = 0; x < 60; ++x)
                    ASSERT_NEAR(
                        Sample(image, static_cast<int>(c), x, y),
                        expected[c][static_cast<std::size_t>(y)][static_cast<std::size_t>(x)], 1.2)
                        << x << ", " << y;
    }
}

TEST(MultiScaleRetinex, SmallSizesAndSmoothTonesFollowTheSameFormula) {
    for (const auto& [width, height] : {std::pair{1, 7}, {2, 2}, {5, 3}, {8, 17}, {17, 17}})
        for (const int bpp : {8, 24})
            for (const CDibImage& before :
                 {test::Noise(width, height, bpp, 3), test::SmoothPicture(width, height, bpp)}) {
                const std::vector<Plane> expected = PlainRetinex(before, 4.0);
                CDibImage image = before;
                ASSERT_EQ(MultiScaleRetinex(image, false), 1);
                for (std::size_t c = 0; c < expected.size(); ++c)
                    for (int y = 0; y < height; ++y)
                        for (int x = 0; x < width; ++x)
                            ASSERT_NEAR(Sample(image, static_cast<int>(c), x, y),
                                        expected[c][static_cast<std::size_t>(y)]
                                                [static_cast<std::size_t>(x)],
                                        1.2)
                                << width << " x " << height << " at " << x << ", " << y;
            }
}

TEST(MultiScaleRetinex, ALargePictureIsBlurredAtAReducedSizeWithReducedSigmas) {
    // A long strip of two tones: one sigma of 142 at 3000 is 71 at 1500, and seen back at full
    // size it is 142 again. The plain form does not reduce and comes to nearly the same.
    CDibImage image = test::Filled(3000, 12, 8, 60);
    for (int y = 0; y < 12; ++y)
        for (int x = 1000; x < 3000; ++x)
            test::SetIndex(image, x, y, 200);
    const std::vector<Plane> expected = PlainRetinex(image, 4.0);
    ASSERT_EQ(MultiScaleRetinex(image, false), 1);
    for (int x = 0; x < 3000; x += 7)
        if (std::abs(x - 1000) > 6) {
            ASSERT_NEAR(test::IndexAt(image, x, 6), expected[0][6][static_cast<std::size_t>(x)],
                        3.0)
                << x;
        }
}

TEST(MultiScaleRetinex, AFlatPictureComesOutSaturated) {
    for (const bool brighten : {false, true})
        for (const int level : {0, 1, 77, 254, 255}) {
            CDibImage gray = test::Filled(33, 20, 8, static_cast<std::uint8_t>(level));
            EXPECT_EQ(MultiScaleRetinex(gray, brighten), 1);
            test::ExpectSamePixels(gray, test::Filled(33, 20, 8, 255));
        }
    CDibImage color = test::Filled(20, 20, 24, 0);
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 20; ++x)
            test::SetPixel(color, x, y, {10, 100, 200});
    EXPECT_EQ(MultiScaleRetinex(color, false), 1);
    test::ExpectSamePixels(color, test::Filled(20, 20, 24, 255));
}

/// The level of the n-th lightest sample, n three thousandths of all and at least 1.
int BrightLevel(const CDibImage& image) {
    const int channels = image.GetBpp() / 8;
    std::vector<int> samples;
    for (int y = 0; y < image.GetHeight(); ++y)
        for (int x = 0; x < image.GetWidth(); ++x)
            for (int c = 0; c < channels; ++c)
                samples.push_back(Sample(image, c, x, y));
    std::ranges::sort(samples, std::greater<>());
    const auto count = static_cast<std::size_t>(0.003 * static_cast<double>(samples.size()));
    return samples[std::max<std::size_t>(count, 1) - 1];
}

/// Returns the level that decides.
int ExpectBrightened(const CDibImage& before, float range = 4.0F) {
    CDibImage plain = before, bright = before;
    EXPECT_EQ(MultiScaleRetinex(plain, false, 210, 3, range), 1);
    EXPECT_EQ(MultiScaleRetinex(bright, true, 210, 3, range), 1);
    const int level = BrightLevel(plain), raise = level < 250 ? 255 - level : 0;
    for (int y = 0; y < before.GetHeight(); ++y)
        for (std::size_t x = 0;
             x < static_cast<std::size_t>(before.GetWidth() * before.GetBpp() / 8); ++x) {
            const int from = plain.GetBits(y)[x];
            EXPECT_EQ(bright.GetBits(y)[x], std::min(from + raise, 255)) << x << ", " << y;
        }
    return level;
}

TEST(MultiScaleRetinex, BrighteningRaisesAllUntilTheLightestShareIsWhite) {
    for (const int bpp : {8, 24})
        for (const auto& [width, height] : {std::pair{3, 2}, {50, 40}, {130, 90}}) {
            EXPECT_LT(ExpectBrightened(test::Noise(width, height, bpp, 5)), 250);
            ExpectBrightened(test::SmoothPicture(width, height, bpp));
        }
}

TEST(MultiScaleRetinex, APictureIsBrightEnoughFrom250On) {
    // The fewer deviations are shown, the lighter is the lightest; on the way it is just this
    // level.
    const CDibImage image = test::Noise(20, 20, 8, 5);
    std::vector<int> levels;
    for (int hundredths = 100; hundredths < 400; ++hundredths)
        levels.push_back(ExpectBrightened(image, static_cast<float>(hundredths) / 100));
    EXPECT_NE(std::ranges::find(levels, 249), levels.end());
    EXPECT_NE(std::ranges::find(levels, 250), levels.end());
}

TEST(MultiScaleRetinex, APictureThatIsBrightEnoughIsNotBrightened) {
    // A few white dots on black are four deviations above the mean: the lightest share is white.
    CDibImage before = test::Filled(60, 60, 8, 0);
    for (int i = 5; i < 60; i += 14)
        for (int j = 5; j < 60; j += 14)
            test::SetIndex(before, i, j, 255);
    CDibImage plain = before, bright = before;
    ASSERT_EQ(MultiScaleRetinex(plain, false), 1);
    ASSERT_EQ(test::IndexAt(plain, 5, 5), 255);
    ASSERT_LT(test::IndexAt(plain, 0, 0), 200);
    ASSERT_EQ(MultiScaleRetinex(bright, true), 1);
    test::ExpectSamePixels(bright, plain);
}

TEST(MultiScaleRetinex, EverySmallSizeAndDepthIsTaken) {
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 9}, {9, 1}, {2, 2}, {17, 3}})
        for (const int bpp : {1, 4, 8, 24}) {
            CDibImage image = test::Noise(width, height, bpp);
            EXPECT_EQ(MultiScaleRetinex(image, true), 1);
            EXPECT_TRUE(image.GetBpp() == 24 || image.IsGrayScale());
        }
    CDibImage sliver = test::Noise(4600, 1, 8);  // its reduced height rounds to nothing
    EXPECT_EQ(MultiScaleRetinex(sliver, true), 1);
    CDibImage empty;
    EXPECT_EQ(MultiScaleRetinex(empty, true), 0);
}

TEST(MultiScaleRetinex, ScalesOutOfRangeAreRefusedAndOddOnesTaken) {
    constexpr int kHighest = std::numeric_limits<int>::max();
    const CDibImage before = test::Noise(12, 12, 8);
    CDibImage image = before;
    EXPECT_EQ(MultiScaleRetinex(image, false, -1, 3, 4.0F), 0);
    EXPECT_EQ(MultiScaleRetinex(image, false, 210, 0, 4.0F), 0);
    EXPECT_EQ(MultiScaleRetinex(image, false, 210, kHighest, 4.0F), 0);
    test::ExpectSamePixels(image, before);
    for (const float range : {0.0F, -1.0F, std::numeric_limits<float>::quiet_NaN()}) {
        CDibImage narrow = before;
        EXPECT_EQ(MultiScaleRetinex(narrow, false, 210, 3, range), 1);
        test::ExpectSamePixels(narrow, test::Filled(12, 12, 8, 255));
    }
    EXPECT_EQ(MultiScaleRetinex(image, false, kHighest, 1, 4.0F), 1);
    EXPECT_EQ(MultiScaleRetinex(image, false, 0, 1, 4.0F), 1);
}

TEST(MultiScaleRetinex, TheResultDoesNotHangOnTheNumberOfThreads) {
    CDibImage first;
    for (const int count : {1, 2, 7}) {
        const test::Threads threads(count);
        CDibImage image = test::Noise(1700, 90, 24);
        ASSERT_EQ(MultiScaleRetinex(image, true), 1);
        if (count == 1)
            first = image;
        test::ExpectSamePixels(image, first);
    }
}

TEST(MultiScaleRetinex, WithoutMemoryThePixelsStay) {
    const CDibImage before = test::Noise(30, 20, 24);
    const int failed = test::SweepRefusals(
        before, [](CDibImage& image) { return MultiScaleRetinex(image, true); });
    EXPECT_GT(failed, 1);
}

}  // namespace
}  // namespace velloran

#include "tone/WhiteBalance.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "core/DibImage.h"
#include "support/Images.h"
#include "support/Threads.h"
#include "tone/AutoLevels.h"
#include "tone/ToneSteps.h"

namespace velloran {
namespace {

// The method once more with a picture of luma and color differences, step by step.

struct PlainPixel {
    int channels[3];  // blue first
    int tone[3];      // luma, blue and red difference
};

std::vector<PlainPixel> PlainOf(const CDibImage& image) {
    std::vector<PlainPixel> pixels;
    for (int y = 0; y < image.GetHeight(); ++y)
        for (int x = 0; x < image.GetWidth(); ++x) {
            const test::Rgb p = test::PixelAt(image, x, y);
            const long b = p.blue, g = p.green, r = p.red;
            const auto down = [](long v) {
                return static_cast<int>(std::floor(static_cast<double>(v) / 1048576.0));
            };
            pixels.push_back(
                {{p.blue, p.green, p.red},
                 {down(119538 * b + 615514 * g + 313524 * r + 524288),
                  std::min(down((b + 1) * 524288 - 347354 * g - 176932 * r) + 128, 255),
                  std::min(down((r + 1) * 524288 - 85261 * b - 439025 * g) + 128, 255)}});
        }
    return pixels;
}

struct PlainCast {
    double meanBlue = 0, meanRed = 0, deviationBlue = 0, deviationRed = 0;
};

PlainCast CastOf(const std::vector<PlainPixel>& pixels) {
    PlainCast cast;
    const double n = static_cast<double>(pixels.size());
    for (const PlainPixel& p : pixels) {  // whole numbers: a mean of nothing is exactly 0
        cast.meanBlue += p.tone[1] - 128;
        cast.meanRed += p.tone[2] - 128;
    }
    cast.meanBlue /= n;
    cast.meanRed /= n;
    for (const PlainPixel& p : pixels) {
        cast.deviationBlue += std::fabs(p.tone[1] - 128 - cast.meanBlue) / n;
        cast.deviationRed += std::fabs(p.tone[2] - 128 - cast.meanRed) / n;
    }
    return cast;
}

bool PlainPass(std::vector<PlainPixel>& pixels, const PlainCast& c, double k) {
    const double tb = 1.5 * c.deviationBlue + 0.00001, tr = 1.5 * c.deviationRed + 0.00001;
    const double cb = c.meanBlue < 0 ? c.meanBlue - c.deviationBlue : c.meanBlue + c.deviationBlue;
    const double cr =
        c.meanRed < 0 ? 1.5 * c.meanRed - c.deviationRed : 1.5 * c.meanRed + c.deviationRed;
    std::vector<int> candidates;
    for (const PlainPixel& p : pixels)
        if (std::fabs(p.tone[1] - 128 - cb) < tb && std::fabs(p.tone[2] - 128 - cr) < tr)
            candidates.push_back(p.tone[0]);
    const auto target =
        static_cast<std::size_t>(std::fabs(k) * static_cast<double>(candidates.size()) + 0.5);
    if (target == 0)
        return false;
    std::ranges::sort(candidates, std::greater<>());
    const int from = candidates[target - 1];
    if (from < 10)
        return false;
    double sums[3] = {}, count = 0;
    int mostBlue = 0;
    for (const PlainPixel& p : pixels)
        if (p.tone[0] >= from) {
            for (int i = 0; i < 3; ++i)
                sums[i] += p.channels[i];
            ++count;
            mostBlue = std::max(mostBlue, p.channels[0]);
        }
    for (PlainPixel& p : pixels)
        for (int i = 0; i < 3; ++i) {
            const double gain = (k > 0 ? 255.0 : mostBlue) / (sums[i] / count);
            p.channels[i] = static_cast<int>(std::min(p.channels[i] * gain + 0.5, 255.0));
        }
    return true;
}

void Invert(std::vector<PlainPixel>& pixels) {
    for (PlainPixel& p : pixels)
        for (int i = 0; i < 3; ++i) {
            p.channels[i] = 255 - p.channels[i];
            p.tone[i] = 255 - p.tone[i];
        }
}

/// A picture with a cast: warm light over many colors of all tones.
CDibImage CastPicture(int width, int height, std::uint32_t seed) {
    CDibImage image = test::Noise(width, height, 24, seed);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const test::Rgb c = test::PixelAt(image, x, y);
            const int level = 20 + 150 * x / width;
            test::SetPixel(image, x, y,
                           {level + 8 + c.red % 70, level + c.green % 70,
                            std::max(level - 8, 0) + c.blue % 70});
        }
    return image;
}

/// Balances by the plain form as well; false where that finds no white.
bool ExpectPlainBalance(const CDibImage& before, int mode) {
    std::vector<PlainPixel> expected = PlainOf(before);
    PlainCast cast = CastOf(expected);
    CDibImage image = before;
    if (!PlainPass(expected, cast, 0.1)) {
        CDibImage levels = before;
        const int result = AutoLevels(levels, 1);
        EXPECT_EQ(WhiteBalance(image, mode), result);
        test::ExpectSamePixels(image, levels);
        return false;
    }
    if (mode >= 2) {
        Invert(expected);
        cast.meanBlue = -cast.meanBlue;
        cast.meanRed = -cast.meanRed;
        PlainPass(expected, cast, -0.001);
        Invert(expected);
    }
    EXPECT_EQ(WhiteBalance(image, mode), 1);
    CDibImage wanted = before;
    std::size_t at = 0;
    for (int y = 0; y < before.GetHeight(); ++y)
        for (int x = 0; x < before.GetWidth(); ++x, ++at)
            test::SetPixel(
                wanted, x, y,
                {expected[at].channels[2], expected[at].channels[1], expected[at].channels[0]});
    test::ExpectSamePixels(image, wanted);
    return true;
}

TEST(WhiteBalance, FollowsTheNearWhitePixelsAndThenTheNearBlackOnes) {
    for (const int mode : {1, 2, 5}) {
        EXPECT_TRUE(ExpectPlainBalance(CastPicture(80, 60, 3), mode)) << mode;
        EXPECT_TRUE(ExpectPlainBalance(CastPicture(310, 220, 4), mode)) << mode;
    }
}

TEST(WhiteBalance, NoiseSmoothTonesAndEverySmallSizeFollowTheSameSteps) {
    int balanced = 0, handedOn = 0;
    for (const int mode : {1, 2})
        for (int width = 2; width <= 17; ++width)
            for (const int height : {2, 3, 9, 17})
                for (const CDibImage& picture :
                     {test::Noise(width, height, 24, static_cast<std::uint32_t>(width)),
                      test::SmoothPicture(width, height, 24), CastPicture(width, height, 6)}) {
                    SCOPED_TRACE(std::to_string(width) + " by " + std::to_string(height));
                    ++(ExpectPlainBalance(picture, mode) ? balanced : handedOn);
                }
    EXPECT_GT(balanced, 50);  // both ways were met
    EXPECT_GT(handedOn, 5);
}

TEST(WhiteBalance, ADarkPictureGetsTheFirstAutomaticLevelsAndNoBlackPoint) {
    const CDibImage before = [] {
        CDibImage image = test::Noise(40, 40, 24, 9);
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 120; ++x)
                image.GetBits(y)[x] = static_cast<std::uint8_t>(image.GetBits(y)[x] % 9);
        return image;
    }();
    CDibImage levels = before;
    const int result = AutoLevels(levels, 1);
    for (const int mode : {1, 2}) {
        CDibImage image = before;
        EXPECT_EQ(WhiteBalance(image, mode), result);
        test::ExpectSamePixels(image, levels);
    }
}

CDibImage OneColor(const test::Rgb& c) {
    CDibImage image = test::Filled(20, 10, 24, 0);
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 20; ++x)
            test::SetPixel(image, x, y, c);
    return image;
}

TEST(WhiteBalance, OneColorWithoutARedDifferenceBecomesWhite) {
    // The red difference of the second: (117 * 524288 - 85261 * 200 - 439025 * 100) >> 20 is 0.
    for (const test::Rgb& c : {test::Rgb{90, 90, 90}, {116, 100, 200}, {255, 255, 255}})
        for (const int mode : {1, 2}) {
            CDibImage image = OneColor(c);
            ASSERT_EQ(WhiteBalance(image, mode), 1);
            test::ExpectSamePixels(image, test::Filled(20, 10, 24, 255));
        }
}

TEST(WhiteBalance, OneColorWithARedDifferenceIsNoCandidateAndGetsAutomaticLevels) {
    // The search stands at one and a half times the mean difference and reaches nowhere.
    for (const test::Rgb& c : {test::Rgb{200, 150, 90}, {40, 60, 200}, {0, 200, 0}, {0, 0, 0}})
        for (const int mode : {1, 2}) {
            CDibImage levels = OneColor(c), image = levels;
            const int result = AutoLevels(levels, 1);
            EXPECT_EQ(WhiteBalance(image, mode), result);
            test::ExpectSamePixels(image, levels);
        }
}

TEST(WhiteBalance, AWhiteIsNoDarkerThanTen) {
    CDibImage ten = test::Filled(20, 10, 24, 10), nine = test::Filled(20, 10, 24, 9);
    CDibImage levels = nine;
    ASSERT_EQ(WhiteBalance(ten, 1), 1);
    test::ExpectSamePixels(ten, test::Filled(20, 10, 24, 255));
    EXPECT_EQ(WhiteBalance(nine, 1), AutoLevels(levels, 1));
    test::ExpectSamePixels(nine, levels);
}

TEST(WhiteBalance, AChannelThatIsNowhereInTheWhiteStaysBlackWithoutADivisionByZero) {
    // Dark reds and greens of no blue at all; the yellowish ones are the candidates.
    CDibImage image = test::Filled(40, 40, 24, 0);
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 40; ++x)
            test::SetPixel(image, x, y,
                           {100 + (x * 37 + y * 11) % 120, 100 + (x * 13 + y) % 90, 0});
    for (const int mode : {1, 2}) {
        CDibImage balanced = image;
        ASSERT_EQ(WhiteBalance(balanced, mode), 1);
        for (int x = 0; x < 40; ++x)
            ASSERT_EQ(test::PixelAt(balanced, x, 7).blue, 0);
    }
}

TEST(WhiteBalance, GraySmallEmptyAndModeZeroAreRefused) {
    CDibImage empty, gray = test::Noise(20, 20, 8), thin = test::Noise(1, 20, 24);
    const CDibImage grayBefore = gray, thinBefore = thin;
    EXPECT_EQ(WhiteBalance(empty, 1), 0);
    EXPECT_EQ(WhiteBalance(gray, 1), 0);
    EXPECT_EQ(WhiteBalance(thin, 1), 0);
    test::ExpectSamePixels(gray, grayBefore);
    test::ExpectSamePixels(thin, thinBefore);
    CDibImage color = CastPicture(20, 20, 1);
    const CDibImage colorBefore = color;
    for (const int mode : {0, -1, std::numeric_limits<int>::min()})
        EXPECT_EQ(WhiteBalance(color, mode), 0);
    test::ExpectSamePixels(color, colorBefore);
    CDibImage bits = test::Noise(20, 20, 1);
    EXPECT_EQ(WhiteBalance(bits, 1), 0);  // grey once its depth is normalised
    EXPECT_TRUE(bits.IsGrayScale());
}

TEST(WhiteBalance, ThreadsChangeNothing) {
    CDibImage first;
    for (const int count : {1, 2, 7}) {
        const test::Threads threads(count);
        CDibImage image = CastPicture(400, 190, 2);
        ASSERT_EQ(WhiteBalance(image, 2), 1);
        if (count == 1)
            first = image;
        test::ExpectSamePixels(image, first);
    }
}

}  // namespace
}  // namespace velloran

#include "tone/Light.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "core/DibImage.h"
#include "filters/SmoothPlane.h"
#include "support/Images.h"
#include "support/Threads.h"
#include "tone/RefusalSweep.h"
#include "tone/ToneSteps.h"

namespace velloran {
namespace {

double PlainOverlay(double x, double g) {
    return x < 0.5 ? 2 * g * x : 1 - 2 * (1 - x) * (1 - g);
}

/// Before rounding.
double PlainTone(int sample, double weight, double g, double strength) {
    if (weight <= 0)
        return sample;
    const double x = sample * 0.003921569, q = weight * std::fabs(strength);
    return std::clamp(((1 - q) * x + q * PlainOverlay(x, g)) * 255.0, 0.0, 255.0);
}

double ShadowWeight(int level) {
    return level < 75 ? 1 - level * level / (75.0 * 75.0) : 0;
}

double PlainLight(int sample, int mask, int low, int high) {
    double tone = sample;
    if (low != 0) {
        const double t = mask * 0.003921569;
        tone = PlainTone(sample, ShadowWeight(mask), low > 0 ? 1 - t : t, 2 * low / 100.0);
    }
    if (high != 0) {
        const int from = static_cast<int>(tone + 0.5);
        const double x = from * 0.003921569;
        tone = PlainTone(from, ShadowWeight(255 - from), high < 0 ? 1 - x : x, -2 * high / 100.0);
    }
    return tone;
}

TEST(LightWeights, FallWithTheSquareOfTheDistanceFromBlackAndWhite) {
    LightCurve shadow, middle, highlight;
    LightWeights(75, shadow, middle, highlight);
    EXPECT_FLOAT_EQ(shadow[0], 1.0F);
    EXPECT_FLOAT_EQ(shadow[15], 0.96F);
    EXPECT_GT(shadow[74], 0.0F);
    EXPECT_EQ(shadow[75], 0.0F);
    EXPECT_EQ(highlight[180], 0.0F);
    EXPECT_GT(highlight[181], 0.0F);
    EXPECT_FLOAT_EQ(highlight[240], 0.96F);
    EXPECT_FLOAT_EQ(highlight[255], 1.0F);
    for (const float weight : middle)
        EXPECT_EQ(weight, 0.0F);
}

TEST(AdjustLight, FollowsTheSmoothedCopyInTheShadowsAndTheSampleInTheHighlights) {
    for (const int bpp : {8, 24})
        for (const auto& [low, high] :
             {std::pair{60, 0}, {-60, 0}, {0, 80}, {0, -80}, {100, 100}, {-100, -100}}) {
            CDibImage image = test::Noise(40, 30, bpp, 5), mask = image;
            for (int y = 0; y < 30; ++y)  // half of it dark enough to count as shadow
                for (int x = 0; x < 20 * bpp / 8; ++x)
                    mask.GetBits(y)[x] = image.GetBits(y)[x] =
                        static_cast<std::uint8_t>(image.GetBits(y)[x] / 4);
            const CDibImage before = image;
            ASSERT_EQ(SmoothPlane(mask, 3.0), 1);
            ASSERT_EQ(AdjustLight(image, low, high), 1);
            for (int y = 0; y < 30; ++y)
                for (int x = 0; x < 40 * bpp / 8; ++x)
                    ASSERT_NEAR(image.GetBits(y)[x],
                                PlainLight(before.GetBits(y)[x], mask.GetBits(y)[x], low, high),
                                high != 0 ? 1.6 : 0.51)
                        << low << ", " << high << " at " << x << ", " << y;
        }
}

TEST(AdjustLight, SmoothAndSmallPicturesFollowTheSameFormula) {
    for (const auto& [width, height] :
         {std::pair{1, 1}, {1, 17}, {3, 3}, {4, 4}, {5, 9}, {17, 4}, {250, 190}})
        for (const int bpp : {8, 24})
            for (const CDibImage& before :
                 {test::Noise(width, height, bpp, 7), test::SmoothPicture(width, height, bpp)}) {
                CDibImage image = before, mask = before;
                const bool isSmoothed = width > 3 && height > 3;
                ASSERT_EQ(SmoothPlane(mask, 3.0), isSmoothed ? 1 : 0);
                ASSERT_EQ(AdjustLight(image, -80, 0), 1);
                for (int y = 0; y < height; ++y)
                    for (int x = 0; x < width * bpp / 8; ++x)
                        ASSERT_NEAR(image.GetBits(y)[x],
                                    PlainLight(before.GetBits(y)[x], mask.GetBits(y)[x], -80, 0),
                                    0.51)
                            << width << " x " << height << " at " << x << ", " << y;
            }
}

TEST(AdjustLight, EveryStrengthOfBothSlidersFollowsTheSameFormula) {
    CDibImage ramp = test::Filled(256, 4, 8, 0);  // in blocks, so that the mask takes many levels
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 256; ++x)
            test::SetIndex(ramp, x, y, x / 4 * 3 + x % 4 * 20);
    CDibImage mask = ramp;
    ASSERT_EQ(SmoothPlane(mask, 3.0), 1);
    for (int strength = -100; strength <= 100; ++strength) {
        if (strength == 0)
            continue;
        CDibImage low = ramp, high = ramp;
        ASSERT_EQ(AdjustLight(low, strength, 0), 1);
        ASSERT_EQ(AdjustLight(high, 0, strength), 1);
        for (int x = 0; x < 256; ++x) {
            const int sample = test::IndexAt(ramp, x, 2), level = test::IndexAt(mask, x, 2);
            ASSERT_NEAR(test::IndexAt(low, x, 2), PlainLight(sample, level, strength, 0), 0.51)
                << strength << " at " << x;
            ASSERT_NEAR(test::IndexAt(high, x, 2), PlainLight(sample, level, 0, strength), 0.51)
                << strength << " at " << x;
        }
    }
}

TEST(AdjustLight, StrengthsHaveTheirToneUnderAFlatMask) {
    // Level 51: weight 1 - 0.68 ^ 2 = 0.5376, tone 0.2. At 100 g is 0.8, the share 1.0752 and the
    // overlay 0.32: 0.2 + 1.0752 * 0.12 = 0.32902, of 255 83.9. At 50 half of it: 0.26451, 67.45.
    // At -100 g is 0.2, the overlay 0.08: 0.2 - 1.0752 * 0.12 = 0.07098, 18.1.
    for (const auto& [low, tone] : {std::pair{100, 84}, {50, 67}, {-100, 18}}) {
        CDibImage image = test::Filled(9, 9, 8, 51);
        ASSERT_EQ(AdjustLight(image, low, 0), 1);
        EXPECT_EQ(test::IndexAt(image, 4, 4), tone) << low;
    }
    // Level 204, without a mask: the same weight of the highlights; x 0.8. At 100 g is 0.8 and the
    // overlay 1 - 2 * 0.2 * 0.2 = 0.92; at -100 g is 0.2 and the overlay 1 - 2 * 0.2 * 0.8 = 0.68.
    for (const auto& [high, tone] : {std::pair{100, 237}, {-100, 171}}) {
        CDibImage image = test::Filled(9, 9, 8, 204);
        ASSERT_EQ(AdjustLight(image, 0, high), 1);
        EXPECT_EQ(test::IndexAt(image, 4, 4), tone) << high;  // 0.92902 and 0.67098
    }
}

TEST(AdjustLight, LowAloneHasNoHighlightStageAndHighAloneNoShadowStage) {
    const CDibImage light = test::Filled(9, 9, 24, 250), dark = test::Filled(9, 9, 24, 20);
    for (const int strength : {-100, 100}) {
        CDibImage lightImage = light, darkImage = dark;
        ASSERT_EQ(AdjustLight(lightImage, strength, 0), 1);
        ASSERT_EQ(AdjustLight(darkImage, 0, strength), 1);
        test::ExpectSamePixels(lightImage, light);
        test::ExpectSamePixels(darkImage, dark);
    }
}

TEST(AdjustLight, LowAloneLeavesWhatLiesUnderALightMask) {
    CDibImage image = test::Filled(20, 20, 8, 75);
    const CDibImage before = image;
    ASSERT_EQ(AdjustLight(image, 100, 0), 1);
    test::ExpectSamePixels(image, before);
    CDibImage darker = test::Filled(20, 20, 8, 40);
    ASSERT_EQ(AdjustLight(darker, 100, 0), 1);
    EXPECT_GT(test::IndexAt(darker, 5, 5), 40);
}

TEST(AdjustLight, HighAloneMakesNoSmoothedCopy) {
    // It runs without any memory, and on sizes that are not smoothed.
    CDibImage image = test::Filled(30, 30, 24, 230);
    {
        const test::FailAllocation failure(1);
        EXPECT_EQ(AdjustLight(image, 0, -50), 1);
        EXPECT_FALSE(failure.Happened());
    }
    // Weight and share 1 - (25 / 75) ^ 2; (1 / 9) * 0.90196 + (8 / 9) * (1 - 2 * 0.09804 * 0.90196)
    // is 0.83191, of 255 212.1.
    EXPECT_EQ(test::PixelAt(image, 3, 3), (test::Rgb{212, 212, 212}));
}

TEST(AdjustLight, BothZeroAndEmptyAreRefused) {
    CDibImage image = test::Noise(9, 9, 4), empty;
    const CDibImage before = image;
    EXPECT_EQ(AdjustLight(image, 0, 0), 0);
    test::ExpectSamePixels(image, before);
    EXPECT_EQ(AdjustLight(empty, 10, 10), 0);
}

TEST(AdjustLight, AnyStrengthAndSizeIsTaken) {
    constexpr int kLowest = std::numeric_limits<int>::min();
    constexpr int kHighest = std::numeric_limits<int>::max();
    for (const int strength : {kLowest, -1000, 1000, kHighest})
        for (const int bpp : {1, 4, 8, 24})
            for (const int side : {1, 3, 4, 17}) {
                CDibImage image = test::Noise(side, 5, bpp);
                EXPECT_EQ(AdjustLight(image, strength, strength), 1);
            }
}

TEST(AdjustLight, ThreadsChangeNothingAndWithoutMemoryThePixelsStay) {
    const CDibImage before = test::Noise(400, 190, 24);
    CDibImage first;
    for (const int count : {1, 2, 7}) {
        const test::Threads threads(count);
        CDibImage image = before;
        ASSERT_EQ(AdjustLight(image, 70, -40), 1);
        if (count == 1)
            first = image;
        test::ExpectSamePixels(image, first);
    }
    EXPECT_GT(test::SweepRefusals(test::Noise(30, 20, 24),
                                  [](CDibImage& image) { return AdjustLight(image, 50, 50); }),
              1);
}

}  // namespace
}  // namespace velloran

#include "tone/Light.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "core/DibImage.h"
#include "filters/SmoothPlane.h"
#include "support/Images.h"
#include "support/Threads.h"
#include "tone/RefusalSweep.h"

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

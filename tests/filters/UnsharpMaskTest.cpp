#include "filters/UnsharpMask.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>
#include <vector>

#include "filters/GaussianBlur.h"
#include "filters/PlainPlanes.h"
#include "filters/Resample.h"
#include "filters/ScarceMemory.h"
#include "filters/UsmMixer.h"
#include "support/EachForm.h"
#include "support/Images.h"
#include "support/Threads.h"

namespace velloran {
namespace {

constexpr int kLeast = std::numeric_limits<int>::min(), kMost = std::numeric_limits<int>::max();

int Sharpened(int source, int blurred, int amount, int threshold) {
    const int difference = source - blurred;
    if (std::abs(difference) <= threshold)
        return source;
    const int change = std::abs(difference) * amount / 100;
    return std::clamp(source + (difference < 0 ? -change : change), 0, 255);
}

/// One round at full size; `threshold` as it is compared.
CDibImage SharpenedPage(const CDibImage& page, int amount, float radius, int threshold) {
    CDibImage blurred = page, result = page;
    EXPECT_EQ(GaussianBlurInPlace(ViewOf(blurred), radius), 1);
    for (int y = 0; y < page.GetHeight(); ++y)
        for (int i = 0; i < page.GetWidth() * page.GetBpp() / 8; ++i)
            result.GetBits(y)[i] = static_cast<std::uint8_t>(
                Sharpened(page.GetBits(y)[i], blurred.GetBits(y)[i], amount, threshold));
    return result;
}

/// One sample mixed.
int Mixed(int source, int blurred, int amount, int threshold) {
    auto sample = static_cast<std::uint8_t>(source);
    const auto blur = static_cast<std::uint8_t>(blurred);
    UsmMixer{amount, threshold}.Mix(&blur, 1, &sample);
    return sample;
}

TEST(UsmMixer, EveryPairOfSamplesIsItsFormulaInEachForm) {
    test::InEachForm([](const std::string&) {
        for (const int amount : {1, 50, 99, 100, 101, 199, 250, 333, 499, 500})
            for (const int threshold : {0, 1, 2, 63, 127}) {
                const UsmMixer mixer{amount, threshold};
                for (int source = 0; source < 256; ++source) {
                    std::vector<std::uint8_t> row(256, static_cast<std::uint8_t>(source)),
                        blurred(256);
                    for (std::size_t i = 0; i < 256; ++i)
                        blurred[i] = static_cast<std::uint8_t>(i);
                    mixer.Mix(blurred.data(), 256, row.data());
                    for (int i = 0; i < 256; ++i)
                        ASSERT_EQ(row[static_cast<std::size_t>(i)],
                                  Sharpened(source, i, amount, threshold))
                            << source << " " << i << " amount " << amount;
                }
            }
    });
}

TEST(UsmMixer, SamplesBehindTheLastVectorFollowTheFormula) {
    test::InEachForm([](const std::string&) {
        for (int source = 0; source < 256; source += 5)
            for (int blurred = 0; blurred < 256; ++blurred)
                for (const int amount : {1, 99, 333, 500})
                    ASSERT_EQ(Mixed(source, blurred, amount, 2),
                              Sharpened(source, blurred, amount, 2));
    });
}

TEST(UsmMixer, RowsOfAnyLengthAreWholeAndNotLonger) {
    test::InEachForm([](const std::string&) {
        for (int count = 0; count < 150; ++count) {
            std::vector<std::uint8_t> row(160, 100), blurred(160, 90);
            UsmMixer{200, 0}.Mix(blurred.data(), count, row.data());
            for (int i = 0; i < 160; ++i)
                ASSERT_EQ(row[static_cast<std::size_t>(i)], i < count ? 120 : 100);
        }
    });
}

TEST(UsmMixer, AmountFiveHundredSaturatesAtBothEnds) {
    EXPECT_EQ(Mixed(255, 0, 500, 0), 255);
    EXPECT_EQ(Mixed(0, 255, 500, 0), 0);
    EXPECT_EQ(Mixed(100, 90, 500, 0), 150);
}

TEST(UsmMixer, DifferencesUpToTheThresholdStayAndQuotientsGoTowardZero) {
    EXPECT_EQ(Mixed(100, 97, 50, 3), 100);
    EXPECT_EQ(Mixed(100, 103, 50, 3), 100);
    EXPECT_EQ(Mixed(100, 95, 50, 3), 102);  // 2.5
    EXPECT_EQ(Mixed(100, 105, 50, 3), 98);  // -2.5
    EXPECT_EQ(Mixed(100, 96, 50, 3), 102);
}

TEST(UnsharpMask, IsTheMaskOfTheBlur) {
    for (const int bpp : {8, 24})
        for (const auto& [width, height] : {std::pair{6, 6}, {17, 40}, {130, 61}})
            for (const float radius : {0.1F, 1.0F, 3.7F, 19.9F}) {
                const CDibImage page = test::Noise(width, height, bpp);
                CDibImage image = page;
                EXPECT_EQ(UnsharpMask(image, 150, radius, 20, 1, /*blurOnly=*/false), 1);
                test::ExpectSamePixels(image, SharpenedPage(page, 150, radius, 10));
            }
}

TEST(UnsharpMask, IsTheMaskOfTheBlurOnEveryPictureOfSixPixelsAndMore) {
    test::ForEachPicture([](const CDibImage& page, int number) {
        if (page.GetWidth() < 6 || page.GetHeight() < 6)
            return;
        const int amount = 1 + number * 37 % 500, threshold = number * 5 % 40;
        const float radius = 0.1F + static_cast<float>(number % 13) * 0.4F;
        CDibImage image = page;
        EXPECT_EQ(UnsharpMask(image, amount, radius, threshold, 1, /*blurOnly=*/false), 1);
        test::ExpectSamePixels(image, SharpenedPage(page, amount, radius, threshold / 2));
    });
}

/// Blurring alone must give the Gaussian of the whole page.
void ExpectBlurAtFullSize(const CDibImage& page, float radius) {
    CDibImage image = page, blurred = page;
    EXPECT_EQ(UnsharpMask(image, 1, radius, 1, 1, /*blurOnly=*/true), 1);
    EXPECT_EQ(GaussianBlurInPlace(ViewOf(blurred), radius), 1);
    test::ExpectSamePixels(image, blurred);
}

TEST(UnsharpMask, WithBlurOnlyTheBlurIsTheResult) {
    ExpectBlurAtFullSize(test::Noise(50, 40, 24), 2.5F);
}

TEST(UnsharpMask, AThresholdOfOneIsHalvedToNone) {
    const CDibImage page = test::Smooth(50, 40, 8);
    CDibImage one = page, none = page, two = page;
    UnsharpMask(one, 200, 2.0F, 1, 1, /*blurOnly=*/false);
    UnsharpMask(none, 200, 2.0F, 0, 1, /*blurOnly=*/false);
    UnsharpMask(two, 200, 2.0F, 2, 1, /*blurOnly=*/false);
    test::ExpectSamePixels(one, none);
    test::ExpectSamePixels(one, SharpenedPage(page, 200, 2.0F, 0));
    test::ExpectSamePixels(two, SharpenedPage(page, 200, 2.0F, 1));
}

TEST(UnsharpMask, EachRoundStartsFromTheLastAndThreeAreTheMost) {
    const CDibImage page = test::Noise(50, 40, 24);
    CDibImage expected = page;
    for (int times = 1; times <= 5; ++times) {
        if (times <= 3)
            expected = SharpenedPage(expected, 80, 1.5F, 2);
        CDibImage image = page;
        EXPECT_EQ(UnsharpMask(image, 80, 1.5F, 4, times, /*blurOnly=*/false), 1);
        test::ExpectSamePixels(image, expected);
    }
}

TEST(UnsharpMask, ValuesOutsideTheirRangeCountAsItsEnds) {
    const CDibImage page = test::Noise(30, 20, 24);
    const auto run = [&](int amount, float radius, int threshold, int times) {
        CDibImage image = page;
        EXPECT_EQ(UnsharpMask(image, amount, radius, threshold, times, /*blurOnly=*/false), 1);
        return image;
    };
    test::ExpectSamePixels(run(kMost, 1.0F, 0, 1), run(500, 1.0F, 0, 1));
    test::ExpectSamePixels(run(kLeast, 1.0F, 0, 1), run(1, 1.0F, 0, 1));
    test::ExpectSamePixels(run(100, 1.0F, kMost, 1), run(100, 1.0F, 255, 1));
    test::ExpectSamePixels(run(100, 1.0F, kLeast, 1), run(100, 1.0F, 0, 1));
    test::ExpectSamePixels(run(100, -3e38F, 0, 1), run(100, 0.1F, 0, 1));
    test::ExpectSamePixels(run(100, 3e38F, 0, 1), run(100, 250.0F, 0, 1));
    test::ExpectSamePixels(run(100, 1.0F, 0, kMost), run(100, 1.0F, 0, 3));
}

TEST(UnsharpMask, RefusesNoTimesSmallSidesAndEmptyImages) {
    for (const int times : {kLeast, -1, 0}) {
        CDibImage image = test::Noise(20, 20, 4);
        EXPECT_EQ(UnsharpMask(image, 100, 1.0F, 0, times, /*blurOnly=*/false), 0);
        test::ExpectSamePixels(image, test::Noise(20, 20, 4));
    }
    for (const auto& [width, height] : {std::pair{5, 20}, {20, 5}}) {
        CDibImage image = test::Noise(width, height, 4);
        EXPECT_EQ(UnsharpMask(image, 100, 1.0F, 0, 1, /*blurOnly=*/false), 0);
        test::ExpectSamePixels(image, test::Noise(width, height, 4));
    }
    CDibImage empty;
    EXPECT_EQ(UnsharpMask(empty, 100, 1.0F, 0, 1, /*blurOnly=*/true), 0);
}

TEST(UnsharpMask, LittleDepthsAreNormalisedFirst) {
    for (const int bpp : {1, 4}) {
        CDibImage image = test::Noise(20, 20, bpp);
        EXPECT_EQ(UnsharpMask(image, 100, 1.0F, 0, 1, /*blurOnly=*/true), 1);
        EXPECT_EQ(image.GetBpp(), 8);
        EXPECT_TRUE(image.IsGrayScale());
    }
    CDibImage colors = test::Noise(20, 20, 8);
    colors.GetPalette()[3] = {0, 0, 200, 0};
    test::SetIndex(colors, 0, 0, 3);
    EXPECT_EQ(UnsharpMask(colors, 100, 1.0F, 0, 1, /*blurOnly=*/true), 1);
    EXPECT_EQ(colors.GetBpp(), 24);
}

TEST(UsmWorkingSize, RadiusFortyFitsIntoAThousand) {
    EXPECT_EQ(UsmWorkingSize({900, 700}, 40.0F), (BoxSize{900, 700}));  // full size
    EXPECT_EQ(UsmWorkingSize({1001, 1000}, 40.0F), (BoxSize{1000, 999}));
    EXPECT_EQ(UsmWorkingSize({2480, 3508}, 250.0F), (BoxSize{707, 1000}));
    EXPECT_EQ(UsmWorkingSize({2480, 3508}, 39.9F), (BoxSize{1240, 1754}));
}

TEST(UsmWorkingSize, RadiusTwentyHalvesFrom2001On) {
    EXPECT_EQ(UsmWorkingSize({2000, 2000}, 20.0F), (BoxSize{2000, 2000}));
    EXPECT_EQ(UsmWorkingSize({2001, 2000}, 20.0F), (BoxSize{1000, 1000}));
    EXPECT_EQ(UsmWorkingSize({2000, 2001}, 20.0F), (BoxSize{1000, 1000}));
    EXPECT_EQ(UsmWorkingSize({2001, 2001}, 19.9F), (BoxSize{2001, 2001}));
}

TEST(UsmWorkingSize, AThinPictureKeepsAPixel) {
    EXPECT_EQ(UsmWorkingSize({40000, 6}, 40.0F), (BoxSize{1000, 1}));
    EXPECT_EQ(UsmWorkingSize({6, 40000}, 250.0F), (BoxSize{1, 1000}));
}

TEST(UnsharpMask, RadiusFortyOn900By700BlursAtFullSize) {
    ExpectBlurAtFullSize(test::Noise(900, 700, 8), 40.0F);
}

TEST(UnsharpMask, RadiusTwentyOn2000By2000BlursAtFullSize) {
    ExpectBlurAtFullSize(test::Smooth(2000, 2000, 8), 20.0F);
}

TEST(UnsharpMask, ALargeRadiusBlursAReducedCopy) {
    const CDibImage page = test::Noise(2100, 40, 8);
    for (const float radius : {20.0F, 40.0F}) {
        const BoxSize working = UsmWorkingSize({2100, 40}, radius);
        EXPECT_EQ(working, radius < 30 ? (BoxSize{1050, 20}) : (BoxSize{1000, 19}));
        CDibImage blurred = page;
        ASSERT_EQ(ResizeToLinear(blurred, working.width, working.height), 1);
        ASSERT_EQ(GaussianBlurInPlace(ViewOf(blurred),
                                      static_cast<float>(working.width) * radius / 2100.0F),
                  1);
        ASSERT_EQ(ResizeToLinear(blurred, 2100, 40), 1);
        CDibImage image = page;
        EXPECT_EQ(UnsharpMask(image, 1, radius, 1, 1, /*blurOnly=*/true), 1);
        test::ExpectSamePixels(image, blurred);
        image = page;
        EXPECT_EQ(UnsharpMask(image, 60, radius, 0, 1, /*blurOnly=*/false), 1);
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 2100; ++x)
                ASSERT_EQ(image.GetBits(y)[x],
                          Sharpened(page.GetBits(y)[x], blurred.GetBits(y)[x], 60, 0));
    }
}

TEST(UnsharpMask, ThinPicturesOfMoreThan32767PixelsAreWhole) {
    for (const float radius : {1.0F, 25.0F, 60.0F}) {
        CDibImage wide = test::Filled(33001, 6, 24, 90), tall = test::Filled(6, 33001, 8, 90);
        EXPECT_EQ(UnsharpMask(wide, 100, radius, 0, 1, /*blurOnly=*/true), 1);
        EXPECT_EQ(UnsharpMask(tall, 100, radius, 0, 1, /*blurOnly=*/true), 1);
        test::ExpectSamePixels(wide, test::Filled(33001, 6, 24, 90));
        test::ExpectSamePixels(tall, test::Filled(6, 33001, 8, 90));
    }
}

TEST(UnsharpMask, KeepsAlphaAndResolution) {
    for (const float radius : {1.0F, 50.0F}) {
        CDibImage image = test::Noise(1200, 8, 24);
        image.SetXDpi(300);
        ASSERT_TRUE(image.CreateAlpha());
        image.GetAlpha()[7] = 3;
        EXPECT_EQ(UnsharpMask(image, 100, radius, 0, 1, /*blurOnly=*/true), 1);
        EXPECT_EQ(image.GetXDpi(), 300);
        ASSERT_NE(image.GetAlpha(), nullptr);
        EXPECT_EQ(image.GetAlpha()[7], 3);
    }
}

TEST(UnsharpMask, WithoutMemoryThePixelsStayOrAreThoseOfWholeRounds) {
    for (const auto& [width, radius] : {std::pair{60, 2.0F}, {1100, 45.0F}}) {
        const CDibImage page = test::Noise(width, 12, 24);
        std::vector<CDibImage> rounds = {page};
        for (int times = 1; times <= 2; ++times) {
            rounds.push_back(page);
            ASSERT_EQ(UnsharpMask(rounds.back(), 90, radius, 3, times, /*blurOnly=*/false), 1);
        }
        for (const bool onlyOne : {false, true}) {
            const int failures = test::RunWithScarceMemory(
                page, onlyOne,
                [r = radius](CDibImage& image) {
                    return UnsharpMask(image, 90, r, 3, 2, /*blurOnly=*/false);
                },
                [&](const CDibImage& image, int result, bool failed) {
                    const auto same = [&](const CDibImage& other) {
                        for (int y = 0; y < image.GetHeight(); ++y)
                            if (!std::equal(image.GetBits(y), image.GetBits(y) + width * 3,
                                            other.GetBits(y)))
                                return false;
                        return true;
                    };
                    if (!failed)
                        EXPECT_TRUE(same(rounds[2]));
                    else if (result == 0)
                        EXPECT_TRUE(same(rounds[0]));
                    else
                        EXPECT_TRUE(same(rounds[1]) || same(rounds[2]));
                });
            EXPECT_GT(failures, 6);
        }
    }
}

TEST(UnsharpMask, ThreadsDoNotChangeTheBytes) {
    for (const float radius : {3.0F, 60.0F}) {
        std::vector<CDibImage> results;
        for (const int threads : {1, 2, 7}) {
            const test::Threads guard(threads);
            CDibImage image = test::Noise(1203, 61, 24);
            UnsharpMask(image, 120, radius, 3, 1, /*blurOnly=*/false);
            results.push_back(image);
        }
        test::ExpectSamePixels(results[1], results[0]);
        test::ExpectSamePixels(results[2], results[0]);
    }
}

}  // namespace
}  // namespace velloran

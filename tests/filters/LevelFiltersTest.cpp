#include "filters/LevelFilters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "filters/GaussianBlur.h"
#include "filters/KernelDepth.h"
#include "filters/KernelFilters.h"
#include "filters/PlainPlanes.h"
#include "filters/ScarceMemory.h"
#include "support/Images.h"
#include "support/Threads.h"

namespace velloran {
namespace {

struct Kernel {
    int size;
    std::vector<int> weights;
    int divisor;
};

Kernel Around(int a, int b, int c, int divisor) {
    return {3, {a, b, a, b, c, b, a, b, a}, divisor};
}

const Kernel kSharpen[] = {
    Around(0, -20, 180, 100),
    Around(0, -40, 260, 100),
    Around(0, -60, 340, 100),
    Around(0, -80, 420, 100),
    Around(0, -1, 5, 1),
    Around(-30, -100, 620, 100),
    Around(-50, -100, 700, 100),
    Around(-70, -100, 780, 100),
    Around(-1, -1, 9, 1),
    {5,
     {0,  -1, -1, -1, 0,  -1, -1, -2, -1, -1, -1, -2, 25,
      -2, -1, -1, -1, -2, -1, -1, 0,  -1, -1, -1, 0},
     1},
    {5,
     {-1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 25,
      -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1},
     1},
    {5,
     {0,  -1, -2, -1, 0,  -1, -3, -4, -3, -1, -2, -4, 45,
      -4, -2, -1, -3, -4, -3, -1, 0,  -1, -2, -1, 0},
     1},
};

const Kernel kBlur[] = {Around(1, 1, 26, 34), Around(1, 1, 15, 23), Around(1, 2, 4, 16),
                        Around(1, 1, 5, 13), Around(1, 1, 1, 9)};

test::PlainPlane Convolved(const test::PlainPlane& source, const Kernel& kernel) {
    test::PlainPlane result = source;
    const int reach = kernel.size / 2;
    for (int y = 0; y < source.height; ++y)
        for (int x = 0; x < source.width; ++x) {
            int sum = 0;
            for (int j = 0; j < kernel.size; ++j)
                for (int i = 0; i < kernel.size; ++i)
                    sum += kernel.weights[static_cast<std::size_t>(j * kernel.size + i)] *
                           source.Clamped(x + i - reach, y + j - reach);
            const double quotient = std::floor(static_cast<double>(sum) / kernel.divisor + 0.5);
            result.At(x, y) = static_cast<int>(std::clamp(quotient, 0.0, 255.0));
        }
    return result;
}

void ExpectConvolved(const CDibImage& actual, const CDibImage& source, const Kernel& kernel) {
    const std::vector<test::PlainPlane> planes = test::PlanesOf(source),
                                        results = test::PlanesOf(actual);
    ASSERT_EQ(results.size(), planes.size());
    for (std::size_t c = 0; c < planes.size(); ++c)
        EXPECT_EQ(results[c].samples, Convolved(planes[c], kernel).samples);
}

TEST(SharpenLevel, EveryLevelIsItsKernel) {
    for (int level = 1; level <= 12; ++level)
        for (const int bpp : {8, 24})
            for (const CDibImage& page :
                 {test::Noise(6, 6, bpp), test::Noise(17, 9, bpp), test::Smooth(83, 40, bpp)}) {
                SCOPED_TRACE(level);
                CDibImage image = page;
                EXPECT_EQ(SharpenLevel(image, level), 1);
                ExpectConvolved(image, page, kSharpen[level - 1]);
            }
}

/// Sides of 5 and less are refused, which the limits' own tests show.
bool IsFiltered(const CDibImage& page) {
    return page.GetWidth() > 5 && page.GetHeight() > 5;
}

TEST(SharpenLevel, EveryPictureOfSixPixelsAndMoreIsItsKernel) {
    test::ForEachPicture([](const CDibImage& page, int number) {
        if (!IsFiltered(page))
            return;
        const int level = 1 + number / 2 % 12;
        CDibImage image = page;
        EXPECT_EQ(SharpenLevel(image, level), 1);
        ExpectConvolved(image, page, kSharpen[level - 1]);
    });
}

TEST(BlurLevel, EveryPictureOfSixPixelsAndMoreIsItsKernel) {
    test::ForEachPicture([](const CDibImage& page, int number) {
        if (!IsFiltered(page))
            return;
        const int level = 1 + number / 2 % 5;
        CDibImage image = page;
        EXPECT_EQ(BlurLevel(image, level), 1);
        ExpectConvolved(image, page, kBlur[level - 1]);
    });
}

TEST(SharpenLevel, EveryKernelKeepsAnEvenTone) {
    for (const Kernel& kernel : kSharpen) {
        int sum = 0;
        for (const int weight : kernel.weights)
            sum += weight;
        EXPECT_EQ(sum, kernel.divisor);
    }
    for (int level = 1; level <= 12; ++level) {
        CDibImage image = test::Filled(9, 9, 24, 77);
        EXPECT_EQ(SharpenLevel(image, level), 1);
        test::ExpectSamePixels(image, test::Filled(9, 9, 24, 77));
    }
}

TEST(BlurLevel, TheFirstFiveLevelsAreTheirKernels) {
    for (int level = 1; level <= 5; ++level)
        for (const int bpp : {8, 24})
            for (const CDibImage& page : {test::Noise(6, 6, bpp), test::Smooth(83, 40, bpp)}) {
                CDibImage image = page;
                EXPECT_EQ(BlurLevel(image, level), 1);
                ExpectConvolved(image, page, kBlur[level - 1]);
            }
}

TEST(BlurLevel, TheLastFiveLevelsAreFiveTapsOfAGaussian) {
    const float sigmas[] = {1.0F, 1.25F, 1.5F, 1.75F, 2.0F};
    for (int level = 6; level <= 10; ++level)
        for (const int bpp : {8, 24}) {
            const CDibImage page = test::Noise(37, 23, bpp);
            CDibImage image = page, expected = page;
            EXPECT_EQ(BlurLevel(image, level), 1);
            EXPECT_EQ(SeparableFilter(ViewOf(expected), MakeFiveTaps(sigmas[level - 6])), 1);
            test::ExpectSamePixels(image, expected);
        }
}

TEST(LevelFilters, OtherLevelsAndEmptyImagesAreRefused) {
    constexpr int kLeast = std::numeric_limits<int>::min(), kMost = std::numeric_limits<int>::max();
    const CDibImage page = test::Noise(20, 20, 4);
    for (const int level : {kLeast, -1, 0, 13, kMost}) {
        CDibImage image = page;
        EXPECT_EQ(SharpenLevel(image, level), 0);
        test::ExpectSamePixels(image, page);
    }
    for (const int level : {kLeast, -1, 0, 11, kMost}) {
        CDibImage image = page;
        EXPECT_EQ(BlurLevel(image, level), 0);
        test::ExpectSamePixels(image, page);
    }
    CDibImage empty;
    EXPECT_EQ(SharpenLevel(empty, 1), 0);
    EXPECT_EQ(SharpenLevel(empty, 10), 0);
    EXPECT_EQ(BlurLevel(empty, 1), 0);
    EXPECT_EQ(BlurLevel(empty, 6), 0);
}

TEST(LevelFilters, AnImageOfFiveByFivePassesTheFirstCheckAndNotTheFilters) {
    CDibImage color = test::Noise(5, 5, 4), gray = color;
    EXPECT_EQ(SharpenLevel(color, 1), 0);
    EXPECT_EQ(color.GetBpp(), 8);  // its depth changed
    EXPECT_EQ(SharpenLevel(gray, 10), 0);
    EXPECT_EQ(gray.GetBpp(), 4);
    for (int level = 1; level <= 10; ++level) {
        CDibImage image = test::Noise(5, 5, 24);
        EXPECT_EQ(BlurLevel(image, level), 0);
        test::ExpectSamePixels(image, test::Noise(5, 5, 24));
    }
}

TEST(LevelFilters, SidesAtAndBelowTheLimits) {
    for (int level = 1; level <= 12; ++level)
        for (const auto& [width, height] : {std::pair{4, 40}, {40, 4}, {5, 40}, {40, 5}, {6, 6}}) {
            CDibImage image = test::Noise(width, height, 24);
            const CDibImage before = image;
            const bool runs = width >= 6 && height >= 6;
            EXPECT_EQ(SharpenLevel(image, level), runs ? 1 : 0);
            if (!runs)
                test::ExpectSamePixels(image, before);
            if (level > 10)
                continue;
            image = before;
            EXPECT_EQ(BlurLevel(image, level), runs ? 1 : 0);
            if (!runs)
                test::ExpectSamePixels(image, before);
        }
    CDibImage small = test::Noise(4, 40, 4);
    EXPECT_EQ(SharpenLevel(small, 1), 0);
    EXPECT_EQ(small.GetBpp(), 4);  // below the first check nothing is changed
}

CDibImage WithPalette(int bpp, const std::vector<test::Rgb>& entries) {
    CDibImage image = test::Noise(12, 12, bpp);
    test::SetPalette(image, entries);
    for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 12; ++x)
            test::SetIndex(image, x, y, (x + y) % static_cast<int>(entries.size()));
    return image;
}

struct DepthCase {
    const char* name;
    CDibImage image;
    int kernelDepth, usualDepth;
};

std::vector<DepthCase> DepthCases() {
    return {
        {"color", test::Noise(12, 12, 24), 24, 24},
        {"gray", test::Noise(12, 12, 8), 8, 8},
        {"8 bits of colors", WithPalette(8, {{255, 0, 0}, {0, 0, 255}}), 24, 24},
        {"8 bits of grays out of order", WithPalette(8, {{200, 200, 200}, {10, 10, 10}}), 24, 8},
        {"4 bits of grays", test::Noise(12, 12, 4), 8, 8},
        {"4 bits of colors", WithPalette(4, {{255, 0, 0}, {0, 0, 255}}), 8, 24},
        {"1 bit", test::Noise(12, 12, 1), 8, 8},
        {"1 bit of colors", WithPalette(1, {{255, 0, 0}, {0, 0, 255}}), 8, 24},
    };
}

TEST(LevelFilters, SmallKernelsMakeLittleDepthsGrayAndPalettesOf8BitsColor) {
    for (const DepthCase& c : DepthCases()) {
        SCOPED_TRACE(c.name);
        for (int level = 1; level <= 9; ++level) {
            CDibImage image = c.image;
            EXPECT_EQ(SharpenLevel(image, level), 1);
            EXPECT_EQ(image.GetBpp(), c.kernelDepth);
        }
        for (int level = 1; level <= 5; ++level) {
            CDibImage image = c.image;
            EXPECT_EQ(BlurLevel(image, level), 1);
            EXPECT_EQ(image.GetBpp(), c.kernelDepth);
        }
    }
}

TEST(LevelFilters, LargeKernelsNormaliseAsTheToneStepsDo) {
    for (const DepthCase& c : DepthCases()) {
        SCOPED_TRACE(c.name);
        for (int level = 10; level <= 12; ++level) {
            CDibImage image = c.image;
            EXPECT_EQ(SharpenLevel(image, level), 1);
            EXPECT_EQ(image.GetBpp(), c.usualDepth);
        }
        for (int level = 6; level <= 10; ++level) {
            CDibImage image = c.image;
            EXPECT_EQ(BlurLevel(image, level), 1);
            EXPECT_EQ(image.GetBpp(), c.usualDepth);
        }
    }
}

TEST(KernelDepth, ColoredLittleDepthsBecomeTheirLuma) {
    CDibImage image = WithPalette(4, {{255, 0, 0}, {255, 255, 255}, {0, 0, 0}});
    EXPECT_EQ(EnsureKernelDepth(image), 1);
    EXPECT_EQ(test::IndexAt(image, 0, 0), 306 * 255 >> 10);
    EXPECT_EQ(test::IndexAt(image, 1, 0), 255);
    EXPECT_EQ(test::IndexAt(image, 2, 0), 0);
    CDibImage empty;
    EXPECT_EQ(EnsureKernelDepth(empty), 0);
}

TEST(SharpenLevel, ABlackAndWhitePageComesOutOf8BitsAndTwoValued) {
    // The kernel's sums of black and white lie outside 0..255 or on its ends: a white pixel among
    // whites is 255, any other is more; a black one 0 or less.
    const CDibImage page = test::Noise(30, 30, 1);
    CDibImage image = page;
    EXPECT_EQ(SharpenLevel(image, 1), 1);
    ASSERT_EQ(image.GetBpp(), 8);
    EXPECT_TRUE(image.IsGrayScale());
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 30; ++x)
            ASSERT_EQ(test::IndexAt(image, x, y), test::IndexAt(page, x, y) * 255);
}

TEST(BlurLevel, ABlackAndWhitePageTakesGrays) {
    CDibImage image = test::Noise(30, 30, 1);
    EXPECT_EQ(BlurLevel(image, 5), 1);
    ASSERT_EQ(image.GetBpp(), 8);
    int grays = 0;
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 30; ++x)
            grays += test::IndexAt(image, x, y) % 255 != 0 ? 1 : 0;
    EXPECT_GT(grays, 800);
}

TEST(Filter3x3, RefusesLittleDepthsSmallSidesAndDivisorsBelowOne) {
    CDibImage little = test::Noise(20, 20, 4);
    EXPECT_EQ(Filter3x3(little, 1, 1, 1, 9), 0);
    CDibImage image = test::Noise(20, 20, 8);
    EXPECT_EQ(Filter3x3(image, 1, 1, 1, 0), 0);
    EXPECT_EQ(Filter3x3(image, 1, 1, 1, -9), 0);
    test::ExpectSamePixels(image, test::Noise(20, 20, 8));
    CDibImage empty;
    EXPECT_EQ(Filter3x3(empty, 1, 1, 1, 9), 0);
}

TEST(Filter3x3, TakesTheLargestWeights) {
    constexpr int kMost = std::numeric_limits<int>::max();
    CDibImage image = test::Filled(8, 8, 8, 200);
    EXPECT_EQ(Filter3x3(image, 0, 0, kMost, kMost), 1);
    test::ExpectSamePixels(image, test::Filled(8, 8, 8, 200));
    EXPECT_EQ(Filter3x3(image, kMost, kMost, kMost, 1), 1);
    test::ExpectSamePixels(image, test::Filled(8, 8, 8, 255));
    EXPECT_EQ(Filter3x3(image, std::numeric_limits<int>::min(), 0, 0, 1), 1);
    test::ExpectSamePixels(image, test::Filled(8, 8, 8, 0));
}

TEST(LevelFilters, WithoutMemoryThePixelsStayOrAreWhole) {
    const CDibImage page = test::Noise(40, 30, 24);
    using Filter = int (*)(CDibImage&, int);
    for (const auto& [filter, level] : {std::pair<Filter, int>{SharpenLevel, 6},
                                        {SharpenLevel, 12},
                                        {BlurLevel, 3},
                                        {BlurLevel, 8}}) {
        CDibImage whole = page;
        ASSERT_EQ(filter(whole, level), 1);
        for (const bool onlyOne : {false, true}) {
            const int failures = test::RunWithScarceMemory(
                page, onlyOne, [&](CDibImage& image) { return filter(image, level); },
                [&](const CDibImage& image, int result, bool failed) {
                    EXPECT_TRUE(failed || result == 1);
                    test::ExpectSamePixels(image, result == 1 ? whole : page);
                });
            EXPECT_GT(failures, 2);
        }
    }
}

TEST(Filter5x5, WithoutRoomForTheBorderedCopyTheChannelsRunInTurn) {
    const CDibImage page = test::Noise(40, 30, 24);
    CDibImage whole = page;
    ASSERT_EQ(SharpenLevel(whole, 12), 1);
    int saved = 0;
    test::RunWithScarceMemory(
        page, /*onlyOne=*/true, [](CDibImage& image) { return SharpenLevel(image, 12); },
        [&](const CDibImage& image, int result, bool failed) {
            saved += failed && result == 1 ? 1 : 0;
            test::ExpectSamePixels(image, result == 1 ? whole : page);
        });
    EXPECT_GE(saved, 1);
}

TEST(LevelFilters, PagesOfMoreThan32767PixelsAreWhole) {
    const CDibImage page = test::Noise(33001, 6, 24);
    CDibImage image = page;
    EXPECT_EQ(SharpenLevel(image, 9), 1);
    ExpectConvolved(image, page, kSharpen[8]);
}

TEST(LevelFilters, ThreadsDoNotChangeTheBytes) {
    for (const int level : {6, 10}) {
        std::vector<CDibImage> results;
        for (const int threads : {1, 2, 7}) {
            const test::Threads guard(threads);
            CDibImage image = test::Noise(333, 201, 24);
            SharpenLevel(image, level);
            BlurLevel(image, level);
            results.push_back(image);
        }
        test::ExpectSamePixels(results[1], results[0]);
        test::ExpectSamePixels(results[2], results[0]);
    }
}

}  // namespace
}  // namespace velloran

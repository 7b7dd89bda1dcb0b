#include "filters/SurfaceBlur.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "filters/PlainPlanes.h"
#include "filters/ScarceMemory.h"
#include "support/Images.h"
#include "support/Threads.h"

namespace velloran {
namespace {

constexpr int kWeighted = 0, kGuided = 1, kGaussian = 2, kMean = 3;

CDibImage Blurred(const CDibImage& image, int radius, int threshold, int times, int algorithm) {
    CDibImage blurred = image;
    EXPECT_NE(SurfaceBlur(blurred, radius, threshold, times, algorithm), 0);
    return blurred;
}

/// A name, a radius and the algorithm: all the forms that there are.
struct FormCase {
    const char* name;
    int radius, algorithm;
};
void PrintTo(const FormCase& c, std::ostream* out) {
    *out << c.name;
}
constexpr FormCase kForms[] = {{"Direct", 4, kWeighted},
                               {"Histogram", 9, kWeighted},
                               {"Guided", 5, kGuided},
                               {"SelectiveGaussian", 6, kGaussian},
                               {"SelectiveMean", 5, kMean}};

class SurfaceBlurEachForm : public testing::TestWithParam<FormCase> {};
INSTANTIATE_TEST_SUITE_P(Forms, SurfaceBlurEachForm, testing::ValuesIn(kForms),
                         [](const auto& form) { return form.param.name; });

TEST_P(SurfaceBlurEachForm, LeavesAUniformImage) {
    for (const int bpp : {8, 24})
        for (const int level : {0, 1, 77, 254, 255})
            for (const int threshold : {2, 3, 20, 50}) {
                const CDibImage image = test::Filled(23, 19, bpp, static_cast<std::uint8_t>(level));
                test::ExpectSamePixels(
                    Blurred(image, GetParam().radius, threshold, 3, GetParam().algorithm), image);
            }
}

TEST_P(SurfaceBlurEachForm, KeepsASampleWithoutANeighbourNearIt) {
    if (GetParam().algorithm == kGuided)
        GTEST_SKIP() << "weighs all neighbours";
    CDibImage image = test::Filled(21, 21, 8, 10);
    image.GetBits(10)[10] = 200;
    test::ExpectSamePixels(Blurred(image, GetParam().radius, 50, 2, GetParam().algorithm), image);
}

TEST_P(SurfaceBlurEachForm, TakesMoreThanThreeTimesForThree) {
    const CDibImage image = test::Noise(24, 20, 24);
    const auto& [name, radius, algorithm] = GetParam();
    const CDibImage thrice = Blurred(image, radius, 50, 3, algorithm);
    test::ExpectSamePixels(Blurred(image, radius, 50, 4, algorithm), thrice);
    test::ExpectSamePixels(Blurred(image, radius, 50, INT_MAX, algorithm), thrice);
    EXPECT_NE(test::PlanesOf(Blurred(image, radius, 50, 2, algorithm))[0].samples,
              test::PlanesOf(thrice)[0].samples);
}

TEST_P(SurfaceBlurEachForm, GivesTheSameBytesForAnyNumberOfThreads) {
    for (const int bpp : {8, 24}) {
        const CDibImage image = test::Noise(301, 223, bpp);
        std::vector<CDibImage> results;
        for (const int count : {1, 2, 7}) {
            const test::Threads threads(count);
            results.push_back(Blurred(image, GetParam().radius, 40, 2, GetParam().algorithm));
        }
        test::ExpectSamePixels(results[1], results[0]);
        test::ExpectSamePixels(results[2], results[0]);
    }
}

TEST_P(SurfaceBlurEachForm, DoesNotTouchRowPadding) {
    CDibImage image = test::Noise(5, 9, 8);
    for (int y = 0; y < 9; ++y)
        for (int i = 5; i < 8; ++i)
            image.GetBits(y)[i] = 99;
    EXPECT_NE(SurfaceBlur(image, GetParam().radius, 50, 1, GetParam().algorithm), 0);
    for (int y = 0; y < 9; ++y)
        for (int i = 5; i < 8; ++i)
            EXPECT_EQ(image.GetBits(y)[i], 99);
}

TEST_P(SurfaceBlurEachForm, WithoutMemoryThePixelsStayAndOnlyGuidedAndGaussianSayZero) {
    const auto& [name, radius, algorithm] = GetParam();
    for (const int bpp : {8, 24}) {
        const CDibImage image = test::Noise(19, 14, bpp);
        const CDibImage expected = Blurred(image, radius, 50, 1, algorithm);
        const int failures = test::RunWithScarceMemory(
            image, /*onlyOne=*/false,
            [&](CDibImage& page) { return SurfaceBlur(page, radius, 50, 1, algorithm); },
            [&](const CDibImage& page, int result, bool failed) {
                test::ExpectSamePixels(page, failed ? image : expected);
                const bool saysZero = algorithm == kGuided || algorithm == kGaussian;
                EXPECT_EQ(result != 0, !(failed && saysZero));
            });
        EXPECT_GT(failures, 0);
    }
}

TEST_P(SurfaceBlurEachForm, RunsOnImagesNarrowerThanTheRadius) {
    for (const auto& [width, height] : {std::pair{3, 40}, {40, 3}, {4, 4}}) {
        const CDibImage image = test::Noise(width, height, 24);
        const CDibImage blurred = Blurred(image, 15, 50, 3, GetParam().algorithm);
        EXPECT_EQ(blurred.GetWidth(), width);
        for (const test::PlainPlane& plane : test::PlanesOf(blurred))
            EXPECT_EQ(plane.samples.size(), static_cast<std::size_t>(width * height));
    }
}

TEST_P(SurfaceBlurEachForm, NormalisesTheDepthFirst) {
    const auto& [name, radius, algorithm] = GetParam();
    CDibImage bilevel = test::Noise(20, 20, 1);
    EXPECT_NE(SurfaceBlur(bilevel, radius, 50, 1, algorithm), 0);
    EXPECT_EQ(bilevel.GetBpp(), 8);
    CDibImage nibbles = test::Noise(20, 20, 4);
    EXPECT_NE(SurfaceBlur(nibbles, radius, 50, 1, algorithm), 0);
    EXPECT_EQ(nibbles.GetBpp(), 8);
    CDibImage palette = test::Noise(20, 20, 8);
    palette.GetPalette()[200].red = 0;
    palette.GetBits(0)[0] = 200;
    CDibImage color = palette;
    color.IncreaseBpp24();
    EXPECT_NE(SurfaceBlur(palette, radius, 50, 1, algorithm), 0);
    test::ExpectSamePixels(palette, Blurred(color, radius, 50, 1, algorithm));
}

TEST(SurfaceBlur, RadiusFiveAndSixDifferAtTheBorderOnPurpose) {
    // The left column is told apart by repeating it or not: a ramp near the edge.
    CDibImage image = test::Filled(40, 40, 8, 100);
    for (int y = 0; y < 40; ++y)
        image.GetBits(y)[0] = 140;
    // With the edge repeated, the window of x = 0 has 6 columns of 140 and 5 of 100. At threshold
    // 50 a difference of 40 weighs 0.68: 100 + 40 * 6 / (6 + 5 * 0.68) = 125.5.
    const CDibImage repeated = Blurred(image, 5, 50, 1, kWeighted);
    EXPECT_EQ(test::IndexAt(repeated, 0, 20), 126);
    // Mirrored without repeating there is 1 column of 140 and 12 of 100: weights 2500 and 1700.
    // (140 * 2500 + 12 * 100 * 1700) / (2500 + 12 * 1700) = 104.4.
    const CDibImage mirrored = Blurred(image, 6, 50, 1, kWeighted);
    EXPECT_EQ(test::IndexAt(mirrored, 0, 20), 104);
}

TEST(SurfaceBlur, TheMirrorFoldsBackUntilItIsInsideANarrowPicture) {
    // Two columns, 100 and 120, in a window of 13: to the left -1 is the second column, -2 folds
    // to the first, -3 to the second and so on; to the right 2 is the first, 3 folds to the second.
    // At x = 0 these are 7 of 100 and 6 of 120, mean 109.2; at x = 1 6 and 7, mean 110.8.
    CDibImage image = test::Filled(2, 1, 8, 100);
    image.GetBits(0)[1] = 120;
    const CDibImage blurred = Blurred(image, 6, 50, 1, kMean);
    EXPECT_EQ(blurred.GetBits(0)[0], 109);
    EXPECT_EQ(blurred.GetBits(0)[1], 111);
}

TEST(SurfaceBlur, SelectiveGaussianOfRadiusOneHasOneTap) {
    for (const int bpp : {8, 24}) {
        const CDibImage image = test::Noise(31, 17, bpp);
        test::ExpectSamePixels(Blurred(image, 1, 50, 3, kGaussian), image);
    }
}

TEST(SurfaceBlur, AtThresholdFiftyTheWeightEndsAtADifferenceOf125) {
    // A black centre weighs 2500; its 168 neighbours weigh 2500 - 20 * 124 = 20 each where they
    // differ by 124, and nothing from 125 on. 168 * 20 * 124 / (2500 + 168 * 20) = 71.1.
    for (const auto& [difference, expected] : {std::pair{124, 71}, {125, 0}, {126, 0}}) {
        CDibImage image = test::Filled(40, 40, 8, static_cast<std::uint8_t>(difference));
        image.GetBits(20)[20] = 0;
        EXPECT_EQ(Blurred(image, 6, 50, 1, kWeighted).GetBits(20)[20], expected) << difference;
    }
}

TEST(SurfaceBlur, SelectiveGaussianTakesTheThresholdItself) {
    for (const int difference : {20, 21}) {
        CDibImage image = test::Filled(9, 1, 8, 100);
        image.GetBits(0)[4] = static_cast<std::uint8_t>(100 + difference);
        const bool isKept = Blurred(image, 4, 20, 1, kGaussian).GetBits(0)[4] == 100 + difference;
        EXPECT_EQ(isKept, difference == 21);
    }
}

TEST(SurfaceBlur, RefusesWhatItHasNoFormFor) {
    const CDibImage image = test::Noise(12, 12, 8);
    for (const int algorithm : {-1, 4, INT_MIN, INT_MAX}) {
        CDibImage page = image;
        EXPECT_EQ(SurfaceBlur(page, 4, 20, 1, algorithm), 0);
        test::ExpectSamePixels(page, image);
    }
    for (const int times : {0, -1, INT_MIN}) {
        CDibImage page = image;
        EXPECT_EQ(SurfaceBlur(page, 4, 20, times, kWeighted), 0);
        test::ExpectSamePixels(page, image);
    }
    CDibImage empty;
    for (int algorithm = 0; algorithm < 4; ++algorithm)
        EXPECT_EQ(SurfaceBlur(empty, 4, 20, 1, algorithm), 0);
}

TEST(SurfaceBlur, GuidedFilterRefusesSidesBelowThree) {
    for (const auto& [width, height] : {std::pair{2, 3}, {3, 2}, {1, 1}}) {
        CDibImage page = test::Noise(width, height, 8);
        EXPECT_EQ(SurfaceBlur(page, 1, 20, 1, kGuided), 0);
        test::ExpectSamePixels(page, test::Noise(width, height, 8));
    }
    CDibImage page = test::Noise(3, 3, 8);
    EXPECT_NE(SurfaceBlur(page, 1, 20, 1, kGuided), 0);
}

TEST(SurfaceBlur, LimitsRadiusAndThreshold) {
    const CDibImage image = test::Noise(33, 20, 8);
    for (int algorithm = 0; algorithm < 4; ++algorithm)
        for (const auto& [low, high] : {std::pair{INT_MIN, INT_MAX}, {0, 16}, {-5, 100}}) {
            test::ExpectSamePixels(Blurred(image, low, 20, 1, algorithm),
                                   Blurred(image, 1, 20, 1, algorithm));
            test::ExpectSamePixels(Blurred(image, high, 20, 1, algorithm),
                                   Blurred(image, 15, 20, 1, algorithm));
        }
    for (int algorithm = 0; algorithm < 4; ++algorithm)
        for (const auto& [low, high] : {std::pair{INT_MIN, INT_MAX}, {1, 51}}) {
            test::ExpectSamePixels(Blurred(image, 8, low, 1, algorithm),
                                   Blurred(image, 8, 2, 1, algorithm));
            test::ExpectSamePixels(Blurred(image, 8, high, 1, algorithm),
                                   Blurred(image, 8, 50, 1, algorithm));
        }
}

TEST(SurfaceBlur, FlattensAScreenAndKeepsALine) {
    // A screen of 200 and 230 in a chessboard, and a black line of three columns.
    CDibImage image = test::Filled(60, 60, 8, 0);
    for (int y = 0; y < 60; ++y)
        for (int x = 0; x < 60; ++x)
            image.GetBits(y)[x] =
                static_cast<std::uint8_t>(x >= 30 && x < 33 ? 20 : ((x + y) % 2 == 0 ? 200 : 230));
    for (const FormCase& form : kForms) {
        SCOPED_TRACE(form.name);
        const CDibImage blurred = Blurred(image, form.radius, 40, 3, form.algorithm);
        const int darker = test::IndexAt(blurred, 15, 30), lighter = test::IndexAt(blurred, 16, 30);
        EXPECT_LE(std::abs(darker - lighter), 6);
        EXPECT_LE(test::IndexAt(blurred, 31, 30), darker - 100);
    }
}

}  // namespace
}  // namespace velloran

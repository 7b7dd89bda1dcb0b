#include "filters/GaussianBlur.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

#include "filters/PlainPlanes.h"
#include "filters/ScarceMemory.h"
#include "support/Images.h"
#include "support/Threads.h"

namespace velloran {
namespace {

using Taps = std::vector<std::int32_t>;

TEST(GaussianKernel, FiveTapsAreThousandthsOfTheWhole) {
    struct Case {
        float sigma;
        Taps taps;
        int sum;
    };
    for (const Case& c :
         {Case{1.0F, {54, 244, 402, 244, 54}, 998}, Case{1.25F, {92, 241, 332, 241, 92}, 998},
          Case{1.5F, {120, 233, 292, 233, 120}, 998}, Case{1.75F, {139, 227, 267, 227, 139}, 999},
          Case{2.0F, {152, 221, 251, 221, 152}, 997}}) {
        const GaussianKernel kernel = MakeFiveTaps(c.sigma);
        EXPECT_EQ(kernel.taps, c.taps);
        EXPECT_EQ(kernel.sum, c.sum);
    }
}

TEST(GaussianKernel, AVerySmallSigmaGivesOneTap) {
    const GaussianKernel kernel = MakeGaussianKernel(0.1F);
    ASSERT_EQ(kernel.taps.size(), 1U);
    EXPECT_EQ(kernel.sum, kernel.taps[0]);
    EXPECT_GT(kernel.sum, 0);
}

TEST(GaussianKernel, CountsTheCentreAndOneSideOnly) {
    // Of sigma 1 the tail at 4 (0.00034 of 1.75) is the first below a thousandth. In doubles:
    // 1 + 0.60653 + 0.13534 + 0.01111 = 1.75298.
    const GaussianKernel kernel = MakeGaussianKernel(1.0F);
    EXPECT_EQ(kernel.taps, (Taps{6, 77, 346, 570, 346, 77, 6}));
    EXPECT_EQ(kernel.sum, 1428);
}

TEST(GaussianKernel, FallsFromTheCentreAndIsSymmetric) {
    for (const float sigma : {0.3F, 0.7F, 2.5F, 5.0F, 20.0F, 40.0F, 100.0F}) {
        const GaussianKernel kernel = MakeGaussianKernel(sigma);
        const std::size_t count = kernel.taps.size();
        ASSERT_EQ(count % 2, 1U);
        for (std::size_t i = 0; i < count / 2; ++i) {
            EXPECT_EQ(kernel.taps[i], kernel.taps[count - 1 - i]);
            EXPECT_LE(kernel.taps[i], kernel.taps[i + 1]);
        }
        EXPECT_EQ(kernel.sum, std::accumulate(kernel.taps.begin(), kernel.taps.end(), 0));
        EXPECT_GE(kernel.taps[0], 1);  // a thousandth and more
    }
}

TEST(GaussianKernel, ReachesAtMost400Samples) {
    // At 400 the weight of sigma 250 is 0.278 of 279, just below a thousandth.
    EXPECT_EQ(MakeGaussianKernel(250.0F).taps.size(), 799U);
    EXPECT_EQ(MakeGaussianKernel(260.0F).taps.size(), 801U);
    EXPECT_EQ(MakeGaussianKernel(1e6F).taps.size(), 801U);
    EXPECT_LT(MakeGaussianKernel(100.0F).taps.size(), 801U);
}

int Folded(int index, int size) {
    while (index < 0 || index >= size)
        index = index < 0 ? -1 - index : 2 * size - 1 - index;
    return index;
}

/// Down the columns, rounded to whole levels, and along the rows.
void FilterPlainly(test::PlainPlane& plane, const GaussianKernel& kernel) {
    const int reach = static_cast<int>(kernel.taps.size() / 2);
    for (const bool alongRows : {false, true}) {
        const test::PlainPlane source = plane;
        for (int y = 0; y < plane.height; ++y)
            for (int x = 0; x < plane.width; ++x) {
                double sum = 0;
                for (int k = -reach; k <= reach; ++k)
                    sum += kernel.taps[static_cast<std::size_t>(k + reach)] *
                           (alongRows ? source.At(Folded(x + k, plane.width), y)
                                      : source.At(x, Folded(y + k, plane.height)));
                plane.At(x, y) = static_cast<int>(std::floor(sum / kernel.sum + 0.5));
            }
    }
}

TEST(GaussianBlur, EqualsThePlainFilterOnEverySize) {
    for (const int bpp : {8, 24})
        for (const float sigma : {0.1F, 1.0F, 3.3F, 30.0F})
            for (const int width : {1, 2, 5, 17, 130})
                for (const int height : {1, 3, 16, 70}) {
                    CDibImage image = test::Noise(width, height, bpp);
                    std::vector<test::PlainPlane> expected = test::PlanesOf(image);
                    for (test::PlainPlane& plane : expected)
                        FilterPlainly(plane, MakeGaussianKernel(sigma));
                    EXPECT_EQ(GaussianBlurInPlace(ViewOf(image), sigma), 1);
                    const std::vector<test::PlainPlane> actual = test::PlanesOf(image);
                    for (std::size_t c = 0; c < actual.size(); ++c)
                        ASSERT_EQ(actual[c].samples, expected[c].samples)
                            << width << " x " << height << " sigma " << sigma;
                }
}

TEST(GaussianBlur, EqualsThePlainFilterOnEveryPicture) {
    test::ForEachPicture([](const CDibImage& page, int number) {
        const float sigmas[] = {0.1F, 0.5F, 0.9F, 1.6F, 2.0F, 4.4F, 11.0F};
        const float sigma = sigmas[number % 7];
        CDibImage image = page;
        EXPECT_EQ(GaussianBlurInPlace(ViewOf(image), sigma), 1);
        test::ExpectSamePixels(image, test::WithPlanes(page, [=](test::PlainPlane plane) {
                                   FilterPlainly(plane, MakeGaussianKernel(sigma));
                                   return plane;
                               }));
    });
}

TEST(GaussianBlur, TheFiveTapsEqualThePlainFilterOnEveryPicture) {
    test::ForEachPicture([](const CDibImage& page, int number) {
        const float sigmas[] = {1.0F, 1.25F, 1.5F, 1.75F, 2.0F};
        const GaussianKernel kernel = MakeFiveTaps(sigmas[number % 5]);
        CDibImage image = page;
        EXPECT_EQ(SeparableFilter(ViewOf(image), kernel), 1);
        test::ExpectSamePixels(image, test::WithPlanes(page, [&](test::PlainPlane plane) {
                                   FilterPlainly(plane, kernel);
                                   return plane;
                               }));
    });
}

TEST(GaussianBlur, MixesFilteredAndOldSamples) {
    CDibImage image = test::Noise(90, 40, 24), blurred = image, mixed = image;
    GaussianBlurInPlace(ViewOf(blurred), 2.0F);
    EXPECT_EQ(GaussianBlurInPlace(ViewOf(mixed), 2.0F,
                                  [](const std::uint8_t* filtered, int count, std::uint8_t* row) {
                                      for (int i = 0; i < count; ++i)
                                          row[i] = static_cast<std::uint8_t>(row[i] ^ filtered[i]);
                                  }),
              1);
    for (int y = 0; y < 40; ++y)
        for (int i = 0; i < 270; ++i)
            ASSERT_EQ(mixed.GetBits(y)[i], image.GetBits(y)[i] ^ blurred.GetBits(y)[i]);
}

TEST(GaussianBlur, OfNothingIsRefused) {
    EXPECT_EQ(GaussianBlurInPlace(PlaneView{}, 1.0F), 0);
}

TEST(GaussianBlur, WithoutMemoryThePixelsStay) {
    const CDibImage page = test::Noise(70, 50, 24);
    CDibImage blurred = page;
    GaussianBlurInPlace(ViewOf(blurred), 2.0F);
    for (const bool onlyOne : {false, true}) {
        const int failures = test::RunWithScarceMemory(
            page, onlyOne,
            [](CDibImage& image) { return GaussianBlurInPlace(ViewOf(image), 2.0F); },
            [&](const CDibImage& image, int result, bool failed) {
                EXPECT_TRUE(failed || result == 1);
                test::ExpectSamePixels(image, result == 1 ? blurred : page);
            });
        EXPECT_GT(failures, 3);
    }
}

TEST(GaussianBlur, ThreadsDoNotChangeTheBytes) {
    std::vector<CDibImage> results;
    for (const int threads : {1, 2, 7}) {
        const test::Threads guard(threads);
        CDibImage image = test::Noise(333, 201, 24);
        GaussianBlurInPlace(ViewOf(image), 4.0F);
        results.push_back(image);
    }
    test::ExpectSamePixels(results[1], results[0]);
    test::ExpectSamePixels(results[2], results[0]);
}

}  // namespace
}  // namespace velloran

#include "filters/Resample.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "filters/ScarceMemory.h"
#include "imaging/Resize.h"
#include "support/Images.h"
#include "support/Threads.h"

namespace velloran {
namespace {

using PlaneResizer = void (*)(ConstPlaneView, PlaneView);

CDibImage Resized(CDibImage page, int width, int height, PlaneResizer resize) {
    CDibImage result = test::Filled(width, height, page.GetBpp(), 0);
    resize(ViewOf(page), ViewOf(result));
    return result;
}

/// The same pixels, whatever their depth.
void ExpectSameColors(const CDibImage& actual, const CDibImage& expected) {
    ASSERT_EQ(actual.GetWidth(), expected.GetWidth());
    ASSERT_EQ(actual.GetHeight(), expected.GetHeight());
    for (int y = 0; y < actual.GetHeight(); ++y)
        for (int x = 0; x < actual.GetWidth(); ++x)
            ASSERT_EQ(test::PixelAt(actual, x, y), test::PixelAt(expected, x, y));
}

TEST(ResizeTo, EnlargesAndStretchesByLanczosAndReducesByArea) {
    for (const int bpp : {8, 24}) {
        const CDibImage page = test::Noise(40, 30, bpp);
        struct Case {
            int width, height;
            PlaneResizer resize;
        };
        for (const Case& c :
             {Case{60, 45, ResizeLanczos}, Case{41, 31, ResizeLanczos}, Case{20, 15, ResizeArea},
              Case{39, 29, ResizeArea}, Case{1, 1, ResizeArea}, Case{40, 15, ResizeLanczos},
              Case{20, 30, ResizeLanczos}}) {
            CDibImage image = page;
            EXPECT_EQ(ResizeTo(image, c.width, c.height), 1);
            test::ExpectSamePixels(image, Resized(page, c.width, c.height, c.resize));
        }
    }
}

TEST(ResizedCopy, IsWhatResizeToMakesAndLeavesTheImage) {
    for (const int bpp : {8, 24})
        for (const auto& [width, height] : {std::pair{13, 9}, {60, 50}, {60, 10}, {40, 30}}) {
            const CDibImage page = test::Noise(40, 30, bpp);
            CDibImage resized = page;
            ASSERT_EQ(ResizeTo(resized, width, height), 1);
            test::ExpectSamePixels(ResizedCopy(page, width, height), resized);
            test::ExpectSamePixels(page, test::Noise(40, 30, bpp));
        }
}

TEST(ResizedCopy, RefusesOtherImagesAndSides) {
    EXPECT_FALSE(ResizedCopy(CDibImage(), 5, 5).IsValid());
    EXPECT_FALSE(ResizedCopy(test::Noise(40, 30, 24), 0, 5).IsValid());
    EXPECT_FALSE(ResizedCopy(test::Noise(40, 30, 1), 5, 5).IsValid());
    EXPECT_FALSE(ResizedCopy(test::Noise(40, 30, 4), 5, 5).IsValid());
}

TEST(ResizeTo, ATargetLargerOneWayAndSmallerTheOtherTakesLanczos) {
    const CDibImage page = test::Noise(40, 30, 24);
    for (const auto& [width, height] : {std::pair{60, 10}, {10, 60}}) {
        CDibImage image = page;
        EXPECT_EQ(ResizeTo(image, width, height), 1);
        test::ExpectSamePixels(image, Resized(page, width, height, ResizeLanczos));
    }
}

TEST(ResizeToLinear, IsLinearBothWays) {
    for (const int bpp : {8, 24}) {
        const CDibImage page = test::Noise(40, 30, bpp);
        for (const auto& [width, height] : {std::pair{60, 45}, {20, 15}, {60, 10}}) {
            CDibImage image = page;
            EXPECT_EQ(ResizeToLinear(image, width, height), 1);
            test::ExpectSamePixels(image, Resized(page, width, height, ResizeLinear));
        }
    }
}

TEST(Resampling, TheEqualSizeIsDoneAtOnce) {
    for (const int bpp : {1, 4, 8, 24}) {
        CDibImage image = test::Noise(20, 10, bpp);
        EXPECT_EQ(ResizeTo(image, 20, 10), 1);
        EXPECT_EQ(ResizeToLinear(image, 20, 10), 1);
        EXPECT_EQ(ReduceBilevelAware(image, 20, 10), 1);
        test::ExpectSamePixels(image, test::Noise(20, 10, bpp));
    }
}

TEST(Resampling, TargetsBelowOneAndTooLargeAreRefused) {
    constexpr int kLeast = std::numeric_limits<int>::min(), kMost = std::numeric_limits<int>::max();
    for (const auto& [width, height] :
         {std::pair{0, 5}, {5, 0}, {-1, 5}, {kLeast, kLeast}, {kMost, kMost}, {kMost, 5}})
        for (const int bpp : {8, 24}) {
            const CDibImage page = test::Noise(20, 10, bpp);
            CDibImage image = page;
            EXPECT_EQ(ResizeTo(image, width, height), 0);
            EXPECT_EQ(ResizeToLinear(image, width, height), 0);
            EXPECT_EQ(ReduceBilevelAware(image, width, height), 0);
            test::ExpectSamePixels(image, page);
        }
    CDibImage empty;
    EXPECT_EQ(ResizeTo(empty, 5, 5), 0);
    EXPECT_EQ(ResizeToLinear(empty, 5, 5), 0);
    EXPECT_EQ(ReduceBilevelAware(empty, 5, 5), 0);
}

TEST(ResizeTo, AHalvedBilevelPageStaysBilevel) {
    // 2 x 2 pixels each: a half and more of white is white.
    CDibImage image = test::Filled(34, 12, 1, 0);
    for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 34; ++x)
            test::SetIndex(image, x, y, (x / 2 + y / 2 * 17) % 5 > (y % 2) * 2 + x % 2 ? 1 : 0);
    CDibImage expected = test::Filled(17, 6, 1, 0);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 17; ++x)
            test::SetIndex(expected, x, y, (x + y * 17) % 5 >= 2 ? 1 : 0);
    EXPECT_EQ(ResizeTo(image, 17, 6), 1);
    test::ExpectSamePixels(image, expected);
}

TEST(ResizeTo, AnEnlargedBilevelPageBecomesGray) {
    CDibImage image = test::Noise(20, 10, 1);
    EXPECT_EQ(ResizeTo(image, 40, 20), 1);
    EXPECT_EQ(image.GetBpp(), 8);
    EXPECT_TRUE(image.IsGrayScale());
}

TEST(ResizeTo, KeepsBitsOfLittleDepthsWhereTheyShrinkAndItIsAsked) {
    const CDibImage page = test::Noise(20, 10, 4);
    CDibImage kept = page, normalised = page, enlarged = page;
    EXPECT_EQ(ResizeTo(kept, 10, 5, /*keepBits=*/true), 1);
    EXPECT_EQ(kept.GetBpp(), 4);
    EXPECT_EQ(ResizeTo(normalised, 10, 5), 1);
    EXPECT_EQ(normalised.GetBpp(), 8);
    EXPECT_EQ(ResizeTo(enlarged, 40, 20, /*keepBits=*/true), 1);
    EXPECT_EQ(enlarged.GetBpp(), 8);
}

TEST(ResizeTo, PalettesBecomeGrayOrColorFirst) {
    CDibImage gray = test::Noise(20, 10, 8), color = gray;
    gray.GetPalette()[7] = {9, 9, 9, 0};
    color.GetPalette()[7] = {0, 0, 200, 0};
    EXPECT_EQ(ResizeTo(gray, 10, 5), 1);
    EXPECT_EQ(gray.GetBpp(), 8);
    EXPECT_TRUE(gray.IsGrayScale());
    EXPECT_EQ(ResizeTo(color, 10, 5, /*keepBits=*/true), 1);
    EXPECT_EQ(color.GetBpp(), 24);
}

TEST(ReduceBilevelAware, LittleDepthsTakeTheEntryNearestToTheMean) {
    CDibImage image = test::Filled(4, 4, 4, 0);
    std::vector<test::Rgb> entries(16);
    entries[1] = {200, 0, 0};
    entries[2] = {0, 0, 200};
    entries[3] = {255, 255, 255};
    test::SetPalette(image, entries);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x)
            test::SetIndex(image, x, y, x < 2 ? 1 : (y < 2 ? 2 : (x + y) % 2 == 0 ? 3 : 2));
    for (const bool keepBits : {false, true}) {
        CDibImage reduced = image;
        EXPECT_EQ(ReduceBilevelAware(reduced, 2, 2, keepBits), 1);
        ASSERT_EQ(reduced.GetBpp(), 4);
        EXPECT_EQ(test::PixelAt(reduced, 0, 0), (test::Rgb{200, 0, 0}));
        EXPECT_EQ(test::PixelAt(reduced, 0, 1), (test::Rgb{200, 0, 0}));
        EXPECT_EQ(test::PixelAt(reduced, 1, 0), (test::Rgb{0, 0, 200}));
        // The mean of two blues and two whites is (128, 128, 228): 183 from blue, 182 from white.
        EXPECT_EQ(test::PixelAt(reduced, 1, 1), (test::Rgb{255, 255, 255}));
    }
}

/// Each pixel of `colors` as the index of the entry that is nearest to it, the first of equals.
CDibImage InPaletteOf(const CDibImage& page, const CDibImage& colors) {
    CDibImage result = test::Filled(colors.GetWidth(), colors.GetHeight(), page.GetBpp(), 0);
    std::copy_n(page.GetPalette(), page.GetPaletteCount(), result.GetPalette());
    for (int y = 0; y < colors.GetHeight(); ++y)
        for (int x = 0; x < colors.GetWidth(); ++x) {
            const test::Rgb color = test::PixelAt(colors, x, y);
            int nearest = 0, least = std::numeric_limits<int>::max();
            for (int i = 0; i < page.GetPaletteCount(); ++i) {
                const int red = color.red - page.GetPalette()[i].red,
                          green = color.green - page.GetPalette()[i].green,
                          blue = color.blue - page.GetPalette()[i].blue;
                const int distance = red * red + green * green + blue * blue;
                if (distance < least) {
                    least = distance;
                    nearest = i;
                }
            }
            test::SetIndex(result, x, y, nearest);
        }
    return result;
}

TEST(ReduceBilevelAware, LittleDepthsOfEverySizeTakeTheEntryNearestToTheMean) {
    int number = 0;
    for (const int bpp : {1, 4})
        for (int height = 2; height <= 17; ++height)
            for (int width = 2; width <= 17; ++width, ++number) {
                CDibImage page = test::Noise(width, height, bpp, static_cast<unsigned>(number) + 1);
                if (number % 2 != 0)
                    test::SetPalette(page, {{240, 20, 0}, {30, 60, 200}});
                CDibImage color = test::Filled(width, height, 24, 0);
                for (int y = 0; y < height; ++y)
                    for (int x = 0; x < width; ++x)
                        test::SetPixel(color, x, y, test::PixelAt(page, x, y));
                for (const auto& [w, h] :
                     {std::pair{width / 2, height / 2}, {width - 1, height - 1}, {1, 1}}) {
                    CDibImage reduced = page;
                    EXPECT_EQ(ReduceBilevelAware(reduced, w, h), 1);
                    test::ExpectSamePixels(reduced,
                                           InPaletteOf(page, Resized(color, w, h, ResizeArea)));
                }
            }
}

TEST(ResizeTo, AHalvedBilevelPageMayHaveItsWhiteFirst) {
    CDibImage page = test::Noise(34, 12, 1), inverse = page;
    test::SetPalette(inverse, {{255, 255, 255}, {0, 0, 0}});
    for (int y = 0; y < 12; ++y)
        for (int x = 0; x < 34; ++x)
            test::SetIndex(inverse, x, y, 1 - test::IndexAt(page, x, y));
    EXPECT_EQ(ResizeTo(page, 17, 6), 1);
    EXPECT_EQ(ResizeTo(inverse, 17, 6), 1);
    ASSERT_EQ(inverse.GetBpp(), 1);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 17; ++x)
            EXPECT_EQ(test::PixelAt(inverse, x, y), test::PixelAt(page, x, y));
}

TEST(ReduceBilevelAware, EnlargesLittleDepthsToo) {
    CDibImage image = test::Filled(2, 1, 1, 0);
    test::SetIndex(image, 1, 0, 1);
    EXPECT_EQ(ReduceBilevelAware(image, 8, 2), 1);
    ASSERT_EQ(image.GetBpp(), 1);
    for (int x = 0; x < 8; ++x)
        EXPECT_EQ(test::IndexAt(image, x, 1), x < 4 ? 0 : 1);
}

TEST(ReduceBilevelAware, OtherDepthsAreAveragedOrInterpolated) {
    for (const int bpp : {8, 24}) {
        const CDibImage page = test::Noise(20, 12, bpp);
        CDibImage smaller = page, larger = page;
        EXPECT_EQ(ReduceBilevelAware(smaller, 7, 5), 1);
        EXPECT_EQ(ReduceBilevelAware(larger, 30, 20), 1);
        test::ExpectSamePixels(smaller, Resized(page, 7, 5, ResizeArea));
        test::ExpectSamePixels(larger, Resized(page, 30, 20, ResizeLinear));
    }
}

TEST(Resampling, AlphaIsScaledAndResolutionStays) {
    for (const int bpp : {1, 8, 24})
        for (const auto& [width, height] : {std::pair{10, 5}, {40, 20}}) {
            CDibImage image = test::Noise(20, 10, bpp);
            image.SetXDpi(300);
            image.SetYDpi(200);
            ASSERT_TRUE(image.CreateAlpha());
            for (int i = 0; i < 200; ++i)
                image.GetAlpha()[i] = i % 20 < 10 ? 0 : 200;
            EXPECT_EQ(ResizeTo(image, width, height), 1);
            EXPECT_EQ(image.GetXDpi(), 300);
            EXPECT_EQ(image.GetYDpi(), 200);
            ASSERT_NE(image.GetAlpha(), nullptr);
            EXPECT_EQ(image.GetAlpha()[0], 0);
            EXPECT_EQ(image.GetAlpha()[width - 1], 200);
            EXPECT_EQ(image.GetAlpha()[width * height - 1], 200);
        }
}

TEST(Resampling, AlphaIsResizedTheSameWayAsThePixels) {
    const CDibImage alpha = test::Noise(20, 10, 8, 3);  // rows as they are stored
    for (const int bpp : {1, 4, 8, 24}) {
        CDibImage page = test::Noise(20, 10, bpp);
        ASSERT_TRUE(page.CreateAlpha());
        for (int y = 0; y < 10; ++y)
            std::copy_n(alpha.GetBits(y), 20, page.GetAlpha() + 20 * y);
        struct Case {
            int width, height;
            PlaneResizer resize;
        };
        for (const Case& c : {Case{7, 6, ResizeArea}, Case{31, 17, ResizeLanczos},
                              Case{31, 6, ResizeLanczos}, Case{10, 5, ResizeArea}}) {
            CDibImage image = page;
            EXPECT_EQ(ResizeTo(image, c.width, c.height), 1);
            const CDibImage expected = Resized(alpha, c.width, c.height, c.resize);
            ASSERT_NE(image.GetAlpha(), nullptr);
            for (int y = 0; y < c.height; ++y)
                for (int x = 0; x < c.width; ++x)
                    ASSERT_EQ(image.GetAlpha()[y * c.width + x], expected.GetBits(y)[x]);
        }
    }
}

TEST(Resampling, TheTransparentIndexOfALittleDepthStays) {
    CDibImage image = test::Noise(20, 10, 4);
    image.Fields().backgroundIndex = 3;
    EXPECT_EQ(ReduceBilevelAware(image, 10, 5), 1);
    EXPECT_EQ(image.Fields().backgroundIndex, 3);
}

TEST(Resampling, WithoutMemoryThePixelsStay) {
    struct Case {
        const char* name;
        int (*resize)(CDibImage& image, int width);
    };
    const Case cases[] = {
        {"ResizeTo", [](CDibImage& image, int width) { return ResizeTo(image, width, width / 2); }},
        {"ResizeTo with keepBits",
         [](CDibImage& image, int width) {
             return ResizeTo(image, width, width / 2, /*keepBits=*/true);
         }},
        {"ResizeToLinear",
         [](CDibImage& image, int width) { return ResizeToLinear(image, width, width / 2); }},
        {"ReduceBilevelAware",
         [](CDibImage& image, int width) { return ReduceBilevelAware(image, width, width / 2); }},
    };
    for (const Case& c : cases)
        for (const int bpp : {1, 4, 8, 24})
            for (const int width : {10, 40}) {
                SCOPED_TRACE(std::string(c.name) + ", " + std::to_string(bpp) + " bits");
                CDibImage page = test::Noise(20, 10, bpp);
                ASSERT_TRUE(page.CreateAlpha());
                CDibImage whole = page;
                ASSERT_EQ(c.resize(whole, width), 1);
                for (const bool onlyOne : {false, true}) {
                    const int failures = test::RunWithScarceMemory(
                        page, onlyOne, [&](CDibImage& image) { return c.resize(image, width); },
                        [&](const CDibImage& image, int result, bool failed) {
                            EXPECT_EQ(result, failed ? 0 : 1);
                            EXPECT_EQ(image.GetWidth(), failed ? 20 : width);
                            EXPECT_NE(image.GetAlpha(), nullptr);
                            ExpectSameColors(image, failed ? page : whole);
                        });
                    EXPECT_GT(failures, 3);
                }
            }
}

TEST(Resampling, PagesOfMoreThan32767PixelsAreWhole) {
    CDibImage wide = test::Filled(40001, 4, 24, 77), tall = test::Filled(3, 40001, 8, 77);
    EXPECT_EQ(ResizeTo(wide, 20000, 2), 1);
    test::ExpectSamePixels(wide, test::Filled(20000, 2, 24, 77));
    EXPECT_EQ(ResizeTo(tall, 5, 50001), 1);
    test::ExpectSamePixels(tall, test::Filled(5, 50001, 8, 77));
}

TEST(Resampling, ThreadsDoNotChangeTheBytes) {
    for (const int bpp : {1, 24}) {
        std::vector<CDibImage> results;
        for (const int threads : {1, 2, 7}) {
            const test::Threads guard(threads);
            CDibImage image = test::Noise(433, 301, bpp);
            ResizeTo(image, 231, 160);
            ResizeTo(image, 400, 301);
            results.push_back(image);
        }
        test::ExpectSamePixels(results[1], results[0]);
        test::ExpectSamePixels(results[2], results[0]);
    }
}

}  // namespace
}  // namespace velloran

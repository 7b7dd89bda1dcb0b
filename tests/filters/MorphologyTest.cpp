#include "filters/Morphology.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "filters/PlainPlanes.h"
#include "filters/ScarceMemory.h"
#include "support/Images.h"
#include "support/Threads.h"

namespace velloran {
namespace {

/// Pixels that a window looks at before and behind its own, both ways.
struct Reach {
    int before, behind;
};
constexpr Reach kReaches[] = {{1, 0}, {1, 1}, {2, 1}, {2, 2}};

/// Rows from the top of the picture.
int Extreme(const CDibImage& image, int x, int y, Reach reach, int channel, bool minimum) {
    int extreme = minimum ? 255 : 0;
    for (int j = y - reach.before; j <= y + reach.behind; ++j)
        for (int i = x - reach.before; i <= x + reach.behind; ++i) {
            const test::Rgb pixel = test::PixelAt(image, std::clamp(i, 0, image.GetWidth() - 1),
                                                  std::clamp(j, 0, image.GetHeight() - 1));
            const int sample = channel == 0 ? pixel.red : (channel == 1 ? pixel.green : pixel.blue);
            extreme = minimum ? std::min(extreme, sample) : std::max(extreme, sample);
        }
    return extreme;
}

void ExpectExtremes(const CDibImage& actual, const CDibImage& source, int level, bool minimum) {
    const Reach reach = kReaches[level - 1];
    for (int y = 0; y < source.GetHeight(); ++y)
        for (int x = 0; x < source.GetWidth(); ++x)
            ASSERT_EQ(test::PixelAt(actual, x, y),
                      (test::Rgb{Extreme(source, x, y, reach, 0, minimum),
                                 Extreme(source, x, y, reach, 1, minimum),
                                 Extreme(source, x, y, reach, 2, minimum)}))
                << "level " << level << " at " << x << ", " << y;
}

TEST(Morphology, EveryLevelTakesTheExtremeOfItsWindow) {
    for (int level = 1; level <= 4; ++level)
        for (const int bpp : {8, 24})
            for (const auto& [width, height] : {std::pair{6, 6}, {7, 17}, {40, 31}}) {
                const CDibImage page = test::Noise(width, height, bpp);
                CDibImage image = page;
                EXPECT_EQ(Darken(image, level), 1);
                ExpectExtremes(image, page, level, /*minimum=*/true);
                image = page;
                EXPECT_EQ(Lighten(image, level), 1);
                ExpectExtremes(image, page, level, /*minimum=*/false);
            }
}

TEST(Morphology, EveryPictureOfSixPixelsAndMoreTakesItsExtremes) {
    test::ForEachPicture([](const CDibImage& page, int number) {
        if (page.GetWidth() < 6 || page.GetHeight() < 6)
            return;
        const int level = 1 + number / 2 % 4;
        CDibImage dark = page, light = page;
        EXPECT_EQ(Darken(dark, level), 1);
        ExpectExtremes(dark, page, level, /*minimum=*/true);
        EXPECT_EQ(Lighten(light, level), 1);
        ExpectExtremes(light, page, level, /*minimum=*/false);
    });
}

/// Columns and rows of the black pixels that one black pixel at (10, 10) becomes.
TEST(Morphology, EvenWindowsLookUpAndLeft) {
    struct Case {
        int level, from, to;
    };
    for (const Case& c : {Case{1, 10, 11}, Case{2, 9, 11}, Case{3, 9, 12}, Case{4, 8, 12}}) {
        CDibImage image = test::Filled(20, 20, 8, 255);
        test::SetIndex(image, 10, 10, 0);
        EXPECT_EQ(Darken(image, c.level), 1);
        for (int y = 0; y < 20; ++y)
            for (int x = 0; x < 20; ++x) {
                const bool isBlack = x >= c.from && x <= c.to && y >= c.from && y <= c.to;
                ASSERT_EQ(test::IndexAt(image, x, y), isBlack ? 0 : 255)
                    << "level " << c.level << " at " << x << ", " << y;
            }
    }
}

TEST(Morphology, AnImageOfFiveByFiveIsUnchanged) {
    for (const auto& [width, height] : {std::pair{5, 5}, {5, 40}, {40, 5}})
        for (int level = 1; level <= 4; ++level) {
            CDibImage image = test::Noise(width, height, 4);
            EXPECT_EQ(Darken(image, level), 0);
            EXPECT_EQ(Lighten(image, level), 0);
            test::ExpectSamePixels(image, test::Noise(width, height, 4));
        }
}

TEST(Morphology, OtherLevelsAndEmptyImagesAreRefused) {
    for (const int level :
         {std::numeric_limits<int>::min(), -1, 0, 5, std::numeric_limits<int>::max()}) {
        CDibImage image = test::Noise(20, 20, 4);
        EXPECT_EQ(Darken(image, level), 0);
        EXPECT_EQ(Lighten(image, level), 0);
        test::ExpectSamePixels(image, test::Noise(20, 20, 4));
    }
    CDibImage empty;
    EXPECT_EQ(Darken(empty, 1), 0);
    EXPECT_EQ(Lighten(empty, 4), 0);
}

TEST(Morphology, AColorWindowMayGiveAColorThatItDidNotHold) {
    CDibImage image = test::Filled(8, 8, 24, 255);
    test::SetPixel(image, 3, 3, {255, 0, 0});
    test::SetPixel(image, 4, 3, {0, 255, 0});
    EXPECT_EQ(Darken(image, 1), 1);
    EXPECT_EQ(test::PixelAt(image, 4, 3), (test::Rgb{0, 0, 0}));
    EXPECT_EQ(test::PixelAt(image, 3, 3), (test::Rgb{255, 0, 0}));
    EXPECT_EQ(test::PixelAt(image, 5, 3), (test::Rgb{0, 255, 0}));
}

TEST(Morphology, LittleDepthsAreNormalisedFirst) {
    CDibImage bilevel = test::Noise(20, 20, 1), gray = test::Noise(20, 20, 4), color = gray;
    EXPECT_EQ(Darken(bilevel, 2), 1);
    EXPECT_EQ(bilevel.GetBpp(), 8);
    ExpectExtremes(bilevel, test::Noise(20, 20, 1), 2, /*minimum=*/true);
    EXPECT_EQ(Lighten(gray, 2), 1);
    EXPECT_EQ(gray.GetBpp(), 8);
    ExpectExtremes(gray, test::Noise(20, 20, 4), 2, /*minimum=*/false);
    test::SetPalette(color, {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}});
    const CDibImage before = color;
    EXPECT_EQ(Darken(color, 2), 1);
    EXPECT_EQ(color.GetBpp(), 24);
    ExpectExtremes(color, before, 2, /*minimum=*/true);
}

TEST(Morphology, KeepsAlphaAndResolution) {
    CDibImage image = test::Noise(20, 20, 24);
    image.SetXDpi(300);
    ASSERT_TRUE(image.CreateAlpha());
    image.GetAlpha()[7] = 3;
    EXPECT_EQ(Darken(image, 4), 1);
    EXPECT_EQ(image.GetXDpi(), 300);
    ASSERT_NE(image.GetAlpha(), nullptr);
    EXPECT_EQ(image.GetAlpha()[7], 3);
}

TEST(Morphology, WithoutMemoryThePixelsStay) {
    const CDibImage page = test::Noise(40, 30, 24);
    CDibImage dark = page;
    ASSERT_EQ(Darken(dark, 3), 1);
    for (const bool onlyOne : {false, true}) {
        const int failures = test::RunWithScarceMemory(
            page, onlyOne, [](CDibImage& image) { return Darken(image, 3); },
            [&](const CDibImage& image, int result, bool failed) {
                EXPECT_EQ(result, failed ? 0 : 1);
                test::ExpectSamePixels(image, failed ? page : dark);
            });
        EXPECT_GT(failures, 1);
    }
}

TEST(Morphology, ThreadsDoNotChangeTheBytes) {
    std::vector<CDibImage> results;
    for (const int threads : {1, 2, 7}) {
        const test::Threads guard(threads);
        CDibImage image = test::Noise(333, 201, 24);
        Darken(image, 3);
        Lighten(image, 4);
        results.push_back(image);
    }
    test::ExpectSamePixels(results[1], results[0]);
    test::ExpectSamePixels(results[2], results[0]);
}

}  // namespace
}  // namespace velloran

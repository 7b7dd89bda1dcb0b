#include "tone/IlluminationFit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "core/DibImage.h"
#include "support/Images.h"
#include "support/Threads.h"
#include "tone/RefusalSweep.h"
#include "tone/SmoothSurface.h"

namespace velloran {
namespace {

TEST(SmoothSurface, GivesAPolynomialOfItsOrderBack) {
    const auto truth = [](double x, double y) {
        return 120 + 40 * x - 25 * y + 30 * x * y - 20 * x * x + 15 * y * y * x -
               10 * y * y * y * y;
    };
    std::vector<SurfaceSample> samples;
    for (int j = 0; j <= 20; ++j)
        for (int i = 0; i <= 20; ++i)
            samples.push_back({i / 20.0, j / 20.0, truth(i / 20.0, j / 20.0)});
    const SmoothSurface surface(samples);
    for (int j = 0; j <= 10; ++j)
        for (int i = 0; i <= 10; ++i)
            EXPECT_NEAR(surface.At(i / 10.0, j / 10.0), truth(i / 10.0, j / 10.0), 1e-6);
    std::vector<std::uint8_t> row(11);
    surface.Row(0.3, 11, row.data());
    for (int i = 0; i <= 10; ++i)
        EXPECT_NEAR(row[static_cast<std::size_t>(i)], truth(i / 10.0, 0.3), 0.501);
}

TEST(SmoothSurface, FewSamplesGiveALowerOrderAndNoneWhite) {
    const SmoothSurface constant(std::vector<SurfaceSample>{{0.1, 0.2, 80}, {0.9, 0.5, 90}});
    EXPECT_NEAR(constant.At(0.7, 0.7), 85, 1e-9);
    EXPECT_EQ(SmoothSurface({}).At(0.5, 0.5), 255);
    std::uint8_t level = 0;
    constant.Row(0.0, 1, &level);
    EXPECT_EQ(level, 85);
}

TEST(SmoothSurface, DoesNotRunAwayWhereThereAreNoSamples) {
    std::vector<SurfaceSample> samples;  // a steep bow in one corner only
    for (int j = 0; j < 20; ++j)
        for (int i = 0; i < 20; ++i)
            samples.push_back({i / 100.0, j / 100.0, 100.0 + i * i / 4.0});
    const SmoothSurface surface(samples);
    for (const double at : {0.0, 0.5, 1.0}) {
        EXPECT_GE(surface.At(at, 1.0), 100.0);
        EXPECT_LE(surface.At(1.0, at), 100.0 + 19 * 19 / 4.0);
    }
}

int LightAt(int x, int y, int width, int height) {
    const double u = static_cast<double>(x) / width, v = static_cast<double>(y) / height;
    return static_cast<int>(230 - 90 * u * u - 30 * v + 20 * u * v);
}

bool IsStroke(int x, int y) {
    return x % 17 < 4 && y % 14 < 7 && (x / 17 + y / 14) % 5 != 0;
}

/// Paper in uneven light with text on it, and a dark picture in a corner.
CDibImage LitPage(int width, int height, int bpp) {
    CDibImage page = test::Filled(width, height, bpp, 0);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int light = LightAt(x, y, width, height);
            const bool isPicture = x < width / 4 && y < height / 4;
            const int level = isPicture ? 50 : (IsStroke(x, y) ? light / 5 : light);
            if (bpp == 24)
                test::SetPixel(page, x, y, {level, level * 9 / 10, level * 8 / 10});
            else
                test::SetIndex(page, x, y, level);
        }
    return page;
}

TEST(IlluminationFit, PaperComesOutEvenAndStrokesStay) {
    CDibImage page = LitPage(700, 500, 8);
    ASSERT_NE(IlluminationFit(page), 0);
    ASSERT_TRUE(page.IsGrayScale());
    for (int y = 0; y < 500; y += 3)
        for (int x = 0; x < 700; x += 3) {
            const int level = test::IndexAt(page, x, y);
            if (x < 700 / 4 && y < 500 / 4)
                ASSERT_LT(level, 90) << x << ", " << y;
            else if (IsStroke(x, y))
                ASSERT_LT(level, 70) << x << ", " << y;
            else
                ASSERT_GT(level, 244) << x << ", " << y;
        }
}

TEST(IlluminationFit, ColorPagesKeepTheirColorAndAllChannelsShareTheSurface) {
    const CDibImage before = LitPage(320, 260, 24);
    CDibImage page = before;
    ASSERT_NE(IlluminationFit(page), 0);
    ASSERT_EQ(page.GetBpp(), 24);
    int compared = 0;
    for (int y = 0; y < 260; y += 5)
        for (int x = 0; x < 320; x += 5) {
            const test::Rgb from = test::PixelAt(before, x, y), to = test::PixelAt(page, x, y);
            if (to.red == 255 || to.green == 255 || from.blue < 30)
                continue;
            // to / from is 255 / s for every channel, give or take the rounding.
            const double byGreen = 1.0 * to.green / from.green, byBlue = 1.0 * to.blue / from.blue;
            ASSERT_NEAR(byGreen, byBlue, 0.04);
            ++compared;
        }
    EXPECT_GT(compared, 50);
}

TEST(IlluminationFit, ASampleIsDividedByThePaperAround) {
    // Paper of 200: c becomes (c * 255 + 100) / 200.
    for (const auto& [ink, expected] : {std::pair{0, 0}, {20, 26}, {60, 77}, {100, 128}}) {
        CDibImage gray = test::Filled(60, 50, 8, 200), color = test::Filled(60, 50, 24, 200);
        for (int x = 20; x < 40; ++x)
            for (int y = 20; y < 23; ++y) {
                test::SetIndex(gray, x, y, ink);
                test::SetPixel(color, x, y, {ink, ink, 220});  // lighter than the paper in blue
            }
        ASSERT_NE(IlluminationFit(gray), 0);
        ASSERT_NE(IlluminationFit(color), 0);
        EXPECT_EQ(test::IndexAt(gray, 30, 21), expected);
        EXPECT_EQ(test::IndexAt(gray, 3, 3), 255);
        EXPECT_EQ(test::PixelAt(color, 30, 21), (test::Rgb{expected, expected, 255}));
    }
}

TEST(IlluminationFit, AFlatPageBecomesWhiteWhateverItsTone) {
    for (const int bpp : {8, 24})
        for (const int level : {1, 60, 200, 255}) {
            CDibImage page = test::Filled(40, 30, bpp, static_cast<std::uint8_t>(level));
            ASSERT_NE(IlluminationFit(page), 0);
            test::ExpectSamePixels(page, test::Filled(40, 30, bpp, 255));
        }
}

TEST(IlluminationFit, ABlackPageDividesByNothing) {
    CDibImage page = test::Filled(400, 300, 8, 0);
    ASSERT_NE(IlluminationFit(page), 0);
    test::ExpectSamePixels(page, test::Filled(400, 300, 8, 255));  // a surface of 0 is not above 0
}

TEST(IlluminationFit, SidesBelowTwoAndEmptyImagesAreRefused) {
    CDibImage empty;
    EXPECT_EQ(IlluminationFit(empty), 0);
    for (const auto& [width, height] : {std::pair{1, 40}, {40, 1}, {1, 1}}) {
        CDibImage page = test::Noise(width, height, 24);
        const CDibImage before = page;
        EXPECT_EQ(IlluminationFit(page), 0);
        test::ExpectSamePixels(page, before);
    }
}

TEST(IlluminationFit, SmallSizesSliversAndNoiseAreTaken) {
    for (const auto& [width, height] :
         {std::pair{2, 2}, {2, 3000}, {3000, 2}, {17, 5}, {299, 301}, {31, 640}})
        for (const int bpp : {1, 4, 8, 24}) {
            CDibImage page = test::Noise(width, height, bpp);
            EXPECT_NE(IlluminationFit(page), 0) << width << " x " << height << " x " << bpp;
            EXPECT_TRUE(page.GetBpp() == 24 || page.IsGrayScale());
        }
}

TEST(IlluminationFit, PalettePagesBecomeGrayAndResolutionsStay) {
    CDibImage page = test::Noise(60, 50, 8);
    test::SetPalette(page, {{200, 30, 60}, {250, 250, 200}});
    page.SetXDpi(300);
    page.SetYDpi(150);
    ASSERT_NE(IlluminationFit(page), 0);
    EXPECT_TRUE(page.IsGrayScale());
    EXPECT_EQ(page.GetXDpi(), 300);
    EXPECT_EQ(page.GetYDpi(), 150);
}

TEST(IlluminationFit, TheResultDoesNotHangOnTheNumberOfThreads) {
    CDibImage first;
    for (const int count : {1, 2, 7}) {
        const test::Threads threads(count);
        CDibImage page = LitPage(420, 333, 24);
        ASSERT_NE(IlluminationFit(page), 0);
        if (count == 1)
            first = page;
        test::ExpectSamePixels(page, first);
    }
}

TEST(IlluminationFit, WithoutMemoryThePixelsStay) {
    for (const int bpp : {8, 24}) {
        const CDibImage before = LitPage(310, 24, bpp);
        const int failed =
            test::SweepRefusals(before, [](CDibImage& page) { return IlluminationFit(page); });
        EXPECT_GT(failed, 1);
    }
}

}  // namespace
}  // namespace velloran

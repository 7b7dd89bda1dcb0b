#include "tone/Unshadow.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

#include "core/DibImage.h"
#include "support/Images.h"
#include "support/Threads.h"
#include "tone/PaperBlocks.h"
#include "tone/PlainPaper.h"
#include "tone/RefusalSweep.h"
#include "tone/ToneSteps.h"

namespace velloran {
namespace {

using test::PlainPlane;

/// Paper under uneven light with strokes and grain; channels differ.
CDibImage ShadowedPage(int width, int height, int bpp) {
    CDibImage page = test::Noise(width, height, bpp, 7);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width * bpp / 8; ++x) {
            std::uint8_t& sample = page.GetBits(y)[x];
            const int pixel = x / (bpp / 8), channel = x % (bpp / 8);
            const int light = 230 - 90 * pixel / width - 30 * y / height - 9 * channel;
            const bool isInk = pixel % 11 < 3 && y % 9 < 5 && (pixel / 11 + y / 9) % 3 != 0;
            sample = static_cast<std::uint8_t>((isInk ? light / 4 : light) + sample % 7);
        }
    return page;
}

PlainPlane PlainUnshadow(const PlainPlane& plane, int magnitude) {
    const int side = test::PlainSide(plane.width, plane.height);
    PlainPlane small(plane.width / side, plane.height / side);
    const auto pixels = static_cast<float>(side * side);
    for (int y = 0; y < small.height; ++y)
        for (int x = 0; x < small.width; ++x) {
            const test::PlainMoments m = test::MomentsOf(plane, side, x, y);
            const float mean = static_cast<float>(m.sum) / pixels;
            const float variance = std::fabs(static_cast<float>(m.squares) / pixels - mean * mean);
            const float k = static_cast<float>(magnitude) * 0.001F;
            const float estimate = ((std::sqrt(variance) / 128.0F - 1) * k + 1) * mean;
            small.At(x, y) = test::PlainByte(static_cast<double>(estimate + 0.5F));
        }
    const int black = test::PlainBlack(plane, side, 0.002);
    test::PlainSmooth(small, std::min(std::max(side - 4, 4), 6));
    const PlainPlane background = test::PlainEnlarged(small, plane.width, plane.height);
    PlainPlane out(plane.width, plane.height);
    for (int y = 0; y < plane.height; ++y)
        for (int x = 0; x < plane.width; ++x)
            out.At(x, y) =
                test::PlainStretch(plane.At(x, y), background.At(x, y), magnitude, black);
    return out;
}

void ExpectPlane(ConstPlaneView actual, const PlainPlane& expected, const char* name) {
    int shown = 0;
    for (int y = 0; y < expected.height && shown < 5; ++y)
        for (int x = 0; x < expected.width && shown < 5; ++x)
            if (const int got = actual.Row(y)[static_cast<std::size_t>(x)];
                got != expected.At(x, y)) {
                ADD_FAILURE() << name << " at " << x << ", " << y << ": " << got << " not "
                              << expected.At(x, y);
                ++shown;
            }
}

TEST(UnshadowPlane, StretchesEverySampleBetweenBlackAndThePaperOfItsBlock) {
    struct Size {
        int width, height;
    };
    // Whole blocks and rests; less than four blocks a side, which are not smoothed; a block side
    // of 8 on the long one.
    for (const Size size : {Size{70, 91}, Size{75, 50}, Size{8, 8}, Size{20, 100}, Size{2200, 33}})
        for (const int magnitude : {1, 20, 50, 300}) {
            CDibImage page = ShadowedPage(size.width, size.height, 8);
            const PlainPlane expected = PlainUnshadow(PlainPlane(TopDownViewOf(page)), magnitude);
            ASSERT_EQ(UnshadowPlane(TopDownViewOf(page), magnitude), 1);
            ExpectPlane(TopDownViewOf(page), expected, "plane");
        }
}

TEST(UnshadowPlane, EveryStrengthOfTheSliderIsItsOwn) {
    const CDibImage page = ShadowedPage(60, 44, 8);
    for (int magnitude = 1; magnitude <= 50; ++magnitude) {
        CDibImage image = page;
        const PlainPlane expected = PlainUnshadow(PlainPlane(TopDownViewOf(page)), magnitude);
        ASSERT_NE(Unshadow(image, magnitude), 0);
        ExpectPlane(TopDownViewOf(image), expected, "strength");
    }
}

TEST(UnshadowPlane, SmallSizesNoiseAndSmoothTonesFollowTheSameSteps) {
    for (int width = 7; width <= 17; ++width)
        for (const int height : {7, 8, 13, 17, 33})
            for (const CDibImage& picture :
                 {test::Noise(width, height, 8, 3), test::SmoothPicture(width, height, 8)}) {
                CDibImage page = picture;
                const PlainPlane expected = PlainUnshadow(PlainPlane(TopDownViewOf(page)), 20);
                ASSERT_EQ(UnshadowPlane(TopDownViewOf(page), 20), 1);
                ExpectPlane(TopDownViewOf(page), expected, "small");
            }
}

TEST(UnshadowPlane, APlaneWiderThanSixteenBitsHasBlocksToItsEnd) {
    CDibImage page = ShadowedPage(33500, 26, 8);
    const PlainPlane expected = PlainUnshadow(PlainPlane(TopDownViewOf(page)), 20);
    ASSERT_EQ(UnshadowPlane(TopDownViewOf(page), 20), 1);
    ExpectPlane(TopDownViewOf(page), expected, "wide");
}

TEST(PaperBlocks, HaveASideByTheLongerSideOfThePage) {
    struct Case {
        int longer, side;
    };
    for (const Case c : {Case{8, 7}, Case{2100, 7}, Case{2101, 8}, Case{2400, 8}, Case{2401, 9},
                         Case{3300, 11}, Case{3301, 12}, Case{3600, 12}, Case{40000, 12},
                         Case{std::numeric_limits<int>::max(), 12}}) {
        EXPECT_EQ(PaperBlockSide(c.longer, 8), c.side) << c.longer;
        EXPECT_EQ(PaperBlockSide(8, c.longer), c.side) << c.longer;
    }
}

TEST(PaperBlocks, BlackIsTheLevelThatItsShareOfWholeBlocksReachesAndAtLeastSeven) {
    // 49 by 49 are 2401 pixels, of which a share of 0.002 is 4 and one of 0.001 is 2.
    CDibImage page = test::Filled(52, 49, 8, 200);
    for (int y = 0; y < 49; ++y)
        for (int x = 49; x < 52; ++x)
            test::SetIndex(page, x, y, 20);  // beside the whole blocks
    for (int i = 0; i < 2; ++i) {
        test::SetIndex(page, i, 0, 30);
        test::SetIndex(page, i, 1, 40);
    }
    const PaperBlocks blocks = SumPaperBlocks(TopDownViewOf(page));
    ASSERT_EQ(blocks.side, 7);
    EXPECT_EQ(PaperBlackLevel(TopDownViewOf(page), blocks, 0.001), 30);
    EXPECT_EQ(PaperBlackLevel(TopDownViewOf(page), blocks, 0.002), 40);
    for (int i = 0; i < 5; ++i)
        test::SetIndex(page, i, 2, 3);
    EXPECT_EQ(PaperBlackLevel(TopDownViewOf(page), blocks, 0.002), 7);
}

TEST(UnshadowPlane, APlaneSmallerThanABlockIsRefused) {
    CDibImage page = test::Noise(6, 40, 8);
    const CDibImage before = page;
    EXPECT_EQ(UnshadowPlane(TopDownViewOf(page), 20), 0);
    test::ExpectSamePixels(page, before);
}

TEST(Unshadow, NegativeStrengthKeepsColorAndWorksOnEachChannelAlone) {
    CDibImage page = ShadowedPage(60, 47, 24);
    std::vector<PlainPlane> expected;
    for (int c = 0; c < 3; ++c) {
        PlainPlane plane(60, 47);
        for (int y = 0; y < 47; ++y)
            for (int x = 0; x < 60; ++x)
                plane.At(x, y) = TopDownViewOf(page).Row(y)[static_cast<std::size_t>(3 * x + c)];
        expected.push_back(PlainUnshadow(plane, 20));
    }
    ASSERT_NE(Unshadow(page, -20), 0);
    ASSERT_EQ(page.GetBpp(), 24);
    for (int y = 0; y < 47; ++y)
        for (int x = 0; x < 60; ++x)
            ASSERT_EQ(test::PixelAt(page, x, y),
                      (test::Rgb{expected[2].At(x, y), expected[1].At(x, y), expected[0].At(x, y)}))
                << x << ", " << y;
}

TEST(Unshadow, PositiveStrengthMakesAColorPageGray) {
    CDibImage page = ShadowedPage(60, 47, 24);
    ASSERT_NE(Unshadow(page, 20), 0);
    EXPECT_TRUE(page.IsGrayScale());
}

TEST(Unshadow, TurnsColorGrayByTheWeightsOfThePageAndThenUnshadowsThat) {
    CDibImage page = ShadowedPage(40, 40, 24);
    PlainPlane gray(40, 40);
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 40; ++x) {
            const test::Rgb c = test::PixelAt(page, x, y);
            gray.At(x, y) = static_cast<int>(
                std::floor(0.114 * c.blue + 0.587 * c.green + 0.299 * c.red + 0.5 + 1e-9));
        }
    ASSERT_NE(Unshadow(page, 35), 0);
    ExpectPlane(TopDownViewOf(page), PlainUnshadow(gray, 35), "gray");
}

TEST(Unshadow, AnEightBitGrayPageStaysGrayWithEitherSign) {
    for (const int strength : {20, -20}) {
        CDibImage page = ShadowedPage(50, 40, 8);
        const PlainPlane expected = PlainUnshadow(PlainPlane(TopDownViewOf(page)), 20);
        ASSERT_NE(Unshadow(page, strength), 0);
        ASSERT_TRUE(page.IsGrayScale());
        ExpectPlane(TopDownViewOf(page), expected, "gray");
    }
}

TEST(Unshadow, APalettePageBecomesColorOrGrayByTheSign) {
    for (const int bpp : {1, 4, 8}) {
        CDibImage page = test::Noise(20, 20, bpp);
        test::SetPalette(page, {{250, 240, 230}, {30, 20, 90}});
        CDibImage gray = page;
        ASSERT_NE(Unshadow(page, -5), 0);
        EXPECT_EQ(page.GetBpp(), 24);
        ASSERT_NE(Unshadow(gray, 5), 0);
        EXPECT_TRUE(gray.IsGrayScale());
    }
}

TEST(Unshadow, ABlackAndWhitePageComesOutBlackAndWhite) {
    CDibImage page = test::Filled(64, 64, 1, 255);
    for (int y = 20; y < 24; ++y)
        for (int x = 10; x < 50; ++x)
            test::SetIndex(page, x, y, 0);
    ASSERT_NE(Unshadow(page, 20), 0);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x)
            ASSERT_EQ(test::IndexAt(page, x, y), y >= 20 && y < 24 && x >= 10 && x < 50 ? 0 : 255);
}

TEST(Unshadow, ASideBelowEightIsLeftUntouched) {
    for (const auto& [width, height] : {std::pair{7, 200}, {200, 7}, {1, 1}}) {
        CDibImage page = test::Noise(width, height, 24);
        const CDibImage before = page;
        EXPECT_EQ(Unshadow(page, 20), 0);
        EXPECT_EQ(Unshadow(page, -20), 0);
        test::ExpectSamePixels(page, before);
    }
    CDibImage smallest = test::Noise(8, 8, 24);
    EXPECT_NE(Unshadow(smallest, 20), 0);
}

TEST(Unshadow, StrengthZeroAndAnEmptyImageAreRefused) {
    CDibImage page = test::Noise(20, 20, 24), empty;
    const CDibImage before = page;
    EXPECT_EQ(Unshadow(page, 0), 0);
    test::ExpectSamePixels(page, before);
    EXPECT_EQ(Unshadow(empty, 20), 0);
}

TEST(Unshadow, PaperBrighterThanItsBackgroundEverywhereBecomesPureWhite) {
    // Every sample of a flat page reaches its background less the strength.
    for (const int bpp : {8, 24})
        for (const int level : {0, 6, 7, 8, 130, 255}) {
            CDibImage page = test::Filled(40, 30, bpp, static_cast<std::uint8_t>(level));
            ASSERT_NE(Unshadow(page, -20), 0);
            test::ExpectSamePixels(page, test::Filled(40, 30, bpp, 255));
        }
}

TEST(Unshadow, AnyStrengthIsTakenAndBeyondTheLevelsAllIsWhite) {
    constexpr int kLowest = std::numeric_limits<int>::min();
    constexpr int kHighest = std::numeric_limits<int>::max();
    for (const int strength : {kLowest, kLowest + 1, -300, 300, kHighest}) {
        CDibImage page = test::Noise(30, 30, 8);
        ASSERT_NE(Unshadow(page, strength), 0);
        test::ExpectSamePixels(page, test::Filled(30, 30, 8, 255));
    }
}

TEST(Unshadow, TheResultDoesNotHangOnTheNumberOfThreads) {
    CDibImage first;
    for (const int count : {1, 2, 7}) {
        const test::Threads threads(count);
        CDibImage page = ShadowedPage(320, 233, 24);
        ASSERT_NE(Unshadow(page, -20), 0);
        if (count == 1)
            first = page;
        test::ExpectSamePixels(page, first);
    }
}

TEST(Unshadow, WithoutMemoryThePixelsStay) {
    for (const int bpp : {8, 24}) {
        const CDibImage before = ShadowedPage(40, 30, bpp);
        const int failed =
            test::SweepRefusals(before, [](CDibImage& page) { return Unshadow(page, -20); });
        EXPECT_GT(failed, 1);
    }
}

TEST(Unshadow, ShadowGoesStrokesStayAndARedSealKeepsItsColor) {
    // White paper that falls from 230 to 120, black strokes, and a red square on it.
    CDibImage page = test::Filled(240, 160, 24, 0);
    const auto light = [](int x) { return 230 - 110 * x / 240; };
    const auto isStroke = [](int x, int y) { return y % 16 < 3 && x % 20 < 13 && y < 100; };
    const auto isSeal = [](int x, int y) { return x >= 120 && x < 134 && y >= 120 && y < 134; };
    for (int y = 0; y < 160; ++y)
        for (int x = 0; x < 240; ++x) {
            const int level = light(x);
            const int dark = level / 6;
            test::SetPixel(page, x, y,
                           isStroke(x, y) ? test::Rgb{dark, dark, dark}
                           : isSeal(x, y) ? test::Rgb{level, dark, dark}
                                          : test::Rgb{level, level, level});
        }
    ASSERT_NE(Unshadow(page, -20), 0);
    for (int y = 0; y < 160; ++y)
        for (int x = 0; x < 240; ++x) {
            const test::Rgb c = test::PixelAt(page, x, y);
            if (isStroke(x, y)) {
                ASSERT_LT(c.green, 90) << x << ", " << y;
            } else if (isSeal(x, y)) {
                ASSERT_GT(c.red - c.green, 120) << x << ", " << y;
            } else {
                ASSERT_EQ(c, (test::Rgb{255, 255, 255})) << x << ", " << y;
            }
        }
}

}  // namespace
}  // namespace velloran

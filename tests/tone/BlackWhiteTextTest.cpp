#include "tone/BlackWhiteText.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "core/DibImage.h"
#include "support/Images.h"
#include "support/Threads.h"
#include "tone/PlainPaper.h"
#include "tone/RefusalSweep.h"
#include "tone/ToneSteps.h"

namespace velloran {
namespace {

using test::PlainPlane;

/// Text on paper in falling light; `paper` sets how light, `ink` how dark.
CDibImage TextPage(int width, int height, int paper, int ink, std::uint32_t seed = 3) {
    CDibImage page = test::Noise(width, height, 8, seed);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            std::uint8_t& sample = page.GetBits(y)[x];
            const bool isInk = x % 13 < 4 && y % 12 < 5 && (x / 13 + 2 * (y / 12)) % 4 != 0;
            const int level = isInk ? ink : paper - paper * x / (4 * width);
            sample = static_cast<std::uint8_t>(std::clamp(level + sample % 9 - 4, 0, 255));
        }
    return page;
}

std::vector<long> CountOf(const PlainPlane& plane) {
    std::vector<long> counts(256, 0);
    for (const int sample : plane.samples)
        ++counts[static_cast<std::size_t>(sample)];
    return counts;
}

PlainPlane PlainPaperOf(const PlainPlane& plane, int side) {
    PlainPlane small(plane.width / side, plane.height / side);
    std::vector<double> contrast;
    for (int y = 0; y < small.height; ++y)
        for (int x = 0; x < small.width; ++x) {
            const test::PlainMoments m = test::MomentsOf(plane, side, x, y);
            const double pixels = side * side;
            const int mean = std::min(static_cast<int>(m.sum / pixels + 0.5), 255);
            small.At(x, y) = mean;
            contrast.push_back(std::sqrt(std::fabs(m.squares / pixels - 1.0 * mean * mean)));
        }
    const double strongest = *std::ranges::max_element(contrast);
    for (std::size_t i = 0; i < contrast.size(); ++i) {
        const double t = strongest >= 0.0001 ? 1 - contrast[i] / strongest : 1;
        small.samples[i] = test::PlainByte(small.samples[i] - 0.25 * t * contrast[i] + 0.5);
    }
    return small;
}

int PlainInk(const std::vector<long>& background) {
    long dark = 0;
    for (std::size_t i = 10; i <= 126; ++i)
        dark += background[i];
    if (dark == 0)
        return 10;
    const long limit = std::max(static_cast<long>(static_cast<double>(dark) * 0.8), 5L);
    long sum = 0;
    int ink = 10;
    for (; ink < 111; ++ink)
        if ((sum += background[static_cast<std::size_t>(ink)]) >= limit)
            break;
    return ink;
}

int PlainPaperLevel(const std::vector<long>& result, double pixels) {
    const long limit = std::max(static_cast<long>(pixels * 0.85), 5L);
    long sum = 0;
    for (int level = 255;; --level)
        if ((sum += result[static_cast<std::size_t>(level)]) >= limit || level == 0)
            return level;
}

PlainPlane PlainBlackWhite(const PlainPlane& plane) {
    const int side = test::PlainSide(plane.width, plane.height);
    const int black = test::PlainBlack(plane, side, 0.001);
    PlainPlane small = PlainPaperOf(plane, side);
    test::PlainSmooth(small, 4.0);
    const PlainPlane background = test::PlainEnlarged(small, plane.width, plane.height);
    PlainPlane result(plane.width, plane.height);
    for (std::size_t i = 0; i < plane.samples.size(); ++i)
        result.samples[i] = test::PlainStretch(plane.samples[i], background.samples[i], 0, black);
    const int ink = PlainInk(CountOf(background));
    const int paper = PlainPaperLevel(CountOf(result), static_cast<double>(plane.samples.size()));
    for (std::size_t i = 0; i < plane.samples.size(); ++i) {
        const int v = background.samples[i], c = result.samples[i];
        const int w = v < paper ? static_cast<int>(v * 255.0 / paper + 0.5) : 255;
        int out = 255;
        if (c <= 230 && c < w) {
            const int d = w - ink;
            const int e = d == 0 ? 0 : static_cast<int>(std::trunc((c - ink) * 256.0 / d));
            out = e < 0 ? 0 : (e < 231 ? e : 255);
        }
        result.samples[i] = out;
    }
    return result;
}

void ExpectPlain(CDibImage page, const char* name) {
    const PlainPlane expected = PlainBlackWhite(PlainPlane(TopDownViewOf(page)));
    ASSERT_NE(BlackWhiteText(page, false), 0);
    const PlainPlane actual(TopDownViewOf(page));
    for (int y = 0; y < expected.height; ++y)
        for (int x = 0; x < expected.width; ++x)
            ASSERT_EQ(actual.At(x, y), expected.At(x, y)) << name << " at " << x << ", " << y;
}

TEST(BlackWhiteText, FollowsThePaperOfTheBlocksAndTheInkOfThePage) {
    ExpectPlain(TextPage(100, 91, 220, 30), "light");
    ExpectPlain(TextPage(91, 100, 120, 20), "dark");  // the background itself counts as dark
    ExpectPlain(TextPage(70, 70, 60, 5), "very dark");
    ExpectPlain(TextPage(8, 8, 200, 30), "smallest");
    ExpectPlain(TextPage(2200, 30, 200, 30), "long");
    ExpectPlain(test::Noise(90, 60, 8), "noise");
}

TEST(BlackWhiteText, SmallSizesNoiseAndSmoothTonesFollowTheSameSteps) {
    for (int width = 8; width <= 17; width += 3)
        for (const int height : {8, 9, 14, 17, 33}) {
            ExpectPlain(test::Noise(width, height, 8, 3), "noise");
            ExpectPlain(test::SmoothPicture(width, height, 8), "smooth");
        }
    ExpectPlain(test::SmoothPicture(400, 300, 8), "large");
    ExpectPlain(TextPage(33500, 26, 210, 30), "wide");
}

TEST(BlackWhiteText, APageWithoutDarkPaperKeepsTheFirstInkLevel) {
    // The spot is smaller than what its blocks are smoothed over: no background is as dark as 126.
    CDibImage page = test::Filled(210, 210, 8, 200);
    for (int y = 100; y < 108; ++y)
        for (int x = 100; x < 108; ++x)
            test::SetIndex(page, x, y, 40);
    const PlainPlane expected = PlainBlackWhite(PlainPlane(TopDownViewOf(page)));
    ASSERT_NE(BlackWhiteText(page, false), 0);
    for (int y = 0; y < 210; ++y)
        for (int x = 0; x < 210; ++x)
            ASSERT_EQ(test::IndexAt(page, x, y), expected.At(x, y));
    EXPECT_LT(test::IndexAt(page, 101, 101), 60);
    EXPECT_EQ(test::IndexAt(page, 10, 10), 255);
}

TEST(BlackWhiteText, ABackgroundIsDarkUpTo126) {
    // One block of 7 by 7, and its mean is all the background there is.
    const auto after = [](int dot, int paper) {
        CDibImage page = test::Filled(8, 8, 8, static_cast<std::uint8_t>(paper));
        test::SetIndex(page, 3, 3, dot);
        EXPECT_NE(BlackWhiteText(page, false), 0);
        EXPECT_EQ(test::IndexAt(page, 0, 0), 255);
        EXPECT_EQ(test::IndexAt(page, 7, 7), 255);
        return test::IndexAt(page, 3, 3);
    };
    // Mean (48 * 129 + 31) / 49 = 127, ink 10: 31 is stretched to 24 * 256 / 120 = 51, and that to
    // 41 * 256 / 117.
    EXPECT_EQ(after(31, 129), 89);
    // Mean (48 * 128 + 30) / 49 = 126 and all of it dark: the ink lies at the end, above the dot.
    EXPECT_EQ(after(30, 128), 0);
}

TEST(BlackWhiteText, FewDarkBackgroundsThatDoNotReachTheLimitPushInkToTheEnd) {
    // Two columns of blocks and one row: the sample of the first is 120, and less than five pixels
    // of the background lie at 10 to 126 only where the plane is as small as this.
    ExpectPlain(TextPage(14, 8, 135, 100), "few");
    ExpectPlain(test::Filled(8, 8, 8, 126), "all at 126");
}

TEST(BlackWhiteText, PagesOfOneToneBecomeWhite) {
    for (const int bpp : {8, 24})
        for (const int level : {0, 1, 7, 10, 126, 200, 255}) {
            CDibImage page = test::Filled(30, 40, bpp, static_cast<std::uint8_t>(level));
            ASSERT_NE(BlackWhiteText(page, true), 0);
            test::ExpectSamePixels(page, test::Filled(30, 40, bpp, 255));
        }
}

/// A light page with black strokes and a red square.
CDibImage SealedPage() {
    CDibImage page = test::Filled(240, 160, 24, 0);
    for (int y = 0; y < 160; ++y)
        for (int x = 0; x < 240; ++x) {
            const int level = 225 - x / 8;
            const bool isStroke = y % 16 < 3 && x % 20 < 13 && y < 100;
            const bool isSeal = x >= 120 && x < 134 && y >= 120 && y < 134;
            test::SetPixel(page, x, y,
                           isStroke ? test::Rgb{30, 30, 30}
                           : isSeal ? test::Rgb{level - 10, 40, 45}
                                    : test::Rgb{level, level, level});
        }
    return page;
}

TEST(BlackWhiteText, TheColorFormKeepsARedSealBesideBlackStrokesOnWhite) {
    CDibImage page = SealedPage();
    ASSERT_NE(BlackWhiteText(page, true), 0);
    ASSERT_EQ(page.GetBpp(), 24);
    for (int y = 0; y < 160; ++y)
        for (int x = 0; x < 240; ++x) {
            const test::Rgb c = test::PixelAt(page, x, y);
            if (y % 16 < 3 && x % 20 < 13 && y < 100) {
                ASSERT_LT(std::max({c.red, c.green, c.blue}), 90) << x << ", " << y;
            } else if (x >= 120 && x < 134 && y >= 120 && y < 134) {
                ASSERT_GT(c.red - c.green, 120) << x << ", " << y;
            } else {
                ASSERT_EQ(c, (test::Rgb{255, 255, 255})) << x << ", " << y;
            }
        }
}

TEST(BlackWhiteText, TheGrayFormLosesAllColor) {
    CDibImage page = SealedPage();
    ASSERT_NE(BlackWhiteText(page, false), 0);
    EXPECT_TRUE(page.IsGrayScale());
}

TEST(BlackWhiteText, SmallAndEmptyPagesAreRefused) {
    CDibImage empty, narrow = test::Noise(7, 200, 24);
    const CDibImage before = narrow;
    for (const bool keepColor : {false, true}) {
        EXPECT_EQ(BlackWhiteText(empty, keepColor), 0);
        EXPECT_EQ(BlackWhiteText(narrow, keepColor), 0);
    }
    test::ExpectSamePixels(narrow, before);
}

TEST(BlackWhiteText, TheResultDoesNotHangOnTheNumberOfThreads) {
    CDibImage first;
    for (const int count : {1, 2, 7}) {
        const test::Threads threads(count);
        CDibImage page = test::Noise(320, 233, 24);
        ASSERT_NE(BlackWhiteText(page, true), 0);
        if (count == 1)
            first = page;
        test::ExpectSamePixels(page, first);
    }
}

TEST(BlackWhiteText, WithoutMemoryThePixelsStay) {
    for (const int bpp : {8, 24}) {
        const CDibImage before = test::Noise(40, 30, bpp);
        const int failed =
            test::SweepRefusals(before, [](CDibImage& page) { return BlackWhiteText(page, true); });
        EXPECT_GT(failed, 1);
    }
}

}  // namespace
}  // namespace velloran

#include "dewarping/Dewarp.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>

#include "core/DibImage.h"
#include "core/StepContext.h"
#include "dewarping/CurvePoints.h"
#include "dewarping/ResampleFlat.h"
#include "support/CancelSweep.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"
#include "support/Threads.h"

namespace velloran::test {
namespace {

using namespace dewarping;
using QT::QPointF;

constexpr int kPoints = 8, kWidth = 400, kHeight = 300;
using Points = std::array<std::int32_t, kPoints>;

struct Curves {
    Points top, bottom;
};

/// Curves that hang by `sag` pixels in the middle.
Curves Hanging(int sag) {
    Curves curves;
    for (int i = 0; i < kPoints; ++i) {
        const double t = i / 7.0, down = 4 * sag * t * (1 - t);
        curves.top[static_cast<std::size_t>(i)] = packPoint({20 + 360 * t, 30 + down});
        curves.bottom[static_cast<std::size_t>(i)] = packPoint({20 + 360 * t, 230 + down});
    }
    return curves;
}

Curves Flat() {
    Curves curves;
    resetCurves(kWidth, kHeight, curves.top.data(), curves.bottom.data(), kPoints);
    return curves;
}

int Dewarp(CDibImage& image, const Curves& curves, int mode = kCubic, std::uint32_t color = 0) {
    return dewarp(mode, image, curves.top.data(), curves.bottom.data(), kPoints, color);
}

/// A page whose rows are levels of their own, hanging as the curves do.
CDibImage HangingPage(const Curves& curves, int bpp) {
    const auto surface = surfaceOf(curves.top.data(), curves.bottom.data(), kPoints);
    CDibImage page = Filled(kWidth, kHeight, bpp, 0);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            const double level =
                128 + 100 * std::sin(surface->toFlat({double(x), double(y)}).y / 9);
            const auto byte = static_cast<std::uint8_t>(std::lround(level));
            for (int c = 0; c < bpp / 8; ++c)
                page.GetBits(kHeight - 1 - y)[x * bpp / 8 + c] = byte;
        }
    return page;
}

TEST(Dewarp, RowsThatHangComeOutLevel) {
    const Curves curves = Hanging(25);
    for (const int bpp : {8, 24}) {
        CDibImage page = HangingPage(curves, bpp);
        ASSERT_EQ(Dewarp(page, curves), 1);
        EXPECT_EQ(page.GetBpp(), bpp);
        EXPECT_EQ(page.GetHeight(), 200);
        EXPECT_GT(page.GetWidth(), 360);
        for (int y = 2; y < 198; ++y)
            for (int x = 2; x < page.GetWidth() - 2; x += 7)
                EXPECT_NEAR(PixelAt(page, x, y).green, 128 + 100 * std::sin(y / 9.0), 5)
                    << x << ", " << y;
    }
}

TEST(Dewarp, FlatCurvesChangeNothing) {
    const CDibImage before = Noise(kWidth, kHeight, 24);
    CDibImage page = before;
    EXPECT_EQ(Dewarp(page, Flat()), 0);
    ExpectSamePixels(page, before);
}

TEST(Dewarp, UnsetCurvesChangeNothing) {
    const CDibImage before = Noise(kWidth, kHeight, 8);
    for (const std::int32_t value : {0, -1}) {
        Curves curves;
        curves.top.fill(value);
        curves.bottom.fill(value);
        CDibImage page = before;
        EXPECT_EQ(Dewarp(page, curves), 0);
        ExpectSamePixels(page, before);
    }
}

TEST(Dewarp, RefusesSmallPagesFewPointsAndCurvesWithoutLength) {
    const Curves curves = Hanging(20);
    CDibImage none, narrow = Noise(9, 100, 8), low = Noise(100, 9, 8);
    for (CDibImage* image : {&none, &narrow, &low})
        EXPECT_EQ(Dewarp(*image, curves), 0);
    CDibImage page = Noise(kWidth, kHeight, 8);
    EXPECT_EQ(dewarp(kCubic, page, curves.top.data(), curves.bottom.data(), 4, 0), 0);
    for (const bool isTop : {true, false}) {
        Curves closed = curves;
        Points& points = isTop ? closed.top : closed.bottom;
        points[7] = points[0];
        EXPECT_EQ(Dewarp(page, closed), 0);
    }
    ExpectSamePixels(page, Noise(kWidth, kHeight, 8));
}

TEST(Dewarp, AListEndedEarlyByAZeroPointIsTheCurveOfThePointsBeforeIt) {
    // Six of eight points count: the page ends where they do.
    Curves ended = Hanging(20);
    ended.top[6] = ended.bottom[6] = 0;
    ended.top[7] = ended.bottom[7] = packPoint({999, 999});
    CDibImage page = Noise(kWidth, kHeight, 8), same = page;
    ASSERT_EQ(Dewarp(page, ended), 1);
    EXPECT_NEAR(page.GetWidth(), 5 * 360 / 7.0, 25);
    ASSERT_EQ(dewarp(kCubic, same, ended.top.data(), ended.bottom.data(), 6, 0), 1);
    ExpectSamePixels(page, same);
}

TEST(Dewarp, ReversedCurvesAreReadFromTheirOtherEnd) {
    const Curves curves = Hanging(25);
    Curves reversed = curves, onlyTop = curves, upsideDown = curves;
    std::reverse(reversed.top.begin(), reversed.top.end());
    std::reverse(reversed.bottom.begin(), reversed.bottom.end());
    std::reverse(onlyTop.top.begin(), onlyTop.top.end());
    std::swap(upsideDown.top, upsideDown.bottom);
    CDibImage expected = HangingPage(curves, 8);
    ASSERT_EQ(Dewarp(expected, curves), 1);
    for (const Curves& told : {reversed, onlyTop, upsideDown}) {
        CDibImage page = HangingPage(curves, 8);
        ASSERT_EQ(Dewarp(page, told), 1);
        ASSERT_EQ(page.GetWidth(), expected.GetWidth());
        ASSERT_EQ(page.GetHeight(), expected.GetHeight());
        int worst = 0;
        for (int y = 0; y < page.GetHeight(); ++y)
            for (int x = 0; x < page.GetWidth(); ++x)
                worst = std::max(worst, std::abs(IndexAt(page, x, y) - IndexAt(expected, x, y)));
        EXPECT_LE(worst, 3);
    }
}

TEST(Dewarp, WhatLiesOffThePageTakesTheBackground) {
    Curves below = Hanging(10);
    for (std::int32_t& point : below.bottom)
        point = packPoint({unpackPoint(point).x, unpackPoint(point).y + 170});
    CDibImage color = Filled(kWidth, kHeight, 24, 200), gray = Filled(kWidth, kHeight, 8, 200);
    ASSERT_EQ(Dewarp(color, below, kCubic, 0x302010), 1);
    EXPECT_EQ(PixelAt(color, 100, color.GetHeight() - 1), (Rgb{0x10, 0x20, 0x30}));
    EXPECT_EQ(PixelAt(color, 100, 50), (Rgb{200, 200, 200}));
    ASSERT_EQ(Dewarp(gray, below, kCubic, 0x302010), 1);
    EXPECT_EQ(IndexAt(gray, 100, gray.GetHeight() - 1), (0x30 + 0x20 + 0x10 + 1) / 3);
    Curves off = Hanging(10);
    for (Points* points : {&off.top, &off.bottom})
        for (std::int32_t& point : *points)
            point = packPoint({unpackPoint(point).x + 5000, unpackPoint(point).y + 5000});
    CDibImage nothing = Filled(kWidth, kHeight, 8, 200);
    ASSERT_EQ(Dewarp(nothing, off, kCubic, 0x090909), 1);
    for (int x = 0; x < nothing.GetWidth(); ++x)
        EXPECT_EQ(IndexAt(nothing, x, 20), 9);
}

TEST(Dewarp, EveryDepthIsTakenAndAlphaGoesAlong) {
    const Curves curves = Hanging(15);
    for (const int bpp : {1, 4, 8, 24}) {
        CDibImage page = Noise(kWidth, kHeight, bpp);
        if (bpp == 8)
            SetPalette(page, std::vector<Rgb>(256, Rgb{200, 10, 30}));
        ASSERT_TRUE(page.CreateAlpha());
        std::fill_n(page.GetAlpha() + 150 * kWidth, 150 * kWidth, std::uint8_t{7});  // the top half
        ASSERT_EQ(Dewarp(page, curves), 1);
        EXPECT_EQ(page.GetBpp(), bpp == 1 || bpp == 4 ? 8 : 24);
        ASSERT_NE(page.GetAlpha(), nullptr);
        const int width = page.GetWidth(), height = page.GetHeight();
        EXPECT_EQ(page.GetAlpha()[(height - 5) * width + width / 2], 7);
        EXPECT_EQ(page.GetAlpha()[5 * width + width / 2], 255);
    }
}

TEST(Dewarp, EachModeFetchesWhatAPlainLoopDoes) {
    const Curves curves = Hanging(21);
    const CDibImage before = Noise(kWidth, kHeight, 24);
    const auto surface = surfaceOf(curves.top.data(), curves.bottom.data(), kPoints);
    const auto keys = [](double t) {  // the cubic of a = -1/2
        t = std::fabs(t);
        return t <= 1 ? 1.5 * t * t * t - 2.5 * t * t + 1
                      : (t < 2 ? -0.5 * t * t * t + 2.5 * t * t - 4 * t + 2 : 0.0);
    };
    const auto hat = [](double t) { return std::max(0.0, 1 - std::fabs(t)); };
    const auto box = [](double t) { return t >= -0.5 && t < 0.5 ? 1.0 : 0.0; };
    for (const int mode : {int{kNearestPixel}, int{kLinear}, int{kCubic}, int{kCubicToo}}) {
        CDibImage page = before;
        ASSERT_EQ(Dewarp(page, curves, mode, 0x777777), 1);
        int wrong = 0;
        for (int y = 0; y < page.GetHeight(); y += 3)
            for (int x = 0; x < page.GetWidth(); x += 3) {
                const QPointF from = surface->toImage({double(x), double(y)});
                double sum = 0;
                const int column = static_cast<int>(std::floor(from.x)),
                          row = static_cast<int>(std::floor(from.y));
                for (int j = -1; j <= 2; ++j)
                    for (int i = -1; i <= 2; ++i) {
                        const double dx = from.x - (column + i), dy = from.y - (row + j);
                        const double weight =
                            mode == kNearestPixel
                                ? box(-dx) * box(-dy)
                                : (mode == kLinear ? hat(dx) * hat(dy) : keys(dx) * keys(dy));
                        sum += weight * PixelAt(before, std::clamp(column + i, 0, kWidth - 1),
                                                std::clamp(row + j, 0, kHeight - 1))
                                            .red;
                    }
                // Places are counted in 256ths of a pixel; noise is steep.
                wrong += std::fabs(PixelAt(page, x, y).red - std::clamp(sum, 0.0, 255.0)) > 3;
            }
        EXPECT_LE(wrong, mode == kNearestPixel ? 80 : 0) << mode;  // of 8000, at borders
    }
}

TEST(Dewarp, GivesEqualBytesForAnyNumberOfThreads) {
    const Curves curves = Hanging(30);
    const CDibImage before = Noise(kWidth, kHeight, 24);
    CDibImage expected = before;
    {
        const Threads one(1);
        ASSERT_EQ(Dewarp(expected, curves), 1);
    }
    for (const int count : {2, 7}) {
        const Threads threads(count);
        CDibImage page = before;
        ASSERT_EQ(Dewarp(page, curves), 1);
        ExpectSamePixels(page, expected);
    }
}

TEST(Dewarp, LeavesThePageWhereMemoryIsRefused) {
    const CDibImage before = Noise(kWidth, kHeight, 24);
    const Curves curves = Hanging(30);
    const Threads one(1);  // refusals are counted on this thread
    long tried = 0;
    for (long n = 1;; ++n) {
        CDibImage page = before;
        const StepContext context;
        int done = 0;
        bool happened = false;
        {
            const FailAllocation failure(n);
            done = Dewarp(page, curves);
            happened = failure.Happened();
        }
        EXPECT_EQ(done, happened ? 0 : 1) << n;
        EXPECT_EQ(context.IsOutOfMemory(), happened) << n;
        EXPECT_FALSE(context.HasFailed());
        if (!happened)
            break;
        ++tried;
        ExpectSamePixels(page, before);
    }
    EXPECT_GT(tried, 5);
}

TEST(Dewarp, EndsSoonAfterACancel) {
    const Curves curves = Hanging(30);
    ExpectCancelled(Noise(kWidth, kHeight, 24), [&](CDibImage& page) { Dewarp(page, curves); });
}

TEST(Dewarp, SurvivesCurvesAtRandom) {
    std::mt19937 random(5);
    const CDibImage before = Noise(60, 50, 8);
    int done = 0;
    for (int round = 0; round < 3000; ++round) {
        Curves curves;
        const std::uint32_t range = round % 3 == 0 ? 65536 : (round % 3 == 1 ? 100 : 2000);
        for (Points* points : {&curves.top, &curves.bottom})
            for (std::int32_t& point : *points)
                point = static_cast<std::int32_t>((random() % range) << 16 | random() % range);
        if (round % 3 == 1)  // most of these are pages
            for (int i = 0; i < kPoints; ++i) {
                curves.top[static_cast<std::size_t>(i)] =
                    packPoint({i * 8.0, double(random() % 25)});
                curves.bottom[static_cast<std::size_t>(i)] =
                    packPoint({i * 8.0, 25.0 + double(random() % 60)});
            }
        const auto surface = surfaceOf(curves.top.data(), curves.bottom.data(), kPoints);
        if (surface && surface->flatWidth() * surface->flatHeight() > 2e5)
            continue;  // it would only take long
        CDibImage page = before;
        done += Dewarp(page, curves);
    }
    EXPECT_GT(done, 500);
}

TEST(Dewarp, RefusesAResultAboveTheLimitsOfAPicture) {
    CDibImage page = Noise(100, 100, 8);
    Curves curves = Hanging(0);
    for (int i = 0; i < kPoints; ++i) {
        curves.top[static_cast<std::size_t>(i)] = packPoint({i * 9362.0, i % 2 * 9.0});
        curves.bottom[static_cast<std::size_t>(i)] = packPoint({i * 9362.0, 65535.0 - i % 2});
    }
    EXPECT_EQ(Dewarp(page, curves), 0);
    ExpectSamePixels(page, Noise(100, 100, 8));
}

}  // namespace
}  // namespace velloran::test

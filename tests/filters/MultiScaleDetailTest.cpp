#include "filters/MultiScaleDetail.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "filters/PlainPlanes.h"
#include "filters/ScarceMemory.h"
#include "support/Images.h"
#include "support/Threads.h"

namespace velloran {
namespace {

using test::PlainPlane;

CDibImage Enhanced(const CDibImage& image, int radius) {
    CDibImage enhanced = image;
    EXPECT_NE(MultiScaleDetail(enhanced, radius), 0);
    return enhanced;
}

/// Forward, and backward over what forward left.
void PlainFollow(std::vector<long>& line, long alpha) {
    long state = line.front();
    for (long& value : line) {
        state += (alpha * (value - state)) >> 16;
        value = state;
    }
    for (auto value = line.rbegin(); value != line.rend(); ++value) {
        state += (alpha * (*value - state)) >> 16;
        *value = state;
    }
}

/// Exponential smoothing, rows and then columns from the top, with 7 fractional bits.
PlainPlane PlainSmoothed(const PlainPlane& plane, double radius) {
    const double reach = std::floor(2 * radius + 0.5);
    const auto alpha = static_cast<long>((1 - std::exp(-2.3 / (reach + 1.0))) * 65536);
    PlainPlane out = plane;
    for (int y = 0; y < plane.height; ++y) {
        std::vector<long> line;
        for (int x = 0; x < plane.width; ++x)
            line.push_back(out.At(x, y) * 128);
        PlainFollow(line, alpha);
        for (int x = 0; x < plane.width; ++x)
            out.At(x, y) = static_cast<int>(line[static_cast<std::size_t>(x)] >> 7);
    }
    for (int x = 0; x < plane.width; ++x) {
        std::vector<long> line;
        for (int y = plane.height - 1; y >= 0; --y)
            line.push_back(out.At(x, y) * 128);
        PlainFollow(line, alpha);
        for (int y = 0; y < plane.height; ++y)
            out.At(x, y) =
                static_cast<int>(line[static_cast<std::size_t>(plane.height - 1 - y)] >> 7);
    }
    return out;
}

PlainPlane PlainEnhanced(const PlainPlane& plane, int radius) {
    const PlainPlane b1 = PlainSmoothed(plane, radius), b2 = PlainSmoothed(plane, 2.0 * radius),
                     b3 = PlainSmoothed(plane, 4.0 * radius);
    PlainPlane out = plane;
    for (std::size_t i = 0; i < out.samples.size(); ++i) {
        const int s = plane.samples[i];
        const int c = s < b1.samples[i] ? 3 : 1;
        const int t =
            (2 * (b1.samples[i] + c * (s - b1.samples[i])) - b2.samples[i] - b3.samples[i]) / 4;
        out.samples[i] = std::clamp(s + t, 0, 255);
    }
    return out;
}

TEST(MultiScaleDetail, AddsTheDetailOfThreeSmoothings) {
    test::ForEachPicture([](const CDibImage& image, int number) {
        if (image.GetWidth() < 4 || image.GetHeight() < 4)
            return;
        const int radius = 1 + number % 40;
        test::ExpectSamePixels(Enhanced(image, radius),
                               test::WithPlanes(image, [=](const PlainPlane& plane) {
                                   return PlainEnhanced(plane, radius);
                               }));
    });
}

TEST(MultiScaleDetail, PicturesOfMoreThan32767PixelsAreWhole) {
    for (const auto& [width, height] : {std::pair{33001, 5}, {5, 33001}}) {
        const CDibImage image = test::Noise(width, height, 8);
        test::ExpectSamePixels(Enhanced(image, 2),
                               test::WithPlanes(image, [](const PlainPlane& plane) {
                                   return PlainEnhanced(plane, 2);
                               }));
    }
}

TEST(MultiScaleDetail, BoostsTheDarkSideOfAnEdgeMoreThanTheBrightSide) {
    CDibImage image = test::Filled(80, 40, 8, 90);
    for (int y = 0; y < 40; ++y)
        for (int x = 40; x < 80; ++x)
            image.GetBits(y)[x] = 160;
    const CDibImage enhanced = Enhanced(image, 2);
    const int darker = 90 - test::IndexAt(enhanced, 39, 20);
    const int brighter = test::IndexAt(enhanced, 40, 20) - 160;
    EXPECT_GT(brighter, 0);
    EXPECT_GT(darker, brighter);
}

TEST(MultiScaleDetail, LeavesAUniformImage) {
    for (const int bpp : {8, 24})
        for (const int level : {0, 1, 128, 255}) {
            const CDibImage image = test::Filled(20, 9, bpp, static_cast<std::uint8_t>(level));
            test::ExpectSamePixels(Enhanced(image, 3), image);
        }
}

TEST(MultiScaleDetail, RefusesSidesBelowFourAndARadiusBelowOne) {
    for (const auto& [width, height, radius] :
         {std::tuple{3, 4, 1}, {4, 3, 1}, {4, 4, 0}, {20, 20, -1}, {20, 20, INT_MIN}}) {
        const CDibImage image = test::Noise(width, height, 24);
        CDibImage page = image;
        EXPECT_EQ(MultiScaleDetail(page, radius), 0);
        test::ExpectSamePixels(page, image);
    }
    CDibImage empty;
    EXPECT_EQ(MultiScaleDetail(empty, 1), 0);
    CDibImage smallest = test::Noise(4, 4, 8);
    EXPECT_NE(MultiScaleDetail(smallest, 1), 0);
}

TEST(MultiScaleDetail, TakesAnyRadius) {
    // Such smoothings hold on to the first sample of each line.
    const CDibImage image = test::Noise(12, 8, 8);
    test::ExpectSamePixels(Enhanced(image, INT_MAX), Enhanced(image, INT_MAX - 1));
}

TEST(MultiScaleDetail, KeepsRowPaddingByteByByte) {
    CDibImage image = test::Noise(5, 6, 8);
    for (int y = 0; y < 6; ++y)
        for (int i = 5; i < 8; ++i)
            image.GetBits(y)[i] = static_cast<std::uint8_t>(40 * i);
    EXPECT_NE(MultiScaleDetail(image, 2), 0);
    for (int y = 0; y < 6; ++y)
        for (int i = 5; i < 8; ++i)
            EXPECT_EQ(image.GetBits(y)[i], static_cast<std::uint8_t>(40 * i));
}

TEST(MultiScaleDetail, NormalisesTheDepthFirst) {
    CDibImage bilevel = test::Noise(20, 20, 1);
    EXPECT_NE(MultiScaleDetail(bilevel, 2), 0);
    EXPECT_EQ(bilevel.GetBpp(), 8);
    CDibImage palette = test::Noise(20, 20, 4);
    palette.GetPalette()[3].red = 255;
    test::SetIndex(palette, 0, 0, 3);
    EXPECT_NE(MultiScaleDetail(palette, 2), 0);
    EXPECT_EQ(palette.GetBpp(), 24);
}

TEST(MultiScaleDetail, GivesTheSameBytesForAnyNumberOfThreads) {
    const CDibImage image = test::Noise(300, 90, 24);
    std::vector<CDibImage> results;
    for (const int count : {1, 2, 7}) {
        const test::Threads threads(count);
        results.push_back(Enhanced(image, 5));
    }
    test::ExpectSamePixels(results[1], results[0]);
    test::ExpectSamePixels(results[2], results[0]);
}

TEST(MultiScaleDetail, WithoutMemoryThePixelsStay) {
    const CDibImage image = test::Noise(19, 14, 24);
    const CDibImage expected = Enhanced(image, 2);
    const int failures = test::RunWithScarceMemory(
        image, /*onlyOne=*/false, [](CDibImage& page) { return MultiScaleDetail(page, 2); },
        [&](const CDibImage& page, int result, bool failed) {
            EXPECT_EQ(result, failed ? 0 : 1);
            test::ExpectSamePixels(page, failed ? image : expected);
        });
    EXPECT_GT(failures, 0);
}

}  // namespace
}  // namespace velloran

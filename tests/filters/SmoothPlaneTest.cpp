#include "filters/SmoothPlane.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "filters/PlainPlanes.h"
#include "filters/ScarceMemory.h"
#include "support/Images.h"
#include "support/Threads.h"

namespace velloran {
namespace {

/// floor(a * b / 65536) without leaning on shifts of negative numbers.
int Follow(int state, int target, int alpha) {
    return state +
           static_cast<int>(std::floor(static_cast<double>(alpha) * (target - state) / 65536.0));
}

std::vector<int> SmoothedLine(const std::vector<int>& line, int alpha) {
    std::vector<int> kept(line.size());
    int state = line[0] * 128;
    for (std::size_t i = 0; i < line.size(); ++i)
        kept[i] = state = Follow(state, line[i] * 128, alpha);
    for (std::size_t i = line.size(); i-- > 0;)
        kept[i] = state = Follow(state, kept[i], alpha);
    for (int& sample : kept)
        sample /= 128;
    return kept;
}

/// Rows, then columns from the top; row 0 of the plane is the bottom row.
test::PlainPlane Smoothed(test::PlainPlane plane, double radius) {
    const int reach = static_cast<int>(2 * radius + 0.5);
    if (reach < 1)
        return plane;
    const int alpha = static_cast<int>((1 - std::exp(-2.3 / (reach + 1.0))) * 65536);
    for (int y = 0; y < plane.height; ++y) {
        std::vector<int> line;
        for (int x = 0; x < plane.width; ++x)
            line.push_back(plane.At(x, y));
        line = SmoothedLine(line, alpha);
        for (int x = 0; x < plane.width; ++x)
            plane.At(x, y) = line[static_cast<std::size_t>(x)];
    }
    for (int x = 0; x < plane.width; ++x) {
        std::vector<int> line;
        for (int y = plane.height - 1; y >= 0; --y)
            line.push_back(plane.At(x, y));
        line = SmoothedLine(line, alpha);
        for (int y = 0; y < plane.height; ++y)
            plane.At(x, y) = line[static_cast<std::size_t>(plane.height - 1 - y)];
    }
    return plane;
}

TEST(SmoothPlane, EqualsThePlainRecursion) {
    for (const int bpp : {8, 24})
        for (const auto& [width, height] :
             {std::pair{4, 4}, {5, 17}, {17, 5}, {32, 33}, {65, 40}, {301, 70}})
            for (const double radius : {0.25, 0.5, 1.0, 4.0, 6.0, 37.3, 1e5}) {
                for (const CDibImage& page :
                     {test::Noise(width, height, bpp), test::Smooth(width, height, bpp)}) {
                    CDibImage image = page;
                    EXPECT_EQ(SmoothPlane(image, radius), 1);
                    test::ExpectSamePixels(
                        image, test::WithPlanes(page, [&](const test::PlainPlane& plane) {
                            return Smoothed(plane, radius);
                        }));
                }
            }
}

TEST(SmoothPlane, EqualsThePlainRecursionOnEveryPicture) {
    test::ForEachPicture([](const CDibImage& page, int number) {
        if (page.GetWidth() < 4 || page.GetHeight() < 4)
            return;
        const double radius = 0.5 + number % 19 * 0.75;
        CDibImage image = page;
        EXPECT_EQ(SmoothPlane(image, radius), 1);
        test::ExpectSamePixels(image, test::WithPlanes(page, [=](const test::PlainPlane& plane) {
                                   return Smoothed(plane, radius);
                               }));
    });
}

TEST(SmoothPlane, BlackBesideWhiteStaysInRange) {
    CDibImage page = test::Noise(40, 40, 1);
    CDibImage image = page;
    EXPECT_EQ(SmoothPlane(image, 0.5), 1);
    EXPECT_EQ(image.GetBpp(), 8);
    CDibImage gray = test::Filled(40, 40, 8, 0);
    for (int y = 0; y < 40; ++y)
        for (int x = 0; x < 40; ++x)
            test::SetIndex(gray, x, y, test::IndexAt(page, x, y) * 255);
    test::ExpectSamePixels(image, test::WithPlanes(gray, [](const test::PlainPlane& plane) {
                               return Smoothed(plane, 0.5);
                           }));
}

TEST(SmoothPlane, EvenTonesStay) {
    for (const int tone : {0, 1, 128, 255}) {
        CDibImage image = test::Filled(20, 30, 24, static_cast<std::uint8_t>(tone));
        EXPECT_EQ(SmoothPlane(image, 5), 1);
        test::ExpectSamePixels(image, test::Filled(20, 30, 24, static_cast<std::uint8_t>(tone)));
    }
}

TEST(SmoothPlane, ARadiusThatRoundsToNothingDoesNothing) {
    for (const double radius : {0.0, 0.2, -1.0, -1e300, std::nan("")}) {
        CDibImage image = test::Noise(20, 20, 24);
        EXPECT_EQ(SmoothPlane(image, radius), 1);
        test::ExpectSamePixels(image, test::Noise(20, 20, 24));
    }
}

TEST(SmoothPlane, TakesTheLargestRadius) {
    for (const double radius : {1e9, 1e300, std::numeric_limits<double>::infinity()}) {
        CDibImage image = test::Noise(20, 20, 8);
        EXPECT_EQ(SmoothPlane(image, radius), 1);
    }
}

TEST(SmoothPlane, RefusesSidesOfThree) {
    for (const auto& [width, height] : {std::pair{3, 20}, {20, 3}, {1, 1}}) {
        CDibImage image = test::Noise(width, height, 4);
        EXPECT_EQ(SmoothPlane(image, 5), 0);
        test::ExpectSamePixels(image, test::Noise(width, height, 4));
    }
    CDibImage empty;
    EXPECT_EQ(SmoothPlane(empty, 5), 0);
}

TEST(SmoothPlane, NormalisesTheDepth) {
    CDibImage gray = test::Noise(20, 20, 4), color = gray;
    color.GetPalette()[3] = {0, 0, 200, 0};
    EXPECT_EQ(SmoothPlane(gray, 5), 1);
    EXPECT_EQ(gray.GetBpp(), 8);
    EXPECT_EQ(SmoothPlane(color, 5), 1);
    EXPECT_EQ(color.GetBpp(), 24);
}

TEST(SmoothPlane, PicturesOfMoreThan32767PixelsAreWhole) {
    for (const auto& [width, height] : {std::pair{33001, 5}, {5, 33001}}) {
        const CDibImage page = test::Noise(width, height, 8);
        CDibImage image = page;
        EXPECT_EQ(SmoothPlane(image, 3), 1);
        test::ExpectSamePixels(image, test::WithPlanes(page, [](const test::PlainPlane& plane) {
                                   return Smoothed(plane, 3);
                               }));
    }
}

TEST(SmoothPlane, WithoutMemoryThePixelsStay) {
    const CDibImage page = test::Noise(40, 30, 24);
    CDibImage smooth = page;
    ASSERT_EQ(SmoothPlane(smooth, 3), 1);
    for (const bool onlyOne : {false, true}) {
        const int failures = test::RunWithScarceMemory(
            page, onlyOne, [](CDibImage& image) { return SmoothPlane(image, 3); },
            [&](const CDibImage& image, int result, bool failed) {
                EXPECT_EQ(result, failed ? 0 : 1);
                test::ExpectSamePixels(image, failed ? page : smooth);
            });
        EXPECT_GT(failures, 1);
    }
}

TEST(SmoothPlane, ThreadsDoNotChangeTheBytes) {
    std::vector<CDibImage> results;
    for (const int threads : {1, 2, 7}) {
        const test::Threads guard(threads);
        CDibImage image = test::Noise(333, 201, 24);
        SmoothPlane(image, 5);
        results.push_back(image);
    }
    test::ExpectSamePixels(results[1], results[0]);
    test::ExpectSamePixels(results[2], results[0]);
}

}  // namespace
}  // namespace velloran

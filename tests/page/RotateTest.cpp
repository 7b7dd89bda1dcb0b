#include "imaging/Rotate.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>

#include "core/DibImage.h"
#include "core/StepContext.h"
#include "page/Deskew.h"
#include "support/Images.h"
#include "support/Threads.h"

namespace velloran::test {
namespace {

/// A grey sample of the stored rows.
double Sample(const CDibImage& image, int x, int y) {
    const int column = std::clamp(x, 0, image.GetWidth() - 1);
    const int row = std::clamp(y, 0, image.GetHeight() - 1);
    return image.GetBits(row)[column];
}

double Cubic(double t) {
    t = std::fabs(t);
    if (t < 1)
        return (1.5 * t - 2.5) * t * t + 1;
    return t < 2 ? ((-0.5 * t + 2.5) * t - 4) * t + 2 : 0;
}

struct Origin {
    double x, y;
};

/// Where a stored pixel of the turned image comes from: a positive angle turns the stored rows,
/// which go upward, clockwise.
Origin OriginOf(int x, int y, int width, int height, double degrees) {
    const double radians = degrees * 3.14159265358979323846 / 180;
    const double dx = x - (width >> 1), dy = y - (height >> 1);
    return {std::cos(radians) * dx - std::sin(radians) * dy + (width >> 1),
            std::sin(radians) * dx + std::cos(radians) * dy + (height >> 1)};
}

TEST(RotateKeepSize, TheNearestPixelIsTheOneItsPlaceRoundsTo) {
    const CDibImage source = Noise(61, 43, 8);
    for (const double degrees : {-4.9, -0.3, 1.0, 3.7, 90.0, 180.0}) {
        CDibImage turned = source;
        EXPECT_EQ(rotateKeepSize(turned, degrees, 1, kFillEdge, 0x330000), 1);
        for (int y = 0; y < 43; ++y)
            for (int x = 0; x < 61; ++x) {
                const Origin from = OriginOf(x, y, 61, 43, degrees);
                const double roundX = from.x + 0.5, roundY = from.y + 0.5;
                // A place on the border of two pixels may go to either.
                if (std::fabs(roundX - std::round(roundX)) < 1e-6 ||
                    std::fabs(roundY - std::round(roundY)) < 1e-6)
                    continue;
                const int column = static_cast<int>(std::floor(roundX));
                const int row = static_cast<int>(std::floor(roundY));
                const bool inside = column >= 0 && row >= 0 && column < 61 && row < 43;
                ASSERT_EQ(turned.GetBits(y)[x], inside ? source.GetBits(row)[column] : 0x33)
                    << degrees << ": " << x << ", " << y;
            }
    }
}

TEST(RotateKeepSize, TheCubicIsThePublishedKernelToALevel) {
    const CDibImage source = Noise(61, 43, 8);
    for (const double degrees : {-4.9, 0.7, 2.2}) {
        CDibImage turned = source;
        EXPECT_EQ(rotateKeepSize(turned, degrees, 2, kFillEdge, 0xFFFFFF), 1);
        for (int y = 4; y < 39; ++y)
            for (int x = 6; x < 55; ++x) {
                const Origin from = OriginOf(x, y, 61, 43, degrees);
                const int left = static_cast<int>(std::floor(from.x));
                const int top = static_cast<int>(std::floor(from.y));
                double sum = 0;
                for (int j = -1; j < 3; ++j)
                    for (int i = -1; i < 3; ++i)
                        sum += Sample(source, left + i, top + j) * Cubic(from.x - left - i) *
                               Cubic(from.y - top - j);
                // Places are taken to 1/256 of a pixel; noise moves by up to 255 levels a pixel.
                ASSERT_NEAR(turned.GetBits(y)[x], std::clamp(sum, 0.0, 255.0), 2.5)
                    << degrees << ": " << x << ", " << y;
            }
    }
}

TEST(RotateKeepSize, ColorTurnsAsItsPlanesDo) {
    const CDibImage source = Noise(50, 40, 24);
    for (const int interpolation : {1, 2}) {
        CDibImage turned = source;
        EXPECT_EQ(rotateKeepSize(turned, 3.3, interpolation, kKeepEdge, 0), 1);
        for (int channel = 0; channel < 3; ++channel) {
            CDibImage plane = Filled(50, 40, 8, 0);
            for (int y = 0; y < 40; ++y)
                for (int x = 0; x < 50; ++x)
                    plane.GetBits(y)[x] = source.GetBits(y)[3 * x + channel];
            EXPECT_EQ(rotateKeepSize(plane, 3.3, interpolation, kKeepEdge, 0), 1);
            for (int y = 0; y < 40; ++y)
                for (int x = 0; x < 50; ++x)
                    ASSERT_EQ(turned.GetBits(y)[3 * x + channel], plane.GetBits(y)[x]);
        }
    }
}

TEST(RotateKeepSize, RefusesOnlyWhatLiesStrictlyWithinAHundredth) {
    CDibImage image = Noise(40, 40, 8);
    EXPECT_EQ(rotateKeepSize(image, 0.0099, 1, kFillEdge, 0), 0);
    EXPECT_EQ(rotateKeepSize(image, -0.0099, 1, kFillEdge, 0), 0);
    EXPECT_EQ(rotateKeepSize(image, 0.01, 1, kFillEdge, 0), 1);
    EXPECT_EQ(rotateKeepSize(image, -0.01, 1, kFillEdge, 0), 1);
    EXPECT_EQ(rotateKeepSize(image, std::nan(""), 1, kFillEdge, 0), 0);
    CDibImage empty;
    EXPECT_EQ(rotateKeepSize(empty, 1, 1, kFillEdge, 0), 0);
}

TEST(RotateKeepSize, OpenedCornersKeepTheirPixelsOrTakeTheColor) {
    const CDibImage source = Filled(101, 81, 24, 90);
    CDibImage kept = source, filled = source;
    EXPECT_EQ(rotateKeepSize(kept, 4, 2, kKeepEdge, 0x102030), 1);
    EXPECT_EQ(rotateKeepSize(filled, 4, 2, kFillEdge, 0x102030), 1);
    EXPECT_EQ(PixelAt(kept, 0, 0), (Rgb{90, 90, 90}));
    EXPECT_EQ(PixelAt(filled, 0, 0), (Rgb{0x30, 0x20, 0x10}));
    EXPECT_EQ(PixelAt(filled, 50, 40), (Rgb{90, 90, 90}));
}

TEST(RotateKeepSize, EdgePixelsFillTheWedgesOfTheSideThatOpens) {
    // Left half 40, right half 200: a clockwise turn opens the upper left side and the lower right.
    CDibImage source = Filled(101, 81, 8, 40);
    for (int y = 0; y < 81; ++y)
        std::fill_n(source.GetBits(y) + 50, 51, std::uint8_t{200});
    source.GetBits(80)[0] = 77;  // top left corner
    CDibImage turned = source;
    EXPECT_EQ(rotateKeepSize(turned, 4, 1, kExtendEdge, 0), 1);
    EXPECT_EQ(IndexAt(turned, 0, 0), 77);
    EXPECT_EQ(IndexAt(turned, 1, 0), 77);  // 40 * tan(2 degrees) is 1.4: two columns
    EXPECT_EQ(IndexAt(turned, 100, 80), 200);
}

TEST(RotateKeepSize, APositiveAngleTurnsClockwise) {
    CDibImage image = Filled(101, 101, 8, 255);
    for (int x = 0; x < 101; ++x)
        image.GetBits(50)[x] = 0;
    EXPECT_EQ(rotateKeepSize(image, 5, 1, kFillEdge, 0xFFFFFF), 1);
    // 45 pixels right of the middle the line lies 45 * tan(5 degrees) = 3.9 rows lower.
    EXPECT_EQ(IndexAt(image, 95, 54), 0);
    EXPECT_EQ(IndexAt(image, 5, 46), 0);
}

TEST(RotateKeepSize, ThreadsChangeNoByte) {
    const CDibImage source = Noise(700, 500, 24);
    std::vector<CDibImage> results;
    for (const int threads : {1, 2, 7}) {
        const Threads count(threads);
        CDibImage turned = source;
        EXPECT_EQ(rotateKeepSize(turned, 1.3, 2, kKeepEdge, 0), 1);
        results.push_back(turned);
    }
    ExpectSamePixels(results[1], results[0]);
    ExpectSamePixels(results[2], results[0]);
}

TEST(RotateKeepSize, ATurnThatIsCancelledLeavesItsRows) {
    const CDibImage before = Noise(400, 300, 8);
    CDibImage image = before;
    const std::atomic<bool> stop{true};
    const StepContext context{CancelToken(stop)};
    EXPECT_EQ(rotateKeepSize(image, 3, 2, kKeepEdge, 0), 1);
    ExpectSamePixels(image, before);  // no row was turned over what stood there
}

TEST(RotateKeepSize, SmallAndThinPagesTurn) {
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 12}, {12, 1}, {2, 2}, {3000, 10}})
        for (const int mode : {kKeepEdge, kFillEdge, kExtendEdge})
            for (const int bits : {1, 4, 8, 24}) {
                CDibImage image = Noise(width, height, bits);
                EXPECT_EQ(rotateKeepSize(image, 4.5, 2, mode, 0), 1);
                EXPECT_EQ(image.GetWidth(), width);
                EXPECT_EQ(image.GetHeight(), height);
            }
}

}  // namespace
}  // namespace velloran::test

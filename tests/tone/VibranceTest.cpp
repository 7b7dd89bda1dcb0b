#include "tone/Vibrance.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

#include "core/DibImage.h"
#include "support/Images.h"
#include "support/Threads.h"
#include "tone/ToneSteps.h"

namespace velloran {
namespace {

test::Rgb PlainVibrance(const test::Rgb& c, int amount) {
    const int a = amount >= 1 ? amount * 2 : amount;
    const int most = std::max({c.red, c.green, c.blue});
    const int luma = (c.red + 2 * c.green + c.blue) / 4;
    const float share = static_cast<float>(std::abs(a)) * 0.01F;
    const long k =
        static_cast<long>(static_cast<float>(most - luma) * 16384.0F * share / 127.0F + 0.5F);
    const auto moved = [&](int v) {
        const long move = ((most - v) * k + 8192) >> 14;
        return static_cast<int>(std::clamp(a >= 1 ? v - move : v + move, 0L, 255L));
    };
    return {moved(c.red), moved(c.green), moved(c.blue)};
}

void ExpectPlainVibrance(const CDibImage& before, int amount) {
    CDibImage image = before;
    ASSERT_NE(Vibrance(image, amount), 0);
    for (int y = 0; y < before.GetHeight(); ++y)
        for (int x = 0; x < before.GetWidth(); ++x)
            ASSERT_EQ(test::PixelAt(image, x, y),
                      PlainVibrance(test::PixelAt(before, x, y), amount));
}

TEST(Vibrance, MovesTheChannelsAwayFromOrTowardTheLargest) {
    for (int amount = -100; amount <= 200; ++amount)
        if (amount != 0)
            ExpectPlainVibrance(test::Noise(50, 20, 24, 12), amount);
    for (const int amount : {-100, 200})
        for (const auto& [width, height] : {std::pair{1, 1}, {1, 17}, {17, 3}, {300, 201}}) {
            ExpectPlainVibrance(test::Noise(width, height, 24, 2), amount);
            ExpectPlainVibrance(test::SmoothPicture(width, height, 24), amount);
        }
}

TEST(Vibrance, TwoHundredTakesFourTimesTheDistanceWhereTheLumaIsHalf) {
    // The largest is 200 and the luma (200 + 2 * 30 + 32) / 4 = 73: a distance of 127 makes the
    // factor 4. 180 becomes 180 - 4 * 20; 30 goes below 0.
    CDibImage image = test::Filled(1, 1, 24, 0);
    test::SetPixel(image, 0, 0, {32, 30, 200});
    ASSERT_NE(Vibrance(image, 200), 0);
    EXPECT_EQ(test::PixelAt(image, 0, 0), (test::Rgb{0, 0, 200}));
    // Most 255 and luma (255 + 2 * 20 + 217) / 4 = 128: again 127.
    test::SetPixel(image, 0, 0, {255, 20, 217});
    ASSERT_NE(Vibrance(image, 200), 0);
    EXPECT_EQ(test::PixelAt(image, 0, 0), (test::Rgb{255, 0, 217 - 4 * 38}));
}

TEST(Vibrance, GraysAndTheLargestChannelStay) {
    CDibImage image = test::Filled(4, 4, 24, 90);
    const CDibImage before = image;
    ASSERT_NE(Vibrance(image, 150), 0);
    test::ExpectSamePixels(image, before);
}

TEST(Vibrance, OtherDepthsZeroAndEmptyAreLeftAlone) {
    CDibImage empty;
    EXPECT_EQ(Vibrance(empty, 50), 0);
    for (const int bpp : {1, 4, 8}) {
        CDibImage image = test::Noise(20, 9, bpp);
        const CDibImage before = image;
        EXPECT_EQ(Vibrance(image, 50), 0);
        test::ExpectSamePixels(image, before);
    }
    CDibImage color = test::Noise(20, 9, 24);
    const CDibImage before = color;
    EXPECT_EQ(Vibrance(color, 0), 0);
    test::ExpectSamePixels(color, before);
}

TEST(Vibrance, ExtremeAmountsSaturate) {
    CDibImage more = test::Filled(1, 1, 24, 0), less = more;
    test::SetPixel(more, 0, 0, {200, 150, 100});
    test::SetPixel(less, 0, 0, {200, 150, 100});
    EXPECT_NE(Vibrance(more, std::numeric_limits<int>::max()), 0);
    EXPECT_EQ(test::PixelAt(more, 0, 0), (test::Rgb{200, 0, 0}));
    EXPECT_NE(Vibrance(less, std::numeric_limits<int>::min()), 0);
    EXPECT_EQ(test::PixelAt(less, 0, 0), (test::Rgb{200, 255, 255}));
}

void ExpectPlainEqualized(const CDibImage& before) {
    CDibImage image = before;
    ASSERT_EQ(HistEqualize(image), 1);
    const int bytes = before.GetWidth() * before.GetBpp() / 8, height = before.GetHeight();
    std::vector<double> upTo(256, 0);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < bytes; ++x)
            for (std::size_t level = before.GetBits(y)[x]; level < 256; ++level)
                ++upTo[level];
    const double total = static_cast<double>(bytes) * height;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < bytes; ++x)
            ASSERT_EQ(image.GetBits(y)[x],
                      static_cast<int>(upTo[before.GetBits(y)[x]] / total * 255.0));
}

TEST(HistEqualize, EachLevelBecomesTheShareOfSamplesUpToIt) {
    for (const int bpp : {8, 24})
        for (const auto& [width, height] :
             {std::pair{1, 1}, {1, 9}, {2, 1}, {7, 7}, {17, 16}, {33, 21}, {200, 150}}) {
            ExpectPlainEqualized(test::Noise(width, height, bpp, 4));
            ExpectPlainEqualized(test::SmoothPicture(width, height, bpp));
        }
}

TEST(HistEqualize, ASingleValueTurnsWhite) {
    for (const int bpp : {8, 24})
        for (const int level : {0, 99, 255}) {
            CDibImage image = test::Filled(13, 7, bpp, static_cast<std::uint8_t>(level));
            ASSERT_EQ(HistEqualize(image), 1);
            test::ExpectSamePixels(image, test::Filled(13, 7, bpp, 255));
        }
}

TEST(HistEqualize, BlackAndWhiteStaysPalettesAreNormalisedAndEmptyIsRefused) {
    CDibImage bits = test::Noise(20, 20, 1), empty, palette = test::Noise(20, 20, 4);
    const CDibImage before = bits;
    EXPECT_EQ(HistEqualize(bits), 1);
    test::ExpectSamePixels(bits, before);
    EXPECT_EQ(HistEqualize(empty), 0);
    test::SetPalette(palette, {{250, 10, 10}, {10, 200, 10}});
    EXPECT_EQ(HistEqualize(palette), 1);
    EXPECT_EQ(palette.GetBpp(), 24);
}

TEST(ToneOfColors, ThreadsChangeNothing) {
    CDibImage first;
    for (const int count : {1, 2, 7}) {
        const test::Threads threads(count);
        CDibImage image = test::Noise(400, 190, 24);
        ASSERT_NE(Vibrance(image, 120), 0);
        ASSERT_NE(HistEqualize(image), 0);
        if (count == 1)
            first = image;
        test::ExpectSamePixels(image, first);
    }
}

}  // namespace
}  // namespace velloran

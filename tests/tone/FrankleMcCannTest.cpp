#include "tone/FrankleMcCann.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "core/DibImage.h"
#include "support/Images.h"
#include "support/Threads.h"
#include "tone/FrankleMcCannPasses.h"
#include "tone/RefusalSweep.h"
#include "tone/ToneSteps.h"

namespace velloran {
namespace {

// The method once more, pixel by pixel, in the order of the pixels.

struct PlainChannel {
    int width = 0, height = 0;
    std::vector<int> samples;  // rows from the top
    int& At(std::vector<int>& values, int x, int y) const {
        return values[static_cast<std::size_t>(y * width + x)];
    }
};

PlainChannel ChannelOf(const CDibImage& image, int channel) {
    PlainChannel plain{image.GetWidth(), image.GetHeight(), {}};
    for (int y = 0; y < plain.height; ++y)
        for (int x = 0; x < plain.width; ++x) {
            const test::Rgb c = test::PixelAt(image, x, y);
            plain.samples.push_back(channel == 0 ? c.blue : (channel == 1 ? c.green : c.red));
        }
    return plain;
}

struct PlainEnds {
    int low, high;
    bool IsFlat() const { return high - low < 10; }
};

PlainEnds EndsOf(const PlainChannel& channel) {
    const float area = static_cast<float>(channel.width * channel.height);
    const int target = static_cast<int>(area * 0.01F);
    const auto countFrom = [&](int low, int high) {
        int count = 0;
        for (const int sample : channel.samples)
            count += sample >= low && sample <= high ? 1 : 0;
        return count;
    };
    PlainEnds ends{0, 255};
    while (countFrom(ends.high, 255) < target)
        --ends.high;
    while (countFrom(0, ends.low) < target)
        ++ends.low;
    return ends;
}

int PlainMeet(int log, int result, int otherLog, int otherResult) {
    return (result + 1 + std::min(32767, log - otherLog + otherResult)) / 2;
}

void PlainPasses(const PlainChannel& channel, std::vector<int>& logs, std::vector<int>& result,
                 int shift) {
    for (int y = 0; y < channel.height; ++y)
        for (int x = 0; x < channel.width; ++x)
            if (const int q = x - shift; q >= 0 && q < channel.width)
                channel.At(result, x, y) =
                    PlainMeet(channel.At(logs, x, y), channel.At(result, x, y),
                              channel.At(logs, q, y), channel.At(result, q, y));
    for (int y = 0; y < channel.height; ++y)
        for (int x = 0; x < channel.width; ++x)
            if (const int q = y - shift; q >= 0 && q < channel.height)
                channel.At(result, x, y) =
                    PlainMeet(channel.At(logs, x, y), channel.At(result, x, y),
                              channel.At(logs, x, q), channel.At(result, x, q));
}

std::vector<int> PlainRetinex(const PlainChannel& channel, int high, int iterations) {
    std::vector<int> logs, result(channel.samples.size(), 32767);
    for (const int v : channel.samples)
        logs.push_back(v == 0     ? 0
                       : v > high ? 32767
                                  : static_cast<int>(std::log(v) * 32767.0 / std::log(high) + 0.5));
    const int shorter = std::min(channel.width, channel.height);
    int shift =
        static_cast<int>(std::pow(2, static_cast<int>(std::log(shorter) / std::log(2.0)) - 1));
    for (; shift != 0; shift = -(shift / 2))
        for (int i = 0; i < iterations; ++i)
            PlainPasses(channel, logs, result, shift);
    for (int& value : result)
        value = std::min(static_cast<int>(std::exp(value * std::log(255.0) / 32767.0) + 0.5), 255);
    return result;
}

void ExpectPlain(const CDibImage& before, int iterations) {
    CDibImage image = before;
    ASSERT_EQ(FrankleMcCannRetinex(image, iterations), 1);
    ASSERT_EQ(image.GetBpp(), before.GetBpp());
    std::vector<std::vector<int>> expected;
    const int channels = image.GetBpp() == 24 ? 3 : 1;
    bool allFlat = true;
    for (int c = 0; c < channels; ++c) {
        const PlainChannel channel = ChannelOf(before, c);
        const PlainEnds ends = EndsOf(channel);
        allFlat = allFlat && ends.IsFlat();
        expected.push_back(ends.IsFlat() ? channel.samples
                                         : PlainRetinex(channel, ends.high, iterations));
    }
    for (int c = 0; c < channels; ++c) {
        const std::vector<int> actual = ChannelOf(image, c).samples;
        for (std::size_t i = 0; i < actual.size(); ++i)
            ASSERT_EQ(actual[i], allFlat ? 255 : expected[static_cast<std::size_t>(c)][i])
                << "channel " << c << ", pixel " << i << " of " << before.GetWidth() << " x "
                << before.GetHeight();
    }
}

/// Light that falls across a noisy picture.
CDibImage ShadedNoise(int width, int height, int bpp, std::uint32_t seed) {
    CDibImage image = test::Noise(width, height, bpp, seed);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width * bpp / 8; ++x)
            image.GetBits(y)[x] = static_cast<std::uint8_t>(
                image.GetBits(y)[x] * (1 + x * 8 / bpp + y) / (width + height));
    return image;
}

TEST(FrankleMcCann, MeetsTheNeighboursOfEveryShiftInOrder) {
    struct Size {
        int width, height;
    };
    // Shifts of both signs, shorter and longer than the runs that are vectorised, on widths around
    // them, and shifts that no row or column is long enough for.
    for (const Size size : {Size{10, 10}, Size{64, 64}, Size{65, 130}, Size{129, 128},
                            Size{300, 257}, Size{20, 300}, Size{333, 17}})
        ExpectPlain(ShadedNoise(size.width, size.height, 8, 5), 1);
    ExpectPlain(ShadedNoise(33, 40, 24, 9), 1);
    ExpectPlain(ShadedNoise(70, 66, 8, 2), 3);
}

TEST(FrankleMcCann, EveryWidthAndHeightUpToSeventeen) {
    for (int width = 1; width <= 17; ++width)
        for (int height = 1; height <= 17; height += 3) {
            ExpectPlain(test::Noise(width, height, 8, static_cast<std::uint32_t>(width)), 1);
            ExpectPlain(test::Noise(height, width, 24, static_cast<std::uint32_t>(height)), 1);
        }
}

TEST(FrankleMcCann, SmoothTonesAndAPictureWiderThanSixteenBits) {
    for (const int bpp : {8, 24})
        ExpectPlain(test::SmoothPicture(90, 70, bpp), 1);
    ExpectPlain(ShadedNoise(33000, 9, 8, 3), 1);
}

TEST(FrankleMcCann, TheShorterSideDecidesTheFirstShift) {
    // The shift starts at 2. At 4 the corner would also meet what lies four rows off: the rows
    // from 4 on are so dark that this would show.
    ExpectPlain(ShadedNoise(5, 300, 8, 11), 1);
    ExpectPlain(ShadedNoise(300, 5, 8, 11), 1);
}

TEST(FrankleMcCann, AFlatPictureBecomesFullyWhite) {
    for (const int bpp : {8, 24})
        for (const int level : {0, 5, 128, 255}) {
            CDibImage image = test::Filled(40, 31, bpp, static_cast<std::uint8_t>(level));
            EXPECT_EQ(FrankleMcCannRetinex(image, 1), 1);
            test::ExpectSamePixels(image, test::Filled(40, 31, bpp, 255));
        }
}

TEST(FrankleMcCann, ARangeOfNineIsFlatAndOneOfTenIsNot) {
    for (const int range : {9, 10}) {
        CDibImage image = test::Filled(40, 40, 8, 100);
        for (int y = 0; y < 20; ++y)
            for (int x = 0; x < 40; ++x)
                test::SetIndex(image, x, y, 100 + range);
        const CDibImage before = image;
        ASSERT_EQ(FrankleMcCannRetinex(image, 1), 1);
        EXPECT_EQ(test::IndexAt(image, 0, 39) == 255, range == 9);
        ExpectPlain(before, 1);
    }
}

TEST(FrankleMcCann, AFlatChannelStaysBesideOnesThatAreNot) {
    CDibImage image = ShadedNoise(30, 30, 24, 4);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 30; ++x) {
            test::Rgb c = test::PixelAt(image, x, y);
            c.green = 77;
            test::SetPixel(image, x, y, c);
        }
    ExpectPlain(image, 1);
    ASSERT_EQ(FrankleMcCannRetinex(image, 1), 1);
    EXPECT_EQ(test::PixelAt(image, 3, 4).green, 77);
}

TEST(FrankleMcCann, LittleDepthsAreNormalised) {
    CDibImage bits = test::Noise(40, 40, 1), empty;
    EXPECT_EQ(FrankleMcCannRetinex(bits, 1), 1);
    EXPECT_TRUE(bits.IsGrayScale());
    CDibImage palette = test::Noise(40, 40, 4);
    test::SetPalette(palette, {{255, 0, 0}, {0, 90, 255}, {20, 200, 40}});
    EXPECT_EQ(FrankleMcCannRetinex(palette, 1), 1);
    EXPECT_EQ(palette.GetBpp(), 24);
    EXPECT_EQ(FrankleMcCannRetinex(empty, 1), 0);
}

TEST(FrankleMcCann, WithoutIterationsAllIsWhite) {
    for (const int iterations : {0, -1, std::numeric_limits<int>::min()}) {
        CDibImage image = test::Noise(40, 40, 8);
        EXPECT_EQ(FrankleMcCannRetinex(image, iterations), 1);
        test::ExpectSamePixels(image, test::Filled(40, 40, 8, 255));
    }
}

TEST(FrankleMcCann, TheResultDoesNotHangOnTheNumberOfThreads) {
    CDibImage first;
    for (const int count : {1, 2, 7}) {
        const test::Threads threads(count);
        CDibImage image = ShadedNoise(600, 145, 24, 6);
        ASSERT_EQ(FrankleMcCannRetinex(image, 1), 1);
        if (count == 1)
            first = image;
        test::ExpectSamePixels(image, first);
    }
}

TEST(FrankleMcCann, WithoutMemoryThePixelsStay) {
    const CDibImage before = ShadedNoise(50, 40, 24, 3);
    const int failed = test::SweepRefusals(
        before, [](CDibImage& image) { return FrankleMcCannRetinex(image, 1); });
    EXPECT_GT(failed, 1);
}

TEST(FrankleMcCannPasses, AShiftAsLongAsTheSideMeetsNothing) {
    const std::vector<std::uint16_t> logs(12, 100);
    std::vector<std::uint16_t> result(12, 20000);
    const RetinexPlanes planes{logs.data(), result.data(), 4, 3};
    for (const int shift : {4, -4, 1 << 30, -(1 << 30)}) {
        MeetAlongRows(planes, shift);
        MeetDownColumns(planes, shift);
    }
    EXPECT_EQ(result, std::vector<std::uint16_t>(12, 20000));
}

}  // namespace
}  // namespace velloran

#include "tone/AutoLevelsTables.h"

#include <gtest/gtest.h>

#include <array>

#include "core/Rounding.h"
#include "support/EachForm.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"
#include "support/Threads.h"
#include "tone/AutoLevelsCount.h"
#include "tone/AutoLevelsLuma.h"

namespace velloran {
namespace {

struct Points {
    int low, high;
    bool operator==(const Points&) const = default;
};

void PrintTo(const Points& points, std::ostream* out) {
    *out << points.low << ".." << points.high;
}

Points Clip(const Histogram& histogram, double low, double high) {
    Points points{-1, -1};
    ClipPoints(histogram, low, high, points.low, points.high);
    return points;
}

Histogram With(std::initializer_list<std::array<std::uint32_t, 2>> bins) {
    Histogram histogram{};
    for (const auto& [level, count] : bins)
        histogram[level] = count;
    return histogram;
}

TEST(ClipPoints, TellsTheLevelBeyondTheOneAtWhichTheCountStopped) {
    // 1000 pixels, 10 at each end to be passed: the count stops at 20 and at 230.
    const Histogram histogram = With({{20, 10}, {100, 980}, {230, 10}});
    EXPECT_EQ(Clip(histogram, 0.01, 0.01), (Points{100, 100}));
    const Histogram wide = With({{20, 10}, {21, 500}, {229, 480}, {230, 10}});
    EXPECT_EQ(Clip(wide, 0.01, 0.01), (Points{21, 229}));
}

TEST(ClipPoints, ASpikeAtBlackStopsTheLowScanAtOnce) {
    Histogram histogram{};
    histogram.fill(1);
    histogram[0] = 1000;  // 1255 pixels; the target 8 is nearest before the first step
    EXPECT_EQ(Clip(histogram, 0.006, 0.006).low, 1);
}

TEST(ClipPoints, EqualDistancesDoNotStop) {
    // Target 5 of 10: after level 50 both 0 and 10 are 5 away.
    const Histogram histogram = With({{51, 10}});
    EXPECT_EQ(Clip(histogram, 0.5, 0.5), (Points{0, 255}));
}

TEST(ClipPoints, AnEmptyHistogramKeepsTheWholeRange) {
    EXPECT_EQ(Clip(Histogram{}, 0.006, 0.006), (Points{0, 255}));
}

TEST(ClipPoints, PointsThatCrossAreSwapped) {
    // 90 of 100 from below stop before 200, 90 from above before 100: 200 and 100.
    const Histogram histogram = With({{100, 90}, {200, 90}});
    EXPECT_EQ(Clip(histogram, 0.55, 0.55), (Points{100, 200}));
}

TEST(ClipPoints, CountsOfAGigapixelDoNotOverflow) {
    const Histogram histogram = With({{10, 1U << 29}, {11, 1U << 29}, {200, 5}});
    EXPECT_EQ(Clip(histogram, 0.006, 0.006), (Points{10, 11}));
}

TEST(StretchTable, IsTheIdentityWithoutARange) {
    PixelMap table{};
    for (const Points& p : {Points{7, 7}, Points{0, 255}}) {
        StretchTable(table, p.low, p.high);
        EXPECT_EQ(table, IdentityPixelMap());
    }
}

TEST(StretchTable, StretchesAndRounds) {
    PixelMap table{}, turned{};
    StretchTable(table, 50, 200);
    EXPECT_EQ(table[49], 0);
    EXPECT_EQ(table[50], 0);
    EXPECT_EQ(table[51], 2);     // 1.7
    EXPECT_EQ(table[125], 128);  // 127.5
    EXPECT_EQ(table[200], 255);
    EXPECT_EQ(table[201], 255);
    StretchTable(turned, 200, 50);
    EXPECT_EQ(turned, table);
}

TEST(StretchTable, ARangeOfOneLevelSeparatesBlackFromWhite) {
    PixelMap table{};
    StretchTable(table, 99, 100);
    EXPECT_EQ(table[99], 0);
    EXPECT_EQ(table[100], 255);
}

TEST(BrightnessTable, StretchesByHalfAndLifts) {
    // The clip points 21 and 229 move to 10 and 242; the gamma above darkens mid tones by 1 to 3.
    const Histogram wide = With({{20, 10}, {21, 500}, {229, 480}, {230, 10}});
    const PixelMap table = BrightnessTable(wide, 0.01);
    EXPECT_EQ(table[10], 0);
    EXPECT_EQ(table[242], 255);
    EXPECT_EQ(table[243], 255);
    // 100: 90 * 255 / 232 is 98.9, so 99; 255 * (99 / 255) ^ 1.0402 is 95.3.
    EXPECT_EQ(table[100], 95);
}

TEST(FindBleachPoints, TheTwoDepthsSumUpOtherLevels) {
    const Histogram histogram = With({{2, 1000}, {50, 100}, {60, 100}});
    // Levels 5 to 126 hold 200, half of which is reached before 60; 0 to 121 hold 1200.
    EXPECT_EQ(FindBleachPoints(histogram, {0.5, 0.75}, 5).low, 60);
    EXPECT_EQ(FindBleachPoints(histogram, {0.5, 0.75}, 0).low, 255);
    // At the upper end the other way round: 122 to 126 count for one depth only. Half of 1200 is
    // nearest behind 60, before the 1000 are added.
    const Histogram upper = With({{50, 100}, {60, 100}, {125, 1000}});
    EXPECT_EQ(FindBleachPoints(upper, {0.5, 0.75}, 5).low, 125);
    EXPECT_EQ(FindBleachPoints(upper, {0.5, 0.75}, 0).low, 60);
}

TEST(FindBleachPoints, TheLightPointSeesTheLevels127To253Only) {
    const Histogram histogram = With({{126, 500}, {127, 40}, {253, 60}, {254, 900}, {255, 900}});
    // 75 of 100: 60 are passed, and 100 is farther away.
    EXPECT_EQ(FindBleachPoints(histogram, {0.5, 0.75}, 5).high, 127);
}

TEST(FindBleachPoints, WithoutDarkOrLightPixelsThePointsAreWhite) {
    const BleachPoints none = FindBleachPoints(Histogram{}, {0.5, 0.75}, 5);
    EXPECT_EQ(none.low, 255);
    EXPECT_EQ(none.high, 255);
}

TEST(AutoLevelsLuma, EveryFormGivesTheWeightedSumAtAnyLength) {
    const CDibImage noise = test::Noise(600, 1, 24);
    test::InEachForm([&](const std::string&) {
        for (std::size_t count = 0; count <= 600; ++count) {
            std::vector<std::uint8_t> luma(count + 64, 0xA5), expected = luma;
            for (std::size_t i = 0; i < count; ++i) {
                const std::uint8_t* pixel = noise.GetBits(0) + 3 * i;
                expected[i] = static_cast<std::uint8_t>(
                    (601 * pixel[1] + 306 * pixel[2] + 117 * pixel[0]) / 1024);
            }
            // The last pixel ends the memory, so that a read beyond it is found.
            const std::vector<std::uint8_t> pixels(noise.GetBits(0), noise.GetBits(0) + 3 * count);
            LumaOfPixels(pixels.data(), count, luma.data());
            ASSERT_EQ(luma, expected) << count << " pixels";
        }
    });
}

TEST(AutoLevelsLuma, IsExactForEveryColorInEveryForm) {
    std::vector<std::uint8_t> pixels(3 * 65536), luma(65536);
    test::InEachForm([&](const std::string&) {
        for (int red = 0; red < 256; red += 3) {  // 0 and 255 among them
            for (std::size_t i = 0; i < luma.size(); ++i) {
                pixels[3 * i] = static_cast<std::uint8_t>(i);
                pixels[3 * i + 1] = static_cast<std::uint8_t>(i >> 8);
                pixels[3 * i + 2] = static_cast<std::uint8_t>(red);
            }
            LumaOfPixels(pixels.data(), luma.size(), luma.data());
            for (std::size_t i = 0; i < luma.size(); ++i)
                ASSERT_EQ(
                    luma[i],
                    (601 * (i >> 8) + 306 * static_cast<std::size_t>(red) + 117 * (i & 255)) / 1024)
                    << i << ", red " << red;
        }
    });
}

TEST(AutoLevelsLuma, IsExactAtTheCornersOfTheColorCube) {
    test::InEachForm([&](const std::string&) {
        std::vector<std::uint8_t> pixels, luma(40);
        for (int i = 0; i < 40; ++i)
            for (int bit = 1; bit <= 4; bit *= 2)
                pixels.push_back((i & bit) != 0 ? 255 : 0);
        LumaOfPixels(pixels.data(), luma.size(), luma.data());
        constexpr int kExpected[] = {0, 29, 149, 178, 76, 105, 225, 255};  // blue, green, red bits
        for (std::size_t i = 0; i < luma.size(); ++i)
            ASSERT_EQ(luma[i], kExpected[i % 8]) << "pixel " << i;
    });
}

TEST(AutoLevelsCount, CountsEveryPixelOnceWithAnyNumberOfThreads) {
    for (const int width : {1, 2, 3, 5, 17, 511, 512, 513, 9100, 9103}) {
        const CDibImage color = test::Noise(width, 9, 24), gray = test::Noise(width, 9, 8);
        std::array<Histogram, 4> channels{};
        Histogram bytes{};
        for (int y = 0; y < 9; ++y)
            for (int x = 0; x < width; ++x) {
                const test::Rgb c = test::PixelAt(color, x, y);
                ++channels[0][static_cast<std::size_t>(c.blue)];
                ++channels[1][static_cast<std::size_t>(c.green)];
                ++channels[2][static_cast<std::size_t>(c.red)];
                ++channels[3][static_cast<std::size_t>(
                    (601 * c.green + 306 * c.red + 117 * c.blue) / 1024)];
                ++bytes[static_cast<std::size_t>(test::IndexAt(gray, x, y))];
            }
        for (const int count : {1, 2, 7}) {
            const test::Threads threads(count);
            EXPECT_EQ(CountBytes(ViewOf(gray)), bytes) << width;
            EXPECT_EQ(CountLuma(ViewOf(color)), channels[3]) << width;
            EXPECT_EQ(CountChannelsAndLuma(ViewOf(color)), channels) << width;
            const std::array<Histogram, 3> three = CountChannels(ViewOf(color));
            for (std::size_t c = 0; c < 3; ++c)
                EXPECT_EQ(three[c], channels[c]) << width;
        }
    }
}

TEST(AutoLevelsCount, CountsTheSameWithoutMemoryForItsTables) {
    const CDibImage color = test::Noise(400, 301, 24), gray = test::Noise(601, 300, 8);
    const Histogram bytes = CountBytes(ViewOf(gray)), luma = CountLuma(ViewOf(color));
    const std::array<Histogram, 3> channels = CountChannels(ViewOf(color));
    const std::array<Histogram, 4> all = CountChannelsAndLuma(ViewOf(color));
    const test::FailAllocation fail(1);
    EXPECT_EQ(CountBytes(ViewOf(gray)), bytes);
    EXPECT_EQ(CountLuma(ViewOf(color)), luma);
    EXPECT_EQ(CountChannels(ViewOf(color)), channels);
    EXPECT_EQ(CountChannelsAndLuma(ViewOf(color)), all);
    EXPECT_TRUE(fail.Happened());
}

}  // namespace
}  // namespace velloran

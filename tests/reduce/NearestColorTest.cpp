#include "reduce/NearestColor.h"

#include <gtest/gtest.h>

#include <optional>
#include <utility>

#include "support/FailingAllocator.h"
#include "support/Images.h"

namespace velloran {
namespace {

/// Entry by entry; the first of the nearest.
int PlainNearest(const Palette& palette, int blue, int green, int red) {
    int best = 0, least = 1 << 30;
    for (std::size_t i = 0; i < palette.size(); ++i) {
        const int b = palette[i].blue - blue, g = palette[i].green - green,
                  r = palette[i].red - red;
        if (b * b + g * g + r * r < least) {
            least = b * b + g * g + r * r;
            best = static_cast<int>(i);
        }
    }
    return best;
}

Palette NoisePalette(int count) {
    const CDibImage image = test::Noise(count, 1, 24, static_cast<std::uint32_t>(count));
    Palette palette;
    for (int x = 0; x < count; ++x) {
        const test::Rgb c = test::PixelAt(image, x, 0);
        palette.push_back({static_cast<std::uint8_t>(c.blue), static_cast<std::uint8_t>(c.green),
                           static_cast<std::uint8_t>(c.red), 0});
    }
    return palette;
}

void ExpectPlainResults(NearestColor& nearest, const Palette& palette) {
    for (int blue = 0; blue < 256; blue += 15)
        for (int green = 0; green < 256; green += 15)
            for (int red = 0; red < 256; red += 15)
                ASSERT_EQ(nearest(static_cast<std::uint8_t>(blue), static_cast<std::uint8_t>(green),
                                  static_cast<std::uint8_t>(red)),
                          PlainNearest(palette, blue, green, red));
}

TEST(NearestColor, EqualsASearchEntryByEntryAlsoWhenAskedAgain) {
    for (const int count : {1, 2, 3, 15, 16, 17, 31, 32, 33, 255, 256}) {
        const Palette palette = NoisePalette(count);
        NearestColor nearest(palette);
        ExpectPlainResults(nearest, palette);
        ExpectPlainResults(nearest, palette);  // from the cache
    }
}

TEST(NearestColor, WithoutMemoryForTheCacheTheResultsAreTheSame) {
    const Palette palette = NoisePalette(200);
    for (const long failing : {1, 2}) {
        std::optional<test::FailAllocation> fail(std::in_place, failing);
        NearestColor nearest(palette);
        fail.reset();
        ExpectPlainResults(nearest, palette);
        ExpectPlainResults(nearest, palette);
    }
}

TEST(NearestColor, TheLowerIndexWinsTiesAlsoFromTheCache) {
    // 10 lies halfway between 0 and 20, and entries 1, 2, 17 and 40 are equal.
    Palette palette(41, {200, 200, 200, 0});
    palette[1] = palette[40] = {0, 0, 0, 0};
    palette[2] = palette[17] = {20, 20, 20, 0};
    NearestColor nearest(palette);
    for (int times = 0; times < 3; ++times) {
        EXPECT_EQ(nearest(10, 10, 10), 1);
        EXPECT_EQ(nearest(20, 20, 20), 2);
        EXPECT_EQ(nearest(200, 200, 200), 0);
    }
}

TEST(NearestColor, ChannelsAreNotWeighted) {
    const Palette palette{{100, 0, 0, 0}, {0, 99, 0, 0}, {0, 0, 98, 0}};
    NearestColor nearest(palette);
    EXPECT_EQ(nearest(0, 0, 0), 2);
}

TEST(NearestColor, NoColorFindsWhatLiesBehindTheLastEntry) {
    NearestColor nearest({{0, 0, 0, 0}});
    EXPECT_EQ(nearest(255, 255, 255), 0);
    EXPECT_EQ(nearest(0, 0, 0), 0);
}

TEST(NearestColor, All16777216ColorsFindTheirCornerOfTheCube) {
    // Two levels a channel: the bits above 127 name the entry.
    Palette palette;
    for (int i = 0; i < 8; ++i)
        palette.push_back({static_cast<std::uint8_t>(i & 1 ? 255 : 0),
                           static_cast<std::uint8_t>(i & 2 ? 255 : 0),
                           static_cast<std::uint8_t>(i & 4 ? 255 : 0), 0});
    NearestColor nearest(palette);
    int wrong = 0;
    for (std::uint32_t color = 0; color < 1 << 24; ++color) {
        const int expected = static_cast<int>(color >> 7 & 1) |
                             static_cast<int>(color >> 15 & 1) << 1 |
                             static_cast<int>(color >> 23 & 1) << 2;
        wrong += nearest(static_cast<std::uint8_t>(color), static_cast<std::uint8_t>(color >> 8),
                         static_cast<std::uint8_t>(color >> 16)) != expected;
    }
    EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace velloran

#include "tone/Levels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <utility>

#include "core/DibImage.h"
#include "support/Images.h"
#include "tone/ToneSteps.h"

namespace velloran {
namespace {

/// 0 to 255 in one row of samples, twice.
CDibImage Ramp(int bpp) {
    CDibImage image = test::Filled(256, 2, bpp, 0);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 256; ++x) {
            if (bpp == 24)
                test::SetPixel(image, x, y, {x, x, x});
            else
                test::SetIndex(image, x, y, x);
        }
    return image;
}

int PlainLevel(int i, int a, int b) {
    const int low = std::min(a, b), high = std::max(a, b);
    if (a == b || (a == 0 && b >= 255))
        return i;
    if (i <= low || i >= high)
        return i <= low ? 0 : 255;
    return static_cast<int>((i - low) / static_cast<double>(high - low) * 255.0 + 0.5);
}

TEST(LevelTable, IsLinearBetweenItsPointsInEitherOrder) {
    for (const auto& [shadow, light] : {std::pair{1, 255}, {10, 20}, {200, 40}, {0, 128}, {255, 0}})
        for (int i = 0; i < 256; ++i)
            EXPECT_EQ(LevelTable(shadow, light)[static_cast<std::size_t>(i)],
                      PlainLevel(i, shadow, light));
    EXPECT_EQ(LevelTable(100, 104)[101], 64);  // 63.75 and a half, truncated
}

TEST(LevelTable, IsThatLineForEveryPairOfPoints) {
    for (int shadow = 0; shadow < 256; shadow += 3)
        for (int light = 0; light < 256; light += 5) {
            const PixelMap table = LevelTable(shadow, light);
            for (int i = 0; i < 256; ++i)
                ASSERT_EQ(table[static_cast<std::size_t>(i)], PlainLevel(i, shadow, light))
                    << shadow << ", " << light;
        }
}

TEST(LevelTable, IsTheIdentityForEqualPointsAndTheWholeRange) {
    EXPECT_EQ(LevelTable(77, 77), IdentityPixelMap());
    EXPECT_EQ(LevelTable(0, 255), IdentityPixelMap());
}

TEST(ApplyLevels, TheMasterByteStretchesAGrayImage) {
    CDibImage image = Ramp(8);
    ASSERT_EQ(ApplyLevels(image, 0x01000000, 0xFFFFFFFF), 1);
    for (int x = 0; x < 256; ++x)
        EXPECT_EQ(test::IndexAt(image, x, 0), PlainLevel(x, 1, 255));
}

TEST(ApplyLevels, AnEightBitImageIgnoresTheChannelBytes) {
    const CDibImage before = Ramp(8);
    CDibImage image = before;
    EXPECT_EQ(ApplyLevels(image, 0x00203040, 0xFF807060), 0);
    EXPECT_EQ(ApplyLevels(image, 0x40203040, 0x40807060), 0);
    test::ExpectSamePixels(image, before);
}

TEST(ApplyLevels, AnEightBitPaletteHasItsIndicesMapped) {
    CDibImage image = Ramp(8);
    test::SetPalette(image, {{1, 2, 3}, {200, 100, 50}});
    ASSERT_EQ(ApplyLevels(image, 0x10000000, 0x40FFFFFF), 1);
    EXPECT_EQ(test::IndexAt(image, 0x20, 1), PlainLevel(0x20, 0x10, 0x40));
    EXPECT_EQ(image.GetPalette()[0].red, 1);
}

TEST(ApplyLevels, EachChannelGoesThroughItsOwnTableAndThenTheMaster) {
    CDibImage image = Ramp(24);
    // From the low byte: red 16 to 200, green 50 and 50, blue 0 to 99, master 20 to 240.
    ASSERT_EQ(ApplyLevels(image, 0x14003210, 0xF06332C8), 1);
    for (int x = 0; x < 256; ++x) {
        const auto master = [](int v) { return PlainLevel(v, 0x14, 0xF0); };
        EXPECT_EQ(test::PixelAt(image, x, 1), (test::Rgb{master(PlainLevel(x, 16, 200)), master(x),
                                                         master(PlainLevel(x, 0, 99))}));
    }
}

TEST(ApplyLevels, APairOfEqualPointsLeavesItsChannelAsItIs) {
    CDibImage image = Ramp(24);
    ASSERT_EQ(ApplyLevels(image, 0x00500000, 0xFF50FFF0), 1);  // blue 80 and 80, red 0 to 240
    for (int x = 0; x < 256; ++x)
        EXPECT_EQ(test::PixelAt(image, x, 0), (test::Rgb{PlainLevel(x, 0, 240), x, x}));
}

TEST(ApplyLevels, FollowsItsTablesOnPicturesOfAnyKind) {
    for (const auto& [width, height] : {std::pair{2, 2}, {3, 17}, {17, 5}, {301, 203}})
        for (CDibImage image :
             {test::Noise(width, height, 24, 3), test::SmoothPicture(width, height, 24)}) {
            const CDibImage before = image;
            ASSERT_EQ(ApplyLevels(image, 0x08302010, 0xF0C0D0E0), 1);
            const auto level = [](int v, int low, int high) {
                return PlainLevel(PlainLevel(v, low, high), 0x08, 0xF0);
            };
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x) {
                    const test::Rgb c = test::PixelAt(before, x, y);
                    ASSERT_EQ(test::PixelAt(image, x, y),
                              (test::Rgb{level(c.red, 0x10, 0xE0), level(c.green, 0x20, 0xD0),
                                         level(c.blue, 0x30, 0xC0)}));
                }
        }
}

TEST(ApplyLevels, NeutralEqualAndTooSmallAreRefused) {
    const CDibImage before = test::Noise(9, 9, 24);
    CDibImage image = before, empty, thin = test::Noise(1, 40, 24), low = test::Noise(40, 1, 8);
    EXPECT_EQ(ApplyLevels(image, 0, 0xFFFFFFFF), 0);
    EXPECT_EQ(ApplyLevels(image, 0x12345678, 0x12345678), 0);
    test::ExpectSamePixels(image, before);
    EXPECT_EQ(ApplyLevels(empty, 1, 2), 0);
    EXPECT_EQ(ApplyLevels(thin, 1, 2), 0);
    EXPECT_EQ(ApplyLevels(low, 0x10000000, 0x20000000), 0);
}

TEST(LevelsPoint, CutsAShareOfTheTonalMassFromEitherEnd) {
    std::array<std::uint32_t, 256> histogram{};
    histogram[10] = 200;  // mass 2000
    histogram[100] = 20;  // 2000
    histogram[200] = 60;  // 12000, of 16000; by counts alone the first would be the largest
    EXPECT_EQ(LevelsPoint(histogram, 12.5, true), 10);
    EXPECT_EQ(LevelsPoint(histogram, 12.6, true), 100);
    EXPECT_EQ(LevelsPoint(histogram, 25, true), 100);
    EXPECT_EQ(LevelsPoint(histogram, 25.1, true), 200);
    EXPECT_EQ(LevelsPoint(histogram, 75, false), 200);
    EXPECT_EQ(LevelsPoint(histogram, 75.1, false), 100);
    EXPECT_EQ(LevelsPoint(histogram, 95, false), 10);
    EXPECT_EQ(LevelsPoint(histogram, 0, true), 0);
    EXPECT_EQ(LevelsPoint(histogram, 0, false), 255);
}

TEST(LevelsPoint, ThatIsNeverReachedIsBeyondTheEnd) {
    std::array<std::uint32_t, 256> histogram{};
    EXPECT_EQ(LevelsPoint(histogram, 1, true), 256);  // no mass at all
    EXPECT_EQ(LevelsPoint(histogram, 1, false), 0);
    histogram[1] = 100;
    EXPECT_EQ(LevelsPoint(histogram, 101, true), 256);
    EXPECT_EQ(LevelsPoint(histogram, 101, false), 0);  // 100 rounded down to a multiple of 256
    histogram[1] = 0xFFFFFFFF;                         // the counters wrap and do not fail
    histogram[255] = 0xFFFFFFFF;
    EXPECT_GE(LevelsPoint(histogram, 50, true), 0);
}

}  // namespace
}  // namespace velloran

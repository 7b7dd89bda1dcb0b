#include "tone/ReplaceColor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "core/DibImage.h"
#include "support/Images.h"
#include "support/Threads.h"
#include "tone/ColorSpaces.h"

namespace velloran {
namespace {

using test::Rgb;

constexpr std::uint32_t kFrom = 0x00203CC8;  // red 200, green 60, blue 32
constexpr std::uint32_t kTo = 0x00F0FA0A;    // red 10, green 250, blue 240
constexpr Rgb kSample{200, 60, 32}, kTarget{10, 250, 240};

double LabDistance(const Rgb& a, const Rgb& b) {
    const Lab p = RgbToLab(a.red, a.green, a.blue), q = RgbToLab(b.red, b.green, b.blue);
    return std::hypot(p.l - q.l, p.a - q.a, p.b - q.b);
}

int PlainSoft(int c, int sample, int target, float t) {
    const float unmixed = (static_cast<float>(c) - static_cast<float>(sample) * t) / (1 - t);
    const int u = unmixed < 0 ? 0 : (unmixed > 255 ? 255 : static_cast<int>(unmixed));
    return static_cast<int>(static_cast<float>(u) * (1 - t) + 0.5F) +
           static_cast<int>(static_cast<float>(target) * t);
}

/// Types 1 to 8 of one color.
Rgb PlainReplaced(int type, const Rgb& c, int threshold) {
    const int sum = c.red + c.green + c.blue;
    bool hit = false;
    if (type == 1) {
        const double e = LabDistance(c, kSample);
        hit = e < threshold;
        if (!hit && e < threshold + 1) {
            const auto t = static_cast<float>(threshold + 1 - e);
            return {PlainSoft(c.red, kSample.red, kTarget.red, t),
                    PlainSoft(c.green, kSample.green, kTarget.green, t),
                    PlainSoft(c.blue, kSample.blue, kTarget.blue, t)};
        }
    } else if (type == 2) {
        hit = std::abs(RgbToHls(c.red, c.green, c.blue).hue -
                       RgbToHls(kSample.red, kSample.green, kSample.blue).hue) <= threshold;
    } else if (type <= 5) {
        const int differences[] = {c.green - c.red, c.blue - c.red, c.blue - c.green};
        hit = std::abs(differences[type - 3]) > threshold;
    } else {
        const int channels[] = {c.red, c.green, c.blue};
        hit = channels[type - 6] * 100 > sum * threshold;
    }
    return hit ? kTarget : c;
}

/// Colors around the sample and anywhere.
CDibImage ColorField() {
    CDibImage image = test::Noise(60, 40, 24, 17);
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 60; ++x) {
            const Rgb c = test::PixelAt(image, x, y);
            test::SetPixel(image, x, y, {180 + c.red % 40, 40 + c.green % 40, 12 + c.blue % 40});
        }
    return image;
}

TEST(ReplaceColor, EveryTypeHasItsOwnRuleForPixels) {
    for (int type = 1; type <= 8; ++type)
        for (const int threshold : {5, 14, 40, 200}) {
            const CDibImage before = ColorField();
            CDibImage image = before;
            ASSERT_EQ(ReplaceColor(type, image, kFrom, kTo, threshold), 1);
            int odd = 0;
            for (int y = 0; y < 40; ++y)
                for (int x = 0; x < 60; ++x) {
                    const Rgb expected =
                        PlainReplaced(type, test::PixelAt(before, x, y), threshold);
                    const Rgb actual = test::PixelAt(image, x, y);
                    // Lab values are floats in the one and doubles in the other.
                    const int off = std::max({std::abs(actual.red - expected.red),
                                              std::abs(actual.green - expected.green),
                                              std::abs(actual.blue - expected.blue)});
                    ASSERT_LE(off, type == 1 ? 1 : 0) << "type " << type << " at " << x << "," << y;
                    odd += off;
                }
            EXPECT_LT(odd, 20);
        }
}

CDibImage OnePixel(const Rgb& c) {
    CDibImage image = test::Filled(1, 1, 24, 0);
    test::SetPixel(image, 0, 0, c);
    return image;
}

TEST(ReplaceColor, SoftEdgeMixesTheRestOfThePixelWithTheTarget) {
    // A gray of 128 is as far from black as its lightness says.
    const double distance = RgbToLab(128, 128, 128).l;
    const int threshold = static_cast<int>(distance);
    const double share = threshold + 1 - distance;
    ASSERT_GT(share, 0.05);
    ASSERT_LT(share, 0.95);
    CDibImage image = test::Filled(1, 1, 24, 128);
    ASSERT_EQ(ReplaceColor(1, image, 0x000000, 0x0000C8, threshold), 1);
    // Without black's share 128 / (1 - share) would be there, at most 255; its own share comes
    // back, and the target's red.
    const double rest = std::min(std::trunc(128 / (1 - share)), 255.0) * (1 - share);
    EXPECT_NEAR(test::PixelAt(image, 0, 0).blue, std::trunc(rest + 0.5), 1);
    EXPECT_NEAR(test::PixelAt(image, 0, 0).red,
                std::min(std::trunc(rest + 0.5) + std::trunc(200 * share), 255.0), 1);
    CDibImage next = test::Filled(1, 1, 24, 128), less = next;
    ASSERT_EQ(ReplaceColor(1, next, 0x000000, 0x0000C8, threshold + 1), 1);
    EXPECT_EQ(test::PixelAt(next, 0, 0), (Rgb{200, 0, 0}));
    ASSERT_EQ(ReplaceColor(1, less, 0x000000, 0x0000C8, threshold - 1), 1);
    EXPECT_EQ(test::PixelAt(less, 0, 0), (Rgb{128, 128, 128}));
}

TEST(ReplaceColor, ThresholdsOfEveryTypeAreOverOrAtTheirLimit) {
    struct Case {
        int type;
        Rgb color;
        int lastHit;  // the largest threshold that still replaces
    };
    constexpr Case kCases[] = {
        {3, {100, 130, 100}, 29}, {4, {90, 0, 130}, 39}, {5, {0, 20, 90}, 69},
        {6, {50, 30, 20}, 49},    {7, {20, 61, 19}, 60}, {8, {10, 15, 75}, 74},
    };
    for (const Case& c : kCases)
        for (const int threshold : {c.lastHit, c.lastHit + 1}) {
            CDibImage image = OnePixel(c.color);
            ASSERT_EQ(ReplaceColor(c.type, image, kFrom, kTo, threshold), 1);
            EXPECT_EQ(test::PixelAt(image, 0, 0), threshold == c.lastHit ? kTarget : c.color)
                << "type " << c.type;
        }
    // The sample's hue: 40 - (40 * 140 + 84) / 168 is 7; hues are replaced at the limit too.
    ASSERT_EQ(RgbToHls(200, 60, 32).hue, 7);
    for (const int threshold : {32, 33}) {
        CDibImage image = OnePixel({255, 255, 0});  // hue 40
        ASSERT_EQ(ReplaceColor(2, image, kFrom, kTo, threshold), 1);
        EXPECT_EQ(test::PixelAt(image, 0, 0), threshold == 33 ? kTarget : (Rgb{255, 255, 0}));
    }
}

TEST(ReplaceColor, PalettesHaveTheirEntriesReplacedAndKeepTheirIndices) {
    for (int type = 1; type <= 8; ++type) {
        CDibImage image = test::Noise(30, 10, 8);
        std::vector<Rgb> entries;
        for (int i = 0; i < 256; ++i)
            entries.push_back({(i * 7) % 256, (i * 31) % 256, (i * 57) % 256});
        entries[5] = kSample;
        test::SetPalette(image, entries);
        const CDibImage before = image;
        ASSERT_EQ(ReplaceColor(type, image, kFrom, kTo, 30), 1);
        for (int i = 0; i < 256; ++i) {
            const PaletteEntry& entry = image.GetPalette()[i];
            const Rgb expected = PlainReplaced(type, entries[static_cast<std::size_t>(i)], 30);
            ASSERT_NEAR(entry.red, expected.red, type == 1 ? 1 : 0);
            ASSERT_NEAR(entry.green, expected.green, type == 1 ? 1 : 0);
            ASSERT_NEAR(entry.blue, expected.blue, type == 1 ? 1 : 0);
        }
        for (int x = 0; x < 30; ++x)
            ASSERT_EQ(test::IndexAt(image, x, 3), test::IndexAt(before, x, 3));
    }
}

TEST(ReplaceColor, GrayImagesKnowOnlyTheFirstTypeByTheRedOfTheColors) {
    const CDibImage before = test::FromRows({{0, 184, 185, 200, 215, 216, 255}});
    for (int type = 2; type <= 8; ++type) {
        CDibImage image = before;
        EXPECT_EQ(ReplaceColor(type, image, kFrom, kTo, 15), 1);
        test::ExpectSamePixels(image, before);
    }
    CDibImage image = before;
    ASSERT_EQ(ReplaceColor(1, image, kFrom, kTo, 15), 1);
    test::ExpectSamePixels(image, test::FromRows({{0, 184, 10, 10, 10, 216, 255}}));
}

TEST(ReplaceColor, HuesAreComparedAsNumbersAndNotAroundTheCircle) {
    // Red just to either side: on the circle they are neighbours.
    const Rgb purplish{255, 0, 111};
    ASSERT_EQ(RgbToHls(255, 7, 0).hue, 1);
    ASSERT_EQ(RgbToHls(255, 0, 111).hue, 239);
    CDibImage image = OnePixel(purplish);
    ASSERT_EQ(ReplaceColor(2, image, 0x000007FF, kTo, 237), 1);
    EXPECT_EQ(test::PixelAt(image, 0, 0), purplish);
    ASSERT_EQ(ReplaceColor(2, image, 0x000007FF, kTo, 238), 1);
    EXPECT_EQ(test::PixelAt(image, 0, 0), kTarget);
}

TEST(ReplaceColor, GrayPixelsHaveTheHueOfBlue) {
    CDibImage image = OnePixel({90, 90, 90});
    ASSERT_EQ(ReplaceColor(2, image, 0x00FF0000, kTo, 0), 1);
    EXPECT_EQ(test::PixelAt(image, 0, 0), kTarget);
}

TEST(ReplaceColor, BlackHasNoShareOfAnyChannel) {
    for (int type = 6; type <= 8; ++type) {
        CDibImage image = OnePixel({0, 0, 0});
        ASSERT_EQ(ReplaceColor(type, image, kFrom, kTo, 1), 1);
        EXPECT_EQ(test::PixelAt(image, 0, 0), (Rgb{0, 0, 0}));
    }
}

TEST(ReplaceColor, AThresholdOfZeroDoesNothingForDifferencesAndShares) {
    for (int type = 3; type <= 8; ++type) {
        const CDibImage before = ColorField();
        CDibImage image = before;
        EXPECT_EQ(ReplaceColor(type, image, kFrom, kTo, 0), 0);
        test::ExpectSamePixels(image, before);
    }
    // The sample itself lies on the soft edge: its share is all but the whole.
    CDibImage image = OnePixel(kSample);
    ASSERT_EQ(ReplaceColor(1, image, kFrom, kTo, 0), 1);
    EXPECT_NEAR(test::PixelAt(image, 0, 0).green, kTarget.green, 1);
    // Black has no rounding in its distance: the whole share is limited to 0.999999 of the target.
    CDibImage black = OnePixel({0, 0, 0});
    ASSERT_EQ(ReplaceColor(1, black, 0, kTo, 0), 1);
    EXPECT_EQ(test::PixelAt(black, 0, 0), (Rgb{9, 249, 239}));
}

TEST(ReplaceColor, OtherTypesAndEmptyImagesAreRefusedAndAnyNumberIsTaken) {
    constexpr int kLowest = std::numeric_limits<int>::min();
    constexpr int kHighest = std::numeric_limits<int>::max();
    const CDibImage before = ColorField();
    CDibImage image = before, empty;
    for (const int type : {0, 9, -1, kLowest, kHighest})
        EXPECT_EQ(ReplaceColor(type, image, kFrom, kTo, 14), 0);
    test::ExpectSamePixels(image, before);
    EXPECT_EQ(ReplaceColor(1, empty, kFrom, kTo, 14), 0);
    for (int type = 1; type <= 8; ++type)
        for (const int threshold : {kLowest, kHighest}) {
            CDibImage any = before;
            ReplaceColor(type, any, 0xFFFFFFFF, 0xFFFFFFFF, threshold);
            EXPECT_TRUE(any.IsValid());
        }
}

TEST(ReplaceColor, ThreadsChangeNothing) {
    for (const int type : {1, 2, 6}) {
        CDibImage first;
        for (const int count : {1, 2, 7}) {
            const test::Threads threads(count);
            CDibImage image = test::Noise(400, 70, 24);
            ASSERT_EQ(ReplaceColor(type, image, kFrom, kTo, 30), 1);
            if (count == 1)
                first = image;
            test::ExpectSamePixels(image, first);
        }
    }
}

}  // namespace
}  // namespace velloran

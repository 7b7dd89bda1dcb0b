#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

#include "reduce/PaletteMakers.h"
#include "support/Images.h"

namespace velloran {
namespace {

using Pixel = std::array<int, 3>;  // blue, green, red

/// Boxes as lists; each cut by a stable sort. Right where no two pixels of a box are equal along
/// the cut, for only then is the cut the only one.
Palette PlainPalette(std::vector<Pixel> pixels, std::size_t colors) {
    const auto longest = [](const std::vector<Pixel>& box) {
        std::array<int, 2> best{-1, 0};  // length, channel
        for (std::size_t c = 0; c < 3; ++c) {
            const auto byChannel = [c](const Pixel& a, const Pixel& b) { return a[c] < b[c]; };
            const auto [low, high] = std::minmax_element(box.begin(), box.end(), byChannel);
            if ((*high)[c] - (*low)[c] > best[0])
                best = {(*high)[c] - (*low)[c], static_cast<int>(c)};
        }
        return best;
    };
    std::vector<std::vector<Pixel>> boxes{std::move(pixels)};
    const auto shorter = [&](const auto& a, const auto& b) {
        return longest(a)[0] < longest(b)[0];
    };
    while (boxes.size() < colors) {
        const auto top = std::max_element(boxes.begin(), boxes.end(), shorter);
        std::vector<Pixel> box = std::move(*top);
        boxes.erase(top);
        const auto c = static_cast<std::size_t>(longest(box)[1]);
        std::stable_sort(box.begin(), box.end(),
                         [c](const Pixel& a, const Pixel& b) { return a[c] < b[c]; });
        const auto middle = box.begin() + static_cast<std::ptrdiff_t>((box.size() + 1) / 2);
        boxes.emplace_back(box.begin(), middle);
        boxes.emplace_back(middle, box.end());
    }
    std::stable_sort(boxes.begin(), boxes.end(),
                     [&](const auto& a, const auto& b) { return shorter(b, a); });
    Palette palette;
    for (const auto& box : boxes) {
        std::array<int, 3> sum{};
        for (const Pixel& pixel : box)
            for (std::size_t c = 0; c < 3; ++c)
                sum[c] += pixel[c];
        const auto mean = [&](std::size_t c) {
            return static_cast<std::uint8_t>(sum[c] / static_cast<int>(box.size()));
        };
        palette.push_back({mean(0), mean(1), mean(2), 0});
    }
    return palette;
}

TEST(MedianCut, CutsTheLongestSideAtTheMedian) {
    // Red spans 200, so the cut lies behind the third of five pixels; then the left box (100) is
    // longer than the right one (20).
    const CDibImage image =
        test::FromRows({{0, 0, 0, 200, 0, 0, 40, 0, 0, 180, 0, 0, 100, 0, 0}}, 3);
    EXPECT_EQ(MedianCutPalette(image, 2), (Palette{{0, 0, 46, 0}, {0, 0, 190, 0}}));
    // {0, 40, 100} becomes {0, 40} and {100}; then the sides are 40, 20 and 0.
    EXPECT_EQ(MedianCutPalette(image, 3), (Palette{{0, 0, 20, 0}, {0, 0, 190, 0}, {0, 0, 100, 0}}));
}

TEST(MedianCut, TheFirstChannelWinsATieOfSides) {
    // Blue and red span 100 each: the cut by blue joins the two reds.
    const CDibImage image = test::FromRows({{0, 0, 0, 100, 0, 0, 0, 0, 100, 100, 0, 100}}, 3);
    EXPECT_EQ(MedianCutPalette(image, 2), (Palette{{0, 0, 50, 0}, {100, 0, 50, 0}}));
}

TEST(MedianCut, MeansAreTruncated) {
    EXPECT_EQ(MedianCutPalette(test::FromRows({{1, 2, 3, 2, 3, 4}}, 3), 1),
              (Palette{{3, 2, 1, 0}}));
}

TEST(MedianCut, AGrayPageRepeatsThePixelValueWhateverItsPalette) {
    CDibImage image = test::FromRows({{10, 20, 100, 120}});
    test::SetPalette(image, {{1, 2, 3}, {200, 2, 3}});
    EXPECT_EQ(MedianCutPalette(image, 2), (Palette{{110, 110, 110, 0}, {15, 15, 15, 0}}));
}

TEST(MedianCut, EqualsAPlainCutWhereNoPixelsAreEqualAlongIt) {
    // Each channel holds each value once.
    CDibImage image = test::Filled(16, 15, 24, 0);
    std::vector<Pixel> pixels;
    for (int i = 0; i < 240; ++i) {
        const int red = i * 77 % 241, green = i * 113 % 241, blue = i * 31 % 241;
        test::SetPixel(image, i % 16, i / 16, {red, green, blue});
        pixels.push_back({blue, green, red});
    }
    // Boxes of equal length may leave the heap in any order, so the entries are compared as a set;
    // up to 4 of them, before such boxes decide what is cut.
    const auto sorted = [](Palette palette) {
        std::sort(palette.begin(), palette.end(), [](const auto& a, const auto& b) {
            return std::array{a.blue, a.green, a.red} < std::array{b.blue, b.green, b.red};
        });
        return palette;
    };
    for (const std::size_t colors : {1u, 2u, 3u, 4u})
        EXPECT_EQ(sorted(MedianCutPalette(image, static_cast<int>(colors))),
                  sorted(PlainPalette(pixels, colors)));
}

TEST(MedianCut, EveryBoxOfALargePageHoldsItsShare) {
    // 256 levels 16 times each fall into 16 boxes of 16 levels: the halves are exact.
    CDibImage image = test::Filled(64, 64, 24, 0);
    for (int i = 0; i < 4096; ++i)
        test::SetPixel(image, i % 64, i / 64, {i * 37 % 256, 7, 9});
    Palette palette = MedianCutPalette(image, 16);
    ASSERT_EQ(palette.size(), 16u);
    std::sort(palette.begin(), palette.end(),
              [](const auto& a, const auto& b) { return a.red < b.red; });
    for (std::size_t i = 0; i < 16; ++i)
        EXPECT_EQ(palette[i], (PaletteEntry{9, 7, static_cast<std::uint8_t>(16 * i + 7), 0}));
}

TEST(MedianCut, APageOfFewerPixelsThanColorsGivesThosePixels) {
    EXPECT_EQ(MedianCutPalette(test::FromRows({{1, 2, 3}}, 3), 16), (Palette{{3, 2, 1, 0}}));
    EXPECT_EQ(MedianCutPalette(test::FromRows({{1, 2, 3, 9, 9, 9}}, 3), 16).size(), 2u);
}

TEST(MedianCut, OtherDepthsAndCountsGiveNone) {
    for (const int bpp : {1, 4})
        EXPECT_TRUE(MedianCutPalette(test::Filled(3, 3, bpp, 0), 2).empty());
    for (const int colors : {INT32_MIN, 0})
        EXPECT_TRUE(MedianCutPalette(test::Filled(3, 3, 24, 0), colors).empty());
    EXPECT_TRUE(MedianCutPalette(CDibImage(), 4).empty());
}

}  // namespace
}  // namespace velloran

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

#include "reduce/PaletteMakers.h"
#include "support/Images.h"

namespace velloran {
namespace {

struct Pixel {
    std::array<int, 3> rgb;
};

struct PlainBox {
    std::array<int, 3> low{-1, -1, -1}, high{31, 31, 31};  // low < value / 8 <= high
    double variance = 0;

    bool Holds(const Pixel& pixel) const {
        for (std::size_t c = 0; c < 3; ++c)
            if (pixel.rgb[c] / 8 <= low[c] || pixel.rgb[c] / 8 > high[c])
                return false;
        return true;
    }
};

/// Sums over the pixels themselves, without a table.
struct Sums {
    double weight = 0, squares = 0;
    std::array<double, 3> sum{};

    void Add(const Pixel& pixel) {
        weight += 1;
        for (std::size_t c = 0; c < 3; ++c) {
            sum[c] += pixel.rgb[c];
            squares += pixel.rgb[c] * pixel.rgb[c];
        }
    }
    double Score() const { return (sum[0] * sum[0] + sum[1] * sum[1] + sum[2] * sum[2]) / weight; }
};

Sums SumsOf(const std::vector<Pixel>& pixels, const PlainBox& box) {
    Sums sums;
    for (const Pixel& pixel : pixels)
        if (box.Holds(pixel))
            sums.Add(pixel);
    return sums;
}

double Variance(const std::vector<Pixel>& pixels, const PlainBox& box) {
    int volume = 1;
    for (std::size_t c = 0; c < 3; ++c)
        volume *= box.high[c] - box.low[c];
    const Sums sums = SumsOf(pixels, box);
    return volume <= 1 ? 0 : std::fabs(sums.squares - sums.Score());
}

bool PlainCut(const std::vector<Pixel>& pixels, PlainBox& box, PlainBox& upper) {
    std::array<double, 3> score{};
    std::array<int, 3> position{-1, -1, -1};
    for (std::size_t c = 0; c < 3; ++c)
        for (int at = box.low[c] + 1; at < box.high[c]; ++at) {
            PlainBox lower = box, higher = box;
            lower.high[c] = higher.low[c] = at;
            const Sums a = SumsOf(pixels, lower), b = SumsOf(pixels, higher);
            if (a.weight == 0 || b.weight == 0 || a.Score() + b.Score() <= score[c])
                continue;
            score[c] = a.Score() + b.Score();
            position[c] = at;
        }
    std::size_t axis = 2;
    if (score[0] >= score[1] && score[0] >= score[2])
        axis = 0;
    else if (score[1] >= score[0] && score[1] >= score[2])
        axis = 1;
    if (position[axis] < 0)
        return false;
    upper = box;
    box.high[axis] = upper.low[axis] = position[axis];
    return true;
}

Palette PlainPalette(const CDibImage& image, std::size_t colors) {
    std::vector<Pixel> pixels;
    for (int y = 0; y < image.GetHeight(); ++y)
        for (int x = 0; x < image.GetWidth(); ++x) {
            const test::Rgb c = test::PixelAt(image, x, y);
            pixels.push_back({{c.red, c.green, c.blue}});
        }
    std::vector<PlainBox> boxes(1);
    std::size_t next = 0;
    while (boxes.size() < colors) {
        PlainBox upper;
        if (PlainCut(pixels, boxes[next], upper)) {
            upper.variance = Variance(pixels, upper);
            boxes.push_back(upper);
            boxes[next].variance = Variance(pixels, boxes[next]);
        } else {
            boxes[next].variance = 0;
        }
        next = 0;
        for (std::size_t i = 1; i < boxes.size(); ++i)
            if (boxes[i].variance > boxes[next].variance)
                next = i;
        if (boxes[next].variance <= 0)
            break;
    }
    Palette palette;
    for (const PlainBox& box : boxes) {
        const Sums sums = SumsOf(pixels, box);
        const auto mean = [&](std::size_t c) {
            return static_cast<std::uint8_t>(sums.weight == 0 ? 0 : sums.sum[c] / sums.weight);
        };
        palette.push_back({mean(2), mean(1), mean(0), 0});
    }
    return palette;
}

TEST(WuPalette, AFlatPageGivesASingleEntry) {
    for (const int value : {0, 8, 100, 255})
        for (const int bpp : {8, 24}) {
            const auto level = static_cast<std::uint8_t>(value);
            EXPECT_EQ(WuPalette(test::Filled(7, 5, bpp, level), 16),
                      (Palette{{level, level, level, 0}}));
        }
}

TEST(WuPalette, CutsWhereTheVarianceFallsMost) {
    // Two clusters of red, three pixels near 20 and two near 220: means 20 and 221.
    const CDibImage image =
        test::FromRows({{16, 9, 9, 20, 9, 9, 24, 9, 9, 220, 9, 9, 222, 9, 9}}, 3);
    EXPECT_EQ(WuPalette(image, 2), (Palette{{9, 9, 20, 0}, {9, 9, 221, 0}}));
}

TEST(WuPalette, TheNextCutGoesToTheBoxOfHighestVariance) {
    // After the first cut {0, 40} has variance 800 and {200, 216} 128.
    const CDibImage image = test::FromRows({{0, 0, 0, 0, 0, 40, 0, 0, 200, 0, 0, 216}}, 3);
    EXPECT_EQ(WuPalette(image, 3), (Palette{{0, 0, 0, 0}, {208, 0, 0, 0}, {40, 0, 0, 0}}));
}

TEST(WuPalette, ColorsOfOneCellShareAnEntryAndTheCountFalls) {
    // Of four colours two lie in the cell 0..7: no cut parts them.
    const CDibImage image = test::FromRows({{1, 1, 1, 4, 4, 4, 100, 0, 0, 0, 100, 0}}, 3);
    EXPECT_EQ(WuPalette(image, 4).size(), 3u);
}

TEST(WuPalette, EqualsAPlainCutOverThePixelsThemselves) {
    for (const std::size_t colors : {1u, 2u, 3u, 4u, 8u, 15u, 16u, 32u})
        for (const std::uint32_t seed : {1u, 2u}) {
            CDibImage image = test::Noise(17, 9, 24, seed);
            if (seed == 2)  // close colours: many cells hold several pixels
                for (int i = 0; i < 17 * 9; ++i)
                    test::SetPixel(image, i % 17, i / 17,
                                   {i % 40 * 2 + 90, i % 7 * 5, 200 - i * i % 30});
            EXPECT_EQ(WuPalette(image, static_cast<int>(colors)), PlainPalette(image, colors))
                << colors << ' ' << seed;
        }
}

TEST(WuPalette, AGrayPageUsesItsValueAsAllChannels) {
    CDibImage image = test::Noise(23, 11, 8, 5);
    EXPECT_EQ(WuPalette(image, 16), PlainPalette(image, 16));
    const Palette gray = WuPalette(image, 16);
    test::SetPalette(image, {{1, 2, 3}, {250, 2, 3}});
    EXPECT_EQ(WuPalette(image, 16), gray);
}

TEST(WuPalette, OtherDepthsAndCountsGiveNone) {
    for (const int bpp : {1, 4})
        EXPECT_TRUE(WuPalette(test::Filled(3, 3, bpp, 0), 2).empty());
    for (const int colors : {INT32_MIN, 0, 257})
        EXPECT_TRUE(WuPalette(test::Filled(3, 3, 24, 0), colors).empty());
    EXPECT_TRUE(WuPalette(CDibImage(), 4).empty());
}

}  // namespace
}  // namespace velloran

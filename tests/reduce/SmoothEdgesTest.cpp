#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "reduce/CleanPage.h"
#include "support/Images.h"

namespace velloran {
namespace {

using Rows = std::vector<std::string>;

const std::vector<Rows> kPatterns{
    {"XXX", " - ", "   "},
    {"X ?", "X  ", "X- ", "X- ", "X  ", "X ?"},
    {"X ?", "X ?", "X  ", "X- ", "X- ", "X- ", "X  ", "X ?", "X ?"},
    {"XX?", "XX?", "XX ", "X+ ", "X+ ", "X+ ", "XX ", "XX?", "XX?"},
    {"XX?", "XX ", "X+ ", "X+ ", "XX ", "XX?"},
    {"   ", "X+X", "XXX"},
};

/// A quarter turn clockwise: the first column, read from the bottom up, becomes the first row.
Rows Turned(const Rows& rows) {
    Rows turned(rows[0].size());
    for (std::size_t x = 0; x < rows[0].size(); ++x)
        for (std::size_t y = rows.size(); y-- > 0;)
            turned[x] += rows[y][x];
    return turned;
}

bool IsBlack(const CDibImage& image, int x, int y) {
    return test::IndexAt(image, x, y) == 0;
}

bool Matches(const CDibImage& image, const Rows& rows, int left, int top) {
    for (std::size_t y = 0; y < rows.size(); ++y)
        for (std::size_t x = 0; x < rows[y].size(); ++x) {
            const char cell = rows[y][x];
            const bool wanted = cell == 'X' || cell == '-';
            if (cell != '?' &&
                IsBlack(image, left + static_cast<int>(x), top + static_cast<int>(y)) != wanted)
                return false;
        }
    return true;
}

void ApplyPattern(CDibImage& image, const Rows& rows) {
    const CDibImage before(image);
    for (int top = 0; top + static_cast<int>(rows.size()) <= image.GetHeight(); ++top)
        for (int left = 0; left + static_cast<int>(rows[0].size()) <= image.GetWidth(); ++left) {
            if (!Matches(before, rows, left, top))
                continue;
            for (std::size_t y = 0; y < rows.size(); ++y)
                for (std::size_t x = 0; x < rows[y].size(); ++x)
                    if (rows[y][x] == '-' || rows[y][x] == '+')
                        test::SetIndex(image, left + static_cast<int>(x), top + static_cast<int>(y),
                                       rows[y][x] == '-' ? 255 : 0);
        }
}

CDibImage PlainSmoothing(const CDibImage& image) {
    CDibImage result(image);
    for (Rows rows : kPatterns)
        for (int turn = 0; turn < 4; ++turn, rows = Turned(rows))
            ApplyPattern(result, rows);
    return result;
}

/// Black shapes with rough edges: blobs of noise.
CDibImage RoughPage(int width, int height, std::uint32_t seed) {
    const CDibImage noise = test::Noise(width / 4 + 2, height / 4 + 2, 8, seed);
    const CDibImage fine = test::Noise(width, height, 8, seed + 99);
    CDibImage image = test::Filled(width, height, 8, 255);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int shift = test::IndexAt(fine, x, y) < 25 ? 1 : 0;
            if (test::IndexAt(noise, (x + shift) / 4, (y + shift) / 4) < 128)
                test::SetIndex(image, x, y, 0);
        }
    return image;
}

/// The pattern on an otherwise white page; '?' and all around are white.
CDibImage PageWith(const Rows& rows, int left, int top) {
    CDibImage image = test::Filled(40, 40, 8, 255);
    for (std::size_t y = 0; y < rows.size(); ++y)
        for (std::size_t x = 0; x < rows[y].size(); ++x)
            if (rows[y][x] == 'X' || rows[y][x] == '-')
                test::SetIndex(image, left + static_cast<int>(x), top + static_cast<int>(y), 0);
    return image;
}

TEST(SmoothEdges, EveryPatternFlipsInEveryTurn) {
    for (const Rows& pattern : kPatterns) {
        Rows rows = pattern;
        for (int turn = 0; turn < 4; ++turn, rows = Turned(rows)) {
            CDibImage image = PageWith(rows, 15, 15);
            ASSERT_NE(SmoothEdges(image), 0);
            for (std::size_t y = 0; y < rows.size(); ++y)
                for (std::size_t x = 0; x < rows[y].size(); ++x) {
                    const int px = 15 + static_cast<int>(x), py = 15 + static_cast<int>(y);
                    if (rows[y][x] == '-' || rows[y][x] == '+') {
                        EXPECT_EQ(IsBlack(image, px, py), rows[y][x] == '+')
                            << pattern[0] << ' ' << turn;
                    }
                }
        }
    }
}

TEST(SmoothEdges, EqualsAPlainMatcherOnRoughShapesOfEveryWidth) {
    for (int width = 10; width <= 70; width += width < 36 ? 1 : 17) {
        CDibImage image = RoughPage(width, 30, static_cast<std::uint32_t>(width));
        const CDibImage expected = PlainSmoothing(image);
        ASSERT_NE(SmoothEdges(image), 0);
        test::ExpectSamePixels(image, expected);
    }
}

TEST(SmoothEdges, EqualsAPlainMatcherOnNoise) {
    for (int seed = 1; seed <= 4; ++seed) {
        CDibImage image = test::Noise(67, 41, 8, static_cast<std::uint32_t>(seed));
        for (int y = 0; y < 41; ++y)
            for (int x = 0; x < 67; ++x)
                test::SetIndex(image, x, y, test::IndexAt(image, x, y) < 60 * seed ? 0 : 255);
        const CDibImage expected = PlainSmoothing(image);
        ASSERT_NE(SmoothEdges(image), 0);
        test::ExpectSamePixels(image, expected);
    }
}

TEST(SmoothEdges, ABumpOnAFlatEdgeGoesAndANotchIsFilled) {
    CDibImage image = test::Filled(20, 20, 8, 255);
    for (int y = 10; y < 20; ++y)
        for (int x = 0; x < 20; ++x)
            test::SetIndex(image, x, y, 0);
    const CDibImage flat(image);
    test::SetIndex(image, 5, 9, 0);      // bump
    test::SetIndex(image, 12, 10, 255);  // notch
    ASSERT_NE(SmoothEdges(image), 0);
    test::ExpectSamePixels(image, flat);
}

TEST(SmoothEdges, NothingIsMatchedAcrossTheBorder) {
    CDibImage image = test::Filled(20, 20, 8, 255);
    for (int x = 0; x < 20; ++x)
        test::SetIndex(image, x, 0, 0);
    test::SetIndex(image, 0, 1, 0);  // no room for the pattern to its left
    const CDibImage before(image);
    ASSERT_NE(SmoothEdges(image), 0);
    test::ExpectSamePixels(image, before);
}

TEST(SmoothEdges, SmallSidesAndOtherDepthsAreLeftAlone) {
    for (const auto& [width, height] : {std::pair{9, 30}, {30, 9}, {1, 1}}) {
        CDibImage image = RoughPage(width, height, 3);
        const CDibImage before(image);
        EXPECT_EQ(SmoothEdges(image), 0);
        test::ExpectSamePixels(image, before);
    }
    for (const int bpp : {1, 4, 24}) {
        CDibImage image = test::Noise(20, 20, bpp);
        EXPECT_EQ(SmoothEdges(image), 0);
    }
    CDibImage empty;
    EXPECT_EQ(SmoothEdges(empty), 0);
}

}  // namespace
}  // namespace velloran

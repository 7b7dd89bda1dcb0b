#include "page/DarkLevel.h"

#include <gtest/gtest.h>

#include "core/DibImage.h"
#include "support/Images.h"

namespace velloran::test {
namespace {

/// 100 x 100 pixels of 200, of which the first ones take the levels of the list.
CDibImage WithLevels(const std::vector<std::pair<int, int>>& levelsAndCounts) {
    CDibImage image = Filled(100, 100, 8, 200);
    int at = 0;
    for (const auto& [level, count] : levelsAndCounts)
        for (int i = 0; i < count; ++i, ++at)
            image.GetBits(at / 100)[at % 100] = static_cast<std::uint8_t>(level);
    return image;
}

TEST(DarkLevel, StopsWhereAThousandthIsNearest) {
    // A thousandth is 10 pixels.
    EXPECT_EQ(findDarkLevel(WithLevels({{30, 4}, {40, 5}, {50, 6}})), 49);  // 9 is nearer than 15
    EXPECT_EQ(findDarkLevel(WithLevels({{30, 4}, {40, 8}, {50, 9}})), 49);  // 12 than 4 and 21
    EXPECT_EQ(findDarkLevel(WithLevels({{30, 4}, {40, 13}})), 39);          // 4 than 17
    EXPECT_EQ(findDarkLevel(WithLevels({{30, 4}, {40, 12}})), 199);         // 16 ties with 4
}

TEST(DarkLevel, AllOfOneLevelStopsBesideIt) {
    EXPECT_EQ(findDarkLevel(Filled(100, 100, 8, 200)), 199);
    EXPECT_EQ(findDarkLevel(Filled(100, 100, 8, 0)), 1);  // as the walk from white sees it
}

TEST(DarkLevel, ColorsAndPalettesCountByTheirGray) {
    CDibImage color = Filled(100, 100, 24, 255);
    for (int x = 0; x < 10; ++x)
        SetPixel(color, x, 0, {255, 0, 0});  // 306 * 255 >> 10 is 76
    EXPECT_EQ(findDarkLevel(color), 77);     // where the walk from white would take the red
    CDibImage palette = Filled(100, 100, 4, 0x11);
    SetPalette(palette, {{0, 0, 255}, {250, 250, 250}});
    for (int x = 0; x < 10; ++x)
        SetIndex(palette, x, 0, 0);  // 117 * 255 >> 10 is 29
    EXPECT_EQ(findDarkLevel(palette), 249);
    EXPECT_EQ(findDarkLevel(CDibImage()), 0);
}

}  // namespace
}  // namespace velloran::test

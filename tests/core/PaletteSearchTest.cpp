#include "core/PaletteSearch.h"

#include <gtest/gtest.h>

#include <vector>

namespace velloran {
namespace {

TEST(PaletteSearch, DistanceIsTheSumOfSquaresWithoutTheReservedByte) {
    EXPECT_EQ(SquaredDistance({1, 2, 3, 0}, {3, 5, 9, 200}), 4 + 9 + 36);
    EXPECT_EQ(SquaredDistance({0, 0, 0, 0}, {255, 255, 255, 0}), 3 * 255 * 255);
}

TEST(PaletteSearch, TheLowestOfEquallyNearEntriesWins) {
    const std::vector<PaletteEntry> palette = {
        {0, 0, 0, 0}, {9, 9, 9, 0}, {5, 5, 5, 0}, {7, 7, 7, 0}};
    EXPECT_EQ(NearestIndex(palette, {6, 6, 6, 0}), 2);
    EXPECT_EQ(NearestIndex(palette, {8, 8, 8, 0}), 1);
    EXPECT_EQ(NearestIndex(palette, {7, 7, 7, 50}), 3);
    EXPECT_EQ(NearestIndex({}, {7, 7, 7, 0}), 0);
}

TEST(PaletteSearch, APageWithoutAPaletteHasAnEmptyOne) {
    CBaseImage image;
    EXPECT_TRUE(PaletteOf(image).empty());
    ASSERT_NE(image.Create(2, 2, 24), nullptr);
    EXPECT_TRUE(PaletteOf(image).empty());
    ASSERT_NE(image.Create(2, 2, 4), nullptr);
    EXPECT_EQ(PaletteOf(image).size(), 16u);
}

}  // namespace
}  // namespace velloran

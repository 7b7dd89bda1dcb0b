#include "page/PageLines.h"

#include <gtest/gtest.h>

#include "core/DibImage.h"
#include "page/HoughLines.h"
#include "page/PackedLine.h"
#include "support/Images.h"

namespace velloran::test {
namespace {

/// A white page with a dark band from `top` to `bottom` (x of its middle in the first and last
/// row).
void DrawBand(CDibImage& page, int top, int bottom, int halfWidth, std::uint8_t level) {
    std::vector<int> table;
    lineTable(table, top, bottom, page.GetWidth(), page.GetHeight());
    for (int y = 0; y < page.GetHeight(); ++y)
        for (int x = table[static_cast<std::size_t>(y)] - halfWidth;
             x <= table[static_cast<std::size_t>(y)] + halfWidth; ++x)
            if (x >= 0 && x < page.GetWidth())
                page.GetBits(y)[x] = level;
}

TEST(HoughLines, ALineIsFoundWhereItStands) {
    CDibImage edges = Filled(200, 300, 8, 0);
    DrawBand(edges, 80, 100, 0, 255);
    const std::vector<HoughLine> lines = houghLines(edges, {}, 2.0);
    ASSERT_FALSE(lines.empty());
    EXPECT_NEAR(lines[0].p1.x, 160, 8);  // distances are taken in steps of 5 pixels
    EXPECT_NEAR(lines[0].p2.x, 200, 8);
    EXPECT_LE(lines[0].p1.x, lines[0].p2.x);
    EXPECT_GE(lines[0].votes, 300 * 9 / 2);
}

TEST(HoughLines, DarkSamplesAndTheSidesDoNotVote) {
    CDibImage edges = Filled(200, 300, 8, 1);
    for (const int x : {0, 2, 197, 199})
        DrawBand(edges, x, x, 0, 255);
    EXPECT_TRUE(houghLines(edges, {}, 1.0).empty());
    DrawBand(edges, 4, 4, 0, 255);
    EXPECT_FALSE(houghLines(edges, {}, 1.0).empty());
}

TEST(HoughLines, OnlyWhatLiesBetweenTheLimitsVotes) {
    CDibImage edges = Filled(200, 300, 8, 0);
    DrawBand(edges, 60, 60, 0, 255);
    DrawBand(edges, 140, 140, 0, 255);
    const LineLimits limits{PackLine({100, 100}), PackLine({180, 180})};
    const std::vector<HoughLine> lines = houghLines(edges, limits, 1.0);
    ASSERT_FALSE(lines.empty());
    for (const HoughLine& line : lines)
        EXPECT_GT(line.p2.x, 100);
    const LineLimits beside{PackLine({137, 137}), PackLine({199, 199})};
    EXPECT_TRUE(houghLines(edges, beside, 1.0).empty());  // within 3 pixels of a limit
}

TEST(CrossLines, TellsWhereAndWhetherWithinBoth) {
    int x = 0, y = 0;
    EXPECT_EQ(crossLines({0, 0}, {10, 10}, {0, 10}, {10, 0}, x, y), 2);
    EXPECT_EQ(x, 5);
    EXPECT_EQ(y, 5);
    EXPECT_EQ(crossLines({0, 0}, {2, 2}, {0, 10}, {10, 0}, x, y), 1);
    EXPECT_EQ(x, 5);
    EXPECT_EQ(crossLines({0, 0}, {10, 10}, {0, 5}, {10, 15}, x, y), 0);
}

TEST(PageLines, AScanWithoutLinesSplitsInTheMiddle) {
    const CDibImage page = Filled(400, 300, 24, 255);
    std::int32_t lines[3] = {};
    EXPECT_EQ(findPageLines(page, kLeftRightMid, lines, 0, 0), 1);
    EXPECT_EQ(UnpackLine(lines[0]), (PageLine{0, 0}));
    EXPECT_EQ(UnpackLine(lines[1]), (PageLine{399, 399}));
    EXPECT_EQ(UnpackLine(lines[2]), (PageLine{200, 200}));
    EXPECT_EQ(findPageLines(page, kLeftAndRight, lines, PackLine({7, 9}), PackLine({380, 390})), 1);
    EXPECT_EQ(UnpackLine(lines[0]), (PageLine{7, 9}));
    EXPECT_EQ(UnpackLine(lines[1]), (PageLine{380, 390}));
}

TEST(PageLines, ADarkGutterIsTheMiddleLine) {
    for (const int middle : {520, 600, 680}) {
        CDibImage page = Filled(1200, 800, 8, 230);
        DrawBand(page, middle - 10, middle + 10, 6, 60);
        std::int32_t lines[3] = {};
        EXPECT_EQ(findPageLines(page, kLeftRightMid, lines, 0, 0), 1);
        EXPECT_NEAR(UnpackLine(lines[2]).top, middle - 10, 16) << middle;
        EXPECT_NEAR(UnpackLine(lines[2]).bottom, middle + 10, 16) << middle;
    }
}

TEST(PageLines, PagesBelowTenPixelsAreRefused) {
    for (const auto& [width, height] : {std::pair{9, 50}, {50, 9}}) {
        std::int32_t lines[4] = {5, 5, 5, 5};
        EXPECT_EQ(findPageLines(Noise(width, height, 8), kFourCorners, lines, 0, 0), 0);
        EXPECT_EQ(lines[0], 5);
    }
    std::int32_t lines[4] = {};
    EXPECT_EQ(findPageLines(CDibImage(), kLeftAndRight, lines, 0, 0), 0);
    EXPECT_EQ(findPageLines(Noise(10, 10, 1), kFourCorners, lines, 0, 0), 1);
}

TEST(PageLines, ALightSheetOnADarkDeskHasFourCorners) {
    CDibImage desk = Filled(800, 1000, 8, 40);
    // The sheet: from (100, 150) to (690, 880), its right and lower edge leaning.
    for (int y = 150; y < 880; ++y)
        for (int x = 100; x < 690 - y / 50; ++x)
            desk.GetBits(999 - y)[x] = 240;
    std::int32_t corners[4] = {};
    EXPECT_EQ(findPageLines(desk, kFourCorners, corners, 0, 0), 1);
    EXPECT_NEAR(UnpackLine(corners[0]).top, 100, 12);
    EXPECT_NEAR(UnpackLine(corners[0]).bottom, 150, 12);
    EXPECT_NEAR(UnpackLine(corners[1]).top + 799, 687, 12);
    EXPECT_NEAR(UnpackLine(corners[1]).bottom, 150, 12);
    EXPECT_NEAR(UnpackLine(corners[2]).top + 799, 673, 12);
    EXPECT_NEAR(UnpackLine(corners[2]).bottom + 999, 880, 12);
    EXPECT_NEAR(UnpackLine(corners[3]).top, 100, 12);
    EXPECT_NEAR(UnpackLine(corners[3]).bottom + 999, 880, 12);
}

}  // namespace
}  // namespace velloran::test

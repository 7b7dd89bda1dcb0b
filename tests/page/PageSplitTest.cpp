#include "page/PageSplit.h"

#include <gtest/gtest.h>

#include "core/DibImage.h"
#include "page/PackedLine.h"
#include "support/Images.h"

namespace velloran::test {
namespace {

std::int32_t Line(int top, int bottom) {
    return PackLine({top, bottom});
}

TEST(PackedLine, HoldsTwoSignedHalves) {
    EXPECT_EQ(PackLine({1, 2}), 0x00020001);
    EXPECT_EQ(PackLine({-1, 0}), 0x0000FFFF);
    EXPECT_EQ(PackLine({0, -2}), static_cast<std::int32_t>(0xFFFE0000));
    EXPECT_EQ(PackLine({40000, -40000}), static_cast<std::int32_t>(0x80007FFF));
    for (const PageLine line : {PageLine{0, 0}, {-32768, 32767}, {123, -45}})
        EXPECT_EQ(UnpackLine(PackLine(line)), line);
}

TEST(LineTable, RunsFromTheTopRowToTheBottomRow) {
    std::vector<int> table;
    lineTable(table, 10, 14, 100, 5);  // stored rows: the bottom one first
    EXPECT_EQ(table, (std::vector<int>{14, 13, 12, 11, 10}));
    lineTable(table, 14, 10, 100, 5);
    EXPECT_EQ(table, (std::vector<int>{10, 11, 12, 13, 14}));
    lineTable(table, 0, 1, 100, 4);  // the step lies in the middle
    EXPECT_EQ(table, (std::vector<int>{1, 1, 0, 0}));
    lineTable(table, 7, 3, 100, 1);
    EXPECT_EQ(table, std::vector<int>{7});
}

TEST(LineTable, ALineThatLeavesTheImageIsLimitedRowByRow) {
    std::vector<int> table;
    lineTable(table, -2, 2, 100, 5);
    EXPECT_EQ(table, (std::vector<int>{2, 1, 0, 0, 0}));
    lineTable(table, 98, 102, 100, 5);
    EXPECT_EQ(table, (std::vector<int>{99, 99, 99, 99, 98}));
}

TEST(KeepBetweenLines, KeepsWhatLiesBetweenAndFillsTheRest) {
    for (const int bits : {8, 24}) {
        const CDibImage source = Noise(20, 11, bits);
        CDibImage page = source;
        // Left from 3 at the top to 8 at the bottom, right from 15 to 12.
        EXPECT_EQ(keepBetweenLines(page, Line(3, 8), Line(15, 12), 0x0A1428), 1);
        ASSERT_EQ(page.GetWidth(), 13);
        ASSERT_EQ(page.GetHeight(), 11);
        const int gray = (117 * 0x0A + 601 * 0x14 + 306 * 0x28) >> 10;
        const Rgb fill = bits == 24 ? Rgb{0x28, 0x14, 0x0A} : Rgb{gray, gray, gray};
        std::vector<int> left, right;
        lineTable(left, 3, 8, 20, 11);
        lineTable(right, 15, 12, 20, 11);
        for (int y = 0; y < 11; ++y)
            for (int x = 0; x < 13; ++x) {
                const int from = x + 3;
                const std::size_t row = static_cast<std::size_t>(10 - y);
                const bool inside = from >= left[row] && from <= right[row];
                EXPECT_EQ(PixelAt(page, x, y), inside ? PixelAt(source, from, y) : fill);
            }
    }
}

TEST(KeepBetweenLines, RefusesEqualLinesAndSmallPages) {
    CDibImage image = Noise(20, 20, 24);
    const CDibImage before = image;
    EXPECT_EQ(keepBetweenLines(image, Line(3, 5), Line(3, 5), 0), 0);
    ExpectSamePixels(image, before);
    for (const auto& [width, height] : {std::pair{9, 20}, {20, 9}}) {
        CDibImage small = Noise(width, height, 24), mask;
        EXPECT_EQ(keepBetweenLines(small, Line(1, 1), Line(5, 5), 0), 0);
        EXPECT_EQ(maskBetweenLines(small, mask, Line(1, 1), Line(5, 5)), 0);
        EXPECT_EQ(shadeOutsideLines(small, Line(1, 1), Line(5, 5)), 0);
        EXPECT_FALSE(mask.IsValid());
    }
}

TEST(KeepBetweenLines, CrossedAndDistantLinesLeaveAPageOfTheFillColor) {
    for (const auto& [a, b] : {std::pair{Line(15, 3), Line(3, 15)},
                               {Line(-300, -200), Line(-100, -150)},
                               {Line(30000, 32767), Line(-32768, 5)}}) {
        CDibImage image = Noise(20, 20, 24);
        EXPECT_EQ(keepBetweenLines(image, a, b, 0), 1);
        EXPECT_EQ(image.GetHeight(), 20);
    }
}

TEST(MaskBetweenLines, MarksWhatTheCutLeftEmpty) {
    CDibImage image = Filled(20, 11, 8, 99), mask;
    const std::int32_t left = Line(3, 8), right = Line(15, 12);
    EXPECT_EQ(keepBetweenLines(image, left, right, 0), 1);
    EXPECT_EQ(maskBetweenLines(image, mask, left, right), 1);
    ASSERT_EQ(mask.GetWidth(), 13);
    for (int y = 0; y < 11; ++y)
        for (int x = 0; x < 13; ++x)
            EXPECT_EQ(IndexAt(mask, x, y), IndexAt(image, x, y) == 99 ? 255 : 0);
}

TEST(ShadeOutsideLines, DarkensTo55Percent) {
    CDibImage image = Filled(20, 10, 24, 200);
    EXPECT_EQ(shadeOutsideLines(image, Line(5, 5), Line(10, 10)), 1);
    EXPECT_EQ(PixelAt(image, 4, 3), (Rgb{110, 110, 110}));
    EXPECT_EQ(PixelAt(image, 5, 3), (Rgb{200, 200, 200}));
    EXPECT_EQ(PixelAt(image, 10, 3), (Rgb{200, 200, 200}));
    EXPECT_EQ(PixelAt(image, 11, 3), (Rgb{110, 110, 110}));
}

}  // namespace
}  // namespace velloran::test

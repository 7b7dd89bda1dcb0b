#include "samples/ContactSheet.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "support/Images.h"

namespace velloran::samples {
namespace {

constexpr test::Rgb kBlack{0, 0, 0}, kGray{100, 100, 100};
constexpr int kGap = 12;

std::vector<SheetPicture> Pictures(int count, int width, int height, std::uint8_t value) {
    std::vector<SheetPicture> pictures(static_cast<std::size_t>(count));
    for (SheetPicture& picture : pictures)
        picture.image = test::Filled(width, height, 8, value);
    return pictures;
}

SheetLayout WithoutCaptions(int columns) {
    SheetLayout layout;
    layout.columns = columns;
    layout.captionSize = 0;
    return layout;
}

TEST(ContactSheet, PicturesStandRowByRowAtTheirOwnSize) {
    std::vector<SheetPicture> pictures = Pictures(3, 20, 10, 100);
    pictures[2].image = test::Filled(20, 10, 1, 0);
    const CDibImage sheet = MakeContactSheet(pictures, WithoutCaptions(2));
    EXPECT_EQ(sheet.GetWidth(), 2 * (20 + kGap) + kGap);
    EXPECT_EQ(sheet.GetHeight(), 2 * (10 + kGap) + kGap);
    EXPECT_EQ(test::PixelAt(sheet, kGap, kGap), kGray);
    EXPECT_EQ(test::PixelAt(sheet, kGap + 19, kGap + 9), kGray);
    EXPECT_EQ(test::PixelAt(sheet, 2 * kGap + 20, kGap), kGray);
    EXPECT_EQ(test::PixelAt(sheet, kGap, 2 * kGap + 10), kBlack);
    const test::Rgb ground = test::PixelAt(sheet, 0, 0);
    EXPECT_EQ(test::PixelAt(sheet, kGap + 20, kGap), ground);
    EXPECT_EQ(test::PixelAt(sheet, 2 * kGap + 20, 2 * kGap + 10), ground);  // no fourth picture
}

TEST(ContactSheet, LargerPicturesShrinkWithTheirProportions) {
    std::vector<SheetPicture> pictures = Pictures(1, 100, 40, 100);
    SheetLayout layout = WithoutCaptions(1);
    layout.cellWidth = 50;
    layout.cellHeight = 50;
    const CDibImage sheet = MakeContactSheet(pictures, layout);
    EXPECT_EQ(sheet.GetWidth(), 50 + 2 * kGap);
    EXPECT_EQ(sheet.GetHeight(), 20 + 2 * kGap);
    EXPECT_EQ(test::PixelAt(sheet, kGap + 49, kGap + 19), kGray);
}

TEST(ContactSheet, ACaptionStandsBelowItsPictureAndIsCutAtItsWidth) {
    std::vector<SheetPicture> pictures = Pictures(2, 40, 10, 255);
    pictures[0].caption = u"HHHHHHHHHHHHHHHHHHHHHH";
    const CDibImage sheet = MakeContactSheet(pictures, SheetLayout());
    int inked = 0, beside = 0;
    const test::Rgb ground = test::PixelAt(sheet, 0, 0);
    for (int y = kGap + 10; y < sheet.GetHeight(); ++y)
        for (int x = 0; x < sheet.GetWidth(); ++x)
            if (test::PixelAt(sheet, x, y) != ground)
                ++(x >= kGap && x < kGap + 40 ? inked : beside);
    EXPECT_GT(inked, 50);
    EXPECT_EQ(beside, 0);
}

TEST(ContactSheet, NoPicturesEmptyPicturesAndEmptyCellsAreRefused) {
    std::vector<SheetPicture> none, empty(1), one = Pictures(1, 5, 5, 0);
    EXPECT_THROW(MakeContactSheet(none, SheetLayout()), std::invalid_argument);
    EXPECT_THROW(MakeContactSheet(empty, SheetLayout()), std::invalid_argument);
    EXPECT_THROW(MakeContactSheet(one, WithoutCaptions(0)), std::invalid_argument);
    SheetLayout flat;
    flat.cellHeight = 0;
    EXPECT_THROW(MakeContactSheet(one, flat), std::invalid_argument);
}

}  // namespace
}  // namespace velloran::samples

#include "imageproc/Upscale.h"

#include <stdexcept>

#include "imageproc/Pictures.h"

namespace velloran::imageproc {
namespace {

using test::FromPicture;
using test::Picture;
using test::RandomImage;
using test::ToPicture;

TEST(Upscale, PixelsGrowAndTheRestTakesTheColor) {
    const BinaryImage image = FromPicture({"#.", ".#"});
    EXPECT_EQ(ToPicture(upscaleIntegerTimes(image, {5, 4}, BwColor::kBlack)),
              (Picture{"##..#", "##..#", "..###", "..###"}));
    EXPECT_EQ(ToPicture(upscaleIntegerTimes(image, {4, 5}, BwColor::kWhite)),
              (Picture{"##..", "##..", "..##", "..##", "...."}));
}

TEST(Upscale, AgreesWithSinglePixels) {
    const BinaryImage image = RandomImage(37, 5, 2);
    const BinaryImage large = upscaleIntegerTimes(image, 3, 2, {120, 11}, BwColor::kWhite);
    for (int y = 0; y < 11; ++y)
        for (int x = 0; x < 120; ++x)
            ASSERT_EQ(large.isBlack(x, y), x < 111 && y < 10 && image.isBlack(x / 3, y / 2));
}

TEST(Upscale, SmallerTargetIsAFill) {
    const BinaryImage image({9, 9}, BwColor::kBlack);
    EXPECT_TRUE(upscaleIntegerTimes(image, {8, 20}, BwColor::kWhite) ==
                BinaryImage({8, 20}, BwColor::kWhite));
}

TEST(Upscale, NegativeFactorsThrowTheirText) {
    const BinaryImage image({2, 2}, BwColor::kBlack);
    try {
        upscaleIntegerTimes(image, -1, 1, {4, 4}, BwColor::kWhite);
        FAIL();
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "upscaleIntegerTimes: scaling factors can't be negative");
    }
}

TEST(Upscale, TooSmallADestinationThrowsItsText) {
    const BinaryImage image({2, 2}, BwColor::kBlack);
    try {
        upscaleIntegerTimes(image, 3, 1, {5, 4}, BwColor::kWhite);
        FAIL();
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "upscaleIntegerTimes: bad dst_size");
    }
}

}  // namespace
}  // namespace velloran::imageproc

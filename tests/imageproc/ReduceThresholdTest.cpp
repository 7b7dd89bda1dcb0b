#include "imageproc/ReduceThreshold.h"

#include <stdexcept>

#include "imageproc/Pictures.h"

namespace velloran::imageproc {
namespace {

using test::FromPicture;
using test::Picture;
using test::RandomImage;
using test::ToPicture;

TEST(ReduceThreshold, ThreeByThreeGivesTheTopLeftBlock) {
    const BinaryImage image = FromPicture({"##.", "#..", "..#"});
    EXPECT_EQ(ToPicture(ReduceThreshold(image).reduce(3)), Picture{"#"});
    EXPECT_EQ(ToPicture(ReduceThreshold(image).reduce(4)), Picture{"."});
}

TEST(ReduceThreshold, CountsTheBlockAtEveryThreshold) {
    for (const int width : {2, 3, 31, 32, 33, 63, 64, 65, 67, 130})
        for (int threshold = 1; threshold <= 4; ++threshold) {
            const BinaryImage image = RandomImage(width, 9, 5);
            const BinaryImage half = ReduceThreshold(image).reduce(threshold);
            ASSERT_EQ(half.width(), width / 2);
            ASSERT_EQ(half.height(), 4);
            for (int y = 0; y < half.height(); ++y)
                for (int x = 0; x < half.width(); ++x) {
                    const int black =
                        image.isBlack(2 * x, 2 * y) + image.isBlack(2 * x + 1, 2 * y) +
                        image.isBlack(2 * x, 2 * y + 1) + image.isBlack(2 * x + 1, 2 * y + 1);
                    ASSERT_EQ(half.isBlack(x, y), black >= threshold)
                        << width << ": " << x << "," << y << " threshold " << threshold;
                }
        }
}

TEST(ReduceThreshold, ColumnPairsUpItsRows) {
    const BinaryImage column = FromPicture({"#", ".", "#", "#", "."});
    EXPECT_EQ(ToPicture(ReduceThreshold(column).reduce(1)), (Picture{"#", "#"}));
    EXPECT_EQ(ToPicture(ReduceThreshold(column).reduce(2)), (Picture{"#", "#"}));
    EXPECT_EQ(ToPicture(ReduceThreshold(column).reduce(3)), (Picture{".", "#"}));
    EXPECT_EQ(ToPicture(ReduceThreshold(column).reduce(4)), (Picture{".", "#"}));
}

TEST(ReduceThreshold, RowPairsUpItsColumns) {
    for (int threshold = 1; threshold <= 4; ++threshold) {
        const BinaryImage row = RandomImage(71, 1, 8);
        const BinaryImage half = ReduceThreshold(row).reduce(threshold);
        ASSERT_EQ(half.width(), 35);
        ASSERT_EQ(half.height(), 1);
        for (int x = 0; x < 35; ++x) {
            const bool a = row.isBlack(2 * x, 0), b = row.isBlack(2 * x + 1, 0);
            ASSERT_EQ(half.isBlack(x, 0), threshold <= 2 ? a || b : a && b) << x;
        }
    }
}

TEST(ReduceThreshold, SinglePixelAndNullImageStay) {
    EXPECT_EQ(ToPicture(ReduceThreshold(FromPicture({"#"})).reduce(4)), Picture{"#"});
    EXPECT_TRUE(ReduceThreshold(BinaryImage()).reduce(1).image().isNull());
}

TEST(ReduceThreshold, InvalidThresholdThrowsItsText) {
    for (const int threshold : {0, 5, -1}) {
        try {
            ReduceThreshold(FromPicture({"##", "##"})).reduce(threshold);
            FAIL();
        } catch (const std::invalid_argument& error) {
            EXPECT_STREQ(error.what(), "ReduceThreshold: invalid threshold");
        }
    }
}

}  // namespace
}  // namespace velloran::imageproc

#include "imageproc/BinaryImage.h"

#include <stdexcept>

#include "imageproc/Pictures.h"
#include "support/FailingAllocator.h"

namespace velloran::imageproc {
namespace {

using test::FromPicture;
using test::Picture;
using test::RandomImage;
using test::ToPicture;

TEST(BinaryImage, SideBelowOneThrowsItsText) {
    for (const QT::QSize size : {QT::QSize{0, 1}, QT::QSize{1, 0}, QT::QSize{-5, 3}}) {
        try {
            BinaryImage image(size);
            FAIL() << size.width << " x " << size.height;
        } catch (const std::invalid_argument& error) {
            EXPECT_STREQ(error.what(), "BinaryImage dimensions are wrong");
        }
    }
}

TEST(BinaryImage, NoMemoryThrowsItsText) {
    const velloran::test::FailAllocation fail(1, /*onlyOne=*/true);
    try {
        BinaryImage image(10, 10);
        FAIL();
    } catch (const std::bad_alloc& error) {
        EXPECT_STREQ(error.what(), "bad allocation");
    }
}

TEST(BinaryImage, WordsPerLineRoundUp) {
    EXPECT_EQ(BinaryImage(1, 1).wordsPerLine(), 1);
    EXPECT_EQ(BinaryImage(32, 1).wordsPerLine(), 1);
    EXPECT_EQ(BinaryImage(33, 1).wordsPerLine(), 2);
}

TEST(BinaryImage, LeftmostPixelIsTheHighestBit) {
    BinaryImage image({40, 1}, BwColor::kWhite);
    image.fill({0, 0, 0, 0}, BwColor::kBlack);
    image.fill({33, 0, 33, 0}, BwColor::kBlack);
    EXPECT_EQ(image.data()[0], 0x80000000U);
    EXPECT_EQ(image.data()[1], 0x40000000U);
}

TEST(BinaryImage, FillOfANullImageThrowsItsText) {
    BinaryImage null;
    for (const bool whole : {true, false}) {
        try {
            whole ? null.fill(BwColor::kBlack) : null.fill({0, 0, 1, 1}, BwColor::kBlack);
            FAIL();
        } catch (const std::invalid_argument& error) {
            EXPECT_STREQ(error.what(), "Attempt to fill a null BinaryImage!");
        }
    }
}

TEST(BinaryImage, FilledRectangleIsCutToTheImage) {
    BinaryImage image({4, 3}, BwColor::kWhite);
    image.fill({2, 1, 9, 9}, BwColor::kBlack);
    EXPECT_EQ(ToPicture(image), (Picture{"....", "..##", "..##"}));
    image.fill({-3, -3, 2, 1}, BwColor::kWhite);
    EXPECT_EQ(ToPicture(image), (Picture{"....", "...#", "..##"}));
    image.fill({4, 0, 8, 2}, BwColor::kBlack);
    EXPECT_EQ(ToPicture(image), (Picture{"....", "...#", "..##"}));
}

TEST(BinaryImage, FilledRectanglesAgreeWithSinglePixels) {
    for (int left = 0; left < 70; left += 3)
        for (int right = left; right < 70; right += 5) {
            BinaryImage image({70, 2}, BwColor::kWhite);
            image.fill({left, 1, right, 1}, BwColor::kBlack);
            for (int x = 0; x < 70; ++x) {
                ASSERT_EQ(image.isBlack(x, 1), x >= left && x <= right) << left << " " << right;
                ASSERT_FALSE(image.isBlack(x, 0));
            }
        }
}

TEST(BinaryImage, CopySharesPixelsUntilWrittenTo) {
    BinaryImage a({50, 4}, BwColor::kWhite);
    BinaryImage b(a);
    const BinaryImage &readA = a, &readB = b;
    EXPECT_EQ(readA.data(), readB.data());
    b.fill({0, 0, 0, 0}, BwColor::kBlack);
    EXPECT_NE(readA.data(), readB.data());
    EXPECT_FALSE(a.isBlack(0, 0));
    EXPECT_TRUE(b.isBlack(0, 0));
}

TEST(BinaryImage, SoleOwnerIsNotCloned) {
    BinaryImage image({50, 4}, BwColor::kWhite);
    const std::uint32_t* before = image.data();
    image.fill(BwColor::kBlack);
    EXPECT_EQ(image.data(), before);
}

TEST(BinaryImage, AssignmentToItselfKeepsThePixels) {
    BinaryImage image = RandomImage(40, 5, 3);
    const Picture before = ToPicture(image);
    const BinaryImage& alias = image;
    image = alias;
    EXPECT_EQ(ToPicture(image), before);
}

TEST(BinaryImage, EqualityIgnoresBitsBehindTheLastColumn) {
    BinaryImage a({5, 2}, BwColor::kWhite), b({5, 2}, BwColor::kWhite);
    b.data()[0] |= 0x07FFFFFFU;
    EXPECT_TRUE(a == b);
    b.data()[0] |= 0x08000000U;
    EXPECT_FALSE(a == b);
    EXPECT_FALSE(a == BinaryImage({5, 3}, BwColor::kWhite));
    EXPECT_FALSE(a == BinaryImage());
    EXPECT_TRUE(BinaryImage() == BinaryImage());
}

TEST(BinaryImage, ContentBoundingBoxOfAnAllWhiteImageIsNull) {
    const QT::QRect none{0, 0, -1, -1};
    EXPECT_EQ(BinaryImage({7, 9}, BwColor::kWhite).contentBoundingBox(), none);
    EXPECT_EQ(BinaryImage().contentBoundingBox(), none);
    EXPECT_EQ(BinaryImage({7, 9}, BwColor::kBlack).contentBoundingBox(BwColor::kBlack), none);
}

TEST(BinaryImage, ContentBoundingBoxIgnoresBitsBehindTheLastColumn) {
    BinaryImage image({5, 2}, BwColor::kWhite);
    image.data()[0] = 0x07FFFFFFU;
    EXPECT_EQ(image.contentBoundingBox(), (QT::QRect{0, 0, -1, -1}));
}

TEST(BinaryImage, ContentBoundingBoxAgreesWithAPlainScan) {
    for (int width : {1, 31, 32, 33, 64, 65, 100})
        for (std::uint32_t seed = 1; seed < 12; ++seed) {
            const BinaryImage image = RandomImage(width, 9, seed, 60);
            for (const BwColor background : {BwColor::kWhite, BwColor::kBlack}) {
                QT::QRect box{1000, 1000, -1, -1};
                for (int y = 0; y < 9; ++y)
                    for (int x = 0; x < width; ++x)
                        if (image.isBlack(x, y) != (background == BwColor::kBlack))
                            box = {std::min(box.left, x), std::min(box.top, y),
                                   std::max(box.right, x), std::max(box.bottom, y)};
                if (box.right < 0)
                    box = {0, 0, -1, -1};
                EXPECT_EQ(image.contentBoundingBox(background), box) << width << " " << seed;
            }
        }
}

}  // namespace
}  // namespace velloran::imageproc

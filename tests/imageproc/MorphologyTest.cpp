#include <stdexcept>

#include "imageproc/BinaryMorphology.h"
#include "imageproc/GrayMorphology.h"
#include "imageproc/Pictures.h"
#include "support/Images.h"

namespace velloran::imageproc {
namespace {

using test::FromPicture;
using test::Picture;
using test::RandomImage;
using test::ToPicture;

constexpr QT::QSize kBrickSizes[] = {{1, 1}, {2, 1}, {1, 2}, {3, 3}, {4, 2}, {5, 7}, {33, 2}};

bool PixelOr(const BinaryImage& image, int x, int y, BwColor outside) {
    if (x < 0 || y < 0 || x >= image.width() || y >= image.height())
        return outside == BwColor::kBlack;
    return image.isBlack(x, y);
}

/// `any` true: black where any offset, taken back from the pixel, meets black; else where all do.
bool PlainBrick(const BinaryImage& image, const Brick& brick, int x, int y, BwColor outside,
                bool any) {
    for (int dy = brick.minY(); dy <= brick.maxY(); ++dy)
        for (int dx = brick.minX(); dx <= brick.maxX(); ++dx)
            if (PixelOr(image, x - dx, y - dy, outside) == any)
                return any;
    return !any;
}

TEST(Brick, OffsetsOfEvenAndOddSizes) {
    const Brick odd({3, 5}), even({4, 2});
    EXPECT_EQ(odd.minX(), -1);
    EXPECT_EQ(odd.maxX(), 1);
    EXPECT_EQ(odd.minY(), -2);
    EXPECT_EQ(odd.maxY(), 2);
    EXPECT_EQ(even.minX(), -2);
    EXPECT_EQ(even.maxX(), 1);
    EXPECT_EQ(even.minY(), -1);
    EXPECT_EQ(even.maxY(), 0);
}

TEST(BinaryMorphology, DilationAndErosionAgreeWithThePlainForm) {
    for (const int width : {1, 17, 32, 75})
        for (const QT::QSize size : kBrickSizes)
            for (const BwColor outside : {BwColor::kWhite, BwColor::kBlack}) {
                const BinaryImage image = RandomImage(width, 11, 3, 3);
                const Brick brick(size);
                const BinaryImage wide = dilateBrick(image, brick, outside);
                const BinaryImage thin = erodeBrick(image, brick, outside);
                for (int y = 0; y < 11; ++y)
                    for (int x = 0; x < width; ++x) {
                        ASSERT_EQ(wide.isBlack(x, y),
                                  PlainBrick(image, brick, x, y, outside, true));
                        ASSERT_EQ(thin.isBlack(x, y),
                                  PlainBrick(image, brick, x, y, outside, false));
                    }
            }
}

TEST(BinaryMorphology, AreaMayLeaveTheImage) {
    const BinaryImage dot = FromPicture({"#"});
    const BinaryImage wide = dilateBrick(dot, Brick({3, 3}), {-2, -2, 2, 2});
    EXPECT_EQ(ToPicture(wide), (Picture{".....", ".###.", ".###.", ".###.", "....."}));
}

TEST(BinaryMorphology, OpeningKeepsWhatTheBrickFitsInto) {
    const BinaryImage image = FromPicture({
        "........",
        ".###..#.",
        ".###....",
        ".###.##.",
        "........",
    });
    EXPECT_EQ(ToPicture(openBrick(image, {3, 3})),
              (Picture{"........", ".###....", ".###....", ".###....", "........"}));
    EXPECT_EQ(ToPicture(openBrick(image, {2, 1})),
              (Picture{"........", ".###....", ".###....", ".###.##.", "........"}));
}

TEST(BinaryMorphology, OpeningNeverAddsAndDoesNothingTheSecondTime) {
    for (const QT::QSize size : kBrickSizes)
        for (const BwColor outside : {BwColor::kWhite, BwColor::kBlack}) {
            const BinaryImage image = RandomImage(61, 23, 9, 2);
            const BinaryImage opened = openBrick(image, size, outside);
            for (int y = 0; y < 23; ++y)
                for (int x = 0; x < 61; ++x)
                    ASSERT_TRUE(!opened.isBlack(x, y) || image.isBlack(x, y));
            ASSERT_TRUE(openBrick(opened, size, outside) == opened);
        }
}

TEST(BinaryMorphology, ObjectAtTheEdgeStaysWithBlackOutside) {
    const BinaryImage image = FromPicture({"#...", "....", "...."});
    EXPECT_TRUE(openBrick(image, {3, 3}, BwColor::kBlack).isBlack(0, 0));
    EXPECT_FALSE(openBrick(image, {3, 3}, BwColor::kWhite).isBlack(0, 0));
}

TEST(BinaryMorphology, BrickLargerThanTheImageLeavesABlankOne) {
    const BinaryImage black({5, 5}, BwColor::kBlack);
    EXPECT_EQ(openBrick(black, {6, 1}).contentBoundingBox(), (QT::QRect{0, 0, -1, -1}));
    EXPECT_TRUE(openBrick(black, {6, 1}, BwColor::kBlack) == black);
}

TEST(BinaryMorphology, EmptyOperandsThrow) {
    EXPECT_THROW(dilateBrick(BinaryImage(), Brick({3, 3})), std::invalid_argument);
    EXPECT_THROW(erodeBrick(BinaryImage({3, 3}, BwColor::kBlack), Brick({0, 3})),
                 std::invalid_argument);
    EXPECT_THROW(openBrick(BinaryImage(), {3, 3}), std::invalid_argument);
}

int GrayOr(const CDibImage& image, int x, int y, int outside) {
    if (x < 0 || y < 0 || x >= image.GetWidth() || y >= image.GetHeight())
        return outside;
    return velloran::test::IndexAt(image, x, y);
}

TEST(GrayMorphology, ErosionIsTheMinimumOverTheBrick) {
    for (const QT::QSize size : kBrickSizes)
        for (const int outside : {0, 255, 90}) {
            const CDibImage image = velloran::test::Noise(19, 9, 8, 4);
            const Brick brick(size);
            const CDibImage eroded = erodeGray(image, brick, static_cast<std::uint8_t>(outside));
            for (int y = 0; y < 9; ++y)
                for (int x = 0; x < 19; ++x) {
                    int lowest = 255;
                    for (int dy = brick.minY(); dy <= brick.maxY(); ++dy)
                        for (int dx = brick.minX(); dx <= brick.maxX(); ++dx)
                            lowest = std::min(lowest, GrayOr(image, x + dx, y + dy, outside));
                    ASSERT_EQ(velloran::test::IndexAt(eroded, x, y), lowest);
                }
        }
}

TEST(GrayMorphology, ErosionOverABrickBesideTheOrigin) {
    const CDibImage image = velloran::test::FromRows({{9, 8, 7, 1, 5}});
    const CDibImage eroded = erodeGray(image, Brick(1, 0, 2, 0), 255);
    EXPECT_EQ(velloran::test::IndexAt(eroded, 0, 0), 7);
    EXPECT_EQ(velloran::test::IndexAt(eroded, 1, 0), 1);
    EXPECT_EQ(velloran::test::IndexAt(eroded, 4, 0), 255);
}

TEST(GrayMorphology, ClosingFillsDarkSpotsSmallerThanTheBrick) {
    const CDibImage image = velloran::test::FromRows({
        {200, 200, 200, 200, 200, 200},
        {200, 10, 200, 50, 50, 50},
        {200, 200, 200, 50, 50, 50},
        {200, 200, 200, 50, 50, 50},
    });
    const CDibImage closed = closeGray(image, {2, 2}, 0);
    EXPECT_EQ(velloran::test::IndexAt(closed, 1, 1), 200);
    EXPECT_EQ(velloran::test::IndexAt(closed, 3, 1), 50);
    EXPECT_EQ(velloran::test::IndexAt(closed, 5, 3), 50);
}

TEST(GrayMorphology, ClosingNeverDarkensAndDoesNothingTheSecondTime) {
    for (const QT::QSize size : kBrickSizes) {
        const CDibImage image = velloran::test::Noise(23, 15, 8, 8);
        const CDibImage closed = closeGray(image, size, 0);
        for (int y = 0; y < 15; ++y)
            for (int x = 0; x < 23; ++x)
                ASSERT_GE(velloran::test::IndexAt(closed, x, y),
                          velloran::test::IndexAt(image, x, y));
        velloran::test::ExpectSamePixels(closeGray(closed, size, 0), closed);
    }
}

TEST(GrayMorphology, OtherDepthsThrow) {
    EXPECT_THROW(erodeGray(velloran::test::Filled(4, 4, 24, 0), Brick({3, 3}), 0),
                 std::invalid_argument);
    EXPECT_THROW(closeGray(CDibImage(), {3, 3}, 0), std::invalid_argument);
}

}  // namespace
}  // namespace velloran::imageproc

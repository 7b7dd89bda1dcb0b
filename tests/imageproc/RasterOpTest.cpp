#include "imageproc/RasterOp.h"

#include <stdexcept>

#include "imageproc/Pictures.h"

namespace velloran::imageproc {
namespace {

using test::Picture;
using test::RandomImage;
using test::ToPicture;

/// The combination pixel by pixel, on pictures as text.
template <typename Choose>
Picture PlainCombination(const Picture& dst, const QT::QRect& rect, const Picture& src, Point from,
                         Choose choose) {
    Picture result = dst;
    for (int y = rect.top; y <= rect.bottom; ++y)
        for (int x = rect.left; x <= rect.right; ++x) {
            const bool s = src[static_cast<std::size_t>(from.y + y - rect.top)]
                              [static_cast<std::size_t>(from.x + x - rect.left)] == '#';
            char& d = result[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)];
            d = choose(s, d == '#') ? '#' : '.';
        }
    return result;
}

struct Place {
    QT::QRect rect;
    Point from;
};

std::vector<Place> ManyPlaces(int width, int height) {
    std::vector<Place> places;
    std::mt19937 random(7);
    const auto below = [&](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    for (int i = 0; i < 400; ++i) {
        const int w = 1 + below(width), h = 1 + below(height);
        const int x = below(width - w + 1), y = below(height - h + 1);
        places.push_back(
            {{x, y, x + w - 1, y + h - 1}, {below(width - w + 1), below(height - h + 1)}});
    }
    return places;
}

template <typename Operator, typename Choose>
void ExpectEveryPlaceAgrees(Choose choose) {
    const BinaryImage src = RandomImage(101, 7, 1), dst = RandomImage(101, 7, 2);
    for (const Place& place : ManyPlaces(101, 7)) {
        BinaryImage result(dst);
        rasterOp<Operator>(result, place.rect, src, place.from);
        ASSERT_EQ(ToPicture(result),
                  PlainCombination(ToPicture(dst), place.rect, ToPicture(src), place.from, choose));
    }
}

TEST(RasterOp, CopyAgreesWithSinglePixels) {
    ExpectEveryPlaceAgrees<Copy>([](bool s, bool) { return s; });
}

TEST(RasterOp, OrAgreesWithSinglePixels) {
    ExpectEveryPlaceAgrees<Unite>([](bool s, bool d) { return s || d; });
}

TEST(RasterOp, AndAgreesWithSinglePixels) {
    ExpectEveryPlaceAgrees<Intersect>([](bool s, bool d) { return s && d; });
}

TEST(RasterOp, SubtractTakesAwayTheSource) {
    BinaryImage dst = RandomImage(70, 3, 5);
    const BinaryImage src = RandomImage(70, 3, 6), before(dst);
    subtract(dst, src);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 70; ++x)
            ASSERT_EQ(dst.isBlack(x, y), before.isBlack(x, y) && !src.isBlack(x, y));
}

TEST(RasterOp, SourceAndDestinationMayOverlapInAllDirections) {
    for (const Place& place : ManyPlaces(90, 9)) {
        BinaryImage image = RandomImage(90, 9, 11);
        const Picture before = ToPicture(image);
        rasterOp<Copy>(image, place.rect, image, place.from);
        ASSERT_EQ(ToPicture(image), PlainCombination(before, place.rect, before, place.from,
                                                     [](bool s, bool) { return s; }))
            << place.rect.left << "," << place.rect.top << " from " << place.from.x << ","
            << place.from.y;
    }
}

TEST(RasterOp, SharedDestinationIsClonedFirst) {
    BinaryImage image({40, 2}, BwColor::kWhite);
    const BinaryImage sharing(image);
    rasterOp<Copy>(image, BinaryImage({40, 2}, BwColor::kBlack));
    EXPECT_TRUE(image.isBlack(0, 0));
    EXPECT_FALSE(sharing.isBlack(0, 0));
}

TEST(RasterOp, NullOperandsThrowTheirText) {
    BinaryImage null, image({4, 4}, BwColor::kWhite);
    for (const bool nullDst : {true, false}) {
        try {
            nullDst ? rasterOp<Copy>(null, image) : rasterOp<Copy>(image, null);
            FAIL();
        } catch (const std::invalid_argument& error) {
            EXPECT_STREQ(error.what(), "rasterOp: can't operate on null images");
        }
    }
}

TEST(RasterOp, UnequalSizesThrowTheirText) {
    BinaryImage a({4, 4}, BwColor::kWhite), b({4, 5}, BwColor::kWhite);
    try {
        rasterOp<Unite>(a, b);
        FAIL();
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "rasterOp: images have different sizes");
    }
}

TEST(RasterOp, RectangleThatLeavesItsImageThrows) {
    BinaryImage a({4, 4}, BwColor::kWhite), b({9, 9}, BwColor::kBlack);
    EXPECT_THROW(rasterOp<Copy>(a, {2, 2, 4, 3}, b, {}), std::invalid_argument);
    EXPECT_THROW(rasterOp<Copy>(a, {0, 0, 3, 3}, b, {6, 0}), std::invalid_argument);
    EXPECT_EQ(a.contentBoundingBox(), (QT::QRect{0, 0, -1, -1}));
}

TEST(RasterOp, WorksThroughTheAbstractOperation) {
    BinaryImage dst({3, 1}, BwColor::kWhite);
    const BinaryImage black({3, 1}, BwColor::kBlack);
    const TemplateRasterOp<Unite> unite;
    const AbstractRasterOp& operation = unite;
    operation.apply(dst, {1, 0, 1, 0}, black, {});
    EXPECT_EQ(ToPicture(dst), Picture{".#."});
}

}  // namespace
}  // namespace velloran::imageproc

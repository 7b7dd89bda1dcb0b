#include <gtest/gtest.h>

#include <limits>

#include "core/DibImage.h"
#include "page/PageLayout.h"
#include "support/Images.h"

namespace velloran::test {
namespace {

constexpr std::uint32_t kBlue = 0xFF0000;  // 0x00BBGGRR

LayoutRequest Request(std::int32_t pageSize) {
    LayoutRequest request;
    request.pageSize = pageSize;
    request.unit = 1;
    request.dpi = 300;
    request.fillColor = kBlue;
    return request;
}

/// The page as pixels: the content of `image` at (x, y) from the top left, the rest blue.
void ExpectPlaced(const CDibImage& page, const CDibImage& image, int x, int y, Rgb fill) {
    for (int row = 0; row < page.GetHeight(); ++row)
        for (int column = 0; column < page.GetWidth(); ++column) {
            const int fromX = column - x, fromY = row - y;
            const bool inside =
                fromX >= 0 && fromY >= 0 && fromX < image.GetWidth() && fromY < image.GetHeight();
            const Rgb expected = inside ? PixelAt(image, fromX, fromY) : fill;
            ASSERT_EQ(PixelAt(page, column, row), expected) << column << ", " << row;
        }
}

TEST(PlaceOnPage, APageThatWasNotCutStays) {
    CDibImage image = Noise(7, 5, 24);
    const CDibImage before = image;
    LayoutRequest request = Request(0);
    request.imageWidth = 7;
    request.imageHeight = 5;
    EXPECT_EQ(placeOnPage(image, request), 1);
    ExpectSamePixels(image, before);
}

TEST(PlaceOnPage, ACutPageKeepsItsSizeAndIsBlankWhereItWasCut) {
    const CDibImage content = Noise(6, 4, 24);
    CDibImage image = content;
    LayoutRequest request = Request(0);
    request.imageWidth = 10;
    request.imageHeight = 9;
    request.cutLeft = 1;
    request.cutRight = 3;
    request.cutTop = 3;
    request.cutBottom = 2;
    EXPECT_EQ(placeOnPage(image, request), 1);
    EXPECT_EQ(image.GetWidth(), 10);
    EXPECT_EQ(image.GetHeight(), 9);
    ExpectPlaced(image, content, 1, 3, {0, 0, 255});
}

struct AlignCase {
    int alignH, alignV, x, y;
};
TEST(PlaceOnPage, ACutPageFollowsTheAlignment) {
    // 10 x 9 with content 6 x 4, cut 1 at the left and 2 at the bottom.
    constexpr AlignCase kCases[] = {{0, 0, 1, 3}, {1, 1, 0, 0}, {2, 2, 4, 5}, {3, 3, 2, 3}};
    for (const AlignCase& c : kCases) {
        const CDibImage content = Noise(6, 4, 8);
        CDibImage image = content;
        LayoutRequest request = Request(0);
        request.imageWidth = 10;
        request.imageHeight = 9;
        request.cutLeft = 1;
        request.cutBottom = 2;
        request.alignH = c.alignH;
        request.alignV = c.alignV;
        EXPECT_EQ(placeOnPage(image, request), 1);
        // (9 - 4) / 2 = 2 rows below the content leave 3 above.
        ExpectPlaced(image, content, c.x, c.y, PixelAt(image, 9, c.y == 0 ? 8 : 0));
    }
}

TEST(PlaceOnPage, ContentWithoutMarginsStaysAsItWasCut) {
    for (const int row : {1, 2}) {
        CDibImage image = Noise(7, 5, 24);
        const CDibImage before = image;
        LayoutRequest request = Request(row);
        EXPECT_EQ(placeOnPage(image, request), 1);
        ExpectSamePixels(image, before);
    }
}

TEST(PlaceOnPage, MarginsSurroundTheContentAtEveryDepth) {
    for (const int bits : {1, 4, 8, 24}) {
        const CDibImage content = Noise(13, 5, bits);
        CDibImage image = content;
        image.SetXDpi(123);
        LayoutRequest request = Request(2);
        request.fillColor = 0xFFFFFF;
        request.marginLeft = 3;
        request.marginRight = 6;
        request.marginTop = 2;
        request.marginBottom = 1;
        EXPECT_EQ(placeOnPage(image, request), 1);
        EXPECT_EQ(image.GetBpp(), bits);
        EXPECT_EQ(image.GetXDpi(), 123);
        ASSERT_EQ(image.GetWidth(), 22);
        ASSERT_EQ(image.GetHeight(), 8);
        ExpectPlaced(image, content, 3, 2, {255, 255, 255});
    }
}

TEST(PlaceOnPage, PalettesTakeTheNearestEntryTheLowerOfTwo) {
    CDibImage image = Filled(4, 4, 8, 2);
    SetPalette(image, {{0, 0, 0}, {0, 0, 200}, {255, 255, 255}, {0, 0, 200}, {55, 0, 255}});
    LayoutRequest request = Request(2);
    request.marginLeft = 2;
    EXPECT_EQ(placeOnPage(image, request), 1);
    EXPECT_EQ(IndexAt(image, 0, 0), 1);  // 55 * 55 from blue, as entries 3 and 4 are
    EXPECT_EQ(IndexAt(image, 2, 0), 2);
}

TEST(PlaceOnPage, AGivenWidthKeepsTheContentsShape) {
    const CDibImage content = Noise(20, 10, 24);
    CDibImage image = content;
    LayoutRequest request = Request(3);
    request.pageWidth = 50;
    request.marginLeft = 4;
    request.marginRight = 6;
    request.marginTop = 3;
    request.marginBottom = 5;
    request.alignH = 1;
    request.alignV = 1;
    EXPECT_EQ(placeOnPage(image, request), 1);
    EXPECT_EQ(image.GetWidth(), 50);
    EXPECT_EQ(image.GetHeight(), 28);  // 40 * 10 / 20 and the margins
    ExpectPlaced(image, content, 4, 3, {0, 0, 255});
}

TEST(PlaceOnPage, LargerContentOverflowsAndIsClippedByThePage) {
    const CDibImage content = Noise(30, 8, 24);
    CDibImage image = content;
    LayoutRequest request = Request(5);
    request.pageWidth = 20;
    request.pageHeight = 10;
    request.marginLeft = 4;
    request.marginRight = 4;
    request.alignH = 1;
    request.alignV = 1;
    EXPECT_EQ(placeOnPage(image, request), 1);
    EXPECT_EQ(image.GetWidth(), 20);
    ExpectPlaced(image, content, 4, 0, {0, 0, 255});
}

TEST(PlaceOnPage, LargerContentIsCutToTheTypeAreaWhereTheRuleSaysSo) {
    // 30 columns into 12: from the left, from the right, from the middle.
    constexpr int kFrom[] = {0, 0, 18, 9};
    for (int align = 0; align < 4; ++align) {
        const CDibImage content = Noise(30, 8, 24);
        CDibImage image = content;
        LayoutRequest request = Request(5);
        request.pageWidth = 20;
        request.pageHeight = 8;
        request.marginLeft = request.marginRight = 4;
        request.bigRule = 2;
        request.alignH = align;
        request.alignV = 1;
        EXPECT_EQ(placeOnPage(image, request), 1);
        for (int x = 0; x < 20; ++x) {
            const bool inside = x >= 4 && x < 16;
            EXPECT_EQ(PixelAt(image, x, 3),
                      inside ? PixelAt(content, x - 4 + kFrom[align], 3) : (Rgb{0, 0, 255}))
                << align << ": " << x;
        }
    }
}

TEST(PlaceOnPage, MarginsThatLeaveNothingMakeABlankPage) {
    constexpr int kCutRule = 2, kAtEnd = 2;
    for (const int bits : {1, 4, 8, 24}) {
        CDibImage image = Filled(6, 4, bits, 0);
        LayoutRequest request = Request(5);
        request.pageWidth = 40;
        request.pageHeight = 30;
        request.marginLeft = request.marginRight = 500;
        request.marginTop = request.marginBottom = 400;
        request.bigRule = kCutRule;
        request.alignH = request.alignV = kAtEnd;
        request.fillColor = 0xFFFFFF;
        EXPECT_EQ(placeOnPage(image, request), 1);
        ASSERT_EQ(image.GetWidth(), 40);
        ASSERT_EQ(image.GetHeight(), 30);
        const Rgb first = PixelAt(image, 0, 0);
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 40; ++x)
                ASSERT_EQ(PixelAt(image, x, y), first) << x << ", " << y << " at " << bits;
    }
}

TEST(PlaceOnPage, MarginsInCentimetresAreConvertedOnce) {
    CDibImage image = Noise(20, 20, 8);
    LayoutRequest request = Request(2);
    request.unit = 0;
    request.dpi = 254;
    request.marginLeft = 10;  // a millimetre: 10 pixels
    EXPECT_EQ(placeOnPage(image, request), 1);
    EXPECT_EQ(image.GetWidth(), 30);
    EXPECT_EQ(request.marginLeft, 10);
}

TEST(PlaceOnPage, APageAboveTheLimitsIsRefusedAndTheImageStays) {
    for (const int side : {0, -5, 1'000'001, std::numeric_limits<int>::max()}) {
        CDibImage image = Noise(7, 5, 1);
        const CDibImage before = image;
        LayoutRequest request = Request(5);
        request.pageWidth = side;
        request.pageHeight = 2000;
        EXPECT_EQ(placeOnPage(image, request), 0) << side;
        ExpectSamePixels(image, before);
    }
}

TEST(PlaceOnPage, AlphaGoesAlongAndTheRestIsOpaque) {
    CDibImage image = Noise(4, 4, 24);
    ASSERT_TRUE(image.CreateAlpha());
    std::fill_n(image.GetAlpha(), 16, std::uint8_t{7});
    LayoutRequest request = Request(2);
    request.marginRight = 2;
    EXPECT_EQ(placeOnPage(image, request), 1);
    EXPECT_EQ(image.GetAlpha()[3], 7);
    EXPECT_EQ(image.GetAlpha()[4], 255);
}

}  // namespace
}  // namespace velloran::test

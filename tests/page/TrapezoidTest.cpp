#include "page/Trapezoid.h"

#include <gtest/gtest.h>

#include <cmath>

#include "core/DibImage.h"
#include "imaging/Perspective.h"
#include "support/Images.h"
#include "support/Threads.h"

namespace velloran::test {
namespace {

PackedCorners Packed(const TrueCorners& corners, int width, int height) {
    return PackCorners(corners, width, height);
}

/// 400 x 300 with a page of 200 x 100 pixels around the middle.
constexpr int kWidth = 400, kHeight = 300;
constexpr TrueCorners kPage{{{100, 100}, {300, 100}, {300, 200}, {100, 200}}};

struct Size {
    int width = 0, height = 0;
    bool operator==(const Size&) const = default;
};
void PrintTo(const Size& size, std::ostream* out) {
    *out << size.width << " x " << size.height;
}

Size SizeOf(const TrueCorners& page, int mode, int ratio, int width = 0, int height = 0) {
    const CDibImage image = Filled(kWidth, kHeight, 8, 0);
    Size size;
    TrueCorners quad;
    EXPECT_EQ(
        correctionOutputSize(size.width, size.height, quad, image, Packed(page, kWidth, kHeight),
                             mode | ratio << 8, width | height << 16),
        1);
    EXPECT_EQ(quad, page);
    return size;
}

TEST(Corners, AreRelativeToTheCornerOfThePictureNearest) {
    const PackedCorners packed = Packed(kPage, kWidth, kHeight);
    EXPECT_EQ(packed[0], 100 << 16 | 100);
    EXPECT_EQ(packed[1], 100 << 16 | (-100 & 0xFFFF));
    EXPECT_EQ(static_cast<std::uint32_t>(packed[2]), 0xFF9CFF9CU);
    EXPECT_EQ(UnpackCorners(packed, kWidth, kHeight), kPage);
    // On a page of another size they keep their distance to its corners.
    EXPECT_EQ(UnpackCorners(packed, 410, 320)[2], (CornerPoint{310, 220}));
}

TEST(CorrectionSize, TheModesChooseFromMeasureRatioAndWish) {
    EXPECT_EQ(SizeOf(kPage, 0, 0), (Size{200, 100}));
    EXPECT_EQ(SizeOf(kPage, 1, 1), (Size{200, 150}));  // 4:3
    EXPECT_EQ(SizeOf(kPage, 2, 1, 120), (Size{120, 90}));
    EXPECT_EQ(SizeOf(kPage, 3, 2, 0, 80), (Size{120, 80}));  // 3:2
    EXPECT_EQ(SizeOf(kPage, 4, 0, 120), (Size{120, 60}));
    EXPECT_EQ(SizeOf(kPage, 5, 0, 0, 80), (Size{160, 80}));
    EXPECT_EQ(SizeOf(kPage, 6, 0, 70, 90), (Size{70, 90}));
}

TEST(CorrectionSize, AWishBelowAQuarterOfTheMeasureDoesNotCount) {
    EXPECT_EQ(SizeOf(kPage, 6, 0, 50, 25), (Size{50, 25}));
    EXPECT_EQ(SizeOf(kPage, 6, 0, 49, 24), (Size{200, 100}));
    EXPECT_EQ(SizeOf(kPage, 4, 0, -5), (Size{200, 100}));
}

TEST(CorrectionSize, TheRatioLiesAsThePageDoes) {
    constexpr TrueCorners kUpright{{{100, 50}, {200, 50}, {200, 250}, {100, 250}}};
    EXPECT_EQ(SizeOf(kPage, 1, 7).height, 141);        // A3/A4 on its side: 200 * 0.7067 = 141.3
    EXPECT_EQ(SizeOf(kUpright, 1, 7).width, 141);      // and upright
    EXPECT_EQ(SizeOf(kUpright, 1, 1).width, 150);      // 4:3 upright
    EXPECT_EQ(SizeOf(kPage, 1, 6), (Size{200, 200}));  // 1:1 never turns
    EXPECT_EQ(SizeOf(kPage, 1, 13), (Size{200, 200}));
}

TEST(CorrectionSize, NoCornersAndUnknownOnesAreRefused) {
    const CDibImage image = Filled(kWidth, kHeight, 8, 0);
    int width = 0, height = 0;
    TrueCorners quad;
    for (const PackedCorners& corners : {kNoCorners, kUnknownCorners})
        EXPECT_EQ(correctionOutputSize(width, height, quad, image, corners, 0, 0), 0);
    EXPECT_EQ(correctionOutputSize(width, height, quad, CDibImage(), {1, 2, 3, 4}, 0, 0), 0);
}

TEST(PerspectiveMap, TakesTheRectangleToTheCorners) {
    const std::array<MapPoint, 4> corners{{{3, 5}, {80, 11}, {95, 70}, {-4, 60}}};
    const auto map = PerspectiveMap::ToQuad(50, 40, corners);
    ASSERT_TRUE(map);
    const MapPoint rectangle[] = {{0, 0}, {50, 0}, {50, 40}, {0, 40}};
    const auto inverse = map->Inverse();
    ASSERT_TRUE(inverse);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR((*map)(rectangle[i]).x, corners[i].x, 1e-9);
        EXPECT_NEAR((*map)(rectangle[i]).y, corners[i].y, 1e-9);
        EXPECT_NEAR((*inverse)(corners[i]).x, rectangle[i].x, 1e-9);
        EXPECT_NEAR((*inverse)(corners[i]).y, rectangle[i].y, 1e-9);
    }
    // The crossing of the diagonals stays the crossing of the diagonals.
    const MapPoint middle = (*map)({25, 20});
    EXPECT_NEAR((middle.x - 3) * (70 - 5), (middle.y - 5) * (95 - 3), 1e-6);
    EXPECT_NEAR((middle.x - 80) * (60 - 11), (middle.y - 11) * (-4 - 80), 1e-6);
    EXPECT_FALSE(PerspectiveMap::ToQuad(50, 40, {{{0, 0}, {1, 1}, {2, 2}, {0, 5}}}));
}

/// The level of a smooth page at a place of its own.
double Level(double x, double y) {
    return 128 + 50 * std::sin(x / 9) + 50 * std::cos(y / 11);
}

/// A photograph of the page in `toPage`'s perspective.
CDibImage Photograph(const PerspectiveMap& toPage) {
    CDibImage image = Filled(kWidth, kHeight, 8, 0);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            const MapPoint at = toPage({double(x), double(y)});
            image.GetBits(kHeight - 1 - y)[x] = static_cast<std::uint8_t>(Level(at.x, at.y) + 0.5);
        }
    return image;
}

TEST(WarpToRectangle, ThePageComesOutAsItWasBeforeItWasPhotographed) {
    const TrueCorners corners{{{60, 40}, {330, 60}, {350, 260}, {40, 240}}};
    std::array<MapPoint, 4> quad;
    for (std::size_t i = 0; i < 4; ++i)
        quad[i] = {double(corners[i].x), double(corners[i].y)};
    const auto fromPage = PerspectiveMap::ToQuad(310, 220, quad);
    CDibImage image = Photograph(*fromPage->Inverse());
    ASSERT_EQ(warpToRectangle(image, Packed(corners, kWidth, kHeight), 0, 0, 0, 0), 1);
    ASSERT_EQ(image.GetWidth(), 310);
    ASSERT_EQ(image.GetHeight(), 220);
    double worst = 0;
    for (int y = 5; y < 215; ++y)
        for (int x = 5; x < 305; ++x)
            worst = std::max(worst, std::fabs(IndexAt(image, x, y) - Level(x, y)));
    EXPECT_LT(worst, 9);  // a pixel between the first stored row and the last one of the picture
}

TEST(WarpToBoundingBox, ThePicturesCornersGoWhereTheyAreTold) {
    CDibImage image = Filled(200, 100, 24, 200);
    // The right side becomes half as high.
    const TrueCorners places{{{0, 0}, {200, 25}, {200, 75}, {0, 100}}};
    ASSERT_EQ(warpToBoundingBox(image, Packed(places, 200, 100), 1, 0x0000FF), 1);
    EXPECT_EQ(image.GetWidth(), 200);
    EXPECT_EQ(image.GetHeight(), 100);
    EXPECT_EQ(PixelAt(image, 195, 10), (Rgb{255, 0, 0}));
    EXPECT_EQ(PixelAt(image, 195, 90), (Rgb{255, 0, 0}));
    EXPECT_EQ(PixelAt(image, 195, 50), (Rgb{200, 200, 200}));
    EXPECT_EQ(PixelAt(image, 5, 5), (Rgb{200, 200, 200}));
}

TEST(WarpToBoundingBox, UnknownCornersAreASmallWarp) {
    CDibImage image = Noise(50, 40, 8);
    EXPECT_EQ(warpToBoundingBox(image, kUnknownCorners, 1, 0), 1);
    EXPECT_EQ(image.GetWidth(), 50);
    EXPECT_EQ(warpToBoundingBox(image, kNoCorners, 1, 0), 0);
    EXPECT_EQ(warpToRectangle(image, kUnknownCorners, 1, 0, 0, 0), 0);
}

TEST(Warps, CrossedEqualAndDistantCornersEndWithAnImageWithinTheLimits) {
    const TrueCorners kCases[] = {
        {{{300, 100}, {100, 100}, {300, 200}, {100, 200}}},  // crossed
        {{{50, 50}, {50, 50}, {50, 50}, {50, 50}}},          // one point
        {{{0, 0}, {10, 10}, {20, 20}, {30, 30}}},            // a line
        {{{-30000, -30000}, {30000, 5}, {30000, 30000}, {-9, 30000}}},
        {{{0, 0}, {1, 0}, {1, 1}, {0, 1}}},
    };
    for (const TrueCorners& corners : kCases)
        for (const int nearest : {0, 1}) {
            CDibImage box = Noise(kWidth, kHeight, 8), page = box;
            const PackedCorners packed = Packed(corners, kWidth, kHeight);
            warpToBoundingBox(box, packed, nearest, 0xFFFFFF);
            warpToRectangle(page, packed, nearest, 0, 0, 0xFFFFFF);
            for (const CDibImage* result : {&box, &page}) {
                ASSERT_TRUE(result->IsValid());
                EXPECT_LE(std::int64_t{result->GetWidth()} * result->GetHeight(), 1'000'000'000);
            }
        }
}

TEST(Warps, ThreadsChangeNoByte) {
    const CDibImage source = Noise(600, 400, 24);
    const PackedCorners corners = Packed({{{30, 20}, {580, 10}, {560, 390}, {10, 370}}}, 600, 400);
    std::vector<CDibImage> results;
    for (const int threads : {1, 2, 7}) {
        const Threads count(threads);
        CDibImage page = source;
        EXPECT_EQ(warpToRectangle(page, corners, 0, 0, 0, 0), 1);
        results.push_back(page);
    }
    ExpectSamePixels(results[1], results[0]);
    ExpectSamePixels(results[2], results[0]);
}

TEST(FindCorners, ThePageOnADeskIsCutOutStraight) {
    CDibImage desk = Filled(800, 1000, 8, 40);
    for (int y = 150; y < 880; ++y)
        for (int x = 100 + y / 60; x < 690 - y / 50; ++x)
            desk.GetBits(999 - y)[x] = 240;
    PackedCorners corners = kUnknownCorners;
    ASSERT_EQ(findCorners(1, desk, corners, 0, 0), 1);
    CDibImage page = desk;
    ASSERT_EQ(warpToRectangle(page, corners, 1, 0, 0, 0), 1);
    int paper = 0;
    for (int y = 0; y < page.GetHeight(); ++y)
        for (int x = 0; x < page.GetWidth(); ++x)
            paper += page.GetBits(y)[x] == 240 ? 1 : 0;
    EXPECT_GT(paper, page.GetWidth() * page.GetHeight() * 0.95);
    PackedCorners places = kUnknownCorners;
    EXPECT_EQ(findCorners(0, desk, places, 0, 0), 1);
    EXPECT_NE(places, corners);
    EXPECT_EQ(findCorners(1, Noise(9, 9, 8), corners, 0, 0), 0);
}

}  // namespace
}  // namespace velloran::test

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "reduce/CleanPage.h"
#include "reduce/ComponentList.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"

namespace velloran {
namespace {

/// White with black rectangles: left, top, width, height.
struct Block {
    int x, y, width, height;
};
CDibImage PageOf(int width, int height, const std::vector<Block>& blocks) {
    CDibImage image = test::Filled(width, height, 8, 255);
    for (const Block& b : blocks)
        for (int y = b.y; y < b.y + b.height; ++y)
            for (int x = b.x; x < b.x + b.width; ++x)
                test::SetIndex(image, x, y, 0);
    return image;
}

struct PlainComponent {
    int minX, minY, maxX, maxY, pixels;
    std::vector<std::pair<int, int>> places;
};

/// Pixel by pixel with a stack, eight neighbours, in the order of the first pixel row by row.
std::vector<PlainComponent> FloodFill(const CDibImage& image) {
    const int width = image.GetWidth(), height = image.GetHeight();
    std::vector<bool> seen(static_cast<std::size_t>(width) * height);
    std::vector<PlainComponent> found;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            if (seen[static_cast<std::size_t>(y) * width + x] || test::IndexAt(image, x, y) == 255)
                continue;
            PlainComponent c{x, y, x, y, 0, {}};
            std::vector<std::pair<int, int>> open{{x, y}};
            seen[static_cast<std::size_t>(y) * width + x] = true;
            while (!open.empty()) {
                const auto [px, py] = open.back();
                open.pop_back();
                c.minX = std::min(c.minX, px);
                c.maxX = std::max(c.maxX, px);
                c.minY = std::min(c.minY, py);
                c.maxY = std::max(c.maxY, py);
                ++c.pixels;
                c.places.emplace_back(px, py);
                for (int ny = std::max(0, py - 1); ny <= std::min(height - 1, py + 1); ++ny)
                    for (int nx = std::max(0, px - 1); nx <= std::min(width - 1, px + 1); ++nx) {
                        const std::size_t at = static_cast<std::size_t>(ny) * width + nx;
                        if (!seen[at] && test::IndexAt(image, nx, ny) != 255) {
                            seen[at] = true;
                            open.emplace_back(nx, ny);
                        }
                    }
            }
            found.push_back(std::move(c));
        }
    return found;
}

CDibImage SpottedPage(int width, int height, int percentBlack, std::uint32_t seed) {
    CDibImage image = test::Noise(width, height, 8, seed);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int level = test::IndexAt(image, x, y);
            test::SetIndex(image, x, y, level * 100 < percentBlack * 256 ? level % 255 : 255);
        }
    return image;
}

TEST(ComponentList, EqualsAFloodFillOnEveryWidth) {
    for (int width = 1; width <= 40; width += width < 17 ? 1 : 23)
        for (const int percent : {5, 30, 45, 70, 100}) {
            const CDibImage image =
                SpottedPage(width, 21, percent, static_cast<std::uint32_t>(width));
            const ComponentList list(TopDownViewOf(image));
            const auto expected = FloodFill(image);
            ASSERT_EQ(list.Components().size(), expected.size());
            for (std::size_t i = 0; i < expected.size(); ++i) {
                const Component& c = list.Components()[i];
                ASSERT_EQ(c.minX, expected[i].minX);
                ASSERT_EQ(c.minY, expected[i].minY);
                ASSERT_EQ(c.maxX, expected[i].maxX);
                ASSERT_EQ(c.maxY, expected[i].maxY);
                ASSERT_EQ(c.pixels, expected[i].pixels);
            }
        }
}

TEST(ComponentList, RunsOfAComponentAreItsPixels) {
    const CDibImage image = SpottedPage(31, 27, 40, 7);
    const ComponentList list(TopDownViewOf(image));
    const auto expected = FloodFill(image);
    ASSERT_EQ(list.Components().size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        std::vector<std::pair<int, int>> places;
        const velloran::Run* run = list.RunsOf(list.Components()[i]);
        for (int k = 0; k < list.Components()[i].runs; ++k, ++run) {
            EXPECT_EQ(run->component, static_cast<int>(i));
            for (int x = run->x1; x <= run->x2; ++x)
                places.emplace_back(x, run->y);
        }
        auto sorted = expected[i].places;
        std::sort(sorted.begin(), sorted.end());
        std::sort(places.begin(), places.end());
        EXPECT_EQ(places, sorted);
    }
}

TEST(ComponentList, ArmsThatMeetBelowAreOneComponent) {
    // Two combs whose teeth join only in the last row, and a diagonal.
    CDibImage image = test::Filled(40, 10, 8, 255);
    for (int x = 0; x < 20; x += 2)
        for (int y = 0; y < 9; ++y)
            test::SetIndex(image, x, y, 0);
    for (int x = 0; x < 20; ++x)
        test::SetIndex(image, x, 9, 0);
    for (int i = 0; i < 10; ++i)
        test::SetIndex(image, 25 + i, 9 - i, 0);
    const ComponentList list(TopDownViewOf(image));
    ASSERT_EQ(list.Components().size(), 2u);
    EXPECT_EQ(list.Components()[0].pixels, 110);
    EXPECT_EQ(list.Components()[1].pixels, 10);
}

TEST(ComponentList, LimitsFollowTheResolution) {
    constexpr SizeLimits at300 = SizeLimitsAt(300), low = SizeLimitsAt(-5),
                         high = SizeLimitsAt(9999);
    EXPECT_EQ(at300.large, 300);
    EXPECT_EQ(at300.small, 2);
    EXPECT_EQ(at300.tiny, 3);  // 90000 / 20000 - 1
    EXPECT_EQ(low.large, 200);
    EXPECT_EQ(low.small, 2);
    EXPECT_EQ(low.tiny, 1);
    EXPECT_EQ(high.large, 500);
    EXPECT_EQ(high.small, 6);
    EXPECT_EQ(high.tiny, 39);
}

CDibImage Cleaned(const CDibImage& page, const CleanRequest& request) {
    CDibImage image(page);
    EXPECT_NE(CleanComponents(image, nullptr, request), 0);
    return image;
}

TEST(CleanComponents, SpecksOfTwoByTwoGoAtSizeOneAndThreeByTwoStay) {
    const CDibImage page = PageOf(20, 20, {{3, 3, 2, 2}, {10, 10, 3, 2}, {15, 3, 2, 3}});
    CleanRequest request;
    request.despeckleSize = 1;
    test::ExpectSamePixels(Cleaned(page, request), PageOf(20, 20, {{10, 10, 3, 2}, {15, 3, 2, 3}}));
}

TEST(CleanComponents, BlocksNeedBothSizes) {
    const CDibImage page = PageOf(200, 50, {{10, 10, 150, 20}});
    CleanRequest request;
    request.blockWidth = 100;
    test::ExpectSamePixels(Cleaned(page, request), page);
    request.blockWidth = 0;
    request.blockHeight = 10;
    test::ExpectSamePixels(Cleaned(page, request), page);
    request.blockWidth = 100;
    test::ExpectSamePixels(Cleaned(page, request), test::Filled(200, 50, 8, 255));
}

TEST(CleanComponents, BlockConditionsAreStrict) {
    // The sides less one are 30 and 10.
    const CDibImage page = PageOf(60, 40, {{10, 10, 31, 11}}), white = PageOf(60, 40, {});
    struct {
        int width, height, widthCondition, heightCondition;
        bool removed;
    } const cases[] = {
        {29, 9, 0, 0, true},   {30, 9, 0, 0, false},  {29, 10, 0, 0, false}, {31, 11, 1, 1, true},
        {30, 11, 1, 1, false}, {31, 10, 1, 1, false}, {29, 11, 0, 1, true},  {31, 9, 1, 0, true},
        {31, 11, 0, 0, false}, {29, 9, 1, 1, false},
    };
    for (const auto& c : cases) {
        CleanRequest request;
        request.blockWidth = c.width;
        request.blockHeight = c.height;
        request.blockWidthCondition = c.widthCondition;
        request.blockHeightCondition = c.heightCondition;
        test::ExpectSamePixels(Cleaned(page, request), c.removed ? white : page);
    }
}

TEST(CleanComponents, AFrameThatTouchesTheEdgeGoesWithAllThatHangsOnIt) {
    // A frame one pixel inside, a stroke that hangs on it, and text that does not.
    const CDibImage page =
        PageOf(60, 40, {{1, 1, 58, 2}, {1, 1, 2, 38}, {30, 3, 1, 20}, {40, 20, 5, 5}});
    CleanRequest request;
    request.deBlack = true;
    test::ExpectSamePixels(Cleaned(page, request), PageOf(60, 40, {{40, 20, 5, 5}}));
}

TEST(CleanComponents, TwoPixelsFromTheEdgeIsNoContact) {
    const std::vector<Block> inside{{2, 20, 3, 3}, {20, 2, 3, 3}, {55, 20, 3, 3}, {20, 35, 3, 3}};
    const std::vector<Block> touching{{1, 8, 3, 3}, {8, 1, 3, 3}, {56, 8, 3, 3}, {8, 36, 3, 3}};
    std::vector<Block> both(inside);
    both.insert(both.end(), touching.begin(), touching.end());
    CleanRequest request;
    request.deBlack = true;
    test::ExpectSamePixels(Cleaned(PageOf(60, 40, both), request), PageOf(60, 40, inside));
}

TEST(CleanComponents, APageBelowFivePixelsHasNoEdgeToTouch) {
    CleanRequest request;
    request.deBlack = true;
    const CDibImage page = PageOf(4, 9, {{0, 0, 4, 9}});
    test::ExpectSamePixels(Cleaned(page, request), page);
}

TEST(CleanComponents, AllBelow255IsBlackAndIsPaintedSo) {
    CDibImage image = test::FromRows({{254, 254, 254, 255, 255}, {255, 255, 255, 255, 7}});
    test::ExpectSamePixels(Cleaned(image, CleanRequest{}),
                           test::FromRows({{0, 0, 0, 255, 255}, {255, 255, 255, 255, 0}}));
}

TEST(CleanComponents, TheBoxIsTheUnionOfWhatRemains) {
    CDibImage image = PageOf(60, 40, {{10, 8, 5, 5}, {30, 20, 6, 7}, {50, 35, 1, 1}});
    const CDibImage before(image);
    CleanRequest request;
    request.despeckleSize = 1;
    request.apply = false;
    QT::QRect box;
    ASSERT_NE(CleanComponents(image, &box, request), 0);
    EXPECT_EQ(box, (QT::QRect{10, 8, 35, 26}));
    test::ExpectSamePixels(image, before);
}

TEST(CleanComponents, AGrownBoxStopsAtTheLeftAndTheTop) {
    CDibImage image = PageOf(60, 40, {{10, 2, 45, 30}});
    CleanRequest request;
    request.despeckleSize = 5;
    request.growBox = true;
    QT::QRect box;
    ASSERT_NE(CleanComponents(image, &box, request), 0);
    EXPECT_EQ(box, (QT::QRect{5, 0, 59, 36}));
}

TEST(CleanComponents, AnEmptyPageGivesTheWholePageAsItsBox) {
    CDibImage image = test::Filled(60, 40, 8, 255);
    QT::QRect box;
    ASSERT_NE(CleanComponents(image, &box, CleanRequest{}), 0);
    EXPECT_EQ(box, (QT::QRect{0, 0, 60, 40}));
}

TEST(CleanComponents, AnyNumbersAreTaken) {
    for (const int value : {INT32_MIN, -1, 1, INT32_MAX}) {
        CDibImage image = SpottedPage(30, 20, 30, 3);
        CleanRequest request;
        request.despeckleSize = request.blockWidth = request.blockHeight = value;
        request.blockWidthCondition = request.blockHeightCondition = value;
        request.deBlack = request.growBox = true;
        QT::QRect box;
        EXPECT_NE(CleanComponents(image, &box, request), 0);
    }
}

TEST(CleanComponents, OtherDepthsAreRefusedAndStay) {
    for (const int bpp : {1, 4, 24}) {
        CDibImage image = test::Noise(9, 9, bpp);
        const CDibImage before(image);
        EXPECT_EQ(CleanComponents(image, nullptr, CleanRequest{}), 0);
        test::ExpectSamePixels(image, before);
    }
    CDibImage empty;
    EXPECT_EQ(CleanComponents(empty, nullptr, CleanRequest{}), 0);
}

TEST(CleanComponents, WithoutMemoryThePageStays) {
    const CDibImage page = SpottedPage(30, 20, 30, 3);
    CleanRequest request;
    request.despeckleSize = 2;
    const CDibImage cleaned = Cleaned(page, request);
    bool failed = true;
    for (long n = 1; failed; ++n) {
        CDibImage image(page);
        int result;
        {
            const test::FailAllocation fail(n);
            result = CleanComponents(image, nullptr, request);
            failed = fail.Happened();
        }
        EXPECT_EQ(result, failed ? 0 : 1);
        test::ExpectSamePixels(image, failed ? page : cleaned);
    }
}

}  // namespace
}  // namespace velloran

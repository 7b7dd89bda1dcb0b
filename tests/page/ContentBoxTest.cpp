#include "page/ContentBox.h"

#include <gtest/gtest.h>

#include "core/DibImage.h"
#include "support/Images.h"

namespace velloran::test {
namespace {

/// White 600 x 800 with a block of "text": squares of 10 pixels, 8 apart.
CDibImage PageWithText(const PageBox& text) {
    CDibImage page = Filled(600, 800, 8, 255);
    for (int y = text.top; y < text.bottom; ++y)
        for (int x = text.left; x < text.right; ++x)
            if ((x - text.left) % 18 < 10 && (y - text.top) % 18 < 10)
                page.GetBits(799 - y)[x] = 0;
    return page;
}

void Blacken(CDibImage& page, const PageBox& box) {
    for (int y = box.top; y < box.bottom; ++y)
        for (int x = box.left; x < box.right; ++x)
            page.GetBits(page.GetHeight() - 1 - y)[x] = 0;
}

ContentBoxRequest WholePage(const CDibImage& page) {
    ContentBoxRequest request;
    request.searchRect = {0, 0, page.GetWidth(), page.GetHeight()};
    return request;
}

/// 25 squares across and 29 down end with a square.
constexpr PageBox kText{100, 120, 100 + 24 * 18 + 10, 120 + 28 * 18 + 10};

PageBox Found(const CDibImage& page, const ContentBoxRequest& request) {
    PageBox box;
    EXPECT_EQ(findContentBox(page, request, box), 1);
    return box;
}

TEST(ContentBox, HoldsTheTextAndNoRowOrColumnMore) {
    const CDibImage page = PageWithText(kText);
    ContentBoxRequest request = WholePage(page);
    request.compensation = false;
    EXPECT_EQ(Found(page, request), kText);
}

TEST(ContentBox, CompensationGrowsItByTheSpeckle) {
    const CDibImage page = PageWithText(kText);
    ContentBoxRequest request = WholePage(page);
    EXPECT_EQ(Found(page, request),
              (PageBox{kText.left - 8, kText.top - 8, kText.right + 8, kText.bottom + 8}));
    request.speckle = 0;  // 4 when specks are removed, and nothing to grow by
    EXPECT_EQ(Found(page, request), kText);
}

TEST(ContentBox, SpecksDoNotCountUpToTheirSize) {
    CDibImage page = PageWithText(kText);
    Blacken(page, {30, 30, 39, 39});  // 9 pixels: 8 from the first to the last
    ContentBoxRequest request = WholePage(page);
    request.compensation = false;
    EXPECT_EQ(Found(page, request), kText);
    request.speckle = 7;
    EXPECT_EQ(Found(page, request), (PageBox{30, 30, kText.right, kText.bottom}));
    request.speckle = 0;  // as 4
    EXPECT_EQ(Found(page, request), (PageBox{30, 30, kText.right, kText.bottom}));
}

TEST(ContentBox, BlackEdgesDoNotCountWhereTheyAreRemoved) {
    CDibImage page = PageWithText(kText);
    Blacken(page, {0, 0, 20, 800});
    Blacken(page, {0, 770, 600, 800});
    ContentBoxRequest request = WholePage(page);
    request.compensation = false;
    EXPECT_EQ(Found(page, request), kText);
    request.removeBlackEdge = false;
    EXPECT_EQ(Found(page, request), (PageBox{0, 0, 600, 800}));
}

TEST(ContentBox, APageWithOnlyBlackEdgesIsNotCut) {
    CDibImage page = Filled(600, 800, 8, 255);
    Blacken(page, {0, 0, 600, 25});
    EXPECT_EQ(Found(page, WholePage(page)), (PageBox{0, 0, 600, 800}));
}

TEST(ContentBox, NeverLeavesTheSearchRectangle) {
    const CDibImage page = PageWithText(kText);
    ContentBoxRequest request = WholePage(page);
    request.searchRect = {200, 50, 500, 400};
    const PageBox box = Found(page, request);
    EXPECT_GE(box.left, 200);
    EXPECT_LE(box.right, 500);
    EXPECT_GE(box.top, 50);
    EXPECT_LE(box.bottom, 400);
}

TEST(ContentBox, ABlankPageGivesTheSearchRectangle) {
    const CDibImage page = Filled(600, 800, 24, 255);
    ContentBoxRequest request = WholePage(page);
    request.searchRect = {10, 20, 590, 780};
    EXPECT_EQ(Found(page, request), request.searchRect);
    request.bkMore = true;
    EXPECT_EQ(Found(page, request), request.searchRect);
}

TEST(ContentBox, AThickRuleWithinThePageIsContent) {
    CDibImage page = PageWithText(kText);
    Blacken(page, {100, 60, 500, 80});
    ContentBoxRequest request = WholePage(page);
    request.compensation = false;
    EXPECT_EQ(Found(page, request), (PageBox{100, 60, kText.right, kText.bottom}));
}

TEST(ContentBox, EveryDepthHasTheSameBox) {
    const CDibImage gray = PageWithText(kText);
    for (const int bits : {1, 4, 24}) {
        CDibImage page = Filled(600, 800, bits, 255);
        for (int y = 0; y < 800; ++y)
            for (int x = 0; x < 600; ++x)
                if (IndexAt(gray, x, y) == 0) {
                    if (bits == 24)
                        SetPixel(page, x, y, {0, 0, 0});
                    else
                        SetIndex(page, x, y, 0);
                }
        ContentBoxRequest request = WholePage(page);
        request.compensation = false;
        EXPECT_EQ(Found(page, request), kText) << bits;
    }
}

TEST(ContentBox, EmptyImagesAndRectanglesAreRefused) {
    PageBox box;
    EXPECT_EQ(findContentBox(CDibImage(), {}, box), 0);
    const CDibImage page = PageWithText(kText);
    ContentBoxRequest request = WholePage(page);
    request.searchRect = {300, 300, 300, 500};
    EXPECT_EQ(findContentBox(page, request, box), 0);
    EXPECT_EQ(box, request.searchRect);
}

TEST(ContentBox, TinyThinAndLargePagesEndInABoxWithinThem) {
    for (const auto& [width, height] : {std::pair{1, 1}, {2, 2}, {3, 12}, {12, 5}, {5000, 10}})
        for (const bool more : {false, true})
            for (const CDibImage& page : {Noise(width, height, 8), Filled(width, height, 8, 0)}) {
                ContentBoxRequest request = WholePage(page);
                request.bkMore = more;
                PageBox box;
                findContentBox(page, request, box);
                EXPECT_GE(box.left, 0);
                EXPECT_GE(box.top, 0);
                EXPECT_LE(box.right, width);
                EXPECT_LE(box.bottom, height);
                EXPECT_GT(box.Width(), 0);
            }
}

TEST(Margins, BelowThreePixelsNothingIsCut) {
    int left = 0, top = 0, right = 0, bottom = 0;
    marginsToPixels(1000, 1000, 2, 3, 0, 1000, left, top, right, bottom);
    EXPECT_EQ(left, 0);
    EXPECT_EQ(top, 3);
    EXPECT_EQ(right, 0);
    EXPECT_EQ(bottom, 1000);
    marginsToPixels(2480, 3508, 15, 15, 15, 15, left, top, right, bottom);
    EXPECT_EQ(left, 37);  // (2480 * 150 + 5) / 10000
    EXPECT_EQ(top, 52);
}

TEST(TrimImage, OneBitPagesAreCutByWholeBytes) {
    struct Case {
        int left, right, width;
    };
    for (const Case& c : {Case{3, 3, 64}, {4, 0, 56}, {8, 11, 48}, {12, 0, 48}}) {
        CDibImage page = Noise(64, 20, 1);
        EXPECT_EQ(trimImage(page, c.left, 5, c.right, 5), 1);
        EXPECT_EQ(page.GetWidth(), c.width) << c.left;
        EXPECT_EQ(page.GetHeight(), 10);
    }
}

}  // namespace
}  // namespace velloran::test

// Findings and how sure they are: what agrees is surer than what does not, and the finding itself
// is that of the search.

#include <gtest/gtest.h>

#include <cmath>

#include "core/DibImage.h"
#include "core/StepContext.h"
#include "page/MeasureBox.h"
#include "page/MeasureCorners.h"
#include "page/MeasureSkew.h"
#include "page/MeasureSplit.h"
#include "page/PackedLine.h"
#include "page/Trapezoid.h"
#include "samples/SamplePage.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"

namespace velloran::test {
namespace {

samples::SamplePage PageOf(samples::PageKind kind, std::optional<double> degrees = {},
                           std::uint64_t seed = 3) {
    samples::SampleRequest request;
    request.kind = kind;
    request.width = 1240;
    request.height = 1754;
    request.dpi = 150;
    request.seed = seed;
    request.angleDegrees = degrees;
    if (samples::IsTwoPages(kind))
        std::swap(request.width, request.height);
    return samples::MakeSamplePage(request);
}

ContentBoxRequest All(const CDibImage& image) {
    ContentBoxRequest request;
    request.searchRect = {0, 0, image.GetWidth(), image.GetHeight()};
    return request;
}

TEST(MeasureSkew, FindsWhatTheSearchFinds) {
    const CDibImage page = PageOf(samples::PageKind::kTextChinese, 2.2).image;
    for (const int mode : {kDeskewRows, kDeskewColumns, kDeskewBoth}) {
        SkewFinding finding;
        ASSERT_EQ(measureSkew(page, {}, mode, finding), 1);
        double angle = 0, confidence = 0;
        findSkew(page, angle, confidence, {}, mode);
        EXPECT_EQ(finding.skew.angle, angle);
        EXPECT_EQ(finding.skew.confidence, confidence);
    }
}

TEST(MeasureSkew, APageOfTextIsSurerThanTwoHalvesThatLeanApart) {
    SkewFinding even, torn;
    const CDibImage page = PageOf(samples::PageKind::kTextChinese, 1).image;
    measureSkew(page, {}, kDeskewRows, even);
    // The upper half of a page that leans to the right on the lower half of one to the left.
    CDibImage mixed = PageOf(samples::PageKind::kTextChinese, -2.5).image;
    for (int y = 0; y < mixed.GetHeight() / 2; ++y)
        std::copy_n(page.GetBits(y), page.GetEffWidth(), mixed.GetBits(y));
    measureSkew(mixed, {}, kDeskewRows, torn);
    EXPECT_GT(even.sure, 0.7);
    EXPECT_LT(torn.sure, even.sure * 0.7);
}

TEST(MeasureSkew, AnEmptyPageIsNotSure) {
    SkewFinding finding;
    EXPECT_EQ(measureSkew(Filled(800, 900, 24, 255), {}, kDeskewRows, finding), 1);
    EXPECT_EQ(finding.sure, 0);
    EXPECT_EQ(measureSkew(CDibImage(), {}, kDeskewRows, finding), 0);
    EXPECT_EQ(measureSkew(Filled(800, 900, 24, 255), {}, kDeskewManual, finding), 0);
    EXPECT_EQ(measureSkew(Filled(99, 900, 24, 255), {}, kDeskewRows, finding), 1);
    EXPECT_EQ(finding.sure, 0);
}

TEST(TurnOfSkew, IsInHundredthsAndNothingForAWeakFinding) {
    EXPECT_EQ(turnOfSkew({1.239, 2.0}), 123);
    EXPECT_EQ(turnOfSkew({-1.239, 2.5}), -123);
    EXPECT_EQ(turnOfSkew({1.239, 1.99}), 0);
}

TEST(MeasureContentBox, CountsTheInkThatACutLoses) {
    // Four bars of 60 by 20 pixels; the search looks at all, a rectangle leaves one of them out.
    CDibImage page = Filled(600, 800, 8, 255);
    for (const int top : {100, 300, 500, 700})
        for (int y = top; y < top + 20; ++y)
            std::fill_n(page.GetBits(page.GetHeight() - 1 - y) + 200, 60, std::uint8_t{0});
    ContentBoxRequest request = All(page);
    BoxFinding finding;
    ASSERT_EQ(measureContentBox(page, request, finding), 1);
    EXPECT_TRUE(finding.found);
    EXPECT_EQ(finding.inkLost, 0);
    EXPECT_GT(finding.sure, 0.9);
    // Specks of that size go, and their ink with them: bars of 20 by 20 count as specks.
    for (const int top : {100, 700})
        for (int y = top; y < top + 20; ++y)
            std::fill_n(page.GetBits(page.GetHeight() - 1 - y) + 220, 40, std::uint8_t{255});
    request.speckle = 30;
    request.compensation = false;
    ASSERT_EQ(measureContentBox(page, request, finding), 1);
    // Two bars of 1200 pixels stay within the box; two of 400 lie outside.
    EXPECT_NEAR(finding.inkLost, 800.0 / 3200.0, 0.02);
    EXPECT_LT(finding.sure, 0.1);
}

TEST(MeasureContentBox, ABlankPageHasNoContent) {
    const CDibImage page = Filled(600, 800, 24, 240);
    BoxFinding finding;
    ASSERT_EQ(measureContentBox(page, All(page), finding), 1);
    EXPECT_FALSE(finding.found);
    EXPECT_EQ(finding.sure, 0);
    EXPECT_EQ(finding.box, All(page).searchRect);
    EXPECT_EQ(measureContentBox(CDibImage(), {}, finding), 0);
}

TEST(MeasureContentBox, TheBoxIsThatOfTheSearch) {
    const CDibImage page = PageOf(samples::PageKind::kBlackEdges).image;
    BoxFinding finding;
    PageBox box;
    measureContentBox(page, All(page), finding);
    findContentBox(page, All(page), box);
    EXPECT_EQ(finding.box, box);
}

TEST(MeasureSplit, ASpreadIsSurerThanAPage) {
    SplitFinding spread, single;
    const samples::SamplePage book = PageOf(samples::PageKind::kSpread, 0.7);
    ASSERT_EQ(measureSplit(book.image, spread), 1);
    EXPECT_TRUE(spread.lines.seesMid);
    EXPECT_GT(spread.sure, 0.45);
    std::int32_t lines[3] = {};
    findPageLines(book.image, kLeftRightMid, lines, 0, 0);
    EXPECT_EQ(PackLine(spread.lines.mid), lines[2]);
    EXPECT_EQ(PackLine(spread.lines.left), lines[0]);
    EXPECT_EQ(PackLine(spread.lines.right), lines[1]);
    ASSERT_EQ(measureSplit(PageOf(samples::PageKind::kTextLatin).image, single), 1);
    EXPECT_LT(single.sure, 0.4);
}

TEST(MeasureSplit, WithoutALineTheMiddleIsNotSure) {
    SplitFinding finding;
    ASSERT_EQ(measureSplit(Filled(900, 600, 24, 250), finding), 1);
    EXPECT_FALSE(finding.lines.seesMid);
    EXPECT_EQ(finding.lines.mid, (PageLine{450, 450}));
    EXPECT_EQ(finding.sure, 0);
    EXPECT_EQ(measureSplit(Filled(9, 600, 24, 250), finding), 0);
}

TEST(MeasureCorners, APaperOnATableIsSurerThanAPageToTheEdges) {
    // Bright paper within dark surroundings, its corners known.
    CDibImage photo = Filled(700, 900, 8, 60);
    for (int y = 90; y < 820; ++y)
        std::fill_n(photo.GetBits(899 - y) + 80, 540, std::uint8_t{235});
    CornersFinding finding;
    ASSERT_EQ(measureCorners(photo, 0, 0, finding), 1);
    ASSERT_TRUE(finding.found);
    EXPECT_NEAR(finding.corners[0].x, 80, 6);
    EXPECT_NEAR(finding.corners[0].y, 90, 6);
    EXPECT_NEAR(finding.corners[2].x, 620, 6);
    EXPECT_NEAR(finding.corners[2].y, 820, 6);
    EXPECT_GT(finding.sure, 0.8);
    CornersFinding flat;
    ASSERT_EQ(measureCorners(PageOf(samples::PageKind::kTextLatin).image, 0, 0, flat), 1);
    EXPECT_LT(flat.sure, 0.5);
    EXPECT_EQ(measureCorners(CDibImage(), 0, 0, flat), 0);
}

TEST(Measure, PagesOfAllSizesEndInNumbersFromZeroToOne) {
    for (const int width : {1, 2, 3, 7, 12, 120, 3000})
        for (const int height : {1, 2, 9, 12, 110})
            for (const int bits : {1, 4, 8, 24}) {
                const CDibImage page = Noise(width, height, bits);
                SkewFinding skew;
                BoxFinding box;
                SplitFinding split;
                CornersFinding corners;
                measureSkew(page, {}, kDeskewBoth, skew);
                measureContentBox(page, All(page), box);
                measureSplit(page, split);
                measureCorners(page, 0, 0, corners);
                for (const double sure : {skew.sure, box.sure, split.sure, corners.sure}) {
                    EXPECT_GE(sure, 0) << width << " x " << height;
                    EXPECT_LE(sure, 1) << width << " x " << height;
                }
            }
}

TEST(Measure, WithoutMemoryTheWantIsNoted) {
    const CDibImage page = PageOf(samples::PageKind::kTextLatin).image;
    for (const long n : {1, 3, 10, 40}) {
        const StepContext context;
        const FailAllocation failure(n);
        SkewFinding skew;
        EXPECT_EQ(measureSkew(page, {}, kDeskewRows, skew), 0) << n;
        EXPECT_TRUE(context.IsOutOfMemory()) << n;
    }
}

}  // namespace
}  // namespace velloran::test

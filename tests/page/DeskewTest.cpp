#include "page/Deskew.h"

#include <gtest/gtest.h>

#include <cmath>

#include "core/DibImage.h"
#include "samples/SamplePage.h"
#include "support/Images.h"

namespace velloran::test {
namespace {

samples::SamplePage PageAt(samples::PageKind kind, double degrees, std::uint64_t seed) {
    samples::SampleRequest request;
    request.kind = kind;
    request.width = 1240;
    request.height = 1754;
    request.dpi = 150;
    request.seed = seed;
    request.angleDegrees = degrees;
    return samples::MakeSamplePage(request);
}

TEST(FindSkew, SeesTheAngleOfTextWithinATenthOfADegree) {
    int right = 0, all = 0;
    for (const auto kind : {samples::PageKind::kTextLatin, samples::PageKind::kTextChinese,
                            samples::PageKind::kTextVertical})
        for (const double degrees : {-4.7, -0.6, 0.45, 1.3, 4.9}) {
            const samples::SamplePage page = PageAt(kind, degrees, static_cast<unsigned>(++all));
            const int mode =
                kind == samples::PageKind::kTextVertical ? kDeskewColumns : kDeskewRows;
            double angle = 0, confidence = 0;
            ASSERT_EQ(findSkew(page.image, angle, confidence, {}, mode), 1);
            EXPECT_GE(confidence, 2.0) << page.truth.kind << " at " << degrees;
            right += std::fabs(angle - degrees) <= 0.1 ? 1 : 0;
        }
    EXPECT_GE(right, 14) << "of " << all;
}

TEST(FindSkew, ThePageTurnsStraight) {
    samples::SamplePage page = PageAt(samples::PageKind::kTextChinese, 3.2, 4);
    double angle = 0, confidence = 0;
    findSkew(page.image, angle, confidence, {}, kDeskewRows);
    ASSERT_EQ(rotateKeepSize(page.image, -angle, 2, kKeepEdge, 0xFFFFFF), 1);
    findSkew(page.image, angle, confidence, {}, kDeskewRows);
    EXPECT_NEAR(angle, 0, 0.1);
}

TEST(FindSkew, OfBothDirectionsTheSmallerAngleWins) {
    const samples::SamplePage page = PageAt(samples::PageKind::kTextChinese, 1.5, 2);
    double rows = 0, columns = 0, both = 0, confidence = 0, ofRows = 0, ofColumns = 0;
    findSkew(page.image, rows, ofRows, {}, kDeskewRows);
    findSkew(page.image, columns, ofColumns, {}, kDeskewColumns);
    findSkew(page.image, both, confidence, {}, kDeskewBoth);
    const bool takesColumns = std::fabs(columns) <= std::fabs(rows);
    EXPECT_EQ(both, takesColumns ? columns : rows);
    EXPECT_EQ(confidence, takesColumns ? ofColumns : ofRows);
}

TEST(FindSkew, AnImageOf99PixelsIsNotMeasured) {
    for (const auto& [width, height] : {std::pair{99, 400}, {400, 99}}) {
        double angle = 7, confidence = 7;
        EXPECT_EQ(findSkew(Noise(width, height, 8), angle, confidence, {}, kDeskewRows), 1);
        EXPECT_EQ(angle, 0);
        EXPECT_EQ(confidence, 0);
    }
}

TEST(FindSkew, ABlankPageHasNoConfidence) {
    for (const int mode : {kDeskewRows, kDeskewColumns, kDeskewBoth})
        for (const std::uint8_t level : {0, 128, 255}) {
            double angle = 7, confidence = 7;
            EXPECT_EQ(findSkew(Filled(400, 400, 24, level), angle, confidence, {}, mode), 1);
            EXPECT_EQ(confidence, 0);
        }
}

TEST(FindSkew, OtherModesAndEmptyImagesAreRefused) {
    double angle = 7, confidence = 7;
    for (const int mode : {-1, 0, 4, 5})
        EXPECT_EQ(findSkew(Noise(200, 200, 8), angle, confidence, {}, mode), 0);
    EXPECT_EQ(findSkew(CDibImage(), angle, confidence, {}, kDeskewRows), 0);
    EXPECT_EQ(angle, 0);
}

TEST(FindSkew, OnlyARegionWithAllFourSidesNarrowsTheSearch) {
    // Rows that fall to the right outside of the middle, straight ones within.
    CDibImage page = Filled(800, 800, 8, 255);
    for (int y = 0; y < 800; ++y)
        for (int x = 0; x < 800; ++x) {
            const bool inside = x >= 250 && x < 550 && y >= 250 && y < 550;
            const int line = inside ? y : y - x * 70 / 1000;
            const bool word = (x / 23) % 4 != 3;
            if (word && (line % 24 + 24) % 24 < 10)
                page.GetBits(799 - y)[x] = 0;
        }
    double whole = 0, part = 0, confidence = 0;
    findSkew(page, whole, confidence, {300, 300, 300, 0}, kDeskewRows);
    findSkew(page, part, confidence, {320, 320, 320, 320}, kDeskewRows);
    EXPECT_NEAR(whole, 4.0, 0.2);  // atan(0.07)
    EXPECT_LE(std::fabs(part), 0.5);  // of so small a part no finer angle is told apart
}

TEST(SearchAngle, APeakOfAThousandOrLessHasNoConfidence) {
    // One black pixel: its score is at most 2.
    CDibImage page = Filled(200, 200, 8, 255);
    page.GetBits(100)[100] = 0;
    for (const int mode : {kDeskewRows, kDeskewColumns}) {
        const Skew skew = searchAngle(page, mode);
        EXPECT_EQ(skew.confidence, 0);
        // All scores are alike: the first whole degree and, of two alike, the lower half.
        EXPECT_EQ(skew.angle, 5.5);
    }
}

}  // namespace
}  // namespace velloran::test

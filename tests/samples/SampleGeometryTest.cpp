// The told geometry of sample pages against plain measurement of their pixels.

#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "samples/SampleMeasure.h"

namespace velloran::samples {
namespace {

using test::BoxAround;
using test::DarkPixels;
using test::ExpectNear;
using test::GrayAt;
using test::SmallPage;
using test::Turned;

constexpr double kInkLimit = 190;  // on an evenly lit page paper is lighter, ink darker

class EvenPage : public testing::TestWithParam<PageKind> {};

TEST_P(EvenPage, InkLiesInTheContentBoxAndTouchesItsFourSides) {
    const SamplePage page = SmallPage(GetParam(), 2);
    ExpectNear(BoxAround(DarkPixels(page.image, kInkLimit)), *page.truth.contentBox, 2);
}

TEST_P(EvenPage, TurnedBackInkLiesInTheUprightContentBox) {
    const SamplePage page = SmallPage(GetParam(), 2);
    const Point center = {page.truth.width / 2.0, page.truth.height / 2.0};
    std::vector<Point> upright;
    for (const Point point : DarkPixels(page.image, kInkLimit))
        upright.push_back(Turned(point, center, -page.truth.angleDegrees));
    ASSERT_TRUE(page.truth.pages[0].uprightContentBox.has_value());
    ExpectNear(BoxAround(upright), *page.truth.pages[0].uprightContentBox, 2);
}

INSTANTIATE_TEST_SUITE_P(, EvenPage,
                         testing::Values(PageKind::kTextLatin, PageKind::kTextChinese,
                                         PageKind::kTextVertical, PageKind::kTextSkewed,
                                         PageKind::kTable, PageKind::kComicLine,
                                         PageKind::kComicScreen, PageKind::kRedSeal,
                                         PageKind::kBilevel),
                         [](const auto& row) { return std::string(RecipeOf(row.param).name); });

// How sharply rows of ink part when the page is turned back by `degrees`: the sum of squares of
// ink a row.
double RowSharpness(const std::vector<Point>& ink, Point center, double degrees) {
    std::map<int, double> rows;
    for (const Point point : ink)
        rows[static_cast<int>(std::floor(Turned(point, center, -degrees).y))] += 1;
    double sum = 0;
    for (const auto& [row, count] : rows)
        sum += count * count;
    return sum;
}

TEST(SampleAngle, RowsAreSharpestWhenTurnedBackByTheToldAngle) {
    for (const double told : {-4.0, -1.3, 0.0, 0.7, 3.45}) {
        const SamplePage page = SmallPage(PageKind::kTextSkewed, 3, 110, told);
        EXPECT_DOUBLE_EQ(page.truth.angleDegrees, told);
        const std::vector<Point> ink = DarkPixels(page.image, kInkLimit);
        const Point center = {page.truth.width / 2.0, page.truth.height / 2.0};
        double best = 0, sharpest = -1;
        for (int step = -20; step <= 20; ++step) {
            const double degrees = told + step * 0.05;
            const double sharpness = RowSharpness(ink, center, degrees);
            if (sharpness > sharpest) {
                sharpest = sharpness;
                best = degrees;
            }
        }
        EXPECT_NEAR(best, told, 0.101);
    }
}

TEST(SampleAngle, BaselinesRunAtTheToldAngle) {
    const SamplePage page = SmallPage(PageKind::kTextSkewed, 4, 110, 2.5);
    for (const TextLine& line : page.truth.lines) {
        const Point run = line.baseline[1] - line.baseline[0];
        EXPECT_NEAR(std::atan2(run.y, run.x) * 180 / 3.14159265358979, 2.5, 1e-6);
    }
}

TEST(SampleLines, BoxesHoldTheInkOfTheirLine) {
    const SamplePage page = SmallPage(PageKind::kTextChinese, 5);
    ASSERT_GT(page.truth.lines.size(), 10U);
    for (const TextLine& line : page.truth.lines) {
        std::vector<Point> inside;
        // Neighbours are further than 2 pixels away.
        const Box around = line.box.Inset(-2, -2);
        for (int y = static_cast<int>(around.top); y < around.bottom; ++y)
            for (int x = static_cast<int>(around.left); x < around.right; ++x)
                if (GrayAt(page.image, x, y) < kInkLimit)
                    inside.push_back({x + 0.5, y + 0.5});
        ExpectNear(BoxAround(inside), line.box, 2);
    }
}

TEST(SampleCorners, PaperMeetsTheTableAlongTheToldEdges) {
    for (const PageKind kind : {PageKind::kPhotoPerspective, PageKind::kSkewedOnBlack}) {
        const SamplePage page = SmallPage(kind, 7);
        const auto& corners = page.truth.pages[0].corners;
        for (int i = 0; i < 4; ++i) {
            const Point from = corners[i], to = corners[(i + 1) % 4];
            const Point inward = Point{-(to.y - from.y), to.x - from.x} *
                                 (1 / Length(to - from));  // corners run clockwise
            for (int part = 0; part <= 10; ++part) {
                const Point at = Blend(from, to, 0.02 + 0.096 * part);
                const Point inside = at + inward * 2, outside = at - inward * 2;
                EXPECT_GT(GrayAt(page.image, inside.x, inside.y),
                          GrayAt(page.image, outside.x, outside.y) + 50);
            }
        }
    }
}

TEST(SampleCurves, PaperBeginsAndEndsAtTheToldCurves) {
    for (const PageKind kind : {PageKind::kCurved, PageKind::kSpreadOpen}) {
        const SamplePage page = SmallPage(kind, 8);
        for (const PageTruth& place : page.truth.pages)
            for (std::size_t i = 1; i + 1 < place.topCurve.size(); ++i) {
                const Point top = place.topCurve[i], bottom = place.bottomCurve[i];
                EXPECT_GT(GrayAt(page.image, top.x, top.y + 2.5),
                          GrayAt(page.image, top.x, top.y - 2.5) + 40);
                EXPECT_GT(GrayAt(page.image, bottom.x, bottom.y - 2.5),
                          GrayAt(page.image, bottom.x, bottom.y + 2.5) + 40);
            }
    }
}

TEST(SampleCurves, TextLinesAreCurvedAsTheirBaselinesAre) {
    const SamplePage page = SmallPage(PageKind::kCurved, 9);
    int rulesSeen = 0;
    for (const TextLine& line : page.truth.lines) {
        EXPECT_GE(line.baseline.size(), 8U);
        if (line.text.size() < 40)
            continue;  // headings
        // Along a long line there is ink just above the baseline and little just below it.
        double above = 0, below = 0;
        const int steps = 60;
        for (int i = 0; i < steps; ++i) {
            const double place = (line.baseline.size() - 1) * (i + 0.5) / steps;
            const auto first = static_cast<std::size_t>(place);
            const Point at = Blend(line.baseline[first], line.baseline[first + 1],
                                   place - static_cast<double>(first));
            const double paper = GrayAt(page.image, at.x, at.y + 6);
            above += paper - GrayAt(page.image, at.x, at.y - 3);
            below += paper - GrayAt(page.image, at.x, at.y + 3.5);
        }
        EXPECT_GT(above, 2 * below);
        ++rulesSeen;
    }
    EXPECT_GT(rulesSeen, 8);
}

TEST(SampleGutter, IsDarkestOnTheToldLine) {
    for (const PageKind kind :
         {PageKind::kGutterShadow, PageKind::kSpread, PageKind::kSpreadOpen}) {
        for (std::uint64_t seed = 1; seed <= 3; ++seed) {
            const SamplePage page = SmallPage(kind, seed);
            const GutterTruth gutter = *page.truth.gutter;
            EXPECT_EQ(gutter.top.y, 0);
            EXPECT_EQ(gutter.bottom.y, page.truth.height);
            std::map<int, double> sums;
            for (int y = page.truth.height / 5; y < page.truth.height * 4 / 5; ++y) {
                const Point at = Blend(gutter.top, gutter.bottom, (y + 0.5) / page.truth.height);
                for (int offset = -15; offset <= 15; ++offset)
                    sums[offset] += GrayAt(page.image, at.x + offset, y);
            }
            int darkest = 0;
            for (const auto& [offset, sum] : sums)
                if (sum < sums[darkest])
                    darkest = offset;
            EXPECT_LE(std::abs(darkest), 1) << RecipeOf(kind).name;
        }
    }
}

}  // namespace
}  // namespace velloran::samples

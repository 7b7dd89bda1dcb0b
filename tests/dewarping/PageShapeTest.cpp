#include "dewarping/PageShape.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "dewarping/TraceImage.h"
#include "support/Images.h"

namespace velloran::test {
namespace {

using namespace dewarping;
using QT::QPointF;

/// How far a line that begins at y is bent at x, on a page 1000 pixels wide.
double Bend(double x, double y) {
    const double s = x / 1000;
    return -(30 + 0.02 * y) * 6.75 * s * (1 - s) * (1 - s);
}

/// A page of words: boxes of 12 pixels in height along bent lines `pitch` apart.
CDibImage WordPage(double pitch, double (*bend)(double, double)) {
    CDibImage page = Filled(1000, 1000, 8, 235);
    const PlaneView rows = TopDownViewOf(page);
    std::mt19937 random(11);
    for (double y = 120; y < 900; y += pitch)
        for (int x = 100; x < 900;) {
            const int letter = 6 + static_cast<int>(random() % 5);
            for (int i = x; i < x + letter; ++i)
                for (int j = -6; j < 6; ++j)
                    rows.Row(static_cast<int>(y + bend(i, y)) + j)[static_cast<std::size_t>(i)] =
                        30;
            x += letter + (random() % 5 == 0 ? 14 : 3);
        }
    return page;
}

double Straight(double, double) {
    return 0;
}

std::vector<LineTrack> TracksOf(const CDibImage& page) {
    const InkPage ink = findInk(TopDownViewOf(page), {12, false});
    return traceLines(ink, {0, 0, page.GetWidth() - 1, page.GetHeight() - 1});
}

TEST(FindInk, TellsTheHeightOfLettersAndLeavesPicturesRulesAndSpecksOut) {
    CDibImage page = WordPage(40, Straight);
    const PlaneView rows = TopDownViewOf(page);
    for (int y = 400; y < 600; ++y)
        std::fill_n(rows.Row(y).begin() + 300, 300, std::uint8_t{90});  // a picture
    for (int y = 940; y < 943; ++y)
        std::fill_n(rows.Row(y).begin() + 100, 700, std::uint8_t{20});  // a rule
    rows.Row(960)[500] = 20;
    const InkPage ink = findInk(TopDownViewOf(page), {12, false});
    EXPECT_NEAR(ink.letterHeight, 12, 1);
    EXPECT_EQ(ink.row(500)[450], 0);
    EXPECT_EQ(ink.row(941)[450], 0);
    EXPECT_EQ(ink.row(960)[500], 0);
    EXPECT_GT(ink.row(120)[103], 200);
    const InkPage clean = findInk(TopDownViewOf(page), {12, true});
    EXPECT_GT(clean.row(941)[450], 0) << "a clean page holds text alone";
}

TEST(FindInk, UnevenLightIsNoInk) {
    CDibImage page = WordPage(40, Straight);
    const PlaneView rows = TopDownViewOf(page);
    for (int y = 0; y < 1000; ++y)
        for (std::size_t x = 0; x < 1000; ++x)
            rows.Row(y)[x] = static_cast<std::uint8_t>(rows.Row(y)[x] * (1 - 0.5 * x / 1000));
    const InkPage ink = findInk(TopDownViewOf(page), {2, false});
    for (int x = 0; x < 1000; ++x)
        EXPECT_EQ(ink.row(50)[x], 0) << x;
    EXPECT_GT(ink.row(120)[103], 150);
}

TEST(TraceLines, FollowsEachBentLineWithinAPixelOrTwo) {
    const std::vector<LineTrack> tracks = TracksOf(WordPage(40, Bend));
    EXPECT_EQ(tracks.size(), 20U);
    for (const LineTrack& track : tracks) {
        EXPECT_GT(track.length(), 750);
        const double y =
            120 + 40 * std::round(
                           (track.points.front().y - Bend(track.points.front().x, 500) - 120) / 40);
        for (const QPointF& point : track.points)
            EXPECT_NEAR(point.y, y + Bend(point.x, y) - 1, 3) << point.x;
    }
    EXPECT_NEAR(linePitchOf(tracks, 7), 40, 2);
}

TEST(TraceLines, FindsNoneOnPagesWithoutLines) {
    EXPECT_TRUE(TracksOf(Filled(300, 300, 8, 255)).empty());
    EXPECT_TRUE(TracksOf(Filled(300, 300, 8, 0)).empty());
    EXPECT_EQ(linePitchOf({}, 7), 7);
}

TEST(PageShape, ManyLinesTellTheBendBetterThanOne) {
    const auto shape = PageShape::fit(TracksOf(WordPage(40, Bend)), 1000, 1000, 40);
    ASSERT_TRUE(shape);
    const ShapeEvidence& evidence = shape->evidence();
    EXPECT_EQ(evidence.tracedLines, 20);
    EXPECT_EQ(evidence.agreeingLines, 20);
    EXPECT_EQ(evidence.longLines, 20);
    EXPECT_GT(evidence.agreeingShare, 0.99);
    EXPECT_LT(evidence.residual, 0.05);
    EXPECT_LT(evidence.halvesApart, 0.05);
    EXPECT_NEAR(evidence.widthShare, 0.8, 0.03);
    EXPECT_NEAR(evidence.heightShare, 0.76, 0.1);
    for (std::size_t i = 0; i < 20; ++i) {
        const double y = 120 + 40.0 * static_cast<double>(i);
        for (const QPointF& point : shape->lineOf(i, 110, 890))
            EXPECT_NEAR(point.y, y + Bend(point.x, y) - 1, 1.5) << i << " at " << point.x;
    }
}

TEST(PageShape, LinesThatDoNotBelongAreLeftOut) {
    std::vector<LineTrack> tracks = TracksOf(WordPage(40, Bend));
    LineTrack across;  // a line that falls over the whole page
    for (int x = 120; x < 880; x += 6)
        across.points.push_back({double(x), 200 + 0.6 * x});
    tracks.push_back(across);
    const auto shape = PageShape::fit(tracks, 1000, 1000, 40);
    ASSERT_TRUE(shape);
    EXPECT_EQ(shape->evidence().tracedLines, 21);
    EXPECT_EQ(shape->evidence().agreeingLines, 20);
    EXPECT_LT(shape->evidence().agreeingShare, 0.97);
    for (const QPointF& point : shape->lineOf(5, 110, 890))
        EXPECT_NEAR(point.y, 320 + Bend(point.x, 320) - 1, 2);
}

TEST(PageShape, OfStraightLinesHasNoBow) {
    const auto shape = PageShape::fit(TracksOf(WordPage(40, Straight)), 1000, 1000, 40);
    ASSERT_TRUE(shape);
    EXPECT_LT(shape->evidence().bow, 0.03);
    const auto bent = PageShape::fit(TracksOf(WordPage(40, Bend)), 1000, 1000, 40);
    EXPECT_GT(bent->evidence().bow, 0.3);
}

TEST(PageShape, TakesTwoLines) {
    std::vector<LineTrack> tracks = TracksOf(WordPage(40, Bend));
    EXPECT_FALSE(PageShape::fit({}, 1000, 1000, 40));
    tracks.resize(1);
    EXPECT_FALSE(PageShape::fit(tracks, 1000, 1000, 40));
}

}  // namespace
}  // namespace velloran::test

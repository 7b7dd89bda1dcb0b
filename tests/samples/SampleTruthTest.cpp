// What is told of marks, colours and light against plain measurement.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <set>

#include "samples/SampleMeasure.h"
#include "support/Images.h"

namespace velloran::samples {
namespace {

using test::BoxAround;
using test::ExpectNear;
using test::GrayAt;
using test::PixelAt;
using test::SmallPage;

void ExpectColorNear(const test::Rgb& actual, const Rgb& expected, int tolerance) {
    EXPECT_NEAR(actual.red, expected.red, tolerance);
    EXPECT_NEAR(actual.green, expected.green, tolerance);
    EXPECT_NEAR(actual.blue, expected.blue, tolerance);
}

double InkShare(const SamplePage& page, int x, int y) {
    return test::IndexAt(page.inkMask, x, y) / 255.0;
}

TEST(SampleBlackEdges, AreBlackAndEndWhereTold) {
    for (std::uint64_t seed = 1; seed <= 6; ++seed) {
        const SamplePage page = SmallPage(PageKind::kBlackEdges, seed);
        ASSERT_GE(page.truth.blackEdges.size(), 2U);
        const auto isBlack = [&](int x, int y) {
            for (const Box& edge : page.truth.blackEdges)
                if (x >= edge.left && x < edge.right && y >= edge.top && y < edge.bottom)
                    return true;
            return false;
        };
        const Box content = page.truth.contentBox->Inset(-3, -3);
        for (int y = 0; y < page.truth.height; ++y)
            for (int x = 0; x < page.truth.width; ++x) {
                const bool isContent = x >= content.left && x < content.right && y >= content.top &&
                                       y < content.bottom;
                const double gray = GrayAt(page.image, x, y);
                ASSERT_TRUE(isBlack(x, y) ? gray < 30 : isContent || gray > 200)
                    << x << ", " << y << ": " << gray;
            }
    }
}

TEST(SampleSeal, IsRedInItsMiddleAndAsLargeAsTold) {
    for (std::uint64_t seed = 1; seed <= 4; ++seed) {
        const SamplePage page = SmallPage(PageKind::kRedSeal, seed);
        const SealTruth seal = *page.truth.seal;
        const auto reach = static_cast<int>(seal.coreRadius - 1);
        for (int dy = -reach; dy <= reach; ++dy)
            for (int dx = -reach; dx <= reach; ++dx)
                if (dx * dx + dy * dy <= reach * reach)
                    ExpectColorNear(PixelAt(page.image, static_cast<int>(seal.center.x) + dx,
                                            static_cast<int>(seal.center.y) + dy),
                                    seal.color, 12);
        std::vector<Point> red;
        for (int y = 0; y < page.truth.height; ++y)
            for (int x = 0; x < page.truth.width; ++x) {
                const test::Rgb color = PixelAt(page.image, x, y);
                if (color.red - std::max(color.green, color.blue) > 60)
                    red.push_back({x + 0.5, y + 0.5});
            }
        const Point c = seal.center;
        ExpectNear(BoxAround(red),
                   {c.x - seal.radius, c.y - seal.radius, c.x + seal.radius, c.y + seal.radius}, 2);
    }
}

TEST(SampleSpecks, LieWhereToldAndAreAsLargeAsTold) {
    const SamplePage page = SmallPage(PageKind::kSpecks, 3, 200);
    ASSERT_GE(page.truth.specks.size(), 50U);
    int measured = 0;
    for (const SpeckTruth& speck : page.truth.specks) {
        EXPECT_LT(GrayAt(page.image, speck.center.x, speck.center.y), 170);
        const int reach = static_cast<int>(speck.radius) + 4;
        bool alone = true;
        for (const SpeckTruth& other : page.truth.specks)
            alone = alone && (&other == &speck ||
                              Length(other.center - speck.center) > reach * 1.5 + other.radius);
        double darkness = 0;
        for (int y = static_cast<int>(speck.center.y) - reach; y <= speck.center.y + reach; ++y)
            for (int x = static_cast<int>(speck.center.x) - reach; x <= speck.center.x + reach;
                 ++x) {
                const bool inside =
                    x >= 0 && y >= 0 && x < page.truth.width && y < page.truth.height;
                alone = alone && inside && InkShare(page, x, y) == 0;
                darkness += 245 - GrayAt(page.image, x, y);
            }
        if (!alone)
            continue;
        const double full = 245 - 47;  // paper less the grey of a speck
        EXPECT_NEAR(darkness / full, std::numbers::pi * speck.radius * speck.radius,
                    1.5 + 0.05 * speck.radius * speck.radius);
        ++measured;
    }
    EXPECT_GT(measured, 20);
}

TEST(SampleTable, RulesAreDarkFromEndToEnd) {
    const SamplePage page = SmallPage(PageKind::kTable, 4, 150);
    ASSERT_TRUE(page.truth.table.has_value());
    EXPECT_EQ(page.truth.table->horizontal.size(),
              static_cast<std::size_t>(page.truth.table->rows) + 1);
    EXPECT_EQ(page.truth.table->vertical.size(),
              static_cast<std::size_t>(page.truth.table->columns) + 1);
    for (const auto* rules : {&page.truth.table->horizontal, &page.truth.table->vertical})
        for (const auto& rule : *rules)
            for (int i = 0; i <= 40; ++i) {
                const Point at = Blend(rule[0], rule[1], i / 40.0);
                EXPECT_LT(GrayAt(page.image, at.x, at.y), 200);
            }
}

TEST(SampleComic, PanelBordersAreDarkAndGapsAreBare) {
    const SamplePage page = SmallPage(PageKind::kComicScreen, 5, 150);
    ASSERT_GE(page.truth.panels.size(), 4U);
    for (const auto& panel : page.truth.panels)
        for (std::size_t i = 0; i < panel.size(); ++i)
            for (int part = 0; part <= 20; ++part) {
                const Point at = Blend(panel[i], panel[(i + 1) % panel.size()], part / 20.0);
                EXPECT_LT(GrayAt(page.image, at.x, at.y), 120);
            }
}

TEST(SampleComic, BalloonsAreLightBesideTheirWords) {
    int seen = 0;
    for (std::uint64_t seed = 1; seed <= 3; ++seed) {
        const SamplePage page = SmallPage(PageKind::kComicScreen, seed, 110);
        for (const BalloonTruth& balloon : page.truth.balloons) {
            const Point top = {balloon.box.Center().x, balloon.box.top + 5};
            EXPECT_GT(GrayAt(page.image, top.x, top.y), 180);
            ++seen;
        }
    }
    EXPECT_GT(seen, 3);
}

TEST(SampleComic, ScreensAreToldOfScreenedPagesAlone) {
    EXPECT_TRUE(SmallPage(PageKind::kComicLine).truth.screens.empty());
    const Truth screened = SmallPage(PageKind::kComicScreen, 1, 300).truth;
    ASSERT_EQ(screened.screens.size(), 1U);
    EXPECT_NEAR(screened.screens[0].linesPerInch, 60, 1e-9);
    EXPECT_NEAR(screened.screens[0].pitch, 5, 1e-9);
    EXPECT_FALSE(screened.screens[0].areas.empty());
    EXPECT_EQ(SmallPage(PageKind::kComicColor).truth.screens.size(), 3U);
}

TEST(SampleColors, PaperAndInkHaveTheirToldColors) {
    for (const PageKind kind :
         {PageKind::kTextLatin, PageKind::kTextVertical, PageKind::kInverted}) {
        const SamplePage page = SmallPage(kind, 2, 200);
        double paper[3] = {}, ink[3] = {};
        int paperCount = 0, inkCount = 0;
        for (int y = 0; y < page.truth.height; ++y)
            for (int x = 0; x < page.truth.width; ++x) {
                const double share = InkShare(page, x, y);
                const test::Rgb color = PixelAt(page.image, x, y);
                double* sums = share == 0 ? paper : ink;
                if (share > 0 && share < 1)
                    continue;
                (share == 0 ? paperCount : inkCount)++;
                sums[0] += color.red;
                sums[1] += color.green;
                sums[2] += color.blue;
            }
        ASSERT_GT(inkCount, 100);
        const auto mean = [](const double* sums, int count) {
            return test::Rgb{static_cast<int>(sums[0] / count), static_cast<int>(sums[1] / count),
                             static_cast<int>(sums[2] / count)};
        };
        // A grey picture holds the grey of the colours.
        const int tolerance = page.truth.bitsPerPixel == 24 ? 3 : 12;
        ExpectColorNear(mean(paper, paperCount), page.truth.paper, tolerance);
        ExpectColorNear(mean(ink, inkCount), page.truth.ink, tolerance);
    }
}

TEST(SampleMask, SaysWhereInkIs) {
    const SamplePage page = SmallPage(PageKind::kComicLine, 2, 110);
    for (int y = 0; y < page.truth.height; y += 2)
        for (int x = 0; x < page.truth.width; ++x) {
            const double share = InkShare(page, x, y);
            const double paper = 245, ink = 28;
            EXPECT_NEAR(GrayAt(page.image, x, y), paper + (ink - paper) * share, 10);
        }
}

TEST(SampleDepth, BilevelPicturesAreBlackOnWhite) {
    const SamplePage page = SmallPage(PageKind::kBilevel);
    EXPECT_TRUE(page.image.IsBW());
    EXPECT_EQ(PixelAt(page.image, 2, 2), (test::Rgb{255, 255, 255}));
    std::set<int> levels;
    for (int x = 0; x < page.truth.width; ++x)
        for (int y = 0; y < page.truth.height; ++y)
            levels.insert(PixelAt(page.image, x, y).red);
    EXPECT_EQ(levels, (std::set<int>{0, 255}));
}

TEST(SampleDepth, InvertedPicturesAreLightOnDark) {
    const SamplePage page = SmallPage(PageKind::kInverted);
    EXPECT_TRUE(page.truth.inverted);
    EXPECT_TRUE(page.image.IsGrayScale());
    EXPECT_LT(GrayAt(page.image, 5, 5), 40);
}

TEST(SampleLight, CornerShadowDarkensOneCornerAlone) {
    const SamplePage page = SmallPage(PageKind::kShadowCorner, 3);
    const int w = page.truth.width, h = page.truth.height;
    int dark = 0, light = 0;
    for (const Point at :
         {Point{3, 3}, Point{w - 4.0, 3}, Point{3, h - 4.0}, Point{w - 4.0, h - 4.0}}) {
        dark += GrayAt(page.image, at.x, at.y) < 170;
        light += GrayAt(page.image, at.x, at.y) > 230;
    }
    EXPECT_EQ(dark, 1);
    EXPECT_EQ(light, 3);
}

TEST(SampleLight, UnevenPagesDifferByMoreThanATwentiethAcross) {
    const SamplePage page = SmallPage(PageKind::kLightUneven, 3);
    std::vector<double> borders;
    for (int i = 1; i < 10; ++i) {
        borders.push_back(GrayAt(page.image, 4, page.truth.height * i / 10.0));
        borders.push_back(GrayAt(page.image, page.truth.width - 5, page.truth.height * i / 10.0));
    }
    const auto [lowest, highest] = std::minmax_element(borders.begin(), borders.end());
    EXPECT_GT(*highest - *lowest, 245 / 20.0);
}

TEST(SampleBleed, TheReverseShowsFaintlyBesideTheInk) {
    const SamplePage page = SmallPage(PageKind::kBleedThrough, 3, 150);
    EXPECT_GE(page.truth.bleedThrough, 0.12);
    double lightest = 0, darkest = 255;
    for (int y = 0; y < page.truth.height; ++y)
        for (int x = 0; x < page.truth.width; ++x)
            if (InkShare(page, x, y) == 0) {
                lightest = std::max(lightest, GrayAt(page.image, x, y));
                darkest = std::min(darkest, GrayAt(page.image, x, y));
            }
    EXPECT_LT(darkest, lightest - 20);   // something shows
    const double paper = 231, ink = 28;  // and no darker than the told share of ink
    EXPECT_GT(darkest, paper + (ink - paper) * page.truth.bleedThrough - 10);
}

}  // namespace
}  // namespace velloran::samples

#include "dewarping/FindCurves.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "core/DibImage.h"
#include "core/StepContext.h"
#include "dewarping/CurvePoints.h"
#include "dewarping/Dewarp.h"
#include "samples/CurvedPage.h"
#include "samples/CurvedScore.h"
#include "support/CountedCancel.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"
#include "support/Threads.h"

namespace velloran::test {
namespace {

using namespace dewarping;
using samples::CurlStrength;
using samples::Point;

constexpr double kTolerance = 0.15;  // line pitches

samples::SamplePage PageOf(CurlStrength strength, samples::Language language, std::uint64_t seed,
                           bool pictures = false) {
    samples::CurvedRequest request;
    request.strength = strength;
    request.language = language;
    request.pictures = pictures;
    request.light = samples::LightKind::kUneven;
    request.seed = seed;
    return samples::MakeCurvedPage(request);
}

/// A page that most tests of one page take.
const samples::SamplePage& CurledPage() {
    static const samples::SamplePage page =
        PageOf(CurlStrength::kMedium, samples::Language::kLatin, 8);
    return page;
}

std::vector<double> LinesAfter(const samples::SamplePage& page, const CurveFinding& finding) {
    const auto surface = surfaceOf(finding.top.data(), finding.bottom.data(), kCurvePoints);
    if (!surface)
        return samples::BentLines(page.truth);
    return samples::BentLines(page.truth, [&](Point p) {
        const QT::QPointF flat = surface->toFlat({p.x - 0.5, p.y - 0.5});
        return Point{flat.x, flat.y};
    });
}

double ShareWithin(const std::vector<double>& lines) {
    const auto within =
        std::count_if(lines.begin(), lines.end(), [](double bent) { return bent <= kTolerance; });
    return lines.empty() ? 0 : static_cast<double>(within) / static_cast<double>(lines.size());
}

struct CurlCase {
    const char* name;
    CurlStrength strength;
    double share;  // of the lines, that come out straight
};
void PrintTo(const CurlCase& c, std::ostream* out) {
    *out << c.name;
}
constexpr CurlCase kCurlCases[] = {
    {"Gentle", CurlStrength::kGentle, 0.98},
    {"Medium", CurlStrength::kMedium, 0.95},
    {"Strong", CurlStrength::kStrong, 0.9},
};
class CurledPages : public testing::TestWithParam<CurlCase> {};

TEST_P(CurledPages, ComeOutWithStraightLines) {
    std::vector<double> all;
    std::uint64_t seed = 20;
    for (const auto language : {samples::Language::kLatin, samples::Language::kChinese})
        for (const bool pictures : {false, true}) {
            const samples::SamplePage page =
                PageOf(GetParam().strength, language, ++seed, pictures);
            const CurveFinding finding = measureCurves(kExtendedTextLines, page.image, 1);
            EXPECT_TRUE(finding.found) << page.truth.kind;
            EXPECT_GT(finding.sure, 0.5) << page.truth.kind;
            EXPECT_LT(finding.bentAfter, finding.bentBefore) << page.truth.kind;
            const std::vector<double> lines = LinesAfter(page, finding);
            EXPECT_FALSE(samples::IsWorse(samples::BentLines(page.truth), lines));
            all.insert(all.end(), lines.begin(), lines.end());
        }
    EXPECT_GE(ShareWithin(all), GetParam().share) << "of " << all.size();
}
INSTANTIATE_TEST_SUITE_P(FindCurves, CurledPages, testing::ValuesIn(kCurlCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(FindCurvesOnSamples, AFlatPageStaysAsItIs) {
    for (const auto language : {samples::Language::kLatin, samples::Language::kChinese}) {
        const samples::SamplePage page = PageOf(CurlStrength::kFlat, language, 5);
        std::array<std::int32_t, kCurvePoints> top, bottom, gridTop, gridBottom;
        top.fill(-1);
        bottom.fill(-1);
        EXPECT_EQ(findCurves(0, page.image, top.data(), bottom.data(), kCurvePoints, 1), 1);
        resetCurves(page.image.GetWidth(), page.image.GetHeight(), gridTop.data(),
                    gridBottom.data(), kCurvePoints);
        EXPECT_EQ(top, gridTop);
        EXPECT_EQ(bottom, gridBottom);
        const CurveFinding finding = measureCurves(0, page.image, 1);
        EXPECT_FALSE(finding.found);
        EXPECT_GT(finding.sure, 0.5) << "it is sure to be flat";
    }
}

TEST(FindCurvesOnSamples, AllMethodsOfTextFindTheSamePage) {
    for (const int method : {int{kExtendedTextLines}, int{kTextLines}, int{kCleanTextLines},
                             int{kOnlyWhenUnset}, kOnlyWhenUnset + 1, kOnlyWhenUnset + 3}) {
        const CurveFinding finding = measureCurves(method, CurledPage().image, 1);
        EXPECT_TRUE(finding.found) << method;
        EXPECT_GE(ShareWithin(LinesAfter(CurledPage(), finding)), 0.9) << method;
    }
}

TEST(FindCurvesOnSamples, EveryIlluminationFindsAPageOfUnevenLight) {
    for (int illum = 0; illum < 3; ++illum) {
        const CurveFinding finding = measureCurves(0, CurledPage().image, illum);
        EXPECT_GE(ShareWithin(LinesAfter(CurledPage(), finding)), 0.9) << illum;
    }
}

TEST(FindCurvesOnSamples, TheEdgesOfAPageOnBlackAreItsCurves) {
    const CurveFinding finding = measureCurves(kPageEdges, CurledPage().image, 1);
    ASSERT_TRUE(finding.found);
    const auto& page = CurledPage().truth.pages[0];
    const auto nearest = [](const std::vector<Point>& curve, const QT::QPointF& at) {
        double least = 1e9;
        for (std::size_t i = 0; i + 1 < curve.size(); ++i)
            for (int k = 0; k < 20; ++k)
                least = std::min(least,
                                 samples::Length(samples::Blend(curve[i], curve[i + 1], k / 20.0) -
                                                 Point{at.x, at.y}));
        return least;
    };
    for (const auto& at : curveOf(finding.top.data(), kCurvePoints).toPolyline())
        EXPECT_LT(nearest(page.topCurve, at), 12);
    for (const auto& at : curveOf(finding.bottom.data(), kCurvePoints).toPolyline())
        EXPECT_LT(nearest(page.bottomCurve, at), 12);
}

TEST(FindCurvesOnSamples, GivenCurvesTellTheSidesForMethodsAboveTwo) {
    // The sides of the page itself; the text lies well within.
    const auto& page = CurledPage().truth.pages[0];
    std::array<std::int32_t, kCurvePoints> top, bottom;
    for (int i = 0; i < kCurvePoints; ++i) {
        const double t = i / 7.0;
        const Point upper = samples::Blend(page.corners[0], page.corners[1], t);
        const Point lower = samples::Blend(page.corners[3], page.corners[2], t);
        top[static_cast<std::size_t>(i)] = packPoint({upper.x, upper.y + i % 2});
        bottom[static_cast<std::size_t>(i)] = packPoint({lower.x, lower.y + i % 2});
    }
    ASSERT_EQ(findCurves(4, CurledPage().image, top.data(), bottom.data(), kCurvePoints, 1), 1);
    EXPECT_NEAR(unpackPoint(top[0]).x, page.corners[0].x, 8);
    EXPECT_NEAR(unpackPoint(bottom[7]).x, page.corners[2].x, 8);
    CurveFinding finding;
    finding.top = top;
    finding.bottom = bottom;
    EXPECT_GE(ShareWithin(LinesAfter(CurledPage(), finding)), 0.9);
}

TEST(FindCurvesOnSamples, EqualCurvesForAnyNumberOfThreads) {
    CurveFinding expected;
    {
        const Threads one(1);
        expected = measureCurves(0, CurledPage().image, 1);
    }
    for (const int count : {2, 7}) {
        const Threads threads(count);
        const CurveFinding finding = measureCurves(0, CurledPage().image, 1);
        EXPECT_EQ(finding.top, expected.top);
        EXPECT_EQ(finding.bottom, expected.bottom);
        EXPECT_EQ(finding.sure, expected.sure);
    }
}

TEST(FindCurvesOnSamples, NothingOfTheTextIsCutOff) {
    for (const auto strength : {CurlStrength::kMedium, CurlStrength::kStrong}) {
        const samples::SamplePage page = PageOf(strength, samples::Language::kLatin, 31);
        const CurveFinding finding = measureCurves(0, page.image, 1);
        ASSERT_TRUE(finding.found);
        const auto surface = surfaceOf(finding.top.data(), finding.bottom.data(), kCurvePoints);
        for (const samples::TextLine& line : page.truth.lines)
            for (const Point& p : line.baseline) {
                const QT::QPointF flat = surface->toFlat({p.x, p.y});
                EXPECT_GT(flat.y, line.fontSize * 0.8);
                EXPECT_LT(flat.y, surface->flatHeight() - line.fontSize * 0.3);
                EXPECT_GT(flat.x, 0);
                EXPECT_LT(flat.x, surface->flatWidth());
            }
    }
}

TEST(FindCurvesOnSamples, AFlattenedPageIsFlat) {
    const CurveFinding finding = measureCurves(0, CurledPage().image, 1);
    CDibImage flat = CurledPage().image;
    ASSERT_EQ(dewarp(2, flat, finding.top.data(), finding.bottom.data(), kCurvePoints, 0), 1);
    const CurveFinding again = measureCurves(0, flat, 1);
    EXPECT_LT(again.evidence.bow, finding.evidence.bow / 4);
    EXPECT_LT(again.evidence.bow, 0.1);
}

TEST(FindCurvesOnSamples, ACancelledSearchFindsNothing) {
    const CountedCancel never;
    {
        const StepContext context(never.Token());
        measureCurves(0, CurledPage().image, 1);
    }
    EXPECT_GT(never.Asked(), 20);
    for (const long from : {1L, 5L, never.Asked() / 2, never.Asked()}) {
        const CountedCancel cancel(from);
        const StepContext context(cancel.Token());
        std::array<std::int32_t, kCurvePoints> top, bottom;
        top.fill(-1);
        bottom.fill(-1);
        EXPECT_EQ(findCurves(0, CurledPage().image, top.data(), bottom.data(), kCurvePoints, 1), 0);
        EXPECT_EQ(classifyCurves(top.data(), bottom.data(), kCurvePoints), kFlatCurves);
        EXPECT_FALSE(context.HasFailed());
        EXPECT_FALSE(context.IsOutOfMemory());
    }
}

TEST(FindCurvesOnSamples, RefusedMemoryLeavesTheGrid) {
    samples::CurvedRequest request;
    request.dpi = 50;
    const samples::SamplePage page = samples::MakeCurvedPage(request);
    const Threads one(1);  // refusals are counted on this thread
    long tried = 0;
    for (long n = 1;; n += 1 + n / 12) {  // the first ones all, later ones here and there
        const StepContext context;
        std::array<std::int32_t, kCurvePoints> top, bottom;
        top.fill(-1);
        bottom.fill(-1);
        int done = 0;
        bool happened = false;
        {
            const FailAllocation failure(n);
            done = findCurves(0, page.image, top.data(), bottom.data(), kCurvePoints, 1);
            happened = failure.Happened();
        }
        if (!happened)
            break;
        ++tried;
        EXPECT_EQ(done, 0) << n;
        EXPECT_EQ(classifyCurves(top.data(), bottom.data(), kCurvePoints), kFlatCurves) << n;
        EXPECT_TRUE(context.IsOutOfMemory()) << n;
        EXPECT_FALSE(context.HasFailed()) << context.FailureText();
    }
    EXPECT_GT(tried, 20);
}

}  // namespace
}  // namespace velloran::test

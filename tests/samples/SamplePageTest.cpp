#include "samples/SamplePage.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

#include "samples/SampleMeasure.h"
#include "support/Images.h"

#ifdef _OPENMP
#include <omp.h>
#endif

namespace velloran::samples {
namespace {

using test::ExpectSamePixels;
using test::SmallPage;

class SamplePageOfKind : public testing::TestWithParam<PageKind> {};

TEST_P(SamplePageOfKind, HasTheToldSizeDepthAndResolution) {
    const SamplePage page = SmallPage(GetParam());
    EXPECT_EQ(page.image.GetWidth(), page.truth.width);
    EXPECT_EQ(page.image.GetHeight(), page.truth.height);
    EXPECT_EQ(page.image.GetBpp(), page.truth.bitsPerPixel);
    EXPECT_EQ(page.image.GetXDpi(), 110);
    EXPECT_EQ(page.image.GetYDpi(), 110);
    EXPECT_EQ(page.truth.kind, RecipeOf(GetParam()).name);
}

TEST_P(SamplePageOfKind, IsTheSameTwice) {
    const SamplePage first = SmallPage(GetParam(), 3), second = SmallPage(GetParam(), 3);
    ExpectSamePixels(first.image, second.image);
    ExpectSamePixels(first.inkMask, second.inkMask);
    EXPECT_EQ(ToJson(first.truth, "a"), ToJson(second.truth, "a"));
}

TEST_P(SamplePageOfKind, HangsOnNoNumberOfThreads) {
#ifdef _OPENMP
    const int before = omp_get_max_threads();
    omp_set_num_threads(1);
    const SamplePage one = SmallPage(GetParam(), 4);
    omp_set_num_threads(2);
    const SamplePage two = SmallPage(GetParam(), 4);
    omp_set_num_threads(5);
    const SamplePage five = SmallPage(GetParam(), 4);
    omp_set_num_threads(before);
    ExpectSamePixels(one.image, two.image);
    ExpectSamePixels(one.image, five.image);
#else
    GTEST_SKIP() << "built without row threads";
#endif
}

TEST_P(SamplePageOfKind, AnotherSeedGivesAnotherPicture) {
    const SamplePage a = SmallPage(GetParam(), 1), b = SmallPage(GetParam(), 2);
    std::size_t differing = 0;
    for (int y = 0; y < a.image.GetHeight(); ++y)
        for (std::uint32_t x = 0; x < a.image.GetEffWidth(); ++x)
            differing += a.image.GetBits(y)[x] != b.image.GetBits(y)[x];
    EXPECT_GT(differing, 1000U);
}

TEST_P(SamplePageOfKind, TruthLiesInsideThePicture) {
    const SamplePage page = SmallPage(GetParam(), 6);
    const Truth& truth = page.truth;
    const auto expectInside = [&](const Box& box) {
        EXPECT_GE(box.left, 0);
        EXPECT_GE(box.top, 0);
        EXPECT_LE(box.right, truth.width);
        EXPECT_LE(box.bottom, truth.height);
        EXPECT_FALSE(box.IsEmpty());
    };
    EXPECT_EQ(truth.contentBox.has_value(), GetParam() != PageKind::kBlank);
    if (truth.contentBox)
        expectInside(*truth.contentBox);
    for (const TextLine& line : truth.lines) {
        expectInside(line.box);
        EXPECT_FALSE(line.text.empty());
        EXPECT_GE(line.baseline.size(), 2U);
    }
    for (const Box& edge : truth.blackEdges)
        expectInside(edge);
    EXPECT_EQ(truth.pages.size(), IsTwoPages(GetParam()) ? 2U : 1U);
    for (const PageTruth& place : truth.pages) {
        EXPECT_GE(place.topCurve.size(), 8U);
        EXPECT_GE(place.bottomCurve.size(), 8U);
    }
}

INSTANTIATE_TEST_SUITE_P(, SamplePageOfKind, testing::ValuesIn(KindsOfSet("all")),
                         [](const auto& row) { return std::string(RecipeOf(row.param).name); });

TEST(SamplePage, IsTheSameOnThreadsOfTheCaller) {
    SamplePage pages[2];
    {
        std::jthread first([&] { pages[0] = SmallPage(PageKind::kComicScreen, 9); });
        std::jthread second([&] { pages[1] = SmallPage(PageKind::kComicScreen, 9); });
    }
    ExpectSamePixels(pages[0].image, pages[1].image);
}

TEST(SamplePage, SizesResolutionsAndAnglesOutOfRangeAreRefused) {
    SampleRequest request;
    request.width = kSmallestSide - 1;
    EXPECT_THROW(MakeSamplePage(request), std::invalid_argument);
    request = {};
    request.height = kLargestSide + 1;
    EXPECT_THROW(MakeSamplePage(request), std::invalid_argument);
    request = {};
    request.dpi = 29;
    EXPECT_THROW(MakeSamplePage(request), std::invalid_argument);
    request = {};
    request.angleDegrees = 5.01;
    EXPECT_THROW(MakeSamplePage(request), std::invalid_argument);
}

TEST(SamplePage, SmallestPicturesAreMade) {
    for (const PageKind kind : KindsOfSet("all")) {
        SampleRequest request;
        request.kind = kind;
        request.width = request.height = kSmallestSide;
        const SamplePage page = MakeSamplePage(request);
        EXPECT_TRUE(page.image.IsValid()) << RecipeOf(kind).name;
    }
}

TEST(SamplePage, NoMaskIsMadeUnasked) {
    SampleRequest request;
    request.width = request.height = 200;
    EXPECT_FALSE(MakeSamplePage(request).inkMask.IsValid());
}

}  // namespace
}  // namespace velloran::samples

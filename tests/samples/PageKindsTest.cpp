#include "samples/PageKinds.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "samples/SampleFiles.h"

namespace velloran::samples {
namespace {

TEST(SamplePageKinds, TheSetOfAllHoldsEachKindOnce) {
    const auto all = KindsOfSet("all");
    ASSERT_EQ(all.size(), static_cast<std::size_t>(kPageKindCount));
    for (int i = 0; i < kPageKindCount; ++i)
        EXPECT_EQ(std::count(all.begin(), all.end(), static_cast<PageKind>(i)), 1);
}

TEST(SamplePageKinds, NamesTellKindsApart) {
    for (const PageKind a : KindsOfSet("all"))
        for (const PageKind b : KindsOfSet("all")) {
            if (a != b) {
                EXPECT_NE(RecipeOf(a).name, RecipeOf(b).name);
            }
        }
}

TEST(SamplePageKinds, AnUnknownSetIsEmpty) {
    EXPECT_TRUE(KindsOfSet("nothing").empty());
    EXPECT_TRUE(RequestsOf({.name = "nothing"}).empty());
}

TEST(SamplePageKinds, ASetGoesRoundUntilItsCountIsMet) {
    const auto requests = RequestsOf({.name = "comic", .count = 5, .seed = 7});
    ASSERT_EQ(requests.size(), 5U);
    EXPECT_EQ(requests[3].kind, requests[0].kind);
    EXPECT_NE(requests[3].seed, requests[0].seed);
}

TEST(SamplePageKinds, DefaultSizeIsA4AndTwoPagesLieAcross) {
    const auto requests = RequestsOf({.name = "spread"});
    ASSERT_EQ(requests.size(), 3U);
    EXPECT_EQ(requests[0].width, 2480);
    EXPECT_EQ(requests[0].height, 3508);
    EXPECT_EQ(requests[1].width, 3508);
    EXPECT_EQ(requests[1].height, 2480);
}

}  // namespace
}  // namespace velloran::samples

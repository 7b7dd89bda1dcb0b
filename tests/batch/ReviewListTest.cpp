#include "batch/ReviewList.h"

#include <gtest/gtest.h>

#include "support/TempFolder.h"

namespace velloran::test {
namespace {

FoundSure Sure(Finding finding, double value) {
    FoundSure sure;
    sure[static_cast<std::size_t>(finding)] = value;
    return sure;
}

TEST(ReviewList, TheLeastSureStandsFirstAndEqualsKeepTheirOrder) {
    ReviewList list;
    list.Add("b.png", Sure(Finding::kSkew, 0.5));
    list.Add("a.png", Sure(Finding::kBox, 0.25));
    FoundSure two = Sure(Finding::kSkew, 1);
    two[static_cast<std::size_t>(Finding::kSplit)] = 0.5;
    list.Add("c.png", two);
    list.Add("nothing searched.png", {});
    EXPECT_EQ(list.Text(),
              "a.png\tbox\t0.250\n"
              "b.png\tskew\t0.500\n"
              "c.png\tsplit\t0.500\n"
              "c.png\tskew\t1.000\n");
}

TEST(ReviewList, ANameThatBreaksLinesIsEscaped) {
    ReviewList list;
    list.Add("a\tb\nc\\d.png", Sure(Finding::kCorners, 0));
    EXPECT_EQ(list.Text(), "a\\x09b\\x0Ac\\x5Cd.png\tcorners\t0.000\n");
}

TEST(ReviewList, TakesOnlyThePlaceOfNothingOrOfAnOldList) {
    const TempFolder folder;
    EXPECT_TRUE(CanBeReview(folder / "new.txt"));
    ReviewList list;
    FileError error;
    ASSERT_TRUE(list.Write(folder / "list.txt", &error)) << error.detail;
    EXPECT_TRUE(CanBeReview(folder / "list.txt"));  // empty
    list.Add("a.png", Sure(Finding::kSkew, 0.5));
    ASSERT_TRUE(list.Write(folder / "list.txt", &error)) << error.detail;
    EXPECT_EQ(ReadAll(folder / "list.txt"), "a.png\tskew\t0.500\n");
    EXPECT_TRUE(CanBeReview(folder / "list.txt"));
    for (const char* own : {"my notes\n", "a\tskew\t0.5", "a\tskew\t0.500", "a\tfoo\t0.500\n"}) {
        WriteAll(folder / "own.txt", own);
        EXPECT_FALSE(CanBeReview(folder / "own.txt")) << own;
    }
    EXPECT_FALSE(CanBeReview(folder.Path()));
}

}  // namespace
}  // namespace velloran::test

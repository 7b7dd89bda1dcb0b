#include "codecs/ImageInfo.h"

#include <gtest/gtest.h>

#include <limits>

namespace velloran {
namespace {

TEST(ImageInfo, SidesMustBeAtLeastOne) {
    EXPECT_TRUE(IsAcceptableSize(1, 1, 1));
    EXPECT_FALSE(IsAcceptableSize(0, 1, 24));
    EXPECT_FALSE(IsAcceptableSize(1, 0, 24));
    EXPECT_FALSE(IsAcceptableSize(-5, 5, 24));
}

TEST(ImageInfo, AGigapixelIsTheMost) {
    EXPECT_TRUE(IsAcceptableSize(1'000'000, 1000, 8));
    EXPECT_FALSE(IsAcceptableSize(1'000'000, 1001, 8));
    EXPECT_TRUE(IsAcceptableSize(1'000'000'000, 1, 8));
    EXPECT_FALSE(IsAcceptableSize(1'000'000'001, 1, 1));
}

TEST(ImageInfo, RowsWithTheirPaddingMustFitTwoGigabytes) {
    EXPECT_TRUE(IsAcceptableSize(26754, 26754, 24));    // 80264 bytes a row: 2147383056
    EXPECT_FALSE(IsAcceptableSize(26755, 26756, 24));   // 80268 bytes a row: 2147650608
    EXPECT_FALSE(IsAcceptableSize(1, 600'000'000, 1));  // 4 bytes a row: 2.4 GB
}

TEST(ImageInfo, NoValueOverflows) {
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
    EXPECT_FALSE(IsAcceptableSize(kMost, kMost, 24));
    EXPECT_FALSE(IsAcceptableSize(kMost, 1, 1));
    EXPECT_FALSE(IsAcceptableSize(1, kMost, 1));
    EXPECT_FALSE(IsAcceptableSize(1, 1, std::numeric_limits<int>::max()));
    EXPECT_FALSE(IsAcceptableSize(1, 1, 0));
}

}  // namespace
}  // namespace velloran

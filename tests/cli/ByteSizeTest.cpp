#include "cli/ByteSize.h"

#include <gtest/gtest.h>

namespace velloran::cli {
namespace {

TEST(ByteSize, LettersArePowersOf1024) {
    EXPECT_EQ(ParseByteSize("65536"), 65536);
    EXPECT_EQ(ParseByteSize("2K"), 2048);
    EXPECT_EQ(ParseByteSize("500m"), std::int64_t{500} << 20);
    EXPECT_EQ(ParseByteSize("2G"), std::int64_t{2} << 30);
    EXPECT_EQ(ParseByteSize("1.5GiB"), std::int64_t{3} << 29);
    EXPECT_EQ(ParseByteSize("1TB"), std::int64_t{1} << 40);
    EXPECT_EQ(ParseByteSize("7B"), 7);
}

TEST(ByteSize, WhatIsNoSizeIsRefused) {
    for (const char* text : {"", "G", "0", "-1", "2X", "2GG", "two", "2 G", "1e99", "inf", "nan",
                             "99999999999T", "2iB"})
        EXPECT_EQ(ParseByteSize(text), std::nullopt) << text;
}

}  // namespace
}  // namespace velloran::cli

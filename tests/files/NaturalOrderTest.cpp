#include "files/NaturalOrder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace velloran {
namespace {

int Sign(int value) {
    return (value > 0) - (value < 0);
}

TEST(NaturalOrder, DigitsCompareByTheirValue) {
    EXPECT_LT(CompareNatural("page2.jpg", "page10.jpg"), 0);
    EXPECT_LT(CompareNatural("a2b10", "a2b11"), 0);
    EXPECT_LT(CompareNatural("9", "10"), 0);
    EXPECT_LT(CompareNatural("007", "8"), 0);
    EXPECT_GT(CompareNatural("010", "9"), 0);
}

TEST(NaturalOrder, NumbersOfAnyLengthCompare) {
    const std::string big = "1" + std::string(60, '0');
    EXPECT_LT(CompareNatural("99999999999999999999999", big), 0);
    EXPECT_GT(CompareNatural(big + "1", big), 0);
}

TEST(NaturalOrder, CaseIsIgnored) {
    EXPECT_LT(CompareNatural("a", "B"), 0);
    EXPECT_LT(CompareNatural("A", "b"), 0);
    EXPECT_LT(CompareNatural("PAGE2", "page10"), 0);
    EXPECT_LT(CompareNatural("\xC3\xA4 1", "\xC3\x84 2"), 0);  // a umlaut, small and capital
}

TEST(NaturalOrder, NamesThatDifferInCaseAloneOrderByBytes) {
    EXPECT_LT(CompareNatural("A", "a"), 0);
    EXPECT_LT(CompareNatural("A1.jpg", "a1.jpg"), 0);
}

TEST(NaturalOrder, LeadingZerosDecideLast) {
    EXPECT_LT(CompareNatural("01", "1"), 0);
    EXPECT_LT(CompareNatural("1a", "01b"), 0);  // the letter decides before the zero
    EXPECT_LT(CompareNatural("0", "00"), 0);
}

TEST(NaturalOrder, ChineseNamesOrderByCodePoint) {
    // 一 U+4E00, 二 U+4E8C, 十 U+5341; and U+20000 lies behind them.
    EXPECT_LT(CompareNatural("\u4e00", "\u4e8c"), 0);
    EXPECT_LT(CompareNatural("\u4e8c", "\u5341"), 0);
    EXPECT_LT(CompareNatural("\u5341", "\U00020000"), 0);
    EXPECT_LT(CompareNatural("\u7b2c2\u8bdd", "\u7b2c10\u8bdd"), 0);  // 第2话, 第10话
}

TEST(NaturalOrder, BytesThatAreNoTextComeBehindAllText) {
    EXPECT_GT(CompareNatural("\xFF", "\U0010FFFF"), 0);
    EXPECT_GT(CompareNatural("\xE4\xB8", "\u4e00"), 0);  // cut off
    EXPECT_GT(CompareNatural("\xC0\xAF", "z"), 0);       // an overlong form
    EXPECT_LT(CompareNatural("\xFE", "\xFF"), 0);
}

TEST(NaturalOrder, ShorterNameComesFirst) {
    EXPECT_LT(CompareNatural("", "a"), 0);
    EXPECT_LT(CompareNatural("a", "a0"), 0);
    EXPECT_LT(CompareNatural("page", "page 2"), 0);
}

TEST(NaturalOrder, OnlyEqualBytesAreEqual) {
    EXPECT_EQ(CompareNatural("Page 01", "Page 01"), 0);
    EXPECT_EQ(CompareNatural("", ""), 0);
}

TEST(NaturalOrder, IsATotalOrderOverOddNames) {
    const std::vector<std::string> names = {
        "",    "0",   "00",  "1",      "01",      "10",   "1a",  "a1",   "A1",
        "a01", "a10", "a 1", "a\n1",   "\xFF",    "\xC3", "Z",   "z9z",  "z09z",
        "9:",  "9/",  "9A",  "\u4e00", "\u4e001", "-1",   "1-2", "1-10", "1.5"};
    for (const auto& a : names)
        for (const auto& b : names) {
            EXPECT_EQ(Sign(CompareNatural(a, b)), -Sign(CompareNatural(b, a))) << a << " " << b;
            EXPECT_EQ(CompareNatural(a, b) == 0, a == b) << a << " " << b;
            for (const auto& c : names) {
                if (CompareNatural(a, b) < 0 && CompareNatural(b, c) < 0) {
                    EXPECT_LT(CompareNatural(a, c), 0) << a << " " << b << " " << c;
                }
            }
        }
}

TEST(NaturalOrder, SortsPagesAsPeopleNumberThem) {
    std::vector<std::filesystem::path> names = {"p10", "P2", "p1", "cover", "p1b", "p01"};
    std::sort(names.begin(), names.end(), NaturalLess());
    const std::vector<std::filesystem::path> expected = {"cover", "p01", "p1", "p1b", "P2", "p10"};
    EXPECT_EQ(names, expected);
}

}  // namespace
}  // namespace velloran

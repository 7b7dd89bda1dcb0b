#include "text/Text.h"

#include <gtest/gtest.h>

#include <clocale>

#include "text/NumberText.h"
#include "text/PathText.h"

namespace velloran {
namespace {

TEST(Text, Utf8GoesToUtf16AndBack) {
    const std::string utf8 = "aß中😀\n";
    EXPECT_EQ(ToUtf16(utf8), u"aß中😀\n");
    EXPECT_EQ(ToUtf8(ToUtf16(utf8)), utf8);
}

TEST(Text, EveryCodePointGoesThereAndBack) {
    for (char32_t point = 0; point <= 0x10FFFF; ++point) {
        if (point >= 0xD800 && point < 0xE000)
            continue;
        std::u16string text;
        if (point < 0x10000) {
            text += static_cast<char16_t>(point);
        } else {
            text += static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10));
            text += static_cast<char16_t>(0xDC00 + ((point - 0x10000) & 0x3FF));
        }
        const std::string utf8 = ToUtf8(text);
        ASSERT_EQ(utf8.size(), point < 0x80 ? 1U : point < 0x800 ? 2U : point < 0x10000 ? 3U : 4U);
        ASSERT_EQ(ToUtf16(utf8), text) << static_cast<unsigned>(point);
        ASSERT_TRUE(IsUtf8(utf8));
    }
}

struct IllFormedCase {
    const char* name;
    std::string_view bytes;
    std::u16string_view text;
};
void PrintTo(const IllFormedCase& c, std::ostream* out) {
    *out << c.name;
}

class IllFormedUtf8 : public testing::TestWithParam<IllFormedCase> {};

TEST_P(IllFormedUtf8, BecomesReplacementCharacters) {
    EXPECT_EQ(ToUtf16(GetParam().bytes), GetParam().text);
    EXPECT_FALSE(IsUtf8(GetParam().bytes));
}

INSTANTIATE_TEST_SUITE_P(
    Text, IllFormedUtf8,
    testing::Values(IllFormedCase{"LoneContinuation", "a\x80z", u"a\uFFFDz"},
                    IllFormedCase{"TruncatedAtTheEnd", "a\xE4\xB8", u"a\uFFFD"},
                    IllFormedCase{"TruncatedBeforeAscii", "\xE4\xB8z", u"\uFFFDz"},
                    IllFormedCase{"Overlong", "\xC0\xAF", u"\uFFFD\uFFFD"},
                    IllFormedCase{"OverlongOfThree", "\xE0\x80\xAF", u"\uFFFD\uFFFD\uFFFD"},
                    IllFormedCase{"Surrogate", "\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},
                    IllFormedCase{"AboveTheLast", "\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
                    IllFormedCase{"NoSuchLead", "\xFF", u"\uFFFD"}),
    [](const auto& instance) { return instance.param.name; });

TEST(Text, AnUnpairedSurrogateBecomesAReplacementCharacter) {
    const std::u16string high(1, static_cast<char16_t>(0xD83D));
    const std::u16string low(1, static_cast<char16_t>(0xDE00));
    EXPECT_EQ(ToUtf8(high + u"a"),
              "\xEF\xBF\xBD"
              "a");
    EXPECT_EQ(ToUtf8(u"a" + high), "a\xEF\xBF\xBD");
    EXPECT_EQ(ToUtf8(low + high), "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(Text, PathsThatAreNoUtf8CanBeShown) {
    EXPECT_EQ(PathText("/扫描/a.png"), u"/扫描/a.png");
    EXPECT_EQ(PathUtf8("/scan\xFF.png"), "/scan\xEF\xBF\xBD.png");
    EXPECT_EQ(PathOf(u"/扫描/a.png"), std::filesystem::path("/扫描/a.png"));
}

TEST(Text, CaseFoldsForLatinGreekAndCyrillicLetters) {
    EXPECT_EQ(FoldCase(u'Z'), u'z');
    EXPECT_EQ(FoldCase(u'['), u'[');
    EXPECT_EQ(FoldCase(u'Ä'), u'ä');
    EXPECT_EQ(FoldCase(u'×'), u'×');
    EXPECT_EQ(FoldCase(u'ß'), u'ß');
    EXPECT_EQ(FoldCase(u'Σ'), u'σ');
    EXPECT_EQ(FoldCase(u'Ώ'), u'ώ');
    EXPECT_EQ(FoldCase(u'Ж'), u'ж');
    EXPECT_EQ(FoldCase(u'Ё'), u'ё');
    EXPECT_EQ(FoldCase(u'Ґ'), u'ґ');
    EXPECT_EQ(FoldCase(u'ґ'), u'ґ');
    EXPECT_EQ(FoldCase(u'中'), u'中');
}

TEST(Text, FoldingTwiceIsFoldingOnce) {
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const char16_t once = FoldCase(static_cast<char16_t>(unit));
        ASSERT_EQ(FoldCase(once), once) << unit;
    }
}

TEST(Text, ComparesWithoutRegardToCase) {
    EXPECT_TRUE(EqualIgnoringCase(u"ÄB页", u"äb页"));
    EXPECT_FALSE(EqualIgnoringCase(u"ab", u"abc"));
    EXPECT_FALSE(EqualIgnoringCase(u"ab", u"ac"));
    EXPECT_TRUE(EqualIgnoringCase(std::string_view(".JPG"), std::string_view(".jpg")));
    EXPECT_FALSE(EqualIgnoringCase(std::string_view("@"), std::string_view("`")));
    EXPECT_FALSE(EqualIgnoringCase(std::string_view("a"), std::string_view("ab")));
}

TEST(Text, LowerCasesLettersAndLeavesBytesThatAreNoText) {
    EXPECT_EQ(LowerCase("Page01.JPG"), "page01.jpg");
    EXPECT_EQ(LowerCase("ÄÖ-ЖЁ-页😀"), "äö-жё-页😀");
    EXPECT_EQ(LowerCase("A\xFF\xC4Z"), "a\xFF\xC4z");
    EXPECT_EQ(LowerCase("\xE4\xB8"), "\xE4\xB8");
}

TEST(ParseInt32, TakesDecimalAndHexadecimal) {
    EXPECT_EQ(ParseInt32("0"), 0);
    EXPECT_EQ(ParseInt32("-120"), -120);
    EXPECT_EQ(ParseInt32("+7"), 7);
    EXPECT_EQ(ParseInt32("2147483647"), INT32_MAX);
    EXPECT_EQ(ParseInt32("-2147483648"), INT32_MIN);
    EXPECT_EQ(ParseInt32("0xFFFFFFFF"), -1);
    EXPECT_EQ(ParseInt32("0Xff"), 255);
    EXPECT_EQ(ParseInt32("-0x10"), -16);
}

TEST(ParseInt32, RefusesWhatIsNoNumberOrDoesNotFit) {
    for (const char* text :
         {"", "-", "+", "0x", "-0x", "1 ", " 1", "1.0", "12a", "0xG", "--1", "+-1", "0x-1",
          "2147483648", "-2147483649", "0x100000000", "99999999999999999999", "１"})
        EXPECT_EQ(ParseInt32(text), std::nullopt) << text;
}

TEST(NumberText, WritesIntegersAndExactFractions) {
    EXPECT_EQ(ToUtf8(DecimalText(-2147483648LL)), "-2147483648");
    EXPECT_EQ(ToUtf8(HexText(0)), "0");
    EXPECT_EQ(ToUtf8(HexText(-1)), "FFFFFFFF");
    EXPECT_EQ(ToUtf8(HexText(0x0A1B2C3D)), "A1B2C3D");
    EXPECT_EQ(ToUtf8(TenthsText(0)), "0.0");
    EXPECT_EQ(ToUtf8(TenthsText(-5)), "-0.5");
    EXPECT_EQ(ToUtf8(TenthsText(1000)), "100.0");
    EXPECT_EQ(ToUtf8(HundredthsText(5)), "0.05");
    EXPECT_EQ(ToUtf8(HundredthsText(-1234)), "-12.34");
    EXPECT_EQ(ToUtf8(HundredthsText(INT32_MIN)), "-21474836.48");
}

TEST(NumberText, DoesNotFollowTheLocale) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* locale : {"de_DE.UTF-8", "fr_FR.UTF-8", "C.UTF-8"}) {
        if (std::setlocale(LC_ALL, locale) == nullptr)
            continue;
        EXPECT_EQ(ToUtf8(HundredthsText(123456)), "1234.56") << locale;
        EXPECT_EQ(LowerCase("IÄ"), "iä") << locale;
    }
    std::setlocale(LC_ALL, before.c_str());
}

}  // namespace
}  // namespace velloran

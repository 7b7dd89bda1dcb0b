#include "cli/ParameterOptions.h"

#include <gtest/gtest.h>

#include "cli/Arguments.h"
#include "cli/Console.h"
#include "cli/TextWidth.h"
#include "params/ParaTable.h"
#include "text/Text.h"

namespace velloran::cli {
namespace {

struct ValueCase {
    const char* name;
    std::string text;
    std::optional<std::int32_t> value;
};
void PrintTo(const ValueCase& c, std::ostream* out) {
    *out << c.name;
}
class ParameterValue : public testing::TestWithParam<ValueCase> {};

TEST_P(ParameterValue, IsReadOrRefused) {
    std::string problem;
    const auto setting = ParseParameterSetting("PARA_DPI=" + GetParam().text, problem);
    EXPECT_EQ(setting.has_value(), GetParam().value.has_value());
    EXPECT_EQ(problem.empty(), GetParam().value.has_value());
    if (setting && GetParam().value) {
        EXPECT_EQ(setting->index, PARA_DPI);
        EXPECT_EQ(setting->value, *GetParam().value);
    }
}

const ValueCase kValueCases[] = {
    {"Decimal", "120", 120},
    {"Zero", "0", 0},
    {"Negative", "-1", -1},
    {"LeastDecimal", "-2147483648", INT32_MIN},
    {"GreatestDecimal", "2147483647", INT32_MAX},
    {"TooGreat", "2147483648", std::nullopt},
    {"FarTooGreat", "99999999999999999999", std::nullopt},
    {"Hexadecimal", "0x10", 16},
    {"HexadecimalIs32Bits", "0xFFFFFFFF", -1},
    {"HexadecimalOf33Bits", "0x100000000", std::nullopt},
    {"HexadecimalWithoutDigits", "0x", std::nullopt},
    {"Empty", "", std::nullopt},
    {"SignAlone", "-", std::nullopt},
    {"Letters", "abc", std::nullopt},
    {"TrailingLetter", "1x", std::nullopt},
    {"LeadingBlank", " 1", std::nullopt},
    {"Fraction", "1.5", std::nullopt},
};
INSTANTIATE_TEST_SUITE_P(ParameterOptions, ParameterValue, testing::ValuesIn(kValueCases),
                         [](const auto& test) { return test.param.name; });

TEST(ParameterOptions, NamesAreExact) {
    std::string problem;
    EXPECT_TRUE(ParseParameterSetting("JPG_PROGRESSIVE=0", problem));
    for (const char* text : {"para_dpi=1", "DPI=1", "=1", "", "PARA_DPI", " PARA_DPI=1"}) {
        problem.clear();
        EXPECT_FALSE(ParseParameterSetting(text, problem)) << text;
        EXPECT_NE(problem, "") << text;
    }
}

TEST(ParameterOptions, WarnsOfWhatTheTableDoesNotAllow) {
    EXPECT_EQ(RangeWarning(PARA_CONTRAST, 0), "");
    EXPECT_EQ(RangeWarning(PARA_CONTRAST, 200), "");
    EXPECT_EQ(RangeWarning(PARA_CONTRAST, 201), "PARA_CONTRAST=201超出范围0..200");
    EXPECT_EQ(RangeWarning(PARA_CONTRAST, -1), "PARA_CONTRAST=-1超出范围0..200");
    EXPECT_EQ(RangeWarning(PARA_LEVELS_LIGHT, INT32_MIN), "") << "it has no range";
}

TEST(ParameterOptions, ASettingIsReadAsOneFileFirstThenFromItsLastDivider) {
    const std::vector<SettingPlace> readings = ReadingsOfSetting("a#b#c");
    const std::vector<SettingPlace> expected = {
        {"a#b#c", std::nullopt}, {"a#b", "c"}, {"a", "b#c"}};
    EXPECT_EQ(readings, expected);
    EXPECT_EQ(ReadingsOfSetting("a.ini").size(), 1U);
    EXPECT_EQ(ReadingsOfSetting("#x").size(), 1U) << "no file before the divider";
}

TEST(ParameterOptions, SectionNamesMustBeFoundAgain) {
    for (const char* name : {"a", "a b", "老书", "[x", "a#b"})
        EXPECT_TRUE(IsSectionName(name)) << name;
    for (const char* name : {"", " a", "a ", "a]b", "a\nb", "a\r"})
        EXPECT_FALSE(IsSectionName(name)) << name;
}

TEST(ParameterOptions, PathListsAreLinesOrNulSeparated) {
    using Paths = std::vector<std::string>;
    EXPECT_EQ(SplitPathList("a\r\nb c\n\nd", false), (Paths{"a", "b c", "d"}));
    EXPECT_EQ(SplitPathList("\xEF\xBB\xBF"
                            "a\n",
                            false),
              Paths{"a"});
    EXPECT_EQ(SplitPathList(std::string_view("a\nb\0\0c\r\0", 8), true), (Paths{"a\nb", "c\r"}));
    EXPECT_EQ(SplitPathList("", false), Paths{});
    EXPECT_EQ(SplitPathList("\n\n\r\n", false), Paths{});
}

TEST(Arguments, ComeBackAsTheyWereTyped) {
    const std::vector<std::string> words = {"[a]", "++", "{}", "%%", "\x01\x01", "", "-s", "x=[1]"};
    EXPECT_EQ(Unguard(GuardWords(words)), words);
}

TEST(Arguments, AreGuardedBehindAnEqualsSignToo) {
    EXPECT_EQ(GuardWords({"--log=[a]"}), std::vector<std::string>{"--log=\x01[a]"});
    EXPECT_EQ(GuardWords({"--log=a"}), std::vector<std::string>{"--log=a"});
}

TEST(Arguments, BehindTheEndOfTheOptionsAreNamesWhole) {
    const std::vector<std::string> words = {"--", "--a=", "--a=[1]", "[b]", "--"};
    EXPECT_EQ(GuardWords(words),
              (std::vector<std::string>{"--", "--a=", "--a=[1]", "\x01[b]", "--"}));
    EXPECT_EQ(Unguard(GuardWords(words)), words);
}

TEST(ParameterOptions, AListTextIsItsValueInEitherLanguage) {
    std::string problem;
    const auto value = [&](const std::string& text) {
        const auto setting = ParseParameterSetting(text, problem);
        return setting ? std::optional(setting->value) : std::nullopt;
    };
    EXPECT_EQ(value("PARA_COLOR=纯黑白"), 7);
    EXPECT_EQ(value("PARA_COLOR=" + ToUtf8(ParaRowOf(PARA_COLOR).list[7].In(Language::kEnglish))),
              7);
    EXPECT_EQ(value("PARA_ROATE=(无)"), 0);
    // A number is the position, also where the texts are numbers.
    EXPECT_EQ(value("PARA_SURFACE_BLUR_RADIUS=4"), 4);
    EXPECT_EQ(value("PARA_COLOR=纯黑"), std::nullopt);
    EXPECT_NE(problem.find("“纯黑白”"), std::string::npos) << problem;
    EXPECT_EQ(value("PARA_CONTRAST=纯黑白"), std::nullopt) << "it has no list";
}

TEST(ProgressText, TellsDoneTotalRateTimeLeftAndPath) {
    EXPECT_EQ(BarText({10, 40, 5.0, "a/b.png"}, 0),
              "[#####...............] 10/40 2.0/秒 剩余0:15 a/b.png");
    EXPECT_EQ(BarText({0, 40, 0.0, ""}, 0), "[....................] 0/40");
    EXPECT_EQ(BarText({1, 7201, 1.0, ""}, 0), "[....................] 1/7201 1.0/秒 剩余2:00:00");
}

std::size_t Columns(const std::string& text) {
    return WidthOf(ToUtf16(text));
}

TEST(ProgressText, ALongPathLosesItsFront) {
    // A blank before the path and the last column stay free; six are left for it.
    const std::string whole = BarText({1, 2, 1.0, ""}, 0);
    const std::size_t columns = Columns(whole) + 2 + 6;
    EXPECT_EQ(BarText({1, 2, 1.0, "folder/page01"}, columns), whole + " page01");
    EXPECT_EQ(BarText({1, 2, 1.0, "甲乙丙丁"}, columns), whole + " 乙丙丁");
    EXPECT_EQ(BarText({1, 2, 1.0, "x甲乙丙丁"}, columns - 1), whole + " 丙丁");
}

TEST(ProgressText, NeverReachesTheLastColumn) {
    for (std::size_t columns = 1; columns <= 100; ++columns)
        for (const std::size_t total : {std::size_t{2}, std::size_t{123456}}) {
            const std::string text = BarText({1, total, 1.0, "甲/page.png"}, columns);
            EXPECT_LT(Columns(text), columns) << text;
        }
    EXPECT_EQ(BarText({1, 2, 1.0, "a"}, 40), "[########.........] 1/2 1.0/秒 剩余0:01")
        << "the bar gives way before the rate";
    EXPECT_EQ(BarText({1, 2, 1.0, "a"}, 20), "[######.......] 1/2");
    EXPECT_EQ(BarText({1, 2, 1.0, "a"}, 5), "1/2");
}

}  // namespace
}  // namespace velloran::cli

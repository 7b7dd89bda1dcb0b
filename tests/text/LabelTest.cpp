#include "text/Label.h"

#include <gtest/gtest.h>

#include "text/Labels.h"
#include "text/Phrase.h"
#include "text/Text.h"

namespace velloran {
namespace {

class LanguageGuard {
 public:
    explicit LanguageGuard(Language language) { UseLanguage(language); }
    ~LanguageGuard() { UseLanguage(Language::kChinese); }
    LanguageGuard(const LanguageGuard&) = delete;
    LanguageGuard& operator=(const LanguageGuard&) = delete;
};

constexpr Label kDone{u"完成", u"Done"};

TEST(Label, IsChineseUnlessAskedOtherwise) {
    EXPECT_EQ(ToUtf8(kDone), "完成");
    const LanguageGuard english(Language::kEnglish);
    EXPECT_EQ(ToUtf8(kDone), "Done");
}

TEST(Label, OfOneTextIsTheSameInEveryLanguage) {
    constexpr Label number = u"12";
    EXPECT_EQ(number.In(Language::kChinese), number.In(Language::kEnglish));
    EXPECT_EQ(ToUtf8(number), "12");
}

TEST(Label, TellsEveryLanguageWithoutUsingIt) {
    EXPECT_EQ(ToUtf8(kDone.In(Language::kEnglish)), "Done");
    EXPECT_EQ(ToUtf8(kDone.In(Language::kChinese)), "完成");
}

TEST(Language, IsKnownByItsCode) {
    EXPECT_EQ(LanguageByCode("zh"), Language::kChinese);
    EXPECT_EQ(LanguageByCode("EN"), Language::kEnglish);
    for (const char* code : {"", "de", "english", "en_US"})
        EXPECT_EQ(LanguageByCode(code), std::nullopt) << code;
}

TEST(Phrase, FillsItsGapsInTheOrderOfTheLanguage) {
    constexpr Label label{u"{1}的{0}", u"{0} of {1}"};
    EXPECT_EQ(Phrase(label, {"a", "b"}), "b的a");
    const LanguageGuard english(Language::kEnglish);
    EXPECT_EQ(Phrase(label, {"a", "b"}), "a of b");
}

TEST(Phrase, TakesPartsAsTheyAre) {
    EXPECT_EQ(Phrase(Label(u"<{0}>"), {"{0}"}), "<{0}>");
    EXPECT_EQ(Phrase(Label(u"{0}{1}{"), {"x"}), "x{1}{");
}

}  // namespace
}  // namespace velloran

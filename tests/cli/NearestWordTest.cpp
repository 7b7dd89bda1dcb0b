#include "cli/NearestWord.h"

#include <gtest/gtest.h>

namespace velloran::cli {
namespace {

TEST(NearestWord, CountsLettersAddedLeftOutChangedAndSwapped) {
    EXPECT_EQ(SpellingDistance("batch", "batch"), 0U);
    EXPECT_EQ(SpellingDistance("batch", "BATCH"), 0U);
    EXPECT_EQ(SpellingDistance("bach", "batch"), 1U);
    EXPECT_EQ(SpellingDistance("baatch", "batch"), 1U);
    EXPECT_EQ(SpellingDistance("botch", "batch"), 1U);
    EXPECT_EQ(SpellingDistance("btach", "batch"), 1U);
    EXPECT_EQ(SpellingDistance("", "batch"), 5U);
    EXPECT_EQ(SpellingDistance("纯黑", "纯黑白"), 1U);
}

TEST(NearestWord, IsTheFirstOfTheNearestOrNone) {
    const std::vector<std::string> words = {"batch", "patch", "enhance"};
    EXPECT_EQ(NearestWord("batsh", words), "batch");
    EXPECT_EQ(NearestWord("ratch", words), "batch");
    EXPECT_EQ(NearestWord("enh", words), "");
    EXPECT_EQ(NearestWord("enha", words), "enhance") << "a beginning";
    EXPECT_EQ(NearestWord("describe", words), "");
    EXPECT_EQ(NearestWord("", words), "");
    EXPECT_EQ(NearestWord(std::string(10'000, 'b'), words), "");
}

}  // namespace
}  // namespace velloran::cli

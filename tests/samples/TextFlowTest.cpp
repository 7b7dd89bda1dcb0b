#include "samples/TextFlow.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace velloran::samples {
namespace {

TEST(SampleTextFlow, ChineseLinesFillTheWidthAndNeverBeginWithAClosingMark) {
    FontBook fonts;
    Random random(4);
    TextPile pile = TextPile::Sentences(Language::kChinese, random);
    const std::u16string text = pile.Paragraph(20);
    FlowStyle style{Language::kChinese, Font::kSong, 20, 200, 40};
    const std::vector<FlowLine> lines = FlowParagraph(text, style, fonts);
    std::u16string joined;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(std::u16string_view(u"，。！？").find(lines[i].text.front()),
                  std::u16string_view::npos);
        EXPECT_DOUBLE_EQ(lines[i].starts.front(), i == 0 ? 40 : 0);
        if (i + 1 < lines.size()) {
            EXPECT_NEAR(lines[i].end, 200, 1e-9);
        }
        joined += lines[i].text;
    }
    EXPECT_EQ(joined, text);
}

TEST(SampleTextFlow, LatinLinesBreakAtSpacesAndEndFlush) {
    FontBook fonts;
    const std::u16string text = u"one two three four five six seven eight nine ten";
    const FlowStyle style{Language::kLatin, Font::kSerif, 20, 150, 0};
    const std::vector<FlowLine> lines = FlowParagraph(text, style, fonts);
    ASSERT_GT(lines.size(), 2U);
    std::u16string joined;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        joined += (i > 0 ? u" " : u"") + lines[i].text;
        if (i + 1 < lines.size())
            EXPECT_NEAR(lines[i].end, 150, 1e-6);
        else
            EXPECT_LE(lines[i].end, 150);
    }
    EXPECT_EQ(joined, text);
}

TEST(SampleTextFlow, APileGivesAllItsTextsBeforeOneComesAgain) {
    Random random(8);
    TextPile pile = TextPile::Speech(random);
    std::vector<std::u16string_view> seen;
    for (int i = 0; i < 12; ++i) {
        const std::u16string_view next = pile.Next();
        EXPECT_EQ(std::count(seen.begin(), seen.end(), next), 0);
        seen.push_back(next);
    }
    EXPECT_EQ(std::count(seen.begin(), seen.end(), pile.Next()), 1);
}

}  // namespace
}  // namespace velloran::samples

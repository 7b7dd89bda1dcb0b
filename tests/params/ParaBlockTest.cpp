#include "params/ParaBlock.h"

#include <gtest/gtest.h>

#include <map>
#include <thread>

#include "text/Text.h"

namespace velloran {
namespace {

/// A block in which no two values are alike.
CParaBlock Numbered(int first) {
    CParaBlock block;
    for (int i = 0; i < kParaCount; ++i)
        block.SetPara(i, first + i);
    return block;
}

TEST(ParaBlock, DefaultsAreZeroExceptForTheNamedOnes) {
    const std::map<int, int> named = {
        {0, 100},       {1, 100}, {2, 100}, {3, 100},  {5, 100},  {8, 100},
        {6, 70},        {7, 15},  {11, 2},  {12, 1},   {13, 190}, {22, 0xFFFFFF},
        {71, 0xFFFFFF}, {23, 14}, {27, 4},  {28, 18},  {31, 2},   {34, 1},
        {35, 4},        {45, 50}, {47, 10}, {50, 255}, {51, 255}, {54, 1},
        {69, 3},        {73, 1},  {78, 1},  {80, 1},   {105, 1},  {127, 1},
        {128, 1},       {132, 1}, {133, 1}, {79, 8},   {84, 300}, {96, -1}};
    const CParaBlock block;
    for (int i = 0; i < kParaCount; ++i) {
        const auto found = named.find(i);
        EXPECT_EQ(block.GetPara(i), found == named.end() ? 0 : found->second) << i;
    }
    EXPECT_TRUE(block.GetName().empty());
}

TEST(ParaBlock, ACreatedBlockHasTheDefaults) {
    const std::unique_ptr<CParaBlock> block = CParaBlock::CreateBlock();
    EXPECT_TRUE(block->Equals(CParaBlock()));
}

TEST(ParaBlock, ResetRestoresDefaultsAndEmptiesTheName) {
    CParaBlock block = Numbered(1000);
    block.SetName(u"scan");
    block.Reset();
    EXPECT_TRUE(block.GetName().empty());
    EXPECT_EQ(block.GetPara(PARA_CONTRAST), 100);
    EXPECT_TRUE(block.Equals(CParaBlock()));
}

TEST(ParaBlock, ANameIsCutAt63Units) {
    CParaBlock block;
    block.SetName(std::u16string(63, u'页'));
    EXPECT_EQ(block.GetName(), std::u16string(63, u'页'));
    block.SetName(std::u16string(64, u'页'));
    EXPECT_EQ(block.GetName(), std::u16string(63, u'页'));
    block.SetName(std::u16string_view(u"ab\0cd", 5));
    EXPECT_EQ(ToUtf8(block.GetName()), "ab");
}

TEST(ParaBlock, TheTenGroupLabelsStandInOrder) {
    const char* const labels[] = {"亮度", "对比度",  "高亮度",  "Gamma校正", "曲线",
                                  "缩放", "Jpg质量", "Jp2压缩", "切边",      "其它"};
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(ToUtf8(CParaBlock::GetParaLabel(static_cast<ParaGroup>(i))), labels[i]);
    EXPECT_TRUE(CParaBlock::GetParaLabel(static_cast<ParaGroup>(10)).empty());
    EXPECT_TRUE(CParaBlock::GetParaLabel(static_cast<ParaGroup>(-1)).empty());
}

TEST(ParaBlock, CopyFromTakesAllValuesAndTheName) {
    CParaBlock source = Numbered(500);
    source.SetName(u"Scan");
    CParaBlock block;
    EXPECT_FALSE(block.CopyFrom(source, false));
    EXPECT_EQ(block.GetValues(), source.GetValues());
    EXPECT_EQ(block.GetName(), source.GetName());
    EXPECT_TRUE(block.CopyFrom(source, false));
}

TEST(ParaBlock, CopyFromDoesNotNoteAnOutputOnlyChangeWhenAskedTo) {
    CParaBlock source;
    source.SetPara(PARA_QUALITY, 55);
    CParaBlock block;
    EXPECT_TRUE(block.CopyFrom(source, true));
    EXPECT_EQ(block.GetPara(PARA_QUALITY), 55);
    CParaBlock other;
    EXPECT_FALSE(other.CopyFrom(source, false));
}

TEST(ParaBlock, ExactlyTenIndexesAreOutputOnly) {
    for (int i = 0; i < kParaCount; ++i) {
        CParaBlock source;
        source.SetPara(i, 12345);
        CParaBlock block;
        const bool outputOnly = i == 6 || i == 7 || i >= 126;
        EXPECT_EQ(block.CopyFrom(source, true), outputOnly) << i;
        EXPECT_EQ(block.GetPara(i), 12345) << i;
    }
}

TEST(ParaBlock, CopyFromWithAChangedNameReturnsFalseWhateverTheFlag) {
    CParaBlock source;
    source.SetName(u"scan");
    for (const bool ignore : {false, true}) {
        CParaBlock block;
        block.SetName(u"Scan");
        EXPECT_FALSE(block.CopyFrom(source, ignore));
        EXPECT_EQ(ToUtf8(block.GetName()), "scan");
    }
}

TEST(ParaBlock, EqualsIgnoresTheCaseOfNamesAndCopyFromDoesNot) {
    CParaBlock a, b;
    a.SetName(u"Scan");
    b.SetName(u"sCAN");
    EXPECT_TRUE(a.Equals(b));
    EXPECT_FALSE(a.CopyFrom(b, false));
    b.SetName(u"scans");
    EXPECT_FALSE(a.Equals(b));
    b.SetName(a.GetName());
    b.SetPara(133, 7);
    EXPECT_FALSE(a.Equals(b));
}

TEST(ParaBlock, ABlockCanBeComparedWithAndCopiedFromItself) {
    CParaBlock block = Numbered(3);
    EXPECT_TRUE(block.CopyFrom(block, false));
    EXPECT_TRUE(block.Equals(block));
    EXPECT_EQ(block.GetPara(133), 136);
}

TEST(ParaBlock, AssignValuesLeavesTheNameAndTellsWhetherAnyDiffered) {
    CParaBlock block;
    block.SetName(u"scan");
    ParaValues values = block.GetValues();
    EXPECT_TRUE(block.AssignValues(values));
    values[133] = 9;
    EXPECT_FALSE(block.AssignValues(values));
    EXPECT_EQ(block.GetPara(133), 9);
    EXPECT_EQ(ToUtf8(block.GetName()), "scan");
}

TEST(ParaBlock, AGroupIsReadAndWrittenAsOne) {
    CParaBlock block;
    constexpr std::array kLines = {PARA_PAGE_SPLIT_LEFT, PARA_PAGE_SPLIT_MID};
    block.SetGroup(kLines, {11, -22});
    EXPECT_EQ(block.GetPara(123), 11);
    EXPECT_EQ(block.GetPara(125), -22);
    EXPECT_EQ(block.GetGroup(kLines), (std::array<std::int32_t, 2>{11, -22}));
}

TEST(ParaBlock, ACopyIsIndependent) {
    CParaBlock block = Numbered(0);
    block.SetName(u"scan");
    CParaBlock copy(block);
    CParaBlock assigned;
    assigned = block;
    block.SetPara(0, 77);
    EXPECT_EQ(copy.GetPara(0), 0);
    EXPECT_EQ(assigned.GetPara(0), 0);
    EXPECT_EQ(ToUtf8(copy.GetName()), "scan");
    EXPECT_EQ(ToUtf8(assigned.GetName()), "scan");
}

TEST(ParaBlock, TwoBlocksCopiedIntoEachOtherFromTwoThreadsDoNotLockUp) {
    CParaBlock a = Numbered(1), b = Numbered(2);
    const auto copyOften = [](CParaBlock& into, const CParaBlock& from) {
        for (int i = 0; i < 20000; ++i)
            into.CopyFrom(from, false);
    };
    std::thread first([&] { copyOften(a, b); });
    std::thread second([&] { copyOften(b, a); });
    first.join();
    second.join();
    EXPECT_TRUE(a.Equals(b));
}

TEST(ParaBlock, AGroupIsNeverReadHalfWritten) {
    constexpr std::array kCorners = {PARA_CRT_PT_LT, PARA_CRT_PT_RT, PARA_CRT_PT_RB,
                                     PARA_CRT_PT_LB};
    CParaBlock block;
    std::thread writer([&] {
        for (int i = 0; i < 20000; ++i)
            block.SetGroup(kCorners, {i, i, i, i});
    });
    int torn = 0;
    for (int i = 0; i < 20000; ++i) {
        const auto corners = block.GetGroup(kCorners);
        torn += corners[0] != corners[1] || corners[1] != corners[2] || corners[2] != corners[3];
    }
    writer.join();
    EXPECT_EQ(torn, 0);
}

TEST(ParaClipboard, APayloadIs540BytesWithItsLengthFirst) {
    CParaBlock block;
    block.SetPara(0, 0x01020304);
    block.SetPara(133, -2);
    const auto payload = block.ToClipboard();
    ASSERT_EQ(payload.size(), 540U);
    // 536 is 0x218.
    const std::uint8_t head[] = {0x18, 0x02, 0, 0, 0x04, 0x03, 0x02, 0x01};
    EXPECT_TRUE(std::equal(std::begin(head), std::end(head), payload.begin()));
    const std::uint8_t tail[] = {0xFE, 0xFF, 0xFF, 0xFF};
    EXPECT_TRUE(std::equal(std::begin(tail), std::end(tail), payload.end() - 4));
}

TEST(ParaClipboard, APayloadBringsItsValuesAndNoName) {
    CParaBlock source = Numbered(-60);
    source.SetName(u"source");
    CParaBlock block;
    block.SetName(u"own");
    EXPECT_TRUE(block.FromClipboard(source.ToClipboard()));
    EXPECT_EQ(block.GetValues(), source.GetValues());
    EXPECT_EQ(ToUtf8(block.GetName()), "own");
}

TEST(ParaClipboard, AnotherLengthOrAShortPayloadIsRefused) {
    auto payload = Numbered(5).ToClipboard();
    CParaBlock block;
    EXPECT_FALSE(block.FromClipboard(std::span(payload).first(539)));
    EXPECT_FALSE(block.FromClipboard({}));
    payload[0] = 0x19;
    EXPECT_FALSE(block.FromClipboard(payload));
    EXPECT_TRUE(block.Equals(CParaBlock()));
}

TEST(CropSummary, ADefaultBlockHasNone) {
    EXPECT_TRUE(CParaBlock().CropSummary().empty());
}

TEST(CropSummary, MarginsSearchAndDeskewStandInOrder) {
    CParaBlock block;
    block.SetPara(PARA_CROPPING_P_LEFT, 15);
    block.SetPara(PARA_CROPPING_P_TOP, 20);
    block.SetPara(PARA_CROPPING_P_RIGHT, 1000);
    block.SetPara(PARA_CROPPING_P_BOTTOM, 3);
    block.SetPara(PARA_FIND_CNT_BOX, 1);
    block.SetPara(PARA_DESKEW, 1);
    EXPECT_EQ(ToUtf8(block.CropSummary()),
              "左1.5%, 上2.0%, 右100.0%, 下0.3%, 自动裁边, 自动纠斜_横排");
}

TEST(CropSummary, TheFirstItemHasNoCommaBeforeIt) {
    CParaBlock block;
    block.SetPara(PARA_CROPPING_P_TOP, 5);
    EXPECT_EQ(ToUtf8(block.CropSummary()), "上0.5%");
    block.Reset();
    block.SetPara(PARA_DESKEW, 2);
    EXPECT_EQ(ToUtf8(block.CropSummary()), "自动纠斜_竖排");
    block.SetPara(PARA_DESKEW, 3);
    EXPECT_EQ(ToUtf8(block.CropSummary()), "自动纠斜_双向");
    block.SetPara(PARA_DESKEW, 4);
    EXPECT_EQ(ToUtf8(block.CropSummary()), "手动纠斜");
    block.SetPara(PARA_DESKEW, 5);
    EXPECT_EQ(ToUtf8(block.CropSummary()), "");
}

}  // namespace
}  // namespace velloran

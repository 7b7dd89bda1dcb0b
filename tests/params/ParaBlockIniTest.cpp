#include <gtest/gtest.h>

#include "params/ParaBlock.h"
#include "params/ProfileStore.h"
#include "support/TempFolder.h"
#include "text/ProfileFile.h"
#include "text/Text.h"

namespace velloran {
namespace {

class ParaBlockIni : public testing::Test {
 protected:
    std::filesystem::path File() const { return folder_ / "a_Para.ini"; }
    void Write(std::string_view bytes) const { test::WriteAll(File(), bytes); }
    std::string Read() const { return test::ReadAll(File()); }

 private:
    test::TempFolder folder_;
};

TEST_F(ParaBlockIni, WritesOnlyTheKeysThatDifferInDecimalAndInIndexOrder) {
    CParaBlock block;
    block.SetName(u"not written");
    block.SetPara(PARA_DPI, 600);
    block.SetPara(PARA_CONTRAST, 120);
    block.SetPara(PARA_REPLACE_COLOR_TO, 0x00FF8000);
    block.SetPara(PARA_CRT_PT_LT, -1);
    EXPECT_TRUE(block.WriteToIni(u"扫描", File()));
    EXPECT_EQ(Read(),
              "[扫描]\n"
              "PARA_CONTRAST=120\n"
              "PARA_REPLACE_COLOR_TO=16744448\n"
              "PARA_DPI=600\n"
              "PARA_CRT_PT_LT=-1\n");
}

TEST_F(ParaBlockIni, WhatIsWrittenReadsBack) {
    CParaBlock block;
    for (int i = 0; i < kParaCount; ++i)
        block.SetPara(i, i % 2 == 0 ? i : 900 - i);
    EXPECT_TRUE(block.WriteToIni(u"all", File()));
    CParaBlock read;
    EXPECT_TRUE(read.ReadFromIni(u"ALL", File()));
    EXPECT_EQ(read.GetValues(), block.GetValues());
    EXPECT_TRUE(read.GetName().empty());
}

TEST_F(ParaBlockIni, ExtremeValuesReadBack) {
    CParaBlock block;
    block.SetPara(PARA_PAGE_WIDTH, INT32_MAX);
    block.SetPara(PARA_PAGE_HEIGHT, INT32_MIN);
    EXPECT_TRUE(block.WriteToIni(u"s", File()));
    CParaBlock read;
    EXPECT_TRUE(read.ReadFromIni(u"s", File()));
    EXPECT_TRUE(read.Equals(block));
}

TEST_F(ParaBlockIni, ADefaultBlockLeavesAnEmptySection) {
    Write("[s]\nPARA_CONTRAST=120\nnote=x\n[t]\nk=1\n");
    EXPECT_TRUE(CParaBlock().WriteToIni(u"s", File()));
    ProfileFile profile;
    ASSERT_TRUE(LoadProfile(File(), profile));
    EXPECT_FALSE(profile.HasKeys(u"s"));
    EXPECT_EQ(profile.GetInt(u"s", u"PARA_BRIGHTNESS", -1), -1);
    EXPECT_EQ(Read(), "[t]\nk=1\n");
}

TEST_F(ParaBlockIni, MarginsAndDpiAreLimitedOnReading) {
    Write(
        "[s]\nPARA_CROPPING_P_LEFT=5000\nPARA_CROPPING_P_TOP=-3\nPARA_CROPPING_P_RIGHT=1001\n"
        "PARA_CROPPING_P_BOTTOM=1000\nPARA_DPI=-1\n[t]\nPARA_DPI=8001\n");
    CParaBlock block;
    EXPECT_TRUE(block.ReadFromIni(u"s", File()));
    EXPECT_EQ(block.GetPara(PARA_CROPPING_P_LEFT), 1000);
    EXPECT_EQ(block.GetPara(PARA_CROPPING_P_TOP), 0);
    EXPECT_EQ(block.GetPara(PARA_CROPPING_P_RIGHT), 1000);
    EXPECT_EQ(block.GetPara(PARA_CROPPING_P_BOTTOM), 1000);
    EXPECT_EQ(block.GetPara(PARA_DPI), 0);
    EXPECT_TRUE(block.ReadFromIni(u"t", File()));
    EXPECT_EQ(block.GetPara(PARA_DPI), 8000);
}

TEST_F(ParaBlockIni, NoOtherValueIsLimitedOnReading) {
    std::string text = "[s]\n";
    for (int i = 0; i < kParaCount; ++i)
        text += std::string(ParaRowOf(i).name) + "=-12345\n";
    Write(text);
    CParaBlock block;
    EXPECT_TRUE(block.ReadFromIni(u"s", File()));
    for (int i = 0; i < kParaCount; ++i) {
        const bool limited = (i >= 57 && i <= 60) || i == 84;
        EXPECT_EQ(block.GetPara(i), limited ? 0 : -12345) << i;
    }
}

TEST_F(ParaBlockIni, AnAbsentKeyTakesItsDefaultAndNotWhatTheBlockHeld) {
    Write("[s]\nPARA_CONTRAST=120\n");
    CParaBlock block;
    block.SetName(u"old");
    block.SetPara(PARA_GAMMA, 33);
    EXPECT_TRUE(block.ReadFromIni(u"s", File()));
    EXPECT_EQ(block.GetPara(PARA_CONTRAST), 120);
    EXPECT_EQ(block.GetPara(PARA_GAMMA), 100);
    EXPECT_TRUE(block.GetName().empty());
}

TEST_F(ParaBlockIni, AnAbsentFileOrSectionReadsAsDefaults) {
    CParaBlock block;
    block.SetPara(PARA_GAMMA, 33);
    EXPECT_TRUE(block.ReadFromIni(u"s", File()));
    EXPECT_TRUE(block.Equals(CParaBlock()));
}

TEST_F(ParaBlockIni, AFileThatCannotBeReadLeavesDefaultsAndSaysSo) {
    CParaBlock block;
    block.SetPara(PARA_GAMMA, 33);
    EXPECT_FALSE(block.ReadFromIni(u"s", File().parent_path()));
    EXPECT_TRUE(block.Equals(CParaBlock()));
}

TEST_F(ParaBlockIni, TheOldSectionGoesWholeAndAllElseStaysInPlace) {
    Write(
        "; my settings\r\n"
        "[a]\r\n"
        "PARA_GAMMA=50\r\n"
        "\r\n"
        "[s]\r\n"
        "PARA_CONTRAST=1\r\n"
        "stranger=1\r\n"
        "\r\n"
        "; about b\r\n"
        "[b]\r\n"
        "  k = v ; w\r\n");
    CParaBlock block;
    block.SetPara(PARA_BRIGHTNESS, 90);
    EXPECT_TRUE(block.WriteToIni(u"S", File()));
    EXPECT_EQ(Read(),
              "; my settings\r\n"
              "[a]\r\n"
              "PARA_GAMMA=50\r\n"
              "\r\n"
              "[S]\r\n"
              "PARA_BRIGHTNESS=90\r\n"
              "\r\n"
              "; about b\r\n"
              "[b]\r\n"
              "  k = v ; w\r\n");
    // Once more: the file does not grow.
    const std::string before = Read();
    EXPECT_TRUE(block.WriteToIni(u"S", File()));
    EXPECT_EQ(Read(), before);
}

TEST_F(ParaBlockIni, AFileThatCannotBeReadIsNotOverwritten) {
    const std::string large(ProfileFile::kMaxBytes + 1, ';');
    Write(large);
    CParaBlock block;
    block.SetPara(PARA_BRIGHTNESS, 90);
    EXPECT_FALSE(block.WriteToIni(u"s", File()));
    EXPECT_EQ(Read(), large);
}

TEST_F(ParaBlockIni, AWriteIntoAMissingFolderFails) {
    CParaBlock block;
    block.SetPara(PARA_BRIGHTNESS, 90);
    EXPECT_FALSE(block.WriteToIni(u"s", File() / "no" / "such.ini"));
    EXPECT_FALSE(std::filesystem::exists(File()));
}

}  // namespace
}  // namespace velloran

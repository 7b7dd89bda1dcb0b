#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>

#include "RunProgram.h"
#include "core/DibImage.h"
#include "files/ImageFiles.h"
#include "params/ParaBlock.h"
#include "support/Images.h"
#include "support/TempFolder.h"

namespace velloran::test {
namespace {

Outcome RunIn(const TempFolder& folder, const std::vector<std::string>& arguments) {
    return RunProgram(arguments, {.folder = folder.Path()});
}

CDibImage Load(const std::filesystem::path& file) {
    CDibImage image;
    EXPECT_TRUE(LoadImageFile(file, image)) << file;
    return image;
}

TEST(Enhance, ParametersChangeThePicture) {
    const TempFolder folder;
    WritePage(folder / "a.png", 9, 7);
    const Outcome outcome = RunIn(folder, {"enhance", "a.png", "b.png", "-s", "PARA_ROATE=4"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out + outcome.err, "");
    const CDibImage before = Load(folder / "a.png"), after = Load(folder / "b.png");
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 9; ++x)
            EXPECT_EQ(PixelAt(after, x, y), PixelAt(before, 8 - x, y)) << "mirrored";
}

TEST(Enhance, HexadecimalValuesAre32Bits) {
    const TempFolder folder;
    WritePage(folder / "a.png", 9, 7);
    EXPECT_EQ(RunIn(folder, {"enhance", "a.png", "b.png", "-s", "PARA_LEVELS_LIGHT=0xFFFFFFFF",
                             "--save-setting", "s.ini#all"})
                  .status,
              0);
    EXPECT_EQ(ReadAll(folder / "s.ini").find("PARA_LEVELS_LIGHT"), std::string::npos)
        << "0xFFFFFFFF is -1, the default";
}

TEST(Enhance, ContentDecidesTheTypeOfTheInput) {
    const TempFolder folder;
    WritePage(folder / "a.png");
    std::filesystem::rename(folder / "a.png", folder / "a.jpg");
    EXPECT_EQ(RunIn(folder, {"enhance", "a.jpg", "b.bmp"}).status, 0);
    ExpectSamePixels(Load(folder / "b.bmp"), Load(folder / "a.jpg"));
}

TEST(Enhance, StopNothingLeavesThePictureAsLoaded) {
    const TempFolder folder;
    WritePage(folder / "a.png");
    EXPECT_EQ(
        RunIn(folder, {"enhance", "a.png", "b.png", "-s", "PARA_ROATE=4", "--stop", "0"}).status,
        0);
    ExpectSamePixels(Load(folder / "b.png"), Load(folder / "a.png"));
}

TEST(Enhance, VerboseTellsEachStepOnALineOfItsOwn) {
    const TempFolder folder;
    WritePage(folder / "a.png");
    const Outcome outcome =
        RunIn(folder, {"enhance", "a.png", "b.png", "-v", "-s", "PARA_AUTO_LEVELS=1"});
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "旋转\n分页\n自动色阶\n像素映射\n减色\n填白\n");
}

TEST(Enhance, APreviewTellsNoStep) {
    const TempFolder folder;
    WritePage(folder / "a.png");
    const Outcome outcome = RunIn(folder, {"enhance", "a.png", "b.png", "-v", "--preview"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
}

TEST(Enhance, FailuresSayTheirMessageBehindThePath) {
    const TempFolder folder;
    WritePage(folder / "a.png");
    WritePage(folder / "colour.png", 8, 8, /*color=*/true);
    WriteAll(folder / "empty.png", "");
    std::filesystem::create_directory(folder / "folder.png");
    struct Case {
        std::vector<std::string> arguments;
        int status;
        std::string message;
    };
    const Case cases[] = {
        {{"missing.png", "b.png"}, 1, "missing.png: 文件读取失败。 (没有这个文件或文件夹)\n"},
        {{"empty.png", "b.png"}, 1, "empty.png: 文件读取失败。 (空文件)\n"},
        {{"folder.png", "b.png"}, 1, "folder.png: 文件读取失败。 (是文件夹)\n"},
        {{"a.png", "none/b.png"},
         4,
         "none/b.png: 文件存盘失败。 (没有这个文件或文件夹，源文件: a.png)\n"},
        {{"a.png", "folder.png"}, 4, "folder.png: 文件存盘失败。 (是文件夹，源文件: a.png)\n"},
        {{"a.png", "b.xyz"},
         1,
         "b.xyz: 抱歉，保存的文件名只能以jpg、jp2、png、bmp或tif为扩展名，请更正。\n"},
        {{"a.png", "b.j2k"},
         1,
         "b.j2k: 抱歉，保存的文件名只能以jpg、jp2、png、bmp或tif为扩展名，请更正。\n"},
        {{"a.png", "-"},
         1,
         "-: 抱歉，保存的文件名只能以jpg、jp2、png、bmp或tif为扩展名，请更正。\n"},
        {{"a.png", "b.png", "-s", "PARA_COLOR=18"},
         1,
         "b.png: 抱歉，16位色图像只能保存为BMP格式，请重新选择。\n"},
        {{"a.png", "b.jpg", "-s", "PARA_COLOR=3"},
         1,
         "b.jpg: 抱歉，减色后的图像只能保存为PNG、GIF、BMP、TIFF或WEBP，请重新选择。\n"},
    };
    for (const Case& c : cases) {
        std::vector<std::string> arguments = {"enhance"};
        arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
        const Outcome outcome = RunIn(folder, arguments);
        EXPECT_EQ(outcome.status, c.status) << c.message;
        EXPECT_EQ(outcome.err, c.message);
        EXPECT_EQ(outcome.out, "");
    }
    EXPECT_EQ(folder.AllNames(),
              (std::vector<std::string>{"a.png", "colour.png", "empty.png", "folder.png"}));
}

TEST(Enhance, AFullDiskIsExitStatus4AndLeavesNothing) {
    const TempFolder folder;
    WritePage(folder / "a.png", 300, 300);
    WriteAll(folder / "b.png", "the file before");
    const Outcome outcome =
        RunProgram({"enhance", "a.png", "b.png"}, {.folder = folder.Path(), .fileSizeLimit = 4096});
    EXPECT_EQ(outcome.status, 4);
    EXPECT_EQ(outcome.err, "b.png: 文件存盘失败。 (空间不足，源文件: a.png)\n");
    EXPECT_EQ(ReadAll(folder / "b.png"), "the file before");
    EXPECT_EQ(folder.AllNames(), (std::vector<std::string>{"a.png", "b.png"}));
}

TEST(Enhance, AFolderWithoutPermissionIsExitStatus4) {
    const TempFolder folder;
    std::filesystem::permissions(folder.Path(), std::filesystem::perms(0755));
    WritePage(folder / "a.png");
    const Outcome outcome =
        RunProgram({"enhance", "a.png", "b.png"}, {.folder = folder.Path(), .asNobody = true});
    EXPECT_EQ(outcome.status, 4);
    EXPECT_EQ(outcome.err, "b.png: 文件存盘失败。 (没有权限，源文件: a.png)\n");
}

TEST(Enhance, OutputMayReplaceInput) {
    const TempFolder folder;
    WritePage(folder / "a.png", 9, 7);
    const CDibImage before = Load(folder / "a.png");
    EXPECT_EQ(RunIn(folder, {"enhance", "a.png", "a.png", "-s", "PARA_ROATE=4"}).status, 0);
    EXPECT_EQ(PixelAt(Load(folder / "a.png"), 0, 0), PixelAt(before, 8, 0));
    EXPECT_EQ(folder.AllNames(), std::vector<std::string>{"a.png"});
}

TEST(Enhance, GrayColorPagesBecomeGrayUnlessNotJudged) {
    const TempFolder folder;
    CDibImage gray = Filled(6, 6, 24, 77);
    const CParaBlock block;
    ASSERT_TRUE(SaveImageFile(folder / "a.png", gray, 90, 96, 2, false, block));
    EXPECT_EQ(RunIn(folder, {"enhance", "a.png", "b.png"}).status, 0);
    EXPECT_EQ(Load(folder / "b.png").GetBpp(), 8);
    EXPECT_EQ(
        RunIn(folder, {"enhance", "a.png", "c.png", "-s", "PARA_DECREASE_CHECK_GRAY=2"}).status, 0);
    EXPECT_EQ(Load(folder / "c.png").GetBpp(), 24);
}

TEST(Enhance, DpiOfTheBlockIsLimitedAndWritten) {
    const TempFolder folder;
    WritePage(folder / "a.png");
    const Outcome outcome = RunIn(folder, {"enhance", "a.png", "b.png", "-s", "PARA_DPI=9000"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.err.find("警告"), std::string::npos);
    EXPECT_NE(outcome.err.find("PARA_DPI=9000"), std::string::npos);
    EXPECT_EQ(Load(folder / "b.png").GetXDpi(), 8000);
}

TEST(Settings, StartFromASectionThenTakeSetsFromLeftToRight) {
    const TempFolder folder;
    WriteAll(folder / "s.ini", "[one]\nPARA_CONTRAST=120\nPARA_GAMMA=90\n[two]\nPARA_GAMMA=80\n");
    EXPECT_EQ(LinesOf(RunIn(folder, {"describe", "-s", "PARA_CONTRAST=110", "--setting",
                                     "s.ini#one", "-s", "PARA_CONTRAST=115"})
                          .out)
                  .at(0),
              "对比度: 115");
    EXPECT_EQ(LinesOf(RunIn(folder, {"describe", "--setting", "s.ini#two"}).out).at(0),
              "Gamma校正: 80");
}

TEST(Settings, WithoutASectionTheFileMustHoldExactlyOne) {
    const TempFolder folder;
    WriteAll(folder / "one.ini", "[only]\nPARA_GAMMA=80\n");
    WriteAll(folder / "two.ini", "[a]\nPARA_GAMMA=80\n[b]\nPARA_GAMMA=70\n");
    WriteAll(folder / "none.ini", "");
    EXPECT_EQ(LinesOf(RunIn(folder, {"describe", "--setting", "one.ini"}).out).at(0),
              "Gamma校正: 80");
    EXPECT_EQ(RunIn(folder, {"describe", "--setting", "two.ini"}).status, 2);
    EXPECT_EQ(RunIn(folder, {"describe", "--setting", "none.ini"}).status, 2);
    EXPECT_EQ(RunIn(folder, {"describe", "--setting", "two.ini#c"}).status, 2);
    EXPECT_EQ(RunIn(folder, {"describe", "--setting", "two.ini#"}).status, 2);
}

TEST(Settings, AFileNameMayHoldTheDivider) {
    const TempFolder folder;
    WriteAll(folder / "a#b.ini", "[s#t]\nPARA_GAMMA=80\n");
    for (const char* place : {"a#b.ini", "a#b.ini#s#t"})
        EXPECT_EQ(LinesOf(RunIn(folder, {"describe", "--setting", place}).out).at(0),
                  "Gamma校正: 80")
            << place;
}

TEST(Settings, NamedOnesComeFromTheStore) {
    const TempFolder folder;
    WriteAll(folder / "store.ini", "[老书]\nPARA_GAMMA=80\n[空]\n");
    EXPECT_EQ(
        LinesOf(RunIn(folder, {"describe", "-n", "老书", "--settings-store", "store.ini"}).out)
            .at(0),
        "Gamma校正: 80");
    for (const char* name : {"新书", "空", ""})
        EXPECT_EQ(RunIn(folder, {"describe", "-n", name, "--settings-store", "store.ini"}).status,
                  2)
            << name;
}

TEST(Settings, TheProgramsOwnStoreStandsBesideItOrInTheConfigFolder) {
    const TempFolder folder;
    std::filesystem::permissions(folder.Path(), std::filesystem::perms(0755));
    std::filesystem::create_directory(folder / "own");
    std::filesystem::copy_file(BuiltProgram(), folder / "own" / "velloran");
    WriteAll(folder / "own" / "VelloranPro_Para.ini", "[x]\nPARA_GAMMA=80\n");
    std::filesystem::create_directories(folder / "config" / "VelloranPro");
    WriteAll(folder / "config" / "VelloranPro" / "VelloranPro_Para.ini", "[x]\nPARA_GAMMA=70\n");
    Surroundings around{.variables = {{"XDG_CONFIG_HOME", (folder / "config").native()}},
                        .program = folder / "own" / "velloran"};
    EXPECT_EQ(LinesOf(RunProgram({"describe", "-n", "x"}, around).out).at(0), "Gamma校正: 80");
    around.asNobody = true;  // who may not write beside the program
    if (geteuid() == 0) {
        EXPECT_EQ(LinesOf(RunProgram({"describe", "-n", "x"}, around).out).at(0), "Gamma校正: 70");
    }
}

TEST(Settings, ValuesOutsideTheirRangeAreTakenWithAWarning) {
    const TempFolder folder;
    WriteAll(folder / "s.ini", "[a]\nPARA_CONTRAST=300\nPARA_CROPPING_P_LEFT=5000\nPARA_DPI=-1\n");
    const Outcome outcome =
        RunIn(folder, {"describe", "--setting", "s.ini", "-s", "PARA_GAMMA=-5"});
    EXPECT_EQ(outcome.status, 0);
    for (const char* text :
         {"PARA_CONTRAST=300", "PARA_CROPPING_P_LEFT=5000", "PARA_DPI=-1", "PARA_GAMMA=-5"})
        EXPECT_NE(outcome.err.find(text), std::string::npos) << text;
    EXPECT_NE(outcome.out.find("对比度: 300"), std::string::npos);
    EXPECT_NE(outcome.out.find("Gamma校正: -5"), std::string::npos);
    EXPECT_NE(outcome.out.find("左=100.0%"), std::string::npos) << outcome.out;
}

TEST(Settings, WhatIsNoParameterAndNoNumberIsWarnedOf) {
    const TempFolder folder;
    WriteAll(folder / "s.ini",
             "[a]\nPARA_GAMMA=abc\nPARA_CONTRST=120\nPARA_DPI=12x\npara_highlight=300\n"
             "PARA_CURVE=\nPARA_BRIGHTNESS=0x10\n[b]\nOTHER=1\n");
    const Outcome outcome = RunIn(folder, {"describe", "--setting", "s.ini#a"});
    EXPECT_EQ(outcome.status, 0);
    const std::vector<std::string> expected = {
        "velloran: 警告: s.ini [a]: PARA_GAMMA=“abc”不是数，读作0",
        "velloran: 警告: s.ini [a]: 没有参数“PARA_CONTRST”，不使用。是不是“PARA_CONTRAST”？",
        "velloran: 警告: s.ini [a]: PARA_DPI=“12x”不是数，读作12",
        "velloran: 警告: s.ini [a]: PARA_HIGHLIGHT=300超出范围100..200",
        "velloran: 警告: s.ini [a]: PARA_CURVE=“”不是数，读作0",
    };
    EXPECT_EQ(LinesOf(outcome.err), expected);
    EXPECT_NE(outcome.out.find("Gamma校正: 0\n"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("亮度: 16\n"), std::string::npos) << outcome.out;
    const Outcome store =
        RunIn(folder, {"describe", "-n", "b", "--settings-store", "s.ini", "--lang", "en"});
    EXPECT_EQ(store.err,
              "velloran: warning: s.ini [b]: there is no parameter \"OTHER\", left out.\n");
}

TEST(Settings, SaveSettingWritesWhatReadsBack) {
    const TempFolder folder;
    WritePage(folder / "a.png");
    WriteAll(folder / "s.ini", "; mine\n[other]\nPARA_GAMMA=70\n");
    EXPECT_EQ(RunIn(folder, {"enhance", "a.png", "b.png", "-s", "PARA_CONTRAST=120",
                             "--save-setting", "s.ini#书 一"})
                  .status,
              0);
    EXPECT_EQ(LinesOf(RunIn(folder, {"describe", "--setting", "s.ini#书 一"}).out).at(0),
              "对比度: 120");
    const std::string text = ReadAll(folder / "s.ini");
    EXPECT_EQ(text.find("; mine\n[other]\nPARA_GAMMA=70\n"), 0U) << text;
}

TEST(Settings, ASettingThatCannotBeWrittenIsExitStatus4) {
    const TempFolder folder;
    WritePage(folder / "a.png");
    const Outcome outcome =
        RunIn(folder, {"enhance", "a.png", "b.png", "--save-setting", "none/s.ini#x"});
    EXPECT_EQ(outcome.status, 4);
    EXPECT_EQ(outcome.err.find("none/s.ini: 文件存盘失败。"), 0U) << outcome.err;
}

TEST(Settings, AFailedPictureWritesNoSetting) {
    const TempFolder folder;
    EXPECT_EQ(RunIn(folder, {"enhance", "gone.png", "b.png", "--save-setting", "s.ini#x"}).status,
              1);
    EXPECT_EQ(folder.AllNames(), std::vector<std::string>{});
}

TEST(Enhance, CtrlCEndsItBetweenTwoStepsWithNothingWritten) {
    const TempFolder folder;
    WritePage(folder / "a.bmp", 3000, 3000, /*color=*/true);
    for (const int number : {SIGINT, SIGTERM}) {
        // As the first step is told; on a busy machine the signal may come behind the last one.
        Surroundings around{.folder = folder.Path(),
                            .onError = [number](pid_t program) { kill(program, number); }};
        Outcome outcome;
        for (int trial = 0; trial < 50 && outcome.status != 128 + number; ++trial) {
            std::filesystem::remove(folder / "b.bmp");
            outcome = RunProgram({"enhance", "a.bmp", "b.bmp", "-v", "-s", "PARA_AUTO_LEVELS=1",
                                  "-s", "PARA_CONTRAST=120"},
                                 around);
        }
        EXPECT_EQ(outcome.status, 128 + number);
        EXPECT_TRUE(outcome.err.ends_with("您选择了中途停止。\n")) << outcome.err;
        EXPECT_EQ(folder.AllNames(), std::vector<std::string>{"a.bmp"});
    }
}

}  // namespace
}  // namespace velloran::test

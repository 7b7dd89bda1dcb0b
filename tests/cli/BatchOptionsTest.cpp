// Each option of `velloran batch`, and the order of what it says.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <nlohmann/json.hpp>

#include "RunProgram.h"
#include "core/DibImage.h"
#include "files/ImageFiles.h"
#include "params/ParaBlock.h"
#include "support/Images.h"
#include "support/TempFolder.h"

namespace velloran::test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

/// A source tree and a place for results.
class Batch : public testing::Test {
 protected:
    void SetUp() override {
        fs::permissions(folder_.Path(), fs::perms(0755));
        fs::create_directories(Source() / "sub");
    }
    fs::path Source() const { return folder_ / "src"; }
    fs::path Target() const { return folder_ / "out"; }

    Outcome Run(std::vector<std::string> options, Surroundings around = {}) const {
        std::vector<std::string> arguments = {"batch", "src", "out", "--log", "log.txt"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        around.folder = folder_.Path();
        return RunProgram(arguments, around);
    }
    /// Names below a folder, files only.
    static std::vector<std::string> FilesIn(const fs::path& folder) {
        std::vector<std::string> names;
        std::error_code missing;
        for (const auto& entry : fs::recursive_directory_iterator(folder, missing))
            if (!entry.is_directory())
                names.push_back(entry.path().lexically_relative(folder).native());
        std::sort(names.begin(), names.end());
        return names;
    }
    using Names = std::vector<std::string>;

    TempFolder folder_;
};

TEST_F(Batch, ConvertsATreeAndEndsWithTheSystemsMessage) {
    WritePage(Source() / "b.bmp");
    WritePage(Source() / "sub" / "c.png", 20, 20, /*color=*/true);
    const Outcome outcome = Run({});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "2个文件需要转换，\n2个文件转换成功。\n");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(FilesIn(Target()), (Names{"b.jpg", "sub/c.jpg"}));
    EXPECT_FALSE(fs::exists(folder_ / "log.txt"));
}

TEST_F(Batch, RunsThePipelineWithTheBlock) {
    CDibImage black = Filled(12, 12, 8, 0);
    const CParaBlock block;
    ASSERT_TRUE(SaveImageFile(Source() / "a.png", black, 90, 96, 2, false, block));
    EXPECT_EQ(Run({"--ext", "png", "-s", "PARA_CONTRAST=50", "-s", "PARA_DPI=123"}).status, 0);
    CDibImage result;
    ASSERT_TRUE(LoadImageFile(Target() / "a.png", result));
    EXPECT_EQ(PixelAt(result, 5, 5), (Rgb{64, 64, 64})) << "half of the way from 128 to black";
    EXPECT_EQ(result.GetXDpi(), 123);
}

TEST_F(Batch, ExtChoosesTheTypeAndOutranksTheBlock) {
    WritePage(Source() / "a.png");
    EXPECT_EQ(Run({"--ext", "bmp", "-s", "PARA_TGT_FILES=3"}).status, 0);
    EXPECT_EQ(FilesIn(Target()), Names{"a.bmp"});
}

TEST_F(Batch, WithoutExtTheBlocksExtensionHolds) {
    WritePage(Source() / "a.jpg");
    EXPECT_EQ(Run({"-s", "PARA_TGT_FILES=3"}).status, 0);
    EXPECT_EQ(FilesIn(Target()), Names{"a.png"});
}

TEST_F(Batch, ExtKeepsTheOtherFieldsOfTheRule) {
    WritePage(Source() / "a.png");
    // 256 grey levels to bmp (id 2 in bits 12 to 15), extension png; --ext auto leaves the rest.
    EXPECT_EQ(Run({"-s", "PARA_TGT_FILES=0x2003", "--ext", "auto"}).status, 0);
    EXPECT_EQ(FilesIn(Target()), Names{"a.bmp"});
}

TEST_F(Batch, SixteenBitColorMakesTheAutomaticExtensionBmp) {
    WritePage(Source() / "a.png", 8, 8, /*color=*/true);
    EXPECT_EQ(Run({"-s", "PARA_COLOR=18"}).status, 0);
    EXPECT_EQ(FilesIn(Target()), Names{"a.bmp"});
    EXPECT_NE(Run({"--dry-run", "-s", "PARA_COLOR=19"}).out.find("out/a.bmp\n"), std::string::npos);
}

TEST_F(Batch, TheMessagesOfTheColorCheckAreUsageErrors) {
    WritePage(Source() / "a.png");
    const Outcome bits = Run({"-s", "PARA_COLOR=19", "--ext", "tif"});
    EXPECT_EQ(bits.status, 2);
    EXPECT_NE(bits.err.find("抱歉，16位色图像只能保存为BMP格式，请重新选择。"), std::string::npos);
    const Outcome reduced = Run({"-s", "PARA_COLOR=7", "--ext", "jp2"});
    EXPECT_EQ(reduced.status, 2);
    EXPECT_NE(reduced.err.find("抱歉，减色后的图像只能保存为PNG格式，请重新选择。"),
              std::string::npos);
    EXPECT_FALSE(fs::exists(Target()));
}

TEST_F(Batch, FilesChoosesTheSourcesByTheirType) {
    WritePage(Source() / "a.png");
    WritePage(Source() / "b.jpg");
    WritePage(Source() / "C.JPG");
    WriteAll(Source() / "notes.txt", "no picture");
    EXPECT_EQ(Run({"--files", "1"}).status, 0);
    EXPECT_EQ(FilesIn(Target()), (Names{"b.jpg", "c.jpg"}));
    EXPECT_EQ(Run({"--files", "5"}).out, "1个文件需要转换，\n1个文件转换成功。\n");
    EXPECT_EQ(Run({}).out, "3个文件需要转换，\n3个文件转换成功。\n");
}

TEST_F(Batch, NoRecurseLeavesSubfoldersOut) {
    WritePage(Source() / "a.png");
    WritePage(Source() / "sub" / "b.png");
    EXPECT_EQ(Run({"--no-recurse"}).status, 0);
    EXPECT_EQ(FilesIn(Target()), Names{"a.jpg"});
    EXPECT_EQ(Run({"-s", "PARA_GO_SUB_DIR=0"}).out, "1个文件需要转换，\n1个文件转换成功。\n");
}

TEST_F(Batch, SkipColourCopiesColorPagesUnderTheirOwnExtension) {
    WritePage(Source() / "gray.png");
    WritePage(Source() / "colour.png", 20, 20, /*color=*/true);
    const Outcome outcome = Run({"--skip-colour", "--ext", "tif", "-s", "PARA_CONTRAST=50"});
    EXPECT_EQ(outcome.out, "2个文件需要转换，\n2个文件转换成功。\n");
    EXPECT_EQ(FilesIn(Target()), (Names{"colour.png", "gray.tif"}));
    EXPECT_EQ(ReadAll(Target() / "colour.png"), ReadAll(Source() / "colour.png"));
}

TEST_F(Batch, SkipColourInTheSameFolderLeavesColorPagesAndCountsThem) {
    WritePage(Source() / "gray.png");
    WritePage(Source() / "colour.png", 20, 20, /*color=*/true);
    const std::string before = ReadAll(Source() / "colour.png");
    const Outcome outcome = RunProgram({"batch", "src", "src", "--yes", "--skip-colour", "--ext",
                                        "png", "-s", "PARA_CONTRAST=50", "--log", "log.txt"},
                                       {.folder = folder_.Path()});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "2个文件需要转换，\n2个文件转换成功。\n");
    EXPECT_EQ(ReadAll(Source() / "colour.png"), before);
    EXPECT_EQ(FilesIn(Source()), (Names{"colour.png", "gray.png"}));
}

TEST_F(Batch, KeepTimeCopiesBothTimesToConvertedAndCopiedFiles) {
    WritePage(Source() / "gray.png");
    WritePage(Source() / "colour.png", 20, 20, /*color=*/true);
    const timespec times[2] = {{1'000'000'000, 123}, {1'100'000'000, 456}};
    for (const char* name : {"gray.png", "colour.png"})
        ASSERT_EQ(utimensat(AT_FDCWD, (Source() / name).c_str(), times, 0), 0);
    EXPECT_EQ(Run({"--keep-time", "--skip-colour", "--ext", "png"}).status, 0);
    for (const char* name : {"gray.png", "colour.png"}) {
        struct stat status {};
        ASSERT_EQ(stat((Target() / name).c_str(), &status), 0);
        EXPECT_EQ(status.st_atim.tv_sec, 1'000'000'000) << name;
        EXPECT_EQ(status.st_mtim.tv_sec, 1'100'000'000) << name;
        EXPECT_EQ(status.st_mtim.tv_nsec, 456) << name;
    }
    EXPECT_EQ(Run({"--ext", "png"}).status, 0);
    struct stat status {};
    ASSERT_EQ(stat((Target() / "gray.png").c_str(), &status), 0);
    EXPECT_GT(status.st_mtim.tv_sec, 1'100'000'000);
}

TEST_F(Batch, ListConvertsOnlyItsPathsOfAnyType) {
    WritePage(Source() / "a.png");
    WritePage(Source() / "b.png");
    WritePage(Source() / "sub" / "c.png");
    WritePage(Source() / "page.png");
    fs::rename(Source() / "page.png", Source() / "no extension");
    WriteAll(folder_ / "list", "src/b.png\r\n\nsrc/sub/c.png\nsrc/no extension\nsrc/b.png");
    const Outcome outcome = Run({"--list", "list", "--ext", "png"});
    EXPECT_EQ(outcome.out, "3个文件需要转换，\n3个文件转换成功。\n");
    EXPECT_EQ(FilesIn(Target()), (Names{"b.png", "no extension.png", "sub/c.png"}));
}

TEST_F(Batch, ListComesFromStandardInputAndWithNulTakesLineFeeds) {
    const std::string name = "a\nb.png";
    WritePage(Source() / "a.png");
    fs::rename(Source() / "a.png", Source() / name);
    WritePage(Source() / "c.png");
    Surroundings around;
    around.input = std::string("src/a\nb.png\0src/c.png\0", 22);
    EXPECT_EQ(Run({"--list", "-", "-0", "--ext", "png"}, around).status, 0);
    EXPECT_EQ(FilesIn(Target()), (Names{name, "c.png"}));
}

TEST_F(Batch, ListFilesFromElsewhereGoIntoTheTargetItself) {
    fs::create_directory(folder_ / "other");
    WritePage(folder_ / "other" / "x.png");
    WriteAll(folder_ / "list", "other/x.png\n");
    EXPECT_EQ(Run({"--list", "list", "--ext", "png"}).status, 0);
    EXPECT_EQ(FilesIn(Target()), Names{"x.png"});
}

TEST_F(Batch, MissingFilesOfAListFailAndTheOthersGoOn) {
    WritePage(Source() / "a.png");
    WriteAll(folder_ / "list", "src/gone.png\nsrc\nsrc/a.png\n");
    const Outcome outcome = Run({"--list", "list"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err.substr(0, outcome.err.find("velloran:")),
              "src/gone.png: 读取失败 (没有这个文件或文件夹)\nsrc: 读取失败 (是文件夹)\n");
    EXPECT_EQ(outcome.out, "3个文件需要转换，\n1个文件转换成功。\n");
}

TEST_F(Batch, DryRunPrintsSourceAndTargetAndWritesNothing) {
    WritePage(Source() / "B.PNG");
    WritePage(Source() / "sub" / "c2.png");
    WritePage(Source() / "sub" / "c10.png");
    const Outcome automatic = Run({"--dry-run"});
    EXPECT_EQ(automatic.status, 0);
    EXPECT_EQ(automatic.out,
              "src/B.PNG\tout/b.*\nsrc/sub/c2.png\tout/sub/c2.*\nsrc/sub/c10.png\tout/sub/c10.*\n");
    EXPECT_EQ(LinesOf(Run({"--dry-run", "--ext", "tif"}).out).at(0), "src/B.PNG\tout/b.tif");
    EXPECT_FALSE(fs::exists(Target()));
    EXPECT_EQ(RunProgram({"batch", "src", "src", "--dry-run"}, {.folder = folder_.Path()}).status,
              0);
}

TEST_F(Batch, JsonEndsWithOneObjectInsteadOfTheMessage) {
    WritePage(Source() / "a.bmp");
    WriteAll(Source() / "b.png", "nonsense");
    const Outcome outcome = Run({"--json", "--ext", "bmp"});
    EXPECT_EQ(outcome.status, 1);
    const Json report = Json::parse(outcome.out);
    Names keys;
    for (const auto& [key, value] : report.items())
        keys.push_back(key);
    EXPECT_EQ(keys, (Names{"files", "converted", "failed", "damaged", "otherTypes", "seconds",
                           "cpuSeconds", "bytesIn", "bytesOut", "peakMemory"}));
    EXPECT_EQ(report["files"], 2);
    EXPECT_EQ(report["converted"], 1);
    EXPECT_EQ(report["failed"].dump(), R"([{"path":"src/b.png","message":"读取失败"}])");
    EXPECT_EQ(report["bytesIn"], fs::file_size(Source() / "a.bmp"));
    EXPECT_EQ(report["bytesOut"], fs::file_size(Target() / "a.bmp"));
    EXPECT_GT(report["seconds"], 0.0);
    EXPECT_GT(report["cpuSeconds"], 0.0);
    EXPECT_GT(report["peakMemory"], 1'000'000);
}

TEST_F(Batch, NoFilesAtAllIsExitStatus1) {
    const std::string message = "src: 抱歉，在源文件夹下没有可供转换的文件。\n";
    const Outcome empty = Run({});
    EXPECT_EQ(empty.status, 1);
    EXPECT_EQ(empty.err, message);
    EXPECT_EQ(empty.out, "");
    EXPECT_FALSE(fs::exists(Target()));
    EXPECT_EQ(Run({"--dry-run"}).status, 1);
    const Outcome json = Run({"--json"});
    EXPECT_EQ(json.status, 1);
    EXPECT_EQ(Json::parse(json.out)["files"], 0);
    fs::remove_all(Source());
    const Outcome missing = Run({});
    EXPECT_EQ(missing.status, 1);
    EXPECT_NE(missing.err.find(message), std::string::npos) << missing.err;
}

TEST_F(Batch, SameFolderNeedsAYes) {
    WritePage(Source() / "a.png");
    const std::string before = ReadAll(Source() / "a.png");
    // By another spelling, by a link, and by capitals alone.
    fs::create_directory_symlink(Source(), folder_ / "link");
    for (const char* target : {"src", "./src/", "src/sub/..", "link", "SRC"}) {
        const Outcome outcome = RunProgram({"batch", "src", target}, {.folder = folder_.Path()});
        EXPECT_EQ(outcome.status, 2) << target;
        EXPECT_NE(outcome.err.find("源文件夹与目标文件夹相同"), std::string::npos) << target;
        EXPECT_EQ(ReadAll(Source() / "a.png"), before);
    }
    EXPECT_EQ(RunProgram({"batch", "src", "src", "--yes", "--ext", "png", "-s", "PARA_CONTRAST=50"},
                         {.folder = folder_.Path()})
                  .status,
              0);
    EXPECT_NE(ReadAll(Source() / "a.png"), before);
}

TEST_F(Batch, OnATerminalTheSameFolderIsAsked) {
    if (!HasTerminals())
        GTEST_SKIP() << "no terminals here";
    WritePage(Source() / "a.bmp");
    const std::vector<std::string> arguments = {"batch", "src", "src", "--ext", "png"};
    const Outcome no = RunProgram(arguments, {.folder = folder_.Path(), .terminalAnswer = "n\n"});
    EXPECT_EQ(no.status, 0);
    EXPECT_NE(
        no.terminal.find("源文件夹与目标文件夹相同，源文件将被转换后的文件所覆盖。要继续吗？"),
        std::string::npos);
    EXPECT_EQ(FilesIn(Source()), Names{"a.bmp"});
    const Outcome yes = RunProgram(arguments, {.folder = folder_.Path(), .terminalAnswer = "y\n"});
    EXPECT_EQ(yes.status, 0);
    EXPECT_EQ(FilesIn(Source()), (Names{"a.bmp", "a.png"}));
}

TEST_F(Batch, ProgressShowsDoneTotalRateAndTimeLeftWithoutATerminal) {
    WritePage(Source() / "a.png");
    WritePage(Source() / "b.png");
    const Outcome outcome = Run({"--progress"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.err.find("2/2"), std::string::npos) << outcome.err;
    EXPECT_NE(outcome.err.find("/秒 剩余0:00 src/b.png"), std::string::npos) << outcome.err;
    EXPECT_EQ(outcome.err.find('\x1B'), std::string::npos);
    EXPECT_EQ(outcome.out, "2个文件需要转换，\n2个文件转换成功。\n");
}

TEST_F(Batch, NoColorKeepsColorsFromATerminal) {
    if (!HasTerminals())
        GTEST_SKIP() << "no terminals here";
    WriteAll(Source() / "a.png", "nonsense");
    const std::vector<std::string> arguments = {"batch", "src", "out", "--log", "log"};
    Surroundings around{
        .folder = folder_.Path(), .variables = {{"TERM", "xterm"}}, .terminalAnswer = "\n"};
    EXPECT_NE(RunProgram(arguments, around).terminal.find("\x1B[31m"), std::string::npos);
    around.variables.insert({"NO_COLOR", "1"});
    EXPECT_EQ(RunProgram(arguments, around).terminal.find("\x1B[31m"), std::string::npos);
}

TEST_F(Batch, EndsOnTerminalsWithTheMessageAlone) {
    if (!HasTerminals())
        GTEST_SKIP() << "no terminals here";
    WritePage(Source() / "a.png");
    const Outcome outcome = RunProgram({"batch", "src", "out", "--log", "log"},
                                       {.folder = folder_.Path(), .terminalAnswer = "\n"});
    EXPECT_TRUE(outcome.terminal.ends_with("1个文件转换成功。\r\n")) << outcome.terminal;
}

}  // namespace
}  // namespace velloran::test

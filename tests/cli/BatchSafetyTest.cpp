// What a batch run never does: lose a source, share a target, leave half a file, hang.

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <random>

#include "RunProgram.h"
#include "core/DibImage.h"
#include "files/ImageFiles.h"
#include "params/ParaBlock.h"
#include "support/Images.h"
#include "support/Sanitized.h"
#include "support/TempFolder.h"
#include "text/Text.h"

namespace velloran::test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;
using Names = std::vector<std::string>;

class BatchSafety : public testing::Test {
 protected:
    void SetUp() override {
        fs::permissions(folder_.Path(), fs::perms(0755));
        fs::create_directories(Source());
    }
    fs::path Source() const { return folder_ / "src"; }
    fs::path Target() const { return folder_ / "out"; }

    Outcome Run(std::vector<std::string> arguments, Surroundings around = {}) const {
        arguments.insert(arguments.begin(), "batch");
        arguments.insert(arguments.end(), {"--log", "log.txt"});
        around.folder = folder_.Path();
        return RunProgram(arguments, around);
    }
    static Names FilesIn(const fs::path& folder) {
        Names names;
        std::error_code missing;
        for (const auto& entry : fs::recursive_directory_iterator(folder, missing))
            if (!entry.is_directory())
                names.push_back(entry.path().lexically_relative(folder).native());
        std::sort(names.begin(), names.end());
        return names;
    }
    void WriteFlat(const fs::path& file, int gray) const {
        CDibImage page = Filled(16, 16, 8, static_cast<std::uint8_t>(gray));
        const CParaBlock block;
        ASSERT_TRUE(SaveImageFile(file, page, 90, 96, 2, false, block));
    }
    static int GrayOf(const fs::path& file) {
        CDibImage page;
        EXPECT_TRUE(LoadImageFile(file, page)) << file;
        return page.IsValid() ? PixelAt(page, 3, 3).red : -1;
    }
    /// Lines of the run log as UTF-8; empty when the file is no such log.
    static std::string LogText(const fs::path& log) {
        const std::string bytes = ReadAll(log);
        if (bytes.substr(0, 2) != "\xFF\xFE")
            return {};
        std::u16string text;
        for (std::size_t i = 2; i + 1 < bytes.size(); i += 2)
            text += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                          static_cast<unsigned char>(bytes[i + 1]) << 8);
        return ToUtf8(text);
    }

    TempFolder folder_;
};

TEST_F(BatchSafety, TwoSourcesNeverShareATarget) {
    WriteFlat(Source() / "A.png", 10);
    WriteFlat(Source() / "a.png", 20);
    WriteFlat(Source() / "b.png", 30);
    WriteFlat(Source() / "b.tif", 40);
    WriteFlat(Source() / "b.bmp", 50);
    const Outcome outcome = Run({"src", "out", "--ext", "png"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(FilesIn(Target()), (Names{"a.png", "a~2.png", "b.png", "b~2.png", "b~3.png"}));
    // Walk order: A before a, then bmp, png, tif.
    EXPECT_EQ(GrayOf(Target() / "a.png"), 10);
    EXPECT_EQ(GrayOf(Target() / "a~2.png"), 20);
    EXPECT_EQ(GrayOf(Target() / "b.png"), 50);
    EXPECT_EQ(GrayOf(Target() / "b~2.png"), 30);
    EXPECT_EQ(GrayOf(Target() / "b~3.png"), 40);
    const Names lines = LinesOf(outcome.err);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_NE(lines[0].find("src/a.png"), std::string::npos);
    EXPECT_NE(lines[0].find("src/A.png"), std::string::npos);
    EXPECT_NE(lines[1].find("src/b.png"), std::string::npos);
    EXPECT_NE(lines[1].find("src/b.bmp"), std::string::npos);
    EXPECT_NE(lines[2].find("src/b.tif"), std::string::npos);
    EXPECT_NE(lines[2].find("src/b.bmp"), std::string::npos);
}

TEST_F(BatchSafety, WithTheAutomaticExtensionAnyTwoOfOneStemAreKeptApart) {
    WriteFlat(Source() / "b.png", 30);
    WriteFlat(Source() / "b.tif", 40);
    WriteFlat(Source() / "b~2.png", 60);
    EXPECT_EQ(Run({"src", "out"}).status, 0);
    EXPECT_EQ(FilesIn(Target()), (Names{"b.jpg", "b~2.jpg", "b~2~2.jpg"}));
}

TEST_F(BatchSafety, OnlyTheFileNameIsLowerCased) {
    fs::create_directories(Source() / "Chapter ONE");
    WriteFlat(Source() / "Chapter ONE" / "PAGE Ä.PNG", 10);
    EXPECT_EQ(Run({"src", "out", "--ext", "png"}).status, 0);
    EXPECT_EQ(FilesIn(Target()), Names{"Chapter ONE/page ä.png"});
}

TEST_F(BatchSafety, TargetInsideSourceIsNotWalked) {
    WriteFlat(Source() / "a.png", 10);
    for (const char* target : {"src/out", "./src/../src/out/"}) {
        const Outcome outcome = Run({"src", target, "--ext", "png"});
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.out, "1个文件需要转换，\n1个文件转换成功。\n") << target;
    }
    EXPECT_EQ(FilesIn(Source()), (Names{"a.png", "out/a.png"}));
}

TEST_F(BatchSafety, SourceInsideTargetNeverLosesASource) {
    // out/x.png would be the target of out/src/x.png, and out/src/src/x.png has out/src/x.png.
    fs::create_directories(Target() / "src" / "src");
    WriteFlat(Target() / "src" / "x.png", 10);
    WriteFlat(Target() / "src" / "src" / "x.png", 20);
    EXPECT_EQ(Run({"out/src", "out", "--ext", "png"}).status, 0);
    EXPECT_EQ(GrayOf(Target() / "src" / "x.png"), 10) << "a source was replaced";
    EXPECT_EQ(GrayOf(Target() / "src" / "src" / "x.png"), 20);
    EXPECT_EQ(GrayOf(Target() / "x.png"), 10);
    EXPECT_EQ(GrayOf(Target() / "src" / "x~2.png"), 20);
}

TEST_F(BatchSafety, SameFolderReplacesOnlyASourcesOwnFile) {
    WriteFlat(Source() / "a.bmp", 10);
    WriteFlat(Source() / "a.png", 20);
    WriteFlat(Source() / "c.bmp", 30);
    WriteAll(Source() / "broken.png", "no picture");
    const Outcome outcome = Run({"src", "src", "--yes", "--ext", "png", "-s", "PARA_CONTRAST=50",
                                 "--jobs", "1"});  // 128 - (128 - gray) / 2
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(GrayOf(Source() / "a.bmp"), 10) << "the source stays";
    EXPECT_EQ(GrayOf(Source() / "a.png"), 74);
    EXPECT_EQ(GrayOf(Source() / "a~2.png"), 69);
    EXPECT_EQ(GrayOf(Source() / "c.bmp"), 30);
    EXPECT_EQ(GrayOf(Source() / "c.png"), 79);
    EXPECT_EQ(ReadAll(Source() / "broken.png"), "no picture");
}

TEST_F(BatchSafety, SameFolderWithTheAutomaticExtensionEvadesOtherSources) {
    // a.bmp becomes a jpg, which is the name of another source.
    WriteFlat(Source() / "a.bmp", 10);
    WriteFlat(Source() / "a.jpg", 200);
    const std::string before = ReadAll(Source() / "a.jpg");
    const Outcome outcome = Run({"src", "src", "--yes"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(ReadAll(Source() / "a.jpg"), before);
    const Names names = FilesIn(Source());
    EXPECT_EQ(names.size(), 4U);
    EXPECT_TRUE(std::find(names.begin(), names.end(), "a~3.jpg") != names.end()) << names.back();
    EXPECT_NEAR(GrayOf(Source() / "a~2.jpg"), 200, 3);
    EXPECT_NEAR(GrayOf(Source() / "a~3.jpg"), 10, 3);
    EXPECT_NE(outcome.err.find("a~3.jpg"), std::string::npos) << outcome.err;
}

TEST_F(BatchSafety, AFullDiskInTheSameFolderHarmsNoSource) {
    WritePage(Source() / "a.png", 200, 200);
    WriteFlat(Source() / "b.png", 7);
    const std::string before = ReadAll(Source() / "a.png");
    const Outcome outcome = Run({"src", "src", "--yes", "--ext", "png"}, {.fileSizeLimit = 8192});
    EXPECT_EQ(outcome.status, 4);
    EXPECT_EQ(ReadAll(Source() / "a.png"), before);
    EXPECT_EQ(FilesIn(Source()), (Names{"a.png", "b.png"})) << "no temporary file stays";
}

TEST_F(BatchSafety, AFullDiskIsExitStatus4NamesTheFileAndTheOthersGoOn) {
    WritePage(Source() / "a.png", 200, 200);
    WriteFlat(Source() / "b.png", 7);
    WriteAll(Source() / "c.png", "nonsense");
    const Outcome outcome = Run({"src", "out", "--ext", "png"}, {.fileSizeLimit = 8192});
    EXPECT_EQ(outcome.status, 4) << "it wins over 1";
    EXPECT_EQ(LinesOf(outcome.err).at(0), "out/a.png: 写入失败 (空间不足，源文件: src/a.png)");
    EXPECT_EQ(LinesOf(outcome.err).at(1), "src/c.png: 读取失败 (文件损坏)");
    EXPECT_EQ(FilesIn(Target()), Names{"b.png"});
    EXPECT_EQ(outcome.out, "3个文件需要转换，\n1个文件转换成功。\n");
    EXPECT_EQ(LogText(folder_ / "log.txt"), "out/a.png\t写入失败\r\nsrc/c.png\t读取失败\r\n");
}

TEST_F(BatchSafety, ATargetWithoutPermissionIsExitStatus4) {
    WriteFlat(Source() / "a.png", 7);
    fs::create_directory(Target());
    for (const char* target : {"out", "out/deeper", "new"}) {
        const Outcome outcome = Run({"src", target, "--ext", "png"}, {.asNobody = true});
        EXPECT_EQ(outcome.status, 4) << target;
        EXPECT_NE(outcome.err.find(std::string(target) + ": 写入失败"), std::string::npos)
            << outcome.err;
    }
}

TEST_F(BatchSafety, ATargetThatIsAFileIsExitStatus4) {
    WriteFlat(Source() / "a.png", 7);
    WriteAll(Target(), "a file");
    EXPECT_EQ(Run({"src", "out"}).status, 4);
    EXPECT_EQ(ReadAll(Target()), "a file");
}

TEST_F(BatchSafety, SourcesThatCannotBeReadAreNamedInTheOrderOfTheWalk) {
    WriteAll(Source() / "a.png", "");
    fs::create_symlink("nowhere", Source() / "b.png");
    WriteFlat(Source() / "c.png", 7);
    WriteFlat(Source() / "d.png", 7);
    fs::permissions(Source() / "d.png", fs::perms::none);
    fs::create_directories(Source() / "e.png");
    WriteFlat(Source() / "f.png", 7);
    fs::resize_file(Source() / "f.png", 20);
    fs::permissions(folder_.Path(), fs::perms::all);
    const Outcome outcome = Run({"src", "out", "--jobs", "4"}, {.asNobody = true});
    EXPECT_EQ(outcome.status, 1);
    const Names lines = LinesOf(outcome.err);
    ASSERT_GE(lines.size(), 4U);
    EXPECT_EQ(lines[0], "src/a.png: 读取失败 (空文件)");
    EXPECT_EQ(lines[1], "src/b.png: 读取失败 (没有这个文件或文件夹)");
    EXPECT_EQ(lines[2], "src/d.png: 读取失败 (没有权限)");
    EXPECT_EQ(lines[3], "src/f.png: 读取失败 (文件损坏)");
    EXPECT_EQ(outcome.out, "5个文件需要转换，\n1个文件转换成功。\n");
}

TEST_F(BatchSafety, AFolderThatCannotBeListedIsExitStatus1) {
    WriteFlat(Source() / "a.png", 7);
    fs::create_directory(Source() / "closed");
    fs::permissions(Source() / "closed", fs::perms::none);
    fs::permissions(folder_.Path(), fs::perms::all);
    const Outcome outcome = Run({"src", "out"}, {.asNobody = true});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(LinesOf(outcome.err).at(0), "src/closed: 打开失败 (没有权限)");
    EXPECT_EQ(FilesIn(Target()), Names{"a.jpg"});
}

TEST_F(BatchSafety, LoopsOfLinksEnd) {
    WriteFlat(Source() / "a.png", 7);
    fs::create_directory(Source() / "sub");
    fs::create_directory_symlink("..", Source() / "sub" / "up");
    fs::create_directory_symlink(".", Source() / "self");
    EXPECT_EQ(Run({"src", "out"}).out, "1个文件需要转换，\n1个文件转换成功。\n");
}

TEST_F(BatchSafety, OddNamesAreConvertedLikeAnyOther) {
    const Names names = {"with space.png",  "quo'te\".png", "line\nfeed.png", "漫画.png",
                         "bad\xFF\xC3.png", "-s.png",       "[list].png",     "*.png"};
    Names expected;
    for (const std::string& name : names) {
        WriteFlat(Source() / "page.png", 7);
        fs::rename(Source() / "page.png", Source() / name);
        expected.push_back(name);
    }
    std::sort(expected.begin(), expected.end());
    const Outcome outcome = Run({"src", "out", "--ext", "png", "--json"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(FilesIn(Target()), expected);
    WriteAll(Source() / "bad\xFF\xC3.png", "nonsense");
    const Outcome failed = Run({"src", "out", "--ext", "png", "--json"});
    EXPECT_EQ(Json::parse(failed.out)["failed"][0]["path"], "src/bad\uFFFD\uFFFD.png");
    EXPECT_NE(LogText(folder_ / "log.txt").find("src/bad\uFFFD\uFFFD.png\t读取失败"),
              std::string::npos);
}

TEST_F(BatchSafety, FilesWrittenAreTheSameForAnyNumberOfJobs) {
    for (int i = 0; i < 12; ++i)
        WritePage(Source() / (std::to_string(i) + ".png"), 120 + i, 90, i % 3 == 0, i + 1);
    const std::vector<std::string> parameters = {"-s", "PARA_CONTRAST=130", "-s",
                                                 "PARA_AUTO_LEVELS=1"};
    for (const char* jobs : {"1", "2", "5", "64"}) {
        std::vector<std::string> arguments = {"src", std::string("out") + jobs, "--jobs", jobs};
        arguments.insert(arguments.end(), parameters.begin(), parameters.end());
        EXPECT_EQ(Run(arguments).status, 0);
    }
    EXPECT_EQ(Run({"src", "outcpu", "-s", "PARA_CONTRAST=130", "-s", "PARA_AUTO_LEVELS=1"},
                  {.variables = {{"OMP_NUM_THREADS", "1"}}, .cpus = 1})
                  .status,
              0);
    const Names names = FilesIn(folder_ / "out1");
    EXPECT_EQ(names.size(), 12U);
    for (const char* other : {"out2", "out5", "out64", "outcpu"})
        for (const std::string& name : names)
            EXPECT_EQ(ReadAll(folder_ / other / name), ReadAll(folder_ / "out1" / name))
                << other << "/" << name;
}

TEST_F(BatchSafety, FailuresComeInTheOrderOfTheWalkForAnyNumberOfJobs) {
    std::string expected;
    for (int i = 1; i <= 30; ++i) {
        const std::string name = std::string("p").append(std::to_string(i)).append(".png");
        if (i % 2 == 0) {
            WritePage(Source() / name, 200, 200);
            continue;
        }
        WriteAll(Source() / name, "nonsense");
        expected.append("src/").append(name).append(": 读取失败 (文件损坏)\n");
    }
    const Outcome outcome = Run({"src", "out", "--jobs", "8"});
    EXPECT_EQ(outcome.err.substr(0, expected.size()), expected);
}

TEST_F(BatchSafety, MemoryDoesNotGrowWithTheNumberOfFiles) {
    if (test::kSanitized)
        GTEST_SKIP() << "the sanitizer keeps freed memory";
    constexpr int kSide = 1500;
    WritePage(Source() / "0.bmp", kSide, kSide, /*color=*/true);
    const auto peak = [&] {
        const Outcome outcome =
            Run({"src", "out", "--ext", "bmp", "--jobs", "1", "-s", "PARA_CONTRAST=120", "--json"});
        EXPECT_EQ(outcome.status, 0);
        return Json::parse(outcome.out)["peakMemory"].get<std::int64_t>();
    };
    const std::int64_t one = peak();
    for (int i = 1; i < 12; ++i)
        fs::create_hard_link(Source() / "0.bmp", Source() / (std::to_string(i) + ".bmp"));
    const std::int64_t twelve = peak();
    constexpr std::int64_t kPage = std::int64_t{kSide} * kSide * 3;
    EXPECT_LT(twelve, one + kPage / 2);
    EXPECT_LE(twelve, 3 * kPage + 60'000'000);
}

TEST_F(BatchSafety, TheRunLogIsExactAndOnlyThereAfterAFailure) {
    WriteAll(Source() / "a.png", "nonsense");
    EXPECT_EQ(Run({"src", "out"}).status, 1);
    EXPECT_EQ(ReadAll(folder_ / "log.txt").substr(0, 8), std::string("\xFF\xFEs\0r\0c\0", 8));
    EXPECT_EQ(LogText(folder_ / "log.txt"), "src/a.png\t读取失败\r\n");
    WriteFlat(Source() / "a.png", 7);
    EXPECT_EQ(Run({"src", "out"}).status, 0);
    EXPECT_FALSE(fs::exists(folder_ / "log.txt")) << "the run before left it";
}

TEST_F(BatchSafety, TheRunLogStandsBesideTheProgramOrInTheStateFolder) {
    WriteAll(Source() / "a.png", "nonsense");
    fs::create_directory(folder_ / "own");
    fs::create_directory(folder_ / "state");
    fs::permissions(folder_ / "state", fs::perms::all);
    fs::copy_file(BuiltProgram(), folder_ / "own" / "velloran");
    Surroundings around{.folder = folder_.Path(),
                        .variables = {{"XDG_STATE_HOME", (folder_ / "state").native()}},
                        .program = folder_ / "own" / "velloran"};
    EXPECT_EQ(RunProgram({"batch", "src", "out"}, around).status, 1);
    EXPECT_EQ(LogText(folder_ / "own" / "VelloranPro_log.txt"), "src/a.png\t读取失败\r\n");
    fs::remove(folder_ / "own" / "VelloranPro_log.txt");
    // An installed program keeps its folder clean, whoever runs it.
    fs::create_directory(folder_ / "bin");
    fs::copy_file(BuiltProgram(), folder_ / "bin" / "velloran");
    Surroundings installed = around;
    installed.program = folder_ / "bin" / "velloran";
    EXPECT_EQ(RunProgram({"batch", "src", "out"}, installed).status, 1);
    EXPECT_EQ(FilesIn(folder_ / "bin"), Names{"velloran"});
    const fs::path log = folder_ / "state" / "VelloranPro" / "VelloranPro_log.txt";
    EXPECT_EQ(LogText(log), "src/a.png\t读取失败\r\n");
    fs::remove_all(log.parent_path());
    around.asNobody = true;
    if (geteuid() == 0) {
        EXPECT_EQ(RunProgram({"batch", "src", "out"}, around).status, 1);
        EXPECT_EQ(FilesIn(folder_ / "own"), Names{"velloran"});
        EXPECT_EQ(LogText(folder_ / "state" / "VelloranPro" / "VelloranPro_log.txt"),
                  "src/a.png\t读取失败\r\n");
    }
}

TEST_F(BatchSafety, ALogThatCannotBeWrittenIsAWarning) {
    WriteAll(Source() / "a.png", "nonsense");
    const Outcome outcome =
        RunProgram({"batch", "src", "out", "--log", "none/log.txt"}, {.folder = folder_.Path()});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("警告: "), std::string::npos);
}

/// Forty pages that take a while together.
class BatchInterruptedSlow : public BatchSafety {
 protected:
    void SetUp() override {
        BatchSafety::SetUp();
        WritePage(Source() / "00.bmp", 500, 500, /*color=*/true);
        for (int i = 1; i < kPages; ++i)
            fs::copy_file(Source() / "00.bmp", Source() / fmt::format("{:02}.bmp", i));
        EXPECT_EQ(Run({"src", "whole", "--ext", "png", "-s", "PARA_CONTRAST=120"}).status, 0);
        expected_ = ReadAll(folder_ / "whole" / "00.png");
    }
    pid_t Start() const {
        return StartProgram({"batch", Source().native(), Target().native(), "--ext", "png", "-s",
                             "PARA_CONTRAST=120", "--log", (folder_ / "log.txt").native()});
    }
    /// Every file under a target name is whole; how many there are.
    int CountWhole(bool temporaryAllowed) const {
        int count = 0;
        for (const std::string& name : FilesIn(Target())) {
            if (temporaryAllowed && name.front() == '.')
                continue;
            EXPECT_TRUE(name.ends_with(".png")) << name;
            EXPECT_TRUE(ReadAll(Target() / name) == expected_) << name << " is not whole";
            ++count;
        }
        return count;
    }
    static constexpr int kPages = 40;
    std::string expected_;
};

TEST_F(BatchInterruptedSlow, KilledTwentyTimesItLeavesNoPartialFileAndTheNextRunCompletes) {
    std::minstd_rand random(7);
    for (int round = 0; round < 20; ++round) {
        const pid_t program = Start();
        usleep(static_cast<useconds_t>(1000 + random() % 400'000));
        kill(program, SIGKILL);
        WaitFor(program);
        CountWhole(/*temporaryAllowed=*/true);
    }
    EXPECT_EQ(Run({"src", "out", "--ext", "png", "-s", "PARA_CONTRAST=120"}).status, 0);
    EXPECT_EQ(CountWhole(/*temporaryAllowed=*/true), kPages);
}

TEST_F(BatchInterruptedSlow, CtrlCAndSigtermEndItWithEverythingWholeAndNoTemporaryFile) {
    for (const int number : {SIGINT, SIGTERM}) {
        int status = 0, whole = 0;
        for (int wait = 300'000; wait > 5000 && status != 128 + number; wait = wait * 2 / 3) {
            fs::remove_all(Target());
            const pid_t program = Start();
            usleep(static_cast<useconds_t>(wait));
            kill(program, number);
            status = WaitFor(program);
            whole = CountWhole(/*temporaryAllowed=*/false);
        }
        EXPECT_EQ(status, 128 + number);
        EXPECT_LT(whole, kPages);
    }
}

TEST_F(BatchInterruptedSlow, AStoppedRunShowsTheCountsSoFarAndNoQuestion) {
    const std::string command =
        fmt::format("'{}' batch '{}' '{}' --ext png --jobs 1 --log '{}' > '{}' & child=$!; sleep ",
                    BuiltProgram().native(), Source().native(), Target().native(),
                    (folder_ / "log.txt").native(), (folder_ / "said").native());
    std::string said;
    for (const char* wait : {"0.3", "0.2", "0.1", "0.05", "0.02"}) {
        fs::remove_all(Target());
        // A shell ignores SIGINT for what it runs behind "&", SIGTERM not.
        const std::string script = command + wait + "; kill -TERM $child; wait $child";
        if (WEXITSTATUS(std::system(script.c_str())) == 143)
            said = ReadAll(folder_ / "said");
        if (!said.empty())
            break;
    }
    EXPECT_EQ(said, fmt::format("40个文件需要转换，\n{}个文件转换成功。\n您选择了中途停止。\n",
                                FilesIn(Target()).size()));
}

}  // namespace
}  // namespace velloran::test

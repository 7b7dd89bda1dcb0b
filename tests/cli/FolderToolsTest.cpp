// settings, stats, set-dpi, rename and compare, end to end.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <map>
#include <nlohmann/json.hpp>
#include <random>

#include "RunProgram.h"
#include "support/TempFolder.h"

namespace velloran::test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

class FolderTools : public testing::Test {
 protected:
    void SetUp() override { fs::create_directories(folder_ / "src"); }
    Outcome Run(std::vector<std::string> words, Surroundings around = {}) const {
        around.folder = folder_.Path();
        return RunProgram(words, around);
    }
    /// With the log in the folder of the test.
    Outcome RunLogged(std::vector<std::string> words, Surroundings around = {}) const {
        words.insert(words.end(), {"--log", "log.txt"});
        return Run(std::move(words), std::move(around));
    }
    void Write(const std::string& name, int width = 20, unsigned seed = 1) const {
        WritePage(folder_ / "src" / name, width, 20, /*color=*/false, seed);
    }
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder_ / "src"))
            if (entry.path().filename().native().front() != '.')
                names.push_back(entry.path().filename().native());
        std::sort(names.begin(), names.end());
        return names;
    }

    TempFolder folder_;
};

using NameList = std::vector<std::string>;

TEST_F(FolderTools, SettingsAreSavedListedShownAndDeleted) {
    const NameList store = {"--settings-store", "store.ini"};
    const auto run = [&](NameList words, Surroundings around = {}) {
        words.insert(words.end(), store.begin(), store.end());
        return Run(words, around);
    };
    EXPECT_EQ(run({"settings", "list"}).out, "");
    EXPECT_EQ(run({"settings", "save", "one", "-s", "PARA_CONTRAST=120", "-s", "PARA_CRT_TYPE=2",
                   "-s", "PARA_ROATE=1"})
                  .status,
              0);
    EXPECT_EQ(run({"settings", "list"}).out, "one\n");
    EXPECT_NE(run({"settings", "show", "one"}).out.find("对比度: 120\n"), std::string::npos);
    EXPECT_EQ(run({"settings", "show", "two"}).status, 2);
    EXPECT_EQ(run({"settings", "save", "  "}).status, 2);
    const Outcome whole = run({"describe", "-n", "one"});
    const Outcome part = run({"describe", "-n", "one", "--without-page"});
    EXPECT_NE(whole.out.find("LT="), std::string::npos) << whole.out;
    EXPECT_EQ(part.out.find("LT="), std::string::npos) << part.out;
    EXPECT_EQ(part.out.substr(0, part.out.find('\n')), whole.out.substr(0, whole.out.find('\n')))
        << "the rotation is kept";
    const Outcome unasked = run({"settings", "delete", "one"});
    EXPECT_EQ(unasked.status, 2);
    EXPECT_NE(unasked.err.find("您真的想从磁盘记录中删除当前设置吗？ (--yes)"), std::string::npos);
    EXPECT_EQ(run({"settings", "delete", "one", "--yes"}).status, 0);
    EXPECT_EQ(run({"settings", "list"}).out, "");
}

TEST_F(FolderTools, SettingsAskOnATerminalInAnyLetters) {
    if (!HasTerminals())
        GTEST_SKIP() << "no terminals here";
    const NameList save = {"settings",         "save",     "a", "-s", "PARA_BRIGHTNESS=90",
                           "--settings-store", "store.ini"};
    const NameList change = {"settings",         "save",     "a", "-s", "PARA_BRIGHTNESS=80",
                             "--settings-store", "store.ini"};
    ASSERT_EQ(Run(save).status, 0);
    EXPECT_EQ(Run(change, {.terminalAnswer = "n\n"}).status, 0);
    EXPECT_NE(ReadAll(folder_ / "store.ini").find("=90"), std::string::npos);
    EXPECT_EQ(Run(change, {.terminalAnswer = "是\n"}).status, 0);
    EXPECT_NE(ReadAll(folder_ / "store.ini").find("=80"), std::string::npos);
    EXPECT_EQ(Run(save, {.terminalAnswer = "Y\n"}).status, 0);
    EXPECT_NE(ReadAll(folder_ / "store.ini").find("=90"), std::string::npos);
}

TEST_F(FolderTools, VerbsHaveTheirOwnWords) {
    EXPECT_EQ(Run({"settings", "lst"}).status, 2);
    EXPECT_NE(Run({"settings", "lst"}).err.find("list"), std::string::npos);
    EXPECT_EQ(Run({"settings", "save"}).status, 2);
    EXPECT_EQ(Run({"settings", "list", "surplus"}).status, 2);
    EXPECT_EQ(Run({"settings", "list", "--yes"}).status, 2);
    EXPECT_EQ(Run({"describe", "--without-page"}).status, 2) << "it goes with --named";
}

TEST_F(FolderTools, StatsReportsAsTextAndJson) {
    Write("1.png", 100);
    Write("2.png", 100);
    Write("3.png", 200);
    const Outcome text = Run({"stats", "src"});
    EXPECT_EQ(text.status, 0);
    EXPECT_EQ(text.out.find('\r'), std::string::npos);
    EXPECT_NE(text.out.find("2个文件宽度为100，占文件总数66.67%\n"), std::string::npos);
    const Json json = Json::parse(Run({"stats", "src", "--json"}).out);
    EXPECT_EQ(json["count"], 3);
    EXPECT_EQ(json["maxArea"], Json::parse("[200, 20]"));
    EXPECT_EQ(json["common"]["width"]["value"], 100);
    EXPECT_EQ(json["common"]["height"]["count"], 3);
    EXPECT_EQ(Run({"stats", "src", "--types", "jpg"}).status, 1);
    EXPECT_EQ(Run({"stats", "src", "--types", "xyz"}).status, 2);
    EXPECT_EQ(Run({"stats", "none"}).status, 2);
}

TEST_F(FolderTools, SetDpiChangesAndTellsWhatItCannot) {
    Write("a.png");
    Write("b.bmp");
    WriteAll(folder_ / "src/c.jpg", "\xFF\xD8\xFF\xE1 no JFIF");
    const Outcome outcome = RunLogged({"set-dpi", "240", "src", "--json"});
    EXPECT_EQ(outcome.status, 1);
    const Json json = Json::parse(outcome.out);
    EXPECT_EQ(json["files"], 3);
    EXPECT_EQ(json["changed"], 2);
    EXPECT_EQ(json["failed"][0]["message"], "不是JFIF格式的JPEG文件");
    EXPECT_NE(Run({"info", "src/b.bmp"}).out.find("\t240\t240\n"), std::string::npos);
    EXPECT_EQ(RunLogged({"set-dpi", "100", "src", "--types", "bmp"}).out, "处理完毕。\n");
    EXPECT_EQ(RunLogged({"set-dpi", "8001", "src"}).status, 2);
    EXPECT_EQ(RunLogged({"set-dpi", "-1", "src"}).status, 2);
    EXPECT_EQ(RunLogged({"set-dpi", "--", "-1", "src"}).status, 2);
    EXPECT_EQ(RunLogged({"set-dpi", "many", "src"}).status, 2);
}

TEST_F(FolderTools, SetDpiOnAFullDiskLeavesTheFile) {
    WritePage(folder_ / "src/big.bmp", 600, 600);
    const std::string before = ReadAll(folder_ / "src/big.bmp");
    EXPECT_EQ(RunLogged({"set-dpi", "240", "src"}, {.fileSizeLimit = 100000}).status, 4);
    EXPECT_EQ(ReadAll(folder_ / "src/big.bmp"), before);
    EXPECT_EQ(Names(), NameList{"big.bmp"});
}

TEST_F(FolderTools, SetDpiKilledAtAnyMomentLeavesWholeFilesSlow) {
    std::map<std::string, std::string> before, after;
    for (int i = 0; i < 6; ++i)
        Write("p" + std::to_string(i) + ".bmp", 900, static_cast<unsigned>(i));
    for (const std::string& name : Names())
        before[name] = ReadAll(folder_ / "src" / name);
    ASSERT_EQ(RunLogged({"set-dpi", "240", "src"}).status, 0);
    for (const std::string& name : Names())
        after[name] = ReadAll(folder_ / "src" / name);
    std::minstd_rand random(3);
    for (int trial = 0; trial < 100; ++trial) {
        for (const auto& [name, bytes] : before)
            WriteAll(folder_ / "src" / name, bytes);
        const pid_t program = StartProgram({"set-dpi", "240", (folder_ / "src").native(), "--log",
                                            (folder_ / "log.txt").native()});
        ::usleep(static_cast<useconds_t>(random() % 60000));
        ::kill(program, SIGKILL);
        WaitFor(program);
        ASSERT_EQ(Names().size(), before.size()) << trial;
        for (const auto& [name, bytes] : before) {
            const std::string now = ReadAll(folder_ / "src" / name);
            ASSERT_TRUE(now == bytes || now == after[name]) << trial << ": " << name;
        }
    }
    ASSERT_EQ(RunLogged({"set-dpi", "240", "src"}).status, 0);
    for (const auto& [name, bytes] : after)
        EXPECT_EQ(ReadAll(folder_ / "src" / name), bytes);
}

TEST_F(FolderTools, RenameNumbersInBookOrderAndTakesItBack) {
    for (const char* name : {"000001.png", "leg001.png", "cov001.png"})
        Write(name);
    const Outcome plan = Run({"rename", "src", "--digits", "3", "--prefix", "p", "--dry-run"});
    EXPECT_EQ(plan.out,
              "src/cov001.png\tsrc/p001.png\nsrc/leg001.png\tsrc/p002.png\n"
              "src/000001.png\tsrc/p003.png\n");
    EXPECT_EQ(RunLogged({"rename", "src", "--prefix", "p"}).status, 2) << "nobody could be asked";
    EXPECT_EQ(Names(), (NameList{"000001.png", "cov001.png", "leg001.png"}));
    const Outcome run = RunLogged({"rename", "src", "--digits", "3", "--prefix", "p", "--yes"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "更名完成。\n");
    EXPECT_EQ(Names(), (NameList{"p001.png", "p002.png", "p003.png"}));
    EXPECT_EQ(RunLogged({"rename", "--undo", "src", "--yes"}).out, "撤销完成。\n");
    EXPECT_EQ(Names(), (NameList{"000001.png", "cov001.png", "leg001.png"}));
    EXPECT_EQ(RunLogged({"rename", "--undo", "src", "--yes"}).status, 2);
}

TEST_F(FolderTools, RenameHasFiveDigitsUnlessToldAndOneIsWithoutPadding) {
    Write("a.png");
    EXPECT_EQ(Run({"rename", "src", "--dry-run"}).out, "src/a.png\tsrc/00001.png\n");
    EXPECT_EQ(Run({"rename", "src", "--dry-run", "--digits", "1"}).out, "src/a.png\tsrc/1.png\n");
    EXPECT_EQ(Run({"rename", "src", "--dry-run", "--select", "0:1"}).status, 2);
    EXPECT_EQ(Run({"rename", "src", "--dry-run", "--step", "0"}).status, 2);
    EXPECT_EQ(
        Run({"rename", "src", "--dry-run", "--no-number", "--no-extension", "--prefix", "x"}).out,
        "src/a.png\tsrc/xa\n");
}

TEST_F(FolderTools, RenameRefusesTargetsThatMeet) {
    Write("a.png");
    Write("b.png");
    WriteAll(folder_ / "src/00001.png", "of the user");
    EXPECT_EQ(RunLogged({"rename", "src", "--select", "2:9", "--yes"}).status, 2);
    EXPECT_EQ(ReadAll(folder_ / "src/00001.png"), "of the user");
    EXPECT_EQ(RunLogged({"rename", "src", "--select", "2:9", "--yes", "--overwrite"}).status, 0);
    EXPECT_EQ(Names(), (NameList{"00001.png", "b.png"}));
}

TEST_F(FolderTools, CompareTellsFieldsAndExitStatus) {
    Write("a.png", 20, 1);
    Write("b.png", 20, 2);
    fs::copy(folder_ / "src/a.png", folder_ / "src/c.png");
    const Outcome same = Run({"compare", "src/a.png", "src/c.png", "--exit-code"});
    EXPECT_EQ(same.status, 0);
    EXPECT_EQ(same.out,
              "总像素数:\t相同\n不同像素:\t\n最大值:\t\n平均值:\t\n标准差:\t\n相似度:\t\n");
    const Outcome differ =
        Run({"compare", "src/a.png", "src/b.png", "--exit-code", "--all", "all.csv", "--difference",
             "d.png", "--levels", "l.csv", "--nonzero", "n.csv", "--frequency", "f.csv", "--json"});
    EXPECT_EQ(differ.status, 3);
    const Json json = Json::parse(differ.out);
    EXPECT_EQ(json["identical"], false);
    EXPECT_EQ(json["pixels"], 400);
    EXPECT_EQ(json["maxima"].size(), 1U);
    EXPECT_EQ(LinesOf(ReadAll(folder_ / "all.csv")).size(), 401U);
    EXPECT_EQ(ReadAll(folder_ / "l.csv"), ReadAll(folder_ / "f.csv"));
    EXPECT_TRUE(fs::exists(folder_ / "d.png"));
    EXPECT_EQ(Run({"compare", "src/a.png", "src/b.png"}).status, 0);
    EXPECT_EQ(Run({"compare", "src/a.png", "src/a.png"}).status, 2);
    const Outcome missing = Run({"compare", "src/a.png", "none.png", "--json"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(Json::parse(missing.out)["error"], "所选源文件已不存在，请重新选择。");
    EXPECT_EQ(Run({"compare", "src/a.png", "src/b.png", "--all", "none/x.csv"}).status, 4);
}

TEST_F(FolderTools, CompareOfFoldersGivesARowAFile) {
    fs::create_directory(folder_ / "two");
    Write("1.png", 20, 1);
    Write("2.png", 20, 2);
    fs::copy(folder_ / "src/1.png", folder_ / "two/1.png");
    WritePage(folder_ / "two/2.png", 20, 20, false, 9);
    const Outcome rows = Run({"compare", "--folders", "src", "two", "--export", "rows.csv"});
    EXPECT_EQ(rows.status, 0);
    const NameList lines = LinesOf(rows.out);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0], "序号\t文件名\t不同像素\t最大值\t平均值\t标准差");
    EXPECT_EQ(lines[1], "1\t1.png\t0, 0.00%\t0\t\t");
    EXPECT_EQ(LinesOf(ReadAll(folder_ / "rows.csv")).size(), 3U);
    const Json json = Json::parse(Run({"compare", "--folders", "src", "two", "--json"}).out);
    ASSERT_EQ(json.size(), 2U);
    EXPECT_EQ(json[1]["row"], 2);
    EXPECT_EQ(Run({"compare", "--folders", "src", "none"}).status, 2);
}

}  // namespace
}  // namespace velloran::test

// A book from the folder of scans to finished pages, verb by verb.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <random>

#include "RunProgram.h"
#include "documents/FolderLock.h"
#include "support/TempFolder.h"

namespace velloran::test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;
using NameList = std::vector<std::string>;

class Book : public testing::Test {
 protected:
    void SetUp() override {
        fs::create_directories(folder_ / "src");
        for (const char* name : {"p1.png", "p2.png", "p3.png"})
            WritePage(folder_ / "src" / name, 120, 40);
    }
    Outcome Run(NameList words, Surroundings around = {}) const {
        words.insert(words.begin(), "book");
        around.folder = folder_.Path();
        return RunProgram(words, around);
    }
    Outcome Convert(NameList words = {}, Surroundings around = {}) const {
        words.insert(words.begin(), {"convert", "src"});
        words.insert(words.end(), {"--log", "log.txt"});
        return Run(std::move(words), std::move(around));
    }
    Json Show() const { return Json::parse(Run({"show", "src", "--json"}).out); }
    NameList Pages() const {
        NameList names;
        for (const auto& entry : fs::directory_iterator(folder_ / "out"))
            names.push_back(entry.path().filename().native());
        std::sort(names.begin(), names.end());
        return names;
    }

    TempFolder folder_;
};

TEST_F(Book, IsMadeShownAndKeptAsAFile) {
    EXPECT_EQ(Run({"show", "src"}).status, 1) << "there is no project yet";
    const Outcome open = Run({"open", "src"});
    EXPECT_EQ(open.status, 0);
    EXPECT_EQ(open.out, "1\tp1.png\t00001\t-\t0\n2\tp2.png\t00002\t-\t0\n3\tp3.png\t00003\t-\t0\n");
    EXPECT_EQ(Run({"show", "src"}).out, open.out);
    const Json json = Show();
    EXPECT_EQ(json["zoom"], 6);
    EXPECT_EQ(json["digits"], 4);
    EXPECT_EQ(json["ext"], 418096);
    EXPECT_EQ(json["rows"][0]["half"], nullptr);
    EXPECT_EQ(json["rows"][0]["parameters"], Json::object());
    EXPECT_EQ(ReadAll(folder_ / "src/VelloranPro.prj").substr(0, 2), "\xFF\xFE");
}

TEST_F(Book, GoesFromScansToPages) {
    ASSERT_EQ(Run({"open", "src"}).status, 0);
    EXPECT_EQ(Run({"set", "src", "-p", "m_strPrefix=b", "-p", "m_iDigits=2", "--rows", "1", "-s",
                   "PARA_GAMMA=90"})
                  .status,
              0);
    EXPECT_EQ(
        Run({"apply", "src", "--from", "1", "--what", "tab", "--tab", "4", "--to", "rest"}).status,
        0);
    EXPECT_EQ(Run({"split", "src", "--rows", "2", "--kind", "2"}).status, 0);
    const Json json = Show();
    ASSERT_EQ(json["rows"].size(), 4U);
    EXPECT_EQ(json["rows"][1]["half"], 1);
    EXPECT_EQ(json["rows"][1]["partner"], 3);
    EXPECT_EQ(json["rows"][1]["parameters"]["PARA_PAGE_SPLIT_TYPE"], 258);
    EXPECT_EQ(json["rows"][3]["parameters"]["PARA_GAMMA"], 90);
    const Outcome convert = Convert({"--target", "out"});
    EXPECT_EQ(convert.status, 0) << convert.err;
    EXPECT_EQ(convert.out, "4个文件需要转换，\n4个文件转换成功。\n");
    EXPECT_EQ(Pages(), (NameList{"b001.jpg", "b002.jpg", "b003.jpg", "b004.jpg"}));
    EXPECT_EQ(Show()["target"], (folder_ / "out").native()) << "kept as an absolute path";
    EXPECT_NE(Show()["rows"][1]["parameters"]["PARA_PAGE_SPLIT_MID"], nullptr);
    EXPECT_EQ(Convert().status, 2) << "nobody could be asked whether the pages may go";
    EXPECT_EQ(Pages().size(), 4U);
    const Json report =
        Json::parse(Convert({"--yes", "--json", "--jobs", "2", "--review", "review.txt"}).out);
    EXPECT_TRUE(fs::exists(folder_ / "review.txt"));
    EXPECT_EQ(report["converted"], 4);
    EXPECT_EQ(report["failed"], Json::array());
    EXPECT_EQ(Run({"preview", "src", "2", "out/view.png", "--tab", "1", "--side", "left"}).status,
              0);
    EXPECT_EQ(LinesOf(RunProgram({"info", "view.png"}, {.folder = folder_ / "out"}).out)
                  .at(0)
                  .substr(0, 19),
              "view.png\t5\tPNG\t120\t");
}

TEST_F(Book, ListIsChangedByItsVerbs) {
    ASSERT_EQ(Run({"open", "src"}).status, 0);
    WritePage(folder_ / "src/p4.png");
    EXPECT_EQ(Run({"add", "src", "src/p4.png", "--before", "1"}).status, 0);
    EXPECT_EQ(Run({"add", "src", "src/p4.png"}).status, 2);
    EXPECT_EQ(Run({"add", "src", "p9.png"}).status, 1);
    EXPECT_EQ(Run({"move", "src", "1", "--before", "3"}).status, 0);
    EXPECT_EQ(Show()["rows"][1]["source"], "p4.png");
    EXPECT_EQ(Run({"remove", "src", "--rows", "1,3-"}).status, 0);
    EXPECT_EQ(Show()["rows"].size(), 1U);
    EXPECT_EQ(Run({"remove", "src", "--rows", "all"}).status, 0);
    EXPECT_EQ(Run({"show", "src"}).out, "") << "a list that was emptied is written";
    EXPECT_EQ(Convert({"--target", "out"}).status, 1);
}

TEST_F(Book, WrongWordsTouchNothing) {
    ASSERT_EQ(Run({"open", "src"}).status, 0);
    const std::string before = ReadAll(folder_ / "src/VelloranPro.prj");
    for (const NameList& words : {NameList{"set", "src", "-p", "m_iZom=1"},
                                  {"set", "src", "-p", "m_iZoom=x"},
                                  {"set", "src", "-p", "m_strPrefix=a/b"},
                                  {"set", "src", "-p", "m_strTgt=D:\\Out"},
                                  {"set", "src", "-p", "m_strTgt=src"},
                                  {"set", "src", "-s", "PARA_GAMMA=1"},
                                  {"set", "src", "--rows", "9", "-s", "PARA_GAMMA=1"},
                                  {"set", "src", "--rows", "2-1", "-s", "PARA_GAMMA=1"},
                                  {"apply", "src", "--from", "1", "--what", "tab", "--to", "all"},
                                  {"apply", "src", "--from", "7", "--what", "all", "--to", "all"},
                                  {"split", "src", "--rows", "0"},
                                  {"show", "src", "--yes"},
                                  {"preview", "src", "1"},
                                  {"convert", "src", "--target", "src/inside"},
                                  {"convert", "src", "--target", "."}})
        EXPECT_EQ(Run(words).status, 2) << words[0] << " " << words.back();
    EXPECT_EQ(ReadAll(folder_ / "src/VelloranPro.prj"), before);
    EXPECT_EQ(Run({"show", "none"}).status, 1);
    WriteAll(folder_ / "src/VelloranPro.prj", "something else");
    EXPECT_EQ(Run({"open", "src"}).status, 1);
    EXPECT_EQ(ReadAll(folder_ / "src/VelloranPro.prj"), "something else");
}

TEST_F(Book, KeysAreClearedAndRowsReset) {
    ASSERT_EQ(Run({"open", "src"}).status, 0);
    Run({"set", "src", "-p", "m_strPrefix=x", "--rows", "all", "-s", "PARA_GAMMA=90"});
    Run({"set", "src", "-p", "m_strPrefix=", "--rows", "2", "--reset", "-s", "PARA_CONTRAST=110"});
    const Json json = Show();
    EXPECT_EQ(json["prefix"], "");
    EXPECT_EQ(json["rows"][0]["parameters"], Json::parse(R"({"PARA_GAMMA": 90})"));
    EXPECT_EQ(json["rows"][1]["parameters"], Json::parse(R"({"PARA_CONTRAST": 110})"));
}

TEST_F(Book, OpenInAnotherProgramIsToldAndNothingIsLost) {
    ASSERT_EQ(Run({"open", "src"}).status, 0);
    const std::string before = ReadAll(folder_ / "src/VelloranPro.prj");
    FolderLock other;
    ASSERT_TRUE(other.Take(folder_ / "src"));
    const Outcome outcome = Run({"set", "src", "-p", "m_iStart=5"});
    EXPECT_EQ(outcome.status, 4);
    EXPECT_NE(outcome.err.find("另一个程序正在使用这个文件夹"), std::string::npos);
    EXPECT_EQ(Run({"show", "src"}).status, 0) << "it can be looked at";
    EXPECT_EQ(ReadAll(folder_ / "src/VelloranPro.prj"), before);
}

TEST_F(Book, OnAFullDiskKeepsTheProjectOfBefore) {
    for (int i = 0; i < 40; ++i)
        WritePage(folder_ / ("src/q" + std::to_string(i) + ".png"), 8, 8);
    ASSERT_EQ(Run({"open", "src"}).status, 0);
    const std::string before = ReadAll(folder_ / "src/VelloranPro.prj");
    NameList words = {"set", "src", "--rows", "all"};
    for (const char* set : {"PARA_GAMMA=90", "PARA_CONTRAST=110", "PARA_BRIGHTNESS=90"})
        words.insert(words.end(), {"-s", set});
    EXPECT_EQ(Run(words, {.fileSizeLimit = static_cast<long>(before.size() + 100)}).status, 4);
    EXPECT_EQ(ReadAll(folder_ / "src/VelloranPro.prj"), before);
}

TEST_F(Book, ConversionKilledAtAnyMomentLosesNothingAndASecondRunCompletesSlow) {
    for (int i = 4; i < 12; ++i)
        WritePage(folder_ / ("src/p" + std::to_string(i) + ".png"), 300, 300);
    ASSERT_EQ(Run({"open", "src"}).status, 0);
    ASSERT_EQ(Convert({"--target", "out"}).status, 0);
    std::map<std::string, std::string> sources, pages;
    const auto read = [](const fs::path& folder) {
        std::map<std::string, std::string> files;
        for (const auto& entry : fs::directory_iterator(folder))
            files[entry.path().filename().native()] = ReadAll(entry.path());
        return files;
    };
    sources = read(folder_ / "src");
    pages = read(folder_ / "out");
    std::minstd_rand random(5);
    for (int trial = 0; trial < 100; ++trial) {
        const pid_t program = StartProgram({"book", "convert", (folder_ / "src").native(), "--yes",
                                            "--log", (folder_ / "log.txt").native()});
        ::usleep(static_cast<useconds_t>(random() % 150000));
        ::kill(program, SIGKILL);
        WaitFor(program);
        ASSERT_EQ(read(folder_ / "src"), sources) << trial;
        for (const auto& [name, bytes] : read(folder_ / "out"))
            ASSERT_TRUE(name.front() == '.' || pages.at(name) == bytes) << trial << ": " << name;
    }
    EXPECT_EQ(Convert({"--yes"}).status, 0);
    EXPECT_EQ(read(folder_ / "out"), pages);
}

}  // namespace
}  // namespace velloran::test

// `velloran merge`, end to end.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "RunProgram.h"
#include "support/TempFolder.h"

namespace velloran::test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

class Merge : public testing::Test {
 protected:
    void SetUp() override {
        fs::create_directories(folder_ / "src");
        for (const char* name : {"1.png", "2.png", "3.png"})
            WritePage(folder_ / "src" / name, 40, 30);
    }
    Outcome Run(std::vector<std::string> words) const {
        words.insert(words.begin(), "merge");
        words.insert(words.end(), {"--log", "log.txt"});
        return RunProgram(words, {.folder = folder_.Path()});
    }
    TempFolder folder_;
};

TEST_F(Merge, TellsALineATarget) {
    const Outcome outcome = Run({"--source1", "src", "--target", "out", "-m", "Blank=6"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    const auto lines = LinesOf(outcome.out);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0],
              "out/1_2.png\t86\t30\t" + std::to_string(fs::file_size(folder_ / "out/1_2.png")));
    EXPECT_EQ(lines[1].substr(0, 16), "out/3.png\t40\t30\t");
    EXPECT_EQ(lines[2], "合并完成。");
    const Json json = Json::parse(Run({"--source1", "src", "--json"}).out);
    EXPECT_EQ(json["files"], 3);
    EXPECT_EQ(json["joined"], 1);
    EXPECT_EQ(json["copied"], 1);
    EXPECT_EQ(json["targets"][1]["second"], nullptr);
    EXPECT_TRUE(fs::exists(folder_ / "src_拼接/1_2.png"));
}

TEST_F(Merge, KeepsItsStateAndTakesItBack) {
    ASSERT_EQ(
        Run({"--source1", "src", "--target", "out", "-m", "Layout=2", "--save-state", "job.vlm"})
            .status,
        0);
    std::string state = ReadAll(folder_ / "job.vlm");
    EXPECT_NE(state.find("[Main]"), std::string::npos);
    EXPECT_NE(state.find("Layout=2"), std::string::npos);
    const std::size_t row = state.find("[1.png]");
    ASSERT_NE(row, std::string::npos);
    state.replace(state.find("Checked=1", row), 9, "Checked=0");
    WriteAll(folder_ / "job.vlm", state);
    const Outcome again = Run({"--state", "job.vlm", "--target", "second"});
    EXPECT_EQ(LinesOf(again.out).at(1).substr(0, 24),
              "second/2_3.png\t40\t60\t" + LinesOf(again.out).at(1).substr(21, 3));
}

TEST_F(Merge, JoinsTwoFilesIntoAThird) {
    const Outcome outcome = Run({"--pair", "src/1.png", "src/2.png", "both.bmp"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(LinesOf(outcome.out).at(0).substr(0, 15), "both.bmp\t80\t30\t");
    EXPECT_EQ(Run({"--pair", "src/1.png", "src/2.png", "src/1.png"}).status, 2);
    EXPECT_EQ(Run({"--pair", "src/1.png", "src/2.png"}).status, 2);
    EXPECT_EQ(Run({"--pair", "src/1.png", "none.png", "x.png"}).status, 1);
    EXPECT_EQ(Run({"--pair", "src/1.png", "src/2.png", "none/x.png"}).status, 4);
}

TEST_F(Merge, WrongWordsTouchNothing) {
    EXPECT_EQ(Run({"--source1", "none"}).status, 2);
    EXPECT_EQ(Run({}).status, 2);
    EXPECT_EQ(Run({"--source1", "src", "-m", "Layut=1"}).status, 2);
    EXPECT_EQ(Run({"--source1", "src", "-m", "Layout=left"}).status, 2);
    EXPECT_EQ(Run({"--source1", "src", "--target", "src"}).status, 2);
    EXPECT_EQ(Run({"--state", "none.vlm", "--source1", "src"}).status, 2);
    EXPECT_EQ(Run({"--source1", "src", "surplus"}).status, 2);
    EXPECT_EQ(Run({"--source1", "src", "--save-state", "src/1.png"}).status, 2);
    EXPECT_FALSE(fs::exists(folder_ / "src_拼接"));
}

}  // namespace
}  // namespace velloran::test

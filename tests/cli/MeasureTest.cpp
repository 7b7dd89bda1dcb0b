// measure, and batch --review: what automatic steps find and how sure they are.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "BatchFolder.h"
#include "RunProgram.h"

namespace velloran::test {
namespace {

using Json = nlohmann::ordered_json;

std::vector<std::string> KeysOf(const Json& object) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : object.items())
        keys.push_back(key);
    return keys;
}

class Measure : public BatchFolder {
 protected:
    /// Lines of black blocks, like text, that rise to the right.
    void WriteText(const std::filesystem::path& file) {
        CDibImage page = Filled(900, 1200, 8, 250);
        for (int line = 0; line < 20; ++line)
            for (int word = 0; word < 24; ++word)
                for (int y = 0; y < 18; ++y) {
                    const int x = 100 + word * 29, top = 120 + line * 48 - x / 40;
                    std::fill_n(page.GetBits(1199 - top - y) + x, 22, std::uint8_t{10});
                }
        const CParaBlock block;
        ASSERT_TRUE(SaveImageFile(file, page, 90, 96, 2, false, block));
    }
    Outcome RunMeasure(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "measure");
        return RunProgram(arguments, {.folder = folder_.Path()});
    }
};

TEST_F(Measure, JsonHoldsTheFindingsWithTheirKeysInOrder) {
    WriteText(folder_ / "text.png");
    const Outcome outcome = RunMeasure({"text.png", "--json"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const Json all = Json::parse(outcome.out);
    ASSERT_EQ(all.size(), 1U);
    using Keys = std::vector<std::string>;
    EXPECT_EQ(KeysOf(all[0]), (Keys{"path", "error", "width", "height", "skew", "box", "split",
                                    "corners", "dark"}));
    EXPECT_EQ(all[0]["width"], 900);
    EXPECT_TRUE(all[0]["error"].is_null());
    EXPECT_EQ(KeysOf(all[0]["skew"]), (Keys{"sure", "mode", "angle", "confidence", "turn"}));
    EXPECT_EQ(KeysOf(all[0]["box"]),
              (Keys{"sure", "found", "left", "top", "right", "bottom", "inkLost"}));
    EXPECT_EQ(KeysOf(all[0]["split"]), (Keys{"sure", "found", "left", "right", "mid"}));
    EXPECT_EQ(KeysOf(all[0]["corners"]), (Keys{"sure", "found", "lt", "rt", "rb", "lb"}));
    EXPECT_EQ(KeysOf(all[0]["dark"]), Keys{"level"});
    // The lines rise by 1 in 40: 1.43 degrees against the clock.
    EXPECT_NEAR(all[0]["skew"]["angle"].get<double>(), -1.43, 0.1);
    EXPECT_EQ(all[0]["skew"]["turn"].get<int>(),
              static_cast<int>(all[0]["skew"]["angle"].get<double>() * 100));
    EXPECT_GT(all[0]["skew"]["sure"].get<double>(), 0.5);
    EXPECT_NEAR(all[0]["box"]["left"].get<int>(), 100, 10);
    // 17 % of the page are of level 10, far above a thousandth: the level below is the dark end.
    EXPECT_EQ(all[0]["dark"]["level"], 9);
}

TEST_F(Measure, ALineAFindingAndOnlyThoseThatAreAskedFor) {
    WriteText(folder_ / "text.png");
    const Outcome outcome = RunMeasure({"--only", "dark,skew", "text.png", "text.png"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const std::vector<std::string> lines = LinesOf(outcome.out);
    ASSERT_EQ(lines.size(), 4U) << outcome.out;
    EXPECT_TRUE(lines[0].starts_with("text.png\tskew\t0."));
    EXPECT_EQ(lines[1], "text.png\tdark\t-\tlevel=9");
    EXPECT_EQ(lines[2], lines[0]);
}

TEST_F(Measure, CurvesAreMeasuredWhenAskedFor) {
    WriteText(folder_ / "text.png");
    const Outcome outcome = RunMeasure({"--only", "curves", "--json", "text.png"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const Json curves = Json::parse(outcome.out)[0]["curves"];
    EXPECT_EQ(KeysOf(curves), (std::vector<std::string>{"sure", "found", "top", "bottom"}));
    ASSERT_EQ(curves["top"].size(), 8U);
    EXPECT_EQ(curves["bottom"][7].size(), 2U);
    EXPECT_FALSE(curves["found"].get<bool>());  // its lines are straight
}

TEST_F(Measure, MarginsNarrowTheSearch) {
    WriteText(folder_ / "text.png");
    const Outcome outcome =
        RunMeasure({"--only", "box", "--json", "text.png", "-s", "PARA_CROPPING_P_LEFT=500", "-s",
                    "PARA_CBF_SPECKLE_SIZE=0"});
    const Json box = Json::parse(outcome.out)[0]["box"];
    EXPECT_GE(box["left"].get<int>(), 450);
    EXPECT_LE(box["right"].get<int>(), 900);
}

TEST_F(Measure, AFileThatCannotBeReadIsToldAndTheOthersAreMeasured) {
    WriteText(folder_ / "text.png");
    const Outcome outcome = RunMeasure({"--only", "dark", "--json", "missing.png", "text.png"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("missing.png: 文件读取失败。"), std::string::npos) << outcome.err;
    const Json all = Json::parse(outcome.out);
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0]["error"], "文件读取失败。");
    EXPECT_EQ(all[1]["dark"]["level"], 9);
}

TEST_F(Measure, AnUnknownFindingIsWrongUsage) {
    const Outcome outcome = RunMeasure({"--only", "skwe", "text.png"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.err.find("skew"), std::string::npos) << outcome.err;
    EXPECT_EQ(RunMeasure({"--only", "", "text.png"}).status, 2);
    EXPECT_EQ(RunMeasure({"--only", "box,", "text.png"}).status, 2);
}

TEST_F(Measure, AReviewListsWhatARunFoundLeastSureFirst) {
    WriteText(Source() / "text.png");
    WriteFlat(Source() / "flat.png", 200);
    const Outcome outcome = Run(
        {"src", "out", "--review", "look.txt", "-s", "PARA_DESKEW=1", "-s", "PARA_FIND_CNT_BOX=1"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const std::vector<std::string> lines = LinesOf(ReadAll(folder_ / "look.txt"));
    ASSERT_EQ(lines.size(), 4U);
    double before = 0;
    for (const std::string& line : lines) {
        const double sure = std::stod(line.substr(line.rfind('\t') + 1));
        EXPECT_GE(sure, before) << line;
        before = sure;
    }
    EXPECT_TRUE(lines[0].starts_with("src/flat.png\t")) << lines[0];
    EXPECT_NE(lines[3].find("text.png\t"), std::string::npos) << lines[3];
}

TEST_F(Measure, AReviewChangesNoPage) {
    WriteText(Source() / "text.png");
    const std::vector<std::string> words = {"-s", "PARA_DESKEW=1", "-s", "PARA_FIND_CNT_BOX=1"};
    std::vector<std::string> plain = {"src", "plain"}, judged = {"src", "judged", "--review", "r"};
    plain.insert(plain.end(), words.begin(), words.end());
    judged.insert(judged.end(), words.begin(), words.end());
    ASSERT_EQ(Run(plain).status, 0);
    ASSERT_EQ(Run(judged).status, 0);
    ASSERT_EQ(FilesIn(folder_ / "plain"), FilesIn(folder_ / "judged"));
    for (const std::string& name : FilesIn(folder_ / "plain"))
        EXPECT_EQ(ReadAll(folder_ / ("plain/" + name)), ReadAll(folder_ / ("judged/" + name)));
}

TEST_F(Measure, AReviewReplacesNoFileOfTheUsers) {
    WriteText(Source() / "text.png");
    WriteAll(folder_ / "notes.txt", "mine\n");
    const Outcome outcome = Run({"src", "out", "--review", "notes.txt", "-s", "PARA_DESKEW=1"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_NE(outcome.err.find("notes.txt: "), std::string::npos) << outcome.err;
    EXPECT_EQ(ReadAll(folder_ / "notes.txt"), "mine\n");
    EXPECT_EQ(FilesIn(Target()), Names{});
    EXPECT_EQ(Run({"src", "out", "--review", "src/text.png"}).status, 2);
}

TEST_F(Measure, AReviewThatCannotBeWrittenIsToldAndThePagesStay) {
    WriteText(Source() / "text.png");
    const Outcome outcome =
        Run({"src", "out", "--review", "no/such/list.txt", "-s", "PARA_DESKEW=1"});
    EXPECT_EQ(outcome.status, 4);
    EXPECT_NE(outcome.err.find("no/such/list.txt: 文件存盘失败。"), std::string::npos)
        << outcome.err;
    EXPECT_EQ(FilesIn(Target()).size(), 1U);
}

}  // namespace
}  // namespace velloran::test

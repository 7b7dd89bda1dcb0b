// No source is replaced unless the user said so, whatever way leads to it, and no other file of the
// user's either.

#include <unistd.h>

#include <chrono>
#include <nlohmann/json.hpp>

#include "BatchFolder.h"

namespace velloran::test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

class BatchSources : public BatchFolder {
 protected:
    /// Makes files that much older than those written from now on.
    static void MakeOlder(const fs::path& file, int seconds = 100) {
        fs::last_write_time(file, fs::last_write_time(file) - std::chrono::seconds(seconds));
    }

    /// The run is wrong usage and leaves the source; with --yes it replaces it.
    void ExpectAsksFor(const fs::path& source, const std::vector<std::string>& arguments) {
        const std::string before = ReadAll(source);
        const Outcome asked = Run(arguments);
        EXPECT_EQ(asked.status, 2) << asked.err;
        EXPECT_NE(asked.err.find("--yes"), std::string::npos) << asked.err;
        EXPECT_EQ(ReadAll(source), before);
        std::vector<std::string> sure = arguments;
        sure.emplace_back("--yes");
        EXPECT_EQ(Run(sure).status, 0);
        EXPECT_NE(ReadAll(source), before);
    }
};

// Negated, so that a source that was replaced cannot look as before.
const std::vector<std::string> kNegated = {"src", "out", "--ext", "png", "-s", "PARA_NEGATE=1"};

TEST_F(BatchSources, ATargetThatIsALinkToItsSourceIsAskedFor) {
    WriteFlat(Source() / "a.png", 10);
    fs::create_directory(Target());
    fs::create_symlink(Source() / "a.png", Target() / "a.png");
    ExpectAsksFor(Source() / "a.png", kNegated);
}

TEST_F(BatchSources, ATargetSubfolderThatLinksToASourceFolderIsAskedFor) {
    WriteFlat(Source() / "one" / "a.png", 10);
    fs::create_directory(Target());
    fs::create_directory_symlink(Source() / "one", Target() / "one");
    ExpectAsksFor(Source() / "one" / "a.png", kNegated);
}

TEST_F(BatchSources, ASourceThatLinksIntoTheTargetIsAskedFor) {
    WriteFlat(Target() / "a.png", 10);
    fs::create_symlink(Target() / "a.png", Source() / "a.png");
    ExpectAsksFor(Target() / "a.png", kNegated);
}

TEST_F(BatchSources, APathOfTheListInTheTargetIsAskedFor) {
    WriteFlat(Target() / "a.png", 10);
    WriteAll(folder_ / "list", "out/a.png\n");
    std::vector<std::string> arguments = kNegated;
    arguments.insert(arguments.end(), {"--list", "list"});
    ExpectAsksFor(Target() / "a.png", arguments);
}

TEST_F(BatchSources, AHardLinkIsTheSameFileToo) {
    WriteFlat(Source() / "a.png", 10);
    fs::create_directory(Target());
    fs::create_hard_link(Source() / "a.png", Target() / "a.png");
    EXPECT_EQ(Run(kNegated).status, 2);
}

TEST_F(BatchSources, ATargetThatLinksToAnotherSourceIsEvaded) {
    WriteFlat(Source() / "a.png", 10);
    WriteFlat(Source() / "b.png", 20);
    fs::create_directory(Target());
    fs::create_symlink(Source() / "b.png", Target() / "a.png");
    const Outcome outcome = Run({"src", "out", "--ext", "png"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(GrayOf(Source() / "b.png"), 20);
    EXPECT_EQ(GrayOf(Target() / "a~2.png"), 10);
    EXPECT_EQ(GrayOf(Target() / "b.png"), 20);
}

TEST_F(BatchSources, TwoFoldersThatAreOneInTheTargetKeepTheirPagesApart) {
    WriteFlat(Source() / "one" / "a.png", 10);
    WriteFlat(Source() / "two" / "a.png", 20);
    fs::create_directories(Target() / "one");
    fs::create_directory_symlink("one", Target() / "two");
    EXPECT_EQ(Run({"src", "out", "--ext", "png"}).status, 0);
    EXPECT_EQ(GrayOf(Target() / "one" / "a.png"), 10);
    EXPECT_EQ(GrayOf(Target() / "one" / "a~2.png"), 20);
}

TEST_F(BatchSources, ALogIsOnlyPutWhereNothingOfTheUsersStands) {
    WriteAll(Source() / "bad.png", "nonsense");
    WriteFlat(Source() / "page.png", 10);
    WriteAll(folder_ / "notes", "do not lose\r\n");
    WriteAll(folder_ / "notes16", RunLogOf("to\tdo\r\n"));
    WriteAll(folder_ / "list", "src/bad.png\n");
    for (const char* log : {"notes", "notes16", "list", "src/page.png", "src"}) {
        const std::string before = fs::is_directory(folder_ / log) ? "" : ReadAll(folder_ / log);
        const Outcome outcome = Run({"src", "out", "--list", "list", "--log", log});
        EXPECT_EQ(outcome.status, 2) << log << outcome.err;
        EXPECT_FALSE(fs::exists(Target())) << log;
        if (!before.empty()) {
            EXPECT_EQ(ReadAll(folder_ / log), before);
        }
    }
    WriteAll(folder_ / "empty", "");
    WriteAll(folder_ / "old",
             RunLogOf("a\t读取失败\r\nb\t\t文件损坏\r\nc\tout of memory\r\ncut of"));
    for (const char* log : {"empty", "old", "new"}) {
        EXPECT_EQ(Run({"src", "out", "--log", log}).status, 1) << log;
        EXPECT_EQ(ReadAll(folder_ / log), RunLogOf("src/bad.png\t读取失败\r\n"));
    }
}

TEST_F(BatchSources, AnEmptySourceIsNoPlaceForTheLog) {
    WriteAll(Source() / "empty.png", "");
    EXPECT_EQ(Run({"src", "out", "--log", "src/empty.png"}).status, 2);
    EXPECT_TRUE(fs::exists(Source() / "empty.png"));
}

TEST_F(BatchSources, SaveSettingOnlyWritesIntoSettingsFiles) {
    WriteFlat(Source() / "a.png", 10);
    WriteAll(folder_ / "notes", "buy milk = 2\n");
    for (const char* file : {"notes", "src/a.png"}) {
        const std::string before = ReadAll(folder_ / file);
        const Outcome outcome = RunProgram({"enhance", "src/a.png", "b.png", "--save-setting",
                                            std::string(file) + "#mine", "-s", "PARA_CONTRAST=130"},
                                           {.folder = folder_.Path()});
        EXPECT_EQ(outcome.status, 2) << file << outcome.err;
        EXPECT_EQ(ReadAll(folder_ / file), before);
        EXPECT_FALSE(fs::exists(folder_ / "b.png"));
    }
    WriteAll(folder_ / "empty", "");
    WriteAll(folder_ / "kept", "; mine\n[other]\nPARA_GAMMA=120\n");
    for (const char* file : {"empty", "kept", "new"}) {
        EXPECT_EQ(RunProgram({"enhance", "src/a.png", "b.png", "--save-setting",
                              std::string(file) + "#mine", "-s", "PARA_CONTRAST=130"},
                             {.folder = folder_.Path()})
                      .status,
                  0);
        EXPECT_NE(ReadAll(folder_ / file).find("[mine]"), std::string::npos) << file;
    }
    EXPECT_NE(ReadAll(folder_ / "kept").find("PARA_GAMMA=120"), std::string::npos);
}

TEST_F(BatchSources, InPlaceTheQuestionTellsHowManyFilesOfOtherNamesWillAppear) {
    WriteFlat(Source() / "a.png", 10);
    WriteFlat(Source() / "b.tif", 10);
    WriteFlat(Source() / "c.jpg", 10);
    const Outcome exact = Run({"src", "src", "--ext", "png"});
    EXPECT_EQ(exact.status, 2);
    EXPECT_NE(exact.err.find("2个转换后的文件将以其他文件名出现"), std::string::npos) << exact.err;
    // The grey page stays a JPEG; it could be black and white.
    const Outcome atMost = Run({"src", "src"});
    EXPECT_NE(atMost.err.find("最多有3个"), std::string::npos) << atMost.err;
}

TEST_F(BatchSources, InPlaceASecondRunThatSkipsWhatExistsAddsNothing) {
    WriteFlat(Source() / "a.png", 10);
    WriteFlat(Source() / "b.png", 20);
    WriteFlat(Source() / "c.tif", 30);
    const std::vector<std::string> arguments = {"src", "src", "--yes", "--skip-existing"};
    EXPECT_EQ(Run(arguments).status, 0);
    const Names once = {"a.jpg", "a.png", "b.jpg", "b.png", "c.jpg", "c.tif"};
    EXPECT_EQ(FilesIn(Source()), once);
    const std::string made = ReadAll(Source() / "a.jpg");
    const Outcome again = Run(arguments);
    EXPECT_EQ(again.status, 0) << again.err;
    EXPECT_EQ(FilesIn(Source()), once);
    EXPECT_EQ(ReadAll(Source() / "a.jpg"), made);
    EXPECT_NE(again.err.find("跳过的文件数：6"), std::string::npos) << again.err;
}

TEST_F(BatchSources, SkipExistingTakesWhatIsMissingOrChangedSince) {
    for (const char* name : {"a.png", "b.png", "c.png"})
        WriteFlat(Source() / name, 10);
    EXPECT_EQ(Run({"src", "out", "--ext", "png"}).status, 0);
    WriteFlat(Source() / "a.png", 50);
    MakeOlder(Target() / "a.png");
    fs::remove(Target() / "b.png");
    WriteFlat(Target() / "c.png", 99);
    const Outcome outcome = Run({"src", "out", "--ext", "png", "--skip-existing", "--json"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(Json::parse(outcome.out)["converted"], 2);
    EXPECT_EQ(GrayOf(Target() / "a.png"), 50);
    EXPECT_EQ(GrayOf(Target() / "b.png"), 10);
    EXPECT_EQ(GrayOf(Target() / "c.png"), 99) << "it stands and is not older";
}

TEST_F(BatchSources, ASkippedSourceIsNotReplacedByTheResultOfANewerOne) {
    WriteFlat(Source() / "b.jpg", 20);
    WriteFlat(Source() / "b.png", 30);
    MakeOlder(Source() / "b.jpg");
    const std::string before = ReadAll(Source() / "b.jpg");
    EXPECT_EQ(Run({"src", "src", "--yes", "--skip-existing", "--ext", "jpg"}).status, 0);
    EXPECT_EQ(ReadAll(Source() / "b.jpg"), before);
    EXPECT_EQ(FilesIn(Source()), (Names{"b.jpg", "b.png", "b~2.jpg"}));
}

TEST_F(BatchSources, TheFilesThatTheFilterLeftOutAreCounted) {
    WriteFlat(Source() / "a.png", 10);
    WriteFlat(Source() / "sub" / "b.tif", 10);
    WriteAll(Source() / "notes.txt", "x");
    WriteAll(Source() / "sub" / "noextension", "x");
    const Outcome told = Run({"src", "out"});
    EXPECT_NE(told.err.find("其他类型文件数：2"), std::string::npos) << told.err;
    const Outcome json = Run({"src", "out", "--files", "5", "--json"});
    EXPECT_EQ(Json::parse(json.out)["otherTypes"], 3);
    fs::remove(Source() / "notes.txt");
    fs::remove_all(Source() / "sub");
    EXPECT_EQ(Run({"src", "out"}).err, "");
}

}  // namespace
}  // namespace velloran::test

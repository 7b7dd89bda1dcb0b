// Renaming: no file is ever lost, whatever meets whom, and what was done can be taken back.

#include "documents/rename/RenameRun.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>
#include <random>

#include "documents/FolderLock.h"
#include "documents/rename/RenameJournal.h"
#include "io/Leftovers.h"
#include "support/ScriptedAsker.h"
#include "support/TempFolder.h"

namespace velloran::test {
namespace {

namespace fs = std::filesystem;
using End = RenameOutcome::End;
using Contents = std::map<std::string, std::string>;

class RenameRun : public testing::Test {
 protected:
    void SetUp() override { fs::create_directories(Folder()); }
    fs::path Folder() const { return folder_ / "src"; }
    fs::path Other() const { return folder_ / "out/deep"; }
    /// Files whose content is the name that they began with.
    void Make(const std::vector<std::string>& names) const {
        for (const std::string& name : names)
            WriteAll(Folder() / name, name);
    }
    static Contents In(const fs::path& folder) {
        Contents contents;
        std::error_code missing;
        for (const auto& entry : fs::directory_iterator(folder, missing))
            if (entry.path().filename() != kRenameJournalName &&
                !IsTemporaryName(entry.path().filename().native()))
                contents[entry.path().filename().native()] = ReadAll(entry.path());
        return contents;
    }
    RenameRequest Request(std::vector<RenameRow> rows) const {
        RenameRequest request;
        request.source = Folder();
        request.rows = std::move(rows);
        request.log = folder_ / "log.txt";
        return request;
    }
    RenameOutcome Run(const RenameRequest& request) {
        ScriptedAsker yes({ScriptedAsker::kYesAnswer});
        const RenameOutcome outcome = RunRename(request, yes);
        said_ = yes.failures;
        ends_ = yes.ends;
        return outcome;
    }
    RenameOutcome Undo(const fs::path& folder) {
        ScriptedAsker yes({ScriptedAsker::kYesAnswer});
        const RenameOutcome outcome = UndoRename(folder, folder_ / "log.txt", yes);
        said_ = yes.failures;
        return outcome;
    }

    TempFolder folder_;
    std::vector<std::string> said_;
    std::vector<EndMessage> ends_;
};

TEST_F(RenameRun, AChainEndsRightThroughTemporaryNames) {
    Make({"a", "b", "c"});
    EXPECT_EQ(Run(Request({{"a", "b"}, {"b", "c"}, {"c", "d"}})).renamed, 3U);
    EXPECT_EQ(In(Folder()), (Contents{{"b", "a"}, {"c", "b"}, {"d", "c"}}));
    EXPECT_EQ(ToUtf8(ends_.at(0).text), "更名完成。");
    EXPECT_EQ(Undo(Folder()).renamed, 3U);
    EXPECT_EQ(In(Folder()), (Contents{{"a", "a"}, {"b", "b"}, {"c", "c"}}));
    EXPECT_FALSE(fs::exists(Folder() / kRenameJournalName));
}

TEST_F(RenameRun, ARingOfNamesTurns) {
    Make({"a", "b", "c"});
    EXPECT_EQ(Run(Request({{"a", "b"}, {"b", "c"}, {"c", "a"}})).renamed, 3U);
    EXPECT_EQ(In(Folder()), (Contents{{"a", "c"}, {"b", "a"}, {"c", "b"}}));
    EXPECT_EQ(Undo(Folder()).renamed, 3U);
    EXPECT_EQ(In(Folder()), (Contents{{"a", "a"}, {"b", "b"}, {"c", "c"}}));
}

TEST_F(RenameRun, TwoRowsWithOneTargetAreRefusedBeforeAnythingMoves) {
    Make({"a", "b"});
    const RenameOutcome outcome = Run(Request({{"a", "x"}, {"b", "x"}}));
    EXPECT_EQ(outcome.end, End::kRefused);
    EXPECT_EQ(outcome.message, "a和b的目标都是x。");
    EXPECT_EQ(In(Folder()), (Contents{{"a", "a"}, {"b", "b"}}));
}

TEST_F(RenameRun, ARowThatKeepsItsNameKeepsItFromOthers) {
    Make({"A", "b"});
    EXPECT_EQ(Run(Request({{"A", "a"}, {"b", "A"}})).end, End::kRefused);
}

TEST_F(RenameRun, AFileOutsideTheListIsReplacedOnlyWhenTheUserSaysSo) {
    Make({"a", "mine"});
    RenameRequest request = Request({{"a", "mine"}});
    EXPECT_EQ(Run(request).message, "a: 目标mine是列表以外的文件。");
    EXPECT_EQ(In(Folder()).size(), 2U);
    request.overwrite = true;
    EXPECT_EQ(Run(request).renamed, 1U);
    EXPECT_EQ(In(Folder()), (Contents{{"mine", "a"}}));
}

TEST_F(RenameRun, NamesThatNoFileCanHaveAreRefused) {
    Make({"a"});
    fs::create_directory(Folder() / "sub");
    for (const std::string& name :
         {std::string("../up"), std::string(".."), std::string("x/y"), std::string("n\0l", 3),
          std::string(256, 'x'), std::string(kRenameJournalName), std::string("sub")})
        EXPECT_EQ(Run(Request({{"a", name}})).end, End::kRefused) << name;
    EXPECT_EQ(ToUtf8(ToUtf16(Run(Request({{"a", ""}})).message)),
              "目标文件列表不能有空项。请先点“重新编号”或“复制”。");
    EXPECT_TRUE(fs::exists(Folder() / "a"));
    EXPECT_EQ(Run(Request({{"a", std::string(255, 'x')}})).renamed, 1U);
}

TEST_F(RenameRun, AskBeforeItBegins) {
    Make({"a"});
    ScriptedAsker no({ScriptedAsker::kNoAnswer});
    EXPECT_EQ(RunRename(Request({{"a", "b"}}), no).end, End::kDeclined);
    EXPECT_EQ(no.questions.at(0), "即将开始重命名，目标文件可能被覆盖，继续否？");
    EXPECT_EQ(In(Folder()), (Contents{{"a", "a"}}));
}

TEST_F(RenameRun, AFileThatVanishedIsLoggedAndTheOthersGoOn) {
    Make({"b"});
    const RenameOutcome outcome = Run(Request({{"gone", "x"}, {"b", "y"}}));
    EXPECT_EQ(outcome.renamed, 1U);
    ASSERT_EQ(said_.size(), 1U);
    EXPECT_EQ(said_[0], (Folder() / "gone").native() + ": 文件不存在");
    EXPECT_EQ(ToUtf8(ends_.at(0).text), "更名完成，但有错误。");
    EXPECT_TRUE(fs::exists(folder_ / "log.txt"));
}

TEST_F(RenameRun, NamesThatDifferInCaseAloneStay) {
    Make({"A.jpg"});
    EXPECT_EQ(Run(Request({{"A.jpg", "a.JPG"}})).renamed, 0U);
    EXPECT_EQ(In(Folder()), (Contents{{"A.jpg", "A.jpg"}}));
}

TEST_F(RenameRun, IntoAnotherFolderCopies) {
    Make({"a", "b"});
    RenameRequest request = Request({{"a", "b"}, {"b", "c"}});
    request.target = Other();
    EXPECT_EQ(Run(request).renamed, 2U);
    EXPECT_EQ(In(Folder()).size(), 2U);
    EXPECT_EQ(In(Other()), (Contents{{"b", "a"}, {"c", "b"}}));
    WriteAll(Other() / "c", "changed since");
    const RenameOutcome undone = Undo(Folder());
    EXPECT_EQ(undone.renamed, 1U);
    ASSERT_EQ(said_.size(), 1U);
    EXPECT_EQ(said_[0], (Other() / "c").native() + ": 更名后已改变，不能恢复");
    EXPECT_EQ(In(Other()), (Contents{{"c", "changed since"}}));
    EXPECT_EQ(In(Folder()).size(), 2U);
}

TEST_F(RenameRun, IntoAnotherFolderMovesWhenAsked) {
    Make({"a", "b"});
    RenameRequest request = Request({{"a", "b"}, {"b", "c"}});
    request.target = Other();
    request.move = true;
    EXPECT_EQ(Run(request).renamed, 2U);
    EXPECT_TRUE(In(Folder()).empty());
    EXPECT_EQ(In(Other()), (Contents{{"b", "a"}, {"c", "b"}}));
    EXPECT_EQ(Undo(Folder()).renamed, 2U);
    EXPECT_EQ(In(Folder()), (Contents{{"a", "a"}, {"b", "b"}}));
}

TEST_F(RenameRun, WhatCannotBeTakenBackIsNamedAndStays) {
    Make({"a", "b"});
    Run(Request({{"a", "x"}, {"b", "y"}}));
    WriteAll(Folder() / "a", "a new file of that name");
    const RenameOutcome outcome = Undo(Folder());
    EXPECT_EQ(outcome.renamed, 1U);
    ASSERT_EQ(said_.size(), 1U);
    EXPECT_EQ(said_[0], (Folder() / "x").native() + ": 原来的文件名已被占用，不能恢复");
    EXPECT_EQ(In(Folder()), (Contents{{"a", "a new file of that name"}, {"b", "b"}, {"x", "a"}}));
    fs::remove(Folder() / "a");
    EXPECT_EQ(Undo(Folder()).renamed, 1U) << "its record was kept";
    EXPECT_EQ(Undo(Folder()).end, End::kRefused);
}

TEST_F(RenameRun, AFolderInUseIsRefused) {
    Make({"a"});
    FolderLock other;
    ASSERT_TRUE(other.Take(Folder()));
    const RenameOutcome outcome = Run(Request({{"a", "b"}}));
    EXPECT_EQ(outcome.end, End::kRefused);
    EXPECT_EQ(outcome.message, Folder().native() + ": 另一个程序正在使用这个文件夹。");
}

TEST_F(RenameRun, ADamagedRecordIsToldAndNothingMoves) {
    Make({"a"});
    Run(Request({{"a", "b"}}));
    const std::string whole = ReadAll(Folder() / kRenameJournalName);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        WriteAll(Folder() / kRenameJournalName, whole.substr(0, size));
        EXPECT_EQ(Undo(Folder()).end, End::kRefused) << size;
    }
    EXPECT_EQ(In(Folder()), (Contents{{"b", "a"}}));
    EXPECT_FALSE(ParseJournal(whole + "x"));
    std::string leading = whole;
    leading.replace(leading.find("row\ta\t"), 6, "row\t..\t");
    EXPECT_FALSE(ParseJournal(leading));
}

TEST_F(RenameRun, RecordsNamesOfAnyBytes) {
    RenameJournal journal;
    journal.sourceFolder = journal.targetFolder = "/a b%\n";
    journal.rows.push_back({"\xFF\t\n%41", "vlp", "\xE9", {1, 2, 3, -4}, true});
    const std::optional<RenameJournal> read = ParseJournal(JournalText(journal));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->sourceFolder, journal.sourceFolder);
    EXPECT_EQ(read->rows.at(0).source, journal.rows[0].source);
    EXPECT_EQ(read->rows.at(0).mark, journal.rows[0].mark);
    EXPECT_TRUE(read->rows.at(0).targetStood);
}

TEST_F(RenameRun, ARecordThatCannotBeWrittenEndsItBeforeItBegins) {
    Make({"a"});
    fs::create_directory(Folder() / kRenameJournalName);
    EXPECT_EQ(Run(Request({{"a", "b"}})).end, End::kNotBegun);
    EXPECT_TRUE(fs::exists(Folder() / "a"));
}

/// Runs the renaming in a process that is killed some time after its start.
void RunKilled(const RenameRequest& request, int microseconds) {
    const pid_t child = fork();
    if (child == 0) {
        ScriptedAsker yes({ScriptedAsker::kYesAnswer});
        RunRename(request, yes);
        _exit(0);
    }
    usleep(static_cast<useconds_t>(microseconds));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

TEST_F(RenameRun, KilledAtAnyMomentLosesNoFileAndIsFinishedOrTakenBackSlow) {
    constexpr int kFiles = 60;
    std::minstd_rand random(7);
    Contents before, after;
    std::vector<RenameRow> rows;
    for (int i = 0; i < kFiles; ++i) {
        const std::string name = "p" + std::to_string(i), next = "p" + std::to_string(i + 1);
        rows.push_back({name, i + 1 < kFiles ? next : "p0"});
        before[name] = name;
        after[rows.back().target] = name;
    }
    int unfinished = 0;
    for (int trial = 0; trial < 100; ++trial) {
        fs::remove_all(Folder());
        fs::create_directories(Folder());
        for (const auto& [name, content] : before)
            WriteAll(Folder() / name, content);
        RunKilled(Request(rows), static_cast<int>(random() % 4000));
        ASSERT_EQ(In(Folder()).size(), static_cast<std::size_t>(kFiles)) << "trial " << trial;
        const bool finish = trial % 2 == 0;
        Contents expected = In(Folder());
        if (HasUnfinishedRename(Folder())) {
            ++unfinished;
            ScriptedAsker asker({finish ? 0U : 1U});
            EXPECT_EQ(ResumeRename(Folder(), folder_ / "log.txt", asker).failures.size(), 0U);
            expected = finish ? after : before;
        } else {
            expected = expected == before ? before : after;
        }
        ASSERT_EQ(In(Folder()), expected) << "trial " << trial;
        ASSERT_FALSE(HasUnfinishedRename(Folder()));
    }
    EXPECT_GT(unfinished, 10) << "the kills came at the wrong time";
}

}  // namespace
}  // namespace velloran::test

#include "batch/RunLog.h"

#include <gtest/gtest.h>

#include <string>

#include "support/TempFolder.h"

namespace velloran::test {
namespace {

namespace fs = std::filesystem;

std::string Utf16(std::u16string_view text) {
    std::string bytes;
    for (const char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

/// A whole log: the mark, then the text.
std::string Marked(std::u16string_view text) {
    return std::string("\xFF\xFE").append(Utf16(text));
}

TEST(RunLog, LinesArePathTabTextCrLfBehindOneMark) {
    const TempFolder folder;
    RunLog log(folder / "x_log.txt");
    EXPECT_TRUE(log.LogFailure("漫/a.png", kLogReadFailed));
    EXPECT_TRUE(log.LogFailure("b.png", kLogWriteFailed));
    EXPECT_EQ(ReadAll(folder / "x_log.txt"), Marked(u"漫/a.png\t读取失败\r\nb.png\t写入失败\r\n"));
    EXPECT_EQ(log.CountLines(), 2);
}

TEST(RunLog, Row7HasASecondTab) {
    const TempFolder folder;
    RunLog log(folder / "log");
    EXPECT_TRUE(log.LogFailure("a", 7));
    EXPECT_EQ(ReadAll(folder / "log"), Marked(u"a\t\t文件损坏\r\n"));
}

TEST(RunLog, AFileLoggedTwiceInARowAppearsOnce) {
    const TempFolder folder;
    RunLog log(folder / "log");
    for (const char* path : {"a.png", "A.PNG", "b.png", "a.png"})
        EXPECT_TRUE(log.LogFailure(path, kLogReadFailed));
    EXPECT_EQ(log.CountLines(), 3);
    EXPECT_EQ(ReadAll(folder / "log"),
              Marked(u"a.png\t读取失败\r\nb.png\t读取失败\r\na.png\t读取失败\r\n"));
}

TEST(RunLog, WithoutAFailureThereIsNoFile) {
    const TempFolder folder;
    RunLog log(folder / "log");
    log.Reset();
    EXPECT_TRUE(log.LogFailure("", kLogReadFailed));
    EXPECT_TRUE(log.LogFailure("a", -1));
    EXPECT_TRUE(log.LogFailure("a", 29));
    EXPECT_FALSE(log.HasLogLines());
    EXPECT_TRUE(folder.AllNames().empty());
}

TEST(RunLog, ResetDeletesTheLogOfTheRunBefore) {
    const TempFolder folder;
    WriteAll(folder / "log", Marked(u"of before\t写入失败\r\n"));
    RunLog log(folder / "log");
    log.Reset();
    EXPECT_TRUE(folder.AllNames().empty());
    EXPECT_TRUE(log.LogFailure("a", kLogReadFailed));
    log.Reset();
    EXPECT_FALSE(log.HasLogLines());
    EXPECT_TRUE(folder.AllNames().empty());
    EXPECT_TRUE(log.LogFailure("a", kLogReadFailed)) << "the last path is forgotten too";
    EXPECT_EQ(log.CountLines(), 1);
}

TEST(RunLog, ALogThatAnotherRunWritesIsLeftAloneAndANumberedOneTaken) {
    const TempFolder folder;
    RunLog first(folder / "x_log.txt"), second(folder / "x_log.txt"), third(folder / "x_log.txt");
    EXPECT_TRUE(first.LogFailure("a", kLogReadFailed));
    second.Reset();
    EXPECT_TRUE(second.LogFailure("b", kLogReadFailed));
    EXPECT_TRUE(third.LogFailure("c", kLogReadFailed));
    EXPECT_EQ(ReadAll(folder / "x_log.txt"), Marked(u"a\t读取失败\r\n"));
    EXPECT_EQ(second.File(), folder / "x_log~2.txt");
    EXPECT_EQ(ReadAll(second.File()), Marked(u"b\t读取失败\r\n"));
    EXPECT_EQ(third.File(), folder / "x_log~3.txt");
}

TEST(RunLog, ALogThatARunLeftMeanwhileIsReplaced) {
    const TempFolder folder;
    RunLog log(folder / "log");
    log.Reset();
    // Of a run that began later and ended sooner.
    WriteAll(folder / "log", Marked(u"b\t写入失败\r\n"));
    EXPECT_TRUE(log.LogFailure("a", kLogReadFailed));
    EXPECT_EQ(ReadAll(folder / "log"), Marked(u"a\t读取失败\r\n"));
}

TEST(RunLog, AFileThatIsNoLogIsNeverReplaced) {
    const TempFolder folder;
    WriteAll(folder / "x_log.txt", "notes");
    RunLog log(folder / "x_log.txt");
    log.Reset();
    EXPECT_TRUE(log.LogFailure("a", kLogReadFailed));
    EXPECT_EQ(ReadAll(folder / "x_log.txt"), "notes");
    EXPECT_EQ(ReadAll(folder / "x_log~2.txt"), Marked(u"a\t读取失败\r\n"));
}

TEST(RunLog, APlaceThatCannotBeWrittenIsToldWithItsCause) {
    const TempFolder folder;
    RunLog log(folder / "none" / "log");
    FileError error;
    EXPECT_FALSE(log.LogFailure("a", kLogReadFailed, &error));
    EXPECT_EQ(error.cause, FileError::Cause::kStorage);
    EXPECT_FALSE(log.HasLogLines());
    RunLog onFolder(folder.Path());
    onFolder.Reset();
    EXPECT_TRUE(fs::is_directory(folder.Path()));
    EXPECT_FALSE(onFolder.LogFailure("a", kLogReadFailed));
}

}  // namespace
}  // namespace velloran::test

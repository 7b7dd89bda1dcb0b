#include "io/AtomicFile.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <functional>
#include <string>

#include "support/TempFolder.h"

namespace velloran {
namespace {

namespace fs = std::filesystem;
using test::ReadAll;
using test::TempFolder;
using test::WriteAll;

/// Writes `bytes` to `file` in one go; the error of the step that refused.
bool WriteWhole(const fs::path& file, const std::string& bytes, FileError* error = nullptr) {
    AtomicFile target(file);
    if (!target.Open(error))
        return false;
    target.Write(bytes.data(), bytes.size());
    return target.Commit(error);
}

mode_t ModeOf(const fs::path& file) {
    struct stat status {};
    EXPECT_EQ(stat(file.c_str(), &status), 0);
    return status.st_mode & 07777;
}

/// Runs `work` in a process of its own, so that limits and rights can be given up; the exit
/// status, or 1000 and the signal that ended it.
int InChild(const std::function<int()>& work) {
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0)
        _exit(work());
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

/// Leaves the rights of the administrator, which no permission stops.
void BecomeNobody() {
    if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0))
        _exit(99);
}

TEST(AtomicFile, AppearsWholeAndOnlyAtCommit) {
    TempFolder folder;
    AtomicFile file(folder / "page.bin");
    ASSERT_TRUE(file.Open(nullptr));
    EXPECT_TRUE(file.Write("abc", 3));
    std::fflush(file.Stream());
    EXPECT_FALSE(fs::exists(folder / "page.bin"));
    EXPECT_TRUE(file.Write("def", 3));
    FileError error;
    EXPECT_TRUE(file.Commit(&error)) << error.detail;
    EXPECT_EQ(error.cause, FileError::Cause::kNone);
    EXPECT_EQ(ReadAll(folder / "page.bin"), "abcdef");
    EXPECT_EQ(folder.AllNames(), std::vector<std::string>{"page.bin"});
    EXPECT_EQ(file.Stream(), nullptr);
}

TEST(AtomicFile, WithoutCommitNothingIsLeftAndTheTargetStays) {
    TempFolder folder;
    WriteAll(folder / "old", "before");
    for (const char* name : {"old", "new"}) {
        AtomicFile file(folder / name);
        ASSERT_TRUE(file.Open(nullptr));
        EXPECT_TRUE(file.Write("half", 4));
    }
    EXPECT_EQ(ReadAll(folder / "old"), "before");
    EXPECT_EQ(folder.AllNames(), std::vector<std::string>{"old"});
}

TEST(AtomicFile, ReplacesAnExistingFile) {
    TempFolder folder;
    WriteAll(folder / "page", "a much longer text than the new one");
    EXPECT_TRUE(WriteWhole(folder / "page", "new"));
    EXPECT_EQ(ReadAll(folder / "page"), "new");
    EXPECT_EQ(folder.AllNames(), std::vector<std::string>{"page"});
}

TEST(AtomicFile, AFileMadeMeanwhileIsReplacedToo) {
    TempFolder folder;
    AtomicFile file(folder / "page");
    ASSERT_TRUE(file.Open(nullptr));
    WriteAll(folder / "page", "made by another");
    EXPECT_TRUE(file.Write("ours", 4));
    EXPECT_TRUE(file.Commit(nullptr));
    EXPECT_EQ(ReadAll(folder / "page"), "ours");
    EXPECT_EQ(folder.AllNames(), std::vector<std::string>{"page"});
}

TEST(AtomicFile, AnEmptyFileIsAFileToo) {
    TempFolder folder;
    EXPECT_TRUE(WriteWhole(folder / "empty", ""));
    EXPECT_EQ(fs::file_size(folder / "empty"), 0u);
}

TEST(AtomicFile, StreamCanSeekAndRead) {
    TempFolder folder;
    AtomicFile file(folder / "page");
    ASSERT_TRUE(file.Open(nullptr));
    ASSERT_TRUE(file.Write("0123456789", 10));
    ASSERT_EQ(std::fseek(file.Stream(), 2, SEEK_SET), 0);
    char read[3] = {};
    ASSERT_EQ(std::fread(read, 1, 2, file.Stream()), 2u);
    EXPECT_STREQ(read, "23");
    ASSERT_EQ(std::fseek(file.Stream(), 0, SEEK_SET), 0);
    ASSERT_TRUE(file.Write("X", 1));
    ASSERT_TRUE(file.Commit(nullptr));
    EXPECT_EQ(ReadAll(folder / "page"), "X123456789");
}

TEST(AtomicFile, KeepsTheModeOfTheFileItReplaces) {
    TempFolder folder;
    for (mode_t mode : {0600u, 0644u, 0664u, 0755u, 0777u}) {
        WriteAll(folder / "page", "old");
        ASSERT_EQ(chmod((folder / "page").c_str(), mode), 0);
        ASSERT_TRUE(WriteWhole(folder / "page", "new"));
        EXPECT_EQ(ModeOf(folder / "page"), mode);
    }
}

TEST(AtomicFile, ANewFileTakesTheUmask) {
    TempFolder folder;
    const mode_t old = umask(027);
    EXPECT_TRUE(WriteWhole(folder / "a", "x"));
    umask(0);
    EXPECT_TRUE(WriteWhole(folder / "b", "x"));
    umask(old);
    EXPECT_EQ(ModeOf(folder / "a"), 0640u);
    EXPECT_EQ(ModeOf(folder / "b"), 0666u);
}

TEST(AtomicFile, FollowsSymbolicLinksAndKeepsThem) {
    TempFolder folder;
    fs::create_directory(folder / "sub");
    WriteAll(folder / "sub/real", "old");
    fs::create_symlink("sub/real", folder / "link");
    fs::create_symlink("link", folder / "link2");
    fs::create_symlink("sub/later", folder / "dangling");
    EXPECT_TRUE(WriteWhole(folder / "link2", "new"));
    EXPECT_TRUE(WriteWhole(folder / "dangling", "made"));
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_TRUE(fs::is_symlink(folder / "link2"));
    EXPECT_TRUE(fs::is_symlink(folder / "dangling"));
    EXPECT_EQ(ReadAll(folder / "sub/real"), "new");
    EXPECT_EQ(ReadAll(folder / "sub/later"), "made");
    EXPECT_EQ(folder.AllNames().size(), 6u);
}

TEST(AtomicFile, ALoopOfLinksIsRefused) {
    TempFolder folder;
    fs::create_symlink("b", folder / "a");
    fs::create_symlink("a", folder / "b");
    FileError error;
    EXPECT_FALSE(WriteWhole(folder / "a", "x", &error));
    EXPECT_EQ(error.cause, FileError::Cause::kStorage);
}

TEST(AtomicFile, ANameAsLongAsNamesCanBeWorks) {
    TempFolder folder;
    const std::string longest(255, 'n');
    FileError error;
    EXPECT_TRUE(WriteWhole(folder / longest, "x", &error)) << error.detail;
    EXPECT_TRUE(WriteWhole(folder / longest, "y", &error)) << error.detail;
    EXPECT_EQ(ReadAll(folder / longest), "y");
    EXPECT_FALSE(WriteWhole(folder / (longest + "n"), "x", &error));
    EXPECT_EQ(error.cause, FileError::Cause::kContent) << "it stays too long";
    EXPECT_EQ(folder.AllNames().size(), 1u);
}

TEST(AtomicFile, ARelativeNameIsWrittenInTheCurrentFolder) {
    TempFolder folder;
    const fs::path before = fs::current_path();
    fs::current_path(folder.Path());
    EXPECT_TRUE(WriteWhole("plain", "x"));
    fs::current_path(before);
    EXPECT_EQ(ReadAll(folder / "plain"), "x");
}

struct RefusedTarget {
    const char* name;
    const char* target;
    const char* reason;
};
void PrintTo(const RefusedTarget& c, std::ostream* out) {
    *out << c.name;
}
constexpr RefusedTarget kRefusedTargets[] = {
    {"AFolder", "folder", "is a folder"},
    {"AFolderWithASlash", "folder/", "names no file"},
    {"AMissingFolder", "missing/page", "No such file or directory"},
    {"AFileAsAFolder", "file/page", "Not a directory"},
    {"APipe", "pipe", "is no plain file"},
};
class AtomicFileRefusal : public testing::TestWithParam<RefusedTarget> {};
TEST_P(AtomicFileRefusal, SaysWhyAndTouchesNothing) {
    TempFolder folder;
    fs::create_directory(folder / "folder");
    WriteAll(folder / "file", "x");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    const auto names = folder.AllNames();
    FileError error;
    AtomicFile file(folder / GetParam().target);
    EXPECT_FALSE(file.Open(&error));
    EXPECT_EQ(error.cause, FileError::Cause::kStorage);
    EXPECT_NE(error.detail.find(GetParam().reason), std::string::npos) << error.detail;
    EXPECT_EQ(file.Stream(), nullptr);
    EXPECT_FALSE(file.Write("x", 1));
    EXPECT_FALSE(file.Commit(&error));
    EXPECT_EQ(folder.AllNames(), names);
}
INSTANTIATE_TEST_SUITE_P(Targets, AtomicFileRefusal, testing::ValuesIn(kRefusedTargets),
                         [](const auto& c) { return std::string(c.param.name); });

TEST(AtomicFile, AnEmptyNameIsRefused) {
    FileError error;
    EXPECT_FALSE(WriteWhole("", "x", &error));
    EXPECT_EQ(error.cause, FileError::Cause::kStorage);
}

TEST(AtomicFile, AFolderOrFileWithoutPermissionIsRefused) {
    TempFolder folder;
    fs::create_directory(folder / "closed");
    WriteAll(folder / "readonly", "old");
    ASSERT_EQ(chmod(folder.Path().c_str(), 0777), 0);
    ASSERT_EQ(chmod((folder / "closed").c_str(), 0555), 0);
    ASSERT_EQ(chmod((folder / "readonly").c_str(), 0444), 0);
    EXPECT_EQ(InChild([&] {
                  BecomeNobody();
                  for (const char* name : {"closed/page", "readonly"}) {
                      FileError error;
                      if (WriteWhole(folder / name, "new", &error))
                          return 1;
                      if (error.cause != FileError::Cause::kStorage ||
                          error.detail.find("Permission denied") == std::string::npos)
                          return 2;
                  }
                  return WriteWhole(folder / "allowed", "new") ? 0 : 3;
              }),
              0);
    EXPECT_EQ(ReadAll(folder / "readonly"), "old");
    EXPECT_EQ(folder.AllNames(), (std::vector<std::string>{"allowed", "closed", "readonly"}));
}

/// As on a disk that fills up after `room` bytes.
void LimitFiles(rlim_t room) {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{room, room};
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
        _exit(98);
}

TEST(AtomicFile, AFullDiskIsToldAndTheTargetStays) {
    TempFolder folder;
    WriteAll(folder / "old", "before");
    const std::string bytes(300000, 'x');
    for (const char* name : {"old", "new"})
        EXPECT_EQ(InChild([&] {
                      LimitFiles(100000);
                      FileError error;
                      if (WriteWhole(folder / name, bytes, &error))
                          return 1;
                      return error.cause == FileError::Cause::kStorage &&
                                     error.detail.find("File too large") != std::string::npos
                                 ? 0
                                 : 2;
                  }),
                  0)
            << name;
    EXPECT_EQ(ReadAll(folder / "old"), "before");
    EXPECT_EQ(folder.AllNames(), std::vector<std::string>{"old"});
}

TEST(AtomicFile, AFailureThatOnlyTheFlushMeetsIsToldToo) {
    TempFolder folder;
    EXPECT_EQ(InChild([&] {
                  LimitFiles(10);
                  AtomicFile file(folder / "new");
                  FileError error;
                  if (!file.Open(&error))
                      return 1;
                  if (!file.Write("a hundred bytes would not fit either", 36))
                      return 2;  // still in the stream's own buffer
                  if (file.Commit(&error))
                      return 3;
                  return error.detail.find("File too large") != std::string::npos ? 0 : 4;
              }),
              0);
    EXPECT_EQ(folder.AllNames(), std::vector<std::string>{});
}

TEST(AtomicFile, AFailureOfALibraryThatWritesToTheStreamIsToldToo) {
    TempFolder folder;
    const std::string bytes(300000, 'x');
    EXPECT_EQ(InChild([&] {
                  LimitFiles(100000);
                  AtomicFile file(folder / "new");
                  FileError error;
                  if (!file.Open(&error))
                      return 1;
                  std::fwrite(bytes.data(), 1, bytes.size(), file.Stream());
                  errno = 0;
                  return file.Commit(&error) || error.cause != FileError::Cause::kStorage ? 2 : 0;
              }),
              0);
    EXPECT_EQ(folder.AllNames(), std::vector<std::string>{});
}

TEST(AtomicFile, AfterAFailureNoLaterWriteCountsAsDone) {
    TempFolder folder;
    EXPECT_EQ(InChild([&] {
                  LimitFiles(100000);
                  AtomicFile file(folder / "new");
                  if (!file.Open(nullptr))
                      return 1;
                  const std::string bytes(300000, 'x');
                  if (file.Write(bytes.data(), bytes.size()))
                      return 2;
                  const rlimit unlimited{100000, 100000};
                  setrlimit(RLIMIT_FSIZE, &unlimited);
                  std::rewind(file.Stream());  // which also forgets the stream's error
                  if (file.Write("x", 1))
                      return 3;
                  return file.Commit(nullptr) ? 4 : 0;
              }),
              0);
    EXPECT_EQ(folder.AllNames(), std::vector<std::string>{});
}

TEST(AtomicFile, NothingIsLeftWhenTheProgramIsKilled) {
    TempFolder folder;
    WriteAll(folder / "old", "before");
    EXPECT_EQ(InChild([&] {
                  AtomicFile file(folder / "old"), other(folder / "new");
                  if (!file.Open(nullptr) || !other.Open(nullptr))
                      return 1;
                  file.Write("half", 4);
                  std::fflush(file.Stream());
                  raise(SIGKILL);
                  return 2;
              }),
              1000 + SIGKILL);
    EXPECT_EQ(ReadAll(folder / "old"), "before");
    const auto names = folder.AllNames();
    if (names.size() > 1)
        GTEST_SKIP() << "this file system has no nameless files";
    EXPECT_EQ(names, std::vector<std::string>{"old"});
}

TEST(AtomicFile, OpeningAgainStartsAnew) {
    TempFolder folder;
    AtomicFile file(folder / "page");
    ASSERT_TRUE(file.Open(nullptr));
    ASSERT_TRUE(file.Write("first", 5));
    ASSERT_TRUE(file.Open(nullptr));
    ASSERT_TRUE(file.Write("2", 1));
    ASSERT_TRUE(file.Commit(nullptr));
    EXPECT_EQ(ReadAll(folder / "page"), "2");
    EXPECT_FALSE(file.Commit(nullptr)) << "a file is put in place once";
}

TEST(FileError, TheFirstCauseStays) {
    FileError error;
    errno = ENOSPC;
    EXPECT_FALSE(FailErrno(&error, "cannot write"));
    EXPECT_FALSE(FailContent(&error, "later"));
    EXPECT_EQ(error.cause, FileError::Cause::kStorage);
    EXPECT_EQ(error.detail, "cannot write: No space left on device");
    EXPECT_FALSE(FailStorage(nullptr, "nobody asks"));
}

}  // namespace
}  // namespace velloran

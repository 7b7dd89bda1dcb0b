#include "io/Leftovers.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <functional>
#include <thread>

#include "io/AtomicFile.h"
#include "support/NoNamelessFiles.h"
#include "support/TempFolder.h"

namespace velloran::test {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

/// Runs `work` in a process whose file system has no files without a name; -1 where the system
/// cannot be made so.
int WithoutNamelessFiles(const std::function<int()>& work) {
    constexpr int kCannot = 77;
    const pid_t child = fork();
    if (child == 0)
        _exit(RefuseNamelessFiles() ? work() : kCannot);
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    return code == kCannot ? -1 : code;
}

TEST(Leftovers, OnlyNamesOfTheOneFormAreTemporary) {
    EXPECT_TRUE(IsTemporaryName(".velloran-0123456789"));
    EXPECT_TRUE(IsTemporaryName(MakeTemporaryName("folder").filename().native()));
    for (const char* name : {".velloran-", ".velloran-012345678", ".velloran-01234567890",
                             ".velloran-012345678A", "velloran-01234567890", ".velloran-notes.txt"})
        EXPECT_FALSE(IsTemporaryName(name)) << name;
}

TEST(Leftovers, AKilledWriterLeavesAFileThatIsRemovedLater) {
    const TempFolder folder;
    const int code = WithoutNamelessFiles([&] {
        AtomicFile file(folder / "page.png");
        if (!file.Open(nullptr) || !file.Write("half", 4))
            return 1;
        raise(SIGKILL);
        return 2;
    });
    if (code < 0)
        GTEST_SKIP() << "the system has no filters";
    ASSERT_EQ(code, 1000 + SIGKILL);
    const Names left = folder.AllNames();
    ASSERT_EQ(left.size(), 1U);
    EXPECT_TRUE(IsTemporaryName(left[0]));
    EXPECT_EQ(RemoveLeftovers(folder.Path()), 1);
    EXPECT_TRUE(folder.AllNames().empty());
}

TEST(Leftovers, AFileThatIsBeingWrittenStays) {
    const TempFolder folder;
    const int code = WithoutNamelessFiles([&] {
        AtomicFile file(folder / "page.png");
        if (!file.Open(nullptr) || !file.Write("whole", 5))
            return 1;
        if (folder.AllNames().size() != 1 || RemoveLeftovers(folder.Path()) != 0)
            return 2;
        return file.Commit(nullptr) ? 0 : 3;
    });
    if (code < 0)
        GTEST_SKIP() << "the system has no filters";
    EXPECT_EQ(code, 0);
    EXPECT_EQ(folder.AllNames(), Names{"page.png"});
    EXPECT_EQ(ReadAll(folder / "page.png"), "whole");
}

TEST(Leftovers, WritersAndCleanersAtOnceLoseNoPage) {
    const TempFolder folder;
    const int code = WithoutNamelessFiles([&] {
        std::atomic<bool> done{false};
        std::thread cleaner([&] {
            while (!done)
                RemoveLeftovers(folder.Path());
        });
        int failed = 0;
        for (int i = 0; i < 300; ++i) {
            AtomicFile file(folder / std::to_string(i % 7));
            failed += file.Open(nullptr) && file.Write("x", 1) && file.Commit(nullptr) ? 0 : 1;
        }
        done = true;
        cleaner.join();
        return failed > 100 ? 100 : failed;
    });
    if (code < 0)
        GTEST_SKIP() << "the system has no filters";
    EXPECT_EQ(code, 0);
    EXPECT_EQ(folder.AllNames().size(), 7U);
}

TEST(Leftovers, LinksAndFoldersOfSuchANameStay) {
    const TempFolder folder;
    WriteAll(folder / "page", "x");
    fs::create_symlink(folder / "page", folder / ".velloran-0000000000");
    fs::create_directory(folder / ".velloran-1111111111");
    EXPECT_EQ(RemoveLeftovers(folder.Path()), 0);
    EXPECT_EQ(RemoveLeftovers(folder / "none"), 0);
    EXPECT_TRUE(fs::exists(folder / "page"));
}

}  // namespace
}  // namespace velloran::test

// How runs end that do not come to their own end: signals, full disks, folders that refuse.

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <chrono>
#include <nlohmann/json.hpp>
#include <thread>

#include "BatchFolder.h"

namespace velloran::test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

class BatchEnds : public BatchFolder {
 protected:
    /// Pages whose enhancement takes long.
    void WriteSlowPages(int count) {
        for (int i = 0; i < count; ++i)
            WritePage(Source() / (std::to_string(i) + ".bmp"), 1500, 1500, /*color=*/true);
    }
    /// How long a run goes on behind the signals, in seconds; -1 when it did not begin.
    double SecondsToEnd(const std::vector<int>& signals, int& status) {
        std::vector<std::string> arguments = {"batch", "src",
                                              "out",   "--jobs",
                                              "1",     "--progress",
                                              "--log", "log.txt",
                                              "-s",    "PARA_LUM_CORRECT=4",
                                              "-s",    "PARA_ADJUST_MULTI_SCALE_R=200"};
        std::chrono::steady_clock::time_point asked;
        std::thread sender;
        const Outcome outcome = RunProgram(
            arguments, {.folder = folder_.Path(), .onError = [&](pid_t run) {
                            sender = std::thread([&, run] {
                                for (const int number : signals) {
                                    std::this_thread::sleep_for(std::chrono::milliseconds(300));
                                    asked = std::chrono::steady_clock::now();
                                    kill(run, number);
                                }
                            });
                        }});
        if (!sender.joinable())
            return -1;
        sender.join();
        status = outcome.status;
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - asked).count();
    }
};

TEST_F(BatchEnds, ASecondSignalEndsAtOnceAndLeavesNoFile) {
    WriteSlowPages(12);
    int status = 0;
    const double seconds = SecondsToEnd({SIGINT, SIGINT}, status);
    EXPECT_EQ(status, 130);
    EXPECT_GE(seconds, 0);
    for (const std::string& name : FilesIn(Target()))
        EXPECT_EQ(name.find(".velloran-"), std::string::npos) << name;
}

TEST_F(BatchEnds, AHangUpIs129) {
    WriteSlowPages(6);
    int status = 0;
    SecondsToEnd({SIGHUP}, status);
    EXPECT_EQ(status, 129);
}

TEST_F(BatchEnds, TemporaryFilesThatAKillLeftGoAtTheNextRun) {
    WriteFlat(Source() / "a.png", 10);
    WriteFlat(Source() / "sub" / "a.png", 10);
    fs::create_directories(Target() / "sub");
    WriteAll(Target() / ".velloran-0123456789", "half a page");
    WriteAll(Target() / "sub" / ".velloran-abcdefghij", "half a page");
    WriteAll(Target() / ".velloran-notes", "of the user");
    // One that a living run writes.
    const fs::path busy = Target() / ".velloran-zzzzzzzzzz";
    WriteAll(busy, "half a page");
    const int held = open(busy.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(flock(held, LOCK_EX), 0);
    EXPECT_EQ(Run({"src", "out"}).status, 0);
    EXPECT_EQ(FilesIn(Target()),
              (Names{".velloran-notes", ".velloran-zzzzzzzzzz", "a.jpg", "sub/a.jpg"}));
    close(held);
    EXPECT_EQ(RunProgram({"enhance", "src/a.png", "out/b.png"}, {.folder = folder_.Path()}).status,
              0);
    EXPECT_FALSE(fs::exists(busy));
}

TEST_F(BatchEnds, ALimitOfTheFileSizeIsAFullDisk) {
    WritePage(Source() / "a.png", 300, 300, /*color=*/true);
    const Outcome batch = Run({"src", "out", "--ext", "bmp"}, {.fileSizeLimit = 20000});
    EXPECT_EQ(batch.status, 4) << batch.err;
    EXPECT_TRUE(FilesIn(Target()).empty());
    const Outcome enhance = RunProgram({"enhance", "src/a.png", "out/a.bmp"},
                                       {.folder = folder_.Path(), .fileSizeLimit = 20000});
    EXPECT_EQ(enhance.status, 4) << enhance.err;
    EXPECT_TRUE(FilesIn(Target()).empty());
}

TEST_F(BatchEnds, ABadTargetFolderIsToldOnce) {
    for (int i = 0; i < 42; ++i)
        WriteFlat(Source() / (std::to_string(i) + ".png"), i);
    WriteAll(folder_ / "out", "a file where the folder should be");
    const Outcome outcome = Run({"src", "out", "--json"});
    EXPECT_EQ(outcome.status, 4);
    int told = 0;
    for (const std::string& line : LinesOf(outcome.err))
        told += line.starts_with("out: 写入失败") ? 1 : 0;
    EXPECT_EQ(told, 1) << outcome.err;
    EXPECT_LE(LinesOf(outcome.err).size(), 2U) << outcome.err;
    EXPECT_EQ(Json::parse(outcome.out)["failed"].size(), 42U);
    EXPECT_EQ(ReadAll(folder_ / "log.txt"), RunLogOf("out\t写入失败\r\n"));
}

TEST_F(BatchEnds, AFolderWithoutPermissionIsToldOnceAndTheOthersAreWritten) {
    if (geteuid() != 0)
        GTEST_SKIP() << "wants root to become another user";
    for (const char* name : {"shut/a.png", "shut/b.png", "shut/c.png", "open/a.png"})
        WriteFlat(Source() / name, 10);
    fs::create_directories(Target() / "shut");
    fs::create_directories(Target() / "open");
    fs::permissions(Target() / "open", fs::perms::all);
    const Outcome outcome = Run({"src", "out"}, {.asNobody = true});
    EXPECT_EQ(outcome.status, 4);
    int told = 0;
    for (const std::string& line : LinesOf(outcome.err))
        told += line.starts_with("out/shut: 写入失败") ? 1 : 0;
    EXPECT_EQ(told, 1) << outcome.err;
    EXPECT_EQ(FilesIn(Target()), Names{"open/a.jpg"});
}

TEST_F(BatchEnds, AWriteThatFailedNamesItsSource) {
    WriteFlat(Source() / "Page.png", 10);
    fs::create_directories(Target() / "page.jpg");
    const Outcome outcome = Run({"src", "out"});
    EXPECT_EQ(outcome.status, 4);
    EXPECT_TRUE(outcome.err.starts_with("out/page.jpg: 写入失败")) << outcome.err;
    EXPECT_NE(outcome.err.find("src/Page.png"), std::string::npos) << outcome.err;
}

TEST_F(BatchEnds, ANameThatGrowsTooLongIsRefusedWithItsReason) {
    const std::string name = std::string(251, 'x') + ".png";  // 255 bytes
    WriteFlat(Source() / name, 10);
    const Outcome fits = Run({"src", "out"});
    EXPECT_EQ(fits.status, 0) << fits.err;
    const Outcome batch = Run({"src", "out", "--ext", "webp", "-v"});
    EXPECT_EQ(batch.status, 1) << batch.err;
    EXPECT_NE(batch.err.find("too long"), std::string::npos) << batch.err;
    const Outcome enhance =
        RunProgram({"enhance", "src/" + name, "out/" + std::string(251, 'x') + ".webp", "-v"},
                   {.folder = folder_.Path()});
    EXPECT_EQ(enhance.status, 1) << enhance.err;
    EXPECT_NE(enhance.err.find("too long"), std::string::npos) << enhance.err;
}

TEST_F(BatchEnds, InPlaceAsRootOwnerAndExtendedAttributesStay) {
    if (geteuid() != 0)
        GTEST_SKIP() << "wants root";
    const fs::path page = Source() / "a.png";
    WriteFlat(page, 10);
    ASSERT_EQ(chown(page.c_str(), 65534, 65534), 0);
    ASSERT_EQ(chmod(page.c_str(), 0640), 0);
    const bool hasAttributes = setxattr(page.c_str(), "user.note", "mine", 4, 0) == 0;
    EXPECT_EQ(Run({"src", "src", "--yes", "--ext", "png", "-s", "PARA_NEGATE=1"}).status, 0);
    EXPECT_EQ(GrayOf(page), 245);
    struct stat status {};
    ASSERT_EQ(stat(page.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 65534U);
    EXPECT_EQ(status.st_gid, 65534U);
    EXPECT_EQ(status.st_mode & 07777, 0640U);
    if (hasAttributes) {
        char note[8] = {};
        EXPECT_EQ(getxattr(page.c_str(), "user.note", note, sizeof note), 4);
        EXPECT_STREQ(note, "mine");
    }
}

}  // namespace
}  // namespace velloran::test

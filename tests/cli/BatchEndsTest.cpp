// How runs end that do not come to their own end: signals, full disks, folders that refuse.

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <nlohmann/json.hpp>
#include <thread>

#include "BatchFolder.h"
#include "support/Sanitized.h"

namespace velloran::test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

class BatchEnds : public BatchFolder {
 protected:
    /// So many sources that the lines of --dry-run fill any pipe.
    void WriteManySources() const {
        for (int i = 0; i < 1500; ++i)
            WriteAll(Source() / (std::to_string(i) + std::string(100, 'x') + ".png"), "x");
    }

    /// A run that waits until its output is read, which nobody does.
    class BlockedRun {
     public:
        explicit BlockedRun(const fs::path& folder) {
            std::array<int, 2> ends{};
            EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
            read_ = ends[0];
            const std::string program = BuiltProgram().native();
            child_ = fork();
            if (child_ == 0) {
                dup2(ends[1], STDOUT_FILENO);
                if (chdir(folder.c_str()) == 0)
                    execl(program.c_str(), "velloran", "batch", "src", "out", "--dry-run",
                          static_cast<char*>(nullptr));
                _exit(126);
            }
            close(ends[1]);
            WaitUntilFull();
        }
        ~BlockedRun() {
            if (!HasEnded(0)) {
                kill(child_, SIGKILL);
                waitpid(child_, &status_, 0);
            }
            close(read_);
        }
        BlockedRun(const BlockedRun&) = delete;
        BlockedRun& operator=(const BlockedRun&) = delete;

        void Send(int number) const { kill(child_, number); }
        bool HasEnded(int milliseconds) {
            for (int waited = 0;; waited += 10) {
                ended_ = ended_ || waitpid(child_, &status_, WNOHANG) == child_;
                if (ended_ || waited >= milliseconds)
                    return ended_;
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            }
        }
        int ExitStatus() const { return WIFEXITED(status_) ? WEXITSTATUS(status_) : -1; }
        /// Reads all, so that the run can go on.
        void Drain() const {
            std::array<char, 65536> bytes{};
            while (read(read_, bytes.data(), bytes.size()) > 0) {
            }
        }

     private:
        void WaitUntilFull() const {
            int held = 0;
            for (int before = -1; held != before || held < 4096;) {
                before = held;
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
                if (ioctl(read_, FIONREAD, &held) != 0)
                    return;
            }
        }

        int read_ = -1;
        pid_t child_ = -1;
        int status_ = 0;
        bool ended_ = false;
    };
};

TEST_F(BatchEnds, SlowASecondSignalEndsAtOnceWhateverTheProgramWaitsFor) {
    WriteManySources();
    BlockedRun run(folder_.Path());
    run.Send(SIGINT);
    EXPECT_FALSE(run.HasEnded(300)) << "the first one asks politely";
    run.Send(SIGINT);
    ASSERT_TRUE(run.HasEnded(5000));
    EXPECT_EQ(run.ExitStatus(), 130);
}

TEST_F(BatchEnds, SlowTheSameWishSentTwiceIsOneWish) {
    WriteManySources();
    BlockedRun run(folder_.Path());
    run.Send(SIGTERM);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    run.Send(SIGTERM);  // as to a process and to its group
    EXPECT_FALSE(run.HasEnded(300));
    run.Drain();
    ASSERT_TRUE(run.HasEnded(5000));
    EXPECT_EQ(run.ExitStatus(), 143);
}

TEST_F(BatchEnds, SlowAHangUpIs129) {
    WriteManySources();
    BlockedRun run(folder_.Path());
    run.Send(SIGHUP);
    run.Drain();
    ASSERT_TRUE(run.HasEnded(5000));
    EXPECT_EQ(run.ExitStatus(), 129);
}

TEST_F(BatchEnds, APageWithoutMemoryIsNotWrittenAndIsRow6) {
    if (test::kSanitized)
        GTEST_SKIP() << "the sanitizer needs more address space than the limit leaves";
    WritePage(Source() / "a.bmp", 1500, 2000, /*color=*/true);
    const std::vector<std::string> arguments = {"src",   "out",
                                                "--ext", "png",
                                                "-s",    "PARA_LUM_CORRECT=4",
                                                "-s",    "PARA_ADJUST_MULTI_SCALE_R=8"};
    Surroundings around{.variables = {{"OMP_NUM_THREADS", "1"}}};
    ASSERT_EQ(Run(arguments, around).status, 0);
    const std::string whole = ReadAll(Target() / "a.png");
    bool wasScarce = false, wasEnough = false;
    for (long megabytes = 70; megabytes <= 370 && !wasEnough; megabytes += 20) {
        fs::remove_all(Target());
        around.memoryLimit = megabytes << 20;
        const Outcome outcome = Run(arguments, around);
        SCOPED_TRACE(std::to_string(megabytes) + ": " + outcome.err);
        if (outcome.status == 0) {
            wasEnough = true;
            EXPECT_EQ(ReadAll(Target() / "a.png"), whole);
            continue;
        }
        EXPECT_TRUE(FilesIn(Target()).empty());
        if (outcome.err.starts_with("src/a.bmp: ")) {  // else the program itself could not begin
            wasScarce = true;
            EXPECT_EQ(outcome.status, 4);
            EXPECT_EQ(ReadAll(folder_ / "log.txt"), RunLogOf("src/a.bmp\t内存不足\r\n"));
        }
    }
    EXPECT_TRUE(wasScarce && wasEnough);
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

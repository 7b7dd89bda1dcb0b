// Programs that may take little memory: a page comes out whole and right, or not at all, and the
// program says so.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "RunProgram.h"
#include "support/Sanitized.h"
#include "support/TempFolder.h"

namespace velloran::test {
namespace {

namespace fs = std::filesystem;

constexpr long kMiB = 1 << 20;

std::string BytesOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class OutOfMemory : public testing::Test {
 protected:
    void SetUp() override {
        fs::create_directories(folder_ / "src");
        WritePage(folder_ / "src/a.bmp", 1400, 1000, /*color=*/true);
        ASSERT_EQ(RunProgram(Enhance("whole.bmp"), Around()).status, 0);
        whole_ = BytesOf(folder_ / "whole.bmp");
    }
    Surroundings Around(std::optional<long> memory = {}) const {
        return {.folder = folder_.Path(),
                .variables = {{"OMP_NUM_THREADS", "1"}},
                .memoryLimit = memory};
    }
    static std::vector<std::string> Enhance(const char* target) {
        return {"enhance",
                "src/a.bmp",
                target,
                "-s",
                "PARA_LUM_CORRECT=4",
                "-s",
                "PARA_ADJUST_MULTI_SCALE_R=8"};
    }

    TempFolder folder_;
    std::string whole_;
};

TEST_F(OutOfMemory, EnhanceWritesTheWholeResultOrNone) {
    if (test::kSanitized)
        GTEST_SKIP() << "the sanitizer needs more address space than the limit leaves";
    int short_ = 0, done = 0;
    for (long limit = 40; limit <= 400; limit += 8) {
        fs::remove(folder_ / "out.bmp");
        const Outcome outcome = RunProgram(Enhance("out.bmp"), Around(limit * kMiB));
        if (outcome.status == 0) {
            ++done;
            EXPECT_EQ(BytesOf(folder_ / "out.bmp"), whole_) << "another picture with " << limit;
            continue;
        }
        EXPECT_FALSE(fs::exists(folder_ / "out.bmp")) << limit;
        if (outcome.err.find("内存不足") != std::string::npos) {
            EXPECT_EQ(outcome.status, 4) << outcome.err;
            ++short_;
        }
    }
    EXPECT_GT(short_, 0) << "no limit let the page be read and not be done";
    EXPECT_GT(done, 0);
}

TEST_F(OutOfMemory, BatchDoesNotCountSuchAPageAsConverted) {
    if (test::kSanitized)
        GTEST_SKIP() << "the sanitizer needs more address space than the limit leaves";
    int short_ = 0;
    for (long limit = 40; limit <= 400 && short_ < 3; limit += 8) {
        fs::remove_all(folder_ / "out");
        fs::remove(folder_ / "log.txt");
        const Outcome outcome = RunProgram(
            {"batch", "src", "out", "--ext", "bmp", "--jobs", "1", "--log", "log.txt", "--memory",
             "100G", "-s", "PARA_LUM_CORRECT=4", "-s", "PARA_ADJUST_MULTI_SCALE_R=8"},
            Around(limit * kMiB));
        if (outcome.status == 0) {
            EXPECT_EQ(BytesOf(folder_ / "out/a.bmp"), whole_) << limit;
            continue;
        }
        EXPECT_FALSE(fs::exists(folder_ / "out/a.bmp")) << limit;
        EXPECT_EQ(outcome.out.find("1个文件转换成功"), std::string::npos) << limit;
        if (outcome.err.find("src/a.bmp: 内存不足") == std::string::npos)
            continue;
        ++short_;
        EXPECT_EQ(outcome.status, 4) << outcome.err;
        // The log is UTF-16: the row's text in its low bytes first.
        EXPECT_NE(BytesOf(folder_ / "log.txt").find("\x85\x51\x58\x5b\x0d\x4e\xb3\x8d"),
                  std::string::npos);
    }
    EXPECT_GT(short_, 0);
}

}  // namespace
}  // namespace velloran::test

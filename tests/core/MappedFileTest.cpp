#include "core/MappedFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <string>

#include "support/FailingAllocator.h"
#include "support/TempFolder.h"

namespace velloran {
namespace {

namespace fs = std::filesystem;
using test::TempFolder;
using test::WriteAll;

std::string TextOf(const MappedFile& file) {
    return {file.Bytes().begin(), file.Bytes().end()};
}

TEST(MappedFile, ShowsTheBytesOfSmallAndLargeFiles) {
    TempFolder folder;
    for (std::size_t size : {std::size_t{1}, std::size_t{4096}, (std::size_t{1} << 20),
                             (std::size_t{1} << 20) + 1, std::size_t{3} << 20}) {
        std::string bytes(size, 0);
        for (std::size_t i = 0; i < size; ++i)
            bytes[i] = static_cast<char>(i * 7 + i / 251);
        WriteAll(folder / "file", bytes);
        MappedFile file;
        ASSERT_TRUE(file.Open(folder / "file"));
        EXPECT_TRUE(TextOf(file) == bytes) << size;
    }
}

struct RefusedSource {
    const char* name;
    const char* file;
    const char* reason;
};
void PrintTo(const RefusedSource& c, std::ostream* out) {
    *out << c.name;
}
constexpr RefusedSource kRefusedSources[] = {
    {"AMissingFile", "missing", "No such file or directory"},
    {"AFolder", "folder", "is a folder"},
    {"AnEmptyFile", "empty", "is empty"},
    {"APipe", "pipe", "is no plain file"},  // and does not hang on it
    {"ADanglingLink", "dangling", "No such file or directory"},
    {"NoName", "", "is a folder"},
};
class MappedFileRefusal : public testing::TestWithParam<RefusedSource> {};
TEST_P(MappedFileRefusal, SaysWhy) {
    TempFolder folder;
    fs::create_directory(folder / "folder");
    WriteAll(folder / "empty", "");
    fs::create_symlink("nowhere", folder / "dangling");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    FileError error;
    MappedFile file;
    EXPECT_FALSE(file.Open(folder / GetParam().file, &error));
    EXPECT_EQ(error.cause, FileError::Cause::kContent);
    EXPECT_NE(error.detail.find(GetParam().reason), std::string::npos) << error.detail;
    EXPECT_TRUE(file.Bytes().empty());
    EXPECT_FALSE(file.Open(folder / GetParam().file)) << "nobody needs to ask why";
}
INSTANTIATE_TEST_SUITE_P(Sources, MappedFileRefusal, testing::ValuesIn(kRefusedSources),
                         [](const auto& c) { return std::string(c.param.name); });

TEST(MappedFile, AFileWithoutPermissionIsRefused) {
    TempFolder folder;
    WriteAll(folder / "closed", "x");
    ASSERT_EQ(chmod(folder.Path().c_str(), 0755), 0);
    ASSERT_EQ(chmod((folder / "closed").c_str(), 0), 0);
    const pid_t child = fork();
    if (child == 0) {
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0))
            _exit(99);
        FileError error;
        MappedFile file;
        const bool opened = file.Open(folder / "closed", &error);
        _exit(!opened && error.detail.find("Permission denied") != std::string::npos ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST(MappedFile, OpeningAnotherFileReplacesTheFirst) {
    TempFolder folder;
    WriteAll(folder / "a", "first");
    WriteAll(folder / "b", std::string(std::size_t{2} << 20, 'b'));
    MappedFile file;
    ASSERT_TRUE(file.Open(folder / "a"));
    ASSERT_TRUE(file.Open(folder / "b"));
    EXPECT_EQ(file.Bytes().size(), std::size_t{2} << 20);
    ASSERT_TRUE(file.Open(folder / "a"));
    EXPECT_EQ(TextOf(file), "first");
    EXPECT_FALSE(file.Open(folder / "missing"));
    EXPECT_TRUE(file.Bytes().empty());
}

TEST(MappedFile, ASmallFileThatIsCutShortMeanwhileStaysReadable) {
    TempFolder folder;
    WriteAll(folder / "page", std::string(100000, 'p'));
    MappedFile file;
    ASSERT_TRUE(file.Open(folder / "page"));
    fs::resize_file(folder / "page", 10);
    EXPECT_EQ(std::count(file.Bytes().begin(), file.Bytes().end(), 'p'), 100000);
}

TEST(MappedFile, RefusesWithoutMemory) {
    TempFolder folder;
    WriteAll(folder / "page", "text");
    const fs::path path = folder / "page";
    MappedFile file;
    const test::FailAllocation fail(1, /*onlyOne=*/true);
    EXPECT_FALSE(file.Open(path));
    EXPECT_TRUE(file.Bytes().empty());
}

}  // namespace
}  // namespace velloran

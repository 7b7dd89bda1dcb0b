#include "io/FileSource.h"

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

std::string TextOf(FileSource& file) {
    const auto bytes = file.AllBytes(nullptr);
    return bytes ? std::string(bytes->begin(), bytes->end()) : std::string();
}

TEST(FileSource, ShowsTheBytesOfSmallAndLargeFiles) {
    TempFolder folder;
    for (std::size_t size : {std::size_t{1}, std::size_t{4096}, (std::size_t{1} << 20),
                             (std::size_t{1} << 20) + 1, std::size_t{3} << 20}) {
        std::string bytes(size, 0);
        for (std::size_t i = 0; i < size; ++i)
            bytes[i] = static_cast<char>(i * 7 + i / 251);
        WriteAll(folder / "file", bytes);
        FileSource file;
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
class FileSourceRefusal : public testing::TestWithParam<RefusedSource> {};
TEST_P(FileSourceRefusal, SaysWhy) {
    TempFolder folder;
    fs::create_directory(folder / "folder");
    WriteAll(folder / "empty", "");
    fs::create_symlink("nowhere", folder / "dangling");
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    FileError error;
    FileSource file;
    EXPECT_FALSE(file.Open(folder / GetParam().file, &error));
    EXPECT_EQ(error.cause, FileError::Cause::kContent);
    EXPECT_NE(error.detail.find(GetParam().reason), std::string::npos) << error.detail;
    EXPECT_EQ(file.Size(), 0U);
    EXPECT_FALSE(file.Open(folder / GetParam().file)) << "nobody needs to ask why";
}
INSTANTIATE_TEST_SUITE_P(Sources, FileSourceRefusal, testing::ValuesIn(kRefusedSources),
                         [](const auto& c) { return std::string(c.param.name); });

TEST(FileSource, AFileWithoutPermissionIsRefused) {
    TempFolder folder;
    WriteAll(folder / "closed", "x");
    ASSERT_EQ(chmod(folder.Path().c_str(), 0755), 0);
    ASSERT_EQ(chmod((folder / "closed").c_str(), 0), 0);
    const pid_t child = fork();
    if (child == 0) {
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0))
            _exit(99);
        FileError error;
        FileSource file;
        const bool opened = file.Open(folder / "closed", &error);
        _exit(!opened && error.detail.find("Permission denied") != std::string::npos ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST(FileSource, OpeningAnotherFileReplacesTheFirst) {
    TempFolder folder;
    WriteAll(folder / "a", "first");
    WriteAll(folder / "b", std::string(std::size_t{2} << 20, 'b'));
    FileSource file;
    ASSERT_TRUE(file.Open(folder / "a"));
    ASSERT_TRUE(file.Open(folder / "b"));
    EXPECT_EQ(file.Size(), std::size_t{2} << 20);
    EXPECT_EQ(TextOf(file), std::string(std::size_t{2} << 20, 'b'));
    ASSERT_TRUE(file.Open(folder / "a"));
    EXPECT_EQ(TextOf(file), "first");
    EXPECT_FALSE(file.Open(folder / "missing"));
    EXPECT_EQ(file.Size(), 0U);
}

TEST(FileSource, AFileThatIsCutShortMeanwhileComesShort) {
    TempFolder folder;
    for (const std::size_t size : {std::size_t{100000}, std::size_t{4} << 20}) {
        WriteAll(folder / "page", std::string(size, 'p'));
        FileSource file;
        ASSERT_TRUE(file.Open(folder / "page"));
        fs::resize_file(folder / "page", 10);
        EXPECT_EQ(TextOf(file), std::string(10, 'p'));
        EXPECT_EQ(file.Size(), size);
        EXPECT_TRUE(file.CameShort());
    }
}

TEST(FileSource, BytesThatWereReadStayWhateverBecomesOfTheFile) {
    TempFolder folder;
    WriteAll(folder / "page", std::string(3 << 20, 'p'));
    FileSource file;
    ASSERT_TRUE(file.Open(folder / "page"));
    const auto bytes = file.AllBytes(nullptr);
    fs::resize_file(folder / "page", 0);
    ASSERT_TRUE(bytes);
    EXPECT_EQ(std::count(bytes->begin(), bytes->end(), 'p'), 3 << 20);
}

TEST(FileSource, AFileThatGrowsMeanwhileEndsWhereItEnded) {
    TempFolder folder;
    WriteAll(folder / "page", "text");
    FileSource file;
    ASSERT_TRUE(file.Open(folder / "page"));
    WriteAll(folder / "page", "text and more");
    EXPECT_EQ(TextOf(file), "text");
    EXPECT_FALSE(file.CameShort());
}

}  // namespace
}  // namespace velloran

// Resolutions set in place: every byte of a file but its mark stays.

#include "documents/measure/SetDpi.h"

#include <gtest/gtest.h>

#include "documents/measure/FileTypes.h"
#include "files/ImageFiles.h"
#include "params/ParaBlock.h"
#include "support/Images.h"
#include "support/ScriptedAsker.h"
#include "support/TempFolder.h"

namespace velloran::test {
namespace {

namespace fs = std::filesystem;

class SetDpi : public testing::Test {
 protected:
    std::string Write(const std::string& name, int dpi = 96) {
        CDibImage image = Noise(20, 10, 24);
        EXPECT_TRUE(SaveImageFile(folder_ / name, image, 90, dpi, 2, false, CParaBlock()));
        return ReadAll(folder_ / name);
    }
    DpiOutcome Run(int dpi) {
        return SetFolderDpi({.walk = {folder_.Path(), FilterOfAll(DpiFileTypes()), true},
                             .dpi = dpi,
                             .log = log_ / "log.txt"},
                            asker_);
    }
    std::string Now(const std::string& name) const { return ReadAll(folder_ / name); }
    int DpiOf(const std::string& name) const {
        int type = 0;
        ImageInfo info;
        EXPECT_TRUE(ReadImageInfo(folder_ / name, type, info));
        EXPECT_EQ(info.xDpi, info.yDpi);
        return info.xDpi;
    }
    /// Places of the bytes in which two files of one length differ.
    static std::vector<std::size_t> Changed(const std::string& a, const std::string& b) {
        EXPECT_EQ(a.size(), b.size());
        std::vector<std::size_t> places;
        for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i)
            if (a[i] != b[i])
                places.push_back(i);
        return places;
    }

    TempFolder folder_, log_;
    ScriptedAsker asker_;
};

TEST_F(SetDpi, EightThousandIsTakenAndOneMoreRefused) {
    Write("a.bmp");
    EXPECT_EQ(Run(8000).changed, 1U);
    const std::string before = Now("a.bmp");
    const DpiOutcome refused = Run(8001);
    EXPECT_EQ(ToUtf8(refused.refusal), "抱歉，DPI须在0～8000之间。");
    EXPECT_EQ(refused.files, 0U);
    EXPECT_EQ(Now("a.bmp"), before);
}

TEST_F(SetDpi, GivesABmpPixelsPerMetre) {
    const std::string before = Write("a.bmp");
    EXPECT_EQ(Run(300).changed, 1U);
    const std::string after = Now("a.bmp");
    const std::string mark = {'\x23', '\x2E', 0, 0};  // 11811
    EXPECT_EQ(after.substr(38, 4), mark);
    EXPECT_EQ(after.substr(42, 4), mark);
    EXPECT_EQ(after.substr(0, 38), before.substr(0, 38));
    EXPECT_EQ(after.substr(46), before.substr(46));
    EXPECT_EQ(Run(0).changed, 1U);
    EXPECT_EQ(Now("a.bmp").substr(38, 8), std::string(8, '\0'));
    EXPECT_EQ(ToUtf8(asker_.ends.back().text), "处理完毕。");
}

TEST_F(SetDpi, FailsABmpWithTheShortHead) {
    std::string bytes =
        "BM" + std::string(12, '\0') + std::string({12, 0, 0, 0}) + std::string(60, '\1');
    WriteAll(folder_ / "short.bmp", bytes);
    const DpiOutcome outcome = Run(300);
    ASSERT_EQ(outcome.failures.size(), 1U);
    EXPECT_EQ(ToUtf8(outcome.failures[0].message), "转换失败");
    EXPECT_FALSE(outcome.failures[0].storage);
    EXPECT_EQ(Now("short.bmp"), bytes);
    EXPECT_EQ(ToUtf8(asker_.ends.back().logQuestion), "您想查看错误记录吗？");
    EXPECT_EQ(asker_.ends.back().log, log_ / "log.txt");
}

TEST_F(SetDpi, ChangesFiveBytesOfAJpeg) {
    const std::string before = Write("a.jpg", 72);
    EXPECT_EQ(Run(300).changed, 1U);
    EXPECT_EQ(DpiOf("a.jpg"), 300);
    for (const std::size_t place : Changed(before, Now("a.jpg")))
        EXPECT_TRUE(place >= 13 && place < 18) << place;
    EXPECT_EQ(Now("a.jpg").substr(13, 5), std::string("\x01\x01\x2C\x01\x2C", 5));
}

TEST_F(SetDpi, LeavesAJpegWithoutAJfifHeadAndLogsIt) {
    std::string bytes = Write("a.jpg");
    bytes[3] = '\xE1';
    WriteAll(folder_ / "a.jpg", bytes);
    const DpiOutcome outcome = Run(300);
    ASSERT_EQ(outcome.failures.size(), 1U);
    EXPECT_EQ(ToUtf8(outcome.failures[0].message), "不是JFIF格式的JPEG文件");
    EXPECT_EQ(Now("a.jpg"), bytes);
}

std::string Chunk(const std::string& bytes, const std::string& name) {
    const std::size_t at = bytes.find(name);
    return at == std::string::npos ? "" : bytes.substr(at, 13);
}

TEST_F(SetDpi, ReplacesTheResolutionChunkOfAPngAlone) {
    const std::string before = Write("a.png", 72);
    ASSERT_FALSE(Chunk(before, "pHYs").empty());
    EXPECT_EQ(Run(300).changed, 1U);
    const std::string after = Now("a.png");
    EXPECT_EQ(DpiOf("a.png"), 300);
    EXPECT_EQ(Chunk(after, "pHYs"), std::string("pHYs\0\0\x2E\x23\0\0\x2E\x23\x01", 13));
    EXPECT_EQ(after.find("pHYs", after.find("pHYs") + 1), std::string::npos);
    EXPECT_EQ(after.substr(after.find("IDAT")), before.substr(before.find("IDAT")));
    CDibImage was, is;
    WriteAll(log_ / "before.png", before);
    ASSERT_TRUE(LoadImageFile(log_ / "before.png", was));
    ASSERT_TRUE(LoadImageFile(folder_ / "a.png", is));
    ExpectSamePixels(is, was);
    EXPECT_EQ(Run(0).changed, 1U);
    EXPECT_TRUE(Chunk(Now("a.png"), "pHYs").empty());
    ASSERT_TRUE(LoadImageFile(folder_ / "a.png", is));
    ExpectSamePixels(is, was);
}

TEST_F(SetDpi, ChangesTheThreeTagsOfATiff) {
    const std::string before = Write("a.tif", 72);
    EXPECT_EQ(Run(600).changed, 1U);
    EXPECT_EQ(DpiOf("a.tif"), 600);
    EXPECT_LE(Changed(before, Now("a.tif")).size(), 18U);
    CDibImage was, is;
    WriteAll(log_ / "before.tif", before);
    ASSERT_TRUE(LoadImageFile(log_ / "before.tif", was));
    ASSERT_TRUE(LoadImageFile(folder_ / "a.tif", is));
    ExpectSamePixels(is, was);
}

TEST_F(SetDpi, GivesNoResolutionToATiffWithoutOne) {
    std::string bytes = Write("a.tif");
    // The tag of the horizontal resolution becomes a private one.
    const std::string tag = {'\x1A', '\x01', 5, 0, 1, 0, 0, 0};
    const std::size_t at = bytes.find(tag);
    ASSERT_NE(at, std::string::npos);
    bytes[at + 1] = '\x7F';
    WriteAll(folder_ / "a.tif", bytes);
    EXPECT_EQ(Run(300).failures.size(), 1U);
    EXPECT_EQ(Now("a.tif"), bytes);
}

TEST_F(SetDpi, OfATiffWhoseResolutionPointsIntoItsDirectoryIsRefused) {
    std::string bytes = Write("a.tif");
    const std::string tag = {'\x1A', '\x01', 5, 0, 1, 0, 0, 0};
    const std::size_t at = bytes.find(tag);
    ASSERT_NE(at, std::string::npos);
    const auto low = static_cast<char>(at & 0xFF), high = static_cast<char>(at >> 8);
    bytes.replace(at + 8, 4, std::string({low, high, 0, 0}));
    WriteAll(folder_ / "a.tif", bytes);
    EXPECT_EQ(Run(300).failures.size(), 1U);
    EXPECT_EQ(Now("a.tif"), bytes);
}

TEST_F(SetDpi, PassesOverFilesOfOtherContent) {
    WriteAll(folder_ / "a.jpg", "GIF89a is no JPEG whatever its name says");
    const DpiOutcome outcome = Run(300);
    EXPECT_EQ(outcome.files, 1U);
    EXPECT_EQ(outcome.changed, 0U);
    EXPECT_TRUE(outcome.failures.empty());
}

TEST_F(SetDpi, LeavesNothingBesideTheFilesAndEachCutFileAsItWas) {
    for (const char* name : {"a.bmp", "a.jpg", "a.png", "a.tif"}) {
        const std::string whole = Write(name);
        for (std::size_t size = 0; size < whole.size(); size += 1 + whole.size() / 40) {
            WriteAll(folder_ / name, whole.substr(0, size));
            const DpiOutcome outcome = Run(300);
            if (outcome.changed == 0) {
                EXPECT_EQ(Now(name).size(), size) << name;
            }
        }
        fs::remove(folder_ / name);
    }
    EXPECT_TRUE(folder_.AllNames().empty());
}

TEST_F(SetDpi, EndsAtAStopBetweenFiles) {
    for (const char* name : {"1.bmp", "2.bmp", "3.bmp"})
        Write(name);
    asker_.stopAfter = 2;
    const DpiOutcome outcome = Run(300);
    EXPECT_TRUE(outcome.wasStopped);
    EXPECT_EQ(outcome.changed, 2U);
    EXPECT_TRUE(asker_.ends.empty());
}

}  // namespace
}  // namespace velloran::test

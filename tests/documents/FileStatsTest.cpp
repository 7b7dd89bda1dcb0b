// The report of the statistics, line by line.

#include "documents/measure/FileStats.h"

#include <gtest/gtest.h>

#include "documents/measure/FileTypes.h"
#include "files/ImageFiles.h"
#include "params/ParaBlock.h"
#include "support/Images.h"
#include "support/ScriptedAsker.h"
#include "support/TempFolder.h"

namespace velloran::test {
namespace {

void WritePicture(const std::filesystem::path& file, int width, int height, int dpi) {
    CDibImage image = Filled(width, height, 8, 200);
    ASSERT_TRUE(SaveImageFile(file, image, 90, dpi, 2, false, CParaBlock()));
}

TEST(FileStats, WithoutPicturesSaySo) {
    EXPECT_EQ(ToUtf8(FileStats().Report()), "在指定的文件夹下没有找到有效的图像文件。");
}

TEST(FileStats, OfThreeFilesTellTheWidthThatTwoShare) {
    FileStats stats;
    stats.Add({100, 150}, 300);
    stats.Add({100, 160}, 300);
    stats.Add({200, 170}, 150);
    EXPECT_EQ(ToUtf8(stats.Report()),
              "文件总数：3\r\n\r\n"
              "最大宽度：200\r\n最小宽度：100\r\n2个文件宽度为100，占文件总数66.67%\r\n\r\n"
              "最大高度：170\r\n最小高度：150\r\n\r\n"
              "最大面积：200 x 170\r\n最小面积：100 x 150\r\n\r\n"
              "最大DPI：300\r\n最小DPI：150\r\n2个文件DPI为300，占文件总数66.67%\r\n");
}

TEST(FileStats, OfTwoFilesTellNoShares) {
    FileStats stats;
    stats.Add({100, 150}, 300);
    stats.Add({100, 150}, 300);
    EXPECT_EQ(ToUtf8(stats.Report()).find("占文件总数"), std::string::npos);
    EXPECT_FALSE(stats.CommonWidth());
}

TEST(FileStats, GiveTheLowestOfEquallyFrequentValues) {
    FileStats stats;
    for (const std::uint32_t width : {300U, 100U, 300U, 100U})
        stats.Add({width, 10}, 96);
    ASSERT_TRUE(stats.CommonWidth());
    EXPECT_EQ(stats.CommonWidth()->value, 100U);
    EXPECT_EQ(stats.CommonWidth()->count, 2U);
    EXPECT_EQ(stats.CommonWidth()->percent, 50.0);
}

TEST(FileStats, KeepTheFirstOfEqualAreas) {
    FileStats stats;
    stats.Add({10, 20}, 96);
    stats.Add({20, 10}, 96);
    EXPECT_EQ(stats.MaxArea(), (PageSize{10, 20}));
    EXPECT_EQ(stats.MinArea(), (PageSize{10, 20}));
}

TEST(FileStats, OfAWidthBeyondTheBinsStillTellTheExtremes) {
    FileStats stats;
    for (int i = 0; i < 3; ++i)
        stats.Add({70000, 5}, 70000);
    EXPECT_EQ(stats.MaxWidth(), 70000U);
    EXPECT_FALSE(stats.CommonWidth());
    EXPECT_EQ(stats.MaxDpi(), 70000 - 65536);
}

TEST(MeasureFolder, ReadsHeadsByContentAndTellsWhatItCannotRead) {
    const TempFolder folder;
    std::filesystem::create_directory(folder / "sub");
    WritePicture(folder / "a.png", 30, 40, 300);
    WritePicture(folder / "sub/b.bmp", 50, 20, 150);
    std::filesystem::rename(folder / "a.png", folder / "a.jpg");
    WriteAll(folder / "broken.gif", "no picture");
    WriteAll(folder / "notes.txt", "left out");
    ScriptedAsker asker;
    const StatsOutcome all =
        MeasureFolder({folder.Path(), FilterOfAll(StatsFileTypes()), true}, asker);
    EXPECT_EQ(all.stats.Count(), 2U);
    EXPECT_EQ(all.stats.MaxArea(), (PageSize{30, 40}));
    EXPECT_EQ(all.failures, 1U);
    ASSERT_EQ(asker.failures.size(), 1U);
    EXPECT_EQ(asker.failures[0], (folder / "broken.gif").native() + ": 文件读取失败。");
    ScriptedAsker other;
    EXPECT_EQ(MeasureFolder({folder.Path(), u"*.jpg;", false}, other).stats.Count(), 1U);
}

TEST(MeasureFolder, RefusesWhatIsNoFolderAndAnEmptyFilter) {
    const TempFolder folder;
    ScriptedAsker asker;
    EXPECT_EQ(ToUtf8(MeasureFolder({{}, u"*.jpg", true}, asker).refusal),
              "请先选择存放源文件的文件夹。");
    EXPECT_EQ(ToUtf8(MeasureFolder({folder / "none", u"*.jpg", true}, asker).refusal),
              "源文件夹无效，请重新选择。");
    EXPECT_EQ(ToUtf8(MeasureFolder({folder.Path(), u"", true}, asker).refusal),
              "请勾选需要设置的文件。");
}

TEST(FileTypes, OfWordsAreFoundWhateverTheCase) {
    std::string wrong;
    EXPECT_EQ(FilterOfWords(DpiFileTypes(), "png,TIF", wrong), u"*.png;*.tif;*.tiff;");
    EXPECT_EQ(FilterOfWords(DpiFileTypes(), "png,gif", wrong), std::nullopt);
    EXPECT_EQ(wrong, "gif");
    EXPECT_EQ(FilterOfWords(DpiFileTypes(), "", wrong), u"");
}

}  // namespace
}  // namespace velloran::test

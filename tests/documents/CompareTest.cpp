// Comparisons against sums worked out by hand, and the exports line by line.

#include "documents/compare/Compare.h"

#include <gtest/gtest.h>

#include <cmath>

#include "documents/compare/CompareExport.h"
#include "documents/compare/CompareFolders.h"
#include "files/ImageFiles.h"
#include "imaging/QualityIndex.h"
#include "params/ParaBlock.h"
#include "support/Images.h"
#include "support/ScriptedAsker.h"
#include "support/TempFolder.h"
#include "support/Threads.h"

namespace velloran::test {
namespace {

namespace fs = std::filesystem;

class Compare : public testing::Test {
 protected:
    fs::path Save(const std::string& name, CDibImage image) const {
        const fs::path file = folder_ / name;
        fs::create_directories(file.parent_path());
        EXPECT_TRUE(SaveImageFile(file, image, 100, 96, 2, false, CParaBlock()));
        return file;
    }
    static DiffStats StatsOf(const CDibImage& a, const CDibImage& b) {
        DiffStats stats;
        EXPECT_TRUE(ComputeDiff(a, b, /*withSimilarity=*/true, stats));
        return stats;
    }
    std::string RefusalOf(const fs::path& a, const fs::path& b) const {
        CDibImage image1, image2;
        return ToUtf8(LoadPair(a, b, /*keepsDepth=*/false, image1, image2).message);
    }

    TempFolder folder_;
};

TEST_F(Compare, OnePixelThatDiffersByTenHasTheMeanTen) {
    CDibImage a = Filled(20, 10, 8, 100), b = a;
    SetIndex(b, 3, 4, 110);
    const DiffStats stats = StatsOf(a, b);
    EXPECT_EQ(stats.differentPixels, 1U);
    EXPECT_EQ(MeansText(stats), "10.0000");
    EXPECT_EQ(DeviationsText(stats), "0.0000");
    EXPECT_EQ(MaximaText(stats), "10");
    EXPECT_EQ(DifferentText(stats), "1, 0.50%");
    EXPECT_EQ(stats.levels[0][0], 0U);
    EXPECT_EQ(stats.equalSamples[0], 199U);
    EXPECT_EQ(FieldsOf(stats).at(0).second, "20x10=200");
}

TEST_F(Compare, ColorsAreToldRedGreenBlueAndAPixelCountsOnce) {
    CDibImage a = Filled(20, 10, 24, 100), b = a;
    SetPixel(b, 0, 0, {101, 104, 109});
    SetPixel(b, 1, 0, {103, 100, 100});
    const DiffStats stats = StatsOf(a, b);
    EXPECT_EQ(stats.differentPixels, 2U);
    EXPECT_EQ(MaximaText(stats), "3/4/9");
    EXPECT_EQ(MeansText(stats), "2.00/2.00/4.50");
    EXPECT_EQ(DeviationsText(stats), "1.00/2.00/4.50");
}

TEST_F(Compare, IdenticalFilesOfOtherNamesAreTheSame) {
    const fs::path a = Save("a.png", Noise(20, 10, 24)), b = Save("b.bmp", Noise(20, 10, 24));
    CDibImage image1, image2;
    ASSERT_TRUE(LoadPair(a, b, false, image1, image2).message.empty());
    const CompareFields fields = FieldsOf(StatsOf(image1, image2));
    EXPECT_EQ(ToUtf8(fields.at(0).first), "总像素数:");
    EXPECT_EQ(fields.at(0).second, "相同");
    for (std::size_t i = 1; i < fields.size(); ++i)
        EXPECT_EQ(fields[i].second, "");
}

TEST_F(Compare, OneBitAgainstEightOfTheSamePictureIsTheSame) {
    CDibImage one = Filled(16, 8, 1, 0), eight = Filled(16, 8, 8, 0);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 16; x += 3) {
            SetIndex(one, x, y, 1);
            SetIndex(eight, x, y, 255);
        }
    CDibImage image1, image2;
    ASSERT_TRUE(
        LoadPair(Save("a.png", one), Save("b.png", eight), false, image1, image2).message.empty());
    EXPECT_TRUE(StatsOf(image1, image2).IsIdentical());
}

TEST_F(Compare, DepthsThatDifferAreWidenedForAPairAndPassedOverInFolders) {
    const fs::path grey = Save("a.png", Filled(9, 9, 8, 50));
    CDibImage colored = Filled(9, 9, 24, 50);
    SetPixel(colored, 0, 0, {50, 50, 51});
    const fs::path color = Save("b.png", colored);
    CDibImage image1, image2;
    ASSERT_TRUE(LoadPair(grey, color, false, image1, image2).message.empty());
    EXPECT_EQ(image1.GetBpp(), 24);
    EXPECT_EQ(StatsOf(image1, image2).differentPixels, 1U);
    EXPECT_FALSE(LoadPair(grey, color, true, image1, image2).message.empty());
}

TEST_F(Compare, PairsThatCannotBeComparedSayWhy) {
    const fs::path a = Save("a.png", Noise(20, 10, 24)), b = Save("b.png", Noise(21, 10, 24));
    WriteAll(folder_ / "c.png", "no picture");
    EXPECT_EQ(RefusalOf("", a), "请先选择源文件。");
    EXPECT_EQ(RefusalOf(a, a), "文件路径重复，没法比较。");
    EXPECT_EQ(RefusalOf(a, folder_ / "none.png"), "所选源文件已不存在，请重新选择。");
    EXPECT_EQ(RefusalOf(a, folder_ / "c.png"), "源文件读取失败。");
    EXPECT_EQ(RefusalOf(a, b), "两个源文件的像素尺寸（高度、宽度）不一致，没法比较。");
    Save("A.png", Noise(20, 10, 24));
    EXPECT_EQ(RefusalOf(a, folder_ / "A.png"), "") << "two files, though one name without case";
}

TEST_F(Compare, ExportsHaveTheirLines) {
    CDibImage a = Filled(2, 2, 8, 100), b = a;
    SetIndex(b, 1, 0, 97);
    const fs::path file = folder_ / "out.csv";
    ASSERT_TRUE(ExportPixels(a, b, false, file, nullptr));
    EXPECT_EQ(ReadAll(file), "Y,X,Gray\r\n0,0,0\r\n0,1,3\r\n1,0,0\r\n1,1,0\r\n");
    ASSERT_TRUE(ExportPixels(a, b, true, file, nullptr));
    EXPECT_EQ(ReadAll(file), "Y,X,Gray\r\n0,1,3\r\n");
    ASSERT_TRUE(ExportLevels(StatsOf(a, b), file, nullptr));
    const std::string levels = ReadAll(file);
    EXPECT_TRUE(levels.starts_with("Level,Gray\r\n0,3\r\n1,0\r\n2,0\r\n3,1\r\n4,0\r\n"));
    EXPECT_EQ(std::count(levels.begin(), levels.end(), '\n'), 257);
    CDibImage difference;
    ASSERT_TRUE(BuildDiffImage(a, b, difference));
    EXPECT_TRUE(difference.IsGrayScale());
    ASSERT_TRUE(ExportFrequency(difference, file, nullptr));
    EXPECT_EQ(ReadAll(file), levels);
    CDibImage c = Filled(1, 1, 24, 10), d = c;
    SetPixel(d, 0, 0, {11, 12, 13});
    ASSERT_TRUE(ExportPixels(c, d, true, file, nullptr));
    EXPECT_EQ(ReadAll(file), "Y,X,R,G,B\r\n0,0,1,2,3\r\n");
}

TEST_F(Compare, TheDifferenceImageGetsAnExtensionWhereItHasNone) {
    CDibImage a = Filled(5, 5, 24, 100), b = Filled(5, 5, 24, 90), difference, read;
    ASSERT_TRUE(BuildDiffImage(a, b, difference));
    ASSERT_TRUE(ExportDifference(difference, folder_ / "d.xyz", nullptr));
    ASSERT_TRUE(LoadImageFile(folder_ / "d.xyz.png", read));
    ExpectSamePixels(read, Filled(5, 5, 24, 10));
    FileError error;
    EXPECT_FALSE(ExportDifference(difference, folder_ / "none/d.png", &error));
}

/// The index by its definition, window by window.
double PlainQuality(const CDibImage& a, const CDibImage& b, int channel, int channels) {
    const int width = a.GetWidth(), height = a.GetHeight();
    const int across = std::min(8, width), down = std::min(8, height);
    double sum = 0;
    int windows = 0;
    for (int y0 = 0; y0 + down <= height; ++y0)
        for (int x0 = 0; x0 + across <= width; ++x0, ++windows) {
            double x = 0, y = 0, xx = 0, yy = 0, xy = 0;
            for (int dy = 0; dy < down; ++dy)
                for (int dx = 0; dx < across; ++dx) {
                    const double s = a.GetBits(y0 + dy)[(x0 + dx) * channels + channel];
                    const double t = b.GetBits(y0 + dy)[(x0 + dx) * channels + channel];
                    x += s, y += t, xx += s * s, yy += t * t, xy += s * t;
                }
            const double n = across * down;
            const double mx = x / n, my = y / n;
            const double variances = xx / n - mx * mx + yy / n - my * my;
            const double covariance = xy / n - mx * my;
            if (std::abs(variances) < 1e-9)
                sum += mx + my == 0 ? 1 : 2 * mx * my / (mx * mx + my * my);
            else
                sum += 4 * covariance * mx * my / (variances * (mx * mx + my * my));
        }
    return sum / windows;
}

TEST_F(Compare, SimilarityIsTheMeanOfTheIndexOverAllWindows) {
    for (const auto& [width, height] :
         {std::pair{8, 8}, {9, 8}, {37, 41}, {5, 30}, {30, 3}, {1, 1}, {64, 300}}) {
        const CDibImage a = Noise(width, height, 24, 1), b = Noise(width, height, 24, 2);
        for (int channel = 0; channel < 3; ++channel)
            EXPECT_NEAR(QualityIndex(ViewOf(a), ViewOf(b), channel), PlainQuality(a, b, channel, 3),
                        1e-5)
                << width << "x" << height;
        EXPECT_NEAR(QualityIndex(ViewOf(a), ViewOf(a), 0), 1, 1e-6);
    }
    const CDibImage flat = Filled(20, 20, 8, 100), darker = Filled(20, 20, 8, 50);
    EXPECT_NEAR(QualityIndex(ViewOf(flat), ViewOf(darker), 0), 2 * 100 * 50 / 12500.0, 1e-6);
    const CDibImage black = Filled(20, 20, 8, 0);
    EXPECT_NEAR(QualityIndex(ViewOf(black), ViewOf(black), 0), 1, 1e-6);
}

TEST_F(Compare, CountsAreTheSameAsPlainOnesAtEveryWidth) {
    for (int width = 1; width <= 70; width += width < 20 ? 1 : 13)
        for (const int bpp : {8, 24}) {
            const CDibImage a = Noise(width, 7, bpp, 3);
            CDibImage b = Noise(width, 7, bpp, 4);
            std::copy_n(a.GetBits(2), a.GetEffWidth(), b.GetBits(2));
            const int channels = bpp / 8;
            std::uint64_t different = 0, firstLevels[256] = {};
            for (int y = 0; y < 7; ++y)
                for (int x = 0; x < width; ++x) {
                    bool differs = false;
                    for (int c = 0; c < channels; ++c) {
                        const int d = std::abs(a.GetBits(y)[x * channels + c] -
                                               b.GetBits(y)[x * channels + c]);
                        differs = differs || d != 0;
                        if (c == 0)
                            ++firstLevels[d];
                    }
                    different += differs ? 1 : 0;
                }
            const DiffStats stats = StatsOf(a, b);
            EXPECT_EQ(stats.differentPixels, different);
            EXPECT_EQ(stats.equalSamples[0], firstLevels[0]);
            for (std::size_t level = 1; level < 256; ++level)
                EXPECT_EQ(stats.levels[0][level], firstLevels[level]);
        }
}

TEST_F(Compare, FoldersGiveRowsInOrderWhateverTheNumberOfJobs) {
    for (int i = 1; i <= 12; ++i) {
        const std::string name = std::to_string(i) + ".png";
        CDibImage page = Filled(10, 10, 8, 100);
        Save("one/" + name, page);
        SetIndex(page, i % 10, 1, 100 + i);
        if (i != 5)
            Save("two/" + name, i == 7 ? Filled(11, 10, 8, 100) : page);
    }
    std::vector<std::vector<std::string>> serial;
    for (const int jobs : {1, 3}) {
        ScriptedAsker asker;
        const CompareFoldersOutcome outcome =
            CompareFolders({folder_ / "one", folder_ / "two", jobs}, asker);
        std::vector<std::vector<std::string>> rows;
        for (const CompareRow& row : outcome.rows)
            rows.push_back(ColumnsOf(row));
        ASSERT_EQ(rows.size(), 10U);
        EXPECT_EQ(rows[4][0], "5");
        EXPECT_EQ(rows[4][1], "6.png");
        EXPECT_EQ(rows[4][2], "1, 1.00%");
        EXPECT_EQ(rows[4][3], "6");
        EXPECT_EQ(asker.warnings.size(), 2U);
        if (jobs == 1)
            serial = rows;
        EXPECT_EQ(rows, serial);
        const fs::path file = folder_ / "rows.csv";
        ASSERT_TRUE(ExportRows(outcome.rows, file, nullptr));
        EXPECT_TRUE(
            ReadAll(file).starts_with("序号,文件名,不同像素,最大值,平均值,标准差\r\n"
                                      "1,1.png,\"1, 1.00%\",1,1.0000,0.0000\r\n"));
    }
}

}  // namespace
}  // namespace velloran::test

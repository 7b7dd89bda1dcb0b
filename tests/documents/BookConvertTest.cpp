// The run of a book: nothing but the target's own files goes, whatever links lie about, and several
// pages at once give what one at a time gives.

#include "documents/book/BookConvert.h"

#include <gtest/gtest.h>

#include <map>

#include "documents/book/BookPage.h"
#include "documents/book/BookRows.h"
#include "files/ImageFiles.h"
#include "params/ParaBlock.h"
#include "support/Images.h"
#include "support/ScriptedAsker.h"
#include "support/TempFolder.h"

namespace velloran::test {
namespace {

namespace fs = std::filesystem;
using End = BookConvertOutcome::End;

class BookConvert : public testing::Test {
 protected:
    fs::path Source() const { return folder_ / "src"; }
    fs::path Target() const { return folder_ / "out"; }

    void SetUp() override {
        fs::create_directories(Source());
        project_.source = Source();
        project_.target = ToUtf16(Target().native());
    }
    void AddPage(const std::string& name, unsigned seed = 1, int width = 60) {
        CDibImage page = Noise(width, 40, 8, seed);
        ASSERT_TRUE(SaveImageFile(Source() / name, page, 90, 300, 2, false, CParaBlock()));
        project_.rows.push_back({name, {}});
        RebuildTargets(project_);
    }
    BookConvertOutcome Run(int jobs = 1, bool yes = true) {
        asker_ = ScriptedAsker({yes ? ScriptedAsker::kYesAnswer : ScriptedAsker::kNoAnswer});
        return ConvertAll(project_, {.jobs = jobs, .log = folder_ / "log.txt"}, asker_);
    }
    static std::map<std::string, std::string> In(const fs::path& folder) {
        std::map<std::string, std::string> files;
        for (const auto& entry : fs::directory_iterator(folder))
            if (entry.is_regular_file())
                files[entry.path().filename().native()] = ReadAll(entry.path());
        return files;
    }

    TempFolder folder_;
    BookProject project_;
    ScriptedAsker asker_;
};

TEST_F(BookConvert, WithoutRowsSaysSo) {
    const BookConvertOutcome outcome = Run();
    EXPECT_EQ(outcome.end, End::kNothing);
    EXPECT_EQ(ToUtf8(outcome.message), "抱歉，没啥好处理的。");
}

TEST_F(BookConvert, MakesTheTargetAndBringsTheSideFiles) {
    AddPage("a.png");
    WriteAll(Source() / "bookinfo.DAT", "1");
    WriteAll(Source() / "toc.xml", "2");
    WriteAll(Source() / "other.doc", "3");
    project_.target = ToUtf16((folder_ / "new/deep").native());
    const BookConvertOutcome outcome = Run();
    EXPECT_EQ(outcome.end, End::kDone);
    EXPECT_TRUE(asker_.questions.empty()) << "nothing was there to delete";
    EXPECT_EQ(outcome.converted, 1U);
    EXPECT_EQ(ToUtf8(asker_.ends.at(0).text), "1个文件需要转换，\n1个文件转换成功。");
    const auto files = In(folder_ / "new/deep");
    EXPECT_EQ(files.size(), 3U);
    EXPECT_TRUE(files.contains("00001.jpg"));
    EXPECT_TRUE(files.contains("bookinfo.DAT"));
    EXPECT_TRUE(files.contains("toc.xml"));
}

TEST_F(BookConvert, EmptiesTheTargetOfFilesOnceTheUserAgrees) {
    AddPage("a.png");
    fs::create_directories(Target() / "kept");
    WriteAll(Target() / "old.jpg", "old");
    WriteAll(Target() / "kept/inner.jpg", "inner");
    WriteAll(folder_ / "elsewhere.jpg", "elsewhere");
    fs::create_symlink(folder_ / "elsewhere.jpg", Target() / "link.jpg");
    fs::create_directories(folder_ / "far");
    WriteAll(folder_ / "far/far.jpg", "far");
    fs::create_directory_symlink(folder_ / "far", Target() / "folderlink");
    EXPECT_EQ(Run(1, /*yes=*/false).end, End::kDeclined);
    EXPECT_EQ(asker_.questions.at(0), "目标文件夹下的所有文件将被删除，以免发生混乱。您想继续吗？");
    EXPECT_EQ(ReadAll(Target() / "old.jpg"), "old");
    EXPECT_EQ(Run().end, End::kDone);
    EXPECT_FALSE(fs::exists(Target() / "old.jpg"));
    EXPECT_FALSE(fs::exists(fs::symlink_status(Target() / "link.jpg")));
    EXPECT_FALSE(fs::exists(fs::symlink_status(Target() / "folderlink")));
    EXPECT_EQ(ReadAll(Target() / "kept/inner.jpg"), "inner");
    EXPECT_EQ(ReadAll(folder_ / "elsewhere.jpg"), "elsewhere");
    EXPECT_EQ(ReadAll(folder_ / "far/far.jpg"), "far");
}

TEST_F(BookConvert, ATargetThatHoldsTheSourceIsRefusedByWhateverWay) {
    AddPage("a.png");
    fs::create_directories(Source() / "inside");
    fs::create_directory_symlink(Source(), folder_ / "link");
    fs::create_directory_symlink(folder_.Path(), folder_ / "above");
    for (const fs::path& target :
         {Source(), folder_.Path(), Source() / "inside", Source() / "inside/..", folder_ / "link",
          folder_ / "above", folder_ / "link/inside", Source() / "new"}) {
        project_.target = ToUtf16(target.native());
        EXPECT_EQ(Run().end, End::kRefused) << target;
    }
    EXPECT_TRUE(fs::exists(Source() / "a.png"));
    for (const char16_t* target : {u"D:\\Scan\\Out", u"\\\\server\\out", u"a\nb", u""}) {
        project_.target = target;
        EXPECT_EQ(Run().end, End::kRefused);
    }
}

TEST_F(BookConvert, ATargetThatHoldsAListedFileThroughALinkIsRefused) {
    fs::create_directories(Target());
    CDibImage page = Noise(20, 20, 8);
    ASSERT_TRUE(SaveImageFile(Target() / "mine.png", page, 90, 300, 2, false, CParaBlock()));
    fs::create_symlink(Target() / "mine.png", Source() / "a.png");
    project_.rows.push_back({"a.png", {}});
    EXPECT_EQ(Run().end, End::kRefused);
    EXPECT_TRUE(fs::exists(Target() / "mine.png"));
}

TEST_F(BookConvert, SeparatorsInPrefixOrSuffixAreRefused) {
    AddPage("a.png");
    for (const char16_t* part : {u"../x", u"a\\b", u"a/b"}) {
        project_.prefix = part;
        EXPECT_EQ(Run().end, End::kRefused);
        project_.prefix.clear();
        project_.postfix = part;
        EXPECT_EQ(Run().end, End::kRefused);
        project_.postfix.clear();
    }
}

TEST_F(BookConvert, AReducedPageWithAChosenJpgIsRefusedBeforeAnythingGoes) {
    AddPage("a.png");
    fs::create_directories(Target());
    WriteAll(Target() / "old.jpg", "old");
    project_.ext = 418096 + 6;  // jpg chosen
    project_.rows[0].values[PARA_COLOR] = 4;
    const BookConvertOutcome outcome = Run();
    EXPECT_EQ(outcome.end, End::kRefused);
    EXPECT_EQ(outcome.path, "a.png");
    EXPECT_EQ(ReadAll(Target() / "old.jpg"), "old");
}

TEST_F(BookConvert, PagesTakeTheTypeThatTheirRowsMakeThem) {
    AddPage("a.png");
    AddPage("b.png");
    AddPage("c.bmp");
    project_.rows[1].values[PARA_COLOR] = 7;
    project_.rows[2].values[PARA_COLOR] = 18;
    EXPECT_EQ(Run().converted, 3U);
    const auto numbered = In(Target());
    EXPECT_TRUE(numbered.contains("00001.jpg"));
    EXPECT_TRUE(numbered.contains("00002.tif"));
    EXPECT_TRUE(numbered.contains("00003.bmp"));
    project_.rename = 0;
    project_.prefix = u"P-";
    RebuildTargets(project_);
    EXPECT_EQ(Run().converted, 3U);
    const auto named = In(Target());
    EXPECT_TRUE(named.contains("p-a.png")) << "without numbers the source's type stays";
    EXPECT_TRUE(named.contains("p-b.png"));
    EXPECT_TRUE(named.contains("p-c.bmp"));
}

TEST_F(BookConvert, HalvesComeApartAndKeepWhatTheirRunsFound) {
    AddPage("a.png", 3, 200);
    SplitRow(project_, 0, 3);
    const BookConvertOutcome outcome = Run(2);
    EXPECT_EQ(outcome.converted, 2U);
    EXPECT_TRUE(outcome.hasFound);
    CDibImage left, right;
    ASSERT_TRUE(LoadImageFile(Target() / "00001.jpg", left));
    ASSERT_TRUE(LoadImageFile(Target() / "00002.jpg", right));
    EXPECT_LT(left.GetWidth(), 200);
    EXPECT_LT(right.GetWidth(), 200);
    for (const BookRow& row : project_.rows)
        EXPECT_NE(row.values[PARA_PAGE_SPLIT_MID], 0);
    EXPECT_FALSE(Run(2).hasFound) << "what is known is not looked for again";
}

TEST_F(BookConvert, SeveralPagesAtOnceGiveWhatOneAtATimeGives) {
    for (int i = 0; i < 12; ++i) {
        AddPage(std::to_string(i) + ".png", static_cast<unsigned>(i), 150 + 10 * i);
        project_.rows.back().values[PARA_PAGE_SPLIT_TYPE] = i % 3 == 0 ? 1 : 0;
        project_.rows.back().values[PARA_GAMMA] = 80 + i;
    }
    WriteAll(Source() / "4.png", "damaged");
    fs::remove(Source() / "7.png");
    const BookProject begun = project_;
    const BookConvertOutcome serial = Run(1);
    const auto files = In(Target());
    const std::string log = ReadAll(folder_ / "log.txt");
    const std::vector<BookRow> rows = project_.rows;
    EXPECT_EQ(serial.converted, 10U);
    ASSERT_EQ(serial.failures.size(), 2U);
    EXPECT_EQ(ToUtf8(serial.failures[1].message), "读取失败") << "it vanished since it was listed";
    for (int trial = 0; trial < 5; ++trial) {
        project_ = begun;
        const BookConvertOutcome parallel = Run(4);
        EXPECT_EQ(parallel.converted, 10U);
        EXPECT_EQ(In(Target()), files);
        EXPECT_EQ(ReadAll(folder_ / "log.txt"), log);
        for (std::size_t i = 0; i < rows.size(); ++i)
            EXPECT_EQ(project_.rows[i].values, rows[i].values) << i;
    }
}

TEST_F(BookConvert, AStopLeavesWholePagesAndKeepsWhatWasFound) {
    for (int i = 0; i < 6; ++i)
        AddPage(std::to_string(i) + ".png", static_cast<unsigned>(i));
    asker_ = ScriptedAsker();
    asker_.stopAfter = 3;
    const BookConvertOutcome outcome =
        ConvertAll(project_, {.jobs = 1, .log = folder_ / "log.txt"}, asker_);
    EXPECT_EQ(outcome.end, End::kStopped);
    EXPECT_TRUE(asker_.ends.empty());
    for (const auto& [name, bytes] : In(Target())) {
        CDibImage page;
        EXPECT_TRUE(LoadImageFile(Target() / name, page)) << name;
    }
}

TEST_F(BookConvert, APreviewEndsWhereItsTabDoes) {
    AddPage("a.png", 3, 200);
    project_.rows[0].values[PARA_PAGE_SPLIT_TYPE] = 3;
    CDibImage image;
    FoundValues found;
    const auto run = [&](int stop) {
        return RunBookPreview(project_, 0, stop, {}, image, found, nullptr);
    };
    ASSERT_EQ(run(kStopNothing), PreviewEnd::kDone);
    EXPECT_EQ(image.GetWidth(), 200);
    ASSERT_EQ(run(kStopSplitDrawn), PreviewEnd::kDone);
    EXPECT_EQ(image.GetWidth(), 200) << "drawn, not cut";
    ASSERT_EQ(run(kStopSplit), PreviewEnd::kDone);
    EXPECT_LT(image.GetWidth(), 200);
    EXPECT_TRUE(found.splitLines);
    project_.rows[0].source = "none.png";
    EXPECT_EQ(run(kStopWhole), PreviewEnd::kUnreadable);
}

}  // namespace
}  // namespace velloran::test

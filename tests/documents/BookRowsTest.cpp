// The list of a book: halves, moves, names, and values applied to other rows.

#include "documents/book/BookRows.h"

#include <gtest/gtest.h>

#include "documents/book/BookApply.h"
#include "support/ScriptedAsker.h"
#include "support/TempFolder.h"

namespace velloran::test {
namespace {

namespace fs = std::filesystem;

class BookRows : public testing::Test {
 protected:
    BookRows() {
        project_.source = folder_.Path();
        for (const char* name : {"a.jpg", "b.jpg", "c.jpg", "d.jpg"}) {
            WriteAll(folder_ / name, name);
            project_.rows.push_back({name, {}});
        }
        RebuildTargets(project_);
    }
    std::string Sources() const {
        std::string text;
        for (const BookRow& row : project_.rows)
            text += row.source.substr(0, 1);
        return text;
    }
    std::vector<std::string> Targets() const {
        std::vector<std::string> names;
        for (const BookRow& row : project_.rows)
            names.push_back(ToUtf8(row.target));
        return names;
    }
    std::int32_t KindOf(std::size_t row) const {
        return project_.rows[row].values[PARA_PAGE_SPLIT_TYPE];
    }

    TempFolder folder_;
    BookProject project_;
};

TEST_F(BookRows, ASplitRowStandsInReadingOrder) {
    project_.rows[1].values[PARA_GAMMA] = 90;
    EXPECT_TRUE(SplitRow(project_, 1, 2).empty());
    EXPECT_EQ(Sources(), "abbcd");
    EXPECT_EQ(KindOf(1), 2 | 0x100) << "the right half is read first";
    EXPECT_EQ(KindOf(2), 2);
    EXPECT_EQ(HalfOf(project_.rows[1].values), 1);
    EXPECT_EQ(HalfOf(project_.rows[2].values), 2);
    EXPECT_EQ(project_.rows[2].values[PARA_GAMMA], 90);
    EXPECT_TRUE(SplitRow(project_, 4, 3).empty());
    EXPECT_EQ(KindOf(4), 3) << "the left half is read first";
    EXPECT_EQ(KindOf(5), 3 | 0x100);
    EXPECT_EQ(FindSplitPartner(project_, 1), 2U);
    EXPECT_EQ(FindSplitPartner(project_, 2), 1U);
    EXPECT_EQ(FindSplitPartner(project_, 5), 4U);
    EXPECT_EQ(FindSplitPartner(project_, 3), std::nullopt);
    EXPECT_EQ(Targets()[5], "00006") << "halves take consecutive numbers";
    EXPECT_FALSE(SplitRow(project_, 1, 3).empty()) << "a half is not split again";
}

TEST_F(BookRows, PartnersAreFoundTheSameForOneRowAndForAll) {
    for (const char* kinds : {"", "23", "232", "2323", "3", "3223", "12312"}) {
        BookProject project;
        for (const char kind : std::string(kinds)) {
            BookRow row{"x.jpg", {}};
            row.values[PARA_PAGE_SPLIT_TYPE] = kind == '2' ? 2 : kind == '3' ? 0x102 : 0;
            project.rows.push_back(row);
        }
        const auto all = FindPartners(project);
        for (std::size_t i = 0; i < project.rows.size(); ++i)
            EXPECT_EQ(FindSplitPartner(project, i), all[i]) << kinds << " " << i;
    }
}

TEST_F(BookRows, ARowWhosePartnerHasGoneKeepsItsSide) {
    SplitRow(project_, 1, 2);
    project_.rows.erase(project_.rows.begin() + 2);
    EXPECT_EQ(FindSplitPartner(project_, 1), std::nullopt);
    EXPECT_EQ(HalfOf(project_.rows[1].values), 1);
}

TEST_F(BookRows, NewFilesGoNeitherBetweenHalvesNorInTwiceNorFromOutside) {
    SplitRow(project_, 1, 2);
    WriteAll(folder_ / "e.jpg", "e");
    const auto add = [&](const fs::path& file, std::size_t before) {
        return ToUtf8(AddFilesToBook(project_, {file}, before));
    };
    EXPECT_EQ(add(folder_ / "e.jpg", 2), "抱歉，不能在拆分出来的两页之间插入新文件。");
    EXPECT_EQ(add(folder_ / "a.jpg", 0), "所选文件已经在列表中了。");
    EXPECT_EQ(add(folder_ / "../e.jpg", 0), "抱歉，所选文件必须在源文件夹下。");
    EXPECT_EQ(Sources(), "abbcd");
    project_.current = 3;
    EXPECT_EQ(add(folder_ / "e.jpg", 1), "");
    EXPECT_EQ(Sources(), "aebbcd");
    EXPECT_EQ(project_.current, 4) << "the current row stays with its page";
}

TEST_F(BookRows, AHalfGoesWithItsPartnerOnceTheUserAgrees) {
    SplitRow(project_, 1, 2);
    ScriptedAsker asker(
        {ScriptedAsker::kNoAnswer, ScriptedAsker::kYesAnswer, ScriptedAsker::kYesAnswer});
    EXPECT_FALSE(RemoveRows(project_, {2}, asker));
    EXPECT_EQ(asker.questions[0],
              "这是一个拆分页，删除时将连同拆分后的另外一页一起删除。\r\n"
              "您确认您真的想从列表中删除所选项？");
    EXPECT_TRUE(RemoveRows(project_, {2}, asker));
    EXPECT_EQ(Sources(), "acd");
    EXPECT_TRUE(RemoveRows(project_, {0}, asker));
    EXPECT_EQ(asker.questions[2], "您确认您真的想从列表中删除所选项？");
    EXPECT_EQ(Targets(), (std::vector<std::string>{"00001", "00002"}));
}

TEST_F(BookRows, AHalfMovesWithItsPartnerAndNothingMovesBetween) {
    SplitRow(project_, 1, 2);
    project_.current = 0;
    EXPECT_TRUE(MoveRow(project_, 2, 0).empty());
    EXPECT_EQ(Sources(), "bbacd");
    EXPECT_EQ(KindOf(0), 0x102);
    EXPECT_EQ(project_.current, 2);
    EXPECT_FALSE(MoveRow(project_, 4, 1).empty());
    EXPECT_EQ(Sources(), "bbacd");
    EXPECT_TRUE(MoveRow(project_, 0, 5).empty());
    EXPECT_EQ(Sources(), "acdbb");
    EXPECT_TRUE(MoveRow(project_, 3, 4).empty()) << "a pair before its own half stays";
    EXPECT_EQ(Sources(), "acdbb");
}

TEST_F(BookRows, NamesHaveNumbersOrTheirFiles) {
    project_.prefix = u"p";
    project_.postfix = u"s";
    project_.digits = 1;
    project_.start = 9;
    project_.step = 2;
    RebuildTargets(project_);
    EXPECT_EQ(Targets(), (std::vector<std::string>{"p09s", "p11s", "p13s", "p15s"}));
    project_.digits = 0;
    RebuildTargets(project_);
    EXPECT_EQ(Targets()[0], "p9s");
    project_.rename = 0;
    SplitRow(project_, 0, 3);
    project_.rows[2].source = "sub/A.png";
    RebuildTargets(project_);
    EXPECT_EQ(Targets(), (std::vector<std::string>{"pa", "pa~2", "pA~3", "pc", "pd"}))
        << "the suffix stands behind numbers only";
    project_.step = 0;
    project_.prefix = u"other";
    RebuildTargets(project_);
    EXPECT_EQ(Targets()[0], "pa") << "a step below 1 leaves the names";
}

class BookApply : public BookRows {};

TEST_F(BookApply, OfTheImageTabLeavesAllElse) {
    for (int i = 0; i < kParaCount; ++i)
        project_.rows[0].values[static_cast<std::size_t>(i)] = 1000 + i;
    project_.rows[0].values[PARA_PAGE_SPLIT_TYPE] = 1;
    const std::vector<ParaIndex> image = IndexesOf(ApplyWhat::kTab, ParaTab::kImage);
    EXPECT_EQ(image.size(), 44U);
    ApplyToRows(project_, 0, image, RowsOf(project_, 0, ApplyTo::kRest), GeometryRule::kAuto);
    const ParaValues defaults = DefaultParaValues();
    for (int i = 0; i < kParaCount; ++i) {
        const bool taken =
            std::find(image.begin(), image.end(), static_cast<ParaIndex>(i)) != image.end();
        EXPECT_EQ(project_.rows[3].values[static_cast<std::size_t>(i)],
                  taken ? 1000 + i : defaults[static_cast<std::size_t>(i)])
            << i;
    }
}

TEST_F(BookApply, TheTabsCoverTheirLists) {
    EXPECT_EQ(IndexesOf(ApplyWhat::kTab, ParaTab::kPaper).size(), 5U);
    EXPECT_EQ(IndexesOf(ApplyWhat::kTab, ParaTab::kPage).size(), 25U);
    EXPECT_EQ(IndexesOf(ApplyWhat::kTab, ParaTab::kLayout).size(), 26U);
    EXPECT_EQ(IndexesOf(ApplyWhat::kTab, ParaTab::kOutput).size(), 25U);
    EXPECT_EQ(IndexesOf(ApplyWhat::kAfter, ParaTab::kLayout).size(), 26U + 44U + 25U);
    EXPECT_EQ(IndexesOf(ApplyWhat::kBefore, ParaTab::kPage).size(), 30U);
    const std::vector<ParaIndex> all = IndexesOf(ApplyWhat::kAfter, ParaTab::kPaper);
    EXPECT_EQ(all.size(), 125U);
    for (const ParaIndex none :
         {PARA_RESIZE, PARA_CROPPING, PARA_GO_SUB_DIR, PARA_HIST_EQUALIZE, PARA_SLIDE_INTV,
          PARA_SRC_FILES, PARA_TGT_FILES, PARA_PREVIEW_FILE_OPEN, PARA_KEEP_FILE_TIME})
        EXPECT_EQ(std::count(all.begin(), all.end(), none), 0);
}

TEST_F(BookApply, ReachesTheRowsThatAreAskedFor) {
    using Rows = std::vector<std::size_t>;
    EXPECT_EQ(RowsOf(project_, 1, ApplyTo::kAll), (Rows{0, 2, 3}));
    EXPECT_EQ(RowsOf(project_, 1, ApplyTo::kRest), (Rows{2, 3}));
    EXPECT_EQ(RowsOf(project_, 0, ApplyTo::kEverySecond), Rows{2});
    EXPECT_EQ(RowsOf(project_, 3, ApplyTo::kRest), Rows{});
}

TEST_F(BookApply, NeverMakesOrBreaksALink) {
    SplitRow(project_, 1, 2);  // a bB c d
    project_.rows[0].values[PARA_PAGE_SPLIT_TYPE] = 1;
    project_.rows[0].values[PARA_PAGE_SPLIT_MID] = 77;
    ApplyToRows(project_, 0, AllParaIndexes(), RowsOf(project_, 0, ApplyTo::kAll),
                GeometryRule::kAuto);
    EXPECT_EQ(KindOf(1), 0x102);
    EXPECT_EQ(KindOf(2), 2);
    EXPECT_EQ(KindOf(3), 1);
    EXPECT_EQ(project_.rows[1].values[PARA_PAGE_SPLIT_MID], 77);
    ApplyToRows(project_, 1, AllParaIndexes(), {3, 4}, GeometryRule::kCopy);
    EXPECT_EQ(KindOf(3), 1) << "a whole page takes no half's side";
    ResetRow(project_, 1, AllParaIndexes());
    EXPECT_EQ(KindOf(1), 0x102);
    EXPECT_EQ(project_.rows[1].values[PARA_PAGE_SPLIT_MID], 0);
    ResetRow(project_, 3, AllParaIndexes());
    EXPECT_EQ(project_.rows[3].values, DefaultParaValues());
}

TEST_F(BookApply, KeepLeavesCorrectionAndSplit) {
    ParaValues values = DefaultParaValues();
    for (const ParaIndex index : {PARA_CRT_TYPE, PARA_CRT_PT_LT, PARA_PAGE_SPLIT_TYPE,
                                  PARA_PAGE_SPLIT_LEFT, PARA_GAMMA, PARA_CRT_CROP})
        values[index] = 1;
    TakeValues(values, AllParaIndexes(), GeometryRule::kKeep, project_.rows[0]);
    const ParaValues& now = project_.rows[0].values;
    EXPECT_EQ(now[PARA_CRT_TYPE], 0);
    EXPECT_EQ(now[PARA_CRT_PT_LT], 0);
    EXPECT_EQ(now[PARA_PAGE_SPLIT_TYPE], 0);
    EXPECT_EQ(now[PARA_PAGE_SPLIT_LEFT], 0);
    EXPECT_EQ(now[PARA_GAMMA], 1);
    EXPECT_EQ(now[PARA_CRT_CROP], 1);
}

TEST_F(BookApply, TabsHaveTheirPreviews) {
    EXPECT_EQ(PreviewOf(ParaTab::kPaper).left, 0);
    EXPECT_EQ(PreviewOf(ParaTab::kPaper).right, 97);
    EXPECT_EQ(PreviewOf(ParaTab::kPage).left, 135);
    EXPECT_EQ(PreviewOf(ParaTab::kPage).right, 74);
    EXPECT_EQ(PreviewOf(ParaTab::kLayout).left, 136);
    EXPECT_EQ(PreviewOf(ParaTab::kLayout).right, 20);
    EXPECT_EQ(PreviewOf(ParaTab::kOutput).left, 137);
    EXPECT_EQ(PreviewOf(ParaTab::kImage).right, 134);
    EXPECT_EQ(TabAt(6), std::nullopt);
}

}  // namespace
}  // namespace velloran::test

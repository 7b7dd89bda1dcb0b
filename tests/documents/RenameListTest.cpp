// The order of the renamer's list, and the names that it gives.

#include "documents/rename/RenameList.h"

#include <gtest/gtest.h>

#include "support/TempFolder.h"
#include "text/Text.h"

namespace velloran::test {
namespace {

using Names = std::vector<std::string>;

class RenameList : public testing::Test {
 protected:
    void Make(const Names& names) const {
        for (const std::string& name : names)
            WriteAll(folder_ / name, name);
    }
    Names Fill(const RenameFilter& filter = {}) const {
        std::vector<RenameRow> rows;
        EXPECT_TRUE(FillList(folder_.Path(), filter, rows, nullptr));
        Names names;
        for (const RenameRow& row : rows)
            names.push_back(row.source);
        return names;
    }
    static Names Targets(const Numbering& numbering, const Names& sources) {
        std::vector<RenameRow> rows;
        for (const std::string& source : sources)
            rows.push_back({source, {}});
        EXPECT_TRUE(Renumber(numbering, rows).empty());
        Names names;
        for (const RenameRow& row : rows)
            names.push_back(row.target);
        return names;
    }

    TempFolder folder_;
};

TEST_F(RenameList, SortsAScannedBookByItsParts) {
    Make({"000001.jpg", "leg001.jpg", "cov001.jpg"});
    EXPECT_EQ(Fill(), (Names{"cov001.jpg", "leg001.jpg", "000001.jpg"}));
    EXPECT_EQ(Fill({.descending = true}), (Names{"cov001.jpg", "leg001.jpg", "000001.jpg"}))
        << "the order asked for does not turn a book";
}

TEST_F(RenameList, HasEveryPartOfABookInItsPlace) {
    Make({"Bac1.jpg", "ATT1.jpg", "ins1.jpg", "0001.jpg", "!001.jpg", "fow1.jpg", "leg1.jpg",
          "bok1.jpg", "cov1.jpg"});
    EXPECT_EQ(Fill(), (Names{"cov1.jpg", "bok1.jpg", "leg1.jpg", "fow1.jpg", "!001.jpg", "0001.jpg",
                             "ins1.jpg", "ATT1.jpg", "Bac1.jpg"}));
}

TEST_F(RenameList, OneNameOutsideThePartsTurnsTheirOrderOff) {
    Make({"cov001.jpg", "000001.jpg", "leg001.jpg", "readme.jpg"});
    EXPECT_EQ(Fill(), (Names{"000001.jpg", "cov001.jpg", "leg001.jpg", "readme.jpg"}));
    EXPECT_EQ(Fill({.descending = true}).front(), "readme.jpg");
}

TEST_F(RenameList, OfOnePartAloneIsSortedByName) {
    Make({"0010.jpg", "002.jpg"});
    EXPECT_EQ(Fill(), (Names{"002.jpg", "0010.jpg"}));
    EXPECT_EQ(Fill({.descending = true}), (Names{"0010.jpg", "002.jpg"}));
}

TEST_F(RenameList, TakesTheKindThatIsAskedFor) {
    Make({"a.JPEG", "b.tif", "c.webp", "d.txt", "e", "f.cr2", "g.j2k"});
    EXPECT_EQ(Fill(), (Names{"a.JPEG", "b.tif", "c.webp", "f.cr2", "g.j2k"}));
    EXPECT_EQ(Fill({.type = 1}), Names{"a.JPEG"});
    EXPECT_EQ(Fill({.type = 6}), Names{"g.j2k"});
    EXPECT_EQ(Fill({.type = 9}).size(), 7U);
}

TEST_F(RenameList, LeavesFoldersAndItsOwnRecordAlone) {
    std::filesystem::create_directory(folder_ / "sub.jpg");
    Make({".velloran-rename", "a.jpg"});
    EXPECT_EQ(Fill({.type = 9}), Names{"a.jpg"});
}

TEST_F(RenameList, EveryThirdFromTheSecondOfTenIsTwoFiveEight) {
    Make({"a0.jpg", "a1.jpg", "a2.jpg", "a3.jpg", "a4.jpg", "a5.jpg", "a6.jpg", "a7.jpg", "a8.jpg",
          "a9.jpg"});
    EXPECT_EQ(Fill({.selection = RenameSelection::kEveryMth, .first = 2, .every = 3}),
              (Names{"a1.jpg", "a4.jpg", "a7.jpg"}));
    EXPECT_EQ(Fill({.selection = RenameSelection::kOdd}),
              (Names{"a1.jpg", "a3.jpg", "a5.jpg", "a7.jpg", "a9.jpg"}));
    EXPECT_EQ(Fill({.selection = RenameSelection::kEven}).front(), "a0.jpg");
}

TEST_F(RenameList, RefusesZeroAsFirstAndAsStep) {
    EXPECT_FALSE(
        RefuseFilter({.selection = RenameSelection::kEveryMth, .first = 0, .every = 1}).empty());
    EXPECT_EQ(
        ToUtf8(RefuseFilter({.selection = RenameSelection::kEveryMth, .first = 1, .every = 0})),
        "N和M不能为0，请修正。");
    EXPECT_TRUE(RefuseFilter({.selection = RenameSelection::kAll, .first = 0}).empty());
}

TEST_F(RenameList, SortsByTheTimeOfTheLastChange) {
    Make({"a.jpg", "b.jpg", "c.jpg"});
    const auto now = std::filesystem::last_write_time(folder_ / "a.jpg");
    std::filesystem::last_write_time(folder_ / "a.jpg", now + std::chrono::hours(2));
    std::filesystem::last_write_time(folder_ / "b.jpg", now);
    std::filesystem::last_write_time(folder_ / "c.jpg", now + std::chrono::hours(1));
    EXPECT_EQ(Fill({.sort = RenameSort::kModified}), (Names{"b.jpg", "c.jpg", "a.jpg"}));
    EXPECT_EQ(Fill({.sort = RenameSort::kModified, .descending = true}),
              (Names{"a.jpg", "c.jpg", "b.jpg"}));
}

TEST_F(RenameList, AFolderThatIsNoneFails) {
    std::vector<RenameRow> rows;
    FileError error;
    EXPECT_FALSE(FillList(folder_ / "none", {}, rows, &error));
    EXPECT_EQ(error.reason, FileReason::kNoSuchFile);
}

TEST_F(RenameList, AddsFilesOfItsOwnFolderOnce) {
    Make({"a.jpg", "b.jpg"});
    std::vector<RenameRow> rows = {{"a.jpg", {}}};
    const AddedFiles added = AddFiles(
        folder_.Path(), {folder_ / "a.jpg", folder_ / "b.jpg", folder_ / "sub/c.jpg"}, rows);
    EXPECT_EQ(added.added, 1U);
    EXPECT_EQ(added.alreadyThere, 1U);
    EXPECT_EQ(added.ofOtherFolders, 1U);
    EXPECT_EQ(rows.back().source, "b.jpg");
}

TEST_F(RenameList, NumbersWithoutPaddingAtPositionZero) {
    Names sources(10, "x.jpg");
    const Names targets = Targets({.digits = 0}, sources);
    EXPECT_EQ(targets.front(), "1.jpg");
    EXPECT_EQ(targets.back(), "10.jpg");
}

TEST_F(RenameList, NumbersWithThreeDigitsAtPositionTwo) {
    EXPECT_EQ(
        Targets({.prefix = "p", .suffix = "s", .digits = 2, .start = 1, .step = 2}, {"a.JPG", "b"}),
        (Names{"p001s.JPG", "p003s"}));
    EXPECT_EQ(Targets({.digits = 7, .keepExtension = false}, {"a.jpg"}), Names{"00000001"});
}

TEST_F(RenameList, KeepsTheNameWithoutNumbers) {
    EXPECT_EQ(Targets({.useNumber = false, .prefix = "p-", .suffix = "dropped"}, {"a.b.jpg"}),
              Names{"p-a.b.jpg"});
}

TEST_F(RenameList, RefusesAStepBelowOne) {
    std::vector<RenameRow> rows = {{"a.jpg", "kept"}};
    EXPECT_EQ(ToUtf8(Renumber({.step = 0}, rows)), "增量不能小于1，请更正。");
    EXPECT_EQ(rows[0].target, "kept");
}

TEST_F(RenameList, NumbersBeyondThirtyTwoBitsDoNotWrap) {
    EXPECT_EQ(Targets({.digits = 0, .start = 2147483647, .step = 2147483647}, {"a", "b"}),
              (Names{"2147483647", "4294967294"}));
}

}  // namespace
}  // namespace velloran::test

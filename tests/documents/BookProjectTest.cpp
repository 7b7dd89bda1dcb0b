// The project file byte for byte, and what is made of files that are none.

#include "documents/book/BookProject.h"

#include <gtest/gtest.h>

#include "documents/book/BookRows.h"
#include "documents/book/BookStore.h"
#include "documents/book/PageSetting.h"
#include "documents/book/RowName.h"
#include "support/AsOtherUser.h"
#include "support/ScriptedAsker.h"
#include "support/TempFolder.h"
#include "text/ProfileFile.h"
#include "text/TextEncoding.h"

namespace velloran::test {
namespace {

namespace fs = std::filesystem;

std::string Utf16(std::string_view utf8) {
    std::string bytes = "\xFF\xFE";
    return bytes + EncodeText(TextEncoding::kUtf16Le, ToUtf16(utf8));
}

/// The project that UTF-8 text tells, all of whose pictures are there.
std::optional<BookProject> Parse(std::string_view utf8) {
    return ParseProject(Utf16(utf8), "src", [](const std::string&) { return true; });
}

std::vector<std::string> SourcesOf(const BookProject& project) {
    std::vector<std::string> names;
    for (const BookRow& row : project.rows)
        names.push_back(row.source);
    return names;
}

constexpr std::string_view kExample =
    "[Project]\r\nm_strTgt=D:\\Scan\\Out\r\nm_strPrefix=\r\nm_strPostFix=\r\nm_iViewType=0\r\n"
    "m_iZoom=3\r\nm_bRename=1\r\nm_iDigits=3\r\nm_iStart=1\r\nm_iStep=1\r\nm_iExt=418096\r\n"
    "iCurItem=0\r\nP_1=0001.tif\r\nP_2=0002.tif\r\n[P_2]\r\nPARA_CONTRAST=120\r\n"
    "PARA_PAGE_SPLIT_TYPE=2\r\n";

TEST(BookProject, IsWrittenByteForByte) {
    BookProject project;
    project.target = u"D:\\Scan\\Out";
    project.zoom = 3;
    project.digits = 3;
    project.current = 0;
    project.rows = {{"0001.tif", {}}, {"0002.tif", {}}};
    project.rows[1].values[PARA_CONTRAST] = 120;
    project.rows[1].values[PARA_PAGE_SPLIT_TYPE] = 2;
    EXPECT_EQ(ProjectBytes(project), Utf16(kExample));
}

TEST(BookProject, ComesBackFromItsBytes) {
    const std::optional<BookProject> project = Parse(kExample);
    ASSERT_TRUE(project);
    EXPECT_EQ(project->target, u"D:\\Scan\\Out");
    EXPECT_EQ(project->zoom, 3);
    EXPECT_EQ(project->digits, 3);
    EXPECT_EQ(SourcesOf(*project), (std::vector<std::string>{"0001.tif", "0002.tif"}));
    EXPECT_EQ(project->rows[0].values, DefaultParaValues());
    EXPECT_EQ(project->rows[1].values[PARA_CONTRAST], 120);
    EXPECT_EQ(ProjectBytes(*project), Utf16(kExample));
}

TEST(BookProject, APageAtTheDefaultsWritesNoSection) {
    BookProject project;
    project.rows = {{"a.jpg", {}}};
    project.rows[0].values[PARA_CONTRAST] = 100;
    EXPECT_EQ(ProjectBytes(project).find(Utf16("[P_1]").substr(2)), std::string::npos);
    EXPECT_EQ(Parse("[Project]\nP_1=a\n[P_1]\nPARA_CONTRAST=100\n")->rows[0].values,
              DefaultParaValues());
}

TEST(BookProject, FoldersAreWrittenWithBackslashesAndReadWithEither) {
    BookProject project;
    project.rows = {{"sub/a.jpg", {}}};
    EXPECT_NE(ProjectBytes(project).find(Utf16("P_1=sub\\a.jpg").substr(2)), std::string::npos);
    EXPECT_EQ(SourcesOf(*Parse("[Project]\nP_1=sub\\a.jpg\nP_2=sub/b.jpg\n")),
              (std::vector<std::string>{"sub/a.jpg", "sub/b.jpg"}));
}

TEST(BookProject, ARowWhosePictureHasGoneIsDroppedAndItsSectionGoesToNobody) {
    const auto project =
        ParseProject(Utf16("[Project]\r\nP_1=gone\r\nP_2=here\r\n[P_1]\r\nPARA_CONTRAST=1\r\n"
                           "[P_2]\r\nPARA_CONTRAST=2\r\n"),
                     "src", [](const std::string& name) { return name == "here"; });
    ASSERT_TRUE(project);
    EXPECT_EQ(SourcesOf(*project), std::vector<std::string>{"here"});
    EXPECT_EQ(project->rows[0].values[PARA_CONTRAST], 2);
    EXPECT_EQ(project->missing, std::vector<std::string>{"gone"});
}

TEST(BookProject, AHeadThatIsNoRowIsAnUnknownSection) {
    for (const char* head : {"[P_x]", "[P_1x]", "[P_]", "[P_0]", "[P_-1]", "[P_1", "[Other]",
                             "[P_12345678901234567890]", "[P_2]"}) {
        const auto project =
            Parse(std::string("[Project]\nP_1=a\n") + head + "\nPARA_CONTRAST=7\n");
        ASSERT_TRUE(project);
        EXPECT_EQ(project->rows[0].values, DefaultParaValues()) << head;
    }
}

TEST(BookProject, TheCurrentRowIsOneThatIsThere) {
    EXPECT_EQ(Parse("[Project]\niCurItem=9\nP_1=a\nP_2=b\n")->current, 1);
    EXPECT_EQ(Parse("[Project]\niCurItem=-7\nP_1=a\n")->current, -1);
    EXPECT_EQ(Parse("[Project]\niCurItem=3\n")->current, -1);
}

TEST(BookProject, KeysWithoutAValueLeaveTheirFields) {
    const auto project = Parse(
        "[Project]\nm_iZoom\nm_iStart=\nm_iStep=  \nm_strPrefix=  p  \nm_iDigits= 2 \nP_1=a\n");
    EXPECT_EQ(project->zoom, 6);
    EXPECT_EQ(project->start, 1);
    EXPECT_EQ(project->step, 1);
    EXPECT_EQ(project->prefix, u"p");
    EXPECT_EQ(project->digits, 2);
}

TEST(BookProject, ABadRuleOfNamesIsNormalised) {
    // The extension 9 is none and becomes automatic; the other fields are allowed and stay.
    EXPECT_EQ(Parse("[Project]\nm_iExt=418105\n")->ext, 418096);
}

TEST(BookProject, NumbersOfTwentyDigitsDoNoHarm) {
    const auto project = Parse(
        "[Project]\nm_iStart=99999999999999999999\nP_99999999999999999999=a\nP_1=b\n"
        "[P_1]\nPARA_DPI=12345678901234567890\n");
    EXPECT_EQ(SourcesOf(*project), std::vector<std::string>{"b"});
}

TEST(BookProject, RowsThatLeadOutOfTheFolderAreRefused) {
    const auto project = Parse(
        "[Project]\nP_1=..\\a\nP_2=/etc/passwd\nP_3=sub\\..\\..\\a\nP_4=C:\\a\nP_5=\\\\server\\a\n"
        "P_6=\nP_7=..\nP_8=ok..jpg\nP_9=..x/b\n");
    EXPECT_EQ(SourcesOf(*project), (std::vector<std::string>{"ok..jpg", "..x/b"}));
    EXPECT_EQ(project->refused.size(), 7U);
    EXPECT_FALSE(IsInnerName(std::u16string_view(u"a\0b", 3)));
}

TEST(BookProject, DoubledRowsAreKeptAndTheirSectionGoesToTheFirst) {
    const auto project =
        Parse("[Project]\nP_1=a\nP_1=b\nP_1=a\n[P_1]\nPARA_CONTRAST=5\n[P_1]\nPARA_GAMMA=6\n");
    ASSERT_EQ(project->rows.size(), 3U);
    EXPECT_EQ(project->rows[0].values[PARA_CONTRAST], 5);
    EXPECT_EQ(project->rows[0].values[PARA_GAMMA], 6);
    EXPECT_EQ(project->rows[2].values, DefaultParaValues());
}

TEST(BookProject, OfOtherEncodingsAreRead) {
    const std::string text = "[Project]\r\nm_strPrefix=书\r\nP_1=页.jpg\r\n";
    const auto there = [](const std::string&) { return true; };
    std::string big = "\xFE\xFF";
    big += EncodeText(TextEncoding::kUtf16Be, ToUtf16(text));
    for (const std::string& bytes :
         {text, "\xEF\xBB\xBF" + text, big, EncodeText(TextEncoding::kGb18030, ToUtf16(text))}) {
        const auto project = ParseProject(bytes, "src", there);
        ASSERT_TRUE(project);
        EXPECT_EQ(project->prefix, u"书");
        EXPECT_EQ(SourcesOf(*project), std::vector<std::string>{"页.jpg"});
    }
}

TEST(BookProject, CutAnywhereIsReadOrRefused) {
    const std::string whole = Utf16(kExample);
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const auto project =
            ParseProject(whole.substr(0, size), "src", [](const std::string&) { return true; });
        if (project) {
            EXPECT_LE(project->rows.size(), 2U) << size;
        }
    }
}

TEST(BookProject, NamesThatAreNoTextComeBack) {
    const std::string name = "a\xFF\xE9 \xE4\xB9\xA6\xF0\x9F\x93\x96.jpg";
    EXPECT_EQ(NameOfText(TextOfName(name)), name);
    BookProject project;
    project.rows = {{name, {}}};
    const auto read =
        ParseProject(ProjectBytes(project), "src", [](const std::string&) { return true; });
    EXPECT_EQ(SourcesOf(*read), std::vector<std::string>{name});
}

TEST(BookProject, OfAHundredThousandRowsIsReadAndWritten) {
    BookProject project;
    project.rows.resize(100000);
    for (std::size_t i = 0; i < project.rows.size(); ++i)
        project.rows[i].source = std::to_string(i) + ".jpg";
    project.rows[99999].values[PARA_GAMMA] = 90;
    const auto read =
        ParseProject(ProjectBytes(project), "src", [](const std::string&) { return true; });
    ASSERT_EQ(read->rows.size(), 100000U);
    EXPECT_EQ(read->rows[99999].values[PARA_GAMMA], 90);
}

class BookStore : public testing::Test {
 protected:
    void SetUp() override {
        for (const char* name : {"p2.jpg", "p10.jpg", "p1.jpg", "notes.txt"})
            WriteAll(folder_ / name, name);
        fs::create_directory(folder_ / "sub");
        WriteAll(folder_ / "sub/p3.jpg", "x");
    }
    BookProject Open() {
        BookProject project;
        EXPECT_EQ(OpenSourceFolder(folder_.Path(), project).end, BookEnd::kDone);
        return project;
    }
    BookEnd Save(BookProject& project) { return SaveProject(project, false, asker_).end; }

    TempFolder folder_;
    ScriptedAsker asker_;
};

TEST_F(BookStore, AFreshListIsThePicturesInNaturalOrder) {
    const BookProject project = Open();
    EXPECT_EQ(SourcesOf(project), (std::vector<std::string>{"p1.jpg", "p2.jpg", "p10.jpg"}));
    EXPECT_EQ(project.rows[1].target, u"00002");
    EXPECT_EQ(project.zoom, 6);
    EXPECT_EQ(project.ext, 418096);
    EXPECT_FALSE(fs::exists(folder_ / kProjectFileName));
}

TEST_F(BookStore, KeepsTheFileOfBeforeBesideANewOne) {
    BookProject project = Open();
    ASSERT_EQ(Save(project), BookEnd::kDone);
    const std::string first = ReadAll(folder_ / kProjectFileName);
    project.rows[0].values[PARA_GAMMA] = 90;
    ASSERT_EQ(Save(project), BookEnd::kDone);
    EXPECT_EQ(ReadAll(folder_ / "VelloranPro.prj~"), first);
    EXPECT_NE(ReadAll(folder_ / kProjectFileName), first);
    EXPECT_EQ(Open().rows[0].values[PARA_GAMMA], 90);
}

TEST_F(BookStore, AnEmptyListWritesNothingUnlessItWasEmptied) {
    BookProject project = Open();
    ASSERT_EQ(Save(project), BookEnd::kDone);
    const std::string before = ReadAll(folder_ / kProjectFileName);
    project.rows.clear();
    EXPECT_EQ(Save(project), BookEnd::kDone);
    EXPECT_EQ(ReadAll(folder_ / kProjectFileName), before);
    EXPECT_EQ(SaveProject(project, /*evenEmpty=*/true, asker_).end, BookEnd::kDone);
    EXPECT_NE(ReadAll(folder_ / kProjectFileName), before);
}

TEST_F(BookStore, RowsThatASaveLosesAreNamed) {
    BookProject project = Open();
    ASSERT_EQ(Save(project), BookEnd::kDone);
    fs::remove(folder_ / "p2.jpg");
    BookProject again = Open();
    EXPECT_EQ(again.missing, std::vector<std::string>{"p2.jpg"});
    ASSERT_EQ(Save(again), BookEnd::kDone);
    ASSERT_EQ(asker_.warnings.size(), 1U);
    EXPECT_NE(asker_.warnings[0].find("p2.jpg"), std::string::npos);
}

TEST_F(BookStore, WhatIsNoProjectStaysAndIsToldSo) {
    WriteAll(folder_ / kProjectFileName, "my own notes");
    BookProject project;
    EXPECT_EQ(OpenSourceFolder(folder_.Path(), project).end, BookEnd::kUnreadable);
    EXPECT_EQ(ReadAll(folder_ / kProjectFileName), "my own notes");
    EXPECT_EQ(LoadProject(folder_ / "none", project).end, BookEnd::kNoFolder);
    EXPECT_EQ(LoadProject(folder_ / "sub", project).end, BookEnd::kNoProject);
}

TEST_F(BookStore, AFolderThatCannotBeWrittenFailsAndTheOldFileStands) {
    BookProject project = Open();
    ASSERT_EQ(Save(project), BookEnd::kDone);
    const std::string before = ReadAll(folder_ / kProjectFileName);
    EXPECT_TRUE(TrueAsOtherUser(folder_.Path(), [&] {
        BookProject changed = Open();
        changed.rows[0].values[PARA_GAMMA] = 90;
        const BookOutcome outcome = SaveProject(changed, false, asker_);
        return outcome.end == BookEnd::kFailed && ToUtf8(outcome.message) == "项目文件创建失败。";
    }));
    EXPECT_EQ(ReadAll(folder_ / kProjectFileName), before);
}

TEST(AutoSaveClock, SavesAtEachMinuteOnceThePeriodIsOver) {
    AutoSaveClock clock(3);
    EXPECT_FALSE(clock.Tick());
    EXPECT_FALSE(clock.Tick());
    EXPECT_TRUE(clock.Tick());
    EXPECT_TRUE(clock.Tick());
    AutoSaveClock off(0);
    for (int i = 0; i < 100; ++i)
        EXPECT_FALSE(off.Tick());
}

TEST(PageSetting, ComesBackFromTheProfile) {
    ProfileFile profile;
    EXPECT_EQ(ReadPageSetting(profile), PageSetting());
    PageSetting setting{false, true, 12, GeometryRule::kKeep, u"/books/one"};
    WritePageSetting(setting, profile);
    EXPECT_EQ(ReadPageSetting(profile), setting);
    setting.autoLoad = false;
    WritePageSetting(setting, profile);
    EXPECT_EQ(ReadPageSetting(profile).source, u"") << "nothing is opened at the start";
}

}  // namespace
}  // namespace velloran::test

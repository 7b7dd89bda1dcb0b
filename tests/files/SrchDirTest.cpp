#include "files/SrchDir.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "support/AsOtherUser.h"
#include "support/TempFolder.h"

namespace velloran {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

/// Writes down all that a walk tells, with paths relative to a root.
class RecordingWalker : public CSrchDir {
 public:
    explicit RecordingWalker(fs::path root) : root_(std::move(root)) {}

    Lines lines;
    int stopAfterFiles = -1;
    bool stopOnFolderDone = false;
    bool tellFolders = false;

    Lines Files() const {
        Lines files;
        for (const std::string& line : lines)
            if (line.starts_with("file "))
                files.push_back(line.substr(5));
        return files;
    }

 protected:
    void OnFile(const fs::path& path, const FindData& findData) override {
        EXPECT_EQ(path, findData.path());
        Tell("file", path);
        if (stopAfterFiles > 0 && --stopAfterFiles == 0)
            Stop();
    }
    void OnFolderEnter(const fs::path& path, const FindData&) override {
        if (tellFolders)
            Tell("enter", path);
    }
    void OnFolderLeave(const fs::path& path, const FindData&) override {
        if (tellFolders)
            Tell("leave", path);
    }
    void OnFolderDone(const fs::path& path) override {
        if (tellFolders)
            Tell("done", path);
        if (stopOnFolderDone)
            Stop();
    }
    void OnFolderUnreadable(const fs::path& path, const std::error_code& reason) override {
        EXPECT_TRUE(reason);
        Tell("unreadable", path);
    }

 private:
    void Tell(const char* what, const fs::path& path) {
        lines.push_back(std::string(what) + " " + path.lexically_relative(root_).native());
    }
    fs::path root_;
};

class SrchDir : public testing::Test {
 protected:
    void Make(const std::string& name) {
        fs::create_directories((folder_ / name).parent_path());
        test::WriteAll(folder_ / name, "");
    }
    Lines FilesOf(std::u16string_view filter, bool recursive, const fs::path& excluded = {}) {
        RecordingWalker walker(folder_.Path());
        walker.SetUp(filter, nullptr, recursive, excluded);
        walker.Walk(folder_.Path());
        return walker.lines;
    }

    test::TempFolder folder_;
};

TEST_F(SrchDir, FilesOfAFolderComeBeforeItsSubfoldersInNaturalOrder) {
    for (const char* name : {"b/2.jpg", "b/10.jpg", "b/1.jpg", "a10/x.jpg", "a2/x.jpg", "z.jpg",
                             "p10.jpg", "P2.jpg", "b/c/deep.jpg"})
        Make(name);
    EXPECT_EQ(FilesOf(u"*.jpg", true),
              (Lines{"file P2.jpg", "file p10.jpg", "file z.jpg", "file a2/x.jpg", "file a10/x.jpg",
                     "file b/1.jpg", "file b/2.jpg", "file b/10.jpg", "file b/c/deep.jpg"}));
}

TEST_F(SrchDir, SubfoldersWantRecursion) {
    Make("a.jpg");
    Make("sub/b.jpg");
    EXPECT_EQ(FilesOf(u"*.jpg", false), (Lines{"file a.jpg"}));
}

TEST_F(SrchDir, ExtensionInCapitalsMatches) {
    Make("A.JPG");
    Make("b.Jpg");
    EXPECT_EQ(FilesOf(u".jpg", false), (Lines{"file A.JPG", "file b.Jpg"}));
    EXPECT_EQ(FilesOf(u"*.JPG", false), (Lines{"file A.JPG", "file b.Jpg"}));
}

TEST_F(SrchDir, OnlyAcceptedExtensionsMatch) {
    for (const char* name : {"a.jpg", "b.jpeg", "c.png", "d.jp", "e.jpgx", "jpg", "f.jpg.bak"})
        Make(name);
    EXPECT_EQ(FilesOf(u"*.jpg;*.jpeg", false), (Lines{"file a.jpg", "file b.jpeg"}));
}

TEST_F(SrchDir, EntryWithoutExtensionNeverMatches) {
    Make("jpg");
    Make("name");
    EXPECT_EQ(FilesOf(u"*;*.*;;jpg;name", false), Lines{});
}

TEST_F(SrchDir, FolderNamedLikeAPictureIsNoFile) {
    Make("album.jpg/inner.jpg");
    EXPECT_EQ(FilesOf(u"*.jpg", true), (Lines{"file album.jpg/inner.jpg"}));
}

TEST_F(SrchDir, EmptyFilterWalksAllFoldersAndTellsNoFile) {
    Make("a.jpg");
    Make("sub/deeper/b.jpg");
    RecordingWalker walker(folder_.Path());
    walker.tellFolders = true;
    walker.SetUp({}, nullptr, true);
    walker.Walk(folder_.Path());
    EXPECT_EQ(walker.lines, (Lines{"done .", "enter sub", "done sub", "enter sub/deeper",
                                   "done sub/deeper", "leave sub/deeper", "leave sub"}));
}

TEST_F(SrchDir, FilterIsCutAtItsLength) {
    Make("a.jpg");
    Make("b.png");
    // The 260th character is the last of "*.png"; one more before it cuts the extension to ".pn".
    const std::u16string fitting = u"*.jpg" + std::u16string(250, u';') + u"*.png";
    ASSERT_EQ(fitting.size(), CSrchDir::kFilterLength);
    EXPECT_EQ(FilesOf(fitting, false), (Lines{"file a.jpg", "file b.png"}));
    EXPECT_EQ(FilesOf(u";" + fitting, false), (Lines{"file a.jpg"}));
}

TEST_F(SrchDir, MatchesExtensionAnswersAlone) {
    RecordingWalker walker("/");
    walker.SetUp(u"*.jpg;*.webp", nullptr, false);
    EXPECT_TRUE(walker.MatchesExtension(fs::path("x/a.WEBP")));
    EXPECT_FALSE(walker.MatchesExtension(fs::path("x/a.png")));
    EXPECT_FALSE(walker.MatchesExtension(fs::path("x.jpg/a")));
    Make("a.jpg");
    EXPECT_TRUE(walker.MatchesExtension(FindData(folder_ / "a.jpg")));
}

TEST_F(SrchDir, ExcludedTargetInsideTheSourceIsNotEntered) {
    Make("a.jpg");
    Make("out/done.jpg");
    Make("out/deep/done.jpg");
    Make("output/b.jpg");
    const Lines expected = {"file a.jpg", "file output/b.jpg"};
    EXPECT_EQ(FilesOf(u"*.jpg", true, folder_ / "out"), expected);
    EXPECT_EQ(FilesOf(u"*.jpg", true, folder_ / "out/"), expected);
    EXPECT_EQ(FilesOf(u"*.jpg", true, folder_ / "output/../out"), expected);
}

TEST_F(SrchDir, ExclusionIgnoresCase) {
    Make("a.jpg");
    Make("Out/done.jpg");
    EXPECT_EQ(FilesOf(u"*.jpg", true, folder_ / "OUT"), (Lines{"file a.jpg"}));
}

TEST_F(SrchDir, ExcludedFolderIsKnownThroughALinkToo) {
    Make("a.jpg");
    Make("out/done.jpg");
    fs::create_directory_symlink(folder_ / "out", folder_ / "way");
    EXPECT_EQ(FilesOf(u"*.jpg", true, folder_ / "out"), (Lines{"file a.jpg"}));
}

TEST_F(SrchDir, ExcludedRootIsNotWalked) {
    Make("a.jpg");
    EXPECT_EQ(FilesOf(u"*.jpg", true, folder_.Path()), Lines{});
}

TEST_F(SrchDir, StopDuringAFolderTellsNoFurtherFileAndNoEndOfTheFolder) {
    for (const char* name : {"1.jpg", "2.jpg", "3.jpg", "sub/4.jpg"})
        Make(name);
    RecordingWalker walker(folder_.Path());
    walker.tellFolders = true;
    walker.stopAfterFiles = 2;
    walker.SetUp(u"*.jpg", nullptr, true);
    walker.Walk(folder_.Path());
    EXPECT_EQ(walker.lines, (Lines{"file 1.jpg", "file 2.jpg"}));
    EXPECT_TRUE(walker.IsStopped());
}

TEST_F(SrchDir, StopInASubfolderLeavesItAndEntersNoOther) {
    for (const char* name : {"a/1.jpg", "b/2.jpg"})
        Make(name);
    RecordingWalker walker(folder_.Path());
    walker.tellFolders = true;
    walker.stopAfterFiles = 1;
    walker.SetUp(u"*.jpg", nullptr, true);
    walker.Walk(folder_.Path());
    EXPECT_EQ(walker.lines, (Lines{"done .", "enter a", "file a/1.jpg", "leave a"}));
}

TEST_F(SrchDir, StopAtTheEndOfAFolderEntersNoSubfolder) {
    Make("sub/1.jpg");
    RecordingWalker walker(folder_.Path());
    walker.tellFolders = true;
    walker.stopOnFolderDone = true;
    walker.SetUp(u"*.jpg", nullptr, true);
    walker.Walk(folder_.Path());
    EXPECT_EQ(walker.lines, (Lines{"done ."}));
}

TEST_F(SrchDir, StoppedWalkerWalksAgainAfterSetUp) {
    Make("1.jpg");
    RecordingWalker walker(folder_.Path());
    walker.SetUp(u"*.jpg", nullptr, true);
    walker.Stop();
    walker.Walk(folder_.Path());
    EXPECT_EQ(walker.lines, Lines{});
    walker.SetUp(u"*.jpg", nullptr, true);
    walker.Walk(folder_.Path());
    EXPECT_EQ(walker.lines, (Lines{"file 1.jpg"}));
}

TEST_F(SrchDir, FoldersMadeFromTheFilesAreWalked) {
    // The list of subfolders is read after the files of the folder were told.
    class Maker : public RecordingWalker {
     public:
        using RecordingWalker::RecordingWalker;

     protected:
        void OnFolderDone(const fs::path& path) override {
            if (path.filename() != "made") {
                fs::create_directory(path / "made");
                test::WriteAll(path / "made" / "new.jpg", "");
            }
        }
    };
    Maker walker(folder_.Path());
    walker.SetUp(u"*.jpg", nullptr, true);
    walker.Walk(folder_.Path());
    EXPECT_EQ(walker.lines, (Lines{"file made/new.jpg"}));
}

TEST_F(SrchDir, PathsBeginWithTheFolderAsItIsGiven) {
    Make("sub/a.jpg");
    RecordingWalker walker("");
    walker.SetUp(u"*.jpg", nullptr, true);
    const fs::path odd = folder_ / "sub" / "." / ".." / "sub";
    walker.Walk(odd);
    ASSERT_EQ(walker.lines.size(), 1u);
    class PathKeeper : public CSrchDir {
     public:
        fs::path kept;

     protected:
        void OnFile(const fs::path& path, const FindData&) override { kept = path; }
    } keeper;
    keeper.SetUp(u"*.jpg", nullptr, true);
    keeper.Walk(odd);
    EXPECT_EQ(keeper.kept.native(), (odd / "a.jpg").native());
}

TEST_F(SrchDir, LinkToAFileAndToAFolderIsFollowed) {
    Make("real/a.jpg");
    fs::create_symlink(folder_ / "real/a.jpg", folder_ / "link.jpg");
    fs::create_directory_symlink(folder_ / "real", folder_ / "way");
    EXPECT_EQ(FilesOf(u"*.jpg", true),
              (Lines{"file link.jpg", "file real/a.jpg", "file way/a.jpg"}));
}

TEST_F(SrchDir, LoopOfLinksEnds) {
    Make("sub/a.jpg");
    fs::create_directory_symlink(folder_.Path(), folder_ / "sub" / "up");
    fs::create_directory_symlink(folder_ / "sub", folder_ / "sub" / "self");
    EXPECT_EQ(FilesOf(u"*.jpg", true), (Lines{"file sub/a.jpg"}));
}

TEST_F(SrchDir, LinksBetweenSisterFoldersEndToo) {
    // Twelve folders that link to one another hold 12! ways without one loop.
    constexpr int kFolders = 12;
    for (int from = 0; from < kFolders; ++from)
        Make("f" + std::to_string(from) + "/a.jpg");
    for (int from = 0; from < kFolders; ++from)
        for (int to = 0; to < kFolders; ++to)
            if (from != to)
                fs::create_directory_symlink(
                    folder_ / ("f" + std::to_string(to)),
                    folder_ / ("f" + std::to_string(from)) / ("to" + std::to_string(to)));
    RecordingWalker walker(folder_.Path());
    walker.SetUp(u"*.jpg", nullptr, true);
    walker.Walk(folder_.Path());
    EXPECT_LE(walker.Files().size(), static_cast<std::size_t>(kFolders * CSrchDir::kMaxVisits));
    for (int i = 0; i < kFolders; ++i) {
        const std::string end = "f" + std::to_string(i) + "/a.jpg";
        bool isFound = false;
        for (const std::string& file : walker.Files())
            isFound |= file.ends_with(end) || file.ends_with("to" + std::to_string(i) + "/a.jpg");
        EXPECT_TRUE(isFound) << end;
    }
}

TEST_F(SrchDir, BrokenLinkIsToldAsAFile) {
    fs::create_symlink(folder_ / "gone", folder_ / "a.jpg");
    EXPECT_EQ(FilesOf(u"*.jpg", true), (Lines{"file a.jpg"}));
}

TEST_F(SrchDir, UnreadableFolderIsSkippedAndReported) {
    for (const char* name : {"a/1.jpg", "closed/2.jpg", "d/3.jpg"})
        Make(name);
    fs::permissions(folder_ / "closed", fs::perms::none);
    EXPECT_TRUE(test::TrueAsOtherUser(folder_.Path(), [&] {
        return FilesOf(u"*.jpg", true) ==
               Lines{"file a/1.jpg", "unreadable closed", "file d/3.jpg"};
    }));
}

TEST_F(SrchDir, MissingFolderIsReported) {
    RecordingWalker walker(folder_.Path());
    walker.SetUp(u"*.jpg", nullptr, true);
    walker.Walk(folder_ / "absent");
    EXPECT_EQ(walker.lines, (Lines{"unreadable absent"}));
}

TEST_F(SrchDir, FileInPlaceOfAFolderIsReported) {
    Make("a.jpg");
    RecordingWalker walker(folder_.Path());
    walker.SetUp(u"*.jpg", nullptr, true);
    walker.Walk(folder_ / "a.jpg");
    EXPECT_EQ(walker.lines, (Lines{"unreadable a.jpg"}));
}

TEST_F(SrchDir, NamesThatAreNoTextPassThrough) {
    Make("bad\xFF\xFE.jpg");
    Make("new\nline.jpg");
    Make("\xE9t\xE9/x.jpg");
    Make("\u7b2c\u4e00\u8bdd/\u9875.jpg");
    EXPECT_EQ(FilesOf(u"*.jpg", true),
              (Lines{"file bad\xFF\xFE.jpg", "file new\nline.jpg",
                     "file \u7b2c\u4e00\u8bdd/\u9875.jpg", "file \xE9t\xE9/x.jpg"}));
}

TEST_F(SrchDir, DeepTreesEndAtTheSystemsLimitOfPaths) {
    // Made level by level from inside, as no single path may be that long.
    const fs::path before = fs::current_path();
    fs::current_path(folder_.Path());
    const std::string name(200, 'd');
    for (int level = 0; level < 30; ++level) {
        ASSERT_EQ(mkdir(name.c_str(), 0700), 0);
        ASSERT_EQ(chdir(name.c_str()), 0);
    }
    fs::current_path(before);
    RecordingWalker walker(folder_.Path());
    walker.SetUp(u"*.jpg", nullptr, true);
    walker.Walk(folder_.Path());
    ASSERT_EQ(walker.lines.size(), 1u);
    EXPECT_TRUE(walker.lines[0].starts_with("unreadable "));
}

}  // namespace
}  // namespace velloran

#include "files/Walkers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/MessagePump.h"
#include "files/NaturalOrder.h"
#include "support/TempFolder.h"

namespace velloran {
namespace {

namespace fs = std::filesystem;

class Walkers : public testing::Test {
 protected:
    Walkers() {
        for (const char* name : {"b.jpg", "a.png", "sub/c.jpg", "sub/deep/d.jpg", "a/e.jpg"}) {
            fs::create_directories((folder_ / name).parent_path());
            test::WriteAll(folder_ / name, name);
        }
    }
    ~Walkers() override { SetMessagePump({}); }
    test::TempFolder folder_;
};

TEST_F(Walkers, CounterCountsTheTree) {
    CDirCounter counter;
    counter.SetUp(u"*.jpg", nullptr, true);
    counter.Walk(folder_.Path());
    EXPECT_EQ(counter.GetCount(), 4);
    counter.SetUp(u"*.jpg", nullptr, false);
    counter.Walk(folder_.Path());
    EXPECT_EQ(counter.GetCount(), 1);
}

class StoppableOwner : public WalkOwner {
 public:
    bool IsStopRequested() const override { return isStopped; }
    bool isStopped = false;
};

TEST_F(Walkers, CounterPumpsAndAStoppedCountIsZero) {
    StoppableOwner owner;
    int pumped = 0;
    SetMessagePump([&] { owner.isStopped = ++pumped == 3; });
    CDirCounter counter;
    counter.SetUp(u"*.jpg", &owner, true);
    counter.Walk(folder_.Path());
    EXPECT_EQ(pumped, 3);  // the press of the button came with the third file
    EXPECT_TRUE(counter.IsStopped());
    EXPECT_EQ(counter.GetCount(), 0);
}

TEST_F(Walkers, FirstFileIsOneOfTheFolderItselfBeforeItsSubfolders) {
    CDirGetFirst walker;
    EXPECT_EQ(walker.GetFirstFile(folder_.Path(), u"*.jpg", true), folder_ / "b.jpg");
    EXPECT_TRUE(walker.IsStopped());
}

TEST_F(Walkers, FirstFileOfATreeIsFoundDepthFirst) {
    fs::remove(folder_ / "b.jpg");
    fs::remove(folder_ / "a/e.jpg");
    fs::remove(folder_ / "sub/c.jpg");
    test::WriteAll(folder_ / "sub/other.jpg", "");
    CDirGetFirst walker;
    EXPECT_EQ(walker.GetFirstFile(folder_.Path(), u"*.jpg", true), folder_ / "sub/other.jpg");
    EXPECT_EQ(walker.GetFirstFile(folder_.Path(), u"*.jpg", false), std::nullopt);
    EXPECT_EQ(walker.GetFirstFile(folder_.Path(), u"*.jpg", true, folder_ / "sub"), std::nullopt);
    EXPECT_EQ(walker.GetFirstFile(folder_.Path(), u"*.gif", true), std::nullopt);
}

TEST_F(Walkers, InfoListsPathsWithTheirSizesAndTimes) {
    CStrMng list;
    CStructMng<FileRecord> records;
    CDirInfo info;
    info.Collect(folder_.Path(), u"*.jpg", true, {}, list, &records);
    ASSERT_EQ(list.GetCount(), 4);
    ASSERT_EQ(records.GetCount(), 4);
    EXPECT_EQ(list.Get(1), folder_ / "b.jpg");
    EXPECT_EQ(list.Get(4), folder_ / "sub/deep/d.jpg");
    for (int i = 1; i <= 4; ++i) {
        EXPECT_EQ(records.Get(i).nameIndex, i);
        EXPECT_EQ(records.Get(i).size, fs::file_size(list.Get(i)));
    }
    // Made in this order, so their times do not fall.
    EXPECT_LE(records.Get(list.Find(folder_ / "b.jpg")).creationTime,
              records.Get(list.Find(folder_ / "a/e.jpg")).creationTime);
    EXPECT_GT(records.Get(1).creationTime, std::int64_t{1'600'000'000} * 1'000'000'000);
}

TEST_F(Walkers, InfoAppendsAndMayBeSortedByTheUserOfTheList) {
    CStrMng list;
    CDirInfo info;
    info.Collect(folder_ / "sub", u"*.jpg", false, {}, list);
    info.Collect(folder_.Path(), u"*.png;*.jpg", false, {}, list);
    ASSERT_EQ(list.GetCount(), 3);
    list.Sort([](const fs::path& a, const fs::path& b) {
        return NaturalLess()(a.filename(), b.filename());
    });
    EXPECT_EQ(list.Get(1), folder_ / "a.png");
    EXPECT_EQ(list.Get(3), folder_ / "sub/c.jpg");
}

class OnlyC : public WalkOwner {
 public:
    bool AcceptsFile(const fs::path& path) override { return path.filename() == "c.jpg"; }
};

TEST_F(Walkers, GetFilesTakesTheNamesThatTheOwnerAccepts) {
    OnlyC owner;
    CGetFiles files;
    files.SetUp(u"*.jpg", &owner, true);
    files.Walk(folder_.Path());
    ASSERT_EQ(files.GetNames().GetCount(), 1);
    EXPECT_EQ(files.GetNames().Get(1), "c.jpg");
    files.SetUp(u"*.jpg", nullptr, true);
    files.Walk(folder_.Path());
    EXPECT_EQ(files.GetNames().GetCount(), 4);
}

}  // namespace
}  // namespace velloran

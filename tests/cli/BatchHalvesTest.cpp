// Pages of a batch that are searched for themselves, and double pages that become two files.

#include "BatchFolder.h"

namespace velloran::test {
namespace {

class BatchHalves : public BatchFolder {
 protected:
    /// A double page: two grey sheets, the left one lighter, a dark gutter between.
    void WriteSpread(const std::string& name, int gutter, int width = 200) const {
        CDibImage page = Filled(width, 120, 8, 230);
        for (int y = 0; y < 120; ++y)
            for (int x = 0; x < width; ++x)
                SetIndex(page, x, y, x < gutter ? 240 : x < gutter + 4 ? 20 : 180);
        ASSERT_TRUE(SaveImageFile(Source() / name, page, 90, 300, 2, false, CParaBlock()));
    }
    int WidthOf(const std::string& name) const {
        CDibImage page;
        EXPECT_TRUE(LoadImageFile(Target() / name, page)) << name;
        return page.IsValid() ? page.GetWidth() : 0;
    }
};

TEST_F(BatchHalves, ComeInReadingOrder) {
    WriteSpread("a.png", 80);
    ASSERT_EQ(
        Run({"src", "out", "--both-halves", "-s", "PARA_PAGE_SPLIT_TYPE=3", "--ext", "png"}).status,
        0);
    EXPECT_EQ(FilesIn(Target()), (Names{"a_1.png", "a_2.png"}));
    EXPECT_GT(GrayOf(Target() / "a_1.png"), 200) << "the left half is read first";
    EXPECT_LT(GrayOf(Target() / "a_2.png"), 200);
    ASSERT_EQ(Run({"src", "right", "--both-halves", "-s", "PARA_PAGE_SPLIT_TYPE=2", "--ext", "png"})
                  .status,
              0);
    EXPECT_EQ(ReadAll(folder_ / "right/a_1.png"), ReadAll(Target() / "a_2.png"));
    EXPECT_EQ(ReadAll(folder_ / "right/a_2.png"), ReadAll(Target() / "a_1.png"));
}

TEST_F(BatchHalves, AreTheSameForEveryNumberOfJobs) {
    for (int i = 0; i < 6; ++i)
        WriteSpread(std::to_string(i) + ".png", 80 + 4 * i, 200 + 10 * i);
    for (const std::string jobs : {"1", "4"})
        ASSERT_EQ(
            Run({"src", jobs, "--both-halves", "-s", "PARA_PAGE_SPLIT_TYPE=3", "--jobs", jobs})
                .status,
            0);
    EXPECT_EQ(FilesIn(folder_ / "1").size(), 12U);
    for (const std::string& name : FilesIn(folder_ / "1"))
        EXPECT_EQ(ReadAll(folder_ / "1" / name), ReadAll(folder_ / "4" / name)) << name;
}

TEST_F(BatchHalves, OfWholePagesAreNoHalves) {
    WriteSpread("a.png", 80);
    ASSERT_EQ(Run({"src", "out", "--both-halves", "-s", "PARA_PAGE_SPLIT_TYPE=1"}).status, 0);
    EXPECT_EQ(FilesIn(Target()), Names{"a.jpg"});
    EXPECT_EQ(Run({"src", "out", "--both-halves", "--skip-colour"}).status, 2);
}

TEST_F(BatchHalves, NeverTakeThePlaceOfAPageCalledLikeThem) {
    WriteSpread("a.png", 80);
    WriteSpread("a_1.png", 90);
    const Outcome outcome = Run(
        {"src", "src", "--both-halves", "--yes", "--ext", "png", "-s", "PARA_PAGE_SPLIT_TYPE=3"});
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(FilesIn(Source()),
              (Names{"a.png", "a_1.png", "a_1_1.png", "a_1_2.png", "a_1~2.png", "a_2.png"}));
}

TEST_F(BatchHalves, EachPageIsSearchedForItself) {
    WriteSpread("a.png", 80);
    WriteSpread("b.png", 140);
    const std::vector<std::string> words = {"src",   "shared", "-s", "PARA_PAGE_SPLIT_TYPE=3",
                                            "--ext", "png"};
    ASSERT_EQ(Run(words).status, 0);
    std::vector<std::string> each = words;
    each[1] = "out";
    each.push_back("--each-page");
    ASSERT_EQ(Run(each).status, 0);
    EXPECT_GT(WidthOf("b.png"), WidthOf("a.png") + 30) << "its gutter lies further right";
    EXPECT_EQ(ReadAll(Target() / "a.png"), ReadAll(folder_ / "shared/a.png"));
    EXPECT_NE(ReadAll(Target() / "b.png"), ReadAll(folder_ / "shared/b.png"))
        << "the first page's line serves the second";
}

}  // namespace
}  // namespace velloran::test

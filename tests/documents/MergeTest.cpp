// Pairs of pages: roles, places on the canvas worked out by hand, and the file of the state.

#include <gtest/gtest.h>

#include "codecs/Formats.h"
#include "documents/merge/MergePair.h"
#include "documents/merge/MergeRun.h"
#include "files/ImageFiles.h"
#include "params/ParaBlock.h"
#include "support/Images.h"
#include "support/ScriptedAsker.h"
#include "support/TempFolder.h"

namespace velloran::test {
namespace {

namespace fs = std::filesystem;

MergeState StateOf(const std::string& checks, bool twoFolders = false) {
    MergeState state;
    state.para.twoSources = twoFolders ? 1 : 0;
    for (std::size_t i = 0; i < checks.size(); ++i)
        state.items.push_back({.name = std::to_string(i),
                               .folder = twoFolders ? static_cast<int>(i % 2) : 0,
                               .checked = checks[i] == 'x'});
    return state;
}

/// A letter a row: s single, 1 first, 2 second.
std::string RolesText(const MergeState& state) {
    std::string text;
    for (const MergeRole role : RolesOf(state))
        text += role == MergeRole::kSingle ? 's' : role == MergeRole::kFirst ? '1' : '2';
    return text;
}

TEST(MergeRoles, PairCheckedRowsFromTheTop) {
    EXPECT_EQ(RolesText(StateOf("xxxx")), "1212");
    EXPECT_EQ(RolesText(StateOf("xxx")), "12s") << "an odd number leaves the last one";
    EXPECT_EQ(RolesText(StateOf("x-xx")), "ss12") << "an unchecked row clears the count";
    EXPECT_EQ(RolesText(StateOf("xx-x")), "12ss");
    EXPECT_EQ(RolesText(StateOf("")), "");
}

TEST(MergeRoles, InTwoFoldersAnUncheckedRowLeavesItsNeighbourAlone) {
    EXPECT_EQ(RolesText(StateOf("xxxx", true)), "1212");
    EXPECT_EQ(RolesText(StateOf("-xxx", true)), "ss12");
    MergeState uneven = StateOf("xxxx", true);
    uneven.items[3].folder = 0;  // the second folder has run out
    EXPECT_EQ(RolesText(uneven), "12ss");
}

class MergePages : public testing::Test {
 protected:
    PairResult Join(const CDibImage& one, const CDibImage& two, PairItem first = {},
                    PairItem second = {}) {
        PairRequest request;
        request.para = &para_;
        request.first = first;
        request.second = second;
        request.bits1 = request.bits2 = 8;
        PairResult result;
        EXPECT_EQ(MergePair(one, two, request, result), PairEnd::kDone);
        return result;
    }
    static int GrayAt(const PairResult& result, int x, int y) {
        return PixelAt(result.image, x, y).red;
    }

    MergePara para_;
    CDibImage small_ = Filled(20, 30, 8, 50), tall_ = Filled(10, 50, 8, 150);
};

TEST_F(MergePages, StandSideBySideAtTheBottom) {
    para_.blank = 5;
    const PairResult result = Join(small_, tall_);
    EXPECT_EQ(result.image.GetWidth(), 35);
    EXPECT_EQ(result.image.GetHeight(), 50);
    EXPECT_EQ(result.first, (PairPlace{0, 20, 20, 30}));
    EXPECT_EQ(result.second, (PairPlace{25, 0, 10, 50}));
    EXPECT_EQ(GrayAt(result, 0, 19), 255) << "filled above";
    EXPECT_EQ(GrayAt(result, 0, 20), 50);
    EXPECT_EQ(GrayAt(result, 22, 40), 255) << "the gap";
    EXPECT_EQ(GrayAt(result, 25, 0), 150);
}

TEST_F(MergePages, TurnAroundAndStandOnEachOther) {
    para_.layout = 1;
    EXPECT_EQ(Join(small_, tall_).second, (PairPlace{0, 0, 10, 50}));
    EXPECT_EQ(Join(small_, tall_).first, (PairPlace{10, 20, 20, 30}));
    para_.layout = 2;
    EXPECT_EQ(Join(small_, tall_).first, (PairPlace{0, 0, 20, 30}));
    EXPECT_EQ(Join(small_, tall_).second, (PairPlace{0, 30, 10, 50})) << "to the left";
    para_.layout = 3;
    EXPECT_EQ(Join(small_, tall_).first, (PairPlace{0, 50, 20, 30}));
}

TEST_F(MergePages, AlignToTheTopTheRightAndTheMiddle) {
    para_.align = 1;
    EXPECT_EQ(Join(small_, tall_).first.y, 0);
    para_.align = 2;
    EXPECT_EQ(Join(small_, tall_).first.y, 10);
    para_.layout = 2;
    EXPECT_EQ(Join(small_, tall_).second.x, 5);
    para_.align = 1;
    EXPECT_EQ(Join(small_, tall_).second.x, 10);
}

TEST_F(MergePages, ReduceTheTallerInProportion) {
    para_.size = 2;
    const PairResult reduced = Join(small_, tall_);
    EXPECT_EQ(reduced.second, (PairPlace{20, 0, 6, 30}));
    EXPECT_EQ(reduced.image.GetHeight(), 30);
    para_.size = 1;
    const PairResult enlarged = Join(small_, tall_);
    EXPECT_EQ(enlarged.first, (PairPlace{0, 0, 33, 50})) << "20 / 30 * 50, rounded";
}

TEST_F(MergePages, MoveDownAndRightByTheirOffsets) {
    const PairResult result = Join(small_, tall_, {.offsetH = 3, .offsetV = -4});
    EXPECT_EQ(result.first, (PairPlace{3, 16, 20, 30}));
    EXPECT_EQ(Join(small_, tall_, {.offsetV = 30}).first.y, 20) << "as far as its size: back to 0";
    para_.size = 1;
    EXPECT_EQ(Join(small_, tall_, {.offsetV = 9}).first.y, 0) << "across the join it is dropped";
}

TEST_F(MergePages, GrowByTheirScaleAndNeverVanish) {
    EXPECT_EQ(Join(small_, tall_, {.scale = 4}).first.width, 24);
    const PairResult gone = Join(small_, tall_, {.scale = -1000});
    EXPECT_EQ(gone.first.width, 1);
    PairRequest request;
    request.para = &para_;
    request.first.scale = 2'000'000'000;
    PairResult result;
    EXPECT_EQ(MergePair(small_, tall_, request, result), PairEnd::kRefused);
    EXPECT_EQ(MergePair(CDibImage(), tall_, request, result), PairEnd::kRefused);
}

TEST_F(MergePages, ExtendedCanvasHoldsBoth) {
    para_.extendEdge = true;
    const PairResult result = Join(small_, tall_, {.offsetV = 15});
    EXPECT_EQ(result.image.GetHeight(), 65);
    EXPECT_EQ(result.first, (PairPlace{0, 35, 20, 30}));
    EXPECT_EQ(result.second.y, 0);
}

TEST_F(MergePages, HaveTheDepthThatTheirFilesHad) {
    EXPECT_EQ(Join(small_, tall_).image.GetBpp(), 8);
    PairRequest request;
    request.para = &para_;
    request.bits1 = 24;
    request.bits2 = 8;
    PairResult result;
    ASSERT_EQ(MergePair(small_, tall_, request, result), PairEnd::kDone);
    EXPECT_EQ(result.image.GetBpp(), 24);
    request.bits1 = request.bits2 = 1;
    const CDibImage black = Filled(20, 20, 8, 0), white = Filled(20, 20, 8, 255);
    ASSERT_EQ(MergePair(black, white, request, result), PairEnd::kDone);
    EXPECT_EQ(result.image.GetBpp(), 1);
    EXPECT_TRUE(result.image.IsBW());
    EXPECT_EQ(GrayAt(result, 19, 3), 0);
    EXPECT_EQ(GrayAt(result, 20, 3), 255);
    ASSERT_EQ(MergePair(small_, tall_, request, result), PairEnd::kDone);
    EXPECT_EQ(result.image.GetBpp(), 4) << "three colours";
    EXPECT_EQ(GrayAt(result, 0, 49), 50);
    EXPECT_EQ(GrayAt(result, 25, 0), 150);
    EXPECT_EQ(GrayAt(result, 0, 0), 255);
}

TEST_F(MergePages, TellAResolution) {
    para_.dpi = 200;
    EXPECT_EQ(Join(small_, tall_).dpi, 200);
    para_.dpi = 99;
    EXPECT_EQ(Join(small_, tall_).dpi, 150) << "unknown, and narrow";
    CDibImage scanned = small_;
    scanned.SetXDpi(400);
    EXPECT_EQ(Join(scanned, tall_).dpi, 400);
    EXPECT_EQ(Join(Filled(1300, 1300, 8, 9), tall_).dpi, 300);
}

TEST_F(MergePages, OfLargeScansScaleWhatWasSetOnASmallPreview) {
    const CDibImage usual = Filled(3000, 10, 8, 0), large = Filled(3001, 10, 8, 0),
                    huge = Filled(10, 6001, 8, 0);
    EXPECT_EQ(SizeClassOf(usual, usual), 0);
    EXPECT_EQ(SizeClassOf(usual, large), 2);
    EXPECT_EQ(SizeClassOf(huge, usual), 1);
    EXPECT_EQ(FactorOf(0), 1);
    EXPECT_EQ(FactorOf(1), 3);
    EXPECT_EQ(FactorOf(2), 2);
}

TEST(MergeType, FollowsTheSources) {
    const CDibImage gray = Filled(4, 4, 8, 9), color = Filled(4, 4, 24, 9),
                    black = Filled(4, 4, 1, 0);
    EXPECT_EQ(AutomaticMergeType(kTypePng, kTypeJpeg, gray), ".jpg");
    EXPECT_EQ(AutomaticMergeType(kTypeJ2k, kTypePng, gray), ".jp2");
    EXPECT_EQ(AutomaticMergeType(kTypeBmp, kTypeBmp, gray), ".bmp");
    EXPECT_EQ(AutomaticMergeType(kTypeBmp, kTypeTiff, gray), ".tif");
    EXPECT_EQ(AutomaticMergeType(kTypeBmp, kTypePng, gray), ".png");
    EXPECT_EQ(AutomaticMergeType(kTypeGif, kTypeWebp, gray), ".webp");
    EXPECT_EQ(AutomaticMergeType(kTypeGif, kTypeBmp, black), ".tif");
    EXPECT_EQ(AutomaticMergeType(kTypeGif, kTypeGif, color), ".jpg");
}

TEST(MergeFile, GoesBothWays) {
    MergeState state;
    state.para.source1 = u"/a";
    state.para.layout = 2;
    state.para.fill = 0x112233;
    state.items = {{.name = "1.jpg", .offsetH = -3, .scale = 7, .checked = false},
                   {.name = "1.jpg", .folder = 1, .deskewType = 4, .deskewAngle = -150}};
    ProfileFile profile;
    WriteMergeState(state, profile);
    ProfileFile again;
    again.Parse(profile.ToBytes());
    MergePara para;
    ReadMergeOptions(again, para);
    EXPECT_EQ(para.source1, u"/a");
    EXPECT_EQ(para.layout, 2);
    EXPECT_EQ(para.fill, 0x112233);
    EXPECT_EQ(para.jpegQuality, 70);
    std::vector<MergeItem> items = {
        {.name = "1.jpg"}, {.name = "1.jpg", .folder = 1}, {.name = ""}, {.name = "1.jpg"}};
    ReadMergeItems(again, items);
    EXPECT_EQ(items[0].offsetH, -3);
    EXPECT_EQ(items[0].scale, 7);
    EXPECT_FALSE(items[0].checked);
    EXPECT_EQ(items[1].deskewAngle, -150);
    EXPECT_TRUE(items[1].checked);
    EXPECT_TRUE(items[3].checked) << "reading stops at a row without a name";
}

TEST(MergeFile, OfTheUsualFormIsRead) {
    ProfileFile profile;
    profile.Parse(
        "[Main]\r\nstrSrc1=/books\r\nLayout=1\r\nJpgOptimize=-1\r\nJpgProgressive=0\r\n"
        "[a.jpg]\r\nOffsetVertical=12\r\nChecked=0\r\n");
    MergePara para;
    ReadMergeOptions(profile, para);
    Settings settings;
    ApplyJpegOptions(para, settings);
    EXPECT_EQ(settings[JPG_OPTIMIZE], 1) << "-1 leaves it";
    EXPECT_EQ(settings[JPG_PROGRESSIVE], 0);
    std::vector<MergeItem> items = {{.name = "a.jpg"}, {.name = "main"}};
    ReadMergeItems(profile, items);
    EXPECT_EQ(items[0].offsetV, 12);
    EXPECT_FALSE(items[0].checked);
    EXPECT_TRUE(items[1].checked) << "the options are no row";
}

class MergeRun : public testing::Test {
 protected:
    void Write(const std::string& name, int width, int height, int gray) {
        fs::create_directories((folder_ / name).parent_path());
        CDibImage page = Filled(width, height, 8, static_cast<std::uint8_t>(gray));
        ASSERT_TRUE(SaveImageFile(folder_ / name, page, 90, 300, 2, false, CParaBlock()));
    }
    MergeState Fill(bool two) {
        MergeState state;
        state.para.source1 = ToUtf16((folder_ / "one").native());
        state.para.source2 = ToUtf16((folder_ / "two").native());
        state.para.twoSources = two ? 1 : 0;
        EXPECT_TRUE(FillMergeList(state, nullptr));
        return state;
    }
    MergeOutcome Run(MergeState& state) {
        return RunMerge(state, Settings(), folder_ / "log.txt", asker_);
    }
    std::vector<std::string> NamesIn(const std::string& name) const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder_ / name))
            names.push_back(entry.path().filename().native());
        std::sort(names.begin(), names.end());
        return names;
    }

    TempFolder folder_;
    ScriptedAsker asker_;
};

TEST_F(MergeRun, JoinsPairsOfOneFolderAndCopiesTheLast) {
    for (int i = 1; i <= 5; ++i)
        Write("one/" + std::to_string(i) + ".png", 20, 30, 40 * i);
    MergeState state = Fill(false);
    EXPECT_EQ(ToUtf8(state.para.target), (folder_ / "one").native() + "_拼接");
    const MergeOutcome outcome = Run(state);
    EXPECT_EQ(outcome.joined, 2U);
    EXPECT_EQ(outcome.copied, 1U);
    EXPECT_EQ(NamesIn("one_拼接"), (std::vector<std::string>{"1_2.png", "3_4.png", "5.png"}));
    EXPECT_EQ(ReadAll(folder_ / "one_拼接/5.png"), ReadAll(folder_ / "one/5.png"));
    EXPECT_EQ(outcome.targets[0].width, 40);
    EXPECT_EQ(ToUtf8(asker_.ends.at(0).text), "合并完成。");
}

TEST_F(MergeRun, JoinsTwoFoldersAndKeepsTheSurplus) {
    for (int i = 1; i <= 3; ++i)
        Write("one/" + std::to_string(i) + ".png", 20, 30, 40 * i);
    Write("two/1.png", 10, 30, 250);
    MergeState state = Fill(true);
    const MergeOutcome outcome = Run(state);
    EXPECT_EQ(NamesIn("one_拼接"), (std::vector<std::string>{"1_1.png", "2.png", "3.png"}));
    EXPECT_EQ(outcome.targets[0].width, 30);
}

TEST_F(MergeRun, ResultsOfOneNameDoNotMeet) {
    Write("one/1.png", 20, 30, 1);
    Write("one/2.png", 20, 30, 2);
    Write("two/2.png", 20, 30, 3);
    MergeState state = Fill(true);
    state.items[0].checked = false;
    for (MergeItem& item : state.items)
        item.checked = false;
    EXPECT_EQ(Run(state).copied, 3U);
    EXPECT_EQ(NamesIn("one_拼接"), (std::vector<std::string>{"1.png", "2.png", "2~2.png"}));
}

TEST_F(MergeRun, AFileThatCannotBeReadIsLoggedAndTheOthersGoOn) {
    for (int i = 1; i <= 4; ++i)
        Write("one/" + std::to_string(i) + ".png", 20, 30, 40 * i);
    WriteAll(folder_ / "one/2.png", "damaged");
    MergeState state = Fill(false);
    const MergeOutcome outcome = Run(state);
    EXPECT_EQ(outcome.joined, 1U);
    ASSERT_EQ(outcome.failures.size(), 1U);
    EXPECT_EQ(ToUtf8(outcome.failures[0].message), "读取失败");
}

TEST_F(MergeRun, RefusesAnEmptyListAndATargetThatIsASource) {
    MergeState empty;
    EXPECT_EQ(ToUtf8(Run(empty).message), "请先选择有效的源文件夹。");
    Write("one/1.png", 20, 30, 1);
    MergeState state = Fill(false);
    state.para.target = state.para.source1;
    EXPECT_EQ(Run(state).end, MergeOutcome::End::kRefused);
    state.para.target.clear();
    EXPECT_EQ(ToUtf8(Run(state).message), "请先选择目标文件夹。");
}

}  // namespace
}  // namespace velloran::test

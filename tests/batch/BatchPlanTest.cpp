#include "batch/BatchPlan.h"

#include <gtest/gtest.h>

#include "codecs/Formats.h"
#include "files/TargetNames.h"
#include "params/ParaBlock.h"
#include "pipeline/FoundValues.h"
#include "support/TempFolder.h"
#include "text/Labels.h"

namespace velloran::test {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

TEST(TargetNames, LowerCaseTouchesAtMost128Characters) {
    EXPECT_EQ(LowerCaseName("PAGE Ä 漫.PNG"), "page ä 漫.png");
    EXPECT_EQ(LowerCaseName(std::string(130, 'X')), std::string(128, 'x') + "XX");
    EXPECT_EQ(LowerCaseName("A\xFF\xC3"
                            "B"),
              "a\xFF\xC3"
              "b");
    std::string wide;
    for (int i = 0; i < 129; ++i)
        wide += "Ä";
    EXPECT_EQ(LowerCaseName(wide).substr(2 * 127), "äÄ");
}

TEST(TargetNames, OnlyALaterDotOpensAnExtension) {
    const auto parts = [](std::string_view name) {
        return std::string(SplitName(name).stem) + "|" + std::string(SplitName(name).extension);
    };
    EXPECT_EQ(parts("a.tar.png"), "a.tar|.png");
    EXPECT_EQ(parts(".png"), ".png|");
    EXPECT_EQ(parts("a"), "a|");
    EXPECT_EQ(parts("a."), "a|.");
}

struct RefusalCase {
    const char* name;
    int color, extensionId;  // id of PARA_TGT_FILES
    std::u16string_view refusal;
};
void PrintTo(const RefusalCase& c, std::ostream* out) {
    *out << c.name;
}
class DepthAndExtension : public testing::TestWithParam<RefusalCase> {};

TEST_P(DepthAndExtension, GoTogetherOrAreRefused) {
    CParaBlock block;
    block.SetPara(PARA_COLOR, GetParam().color);
    block.SetPara(PARA_TGT_FILES, GetParam().extensionId);
    EXPECT_EQ(RefuseTarget(ReadBatchTarget(block.GetSettings())), GetParam().refusal);
}

const RefusalCase kRefusalCases[] = {
    {"UnreducedAsJpeg", 2, 6, u""},
    {"GrayAsJpeg", 1, 6, u""},
    {"ReducedAutomatically", 3, 0, u""},
    {"ReducedAsPng", 3, 3, u""},
    {"ReducedAsGif", 3, 4, u""},
    {"ReducedAsWebp", 3, 5, u""},
    {"ReducedAsBmp", 3, 2, u""},
    {"ReducedAsTiff", 3, 1, u""},
    {"ReducedAsJpeg", 3, 6, labels::kReducedOnlyPng},
    {"ReducedAsJpeg2000", 17, 7, labels::kReducedOnlyPng},
    {"SixteenBitsAutomatically", 18, 0, u""},
    {"SixteenBitsAsBmp", 19, 2, u""},
    {"SixteenBitsAsPng", 18, 3, labels::kBmpOnlyFor16Bit},
};
INSTANTIATE_TEST_SUITE_P(BatchRules, DepthAndExtension, testing::ValuesIn(kRefusalCases),
                         [](const auto& test) { return test.param.name; });

TEST(BatchRules, DpiIsLimitedAndSixteenBitsAreBmp) {
    CParaBlock block;
    block.SetPara(PARA_DPI, 9000);
    EXPECT_EQ(ReadBatchTarget(block.GetSettings()).dpi, 8000);
    block.SetPara(PARA_DPI, -5);
    block.SetPara(PARA_COLOR, 18);
    EXPECT_EQ(ReadBatchTarget(block.GetSettings()).dpi, 0);
    EXPECT_EQ(ReadBatchTarget(block.GetSettings()).extension, u"bmp");
}

/// Plans over empty files: nothing is read.
class Plan : public testing::Test {
 protected:
    void Touch(const std::string& name) const {
        fs::create_directories((folder_ / name).parent_path());
        WriteAll(folder_ / name, "");
    }
    PlanRequest Request(std::u16string_view extension) const {
        PlanRequest request;
        request.source = folder_ / "s";
        request.target = folder_ / "t";
        request.filter = SourceFilter(0);
        request.names.extension = extension;
        request.names.extensionPosition = extension.empty() ? 0 : 1;
        return request;
    }
    /// Source and target of each file, without the test's own folder.
    Texts Targets(const PlanRequest& request, std::string_view extension) {
        BatchPlan::Listener listener;
        listener.renamed = [this](const std::string& later, const std::string& earlier,
                                  const std::string& name) {
            renamed_.push_back(Short(later) + " " + Short(earlier) + " " + Short(name));
        };
        EXPECT_TRUE(plan_.Make(request, listener));
        Texts targets;
        for (std::size_t i = 0; i < plan_.Size(); ++i)
            targets.push_back(Short(plan_.At(i).source) + " " +
                              Short(plan_.TargetPath(plan_.At(i), extension).native()));
        return targets;
    }
    std::string Short(const std::string& path) const {
        const std::string front = folder_.Path().native() + "/";
        return path.starts_with(front) ? path.substr(front.size()) : path;
    }

    TempFolder folder_;
    BatchPlan plan_;
    Texts renamed_;
};

TEST_F(Plan, KeepsSubfoldersAndNaturalOrder) {
    for (const char* name : {"s/p10.png", "s/p2.png", "s/Sub/A.JPEG"})
        Touch(name);
    EXPECT_EQ(Targets(Request(u"jpg"), ".jpg"),
              (Texts{"s/p2.png t/p2.jpg", "s/p10.png t/p10.jpg", "s/Sub/A.JPEG t/Sub/a.jpg"}));
    EXPECT_TRUE(renamed_.empty());
}

TEST_F(Plan, LaterSourcesOfAStemGetNumbersAndAWarningThatNamesBoth) {
    for (const char* name : {"s/b.bmp", "s/b.png", "s/b.tif", "s/x/b.png"})
        Touch(name);
    EXPECT_EQ(Targets(Request(u"jpg"), ".jpg"),
              (Texts{"s/b.bmp t/b.jpg", "s/b.png t/b~2.jpg", "s/b.tif t/b~3.jpg",
                     "s/x/b.png t/x/b.jpg"}));
    EXPECT_EQ(renamed_, (Texts{"s/b.png s/b.bmp t/b~2.jpg", "s/b.tif s/b.bmp t/b~3.jpg"}));
}

TEST_F(Plan, ANumberThatASourceBearsIsNotGivenTwice) {
    for (const char* name : {"s/b.bmp", "s/b.png", "s/b~2.png"})
        Touch(name);
    EXPECT_EQ(Targets(Request(u"jpg"), ".jpg"),
              (Texts{"s/b.bmp t/b.jpg", "s/b.png t/b~2.jpg", "s/b~2.png t/b~2~2.jpg"}));
}

TEST_F(Plan, TheTargetFolderInsideTheSourceIsLeftOut) {
    for (const char* name : {"s/a.png", "s/t/a.png", "s/u/a.png"})
        Touch(name);
    PlanRequest request = Request(u"jpg");
    request.target = folder_ / "s" / "t";
    EXPECT_EQ(Targets(request, ".jpg"), (Texts{"s/a.png s/t/a.jpg", "s/u/a.png s/t/u/a.jpg"}));
}

TEST_F(Plan, InTheSameFolderASourceKeepsItsOwnNameBeforeOthersOfItsStem) {
    for (const char* name : {"s/b.bmp", "s/b.jpg", "s/b~2.jpg"})
        Touch(name);
    PlanRequest request = Request(u"jpg");
    request.target = request.source;
    EXPECT_EQ(Targets(request, ".jpg"),
              (Texts{"s/b.bmp s/b~3.jpg", "s/b.jpg s/b.jpg", "s/b~2.jpg s/b~2.jpg"}));
    EXPECT_TRUE(plan_.IsSameFolder());
}

TEST_F(Plan, ChosenFilesKeepTheirSubfolderBeneathTheSource) {
    for (const char* name : {"s/x/a.png", "elsewhere/a.png", "elsewhere/b.png"})
        Touch(name);
    PlanRequest request = Request(u"jpg");
    request.useList = true;
    const std::string front = folder_.Path().native();
    request.list = {front + "/elsewhere/a.png", front + "/s/../s/x/a.png",
                    front + "/elsewhere/b.png", front + "/elsewhere/b.png"};
    EXPECT_EQ(
        Targets(request, ".jpg"),
        (Texts{"elsewhere/a.png t/a.jpg", "s/../s/x/a.png t/x/a.jpg", "elsewhere/b.png t/b.jpg"}));
}

TEST_F(Plan, AStopEmptiesIt) {
    Touch("s/a.png");
    BatchPlan::Listener listener;
    listener.isStopped = [] { return true; };
    EXPECT_FALSE(plan_.Make(Request(u"jpg"), listener));
    EXPECT_EQ(plan_.Size(), 0U);
}

TEST_F(Plan, FoldersAreTheSameIgnoringCaseAndThroughLinks) {
    Touch("s/a.png");
    fs::create_directory_symlink("s", folder_ / "link");
    EXPECT_TRUE(IsSameFolder(folder_ / "s", folder_ / "S"));
    EXPECT_TRUE(IsSameFolder(folder_ / "s/", folder_ / "s/x/.."));
    EXPECT_TRUE(IsSameFolder(folder_ / "s", folder_ / "link"));
    EXPECT_FALSE(IsSameFolder(folder_ / "s", folder_ / "t"));
}

TEST(FoundValues, AreMissingWhereAStepIsOnAndUnset) {
    CParaBlock block;
    EXPECT_FALSE(HasValuesToFind(block.GetValues()));
    block.SetPara(PARA_PAGE_SPLIT_TYPE, 2);
    EXPECT_TRUE(HasValuesToFind(block.GetValues()));
    block.SetPara(PARA_PAGE_SPLIT_RIGHT, 5);
    EXPECT_TRUE(HasValuesToFind(block.GetValues()));
    block.SetPara(PARA_PAGE_SPLIT_MID, 3);
    EXPECT_FALSE(HasValuesToFind(block.GetValues()));
    block.SetPara(PARA_CRT_TYPE, 1);
    EXPECT_FALSE(HasValuesToFind(block.GetValues())) << "corners of 0 are set";
    for (int i = PARA_CRT_PT_LT; i <= PARA_CRT_PT_LB; ++i)
        block.SetPara(i, -1);
    EXPECT_TRUE(HasValuesToFind(block.GetValues()));
    block.SetPara(PARA_CRT_TYPE, 3);
    EXPECT_TRUE(HasValuesToFind(block.GetValues())) << "curve points of 0 are unset";
    block.SetPara(PARA_CRT_DEWARPING_BTM_8, 1);
    EXPECT_FALSE(HasValuesToFind(block.GetValues()));
}

}  // namespace
}  // namespace velloran::test

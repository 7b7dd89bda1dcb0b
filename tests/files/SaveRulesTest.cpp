#include "files/SaveRules.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <vector>

#include "core/DibImage.h"
#include "files/ImageFiles.h"
#include "params/ParaBlock.h"
#include "params/TargetRule.h"
#include "support/Images.h"
#include "support/TempFolder.h"
#include "text/Labels.h"
#include "text/PathText.h"
#include "text/Text.h"

namespace velloran {
namespace {

namespace fs = std::filesystem;
using Text = std::u16string_view;

CDibImage ColouredPalette() {
    CDibImage image = test::Filled(8, 4, 8, 1);
    test::SetPalette(image, {{255, 0, 0}, {0, 200, 0}});
    return image;
}

/// A page as a loader gives it: it knows how many bits its file had.
CDibImage AsLoaded(CDibImage image) {
    image.Source().sourceColours = static_cast<std::uint32_t>(image.GetBpp());
    return image;
}

TEST(SaveRules, DpiIsKeptInItsLimits) {
    CParaBlock block;
    for (const auto& [value, expected] :
         {std::pair{300, 300}, {0, 0}, {8000, 8000}, {8001, 8000}, {-1, 0}, {2147483647, 8000}}) {
        block.SetPara(PARA_DPI, value);
        EXPECT_EQ(SaveDpi(block), expected);
    }
}

TEST(SaveRules, DepthsThatReduceNothingMayBeSavedUnderAnyName) {
    for (const int colour : {0, 1, 2})
        for (const char* name : {"a.jpg", "a.png", "a.jp2", "a.txt", "a"})
            EXPECT_EQ(RefusalOfDepth(name, colour), Text()) << name;
}

TEST(SaveRules, SixteenBitDepthsWantBmp) {
    for (const int colour : {18, 19}) {
        EXPECT_EQ(RefusalOfDepth("a.bmp", colour), Text());
        EXPECT_EQ(RefusalOfDepth("a.DIB", colour), Text());
        for (const char* name : {"a.jpg", "a.png", "a.tif", "a.gif", "a.webp", "a"})
            EXPECT_EQ(RefusalOfDepth(name, colour),
                      Text(u"抱歉，16位色图像只能保存为BMP格式，请重新选择。"));
    }
}

TEST(SaveRules, OtherReductionsWantATypeWithAPalette) {
    for (const int colour : {3, 7, 17, 20, -1}) {
        for (const char* name : {"a.gif", "a.bmp", "a.png", "a.tif", "a.webp"})
            EXPECT_EQ(RefusalOfDepth(name, colour), Text()) << name;
        for (const char* name : {"a.jpg", "a.jp2", "a.j2k", "a.ufo", "a"})
            EXPECT_EQ(RefusalOfDepth(name, colour),
                      Text(u"抱歉，减色后的图像只能保存为PNG、GIF、BMP、TIFF或WEBP，请重新选择。"));
    }
}

TEST(SaveRules, ResultWithAPaletteWantsATypeWithAPalette) {
    EXPECT_EQ(RefusalOfResult("a.jpg", test::Filled(4, 4, 24, 9)), Text());
    EXPECT_EQ(RefusalOfResult("a.jpg", test::Filled(4, 4, 8, 9)), Text());  // the grey ramp
    EXPECT_EQ(RefusalOfResult("a.jpg", ColouredPalette()), labels::kReducedTargets);
    EXPECT_EQ(RefusalOfResult("a.jpg", test::Filled(4, 4, 4, 9)), labels::kReducedTargets);
    EXPECT_EQ(RefusalOfResult("a.jpg", test::Filled(4, 4, 1, 1)), labels::kReducedTargets);
    EXPECT_EQ(RefusalOfResult("a.png", ColouredPalette()), Text());
    EXPECT_EQ(RefusalOfResult("a.tif", test::Filled(4, 4, 1, 1)), Text());
}

class SavedDocument : public testing::Test {
 protected:
    test::TempFolder folder_;
    CParaBlock block_;
};

TEST_F(SavedDocument, HoldsTheResultOfThePipelineAndTheDocumentStays) {
    const CDibImage document = AsLoaded(test::Filled(9, 7, 8, 10));
    block_.SetPara(PARA_CONTRAST, 50);
    block_.SetPara(PARA_DPI, 150);
    const SaveResult result = SaveDocument(folder_ / "a.png", document, block_);
    ASSERT_EQ(result.outcome, SaveOutcome::kSaved) << result.error.detail;
    EXPECT_EQ(result.message, Text());
    CDibImage saved;
    ASSERT_TRUE(LoadImageFile(folder_ / "a.png", saved));
    test::ExpectSamePixels(saved, test::Filled(9, 7, 8, 69));  // 128 - 118 / 2, once
    EXPECT_NEAR(saved.GetXDpi(), 150, 1);
    test::ExpectSamePixels(document, test::Filled(9, 7, 8, 10));
}

TEST_F(SavedDocument, RefusedDepthEndsBeforeThePipeline) {
    block_.SetPara(PARA_COLOR, 7);
    block_.SetPara(PARA_NEGATE, 1);
    int labelsTold = 0;
    SaveRun run;
    run.label = [&](Text) { ++labelsTold; };
    const SaveResult result =
        SaveDocument(folder_ / "a.jpg", AsLoaded(test::Filled(9, 7, 8, 10)), block_, run);
    EXPECT_EQ(result.outcome, SaveOutcome::kRefused);
    EXPECT_EQ(result.message, labels::kReducedTargets);
    EXPECT_EQ(labelsTold, 0);
    EXPECT_TRUE(folder_.AllNames().empty());
}

TEST_F(SavedDocument, PaletteThatTheRunLeftIsCaughtAfterThePipeline) {
    SaveRun run;
    run.stop = kStopBeforeLevels;  // no step up to here changes the depth
    const SaveResult result =
        SaveDocument(folder_ / "a.jpg", AsLoaded(ColouredPalette()), block_, run);
    EXPECT_EQ(result.outcome, SaveOutcome::kRefused);
    EXPECT_EQ(result.message, labels::kReducedTargets);
    EXPECT_TRUE(folder_.AllNames().empty());
}

TEST_F(SavedDocument, UnwritableNameIsToldInItsOwnWords) {
    const SaveResult result =
        SaveDocument(folder_ / "a.j2k", AsLoaded(test::Filled(9, 7, 24, 10)), block_);
    EXPECT_EQ(result.outcome, SaveOutcome::kFailed);
    EXPECT_EQ(result.message,
              Text(u"抱歉，保存的文件名只能以jpg、jp2、png、bmp或tif为扩展名，请更正。"));
    EXPECT_TRUE(folder_.AllNames().empty());
}

TEST_F(SavedDocument, FailedWriteSaysSoAndWhy) {
    const SaveResult result =
        SaveDocument(folder_ / "absent" / "a.png", AsLoaded(test::Filled(9, 7, 24, 10)), block_);
    EXPECT_EQ(result.outcome, SaveOutcome::kFailed);
    EXPECT_EQ(result.message, Text(u"文件存盘失败。"));
    EXPECT_EQ(result.error.cause, FileError::Cause::kStorage);
    EXPECT_NE(result.error.detail, "");
}

TEST_F(SavedDocument, EmptyDocumentFails) {
    const SaveResult result = SaveDocument(folder_ / "a.png", CDibImage(), block_);
    EXPECT_EQ(result.outcome, SaveOutcome::kFailed);
    EXPECT_EQ(result.message, labels::kSaveFailed);
    EXPECT_EQ(result.error.cause, FileError::Cause::kContent);
}

TEST_F(SavedDocument, StoppedRunWritesNothing) {
    test::WriteAll(folder_ / "a.png", "old");
    SaveRun run;
    const std::atomic<bool> isStopped = true;
    run.cancel = CancelToken(isStopped);
    block_.SetPara(PARA_NEGATE, 1);
    const SaveResult result =
        SaveDocument(folder_ / "a.png", AsLoaded(test::Filled(9, 7, 24, 10)), block_, run);
    EXPECT_EQ(result.outcome, SaveOutcome::kStopped);
    EXPECT_EQ(result.message, Text());
    EXPECT_EQ(test::ReadAll(folder_ / "a.png"), "old");
}

TEST_F(SavedDocument, LabelsAreToldToWhoAsks) {
    std::vector<std::u16string> told;
    SaveRun run;
    run.label = [&](Text label) { told.emplace_back(label); };
    block_.SetPara(PARA_NEGATE, 1);
    ASSERT_EQ(
        SaveDocument(folder_ / "a.png", AsLoaded(test::Filled(9, 7, 24, 10)), block_, run).outcome,
        SaveOutcome::kSaved);
    EXPECT_NE(std::find(told.begin(), told.end(), u"反白"), told.end());
}

TEST_F(SavedDocument, StopCodeZeroSavesThePageAsItIs) {
    SaveRun run;
    run.stop = kStopNothing;
    block_.SetPara(PARA_CONTRAST, 0);
    ASSERT_EQ(
        SaveDocument(folder_ / "a.png", AsLoaded(test::Filled(9, 7, 8, 10)), block_, run).outcome,
        SaveOutcome::kSaved);
    CDibImage saved;
    ASSERT_TRUE(LoadImageFile(folder_ / "a.png", saved));
    test::ExpectSamePixels(saved, test::Filled(9, 7, 8, 10));
}

TEST_F(SavedDocument, GifCropComesFromTheBlocksTargetRule) {
    CDibImage document = AsLoaded(test::Filled(40, 30, 8, 255));
    test::SetIndex(document, 7, 5, 0);
    ASSERT_EQ(SaveDocument(folder_ / "whole.gif", document, block_).outcome, SaveOutcome::kSaved);
    TargetRule rule;
    rule.cropGif = true;
    block_.SetPara(PARA_TGT_FILES, PackTargetRule(rule));
    ASSERT_EQ(SaveDocument(folder_ / "tight.gif", document, block_).outcome, SaveOutcome::kSaved);
    EXPECT_LT(fs::file_size(folder_ / "tight.gif"), fs::file_size(folder_ / "whole.gif"));
}

TEST(SaveRules, OldNameIsKeptForTheTypesWithAWriter) {
    for (const char* name :
         {"a.jpg", "a.gif", "a.bmp", "a.png", "a.tif", "a.jp2", "a.jpf", "a.webp", "a.J2C"})
        EXPECT_TRUE(CanKeepName(name)) << name;
    for (const char* name : {"a.ufo", "a.wmf", "a.j2k", "a.jpc", "a.cr2", "a.jpe", "a"})
        EXPECT_FALSE(CanKeepName(name)) << name;
    EXPECT_EQ(JpegNameFor("x/a.ufo"), "x/a.ufo.jpg");
}

struct FirstExtensionCase {
    int sourceType, colourIndex;
    Text expected;
};

TEST(SaveRules, SaveDialogBeginsWithTheSourcesTypeWhereItCanHoldTheDepth) {
    const FirstExtensionCase cases[] = {
        {4, 2, u"bmp"},  {4, 7, u"bmp"},  {4, 18, u"bmp"}, {5, 2, u"png"},  {5, 3, u"png"},
        {6, 2, u"tif"},  {6, 17, u"tif"}, {3, 0, u"gif"},  {3, 7, u"gif"},  {8, 2, u"jp2"},
        {9, 0, u"jp2"},  {9, 1, u"jp2"},  {1, 2, u"jpg"},  {8, 3, u"gif"},  {9, 7, u"tif"},
        {1, 3, u"gif"},  {1, 6, u"gif"},  {1, 7, u"tif"},  {1, 8, u"gif"},  {1, 17, u"gif"},
        {1, 18, u"jpg"}, {9, 19, u"jpg"}, {0, 2, u"jpg"},  {2, 2, u"jpg"},  {10, 2, u"jpg"},
        {10, 3, u"gif"}, {11, 7, u"tif"}, {7, 18, u"jpg"}, {0, -1, u"jpg"},
    };
    for (const FirstExtensionCase& c : cases)
        EXPECT_EQ(FirstSaveExtension(c.sourceType, c.colourIndex), c.expected)
            << c.sourceType << " with colours " << c.colourIndex;
}

TEST(SaveRules, PathThatCannotBeOpenedIsToldWithItsName) {
    const test::TempFolder folder;
    test::WriteAll(folder / "a.jpg", "");
    test::WriteAll(folder / "what?.jpg", "");
    EXPECT_EQ(OpenRefusal(folder / "a.jpg"), u"");
    EXPECT_EQ(OpenRefusal("/absent/a.jpg"), u"路径含无效字符：\r\n/absent/a.jpg");
    EXPECT_EQ(OpenRefusal(folder / "what?.jpg"),
              u"路径含无效字符：\r\n" + PathText(folder / "what?.jpg"));
}

}  // namespace
}  // namespace velloran

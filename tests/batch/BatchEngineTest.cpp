#include "batch/BatchEngine.h"

#include <gtest/gtest.h>

#include "core/DibImage.h"
#include "files/ImageFiles.h"
#include "params/ParaBlock.h"
#include "support/Images.h"
#include "support/TempFolder.h"
#include "text/Labels.h"

namespace velloran::test {
namespace {

namespace fs = std::filesystem;

class Engine : public testing::Test {
 protected:
    void SetUp() override {
        fs::create_directories(folder_ / "s" / "sub");
        request_.source = folder_ / "s";
        request_.target = folder_ / "t";
        request_.log = folder_ / "log.txt";
        request_.jobs = 2;
    }

    void WriteFlat(const fs::path& name, int gray) const {
        CDibImage page = Filled(16, 16, 8, static_cast<std::uint8_t>(gray));
        const CParaBlock block;
        ASSERT_TRUE(SaveImageFile(folder_ / name, page, 90, 96, 2, false, block));
    }

    TempFolder folder_;
    BatchRequest request_;
    BatchEvents events_;
};

TEST_F(Engine, TellsMissingFoldersInOrder) {
    request_.source.clear();
    request_.target.clear();
    EXPECT_EQ(RunBatch(request_, events_).message, u"请先选择存放源文件的文件夹。");
    request_.source = folder_ / "s";
    const BatchResult result = RunBatch(request_, events_);
    EXPECT_EQ(result.end, BatchResult::End::kRefused);
    EXPECT_EQ(result.message, u"请先选择存放新文件的文件夹。");
}

TEST_F(Engine, EndsWithTheCountsAndOffersTheLogAfterAFailure) {
    WriteFlat("s/a.png", 10);
    const BatchResult good = RunBatch(request_, events_);
    EXPECT_EQ(good.end, BatchResult::End::kDone);
    EXPECT_EQ(good.message, u"1个文件需要转换，\n1个文件转换成功。");
    EXPECT_FALSE(good.offersLog);
    EXPECT_EQ(good.log, fs::path());
    WriteAll(folder_ / "s" / "b.png", "nonsense");
    const BatchResult bad = RunBatch(request_, events_);
    EXPECT_EQ(bad.message, u"2个文件需要转换，\n1个文件转换成功。");
    EXPECT_TRUE(bad.offersLog);
    EXPECT_EQ(bad.log, folder_ / "log.txt");
    ASSERT_EQ(bad.failures.size(), 1U);
    EXPECT_EQ(bad.failures[0].path, (folder_ / "s" / "b.png").native());
    EXPECT_EQ(bad.failures[0].message, u"读取失败");
    EXPECT_FALSE(bad.failures[0].storage);
}

TEST_F(Engine, ACancelledRunShowsTheCountsAndNeverTheQuestionOfTheLog) {
    constexpr int kFiles = 400;  // a busy machine may look at the stop late
    for (int i = 0; i < kFiles; ++i)
        WriteFlat(fs::path("s") / (std::to_string(i) + ".png"), i % 256);
    std::atomic<bool> stop{false};
    request_.stop = &stop;
    request_.jobs = 1;
    std::size_t done = 0;
    events_.progress = [&](const BatchProgress& progress) {
        done = progress.done;
        stop = stop || done >= 3;
    };
    const BatchResult result = RunBatch(request_, events_);
    EXPECT_EQ(result.end, BatchResult::End::kStopped);
    EXPECT_FALSE(result.offersLog);
    EXPECT_LT(result.converted, std::size_t{kFiles});
    EXPECT_TRUE(result.message.ends_with(u"个文件转换成功。\n您选择了中途停止。"));
}

TEST_F(Engine, ChosenFilesGiveTheSourceFolder) {
    WriteFlat("s/sub/a.png", 10);
    request_.source.clear();
    request_.useList = true;
    request_.list = {folder_ / "s" / "sub" / "a.png"};
    EXPECT_EQ(RunBatch(request_, events_).converted, 1U);
    EXPECT_TRUE(fs::exists(folder_ / "t" / "a.jpg"));
}

TEST_F(Engine, AnythingButYesEndsARunOverTheSameFolder) {
    WriteFlat("s/a.png", 10);
    request_.target = request_.source;
    EXPECT_EQ(RunBatch(request_, events_).end, BatchResult::End::kDeclined);
    events_.replaceSources = [](const ReplaceQuestion&) { return false; };
    EXPECT_EQ(RunBatch(request_, events_).end, BatchResult::End::kDeclined);
    EXPECT_FALSE(fs::exists(folder_ / "s" / "a.jpg"));
    events_.replaceSources = [](const ReplaceQuestion&) { return true; };
    EXPECT_EQ(RunBatch(request_, events_).end, BatchResult::End::kDone);
    EXPECT_TRUE(fs::exists(folder_ / "s" / "a.jpg"));
}

TEST_F(Engine, TellsStagesInTheWordsOfTheWindow) {
    WriteFlat("s/a.png", 10);
    std::vector<std::u16string> status;
    std::u16string lastStage;
    events_.status = [&](std::u16string_view text) { status.emplace_back(text); };
    events_.progress = [&](const BatchProgress& progress) {
        if (!progress.stage.empty())
            lastStage = progress.stage;
        EXPECT_EQ(progress.total, 1U);
    };
    RunBatch(request_, events_);
    EXPECT_EQ(status, (std::vector<std::u16string>{u"统计文件数", u""}));
    EXPECT_TRUE(lastStage.empty() || lastStage == u"存盘") << "the last stage of a file is saving";
}

TEST_F(Engine, TheSettingsBehindARunHaveTheirDpiLimited) {
    WriteFlat("s/a.png", 10);
    request_.settings.Set(PARA_DPI, 20000);
    EXPECT_EQ(RunBatch(request_, events_).settings[PARA_DPI], 8000);
}

TEST_F(Engine, NeitherReadsNorWritesTheGlobalBlock) {
    WriteFlat("s/a.png", 10);
    GlobalBlock().Reset();
    GlobalBlock().SetPara(PARA_NEGATE, 1);
    const ParaValues before = GlobalBlock().GetValues();
    request_.settings.Set(PARA_DPI, 150);
    EXPECT_EQ(RunBatch(request_, events_).converted, 1U);
    EXPECT_EQ(GlobalBlock().GetValues(), before);
    GlobalBlock().Reset();
    CDibImage page;
    ASSERT_TRUE(LoadImageFile(folder_ / "t" / "a.jpg", page));
    EXPECT_NEAR(PixelAt(page, 3, 3).red, 10, 3) << "not the negative";
    EXPECT_EQ(page.GetXDpi(), 150);
}

TEST_F(Engine, APlanWritesAndAsksNothing) {
    WriteFlat("s/a.png", 10);
    request_.target = request_.source;
    std::string told;
    const BatchResult result =
        PlanBatch(request_, events_, [&](const std::string& source, const std::string& target) {
            told += source + "|" + target;
        });
    EXPECT_EQ(result.end, BatchResult::End::kDone);
    EXPECT_EQ(told, (folder_ / "s" / "a.png").native() + "|" + (folder_ / "s" / "a.*").native());
    EXPECT_EQ(folder_.AllNames(), (std::vector<std::string>{"s", "s/a.png", "s/sub"}));
}

}  // namespace
}  // namespace velloran::test

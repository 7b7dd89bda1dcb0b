// The order of a run, its labels, its polls and where it ends.

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "core/DibImage.h"
#include "core/Pipeline.h"
#include "params/ParaBlock.h"
#include "pipeline/RunRecord.h"
#include "support/Images.h"
#include "text/Text.h"

namespace velloran {
namespace {

using Labels = std::vector<std::u16string>;
using test::kPoll;
using test::RunRecord;

struct Setting {
    ParaIndex index;
    std::int32_t value;
    const char16_t* label;  // told when the value is set
};

/// One for each step that a single value switches on.
constexpr Setting kSettings[] = {
    {PARA_CRT_TYPE, 3, u"页面矫正"},
    {PARA_DESKEW, 1, u"纠斜"},
    {PARA_DESKEW, 4, u"纠斜"},
    {PARA_CROPPING_P_LEFT, 1, u"切边"},
    {PARA_CROPPING_P_TOP, 1, u"切边"},
    {PARA_CROPPING_P_RIGHT, 1, u"切边"},
    {PARA_CROPPING_P_BOTTOM, 1, u"切边"},
    {PARA_FIND_CNT_BOX, 1, u"切边"},
    {PARA_REPLACE_COLOR_TYPE, 8, u"颜色替换"},
    {PARA_SWAP_CHANNEL, 3, u"通道互换"},
    {PARA_NEGATE, 1, u"反白"},
    {PARA_COMBINE_CHANNEL, 13, u"通道混合"},
    {PARA_LUM_CORRECT, 6, u"去阴影"},
    {PARA_ADJUST_UNSHADOW, -20, u"去除背景阴影"},
    {PARA_WHITE_BALANCE, 2, u"白平衡"},
    {PARA_ADJUST_VIBRANCE, -5, u"自然饱和度"},
    {PARA_LIGHT_LOW, 7, u"光线"},
    {PARA_LIGHT_HIGH, -7, u"光线"},
    {PARA_ADJUST_MULTI_SCALE_R, 4, u"多尺度细节增强"},
    {PARA_AUTO_LEVELS_POST, 8, u"自动色阶_后处理"},
    {PARA_HIST_EQUALIZE, 1, u"色调均化"},
    {PARA_ERODE, 1, u"加粗"},
    {PARA_ERODE, 4, u"加粗"},
    {PARA_ERODE, 5, u"变细"},
    {PARA_ERODE, 8, u"变细"},
    {PARA_ERODE, 9, u"开"},
    {PARA_ERODE, 12, u"开"},
    {PARA_ERODE, 13, u"闭"},
    {PARA_ERODE, 16, u"闭"},
    {PARA_BLUR, 10, u"柔化"},
    {PARA_ADJUST_BLUR_RADIUS, 15, u"高斯模糊"},
    {PARA_SURFACE_BLUR_TIMES, 3, u"表面模糊"},
    {PARA_SHARPEN, 12, u"锐化"},
    {PARA_ADJUST_SHARPEN_PERCENT, 30, u"调节锐化"},
    {PARA_USM_TIMES, 1, u"USM锐化"},
};

/// Labels of a run with everything on; the content has the size of the page, so neither 放大 nor
/// 缩小.
const Labels kAllLabels = {
    u"旋转",     u"分页",       u"页面矫正", u"纠斜",     u"切边",           u"颜色替换",
    u"通道互换", u"反白",       u"通道混合", u"去阴影",   u"去除背景阴影",   u"白平衡",
    u"自动色阶", u"自然饱和度", u"像素映射", u"光线",     u"多尺度细节增强", u"自动色阶_后处理",
    u"色调均化", u"闭",         u"柔化",     u"高斯模糊", u"表面模糊",       u"锐化",
    u"调节锐化", u"USM锐化",    u"减色",     u"填白"};
const Labels kDefaultLabels = {u"旋转", u"分页", u"色阶", u"像素映射", u"减色", u"填白"};

CParaBlock EverythingOn() {
    CParaBlock block;
    for (const Setting& setting : kSettings)
        block.SetPara(setting.index, setting.value);
    block.SetPara(PARA_ROATE, 3);
    block.SetPara(PARA_PAGE_SPLIT_TYPE, 0x102);
    block.SetPara(PARA_AUTO_LEVELS, 12);
    block.SetPara(PARA_BRIGHTNESS, 110);
    return block;
}

Labels UpTo(const char16_t* last) {
    const auto end = std::find(kAllLabels.begin(), kAllLabels.end(), last);
    return {kAllLabels.begin(), end + 1};
}

Labels LabelsOf(CParaBlock& block, int stop = kStopWhole) {
    CDibImage image = test::Noise(40, 30, 24);
    RunRecord record;
    test::Run(block, &image, stop, record);
    return record.Labels();
}

TEST(RunPipeline, WithEverythingOnTheLabelsComeInTheOrderOfTheTable) {
    CParaBlock block = EverythingOn();
    EXPECT_EQ(LabelsOf(block), kAllLabels);
}

TEST(RunPipeline, ADefaultBlockTellsTheStandingLabelsAndKeepsEveryByte) {
    for (const int bpp : {1, 4, 8, 24}) {
        CParaBlock block;
        const CDibImage before = test::Noise(33, 21, bpp);
        CDibImage image = before;
        RunRecord record;
        test::Run(block, &image, kStopWhole, record);
        EXPECT_EQ(record.Labels(), kDefaultLabels);
        test::ExpectSamePixels(image, before);
    }
}

TEST(RunPipeline, EachValueAddsTheLabelOfItsStep) {
    for (const Setting& setting : kSettings) {
        CParaBlock block;
        block.SetPara(setting.index, setting.value);
        const Labels labels = LabelsOf(block);
        ASSERT_EQ(labels.size(), kDefaultLabels.size() + 1) << ToUtf8(setting.label);
        EXPECT_EQ(std::count(labels.begin(), labels.end(), setting.label), 1)
            << ToUtf8(setting.label);
    }
}

TEST(RunPipeline, ValuesOutsideAStepsRangeAddNoLabel) {
    constexpr int kLowest = std::numeric_limits<int>::min();
    constexpr int kHighest = std::numeric_limits<int>::max();
    for (const int value : {-1, 0, 17, kLowest, kHighest}) {
        CParaBlock block;
        block.SetPara(PARA_ERODE, value);
        EXPECT_EQ(LabelsOf(block), kDefaultLabels) << value;
    }
    for (const int value : {-1, 5, kLowest, kHighest}) {
        CParaBlock block;
        block.SetPara(PARA_DESKEW, value);
        EXPECT_EQ(LabelsOf(block), kDefaultLabels) << value;
    }
}

TEST(RunPipeline, AutomaticLevelsTakeTheManualOnesPlace) {
    CParaBlock block;
    block.SetPara(PARA_LEVELS_SHADOW, 0x202020);
    EXPECT_EQ(LabelsOf(block)[2], u"色阶");
    block.SetPara(PARA_AUTO_LEVELS, 1);
    EXPECT_EQ(LabelsOf(block)[2], u"自动色阶");
    EXPECT_EQ(LabelsOf(block).size(), kDefaultLabels.size());
}

struct StopCase {
    const char* name;
    int stop;
    const char16_t* lastLabel;
};
void PrintTo(const StopCase& c, std::ostream* out) {
    *out << c.name;
}
constexpr StopCase kStopCases[] = {
    {"Split", 135, u"分页"},
    {"SplitDrawn", 97, u"分页"},
    {"PageCorrection", 136, u"页面矫正"},
    {"PageCorrectionFast", 74, u"页面矫正"},
    {"Deskew", 77, u"纠斜"},
    {"ContentBox", 20, u"切边"},
    {"ContentBoxWithLayout", 137, u"切边"},
    {"BeforeLevels", 14, u"白平衡"},
    {"BeforeVibrance", 91, u"自动色阶"},
    {"Whole", 134, u"填白"},
    {"AnyOtherCodeIsWhole", 4711, u"填白"},
};
class RunPipelineStop : public testing::TestWithParam<StopCase> {};

TEST_P(RunPipelineStop, EndsTheRunBehindItsStep) {
    CParaBlock block = EverythingOn();
    EXPECT_EQ(LabelsOf(block, GetParam().stop), UpTo(GetParam().lastLabel));
}

INSTANTIATE_TEST_SUITE_P(Codes, RunPipelineStop, testing::ValuesIn(kStopCases),
                         [](const auto& code) { return std::string(code.param.name); });

TEST(RunPipeline, AStopEndsTheRunAlsoWhereItsStepHasNoWork) {
    for (const int stop : {135, 97, 136, 74, 77, 20, 137, 14}) {
        CParaBlock block;
        EXPECT_EQ(LabelsOf(block, stop), (Labels{u"旋转", u"分页"})) << stop;
    }
    CParaBlock block;
    EXPECT_EQ(LabelsOf(block, 91), (Labels{u"旋转", u"分页", u"色阶"}));
}

TEST(RunPipeline, StopsBeforeToneKeepTheTones) {
    for (const int stop : {135, 97, 136, 74, 77, 20, 137, 14}) {
        CParaBlock block;
        block.SetPara(PARA_BRIGHTNESS, 0);
        block.SetPara(PARA_AUTO_LEVELS, 1);
        block.SetPara(PARA_AUTO_LEVELS_POST, 1);
        const CDibImage before = test::Noise(20, 20, 24);
        CDibImage image = before;
        RunRecord record;
        test::Run(block, &image, stop, record);
        test::ExpectSamePixels(image, before);
    }
}

TEST(RunPipeline, StopZeroDoesNothingAtAll) {
    CParaBlock block = EverythingOn();
    const CDibImage before = test::Noise(20, 20, 24);
    CDibImage image = before;
    RunRecord record;
    test::Run(block, &image, kStopNothing, record);
    EXPECT_TRUE(record.events.empty());
    test::ExpectSamePixels(image, before);
    std::u16string text;
    test::Run(block, nullptr, kStopNothing, record, &text);
    EXPECT_TRUE(record.events.empty());
    EXPECT_TRUE(text.empty());
}

TEST(RunPipeline, WithoutAPageNothingHappens) {
    CParaBlock block = EverythingOn();
    RunRecord record;
    CDibImage empty;
    test::Run(block, nullptr, kStopWhole, record);
    test::Run(block, &empty, kStopWhole, record);
    EXPECT_TRUE(record.events.empty());
}

TEST(RunPipeline, CancelIsPolledBehindEveryStepButTwo) {
    // Also behind steps that had no work.
    for (const bool everything : {false, true}) {
        CParaBlock block = everything ? EverythingOn() : CParaBlock();
        CDibImage image = test::Noise(20, 20, 24);
        RunRecord record;
        test::Run(block, &image, kStopWhole, record);
        EXPECT_EQ(record.PollCount(), 28U);
        EXPECT_EQ(record.events.back(), kPoll);
    }
}

TEST(RunPipeline, NoPollStandsBetweenBackgroundShadowAndWhiteBalance) {
    CParaBlock block = EverythingOn();
    CDibImage image = test::Noise(20, 20, 24);
    RunRecord record;
    test::Run(block, &image, kStopWhole, record);
    const auto at = std::find(record.events.begin(), record.events.end(), u"去除背景阴影");
    ASSERT_NE(at, record.events.end());
    EXPECT_EQ(*(at - 1), kPoll);
    EXPECT_EQ(*(at + 1), u"白平衡");
    EXPECT_EQ(*(at + 2), kPoll);
}

TEST(RunPipeline, ACancelDuringBackgroundShadowTakesEffectBehindWhiteBalance) {
    CParaBlock block = EverythingOn();
    CDibImage image = test::Noise(20, 20, 24);
    RunRecord record;
    bool isCancelled = false;
    record.onEvent = [&](std::u16string_view event) {
        isCancelled = isCancelled || event == u"去除背景阴影";
        return event == kPoll && isCancelled ? 1 : 0;
    };
    test::Run(block, &image, kStopWhole, record);
    EXPECT_EQ(record.Labels(), UpTo(u"白平衡"));
}

TEST(RunPipeline, ACancelledRunLeavesWhatTheFinishedStepsMade) {
    CParaBlock block;
    block.SetPara(PARA_ROATE, 2);
    block.SetPara(PARA_BRIGHTNESS, 0);
    CDibImage image = test::Noise(20, 10, 24);
    CDibImage turned = image;
    turned.Rotate90(/*left=*/false);
    RunRecord record;
    record.onEvent = [](std::u16string_view event) { return event == kPoll ? 1 : 0; };
    test::Run(block, &image, kStopWhole, record);
    EXPECT_EQ(record.events, (Labels{u"旋转", kPoll}));
    test::ExpectSamePixels(image, turned);
}

TEST(RunPipeline, AChangeWhileItRunsCountsFromTheNextRunOn) {
    const CDibImage before = test::Noise(20, 10, 24);
    CParaBlock block;
    block.SetPara(PARA_CONTRAST, 99);
    CDibImage expected = before;
    test::Run(block, expected);
    CDibImage image = before;
    RunRecord record;
    record.onEvent = [&](std::u16string_view event) {
        if (event == u"旋转")
            std::thread([&] { block.SetPara(PARA_GAMMA, 0); }).join();  // the lock is free
        return 0;
    };
    test::Run(block, &image, kStopWhole, record);
    test::ExpectSamePixels(image, expected);
    image = before;
    test::Run(block, image);
    test::ExpectSamePixels(image, test::Filled(20, 10, 24, 255));
}

TEST(RunPipeline, EveryValueMayBeAnyNumber) {
    constexpr int kExtremes[] = {std::numeric_limits<int>::min(), -1, 1,
                                 std::numeric_limits<int>::max()};
    for (int index = 0; index < kParaCount; ++index)
        for (const int value : kExtremes)
            for (const int bpp : {1, 8, 24}) {
                CParaBlock block;
                block.SetPara(index, value);
                CDibImage image = test::Noise(17, 12, bpp);
                test::Run(block, image);
                EXPECT_TRUE(image.IsValid()) << index << " = " << value;
            }
    for (const int value : kExtremes) {
        CParaBlock block;
        for (int index = 0; index < kParaCount; ++index)
            block.SetPara(index, value);
        CDibImage image = test::Noise(17, 12, 24);
        test::Run(block, image);
        EXPECT_TRUE(image.IsValid()) << value;
    }
}

TEST(RunPipelineDescribing, ANullPageGivesTheWholeTextAndTellsTheLabels) {
    CParaBlock block = EverythingOn();
    block.SetPara(PARA_QUALITY, 55);
    std::u16string text;
    RunRecord record;
    test::Run(block, nullptr, kStopWhole, record, &text);
    EXPECT_EQ(record.Labels(), kAllLabels);
    const std::size_t rotate = text.find(u"颠倒\r\n"), brightness = text.find(u"亮度: 110\r\n");
    const std::size_t colors = text.find(u"色彩数:"), quality = text.find(u"Jpg质量: 55");
    ASSERT_NE(rotate, std::u16string::npos);
    ASSERT_NE(brightness, std::u16string::npos);
    ASSERT_NE(colors, std::u16string::npos);
    ASSERT_NE(quality, std::u16string::npos);
    EXPECT_EQ(rotate, 0U);
    EXPECT_LT(rotate, brightness);
    EXPECT_LT(brightness, colors);
    EXPECT_LT(colors, quality);
}

TEST(RunPipelineDescribing, TouchesNoPageThatIsGiven) {
    CParaBlock block = EverythingOn();
    const CDibImage before = test::Noise(20, 20, 4);
    CDibImage image = before;
    std::u16string text;
    block.RunPipeline(&image, nullptr, nullptr, nullptr, kStopWhole, &text);
    test::ExpectSamePixels(image, before);
    EXPECT_FALSE(text.empty());
}

TEST(RunPipelineDescribing, AStopEndsTheTextAndLeavesTheOutputLinesOut) {
    CParaBlock block = EverythingOn();
    block.SetPara(PARA_QUALITY, 55);
    std::u16string part, whole;
    block.RunPipeline(nullptr, nullptr, nullptr, nullptr, kStopBeforeLevels, &part);
    block.RunPipeline(nullptr, nullptr, nullptr, nullptr, kStopWhole, &whole);
    EXPECT_EQ(whole.substr(0, part.size()), part);
    EXPECT_NE(part.find(u"白平衡:"), std::u16string::npos);
    EXPECT_EQ(part.find(u"自动漂白"), std::u16string::npos);
    EXPECT_EQ(part.find(u"Jpg质量"), std::u16string::npos);
}

TEST(RunPipelineDescribing, AppendsToTheText) {
    CParaBlock block;
    std::u16string text = u"before\r\n";
    block.RunPipeline(nullptr, nullptr, nullptr, nullptr, kStopWhole, &text);
    EXPECT_EQ(text.find(u"before\r\n"), 0U);
    EXPECT_GT(text.size(), 8U);
}

}  // namespace
}  // namespace velloran

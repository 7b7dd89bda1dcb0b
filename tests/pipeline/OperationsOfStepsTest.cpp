// Each step of channels, shadows, size, strokes, blur and sharpening is one call of its operation
// with the values of the block: run and call give the same page.

#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "core/DibImage.h"
#include "filters/AdjustSharpen.h"
#include "filters/LevelFilters.h"
#include "filters/Morphology.h"
#include "filters/MultiScaleDetail.h"
#include "filters/Resample.h"
#include "filters/ScarceMemory.h"
#include "filters/SurfaceBlur.h"
#include "filters/UnsharpMask.h"
#include "params/ParaBlock.h"
#include "pipeline/RunRecord.h"
#include "support/Differ.h"
#include "support/Images.h"
#include "tone/Channels.h"
#include "tone/LumCorrect.h"
#include "tone/Unshadow.h"
#include "tone/Vibrance.h"
#include "tone/WhiteBalance.h"

namespace velloran {
namespace {

using Values = std::vector<std::pair<ParaIndex, std::int32_t>>;
using Operation = std::function<void(CDibImage&)>;

struct RunResult {
    CDibImage image;
    std::vector<std::u16string> labels;
};

RunResult RunOn(const CDibImage& page, const Values& values) {
    CParaBlock block;
    for (const auto& [index, value] : values)
        block.SetPara(index, value);
    RunResult result{page, {}};
    test::RunRecord record;
    test::Run(block, &result.image, kStopWhole, record);
    result.labels = record.Labels();
    return result;
}

/// What a run tells in which no step is set, with `label` where that step stands.
std::vector<std::u16string> LabelsWith(int number, const std::u16string& label) {
    std::vector<std::u16string> labels;
    const std::pair<int, const char16_t*> standing[] = {
        {1, u"旋转"}, {2, u"分页"}, {14, u"色阶"}, {16, u"像素映射"}, {29, u"减色"}, {30, u"填白"}};
    bool isTold = label.empty();
    for (const auto& [standingNumber, text] : standing) {
        if (!isTold && number < standingNumber) {
            labels.push_back(label);
            isTold = true;
        }
        labels.emplace_back(text);
    }
    return labels;
}

CDibImage Done(const CDibImage& page, const Operation& operation) {
    CDibImage image = page;
    operation(image);
    return image;
}

struct StepCase {
    std::string name;
    int number;
    std::u16string label;
    Values values;
    Operation operation;
};
void PrintTo(const StepCase& c, std::ostream* out) {
    *out << c.name;
}

/// One parameter that goes to its operation as it is, from 1 to `last`.
void AddValues(std::vector<StepCase>& cases, const std::string& name, int number,
               const std::u16string& label, ParaIndex index, int last,
               int (*operation)(CDibImage&, int)) {
    for (int value = 1; value <= last; ++value)
        cases.push_back(
            {name + std::to_string(value), number, label, {{index, value}}, [=](CDibImage& image) {
                 operation(image, value);
             }});
}

void AddToneSteps(std::vector<StepCase>& cases) {
    AddValues(cases, "SwapChannels", 7, u"通道互换", PARA_SWAP_CHANNEL, 3, SwapChannels);
    cases.push_back(
        {"Negate", 8, u"反白", {{PARA_NEGATE, 1}}, [](CDibImage& image) { Negate(image); }});
    AddValues(cases, "CombineChannels", 9, u"通道混合", PARA_COMBINE_CHANNEL, 13, CombineChannels);
    AddValues(cases, "LumCorrect", 10, u"去阴影", PARA_LUM_CORRECT, 6, LumCorrect);
    for (const int strength : {-50, -7, 1, 50})
        cases.push_back({"Unshadow" + std::string(strength < 0 ? "Less" : "") +
                             std::to_string(std::abs(strength)),
                         11,
                         u"去除背景阴影",
                         {{PARA_ADJUST_UNSHADOW, strength}},
                         [=](CDibImage& image) { Unshadow(image, strength); }});
    AddValues(cases, "WhiteBalance", 12, u"白平衡", PARA_WHITE_BALANCE, 2, WhiteBalance);
    cases.push_back(
        {"HistEqualize", 20, u"色调均化", {{PARA_HIST_EQUALIZE, 1}}, [](CDibImage& image) {
             HistEqualize(image);
         }});
}

void AddResizes(std::vector<StepCase>& cases) {
    cases.push_back({"Enlarge", 13, u"放大", {{PARA_RESIZE, 130}}, [](CDibImage& image) {
                         ResizeTo(image, 75, 58);
                     }});  // of 58 x 45
    cases.push_back({"Reduce", 25, u"缩小", {{PARA_RESIZE, 70}}, [](CDibImage& image) {
                         ResizeTo(image, 40, 31);
                     }});
}

void AddStrokes(std::vector<StepCase>& cases) {
    using Stroke = int (*)(CDibImage&, int);
    struct Group {
        const char* name;
        const char16_t* label;
        Stroke first, second;
    };
    const Group groups[] = {{"Embolden", u"加粗", Darken, nullptr},
                            {"Thin", u"变细", Lighten, nullptr},
                            {"Open", u"开", Lighten, Darken},
                            {"Close", u"闭", Darken, Lighten}};
    for (int value = 1; value <= 16; ++value) {
        const Group& group = groups[(value - 1) / 4];
        const int level = (value - 1) % 4 + 1;
        cases.push_back({group.name + std::to_string(level),
                         21,
                         group.label,
                         {{PARA_ERODE, value}},
                         [=](CDibImage& image) {
                             group.first(image, level);
                             if (group.second != nullptr)
                                 group.second(image, level);
                         }});
    }
}

void AddBlurs(std::vector<StepCase>& cases) {
    AddValues(cases, "BlurLevel", 22, u"柔化", PARA_BLUR, 10, BlurLevel);
    for (const int tenths : {7, 17, 30, 2500})
        cases.push_back({"Gaussian" + std::to_string(tenths),
                         23,
                         u"高斯模糊",
                         {{PARA_ADJUST_BLUR_RADIUS, tenths}},
                         [=](CDibImage& image) {
                             UnsharpMask(image, 1, static_cast<float>(tenths / 10.0), 1, 1,
                                         /*blurOnly=*/true);
                         }});
    for (int algorithm = 0; algorithm < 4; ++algorithm)
        // The selective Gaussian of the first radius has one tap.
        for (const int radius : {algorithm == 2 ? 1 : 0, 5, 14}) {
            const int threshold = 4 + 3 * radius, times = 1 + radius % 3;
            cases.push_back(
                {"Surface" + std::to_string(algorithm) + "Radius" + std::to_string(radius),
                 24,
                 u"表面模糊",
                 {{PARA_SURFACE_BLUR_TIMES, times},
                  {PARA_SURFACE_BLUR_RADIUS, radius},
                  {PARA_SURFACE_BLUR_THRESHOLD, threshold},
                  {PARA_SURFACE_BLUR_ALGRITHOM, algorithm}},
                 [=](CDibImage& image) {
                     SurfaceBlur(image, radius + 1, threshold + 2, times, algorithm);
                 }});
        }
}

void AddSharpening(std::vector<StepCase>& cases) {
    for (const int radius : {1, 40})
        cases.push_back({"MultiScale" + std::to_string(radius),
                         18,
                         u"多尺度细节增强",
                         {{PARA_ADJUST_MULTI_SCALE_R, radius}},
                         [=](CDibImage& image) { MultiScaleDetail(image, radius); }});
    AddValues(cases, "SharpenLevel", 26, u"锐化", PARA_SHARPEN, 12, SharpenLevel);
    for (int size = 0; size <= 9; ++size) {
        const int percent = 1 + 4 * size;
        cases.push_back({"AdjustSharpen" + std::to_string(size),
                         27,
                         u"调节锐化",
                         {{PARA_ADJUST_SHARPEN_PERCENT, percent}, {PARA_ADJUST_SHARPEN_SIZE, size}},
                         [=](CDibImage& image) { AdjustSharpen(image, percent, size * 2 + 7); }});
    }
    for (int times = 1; times <= 3; ++times)
        cases.push_back({"Usm" + std::to_string(times),
                         28,
                         u"USM锐化",
                         {{PARA_USM_TIMES, times},
                          {PARA_USM_AMOUNT, 60 * times},
                          {PARA_USM_RADIUS, 13},
                          {PARA_USM_THRESHOLD, 5 * times}},
                         [=](CDibImage& image) {
                             UnsharpMask(image, 60 * times, 1.3F, 5 * times, times,
                                         /*blurOnly=*/false);
                         }});
}

std::vector<StepCase> AllSteps() {
    std::vector<StepCase> cases;
    AddToneSteps(cases);
    AddResizes(cases);
    AddStrokes(cases);
    AddBlurs(cases);
    AddSharpening(cases);
    return cases;
}

class OperationOfStep : public testing::TestWithParam<StepCase> {};
INSTANTIATE_TEST_SUITE_P(Steps, OperationOfStep, testing::ValuesIn(AllSteps()),
                         [](const auto& step) { return step.param.name; });

/// Paper with words of a colour, a shadow and some noise: something for every step.
CDibImage Page(int bpp) {
    CDibImage page = test::Noise(58, 45, bpp, 8);
    for (int y = 0; y < 45; ++y)
        for (int i = 0; i < 58 * bpp / 8; ++i) {
            const int x = i * 8 / bpp, noise = page.GetBits(y)[i] % 24;
            const bool isInk = x % 9 < 3 && y % 11 < 7;
            page.GetBits(y)[i] =
                static_cast<std::uint8_t>((isInk ? 30 + 40 * (i % 3) : 225 - 2 * x / 3) + noise);
        }
    return page;
}

TEST_P(OperationOfStep, IsCalledWithTheValuesOfTheBlock) {
    for (const int bpp : {8, 24}) {
        const CDibImage page = Page(bpp);
        const RunResult result = RunOn(page, GetParam().values);
        test::ExpectSamePixels(result.image, Done(page, GetParam().operation));
        EXPECT_EQ(result.labels, LabelsWith(GetParam().number, GetParam().label));
    }
}

/// Pages of few colours: grey ones and coloured ones.
std::vector<CDibImage> PagesWithPalettes() {
    std::vector<CDibImage> pages;
    for (const int bpp : {1, 4, 8})
        for (const bool isColored : {false, true}) {
            CDibImage page = test::Noise(58, 45, bpp);
            for (int i = 0; i < page.GetPaletteCount(); ++i) {
                PaletteEntry& entry = page.GetPalette()[i];
                entry.red = static_cast<std::uint8_t>(255 - entry.red);
                if (!isColored)
                    entry.blue = entry.green = entry.red;
            }
            pages.push_back(page);
        }
    return pages;
}

TEST_P(OperationOfStep, MeetsPalettesAsTheyWereLoaded) {
    for (const CDibImage& page : PagesWithPalettes()) {
        SCOPED_TRACE(page.GetBpp());
        // The steps that always run are the same in both.
        test::ExpectSamePixels(RunOn(page, GetParam().values).image,
                               RunOn(Done(page, GetParam().operation), {}).image);
    }
}

TEST_P(OperationOfStep, ChangesThePage) {
    // Otherwise the comparison above would say nothing.
    const CDibImage page = Page(24);
    EXPECT_TRUE(test::Differ(Done(page, GetParam().operation), page));
}

TEST_P(OperationOfStep, IsLeftOutWhereItsFirstValueIsNeutral) {
    Values values = GetParam().values;
    values[0].second = values[0].first == PARA_RESIZE ? 100 : 0;
    for (const int bpp : {8, 24}) {
        const CDibImage page = Page(bpp);
        const RunResult result = RunOn(page, values);
        test::ExpectSamePixels(result.image, page);
        EXPECT_EQ(result.labels, LabelsWith(0, u""));
    }
}

struct ExtremeCase {
    const char* name;
    Values values;
    Operation operation;
};

std::vector<ExtremeCase> ExtremeCases(int extreme) {
    const auto usm = [=](int amount, float radius, int threshold, int times) {
        return [=](CDibImage& image) {
            UnsharpMask(image, amount, radius, threshold, times, /*blurOnly=*/false);
        };
    };
    const auto pixels = static_cast<float>(extreme / 10.0);
    return {
        {"swap",
         {{PARA_SWAP_CHANNEL, extreme}},
         [=](CDibImage& image) { SwapChannels(image, extreme); }},
        {"negate", {{PARA_NEGATE, extreme}}, [](CDibImage& image) { Negate(image); }},
        {"combine",
         {{PARA_COMBINE_CHANNEL, extreme}},
         [=](CDibImage& image) { CombineChannels(image, extreme); }},
        {"illumination",
         {{PARA_LUM_CORRECT, extreme}},
         [=](CDibImage& image) { LumCorrect(image, extreme); }},
        {"unshadow",
         {{PARA_ADJUST_UNSHADOW, extreme}},
         [=](CDibImage& image) { Unshadow(image, extreme); }},
        {"white",
         {{PARA_WHITE_BALANCE, extreme}},
         [=](CDibImage& image) { WhiteBalance(image, extreme); }},
        {"detail",
         {{PARA_ADJUST_MULTI_SCALE_R, extreme}},
         [=](CDibImage& image) { MultiScaleDetail(image, extreme); }},
        {"equalize",
         {{PARA_HIST_EQUALIZE, extreme}},
         [](CDibImage& image) { HistEqualize(image); }},
        {"strokes", {{PARA_ERODE, extreme}}, [](CDibImage&) {}},
        {"blur", {{PARA_BLUR, extreme}}, [](CDibImage&) {}},
        {"gaussian",
         {{PARA_ADJUST_BLUR_RADIUS, extreme}},
         [=](CDibImage& image) { UnsharpMask(image, 1, pixels, 1, 1, /*blurOnly=*/true); }},
        {"sharpen", {{PARA_SHARPEN, extreme}}, [](CDibImage&) {}},
        {"strength",
         {{PARA_ADJUST_SHARPEN_PERCENT, extreme}},
         [=](CDibImage& image) { AdjustSharpen(image, extreme, 7); }},
        {"times", {{PARA_USM_TIMES, extreme}}, usm(50, 1.0F, 0, extreme)},
        {"amount", {{PARA_USM_TIMES, 1}, {PARA_USM_AMOUNT, extreme}}, usm(extreme, 1.0F, 0, 1)},
        {"radius", {{PARA_USM_TIMES, 1}, {PARA_USM_RADIUS, extreme}}, usm(50, pixels, 0, 1)},
        {"threshold",
         {{PARA_USM_TIMES, 1}, {PARA_USM_THRESHOLD, extreme}},
         usm(50, 1.0F, extreme, 1)},
    };
}

TEST(OperationsOfSteps, TakeTheLargestAndLeastValues) {
    for (const int extreme : {INT_MIN, INT_MIN + 1, -1, INT_MAX - 1, INT_MAX})
        for (const ExtremeCase& c : ExtremeCases(extreme))
            for (const int bpp : {8, 24}) {
                SCOPED_TRACE(std::string(c.name) + " " + std::to_string(extreme));
                const CDibImage page = Page(bpp);
                test::ExpectSamePixels(RunOn(page, c.values).image, Done(page, c.operation));
            }
}

Values AllAtOnce(int resizePercent) {
    return {{PARA_SWAP_CHANNEL, 2},
            {PARA_NEGATE, 1},
            {PARA_ADJUST_UNSHADOW, -3},
            {PARA_WHITE_BALANCE, 1},
            {PARA_RESIZE, resizePercent},
            {PARA_ADJUST_MULTI_SCALE_R, 3},
            {PARA_HIST_EQUALIZE, 1},
            {PARA_ERODE, 14},
            {PARA_BLUR, 3},
            {PARA_ADJUST_BLUR_RADIUS, 8},
            {PARA_SURFACE_BLUR_TIMES, 1},
            {PARA_SHARPEN, 7},
            {PARA_ADJUST_SHARPEN_PERCENT, 6},
            {PARA_USM_TIMES, 1}};
}

/// The same by hand, in the order of the steps.
CDibImage AllByHand(CDibImage image, int largerWidth, int largerHeight, int smallerWidth,
                    int smallerHeight) {
    SwapChannels(image, 2);
    Negate(image);
    Unshadow(image, -3);
    WhiteBalance(image, 1);
    ResizeTo(image, largerWidth, largerHeight);
    MultiScaleDetail(image, 3);
    HistEqualize(image);
    Darken(image, 2);
    Lighten(image, 2);
    BlurLevel(image, 3);
    UnsharpMask(image, 1, 0.8F, 1, 1, /*blurOnly=*/true);
    SurfaceBlur(image, 5, 20, 1, 0);
    ResizeTo(image, smallerWidth, smallerHeight);
    SharpenLevel(image, 7);
    AdjustSharpen(image, 6, 7);
    UnsharpMask(image, 50, 1.0F, 0, 1, /*blurOnly=*/false);
    return image;
}

TEST(OperationsOfSteps, WorkOnWhatTheStepsBeforeThemLeft) {
    const CDibImage page = Page(24);
    test::ExpectSamePixels(RunOn(page, AllAtOnce(100)).image, AllByHand(page, 58, 45, 58, 45));
    test::ExpectSamePixels(RunOn(page, AllAtOnce(150)).image, AllByHand(page, 87, 67, 87, 67));
    test::ExpectSamePixels(RunOn(page, AllAtOnce(50)).image, AllByHand(page, 58, 45, 29, 22));
}

TEST(OperationsOfSteps, FromWhereMemoryEndsOnEachStepPassesThePageOn) {
    CParaBlock block;
    for (const auto& [index, value] : {std::pair{PARA_ADJUST_MULTI_SCALE_R, 3},
                                       {PARA_ERODE, 14},
                                       {PARA_BLUR, 3},
                                       {PARA_ADJUST_BLUR_RADIUS, 8},
                                       {PARA_SURFACE_BLUR_TIMES, 1},
                                       {PARA_RESIZE, 50},
                                       {PARA_SHARPEN, 7},
                                       {PARA_ADJUST_SHARPEN_PERCENT, 6},
                                       {PARA_USM_TIMES, 1}})
        block.SetPara(index, value);
    const Operation operations[] = {
        [](CDibImage& image) { MultiScaleDetail(image, 3); },
        [](CDibImage& image) { Darken(image, 2); },
        [](CDibImage& image) { Lighten(image, 2); },
        [](CDibImage& image) { BlurLevel(image, 3); },
        [](CDibImage& image) { UnsharpMask(image, 1, 0.8F, 1, 1, /*blurOnly=*/true); },
        [](CDibImage& image) { SurfaceBlur(image, 5, 20, 1, 0); },
        [](CDibImage& image) { ResizeTo(image, 29, 22); },
        [](CDibImage& image) { SharpenLevel(image, 7); },
        [](CDibImage& image) { AdjustSharpen(image, 6, 7); },
        [](CDibImage& image) { UnsharpMask(image, 50, 1.0F, 0, 1, /*blurOnly=*/false); },
    };
    const CDibImage page = Page(24);
    std::vector<CDibImage> states = {page};
    for (const Operation& operation : operations)
        states.push_back(Done(states.back(), operation));
    std::size_t reached = 0;  // states come in their order as memory lasts longer
    test::RunWithScarceMemory(
        page, /*onlyOne=*/false,
        [&](CDibImage& image) {
            test::Run(block, image);
            return 1;
        },
        [&](const CDibImage& image, int, bool failed) {
            if (reached + 1 < states.size() && test::Differ(image, states[reached]))
                ++reached;
            test::ExpectSamePixels(image, states[reached]);
            EXPECT_TRUE(failed || reached + 1 == states.size());
        });
}

TEST(OperationsOfSteps, TellTheirLabelsInTheirOrder) {
    std::vector<std::u16string> expected = {
        u"旋转",   u"分页",     u"通道互换", u"反白",           u"去除背景阴影",
        u"白平衡", u"色阶",     u"像素映射", u"多尺度细节增强", u"色调均化",
        u"闭",     u"柔化",     u"高斯模糊", u"表面模糊",       u"缩小",
        u"锐化",   u"调节锐化", u"USM锐化",  u"减色",           u"填白"};
    EXPECT_EQ(RunOn(Page(24), AllAtOnce(50)).labels, expected);
    std::erase(expected, u"缩小");
    expected.insert(expected.begin() + 6, u"放大");
    EXPECT_EQ(RunOn(Page(24), AllAtOnce(150)).labels, expected);
}

}  // namespace
}  // namespace velloran

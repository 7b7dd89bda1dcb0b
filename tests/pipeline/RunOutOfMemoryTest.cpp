// Memory refused at each allocation of a run in turn: the report says so, or the page is as it
// would be with memory enough. No third picture passes as done.

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "core/DibImage.h"
#include "params/ParaBlock.h"
#include "pipeline/Run.h"
#include "support/Differ.h"
#include "support/FailingAllocator.h"
#include "support/Images.h"
#include "support/Threads.h"

namespace velloran {
namespace {

using Values = std::vector<std::pair<ParaIndex, std::int32_t>>;

struct StepCase {
    const char* name;
    int step;
    Values values;
    int bpp = 24;
};
void PrintTo(const StepCase& c, std::ostream* out) {
    *out << c.name;
}

/// Every step of the table that asks for memory, in each of its ways. Those that work in place do
/// so on a page that they first have to widen.
const StepCase kCases[] = {
    {"RotateLeft", 1, {{PARA_ROATE, 1}}},
    {"RotateGray", 1, {{PARA_ROATE, 2}}, 8},
    {"FlattenSearched", 3, {{PARA_CRT_TYPE, 3}}},
    {"FlattenGiven",
     3,
     {{PARA_CRT_TYPE, 3},
      {PARA_CRT_DEWARPING_TOP_1, 0x30001},
      {PARA_CRT_DEWARPING_TOP_2, 0x50006},
      {PARA_CRT_DEWARPING_TOP_3, 0x6000C},
      {PARA_CRT_DEWARPING_TOP_4, 0x60010},
      {PARA_CRT_DEWARPING_TOP_5, 0x60014},
      {PARA_CRT_DEWARPING_TOP_6, 0x5001A},
      {PARA_CRT_DEWARPING_TOP_7, 0x40020},
      {PARA_CRT_DEWARPING_TOP_8, 0x30026},
      {PARA_CRT_DEWARPING_BTM_1, 0x1A0001},
      {PARA_CRT_DEWARPING_BTM_2, 0x1A0006},
      {PARA_CRT_DEWARPING_BTM_3, 0x1A000C},
      {PARA_CRT_DEWARPING_BTM_4, 0x1A0010},
      {PARA_CRT_DEWARPING_BTM_5, 0x1A0014},
      {PARA_CRT_DEWARPING_BTM_6, 0x1A001A},
      {PARA_CRT_DEWARPING_BTM_7, 0x1A0020},
      {PARA_CRT_DEWARPING_BTM_8, 0x1A0026}}},
    {"Combine", 9, {{PARA_COMBINE_CHANNEL, 4}}},
    {"CombineContrast", 9, {{PARA_COMBINE_CHANNEL, 10}}},
    {"CombineSepia", 9, {{PARA_COMBINE_CHANNEL, 13}}},
    {"IlluminationFit", 10, {{PARA_LUM_CORRECT, 1}}},
    {"RetinexBrightened", 10, {{PARA_LUM_CORRECT, 2}}},
    {"Retinex", 10, {{PARA_LUM_CORRECT, 3}}},
    {"FrankleMcCann", 10, {{PARA_LUM_CORRECT, 4}}},
    {"BlackWhiteText", 10, {{PARA_LUM_CORRECT, 5}}},
    {"BlackWhiteAndRed", 10, {{PARA_LUM_CORRECT, 6}}},
    {"Unshadow", 11, {{PARA_ADJUST_UNSHADOW, 20}}},
    {"UnshadowKeepingRed", 11, {{PARA_ADJUST_UNSHADOW, -20}}},
    {"WhiteBalance", 12, {{PARA_WHITE_BALANCE, 2}}, 4},
    {"Enlarge", 13, {{PARA_RESIZE, 150}}},
    {"EnlargePalette", 13, {{PARA_RESIZE, 150}}, 4},
    {"AutoBleach", 14, {{PARA_AUTO_LEVELS, 12}}, 4},
    {"AutoLevelsPalette", 14, {{PARA_AUTO_LEVELS, 2}}, 4},
    {"Light", 17, {{PARA_LIGHT_LOW, 30}, {PARA_LIGHT_HIGH, 30}}},
    {"MultiScale", 18, {{PARA_ADJUST_MULTI_SCALE_R, 8}}},
    {"AutoLevelsPost", 19, {{PARA_AUTO_LEVELS_POST, 5}}, 4},
    {"Equalize", 20, {{PARA_HIST_EQUALIZE, 1}}, 4},
    {"Open", 21, {{PARA_ERODE, 10}}},
    {"Close", 21, {{PARA_ERODE, 16}}},
    {"Blur3", 22, {{PARA_BLUR, 3}}},
    {"BlurGauss", 22, {{PARA_BLUR, 8}}},
    {"Gaussian", 23, {{PARA_ADJUST_BLUR_RADIUS, 20}}},
    {"SurfaceWeighted", 24, {{PARA_SURFACE_BLUR_TIMES, 2}}},
    {"SurfaceHistograms", 24, {{PARA_SURFACE_BLUR_TIMES, 2}, {PARA_SURFACE_BLUR_RADIUS, 14}}},
    {"SurfaceGuided", 24, {{PARA_SURFACE_BLUR_TIMES, 2}, {PARA_SURFACE_BLUR_ALGRITHOM, 1}}},
    {"SurfaceSelective", 24, {{PARA_SURFACE_BLUR_TIMES, 2}, {PARA_SURFACE_BLUR_ALGRITHOM, 2}}},
    {"SurfaceMean", 24, {{PARA_SURFACE_BLUR_TIMES, 2}, {PARA_SURFACE_BLUR_ALGRITHOM, 3}}},
    {"Reduce", 25, {{PARA_RESIZE, 60}}},
    {"Sharpen", 26, {{PARA_SHARPEN, 4}}},
    {"Sharpen5", 26, {{PARA_SHARPEN, 11}}},
    {"AdjustSharpen", 27, {{PARA_ADJUST_SHARPEN_PERCENT, 20}}},
    {"Usm", 28, {{PARA_USM_TIMES, 3}, {PARA_USM_AMOUNT, 200}}},
    {"Colors256", 29, {{PARA_COLOR, 3}}},
    {"Colors16Dithered", 29, {{PARA_COLOR, 11}, {PARA_DECREASE_BPP_DITHER, 1}}},
    {"Octree", 29, {{PARA_COLOR, 11}, {PARA_DECREASE_BPP_QUANTIZE, 0}}},
    {"MedianCut", 29, {{PARA_COLOR, 11}, {PARA_DECREASE_BPP_QUANTIZE, 1}}},
    {"FixedColors", 29, {{PARA_COLOR, 8}, {PARA_DECREASE_BPP_QUANTIZE, 3}}},
    {"Neural", 29, {{PARA_COLOR, 9}, {PARA_DECREASE_BPP_QUANTIZE, 4}}},
    {"Gray256", 29, {{PARA_COLOR, 1}}},
    {"Grays16", 29, {{PARA_COLOR, 4}}},
    {"Grays16Dithered", 29, {{PARA_COLOR, 4}, {PARA_DECREASE_BPP_DITHER, 1}}},
    {"Otsu", 29, {{PARA_COLOR, 7}}},
    {"Wolf", 29, {{PARA_COLOR, 7}, {PARA_DECREASE_THRESHOLD_METHOD, 2}}},
    {"BlackWhiteDithered", 29, {{PARA_COLOR, 7}, {PARA_DECREASE_BPP_DITHER, 1}}},
    {"BlackWhiteCleaned",
     29,
     {{PARA_COLOR, 7},
      {PARA_DECREASE_DESPECKLE_SIZE, 3},
      {PARA_DECREASE_DE_BLACK, 1},
      {PARA_DECREASE_DE_SMOOTH, 1},
      {PARA_DECREASE_BLOCK_WIDTH, 3},
      {PARA_DECREASE_BLOCK_HEIGHT, 3}}},
    {"HighColor", 29, {{PARA_COLOR, 18}, {PARA_DECREASE_BPP_DITHER, 1}}},
};

CDibImage Page(int bpp) {
    CDibImage page = test::Noise(40, 30, bpp, 11);
    return page;
}

RunReport RunWith(const Values& values, RunMode mode, CDibImage& image) {
    RunRequest request;
    request.image = &image;
    request.mode = mode;
    for (const auto& [index, value] : values)
        request.settings.Set(index, value);
    return velloran::Run(request);
}

class RunOutOfMemory : public testing::TestWithParam<StepCase> {
 protected:
    /// How many of the runs with a failing allocation were not whole.
    int Sweep(RunMode mode, bool onlyOne) {
        const StepCase& c = GetParam();
        const test::Threads one(1);
        const CDibImage page = Page(c.bpp);
        CDibImage whole = page;
        EXPECT_TRUE(RunWith(c.values, mode, whole).IsWhole());
        int notWhole = 0;
        bool failed = true;
        for (long n = 1; failed; ++n) {
            CDibImage image = page;
            RunRequest request;
            request.image = &image;
            request.mode = mode;
            for (const auto& [index, value] : c.values)
                request.settings.Set(index, value);
            RunReport report;
            {
                const test::FailAllocation failure(n, onlyOne);
                report = velloran::Run(request);
                failed = failure.Happened();
            }
            if (report.IsWhole()) {
                test::ExpectSamePixels(image, whole);
                continue;
            }
            ++notWhole;
            EXPECT_TRUE(failed);
            EXPECT_EQ(report.end, RunEnd::kDone);
            EXPECT_EQ(report.Worst(), StepResult::kNoMemory) << report.Detail();
            for (const StepReport& step : report.Steps())
                if (step.result == StepResult::kNoMemory) {
                    EXPECT_EQ(step.step, c.step) << "allocation " << n;
                }
        }
        return notWhole;
    }
};

TEST_P(RunOutOfMemory, IsToldWhenMemoryEnds) {
    EXPECT_GT(Sweep(RunMode::kFull, /*onlyOne=*/false), 0);
}

TEST_P(RunOutOfMemory, IsToldWhenOneAllocationFails) {
    Sweep(RunMode::kFull, /*onlyOne=*/true);
}

TEST_P(RunOutOfMemory, IsToldOfAPreview) {
    Sweep(RunMode::kPreview, /*onlyOne=*/false);
}

INSTANTIATE_TEST_SUITE_P(Steps, RunOutOfMemory, testing::ValuesIn(kCases),
                         [](const auto& c) { return std::string(c.param.name); });

TEST(RunOfTwoSteps, NamesTheOneWithoutMemory) {
    // The measured case: the illumination ran, the detail did not.
    const test::Threads one(1);
    const CDibImage page = Page(24);
    const Values values = {{PARA_LUM_CORRECT, 4}, {PARA_ADJUST_MULTI_SCALE_R, 8}};
    CDibImage whole = page;
    RunWith(values, RunMode::kFull, whole);
    bool firstAlone = false, secondAlone = false, failed = true;
    for (long n = 1; failed; ++n) {
        CDibImage image = page;
        RunRequest request;
        request.image = &image;
        for (const auto& [index, value] : values)
            request.settings.Set(index, value);
        RunReport report;
        {
            const test::FailAllocation failure(n, /*onlyOne=*/true);
            report = velloran::Run(request);
            failed = failure.Happened();
        }
        if (report.IsWhole()) {
            test::ExpectSamePixels(image, whole);
            continue;
        }
        firstAlone |= report.Detail() == "out of memory in step 10";
        secondAlone |= report.Detail() == "out of memory in step 18";
    }
    EXPECT_TRUE(firstAlone);
    EXPECT_TRUE(secondAlone);
}

}  // namespace
}  // namespace velloran

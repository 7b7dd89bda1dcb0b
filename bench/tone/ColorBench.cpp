// The steps that work pixel by pixel, on a whole page; their figures stand beside FloorCopyPage.

#include <benchmark/benchmark.h>

#include <cstdint>

#include "core/DibImage.h"
#include "support/BesideOpenCv.h"
#include "support/Page.h"
#include "tone/Channels.h"
#include "tone/Levels.h"
#include "tone/Light.h"
#include "tone/ReplaceColor.h"
#include "tone/Vibrance.h"

namespace velloran::bench {
namespace {

using Step = int (*)(CDibImage&);

void StepOnColor(benchmark::State& state, Step step) {
    MeasureOnCopies(state, ScannedPage(kColorBits), step);
}

void StepOnGray(benchmark::State& state, Step step) {
    MeasureOnCopies(state, ScannedPage(kGrayBits), step);
}

void StepToGray(benchmark::State& state, Step step) {
    MeasureOnNew(state, ScannedPage(kColorBits), step);
}

constexpr std::uint32_t kPaper = 0xC8D2DC, kWhite = 0xFFFFFF;
constexpr int kNear = 40;

int MasterLevels(CDibImage& page) {
    return ApplyLevels(page, 0x14000000, 0xE6FFFFFF);
}

template <int kType>
int ReplacePaper(CDibImage& page) {
    return ReplaceColor(kType, page, kPaper, kWhite, kNear);
}

template <int kMode>
int Combine(CDibImage& page) {
    return CombineChannels(page, kMode);
}

BENCHMARK_CAPTURE(StepOnColor, levels, MasterLevels)->Apply(OneAndTwoThreads);
BENCHMARK_CAPTURE(StepOnGray, levels, MasterLevels)->Apply(OneAndTwoThreads);
BENCHMARK_CAPTURE(StepOnColor, shadows, [](CDibImage& page) {
    return AdjustLight(page, 30, 0);
})->Apply(OneAndTwoThreads);
BENCHMARK_CAPTURE(StepOnColor, highlights, [](CDibImage& page) {
    return AdjustLight(page, 0, 30);
})->Apply(OneAndTwoThreads);
BENCHMARK_CAPTURE(StepOnColor, replace_near, ReplacePaper<1>)->Apply(OneAndTwoThreads);
BENCHMARK_CAPTURE(StepOnColor, replace_hue, ReplacePaper<2>)->Apply(OneAndTwoThreads);
BENCHMARK_CAPTURE(StepOnColor, replace_all, ReplacePaper<3>)->Apply(OneAndTwoThreads);
BENCHMARK_CAPTURE(StepOnColor, swap, [](CDibImage& page) {
    return SwapChannels(page, 1);
})->Apply(OneAndTwoThreads);
BENCHMARK_CAPTURE(StepOnColor, negate, Negate)->Apply(OneAndTwoThreads);
BENCHMARK_CAPTURE(StepToGray, combine_1, Combine<1>)->Apply(OneAndTwoThreads);
BENCHMARK_CAPTURE(StepToGray, combine_4, Combine<4>)->Apply(OneAndTwoThreads);
BENCHMARK_CAPTURE(StepToGray, combine_7, Combine<7>)->Apply(OneAndTwoThreads);
BENCHMARK_CAPTURE(StepToGray, contrast_gray, ContrastGray)->Apply(OneAndTwoThreads);
BENCHMARK_CAPTURE(StepToGray, sepia_gray, [](CDibImage& page) {
    return Sepia(page, 0.8, true);
})->Apply(OneAndTwoThreads);
BENCHMARK_CAPTURE(StepOnColor, sepia, [](CDibImage& page) {
    return Sepia(page, 0.8, false);
})->Apply(OneAndTwoThreads);
BENCHMARK_CAPTURE(StepOnColor, vibrance, [](CDibImage& page) {
    return Vibrance(page, 40);
})->Apply(OneAndTwoThreads);
BENCHMARK_CAPTURE(StepOnColor, equalize, HistEqualize)->Apply(OneAndTwoThreads);
BENCHMARK_CAPTURE(StepOnGray, equalize, HistEqualize)->Apply(OneAndTwoThreads);

}  // namespace
}  // namespace velloran::bench

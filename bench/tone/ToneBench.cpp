// Tone changes of a whole page beside their floors: a copy of the page, and what OpenCV takes for
// the same look-up and for counting and look-up.

#include <benchmark/benchmark.h>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "core/ProcessorForm.h"
#include "support/BesideOpenCv.h"
#include "support/Page.h"
#include "tone/AutoLevels.h"
#include "tone/PixelMap.h"
#include "tone/PixelMapRows.h"

namespace velloran::bench {
namespace {

PixelMap SampleMap() {
    PixelMap map = IdentityPixelMap();
    MapBrightness(110, map);
    MapGamma(120, map);
    return map;
}

/// OpenCV's look-up with one table for all channels.
void FloorCvLut(benchmark::State& state) {
    const BothThreads threads(state.range(1));
    CDibImage page = ScannedPage(static_cast<int>(state.range(0)));
    PixelMap map = SampleMap();
    const cv::Mat table(1, 256, CV_8UC1, map.data());
    cv::Mat mapped;
    for (auto _ : state) {
        cv::LUT(MatOf(page), table, mapped);
        benchmark::ClobberMemory();
    }
    CountBytes(state, page);
}

void ApplyPixelMapPage(benchmark::State& state) {
    const BothThreads threads(state.range(1));
    CDibImage page = ScannedPage(static_cast<int>(state.range(0)));
    const PixelMap map = SampleMap();
    for (auto _ : state) {
        benchmark::DoNotOptimize(ApplyPixelMap(map, page));
        benchmark::ClobberMemory();
    }
    CountBytes(state, page);
}

/// Each form of looking up, on one thread.
void MapBytesPage(benchmark::State& state) {
    const std::string before = ProcessorForm();
    const std::string form = ProcessorForms()[static_cast<std::size_t>(state.range(0))];
    UseProcessorForm(form);
    state.SetLabel(form);
    CDibImage page = ScannedPage(kColorBits);
    const PixelMap map = SampleMap();
    for (auto _ : state) {
        MapBytes(map, page.GetBits(0), PageBytes(page));
        benchmark::ClobberMemory();
    }
    CountBytes(state, page);
    UseProcessorForm(before);
}

/// The histogram of one channel, or of the whole of a grey page.
void CountOne(const cv::Mat& page, int channel, cv::Mat& histogram) {
    const int levels = 256;
    const float range[] = {0, 256};
    const float* ranges[] = {range};
    cv::calcHist(&page, 1, &channel, cv::Mat(), histogram, 1, &levels, ranges);
}

/// OpenCV's histogram of one channel and one table for all of them: the least that any of the
/// modes can ask for.
void FloorCvCountAndLut(benchmark::State& state) {
    const BothThreads threads(state.range(1));
    CDibImage page = ScannedPage(static_cast<int>(state.range(0)));
    PixelMap map = SampleMap();
    const cv::Mat table(1, 256, CV_8UC1, map.data());
    cv::Mat histogram, mapped;
    for (auto _ : state) {
        CountOne(MatOf(page), 0, histogram);
        cv::LUT(MatOf(page), table, mapped);
        benchmark::ClobberMemory();
    }
    CountBytes(state, page);
}

/// The same with a histogram and a table for each channel of a 24-bit page.
void FloorCvCountAndLutPerChannel(benchmark::State& state) {
    const BothThreads threads(state.range(0));
    CDibImage page = ScannedPage(kColorBits);
    const PixelMap map = SampleMap();
    cv::Mat table(1, 256, CV_8UC3), histogram, mapped;
    for (int i = 0; i < 256; ++i)
        table.at<cv::Vec3b>(i) = cv::Vec3b::all(map[static_cast<std::size_t>(i)]);
    for (auto _ : state) {
        for (int channel = 0; channel < 3; ++channel)
            CountOne(MatOf(page), channel, histogram);
        cv::LUT(MatOf(page), table, mapped);
        benchmark::ClobberMemory();
    }
    CountBytes(state, page);
}

/// Arguments: bits, threads, mode. Each round works on what the last one left; the time of counting
/// and mapping does not hang on the pixels' values in a way that matters.
void AutoLevelsPage(benchmark::State& state) {
    const BothThreads threads(state.range(1));
    const CDibImage page = ScannedPage(static_cast<int>(state.range(0)));
    CDibImage work = page;
    for (auto _ : state) {
        state.PauseTiming();
        CopyPixels(page, work);
        state.ResumeTiming();
        benchmark::DoNotOptimize(AutoLevels(work, static_cast<int>(state.range(2))));
        benchmark::ClobberMemory();
    }
    CountBytes(state, page);
}

void BitsAndThreads(benchmark::internal::Benchmark* bench) {
    bench->ArgNames({"bits", "threads"})
        ->ArgsProduct({{kColorBits, kGrayBits}, {1, 2}})
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

BENCHMARK(FloorCopyPage<kColorBits>)->Apply(OneAndTwoThreads);
BENCHMARK(FloorCopyPage<kGrayBits>)->Apply(OneAndTwoThreads);
BENCHMARK(FloorCvLut)->Apply(BitsAndThreads);
BENCHMARK(ApplyPixelMapPage)->Apply(BitsAndThreads);
BENCHMARK(MapBytesPage)
    ->ArgName("form")
    ->DenseRange(0, static_cast<int>(ProcessorForms().size()) - 1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(FloorCvCountAndLut)->Apply(BitsAndThreads);
BENCHMARK(FloorCvCountAndLutPerChannel)
    ->ArgName("threads")
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(AutoLevelsPage)
    ->ArgNames({"bits", "threads", "mode"})
    ->ArgsProduct({{kColorBits, kGrayBits}, {1, 2}, {1, 3, 6, 9}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
}  // namespace velloran::bench

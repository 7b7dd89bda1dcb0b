// Shadows, illumination and white balance over a whole page beside copies of it; the retinex of a
// photograph beside OpenCV's three float Gaussians alone, and the passes of Frankle and McCann
// beside a loop that only makes their memory accesses.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "core/DibImage.h"
#include "support/BesideOpenCv.h"
#include "support/Page.h"
#include "tone/BlackWhiteText.h"
#include "tone/FrankleMcCann.h"
#include "tone/FrankleMcCannPasses.h"
#include "tone/IlluminationFit.h"
#include "tone/MultiScaleRetinex.h"
#include "tone/Unshadow.h"
#include "tone/WhiteBalance.h"

namespace velloran::bench {
namespace {

constexpr int kPhotoWidth = 4000, kPhotoHeight = 3000;

template <int kBits>
void UnshadowPage(benchmark::State& state) {
    MeasureOnCopies(state, ScannedPage(kBits), [](CDibImage& page) { Unshadow(page, -20); });
}
BENCHMARK(UnshadowPage<kGrayBits>)->Apply(OneAndTwoThreads);
BENCHMARK(UnshadowPage<kColorBits>)->Apply(OneAndTwoThreads);

template <int kBits>
void BlackWhitePage(benchmark::State& state) {
    MeasureOnCopies(state, ScannedPage(kBits),
                    [](CDibImage& page) { BlackWhiteText(page, /*keepColor=*/true); });
}
BENCHMARK(BlackWhitePage<kGrayBits>)->Apply(OneAndTwoThreads);
BENCHMARK(BlackWhitePage<kColorBits>)->Apply(OneAndTwoThreads);

template <int kBits>
void FitPage(benchmark::State& state) {
    MeasureOnCopies(state, ScannedPage(kBits), IlluminationFit);
}
BENCHMARK(FitPage<kGrayBits>)->Apply(OneAndTwoThreads);
BENCHMARK(FitPage<kColorBits>)->Apply(OneAndTwoThreads);

void BalancePage(benchmark::State& state) {
    MeasureOnCopies(state, ScannedPage(kColorBits), [](CDibImage& page) { WhiteBalance(page, 2); });
}
BENCHMARK(BalancePage)->Apply(OneAndTwoThreads);

/// The three blurs of a photograph at the working size of the retinex, and nothing else.
void FloorCvThreeGaussians(benchmark::State& state) {
    CDibImage photo = ScannedPage(kColorBits, kPhotoWidth, kPhotoHeight);
    cv::Mat small, source, blurred;
    cv::resize(MatOf(photo), small, {1500, 1125}, 0, 0, cv::INTER_AREA);
    small.convertTo(source, CV_32F);
    Measure(state, photo, [&] {
        for (const double sigma : {2.0, 72.0, 142.0})
            cv::GaussianBlur(source, blurred, {}, sigma * 1500 / kPhotoWidth);
    });
}
BENCHMARK(FloorCvThreeGaussians)->Apply(OneAndTwoThreads);

void RetinexPhoto(benchmark::State& state) {
    MeasureOnCopies(state, ScannedPage(kColorBits, kPhotoWidth, kPhotoHeight),
                    [](CDibImage& photo) { MultiScaleRetinex(photo, /*brighten=*/true); });
}
BENCHMARK(RetinexPhoto)->Apply(OneAndTwoThreads);

/// Logs and results of a page of noise.
struct PassPlanes {
    std::vector<std::uint16_t> logs, result;
    RetinexPlanes planes;

    PassPlanes()
        : logs(static_cast<std::size_t>(kPageWidth) * kPageHeight),
          result(logs.size(), kRetinexWhite) {
        std::uint32_t state = 1;
        for (std::uint16_t& log : logs) {
            state = state * 1664525U + 1013904223U;
            log = static_cast<std::uint16_t>(state >> 17);
        }
        planes = {logs.data(), result.data(), kPageWidth, kPageHeight};
    }
};

constexpr int kFirstShift = 1024;  // of a page 2480 pixels wide

/// Reads both planes at the pixel and at its neighbour and writes the result; runs of pixels that
/// do not wait for each other, so that nothing but memory is measured.
void TouchRun(const RetinexPlanes& planes, std::ptrdiff_t at, std::ptrdiff_t other, int count) {
    std::uint16_t* result = planes.result + at;
    const std::uint16_t* log = planes.logs + at;
    const std::uint16_t* otherResult = planes.result + other;
    const std::uint16_t* otherLog = planes.logs + other;
#pragma GCC ivdep
    for (int i = 0; i < count; ++i)
        result[i] =
            static_cast<std::uint16_t>((result[i] ^ log[i]) ^ (otherResult[i] ^ otherLog[i]));
}

void FloorPassAccesses(benchmark::State& state) {
    const BothThreads threads(state.range(0));
    const PassPlanes work;
    const RetinexPlanes& p = work.planes;
    for (auto _ : state) {
        for (int shift = kFirstShift; shift != 0; shift = -(shift / 2)) {
            const int distance = std::abs(shift);
            const int x = shift > 0 ? distance : 0, y = shift > 0 ? distance : 0;
#pragma omp parallel for schedule(static)
            for (int row = 0; row < p.height; ++row) {
                const std::ptrdiff_t at = std::ptrdiff_t{row} * p.width + x;
                TouchRun(p, at, at - shift, p.width - distance);
            }
#pragma omp parallel for schedule(static)
            for (int row = y; row < p.height - distance + y; ++row) {
                const std::ptrdiff_t at = std::ptrdiff_t{row} * p.width;
                TouchRun(p, at, at - std::ptrdiff_t{shift} * p.width, p.width);
            }
        }
        benchmark::ClobberMemory();
    }
}
BENCHMARK(FloorPassAccesses)->Apply(OneAndTwoThreads);

void FrankleMcCannAllPasses(benchmark::State& state) {
    const BothThreads threads(state.range(0));
    const PassPlanes work;
    for (auto _ : state) {
        for (int shift = kFirstShift; shift != 0; shift = -(shift / 2)) {
            MeetAlongRows(work.planes, shift);
            MeetDownColumns(work.planes, shift);
        }
        benchmark::ClobberMemory();
    }
}
BENCHMARK(FrankleMcCannAllPasses)->Apply(OneAndTwoThreads);

void FrankleMcCannPage(benchmark::State& state) {
    MeasureOnCopies(state, ScannedPage(kGrayBits),
                    [](CDibImage& page) { FrankleMcCannRetinex(page, 1); });
}
BENCHMARK(FrankleMcCannPage)->Apply(OneAndTwoThreads);

}  // namespace
}  // namespace velloran::bench

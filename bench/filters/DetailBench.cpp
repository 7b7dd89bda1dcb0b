// Adjustable sharpening over a whole colour page beside OpenCV's filter with the same kernel, and
// multi-scale detail beside its three smoothings.

#include <benchmark/benchmark.h>

#include <opencv2/imgproc.hpp>
#include <vector>

#include "core/DibImage.h"
#include "filters/AdjustSharpen.h"
#include "filters/MultiScaleDetail.h"
#include "filters/SmoothPlane.h"
#include "support/BesideOpenCv.h"
#include "support/Page.h"

namespace velloran::bench {
namespace {

template <int kPercent>
void FloorCvFilter(benchmark::State& state) {
    CDibImage page = ScannedPage(kColorBits);
    const cv::Mat source = MatOf(page);
    cv::Mat result;
    const int size = SharpenKernelSize(kPercent);
    std::vector<float> weights(static_cast<std::size_t>(size) * static_cast<std::size_t>(size));
    MakeSharpenKernel((kPercent + 3) / 10.0F, size, weights);
    const cv::Mat kernel(size, size, CV_32F, weights.data());
    Measure(state, page, [&] {
        cv::filter2D(source, result, -1, kernel, {-1, -1}, 0, cv::BORDER_REPLICATE);
    });
}

template <int kPercent>
void Sharpen(benchmark::State& state) {
    CDibImage page = ScannedPage(kColorBits);
    Measure(state, page, [&] { AdjustSharpen(page, kPercent, 25); });
}

// Kernels of 7, 13 and 25.
BENCHMARK(FloorCvFilter<5>)->Apply(OneAndTwoThreads);
BENCHMARK(Sharpen<5>)->Apply(OneAndTwoThreads);
BENCHMARK(FloorCvFilter<11>)->Apply(OneAndTwoThreads);
BENCHMARK(Sharpen<11>)->Apply(OneAndTwoThreads);
BENCHMARK(FloorCvFilter<40>)->Apply(OneAndTwoThreads);
BENCHMARK(Sharpen<40>)->Apply(OneAndTwoThreads);

void FloorThreeSmoothings(benchmark::State& state) {
    CDibImage page = ScannedPage(kColorBits);
    Measure(state, page, [&] {
        for (const double radius : {4.0, 8.0, 16.0})
            SmoothRowsAndColumns(TopDownViewOf(page), radius);
    });
}
BENCHMARK(FloorThreeSmoothings)->Apply(OneAndTwoThreads);

void MultiScale(benchmark::State& state) {
    CDibImage page = ScannedPage(kColorBits);
    Measure(state, page, [&] { MultiScaleDetail(page, 4); });
}
BENCHMARK(MultiScale)->Apply(OneAndTwoThreads);

}  // namespace
}  // namespace velloran::bench

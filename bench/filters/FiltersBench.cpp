// Blurs and sharpening over a whole colour page, beside what OpenCV takes for the separable filter
// with the same taps, and copies of a page.

#include <benchmark/benchmark.h>

#include <opencv2/imgproc.hpp>

#include "core/DibImage.h"
#include "filters/GaussianBlur.h"
#include "filters/LevelFilters.h"
#include "filters/Morphology.h"
#include "filters/SmoothPlane.h"
#include "filters/UnsharpMask.h"
#include "support/BesideOpenCv.h"
#include "support/Page.h"

namespace velloran::bench {
namespace {

BENCHMARK(FloorCopyPage<kColorBits>)->Apply(OneAndTwoThreads);
BENCHMARK(FloorCopyPage<kGrayBits>)->Apply(OneAndTwoThreads);

template <int kSigma>
void FloorCvSepFilter(benchmark::State& state) {
    CDibImage page = ScannedPage(kColorBits);
    const cv::Mat source = MatOf(page);
    cv::Mat result(source.size(), source.type());
    const GaussianKernel kernel = MakeGaussianKernel(kSigma);
    cv::Mat taps(static_cast<int>(kernel.taps.size()), 1, CV_32F);
    for (int i = 0; i < taps.rows; ++i)
        taps.at<float>(i) =
            static_cast<float>(kernel.taps[static_cast<std::size_t>(i)]) / kernel.sum;
    Measure(state, page, [&] {
        cv::sepFilter2D(source, result, -1, taps, taps, {-1, -1}, 0, cv::BORDER_REFLECT);
    });
}
BENCHMARK(FloorCvSepFilter<1>)->Apply(OneAndTwoThreads);
BENCHMARK(FloorCvSepFilter<5>)->Apply(OneAndTwoThreads);
BENCHMARK(FloorCvSepFilter<20>)->Apply(OneAndTwoThreads);

template <int kSigma>
void GaussianBlur(benchmark::State& state) {
    CDibImage page = ScannedPage(kColorBits);
    Measure(state, page, [&] { GaussianBlurInPlace(ViewOf(page), kSigma); });
}
BENCHMARK(GaussianBlur<1>)->Apply(OneAndTwoThreads);
BENCHMARK(GaussianBlur<5>)->Apply(OneAndTwoThreads);
BENCHMARK(GaussianBlur<20>)->Apply(OneAndTwoThreads);

template <int kRadius>
void UnsharpMaskPage(benchmark::State& state) {
    CDibImage page = ScannedPage(kColorBits);
    Measure(state, page,
            [&] { UnsharpMask(page, 100, kRadius, 4, /*times=*/1, /*blurOnly=*/false); });
}
BENCHMARK(UnsharpMaskPage<1>)->Apply(OneAndTwoThreads);
BENCHMARK(UnsharpMaskPage<5>)->Apply(OneAndTwoThreads);
BENCHMARK(UnsharpMaskPage<20>)->Apply(OneAndTwoThreads);
BENCHMARK(UnsharpMaskPage<100>)->Apply(OneAndTwoThreads);

template <int kLevel>
void SharpenPage(benchmark::State& state) {
    CDibImage page = ScannedPage(kColorBits);
    Measure(state, page, [&] { SharpenLevel(page, kLevel); });
}
BENCHMARK(SharpenPage<6>)->Apply(OneAndTwoThreads);
BENCHMARK(SharpenPage<12>)->Apply(OneAndTwoThreads);

template <int kLevel>
void BlurPage(benchmark::State& state) {
    CDibImage page = ScannedPage(kColorBits);
    Measure(state, page, [&] { BlurLevel(page, kLevel); });
}
BENCHMARK(BlurPage<1>)->Apply(OneAndTwoThreads);
BENCHMARK(BlurPage<10>)->Apply(OneAndTwoThreads);

template <int kStrength>
void ThickenStrokes(benchmark::State& state) {
    MeasureOnCopies(state, ScannedPage(kColorBits),
                    [](CDibImage& page) { Darken(page, kStrength); });
}
BENCHMARK(ThickenStrokes<1>)->Apply(OneAndTwoThreads);
BENCHMARK(ThickenStrokes<4>)->Apply(OneAndTwoThreads);

/// Rows and columns of a plane.
template <int kBits>
void SmoothWholePlane(benchmark::State& state) {
    CDibImage page = ScannedPage(kBits);
    Measure(state, page, [&] { SmoothRowsAndColumns(TopDownViewOf(page), 5.0); });
}
BENCHMARK(SmoothWholePlane<kColorBits>)->Apply(OneAndTwoThreads);
BENCHMARK(SmoothWholePlane<kGrayBits>)->Apply(OneAndTwoThreads);

}  // namespace
}  // namespace velloran::bench

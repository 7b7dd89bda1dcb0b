// Kernels over a whole colour page, each beside what OpenCV takes for the same.

#include <benchmark/benchmark.h>

#include <array>
#include <opencv2/imgproc.hpp>

#include "core/DibImage.h"
#include "imaging/BorderedCopy.h"
#include "imaging/Convolve.h"
#include "imaging/MinMax.h"
#include "imaging/Resize.h"
#include "support/BesideOpenCv.h"
#include "support/Page.h"

namespace velloran::bench {
namespace {

BENCHMARK(FloorCopyPage<kColorBits>)->Apply(OneAndTwoThreads);

// Convolutions.

constexpr std::array<std::int32_t, 9> kSharpen3x3 = {-30,  -100, -30,  -100, 620,
                                                     -100, -30,  -100, -30};
constexpr std::array<float, 25> kSharpen5x5 = {0,  -1, -2, -1, 0,  -1, -3, -4, -3, -1, -2, -4, 45,
                                               -4, -2, -1, -3, -4, -3, -1, 0,  -1, -2, -1, 0};

void CvFilter(benchmark::State& state, int size, const float* weights, double scale) {
    CDibImage page = ScannedPage(kColorBits);
    const cv::Mat source = MatOf(page);
    cv::Mat kernel(size, size, CV_32F), result(source.size(), source.type());
    for (int i = 0; i < size * size; ++i)
        kernel.at<float>(i / size, i % size) = static_cast<float>(weights[i] / scale);
    Measure(state, page, [&] {
        cv::filter2D(source, result, -1, kernel, {-1, -1}, 0, cv::BORDER_REPLICATE);
    });
}

void FloorCvFilter3x3(benchmark::State& state) {
    std::array<float, 9> weights;
    for (std::size_t i = 0; i < weights.size(); ++i)
        weights[i] = static_cast<float>(kSharpen3x3[i]);
    CvFilter(state, 3, weights.data(), 100);
}
BENCHMARK(FloorCvFilter3x3)->Apply(OneAndTwoThreads);

/// With the bordered copy that it reads.
void Convolve3x3(benchmark::State& state) {
    CDibImage page = ScannedPage(kColorBits), result = page;
    Measure(state, page, [&] {
        const BorderedCopy source(ViewOf(page), 1);
        ConvolveInt(source.View(), kSharpen3x3, 3, 100, ViewOf(result));
    });
}
BENCHMARK(Convolve3x3)->Apply(OneAndTwoThreads);

void FloorCvFilter5x5(benchmark::State& state) {
    CvFilter(state, 5, kSharpen5x5.data(), 1);
}
BENCHMARK(FloorCvFilter5x5)->Apply(OneAndTwoThreads);

void Convolve5x5(benchmark::State& state) {
    CDibImage page = ScannedPage(kColorBits), result = page;
    Measure(state, page, [&] {
        const BorderedCopy source(ViewOf(page), 2);
        ConvolveFloat(source.View(), kSharpen5x5, 5, ViewOf(result));
    });
}
BENCHMARK(Convolve5x5)->Apply(OneAndTwoThreads);

/// Weights that are no integers.
void Convolve5x5Fractions(benchmark::State& state) {
    CDibImage page = ScannedPage(kColorBits), result = page;
    std::array<float, 25> weights;
    for (std::size_t i = 0; i < weights.size(); ++i)
        weights[i] = kSharpen5x5[i] * 0.5F + 0.02F;
    Measure(state, page, [&] {
        const BorderedCopy source(ViewOf(page), 2);
        ConvolveFloat(source.View(), weights, 5, ViewOf(result));
    });
}
BENCHMARK(Convolve5x5Fractions)->Apply(OneAndTwoThreads);

// Minimum and maximum.

template <int kSide>
void FloorCvErode(benchmark::State& state) {
    CDibImage page = ScannedPage(kColorBits);
    const cv::Mat source = MatOf(page);
    cv::Mat result(source.size(), source.type());
    const cv::Mat window = cv::Mat::ones(kSide, kSide, CV_8U);
    Measure(state, page, [&] {
        cv::erode(source, result, window, {-1, -1}, 1, cv::BORDER_REPLICATE);
    });
}
BENCHMARK(FloorCvErode<3>)->Apply(OneAndTwoThreads);
BENCHMARK(FloorCvErode<5>)->Apply(OneAndTwoThreads);

template <int kSide>
void FloorCvDilate(benchmark::State& state) {
    CDibImage page = ScannedPage(kColorBits);
    const cv::Mat source = MatOf(page);
    cv::Mat result(source.size(), source.type());
    const cv::Mat window = cv::Mat::ones(kSide, kSide, CV_8U);
    Measure(state, page, [&] {
        cv::dilate(source, result, window, {-1, -1}, 1, cv::BORDER_REPLICATE);
    });
}
BENCHMARK(FloorCvDilate<3>)->Apply(OneAndTwoThreads);
BENCHMARK(FloorCvDilate<5>)->Apply(OneAndTwoThreads);

template <int kSide, void (*kFilter)(ConstPlaneView, Window, PlaneView)>
void WindowFilter(benchmark::State& state) {
    CDibImage page = ScannedPage(kColorBits), result = page;
    Measure(state, page, [&] {
        kFilter(ViewOf(page), {kSide, kSide, kSide / 2, kSide / 2}, ViewOf(result));
    });
}
BENCHMARK(WindowFilter<3, MinFilter>)->Apply(OneAndTwoThreads);
BENCHMARK(WindowFilter<5, MinFilter>)->Apply(OneAndTwoThreads);
BENCHMARK(WindowFilter<3, MaxFilter>)->Apply(OneAndTwoThreads);
BENCHMARK(WindowFilter<5, MaxFilter>)->Apply(OneAndTwoThreads);

// Resizing.

void CvResize(benchmark::State& state, double scale, int mode) {
    CDibImage page = ScannedPage(kColorBits);
    const cv::Mat source = MatOf(page);
    cv::Mat result;
    const cv::Size size(static_cast<int>(page.GetWidth() * scale),
                        static_cast<int>(page.GetHeight() * scale));
    Measure(state, page, [&] { cv::resize(source, result, size, 0, 0, mode); });
}

void Resize(benchmark::State& state, double scale, void (*resize)(ConstPlaneView, PlaneView)) {
    CDibImage page = ScannedPage(kColorBits), result;
    result.Create(static_cast<int>(page.GetWidth() * scale),
                  static_cast<int>(page.GetHeight() * scale), kColorBits);
    Measure(state, page, [&] { resize(ViewOf(page), ViewOf(result)); });
}

void FloorCvLanczosEnlarge(benchmark::State& state) {
    CvResize(state, 1.5, cv::INTER_LANCZOS4);
}
BENCHMARK(FloorCvLanczosEnlarge)->Apply(OneAndTwoThreads);

void LanczosEnlarge(benchmark::State& state) {
    Resize(state, 1.5, ResizeLanczos);
}
BENCHMARK(LanczosEnlarge)->Apply(OneAndTwoThreads);

void FloorCvAreaHalf(benchmark::State& state) {
    CvResize(state, 0.5, cv::INTER_AREA);
}
BENCHMARK(FloorCvAreaHalf)->Apply(OneAndTwoThreads);

void AreaHalf(benchmark::State& state) {
    Resize(state, 0.5, static_cast<void (*)(ConstPlaneView, PlaneView)>(ResizeArea));
}
BENCHMARK(AreaHalf)->Apply(OneAndTwoThreads);

void FloorCvAreaReduce(benchmark::State& state) {
    CvResize(state, 0.63, cv::INTER_AREA);
}
BENCHMARK(FloorCvAreaReduce)->Apply(OneAndTwoThreads);

void AreaReduce(benchmark::State& state) {
    Resize(state, 0.63, static_cast<void (*)(ConstPlaneView, PlaneView)>(ResizeArea));
}
BENCHMARK(AreaReduce)->Apply(OneAndTwoThreads);

void FloorCvLinearReduce(benchmark::State& state) {
    CvResize(state, 0.4, cv::INTER_LINEAR);
}
BENCHMARK(FloorCvLinearReduce)->Apply(OneAndTwoThreads);

void LinearReduce(benchmark::State& state) {
    Resize(state, 0.4, static_cast<void (*)(ConstPlaneView, PlaneView)>(ResizeLinear));
}
BENCHMARK(LinearReduce)->Apply(OneAndTwoThreads);

}  // namespace
}  // namespace velloran::bench

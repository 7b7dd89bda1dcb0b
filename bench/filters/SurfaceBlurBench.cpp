// Surface blur over a whole colour page: the direct form beside OpenCV's bilateral filter with the
// same window, the histogram forms beside what the direct form would take at their radius, and the
// guided filter beside its means.

#include "filters/SurfaceBlur.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "core/DibImage.h"
#include "imaging/BorderedCopy.h"
#include "imaging/BoxMean.h"
#include "support/BesideOpenCv.h"
#include "support/Page.h"

namespace velloran::bench {
namespace {

constexpr int kThreshold = 20;

template <int kAlgorithm, int kRadius, int kLimit = kThreshold, int kBits = kColorBits>
void Blur(benchmark::State& state) {
    MeasureOnCopies(state, ScannedPage(kBits),
                    [](CDibImage& image) { SurfaceBlur(image, kRadius, kLimit, 1, kAlgorithm); });
}

template <int kAlgorithm, int kRadius, int kLimit>
void BlurNoise(benchmark::State& state) {
    MeasureOnCopies(state, NoisePage(kColorBits),
                    [](CDibImage& image) { SurfaceBlur(image, kRadius, kLimit, 1, kAlgorithm); });
}

void FloorCvBilateral(benchmark::State& state) {
    CDibImage page = ScannedPage(kColorBits);
    const cv::Mat source = MatOf(page);
    cv::Mat result;
    Measure(state, page,
            [&] { cv::bilateralFilter(source, result, 11, kThreshold, 5, cv::BORDER_REPLICATE); });
}
BENCHMARK(FloorCvBilateral)->Apply(OneAndTwoThreads);
BENCHMARK(Blur<0, 1>)->Apply(OneAndTwoThreads);
BENCHMARK(Blur<0, 5>)->Apply(OneAndTwoThreads);
BENCHMARK(BlurNoise<0, 5, 50>)->Apply(OneAndTwoThreads);

/// The direct form by its definition, weights by arithmetic so that vectors can take it.
void SumWindowRow(ConstPlaneView source, int y, int radius, float end, std::uint8_t* out,
                  int count) {
    constexpr int kBlock = 128;
    const std::uint8_t* center =
        source.first + (y + radius) * source.stride + std::ptrdiff_t{radius} * source.channels;
    for (int at = 0; at < count; at += kBlock) {
        const int length = std::min(kBlock, count - at);
        float weights[kBlock] = {}, samples[kBlock] = {};
        for (int j = 0; j <= 2 * radius; ++j)
            for (int i = 0; i <= 2 * radius; ++i) {
                const std::uint8_t* row =
                    source.first + (y + j) * source.stride + i * source.channels + at;
                for (int x = 0; x < length; ++x) {
                    const auto sample = static_cast<float>(row[x]);
                    const float falling =
                        1.0F - std::fabs(sample - static_cast<float>(center[at + x])) / end;
                    const float weight = falling < 0.0F ? 0.0F : falling;
                    weights[x] += weight;
                    samples[x] += sample * weight;
                }
            }
        for (int x = 0; x < length; ++x)
            out[at + x] = static_cast<std::uint8_t>(samples[x] / weights[x] + 0.5F);
    }
}

/// An eighth of a page; compare the bytes a second.
void FloorDirectSums12(benchmark::State& state) {
    MeasureOnCopies(state, ScannedPage(kColorBits, kPageWidth, kPageHeight / 8),
                    [](CDibImage& image) {
                        const PlaneView pixels = ViewOf(image);
                        const BorderedCopy source(pixels, 12);
#pragma omp parallel for schedule(static)
                        for (int y = 0; y < pixels.height; ++y)
                            SumWindowRow(source.View(), y, 12, 2.5F * kThreshold,
                                         pixels.Row(y).data(), pixels.width * 3);
                    });
}
BENCHMARK(FloorDirectSums12)->Apply(OneAndTwoThreads);
BENCHMARK(Blur<0, 6>)->Apply(OneAndTwoThreads);
BENCHMARK(Blur<0, 12>)->Apply(OneAndTwoThreads);
BENCHMARK(Blur<0, 15>)->Apply(OneAndTwoThreads);
BENCHMARK(Blur<0, 12, kThreshold, kGrayBits>)->Apply(OneAndTwoThreads);
BENCHMARK(BlurNoise<0, 6, 50>)->Apply(OneAndTwoThreads);
BENCHMARK(BlurNoise<0, 12, 50>)->Apply(OneAndTwoThreads);
BENCHMARK(Blur<3, 5>)->Apply(OneAndTwoThreads);
BENCHMARK(Blur<3, 15>)->Apply(OneAndTwoThreads);

/// The means that one pass of the guided filter takes: four of each channel.
void FloorBoxMeans8(benchmark::State& state) {
    const CDibImage page = ScannedPage(kColorBits);
    FloatPlane source(kPageWidth, kPageHeight), target(kPageWidth, kPageHeight);
    for (int y = 0; y < kPageHeight; ++y)
        for (int x = 0; x < kPageWidth; ++x)
            source.View().Row(y)[static_cast<std::size_t>(x)] = page.GetBits(y)[3 * x];
    Measure(state, page, [&] {
        for (int i = 0; i < 12; ++i)
            BoxMean(source.View(), 8, target.View());
    });
}
BENCHMARK(FloorBoxMeans8)->Apply(OneAndTwoThreads);
BENCHMARK(Blur<1, 8>)->Apply(OneAndTwoThreads);

BENCHMARK(Blur<2, 6>)->Apply(OneAndTwoThreads);
BENCHMARK(Blur<2, 15>)->Apply(OneAndTwoThreads);

}  // namespace
}  // namespace velloran::bench

// Two levels of a grey page, and their cleaning, beside what OpenCV's functions take for the same.

#include "reduce/Binarize.h"

#include <benchmark/benchmark.h>

#include <opencv2/imgproc.hpp>
#include <vector>

#include "core/DibImage.h"
#include "reduce/ApplyPalette.h"
#include "reduce/CleanPage.h"
#include "support/BesideOpenCv.h"
#include "support/Page.h"

namespace velloran::bench {
namespace {

DecreaseBppRequest OtsuRequest() {
    DecreaseBppRequest request;
    request.color = 7;
    request.thresholdMethod = 1;
    return request;
}

CDibImage BilevelPage() {
    CDibImage page = ScannedPage(kGrayBits);
    Threshold(page, nullptr, OtsuRequest());
    return page;
}

BENCHMARK(FloorCopyPage<kGrayBits>)->Apply(OneAndTwoThreads);

template <int kWindow>
void Wolf(benchmark::State& state) {
    MeasureOnCopies(state, ScannedPage(kGrayBits), [](CDibImage& image) {
        WolfThreshold(image, kWindow, kWindow, 50, 254, /*keepDepth=*/true);
    });
}
BENCHMARK(Wolf<20>)->Apply(OneAndTwoThreads);
BENCHMARK(Wolf<50>)->Apply(OneAndTwoThreads);
BENCHMARK(Wolf<200>)->Apply(OneAndTwoThreads);

template <int kWindow>
void FloorCvWolf(benchmark::State& state) {
    const cv::Size window(kWindow | 1, kWindow | 1);
    cv::Mat gray, mean, squares, deviation, f, t, black, light;
    MeasureOnCopies(state, ScannedPage(kGrayBits), [&](CDibImage& image) {
        cv::Mat source = MatOf(image);
        source.convertTo(gray, CV_32F);
        cv::boxFilter(gray, mean, CV_32F, window);
        cv::sqrBoxFilter(gray, squares, CV_32F, window);
        cv::Mat(cv::abs(squares - mean.mul(mean))).copyTo(deviation);
        cv::sqrt(deviation, deviation);
        double largest = 0, darkest = 0;
        cv::minMaxLoc(deviation, nullptr, &largest);
        cv::minMaxLoc(source, &darkest, nullptr);
        f = 0.3F * (1 - deviation / largest);
        t = mean - (mean - darkest).mul(f);
        cv::compare(gray, t, black, cv::CMP_GE);
        cv::compare(source, 254, light, cv::CMP_GT);
        cv::bitwise_or(black, light, black);
        cv::compare(source, 50, light, cv::CMP_GE);
        cv::bitwise_and(black, light, source);
    });
}
BENCHMARK(FloorCvWolf<20>)->Apply(OneAndTwoThreads);
BENCHMARK(FloorCvWolf<50>)->Apply(OneAndTwoThreads);
BENCHMARK(FloorCvWolf<200>)->Apply(OneAndTwoThreads);

void Otsu(benchmark::State& state) {
    MeasureOnCopies(state, ScannedPage(kGrayBits),
                    [](CDibImage& image) { Threshold(image, nullptr, OtsuRequest()); });
}
BENCHMARK(Otsu)->Apply(OneAndTwoThreads);

void FloorCvOtsu(benchmark::State& state) {
    MeasureOnCopies(state, ScannedPage(kGrayBits), [](CDibImage& image) {
        const cv::Mat source = MatOf(image);
        cv::threshold(source, source, 0, 255, cv::THRESH_BINARY | cv::THRESH_OTSU);
    });
}
BENCHMARK(FloorCvOtsu)->Apply(OneAndTwoThreads);

void Despeckle(benchmark::State& state) {
    CleanRequest request;
    request.despeckleSize = 3;
    MeasureOnCopies(state, BilevelPage(),
                    [&](CDibImage& image) { CleanComponents(image, nullptr, request); });
}
BENCHMARK(Despeckle)->Apply(OneAndTwoThreads);

void FloorCvDespeckle(benchmark::State& state) {
    cv::Mat black, labels, stats, centers;
    std::vector<std::uint8_t> levels;
    MeasureOnCopies(state, BilevelPage(), [&](CDibImage& image) {
        cv::Mat source = MatOf(image);
        cv::bitwise_not(source, black);
        const int count = cv::connectedComponentsWithStats(black, labels, stats, centers, 8);
        levels.assign(static_cast<std::size_t>(count), 255);
        for (int i = 1; i < count; ++i)
            if (stats.at<int>(i, cv::CC_STAT_WIDTH) > 4 || stats.at<int>(i, cv::CC_STAT_HEIGHT) > 4)
                levels[static_cast<std::size_t>(i)] = 0;
        for (int y = 0; y < source.rows; ++y)
            for (int x = 0; x < source.cols; ++x)
                source.at<std::uint8_t>(y, x) =
                    levels[static_cast<std::size_t>(labels.at<int>(y, x))];
    });
}
BENCHMARK(FloorCvDespeckle)->Apply(OneAndTwoThreads);

void Smooth(benchmark::State& state) {
    MeasureOnCopies(state, BilevelPage(), [](CDibImage& image) { SmoothEdges(image); });
}
BENCHMARK(Smooth)->Apply(OneAndTwoThreads);

void Pack(benchmark::State& state) {
    const BothThreads threads(state.range(0));
    const CDibImage page = BilevelPage();
    for (auto _ : state) {
        state.PauseTiming();
        CDibImage image(page);
        state.ResumeTiming();
        PackBilevel(image);
    }
    CountBytes(state, page);
}
BENCHMARK(Pack)->Apply(OneAndTwoThreads);

template <int kMethod>
void DitherGray(benchmark::State& state) {
    const Palette palette{{0, 0, 0, 0}, {255, 255, 255, 0}};
    MeasureOnCopies(state, ScannedPage(kGrayBits), [&](CDibImage& image) {
        ReduceLevels(image, palette, /*keepDepth=*/true, kMethod);
    });
}
BENCHMARK(DitherGray<kJarvisJudiceNinke>)->Apply(OneAndTwoThreads);
BENCHMARK(DitherGray<kFloydSteinberg>)->Apply(OneAndTwoThreads);
BENCHMARK(DitherGray<kBayer>)->Apply(OneAndTwoThreads);

}  // namespace
}  // namespace velloran::bench

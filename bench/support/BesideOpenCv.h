#pragma once

// For benchmarks that stand beside OpenCV's: threads of both set at once, and pages as its
// matrices.

#include <benchmark/benchmark.h>

#include <opencv2/core.hpp>

#include "core/DibImage.h"
#include "support/Page.h"

#ifdef _OPENMP
#include <omp.h>
#endif

namespace velloran::bench {

/// For the length of a benchmark, the number of threads of our loops and of OpenCV's.
class BothThreads {
 public:
    explicit BothThreads(std::int64_t threads) {
        SetOurs(static_cast<int>(threads));
        cv::setNumThreads(static_cast<int>(threads));
    }
    ~BothThreads() {
        SetOurs(ours_);
        cv::setNumThreads(openCv_);
    }
    BothThreads(const BothThreads&) = delete;
    BothThreads& operator=(const BothThreads&) = delete;

 private:
#ifdef _OPENMP
    static int Ours() {
        return omp_get_max_threads();
    }
    static void SetOurs(int threads) {
        omp_set_num_threads(threads);
    }
#else
    static int Ours() {
        return 1;
    }
    static void SetOurs(int) {}
#endif

    int ours_ = Ours();
    int openCv_ = cv::getNumThreads();
};

inline cv::Mat MatOf(CDibImage& page) {
    return {page.GetHeight(), page.GetWidth(), page.GetBpp() == 24 ? CV_8UC3 : CV_8UC1,
            page.GetBits(0), page.GetEffWidth()};
}

inline void CountBytes(benchmark::State& state, const CDibImage& page) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(PageBytes(page)));
}

/// Measures `work()` with the number of threads in argument 0.
template <typename Work>
void Measure(benchmark::State& state, const CDibImage& page, Work&& work) {
    const BothThreads threads(state.range(0));
    work();
    for (auto _ : state) {
        work();
        benchmark::ClobberMemory();
    }
    CountBytes(state, page);
}

/// Runs `work` once and counts the memory that it takes beside what is there.
template <typename Work>
void CountPeak(benchmark::State& state, Work&& work) {
    state.counters["peak_MB"] = static_cast<double>(PeakBytes(work)) / (1024.0 * 1024.0);
}

/// Measures `work(image)` on a fresh copy of the page each round; the copying is not timed. Counts
/// the memory that a round takes beside the page.
template <typename Work>
void MeasureOnCopies(benchmark::State& state, const CDibImage& page, Work&& work) {
    const BothThreads threads(state.range(0));
    CDibImage image(page);
    CountPeak(state, [&] { work(image); });
    for (auto _ : state) {
        state.PauseTiming();
        CopyPixels(page, image);
        state.ResumeTiming();
        work(image);
        benchmark::ClobberMemory();
    }
    CountBytes(state, page);
}

/// The same for work that may leave an image of another depth: a new one each round. The peak holds
/// the result and not the page.
template <typename Work>
void MeasureOnNew(benchmark::State& state, const CDibImage& page, Work&& work) {
    const BothThreads threads(state.range(0));
    {
        CDibImage image(page);
        CountPeak(state, [&] { work(image); });
    }
    for (auto _ : state) {
        state.PauseTiming();
        CDibImage image(page);
        state.ResumeTiming();
        work(image);
        benchmark::ClobberMemory();
    }
    CountBytes(state, page);
}

/// The floor: a plain copy of a page of that depth.
template <int kBits>
void FloorCopyPage(benchmark::State& state) {
    const CDibImage page = ScannedPage(kBits);
    CDibImage copy = page;
    Measure(state, page, [&] { CopyPixels(page, copy); });
}

inline void OneAndTwoThreads(benchmark::internal::Benchmark* bench) {
    bench->ArgName("threads")->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();
}

}  // namespace velloran::bench

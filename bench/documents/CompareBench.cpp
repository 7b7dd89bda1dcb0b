// A comparison of two pages in colour beside a copy of the page.

#include "documents/compare/Compare.h"

#include <benchmark/benchmark.h>

#include <cstring>

#include "core/DibImage.h"
#include "support/Page.h"

namespace velloran::bench {
namespace {

/// The page with a little noise on it, as another encoding leaves.
CDibImage Changed(const CDibImage& page) {
    CDibImage other = page;
    std::uint32_t seed = 1;
    for (int y = 0; y < other.GetHeight(); ++y) {
        std::uint8_t* row = other.GetBits(static_cast<std::uint32_t>(y));
        for (int i = 0; i < other.GetWidth() * 3; ++i) {
            seed = seed * 1664525 + 1013904223;
            row[i] = static_cast<std::uint8_t>(row[i] ^ (seed >> 30));
        }
    }
    return other;
}

void FloorCopyPage(benchmark::State& state) {
    const CDibImage page = ScannedPage(24);
    CDibImage copy = page;
    for (auto _ : state) {
        for (int y = 0; y < page.GetHeight(); ++y) {
            const auto row = static_cast<std::uint32_t>(y);
            std::memcpy(copy.GetBits(row), page.GetBits(row), page.GetEffWidth());
        }
        benchmark::ClobberMemory();
    }
}
BENCHMARK(FloorCopyPage)->UseRealTime()->Unit(benchmark::kMillisecond);

void ComparePages(benchmark::State& state) {
    const CDibImage page = ScannedPage(24), other = Changed(page);
    DiffStats stats;
    for (auto _ : state) {
        ComputeDiff(page, other, /*withSimilarity=*/state.range(0) != 0, stats);
        benchmark::DoNotOptimize(stats);
    }
}
BENCHMARK(ComparePages)->Arg(0)->Arg(1)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace velloran::bench

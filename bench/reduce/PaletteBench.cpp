// Palettes of a colour page and their application, beside copies of that page.

#include <benchmark/benchmark.h>

#include "PlainNetwork.h"
#include "core/DibImage.h"
#include "reduce/ApplyPalette.h"
#include "reduce/CountColors.h"
#include "reduce/DecreaseBpp.h"
#include "reduce/PaletteMakers.h"
#include "support/BesideOpenCv.h"
#include "support/Page.h"

namespace velloran::bench {
namespace {

enum PageKind { kScanned, kNoise };

CDibImage PageOf(PageKind kind) {
    return kind == kNoise ? NoisePage(kColorBits) : ScannedPage(kColorBits);
}

void OnOneThread(benchmark::internal::Benchmark* bench) {
    bench->ArgName("threads")->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
}

BENCHMARK(FloorCopyPage<kColorBits>)->Apply(OnOneThread);

template <PageKind kKind>
void CountPage(benchmark::State& state) {
    const CDibImage page = PageOf(kKind);
    Measure(state, page, [&] { benchmark::DoNotOptimize(CountColors(page)); });
}
BENCHMARK(CountPage<kScanned>)->Apply(OnOneThread);
BENCHMARK(CountPage<kNoise>)->Apply(OnOneThread);

template <Palette (*kMaker)(const CDibImage&, int), int kColors, PageKind kKind>
void Make(benchmark::State& state) {
    const CDibImage page = PageOf(kKind);
    Measure(state, page, [&] { benchmark::DoNotOptimize(kMaker(page, kColors)); });
}
BENCHMARK(Make<OctreePalette, 256, kScanned>)->Apply(OnOneThread);
BENCHMARK(Make<OctreePalette, 256, kNoise>)->Apply(OnOneThread);
BENCHMARK(Make<MedianCutPalette, 256, kScanned>)->Apply(OnOneThread);
BENCHMARK(Make<MedianCutPalette, 256, kNoise>)->Apply(OnOneThread);
BENCHMARK(Make<WuPalette, 256, kScanned>)->Apply(OnOneThread);
BENCHMARK(Make<WuPalette, 256, kNoise>)->Apply(OnOneThread);

// The network looks at each pixel against all entries: a small page tells as much.
constexpr int kNetworkSide = 200;

void MakeNeural(benchmark::State& state) {
    const CDibImage page = ScannedPage(kColorBits, kNetworkSide, kNetworkSide);
    Measure(state, page, [&] { benchmark::DoNotOptimize(NeuralPalette(page, 256)); });
}
BENCHMARK(MakeNeural)->Apply(OnOneThread);

void FloorPlainNetwork(benchmark::State& state) {
    const CDibImage page = ScannedPage(kColorBits, kNetworkSide, kNetworkSide);
    Measure(state, page, [&] {
        PlainNetwork network(256);
        network.Learn(page);
        benchmark::DoNotOptimize(network.Value(0));
    });
}
BENCHMARK(FloorPlainNetwork)->Apply(OnOneThread);

template <PageKind kKind>
void PackNearest256(benchmark::State& state) {
    const CDibImage page = PageOf(kKind);
    const Palette palette = OctreePalette(page, 256);
    MeasureOnNew(state, page, [&](CDibImage& image) { PackNearest(image, 8, palette); });
}
BENCHMARK(PackNearest256<kScanned>)->Apply(OnOneThread);
BENCHMARK(PackNearest256<kNoise>)->Apply(OnOneThread);

template <PageKind kKind>
void Diffuse16(benchmark::State& state) {
    const CDibImage page = PageOf(kKind);
    const Palette palette = OctreePalette(page, 16);
    MeasureOnNew(state, page,
                 [&](CDibImage& image) { DiffusePalette(image, palette, /*keepDepth=*/false); });
}
BENCHMARK(Diffuse16<kScanned>)->Apply(OnOneThread);
BENCHMARK(Diffuse16<kNoise>)->Apply(OnOneThread);

/// The whole step, as the pipeline calls it; noise takes the most memory.
template <int kColor, int kMaker, bool kDither>
void ReduceNoise(benchmark::State& state) {
    MeasureOnNew(state, NoisePage(kColorBits), [](CDibImage& image) {
        DecreaseBppRequest request;
        request.color = kColor;
        request.quantize = kMaker;
        request.dither = kDither ? 1 : 0;
        DecreaseBpp(image, /*previewing=*/false, request);
    });
}
BENCHMARK(ReduceNoise<3, 0, false>)->Apply(OnOneThread);
BENCHMARK(ReduceNoise<3, 1, false>)->Apply(OnOneThread);
BENCHMARK(ReduceNoise<3, 2, false>)->Apply(OnOneThread);
BENCHMARK(ReduceNoise<3, 3, false>)->Apply(OnOneThread);
BENCHMARK(ReduceNoise<3, 4, false>)->Apply(OnOneThread);
BENCHMARK(ReduceNoise<11, 2, true>)->Apply(OnOneThread);
BENCHMARK(ReduceNoise<7, 2, false>)->Apply(OnOneThread);
BENCHMARK(ReduceNoise<7, 2, true>)->Apply(OnOneThread);

}  // namespace
}  // namespace velloran::bench

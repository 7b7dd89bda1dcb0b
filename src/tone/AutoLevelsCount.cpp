#include "tone/AutoLevelsCount.h"

#include <algorithm>
#include <cstddef>

#include "tone/AutoLevelsLuma.h"
#include "tone/PixelMapRows.h"

namespace velloran {
namespace {

// Neighbours on a page are often equal, and counting twice on end in one cell makes the processor
// wait for its own store. Neighbours therefore count in different lanes.
constexpr std::size_t kLanes = 4;
using LaneHistogram = std::array<Histogram, kLanes>;

constexpr std::size_t kStretch = 512;  // pixels whose luma is worked out at a time

void CountSamples(std::span<const std::uint8_t> samples, LaneHistogram& lanes) {
    std::size_t i = 0;
    for (; i + kLanes <= samples.size(); i += kLanes)
        for (std::size_t k = 0; k < kLanes; ++k)
            ++lanes[k][samples[i + k]];
    for (; i < samples.size(); ++i)
        ++lanes[0][samples[i]];
}

/// Adds the pixels to the first three histograms.
template <std::size_t N>
void CountPixels(std::span<const std::uint8_t> samples, std::array<LaneHistogram, N>& channels) {
    std::size_t i = 0;
    for (; i + 3 * kLanes <= samples.size(); i += 3 * kLanes)
        for (std::size_t k = 0; k < kLanes; ++k)
            for (std::size_t c = 0; c < 3; ++c)
                ++channels[c][k][samples[i + 3 * k + c]];
    for (; i < samples.size(); i += 3)
        for (std::size_t c = 0; c < 3; ++c)
            ++channels[c][0][samples[i + c]];
}

void CountLumaOf(std::span<const std::uint8_t> samples, LaneHistogram& lanes) {
    std::array<std::uint8_t, kStretch> luma;
    const std::size_t count = samples.size() / 3;
    BestLumaWay().run(samples.data(), count, luma.data());
    CountSamples({luma.data(), count}, lanes);
}

/// Calls `count(stretch, lanes)` for stretches of at most kStretch pixels and sums up the lanes.
template <std::size_t N, typename Count>
std::array<Histogram, N> CountRows(ConstPlaneView pixels, Count count) {
    std::array<Histogram, N> total{};
    const std::size_t step = kStretch * static_cast<std::size_t>(pixels.channels);
#pragma omp parallel if (IsWorthThreads(pixels))
    {
        std::array<LaneHistogram, N> own{};
#pragma omp for schedule(static) nowait
        for (int y = 0; y < pixels.height; ++y)
            for (std::span<const std::uint8_t> rest = pixels.Row(y); !rest.empty();) {
                const std::size_t length = std::min(step, rest.size());
                count(rest.first(length), own);
                rest = rest.subspan(length);
            }
#pragma omp critical(velloran_histograms)
        for (std::size_t n = 0; n < N; ++n)
            for (const Histogram& lane : own[n])
                for (std::size_t level = 0; level < lane.size(); ++level)
                    total[n][level] += lane[level];
    }
    return total;
}

}  // namespace

Histogram CountBytes(ConstPlaneView pixels) {
    return CountRows<1>(pixels,
                        [](auto stretch, auto& lanes) { CountSamples(stretch, lanes[0]); })[0];
}

std::array<Histogram, 3> CountChannels(ConstPlaneView pixels) {
    return CountRows<3>(pixels, [](auto stretch, auto& lanes) { CountPixels(stretch, lanes); });
}

Histogram CountLuma(ConstPlaneView pixels) {
    return CountRows<1>(pixels,
                        [](auto stretch, auto& lanes) { CountLumaOf(stretch, lanes[0]); })[0];
}

std::array<Histogram, 4> CountChannelsAndLuma(ConstPlaneView pixels) {
    return CountRows<4>(pixels, [](auto stretch, auto& lanes) {
        CountPixels(stretch, lanes);
        CountLumaOf(stretch, lanes[3]);
    });
}

}  // namespace velloran

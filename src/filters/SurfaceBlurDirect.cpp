#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "core/DibImage.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "filters/SurfaceBlurForms.h"
#include "imaging/BorderedCopy.h"

// What is asked for is a quotient of two sums of floats. Their exact values, scaled by 5 *
// threshold, are sums of small integers, and those are quick: with T = 5 * threshold a neighbour
// that differs by e weighs max(0, T - 2 * |e|). The float sums of at most 121 terms stray from them
// by less than kTieMargin, so that only samples whose exact quotient lies that near to the middle
// between two levels are summed again in floats.
//
// The margin: a float weight is off by at most 2 * 2^-24, which moves the quotient by at most
// 120 * 2 * 125 * 2^-24 < 0.0018; the two sums and the division round 243 times by at most
// 255 * 2^-24, which is below 0.0038.

#ifndef VELLORAN_DIRECT_BLOCK  // the rest of the file is read once for each form
#define VELLORAN_DIRECT_BLOCK
namespace velloran {
namespace {

constexpr int kBlock = 64;  // samples that are summed side by side

}  // namespace
}  // namespace velloran
#endif

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "filters/SurfaceBlurDirect.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

constexpr float kTieMargin = 1.0F / 160;

/// A window in the bordered copy: its first sample, the bytes from row to row and from pixel to
/// pixel.
struct Window {
    const std::uint8_t* first;
    std::ptrdiff_t stride;
    int step, radius;

    const std::uint8_t* Center() const { return first + radius * (stride + step); }
};

/// The sums in floats, row by row; the order of the additions is part of the result.
std::uint8_t SumInFloats(const Window& window, const float* weights) {
    const int center = *window.Center(), side = 2 * window.radius + 1;
    float weightSum = 0, sampleSum = 0;
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            const int sample = window.first[y * window.stride + x * window.step];
            const float weight = weights[std::abs(sample - center)];
            weightSum += weight;
            sampleSum += static_cast<float>(sample) * weight;
        }
    return static_cast<std::uint8_t>(static_cast<double>(sampleSum / weightSum) + 0.5);
}

/// Of each sample of a block: its level, the sum of the weights, and the sum of the weighted
/// differences from it.
struct BlockSums {
    alignas(32) std::int16_t center[kBlock];
    alignas(32) std::int16_t weight[kBlock];  // at most 121 * 250
    alignas(32) std::int32_t moment[kBlock];
};

/// Adds kTaps neighbours in a row. A weight times its difference is at most 126 * 62, and four of
/// them fit 16 bits.
template <int kTaps>
HWY_INLINE void AddTaps(const std::uint8_t* samples, int step, std::int16_t reach,
                        BlockSums& sums) {
    static_assert(kTaps <= 4);
    for (int i = 0; i < kBlock; ++i) {
        std::int16_t weightSum = 0, momentSum = 0;
        for (int tap = 0; tap < kTaps; ++tap) {
            const auto difference =
                static_cast<std::int16_t>(samples[tap * step + i] - sums.center[i]);
            const auto distance =
                static_cast<std::int16_t>(difference < 0 ? -difference : difference);
            const auto slope = static_cast<std::int16_t>(reach - 2 * distance);
            const std::int16_t weight = slope > 0 ? slope : std::int16_t{0};
            weightSum = static_cast<std::int16_t>(weightSum + weight);
            momentSum = static_cast<std::int16_t>(momentSum + weight * difference);
        }
        sums.weight[i] = static_cast<std::int16_t>(sums.weight[i] + weightSum);
        sums.moment[i] += momentSum;
    }
}

/// Levels of a block of samples, and 1 where the exact quotient is too near to a tie.
struct BlockLevels {
    alignas(32) std::uint8_t level[kBlock];
    alignas(32) std::uint8_t isNearTie[kBlock];
};

void BlurBlock(const Window& window, int threshold, BlockLevels& out) {
    BlockSums sums{};
    const std::uint8_t* center = window.Center();
    const int step = window.step, side = 2 * window.radius + 1;
    const auto reach = static_cast<std::int16_t>(5 * threshold);
    for (int i = 0; i < kBlock; ++i)
        sums.center[i] = center[i];
    for (int y = 0; y < side; ++y) {
        const std::uint8_t* row = window.first + y * window.stride;
        int x = 0;
        for (; x + 4 <= side; x += 4)
            AddTaps<4>(row + x * step, step, reach, sums);
        if (side - x == 3)
            AddTaps<3>(row + x * step, step, reach, sums);
        else
            AddTaps<1>(row + x * step, step, reach, sums);
    }
    for (int i = 0; i < kBlock; ++i) {
        const float shift = static_cast<float>(sums.moment[i]) / static_cast<float>(sums.weight[i]);
        const int nearest = static_cast<int>(shift + 128.5F) - 128;  // shift is above -125
        const float rest = std::fabs(shift - static_cast<float>(nearest));
        out.level[i] = static_cast<std::uint8_t>(sums.center[i] + nearest);
        out.isNearTie[i] = rest > 0.5F - kTieMargin ? 1 : 0;
    }
}

/// `first` is the first sample of the first window.
void BlurRow(const std::uint8_t* first, std::ptrdiff_t stride, int step, int radius, int threshold,
             const float* weights, std::span<std::uint8_t> target) {
    BlockLevels levels;
    Window window{first, stride, step, radius};
    const auto count = static_cast<std::ptrdiff_t>(target.size());
    for (std::ptrdiff_t at = 0; at < count; at += kBlock) {
        window.first = first + at;
        BlurBlock(window, threshold, levels);
        const auto length = static_cast<int>(std::min<std::ptrdiff_t>(kBlock, count - at));
        for (int i = 0; i < length; ++i)
            if (levels.isNearTie[i] != 0) {
                window.first = first + at + i;
                levels.level[i] = SumInFloats(window, weights);
            }
        std::memcpy(target.data() + at, levels.level, static_cast<std::size_t>(length));
    }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(BlurRow);

/// Weights of differences 0..255.
using WeightTable = std::array<float, 256>;

WeightTable MakeWeights(int threshold) {
    WeightTable weights{};
    const auto end = static_cast<float>(threshold * 2.5);
    for (int k = 0; k < 256; ++k) {
        const float weight = 1.0F - static_cast<float>(k) / end;
        if (weight < 0.0F)
            break;
        weights[static_cast<std::size_t>(k)] = weight;
    }
    return weights;
}

}  // namespace

void BlurDirect(CDibImage& image, int radius, int threshold, int times) {
    const WeightTable weights = MakeWeights(threshold);
    const PlaneView pixels = ViewOf(image);
    // The last block of a row may reach past the row.
    const BorderWidths border{radius, radius, radius + kBlock, radius};
    [[maybe_unused]] const bool isWorthThreads = IsWorthThreads(pixels);
    const CancelToken cancel = CurrentCancel();
    for (int pass = 0; pass < times && !cancel.IsCancelled(); ++pass) {
        const BorderedCopy copy(pixels, border);
        const ConstPlaneView source = copy.View();
#pragma omp parallel for schedule(static) if (isWorthThreads)
        for (int y = 0; y < pixels.height; ++y) {
            if (cancel.IsCancelled())
                continue;
            HWY_DYNAMIC_DISPATCH(BlurRow)
            (source.Row(y).data(), source.stride, source.channels, radius, threshold,
             weights.data(), pixels.Row(y));
        }
    }
}

}  // namespace velloran
#endif  // HWY_ONCE

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "core/DibImage.h"
#include "core/ExactMath.h"
#include "core/PixelMemory.h"
#include "core/Rounding.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "filters/SurfaceBlurForms.h"

#ifndef VELLORAN_GAUSSIAN_BLOCK  // the rest of the file is read once for each form
#define VELLORAN_GAUSSIAN_BLOCK
namespace velloran {
namespace {

constexpr int kBlock = 256;  // samples that are summed side by side

}  // namespace
}  // namespace velloran
#endif

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "filters/SurfaceBlurGaussian.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

/// Of each sample of a block: its level, the sum of the accepted taps, and the sum of their
/// differences from it, weighted.
struct BlockSums {
    alignas(32) std::int16_t center[kBlock];
    alignas(32) std::int16_t taps[kBlock];
    alignas(32) std::int32_t moment[kBlock];
};

template <typename Sample>
HWY_INLINE void StartBlock(const Sample* samples, BlockSums& sums) {
    for (int i = 0; i < kBlock; ++i) {
        sums.center[i] = samples[i];
        sums.taps[i] = 0;
        sums.moment[i] = 0;
    }
}

template <typename Sample>
HWY_INLINE void AddTap(const Sample* samples, std::int16_t tap, std::int16_t threshold,
                       BlockSums& sums) {
    for (int i = 0; i < kBlock; ++i) {
        const auto difference = static_cast<std::int16_t>(samples[i] - sums.center[i]);
        const auto distance = static_cast<std::int16_t>(difference < 0 ? -difference : difference);
        const bool isAccepted = distance <= threshold;
        const std::int16_t accepted = isAccepted ? difference : std::int16_t{0};
        sums.taps[i] =
            static_cast<std::int16_t>(sums.taps[i] + (isAccepted ? tap : std::int16_t{0}));
        sums.moment[i] += static_cast<std::int16_t>(tap * accepted);
    }
}

/// (S + N / 2) / N with S = center * N + moment. S stays below 2^20 and N below 2^12, so that the
/// truncated float quotient is exact.
HWY_INLINE void FinishBlock(const BlockSums& sums, std::uint8_t* out) {
    for (int i = 0; i < kBlock; ++i) {
        const std::int32_t taps = sums.taps[i];
        const std::int32_t sum = sums.center[i] * taps + sums.moment[i] + taps / 2;
        out[i] = static_cast<std::uint8_t>(
            static_cast<int>(static_cast<float>(sum) / static_cast<float>(taps)));
    }
}

/// `row` has (radius - 1) * step samples before it and behind its last block; `count` is a multiple
/// of the block.
void BlurAlongRow(const std::int16_t* row, std::ptrdiff_t count, int step, const std::int16_t* taps,
                  int radius, int threshold, std::uint8_t* out) {
    for (std::ptrdiff_t at = 0; at < count; at += kBlock) {
        BlockSums sums;
        StartBlock(row + at, sums);
        for (int j = 1 - radius; j < radius; ++j)
            AddTap(row + at + static_cast<std::ptrdiff_t>(j) * step, taps[std::abs(j)],
                   static_cast<std::int16_t>(threshold), sums);
        FinishBlock(sums, out + at);
    }
}

/// Rows `first` to `last` around the one of `row` exist.
void BlurAlongColumn(const std::uint8_t* row, std::ptrdiff_t stride, int first, int last,
                     const std::int16_t* taps, int threshold, std::span<std::uint8_t> target) {
    const auto count = static_cast<std::ptrdiff_t>(target.size());
    for (std::ptrdiff_t at = 0; at < count; at += kBlock) {
        BlockSums sums;
        StartBlock(row + at, sums);
        for (int j = first; j <= last; ++j)
            AddTap(row + at + j * stride, taps[std::abs(j)], static_cast<std::int16_t>(threshold),
                   sums);
        std::uint8_t block[kBlock];
        FinishBlock(sums, block);
        std::memcpy(target.data() + at, block,
                    static_cast<std::size_t>(std::min<std::ptrdiff_t>(kBlock, count - at)));
    }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(BlurAlongRow);
HWY_EXPORT(BlurAlongColumn);

constexpr int kMaxRadius = 15;
/// Stands beyond the ends of a row: farther from every level than any threshold.
constexpr std::int16_t kNoSample = 1000;

/// Taps for offsets 0..radius - 1; those of the other side are the same. Off the centre none passes
/// 495, so that a tap times an accepted difference (at most 50) fits 16 bits.
using HalfKernel = std::array<std::int16_t, kMaxRadius>;

HalfKernel MakeHalfKernel(int radius) {
    HalfKernel taps{};
    const double sigma = radius / 3.0, d = (sigma + sigma) * sigma;
    const double height = 1.0 / std::sqrt(d * 3.1415924);  // the constant belongs to the result
    for (int j = 0; j < radius; ++j) {
        const int tap = TruncToInt(Exp(-static_cast<double>(j * j) / d) * height * 2048.0);
        assert(j == 0 || tap <= 495);
        taps[static_cast<std::size_t>(j)] = static_cast<std::int16_t>(tap);
    }
    return taps;
}

/// The rows between the two stages, and the row that each thread lays out with its ends.
struct Scratch {
    PixelBuffer memory;
    std::ptrdiff_t stride;  // whole blocks
    std::vector<std::vector<std::int16_t>> rows;

    Scratch(ConstPlaneView pixels, int radius) {
        const std::ptrdiff_t count = static_cast<std::ptrdiff_t>(pixels.width) * pixels.channels;
        stride = (count + kBlock - 1) / kBlock * kBlock;
        memory = MakePixelBuffer(static_cast<std::size_t>(stride) *
                                 static_cast<std::size_t>(pixels.height));
        const std::ptrdiff_t ends = std::ptrdiff_t{2} * (radius - 1) * pixels.channels;
        rows.assign(static_cast<std::size_t>(MaxThreads()),
                    std::vector<std::int16_t>(static_cast<std::size_t>(stride + ends), kNoSample));
    }

    std::uint8_t* Row(int y) const { return memory.get() + y * stride; }
};

void BlurRows(ConstPlaneView pixels, const HalfKernel& kernel, int radius, int threshold,
              Scratch& scratch) {
    const std::ptrdiff_t lead = static_cast<std::ptrdiff_t>(radius - 1) * pixels.channels;
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(pixels))
    for (int y = 0; y < pixels.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        std::int16_t* row = scratch.rows[static_cast<std::size_t>(ThreadNumber())].data() + lead;
        const std::span<const std::uint8_t> samples = pixels.Row(y);
        std::copy(samples.begin(), samples.end(), row);
        HWY_DYNAMIC_DISPATCH(BlurAlongRow)
        (row, scratch.stride, pixels.channels, kernel.data(), radius, threshold, scratch.Row(y));
    }
}

void BlurColumns(const Scratch& scratch, const HalfKernel& kernel, int radius, int threshold,
                 PlaneView pixels) {
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(pixels))
    for (int y = 0; y < pixels.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        const std::span<std::uint8_t> target = pixels.Row(y);
        const int first = std::max(1 - radius, -y);
        const int last = std::min(radius - 1, pixels.height - 1 - y);
        HWY_DYNAMIC_DISPATCH(BlurAlongColumn)
        (scratch.Row(y), scratch.stride, first, last, kernel.data(), threshold, target);
    }
}

}  // namespace

void BlurSelectiveGaussian(CDibImage& image, int radius, int threshold, int times) {
    const HalfKernel kernel = MakeHalfKernel(radius);
    const PlaneView pixels = ViewOf(image);
    Scratch scratch(pixels, radius);
    for (int pass = 0; pass < times; ++pass) {
        BlurRows(pixels, kernel, radius, threshold, scratch);
        BlurColumns(scratch, kernel, radius, threshold, pixels);
    }
}

}  // namespace velloran
#endif  // HWY_ONCE

#include "imaging/Resize.h"

#include <algorithm>
#include <cstring>
#include <type_traits>
#include <vector>

#include "core/StepContext.h"
#include "core/Threads.h"
#include "imaging/ResampleAxis.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/Resize.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

/// sums += weight * row.
void AddWeightedBytes(const std::uint8_t* row, float weight, int count, float* sums) {
    for (int i = 0; i < count; ++i)
        sums[i] += weight * static_cast<float>(row[i]);
}

void AddWeightedFloats(const float* row, float weight, int count, float* sums) {
    for (int i = 0; i < count; ++i)
        sums[i] += weight * row[i];
}

void StoreBytes(const float* row, int count, std::uint8_t* out) {
    for (int i = 0; i < count; ++i) {
        const float value = row[i] + 0.5F;
        const float limited = value < 0.0F ? 0.0F : (value > 255.0F ? 255.0F : value);
        out[i] = static_cast<std::uint8_t>(static_cast<int>(limited));
    }
}

/// Means of 2 x 2 samples from each place on; every second pixel of them is wanted.
void MeansOfFour(const std::uint8_t* upper, const std::uint8_t* lower, int step, int count,
                 std::uint8_t* means) {
    for (int i = 0; i < count; ++i)
        means[i] = static_cast<std::uint8_t>(
            (upper[i] + upper[i + step] + lower[i] + lower[i + step] + 2) >> 2);
}

void TakeEvenSamples(const std::uint8_t* samples, int count, std::uint8_t* out) {
    for (int i = 0; i < count; ++i)
        out[i] = samples[2 * i];
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(AddWeightedBytes);
HWY_EXPORT(AddWeightedFloats);
HWY_EXPORT(StoreBytes);
HWY_EXPORT(MeansOfFour);
HWY_EXPORT(TakeEvenSamples);

void AddWeighted(const std::uint8_t* row, float weight, int count, float* sums) {
    HWY_DYNAMIC_DISPATCH(AddWeightedBytes)(row, weight, count, sums);
}

void AddWeighted(const float* row, float weight, int count, float* sums) {
    HWY_DYNAMIC_DISPATCH(AddWeightedFloats)(row, weight, count, sums);
}

/// A column-weighted row along the rows.
template <int kChannels>
void AlongRow(const float* row, const ResampleAxis& axis, int width, float* out) {
    for (int x = 0; x < width; ++x, out += kChannels) {
        const float* from =
            row + static_cast<std::ptrdiff_t>(axis.first[static_cast<std::size_t>(x)]) * kChannels;
        const float* weight = axis.WeightsOf(x);
        float sum[kChannels] = {};
        for (int k = 0; k < axis.taps; ++k, from += kChannels)
            for (int c = 0; c < kChannels; ++c)
                sum[c] += weight[k] * from[c];
        for (int c = 0; c < kChannels; ++c)
            out[c] = sum[c];
    }
}

void StoreRow(const float* row, int count, std::uint8_t* out) {
    HWY_DYNAMIC_DISPATCH(StoreBytes)(row, count, out);
}

void StoreRow(const float* row, int count, float* out) {
    std::copy_n(row, count, out);
}

struct RowScratch {
    std::vector<float> source, target;
};

/// Down the columns into one row of floats, then along it.
template <typename Source, typename Target>
void Resample(Source source, const ResampleAxis& across, const ResampleAxis& down, Target target) {
    const int channels = source.channels;
    const int sourceCount = source.width * channels, targetCount = target.width * channels;
    std::vector<RowScratch> perThread(
        static_cast<std::size_t>(MaxThreads()),
        RowScratch{std::vector<float>(static_cast<std::size_t>(sourceCount)),
                   std::vector<float>(static_cast<std::size_t>(targetCount))});
    const std::int64_t samples = std::int64_t{sourceCount} * source.height;
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(samples))
    for (int y = 0; y < target.height; ++y) {
        if (cancel.IsCancelled()) {
            if constexpr (std::is_same_v<Target, FloatView>)  // no value that a cast trips over
                std::ranges::fill(target.Row(y), 0.0F);
            continue;
        }
        RowScratch& rows = perThread[static_cast<std::size_t>(ThreadNumber())];
        std::fill(rows.source.begin(), rows.source.end(), 0.0F);
        for (int k = 0; k < down.taps; ++k)
            if (const float weight = down.WeightsOf(y)[k]; weight != 0)
                AddWeighted(source.Row(down.first[static_cast<std::size_t>(y)] + k).data(), weight,
                            sourceCount, rows.source.data());
        if (channels == 3)
            AlongRow<3>(rows.source.data(), across, target.width, rows.target.data());
        else
            AlongRow<1>(rows.source.data(), across, target.width, rows.target.data());
        StoreRow(rows.target.data(), targetCount, target.Row(y).data());
    }
}

template <typename Source, typename Target>
void ResampleBy(ResampleAxis (*axisOf)(int, int), Source source, Target target) {
    if (source.width < 1 || source.height < 1 || target.width < 1 || target.height < 1)
        return;
    Resample(source, axisOf(source.width, target.width), axisOf(source.height, target.height),
             target);
}

/// `samples` and `out` leave room for a byte behind the last pixel of each.
void TakeEvenPixels(const std::uint8_t* samples, int count, std::uint8_t* out) {
    for (int i = 0; i + 1 < count; ++i, samples += 6, out += 3)
        std::memcpy(out, samples, 4);  // the byte too many is written over by the next
    std::memcpy(out, samples, 3);
}

/// The same as the general way, whose weights are then all 1/4 and its sums exact.
void Halve(ConstPlaneView source, PlaneView target) {
    const int channels = source.channels, count = source.width * channels;
    std::vector<std::vector<std::uint8_t>> perThread(
        static_cast<std::size_t>(MaxThreads()),
        std::vector<std::uint8_t>(static_cast<std::size_t>(count)));
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(std::int64_t{count} * source.height))
    for (int y = 0; y < target.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        std::uint8_t* means = perThread[static_cast<std::size_t>(ThreadNumber())].data();
        HWY_DYNAMIC_DISPATCH(MeansOfFour)
        (source.Row(2 * y).data(), source.Row(2 * y + 1).data(), channels, count - channels, means);
        std::uint8_t* out = target.Row(y).data();
        if (channels == 3)
            TakeEvenPixels(means, target.width, out);
        else
            HWY_DYNAMIC_DISPATCH(TakeEvenSamples)(means, target.width, out);
    }
}

}  // namespace

void ResizeLanczos(ConstPlaneView source, PlaneView target) {
    ResampleBy(LanczosAxis, source, target);
}

void ResizeArea(ConstPlaneView source, PlaneView target) {
    if (target.width > 0 && target.height > 0 && source.width % 2 == 0 && source.height % 2 == 0 &&
        source.width / 2 == target.width && source.height / 2 == target.height)
        Halve(source, target);
    else
        ResampleBy(AreaAxis, source, target);
}

void ResizeArea(ConstFloatView source, FloatView target) {
    ResampleBy(AreaAxis, source, target);
}

void ResizeArea(ConstPlaneView source, FloatView target) {
    ResampleBy(AreaAxis, source, target);
}

void ResizeLinear(ConstPlaneView source, PlaneView target) {
    ResampleBy(LinearAxis, source, target);
}

void ResizeLinear(ConstFloatView source, FloatView target) {
    ResampleBy(LinearAxis, source, target);
}

}  // namespace velloran
#endif  // HWY_ONCE

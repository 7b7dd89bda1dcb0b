#include "filters/AdjustSharpen.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "core/DibImage.h"
#include "core/ExactMath.h"
#include "core/GrayDepth.h"
#include "core/PixelMemory.h"
#include "core/Refusal.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "imaging/BorderedCopy.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "filters/AdjustSharpen.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

constexpr int kBlock = 256;  // samples that are summed side by side

/// Weighted sums of the columns around a row; `stride` bytes from a row to the next.
void SumColumns(const std::uint8_t* center, std::ptrdiff_t stride, const float* taps, int reach,
                int count, float* sums) {
    for (int at = 0; at < count; at += kBlock) {
        const int length = std::min(kBlock, count - at);
        const std::uint8_t* row = center + at;
        float* out = sums + at;
        for (int i = 0; i < length; ++i)
            out[i] = static_cast<float>(row[i]);
        for (int j = 1; j <= reach; ++j) {
            const std::uint8_t *above = row - j * stride, *below = row + j * stride;
            const float tap = taps[j];
            for (int i = 0; i < length; ++i)
                out[i] += tap * static_cast<float>(above[i] + below[i]);
        }
    }
}

/// Along the row, `step` samples from a pixel to the next, and the difference from the centre.
void FinishRow(const float* sums, int step, const std::uint8_t* center, const float* taps,
               int reach, float gain, int count, std::uint8_t* out) {
    float total[kBlock];
    for (int at = 0; at < count; at += kBlock) {
        const int length = std::min(kBlock, count - at);
        const float* row = sums + at;
        for (int i = 0; i < length; ++i)
            total[i] = row[i];
        for (int j = 1; j <= reach; ++j) {
            const float *before = row - j * step, *behind = row + j * step;
            const float tap = taps[j];
            for (int i = 0; i < length; ++i)
                total[i] += tap * (before[i] + behind[i]);
        }
        for (int i = 0; i < length; ++i) {
            const float value = static_cast<float>(center[at + i]) * gain - total[i] + 0.5F;
            const float low = value < 0.0F ? 0.0F : value;
            const float limited = low > 255.0F ? 255.0F : low;
            out[at + i] = static_cast<std::uint8_t>(static_cast<int>(limited));
        }
    }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(SumColumns);
HWY_EXPORT(FinishRow);

constexpr int kMinSize = 7, kMaxSize = 25;
struct SizeOfStrength {
    int maxPercent, size;
};
constexpr SizeOfStrength kSizes[] = {{1, 3},   {4, 5},   {6, 7},   {8, 9},   {10, 11}, {12, 13},
                                     {15, 15}, {18, 17}, {20, 19}, {23, 21}, {25, 23}};

/// The Gaussian part of the kernel is the product of one row and one column of `taps`.
struct HighPass {
    int reach;                                   // (size - 1) / 2
    std::array<float, kMaxSize / 2 + 1> taps{};  // for distances 0..reach; the first is 1
    float gain;  // of the centre, its place in the Gaussian included
};

HighPass MakeHighPass(float sigma, int size) {
    std::array<float, kMaxSize * kMaxSize> kernel;
    const std::size_t count = static_cast<std::size_t>(size) * static_cast<std::size_t>(size);
    MakeSharpenKernel(sigma, size, std::span(kernel).first(count));
    HighPass filter{};
    filter.reach = size / 2;
    for (int i = 0; i <= filter.reach; ++i)
        filter.taps[static_cast<std::size_t>(i)] =
            Exp(-static_cast<float>(i * i) / (2.0F * sigma * sigma));
    filter.gain = kernel[count / 2] + 1.0F;
    return filter;
}

/// A row for each thread.
template <typename Value>
using Lines = std::vector<std::vector<Value>>;

template <typename Value>
Lines<Value> MakeLines(int length) {
    return Lines<Value>(static_cast<std::size_t>(MaxThreads()),
                        std::vector<Value>(static_cast<std::size_t>(length)));
}

/// `source` has a border of `reach` pixels.
void SharpenRow(ConstPlaneView source, int y, const HighPass& filter, float* sums,
                std::span<std::uint8_t> out) {
    const int lead = filter.reach * source.channels;
    const std::uint8_t* row = source.Row(y + filter.reach).data();
    HWY_DYNAMIC_DISPATCH(SumColumns)
    (row, source.stride, filter.taps.data(), filter.reach, source.width * source.channels, sums);
    HWY_DYNAMIC_DISPATCH(FinishRow)
    (sums + lead, source.channels, row + lead, filter.taps.data(), filter.reach, filter.gain,
     static_cast<int>(out.size()), out.data());
}

void SharpenWhole(PlaneView pixels, const HighPass& filter) {
    const BorderedCopy copy(pixels, filter.reach);
    const ConstPlaneView source = copy.View();
    Lines<float> sums = MakeLines<float>(source.width * source.channels);
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(pixels))
    for (int y = 0; y < pixels.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        SharpenRow(source, y, filter, sums[static_cast<std::size_t>(ThreadNumber())].data(),
                   pixels.Row(y));
    }
}

/// A channel with its border, laid out in `plane`.
void LayOutChannel(ConstPlaneView pixels, int channel, int border, PlaneView plane) {
    const ConstChannelView samples = pixels.Channel(channel);
#pragma omp parallel for schedule(static) if (IsWorthThreads(pixels))
    for (int y = 0; y < plane.height; ++y) {
        const auto from = samples.Row(std::clamp(y - border, 0, pixels.height - 1));
        std::uint8_t* out = plane.Row(y).data();
        for (int x = 0; x < plane.width; ++x)
            out[x] = from[std::clamp(x - border, 0, pixels.width - 1)];
    }
}

/// The same pixels with a third of the memory. All of it is there before the first one changes.
void SharpenByChannel(PlaneView pixels, const HighPass& filter) {
    const int width = pixels.width + 2 * filter.reach, height = pixels.height + 2 * filter.reach;
    const PixelBuffer memory =
        MakePixelBuffer(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    const PlaneView plane{memory.get(), width, height, 1, width};
    Lines<float> sums = MakeLines<float>(width);
    Lines<std::uint8_t> lines = MakeLines<std::uint8_t>(pixels.width);
    const CancelToken cancel = CurrentCancel();
    for (int channel = 0; channel < 3; ++channel) {
        LayOutChannel(pixels, channel, filter.reach, plane);
#pragma omp parallel for schedule(static) if (IsWorthThreads(pixels))
        for (int y = 0; y < pixels.height; ++y) {
            if (cancel.IsCancelled())
                continue;
            const auto thread = static_cast<std::size_t>(ThreadNumber());
            SharpenRow(plane, y, filter, sums[thread].data(), lines[thread]);
            const auto out = pixels.Channel(channel).Row(y);
            for (int x = 0; x < pixels.width; ++x)
                out[x] = lines[thread][static_cast<std::size_t>(x)];
        }
    }
}

}  // namespace

int SharpenKernelSize(int percent) {
    for (const SizeOfStrength& row : kSizes)
        if (percent <= row.maxPercent)
            return row.size;
    return kMaxSize;
}

int MakeSharpenKernel(float sigma, int size, std::span<float> kernel) {
    if (!(sigma > 0.0F) || size < 1 || size % 2 == 0 ||
        kernel.size() != static_cast<std::uint64_t>(size) * static_cast<std::uint64_t>(size))
        return 0;
    const int reach = size / 2;
    float sum = 0.0F;
    auto entry = kernel.begin();
    for (int y = -reach; y <= reach; ++y)
        for (int x = -reach; x <= reach; ++x, ++entry) {
            const float squares = static_cast<float>(x) * static_cast<float>(x) +
                                  static_cast<float>(y) * static_cast<float>(y);
            const float weight = Exp(-squares / (2.0F * sigma * sigma));
            sum += weight;
            *entry = -weight;
        }
    float& center = kernel[kernel.size() / 2];
    center = sum + center + 1.0F;
    return 1;
}

int AdjustSharpen(CDibImage& image, int percent, int size) {
    if (!image.IsValid() || size < kMinSize || size > kMaxSize || size >= image.GetWidth() ||
        size >= image.GetHeight() || percent < 1 || EnsureGrayOrRgb(image) == 0)
        return 0;
    const int side = (std::min(SharpenKernelSize(percent), size) - 1) | 1;
    const auto sigma = static_cast<float>((static_cast<double>(percent) + 3) / 10.0);
    const HighPass filter = MakeHighPass(sigma, side);
    const PlaneView pixels = ViewOf(image);
    const auto whole = [&] {
        SharpenWhole(pixels, filter);
        return 1;
    };
    if (pixels.channels != 3)
        return RefuseWhenOutOfMemory(whole);
    if (TryWithinMemory(whole) != 0)
        return 1;
    return RefuseWhenOutOfMemory([&] {
        SharpenByChannel(pixels, filter);
        return 1;
    });
}

}  // namespace velloran
#endif  // HWY_ONCE

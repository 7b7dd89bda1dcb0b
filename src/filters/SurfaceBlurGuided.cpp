#include <algorithm>
#include <atomic>
#include <cstdint>
#include <new>
#include <vector>

#include "core/DibImage.h"
#include "core/PixelMemory.h"
#include "core/Refusal.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "filters/SurfaceBlurForms.h"
#include "imaging/BoxMean.h"
#include "imaging/Planes.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "filters/SurfaceBlurGuided.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

/// Halves away from zero, saturated; the fraction is exact where adding 0.5 would round. Values are
/// means of samples and stay near 0..255.
void RoundRow(const float* values, int count, std::uint8_t* out) {
    for (int i = 0; i < count; ++i) {
        const int whole = static_cast<int>(values[i]);
        const int nearest =
            whole + static_cast<int>(2.0F * (values[i] - static_cast<float>(whole)));
        out[i] = static_cast<std::uint8_t>(std::clamp(nearest, 0, 255));
    }
}

void SquareRow(const float* values, int count, float* out) {
    for (int i = 0; i < count; ++i)
        out[i] = values[i] * values[i];
}

/// From the means of the samples and of their squares to the line through them: slope in place of
/// the squares, offset in place of the samples.
void FitRow(int count, float eps, float* mean, float* squares) {
    for (int i = 0; i < count; ++i) {
        const float variance = squares[i] - mean[i] * mean[i];
        const float slope = variance / (variance + eps);
        squares[i] = slope;
        mean[i] = mean[i] - slope * mean[i];
    }
}

void ApplyRow(const float* slope, const std::uint8_t* samples, int count, float* offset) {
    for (int i = 0; i < count; ++i)
        offset[i] = offset[i] + slope[i] * static_cast<float>(samples[i]);
}

void WidenRow(const std::uint8_t* samples, int count, float* values) {
    for (int i = 0; i < count; ++i)
        values[i] = static_cast<float>(samples[i]);
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(RoundRow);
HWY_EXPORT(SquareRow);
HWY_EXPORT(FitRow);
HWY_EXPORT(ApplyRow);
HWY_EXPORT(WidenRow);

/// A channel of a row, side by side in `line` where it is not so already.
const std::uint8_t* ChannelOfRow(ConstPlaneView pixels, int y, int channel, std::uint8_t* line) {
    const std::uint8_t* from = pixels.Row(y).data();
    if (pixels.channels == 1)
        return from;
    ExtractChannelRow(from + channel, pixels.width, line);
    return line;
}

/// Rows that are smoothed at a time. Around them twice the radius is needed: the line of each
/// sample is fitted to the means around it, and the lines are averaged once more.
constexpr int kBandRows = 256;

/// Some rows of four planes, held by each thread.
struct BandPlanes {
    FloatPlane values, squares, meanValues, meanSquares;
    std::vector<std::uint8_t> line;  // a row of the channel

    BandPlanes(int width, int height)
        : values(width, height),
          squares(width, height),
          meanValues(width, height),
          meanSquares(width, height),
          line(static_cast<std::size_t>(width)) {}
};

struct Rows {
    int first, last;  // last lies outside

    int Count() const { return last - first; }
    Rows Extended(int by, int height) const {
        return {std::max(first - by, 0), std::min(last + by, height)};
    }
};

/// One pass over one channel.
struct GuidedPass {
    ConstPlaneView samples;  // rounded, what the line is applied to
    PlaneView result;        // one channel; may be `samples`, if `values` is there
    int channel, radius;
    float eps;
    ConstFloatView values;  // unrounded from the pass before; none in the first
    FloatView nextValues;   // for the pass behind; none in the last
};

void LoadRows(const GuidedPass& pass, Rows rows, std::uint8_t* line, FloatView values) {
    for (int y = 0; y < rows.Count(); ++y) {
        float* out = values.Row(y).data();
        if (pass.values.first != nullptr)
            std::copy_n(pass.values.Row(rows.first + y).data(), values.width, out);
        else
            HWY_DYNAMIC_DISPATCH(WidenRow)
        (ChannelOfRow(pass.samples, rows.first + y, pass.channel, line), values.width, out);
    }
}

void FinishRow(const GuidedPass& pass, int y, const float* slope, std::uint8_t* line,
               float* values) {
    const int width = pass.samples.width;
    HWY_DYNAMIC_DISPATCH(ApplyRow)
    (slope, ChannelOfRow(pass.samples, y, pass.channel, line), width, values);
    if (pass.nextValues.first != nullptr)
        std::copy_n(values, width, pass.nextValues.Row(y).data());
    HWY_DYNAMIC_DISPATCH(RoundRow)(values, width, pass.result.Row(y).data());
}

/// Means near the ends of the rows at hand are wrong where the picture goes on, and not used.
void SmoothBand(const GuidedPass& pass, Rows band, CancelToken cancel, BandPlanes& planes) {
    const int height = pass.samples.height, width = pass.samples.width;
    const Rows around = band.Extended(pass.radius, height);
    const Rows all = around.Extended(pass.radius, height);
    const FloatView values = planes.values.View().Rows(0, all.Count());
    const FloatView squares = planes.squares.View().Rows(0, all.Count());
    const FloatView meanValues = planes.meanValues.View().Rows(0, all.Count());
    const FloatView meanSquares = planes.meanSquares.View().Rows(0, all.Count());
    LoadRows(pass, all, planes.line.data(), values);
    for (int y = 0; y < all.Count(); ++y)
        HWY_DYNAMIC_DISPATCH(SquareRow)(values.Row(y).data(), width, squares.Row(y).data());
    if (cancel.IsCancelled())
        return;
    BoxMean(values, pass.radius, meanValues);
    BoxMean(squares, pass.radius, meanSquares);
    const int skipped = around.first - all.first;
    const FloatView offsets = meanValues.Rows(skipped, around.Count());
    const FloatView slopes = meanSquares.Rows(skipped, around.Count());
    for (int y = 0; y < around.Count(); ++y)
        HWY_DYNAMIC_DISPATCH(FitRow)(width, pass.eps, offsets.Row(y).data(), slopes.Row(y).data());
    const FloatView meanSlopes = squares.Rows(0, around.Count());
    const FloatView meanOffsets = values.Rows(0, around.Count());
    if (cancel.IsCancelled())
        return;
    BoxMean(slopes, pass.radius, meanSlopes);
    BoxMean(offsets, pass.radius, meanOffsets);
    for (int y = band.first; y < band.last; ++y)
        FinishRow(pass, y, meanSlopes.Row(y - around.first).data(), planes.line.data(),
                  meanOffsets.Row(y - around.first).data());
}

void RunPass(const GuidedPass& pass, std::vector<BandPlanes>& planes) {
    const int height = pass.samples.height, bands = (height + kBandRows - 1) / kBandRows;
    std::atomic<bool> isShort = false;
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(pass.samples))
    for (int band = 0; band < bands; ++band) {
        if (cancel.IsCancelled())
            continue;
        const int first = band * kBandRows;
        // The means allocate, and no exception may leave the loop.
        const int done = RefuseWhenOutOfMemory([&] {
            SmoothBand(pass, {first, std::min(first + kBandRows, height)}, cancel,
                       planes[static_cast<std::size_t>(ThreadNumber())]);
            return 1;
        });
        if (done == 0)
            isShort = true;
    }
    if (isShort)
        throw std::bad_alloc();
}

void StoreResults(const PlaneView* results, PlaneView pixels) {
    if (pixels.channels == 3) {
        MergeChannels({results[0], results[1], results[2]}, pixels);
        return;
    }
#pragma omp parallel for schedule(static) if (IsWorthThreads(pixels))
    for (int y = 0; y < pixels.height; ++y)
        std::copy_n(results[0].Row(y).data(), pixels.width, pixels.Row(y).data());
}

}  // namespace

void BlurGuided(CDibImage& image, int radius, int threshold, int times) {
    const PlaneView pixels = ViewOf(image);
    const int width = pixels.width, height = pixels.height;
    const auto eps =
        static_cast<float>(static_cast<double>(static_cast<float>(threshold * threshold)) * 0.7);
    // The image changes when all is done: the means may run out of memory.
    const std::size_t area = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    const PixelBuffer memory = MakePixelBuffer(area * static_cast<std::size_t>(pixels.channels));
    PlaneView results[3];
    for (int channel = 0; channel < pixels.channels; ++channel)
        results[channel] = {memory.get() + area * static_cast<std::size_t>(channel), width, height,
                            1, width};
    std::vector<BandPlanes> planes;
    for (int thread = 0; thread < MaxThreads(); ++thread)
        planes.emplace_back(width, std::min(height, kBandRows + 4 * radius));
    FloatPlane carried[2];
    if (times > 1)
        for (FloatPlane& plane : carried)
            plane = FloatPlane(width, height);
    for (int channel = 0; channel < pixels.channels; ++channel)
        for (int pass = 0; pass < times; ++pass) {
            const FloatView before = carried[pass % 2].View(),
                            behind = carried[1 - pass % 2].View();
            const PlaneView result = results[channel];
            RunPass({pass == 0 ? pixels : result, result, channel, radius, eps,
                     pass == 0 ? FloatView{} : before, pass == times - 1 ? FloatView{} : behind},
                    planes);
        }
    if (!CurrentCancel().IsCancelled())
        StoreResults(results, pixels);
}

}  // namespace velloran
#endif  // HWY_ONCE

#include "filters/SmoothPlane.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "core/Rounding.h"
#include "core/SimdTarget.h"
#include "core/Threads.h"
#include "core/TransposePixels.h"

namespace velloran {
namespace {

constexpr int kFraction = 7;

int AlphaOf(int reach) {
    return TruncToInt((1 - std::exp(-2.3 / (reach + 1.0))) * 65536);
}

/// alpha * difference >> 16 for an alpha of 16 bits without sign, in signed 16-bit factors: above
/// 32767 it is the product by alpha - 65536, and the difference itself.
struct Follower {
    std::int16_t factor, mask;

    explicit Follower(int alpha)
        : factor(static_cast<std::int16_t>(alpha < 32768 ? alpha : alpha - 65536)),
          mask(static_cast<std::int16_t>(alpha < 32768 ? 0 : -1)) {}

    std::int16_t Next(std::int16_t state, std::int16_t target) const {
        const auto difference = static_cast<std::int16_t>(target - state);
        const auto part = static_cast<std::int16_t>(difference * factor >> 16);
        return static_cast<std::int16_t>(state + part + (difference & mask));
    }
};

/// Lines that are smoothed side by side: sample i of all of them, then sample i + 1.
constexpr int kLines = 32;

VELLORAN_SIMD_CLONES
void SmoothLines(std::uint8_t* samples, int length, Follower follower, std::int16_t* kept) {
    std::int16_t state[kLines];
    for (int i = 0; i < kLines; ++i)
        state[i] = static_cast<std::int16_t>(samples[i] << kFraction);
    for (int k = 0; k < length; ++k, samples += kLines, kept += kLines)
        for (int i = 0; i < kLines; ++i) {
            const auto target = static_cast<std::int16_t>(samples[i] << kFraction);
            state[i] = follower.Next(state[i], target);
            kept[i] = state[i];
        }
    for (int k = 0; k < length; ++k) {
        samples -= kLines;
        kept -= kLines;
        for (int i = 0; i < kLines; ++i) {
            state[i] = follower.Next(state[i], kept[i]);
            samples[i] = static_cast<std::uint8_t>(state[i] >> kFraction);
        }
    }
}

struct LinesScratch {
    explicit LinesScratch(int length)
        : samples(static_cast<std::size_t>(length) * kLines),
          kept(static_cast<std::size_t>(length) * kLines) {}
    std::vector<std::uint8_t> samples;
    std::vector<std::int16_t> kept;
};

void SmoothColumns(PlaneView plane, int first, int count, Follower follower,
                   LinesScratch& scratch) {
    const auto bytes = static_cast<std::size_t>(count);
    std::uint8_t* samples = scratch.samples.data();
    for (int y = 0; y < plane.height; ++y, samples += kLines)
        std::memcpy(samples, plane.Row(y).data() + first, bytes);
    SmoothLines(scratch.samples.data(), plane.height, follower, scratch.kept.data());
    samples = scratch.samples.data();
    for (int y = 0; y < plane.height; ++y, samples += kLines)
        std::memcpy(plane.Row(y).data() + first, samples, bytes);
}

/// The rows of `band` become columns, and rows again.
void SmoothRows(PlaneView band, Follower follower, LinesScratch& scratch) {
    const int bits = 8 * band.channels;
    TransposePixels({band.first, band.width, band.height, band.stride}, bits,
                    scratch.samples.data(), kLines);
    SmoothLines(scratch.samples.data(), band.width, follower, scratch.kept.data());
    TransposePixels({scratch.samples.data(), band.height, band.width, kLines}, bits, band.first,
                    band.stride);
}

}  // namespace

void SmoothRowsAndColumns(PlaneView topDown, double radius) {
    const int reach = RoundHalf(2 * radius);
    if (reach < 1 || topDown.width < 1 || topDown.height < 1)
        return;
    const Follower follower(AlphaOf(reach));
    const int count = topDown.width * topDown.channels, rowsAtOnce = kLines / topDown.channels;
    [[maybe_unused]] const bool inParallel = IsWorthThreads(std::int64_t{count} * topDown.height);
    std::vector<LinesScratch> perThread(static_cast<std::size_t>(MaxThreads()),
                                        LinesScratch(std::max(topDown.width, topDown.height)));
    const int bands = (topDown.height - 1) / rowsAtOnce + 1;
#pragma omp parallel for schedule(static) if (inParallel)
    for (int i = 0; i < bands; ++i) {
        PlaneView band = topDown;
        band.first += std::ptrdiff_t{i} * rowsAtOnce * band.stride;
        band.height = std::min(rowsAtOnce, topDown.height - i * rowsAtOnce);
        SmoothRows(band, follower, perThread[static_cast<std::size_t>(ThreadNumber())]);
    }
    const int strips = (count - 1) / kLines + 1;
#pragma omp parallel for schedule(static) if (inParallel)
    for (int i = 0; i < strips; ++i)
        SmoothColumns(topDown, i * kLines, std::min(kLines, count - i * kLines), follower,
                      perThread[static_cast<std::size_t>(ThreadNumber())]);
}

int SmoothPlane(CDibImage& image, double radius) {
    if (image.GetWidth() <= 3 || image.GetHeight() <= 3 || EnsureGrayOrRgb(image) == 0)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        SmoothRowsAndColumns(TopDownViewOf(image), radius);
        return 1;
    });
}

}  // namespace velloran

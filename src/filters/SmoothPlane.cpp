#include "filters/SmoothPlane.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "core/Rounding.h"
#include "core/SimdTarget.h"
#include "core/Threads.h"

namespace velloran {
namespace {

constexpr int kFraction = 7;

int AlphaOf(int reach) {
    return TruncToInt((1 - std::exp(-2.3 / (reach + 1.0))) * 65536);
}

inline std::int32_t Follow(std::int32_t state, std::int32_t target, std::int32_t alpha) {
    // The product of 16 and 15 bits and a sign passes 31 bits only in between.
    return state + static_cast<std::int32_t>((std::int64_t{alpha} * (target - state)) >> 16);
}

/// Channels of a row side by side: their chains do not wait for each other.
template <int kChannels>
void SmoothRow(std::uint8_t* row, int width, std::int32_t alpha, std::int32_t* line) {
    std::int32_t state[kChannels];
    for (int c = 0; c < kChannels; ++c)
        state[c] = row[c] << kFraction;
    for (int x = 0; x < width; ++x)
        for (int c = 0; c < kChannels; ++c) {
            state[c] = Follow(state[c], row[x * kChannels + c] << kFraction, alpha);
            line[x * kChannels + c] = state[c];
        }
    for (int x = width - 1; x >= 0; --x)
        for (int c = 0; c < kChannels; ++c) {
            state[c] = Follow(state[c], line[x * kChannels + c], alpha);
            row[x * kChannels + c] = static_cast<std::uint8_t>(state[c] >> kFraction);
        }
}

/// Columns run side by side through a strip of the plane, so that rows are read in order.
constexpr int kStrip = 128;

VELLORAN_SIMD_CLONES
void FollowRow(const std::uint8_t* row, int count, std::int32_t alpha, std::int32_t* state,
               std::int16_t* kept) {
    for (int i = 0; i < count; ++i) {
        const std::int32_t difference = (row[i] << kFraction) - state[i];
        // The same as one product shifted by 16, in halves that 32 bits hold.
        state[i] += ((alpha >> 8) * difference + ((alpha & 255) * difference >> 8)) >> 8;
        kept[i] = static_cast<std::int16_t>(state[i]);
    }
}

VELLORAN_SIMD_CLONES
void FollowBack(const std::int16_t* kept, int count, std::int32_t alpha, std::int32_t* state,
                std::uint8_t* row) {
    for (int i = 0; i < count; ++i) {
        const std::int32_t difference = kept[i] - state[i];
        state[i] += ((alpha >> 8) * difference + ((alpha & 255) * difference >> 8)) >> 8;
        row[i] = static_cast<std::uint8_t>(state[i] >> kFraction);
    }
}

void SmoothStrip(PlaneView plane, int first, int count, std::int32_t alpha, std::int32_t* state,
                 std::int16_t* kept) {
    for (int i = 0; i < count; ++i)
        state[i] = plane.Row(0)[static_cast<std::size_t>(first + i)] << kFraction;
    for (int y = 0; y < plane.height; ++y)
        FollowRow(plane.Row(y).data() + first, count, alpha, state,
                  kept + static_cast<std::ptrdiff_t>(y) * kStrip);
    for (int y = plane.height - 1; y >= 0; --y)
        FollowBack(kept + static_cast<std::ptrdiff_t>(y) * kStrip, count, alpha, state,
                   plane.Row(y).data() + first);
}

}  // namespace

void SmoothRowsAndColumns(PlaneView topDown, double radius) {
    const int reach = RoundHalf(2 * radius);
    if (reach < 1 || topDown.width < 1 || topDown.height < 1)
        return;
    const std::int32_t alpha = AlphaOf(reach);
    const int count = topDown.width * topDown.channels;
    const auto threads = static_cast<std::size_t>(MaxThreads());
    std::vector<std::vector<std::int32_t>> lines(
        threads, std::vector<std::int32_t>(static_cast<std::size_t>(std::max(count, kStrip))));
    std::vector<std::vector<std::int16_t>> strips(
        threads, std::vector<std::int16_t>(static_cast<std::size_t>(topDown.height) * kStrip));
#pragma omp parallel for schedule(static)
    for (int y = 0; y < topDown.height; ++y) {
        std::int32_t* line = lines[static_cast<std::size_t>(ThreadNumber())].data();
        if (topDown.channels == 3)
            SmoothRow<3>(topDown.Row(y).data(), topDown.width, alpha, line);
        else
            SmoothRow<1>(topDown.Row(y).data(), topDown.width, alpha, line);
    }
    const int stripCount = (count + kStrip - 1) / kStrip;
#pragma omp parallel for schedule(static)
    for (int strip = 0; strip < stripCount; ++strip) {
        const auto thread = static_cast<std::size_t>(ThreadNumber());
        const int first = strip * kStrip;
        SmoothStrip(topDown, first, std::min(kStrip, count - first), alpha, lines[thread].data(),
                    strips[thread].data());
    }
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

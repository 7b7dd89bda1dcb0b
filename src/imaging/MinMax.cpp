#include "imaging/MinMax.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstring>
#include <vector>

#include "core/SimdTarget.h"
#include "core/Threads.h"

namespace velloran {
namespace {

using Bytes [[gnu::vector_size(32)]] = std::uint8_t;
constexpr int kBlock = 2 * sizeof(Bytes);

/// Rows of a window, or one row at the offsets of a window.
using Lines = std::array<const std::uint8_t*, kMostWindowSide>;

template <bool kMinimum>
[[gnu::always_inline]] inline void Take(const std::uint8_t* samples, Bytes& extreme) {
    Bytes values;
    std::memcpy(&values, samples, sizeof values);
    if constexpr (kMinimum)
        extreme = values < extreme ? values : extreme;
    else
        extreme = values > extreme ? values : extreme;
}

template <bool kMinimum>
[[gnu::always_inline]] inline void TakeBlock(const Lines& lines, int lineCount, int x,
                                             std::uint8_t* out) {
    Bytes a, b;
    std::memcpy(&a, lines[0] + x, sizeof a);
    std::memcpy(&b, lines[0] + x + sizeof a, sizeof b);
    for (int k = 1; k < lineCount; ++k) {
        Take<kMinimum>(lines[static_cast<std::size_t>(k)] + x, a);
        Take<kMinimum>(lines[static_cast<std::size_t>(k)] + x + sizeof a, b);
    }
    std::memcpy(out + x, &a, sizeof a);
    std::memcpy(out + x + sizeof a, &b, sizeof b);
}

/// The extreme of all lines at each place.
template <bool kMinimum>
[[gnu::always_inline]] inline void TakeLines(const Lines& lines, int lineCount, int count,
                                             std::uint8_t* out) {
    int x = 0;
    for (; x + kBlock <= count; x += kBlock)
        TakeBlock<kMinimum>(lines, lineCount, x, out);
    if (x == count)
        return;
    if (count >= kBlock) {  // once more what the last block shares with the one before it
        TakeBlock<kMinimum>(lines, lineCount, count - kBlock, out);
        return;
    }
    for (; x < count; ++x) {
        out[x] = lines[0][x];
        for (int k = 1; k < lineCount; ++k) {
            const std::uint8_t sample = lines[static_cast<std::size_t>(k)][x];
            out[x] = kMinimum ? std::min(out[x], sample) : std::max(out[x], sample);
        }
    }
}

/// Unrolled for the sides that are used most.
template <bool kMinimum>
[[gnu::always_inline]] inline void TakeLinesByCount(const Lines& lines, int lineCount, int count,
                                                    std::uint8_t* out) {
    switch (lineCount) {
        case 2:
            return TakeLines<kMinimum>(lines, 2, count, out);
        case 3:
            return TakeLines<kMinimum>(lines, 3, count, out);
        case 4:
            return TakeLines<kMinimum>(lines, 4, count, out);
        case 5:
            return TakeLines<kMinimum>(lines, 5, count, out);
        default:
            return TakeLines<kMinimum>(lines, lineCount, count, out);
    }
}

VELLORAN_SIMD_CLONES
void MinOfLines(const Lines& lines, int lineCount, int count, std::uint8_t* out) {
    TakeLinesByCount<true>(lines, lineCount, count, out);
}

VELLORAN_SIMD_CLONES
void MaxOfLines(const Lines& lines, int lineCount, int count, std::uint8_t* out) {
    TakeLinesByCount<false>(lines, lineCount, count, out);
}

using OfLines = void (*)(const Lines&, int, int, std::uint8_t*);

/// A row with its first and last pixel repeated outward.
void RepeatEnds(std::uint8_t* row, int count, int channels, int left, int right) {
    for (int i = -1; i >= -left * channels; --i)
        row[i] = row[i + channels];
    for (int i = count; i < count + right * channels; ++i)
        row[i] = row[i - channels];
}

/// Columns first, into a row with room at its ends, then along that row.
void OverWindow(ConstPlaneView source, Window window, PlaneView target, OfLines ofLines) {
    assert(window.width <= kMostWindowSide && window.height <= kMostWindowSide);
    const int channels = target.channels, count = target.width * channels;
    if (count == 0 || target.height == 0)
        return;
    const std::size_t room =
        static_cast<std::size_t>(count) +
        static_cast<std::size_t>(window.width - 1) * static_cast<std::size_t>(channels);
    std::vector<std::vector<std::uint8_t>> rows(static_cast<std::size_t>(MaxThreads()),
                                                std::vector<std::uint8_t>(room));
#pragma omp parallel for schedule(static) if (IsWorthThreads(std::int64_t{count} * target.height))
    for (int y = 0; y < target.height; ++y) {
        Lines lines{};
        for (int k = 0; k < window.height; ++k)
            lines[static_cast<std::size_t>(k)] =
                source.Row(std::clamp(y - window.anchorY + k, 0, target.height - 1)).data();
        std::uint8_t* ends = rows[static_cast<std::size_t>(ThreadNumber())].data();
        std::uint8_t* row = ends + std::ptrdiff_t{window.anchorX} * channels;
        ofLines(lines, window.height, count, row);
        RepeatEnds(row, count, channels, window.anchorX, window.width - 1 - window.anchorX);
        for (int k = 0; k < window.width; ++k)
            lines[static_cast<std::size_t>(k)] = ends + std::ptrdiff_t{k} * channels;
        ofLines(lines, window.width, count, target.Row(y).data());
    }
}

}  // namespace

void MinFilter(ConstPlaneView source, Window window, PlaneView target) {
    OverWindow(source, window, target, MinOfLines);
}

void MaxFilter(ConstPlaneView source, Window window, PlaneView target) {
    OverWindow(source, window, target, MaxOfLines);
}

}  // namespace velloran

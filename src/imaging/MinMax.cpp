#include "imaging/MinMax.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <vector>

#include "core/StepContext.h"
#include "core/Threads.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/MinMax.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

#if HWY_TARGET == HWY_SCALAR
template <bool kMinimum>
void TakeLines(const std::uint8_t* const* lines, int lineCount, int count, std::uint8_t* out) {
    std::copy_n(lines[0], count, out);
    for (int k = 1; k < lineCount; ++k) {
        const std::uint8_t* line = lines[k];
        for (int x = 0; x < count; ++x)
            out[x] = kMinimum ? std::min(out[x], line[x]) : std::max(out[x], line[x]);
    }
}

void MinOfLines(const std::uint8_t* const* lines, int lineCount, int count, std::uint8_t* out) {
    TakeLines<true>(lines, lineCount, count, out);
}

void MaxOfLines(const std::uint8_t* const* lines, int lineCount, int count, std::uint8_t* out) {
    TakeLines<false>(lines, lineCount, count, out);
}
#else
namespace hn = hwy::HWY_NAMESPACE;
// Longer vectors would lie across two lines of the cache at nearly every place.
using Bytes = hn::CappedTag<std::uint8_t, 32>;

template <bool kMinimum, class Vector>
HWY_INLINE Vector Extreme(Vector a, Vector b) {
    if constexpr (kMinimum)
        return hn::Min(a, b);
    else
        return hn::Max(a, b);
}

constexpr int kLanes = std::min<int>(32, HWY_LANES(std::uint8_t)), kBlock = 2 * kLanes;

template <bool kMinimum>
HWY_INLINE void TakeBlock(const std::uint8_t* const* lines, int lineCount, int x,
                          std::uint8_t* out) {
    const Bytes bytes;
    auto a = hn::LoadU(bytes, lines[0] + x), b = hn::LoadU(bytes, lines[0] + x + kLanes);
    for (int k = 1; k < lineCount; ++k) {
        a = Extreme<kMinimum>(a, hn::LoadU(bytes, lines[k] + x));
        b = Extreme<kMinimum>(b, hn::LoadU(bytes, lines[k] + x + kLanes));
    }
    hn::StoreU(a, bytes, out + x);
    hn::StoreU(b, bytes, out + x + kLanes);
}

/// The extreme of all lines at each place.
template <bool kMinimum>
HWY_INLINE void TakeLines(const std::uint8_t* const* lines, int lineCount, int count,
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
        for (int k = 1; k < lineCount; ++k)
            out[x] = kMinimum ? std::min(out[x], lines[k][x]) : std::max(out[x], lines[k][x]);
    }
}

/// Unrolled for the sides that are used most.
template <bool kMinimum>
HWY_INLINE void TakeLinesByCount(const std::uint8_t* const* lines, int lineCount, int count,
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

void MinOfLines(const std::uint8_t* const* lines, int lineCount, int count, std::uint8_t* out) {
    TakeLinesByCount<true>(lines, lineCount, count, out);
}

void MaxOfLines(const std::uint8_t* const* lines, int lineCount, int count, std::uint8_t* out) {
    TakeLinesByCount<false>(lines, lineCount, count, out);
}
#endif

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(MinOfLines);
HWY_EXPORT(MaxOfLines);

/// Rows of a window, or one row at the offsets of a window.
using Lines = std::array<const std::uint8_t*, kMostWindowSide>;

/// The extreme of so many lines at each of so many places.
using OfLines = void (*)(const std::uint8_t* const*, int, int, std::uint8_t*);

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
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(std::int64_t{count} * target.height))
    for (int y = 0; y < target.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        Lines lines{};
        for (int k = 0; k < window.height; ++k)
            lines[static_cast<std::size_t>(k)] =
                source.Row(std::clamp(y - window.anchorY + k, 0, target.height - 1)).data();
        std::uint8_t* ends = rows[static_cast<std::size_t>(ThreadNumber())].data();
        std::uint8_t* row = ends + std::ptrdiff_t{window.anchorX} * channels;
        ofLines(lines.data(), window.height, count, row);
        RepeatEnds(row, count, channels, window.anchorX, window.width - 1 - window.anchorX);
        for (int k = 0; k < window.width; ++k)
            lines[static_cast<std::size_t>(k)] = ends + std::ptrdiff_t{k} * channels;
        ofLines(lines.data(), window.width, count, target.Row(y).data());
    }
}

}  // namespace

void MinFilter(ConstPlaneView source, Window window, PlaneView target) {
    OverWindow(source, window, target, HWY_DYNAMIC_DISPATCH(MinOfLines));
}

void MaxFilter(ConstPlaneView source, Window window, PlaneView target) {
    OverWindow(source, window, target, HWY_DYNAMIC_DISPATCH(MaxOfLines));
}

}  // namespace velloran
#endif  // HWY_ONCE

#include "tone/FrankleMcCannPasses.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

#include "core/StepContext.h"
#include "core/Threads.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tone/FrankleMcCannPasses.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

/// No result is below its logarithm, so all of this fits 16 bits without a sign.
inline std::uint16_t MeetRise(std::uint16_t log, std::uint16_t result, std::uint16_t rise) {
    const auto reached =
        std::min<std::uint16_t>(static_cast<std::uint16_t>(log + rise), kRetinexWhite);
    return static_cast<std::uint16_t>((result + reached + 1) >> 1);
}

inline std::uint16_t Meet(std::uint16_t log, std::uint16_t result, std::uint16_t otherLog,
                          std::uint16_t otherResult) {
    return MeetRise(log, result, static_cast<std::uint16_t>(otherResult - otherLog));
}

/// Pixels that do not wait for each other: what is written is not read later in the run.
void MeetRun(const std::uint16_t* log, std::uint16_t* result, const std::uint16_t* otherLog,
             const std::uint16_t* otherResult, int count) {
#pragma GCC ivdep
    for (int i = 0; i < count; ++i)
        result[i] = Meet(log[i], result[i], otherLog[i], otherResult[i]);
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(MeetRun);

using HWY_NAMESPACE::Meet;
using HWY_NAMESPACE::MeetRise;

/// From this shift on runs of `shift` pixels are worth a loop of their own.
constexpr int kLongShift = 16;

/// Chains that run side by side where each by itself would wait for its last pixel.
constexpr int kChains = 8;

/// kChains / kShift rows; each has kShift chains, and what a chain hands on stays in registers.
template <int kShift>
void MeetChains(const std::uint16_t* log, std::uint16_t* result, std::ptrdiff_t stride, int width) {
    constexpr int kRows = kChains / kShift;
    std::uint16_t rise[kRows][kShift];
    for (int r = 0; r < kRows; ++r)
        for (int i = 0; i < kShift; ++i)
            rise[r][i] = static_cast<std::uint16_t>(result[r * stride + i] - log[r * stride + i]);
    const auto meet = [&](int x, int r, int i) {
        const std::ptrdiff_t at = r * stride + x + i;
        result[at] = MeetRise(log[at], result[at], rise[r][i]);
        rise[r][i] = static_cast<std::uint16_t>(result[at] - log[at]);
    };
    int x = kShift;
    for (; x + kShift <= width; x += kShift)
        for (int r = 0; r < kRows; ++r)
            for (int i = 0; i < kShift; ++i)
                meet(x, r, i);
    for (int r = 0; r < kRows; ++r)
        for (int i = 0; x + i < width; ++i)
            meet(x, r, i);
}

void MeetRowSlowly(const std::uint16_t* log, std::uint16_t* result, int width, int shift) {
    for (int x = shift; x < width; ++x)
        result[x] = Meet(log[x], result[x], log[x - shift], result[x - shift]);
}

/// Shifts of 1, 2, 4 and 8, kChains rows or less.
void MeetShortShift(const RetinexPlanes& planes, int firstRow, int rows, int shift) {
    const std::ptrdiff_t stride = planes.width;
    const std::uint16_t* log = planes.logs + firstRow * stride;
    std::uint16_t* result = planes.result + firstRow * stride;
    int row = 0;
    for (const int together = kChains / shift; row + together <= rows; row += together) {
        const auto meetChains = shift == 1   ? MeetChains<1>
                                : shift == 2 ? MeetChains<2>
                                : shift == 4 ? MeetChains<4>
                                             : MeetChains<8>;
        meetChains(log + row * stride, result + row * stride, stride, planes.width);
    }
    for (; row < rows; ++row)
        MeetRowSlowly(log + row * stride, result + row * stride, planes.width, shift);
}

void MeetRowBefore(const RetinexPlanes& planes, int row, int shift) {
    const std::uint16_t* log = planes.logs + std::ptrdiff_t{row} * planes.width;
    std::uint16_t* result = planes.result + std::ptrdiff_t{row} * planes.width;
    for (int x = shift; x < planes.width; x += shift)
        HWY_DYNAMIC_DISPATCH(MeetRun)
    (log + x, result + x, log + x - shift, result + x - shift, std::min(shift, planes.width - x));
}

void MeetRowBehind(const RetinexPlanes& planes, int row, int distance) {
    const std::uint16_t* log = planes.logs + std::ptrdiff_t{row} * planes.width;
    std::uint16_t* result = planes.result + std::ptrdiff_t{row} * planes.width;
    HWY_DYNAMIC_DISPATCH(MeetRun)
    (log, result, log + distance, result + distance, planes.width - distance);
}

/// Columns first..first + count - 1 of row y with those of the row `shift` before.
void MeetRowPart(const RetinexPlanes& planes, int y, int shift, int first, int count) {
    const std::ptrdiff_t at = std::ptrdiff_t{y} * planes.width + first;
    const std::ptrdiff_t other = std::ptrdiff_t{y - shift} * planes.width + first;
    HWY_DYNAMIC_DISPATCH(MeetRun)
    (planes.logs + at, planes.result + at, planes.logs + other, planes.result + other, count);
}

/// Every distance-th row from `row` on: a chain that no other row has part in, walked in one go
/// while its last row is still near.
void MeetRowChain(const RetinexPlanes& planes, int row, int shift, int first, int count) {
    const int distance = std::abs(shift);
    const int start = shift > 0 ? row + distance : row;
    const int end = shift > 0 ? planes.height : planes.height - distance;
    for (int y = start; y < end; y += distance)
        MeetRowPart(planes, y, shift, first, count);
}

constexpr int kStripWidth = 512;

bool AreWorthThreads(const RetinexPlanes& planes) {
    return IsWorthThreads(std::int64_t{planes.width} * planes.height);
}

}  // namespace

void MeetAlongRows(const RetinexPlanes& planes, int shift) {
    if (std::abs(shift) >= planes.width)
        return;
    if (shift > 0 && shift < kLongShift) {
        const int groups = (planes.height + kChains - 1) / kChains;
        const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (AreWorthThreads(planes))
        for (int group = 0; group < groups; ++group) {
            if (cancel.IsCancelled())
                continue;
            MeetShortShift(planes, group * kChains,
                           std::min(kChains, planes.height - group * kChains), shift);
        }
        return;
    }
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (AreWorthThreads(planes))
    for (int row = 0; row < planes.height; ++row) {
        if (cancel.IsCancelled())
            continue;
        if (shift > 0)
            MeetRowBefore(planes, row, shift);
        else
            MeetRowBehind(planes, row, -shift);
    }
}

void MeetDownColumns(const RetinexPlanes& planes, int shift) {
    const int distance = std::abs(shift);
    if (distance >= planes.height)
        return;
    if (distance >= kLongShift) {
        const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (AreWorthThreads(planes))
        for (int row = 0; row < distance; ++row) {
            if (cancel.IsCancelled())
                continue;
            MeetRowChain(planes, row, shift, 0, planes.width);
        }
        return;
    }
    const int strips = (planes.width + kStripWidth - 1) / kStripWidth;
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (AreWorthThreads(planes))
    for (int strip = 0; strip < strips; ++strip) {
        if (cancel.IsCancelled())
            continue;
        const int first = strip * kStripWidth;
        const int count = std::min(kStripWidth, planes.width - first);
        const int end = shift > 0 ? planes.height : planes.height - distance;
        for (int y = shift > 0 ? distance : 0; y < end; ++y)
            MeetRowPart(planes, y, shift, first, count);
    }
}

}  // namespace velloran
#endif  // HWY_ONCE

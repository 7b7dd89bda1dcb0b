#include "tone/FrankleMcCannPasses.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>

#include "core/SimdTarget.h"

namespace velloran {
namespace {

constexpr std::uint16_t kWhite = kRetinexWhite;

/// No result is below its logarithm, so all of this fits 16 bits without a sign.
inline std::uint16_t Meet(std::uint16_t log, std::uint16_t result, std::uint16_t otherLog,
                          std::uint16_t otherResult) {
    const auto rise = static_cast<std::uint16_t>(otherResult - otherLog);
    const auto reached = std::min(static_cast<std::uint16_t>(log + rise), kWhite);
    return static_cast<std::uint16_t>((result + reached + 1) >> 1);
}

/// Pixels that do not wait for each other: what is written is not read later in the run.
VELLORAN_SIMD_CLONES
void MeetRun(const std::uint16_t* log, std::uint16_t* result, const std::uint16_t* otherLog,
             const std::uint16_t* otherResult, int count) {
#pragma GCC ivdep
    for (int i = 0; i < count; ++i)
        result[i] = Meet(log[i], result[i], otherLog[i], otherResult[i]);
}

/// From this shift on runs of `shift` pixels are worth a loop of their own.
constexpr int kLongShift = 32;

/// Rows whose chains run side by side where each is too short-linked to be fast.
constexpr int kRowsTogether = 8;

void MeetShortChains(const RetinexPlanes& planes, int firstRow, int rows, int shift) {
    const std::uint16_t* log = planes.logs + std::ptrdiff_t{firstRow} * planes.width;
    std::uint16_t* result = planes.result + std::ptrdiff_t{firstRow} * planes.width;
    for (int x = shift; x < planes.width; ++x)
        for (int r = 0; r < rows; ++r) {
            const std::ptrdiff_t at = std::ptrdiff_t{r} * planes.width + x;
            result[at] = Meet(log[at], result[at], log[at - shift], result[at - shift]);
        }
}

void MeetRowBefore(const RetinexPlanes& planes, int row, int shift) {
    const std::uint16_t* log = planes.logs + std::ptrdiff_t{row} * planes.width;
    std::uint16_t* result = planes.result + std::ptrdiff_t{row} * planes.width;
    for (int x = shift; x < planes.width; x += shift)
        MeetRun(log + x, result + x, log + x - shift, result + x - shift,
                std::min(shift, planes.width - x));
}

void MeetRowBehind(const RetinexPlanes& planes, int row, int distance) {
    const std::uint16_t* log = planes.logs + std::ptrdiff_t{row} * planes.width;
    std::uint16_t* result = planes.result + std::ptrdiff_t{row} * planes.width;
    MeetRun(log, result, log + distance, result + distance, planes.width - distance);
}

/// Columns first..first + count - 1 of row y with those of the row `shift` before.
void MeetRowPart(const RetinexPlanes& planes, int y, int shift, int first, int count) {
    const std::ptrdiff_t at = std::ptrdiff_t{y} * planes.width + first;
    const std::ptrdiff_t other = std::ptrdiff_t{y - shift} * planes.width + first;
    MeetRun(planes.logs + at, planes.result + at, planes.logs + other, planes.result + other,
            count);
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

/// Below, waking a thread costs more than the work.
bool IsWorthThreads(const RetinexPlanes& planes) {
    return std::int64_t{planes.width} * planes.height >= 1 << 16;
}

}  // namespace

void MeetAlongRows(const RetinexPlanes& planes, int shift) {
    if (std::abs(shift) >= planes.width)
        return;
    if (shift > 0 && shift < kLongShift) {
        const int groups = (planes.height + kRowsTogether - 1) / kRowsTogether;
#pragma omp parallel for schedule(static) if (IsWorthThreads(planes))
        for (int group = 0; group < groups; ++group)
            MeetShortChains(planes, group * kRowsTogether,
                            std::min(kRowsTogether, planes.height - group * kRowsTogether), shift);
        return;
    }
#pragma omp parallel for schedule(static) if (IsWorthThreads(planes))
    for (int row = 0; row < planes.height; ++row) {
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
#pragma omp parallel for schedule(static) if (IsWorthThreads(planes))
        for (int row = 0; row < distance; ++row)
            MeetRowChain(planes, row, shift, 0, planes.width);
        return;
    }
    const int strips = (planes.width + kStripWidth - 1) / kStripWidth;
#pragma omp parallel for schedule(static) if (IsWorthThreads(planes))
    for (int strip = 0; strip < strips; ++strip) {
        const int first = strip * kStripWidth;
        const int count = std::min(kStripWidth, planes.width - first);
        const int end = shift > 0 ? planes.height : planes.height - distance;
        for (int y = shift > 0 ? distance : 0; y < end; ++y)
            MeetRowPart(planes, y, shift, first, count);
    }
}

}  // namespace velloran

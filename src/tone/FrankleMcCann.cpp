#include "tone/FrankleMcCann.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "core/DibImage.h"
#include "core/ExactMath.h"
#include "core/GrayDepth.h"
#include "core/PixelMemory.h"
#include "core/Refusal.h"
#include "core/Rounding.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "tone/AutoLevelsCount.h"
#include "tone/FrankleMcCannPasses.h"
#include "tone/PixelMapRows.h"

namespace velloran {
namespace {

constexpr float kPointShare = 0.01F;
constexpr int kLeastRange = 10;

struct Points {
    int low = 0, high = 0;
    bool IsFlat() const { return std::abs(high - low) < kLeastRange; }
};

Points FindPoints(const Histogram& histogram, std::uint32_t target) {
    Points points{0, 255};
    std::uint32_t count = histogram[255];
    while (count < target && points.high > 0)
        count += histogram[static_cast<std::size_t>(--points.high)];
    count = histogram[0];
    while (count < target && points.low < 255)
        count += histogram[static_cast<std::size_t>(++points.low)];
    return points;
}

/// One entry a channel.
std::vector<Points> FindAllPoints(ConstPlaneView pixels) {
    const float count = static_cast<float>(static_cast<std::int64_t>(pixels.width) * pixels.height);
    const auto target =
        static_cast<std::uint32_t>(TruncToInt(static_cast<double>(count * kPointShare)));
    std::vector<Points> points;
    if (pixels.channels == 1) {
        points.push_back(FindPoints(CountBytes(pixels), target));
    } else {
        for (const Histogram& histogram : CountChannels(pixels))
            points.push_back(FindPoints(histogram, target));
    }
    return points;
}

using LogTable = std::array<std::uint16_t, 256>;

/// The white point, which is at least 10, maps to white.
LogTable MakeLogTable(int high) {
    LogTable table{};
    for (int level = 1; level < 256; ++level)
        table[static_cast<std::size_t>(level)] = static_cast<std::uint16_t>(
            level > high ? kRetinexWhite
                         : RoundHalf(Log(static_cast<double>(level)) * 32767.0 /
                                     Log(static_cast<double>(high))));
    return table;
}

std::vector<std::uint8_t> MakeLevelTable() {
    std::vector<std::uint8_t> table(kRetinexWhite + 1);
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = ClampToByte(RoundHalf(Exp(static_cast<double>(i) * Log(255.0) / 32767.0)));
    return table;
}

/// A power of two of half the shorter side or less; 0 for a side of 1.
int FirstShift(int width, int height) {
    const int exponent = std::bit_width(static_cast<unsigned>(std::min(width, height))) - 2;
    return exponent < 0 ? 0 : 1 << exponent;
}

void FillLogs(ConstPlaneView pixels, int channel, const LogTable& table, std::uint16_t* logs) {
#pragma omp parallel for schedule(static) if (IsWorthThreads(pixels))
    for (int y = 0; y < pixels.height; ++y) {
        const std::uint8_t* sample = pixels.Row(y).data() + channel;
        std::uint16_t* out = logs + std::ptrdiff_t{y} * pixels.width;
        for (int x = 0; x < pixels.width; ++x, sample += pixels.channels)
            out[x] = table[*sample];
    }
}

void TakeResult(const std::uint16_t* result, const std::vector<std::uint8_t>& levels, int channel,
                PlaneView pixels) {
#pragma omp parallel for schedule(static) if (IsWorthThreads(pixels))
    for (int y = 0; y < pixels.height; ++y) {
        std::uint8_t* sample = pixels.Row(y).data() + channel;
        const std::uint16_t* from = result + std::ptrdiff_t{y} * pixels.width;
        for (int x = 0; x < pixels.width; ++x, sample += pixels.channels)
            *sample = levels[from[x]];
    }
}

void Iterate(const RetinexPlanes& planes, int iterations) {
    const CancelToken cancel = CurrentCancel();
    for (int shift = FirstShift(planes.width, planes.height); shift != 0; shift = -(shift / 2))
        for (int i = 0; i < iterations && !cancel.IsCancelled(); ++i) {
            MeetAlongRows(planes, shift);
            MeetDownColumns(planes, shift);
        }
}

}  // namespace

int FrankleMcCannRetinex(CDibImage& image, int iterations) {
    if (EnsureGrayOrRgb(image) == 0)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        const PlaneView pixels = TopDownViewOf(image);
        const std::vector<Points> points = FindAllPoints(pixels);
        if (std::ranges::all_of(points, &Points::IsFlat)) {
            image.Clear(255);
            return 1;
        }
        const std::size_t size =
            static_cast<std::size_t>(pixels.width) * static_cast<std::size_t>(pixels.height);
        const PixelBuffer memory = MakePixelBuffer(2 * size * sizeof(std::uint16_t));
        auto* logs = reinterpret_cast<std::uint16_t*>(memory.get());
        std::uint16_t* result = logs + size;
        const std::vector<std::uint8_t> levels = MakeLevelTable();
        for (std::size_t c = 0; c < points.size(); ++c) {
            if (points[c].IsFlat())
                continue;
            const int channel = static_cast<int>(c);
            FillLogs(pixels, channel, MakeLogTable(points[c].high), logs);
            std::fill_n(result, size, static_cast<std::uint16_t>(kRetinexWhite));
            Iterate({logs, result, pixels.width, pixels.height}, iterations);
            if (CurrentCancel().IsCancelled())
                return 0;
            TakeResult(result, levels, channel, pixels);
        }
        return 1;
    });
}

}  // namespace velloran

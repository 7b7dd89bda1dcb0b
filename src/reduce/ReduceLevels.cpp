#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>
#include <vector>

#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "reduce/ApplyPalette.h"

namespace velloran {
namespace {

struct Tap {
    int x, y, weight;
};

/// Where an error goes, and what the weights add up to.
struct FloydSteinbergWeights {
    static constexpr Tap kTaps[] = {{1, 0, 7}, {-1, 1, 3}, {0, 1, 5}, {1, 1, 1}};
    static constexpr int kSum = 16, kRows = 2;
};
struct JarvisWeights {
    static constexpr Tap kTaps[] = {{1, 0, 7},  {2, 0, 5}, {-2, 1, 3}, {-1, 1, 5},
                                    {0, 1, 7},  {1, 1, 5}, {2, 1, 3},  {-2, 2, 1},
                                    {-1, 2, 3}, {0, 2, 5}, {1, 2, 3},  {2, 2, 1}};
    static constexpr int kSum = 48, kRows = 3;
};
constexpr int kMargin = 2;

/// Level i of n, evenly spaced over 0..255 and rounded.
int LevelAt(int i, int levels) {
    return (i * 255 * 2 + (levels - 1)) / (2 * (levels - 1));
}

/// For each sample value the nearest of the evenly spaced levels.
std::array<std::uint8_t, 256> EvenLevels(int levels) {
    std::array<std::uint8_t, 256> table{};
    for (int value = 0; value < 256; ++value) {
        const int i = (value * (levels - 1) * 2 + 255) / 510;
        table[static_cast<std::size_t>(value)] = static_cast<std::uint8_t>(LevelAt(i, levels));
    }
    return table;
}

/// From the top row down, left to right, errors as integers in units of the weights' sum.
template <typename Weights>
void Diffuse(PlaneView plane, int levels) {
    const std::array<std::uint8_t, 256> nearest = EvenLevels(levels);
    const std::size_t rowLength = static_cast<std::size_t>(plane.width) + 2 * kMargin;
    std::vector<std::int32_t> errors(Weights::kRows * rowLength, 0);
    std::array<std::int32_t*, Weights::kRows> rows;  // the present row and those below it
    for (std::size_t i = 0; i < rows.size(); ++i)
        rows[i] = errors.data() + i * rowLength + kMargin;
    const CancelToken cancel = CurrentCancel();
    for (int y = 0; y < plane.height && !cancel.IsCancelled(); ++y) {
        std::uint8_t* row = plane.Row(y).data();
        for (int x = 0; x < plane.width; ++x) {
            const std::int32_t wanted = std::clamp(row[x] + rows[0][x] / Weights::kSum, 0, 255);
            row[x] = nearest[static_cast<std::size_t>(wanted)];
            const std::int32_t error = wanted - row[x];
            for (const Tap& tap : Weights::kTaps)
                rows[static_cast<std::size_t>(tap.y)][x + tap.x] += error * tap.weight;
        }
        std::fill_n(rows[0] - kMargin, rowLength, 0);
        std::rotate(rows.begin(), rows.begin() + 1, rows.end());
    }
}

/// Rank 0..63 of a place in the 8 x 8 ordered matrix: the bits of x ^ y and y, interleaved from
/// the lowest up.
int BayerRank(int x, int y) {
    int rank = 0;
    for (int bit = 0; bit < 3; ++bit) {
        rank = rank << 1 | ((x ^ y) >> bit & 1);
        rank = rank << 1 | (y >> bit & 1);
    }
    return rank;
}

void OrderedDither(PlaneView plane) {
    std::array<std::array<int, 8>, 8> threshold;
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            // The middle of the rank's share of 0..255: of 64 places, value * 64 / 256 turn white.
            threshold[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] =
                BayerRank(x, y) * 4 + 2;
#pragma omp parallel for schedule(static) if (IsWorthThreads(plane))
    for (int y = 0; y < plane.height; ++y) {
        std::uint8_t* row = plane.Row(y).data();
        const auto& line = threshold[static_cast<std::size_t>(y) % 8];
        for (int x = 0; x < plane.width; ++x)
            row[x] = row[x] >= line[static_cast<std::size_t>(x) % 8] ? 255 : 0;
    }
}

void MapLevelsToIndices(CDibImage& image, const Palette& palette) {
    const std::array<std::uint8_t, 256> index = NearestLevels(palette);
    const PlaneView plane = ViewOf(image);
#pragma omp parallel for schedule(static) if (IsWorthThreads(plane))
    for (int y = 0; y < plane.height; ++y)
        for (std::uint8_t& sample : plane.Row(y))
            sample = index[sample];
}

}  // namespace

int ReduceLevels(CDibImage& image, const Palette& palette, bool keepDepth, int bwDitherMethod) {
    if (palette.empty() || image.GetPalette() == nullptr || EnsureGrayOrRgb(image) == 0)
        return 0;
    if (image.GetBpp() != 8 && ConvertToGray(image) == 0)  // the palette held colours
        return 0;
    const int levels = std::max(static_cast<int>(palette.size()), 2);
    return RefuseWhenOutOfMemory([&] {
        const PlaneView plane = TopDownViewOf(image);
        if (levels == 2 && bwDitherMethod == kBayer)
            OrderedDither(plane);
        else if (levels == 2 && bwDitherMethod != kFloydSteinberg)
            Diffuse<JarvisWeights>(plane, levels);
        else
            Diffuse<FloydSteinbergWeights>(plane, levels);
        if (!keepDepth)
            MapLevelsToIndices(image, palette);
        return 1;
    });
}

}  // namespace velloran

#include "tone/PaperBlocks.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "core/Rounding.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "tone/AutoLevelsCount.h"
#include "tone/PixelMapRows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tone/PaperBlocks.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

void AddRow(const std::uint8_t* row, int count, std::uint16_t* sums, std::uint32_t* squares) {
    for (int i = 0; i < count; ++i) {
        const std::uint16_t sample = row[i];
        sums[i] = static_cast<std::uint16_t>(sums[i] + sample);
        // 255 squared fits 16 bits: the product is narrow and only the sum is wide.
        squares[i] += static_cast<std::uint16_t>(sample * sample);
    }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(AddRow);

constexpr int kSmallestBlackLevel = 7;

/// Sums down the columns of a row of blocks.
struct ColumnSums {
    std::vector<std::uint16_t> sum;  // a block has at most 12 rows
    std::vector<std::uint32_t> squares;
};

void SumBlockRow(ConstPlaneView plane, const PaperBlocks& blocks, int row, ColumnSums& columns,
                 BlockSums* out) {
    std::fill(columns.sum.begin(), columns.sum.end(), std::uint16_t{0});
    std::fill(columns.squares.begin(), columns.squares.end(), 0U);
    for (int y = 0; y < blocks.side; ++y)
        HWY_DYNAMIC_DISPATCH(AddRow)
    (plane.Row(row * blocks.side + y).data(), blocks.columns * blocks.side, columns.sum.data(),
     columns.squares.data());
    std::size_t x = 0;
    for (int block = 0; block < blocks.columns; ++block) {
        out[block] = {};
        for (int i = 0; i < blocks.side; ++i, ++x) {
            out[block].sum += columns.sum[x];
            out[block].squares += columns.squares[x];
        }
    }
}

/// The quotient is truncated toward zero, which integers do as well as floating point would.
std::uint8_t StretchToPaper(int sample, int black, int paper) {
    if (sample >= paper)
        return 255;
    if (paper == black)
        return static_cast<std::uint8_t>(sample);
    return ClampToByte((sample - black) * 256 / (paper - black));
}

}  // namespace

int PaperBlockSide(int width, int height) {
    const std::int64_t longer = std::max(width, height);
    return static_cast<int>(std::clamp<std::int64_t>((longer + 299) / 300, 7, 12));
}

PaperBlocks SumPaperBlocks(ConstPlaneView plane) {
    PaperBlocks blocks;
    blocks.side = PaperBlockSide(plane.width, plane.height);
    blocks.columns = plane.width / blocks.side;
    blocks.rows = plane.height / blocks.side;
    const auto columns = static_cast<std::size_t>(blocks.columns);
    blocks.sums.resize(columns * static_cast<std::size_t>(blocks.rows));
    const std::size_t width = columns * static_cast<std::size_t>(blocks.side);
    std::vector<ColumnSums> perThread(
        static_cast<std::size_t>(MaxThreads()),
        ColumnSums{std::vector<std::uint16_t>(width), std::vector<std::uint32_t>(width)});
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(plane))
    for (int row = 0; row < blocks.rows; ++row) {
        if (cancel.IsCancelled())
            continue;
        SumBlockRow(plane, blocks, row, perThread[static_cast<std::size_t>(ThreadNumber())],
                    blocks.sums.data() + static_cast<std::size_t>(row) * columns);
    }
    return blocks;
}

int PaperBlackLevel(ConstPlaneView plane, const PaperBlocks& blocks, double share) {
    ConstPlaneView whole = plane;
    whole.width = blocks.columns * blocks.side;
    whole.height = blocks.rows * blocks.side;
    const Histogram histogram = CountBytes(whole);
    const double pixels = static_cast<double>(whole.width) * whole.height;
    const auto target = static_cast<std::uint32_t>(TruncToInt(pixels * share));
    std::uint32_t count = 0;
    for (int level = 0; level < 256; ++level) {
        count += histogram[static_cast<std::size_t>(level)];
        if (count >= target)
            return std::max(level, kSmallestBlackLevel);
    }
    return 255;  // not reached: the share is at most the whole
}

void MakePaperTable(int black, int magnitude, PaperTable& table) {
    for (int background = 0; background < 256; ++background)
        for (int sample = 0; sample < 256; ++sample)
            table[static_cast<std::size_t>(background)][static_cast<std::size_t>(sample)] =
                StretchToPaper(sample, black, background - magnitude);
}

void MapPaperRow(const PaperTable& table, const std::uint8_t* background, int count,
                 std::uint8_t* samples) {
    // Eight at a time: the look-ups are what it costs, not the loads and stores around them.
    constexpr int kTogether = 8;
    int x = 0;
    for (; x + kTogether <= count; x += kTogether) {
        std::uint64_t papers, from, mapped = 0;
        std::memcpy(&papers, background + x, sizeof papers);
        std::memcpy(&from, samples + x, sizeof from);
        for (int i = 0; i < kTogether; ++i)
            mapped |= std::uint64_t{table[papers >> (8 * i) & 255][from >> (8 * i) & 255]}
                      << (8 * i);
        std::memcpy(samples + x, &mapped, sizeof mapped);
    }
    for (; x < count; ++x)
        samples[x] = table[background[x]][samples[x]];
}

}  // namespace velloran
#endif  // HWY_ONCE

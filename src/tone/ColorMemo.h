#pragma once

// A small memory of what colours have become: pages repeat their colours, and some of the ways to
// change one cost far more than to look it up.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "core/PlaneView.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "tone/PixelMapRows.h"

namespace velloran {

/// Remembers results by colour, 24 bits each; a new colour takes the place of another of its cell.
/// One for each thread.
class ColorMemo {
 public:
    ColorMemo() { cells_.fill({kNone, 0}); }

    /// What `work` makes of the three bytes at `pixel`, as a number of at most 32 bits. `work` is
    /// asked when they are not known, and must always give the same result for the same bytes.
    template <typename Work>
    std::uint32_t operator()(const std::uint8_t* pixel, Work&& work) {
        const std::uint32_t color =
            pixel[0] | std::uint32_t{pixel[1]} << 8 | std::uint32_t{pixel[2]} << 16;
        Cell& cell = cells_[color * kSpread >> kShift];
        if (cell.color != color)
            cell = {color, work()};
        return cell.result;
    }

 private:
    static constexpr int kBits = 12;  // 32 KB
    static constexpr int kShift = 32 - kBits;
    static constexpr std::uint32_t kSpread = 2654435769U;  // 2^32 over the golden ratio
    static constexpr std::uint32_t kNone = 0xFFFFFFFF;     // no colour of 24 bits

    struct Cell {
        std::uint32_t color, result;
    };

    std::array<Cell, std::size_t{1} << kBits> cells_;
};

/// Every pixel of a view of 3 channels becomes `work(pixel)`, blue in the lowest byte; rows in
/// parallel.
template <typename Work>
void MapColors(PlaneView pixels, const Work& work) {
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel if (IsWorthThreads(pixels))
    {
        ColorMemo memo;
#pragma omp for schedule(static)
        for (int y = 0; y < pixels.height; ++y) {
            if (cancel.IsCancelled())
                continue;
            const std::span<std::uint8_t> row = pixels.Row(y);
            for (std::uint8_t* pixel = row.data(); pixel < row.data() + row.size(); pixel += 3) {
                const std::uint32_t color = memo(pixel, [&] { return work(pixel); });
                for (int c = 0; c < 3; ++c)
                    pixel[c] = static_cast<std::uint8_t>(color >> 8 * c);
            }
        }
    }
}

}  // namespace velloran

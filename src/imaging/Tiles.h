#pragma once

// A plane worked on in tiles that fit the first-level cache: the samples that a tile's results
// depend on are laid out in the type that the sums want, then each row of results is made from
// them.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/PlaneView.h"
#include "core/StepContext.h"
#include "core/Threads.h"

namespace velloran {

inline constexpr int kMostTileWidth = 2048;  // samples

struct TileShape {
    int width = 0, rows = 0;            // of results; width in samples
    int extraWidth = 0, extraRows = 0;  // further samples that they depend on
    int stride = 0;                     // samples from a laid-out row to the next
};

/// A shape for results that depend on `extraWidth` more samples and `extraRows` more rows. The
/// stride leaves room for reading `block` samples at a time.
inline TileShape ShapeOfTiles(int extraWidth, int extraRows, int sampleBytes, int block) {
    constexpr int kTileBytes = 24 * 1024, kLeastWidth = 64;
    TileShape shape;
    shape.extraWidth = extraWidth;
    shape.extraRows = extraRows;
    // Rows of results that share what is laid out for each of them.
    shape.rows = std::clamp(2 * extraRows, 1, 128);
    const int fitting = kTileBytes / sampleBytes / (shape.rows + extraRows) - extraWidth;
    shape.width = std::clamp(fitting / block * block, kLeastWidth, kMostTileWidth);
    shape.stride = shape.width + (extraWidth + block - 1) / block * block;
    return shape;
}

/// A tile for each thread.
template <typename Sample>
using Tiles = std::vector<std::vector<Sample>>;

/// Throws std::bad_alloc.
template <typename Sample>
Tiles<Sample> MakeTiles(const TileShape& shape) {
    const auto rows = static_cast<std::size_t>(shape.rows + shape.extraRows);
    return Tiles<Sample>(static_cast<std::size_t>(MaxThreads()),
                         std::vector<Sample>(static_cast<std::size_t>(shape.stride) * rows));
}

/// `layOut(y, first, count, samples)` lays out the `count` samples that results from `first` on of
/// row y begin with, where y runs up to extraRows past the last; `work(samples, count, out)` makes
/// a row of results. Tiles in parallel; those that are left when the work is cancelled are not
/// made.
template <typename Sample, typename LayOut, typename Work>
void ForEachTile(const TileShape& shape, Tiles<Sample>& tiles, PlaneView target, LayOut&& layOut,
                 Work&& work) {
    const int count = target.width * target.channels;
    if (count == 0 || target.height == 0)
        return;
    const int across = (count - 1) / shape.width + 1, down = (target.height - 1) / shape.rows + 1;
    const std::int64_t samples = std::int64_t{count} * target.height;
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(samples))
    for (std::int64_t i = 0; i < std::int64_t{across} * down; ++i) {
        if (cancel.IsCancelled())
            continue;
        Sample* tile = tiles[static_cast<std::size_t>(ThreadNumber())].data();
        const int x = static_cast<int>(i % across) * shape.width;
        const int y = static_cast<int>(i / across) * shape.rows;
        const int width = std::min(shape.width, count - x);
        const int rows = std::min(shape.rows, target.height - y);
        for (int k = 0; k < rows + shape.extraRows; ++k)
            layOut(y + k, x, width + shape.extraWidth,
                   tile + static_cast<std::ptrdiff_t>(k) * shape.stride);
        for (int k = 0; k < rows; ++k)
            work(tile + static_cast<std::ptrdiff_t>(k) * shape.stride, width,
                 target.Row(y + k).data() + x);
    }
}

}  // namespace velloran

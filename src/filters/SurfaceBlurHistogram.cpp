#include "filters/SurfaceBlurHistogram.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "core/DibImage.h"
#include "core/PixelMemory.h"
#include "core/Rounding.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "filters/SurfaceBlurForms.h"

namespace velloran {
namespace {

/// The counts of a strip stay in the cache of a processor, those of a whole row would not.
constexpr int kStripColumns = 512;
/// Each band of rows counts its first window anew.
constexpr int kBandRows = 256;

LevelWeights LinearWeights(int threshold) {
    LevelWeights weights;
    weights.reach = TruncToInt(threshold * 2.5);
    for (int d = -255; d <= 255; ++d)
        weights.table[static_cast<std::size_t>(d + 255)] =
            static_cast<std::int16_t>(std::max(0, 2500 - std::abs(d) * 1000 / threshold));
    return weights;
}

LevelWeights EqualWeights(int threshold) {
    LevelWeights weights;
    weights.reach = threshold;
    for (int d = -threshold; d <= threshold; ++d)
        weights.table[static_cast<std::size_t>(d + 255)] = 1;
    return weights;
}

/// Indices of a side extended by `radius` at both ends, the edge sample not repeated.
std::vector<int> MirrorIndexes(int size, int radius) {
    std::vector<int> indexes;
    indexes.reserve(static_cast<std::size_t>(size) + static_cast<std::size_t>(2 * radius));
    for (int x = -radius; x < size + radius; ++x) {
        int index = x;
        if (x < 0)
            for (index = -x; index >= size;)
                index -= size;
        else if (x >= size)
            for (index = 2 * size - x - 2; index < 0;)
                index += size;
        indexes.push_back(index);
    }
    return indexes;
}

/// One pass from `source` to `target`.
struct Pass {
    ConstPlaneView source;
    PlaneView target;
    const LevelWeights& weights;
    int radius;
    std::vector<int> columns, rows;    // mirrored, from -radius on
    std::vector<ColumnCounts> counts;  // of each thread

    Pass(ConstPlaneView from, PlaneView to, const LevelWeights& levelWeights, int windowRadius)
        : source(from),
          target(to),
          weights(levelWeights),
          radius(windowRadius),
          columns(MirrorIndexes(from.width, windowRadius)),
          rows(MirrorIndexes(from.height, windowRadius)) {
        const int widest = std::min(from.width, kStripColumns) + 2 * windowRadius;
        for (int thread = 0; thread < MaxThreads(); ++thread)
            counts.emplace_back(widest);
    }

    BasicChannelRow<const std::uint8_t> MirroredRow(int y, int channel) const {
        return source.Channel(channel).Row(rows[static_cast<std::size_t>(y + radius)]);
    }
};

/// A channel of some rows of some columns.
struct Tile {
    int channel, left, width, top, bottom;
};

void AddRow(const Pass& pass, const Tile& tile, int y, ColumnCounts& counts) {
    const auto row = pass.MirroredRow(y, tile.channel);
    const int* column = pass.columns.data() + tile.left;
    for (int i = 0; i < tile.width + 2 * pass.radius; ++i)
        counts.Add(i, row[column[i]]);
}

/// Moves the window from row y - 1 to row y.
void MoveToRow(const Pass& pass, const Tile& tile, int y, ColumnCounts& counts) {
    const auto out = pass.MirroredRow(y - pass.radius - 1, tile.channel);
    const auto in = pass.MirroredRow(y + pass.radius, tile.channel);
    const int* column = pass.columns.data() + tile.left;
    for (int i = 0; i < tile.width + 2 * pass.radius; ++i) {
        counts.Remove(i, out[column[i]]);
        counts.Add(i, in[column[i]]);
    }
}

void BlurTile(const Pass& pass, const Tile& tile, ColumnCounts& counts) {
    counts.Clear(tile.width + 2 * pass.radius);
    for (int y = tile.top - pass.radius; y <= tile.top + pass.radius; ++y)
        AddRow(pass, tile, y, counts);
    const int height = tile.bottom - tile.top;
    const auto from =
        pass.source.Crop(tile.left, tile.top, tile.width, height).Channel(tile.channel);
    const auto to = pass.target.Crop(tile.left, tile.top, tile.width, height).Channel(tile.channel);
    for (int y = tile.top; y < tile.bottom; ++y) {
        if (y > tile.top)
            MoveToRow(pass, tile, y, counts);
        BlurHistogramRow({&counts, &pass.weights, from.Row(y - tile.top).first,
                          to.Row(y - tile.top).first, from.step, tile.width, pass.radius});
    }
}

/// Tiles share nothing but the source, and the sums are integers: their order does not matter.
void RunPass(Pass& pass) {
    const int strips = (pass.source.width + kStripColumns - 1) / kStripColumns;
    const int bands = (pass.source.height + kBandRows - 1) / kBandRows;
    const int tiles = strips * bands * pass.source.channels;
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(dynamic) if (IsWorthThreads(pass.source))
    for (int i = 0; i < tiles; ++i) {
        if (cancel.IsCancelled())
            continue;
        const int channel = i % pass.source.channels, place = i / pass.source.channels;
        const int left = place % strips * kStripColumns, top = place / strips * kBandRows;
        BlurTile(pass,
                 {channel, left, std::min(kStripColumns, pass.source.width - left), top,
                  std::min(top + kBandRows, pass.source.height)},
                 pass.counts[static_cast<std::size_t>(ThreadNumber())]);
    }
}

void CopyRows(ConstPlaneView from, PlaneView to) {
#pragma omp parallel for schedule(static) if (IsWorthThreads(to))
    for (int y = 0; y < to.height; ++y)
        std::copy_n(from.Row(y).data(), to.Row(y).size(), to.Row(y).data());
}

void BlurWithWeights(CDibImage& image, int radius, const LevelWeights& weights, int times) {
    const PlaneView pixels = ViewOf(image);
    const std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(pixels.width) * pixels.channels;
    const PixelBuffer memory =
        MakePixelBuffer(static_cast<std::size_t>(stride) * static_cast<std::size_t>(pixels.height));
    const PlaneView before{memory.get(), pixels.width, pixels.height, pixels.channels, stride};
    Pass pass(before, pixels, weights, radius);
    const CancelToken cancel = CurrentCancel();
    for (int i = 0; i < times && !cancel.IsCancelled(); ++i) {
        CopyRows(pixels, before);
        RunPass(pass);
    }
}

}  // namespace

void BlurByHistograms(CDibImage& image, int radius, int threshold, int times) {
    BlurWithWeights(image, radius, LinearWeights(threshold), times);
}

void BlurSelectiveMean(CDibImage& image, int radius, int threshold, int times) {
    BlurWithWeights(image, radius, EqualWeights(threshold), times);
}

}  // namespace velloran

#include "imaging/Separable.h"

#include <algorithm>
#include <vector>

#include "core/PixelMemory.h"
#include "imaging/FilterBands.h"
#include "imaging/Reflect.h"
#include "imaging/SampleSums.h"
#include "imaging/Tiles.h"

namespace velloran {
namespace {

/// Along rows; `store(sums, samples, count, out)` for each row of a tile.
template <typename Store>
void FilterRowsInTiles(ConstPlaneView source, std::span<const std::int32_t> taps,
                       std::int32_t divisor, PlaneView target, Store&& store) {
    const int channels = target.channels, reach = static_cast<int>(taps.size() / 2);
    TileShape shape = ShapeOfTiles(2 * reach * channels, 0, sizeof(std::uint16_t), kSumBlock);
    shape.width -= shape.width % channels;  // tiles begin with whole pixels
    const SampleSums sums(TapsAt(taps, channels), divisor);
    Tiles<std::uint16_t> tiles = MakeTiles<std::uint16_t>(shape);
    ForEachTile(
        shape, tiles, target,
        [&](int y, int first, int count, std::uint16_t* samples) {
            WidenReflected(source.Row(y), channels, first / channels - reach, count / channels,
                           samples);
        },
        [&](const std::uint16_t* samples, int count, std::uint8_t* out) {
            store(sums, samples, count, out);
        });
}

void FilterInTwoPasses(PlaneView pixels, std::span<const std::int32_t> taps, std::int32_t divisor,
                       const MixSamples& mix) {
    const std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(pixels.width) * pixels.channels;
    const PixelBuffer memory =
        MakePixelBuffer(static_cast<std::size_t>(stride) * static_cast<std::size_t>(pixels.height));
    const PlaneView between{memory.get(), pixels.width, pixels.height, pixels.channels, stride};
    FilterColumns(pixels, taps, divisor, between);
    if (!mix) {
        FilterRows(between, taps, divisor, pixels);
        return;
    }
    FilterRowsInTiles(
        between, taps, divisor, pixels,
        [&](const SampleSums& sums, const std::uint16_t* samples, int count, std::uint8_t* out) {
            std::uint8_t filtered[kMostTileWidth];
            sums.Row(samples, count, filtered);
            mix(filtered, count, out);
        });
}

}  // namespace

void FilterColumns(ConstPlaneView source, std::span<const std::int32_t> taps, std::int32_t divisor,
                   PlaneView target) {
    const int reach = static_cast<int>(taps.size() / 2);
    const TileShape shape = ShapeOfTiles(0, 2 * reach, sizeof(std::uint16_t), kSumBlock);
    const SampleSums sums(TapsAt(taps, shape.stride), divisor);
    Tiles<std::uint16_t> tiles = MakeTiles<std::uint16_t>(shape);
    ForEachTile(
        shape, tiles, target,
        [&](int y, int first, int count, std::uint16_t* samples) {
            Widen(source.Row(Reflect(y - reach, source.height)).data() + first, count, samples);
        },
        [&](const std::uint16_t* samples, int count, std::uint8_t* out) {
            sums.Row(samples, count, out);
        });
}

void FilterRows(ConstPlaneView source, std::span<const std::int32_t> taps, std::int32_t divisor,
                PlaneView target) {
    FilterRowsInTiles(source, taps, divisor, target,
                      [](const SampleSums& sums, const std::uint16_t* samples, int count,
                         std::uint8_t* out) { sums.Row(samples, count, out); });
}

void FilterInPlace(PlaneView pixels, std::span<const std::int32_t> taps, std::int32_t divisor,
                   const MixSamples& mix) {
    if (FitsInBands(pixels, taps.size()))
        FilterInBands(pixels, taps, divisor, mix);
    else
        FilterInTwoPasses(pixels, taps, divisor, mix);
}

}  // namespace velloran

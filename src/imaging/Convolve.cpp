#include "imaging/Convolve.h"

#include <cmath>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

#include "core/Rounding.h"
#include "core/SimdTarget.h"
#include "imaging/TapGroups.h"
#include "imaging/Tiles.h"

namespace velloran {
namespace {

VELLORAN_SIMD_CLONES
void Widen(const std::uint8_t* samples, int count, std::uint16_t* out) {
    for (int i = 0; i < count; ++i)
        out[i] = samples[i];
}

VELLORAN_SIMD_CLONES
void Widen(const std::uint8_t* samples, int count, float* out) {
    for (int i = 0; i < count; ++i)
        out[i] = static_cast<float>(samples[i]);
}

/// The slow way for weights of any size.
void SumExactly(std::span<const Tap> taps, std::int64_t divisor, const std::uint16_t* samples,
                int count, std::uint8_t* out) {
    for (int i = 0; i < count; ++i) {
        std::int64_t sum = 0;
        for (const Tap& tap : taps)
            sum += std::int64_t{tap.weight} * samples[i + tap.offset];
        out[i] = sum <= 0 ? 0 : ClampToByte(sum / divisor + (sum % divisor * 2 >= divisor ? 1 : 0));
    }
}

/// Calls `store(sum, samples, count, out)` for each row of a tile, where `sum` makes the results.
template <typename LayOut, typename Store>
void SumInTiles(const TileShape& shape, std::span<const Tap> taps, std::int32_t divisor,
                PlaneView target, LayOut&& layOut, Store&& store) {
    Tiles<std::uint16_t> tiles = MakeTiles<std::uint16_t>(shape);
    if (TapGroups::CanHold(taps, divisor)) {
        const TapGroups groups(taps, divisor);
        const SumTaps sumTaps = BestSumTaps();
        const auto sum = [&](const std::uint16_t* samples, int count, std::uint8_t* out) {
            sumTaps(groups, samples, count, out);
        };
        ForEachTile(shape, tiles, target, layOut,
                    [&](const std::uint16_t* samples, int count, std::uint8_t* out) {
                        store(sum, samples, count, out);
                    });
        return;
    }
    const auto sum = [&](const std::uint16_t* samples, int count, std::uint8_t* out) {
        SumExactly(taps, divisor, samples, count, out);
    };
    ForEachTile(shape, tiles, target, layOut,
                [&](const std::uint16_t* samples, int count, std::uint8_t* out) {
                    store(sum, samples, count, out);
                });
}

template <typename LayOut>
void SumInTiles(const TileShape& shape, std::span<const Tap> taps, std::int32_t divisor,
                PlaneView target, LayOut&& layOut) {
    SumInTiles(shape, taps, divisor, target, layOut,
               [](auto&& sum, const std::uint16_t* samples, int count, std::uint8_t* out) {
                   sum(samples, count, out);
               });
}

/// The samples of a kernel of `size` x `size` weights in a tile.
template <typename Weight>
std::vector<std::pair<std::int32_t, Weight>> PlacesOf(std::span<const Weight> weights, int size,
                                                      int channels, int stride) {
    std::vector<std::pair<std::int32_t, Weight>> places;
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x)
            places.emplace_back(y * stride + x * channels,
                                weights[static_cast<std::size_t>(y * size + x)]);
    return places;
}

template <typename Sample>
auto LayOutOf(ConstPlaneView source) {
    return [source](int y, int first, int count, Sample* samples) {
        Widen(source.Row(y).data() + first, count, samples);
    };
}

constexpr int kFloatBlock = 32;

/// The sums of `kFloatBlock` samples stay in registers from the first weight to the last.
VELLORAN_SIMD_CLONES
void SumFloats(const std::pair<std::int32_t, float>* taps, std::size_t tapCount,
               const float* samples, int count, std::uint8_t* out) {
    using Floats [[gnu::vector_size(32)]] = float;
    constexpr int kLanes = 8, kParts = kFloatBlock / kLanes;
    for (int x = 0; x < count; x += kFloatBlock) {
        Floats sums[kParts] = {};
        for (std::size_t k = 0; k < tapCount; ++k) {
            const float* from = samples + x + taps[k].first;
            for (int part = 0; part < kParts; ++part) {
                Floats values;
                std::memcpy(&values, from + part * kLanes, sizeof values);
                sums[part] += taps[k].second * values;
            }
        }
        float whole[kFloatBlock];
        std::memcpy(whole, sums, sizeof whole);
        for (int i = 0; i < kFloatBlock && x + i < count; ++i) {
            const float value = whole[i] + 0.5F;
            const float limited = value < 0.0F ? 0.0F : (value > 255.0F ? 255.0F : value);
            out[x + i] = static_cast<std::uint8_t>(static_cast<int>(limited));
        }
    }
}

/// The weights as integers, empty where one of them is none or sums might not be exact.
std::vector<std::int32_t> WholeWeights(std::span<const float> weights) {
    std::vector<std::int32_t> whole;
    for (const float weight : weights) {
        if (!(std::abs(weight) <= 255.0F) || weight != std::trunc(weight))
            return {};
        whole.push_back(static_cast<std::int32_t>(weight));
    }
    return whole;
}

/// Row or column -1 - i is i, folded again while it lies outside.
int Reflect(int index, int size) {
    if (index >= 0 && index < size)
        return index;
    const std::int64_t period = std::int64_t{2} * size;
    std::int64_t at = (index % period + period) % period;
    if (at >= size)
        at = period - 1 - at;
    return static_cast<int>(at);
}

/// A run of whole pixels of a row that may begin and end outside.
void LayOutReflected(std::span<const std::uint8_t> row, int channels, int firstPixel, int pixels,
                     std::uint16_t* samples) {
    const int width = static_cast<int>(row.size()) / channels;
    const auto outside = [&](int from, int to) {
        for (int i = from; i < to; ++i)
            Widen(row.data() + static_cast<std::ptrdiff_t>(Reflect(i, width)) * channels, channels,
                  samples + static_cast<std::ptrdiff_t>(i - firstPixel) * channels);
    };
    const int end = firstPixel + pixels;
    const int from = std::clamp(0, firstPixel, end), to = std::clamp(width, from, end);
    outside(firstPixel, from);
    Widen(row.data() + static_cast<std::ptrdiff_t>(from) * channels, (to - from) * channels,
          samples + static_cast<std::ptrdiff_t>(from - firstPixel) * channels);
    outside(to, end);
}

/// What both ways of filtering rows share.
struct RowFilter {
    RowFilter(std::span<const std::int32_t> weights, int channels)
        : shape(ShapeOfTiles((static_cast<int>(weights.size()) - 1) * channels, 0,
                             sizeof(std::uint16_t), kSumBlock)) {
        shape.width -= shape.width % channels;  // tiles begin with whole pixels
        for (std::size_t k = 0; k < weights.size(); ++k)
            taps.push_back({static_cast<std::int32_t>(k) * channels, weights[k]});
    }

    auto LayOutOf(ConstPlaneView source) const {
        const int reach = static_cast<int>(taps.size() / 2);
        return [source, reach](int y, int first, int count, std::uint16_t* samples) {
            LayOutReflected(source.Row(y), source.channels, first / source.channels - reach,
                            count / source.channels, samples);
        };
    }

    TileShape shape;
    std::vector<Tap> taps;
};

}  // namespace

void ConvolveInt(ConstPlaneView source, std::span<const std::int32_t> weights, int size,
                 std::int32_t divisor, PlaneView target) {
    const TileShape shape =
        ShapeOfTiles((size - 1) * target.channels, size - 1, sizeof(std::uint16_t), kSumBlock);
    std::vector<Tap> taps;
    for (const auto& [offset, weight] : PlacesOf(weights, size, target.channels, shape.stride))
        taps.push_back({offset, weight});
    SumInTiles(shape, taps, divisor, target, LayOutOf<std::uint16_t>(source));
}

struct FloatConvolver::Form {
    TileShape shape;
    std::optional<TapGroups> groups;  // for whole weights
    Tiles<std::uint16_t> wholeTiles;
    std::vector<std::pair<std::int32_t, float>> taps;  // for others: offset, weight
    Tiles<float> tiles;
};

FloatConvolver::FloatConvolver(std::span<const float> weights, int size, int channels)
    : form_(std::make_unique<Form>()) {
    // Float sums of whole weights are exact, so the quicker integers give the same.
    const std::vector<std::int32_t> whole = WholeWeights(weights);
    const int extraWidth = (size - 1) * channels, extraRows = size - 1;
    if (!whole.empty()) {
        form_->shape = ShapeOfTiles(extraWidth, extraRows, sizeof(std::uint16_t), kSumBlock);
        std::vector<Tap> taps;
        for (const auto& [offset, weight] :
             PlacesOf(std::span<const std::int32_t>(whole), size, channels, form_->shape.stride))
            taps.push_back({offset, weight});
        if (TapGroups::CanHold(taps, 1)) {
            form_->groups.emplace(taps, 1);
            form_->wholeTiles = MakeTiles<std::uint16_t>(form_->shape);
            return;
        }
    }
    form_->shape = ShapeOfTiles(extraWidth, extraRows, sizeof(float), kFloatBlock);
    form_->taps = PlacesOf(weights, size, channels, form_->shape.stride);
    form_->tiles = MakeTiles<float>(form_->shape);
}

FloatConvolver::~FloatConvolver() = default;

void FloatConvolver::Run(ConstPlaneView source, PlaneView target) {
    if (form_->groups) {
        const SumTaps sum = BestSumTaps();
        ForEachTile(form_->shape, form_->wholeTiles, target, LayOutOf<std::uint16_t>(source),
                    [&](const std::uint16_t* samples, int count, std::uint8_t* out) {
                        sum(*form_->groups, samples, count, out);
                    });
        return;
    }
    ForEachTile(form_->shape, form_->tiles, target, LayOutOf<float>(source),
                [&](const float* samples, int count, std::uint8_t* out) {
                    SumFloats(form_->taps.data(), form_->taps.size(), samples, count, out);
                });
}

void ConvolveFloat(ConstPlaneView source, std::span<const float> weights, int size,
                   PlaneView target) {
    FloatConvolver(weights, size, target.channels).Run(source, target);
}

void FilterColumns(ConstPlaneView source, std::span<const std::int32_t> taps, std::int32_t divisor,
                   PlaneView target) {
    const int length = static_cast<int>(taps.size()), reach = length / 2;
    const TileShape shape = ShapeOfTiles(0, length - 1, sizeof(std::uint16_t), kSumBlock);
    std::vector<Tap> places;
    for (int k = 0; k < length; ++k)
        places.push_back({k * shape.stride, taps[static_cast<std::size_t>(k)]});
    SumInTiles(
        shape, places, divisor, target, [&](int y, int first, int count, std::uint16_t* samples) {
            Widen(source.Row(Reflect(y - reach, source.height)).data() + first, count, samples);
        });
}

void FilterRows(ConstPlaneView source, std::span<const std::int32_t> taps, std::int32_t divisor,
                PlaneView target) {
    const RowFilter filter(taps, target.channels);
    SumInTiles(filter.shape, filter.taps, divisor, target, filter.LayOutOf(source));
}

void FilterRowsMixed(ConstPlaneView source, std::span<const std::int32_t> taps,
                     std::int32_t divisor, PlaneView target, const MixSamples& mix) {
    const RowFilter filter(taps, target.channels);
    SumInTiles(filter.shape, filter.taps, divisor, target, filter.LayOutOf(source),
               [&](auto&& sum, const std::uint16_t* samples, int count, std::uint8_t* out) {
                   std::uint8_t filtered[kMostTileWidth];
                   sum(samples, count, filtered);
                   mix(filtered, count, out);
               });
}

}  // namespace velloran

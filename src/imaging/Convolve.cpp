#include "imaging/Convolve.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

#include "imaging/SampleSums.h"
#include "imaging/TapGroups.h"
#include "imaging/Tiles.h"

#ifndef VELLORAN_FLOAT_TAPS  // the rest of the file is read once for each form
#define VELLORAN_FLOAT_TAPS
namespace velloran {
namespace {

using FloatTap = std::pair<std::int32_t, float>;  // offset, weight

constexpr int kFloatBlock = 32;

}  // namespace
}  // namespace velloran
#endif

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/Convolve.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;
using Floats = hn::ScalableTag<float>;

/// The sums of kFloatBlock samples stay in registers from the first weight to the last.
#if HWY_TARGET == HWY_SCALAR
void SumBlock(const FloatTap* taps, std::size_t tapCount, const float* samples, float* sums) {
    std::fill_n(sums, kFloatBlock, 0.0F);
    for (std::size_t k = 0; k < tapCount; ++k)
        for (int i = 0; i < kFloatBlock; ++i)
            sums[i] += taps[k].second * samples[taps[k].first + i];
}
#else
HWY_INLINE void SumBlock(const FloatTap* taps, std::size_t tapCount, const float* samples,
                         float* sums) {
    constexpr int kLanes = HWY_LANES(float), kParts = kFloatBlock / kLanes;
    const Floats floats;
    hn::Vec<Floats> parts[kParts];
    for (auto& part : parts)
        part = hn::Zero(floats);
    for (std::size_t k = 0; k < tapCount; ++k) {
        const auto weight = hn::Set(floats, taps[k].second);
        const float* from = samples + taps[k].first;
        // Product and sum are rounded each: a fused one would give other bytes.
        for (int i = 0; i < kParts; ++i)
            parts[i] = hn::Add(parts[i], hn::Mul(weight, hn::LoadU(floats, from + i * kLanes)));
    }
    for (int i = 0; i < kParts; ++i)
        hn::StoreU(parts[i], floats, sums + i * kLanes);
}
#endif

void SumFloats(const FloatTap* taps, std::size_t tapCount, const float* samples, int count,
               std::uint8_t* out) {
    for (int x = 0; x < count; x += kFloatBlock) {
        float sums[kFloatBlock];
        SumBlock(taps, tapCount, samples + x, sums);
        const int length = std::min(kFloatBlock, count - x);
        for (int i = 0; i < length; ++i) {
            const float value = sums[i] + 0.5F;
            const float limited = value < 0.0F ? 0.0F : (value > 255.0F ? 255.0F : value);
            out[x + i] = static_cast<std::uint8_t>(static_cast<int>(limited));
        }
    }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(SumFloats);

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

}  // namespace

void ConvolveInt(ConstPlaneView source, std::span<const std::int32_t> weights, int size,
                 std::int32_t divisor, PlaneView target) {
    const TileShape shape =
        ShapeOfTiles((size - 1) * target.channels, size - 1, sizeof(std::uint16_t), kSumBlock);
    std::vector<Tap> taps;
    for (const auto& [offset, weight] : PlacesOf(weights, size, target.channels, shape.stride))
        taps.push_back({offset, weight});
    const SampleSums sums(taps, divisor);
    Tiles<std::uint16_t> tiles = MakeTiles<std::uint16_t>(shape);
    ForEachTile(shape, tiles, target, LayOutOf<std::uint16_t>(source),
                [&](const std::uint16_t* samples, int count, std::uint8_t* out) {
                    sums.Row(samples, count, out);
                });
}

struct FloatConvolver::Form {
    TileShape shape;
    std::optional<TapGroups> groups;  // for whole weights
    Tiles<std::uint16_t> wholeTiles;
    std::vector<FloatTap> taps;  // for others
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
        ForEachTile(form_->shape, form_->wholeTiles, target, LayOutOf<std::uint16_t>(source),
                    [&](const std::uint16_t* samples, int count, std::uint8_t* out) {
                        SumTaps(*form_->groups, samples, count, out);
                    });
        return;
    }
    ForEachTile(form_->shape, form_->tiles, target, LayOutOf<float>(source),
                [&](const float* samples, int count, std::uint8_t* out) {
                    HWY_DYNAMIC_DISPATCH(SumFloats)
                    (form_->taps.data(), form_->taps.size(), samples, count, out);
                });
}

void ConvolveFloat(ConstPlaneView source, std::span<const float> weights, int size,
                   PlaneView target) {
    FloatConvolver(weights, size, target.channels).Run(source, target);
}

}  // namespace velloran
#endif  // HWY_ONCE

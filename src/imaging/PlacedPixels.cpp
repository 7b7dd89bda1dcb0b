#include "imaging/PlacedPixels.h"

#include <array>
#include <cstddef>
#include <cstring>

#include "imaging/CubicSample.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "imaging/PlacedPixels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

// Pairs of products are added as the words of these processors lie.
#undef VELLORAN_PAIRS_ADD
#if HWY_ARCH_X86 && HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128
#define VELLORAN_PAIRS_ADD 1
#else
#define VELLORAN_PAIRS_ADD 0
#endif

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

void PlaceColumns(const ColumnTerms& c, int count, double v, int sourceWidth, int sourceHeight,
                  PixelPlaces places) {
    const double right = sourceWidth - 0.5, below = sourceHeight - 0.5;
    for (int i = 0; i < count; ++i) {
        const double inverse = 1.0 / (c.w0[i] + c.w1[i] * v);
        const double x = (c.x0[i] + c.x1[i] * v) * inverse;
        const double y = (c.y0[i] + c.y1[i] * v) * inverse;
        const bool isInside = (x >= -0.5) & (y >= -0.5) & (x < right) & (y < below);
        // A pixel is added so that the conversion, which goes toward zero, rounds.
        const double safeX = isInside ? x + 1 : 0.0, safeY = isInside ? y + 1 : 0.0;
        const auto stepX = static_cast<std::int32_t>(safeX * kCubicSteps + 0.5) - kCubicSteps;
        places.x[i] = isInside ? stepX : kOutsideSource;
        places.y[i] = static_cast<std::int32_t>(safeY * kCubicSteps + 0.5) - kCubicSteps;
    }
}

#if VELLORAN_PAIRS_ADD
namespace hn = hwy::HWY_NAMESPACE;
using Bytes = hn::FixedTag<std::uint8_t, 16>;
using Words = hn::FixedTag<std::int16_t, 8>;
using Sums = hn::FixedTag<std::int32_t, 4>;

/// The weights of a fraction twice over.
struct TwiceWeights {
    alignas(16) std::array<std::array<std::int16_t, 8>, kCubicSteps> rows{};
    constexpr TwiceWeights() {
        for (std::size_t step = 0; step < rows.size(); ++step)
            for (std::size_t i = 0; i < 8; ++i)
                rows[step][i] = kCubicWeights[step][i % 4];
    }
};
constexpr TwiceWeights kTwiceWeights;

template <class Vector>
HWY_INLINE auto AddPairs(Vector words, Vector weights) {
    auto unused = hn::Zero(Sums());
    return hn::ReorderWidenMulAccumulate(Sums(), words, weights, hn::Zero(Sums()), unused);
}

/// [a0 + a1, a2 + a3, b0 + b1, b2 + b3]
template <class Vector>
HWY_INLINE Vector AddNeighbors(Vector a, Vector b) {
    return hn::Add(hn::ConcatEven(Sums(), b, a), hn::ConcatOdd(Sums(), b, a));
}

constexpr int kBetween = 3, kShift = 21;  // as CubicSample rounds

/// Rows of four pixels of 3 channels; 16 bytes of each are there.
HWY_INLINE void CubicColor(const std::uint8_t* from, std::ptrdiff_t stride,
                           const std::int16_t* across, const std::int16_t* down,
                           std::uint8_t* out) {
    alignas(16) static constexpr std::uint8_t kBlueGreen[16] = {0, 128, 3, 128, 6, 128, 9,  128,
                                                                1, 128, 4, 128, 7, 128, 10, 128};
    alignas(16) static constexpr std::uint8_t kRed[16] = {2,   128, 5,   128, 8,   128, 11,  128,
                                                          128, 128, 128, 128, 128, 128, 128, 128};
    const auto blueGreen = hn::Load(Bytes(), kBlueGreen), red = hn::Load(Bytes(), kRed);
    const auto weights = hn::Load(Words(), across);
    auto sum = hn::Set(Sums(), 1 << (kShift - 1));
    for (int j = 0; j < 4; ++j, from += stride) {
        const auto bytes = hn::LoadU(Bytes(), from);
        const auto line = AddNeighbors(
            AddPairs(hn::BitCast(Words(), hn::TableLookupBytesOr0(bytes, blueGreen)), weights),
            AddPairs(hn::BitCast(Words(), hn::TableLookupBytesOr0(bytes, red)), weights));
        sum = hn::Add(sum, hn::Mul(hn::ShiftRight<kBetween>(line), hn::Set(Sums(), down[j])));
    }
    const hn::FixedTag<std::uint8_t, 4> four;
    alignas(16) std::uint8_t pixel[4];
    hn::Store(hn::DemoteTo(four, hn::ShiftRight<kShift>(sum)), four, pixel);
    std::memcpy(out, pixel, 3);
}

HWY_INLINE void CubicGray(const std::uint8_t* from, std::ptrdiff_t stride,
                          const std::int16_t* across, const std::int16_t* down, std::uint8_t* out) {
    alignas(16) std::uint8_t rows[16];
    for (int j = 0; j < 4; ++j)
        std::memcpy(rows + 4 * j, from + j * stride, 4);
    const auto bytes = hn::Load(Bytes(), rows), none = hn::Zero(Bytes());
    const auto weights = hn::Load(Words(), across);
    const auto lines = AddNeighbors(
        AddPairs(hn::BitCast(Words(), hn::InterleaveLower(Bytes(), bytes, none)), weights),
        AddPairs(hn::BitCast(Words(), hn::InterleaveUpper(Bytes(), bytes, none)), weights));
    const auto rowWeights = hn::PromoteTo(Sums(), hn::LoadU(hn::FixedTag<std::int16_t, 4>(), down));
    alignas(16) std::int32_t parts[4];
    hn::Store(hn::Mul(hn::ShiftRight<kBetween>(lines), rowWeights), Sums(), parts);
    const std::int32_t sum = (1 << (kShift - 1)) + parts[0] + parts[1] + parts[2] + parts[3];
    *out = static_cast<std::uint8_t>(std::clamp(sum >> kShift, 0, 255));
}

template <int kChannels>
void CubicRow(ConstPlaneView source, PixelPlaces places, int count, std::uint8_t* out) {
    // A vector reads a little further than the last of its pixels.
    const int lastLeft = source.width - (kChannels == 3 ? 6 : 4), lastTop = source.height - 4;
    for (int i = 0; i < count; ++i, out += kChannels) {
        if (places.x[i] == kOutsideSource)
            continue;
        const int left = (places.x[i] >> 8) - 1, top = (places.y[i] >> 8) - 1;
        if (left < 0 || top < 0 || left > lastLeft || top > lastTop) {
            CubicSample<kChannels>(source, places.x[i], places.y[i], out);
            continue;
        }
        const std::uint8_t* from =
            source.first + top * source.stride + static_cast<std::ptrdiff_t>(left) * kChannels;
        const std::int16_t* across =
            kTwiceWeights.rows[static_cast<std::size_t>(places.x[i] & 255)].data();
        const std::int16_t* down =
            kCubicWeights[static_cast<std::size_t>(places.y[i] & 255)].data();
        if constexpr (kChannels == 3)
            CubicColor(from, source.stride, across, down, out);
        else
            CubicGray(from, source.stride, across, down, out);
    }
}
#else
template <int kChannels>
void CubicRow(ConstPlaneView source, PixelPlaces places, int count, std::uint8_t* out) {
    for (int i = 0; i < count; ++i, out += kChannels)
        if (places.x[i] != kOutsideSource)
            CubicSample<kChannels>(source, places.x[i], places.y[i], out);
}
#endif

void CubicPixelsOf(ConstPlaneView source, PixelPlaces places, int count, std::uint8_t* out) {
    if (source.channels == 3)
        CubicRow<3>(source, places, count, out);
    else
        CubicRow<1>(source, places, count, out);
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {
HWY_EXPORT(PlaceColumns);
HWY_EXPORT(CubicPixelsOf);
}  // namespace

void PlaceRow(const ColumnTerms& columns, int count, double v, int sourceWidth, int sourceHeight,
              PixelPlaces places) {
    HWY_DYNAMIC_DISPATCH(PlaceColumns)
    (columns, count, v, sourceWidth, sourceHeight, places);
}

void CubicPixels(ConstPlaneView source, PixelPlaces places, int count, std::uint8_t* out) {
    HWY_DYNAMIC_DISPATCH(CubicPixelsOf)(source, places, count, out);
}

}  // namespace velloran
#endif  // HWY_ONCE

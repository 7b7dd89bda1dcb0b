#include "tone/EnlargedRows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "tone/EnlargedRows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace velloran {
namespace HWY_NAMESPACE {
namespace {

void Blend(const float* first, const float* second, float share, float otherShare, int count,
           float* out) {
    for (int i = 0; i < count; ++i)
        out[i] = share * first[i] + otherShare * second[i];
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace velloran
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace velloran {
namespace {

HWY_EXPORT(Blend);

/// Between one pair of samples; a loop that vectorises.
void SpreadSegment(float left, float right, const float* weights, const float* otherWeights,
                   int count, float* out) {
    for (int i = 0; i < count; ++i)
        out[i] = weights[i] * left + otherWeights[i] * right;
}

template <int kChannels>
void SpreadPixels(const float* row, const int* first, std::ptrdiff_t next, const float* weights,
                  const float* otherWeights, int width, float* out) {
    for (int x = 0; x < width; ++x, out += kChannels) {
        const float* from = row + std::ptrdiff_t{first[x]} * kChannels;
        for (int c = 0; c < kChannels; ++c)
            out[c] = weights[x] * from[c] + otherWeights[x] * from[next + c];
    }
}

constexpr int kLongSegment = 6;  // pixels

}  // namespace

EnlargedRows::EnlargedRows(ConstFloatView small, int width, int height)
    : small_(small), down_(LinearAxis(small.height, height)) {
    const ResampleAxis across = LinearAxis(small.width, width);
    first_ = across.first;
    for (int x = 0; x < width; ++x) {
        weights_.push_back(across.WeightsOf(x)[0]);
        // A picture one sample wide has one weight.
        otherWeights_.push_back(across.taps > 1 ? across.WeightsOf(x)[1] : 0.0F);
    }
    if (small.channels != 1 || width / small.width < kLongSegment)
        return;
    for (int x = 0; x < width; ++x) {
        const int first = first_[static_cast<std::size_t>(x)];
        if (segments_.empty() || segments_.back().first != first)
            segments_.push_back({x, x, first});
        segments_.back().end = x + 1;
    }
}

void EnlargedRows::Row(int y, float* scratch, float* row) const {
    const int first = down_.first[static_cast<std::size_t>(y)];
    const bool hasSecond = down_.taps > 1;
    const float* down = down_.WeightsOf(y);
    HWY_DYNAMIC_DISPATCH(Blend)
    (small_.Row(first).data(), small_.Row(hasSecond ? first + 1 : first).data(), down[0],
     hasSecond ? down[1] : 0.0F, static_cast<int>(ScratchSize()), scratch);
    const std::ptrdiff_t next = small_.width > 1 ? small_.channels : 0;
    const float* weights = weights_.data();
    const float* others = otherWeights_.data();
    const int width = static_cast<int>(weights_.size());
    if (small_.channels == 3)
        SpreadPixels<3>(scratch, first_.data(), next, weights, others, width, row);
    else if (segments_.empty())
        SpreadPixels<1>(scratch, first_.data(), next, weights, others, width, row);
    for (const Segment& s : segments_)
        SpreadSegment(scratch[s.first], scratch[s.first + next], weights + s.begin,
                      others + s.begin, s.end - s.begin, row + s.begin);
}

}  // namespace velloran
#endif  // HWY_ONCE

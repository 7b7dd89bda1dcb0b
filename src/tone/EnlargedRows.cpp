#include "tone/EnlargedRows.h"

#include "core/SimdTarget.h"

namespace velloran {
namespace {

VELLORAN_SIMD_CLONES
void Blend(const float* first, const float* second, float share, float otherShare, int count,
           float* out) {
    for (int i = 0; i < count; ++i)
        out[i] = share * first[i] + otherShare * second[i];
}

template <int kChannels>
void Spread(const float* row, const ResampleAxis& axis, int width, float* out) {
    // A source one sample wide has one tap.
    const std::ptrdiff_t next = axis.taps > 1 ? kChannels : 0;
    for (int x = 0; x < width; ++x, out += kChannels) {
        const float* from =
            row + static_cast<std::ptrdiff_t>(axis.first[static_cast<std::size_t>(x)]) * kChannels;
        const float* weight = axis.WeightsOf(x);
        const float otherWeight = axis.taps > 1 ? weight[1] : 0.0F;
        for (int c = 0; c < kChannels; ++c)
            out[c] = weight[0] * from[c] + otherWeight * from[next + c];
    }
}

}  // namespace

EnlargedRows::EnlargedRows(ConstFloatView small, int width, int height)
    : small_(small),
      width_(width),
      across_(LinearAxis(small.width, width)),
      down_(LinearAxis(small.height, height)) {}

void EnlargedRows::Row(int y, float* scratch, float* row) const {
    const int first = down_.first[static_cast<std::size_t>(y)];
    const bool hasSecond = down_.taps > 1;
    const float* weights = down_.WeightsOf(y);
    Blend(small_.Row(first).data(), small_.Row(hasSecond ? first + 1 : first).data(), weights[0],
          hasSecond ? weights[1] : 0.0F, static_cast<int>(ScratchSize()), scratch);
    if (small_.channels == 3)
        Spread<3>(scratch, across_, width_, row);
    else
        Spread<1>(scratch, across_, width_, row);
}

}  // namespace velloran

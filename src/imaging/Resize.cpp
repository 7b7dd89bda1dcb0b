#include "imaging/Resize.h"

#include <algorithm>
#include <vector>

#include "core/SimdTarget.h"
#include "core/Threads.h"
#include "imaging/ResampleAxis.h"

namespace velloran {
namespace {

/// sums += weight * row.
VELLORAN_SIMD_CLONES
void AddWeighted(const std::uint8_t* row, float weight, int count, float* sums) {
    for (int i = 0; i < count; ++i)
        sums[i] += weight * static_cast<float>(row[i]);
}

VELLORAN_SIMD_CLONES
void AddWeighted(const float* row, float weight, int count, float* sums) {
    for (int i = 0; i < count; ++i)
        sums[i] += weight * row[i];
}

/// A column-weighted row along the rows.
template <int kChannels>
void AlongRow(const float* row, const ResampleAxis& axis, int width, float* out) {
    for (int x = 0; x < width; ++x, out += kChannels) {
        const float* from =
            row + static_cast<std::ptrdiff_t>(axis.first[static_cast<std::size_t>(x)]) * kChannels;
        const float* weight = axis.WeightsOf(x);
        float sum[kChannels] = {};
        for (int k = 0; k < axis.taps; ++k, from += kChannels)
            for (int c = 0; c < kChannels; ++c)
                sum[c] += weight[k] * from[c];
        for (int c = 0; c < kChannels; ++c)
            out[c] = sum[c];
    }
}

VELLORAN_SIMD_CLONES
void StoreRow(const float* row, int count, std::uint8_t* out) {
    for (int i = 0; i < count; ++i) {
        const float value = row[i] + 0.5F;
        const float limited = value < 0.0F ? 0.0F : (value > 255.0F ? 255.0F : value);
        out[i] = static_cast<std::uint8_t>(static_cast<int>(limited));
    }
}

void StoreRow(const float* row, int count, float* out) {
    std::copy_n(row, count, out);
}

struct RowScratch {
    std::vector<float> source, target;
};

/// Down the columns into one row of floats, then along it.
template <typename Source, typename Target>
void Resample(Source source, const ResampleAxis& across, const ResampleAxis& down, Target target) {
    const int channels = source.channels;
    const int sourceCount = source.width * channels, targetCount = target.width * channels;
    std::vector<RowScratch> perThread(
        static_cast<std::size_t>(MaxThreads()),
        RowScratch{std::vector<float>(static_cast<std::size_t>(sourceCount)),
                   std::vector<float>(static_cast<std::size_t>(targetCount))});
#pragma omp parallel for schedule(static)
    for (int y = 0; y < target.height; ++y) {
        RowScratch& rows = perThread[static_cast<std::size_t>(ThreadNumber())];
        std::fill(rows.source.begin(), rows.source.end(), 0.0F);
        for (int k = 0; k < down.taps; ++k)
            if (const float weight = down.WeightsOf(y)[k]; weight != 0)
                AddWeighted(source.Row(down.first[static_cast<std::size_t>(y)] + k).data(), weight,
                            sourceCount, rows.source.data());
        if (channels == 3)
            AlongRow<3>(rows.source.data(), across, target.width, rows.target.data());
        else
            AlongRow<1>(rows.source.data(), across, target.width, rows.target.data());
        StoreRow(rows.target.data(), targetCount, target.Row(y).data());
    }
}

template <typename Source, typename Target>
void ResampleBy(ResampleAxis (*axisOf)(int, int), Source source, Target target) {
    if (source.width < 1 || source.height < 1 || target.width < 1 || target.height < 1)
        return;
    Resample(source, axisOf(source.width, target.width), axisOf(source.height, target.height),
             target);
}

}  // namespace

void ResizeLanczos(ConstPlaneView source, PlaneView target) {
    ResampleBy(LanczosAxis, source, target);
}

void ResizeArea(ConstPlaneView source, PlaneView target) {
    ResampleBy(AreaAxis, source, target);
}

void ResizeArea(ConstFloatView source, FloatView target) {
    ResampleBy(AreaAxis, source, target);
}

void ResizeArea(ConstPlaneView source, FloatView target) {
    ResampleBy(AreaAxis, source, target);
}

void ResizeLinear(ConstPlaneView source, PlaneView target) {
    ResampleBy(LinearAxis, source, target);
}

void ResizeLinear(ConstFloatView source, FloatView target) {
    ResampleBy(LinearAxis, source, target);
}

}  // namespace velloran

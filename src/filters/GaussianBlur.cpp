#include "filters/GaussianBlur.h"

#include <algorithm>

#include "core/ExactMath.h"
#include "core/Refusal.h"
#include "imaging/Separable.h"

namespace velloran {
namespace {

constexpr int kLongestReach = 400;

float Bell(int k, float sigma) {
    const float ratio = static_cast<float>(k) / sigma;
    return Exp(-(ratio * ratio) * 0.5F);
}

/// Weights in thousandths of `scale` for -reach..reach, truncated.
GaussianKernel TapsOf(float sigma, int reach, float scale) {
    GaussianKernel kernel;
    for (int k = -reach; k <= reach; ++k) {
        kernel.taps.push_back(static_cast<std::int32_t>(Bell(k, sigma) / scale / 0.001F));
        kernel.sum += kernel.taps.back();
    }
    return kernel;
}

}  // namespace

GaussianKernel MakeGaussianKernel(float sigma) {
    float scale = 0;
    int reach = 0;
    for (;;) {
        const float weight = Bell(reach, sigma);
        scale += weight;
        if (weight / scale < 0.001F) {
            scale -= weight;
            --reach;
            break;
        }
        if (++reach > kLongestReach)
            break;
    }
    return TapsOf(sigma, std::clamp(reach, 0, kLongestReach), scale);
}

GaussianKernel MakeFiveTaps(float sigma) {
    float scale = 0;
    for (int k = -2; k <= 2; ++k)
        scale += Bell(k, sigma);
    return TapsOf(sigma, 2, scale);
}

int SeparableFilter(PlaneView pixels, const GaussianKernel& kernel, const MixSamples& mix) {
    return RefuseWhenOutOfMemory([&] {
        if (pixels.width < 1 || pixels.height < 1)
            return 0;
        FilterInPlace(pixels, kernel.taps, kernel.sum, mix);
        return 1;
    });
}

int GaussianBlurInPlace(PlaneView pixels, float sigma, const MixSamples& mix) {
    return RefuseWhenOutOfMemory(
        [&] { return SeparableFilter(pixels, MakeGaussianKernel(sigma), mix); });
}

}  // namespace velloran

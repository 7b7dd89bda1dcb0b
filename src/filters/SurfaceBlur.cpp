#include "filters/SurfaceBlur.h"

#include <algorithm>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "filters/SurfaceBlurForms.h"

namespace velloran {
namespace {

constexpr int kMaxRadius = 15, kMinThreshold = 2, kMaxThreshold = 50, kMaxTimes = 3;
/// Up to here the window is small enough to be summed anew for every sample.
constexpr int kMaxDirectRadius = 5;
constexpr int kMinGuidedSide = 3;

using Form = void (*)(CDibImage& image, int radius, int threshold, int times);

int RunForm(Form form, CDibImage& image, int radius, int threshold, int times) {
    return RefuseWhenOutOfMemory([&] {
        form(image, radius, threshold, times);
        return 1;
    });
}

}  // namespace

int SurfaceBlur(CDibImage& image, int radius, int threshold, int times, int algorithm) {
    if (!image.IsValid() || times < 1 || EnsureGrayOrRgb(image) == 0)
        return 0;
    radius = std::clamp(radius, 1, kMaxRadius);
    threshold = std::clamp(threshold, kMinThreshold, kMaxThreshold);
    times = std::min(times, kMaxTimes);
    switch (static_cast<SurfaceBlurAlgorithm>(algorithm)) {
        case SurfaceBlurAlgorithm::kWeighted:
            RunForm(radius > kMaxDirectRadius ? BlurByHistograms : BlurDirect, image, radius,
                    threshold, times);
            return 1;
        case SurfaceBlurAlgorithm::kGuided:
            if (image.GetWidth() < kMinGuidedSide || image.GetHeight() < kMinGuidedSide)
                return 0;
            return RunForm(BlurGuided, image, radius, threshold, times);
        case SurfaceBlurAlgorithm::kSelectiveGaussian:
            return RunForm(BlurSelectiveGaussian, image, radius, threshold, times);
        case SurfaceBlurAlgorithm::kSelectiveMean:
            RunForm(BlurSelectiveMean, image, radius, threshold, times);
            return 1;
    }
    return 0;
}

}  // namespace velloran

#include "filters/KernelFilters.h"

#include <algorithm>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "imaging/BorderedCopy.h"
#include "imaging/Convolve.h"

namespace velloran {

int Filter3x3(CDibImage& image, int a, int b, int c, int divisor) {
    if (image.GetWidth() < 6 || image.GetHeight() < 6 || image.GetBpp() < 8 || divisor < 1)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        const std::array<int, 9> weights{a, b, a, b, c, b, a, b, a};
        const PlaneView pixels = ViewOf(image);
        const BorderedCopy source(pixels, 1);
        ConvolveInt(source.View(), weights, 3, divisor, pixels);
        return 1;
    });
}

int Filter5x5(CDibImage& image, const Kernel5x5& kernel) {
    if (image.GetWidth() <= 5 || image.GetHeight() <= 5 || EnsureGrayOrRgb(image) == 0)
        return 0;
    std::array<float, 25> weights;
    std::copy(kernel.begin(), kernel.end(), weights.begin());
    return FilterSquare(image, weights, 5);
}

int FilterSquare(CDibImage& image, std::span<const float> kernel, int size) {
    if (!image.IsValid() || image.GetBpp() < 8)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        const PlaneView pixels = ViewOf(image);
        const BorderedCopy source(pixels, size / 2);
        ConvolveFloat(source.View(), kernel, size, pixels);
        return 1;
    });
}

}  // namespace velloran

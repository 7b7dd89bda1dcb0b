#include "filters/KernelFilters.h"

#include <algorithm>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/PixelMemory.h"
#include "core/Refusal.h"
#include "imaging/BorderedCopy.h"
#include "imaging/Convolve.h"
#include "imaging/Planes.h"

namespace velloran {
namespace {

int ConvolveInPlace(PlaneView pixels, std::span<const float> kernel, int size) {
    return RefuseWhenOutOfMemory([&] {
        const BorderedCopy source(pixels, size / 2);
        ConvolveFloat(source.View(), kernel, size, pixels);
        return 1;
    });
}

/// The same pixels with less memory: channel by channel through one plane. All memory is there
/// before the first channel changes.
int ConvolveByChannels(PlaneView pixels, std::span<const float> kernel, int size) {
    return RefuseWhenOutOfMemory([&] {
        const PixelBuffer memory = MakePixelBuffer(static_cast<std::size_t>(pixels.width) *
                                                   static_cast<std::size_t>(pixels.height));
        const PlaneView plane{memory.get(), pixels.width, pixels.height, 1, pixels.width};
        FloatConvolver convolver(kernel, size, 1);
        BorderedCopy source(plane, size / 2);
        for (int channel = 0; channel < 3; ++channel) {
            ExtractChannel(pixels, channel, plane);
            source.Fill(plane);
            convolver.Run(source.View(), plane);
            InsertChannel(plane, channel, pixels);
        }
        return 1;
    });
}

}  // namespace

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
    const PlaneView pixels = ViewOf(image);
    if (ConvolveInPlace(pixels, kernel, size) != 0)
        return 1;
    return pixels.channels == 3 ? ConvolveByChannels(pixels, kernel, size) : 0;
}

}  // namespace velloran

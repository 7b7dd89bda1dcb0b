#include "filters/UnsharpMask.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "core/Rounding.h"
#include "filters/GaussianBlur.h"
#include "filters/Resample.h"

namespace velloran {
namespace {

constexpr int kSmallestSide = 6;
constexpr int kMostTimes = 3;
constexpr float kBoxRadius = 40.0F, kHalfRadius = 20.0F;
constexpr int kBoxSide = 1000, kHalfFromSide = 2001;

/// Blurs at the working size, and brings the result back.
bool BlurForMask(CDibImage& image, float radius) {
    const BoxSize size{image.GetWidth(), image.GetHeight()};
    const BoxSize working = UsmWorkingSize(size, radius);
    if (working == size)
        return GaussianBlurInPlace(ViewOf(image), radius) != 0;
    const float sigma = static_cast<float>(working.width) * radius / static_cast<float>(size.width);
    return ResizeToLinear(image, working.width, working.height) != 0 &&
           GaussianBlurInPlace(ViewOf(image), sigma) != 0 &&
           ResizeToLinear(image, size.width, size.height) != 0;
}

/// `pixels` holds the blurred samples and takes the new ones.
void CombineRows(const UsmTable& table, ConstPlaneView source, PlaneView pixels) {
#pragma omp parallel for schedule(static)
    for (int y = 0; y < pixels.height; ++y) {
        const std::uint8_t* from = source.Row(y).data();
        std::uint8_t* to = pixels.Row(y).data();
        const int count = pixels.width * pixels.channels;
        for (int x = 0; x < count; ++x)
            to[x] = table[from[x]][to[x]];
    }
}

}  // namespace

BoxSize UsmWorkingSize(BoxSize size, float radius) {
    if (radius >= kBoxRadius)
        return FitIntoBox(size, {kBoxSide, kBoxSide});
    if (radius >= kHalfRadius && (size.width >= kHalfFromSide || size.height >= kHalfFromSide))
        return {std::max(size.width / 2, 1), std::max(size.height / 2, 1)};
    return size;
}

void MakeUsmTable(int amount, int threshold, UsmTable& table) {
    for (int source = 0; source < 256; ++source)
        for (int blurred = 0; blurred < 256; ++blurred) {
            const int difference = source - blurred;
            table[static_cast<std::size_t>(source)][static_cast<std::size_t>(blurred)] =
                std::abs(difference) > threshold ? ClampToByte(source + difference * amount / 100)
                                                 : static_cast<std::uint8_t>(source);
        }
}

int UnsharpMask(CDibImage& image, int amount, float radius, int threshold, int times,
                bool blurOnly) {
    if (!image.IsValid() || times < 1)
        return 0;
    times = std::min(times, kMostTimes);
    radius = std::clamp(radius, 0.1F, 250.0F);
    amount = std::clamp(amount, 1, 500);
    threshold = std::clamp(threshold, 0, 255) / 2;
    if (image.GetWidth() < kSmallestSide || image.GetHeight() < kSmallestSide)
        return 0;
    return RefuseWhenOutOfMemory([&] {
        std::unique_ptr<UsmTable> table;
        if (!blurOnly) {
            table = std::make_unique<UsmTable>();
            MakeUsmTable(amount, threshold, *table);
        }
        if (EnsureGrayOrRgb(image) == 0)
            return 0;
        for (int i = 0; i < times; ++i) {
            CDibImage blurred(image);
            if (!blurred.IsValid() || !BlurForMask(blurred, radius))
                return i == 0 ? 0 : 1;
            if (!blurOnly)
                CombineRows(*table, ViewOf(static_cast<const CDibImage&>(image)), ViewOf(blurred));
            image.TakePixels(blurred);
        }
        return 1;
    });
}

}  // namespace velloran

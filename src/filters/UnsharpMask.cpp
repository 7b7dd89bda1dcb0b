#include "filters/UnsharpMask.h"

#include <algorithm>
#include <optional>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/Refusal.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "filters/GaussianBlur.h"
#include "filters/UsmMixer.h"
#include "imaging/Resize.h"

namespace velloran {
namespace {

constexpr int kSmallestSide = 6;
constexpr int kMostTimes = 3;
constexpr float kBoxRadius = 40.0F, kHalfRadius = 20.0F;
constexpr int kBoxSide = 1000, kHalfFromSide = 2001;

/// A side of a thin picture may vanish where the other is reduced; one pixel stays.
BoxSize NotEmpty(BoxSize size) {
    return {std::max(size.width, 1), std::max(size.height, 1)};
}

/// The blur of a reduced copy, in the image's size and depth; empty without memory.
CDibImage BlurReduced(const CDibImage& image, BoxSize working, float radius) {
    CDibImage reduced, whole;
    if (reduced.Create(working.width, working.height, image.GetBpp()) == nullptr ||
        whole.Create(image.GetWidth(), image.GetHeight(), image.GetBpp()) == nullptr)
        return {};
    whole.SetGrayPalette();
    const float sigma =
        static_cast<float>(working.width) * radius / static_cast<float>(image.GetWidth());
    ResizeLinear(ViewOf(image), ViewOf(reduced));
    if (GaussianBlurInPlace(ViewOf(reduced), sigma) == 0)
        return {};
    ResizeLinear(ViewOf(static_cast<const CDibImage&>(reduced)), ViewOf(whole));
    return whole;
}

/// One round; `mixer` is null where the blur itself is wanted.
int BlurOrSharpen(CDibImage& image, float radius, const UsmMixer* mixer) {
    const BoxSize size{image.GetWidth(), image.GetHeight()};
    const BoxSize working = UsmWorkingSize(size, radius);
    if (working == size) {
        MixSamples mix;
        if (mixer != nullptr)
            mix = [mixer](const std::uint8_t* blurred, int count, std::uint8_t* row) {
                mixer->Mix(blurred, count, row);
            };
        return GaussianBlurInPlace(ViewOf(image), radius, mix);
    }
    CDibImage blurred = BlurReduced(image, working, radius);
    if (!blurred.IsValid())
        return 0;
    if (mixer == nullptr)
        return image.TakePixels(blurred) ? 1 : 0;
    const PlaneView pixels = ViewOf(image), from = ViewOf(blurred);
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(pixels))
    for (int y = 0; y < pixels.height; ++y) {
        if (cancel.IsCancelled())
            continue;
        mixer->Mix(from.Row(y).data(), pixels.width * pixels.channels, pixels.Row(y).data());
    }
    return 1;
}

}  // namespace

BoxSize UsmWorkingSize(BoxSize size, float radius) {
    if (radius >= kBoxRadius)
        return NotEmpty(FitIntoBox(size, {kBoxSide, kBoxSide}));
    if (radius >= kHalfRadius && (size.width >= kHalfFromSide || size.height >= kHalfFromSide))
        return NotEmpty({size.width / 2, size.height / 2});
    return size;
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
        std::optional<UsmMixer> mixer;
        if (!blurOnly)
            mixer = {amount, threshold};
        if (EnsureGrayOrRgb(image) == 0)
            return 0;
        // A round that fails leaves what the rounds before it made, and these count as run.
        for (int i = 0; i < times; ++i)
            if (RefuseWhenOutOfMemory(
                    [&] { return BlurOrSharpen(image, radius, mixer ? &*mixer : nullptr); }) == 0)
                return i == 0 ? 0 : 1;
        return 1;
    });
}

}  // namespace velloran

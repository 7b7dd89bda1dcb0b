#include "filters/Resample.h"

#include <algorithm>
#include <cstdint>
#include <span>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/IndexRows.h"
#include "core/PaletteSearch.h"
#include "core/Refusal.h"
#include "core/StepContext.h"
#include "core/Threads.h"
#include "imaging/Resize.h"

namespace velloran {
namespace {

using PlaneResizer = void (*)(ConstPlaneView, PlaneView);

ConstPlaneView AlphaView(const CBaseImage& image) {
    return {image.GetAlpha(), image.GetWidth(), image.GetHeight(), 1, image.GetWidth()};
}

void ScaleAlpha(const CDibImage& image, CDibImage& scaled, PlaneResizer resize) {
    resize(AlphaView(image),
           {scaled.GetAlpha(), scaled.GetWidth(), scaled.GetHeight(), 1, scaled.GetWidth()});
}

/// An empty image of the depth of `image`, with an alpha plane where it has one; false without
/// memory.
bool CreateScaled(const CDibImage& image, int width, int height, CDibImage& scaled) {
    return scaled.Create(width, height, image.GetBpp()) != nullptr &&
           (image.GetAlpha() == nullptr || scaled.CreateAlpha());
}

/// The scaled form of an 8-bit or 24-bit image, alpha with it; empty without memory.
CDibImage Scaled(const CDibImage& image, int width, int height, PlaneResizer resize) {
    CDibImage scaled;
    if (!CreateScaled(image, width, height, scaled))
        return {};
    scaled.SetGrayPalette();
    resize(ViewOf(image), ViewOf(scaled));
    if (image.GetAlpha() != nullptr)
        ScaleAlpha(image, scaled, resize);
    return scaled;
}

int Scale(CDibImage& image, int width, int height, PlaneResizer resize) {
    return RefuseWhenOutOfMemory([&] {
        CDibImage scaled = Scaled(image, width, height, resize);
        return scaled.IsValid() && image.TakePixels(scaled) ? 1 : 0;
    });
}

bool Shrinks(const CDibImage& image, int width, int height) {
    return width < image.GetWidth() && height < image.GetHeight();
}

bool HasSize(const CDibImage& image, int width, int height) {
    return image.GetWidth() == width && image.GetHeight() == height;
}

bool CanScale(const CDibImage& image, int width, int height) {
    return image.IsValid() && !image.IsGhost() && width >= 1 && height >= 1;
}

/// Puts the pixels of a 24-bit image into the palette of a 1-bit or 4-bit target.
void PackNearest(const CDibImage& color, CDibImage& target) {
    [[maybe_unused]] const std::int64_t comparisons =
        std::int64_t{target.GetWidth()} * target.GetHeight() * target.GetPaletteCount();
    const std::span<const PaletteEntry> palette = PaletteOf(target);
    const CancelToken cancel = CurrentCancel();
#pragma omp parallel for schedule(static) if (IsWorthThreads(comparisons))
    for (int y = 0; y < target.GetHeight(); ++y) {
        if (cancel.IsCancelled())
            continue;
        const std::uint8_t* pixel = color.GetBits(y);
        PackEachIndex(target.GetWidth(), target.GetBpp(), target.GetBits(y), [&](int x) {
            return NearestIndex(palette, {pixel[3 * x], pixel[3 * x + 1], pixel[3 * x + 2], 0});
        });
    }
}

int ScaleAtLowDepth(CDibImage& image, int width, int height, PlaneResizer resize) {
    return RefuseWhenOutOfMemory([&] {
        CDibImage color, scaled, target;
        if (!color.Copy(image, /*copyPixels=*/true, /*copySelection=*/false, /*copyAlpha=*/false) ||
            !color.IncreaseBpp24() || scaled.Create(width, height, color.GetBpp()) == nullptr ||
            !CreateScaled(image, width, height, target))
            return 0;
        resize(ViewOf(static_cast<const CDibImage&>(color)), ViewOf(scaled));
        std::copy_n(image.GetPalette(), image.GetPaletteCount(), target.GetPalette());
        PackNearest(scaled, target);
        if (image.GetAlpha() != nullptr)
            ScaleAlpha(image, target, resize);
        return image.TakePixels(target) ? 1 : 0;
    });
}

PlaneResizer AreaOrLanczos(const CDibImage& image, int width, int height) {
    return Shrinks(image, width, height) ? PlaneResizer(ResizeArea) : PlaneResizer(ResizeLanczos);
}

}  // namespace

int ResizeTo(CDibImage& image, int width, int height, bool keepBits) {
    if (!CanScale(image, width, height))
        return 0;
    if (HasSize(image, width, height))
        return 1;
    if (Shrinks(image, width, height) && (image.IsBW() || (keepBits && image.GetBpp() < 8)))
        return ReduceBilevelAware(image, width, height);
    if (EnsureGrayOrRgb(image) == 0)
        return 0;
    return Scale(image, width, height, AreaOrLanczos(image, width, height));
}

CDibImage ResizedCopy(const CDibImage& image, int width, int height) {
    if (!CanScale(image, width, height) || (image.GetBpp() != 24 && !image.IsGrayScale()))
        return {};
    if (HasSize(image, width, height))
        return image;
    return Scaled(image, width, height, AreaOrLanczos(image, width, height));
}

int ResizeToLinear(CDibImage& image, int width, int height) {
    if (!CanScale(image, width, height))
        return 0;
    if (HasSize(image, width, height))
        return 1;
    if (EnsureGrayOrRgb(image) == 0)
        return 0;
    return Scale(image, width, height, ResizeLinear);
}

int ReduceBilevelAware(CDibImage& image, int width, int height, bool /*keepBits*/) {
    if (!CanScale(image, width, height))
        return 0;
    if (HasSize(image, width, height))
        return 1;
    const PlaneResizer resize =
        Shrinks(image, width, height) ? PlaneResizer(ResizeArea) : PlaneResizer(ResizeLinear);
    if (image.GetBpp() < 8)
        return ScaleAtLowDepth(image, width, height, resize);
    if (EnsureGrayOrRgb(image) == 0)
        return 0;
    return Scale(image, width, height, resize);
}

}  // namespace velloran

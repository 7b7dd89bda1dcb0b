#include "filters/Resample.h"

#include <cstring>
#include <limits>

#include "core/DibImage.h"
#include "core/GrayDepth.h"
#include "core/PixelMemory.h"
#include "core/Refusal.h"
#include "imaging/Resize.h"

namespace velloran {
namespace {

using PlaneResizer = void (*)(ConstPlaneView, PlaneView);

ConstPlaneView AlphaView(const CBaseImage& image) {
    return {image.GetAlpha(), image.GetWidth(), image.GetHeight(), 1, image.GetWidth()};
}

/// Replaces an 8-bit or 24-bit image by its scaled form, alpha with it.
int Scale(CDibImage& image, int width, int height, PlaneResizer resize) {
    return RefuseWhenOutOfMemory([&] {
        CDibImage scaled;
        if (scaled.Create(width, height, image.GetBpp()) == nullptr)
            return 0;
        scaled.SetGrayPalette();
        const CDibImage& source = image;
        resize(ViewOf(source), ViewOf(scaled));
        PixelBuffer alpha;
        if (source.GetAlpha() != nullptr) {
            alpha =
                MakePixelBuffer(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
            resize(AlphaView(source), {alpha.get(), width, height, 1, width});
        }
        image.TakePixels(scaled);
        if (alpha != nullptr && image.CreateAlpha())
            std::memcpy(image.GetAlpha(), alpha.get(),
                        static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        return 1;
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

int DistanceTo(const PaletteEntry& entry, const std::uint8_t* pixel) {
    const int blue = entry.blue - pixel[0], green = entry.green - pixel[1],
              red = entry.red - pixel[2];
    return blue * blue + green * green + red * red;
}

int NearestEntry(const PaletteEntry* palette, int count, const std::uint8_t* pixel) {
    int nearest = 0, least = std::numeric_limits<int>::max();
    for (int i = 0; i < count && least > 0; ++i)
        if (const int distance = DistanceTo(palette[i], pixel); distance < least) {
            least = distance;
            nearest = i;
        }
    return nearest;
}

/// Puts the pixels of a 24-bit image into the palette of a 1-bit or 4-bit target.
void PackNearest(const CDibImage& color, CDibImage& target) {
    const int bpp = target.GetBpp(), perByte = 8 / bpp;
    target.Clear(0);
#pragma omp parallel for schedule(static)
    for (int y = 0; y < target.GetHeight(); ++y) {
        const std::uint8_t* pixel = color.GetBits(y);
        std::uint8_t* out = target.GetBits(y);
        for (int x = 0; x < target.GetWidth(); ++x, pixel += 3) {
            const int index = NearestEntry(target.GetPalette(), target.GetPaletteCount(), pixel);
            out[x / perByte] = static_cast<std::uint8_t>(out[x / perByte] |
                                                         index << (8 - bpp - x % perByte * bpp));
        }
    }
}

int ScaleAtLowDepth(CDibImage& image, int width, int height, PlaneResizer resize) {
    CDibImage color(image);
    if (!color.IsValid() || !color.IncreaseBpp24() || Scale(color, width, height, resize) == 0)
        return 0;
    CDibImage target;
    if (target.Create(width, height, image.GetBpp()) == nullptr)
        return 0;
    for (int i = 0; i < image.GetPaletteCount(); ++i)
        target.GetPalette()[i] = image.GetPalette()[i];
    PackNearest(color, target);
    const std::int32_t transparent = image.Fields().backgroundIndex;
    image.TakePixels(target);
    image.Fields().backgroundIndex = transparent;
    return 1;
}

}  // namespace

int ResizeTo(CDibImage& image, int width, int height, bool keepBits) {
    if (!CanScale(image, width, height))
        return 0;
    if (HasSize(image, width, height))
        return 1;
    const bool shrinks = Shrinks(image, width, height);
    if (shrinks && (image.IsBW() || (keepBits && image.GetBpp() < 8)))
        return ReduceBilevelAware(image, width, height, keepBits);
    if (EnsureGrayOrRgb(image) == 0)
        return 0;
    return Scale(image, width, height,
                 shrinks ? PlaneResizer(ResizeArea) : PlaneResizer(ResizeLanczos));
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

int ReduceBilevelAware(CDibImage& image, int width, int height, bool keepBits) {
    if (!CanScale(image, width, height))
        return 0;
    if (HasSize(image, width, height))
        return 1;
    const PlaneResizer resize =
        Shrinks(image, width, height) ? PlaneResizer(ResizeArea) : PlaneResizer(ResizeLinear);
    if (image.GetBpp() < 8 && (keepBits || image.IsBW()))
        return ScaleAtLowDepth(image, width, height, resize);
    if (EnsureGrayOrRgb(image) == 0)
        return 0;
    return Scale(image, width, height, resize);
}

}  // namespace velloran

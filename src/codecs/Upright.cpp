#include "codecs/Upright.h"

#include <algorithm>
#include <new>
#include <utility>

#include "core/DibImage.h"
#include "core/Threads.h"
#include "core/TransposePixels.h"

namespace velloran {
namespace {

template <int kChannels>
void SwapPixels(std::uint8_t* a, std::uint8_t* b) {
    for (int c = 0; c < kChannels; ++c)
        std::swap(a[c], b[c]);
}

template <int kChannels>
void MirrorRows(PlaneView pixels) {
#pragma omp parallel for schedule(static) if (IsWorthThreads(pixels))
    for (int y = 0; y < pixels.height; ++y) {
        std::uint8_t* left = pixels.Row(y).data();
        std::uint8_t* right = left + static_cast<std::ptrdiff_t>(pixels.width - 1) * kChannels;
        for (; left < right; left += kChannels, right -= kChannels)
            SwapPixels<kChannels>(left, right);
    }
}

void ExchangeRows(PlaneView pixels) {
#pragma omp parallel for schedule(static) if (IsWorthThreads(pixels))
    for (int y = 0; y < pixels.height / 2; ++y) {
        const std::span<std::uint8_t> upper = pixels.Row(y);
        std::swap_ranges(upper.begin(), upper.end(), pixels.Row(pixels.height - 1 - y).begin());
    }
}

void TurnSideways(CDibImage& image, int orientation) {
    CDibImage turned;
    if (turned.Create(image.GetHeight(), image.GetWidth(), image.GetBpp()) == nullptr)
        throw std::bad_alloc();
    std::copy_n(image.GetPalette(), image.GetPaletteCount(), turned.GetPalette());
    // All four are the transposed picture, mirrored (6), upside down (8) or both (7). Mirroring
    // the target is the same as taking the source's rows from its bottom.
    const bool mirror = orientation == 6 || orientation == 7;
    const bool upsideDown = orientation == 8 || orientation == 7;
    const ConstPlaneView source =
        mirror ? ViewOf(std::as_const(image)) : TopDownViewOf(std::as_const(image));
    const PlaneView target = upsideDown ? ViewOf(turned) : TopDownViewOf(turned);
    TransposePixels({source.first, source.width, source.height, source.stride}, image.GetBpp(),
                    target.first, target.stride);
    image.TakePixels(turned);
}

template <int kChannels>
void Turn(CDibImage& image, int orientation) {
    if (SwapsSides(orientation))
        return TurnSideways(image, orientation);
    if (orientation == 2 || orientation == 3)
        MirrorRows<kChannels>(ViewOf(image));
    if (orientation == 3 || orientation == 4)
        ExchangeRows(ViewOf(image));
}

/// With its alpha plane, and of any depth.
void TurnWhole(CDibImage& image, int orientation) {
    const bool isSideways = SwapsSides(orientation);
    if (isSideways && !image.Rotate90(/*left=*/orientation == 8))
        throw std::bad_alloc();
    if (orientation == 2 || orientation == 5)
        image.Flip(FlipMode::kMirror);
    else if (orientation == 3)
        image.Flip(FlipMode::kUpsideDown);
    else if (orientation == 4 || orientation == 7)
        image.Flip(FlipMode::kFlip);
}

}  // namespace

bool SwapsSides(int orientation) {
    return orientation >= 5 && orientation <= 8;
}

void TurnUpright(CDibImage& image, int orientation) {
    if (orientation <= 1 || orientation > 8)
        return;
    if (image.GetAlpha() != nullptr || image.GetBpp() < 8)
        return TurnWhole(image, orientation);
    if (image.GetBpp() == 24)
        Turn<3>(image, orientation);
    else
        Turn<1>(image, orientation);
}

void SetUprightDpi(CDibImage& image, int orientation, int xDpi, int yDpi) {
    const bool swap = SwapsSides(orientation);
    image.SetXDpi(swap ? yDpi : xDpi);
    image.SetYDpi(swap ? xDpi : yDpi);
}

}  // namespace velloran

#include "tone/Channels.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "core/DibImage.h"
#include "core/Threads.h"
#include "tone/PixelMapRows.h"

namespace velloran {
namespace {

void SwapInPalette(CDibImage& image, int which) {
    PaletteEntry* palette = image.GetPalette();
    for (int i = 0; i < image.GetPaletteCount(); ++i) {
        PaletteEntry& entry = palette[i];
        if (which == 1)
            std::swap(entry.blue, entry.red);
        else if (which == 2)
            std::swap(entry.green, entry.red);
        else
            std::swap(entry.blue, entry.green);
    }
}

/// Exchanges bytes `a` and `b` of each pixel.
void SwapInPixels(PlaneView pixels, std::size_t a, std::size_t b) {
#pragma omp parallel for schedule(static) if (IsWorthThreads(pixels))
    for (int y = 0; y < pixels.height; ++y) {
        std::uint8_t* pixel = pixels.Row(y).data();
        for (int x = 0; x < pixels.width; ++x, pixel += 3)
            std::swap(pixel[a], pixel[b]);
    }
}

void InvertRows(CDibImage& image) {
    const auto bytes = static_cast<std::int64_t>(image.GetWidth()) * image.GetBpp() / 8;
#pragma omp parallel for schedule(static) if (IsWorthThreads(bytes * image.GetHeight()))
    for (int y = 0; y < image.GetHeight(); ++y) {
        std::uint8_t* row = image.GetBits(y);
        for (std::int64_t i = 0; i < bytes; ++i)
            row[i] = static_cast<std::uint8_t>(~row[i]);
    }
}

/// The picture is negated and index 0 ends as black.
void NegateBlackWhite(CDibImage& image) {
    PaletteEntry* palette = image.GetPalette();
    std::swap(palette[0], palette[1]);
    if (palette[0].blue < palette[1].blue)
        return;
    std::swap(palette[0], palette[1]);
    for (int y = 0; y < image.GetHeight(); ++y) {
        std::uint8_t* row = image.GetBits(y);
        for (std::uint32_t i = 0; i < image.GetEffWidth(); ++i)
            row[i] = static_cast<std::uint8_t>(~row[i]);
    }
}

}  // namespace

int SwapChannels(CDibImage& image, int which) {
    if (!image.IsValid())
        return 0;
    if (which < 1)
        return 1;
    if (which > 3)
        return 0;
    if (image.IsGrayScale())
        return 1;
    if (image.GetPalette() != nullptr)
        SwapInPalette(image, which);
    else if (which == 1)
        SwapInPixels(ViewOf(image), 0, 2);
    else if (which == 2)
        SwapInPixels(ViewOf(image), 1, 2);
    else
        SwapInPixels(ViewOf(image), 0, 1);
    return 1;
}

int Negate(CDibImage& image) {
    if (!image.IsValid())
        return 0;
    if (image.IsBW()) {
        NegateBlackWhite(image);
    } else if (image.GetPalette() != nullptr && !image.IsGrayScale()) {
        PaletteEntry* palette = image.GetPalette();
        for (int i = 0; i < image.GetPaletteCount(); ++i)
            palette[i] = {static_cast<std::uint8_t>(255 - palette[i].blue),
                          static_cast<std::uint8_t>(255 - palette[i].green),
                          static_cast<std::uint8_t>(255 - palette[i].red), palette[i].reserved};
    } else {
        InvertRows(image);
    }
    return 1;
}

}  // namespace velloran
